#include "foundation/LargePages.h"

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

#endif
