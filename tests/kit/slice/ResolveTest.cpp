// Windings of contours that lie, cross and touch as they like, against slow ways to find the same.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "slice/Arrangement.h"
#include "slice/Nesting.h"
#include "slice/SnapRounding.h"
#include "varnet/Layer.h"

namespace varnet {
namespace {

Box2 BoxOf(Paths const& paths) {
    Box2 box;
    for (Point2 const& p : paths.points) box.Add(p);
    return box;
}

Paths MakePaths(std::vector<std::vector<Point2>> const& polygons) {
    Paths paths;
    for (auto const& polygon : polygons) paths.Add(polygon, true);
    return paths;
}

template <class Visit>
void ForEachSide(Paths const& paths, Visit visit) {
    for (std::size_t i = 0; i < paths.Count(); ++i) {
        std::span<Point2 const> const path = paths.At(i);
        for (std::size_t k = 0; k < path.size(); ++k) visit(path[k], path[k + 1 < path.size() ? k + 1 : 0]);
    }
}

// The length of what is solid along the line at this height.
double SolidLength(Paths const& paths, double y, SolidRule rule) {
    std::vector<std::pair<double, int>> crossings;
    ForEachSide(paths, [&](Point2 const& a, Point2 const& b) {
        if ((a.y <= y) == (b.y <= y)) return;
        crossings.emplace_back(a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y), a.y <= y ? -1 : 1);
    });
    std::sort(crossings.begin(), crossings.end());
    double length = 0.0;
    int winding = 0;
    for (std::size_t i = 0; i + 1 < crossings.size(); ++i) {
        // From the left, a side that goes down has the inside of a counter-clockwise contour to its right.
        winding += crossings[i].second;
        if (IsSolid(winding, rule)) length += crossings[i + 1].first - crossings[i].first;
    }
    return length;
}

// Between heights at which sides end or cross, what is solid is trapezoids.
double SolidArea(Paths const& paths, SolidRule rule) {
    std::vector<double> heights;
    std::vector<std::pair<Point2, Point2>> sides;
    ForEachSide(paths, [&](Point2 const& a, Point2 const& b) {
        heights.push_back(a.y);
        for (auto const& [c, d] : sides) {
            double const whole = (b.x - a.x) * (d.y - c.y) - (b.y - a.y) * (d.x - c.x);
            double const s = ((c.x - a.x) * (d.y - c.y) - (c.y - a.y) * (d.x - c.x)) / whole;
            double const t = ((c.x - a.x) * (b.y - a.y) - (c.y - a.y) * (b.x - a.x)) / whole;
            if (s > 0.0 && s < 1.0 && t > 0.0 && t < 1.0) heights.push_back(a.y + s * (b.y - a.y));
        }
        sides.emplace_back(a, b);
    });
    std::sort(heights.begin(), heights.end());
    double area = 0.0;
    for (std::size_t i = 0; i + 1 < heights.size(); ++i) {
        double const height = heights[i + 1] - heights[i];
        if (height > 0.0) area += SolidLength(paths, heights[i] + height / 2.0, rule) * height;
    }
    return area;
}

double AreaOf(Paths const& paths) {
    double area = 0.0;
    for (std::size_t i = 0; i < paths.Count(); ++i) area += SignedArea(paths.At(i));
    return area;
}

bool Holds(std::span<Point2 const> path, Point2 const& p) {
    bool inside = false;
    for (std::size_t k = 0; k < path.size(); ++k) {
        Point2 const& a = path[k];
        Point2 const& b = path[k + 1 < path.size() ? k + 1 : 0];
        if ((a.y <= p.y) == (b.y <= p.y)) continue;
        if (a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y) > p.x) inside = !inside;
    }
    return inside;
}

