#include <chrono>
#include <cmath>
#include <limits>
#include <set>

#include "contours/LoopWalk.h"
#include "contours/Paths.h"
#include "contours/nesting/LiteralNesting.h"

using namespace varnet;

namespace {

using Loops = std::vector<tagLoopTreeNode*>;

// Every loop of the tree in order: its number, level, direction, the numbers of its children, its points.
struct Line {
    int nNumber;
    int nLevel;
    int nDirection;
    std::vector<int> children;
    std::vector<ExactPoint> points;
    bool operator==(Line const&) const = default;
};

std::ostream& operator<<(std::ostream& out, Line const& line) {
    out << "loop " << line.nNumber << " level " << line.nLevel << " direction " << line.nDirection
        << " children";
    for (int n : line.children) out << " " << n;
    return out;
}

std::vector<Line> Describe(CLayer& layer) {
    std::vector<Line> lines;
    for (tagLoopTreeNode* const p : literal::AllLoops(layer)) {
        Line line{p->m_nUser1, p->m_nLevel, p->m_nDirection, {}, ExactPoints(*p)};
        for (tagLoopTreeNode* const c : LoopsOf(p->m_ChildList)) line.children.push_back(c->m_nUser1);
        lines.push_back(line);
    }
    return lines;
}

Places Ring(double x, double y, double dRadius, int nCorners, double dTurn = 0.0) {
    Places places;
    for (int i = 0; i < nCorners; ++i) {
        double const dAngle = dTurn + i * 6.283185307179586 / nCorners;
        places.emplace_back(x + dRadius * std::cos(dAngle), y + dRadius * std::sin(dAngle));
    }
    return places;
}

// Rectangles on a lattice that often touch, rings that cross, shapes whose boxes hold what they do not, open
// paths, loops that do not close, hardly any points, none at all.
LoopPtr RandomLoop(Lattice& random, std::uint32_t nExtent) {
    double const x = random.Step(nExtent);
    double const y = random.Step(nExtent);
    double const w = 0.5 + random.Step(nExtent / 2);
    double const h = 0.5 + random.Step(nExtent / 2);
    switch (random.Below(16)) {
        case 0:
            return ClosedLoop(Ring(x, y, w, 3 + static_cast<int>(random.Below(30)), random.Real(0, 6)));
        case 1:
            return ClosedLoop(Ring(x, y, w, 40));
        case 2:  // an L
            return ClosedLoop({{x, y},
                               {x + w, y},
                               {x + w, y + h * 0.2},
                               {x + w * 0.2, y + h * 0.2},
                               {x + w * 0.2, y + h},
                               {x, y + h}});
        case 3:  // a comb
            return ClosedLoop({{x, y},
                               {x + w, y},
                               {x + w, y + h},
                               {x + w * 0.8, y + h},
                               {x + w * 0.7, y + 0.1},
                               {x + w * 0.5, y + h},
                               {x + w * 0.3, y + 0.1},
                               {x, y + h}});
        case 4: {  // open
            LoopPtr pLoop = Square(x, y, w);
            pLoop->m_bClosed = 0;
            return pLoop;
        }
        case 5: {  // closed, but not by a copy
            LoopPtr pLoop = Square(x, y, w);
            pLoop->m_pPointList->RemoveTail();
            return pLoop;
        }
        case 6: {
            LoopPtr pLoop = ClosedLoop(random.Below(2) == 0 ? Places{{x, y}} : Places{});
            return pLoop;
        }
        case 7: {
            auto pLoop = std::make_unique<tagLoopTreeNode>(0);
            pLoop->m_bClosed = 1;
            pLoop->m_Box = CBoundBox2D(CPoint2D(x, y), CPoint2D(x + w, y + h));
            return pLoop;
        }
        case 8:  // a bow tie
            return ClosedLoop({{x, y}, {x + w, y + h}, {x + w, y}, {x, y + h}});
        case 9:
            return ClosedLoop({{x, y}, {x, y + h}, {x + w, y + h}, {x + w, y}});
        default:
            return ClosedLoop({{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}});
    }
}

void SpoilBox(Lattice& random, tagLoopTreeNode& loop) {
    switch (random.Below(5)) {
        case 0:
            loop.m_Box = CBoundBox2D();
            break;
        case 1:
            loop.m_Box.m_ptMax.x = std::numeric_limits<double>::quiet_NaN();
            break;
        case 2:
            std::swap(loop.m_Box.m_ptMin.x, loop.m_Box.m_ptMax.x);
            break;
        default: {
            CPoint2D const shift(random.Step(4) - 2.0, random.Step(4) - 2.0);
            loop.m_Box.m_ptMin += shift;
            loop.m_Box.m_ptMax += shift;
        }
    }
}

// The same layer for the same seed. Some loops bring children of their own, some boxes are stale.
void FillRandomly(CLayer& layer, std::uint32_t nSeed) {
    Lattice random(nSeed);
    std::uint32_t const nExtent = 4 + random.Below(30);
    bool const bSpoiled = random.Below(3) == 0;
    int nNumber = 0;
    Loops possibleParents;
    for (std::uint32_t n = random.Below(random.Below(4) == 0 ? 300 : 40); n > 0; --n) {
        LoopPtr pLoop = RandomLoop(random, nExtent);
        pLoop->m_nUser1 = nNumber++;
        if (bSpoiled && random.Below(4) == 0) SpoilBox(random, *pLoop);
        if (!possibleParents.empty() && random.Below(12) == 0) {
            tagLoopTreeNode* const pParent =
                possibleParents[random.Below(static_cast<std::uint32_t>(possibleParents.size()))];
            pLoop->m_nLevel = pParent->m_nLevel + 1;
            possibleParents.push_back(pLoop.get());
            pParent->m_ChildList.AddTail(pLoop.release());
        } else {
            possibleParents.push_back(Give(layer, std::move(pLoop)));
        }
    }
}

void ExpectSameAsLiteral(CLayer& fast, CLayer& slow, int bRefresh) {
    fast.MakeTopology(bRefresh);
    auto const listed = LoopsOf(fast.m_LoopList);
    literal::MakeTopology(slow, bRefresh);
    EXPECT_EQ(Describe(fast), Describe(slow));
    EXPECT_EQ(listed, LoopsOf(fast.m_LoopList)) << "the loop list was current";
}

// One list of loops in three orders.
template <class Make>
void ExpectSameAsLiteralInAnyOrder(int nLoops, Make make) {
    for (int nOrder = 0; nOrder < 3; ++nOrder) {
        CLayer fast;
        CLayer slow;
        for (CLayer* const pLayer : {&fast, &slow}) {
            std::vector<int> numbers;
            for (int i = 0; i < nLoops; ++i) numbers.push_back(nOrder == 1 ? nLoops - 1 - i : i);
            std::mt19937 engine(4);
            if (nOrder == 2) std::shuffle(numbers.begin(), numbers.end(), engine);
            for (int const i : numbers) {
                tagLoopTreeNode* const p = Give(*pLayer, make(i));
                p->m_nUser1 = i;
            }
        }
        ExpectSameAsLiteral(fast, slow, 1);
    }
}

}  // namespace

