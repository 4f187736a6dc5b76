#include "part/Rim.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "part/Edges.h"

namespace varnet {
namespace {

class RimTest : public ::testing::Test {
protected:
    Rim RimOf(Rim::Of which) {
        edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
        return Rim(mesh, edges, which, pace);
    }
    Rim::Plan Try(double tolerance) { return RimOf(Rim::Of::kGaps).Try(tolerance, Rim::Small::kStay, pace); }
    Progress const none;
    Watch watch{none};
    Pace const pace{watch};
    FlatMesh mesh;
    EdgeTable edges;
};

// A facet above the line from 0 to 10, and one below it from a point on the line to the end.
class PointOnEdge : public RimTest {
protected:
    Rim::Plan FromPointToEnd(double x, double tolerance = 0.0) {
        mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {x, 0, 0}, {5, -10, 0}};
        mesh.triangles = {{0, 1, 2}, {1, 3, 4}};
        return Try(tolerance);
    }
    Rim::Plan FromStartToPoint(double x) {
        mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {x, 0, 0}, {5, -10, 0}};
        mesh.triangles = {{0, 1, 2}, {3, 0, 4}};
        return Try(0.0);
    }
};

TEST_F(PointOnEdge, DividesItAndThePiecesMeet) {
    for (double const x : {1e-5, 0.1, 3.0, 9.99}) {
        Rim::Plan const plan = FromPointToEnd(x);
        EXPECT_TRUE(plan.joined.empty());
        ASSERT_EQ(plan.divisions.size(), 1u) << x;
        EXPECT_EQ(plan.divisions[0].edge, 0);
        EXPECT_EQ(plan.divisions[0].points, std::vector<std::int32_t>{3});
        // Of the six edges, those that meet are gone, and the piece ahead of the point is open.
        EXPECT_EQ(plan.open, 5);
        EXPECT_EQ(FromStartToPoint(10.0 - x).divisions.size(), 1u) << x;
    }
}

// Within the rounding of coordinates of 10, about 5e-6, it is at the end.
TEST_F(PointOnEdge, AsNearToAnEndItIsToBeJoinedWithThat) {
    for (Rim::Plan const& plan : {FromPointToEnd(2e-6), FromStartToPoint(10.0 - 2e-6)}) {
        EXPECT_TRUE(plan.divisions.empty());
        EXPECT_EQ(plan.open, 6);
    }
    // With a tolerance it is, and the facets share the edge.
    Rim::Plan const plan = FromPointToEnd(2e-6, 1e-5);
    EXPECT_EQ(plan.joined, (std::vector<std::pair<std::int32_t, std::int32_t>>{{3, 0}}));
    EXPECT_TRUE(plan.divisions.empty());
    EXPECT_EQ(plan.open, 4);
}

TEST_F(PointOnEdge, BesideItCountsUpToTheTolerance) {
    auto const beside = [this](double y, double tolerance) {
        mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {4, y, 0}, {5, -10, 0}};
        mesh.triangles = {{0, 1, 2}, {1, 3, 4}};
        return Try(tolerance).divisions.size();
    };
    EXPECT_EQ(beside(-0.0625, 0.0625), 1u);
    EXPECT_EQ(beside(-0.0626, 0.0625), 0u);
    EXPECT_EQ(beside(-1e-4, 0.0), 0u);
}

TEST_F(RimTest, PointsThatWouldTakeACornerFromAFacetAreNotJoined) {
    // A facet whose short side is within the tolerance, and another whose corner is near both its ends.
    mesh.points = {{0, 0, 0}, {0.01, 0, 0}, {0, 5, 0}, {0.005, -0.001, 0}, {5, -5, 0}, {-5, -5, 0}};
    mesh.triangles = {{0, 1, 2}, {3, 5, 4}};
    EXPECT_TRUE(Try(0.1).joined.empty());
    EXPECT_EQ(Try(0.1).open, 6);
}

