// Edges and which lies across, against maps of pairs of corners.

#include "part/Edges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

#include "part/Closing.h"

namespace varnet {
namespace {

using Edges = std::vector<std::int32_t>;

EdgeTable Find(std::vector<Triangle> const& triangles, std::size_t points) {
    return FindEdges(triangles, points, Pace::None());
}

struct Plain {
    Edges across;
    std::int64_t open = 0;
    std::int64_t conflicts = 0;
    std::int64_t many = 0;
    Edges crowd;
    Edges groups;
    Edges twins;
};

// Those that run up, in their order, are paired with those that run down.
Plain FindPlainly(std::vector<Triangle> const& triangles) {
    std::map<std::pair<std::int32_t, std::int32_t>, std::pair<Edges, Edges>> between;
    Plain plain;
    plain.across.assign(3 * triangles.size(), -1);
    for (std::size_t i = 0; i < 3 * triangles.size(); ++i) {
        std::int32_t const a = triangles[i / 3][i % 3];
        std::int32_t const b = triangles[i / 3][(i + 1) % 3];
        auto& edges = between[{std::min(a, b), std::max(a, b)}];
        (a > b ? edges.second : edges.first).push_back(static_cast<std::int32_t>(i));
    }
    for (auto const& [corners, edges] : between) {
        auto const& [up, down] = edges;
        std::size_t const pairs = std::min(up.size(), down.size());
        for (std::size_t i = 0; i < pairs; ++i) {
            plain.across[static_cast<std::size_t>(up[i])] = down[i];
            plain.across[static_cast<std::size_t>(down[i])] = up[i];
        }
        plain.open += static_cast<std::int64_t>(up.size() + down.size() - 2 * pairs);
        Edges all = up;
        all.insert(all.end(), down.begin(), down.end());
        if (all.size() == 2 && pairs == 0) {
            ++plain.conflicts;
            plain.twins.insert(plain.twins.end(), all.begin(), all.end());
        }
        if (all.size() <= 2) continue;
        ++plain.many;
        plain.groups.push_back(static_cast<std::int32_t>(plain.crowd.size()));
        plain.crowd.insert(plain.crowd.end(), all.begin(), all.end());
    }
    plain.groups.push_back(static_cast<std::int32_t>(plain.crowd.size()));
    return plain;
}

TEST(FindEdges, RandomFacetsArePairedAsMapsPairThem) {
    std::mt19937 random(31);
    for (int round = 0; round < 200; ++round) {
        // With few corners, more than 24 edges meet at one.
        auto const points = 3 + random() % (round % 2 == 0 ? 6 : 60);
        std::vector<Triangle> triangles;
        for (auto count = random() % 120; count > 0; --count) {
            auto const a = static_cast<std::int32_t>(random() % points);
            auto const b = static_cast<std::int32_t>(random() % points);
            auto const c = static_cast<std::int32_t>(random() % points);
            if (a != b && b != c && c != a) triangles.push_back({a, b, c});
        }
        EdgeTable const table = Find(triangles, points);
        Plain const plain = FindPlainly(triangles);
        ASSERT_EQ(Edges(table.across.begin(), table.across.end()), plain.across) << round;
        ASSERT_EQ(table.open, plain.open);
        ASSERT_EQ(table.conflicts, plain.conflicts);
        ASSERT_EQ(table.many, plain.many);
        ASSERT_EQ(table.crowd, plain.crowd);
        ASSERT_EQ(table.groups, plain.groups);
        ASSERT_EQ(table.twins, plain.twins);
    }
    EXPECT_EQ(Find({}, 0).groups, Edges{0});
}

// As when slivers have taken all facets with them: seen by the sanitizers where something is done with none.
TEST(FindEdges, PointsOfNoFacetsHaveNone) {
    for (std::size_t const nPoints : {std::size_t{1}, std::size_t{9}}) {
        EdgeTable const table = Find({}, nPoints);
        EXPECT_TRUE(table.across.empty());
        EXPECT_EQ(table.open, 0);
        EXPECT_EQ(table.groups, Edges{0});
    }
}

TEST(FindEdges, EdgesGoRoundTheirFacet) {
    std::vector<Triangle> const triangles = {{7, 8, 9}, {4, 5, 6}};
    for (std::int32_t k = 0; k < 3; ++k) {
        EXPECT_EQ(NextEdge(3 + k), 3 + (k + 1) % 3);
        EXPECT_EQ(PreviousEdge(3 + k), 3 + (k + 2) % 3);
        EXPECT_EQ(StartOf(triangles, 3 + k), 4 + k);
        EXPECT_EQ(EndOf(triangles, 3 + k), 4 + (k + 1) % 3);
        EXPECT_EQ(ApexOf(triangles, 3 + k), 4 + (k + 2) % 3);
    }
}

struct Closed {
    FlatMesh mesh;
    EdgeTable edges;
    ClosingCounts counts;
};
Closed Close(std::vector<Point3> const& points, std::vector<Triangle> const& triangles,
             std::vector<double> const& tolerances) {
    Closed closed;
    closed.mesh.points.assign(points.begin(), points.end());
    closed.mesh.triangles.assign(triangles.begin(), triangles.end());
    closed.edges = FindEdges(closed.mesh.triangles, points.size(), Pace::None());
    closed.counts = CloseOpenEdges(closed.mesh, closed.edges, tolerances, Pace::None());
    return closed;
}

TEST(MayHaveCopies, NoTwoFacetsOnTheSameCornersAreMissed) {
    Edges const turned = {0, 1, 2, 0, 1};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            Triangle const one = {turned[i], turned[i + 1], turned[i + 2]};
            Triangle const other = {turned[k], turned[k + 1], turned[k + 2]};
            EXPECT_TRUE(MayHaveCopies(Find({one, other}, 3)));
            EXPECT_TRUE(MayHaveCopies(Find({one, {other[0], other[2], other[1]}}, 3)));
        }
    }
    EXPECT_FALSE(MayHaveCopies(Find({{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}, 4)));
    EXPECT_FALSE(MayHaveCopies(Find({{0, 1, 2}}, 3)));
    EXPECT_FALSE(MayHaveCopies(Find({}, 3)));
    std::mt19937 random(17);
    for (int run = 0; run < 3000; ++run) {
        std::vector<Triangle> triangles(2 + random() % 5);
        std::map<Triangle, int> count;
        bool isTwice = false;
        for (Triangle& t : triangles) {
            t[0] = static_cast<std::int32_t>(random() % 6);
            do t[1] = static_cast<std::int32_t>(random() % 6);
            while (t[1] == t[0]);
            do t[2] = static_cast<std::int32_t>(random() % 6);
            while (t[2] == t[0] || t[2] == t[1]);
            Triangle corners = t;
            std::sort(corners.begin(), corners.end());
            isTwice |= ++count[corners] > 1;
        }
        if (isTwice) {
            EXPECT_TRUE(MayHaveCopies(Find(triangles, 6)));
        }
    }
}

TEST(CloseOpenEdges, AFacetIsDividedInTheOrderOfTheCornersOnItsEdge) {
    // Below a facet whose lower edge is whole hang three with corners on it.
    std::vector<Point3> const points = {{0, 0, 0}, {8, 0, 0}, {4, 6, 0}, {2, 0, 0}, {5, 0, 0}, {4, -6, 0}};
    for (int turn = 0; turn < 3; ++turn) {
        Triangle whole = {0, 1, 2};
        std::rotate(whole.begin(), whole.begin() + turn, whole.end());
        Closed const closed = Close(points, {whole, {3, 0, 5}, {4, 3, 5}, {1, 4, 5}}, {0.1, 1.0});
        EXPECT_EQ(closed.counts.split, 1);
        EXPECT_EQ(closed.counts.welded, 0);
        EXPECT_EQ(closed.counts.tolerance, 0.0);
        EXPECT_EQ(closed.edges.open, 4);
        std::vector<Triangle> const triangles(closed.mesh.triangles.begin(), closed.mesh.triangles.end());
        EXPECT_EQ(triangles,
                  (std::vector<Triangle>{{0, 3, 2}, {3, 4, 2}, {4, 1, 2}, {3, 0, 5}, {4, 3, 5}, {1, 4, 5}}));
    }
}

TEST(CloseOpenEdges, TheLeastToleranceThatLeavesTheFewestOpenIsTaken) {
    // Two facets along an edge; the second has corners of its own, 0.03 and 0.3 away.
    std::vector<Point3> const points = {{0, 0, 0},     {10, 0, 0},    {5, 5, 0},
                                        {0, -0.03, 0}, {10, -0.3, 0}, {5, -5, 0}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {4, 3, 5}};
    Closed const none = Close(points, triangles, {0.01, 0.02});
    EXPECT_EQ(none.counts.welded, 0);
    EXPECT_EQ(none.counts.tolerance, 0.0);
    EXPECT_EQ(none.edges.open, 6);
    Closed const both = Close(points, triangles, {0.01, 0.5, 0.6});
    EXPECT_EQ(both.counts.welded, 2);
    EXPECT_EQ(both.counts.tolerance, 0.5);
    EXPECT_EQ(both.edges.open, 4);
    // Both join at once, or none: one alone closes no edge.
    Closed const one = Close(points, triangles, {0.1});
    EXPECT_EQ(one.counts.welded, 0);
    EXPECT_EQ(one.edges.open, 6);
}

// Without any tolerance the edge is divided as well, so that corners near each other elsewhere stay two.
TEST(CloseOpenEdges, NoCornersAreJoinedWhereThatClosesNothingMore) {
    std::vector<Point3> const points = {{0, 0, 0},  {8, 0, 0},     {4, 6, 0},  {2, 0, 0},
                                        {5, 0, 0},  {4, -6, 0},    {50, 0, 0}, {60, 0, 0},
                                        {50, 9, 0}, {49.95, 0, 0}, {40, 0, 0}, {40, -9, 0}};
    Closed const closed =
        Close(points, {{0, 1, 2}, {3, 0, 5}, {4, 3, 5}, {1, 4, 5}, {6, 7, 8}, {9, 10, 11}}, {0.1, 1.0});
    EXPECT_EQ(closed.counts.split, 1);
    EXPECT_EQ(closed.counts.welded, 0);
    EXPECT_EQ(closed.counts.tolerance, 0.0);
    EXPECT_EQ(closed.edges.open, 10);
}

}  // namespace
}  // namespace varnet
