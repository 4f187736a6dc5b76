#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/memory/SlotPool.h"
#include "trees/VertexTree.h"

namespace varnet {

// The list of a vertex's facets. Most vertices of a mesh have 7 facets at most: such a list stands in the
// annex of its vertex's slot. A longer one is a block of the heap with room for 15, 31, ... entries, and the
// annex, which is free then, says how much.
//
// A host may have set a list of its own, of which nothing is known but its entries: it is reallocated before
// anything is added, and is the library's from then on.

namespace facet_list {

inline constexpr std::uint32_t kOwnCapacity = 7;
static_assert(kOwnCapacity * sizeof(CFacet*) <= kVertexAnnexSize);

/// The first list of a vertex that was made by new.
inline CFacet** OwnList(tagVertexNode& vertex) { return static_cast<CFacet**>(AnnexOf(&vertex)); }

// What the annex says of the last block that this vertex was given, and how many entries it was left with.
// The tag is odd, where a facet's address stands in a list that is the vertex's own: so one is never taken
// for the other.
struct BlockRecord {
    CFacet** pBlock;
    std::uintptr_t nTag;  // twice the capacity, and 1
    std::uintptr_t nCount;
};
static_assert(sizeof(BlockRecord) <= kVertexAnnexSize);
static_assert(offsetof(BlockRecord, nTag) == sizeof(CFacet*));

/// For the slot of a new vertex, whose annex may still say something of an earlier one.
inline void ForgetBlock(void* pVertexSlot) noexcept {
    std::memset(static_cast<char*>(AnnexOf(pVertexSlot)) + offsetof(BlockRecord, nTag), 0,
                sizeof(std::uintptr_t));
}

/// Whether the vertex's list, not its own one, is the library's as it was left, and has room for one more.
inline bool HasRoom(tagVertexNode const& vertex, BlockRecord const& record) {
    std::size_t const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    return vertex.m_ppFacet == record.pBlock && record.nTag % 2 == 1 && record.nCount == nCount &&
           nCount < record.nTag / 2;
}

/// Moves the list to a block with room for as many entries again, and one.
inline BlockRecord Grow(tagVertexNode& vertex) {
    std::size_t const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    std::size_t const nCapacity = 2 * nCount + 1;
    bool const bOwn = vertex.m_ppFacet == OwnList(vertex);
    void* const pOld = bOwn ? nullptr : static_cast<void*>(vertex.m_ppFacet);
    void* const pList = std::realloc(pOld, nCapacity * sizeof(CFacet*));
    if (pList == nullptr) throw std::bad_alloc();
    if (bOwn) std::memcpy(pList, static_cast<void*>(vertex.m_ppFacet), nCount * sizeof(CFacet*));
    vertex.m_ppFacet = static_cast<CFacet**>(pList);
    return {vertex.m_ppFacet, 2 * nCapacity + 1, nCount};
}

inline void AddToBlock(tagVertexNode& vertex, CFacet* pFacet) {
    void* const pAnnex = AnnexOf(&vertex);
    BlockRecord record;
    std::memcpy(&record, pAnnex, sizeof record);
    if (!HasRoom(vertex, record)) record = Grow(vertex);
    vertex.m_ppFacet[record.nCount++] = pFacet;
    vertex.m_nFacetNum = static_cast<std::int32_t>(record.nCount);
    std::memcpy(pAnnex, &record, sizeof record);
}

/// Adds the facet at the end of the list of a vertex that was made by new. Throws std::bad_alloc.
inline void Add(tagVertexNode& vertex, CFacet* pFacet) {
    CFacet** const pOwn = OwnList(vertex);
    if (vertex.m_ppFacet == nullptr) vertex.m_ppFacet = pOwn;
    auto const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    if (vertex.m_ppFacet != pOwn || nCount >= kOwnCapacity) {
        AddToBlock(vertex, pFacet);
        return;
    }
    pOwn[nCount] = pFacet;
    vertex.m_nFacetNum = static_cast<std::int32_t>(nCount + 1);
}

inline void Free(tagVertexNode& vertex) noexcept {
    if (vertex.m_ppFacet != OwnList(vertex)) std::free(static_cast<void*>(vertex.m_ppFacet));
}

}  // namespace facet_list

}  // namespace varnet
