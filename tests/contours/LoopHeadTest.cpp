#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "contours/Paths.h"

using namespace varnet;

namespace {

Places const kSquare = {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}};

// The rotation node by node, as hosts know it: what is taken from the head goes to the tail.
int LiteralAdjustToPoint(tagLoopTreeNode& loop, CPoint2D point) {
    PointList& list = *loop.m_pPointList;
    list.RemoveTail();
    for (int n = list.GetCount(); n > 0; --n) {
        if (list.GetHead() == point) {
            list.AddTail(point);
            return 1;
        }
        CPoint2D head(list.RemoveHead());
        list.AddTail(head);
    }
    list.AddTail(list.GetHead());
    return 0;
}

}  // namespace

TEST(AdjutstHeadToPoint, MakesTheFirstEqualPointTheHead) {
    LoopPtr const pLoop = Square(0, 0, 1);
    CPoint2D near = Marked(1.00005, 1.0, 77);
    EXPECT_EQ(pLoop->AdjutstHeadToPoint(near), 1);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{1, 1}, {0, 1}, {0, 0}, {1, 0}, {1.00005, 1.0}}));
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetHead()), 2u);
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetTail()), 77u) << "the closing copy is one of the given point";
    ExpectSound(*pLoop->m_pPointList);
}

TEST(AdjutstHeadToPoint, APointOnNoVertexLeavesTheLoopAsItWas) {
    LoopPtr const pLoop = Square(0, 0, 1);
    auto const points = ExactPoints(*pLoop);
    EXPECT_EQ(pLoop->AdjutstHeadToPoint(CPoint2D(0.5, 0.0)), 0);
    EXPECT_EQ(ExactPoints(*pLoop), points);
    ExpectSound(*pLoop->m_pPointList);
}

TEST(AdjutstHeadToPoint, AFailureMakesTheClosingCopyOneOfTheHead) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_pPointList->GetTail() = Marked(0.0, 0.00001, 5);
    EXPECT_EQ(pLoop->AdjutstHeadToPoint(CPoint2D(9, 9)), 0);
    EXPECT_EQ(Exact(pLoop->m_pPointList->GetTail()), Exact(pLoop->m_pPointList->GetHead()));
}

TEST(AdjutstHeadToPoint, AnOpenPathDoesNotChange) {
    LoopPtr const pLoop = OpenPath(kSquare);
    auto const points = ExactPoints(*pLoop);
    EXPECT_EQ(pLoop->AdjutstHeadToPoint(CPoint2D(1, 1)), 0);
    EXPECT_EQ(pLoop->AdjutstHeadToPointAtPos(pLoop->m_pPointList->FindIndex(2)), 0);
    pLoop->AdjustHeadToNearPoint(CPoint2D(1, 1));
    EXPECT_EQ(ExactPoints(*pLoop), points);
}

TEST(AdjutstHeadToPoint, FewerThanTwoPointsGiveZero) {
    LoopPtr const pEmpty = ClosedLoop({});
    EXPECT_EQ(pEmpty->AdjutstHeadToPoint(CPoint2D()), 0);
    pEmpty->AdjustHeadToNearPoint(CPoint2D());
    LoopPtr const pPoint = OpenPath({{0, 0}});
    pPoint->m_bClosed = 1;
    EXPECT_EQ(pPoint->AdjutstHeadToPoint(CPoint2D()), 0);
    EXPECT_EQ(PlacesOf(*pPoint), (Places{{0, 0}}));
    tagLoopTreeNode none;
    none.m_bClosed = 1;
    EXPECT_EQ(none.AdjutstHeadToPoint(CPoint2D()), 0);
    none.AdjustHeadToNearPoint(CPoint2D());
}

