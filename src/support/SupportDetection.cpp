// Finding the regions of a model's skin that face down too steeply, and which of them hang free.

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "foundation/memory/AddNew.h"
#include "mesh/FacetCorners.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"
#include "support/RimWalk.h"

using namespace varnet;

namespace {

using std::numbers::pi;

// How far above its lowest point, in millimetres, the rim of a surface may show that a wall reaches it.
constexpr double kBand = 0.1;

// A neighbour whose far corner is seen from the edge within this sine of a facet's plane lies in the plane.
constexpr double kInPlane = 0.01;

CFeatureSurface& AddSupportSurface(CSurfaceArray& surfaces) {
    CFeatureSurface& surface = AddNew(surfaces.m_aSurface);
    surface.m_nSurfaceFlag = FS_SUPPORT_SURFACE;
    surface.m_nSupportFlag |= FS_NEEDS_SUPPORT;
    return surface;
}

template <class NeighborsOf>
void GrowSupportSurfaces(std::vector<CFacet*> const& facets, CSurfaceArray& surfaces,
                         NeighborsOf neighborsOf) {
    RegionGrowth growth;
    for (CFacet* const pSeed : facets) {
        if (pSeed->m_nRegion == kPlaced) continue;
        CFeatureSurface& surface = AddSupportSurface(surfaces);
        RegionGrowth::StartSurface(surface, *pSeed);
        growth.GrowSurface(surface, *pSeed, neighborsOf, EveryoneJoins());
        surface.GetBoundBox();
    }
}

double LowestZ(XR_CArray<CFacet*, CFacet*> const& facets) {
    double dLowest = std::numeric_limits<double>::infinity();
    for (int i = 0; i < facets.m_nSize; ++i) {
        for (tagVertexNode const* const pVertex : Corners(*facets.m_pData[i])) {
            if (pVertex->z < dLowest) dLowest = pVertex->z;
        }
    }
    return dLowest;
}

bool IsEnd(DirectedEdge const& edge, tagVertexNode const* pVertex) {
    return edge.pStart == pVertex || edge.pEnd == pVertex;
}

// The edge of the facet, if there is one, that touches the band of heights below the limit and where a
// neighbour outside the surface goes off on the outer side. The surface's facets are marked 1.
bool FindWall(CFacet& facet, double dBandLimit, DirectedEdge& found) {
    for (DirectedEdge const& edge : DirectedEdges(facet)) {
        if (!(edge.pStart->z < dBandLimit) && !(edge.pEnd->z < dBandLimit)) continue;
        CFacet* const pNeighbor = facet.FindNeighborFacet(edge.pStart, edge.pEnd);
        if (pNeighbor == nullptr || pNeighbor->m_nRegion != 0) continue;
        if (JudgeNeighborSide(&facet, pNeighbor, edge.pStart, edge.pEnd, kInPlane) != 1) continue;
        found = edge;
        return true;
    }
    return false;
}

}  // namespace

int CSTLModel::FindSupportSurface(double dAngle, int nMode) {
    ClearSupport();
    double const t = -std::cos(dAngle * pi / 180.0);
    std::vector<CFacet*> const facets = MarkFacetsToPlace(*this, [t](CFacet& facet) {
        double const nz = facet.m_fNormal[2];
        bool const bFacesDown = t > nz;
        facet.m_nFlag = bFacesDown ? facet.m_nFlag | FACET_SUPPORT : facet.m_nFlag & ~FACET_SUPPORT;
        return bFacesDown;
    });
    if (nMode != 0) {
        GrowSupportSurfaces(facets, m_SupportArray, AcrossEdges());
    } else {
        GrowSupportSurfaces(facets, m_SupportArray, AcrossVertices());
    }
    return m_SupportArray.m_aSurface.m_nSize;
}

int CSTLModel::FilterUnSuspendSupport(double dMinArea) {
    auto const& surfaces = m_SupportArray.m_aSurface;
    int nKept = surfaces.m_nSize;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        CFeatureSurface& surface = *surfaces[i];
        surface.m_nSupportFlag |= FS_NEEDS_SUPPORT;
        if (!(dMinArea > surface.ProjectArea())) continue;
        if (surface.IsSuspendSupport() != 0) {
            surface.m_nSurfaceFlag |= FS_SMALL_SUSPENDED;
        } else {
            surface.m_nSupportFlag &= ~FS_NEEDS_SUPPORT;
            --nKept;
        }
    }
    return nKept;
}

int CFeatureSurface::IsSuspendSupport() {
    MarkFacets(m_aFacet, 1);
    double const dBandLimit = LowestZ(m_aFacet) + kBand;
    bool bAttached = false;
    for (int i = 0; i < m_aFacet.m_nSize && !bAttached; ++i) {
        DirectedEdge wall{};
        bAttached = FindWall(*m_aFacet[i], dBandLimit, wall);
        if (!bAttached) continue;
        CEdge3D edge(*wall.pStart, *wall.pEnd);
        m_EdgeList.AddHead(edge);
    }
    MarkFacets(m_aFacet, 0);
    return bAttached ? 0 : 1;
}

int CFeatureSurface::IsSuspendSurface() {
    for (int i = 0; i < m_aFacet.m_nSize; ++i) {
        CFacet& facet = *m_aFacet[i];
        for (DirectedEdge const& edge : DirectedEdges(facet)) {
            CFacet* const pNeighbor = facet.FindNeighborFacet(edge.pStart, edge.pEnd);
            if (pNeighbor == nullptr || (pNeighbor->m_nFlag & FACET_SUPPORT) != 0) continue;
            if (pNeighbor->IsSupportEdge(edge.pStart, edge.pEnd) != 0) return 0;
        }
    }
    return 1;
}

int JudgeNeighborSide(CFacet* pFacet, CFacet* pNeighbor, tagVertexNode* pA, tagVertexNode* pB, double dTol) {
    DirectedEdge const edge{pA, pB};
    tagVertexNode const* pOnEdge = pNeighbor->m_pVertex1;
    tagVertexNode const* pFar = nullptr;
    if (IsEnd(edge, pOnEdge)) {
        pFar = IsEnd(edge, pNeighbor->m_pVertex2) ? pNeighbor->m_pVertex3 : pNeighbor->m_pVertex2;
    } else {
        pFar = pNeighbor->m_pVertex1;
        pOnEdge = pNeighbor->m_pVertex2;
    }
    CPoint3D const u = *pFar - *pOnEdge;
    double const dLength = std::sqrt(u.x * u.x + u.y * u.y + u.z * u.z);
    double const d = u.x / dLength * pFacet->m_fNormal[0] + u.y / dLength * pFacet->m_fNormal[1] +
                     u.z / dLength * pFacet->m_fNormal[2];
    if (dTol > std::fabs(d)) return 0;
    return d > 0.0 ? 1 : -1;
}
