#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace varnet {

/// Memory for what grows with a mesh, in large pages where the system has them: fewer faults when it is first
/// touched, fewer misses of the address cache when it is walked in any order. New elements of plain types are
/// not set: resize leaves what the memory holds.
template <class T>
class LargeAllocator {
public:
    using value_type = T;
    static constexpr std::size_t kPage = std::size_t{1} << 21;

    LargeAllocator() = default;
    template <class U>
    LargeAllocator(LargeAllocator<U> const&) {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T)) throw std::bad_array_new_length();
        std::size_t const bytes = count * sizeof(T);
        auto const align = std::align_val_t(IsLarge(count) ? kPage : alignof(std::max_align_t));
        void* const memory = ::operator new(bytes, align);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
        // What is refused is no loss.
        if (IsLarge(count)) static_cast<void>(::madvise(memory, bytes, MADV_HUGEPAGE));
#endif
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t count) noexcept {
        ::operator delete(memory, std::align_val_t(IsLarge(count) ? kPage : alignof(std::max_align_t)));
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
    static bool IsLarge(std::size_t count) { return count * sizeof(T) >= 2 * kPage; }
};

template <class T>
using LargeVector = std::vector<T, LargeAllocator<T>>;

/// Brings the memory at the address into the processor's cache.
inline void Prefetch([[maybe_unused]] void const* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

}  // namespace varnet
