#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"
#include "trees/FacetList.h"

namespace {

// Turns a facet's winding and leaves its marks.
void Turn(CFacet& facet) { facet.Reverse(); }

// Whether every edge between two facets is run in both directions.
bool IsConsistent(CSTLModel const& model) {
    for (CFacet const* f : FacetsOf(model)) {
        tagVertexNode const* const corners[3] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3};
        for (int k = 0; k < 3; ++k) {
            for (CFacet const* g : literal::Neighbors(f, corners[k], corners[(k + 1) % 3])) {
                if (!literal::RunsFromTo(g, corners[(k + 1) % 3], corners[k])) return false;
            }
        }
    }
    return true;
}

// The sum over the facets of the z of the normal times the height: above 0 for a solid whose normals point
// out.
double Outwardness(CSTLModel const& model) {
    double dSum = 0.0;
    for (CFacet* f : FacetsOf(model)) dSum += f->m_fNormal[2] * f->m_pVertex1->z * f->ProjectArea();
    return dSum;
}

// Turns the same facets of both models and gives them the same marks.
void TurnSome(CSTLModel const& a, CSTLModel const& b, unsigned nSeed, unsigned nOneIn) {
    std::mt19937 random(nSeed);
    std::vector<CFacet*> const facetsA = FacetsOf(a);
    std::vector<CFacet*> const facetsB = FacetsOf(b);
    for (std::size_t i = 0; i < facetsA.size(); ++i) {
        bool const bTurn = random() % nOneIn == 0;
        unsigned const nFlag = random() % 3 == 0 ? 0x330 : 0;
        for (CFacet* const f : {facetsA[i], facetsB[i]}) {
            if (bTurn) Turn(*f);
            f->m_nFlag |= nFlag;
            f->m_nRegion = static_cast<int>(nFlag);
        }
    }
}

// Deals the facets of both models out to three surfaces, in another order than they stand at the vertices.
void DealOut(CSTLModel& a, CSTLModel& b, unsigned nSeed) {
    for (CSTLModel* const pModel : {&a, &b}) {
        std::vector<CFacet*> facets = FacetsOf(*pModel);
        std::shuffle(facets.begin(), facets.end(), std::mt19937(nSeed));
        auto& surfaces = pModel->m_SurfaceArray.m_aSurface;
        surfaces[0]->m_aFacet.RemoveAll();
        surfaces.Add(new CFeatureSurface);
        surfaces.Add(new CFeatureSurface);
        for (std::size_t i = 0; i < facets.size(); ++i) {
            surfaces[static_cast<int>(i % 3)]->m_aFacet.Add(facets[i]);
        }
    }
}

void ExpectFixedAsDefined(shapes::Mesh const& mesh, unsigned nSeed, unsigned nOneIn) {
    CSTLModel expected;
    CSTLModel model;
    AddMesh(expected, mesh);
    AddMesh(model, mesh);
    TurnSome(expected, model, nSeed, nOneIn);
    if (nSeed % 2 == 1) DealOut(expected, model, nSeed);
    literal::FixNormal(FacetsOf(expected));
    model.FixNormal();
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
}

// Facets at the edge from (0, 0, 0) to (0, 0, 1), like the leaves of a book; the bit says which is turned.
shapes::Mesh Leaves(int nLeaves, unsigned nTurned) {
    shapes::Mesh mesh;
    for (int n = 0; n < nLeaves; ++n) {
        shapes::Corner const low{0.0f, 0.0f, 0.0f};
        shapes::Corner const high{0.0f, 0.0f, 1.0f};
        shapes::Corner const tip{static_cast<float>(5 + n), static_cast<float>(n * n), 0.5f};
        bool const bTurned = (nTurned >> n & 1) != 0;
        mesh.push_back(bTurned ? shapes::Triangle{high, low, tip} : shapes::Triangle{low, high, tip});
    }
    return mesh;
}

bool RunsUp(CSTLModel const& model, int nFacet) {
    CFacet const& f = FacetAt(model, nFacet);
    tagVertexNode const* pHigh = nullptr;
    for (tagVertexNode const* p : VerticesOf(model)) {
        if (p->x == 0.0 && p->z == 1.0) pHigh = p;
    }
    return literal::RunsFromTo(&f, f.m_pVertex1, pHigh);
}

