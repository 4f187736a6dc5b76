#include "part/Slivers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>
#include <vector>

#include "part/Edges.h"

namespace varnet {
namespace {

// A square on its corner, with (0, 0) and (10, 0) on its left and right, divided along the line between them.
// Points on that line, and facets whose corners all lie on it, come on top.
class Divided {
public:
    Divided() { m_Mesh.points = {{0, 0, 0}, {10, 0, 0}, {5, 5, 0}, {5, -5, 0}}; }
    std::int32_t On(double x) {
        m_Mesh.points.push_back({x, 0, 0});
        return static_cast<std::int32_t>(m_Mesh.points.size() - 1);
    }
    void Add(std::int32_t a, std::int32_t b, std::int32_t c) { m_Mesh.triangles.push_back({a, b, c}); }
    static constexpr std::int32_t kLeft = 0;
    static constexpr std::int32_t kRight = 1;
    static constexpr std::int32_t kTop = 2;
    static constexpr std::int32_t kBottom = 3;

    // Takes the slivers out; the square is as it was then, and closed along the line.
    SliverCounts TakeOut() {
        Progress const none;
        Watch watch(none);
        Pace const pace(watch);
        EdgeTable edges = FindEdges(m_Mesh.triangles, m_Mesh.points.size(), pace);
        SliverCounts const counts = TakeOutSlivers(m_Mesh, edges, pace);
        double area2 = 0.0;
        for (Triangle const& t : m_Mesh.triangles) {
            auto const at = [&](std::size_t k) { return m_Mesh.points[static_cast<std::size_t>(t[k])]; };
            double const doubled = DoubledArea(at(0), at(1), at(2));
            EXPECT_GT(doubled, kCollinear);
            area2 += doubled;
        }
        EXPECT_DOUBLE_EQ(area2, 100.0);
        return counts;
    }
    std::size_t Facets() const { return m_Mesh.triangles.size(); }

private:
    FlatMesh m_Mesh;
};

TEST(Slivers, ASliverIsTurnedToItsNeighbourAndCountsOnce) {
    Divided square;
    std::int32_t const m = square.On(4);
    square.Add(square.kLeft, square.kBottom, square.kRight);
    square.Add(square.kLeft, square.kRight, m);
    square.Add(square.kLeft, m, square.kTop);
    square.Add(m, square.kRight, square.kTop);
    SliverCounts const counts = square.TakeOut();
    EXPECT_EQ(counts.turned, 1);
    EXPECT_EQ(counts.stuck, 0);
    EXPECT_EQ(counts.small, 0);
    EXPECT_EQ(square.Facets(), 4u);
}

// The two share the whole line: turning one to the other gives two shorter ones, which are still there, and
// count when they go.
TEST(Slivers, SliversThatBecomeShorterOnesCountWhenTheyGo) {
    Divided square;
    std::int32_t const m = square.On(5);
    std::int32_t const n = square.On(5.5);
    square.Add(square.kLeft, square.kRight, m);
    square.Add(square.kRight, square.kLeft, n);
    square.Add(square.kLeft, m, square.kTop);
    square.Add(m, square.kRight, square.kTop);
    square.Add(square.kLeft, square.kBottom, n);
    square.Add(n, square.kBottom, square.kRight);
    SliverCounts const counts = square.TakeOut();
    EXPECT_EQ(counts.turned, 2);
    EXPECT_EQ(counts.stuck, 0);
    EXPECT_EQ(square.Facets(), 6u);
}

// A sliver whose longest edge is open closes two others: without it they would be open.
TEST(Slivers, ASliverOnTheRimStaysWhereTakingItOutOpensEdges) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    FlatMesh mesh;
    mesh.points = {{0, 0, 0}, {10, 0, 0}, {4, 0, 0}, {5, 5, 0}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}, {2, 1, 3}};
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    ASSERT_EQ(edges.open, 3);
    SliverCounts counts = TakeOutSlivers(mesh, edges, pace);
    EXPECT_EQ(counts.turned, 0);
    EXPECT_EQ(counts.stuck, 1);
    EXPECT_EQ(edges.open, 3);
    EXPECT_EQ(mesh.triangles.size(), 3u);
    // With one neighbour less, it leaves as many open edges as it has.
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    ASSERT_EQ(edges.open, 4);
    counts = TakeOutSlivers(mesh, edges, pace);
    EXPECT_EQ(counts.turned, 1);
    EXPECT_EQ(counts.stuck, 0);
    EXPECT_EQ(edges.open, 3);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

// A fan of slivers from one end, each between two points of the line.
TEST(Slivers, AFanOfSliversIsTakenOutOneByOne) {
    for (std::int32_t const points : {2, 3, 9}) {
        Divided square;
        std::vector<std::int32_t> line;
        for (std::int32_t i = 1; i <= points; ++i) line.push_back(square.On(10.0 * i / (points + 1)));
        line.push_back(square.kRight);
        square.Add(square.kLeft, square.kBottom, square.kRight);
        square.Add(square.kLeft, line[0], square.kTop);
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            square.Add(square.kLeft, line[i + 1], line[i]);
            square.Add(line[i], line[i + 1], square.kTop);
        }
        SliverCounts const counts = square.TakeOut();
        EXPECT_EQ(counts.turned, points);
        EXPECT_EQ(counts.stuck, 0);
        EXPECT_EQ(square.Facets(), static_cast<std::size_t>(2 * points + 2));
    }
}