TEST(MakeTopology, ConcentricSquaresNestInEitherOrder) {
    for (bool const bOuterFirst : {true, false}) {
        CLayer layer;
        tagLoopTreeNode* outer = nullptr;
        if (bOuterFirst) outer = Give(layer, ClockwiseSquare(0, 0, 10));
        tagLoopTreeNode* const inner = Give(layer, Square(4, 4, 2));
        if (!bOuterFirst) outer = Give(layer, ClockwiseSquare(0, 0, 10));
        layer.MakeTopology(1);
        EXPECT_EQ(LoopsOf(layer.m_RawLoopList), Loops{outer});
        EXPECT_EQ(outer->m_nLevel, 0);
        EXPECT_EQ(outer->m_nDirection, LOOPDIRECT_CCW);
        EXPECT_EQ(outer->GetArea(), 200.0);
        EXPECT_EQ(LoopsOf(outer->m_ChildList), Loops{inner});
        EXPECT_EQ(inner->m_nLevel, 1);
        EXPECT_EQ(inner->m_nDirection, LOOPDIRECT_CW);
        EXPECT_EQ(inner->GetArea(), -8.0);
    }
}

TEST(MakeTopology, SquaresThatShareASideStayApart) {
    CLayer layer;
    tagLoopTreeNode* const outer = Give(layer, ClockwiseSquare(0, 0, 10));
    tagLoopTreeNode* const inner = Give(layer, ClockwiseSquare(0, 4, 2));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (Loops{outer, inner}));
    for (tagLoopTreeNode* const p : {outer, inner}) {
        EXPECT_EQ(p->m_nLevel, 0);
        EXPECT_EQ(p->m_nDirection, LOOPDIRECT_CCW);
        EXPECT_GT(p->GetArea(), 0.0);
    }
}

