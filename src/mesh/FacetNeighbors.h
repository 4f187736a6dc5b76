#pragma once

#include <array>
#include <utility>

#include "mesh/FacetCorners.h"

// The facets across an edge, for loops over many facets.

/// Vertices with more facets than this are searched from the other end of the edge where that has fewer.
/// Facets enter the lists of all their vertices in the order in which they come, so both lists hold the
/// facets at an edge in the same order.
inline constexpr int kLongFacetList = 32;

/// Calls visit(g) for every facet g at the edge from a to b other than pFacet, in the order of the facet
/// lists, until visit returns true.
template <class Visit>
void VisitNeighbors(CFacet const* pFacet, tagVertexNode* a, tagVertexNode* b, Visit const& visit) {
    tagVertexNode const* pWalked = a;
    tagVertexNode const* pWanted = b;
    if (a->m_nFacetNum > kLongFacetList && b != nullptr && b->m_nFacetNum < a->m_nFacetNum) {
        std::swap(pWalked, pWanted);
    }
    CFacet** const ppFacet = pWalked->m_ppFacet;
    int const nFacets = pWalked->m_nFacetNum;
    for (int i = 0; i < nFacets; ++i) {
        CFacet* const g = ppFacet[i];
        if (g != pFacet && HasCorner(*g, pWanted) && visit(g)) return;
    }
}

/// CFacet::FindNeighborFacet.
inline CFacet* FirstNeighbor(CFacet const& facet, tagVertexNode* a, tagVertexNode* b) {
    CFacet* pFound = nullptr;
    VisitNeighbors(&facet, a, b, [&pFound](CFacet* g) {
        pFound = g;
        return true;
    });
    return pFound;
}

/// The facets across V1V2, V2V3 and V3V1, null where there is none.
inline std::array<CFacet*, 3> Neighbors(CFacet const& facet) {
    return {FirstNeighbor(facet, facet.m_pVertex1, facet.m_pVertex2),
            FirstNeighbor(facet, facet.m_pVertex2, facet.m_pVertex3),
            FirstNeighbor(facet, facet.m_pVertex3, facet.m_pVertex1)};
}
