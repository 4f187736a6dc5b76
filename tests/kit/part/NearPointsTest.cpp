#include "part/NearPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "varnet/Error.h"

namespace varnet {
namespace {

using Joined = std::vector<std::int32_t>;

Joined Join(std::vector<Point3> const& points, double tolerance) {
    return JoinNear(points, tolerance, Pace::None());
}

double FarthestAxis(Point3 const& a, Point3 const& b) {
    return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

// Each point looks at all before it.
Joined JoinSlowly(std::vector<Point3> const& points, double tolerance) {
    Joined joined;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::int32_t nearest = static_cast<std::int32_t>(i);
        double least = HUGE_VAL;
        for (std::size_t k = 0; k < i; ++k) {
            double const distance = FarthestAxis(points[i], points[k]);
            if (joined[k] != static_cast<std::int32_t>(k) || distance > tolerance || distance >= least)
                continue;
            least = distance;
            nearest = static_cast<std::int32_t>(k);
        }
        joined.push_back(nearest);
    }
    return joined;
}

TEST(JoinNear, APointAtTheToleranceIsNearOnEachAxisAndOneBehindItIsNot) {
    for (double const sign : {1.0, -1.0}) {
        double const at = 0.5 * sign;
        double const behind = std::nextafter(0.5, 1.0) * sign;
        EXPECT_EQ(Join({{0, 0, 0}, {at, 0, 0}}, 0.5), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, 0, 0}, {0, at, 0}}, 0.5), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, 0, 0}, {0, 0, at}}, 0.5), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, 0, 0}, {at, -at, at}}, 0.5), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, 0, 0}, {behind, 0, 0}}, 0.5), (Joined{0, 1}));
        EXPECT_EQ(Join({{0, 0, 0}, {0, behind, 0}}, 0.5), (Joined{0, 1}));
        EXPECT_EQ(Join({{0, 0, 0}, {0, 0, behind}}, 0.5), (Joined{0, 1}));
    }
}

TEST(JoinNear, OfTwoAsNearTheFirstIsTaken) {
    // In one cell of the grid, and on both sides of a border between two.
    for (double const x : {0.25, 1.625, -0.375, 7.625}) {
        EXPECT_EQ(Join({{x, 0, 0}, {x + 0.75, 0, 0}, {x + 0.375, 0, 0}}, 0.5), (Joined{0, 1, 0})) << x;
        EXPECT_EQ(Join({{x + 0.75, 0, 0}, {x, 0, 0}, {x + 0.375, 0, 0}}, 0.5), (Joined{0, 1, 0})) << x;
    }
    // Both at the tolerance.
    EXPECT_EQ(Join({{0, 0, 0}, {1, 0, 0}, {0.5, 0, 0}}, 0.5), (Joined{0, 1, 0}));
    EXPECT_EQ(Join({{1, 0, 0}, {0, 0, 0}, {0.5, 0, 0}}, 0.5), (Joined{0, 1, 0}));
}

TEST(JoinNear, TheNearestIsTakenBeforeTheFirst) {
    EXPECT_EQ(Join({{0, 0, 0}, {0.75, 0, 0}, {0.5, 0, 0}}, 0.5), (Joined{0, 1, 1}));
    EXPECT_EQ(Join({{0.75, 0, 0}, {0, 0, 0}, {0.5, 0, 0}}, 0.5), (Joined{0, 1, 0}));
}

TEST(JoinNear, WhatHasJoinedAnotherIsJoinedByNone) {
    EXPECT_EQ(Join({{0, 0, 0}, {0.5, 0, 0}, {1, 0, 0}, {1.5, 0, 0}}, 0.5), (Joined{0, 0, 2, 2}));
}

TEST(JoinNear, ZerosOfBothSignsAreOnePlace) {
    for (double const tolerance : {1.0, 1e-3}) {
        for (Point3 const& zero : {Point3{-0.0, 0.0, 0.0}, Point3{0.0, -0.0, 0.0}, Point3{0.0, 0.0, -0.0},
                                   Point3{-0.0, -0.0, -0.0}}) {
            EXPECT_EQ(Join({zero, {0, 0, 0}}, tolerance), (Joined{0, 0}));
            EXPECT_EQ(Join({{0, 0, 0}, zero}, tolerance), (Joined{0, 0}));
            // More lists than points that could meet in one by chance.
            std::vector<Point3> many(1, zero);
            for (int i = 1; i < 1000; ++i) many.push_back({100.0 * i, 0, 0});
            many.push_back({0, 0, 0});
            EXPECT_EQ(Join(many, tolerance).back(), 0);
        }
    }
}