// Random triangles over few corners: edges of many facets, open rims, all windings.
shapes::Mesh Tangle(unsigned nSeed, unsigned nCorners, int nTriangles) {
    std::mt19937 random(nSeed);
    std::vector<shapes::Corner> pool;
    for (unsigned n = 0; n < nCorners; ++n) {
        pool.push_back({static_cast<float>(random() % 50), static_cast<float>(random() % 50),
                        static_cast<float>(random() % 4)});
    }
    shapes::Mesh mesh;
    for (int n = 0; n < nTriangles; ++n) {
        mesh.push_back({pool[random() % nCorners], pool[random() % nCorners], pool[random() % nCorners]});
    }
    return mesh;
}

}  // namespace

TEST(FixNormal, TurnsTheOneWrongFacetOfACube) {
    for (int nWrong = 1; nWrong < 12; ++nWrong) {
        CSTLModel model;
        AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 0.0f, 0.0f, 1.0f));
        Turn(FacetAt(model, nWrong));
        ASSERT_FALSE(IsConsistent(model));
        model.FixNormal();
        EXPECT_TRUE(IsConsistent(model));
        EXPECT_GT(Outwardness(model), 0.0);
    }
}

TEST(FixNormal, FollowsTheFirstFacetEvenWhenItIsTheWrongOne) {
    CSTLModel model;
    AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 0.0f, 0.0f, 1.0f));
    Turn(FacetAt(model, 0));
    model.FixNormal();
    EXPECT_TRUE(IsConsistent(model));
    EXPECT_LT(Outwardness(model), 0.0);
}

TEST(FixNormal, EachShellFollowsItsOwnFirstFacet) {
    CSTLModel model;
    shapes::Mesh mesh = shapes::Moved(shapes::Cube(1.0f), 0.0f, 0.0f, 1.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 5.0f, 0.0f, 1.0f));
    AddMesh(model, mesh);
    Turn(FacetAt(model, 7));
    Turn(FacetAt(model, 12));
    model.FixNormal();
    EXPECT_TRUE(IsConsistent(model));
    double dFirst = 0.0;
    double dSecond = 0.0;
    for (int i = 0; i < 24; ++i) {
        CFacet& f = FacetAt(model, i);
        (i < 12 ? dFirst : dSecond) += f.m_fNormal[2] * f.m_pVertex1->z * f.ProjectArea();
    }
    EXPECT_GT(dFirst, 0.0);
    EXPECT_LT(dSecond, 0.0);
}

// Facet 0 runs up the edge. Facet 1 runs down, so it agrees; facet 2 runs up and would be turned otherwise.
TEST(FixNormal, OnceANeighborAgreesTheNextAtThatEdgeKeepsItsWinding) {
    CSTLModel model;
    AddMesh(model, Leaves(3, 0b010));
    model.FixNormal();
    EXPECT_TRUE(RunsUp(model, 0));
    EXPECT_FALSE(RunsUp(model, 1));
    EXPECT_TRUE(RunsUp(model, 2));
}

// Thirteen leaves, of which the last is the first in the surface. From it the winding goes to leaf 0, which
// is turned, and from there to the ten next ones, which all disagree and are turned. Leaf 11 stays as it is.
TEST(FixNormal, FacetsBeyondTheTenthAtAnEdgeAreNotReachedThroughIt) {
    CSTLModel model;
    AddMesh(model, Leaves(13, 0b0111111111110));
    auto& facets = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    facets.InsertAt(0, facets[12]);
    facets.RemoveAt(13);
    model.FixNormal();
    EXPECT_TRUE(RunsUp(model, 0));
    EXPECT_FALSE(RunsUp(model, 1));
    for (int nLeaf = 1; nLeaf <= 10; ++nLeaf) EXPECT_TRUE(RunsUp(model, nLeaf + 1));
    EXPECT_FALSE(RunsUp(model, 12));
}

TEST(FixNormal, ClearsMarksAndAllFlagsButTheSlope) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(1.0f));
    for (CFacet* f : FacetsOf(model)) {
        f->m_nFlag |= 0x330;
        f->m_nRegion = 9;
    }
    model.FixNormal();
    for (CFacet const* f : FacetsOf(model)) {
        EXPECT_EQ(0u, f->m_nFlag & ~3u);
        EXPECT_EQ(0, f->m_nRegion);
    }
    ExpectInvariants(model);
}

