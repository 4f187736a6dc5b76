#include "contours/Layer.h"
#include "contours/Paths.h"

namespace {

void Fill(CLayer& layer) {
    Give(layer, Square(0, 0, 10))->m_nID = 4;
    Give(layer, Square(4, 4, 2));
    Give(layer, OpenPath({{20, 0}, {21, 1}}));
    layer.MakeTopology(1);
    Give(layer, Hatch({{{1, 1}, {2, 1}}}, 999))->m_nFlag = HATCH_USED_FLAG;
    Give(layer, Hatch({{{1, 3}, {2, 3}}}, 1000));
    Give(layer, std::make_unique<CHatch>());
    layer.m_dZ = 2.5;
}

}  // namespace

TEST(AddOtherLayer, WithMaskZeroAddsNothingAndRefreshesTheBox) {
    CLayer source;
    Fill(source);
    CLayer layer;
    Give(layer, Square(5, 5, 1));
    layer.AddOtherLayer(source, 0.0, 0.0, 0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 0);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(5, 5), CPoint2D(6, 6))));
}

TEST(AddOtherLayer, EveryBitBringsItsKind) {
    for (int nMask = 0; nMask < 16; ++nMask) {
        CLayer source;
        Fill(source);
        CLayer layer;
        layer.AddOtherLayer(source, 0.0, 0.0, nMask);
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), (nMask & 1) != 0 ? 3 : 0);
        std::vector<int> ids;
        for (CHatch const* const p : HatchesOf(layer)) ids.push_back(p->m_nID);
        std::vector<int> expected;
        if ((nMask & 2) != 0) expected.push_back(999);
        if ((nMask & 4) != 0) expected.push_back(1000);
        EXPECT_EQ(ids, expected);
    }
}

TEST(AddOtherLayer, LoopsComeFlatMovedAndAtThisHeight) {
    CLayer source;
    Fill(source);
    CLayer layer;
    layer.m_dZ = 9.0;
    layer.AddOtherLayer(source, 100.0, 200.0, 3);
    auto const loops = LoopsOf(layer.m_RawLoopList);
    ASSERT_EQ(loops.size(), 3u);
    EXPECT_EQ(PlacesOf(*loops[0]), (Places{{100, 200}, {110, 200}, {110, 210}, {100, 210}, {100, 200}}));
    EXPECT_EQ(loops[0]->m_nID, 4);
    EXPECT_EQ(loops[1]->m_nLevel, 0);
    EXPECT_EQ(loops[1]->m_nDirection, LOOPDIRECT_CW) << "as it was in the tree";
    EXPECT_EQ(loops[1]->GetArea(), -8.0);
    EXPECT_TRUE(SameBox(loops[1]->m_Box, CBoundBox2D(CPoint2D(104, 204), CPoint2D(106, 206))));
    EXPECT_EQ(loops[2]->m_dZ, 9.0);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 3);
    CHatch const& hatch = *HatchesOf(layer)[0];
    EXPECT_EQ(SegmentsOf(hatch), (Segments{{{101, 201}, {102, 201}}}));
    EXPECT_EQ(hatch.m_nFlag, 0);
    EXPECT_EQ(Bits(hatch.m_EdgeList.GetHead().m_ptEnd), 100u);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(100, 200), CPoint2D(121, 210))));
}

TEST(AddOtherLayer, LoopsWithoutAListStayBehind) {
    CLayer source;
    Give(source, std::make_unique<tagLoopTreeNode>(0));
    Give(source, ClosedLoop({}));
    CLayer layer;
    layer.AddOtherLayer(source, 1.0, 1.0, 255);
    ASSERT_EQ(layer.m_RawLoopList.GetCount(), 1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList)[0]->m_pPointList->GetCount(), 0);
}

TEST(CopyLayer, ReplacesWhatTheLayerHeld) {
    CLayer source;
    Fill(source);
    source.m_dUnits = 0.5;
    source.m_nUser1 = 1;
    source.m_nUser2 = 2;
    source.m_nUser3 = 3;
    source.m_dUser1 = 4.0;
    source.m_dUser2 = 5.0;
    source.m_dUser3 = 6.0;
    CLayer layer;
    Fill(layer);
    layer.CopyLayer(source, 1.0, 2.0, 3.0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 3);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 2) << "a hatch without edges stays behind";
    EXPECT_EQ(layer.m_dZ, 5.5);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList)[0]->m_dZ, 5.5);
    EXPECT_EQ(layer.m_dUnits, 0.5);
    EXPECT_EQ(layer.m_nUser1, 1);
    EXPECT_EQ(layer.m_nUser2, 2);
    EXPECT_EQ(layer.m_nUser3, 3);
    EXPECT_EQ(layer.m_dUser1, 4.0);
    EXPECT_EQ(layer.m_dUser2, 5.0);
    EXPECT_EQ(layer.m_dUser3, 6.0);
    EXPECT_TRUE(SameBox(layer.m_Box, CBoundBox2D(CPoint2D(1, 2), CPoint2D(22, 12))));
}

TEST(CopyLayer, AddsItsOffsetToTheHeight) {
    CLayer source;
    CLayer layer;
    layer.CopyLayer(source, 0.0, 0.0, 5.0);
    EXPECT_EQ(layer.m_dZ, -995.0);
}

