#include "Slicer.h"

#include <algorithm>

namespace {

// Adds the segment in which the height cuts a facet with these corners, one of them below it and one not.
// Going round the facet, which faces outward, the side that goes down is where the segment begins, and the
// side that goes up where it ends: so the solid is on its left.
void AddSegment(std::array<tagVertexNode const*, 3> const& corners, double dZ, CutGraph& graph) {
    CutGraph::Edge from{};
    CutGraph::Edge to{};
    for (std::size_t i = 0; i < 3; ++i) {
        tagVertexNode const* const a = corners[i];
        tagVertexNode const* const b = corners[(i + 1) % 3];
        if (a->z < dZ && b->z >= dZ) to = {a, b};
        if (b->z < dZ && a->z >= dZ) from = {b, a};
    }
    graph.AddSegment(from, to);
}

}  // namespace

Slicer::Slicer(CSTLModel const& model) {
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        auto const& facets = surfaces[i]->m_aFacet;
        m_Waiting.reserve(m_Waiting.size() + static_cast<std::size_t>(facets.GetSize()));
        for (int k = 0; k < facets.GetSize(); ++k) {
            CFacet const* const pFacet = facets[k];
            if ((pFacet->m_nFlag & FACET_DUP_REVERSED) == 0)
                m_Waiting.push_back({pFacet->m_pVertex1->z, pFacet});
        }
    }
    std::stable_sort(m_Waiting.begin(), m_Waiting.end(),
                     [](Waiting const& a, Waiting const& b) { return a.dLowest < b.dLowest; });
}

std::vector<Contour> Slicer::Cut(double dZ) {
    std::erase_if(m_Active, [dZ](Active const& facet) { return facet.dHighest < dZ; });
    TakeUp(dZ);
    m_Graph.Begin(dZ, m_Active.size());
    for (Active const& facet : m_Active) AddSegment(facet.corners, dZ, m_Graph);
    return m_Graph.Chain();
}

void Slicer::TakeUp(double dZ) {
    for (; m_nTaken < m_Waiting.size() && m_Waiting[m_nTaken].dLowest < dZ; ++m_nTaken) {
        CFacet const& facet = *m_Waiting[m_nTaken].pFacet;
        double const dHighest = std::max(facet.m_pVertex2->z, facet.m_pVertex3->z);
        if (dHighest >= dZ) {
            m_Active.push_back({{facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}, dHighest});
        }
    }
}
