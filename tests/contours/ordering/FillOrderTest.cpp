// One outer loop with its children and hatches, against the exhaustive searches that it is worded as.

#include <limits>

#include "contours/Paths.h"
#include "contours/ordering/LiteralOrder.h"
#include "contours/ordering/OrderFacts.h"
#include "contours/ordering/OrderedPaths.h"

using namespace varnet;

namespace {

struct Case {
    CLayer layer;
    CLayer out;
    CPoint2D pos;
    double dWidth = 0.0;
    double dCut = 0.0;
};

// Steps of a quarter, mostly.
double Coordinate(Lattice& random, std::uint32_t nSteps) {
    double const d = random.Below(nSteps) * 0.25;
    return random.Below(12) == 0 ? d + random.Real(-0.01, 0.01) : d;
}

void AddContours(CLayer& layer, Lattice& random, std::uint32_t nSteps) {
    double const dSide = nSteps * 0.25;
    auto const add = [&](LoopPtr pLoop) {
        for (std::uint32_t n = random.Below(3); n > 0; --n) {
            XR__POSITION* const at = pLoop->m_pPointList->FindIndex(
                static_cast<int>(random.Below(static_cast<std::uint32_t>(pLoop->m_pPointList->GetCount()))));
            CPoint2D const from(pLoop->m_pPointList->GetAt(at));
            CPoint2D middle(from.x, from.y);
            if (random.Below(2) == 0) pLoop->m_pPointList->InsertBefore(at, middle);
        }
        pLoop->m_bClosed = random.Below(30) != 0 ? 1 : 0;
        Give(layer, std::move(pLoop));
    };
    add(Square(0, 0, dSide));
    std::uint32_t const nHoles = random.Below(3) == 0 ? random.Below(30) : random.Below(5);
    for (std::uint32_t n = nHoles; n > 0; --n) {
        double const x = Coordinate(random, nSteps);
        double const y = Coordinate(random, nSteps);
        double const d = 0.5 + random.Below(6) * 0.5;
        if (random.Below(3) == 0) {
            add(ClosedLoop({{x, y}, {x + d, y + d}, {x - d, y + d}}));
        } else {
            add(Square(x, y, d));
        }
    }
    layer.MakeTopology(1);
    if (random.Below(4) == 0) {
        for (tagLoopTreeNode* const p : LoopsOf(layer.m_LoopList)) {
            if (random.Below(6) == 0) p->m_nFlag |= LOOP_USED_FLAG;
        }
    }
}

// A chain that goes to and fro, strokes that lie apart, or a ring.
HatchPtr RandomFill(Lattice& random, std::uint32_t nSteps) {
    constexpr int kIDs[] = {0, 1, 2, 3, 100, 101, 102, 201, -99, 1001, 7};
    double const x = Coordinate(random, nSteps);
    double const y = Coordinate(random, nSteps);
    double const w = 0.5 + Coordinate(random, nSteps / 2);
    double const h = 0.25 + Coordinate(random, 8);
    Segments segments;
    std::uint32_t const nKind = random.Below(4);
    if (nKind == 0) {
        Places const corners = {{x, y}, {x + w, y}, {x + w, y + w}, {x, y + w}, {x, y}};
        for (std::size_t i = 0; i + 1 < corners.size(); ++i) segments.push_back({corners[i], corners[i + 1]});
    } else {
        for (std::uint32_t i = 0; i < 1 + random.Below(7); ++i) {
            Place const a{x, y + i * h};
            Place const b{x + w, y + i * h};
            segments.push_back(i % 2 == 0 ? Segment{a, b} : Segment{b, a});
            if (nKind == 1)
                segments.push_back({segments.back().second, {segments.back().second.first, y + (i + 1) * h}});
        }
    }
    HatchPtr pHatch = Hatch(segments, kIDs[random.Below(11)]);
    pHatch->m_nFlag = random.Below(10) == 0 ? HATCH_USED_FLAG : static_cast<int>(random.Below(2));
    return pHatch;
}

void Make(Case& c, std::uint32_t nSeed) {
    Lattice random(nSeed);
    std::uint32_t const nSteps = 16 + random.Below(60);
    AddContours(c.layer, random, nSteps);
    for (std::uint32_t n = random.Below(random.Below(5) == 0 ? 60 : 8); n > 0; --n) {
        Give(c.layer, RandomFill(random, nSteps));
    }
    if (random.Below(10) == 0) Give(c.layer, std::make_unique<CHatch>());
    c.layer.m_dZ = 1.25;
    c.pos = CPoint2D(Coordinate(random, nSteps), Coordinate(random, nSteps));
    // A hatch that begins where the head is costs nothing.
    if (random.Below(3) == 0 && c.layer.m_HatchList.GetCount() > 0) {
        std::vector<CHatch*> const hatchs = HatchesOf(c.layer);
        CHatch const& hatch = *hatchs[random.Below(static_cast<std::uint32_t>(hatchs.size()))];
        if (hatch.m_EdgeList.GetCount() > 0) c.pos = hatch.m_EdgeList.GetHead().m_ptStart;
    }
    c.dWidth = 0.25 * (1 + random.Below(8));
    c.dCut = random.Below(4) == 0 ? 0.0 : 0.125 * random.Below(16);
}

void ExpectSameOutcome(Case& a, Case& b) {
    ASSERT_EQ(FactsOf(LoopsOf(a.out.m_RawLoopList)), FactsOf(LoopsOf(b.out.m_RawLoopList)));
    ASSERT_EQ(FactsOf(LoopsOf(a.layer.m_LoopList)), FactsOf(LoopsOf(b.layer.m_LoopList)));
    ASSERT_EQ(FactsOf(HatchesOf(a.layer)), FactsOf(HatchesOf(b.layer)));
    ASSERT_EQ(Exact(a.pos), Exact(b.pos));
    ASSERT_EQ(a.out.m_dZ, b.out.m_dZ);
}

}  // namespace

