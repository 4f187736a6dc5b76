#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace varnet {

// Little-endian numbers as files hold them.

template <class Unsigned>
inline Unsigned LoadLittle(char const* bytes) {
    Unsigned value;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::big) {
        Unsigned turned = 0;
        for (std::size_t i = 0; i < sizeof value; ++i) {
            turned = static_cast<Unsigned>(turned << 8 | (value >> 8 * i & 0xFF));
        }
        value = turned;
    }
    return value;
}

inline std::uint32_t LoadU32(char const* bytes) { return LoadLittle<std::uint32_t>(bytes); }
inline float LoadF32(char const* bytes) { return std::bit_cast<float>(LoadU32(bytes)); }
inline double LoadF64(char const* bytes) { return std::bit_cast<double>(LoadLittle<std::uint64_t>(bytes)); }
inline std::uint32_t LoadU24(char const* bytes) {
    auto const byte = [bytes](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
    };
    return byte(0) | byte(1) << 8 | byte(2) << 16;
}

inline void StoreU32(char* bytes, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<char>(value >> 8 * i & 0xFF);
}
inline void StoreF32(char* bytes, float value) { StoreU32(bytes, std::bit_cast<std::uint32_t>(value)); }

}  // namespace varnet
