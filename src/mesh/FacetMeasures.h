#pragma once

#include "foundation/FloatLanes.h"
#include "mesh/Facet.h"

/// CFacet::Area, for loops over all facets.
inline double AreaOf(CFacet const& facet) {
    return AreaAlong(ToFloatLanes(facet.m_fNormal), ToFloatLanes(*facet.m_pVertex1),
                     ToFloatLanes(*facet.m_pVertex2), ToFloatLanes(*facet.m_pVertex3));
}
