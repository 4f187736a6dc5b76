#include "varnet/PathOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

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
}

// Beyond 1e14 no pass finds anything: such fill comes last, as it was.
TEST(OrderedTravel, FillThatIsTooFarAwayComesLast) {
    PathOrder order;
    Layer layer;
    layer.AddChain(std::vector<Stroke>{{{2e14, 0}, {1, 0}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{5, 0}, {6, 0}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{2, 0}, {3, 0}}, {{0, 2e14}, {0, 1}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{1, 0}, {0, 0}}}, kFillId);
    order.Order(layer);
    ASSERT_EQ(layer.ChainCount(), 4u);
    EXPECT_EQ(layer.ChainStrokes(0)[0], (Stroke{{0, 0}, {1, 0}}));
    EXPECT_EQ(layer.ChainStrokes(1)[0], (Stroke{{5, 0}, {6, 0}}));
    EXPECT_EQ(layer.ChainStrokes(2)[0], (Stroke{{2e14, 0}, {1, 0}}));
    EXPECT_EQ(layer.ChainStrokes(3).size(), 2u);
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
