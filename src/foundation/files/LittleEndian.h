#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace varnet {

// Numbers as the files hold them: little-endian, at any alignment. On little-endian machines each of these
// compiles to a plain load or store.

template <class Unsigned>
Unsigned LoadUnsigned(void const* pBytes) {
    auto const* const p = static_cast<unsigned char const*>(pBytes);
    if constexpr (std::endian::native == std::endian::little) {
        Unsigned value;
        std::memcpy(&value, p, sizeof value);
        return value;
    } else {
        Unsigned value = 0;
        for (unsigned i = sizeof value; i > 0; --i) value = static_cast<Unsigned>(value << 8 | p[i - 1]);
        return value;
    }
}

template <class Unsigned>
void StoreUnsigned(void* pBytes, Unsigned value) {
    auto* const p = static_cast<unsigned char*>(pBytes);
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(p, &value, sizeof value);
    } else {
        for (unsigned i = 0; i < sizeof value; ++i) {
            p[i] = static_cast<unsigned char>(value & 0xFF);
            value = static_cast<Unsigned>(value >> 8);
        }
    }
}

inline float LoadFloat(void const* pBytes) {
    return std::bit_cast<float>(LoadUnsigned<std::uint32_t>(pBytes));
}

inline void StoreFloat(void* pBytes, float fValue) {
    StoreUnsigned(pBytes, std::bit_cast<std::uint32_t>(fValue));
}

inline double LoadDouble(void const* pBytes) {
    return std::bit_cast<double>(LoadUnsigned<std::uint64_t>(pBytes));
}

inline void StoreDouble(void* pBytes, double dValue) {
    StoreUnsigned(pBytes, std::bit_cast<std::uint64_t>(dValue));
}

// Numbers of three bytes. Of a value to store, the low 24 bits count.

inline std::uint32_t LoadUnsigned24(void const* pBytes) {
    auto const* const p = static_cast<unsigned char const*>(pBytes);
    return static_cast<std::uint32_t>(p[0] | p[1] << 8 | p[2] << 16);
}

inline void StoreUnsigned24(void* pBytes, std::uint32_t nValue) {
    auto* const p = static_cast<unsigned char*>(pBytes);
    for (unsigned i = 0; i < 3; ++i) p[i] = static_cast<unsigned char>(nValue >> (8 * i) & 0xFF);
}

}  // namespace varnet
