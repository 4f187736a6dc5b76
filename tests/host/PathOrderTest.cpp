#include "PathOrder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Fill.h"
#include "SliceLayer.h"
#include "Slices.h"
#include "contours/Paths.h"

namespace {

// A layer of the bracket through holes and gusset, with fill and some support beside it.
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
    CLayer* const pBefore = pLayer.get();
    CPoint2D head(3.0, 4.0);
    pLayer = OrderPaths(std::move(pLayer), PathOrder::kAsFound, 0.5, head);
    EXPECT_EQ(pBefore, pLayer.get());
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
    CPoint2D head(0.0, 0.0);
    double const dBefore = TravelLength(*pLayer, head);
    head = CPoint2D(0.0, 0.0);
    pLayer = OrderPaths(std::move(pLayer), PathOrder::kNearest, 0.5, head);
    EXPECT_EQ(nLoops, pLayer->m_LoopList.GetCount());
    EXPECT_EQ(nHatches, pLayer->m_HatchList.GetCount());
    double dLength = 0.0;
    EXPECT_NEAR(dArea, pLayer->GetAreaLength(dLength), 1e-6);
    head = CPoint2D(0.0, 0.0);
    EXPECT_LT(TravelLength(*pLayer, head), dBefore);
}

TEST(PathOrder, LoopsAHundredMetresAwayAreKept) {
    auto pLayer = std::make_unique<CLayer>();
    Give(*pLayer, Square(0.0, 0.0, 5.0));
    Give(*pLayer, Square(3e5, 0.0, 5.0));
    Give(*pLayer, Square(3e5 + 1.0, 1.0, 1.0));
    pLayer->MakeTopology(1);
    CPoint2D head(0.0, 0.0);
    pLayer = OrderPaths(std::move(pLayer), PathOrder::kNearest, 0.5, head);
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
    pLayer = OrderPaths(std::move(pLayer), PathOrder::kSpliced, 0.5, head);
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
    for (PathOrder order : {PathOrder::kAsFound, PathOrder::kNearest, PathOrder::kSpliced}) {
        auto pLayer = std::make_unique<CLayer>();
        Give(*pLayer, Square(0.0, 0.0, 5.0));
        Give(*pLayer, OpenPath({{10, 0}, {20, 0}, {20, 5}}));
        pLayer->MakeTopology(1);
        CPoint2D head(0.0, 0.0);
        pLayer = OrderPaths(std::move(pLayer), order, 0.5, head);
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
    pLayer = OrderPaths(std::move(pLayer), PathOrder::kSpliced, 0.5, head);
    std::vector<tagLoopTreeNode*> const paths = LoopsOf(pLayer->m_RawLoopList);
    ASSERT_EQ(2u, paths.size());
    EXPECT_EQ((Places{{20, 0}, {30, 0}, {30, 1}, {20, 1}}), PlacesOf(*paths[1]));
    EXPECT_EQ(LOOP_KIND_HATCH, paths[1]->m_nFlag);
    EXPECT_EQ(20.0, head.x);
}

TEST(PathOrder, TravelIsTheWayBetweenPaths) {
    CLayer layer;
    Give(layer, Square(3.0, 4.0, 2.0));
    Give(layer, OpenPath({{3, 8}, {9, 8}}));
    Give(layer, Hatch({{{9, 10}, {12, 10}}, {{12, 11}, {9, 11}}}));
    CPoint2D head(0.0, 0.0);
    // 5 to the square, which ends at its head; 4 up to the path; 2 up to the hatch.
    EXPECT_DOUBLE_EQ(11.0, TravelLength(layer, head));
    EXPECT_EQ(9.0, head.x);
    EXPECT_EQ(11.0, head.y);
}

}  // namespace
