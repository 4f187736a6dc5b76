#pragma once

#include <cmath>

#include "foundation/FloatLanes.h"
#include "mesh/Facet.h"

namespace varnet {

/// CFacet::Area, for loops over all facets.
inline double AreaOf(CFacet const& facet) {
    return AreaAlong(ToFloatLanes(facet.m_fNormal), ToFloatLanes(*facet.m_pVertex1),
                     ToFloatLanes(*facet.m_pVertex2), ToFloatLanes(*facet.m_pVertex3));
}

/// The length of the cross product of two edges, twice the area in square millimetres, at or below which a
/// facet is degenerate.
inline constexpr double kDegenerateLength = 1e-10;

/// CFacet::CalculateNormal for these corners; false when it gives the (1, 1, 1) of a degenerate facet.
inline bool CalculateNormalOf(CPoint3D const& p1, CPoint3D const& p2, CPoint3D const& p3, float* pNormal) {
    double const bx = p2.x - p1.x;
    double const by = p2.y - p1.y;
    double const bz = p2.z - p1.z;
    double const cx = p3.x - p1.x;
    double const cy = p3.y - p1.y;
    double const cz = p3.z - p1.z;
    double const nx = by * cz - bz * cy;
    double const ny = bz * cx - bx * cz;
    double const nz = bx * cy - by * cx;
    double const dLength = std::sqrt(nx * nx + ny * ny + nz * nz);
    bool const bArea = dLength > kDegenerateLength;
    pNormal[0] = bArea ? static_cast<float>(nx / dLength) : 1.0f;
    pNormal[1] = bArea ? static_cast<float>(ny / dLength) : 1.0f;
    pNormal[2] = bArea ? static_cast<float>(nz / dLength) : 1.0f;
    return bArea;
}

}  // namespace varnet