TEST(MakeTopology, ThreeNestedSquaresSmallestFirst) {
    CLayer layer;
    tagLoopTreeNode* const small = Give(layer, ClockwiseSquare(4, 4, 2));
    tagLoopTreeNode* const middle = Give(layer, Square(3, 3, 4));
    tagLoopTreeNode* const large = Give(layer, Square(0, 0, 10));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), Loops{large});
    EXPECT_EQ(middle->m_nLevel, 1);
    EXPECT_EQ(small->m_nLevel, 2);
    EXPECT_EQ(small->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_GT(small->GetArea(), 0.0);
    EXPECT_LT(middle->GetArea(), 0.0);
    EXPECT_EQ(LoopsOf(middle->m_ChildList), Loops{small});
}

TEST(MakeTopology, TwoLoopsInsideALaterThirdBecomeItsChildrenInOrder) {
    CLayer layer;
    tagLoopTreeNode* const first = Give(layer, Square(5, 5, 1));
    tagLoopTreeNode* const second = Give(layer, Square(1, 1, 1));
    tagLoopTreeNode* const third = Give(layer, Square(0, 0, 10));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), Loops{third});
    EXPECT_EQ(LoopsOf(third->m_ChildList), (Loops{first, second}));
}

TEST(MakeTopology, WithoutRefreshedBoxesNothingNests) {
    CLayer layer;
    for (double const dSide : {10.0, 2.0}) {
        LoopPtr pLoop = ClockwiseSquare(-dSide, -dSide, 2 * dSide);
        pLoop->m_Box = CBoundBox2D();
        Give(layer, std::move(pLoop));
    }
    layer.MakeTopology(0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 2);
    for (tagLoopTreeNode* const p : LoopsOf(layer.m_LoopList)) {
        EXPECT_EQ(p->m_nDirection, LOOPDIRECT_NONE) << "directions are left alone";
        EXPECT_LT(p->GetArea(), 0.0);
    }
    layer.MakeTopology(1);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
}

TEST(MakeTopology, OpenPathsStayRawAndAreTurnedByTheirArea) {
    CLayer layer;
    Give(layer, Square(0, 0, 10));
    tagLoopTreeNode* const open = Give(layer, OpenPath({{4, 4}, {4, 5}, {5, 5}}));
    layer.MakeTopology(1);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 2);
    EXPECT_EQ(open->m_nLevel, 0);
    EXPECT_EQ(open->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(PlacesOf(*open), (Places{{5, 5}, {4, 5}, {4, 4}}));
}

