#include "foundation/memory/LargePages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <utility>
#include <vector>

using namespace varnet;

namespace {

// Of two sizes: a table on the heap, and one of three large pages.
constexpr std::size_t kFew = 100;
constexpr std::size_t kMany = 3 * kLargePage / sizeof(std::uint64_t) - 5;

template <class Table>
bool IsZero(Table const& table) {
    return std::all_of(table.begin(), table.end(), [](std::uint64_t n) { return n == 0; });
}

}  // namespace

TEST(LargePages, AreAlignedAndZero) {
    for (std::size_t nPages = 1; nPages <= 3; ++nPages) {
        std::size_t const nSize = nPages * kLargePage;
        auto* const pBytes = static_cast<unsigned char*>(AllocateLargePages(nSize));
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pBytes) % kLargePage);
        EXPECT_EQ(0u, pBytes[0]);
        EXPECT_EQ(0, std::memcmp(pBytes, pBytes + 1, nSize - 1));
        std::memset(pBytes, 0xAB, nSize);
        FreeLargePages(pBytes, nSize);
    }
}

TEST(LargePages, MoreThanThereIsEndsByBadAlloc) {
    constexpr std::size_t kTooMuch = static_cast<std::size_t>(-1) / kLargePage * kLargePage;
    EXPECT_THROW(AllocateLargePages(kTooMuch), std::bad_alloc);
    EXPECT_THROW(AllocateLargePages(kTooMuch / 2 / kLargePage * kLargePage), std::bad_alloc);
}

// More than are ever kept, so that some go back to the system and come anew.
TEST(LargePages, PagesGivenBackCanBeHadAgain) {
    constexpr std::size_t kPages = 80;
    for (int nRound = 0; nRound < 3; ++nRound) {
        std::vector<void*> pages;
        for (std::size_t i = 0; i < kPages; ++i) {
            pages.push_back(TakeLargePage());
            EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(pages[i]) % kLargePage);
            std::memset(pages[i], static_cast<int>(i), 4096);
        }
        EXPECT_EQ(kPages, std::set<void*>(pages.begin(), pages.end()).size());
        for (std::size_t i = 0; i < kPages; ++i) {
            auto const* const pBytes = static_cast<unsigned char const*>(pages[i]);
            EXPECT_EQ(i, pBytes[0]);
            EXPECT_EQ(i, pBytes[4095]);
            GiveLargePage(pages[i]);
        }
    }
}

TEST(LargePages, NoPageIsHadByTwoThreads) {
    std::array<int, 4> wrong{};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([&wrong, t] {
            for (int nRound = 0; nRound < 200; ++nRound) {
                std::array<std::size_t*, 3> pages{};
                for (std::size_t*& pPage : pages) *(pPage = static_cast<std::size_t*>(TakeLargePage())) = t;
                for (std::size_t* const pPage : pages) {
                    if (*pPage != t) ++wrong[t];
                    GiveLargePage(pPage);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ((std::array<int, 4>{}), wrong);
}

TEST(ZeroedTable, BeginsAsZeroBytesAtEachSize) {
    EXPECT_TRUE(ZeroedTable<std::uint64_t>().empty());
    EXPECT_TRUE(ZeroedTable<std::uint64_t>(0).empty());
    for (std::size_t const nRecords : {std::size_t{1}, kFew, kMany}) {
        ZeroedTable<std::uint64_t> table(nRecords);
        EXPECT_EQ(nRecords, table.size());
        EXPECT_FALSE(table.empty());
        EXPECT_TRUE(IsZero(table));
        table[nRecords - 1] = 7;
        EXPECT_EQ(7u, *(table.end() - 1));
    }
}

TEST(ZeroedTable, MovesWithWhatItHolds) {
    for (std::size_t const nRecords : {kFew, kMany}) {
        ZeroedTable<std::uint64_t> table(nRecords);
        table[3] = 33;
        ZeroedTable<std::uint64_t> moved(std::move(table));
        EXPECT_EQ(33u, moved[3]);
        ZeroedTable<std::uint64_t> target(kFew);
        target = std::move(moved);
        EXPECT_EQ(nRecords, target.size());
        EXPECT_EQ(33u, target[3]);
        ZeroedTable<std::uint64_t> const old =
            std::exchange(target, ZeroedTable<std::uint64_t>(2 * nRecords));
        EXPECT_EQ(33u, old[3]);
        EXPECT_EQ(2 * nRecords, target.size());
        EXPECT_TRUE(IsZero(target));
    }
}
