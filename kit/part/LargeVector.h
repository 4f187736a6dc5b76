#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

#include "part/LargeBlocks.h"

namespace varnet {

/// Memory for what grows with a mesh: what is large comes from large_blocks, in large pages, so that there
/// are fewer faults when it is first touched, and fewer misses of the address cache when it is walked in any
/// order. New elements of plain types are not set: resize leaves what the memory holds.
template <class T>
class LargeAllocator {
public:
    using value_type = T;

    LargeAllocator() = default;
    template <class U>
    LargeAllocator(LargeAllocator<U> const&) {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_array_new_length();
        std::size_t const bytes = count * sizeof(T);
        return static_cast<T*>(IsLarge(bytes) ? large_blocks::Take(bytes) : ::operator new(bytes));
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        std::size_t const bytes = count * sizeof(T);
        if (IsLarge(bytes)) {
            large_blocks::Give(memory, bytes);
        } else {
            ::operator delete(memory);
        }
    }

    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        if constexpr (sizeof...(Arguments) == 0) {
            ::new (static_cast<void*>(place)) U;
        } else {
            ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
        }
    }

    friend bool operator==(LargeAllocator const&, LargeAllocator const&) { return true; }

private:
    static bool IsLarge(std::size_t bytes) { return bytes >= 2 * large_blocks::kPage; }
};

template <class T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

/// Brings the memory at the address into the processor's cache.
inline void BringNear([[maybe_unused]] void const* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

}  // namespace varnet
