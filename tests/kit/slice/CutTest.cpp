#include "slice/Cut.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace varnet {
namespace {

// The cut at z = 0.5 of facets that share an edge from z = 0 to z = 1, at the origin or elsewhere: each has
// its third corner at z = 0, and is cut from the edge to half way there.
class Sheaf {
public:
    explicit Sheaf(Point2 const& at = {0, 0}) : m_Points{{at.x, at.y, 0}, {at.x, at.y, 1}} {}
    // The segment begins at the edge: it has the solid on its left.
    void Leaving(Point2 const& far) { Add(far, true); }
    // It ends there.
    void Arriving(Point2 const& far) { Add(far, false); }
    // Facets on the corners of the last one, that way round or the other.
    void AgainLeaving() { AddFacet(static_cast<std::int32_t>(m_Points.size()) - 1, true); }
    void AgainArriving() { AddFacet(static_cast<std::int32_t>(m_Points.size()) - 1, false); }

    std::vector<std::vector<Point2>> Cut() const {
        Pulse pulse;
        FacetIndex const index({m_Points, m_Triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
        Paths paths;
        CutSweep(index).Cut(1, paths, pulse);
        std::vector<std::vector<Point2>> found;
        for (std::size_t i = 0; i < paths.Count(); ++i) {
            EXPECT_EQ(paths.closed[i], 0);
            found.emplace_back(paths.At(i).begin(), paths.At(i).end());
        }
        return found;
    }

private:
    void Add(Point2 const& far, bool leaves) {
        auto const corner = static_cast<std::int32_t>(m_Points.size());
        m_Points.push_back({2.0 * far.x - m_Points[0].x, 2.0 * far.y - m_Points[0].y, 0.0});
        AddFacet(corner, leaves);
    }
    void AddFacet(std::int32_t corner, bool leaves) {
        m_Triangles.push_back(leaves ? Triangle{0, corner, 1} : Triangle{0, 1, corner});
    }
    std::vector<Point3> m_Points;
    std::vector<Triangle> m_Triangles;
};

using Found = std::vector<std::vector<Point2>>;

TEST(CutSweep, TwoFacetsOfAnEdgeAreJoinedThere) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Arriving({0, 1});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {1, 0}}}));
}

// Counter-clockwise from a segment that leaves to one that arrives lies the solid.
TEST(CutSweep, FourFacetsOfAnEdgeAreJoinedAroundTheSolidBetweenThem) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Arriving({0, 1});
    sheaf.Leaving({-1, 0});
    sheaf.Arriving({0, -1});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {1, 0}}, {{0, -1}, {0, 0}, {-1, 0}}}));
}

TEST(CutSweep, FacetsOfAnEdgeGoAroundItWhereverItStands) {
    for (Point2 const& at : {Point2{3, 7}, Point2{-7, 3}, Point2{-3, -7}, Point2{7, -3}}) {
        Sheaf sheaf(at);
        Point2 const above{at.x, at.y + 1};
        Point2 const left{at.x - 1, at.y};
        Point2 const below{at.x, at.y - 1};
        Point2 const right{at.x + 1, at.y};
        sheaf.Leaving(above);
        sheaf.Arriving(left);
        sheaf.Leaving(below);
        sheaf.Arriving(right);
        EXPECT_EQ(sheaf.Cut(), (Found{{left, at, above}, {right, at, below}})) << at.x;
    }
}

// Facets on each other leave the edge in one direction: they count in the order of the mesh. The next one to
// arrive is joined with the last one that has left.
TEST(CutSweep, SegmentsOfOneDirectionAreTakenInTheOrderOfTheMesh) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Leaving({2, 0});
    sheaf.Arriving({0, 1});
    sheaf.Arriving({-1, 0});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {2, 0}}, {{-1, 0}, {0, 0}, {1, 0}}}));
}

