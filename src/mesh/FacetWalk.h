#pragma once

#include <algorithm>
#include <cstddef>
#include <span>

#include "foundation/Array.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "mesh/FacetCorners.h"
#include "support/FeatureSurface.h"

namespace varnet {

// What a walk over facets brings into the processor's cache, some facets before it comes to them.

/// The coordinates of the facet's corners.
struct BringCorners {
    void operator()(CFacet const& facet) const {
        Prefetch(&facet.m_pVertex1->x);
        Prefetch(&facet.m_pVertex2->x);
        Prefetch(&facet.m_pVertex3->x);
    }
};

/// What leads to the facet lists of its corners.
struct BringListHeads {
    void operator()(CFacet const& facet) const {
        Prefetch(&facet.m_pVertex1->m_ppFacet);
        Prefetch(&facet.m_pVertex2->m_ppFacet);
        Prefetch(&facet.m_pVertex3->m_ppFacet);
    }
};

/// The facet alone.
struct BringFacet {
    void operator()(CFacet const&) const {}
};

/// What looking up the neighbours of facets touches: for each of some facets behind the i-th one, a step of
/// the way.
inline void BringNeighbors(std::span<CFacet* const> facets, std::size_t i) {
    using namespace look_ahead;
    if (i + kNeighborFacet >= facets.size()) return;
    Prefetch(facets[i + kNeighborFacet]);
    BringListHeads()(*facets[i + kNeighborListHeads]);
    for (tagVertexNode const* const p : Corners(*facets[i + kNeighborLists])) Prefetch(p->m_ppFacet);
    for (tagVertexNode const* const p : Corners(*facets[i + kNeighborListed])) {
        for (int k = 0; k < std::min(p->m_nFacetNum, kMostListed); ++k) Prefetch(p->m_ppFacet[k]);
    }
}

/// Calls visit(CFacet&) for every facet of the array, in its order. The visitor may change facets, but not
/// the array.
template <class Bring = BringCorners, class Visit>
void ForEachFacet(XR_CArray<CFacet*, CFacet*> const& facets, Visit const& visit) {
    CFacet* const* const pFacets = facets.m_pData;
    int const nFacets = facets.m_nSize;
    int i = 0;
    for (; i < nFacets - look_ahead::kWalkFacet; ++i) {
        Prefetch(pFacets[i + look_ahead::kWalkFacet]);
        Bring()(*pFacets[i + look_ahead::kWalkCorners]);
        visit(*pFacets[i]);
    }
    for (; i < nFacets; ++i) visit(*pFacets[i]);
}

/// Calls visit(CFacet&) for every facet of the array's surfaces, surface by surface, each in its order: the
/// one order in which all operations take the facets of a model.
template <class Bring = BringCorners, class Visit>
void ForEachFacet(CSurfaceArray const& surfaces, Visit const& visit) {
    for (int i = 0; i < surfaces.m_aSurface.m_nSize; ++i)
        ForEachFacet<Bring>(surfaces.m_aSurface[i]->m_aFacet, visit);
}

}  // namespace varnet
