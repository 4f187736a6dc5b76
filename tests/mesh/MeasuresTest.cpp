#include <cmath>
#include <vector>

#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"

namespace {

void FillCube(CSTLModel& model, float fSize) { AddMesh(model, shapes::Cube(fSize)); }

double LiteralArea(CSTLModel const& model) {
    double dArea = 0.0;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        double dSurface = 0.0;
        auto const& facets = surfaces.GetAt(i)->m_aFacet;
        for (int k = 0; k < facets.GetSize(); ++k) dSurface += literal::Area(*facets.GetAt(k));
        dArea += dSurface;
    }
    return dArea;
}

// Moves every third facet to a second surface.
void SplitSurface(CSTLModel& model) {
    auto& first = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    auto* const pSecond = new CFeatureSurface;
    model.m_SurfaceArray.m_aSurface.Add(pSecond);
    for (int i = first.GetSize() - 1; i >= 0; i -= 3) {
        pSecond->m_aFacet.Add(first[i]);
        first.RemoveAt(i);
    }
}

struct Scale {
    Scale(double x, double y, double z) : matrix{{x, 0, 0, 0}, {0, y, 0, 0}, {0, 0, z, 0}, {0, 0, 0, 1}} {}
    double matrix[4][4];
};

}  // namespace

TEST(Measures, CubeOfTwoHasAreaTwentyFourAndVolumeEight) {
    CSTLModel model;
    FillCube(model, 2.0f);
    EXPECT_EQ(24.0, model.Area());
    EXPECT_EQ(24.0, model.m_dArea);
    EXPECT_EQ(8.0, model.Volume());
    EXPECT_EQ(8.0, model.m_dVolume);
}

TEST(Measures, EmptyModelMeasuresZero) {
    CSTLModel model;
    model.m_dArea = 5.0;
    model.m_dVolume = 5.0;
    EXPECT_EQ(0.0, model.CalArea());
    EXPECT_EQ(0.0, model.CalVolume());
    EXPECT_EQ(0.0, model.m_dArea);
    EXPECT_EQ(0.0, model.m_dVolume);
    EXPECT_EQ(0.0, model.Area());
}

TEST(Measures, CachedValueIsServedUntilItIsCalculatedAnew) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(2, 0, 1), CPoint3D(0, 2, 1));
    EXPECT_EQ(2.0, model.Area());
    EXPECT_EQ(2.0 / 3.0, model.Volume());
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(0, 2, 1), CPoint3D(-2, 0, 1));
    EXPECT_EQ(2.0, model.Area());
    EXPECT_EQ(2.0 / 3.0, model.Volume());
    EXPECT_EQ(4.0, model.CalArea());
    EXPECT_EQ(4.0 / 3.0, model.CalVolume());
    EXPECT_EQ(4.0, model.Area());
    model.m_dArea = -1.0;
    EXPECT_EQ(-1.0, model.Area());
}

TEST(Measures, ZeroCountsAsNotComputed) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(2, 0, 0), CPoint3D(0, 2, 0));
    EXPECT_EQ(0.0, model.Volume());  // its plane holds the origin
    double offset[3] = {0.0, 0.0, 3.0};
    model.Transfer(offset);
    EXPECT_EQ(2.0, model.Volume());
}

TEST(Measures, VolumeOfAnInsideOutSolidIsPositive) {
    CSTLModel model;
    FillCube(model, 2.0f);
    model.ReverseFacet();
    EXPECT_EQ(8.0, model.CalVolume());
}

TEST(Measures, CalAreaCachesTheSurfacesToo) {
    CSTLModel model;
    FillCube(model, 2.0f);
    SplitSurface(model);
    EXPECT_EQ(24.0, model.CalArea());
    EXPECT_EQ(16.0, model.m_SurfaceArray.m_aSurface[0]->m_dArea);
    EXPECT_EQ(8.0, model.m_SurfaceArray.m_aSurface[1]->m_dArea);
}

TEST(Measures, AgreeWithFloatArithmeticToTheBit) {
    for (shapes::Mesh const& mesh :
         {shapes::Torus(20.0, 5.0, 32, 16), shapes::Bracket(),
          shapes::Moved(shapes::IcoSphere(9.0, 3), 1000.0f, -77.7f, 3e4f), shapes::Gyroid(10)}) {
        CSTLModel model;
        AddMesh(model, mesh);
        EXPECT_EQ(LiteralArea(model), model.CalArea());
        EXPECT_EQ(literal::Volume(FacetsOf(model)), model.CalVolume());
        SplitSurface(model);
        EXPECT_EQ(LiteralArea(model), model.CalArea());
        EXPECT_EQ(literal::Volume(FacetsOf(model)), model.CalVolume());
    }
}

TEST(Measures, ScalingByTwoGivesFourTimesTheAreaAndEightTimesTheVolumeAtOnce) {
    CSTLModel model;
    FillCube(model, 2.0f);
    Scale scale(2.0, 2.0, 2.0);
    model.Transform(scale.matrix);
    EXPECT_EQ(96.0, model.m_dArea);
    EXPECT_EQ(64.0, model.m_dVolume);
    EXPECT_EQ(4.0, model.m_VertexTree.m_BoundBox.m_ptMax.z);
    ExpectInvariants(model);
}

