#include "contours/HatchLink.h"
#include "contours/ordering/OrderedPaths.h"

using namespace varnet;

TEST(OptimizeLoops, TurnsAClosedLoopToItsNearestVertex) {
    CLayer layer;
    tagLoopTreeNode const* const pLoop = Give(layer, Square(0, 0, 10));
    CPoint2D pos(12, 13);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 10}}));
    EXPECT_EQ(Exact(pos), Exact(Marked(10, 10, 2))) << "attributes come along";
}

TEST(OptimizeLoops, WithoutLoopsNothingChanges) {
    CLayer layer;
    tagLoopTreeNode listed(0);
    layer.m_LoopList.AddTail(&listed);
    CPoint2D pos(3, 4);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(PlaceOf(pos), (Place{3, 4}));
    EXPECT_EQ(layer.m_LoopList.GetCount(), 1) << "not even the list";
}

TEST(OptimizeLoops, AnOpenPathIsLeftAtItsHead) {
    CLayer layer;
    tagLoopTreeNode const* const pPath = Give(layer, OpenPath({{0, 0}, {5, 0}, {9, 0}}));
    CPoint2D pos(10, 0);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(PlacesOf(*pPath), (Places{{0, 0}, {5, 0}, {9, 0}})) << "its tail is nearer: not reversed";
    EXPECT_EQ(PlaceOf(pos), (Place{0, 0}));
    pos = CPoint2D(-1, 0);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(PlacesOf(*pPath), (Places{{9, 0}, {5, 0}, {0, 0}})) << "its head is nearer: reversed";
    EXPECT_EQ(PlaceOf(pos), (Place{9, 0}));
}

// A loop that is entered at its first or last point is left alone, though the two differ.
TEST(OptimizeLoops, ALoopEnteredAtItsLastPointKeepsIt) {
    for (auto const& [x, y] : Places{{-3, -4}, {0, 0}}) {
        for (CPoint2D const& from : {CPoint2D(-4, -4), CPoint2D(0.5, 0.25)}) {
            CLayer layer;
            tagLoopTreeNode* const pLoop = Give(layer, Square(0, 0, 10));
            pLoop->m_pPointList->GetTail() = Marked(x, y, 42);
            auto const points = ExactPoints(*pLoop);
            CPoint2D pos(from);
            layer.OptimizeLoops(pos, 0);
            EXPECT_EQ(ExactPoints(*pLoop), points);
            EXPECT_EQ(Exact(pos), Exact(pLoop->m_pPointList->GetHead()));
        }
    }
}

TEST(OptimizeLoops, TheFarthestVertexComesFirstInModeOne) {
    CLayer layer;
    tagLoopTreeNode* const pNear = Give(layer, Square(0, 0, 1));
    tagLoopTreeNode* const pFar = Give(layer, Square(5, 5, 3));
    CPoint2D pos(0, 0);
    layer.OptimizeLoops(pos, 1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector{pFar, pNear}));
    EXPECT_EQ(PlacesOf(*pFar).front(), (Place{8, 8}));
    EXPECT_EQ(PlaceOf(pos), (Place{0, 0})) << "the corner of the near one that is farthest from (8, 8)";
}

TEST(OptimizeLoops, AnyOtherModeGoesByRand) {
    std::vector<std::vector<int>> orders;
    for (unsigned const nSeed : {1u, 2u, 1u}) {
        CLayer layer;
        for (int i = 0; i < 20; ++i) Give(layer, Square(i * 2.0, 0, 1))->m_nID = i;
        std::srand(nSeed);
        CPoint2D pos;
        layer.OptimizeLoops(pos, 2);
        std::vector<int> ids;
        for (tagLoopTreeNode const* const p : LoopsOf(layer.m_RawLoopList)) ids.push_back(p->m_nID);
        orders.push_back(ids);
        EXPECT_EQ(ids.size(), 20u);
    }
    EXPECT_EQ(orders[0], orders[2]);
    EXPECT_NE(orders[0], orders[1]);
}

TEST(OptimizeLoops, AllLoopsOfTheTreeBecomeRawLoops) {
    CLayer layer;
    tagLoopTreeNode* const pOuter = Give(layer, Square(0, 0, 10));
    tagLoopTreeNode* const pHole = Give(layer, Square(3, 3, 3));
    layer.MakeTopology(1);
    ASSERT_EQ(layer.m_RawLoopList.GetCount(), 1);
    CPoint2D pos(4, 4);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector{pHole, pOuter}));
    EXPECT_EQ(LoopsOf(layer.m_LoopList), (std::vector{pOuter, pHole})) << "the list as it was";
    EXPECT_EQ(pOuter->m_ChildList.GetCount(), 0);
    EXPECT_EQ(pHole->m_nLevel, 1);
    EXPECT_EQ(pHole->m_nDirection, LOOPDIRECT_CW);
}

