#pragma once

#include <cstdint>

#include "foundation/Export.h"
#include "foundation/Mat4f.h"
#include "foundation/Vec3f.h"

/// The number of quaternion objects alive in the process, unitquaternions included; counted atomically. Each
/// holds a vector, which g_nVectorCount counts as well.
extern VARNET_API std::int32_t g_nQuaternionCount;

/// A quaternion w + v.x i + v.y j + v.z k in 32-bit floats. All arithmetic is done and rounded in float, from
/// left to right.
class VARNET_API quaternion {
public:
    /// All four components 0.
    quaternion();
    quaternion(float fW, Vec3f const& vector);
    quaternion(quaternion const& other);
    quaternion& operator=(quaternion const& other) = default;
    virtual ~quaternion();
    /// The rotation of row vectors: p * q.ToMatrix() is the vector part of q p q^-1, whatever the norm of q;
    /// with q = cos(h) + sin(h) n a turn by 2h about the unit vector n, counter-clockwise seen from its tip.
    /// A quaternion whose squared norm is not above 0 gives the identity.
    virtual Mat4f ToMatrix() const;

    quaternion& operator*=(quaternion const& other);
    quaternion& operator+=(quaternion const& other);
    quaternion& operator-=(quaternion const& other);
    quaternion& operator*=(float fFactor);
    /// This quaternion times the inverse of the other.
    quaternion& operator/=(quaternion const& other);

    /// Turns the sign of all four components.
    void Negate();
    /// Becomes its inverse; see Inverse.
    void Invert();
    /// Divides all four components by the norm. A zero quaternion becomes not a number.
    void Normalize();

    float w;
    Vec3f v;
};

/// A quaternion of norm 1. The operations that it inherits do not restore the norm.
class VARNET_API unitquaternion : public quaternion {
public:
    /// Normalises the value; a zero quaternion becomes not a number.
    unitquaternion(quaternion const& value);
    unitquaternion(unitquaternion const& other) = default;
    unitquaternion& operator=(unitquaternion const& other) = default;
    ~unitquaternion() override = default;
    /// As for a quaternion, with the norm taken to be 1.
    Mat4f ToMatrix() const override;
};

/// w = a.w * b.w - a.v . b.v, v = a.v x b.v + a.w * b.v + b.w * a.v. As a rotation: b first, then a.
VARNET_API quaternion operator*(quaternion const& a, quaternion const& b);
VARNET_API quaternion operator+(quaternion const& a, quaternion const& b);
VARNET_API quaternion operator-(quaternion const& a, quaternion const& b);
VARNET_API quaternion operator-(quaternion const& a);
VARNET_API quaternion operator*(quaternion const& a, float fFactor);
VARNET_API quaternion operator*(float fFactor, quaternion const& a);
/// a times the inverse of b.
VARNET_API quaternion operator/(quaternion const& a, quaternion const& b);
/// Exact comparison of all four components.
VARNET_API bool operator==(quaternion const& a, quaternion const& b);
VARNET_API bool operator!=(quaternion const& a, quaternion const& b);
/// w * w + the squared length of v.
VARNET_API float SquaredNorm(quaternion const& a);
/// The conjugate divided by the squared norm; not a number for a zero quaternion.
VARNET_API quaternion Inverse(quaternion const& a);
/// A copy of norm 1; see quaternion::Normalize.
VARNET_API quaternion Normalized(quaternion const& a);
