// Solids made below surfaces and along chains.

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "LiteralSupport.h"
#include "RandomParts.h"
#include "support/SolidIntake.h"

namespace {

CPoint3D AtZ(CPoint3D const& p, double z) { return CPoint3D(p.x, p.y, z); }

// The solid of a support surface as it is defined, by AddFacet alone.
void LiteralSolid(CFeatureSurface& surface, double dDistance, double dLevel, CSTLModel& solid) {
    surface.FindSurfaceEdge();
    XR__POSITION* position = surface.m_EdgeList.GetHeadPosition();
    while (position != nullptr) {
        CEdge3D const edge = surface.m_EdgeList.GetNext(position);
        CPoint3D const a = edge.m_ptStart, b = edge.m_ptEnd;
        if (dDistance > 0.0) {
            AddTriangle(solid, a, b, AtZ(a, a.z - dDistance));
            AddTriangle(solid, AtZ(b, b.z - dDistance), AtZ(a, a.z - dDistance), b);
        } else {
            AddTriangle(solid, a, b, AtZ(a, dLevel));
            AddTriangle(solid, AtZ(a, dLevel), b, AtZ(b, dLevel));
        }
    }
    for (int i = 0; i < surface.m_aFacet.GetSize(); ++i) {
        CPoint3D const p1 = *surface.m_aFacet[i]->m_pVertex1, p2 = *surface.m_aFacet[i]->m_pVertex2,
                       p3 = *surface.m_aFacet[i]->m_pVertex3;
        AddTriangle(solid, p1, p3, p2);
        if (dDistance > 0.0)
            AddTriangle(solid, AtZ(p1, p1.z - dDistance), AtZ(p2, p2.z - dDistance),
                        AtZ(p3, p3.z - dDistance));
    }
}

// The bar as it is defined, for chains whose later vertices all lie elsewhere in plan than the first one.
void LiteralBar(std::vector<CPoint3D> const& chain, double dHalf, double dRise, double dDown, bool bAbsolute,
                CSTLModel& solid) {
    struct S {
        CPoint3D LT, LB, RT, RB;
    };
    std::vector<S> s;
    for (std::size_t i = 0; i < chain.size(); ++i) {
        CPoint3D const P = chain[i], to = chain[i == 0 ? 1 : i];
        double const x = to.x - chain[0].x, y = to.y - chain[0].y;
        double const f = dHalf / std::sqrt(y * y + x * x);
        double const ox = -y * f, oy = x * f;
        double const top = dRise + P.z, bottom = bAbsolute ? dDown : P.z - dDown;
        s.push_back({CPoint3D(P.x + ox, P.y + oy, top), CPoint3D(P.x + ox, P.y + oy, bottom),
                     CPoint3D(P.x - ox, P.y - oy, top), CPoint3D(P.x - ox, P.y - oy, bottom)});
    }
    AddTriangle(solid, s[0].LT, s[0].LB, s[0].RT);
    AddTriangle(solid, s[0].LB, s[0].RB, s[0].RT);
    for (std::size_t i = 1; i < s.size(); ++i) {
        S const &u = s[i - 1], &v = s[i];
        AddTriangle(solid, u.LT, u.RT, v.LT);
        AddTriangle(solid, u.RT, v.RT, v.LT);
        AddTriangle(solid, u.LB, v.LB, u.RB);
        AddTriangle(solid, v.LB, v.RB, u.RB);
        AddTriangle(solid, u.LT, v.LT, u.LB);
        AddTriangle(solid, v.LT, v.LB, u.LB);
        AddTriangle(solid, u.RT, u.RB, v.RB);
        AddTriangle(solid, v.RT, u.RT, v.RB);
    }
    AddTriangle(solid, s.back().LT, s.back().RT, s.back().RB);
    AddTriangle(solid, s.back().LB, s.back().LT, s.back().RB);
}

// A chain over vertices of its own.
struct Chain {
    explicit Chain(std::vector<CPoint3D> const& points) {
        for (CPoint3D const& p : points) {
            nodes.push_back(std::make_unique<tagVertexNode>(p));
            edge.m_VertexList.AddTail(nodes.back().get());
        }
    }
    // A vertex that stands in the chain already.
    void Again(std::size_t nVertex) { edge.m_VertexList.AddTail(nodes[nVertex].get()); }
    std::vector<std::unique_ptr<tagVertexNode>> nodes;
    CFeatureEdge edge;
};

void ExpectAllFinite(CSTLModel const& model) {
    for (tagVertexNode const* const p : VerticesOf(model)) {
        EXPECT_TRUE(std::isfinite(p->x) && std::isfinite(p->y) && std::isfinite(p->z));
    }
}

bool HasVertex(CSTLModel const& model, CPoint3D const& wanted) {
    for (tagVertexNode const* const p : VerticesOf(model)) {
        if ((*p == wanted) != 0) return true;
    }
    return false;
}

// A triangle that faces down at height 2, and one that holds the lowest point of the model at 0.
void AddTriangleAboveThePlate(CSTLModel& model) {
    AddTriangle(model, CPoint3D(0, 0, 2), CPoint3D(0, 3, 2), CPoint3D(4, 0, 2));
    AddTriangle(model, CPoint3D(20, 0, 0), CPoint3D(20, 1, 5), CPoint3D(20, 0, 5));
}

}  // namespace

