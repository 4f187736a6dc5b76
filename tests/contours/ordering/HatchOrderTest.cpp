#include <limits>

#include "contours/Layer.h"
#include "contours/Paths.h"
#include "contours/ordering/OrderFacts.h"

namespace {

std::vector<Segments> AllSegments(CLayer const& layer) {
    std::vector<Segments> all;
    for (CHatch const* const p : HatchesOf(layer)) all.push_back(SegmentsOf(*p));
    return all;
}

// The square ring from (0,0), counter-clockwise, ten wide.
HatchPtr Ring(int nID = 1) {
    return Hatch({{{0, 0}, {10, 0}}, {{10, 0}, {10, 10}}, {{10, 10}, {0, 10}}, {{0, 10}, {0, 0}}}, nID);
}

}  // namespace

TEST(OptimizeHatchs, TakesTheNearestFirstAndLeavesItUnturned) {
    CLayer layer;
    Give(layer, Hatch({{{0, 0}, {10, 0}}}));
    CHatch* const pSecond = Give(layer, Hatch({{{11, 0}, {20, 0}}}));
    CPoint2D pos(0, 0);
    layer.OptimizeHatchs(pos, 0);
    EXPECT_EQ(AllSegments(layer), (std::vector<Segments>{{{{0, 0}, {10, 0}}}, {{{11, 0}, {20, 0}}}}));
    EXPECT_EQ(HatchesOf(layer)[1], pSecond);
    EXPECT_EQ(Exact(pos), Exact(Marked(20, 0, 100))) << "attributes come along";
}

TEST(OptimizeHatchs, ReplacesAHatchThatIsEnteredAtItsEnd) {
    CLayer layer;
    Give(layer, Hatch({{{0, 0}, {10, 0}}}));
    HatchPtr pSecond = Hatch({{{20, 0}, {15, 0}}, {{15, 0}, {11, 0}}}, 7);
    pSecond->m_nFlag = HATCH_USED_FLAG;
    CHatch const* const pOld = Give(layer, std::move(pSecond));
    CPoint2D pos(0, 0);
    layer.OptimizeHatchs(pos, 0);
    CHatch const& turned = *HatchesOf(layer)[1];
    EXPECT_NE(&turned, pOld);
    EXPECT_EQ(SegmentsOf(turned), (Segments{{{11, 0}, {15, 0}}, {{15, 0}, {20, 0}}}));
    EXPECT_EQ(turned.m_nID, 7);
    EXPECT_EQ(turned.m_nFlag, 0) << "the Used flag neither counts nor stays";
    EXPECT_EQ(turned.m_EdgeList.m_nBlockSize, 10);
    EXPECT_EQ(Exact(pos), Exact(Marked(20, 0, 0)));
}

// The turned hatch is a new one, with a new one's blocks for what comes.
TEST(OptimizeHatchs, ATurnedHatchHasBlocksOfTenWhateverItHadBefore) {
    CLayer layer;
    HatchPtr pHatch = Hatch({{{20, 0}, {15, 0}}, {{15, 0}, {11, 0}}});
    pHatch->m_EdgeList.m_nBlockSize = 3;
    Give(layer, std::move(pHatch));
    CPoint2D pos(0, 0);
    layer.OptimizeHatchs(pos, 0);
    CHatch& turned = *HatchesOf(layer)[0];
    EXPECT_EQ(SegmentsOf(turned), (Segments{{{11, 0}, {15, 0}}, {{15, 0}, {20, 0}}}));
    EXPECT_EQ(turned.m_EdgeList.m_nBlockSize, 10);
    HatchPtr pKept = Hatch({{{11, 0}, {20, 0}}});
    pKept->m_EdgeList.m_nBlockSize = 3;
    CLayer other;
    Give(other, std::move(pKept));
    pos = CPoint2D(0, 0);
    other.OptimizeHatchs(pos, 0);
    EXPECT_EQ(HatchesOf(other)[0]->m_EdgeList.m_nBlockSize, 3);
}

TEST(OptimizeHatchs, LeavesAHatchUnturnedWhoseEndsAreEquallyFar) {
    CLayer layer;
    Give(layer, Hatch({{{1, 5}, {1, -5}}}));
    for (int const nMode : {0, 1}) {
        CPoint2D pos(0, 0);
        layer.OptimizeHatchs(pos, nMode);
        EXPECT_EQ(AllSegments(layer), (std::vector<Segments>{{{{1, 5}, {1, -5}}}}));
        EXPECT_EQ((Place{pos.x, pos.y}), (Place{1, -5}));
    }
}

TEST(OptimizeHatchs, AnEmptyListLeavesThePlace) {
    CLayer layer;
    CPoint2D pos(Marked(3, 4, 5));
    layer.OptimizeHatchs(pos, 0);
    EXPECT_EQ(Exact(pos), Exact(Marked(3, 4, 5)));
}

TEST(OptimizeHatchs, ARingIsEnteredAtItsStart) {
    CLayer layer;
    CHatch const* const pRing = Give(layer, Ring());
    CPoint2D pos(10, 10);
    layer.OptimizeHatchs(pos, 0);
    EXPECT_EQ(HatchesOf(layer)[0], pRing);
    EXPECT_EQ((Place{pos.x, pos.y}), (Place{0, 0}));
}

TEST(OptimizeHatchs, TheFarthestComesFirstInModeOne) {
    CLayer layer;
    Give(layer, Hatch({{{1, 0}, {2, 0}}}));
    Give(layer, Hatch({{{5, 0}, {9, 0}}}));
    CPoint2D pos(0, 0);
    layer.OptimizeHatchs(pos, 1);
    // From 0, the end at 9 is the farthest; from 5 then, the start at 1.
    EXPECT_EQ(AllSegments(layer), (std::vector<Segments>{{{{9, 0}, {5, 0}}}, {{{1, 0}, {2, 0}}}}));
}

