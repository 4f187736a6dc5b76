// Joining the points of one path to another.

#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "foundation/Require.h"

using namespace varnet;

void tagLoopTreeNode::InsertLoopAtHead(tagLoopTreeNode* pOther, int nFlags) {
    VARNET_REQUIRE(pOther != this);
    if (pOther->m_pPointList == nullptr) return;
    PointList& points = PointsOf(*this);
    for (PointNode* p = pOther->m_pPointList->m_pNodeTail; p != nullptr; p = p->pPrev) {
        if (points.IsEmpty() == 0 && p->data == points.GetHead()) continue;
        SetPointBits(p->data, nFlags);
        points.AddHead(p->data);
    }
}

void tagLoopTreeNode::InsertLoopAtTail(tagLoopTreeNode* pOther, int nFlags) {
    VARNET_REQUIRE(pOther != this);
    if (pOther->m_pPointList == nullptr) return;
    PointList& points = PointsOf(*this);
    for (PointNode* p = pOther->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
        if (points.IsEmpty() == 0 && p->data == points.GetTail()) continue;
        SetPointBits(p->data, nFlags);
        points.AddTail(p->data);
    }
}
