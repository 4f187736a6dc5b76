#pragma once

#include <cmath>

namespace varnet {

// The float arithmetic behind Vec3f for the library's inner loops: the same operations in the same order,
// without the count of living vectors, which any computation would return to its value anyway.

struct Float3 {
    float x;
    float y;
    float z;
};

inline float Dot(Float3 const& a, Float3 const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline Float3 Sum(Float3 const& a, Float3 const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }

inline Float3 Cross(Float3 const& a, Float3 const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

template <class Point>
Float3 ToFloat3(Point const& point) {
    return {static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)};
}

inline Float3 ToFloat3(float const (&normal)[3]) { return {normal[0], normal[1], normal[2]}; }

/// The area of the triangle p1, p2, p3, of Float3 or FloatLanes, as seen along the unit normal: summed in
/// float over the cross products of the corners, then halved in double. It loses digits far from the origin.
template <class Floats>
double AreaAlong(Floats const& normal, Floats const& p1, Floats const& p2, Floats const& p3) {
    Floats const s = Sum(Sum(Cross(p1, p2), Cross(p2, p3)), Cross(p3, p1));
    return std::fabs(static_cast<double>(Dot(s, normal)) * 0.5);
}

}  // namespace varnet
