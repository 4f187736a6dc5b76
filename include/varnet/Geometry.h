#pragma once

#include <array>
#include <cstdint>
#include <limits>

namespace varnet {

// The kit's values. Lengths are in millimetres.

struct Point2 {
    double x = 0.0;
    double y = 0.0;
    bool operator==(Point2 const&) const = default;
};

struct Point3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    bool operator==(Point3 const&) const = default;
};

/// Three indexes of points, counter-clockwise seen from outside.
using Triangle = std::array<std::int32_t, 3>;

/// A new box is empty: its minimum lies above its maximum.
struct Box2 {
    Point2 min{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    Point2 max{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    bool IsEmpty() const { return !(min.x <= max.x && min.y <= max.y); }
    void Add(Point2 const& p) {
        min = {p.x < min.x ? p.x : min.x, p.y < min.y ? p.y : min.y};
        max = {p.x > max.x ? p.x : max.x, p.y > max.y ? p.y : max.y};
    }
};

struct Box3 {
    Point3 min{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
               std::numeric_limits<double>::infinity()};
    Point3 max{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
               -std::numeric_limits<double>::infinity()};
    bool IsEmpty() const { return !(min.x <= max.x && min.y <= max.y && min.z <= max.z); }
    void Add(Point3 const& p) {
        min = {p.x < min.x ? p.x : min.x, p.y < min.y ? p.y : min.y, p.z < min.z ? p.z : min.z};
        max = {p.x > max.x ? p.x : max.x, p.y > max.y ? p.y : max.y, p.z > max.z ? p.z : max.z};
    }
};

}  // namespace varnet
