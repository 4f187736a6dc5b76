#pragma once

#include "foundation/Float3.h"
#include "mesh/Facet.h"

/// CFacet::Area, for loops over all facets.
inline double AreaOf(CFacet const& facet) {
    return AreaAlong(ToFloat3(facet.m_fNormal), ToFloat3(*facet.m_pVertex1), ToFloat3(*facet.m_pVertex2),
                     ToFloat3(*facet.m_pVertex3));
}
