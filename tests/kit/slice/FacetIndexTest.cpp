#include "slice/FacetIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <span>
#include <vector>

namespace varnet {

namespace {

struct Mesh {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
};

// Flat, tall and tiny facets, with heights on layers and between them, some of them outside of all layers; a
// few with equal corners or without numbers.
Mesh RandomMesh(std::size_t facets) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> height(-1.0, 11.0);
    Mesh mesh;
    for (int i = 0; i < 2000; ++i) {
        double const z = i % 3 == 0 ? 0.25 * std::floor(4.0 * height(random)) : height(random);
        mesh.points.push_back({height(random), height(random), z});
    }
    mesh.points[7].x = std::numeric_limits<double>::quiet_NaN();
    mesh.points[8].z = 2e10;
    for (std::size_t i = 0; i < facets; ++i) {
        auto const pick = [&random] { return static_cast<std::int32_t>(random() % 2000); };
        mesh.triangles.push_back({pick(), pick(), pick()});
    }
    return mesh;
}

int SlowFirstAbove(LayerHeights const& heights, double z) {
    for (int number = 1; number <= heights.count; ++number) {
        if (heights.CutHeight(number) > z) return number;
    }
    return heights.count + 1;
}

LayerHeights Layers(int count) { return {0.0, 10.0 / count, count, 10.0}; }

// Layer by layer, by looking at all facets and all heights.
void ExpectIndexOf(Mesh const& mesh, int count, int threads) {
    LayerHeights const heights = Layers(count);
    Pulse pulse;
    FacetIndex const index({mesh.points, mesh.triangles, false, false}, heights, false, threads, pulse);
    std::vector<std::vector<std::uint32_t>> starting(static_cast<std::size_t>(count) + 1);
    std::vector<int> reach(static_cast<std::size_t>(count) + 1, 0);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Triangle const& t = mesh.triangles[i];
        if (t[0] == t[1] || t[1] == t[2] || t[2] == t[0]) continue;
        double z[3];
        bool usable = true;
        for (std::size_t k = 0; k < 3; ++k) {
            Point3 const& p = mesh.points[static_cast<std::size_t>(t[k])];
            usable = usable && std::fabs(p.x) <= 1e10 && std::fabs(p.z) <= 1e10;
            z[k] = p.z;
        }
        if (!usable) continue;
        int first = 0;
        int last = 0;
        for (int n = 1; n <= count; ++n) {
            double const cut = heights.CutHeight(n);
            if (!(*std::min_element(z, z + 3) < cut && cut <= *std::max_element(z, z + 3))) continue;
            if (first == 0) first = n;
            last = n;
        }
        if (first == 0) continue;
        starting[static_cast<std::size_t>(first)].push_back(static_cast<std::uint32_t>(i));
        int& farthest = reach[static_cast<std::size_t>(first)];
        farthest = std::max(farthest, last);
    }
    for (int n = 1; n <= count; ++n) {
        auto const facets = index.StartingAt(n);
        ASSERT_TRUE(std::equal(facets.begin(), facets.end(), starting[static_cast<std::size_t>(n)].begin(),
                               starting[static_cast<std::size_t>(n)].end()))
            << n;
        ASSERT_EQ(reach[static_cast<std::size_t>(n)], index.ReachOf(n)) << n;
    }
}

}  // namespace

TEST(FacetIndex, FacetsStandAtTheFirstLayerThatCutsThem) {
    Mesh const mesh = RandomMesh(5000);
    for (int const count : {1, 2, 20, 300}) ExpectIndexOf(mesh, count, 1);
}

// As many facets as several threads share.
TEST(FacetIndex, IsTheSameForAnyNumberOfThreads) {
    Mesh const mesh = RandomMesh(300'000);
    for (int const threads : {1, 2, 3, 64}) ExpectIndexOf(mesh, 20, threads);
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
        FacetIndex const index({points, triangles, false, false}, heights, true, 1, pulse);
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
    EXPECT_EQ(startOf(0, 1, 1.5), 12);
    EXPECT_EQ(startOf(1.5, 2, 2), 0);
    EXPECT_EQ(startOf(2.5, 3, 3), 0);
    EXPECT_EQ(startOf(0.5, 0.5, 0.5), 0);
}

TEST(FacetIndex, FacetsKeepTheirOrderAndThoseWithoutThreeCornersAreLeftOut) {
    LayerHeights const heights{0.0, 1.0, 2, 2.0};
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 2}, {0, 1, 1}, {0, NAN, 2}, {0, 2e10, 2}};
    std::vector<Triangle> const triangles{{0, 1, 2}, {0, 0, 2}, {0, 1, 3}, {0, 1, 4}, {0, 1, 5}, {2, 1, 0}};
    Pulse pulse;
    FacetIndex const index({points, triangles, false, false}, heights, false, 1, pulse);
    std::span<std::uint32_t const> const first = index.StartingAt(1);
    EXPECT_EQ(std::vector<std::uint32_t>(first.begin(), first.end()), (std::vector<std::uint32_t>{0, 2, 5}));
    EXPECT_EQ(index.ReachOf(1), 2);
    EXPECT_EQ(index.ReachOf(2), 0);
}

TEST(FacetIndex, CornersMayBeAsFarAsTenMillionMetresOnEachAxis) {
    double const most = 1e10;
    for (double Point3::*const axis : {&Point3::x, &Point3::y, &Point3::z}) {
        for (double const sign : {1.0, -1.0}) {
            for (double const far : {most, std::nextafter(most, HUGE_VAL)}) {
                std::vector<Point3> points{{0, 0, 0}, {1, 0, 1}, {0, 1, 1}};
                points[1].*axis = sign * far;
                EXPECT_EQ(IsUsable({points, {}, false, false}, {0, 1, 2}), far == most);
                EXPECT_EQ(IsUsable({points, {}, false, false}, {1, 0, 2}), far == most);
                EXPECT_EQ(IsUsable({points, {}, false, false}, {0, 2, 1}), far == most);
            }
        }
    }
}

}  // namespace varnet
