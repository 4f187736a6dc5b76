#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "varnet/Geometry.h"

namespace varnet {

/// A point of the grid. Coordinates are from -2^30 to 2^30, and those of a grid made for its points from
/// -2^29 - 1 to 2^29 + 1: so differences stay below 2^31, and doubled areas fit 64 bits.
struct GridPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    bool operator==(GridPoint const&) const = default;
    /// From left to right, and below each other from the lower one to the upper.
    std::uint64_t Key() const {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(x) + kMiddle) << 32 |
               static_cast<std::uint64_t>(static_cast<std::int64_t>(y) + kMiddle);
    }
    static GridPoint FromKey(std::uint64_t key) {
        return {static_cast<std::int32_t>(static_cast<std::int64_t>(key >> 32) - kMiddle),
                static_cast<std::int32_t>(static_cast<std::int64_t>(key & 0xFFFFFFFFu) - kMiddle)};
    }
    bool operator<(GridPoint const& other) const { return x != other.x ? x < other.x : y < other.y; }

private:
    static constexpr std::int64_t kMiddle = std::int64_t{1} << 31;
};

/// Twice the area of the triangle, above 0 where it runs counter-clockwise; exact.
inline std::int64_t Turn(GridPoint const& a, GridPoint const& b, GridPoint const& c) {
    return (std::int64_t{b.x} - a.x) * (std::int64_t{c.y} - a.y) -
           (std::int64_t{b.y} - a.y) * (std::int64_t{c.x} - a.x);
}

/// The grid on which it is decided what lies where: a power of two of millimetres wide, a thousand million
/// steps across the box. What is nearer to each other than a step is at one place.
class Grid {
public:
    explicit Grid(Box2 const& box) {
        if (box.IsEmpty()) return;
        double const extent = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
        int exponent = 0;
        std::frexp(extent > kLeastExtent ? extent : kLeastExtent, &exponent);
        m_Unit = std::ldexp(1.0, exponent - 30);
        m_PerUnit = std::ldexp(1.0, 30 - exponent);
        m_Origin = {Middle(box.min.x, box.max.x), Middle(box.min.y, box.max.y)};
    }
    double Unit() const { return m_Unit; }
    GridPoint Of(Point2 const& p) const { return {Of(p.x, m_Origin.x), Of(p.y, m_Origin.y)}; }
    Point2 Place(GridPoint const& p) const {
        return {m_Origin.x + static_cast<double>(p.x) * m_Unit,
                m_Origin.y + static_cast<double>(p.y) * m_Unit};
    }

private:
    double Middle(double low, double high) const {
        return std::floor((low + (high - low) / 2.0) * m_PerUnit) * m_Unit;
    }
    static constexpr double kLeastExtent = 1e-100;

    std::int32_t Of(double value, double origin) const {
        constexpr double kFarthest = 536870913.0;
        return static_cast<std::int32_t>(
            std::clamp(std::floor((value - origin) * m_PerUnit + 0.5), -kFarthest, kFarthest));
    }

    double m_Unit = 1.0;
    double m_PerUnit = 1.0;
    Point2 m_Origin;
};

}  // namespace varnet
