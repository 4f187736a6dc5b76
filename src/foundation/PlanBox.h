#pragma once

#include <algorithm>
#include <limits>

#include "foundation/BoundBox.h"

namespace varnet {

/// A box in the plane by its four sides. In a box that holds nothing, the sides stand the wrong way round.
struct PlanBox {
    double xMin = std::numeric_limits<double>::infinity();
    double yMin = std::numeric_limits<double>::infinity();
    double xMax = -std::numeric_limits<double>::infinity();
    double yMax = -std::numeric_limits<double>::infinity();

    friend bool operator==(PlanBox const&, PlanBox const&) = default;
};

inline constexpr PlanBox kWholePlane{
    -std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};

inline PlanBox PlanBoxOf(CBoundBox2D const& box) {
    return {box.m_ptMin.x, box.m_ptMin.y, box.m_ptMax.x, box.m_ptMax.y};
}

inline PlanBox PlanBoxOf(CPoint2D const& a, CPoint2D const& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

/// The smallest box that holds both.
inline PlanBox Union(PlanBox const& a, PlanBox const& b) {
    return {std::min(a.xMin, b.xMin), std::min(a.yMin, b.yMin), std::max(a.xMax, b.xMax),
            std::max(a.yMax, b.yMax)};
}

/// As the box with all its sides so much further out.
inline PlanBox Grown(PlanBox const& box, double d) {
    return {box.xMin - d, box.yMin - d, box.xMax + d, box.yMax + d};
}

/// Whether the point is in the box or on its sides.
inline bool Holds(PlanBox const& box, double x, double y) {
    return box.xMin <= x && x <= box.xMax && box.yMin <= y && y <= box.yMax;
}

/// Whether the point is in the box, and not on its sides.
inline bool HoldsStrictly(PlanBox const& box, double x, double y) {
    return box.xMin < x && x < box.xMax && box.yMin < y && y < box.yMax;
}

/// Whether the boxes have a point in common, their sides included.
inline bool Touch(PlanBox const& a, PlanBox const& b) {
    return a.xMin <= b.xMax && b.xMin <= a.xMax && a.yMin <= b.yMax && b.yMin <= a.yMax;
}

/// Whether both corners of b are strictly inside a: BoxRelation(a, b) == 0, and BoxRelation(b, a) == 1.
inline bool IsBoxInside(PlanBox const& a, PlanBox const& b) {
    return HoldsStrictly(a, b.xMin, b.yMin) && HoldsStrictly(a, b.xMax, b.yMax);
}

}  // namespace varnet