// Two slivers back to back, which share their longest edge: both go, and what lies across their other edges
// stays as it is.
TEST(Slivers, SliversBackToBackGoTogether) {
    Divided square;
    std::int32_t const m = square.On(4);
    square.Add(square.kLeft, square.kRight, m);
    square.Add(square.kRight, square.kLeft, m);
    square.Add(square.kLeft, m, square.kTop);
    square.Add(m, square.kRight, square.kTop);
    square.Add(square.kLeft, square.kBottom, m);
    square.Add(m, square.kBottom, square.kRight);
    SliverCounts const counts = square.TakeOut();
    EXPECT_EQ(counts.stuck, 0);
    EXPECT_EQ(counts.small, 0);
    EXPECT_EQ(square.Facets(), 4u);
}

// A middle that two points share which are as good as one, with two needles between them that no turn makes
// shorter: they become one. Facets on the same corners at the one that goes cancel each other where they lie
// back to back, in whatever order they come: those stay that are more than the ones that face the other way.
TEST(Slivers, CornersOfANeedleThatNoTurnHelpsAreJoined) {
    Triangle const up = {1, 7, 6};
    Triangle const down = {1, 6, 7};
    for (unsigned order = 1; order < 32; ++order) {
        Progress const none;
        Watch watch(none);
        Pace const pace(watch);
        FlatMesh mesh;
        mesh.points = {{0, 0, 0},   {1e-12, 0, 0}, {10, 0, 0}, {0, 10, 0},
                       {-10, 0, 0}, {0, -10, 0},   {0, 5, 7},  {0, 3, 8}};
        mesh.triangles = {{0, 3, 4}, {0, 4, 5}, {1, 5, 2}, {1, 2, 3}, {0, 1, 3}, {1, 0, 5}};
        // The bits below the highest one, none to four of them: which way each facet faces.
        int balance = 0;
        for (unsigned rest = order; rest > 1; rest /= 2) {
            Triangle t = rest % 2 != 0 ? up : down;
            // Each begins at another of its corners than the one before.
            std::rotate(t.begin(), t.begin() + static_cast<std::ptrdiff_t>(mesh.triangles.size() % 3),
                        t.end());
            mesh.triangles.push_back(t);
            balance += rest % 2 != 0 ? 1 : -1;
        }
        EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
        SliverCounts const counts = TakeOutSlivers(mesh, edges, pace);
        EXPECT_EQ(counts.turned, 2) << "each needle has lost a corner";
        EXPECT_EQ(counts.stuck, 0);
        std::int64_t const left = std::abs(balance);
        ASSERT_EQ(mesh.triangles.size(), static_cast<std::size_t>(4 + left)) << order;
        for (Triangle& t : mesh.triangles) {
            while (t[0] != 0) std::rotate(t.begin(), t.begin() + 1, t.end());
        }
        for (std::size_t i = 4; i < mesh.triangles.size(); ++i) {
            EXPECT_EQ(mesh.triangles[i], (balance > 0 ? Triangle{0, 7, 6} : Triangle{0, 6, 7})) << order;
        }
        EXPECT_EQ(edges.open, 4 + 3 * left);
    }
}

