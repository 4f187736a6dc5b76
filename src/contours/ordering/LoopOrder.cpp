// Ordering loops, and finding the one that comes next.

#include "contours/ordering/LoopOrder.h"

#include <cmath>
#include <cstddef>

#include "contours/HatchLink.h"
#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

// Millimetres, squared where the name says so: what is not nearer is not found.
constexpr double kPassReach2 = 1e10;
constexpr double kStepReach = 1e20;
constexpr double kStepReach2 = 1e40;

bool IsUsed(tagLoopTreeNode const& loop) { return (loop.m_nFlag & LOOP_USED_FLAG) != 0; }

void AddAllPoints(GreedyOrder& order, tagLoopTreeNode const& loop) {
    for (PointNode const* p = FirstPoint(loop); p != nullptr; p = p->pNext)
        order.AddPoint(p->data.x, p->data.y);
}

// Head and tail of an open path are one vertex when it has no other.
void AddEnds(GreedyOrder& order, tagLoopTreeNode const& path) {
    if (PointCount(path) == 0) return;
    order.AddPoint(path.m_pPointList->m_pNodeHead->data.x, path.m_pPointList->m_pNodeHead->data.y);
    if (PointCount(path) > 1)
        order.AddPoint(path.m_pPointList->m_pNodeTail->data.x, path.m_pPointList->m_pNodeTail->data.y);
}

PointNode* PointAt(tagLoopTreeNode const& loop, std::int32_t nPoint) {
    PointNode* p = FirstPoint(loop);
    for (; nPoint > 0; --nPoint) p = p->pNext;
    return p;
}

// An open path is entered at its tail, a closed loop at its head.
void EnterAt(tagLoopTreeNode& loop, std::int32_t nPoint) {
    if (PointCount(loop) < 2) return;
    if (loop.m_bClosed == 0) {
        if (nPoint == 0) loop.ReverseLoop();
    } else if (nPoint != 0 && nPoint != PointCount(loop) - 1) {
        loop.AdjutstHeadToPointAtPos(PositionOf(PointAt(loop, nPoint)));
    }
}

}  // namespace

void CLayer::OptimizeLoops(CPoint2D& pos, int nMode) {
    if (m_RawLoopList.IsEmpty() != 0) return;
    BuildLoopList();
    std::vector<tagLoopTreeNode*> loops;
    loops.reserve(static_cast<std::size_t>(m_LoopList.GetCount()));
    GreedyOrder order(nMode, nMode == GreedyOrder::kNearest ? kPassReach2 : 0.0);
    ForEachLoop(m_LoopList, [&](tagLoopTreeNode& loop) {
        loops.push_back(&loop);
        order.AddPath();
        if (loop.m_bClosed != 0) {
            AddAllPoints(order, loop);
        } else {
            AddEnds(order, loop);
        }
    });
    LoopList ordered;
    for (auto pick = order.Next(pos); pick.nPath >= 0; pick = order.Next(pos)) {
        tagLoopTreeNode& loop = *loops[static_cast<std::size_t>(pick.nPath)];
        EnterAt(loop, pick.nPoint);
        ordered.AddTail(&loop);
        pos = loop.m_pPointList->GetHead();
    }
    // Nothing can fail any more: no loop is ever in two lists, or in none.
    SwapElements(m_RawLoopList, ordered);
    ForEachLoop(m_RawLoopList, [](tagLoopTreeNode& loop) { loop.m_ChildList.RemoveAll(); });
}

tagLoopTreeNode* FindNearLoopInList(XR_CList<void*, void*>* pList, CPoint2D const& pos) {
    double dBest = kStepReach;
    double dBest2 = kStepReach2;
    tagLoopTreeNode* pBest = nullptr;
    ForEachLoop(*pList, [&](tagLoopTreeNode& loop) {
        if (IsUsed(loop)) return;
        for (PointNode const* p = FirstPoint(loop); p != nullptr; p = p->pNext) {
            if (std::fabs(p->data.x - pos.x) > dBest || std::fabs(p->data.y - pos.y) > dBest) continue;
            double const d2 = D2ofPtoP(p->data, pos);
            if (!(dBest2 > d2)) continue;
            dBest2 = d2;
            dBest = std::sqrt(d2);
            pBest = &loop;
        }
    });
    return pBest;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts link against points by value.
tagLoopTreeNode* CLayer::FindNearUnusedOutLoop(CPoint2D pos) {
    LoopList outer;
    ForEachLoop(m_LoopList, [&outer](tagLoopTreeNode& loop) {
        if (loop.m_nDirection == LOOPDIRECT_CCW && !IsUsed(loop)) outer.AddTail(&loop);
    });
    return FindNearLoopInList(&outer, pos);
}

// A vertex that is further away than the root of the bound on one axis is not nearer as a whole, also as
// rounded: the step-by-step search gives the nearest one, the first of equals.
NearLoops::NearLoops(XR_CList<void*, void*> const& list) : m_Order(GreedyOrder::kNearest, kStepReach2) {
    ForEachLoop(list, [this](tagLoopTreeNode& loop) {
        if (IsUsed(loop)) return;
        m_Loops.push_back(&loop);
        m_Order.AddPath();
        AddAllPoints(m_Order, loop);
    });
}

tagLoopTreeNode* NearLoops::Next(CPoint2D const& pos) {
    GreedyOrder::Pick const pick = m_Order.Next(pos);
    return pick.nPath >= 0 ? m_Loops[static_cast<std::size_t>(pick.nPath)] : nullptr;
}
