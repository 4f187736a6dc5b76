#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace varnet {

// Hashes of exact coordinates.

namespace coordinate_hash {

// Factors that spread the bits of three numbers over one hash.
inline constexpr std::uint64_t kFactorX = 0x9E3779B97F4A7C15u;
inline constexpr std::uint64_t kFactorY = 0xC2B2AE3D27D4EB4Fu;
inline constexpr std::uint64_t kFactorZ = 0x165667B19E3779F9u;

/// Zeros of both signs are equal numbers, so they get one hash: 0.0 is added.
inline std::uint64_t Bits(double d) { return std::bit_cast<std::uint64_t>(d + 0.0); }

inline std::uint64_t Spread(std::uint64_t n) { return (n ^ (n >> 32)) * kFactorX; }

/// A sign turns one bit alone of its product, the same in all three: two of them would cancel, were the
/// products not turned against each other.
inline std::size_t Hash(double x, double y, double z) {
    std::uint64_t const n =
        Spread(Bits(x) * kFactorX ^ std::rotl(Bits(y) * kFactorY, 21) ^ std::rotl(Bits(z) * kFactorZ, 42));
    return static_cast<std::size_t>(n ^ (n >> 32));
}

}  // namespace coordinate_hash

}  // namespace varnet
