#include "mesh/WindingParity.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"

namespace varnet {

WindingParity::WindingParity(CSTLModel& model) : m_Links(static_cast<std::size_t>(model.GetFacetsNum())) {
    std::uint32_t nFacets = 0;
    ForEachFacet<BringFacet>(model.m_SurfaceArray, [this, &nFacets](CFacet& facet) {
        facet.m_nRegion = static_cast<std::int32_t>(nFacets);
        m_Links[nFacets] = 2 * nFacets;
        ++nFacets;
    });

    // Each vertex is looked at when the first facet of its list comes.
    std::size_t nListed = 0;
    ForEachFacet<BringListHeads>(model.m_SurfaceArray, [this, &nListed](CFacet const& facet) {
        for (tagVertexNode const* const pVertex : Corners(facet)) {
            if (pVertex->m_nFacetNum == 0 || pVertex->m_ppFacet[0] != &facet) continue;
            nListed += static_cast<std::size_t>(pVertex->m_nFacetNum);
            m_bUnique = m_bUnique && UniteAt(*pVertex);
        }
    });
    // A vertex that was not looked at has a list of other facets than the surfaces hold.
    m_bUnique = m_bUnique && nListed == 3 * m_Links.size();
}

// Unites the facets at the edges from this vertex to those with higher addresses: each edge is looked at from
// one end. Which way an edge runs cannot be foreseen, so that nothing here depends on it but what is stored.
bool WindingParity::UniteAt(tagVertexNode const& vertex) {
    auto const nFacets = static_cast<std::size_t>(vertex.m_nFacetNum);
    if (m_Spokes.size() < 2 * nFacets + 1) m_Spokes.resize(2 * nFacets + 1);
    Spoke* pEnd = m_Spokes.data();
    for (std::size_t i = 0; i < nFacets; ++i) {
        CFacet const& facet = *vertex.m_ppFacet[i];
        auto const nFacet = static_cast<std::uint32_t>(facet.m_nRegion);
        if (nFacet >= m_Links.size()) return false;  // stands in no surface
        bool const bSecond = facet.m_pVertex2 == &vertex;
        bool const bThird = facet.m_pVertex1 != &vertex && !bSecond;
        tagVertexNode const* pBehind = bSecond ? facet.m_pVertex3 : facet.m_pVertex2;
        tagVertexNode const* pBefore = bSecond ? facet.m_pVertex1 : facet.m_pVertex3;
        pBehind = bThird ? facet.m_pVertex1 : pBehind;
        pBefore = bThird ? facet.m_pVertex2 : pBefore;
        *pEnd = {pBehind, nFacet, 1};
        pEnd += std::less<>()(&vertex, pBehind) ? 1 : 0;
        *pEnd = {pBefore, nFacet, 0};
        pEnd += std::less<>()(&vertex, pBefore) ? 1 : 0;
    }
    std::span<Spoke> const spokes(m_Spokes.data(), pEnd);
    return spokes.size() <= kFewSpokes ? UniteFew(spokes) : UniteMany(spokes);
}

// Two facets at an edge agree where one runs outward and the other inward. Three are too many.
bool WindingParity::UniteFew(std::span<Spoke const> spokes) {
    for (std::uint32_t nLeft = (1u << spokes.size()) - 1; nLeft != 0;) {
        Spoke const& a = spokes[static_cast<std::size_t>(std::countr_zero(nLeft))];
        nLeft &= nLeft - 1;
        std::uint32_t nSame = 0;
        for (std::size_t i = 0; i < spokes.size(); ++i) {
            nSame |= static_cast<std::uint32_t>(spokes[i].pEnd == a.pEnd) << i;
        }
        nSame &= nLeft;
        if (nSame == 0) continue;
        if ((nSame & (nSame - 1)) != 0) return false;
        nLeft ^= nSame;
        if (!Unite(a, spokes[static_cast<std::size_t>(std::countr_zero(nSame))])) return false;
    }
    return true;
}

bool WindingParity::UniteMany(std::span<Spoke> spokes) {
    std::sort(spokes.begin(), spokes.end(),
              [](Spoke const& a, Spoke const& b) { return std::less<>()(a.pEnd, b.pEnd); });
    for (std::size_t i = 0; i + 1 < spokes.size(); ++i) {
        Spoke const& a = spokes[i];
        Spoke const& b = spokes[i + 1];
        if (a.pEnd != b.pEnd) continue;
        if (i + 2 < spokes.size() && spokes[i + 2].pEnd == a.pEnd) return false;
        if (!Unite(a, b)) return false;
    }
    return true;
}

bool WindingParity::Unite(Spoke const& a, Spoke const& b) {
    std::uint32_t const nTurned = a.nOutward == b.nOutward ? 1 : 0;
    std::uint32_t const nBetween = m_Links[a.nFacet] ^ m_Links[b.nFacet] ^ nTurned;
    if (nBetween <= 1) return nBetween == 0;  // linked to one facet
    Member const memberA = Find(a.nFacet);
    Member const memberB = Find(b.nFacet);
    std::uint32_t const nAgainst = nTurned ^ memberA.nTurned ^ memberB.nTurned;
    if (memberA.nFirst == memberB.nFirst) return nAgainst == 0;
    auto const [nEarlier, nLater] = std::minmax(memberA.nFirst, memberB.nFirst);
    m_Links[nLater] = 2 * nEarlier | nAgainst;
    return true;
}

// Follows the links to the first facet of the set, and halves the way for the next time.
WindingParity::Member WindingParity::Find(std::uint32_t nFacet) {
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

}  // namespace varnet
