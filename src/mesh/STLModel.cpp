// How a model comes to be, is emptied and ends.

#include "mesh/STLModel.h"

#include "foundation/memory/AddNew.h"

using namespace varnet;

namespace {

constexpr int kPublicValue = 100;

void AddDefaultSurface(CSTLModel& model) { AddNew(model.m_SurfaceArray.m_aSurface); }

}  // namespace

CSTLModel::CSTLModel()
    : m_dArea(0.0),
      m_dVolume(0.0),
      m_nPointCounter(0),
      m_nTotalFacet(0),
      m_nMaxBackRef(0),
      m_nStripNum(0),
      m_nPublicValue(kPublicValue),
      m_bStopRead(0),
      m_bStopOperate(0) {
    AddDefaultSurface(*this);
}

// The facets go first: the surfaces own them, and support surfaces refer to them without looking.
CSTLModel::~CSTLModel() {
    m_SurfaceArray.RemoveAllSurface();
    ClearSupport();
    ClearSupportSTL();
    ClearSuspendEdge();
}

void CSTLModel::ReleaseAllFacet() {
    if (m_VertexTree.m_nCount == 0) return;
    m_SurfaceArray.RemoveAllSurface();
    ClearSuspendEdge();
    m_VertexTree.ReleaseAll();
    m_VertexTree.m_nCount = 0;
    m_VertexTree.m_BoundBox = CBoundBox3D();
    m_Status.m_nFacetNum = 0;
    m_Status.m_nExtra = 0;
    m_Status.m_bGenerated = 0;
    AddDefaultSurface(*this);
}

// The facets belong to m_SurfaceArray: each surface forgets them before it is destroyed.
void CSTLModel::ClearSupport() {
    auto& surfaces = m_SupportArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        if (surfaces[i] != nullptr) surfaces[i]->m_aFacet.RemoveAll();
    }
    m_SupportArray.RemoveAllSurface();
}

void CSTLModel::ClearSupportSTL() {
    XR__POSITION* position = m_SupportModelList.GetHeadPosition();
    while (position != nullptr) delete static_cast<CSTLModel*>(m_SupportModelList.GetNext(position));
    m_SupportModelList.RemoveAll();
}

void CSTLModel::ClearSuspendEdge() {
    for (int i = 0; i < m_SuspendEdgeArray.m_nSize; ++i) delete m_SuspendEdgeArray[i];
    m_SuspendEdgeArray.RemoveAll();
}
