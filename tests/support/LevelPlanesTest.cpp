// Level regions.

#include "LiteralSupport.h"
#include "RandomParts.h"

TEST(LevelPlanes, CubeHasABottomAndATopOfTwoFacetsInTheOrderOfTheFacets) {
    NumberedModel m(shapes::Cube(2.0f));
    BorrowedSurfaces found;
    m.model.ExtractHorizonPlane(0.001, &found.array);
    auto const groups = m.Numbers(found.array);
    ASSERT_EQ(2u, groups.size());
    for (auto const& group : groups) ASSERT_EQ(2u, group.size());
    EXPECT_LT(groups[0][0], groups[1][0]);
    CFeatureSurface const& first = *found.array.m_aSurface[0];
    EXPECT_EQ(0u, first.m_nSurfaceFlag);
    EXPECT_EQ(0u, first.m_nSupportFlag);
    EXPECT_EQ(-1.0, first.m_dArea);
    EXPECT_EQ(0, first.m_BoundBox.IsValid());
    EXPECT_EQ(1, m.model.GetCharacterFacetsNum());
    EXPECT_EQ(12, m.model.GetFacetsNum());
    m.ExpectMarksCleared();
}

TEST(LevelPlanes, ToleranceAboveOneTakesEveryShell) {
    shapes::Mesh mesh = shapes::IcoSphere(3.0, 1);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 10, 0, 0));
    NumberedModel m(mesh);
    BorrowedSurfaces found;
    m.model.ExtractHorizonPlane(1.1, &found.array);
    auto const groups = m.Numbers(found.array);
    ASSERT_EQ(2u, groups.size());
    EXPECT_EQ(80u, groups[0].size());
    EXPECT_EQ(12u, groups[1].size());
}

TEST(LevelPlanes, ToleranceOfZeroOrBelowTakesNoneAndNeedsNoArray) {
    NumberedModel m(shapes::Cube(2.0f));
    for (CFacet* const f : m.facets) f->m_nRegion = 5;
    m.model.ExtractHorizonPlane(0.0, nullptr);
    m.model.ExtractHorizonPlane(-1.0, nullptr);
    m.model.ExtractHorizonPlane(std::nan(""), nullptr);
    m.ExpectMarksCleared();
    CSTLModel empty;
    empty.ExtractHorizonPlane(0.5, nullptr);
    empty.ClassifySurf(CSTLModel::EightClassifyFun, 0.5);
    empty.ExtractHorizonPlane(0.5, nullptr);
}

TEST(LevelPlanes, SecondCallAddsTheSameSurfacesAgain) {
    NumberedModel m(shapes::Cube(2.0f));
    BorrowedSurfaces found;
    m.model.ExtractHorizonPlane(0.001, &found.array);
    m.model.ExtractHorizonPlane(0.001, &found.array);
    auto const groups = m.Numbers(found.array);
    ASSERT_EQ(4u, groups.size());
    EXPECT_EQ(groups[0], groups[2]);
    EXPECT_EQ(groups[1], groups[3]);
}

TEST(LevelPlanes, FacetsThatTouchAtAVertexAreApart) {
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {1, 1, 1});
    shapes::Append(mesh, shapes::Box({1, 1, 1}, {2, 2, 2}));
    NumberedModel m(mesh);
    BorrowedSurfaces found;
    m.model.ExtractHorizonPlane(0.001, &found.array);
    EXPECT_EQ(4, found.array.m_aSurface.GetSize());
}

TEST(LevelPlanes, SheetsThatFaceUpAndDownAreOneWhereTheyShareAnEdge) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(1, 0, 1), CPoint3D(0, 1, 1));
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(1, 0, 1), CPoint3D(0, -1, 1));
    BorrowedSurfaces found;
    model.ExtractHorizonPlane(0.001, &found.array);
    EXPECT_EQ(1, found.array.m_aSurface.GetSize());
}

// The slope's normal z is 1 - 0.0004998 or so: 1.81 degrees off level.
TEST(LevelPlanes, ToleranceIsHeldAgainstTheFloatDifference) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0.0316), CPoint3D(0, 1, 0));
    double const dOff = 1.0f - FacetAt(model, 0).m_fNormal[2];
    BorrowedSurfaces found;
    model.ExtractHorizonPlane(dOff, &found.array);
    EXPECT_EQ(0, found.array.m_aSurface.GetSize());
    model.ExtractHorizonPlane(std::nextafter(dOff, 1.0), &found.array);
    EXPECT_EQ(1, found.array.m_aSurface.GetSize());
}

// Slopes of 3 in 4 and of 4 in 3: normals of 0.8 and 0.6, 0.2 and 0.4 off level; a steep one of 12 in 5 is
// 1 - 5/13 = 0.615 off, and an upright facet 1.
TEST(LevelPlanes, EveryToleranceUpToOneDividesSlopesBySteepness) {
    auto const count = [](double dTolerance) {
        CSTLModel model;
        double const heights[] = {3.0 / 4.0, 4.0 / 3.0, 12.0 / 5.0};
        for (int i = 0; i < 3; ++i)
            AddTriangle(model, CPoint3D(10 * i, 0, 0), CPoint3D(10 * i + 1, 0, heights[i]),
                        CPoint3D(10 * i, 1, 0));
        AddTriangle(model, CPoint3D(30, 0, 0), CPoint3D(31, 0, 0), CPoint3D(30, 0, 1));
        BorrowedSurfaces found;
        model.ExtractHorizonPlane(dTolerance, &found.array);
        return found.array.m_aSurface.GetSize();
    };
    EXPECT_EQ(0, count(0.19));
    EXPECT_EQ(1, count(0.21));
    EXPECT_EQ(1, count(0.39));
    EXPECT_EQ(2, count(0.41));
    EXPECT_EQ(2, count(0.61));
    EXPECT_EQ(3, count(0.62));
    EXPECT_EQ(3, count(0.99));
    EXPECT_EQ(3, count(1.0));
    EXPECT_EQ(4, count(1.01));
}

TEST(LevelPlanes, AgreesWithTheLiteralSearchOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 210; ++nSeed) {
        SCOPED_TRACE(nSeed);
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        for (double const dTolerance : {0.001, 0.1, 0.4, 0.6, 0.9, 2.0}) {
            BorrowedSurfaces found;
            m.model.ExtractHorizonPlane(dTolerance, &found.array);
            ASSERT_EQ(m.Numbers(literal::LevelPlanes(m.facets, dTolerance)), m.Numbers(found.array));
            m.ExpectMarksCleared();
        }
    }
}
