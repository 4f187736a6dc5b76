#include "contours/Layer.h"

#include "FieldWalk.h"
#include "contours/Paths.h"

namespace {

// A 10 by 10 square with a 2 by 2 hole, nested and turned.
void FillPlate(CLayer& layer) {
    Give(layer, Square(0, 0, 10));
    Give(layer, Square(4, 4, 2));
    layer.MakeTopology(1);
}

}  // namespace

TEST(Layer, FieldsStandInOrder) {
    CLayer const layer;
    FieldWalk(layer, FieldWalk::kVirtual)
        .Then("m_RawLoopList", layer.m_RawLoopList)
        .Then("m_LoopList", layer.m_LoopList)
        .Then("m_HatchList", layer.m_HatchList)
        .Then("m_dZ", layer.m_dZ)
        .Then("m_Box", layer.m_Box)
        .Then("m_dUnits", layer.m_dUnits)
        .Then("m_nUser1", layer.m_nUser1)
        .Then("m_nUser2", layer.m_nUser2)
        .Then("m_dUser1", layer.m_dUser1)
        .Then("m_dUser2", layer.m_dUser2)
        .Then("m_dUser3", layer.m_dUser3)
        .Then("m_nUser3", layer.m_nUser3)
        .End();
}

TEST(Layer, ANewLayerHasItsDefaults) {
    CLayer const layer;
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
    EXPECT_EQ(layer.m_RawLoopList.m_nBlockSize, 10);
    EXPECT_EQ(layer.m_LoopList.m_nBlockSize, 10);
    EXPECT_EQ(layer.m_HatchList.m_nBlockSize, 10);
    EXPECT_EQ(layer.m_dZ, -1000.0);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D()));
    EXPECT_EQ(layer.m_dUnits, 1.0);
    EXPECT_EQ(layer.m_nUser1, -1);
    EXPECT_EQ(layer.m_nUser2, -1);
    EXPECT_EQ(layer.m_dUser1, 0.1);
    EXPECT_EQ(layer.m_dUser2, 0.1);
    EXPECT_EQ(layer.m_dUser3, 0.1);
    EXPECT_EQ(layer.m_nUser3, 0);
}

TEST(Layer, AddRawLoopDoesNothingElse) {
    CLayer layer;
    tagLoopTreeNode* const a = Give(layer, Square(0, 0, 10));
    tagLoopTreeNode* const b = Give(layer, Square(2, 2, 1));
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector<tagLoopTreeNode*>{a, b}));
    EXPECT_EQ(layer.m_LoopList.GetCount(), 0);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D()));
}

TEST(Layer, ReleaseAllKeepsTheScalars) {
    CLayer layer;
    FillPlate(layer);
    Give(layer, Hatch({{{0, 0}, {1, 0}}}));
    layer.m_dZ = 5.0;
    layer.GetBoundBox();
    layer.ReleaseAll();
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 0);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 0);
    EXPECT_EQ(layer.m_LoopList.m_pBlocks, nullptr);
    EXPECT_EQ(layer.m_dZ, 5.0);
    EXPECT_EQ(layer.m_Box.m_ptMax.x, 10.0);
}

TEST(Layer, TheLoopListHasParentsBeforeChildren) {
    CLayer layer;
    tagLoopTreeNode* const inner = Give(layer, Square(4, 4, 2));
    tagLoopTreeNode* const apart = Give(layer, Square(20, 0, 2));
    tagLoopTreeNode* const outer = Give(layer, Square(0, 0, 10));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_LoopList), (std::vector<tagLoopTreeNode*>{apart, outer, inner}));
    layer.BuildLoopList();
    EXPECT_EQ(layer.m_LoopList.GetCount(), 3);
}

TEST(Layer, IsInCounterTellsMaterialFromHoles) {
    CLayer layer;
    FillPlate(layer);
    layer.GetBoundBox();
    CPoint2D material(1, 1);
    CPoint2D hole(5, 5);
    CPoint2D outside(11, 5);
    CPoint2D border(10, 5);
    EXPECT_EQ(layer.IsInCounter(material), 1);
    EXPECT_EQ(layer.IsInCounter(hole), 0);
    EXPECT_EQ(layer.IsInCounter(outside), 0);
    EXPECT_EQ(layer.IsInCounter(border), 0);
}

