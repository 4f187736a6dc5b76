#pragma once

#include <cmath>
#include <cstddef>
#include <optional>

#include "mesh/FacetIntake.h"
#include "mesh/STLModel.h"

namespace varnet {

/// The record with which a generated triangle is offered to a model: one of its own for each, so that no
/// corner carries on the height that another one took. None where a corner is not finite: such a triangle is
/// refused as one that is out of range is, without a trace, since a vertex without a height counts as equal
/// to all others.
inline std::optional<tagFACET> GeneratedFacet(CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
    tagFACET facet;
    facet.m_ptVertex[0] = a;
    facet.m_ptVertex[1] = b;
    facet.m_ptVertex[2] = c;
    for (CPoint3D const& p : facet.m_ptVertex) {
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return std::nullopt;
    }
    return facet;
}

/// How the generators fill a solid: as CSTLModel::AddFacet, one triangle after the other, but faster.
class SolidIntake {
public:
    /// nExpected, the number of triangles that will come, is only a hint.
    explicit SolidIntake(CSTLModel& solid, int nExpected)
        : m_Intake(solid, static_cast<std::size_t>(nExpected)) {}

    void Add(CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
        if (auto facet = GeneratedFacet(a, b, c)) m_Intake.Add(*facet);
    }

private:
    FacetIntake m_Intake;
};

}  // namespace varnet
