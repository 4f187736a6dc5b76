#pragma once

#include <cstddef>

namespace varnet {

// Storage for the two records of which a mesh has millions, facets and vertices: slots of one size, cut from
// large chunks without a word of bookkeeping a slot.
//
// A thread hands out slots from a chunk of its own; any thread may give a slot back. Chunks go back when all
// their slots have come back: the first few of a thread to the heap, others as large pages. Single slots are
// not handed out again before that: meshes are built and released as a whole.
//
// Under the address sanitizer both go to the plain heap, one by one, so that it sees every record.

void* AllocateFacetSlot();
void FreeFacetSlot(void* pSlot) noexcept;

void* AllocateVertexSlot();
void FreeVertexSlot(void* pSlot) noexcept;
/// More room that comes and goes with a slot for a vertex, apart from it, so that walks over the vertices do
/// not load it. For an address that is no such slot, an address that must not be used.
void* AnnexOf(void* pVertexSlot) noexcept;

// Sizes that the slots hold at least; the records assert that they fit.
inline constexpr std::size_t kFacetSlotSize = 56;
inline constexpr std::size_t kVertexSlotSize = 104;
inline constexpr std::size_t kVertexAnnexSize = 56;

}  // namespace varnet