// The second facet would look the other way where its corner went below its longest side, and nowhere where
// it came to lie on it.
TEST_F(RimTest, APointThatWouldTurnAFacetOverIsNotJoined) {
    auto const joined = [this](double y) {
        mesh.points = {{0.5, y, 0}, {5, -5, 0}, {-5, -5, 0}, {0, 0, 0}, {1, 0, 0}, {0.5, 0.01, 0}};
        mesh.triangles = {{0, 2, 1}, {3, 4, 5}};
        return Try(0.03).joined;
    };
    EXPECT_TRUE(joined(-0.01).empty());
    EXPECT_TRUE(joined(0.0).empty());
    EXPECT_EQ(joined(0.005), (std::vector<std::pair<std::int32_t, std::int32_t>>{{5, 0}}));
}

// A facet as narrow as the tolerance, between two others with corners of their own.
TEST_F(RimTest, AFacetMayGoWhoseCornersAreJoined) {
    mesh.points = {{0, 0, 0},    {5e-4, 0, 0},   {5, 10, 0}, {5e-4, 0, 2e-4}, {5, 10, 2e-4},
                   {0, 0, 2e-4}, {5, 10, -2e-4}, {10, 0, 0}, {-10, 0, 0}};
    mesh.triangles = {{0, 1, 2}, {4, 3, 7}, {5, 6, 8}};
    Rim const rim = RimOf(Rim::Of::kGaps);
    Rim::Plan const stays = rim.Try(1e-3, Rim::Small::kStay, pace);
    EXPECT_TRUE(stays.joined.empty());
    EXPECT_TRUE(stays.keptSmall);
    EXPECT_EQ(stays.open, 9);
    EXPECT_EQ(stays.vanished, 0);
    Rim::Plan const goes = rim.Try(1e-3, Rim::Small::kMayGo, pace);
    std::vector<std::pair<std::int32_t, std::int32_t>> joined = goes.joined;
    std::sort(joined.begin(), joined.end());
    EXPECT_EQ(joined,
              (std::vector<std::pair<std::int32_t, std::int32_t>>{{1, 0}, {3, 0}, {4, 2}, {5, 0}, {6, 2}}));
    EXPECT_EQ(goes.open, 4);
    EXPECT_EQ(goes.vanished, 3);
    EXPECT_FALSE(goes.keptSmall);
    // Where no corner would be lost there is nothing to keep.
    EXPECT_FALSE(rim.Try(3e-4, Rim::Small::kStay, pace).keptSmall);
}

TEST_F(RimTest, AFacetNoHigherThanTheToleranceMayFoldOver) {
    mesh.points = {{5, -3e-4, 0}, {0, -10, 0}, {10, -10, 0}, {0, 0, 0}, {10, 0, 0}, {5, 3e-4, 0}};
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}};
    Rim const rim = RimOf(Rim::Of::kGaps);
    Rim::Plan const stays = rim.Try(1e-3, Rim::Small::kStay, pace);
    EXPECT_TRUE(stays.joined.empty());
    EXPECT_TRUE(stays.keptSmall);
    EXPECT_EQ(rim.Try(1e-3, Rim::Small::kMayGo, pace).joined.size(), 1u);
}

TEST_F(RimTest, CopiesOfAFacetAreAGapAndOtherTwinsAreNot) {
    mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {5, -10, 0}};
    mesh.triangles = {{0, 1, 2}, {1, 2, 0}};
    EXPECT_EQ(RimOf(Rim::Of::kGaps).Count(), 6);
    mesh.triangles = {{0, 1, 2}, {0, 1, 3}};
    EXPECT_EQ(RimOf(Rim::Of::kGaps).Count(), 4);
}

TEST_F(RimTest, PointsOnAnEdgeDivideItInTheirOrder) {
    mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {7, 0, 0}, {2, 0, 0}, {5, -10, 0}};
    mesh.triangles = {{0, 1, 2}, {1, 3, 5}, {3, 4, 5}, {4, 0, 5}};
    Rim::Plan const plan = Try(0.0);
    ASSERT_EQ(plan.divisions.size(), 1u);
    EXPECT_EQ(plan.divisions[0].edge, 0);
    EXPECT_EQ(plan.divisions[0].points, (std::vector<std::int32_t>{4, 3}));
    EXPECT_EQ(plan.open, 4);
    EXPECT_FALSE(plan.gaveUp);
    // Without the facet in the middle, the piece there stays open, and both points are still needed.
    mesh.triangles = {{0, 1, 2}, {1, 3, 5}, {4, 0, 5}};
    Rim::Plan const gap = Try(0.0);
    ASSERT_EQ(gap.divisions.size(), 1u);
    EXPECT_EQ(gap.divisions[0].points, (std::vector<std::int32_t>{4, 3}));
    EXPECT_EQ(gap.open, 7);
    // Where nothing meets the second half, the point on it is not.
    mesh.points.push_back({8, -10, 0});
    mesh.points.push_back({9, -10, 0});
    mesh.triangles = {{0, 1, 2}, {4, 0, 5}, {3, 6, 7}};
    Rim::Plan const half = Try(0.0);
    ASSERT_EQ(half.divisions.size(), 1u);
    EXPECT_EQ(half.divisions[0].points, std::vector<std::int32_t>{4});
    EXPECT_EQ(half.open, 8);
}

