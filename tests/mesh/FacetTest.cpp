#include "mesh/Facet.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "FieldWalk.h"
#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"

namespace {

// A facet over vertices that no tree owns.
struct LooseFacet {
    LooseFacet(CPoint3D const& p1, CPoint3D const& p2, CPoint3D const& p3) : a(p1), b(p2), c(p3) {
        float normal[3] = {0.0f, 0.0f, 0.0f};
        facet = CFacet(&a, &b, &c, normal);
    }
    tagVertexNode a;
    tagVertexNode b;
    tagVertexNode c;
    CFacet facet;
};

CFacet WithNormal(float x, float y, float z) {
    float normal[3] = {x, y, z};
    return CFacet(nullptr, nullptr, nullptr, normal);
}

void ExpectNormal(CFacet const& facet, float x, float y, float z) {
    EXPECT_EQ(x, facet.m_fNormal[0]);
    EXPECT_EQ(y, facet.m_fNormal[1]);
    EXPECT_EQ(z, facet.m_fNormal[2]);
}

void ExpectCorners(CFacet const& facet, tagVertexNode const& a, tagVertexNode const& b,
                   tagVertexNode const& c) {
    EXPECT_EQ(&a, facet.m_pVertex1);
    EXPECT_EQ(&b, facet.m_pVertex2);
    EXPECT_EQ(&c, facet.m_pVertex3);
}

// Four facets at the edge from the origin to (0, 0, 1), wound from the first to the second but for the third.
struct FourAtAnEdge {
    FourAtAnEdge() {
        AddTriangle(model, low, high, CPoint3D(1.0, 0.0, 0.5));
        AddTriangle(model, low, high, CPoint3D(0.0, 1.0, 0.5));
        AddTriangle(model, high, low, CPoint3D(-1.0, 0.0, 0.5));
        AddTriangle(model, low, high, CPoint3D(0.0, -1.0, 0.5));
        a = FacetAt(model, 0).m_pVertex1;
        b = FacetAt(model, 0).m_pVertex2;
    }
    CPoint3D low{0.0, 0.0, 0.0};
    CPoint3D high{0.0, 0.0, 1.0};
    CSTLModel model;
    tagVertexNode* a;
    tagVertexNode* b;
};

}  // namespace

TEST(Facet, FieldsStandInOrder) {
    CFacet const facet;
    FieldWalk(facet, FieldWalk::kVirtual)
        .Then("m_pVertex1", facet.m_pVertex1)
        .Then("m_pVertex2", facet.m_pVertex2)
        .Then("m_pVertex3", facet.m_pVertex3)
        .Then("m_fNormal", facet.m_fNormal)
        .Then("m_nRegion", facet.m_nRegion)
        .Then("m_nFlag", facet.m_nFlag)
        .End();
    EXPECT_TRUE(std::has_virtual_destructor_v<CFacet>);
    EXPECT_TRUE((std::is_same_v<decltype(facet.m_nRegion), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(facet.m_nFlag), std::uint32_t>));
    tagFACET const record;
    FieldWalk(record, 0).Then("m_ptVertex", record.m_ptVertex).Then("m_fNormal", record.m_fNormal).End();
}

TEST(Facet, FlagBitsHaveTheirValues) {
    EXPECT_EQ(0x1u, static_cast<unsigned>(FACET_SLOPE_LOW));
    EXPECT_EQ(0x2u, static_cast<unsigned>(FACET_SLOPE_HIGH));
    EXPECT_EQ(0x10u, static_cast<unsigned>(FACET_SUPPORT));
    EXPECT_EQ(0x20u, static_cast<unsigned>(FACET_SUSPEND));
    EXPECT_EQ(0x100u, static_cast<unsigned>(FACET_DUP_REVERSED));
    EXPECT_EQ(0x200u, static_cast<unsigned>(FACET_DUP_SAME));
}

TEST(Facet, NewFacetIsZeroAndOthersAreAsGiven) {
    CFacet const empty;
    EXPECT_EQ(nullptr, empty.m_pVertex1);
    EXPECT_EQ(nullptr, empty.m_pVertex2);
    EXPECT_EQ(nullptr, empty.m_pVertex3);
    ExpectNormal(empty, 0.0f, 0.0f, 0.0f);
    EXPECT_EQ(0, empty.m_nRegion);
    EXPECT_EQ(0u, empty.m_nFlag);
    tagVertexNode a, b, c;
    float normal[3] = {5.0f, 6.0f, 7.0f};
    CFacet const facet(&c, &a, &b, normal);
    ExpectCorners(facet, c, a, b);
    ExpectNormal(facet, 5.0f, 6.0f, 7.0f);
    EXPECT_EQ(0, facet.m_nRegion);
    EXPECT_EQ(0u, facet.m_nFlag);
}