// More than any sorting of a few leaves in place by chance.
TEST(CutSweep, ManySegmentsOfOneDirectionAreTakenInTheOrderOfTheMesh) {
    for (int const count : {3, 10, 40}) {
        Sheaf sheaf;
        Found expected;
        for (int i = 1; i <= count; ++i) sheaf.Leaving({static_cast<double>(i), 0});
        for (int i = 1; i <= count; ++i) {
            double const angle = std::numbers::pi * i / (count + 1);
            Point2 const far{std::cos(angle), std::sin(angle)};
            sheaf.Arriving(far);
            expected.push_back({far, {0, 0}, {static_cast<double>(count + 1 - i), 0}});
        }
        EXPECT_EQ(sheaf.Cut(), expected) << count;
    }
}

// Of facets on the same corners one stays where more face one way than the other, and none where as many do.
TEST(CutSweep, FacetsOnTheSameCornersCountByWhatIsLeftOfThem) {
    Found const expected{{{0, 1}, {0, 0}, {1, 0}}};
    Sheaf none;
    none.Leaving({1, 0});
    none.Leaving({-1, 0});
    none.AgainArriving();
    none.Arriving({0, 1});
    EXPECT_EQ(none.Cut(), expected);
    Sheaf leaving;
    leaving.Leaving({1, 0});
    leaving.AgainArriving();
    leaving.AgainLeaving();
    leaving.Arriving({0, 1});
    EXPECT_EQ(leaving.Cut(), expected);
    Sheaf arriving;
    arriving.Leaving({1, 0});
    arriving.Arriving({0, 1});
    arriving.AgainArriving();
    arriving.AgainArriving();
    EXPECT_EQ(arriving.Cut(), expected);
    Sheaf many;
    many.Arriving({0, 1});
    many.AgainLeaving();
    many.AgainLeaving();
    many.AgainLeaving();
    many.Arriving({-1, 0});
    EXPECT_EQ(many.Cut(), (Found{{{-1, 0}, {0, 0}, {0, 1}}}));
}

// Where each of them is needed to go on, all stay: no path ends where they begin, and none turns back where
// they end.
TEST(CutSweep, FacetsOnTheSameCornersAllCountWhereThatLeavesNoEndAtTheirEdge) {
    for (int const copies : {2, 3, 7}) {
        Sheaf leaving;
        Sheaf arriving;
        leaving.Leaving({1, 0});
        arriving.Arriving({1, 0});
        for (int i = 1; i < copies; ++i) leaving.AgainLeaving();
        for (int i = 1; i < copies; ++i) arriving.AgainArriving();
        // Two that make up for each other change nothing.
        leaving.AgainArriving();
        leaving.AgainLeaving();
        arriving.AgainLeaving();
        arriving.AgainArriving();
        Found in;
        Found out;
        for (int i = 1; i <= copies; ++i) {
            leaving.Arriving({-1, static_cast<double>(i)});
            arriving.Leaving({-1, static_cast<double>(i)});
            in.push_back({{-1, static_cast<double>(i)}, {0, 0}, {1, 0}});
            out.push_back({{1, 0}, {0, 0}, {-1, static_cast<double>(i)}});
        }
        Found found = leaving.Cut();
        std::sort(found.begin(), found.end(),
                  [](auto const& a, auto const& b) { return a.front().y < b.front().y; });
        EXPECT_EQ(found, in) << copies;
        found = arriving.Cut();
        std::sort(found.begin(), found.end(),
                  [](auto const& a, auto const& b) { return a.back().y < b.back().y; });
        EXPECT_EQ(found, out) << copies;
    }
}

