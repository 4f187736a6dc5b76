#include "foundation/memory/SlotPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using namespace varnet;

namespace {

struct FacetSlots {
    static constexpr std::size_t kSize = kFacetSlotSize;
    static void* Allocate() { return AllocateFacetSlot(); }
    static void Free(void* p) { FreeFacetSlot(p); }
};

struct VertexSlots {
    static constexpr std::size_t kSize = kVertexSlotSize;
    static void* Allocate() { return AllocateVertexSlot(); }
    static void Free(void* p) { FreeVertexSlot(p); }
};

template <class Slots>
class SlotPoolTest : public testing::Test {};

using SlotKinds = testing::Types<FacetSlots, VertexSlots>;
TYPED_TEST_SUITE(SlotPoolTest, SlotKinds);

// A slot filled with a number of its own.
template <class Slots>
void* Filled(unsigned n) {
    void* const p = Slots::Allocate();
    std::memset(p, static_cast<int>(n & 0xFF), Slots::kSize);
    return p;
}

template <class Slots>
bool Holds(void const* p, unsigned n) {
    auto const* const bytes = static_cast<unsigned char const*>(p);
    return std::all_of(bytes, bytes + Slots::kSize, [n](unsigned char c) { return c == (n & 0xFF); });
}

}  // namespace

TYPED_TEST(SlotPoolTest, SlotsAreAlignedAndDoNotOverlap) {
    std::vector<void*> held;
    for (unsigned n = 0; n < 100000; ++n) held.push_back(Filled<TypeParam>(n));
    for (unsigned n = 0; n < held.size(); ++n) {
        ASSERT_EQ(0u, reinterpret_cast<std::uintptr_t>(held[n]) % alignof(double));
        ASSERT_TRUE(Holds<TypeParam>(held[n], n));
    }
    std::vector<void*> sorted = held;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        ASSERT_GE(reinterpret_cast<std::uintptr_t>(sorted[i]),
                  reinterpret_cast<std::uintptr_t>(sorted[i - 1]) + TypeParam::kSize);
    }
    for (void* const p : held) TypeParam::Free(p);
}

TYPED_TEST(SlotPoolTest, SlotsKeepTheirContentWhileOthersComeAndGo) {
    std::mt19937 random(2);
    std::vector<std::pair<void*, unsigned>> held;
    for (unsigned n = 0; n < 60000; ++n) {
        if (!held.empty() && random() % 3 == 0) {
            std::swap(held[random() % held.size()], held.back());
            ASSERT_TRUE(Holds<TypeParam>(held.back().first, held.back().second));
            TypeParam::Free(held.back().first);
            held.pop_back();
        } else {
            held.emplace_back(Filled<TypeParam>(n), n);
        }
    }
    for (auto const& [p, n] : held) {
        ASSERT_TRUE(Holds<TypeParam>(p, n));
        TypeParam::Free(p);
    }
}

TYPED_TEST(SlotPoolTest, FreeingNothingIsAllowed) { TypeParam::Free(nullptr); }

// Slots of threads that have ended stay good, and any thread may give them back.
TYPED_TEST(SlotPoolTest, SlotsOutliveTheirThreadsAndAreFreedByOthers) {
    std::vector<std::vector<void*>> slots(4);
    std::vector<std::thread> makers;
    for (unsigned t = 0; t < 4; ++t) {
        makers.emplace_back([&slots, t] {
            for (unsigned n = 0; n < 20000; ++n) slots[t].push_back(Filled<TypeParam>(n + t));
        });
    }
    for (std::thread& maker : makers) maker.join();
    std::vector<std::thread> takers;
    std::vector<int> wrong(4);
    for (unsigned t = 0; t < 4; ++t) {
        takers.emplace_back([&slots, &wrong, t] {
            std::vector<void*>& mine = slots[(t + 1) % 4];
            for (unsigned n = 0; n < mine.size(); ++n) {
                if (!Holds<TypeParam>(mine[n], n + (t + 1) % 4)) ++wrong[t];
                TypeParam::Free(mine[n]);
            }
        });
    }
    for (std::thread& taker : takers) taker.join();
    EXPECT_EQ(std::vector<int>(4, 0), wrong);
}

// As many as fill several chunks. Slots and annexes are filled in turn; none is written into another.
TEST(SlotPool, EachVertexSlotHasAnAnnexOfItsOwn) {
    std::vector<unsigned char*> slots;
    for (unsigned n = 0; n < 20000; ++n) {
        slots.push_back(static_cast<unsigned char*>(AllocateVertexSlot()));
        std::memset(slots[n], static_cast<int>(n % 251), kVertexSlotSize);
        std::memset(AnnexOf(slots[n]), static_cast<int>(n % 241), kVertexAnnexSize);
    }
    for (unsigned n = 0; n < slots.size(); ++n) {
        auto const* const pAnnex = static_cast<unsigned char const*>(AnnexOf(slots[n]));
        ASSERT_EQ(0u, reinterpret_cast<std::uintptr_t>(pAnnex) % alignof(void*));
        ASSERT_TRUE(
            std::all_of(slots[n], slots[n] + kVertexSlotSize, [n](unsigned char c) { return c == n % 251; }));
        ASSERT_TRUE(
            std::all_of(pAnnex, pAnnex + kVertexAnnexSize, [n](unsigned char c) { return c == n % 241; }));
    }
    for (unsigned char* const pSlot : slots) FreeVertexSlot(pSlot);
}
