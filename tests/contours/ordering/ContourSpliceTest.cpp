// Contours spliced with hatches, worked out on paper. The contour is the square from (0,0) to (10,10),
// counter- clockwise from (0,0), unless the test says otherwise; the opening is 1 millimetre.

#include "contours/ordering/OrderedPaths.h"

using namespace varnet;

namespace {

struct Splice {
    LoopPtr pContour = Plain(Square(0, 0, 10));
    CLayer fill;  // holds the hatches
    CLayer out;
    CPoint2D pos;

    void Link(double dWidth = 1.0, double dCut = 1.0) {
        LinkLoopWithHatchs(pContour.get(), &fill.m_HatchList, pos, &out, dWidth, dCut);
    }
    tagLoopTreeNode const& Path(std::size_t n = 0) const { return *LoopsOf(out.m_RawLoopList)[n]; }
    int Paths() const { return out.m_RawLoopList.GetCount(); }
};

// The ring from (2,2) to (8,8), counter-clockwise or the other way.
Segments const kRing = {{{2, 2}, {8, 2}}, {{8, 2}, {8, 8}}, {{8, 8}, {2, 8}}, {{2, 8}, {2, 2}}};
Segments const kClockwiseRing = {{{2, 2}, {2, 8}}, {{2, 8}, {8, 8}}, {{8, 8}, {8, 2}}, {{8, 2}, {2, 2}}};

}  // namespace

TEST(ContourSplice, AChainFromItsHeadThatGoesOnAlongTheContour) {
    Splice s;
    CHatch const* const pHatch =
        Give(s.fill, PlainHatch({{{5, 5}, {5, 3}}, {{5, 1}, {7, 1}}, {{7, 1}, {7, 3}}, {{7, 3}, {6, 3}}}, 3));
    s.pos = CPoint2D(5, 6);
    s.Link();
    // Entry (5,5), link (5,1) behind the gap, 4 along the chain; foot (5,0). The front neighbour (7,1) comes
    // first from the foot: side 1. It runs along the contour's head: all of the opening is there, (5,0) to
    // (6,0). Up to the link: (5,5) (5,3) (5,1); from it: (5,1) (7,1) and one edge more, (7,1) (7,3). Turned
    // and swapped, the latter comes in front, a millimetre shorter: (7,3) (7,1) (7,1) (6,1).
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(
        s.Path(),
        {{7, 3}, {7, 1}, {6, 1}, {6, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}, {5, 0}, {5, 1}, {5, 3}, {5, 5}});
    EXPECT_EQ(BitsAlong(s.Path()), "222100000322");
    EXPECT_EQ(s.Path().m_nFlag, LOOP_KIND_OUTER);
    EXPECT_EQ(s.Path().m_bClosed, 0);
    EXPECT_EQ(PlaceOf(s.pos), (Place{5, 5}));
    EXPECT_EQ(SegmentsOf(*pHatch), (Segments{{{7, 3}, {6, 3}}})) << "what is left stays a hatch";
    EXPECT_EQ(pHatch->m_nFlag, 0);
    ExpectPlaces(*s.pContour, PlacesOf(s.Path()));
}

TEST(ContourSplice, AChainFromItsHeadThatGoesBackAlongTheContour) {
    Splice s;
    Give(s.fill, PlainHatch({{{5, 5}, {5, 3}}, {{5, 1}, {3, 1}}}, 3));
    s.pos = CPoint2D(5, 6);
    s.Link();
    // The front neighbour (3,1) comes last from the foot: side 0. It runs along the contour's tail: the
    // opening is (4,0) to (5,0), and the stretch from the link is a millimetre shorter.
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(
        s.Path(),
        {{5, 5}, {5, 3}, {5, 1}, {5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}, {4, 0}, {4, 1}, {3, 1}});
    EXPECT_EQ(BitsAlong(s.Path()), "22210000032");
    EXPECT_EQ(s.fill.m_HatchList.GetCount(), 1);
    EXPECT_EQ(HatchesOf(s.fill)[0]->m_EdgeList.GetCount(), 0);
}

TEST(ContourSplice, AChainFromItsTail) {
    Splice s;
    Give(s.fill, PlainHatch({{{3, 1}, {5, 1}}, {{5, 4}, {5, 7}}}, 3));
    s.pos = CPoint2D(5, 8);
    s.Link();
    // From the head, the chain is 2 long at (5,1), not more than needed. From the tail: entry (5,7), link
    // (5,1) behind the gap; edges are taken from the tail, turned. As above otherwise.
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(
        s.Path(),
        {{5, 7}, {5, 4}, {5, 1}, {5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}, {4, 0}, {4, 1}, {3, 1}});
    EXPECT_EQ(BitsAlong(s.Path()), "22210000032");
}