TEST(FillOrder, EmitsThePathsOfTheExhaustiveSearch) {
    std::size_t nSpliced = 0;
    for (std::uint32_t nSeed = 0; nSeed < 3000; ++nSeed) {
        Case cases[2];
        for (Case& c : cases) Make(c, nSeed);
        for (int n = 0; n < 4; ++n) {
            tagLoopTreeNode* const pLoop = cases[0].layer.FindNearUnusedOutLoop(cases[0].pos);
            tagLoopTreeNode* const pTwin = cases[1].layer.FindNearUnusedOutLoop(cases[1].pos);
            ASSERT_EQ(pLoop == nullptr, pTwin == nullptr);
            if (pLoop == nullptr) break;
            cases[0].layer.OptimizeLoopAndChildLoopHatch(pLoop, &cases[0].pos, &cases[0].out, cases[0].dWidth,
                                                         cases[0].dCut);
            literal::OptimizeLoopAndChildLoopHatch(cases[1].layer, pTwin, &cases[1].pos, &cases[1].out,
                                                   cases[1].dWidth, cases[1].dCut);
            pLoop->m_nFlag |= LOOP_USED_FLAG;
            pTwin->m_nFlag |= LOOP_USED_FLAG;
            ExpectSameOutcome(cases[0], cases[1]);
            if (HasFatalFailure()) FAIL() << "seed " << nSeed;
        }
        for (tagLoopTreeNode const* const p : LoopsOf(cases[0].layer.m_LoopList)) {
            if (p->m_bClosed == 0 && p->m_nFlag != 0) ++nSpliced;
        }
    }
    EXPECT_GT(nSpliced, 1000u) << "the layers are such that contours are linked";
}

namespace {

// The plate from (0,0) to (20,20) with a hole from (8,8) to (12,12).
struct Plate {
    CLayer layer;
    CLayer out;
    CPoint2D pos;
    tagLoopTreeNode* pOuter = nullptr;
    tagLoopTreeNode* pHole = nullptr;

