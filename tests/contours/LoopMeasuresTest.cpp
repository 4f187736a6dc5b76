#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "contours/Paths.h"

TEST(GetArea, IsTwiceTheSignedArea) {
    LoopPtr const pLoop = Square(3, 4, 1);
    EXPECT_EQ(pLoop->GetArea(), 2.0);
    EXPECT_EQ(pLoop->GetLoopDirection(), LOOPDIRECT_CCW);
    LoopPtr const pTurned = ClockwiseSquare(3, 4, 1);
    EXPECT_EQ(pTurned->GetArea(), -2.0);
    EXPECT_EQ(pTurned->GetLoopDirection(), LOOPDIRECT_CW);
}

TEST(GetArea, OfFewerThanThreePointsIsZeroAndCountsAsClockwise) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 5}});
    EXPECT_EQ(pLoop->GetArea(), 0.0);
    EXPECT_EQ(pLoop->GetLoopDirection(), LOOPDIRECT_CW);
    tagLoopTreeNode none;
    EXPECT_EQ(none.GetArea(), 0.0);
    EXPECT_EQ(none.GetLength(), 0.0);
}

TEST(GetArea, AddsNoClosingEdgeOfItsOwn) {
    // The fan from the head does not need the closing copy; the third point makes the first triangle.
    EXPECT_EQ(OpenPath({{0, 0}, {1, 0}, {1, 1}})->GetArea(), 1.0);
    EXPECT_EQ(OpenPath({{0, 0}, {1, 0}, {1, 1}})->GetLength(), 2.0);
}

TEST(GetLength, IsTheSumOfTheSegments) {
    EXPECT_EQ(OpenPath({{0, 0}, {3, 4}, {3, 10}})->GetLength(), 11.0);
    EXPECT_EQ(OpenPath({{0, 0}})->GetLength(), 0.0);
    EXPECT_EQ(Square(0, 0, 2)->GetLength(), 8.0);
}

TEST(GetBoundBox, RefreshesTheCacheThatStaysStaleOtherwise) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_pPointList->GetHead().x = -5.0;
    EXPECT_EQ(pLoop->m_Box.m_ptMin.x, 0.0);
    CBoundBox2D const box = pLoop->GetBoundBox();
    EXPECT_EQ(box.m_ptMin.x, -5.0);
    EXPECT_TRUE(SameBox(box, pLoop->m_Box));
    tagLoopTreeNode none;
    none.m_Box = box;
    EXPECT_TRUE(SameBox(none.GetBoundBox(), CBoundBox2D()));
    EXPECT_TRUE(SameBox(none.m_Box, CBoundBox2D()));
}

namespace {

// Points one behind the other, put in between others, and in front of all: their nodes lie in any order.
LoopPtr RandomPath(std::mt19937& random, int nPoints) {
    auto pLoop = std::make_unique<tagLoopTreeNode>(0);
    pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(1 + static_cast<int>(random() % 12));
    XR_CList<CPoint2D, CPoint2D&>& points = *pLoop->m_pPointList;
    bool const bInOrder = random() % 2 == 0;
    for (int i = 0; i < nPoints; ++i) {
        auto const number = [&random] {
            switch (random() % 40) {
                case 0:
                    return std::numeric_limits<double>::quiet_NaN();
                case 1:
                    return std::numeric_limits<double>::infinity();
                case 2:
                    return -0.0;
                default:
                    return std::uniform_real_distribution<double>(-9.0, 9.0)(random);
            }
        };
        CPoint2D point(number(), number());
        auto const nKind = bInOrder ? 9 : random() % 10;
        if (nKind == 0) {
            points.AddHead(point);
        } else if (nKind < 4 && points.GetCount() > 0) {
            int const nPlace = static_cast<int>(random() % static_cast<unsigned>(points.GetCount()));
            points.InsertAfter(points.FindIndex(nPlace), point);
        } else {
            points.AddTail(point);
        }
    }
    return pLoop;
}

std::vector<CPoint2D const*> NodesOf(tagLoopTreeNode const& loop) {
    std::vector<CPoint2D const*> nodes;
    if (loop.m_pPointList == nullptr) return nodes;
    for (XR__POSITION* position = loop.m_pPointList->GetHeadPosition(); position != nullptr;) {
        nodes.push_back(&loop.m_pPointList->GetNext(position));
    }
    return nodes;
}

}  // namespace