TEST(AdjutstHeadToPoint, KeepsTheNodesOfTheRotationNodeByNode) {
    Lattice random(11);
    for (int i = 0; i < 300; ++i) {
        Places places;
        for (std::uint32_t n = 2 + random.Below(8); n > 0; --n)
            places.emplace_back(random.Step(4), random.Step(4));
        LoopPtr const pFast = ClosedLoop(places);
        LoopPtr const pLiteral = ClosedLoop(places);
        // Equal blocks hand out their nodes in equal order: a node is known by its index from the start.
        auto const nodesOf = [](tagLoopTreeNode const& loop) {
            std::vector<PointNode const*> nodes;
            for (PointNode const* p = FirstPoint(loop); p != nullptr; p = p->pNext) nodes.push_back(p);
            return nodes;
        };
        auto const fastBefore = nodesOf(*pFast);
        auto const literalBefore = nodesOf(*pLiteral);
        CPoint2D const point = Marked(random.Step(4), random.Step(4), 99);
        EXPECT_EQ(pFast->AdjutstHeadToPoint(point), LiteralAdjustToPoint(*pLiteral, point));
        EXPECT_EQ(ExactPoints(*pFast), ExactPoints(*pLiteral));
        auto const fastAfter = nodesOf(*pFast);
        auto const literalAfter = nodesOf(*pLiteral);
        if (places.size() < 2) continue;
        for (std::size_t k = 0; k < fastAfter.size(); ++k) {
            auto const place = [k](auto const& before, auto const& after) {
                return std::find(before.begin(), before.end(), after[k]) - before.begin();
            };
            EXPECT_EQ(place(fastBefore, fastAfter), place(literalBefore, literalAfter));
        }
        ExpectSound(*pFast->m_pPointList);
    }
}

TEST(AdjutstHeadToPointAtPos, MakesThePositionTheHead) {
    LoopPtr const pLoop = Square(0, 0, 1);
    XR__POSITION* const third = pLoop->m_pPointList->FindIndex(2);
    EXPECT_EQ(pLoop->AdjutstHeadToPointAtPos(third), 1);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{1, 1}, {0, 1}, {0, 0}, {1, 0}, {1, 1}}));
    EXPECT_EQ(pLoop->m_pPointList->GetHeadPosition(), third);
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetTail()), 2u) << "a copy of the new head";
}

TEST(AdjutstHeadToPointAtPos, TheTailIsNotFoundAndBecomesACopyOfTheHead) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_pPointList->GetTail() = CPoint2D(8, 8);
    EXPECT_EQ(pLoop->AdjutstHeadToPointAtPos(pLoop->m_pPointList->GetTailPosition()), 0);
    EXPECT_EQ(PlacesOf(*pLoop), kSquare);
    EXPECT_EQ(pLoop->AdjutstHeadToPointAtPos(nullptr), 0);
    EXPECT_EQ(PlacesOf(*pLoop), kSquare);
}

TEST(AdjustHeadToNearPoint, TakesTheNearestVertexTheFirstOfEquals) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->AdjustHeadToNearPoint(CPoint2D(5, 0.5));
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{1, 0}, {1, 1}, {0, 1}, {0, 0}, {1, 0}}));
}

TEST(AdjustHeadToNearPoint, KeepsTheHeadWhereEverythingIsFar) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->AdjustHeadToNearPoint(CPoint2D(200000, 200000));
    EXPECT_EQ(PlacesOf(*pLoop), kSquare);
}

TEST(AdjustHeadToNearPoint, KeepsTheHeadWhereTheTailIsNearest) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_pPointList->GetTail() = CPoint2D(5, 5);
    pLoop->AdjustHeadToNearPoint(CPoint2D(5, 5));
    EXPECT_EQ(PlacesOf(*pLoop), kSquare);
}

TEST(AdjutstHeadToPoint, TwoPointsAreAHeadAndItsClosingCopy) {
    auto const pair = [] {
        LoopPtr pLoop = OpenPath({{0, 0}, {5, 6}});
        pLoop->m_bClosed = 1;
        return pLoop;
    };
    LoopPtr const pFound = pair();
    EXPECT_EQ(pFound->AdjutstHeadToPoint(CPoint2D(0, 0)), 1);
    EXPECT_EQ(PlacesOf(*pFound), (Places{{0, 0}, {0, 0}}));
    ExpectSound(*pFound->m_pPointList);
    LoopPtr const pAtClosing = pair();
    EXPECT_EQ(pAtClosing->AdjutstHeadToPoint(CPoint2D(5, 6)), 0) << "the closing copy is no point to turn to";
    EXPECT_EQ(PlacesOf(*pAtClosing), (Places{{0, 0}, {0, 0}}));
    LoopPtr const pByPosition = pair();
    EXPECT_EQ(pByPosition->AdjutstHeadToPointAtPos(pByPosition->m_pPointList->FindIndex(0)), 1);
    EXPECT_EQ(PlacesOf(*pByPosition), (Places{{0, 0}, {0, 0}}));
    LoopPtr const pAtLast = pair();
    EXPECT_EQ(pAtLast->AdjutstHeadToPointAtPos(pAtLast->m_pPointList->FindIndex(1)), 0);
    EXPECT_EQ(PlacesOf(*pAtLast), (Places{{0, 0}, {0, 0}}));
}