TEST(MakeTopology, EmptyClosedLoopsNestNowhereEvenWithAStaleBox) {
    CLayer layer;
    Give(layer, Square(0, 0, 10));
    LoopPtr pEmpty = Square(4, 4, 2);
    pEmpty->m_pPointList->RemoveAll();
    Give(layer, std::move(pEmpty));
    Give(layer, Square(4.5, 4.5, 1));
    auto pNone = std::make_unique<tagLoopTreeNode>(0);
    pNone->m_bClosed = 1;
    pNone->m_Box = CBoundBox2D(CPoint2D(4, 4), CPoint2D(6, 6));
    Give(layer, std::move(pNone));
    layer.MakeTopology(0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 3);
    layer.MakeTopology(1);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 3);
}

TEST(MakeTopology, OnlyTheHeadOfALoopThatCrossesDecides) {
    // The box of the small loop is inside that of the L, its head is in the notch or in the leg.
    Places const ell = {{0, 0}, {10, 0}, {10, 4}, {4, 4}, {4, 10}, {0, 10}};
    for (bool const bHeadInLeg : {true, false}) {
        CLayer layer;
        Give(layer, ClosedLoop(ell));
        Give(layer, bHeadInLeg ? ClosedLoop({{3, 3}, {6, 3}, {6, 6}, {3, 6}})
                               : ClosedLoop({{6, 6}, {3, 6}, {3, 3}, {6, 3}}));
        layer.MakeTopology(1);
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), bHeadInLeg ? 1 : 2);
    }
}

// The middle one begins in the leg of the L and reaches into its notch, where the small one is.
TEST(MakeTopology, ALoopThatLiesInAnotherTakesNoLaterOneIn) {
    for (bool const bFarOne : {false, true}) {
        CLayer layer;
        tagLoopTreeNode* const ell =
            Give(layer, ClosedLoop({{0, 0}, {10, 0}, {10, 4}, {4, 4}, {4, 10}, {0, 10}}));
        tagLoopTreeNode* const middle = Give(layer, ClosedLoop({{3, 3}, {9, 3}, {9, 9}, {3, 9}}));
        tagLoopTreeNode* const small = Give(layer, Square(6, 6, 1));
        Loops roots = {ell, small};
        if (bFarOne) roots.push_back(Give(layer, Square(6e5, 6e5, 1)));
        layer.MakeTopology(1);
        EXPECT_EQ(LoopsOf(layer.m_RawLoopList), roots);
        EXPECT_EQ(LoopsOf(ell->m_ChildList), Loops{middle});
        EXPECT_TRUE(LoopsOf(middle->m_ChildList).empty());
    }
}

TEST(MakeTopology, AgainAfterAdditionsKeepsTheTreeAndMovesRootsWithTheirSubtrees) {
    CLayer layer;
    tagLoopTreeNode* const outer = Give(layer, Square(10, 10, 10));
    tagLoopTreeNode* const inner = Give(layer, Square(14, 14, 2));
    layer.MakeTopology(1);
    tagLoopTreeNode* const around = Give(layer, Square(0, 0, 100));
    tagLoopTreeNode* const beside = Give(layer, Square(50, 50, 5));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), Loops{around});
    EXPECT_EQ(LoopsOf(around->m_ChildList), (Loops{outer, beside}));
    EXPECT_EQ(LoopsOf(outer->m_ChildList), Loops{inner});
    EXPECT_EQ(outer->m_nLevel, 1);
    EXPECT_EQ(inner->m_nLevel, 2);
    EXPECT_LT(outer->GetArea(), 0.0);
    EXPECT_GT(inner->GetArea(), 0.0);
}

TEST(MakeTopology, LevelsCountFromTheLevelALoopComesWith) {
    CLayer layer;
    Give(layer, Square(0, 0, 10));
    tagLoopTreeNode* const inner = Give(layer, Square(4, 4, 2));
    inner->m_nLevel = -4;
    layer.MakeTopology(1);
    EXPECT_EQ(inner->m_nLevel, -3);
    EXPECT_EQ(inner->m_nDirection, LOOPDIRECT_CW) << "the lowest bit of the complement";
    EXPECT_GT(inner->GetArea(), 0.0) << "the remainder is -1, which no direction equals";
}

