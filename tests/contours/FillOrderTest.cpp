// One outer loop with its children and hatches, against the exhaustive searches that it is worded as.

#include <limits>

#include "contours/LiteralOrder.h"
#include "contours/OrderFacts.h"
#include "contours/Paths.h"

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
