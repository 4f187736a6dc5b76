#pragma once

#include <bit>
#include <cstdint>

#include "varnet/Geometry.h"

namespace varnet {

/// Equal points have equal hashes; -0.0 and 0.0 are equal.
///
/// A turned sign changes the highest bit of a product alone, and floats on a grid have no low bits: each
/// product is rotated by its own amount, so that mirrored points differ, and all of it is mixed at the end
/// (the multiplication and shifts of MurmurHash3's finalizer by A. Appleby, once).
inline std::uint64_t HashOf(Point3 const& point) {
    std::uint64_t const x = std::bit_cast<std::uint64_t>(point.x + 0.0) * 0x9E3779B97F4A7C15u;
    std::uint64_t const y = std::bit_cast<std::uint64_t>(point.y + 0.0) * 0xBF58476D1CE4E5B9u;
    std::uint64_t const z = std::bit_cast<std::uint64_t>(point.z + 0.0) * 0x94D049BB133111EBu;
    std::uint64_t const mixed = x ^ std::rotl(y, 21) ^ std::rotl(z, 42);
    std::uint64_t const hash = (mixed ^ mixed >> 33) * 0xFF51AFD7ED558CCDu;
    return hash ^ hash >> 32;
}

}  // namespace varnet
