// Lines that hang in the air, and how they are chained.

#include <memory>

#include "LiteralSupport.h"
#include "RandomParts.h"
#include "support/EdgeChains.h"

using namespace varnet;

namespace {

using Edges = std::vector<std::pair<tagVertexNode*, tagVertexNode*>>;

constexpr double kRoot3 = 1.7320508075688772;

// A bar of length 4 with a sharp line below: its two sides face down, 60 degrees from straight down.
void AddKeel(CSTLModel& model) {
    CPoint3D const k0(0, 0, 0), k1(4, 0, 0), l0(0, 1, kRoot3), l1(4, 1, kRoot3), r0(0, -1, kRoot3),
        r1(4, -1, kRoot3);
    AddTriangle(model, k0, l1, k1);
    AddTriangle(model, k0, l0, l1);
    AddTriangle(model, k0, k1, r1);
    AddTriangle(model, k0, r1, r0);
    AddTriangle(model, l0, r0, r1);
    AddTriangle(model, l0, r1, l1);
    AddTriangle(model, k0, r0, l0);
    AddTriangle(model, k1, l1, r1);
}

// Two facets that rise on both sides of an edge which itself rises by dRise over 4; facing down or up.
void AddStrip(CSTLModel& model, double dRise, bool bFacesDown) {
    CPoint3D const a(0, 0, 0), b(4, 0, dRise), left(2, 1, 5), right(2, -1, 5);
    AddTriangle(model, a, bFacesDown ? left : b, bFacesDown ? b : left);
    AddTriangle(model, a, bFacesDown ? b : right, bFacesDown ? right : b);
}

std::vector<tagVertexNode*> VerticesOf(CFeatureEdge const& chain) {
    std::vector<tagVertexNode*> vertices;
    XR__POSITION* position = chain.m_VertexList.GetHeadPosition();
    while (position != nullptr) vertices.push_back(chain.m_VertexList.GetNext(position));
    return vertices;
}

using Chains = std::vector<std::vector<tagVertexNode*>>;

Chains ChainsOf(XR_CArray<CFeatureEdge*, CFeatureEdge*> const& array) {
    Chains chains;
    for (int i = 0; i < array.GetSize(); ++i) chains.push_back(VerticesOf(*array.GetAt(i)));
    return chains;
}

Chains LiteralChains(Edges const& edges) {
    Chains chains;
    for (auto const& chain : literal::Chain(edges)) chains.emplace_back(chain.begin(), chain.end());
    return chains;
}

Chains Chained(Edges const& edges) {
    std::vector<MeshEdge> meshEdges;
    for (auto const& [a, b] : edges) meshEdges.push_back({a, b});
    XR_CArray<CFeatureEdge*, CFeatureEdge*> array;
    ChainEdges(meshEdges, array);
    Chains chains = ChainsOf(array);
    for (int i = 0; i < array.GetSize(); ++i) delete array[i];
    return chains;
}

}  // namespace

TEST(SuspendedEdges, SharpKeelIsOneChainUnlessItsSidesNeedSupportThemselves) {
    CSTLModel model;
    AddKeel(model);
    EXPECT_EQ(1, model.FindSuspendEdge(-1, 45.0, 45.0, 1.0));
    ASSERT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    CFeatureEdge& keel = *model.m_SuspendEdgeArray[0];
    EXPECT_EQ(4.0, keel.m_dLength);
    EXPECT_EQ(static_cast<unsigned>(FE_SELECTED), keel.m_nEdgeFlag);
    EXPECT_EQ(0.0, keel.GetMinZ(0));
    EXPECT_EQ(0, model.FindSupportSurface(45.0, 1));

    EXPECT_EQ(0, model.FindSuspendEdge(-1, 45.0, 70.0, 1.0));
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
    EXPECT_NE(0u, FacetAt(model, 0).m_nFlag & FACET_SUPPORT);
    EXPECT_EQ(1, model.FindSupportSurface(70.0, 1));
    EXPECT_EQ(0, model.FindSuspendEdge(1, 45.0, 45.0, 1.0));
}

