#include "PathOrder.h"

#include <cmath>
#include <set>
#include <vector>

namespace {

// Modes of the library's passes.
constexpr int kNearestFirst = 0;

// Bits of CLayer::AddOtherLayer.
constexpr int kSupportHatches = 4;

constexpr int kFirstSupportID = 1000;

std::vector<tagLoopTreeNode*> LoopsOf(XR_CList<void*, void*> const& list) {
    std::vector<tagLoopTreeNode*> loops;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        loops.push_back(static_cast<tagLoopTreeNode*>(p->data));
    }
    return loops;
}

// The pass leaves out loops that are a hundred metres away or more: they go behind the others.
void OrderLoops(CLayer& layer, CPoint2D& head) {
    layer.BuildLoopList();
    std::vector<tagLoopTreeNode*> const before = LoopsOf(layer.m_LoopList);
    layer.OptimizeLoops(head, kNearestFirst);
    std::vector<tagLoopTreeNode*> const ordered = LoopsOf(layer.m_RawLoopList);
    std::set<tagLoopTreeNode*> const kept(ordered.begin(), ordered.end());
    for (tagLoopTreeNode* const pLoop : before) {
        if (kept.count(pLoop) != 0) continue;
        pLoop->m_ChildList.RemoveAll();
        layer.AddRawLoop(pLoop);
    }
    layer.BuildLoopList();
}

// Fill that lies in no contour, as where contours were thinned out, is taken over as paths of its own.
void AddFillLeftOver(CLayer const& layer, CLayer& out, CPoint2D& head) {
    XR_CList<void*, void*> left;
    for (auto const* p = layer.m_HatchList.m_pNodeHead; p != nullptr; p = p->pNext) {
        auto* const pHatch = static_cast<CHatch*>(p->data);
        if (pHatch->m_nID < kFirstSupportID && (pHatch->m_nFlag & HATCH_USED_FLAG) == 0) left.AddTail(pHatch);
    }
    while (CHatch* const pHatch = FindNearHatchAndAdjust(&left, head)) {
        pHatch->m_nFlag |= HATCH_USED_FLAG;
        tagLoopTreeNode* const pPath = ConvertHatchToLoop(pHatch, out.m_dZ, LOOP_KIND_HATCH);
        out.AddRawLoop(pPath);
        head = pPath->m_pPointList->GetTail();
    }
}

std::unique_ptr<CLayer> Splice(CLayer& layer, double dWidth, CPoint2D& head) {
    auto pOut = std::make_unique<CLayer>();
    pOut->m_dZ = layer.m_dZ;
    pOut->m_dUnits = layer.m_dUnits;
    layer.BuildLoopList();
    while (tagLoopTreeNode* const pLoop = layer.FindNearUnusedOutLoop(head)) {
        layer.OptimizeLoopAndChildLoopHatch(pLoop, &head, pOut.get(), dWidth, 0.0);
        pLoop->m_nFlag |= LOOP_USED_FLAG;
    }
    AddFillLeftOver(layer, *pOut, head);
    pOut->AddOtherLayer(layer, 0.0, 0.0, kSupportHatches);
    pOut->OptimizeHatchs(head, kNearestFirst);
    return pOut;
}

// Binary files tell open paths by their direction.
void TakeDirectionOfOpenPaths(CLayer& layer) {
    layer.BuildLoopList();
    for (tagLoopTreeNode* const pLoop : LoopsOf(layer.m_LoopList)) {
        if (pLoop->m_bClosed == 0) pLoop->m_nDirection = LOOPDIRECT_NONE;
    }
}

double GoTo(CPoint2D& head, CPoint2D const& begin, CPoint2D const& end) {
    double const dWay = std::sqrt(D2ofPtoP(head, begin));
    head = end;
    return dWay;
}

}  // namespace

std::unique_ptr<CLayer> OrderPaths(std::unique_ptr<CLayer> pLayer, PathOrder order, double dWidth,
                                   CPoint2D& head) {
    if (order == PathOrder::kSpliced) {
        pLayer = Splice(*pLayer, dWidth, head);
    } else if (order == PathOrder::kNearest) {
        OrderLoops(*pLayer, head);
        pLayer->OptimizeHatchs(head, kNearestFirst);
    }
    TakeDirectionOfOpenPaths(*pLayer);
    return pLayer;
}

double TravelLength(CLayer& layer, CPoint2D& head) {
    double dTravel = 0.0;
    layer.BuildLoopList();
    for (tagLoopTreeNode* const pLoop : LoopsOf(layer.m_LoopList)) {
        if (pLoop->m_pPointList == nullptr || pLoop->m_pPointList->IsEmpty() != 0) continue;
        dTravel += GoTo(head, pLoop->m_pPointList->GetHead(), pLoop->m_pPointList->GetTail());
    }
    for (auto const* p = layer.m_HatchList.m_pNodeHead; p != nullptr; p = p->pNext) {
        auto& edges = static_cast<CHatch*>(p->data)->m_EdgeList;
        if (edges.IsEmpty() != 0) continue;
        dTravel += GoTo(head, edges.GetHead().m_ptStart, edges.GetTail().m_ptEnd);
    }
    return dTravel;
}