// From the lowest corner, whichever stands in front: rounding is the same for each of three ways to write it.
TEST(DoubledArea, IsTakenFromTheLowestCorner) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(-10.0, 10.0);
    for (int run = 0; run < 1000; ++run) {
        std::array<Point3, 3> p;
        for (Point3& corner : p) corner = {place(random), place(random), place(random)};
        auto const low = static_cast<std::size_t>(
            std::min_element(p.begin(), p.end(), [](Point3 const& a, Point3 const& b) { return a.z < b.z; }) -
            p.begin());
        double const expected = Length(Cross(p[(low + 1) % 3] - p[low], p[(low + 2) % 3] - p[low]));
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(DoubledArea(p[i], p[(i + 1) % 3], p[(i + 2) % 3]), expected);
        }
    }
}

TEST(DoubledArea, OfCornersAtOneHeightTheFirstIsMeant) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> place(-10.0, 10.0);
    for (int run = 0; run < 1000; ++run) {
        std::array<Point3, 3> p;
        for (Point3& corner : p) corner = {place(random), place(random), static_cast<double>(random() % 2)};
        auto const low = static_cast<std::size_t>(
            std::min_element(p.begin(), p.end(), [](Point3 const& a, Point3 const& b) { return a.z < b.z; }) -
            p.begin());
        double const expected = Length(Cross(p[(low + 1) % 3] - p[low], p[(low + 2) % 3] - p[low]));
        EXPECT_EQ(DoubledArea(p[0], p[1], p[2]), expected);
    }
}

// In whatever order the facets and their corners come, what is open across another facet's edge is not taken
// for the sliver's.
TEST(Slivers, OnTheRimOnlyTheEdgesOfTheSliverItselfCount) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    for (std::size_t order = 0; order < 6 * 27; ++order) {
        for (bool const both : {true, false}) {
            FlatMesh mesh;
            mesh.points = {{0, 0, 0}, {10, 0, 0}, {4, 0, 0}, {5, 5, 0}};
            std::vector<Triangle> facets = {{0, 1, 2}, {0, 2, 3}};
            if (both) facets.push_back({2, 1, 3});
            std::size_t rest = order;
            for (Triangle& t : facets) {
                std::rotate(t.begin(), t.begin() + static_cast<std::ptrdiff_t>(rest % 3), t.end());
                rest /= 3;
            }
            for (; rest > 0; --rest) {
                std::next_permutation(facets.begin(), facets.end());
            }
            mesh.triangles.assign(facets.begin(), facets.end());
            EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
            SliverCounts const counts = TakeOutSlivers(mesh, edges, pace);
            EXPECT_EQ(counts.turned, both ? 0 : 1) << order;
            EXPECT_EQ(counts.stuck, both ? 1 : 0) << order;
            EXPECT_EQ(counts.small, 0);
            EXPECT_EQ(edges.open, 3);
            EXPECT_EQ(mesh.triangles.size(), both ? 3u : 1u);
        }
    }
}

// Two slivers on one line that a turn would make no shorter: from 0 to 2 and from 0 to 3 they become one from
// 0 to 3 and one from 1 to 3. The others hold them, and the longest edge of the second one is open.
TEST(Slivers, ATurnThatMakesNothingShorterIsNotDone) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    FlatMesh mesh;
    mesh.points = {{0, 0, 0}, {2, 0, 0}, {1, 0, 0}, {3, 0, 0}, {2, 5, 0}, {1, -5, 0}, {0, -5, 0}};
    mesh.triangles = {{0, 1, 2}, {1, 0, 3}, {1, 3, 4}, {2, 1, 5}, {0, 2, 6}};
    LargeVector<Triangle> const before = mesh.triangles;
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    std::int64_t const open = edges.open;
    SliverCounts const counts = TakeOutSlivers(mesh, edges, pace);
    EXPECT_EQ(counts.turned, 0);
    EXPECT_EQ(counts.stuck, 2);
    EXPECT_EQ(edges.open, open);
    EXPECT_EQ(mesh.triangles, before);
}

