#include "trees/HeightSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace varnet;

namespace {

constexpr double kTolerance = 0.0001;

std::vector<double> Near(std::vector<double> const& heights, double z) {
    std::vector<double> near;
    for (double const h : heights) {
        double const d = h - z;
        if (!(d > kTolerance) && !(d < -kTolerance)) near.push_back(h);
    }
    return near;
}

// Never a wrong answer; "unknown" is allowed, where it stays rare.
void ExpectRight(HeightSet const& set, std::vector<double> const& heights, double z, int& nUnknown) {
    std::vector<double> const near = Near(heights, z);
    HeightSet::Answer const answer = set.Find(z);
    if (answer.near == HeightSet::Near::kUnknown) {
        ++nUnknown;
        return;
    }
    ASSERT_LT(near.size(), 3u) << z;
    ASSERT_EQ(near.size() == 1, answer.near == HeightSet::Near::kOne) << z;
    ASSERT_EQ(near.size() == 2, answer.near == HeightSet::Near::kTwo) << z;
    if (!near.empty()) {
        ASSERT_EQ(*std::min_element(near.begin(), near.end()), answer.dHeight);
        ASSERT_EQ(*std::max_element(near.begin(), near.end()), answer.dUpper);
    }
}

}  // namespace

TEST(HeightSet, EmptySetHasNoHeightNear) {
    HeightSet const set(kTolerance);
    EXPECT_EQ(HeightSet::Near::kNone, set.Find(0.0).near);
    EXPECT_EQ(HeightSet::Near::kNone, set.Find(-1e10).near);
}

TEST(HeightSet, HeightExactlyTheToleranceAwayIsNear) {
    HeightSet set(kTolerance);
    set.Add(0.0);
    set.Add(0.0);
    EXPECT_EQ(HeightSet::Near::kOne, set.Find(0.0001).near);
    EXPECT_EQ(HeightSet::Near::kOne, set.Find(-0.0001).near);
    EXPECT_EQ(0.0, set.Find(0.0001).dHeight);
    EXPECT_EQ(HeightSet::Near::kNone, set.Find(0.000101).near);
    set.Add(0.00015);
    EXPECT_EQ(HeightSet::Near::kTwo, set.Find(0.00008).near);
    EXPECT_EQ(0.00015, set.Find(0.0002).dHeight);
}

TEST(HeightSet, RandomHeightsAreFoundAsByLookingAtEach) {
    std::mt19937 random(6);
    for (double const dSpan : {0.01, 1.0, 1e4, 1e10}) {
        std::uniform_real_distribution<double> anywhere(-dSpan, dSpan);
        HeightSet set(kTolerance);
        std::vector<double> heights;
        int nUnknown = 0;
        for (int n = 0; n < 1200; ++n) {
            double const z = random() % 2 == 0 ? anywhere(random)
                                               : (static_cast<double>(random() % 400) - 200.0) * 0.00005;
            ASSERT_NO_FATAL_FAILURE(ExpectRight(set, heights, z, nUnknown));
            if (!heights.empty()) {
                double const step = (static_cast<double>(random() % 9) - 4.0) * 0.00005;
                ASSERT_NO_FATAL_FAILURE(
                    ExpectRight(set, heights, heights[random() % heights.size()] + step, nUnknown));
            }
            if (!Near(heights, z).empty()) continue;
            heights.push_back(z);
            set.Add(z);
        }
        EXPECT_LT(nUnknown, 240);
    }
}
