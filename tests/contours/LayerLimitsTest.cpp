#include "contours/Layer.h"
#include "contours/Paths.h"
#include "foundation/Geometry.h"

namespace {

CBoundBox2D const kBox(CPoint2D(0, 0), CPoint2D(10, 10));

// The clipped edge of (x1, y1) to (x2, y2), as ends; empty when nothing is left.
Segments Clipped(double x1, double y1, double x2, double y2, CBoundBox2D box = kBox) {
    CEdge2D edge(CPoint2D(x1, y1), CPoint2D(x2, y2));
    CEdge2D result;
    if (ClipEdgeToBox(edge, box, result) == 0) return {};
    return {{{result.m_ptStart.x, result.m_ptStart.y}, {result.m_ptEnd.x, result.m_ptEnd.y}}};
}

}  // namespace

TEST(ClipEdgeToBox, AnEdgeInsideStaysWithItsAttributes) {
    CEdge2D edge(Marked(1, 1, 5), Marked(2, 3, 6));
    CBoundBox2D box = kBox;
    CEdge2D result;
    EXPECT_EQ(ClipEdgeToBox(edge, box, result), 1);
    EXPECT_EQ(Exact(result.m_ptStart), Exact(edge.m_ptStart));
    EXPECT_EQ(Exact(result.m_ptEnd), Exact(edge.m_ptEnd));
}

TEST(ClipEdgeToBox, AnEdgeThroughTheBoxIsCutOnBothSidesAndKeepsItsWay) {
    EXPECT_EQ(Clipped(-5, 5, 15, 5), (Segments{{{0, 5}, {10, 5}}}));
    EXPECT_EQ(Clipped(15, 5, -5, 5), (Segments{{{10, 5}, {0, 5}}}));
    EXPECT_EQ(Clipped(5, 15, 5, -5), (Segments{{{5, 10}, {5, 0}}}));
}

TEST(ClipEdgeToBox, AnEdgeThatMissesTheBoxDisappears) {
    EXPECT_EQ(Clipped(-5, -1, 15, -1), Segments{});
    EXPECT_EQ(Clipped(-5, 5, -1, 5), Segments{});
    EXPECT_EQ(Clipped(-3, 8, 3, 14), Segments{}) << "past a corner";
}

TEST(ClipEdgeToBox, AnEndInsideStaysAndTheOtherIsCut) {
    CEdge2D edge(Marked(5, 5, 3), Marked(5, 50, 4));
    CBoundBox2D box = kBox;
    CEdge2D result;
    EXPECT_EQ(ClipEdgeToBox(edge, box, result), 1);
    EXPECT_EQ(Exact(result.m_ptStart), Exact(edge.m_ptStart));
    EXPECT_EQ(Exact(result.m_ptEnd), Exact(CPoint2D(5, 10))) << "attributes of a cut end are 0";
    EXPECT_EQ(Clipped(5, 50, 5, 5), (Segments{{{5, 10}, {5, 5}}}));
}

TEST(ClipEdgeToBox, AnEndOnTheSideCountsAsOutside) {
    // The other end is outside, too: the one place found takes the start's place, and the end is clamped.
    EXPECT_EQ(Clipped(10, 5, 15, 5), (Segments{{{10, 5}, {10, 5}}}));
    // From the side inward there is one place, the start itself.
    EXPECT_EQ(Clipped(10, 5, 5, 5), (Segments{{{10, 5}, {5, 5}}}));
    EXPECT_EQ(Clipped(0, 5, 10, 5), (Segments{{{0, 5}, {10, 5}}}));
}

TEST(ClipEdgeToBox, AnEdgeAlongASideMeetsTheTwoSidesAcross) {
    EXPECT_EQ(Clipped(-5, 0, 15, 0), (Segments{{{0, 0}, {10, 0}}}));
}

TEST(ClipEdgeToBox, ThroughACornerTheTwoSidesGiveOnePlaceTwice) {
    EXPECT_EQ(Clipped(-5, 5, 5, -5), (Segments{{{0, 0}, {0, 0}}}));
}

// The squares of the two distances from the start differ in their last bit, 2.0000000000000004 and 2, but not
// their roots: the place on the upper side, found first, stays in front.
TEST(ClipEdgeToBox, PlacesAtOneDistanceStayInTheOrderInWhichTheyAreFound) {
    CEdge2D edge(CPoint2D(0.0, 1.0), CPoint2D(3.1000000000000001, 4.0999999999999996));
    CBoundBox2D box(CPoint2D(1.0, 0.0), CPoint2D(4.0, 2.0));
    CEdge2D result;
    ASSERT_EQ(1, ClipEdgeToBox(edge, box, result));
    EXPECT_EQ(1.0000000000000002, result.m_ptStart.x);
    EXPECT_EQ(2.0, result.m_ptStart.y);
    EXPECT_EQ(1.0, result.m_ptEnd.x);
    EXPECT_EQ(2.0, result.m_ptEnd.y);
}