TEST(OptimizeHatchs, AnyOtherModeKeepsEveryHatch) {
    for (unsigned const nSeed : {0u, 1u, 77u}) {
        CLayer layer;
        for (int i = 0; i < 50; ++i) {
            Give(layer, Hatch({{{i + 0.0, 0.0}, {i + 0.0, 1.0}}}, i));
        }
        std::srand(nSeed);
        CPoint2D pos;
        layer.OptimizeHatchs(pos, 2);
        std::vector<int> ids;
        for (CHatch const* const p : HatchesOf(layer)) ids.push_back(p->m_nID);
        EXPECT_FALSE(std::is_sorted(ids.begin(), ids.end()));
        std::sort(ids.begin(), ids.end());
        ASSERT_EQ(ids.size(), 50u);
        for (int i = 0; i < 50; ++i) EXPECT_EQ(ids[static_cast<std::size_t>(i)], i);
    }
}

TEST(OptimizeHatchs, HatchsThatCannotBeEnteredLeaveTheList) {
    CLayer layer;
    Give(layer, std::make_unique<CHatch>());
    Give(layer, Hatch({{{2e15, 0}, {2e15, 1}}}));
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    Give(layer, Hatch({{{dNaN, 0}, {0, dNaN}}}));
    Give(layer, Hatch({{{1, 0}, {2, 0}}}));
    CPoint2D pos;
    layer.OptimizeHatchs(pos, 0);
    EXPECT_EQ(AllSegments(layer), (std::vector<Segments>{{{{1, 0}, {2, 0}}}}));
}

TEST(OptimizeHatchs, HatchsWithEdgesThatNoStepChoosesStayAllocatedAsTheyAre) {
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    for (int const nMode : {0, 1}) {
        CLayer layer;
        HatchPtr pFar = Hatch({{{2e15, 0}, {2e15, 1}}}, 5);
        pFar->m_nFlag = HATCH_USED_FLAG;
        HatchPtr pNowhere = Hatch({{{dNaN, 0}, {0, dNaN}}}, 6);
        HatchPtr pWithoutEdges = std::make_unique<CHatch>();
        if (nMode == 0) layer.m_HatchList.AddTail(pFar.get());
        layer.m_HatchList.AddTail(pWithoutEdges.release());
        layer.m_HatchList.AddTail(pNowhere.get());
        Give(layer, Hatch({{{1, 0}, {2, 0}}}));
        CPoint2D pos;
        layer.OptimizeHatchs(pos, nMode);
        ASSERT_EQ(HatchesOf(layer).size(), 1u);
        EXPECT_EQ(SegmentsOf(*pFar), (Segments{{{2e15, 0}, {2e15, 1}}}));
        EXPECT_EQ(pFar->m_nFlag, HATCH_USED_FLAG);
        EXPECT_EQ(pNowhere->m_nID, 6);
        EXPECT_EQ(pNowhere->m_EdgeList.GetCount(), 1);
    }
}

TEST(FindNearHatchAndAdjust, FindsNothingWhereAllAreUsedOrEmpty) {
    CLayer layer;
    Give(layer, Ring())->m_nFlag = HATCH_USED_FLAG;
    Give(layer, std::make_unique<CHatch>());
    EXPECT_EQ(FindNearHatchAndAdjust(&layer.m_HatchList, CPoint2D(0, 0)), nullptr);
}

TEST(FindNearHatchAndAdjust, RotatesARingToItsNearestVertex) {
    CLayer layer;
    CHatch* const pRing = Give(layer, Ring(3));
    EXPECT_EQ(FindNearHatchAndAdjust(&layer.m_HatchList, CPoint2D(11, 12)), pRing);
    EXPECT_EQ(SegmentsOf(*pRing),
              (Segments{{{10, 10}, {0, 10}}, {{0, 10}, {0, 0}}, {{0, 0}, {10, 0}}, {{10, 0}, {10, 10}}}));
    EXPECT_EQ(Bits(pRing->m_EdgeList.GetHead().m_ptStart), 2u) << "edges move with their attributes";
    EXPECT_EQ(pRing->m_nFlag, 0) << "its caller flags it";
}

TEST(FindNearHatchAndAdjust, TurnsAChainToItsNearerEnd) {
    CLayer layer;
    CHatch* const pChain = Give(layer, Hatch({{{0, 0}, {4, 0}}, {{4, 0}, {9, 0}}}));
    CHatch* const pFar = Give(layer, Hatch({{{30, 0}, {20, 0}}}));
    EXPECT_EQ(FindNearHatchAndAdjust(&layer.m_HatchList, CPoint2D(6, 0)), pChain);
    EXPECT_EQ(SegmentsOf(*pChain), (Segments{{{9, 0}, {4, 0}}, {{4, 0}, {0, 0}}}));
    EXPECT_EQ(FindNearHatchAndAdjust(&layer.m_HatchList, CPoint2D(4.5, 0)), pChain);
    EXPECT_EQ(SegmentsOf(*pChain), (Segments{{{9, 0}, {4, 0}}, {{4, 0}, {0, 0}}})) << "equally far: as it is";
    pChain->m_nFlag = HATCH_USED_FLAG;
    EXPECT_EQ(FindNearHatchAndAdjust(&layer.m_HatchList, CPoint2D(6, 0)), pFar);
    EXPECT_EQ(SegmentsOf(*pFar), (Segments{{{20, 0}, {30, 0}}}));
}