TEST(Facet, CopyIsUnmarkedAndAssignmentKeepsTheMarksOfTheTarget) {
    tagVertexNode a, b, c;
    float normal[3] = {1.0f, 2.0f, 3.0f};
    CFacet source(&a, &b, &c, normal);
    source.m_nRegion = 5;
    source.m_nFlag = FACET_SUPPORT;
    CFacet const copy(source);
    ExpectCorners(copy, a, b, c);
    ExpectNormal(copy, 1.0f, 2.0f, 3.0f);
    EXPECT_EQ(0, copy.m_nRegion);
    EXPECT_EQ(0u, copy.m_nFlag);
    CFacet target;
    target.m_nRegion = 7;
    target.m_nFlag = FACET_SUSPEND;
    EXPECT_EQ(&target, &(target = source));
    ExpectCorners(target, a, b, c);
    ExpectNormal(target, 1.0f, 2.0f, 3.0f);
    EXPECT_EQ(7, target.m_nRegion);
    EXPECT_EQ(0x20u, target.m_nFlag);
}

TEST(Facet, NormalFollowsTheWinding) {
    LooseFacet up(CPoint3D(0, 0, 0), CPoint3D(2, 0, 0), CPoint3D(0, 3, 0));
    up.facet.CalculateNormal();
    ExpectNormal(up.facet, 0.0f, 0.0f, 1.0f);
    LooseFacet down(CPoint3D(0, 0, 0), CPoint3D(0, 3, 0), CPoint3D(2, 0, 0));
    down.facet.CalculateNormal();
    ExpectNormal(down.facet, 0.0f, 0.0f, -1.0f);
    // (1, 0, 0) x (0, 3, 4) = (0, -4, 3), of length 5.
    LooseFacet slope(CPoint3D(1, 1, 1), CPoint3D(2, 1, 1), CPoint3D(1, 4, 5));
    slope.facet.CalculateNormal();
    ExpectNormal(slope.facet, 0.0f, -0.8f, 0.6f);
}

TEST(Facet, LengthOfTheCrossProductSeparatesDegenerateFacets) {
    LooseFacet at(CPoint3D(0, 0, 0), CPoint3D(1e-10, 0, 0), CPoint3D(0, 1, 0));
    at.facet.CalculateNormal();
    ExpectNormal(at.facet, 1.0f, 1.0f, 1.0f);
    LooseFacet above(CPoint3D(0, 0, 0), CPoint3D(std::nextafter(1e-10, 1.0), 0, 0), CPoint3D(0, 1, 0));
    above.facet.CalculateNormal();
    ExpectNormal(above.facet, 0.0f, 0.0f, 1.0f);
    LooseFacet noNumber(CPoint3D(0, 0, 0), CPoint3D(std::nan(""), 0, 0), CPoint3D(0, 1, 0));
    noNumber.facet.CalculateNormal();
    ExpectNormal(noNumber.facet, 1.0f, 1.0f, 1.0f);
}

TEST(Facet, ResettingRotatesTheLowestCornerToTheFront) {
    struct Case {
        double z1, z2, z3;
        int nFirst;
        unsigned nFlag;
    };
    for (Case const& c : {Case{1, 1, 1, 0, 2}, Case{1, 2, 3, 0, 2}, Case{1, 3, 2, 0, 1}, Case{1, 1, 2, 0, 2},
                          Case{1, 2, 1, 0, 1}, Case{2, 1, 3, 1, 1}, Case{3, 1, 2, 1, 2}, Case{2, 1, 1, 1, 2},
                          Case{3, 2, 1, 2, 1}, Case{2, 3, 1, 2, 2}, Case{2, 2, 1, 2, 2}}) {
        LooseFacet loose(CPoint3D(0, 0, c.z1), CPoint3D(9, 0, c.z2), CPoint3D(0, 9, c.z3));
        loose.facet.m_nRegion = 4;
        loose.facet.m_nFlag = 0x333;
        loose.facet.CalculateNormalAndResetFlag();
        tagVertexNode const* const order[5] = {&loose.a, &loose.b, &loose.c, &loose.a, &loose.b};
        ExpectCorners(loose.facet, *order[c.nFirst], *order[c.nFirst + 1], *order[c.nFirst + 2]);
        EXPECT_EQ(c.nFlag, loose.facet.m_nFlag);
        EXPECT_EQ(0, loose.facet.m_nRegion);
        EXPECT_GT(loose.facet.m_fNormal[2], 0.0f);
    }
}