TEST(ContourSplice, AChainFromItsTailOnTheOtherSide) {
    Splice s;
    CHatch const* const pHatch =
        Give(s.fill, PlainHatch({{{9, 5}, {8, 5}}, {{7, 1}, {5, 1}}, {{5, 4}, {5, 7}}}, 3));
    s.pos = CPoint2D(5, 8);
    s.Link();
    // Side 1, the opening at the head; one edge more than needed is taken, (8,5) (9,5) turned.
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(s.Path(), {{9, 5},
                            {8, 5},
                            {7, 1},
                            {6, 1},
                            {6, 0},
                            {10, 0},
                            {10, 10},
                            {0, 10},
                            {0, 0},
                            {5, 0},
                            {5, 1},
                            {5, 4},
                            {5, 7}});
    EXPECT_EQ(BitsAlong(s.Path()), "2222100000322");
    EXPECT_EQ(pHatch->m_EdgeList.GetCount(), 0);
}

TEST(ContourSplice, AFootOnAVertexAddsNoPoint) {
    Splice s;
    Give(s.fill, PlainHatch({{{-1, -5}, {-1, -1}}, {{-1, -1}, {-1, 3}}}, 3));
    s.pos = CPoint2D(-1, -6);
    s.Link();
    // The link point (-1,-1) is 1.41 from (0,0), the end of the last segment. The front neighbour is the link
    // point itself, whose direction counts as 0. Neither end runs along the contour: half of the opening on
    // each side.
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(s.Path(),
                 {{-1, -5}, {-1, -1.5}, {0.5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0.5}, {-1, -0.5}, {-1, 3}});
    EXPECT_EQ(BitsAlong(s.Path()), "221000032");
}

TEST(ContourSplice, ARingGivesTwoStretchesAndItsRest) {
    for (Segments const& segments : {kRing, kClockwiseRing}) {
        Splice s;
        CHatch const* const pRing = Give(s.fill, PlainHatch(segments, 101));
        s.pos = CPoint2D(8, 3);
        s.out.m_dZ = 2.5;
        s.Link(2.0);
        // Link (8,2), equally near to two sides: the later one counts, foot (10,2). Both ends run along: half
        // of the opening on each side, (10,1.5) to (10,2.5). The ring, turned where it runs
        // counter-clockwise, goes from (8,2) to (2,2), (2,8), (8,8) and back. Stretches of 5 are cut off at
        // both ends, to (8,7) and to (3,2), and shortened by half a millimetre at the link.
        ASSERT_EQ(s.Paths(), 2);
        ExpectPlaces(
            s.Path(0),
            {{8, 7}, {8, 2.5}, {10, 2.5}, {10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 1.5}, {7.5, 2}, {3, 2}});
        EXPECT_EQ(BitsAlong(s.Path(0)), "2210000032");
        EXPECT_EQ(s.Path(0).m_nFlag, LOOP_KIND_OUTER);
        // The rest, a millimetre shorter at its tail, which falls on (8,8).
        ExpectPlaces(s.Path(1), {{3, 2}, {2, 2}, {2, 8}, {8, 8}});
        EXPECT_EQ(s.Path(1).m_nFlag, LOOP_KIND_HATCH);
        EXPECT_EQ(s.Path(1).m_bClosed, 0);
        EXPECT_EQ(s.Path(1).m_nID, 101);
        EXPECT_EQ(s.Path(1).m_dZ, 2.5);
        EXPECT_EQ(PlaceOf(s.pos), (Place{8, 8}));
        EXPECT_EQ(pRing->m_nFlag, HATCH_USED_FLAG);
        EXPECT_EQ(pRing->m_EdgeList.GetCount(), 4);
    }
}

