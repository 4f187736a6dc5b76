#include "PathOrder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Fill.h"
#include "SliceLayer.h"
#include "Slices.h"
#include "contours/Paths.h"

namespace {

// A layer of the bracket through holes and gusset, with fill and some support beside it.
// The travel from the origin.
double TravelOf(CLayer& layer) {
    Head head(CPoint2D(0.0, 0.0));
    head.Print(layer);
    return head.Way().dLength;
}

PathOrdering InOrder(PathOrder order) {
    PathOrdering ordering;
    ordering.order = order;
    return ordering;
}

std::unique_ptr<CLayer> BracketLayer(double dZ) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    auto pLayer = std::make_unique<CLayer>();
    pLayer->m_dZ = dZ;
    Slicer slicer(model);
    AddContours(*pLayer, slicer.Cut(dZ), 0);
    NestAndSimplify(*pLayer, 0.01);
    Fill(*pLayer, FillStyle(), RegionsOf(*pLayer));
    FillRegion const beside{{{CPoint2D(200, 0), CPoint2D(210, 0), CPoint2D(210, 10), CPoint2D(200, 10)}}};
    Fill(*pLayer, {1.0, 0.0, kSupportHatch}, {beside});
    return pLayer;
}

double LengthOf(CLayer& layer) {
    double dLength = 0.0;
    layer.BuildLoopList();
    for (tagLoopTreeNode* pLoop : LoopsOf(layer.m_LoopList)) dLength += pLoop->GetLength();
    return dLength;
}

TEST(PathOrder, AsFoundChangesNothing) {
    std::unique_ptr<CLayer> pLayer = BracketLayer(5.0);
    Segments const before = SegmentsOf(*HatchesOf(*pLayer)[0]);
    CPoint2D head(3.0, 4.0);
    OrderPaths(*pLayer, InOrder(PathOrder::kAsFound), head);
    EXPECT_EQ(before, SegmentsOf(*HatchesOf(*pLayer)[0]));
    EXPECT_EQ(3.0, head.x);
}

TEST(PathOrder, NearestFirstKeepsAllPathsAndTravelsLess) {
    std::unique_ptr<CLayer> pLayer = BracketLayer(5.0);
    int const nLoops = pLayer->m_LoopList.GetCount();
    int const nHatches = pLayer->m_HatchList.GetCount();
    ASSERT_GT(nLoops, 2);
    ASSERT_GT(nHatches, 4);
    double const dArea = [&] {
        double dLength = 0.0;
        return pLayer->GetAreaLength(dLength);
    }();
    double const dBefore = TravelOf(*pLayer);
    CPoint2D head(0.0, 0.0);
    OrderPaths(*pLayer, InOrder(PathOrder::kByEnds), head);
    EXPECT_EQ(nLoops, pLayer->m_LoopList.GetCount());
    EXPECT_EQ(nHatches, pLayer->m_HatchList.GetCount());
    double dLength = 0.0;
    EXPECT_NEAR(dArea, pLayer->GetAreaLength(dLength), 1e-6);
    EXPECT_LT(TravelOf(*pLayer), dBefore);
}

TEST(PathOrder, LoopsAHundredMetresAwayAreKept) {
    auto pLayer = std::make_unique<CLayer>();
    Give(*pLayer, Square(0.0, 0.0, 5.0));
    Give(*pLayer, Square(3e5, 0.0, 5.0));
    Give(*pLayer, Square(3e5 + 1.0, 1.0, 1.0));
    pLayer->MakeTopology(1);
    CPoint2D head(0.0, 0.0);
    OrderPaths(*pLayer, InOrder(PathOrder::kByEnds), head);
    EXPECT_EQ(3, pLayer->m_LoopList.GetCount());
    EXPECT_EQ(3, pLayer->m_RawLoopList.GetCount());
}

