// Dividing a model's facets into feature surfaces.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <span>
#include <utility>
#include <vector>

#include "foundation/memory/AddNew.h"
#include "foundation/memory/LeaveAllocated.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetGraph.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"
#include "support/RimWalk.h"

using namespace varnet;

namespace {

using std::numbers::pi;

// Half of the 30 degrees by which neighbours within a feature surface differ at most, in radians.
constexpr double kHalfJoinAngle = 0.2617993877991494;

// A surface with more facets, or with more square millimetres, is no small one.
constexpr int kMostSmallFacets = 10;
constexpr double kMostSmallArea = 2.0;

// A small surface merges across this angle, in degrees, divided by the root of its area, up to the largest.
constexpr double kMergeAngle = 60.0;
constexpr double kLargestMergeAngle = 120.0;

// The squared distance of the two normals: 4 sin(t / 2)^2 at an angle t.
double NormalDistance2(CFacet const& a, CFacet const& b) {
    double const dx = a.m_fNormal[0] - b.m_fNormal[0];
    double const dy = a.m_fNormal[1] - b.m_fNormal[1];
    double const dz = a.m_fNormal[2] - b.m_fNormal[2];
    return dx * dx + dy * dy + dz * dz;
}

// Takes all facets out of the model's surfaces, in order and not yet placed, and destroys the surfaces.
std::vector<CFacet*> DissolveSurfaces(CSTLModel& model) {
    std::vector<CFacet*> facets = MarkFacetsToPlace(model, [](CFacet const&) { return true; });
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) surfaces[i]->m_aFacet.RemoveAll();
    model.m_SurfaceArray.RemoveAllSurface();
    return facets;
}

// A judge that only compares may be asked in any order: it is asked in the one in which facets lie in memory.
struct Similarity {
    double dArea;
    std::array<bool, 3> joins;  // whether the neighbours are similar
};
using SimilarityGraph = FacetGraph<Similarity>;

SimilarityGraph CompareNeighbors(std::vector<CFacet*> facets, double dDistance2) {
    return SimilarityGraph(std::move(facets), [dDistance2](SimilarityGraph const& graph, std::uint32_t n) {
        CFacet& facet = graph.Facet(n);
        Similarity similarity{facet.Area(), {}};
        for (std::size_t k = 0; k < 3; ++k) {
            std::uint32_t const nNeighbor = graph.Neighbors(n)[k];
            similarity.joins[k] = nNeighbor != SimilarityGraph::kNone &&
                                  dDistance2 > NormalDistance2(facet, graph.Facet(nNeighbor));
        }
        return similarity;
    });
}

// What ExtractFeatherSurf does with JionJudgeFun, and the areas of the surfaces, which it adds up on its way.
void GrowSimilarSurfaces(SimilarityGraph const& graph, CSurfaceArray& surfaces) {
    std::vector<std::uint8_t> placed(graph.Size(), 0);
    auto const neighborsOf = [&graph](std::uint32_t n, auto const& offer) {
        for (std::size_t k = 0; k < 3; ++k) {
            if (graph.NoteOf(n).joins[k]) offer(static_cast<int>(k) + 1, graph.Neighbors(n)[k]);
        }
    };
    auto const takes = [&placed](int, std::uint32_t, std::uint32_t nCandidate) {
        return std::exchange(placed[nCandidate], std::uint8_t{1}) == 0;
    };
    WaveGrowth<std::uint32_t> growth;
    for (std::uint32_t nSeed = 0; nSeed < graph.Size(); ++nSeed) {
        if (placed[nSeed] != 0 || SimilarityGraph::NumberOf(graph.Facet(nSeed)) != nSeed) continue;
        placed[nSeed] = 1;
        CFeatureSurface& surface = AddNew(surfaces.m_aSurface);
        double dArea = 0.0;
        auto const add = [&](std::uint32_t n) {
            surface.m_aFacet.Add(&graph.Facet(n));
            dArea += graph.NoteOf(n).dArea;
        };
        add(nSeed);
        growth.Grow(nSeed, neighborsOf, takes, [&add](std::span<std::uint32_t const> wave) {
            for (std::uint32_t const n : wave) add(n);
            return true;
        });
        surface.m_dArea = dArea;
    }
}

