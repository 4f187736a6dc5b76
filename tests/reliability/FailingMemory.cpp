#include "reliability/FailingMemory.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
thread_local std::size_t t_nLeft = kNever;
thread_local bool t_bFailed = false;

bool Fails() {
    if (t_nLeft == kNever) return false;
    if (t_nLeft > 0) {
        --t_nLeft;
        return false;
    }
    t_nLeft = kNever;
    t_bFailed = true;
    return true;
}

}  // namespace

FailingMemory::FailingMemory(std::size_t nFailing) {
    t_bFailed = false;
    t_nLeft = nFailing;
}

FailingMemory::~FailingMemory() { t_nLeft = kNever; }

bool FailingMemory::HasFailed() const { return t_bFailed; }

// The linker leads the library's calls here (--wrap).
extern "C" {
void* __real_malloc(std::size_t nSize);
void* __real_realloc(void* pMemory, std::size_t nSize);
void* __real_aligned_alloc(std::size_t nAlignment, std::size_t nSize);

void* __wrap_malloc(std::size_t nSize) { return Fails() ? nullptr : __real_malloc(nSize); }
void* __wrap_realloc(void* pMemory, std::size_t nSize) {
    return Fails() ? nullptr : __real_realloc(pMemory, nSize);
}
void* __wrap_aligned_alloc(std::size_t nAlignment, std::size_t nSize) {
    return Fails() ? nullptr : __real_aligned_alloc(nAlignment, nSize);
}
}

void* operator new(std::size_t nSize) {
    void* const pMemory = Fails() ? nullptr : __real_malloc(nSize);
    if (pMemory == nullptr) throw std::bad_alloc();
    return pMemory;
}
void* operator new[](std::size_t nSize) { return operator new(nSize); }
void operator delete(void* pMemory) noexcept { std::free(pMemory); }
void operator delete[](void* pMemory) noexcept { std::free(pMemory); }
void operator delete(void* pMemory, std::size_t) noexcept { std::free(pMemory); }
void operator delete[](void* pMemory, std::size_t) noexcept { std::free(pMemory); }