TEST(SuspendedEdges, EdgeOfFiftyDegreesIsTooSteepForFortyFive) {
    double const dRise = 4.0 * std::tan(50.0 * 3.141592653589793 / 180.0);
    CSTLModel model;
    AddStrip(model, dRise, true);
    EXPECT_EQ(0, model.FindSuspendEdge(-1, 45.0, 45.0, 0.0));
    EXPECT_EQ(0, model.FindSuspendEdge(-1, 80.0, 45.0, 0.0));  // the down angle counts
    EXPECT_EQ(1, model.FindSuspendEdge(-1, 45.0, 60.0, 0.0));
    CSTLModel flatter;
    AddStrip(flatter, 4.0 * std::tan(43.9 * 3.141592653589793 / 180.0), true);
    EXPECT_EQ(1, flatter.FindSuspendEdge(-1, 45.0, 45.0, 0.0));
    CSTLModel steeper;
    AddStrip(steeper, 4.0 * std::tan(44.1 * 3.141592653589793 / 180.0), true);
    EXPECT_EQ(0, steeper.FindSuspendEdge(-1, 45.0, 45.0, 0.0));
}

TEST(SuspendedEdges, GrooveIsFoundInModeOneOnly) {
    CSTLModel model;
    AddStrip(model, 0.0, false);
    EXPECT_EQ(1, model.FindSuspendEdge(1, 45.0, 45.0, 1.0));
    EXPECT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    EXPECT_EQ(0, model.FindSuspendEdge(-1, 45.0, 45.0, 1.0));
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
}

TEST(SuspendedEdges, RingShapedKeelIsOneChainWithItsFirstEdgeRepeated) {
    CSTLModel model;
    constexpr int kSides = 12;
    auto const at = [](int i, double dRadius, double z) {
        double const t = 2.0 * 3.141592653589793 * (i % kSides) / kSides;
        return CPoint3D(dRadius * std::cos(t), dRadius * std::sin(t), z);
    };
    for (int i = 0; i < kSides; ++i) {
        CPoint3D const a = at(i, 10, 0), b = at(i + 1, 10, 0);
        AddTriangle(model, a, b, at(i + 1, 12, 4));
        AddTriangle(model, a, at(i + 1, 12, 4), at(i, 12, 4));
        AddTriangle(model, a, at(i + 1, 8, 4), b);
        AddTriangle(model, a, at(i, 8, 4), at(i + 1, 8, 4));
    }
    // The edges that lead from the ring up to its sides slope by 63 degrees.
    EXPECT_EQ(1, model.FindSuspendEdge(-1, 45.0, 45.0, 1.0));
    ASSERT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    auto const vertices = VerticesOf(*model.m_SuspendEdgeArray[0]);
    ASSERT_EQ(kSides + 2u, vertices.size());
    EXPECT_EQ(vertices[0], vertices[kSides]);
    EXPECT_EQ(vertices[1], vertices[kSides + 1]);
    double const dSide = 20.0 * std::sin(3.141592653589793 / kSides);
    EXPECT_NEAR((kSides + 1) * dSide, model.m_SuspendEdgeArray[0]->GetLength(0), 1e-9);
}

TEST(SuspendedEdges, ChainOfExactlyTheLeastLengthIsNotSelected) {
    CSTLModel model;
    AddKeel(model);
    EXPECT_EQ(0, model.FindSuspendEdge(-1, 45.0, 45.0, 4.0));
    ASSERT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    EXPECT_EQ(0u, model.m_SuspendEdgeArray[0]->m_nEdgeFlag);
    EXPECT_EQ(1, model.FindSuspendEdge(-1, 45.0, 45.0, std::nextafter(4.0, 0.0)));
    EXPECT_EQ(0, model.FindSuspendEdge(-1, 45.0, 45.0, std::nan("")));
}

TEST(SuspendedEdges, LengthOfAChainOfOneVertexIsZeroAndNotCached) {
    tagVertexNode a(CPoint3D(1, 2, 3));
    CFeatureEdge chain;
    EXPECT_EQ(0.0, chain.GetLength(0));
    chain.m_VertexList.AddTail(&a);
    EXPECT_EQ(0.0, chain.GetLength(0));
    EXPECT_EQ(0.0, chain.GetLength(1));
    EXPECT_EQ(1e10, chain.m_dLength);
    EXPECT_EQ(3.0, chain.GetMinZ(0));
    EXPECT_EQ(3.0, chain.m_dMinZ);
}

