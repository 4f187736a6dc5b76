#pragma once

#include <array>
#include <cstdint>

#include "mesh/Facet.h"

namespace varnet {

// The corners and directed edges of a facet, as the topics of the mesh use them.

/// An edge in the direction that a facet's winding gives it.
struct DirectedEdge {
    tagVertexNode* pStart;
    tagVertexNode* pEnd;
};

/// The three edges in the order in which every walk takes them.
inline std::array<DirectedEdge, 3> DirectedEdges(CFacet const& facet) {
    return {{{facet.m_pVertex1, facet.m_pVertex2},
             {facet.m_pVertex2, facet.m_pVertex3},
             {facet.m_pVertex3, facet.m_pVertex1}}};
}

inline std::array<tagVertexNode*, 3> Corners(CFacet const& facet) {
    return {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3};
}

inline bool HasCorner(CFacet const& facet, tagVertexNode const* pVertex) {
    return facet.m_pVertex1 == pVertex || facet.m_pVertex2 == pVertex || facet.m_pVertex3 == pVertex;
}

/// Whether the facet's winding runs from the one vertex straight to the other.
inline bool HasDirectedEdge(CFacet const& facet, tagVertexNode const* pStart, tagVertexNode const* pEnd) {
    return (facet.m_pVertex1 == pStart && facet.m_pVertex2 == pEnd) ||
           (facet.m_pVertex2 == pStart && facet.m_pVertex3 == pEnd) ||
           (facet.m_pVertex3 == pStart && facet.m_pVertex1 == pEnd);
}

/// Vertices with more facets than this have long lists. Most have six.
inline constexpr int kLongFacetList = 32;

/// The ends of an edge for a walk over the facets there: one's list is walked for facets that have the other
/// as a corner.
struct WalkedEnds {
    tagVertexNode const* pWalked;
    tagVertexNode const* pWanted;
};

/// The preferred end is walked, unless its list is long and the other one's shorter. Facets enter the lists
/// of all their vertices in the order in which they come, so both lists hold the facets at an edge in the
/// same order.
inline WalkedEnds ChooseWalked(tagVertexNode const* pPreferred, tagVertexNode const* pOther) {
    bool const bOther = pPreferred->m_nFacetNum > kLongFacetList && pOther != nullptr &&
                        pOther->m_nFacetNum < pPreferred->m_nFacetNum;
    return bOther ? WalkedEnds{pOther, pPreferred} : WalkedEnds{pPreferred, pOther};
}

inline void SetCorners(CFacet& facet, tagVertexNode* p1, tagVertexNode* p2, tagVertexNode* p3) {
    facet.m_pVertex1 = p1;
    facet.m_pVertex2 = p2;
    facet.m_pVertex3 = p3;
}

/// The record with which a facet is offered to a model.
inline tagFACET RecordOf(CFacet const& facet) {
    tagFACET record;
    record.m_ptVertex[0] = *facet.m_pVertex1;
    record.m_ptVertex[1] = *facet.m_pVertex2;
    record.m_ptVertex[2] = *facet.m_pVertex3;
    for (int i = 0; i < 3; ++i) record.m_fNormal[i] = facet.m_fNormal[i];
    return record;
}

/// The slope bit that goes with the corners as they stand.
inline std::uint32_t SlopeFlag(CFacet const& facet) {
    return facet.m_pVertex3->z >= facet.m_pVertex2->z ? FACET_SLOPE_HIGH : FACET_SLOPE_LOW;
}

/// The facets across V1V2, V2V3 and V3V1, null where there is none.
inline std::array<CFacet*, 3> Neighbors(CFacet& facet) {
    return {facet.FindNeighborFacet(facet.m_pVertex1, facet.m_pVertex2),
            facet.FindNeighborFacet(facet.m_pVertex2, facet.m_pVertex3),
            facet.FindNeighborFacet(facet.m_pVertex3, facet.m_pVertex1)};
}

}  // namespace varnet
