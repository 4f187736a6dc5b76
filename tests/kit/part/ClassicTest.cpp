// Parts as classic models, against the same facets offered one by one.

#include "part/Classic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include "MeshChecks.h"
#include "kit/part/PartChecks.h"
#include "support/ClassicFacets.h"

namespace varnet {

namespace {

CPoint3D At(Point3 const& p) { return {p.x, p.y, p.z}; }

// A triangle with its corners in order, and how often they were turned: one way or the other.
std::array<std::int32_t, 3> Sorted(Triangle t) {
    std::sort(t.begin(), t.end());
    return t;
}
int WayOf(Triangle const& t) {
    Triangle const s = Sorted(t);
    for (std::size_t k = 0; k < 3; ++k) {
        if (t[k] == s[0] && t[(k + 1) % 3] == s[1]) return 1;
    }
    return -1;
}

struct Naive {
    CSTLModel model;
    std::vector<std::int32_t> triangles;
};

// One by one, those on the same corners by a sum over each set of three.
void OfferOneByOne(std::vector<Point3> const& points, std::vector<Triangle> const& triangles, Naive& naive) {
    std::map<std::array<std::int32_t, 3>, int> balance;
    for (Triangle const& t : triangles) balance[Sorted(t)] += WayOf(t);
    naive.model.m_VertexTree.m_dTolerance = 0.0;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        Triangle const& t = triangles[i];
        int& rest = balance[Sorted(t)];
        if (rest * WayOf(t) <= 0) continue;
        rest = 0;
        int const before = naive.model.GetFacetsNum();
        AddTriangle(naive.model, At(points[static_cast<std::size_t>(t[0])]),
                    At(points[static_cast<std::size_t>(t[1])]), At(points[static_cast<std::size_t>(t[2])]));
        if (naive.model.GetFacetsNum() > before) naive.triangles.push_back(static_cast<std::int32_t>(i));
    }
}

void ExpectAsOneByOne(std::vector<Point3> const& points, std::vector<Triangle> const& triangles) {
    Naive naive;
    OfferOneByOne(points, triangles, naive);
    ClassicMesh const mesh = MakeClassic(points, triangles);
    EXPECT_EQ(naive.triangles, mesh.triangles);
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(naive.model, *mesh.model));
}

std::vector<Point3> DistinctPoints(std::mt19937& random, std::size_t count) {
    std::vector<Point3> points;
    for (int i = 0; i < 125; ++i) {
        points.push_back(
            {static_cast<double>(i % 5), static_cast<double>(i / 5 % 5), static_cast<double>(i / 25) - 2.0});
    }
    std::shuffle(points.begin(), points.end(), random);
    points.resize(count);
    return points;
}

}  // namespace

TEST(Classic, NothingGivesAnEmptyModel) {
    ClassicMesh const mesh = MakeClassic({}, {});
    EXPECT_EQ(0, mesh.model->GetFacetsNum());
    EXPECT_EQ(0u, mesh.model->m_VertexTree.m_nCount);
    EXPECT_TRUE(mesh.triangles.empty());
}

TEST(Classic, TwinsOpposingTwinsAndFlatFacetsAreLeftOut) {
    std::vector<Point3> const points = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {2, 0, 0}, {9, 9, 9}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {1, 2, 0}, {0, 1, 3},
                                             {0, 3, 2}, {3, 0, 2}, {1, 2, 3}};
    ClassicMesh const mesh = MakeClassic(points, triangles);
    // The second is a twin of the first, the third is flat, the fourth and fifth close each other.
    EXPECT_EQ((std::vector<std::int32_t>{0, 5}), mesh.triangles);
    EXPECT_EQ(2, mesh.model->m_Status.m_nFacetNum);
    EXPECT_EQ(4u, mesh.model->m_VertexTree.m_nCount);
    ExpectInvariants(*mesh.model);
}