TEST(SuspendedEdges, MeasuresAreCachedUntilTheyAreAskedForAnew) {
    tagVertexNode a(CPoint3D(0, 0, 5)), b(CPoint3D(3, 4, 5)), c(CPoint3D(3, 4, 7));
    CFeatureEdge chain;
    EXPECT_EQ(1e10, chain.GetMinZ(0));
    EXPECT_EQ(1e10, chain.GetMinZ(1));
    for (tagVertexNode* p : {&a, &b, &c}) chain.m_VertexList.AddTail(p);
    EXPECT_EQ(7.0, chain.GetLength(0));
    EXPECT_EQ(5.0, chain.GetMinZ(0));
    b.z = 4.0;
    c.z = 4.0;
    EXPECT_EQ(7.0, chain.GetLength(0));
    EXPECT_EQ(5.0, chain.GetMinZ(0));
    EXPECT_EQ(std::sqrt(26.0), chain.GetLength(1));
    EXPECT_EQ(4.0, chain.GetMinZ(1));
}

TEST(SuspendedEdges, ModeZeroMakesAChainOfEveryEdgeThatIsRefused) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(4, 0, 0), CPoint3D(0, 3, 0));
    EXPECT_EQ(1, model.FindSuspendEdge(0, 45.0, 45.0, 0.0));
    ASSERT_EQ(1, model.m_SuspendEdgeArray.GetSize());
    // Three sides of a triangle, the first of them at both ends.
    EXPECT_EQ(5, model.m_SuspendEdgeArray[0]->m_VertexList.GetCount());
    EXPECT_EQ(0, model.FindSuspendEdge(2, 45.0, 45.0, 0.0));
    EXPECT_EQ(0, model.m_SuspendEdgeArray.GetSize());
}

TEST(SuspendedEdges, EachEdgeIsJudgedOnceWhicheverFacetComesFirst) {
    for (bool const bSwapped : {false, true}) {
        CSTLModel model;
        CPoint3D const a(0, 0, 0), b(4, 0, 0), left(2, 1, 5), right(2, -1, 5);
        if (bSwapped) AddTriangle(model, a, b, right);
        AddTriangle(model, a, left, b);
        if (!bSwapped) AddTriangle(model, a, b, right);
        EXPECT_EQ(1, model.FindSuspendEdge(-1, 45.0, 45.0, 0.0));
        EXPECT_EQ(1, model.m_SuspendEdgeArray.GetSize());
        EXPECT_EQ(2, model.m_SuspendEdgeArray[0]->m_VertexList.GetCount());
    }
}

TEST(SuspendedEdges, SearchLeavesMarksClearedAndBothFlagsSet) {
    NumberedModel m(shapes::Cube(2.0f));
    for (CFacet* const f : m.facets) f->m_nFlag |= FACET_SUPPORT | FACET_SUSPEND;
    m.model.FindSuspendEdge(-1, 45.0, 45.0, 0.0);
    m.ExpectMarksCleared();
    for (CFacet const* const f : m.facets) {
        EXPECT_EQ(f->m_fNormal[2] > 0.9f, (f->m_nFlag & FACET_SUSPEND) != 0);
        EXPECT_EQ(f->m_fNormal[2] < -0.9f, (f->m_nFlag & FACET_SUPPORT) != 0);
    }
}

TEST(SuspendedEdges, LevelFacetsAreNotNearerToLevelThanNoAngle) {
    NumberedModel m(shapes::Cube(2.0f));
    m.model.FindSuspendEdge(-1, 0.0, 0.0, 0.0);
    for (CFacet const* const f : m.facets) EXPECT_EQ(0u, f->m_nFlag & (FACET_SUSPEND | FACET_SUPPORT));
    m.model.FindSuspendEdge(-1, 180.0, 180.0, 0.0);
    for (CFacet const* const f : m.facets) {
        EXPECT_EQ(f->m_fNormal[2] != -1.0f, (f->m_nFlag & FACET_SUSPEND) != 0);
        EXPECT_EQ(f->m_fNormal[2] != 1.0f, (f->m_nFlag & FACET_SUPPORT) != 0);
    }
}

TEST(SuspendedEdges, StrangeArgumentsFindNothing) {
    CSTLModel empty;
    EXPECT_EQ(0, empty.FindSuspendEdge(-1, 45.0, 45.0, 0.0));
    CSTLModel model;
    AddStrip(model, 0.0, false);
    EXPECT_EQ(0, model.FindSuspendEdge(1, 1.0, 45.0, 0.0));  // a slope limit of 0
    AddKeel(model);
    double const dNaN = std::nan("");
    for (double const dAngle : {dNaN, -1000.0, 1e300, 180.0, 270.0}) {
        model.FindSuspendEdge(-1, dAngle, 45.0, 0.0);
        model.FindSuspendEdge(1, 45.0, dAngle, 0.0);
        model.FindSuspendEdge(-1, dAngle, dAngle, dAngle);
    }
}

