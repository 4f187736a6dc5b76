#pragma once

#include "foundation/Point.h"

/// An axis-parallel rectangle, in millimetres. Built without arguments it is the empty box, whose minimum
/// is the float 1e20 widened to double (bit pattern 0x4415AF1D80000000) and whose maximum is its negative.
class VARNET_API CBoundBox2D {
public:
    CBoundBox2D(CPoint2D const& min = CPoint2D(1.00000002004087734272e20, 1.00000002004087734272e20),
                CPoint2D const& max = CPoint2D(-1.00000002004087734272e20, -1.00000002004087734272e20))
        : m_ptMin(min), m_ptMax(max) {}
    CBoundBox2D(CBoundBox2D const&) = default;
    CBoundBox2D& operator=(CBoundBox2D const& other) {
        m_ptMin = other.m_ptMin;
        m_ptMax = other.m_ptMax;
        return *this;
    }
    virtual ~CBoundBox2D() = default;

    /// Grows to hold the other box; the empty box changes nothing.
    CBoundBox2D& operator+=(CBoundBox2D const& other) {
        if (other.m_ptMin.x < m_ptMin.x) m_ptMin.x = other.m_ptMin.x;
        if (other.m_ptMin.y < m_ptMin.y) m_ptMin.y = other.m_ptMin.y;
        if (other.m_ptMax.x > m_ptMax.x) m_ptMax.x = other.m_ptMax.x;
        if (other.m_ptMax.y > m_ptMax.y) m_ptMax.y = other.m_ptMax.y;
        return *this;
    }
    /// Grows to hold the point. A coordinate that is not a number changes nothing.
    CBoundBox2D& operator+=(CPoint2D const& point) {
        m_ptMin.x = point.x < m_ptMin.x ? point.x : m_ptMin.x;
        m_ptMin.y = point.y < m_ptMin.y ? point.y : m_ptMin.y;
        m_ptMax.x = point.x > m_ptMax.x ? point.x : m_ptMax.x;
        m_ptMax.y = point.y > m_ptMax.y ? point.y : m_ptMax.y;
        return *this;
    }

    CPoint2D Center() const;
    /// Extent per axis, at least 0.0 on each: the empty box has size (0, 0).
    CPoint2D Size() const;
    /// 1 when the point is strictly inside; a point on the border is outside.
    int IsInBox(CPoint2D const& point) const {
        return m_ptMin.x < point.x && point.x < m_ptMax.x && m_ptMin.y < point.y && point.y < m_ptMax.y ? 1
                                                                                                        : 0;
    }
    /// 1 when the point is inside or on the border.
    int IsInBox2(CPoint2D const& point) const {
        return m_ptMin.x <= point.x && point.x <= m_ptMax.x && m_ptMin.y <= point.y && point.y <= m_ptMax.y
                   ? 1
                   : 0;
    }
    /// 1 when the maximum is not below the minimum on any axis.
    int IsValid() const { return m_ptMax.x >= m_ptMin.x && m_ptMax.y >= m_ptMin.y ? 1 : 0; }
    /// Clamps the point into the box. 1 when nothing had to change, else 0.
    int LimitPointInBox(CPoint2D& point) const;

    CPoint2D m_ptMin;
    CPoint2D m_ptMax;
};

/// An axis-parallel box in space, in millimetres; empty as CBoundBox2D is.
class VARNET_API CBoundBox3D {
public:
    CBoundBox3D(CPoint3D const& min = CPoint3D(1.00000002004087734272e20, 1.00000002004087734272e20,
                                               1.00000002004087734272e20),
                CPoint3D const& max = CPoint3D(-1.00000002004087734272e20, -1.00000002004087734272e20,
                                               -1.00000002004087734272e20))
        : m_ptMin(min), m_ptMax(max) {}
    CBoundBox3D(CBoundBox3D const&) = default;
    CBoundBox3D& operator=(CBoundBox3D const& other) {
        m_ptMin = other.m_ptMin;
        m_ptMax = other.m_ptMax;
        return *this;
    }
    virtual ~CBoundBox3D() = default;

    /// Grows to hold the other box; the empty box changes nothing.
    CBoundBox3D& operator+=(CBoundBox3D const& other) {
        if (other.m_ptMin.x < m_ptMin.x) m_ptMin.x = other.m_ptMin.x;
        if (other.m_ptMin.y < m_ptMin.y) m_ptMin.y = other.m_ptMin.y;
        if (other.m_ptMin.z < m_ptMin.z) m_ptMin.z = other.m_ptMin.z;
        if (other.m_ptMax.x > m_ptMax.x) m_ptMax.x = other.m_ptMax.x;
        if (other.m_ptMax.y > m_ptMax.y) m_ptMax.y = other.m_ptMax.y;
        if (other.m_ptMax.z > m_ptMax.z) m_ptMax.z = other.m_ptMax.z;
        return *this;
    }
    /// Grows to hold the point. A coordinate that is not a number changes nothing.
    CBoundBox3D& operator+=(CPoint3D const& point) {
        m_ptMin.x = point.x < m_ptMin.x ? point.x : m_ptMin.x;
        m_ptMin.y = point.y < m_ptMin.y ? point.y : m_ptMin.y;
        m_ptMin.z = point.z < m_ptMin.z ? point.z : m_ptMin.z;
        m_ptMax.x = point.x > m_ptMax.x ? point.x : m_ptMax.x;
        m_ptMax.y = point.y > m_ptMax.y ? point.y : m_ptMax.y;
        m_ptMax.z = point.z > m_ptMax.z ? point.z : m_ptMax.z;
        return *this;
    }

    CPoint3D Center() const;
    /// Extent per axis, not clamped: the empty box has a large negative size.
    CPoint3D Size() const;
    /// 1 when the point is strictly inside; a point on the border is outside.
    int IsInBox(CPoint3D const& point) const {
        return m_ptMin.x < point.x && point.x < m_ptMax.x && m_ptMin.y < point.y && point.y < m_ptMax.y &&
                       m_ptMin.z < point.z && point.z < m_ptMax.z
                   ? 1
                   : 0;
    }
    /// 1 when the point is inside or on the border.
    int IsInBox2(CPoint3D const& point) const {
        return m_ptMin.x <= point.x && point.x <= m_ptMax.x && m_ptMin.y <= point.y && point.y <= m_ptMax.y &&
                       m_ptMin.z <= point.z && point.z <= m_ptMax.z
                   ? 1
                   : 0;
    }
    /// 1 when the maximum is not below the minimum on any axis.
    int IsValid() const {
        return m_ptMax.x >= m_ptMin.x && m_ptMax.y >= m_ptMin.y && m_ptMax.z >= m_ptMin.z ? 1 : 0;
    }

    CPoint3D m_ptMin;
    CPoint3D m_ptMax;
};

/// How two boxes lie; all tests of corners are strict.
///   0  both corners of b inside a
///   1  no corner of b inside a, both corners of a inside b
///   2  no corner inside another box; in the plane the boxes are also separate on x or y
///   3  anything else: partial overlap or a shared border
/// In space two boxes that cross without a corner inside report 2, since separation is not looked at there.
VARNET_API int BoxRelation(CBoundBox2D const& a, CBoundBox2D const& b);
VARNET_API int BoxRelation(CBoundBox3D const& a, CBoundBox3D const& b);