TEST_F(RimTest, FacetsThatRunTheSameWayLeaveNoGap) {
    mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {5, -10, 0}};
    mesh.triangles = {{0, 1, 2}, {0, 1, 3}};
    EXPECT_EQ(RimOf(Rim::Of::kGaps).Count(), 4);
    EXPECT_EQ(RimOf(Rim::Of::kGapsAndCrossedTwins).Count(), 4);
    mesh.triangles = {{0, 1, 2}, {1, 0, 3}};
    EXPECT_EQ(RimOf(Rim::Of::kGaps).Count(), 4);
    EXPECT_EQ(RimOf(Rim::Of::kGapsAndCrossedTwins).Count(), 4);
}

// Two facets run along the line from 0 to 10, and a third one back along a stretch of it.
TEST_F(RimTest, TwinsAreCrossedByAnEdgeThatRunsBackFromTheSameCorner) {
    auto const count = [this](Point3 const& from, Point3 const& to) {
        mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 10, 0}, {5, -10, 0}, from, to, {5, 0, 10}};
        auto const place = [this](std::int32_t i) {
            for (std::int32_t end : {0, 1}) {
                Point3 const& a = mesh.points[static_cast<std::size_t>(end)];
                if (a == mesh.points[static_cast<std::size_t>(i)]) return end;
            }
            return i;
        };
        mesh.triangles = {{0, 1, 2}, {0, 1, 3}, {place(4), place(5), 6}};
        EXPECT_EQ(RimOf(Rim::Of::kGaps).Count(), 7);
        return RimOf(Rim::Of::kGapsAndCrossedTwins).Count();
    };
    EXPECT_EQ(count({10, 0, 0}, {4, 0, 0}), 9);
    EXPECT_EQ(count({4, 0, 0}, {0, 0, 0}), 9);
    // Beyond the line, too: the longer one is divided, whichever it is.
    EXPECT_EQ(count({10, 0, 0}, {-20, 0, 0}), 9);
    EXPECT_EQ(count({30, 0, 0}, {0, 0, 0}), 9);
    // Within the rounding of coordinates of 10, about 5e-6.
    EXPECT_EQ(count({10, 0, 0}, {4, 0, 3e-6}), 9);
    EXPECT_EQ(count({10, 0, 0}, {4, 0, 3e-5}), 7);
    // From no corner of theirs; away from them; the same way.
    EXPECT_EQ(count({8, 0, 0}, {4, 0, 0}), 7);
    EXPECT_EQ(count({10, 0, 0}, {14, 0, 0}), 7);
    EXPECT_EQ(count({14, 0, 0}, {10, 0, 0}), 7);
    EXPECT_EQ(count({0, 0, 0}, {4, 0, 0}), 7);
    EXPECT_EQ(count({4, 0, 0}, {10, 0, 0}), 7);
}