TEST(ForEachPoint, VisitsAllInOrderWhereverTheyStand) {
    std::mt19937 random(21);
    for (int n = 0; n < 600; ++n) {
        LoopPtr const pLoop = RandomPath(random, n % 40);
        std::vector<CPoint2D const*> visited;
        varnet::ForEachPoint(varnet::FirstPoint(*pLoop),
                             [&visited](CPoint2D const& p) { visited.push_back(&p); });
        ASSERT_EQ(visited, NodesOf(*pLoop));
    }
}

TEST(ReverseLoop, TurnsTheOrderWhereverThePointsStand) {
    std::mt19937 random(22);
    for (int n = 0; n < 600; ++n) {
        LoopPtr const pLoop = RandomPath(random, n % 40);
        std::vector<CPoint2D const*> nodes = NodesOf(*pLoop);
        pLoop->ReverseLoop();
        std::reverse(nodes.begin(), nodes.end());
        ASSERT_EQ(nodes, NodesOf(*pLoop));
        std::vector<CPoint2D const*> backwards;
        for (XR__POSITION* position = pLoop->m_pPointList->GetTailPosition(); position != nullptr;) {
            backwards.push_back(&pLoop->m_pPointList->GetPrev(position));
        }
        std::reverse(backwards.begin(), backwards.end());
        ASSERT_EQ(nodes, backwards);
    }
}

TEST(MeasureBoxAndArea, AreTheBoxAndTheAreaOfTheLoop) {
    std::mt19937 random(23);
    for (int n = 0; n < 2000; ++n) {
        LoopPtr const pLoop = RandomPath(random, n % 30);
        double const dArea = varnet::MeasureBoxAndArea(*pLoop);
        CBoundBox2D const box = pLoop->m_Box;
        double const dExpected = pLoop->GetArea();
        ASSERT_TRUE(std::bit_cast<std::uint64_t>(dArea) == std::bit_cast<std::uint64_t>(dExpected) ||
                    (std::isnan(dArea) && std::isnan(dExpected)))
            << n;
        ASSERT_TRUE(SameBox(box, pLoop->GetBoundBox())) << n;
    }
    tagLoopTreeNode none;
    EXPECT_EQ(varnet::MeasureBoxAndArea(none), 0.0);
    EXPECT_TRUE(SameBox(none.m_Box, CBoundBox2D()));
}

TEST(JudgeLoopDirection, LooksAtTheTwoEdgesOfTheLeftmostPoint) {
    EXPECT_EQ(JudgeLoopDirection(Square(0, 0, 1)->m_pPointList), LOOPDIRECT_CCW);
    EXPECT_EQ(JudgeLoopDirection(ClockwiseSquare(0, 0, 1)->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{5, 0}, {5, 5}, {0, 2}})->m_pPointList), LOOPDIRECT_CCW);
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{5, 0}, {0, 2}, {5, 5}})->m_pPointList), LOOPDIRECT_CW);
}

TEST(JudgeLoopDirection, OfThreePointsIsClockwiseWhateverTheirOrder) {
    EXPECT_EQ(JudgeLoopDirection(OpenPath({{0, 0}, {1, 0}, {1, 1}})->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(JudgeLoopDirection(OpenPath({{0, 0}, {1, 1}, {1, 0}})->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(JudgeLoopDirection(nullptr), LOOPDIRECT_CW);
}

TEST(JudgeLoopDirection, GoesAroundTheEndsOfTheList) {
    // The leftmost point is the tail, which only an unclosed list has: the point behind it is the second one.
    EXPECT_EQ(JudgeLoopDirection(OpenPath({{1, 0}, {5, 0}, {5, 5}, {0, 2}})->m_pPointList), LOOPDIRECT_CCW);
    // The leftmost point is the head: the point before it is the one before the closing copy.
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{0, 2}, {5, 0}, {5, 5}})->m_pPointList), LOOPDIRECT_CCW);
}

