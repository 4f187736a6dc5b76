#include "foundation/BoundBox.h"

namespace {

double AtLeastZero(double value) { return value < 0.0 ? 0.0 : value; }

// The corner tests that both dimensions of BoxRelation rest on.
struct CornersInside {
    bool bMinOfB;
    bool bMaxOfB;
    bool bMinOfA;
    bool bMaxOfA;

    bool Any() const { return bMinOfB || bMaxOfB || bMinOfA || bMaxOfA; }
};

template <class Box>
CornersInside TestCorners(Box const& a, Box const& b) {
    return {a.IsInBox(b.m_ptMin) != 0, a.IsInBox(b.m_ptMax) != 0, b.IsInBox(a.m_ptMin) != 0,
            b.IsInBox(a.m_ptMax) != 0};
}

constexpr int kBInA = 0;
constexpr int kAInB = 1;
constexpr int kApart = 2;
constexpr int kOverlap = 3;

int RelationOf(CornersInside const& in, bool bApartWithoutCorners) {
    if (in.bMinOfB && in.bMaxOfB) return kBInA;
    if (!in.bMinOfB && !in.bMaxOfB && in.bMinOfA && in.bMaxOfA) return kAInB;
    if (!in.Any() && bApartWithoutCorners) return kApart;
    return kOverlap;
}

}  // namespace

CPoint2D CBoundBox2D::Center() const {
    return CPoint2D((m_ptMin.x + m_ptMax.x) * 0.5, (m_ptMin.y + m_ptMax.y) * 0.5);
}

CPoint2D CBoundBox2D::Size() const {
    return CPoint2D(AtLeastZero(m_ptMax.x - m_ptMin.x), AtLeastZero(m_ptMax.y - m_ptMin.y));
}

int CBoundBox2D::LimitPointInBox(CPoint2D& point) const {
    int nUnchanged = 1;
    auto const set = [&nUnchanged](double& value, double limit) {
        value = limit;
        nUnchanged = 0;
    };
    if (point.x < m_ptMin.x) set(point.x, m_ptMin.x);
    if (point.x > m_ptMax.x) set(point.x, m_ptMax.x);
    if (point.y < m_ptMin.y) set(point.y, m_ptMin.y);
    if (point.y > m_ptMax.y) set(point.y, m_ptMax.y);
    return nUnchanged;
}

CPoint3D CBoundBox3D::Center() const {
    return CPoint3D((m_ptMin.x + m_ptMax.x) * 0.5, (m_ptMin.y + m_ptMax.y) * 0.5,
                    (m_ptMin.z + m_ptMax.z) * 0.5);
}

CPoint3D CBoundBox3D::Size() const { return m_ptMax - m_ptMin; }

int BoxRelation(CBoundBox2D const& a, CBoundBox2D const& b) {
    bool const bSeparate = a.m_ptMin.x > b.m_ptMax.x || b.m_ptMin.x > a.m_ptMax.x ||
                           a.m_ptMin.y > b.m_ptMax.y || b.m_ptMin.y > a.m_ptMax.y;
    return RelationOf(TestCorners(a, b), bSeparate);
}

int BoxRelation(CBoundBox3D const& a, CBoundBox3D const& b) { return RelationOf(TestCorners(a, b), true); }
