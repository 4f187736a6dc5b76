// Measuring, moving and merging whole models, and the flags that stop long work.

#include <array>
#include <cmath>

#include "foundation/Counter.h"
#include "foundation/FloatLanes.h"
#include "mesh/FacetMeasures.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"

using namespace varnet;

double CSTLModel::Area() { return m_dArea != 0.0 ? m_dArea : CalArea(); }

double CSTLModel::CalArea() {
    m_dArea = 0.0;
    auto const& surfaces = m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) m_dArea += surfaces[i]->CalArea();
    return m_dArea;
}

double CSTLModel::Volume() { return m_dVolume != 0.0 ? m_dVolume : CalVolume(); }

// A third of the sum, over all facets, of the area times the distance of the facet's plane from the origin.
double CSTLModel::CalVolume() {
    double dSum = 0.0;
    ForEachFacet(m_SurfaceArray, [&dSum](CFacet& facet) {
        double const dDistance = Dot(ToFloatLanes(facet.m_fNormal), ToFloatLanes(*facet.m_pVertex1));
        dSum += dDistance * AreaOf(facet);
    });
    m_dVolume = std::fabs(dSum / 3.0);
    return m_dVolume;
}

void CSTLModel::Transform(double (*const pMatrix)[4]) {
    m_VertexTree.Transform(pMatrix);
    CalculateNormal();
    CalArea();
    CalVolume();
}

void CSTLModel::Transfer(double* const pOffset) { m_VertexTree.Transfer(pOffset); }

void CSTLModel::ZCompensate(double dz) {
    m_VertexTree.ZCompensate(m_VertexTree.m_pRoot, dz);
    m_VertexTree.ReBuildTree();
    CalculateNormal();
}

void CSTLModel::ResumeZCompensate() {
    m_VertexTree.ResumeZCompensate(m_VertexTree.m_pRoot);
    m_VertexTree.ReBuildTree();
    CalculateNormal();
}

void CSTLModel::AddSTLModel(CSTLModel* pOther) {
    auto const& surfaces = pOther->m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        auto const& facets = surfaces[i]->m_aFacet;
        for (int k = 0; k < facets.m_nSize; ++k) {
            tagFACET record = RecordOf(*facets.m_pData[k]);
            AddFacet(record);
            if (IsStopCurOperate() != 0 || pOther->IsStopCurOperate() != 0) return;
        }
    }
}

void CSTLModel::StopCurOperate() { StoreShared(m_bStopOperate, 1); }

void CSTLModel::StopReadModel() { StoreShared(m_bStopRead, 1); }

void CSTLModel::ResetStopFlag() { StoreShared(m_bStopOperate, 0); }

int CSTLModel::IsStopCurOperate() { return LoadShared(m_bStopOperate); }

int CSTLModel::GetFacetsNum() {
    std::int32_t nFacets = 0;
    auto const& surfaces = m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) nFacets += LoadShared(surfaces[i]->m_aFacet.m_nSize);
    return nFacets;
}

int CSTLModel::GetCharacterFacetsNum() { return m_SurfaceArray.m_aSurface.m_nSize; }