// What FindSurfaceVerge does, for all surfaces. All marks are 0 afterwards.
void FindVerges(SimilarityGraph const& graph, CSurfaceArray const& surfaces) {
    for (std::uint32_t i = 0; i < graph.Size(); ++i) SimilarityGraph::SetNumber(graph.Facet(i), i);
    std::vector<std::int32_t> surfaceOf(graph.Size(), 0);
    auto const& array = surfaces.m_aSurface;
    for (int i = 0; i < array.m_nSize; ++i) {
        ForEachFacet(array[i]->m_aFacet, [&surfaceOf, i](CFacet const& facet) {
            surfaceOf[SimilarityGraph::NumberOf(facet)] = i;
        });
    }
    for (int i = 0; i < array.m_nSize; ++i) {
        auto& verges = array[i]->m_VergeList;
        verges.RemoveAll();
        auto const isRim = [&graph, &surfaceOf, i](CFacet& facet) {
            auto const& neighbors = graph.Neighbors(SimilarityGraph::NumberOf(facet));
            auto const isOutside = [&surfaceOf, i](std::uint32_t n) {
                return n == SimilarityGraph::kNone || surfaceOf[n] != i;
            };
            return std::array<bool, 3>{isOutside(neighbors[0]), isOutside(neighbors[1]),
                                       isOutside(neighbors[2])};
        };
        WalkRim(array[i]->m_aFacet, isRim, [&verges](tagVertexNode* pStart, tagVertexNode* pEnd) {
            verges.AddTail(pStart);
            verges.AddTail(pEnd);
        });
    }
    for (std::uint32_t i = 0; i < graph.Size(); ++i) graph.Facet(i).m_nRegion = 0;
}

// The square of the distance of normals below which a small surface of this area merges.
double MergeDistance2(double dArea) {
    double const dAngle = std::min(kLargestMergeAngle, kMergeAngle / std::sqrt(dArea));
    double const s = std::sin(dAngle * 0.5 * pi / 180.0);
    return 4.0 * s * s;
}

// The number of the surface with the facet that is most like the neighbouring one of this surface, the first
// of equals; -1 when none is like enough. Facets are marked with the numbers of their surfaces.
int MostSimilarNeighbor(CFeatureSurface& surface, int nSurface) {
    int nBest = -1;
    double dLimit = MergeDistance2(surface.Area());
    for (int i = 0; i < surface.m_aFacet.m_nSize; ++i) {
        CFacet& facet = *surface.m_aFacet[i];
        for (CFacet const* const pNeighbor : Neighbors(facet)) {
            if (pNeighbor == nullptr || pNeighbor->m_nRegion == nSurface) continue;
            double const dDistance = NormalDistance2(facet, *pNeighbor);
            if (!(dLimit > dDistance)) continue;
            dLimit = dDistance;
            nBest = pNeighbor->m_nRegion;
        }
    }
    return nBest;
}

void MoveFacets(CFeatureSurface& from, CFeatureSurface& to, int nTarget) {
    MarkFacets(from.m_aFacet, nTarget);
    for (int i = 0; i < from.m_aFacet.m_nSize; ++i) to.m_aFacet.Add(from.m_aFacet[i]);
    from.m_aFacet.RemoveAll();
}

// Takes the surfaces without facets out of the array, all in one pass. A host may hold them.
void DropEmptySurfaces(XR_CArray<CFeatureSurface*, CFeatureSurface*>& surfaces) {
    int nKept = 0;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        CFeatureSurface* const pSurface = surfaces[i];
        if (pSurface->m_aFacet.m_nSize > 0) {
            surfaces[nKept++] = pSurface;
        } else {
            LeaveAllocated(pSurface);
        }
    }
    surfaces.RemoveAt(nKept, surfaces.m_nSize - nKept);
}

}  // namespace