TEST(PathOrder, SplicedPathsAreAsLongAsContoursAndFillAndLoseNone) {
    std::unique_ptr<CLayer> pLayer = BracketLayer(5.0);
    double dFill = 0.0;
    std::vector<Place> ends;
    for (CHatch* pHatch : HatchesOf(*pLayer)) {
        if (pHatch->m_nID >= 1000) continue;
        LoopPtr const pPath(ConvertHatchToLoop(pHatch, 0.0, 0));
        dFill += pPath->GetLength();
        for (auto const& [a, b] : SegmentsOf(*pHatch)) ends.push_back(a);
    }
    double const dContours = LengthOf(*pLayer);
    CPoint2D head(0.0, 0.0);
    OrderPaths(*pLayer, InOrder(PathOrder::kSpliced), head);
    // Supports stay hatches.
    std::vector<CHatch*> const hatches = HatchesOf(*pLayer);
    EXPECT_FALSE(hatches.empty());
    for (CHatch const* pHatch : hatches) EXPECT_EQ(kSupportHatch, pHatch->m_nID);
    // Ways from contour to fill come on top.
    EXPECT_NEAR(dContours + dFill, LengthOf(*pLayer), 0.02 * (dContours + dFill));
    std::vector<Place> found;
    int nSpliced = 0;
    for (tagLoopTreeNode* pLoop : LoopsOf(pLayer->m_LoopList)) {
        bool bSpliced = false;
        for (auto const* p = pLoop->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
            found.emplace_back(p->data.x, p->data.y);
            bSpliced = bSpliced || (Bits(p->data) & POINT_INSERTED) != 0;
        }
        nSpliced += bSpliced ? 1 : 0;
    }
    EXPECT_GT(nSpliced, 0);
    std::sort(found.begin(), found.end());
    std::size_t nMissing = 0;
    for (Place const& end : ends) {
        if (!std::binary_search(found.begin(), found.end(), end)) ++nMissing;
    }
    EXPECT_EQ(0u, nMissing);
}

TEST(PathOrder, OpenPathsHaveNoDirectionSoThatBinaryFilesKeepThemOpen) {
    for (PathOrder order : {PathOrder::kAsFound, PathOrder::kByEnds, PathOrder::kSpliced}) {
        auto pLayer = std::make_unique<CLayer>();
        Give(*pLayer, Square(0.0, 0.0, 5.0));
        Give(*pLayer, OpenPath({{10, 0}, {20, 0}, {20, 5}}));
        pLayer->MakeTopology(1);
        CPoint2D head(0.0, 0.0);
        OrderPaths(*pLayer, InOrder(order), head);
        ASSERT_EQ(2, pLayer->m_LoopList.GetCount());
        for (tagLoopTreeNode const* pLoop : LoopsOf(pLayer->m_LoopList)) {
            EXPECT_EQ(pLoop->m_bClosed != 0 ? LOOPDIRECT_CCW : LOOPDIRECT_NONE, pLoop->m_nDirection);
        }
    }
}

TEST(PathOrder, FillThatLiesInNoContourIsNotLost) {
    auto pLayer = std::make_unique<CLayer>();
    Give(*pLayer, Square(0.0, 0.0, 5.0));
    Give(*pLayer, Hatch({{{20, 0}, {30, 0}}, {{30, 1}, {20, 1}}}, kFillHatch));
    pLayer->MakeTopology(1);
    CPoint2D head(0.0, 0.0);
    OrderPaths(*pLayer, InOrder(PathOrder::kSpliced), head);
    EXPECT_EQ(1, pLayer->m_RawLoopList.GetCount());
    ASSERT_EQ(1u, HatchesOf(*pLayer).size());
    EXPECT_EQ((Segments{{{20, 0}, {30, 0}}, {{30, 1}, {20, 1}}}), SegmentsOf(*HatchesOf(*pLayer)[0]));
    EXPECT_EQ(20.0, head.x);
}

TEST(PathOrder, TravelIsTheWayBetweenPaths) {
    CLayer layer;
    Give(layer, Square(3.0, 4.0, 2.0));
    Give(layer, OpenPath({{3, 8}, {9, 8}}));
    Give(layer, Hatch({{{9, 10}, {12, 10}}, {{12, 11}, {9, 11}}}));
    Head head(CPoint2D(0.0, 0.0));
    head.Print(layer);
    // 5 to the square, which ends at its head; 4 up to the path; 2 up to the hatch, and 1 to its next edge.
    EXPECT_DOUBLE_EQ(12.0, head.Way().dLength);
    EXPECT_EQ(4, head.Way().nStarts);
    EXPECT_EQ(9.0, head.Pos().x);
    EXPECT_EQ(11.0, head.Pos().y);
}

}  // namespace
