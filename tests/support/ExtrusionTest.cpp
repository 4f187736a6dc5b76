// Surfaces moved along their vertex normals.

#include "LiteralSupport.h"
#include "RandomParts.h"
#include "foundation/Geometry.h"

namespace {

// The default surface of a model, as a surface to extrude.
CFeatureSurface& Skin(CSTLModel& model) { return *model.m_SurfaceArray.m_aSurface[0]; }

CPoint3D LiteralExtrudePoint(tagVertexNode& v, double dDistance) {
    double N[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < v.m_nFacetNum; ++i) {
        CFacet const& f = *v.m_ppFacet[i];
        tagVertexNode *A = f.m_pVertex1, *B = f.m_pVertex2;
        if (f.m_pVertex1 == &v) A = f.m_pVertex2, B = f.m_pVertex3;
        if (f.m_pVertex2 == &v) A = f.m_pVertex3, B = f.m_pVertex1;
        double const w = CalAngle(v, *A, v, *B);
        for (int k = 0; k < 3; ++k) N[k] += static_cast<double>(f.m_fNormal[k]) * w;
    }
    double const n = std::sqrt(N[0] * N[0] + N[1] * N[1] + N[2] * N[2]);
    double const dDivisor = 0.0001 > n ? 1.0 : n;
    return CPoint3D(v.x + N[0] / dDivisor * dDistance, v.y + N[1] / dDivisor * dDistance,
                    v.z + N[2] / dDivisor * dDistance);
}

}  // namespace

// At a corner of a cube three right angles meet: the vertex moves along the diagonal.
TEST(Extrusion, CornerOfACubeMovesAlongItsDiagonalByTheDistance) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(2.0f));
    for (tagVertexNode* const p : VerticesOf(model)) {
        CPoint3D const moved = p->CalExtrudePoint(std::sqrt(3.0));
        EXPECT_NEAR(p->x < 1.0 ? -1.0 : 3.0, moved.x, 1e-6);
        EXPECT_NEAR(p->y < 1.0 ? -1.0 : 3.0, moved.y, 1e-6);
        EXPECT_NEAR(p->z < 1.0 ? -1.0 : 3.0, moved.z, 1e-6);
    }
}

TEST(Extrusion, VertexWhoseNormalsCancelStaysNearItsPlace) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(-1, 0, 0), CPoint3D(0, 1, 0));  // faces down
    tagVertexNode& v = *FacetAt(model, 0).m_pVertex1;
    CPoint3D const moved = v.CalExtrudePoint(5.0);
    EXPECT_NEAR(0.0, moved.z, 5.0 * 0.0001);
    tagVertexNode alone(CPoint3D(1, 2, 3));
    EXPECT_TRUE(SameBits(CPoint3D(1, 2, 3), alone.CalExtrudePoint(5.0)));
}

TEST(Extrusion, ASumThatCancelsIsNotMadeLonger) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    CFacet& facet = FacetAt(model, 0);
    CPoint3D corner(0, 0, 0);
    CPoint3D alongX(1, 0, 0);
    CPoint3D alongY(0, 1, 0);
    double const dWeight = CalAngle(corner, alongX, corner, alongY);
    // As a host may set it: far shorter than the limit, and 2^-20, 2^-21 and 2^-22 to the bit.
    float const normal[] = {0x1p-20f, -0x1p-21f, 0x1p-22f};
    for (int i = 0; i < 3; ++i) facet.m_fNormal[i] = normal[i];
    CPoint3D const moved = facet.m_pVertex1->CalExtrudePoint(4.0);
    EXPECT_EQ(moved.x, 0x1p-18 * dWeight);
    EXPECT_EQ(moved.y, -0x1p-19 * dWeight);
    EXPECT_EQ(moved.z, 0x1p-20 * dWeight);
}

