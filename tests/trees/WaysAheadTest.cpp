#include "trees/WaysAhead.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "trees/LiteralVertexTree.h"
#include "trees/PointSoup.h"
#include "trees/VertexCache.h"
#include "trees/VertexInsertion.h"

using namespace varnet;

namespace {

constexpr double kTolerance = 0.0001;

CVertexTree TreeOf(std::vector<CPoint3D> const& points, double dTolerance = kTolerance) {
    CVertexTree tree;
    tree.m_dTolerance = dTolerance;
    for (CPoint3D point : points) tree.AddNode(point);
    return tree;
}

WaysAhead WaysOf(CVertexTree const& tree, std::vector<CPoint3D> const& points) {
    WaysAhead ways;
    ways.Begin();
    for (std::size_t i = 0; i < points.size(); ++i)
        EXPECT_EQ(ways.Want(points[i], VertexCache::HashOf(points[i])), i);
    ways.Find(tree);
    return ways;
}

// A descent step by step: the nodes that a point passes, and its z behind each.
struct Step {
    tagVertexNode* pNode;
    double zBehind;
    bool bEnds;     // here the descent finds its vertex
    bool bNearRow;  // in height and y within the tolerance, at another y
};

std::vector<Step> StepsOf(CVertexTree& tree, CPoint3D point) {
    std::vector<Step> steps;
    for (tagVertexNode* p = tree.m_pRoot; p != nullptr;) {
        vertex_insertion::NoWatch watch;
        int const nOrder =
            vertex_insertion::CompareAndSnap(*p, point.x, point.y, point.z, tree.m_dTolerance, watch);
        bool const bNearRow = std::fabs(p->z - point.z) <= tree.m_dTolerance && p->y != point.y &&
                              std::fabs(p->y - point.y) <= tree.m_dTolerance;
        steps.push_back({p, point.z, nOrder == 0, bNearRow});
        p = nOrder == 0 ? nullptr : nOrder < 0 ? p->m_pLeft : p->m_pRight;
    }
    return steps;
}

// Where the way of a point ends that has been followed on the tree, which may have changed, and its z there.
void ExpectOnItsWay(CVertexTree& tree, WaysAhead& ways, CPoint3D const& point, bool bChanged) {
    std::size_t const nNumber = ways.Take(point, VertexCache::HashOf(point));
    ASSERT_NE(nNumber, WaysAhead::kNone);
    avl::Way<tagVertexNode> way(tree.m_pRoot);
    CPoint3D followed(point);
    ways.Follow(nNumber, way, followed);
    std::vector<Step> const steps = StepsOf(tree, point);
    std::size_t nPassed = 0;
    while (nPassed < steps.size() && steps[nPassed].pNode != way.Next()) ++nPassed;
    EXPECT_EQ(way.Next(), nPassed < steps.size() ? steps[nPassed].pNode : nullptr);
    EXPECT_EQ(followed.z, nPassed == 0 ? point.z : steps[nPassed - 1].zBehind);
    EXPECT_EQ(followed.x, point.x);
    EXPECT_EQ(followed.y, point.y);
    for (std::size_t i = 0; i < nPassed; ++i) EXPECT_FALSE(steps[i].bEnds || steps[i].bNearRow);
    if (bChanged || nPassed == steps.size()) return;
    EXPECT_TRUE(steps[nPassed].bEnds || steps[nPassed].bNearRow) << "all that is known";
}

}  // namespace

TEST(WaysAhead, InATreeWithoutVerticesNothingIsPassed) {
    CVertexTree tree;
    std::vector<CPoint3D> const points = {CPoint3D(1.0, 2.0, 3.0)};
    WaysAhead ways = WaysOf(tree, points);
    CPoint3D point(points[0]);
    avl::Way<tagVertexNode> way(tree.m_pRoot);
    ways.Follow(ways.Take(point, VertexCache::HashOf(point)), way, point);
    EXPECT_EQ(&way.Next(), &tree.m_pRoot);
    EXPECT_EQ(point.z, 3.0);
}