TEST(FixNormal, LeavesTheCachedMeasuresAndAnEmptyModel) {
    CSTLModel empty;
    empty.FixNormal();
    empty.CalculateNormal();
    empty.ReverseFacet();
    EXPECT_EQ(0, empty.GetFacetsNum());
    CSTLModel model;
    AddMesh(model, shapes::Cube(1.0f));
    model.m_dArea = 5.0;
    model.m_dVolume = 4.0;
    model.FixNormal();
    EXPECT_EQ(5.0, model.m_dArea);
    EXPECT_EQ(4.0, model.m_dVolume);
}

TEST(FixNormal, ShapesWithTurnedFacetsAreFixedAsDefined) {
    for (unsigned nSeed = 0; nSeed < 4; ++nSeed) {
        for (unsigned const nOneIn : {1u, 2u, 5u, 50u}) {
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(shapes::Cube(2.0f), nSeed, nOneIn));
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(shapes::Torus(9.0, 3.0, 16, 12), nSeed, nOneIn));
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(shapes::Bracket(), nSeed, nOneIn));
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(shapes::Tray(2, 2, 2), nSeed, nOneIn));
            shapes::Mesh const open =
                shapes::HeightField(9, 1.0, [](double x, double y) { return x * y * 0.1; });
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(open, nSeed, nOneIn));
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(shapes::Shuffled(open, nSeed), nSeed, nOneIn));
        }
    }
}

TEST(FixNormal, EdgesOfManyFacetsAreFixedAsDefined) {
    for (int nLeaves = 3; nLeaves <= 14; ++nLeaves) {
        for (unsigned nSeed = 0; nSeed < 60; ++nSeed) {
            unsigned const nTurned = static_cast<unsigned>(std::mt19937(nSeed)());
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(Leaves(nLeaves, nTurned), nSeed, 1000));
        }
    }
}

TEST(FixNormal, TanglesOfTrianglesAreFixedAsDefined) {
    for (unsigned nSeed = 0; nSeed < 300; ++nSeed) {
        unsigned const nCorners = 4 + nSeed % 20;
        int const nTriangles = static_cast<int>(10 + nSeed % 7 * 40);
        ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(Tangle(nSeed, nCorners, nTriangles), nSeed, 1000));
    }
}

// A recursion a facet deep would not survive this.
TEST(FixNormal, LargeShellDoesNotExhaustTheStack) {
    CSTLModel model;
    AddMesh(model, shapes::WithTurned(shapes::Torus(50.0, 20.0, 600, 300), 3));
    model.FixNormal();
    EXPECT_TRUE(IsConsistent(model));
}

// The same with a fin on one edge, where three facets meet.
TEST(FixNormal, LargeShellWithAnEdgeOfThreeFacetsDoesNotExhaustTheStack) {
    shapes::Mesh mesh = shapes::Torus(50.0, 20.0, 600, 300);
    mesh.push_back({mesh[7][0], mesh[7][1], shapes::Corner{0.0f, 0.0f, 99.0f}});
    CSTLModel model;
    AddMesh(model, shapes::WithTurned(mesh, 3));
    model.FixNormal();
    int nDisagree = 0;
    for (CFacet const* f : FacetsOf(model)) {
        std::vector<CFacet*> const others = literal::Neighbors(f, f->m_pVertex1, f->m_pVertex2);
        if (others.size() == 1 && !literal::RunsFromTo(others[0], f->m_pVertex2, f->m_pVertex1)) ++nDisagree;
    }
    EXPECT_EQ(0, nDisagree);
}

namespace {

// A band of quads whose end is joined to its beginning with half a turn.
shapes::Mesh TwistedBand(int nQuads) {
    shapes::Mesh mesh;
    auto const corner = [nQuads](int n, bool bUpper) {
        bool const bTwisted = n >= nQuads;
        double const a = 6.283185307179586 * (n % nQuads) / nQuads;
        double const w = bUpper != bTwisted ? 1.0 : -1.0;
        double const r = 10.0 + w * std::cos(a / 2.0);
        return shapes::Corner{static_cast<float>(r * std::cos(a)), static_cast<float>(r * std::sin(a)),
                              static_cast<float>(w * std::sin(a / 2.0))};
    };
    for (int n = 0; n < nQuads; ++n) {
        mesh.push_back({corner(n, false), corner(n + 1, false), corner(n + 1, true)});
        mesh.push_back({corner(n, false), corner(n + 1, true), corner(n, true)});
    }
    return mesh;
}

}  // namespace

