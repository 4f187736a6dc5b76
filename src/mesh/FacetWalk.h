#pragma once

#include "foundation/Array.h"
#include "foundation/Prefetch.h"
#include "support/FeatureSurface.h"

/// Calls visit(CFacet&) for every facet of the array, in its order. The facets that come next, and their
/// vertices, are brought into the processor's cache meanwhile. The visitor may change facets, but not the
/// array.
template <class Visit>
void ForEachFacet(XR_CArray<CFacet*, CFacet*> const& facets, Visit const& visit) {
    constexpr int kFacetsAhead = 24;
    constexpr int kVerticesAhead = 12;
    for (int i = 0; i < facets.m_nSize; ++i) {
        if (i + kFacetsAhead < facets.m_nSize) Prefetch(facets.m_pData[i + kFacetsAhead]);
        if (i + kVerticesAhead < facets.m_nSize) {
            CFacet const& next = *facets.m_pData[i + kVerticesAhead];
            for (tagVertexNode const* const pVertex : {next.m_pVertex1, next.m_pVertex2, next.m_pVertex3}) {
                Prefetch(&pVertex->x);
            }
        }
        visit(*facets.m_pData[i]);
    }
}

/// Calls visit(CFacet&) for every facet of the array's surfaces, surface by surface, each in its order: the
/// one order in which all operations take the facets of a model.
template <class Visit>
void ForEachFacet(CSurfaceArray const& surfaces, Visit const& visit) {
    for (int i = 0; i < surfaces.m_aSurface.m_nSize; ++i)
        ForEachFacet(surfaces.m_aSurface[i]->m_aFacet, visit);
}