TEST(ClipEdgeToBox, TheResultMayBeTheEdgeItself) {
    CEdge2D edge(CPoint2D(-5, 5), CPoint2D(15, 5));
    CBoundBox2D box = kBox;
    EXPECT_EQ(ClipEdgeToBox(edge, box, edge), 1);
    EXPECT_EQ(edge.m_ptStart.x, 0.0);
    EXPECT_EQ(edge.m_ptEnd.x, 10.0);
}

TEST(ClipEdgeToBox, WhatIsLeftIsNeverOutside) {
    Lattice random(8);
    for (int i = 0; i < 20000; ++i) {
        CEdge2D edge(CPoint2D(random.Real(-9, 19), random.Step(20) - 5),
                     CPoint2D(random.Step(20) - 5, random.Real(-9, 19)));
        CBoundBox2D box(CPoint2D(random.Real(0, 3), random.Real(0, 3)),
                        CPoint2D(random.Real(4, 9), random.Real(4, 9)));
        CEdge2D result;
        if (ClipEdgeToBox(edge, box, result) == 0) continue;
        EXPECT_EQ(box.IsInBox2(result.m_ptStart), 1);
        EXPECT_EQ(box.IsInBox2(result.m_ptEnd), 1);
    }
}

TEST(LimitInBox, WithBothSwitchesOffStillRefreshesTheBox) {
    CLayer layer;
    Give(layer, Square(5, 5, 100));
    layer.LimitInBox(kBox, 0, 0);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(5, 5), CPoint2D(105, 105))));
}

TEST(LimitInBox, ClampsLoopPointsAndKeepsTheirNumber) {
    CLayer layer;
    tagLoopTreeNode* const crossing = Give(layer, Square(5, 5, 100));
    tagLoopTreeNode* const beyond = Give(layer, Square(50, 50, 1));
    Give(layer, std::make_unique<tagLoopTreeNode>(0));
    Give(layer, Hatch({{{-50, 5}, {50, 5}}}));
    layer.LimitInBox(kBox, 1, 0);
    EXPECT_EQ(PlacesOf(*crossing), (Places{{5, 5}, {10, 5}, {10, 10}, {5, 10}, {5, 5}}));
    EXPECT_EQ(Bits(crossing->m_pPointList->GetAt(crossing->m_pPointList->FindIndex(1))), 1u);
    EXPECT_EQ(PlacesOf(*beyond), (Places{{10, 10}, {10, 10}, {10, 10}, {10, 10}, {10, 10}}));
    EXPECT_TRUE(SameBox(beyond->m_Box, CBoundBox2D(CPoint2D(10, 10), CPoint2D(10, 10))));
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{-50, 5}, {50, 5}}}));
}

TEST(LimitInBox, CutsAHatchApartWhereItLeavesTheBox) {
    CLayer layer;
    // Down through the box, along outside, and back in far away on both axes.
    Give(layer, Hatch({{{2, 12}, {4, -2}}, {{4, -2}, {14, -2}}, {{14, 5}, {5, 6}}}, 77))->m_nFlag =
        HATCH_USED_FLAG;
    layer.LimitInBox(kBox, 0, 1);
    auto const hatches = HatchesOf(layer);
    ASSERT_EQ(hatches.size(), 2u);
    EXPECT_EQ(hatches[0]->m_nID, 77);
    EXPECT_EQ(hatches[1]->m_nID, 77);
    EXPECT_EQ(hatches[0]->m_nFlag, 0);
}

TEST(LimitInBox, ThreeCollinearEdgesWithTheMiddleOneOutsideStayOneHatch) {
    // The restart is on the same line, and so within a tenth on y.
    CBoundBox2D const box(CPoint2D(0, 0), CPoint2D(10, 10));
    CLayer layer;
    Give(layer, Hatch({{{1, 5}, {2, 5}}, {{20, 5}, {30, 5}}, {{7, 5}, {8, 5}}}));
    layer.LimitInBox(box, 0, 1);
    auto const hatches = HatchesOf(layer);
    ASSERT_EQ(hatches.size(), 1u);
    EXPECT_EQ(SegmentsOf(*hatches[0]), (Segments{{{1, 5}, {2, 5}}, {{7, 5}, {8, 5}}}));
}