TEST(SupportSolids, TriangleWithAHeightMakesAClosedPrismOfEightFacets) {
    CSTLModel model;
    AddTriangleAboveThePlate(model);
    ASSERT_EQ(1, model.FindSupportSurface(45.0, 1));
    model.GenSupportSTL(1.5);
    auto const solids = SolidsOf(model);
    ASSERT_EQ(1u, solids.size());
    EXPECT_EQ(8, solids[0]->GetFacetsNum());
    EXPECT_EQ(6u, solids[0]->m_VertexTree.m_nCount);
    ExpectClosed(*solids[0]);
    EXPECT_DOUBLE_EQ(9.0, SignedVolume(*solids[0]));
    EXPECT_EQ(0.5, solids[0]->m_VertexTree.m_BoundBox.m_ptMin.z);
    EXPECT_EQ(2.0, solids[0]->m_VertexTree.m_BoundBox.m_ptMax.z);
    EXPECT_STREQ("EXTEND SUPPORT STRUCT", solids[0]->m_Status.m_szHeader);
    EXPECT_STREQ("extend.stl", solids[0]->m_Status.m_szFileName);
    EXPECT_EQ(0, solids[0]->m_Status.m_bGenerated);
    EXPECT_EQ(3, model.m_SupportArray.m_aSurface[0]->m_EdgeList.GetCount());
}

TEST(SupportSolids, LevelMakesWallsAndATopButNoBottom) {
    CSTLModel model;
    AddTriangleAboveThePlate(model);
    model.FindSupportSurface(45.0, 1);
    model.GenSupportSTL(0.0);
    auto const solids = SolidsOf(model);
    ASSERT_EQ(1u, solids.size());
    EXPECT_EQ(7, solids[0]->GetFacetsNum());
    EXPECT_EQ(0.0, solids[0]->m_VertexTree.m_BoundBox.m_ptMin.z);
    model.GenSupportSTL(-1.0);
    EXPECT_EQ(-1.0, SolidsOf(model)[1]->m_VertexTree.m_BoundBox.m_ptMin.z);
}

TEST(SupportSolids, WallFacetsWithoutAreaAreDropped) {
    // One corner lies on the level already: two of the six wall facets collapse.
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, 3, 0.5), CPoint3D(4, 0, 0.5));
    ASSERT_EQ(1, model.FindSupportSurface(45.0, 1));
    model.GenSupportSTL(0.0);
    EXPECT_EQ(5, SolidsOf(model)[0]->GetFacetsNum());
}

TEST(SupportSolids, HeightTakesOnlyWhatNeedsSupportAndALevelTakesAll) {
    CSTLModel model;
    AddTriangleAboveThePlate(model);
    model.FindSupportSurface(45.0, 1);
    model.m_SupportArray.m_aSurface[0]->m_nSupportFlag = 0;
    model.GenSupportSTL(1.0);
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
    model.GenSupportSTL(0.0);
    EXPECT_EQ(1, model.m_SupportModelList.GetCount());
}

