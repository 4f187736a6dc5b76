// The foot of a link: the point of a contour segment nearest to a vertex of a hatch.

#include <cmath>

#include "contours/HatchLink.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

// Values of tagHatchLink::m_nFootKind.
constexpr int kWithin = 0;
constexpr int kAtStart = 1;
constexpr int kAtEnd = 2;
constexpr int kNoSegment = -1;

// The neighbours of a segment; those across head and tail, which are one point, are behind the closing copy.
CPoint2D const& PointBefore(PointList const& points, PointNode const* pStart) {
    return pStart == points.m_pNodeHead ? points.m_pNodeTail->pPrev->data : pStart->pPrev->data;
}

CPoint2D const& PointBehind(PointList const& points, PointNode const* pEnd) {
    return pEnd == points.m_pNodeTail ? points.m_pNodeHead->pNext->data : pEnd->pNext->data;
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts link against points by value.
int FindFootOnLoopEdge(tagLoopTreeNode* pLoop, XR__POSITION* end, CPoint2D point, double dSpan,
                       CPoint2D& foot, double angles[2]) {
    auto const* const pEnd = reinterpret_cast<PointNode*>(end);
    if (pEnd == nullptr || pEnd->pPrev == nullptr) return kNoSegment;
    CPoint2D s(pEnd->pPrev->data);
    CPoint2D t(pEnd->data);
    double const dBefore = CalAngleRad(PointBefore(*pLoop->m_pPointList, pEnd->pPrev), s);
    double const dAlong = CalAngleRad(s, t);
    double const dBehind = CalAngleRad(t, PointBehind(*pLoop->m_pPointList, pEnd));
    double const s2 = D2ofPtoP(s, point);
    double const t2 = D2ofPtoP(t, point);
    double const e2 = D2ofPtoP(s, t);
    if (t2 >= e2 + s2) {
        foot = s;
        angles[0] = dBefore;
        angles[1] = dAlong;
        return kAtStart;
    }
    if (s2 >= e2 + t2) {
        foot = t;
        angles[0] = dAlong;
        angles[1] = dBehind;
        return kAtEnd;
    }
    double const h2 = D2ofPtoLine(point, s, t);
    double const ds = std::sqrt(s2 - h2);
    double const dt = std::sqrt(t2 - h2);
    foot = ExtendLine(&s, &t, ds, 1);
    angles[0] = ds > dSpan * 0.5 ? dAlong : dBefore;
    angles[1] = dt > dSpan * 0.5 ? dAlong : dBehind;
    return kWithin;
}
