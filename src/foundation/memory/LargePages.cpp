#include "foundation/memory/LargePages.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "foundation/Require.h"

#if defined(__linux__)
#include <sys/mman.h>
#elif defined(_WIN32)
#include <malloc.h>
#endif

namespace varnet {

#if defined(__linux__)

// So much more is taken than needed that it holds an aligned part; the rest goes back at once, untouched.
void* AllocateLargePages(std::size_t nSize) {
    VARNET_REQUIRE(nSize > 0 && nSize % kLargePage == 0);
    std::size_t const nTaken = nSize + kLargePage;
    if (nTaken < nSize) throw std::bad_alloc();
    void* const pTaken = mmap(nullptr, nTaken, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pTaken == MAP_FAILED) throw std::bad_alloc();
    char* const pFirst = static_cast<char*>(pTaken);
    std::size_t const nBefore =
        (kLargePage - reinterpret_cast<std::uintptr_t>(pTaken) % kLargePage) % kLargePage;
    if (nBefore != 0) munmap(pFirst, nBefore);
    munmap(pFirst + nBefore + nSize, nTaken - nBefore - nSize);
    madvise(pFirst + nBefore, nSize, MADV_HUGEPAGE);
    return pFirst + nBefore;
}

void FreeLargePages(void* pMemory, std::size_t nSize) noexcept { munmap(pMemory, nSize); }

namespace {

// Whether the page may be kept: its content is not needed any more, but its memory stays while there is
// enough.
bool OfferToSystem(void* pPage) noexcept { return madvise(pPage, kLargePage, MADV_FREE) == 0; }

}  // namespace

#else

void* AllocateLargePages(std::size_t nSize) {
    // Not every C library sees that a size and what it adds to it is more than a number holds.
    if (nSize > std::numeric_limits<std::size_t>::max() / 2 - 2 * kLargePage) throw std::bad_alloc();
#if defined(_WIN32)
    void* const pMemory = _aligned_malloc(nSize, kLargePage);
#else
    void* const pMemory = std::aligned_alloc(kLargePage, nSize);
#endif
    if (pMemory == nullptr) throw std::bad_alloc();
    return std::memset(pMemory, 0, nSize);
}

void FreeLargePages(void* pMemory, std::size_t) noexcept {
#if defined(_WIN32)
    _aligned_free(pMemory);
#else
    std::free(pMemory);
#endif
}

namespace {

// Memory kept here could not be had by others.
bool OfferToSystem(void*) noexcept { return false; }

}  // namespace

#endif

namespace {

constexpr std::size_t kMostKept = 96;

// Pages that wait for the next mesh, a place for each, null where there is none.
constinit std::array<std::atomic<void*>, kMostKept> s_Kept{};

void* TakeKept() noexcept {
    for (std::atomic<void*>& place : s_Kept) {
        if (place.load(std::memory_order_relaxed) == nullptr) continue;
        if (void* const pPage = place.exchange(nullptr, std::memory_order_acquire)) return pPage;
    }
    return nullptr;
}

// Made with the first page that is kept, and gone when the library is unloaded or the process ends.
struct Sweeper {
    Sweeper() = default;
    Sweeper(Sweeper const&) = delete;
    Sweeper& operator=(Sweeper const&) = delete;
    ~Sweeper() {
        while (void* const pPage = TakeKept()) FreeLargePages(pPage, kLargePage);
    }
};

bool Keep(void* pPage) noexcept {
    static Sweeper const s_Sweeper;
    for (std::atomic<void*>& place : s_Kept) {
        void* pNone = nullptr;
        if (place.load(std::memory_order_relaxed) == nullptr &&
            place.compare_exchange_strong(pNone, pPage, std::memory_order_release)) {
            return true;
        }
    }
    return false;
}

}  // namespace

void* TakeLargePage() {
    if (void* const pPage = TakeKept()) return pPage;
    return AllocateLargePages(kLargePage);
}

void GiveLargePage(void* pPage) noexcept {
    if (!OfferToSystem(pPage) || !Keep(pPage)) FreeLargePages(pPage, kLargePage);
}

}  // namespace varnet