TEST(FixNormal, BandsThatCannotBeWoundConsistentlyAreFixedAsDefined) {
    for (int const nQuads : {3, 4, 7, 20}) {
        for (unsigned nSeed = 0; nSeed < 12; ++nSeed) {
            shapes::Mesh const band = shapes::Shuffled(TwistedBand(nQuads), nSeed);
            ASSERT_NO_FATAL_FAILURE(ExpectFixedAsDefined(band, nSeed, 3));
            CSTLModel model;
            AddMesh(model, band);
            ASSERT_EQ(2 * nQuads, model.GetFacetsNum());
            model.FixNormal();
            EXPECT_FALSE(IsConsistent(model));
        }
    }
}

// A disk about a hub, and a twisted strip from one edge of its rim to another. All edges at the hub are
// looked at from there, in the end: that the shell cannot be wound consistently shows at these alone, which
// are more than a few.
TEST(FixNormal, AStripThatTwistsAWideDiskIsFixedAsDefined) {
    for (int const nRim : {8, 9, 12, 40}) {
        auto const rim = [nRim](int n) {
            double const dAngle = 6.283185307179586 * n / nRim;
            return shapes::Corner{static_cast<float>(10.0 * std::cos(dAngle)),
                                  static_cast<float>(10.0 * std::sin(dAngle)), 1.0f};
        };
        shapes::Mesh mesh;
        shapes::Corner const hub{0.0f, 0.0f, 0.0f};
        for (int n = 0; n < nRim; ++n) mesh.push_back({hub, rim(n), rim((n + 1) % nRim)});
        shapes::Corner const left{0.0f, 1.0f, 20.0f};
        shapes::Corner const right{0.0f, -1.0f, 20.0f};
        for (auto const& [from, to] : {std::pair(2, 3), std::pair(5, 6)}) {
            mesh.push_back({rim(from), left, rim(to)});
            mesh.push_back({rim(to), left, right});
        }
        for (unsigned nSeed = 0; nSeed < 8; ++nSeed) {
            CSTLModel expected;
            CSTLModel model;
            for (CSTLModel* const pModel : {&expected, &model}) {
                AddMesh(*pModel, mesh);
                auto& facets = pModel->m_SurfaceArray.m_aSurface[0]->m_aFacet;
                std::rotate(facets.m_pData, facets.m_pData + 1, facets.m_pData + facets.m_nSize);
            }
            TurnSome(expected, model, nSeed, 3);
            literal::FixNormal(FacetsOf(expected));
            model.FixNormal();
            ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
            EXPECT_FALSE(IsConsistent(model));
        }
    }
}

// The host has taken a facet out of its surface; the lists of its vertices, in which it may come first, still
// hold it.
TEST(FixNormal, MeshesWithAFacetThatStandsInNoSurfaceAreFixedAsDefined) {
    for (shapes::Mesh const& mesh : {shapes::Cube(1.0f), shapes::IcoSphere(10.0, 1), shapes::Bracket()}) {
        std::size_t const nCount = std::min<std::size_t>(mesh.size(), 40);
        for (std::size_t n = 0; n < nCount; ++n) {
            for (int const nMark : {0, 1, 5}) {
                CSTLModel expected;
                CSTLModel model;
                CFacet* taken[2];
                CSTLModel* const both[2] = {&expected, &model};
                for (std::size_t i = 0; i < 2; ++i) {
                    AddMesh(*both[i], mesh);
                    taken[i] = FacetsOf(*both[i])[n];
                }
                TurnSome(expected, model, static_cast<unsigned>(n), 3);
                for (std::size_t i = 0; i < 2; ++i) {
                    both[i]->m_SurfaceArray.m_aSurface[0]->m_aFacet.RemoveAt(static_cast<int>(n));
                    taken[i]->m_nRegion = nMark;
                }
                literal::FixNormal(FacetsOf(expected));
                model.FixNormal();
                for (std::size_t i = 0; i < 2; ++i)
                    both[i]->m_SurfaceArray.m_aSurface[0]->m_aFacet.Add(taken[i]);
                ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model)) << n << ' ' << nMark;
            }
        }
    }
}

