#include "slice/FacetIndex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <span>
#include <vector>

namespace varnet {
namespace {

int SlowFirstAbove(LayerHeights const& heights, double z) {
    for (int number = 1; number <= heights.count; ++number) {
        if (heights.CutHeight(number) > z) return number;
    }
    return heights.count + 1;
}

TEST(LayerHeights, TheFirstLayerAboveAHeightIsTheOneThatALookAtEachFinds) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> share(-0.2, 1.2);
    for (double const bottom : {0.0, -3.7, 1e6}) {
        LayerHeights const heights{bottom, 0.1, 57, bottom + 5.66};
        for (int number = 1; number <= heights.count; ++number) {
            double const cut = heights.CutHeight(number);
            EXPECT_EQ(heights.FirstAbove(cut), number + 1);
            EXPECT_EQ(heights.FirstAbove(std::nextafter(cut, -HUGE_VAL)), number);
        }
        for (int i = 0; i < 1000; ++i) {
            double const z = bottom + 5.66 * share(random);
            EXPECT_EQ(heights.FirstAbove(z), SlowFirstAbove(heights, z));
        }
        EXPECT_EQ(heights.FirstAbove(-1e300), 1);
        EXPECT_EQ(heights.FirstAbove(1e300), 58);
    }
}

// Doubles near 1e10 are 19 of these layers apart, so that many are cut at one height.
TEST(LayerHeights, WhereManyLayersAreCutAtOneHeightTheFirstBehindThemIsFound) {
    LayerHeights const heights{1e10, 1e-7, 500, 1e10 + 5e-5};
    ASSERT_EQ(heights.CutHeight(1), heights.CutHeight(8));
    double z = 1e10;
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(heights.FirstAbove(z), SlowFirstAbove(heights, z)) << i;
        z = std::nextafter(z, HUGE_VAL);
    }
}

TEST(FacetIndex, AFacetStandsWithTheFirstLayerThatCutsIt) {
    // Cut at 0.5, 1.5 and 2.5.
    LayerHeights const heights{0.0, 1.0, 3, 3.0};
    auto const startOf = [&](double a, double b, double c) {
        std::vector<Point3> const points{{0, 0, a}, {1, 0, b}, {0, 1, c}};
        std::vector<Triangle> const triangles{{0, 1, 2}};
        Pulse pulse;
        FacetIndex const index({points, triangles, false, false}, heights, true, pulse);
        int start = 0;
        for (int number = 1; number <= 3; ++number) {
            if (!index.StartingAt(number).empty()) start = 10 * number + index.ReachOf(number);
        }
        return start;
    };
    EXPECT_EQ(startOf(0, 1, 3), 13);
    EXPECT_EQ(startOf(0.6, 0.7, 1.6), 22);
    EXPECT_EQ(startOf(0.6, 0.7, 1.4), 0);
    // What reaches just up to a cut is cut, and what begins there is not.
    EXPECT_EQ(startOf(0, 0, 0.5), 11);
    EXPECT_EQ(startOf(0.5, 0.6, 1.5), 22);
    EXPECT_EQ(startOf(1.5, 2, 2), 0);
    EXPECT_EQ(startOf(2.5, 3, 3), 0);
    EXPECT_EQ(startOf(0.5, 0.5, 0.5), 0);
}

TEST(FacetIndex, FacetsKeepTheirOrderAndThoseWithoutThreeCornersAreLeftOut) {
    LayerHeights const heights{0.0, 1.0, 2, 2.0};
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 2}, {0, 1, 1}, {0, NAN, 2}, {0, 2e10, 2}};
    std::vector<Triangle> const triangles{{0, 1, 2}, {0, 0, 2}, {0, 1, 3}, {0, 1, 4}, {0, 1, 5}, {2, 1, 0}};
    Pulse pulse;
    FacetIndex const index({points, triangles, false, false}, heights, false, pulse);
    std::span<std::uint32_t const> const first = index.StartingAt(1);
    EXPECT_EQ(std::vector<std::uint32_t>(first.begin(), first.end()), (std::vector<std::uint32_t>{0, 2, 5}));
    EXPECT_EQ(index.ReachOf(1), 2);
    EXPECT_EQ(index.ReachOf(2), 0);
}

}  // namespace
}  // namespace varnet
