// Which shells lie in which, for shells made by hand: a shell is any facets with a volume that is given.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "part/Bodies.h"

namespace varnet {
namespace {

struct Solid {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    double volume = 0.0;
    bool isOpen = false;
};

using Enclosing = std::vector<std::int32_t>;

Enclosing Find(std::vector<Solid> const& solids) {
    std::vector<Shell> shells;
    for (Solid const& solid : solids)
        shells.push_back({solid.points, solid.triangles, solid.volume, solid.isOpen});
    return FindEnclosing(shells);
}

Solid Cube(Point3 const& min, double side) {
    Solid solid;
    for (int i = 0; i < 8; ++i) {
        solid.points.push_back(
            {min.x + (i & 1 ? side : 0.0), min.y + (i & 2 ? side : 0.0), min.z + (i & 4 ? side : 0.0)});
    }
    solid.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                       {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    solid.volume = side * side * side;
    return solid;
}

Solid Turned(Solid solid) {
    for (Triangle& t : solid.triangles) std::swap(t[1], t[2]);
    solid.volume = -solid.volume;
    return solid;
}

// Together, with the volume of the first.
Solid Joined(Solid first, Solid const& other) {
    auto const offset = static_cast<std::int32_t>(first.points.size());
    first.points.insert(first.points.end(), other.points.begin(), other.points.end());
    for (Triangle const& t : other.triangles)
        first.triangles.push_back({t[0] + offset, t[1] + offset, t[2] + offset});
    return first;
}

// A tetrahedron inside out; the middle of its largest facet, the lower one, is the point, to the bit where
// the coordinates are small whole numbers.
Solid Asking(Point3 const& p) {
    Solid solid;
    solid.points = {
        {p.x - 3, p.y - 3, p.z}, {p.x + 3, p.y - 3, p.z}, {p.x, p.y + 6, p.z}, {p.x, p.y, p.z + 1}};
    solid.triangles = {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}};
    solid.volume = -9.0;
    return solid;
}

// Corners at a distance from the middle on each axis: seen from above, edges run from the middle along x and
// y.
Solid Octahedron(Point3 const& middle, double radius) {
    Solid solid;
    for (double const d : {radius, -radius}) {
        solid.points.push_back({middle.x + d, middle.y, middle.z});
        solid.points.push_back({middle.x, middle.y + d, middle.z});
        solid.points.push_back({middle.x, middle.y, middle.z + d});
    }
    solid.triangles = {{0, 1, 2}, {1, 3, 2}, {3, 4, 2}, {4, 0, 2},
                       {1, 0, 5}, {3, 1, 5}, {4, 3, 5}, {0, 4, 5}};
    solid.volume = 4.0 / 3.0 * radius * radius * radius;
    return solid;
}

TEST(FindEnclosing, ACavityIsInTheCubeAroundItAndInNoOther) {
    Solid const cavity = Asking({0, 0, 0});
    EXPECT_EQ(Find({Cube({-10, -10, -10}, 20), cavity}), (Enclosing{-1, 0}));
    EXPECT_EQ(Find({cavity, Cube({-10, -10, -10}, 20)}), (Enclosing{1, -1}));
    // Below, above and beside it.
    for (Point3 const& min : {Point3{-10, -10, -30}, Point3{-10, -10, 10}, Point3{10, -10, -10},
                              Point3{-30, -10, -10}, Point3{-10, 10, -10}, Point3{-10, -30, -10}}) {
        EXPECT_EQ(Find({Cube(min, 20), cavity}), (Enclosing{-1, -1}));
    }
    EXPECT_EQ(Find({}), Enclosing());
    EXPECT_EQ(Find({Cube({0, 0, 0}, 1)}), Enclosing{-1});
    EXPECT_EQ(Find({cavity}), Enclosing{-1});
}

TEST(FindEnclosing, OfSeveralTheSmallestIsTakenAndOfEquallyLargeTheFirst) {
    Solid const cavity = Asking({0, 0, 0});
    Solid const large = Cube({-20, -20, -20}, 40);
    Solid const small = Cube({-10, -10, -10}, 20);
    EXPECT_EQ(Find({large, small, cavity}), (Enclosing{-1, -1, 1}));
    EXPECT_EQ(Find({small, large, cavity}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({small, small, cavity}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({large, cavity, small, small}), (Enclosing{-1, 2, -1, -1}));
}

TEST(FindEnclosing, AShellAboveACavityTakesNothingOverFromTheOneAroundIt) {
    Solid const cavity = Asking({0, 0, 0});
    EXPECT_EQ(Find({Cube({-20, -20, -20}, 40), Cube({-2, -2, 8}, 4), cavity}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({Cube({-2, -2, 8}, 4), cavity}), (Enclosing{-1, -1}));
}

TEST(FindEnclosing, ShellsWithoutVolumeNeitherAskNorEnclose) {
    Solid flat = Cube({-10, -10, -10}, 20);
    flat.volume = 0.0;
    EXPECT_EQ(Find({flat, Asking({0, 0, 0})}), (Enclosing{-1, -1}));
    Solid asking = Asking({0, 0, 0});
    asking.volume = 0.0;
    EXPECT_EQ(Find({Cube({-10, -10, -10}, 20), asking}), (Enclosing{-1, -1}));
}

TEST(FindEnclosing, WhereTheShellIsTurnedThereIsNothingAround) {
    Solid const part = Joined(Cube({100, 100, 100}, 50), Turned(Cube({-10, -10, -10}, 20)));
    EXPECT_EQ(Find({part, Asking({0, 0, 0})}), (Enclosing{-1, -1}));
}

TEST(FindEnclosing, ALineThroughACornerOrAlongAnEdgePassesOneFacet) {
    // Above the point is the corner at the top; then an edge along x, and one along y, on both sides.
    for (Point3 const& p : {Point3{0, 0, 0}, Point3{16, 0, 0}, Point3{-16, 0, 0}, Point3{0, 16, 0},
                            Point3{0, -16, 0}, Point3{0, 0, -32}, Point3{16, 16, 0}, Point3{-16, -16, 4}}) {
        EXPECT_EQ(Find({Octahedron({0, 0, 0}, 64), Asking(p)}), (Enclosing{-1, 0})) << p.x << " " << p.y;
        // Above it as a whole: up and down count against each other.
        EXPECT_EQ(Find({Octahedron({0, 0, 200}, 64), Asking(p)}), (Enclosing{-1, -1}));
        EXPECT_EQ(Find({Octahedron({0, 0, -200}, 64), Asking(p)}), (Enclosing{-1, -1}));
    }
    // Beside it, with an edge or a corner at the rim of what it covers.
    for (Point3 const& p : {Point3{128, 0, 0}, Point3{-128, 0, 0}, Point3{0, 128, 0}, Point3{0, -128, 0}}) {
        EXPECT_EQ(Find({Octahedron({0, 0, 0}, 64), Asking(p)}), (Enclosing{-1, -1}));
        EXPECT_EQ(Find({Octahedron({0, 0, 0}, 128), Asking({p.x, p.y, -64})}), (Enclosing{-1, -1}));
    }
}

// What lies just between two is in one of them: that towards greater x and y.
TEST(FindEnclosing, OfShellsSideBySideTheLineBetweenThemIsInOne) {
    Solid const cavity = Asking({0, 0, 0});
    EXPECT_EQ(Find({Cube({-20, -10, -10}, 20), Cube({0, -10, -10}, 20), cavity}), (Enclosing{-1, -1, 1}));
    EXPECT_EQ(Find({Cube({0, -10, -10}, 20), Cube({-20, -10, -10}, 20), cavity}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({Cube({-10, -20, -10}, 20), Cube({-10, 0, -10}, 20), cavity}), (Enclosing{-1, -1, 1}));
    EXPECT_EQ(Find({Cube({-10, 0, -10}, 20), Cube({-10, -20, -10}, 20), cavity}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({Cube({-20, -20, -10}, 20), Cube({0, -20, -10}, 20), Cube({-20, 0, -10}, 20),
                    Cube({0, 0, -10}, 20), cavity}),
              (Enclosing{-1, -1, -1, -1, 3}));
}

TEST(FindEnclosing, UprightFacetsAreNeverPassed) {
    // The point stands below the middle of an upright side, as seen from above, and below its edges.
    EXPECT_EQ(Find({Cube({0, -10, 10}, 20), Asking({0, 0, 0})}), (Enclosing{-1, -1}));
    EXPECT_EQ(Find({Cube({-20, -10, 10}, 20), Asking({0, 0, 0})}), (Enclosing{-1, -1}));
    EXPECT_EQ(Find({Cube({-10, 0, 10}, 20), Asking({0, 0, 0})}), (Enclosing{-1, -1}));
    EXPECT_EQ(Find({Cube({-10, -20, 10}, 20), Asking({0, 0, 0})}), (Enclosing{-1, -1}));
}

TEST(FindEnclosing, ACavityThatLiesOnTheFloorIsInTheShell) {
    EXPECT_EQ(Find({Cube({-10, -10, 0}, 20), Asking({0, 0, 0})}), (Enclosing{-1, 0}));
    // One that lies on the roof is not.
    EXPECT_EQ(Find({Cube({-10, -10, -20}, 20), Asking({0, 0, 0})}), (Enclosing{-1, -1}));
}

TEST(FindEnclosing, TheFirstOfTheLargestFacetsIsAsked) {
    Solid const here = Cube({-10, -10, -10}, 20);
    Solid const there = Cube({90, -10, -10}, 20);
    auto const triangle = [](double x, double size) {
        return Solid{{{x - size, -size, 0}, {x + size, -size, 0}, {x, 2 * size, 0}}, {{0, 1, 2}}, -1.0};
    };
    EXPECT_EQ(Find({here, there, Joined(triangle(0, 2), triangle(100, 2))}), (Enclosing{-1, -1, 0}));
    EXPECT_EQ(Find({here, there, Joined(triangle(100, 2), triangle(0, 2))}), (Enclosing{-1, -1, 1}));
    EXPECT_EQ(Find({here, there, Joined(triangle(0, 2), triangle(100, 3))}), (Enclosing{-1, -1, 1}));
    EXPECT_EQ(Find({here, there, Joined(triangle(0, 3), triangle(100, 2))}), (Enclosing{-1, -1, 0}));
    // Facets without area are asked where there are no others.
    EXPECT_EQ(Find({here, {{{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}, {{0, 1, 2}}, -1.0}}), (Enclosing{-1, 0}));
    // The middle, of corners that all lie outside.
    EXPECT_EQ(Find({Cube({-1, -1, -1}, 2), triangle(0, 30)}), (Enclosing{-1, 0}));
}

TEST(FindEnclosing, ManyCavitiesInOneRowAreFound) {
    // All that ask have one x, or one y.
    for (bool const alongX : {true, false}) {
        std::vector<Solid> solids;
        Enclosing expected;
        for (int i = 0; i < 30; ++i) {
            double const at = 50.0 * i;
            Point3 const p = alongX ? Point3{at, 7, 0} : Point3{7, at, 0};
            solids.push_back(Asking(p));
            expected.push_back(i % 3 == 0 ? -1 : static_cast<std::int32_t>(solids.size()));
            if (i % 3 == 0) continue;
            solids.push_back(Cube({p.x - 10, p.y - 10, -10}, 20));
            expected.push_back(-1);
        }
        EXPECT_EQ(Find(solids), expected);
    }
}

TEST(FindEnclosing, RandomCubesHoldThoseWhosePointIsInThem) {
    std::mt19937 random(23);
    for (int round = 0; round < 30; ++round) {
        std::uniform_real_distribution<double> place(-100.0, 100.0);
        std::uniform_real_distribution<double> size(5.0, 80.0);
        std::vector<Solid> solids;
        std::vector<Point3> asks;
        for (int i = 0; i < 120; ++i) {
            Point3 const p = {place(random), place(random), place(random)};
            asks.push_back(p);
            solids.push_back(random() % 2 == 0 ? Asking(p) : Cube(p, size(random)));
        }
        Enclosing expected(solids.size(), -1);
        for (std::size_t i = 0; i < solids.size(); ++i) {
            if (solids[i].volume > 0.0) continue;
            for (std::size_t k = 0; k < solids.size(); ++k) {
                if (solids[k].volume < 0.0) continue;
                Point3 const& min = solids[k].points.front();
                Point3 const& max = solids[k].points.back();
                Point3 const& p = asks[i];
                if (p.x < min.x || p.x > max.x || p.y < min.y || p.y > max.y || p.z < min.z || p.z > max.z)
                    continue;
                std::int32_t& now = expected[i];
                if (now < 0 || solids[k].volume < solids[static_cast<std::size_t>(now)].volume)
                    now = static_cast<std::int32_t>(k);
            }
        }
        ASSERT_EQ(Find(solids), expected) << round;
    }
}

// A cube without some of its sides, two facets each: below, above, front, back, left, right.
Solid OpenCube(Point3 const& min, double side, std::vector<std::size_t> const& without) {
    Solid solid = Cube(min, side);
    std::vector<Triangle> triangles;
    for (std::size_t i = 0; i < solid.triangles.size(); ++i) {
        if (std::find(without.begin(), without.end(), i / 2) == without.end())
            triangles.push_back(solid.triangles[i]);
    }
    solid.triangles = triangles;
    solid.isOpen = true;
    return solid;
}

TEST(FindEnclosing, AnOpenShellIsAroundWhatItHasOnMostSides) {
    Solid const asking = Asking({5, 6, 4});
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(Find({OpenCube({0, 0, 0}, 10, {i}), asking})[1], 0) << i;
        for (std::size_t j = i + 1; j < 6; ++j) {
            EXPECT_EQ(Find({OpenCube({0, 0, 0}, 10, {i, j}), asking})[1], 0) << i << j;
            for (std::size_t k = j + 1; k < 6; ++k) {
                EXPECT_EQ(Find({OpenCube({0, 0, 0}, 10, {i, j, k}), asking})[1], -1) << i << j << k;
            }
        }
    }
    // Beside it, on every side.
    for (double const d : {-20.0, 20.0}) {
        EXPECT_EQ(Find({OpenCube({d, 0, 0}, 10, {1}), asking})[1], -1);
        EXPECT_EQ(Find({OpenCube({0, d, 0}, 10, {1}), asking})[1], -1);
        EXPECT_EQ(Find({OpenCube({0, 0, d}, 10, {1}), asking})[1], -1);
    }
}

TEST(FindEnclosing, OpenShellsThatAreClosedGiveTheSame) {
    std::mt19937 random(15);
    auto const any = [&random](unsigned most) { return static_cast<double>(random() % most); };
    for (int round = 0; round < 300; ++round) {
        std::vector<Solid> closed;
        std::size_t const cubes = 1 + random() % 4;
        for (std::size_t i = 0; i < cubes; ++i)
            closed.push_back(Cube({any(20), any(20), any(20)}, 1.0 + any(20)));
        closed.push_back(Asking({any(30) + 0.25, any(30) + 0.125, any(30) + 0.5}));
        closed.push_back(Asking({any(30) + 0.25, any(30) + 0.125, any(30) + 0.5}));
        std::vector<Solid> open = closed;
        for (Solid& solid : open) solid.isOpen = random() % 2 == 0;
        EXPECT_EQ(Find(open), Find(closed)) << round;
    }
}

}  // namespace
}  // namespace varnet