TEST(SuspendedEdges, SignOfTheNormalsTogetherDecidesAndTiesGoWithTheFirstFacet) {
    // The edge from a to b, and a facet on each side of it that rises, with normals set by hand.
    CSTLModel model;
    AddStrip(model, 0.0, true);
    CFacet &f = FacetAt(model, 0), &n = FacetAt(model, 1);
    tagVertexNode *const a = f.m_pVertex1, *const b = f.m_pVertex3;
    auto const judge = [&](float fA, float fB) {
        f.m_fNormal[2] = fA;
        n.m_fNormal[2] = fB;
        f.m_nRegion = 0;
        n.m_nRegion = 1;
        return IsSuspendEdge(a, b, &f, 1.0);
    };
    EXPECT_EQ(-1, judge(-0.5f, -0.5f));
    EXPECT_EQ(-1, judge(-0.5f, 0.25f));
    EXPECT_EQ(-1, judge(-0.5f, 0.5f));
    EXPECT_EQ(1, judge(-0.5f, 0.75f));
    EXPECT_EQ(1, judge(0.5f, 0.25f));
    EXPECT_EQ(1, judge(0.5f, -0.5f));
    EXPECT_EQ(-1, judge(0.5f, -0.75f));
    EXPECT_EQ(1, judge(0.0f, 0.0f));
    EXPECT_EQ(-1, judge(0.0f, -0.25f));
    n.m_nRegion = 0;
    EXPECT_EQ(0, IsSuspendEdge(a, b, &f, 1.0));                          // judged already
    EXPECT_EQ(0, IsSuspendEdge(f.m_pVertex1, f.m_pVertex2, &f, 100.0));  // free edge
    n.m_nRegion = 1;
    n.m_nFlag |= FACET_SUPPORT;
    EXPECT_EQ(0, IsSuspendEdge(a, b, &f, 1.0));
}

TEST(SuspendedEdges, VerticalEdgeIsAlwaysTooSteep) {
    tagVertexNode a(CPoint3D(1, 1, 0)), b(CPoint3D(1, 1, 5));
    CFacet facet;
    EXPECT_EQ(0, IsSuspendEdge(&a, &b, &facet, 1e308));
}

TEST(SuspendedEdges, AgreesWithTheLiteralSearchOnRandomMeshes) {
    std::size_t nChains = 0;
    for (std::uint32_t nSeed = 0; nSeed < 280; ++nSeed) {
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        for (int const nMode : {-1, 1, 0}) {
            for (double const dAngle : {30.0, 50.0}) {
                SCOPED_TRACE(testing::Message() << nSeed << ", " << nMode << ", " << dAngle);
                auto const expected = literal::SuspendedEdges(m.facets, nMode, dAngle + 5.0, dAngle);
                Chains const chains = LiteralChains(expected.edges);
                int const nSelected = m.model.FindSuspendEdge(nMode, dAngle + 5.0, dAngle, 1.5);
                ASSERT_EQ(chains, ChainsOf(m.model.m_SuspendEdgeArray));
                if (nMode != 0) nChains += chains.size();
                int nLong = 0;
                for (int i = 0; i < m.model.m_SuspendEdgeArray.GetSize(); ++i) {
                    CFeatureEdge& chain = *m.model.m_SuspendEdgeArray[i];
                    bool const bLong = chain.GetLength(1) > 1.5;
                    nLong += bLong ? 1 : 0;
                    ASSERT_EQ(bLong ? 0x100u : 0u, chain.m_nEdgeFlag);
                }
                ASSERT_EQ(nLong, nSelected);
                m.ExpectMarksCleared();
                for (CFacet const* const f : m.facets) ASSERT_EQ(expected.flags.at(f), f->m_nFlag & 0x30u);
            }
        }
    }
    EXPECT_GT(nChains, 300u);
}

