#pragma once

#include <cstdint>

#include "foundation/Export.h"
#include "foundation/Vec3f.h"

/// The number of Mat4f objects alive in the process; counted atomically.
extern VARNET_API std::int32_t g_nMatrixCount;

/// A 4 by 4 matrix of 32-bit floats, sixteen of them and nothing else. Vectors are rows and stand on the
/// left: the fourth row is the shift. All arithmetic is done and rounded in float, from left to right.
class VARNET_API Mat4f {
public:
    /// All sixteen elements take the value.
    Mat4f(float fValue);
    Mat4f(Mat4f const& other);
    /// The transpose when nMode is 1, a plain copy for any other mode.
    Mat4f(Mat4f const& other, int nMode);
    Mat4f& operator=(Mat4f const& other) = default;
    ~Mat4f();

    /// Divides each element; no test of 0.
    Mat4f& operator/=(float fDivisor);

    /// Becomes the identity.
    void Identity();

    float m[4][4];  ///< m[row][column]
};

/// Row by column: the left matrix acts first on a row vector.
VARNET_API Mat4f operator*(Mat4f const& a, Mat4f const& b);
VARNET_API Mat4f operator+(Mat4f const& a, Mat4f const& b);
VARNET_API Mat4f operator-(Mat4f const& a, Mat4f const& b);
VARNET_API Mat4f operator-(Mat4f const& a);
/// Divides each element; no test of 0.
VARNET_API Mat4f operator/(Mat4f const& a, float fDivisor);

/// The row vector (x, y, z, 1) times the matrix; the fourth column is not read.
VARNET_API Vec3f operator*(Vec3f const& a, Mat4f const& matrix);
