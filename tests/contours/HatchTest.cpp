#include "contours/Hatch.h"

#include <cmath>

#include "FieldWalk.h"
#include "contours/Paths.h"
#include "foundation/Geometry.h"

TEST(Hatch, FieldsStandInOrder) {
    CHatch const hatch;
    FieldWalk(hatch, FieldWalk::kVirtual)
        .Then("m_EdgeList", hatch.m_EdgeList)
        .Then("m_nID", hatch.m_nID)
        .Then("m_nFlag", hatch.m_nFlag)
        .End();
}

TEST(Hatch, ANewHatchHasItsDefaults) {
    CHatch const hatch;
    EXPECT_EQ(hatch.m_EdgeList.GetCount(), 0);
    EXPECT_EQ(hatch.m_EdgeList.m_nBlockSize, 10);
    EXPECT_EQ(hatch.m_nID, 1);
    EXPECT_EQ(hatch.m_nFlag, 0);
}

TEST(Hatch, CopiesOfTheRecordShareTheirEdges) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {1, 0}}});
    CHatch copy(*pHatch);
    EXPECT_EQ(copy.m_EdgeList.m_pNodeHead, pHatch->m_EdgeList.m_pNodeHead);
    copy.m_EdgeList = XR_CList<CEdge2D, CEdge2D&>();
}

TEST(Hatch, CopyKeepsTheEdgesInFront) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {1, 0}}}, 3);
    HatchPtr const pOther = Hatch({{{5, 0}, {6, 0}}, {{6, 0}, {7, 0}}}, 1002);
    pOther->m_nFlag = HATCH_USED_FLAG;
    pHatch->Copy(pOther.get());
    EXPECT_EQ(SegmentsOf(*pHatch), (Segments{{{0, 0}, {1, 0}}, {{5, 0}, {6, 0}}, {{6, 0}, {7, 0}}}));
    EXPECT_EQ(pHatch->m_nID, 1002);
    EXPECT_EQ(pHatch->m_nFlag, HATCH_USED_FLAG);
    EXPECT_EQ(Bits(pHatch->m_EdgeList.GetTail().m_ptEnd), 101u);
    EXPECT_EQ(pOther->m_EdgeList.GetCount(), 2);
}

TEST(Hatch, ReverseTurnsTheOrderAndEachEdge) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {1, 0}}, {{1, 0}, {2, 0}}, {{5, 0}, {6, 0}}});
    pHatch->Reverse();
    EXPECT_EQ(SegmentsOf(*pHatch), (Segments{{{6, 0}, {5, 0}}, {{2, 0}, {1, 0}}, {{1, 0}, {0, 0}}}));
    EXPECT_EQ(Bits(pHatch->m_EdgeList.GetHead().m_ptStart), 102u) << "attributes go along";
    EXPECT_EQ(Bits(pHatch->m_EdgeList.GetTail().m_ptEnd), 0u);
    HatchPtr const pOne = Hatch({{{0, 0}, {1, 0}}});
    pOne->Reverse();
    EXPECT_EQ(SegmentsOf(*pOne), (Segments{{{1, 0}, {0, 0}}}));
    CHatch none;
    none.Reverse();
}

TEST(AddPointsOnLongEdge, DividesIntoEqualPartsNoneLongerThanAsked) {
    HatchPtr const pHatch = Hatch({{{0, 0}, {10, 0}}, {{10, 0}, {10, 1}}});
    pHatch->AddPointsOnLongEdge(4.0);
    double const dStep = 10.0 / 3.0;
    EXPECT_EQ(SegmentsOf(*pHatch), (Segments{{{0, 0}, {dStep, 0}},
                                             {{dStep, 0}, {2 * dStep, 0}},
                                             {{2 * dStep, 0}, {10, 0}},
                                             {{10, 0}, {10, 1}}}));
    auto const& edges = pHatch->m_EdgeList;
    EXPECT_EQ(Bits(edges.GetAt(edges.FindIndex(1)).m_ptStart), 0u) << "attributes of the start";
    EXPECT_EQ(Bits(edges.GetAt(edges.FindIndex(2)).m_ptEnd), 100u) << "the end keeps its own";
}

TEST(AddPointsOnLongEdge, ALengthThatFitsExactlyMakesOnePartMore) {
    HatchPtr const pEight = Hatch({{{0, 0}, {8, 0}}});
    pEight->AddPointsOnLongEdge(4.0);
    EXPECT_EQ(SegmentsOf(*pEight), (Segments{{{0, 0}, {8.0 / 3.0, 0}},
                                             {{8.0 / 3.0, 0}, {2 * (8.0 / 3.0), 0}},
                                             {{2 * (8.0 / 3.0), 0}, {8, 0}}}));
    HatchPtr const pFour = Hatch({{{0, 0}, {4, 0}}});
    pFour->AddPointsOnLongEdge(4.0);
    EXPECT_EQ(SegmentsOf(*pFour), (Segments{{{0, 0}, {4, 0}}}));
}

TEST(AddPointsOnLongEdge, LaysEveryPointOffFromTheStart) {
    HatchPtr const pHatch = Hatch({{{1, 2}, {7.3, -4.1}}});
    CPoint2D start(1, 2);
    CPoint2D end(7.3, -4.1);
    double const dLength = std::sqrt(D2ofPtoP(start, end));
    int const nPieces = static_cast<int>(dLength / 1.1 + 1.0);
    pHatch->AddPointsOnLongEdge(1.1);
    Segments const segments = SegmentsOf(*pHatch);
    ASSERT_EQ(segments.size(), static_cast<std::size_t>(nPieces));
    for (int i = 1; i < nPieces; ++i) {
        CPoint2D const p = ExtendLine(&start, &end, i * (dLength / nPieces), 1);
        EXPECT_EQ(segments[static_cast<std::size_t>(i)].first, (Place{p.x, p.y}));
        EXPECT_EQ(segments[static_cast<std::size_t>(i) - 1].second, (Place{p.x, p.y}));
    }
}

TEST(AddPointsOnLongEdge, MoreThanAnIntOfPartsLeavesTheEdgeWhole) {
    for (double const dLength : {0.0, 1e-300, -1e-300}) {
        HatchPtr const pHatch = Hatch({{{0, 0}, {10, 0}}});
        pHatch->AddPointsOnLongEdge(dLength);
        EXPECT_EQ(pHatch->m_EdgeList.GetCount(), 1);
    }
}
