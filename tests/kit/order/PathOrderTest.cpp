#include "varnet/PathOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "varnet/Error.h"

namespace varnet {
namespace {

double Distance(Point2 const& a, Point2 const& b) { return std::hypot(b.x - a.x, b.y - a.y); }

Layer LayerOf(std::vector<Stroke> const& strokes) {
    Layer layer;
    for (Stroke const& stroke : strokes) layer.AddChain(std::span(&stroke, 1), kFillId);
    return layer;
}

std::vector<Stroke> RandomStrokes(unsigned seed, std::size_t count) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> place(0.0, 100.0);
    std::vector<Stroke> strokes;
    for (std::size_t i = 0; i < count; ++i)
        strokes.push_back({{place(random), place(random)}, {place(random), place(random)}});
    return strokes;
}

// Strokes as they stand, each turned so that the lesser end is first.
std::vector<std::array<double, 4>> Sorted(Layer const& layer) {
    std::vector<std::array<double, 4>> sorted;
    for (Stroke const& s : layer.strokes) {
        std::array<double, 4> const there{s.from.x, s.from.y, s.to.x, s.to.y};
        std::array<double, 4> const back{s.to.x, s.to.y, s.from.x, s.from.y};
        sorted.push_back(std::min(there, back));
    }
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

// The points of a contour, from the least on.
std::vector<std::pair<double, double>> Rotated(std::span<Point2 const> points) {
    std::vector<std::pair<double, double>> turned;
    for (Point2 const& p : points) turned.emplace_back(p.x, p.y);
    std::rotate(turned.begin(), std::min_element(turned.begin(), turned.end()), turned.end());
    return turned;
}

TEST(AddTravel, IsTheWayBetweenPathsWithTheMaterialOff) {
    Layer layer = LayerOf({{{3, 4}, {10, 4}}, {{10, 4}, {10, 8}}, {{10, 9}, {0, 9}}});
    Point2 head{0, 0};
    Travel travel;
    AddTravel(layer, head, travel);
    EXPECT_DOUBLE_EQ(5.0 + 0.0 + 1.0, travel.length);
    EXPECT_EQ((Point2{0, 9}), head);
    EXPECT_EQ(3, travel.starts);  // each chain is a start, wherever it begins
    Layer chained;
    std::vector<Stroke> const strokes{{{3, 4}, {10, 4}}, {{10, 4}, {10, 8}}, {{10, 9}, {0, 9}}};
    chained.AddChain(strokes, kFillId);
    head = {0, 0};
    Travel once;
    AddTravel(chained, head, once);
    EXPECT_DOUBLE_EQ(travel.length, once.length);
    EXPECT_EQ(2, once.starts);  // in a chain, a stroke that goes on where the last one ended is none
}

TEST(AddTravel, OfNothingIsNothing) {
    Point2 head{1, 2};
    Travel travel;
    AddTravel(Layer(), head, travel);
    EXPECT_EQ(0.0, travel.length);
    EXPECT_EQ(0, travel.starts);
    EXPECT_EQ((Point2{1, 2}), head);
}

TEST(PathOrder, GoesToTheNearestEndEachTime) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Layer layer = LayerOf(RandomStrokes(seed, 60));
        auto const before = Sorted(layer);
        PathOrder order;
        order.Order(layer);
        ASSERT_EQ(before, Sorted(layer));
        Point2 head;
        double travel = 0.0;
        for (std::size_t i = 0; i < layer.strokes.size(); ++i) {
            double nearest = HUGE_VAL;
            for (std::size_t k = i; k < layer.strokes.size(); ++k) {
                nearest = std::min(
                    {nearest, Distance(head, layer.strokes[k].from), Distance(head, layer.strokes[k].to)});
            }
            ASSERT_DOUBLE_EQ(nearest, Distance(head, layer.strokes[i].from)) << i;
            travel += nearest;
            head = layer.strokes[i].to;
        }
        EXPECT_NEAR(travel, order.After().length, 1e-9);
        EXPECT_EQ(head, order.Head());
        EXPECT_LT(order.After().length, order.Before().length);
    }
}

TEST(PathOrder, TheHeadGoesOnFromTheLayerBefore) {
    PathOrder order;
    Layer first = LayerOf({{{0, 0}, {50, 0}}});
    Layer second = LayerOf({{{0, 1}, {1, 1}}, {{50, 1}, {40, 1}}});
    order.Order(first);
    order.Order(second);
    EXPECT_EQ((Point2{50, 1}), second.strokes[0].from);
    EXPECT_EQ((Point2{1, 1}), second.strokes[1].from);
    EXPECT_EQ((Point2{0, 1}), order.Head());
    EXPECT_DOUBLE_EQ(1.0 + 39.0, order.After().length);
}

TEST(PathOrder, ContoursKeepTheirPointsAndBeginWhereTheHeadEnters) {
    Layer layer;
    std::vector<Point2> const square{{10, 10}, {20, 10}, {20, 20}, {10, 20}};
    std::vector<Point2> const hole{{13, 13}, {13, 17}, {17, 17}, {17, 13}};
    layer.AddContour(square, {});
    layer.AddContour(hole, {true, 0, 1, 1});
    OrderSettings settings;
    settings.start = {21, 21};
    PathOrder order(settings);
    order.Order(layer);
    ASSERT_EQ(2u, layer.ContourCount());
    std::size_t const outer = layer.contours[0].level == 0 ? 0 : 1;
    EXPECT_EQ(Rotated(square), Rotated(layer.ContourPoints(outer)));
    EXPECT_EQ(Rotated(hole), Rotated(layer.ContourPoints(1 - outer)));
    EXPECT_EQ(1, layer.contours[1 - outer].level);
    EXPECT_EQ((Point2{20, 20}), layer.ContourPoints(0)[0]);
}

