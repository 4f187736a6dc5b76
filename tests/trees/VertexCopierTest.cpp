#include "trees/VertexCopier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "MeshChecks.h"
#include "trees/LiteralVertexTree.h"
#include "trees/PointSoup.h"

using namespace varnet;

// Copies of vertices against those that AddNode makes, node for node and bit for bit.

namespace {

constexpr double kLargest = 1000.0;

std::vector<tagVertexNode*> NodesOf(CVertexTree const& tree) {
    std::vector<tagVertexNode*> nodes;
    CollectNodes(tree.m_pRoot, nodes);
    return nodes;
}

void ExpectSameCopies(VertexCopier& copier, std::vector<std::uint32_t> const& ranks,
                      std::vector<CPoint3D> const& points) {
    CVertexTree plain;
    CVertexTree copied;
    for (std::uint32_t const nRank : ranks) copier.Announce(nRank);
    copier.CopyTo(copied);
    for (std::size_t i = 0; i < ranks.size(); ++i) {
        CPoint3D point(points[i]);
        tagVertexNode const* const pExpected = plain.AddNode(point);
        tagVertexNode const* const pCopy = copier.Next(ranks[i]);
        ASSERT_EQ(pExpected->m_nIndex, pCopy->m_nIndex);
        ASSERT_TRUE(SameBits(*pExpected, *pCopy));
    }
    ASSERT_EQ(plain.m_nCount, copied.m_nCount);
    ASSERT_TRUE(SameShape(plain.m_pRoot, copied.m_pRoot));
    ASSERT_TRUE(SameBox(plain.m_BoundBox, copied.m_BoundBox));
    copier.Clear();
}

// Random vertices of the tree, some of them again and again, to two targets one after the other.
void ExpectSameCopies(CVertexTree& source, PointSoup& soup) {
    std::vector<tagVertexNode*> const nodes = NodesOf(source);
    VertexCopier copier(source, kLargest);
    ASSERT_TRUE(copier.IsOrdered());
    auto const nNodes = static_cast<unsigned>(nodes.size());
    std::vector<std::vector<std::uint32_t>> ranks(2);
    std::vector<std::vector<CPoint3D>> points(2);
    for (std::size_t n = 0; n < 2; ++n) {
        unsigned const nComings = soup.Below(3 * nNodes);
        unsigned const nFrom = soup.Below(nNodes);
        for (unsigned i = 0; i < nComings; ++i) {
            tagVertexNode const& node = *nodes[nFrom + soup.Below(nNodes - nFrom)];
            ranks[n].push_back(copier.RankOf(node));
            points[n].push_back(node);
        }
    }
    for (std::size_t n = 0; n < 2; ++n)
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(copier, ranks[n], points[n]));
}

class VertexCopierTwin : public testing::TestWithParam<int> {
protected:
    PointSoup Soup(unsigned nSeed) { return PointSoup(nSeed, static_cast<PointSoup::Kind>(GetParam())); }
};

void Fill(CVertexTree& tree, std::vector<CPoint3D> const& points) {
    for (CPoint3D point : points) tree.AddNode(point);
}

}  // namespace

TEST_P(VertexCopierTwin, MakesTheNodesThatTheTreeMakes) {
    for (unsigned nSeed = 0; nSeed < 150; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup = Soup(nSeed);
        CVertexTree source;
        unsigned const nPoints = 1 + soup.Below(400);
        for (unsigned n = 0; n < nPoints; ++n) {
            CPoint3D point = soup.Next();
            source.AddNode(point);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(source, soup));
    }
}

// A host has shrunk or stretched what lies in the tree: what was apart may be near now. Where that leaves no
// order to go by, nothing is copied.
TEST_P(VertexCopierTwin, MakesThoseNodesOrNoneAfterTheSourceHasBeenScaled) {
    int nOrdered = 0;
    for (unsigned nSeed = 0; nSeed < 150; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup = Soup(nSeed);
        CVertexTree source;
        for (int n = 0; n < 200; ++n) {
            CPoint3D point = soup.Next();
            source.AddNode(point);
        }
        double const dScale = soup.Below(2) == 0 ? 0.4 : 3.0;
        for (tagVertexNode* const pNode : NodesOf(source)) {
            pNode->x *= dScale;
            pNode->y *= dScale;
            pNode->z *= dScale;
        }
        if (soup.Below(2) == 0) source.ReBuildTree();
        if (!VertexCopier(source, kLargest).IsOrdered()) continue;
        ++nOrdered;
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(source, soup));
    }
    EXPECT_GT(nOrdered, 0);
}

INSTANTIATE_TEST_SUITE_P(AllSoups, VertexCopierTwin,
                         testing::Values(PointSoup::kHalfTolerance, PointSoup::kWholeTolerance,
                                         PointSoup::kWholeNumbers, PointSoup::kNearHeights,
                                         PointSoup::kNearRows, PointSoup::kNearColumns,
                                         PointSoup::kNearEverything, PointSoup::kAnywhere,
                                         PointSoup::kManyHeights));