TEST(Layer, IsInCounterTakesListAndBoxAsTheyStand) {
    CLayer layer;
    Give(layer, Square(0, 0, 10));
    layer.m_Box = CBoundBox2D(CPoint2D(0, 0), CPoint2D(10, 10));
    CPoint2D point(1, 1);
    EXPECT_EQ(layer.IsInCounter(point), 0) << "the list is empty";
    layer.BuildLoopList();
    EXPECT_EQ(layer.IsInCounter(point), 1);
    layer.m_Box = CBoundBox2D();
    EXPECT_EQ(layer.IsInCounter(point), 0);
}

TEST(Layer, ClearLoopsUsedFlagLeavesTheOtherBits) {
    CLayer layer;
    FillPlate(layer);
    for (tagLoopTreeNode* const p : LoopsOf(layer.m_LoopList)) p->m_nFlag = LOOP_USED_FLAG | LOOP_KIND_INNER;
    tagLoopTreeNode* const late = Give(layer, Square(50, 50, 1));
    late->m_nFlag = LOOP_USED_FLAG;
    layer.ClearLoopsUsedFlag();
    for (tagLoopTreeNode* const p : LoopsOf(layer.m_LoopList)) EXPECT_EQ(p->m_nFlag, LOOP_KIND_INNER);
    EXPECT_EQ(late->m_nFlag, LOOP_USED_FLAG) << "not in the list yet";
}

TEST(Layer, GetAreaLengthTakesHolesOff) {
    CLayer layer;
    FillPlate(layer);
    double dLength = 99.0;
    EXPECT_EQ(layer.GetAreaLength(dLength), 192.0);
    EXPECT_EQ(dLength, 48.0);
}

TEST(Layer, GetBoundBoxSpansLoopsAndHatches) {
    CLayer layer;
    FillPlate(layer);
    Give(layer, Hatch({{{-3, 1}, {2, 30}}}));
    tagLoopTreeNode* const none = Give(layer, std::make_unique<tagLoopTreeNode>(0));
    none->m_Box = CBoundBox2D(CPoint2D(-99, -99), CPoint2D(99, 99));
    CBoundBox2D const box = layer.GetBoundBox();
    EXPECT_TRUE(SameBox(box, CBoundBox2D(CPoint2D(-3, 0), CPoint2D(10, 30))));
    EXPECT_TRUE(SameBox(box, layer.m_Box));
    EXPECT_TRUE(SameBox(none->m_Box, CBoundBox2D())) << "a loop without a list is empty";
    CLayer empty;
    EXPECT_TRUE(SameBox(empty.GetBoundBox(), CBoundBox2D()));
}

TEST(Layer, TransformMovesPointsAndRefreshesBoxes) {
    CLayer layer;
    FillPlate(layer);
    Give(layer, Hatch({{{1, 2}, {3, 4}}}));
    Give(layer, std::make_unique<tagLoopTreeNode>(0));
    // (x, y) becomes (-y + 100, x + 200).
    double matrix[3][3] = {{0, 1, 7}, {-1, 0, 7}, {100, 200, 7}};
    layer.Transform(matrix, 0);
    tagLoopTreeNode const& outer = *LoopsOf(layer.m_LoopList)[0];
    EXPECT_EQ(PlacesOf(outer), (Places{{100, 200}, {100, 210}, {90, 210}, {90, 200}, {100, 200}}));
    EXPECT_EQ(Bits(outer.m_pPointList->GetAt(outer.m_pPointList->FindIndex(1))), 1u);
    EXPECT_TRUE(SameBox(outer.m_Box, CBoundBox2D(CPoint2D(90, 200), CPoint2D(100, 210))));
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{98, 201}, {96, 203}}}));
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(90, 200), CPoint2D(100, 210))));
}

TEST(Layer, TransformLeavesHatchesWhereItIsToldTo) {
    CLayer layer;
    Give(layer, Hatch({{{1, 2}, {3, 4}}}));
    double matrix[3][3] = {{2, 0, 0}, {0, 2, 0}, {0, 0, 1}};
    layer.Transform(matrix, 1);
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{1, 2}, {3, 4}}}));
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(1, 2), CPoint2D(3, 4))));
}