// A third sliver lies at one of the four short edges of the two, and cannot be turned while they are there:
// then what is across is the facet on the other side of them.
TEST(Slivers, WhatLiesAcrossSliversBackToBackMeetsWhenTheyGo) {
    constexpr std::int32_t kM = 4;
    constexpr std::int32_t kN = 5;
    using Facets = std::vector<Triangle>;
    for (int place = 0; place < 4; ++place) {
        bool const isLeft = place % 2 == 0;
        bool const isTop = place < 2;
        std::int32_t const left = isLeft ? Divided::kLeft : kM;
        std::int32_t const right = isLeft ? kM : Divided::kRight;
        Facets const third = {isTop ? Triangle{left, right, kN} : Triangle{right, left, kN}};
        Facets const two = {{Divided::kLeft, Divided::kRight, kM}, {Divided::kRight, Divided::kLeft, kM}};
        // Those beside the third one, and those beside the two.
        Facets beside;
        Facets others;
        for (auto const& [a, b] : {std::pair{Divided::kLeft, kM}, std::pair{kM, Divided::kRight}}) {
            bool const isThere = a == left;
            if (isThere && isTop) {
                beside.push_back({a, kN, Divided::kTop});
                beside.push_back({kN, b, Divided::kTop});
            } else {
                others.push_back({a, b, Divided::kTop});
            }
            if (isThere && !isTop) {
                beside.push_back({b, kN, Divided::kBottom});
                beside.push_back({kN, a, Divided::kBottom});
            } else {
                others.push_back({b, a, Divided::kBottom});
            }
        }
        // Of several facets at an edge the first ones are neighbours.
        Facets const* const orders[4][4] = {{&third, &two, &beside, &others},
                                            {&two, &third, &beside, &others},
                                            {&beside, &third, &two, &others},
                                            {&beside, &others, &two, &third}};
        for (auto const& order : orders) {
            Divided square;
            EXPECT_EQ(square.On(4), kM);
            EXPECT_EQ(square.On(isLeft ? 2 : 7), kN);
            for (Facets const* const facets : order) {
                for (Triangle const& t : *facets) square.Add(t[0], t[1], t[2]);
            }
            SliverCounts const counts = square.TakeOut();
            EXPECT_EQ(counts.stuck, 0) << place;
            EXPECT_EQ(counts.small, 0);
            EXPECT_EQ(square.Facets(), 6u) << place;
        }
    }
}

// The second one can go when the first one is gone, on whose open edges it was.
TEST(Slivers, OnesOnTheRimGoOneAfterTheOther) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    for (std::size_t order = 0; order < 18; ++order) {
        FlatMesh mesh;
        mesh.points = {{0, 0, 0}, {10, 0, 0}, {4, 0, 0}, {2, 0, 0}, {0, 20, 0}, {5, 20, 0}, {0, 25, 0}};
        std::vector<Triangle> two = {{0, 1, 2}, {0, 2, 3}};
        std::rotate(two[0].begin(), two[0].begin() + static_cast<std::ptrdiff_t>(order % 3), two[0].end());
        std::rotate(two[1].begin(), two[1].begin() + static_cast<std::ptrdiff_t>(order / 3 % 3),
                    two[1].end());
        if (order >= 9) std::swap(two[0], two[1]);
        mesh.triangles = {two[0], two[1], {4, 5, 6}};
        EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
        SliverCounts const counts = TakeOutSlivers(mesh, edges, pace);
        EXPECT_EQ(counts.turned, 2) << order;
        EXPECT_EQ(counts.stuck + counts.small, 0) << order;
        ASSERT_EQ(mesh.triangles.size(), 1u) << order;
        EXPECT_EQ(mesh.triangles[0], (Triangle{4, 5, 6}));
        EXPECT_EQ(edges.open, 3);
    }
}

