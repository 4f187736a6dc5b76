#pragma once

#include <cstdint>

#include "foundation/Export.h"

/// The number of Vec3f objects alive in the process. No decision depends on it. It is counted atomically, so
/// that threads which work on different models do not race.
extern VARNET_API std::int32_t g_nVectorCount;

/// A vector of three 32-bit floats. All arithmetic on it is done and rounded in float.
class VARNET_API Vec3f {
public:
    /// (0, 0, 0).
    Vec3f();
    Vec3f(float fX, float fY, float fZ);
    Vec3f(Vec3f const& other);
    Vec3f& operator=(Vec3f const& other) = default;
    ~Vec3f();

    float x;
    float y;
    float z;
};

/// a.x * b.x + a.y * b.y + a.z * b.z, from the left.
VARNET_API float Dot(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f Cross(Vec3f const& a, Vec3f const& b);
VARNET_API Vec3f operator+(Vec3f const& a, Vec3f const& b);
