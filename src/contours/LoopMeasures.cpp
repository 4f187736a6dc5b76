// Area, bounds, length, direction of a loop, and the test of a point against it.

#include <cmath>

#include "contours/CrossingParity.h"
#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

double tagLoopTreeNode::GetArea() {
    if (PointCount(*this) < 3) return 0.0;
    PointNode const* const pHead = FirstPoint(*this);
    double const x0 = pHead->data.x;
    double const y0 = pHead->data.y;
    double dSum = 0.0;
    for (PointNode const* p = pHead->pNext; p->pNext != nullptr; p = p->pNext) {
        CPoint2D const& a = p->data;
        CPoint2D const& b = p->pNext->data;
        dSum += (a.x - x0) * (b.y - y0) - (a.y - y0) * (b.x - x0);
    }
    return dSum;
}

CBoundBox2D tagLoopTreeNode::GetBoundBox() {
    CBoundBox2D box;
    for (PointNode const* p = FirstPoint(*this); p != nullptr; p = p->pNext) box += p->data;
    return m_Box = box;
}

double varnet::MeasureBoxAndArea(tagLoopTreeNode& loop) {
    PointNode const* const pHead = FirstPoint(loop);
    CBoundBox2D box;
    double dSum = 0.0;
    if (pHead != nullptr) {
        double const x0 = pHead->data.x;
        double const y0 = pHead->data.y;
        double ax = 0.0;
        double ay = 0.0;
        box += pHead->data;
        if (pHead->pNext != nullptr) {
            ax = pHead->pNext->data.x - x0;
            ay = pHead->pNext->data.y - y0;
            box += pHead->pNext->data;
            ForEachPoint(pHead->pNext->pNext, [&](CPoint2D const& b) {
                box += b;
                double const bx = b.x - x0;
                double const by = b.y - y0;
                dSum += ax * by - ay * bx;
                ax = bx;
                ay = by;
            });
        }
    }
    loop.m_Box = box;
    return dSum;
}

double tagLoopTreeNode::GetLength() {
    if (PointCount(*this) < 2) return 0.0;
    double dSum = 0.0;
    for (PointNode const* p = FirstPoint(*this); p->pNext != nullptr; p = p->pNext) {
        dSum += Distance(p->data, p->pNext->data);
    }
    return dSum;
}

LOOPDIRECT tagLoopTreeNode::GetLoopDirection() { return GetArea() > 0.0 ? LOOPDIRECT_CCW : LOOPDIRECT_CW; }

void tagLoopTreeNode::ReverseLoop() {
    if (m_pPointList == nullptr) return;
    if (m_nDirection == LOOPDIRECT_CCW) {
        m_nDirection = LOOPDIRECT_CW;
    } else if (m_nDirection == LOOPDIRECT_CW) {
        m_nDirection = LOOPDIRECT_CCW;
    }
    ReverseOrder(*m_pPointList);
    m_pPointList->m_nBlockSize = kPointBlockSize;
}

namespace {

// The rise of the way from one point to another over its run to the right, for comparing.
double Slope(CPoint2D const& from, CPoint2D const& to) {
    // Compared with the run: a steeper way counts as upright, and its rise is blown up instead of divided.
    constexpr double kUpright = 1e-12;
    constexpr double kUprightFactor = 1e20;
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    return kUpright > dx ? dy * kUprightFactor : dy / dx;
}

}  // namespace

LOOPDIRECT JudgeLoopDirection(XR_CList<CPoint2D, CPoint2D&>* pList) {
    if (pList == nullptr || pList->GetCount() < 4) return LOOPDIRECT_CW;
    PointNode const* const pHead = pList->m_pNodeHead;
    PointNode const* const pTail = pList->m_pNodeTail;
    PointNode const* pLeft = pHead;
    for (PointNode const* p = pHead->pNext; p != nullptr; p = p->pNext) {
        if (p->data.x < pLeft->data.x) pLeft = p;
    }
    // The ends of the list are one point.
    PointNode const* const pNext = pLeft == pTail ? pHead->pNext : pLeft->pNext;
    PointNode const* const pPrevious = pLeft == pHead ? pTail->pPrev : pLeft->pPrev;
    return Slope(pLeft->data, pPrevious->data) > Slope(pLeft->data, pNext->data) ? LOOPDIRECT_CCW
                                                                                 : LOOPDIRECT_CW;
}

int IsInLoop(tagLoopTreeNode* pLoop, CPoint2D& point) {
    if (pLoop->m_bClosed == 0 || pLoop->m_Box.IsInBox(point) == 0) return 0;
    PointNode const* const pHead = FirstPoint(*pLoop);
    return pHead != nullptr ? CrossingParity(pHead, point.x, point.y) : 0;
}