// Two facets at right angles to their vertex, whose normals a host has set: along x, and a little along y.
TEST(Extrusion, NormalsWhoseSumIsAsLongAsTheLimitDoNotCancel) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, 1, 0), CPoint3D(-1, 0, 0));
    tagVertexNode& v = *FacetAt(model, 0).m_pVertex1;
    CPoint3D corner(0, 0, 0);
    CPoint3D alongX(1, 0, 0);
    CPoint3D alongY(0, 1, 0);
    double const dWeight = CalAngle(corner, alongX, corner, alongY);
    auto const length = [dWeight](float x, float y, float z) {
        double const sx = x * dWeight;
        double const sy = y * dWeight;
        double const sz = z * dWeight;
        return std::sqrt(sx * sx + sy * sy + sz * sz);
    };
    // Each of the three floats makes up for what the one before it lacks.
    double const dAim2 = 0.0001 / dWeight * (0.0001 / dWeight);
    float x = static_cast<float>(0.0001 / dWeight);
    float y = 0.0f;
    float z = 0.0f;
    for (int i = 0; i < 1000 && length(x, y, z) != 0.0001; ++i) {
        x = std::nextafter(x, 0.0f);
        double const dX2 = static_cast<double>(x) * x;
        y = std::nextafter(static_cast<float>(std::sqrt(dAim2 - dX2)), 0.0f);
        z = static_cast<float>(std::sqrt(dAim2 - dX2 - static_cast<double>(y) * y));
    }
    ASSERT_EQ(0.0001, length(x, y, z));
    for (int i = 0; i < 2; ++i) {
        float* const pNormal = FacetAt(model, i).m_fNormal;
        pNormal[0] = i == 0 ? x : 0.0f;
        pNormal[1] = i == 0 ? 0.0f : y;
        pNormal[2] = i == 0 ? 0.0f : z;
    }
    EXPECT_NEAR(5.0, v.CalExtrudePoint(5.0).x, 0.1);
    FacetAt(model, 0).m_fNormal[0] = std::nextafter(x, 0.0f);
    EXPECT_NEAR(0.0, v.CalExtrudePoint(5.0).x, 0.1);
}

TEST(Extrusion, EachVertexGetsOneOffsetAndAllItsFacetsCount) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(2.0f));
    CFeatureSurface& skin = Skin(model);
    skin.CalExtrudePoint(0.5);
    EXPECT_EQ(8, skin.m_ExtrudeList.GetCount());
    skin.CalExtrudePoint(0.25);
    EXPECT_EQ(8, skin.m_ExtrudeList.GetCount());
    for (tagVertexNode* const p : VerticesOf(model)) {
        ASSERT_NE(nullptr, p->m_pExtrude);
        EXPECT_TRUE(SameBits(p->CalExtrudePoint(0.25), *p->m_pExtrude));
    }
    skin.ClearUsedPoint();
    for (tagVertexNode* const p : VerticesOf(model)) EXPECT_EQ(nullptr, p->m_pExtrude);
    EXPECT_EQ(0, skin.m_ExtrudeList.GetCount());
}

TEST(Extrusion, DistanceOfZeroTurnsTheSurfaceOverAndItsStripsCollapse) {
    CSTLModel model, shell;
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(4, 0, 1), CPoint3D(0, 3, 1));
    CFeatureSurface& skin = Skin(model);
    skin.ExtrudeSurface(&shell, 0.0);
    for (tagVertexNode* const p : VerticesOf(model)) EXPECT_TRUE(SameBits(*p, *p->m_pExtrude));
    ASSERT_EQ(1, shell.GetFacetsNum());
    EXPECT_EQ(-1.0f, FacetAt(shell, 0).m_fNormal[2]);
    skin.ExtrudeSurfaceVerge(&shell, 0.0);
    EXPECT_EQ(1, shell.GetFacetsNum());
}

TEST(Extrusion, SurfaceOffsetAndStripsMakeAClosedShell) {
    for (double const dDistance : {0.5, -0.5}) {
        CSTLModel model, shell;
        AddMesh(model, shapes::HeightField(4, 1.0, [](double x, double y) { return 0.1 * x * y; }));
        CFeatureSurface& skin = Skin(model);
        skin.ExtrudeSurface(&shell, dDistance);
        skin.ExtrudeSurfaceVerge(&shell, dDistance);
        EXPECT_EQ(32 + 2 * 16, shell.GetFacetsNum());
        AddMesh(shell, shapes::HeightField(4, 1.0, [](double x, double y) { return 0.1 * x * y; }));
        EXPECT_EQ(64 + 2 * 16, shell.GetFacetsNum());
        int nRim = 0;
        for (CFacet* const f : FacetsOf(shell)) {
            for (CFacet* const n : literal::ThreeNeighbors(f)) nRim += n == nullptr ? 1 : 0;
        }
        EXPECT_EQ(0, nRim);
        for (CFacet const* const f : FacetsOf(model)) EXPECT_EQ(0, f->m_nRegion);
    }
}

