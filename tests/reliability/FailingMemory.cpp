#include "reliability/FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#include "foundation/memory/SlotPool.h"

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

std::atomic<std::int64_t> s_nLive{0};

// Chunks of slots are not counted: how many there are depends on where in one the last work has ended. They
// are aligned to their size. Another block may be so by chance; it is not counted either, when it comes and
// when it goes.
bool IsCounted(void const* pMemory) {
    return pMemory != nullptr &&
           reinterpret_cast<std::uintptr_t>(pMemory) % varnet::slot_layout::kChunkSize != 0;
}

void* Taken(void* pMemory) {
    if (IsCounted(pMemory)) s_nLive.fetch_add(1, std::memory_order_relaxed);
    return pMemory;
}

void Given(void const* pMemory) {
    if (IsCounted(pMemory)) s_nLive.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace

std::int64_t LiveBlocks() { return s_nLive.load(std::memory_order_relaxed); }

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
void __real_free(void* pMemory);

void* __wrap_malloc(std::size_t nSize) { return Fails() ? nullptr : Taken(__real_malloc(nSize)); }
void* __wrap_realloc(void* pMemory, std::size_t nSize) {
    if (Fails()) return nullptr;
    bool const bCounted = IsCounted(pMemory);
    void* const pMoved = __real_realloc(pMemory, nSize);
    if (pMoved == nullptr) return nullptr;
    if (bCounted) s_nLive.fetch_sub(1, std::memory_order_relaxed);
    return Taken(pMoved);
}
void* __wrap_aligned_alloc(std::size_t nAlignment, std::size_t nSize) {
    return Fails() ? nullptr : Taken(__real_aligned_alloc(nAlignment, nSize));
}
void __wrap_free(void* pMemory) {
    Given(pMemory);
    __real_free(pMemory);
}
}

void* operator new(std::size_t nSize) {
    void* const pMemory = Fails() ? nullptr : Taken(__real_malloc(nSize));
    if (pMemory == nullptr) throw std::bad_alloc();
    return pMemory;
}
void* operator new[](std::size_t nSize) { return operator new(nSize); }
void operator delete(void* pMemory) noexcept { __wrap_free(pMemory); }
void operator delete[](void* pMemory) noexcept { __wrap_free(pMemory); }
void operator delete(void* pMemory, std::size_t) noexcept { __wrap_free(pMemory); }
void operator delete[](void* pMemory, std::size_t) noexcept { __wrap_free(pMemory); }
