#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "part/LargeVector.h"
#include "varnet/Geometry.h"
#include "varnet/Part.h"

namespace varnet {

/// Points, and triangles of their indexes.
struct FlatMesh {
    LargeVector<Point3> points;
    LargeVector<Triangle> triangles;
};

/// A corner whose zeros do not have the signs of those of its point: 0.0 and -0.0 are one point.
struct ZeroSigns {
    std::int64_t corner;  ///< 3 t + k for corner k of triangle t
    unsigned negative;    ///< bit 0 for x, 1 for y, 2 for z: a zero that is negative here
};

/// What facets add up to.
struct FacetSums {
    Point3 about;          ///< a corner of the first one
    Point3 normals;        ///< of a length of twice the areas
    double area2 = 0.0;    ///< twice the area
    double volume6 = 0.0;  ///< six times the volume, about that point
};

/// A mesh as a reader makes it: equal corners joined, facets with two equal corners left out.
struct RawMesh {
    FlatMesh mesh;
    MeshFormat format = MeshFormat::kBinaryStl;
    std::string header;  ///< of the file, as it stands there, up to its first zero byte
    std::vector<ZeroSigns> zeros;
    FacetSums sums;             ///< of the facets
    bool hasCollinear = false;  ///< whether a facet's doubled area may be no more than kCollinear
};

/// Coordinates beyond this are none.
inline constexpr double kFarthestCoordinate = 1e10;

/// Twice the area, square millimetres, up to which the classic model refuses a facet.
inline constexpr double kCollinear = 1e-10;

inline Point3 operator-(Point3 const& a, Point3 const& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Point3 operator+(Point3 const& a, Point3 const& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Point3 operator*(double f, Point3 const& a) { return {f * a.x, f * a.y, f * a.z}; }
inline Point3 Cross(Point3 const& a, Point3 const& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double Dot(Point3 const& a, Point3 const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double Length(Point3 const& a) { return std::sqrt(Dot(a, a)); }

/// Twice the area, the lowest corner in front as the classic model has it, so that both judge alike.
inline double DoubledArea(Point3 const& a, Point3 const& b, Point3 const& c) {
    if (b.z >= a.z && c.z >= a.z) return Length(Cross(b - a, c - a));
    if (b.z < a.z && c.z >= b.z) return Length(Cross(c - b, a - b));
    return Length(Cross(a - c, b - c));
}

/// False for NaN too.
inline bool IsInRange(Point3 const& p) {
    return std::fabs(p.x) <= kFarthestCoordinate && std::fabs(p.y) <= kFarthestCoordinate &&
           std::fabs(p.z) <= kFarthestCoordinate;
}

}  // namespace varnet
