#include "mesh/FacetIntake.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"
#include "trees/PointSoup.h"

using namespace varnet;

namespace {

CPoint3D const kA(0.0, 0.0, 0.0);
CPoint3D const kB(1.0, 0.0, 0.0);
CPoint3D const kC(0.0, 1.0, 0.0);

void ExpectZ(CFacet const& facet, double z1, double z2, double z3) {
    EXPECT_EQ(z1, facet.m_pVertex1->z);
    EXPECT_EQ(z2, facet.m_pVertex2->z);
    EXPECT_EQ(z3, facet.m_pVertex3->z);
}

// A triangle of corners of a small pool, so that the same ones come again in all orders.
class TriangleSoup {
public:
    TriangleSoup(unsigned nSeed, PointSoup::Kind kind) : m_Points(nSeed, kind) {
        for (int i = 0; i < 9; ++i) m_Pool.push_back(m_Points.Next());
    }

    tagFACET Next() {
        tagFACET facet;
        for (CPoint3D& corner : facet.m_ptVertex) {
            corner = m_Pool[m_Points.Below(static_cast<unsigned>(m_Pool.size()))];
            if (m_Points.Below(20) == 0) corner = m_Points.Next();
            if (m_Points.Below(60) == 0) corner.y = m_Points.Below(2) == 0 ? 1.1e10 : -1.1e10;
        }
        for (float& f : facet.m_fNormal) f = static_cast<float>(m_Points.Below(100));
        return facet;
    }

private:
    PointSoup m_Points;
    std::vector<CPoint3D> m_Pool;
};

void ExpectAsLiteral(LiteralMesh const& expected, CSTLModel const& model) {
    ASSERT_TRUE(SameShape(expected.m_Tree.m_pRoot, model.m_VertexTree.m_pRoot));
    ASSERT_EQ(expected.m_Tree.m_nCount, model.m_VertexTree.m_nCount);
    std::vector<CFacet*> const facets = FacetsOf(model);
    ASSERT_EQ(expected.m_Facets.size(), facets.size());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        auto const& [corners, nFlag] = expected.m_Facets[i];
        ASSERT_EQ(corners[0], facets[i]->m_pVertex1->m_nIndex);
        ASSERT_EQ(corners[1], facets[i]->m_pVertex2->m_nIndex);
        ASSERT_EQ(corners[2], facets[i]->m_pVertex3->m_nIndex);
        ASSERT_EQ(nFlag, facets[i]->m_nFlag);
        CFacet computed(*facets[i]);
        literal::CalculateNormal(&computed);
        ASSERT_TRUE(SameFloats(computed.m_fNormal, facets[i]->m_fNormal));
        ASSERT_EQ(0, facets[i]->m_nRegion);
    }
    for (tagVertexNode const* pVertex : VerticesOf(model)) {
        auto const& list = expected.m_Lists[static_cast<std::size_t>(pVertex->m_nIndex)];
        ASSERT_EQ(list.size(), static_cast<std::size_t>(pVertex->m_nFacetNum));
        for (std::size_t k = 0; k < list.size(); ++k) {
            ASSERT_EQ(facets[static_cast<std::size_t>(list[k])], pVertex->m_ppFacet[k]);
        }
    }
}

class AddFacetTwin : public testing::TestWithParam<int> {
protected:
    PointSoup::Kind Kind() const { return static_cast<PointSoup::Kind>(GetParam()); }
};

}  // namespace

TEST(AddFacet, RefusesCoordinatesBeyondTheRangeWithoutATrace) {
    for (double const dFar : {1.0e11, -1.0e11, std::nextafter(1e10, 1e11), -std::nextafter(1e10, 1e11)}) {
        for (int nCorner = 0; nCorner < 3; ++nCorner) {
            for (double CPoint3D::*const axis : {&CPoint3D::x, &CPoint3D::y, &CPoint3D::z}) {
                CSTLModel model;
                tagFACET facet = FacetOf(kA, kB, kC);
                facet.m_ptVertex[nCorner].*axis = dFar;
                model.AddFacet(facet);
                EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
                EXPECT_EQ(nullptr, model.m_VertexTree.m_pRoot);
                EXPECT_EQ(0, model.m_VertexTree.m_BoundBox.IsValid());
                EXPECT_EQ(0, model.GetFacetsNum());
            }
        }
    }
}

