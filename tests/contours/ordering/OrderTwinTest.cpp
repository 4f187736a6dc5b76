// Ordering passes against the exhaustive scans that they are worded as, on small layers full of ties.

#include <limits>

#include "contours/LoopWalk.h"
#include "contours/Paths.h"
#include "contours/ordering/LiteralOrder.h"
#include "contours/ordering/OrderFacts.h"

using namespace varnet;

namespace {

using Coordinate = double (*)(Lattice&);

double OnLattice(Lattice& random) { return static_cast<double>(random.Below(6)); }
double NearLattice(Lattice& random) { return random.Step(8); }
double Anywhere(Lattice& random) { return random.Real(-50, 50); }
double Anything(Lattice& random) {
    double const values[] = {1e5,
                             -1e15,
                             1e20,
                             -1e200,
                             std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
    return random.Below(8) == 0 ? values[random.Below(6)] : OnLattice(random);
}

constexpr Coordinate kCoordinates[] = {OnLattice, NearLattice, Anywhere, Anything};

Place RandomPlace(Lattice& random, Coordinate coordinate) {
    double const x = coordinate(random);
    return {x, coordinate(random)};
}

HatchPtr RandomHatch(Lattice& random, Coordinate coordinate) {
    Segments segments;
    Place last = RandomPlace(random, coordinate);
    Place const first = last;
    for (std::uint32_t n = random.Below(5); n > 0; --n) {
        if (random.Below(3) == 0) last = RandomPlace(random, coordinate);
        Place next = RandomPlace(random, coordinate);
        if (n == 1 && random.Below(3) == 0) next = first;
        segments.push_back({last, next});
        last = next;
    }
    HatchPtr pHatch = Hatch(segments, static_cast<int>(random.Below(4)));
    pHatch->m_nFlag = random.Below(6) == 0 ? HATCH_USED_FLAG : static_cast<int>(random.Below(3));
    return pHatch;
}

LoopPtr RandomLoop(Lattice& random, Coordinate coordinate) {
    Places places;
    for (std::uint32_t n = random.Below(6); n > 0; --n) places.push_back(RandomPlace(random, coordinate));
    std::uint32_t const nKind = random.Below(8);
    LoopPtr pLoop = nKind < 3 ? OpenPath(places) : ClosedLoop(places);
    if (nKind == 7) pLoop->m_bClosed = 0;
    pLoop->m_nDirection = static_cast<LOOPDIRECT>(random.Below(3));
    pLoop->m_nFlag = random.Below(6) == 0 ? LOOP_USED_FLAG : 0;
    pLoop->GetBoundBox();
    if (nKind == 6 && places.empty()) {
        delete pLoop->m_pPointList;
        pLoop->m_pPointList = nullptr;
    }
    return pLoop;
}

// Loops that fell out of the layer belong to nobody.
void DeleteLeftOver(CLayer& layer, std::vector<tagLoopTreeNode*> const& all) {
    std::vector<tagLoopTreeNode*> const ordered = LoopsOf(layer.m_RawLoopList);
    for (tagLoopTreeNode* const pLoop : all) {
        if (std::find(ordered.begin(), ordered.end(), pLoop) != ordered.end()) continue;
        pLoop->m_ChildList.RemoveAll();
        delete pLoop;
    }
}

class OrderTwin : public testing::TestWithParam<int> {};

}  // namespace

TEST_P(OrderTwin, HatchsComeInTheOrderOfTheScan) {
    for (Coordinate const coordinate : kCoordinates) {
        for (std::uint32_t nSeed = 0; nSeed < 150; ++nSeed) {
            CLayer layers[2];
            CPoint2D positions[2];
            std::vector<int> drawn;
            for (int k = 0; k < 2; ++k) {
                Lattice random(nSeed);
                for (std::uint32_t n = random.Below(40); n > 0; --n) {
                    Give(layers[k], RandomHatch(random, coordinate));
                }
                Place const start = RandomPlace(random, coordinate);
                positions[k] = CPoint2D(start.first, start.second);
                std::srand(nSeed);
                if (k == 0) {
                    layers[k].OptimizeHatchs(positions[k], GetParam());
                } else {
                    literal::OptimizeHatchs(layers[k], positions[k], GetParam());
                }
                drawn.push_back(std::rand());
            }
            ASSERT_EQ(FactsOf(HatchesOf(layers[0])), FactsOf(HatchesOf(layers[1]))) << nSeed;
            ASSERT_EQ(Exact(positions[0]), Exact(positions[1])) << nSeed;
            ASSERT_EQ(drawn[0], drawn[1]) << "as many numbers are drawn";
        }
    }
}

TEST_P(OrderTwin, LoopsComeInTheOrderOfTheScan) {
    for (Coordinate const coordinate : kCoordinates) {
        for (std::uint32_t nSeed = 0; nSeed < 150; ++nSeed) {
            CLayer layers[2];
            CPoint2D positions[2];
            std::vector<PathFacts> all[2];
            std::vector<int> drawn;
            for (int k = 0; k < 2; ++k) {
                Lattice random(nSeed);
                for (std::uint32_t n = random.Below(30); n > 0; --n) {
                    Give(layers[k], RandomLoop(random, coordinate));
                }
                if (random.Below(2) == 0) layers[k].MakeTopology(1);
                layers[k].BuildLoopList();
                std::vector<tagLoopTreeNode*> const loops = LoopsOf(layers[k].m_LoopList);
                Place const start = RandomPlace(random, coordinate);
                positions[k] = CPoint2D(start.first, start.second);
                std::srand(nSeed);
                if (k == 0) {
                    layers[k].OptimizeLoops(positions[k], GetParam());
                } else {
                    literal::OptimizeLoops(layers[k], positions[k], GetParam());
                }
                drawn.push_back(std::rand());
                EXPECT_EQ(LoopsOf(layers[k].m_LoopList), loops) << "the loop list stays";
                all[k] = FactsOf(loops);
                for (tagLoopTreeNode* const p : LoopsOf(layers[k].m_RawLoopList)) {
                    EXPECT_EQ(p->m_ChildList.GetCount(), 0);
                    ExpectSound(*p->m_pPointList);
                }
                DeleteLeftOver(layers[k], loops);
            }
            ASSERT_EQ(FactsOf(LoopsOf(layers[0].m_RawLoopList)), FactsOf(LoopsOf(layers[1].m_RawLoopList)))
                << nSeed;
            ASSERT_EQ(all[0], all[1]) << nSeed;
            ASSERT_EQ(Exact(positions[0]), Exact(positions[1])) << nSeed;
            ASSERT_EQ(drawn[0], drawn[1]) << "as many numbers are drawn";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, OrderTwin, testing::Values(0, 1, 2, -1));

TEST(OrderTwin, StepsFindWhatTheScanFinds) {
    for (Coordinate const coordinate : kCoordinates) {
        for (std::uint32_t nSeed = 0; nSeed < 300; ++nSeed) {
            CLayer layers[2];
            CPoint2D pos;
            for (CLayer& layer : layers) {
                Lattice random(nSeed);
                for (std::uint32_t n = random.Below(12); n > 0; --n) {
                    Give(layer, RandomHatch(random, coordinate));
                    Give(layer, RandomLoop(random, coordinate));
                }
                Place const start = RandomPlace(random, coordinate);
                pos = CPoint2D(start.first, start.second);
            }
            for (int n = 0; n < 14; ++n) {
                CHatch* const a = FindNearHatchAndAdjust(&layers[0].m_HatchList, pos);
                CHatch* const b = literal::FindNearHatchAndAdjust(&layers[1].m_HatchList, pos);
                ASSERT_EQ(a == nullptr, b == nullptr) << nSeed;
                ASSERT_EQ(FactsOf(HatchesOf(layers[0])), FactsOf(HatchesOf(layers[1]))) << nSeed;
                if (a == nullptr) break;
                a->m_nFlag |= HATCH_USED_FLAG;
                b->m_nFlag |= HATCH_USED_FLAG;
                pos = a->m_EdgeList.GetTail().m_ptEnd;
            }
            tagLoopTreeNode* const pLoop = FindNearLoopInList(&layers[0].m_RawLoopList, pos);
            ASSERT_EQ(pLoop, literal::FindNearLoopInList(&layers[0].m_RawLoopList, pos)) << nSeed;
        }
    }
}