TEST(JudgeLoopDirection, TakesAnUprightEdgeByItsRise) {
    // Of two leftmost points the first counts: from (0, 4) the way back goes to (0, 0), the way on to (4, 4).
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{4, 4}, {4, 0}, {0, 0}, {0, 4}})->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{0, 4}, {0, 0}, {4, 0}, {4, 4}})->m_pPointList), LOOPDIRECT_CCW);
}

TEST(ReverseLoop, TurnsPointsAndDirection) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}, {2, 5}});
    pLoop->m_nDirection = LOOPDIRECT_CCW;
    pLoop->ReverseLoop();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{2, 5}, {1, 0}, {0, 0}}));
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetHead()), 2u) << "attributes go along";
    EXPECT_EQ(pLoop->m_nDirection, LOOPDIRECT_CW);
    ExpectSound(*pLoop->m_pPointList);
    pLoop->ReverseLoop();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {1, 0}, {2, 5}}));
    EXPECT_EQ(pLoop->m_nDirection, LOOPDIRECT_CCW);
}

TEST(ReverseLoop, GivesItsListTheUsualBlockSize) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_pPointList->m_nBlockSize = 3;
    pLoop->ReverseLoop();
    EXPECT_EQ(pLoop->m_pPointList->m_nBlockSize, 10);
}

TEST(ReverseLoop, LeavesAnUndecidedDirection) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->ReverseLoop();
    EXPECT_EQ(pLoop->m_nDirection, LOOPDIRECT_NONE);
    EXPECT_EQ(pLoop->GetArea(), -2.0);
}