TEST(Slivers, AFacetAtOnePlaceIsOne) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    FlatMesh mesh;
    mesh.points = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 20, 0}, {5, 20, 0}, {0, 25, 0}};
    mesh.triangles = {{0, 1, 2}, {3, 4, 5}};
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    SliverCounts const counts = TakeOutSlivers(mesh, edges, pace);
    EXPECT_EQ(counts.turned, 1);
    EXPECT_EQ(counts.stuck + counts.small, 0);
    EXPECT_EQ(mesh.triangles.size(), 1u);
}

SliverCounts TakeOutOf(FlatMesh& mesh, EdgeTable& edges) {
    Progress const none;
    Watch watch(none);
    Pace const pace(watch);
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    return TakeOutSlivers(mesh, edges, pace);
}

// Whichever facet stands in front, and whichever corner: edge and facet 0 are like all others.
TEST(Slivers, InWhateverOrderFacetsComeTheSliversGo) {
    std::mt19937 random(6);
    for (int run = 0; run < 2000; ++run) {
        Divided square;
        std::int32_t const m = square.On(4);
        std::vector<Triangle> facets;
        bool const isPair = run % 2 != 0;
        bool const isThird = isPair && run % 4 == 3;
        std::int32_t const n = isThird ? square.On(2) : -1;
        facets.push_back({square.kLeft, square.kRight, m});
        facets.push_back({m, square.kRight, square.kTop});
        if (isThird) {
            facets.push_back({square.kLeft, m, n});
            facets.push_back({square.kLeft, n, square.kTop});
            facets.push_back({n, m, square.kTop});
        } else {
            facets.push_back({square.kLeft, m, square.kTop});
        }
        if (isPair) {
            facets.push_back({square.kRight, square.kLeft, m});
            facets.push_back({square.kLeft, square.kBottom, m});
            facets.push_back({m, square.kBottom, square.kRight});
        } else {
            facets.push_back({square.kLeft, square.kBottom, square.kRight});
        }
        std::shuffle(facets.begin(), facets.end(), random);
        for (Triangle& t : facets) {
            std::rotate(t.begin(), t.begin() + static_cast<std::ptrdiff_t>(random() % 3), t.end());
            square.Add(t[0], t[1], t[2]);
        }
        SliverCounts const counts = square.TakeOut();
        ASSERT_EQ(counts.stuck + counts.small, 0) << run;
        ASSERT_EQ(square.Facets(), isThird ? 6u : 4u) << run;
        if (!isPair) {
            ASSERT_EQ(counts.turned, 1) << run;
        }
    }
}

// Two facets whose height over a side of 1 is the limit of the doubled area, or the next number above it.
TEST(Slivers, AFacetWithTheLeastDoubledAreaIsNoneAndOneWithMoreStays) {
    for (double const height : {kCollinear, std::nextafter(kCollinear, 1.0)}) {
        bool const isSliver = height == kCollinear;
        FlatMesh mesh;
        EdgeTable edges;
        mesh.points = {{0, 0, 0}, {1, 0, 0}, {0.5, height, 0}};
        mesh.triangles = {{0, 1, 2}};
        SliverCounts counts = TakeOutOf(mesh, edges);
        EXPECT_EQ(counts.turned, isSliver ? 1 : 0);
        EXPECT_EQ(counts.stuck + counts.small, 0);
        EXPECT_EQ(mesh.triangles.size(), isSliver ? 0u : 1u);
        // With two neighbours it cannot go, and counts where it is one.
        mesh.points.push_back({0.5, 5, 0});
        mesh.triangles = {{0, 1, 2}, {0, 2, 3}, {2, 1, 3}};
        counts = TakeOutOf(mesh, edges);
        EXPECT_EQ(counts.turned, 0);
        EXPECT_EQ(counts.stuck, isSliver ? 1 : 0);
        EXPECT_EQ(counts.small, 0);
        EXPECT_EQ(mesh.triangles.size(), 3u);
        // One that is as high as wide is small, and no sliver.
        double const side = 1.0 / (1 << 17);
        mesh.points = {{0, 0, 0}, {side, 0, 0}, {0, height / side, 0}};
        mesh.triangles = {{0, 1, 2}};
        counts = TakeOutOf(mesh, edges);
        EXPECT_EQ(counts.turned + counts.stuck, 0);
        EXPECT_EQ(counts.small, isSliver ? 1 : 0);
        EXPECT_EQ(mesh.triangles.size(), 1u);
    }
}

