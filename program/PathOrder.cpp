#include "PathOrder.h"

#include <cmath>
#include <set>
#include <vector>

namespace {

template <class T, class Visit>
void ForEach(XR_CList<void*, void*> const& list, Visit visit) {
    for (XR__POSITION* at = list.GetHeadPosition(); at != nullptr;) visit(*static_cast<T*>(list.GetNext(at)));
}

bool HasPoints(tagLoopTreeNode const& loop) {
    return loop.m_pPointList != nullptr && loop.m_pPointList->IsEmpty() == 0;
}

// Loops that the pass does not reach come last, as they were.
void OrderLoops(CLayer& layer, CPoint2D& head, int nMode) {
    layer.BuildLoopList();
    std::vector<tagLoopTreeNode*> all;
    ForEach<tagLoopTreeNode>(layer.m_LoopList, [&all](tagLoopTreeNode& loop) { all.push_back(&loop); });
    layer.OptimizeLoops(head, nMode);
    std::set<tagLoopTreeNode*> ordered;
    ForEach<tagLoopTreeNode>(layer.m_RawLoopList, [&](tagLoopTreeNode& loop) { ordered.insert(&loop); });
    for (tagLoopTreeNode* const pLoop : all) {
        if (ordered.count(pLoop) != 0) continue;
        pLoop->m_ChildList.RemoveAll();
        layer.AddRawLoop(pLoop);
    }
}

// One outer loop after the other, with its holes and hatches. Hatches that are in no loop, or take no part,
// stay hatches, and are ordered by themselves.
void Splice(CLayer& layer, CPoint2D& head, PathOrdering const& ordering) {
    CLayer out;
    layer.MakeTopology(1);
    while (tagLoopTreeNode* const pLoop = layer.FindNearUnusedOutLoop(head)) {
        layer.OptimizeLoopAndChildLoopHatch(pLoop, &head, &out, ordering.dWidth, ordering.dCut);
        pLoop->m_nFlag |= LOOP_USED_FLAG;
    }
    ForEach<CHatch>(layer.m_HatchList, [&out](CHatch& hatch) {
        if ((hatch.m_nFlag & HATCH_USED_FLAG) != 0) {
            delete &hatch;
        } else {
            out.m_HatchList.AddTail(&hatch);
        }
    });
    layer.m_HatchList.RemoveAll();
    layer.ReleaseAll();
    ForEach<tagLoopTreeNode>(out.m_RawLoopList, [&layer](tagLoopTreeNode& path) { layer.AddRawLoop(&path); });
    ForEach<CHatch>(out.m_HatchList, [&layer](CHatch& hatch) { layer.m_HatchList.AddTail(&hatch); });
    out.m_RawLoopList.RemoveAll();
    out.m_HatchList.RemoveAll();
    layer.OptimizeHatchs(head, ordering.nHatchMode);
}

void TakeDirectionOfOpenPaths(CLayer& layer) {
    layer.BuildLoopList();
    ForEach<tagLoopTreeNode>(layer.m_LoopList, [](tagLoopTreeNode& loop) {
        if (loop.m_bClosed == 0) loop.m_nDirection = LOOPDIRECT_NONE;
    });
}

}  // namespace

void OrderPaths(CLayer& layer, PathOrdering const& ordering, CPoint2D& head) {
    if (ordering.order == PathOrder::kSpliced) {
        Splice(layer, head, ordering);
    } else if (ordering.order == PathOrder::kByEnds) {
        OrderLoops(layer, head, ordering.nLoopMode);
        layer.OptimizeHatchs(head, ordering.nHatchMode);
    }
    TakeDirectionOfOpenPaths(layer);
}

void Head::Print(CLayer& layer) {
    layer.BuildLoopList();
    ForEach<tagLoopTreeNode>(layer.m_LoopList, [this](tagLoopTreeNode& loop) {
        if (!HasPoints(loop)) return;
        MoveTo(loop.m_pPointList->GetHead());
        m_Pos = loop.m_pPointList->GetTail();
    });
    ForEach<CHatch>(layer.m_HatchList, [this](CHatch& hatch) {
        bool bFirst = true;
        for (XR__POSITION* at = hatch.m_EdgeList.GetHeadPosition(); at != nullptr; bFirst = false) {
            CEdge2D const& edge = hatch.m_EdgeList.GetNext(at);
            if (bFirst || !(edge.m_ptStart == m_Pos)) MoveTo(edge.m_ptStart);
            m_Pos = edge.m_ptEnd;
        }
    });
}

void Head::MoveTo(CPoint2D const& point) {
    m_Way.dLength += std::hypot(point.x - m_Pos.x, point.y - m_Pos.y);
    ++m_Way.nStarts;
}
