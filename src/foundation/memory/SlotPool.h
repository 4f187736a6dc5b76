#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "foundation/memory/AddressSanitizer.h"

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

// Sizes that the slots hold at least; the records assert that they fit.
inline constexpr std::size_t kFacetSlotSize = 56;
inline constexpr std::size_t kVertexSlotSize = 104;
inline constexpr std::size_t kVertexAnnexSize = 56;

namespace slot_layout {

// Chunks are aligned to this, so that a slot's address leads to its chunk.
inline constexpr std::size_t kChunkSize = std::size_t{128} * 1024;
inline constexpr std::size_t kFirstSlot = 128;

// The annexes of a chunk's slots stand together behind all slots.
constexpr std::size_t SlotsEnd(std::size_t nSlotSize, std::size_t nAnnexSize) {
    return kFirstSlot + (kChunkSize - kFirstSlot) / (nSlotSize + nAnnexSize) * nSlotSize;
}

}  // namespace slot_layout

// The operators new and delete of a class whose objects stand in slots. An object of a derived class is of
// another size and comes from the heap.

template <class Object, class Allocate>
void* NewInSlot(std::size_t nSize, Allocate allocate) {
    return nSize == sizeof(Object) ? allocate() : ::operator new(nSize);
}

/// Null where memory has run out.
template <class Object>
void* NewOrNull(std::size_t nSize) noexcept {
    try {
        return Object::operator new(nSize);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

template <class Object, class Free>
void DeleteFromSlot(void* pObject, std::size_t nSize, Free free) noexcept {
    if (nSize == sizeof(Object)) {
        free(pObject);
    } else {
        ::operator delete(pObject);
    }
}

/// More room that comes and goes with a slot for a vertex, apart from it, so that walks over the vertices do
/// not load it. For an address that is no such slot, an address that must not be used.
inline void* AnnexOf(void* pVertexSlot) noexcept {
    if constexpr (VARNET_ADDRESS_SANITIZER) return static_cast<char*>(pVertexSlot) + kVertexSlotSize;
    std::size_t const nOffset = reinterpret_cast<std::uintptr_t>(pVertexSlot) & (slot_layout::kChunkSize - 1);
    std::size_t const nIndex = (nOffset - slot_layout::kFirstSlot) / kVertexSlotSize;
    return static_cast<char*>(pVertexSlot) - nOffset +
           slot_layout::SlotsEnd(kVertexSlotSize, kVertexAnnexSize) + nIndex * kVertexAnnexSize;
}

}  // namespace varnet