TEST(MakeTopology, OfAnEmptyLayerAndOfOneLoop) {
    CLayer layer;
    layer.MakeTopology(1);
    Give(layer, ClockwiseSquare(0, 0, 1));
    layer.MakeTopology(1);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList)[0]->m_nDirection, LOOPDIRECT_CCW);
}

TEST(MakeTopology, AgreesWithThePairwiseWalkOnRandomLayers) {
    for (std::uint32_t nSeed = 0; nSeed < 3000; ++nSeed) {
        CLayer fast;
        CLayer slow;
        FillRandomly(fast, nSeed);
        FillRandomly(slow, nSeed);
        // A loop that is farther off than any machine reaches: boxes are searched for one by one then.
        for (CLayer* const pLayer : {&fast, &slow}) {
            if (nSeed % 3 == 0) Give(*pLayer, Square(6e5, 6e5, 1));
        }
        int const bRefresh = nSeed % 2 == 0 ? 1 : 0;
        ExpectSameAsLiteral(fast, slow, bRefresh);
        if (nSeed % 4 < 2) {
            FillRandomly(fast, nSeed + 100000);
            FillRandomly(slow, nSeed + 100000);
            ExpectSameAsLiteral(fast, slow, 1 - bRefresh);
            ExpectSameAsLiteral(fast, slow, 1);
        }
        if (HasFailure()) FAIL() << "seed " << nSeed;
    }
}

TEST(MakeTopology, AgreesOnConcentricRings) {
    ExpectSameAsLiteralInAnyOrder(300, [](int i) { return ClosedLoop(Ring(0, 0, 1.0 + i, 33)); });
}

TEST(MakeTopology, AgreesOnConcentricCrossingRings) {
    ExpectSameAsLiteralInAnyOrder(
        200, [](int i) { return ClosedLoop(Ring(i % 3 * 0.01, 0, 50.0 + i * 0.05, 5 + i % 7, i)); });
}

// Long walks down, past loops that speak for those around them, and loops that don't.
TEST(MakeTopology, AgreesOnDeepStacksWithIslandsAndCrossings) {
    for (unsigned nSeed = 0; nSeed < 12; ++nSeed) {
        double const dShift = nSeed % 4 * 0.4;
        ExpectSameAsLiteralInAnyOrder(260, [nSeed, dShift](int i) {
            std::mt19937 random(1000 * nSeed + static_cast<unsigned>(i));
            auto const below = [&random](unsigned n) { return static_cast<double>(random() % n); };
            double const d = 2.0 * i + 1.0;
            switch (random() % (nSeed % 3 == 0 ? 400 : 25)) {
                case 0:
                    return Square(below(400) - 200.0, below(400) - 200.0, 1 + below(40));
                case 1:  // closed, but not by a copy
                {
                    LoopPtr pLoop = Square(-d, -d, 2 * d);
                    pLoop->m_pPointList->RemoveTail();
                    return pLoop;
                }
                case 2:  // nearly on the one inside
                    return ClosedLoop(Ring(0, 0, d - 2.0 + 1e-7, 24));
                default:
                    return ClosedLoop(Ring(below(3) * dShift, 0, d, 24, nSeed % 2 * below(7)));
            }
        });
        if (HasFailure()) FAIL() << "seed " << nSeed;
    }
}