// The host has taken the lists of a mesh's vertices away.
TEST(FixNormal, FacetsWhoseVerticesKnowNoneStayAsTheyAre) {
    CSTLModel model;
    AddMesh(model, shapes::WithTurned(shapes::Cube(1.0f), 3));
    std::vector<CFacet> before;
    for (CFacet const* f : FacetsOf(model)) before.push_back(*f);
    for (tagVertexNode* const p : VerticesOf(model)) {
        varnet::facet_list::Free(*p);
        p->m_ppFacet = nullptr;
        p->m_nFacetNum = 0;
    }
    model.FixNormal();
    std::vector<CFacet*> const after = FacetsOf(model);
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < after.size(); ++i) {
        EXPECT_TRUE(literal::RunsFromTo(after[i], before[i].m_pVertex1, before[i].m_pVertex2)) << i;
        EXPECT_EQ(before[i].m_pVertex3->z, after[i]->m_pVertex3->z) << i;
    }
}

// The host has moved vertices without making normals and corners anew.
TEST(FixNormal, CornersThatAreOutOfOrderAreFixedAsDefined) {
    for (shapes::Mesh const& mesh : {shapes::Bracket(), Tangle(5, 12, 90)}) {
        for (int nMode = 1; nMode <= 3; ++nMode) {
            CSTLModel expected;
            CSTLModel model;
            AddMesh(expected, mesh);
            AddMesh(model, mesh);
            TurnSome(expected, model, 3, 4);
            expected.m_VertexTree.ExchangeXYZ(nMode);
            model.m_VertexTree.ExchangeXYZ(nMode);
            literal::FixNormal(FacetsOf(expected));
            model.FixNormal();
            ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
        }
    }
}

TEST(FixNormal, FixingTwiceChangesNothing) {
    CSTLModel model;
    AddMesh(model, shapes::WithTurned(shapes::Bracket(), 3));
    model.FixNormal();
    std::vector<CFacet> before;
    for (CFacet const* f : FacetsOf(model)) before.push_back(*f);
    model.FixNormal();
    std::vector<CFacet*> const after = FacetsOf(model);
    for (std::size_t i = 0; i < after.size(); ++i) {
        ASSERT_EQ(before[i].m_pVertex1, after[i]->m_pVertex1);
        ASSERT_EQ(before[i].m_pVertex2, after[i]->m_pVertex2);
        ASSERT_EQ(before[i].m_pVertex3, after[i]->m_pVertex3);
    }
}

TEST(ReverseFacet, TurnsEveryFacetAndTwiceGivesTheSameWinding) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    for (CFacet* f : FacetsOf(model)) {
        f->m_nFlag |= 0x10;
        f->m_nRegion = 3;
    }
    std::vector<CFacet> before;
    for (CFacet const* f : FacetsOf(model)) before.push_back(*f);
    model.ReverseFacet();
    std::vector<CFacet*> const facets = FacetsOf(model);
    for (std::size_t i = 0; i < facets.size(); ++i) {
        EXPECT_TRUE(literal::RunsFromTo(facets[i], before[i].m_pVertex2, before[i].m_pVertex1));
        EXPECT_EQ(-before[i].m_fNormal[2], facets[i]->m_fNormal[2]);
        EXPECT_EQ(0u, facets[i]->m_nFlag & ~3u);
        EXPECT_EQ(0, facets[i]->m_nRegion);
    }
    ExpectInvariants(model);
    model.ReverseFacet();
    for (std::size_t i = 0; i < facets.size(); ++i) {
        EXPECT_TRUE(literal::RunsFromTo(facets[i], before[i].m_pVertex1, before[i].m_pVertex2));
        EXPECT_TRUE(literal::RunsFromTo(facets[i], before[i].m_pVertex2, before[i].m_pVertex3));
    }
}

TEST(CalculateNormal, RotatesCornersAndClearsMarksOfEveryFacet) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    for (CFacet* f : FacetsOf(model)) {
        tagVertexNode* const p1 = f->m_pVertex1;
        f->m_pVertex1 = f->m_pVertex2;
        f->m_pVertex2 = f->m_pVertex3;
        f->m_pVertex3 = p1;
        f->m_fNormal[0] = 7.0f;
        f->m_nFlag |= 0x330;
        f->m_nRegion = 1;
    }
    model.CalculateNormal();
    for (CFacet const* f : FacetsOf(model)) {
        EXPECT_EQ(0u, f->m_nFlag & ~3u);
        EXPECT_EQ(0, f->m_nRegion);
    }
    ExpectInvariants(model);
}
