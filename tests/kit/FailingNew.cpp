// The operators stand in a file of their own, where no compiler sees both ends of an allocation.

#include "kit/FailingNew.h"

#include <cstdlib>
#include <new>

std::atomic<bool> g_NewFails{false};

void* operator new(std::size_t size) {
    if (g_NewFails.load(std::memory_order_relaxed)) throw std::bad_alloc();
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
// All that is freed below comes from here: sanitizers have these two of their own otherwise.
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    try {
        return operator new(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}
void operator delete(void* block, std::nothrow_t const&) noexcept { std::free(block); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
