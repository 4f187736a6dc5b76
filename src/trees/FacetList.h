#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/memory/SlotPool.h"
#include "trees/VertexTree.h"

namespace varnet {

// The list of a vertex's facets. Most vertices of a mesh have 7 facets at most: such a list stands in the
// annex of its vertex's slot. A longer one is a block of the heap for 15, 31, ... entries, which
// follows from its count alone.

namespace facet_list {

inline constexpr std::uint32_t kOwnCapacity = 7;
static_assert(kOwnCapacity * sizeof(CFacet*) <= kVertexAnnexSize);

/// The first list of a vertex that was made by new.
inline CFacet** OwnList(tagVertexNode& vertex) { return static_cast<CFacet**>(AnnexOf(&vertex)); }

inline void Grow(tagVertexNode& vertex) {
    std::size_t const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    bool const bOwn = vertex.m_ppFacet == OwnList(vertex);
    void* const pOld = bOwn ? nullptr : static_cast<void*>(vertex.m_ppFacet);
    void* const pList = std::realloc(pOld, (2 * nCount + 1) * sizeof(CFacet*));
    if (pList == nullptr) throw std::bad_alloc();
    if (bOwn) std::memcpy(pList, static_cast<void*>(vertex.m_ppFacet), nCount * sizeof(CFacet*));
    vertex.m_ppFacet = static_cast<CFacet**>(pList);
}

/// Adds the facet at the end of the list of a vertex that was made by new. Throws std::bad_alloc.
inline void Add(tagVertexNode& vertex, CFacet* pFacet) {
    auto const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    if (vertex.m_ppFacet == nullptr) vertex.m_ppFacet = OwnList(vertex);
    if (nCount >= kOwnCapacity && std::has_single_bit(nCount + 1)) Grow(vertex);
    vertex.m_ppFacet[nCount] = pFacet;
    vertex.m_nFacetNum = static_cast<std::int32_t>(nCount + 1);
}

inline void Free(tagVertexNode& vertex) noexcept {
    if (vertex.m_ppFacet != OwnList(vertex)) std::free(static_cast<void*>(vertex.m_ppFacet));
}

}  // namespace facet_list

}  // namespace varnet