TEST(Classic, RandomFacetsAreThoseOfferedOneByOne) {
    std::mt19937 random(2);
    for (int n = 0; n < 300; ++n) {
        std::size_t const count = 3 + random() % 40;
        std::vector<Point3> const points = DistinctPoints(random, count);
        ASSERT_NO_FATAL_FAILURE(ExpectAsOneByOne(points, RandomTriangles(random, count, random() % 150)))
            << n;
    }
}

// The facets around one point are more than are compared pair by pair.
TEST(Classic, FansWithTwinsAreThoseOfferedOneByOne) {
    std::mt19937 random(3);
    for (int n = 0; n < 50; ++n) {
        std::vector<Point3> const points = DistinctPoints(random, 60);
        std::vector<Triangle> triangles = RandomTriangles(random, 60, 200);
        for (Triangle& t : triangles) {
            t[random() % 3] = 0;
            if (t[0] == t[1] || t[1] == t[2] || t[2] == t[0]) t = {0, 1, 2};
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAsOneByOne(points, triangles)) << n;
    }
}

TEST(Classic, PointsAtOnePlaceAreOneVertex) {
    std::mt19937 random(4);
    for (int n = 0; n < 100; ++n) {
        std::vector<Point3> points = DistinctPoints(random, 20);
        for (int k = 0; k < 5; ++k) points[random() % 20] = points[random() % 20];
        points[0].x = 0.0;
        points[1] = points[0];
        points[1].x = -0.0;
        ASSERT_NO_FATAL_FAILURE(ExpectAsOneByOne(points, RandomTriangles(random, 20, 80))) << n;
    }
}

// What a host does with a model afterwards adds to lists and frees them.
TEST(Classic, ModelCanBeAddedToAndCopiedFrom) {
    std::mt19937 random(5);
    std::vector<Point3> const points = DistinctPoints(random, 60);
    std::vector<Triangle> const triangles = RandomTriangles(random, 60, 200);
    std::vector<Triangle> const more = RandomTriangles(random, 60, 100);
    Naive naive;
    OfferOneByOne(points, triangles, naive);
    ClassicMesh mesh = MakeClassic(points, triangles);
    for (Triangle const& t : more) {
        for (CSTLModel* const model : {&naive.model, mesh.model.get()}) {
            AddTriangle(*model, At(points[static_cast<std::size_t>(t[0])]),
                        At(points[static_cast<std::size_t>(t[1])]),
                        At(points[static_cast<std::size_t>(t[2])]));
        }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(naive.model, *mesh.model));
    CSTLModel copy;
    copy.AddSTLModel(mesh.model.get());
    EXPECT_EQ(naive.model.GetFacetsNum(), copy.GetFacetsNum());
    mesh.model->ReleaseAllFacet();
    EXPECT_EQ(0, mesh.model->GetFacetsNum());
}

TEST(Classic, FlattenedModelHasItsPointsInTheOrderOfTheFacets) {
    CSTLModel model;
    AddTriangle(model, {0, 0, 1}, {4, 0, 0}, {0, 4, 2});
    AddTriangle(model, {4, 0, 0}, {9, 9, 9}, {0, 4, 2});
    FlatMesh const mesh = Flatten(model);
    ASSERT_EQ(4u, mesh.points.size());
    EXPECT_EQ((Point3{4, 0, 0}), mesh.points[0]);
    EXPECT_EQ((Point3{0, 4, 2}), mesh.points[1]);
    EXPECT_EQ((Point3{0, 0, 1}), mesh.points[2]);
    EXPECT_EQ((Point3{9, 9, 9}), mesh.points[3]);
    EXPECT_EQ((Triangle{0, 1, 2}), mesh.triangles[0]);
    EXPECT_EQ((Triangle{0, 3, 1}), mesh.triangles[1]);
}

