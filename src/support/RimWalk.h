#pragma once

#include <array>
#include <cstdint>

#include "foundation/Array.h"
#include "mesh/FacetCorners.h"

namespace varnet {

inline void MarkFacets(XR_CArray<CFacet*, CFacet*> const& facets, std::int32_t nMark) {
    for (int i = 0; i < facets.m_nSize; ++i) facets.m_pData[i]->m_nRegion = nMark;
}

/// Calls visit(start, end) for each edge k (from 0) of a facet of the group that isRim(facet)[k] says to be
/// on the rim: facet by facet in the order V1V2, V2V3, V3V1, directed as the facet is wound. Only the facets
/// that are there at the beginning are walked: the visitor may add facets to a model, this one too.
template <class IsRim, class Visit>
void WalkRim(XR_CArray<CFacet*, CFacet*> const& facets, IsRim const& isRim, Visit const& visit) {
    int const nFacets = facets.m_nSize;
    for (int i = 0; i < nFacets; ++i) {
        CFacet& facet = *facets.m_pData[i];
        auto const edges = DirectedEdges(facet);
        std::array<bool, 3> const rim = isRim(facet);
        for (std::size_t k = 0; k < edges.size(); ++k) {
            if (rim[k]) visit(edges[k].pStart, edges[k].pEnd);
        }
    }
}

/// The rim of the group: the edges that have no neighbour in it.
///
/// m_nRegion marks the members, and is 0 on all of them afterwards.
template <class Visit>
void WalkRim(XR_CArray<CFacet*, CFacet*> const& facets, Visit const& visit) {
    auto const isRim = [](CFacet& facet) {
        auto const isOutside = [](CFacet const* p) { return p == nullptr || p->m_nRegion == 0; };
        auto const [p1, p2, p3] = Neighbors(facet);
        return std::array<bool, 3>{isOutside(p1), isOutside(p2), isOutside(p3)};
    };
    MarkFacets(facets, 1);
    WalkRim(facets, isRim, visit);
    MarkFacets(facets, 0);
}

}  // namespace varnet
