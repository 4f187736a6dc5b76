#include "foundation/LargePages.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>

#if defined(__linux__)

#include <sys/mman.h>

// So much more is taken than needed that it holds an aligned part; the rest goes back at once, untouched.
void* AllocateLargePages(std::size_t nSize) {
    std::size_t const nTaken = nSize + kLargePage;
    if (nTaken < nSize) throw std::bad_alloc();
    void* const pTaken = mmap(nullptr, nTaken, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pTaken == MAP_FAILED) throw std::bad_alloc();
    char* const pFirst = static_cast<char*>(pTaken);
    std::size_t const nBefore = (kLargePage - reinterpret_cast<std::uintptr_t>(pTaken) % kLargePage) % kLargePage;
    if (nBefore != 0) munmap(pFirst, nBefore);
    munmap(pFirst + nBefore + nSize, nTaken - nBefore - nSize);
    madvise(pFirst + nBefore, nSize, MADV_HUGEPAGE);
    return pFirst + nBefore;
}

void FreeLargePages(void* pMemory, std::size_t nSize) noexcept { munmap(pMemory, nSize); }

namespace {

// Whether the page may be kept: its content is not needed any more, but its memory stays while there is enough.
bool OfferToSystem(void* pPage) noexcept { return madvise(pPage, kLargePage, MADV_FREE) == 0; }

}  // namespace

#else

#if defined(_WIN32)
#include <malloc.h>
#endif

void* AllocateLargePages(std::size_t nSize) {
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

// Pages that wait for the next mesh, a place for each, null where there is none.
class Reserve {
public:
    constexpr Reserve() = default;
    Reserve(Reserve const&) = delete;
    Reserve& operator=(Reserve const&) = delete;
    ~Reserve() {
        while (void* const pPage = Take()) FreeLargePages(pPage, kLargePage);
    }

    void* Take() noexcept {
        for (std::atomic<void*>& place : m_Places) {
            if (place.load(std::memory_order_relaxed) == nullptr) continue;
            if (void* const pPage = place.exchange(nullptr, std::memory_order_acquire)) return pPage;
        }
        return nullptr;
    }

    bool Keep(void* pPage) noexcept {
        for (std::atomic<void*>& place : m_Places) {
            void* pNone = nullptr;
            if (place.load(std::memory_order_relaxed) == nullptr &&
                place.compare_exchange_strong(pNone, pPage, std::memory_order_release)) {
                return true;
            }
        }
        return false;
    }

private:
    static constexpr std::size_t kMostPages = 64;
    std::array<std::atomic<void*>, kMostPages> m_Places{};
};

constinit Reserve s_Reserve;

}  // namespace

void* TakeLargePage() {
    if (void* const pPage = s_Reserve.Take()) return pPage;
    return AllocateLargePages(kLargePage);
}

void GiveLargePage(void* pPage) noexcept {
    if (!OfferToSystem(pPage) || !s_Reserve.Keep(pPage)) FreeLargePages(pPage, kLargePage);
}
