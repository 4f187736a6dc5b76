#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "slice/FillLines.h"

namespace varnet {
namespace {

std::vector<Point2> Rectangle(double x0, double y0, double x1, double y1) {
    return {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
}

Layer Filled(std::vector<std::vector<Point2>> const& contours, FillStyle const& style,
             std::vector<std::vector<Point2>> const& clear = {}) {
    Paths paths;
    for (auto const& contour : contours) paths.Add(contour, true);
    Paths clearPaths;
    for (auto const& contour : clear) clearPaths.Add(contour, true);
    Layer layer;
    Pulse pulse;
    FillContours(paths, clearPaths, style, layer, pulse);
    return layer;
}

TEST(Fill, ASquareGetsOneChainThatTurns) {
    Layer const layer = Filled({Rectangle(0, 0, 10, 10)}, {1.0, 0.0, kFillId});
    ASSERT_EQ(layer.ChainCount(), 1u);
    ASSERT_EQ(layer.strokes.size(), 10u);
    EXPECT_EQ(layer.chainIds[0], kFillId);
    for (std::size_t i = 0; i < 10; ++i) {
        Stroke const& stroke = layer.strokes[i];
        EXPECT_DOUBLE_EQ(stroke.from.y, static_cast<double>(i) + 0.5);
        EXPECT_DOUBLE_EQ(stroke.to.y, static_cast<double>(i) + 0.5);
        EXPECT_DOUBLE_EQ(stroke.from.x, i % 2 == 0 ? 0.5 : 9.5);
        EXPECT_DOUBLE_EQ(stroke.to.x, i % 2 == 0 ? 9.5 : 0.5);
    }
}

TEST(Fill, AHoleDividesChains) {
    Layer const layer = Filled({Rectangle(0, 0, 10, 10), Rectangle(3, 3, 7, 7)}, {1.0, 0.0, kSupportId});
    // Below the hole, on its left, on its right, and above it.
    ASSERT_EQ(layer.ChainCount(), 4u);
    std::vector<std::size_t> lengths;
    for (std::size_t i = 0; i < 4; ++i) lengths.push_back(layer.ChainStrokes(i).size());
    EXPECT_EQ(lengths, std::vector<std::size_t>({3, 4, 4, 3}));
    EXPECT_EQ(layer.SupportStrokeCount(), 14u);
    EXPECT_NEAR(layer.StrokeLength(), 6 * 9.0 + 8 * 2.0, 1e-9);
}

TEST(Fill, ShortStrokesAndUnseenGaps) {
    // Less than twice the spacing between contours leaves no stroke.
    EXPECT_EQ(Filled({Rectangle(0, 0, 1.99, 10)}, {1.0, 0.0, kFillId}).strokes.size(), 0u);
    EXPECT_EQ(Filled({Rectangle(0, 0, 2.01, 10)}, {1.0, 0.0, kFillId}).strokes.size(), 10u);
    std::vector<std::vector<Point2>> const narrow{Rectangle(0, 0, 10, 1), Rectangle(5, 0, 5.04, 1)};
    EXPECT_EQ(Filled(narrow, {1.0, 0.0, kFillId}).strokes.size(), 1u);
    std::vector<std::vector<Point2>> const wide{Rectangle(0, 0, 10, 1), Rectangle(5, 0, 5.06, 1)};
    EXPECT_EQ(Filled(wide, {1.0, 0.0, kFillId}).strokes.size(), 2u);
}

// The strokes of each chain, as (line, from, to) with from below to.
using Strokes = std::vector<std::array<double, 3>>;
std::vector<Strokes> ChainsOf(Layer const& layer) {
    std::vector<Strokes> chains;
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        Strokes strokes;
        for (Stroke const& s : layer.ChainStrokes(i))
            strokes.push_back({s.from.y, std::min(s.from.x, s.to.x), std::max(s.from.x, s.to.x)});
        chains.push_back(strokes);
    }
    return chains;
}

// Strokes of two lines that meet above each other in a point alone do not overlap: each case has the strokes
// of the line at 0.5, then those of the line at 1.5, as they come out, half a millimetre shorter at each end.
// The strip to keep clear of is narrower than a gap that is passed over, and so is what it leaves.
TEST(Fill, WhatIsKeptClearAtTheRimIsNoGap) {
    FillStyle const style{1.0, 0.0, kFillId};
    Layer const first = Filled({Rectangle(0, 0, 10, 1)}, style, {Rectangle(0, 0, 0.04, 1)});
    ASSERT_EQ(first.strokes.size(), 1u);
    EXPECT_DOUBLE_EQ(first.strokes[0].from.x, 0.54);
    EXPECT_DOUBLE_EQ(first.strokes[0].to.x, 9.5);
    Layer const last = Filled({Rectangle(0, 0, 10, 1)}, style, {Rectangle(9.96, 0, 10, 1)});
    ASSERT_EQ(last.strokes.size(), 1u);
    EXPECT_DOUBLE_EQ(last.strokes[0].from.x, 0.5);
    EXPECT_DOUBLE_EQ(last.strokes[0].to.x, 9.46);
    Layer const middle = Filled({Rectangle(0, 0, 10, 1)}, style, {Rectangle(5, 0, 5.04, 1)});
    EXPECT_EQ(middle.strokes.size(), 1u);
}

TEST(Fill, AStrokeThatEndsWhereOneOfTheNextLineBeginsIsNotBelowIt) {
    auto const chains = [](std::vector<std::array<double, 2>> const& lower,
                           std::vector<std::array<double, 2>> const& upper) {
        std::vector<std::vector<Point2>> contours;
        for (auto const& [from, to] : lower) contours.push_back(Rectangle(from - 0.5, 0, to + 0.5, 1));
        for (auto const& [from, to] : upper) contours.push_back(Rectangle(from - 0.5, 1, to + 0.5, 2));
        return ChainsOf(Filled(contours, {1.0, 0.0, kFillId}));
    };
    using Chains = std::vector<Strokes>;
    EXPECT_EQ(chains({{1, 5}}, {{5, 7}}), (Chains{{{0.5, 1, 5}}, {{1.5, 5, 7}}}));
    EXPECT_EQ(chains({{5, 7}}, {{1, 5}}), (Chains{{{0.5, 5, 7}}, {{1.5, 1, 5}}}));
    // The one before it ends there, and the next one goes on in it.
    EXPECT_EQ(chains({{1, 5}, {7, 9}}, {{5, 9}}), (Chains{{{0.5, 1, 5}}, {{0.5, 7, 9}, {1.5, 5, 9}}}));
    // The one behind it begins there.
    EXPECT_EQ(chains({{1, 4}, {6, 9}}, {{2, 6}}), (Chains{{{0.5, 1, 4}, {1.5, 2, 6}}, {{0.5, 6, 9}}}));
    // Of two strokes above it, one begins or ends where it ends or begins.
    EXPECT_EQ(chains({{1, 6}}, {{1, 4}, {6, 8}}), (Chains{{{0.5, 1, 6}, {1.5, 1, 4}}, {{1.5, 6, 8}}}));
    EXPECT_EQ(chains({{4, 8}}, {{1, 4}, {6, 8}}), (Chains{{{0.5, 4, 8}, {1.5, 6, 8}}, {{1.5, 1, 4}}}));
    // Both are above it: it goes on in neither, though either is near enough.
    EXPECT_EQ(chains({{1, 7}}, {{1, 4.5}, {6, 7}}), (Chains{{{0.5, 1, 7}}, {{1.5, 1, 4.5}}, {{1.5, 6, 7}}}));
    // It is above both.
    EXPECT_EQ(chains({{1, 4.5}, {6, 7}}, {{1, 7}}), (Chains{{{0.5, 1, 4.5}}, {{0.5, 6, 7}}, {{1.5, 1, 7}}}));
}

TEST(Fill, AChainGoesOnOverThreeSpacingsAndNoMore) {
    for (auto const& [to, count] : std::vector<std::pair<double, std::size_t>>{{7.0, 1}, {7.001, 2}}) {
        Layer const layer = Filled({Rectangle(0, 0, 4, 1), Rectangle(0, 1, to, 2)}, {1.0, 0.0, kFillId});
        EXPECT_EQ(layer.ChainCount(), count) << to;
    }
}

TEST(Fill, StrokesOfJustTheLeastLengthAndGapsOfJustTheLeastWidthStay) {
    EXPECT_EQ(Filled({Rectangle(0, 0, 2, 1)}, {1.0, 0.0, kFillId}).strokes.size(), 1u);
    std::vector<std::vector<Point2>> const gap{Rectangle(0, 0, 10, 16), Rectangle(4, 0, 4.8, 16)};
    EXPECT_EQ(Filled(gap, {16.0, 0.0, kFillId}).strokes.size(), 0u) << "too short for this spacing";
    std::vector<std::vector<Point2>> const wide{Rectangle(0, 0, 80, 16), Rectangle(36, 0, 36.8125, 16)};
    EXPECT_EQ(Filled(wide, {16.0, 0.0, kFillId}).strokes.size(), 2u);
    std::vector<std::vector<Point2>> const narrow{Rectangle(0, 0, 80, 16), Rectangle(36, 0, 36.75, 16)};
    EXPECT_EQ(Filled(narrow, {16.0, 0.0, kFillId}).strokes.size(), 1u);
}

// A twentieth of 20 mm is a millimetre to the bit.
TEST(Fill, AGapOfJustATwentiethOfTheSpacingIsSeen) {
    auto const strokes = [](double gap) {
        return Filled({Rectangle(0, 0, 200, 20), Rectangle(100, 0, 100 + gap, 20)}, {20.0, 0.0, kFillId})
            .strokes.size();
    };
    EXPECT_EQ(strokes(1.0), 2u);
    EXPECT_EQ(strokes(std::nextafter(1.0, 0.0) - 1e-13), 1u);
}

// On the way back it is the left ends that are one above the other.
TEST(Fill, AChainThatTurnedGoesOnFromItsLeftEnd) {
    auto const chains = [](double from, double to) {
        return Filled({Rectangle(0, 0, 4, 1), Rectangle(0, 1, 4, 2), Rectangle(from, 2, to, 3)},
                      {1.0, 0.0, kFillId})
            .ChainCount();
    };
    EXPECT_EQ(chains(0, 20), 1u);
    EXPECT_EQ(chains(-3, 4), 1u);
    EXPECT_EQ(chains(-3.001, 4), 2u);
}

TEST(Fill, ALineThatAContourBeginsAtIsItsOwnAndOneThatItEndsAtIsNot) {
    Layer const layer = Filled({Rectangle(0, 0.5, 10, 2.5)}, {1.0, 0.0, kFillId});
    ASSERT_EQ(layer.strokes.size(), 2u);
    EXPECT_EQ(layer.strokes[0].from.y, 0.5);
    EXPECT_EQ(layer.strokes[1].from.y, 1.5);
}

TEST(Fill, AnEmptyLineEndsAChain) {
    EXPECT_EQ(Filled({Rectangle(0, 0, 10, 1), Rectangle(0, 2, 10, 3)}, {1.0, 0.0, kFillId}).ChainCount(), 2u);
    EXPECT_EQ(Filled({Rectangle(0, 0, 10, 2), Rectangle(0, 2, 10, 3)}, {1.0, 0.0, kFillId}).ChainCount(), 1u);
}

// At 90 degrees lines run upwards, and the first is the one on the right.
TEST(Fill, LinesRunAtTheAngle) {
    Layer const layer = Filled({Rectangle(0, 0, 2, 10)}, {1.0, 90.0, kSupportId});
    ASSERT_EQ(layer.strokes.size(), 2u);
    EXPECT_NEAR(layer.strokes[0].from.x, 1.5, 1e-12);
    EXPECT_NEAR(layer.strokes[0].from.y, 0.5, 1e-12);
    EXPECT_NEAR(layer.strokes[0].to.x, 1.5, 1e-12);
    EXPECT_NEAR(layer.strokes[0].to.y, 9.5, 1e-12);
    EXPECT_NEAR(layer.strokes[1].from.x, 0.5, 1e-12);
    EXPECT_NEAR(layer.strokes[1].from.y, 9.5, 1e-12);
    EXPECT_EQ(layer.chainIds, std::vector<std::int32_t>{kSupportId});
}

TEST(Fill, ChainsHaveAtMost200Strokes) {
    Layer const layer = Filled({Rectangle(0, 0, 10, 450)}, {1.0, 0.0, kFillId});
    ASSERT_EQ(layer.ChainCount(), 3u);
    EXPECT_EQ(layer.ChainStrokes(0).size(), 200u);
    EXPECT_EQ(layer.ChainStrokes(2).size(), 50u);
}

TEST(Fill, NothingIsFilledByNothing) {
    EXPECT_EQ(Filled({}, FillStyle()).ChainCount(), 0u);
    EXPECT_EQ(Filled({}, FillStyle(), {Rectangle(0, 0, 5, 5)}).ChainCount(), 0u);
    EXPECT_EQ(Filled({Rectangle(1, 1, 4, 4)}, FillStyle(), {Rectangle(0, 0, 5, 5)}).ChainCount(), 0u);
}

bool Holds(std::vector<std::vector<Point2>> const& contours, Point2 const& p) {
    bool inside = false;
    for (auto const& path : contours) {
        for (std::size_t k = 0; k < path.size(); ++k) {
            Point2 const& a = path[k];
            Point2 const& b = path[k + 1 < path.size() ? k + 1 : 0];
            if ((a.y <= p.y) == (b.y <= p.y)) continue;
            if (a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y) > p.x) inside = !inside;
        }
    }
    return inside;
}

// Along each line, what strokes cover is what points along it say, but for the inset and what is too short.
TEST(Fill, StrokesLieWhereALookAtEachPointSays) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> anywhere(0.0, 20.0);
    for (int round = 0; round < 20; ++round) {
        std::vector<std::vector<Point2>> contours(2);
        std::vector<std::vector<Point2>> clear(1);
        for (int k = 0; k < 7; ++k) {
            contours[0].push_back({anywhere(random), anywhere(random)});
            contours[1].push_back({anywhere(random), anywhere(random)});
            clear[0].push_back({anywhere(random), anywhere(random)});
        }
        FillStyle const style{0.5, 30.0, kFillId};
        Layer const layer =
            Filled(contours, style, round % 2 == 0 ? clear : std::vector<std::vector<Point2>>());
        if (round % 2 != 0) clear.clear();
        double const c = std::cos(style.angle * std::numbers::pi / 180.0);
        double const s = std::sin(style.angle * std::numbers::pi / 180.0);
        for (Stroke const& stroke : layer.strokes) {
            double const length = std::hypot(stroke.to.x - stroke.from.x, stroke.to.y - stroke.from.y);
            EXPECT_GE(length, 0.5 - 1e-9);
            double const line = (stroke.from.y * c - stroke.from.x * s) / 0.5 - 0.5;
            EXPECT_NEAR(line, std::round(line), 1e-9);
            // Gaps of up to a twentieth of the spacing may lie in it.
            int outside = 0;
            for (int i = 0; i <= 100; ++i) {
                Point2 const p{stroke.from.x + (stroke.to.x - stroke.from.x) * i / 100.0,
                               stroke.from.y + (stroke.to.y - stroke.from.y) * i / 100.0};
                outside += Holds(contours, p) && !Holds(clear, p) ? 0 : 1;
            }
            EXPECT_LE(outside, 3);
        }
        // And the length of all is that of the runs of points on the lines.
        double expected = 0.0;
        constexpr double kStep = 0.002;
        for (int line = -60; line < 60; ++line) {
            double run = 0.0;
            for (double u = -30.0; u < 40.0; u += kStep) {
                double const v = (line + 0.5) * 0.5;
                Point2 const p{u * c - v * s, u * s + v * c};
                if (Holds(contours, p) && !Holds(clear, p)) {
                    run += kStep;
                    continue;
                }
                if (run >= 1.0) expected += run - 0.5;
                run = 0.0;
            }
        }
        EXPECT_NEAR(layer.StrokeLength(), expected, 0.02 * expected + 2.0);
    }
}

TEST(Fill, ChainsStepFromLineToLine) {
    std::vector<Point2> star;
    for (int k = 0; k < 40; ++k) {
        double const angle = k * std::numbers::pi / 20.0;
        double const radius = k % 2 == 0 ? 40.0 : 20.0;
        star.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    Layer const layer = Filled({star}, FillStyle());
    EXPECT_GT(layer.ChainCount(), 10u);
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        std::span<Stroke const> const strokes = layer.ChainStrokes(i);
        ASSERT_FALSE(strokes.empty());
        for (std::size_t k = 0; k + 1 < strokes.size(); ++k) {
            double const step =
                std::hypot(strokes[k + 1].from.x - strokes[k].to.x, strokes[k + 1].from.y - strokes[k].to.y);
            EXPECT_LE(step, std::hypot(0.5, 1.5) + 1e-9);
        }
    }
}

}  // namespace
}  // namespace varnet
