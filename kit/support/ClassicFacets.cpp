#include "support/ClassicFacets.h"

#include <algorithm>
#include <functional>

#include "part/PartState.h"

namespace varnet {

namespace {

Copies CopiesOf(Part const& part) {
    return Part::State::Of(part).mayHaveCopies ? Copies::kMaybe : Copies::kNo;
}

}  // namespace

// Facets come from chunks of many, so that the runs are few.
ClassicFacets::ClassicFacets(Part const& part)
    : m_Mesh(MakeClassic(part.Points(), part.Triangles(), FacetLists::kLent, CopiesOf(part))) {
    auto const& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
    for (int i = 0; i < facets.GetSize(); ++i) {
        if (i == 0 || facets[i] != facets[i - 1] + 1) m_Runs.push_back({facets[i], i});
    }
    std::sort(m_Runs.begin(), m_Runs.end(),
              [](Run const& a, Run const& b) { return std::less<>()(a.first, b.first); });
}

std::int32_t ClassicFacets::TriangleOf(CFacet const* facet) const {
    auto const behind = std::upper_bound(
        m_Runs.begin(), m_Runs.end(), facet,
        [](CFacet const* wanted, Run const& run) { return std::less<>()(wanted, run.first); });
    Run const& run = behind[-1];
    return m_Mesh.triangles[static_cast<std::size_t>(run.number + (facet - run.first))];
}

}  // namespace varnet
