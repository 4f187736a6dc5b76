// Contours that are resolved on a grid whose step is known.

#include "slice/Arrangement.h"

#include <gtest/gtest.h>

#include <cmath>

#include "varnet/Layer.h"

namespace varnet {
namespace {

// Half a millimetre and 1024 across: frexp gives 2^11, and a step is 2^-19.
constexpr double kStep = 1.0 / 524288.0;
Grid TheGrid() { return Grid(Box2{{-512, -512}, {512, 512}}); }

using Path = std::vector<Point2>;

SolidContours Resolve(std::vector<Path> const& list, SolidRule rule = SolidRule::kWinding) {
    Paths paths;
    for (Path const& path : list) paths.Add(path, true);
    SolidContours contours;
    Pulse pulse;
    ResolveCrossings(paths, TheGrid(), rule, contours, pulse);
    return contours;
}

Path Square(double x, double y, double side) {
    return {{x, y}, {x + side, y}, {x + side, y + side}, {x, y + side}};
}
Path Reversed(Path path) {
    std::reverse(path.begin(), path.end());
    return path;
}

// The least point in front.
Path FromLeast(std::span<Point2 const> points) {
    Path path(points.begin(), points.end());
    auto const isLess = [](Point2 const& a, Point2 const& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; };
    std::rotate(path.begin(), std::min_element(path.begin(), path.end(), isLess), path.end());
    return path;
}

TEST(ResolveCrossings, TheGridHasTheStepThatTheseTestsSay) { EXPECT_EQ(TheGrid().Unit(), kStep); }

TEST(ResolveCrossings, AContourJustAStepWideGoesAndOneAThirdWiderStays) {
    // A square is as wide as half its side: twice the area over the way round.
    EXPECT_EQ(Resolve({Square(0, 0, 2.0 * kStep)}).paths.Count(), 0u);
    ASSERT_EQ(Resolve({Square(0, 0, 3.0 * kStep)}).paths.Count(), 1u);
}

TEST(ResolveCrossings, OfSeveralPointsAtOnePlaceTheFirstStands) {
    // Each corner and each of many points of the sides is there a second time, a quarter of a step away.
    Path path;
    Path expected;
    for (int side = 0; side < 4; ++side) {
        for (int i = 0; i < 32; ++i) {
            double const along = -16.0 + i;
            Point2 const p = side == 0   ? Point2{along, -16.0 - i * i}
                             : side == 1 ? Point2{16.0 + i * (31 - i), along}
                             : side == 2 ? Point2{-along, 16.0 + i * i}
                                         : Point2{-16.0 - i * (31 - i), -along};
            bool const above = (side + i) % 2 == 0;
            path.push_back({p.x + (above ? kStep / 4 : 0.0), p.y});
            path.push_back({p.x + (above ? 0.0 : kStep / 4), p.y - kStep / 4});
            expected.push_back(path[path.size() - 2]);
        }
    }
    SolidContours const contours = Resolve({path}, SolidRule::kOdd);
    for (Point2 const& p : contours.paths.points) {
        bool const isSecond = std::find(path.begin(), path.end(), p) != path.end() &&
                              std::find(expected.begin(), expected.end(), p) == expected.end();
        EXPECT_FALSE(isSecond) << p.x << " " << p.y;
    }
    std::size_t first = 0;
    for (Point2 const& p : expected) {
        first += static_cast<std::size_t>(
            std::count(contours.paths.points.begin(), contours.paths.points.end(), p));
    }
    EXPECT_GE(first, expected.size());
}

TEST(ResolveCrossings, ContoursThatFallTogetherCountAsOftenAsTheyAreThere) {
    Path const square = Square(0, 0, 8);
    for (int copies = 1; copies <= 4; ++copies) {
        std::vector<Path> list(static_cast<std::size_t>(copies), square);
        EXPECT_EQ(Resolve(list, SolidRule::kWinding).paths.Count(), 1u) << copies;
        EXPECT_EQ(Resolve(list, SolidRule::kOdd).paths.Count(), copies % 2 == 1 ? 1u : 0u) << copies;
        list.push_back(Reversed(square));
        EXPECT_EQ(Resolve(list, SolidRule::kWinding).paths.Count(), copies > 1 ? 1u : 0u) << copies;
        EXPECT_EQ(Resolve(list, SolidRule::kOdd).paths.Count(), copies % 2 == 0 ? 1u : 0u) << copies;
    }
    // Turned, there is nothing that winding calls solid.
    EXPECT_EQ(Resolve({Reversed(square)}, SolidRule::kWinding).paths.Count(), 0u);
    EXPECT_EQ(Resolve({Reversed(square)}, SolidRule::kOdd).paths.Count(), 1u);
}

TEST(ResolveCrossings, SquaresThatShareASideBecomeOneOrAreDivided) {
    std::vector<Path> const beside = {Square(0, 0, 8), Square(8, 0, 8)};
    SolidContours const one = Resolve(beside);
    ASSERT_EQ(one.paths.Count(), 1u);
    EXPECT_EQ(FromLeast(one.paths.At(0)), (Path{{0, 0}, {8, 0}, {16, 0}, {16, 8}, {8, 8}, {0, 8}}));
    EXPECT_EQ(SignedArea(one.paths.At(0)), 128.0);
    // The right one turned: its side runs the same way as that of the left one.
    SolidContours const left = Resolve({Square(0, 0, 8), Reversed(Square(8, 0, 8))});
    ASSERT_EQ(left.paths.Count(), 1u);
    EXPECT_EQ(FromLeast(left.paths.At(0)), (Path{{0, 0}, {8, 0}, {8, 8}, {0, 8}}));
}

TEST(ResolveCrossings, SolidsThatTouchAtAPointComeApartAndHolesDoNot) {
    SolidContours const apart = Resolve({Square(0, 0, 8), Square(8, 8, 8)});
    ASSERT_EQ(apart.paths.Count(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(SignedArea(apart.paths.At(i)), 64.0);
        EXPECT_EQ(apart.parents[i], -1);
    }
    // Two holes that touch at a point are one where the solid is divided there by its own corner.
    SolidContours const holes =
        Resolve({Square(0, 0, 32), Reversed(Square(8, 8, 8)), Reversed(Square(16, 16, 8))});
    ASSERT_EQ(holes.paths.Count(), 2u);
    EXPECT_EQ(SignedArea(holes.paths.At(0)), 1024.0);
    EXPECT_EQ(SignedArea(holes.paths.At(1)), -128.0);
    EXPECT_EQ(holes.parents, (std::vector<int>{-1, 0}));
    EXPECT_EQ(holes.levels, (std::vector<int>{0, 1}));
}

TEST(ResolveCrossings, NestingGoesFromTheContourBelow) {
    // Frames within each other, an island beside a hole's side, and one below the whole.
    SolidContours const contours =
        Resolve({Square(0, 0, 64), Reversed(Square(8, 8, 48)), Square(16, 16, 8), Square(40, 16, 8),
                 Reversed(Square(18, 18, 4)), Square(0, -64, 32)});
    std::vector<std::pair<double, int>> found;
    for (std::size_t i = 0; i < contours.paths.Count(); ++i)
        found.emplace_back(SignedArea(contours.paths.At(i)), contours.levels[i]);
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, (std::vector<std::pair<double, int>>{
                         {-2304.0, 1}, {-16.0, 3}, {64.0, 2}, {64.0, 2}, {1024.0, 0}, {4096.0, 0}}));
}

TEST(ResolveCrossings, OfNothingIsNothing) {
    EXPECT_EQ(Resolve({}).paths.Count(), 0u);
    EXPECT_EQ(Resolve({Path()}).paths.Count(), 0u);
    EXPECT_EQ(Resolve({{{1, 1}}}).paths.Count(), 0u);
    EXPECT_EQ(Resolve({{{1, 1}, {5, 5}}}).paths.Count(), 0u);
    EXPECT_EQ(Resolve({{{1, 1}, {5, 5}}}, SolidRule::kOdd).paths.Count(), 0u);
    EXPECT_EQ(Resolve({Path(), Square(0, 0, 8), Path()}).paths.Count(), 1u);
}

TEST(Grid, AStepIsAThousandMillionthOfTheLargerSide) {
    EXPECT_EQ(Grid(Box2{{0, 0}, {1, 0.5}}).Unit(), std::ldexp(1.0, -29));
    EXPECT_EQ(Grid(Box2{{0, 0}, {0.5, 0.99}}).Unit(), std::ldexp(1.0, -30));
    EXPECT_EQ(Grid(Box2{{3, 3}, {3.75, 3}}).Unit(), std::ldexp(1.0, -30));
    EXPECT_EQ(Grid(Box2()).Unit(), 1.0);
}

TEST(Grid, ThePointInTheMiddleIsTheOriginAndHalvesGoUp) {
    Grid const grid = TheGrid();
    EXPECT_EQ(grid.Of({0, 0}), (GridPoint{0, 0}));
    EXPECT_EQ(grid.Of({0.5 * kStep, -0.5 * kStep}), (GridPoint{1, 0}));
    EXPECT_EQ(grid.Of({0.49 * kStep, -0.51 * kStep}), (GridPoint{0, -1}));
    EXPECT_EQ(grid.Of({512, -512}), (GridPoint{268435456, -268435456}));
    EXPECT_EQ(grid.Place({3, -7}), (Point2{3 * kStep, -7 * kStep}));
    Grid const beside(Box2{{1000, 2000}, {1000.5, 2000.75}});
    for (GridPoint const& p : {GridPoint{0, 0}, GridPoint{12345, -54321}})
        EXPECT_EQ(beside.Of(beside.Place(p)), p);
    Point2 const origin = beside.Place({0, 0});
    EXPECT_NEAR(origin.x, 1000.25, 1e-8);
    EXPECT_NEAR(origin.y, 2000.375, 1e-8);
    // What is far outside stands at the rim.
    EXPECT_EQ(grid.Of({1e300, -1e300}), (GridPoint{536870913, -536870913}));
}

TEST(Grid, KeysAreInTheOrderOfThePoints) {
    std::vector<std::int32_t> const values = {-1073741824, -2, -1, 0, 1, 2, 1073741824};
    for (std::int32_t const ax : values) {
        for (std::int32_t const ay : values) {
            GridPoint const a{ax, ay};
            EXPECT_EQ(GridPoint::FromKey(a.Key()), a);
            for (std::int32_t const bx : values) {
                for (std::int32_t const by : values) {
                    GridPoint const b{bx, by};
                    EXPECT_EQ(a < b, a.Key() < b.Key());
                }
            }
        }
    }
}

TEST(Grid, TurnsAreExactToTheRim) {
    std::int32_t const r = 536870913;
    EXPECT_EQ(Turn({-r, -r}, {r, -r}, {r, r}), 4 * std::int64_t{r} * r);
    EXPECT_EQ(Turn({-r, -r}, {r, r}, {r, -r}), -4 * std::int64_t{r} * r);
    EXPECT_EQ(Turn({-r, -r}, {r, r}, {0, 1}), 2 * std::int64_t{r});
    EXPECT_EQ(Turn({-r, -r}, {r, r}, {0, 0}), 0);
}

}  // namespace
}  // namespace varnet