// Facets whose edges come to lie on each other when their corners are joined: each one that goes up meets one
// that goes down.
TEST_F(RimTest, EdgesThatAreJoinedMeetOneByOne) {
    auto const tried = [this](int up, int down) {
        mesh = FlatMesh();
        for (int i = 0; i < up + down; ++i) {
            double const off = 1e-4 * i;
            auto const n = static_cast<std::int32_t>(mesh.points.size());
            mesh.points.push_back({0, 0, off});
            mesh.points.push_back({10, 0, off});
            mesh.points.push_back({5, 10.0 + i, 5.0 * i});
            mesh.triangles.push_back(i < up ? Triangle{n, n + 1, n + 2} : Triangle{n + 1, n, n + 2});
        }
        return Try(0.01);
    };
    for (int up = 0; up < 4; ++up) {
        for (int down = 0; down < 4; ++down) {
            if (up + down == 0) continue;
            Rim::Plan const plan = tried(up, down);
            EXPECT_EQ(plan.joined.size(), static_cast<std::size_t>(2 * (up + down - 1)));
            EXPECT_EQ(plan.open, 3 * (up + down) - 2 * std::min(up, down)) << up << ' ' << down;
            EXPECT_TRUE(plan.divisions.empty());
        }
    }
}

// Facets along a line, each with points of its own on it: a search looks at as many points as there are on
// the line for each of its edges.
TEST_F(RimTest, ItGivesUpWhereSearchesLookAtVeryManyPointsAlone) {
    auto const gaveUp = [this](std::int32_t lines, std::int32_t facets) {
        mesh = FlatMesh();
        for (std::int32_t line = 0; line < lines; ++line) {
            for (std::int32_t i = 0; i < facets; ++i) {
                auto const n = static_cast<std::int32_t>(mesh.points.size());
                double const y = 1000.0 * line;
                mesh.points.push_back({0.25 * i, y, 0});
                mesh.points.push_back({1000.0 + 0.25 * i, y, 0});
                mesh.points.push_back({500, y, 1000.0 + i});
                mesh.triangles.push_back({n, n + 1, n + 2});
            }
        }
        return Try(0.0).gaveUp;
    };
    // 500 edges of 1000 points are fewer looks than a million.
    EXPECT_FALSE(gaveUp(1, 500));
    EXPECT_TRUE(gaveUp(1, 2500));
    // In all it may look 400 times for each edge: 200 points on each of 60 lines are not too many.
    EXPECT_FALSE(gaveUp(60, 100));
}

// One group of points stays apart, since a facet would lose a corner; another one is joined all the same.
TEST_F(RimTest, AGroupThatIsNotJoinedKeepsNoOtherFromIt) {
    mesh.points = {{0, 0, 0},   {0.01, 0, 0}, {0, 5, 0},    {0.005, -0.001, 0}, {5, -5, 0},   {-5, -5, 0},
                   {100, 0, 0}, {110, 0, 0},  {105, 10, 0}, {100.01, -0.01, 0}, {95, -10, 0}, {105, -10, 0}};
    mesh.triangles = {{0, 1, 2}, {3, 5, 4}, {6, 7, 8}, {9, 10, 11}};
    Rim::Plan const plan = Try(0.1);
    EXPECT_EQ(plan.joined, (std::vector<std::pair<std::int32_t, std::int32_t>>{{9, 6}}));
    EXPECT_EQ(plan.open, 12);
}

// An edge of 10 on a slant, and a point as far along it from an end as it is beside it: too far from the end
// to be joined with it, on any axis.
TEST_F(RimTest, APointAsFarFromAnEndAsTheToleranceDividesNoEdge) {
    auto const divisions = [this](double x, double y, double tolerance) {
        std::size_t found[2];
        for (bool const isBack : {false, true}) {
            mesh.points = {{0, 0, 0}, {6, 8, 0}, {-8, 6, 0}, {x, y, 0}, {9, 1, 0}};
            // The point is near the start of the edge, or near its end.
            if (isBack) {
                mesh.triangles = {{1, 0, 2}, {3, 1, 4}};
            } else {
                mesh.triangles = {{0, 1, 2}, {1, 3, 4}};
            }
            Rim::Plan const plan = Try(tolerance);
            EXPECT_TRUE(plan.joined.empty());
            found[isBack ? 1 : 0] = plan.divisions.size();
        }
        EXPECT_EQ(found[0], found[1]);
        return found[0];
    };
    // Five eighths along and beside.
    EXPECT_EQ(divisions(0.875, 0.125, 0.625), 0u);
    // 0.68 along, and 0.49 beside.
    EXPECT_EQ(divisions(0.8, 0.25, 0.625), 1u);
    // 0.625 along and less beside is at the end, whatever the tolerance beyond that.
    EXPECT_EQ(divisions(0.875, 0.125, 0.63), 0u);
}

