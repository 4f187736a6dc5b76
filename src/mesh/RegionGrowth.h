#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/Require.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"

namespace varnet {

// How connected groups of facets are found: classes of facets, level planes, overhangs, shells.

/// Marks in m_nRegion while regions grow. What is placed once is never taken again.
constexpr std::int32_t kPlaced = 0;
constexpr std::int32_t kNotPlaced = 1;

/// The facets of the model that pass the test, in their order, marked as not yet placed. All others count as
/// placed.
template <class Test>
std::vector<CFacet*> MarkFacetsToPlace(CSTLModel const& model, Test const& test) {
    std::vector<CFacet*> facets;
    ForEachFacet<BringFacet>(model.m_SurfaceArray, [&facets, &test](CFacet& facet) {
        bool const bPasses = test(facet);
        facet.m_nRegion = bPasses ? kNotPlaced : kPlaced;
        if (bPasses) facets.push_back(&facet);
    });
    return facets;
}

/// Neighbours by shared edges: the facets across V1V2, V2V3 and V3V1, with the numbers 1 to 3 of the edges.
/// All three are looked up before the first is offered, since what is done with one may turn its winding.
struct AcrossEdges {
    /// Brings what the lookup will need of the members to come into the processor's cache, a step of the way
    /// for each of them. What leads to the lists of a small wave is at hand since its members joined.
    void LookAhead(std::span<CFacet* const> wave, std::size_t i) const {
        using namespace look_ahead;
        std::size_t const nLists = wave.size() < kSmallWave ? kSmallWaveLists : kWaveLists;
        if (wave.size() >= kSmallWave) {
            if (i + kWaveFacet < wave.size()) Prefetch(wave[i + kWaveFacet]);
            if (i + kWaveListHeads < wave.size()) BringListHeads()(*wave[i + kWaveListHeads]);
        }
        if (i + nLists < wave.size()) {
            for (tagVertexNode* const p : Corners(*wave[i + nLists])) Prefetch(p->m_ppFacet);
        }
    }

    void Joined(CFacet const* pFacet) const { BringListHeads()(*pFacet); }

    template <class Offer>
    void operator()(CFacet* pFacet, Offer const& offer) const {
        std::array<CFacet*, 3> const neighbors = Neighbors(*pFacet);
        for (std::size_t k = 0; k < neighbors.size(); ++k) {
            if (neighbors[k] != nullptr) offer(static_cast<int>(k) + 1, neighbors[k]);
        }
    }
};

/// Neighbours by shared vertices: the facet lists of V1, V2 and V3, with the number 0 for no edge. Only for
/// growth that every neighbour joins: a long list is walked just once, as all in it have been placed then.
class AcrossVertices {
public:
    template <class Offer>
    void operator()(CFacet* pFacet, Offer const& offer) {
        for (tagVertexNode const* const pVertex : Corners(*pFacet)) {
            if (pVertex->m_nFacetNum > kLongFacetList && !m_Walked.insert(pVertex).second) continue;
            for (int i = 0; i < pVertex->m_nFacetNum; ++i) offer(0, pVertex->m_ppFacet[i]);
        }
    }

private:
    std::unordered_set<tagVertexNode const*> m_Walked;  // of the vertices with long lists
};

/// Grows regions breadth first, one after the other, with the memory of the last one. Members are facets, or
/// numbers that stand for them.
template <class Member>
class WaveGrowth {
public:
    /// Takes what can be reached from the seed, wave by wave.
    ///
    /// - neighborsOf(member, offer) calls offer(nEdge, neighbor) for each neighbour, in order. It may have a
    ///   LookAhead(wave, i) that is called before the i-th member of the wave comes, and a Joined(neighbor)
    ///   that is called when one has joined; they change nothing.
    /// - takes(nEdge, member, candidate) decides whether a neighbour joins, and marks it then: one that has
    ///   joined must not be taken again. One that is refused may be offered again, by another member.
    /// - visit(wave) gets those that joined beside the wave before, in the order of their joining; the seed
    ///   alone is the first wave and is not visited. Growth ends when it returns false.
    template <class NeighborsOf, class Takes, class Visit>
    void Grow(Member seed, NeighborsOf&& neighborsOf, Takes const& takes, Visit const& visit) {
        m_Wave.assign(1, seed);
        while (!m_Wave.empty()) {
            m_Next.clear();
            for (std::size_t i = 0; i < m_Wave.size(); ++i) {
                if constexpr (requires { neighborsOf.LookAhead(m_Wave, i); })
                    neighborsOf.LookAhead(m_Wave, i);
                Member const member = m_Wave[i];
                neighborsOf(member, [&, member](int nEdge, Member candidate) {
                    if (!takes(nEdge, member, candidate)) return;
                    if constexpr (requires { neighborsOf.Joined(candidate); }) neighborsOf.Joined(candidate);
                    m_Next.push_back(candidate);
                });
            }
            if (!visit(std::span<Member const>(m_Next))) return;
            m_Wave.swap(m_Next);
        }
    }

private:
    std::vector<Member> m_Wave;
    std::vector<Member> m_Next;
};

/// Grows regions of facets that are not placed yet, and marks what joins as placed.
class RegionGrowth {
public:
    /// As WaveGrowth::Grow, where joins(nEdge, member, candidate) decides for a facet that is not placed. The
    /// caller has placed the seed.
    template <class NeighborsOf, class Joins, class Visit>
    void Grow(CFacet& seed, NeighborsOf&& neighborsOf, Joins const& joins, Visit const& visit) {
        VARNET_REQUIRE(seed.m_nRegion == kPlaced);
        m_Growth.Grow(
            &seed, neighborsOf,
            [&joins](int nEdge, CFacet* pMember, CFacet* pCandidate) {
                if (pCandidate->m_nRegion == kPlaced || !joins(nEdge, *pMember, *pCandidate)) return false;
                pCandidate->m_nRegion = kPlaced;
                return true;
            },
            visit);
    }

    /// Places the seed as the first facet of a surface.
    static void StartSurface(CFeatureSurface& surface, CFacet& seed) {
        surface.m_aFacet.Add(&seed);
        seed.m_nRegion = kPlaced;
    }

    /// As Grow, with what joins the seed gathered in the surface's facets.
    template <class NeighborsOf, class Joins>
    void GrowSurface(CFeatureSurface& surface, CFacet& seed, NeighborsOf&& neighborsOf, Joins const& joins) {
        Grow(seed, neighborsOf, joins, [&surface](std::span<CFacet* const> wave) {
            for (CFacet* const pFacet : wave) surface.m_aFacet.Add(pFacet);
            return true;
        });
    }

private:
    WaveGrowth<CFacet*> m_Growth;
};

/// For growth without a judge.
struct EveryoneJoins {
    bool operator()(int, CFacet const&, CFacet const&) const { return true; }
};

}  // namespace varnet
