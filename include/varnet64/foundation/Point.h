#pragma once

#include <cmath>

#include "foundation/Export.h"

/// A point in the plane, in millimetres, with two float attributes that travel with it.
///
/// The attributes are 0 in a new point. Copying keeps them; arithmetic and comparison leave them out, and
/// every point that an arithmetic operator returns has them at 0.
class VARNET_API CPoint2D {
public:
    CPoint2D() : x(0.0), y(0.0), m_fAttr1(0.0f), m_fAttr2(0.0f) {}
    CPoint2D(double dX, double dY) : x(dX), y(dY), m_fAttr1(0.0f), m_fAttr2(0.0f) {}
    CPoint2D(CPoint2D const& other)
        : x(other.x), y(other.y), m_fAttr1(other.m_fAttr1), m_fAttr2(other.m_fAttr2) {}
    virtual ~CPoint2D() = default;

    CPoint2D const& operator=(CPoint2D const& other) {
        x = other.x;
        y = other.y;
        m_fAttr1 = other.m_fAttr1;
        m_fAttr2 = other.m_fAttr2;
        return *this;
    }

    /// Coordinates only; the attributes of this point stay.
    CPoint2D& operator+=(CPoint2D const& other) {
        x += other.x;
        y += other.y;
        return *this;
    }
    /// Coordinates only; the attributes of this point stay.
    CPoint2D& operator-=(CPoint2D const& other) {
        x -= other.x;
        y -= other.y;
        return *this;
    }

    /// Row-vector product with a 3 by 3 matrix; the third row is the shift, the third column is not read.
    void Transform(double (*const pMatrix)[3]) {
        double const dX = x * pMatrix[0][0] + y * pMatrix[1][0] + pMatrix[2][0];
        double const dY = x * pMatrix[0][1] + y * pMatrix[1][1] + pMatrix[2][1];
        x = dX;
        y = dY;
    }

    /// The first four bytes of the storage of `y` (not an attribute), for hosts that park a float there.
    float& Y1();
    /// The second four bytes of the storage of `y`.
    float& Y2();

    double x;
    double y;
    float m_fAttr1;
    float m_fAttr2;
};

/// A point in space, in millimetres.
class VARNET_API CPoint3D {
public:
    CPoint3D() : x(0.0), y(0.0), z(0.0) {}
    CPoint3D(double dX, double dY, double dZ) : x(dX), y(dY), z(dZ) {}
    CPoint3D(CPoint3D const& other) : x(other.x), y(other.y), z(other.z) {}
    virtual ~CPoint3D() = default;

    CPoint3D const& operator=(CPoint3D const& other) {
        x = other.x;
        y = other.y;
        z = other.z;
        return *this;
    }

    CPoint3D& operator+=(CPoint3D const& other) {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }
    CPoint3D& operator-=(CPoint3D const& other) {
        x -= other.x;
        y -= other.y;
        z -= other.z;
        return *this;
    }

    /// Row-vector product with a 4 by 4 matrix; the fourth row is the shift, the fourth column is not read.
    void Transform(double (*const pMatrix)[4]) {
        double const dX = x * pMatrix[0][0] + y * pMatrix[1][0] + z * pMatrix[2][0] + pMatrix[3][0];
        double const dY = x * pMatrix[0][1] + y * pMatrix[1][1] + z * pMatrix[2][1] + pMatrix[3][1];
        double const dZ = x * pMatrix[0][2] + y * pMatrix[1][2] + z * pMatrix[2][2] + pMatrix[3][2];
        x = dX;
        y = dY;
        z = dZ;
    }

    double x;
    double y;
    double z;
};

/// 1 when the two points are strictly closer than 0.0001 on every axis, else 0. Attributes are not compared.
inline int operator==(CPoint2D const& a, CPoint2D const& b) {
    return std::fabs(a.x - b.x) < 0.0001 && std::fabs(a.y - b.y) < 0.0001 ? 1 : 0;
}
inline int operator==(CPoint3D const& a, CPoint3D const& b) {
    return std::fabs(a.x - b.x) < 0.0001 && std::fabs(a.y - b.y) < 0.0001 && std::fabs(a.z - b.z) < 0.0001
               ? 1
               : 0;
}

/// Per-coordinate arithmetic; the result's attributes are 0.
inline CPoint2D operator-(CPoint2D const& a, CPoint2D const& b) { return CPoint2D(a.x - b.x, a.y - b.y); }
inline CPoint2D operator+(CPoint2D const& a, CPoint2D const& b) { return CPoint2D(a.x + b.x, a.y + b.y); }
inline CPoint2D operator*(CPoint2D const& a, double dFactor) {
    return CPoint2D(a.x * dFactor, a.y * dFactor);
}
inline CPoint3D operator-(CPoint3D const& a, CPoint3D const& b) {
    return CPoint3D(a.x - b.x, a.y - b.y, a.z - b.z);
}

/// A directed segment in the plane.
class VARNET_API CEdge2D {
public:
    CEdge2D() = default;
    CEdge2D(CPoint2D const& start, CPoint2D const& end) : m_ptStart(start), m_ptEnd(end) {}
    CEdge2D(CEdge2D const&) = default;
    CEdge2D& operator=(CEdge2D const& other) {
        m_ptStart = other.m_ptStart;
        m_ptEnd = other.m_ptEnd;
        return *this;
    }
    virtual ~CEdge2D() = default;

    /// Swaps the two ends, attributes included.
    void Reverse();

    CPoint2D m_ptStart;
    CPoint2D m_ptEnd;
};

/// A directed segment in space.
class VARNET_API CEdge3D {
public:
    CEdge3D() = default;
    CEdge3D(CPoint3D const& start, CPoint3D const& end) : m_ptStart(start), m_ptEnd(end) {}
    CEdge3D(CEdge3D const&) = default;
    CEdge3D& operator=(CEdge3D const& other) {
        m_ptStart = other.m_ptStart;
        m_ptEnd = other.m_ptEnd;
        return *this;
    }
    virtual ~CEdge3D() = default;

    CPoint3D m_ptStart;
    CPoint3D m_ptEnd;
};
