#include "SliceLayer.h"

#include <memory>
#include <utility>

namespace {

using PointList = XR_CList<CPoint2D, CPoint2D&>;

std::unique_ptr<tagLoopTreeNode> LoopOf(Contour const& contour, double dZ) {
    auto pLoop = std::make_unique<tagLoopTreeNode>(0);
    pLoop->m_pPointList = new PointList(10);
    pLoop->m_bClosed = contour.bClosed ? 1 : 0;
    pLoop->m_dZ = dZ;
    for (CPoint2D point : contour.points) pLoop->m_pPointList->AddTail(point);
    if (contour.bClosed) {
        CPoint2D head(contour.points.front());
        pLoop->m_pPointList->AddTail(head);
    }
    return pLoop;
}

bool IsEmpty(tagLoopTreeNode const& loop) {
    return loop.m_pPointList == nullptr || loop.m_pPointList->IsEmpty() != 0;
}

// Takes all loops out of the tree, destroys the empty ones, and nests the others anew.
void DropEmptyLoops(CLayer& layer) {
    std::vector<std::unique_ptr<tagLoopTreeNode>> loops;
    XR__POSITION* position = layer.m_LoopList.GetHeadPosition();
    while (position != nullptr) {
        loops.emplace_back(static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetNext(position)));
    }
    layer.m_LoopList.RemoveAll();
    layer.m_RawLoopList.RemoveAll();
    for (auto& pLoop : loops) {
        pLoop->m_ChildList.RemoveAll();
        pLoop->m_nLevel = 0;
        if (!IsEmpty(*pLoop)) layer.AddRawLoop(pLoop.release());
    }
    layer.MakeTopology(1);
}

}  // namespace

void AddContours(CLayer& layer, std::vector<Contour> const& contours, int nRegion) {
    for (Contour const& contour : contours) {
        std::unique_ptr<tagLoopTreeNode> pLoop = LoopOf(contour, layer.m_dZ);
        pLoop->m_nUser1 = nRegion;
        layer.AddRawLoop(pLoop.release());
    }
}

void NestAndSimplify(CLayer& layer, double dTolerance) {
    layer.MakeTopology(1);
    bool bEmptied = false;
    XR__POSITION* position = layer.m_LoopList.GetHeadPosition();
    while (position != nullptr) {
        auto& loop = *static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetNext(position));
        loop.m_dTolerance = dTolerance;
        loop.Optimize();
        bEmptied = bEmptied || IsEmpty(loop);
    }
    if (bEmptied) DropEmptyLoops(layer);
    layer.GetBoundBox();
}
