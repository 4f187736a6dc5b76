#pragma once

#include <bit>
#include <cstdint>

#include "foundation/Point.h"

namespace varnet {

/// Sets bits of the second attribute of a point, a bit set in a float's bytes. As a number it may be
/// anything, and stays unread.
inline void SetPointBits(CPoint2D& point, int nBits) {
    point.m_fAttr2 = std::bit_cast<float>(std::bit_cast<std::uint32_t>(point.m_fAttr2) |
                                          static_cast<std::uint32_t>(nBits));
}

}  // namespace varnet
