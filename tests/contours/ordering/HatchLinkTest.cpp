#include "contours/HatchLink.h"

#include <cmath>
#include <numbers>

#include "contours/ordering/OrderedPaths.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

using std::numbers::pi;

// Evaluates one candidate against the square from (0,0) to (10,10), with a width of 1.
struct Trial {
    LoopPtr pSquare = Plain(Square(0, 0, 10));
    tagHatchLink link;
    CPoint2D pos;

    double Evaluate(Place entry, Place point, Place back, Place front) {
        CPoint2D candidate[4] = {CPoint2D(entry.first, entry.second), CPoint2D(point.first, point.second),
                                 CPoint2D(back.first, back.second), CPoint2D(front.first, front.second)};
        return EvaluateHatchLink(candidate, pos, 1.0, pSquare.get(), link);
    }
    Place EndOfSegment() const { return PlaceOf(pSquare->m_pPointList->GetAt(link.m_FootPos)); }
};

struct Foot {
    int nKind;
    CPoint2D point;
    double angles[2];
};

Foot FootOn(tagLoopTreeNode& loop, int nEnd, CPoint2D const& point, double dSpan) {
    Foot foot{};
    foot.nKind =
        FindFootOnLoopEdge(&loop, loop.m_pPointList->FindIndex(nEnd), point, dSpan, foot.point, foot.angles);
    return foot;
}

}  // namespace

TEST(HatchLink, ANewRecordHasItsDefaults) {
    tagHatchLink const link;
    EXPECT_EQ(link.m_pHatch, nullptr);
    EXPECT_EQ(Exact(link.m_HatchPoint), Exact(CPoint2D()));
    EXPECT_EQ(link.m_bFromHead, 0);
    EXPECT_EQ(link.m_bSide, 0);
    EXPECT_EQ(link.m_dCost, 1e20);
    EXPECT_EQ(link.m_dCost2, 1e40);
    EXPECT_EQ(link.m_FootPos, nullptr);
    EXPECT_EQ(link.m_nFootKind, 0);
    EXPECT_EQ(link.m_bCutTail, 0);
    EXPECT_EQ(link.m_bCutHead, 0);
}

TEST(EvaluateHatchLink, CostsTheTravelAndThreeTimesTheGap) {
    Trial trial;
    trial.pos = CPoint2D(5, 8);
    // Four from the entry; the link point is 1.5 from the contour, half a millimetre more than the width.
    EXPECT_DOUBLE_EQ(trial.Evaluate({5, 4}, {5, 1.5}, {5, 4}, {7, 1.5}), 5.5);
    EXPECT_DOUBLE_EQ(trial.link.m_dCost, 5.5);
    EXPECT_DOUBLE_EQ(trial.link.m_dCost2, 30.25);
    EXPECT_EQ(PlaceOf(trial.link.m_HatchPoint), (Place{5, 1.5}));
    EXPECT_EQ(trial.EndOfSegment(), (Place{10, 0}));
    EXPECT_EQ(PlaceOf(trial.link.m_Foot), (Place{5, 0}));
    EXPECT_EQ(trial.link.m_nFootKind, 0);
    EXPECT_EQ(trial.link.m_pHatch, nullptr) << "its caller stores the hatch";
}

TEST(EvaluateHatchLink, NoImprovementLeavesTheRecord) {
    Trial trial;
    trial.pos = CPoint2D(5, 8);
    ASSERT_EQ(trial.Evaluate({5, 5}, {5, 1}, {5, 5}, {7, 1}), 3.0);
    EXPECT_EQ(trial.Evaluate({5, 5}, {6, 1}, {5, 5}, {7, 1}), -1.0) << "as good is not better";
    EXPECT_EQ(trial.Evaluate({5, 4}, {6, 1}, {5, 5}, {7, 1}), -1.0) << "the entry is too far";
    EXPECT_EQ(trial.Evaluate({5, 8}, {5, 1.8}, {5, 5}, {7, 1}), -1.0) << "1.8 widths away is not in reach";
    EXPECT_EQ(PlaceOf(trial.link.m_HatchPoint), (Place{5, 1}));
    EXPECT_NEAR(trial.Evaluate({5, 8}, {5, 1.79}, {5, 5}, {7, 1}), 0.79 * 3.0, 1e-12);
}

TEST(EvaluateHatchLink, ACostOfNothingIsStoredAndBlocksOthers) {
    Trial trial;
    trial.pos = CPoint2D(5, 1);
    EXPECT_EQ(trial.Evaluate({5, 1}, {5, 1}, {5, 5}, {7, 1}), 0.0);
    EXPECT_EQ(PlaceOf(trial.link.m_HatchPoint), (Place{5, 1}));
    EXPECT_EQ(trial.Evaluate({5, 1}, {6, 1}, {5, 5}, {7, 1}), -1.0);
}