TEST(SupportSolids, BottomOfAClosedBoxGivesAClosedSolidOfItsVolume) {
    NumberedModel m(shapes::Box({0, 0, 5}, {4, 3, 7}));
    m.model.FindSupportSurface(45.0, 1);
    m.model.GenSupportSTL(2.0);
    CSTLModel& solid = *SolidsOf(m.model)[0];
    EXPECT_EQ(12, solid.GetFacetsNum());
    ExpectClosed(solid);
    EXPECT_DOUBLE_EQ(24.0, SignedVolume(solid));
    EXPECT_EQ(12, m.model.GetFacetsNum());
}

TEST(SupportSolids, NothingFoundMakesNothing) {
    CSTLModel model;
    for (double const d : {1.0, 0.0, -1.0}) {
        model.GenSupportSTL(d);
        model.GenSuspendSTL(d);
    }
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
}

TEST(SupportSolids, SurfaceWithoutFacetsMakesAnEmptySolid) {
    CSTLModel model;
    model.m_SupportArray.m_aSurface.Add(new CFeatureSurface);
    model.GenSupportSTL(0.0);
    ASSERT_EQ(1u, SolidsOf(model).size());
    EXPECT_EQ(0, SolidsOf(model)[0]->GetFacetsNum());
    EXPECT_EQ(1, SolidsOf(model)[0]->GetCharacterFacetsNum());
}

TEST(SupportSolids, WallsLeadUpForADistanceThatIsNotAboveZero) {
    CSTLModel model;
    AddTriangleAboveThePlate(model);
    model.FindSupportSurface(45.0, 1);
    CFeatureSurface& surface = *model.m_SupportArray.m_aSurface[0];
    surface.FindSurfaceEdge();
    CSTLModel walls;
    EXPECT_EQ(&walls, surface.ExtendEdge(-1.0, &walls));
    EXPECT_EQ(6, walls.GetFacetsNum());
    EXPECT_EQ(3.0, walls.m_VertexTree.m_BoundBox.m_ptMax.z);
    // (b, a, a') and (a', b', b) of the first edge, a = (0, 0, 2), b = (0, 3, 2).
    CSTLModel expected;
    CPoint3D const a(0, 0, 2), b(0, 3, 2), aUp(0, 0, 3), bUp(0, 3, 3);
    AddTriangle(expected, b, a, aUp);
    AddTriangle(expected, aUp, bUp, b);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(SameBits(*FacetAt(expected, i).m_pVertex1, *FacetAt(walls, i).m_pVertex1));
        EXPECT_TRUE(SameBits(*FacetAt(expected, i).m_pVertex2, *FacetAt(walls, i).m_pVertex2));
        EXPECT_TRUE(SameFloats(FacetAt(expected, i).m_fNormal, FacetAt(walls, i).m_fNormal));
    }
    // A distance of 0 gives nothing but collapsed facets.
    std::unique_ptr<CSTLModel> const made(surface.ExtendEdge(0.0, nullptr));
    EXPECT_EQ(0, made->GetFacetsNum());
    EXPECT_STREQ("extend.stl", made->m_Status.m_szFileName);
}

TEST(SupportSolids, WallsAreAddedToAModelThatHasFacets) {
    CSTLModel model;
    AddTriangleAboveThePlate(model);
    model.FindSupportSurface(45.0, 1);
    CFeatureSurface& surface = *model.m_SupportArray.m_aSurface[0];
    surface.FindSurfaceEdge();
    CSTLModel walls;
    AddTriangle(walls, CPoint3D(50, 0, 0), CPoint3D(51, 0, 0), CPoint3D(50, 1, 0));
    surface.ExtendEdgeTo(1.0, &walls);
    EXPECT_EQ(7, walls.GetFacetsNum());
    EXPECT_STREQ("EXTEND SUPPORT STRUCT", walls.m_Status.m_szHeader);
    surface.ClearVergeArray();
    surface.ExtendEdgeTo(1.0, &walls);
    EXPECT_EQ(7, walls.GetFacetsNum());
}