// A small facet is a sliver up to a height of a hundred thousandth of its longest edge, or of a few roundings
// of its coordinates; a higher one is small.
TEST(Slivers, AFacetOfNextToNoAreaIsASliverUpToAHeight) {
    auto const isSliver = [](double right, double width, double height) {
        FlatMesh mesh;
        EdgeTable edges;
        mesh.points = {{right - width, 0, 0}, {right, 0, 0}, {right - width / 2, height, 0}};
        mesh.triangles = {{0, 1, 2}};
        SliverCounts const counts = TakeOutOf(mesh, edges);
        EXPECT_EQ(counts.stuck, 0);
        EXPECT_EQ(counts.turned + counts.small, 1);
        EXPECT_EQ(mesh.triangles.size(), counts.small == 1 ? 1u : 0u);
        return counts.turned == 1;
    };
    double const width = 1.0 / 512;
    EXPECT_TRUE(isSliver(0, width, 1e-5 * width));
    EXPECT_FALSE(isSliver(0, width, std::nextafter(1e-5 * width, 1.0)));
    // Four roundings of floats up to 8 are half of 2^-17.
    double const rounding = 8.0 * 4.0 / (1 << 23);
    EXPECT_TRUE(isSliver(8, 1.0 / (1 << 16), rounding));
    EXPECT_FALSE(isSliver(8, 1.0 / (1 << 16), std::nextafter(rounding, 1.0)));
}

// A sliver that cannot be turned, with an edge of no length: as short as a millionth of its longest edge, or
// as a few roundings of its coordinates.
TEST(Slivers, CornersAreJoinedUpToTheLengthThatIsNone) {
    auto const left = [](double at, double shortest) {
        FlatMesh mesh;
        EdgeTable edges;
        mesh.points = {{at, 0, 0}, {at + 10, 0, 0}, {at + shortest, 0, 0}, {at + 5, 5, 0}};
        mesh.triangles = {{0, 1, 2}, {0, 2, 3}, {2, 1, 3}};
        SliverCounts const counts = TakeOutOf(mesh, edges);
        bool const isJoined = counts.stuck == 0;
        EXPECT_EQ(counts.stuck, isJoined ? 0 : 1);
        EXPECT_EQ(counts.turned, isJoined ? 2 : 0) << "two facets lose a corner";
        EXPECT_EQ(edges.open, 3);
        if (isJoined) {
            EXPECT_EQ(mesh.triangles[0], (Triangle{0, 1, 3}));
        }
        return mesh.triangles.size();
    };
    EXPECT_EQ(left(0, 1e-6 * 10.0), 1u);
    EXPECT_EQ(left(0, std::nextafter(1e-6 * 10.0, 1.0)), 3u);
    // Four roundings of floats up to 1014.
    double const rounding = 1014.0 * 4.0 / (1 << 23);
    EXPECT_EQ(left(1004, rounding), 1u);
    EXPECT_EQ(left(1004, rounding + 1.0 / (1ll << 40)), 3u);
}