TEST(OptimizeLoops, ASinglePointIsEnteredOnce) {
    CLayer layer;
    Give(layer, OpenPath({{3, 4}}));
    for (int const nMode : {0, 1, 2}) {
        CPoint2D pos(0, 0);
        layer.OptimizeLoops(pos, nMode);
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
        EXPECT_EQ(PlaceOf(pos), (Place{3, 4}));
    }
}

TEST(OptimizeLoops, LoopsThatCannotBeReachedFallOutUndestroyed) {
    CLayer layer;
    LoopPtr const pEmpty(Give(layer, OpenPath({})));
    LoopPtr const pNoList(Give(layer, std::make_unique<tagLoopTreeNode>(0)));
    LoopPtr const pFar(Give(layer, Square(2e5, 0, 1)));
    tagLoopTreeNode* const pNear = Give(layer, Square(99000, 0, 1));
    CPoint2D pos(0, 0);
    layer.OptimizeLoops(pos, 0);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector{pNear}));
    EXPECT_EQ(LoopsOf(layer.m_LoopList).size(), 4u);
    EXPECT_EQ(PlacesOf(*pFar).size(), 5u);
    // Where everything is at pos, nothing is far.
    CLayer other;
    LoopPtr const pHere(Give(other, OpenPath({{1, 1}})));
    pos = CPoint2D(1, 1);
    other.OptimizeLoops(pos, 1);
    EXPECT_EQ(other.m_RawLoopList.GetCount(), 0);
}

TEST(FindNearUnusedOutLoop, PassesOverHolesAndUsedLoops) {
    CLayer layer;
    tagLoopTreeNode* const pOuter = Give(layer, Square(0, 0, 10));
    Give(layer, Square(3, 3, 3));
    tagLoopTreeNode* const pIsland = Give(layer, Square(20, 0, 1));
    EXPECT_EQ(layer.FindNearUnusedOutLoop(CPoint2D(3, 3)), nullptr) << "the loop list is not built yet";
    layer.MakeTopology(1);
    EXPECT_EQ(layer.FindNearUnusedOutLoop(CPoint2D(3, 3)), pOuter);
    pOuter->m_nFlag |= LOOP_USED_FLAG;
    EXPECT_EQ(layer.FindNearUnusedOutLoop(CPoint2D(3, 3)), pIsland);
    pIsland->m_nFlag |= LOOP_USED_FLAG;
    EXPECT_EQ(layer.FindNearUnusedOutLoop(CPoint2D(3, 3)), nullptr);
    layer.ClearLoopsUsedFlag();
    EXPECT_EQ(layer.FindNearUnusedOutLoop(CPoint2D(3, 3)), pOuter);
}

TEST(FindNearLoopInList, TakesTheFirstOfEqualsAndNothingTooFar) {
    LoopPtr const pFirst = OpenPath({{2, 0}});
    LoopPtr const pSecond = OpenPath({{0, 2}, {-2, 0}});
    LoopPtr const pFar = OpenPath({{1e21, 0}});
    XR_CList<void*, void*> list;
    list.AddTail(pFar.get());
    EXPECT_EQ(FindNearLoopInList(&list, CPoint2D(0, 0)), nullptr);
    list.AddTail(pFirst.get());
    list.AddTail(pSecond.get());
    EXPECT_EQ(FindNearLoopInList(&list, CPoint2D(0, 0)), pFirst.get());
    EXPECT_EQ(FindNearLoopInList(&list, CPoint2D(-0.5, 0)), pSecond.get());
}

TEST(AddLoopToOrderedLayer, ShortensACopyThatBeginsNearby) {
    LoopPtr const pLoop = Plain(Square(0, 0, 10));
    CLayer out;
    CPoint2D pos(11, 0);
    AddLoopToOrderedLayer(pLoop.get(), &out, pos, 2.0);
    tagLoopTreeNode const& copy = *LoopsOf(out.m_RawLoopList)[0];
    ExpectPlaces(copy, {{10, 0}, {10, 10}, {0, 10}, {0, 0}, {8, 0}});
    EXPECT_EQ(copy.m_nFlag, LOOP_KIND_OUTER);
    EXPECT_EQ(copy.m_bClosed, 1) << "still flagged so";
    EXPECT_NEAR(pos.x, 8.0, 1e-12);
    pLoop->m_nDirection = LOOPDIRECT_NONE;
    pLoop->m_bClosed = 0;
    AddLoopToOrderedLayer(pLoop.get(), &out, pos, 0.0);
    EXPECT_EQ(LoopsOf(out.m_RawLoopList)[1]->m_nFlag, LOOP_KIND_INNER);
    EXPECT_EQ(PlacesOf(*LoopsOf(out.m_RawLoopList)[1]).size(), 5u);
    EXPECT_EQ(PlaceOf(pos), (Place{0, 0}));
    tagLoopTreeNode empty(0);
    AddLoopToOrderedLayer(&empty, &out, pos, 1.0);
    EXPECT_EQ(out.m_RawLoopList.GetCount(), 2) << "nothing is added for no points";
}
