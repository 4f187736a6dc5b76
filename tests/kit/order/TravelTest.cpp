#include "varnet/PathOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "varnet/Error.h"

namespace varnet {
namespace {

// A square from (0, 0) to (10, 10).
Layer WithSquare() {
    Layer layer;
    layer.number = 7;
    layer.z = 1.25;
    layer.cutHeight = 1.125;
    std::vector<Point2> const square = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    layer.AddContour(square, {});
    return layer;
}

TEST(AddTravel, CountsAStartForEachPathAndForEachStrokeThatBeginsElsewhere) {
    Layer layer = WithSquare();
    std::vector<Point2> const open = {{0, 10}, {5, 5}};
    Contour path;
    path.closed = false;
    layer.AddContour(open, path);
    Point2 head{3, 4};
    Travel travel;
    AddTravel(layer, head, travel);
    EXPECT_EQ(travel.length, 5.0 + 10.0);  // to (0, 0), where the square ends too, and to (0, 10)
    EXPECT_EQ(travel.starts, 2);
    EXPECT_EQ(head, (Point2{5, 5}));

    // A chain that begins where the head stands costs no way, and is a start all the same.
    Layer fill;
    fill.AddChain(std::vector<Stroke>{{{5, 5}, {5, 8}}, {{5, 8}, {9, 8}}, {{9, 9}, {5, 9}}}, kFillId);
    fill.AddChain(std::vector<Stroke>{{{5, 9}, {4, 9}}}, kFillId);
    travel = {};
    AddTravel(fill, head, travel);
    EXPECT_EQ(travel.length, 1.0);
    EXPECT_EQ(travel.starts, 3);
    EXPECT_EQ(head, (Point2{4, 9}));
}

TEST(AddTravel, AContourWithoutPointsIsNoStart) {
    Layer layer;
    layer.AddContour({}, {});
    layer.AddContour(std::vector<Point2>{{3, 4}, {8, 4}, {8, 9}}, {});
    layer.AddContour({}, {});
    layer.AddContour(std::vector<Point2>{{3, 10}, {8, 10}, {8, 15}}, {});
    Point2 head{0, 0};
    Travel travel;
    AddTravel(layer, head, travel);
    EXPECT_EQ(travel.length, 5.0 + 6.0);
    EXPECT_EQ(travel.starts, 2);
    EXPECT_EQ(head, (Point2{3, 10}));
}

// A ten-thousandth of a millimetre on either axis.
TEST(AddTravel, StrokesThatBeginNearlyWhereTheLastOneEndedGoOnInIt) {
    auto const starts = [](double dx, double dy) {
        Layer layer;
        layer.AddChain(std::vector<Stroke>{{{0, 0}, {1, 1}}, {{1 + dx, 1 + dy}, {2, 2}}}, kFillId);
        Point2 head;
        Travel travel;
        AddTravel(layer, head, travel);
        EXPECT_NEAR(travel.length, travel.starts == 1 ? 0.0 : std::hypot(dx, dy), 1e-15);
        return travel.starts;
    };
    EXPECT_EQ(starts(0.000099, -0.000099), 1);
    EXPECT_EQ(starts(0.000101, 0.0), 2);
    EXPECT_EQ(starts(0.0, -0.000101), 2);
    // To the bit, about the origin.
    auto const fromOrigin = [](Point2 const& next) {
        Layer layer;
        layer.AddChain(std::vector<Stroke>{{{1, 1}, {0, 0}}, {next, {2, 2}}}, kFillId);
        Point2 head;
        Travel travel;
        AddTravel(layer, head, travel);
        return travel.starts;
    };
    double const below = std::nextafter(1e-4, 0.0);
    EXPECT_EQ(fromOrigin({below, -below}), 1);
    EXPECT_EQ(fromOrigin({1e-4, 0.0}), 2);
    EXPECT_EQ(fromOrigin({0.0, -1e-4}), 2);
}

TEST(OrderedTravel, WhatALayerIsStaysAsItIs) {
    for (bool const splice : {false, true}) {
        OrderSettings settings;
        settings.splice = splice;
        settings.width = settings.cut = 0.0;
        Layer layer = WithSquare();
        PathOrder(settings).Order(layer);
        EXPECT_EQ(layer.number, 7);
        EXPECT_EQ(layer.z, 1.25);
        EXPECT_EQ(layer.cutHeight, 1.125);
        EXPECT_DOUBLE_EQ(layer.Area(), 100.0);
    }
}

TEST(OrderedTravel, AHeadThatStartsNowhereIsRefused) {
    for (double const nowhere : {HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        for (double Point2::*const axis : {&Point2::x, &Point2::y}) {
            OrderSettings settings;
            settings.start.*axis = nowhere;
            try {
                PathOrder const order(settings);
                ADD_FAILURE();
            } catch (Error const& error) {
                EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
                EXPECT_STREQ(error.what(), "the head must start at a point");
            }
        }
    }
}

// Contours by chance, and fill that is not.
TEST(OrderedTravel, OneSeedGivesOneOrderOfContoursToo) {
    auto const ordered = [](unsigned seed) {
        OrderSettings settings;
        settings.contours = NextPath::kRandom;
        settings.seed = seed;
        Layer layer;
        for (int i = 0; i < 40; ++i) {
            double const x = 3.0 * i;
            layer.AddContour(std::vector<Point2>{{x, 0}, {x + 1, 0}, {x, 1}}, {true, -1, 0, i});
        }
        PathOrder(settings).Order(layer);
        std::vector<std::int32_t> ids;
        for (Contour const& contour : layer.contours) ids.push_back(contour.id);
        return ids;
    };
    EXPECT_EQ(ordered(5), ordered(5));
    EXPECT_NE(ordered(5), ordered(6));
    EXPECT_EQ(ordered(5).size(), 40u);
}

// Beyond 1e14 no pass finds anything: such fill comes last, as it was.
// Splicing draws nothing.
TEST(OrderedTravel, OnlyAnOrderByChanceSeedsTheDraws) {
    auto const drawn = [](unsigned seed) {
        std::srand(seed);
        return std::rand();
    };
    int const ofHost = drawn(5);
    int const ofOrder = drawn(9);
    ASSERT_NE(ofHost, ofOrder);
    for (NextPath const contours : {NextPath::kNearest, NextPath::kFarthest, NextPath::kRandom}) {
        for (NextPath const fill : {NextPath::kNearest, NextPath::kFarthest, NextPath::kRandom}) {
            for (bool const splice : {false, true}) {
                OrderSettings settings;
                settings.contours = contours;
                settings.fill = fill;
                settings.splice = splice;
                settings.seed = 9;
                std::srand(5);
                PathOrder const order(settings);
                bool const chance = contours == NextPath::kRandom || fill == NextPath::kRandom;
                EXPECT_EQ(std::rand(), chance && !splice ? ofOrder : ofHost);
            }
        }
    }
}

TEST(OrderedTravel, FillThatIsTooFarAwayComesLast) {
    PathOrder order;
    Layer layer;
    layer.AddChain(std::vector<Stroke>{{{2e14, 0}, {1, 0}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{5, 0}, {6, 0}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{2, 0}, {3, 0}}, {{0, 2e14}, {0, 1}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{1, 0}, {0, 0}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{1e14, 0}, {7, 0}}}, kFillId);
    order.Order(layer);
    ASSERT_EQ(layer.ChainCount(), 5u);
    EXPECT_EQ(layer.ChainStrokes(0)[0], (Stroke{{0, 0}, {1, 0}}));
    EXPECT_EQ(layer.ChainStrokes(1)[0], (Stroke{{5, 0}, {6, 0}}));
    EXPECT_EQ(layer.ChainStrokes(2)[0], (Stroke{{2e14, 0}, {1, 0}}));
    EXPECT_EQ(layer.ChainStrokes(3).size(), 2u);
    EXPECT_EQ(layer.ChainStrokes(4)[0], (Stroke{{1e14, 0}, {7, 0}}));
}

// Contours, too, each of them once: a hole is no part of its outer contour's list any more.
TEST(OrderedTravel, NestedContoursThatAreTooFarAwayComeLast) {
    double const far = 1e17;
    auto const square = [](double x, double from, double to) {
        return std::vector<Point2>{{x + from, from}, {x + to, from}, {x + to, to}, {x + from, to}};
    };
    Layer layer;
    layer.AddContour(square(far, 0, 1024), {});
    std::vector<Point2> hole = square(far, 256, 512);
    std::reverse(hole.begin(), hole.end());
    layer.AddContour(hole, {true, 0, 1, 1});
    layer.AddContour(square(0, 0, 10), {});
    PathOrder order;
    order.Order(layer);
    ASSERT_EQ(layer.ContourCount(), 3u);
    EXPECT_EQ(layer.ContourPoints(0)[0], (Point2{0, 0}));
    EXPECT_EQ(layer.ContourPoints(1).size(), 4u);
    EXPECT_EQ(layer.ContourPoints(1)[0], (Point2{far, 0}));
    EXPECT_EQ(layer.ContourPoints(2)[0], hole[0]);
}

TEST(OrderedTravel, OneSeedGivesOneOrder) {
    auto const ordered = [](unsigned seed) {
        OrderSettings settings;
        settings.fill = settings.contours = NextPath::kRandom;
        settings.seed = seed;
        PathOrder order(settings);
        Layer layer;
        for (int i = 0; i < 40; ++i) {
            double const x = i;
            layer.AddChain(std::vector<Stroke>{{{x, 0}, {x, 1}}}, i);
        }
        order.Order(layer);
        return layer.chainIds;
    };
    EXPECT_EQ(ordered(5), ordered(5));
    EXPECT_NE(ordered(5), ordered(6));
    std::vector<std::int32_t> ids = ordered(5);
    std::sort(ids.begin(), ids.end());
    ASSERT_EQ(ids.size(), 40u);
    for (std::int32_t i = 0; i < 40; ++i) EXPECT_EQ(ids[static_cast<std::size_t>(i)], i);
}

}  // namespace
}  // namespace varnet
