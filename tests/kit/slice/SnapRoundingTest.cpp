// Sides that are rounded together, against a slow way: every pixel is held against every side in fractions.

#include "slice/SnapRounding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <tuple>

namespace varnet {
namespace {

using Sides = std::vector<GridSide>;
// The balance and the count of each edge between two points, the left one in front.
using Edges = std::map<std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t>,
                       std::pair<std::int32_t, std::int32_t>>;

struct Fraction {
    std::int64_t top;
    std::int64_t bottom;  // above 0
};
bool operator<(Fraction const& a, Fraction const& b) { return a.top * b.bottom < b.top * a.bottom; }

// A stretch of a side, as shares of it; each end belongs to it or not.
struct Stretch {
    Fraction from{0, 1};
    Fraction to{1, 1};
    bool hasFrom = true;
    bool hasTo = true;

    void NotBelow(Fraction const& share, bool has) {
        if (share < from) return;
        hasFrom = from < share ? has : hasFrom && has;
        from = share;
    }
    void NotAbove(Fraction const& share, bool has) {
        if (to < share) return;
        hasTo = share < to ? has : hasTo && has;
        to = share;
    }
    // Where `start`, growing by `way` over the side, is from -1 up to 1 without that.
    void InPixel(std::int64_t start, std::int64_t way) {
        if (way > 0) {
            NotBelow({-1 - start, way}, true);
            NotAbove({1 - start, way}, false);
        } else if (way < 0) {
            NotAbove({1 + start, -way}, true);
            NotBelow({start - 1, -way}, false);
        } else if (start < -1 || start >= 1) {
            to = {-1, 1};
        }
    }
    bool IsEmpty() const { return to < from || (!(from < to) && !(hasFrom && hasTo)); }
};

// In half steps about the pixel's middle.
Stretch StretchIn(GridSide const& s, GridPoint const& pixel) {
    Stretch stretch;
    stretch.InPixel(2 * (std::int64_t{s.from.x} - pixel.x), 2 * (std::int64_t{s.to.x} - s.from.x));
    stretch.InPixel(2 * (std::int64_t{s.from.y} - pixel.y), 2 * (std::int64_t{s.to.y} - s.from.y));
    return stretch;
}

std::int64_t FloorOf(std::int64_t top, std::int64_t bottom) {
    return top / bottom - (top % bottom < 0 ? 1 : 0);
}

// Of every two sides that cross within both.
void AddCrossings(Sides const& sides, std::set<std::pair<std::int32_t, std::int32_t>>& points) {
    for (GridSide const& s : sides) {
        for (GridSide const& t : sides) {
            std::int64_t a = Turn(s.from, s.to, t.from);
            std::int64_t b = Turn(s.from, s.to, t.to);
            std::int64_t const c = Turn(t.from, t.to, s.from);
            std::int64_t const d = Turn(t.from, t.to, s.to);
            bool const cross =
                ((a < 0 && b > 0) || (a > 0 && b < 0)) && ((c < 0 && d > 0) || (c > 0 && d < 0));
            if (!cross) continue;
            a = std::abs(a);
            b = std::abs(b);
            // The greater of two as near: the floor of the place and a half.
            auto const at = [a, b](std::int64_t from, std::int64_t to) {
                return static_cast<std::int32_t>(
                    FloorOf(2 * (from * (a + b) + a * (to - from)) + a + b, 2 * (a + b)));
            };
            points.insert({at(t.from.x, t.to.x), at(t.from.y, t.to.y)});
        }
    }
}

struct Rounded {
    std::set<std::pair<std::int32_t, std::int32_t>> points;
    Edges edges;
};

Rounded RoundSlowly(Sides const& sides) {
    Rounded rounded;
    for (GridSide const& s : sides) {
        rounded.points.insert({s.from.x, s.from.y});
        rounded.points.insert({s.to.x, s.to.y});
    }
    AddCrossings(sides, rounded.points);
    for (GridSide const& s : sides) {
        std::vector<std::pair<Stretch, GridPoint>> passed;
        for (auto const& [x, y] : rounded.points) {
            Stretch const stretch = StretchIn(s, {x, y});
            if (!stretch.IsEmpty()) passed.push_back({stretch, {x, y}});
        }
        std::sort(passed.begin(), passed.end(), [](auto const& a, auto const& b) {
            if (a.first.from < b.first.from || b.first.from < a.first.from)
                return a.first.from < b.first.from;
            return a.first.to < b.first.to;
        });
        for (std::size_t i = 1; i < passed.size(); ++i) {
            GridPoint const a = passed[i - 1].second;
            GridPoint const b = passed[i].second;
            bool const isRight = a.x < b.x || (a.x == b.x && a.y < b.y);
            auto& [balance, count] =
                isRight ? rounded.edges[{a.x, a.y, b.x, b.y}] : rounded.edges[{b.x, b.y, a.x, a.y}];
            balance += isRight ? 1 : -1;
            ++count;
        }
    }
    return rounded;
}

void ExpectAsRoundedSlowly(Sides const& sides) {
    Pulse pulse;
    GridGraph const graph = RoundSides(sides, pulse);
    Rounded const slow = RoundSlowly(sides);
    std::vector<std::pair<std::int32_t, std::int32_t>> points;
    for (GridPoint const& p : graph.vertices) points.emplace_back(p.x, p.y);
    // A set is in the order of x and then y, as the vertices have to be.
    ASSERT_EQ(points,
              (std::vector<std::pair<std::int32_t, std::int32_t>>(slow.points.begin(), slow.points.end())));
    Edges edges;
    std::pair<std::int32_t, std::int32_t> before{-1, -1};
    for (GridEdge const& e : graph.edges) {
        ASSERT_LT(before, (std::pair{e.left, e.right}));
        before = {e.left, e.right};
        GridPoint const& a = graph.vertices[static_cast<std::size_t>(e.left)];
        GridPoint const& b = graph.vertices[static_cast<std::size_t>(e.right)];
        edges[{a.x, a.y, b.x, b.y}] = {e.balance, e.count};
    }
    ASSERT_EQ(edges, slow.edges);
}

// Sides between random points of a square about the origin.
Sides RandomSides(std::mt19937& random, int count, std::int32_t reach) {
    std::uniform_int_distribution<std::int32_t> any(-reach, reach);
    Sides sides;
    while (static_cast<int>(sides.size()) < count) {
        GridSide const side{{any(random), any(random)}, {any(random), any(random)}};
        if (!(side.from == side.to)) sides.push_back(side);
    }
    return sides;
}

TEST(RoundSides, OfNoSidesThereIsNothing) {
    Pulse pulse;
    GridGraph const graph = RoundSides({}, pulse);
    EXPECT_TRUE(graph.vertices.empty());
    EXPECT_TRUE(graph.edges.empty());
}

// The sides of a rhombus through the corners of the pixel in the middle, and a side that ends in that pixel.
// Its lower left corner belongs to it, the other three to those beside it.
TEST(RoundSides, OfThePixelsCornersTheLowerLeftOneBelongsToIt) {
    GridSide const ending{{0, 0}, {40, 40}};
    auto const edgesOf = [&](GridPoint const& a, GridPoint const& b) {
        Pulse pulse;
        Sides const sides = {{a, b}, ending};
        GridGraph const graph = RoundSides(sides, pulse);
        ExpectAsRoundedSlowly(sides);
        return graph.edges.size();
    };
    for (bool const isBack : {false, true}) {
        auto const edges = [&](GridPoint const& a, GridPoint const& b) {
            return isBack ? edgesOf(b, a) : edgesOf(a, b);
        };
        EXPECT_EQ(edges({-1, 0}, {0, -1}), 3u) << "the lower left corner";
        EXPECT_EQ(edges({-1, 0}, {0, 1}), 2u) << "the upper left corner";
        EXPECT_EQ(edges({-1, -2}, {2, 1}), 2u) << "the lower right corner";
        EXPECT_EQ(edges({-2, -1}, {1, 2}), 2u) << "the upper left corner, farther off";
        EXPECT_EQ(edges({-3, 2}, {2, -3}), 3u) << "the lower left corner, farther off";
    }
}

// Half a step up or right is rounded up, on both sides of zero.
TEST(RoundSides, CrossingsBetweenStepsGoToTheGreaterOne) {
    for (std::int32_t const at : {-3, -2, -1, 0, 1, 2}) {
        Pulse pulse;
        // The diagonals of a square of one step cross in its middle.
        Sides const sides = {{{at - 5, at - 5}, {at + 6, at + 6}}, {{at - 5, at + 6}, {at + 6, at - 5}}};
        GridGraph const graph = RoundSides(sides, pulse);
        ASSERT_EQ(graph.vertices.size(), 5u);
        EXPECT_EQ(graph.vertices[2], (GridPoint{at + 1, at + 1}));
        ExpectAsRoundedSlowly(sides);
    }
}

TEST(RoundSides, SidesThatFallTogetherAreCountedWithTheirDirections) {
    Pulse pulse;
    GridPoint const a{0, 0};
    GridPoint const b{4, 6};
    Sides const sides = {{a, b}, {b, a}, {a, b}, {{0, 0}, {2, 3}}, {{6, 9}, {2, 3}}};
    GridGraph const graph = RoundSides(sides, pulse);
    // From 0 0 to 2 3 run two sides there, one back, and one there; then two, one back, one back.
    ASSERT_EQ(graph.edges.size(), 3u);
    EXPECT_EQ(graph.edges[0].balance, 2);
    EXPECT_EQ(graph.edges[0].count, 4);
    EXPECT_EQ(graph.edges[1].balance, 0);
    EXPECT_EQ(graph.edges[1].count, 4);
    EXPECT_EQ(graph.edges[2].balance, -1);
    EXPECT_EQ(graph.edges[2].count, 1);
    ExpectAsRoundedSlowly(sides);
}

TEST(RoundSides, SidesOfAFewStepsAreRoundedAsSlowly) {
    std::mt19937 random(21);
    for (int run = 0; run < 400; ++run) {
        ExpectAsRoundedSlowly(RandomSides(random, 1 + run % 16, 1 + run % 12));
        if (HasFatalFailure()) FAIL() << run;
    }
}

// Cells of the search are then long or flat, and lie on both sides of zero.
TEST(RoundSides, LongAndFlatHeapsAreRoundedAsSlowly) {
    std::mt19937 random(22);
    for (int run = 0; run < 40; ++run) {
        Sides sides = RandomSides(random, 30, 12);
        for (GridSide& s : sides) {
            for (GridPoint* const p : {&s.from, &s.to}) {
                p->x = p->x * (run % 4 == 0 ? 500 : 1) + (run % 5 - 2) * 700;
                p->y = p->y * (run % 4 == 1 ? 500 : 1) - (run % 3 - 1) * 90;
            }
        }
        ExpectAsRoundedSlowly(sides);
        if (HasFatalFailure()) FAIL() << run;
    }
}

// Far apart from the rest of the layer, so that all of a heap is in one cell, which is divided.
TEST(RoundSides, AHeapInOneCornerOfAWideLayerIsRoundedAsSlowly) {
    std::mt19937 random(23);
    for (std::int32_t const reach : {40, 300, 5000}) {
        Sides sides = RandomSides(random, 90, reach);
        constexpr std::int32_t kFar = 1 << 24;
        sides.push_back({{kFar, kFar}, {kFar + 3, kFar - 1}});
        sides.push_back({{-kFar, -kFar}, {-kFar, 5 - kFar}});
        ExpectAsRoundedSlowly(sides);
        if (HasFatalFailure()) FAIL() << reach;
    }
}

// Many sides beside each other that hardly cross, in one direction, in which they are told apart.
TEST(RoundSides, SheavesOfSidesAreRoundedAsSlowly) {
    std::mt19937 random(24);
    std::uniform_int_distribution<std::int32_t> any(-6, 6);
    for (int run = 0; run < 24; ++run) {
        Sides sides;
        std::int32_t const dx = run % 4 == 0 ? 0 : 400;
        std::int32_t const dy = run % 4 == 1 ? 0 : run % 4 == 2 ? 400 : -300;
        for (std::int32_t i = 0; i < 60; ++i) {
            GridPoint const a{i * (dy == 0 ? 0 : 5) + any(random), i * (dx == 0 ? 0 : 5) + any(random)};
            GridPoint const b{a.x + dx + any(random), a.y + dy + any(random)};
            if (a == b) continue;
            sides.push_back(i % 3 == 0 ? GridSide{b, a} : GridSide{a, b});
        }
        ExpectAsRoundedSlowly(sides);
        if (HasFatalFailure()) FAIL() << run;
    }
}

// Long sides that all pass one small part of the layer, each with a part of its own in front of it and
// behind.
TEST(RoundSides, LongSidesThroughOneWaistAreRoundedAsSlowly) {
    std::mt19937 random(25);
    std::uniform_int_distribution<std::int32_t> off(-40, 40);
    std::uniform_int_distribution<std::int32_t> along(-100000, 100000);
    for (int run = 0; run < 4; ++run) {
        Sides sides;
        for (int i = 0; i < 32; ++i) {
            // From all around, or from two sides alone.
            std::int32_t const dx = run % 2 == 0 ? along(random) : 90000 + 20 * off(random);
            std::int32_t const dy = run % 2 == 0 ? along(random) : along(random) / 9;
            GridPoint const waist{20000 * (run / 2) + off(random), off(random)};
            std::int32_t const share = 1 + i % 3;
            GridSide const side{{waist.x - dx / share, waist.y - dy / share}, {waist.x + dx, waist.y + dy}};
            sides.push_back(i % 2 == 0 ? side : GridSide{side.to, side.from});
        }
        ExpectAsRoundedSlowly(sides);
        if (HasFatalFailure()) FAIL() << run;
    }
}

}  // namespace
}  // namespace varnet
