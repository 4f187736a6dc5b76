// Dividing a model's facets into feature surfaces.

#include <algorithm>
#include <cmath>
#include <vector>

#include "mesh/FacetCorners.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"
#include "support/RimWalk.h"

namespace {

constexpr double kPi = 3.141592653589793;

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

CFeatureSurface& AddSurface(CSurfaceArray& surfaces) {
    auto* const pSurface = new CFeatureSurface;
    surfaces.m_aSurface.Add(pSurface);
    return *pSurface;
}

// Takes all facets out of the model's surfaces, in order and not yet placed, and destroys the surfaces.
std::vector<CFacet*> DissolveSurfaces(CSTLModel& model) {
    std::vector<CFacet*> facets = MarkFacetsToPlace(model, [](CFacet const&) { return true; });
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) surfaces[i]->m_aFacet.RemoveAll();
    model.m_SurfaceArray.RemoveAllSurface();
    return facets;
}

// The square of the distance of normals below which a small surface of this area merges.
double MergeDistance2(double dArea) {
    double const dAngle = std::min(kLargestMergeAngle, kMergeAngle / std::sqrt(dArea));
    double const s = std::sin(dAngle * 0.5 * kPi / 180.0);
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

// Takes the surfaces without facets out of the array, all in one pass, and destroys them.
void DropEmptySurfaces(XR_CArray<CFeatureSurface*, CFeatureSurface*>& surfaces) {
    int nKept = 0;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        CFeatureSurface* const pSurface = surfaces[i];
        if (pSurface->m_aFacet.m_nSize > 0) {
            surfaces[nKept++] = pSurface;
        } else {
            delete pSurface;
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
        CFeatureSurface& surface = AddSurface(m_SurfaceArray);
        pSeed->m_nRegion = kPlaced;  // a judge may look at it
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
        growth.GrowSurface(AddSurface(m_SurfaceArray), *pSeed, AcrossEdges(),
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

void CSTLModel::ExtractSurfaceAndEdge() {
    double const s = std::sin(kHalfJoinAngle);
    ExtractFeatherSurf(JionJudgeFun, s * 4.0 * s);
    UnionSmallSurface();
    auto const& surfaces = m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) surfaces[i]->FindSurfaceVerge();
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
