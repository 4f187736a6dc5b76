#include "trees/VertexCache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "Shapes.h"
#include "trees/LiteralVertexTree.h"
#include "trees/PointSoup.h"

using namespace varnet;

// The cache against the plain tree, node for node and bit for bit.

namespace {

class CachedAndPlain {
public:
    explicit CachedAndPlain(double dTolerance = 0.0001, bool bKeepDrawn = true)
        : m_Cached(WithTolerance(dTolerance)) {
        m_Plain.m_dTolerance = dTolerance;
        m_Cache.KeepDrawn(bKeepDrawn);
    }

    void Add(CPoint3D const& point) {
        CPoint3D expected(point);
        CPoint3D offered(point);
        tagVertexNode const* const pExpected = m_Plain.AddNode(expected);
        tagVertexNode const* const pNode = m_Cache.AddNode(offered);
        ASSERT_EQ(pExpected->m_nIndex, pNode->m_nIndex);
        ASSERT_TRUE(SameBits(*pExpected, *pNode));
        ASSERT_TRUE(SameBits(expected, offered));
    }

    // What is known of a group in advance changes nothing. Returns the vertices that were found.
    std::vector<tagVertexNode const*> BringNear(std::span<CPoint3D const> points) {
        std::vector<CPoint3D const*> group;
        std::vector<std::size_t> hashes;
        for (CPoint3D const& point : points) {
            group.push_back(&point);
            hashes.push_back(VertexCache::HashOf(point));
        }
        std::vector<tagVertexNode const*> found(points.size());
        found.resize(m_Cache.PrefetchGroup(group, hashes, found));
        return found;
    }

    void ExpectSame() {
        ASSERT_EQ(m_Plain.m_nCount, m_Cached.m_nCount);
        ASSERT_TRUE(SameShape(m_Plain.m_pRoot, m_Cached.m_pRoot));
        ASSERT_TRUE(SameBox(m_Plain.m_BoundBox, m_Cached.m_BoundBox));
    }

    CVertexTree m_Plain;
    CVertexTree m_Cached;
    VertexCache m_Cache{m_Cached};

private:
    static CVertexTree WithTolerance(double dTolerance) {
        CVertexTree tree;
        tree.m_dTolerance = dTolerance;
        return tree;
    }
};

class VertexCacheTwin : public testing::TestWithParam<int> {
protected:
    PointSoup Soup(int nSeed) {
        return PointSoup(static_cast<unsigned>(nSeed), static_cast<PointSoup::Kind>(GetParam()));
    }
};

CPoint3D ToPoint(shapes::Corner const& corner) { return CPoint3D(corner.x, corner.y, corner.z); }

void ExpectSameOnMesh(shapes::Mesh const& mesh) {
    CachedAndPlain trees;
    for (shapes::Triangle const& triangle : mesh) {
        for (shapes::Corner const& corner : triangle) ASSERT_NO_FATAL_FAILURE(trees.Add(ToPoint(corner)));
    }
    trees.ExpectSame();
}

}  // namespace