// What stands somewhere else stays as it was, though corners are joined: a wall without thickness is two
// facets back to back, and a facet that has gone before has no corners any more.
TEST(Slivers, JoiningCornersLeavesOtherFacetsAsTheyAre) {
    for (bool const hasGone : {false, true}) {
        FlatMesh mesh;
        EdgeTable edges;
        mesh.points = {{0, 0, 0},  {1e-12, 0, 0}, {10, 0, 0},  {0, 10, 0},  {-10, 0, 0}, {0, -10, 0},
                       {50, 0, 0}, {60, 0, 0},    {50, 10, 0}, {80, 10, 0}, {81, 10, 0}, {83, 10, 0}};
        mesh.triangles = {{6, 7, 8}, {6, 8, 7}, {0, 3, 4}, {0, 4, 5},
                          {1, 5, 2}, {1, 2, 3}, {0, 1, 3}, {1, 0, 5}};
        if (hasGone) mesh.triangles.insert(mesh.triangles.begin() + 3, Triangle{9, 10, 11});
        SliverCounts const counts = TakeOutOf(mesh, edges);
        EXPECT_EQ(counts.turned, hasGone ? 3 : 2);
        EXPECT_EQ(counts.stuck + counts.small, 0);
        ASSERT_EQ(mesh.triangles.size(), 6u);
        std::vector<Triangle> const expected = {{6, 7, 8}, {6, 8, 7}, {0, 3, 4},
                                                {0, 4, 5}, {0, 5, 2}, {0, 2, 3}};
        EXPECT_EQ(std::vector<Triangle>(mesh.triangles.begin(), mesh.triangles.end()), expected);
        EXPECT_EQ(edges.open, 4);
    }
}

// Whichever of its edges has no length: other facets at the corner that goes get the one that stays, which is
// the one with the lower number.
TEST(Slivers, OfTheCornersThatAreJoinedTheFirstStays) {
    for (bool const isLast : {false, true}) {
        for (std::ptrdiff_t turn = 0; turn < 3; ++turn) {
            FlatMesh mesh;
            EdgeTable edges;
            // Of 0, 1 and 2 the last two are as good as one, or the first two.
            mesh.points = {{isLast ? -10.0 : 1e-12, 0, 0},
                           {0, 0, 0},
                           {isLast ? 1e-12 : 10.0, 0, 0},
                           {0, 5, 0},
                           {0, -7, 3},
                           {1, -7, 3},
                           {2, -7, 3},
                           {3, -7, 3}};
            Triangle sliver = isLast ? Triangle{0, 2, 1} : Triangle{1, 2, 0};
            std::rotate(sliver.begin(), sliver.begin() + turn, sliver.end());
            Triangle const onFirst = isLast ? Triangle{0, 1, 3} : Triangle{1, 0, 3};
            Triangle const onSecond = isLast ? Triangle{1, 2, 3} : Triangle{0, 2, 3};
            mesh.triangles = {onFirst, sliver, onSecond, {0, 4, 5}, {1, 5, 6}, {2, 6, 7}};
            SliverCounts const counts = TakeOutOf(mesh, edges);
            EXPECT_EQ(counts.turned, 2);
            EXPECT_EQ(counts.stuck, 0);
            std::vector<Triangle> const expected =
                isLast ? std::vector<Triangle>{{0, 1, 3}, {0, 4, 5}, {1, 5, 6}, {1, 6, 7}}
                       : std::vector<Triangle>{{0, 2, 3}, {0, 4, 5}, {0, 5, 6}, {2, 6, 7}};
            EXPECT_EQ(std::vector<Triangle>(mesh.triangles.begin(), mesh.triangles.end()), expected)
                << isLast << ' ' << turn;
        }
    }
}

// A facet has no area once its corner is joined with another: the next round takes it out.
TEST(Slivers, WhatJoiningCornersFlattensGoesToo) {
    FlatMesh mesh;
    EdgeTable edges;
    mesh.points = {{0, 0, 0}, {10, 0, 0}, {9e-6, 0, 0}, {5, 5, 0}, {0, -2, 0}, {0, -4, 0}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}, {2, 1, 3}, {2, 4, 5}};
    SliverCounts const counts = TakeOutOf(mesh, edges);
    EXPECT_EQ(counts.turned, 3);
    EXPECT_EQ(counts.stuck + counts.small, 0);
    ASSERT_EQ(mesh.triangles.size(), 1u);
    EXPECT_EQ(mesh.triangles[0], (Triangle{0, 1, 3}));
    EXPECT_EQ(edges.open, 3);
}

}  // namespace
}  // namespace varnet