// Joining takes edges out of the array, which keeps its capacity.
TEST(SuspendedEdges, ArrayKeepsTheCapacityOfOneElementForEachEdge) {
    std::size_t nJoined = 0;
    for (std::uint32_t nSeed = 0; nSeed < 60; ++nSeed) {
        for (int const nGrowBy : {0, 1, 7}) {
            SCOPED_TRACE(testing::Message() << nSeed << ", " << nGrowBy);
            NumberedModel m(RandomParts(nSeed).Make(nSeed));
            auto const expected = literal::SuspendedEdges(m.facets, 0, 35.0, 30.0);
            auto& chains = m.model.m_SuspendEdgeArray;
            chains.m_nGrowBy = nGrowBy;
            XR_CArray<CFeatureEdge*, CFeatureEdge*> held;
            held.m_nGrowBy = nGrowBy;
            for (std::size_t i = 0; i < expected.edges.size(); ++i) held.Add(nullptr);
            for (int nTwice = 0; nTwice < 2; ++nTwice) {
                m.model.FindSuspendEdge(0, 35.0, 30.0, 1.5);
                ASSERT_EQ(held.m_nMaxSize, chains.m_nMaxSize);
                ASSERT_EQ(nGrowBy, chains.m_nGrowBy);
                ASSERT_EQ(expected.edges.empty(), chains.m_pData == nullptr);
            }
            nJoined += expected.edges.size() - static_cast<std::size_t>(chains.GetSize());
        }
    }
    EXPECT_GT(nJoined, 100u);
}

TEST(EdgeChains, RandomEdgeSetsWithJunctionsAndRingsAreChainedAsByTheScan) {
    std::mt19937 random(11);
    for (int nTry = 0; nTry < 3000; ++nTry) {
        std::size_t const nVertices = 2 + random() % 20;
        std::vector<std::unique_ptr<tagVertexNode>> vertices;
        for (std::size_t i = 0; i < nVertices; ++i) vertices.push_back(std::make_unique<tagVertexNode>());
        Edges edges;
        for (std::size_t n = random() % 40; n > 0; --n) {
            std::size_t const a = random() % nVertices;
            std::size_t const b = nTry % 2 == 0 ? random() % nVertices : (a + 1 + random() % 2) % nVertices;
            if (a != b) edges.emplace_back(vertices[a].get(), vertices[b].get());
        }
        ASSERT_EQ(LiteralChains(edges), Chained(edges)) << nTry;
    }
}

TEST(EdgeChains, EdgeThatComesTwiceStandsAtBothEnds) {
    tagVertexNode a, b;
    EXPECT_EQ(Chains({{&b, &a, &b, &a}}), Chained({{&a, &b}, {&a, &b}}));
    EXPECT_EQ(Chains({{&b, &a, &b, &a}}), Chained({{&a, &b}, {&b, &a}}));
    EXPECT_EQ(LiteralChains({{&a, &b}, {&b, &a}}), Chained({{&a, &b}, {&b, &a}}));
    EXPECT_EQ(Chains(), Chained({}));
}

TEST(EdgeChains, EdgeFromAVertexToItselfIsNoTrouble) {
    tagVertexNode a, b, c;
    for (Edges const& edges :
         {Edges{{&a, &a}}, Edges{{&a, &a}, {&a, &b}}, Edges{{&b, &a}, {&a, &a}, {&a, &c}}})
        EXPECT_EQ(LiteralChains(edges), Chained(edges));
}

TEST(EdgeChains, FirstEdgeAtAJunctionGoesOn) {
    tagVertexNode a, b, c, d;
    EXPECT_EQ(Chains({{&a, &b, &c}, {&b, &d}}), Chained({{&a, &b}, {&b, &c}, {&b, &d}}));
    EXPECT_EQ(Chains({{&a, &b, &d}, {&b, &c}}), Chained({{&a, &b}, {&b, &d}, {&b, &c}}));
}

// A scan after each merge would take a hundred billion steps.
TEST(EdgeChains, VeryLongChainsDoNotTakeAScanForEachPiece) {
    constexpr std::size_t kVertices = 400001;
    std::vector<std::unique_ptr<tagVertexNode>> vertices;
    for (std::size_t i = 0; i < kVertices; ++i) vertices.push_back(std::make_unique<tagVertexNode>());
    Edges edges;
    for (std::size_t i = 1; i < kVertices; ++i) edges.emplace_back(vertices[i - 1].get(), vertices[i].get());
    std::shuffle(edges.begin(), edges.end(), std::mt19937(5));
    Chains const chains = Chained(edges);
    ASSERT_EQ(1u, chains.size());
    EXPECT_EQ(kVertices, chains[0].size());
}
