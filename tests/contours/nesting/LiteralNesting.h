#pragma once

#include "contours/Paths.h"
#include "foundation/BoundBox.h"

// Nesting as it is worded: every raw loop against all behind it, on the lists themselves, calls within calls.

namespace literal {

inline bool IsHeadIn(tagLoopTreeNode* pOuter, tagLoopTreeNode* pInner) {
    if (pInner->m_pPointList == nullptr || pInner->m_pPointList->GetCount() == 0) return false;
    return IsInLoop(pOuter, pInner->m_pPointList->GetHead()) == 1;
}

inline void AddInTree(tagLoopTreeNode* pParent, tagLoopTreeNode* pChild) {
    pChild->LevelAdd();
    XR__POSITION* next = pParent->m_ChildList.GetHeadPosition();
    while (next != nullptr) {
        XR__POSITION* const position = next;
        auto* const c = static_cast<tagLoopTreeNode*>(pParent->m_ChildList.GetNext(next));
        int const nRelation = BoxRelation(pChild->m_Box, c->m_Box);
        if (nRelation == 0 && IsHeadIn(pChild, c)) {
            pParent->m_ChildList.RemoveAt(position);
            AddInTree(pChild, c);
        } else if (nRelation == 1 && IsHeadIn(c, pChild)) {
            AddInTree(c, pChild);
            return;
        }
    }
    pParent->m_ChildList.AddTail(pChild);
}

inline std::vector<tagLoopTreeNode*> AllLoops(CLayer& layer) {
    layer.BuildLoopList();
    return LoopsOf(layer.m_LoopList);
}

inline void Nest(XR_CList<void*, void*>& raw) {
    XR__POSITION* position = raw.GetHeadPosition();
    while (position != nullptr) {
        auto* const a = static_cast<tagLoopTreeNode*>(raw.GetAt(position));
        XR__POSITION* other = position;
        raw.GetNext(other);
        bool bTaken = false;
        while (a->m_bClosed != 0 && other != nullptr) {
            XR__POSITION* const place = other;
            auto* const b = static_cast<tagLoopTreeNode*>(raw.GetNext(other));
            if (b->m_bClosed == 0) continue;
            int const nRelation = BoxRelation(a->m_Box, b->m_Box);
            if (nRelation == 0 && IsHeadIn(a, b)) {
                raw.RemoveAt(place);
                AddInTree(a, b);
            } else if (nRelation == 1 && IsHeadIn(b, a)) {
                XR__POSITION* after = position;
                raw.GetNext(after);
                raw.RemoveAt(position);
                AddInTree(b, a);
                position = after;
                bTaken = true;
                break;
            }
        }
        if (!bTaken) raw.GetNext(position);
    }
}

inline void MakeTopology(CLayer& layer, int bRefresh) {
    if (bRefresh != 0) {
        for (tagLoopTreeNode* const p : AllLoops(layer)) p->GetBoundBox();
    }
    Nest(layer.m_RawLoopList);
    if (bRefresh == 0) return;
    for (tagLoopTreeNode* const p : AllLoops(layer)) {
        if (p->GetLoopDirection() == p->m_nLevel % 2) p->ReverseLoop();
        p->m_nDirection = static_cast<LOOPDIRECT>(~p->m_nLevel & 1);
    }
}

}  // namespace literal