TEST(EvaluateHatchLink, OfNearlyEqualSegmentsTheLaterOneCounts) {
    Trial trial;
    EXPECT_GT(trial.Evaluate({9, 1}, {9, 1}, {5, 1}, {9, 5}), 0.0);
    EXPECT_EQ(trial.EndOfSegment(), (Place{10, 10}));
    Trial less;
    // Squares of 1.00001 and 1 differ by less than 0.0001.
    EXPECT_GT(less.Evaluate({9, 1}, {8.99999, 1}, {5, 1}, {9, 5}), 0.0);
    EXPECT_EQ(less.EndOfSegment(), (Place{10, 10}));
    Trial more;
    EXPECT_GT(more.Evaluate({9, 1}, {8.999, 1}, {5, 1}, {9, 5}), 0.0);
    EXPECT_EQ(more.EndOfSegment(), (Place{10, 0}));
}

TEST(EvaluateHatchLink, TheSideIsWhichNeighbourComesFirstFromTheFoot) {
    // From the foot below, counter-clockwise: right at pi/2, above at pi, left at 3pi/2.
    Trial right;
    EXPECT_GT(right.Evaluate({5, 5}, {5, 1}, {5, 5}, {7, 1}), 0.0);
    EXPECT_EQ(right.link.m_bSide, 1);
    Trial left;
    EXPECT_GT(left.Evaluate({5, 5}, {5, 1}, {5, 5}, {3, 1}), 0.0);
    EXPECT_EQ(left.link.m_bSide, 0);
}

TEST(EvaluateHatchLink, FlagsTheEndsWhereHatchAndContourRunAlongEachOther) {
    struct {
        Place back;
        Place front;
        int bSide, bCutTail, bCutHead;
    } const cases[] = {
        {{5, 5}, {7, 1}, 1, 0, 1},   // comes down, goes on to the right along the contour
        {{5, 5}, {3, 1}, 0, 1, 0},   // comes down, goes back to the left
        {{3, 1}, {5, 5}, 1, 1, 0},   // comes from the left, goes up
        {{7, 1}, {5, 5}, 0, 0, 1},   // comes from the right, goes up
        {{3, 1}, {7, 1}, 1, 1, 1},   // along the contour
        {{7, 1}, {3, 1}, 0, 1, 1},   // against it
        {{4, 5}, {6, 5}, 1, 0, 0},   // down and up again
        {{3, 2}, {7, 3}, 1, 1, 0},   // at 27 degrees to it, and on at 45
        {{3, 2.2}, {7, 1}, 1, 0, 1}  // at 31 degrees
    };
    for (auto const& c : cases) {
        Trial trial;
        EXPECT_GT(trial.Evaluate({5, 5}, {5, 1}, c.back, c.front), 0.0);
        EXPECT_EQ(trial.link.m_bSide, c.bSide) << c.back.first << " to " << c.front.first;
        EXPECT_EQ(trial.link.m_bCutTail, c.bCutTail) << c.back.first << " to " << c.front.first;
        EXPECT_EQ(trial.link.m_bCutHead, c.bCutHead) << c.back.first;
    }
}

// A point whose direction from (5, 1) is 30 degrees to the bit.
TEST(EvaluateHatchLink, AtThirtyDegreesHatchAndContourDoNotRunAlongEachOther) {
    CPoint2D const point(5, 1);
    double const dLimit = std::numbers::pi / 6.0;
    CPoint2D at(0, 0);
    for (int i = 0; i < 100000 && CalAngleRad(point, at) != dLimit; ++i) {
        double const dx = 1.0 + i / 65536.0;
        at = CPoint2D(5.0 + dx, 1.0 + dx * std::tan(dLimit));
    }
    ASSERT_EQ(CalAngleRad(point, at), dLimit);
    Trial equal;
    EXPECT_GT(equal.Evaluate({5, 5}, {5, 1}, {5, 5}, {at.x, at.y}), 0.0);
    EXPECT_EQ(equal.link.m_bSide, 1);
    EXPECT_EQ(equal.link.m_bCutHead, 0);
    Trial less;
    EXPECT_GT(less.Evaluate({5, 5}, {5, 1}, {5, 5}, {at.x + 1e-9, at.y}), 0.0);
    EXPECT_EQ(less.link.m_bCutHead, 1);
}