// Far down in a stack, a loop with a notch comes between two that were known to lie in each other: what lies
// in the notch is in the inner one of the two, and yet beside the new loop.
TEST(MakeTopology, WhatLiesInTheNotchOfALoopThatTookTheInnerOneOverIsBesideIt) {
    constexpr int kSquares = 40;
    CLayer layer;
    std::vector<tagLoopTreeNode*> squares;
    for (int i = 0; i < kSquares; ++i) {
        double const d = 2.0 * (kSquares - i);
        squares.push_back(Give(layer, Square(-d, -d, 2 * d)));
    }
    // Between the squares of 28 and of 26; the notch goes in from the right, nearly to the middle.
    tagLoopTreeNode* const notched = Give(
        layer, ClosedLoop({{-27, -27}, {27, -27}, {27, 1}, {1, 1}, {1, 3}, {27, 3}, {27, 27}, {-27, 27}}));
    tagLoopTreeNode* const speck = Give(layer, Square(24.5, 1.5, 1));
    layer.MakeTopology(1);
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), Loops{squares[0]});
    tagLoopTreeNode* const around = squares[kSquares - 14];
    EXPECT_EQ(LoopsOf(around->m_ChildList), (Loops{notched, speck}));
    EXPECT_EQ(LoopsOf(notched->m_ChildList), Loops{squares[kSquares - 13]});
}

TEST(MakeTopology, AgreesOnAPlateWithManyHolesAndIslands) {
    ExpectSameAsLiteralInAnyOrder(1200, [](int i) {
        if (i == 0) return Square(-100, -100, 1000);
        double const dSize = i % 3 == 0 ? 4.0 : i % 3 == 1 ? 3.0 : 2.0;
        int const nPlace = i / 3;
        return ClosedLoop(Ring(nPlace % 20 * 10.0, nPlace / 20 * 10.0, dSize, 12));
    });
}

TEST(MakeTopology, AgreesOnManySiblingsThatAreTakenOver) {
    // Specks, then strips around rows of them, then sheets around strips.
    ExpectSameAsLiteralInAnyOrder(1000, [](int i) {
        if (i < 900) return Square(i % 30 * 10.0, i / 30 * 10.0, 3);
        if (i < 930) {
            double const y = (i - 900) * 10.0 - 1.0;
            return ClosedLoop({{-5, y}, {400, y}, {400, y + 6}, {-5, y + 6}});
        }
        double const d = i - 930 + 10.0;
        return Square(-d, -d, 500 + 2 * d);
    });
}

TEST(MakeTopology, AgreesOnShapesWhoseBoxesHoldEachOtherButTheyDoNot) {
    ExpectSameAsLiteralInAnyOrder(200, [](int i) {
        double const d = i;
        double const e = 300.0 - i;
        return ClosedLoop({{d, d}, {e, d}, {e, d + 0.5}, {d + 0.5, d + 0.5}, {d + 0.5, e}, {d, e}});
    });
}