TEST(LimitInBox, AStretchThatRestartsATenthAwayOnBothAxesIsAHatchOfItsOwn) {
    CLayer layer;
    Give(layer, Hatch({{{1, 5}, {2, 5}}, {{20, 5}, {30, 5}}, {{3, 6}, {4, 6}}}, 9));
    Give(layer, Hatch({{{1, 5}, {2, 5}}, {{20, 5}, {30, 5}}, {{2.0625, 6}, {4, 6}}}, 10));
    layer.LimitInBox(kBox, 0, 1);
    std::vector<int> ids;
    for (CHatch const* const p : HatchesOf(layer)) ids.push_back(p->m_nID);
    EXPECT_EQ(ids, (std::vector<int>{9, 9, 10}));
}

TEST(LimitInBox, JustATenthAwayIsNotNearOnEitherAxis) {
    // From 0.0 on, the difference is the tenth itself.
    CBoundBox2D const box(CPoint2D(-5, -5), CPoint2D(10, 10));
    for (auto const& [start, nHatches] : {std::pair(0.1, 2), std::pair(0.09375, 1)}) {
        CLayer flat;
        Give(flat, Hatch({{{1, 0}, {2, 0}}, {{20, 5}, {30, 5}}, {{5, start}, {6, 1}}}));
        flat.LimitInBox(box, 0, 1);
        EXPECT_EQ(flat.m_HatchList.GetCount(), nHatches) << start << " on y";
        CLayer upright;
        Give(upright, Hatch({{{0, 1}, {0, 2}}, {{20, 5}, {30, 5}}, {{start, 5}, {1, 6}}}));
        upright.LimitInBox(box, 0, 1);
        EXPECT_EQ(upright.m_HatchList.GetCount(), nHatches) << start << " on x";
    }
}

TEST(LimitInBox, EveryHatchStartsAnew) {
    CLayer layer;
    Give(layer, Hatch({{{1, 5}, {2, 5}}}, 1));
    Give(layer, Hatch({{{2, 5}, {3, 5}}}, 2));
    Give(layer, Hatch({{{50, 50}, {60, 60}}}, 3));
    Give(layer, std::make_unique<CHatch>());
    layer.LimitInBox(kBox, 0, 1);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 2) << "outside, and without edges: gone";
}

TEST(LimitInBox, FarCoordinatesFindAHatchToGoOnWith) {
    // The place where no stretch has ended yet is at -1e10: a first stretch near it has no hatch before it.
    CBoundBox2D const box(CPoint2D(-1e11, -1e11), CPoint2D(1e11, 1e11));
    CLayer layer;
    Give(layer, Hatch({{{-1e10, 5}, {2, 5}}}, 1));
    Give(layer, Hatch({{{-1e10, 6}, {2, 6}}}, 2));
    layer.LimitInBox(box, 0, 1);
    auto const hatches = HatchesOf(layer);
    ASSERT_EQ(hatches.size(), 1u);
    EXPECT_EQ(hatches[0]->m_EdgeList.GetCount(), 2);
}

TEST(AddBorder, AroundASquareTakesItAsItsChild) {
    CLayer layer;
    layer.m_dZ = 4.0;
    tagLoopTreeNode* const square = Give(layer, Square(2, 2, 1));
    CPoint2D a = Marked(0, 0, 3);
    CPoint2D b(5, 6);
    layer.AddBorder(a, b);
    auto const raw = LoopsOf(layer.m_RawLoopList);
    ASSERT_EQ(raw.size(), 1u);
    EXPECT_EQ(PlacesOf(*raw[0]), (Places{{0, 0}, {5, 0}, {5, 6}, {0, 6}, {0, 0}}));
    EXPECT_EQ(Exact(raw[0]->m_pPointList->GetHead()), Exact(CPoint2D(0, 0))) << "attributes 0";
    EXPECT_EQ(raw[0]->m_nLevel, 0);
    EXPECT_EQ(raw[0]->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(raw[0]->m_bClosed, 1);
    EXPECT_EQ(raw[0]->m_dZ, 4.0);
    EXPECT_EQ(LoopsOf(raw[0]->m_ChildList), (std::vector<tagLoopTreeNode*>{square}));
    EXPECT_EQ(square->m_nLevel, 1);
    EXPECT_EQ(square->m_nDirection, LOOPDIRECT_CW);
    EXPECT_EQ(square->GetArea(), -2.0);
}

TEST(AddBorder, InsideASquareBecomesAHole) {
    CLayer layer;
    tagLoopTreeNode* const square = Give(layer, Square(0, 0, 10));
    CPoint2D a(8, 8);
    CPoint2D b(2, 2);
    layer.AddBorder(a, b);
    ASSERT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector<tagLoopTreeNode*>{square}));
    tagLoopTreeNode& border = *LoopsOf(square->m_ChildList)[0];
    EXPECT_EQ(border.m_nLevel, 1);
    EXPECT_EQ(border.GetArea(), -72.0);
    EXPECT_TRUE(SameBox(border.m_Box, CBoundBox2D(CPoint2D(2, 2), CPoint2D(8, 8)))) << "refreshed, so sorted";
}