TEST(Measures, MirroringTurnsTheNormalsInwardAndKeepsTheVolume) {
    CSTLModel model;
    FillCube(model, 2.0f);
    for (CFacet* f : FacetsOf(model)) f->m_nFlag |= 0x10;
    Scale mirror(1.0, 1.0, -1.0);
    model.Transform(mirror.matrix);
    EXPECT_EQ(8.0, model.m_dVolume);
    for (CFacet const* f : FacetsOf(model)) {
        bool const bTop = f->m_pVertex1->z == 0.0 && f->m_pVertex2->z == 0.0 && f->m_pVertex3->z == 0.0;
        if (bTop) {
            EXPECT_EQ(-1.0f, f->m_fNormal[2]);
        }
        EXPECT_EQ(0u, f->m_nFlag & ~3u);
    }
    ExpectInvariants(model);
}

TEST(Measures, TransferMovesVerticesAndBoxOnly) {
    CSTLModel model;
    FillCube(model, 2.0f);
    model.Area();
    model.Volume();
    FacetAt(model, 0).m_nFlag |= 0x10;
    double offset[3] = {10.0, 20.0, 30.0};
    model.Transfer(offset);
    EXPECT_EQ(24.0, model.m_dArea);
    EXPECT_EQ(8.0, model.m_dVolume);
    EXPECT_EQ(10.0, model.m_VertexTree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(32.0, model.m_VertexTree.m_BoundBox.m_ptMax.z);
    EXPECT_EQ(0x10u, FacetAt(model, 0).m_nFlag & 0x10u);
}

TEST(Measures, FacetsAreCountedOverAllSurfaces) {
    CSTLModel model;
    FillCube(model, 2.0f);
    SplitSurface(model);
    EXPECT_EQ(12, model.GetFacetsNum());
    EXPECT_EQ(2, model.GetCharacterFacetsNum());
    model.m_Status.m_nFacetNum = 99;
    EXPECT_EQ(12, model.GetFacetsNum());
}

TEST(AddSTLModel, AddsACopyOfEveryFacetInOrder) {
    CSTLModel source;
    AddMesh(source, shapes::Bracket());
    SplitSurface(source);
    CSTLModel expected;
    for (CFacet const* f : FacetsOf(source))
        AddTriangle(expected, *f->m_pVertex1, *f->m_pVertex2, *f->m_pVertex3);
    CSTLModel model;
    model.m_dArea = 3.0;
    model.AddSTLModel(&source);
    ExpectSameModels(expected, model);
    ExpectInvariants(model);
    EXPECT_EQ(3.0, model.m_dArea);
    EXPECT_EQ(2, source.GetCharacterFacetsNum());
}

TEST(AddSTLModel, FacetsThatAreThereAreFlaggedAndNotAdded) {
    CSTLModel source;
    FillCube(source, 1.0f);
    CSTLModel model;
    FillCube(model, 1.0f);
    model.AddSTLModel(&source);
    EXPECT_EQ(12, model.GetFacetsNum());
    for (CFacet const* f : FacetsOf(model)) EXPECT_EQ(0x200u, f->m_nFlag & 0x300u);
    for (CFacet const* f : FacetsOf(source)) EXPECT_EQ(0u, f->m_nFlag & 0x300u);
}

TEST(AddSTLModel, VerticesWithinToleranceMerge) {
    CSTLModel source;
    AddTriangle(source, CPoint3D(0, 0, 0.00005), CPoint3D(1, 0, 0.00005), CPoint3D(0, -1, 0.00005));
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    model.AddSTLModel(&source);
    EXPECT_EQ(4u, model.m_VertexTree.m_nCount);
    EXPECT_EQ(0.00005, FacetAt(source, 0).m_pVertex1->z);
    EXPECT_EQ(0.0, FacetAt(model, 1).m_pVertex1->z);
}

TEST(AddSTLModel, StopsAfterTheFirstFacetWhenAFlagIsSet) {
    for (bool const bOwnFlag : {true, false}) {
        CSTLModel source;
        FillCube(source, 1.0f);
        CSTLModel model;
        (bOwnFlag ? model : source).StopCurOperate();
        model.AddSTLModel(&source);
        EXPECT_EQ(1, model.GetFacetsNum());
    }
}

TEST(AddSTLModel, SourceWithoutSurfacesAddsNothing) {
    CSTLModel source;
    source.m_SurfaceArray.RemoveAllSurface();
    CSTLModel model;
    model.AddSTLModel(&source);
    EXPECT_EQ(0, model.GetFacetsNum());
}

TEST(StopFlags, AreSetAndResetAsymmetrically) {
    CSTLModel model;
    EXPECT_EQ(0, model.IsStopCurOperate());
    model.StopCurOperate();
    EXPECT_EQ(1, model.IsStopCurOperate());
    EXPECT_EQ(1, model.m_bStopOperate);
    EXPECT_EQ(0, model.m_bStopRead);
    model.StopReadModel();
    EXPECT_EQ(1, model.m_bStopRead);
    model.ResetStopFlag();
    EXPECT_EQ(0, model.m_bStopOperate);
    EXPECT_EQ(1, model.m_bStopRead);
    model.m_bStopOperate = 5;
    EXPECT_EQ(5, model.IsStopCurOperate());
}
