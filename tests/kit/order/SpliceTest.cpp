// Contours that are spliced with their fill, and what takes no part in that.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "varnet/Error.h"
#include "varnet/PathOrder.h"

namespace varnet {
namespace {

OrderSettings Spliced() {
    OrderSettings settings;
    settings.splice = true;
    return settings;
}

void AddStroke(Layer& layer, Point2 const& from, Point2 const& to) {
    layer.AddChain(std::vector<Stroke>{{from, to}}, kFillId);
}

TEST(Splice, FillInNoContourIsOrderedFromTheNearestEndOn) {
    Layer layer;
    AddStroke(layer, {90, 0}, {80, 0});
    AddStroke(layer, {10, 0}, {20, 0});
    AddStroke(layer, {60, 0}, {50, 0});
    AddStroke(layer, {1, 0}, {2, 0});
    PathOrder order(Spliced());
    order.Order(layer);
    ASSERT_EQ(layer.ChainCount(), 4u);
    EXPECT_EQ(
        layer.strokes,
        (std::vector<Stroke>{{{1, 0}, {2, 0}}, {{10, 0}, {20, 0}}, {{50, 0}, {60, 0}}, {{80, 0}, {90, 0}}}));
    EXPECT_EQ(order.Head(), (Point2{90, 0}));
    EXPECT_EQ(order.After().length, 1.0 + 8.0 + 30.0 + 20.0);
    EXPECT_EQ(order.After().starts, 4);
    EXPECT_EQ(order.Before().starts, 4);
}

TEST(Splice, FillOutsideComesBehindTheContoursAndGoesOnWhereTheyEnd) {
    Layer layer;
    AddStroke(layer, {100, 5}, {90, 5});
    AddStroke(layer, {40, 5}, {30, 5});
    layer.AddContour(std::vector<Point2>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {});
    PathOrder order(Spliced());
    order.Order(layer);
    ASSERT_GE(layer.ChainCount(), 2u);
    std::size_t const last = layer.strokes.size() - 1;
    EXPECT_EQ(layer.strokes[last - 1], (Stroke{{30, 5}, {40, 5}}));
    EXPECT_EQ(layer.strokes[last], (Stroke{{90, 5}, {100, 5}}));
    EXPECT_EQ(order.Head(), (Point2{100, 5}));
}

TEST(Splice, NothingIsLostOrAdded) {
    Layer layer;
    layer.AddContour(std::vector<Point2>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {});
    layer.AddContour(std::vector<Point2>{{30, 0}, {40, 0}, {40, 10}, {30, 10}}, {});
    double before = 80.0;
    for (int i = 1; i < 10; ++i) {
        for (double const x : {0.0, 30.0, 60.0}) {
            AddStroke(layer, {x + 1, 1.0 * i}, {x + 9, 1.0 * i});
            before += 8.0;
        }
    }
    PathOrder order(Spliced());
    order.Order(layer);
    double after = layer.StrokeLength();
    for (std::size_t i = 0; i < layer.ContourCount(); ++i)
        after += LengthOf(layer.ContourPoints(i), layer.contours[i].closed);
    // Links of at most 1.8 strokes come to it, one a stroke or contour.
    EXPECT_GE(after, before - 1e-9);
    EXPECT_LE(after, before + 0.9 * (27 + 4));
}

TEST(Order, FillCountsAsFarAwayFromAHundredBillionKilometresOn) {
    double const far = 1e14;
    for (double const sign : {1.0, -1.0}) {
        for (bool const isFar : {true, false}) {
            double const at = sign * (isFar ? far : std::nextafter(far, 0.0));
            for (bool const alongX : {true, false}) {
                Layer layer;
                // In order the near end comes first, and what is far away stays as it is.
                AddStroke(layer, alongX ? Point2{at, 0} : Point2{0, at}, {1, 1});
                AddStroke(layer, {50, 0}, {60, 0});
                PathOrder order;
                order.Order(layer);
                ASSERT_EQ(layer.strokes.size(), 2u);
                Stroke const& other = layer.strokes[isFar ? 0 : 1];
                EXPECT_EQ(other.from.x + other.to.x, 110.0) << at;
            }
        }
    }
}

TEST(Order, WhatAPathIsStaysWithIt) {
    Layer layer;
    layer.number = 12;
    layer.z = 2.5;
    layer.cutHeight = 2.25;
    Contour open;
    open.closed = false;
    open.id = 5;
    layer.AddContour(std::vector<Point2>{{9, 9}, {8, 8}, {7, 9}}, open);
    layer.AddContour(std::vector<Point2>{{0, 0}, {4, 0}, {4, 4}}, {true, -1, 0, 3});
    layer.AddChain(std::vector<Stroke>{{{1, 1}, {2, 1}}}, 44);
    PathOrder order;
    order.Order(layer);
    EXPECT_EQ(layer.number, 12);
    EXPECT_EQ(layer.z, 2.5);
    EXPECT_EQ(layer.cutHeight, 2.25);
    ASSERT_EQ(layer.ContourCount(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(layer.contours[i].id, layer.contours[i].closed ? 3 : 5);
        EXPECT_EQ(layer.ContourPoints(i).size(), 3u);
    }
    EXPECT_EQ(layer.chainIds, std::vector<std::int32_t>{44});
}

TEST(Order, AHeadThatStartsNowhereIsRefused) {
    for (double const d : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        for (Point2 const& start : {Point2{d, 0}, Point2{0, d}}) {
            OrderSettings settings;
            settings.start = start;
            EXPECT_THROW(PathOrder{settings}, Error);
        }
    }
    OrderSettings none;
    none.width = 0.0;
    none.cut = 0.0;
    EXPECT_NO_THROW(PathOrder{none});
}

TEST(Order, AStepOfATenthOfAMicronIsAStart) {
    for (double const sign : {1.0, -1.0}) {
        for (bool const alongX : {true, false}) {
            for (bool const isStep : {true, false}) {
                double const d = sign * (isStep ? 1e-4 : std::nextafter(1e-4, 0.0));
                Layer layer;
                layer.AddChain(
                    std::vector<Stroke>{{{5, 5}, {0, 0}}, {alongX ? Point2{d, 0} : Point2{0, d}, {3, 3}}},
                    kFillId);
                Point2 head;
                Travel travel;
                AddTravel(layer, head, travel);
                EXPECT_EQ(travel.starts, isStep ? 2 : 1);
            }
        }
    }
}

}  // namespace
}  // namespace varnet