TEST(SupportSolids, DistancesThatAreNoNumbersReachNoTree) {
    double const dInfinity = std::numeric_limits<double>::infinity();
    for (double const d : {std::nan(""), dInfinity, -dInfinity, 1e300}) {
        CSTLModel model;
        AddTriangleAboveThePlate(model);
        model.FindSupportSurface(45.0, 1);
        model.GenSupportSTL(d);
        for (CSTLModel const* const pSolid : SolidsOf(model)) ExpectAllFinite(*pSolid);
        Chain chain({CPoint3D(0, 0, 0), CPoint3D(4, 0, 0)});
        CSTLModel bar;
        chain.edge.GenSTL(&bar, d, 1.0, 1.0, 0);
        chain.edge.GenSTL(&bar, 1.0, d, 1.0, 0);
        chain.edge.GenSTL(&bar, 1.0, 1.0, d, 0);
        chain.edge.GenSTL(&bar, 1.0, 1.0, d, 1);
        ExpectAllFinite(bar);
    }
}

TEST(SupportSolids, TrianglesAreGeneratedWhereEveryCoordinateIsFinite) {
    std::array<double, 9> c = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    auto const isGenerated = [&c] {
        return varnet::GeneratedFacet({c[0], c[1], c[2]}, {c[3], c[4], c[5]}, {c[6], c[7], c[8]}).has_value();
    };
    EXPECT_TRUE(isGenerated());
    for (double& d : c) {
        double const dKept = d;
        for (double const dWild : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
            d = dWild;
            EXPECT_FALSE(isGenerated()) << &d - c.data();
        }
        d = dKept;
    }
}

TEST(SupportSolids, AgreeWithTheLiteralOnesOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 140; ++nSeed) {
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        m.model.FindSupportSurface(60.0, 1);
        m.model.FilterUnSuspendSupport(1.0);
        for (double const d : {0.75, 0.0, -2.0}) {
            SCOPED_TRACE(testing::Message() << nSeed << ", " << d);
            m.model.ClearSupportSTL();
            m.model.GenSupportSTL(d);
            auto const solids = SolidsOf(m.model);
            std::size_t nSolid = 0;
            auto& surfaces = m.model.m_SupportArray.m_aSurface;
            for (int i = 0; i < surfaces.GetSize(); ++i) {
                if (d > 0.0 && (surfaces[i]->m_nSupportFlag & FS_NEEDS_SUPPORT) == 0) continue;
                CSTLModel expected;
                LiteralSolid(*surfaces[i], d, d + m.model.m_VertexTree.m_BoundBox.m_ptMin.z, expected);
                ASSERT_LT(nSolid, solids.size());
                ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, *solids[nSolid++]));
            }
            ASSERT_EQ(nSolid, solids.size());
        }
        m.ExpectMarksCleared();
    }
}

TEST(Bars, StraightChainOfTwoVerticesIsABoxOfTwelveFacets) {
    Chain chain({CPoint3D(0, 0, 5), CPoint3D(10, 0, 5)});
    CSTLModel bar;
    chain.edge.GenSTL(&bar, 3.0, 1.0, 2.0, 0);
    EXPECT_EQ(12, bar.GetFacetsNum());
    EXPECT_EQ(8u, bar.m_VertexTree.m_nCount);
    ExpectClosed(bar);
    EXPECT_DOUBLE_EQ(10.0 * 6.0 * 3.0, SignedVolume(bar));
    CBoundBox3D const box = bar.m_VertexTree.m_BoundBox;
    EXPECT_TRUE(SameBits(CPoint3D(0, -3, 3), box.m_ptMin));
    EXPECT_TRUE(SameBits(CPoint3D(10, 3, 6), box.m_ptMax));
    // The start cap comes first, facing back along the chain; the end cap comes last.
    EXPECT_EQ(-1.0f, FacetAt(bar, 0).m_fNormal[0]);
    EXPECT_EQ(-1.0f, FacetAt(bar, 1).m_fNormal[0]);
    float const fWanted[8][3] = {{0, 0, 1}, {0, 0, 1}, {0, 0, -1}, {0, 0, -1},
                                 {0, 1, 0}, {0, 1, 0}, {0, -1, 0}, {0, -1, 0}};
    for (int i = 0; i < 8; ++i) {
        for (int k = 0; k < 3; ++k) EXPECT_EQ(fWanted[i][k], FacetAt(bar, i + 2).m_fNormal[k]) << i;
    }
    EXPECT_EQ(1.0f, FacetAt(bar, 10).m_fNormal[0]);
    EXPECT_EQ(1.0f, FacetAt(bar, 11).m_fNormal[0]);
}