void CSTLModel::ClassifySurf(int (*pJudge)(int, CFacet*, CFacet*, double), double d) {
    int nClass = m_SurfaceArray.m_aSurface.m_nSize;
    RegionGrowth growth;
    for (CFacet* const pSeed : DissolveSurfaces(*this)) {
        if (pSeed->m_nRegion == kPlaced) continue;
        CFeatureSurface& surface = AddNew(m_SurfaceArray.m_aSurface);
        RegionGrowth::StartSurface(surface, *pSeed);
        nClass = pJudge(nClass, pSeed, nullptr, d);
        growth.GrowSurface(surface, *pSeed, AcrossEdges(),
                           [pJudge, nClass, d](int, CFacet const&, CFacet& candidate) {
                               return pJudge(nClass, nullptr, &candidate, d) != 0;
                           });
    }
}

void CSTLModel::ExtractFeatherSurf(int (*pJudge)(int, CFacet*, CFacet*, double), double d) {
    RegionGrowth growth;
    for (CFacet* const pSeed : DissolveSurfaces(*this)) {
        if (pSeed->m_nRegion == kPlaced) continue;
        CFeatureSurface& surface = AddNew(m_SurfaceArray.m_aSurface);
        RegionGrowth::StartSurface(surface, *pSeed);
        growth.GrowSurface(surface, *pSeed, AcrossEdges(),
                           [pJudge, d](int nEdge, CFacet& member, CFacet& candidate) {
                               return pJudge(nEdge, &member, &candidate, d) != 0;
                           });
    }
}

void CSTLModel::UnionSmallSurface() {
    auto& surfaces = m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        MarkFacets(surfaces[i]->m_aFacet, i);
        surfaces[i]->Area();
    }
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        CFeatureSurface& surface = *surfaces[i];
        if (surface.m_aFacet.m_nSize > kMostSmallFacets || surface.Area() > kMostSmallArea) continue;
        int const nTarget = MostSimilarNeighbor(surface, i);
        if (nTarget != -1) MoveFacets(surface, *surfaces[nTarget], nTarget);
    }
    for (int i = 0; i < surfaces.m_nSize; ++i) MarkFacets(surfaces[i]->m_aFacet, 0);
    DropEmptySurfaces(surfaces);
}

// The three steps are ExtractFeatherSurf, UnionSmallSurface and FindSurfaceVerge on every surface, with the
// neighbours looked up once for the first and the last.
void CSTLModel::ExtractSurfaceAndEdge() {
    double const s = std::sin(kHalfJoinAngle);
    SimilarityGraph const graph = CompareNeighbors(DissolveSurfaces(*this), s * 4.0 * s);
    GrowSimilarSurfaces(graph, m_SurfaceArray);
    UnionSmallSurface();
    FindVerges(graph, m_SurfaceArray);
}

int CSTLModel::EightClassifyFun(int nClass, CFacet* pSeed, CFacet* pCandidate, double d) {
    if (pSeed != nullptr) return pSeed->EightClassify(d);
    return nClass == pCandidate->EightClassify(d) ? 1 : 0;
}

int CSTLModel::JionJudgeFun(int, CFacet* pMember, CFacet* pCandidate, double d) {
    return d > NormalDistance2(*pMember, *pCandidate) ? 1 : 0;
}

// Neighbours of one winding run through their common edge in opposite directions.
int CSTLModel::NormalJudgeFun(int nEdge, CFacet* pMember, CFacet* pCandidate, double) {
    DirectedEdge const edge = DirectedEdges(*pMember)[static_cast<std::size_t>(nEdge) - 1];
    if (HasDirectedEdge(*pCandidate, edge.pStart, edge.pEnd)) pCandidate->Reverse();
    return 1;
}
