// Facets as readers hand them on, a thousand at a time.

#include "part/FacetSink.h"

#include <gtest/gtest.h>

#include <cmath>

#include "kit/part/PartChecks.h"

namespace varnet {
namespace {

struct Taken {
    RawMesh raw;
    IntakeReport report;
};
using Facets = std::vector<std::array<Point3, 3>>;
std::unique_ptr<Taken> Take(Facets const& facets, double scale = 1.0) {
    auto taken = std::make_unique<Taken>();
    FacetSink sink(taken->raw, taken->report, scale, facets.size());
    for (auto const& [a, b, c] : facets) sink.Add(a, b, c);
    sink.Flush();
    return taken;
}

TEST(FacetSink, SignsOfZerosThatDifferFromTheirPointAreNoted) {
    for (int axis = 0; axis < 3; ++axis) {
        // No other coordinate is a zero.
        std::array<double, 3> zero = {1, 1, 1};
        zero[static_cast<std::size_t>(axis)] = 0.0;
        std::array<double, 3> negative = zero;
        negative[static_cast<std::size_t>(axis)] = -0.0;
        Point3 const first = {zero[0], zero[1], zero[2]};
        Point3 const second = {negative[0], negative[1], negative[2]};
        Point3 const b = {5, 6, 7};
        Point3 const c = {8, 9, 7};
        auto const taken = Take(Facets{{first, b, c}, {c, b, second}});
        ASSERT_EQ(taken->raw.zeros.size(), 1u) << axis;
        EXPECT_EQ(taken->raw.zeros[0].corner, 5);
        EXPECT_EQ(taken->raw.zeros[0].negative, 1u << axis);
        auto const turned = Take(Facets{{second, b, c}, {c, first, b}});
        ASSERT_EQ(turned->raw.zeros.size(), 1u);
        EXPECT_EQ(turned->raw.zeros[0].corner, 4);
        EXPECT_EQ(turned->raw.zeros[0].negative, 0u);
    }
}

TEST(FacetSink, AFacetWithoutAreaIsKnownWhateverComesBehindIt) {
    Facets facets;
    for (int i = 0; i < 5000; ++i) {
        double const x = i;
        facets.push_back({Point3{x, 0, 0}, Point3{x + 1, 0, 0}, Point3{x, 1, 0}});
    }
    EXPECT_FALSE(Take(facets)->raw.hasCollinear);
    for (std::size_t const at : {0u, 1023u, 1024u, 4999u}) {
        auto changed = facets;
        changed[at][2] = {changed[at][0].x + 2, 0, 0};
        EXPECT_TRUE(Take(changed)->raw.hasCollinear) << at;
    }
}

TEST(FacetSink, SumsAreThoseOfAllFacetsAboutTheFirstCorner) {
    Facets facets;
    for (int i = 0; i < 3000; ++i) {
        double const z = i % 7;
        facets.push_back({Point3{1.0 * i, 2, z}, Point3{1.0 * i + 2, 2, z}, Point3{1.0 * i, 4, z}});
    }
    auto const taken = Take(facets, 2.0);
    EXPECT_EQ(taken->report.facetsRead, 3000);
    EXPECT_EQ(taken->raw.sums.about, (Point3{0, 4, 0}));
    // Each has a doubled area of 4, and 16 where everything is twice as long.
    EXPECT_EQ(taken->raw.sums.area2, 16.0 * 3000);
    EXPECT_EQ(taken->raw.sums.normals, (Point3{0, 0, 16.0 * 3000}));
    double heights = 0.0;
    for (int i = 0; i < 3000; ++i) heights += 2.0 * (i % 7);
    EXPECT_EQ(taken->raw.sums.volume6, 16.0 * heights);
}

}  // namespace
}  // namespace varnet
