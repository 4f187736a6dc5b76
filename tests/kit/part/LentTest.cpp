// Models for a search of supports: facet lists in one block, vertices in no order; and what decides whether
// that may be.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "MeshChecks.h"
#include "kit/part/PartChecks.h"
#include "part/Classic.h"
#include "part/Edges.h"
#include "part/PartState.h"
#include "part/PointHash.h"
#include "part/Twins.h"

namespace varnet {

namespace {

std::array<std::uint64_t, 3> BitsOf(CPoint3D const& p) {
    return {std::bit_cast<std::uint64_t>(p.x), std::bit_cast<std::uint64_t>(p.y),
            std::bit_cast<std::uint64_t>(p.z)};
}

// All that a search of supports reads: corners, normals and flags of the facets, the facets of each vertex.
void ExpectSameForASearch(CSTLModel const& expected, CSTLModel const& actual) {
    std::vector<CFacet*> const a = FacetsOf(expected);
    std::vector<CFacet*> const b = FacetsOf(actual);
    ASSERT_EQ(a.size(), b.size());
    std::map<CFacet*, std::size_t> numbersA;
    std::map<CFacet*, std::size_t> numbersB;
    for (std::size_t i = 0; i < a.size(); ++i) numbersA[a[i]] = numbersB[b[i]] = i;
    std::map<tagVertexNode const*, tagVertexNode const*> same;
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(a[i]->m_nFlag, b[i]->m_nFlag) << i;
        for (int k = 0; k < 3; ++k) ASSERT_EQ(a[i]->m_fNormal[k], b[i]->m_fNormal[k]) << i;
        tagVertexNode const* const cornersA[] = {a[i]->m_pVertex1, a[i]->m_pVertex2, a[i]->m_pVertex3};
        tagVertexNode const* const cornersB[] = {b[i]->m_pVertex1, b[i]->m_pVertex2, b[i]->m_pVertex3};
        for (std::size_t k = 0; k < 3; ++k) {
            ASSERT_EQ(BitsOf(*cornersA[k]), BitsOf(*cornersB[k])) << i;
            ASSERT_EQ(cornersB[k], same.try_emplace(cornersA[k], cornersB[k]).first->second) << i;
        }
    }
    for (auto const& [vertexA, vertexB] : same) {
        ASSERT_EQ(vertexA->m_nFacetNum, vertexB->m_nFacetNum);
        ASSERT_EQ(vertexA->m_nIndex, vertexB->m_nIndex);
        for (int i = 0; i < vertexA->m_nFacetNum; ++i)
            ASSERT_EQ(numbersA.at(vertexA->m_ppFacet[i]), numbersB.at(vertexB->m_ppFacet[i]));
    }
    EXPECT_EQ(expected.m_VertexTree.m_nCount, actual.m_VertexTree.m_nCount);
    EXPECT_EQ(BitsOf(expected.m_VertexTree.m_BoundBox.m_ptMin),
              BitsOf(actual.m_VertexTree.m_BoundBox.m_ptMin));
    EXPECT_EQ(BitsOf(expected.m_VertexTree.m_BoundBox.m_ptMax),
              BitsOf(actual.m_VertexTree.m_BoundBox.m_ptMax));
}

// Points on a small grid, each place once.
std::vector<Point3> GridPoints(std::mt19937& random, std::size_t count) {
    std::vector<Point3> points;
    for (int i = 0; i < 343; ++i) points.push_back({i % 7 - 3.0, i / 7 % 7 - 3.0, i / 49 - 3.0});
    std::shuffle(points.begin(), points.end(), random);
    points.resize(count);
    return points;
}

bool HasCopiesPlainly(std::vector<Triangle> const& triangles) {
    std::set<std::set<std::int32_t>> seen;
    for (Triangle const& t : triangles) {
        if (!seen.insert({t[0], t[1], t[2]}).second) return true;
    }
    return false;
}

bool MayHaveCopiesIn(std::vector<Triangle> const& triangles, std::size_t points) {
    return MayHaveCopies(FindEdges(triangles, points, Pace::None()));
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(Lent, SearchSeesWhatAModelOfItsOwnWouldShow) {
    std::mt19937 random(11);
    for (int n = 0; n < 300; ++n) {
        std::size_t const count = 3 + random() % 80;
        std::vector<Point3> points = GridPoints(random, count);
        std::vector<Triangle> const triangles = RandomTriangles(random, count, random() % 200);
        // One time in three, two points at one place.
        if (n % 3 == 1) points[random() % count] = points[random() % count];
        // One time in three, zeros of both signs.
        if (n % 3 == 2) {
            for (Point3& p : points) {
                if (p.x == 0.0 && random() % 2 == 0) p.x = -0.0;
                if (p.z == 0.0 && random() % 2 == 0) p.z = -0.0;
            }
        }
        ClassicMesh const own = MakeClassic(points, triangles);
        ClassicMesh const lent = MakeClassic(points, triangles, FacetLists::kLent);
        ASSERT_EQ(own.triangles, lent.triangles) << n;
        ASSERT_NO_FATAL_FAILURE(ExpectSameForASearch(*own.model, *lent.model)) << n;
        if (HasCopiesPlainly(triangles)) continue;
        ClassicMesh const known = MakeClassic(points, triangles, FacetLists::kLent, Copies::kNo);
        ASSERT_EQ(own.triangles, known.triangles) << n;
        ASSERT_NO_FATAL_FAILURE(ExpectSameForASearch(*own.model, *known.model)) << n;
    }
}

TEST(Lent, TreeIsAsLowAsCanBe) {
    std::mt19937 random(12);
    std::vector<Point3> const points = GridPoints(random, 127);
    std::vector<Triangle> triangles;
    for (std::int32_t i = 0; i < 125; ++i) triangles.push_back({i, i + 1, i + 2});
    ClassicMesh const mesh = MakeClassic(points, triangles, FacetLists::kLent);
    EXPECT_EQ(127u, mesh.model->m_VertexTree.m_nCount);
    std::size_t depth = 0;
    std::size_t vertices = 0;
    std::vector<std::pair<tagVertexNode const*, std::size_t>> open = {{mesh.model->m_VertexTree.m_pRoot, 1}};
    while (!open.empty()) {
        auto const [node, level] = open.back();
        open.pop_back();
        if (node == nullptr) continue;
        ++vertices;
        depth = std::max(depth, level);
        open.push_back({node->m_pLeft, level + 1});
        open.push_back({node->m_pRight, level + 1});
    }
    EXPECT_EQ(127u, vertices);
    EXPECT_EQ(7u, depth);  // 127 = 2^7 - 1
}

TEST(Twins, EqualPointsAreFound) {
    EXPECT_FALSE(MayHaveTwins({}));
    std::vector<Point3> points = {{1, 2, 3}, {1, 2, 4}, {1, 5, 3}, {6, 2, 3}};
    EXPECT_FALSE(MayHaveTwins(points));
    points.push_back({1, 5, 3});
    EXPECT_TRUE(MayHaveTwins(points));
    points.back() = {3, 2, 1};
    EXPECT_FALSE(MayHaveTwins(points));
}

// Points are looked at 64 at a time; those behind the last one are not.
TEST(Twins, EachPointIsLookedAtAndNoneBehindThem) {
    for (std::size_t const count : {1, 63, 64, 65, 74, 127, 128, 129}) {
        std::vector<Point3> points;
        for (std::size_t i = 0; i < count; ++i) points.push_back({1.0 * static_cast<double>(i), 2, 3});
        for (std::size_t i = 0; i < 200; ++i) points.push_back({0, 2, 3});
        EXPECT_FALSE(MayHaveTwins(std::span(points).first(count))) << count;
        EXPECT_TRUE(MayHaveTwins(std::span(points).first(count + 1))) << count;
    }
}

TEST(Twins, ZerosOfBothSignsAreOnePlace) {
    std::vector<Point3> const acrossX = {{0.0, 1, 2}, {-0.0, 1, 2}};
    std::vector<Point3> const acrossY = {{1, -0.0, 2}, {1, 0.0, 2}};
    EXPECT_TRUE(MayHaveTwins(acrossX));
    EXPECT_TRUE(MayHaveTwins(acrossY));
    // Signs that differ at x and y change nothing elsewhere; at a height the first sign is all vertices'.
    std::vector<Point3> const apart = {{0.0, 1, 2}, {-0.0, 3, 2}, {4, 0.0, 2}, {5, -0.0, 2}};
    EXPECT_FALSE(MayHaveTwins(apart));
    std::vector<Point3> const bothHeights = {{1, 2, 0.0}, {3, 4, -0.0}};
    std::vector<Point3> const negative = {{1, 2, -0.0}, {3, 4, -0.0}};
    std::vector<Point3> const positive = {{1, 2, 0.0}, {3, 4, 0.0}};
    EXPECT_TRUE(MayHaveTwins(bothHeights));
    EXPECT_FALSE(MayHaveTwins(negative));
    EXPECT_FALSE(MayHaveTwins(positive));
}

TEST(Twins, WhatIsNotANumberIsFound) {
    EXPECT_TRUE(MayHaveTwins(std::vector<Point3>{{kNan, 0, 0}}));
    EXPECT_TRUE(MayHaveTwins(std::vector<Point3>{{0, kNan, 0}}));
    EXPECT_TRUE(MayHaveTwins(std::vector<Point3>{{0, 0, kNan}}));
}

// One pair among many points, within a group and far apart.
TEST(Twins, OnePairAmongManyIsFound) {
    std::mt19937 random(13);
    std::vector<Point3> points;
    auto const step = [](int n) { return static_cast<double>(static_cast<float>(n) * 0.1f); };
    for (int i = 0; i < 8000; ++i) points.push_back({step(i % 20), step(i / 20 % 20), step(i / 400 + 1)});
    EXPECT_FALSE(MayHaveTwins(points));
    for (int n = 0; n < 200; ++n) {
        std::size_t const i = random() % points.size();
        std::size_t const k = n % 2 == 0 ? (i + 1 + random() % 30) % points.size() : random() % points.size();
        if (i == k) continue;
        Point3 const kept = points[i];
        points[i] = points[k];
        ASSERT_TRUE(MayHaveTwins(points)) << i << ' ' << k;
        points[i] = kept;
    }
}

// Parts are mirrored, turned and full of grids: none of these may share hashes.
TEST(PointHash, MirroredAndTurnedPointsDiffer) {
    std::mt19937 random(14);
    std::set<std::uint64_t> seen;
    std::size_t count = 0;
    for (int n = 0; n < 2000; ++n) {
        auto const number = [&random] { return static_cast<double>(static_cast<float>(random()) * 1e-7f); };
        double const a = number();
        double const b = number();
        double const c = number();
        for (auto const& [x, y, z] :
             {std::array{a, b, c}, std::array{b, c, a}, std::array{c, a, b}, std::array{a, c, b}}) {
            for (int signs = 0; signs < 8; ++signs) {
                seen.insert(HashOf(
                    {(signs & 1) != 0 ? -x : x, (signs & 2) != 0 ? -y : y, (signs & 4) != 0 ? -z : z}));
                ++count;
            }
        }
    }
    EXPECT_EQ(count, seen.size());
    EXPECT_EQ(HashOf({0.0, -0.0, 0.0}), HashOf({-0.0, 0.0, -0.0}));
}

TEST(MayHaveCopies, OnSmallMeshes) {
    EXPECT_FALSE(MayHaveCopiesIn({}, 0));
    EXPECT_FALSE(MayHaveCopiesIn({{0, 1, 2}}, 3));
    EXPECT_FALSE(MayHaveCopiesIn({{0, 1, 2}, {3, 4, 5}, {6, 7, 8}}, 9));
    EXPECT_TRUE(MayHaveCopiesIn({{0, 1, 2}, {2, 0, 1}}, 3));
    EXPECT_TRUE(MayHaveCopiesIn({{0, 1, 2}, {0, 2, 1}}, 3));
    EXPECT_TRUE(MayHaveCopiesIn({{3, 4, 5}, {0, 1, 2}, {6, 7, 8}, {0, 2, 1}}, 9));
    EXPECT_TRUE(MayHaveCopiesIn({{0, 1, 2}, {0, 2, 1}, {1, 2, 0}}, 3));
    // A tetrahedron: each facet has three neighbours, all different.
    EXPECT_FALSE(MayHaveCopiesIn({{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}, 4));
}

// All copies are found; where no edge has more than two facets, and none two that run the same way, nothing
// else is.
TEST(MayHaveCopies, OnRandomMeshes) {
    std::mt19937 random(15);
    int with = 0;
    int without = 0;
    for (int n = 0; n < 2000; ++n) {
        std::size_t const points = 4 + random() % 30;
        std::vector<Triangle> const triangles = RandomTriangles(random, points, random() % 9);
        EdgeTable const edges = FindEdges(triangles, points, Pace::None());
        bool const copies = HasCopiesPlainly(triangles);
        if (copies || edges.many + edges.conflicts == 0) {
            ASSERT_EQ(copies, MayHaveCopies(edges)) << n;
        }
        (copies ? with : without) += 1;
    }
    EXPECT_GT(with, 50);
    EXPECT_GT(without, 500);
}

// What a part knows of itself stays known while its triangles keep their corners.
TEST(MayHaveCopies, IsKnownToAPart) {
    std::vector<Point3> const points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    std::vector<Triangle> triangles = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
    IntakeSettings asItIs;
    asItIs.heal = false;
    auto const mayHave = [](Part const& part) { return Part::State::Of(part).mayHaveCopies; };
    Part part(points, triangles, asItIs);
    EXPECT_FALSE(mayHave(part));
    EXPECT_FALSE(mayHave(Part(points, triangles)));
    part.Transform({{{{2, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, -1, 5}}}});
    EXPECT_FALSE(mayHave(part));
    part.Repair();
    EXPECT_FALSE(mayHave(part));
    for (Triangle const& copy : {Triangle{0, 1, 2}, Triangle{2, 1, 0}}) {
        triangles.push_back(copy);
        EXPECT_TRUE(mayHave(Part(points, triangles, asItIs)));
        triangles.pop_back();
    }
    // A hole is filled by facets of which nothing is known.
    triangles.pop_back();
    Part open(points, triangles, asItIs);
    EXPECT_FALSE(mayHave(open));
    RepairSettings fill;
    fill.fillHoles = 10.0;
    EXPECT_EQ(1, open.Repair(fill).facetsAdded);
    EXPECT_TRUE(mayHave(open));
}

}  // namespace varnet
