#include "trees/RankSet.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace varnet;

TEST(RankSet, EmptySetHasNoNeighbours) {
    for (std::size_t const nLimit : {std::size_t{1}, std::size_t{64}, std::size_t{65}, std::size_t{300000}}) {
        RankSet const set(nLimit);
        auto const nLast = static_cast<std::uint32_t>(nLimit - 1);
        for (std::uint32_t const n : {0u, nLast / 2, nLast}) {
            EXPECT_FALSE(set.Has(n));
            EXPECT_EQ(RankSet::kNone, set.Above(n));
            EXPECT_EQ(RankSet::kNone, set.Below(n));
        }
    }
}

TEST(RankSet, NumberIsNotItsOwnNeighbour) {
    RankSet set(5000);
    for (std::uint32_t const n : {0u, 63u, 64u, 4095u, 4096u, 4999u}) set.Add(n);
    EXPECT_EQ(RankSet::kNone, set.Below(0));
    EXPECT_EQ(63u, set.Above(0));
    EXPECT_EQ(0u, set.Below(63));
    EXPECT_EQ(64u, set.Above(63));
    EXPECT_EQ(4095u, set.Above(64));
    EXPECT_EQ(4095u, set.Below(4096));
    EXPECT_EQ(4096u, set.Below(4999));
    EXPECT_EQ(RankSet::kNone, set.Above(4999));
}

TEST(RankSet, AgreesWithAnOrderedSetAgainAndAgain) {
    for (unsigned nSeed = 0; nSeed < 60; ++nSeed) {
        SCOPED_TRACE(nSeed);
        std::mt19937 random(nSeed);
        std::uint32_t const nLimit =
            1 + static_cast<std::uint32_t>(random() % (nSeed % 2 == 0 ? 300 : 70000));
        RankSet set(nLimit);
        for (int nRound = 0; nRound < 3; ++nRound) {
            std::set<std::uint32_t> plain;
            for (int i = 0; i < 200; ++i) {
                auto const nAdded = static_cast<std::uint32_t>(random() % nLimit);
                set.Add(nAdded);
                plain.insert(nAdded);
                auto const n = static_cast<std::uint32_t>(random() % nLimit);
                auto const above = plain.upper_bound(n);
                auto const notBelow = plain.lower_bound(n);
                ASSERT_EQ(plain.count(n) != 0, set.Has(n));
                ASSERT_EQ(above == plain.end() ? RankSet::kNone : *above, set.Above(n));
                ASSERT_EQ(notBelow == plain.begin() ? RankSet::kNone : *std::prev(notBelow), set.Below(n));
            }
            for (std::uint32_t const n : plain) set.Forget(n);
            ASSERT_EQ(RankSet::kNone, set.Above(0));
            ASSERT_FALSE(set.Has(0));
        }
    }
}
