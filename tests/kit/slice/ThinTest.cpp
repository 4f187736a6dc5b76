#include "slice/Thin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "varnet/Layer.h"

namespace varnet {
namespace {

double DistanceOf(Point2 const& p, Point2 const& a, Point2 const& b) {
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const length2 = dx * dx + dy * dy;
    double const t =
        length2 > 0.0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / length2, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

double DistanceOf(Point2 const& p, std::span<Point2 const> path, bool closed) {
    double nearest = HUGE_VAL;
    for (std::size_t i = closed ? 0 : 1; i < path.size(); ++i) {
        nearest = std::min(nearest, DistanceOf(p, path[i == 0 ? path.size() - 1 : i - 1], path[i]));
    }
    return nearest;
}

SolidContours Thinned(std::vector<Point2> const& path, double tolerance) {
    SolidContours contours;
    contours.Add(path, -1);
    SolidContours thinned;
    ThinContours(contours, tolerance, thinned);
    return thinned;
}

TEST(Thin, StraightSidesKeepTheirCornersAlone) {
    std::vector<Point2> square;
    for (int i = 0; i < 10; ++i) square.push_back({static_cast<double>(i), 0});
    for (int i = 0; i < 10; ++i) square.push_back({10, static_cast<double>(i)});
    for (int i = 10; i > 0; --i) square.push_back({static_cast<double>(i), 10});
    for (int i = 10; i > 0; --i) square.push_back({0, static_cast<double>(i)});
    // Wherever it begins.
    for (std::size_t turn = 0; turn < square.size(); ++turn) {
        std::rotate(square.begin(), square.begin() + 1, square.end());
        SolidContours const thinned = Thinned(square, 0.01);
        ASSERT_EQ(thinned.parents.size(), 1u);
        EXPECT_EQ(thinned.paths.points, (std::vector<Point2>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
    }
    EXPECT_EQ(Thinned(square, 0.0).paths.points, square);
}

TEST(Thin, NoPointThatGoesIsFurtherThanTheTolerance) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        std::uniform_real_distribution<double> noise(-0.004 * (round % 4), 0.004 * (round % 4));
        std::vector<Point2> path;
        int const corners = 10 + round * 7;
        for (int k = 0; k < corners; ++k) {
            double const angle = 2.0 * std::acos(-1.0) * k / corners;
            double const radius = 10.0 + 3.0 * std::sin((round % 5) * angle);
            path.push_back(
                {radius * std::cos(angle) + noise(random), radius * std::sin(angle) + noise(random)});
        }
        double const tolerance = 0.01;
        SolidContours const thinned = Thinned(path, tolerance);
        ASSERT_EQ(thinned.parents.size(), 1u);
        for (Point2 const& p : path) EXPECT_LE(DistanceOf(p, thinned.paths.points, true), tolerance);
        for (Point2 const& p : thinned.paths.points) EXPECT_EQ(std::count(path.begin(), path.end(), p), 1);
        bool const isSmooth = round % 4 == 0 && corners > 1000;
        EXPECT_LT(thinned.paths.points.size(), isSmooth ? path.size() / 2 : path.size() + 1);

        Paths open;
        open.Add(path, false);
        Paths thinnedOpen;
        ThinPaths(open, tolerance, thinnedOpen);
        EXPECT_EQ(thinnedOpen.points.front(), path.front());
        EXPECT_EQ(thinnedOpen.points.back(), path.back());
        for (Point2 const& p : path) EXPECT_LE(DistanceOf(p, thinnedOpen.points, false), tolerance);
    }
}

// The chord may lean by the tolerance over the first step, less a thousand millionth of it.
TEST(Thin, AChordJustAtTheToleranceIsTakenOnBothSides) {
    double const most = 0.0625 * (1.0 - 1e-9);
    auto const thinned = [](double rise) {
        Paths paths;
        paths.Add(std::vector<Point2>{{0, 0}, {1, 0}, {2, rise}}, false);
        Paths thin;
        ThinPaths(paths, 0.0625, thin);
        return thin.points.size();
    };
    for (double const side : {1.0, -1.0}) {
        EXPECT_EQ(thinned(side * 2.0 * most), 2u);
        EXPECT_EQ(thinned(side * 2.0 * std::nextafter(most, 1.0)), 3u);
    }
}

// A chord from the first point on would pass the last one, but not the one before it on the other side.
TEST(Thin, EveryPointThatWentBoundsTheChord) {
    for (double const side : {1.0, -1.0}) {
        for (bool const goesBack : {false, true}) {
            Paths paths;
            double const back = goesBack ? -1.0 : 1.0;
            std::vector<Point2> const path = {
                {0, 0}, {10, 0}, {20, side * 0.09}, {30, side * 0.09 * back}, {40, side * 0.09 * back}};
            paths.Add(path, false);
            Paths thin;
            ThinPaths(paths, 0.05, thin);
            for (Point2 const& p : path) EXPECT_LE(DistanceOf(p, thin.points, false), 0.05);
            EXPECT_EQ(thin.points.size(), goesBack ? 4u : 2u);
        }
    }
}

TEST(Thin, TinyStepsForthAndBackStay) {
    // Steps too short to have a direction go far along the line, and back again.
    std::vector<Point2> path{{0, 0}, {1, 0}};
    for (int i = 1; i <= 2000; ++i) path.push_back({1.0 + i * 0.0005, 0});
    for (int i = 2000; i >= 0; --i) path.push_back({1.0 + i * 0.0005, 1e-4});
    path.push_back({1, 5});
    SolidContours const thinned = Thinned(path, 0.01);
    for (Point2 const& p : path) EXPECT_LE(DistanceOf(p, thinned.paths.points, true), 0.01);
}

// However far the path has gone straight on: its own step turns, not the way from where the stretch began.
TEST(Thin, APointAtWhichThePathTurnsByMoreThanTenDegreesStays) {
    auto const thinned = [](double rise) {
        Paths paths;
        paths.Add(std::vector<Point2>{{0, 0}, {1, 0}, {5, 0}, {10, 0}, {10.1, rise}}, false);
        Paths thin;
        ThinPaths(paths, 0.1, thin);
        return thin.points;
    };
    // tan 10 degrees is 0.1763.
    EXPECT_EQ(thinned(0.0177), (std::vector<Point2>{{0, 0}, {10, 0}, {10.1, 0.0177}}));
    EXPECT_EQ(thinned(0.0175), (std::vector<Point2>{{0, 0}, {10.1, 0.0175}}));
}

// The squares of both sides of the comparison are equal to the bit.
TEST(Thin, APointAtWhichThePathTurnsByJustTenDegreesGoes) {
    double const cosine2 = 0.969846310392954;
    auto const isEqual = [cosine2](double run, double rise) {
        double const dx = 1.0 + run - 1.0;
        return dx * dx == cosine2 * (dx * dx + rise * rise);
    };
    double run = 1.0;
    auto const rise = [&run] { return run * std::tan(10.0 * std::numbers::pi / 180.0); };
    for (int i = 0; i < 100000 && !isEqual(run, rise()); ++i) run += 1.0 / 65536.0;
    ASSERT_TRUE(isEqual(run, rise()));
    auto const thinned = [&run](double height) {
        Paths paths;
        paths.Add(std::vector<Point2>{{0, 0}, {1, 0}, {1.0 + run, height}}, false);
        Paths thin;
        ThinPaths(paths, 10.0, thin);
        return thin.points.size();
    };
    EXPECT_EQ(thinned(rise()), 2u);
    EXPECT_EQ(thinned(rise() * (1.0 + 1e-9)), 3u);
}

TEST(Thin, AStepOfLessThanAMicronHasNoDirection) {
    auto const thinned = [](double step) {
        Paths paths;
        paths.Add(std::vector<Point2>{{0, 0}, {1, 0}, {1, step}}, false);
        Paths thin;
        ThinPaths(paths, 10.0, thin);
        return thin.points.size();
    };
    EXPECT_EQ(0.001 * 0.001, 1e-6);
    for (double const sign : {1.0, -1.0}) {
        EXPECT_EQ(thinned(sign * 0.001), 3u);
        EXPECT_EQ(thinned(sign * 0.000999), 2u);
    }
    // Two points at one place have no direction to begin with.
    Paths paths;
    paths.Add(std::vector<Point2>{{0, 0}, {0, 0}, {1, 0}, {2, 0}}, false);
    Paths thin;
    ThinPaths(paths, 0.1, thin);
    EXPECT_EQ(thin.points, (std::vector<Point2>{{0, 0}, {0, 0}, {2, 0}}));
}

TEST(Thin, WhatIsTooThinGoesWithAllInIt) {
    SolidContours contours;
    contours.Add(std::vector<Point2>{{0, 0}, {10, 0}, {20, 0.001}, {10, 0.002}}, -1);
    contours.Add(std::vector<Point2>{{10, 0.001}, {11, 0.0012}, {11, 0.0011}}, 0);
    contours.Add(std::vector<Point2>{{30, 0}, {40, 0}, {40, 10}}, -1);
    contours.Add(std::vector<Point2>{{38, 2}, {38, 3}, {39, 3}}, 2);
    SolidContours thinned;
    ThinContours(contours, 0.01, thinned);
    EXPECT_EQ(thinned.parents, (std::vector<int>{-1, 0}));
    EXPECT_EQ(thinned.levels, (std::vector<int>{0, 1}));
}

TEST(Thin, WithoutAToleranceEveryPointStays) {
    std::vector<Point2> const line = {{0, 0}, {1, 0}, {2, 0}, {4, 0}};
    std::vector<Point2> const square = {{0, 0}, {1, 0}, {2, 0}, {2, 2}, {1, 2}, {0, 2}, {0, 1}};
    Paths paths;
    paths.Add(line, false);
    for (double const tolerance : {0.0, 0.001}) {
        Paths thinned;
        ThinPaths(paths, tolerance, thinned);
        ASSERT_EQ(thinned.Count(), 1u);
        EXPECT_EQ(thinned.closed[0], 0);
        std::vector<Point2> const found(thinned.At(0).begin(), thinned.At(0).end());
        EXPECT_EQ(found, tolerance > 0.0 ? (std::vector<Point2>{{0, 0}, {4, 0}}) : line);
        SolidContours const contours = Thinned(square, tolerance);
        ASSERT_EQ(contours.paths.Count(), 1u);
        std::vector<Point2> const around(contours.paths.At(0).begin(), contours.paths.At(0).end());
        EXPECT_EQ(around, tolerance > 0.0 ? (std::vector<Point2>{{0, 0}, {2, 0}, {2, 2}, {0, 2}}) : square);
    }
}

TEST(Thin, PathsOfOneOrTwoPointsAndTheirEndsStay) {
    Paths paths;
    std::vector<Point2> const two = {{0, 0}, {1e-4, 0}};
    std::vector<Point2> const three = {{5, 5}, {5, 5.00001}, {5, 5}};
    paths.Add(two, false);
    paths.Add(three, false);
    Paths thinned;
    ThinPaths(paths, 0.1, thinned);
    ASSERT_EQ(thinned.Count(), 2u);
    EXPECT_EQ(std::vector<Point2>(thinned.At(0).begin(), thinned.At(0).end()), two);
    EXPECT_EQ(thinned.At(1).front(), (Point2{5, 5}));
    EXPECT_EQ(thinned.At(1).back(), (Point2{5, 5}));
}

}  // namespace
}  // namespace varnet