// The third section is turned by the direction from (0, 0) to (10, 10): its left side lies towards (-1, 1).
TEST(Bars, SectionAfterABendIsTurnedByTheChordFromTheStart) {
    Chain chain({CPoint3D(0, 0, 5), CPoint3D(10, 0, 5), CPoint3D(10, 10, 5)});
    CSTLModel bar;
    chain.edge.GenSTL(&bar, 2.0, 1.0, 2.0, 0);
    EXPECT_EQ(20, bar.GetFacetsNum());
    ExpectClosed(bar);
    EXPECT_TRUE(HasVertex(bar, CPoint3D(10, 2, 6)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(10, -2, 6)));
    double const d = std::sqrt(2.0);
    EXPECT_TRUE(HasVertex(bar, CPoint3D(10 - d, 10 + d, 6)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(10 + d, 10 - d, 3)));
}

TEST(Bars, BottomIsAtALevelWhereThatIsAskedFor) {
    Chain chain({CPoint3D(0, 0, 5), CPoint3D(10, 0, 7)});
    CSTLModel bar;
    chain.edge.GenSTL(&bar, 3.0, 1.0, -4.0, 1);
    EXPECT_EQ(-4.0, bar.m_VertexTree.m_BoundBox.m_ptMin.z);
    EXPECT_EQ(8.0, bar.m_VertexTree.m_BoundBox.m_ptMax.z);
    EXPECT_TRUE(HasVertex(bar, CPoint3D(0, 3, 6)));
    ExpectClosed(bar);
    EXPECT_DOUBLE_EQ(10.0 * 6.0 * 11.0, SignedVolume(bar));
}

TEST(Bars, ChainOfFewerThanTwoVerticesMakesNothing) {
    CSTLModel bar;
    Chain empty({});
    empty.edge.GenSTL(&bar, 3.0, 1.0, 2.0, 0);
    Chain one({CPoint3D(0, 0, 5)});
    one.edge.GenSTL(&bar, 3.0, 1.0, 2.0, 0);
    EXPECT_EQ(0u, bar.m_VertexTree.m_nCount);
}

TEST(Bars, GeneratorTakesChosenChainsForAHeightAndAllForALevelAndAddsUp) {
    CSTLModel model;
    CPoint3D const a(0, 0, 1), b(4, 0, 1), left(2, 1, 9), right(2, -1, 9);
    AddTriangle(model, a, left, b);
    AddTriangle(model, a, b, right);
    ASSERT_EQ(0, model.FindSuspendEdge(-1, 45.0, 45.0, 10.0));
    ASSERT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    for (double const dHeight : {2.0, 0.5, 1e-300}) model.GenSuspendSTL(dHeight);
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
    model.GenSuspendSTL(0.0);
    ASSERT_EQ(1, model.m_SupportModelList.GetCount());
    CSTLModel const& solid = *SolidsOf(model)[0];
    EXPECT_EQ(1, solid.m_Status.m_bGenerated);
    EXPECT_EQ(1.0, solid.m_VertexTree.m_BoundBox.m_ptMin.z);
    EXPECT_EQ(2.0, solid.m_VertexTree.m_BoundBox.m_ptMax.z);
    EXPECT_EQ(3.0, solid.m_VertexTree.m_BoundBox.m_ptMax.y);
    model.GenSuspendSTL(0.0);
    EXPECT_EQ(2, model.m_SupportModelList.GetCount());
    model.m_SuspendEdgeArray[0]->m_nEdgeFlag |= FE_SELECTED;
    model.m_SuspendEdgeArray[0]->m_dHalfWidth = 0.5;
    model.m_SuspendEdgeArray[0]->m_dRise = 0.25;
    model.GenSuspendSTL(2.0);
    ASSERT_EQ(3, model.m_SupportModelList.GetCount());
    CBoundBox3D const box = SolidsOf(model)[2]->m_VertexTree.m_BoundBox;
    EXPECT_TRUE(SameBits(CPoint3D(0, -0.5, -1), box.m_ptMin));
    EXPECT_TRUE(SameBits(CPoint3D(4, 0.5, 1.25), box.m_ptMax));
    model.ClearSupportSTL();
    EXPECT_EQ(0, model.m_SupportModelList.GetCount());
}

