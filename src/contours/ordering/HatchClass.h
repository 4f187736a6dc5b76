#pragma once

#include "contours/Hatch.h"

namespace varnet {

/// What a hatch is to the ordering of paths: the remainder of its id by 100. All but these are chains.
inline int ClassOf(CHatch const& hatch) { return hatch.m_nID % 100; }
inline constexpr int kRingClass = 1;
inline constexpr int kNeverLinkedClass = 2;

}  // namespace varnet