TEST(WaysAhead, AWayIsGivenOnceAndToItsPointAlone) {
    CVertexTree const tree = TreeOf({CPoint3D(0.0, 0.0, 0.0)});
    std::vector<CPoint3D> const points = {CPoint3D(1.0, 2.0, 3.0), CPoint3D(4.0, 5.0, 6.0)};
    WaysAhead ways = WaysOf(tree, points);
    std::size_t const nHash = VertexCache::HashOf(points[1]);
    EXPECT_EQ(ways.Take(CPoint3D(4.5, 5.0, 6.0), nHash), WaysAhead::kNone);
    EXPECT_EQ(ways.Take(CPoint3D(4.0, 5.5, 6.0), nHash), WaysAhead::kNone);
    EXPECT_EQ(ways.Take(CPoint3D(4.0, 5.0, 6.5), nHash), WaysAhead::kNone);
    EXPECT_EQ(ways.Take(points[1], nHash), 1u);
    EXPECT_EQ(ways.Take(points[1], nHash), WaysAhead::kNone);
    EXPECT_EQ(ways.Take(points[0], VertexCache::HashOf(points[0])), 0u);
}

TEST(WaysAhead, ForgottenWaysAreNotGiven) {
    CVertexTree const tree = TreeOf({CPoint3D(0.0, 0.0, 0.0)});
    std::vector<CPoint3D> const points = {CPoint3D(1.0, 2.0, 3.0)};
    WaysAhead ways = WaysOf(tree, points);
    ways.Begin();
    EXPECT_EQ(ways.Take(points[0], VertexCache::HashOf(points[0])), WaysAhead::kNone);
}

// Greater keys are on the left: z, then y, then x.
TEST(WaysAhead, AWayLeadsToTheEmptyLinkAndTakesTheHeightOnIt) {
    CVertexTree tree = TreeOf({CPoint3D(0.0, 0.0, 1.0), CPoint3D(0.0, 0.0, 2.0), CPoint3D(0.0, 0.0, 0.0)});
    tagVertexNode* const pUpper = tree.m_pRoot->m_pLeft;
    std::vector<CPoint3D> const points = {CPoint3D(5.0, 7.0, 2.00005)};
    WaysAhead ways = WaysOf(tree, points);
    CPoint3D point(points[0]);
    avl::Way<tagVertexNode> way(tree.m_pRoot);
    ways.Follow(ways.Take(point, VertexCache::HashOf(point)), way, point);
    EXPECT_EQ(&way.Next(), &pUpper->m_pLeft);
    EXPECT_EQ(point.z, 2.0);
}

TEST(WaysAhead, AWayEndsAheadOfAVertexThatHasComeBetween) {
    CVertexTree tree = TreeOf({CPoint3D(0.0, 0.0, 1.0), CPoint3D(0.0, 0.0, 2.0), CPoint3D(0.0, 0.0, 0.0)});
    std::vector<CPoint3D> const points = {CPoint3D(0.0, 0.0, 4.0), CPoint3D(0.0, 0.0, -1.0)};
    WaysAhead ways = WaysOf(tree, points);
    // 3 comes below 2, and 3.5 turns them: 3 stands above 2 and 3.5.
    CPoint3D three(0.0, 0.0, 3.0);
    CPoint3D later(0.0, 0.0, 3.5);
    tagVertexNode* const pThree = tree.AddNode(three);
    tree.AddNode(later);
    CPoint3D point(points[0]);
    avl::Way<tagVertexNode> way(tree.m_pRoot);
    ways.Follow(ways.Take(point, VertexCache::HashOf(point)), way, point);
    EXPECT_EQ(way.Next(), pThree);
    CPoint3D below(points[1]);
    avl::Way<tagVertexNode> wayBelow(tree.m_pRoot);
    ways.Follow(ways.Take(below, VertexCache::HashOf(below)), wayBelow, below);
    EXPECT_EQ(wayBelow.Next(), nullptr);
}

