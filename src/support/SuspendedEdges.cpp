// Finding the lines of a model that hang in the air.

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "support/EdgeChains.h"

using namespace varnet;

namespace {

using std::numbers::pi;

// Suspended edges slope less than the angle that was asked for, by this many degrees.
constexpr double kSlopeMargin = 1.0;

// In m_nRegion: a facet whose edges have been judged.
constexpr std::int32_t kHandled = 0;
constexpr std::int32_t kNotHandled = 1;

double ToRadians(double dDegrees) { return dDegrees / 180.0 * pi; }

void SetFlag(CFacet& facet, std::uint32_t nFlag, bool bSet) {
    facet.m_nFlag = bSet ? facet.m_nFlag | nFlag : facet.m_nFlag & ~nFlag;
}

// Flags the facets that are nearly level, and marks all as not handled.
void FlagLevelFacets(CSTLModel const& model, double dUpAngle, double dDownAngle) {
    double const dLeastUp = std::cos(ToRadians(dUpAngle));
    double const dLeastDown = -std::cos(ToRadians(dDownAngle));
    ForEachFacet(model.m_SurfaceArray, [dLeastUp, dLeastDown](CFacet& facet) {
        double const nz = facet.m_fNormal[2];
        facet.m_nRegion = kNotHandled;
        SetFlag(facet, FACET_SUSPEND, nz > dLeastUp);
        SetFlag(facet, FACET_SUPPORT, dLeastDown > nz);
    });
}

std::vector<MeshEdge> EdgesOfMode(CSTLModel const& model, int nMode, double dSlopeLimit) {
    std::vector<MeshEdge> found;
    ForEachFacet(model.m_SurfaceArray, [&found, nMode, dSlopeLimit](CFacet& facet) {
        if (facet.m_nRegion == kHandled) return;
        facet.m_nRegion = kHandled;
        for (auto const& [pStart, pEnd] : DirectedEdges(facet)) {
            if (IsSuspendEdge(pStart, pEnd, &facet, dSlopeLimit) == nMode) found.push_back({pStart, pEnd});
        }
    });
    return found;
}

// Chains come about from one chain for each edge, which they absorb, and removing keeps the capacity: the
// empty array gets that of one that has held them all.
void GrowForEach(std::vector<MeshEdge> const& edges, XR_CArray<CFeatureEdge*, CFeatureEdge*>& chains) {
    struct EmptyAgain {
        XR_CArray<CFeatureEdge*, CFeatureEdge*>& chains;
        ~EmptyAgain() { chains.RemoveAt(0, chains.GetSize()); }
    } const emptyAgain{chains};
    for (std::size_t i = 0; i < edges.size(); ++i) chains.Add(nullptr);
}

}  // namespace

int CSTLModel::FindSuspendEdge(int nMode, double dUpAngle, double dDownAngle, double dMinLength) {
    ClearSuspendEdge();
    FlagLevelFacets(*this, dUpAngle, dDownAngle);
    double const dSlopeLimit = std::tan(ToRadians((nMode == 1 ? dUpAngle : dDownAngle) - kSlopeMargin));
    std::vector<MeshEdge> const edges = EdgesOfMode(*this, nMode, dSlopeLimit);
    GrowForEach(edges, m_SuspendEdgeArray);
    ChainEdges(edges, m_SuspendEdgeArray);
    int nSelected = 0;
    for (int i = 0; i < m_SuspendEdgeArray.m_nSize; ++i) {
        CFeatureEdge& chain = *m_SuspendEdgeArray[i];
        if (!(chain.GetLength(0) > dMinLength)) continue;
        chain.m_nEdgeFlag |= FE_SELECTED;
        ++nSelected;
    }
    return nSelected;
}

int IsSuspendEdge(tagVertexNode* pA, tagVertexNode* pB, CFacet* pFacet, double dSlopeLimit) {
    CPoint3D const d = *pB - *pA;
    if (std::fabs(d.z) / std::sqrt(d.y * d.y + d.x * d.x) >= dSlopeLimit) return 0;
    if (pFacet->IsSupportEdge(pA, pB) != 0) return 0;
    CFacet* const pNeighbor = pFacet->FindNeighborFacet(pA, pB);
    if (pNeighbor == nullptr || pNeighbor->m_nRegion == kHandled) return 0;
    if (pNeighbor->IsSupportEdge(pA, pB) != 0) return 0;
    float const a = pFacet->m_fNormal[2];
    float const b = pNeighbor->m_fNormal[2];
    if (a < 0.0f) return !(b < 0.0f) && b > std::fabs(a) ? 1 : -1;
    return b > 0.0f || !(std::fabs(b) > std::fabs(a)) ? 1 : -1;
}
