#include "mesh/STLModel.h"

#include <cstring>
#include <memory>
#include <utility>

#include "FieldWalk.h"
#include "MeshChecks.h"

namespace {

CPoint3D const kA(0.0, 0.0, 0.0);
CPoint3D const kB(1.0, 0.0, 0.0);
CPoint3D const kC(0.0, 1.0, 0.0);

// Lets go of what another model owns.
void Forget(CSTLModel& model) {
    model.m_VertexTree.m_pRoot = nullptr;
    for (CSurfaceArray* const pArray : {&model.m_SurfaceArray, &model.m_SupportArray}) {
        pArray->m_aSurface.m_pData = nullptr;
        pArray->m_aSurface.m_nSize = 0;
    }
    model.m_SuspendEdgeArray.m_pData = nullptr;
    model.m_SuspendEdgeArray.m_nSize = 0;
    model.m_SupportModelList.m_pNodeHead = nullptr;
    model.m_SupportModelList.m_pBlocks = nullptr;
    model.m_SupportModelList.m_nCount = 0;
}

// A model that tells when it is destroyed.
class WatchedModel : public CSTLModel {
public:
    explicit WatchedModel(int& nDestroyed) : m_nDestroyed(nDestroyed) {}
    ~WatchedModel() override { ++m_nDestroyed; }

private:
    int& m_nDestroyed;
};

class WatchedEdge : public CFeatureEdge {
public:
    explicit WatchedEdge(int& nDestroyed) : m_nDestroyed(nDestroyed) {}
    ~WatchedEdge() override { ++m_nDestroyed; }

private:
    int& m_nDestroyed;
};

class WatchedSurface : public CFeatureSurface {
public:
    explicit WatchedSurface(int& nDestroyed) : m_nDestroyed(nDestroyed) {}
    ~WatchedSurface() override { ++m_nDestroyed; }

private:
    int& m_nDestroyed;
};

}  // namespace

TEST(STLModel, FieldsStandInOrder) {
    CSTLModel const model;
    FieldWalk(model, FieldWalk::kVirtual)
        .Then("m_VertexTree", model.m_VertexTree)
        .Then("m_SurfaceArray", model.m_SurfaceArray)
        .Then("m_Status", model.m_Status)
        .Then("m_dArea", model.m_dArea)
        .Then("m_dVolume", model.m_dVolume)
        .Then("m_nPointCounter", model.m_nPointCounter)
        .Then("m_nTotalFacet", model.m_nTotalFacet)
        .Then("m_nMaxBackRef", model.m_nMaxBackRef)
        .Then("m_nStripNum", model.m_nStripNum)
        .Then("m_SupportArray", model.m_SupportArray)
        .Then("m_SuspendEdgeArray", model.m_SuspendEdgeArray)
        .Then("m_SupportModelList", model.m_SupportModelList)
        .Then("m_nPublicValue", model.m_nPublicValue)
        .Then("m_bStopRead", model.m_bStopRead)
        .Then("m_bStopOperate", model.m_bStopOperate)
        .End();
    EXPECT_TRUE(std::has_virtual_destructor_v<CSTLModel>);
    EXPECT_TRUE((std::is_same_v<decltype(model.m_nTotalFacet), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(model.m_bStopRead), std::int32_t>));
}

TEST(STLModel, StatusFieldsStandInOrder) {
    auto const pStatus = std::make_unique<tagSTLStatus>();
    tagSTLStatus const& status = *pStatus;
    FieldWalk(status, 0)
        .Then("m_szFileName", status.m_szFileName)
        .Then("m_szHeader", status.m_szHeader)
        .Then("m_nFileType", status.m_nFileType)
        .Then("m_nFacetNum", status.m_nFacetNum)
        .Then("m_nExtra", status.m_nExtra)
        .Then("m_bGenerated", status.m_bGenerated)
        .End();
    EXPECT_EQ(260u, sizeof status.m_szFileName);
    EXPECT_EQ(4096u, sizeof status.m_szHeader);
    EXPECT_EQ(4372u, sizeof status);
    for (int i = 0; i < 84; ++i) EXPECT_EQ(0, status.m_szHeader[i]);
    EXPECT_EQ(0, status.m_nFileType);
    EXPECT_EQ(0, status.m_nFacetNum);
    EXPECT_EQ(0, status.m_nExtra);
    EXPECT_EQ(0, status.m_bGenerated);
}

