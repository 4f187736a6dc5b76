#include <cmath>

#include "contours/LoopTreeNode.h"
#include "contours/Paths.h"
#include "foundation/Geometry.h"

namespace {

LoopPtr Cut(tagLoopTreeNode& loop, double dLength, double dKeep, OPERATEDIRECT end, int bPieces = 1) {
    return LoopPtr(loop.CutLoop(dLength, dKeep, end, bPieces));
}

// Step by step on plain arrays: the rest of the path, and what came off, in the path's order.
std::pair<std::vector<ExactPoint>, std::vector<ExactPoint>> LiteralCut(std::vector<CPoint2D> points,
                                                                       double dLength, double dKeep,
                                                                       bool bHead) {
    std::vector<CPoint2D> pieces;
    auto const result = [&] {
        std::pair<std::vector<ExactPoint>, std::vector<ExactPoint>> both;
        for (auto const& p : points) both.first.push_back(Exact(p));
        for (auto const& p : pieces) both.second.push_back(Exact(p));
        return both;
    };
    auto const addPiece = [&](CPoint2D const& p) { pieces.insert(bHead ? pieces.end() : pieces.begin(), p); };
    if (points.size() < 2) return result();
    double dSum = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        dSum += std::sqrt(D2ofPtoP(points[i - 1], points[i]));
        if (dSum >= dLength + dKeep) break;
    }
    if (dLength + dKeep > dSum) dLength = dSum - dKeep;
    if (0.01 > dLength) return result();
    CPoint2D p = bHead ? points.front() : points.back();
    while (!points.empty()) {
        CPoint2D q = bHead ? points.front() : points.back();
        double const d = std::sqrt(D2ofPtoP(p, q));
        if (std::fabs(d - dLength) < 0.01) {
            addPiece(q);
            return result();
        }
        if (!(dLength > d)) {
            CPoint2D const x = ExtendLine(&p, &q, dLength, 1);
            points.insert(bHead ? points.begin() : points.end(), x);
            addPiece(x);
            return result();
        }
        points.erase(bHead ? points.begin() : points.end() - 1);
        addPiece(q);
        dLength -= d;
        p = q;
    }
    return result();
}

}  // namespace

TEST(CutLoop, ShortensAStraightPathAtItsTail) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {10, 0}});
    EXPECT_EQ(pLoop->CutLoop(3.0, 1.0, OPERATE_AT_TAIL, 0), nullptr);
    ASSERT_EQ(pLoop->m_pPointList->GetCount(), 2);
    EXPECT_NEAR(pLoop->m_pPointList->GetTail().x, 7.0, 1e-12);
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetTail()), 1u) << "the cut point carries the attributes of the end";
}

TEST(CutLoop, KeepWinsOverLength) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {10, 0}});
    Cut(*pLoop, 9.5, 1.0, OPERATE_AT_TAIL, 0);
    EXPECT_NEAR(pLoop->GetLength(), 1.0, 1e-12);
    LoopPtr const pWhole = OpenPath({{0, 0}, {10, 0}});
    Cut(*pWhole, 9.5, 10.0, OPERATE_AT_TAIL, 0);
    EXPECT_EQ(PlacesOf(*pWhole), (Places{{0, 0}, {10, 0}}));
}

TEST(CutLoop, AVertexNearTheCutIsTheCutPoint) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {7.005, 0}, {10, 0}});
    LoopPtr const pPieces = Cut(*pLoop, 3.0, 1.0, OPERATE_AT_TAIL);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {7.005, 0}}));
    EXPECT_EQ(PlacesOf(*pPieces), (Places{{7.005, 0}, {10, 0}}));
}

TEST(CutLoop, LessThanAHundredthIsNotCut) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {10, 0}});
    LoopPtr const pPieces = Cut(*pLoop, 0.005, 1.0, OPERATE_AT_TAIL);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {10, 0}}));
    EXPECT_EQ(pPieces->m_pPointList->GetCount(), 0);
}

TEST(CutLoop, OfOnePointGivesAnEmptyNewPath) {
    LoopPtr const pLoop = OpenPath({{0, 0}});
    LoopPtr const pPieces = Cut(*pLoop, 1.0, 0.0, OPERATE_AT_HEAD);
    ASSERT_NE(pPieces, nullptr);
    ASSERT_NE(pPieces->m_pPointList, nullptr);
    EXPECT_EQ(pPieces->m_pPointList->GetCount(), 0);
    EXPECT_EQ(pPieces->m_pPointList->m_nBlockSize, 10);
}

