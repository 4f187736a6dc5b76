#pragma once

#include <cstdint>

#include "foundation/Array.h"
#include "mesh/FacetCorners.h"

inline void MarkFacets(XR_CArray<CFacet*, CFacet*> const& facets, std::int32_t nMark) {
    for (int i = 0; i < facets.m_nSize; ++i) facets.m_pData[i]->m_nRegion = nMark;
}

/// Calls visit(start, end) for each edge of the group that has no neighbour in the group: facet by facet in
/// the order V1V2, V2V3, V3V1, directed as the facet is wound. All three neighbours of a facet are looked up
/// before its edges are visited, and only the facets that are there at the beginning are walked: the visitor
/// may add facets to a model, this one too.
///
/// m_nRegion marks the members, and is 0 on all of them afterwards.
template <class Visit>
void WalkRim(XR_CArray<CFacet*, CFacet*> const& facets, Visit const& visit) {
    MarkFacets(facets, 1);
    int const nFacets = facets.m_nSize;
    for (int i = 0; i < nFacets; ++i) {
        CFacet& facet = *facets.m_pData[i];
        auto const edges = DirectedEdges(facet);
        auto const neighbors = Neighbors(facet);
        for (std::size_t k = 0; k < edges.size(); ++k) {
            if (neighbors[k] == nullptr || neighbors[k]->m_nRegion == 0)
                visit(edges[k].pStart, edges[k].pEnd);
        }
    }
    MarkFacets(facets, 0);
}