TEST(MakeTopology, TensOfThousandsOfLoopsTakeNoTime) {
    auto const start = std::chrono::steady_clock::now();
    CLayer plate;
    Give(plate, Square(-10, -10, 1e5));
    for (int i = 0; i < 30000; ++i) Give(plate, Square(i % 200 * 10.0, i / 200 * 10.0, 5));
    plate.MakeTopology(1);
    EXPECT_EQ(LoopsOf(plate.m_RawLoopList)[0]->m_ChildList.GetCount(), 30000);
    CLayer nested;
    for (int i = 1; i <= 20000; ++i) Give(nested, Square(-i, -i, 2 * i));
    nested.MakeTopology(1);
    EXPECT_EQ(nested.m_RawLoopList.GetCount(), 1);
    EXPECT_EQ(LoopsOf(nested.m_LoopList).back()->m_nLevel, 19999);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(AddInTree, GoesAsDeepAsItCanAndTakesSiblingsOver) {
    CLayer layer;
    LoopPtr const pRoot = Square(0, 0, 100);
    tagLoopTreeNode* const speck = Square(10, 10, 1).release();
    tagLoopTreeNode* const apart = Square(50, 50, 10).release();
    tagLoopTreeNode* const around = Square(5, 5, 10).release();
    tagLoopTreeNode* const deep = Square(52, 52, 1).release();
    layer.AddInTree(pRoot.get(), speck);
    layer.AddInTree(pRoot.get(), apart);
    EXPECT_EQ(speck->m_nLevel, 1);
    layer.AddInTree(pRoot.get(), around);
    EXPECT_EQ(LoopsOf(pRoot->m_ChildList), (Loops{apart, around}));
    EXPECT_EQ(LoopsOf(around->m_ChildList), Loops{speck});
    EXPECT_EQ(speck->m_nLevel, 2);
    layer.AddInTree(pRoot.get(), deep);
    EXPECT_EQ(LoopsOf(apart->m_ChildList), Loops{deep});
    EXPECT_EQ(deep->m_nLevel, 2);
}

TEST(AddInTree, ALoopThatBeginsInAnotherAndLeavesItStandsBesideIt) {
    CLayer layer;
    LoopPtr const pRoot = Square(0, 0, 100);
    tagLoopTreeNode* const first = Square(10, 10, 10).release();
    tagLoopTreeNode* const crossing = Square(15, 15, 10).release();
    tagLoopTreeNode* const touching = Square(15, 15, 5).release();
    layer.AddInTree(pRoot.get(), first);
    layer.AddInTree(pRoot.get(), crossing);
    EXPECT_EQ(LoopsOf(pRoot->m_ChildList), (Loops{first, crossing}));
    layer.AddInTree(pRoot.get(), touching);
    EXPECT_EQ(LoopsOf(pRoot->m_ChildList), (Loops{first, crossing, touching})) << "boxes that touch";
}

TEST(AddInTree, AgreesWithItsStepsOnRandomTrees) {
    for (std::uint32_t nSeed = 0; nSeed < 500; ++nSeed) {
        std::vector<std::vector<Line>> results;
        for (bool const bLiteral : {false, true}) {
            Lattice random(nSeed);
            CLayer layer;
            tagLoopTreeNode* const root = Give(layer, Square(-100, -100, 300));
            for (int i = 0; i < 60; ++i) {
                LoopPtr pLoop = RandomLoop(random, 20);
                pLoop->m_nUser1 = i;
                if (bLiteral) {
                    literal::AddInTree(root, pLoop.release());
                } else {
                    layer.AddInTree(root, pLoop.release());
                }
            }
            results.push_back(Describe(layer));
        }
        ASSERT_EQ(results[0], results[1]) << nSeed;
    }
}

TEST(AddInTree, TreesThatInterlaceAThousandTimesDoNotDeepenTheStack) {
    // Two chains of squares; the squares of one lie between those of the other.
    auto const chain = [](int nFirst, int nCount) {
        LoopPtr pRoot = Square(-nFirst, -nFirst, 2 * nFirst);
        tagLoopTreeNode* pLast = pRoot.get();
        for (int i = 1; i < nCount; ++i) {
            int const n = nFirst - 2 * i;
            tagLoopTreeNode* const pNext = Square(-n, -n, 2 * n).release();
            pNext->m_nLevel = i;
            pLast->m_ChildList.AddTail(pNext);
            pLast = pNext;
        }
        return pRoot;
    };
    int const nCount = 20000;
    CLayer layer;
    tagLoopTreeNode* const root = Give(layer, chain(2 * nCount + 2, nCount));
    Give(layer, chain(2 * nCount + 1, nCount));
    layer.MakeTopology(0);
    ASSERT_EQ(LoopsOf(layer.m_RawLoopList), Loops{root});
    tagLoopTreeNode* p = root;
    int nLevel = 0;
    for (; p->m_ChildList.GetCount() == 1; ++nLevel) {
        ASSERT_EQ(p->m_nLevel, nLevel);
        p = LoopAt(p->m_ChildList.m_pNodeHead);
    }
    EXPECT_EQ(nLevel, 2 * nCount - 1);
}