TEST(JoinNear, WithoutAToleranceAllStay) {
    std::vector<Point3> const points = {{0, 0, 0}, {0, 0, 0}, {1, 0, 0}};
    for (double const tolerance : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(Join(points, tolerance), (Joined{0, 1, 2}));
    }
    EXPECT_EQ(Join({}, 1.0), Joined());
}

TEST(JoinNear, PointsAreJoinedWhereCellsCanJustBeCountedAndBeyondNoneIsLookedFor) {
    double const most = 4503599627370496.0;  // 2^52
    for (double const sign : {1.0, -1.0}) {
        EXPECT_EQ(Join({{sign * (most - 2.0), 0, 0}, {sign * (most - 1.0), 0, 0}}, 1.0), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, sign * (most - 2.0), 0}, {0, sign * (most - 1.0), 0}}, 1.0), (Joined{0, 0}));
        EXPECT_EQ(Join({{0, 0, sign * (most - 2.0)}, {0, 0, sign * (most - 1.0)}}, 1.0), (Joined{0, 0}));
        // Floats farther apart than the tolerance: counting cells would never come to an end.
        double const far = sign * 1e10;
        double const next = std::nextafter(far, 0.0);
        for (double const tolerance : {1e-8, 1e-300, std::numeric_limits<double>::denorm_min()}) {
            EXPECT_EQ(Join({{far, 0, 0}, {next, 0, 0}}, tolerance), (Joined{0, 1}));
            EXPECT_EQ(Join({{0, far, 0}, {0, next, 0}}, tolerance), (Joined{0, 1}));
            EXPECT_EQ(Join({{0, 0, far}, {0, 0, next}}, tolerance), (Joined{0, 1}));
        }
    }
}

TEST(JoinNear, RandomPointsJoinThoseThatALookAtAllFinds) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        // On a lattice of half tolerances there are ties without end; elsewhere there are none.
        bool const lattice = round % 2 == 0;
        double const tolerance = round % 3 == 0 ? 0.25 : round % 3 == 1 ? 1.0 : 1.0 / 1024.0;
        std::vector<Point3> points;
        auto const place = [&] {
            double const share = static_cast<double>(random() % 4096) / 4096.0 * 16.0 - 8.0;
            return (lattice ? std::floor(2.0 * share) / 2.0 : share) * tolerance;
        };
        for (int i = 0; i < 400; ++i) points.push_back({place(), place(), place()});
        ASSERT_EQ(Join(points, tolerance), JoinSlowly(points, tolerance)) << round;
    }
}

// Cells are four tolerances wide. More lists than points that could meet in one by chance.
TEST(JoinNear, PointsOnBothSidesOfABorderBetweenCellsAreNear) {
    for (double Point3::*const axis : {&Point3::x, &Point3::y, &Point3::z}) {
        for (double const way : {1.0, -1.0}) {
            std::vector<Point3> points;
            Joined expected;
            for (int i = -40; i < 40; ++i) {
                for (double const side : {-0.1, 0.1}) {
                    Point3 p{0.3, 0.3, 0.3};
                    p.*axis = 2.0 * i + way * side;
                    points.push_back(p);
                    expected.push_back(static_cast<std::int32_t>(points.size() - 1) / 2 * 2);
                }
            }
            // So many others that cells above each other have lists of their own, too.
            while (axis == &Point3::z && points.size() < 140000) {
                expected.push_back(static_cast<std::int32_t>(points.size()));
                points.push_back({1000.0 + static_cast<double>(points.size()), 0, 0});
            }
            EXPECT_TRUE(Join(points, 0.5) == expected);
        }
    }
}

TEST(JoinNear, CanBeStopped) {
    Progress const progress = [](double) { return false; };
    Watch watch(progress);
    std::vector<Point3> const points = {{0, 0, 0}};
    EXPECT_THROW(JoinNear(points, 1.0, Pace(watch)), Error);
}

// How large a tolerance has to be for cells to be counted goes by the points alone.
TEST(JoinNear, TolerancesMayBeAsSmallAsThePoints) {
    for (double const size : {1e-3, 1e-17, 1e-100}) {
        EXPECT_EQ(Join({{size, -size, 0}, {1.5 * size, -size, size}, {3 * size, 0, 0}}, size),
                  (Joined{0, 0, 2}));
    }
    EXPECT_EQ(Join({{0, 0, 0}, {0, 0, 0}}, 1e-300), (Joined{0, 0}));
}

}  // namespace
}  // namespace varnet
