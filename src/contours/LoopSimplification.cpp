// Thinning a path out. Each way is a greedy walk: from an anchor a chord is drawn out as far as its rule
// allows, what it replaces is removed, and the next point that is left becomes the anchor.

#include <algorithm>
#include <cmath>

#include "contours/ChordCheck.h"
#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

// Degrees: a path that turns by more from its first direction is not thinned.
constexpr double kGreatestTurn = 10.0;

// Squared millimetres: two points nearer than that have no direction of their own, but that of the stretch.
constexpr double kNoDirection2 = 1e-6;
constexpr double kNoDirectionOfLine2 = 1e-8;

// The second term stands as it is, and is not the difference's complement: a turn across the seam of
// directions at 180 degrees counts as large, and is not thinned.
double TurnAlong(double dFirst, double dAngle) {
    return std::min(std::fabs(dAngle - dFirst), 360.0 - dFirst);
}

// The direction of a step, or that of the stretch when the step is too short to have one.
double StepDirection(CPoint2D const& from, CPoint2D const& to, double dShortest2, double dStretch) {
    return dShortest2 > D2ofPtoP(from, to) ? dStretch : CalAngleDeg(from, to);
}

// The last point of the stretch from an anchor that turns little and stays within the tolerance of its chord.
PointNode* EndOfStraight(PointNode* pAnchor, double dTolerance2) {
    ChordCheck chord(pAnchor, dTolerance2);
    PointNode* pRunning = pAnchor->pNext;
    double const dFirst = CalAngleDeg(pAnchor->data, pRunning->data);
    for (PointNode* p = pRunning->pNext; p != nullptr; p = p->pNext) {
        double const dAngle = StepDirection(pRunning->data, p->data, kNoDirection2, dFirst);
        if (TurnAlong(dFirst, dAngle) > kGreatestTurn || !chord.Holds(p)) break;
        pRunning = p;
    }
    return pRunning;
}

// The last point that a chord from the anchor may end at without leaving the tolerance on the way.
PointNode* EndOfChord(PointNode* pAnchor, double dTolerance2) {
    ChordCheck chord(pAnchor, dTolerance2);
    PointNode* pLast = pAnchor->pNext;
    while (pLast->pNext != nullptr && chord.Holds(pLast->pNext)) pLast = pLast->pNext;
    return pLast;
}

void RemoveBetween(PointList& points, PointNode* pAnchor, PointNode* pKept) {
    while (pAnchor->pNext != pKept) points.RemoveAt(PositionOf(pAnchor->pNext));
}

void RemoveStraight(PointList& points, double dTolerance2) {
    PointNode* pAnchor = points.m_pNodeHead;
    while (pAnchor->pNext != nullptr) {
        if (pAnchor->pNext->data == pAnchor->data) {
            points.RemoveAt(PositionOf(pAnchor->pNext));
            continue;
        }
        RemoveBetween(points, pAnchor, EndOfStraight(pAnchor, dTolerance2));
        pAnchor = pAnchor->pNext;
    }
}

// The head of a closed loop, and with it the closing copy, where it is on a straight stretch.
void RemoveStraightHead(PointList& points, double dTolerance2) {
    CPoint2D& head = points.m_pNodeHead->data;
    CPoint2D& next = points.m_pNodeHead->pNext->data;
    CPoint2D& last = points.m_pNodeTail->pPrev->data;
    double const dDifference = std::fabs(CalAngleDeg(head, next) - CalAngleDeg(last, head));
    double const dTurn = std::min(dDifference, 360.0 - dDifference);
    if (!(kGreatestTurn > dTurn) || !(dTolerance2 > D2ofPtoLine(head, next, last))) return;
    points.RemoveHead();
    points.RemoveTail();
    points.AddTail(points.GetHead());
}

}  // namespace

void tagLoopTreeNode::Optimize() {
    if (PointCount(*this) < 3) return;
    double const dTolerance2 = m_dTolerance * m_dTolerance;
    RemoveStraight(*m_pPointList, dTolerance2);
    if (m_bClosed == 0) return;
    // Fewer than three corners and the closing copy are no loop.
    if (m_pPointList->GetCount() < 4) {
        m_pPointList->RemoveAll();
        return;
    }
    RemoveStraightHead(*m_pPointList, dTolerance2);
}

void tagLoopTreeNode::OptimizeLine(double dAngle) {
    if (PointCount(*this) < 3) return;
    PointNode* pAnchor = m_pPointList->m_pNodeHead;
    while (pAnchor->pNext != nullptr) {
        PointNode* pRunning = pAnchor->pNext;
        double const dFirst = CalAngleDeg(pAnchor->data, pRunning->data);
        while (pRunning->pNext != nullptr) {
            PointNode* const pNext = pRunning->pNext;
            double const dStep = StepDirection(pRunning->data, pNext->data, kNoDirectionOfLine2, dFirst);
            if (TurnAlong(dFirst, dStep) > dAngle) break;
            m_pPointList->RemoveAt(PositionOf(pRunning));
            pRunning = pNext;
        }
        pAnchor = pRunning;
    }
}

void tagLoopTreeNode::Optimize_UnClosed(double dDistance) {
    if (PointCount(*this) < 3) return;
    PointNode* pAnchor = m_pPointList->m_pNodeHead;
    while (pAnchor->pNext != nullptr) {
        RemoveBetween(*m_pPointList, pAnchor, EndOfChord(pAnchor, dDistance * dDistance));
        pAnchor = pAnchor->pNext;
    }
}