// No two sides of the contours cross within both of them, on the grid.
void ExpectNoCrossings(Paths const& paths, Grid const& grid) {
    std::vector<GridSide> sides;
    ForEachSide(paths, [&](Point2 const& a, Point2 const& b) { sides.push_back({grid.Of(a), grid.Of(b)}); });
    auto const sign = [](std::int64_t n) { return n > 0 ? 1 : n < 0 ? -1 : 0; };
    int crossings = 0;
    for (std::size_t i = 0; i < sides.size(); ++i) {
        for (std::size_t k = 0; k < i; ++k) {
            GridSide const& s = sides[i];
            GridSide const& t = sides[k];
            int const a = sign(Turn(s.from, s.to, t.from)) * sign(Turn(s.from, s.to, t.to));
            int const b = sign(Turn(t.from, t.to, s.from)) * sign(Turn(t.from, t.to, s.to));
            crossings += a < 0 && b < 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(crossings, 0);
}

void ExpectNested(SolidContours const& contours) {
    for (std::size_t i = 0; i < contours.parents.size(); ++i) {
        int const parent = contours.parents[i];
        std::span<Point2 const> const path = contours.paths.At(i);
        EXPECT_LT(parent, static_cast<int>(i));
        EXPECT_EQ(SignedArea(path) > 0.0, contours.levels[i] % 2 == 0);
        if (parent >= 0) {
            EXPECT_EQ(contours.levels[i], contours.levels[static_cast<std::size_t>(parent)] + 1);
            EXPECT_LE(std::fabs(SignedArea(path)),
                      std::fabs(SignedArea(contours.paths.At(static_cast<std::size_t>(parent)))));
        }
        // Of the others, as many as its level go round the contour, told by a point just within it.
        Point2 middle{};
        for (std::size_t k = 0; k < path.size(); ++k) {
            Point2 const& a = path[k];
            Point2 const& b = path[k + 1 < path.size() ? k + 1 : 0];
            double const length = std::hypot(b.x - a.x, b.y - a.y);
            if (length < 1e-3) continue;
            double const side = SignedArea(path) > 0.0 ? 1e-5 : -1e-5;
            middle = {(a.x + b.x) / 2.0 - side * (b.y - a.y) / length,
                      (a.y + b.y) / 2.0 + side * (b.x - a.x) / length};
            int around = 0;
            for (std::size_t j = 0; j < contours.parents.size(); ++j) {
                if (j != i && Holds(contours.paths.At(j), middle)) ++around;
            }
            EXPECT_EQ(around, contours.levels[i]);
            break;
        }
    }
}

SolidContours Resolve(Paths const& paths, SolidRule rule) {
    SolidContours contours;
    Pulse pulse;
    ResolveCrossings(paths, Grid(BoxOf(paths)), rule, contours, pulse);
    return contours;
}

void ExpectResolved(Paths const& paths, double within) {
    for (SolidRule const rule : {SolidRule::kWinding, SolidRule::kOdd}) {
        Grid const grid(BoxOf(paths));
        SolidContours const contours = Resolve(paths, rule);
        EXPECT_NEAR(AreaOf(contours.paths), SolidArea(paths, rule), within);
        ExpectNoCrossings(contours.paths, grid);
        // What is resolved stays as it is.
        EXPECT_NEAR(AreaOf(Resolve(contours.paths, rule).paths), AreaOf(contours.paths), within);
        // The fast way agrees, where it has an answer.
        NestingSweep sweep;
        std::vector<Nested> nested;
        Pulse pulse;
        if (!sweep.Nest(paths, grid, rule, nested, pulse)) continue;
        SolidContours plain;
        AddNested(paths, nested, plain);
        EXPECT_NEAR(AreaOf(plain.paths), SolidArea(paths, rule), within);
        EXPECT_EQ(plain.parents.size(), contours.parents.size());
        ExpectNested(plain);
    }
}

std::vector<Point2> Square(double x, double y, double size, bool turned = false) {
    std::vector<Point2> square{{x, y}, {x + size, y}, {x + size, y + size}, {x, y + size}};
    if (turned) std::reverse(square.begin(), square.end());
    return square;
}

TEST(Resolve, SquaresThatOverlapTouchAndNest) {
    struct Case {
        std::vector<std::vector<Point2>> polygons;
        double winding;
        double odd;
        std::size_t contours;  // by winding
    };
    Case const cases[] = {
        {{Square(0, 0, 4), Square(2, 2, 4)}, 28, 24, 1},
        {{Square(0, 0, 4), Square(4, 0, 4)}, 32, 32, 1},        // along a side
        {{Square(0, 0, 4), Square(4, 2, 4)}, 32, 32, 1},        // along a part of it
        {{Square(0, 0, 4), Square(4, 4, 4)}, 32, 32, 2},        // at a corner
        {{Square(0, 0, 4), Square(0, 0, 4)}, 16, 0, 1},         // twice
        {{Square(0, 0, 4), Square(0, 0, 4, true)}, 0, 0, 0},    // there and back
        {{Square(0, 0, 4, true)}, 0, 16, 0},                    // inside out
        {{Square(0, 0, 4), Square(1, 1, 2)}, 16, 12, 1},        // a shell in a shell
        {{Square(0, 0, 4), Square(1, 1, 2, true)}, 12, 12, 2},  // a hole
        {{Square(0, 0, 4), Square(0, 0, 2, true)}, 12, 12, 1},  // a hole at the rim
        {{Square(0, 0, 4), Square(2, 2, 4, true)}, 12, 24, 1},  // bitten off
        {{Square(0, 0, 6), Square(1, 1, 4, true), Square(2, 2, 2)}, 24, 24, 3},
        {{Square(0, 0, 4), {{1, 0}, {2, 2}, {3, 0}, {2, 1}}}, 15, 15, 2},  // cut off by a notch
        {{{{0, 0}, {2, 2}, {2, 0}, {0, 2}}}, 1, 2, 1},                     // a bow tie, one half of it turned
        {{{{0, 0}, {4, 0}, {4, 4}, {4, 0}, {0, 0}, {0, 0}}}, 0, 0, 0},     // encloses nothing
        {{{{1, 1}}, {}, {{1, 1}, {2, 2}}}, 0, 0, 0},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        Paths const paths = MakePaths(cases[i].polygons);
        SolidContours const winding = Resolve(paths, SolidRule::kWinding);
        EXPECT_NEAR(AreaOf(winding.paths), cases[i].winding, 1e-6) << i;
        EXPECT_EQ(winding.parents.size(), cases[i].contours) << i;
        EXPECT_NEAR(AreaOf(Resolve(paths, SolidRule::kOdd).paths), cases[i].odd, 1e-6) << i;
    }
}

TEST(Resolve, HolesThatTouchTheirContourAtAPoint) {
    std::vector<Point2> const diamond{{2, 0}, {1, 1}, {2, 2}, {3, 1}};  // clockwise, from the rim of a square
    SolidContours const contours = Resolve(MakePaths({Square(0, 0, 4), diamond}), SolidRule::kWinding);
    EXPECT_NEAR(AreaOf(contours.paths), 14.0, 1e-6);
    // Two squares that touch at a corner have a hole between four of them.
    SolidContours const ring = Resolve(
        MakePaths({Square(2, 0, 2), Square(4, 2, 2), Square(2, 4, 2), Square(0, 2, 2)}), SolidRule::kWinding);
    EXPECT_EQ(ring.parents, std::vector<int>({-1, -1, -1, -1}));
}

// A box 1000 wide has steps of 2^-20 millimetres.
TEST(Resolve, AContourOneGridStepWideGoesAndOneOfTwoStays) {
    for (int const steps : {1, 2, 3}) {
        double const top = 600.0 + std::ldexp(steps, -20);
        Paths const paths = MakePaths(
            {Square(0, 0, 500), {{0, 600}, {500, 600}, {500, top}, {0, top}}, Square(990, 990, 10)});
        ASSERT_EQ(Grid(BoxOf(paths)).Unit(), std::ldexp(1.0, -20));
        EXPECT_EQ(Resolve(paths, SolidRule::kWinding).parents.size(), steps > 1 ? 3u : 2u) << steps;
    }
}

TEST(Resolve, PointsKeepTheirCoordinates) {
    double const third = 1.0 / 3.0;
    std::vector<Point2> const a{
        {third, third}, {4 + third, third}, {4 + third, 4 + third}, {third, 4 + third}};
    SolidContours const contours = Resolve(MakePaths({a, Square(2, 2, 4)}), SolidRule::kWinding);
    for (Point2 const& p : {a[0], a[1], a[3], Point2{6, 2}, Point2{6, 6}, Point2{2, 6}}) {
        EXPECT_EQ(std::count(contours.paths.points.begin(), contours.paths.points.end(), p), 1);
    }
}

TEST(Resolve, RandomPolygonsHaveTheAreaOfASlowCount) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(-50.0, 50.0);
    for (int round = 0; round < 60; ++round) {
        std::vector<std::vector<Point2>> polygons;
        for (int i = 0; i < 1 + round % 6; ++i) {
            std::vector<Point2> polygon;
            for (int k = 0; k < 3 + round % 9; ++k) polygon.push_back({anywhere(random), anywhere(random)});
            polygons.push_back(polygon);
        }
        ExpectResolved(MakePaths(polygons), 1e-3);
    }
}

// Many sides and many crossings in a small part of a wide layer, which is divided until few are together.
TEST(Resolve, ManyTrianglesInACornerHaveTheAreaOfASlowCount) {
    std::mt19937 random(15);
    std::uniform_real_distribution<double> near(0.0, 1.0);
    std::vector<std::vector<Point2>> polygons{Square(1000, 1000, 1)};
    for (int i = 0; i < 65; ++i) {
        std::vector<Point2> triangle;
        for (int k = 0; k < 3; ++k) triangle.push_back({near(random), near(random)});
        polygons.push_back(triangle);
    }
    ExpectResolved(MakePaths(polygons), 1e-3);
}

TEST(Resolve, RandomPolygonsOnALatticeFallTogether) {
    std::mt19937 random(6);
    for (int round = 0; round < 150; ++round) {
        std::uniform_int_distribution<int> any(0, 2 + round % 5);
        std::vector<std::vector<Point2>> polygons;
        for (int i = 0; i < 1 + round % 7; ++i) {
            std::vector<Point2> polygon;
            for (int k = 0; k < 3 + round % 6; ++k) {
                polygon.push_back({static_cast<double>(any(random)), static_cast<double>(any(random))});
            }
            polygons.push_back(polygon);
        }
        ExpectResolved(MakePaths(polygons), 1e-4);
    }
}

TEST(Resolve, PolygonsThatAreNearlyTheSame) {
    std::mt19937 random(8);
    for (double const off : {1e-3, 1e-6, 1e-8, 1e-12}) {
        std::uniform_real_distribution<double> shift(-off, off);
        for (int round = 0; round < 10; ++round) {
            std::vector<std::vector<Point2>> polygons;
            for (int i = 0; i < 4; ++i) {
                std::vector<Point2> polygon;
                for (int k = 0; k < 24; ++k) {
                    double const angle = k * std::acos(-1.0) / 12.0;
                    polygon.push_back(
                        {10.0 * std::cos(angle) + shift(random), 10.0 * std::sin(angle) + shift(random)});
                }
                polygons.push_back(polygon);
            }
            Paths const paths = MakePaths(polygons);
            SolidContours const contours = Resolve(paths, SolidRule::kWinding);
            EXPECT_NEAR(AreaOf(contours.paths), SolidArea(paths, SolidRule::kWinding), 1e-5);
            ExpectNoCrossings(contours.paths, Grid(BoxOf(paths)));
        }
    }
}

// Steps of the grid, whose roundings meet each other all over.
TEST(Resolve, SidesOfAFewGridSteps) {
    std::mt19937 random(9);
    std::uniform_int_distribution<std::int32_t> any(-9, 9);
    for (int round = 0; round < 300; ++round) {
        std::vector<GridSide> sides;
        for (int i = 0; i < 12; ++i) {
            GridSide const side{{any(random), any(random)}, {any(random), any(random)}};
            if (!(side.from == side.to)) sides.push_back(side);
        }
        Pulse pulse;
        GridGraph const graph = RoundSides(sides, pulse);
        // Rounded sides meet at ends alone.
        auto const at = [&](std::int32_t v) { return graph.vertices[static_cast<std::size_t>(v)]; };
        auto const between = [](GridPoint const& p, GridPoint const& a, GridPoint const& b) {
            return Turn(a, b, p) == 0 && a < p && p < b;
        };
        auto const sign = [](std::int64_t n) { return n > 0 ? 1 : n < 0 ? -1 : 0; };
        for (GridEdge const& e : graph.edges) {
            ASSERT_LT(e.left, e.right);
            for (GridPoint const& p : graph.vertices) ASSERT_FALSE(between(p, at(e.left), at(e.right)));
            for (GridEdge const& f : graph.edges) {
                int const a = sign(Turn(at(e.left), at(e.right), at(f.left))) *
                              sign(Turn(at(e.left), at(e.right), at(f.right)));
                int const b = sign(Turn(at(f.left), at(f.right), at(e.left))) *
                              sign(Turn(at(f.left), at(f.right), at(e.right)));
                ASSERT_FALSE(a < 0 && b < 0);
            }
        }
        // No vertex loses its balance: as many sides arrive as before, beside those that end there.
        std::vector<int> balance(graph.vertices.size(), 0);
        for (GridEdge const& e : graph.edges) {
            balance[static_cast<std::size_t>(e.left)] += e.balance;
            balance[static_cast<std::size_t>(e.right)] -= e.balance;
        }
        for (std::size_t v = 0; v < balance.size(); ++v) {
            int expected = 0;
            for (GridSide const& s : sides) {
                expected += s.from == graph.vertices[v] ? 1 : 0;
                expected -= s.to == graph.vertices[v] ? 1 : 0;
            }
            ASSERT_EQ(balance[v], expected);
        }
    }
}

TEST(Resolve, ManyLongBarsAndOneAcross) {
    // Bars that fill six tenths of a hundred by a hundred, level and oblique, and one of two by 102 or 152.
    for (double const rise : {0.0, 50.0}) {
        std::vector<std::vector<Point2>> polygons;
        for (int i = 0; i < 2000; ++i) {
            double const y = i * 0.05;
            polygons.push_back({{0, y}, {100, y + rise}, {100, y + rise + 0.03}, {0, y + 0.03}});
        }
        polygons.push_back({{49, -1}, {51, -1}, {51, 101 + rise}, {49, 101 + rise}});
        SolidContours const contours = Resolve(MakePaths(polygons), SolidRule::kWinding);
        // Half a kilometre of sides, each within a quarter of a millionth of where it was.
        EXPECT_NEAR(AreaOf(contours.paths), 6000.0 + 2.0 * (102.0 + rise) - 2.0 * 60.0, 0.05);
        EXPECT_EQ(contours.parents.size(), 1u);
    }
}

TEST(Resolve, ManyCirclesNestLikeASlowCount) {
    std::mt19937 random(10);
    std::uniform_real_distribution<double> anywhere(-50.0, 50.0);
    std::uniform_real_distribution<double> any(0.5, 20.0);
    int told = 0;
    for (int round = 0; round < 40; ++round) {
        struct Circle {
            double x, y, r;
        };
        std::vector<Circle> circles;
        std::vector<std::vector<Point2>> polygons;
        for (int i = 0; i < 200; ++i) {
            Circle const c{anywhere(random), anywhere(random), any(random)};
            bool const apart = std::all_of(circles.begin(), circles.end(), [&](Circle const& d) {
                double const distance = std::hypot(c.x - d.x, c.y - d.y);
                return distance > c.r + d.r + 0.01 || distance < std::fabs(c.r - d.r) * 0.9 - 0.01;
            });
            if (!apart) continue;
            circles.push_back(c);
            std::vector<Point2> polygon;
            int const corners = 12 + i % 40;
            for (int k = 0; k < corners; ++k) {
                double const angle = 2.0 * std::acos(-1.0) * k / corners;
                polygon.push_back({c.x + c.r * std::cos(angle), c.y + c.r * std::sin(angle)});
            }
            if (i % 3 == 0) std::reverse(polygon.begin(), polygon.end());
            polygons.push_back(polygon);
        }
        Paths const paths = MakePaths(polygons);
        NestingSweep sweep;
        std::vector<Nested> nested;
        Pulse pulse;
        told += sweep.Nest(paths, Grid(BoxOf(paths)), SolidRule::kOdd, nested, pulse) ? 1 : 0;
        ExpectResolved(paths, 1e-4);
    }
    EXPECT_GT(told, 20);
}

TEST(Resolve, CrossingsAreSeenByTheSweep) {
    // Polygons without a common point on the grid are told apart from others by looking at all pairs.
    std::mt19937 random(12);
    auto const sign = [](std::int64_t n) { return n > 0 ? 1 : n < 0 ? -1 : 0; };
    int plain = 0;
    for (int round = 0; round < 3000; ++round) {
        std::uniform_int_distribution<int> any(0, 6 + round % 30);
        std::vector<std::vector<Point2>> polygons;
        for (int i = 0; i < 2; ++i) {
            std::vector<Point2> polygon;
            for (int k = 0; k < 3 + round % 2; ++k) {
                polygon.push_back({static_cast<double>(any(random)), static_cast<double>(any(random))});
            }
            polygons.push_back(polygon);
        }
        Paths const paths = MakePaths(polygons);
        Grid const grid(Box2{{0, 0}, {64, 64}});
        bool meet = false;
        std::size_t const n = 3 + static_cast<std::size_t>(round % 2);
        for (std::size_t i = 0; i < 2 * n; ++i) {
            for (std::size_t k = 0; k < i; ++k) {
                auto const side = [&](std::size_t j) {
                    std::vector<Point2> const& polygon = polygons[j / n];
                    return GridSide{grid.Of(polygon[j % n]), grid.Of(polygon[(j % n + 1) % n])};
                };
                GridSide const s = side(i);
                GridSide const t = side(k);
                bool const shareEnd = i / n == k / n && (i - k == 1 || i - k == n - 1);
                int const a = sign(Turn(s.from, s.to, t.from));
                int const b = sign(Turn(s.from, s.to, t.to));
                int const c = sign(Turn(t.from, t.to, s.from));
                int const d = sign(Turn(t.from, t.to, s.to));
                if (shareEnd) {
                    // Back over itself.
                    meet = meet || (a == 0 && b == 0);
                } else {
                    meet = meet || (a * b <= 0 && c * d <= 0);
                }
            }
        }
        NestingSweep sweep;
        std::vector<Nested> nested;
        Pulse pulse;
        bool const told = sweep.Nest(paths, grid, SolidRule::kWinding, nested, pulse);
        plain += told ? 1 : 0;
        // Contours that touch nowhere are always told; those that do never.
        EXPECT_TRUE(told || meet);
        if (told) ExpectResolved(paths, 1e-4);
    }
    EXPECT_GT(plain, 50);
}

}  // namespace
}  // namespace varnet