TEST(AddFacet, TakesCoordinatesAtTheEndOfTheRange) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(-1e10, -1e10, -1e10), CPoint3D(1e10, 0, 0), CPoint3D(0, 1e10, 1e10));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(AddFacet, CollapsedFacetLeavesItsDistinctCorners) {
    CSTLModel two;
    AddTriangle(two, kA, CPoint3D(0.00005, 0.0, 0.0), kC);
    EXPECT_EQ(0, two.GetFacetsNum());
    EXPECT_EQ(2u, two.m_VertexTree.m_nCount);
    EXPECT_EQ(0, two.m_Status.m_nFacetNum);
    CSTLModel one;
    AddTriangle(one, kA, CPoint3D(0.00005, 0.0, 0.0), CPoint3D(0.0, 0.00005, 0.0));
    EXPECT_EQ(1u, one.m_VertexTree.m_nCount);
    CSTLModel last;
    AddTriangle(last, kA, kB, CPoint3D(0.0, 0.0, 0.00005));
    EXPECT_EQ(2u, last.m_VertexTree.m_nCount);
    EXPECT_EQ(0, last.GetFacetsNum());
}

TEST(AddFacet, CollinearFacetLeavesThreeCorners) {
    CSTLModel model;
    AddTriangle(model, kA, kB, CPoint3D(2.0, 0.0, 0.0));
    EXPECT_EQ(3u, model.m_VertexTree.m_nCount);
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(0, model.m_Status.m_nFacetNum);
    for (tagVertexNode const* p : VerticesOf(model)) EXPECT_EQ(0, p->m_nFacetNum);
}

TEST(AddFacet, CoordinateThatIsNotANumberLeavesNoFacet) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(std::nan(""), 0.0, 0.0), CPoint3D(0, 5, 0), CPoint3D(0, 0, 5));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(3u, model.m_VertexTree.m_nCount);
}

TEST(AddFacet, SameFacetAgainOnlyFlagsTheFirst) {
    CSTLModel model;
    AddTriangle(model, kA, kB, kC);
    EXPECT_EQ(0x2u, FacetAt(model, 0).m_nFlag);
    AddTriangle(model, kA, kB, kC);
    EXPECT_EQ(0x202u, FacetAt(model, 0).m_nFlag);
    AddTriangle(model, kB, kC, kA);
    AddTriangle(model, kC, kA, kB);
    EXPECT_EQ(0x202u, FacetAt(model, 0).m_nFlag);
    EXPECT_EQ(1, model.GetFacetsNum());
    EXPECT_EQ(1, model.m_Status.m_nFacetNum);
    ExpectInvariants(model);
}

TEST(AddFacet, TurnedFacetFlagsTheFirst) {
    CPoint3D const corners[3] = {kA, kB, kC};
    for (int n = 0; n < 3; ++n) {
        CSTLModel model;
        AddTriangle(model, kA, kB, kC);
        AddTriangle(model, corners[n], corners[(n + 2) % 3], corners[(n + 1) % 3]);
        EXPECT_EQ(0x102u, FacetAt(model, 0).m_nFlag);
        EXPECT_EQ(1, model.GetFacetsNum());
    }
}

TEST(AddFacet, LowestCornerComesFirstAndTheWindingStays) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 5), CPoint3D(9, 0, 3), CPoint3D(0, 9, 4));
    ExpectZ(FacetAt(model, 0), 3, 4, 5);
    EXPECT_EQ(2u, FacetAt(model, 0).m_nFlag);
    AddTriangle(model, CPoint3D(0, 0, 15), CPoint3D(9, 0, 14), CPoint3D(0, 9, 13));
    ExpectZ(FacetAt(model, 1), 13, 15, 14);
    EXPECT_EQ(1u, FacetAt(model, 1).m_nFlag);
}

