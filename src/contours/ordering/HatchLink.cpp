// One link of a contour with a hatch: its foot on the contour, what it costs, and on which side of the link
// point the contour goes in.

#include "contours/HatchLink.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "contours/LoopWalk.h"
#include "contours/ordering/HatchLinkSearch.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

using std::numbers::pi;

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

// Contour and hatch run along each other below this angle, 30 degrees.
constexpr double kAlong = pi / 6.0;

// The cost of a millimetre between contour and link point, in millimetres of travel.
constexpr double kGapCost = 3.0;

// The angle between two directions where either sense counts as the same.
double AngleBetween(double dFrom, double dTo) {
    double const dChange = std::fabs(CalAngleChange(dFrom, dTo));
    return std::min(dChange, pi - dChange);
}

std::int32_t IsAlong(double dContour, double dHatch) {
    return AngleBetween(dContour, dHatch) < kAlong ? 1 : 0;
}

// How far one direction is behind another, counter-clockwise.
double TurnTo(double dFrom, double dTo) {
    double const dTurn = dTo - dFrom;
    return dTurn < 0.0 ? dTurn + 2.0 * pi : dTurn;
}

// Which neighbour comes first, going round the link point from the foot, and where the paths run along each
// other.
void ChooseSide(LinkCandidate const& candidate, double const contour[2], tagHatchLink& link) {
    double const dIn = CalAngleRad(candidate.back, candidate.point);
    double const dOut = CalAngleRad(candidate.point, candidate.front);
    double const dToFoot = CalAngleRad(candidate.point, link.m_Foot);
    double const dToBack = TurnTo(dToFoot, CalAngleRad(candidate.point, candidate.back));
    double const dToFront = TurnTo(dToFoot, CalAngleRad(candidate.point, candidate.front));
    link.m_bSide = dToBack > dToFront ? 1 : 0;
    link.m_bCutTail = IsAlong(contour[0], link.m_bSide != 0 ? dIn : dOut);
    link.m_bCutHead = IsAlong(contour[1], link.m_bSide != 0 ? dOut : dIn);
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

double varnet::EvaluateLink(LinkCandidate const& candidate, CPoint2D const& pos, double dWidth,
                            tagLoopTreeNode& loop, ContourReach& reach, tagHatchLink& link) {
    double const d2 = D2ofPtoP(pos, candidate.entry);
    if (d2 > link.m_dCost2) return -1.0;
    ContourReach::Segment const segment = reach.Find(candidate.point);
    if (segment.pEnd == nullptr) return -1.0;
    double const dGap = std::max(0.0, std::sqrt(segment.dDistance2) - dWidth);
    double const dCost = std::sqrt(d2) + dGap * kGapCost;
    if (!(link.m_dCost > dCost)) return -1.0;

    double contour[2];
    link.m_FootPos = PositionOf(segment.pEnd);
    link.m_nFootKind =
        FindFootOnLoopEdge(&loop, link.m_FootPos, candidate.point, 2.0 * dWidth, link.m_Foot, contour);
    ChooseSide(candidate, contour, link);
    link.m_dCost = dCost;
    link.m_dCost2 = dCost * dCost;
    link.m_HatchPoint = candidate.point;
    return dCost;
}

double EvaluateHatchLink(CPoint2D candidate[4], CPoint2D& pos, double dWidth, tagLoopTreeNode* pLoop,
                         tagHatchLink& link) {
    ContourReach reach(*pLoop, dWidth);
    return EvaluateLink({candidate[0], candidate[1], candidate[2], candidate[3]}, pos, dWidth, *pLoop, reach,
                        link);
}