TEST(Layer, CopiesAndAssignmentsAreDeep) {
    CLayer source;
    Fill(source);
    CLayer const copy(source);
    CLayer assigned;
    Fill(assigned);
    CLayer const& result = (assigned = source);
    EXPECT_EQ(&result, &assigned);
    for (CLayer const* const p : {&copy, static_cast<CLayer const*>(&assigned)}) {
        ASSERT_EQ(p->m_RawLoopList.GetCount(), 3);
        EXPECT_NE(LoopsOf(p->m_RawLoopList)[0], LoopsOf(source.m_RawLoopList)[0]);
        EXPECT_EQ(p->m_dZ, 2.5);
    }
    CLayer& same = assigned;
    assigned = same;
    EXPECT_EQ(assigned.m_RawLoopList.GetCount(), 3) << "assigned to itself";
}

TEST(CopyLoop, BringsNothingButTheLoopsFlat) {
    CLayer source;
    Fill(source);
    source.GetBoundBox();
    std::unique_ptr<CLayer> const pCopy(source.CopyLoop());
    EXPECT_EQ(pCopy->m_RawLoopList.GetCount(), 3);
    EXPECT_EQ(pCopy->m_HatchList.GetCount(), 0);
    EXPECT_EQ(pCopy->m_LoopList.GetCount(), 0);
    EXPECT_EQ(pCopy->m_dZ, -1000.0);
    EXPECT_TRUE(SameBox(pCopy->m_Box, CBoundBox2D()));
    for (tagLoopTreeNode const* const p : LoopsOf(pCopy->m_RawLoopList)) {
        EXPECT_EQ(p->m_nLevel, 0);
        EXPECT_EQ(p->m_ChildList.GetCount(), 0);
    }
}

TEST(ConvertLoopToHatch, MakesAnEdgeOfEverySegment) {
    CLayer layer;
    Give(layer, Square(0, 0, 1));
    Give(layer, OpenPath({{5, 5}}));
    Give(layer, std::make_unique<tagLoopTreeNode>(0));
    Give(layer, OpenPath({{5, 5}, {6, 6}}));
    layer.m_dZ = 3.0;
    layer.m_dUnits = 0.1;
    std::unique_ptr<CLayer> const pResult(layer.ConvertLoopToHatch(0xFFFFFFFFu));
    EXPECT_EQ(pResult->m_dZ, 3.0);
    EXPECT_EQ(pResult->m_dUnits, 0.1);
    EXPECT_TRUE(SameBox(pResult->m_Box, CBoundBox2D()));
    EXPECT_EQ(pResult->m_RawLoopList.GetCount(), 0);
    auto const hatches = HatchesOf(*pResult);
    ASSERT_EQ(hatches.size(), 2u);
    EXPECT_EQ(hatches[0]->m_nID, -1);
    EXPECT_EQ(SegmentsOf(*hatches[0]),
              (Segments{{{0, 0}, {1, 0}}, {{1, 0}, {1, 1}}, {{1, 1}, {0, 1}}, {{0, 1}, {0, 0}}}));
    EXPECT_EQ(Bits(hatches[0]->m_EdgeList.GetHead().m_ptEnd), 1u);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 4);
}

TEST(ConvertHatchToLoop, JoinsConnectedEdgesAndTagsTheirPoints) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {1, 0}}, {{1, 0}, {2, 0}}, {{5, 0}, {6, 0}}}, 12);
    LoopPtr const pLoop(ConvertHatchToLoop(pHatch.get(), 1.5, LOOP_KIND_HATCH));
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {1, 0}, {2, 0}, {5, 0}, {6, 0}}));
    std::vector<float> tags;
    std::vector<std::uint32_t> bits;
    for (auto const* p = pLoop->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
        tags.push_back(p->data.m_fAttr1);
        bits.push_back(Bits(p->data));
    }
    EXPECT_EQ(tags, (std::vector<float>{-12301.0f, -12302.0f, -12302.0f, -12301.0f, -12302.0f}));
    EXPECT_EQ(bits, (std::vector<std::uint32_t>{0, 100, 101, 2, 102})) << "the second attribute comes along";
    EXPECT_EQ(pLoop->m_dZ, 1.5);
    EXPECT_EQ(pLoop->m_nID, 12);
    EXPECT_EQ(pLoop->m_nFlag, LOOP_KIND_HATCH);
    EXPECT_EQ(pLoop->m_nLevel, 0);
    EXPECT_EQ(pLoop->m_nDirection, LOOPDIRECT_NONE);
    EXPECT_EQ(pLoop->m_bClosed, 0);
    EXPECT_TRUE(SameBox(pLoop->m_Box, CBoundBox2D(CPoint2D(0, 0), CPoint2D(6, 0))));
    EXPECT_EQ(Bits(pHatch->m_EdgeList.GetHead().m_ptStart), 0u);
    EXPECT_EQ(pHatch->m_EdgeList.GetHead().m_ptStart.m_fAttr1, 0.0f) << "the hatch does not change";
}

TEST(ConvertHatchToLoop, APointEdgeStandsOnce) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {0.00005, 0}}, {{0, 0}, {1, 0}}});
    LoopPtr const pLoop(ConvertHatchToLoop(pHatch.get(), 0.0, 0));
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {1, 0}}));
}

TEST(ConvertHatchToLoop, OfAHatchWithoutEdgesHasAnEmptyList) {
    CHatch hatch;
    LoopPtr const pLoop(ConvertHatchToLoop(&hatch, 0.0, 0));
    ASSERT_NE(pLoop->m_pPointList, nullptr);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 0);
    EXPECT_TRUE(SameBox(pLoop->m_Box, CBoundBox2D()));
}
