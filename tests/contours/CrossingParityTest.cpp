#include "contours/CrossingParity.h"

#include "contours/Paths.h"

using namespace varnet;

// An edge of 10 millimetres that rises by a little more or less than a millionth: a flatter one stands at its
// end.
TEST(CrossingParity, AnEdgeFlatterThanAMillionthStandsAtItsEnd) {
    auto const isCrossed = [](double dRise, double x) {
        return IsCrossedLeftOf(0.0, dRise, 10.0, 0.0, x, dRise / 2.0);
    };
    for (double const dRise : {1.05e-6, 1.0, -1.05e-6}) {
        EXPECT_FALSE(isCrossed(dRise, 4.9)) << dRise;
        EXPECT_TRUE(isCrossed(dRise, 5.1)) << dRise;
    }
    for (double const dRise : {1e-6, -1e-6, 0.95e-6, 1e-9, -0.95e-6}) {
        EXPECT_FALSE(isCrossed(dRise, 5.1)) << dRise;
        EXPECT_FALSE(isCrossed(dRise, 10.0)) << dRise;
        EXPECT_TRUE(isCrossed(dRise, 10.1)) << dRise;
    }
}

// An end on the ray counts as above it, so that a vertex there is passed once; a crossing at the point itself
// is not to its left.
TEST(CrossingParity, WhatLiesOnTheRay) {
    EXPECT_TRUE(IsAtOrAbove(1.0, 1.0));
    EXPECT_FALSE(IsAtOrAbove(std::nextafter(1.0, 0.0), 1.0));
    EXPECT_FALSE(IsCrossedLeftOf(3.0, 0.0, 3.0, 2.0, 3.0, 1.0));
    EXPECT_TRUE(IsCrossedLeftOf(3.0, 0.0, 3.0, 2.0, std::nextafter(3.0, 4.0), 1.0));
}