TEST(PathOrder, FarthestSpreadsAndRandomKeepsAllOfThem) {
    auto const strokes = RandomStrokes(7, 50);
    Layer far = LayerOf(strokes);
    OrderSettings settings;
    settings.fill = NextPath::kFarthest;
    PathOrder farthest(settings);
    farthest.Order(far);
    EXPECT_EQ(Sorted(LayerOf(strokes)), Sorted(far));
    EXPECT_GT(farthest.After().length, farthest.Before().length);
    settings.fill = NextPath::kRandom;
    Layer once = LayerOf(strokes);
    Layer again = LayerOf(strokes);
    PathOrder(settings).Order(once);
    PathOrder(settings).Order(again);
    EXPECT_EQ(Sorted(LayerOf(strokes)), Sorted(once));
    EXPECT_TRUE(once == again);  // of one seed
    settings.seed = 2;
    Layer other = LayerOf(strokes);
    PathOrder(settings).Order(other);
    EXPECT_FALSE(once == other);
}

// A square and the lines in it, which turn at its sides: they are printed in one go.
TEST(PathOrder, SplicedContoursArePrintedWithTheirFill) {
    Layer layer;
    layer.AddContour(std::vector<Point2>{{0, 0}, {20, 0}, {20, 20}, {0, 20}}, {});
    std::vector<Stroke> strokes;
    for (int i = 1; i < 40; ++i) {
        Stroke const there{{0.5, 0.5 * i}, {19.5, 0.5 * i}};
        strokes.push_back(i % 2 == 1 ? there : Stroke{there.to, there.from});
    }
    layer.AddChain(strokes, kFillId);
    double const length = layer.StrokeLength();
    OrderSettings settings;
    settings.splice = true;
    PathOrder order(settings);
    order.Order(layer);
    EXPECT_GE(layer.ContourLength() + layer.StrokeLength(), length + 80.0 - 1e-9);
    // Printed apart, the contour is one start and each line another.
    EXPECT_EQ(40, order.Before().starts);
    EXPECT_LT(order.After().starts, 10);
    double longest = 0.0;
    for (std::size_t i = 0; i < layer.ContourCount(); ++i)
        longest = std::max(longest, LengthOf(layer.ContourPoints(i), false));
    EXPECT_GT(longest, 80.0 + 19.0);
}

// A hole that lies by itself after ordering is still one: files state its direction by its level.
TEST(PathOrder, HolesStayHoles) {
    Layer layer;
    std::vector<std::array<double, 2>> const places{{0, 0}, {40, 0}, {0, 40}, {40, 40}};
    for (auto const& [x, y] : places) {
        auto const outer = static_cast<std::int32_t>(layer.ContourCount());
        layer.AddContour(std::vector<Point2>{{x, y}, {x + 20, y}, {x + 20, y + 20}, {x, y + 20}}, {});
        layer.AddContour(
            std::vector<Point2>{{x + 5, y + 5}, {x + 5, y + 15}, {x + 15, y + 15}, {x + 15, y + 5}},
            {true, outer, 1, 1});
    }
    for (NextPath const next : {NextPath::kNearest, NextPath::kFarthest, NextPath::kRandom}) {
        Layer ordered = layer;
        OrderSettings settings;
        settings.contours = next;
        PathOrder(settings).Order(ordered);
        ASSERT_EQ(8u, ordered.ContourCount());
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_EQ(SignedArea(ordered.ContourPoints(i)) < 0.0, ordered.contours[i].IsHole()) << i;
        EXPECT_DOUBLE_EQ(layer.Area(), ordered.Area());
    }
}

TEST(PathOrder, LayersOfNothingAndOfTheWorst) {
    PathOrder order;
    Layer empty;
    order.Order(empty);
    EXPECT_TRUE(empty == Layer());
    EXPECT_EQ(0.0, order.After().length);
    // Whatever is in a layer, it comes back; what has no place stays out.
    double const bad[] = {std::nan(""), HUGE_VAL, 1e300, 0.0};
    for (double const d : bad) {
        Layer layer = LayerOf({{{d, 0}, {1, 1}}, {{0, 0}, {1, 0}}, {{0, d}, {d, d}}});
        layer.AddContour(std::vector<Point2>{{d, d}, {0, 0}, {1, 0}}, {});
        layer.AddContour(std::vector<Point2>{{0, 0}}, {});
        layer.AddContour({}, {});
        PathOrder(OrderSettings{}).Order(layer);
        OrderSettings spliced;
        spliced.splice = true;
        PathOrder(spliced).Order(layer);
        EXPECT_LE(layer.strokes.size(), 100u) << d;
    }
}

TEST(PathOrder, SettingsThatMakeNoSenseAreRefused) {
    for (double const d : {-1.0, std::nan(""), HUGE_VAL}) {
        for (double OrderSettings::*const field : {&OrderSettings::width, &OrderSettings::cut}) {
            OrderSettings settings;
            settings.*field = d;
            try {
                PathOrder const order(settings);
                ADD_FAILURE() << d;
            } catch (Error const& error) {
                EXPECT_EQ(ErrorKind::kArgument, error.Kind());
            }
        }
    }
}

}  // namespace
}  // namespace varnet