TEST(ContourSplice, AHoleIsInnerUnlessItIsReversed) {
    Splice s;
    s.pContour = Plain(ClockwiseSquare(0, 0, 10), LOOPDIRECT_CW);
    Give(s.fill, PlainHatch({{{5, -5}, {5, -3}}, {{5, -1}, {7, -1}}}, 3));
    s.pos = CPoint2D(5, -6);
    s.Link();
    ASSERT_EQ(s.Paths(), 1);
    EXPECT_EQ(s.Path().m_nFlag, LOOP_KIND_INNER);
    EXPECT_EQ(s.pContour->m_nDirection, LOOPDIRECT_CW);
    Splice alone;
    alone.pContour = Plain(ClockwiseSquare(0, 0, 10), LOOPDIRECT_CW);
    alone.Link();
    EXPECT_EQ(alone.Path().m_nFlag, LOOP_KIND_OUTER);
    EXPECT_EQ(alone.pContour->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_GT(alone.pContour->GetArea(), 0.0);
}

TEST(ContourSplice, AVertexTooNearTheEndOfItsChainOffersNoLink) {
    for (double const dLength : {2.0, 2.001}) {
        Splice s;
        Give(s.fill, PlainHatch({{{5, 1 + dLength}, {5, 1}}, {{5, 1}, {5.5, 1}}}, 3));
        s.Link();
        EXPECT_EQ(s.pContour->m_bClosed, dLength > 2.0 ? 0 : 1) << dLength;
    }
}

TEST(ContourSplice, LinksAreSoughtWithinThreeEdgesOfAnEnd) {
    // The dip to (x,1) is between edges; the chain is at a height of 5 else.
    for (int nDip = 1; nDip <= 8; ++nDip) {
        Splice s;
        s.pContour = Plain(Square(-20, 0, 60));
        Segments segments;
        for (int i = 0; i < 9; ++i) {
            segments.push_back(
                {{i * 3.0, i == nDip ? 1.0 : 5.0}, {i * 3.0 + 3.0, i + 1 == nDip ? 1.0 : 5.0}});
        }
        Give(s.fill, PlainHatch(segments, 0));
        s.Link();
        EXPECT_EQ(s.pContour->m_bClosed, nDip <= 3 || nDip >= 6 ? 0 : 1) << nDip;
    }
}

TEST(ContourSplice, UsedHatchsAndThoseOfClassTwoAreNotLinked) {
    for (int const nID : {2, 102, 3}) {
        Splice s;
        HatchPtr pHatch = PlainHatch({{{5, 5}, {5, 1}}, {{5, 1}, {7, 1}}}, nID);
        if (nID == 3) pHatch->m_nFlag = HATCH_USED_FLAG;
        Give(s.fill, std::move(pHatch));
        Give(s.fill, std::make_unique<CHatch>());
        s.Link();
        EXPECT_EQ(s.pContour->m_bClosed, 1);
        EXPECT_EQ(s.Paths(), 1);
    }
}

TEST(ContourSplice, ALinkPointThatItsRingHasNotFallsBackToTheContour) {
    Splice s;
    CHatch const* const pRing = Give(s.fill, PlainHatch(kRing, 1));
    Give(s.fill, PlainHatch({{{5, 1}, {6, 1}}, {{6, 1}, {6, 1.5}}, {{6, 1.5}, {5, 1}}}, 1));
    s.pos = CPoint2D(6, 1);
    s.Link(2.0);
    // The second ring costs nothing: its link is stored, its hatch is not. The contour has been opened at the
    // foot (6,0), with all of the opening at its tail, and is closed anew at its head.
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(s.Path(), {{6, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}, {5, 0}});
    EXPECT_EQ(BitsAlong(s.Path()), "000000");
    EXPECT_EQ(s.Path().m_bClosed, 1);
    EXPECT_EQ(pRing->m_nFlag, 0) << "the ring is free for others";
    EXPECT_EQ(pRing->m_EdgeList.GetCount(), 4);
}

TEST(ContourSplice, AChainThatRunsOutOfEdgesFallsBackToTheContour) {
    Splice s;
    CHatch const* const pChain = Give(s.fill, PlainHatch({{{3, 5}, {3, 1}}, {{3, 1}, {4, 1}}}, 3));
    Give(s.fill, PlainHatch({{{5, 1}, {6, 1}}, {{6, 1}, {6, 1.5}}, {{6, 1.5}, {5, 1}}}, 1));
    s.pos = CPoint2D(6, 1);
    s.Link();
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(s.Path(), {{6, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}, {5, 0}});
    EXPECT_EQ(pChain->m_EdgeList.GetCount(), 0) << "its edges are gone";
}

TEST(ContourSplice, AnOpenContourKeepsTheFootAndIsEmitted) {
    Splice s;
    s.pContour->m_bClosed = 0;
    CHatch const* const pChain = Give(s.fill, PlainHatch({{{5, 5}, {5, 1}}, {{5, 1}, {7, 1}}}, 3));
    s.Link();
    ASSERT_EQ(s.Paths(), 1);
    ExpectPlaces(s.Path(), {{0, 0}, {5, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 1}});
    EXPECT_EQ(pChain->m_EdgeList.GetCount(), 2);
}