// The facet at the first corner would be turned over by another of its corners. All that would be joined with
// any of its corners stays.
TEST_F(RimTest, WhatWouldJoinACornerOfASpoiltFacetStaysToo) {
    mesh.points = {{0, 0, 0}, {0, 5, 5},      {5, 5, 5},     {0.5, -0.01, 0}, {5, -5, 0},  {-5, -5, 0},
                   {1, 0, 0}, {0.5, 0.01, 0}, {-0.01, 0, 0}, {-5, 5, -5},     {-5, -5, -5}};
    mesh.triangles = {{0, 1, 2}, {3, 5, 4}, {8, 9, 10}};
    EXPECT_EQ(Try(0.03).joined, (std::vector<std::pair<std::int32_t, std::int32_t>>{{8, 0}}));
    mesh.triangles = {{0, 1, 2}, {3, 5, 4}, {0, 6, 7}, {8, 9, 10}};
    EXPECT_TRUE(Try(0.03).joined.empty());
    for (int turn = 0; turn < 2; ++turn) {
        std::rotate(mesh.triangles[2].begin(), mesh.triangles[2].begin() + 1, mesh.triangles[2].end());
        EXPECT_TRUE(Try(0.03).joined.empty());
    }
}

// A corner of the first facet's, which never moves, tells which way the facet looks as any other does.
TEST_F(RimTest, AFacetAtTheFirstPointIsNotTurnedOver) {
    for (double const y : {-0.01, 0.005}) {
        for (int turn = 0; turn < 3; ++turn) {
            mesh.points = {{0, 0, 0},  {0, 5, 5},   {5, 5, 5}, {0.5, y, 0},
                           {5, -5, 0}, {-5, -5, 0}, {1, 0, 0}, {0.5, 0.01, 0}};
            mesh.triangles = {{0, 1, 2}, {3, 5, 4}, {0, 6, 7}};
            std::rotate(mesh.triangles[2].begin(), mesh.triangles[2].begin() + turn, mesh.triangles[2].end());
            std::vector<std::pair<std::int32_t, std::int32_t>> joined;
            if (y > 0.0) joined.emplace_back(7, 3);
            EXPECT_EQ(Try(0.03).joined, joined) << y << ' ' << turn;
        }
    }
}

// It looks nowhere, so that it cannot be turned over: up to a doubled area that counts as none.
TEST_F(RimTest, AFacetWithoutAreaIsNotHarmedByAMove) {
    for (double const height : {0.0, kCollinear, std::nextafter(kCollinear, 1.0)}) {
        mesh.points = {{0.5, -0.01, 0}, {5, -5, 0}, {-5, -5, 0}, {0, 0, 0}, {1, 0, 0}, {0.5, height, 0}};
        mesh.triangles = {{0, 2, 1}, {3, 4, 5}};
        std::vector<std::pair<std::int32_t, std::int32_t>> joined;
        if (height <= kCollinear) joined.emplace_back(5, 0);
        EXPECT_EQ(Try(0.03).joined, joined) << height;
    }
}