TEST(STLModel, StatusCopiesWhole) {
    tagSTLStatus source;
    std::memset(source.m_szFileName, 'f', sizeof source.m_szFileName);
    std::memset(source.m_szHeader, 'h', sizeof source.m_szHeader);
    source.m_nFileType = 1;
    source.m_nFacetNum = 2;
    source.m_nExtra = 3;
    source.m_bGenerated = 4;
    tagSTLStatus target;
    target = source;
    EXPECT_EQ(0, std::memcmp(&source, &target, sizeof source));
    tagSTLStatus moved;
    moved = std::move(target);
    EXPECT_EQ(0, std::memcmp(&source, &moved, sizeof source));
}

TEST(STLModel, NewModelHasOneEmptySurface) {
    CSTLModel model;
    EXPECT_EQ(nullptr, model.m_VertexTree.m_pRoot);
    EXPECT_EQ(1, model.GetCharacterFacetsNum());
    EXPECT_EQ(0, model.GetFacetsNum());
    ASSERT_EQ(1, model.m_SurfaceArray.m_aSurface.GetSize());
    EXPECT_EQ(0, model.m_SurfaceArray.m_aSurface[0]->m_aFacet.GetSize());
    EXPECT_EQ(0, model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(0.0, model.m_dArea);
    EXPECT_EQ(0.0, model.m_dVolume);
    EXPECT_EQ(0, model.m_nPointCounter);
    EXPECT_EQ(0, model.m_nTotalFacet);
    EXPECT_EQ(0, model.m_nMaxBackRef);
    EXPECT_EQ(0, model.m_nStripNum);
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
    EXPECT_EQ(10, model.m_SupportModelList.m_nBlockSize);
    EXPECT_EQ(100, model.m_nPublicValue);
    EXPECT_EQ(0, model.m_bStopRead);
    EXPECT_EQ(0, model.m_bStopOperate);
}

TEST(STLModel, CopiesShareEverything) {
    CSTLModel source;
    AddTriangle(source, kA, kB, kC);
    source.m_nPublicValue = 55;
    source.m_dArea = 1.5;
    source.m_dVolume = 2.5;
    source.m_nTotalFacet = 9;
    source.m_bStopRead = 1;
    source.m_Status.m_nFileType = 2;
    CSTLModel copy(source);
    CSTLModel assigned;
    delete assigned.m_SurfaceArray.m_aSurface[0];
    assigned.m_SurfaceArray.m_aSurface.RemoveAll();
    assigned = source;
    for (CSTLModel* const pCopy : {&copy, &assigned}) {
        EXPECT_EQ(source.m_VertexTree.m_pRoot, pCopy->m_VertexTree.m_pRoot);
        EXPECT_EQ(source.m_SurfaceArray.m_aSurface.m_pData, pCopy->m_SurfaceArray.m_aSurface.m_pData);
        EXPECT_EQ(55, pCopy->m_nPublicValue);
        EXPECT_EQ(1.5, pCopy->m_dArea);
        EXPECT_EQ(2.5, pCopy->m_dVolume);
        EXPECT_EQ(9, pCopy->m_nTotalFacet);
        EXPECT_EQ(1, pCopy->m_bStopRead);
        EXPECT_EQ(2, pCopy->m_Status.m_nFileType);
        EXPECT_EQ(1, pCopy->m_Status.m_nFacetNum);
        Forget(*pCopy);
    }
    ExpectInvariants(source);
}

TEST(STLModel, ReleasingANewModelDoesNothing) {
    CSTLModel model;
    CFeatureSurface* const pSurface = model.m_SurfaceArray.m_aSurface[0];
    model.m_Status.m_nExtra = 5;
    model.m_dArea = 7.0;
    model.ReleaseAllFacet();
    EXPECT_EQ(pSurface, model.m_SurfaceArray.m_aSurface[0]);
    EXPECT_EQ(5, model.m_Status.m_nExtra);
    EXPECT_EQ(7.0, model.m_dArea);
}

// A vertex that came with no facet, as of one that was refused, goes as well.
TEST(STLModel, ReleasingAModelOfVerticesAloneEmptiesIt) {
    CSTLModel model;
    CPoint3D point(1, 2, 3);
    model.m_VertexTree.AddNode(point);
    model.m_Status.m_nExtra = 5;
    model.ReleaseAllFacet();
    EXPECT_EQ(nullptr, model.m_VertexTree.m_pRoot);
    EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
    EXPECT_EQ(0, model.m_VertexTree.m_BoundBox.IsValid());
    EXPECT_EQ(0, model.m_Status.m_nExtra);
    ASSERT_EQ(1, model.m_SurfaceArray.m_aSurface.m_nSize);
}

TEST(STLModel, ReleasingEmptiesTheModelButKeepsMeasuresSupportAndSolids) {
    int nEdges = 0;
    int nModels = 0;
    int nSurfaces = 0;
    CSTLModel model;
    AddMesh(model, shapes::Cube(1.0f));
    model.m_SurfaceArray.m_aSurface.Add(new WatchedSurface(nSurfaces));
    model.m_SupportArray.m_aSurface.Add(new WatchedSurface(nSurfaces));
    model.m_SuspendEdgeArray.Add(new WatchedEdge(nEdges));
    model.m_SupportModelList.AddTail(static_cast<CSTLModel*>(new WatchedModel(nModels)));
    model.m_dArea = 6.0;
    model.m_dVolume = 1.0;
    model.m_nTotalFacet = 12;
    model.m_Status.m_nFileType = 2;
    model.m_Status.m_nExtra = 1;
    model.m_Status.m_bGenerated = 1;
    model.ReleaseAllFacet();
    EXPECT_EQ(nullptr, model.m_VertexTree.m_pRoot);
    EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
    EXPECT_EQ(0, model.m_VertexTree.m_BoundBox.IsValid());
    EXPECT_EQ(1.00000002004087734272e20, model.m_VertexTree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(1, model.GetCharacterFacetsNum());
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(0, model.m_Status.m_nFacetNum);
    EXPECT_EQ(0, model.m_Status.m_nExtra);
    EXPECT_EQ(0, model.m_Status.m_bGenerated);
    EXPECT_EQ(2, model.m_Status.m_nFileType);
    EXPECT_EQ(6.0, model.m_dArea);
    EXPECT_EQ(1.0, model.m_dVolume);
    EXPECT_EQ(12, model.m_nTotalFacet);
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
    EXPECT_EQ(1, nEdges);
    EXPECT_EQ(1, nSurfaces);
    EXPECT_EQ(1, model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(1, model.m_SupportModelList.GetCount());
    EXPECT_EQ(0, nModels);
    AddMesh(model, shapes::Cube(2.0f));
    EXPECT_EQ(12, model.GetFacetsNum());
    ExpectInvariants(model);
}

TEST(STLModel, ClearingSupportLeavesTheFacets) {
    int nSurfaces = 0;
    CSTLModel model;
    AddTriangle(model, kA, kB, kC);
    auto* const pSupport = new WatchedSurface(nSurfaces);
    pSupport->m_aFacet.Add(&FacetAt(model, 0));
    model.m_SupportArray.m_aSurface.Add(pSupport);
    model.ClearSupport();
    EXPECT_EQ(1, nSurfaces);
    EXPECT_EQ(0, model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(nullptr, model.m_SupportArray.m_aSurface.m_pData);
    EXPECT_EQ(1, model.GetFacetsNum());
    ExpectInvariants(model);
    model.ClearSupport();
    EXPECT_EQ(0, model.m_SupportArray.m_aSurface.GetSize());
}

TEST(STLModel, ClearingSolidsAndChainsDestroysThem) {
    int nModels = 0;
    int nEdges = 0;
    CSTLModel model;
    for (int i = 0; i < 3; ++i) {
        model.m_SupportModelList.AddTail(static_cast<CSTLModel*>(new WatchedModel(nModels)));
        model.m_SuspendEdgeArray.Add(new WatchedEdge(nEdges));
    }
    model.ClearSupportSTL();
    EXPECT_EQ(3, nModels);
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
    EXPECT_EQ(nullptr, model.m_SupportModelList.m_pBlocks);
    EXPECT_EQ(nullptr, model.m_SupportModelList.m_pNodeFree);
    model.ClearSuspendEdge();
    EXPECT_EQ(3, nEdges);
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
    EXPECT_EQ(nullptr, model.m_SuspendEdgeArray.m_pData);
}

TEST(STLModel, DestructorDestroysAllThatTheModelOwns) {
    int nModels = 0;
    int nEdges = 0;
    int nSurfaces = 0;
    {
        CSTLModel model;
        AddTriangle(model, kA, kB, kC);
        auto* const pSupport = new WatchedSurface(nSurfaces);
        pSupport->m_aFacet.Add(&FacetAt(model, 0));
        model.m_SupportArray.m_aSurface.Add(pSupport);
        model.m_SurfaceArray.m_aSurface.Add(new WatchedSurface(nSurfaces));
        model.m_SuspendEdgeArray.Add(new WatchedEdge(nEdges));
        model.m_SupportModelList.AddTail(static_cast<CSTLModel*>(new WatchedModel(nModels)));
    }
    EXPECT_EQ(2, nSurfaces);
    EXPECT_EQ(1, nEdges);
    EXPECT_EQ(1, nModels);
}
