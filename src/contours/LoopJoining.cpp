// Joining the points of one path to another.

#include <bit>
#include <cstdint>

#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"

namespace {

// The second attribute is a bit set in a float's bytes; as a number it may be anything, and stays unread.
void SetBits(float& attribute, int nBits) {
    attribute =
        std::bit_cast<float>(std::bit_cast<std::uint32_t>(attribute) | static_cast<std::uint32_t>(nBits));
}

PointList& PointsOf(tagLoopTreeNode& loop) {
    if (loop.m_pPointList == nullptr) loop.m_pPointList = new PointList(kPointBlockSize);
    return *loop.m_pPointList;
}

}  // namespace

void tagLoopTreeNode::InsertLoopAtHead(tagLoopTreeNode* pOther, int nFlags) {
    if (pOther->m_pPointList == nullptr) return;
    PointList& points = PointsOf(*this);
    for (PointNode* p = pOther->m_pPointList->m_pNodeTail; p != nullptr; p = p->pPrev) {
        if (points.IsEmpty() == 0 && p->data == points.GetHead()) continue;
        SetBits(p->data.m_fAttr2, nFlags);
        points.AddHead(p->data);
    }
}

void tagLoopTreeNode::InsertLoopAtTail(tagLoopTreeNode* pOther, int nFlags) {
    if (pOther->m_pPointList == nullptr) return;
    PointList& points = PointsOf(*this);
    for (PointNode* p = pOther->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
        if (points.IsEmpty() == 0 && p->data == points.GetTail()) continue;
        SetBits(p->data.m_fAttr2, nFlags);
        points.AddTail(p->data);
    }
}
