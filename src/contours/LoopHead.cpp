// Choosing which point of a closed loop is its head.

#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

// A loop that can be turned has a head and a closing copy.
bool CanBeTurned(tagLoopTreeNode const& loop) { return loop.m_bClosed != 0 && PointCount(loop) >= 2; }

// Puts the points from the head up to the new head behind the last point before the closing copy. All points
// keep their nodes; what the closing copy holds is the caller's next concern.
void MakeHead(PointList& list, PointNode* pNewHead) {
    if (pNewHead == list.m_pNodeHead) return;
    PointNode* const pClosing = list.m_pNodeTail;
    PointNode* const pLast = pNewHead->pPrev;
    pClosing->pPrev->pNext = list.m_pNodeHead;
    list.m_pNodeHead->pPrev = pClosing->pPrev;
    pLast->pNext = pClosing;
    pClosing->pPrev = pLast;
    pNewHead->pPrev = nullptr;
    list.m_pNodeHead = pNewHead;
}

// The first node before the closing copy for which the test holds; null where there is none.
template <class Test>
PointNode* FindBeforeClosing(PointList const& list, Test test) {
    for (PointNode* p = list.m_pNodeHead; p != list.m_pNodeTail; p = p->pNext) {
        if (test(p)) return p;
    }
    return nullptr;
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): hosts link against points by value.
void tagLoopTreeNode::AdjustHeadToNearPoint(CPoint2D point) {
    if (m_bClosed == 0) return;
    PointNode* pNearest = FirstPoint(*this);
    double dNearest2 = 1e10;  // squared millimetres; what is further away does not attract the head
    for (PointNode* p = pNearest; p != nullptr; p = p->pNext) {
        double const d2 = D2ofPtoP(p->data, point);
        if (d2 < dNearest2) {
            dNearest2 = d2;
            pNearest = p;
        }
    }
    AdjutstHeadToPointAtPos(PositionOf(pNearest));
}

int tagLoopTreeNode::AdjutstHeadToPoint(CPoint2D point) {
    if (!CanBeTurned(*this)) return 0;
    PointNode* const pFound =
        FindBeforeClosing(*m_pPointList, [&point](PointNode const* p) { return (p->data == point) != 0; });
    if (pFound != nullptr) MakeHead(*m_pPointList, pFound);
    m_pPointList->m_pNodeTail->data = pFound != nullptr ? point : m_pPointList->m_pNodeHead->data;
    return pFound != nullptr ? 1 : 0;
}
// NOLINTEND(performance-unnecessary-value-param)

int tagLoopTreeNode::AdjutstHeadToPointAtPos(XR__POSITION* position) {
    if (!CanBeTurned(*this)) return 0;
    PointNode* const pFound =
        FindBeforeClosing(*m_pPointList, [position](PointNode* p) { return PositionOf(p) == position; });
    if (pFound != nullptr) MakeHead(*m_pPointList, pFound);
    m_pPointList->m_pNodeTail->data = m_pPointList->m_pNodeHead->data;
    return pFound != nullptr ? 1 : 0;
}