TEST(Extrusion, StripsTurnWithTheSignOfTheDistance) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(4, 0, 1), CPoint3D(0, 3, 1));
    CFeatureSurface& skin = Skin(model);
    skin.CalExtrudePoint(2.0);
    CFacet const& facet = FacetAt(model, 0);
    tagVertexNode *const a = facet.m_pVertex1, *const b = facet.m_pVertex2;
    CSTLModel up, down;
    skin.AddExtrudeEdge(&up, 2.0, a, b);
    skin.AddExtrudeEdge(&down, -2.0, a, b);
    ASSERT_EQ(2, up.GetFacetsNum());
    ASSERT_EQ(2, down.GetFacetsNum());
    EXPECT_EQ(-1.0f, FacetAt(up, 0).m_fNormal[1]);
    EXPECT_EQ(-1.0f, FacetAt(up, 1).m_fNormal[1]);
    EXPECT_EQ(1.0f, FacetAt(down, 0).m_fNormal[1]);
    EXPECT_EQ(1.0f, FacetAt(down, 1).m_fNormal[1]);
}

TEST(Extrusion, SurfaceMayBeExtrudedIntoItsOwnModel) {
    CSTLModel model;
    AddMesh(model, shapes::HeightField(3, 1.0, [](double, double) { return 0.0; }));
    CFeatureSurface& skin = Skin(model);
    skin.ExtrudeSurface(&model, 1.0);
    EXPECT_EQ(36, model.GetFacetsNum());
    CSTLModel other;
    AddTriangle(other, CPoint3D(0, 0, 0), CPoint3D(4, 0, 0), CPoint3D(0, 4, 0));
    Skin(other).CalExtrudePoint(1.0);
    Skin(other).ExtrudeSurfaceVerge(&other, 1.0);
    EXPECT_EQ(7, other.GetFacetsNum());
    for (CFacet const* const f : FacetsOf(other)) EXPECT_EQ(0, f->m_nRegion);
}

TEST(Extrusion, EmptySurfaceAddsNothing) {
    CFeatureSurface surface;
    CSTLModel shell;
    surface.ExtrudeSurface(&shell, 1.0);
    surface.ExtrudeSurfaceVerge(&shell, 1.0);
    EXPECT_EQ(0u, shell.m_VertexTree.m_nCount);
}

TEST(Extrusion, AgreesWithTheLiteralOneOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 140; ++nSeed) {
        SCOPED_TRACE(nSeed);
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        for (tagVertexNode* const p : VerticesOf(m.model))
            ASSERT_TRUE(SameBits(LiteralExtrudePoint(*p, 0.7), p->CalExtrudePoint(0.7)));
        m.model.ClassifySurf(CSTLModel::EightClassifyFun, 0.3);
        CFeatureSurface& surface = *m.model.m_SurfaceArray.m_aSurface[0];
        for (double const d : {0.7, -0.7}) {
            CSTLModel shell, expected;
            surface.ExtrudeSurface(&shell, d);
            surface.ExtrudeSurfaceVerge(&shell, d);
            std::set<CFacet const*> own;
            for (int i = 0; i < surface.m_aFacet.GetSize(); ++i) {
                CFacet const& f = *surface.m_aFacet[i];
                own.insert(&f);
                AddTriangle(expected, LiteralExtrudePoint(*f.m_pVertex1, d),
                            LiteralExtrudePoint(*f.m_pVertex3, d), LiteralExtrudePoint(*f.m_pVertex2, d));
            }
            for (int i = 0; i < surface.m_aFacet.GetSize(); ++i) {
                CFacet const& f = *surface.m_aFacet[i];
                tagVertexNode* const v[4] = {f.m_pVertex1, f.m_pVertex2, f.m_pVertex3, f.m_pVertex1};
                for (int k = 0; k < 3; ++k) {
                    CFacet const* const n = literal::FirstNeighbor(&f, v[k], v[k + 1]);
                    if (n != nullptr && own.count(n) != 0) continue;
                    CPoint3D const A = *v[k], B = *v[k + 1];
                    CPoint3D const a = LiteralExtrudePoint(*v[k], d), b = LiteralExtrudePoint(*v[k + 1], d);
                    AddTriangle(expected, A, d > 0.0 ? B : a, d > 0.0 ? a : B);
                    AddTriangle(expected, d > 0.0 ? a : B, d > 0.0 ? B : a, b);
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, shell));
        }
    }
}
