#include "mesh/WindingParity.h"

#include <algorithm>
#include <functional>

#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"

WindingParity::WindingParity(CSTLModel& model) {
    m_Links.reserve(static_cast<std::size_t>(model.GetFacetsNum()));
    ForEachFacet(model.m_SurfaceArray, [this](CFacet& facet) {
        auto const nFacet = static_cast<std::uint32_t>(m_Links.size());
        facet.m_nRegion = static_cast<std::int32_t>(nFacet);
        m_Links.push_back(2 * nFacet);
    });

    // Each vertex is looked at when the first facet of its list comes.
    std::size_t nListed = 0;
    ForEachFacet(model.m_SurfaceArray, [this, &nListed](CFacet const& facet) {
        for (tagVertexNode const* const pVertex : Corners(facet)) {
            if (pVertex->m_nFacetNum == 0 || pVertex->m_ppFacet[0] != &facet) continue;
            nListed += static_cast<std::size_t>(pVertex->m_nFacetNum);
            m_bUnique = m_bUnique && JoinAt(*pVertex);
        }
    });
    // A vertex that was not looked at has a list of other facets than the surfaces hold.
    m_bUnique = m_bUnique && nListed == 3 * m_Links.size();
}

// Joins the facets at the edges from this vertex to those with higher addresses: each edge is looked at from
// one end.
bool WindingParity::JoinAt(tagVertexNode const& vertex) {
    m_Spokes.clear();
    for (int i = 0; i < vertex.m_nFacetNum; ++i) {
        CFacet const& facet = *vertex.m_ppFacet[i];
        auto const nFacet = static_cast<std::uint32_t>(facet.m_nRegion);
        if (nFacet >= m_Links.size()) return false;  // stands in no surface
        if (facet.m_pVertex1 == &vertex) {
            AddSpokes(vertex, nFacet, facet.m_pVertex2, facet.m_pVertex3);
        } else if (facet.m_pVertex2 == &vertex) {
            AddSpokes(vertex, nFacet, facet.m_pVertex3, facet.m_pVertex1);
        } else {
            AddSpokes(vertex, nFacet, facet.m_pVertex1, facet.m_pVertex2);
        }
    }
    return JoinSpokes();
}

// A facet's winding runs outward to the vertex behind this one, and inward from the one before.
void WindingParity::AddSpokes(tagVertexNode const& vertex, std::uint32_t nFacet, tagVertexNode const* pBehind,
                              tagVertexNode const* pBefore) {
    if (std::less<>()(&vertex, pBehind)) m_Spokes.push_back({pBehind, nFacet, 1});
    if (std::less<>()(&vertex, pBefore)) m_Spokes.push_back({pBefore, nFacet, 0});
}

// Two facets at an edge agree where one runs outward and the other inward. Three are too many.
bool WindingParity::JoinSpokes() {
    std::sort(m_Spokes.begin(), m_Spokes.end(),
              [](Spoke const& a, Spoke const& b) { return std::less<>()(a.pEnd, b.pEnd); });
    for (std::size_t i = 0; i + 1 < m_Spokes.size(); ++i) {
        Spoke const& a = m_Spokes[i];
        Spoke const& b = m_Spokes[i + 1];
        if (a.pEnd != b.pEnd) continue;
        if (i + 2 < m_Spokes.size() && m_Spokes[i + 2].pEnd == a.pEnd) return false;
        if (!Join(a.nFacet, b.nFacet, a.nOutward == b.nOutward ? 1 : 0)) return false;
    }
    return true;
}

bool WindingParity::Join(std::uint32_t a, std::uint32_t b, std::uint32_t nTurned) {
    Place const placeA = Find(a);
    Place const placeB = Find(b);
    std::uint32_t const nAgainst = nTurned ^ placeA.nTurned ^ placeB.nTurned;
    if (placeA.nFirst == placeB.nFirst) return nAgainst == 0;
    auto const [nEarlier, nLater] = std::minmax(placeA.nFirst, placeB.nFirst);
    m_Links[nLater] = 2 * nEarlier | nAgainst;
    return true;
}

// Follows the links to the first facet of the set, and halves the way for the next time.
WindingParity::Place WindingParity::Find(std::uint32_t nFacet) {
    std::uint32_t nTurned = 0;
    while (m_Links[nFacet] / 2 != nFacet) {
        std::uint32_t const nLink = m_Links[nFacet];
        std::uint32_t const nNext = m_Links[nLink / 2];
        m_Links[nFacet] = nNext ^ (nLink & 1);
        nTurned ^= m_Links[nFacet] & 1;
        nFacet = m_Links[nFacet] / 2;
    }
    return {nFacet, nTurned};
}
