// Memory that is kept for the next mesh.

#include "part/LargeBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <random>
#include <thread>
#include <vector>

#include "part/LargeVector.h"

namespace varnet::large_blocks {

namespace {

// What is kept by now makes room for what the test gives back.
void ExpectNothingLost() { EXPECT_LE(Kept(), kMostKept); }

}  // namespace

TEST(LargeBlocks, SizesAreWholePagesAndAQuarterMoreAtMost) {
    EXPECT_EQ(kPage, SizeFor(1));
    EXPECT_EQ(kPage, SizeFor(kPage));
    EXPECT_EQ(2 * kPage, SizeFor(kPage + 1));
    EXPECT_EQ(8 * kPage, SizeFor(8 * kPage));
    EXPECT_EQ(10 * kPage, SizeFor(8 * kPage + 1));
    EXPECT_EQ(10 * kPage, SizeFor(10 * kPage));
    EXPECT_EQ(12 * kPage, SizeFor(10 * kPage + 1));
    EXPECT_EQ(20 * kPage, SizeFor(16 * kPage + 1));
    std::mt19937_64 random(1);
    for (int n = 0; n < 10000; ++n) {
        std::size_t const bytes = 2 * kPage + random() % (std::size_t{1} << (22 + random() % 20));
        std::size_t const size = SizeFor(bytes);
        ASSERT_EQ(0u, size % kPage) << bytes;
        ASSERT_GE(size, bytes);
        ASSERT_TRUE(size - bytes < std::max(kPage, bytes / 4 + 1)) << bytes;
        ASSERT_EQ(size, SizeFor(size)) << bytes;
    }
}

TEST(LargeBlocks, BlocksLieAtPagesAndHoldTheirBytes) {
    std::vector<std::pair<unsigned char*, std::size_t>> blocks;
    for (std::size_t n = 1; n <= 5; ++n) {
        std::size_t const bytes = 2 * kPage * n - n;
        blocks.push_back({static_cast<unsigned char*>(Take(bytes)), bytes});
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(blocks.back().first) % kPage);
        std::memset(blocks.back().first, static_cast<int>(n), bytes);
    }
    for (std::size_t n = 1; n <= 5; ++n) {
        auto const [block, bytes] = blocks[n - 1];
        EXPECT_TRUE(std::all_of(block, block + bytes, [n](unsigned char c) { return c == n; })) << n;
        Give(block, bytes);
        ExpectNothingLost();
    }
}

// Where blocks are kept at all: not under a sanitizer, and not on every system.
TEST(LargeBlocks, BlockOfASizeIsGivenAgain) {
    std::size_t const bytes = 6 * kPage - 100;
    void* const first = Take(bytes);
    std::size_t const before = Kept();
    Give(first, bytes);
    if (Kept() == before) GTEST_SKIP() << "nothing is kept here";
    // Another size leaves it alone; any number of bytes that comes to the size gets it.
    void* const other = Take(3 * kPage);
    EXPECT_NE(first, other);
    void* const again = Take(5 * kPage + 1);
    EXPECT_EQ(first, again);
    void* const fresh = Take(bytes);
    EXPECT_NE(first, fresh);
    Give(other, 3 * kPage);
    Give(again, bytes);
    Give(fresh, bytes);
    ExpectNothingLost();
}

TEST(LargeBlocks, NoMoreIsKeptThanStated) {
    std::vector<void*> blocks;
    for (int n = 0; n < 30; ++n) blocks.push_back(Take(4 * kPage));
    for (void* const block : blocks) {
        Give(block, 4 * kPage);
        ExpectNothingLost();
    }
    // Nor more blocks than there are places: the oldest ones go.
    for (void*& block : blocks) block = Take(kPage);
    for (void* const block : blocks) Give(block, kPage);
    EXPECT_LE(Kept(), 16 * kPage);
    // One that is larger than all that may be kept is not kept, and drives out nothing.
    std::size_t const before = Kept();
    Give(Take(2 * kMostKept), 2 * kMostKept);
    EXPECT_EQ(before, Kept());
}

TEST(LargeBlocks, ThreadsShareThem) {
    auto const work = [](unsigned seed) {
        std::mt19937 random(seed);
        for (int n = 0; n < 200; ++n) {
            std::size_t const bytes = (2 + random() % 4) * kPage;
            auto* const block = static_cast<unsigned*>(Take(bytes));
            block[0] = block[bytes / sizeof *block - 1] = seed;
            std::this_thread::yield();
            ASSERT_EQ(seed, block[0]);
            ASSERT_EQ(seed, block[bytes / sizeof *block - 1]);
            Give(block, bytes);
        }
    };
    std::thread one(work, 1u);
    std::thread two(work, 2u);
    one.join();
    two.join();
    ExpectNothingLost();
}

TEST(LargeVector, KeepsItsElementsWhileItGrows) {
    LargeVector<int> numbers;
    for (int n = 0; n < 3'000'000; ++n) numbers.push_back(n);
    for (int n = 0; n < 3'000'000; ++n) ASSERT_EQ(n, numbers[static_cast<std::size_t>(n)]);
    LargeVector<int> const copy = numbers;
    numbers = LargeVector<int>();
    EXPECT_EQ(2'999'999, copy.back());
    EXPECT_THROW(LargeVector<int>(copy.max_size() + 1), std::exception);
    EXPECT_THROW(static_cast<void>(LargeAllocator<int>().allocate(static_cast<std::size_t>(-1) / 4)),
                 std::bad_array_new_length);
}

}  // namespace varnet::large_blocks