// A host may number the vertices anew, or put facets of one model into another.
TEST(Classic, NumbersThatAHostHasSetDoNotMatter) {
    CSTLModel model;
    AddMesh(model, shapes::IcoSphere(5.0, 1));
    FlatMesh const expected = Flatten(model);
    std::mt19937 random(6);
    for (tagVertexNode* const vertex : VerticesOf(model))
        vertex->m_nIndex = static_cast<std::int32_t>(random() % 200) - 60;
    model.m_VertexTree.m_nCount += 1;
    FlatMesh const mesh = Flatten(model);
    model.m_VertexTree.m_nCount -= 1;
    EXPECT_TRUE(
        std::equal(expected.points.begin(), expected.points.end(), mesh.points.begin(), mesh.points.end()));
    EXPECT_TRUE(std::equal(expected.triangles.begin(), expected.triangles.end(), mesh.triangles.begin(),
                           mesh.triangles.end()));
}

TEST(Classic, EachFacetKnowsItsTriangle) {
    std::mt19937 random(7);
    // Facets from a used pool do not come in the order of their addresses.
    std::vector<std::unique_ptr<CSTLModel>> others;
    for (int n = 0; n < 20; ++n) {
        others.push_back(std::make_unique<CSTLModel>());
        AddMesh(*others.back(), shapes::IcoSphere(5.0, 1));
    }
    for (std::size_t n = 0; n < others.size(); n += 2) others[n].reset();
    std::vector<Point3> const points = DistinctPoints(random, 100);
    std::vector<Triangle> const triangles = RandomTriangles(random, 100, 1500);
    IntakeSettings asItIs;
    asItIs.heal = false;
    Part const part(points, triangles, asItIs);
    ClassicFacets facets(part);
    ClassicMesh const expected = MakeClassic(part.Points(), part.Triangles());
    std::vector<CFacet*> const all = FacetsOf(facets.Model());
    ASSERT_EQ(expected.triangles.size(), all.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(expected.triangles[i], facets.TriangleOf(all[i])) << i;
}

// Points that no facet uses have no vertex, and none to take a list back from.
TEST(Classic, ListsAreLentToTheVerticesThatAreThere) {
    std::vector<Point3> const points = {{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {8, 8, 8}, {0, 1, 0}};
    std::vector<Triangle> const triangles = {{1, 2, 4}};
    ClassicMesh const mesh = MakeClassic(points, triangles, FacetLists::kLent);
    EXPECT_EQ(mesh.model->GetFacetsNum(), 1);
    EXPECT_EQ(mesh.model->m_VertexTree.m_nCount, 3u);
    EXPECT_EQ(mesh.triangles, std::vector<std::int32_t>{0});
}

// In every order of heights, equal ones among them.
TEST(Classic, CornersStandAsTheModelPutsThemWhereHeightsAreEqual) {
    for (int heights = 0; heights < 27; ++heights) {
        std::vector<Point3> const points = {
            {0, 0, 1.0 * (heights % 3)}, {5, 0, 1.0 * (heights / 3 % 3)}, {0, 5, 1.0 * (heights / 9)}};
        std::vector<Triangle> const triangles = {{0, 1, 2}};
        ClassicMesh const mesh = MakeClassic(points, triangles);
        Naive naive;
        OfferOneByOne(points, triangles, naive);
        CFacet const& facet = *mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet[0];
        CFacet const& expected = *naive.model.m_SurfaceArray.m_aSurface[0]->m_aFacet[0];
        for (tagVertexNode* CFacet::*const corner :
             {&CFacet::m_pVertex1, &CFacet::m_pVertex2, &CFacet::m_pVertex3}) {
            EXPECT_EQ((facet.*corner)->x, (expected.*corner)->x) << heights;
            EXPECT_EQ((facet.*corner)->y, (expected.*corner)->y) << heights;
        }
        EXPECT_EQ(facet.m_nFlag, expected.m_nFlag) << heights;
    }
}

}  // namespace varnet
