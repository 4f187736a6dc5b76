#pragma once

// What some standard libraries lack of C++20, and the sources use: libc++ 14 has none of these. A file of
// CMake includes this ahead of all sources where one is missing (cmake/VarnetPlatform.cmake); each piece
// stands back where the library has its own.

#include <version>

#if !defined(__cpp_lib_to_chars) && (!defined(_LIBCPP_VERSION) || _LIBCPP_VERSION < 200000)
#include "FromChars.h"
#endif

#if !defined(__cpp_lib_atomic_ref)

#include <atomic>

namespace std {

/// A variable as an atomic one, by what compilers of both kinds that lack it have built in.
template <class T>
class atomic_ref {
public:
    explicit atomic_ref(T& value) noexcept : m_Value(&value) {}
    T load(memory_order order = memory_order_seq_cst) const noexcept {
        return __atomic_load_n(m_Value, static_cast<int>(order));
    }
    void store(T value, memory_order order = memory_order_seq_cst) const noexcept {
        __atomic_store_n(m_Value, value, static_cast<int>(order));
    }
    T fetch_add(T step, memory_order order = memory_order_seq_cst) const noexcept {
        return __atomic_fetch_add(m_Value, step, static_cast<int>(order));
    }

private:
    T* m_Value;
};

}  // namespace std

#endif

#if !defined(__cpp_lib_smart_ptr_for_overwrite)

#include <cstddef>
#include <memory>
#include <type_traits>

namespace std {

/// An array whose elements are left as they come.
template <class T>
requires is_unbounded_array_v<T> unique_ptr<T> make_unique_for_overwrite(size_t count) {
    return unique_ptr<T>(new remove_extent_t<T>[count]);
}

}  // namespace std

#endif
