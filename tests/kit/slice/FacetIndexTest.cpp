#include "slice/FacetIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
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

TEST(LayerHeights, FirstAboveIsTheFirstCutAboveAHeight) {
    std::mt19937 random(6);
    for (int count : {1, 3, 1000}) {
        LayerHeights const heights = Layers(count);
        for (int n = 0; n < 2000; ++n) {
            int const layer = 1 + static_cast<int>(random() % static_cast<unsigned>(count));
            double z = heights.CutHeight(layer);
            if (n % 3 == 1) z = std::nextafter(z, -1e9);
            if (n % 3 == 2) z = std::nextafter(z, 1e9);
            int expected = 1;
            while (expected <= count && !(heights.CutHeight(expected) > z)) ++expected;
            ASSERT_EQ(expected, heights.FirstAbove(z)) << count << " " << z;
        }
        EXPECT_EQ(1, heights.FirstAbove(-1e300));
        EXPECT_EQ(count + 1, heights.FirstAbove(1e300));
    }
}

}  // namespace varnet
