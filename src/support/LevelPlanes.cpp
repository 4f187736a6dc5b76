// Collecting the level regions of a model.

#include <cmath>

#include "foundation/memory/AddNew.h"
#include "mesh/RegionGrowth.h"
#include "mesh/STLModel.h"

using namespace varnet;

void CSTLModel::ExtractHorizonPlane(double dTolerance, CSurfaceArray* pResult) {
    RegionGrowth growth;
    auto const facets = MarkFacetsToPlace(*this, [dTolerance](CFacet const& facet) {
        float const fFromLevel = 1.0f - std::fabs(facet.m_fNormal[2]);
        return dTolerance > static_cast<double>(fFromLevel);
    });
    for (CFacet* const pSeed : facets) {
        if (pSeed->m_nRegion == kPlaced) continue;
        CFeatureSurface& surface = AddNew(pResult->m_aSurface);
        RegionGrowth::StartSurface(surface, *pSeed);
        growth.GrowSurface(surface, *pSeed, AcrossEdges(), EveryoneJoins());
    }
}