TEST(AddFacet, TiesGoToTheEarlierCorner) {
    struct Case {
        double z[3];
        int nFirst;
    };
    for (Case const& c : {Case{{1, 1, 1}, 0}, Case{{1, 1, 2}, 0}, Case{{1, 2, 1}, 0}, Case{{2, 1, 1}, 1}}) {
        CSTLModel model;
        AddTriangle(model, CPoint3D(0, 0, c.z[0]), CPoint3D(9, 0, c.z[1]), CPoint3D(0, 9, c.z[2]));
        EXPECT_EQ(c.nFirst, FacetAt(model, 0).m_pVertex1->m_nIndex);
        EXPECT_EQ((c.nFirst + 1) % 3, FacetAt(model, 0).m_pVertex2->m_nIndex);
        EXPECT_EQ((c.nFirst + 2) % 3, FacetAt(model, 0).m_pVertex3->m_nIndex);
    }
}

TEST(AddFacet, NormalOfTheRecordNeverSurvives) {
    CSTLModel model;
    tagFACET facet = FacetOf(kA, kB, kC);
    facet.m_fNormal[0] = 1.0f;
    facet.m_fNormal[1] = 1.0f;
    facet.m_fNormal[2] = 1.0f;
    model.AddFacet(facet);
    EXPECT_EQ(0.0f, FacetAt(model, 0).m_fNormal[0]);
    EXPECT_EQ(1.0f, FacetAt(model, 0).m_fNormal[2]);
    EXPECT_EQ(1.0f, facet.m_fNormal[0]);
}

TEST(AddFacet, NearHeightsAreSnappedInTheRecordToo) {
    CSTLModel model;
    tagFACET facet = FacetOf(kA, CPoint3D(1, 0, 0.00005), CPoint3D(0, 1, -0.00009));
    model.AddFacet(facet);
    ExpectZ(FacetAt(model, 0), 0.0, 0.0, 0.0);
    EXPECT_EQ(0.0, facet.m_ptVertex[1].z);
    EXPECT_EQ(0.0, facet.m_ptVertex[2].z);
}

TEST(AddFacet, EntersTheFacetInTheListsOfItsCornersAndOfTheFirstSurface) {
    CSTLModel model;
    auto* const pSecond = new CFeatureSurface;
    model.m_SurfaceArray.m_aSurface.Add(pSecond);
    AddTriangle(model, kA, kB, kC);
    AddTriangle(model, kB, CPoint3D(1, 1, 0), kC);
    EXPECT_EQ(2, model.m_SurfaceArray.m_aSurface[0]->m_aFacet.GetSize());
    EXPECT_EQ(0, pSecond->m_aFacet.GetSize());
    EXPECT_EQ(2, model.m_Status.m_nFacetNum);
    tagVertexNode const* const pB = FacetAt(model, 0).m_pVertex2;
    ASSERT_EQ(2, pB->m_nFacetNum);
    EXPECT_EQ(&FacetAt(model, 0), pB->m_ppFacet[0]);
    EXPECT_EQ(&FacetAt(model, 1), pB->m_ppFacet[1]);
    EXPECT_EQ(1, FacetAt(model, 0).m_pVertex1->m_nFacetNum);
}

TEST(AddFacet, LeavesTheCachedMeasures) {
    CSTLModel model;
    model.m_dArea = 3.0;
    model.m_dVolume = 4.0;
    AddTriangle(model, kA, kB, kC);
    EXPECT_EQ(3.0, model.Area());
    EXPECT_EQ(4.0, model.Volume());
}

TEST_P(AddFacetTwin, RandomTrianglesEnterAsDefined) {
    std::size_t nEntered = 0;
    for (unsigned nSeed = 0; nSeed < 60; ++nSeed) {
        TriangleSoup soup(nSeed, Kind());
        LiteralMesh literalMesh;
        CSTLModel model;
        for (int n = 0; n < 250; ++n) {
            tagFACET offered = soup.Next();
            tagFACET expected = offered;
            literalMesh.AddFacet(expected);
            model.AddFacet(offered);
            for (int i = 0; i < 3; ++i) {
                ASSERT_TRUE(SameBits(expected.m_ptVertex[i], offered.m_ptVertex[i]));
            }
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(literalMesh, model));
        if (Kind() != PointSoup::kWithoutNumbers && Kind() != PointSoup::kNearlyNumbers)
            ExpectInvariants(model);
        nEntered += literalMesh.m_Facets.size();
    }
    EXPECT_GT(nEntered, 60u);
}