// Every kind of nearness, on a tree as it was and on one that has grown since.
TEST(WaysAhead, AgreeWithDescentsStepByStep) {
    for (int nKind = 0; nKind < PointSoup::kKinds; ++nKind) {
        auto const kind = static_cast<PointSoup::Kind>(nKind);
        if (kind == PointSoup::kWithoutNumbers || kind == PointSoup::kNearlyNumbers) continue;
        for (unsigned nSeed = 0; nSeed < 40; ++nSeed) {
            PointSoup soup(nSeed, kind);
            std::vector<CPoint3D> first;
            for (unsigned n = 20 + soup.Below(400); n > 0; --n) first.push_back(soup.Next());
            CVertexTree tree = TreeOf(first, nSeed % 4 == 3 ? 0.0 : kTolerance);
            // Heights that are near each other.
            if (nSeed % 8 == 7) tree.m_dTolerance = kTolerance;
            std::vector<CPoint3D> points;
            for (int n = 0; n < 30; ++n) points.push_back(soup.Next());
            WaysAhead ways = WaysOf(tree, points);
            for (CPoint3D const& point : points) {
                if (nSeed % 2 == 1) {
                    CPoint3D more = soup.Next();
                    tree.AddNode(more);
                }
                WaysAhead probe = ways;
                if (probe.Take(point, VertexCache::HashOf(point)) == WaysAhead::kNone)
                    continue;  // its place is another's
                ASSERT_NO_FATAL_FAILURE(ExpectOnItsWay(tree, ways, point, nSeed % 2 == 1));
            }
        }
    }
}

namespace {

std::vector<CPoint3D const*> PointersTo(std::vector<CPoint3D> const& points) {
    std::vector<CPoint3D const*> pointers;
    for (CPoint3D const& point : points) pointers.push_back(&point);
    return pointers;
}

// 8,192 vertices, each above the last.
CVertexTree Tower() {
    std::vector<CPoint3D> points;
    for (int i = 0; i < 8192; ++i) points.emplace_back(0.0, 0.0, i);
    return TreeOf(points);
}

}  // namespace

TEST(WaysAhead, PointsOfAllHeightsAreFarApartAndThoseOfOnePlaceAreNot) {
    CVertexTree const tree = Tower();
    std::vector<CPoint3D> apart;
    std::vector<CPoint3D> together;
    for (int i = 0; i < 64; ++i) {
        apart.emplace_back(0.0, 0.0, i * 128 + 0.5);
        together.emplace_back(0.0, 0.0, 4000.5 + i / 100.0);
    }
    EXPECT_TRUE(WaysAhead::AreFarApart(tree, PointersTo(apart)));
    EXPECT_FALSE(WaysAhead::AreFarApart(tree, PointersTo(together)));
}

TEST(WaysAhead, PointsAreFarFromRecentOnesWhereTheirNeighboursAreOld) {
    CVertexTree const tree = Tower();
    auto const between = [](std::vector<double> const& heights) {
        std::vector<CPoint3D> points;
        for (double const z : heights) points.emplace_back(0.0, 0.0, z + 0.5);
        return points;
    };
    auto const isFar = [&tree](std::vector<CPoint3D> const& points) {
        return WaysAhead::AreFarFromRecent(tree, PointersTo(points));
    };
    EXPECT_TRUE(isFar(between({10.0, 2000.0, 4000.0})));
    EXPECT_FALSE(isFar(between({4500.0, 6000.0, 8000.0})));
    EXPECT_TRUE(isFar(between({10.0, 2000.0, 8000.0})));
    EXPECT_FALSE(isFar(between({10.0, 8000.0}))) << "half of them";
    // Points that are there already do not count.
    std::vector<CPoint3D> points = between({10.0, 2000.0, 8000.0});
    for (int i = 4500; i < 4530; ++i) points.emplace_back(0.0, 0.0, i);
    EXPECT_TRUE(isFar(points));
    EXPECT_FALSE(isFar({CPoint3D(0.0, 0.0, 10.0)})) << "none is new";
}
