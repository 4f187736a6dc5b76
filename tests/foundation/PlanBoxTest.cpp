#include "foundation/PlanBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace varnet;

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Boxes with corners on a lattice, so that sides often are at one place.
PlanBox OnLattice(std::mt19937& random) {
    auto const side = [&random] { return static_cast<double>(random() % 6); };
    return PlanBoxOf(CPoint2D(side(), side()), CPoint2D(side(), side()));
}

bool IsBetween(double d, double dLow, double dHigh) { return !(d < dLow) && !(d > dHigh); }

}  // namespace

TEST(PlanBox, OfTwoPointsHasTheirLeastAndLargestCoordinates) {
    PlanBox const box{1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(PlanBoxOf(CPoint2D(1, 2), CPoint2D(3, 4)), box);
    EXPECT_EQ(PlanBoxOf(CPoint2D(3, 4), CPoint2D(1, 2)), box);
    EXPECT_EQ(PlanBoxOf(CPoint2D(1, 4), CPoint2D(3, 2)), box);
    EXPECT_EQ(PlanBoxOf(CPoint2D(3, 2), CPoint2D(1, 4)), box);
    EXPECT_EQ(PlanBoxOf(CBoundBox2D(CPoint2D(1, 2), CPoint2D(3, 4))), box);
}

TEST(PlanBox, OneThatHoldsNothingChangesNoUnionAndHoldsNoPoint) {
    PlanBox const box{1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(Union(PlanBox(), box), box);
    EXPECT_EQ(Union(box, PlanBox()), box);
    EXPECT_FALSE(Holds(PlanBox(), 0.0, 0.0));
    EXPECT_FALSE(Touch(PlanBox(), box));
    EXPECT_FALSE(Touch(box, PlanBox()));
    EXPECT_TRUE(Holds(kWholePlane, 1e300, -1e300));
    EXPECT_TRUE(Holds(kWholePlane, kInf, -kInf));
    EXPECT_FALSE(HoldsStrictly(kWholePlane, kInf, 0.0));
}

TEST(PlanBox, UnionAndGrowthMoveEachSideByItself) {
    PlanBox const a{1.0, 2.0, 3.0, 4.0};
    PlanBox const b{0.0, 3.0, 2.0, 6.0};
    PlanBox const both{0.0, 2.0, 3.0, 6.0};
    EXPECT_EQ(Union(a, b), both);
    EXPECT_EQ(Union(b, a), both);
    PlanBox const grown{0.5, 1.5, 3.5, 4.5};
    EXPECT_EQ(Grown(a, 0.5), grown);
    PlanBox const shrunk{1.25, 2.25, 2.75, 3.75};
    EXPECT_EQ(Grown(a, -0.25), shrunk);
}

TEST(PlanBox, PointsOnASideAreHeldButNotStrictly) {
    PlanBox const box{1.0, 2.0, 3.0, 4.0};
    for (double const x : {0.5, 1.0, 2.0, 3.0, 3.5}) {
        for (double const y : {1.5, 2.0, 3.0, 4.0, 4.5}) {
            EXPECT_EQ(Holds(box, x, y), IsBetween(x, 1.0, 3.0) && IsBetween(y, 2.0, 4.0)) << x << ' ' << y;
            EXPECT_EQ(HoldsStrictly(box, x, y), x == 2.0 && y == 3.0) << x << ' ' << y;
        }
    }
}

TEST(PlanBox, BoxesTouchWhereAPlaceOfTheLatticeIsInBoth) {
    std::mt19937 random(7);
    int nTouch = 0;
    for (int n = 0; n < 2000; ++n) {
        PlanBox const a = OnLattice(random);
        PlanBox const b = OnLattice(random);
        bool bCommon = false;
        bool bInside = true;  // both corners of b strictly in a
        for (double x = 0.0; x <= 5.0; x += 1.0) {
            for (double y = 0.0; y <= 5.0; y += 1.0) bCommon |= Holds(a, x, y) && Holds(b, x, y);
        }
        for (double const x : {b.xMin, b.xMax}) bInside &= x > a.xMin && x < a.xMax;
        for (double const y : {b.yMin, b.yMax}) bInside &= y > a.yMin && y < a.yMax;
        ASSERT_EQ(Touch(a, b), bCommon);
        ASSERT_EQ(IsBoxInside(a, b), bInside);
        nTouch += bCommon ? 1 : 0;
    }
    EXPECT_GT(nTouch, 200);
    EXPECT_LT(nTouch, 1900);
}
