#include "trees/NearHeightCopier.h"

#include <gtest/gtest.h>

#include <vector>

#include "MeshChecks.h"
#include "trees/LiteralVertexTree.h"
#include "trees/PointSoup.h"
#include "trees/VertexCopier.h"

using namespace varnet;

// Copies of vertices whose heights are near each other, against what AddNode makes of the same points, node
// for node and bit for bit.

namespace {

constexpr double kLargest = 1000.0;

// The vertices come as the ranks say.
void ExpectSameCopies(NearHeightCopier& copier, std::span<tagVertexNode* const> sources,
                      std::vector<std::uint32_t> const& ranks) {
    CVertexTree plain;
    CVertexTree copied;
    {
        NearHeightCopier::Target target(copier, copied);
        std::span<std::uint32_t const> const all(ranks);
        for (std::size_t i = 0; i < ranks.size(); ++i) {
            if (i % NearHeightCopier::kLargestGroup == 0) {
                auto const group =
                    all.subspan(i, std::min(NearHeightCopier::kLargestGroup, ranks.size() - i));
                copier.PrefetchRecords(group);
                copier.PrefetchWays(group);
            }
            CPoint3D point(*sources[ranks[i]]);
            tagVertexNode const* const pExpected = plain.AddNode(point);
            tagVertexNode const* const pCopy = target.AddNode(ranks[i]);
            ASSERT_EQ(pExpected->m_nIndex, pCopy->m_nIndex) << i;
            ASSERT_TRUE(SameBits(*pExpected, *pCopy)) << i;
        }
    }
    ASSERT_EQ(plain.m_nCount, copied.m_nCount);
    ASSERT_TRUE(SameShape(plain.m_pRoot, copied.m_pRoot));
    ASSERT_TRUE(SameBox(plain.m_BoundBox, copied.m_BoundBox));
}

// Random vertices of the source, most of them again and again, to three targets one after the other: to the
// second one few.
void ExpectSameCopies(CVertexTree const& source, PointSoup& soup) {
    VertexCopier const ranked(source, kLargest);
    ASSERT_TRUE(ranked.IsRanked());
    NearHeightCopier copier(ranked.Sources());
    auto const nSources = static_cast<unsigned>(ranked.Sources().size());
    for (unsigned const nShare : {3u, 0u, 2u}) {
        unsigned const nComings = nShare == 0 ? 10 : soup.Below(nShare * nSources) + 1;
        unsigned const nFrom = soup.Below(nSources);
        std::vector<std::uint32_t> ranks;
        for (unsigned i = 0; i < nComings; ++i) ranks.push_back(nFrom + soup.Below(nSources - nFrom));
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(copier, ranked.Sources(), ranks));
    }
}

constexpr double kFiner[] = {0.0, 0.000001, 0.00003};

class NearHeightCopierTwin : public testing::TestWithParam<int> {};

}  // namespace

TEST_P(NearHeightCopierTwin, MakesTheNodesThatTheTreeMakes) {
    for (unsigned nSeed = 0; nSeed < 300; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup(nSeed, static_cast<PointSoup::Kind>(GetParam()));
        CVertexTree source;
        source.m_dTolerance = kFiner[nSeed % 3];
        unsigned const nPoints = 1 + soup.Below(400);
        for (unsigned n = 0; n < nPoints; ++n) {
            CPoint3D point = soup.Next();
            source.AddNode(point);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(source, soup));
    }
}

INSTANTIATE_TEST_SUITE_P(AllSoups, NearHeightCopierTwin,
                         testing::Values(PointSoup::kHalfTolerance, PointSoup::kWholeTolerance,
                                         PointSoup::kWholeNumbers, PointSoup::kNearHeights,
                                         PointSoup::kNearRows, PointSoup::kNearColumns,
                                         PointSoup::kNearEverything, PointSoup::kAnywhere,
                                         PointSoup::kManyHeights));

// From some vertices a tolerance of height to some hundred, on rows that are the same, near or far.
TEST(NearHeightCopier, CrowdedHeightsGiveTheNodesThatTheTreeMakes) {
    for (unsigned nSeed = 0; nSeed < 300; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup(nSeed, PointSoup::kAnywhere);
        double const dStep = soup.Below(2) == 0 ? 0.00001 : 0.0000013;
        unsigned const nSteps = 3 + soup.Below(200);
        double const dJitter = soup.Below(3) * 0.00002;
        CVertexTree source;
        source.m_dTolerance = 0.0;
        for (int n = 0; n < 600; ++n) {
            double const x = soup.Below(20) * (soup.Below(8) == 0 ? 0.00007 : 0.5);
            double const y = soup.Below(6) + soup.Below(3) * dJitter;
            CPoint3D point(x, y, soup.Below(nSteps) * dStep);
            source.AddNode(point);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameCopies(source, soup));
    }
}

// The outer two heights lie 1.5 tolerances apart, and the middle one is near both: it takes the one that came
// first, whose vertex is the root.
TEST(NearHeightCopier, HeightBetweenTwoTakesThatOfTheUppermostVertex) {
    CVertexTree source;
    source.m_dTolerance = 0.0;
    for (double const z : {0.0, 0.00008, 0.00015}) {
        CPoint3D point(0, 0, z);
        source.AddNode(point);
    }
    VertexCopier const ranked(source, kLargest);
    NearHeightCopier copier(ranked.Sources());
    for (std::uint32_t const nFirst : {0u, 2u}) {
        CVertexTree tree;
        NearHeightCopier::Target target(copier, tree);
        tagVertexNode* const pFirst = target.AddNode(nFirst);
        tagVertexNode* const pSecond = target.AddNode(2 - nFirst);
        EXPECT_NE(pFirst, pSecond);
        EXPECT_EQ(pFirst, target.AddNode(1));
        EXPECT_EQ(2u, tree.m_nCount);
    }
}

// A vertex that comes as two nodes has a second record, which goes with the target: memory would grow from
// one to the next. The third vertex is near the heights of its neighbours, and comes once while the lower one
// is uppermost, and again when the tree has turned and the upper one is.
TEST(NearHeightCopier, RecordsOfATargetGoWithIt) {
    CVertexTree source;
    source.m_dTolerance = 0.0;
    double const heights[] = {-1.0, 0.0, 0.00008, 0.00015, 1.0, 2.0};
    for (int n = 0; n < 6; ++n) {
        CPoint3D point(n, 0, heights[n]);
        source.AddNode(point);
    }
    VertexCopier const ranked(source, kLargest);
    NearHeightCopier copier(ranked.Sources());
    std::size_t const nAtFirst = copier.m_nRecords;
    for (int n = 0; n < 100; ++n) {
        {
            CVertexTree tree;
            NearHeightCopier::Target target(copier, tree);
            for (std::uint32_t const nRank : {1u, 3u, 0u}) target.AddNode(nRank);
            EXPECT_EQ(0.0, target.AddNode(2)->z);
            for (std::uint32_t const nRank : {4u, 5u}) target.AddNode(nRank);
            EXPECT_EQ(0.00015, target.AddNode(2)->z);
            EXPECT_EQ(nAtFirst + 1, copier.m_nRecords);
        }
        ASSERT_EQ(nAtFirst, copier.m_nRecords) << n;
        ASSERT_TRUE(copier.m_Touched.empty()) << n;
    }
}

TEST(NearHeightCopier, TargetIsEmptyWhereNothingComes) {
    CVertexTree source, tree;
    NearHeightCopier copier(VertexCopier(source, kLargest).Sources());
    { NearHeightCopier::Target const target(copier, tree); }
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(0u, tree.m_nCount);
}
