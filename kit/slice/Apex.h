#pragma once

#include "varnet/Geometry.h"

namespace varnet {

/// The point over which the volumes of facets are measured: the first corner of all.
class Apex {
public:
    Apex() = default;
    explicit Apex(Point3 const& point) : m_Point(point), m_IsSet(true) {}
    /// Six times the signed volume of the tetrahedron between a facet and the point.
    double VolumeBelow(Point3 a, Point3 b, Point3 c) {
        if (!m_IsSet) m_Point = a;
        m_IsSet = true;
        for (Point3* const p : {&a, &b, &c}) *p = {p->x - m_Point.x, p->y - m_Point.y, p->z - m_Point.z};
        return a.x * (b.y * c.z - b.z * c.y) + a.y * (b.z * c.x - b.x * c.z) + a.z * (b.x * c.y - b.y * c.x);
    }
    Point3 const& Point() const { return m_Point; }

private:
    Point3 m_Point;
    bool m_IsSet = false;
};

}  // namespace varnet