TEST(ReverseLoop, LeavesALoopWithoutAListAloneAndTakesAnEmptyOne) {
    tagLoopTreeNode none;
    none.m_nDirection = LOOPDIRECT_CCW;
    none.ReverseLoop();
    EXPECT_EQ(none.m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(none.m_pPointList, nullptr);
    LoopPtr const pEmpty = OpenPath({});
    pEmpty->m_nDirection = LOOPDIRECT_CW;
    pEmpty->ReverseLoop();
    EXPECT_EQ(pEmpty->m_nDirection, LOOPDIRECT_CCW);
}

TEST(IsInLoop, TellsInsideFromOutside) {
    // A U, open at the top.
    LoopPtr const pLoop = ClosedLoop({{0, 0}, {9, 0}, {9, 9}, {6, 9}, {6, 3}, {3, 3}, {3, 9}, {0, 9}});
    CPoint2D left(1, 5);
    CPoint2D between(4, 5);
    CPoint2D right(7, 5);
    CPoint2D below(4, 2);
    EXPECT_EQ(IsInLoop(pLoop.get(), left), 1);
    EXPECT_EQ(IsInLoop(pLoop.get(), between), 0);
    EXPECT_EQ(IsInLoop(pLoop.get(), right), 1);
    EXPECT_EQ(IsInLoop(pLoop.get(), below), 1);
}

TEST(IsInLoop, APointOnTheEdgeOfTheBoxIsOutsideWhateverTheLoop) {
    LoopPtr const pLoop = Square(0, 0, 4);
    CPoint2D onBox(4, 2);
    EXPECT_EQ(IsInLoop(pLoop.get(), onBox), 0);
    pLoop->m_Box = CBoundBox2D(CPoint2D(1, 1), CPoint2D(3, 3));
    CPoint2D inLoop(3.5, 2);
    CPoint2D inBoth(2, 2);
    EXPECT_EQ(IsInLoop(pLoop.get(), inLoop), 0) << "the cached box decides";
    EXPECT_EQ(IsInLoop(pLoop.get(), inBoth), 1);
}

TEST(IsInLoop, OpenPathsAndLoopsWithoutEdgesHoldNothing) {
    LoopPtr const pOpen = Square(0, 0, 4);
    pOpen->m_bClosed = 0;
    CPoint2D point(2, 2);
    EXPECT_EQ(IsInLoop(pOpen.get(), point), 0);
    LoopPtr const pPoint = OpenPath({{2, 2}});
    pPoint->m_bClosed = 1;
    pPoint->m_Box = CBoundBox2D(CPoint2D(0, 0), CPoint2D(4, 4));
    EXPECT_EQ(IsInLoop(pPoint.get(), point), 0);
    tagLoopTreeNode none;
    none.m_bClosed = 1;
    none.m_Box = pPoint->m_Box;
    EXPECT_EQ(IsInLoop(&none, point), 0);
}

TEST(IsInLoop, AFlatEdgeStandsAtItsEnd) {
    // The edge from (8, 1) to (2, 1.0000005) is lower than 1e-6, and taken to stand at x = 2.
    LoopPtr const pLoop = ClosedLoop({{0, 0}, {9, 0}, {8, 1}, {2, 1.0000005}});
    pLoop->m_Box = CBoundBox2D(CPoint2D(-1, -1), CPoint2D(10, 10));
    CPoint2D point(5, 1.0000002);
    EXPECT_EQ(IsInLoop(pLoop.get(), point), 0) << "crossed at 2, and at the left side near 2";
}

TEST(JudgeLoopDirection, ARunOfJustTheLeastIsDividedByAndALesserOneIsUpright) {
    // From (0, 0) on to (2e-12, 3) and back to (least, 1): rises of 1.5e12, and of 1 / least or 1e20.
    double const least = 1e-12;
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{0, 0}, {2e-12, 3}, {least, 1}})->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(
        JudgeLoopDirection(ClosedLoop({{0, 0}, {2e-12, 3}, {std::nextafter(least, 0.0), 1}})->m_pPointList),
        LOOPDIRECT_CCW);
}

TEST(JudgeLoopDirection, FewerThanFourPointsAreClockwise) {
    EXPECT_EQ(JudgeLoopDirection(nullptr), LOOPDIRECT_CW);
    // With one point more to close it, the last of these would be counterclockwise.
    for (Places const& places :
         {Places{}, Places{{0, 0}}, Places{{1, 1}, {0, 0}}, Places{{1, 1}, {0, 0}, {1, -1}}}) {
        EXPECT_EQ(JudgeLoopDirection(OpenPath(places)->m_pPointList), LOOPDIRECT_CW) << places.size();
    }
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{1, 1}, {0, 0}, {1, -1}})->m_pPointList), LOOPDIRECT_CCW);
}

// Two lobes that cross at (2, 2): the upper one is clockwise, the lower one is not.
TEST(JudgeLoopDirection, OfTwoLeftmostPointsTheFirstInTheListTells) {
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{4, 0}, {0, 4}, {4, 4}, {0, 0}})->m_pPointList), LOOPDIRECT_CW);
    EXPECT_EQ(JudgeLoopDirection(ClosedLoop({{4, 4}, {0, 0}, {4, 0}, {0, 4}})->m_pPointList), LOOPDIRECT_CCW);
}

TEST(JudgeLoopDirection, ALoopThatGoesAndComesOnOneLineIsClockwise) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 1}, {2, 2}, {0, 0}});
    EXPECT_EQ(JudgeLoopDirection(pLoop->m_pPointList), LOOPDIRECT_CW);
    LoopPtr const pUpright = OpenPath({{0, 0}, {0, 1}, {0, 1}, {0, 0}});
    EXPECT_EQ(JudgeLoopDirection(pUpright->m_pPointList), LOOPDIRECT_CW);
}
