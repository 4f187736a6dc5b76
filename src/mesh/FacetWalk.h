#pragma once

#include "mesh/STLModel.h"

/// Calls visit(CFacet&) for every facet of the array's surfaces, surface by surface, each in its order: the
/// one order in which all operations take the facets of a model.
template <class Visit>
void ForEachFacet(CSurfaceArray const& surfaces, Visit const& visit) {
    for (int i = 0; i < surfaces.m_aSurface.m_nSize; ++i) {
        auto const& facets = surfaces.m_aSurface[i]->m_aFacet;
        for (int k = 0; k < facets.m_nSize; ++k) visit(*facets.m_pData[k]);
    }
}