// As roundings set them apart, and farther.
TEST(VertexCopier, RowsNearEachOtherGiveTheNodesThatTheTreeMakes) {
    constexpr double kJitter[] = {0.000002, 0.00001, 0.00004, 0.00006};
    for (unsigned nSeed = 0; nSeed < 600; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup(nSeed, PointSoup::kWholeNumbers);
        double const dJitter = kJitter[soup.Below(4)];
        double const dRow = soup.Below(2) == 0 ? 1.0 : 0.00016;
        CVertexTree source;
        for (int n = 0; n < 200; ++n) {
            double const x = soup.Below(40) * (soup.Below(8) == 0 ? 0.00007 : 0.5);
            double const y = soup.Below(3) * dRow + (soup.Below(3) - 1.0) * dJitter;
            CPoint3D point(x, y, soup.Below(2));
            source.AddNode(point);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(source, soup));
    }
}

TEST(VertexCopier, RanksVerticesFromTheLeast) {
    CVertexTree source;
    Fill(source, {CPoint3D(0, 0, 1), CPoint3D(0, 0, 0), CPoint3D(0, 0, 2)});
    std::vector<tagVertexNode*> const nodes = NodesOf(source);
    VertexCopier const copier(source, kLargest);
    EXPECT_EQ(1u, copier.RankOf(*nodes[0]));
    EXPECT_EQ(0u, copier.RankOf(*nodes[1]));
    EXPECT_EQ(2u, copier.RankOf(*nodes[2]));
}

TEST(VertexCopier, DoesNotMistakeVerticesWhoseNumbersWereChanged) {
    for (int const nIndex : {0, 2, 3, 11, 12, -1, 0x7FFFFFFF}) {
        SCOPED_TRACE(nIndex);
        CVertexTree source;
        Fill(source, {CPoint3D(0, 0, 1), CPoint3D(0, 0, 0), CPoint3D(0, 0, 2)});
        std::vector<tagVertexNode*> const nodes = NodesOf(source);
        nodes[1]->m_nIndex = nIndex;
        VertexCopier const copier(source, kLargest);
        EXPECT_EQ(nIndex >= 0 && nIndex < 12, copier.IsOrdered());
        if (!copier.IsOrdered()) continue;
        std::uint32_t const nRank = copier.RankOf(*nodes[1]);
        EXPECT_TRUE(nRank == 0u || nRank == VertexCopier::kNone);
    }
}

TEST(VertexCopier, KnowsAVertexOfAnotherTree) {
    CVertexTree source, other;
    Fill(source, {CPoint3D(0, 0, 1), CPoint3D(0, 0, 0)});
    Fill(other, {CPoint3D(0, 0, 1), CPoint3D(0, 0, 0)});
    VertexCopier const copier(source, kLargest);
    for (tagVertexNode const* const pNode : NodesOf(other)) {
        EXPECT_EQ(VertexCopier::kNone, copier.RankOf(*pNode));
    }
    tagVertexNode single;
    single.m_nIndex = 5000;
    EXPECT_EQ(VertexCopier::kNone, copier.RankOf(single));
}

TEST(VertexCopier, EmptySourceIsOrdered) {
    CVertexTree source;
    EXPECT_TRUE(VertexCopier(source, kLargest).IsOrdered());
}

TEST(VertexCopier, LargestCoordinateIsCopied) {
    for (CPoint3D const& p : {CPoint3D(1000, 0, 0), CPoint3D(0, -1000, 0), CPoint3D(0, 0, 1000)}) {
        CVertexTree source;
        Fill(source, {CPoint3D(0, 0, 0), p});
        EXPECT_TRUE(VertexCopier(source, 1000.0).IsOrdered());
        EXPECT_FALSE(VertexCopier(source, 999.0).IsOrdered());
    }
}

TEST(VertexCopier, SourceThatWasBentIsNotOrdered) {
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    double const dInfinity = std::numeric_limits<double>::infinity();
    for (double const z : {3.0, 2.00005, 1.0, dNaN, dInfinity}) {
        SCOPED_TRACE(z);
        CVertexTree source;
        Fill(source, {CPoint3D(0, 0, 1), CPoint3D(0, 0, 0), CPoint3D(0, 0, 2), CPoint3D(0, 0, 4)});
        EXPECT_TRUE(VertexCopier(source, kLargest).IsOrdered());
        source.m_pRoot->z = z;  // that of the vertex at 1
        EXPECT_EQ(z == 1.0, VertexCopier(source, kLargest).IsOrdered());
    }
}

// Heights are equal, but the first one that came would give its sign to those after it.
TEST(VertexCopier, SourceWithZerosOfBothSignsAtAHeightIsNotOrdered) {
    CVertexTree source;
    Fill(source, {CPoint3D(0, 0, 0), CPoint3D(1, 0, 0)});
    EXPECT_TRUE(VertexCopier(source, kLargest).IsOrdered());
    source.m_pRoot->z = -0.0;
    EXPECT_FALSE(VertexCopier(source, kLargest).IsOrdered());
}