// Upright walls over ways in the plan, which have the solid on their left, from z = 0 to z = 1.
struct Walls {
    explicit Walls(std::vector<Point2> const& plan) {
        for (Point2 const& p : plan) {
            points.push_back({p.x, p.y, 0});
            points.push_back({p.x, p.y, 1});
        }
    }
    void Round(std::vector<int> const& way) {
        for (std::size_t i = 0; i < way.size(); ++i) {
            std::int32_t const a = 2 * way[i];
            std::int32_t const b = 2 * way[(i + 1) % way.size()];
            triangles.push_back({a, b, b + 1});
            triangles.push_back({a, b + 1, a + 1});
        }
    }
    // The area of the cut half way up; no path is to be open.
    double Area() const {
        Pulse pulse;
        FacetIndex const index({points, triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
        Paths paths;
        CutSweep(index).Cut(1, paths, pulse);
        double area = 0.0;
        for (std::size_t i = 0; i < paths.Count(); ++i) {
            EXPECT_EQ(paths.closed[i], 1);
            area += SignedArea(paths.At(i));
        }
        return area;
    }
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
};

// Boxes of 10, 9, 8 and so on by 10, whose left wall, of three parts, is the same.
TEST(CutSweep, SolidsInEachOtherMayHaveAWallInCommon) {
    std::mt19937 random(3);
    for (int const boxes : {1, 2, 3, 5}) {
        std::vector<Point2> plan{{0, 10}, {0, 7}, {0, 4}, {0, 0}};
        double area = 0.0;
        for (int i = 0; i < boxes; ++i) {
            plan.push_back({10.0 - i, 0});
            plan.push_back({10.0 - i, 10});
            area += 10.0 * (10.0 - i);
        }
        Walls walls(plan);
        for (int i = 0; i < boxes; ++i) walls.Round({0, 1, 2, 3, 4 + 2 * i, 5 + 2 * i});
        for (int order = 0; order < 20; ++order) {
            std::shuffle(walls.triangles.begin(), walls.triangles.end(), random);
            EXPECT_DOUBLE_EQ(walls.Area(), area) << boxes;
        }
        // A mesh that stands there twice as a whole counts once where nothing asks for more.
        std::vector<Triangle> const once = walls.triangles;
        walls.triangles.insert(walls.triangles.end(), once.begin(), once.end());
        EXPECT_DOUBLE_EQ(walls.Area(), boxes == 1 ? area : 2.0 * area) << boxes;
    }
}

// Whatever goes round and comes back, along the walls of others or against them, leaves no path open.
TEST(CutSweep, WallsThatAllGoRoundLeaveNoPathOpen) {
    std::mt19937 random(4);
    std::vector<Point2> const plan{{0, 0}, {9, 1}, {12, 8}, {5, 11}, {-3, 6}, {4, 5}};
    for (int round = 0; round < 2000; ++round) {
        Walls walls(plan);
        for (auto ways = 1 + random() % 6; ways > 0; --ways) {
            std::vector<int> way{0, 1, 2, 3, 4, 5};
            std::shuffle(way.begin(), way.end(), random);
            way.resize(3 + random() % 4);
            walls.Round(way);
        }
        std::shuffle(walls.triangles.begin(), walls.triangles.end(), random);
        walls.Area();
        ASSERT_FALSE(HasFailure()) << round;
    }
}

// Those that find none to end at are joined in their order around the edge, from the left side of it on.
TEST(CutSweep, SegmentsOfOneKindThatAreLeftOverAreJoinedTwoByTwo) {
    Sheaf three;
    three.Leaving({1, 0});
    three.Leaving({0, 1});
    three.Leaving({-0.5, -1});
    EXPECT_EQ(three.Cut(), (Found{{{0, 0}, {0, 1}}, {{1, 0}, {0, 0}, {-0.5, -1}}}));
    Sheaf four;
    four.Leaving({1, 0});
    four.Arriving({1, 1});
    four.Leaving({0, 1});
    four.Leaving({-1, 1});
    EXPECT_EQ(four.Cut(), (Found{{{1, 1}, {0, 0}, {1, 0}}, {{0, 1}, {0, 0}, {-1, 1}}}));
}

// Both segments leave the edge they share, so that the path runs against one of them.
TEST(CutSweep, APathWhoseSegmentsContradictEachOtherRunsAsTheLongerPartOfItDoes) {
    auto const cutOf = [](double first, double second) {
        Sheaf sheaf;
        sheaf.Leaving({first, 0});
        sheaf.Leaving({0, second});
        return sheaf.Cut();
    };
    EXPECT_EQ(cutOf(1, 2), (Found{{{1, 0}, {0, 0}, {0, 2}}}));
    EXPECT_EQ(cutOf(2, 1), (Found{{{0, 1}, {0, 0}, {2, 0}}}));
    EXPECT_EQ(cutOf(1, 1), (Found{{{1, 0}, {0, 0}, {0, 1}}})) << "as it was found, if there is no longer one";
    auto const arrivingAt = [](double first, double second) {
        Sheaf sheaf;
        sheaf.Arriving({first, 0});
        sheaf.Arriving({0, second});
        return sheaf.Cut();
    };
    EXPECT_EQ(arrivingAt(2, 1), (Found{{{2, 0}, {0, 0}, {0, 1}}}));
    EXPECT_EQ(arrivingAt(1, 2), (Found{{{0, 2}, {0, 0}, {1, 0}}}));
    EXPECT_EQ(arrivingAt(1, 1), (Found{{{1, 0}, {0, 0}, {0, 1}}}));
}

// A tetrahedron has three facets at half its height: its cut has half the sides of the floor.
TEST(CutSweep, ATriangleIsAContour) {
    std::vector<Point3> const points = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 1}};
    for (bool const isTurned : {false, true}) {
        std::vector<Triangle> triangles = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
        if (isTurned) {
            for (Triangle& t : triangles) std::swap(t[1], t[2]);
        }
        Pulse pulse;
        FacetIndex const index({points, triangles, isTurned, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
        Paths paths;
        CutSweep(index).Cut(1, paths, pulse);
        ASSERT_EQ(paths.Count(), 1u);
        EXPECT_EQ(paths.closed[0], 1);
        std::vector<Point2> path(paths.At(0).begin(), paths.At(0).end());
        std::rotate(path.begin(), std::find(path.begin(), path.end(), Point2{0, 0}), path.end());
        EXPECT_EQ(path, (std::vector<Point2>{{0, 0}, {2, 0}, {0, 2}}));
    }
}

// The walls between an outline at z = 0 and the same at z = 1, cut half way.
Found CutOfWalls(std::vector<Point2> const& outline) {
    std::vector<Point3> points;
    for (double const z : {0.0, 1.0}) {
        for (Point2 const& p : outline) points.push_back({p.x, p.y, z});
    }
    std::vector<Triangle> triangles;
    auto const n = static_cast<std::int32_t>(outline.size());
    for (std::int32_t i = 0; i < n; ++i) {
        std::int32_t const next = (i + 1) % n;
        triangles.push_back({i, next, n + next});
        triangles.push_back({i, n + next, n + i});
    }
    Pulse pulse;
    FacetIndex const index({points, triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
    Paths paths;
    CutSweep(index).Cut(1, paths, pulse);
    Found found;
    for (std::size_t i = 0; i < paths.Count(); ++i) {
        EXPECT_EQ(paths.closed[i], 1);
        found.emplace_back(paths.At(i).begin(), paths.At(i).end());
    }
    return found;
}

// A path of 2 mm, four square millimetres: the share of that is 4e-13, and the triangle half as large as
// high.
TEST(CutSweep, APathThatEnclosesLessThanATenBillionthOfAThousandthOfItsSquareIsNone) {
    EXPECT_EQ(CutOfWalls({{0, 0}, {1, 0}, {0.5, 9e-13}}).size(), 1u);
    EXPECT_EQ(CutOfWalls({{0, 0}, {1, 0}, {0.5, 7e-13}}).size(), 0u);
    EXPECT_EQ(CutOfWalls({{0, 0}, {1, 0}, {0.5, -9e-13}}).size(), 1u);
    EXPECT_EQ(CutOfWalls({{0, 0}, {1, 0}}).size(), 0u);
    // Points at one place are one.
    Found const found = CutOfWalls({{0, 0}, {2, 0}, {2, 0}, {2, 2}, {0, 0}});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].size(), 6u) << "each wall is cut at its corner and on its diagonal";
}

// A square that the cut passes at its corners, which are as high as the cut: facets below that have but one
// of them are cut in a point. Two such facets are at one corner, and one at each other.
TEST(CutSweep, WhatIsCutInAPointOfAContourAddsNoneToIt) {
    std::vector<Point2> const square = {{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    for (std::size_t turn = 0; turn < 9; ++turn) {
        std::vector<Point3> points;
        std::vector<Triangle> triangles;
        for (int copy = 0; copy < 2; ++copy) {
            auto const first = static_cast<std::int32_t>(points.size());
            for (Point2 const& p : square) points.push_back({p.x + 10.0 * copy, p.y, 0.5});
            for (Point2 const& p : square) points.push_back({p.x + 10.0 * copy, p.y, 0.0});
            points.push_back({2 + 10.0 * copy, 0, 0});
            std::vector<Triangle> ring;
            for (std::int32_t i = 0; i < 4; ++i) {
                std::int32_t const k = (i + 1) % 4;
                ring.push_back({first + 4 + i, first + k, first + i});
                if (i == 0) {
                    ring.push_back({first + 4, first + 8, first + 1});
                    ring.push_back({first + 8, first + 5, first + 1});
                } else {
                    ring.push_back({first + 4 + i, first + 4 + k, first + k});
                }
            }
            std::rotate(ring.begin(), ring.begin() + static_cast<std::ptrdiff_t>(turn), ring.end());
            triangles.insert(triangles.end(), ring.begin(), ring.end());
        }
        Pulse pulse;
        FacetIndex const index({points, triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
        Paths paths;
        CutSweep(index).Cut(1, paths, pulse);
        ASSERT_EQ(paths.Count(), 2u);
        for (std::size_t copy = 0; copy < 2; ++copy) {
            EXPECT_NE(paths.closed[copy], 0);
            std::vector<Point2> path(paths.At(copy).begin(), paths.At(copy).end());
            ASSERT_EQ(path.size(), 4u) << turn;
            auto const low = std::find(path.begin(), path.end(), Point2{10.0 * static_cast<double>(copy), 0});
            ASSERT_NE(low, path.end());
            std::rotate(path.begin(), low, path.end());
            for (std::size_t i = 0; i < 4; ++i) {
                EXPECT_EQ(path[i].x, square[i].x + 10.0 * static_cast<double>(copy)) << turn;
                EXPECT_EQ(path[i].y, square[i].y) << turn;
            }
        }
    }
}

// To the bit: what is added up on the way from the lower vertex would be another number.
TEST(CutSweep, AnEdgeThatEndsAtTheCutIsCutInItsUpperVertex) {
    double const tiny = 1e-20;
    std::vector<Point3> const points = {{0.3, 0.7, 0}, {tiny, 3 * tiny, 0.5}, {5, tiny, 0.5}};
    ASSERT_NE(points[0].x + (points[1].x - points[0].x), points[1].x);
    std::vector<Triangle> const triangles = {{0, 1, 2}};
    Pulse pulse;
    FacetIndex const index({points, triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
    Paths paths;
    CutSweep(index).Cut(1, paths, pulse);
    ASSERT_EQ(paths.Count(), 1u);
    std::vector<Point2> path(paths.At(0).begin(), paths.At(0).end());
    if (path.front().x > 1) std::reverse(path.begin(), path.end());
    EXPECT_EQ(path, (std::vector<Point2>{{tiny, 3 * tiny}, {5, tiny}}));
}

// Tetrahedra in any order and at any height, whose facets face outward. Their edges rise by 4, 8 or nothing,
// so that places half way between whole heights are exact.
struct Heap {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;

    explicit Heap(int count) {
        std::mt19937 random(17);
        std::uniform_int_distribution<int> place(-500, 500);
        std::uniform_int_distribution<int> height(0, 88);
        while (static_cast<int>(triangles.size()) < 4 * count) {
            auto const first = static_cast<std::int32_t>(points.size());
            double const z = height(random);
            std::vector<Point3> corners;
            for (double const rise : {0.0, 4.0, 8.0, 8.0}) {
                corners.push_back({1.0 * place(random), 1.0 * place(random), z + rise});
            }
            std::shuffle(corners.begin(), corners.end(), random);
            auto const by = [&](std::size_t i) {
                return Point3{corners[i].x - corners[0].x, corners[i].y - corners[0].y,
                              corners[i].z - corners[0].z};
            };
            Point3 const a = by(1);
            Point3 const b = by(2);
            Point3 const c = by(3);
            double const volume =
                a.x * (b.y * c.z - b.z * c.y) + a.y * (b.z * c.x - b.x * c.z) + a.z * (b.x * c.y - b.y * c.x);
            if (volume == 0.0) continue;
            if (volume < 0.0) std::swap(corners[1], corners[2]);
            points.insert(points.end(), corners.begin(), corners.end());
            for (Triangle t : {Triangle{0, 2, 1}, Triangle{0, 1, 3}, Triangle{1, 2, 3}, Triangle{0, 3, 2}}) {
                std::rotate(t.begin(), t.begin() + static_cast<std::ptrdiff_t>(random() % 3), t.end());
                triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
            }
        }
        std::shuffle(triangles.begin(), triangles.end(), random);
    }

    using Segments = std::vector<std::array<double, 4>>;
    // Round a facet, a segment begins at the side that goes down and ends at the one that goes up.
    Segments SegmentsAt(double z) const {
        Segments segments;
        for (Triangle const& t : triangles) {
            std::array<double, 4> segment{};
            int ends = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                Point3 const& from = points[static_cast<std::size_t>(t[k])];
                Point3 const& to = points[static_cast<std::size_t>(t[(k + 1) % 3])];
                if ((from.z > z) == (to.z > z)) continue;
                double const share = (z - from.z) / (to.z - from.z);
                std::size_t const place = from.z > z ? 0 : 2;
                segment[place] = from.x + share * (to.x - from.x);
                segment[place + 1] = from.y + share * (to.y - from.y);
                ++ends;
            }
            if (ends == 2) segments.push_back(segment);
        }
        std::sort(segments.begin(), segments.end());
        return segments;
    }
};

// One sweep goes from layer to layer, one back, and one to and fro: each finds what one that is new finds,
// and that is a side of a contour for each facet.
TEST(CutSweep, EveryLayerIsTheSameByWhateverWayASweepComesThere) {
    Heap const heap(600);
    constexpr int kLayers = 96;
    Pulse pulse;
    FacetIndex const index({heap.points, heap.triangles, false, false}, {0.0, 1.0, kLayers, 96.0}, true, 1,
                           pulse);
    auto const cutBy = [&](CutSweep& sweep, int number) {
        Paths paths;
        sweep.Cut(number, paths, pulse);
        return paths;
    };
    std::vector<Paths> layers;
    for (int number = 1; number <= kLayers; ++number) {
        CutSweep fresh(index);
        Paths const paths = cutBy(fresh, number);
        Heap::Segments sides;
        for (std::size_t i = 0; i < paths.Count(); ++i) {
            EXPECT_EQ(paths.closed[i], 1);
            std::span<Point2 const> const path = paths.At(i);
            for (std::size_t k = 0; k < path.size(); ++k) {
                Point2 const& next = path[(k + 1) % path.size()];
                sides.push_back({path[k].x, path[k].y, next.x, next.y});
            }
        }
        std::sort(sides.begin(), sides.end());
        ASSERT_EQ(sides, heap.SegmentsAt(number - 0.5)) << number;
        layers.push_back(paths);
    }
    std::vector<std::vector<int>> ways(4);
    std::mt19937 random(4);
    for (int number = 1; number <= kLayers; ++number) {
        ways[0].push_back(number);
        ways[1].push_back(kLayers + 1 - number);
        ways[2].push_back(1 + static_cast<int>(random() % kLayers));
        if (number % 7 == 0) ways[3].insert(ways[3].end(), {number, number});
    }
    for (std::vector<int> const& way : ways) {
        CutSweep sweep(index);
        for (int const number : way) {
            Paths const paths = cutBy(sweep, number);
            Paths const& expected = layers[static_cast<std::size_t>(number - 1)];
            ASSERT_EQ(paths.points, expected.points) << number;
            ASSERT_EQ(paths.offsets, expected.offsets) << number;
            ASSERT_EQ(paths.closed, expected.closed) << number;
        }
    }
}

}  // namespace
}  // namespace varnet