TEST(Bars, ChainOfOneVertexLeavesAnEmptySolid) {
    CSTLModel model;
    auto* const pChain = new CFeatureEdge;
    tagVertexNode a(CPoint3D(0, 0, 0));
    pChain->m_VertexList.AddTail(&a);
    model.m_SuspendEdgeArray.Add(pChain);
    model.GenSuspendSTL(0.0);
    ASSERT_EQ(1u, SolidsOf(model).size());
    EXPECT_EQ(0, SolidsOf(model)[0]->GetFacetsNum());
    EXPECT_EQ(1, SolidsOf(model)[0]->m_Status.m_bGenerated);
}

// A square ring: (v0, v1, v2, v3, v0, v1). The section at the second v0 keeps the direction of v3's.
TEST(Bars, VertexAboveTheFirstOneKeepsTheLastDirection) {
    Chain ring({CPoint3D(0, 0, 5), CPoint3D(10, 0, 5), CPoint3D(10, 10, 5), CPoint3D(0, 10, 5)});
    ring.Again(0);
    ring.Again(1);
    CSTLModel bar;
    ring.edge.GenSTL(&bar, 2.0, 1.0, 2.0, 0);
    ExpectAllFinite(bar);
    // v3 lies in the direction (0, 1): left is (-1, 0).
    EXPECT_TRUE(HasVertex(bar, CPoint3D(-2, 10, 6)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(-2, 0, 6)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(2, 0, 3)));
}

TEST(Bars, ChainThatBeginsUprightTakesTheNextDirection) {
    Chain chain({CPoint3D(0, 0, 0), CPoint3D(0, 0, 2), CPoint3D(10, 0, 2)});
    CSTLModel bar;
    chain.edge.GenSTL(&bar, 1.0, 1.0, 3.0, 0);
    ExpectAllFinite(bar);
    EXPECT_TRUE(HasVertex(bar, CPoint3D(0, 1, 1)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(0, -1, 3)));
    EXPECT_TRUE(HasVertex(bar, CPoint3D(10, 1, -1)));
}

TEST(Bars, UprightChainMakesNothing) {
    Chain chain({CPoint3D(1, 1, 0), CPoint3D(1, 1, 2), CPoint3D(1, 1, 4)});
    CSTLModel bar;
    chain.edge.GenSTL(&bar, 1.0, 1.0, 3.0, 0);
    EXPECT_EQ(0u, bar.m_VertexTree.m_nCount);
    Chain tiny({CPoint3D(0, 0, 0), CPoint3D(1e-200, 0, 2)});  // its squared plan length vanishes
    tiny.edge.GenSTL(&bar, 1.0, 1.0, 3.0, 0);
    EXPECT_EQ(0u, bar.m_VertexTree.m_nCount);
}

TEST(Bars, AgreeWithTheLiteralOnesOnRandomChains) {
    std::mt19937 random(3);
    auto const at = [&random] { return static_cast<double>(random() % 2001) * 0.01 - 10.0; };
    for (int nTry = 0; nTry < 500; ++nTry) {
        SCOPED_TRACE(nTry);
        std::vector<CPoint3D> points;
        for (std::size_t n = 2 + random() % 6; n > 0; --n) {
            double const x = at(), y = at(), z = at();
            points.emplace_back(x, y, z);
        }
        Chain chain(points);
        double const dHalf = at(), dRise = at(), dDown = at();
        bool const bAbsolute = nTry % 2 == 0;
        CSTLModel bar, expected;
        chain.edge.GenSTL(&bar, dHalf, dRise, dDown, bAbsolute ? 1 : 0);
        LiteralBar(points, dHalf, dRise, dDown, bAbsolute, expected);
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, bar));
    }
}