TEST(Facet, ReverseTurnsWindingAndNormal) {
    LooseFacet loose(CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    loose.facet.m_nFlag = FACET_SUPPORT;
    loose.facet.m_nRegion = 3;
    loose.facet.Reverse();
    ExpectCorners(loose.facet, loose.a, loose.c, loose.b);
    ExpectNormal(loose.facet, 0.0f, 0.0f, -1.0f);
    EXPECT_EQ(2u, loose.facet.m_nFlag);
    EXPECT_EQ(0, loose.facet.m_nRegion);
}

TEST(Facet, AreaIsTheProjectionOnTheStoredNormal) {
    LooseFacet loose(CPoint3D(0, 0, 5), CPoint3D(3, 0, 5), CPoint3D(0, 4, 5));
    loose.facet.CalculateNormal();
    EXPECT_EQ(6.0, loose.facet.Area());
    loose.facet.m_fNormal[2] = -0.5f;
    EXPECT_EQ(3.0, loose.facet.Area());
    // At (4096, 4096) the products need more digits than a float has: 4096 * 4096.5 is rounded.
    LooseFacet far(CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    far.facet.CalculateNormal();
    far.a.x = far.c.x = 16777216.0;
    far.b.x = 16777217.0;
    EXPECT_EQ(0.0, far.facet.Area());
    EXPECT_EQ(0.5, far.facet.ProjectArea());
}

TEST(Facet, AreaAgreesWithFloatArithmeticToTheBit) {
    std::mt19937 random(17);
    for (double const dSpan : {1.0, 100.0, 1e5}) {
        std::uniform_real_distribution<double> c(-dSpan, dSpan);
        for (int n = 0; n < 3000; ++n) {
            LooseFacet loose(CPoint3D(c(random), c(random), c(random)),
                             CPoint3D(c(random), c(random), c(random)),
                             CPoint3D(c(random), c(random), c(random)));
            loose.facet.CalculateNormal();
            ASSERT_EQ(literal::Area(loose.facet), loose.facet.Area());
        }
    }
}

TEST(Facet, ProjectedAreaIgnoresHeightsAndWinding) {
    LooseFacet loose(CPoint3D(1, 1, -5), CPoint3D(4, 1, 77), CPoint3D(1, 5, 3));
    EXPECT_EQ(6.0, loose.facet.ProjectArea());
    std::swap(loose.facet.m_pVertex2, loose.facet.m_pVertex3);
    EXPECT_EQ(6.0, loose.facet.ProjectArea());
}

TEST(Facet, LevelNormalIsNotUp) {
    EXPECT_EQ(0, WithNormal(1.0f, 0.0f, 0.0f).IsUp());
    EXPECT_EQ(0, WithNormal(1.0f, 0.0f, -0.1f).IsUp());
    EXPECT_EQ(1, WithNormal(1.0f, 0.0f, std::numeric_limits<float>::denorm_min()).IsUp());
}

TEST(Facet, LevelnessIsToldWithinTheTolerance) {
    EXPECT_EQ(0, WithNormal(1.0f, 0.0f, 0.0f).IsLevel(0.0));
    EXPECT_EQ(-1, WithNormal(1.0f, 0.0f, -1e-30f).IsLevel(0.0));
    EXPECT_EQ(1, WithNormal(1.0f, 0.0f, 1e-30f).IsLevel(0.0));
    EXPECT_EQ(0, WithNormal(0.0f, 0.0f, 0.5f).IsLevel(0.5));
    EXPECT_EQ(0, WithNormal(0.0f, 0.0f, -0.5f).IsLevel(0.5));
    EXPECT_EQ(1, WithNormal(0.0f, 0.0f, 0.51f).IsLevel(0.5));
    EXPECT_EQ(-1, WithNormal(0.0f, 0.0f, -0.51f).IsLevel(0.5));
}

TEST(Facet, EightClassesFollowTheSigns) {
    struct Case {
        float x, y, z;
        int nClass;
    };
    for (Case const& c :
         {Case{0.9f, 0.9f, 0.05f, 0}, Case{0.9f, 0.9f, -0.05f, 0}, Case{0.5f, 0.5f, 0.5f, 1},
          Case{-0.5f, 0.5f, 0.5f, 2}, Case{0.5f, -0.5f, 0.5f, 3}, Case{-0.5f, -0.5f, 0.5f, 4},
          Case{0.5f, 0.5f, -0.5f, 5}, Case{-0.5f, 0.5f, -0.5f, 6}, Case{0.5f, -0.5f, -0.5f, 7},
          Case{-0.5f, -0.5f, -0.5f, 8}, Case{0.05f, 0.05f, 0.5f, 4}, Case{-0.01f, -0.9f, -0.5f, 8}}) {
        EXPECT_EQ(c.nClass, WithNormal(c.x, c.y, c.z).EightClassify(0.1));
    }
    // Exactly the tolerance: z is no longer level, x and y are not above it.
    EXPECT_EQ(4, WithNormal(0.5f, 0.5f, 0.5f).EightClassify(0.5));
    EXPECT_EQ(8, WithNormal(0.0f, 0.0f, 0.0f).EightClassify(0.0));
}

// A wall in the plane y = 0 that faces -y: only the way out across its bottom edge goes down.
TEST(Facet, SupportEdgeIsOneWhoseOutwardDirectionDoesNotGoDown) {
    LooseFacet wall(CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 0, 1));
    wall.facet.CalculateNormal();
    ExpectNormal(wall.facet, 0.0f, -1.0f, 0.0f);
    EXPECT_EQ(0, wall.facet.IsSupportEdge(&wall.a, &wall.b));
    EXPECT_EQ(0, wall.facet.IsSupportEdge(&wall.b, &wall.a));
    EXPECT_EQ(1, wall.facet.IsSupportEdge(&wall.b, &wall.c));
    EXPECT_EQ(1, wall.facet.IsSupportEdge(&wall.c, &wall.b));
    EXPECT_EQ(1, wall.facet.IsSupportEdge(&wall.c, &wall.a));  // level: 0 counts
    tagVertexNode stranger;
    EXPECT_EQ(0, wall.facet.IsSupportEdge(&wall.b, &stranger));
    EXPECT_EQ(0, wall.facet.IsSupportEdge(&stranger, &wall.c));
    EXPECT_EQ(0, wall.facet.IsSupportEdge(&wall.c, &wall.c));
    for (unsigned const nFlag : {0x10u, 0x20u}) {
        wall.facet.m_nFlag = nFlag;
        EXPECT_EQ(1, wall.facet.IsSupportEdge(&wall.a, &wall.b));
        EXPECT_EQ(1, wall.facet.IsSupportEdge(&stranger, &stranger));
    }
}

TEST(Facet, NeighborIsTheFirstOtherFacetAtTheEdge) {
    FourAtAnEdge four;
    CFacet& first = FacetAt(four.model, 0);
    EXPECT_EQ(&FacetAt(four.model, 1), first.FindNeighborFacet(four.a, four.b));
    EXPECT_EQ(&FacetAt(four.model, 1), first.FindNeighborFacet(four.b, four.a));
    EXPECT_EQ(&first, FacetAt(four.model, 1).FindNeighborFacet(four.a, four.b));
    EXPECT_EQ(nullptr, first.FindNeighborFacet(first.m_pVertex3, four.a));
}

TEST(Facet, NeighborOfRightWindingRunsTheOtherWay) {
    FourAtAnEdge four;
    CFacet& first = FacetAt(four.model, 0);
    EXPECT_EQ(&FacetAt(four.model, 2), first.FindNeighborFacetRightNormal(four.a, four.b));
    EXPECT_EQ(&FacetAt(four.model, 1), first.FindNeighborFacetRightNormal(four.b, four.a));
    EXPECT_EQ(nullptr, first.FindNeighborFacetRightNormal(first.m_pVertex3, four.a));
}

TEST(Facet, NeighborOfMarkedRegionComesFirstElseTheLast) {
    FourAtAnEdge four;
    CFacet& first = FacetAt(four.model, 0);
    EXPECT_EQ(&FacetAt(four.model, 3), first.FindNeighborFacetSameRegion(four.a, four.b));
    FacetAt(four.model, 2).m_nRegion = -1;
    FacetAt(four.model, 3).m_nRegion = 1;
    EXPECT_EQ(&FacetAt(four.model, 2), first.FindNeighborFacetSameRegion(four.a, four.b));
    EXPECT_EQ(nullptr, first.FindNeighborFacetSameRegion(first.m_pVertex3, four.a));
}

TEST(Facet, NeighborsAtAnEdgeOfFourFacetsAreThreeUpToTheLimit) {
    FourAtAnEdge four;
    CFacet* out[4] = {};
    EXPECT_EQ(3, FacetAt(four.model, 1).FindNeighborFacets(four.a, four.b, out, 10));
    EXPECT_EQ(&FacetAt(four.model, 0), out[0]);
    EXPECT_EQ(&FacetAt(four.model, 2), out[1]);
    EXPECT_EQ(&FacetAt(four.model, 3), out[2]);
    CFacet* two[3] = {};
    EXPECT_EQ(2, FacetAt(four.model, 1).FindNeighborFacets(four.a, four.b, two, 2));
    EXPECT_EQ(&FacetAt(four.model, 2), two[1]);
    EXPECT_EQ(nullptr, two[2]);
    EXPECT_EQ(0, FacetAt(four.model, 1).FindNeighborFacets(four.a, four.b, two, 0));
}

namespace {

void ExpectNeighborsAsWalked(CFacet* f, tagVertexNode* a, tagVertexNode* b) {
    std::vector<CFacet*> const all = literal::Neighbors(f, a, b);
    CFacet* pRight = nullptr;
    CFacet* pRegion = all.empty() ? nullptr : all.back();
    for (auto it = all.rbegin(); it != all.rend(); ++it) {
        if (literal::RunsFromTo(*it, b, a)) pRight = *it;
        if ((*it)->m_nRegion != 0) pRegion = *it;
    }
    ASSERT_EQ(all.empty() ? nullptr : all[0], f->FindNeighborFacet(a, b));
    ASSERT_EQ(pRight, f->FindNeighborFacetRightNormal(a, b));
    ASSERT_EQ(pRegion, f->FindNeighborFacetSameRegion(a, b));
    for (int const nMax : {0, 1, 3, 10, 1000}) {
        std::vector<CFacet*> out(1000);
        int const nFound = f->FindNeighborFacets(a, b, out.data(), nMax);
        ASSERT_EQ(std::min(static_cast<int>(all.size()), nMax), nFound);
        ASSERT_TRUE(std::equal(out.begin(), out.begin() + nFound, all.begin()));
    }
}

}  // namespace

// Two hubs of hundreds of facets, joined by an edge of many, besides edges of one and two.
TEST(Facet, NeighborsAtVerticesOfManyFacetsAreThoseOfThePlainWalk) {
    std::mt19937 random(23);
    for (int const nFan : {20, 31, 32, 33, 40, 41, 200}) {
        CSTLModel model;
        CPoint3D const hubs[2] = {CPoint3D(0, 0, 0), CPoint3D(0, 0, 9)};
        for (int n = 0; n < nFan; ++n) {
            CPoint3D const p(10 + n, n % 7, 1 + n % 3);
            CPoint3D const q(10 + n + 1, (n + 1) % 7, 1 + (n + 1) % 3);
            AddTriangle(model, hubs[0], p, q);
            if (n % 2 == 0) AddTriangle(model, hubs[1], q, p);
            if (n % 3 == 0) AddTriangle(model, hubs[n / 3 % 2], hubs[1 - n / 3 % 2], p);
        }
        std::vector<CFacet*> const facets = FacetsOf(model);
        std::vector<tagVertexNode*> const vertices = VerticesOf(model);
        for (CFacet* const f : facets) f->m_nRegion = random() % 3 == 0 ? 1 : 0;
        for (int n = 0; n < 4000; ++n) {
            CFacet* const f = facets[random() % facets.size()];
            tagVertexNode* const corners[3] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3};
            tagVertexNode* const a =
                random() % 4 != 0 ? corners[random() % 3] : vertices[random() % vertices.size()];
            tagVertexNode* const b =
                random() % 4 != 0 ? corners[random() % 3] : vertices[random() % vertices.size()];
            ASSERT_NO_FATAL_FAILURE(ExpectNeighborsAsWalked(f, a, b));
        }
    }
}