TEST_P(VertexCacheTwin, GivesTheSameNodesAsTheTree) {
    for (int nSeed = 0; nSeed < 60; ++nSeed) {
        PointSoup soup = Soup(nSeed);
        CachedAndPlain trees;
        for (int n = 0; n < 500; ++n) ASSERT_NO_FATAL_FAILURE(trees.Add(soup.Next()));
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// As in a mesh, most points come again exactly as before.
TEST_P(VertexCacheTwin, GivesTheSameNodesWhenPointsComeAgain) {
    constexpr double kTolerances[] = {0.0001, 0.0, 0.00001, 0.001};
    for (int nSeed = 200; nSeed < 320; ++nSeed) {
        PointSoup soup = Soup(nSeed);
        CachedAndPlain trees(kTolerances[nSeed % 4], nSeed % 8 < 4);
        std::vector<CPoint3D> seen;
        for (int n = 0; n < 1500; ++n) {
            if (nSeed % 24 < 8 && n % 300 == 0) trees.m_Cache.KeepDrawn(n % 600 == 0);
            bool const bAgain = !seen.empty() && soup.Below(4) != 0;
            CPoint3D const point =
                bAgain ? seen[soup.Below(static_cast<unsigned>(seen.size()))] : soup.Next();
            if (!bAgain) seen.push_back(point);
            ASSERT_NO_FATAL_FAILURE(trees.Add(point));
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Points come in groups that were brought near, or nearly: some points are left out, others come between.
TEST_P(VertexCacheTwin, GivesTheSameNodesWhenGroupsAreBroughtNear) {
    constexpr double kTolerances[] = {0.0001, 0.0, 0.00001, 0.001};
    for (int nSeed = 400; nSeed < 480; ++nSeed) {
        PointSoup soup = Soup(nSeed);
        CachedAndPlain trees(kTolerances[nSeed % 4], nSeed % 8 < 4);
        std::vector<CPoint3D> seen;
        for (int nGroup = 0; nGroup < 40; ++nGroup) {
            if (soup.Below(8) == 0) trees.m_Cache.KeepDrawn(soup.Below(2) == 0);
            if (soup.Below(8) == 0) trees.m_Cache.SetStrewn(soup.Below(2) == 0);
            std::vector<CPoint3D> points;
            for (unsigned n = 1 + soup.Below(VertexCache::kLargestGroup); n > 0; --n) {
                bool const bAgain = !seen.empty() && soup.Below(3) == 0;
                points.push_back(bAgain ? seen[soup.Below(static_cast<unsigned>(seen.size()))] : soup.Next());
                if (!bAgain) seen.push_back(points.back());
            }
            if (soup.Below(8) != 0) trees.BringNear(points);
            for (CPoint3D const& point : points) {
                if (soup.Below(16) == 0) {
                    ASSERT_NO_FATAL_FAILURE(trees.Add(soup.Next()));
                }
                if (soup.Below(16) != 0) {
                    ASSERT_NO_FATAL_FAILURE(trees.Add(point));
                }
            }
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// The ways of one group are known for as long as they may last, while thousands of heights come.
TEST(VertexCache, ManyPointsBehindAGroupGiveTheSameNodesAsTheTree) {
    for (unsigned nSeed = 0; nSeed < 20; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kManyHeights);
        CachedAndPlain trees;
        for (int n = 0; n < 300; ++n) ASSERT_NO_FATAL_FAILURE(trees.Add(soup.Next()));
        std::vector<CPoint3D> group;
        for (std::size_t n = 0; n < VertexCache::kLargestGroup; ++n) group.push_back(soup.Next());
        trees.BringNear(group);
        for (unsigned n = soup.Below(400); n > 0; --n) ASSERT_NO_FATAL_FAILURE(trees.Add(soup.Next()));
        for (CPoint3D const& point : group) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Two infinite heights differ by what is no number, which a descent takes for nearness.
TEST(VertexCache, InfinitePointsOfAGroupGiveTheSameNodesAsTheTree) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    for (double const dTolerance : {0.0001, 0.0}) {
        CachedAndPlain trees(dTolerance);
        std::vector<CPoint3D> group;
        for (double const x : {0.0, 1.0, kInfinite}) {
            for (double const z : {kInfinite, -kInfinite, 2.0, 3.0}) group.emplace_back(x, -x, z);
        }
        for (int n = 0; n < 3; ++n) {
            for (CPoint3D& point : group) point.y += 1.0;
            trees.BringNear(group);
            for (CPoint3D const& point : group) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
        }
        trees.ExpectSame();
    }
}

// What is known of a group holds for as many new heights as are remembered.
TEST(VertexCache, AGroupIsForgottenWhenMoreHeightsHaveComeThanOneAdds) {
    auto const toPoint = [](int n) { return CPoint3D(0.0, 0.0, n); };
    CachedAndPlain trees;
    ASSERT_NO_FATAL_FAILURE(trees.Add(toPoint(-1)));
    std::vector<CPoint3D> const group = {toPoint(1000), toPoint(2000)};
    auto const isKnown = [&](CPoint3D const& point) {
        return trees.m_Cache.m_Ways.Take(point, VertexCache::HashOf(point)) != WaysAhead::kNone;
    };
    for (int nTwice = 0; nTwice < 2; ++nTwice) {
        trees.BringNear(group);
        int const nFirst = nTwice * 97;
        for (int n = nFirst; n < nFirst + 96; ++n) ASSERT_NO_FATAL_FAILURE(trees.Add(toPoint(n)));
        EXPECT_TRUE(isKnown(group[0]));
        ASSERT_NO_FATAL_FAILURE(trees.Add(toPoint(nFirst + 96)));
        EXPECT_FALSE(isKnown(group[1]));
    }
}

INSTANTIATE_TEST_SUITE_P(AllSoups, VertexCacheTwin, testing::Range(0, static_cast<int>(PointSoup::kKinds)));

// Two rows of one height lie within the tolerance of a third: which row a point belongs to then depends on
// its way through the tree, and an exact match may not be the answer.
TEST(VertexCache, RowsThatRunIntoEachOtherGiveTheSameNodesAsTheTree) {
    for (unsigned nSeed = 0; nSeed < 400; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        for (int n = 0; n < 120; ++n) {
            double const x = soup.Below(3) * 0.00007;
            double const y = soup.Below(5) * 0.00007;
            double const z = soup.Below(2) * 0.00007;
            ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(x, y, z)));
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Rows as roundings set them apart, and now and then one that entangles them with the next.
TEST(VertexCache, ClansOfNearRowsGiveTheSameNodesAsTheTree) {
    constexpr double kApart[] = {0.00011, 0.00013, 0.00018, 0.0002, 0.00023, 0.0003, 0.0064, 1.0};
    constexpr double kJitter[] = {0.000002, 0.00001, 0.000025, 0.00004, 0.00007};
    for (unsigned nSeed = 0; nSeed < 1500; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        double const dApart = kApart[soup.Below(8)];
        double const dJitter = kJitter[soup.Below(5)];
        unsigned const nOdd = 2 + soup.Below(200);
        double const dFirst = soup.Below(3) * 0.0064 - 0.0064;
        std::vector<CPoint3D> seen;
        for (int n = 0; n < 300; ++n) {
            double const x = soup.Below(6) * (soup.Below(2) == 0 ? 0.00007 : 0.3);
            double const y = dFirst + soup.Below(4) * dApart + (soup.Below(3) - 1.0) * dJitter;
            double const dOdd = soup.Below(nOdd) == 0 ? soup.Below(10) * 0.00003 : 0.0;
            bool const bAgain = !seen.empty() && soup.Below(2) != 0;
            if (!bAgain) seen.emplace_back(x, y + dOdd, soup.Below(2) * 0.5);
            CPoint3D const point =
                bAgain ? seen[soup.Below(static_cast<unsigned>(seen.size()))] : seen.back();
            ASSERT_NO_FATAL_FAILURE(trees.Add(point)) << nSeed;
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// A row that is near two others which are not near each other, and at first meets one of them only.
TEST(VertexCache, RowBetweenTwoOthersGivesTheSameNodesAsTheTree) {
    for (unsigned nSeed = 0; nSeed < 20000; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        std::vector<CPoint3D> between;
        for (unsigned n = 0; n < 40; ++n) {
            double const x = soup.Below(50) * 0.5;
            double const y = n < 6 || soup.Below(2) == 0 ? soup.Below(2) * 0.000115 : 0.00002;
            if (y == 0.00002) between.emplace_back(x, y, 0.0);
            ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(x, y, 0.0))) << nSeed;
            if (between.empty()) continue;
            ASSERT_NO_FATAL_FAILURE(trees.Add(between[soup.Below(static_cast<unsigned>(between.size()))]));
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Steps of y less than the tolerance apart, over many tolerances: rows that chain without an end.
TEST(VertexCache, StairsOfNearRowsGiveTheSameNodesAsTheTree) {
    for (unsigned nSeed = 0; nSeed < 300; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        double const dFirst = soup.Below(3) * 0.0064 - 0.0064;
        unsigned const nSteps = 4 + soup.Below(60);
        for (int n = 0; n < 300; ++n) {
            double const x = soup.Below(4) * 0.00007;
            double const y = dFirst + (soup.Below(nSteps) - 0.5 * nSteps) * 0.00006;
            double const z = soup.Below(3) * 0.00008;
            ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(x, y, z)));
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Few places and heights that lie densely, so that a corner which took a height comes again when a nearer one
// has come, when another one of two is met first, and when its row has got a neighbour.
TEST(VertexCache, CornersThatTookAHeightComeAgainAfterHeightsRowsAndTurnsHaveChanged) {
    for (unsigned nSeed = 0; nSeed < 600; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        double const dStep = nSeed % 2 == 0 ? 0.00003 : 0.00007;
        unsigned const nHeights = 10 + soup.Below(400);
        unsigned const nOdd = 3 + soup.Below(300);
        std::vector<CPoint3D> seen;
        for (int n = 0; n < 800; ++n) {
            bool const bAgain = !seen.empty() && soup.Below(3) != 0;
            if (!bAgain) {
                double const dOdd = soup.Below(nOdd) == 0 ? soup.Below(10) * 0.00003 : 0.0;
                double const z = (soup.Below(nHeights) - 0.5 * nHeights) * dStep;
                seen.emplace_back(soup.Below(4), soup.Below(3) + dOdd, z);
            }
            CPoint3D const point =
                bAgain ? seen[soup.Below(static_cast<unsigned>(seen.size()))] : seen.back();
            ASSERT_NO_FATAL_FAILURE(trees.Add(point)) << nSeed;
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// Thousands of pairs of heights of which two now and then share their place in the table: what is remembered
// of a corner may not outlive what is known of its pair.
TEST(VertexCache, CornersBetweenThousandsOfHeightsGiveTheSameNodesAsTheTree) {
    for (unsigned nSeed = 0; nSeed < 4; ++nSeed) {
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        CachedAndPlain trees;
        constexpr unsigned kHeights = 4000;
        for (int n = 0; n < 60000; ++n) {
            double const x = soup.Below(6);
            double const dBetween = soup.Below(3) == 0 ? 0.0 : 0.000075;
            ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(x, 0.0, soup.Below(kHeights) * 0.00015 + dBetween)));
        }
        ASSERT_NO_FATAL_FAILURE(trees.ExpectSame());
    }
}

// A host may have set another tolerance.
TEST(VertexCache, OtherTolerancesGiveTheSameTree) {
    for (double const dTolerance : {0.0, 1e-300, 1e-9, 1e-6, 0.01, 0.3, 1.0, 100.0}) {
        for (unsigned nSeed = 0; nSeed < 20; ++nSeed) {
            CVertexTree plain;
            CVertexTree cached;
            plain.m_dTolerance = cached.m_dTolerance = dTolerance;
            VertexCache cache(cached);
            PointSoup soup(nSeed, static_cast<PointSoup::Kind>(nSeed % PointSoup::kKinds));
            for (int n = 0; n < 200; ++n) {
                CPoint3D expected = soup.Next();
                CPoint3D offered(expected);
                ASSERT_EQ(plain.AddNode(expected)->m_nIndex, cache.AddNode(offered)->m_nIndex);
                ASSERT_TRUE(SameBits(expected, offered));
            }
            ASSERT_TRUE(SameShape(plain.m_pRoot, cached.m_pRoot));
        }
    }
}

// Such a height takes that of the vertex at the root, whatever others there are.
TEST(VertexCache, HeightThatIsNotANumberGivesTheSameNodeAsTheTree) {
    for (int nHeights = 1; nHeights < 6; ++nHeights) {
        CachedAndPlain trees;
        for (int n = 0; n < nHeights; ++n)
            ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(0.0, 0.0, n * 0.00015)));
        ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(0.0, 0.0, std::nan(""))));
        ASSERT_NO_FATAL_FAILURE(trees.Add(CPoint3D(0.0, 0.0, 0.0)));
        trees.ExpectSame();
    }
}

TEST(VertexCache, ManyVerticesGiveTheSameTree) {
    PointSoup soup(1, PointSoup::kAnywhere);
    CachedAndPlain trees;
    std::vector<CPoint3D> points;
    for (int n = 0; n < 20000; ++n) points.push_back(soup.Next());
    for (int nRound = 0; nRound < 2; ++nRound) {
        for (CPoint3D const& point : points) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
    }
    trees.ExpectSame();
    EXPECT_EQ(20000u, trees.m_Plain.m_nCount);
}

TEST(VertexCache, ShapesGiveTheSameTree) {
    ExpectSameOnMesh(shapes::Cube(10.0f));
    ExpectSameOnMesh(shapes::Bracket());
    ExpectSameOnMesh(shapes::Torus(20.0, 5.0, 48, 24));
    ExpectSameOnMesh(shapes::IcoSphere(15.0, 4));
    ExpectSameOnMesh(shapes::Gyroid(20));
    ExpectSameOnMesh(shapes::Shuffled(shapes::Gyroid(20), 3));
    ExpectSameOnMesh(shapes::Tray(3, 3, 2));
}

TEST(VertexCache, TinyShapesWhoseCornersMergeGiveTheSameTree) {
    for (double const dRadius : {0.01, 0.003, 0.001, 0.0003}) {
        ExpectSameOnMesh(shapes::IcoSphere(dRadius, 3));
        ExpectSameOnMesh(shapes::Torus(dRadius, dRadius / 4.0, 24, 12));
    }
}

TEST(VertexCache, ZeroesOfBothSignsAreOneVertexAndTheHeightIsTheVertexs) {
    CVertexTree tree;
    VertexCache cache(tree);
    CPoint3D positive(0.0, 0.0, 0.0);
    tagVertexNode* const pNode = cache.AddNode(positive);
    CPoint3D negative(-0.0, -0.0, -0.0);
    EXPECT_EQ(pNode, cache.AddNode(negative));
    EXPECT_EQ(BitsOf(0.0), BitsOf(negative.z));
    EXPECT_EQ(BitsOf(-0.0), BitsOf(negative.x));
    EXPECT_EQ(1u, tree.m_nCount);
}

// Tags of vertices are odd, and an empty place has 0: beside the tag 1 it looks as if it had that tag too.
TEST(VertexCache, EmptyPlacesBesideAVertexWithTheLowestTagHoldNone) {
    CachedAndPlain trees;
    std::vector<CPoint3D> points;
    for (double x = 0.0; points.size() < 3; x += 1.0) {
        CPoint3D const point(x, 1.0, 2.0);
        std::size_t const nHash = VertexCache::HashOf(point);
        if (VertexCache::TagOf(nHash) != 1) continue;
        if (points.empty() || (nHash ^ VertexCache::HashOf(points[0])) % 64 == 0) points.push_back(point);
    }
    for (CPoint3D const& point : points) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
    for (CPoint3D const& point : points) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
    trees.ExpectSame();
    EXPECT_EQ(3u, trees.m_Cached.m_nCount);
}

// All vertices of one line, and of the line beside it, and more than both hold.
TEST(VertexCache, MoreVerticesThanTwoLinesHoldAreFoundOrAskedForInTheTree) {
    CachedAndPlain trees;
    std::vector<CPoint3D> points;
    for (double x = 0.0; points.size() < 16; x += 1.0) {
        CPoint3D const point(x, 1.0, 2.0);
        if (VertexCache::HashOf(point) / 2 % 32 == 5) points.push_back(point);
    }
    for (int nRound = 0; nRound < 3; ++nRound) {
        for (CPoint3D const& point : points) ASSERT_NO_FATAL_FAILURE(trees.Add(point));
    }
    trees.ExpectSame();
    EXPECT_EQ(16u, trees.m_Cached.m_nCount);
}

// Vertices are found as they are and where a point is drawn to their height; of new points there are none.
TEST(VertexCache, BringingAGroupNearFindsItsVerticesAndChangesNothing) {
    CachedAndPlain trees(0.0001, false);
    auto const place = [](int i) { return CPoint3D(i % 17 * 1.5, i % 13 * 1.25, i % 7 * 2.0); };
    constexpr int kVertices = 17 * 13 * 7;
    for (int i = 0; i < kVertices; ++i) ASSERT_NO_FATAL_FAILURE(trees.Add(place(i)));
    for (int nFirst = 0; nFirst + 30 <= kVertices; nFirst += 30) {
        std::vector<CPoint3D> points;
        std::vector<tagVertexNode const*> expected;
        for (int i = 0; i < 30; ++i) {
            CPoint3D known = place(nFirst + i);
            expected.push_back(trees.m_Cache.AddNode(known));  // is there already
            known.z += i % 2 == 0 ? 0.0 : 0.00005;
            points.push_back(known);
            points.emplace_back(known.x + 0.5, known.y, known.z);
            points.emplace_back(known.x, known.y, known.z + 1.0);
        }
        std::vector<tagVertexNode const*> found = trees.BringNear(points);
        // A vertex that came to a full line of the table is not remembered; most are.
        EXPECT_GE(found.size(), 20u);
        std::sort(expected.begin(), expected.end());
        std::sort(found.begin(), found.end());
        EXPECT_TRUE(std::includes(expected.begin(), expected.end(), found.begin(), found.end()));
    }
    trees.ExpectSame();
}

// A corner that has taken the height of its vertex once is found with it, wherever the table has its line.
TEST(VertexCache, BringingAGroupNearFindsTheCornersThatTookAHeight) {
    CachedAndPlain trees;
    std::vector<CPoint3D> points;
    std::vector<tagVertexNode const*> expected;
    for (int i = 0; i < 30; ++i) {
        CPoint3D vertex(i * 1.5, i * 1.25, i * 2.0);
        ASSERT_NO_FATAL_FAILURE(trees.Add(vertex));
        CPoint3D const drawn(vertex.x, vertex.y, vertex.z + 0.00005);
        ASSERT_NO_FATAL_FAILURE(trees.Add(drawn));
        points.push_back(drawn);
        points.push_back(drawn);
        expected.push_back(trees.m_Cache.AddNode(vertex));
    }
    EXPECT_EQ(trees.BringNear(points), expected) << "each once";
    trees.ExpectSame();
}

TEST(VertexCache, TreeThatIsNotEmptyIsAskedItself) {
    CVertexTree tree;
    CPoint3D first(0.0, 0.0, 0.0);
    tagVertexNode* const pFirst = tree.AddNode(first);
    VertexCache cache(tree);
    CPoint3D near(0.00005, 0.0, 0.00005);
    EXPECT_EQ(pFirst, cache.AddNode(near));
    EXPECT_EQ(0.0, near.z);
    CPoint3D far(1.0, 0.0, 0.00005);
    EXPECT_EQ(1, cache.AddNode(far)->m_nIndex);
    EXPECT_EQ(0.0, far.z);
}