    Plate() {
        pOuter = Give(layer, Square(0, 0, 20));
        pHole = Give(layer, Square(8, 8, 4));
        layer.m_dZ = 1.5;
        layer.MakeTopology(1);
    }
    void Order() { layer.OptimizeLoopAndChildLoopHatch(pOuter, &pos, &out, 1.0, 1.0); }
    tagLoopTreeNode const& Path(std::size_t n) const { return *LoopsOf(out.m_RawLoopList)[n]; }
};

}  // namespace

TEST(FillOrder, WithoutHatchsEveryContourIsEmittedShortened) {
    Plate plate;
    plate.pos = CPoint2D(20, 0);
    plate.Order();
    ASSERT_EQ(plate.out.m_RawLoopList.GetCount(), 2);
    ExpectPlaces(plate.Path(0), {{20, 0}, {20, 20}, {0, 20}, {0, 0}, {19, 0}});
    // The hole has been turned counter-clockwise, and begins at its corner nearest to (19,0).
    EXPECT_EQ(PlacesOf(plate.Path(1)), (Places{{12, 8}, {12, 12}, {8, 12}, {8, 8}, {11, 8}}));
    for (std::size_t n : {0u, 1u}) {
        EXPECT_EQ(plate.Path(n).m_nFlag, LOOP_KIND_OUTER);
        EXPECT_EQ(plate.Path(n).m_bClosed, 1);
    }
    EXPECT_EQ(plate.pHole->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_GT(plate.pHole->GetArea(), 0.0);
    EXPECT_EQ(plate.pHole->m_nFlag & LOOP_USED_FLAG, LOOP_USED_FLAG);
    EXPECT_EQ(plate.pOuter->m_nFlag & LOOP_USED_FLAG, 0) << "the host flags it";
    EXPECT_EQ(plate.out.m_dZ, 1.5);
    EXPECT_EQ((Place{plate.pos.x, plate.pos.y}), (Place{11, 8}));
    EXPECT_EQ(plate.layer.m_RawLoopList.GetCount(), 1);
    EXPECT_EQ(plate.pOuter->m_ChildList.GetCount(), 1);
}

TEST(FillOrder, NullChildrenArePassedOver) {
    Plate plate;
    plate.pOuter->m_ChildList.AddHead(static_cast<void*>(nullptr));
    plate.Order();
    EXPECT_EQ(plate.out.m_RawLoopList.GetCount(), 2);
}

TEST(FillOrder, AHatchOutOfReachIsEmittedAlone) {
    Plate plate;
    CHatch const* const pHatch = Give(plate.layer, Hatch({{{5, 3}, {5, 6}}, {{5, 6}, {4, 6}}}, 3));
    plate.Order();
    ASSERT_EQ(plate.out.m_RawLoopList.GetCount(), 3);
    EXPECT_EQ(PlacesOf(plate.Path(2)), (Places{{4, 6}, {5, 6}, {5, 3}})) << "entered at its nearer end";
    EXPECT_EQ(plate.Path(2).m_nFlag, LOOP_KIND_HATCH);
    EXPECT_EQ(plate.Path(2).m_dZ, 1.5);
    EXPECT_EQ(pHatch->m_nFlag, HATCH_USED_FLAG);
    EXPECT_EQ(SegmentsOf(*pHatch), (Segments{{{5, 3}, {5, 6}}, {{5, 6}, {4, 6}}})) << "a copy was turned";
}

TEST(FillOrder, AHatchOfClassTwoIsEmittedButNotSpliced) {
    Plate plate;
    Give(plate.layer, Hatch({{{5, 5}, {5, 1}}, {{5, 1}, {7, 1}}}, 102));
    plate.Order();
    ASSERT_EQ(plate.out.m_RawLoopList.GetCount(), 3);
    EXPECT_EQ(plate.Path(2).m_nID, 102);
    EXPECT_EQ(plate.pOuter->m_bClosed, 1);
}

TEST(FillOrder, ARingThatIsLeftIsShortened) {
    Plate plate;
    Give(plate.layer, Hatch({{{4, 4}, {6, 4}}, {{6, 4}, {6, 6}}, {{6, 6}, {4, 6}}, {{4, 6}, {4, 4}}}, 1));
    plate.Order();
    ASSERT_EQ(plate.out.m_RawLoopList.GetCount(), 3);
    // From (8,9), the tail of the hole that begins at (8,8).
    EXPECT_EQ(PlacesOf(plate.Path(1)).front(), (Place{8, 8}));
    EXPECT_EQ(PlacesOf(plate.Path(2)), (Places{{6, 6}, {4, 6}, {4, 4}, {6, 4}, {6, 5}}));
}

TEST(FillOrder, OnlyHatchsOfItsOwnAreaAndGroupCount) {
    Plate plate;
    CHatch* const pInHole = Give(plate.layer, Hatch({{{9, 9}, {11, 11}}}, 3));
    CHatch* const pOutside = Give(plate.layer, Hatch({{{30, 9}, {31, 11}}}, 3));
    CHatch* const pSecondGroup = Give(plate.layer, Hatch({{{5, 3}, {5, 6}}}, 1000));
    CHatch* const pUsed = Give(plate.layer, Hatch({{{5, 3}, {5, 6}}}, 3));
    CHatch* const pEmpty = Give(plate.layer, std::make_unique<CHatch>());
    CHatch* const pOther = Give(plate.layer, Hatch({{{5, 3}, {5, 6}}}, 4));
    pUsed->m_nFlag = HATCH_USED_FLAG | 2;
    pOther->m_nFlag = 6;
    plate.Order();
    ASSERT_EQ(plate.out.m_RawLoopList.GetCount(), 3);
    EXPECT_EQ(plate.Path(2).m_nID, 4);
    EXPECT_EQ(pOther->m_nFlag, HATCH_USED_FLAG) << "and no other bit";
    EXPECT_EQ(pUsed->m_nFlag, HATCH_USED_FLAG | 2);
    for (CHatch const* const p : {pInHole, pOutside, pSecondGroup, pEmpty}) EXPECT_EQ(p->m_nFlag, 0);
}

TEST(FillOrder, AHatchWithoutLengthIsUsedAndGivesNoPath) {
    Plate plate;
    CHatch const* const pPoint = Give(plate.layer, Hatch({{{5, 3}, {5, 3}}}, 3));
    plate.Order();
    EXPECT_EQ(plate.out.m_RawLoopList.GetCount(), 2) << "the contours alone";
    EXPECT_EQ(pPoint->m_nFlag, HATCH_USED_FLAG);
}

TEST(FillOrder, NoPathWithAnEdgeIsLost) {
    Plate plate;
    for (int i = 0; i < 6; ++i) Give(plate.layer, Hatch({{{1.0 + i, 3}, {1.0 + i, 6}}}, 10 + i));
    plate.Order();
    EXPECT_EQ(plate.out.m_RawLoopList.GetCount(), 2 + 6);
}

// In so long a ring the millimetre that a cut leaves is lost to rounding: all but one point is cut off.
TEST(FillOrder, ARingThatIsCutAwayIsNoPath) {
    double const dSide = 9007199254740992.0;
    double const dFrom = 8589934592.0;
    double const dTo = dFrom + dSide;
    CLayer layer;
    Give(layer, Square(0, 0, 4 * dSide));
    layer.MakeTopology(1);
    Give(layer, Hatch({{{dFrom, dFrom}, {dTo, dFrom}},
                       {{dTo, dFrom}, {dTo, dTo}},
                       {{dTo, dTo}, {dFrom, dTo}},
                       {{dFrom, dTo}, {dFrom, dFrom}}},
                      1));
    CLayer out;
    CPoint2D pos(0, 0);
    layer.OptimizeLoopAndChildLoopHatch(LoopsOf(layer.m_LoopList)[0], &pos, &out, 1.0, 1e300);
    EXPECT_EQ(1, out.m_RawLoopList.GetCount());
    EXPECT_EQ(0.0, pos.x);
    EXPECT_EQ(0.0, pos.y);
    EXPECT_EQ(HATCH_USED_FLAG, HatchesOf(layer)[0]->m_nFlag);
}
