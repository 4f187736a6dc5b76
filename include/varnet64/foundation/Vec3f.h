#pragma once

#include <cstdint>

#include "foundation/Export.h"

/// The number of Vec3f objects alive in the process, those inside quaternions included. No decision depends
/// on it. It is counted atomically, so that threads which work on different models do not race.
extern VARNET_API std::int32_t g_nVectorCount;

/// A vector of three 32-bit floats. All arithmetic on it is done and rounded in float, from left to right.
class VARNET_API Vec3f {
public:
    /// (0, 0, 0).
    Vec3f();
    Vec3f(float fX, float fY, float fZ);
    Vec3f(Vec3f const& other);
    Vec3f& operator=(Vec3f const& other) = default;
    ~Vec3f();

    /// Divides each component by the length. A vector of length 0 becomes not a number.
    void Normalize();

    float x;
    float y;
    float z;
};

/// a.x * b.x + a.y * b.y + a.z * b.z, from the left.
VARNET_API float Dot(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f Cross(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f operator+(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f operator-(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f operator-(Vec3f const& a);
VARNET_API Vec3f operator*(float fFactor, Vec3f const& a);
VARNET_API Vec3f operator*(Vec3f const& a, float fFactor);
/// Divides each component; no test of 0.
VARNET_API Vec3f operator/(Vec3f const& a, float fDivisor);
/// A copy of length 1; see Vec3f::Normalize.
VARNET_API Vec3f Normalized(Vec3f const& a);
/// The direction half way between two unit vectors: their sum, normalised. (0, 0, 1) when the squared length
/// of the sum is below 1e-5, as for opposite vectors.
VARNET_API Vec3f Bisect(Vec3f const& a, Vec3f const& b);