TEST(CutLoop, WhatComesOffRunsThePathsWayAndSharesTheCutPoint) {
    LoopPtr const pTail = OpenPath({{0, 0}, {10, 0}});
    LoopPtr const pTailPieces = Cut(*pTail, 3.0, 1.0, OPERATE_AT_TAIL);
    ASSERT_EQ(pTailPieces->m_pPointList->GetCount(), 2);
    EXPECT_EQ(Exact(pTailPieces->m_pPointList->GetHead()), Exact(pTail->m_pPointList->GetTail()));
    EXPECT_EQ(pTailPieces->m_pPointList->GetTail().x, 10.0);
    LoopPtr const pHead = OpenPath({{0, 0}, {10, 0}});
    LoopPtr const pHeadPieces = Cut(*pHead, 3.0, 1.0, OPERATE_AT_HEAD);
    EXPECT_EQ(pHeadPieces->m_pPointList->GetHead().x, 0.0);
    EXPECT_EQ(pHeadPieces->m_pPointList->GetTail().x, 3.0);
    EXPECT_EQ(pHead->m_pPointList->GetHead().x, 3.0);
}

TEST(CutLoop, TheNewPathHasNothingButItsPoints) {
    LoopPtr const pLoop = Square(0, 0, 10);
    pLoop->m_nID = 5;
    pLoop->m_dZ = 2.0;
    LoopPtr const pPieces = Cut(*pLoop, 3.0, 1.0, OPERATE_AT_TAIL);
    EXPECT_EQ(pPieces->m_nID, 1);
    EXPECT_EQ(pPieces->m_dZ, 0.0);
    EXPECT_EQ(pPieces->m_bClosed, 0);
    EXPECT_TRUE(SameBox(pPieces->m_Box, CBoundBox2D()));
}

TEST(CutLoop, OpensAClosedLoopButLeavesItsFlagAndBox) {
    LoopPtr const pLoop = Square(0, 0, 10);
    Cut(*pLoop, 12.0, 1.0, OPERATE_AT_TAIL, 0);
    EXPECT_EQ(pLoop->m_bClosed, 1);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 4);
    EXPECT_EQ(pLoop->m_pPointList->GetTail().y, 10.0);
    EXPECT_NEAR(pLoop->m_pPointList->GetTail().x, 2.0, 1e-12);
    EXPECT_EQ(pLoop->m_Box.m_ptMax.x, 10.0);
}

// Two hundredths less one are one hundredth to the bit: as far from the end as a cut has to be.
TEST(CutLoop, AVertexJustAHundredthOnIsNotTheCut) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {0.02, 0}, {5, 0}});
    Cut(*pLoop, 0.01, 0.0, OPERATE_AT_HEAD, 0);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0.01, 0}, {0.02, 0}, {5, 0}}));
    LoopPtr const pNearer = OpenPath({{0, 0}, {std::nextafter(0.02, 0.0), 0}, {5, 0}});
    Cut(*pNearer, 0.01, 0.0, OPERATE_AT_HEAD, 0);
    EXPECT_EQ(PlacesOf(*pNearer).size(), 2u);
}

// A tenth and two tenths add up to 0.30000000000000004, and two tenths less than that are more than a tenth.
TEST(CutLoop, APathOfJustTheCutAndWhatIsKeptIsCutAtTheLengthAsItIsGiven) {
    auto const place = [](double dKeep) {
        LoopPtr const pLoop = OpenPath({{0, 0}, {0.1 + 0.2, 0}});
        Cut(*pLoop, 0.1, dKeep, OPERATE_AT_HEAD, 0);
        return PlacesOf(*pLoop).front();
    };
    EXPECT_EQ(place(0.2), place(0.0));
}

TEST(CutLoop, ANegativeKeepMayTakeTheWholePath) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {10, 0}});
    LoopPtr const pPieces = Cut(*pLoop, 20.0, -8.0, OPERATE_AT_HEAD);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 0);
    EXPECT_EQ(PlacesOf(*pPieces), (Places{{0, 0}, {10, 0}}));
}

TEST(CutLoop, WithoutAListCutsNothing) {
    tagLoopTreeNode none;
    LoopPtr const pPieces = Cut(none, 1.0, 0.0, OPERATE_AT_HEAD);
    EXPECT_EQ(pPieces->m_pPointList->GetCount(), 0);
}

TEST(CutLoop, AgreesWithItsStepsOnRandomPaths) {
    Lattice random(5);
    for (int i = 0; i < 3000; ++i) {
        Places places;
        for (std::uint32_t n = random.Below(12); n > 0; --n)
            places.emplace_back(random.Step(5), random.Step(5));
        LoopPtr const pLoop = OpenPath(places);
        std::vector<CPoint2D> points;
        for (auto const* p = pLoop->m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext)
            points.push_back(p->data);
        double const dLength = random.Below(2) == 0 ? random.Step(20) : random.Real(-1.0, 30.0);
        double const dKeep = random.Below(2) == 0 ? random.Step(5) : random.Real(-5.0, 10.0);
        bool const bHead = random.Below(2) == 0;
        auto const expected = LiteralCut(points, dLength, dKeep, bHead);
        LoopPtr const pPieces = Cut(*pLoop, dLength, dKeep, bHead ? OPERATE_AT_HEAD : OPERATE_AT_TAIL);
        EXPECT_EQ(ExactPoints(*pLoop), expected.first);
        EXPECT_EQ(ExactPoints(*pPieces), expected.second);
    }
}