TEST_P(AddFacetTwin, ReadersIntakeGivesTheSameModelAsAddFacet) {
    for (unsigned nSeed = 100; nSeed < 160; ++nSeed) {
        TriangleSoup soup(nSeed, Kind());
        CSTLModel plain;
        CSTLModel model;
        FacetIntake intake(model);
        for (int n = 0; n < 250; ++n) {
            tagFACET offered = soup.Next();
            tagFACET expected = offered;
            plain.AddFacet(expected);
            intake.Add(offered);
            for (int i = 0; i < 3; ++i) {
                ASSERT_TRUE(SameBits(expected.m_ptVertex[i], offered.m_ptVertex[i]));
            }
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(plain, model));
    }
}

INSTANTIATE_TEST_SUITE_P(AllSoups, AddFacetTwin, testing::Range(0, static_cast<int>(PointSoup::kKinds)));

TEST(AddFacet, ShapesEnterWhole) {
    for (shapes::Mesh const& mesh : {shapes::Cube(10.0f), shapes::Torus(20.0, 5.0, 24, 12),
                                     shapes::IcoSphere(15.0, 3), shapes::Bracket()}) {
        CSTLModel model;
        AddMesh(model, mesh);
        EXPECT_EQ(static_cast<int>(mesh.size()), model.GetFacetsNum());
        ExpectInvariants(model);
        for (CFacet* const f : FacetsOf(model)) {
            EXPECT_EQ(1u, literal::Neighbors(f, f->m_pVertex1, f->m_pVertex2).size());
        }
    }
}

// Thousands of facets at one vertex.
TEST(AddFacet, VertexOfVeryManyFacetsKeepsThemInOrder) {
    CSTLModel model;
    for (int n = 0; n < 5000; ++n) {
        AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(2 * n, 1, 1), CPoint3D(2 * n + 1, 1, 1));
    }
    tagVertexNode const* const pHub = FacetAt(model, 0).m_pVertex1;
    ASSERT_EQ(5000, pHub->m_nFacetNum);
    for (int n = 0; n < 5000; ++n) ASSERT_EQ(&FacetAt(model, n), pHub->m_ppFacet[n]);
    ExpectInvariants(model);
}

// The address sanitizer sees what is written behind a list.
TEST(AddFacet, ListsThatAHostHasMadeGrowBeforeAFacetIsEntered) {
    for (int nFacets = 1; nFacets <= 40; ++nFacets) {
        CSTLModel model;
        for (int n = 0; n < nFacets; ++n) {
            AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(2 * n, 1, 1), CPoint3D(2 * n + 1, 1, 1));
        }
        std::vector<CFacet*> facets = FacetsOf(model);
        tagVertexNode* const pHub = facets[0]->m_pVertex1;
        ASSERT_EQ(nFacets, pHub->m_nFacetNum);
        CFacet** const ppOfLibrary = pHub->m_ppFacet;
        std::size_t const nBytes = facets.size() * sizeof(CFacet*);
        pHub->m_ppFacet = static_cast<CFacet**>(std::malloc(nBytes));
        ASSERT_NE(nullptr, pHub->m_ppFacet);
        std::memcpy(static_cast<void*>(pHub->m_ppFacet), facets.data(), nBytes);
        for (int n = nFacets; n < nFacets + 3; ++n) {
            AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(2 * n, 1, 1), CPoint3D(2 * n + 1, 1, 1));
        }
        facets = FacetsOf(model);
        ASSERT_EQ(nFacets + 3, pHub->m_nFacetNum);
        for (int n = 0; n < nFacets + 3; ++n)
            ASSERT_EQ(facets[static_cast<std::size_t>(n)], pHub->m_ppFacet[n]);
        ExpectInvariants(model);
        model.ReleaseAllFacet();
        if (nFacets > 7) std::free(static_cast<void*>(ppOfLibrary));
    }
}