TEST(EvaluateHatchLink, AContourWithoutSegmentsHasNoLink) {
    Trial trial;
    trial.pSquare = Plain(OpenPath({{5, 1}}));
    EXPECT_EQ(trial.Evaluate({5, 1}, {5, 1}, {5, 5}, {7, 1}), -1.0);
    trial.pSquare = std::make_unique<tagLoopTreeNode>(0);
    EXPECT_EQ(trial.Evaluate({5, 1}, {5, 1}, {5, 5}, {7, 1}), -1.0);
}

TEST(FindFootOnLoopEdge, IsWithinASegmentWhereThePointIsBesideIt) {
    LoopPtr const pSquare = Square(0, 0, 10);
    Foot const foot = FootOn(*pSquare, 2, CPoint2D(8, 4), 2.0);
    EXPECT_EQ(foot.nKind, 0);
    EXPECT_EQ(PlaceOf(foot.point), (Place{10, 4}));
    EXPECT_EQ(foot.point.m_fAttr1, 1.0f) << "with the attributes of the segment's start";
    EXPECT_EQ(foot.angles[0], pi / 2);
    EXPECT_EQ(foot.angles[1], pi / 2);
}

TEST(FindFootOnLoopEdge, TakesTheNeighboursDirectionNearACorner) {
    LoopPtr const pSquare = Square(0, 0, 10);
    Foot const nearStart = FootOn(*pSquare, 1, CPoint2D(1, 1), 2.0);
    EXPECT_EQ(nearStart.angles[0], -pi / 2) << "of the last segment, behind the closing copy";
    EXPECT_EQ(nearStart.angles[1], 0.0);
    EXPECT_EQ(FootOn(*pSquare, 1, CPoint2D(1.001, 1), 2.0).angles[0], 0.0);
    Foot const nearEnd = FootOn(*pSquare, 4, CPoint2D(1, 1), 2.0);
    EXPECT_EQ(nearEnd.angles[0], -pi / 2);
    EXPECT_EQ(nearEnd.angles[1], 0.0) << "of the first segment, behind the closing copy";
}

TEST(FindFootOnLoopEdge, IsAVertexWhereThePointIsBeyondIt) {
    LoopPtr const pSquare = Square(0, 0, 10);
    Foot const start = FootOn(*pSquare, 1, CPoint2D(-1, -1), 2.0);
    EXPECT_EQ(start.nKind, 1);
    EXPECT_EQ(PlaceOf(start.point), (Place{0, 0}));
    EXPECT_EQ(start.angles[0], -pi / 2);
    EXPECT_EQ(start.angles[1], 0.0);
    Foot const end = FootOn(*pSquare, 4, CPoint2D(-1, -1), 2.0);
    EXPECT_EQ(end.nKind, 2);
    EXPECT_EQ(PlaceOf(end.point), (Place{0, 0}));
    EXPECT_EQ(end.angles[0], -pi / 2);
    EXPECT_EQ(end.angles[1], 0.0);
}

// The right side of a square, from (10, 0) up to (10, 10): at right angles to one of its ends.
TEST(FindFootOnLoopEdge, APointJustBesideAnEndIsAtThatEnd) {
    LoopPtr const pSquare = Square(0, 0, 10);
    Foot const start = FootOn(*pSquare, 2, CPoint2D(11, 0), 2.0);
    EXPECT_EQ(start.nKind, 1);
    EXPECT_EQ(PlaceOf(start.point), (Place{10, 0}));
    EXPECT_EQ(start.angles[0], 0.0);
    EXPECT_EQ(start.angles[1], pi / 2);
    Foot const end = FootOn(*pSquare, 2, CPoint2D(11, 10), 2.0);
    EXPECT_EQ(end.nKind, 2);
    EXPECT_EQ(PlaceOf(end.point), (Place{10, 10}));
    EXPECT_EQ(end.angles[0], pi / 2);
    EXPECT_EQ(std::fabs(end.angles[1]), pi) << "back to the left";
}

TEST(FindFootOnLoopEdge, APositionThatEndsNoSegmentGivesNothing) {
    LoopPtr const pSquare = Square(0, 0, 10);
    Foot const foot = FootOn(*pSquare, 0, CPoint2D(1, 1), 2.0);
    EXPECT_EQ(foot.nKind, -1);
    EXPECT_EQ(PlaceOf(foot.point), (Place{0, 0}));
    CPoint2D point(7, 7);
    double angles[2] = {1, 2};
    EXPECT_EQ(FindFootOnLoopEdge(pSquare.get(), nullptr, CPoint2D(1, 1), 2.0, point, angles), -1);
    EXPECT_EQ(PlaceOf(point), (Place{7, 7}));
    EXPECT_EQ(angles[1], 2.0);
}