// A corner that is not on the rim stands in front, in the middle or behind.
TEST_F(RimTest, AFacetWithACornerOffTheRimLosesNoneOfTheOthers) {
    for (bool const isNear : {true, false}) {
        for (std::ptrdiff_t turn = 0; turn < 3; ++turn) {
            mesh.points = {{0, 0, 0}, {isNear ? 0.01 : 0.2, 0, 0}, {0, 5, 0}, {0.005, 1, 1}};
            mesh.triangles = {{0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
            std::rotate(mesh.triangles[0].begin(), mesh.triangles[0].begin() + turn, mesh.triangles[0].end());
            EXPECT_TRUE(Try(0.1).joined.empty()) << turn;
            // Without that facet the two are joined, and nothing else of them.
            mesh.triangles.erase(mesh.triangles.begin());
            EXPECT_EQ(Try(0.1).joined.size(), isNear ? 1u : 0u);
        }
    }
}

// It has no area to lose, and yet needs three corners.
TEST_F(RimTest, AFacetWithoutAreaLosesNoCorner) {
    for (std::ptrdiff_t turn = 0; turn < 3; ++turn) {
        mesh.points = {{0, 0, 0}, {0.01, 0, 0}, {5, 0, 0}};
        mesh.triangles = {{0, 1, 2}};
        std::rotate(mesh.triangles[0].begin(), mesh.triangles[0].begin() + turn, mesh.triangles[0].end());
        EXPECT_TRUE(Try(0.1).joined.empty()) << turn;
    }
}

// A notch of the rim between two points in the middle of a surface: a facet has but this corner on the rim.
TEST_F(RimTest, AFacetWithOneCornerOnTheRimIsNotTurnedOver) {
    for (double const y : {0.005, 0.02}) {
        for (std::ptrdiff_t turn = 0; turn < 3; ++turn) {
            // The point that the notch is near to, with a facet of its own; the notch; the rim; the middle.
            mesh.points = {{0, y, 0},  {0, 3, 9}, {1, 3, 9},  {0, 0, 0},     {-5, -5, 0},
                           {-5, 5, 0}, {5, 5, 0}, {5, -5, 0}, {-1, 0.01, 0}, {1, 0.01, 0}};
            mesh.triangles = {{0, 1, 2}, {3, 9, 8}, {3, 8, 4}, {8, 5, 4},
                              {8, 9, 5}, {9, 6, 5}, {9, 7, 6}, {9, 3, 7}};
            std::rotate(mesh.triangles[1].begin(), mesh.triangles[1].begin() + turn, mesh.triangles[1].end());
            std::vector<std::pair<std::int32_t, std::int32_t>> joined;
            if (y < 0.01) joined.emplace_back(3, 0);
            EXPECT_EQ(Try(0.03).joined, joined) << y << ' ' << turn;
            EXPECT_EQ(edges.open, 8);
        }
    }
}

TEST_F(RimTest, AFacetAllOfWhoseCornersMoveIsNotTurnedOver) {
    for (double const y : {0.001, -0.01}) {
        mesh.points = {{0, 0.001, 0}, {0, 5, 5},   {0, 6, 5},   {1, 0.001, 0}, {1, 5, 5}, {1, 6, 5},
                       {0.5, y, 0},   {0.5, 5, 9}, {0.5, 6, 9}, {0, 0, 0},     {1, 0, 0}, {0.5, 0.02, 0}};
        mesh.triangles = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {9, 10, 11}};
        if (y > 0.0) mesh.points[6].y = 0.01;
        EXPECT_EQ(Try(0.03).joined.size(), y > 0.0 ? 3u : 0u);
    }
}

// The corner of a facet stays, as it would turn over another one; then the facet must not move with the two
// other corners alone.
TEST_F(RimTest, WhereOnePointStaysFacetsBesideItAreLookedAtAgain) {
    mesh.points = {
        {0, -0.03, 0}, {0, 5, 5},      {0, 6, 5},  // where the first corner would go
        {1, -0.03, 0}, {1, 5, 5},      {1, 6, 5},       {0.5, -0.02, 0}, {0.5, 5, 9},
        {0.5, 6, 9},   {0, 0, 0},      {-1, -0.012, 0}, {2, -0.021, 0},  // a facet that it would turn over
        {1, 0, 0},     {0.5, 0.015, 0}};
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {9, 12, 13}};
    EXPECT_EQ(Try(0.04).joined.size(), 3u);
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}, {6, 7, 8}, {9, 10, 11}, {9, 12, 13}};
    EXPECT_TRUE(Try(0.04).joined.empty());
}

// What roundings of the coordinates leave uncertain grows with them.
TEST_F(RimTest, PointsAreOnAnEdgeUpToARoundingOfItsCoordinates) {
    for (double const size : {1.0 / 64, 1.0, 1024.0}) {
        double const near = size * 4.0 / (1 << 23);
        for (double const beside : {near, std::nextafter(near, 1e9)}) {
            mesh.points = {
                {0, 0, 0}, {size, 0, 0}, {size / 2, size, 0}, {size / 2, -beside, 0}, {size / 2, -size, 0}};
            mesh.triangles = {{0, 1, 2}, {1, 3, 4}};
            EXPECT_EQ(Try(0.0).divisions.size(), beside == near ? 1u : 0u) << size;
        }
    }
}

}  // namespace
}  // namespace varnet
