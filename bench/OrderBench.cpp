// Ordering the paths of a layer, and splicing contours with fill. Each reports the travel that is left, with
// the material off, as a share of that in the order given.

#include <Varnet64.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

namespace {

using PointList = XR_CList<CPoint2D, CPoint2D&>;

constexpr int kCorners = 20;
constexpr double kLayerArea = 0.5;  // square millimetres for each hatch, in a square

double Distance(CPoint2D const& a, CPoint2D const& b) { return std::hypot(b.x - a.x, b.y - a.y); }

void AddHatch(CLayer& layer, CPoint2D const& start, CPoint2D const& end) {
    auto* const pHatch = new CHatch;
    CEdge2D edge(start, end);
    pHatch->m_EdgeList.AddTail(edge);
    layer.m_HatchList.AddTail(pHatch);
}

// Hatches of up to two millimetres, anywhere in a square.
void FillRandom(CLayer& layer, std::int64_t nHatchs) {
    std::mt19937 random(7);
    double const dSide = std::sqrt(static_cast<double>(nHatchs) * kLayerArea);
    std::uniform_real_distribution<double> place(0.0, dSide);
    std::uniform_real_distribution<double> length(-1.0, 1.0);
    for (std::int64_t i = 0; i < nHatchs; ++i) {
        CPoint2D const start(place(random), place(random));
        AddHatch(layer, start, CPoint2D(start.x + length(random), start.y + length(random)));
    }
}

// The same in two heaps, one a millionth of the other's size: no grid of equal cells suits both.
void FillHeaps(CLayer& layer, std::int64_t nHatchs) {
    FillRandom(layer, nHatchs);
    std::int64_t i = 0;
    for (XR__POSITION* at = layer.m_HatchList.GetHeadPosition(); at != nullptr; ++i) {
        CEdge2D& edge = static_cast<CHatch*>(layer.m_HatchList.GetNext(at))->m_EdgeList.GetHead();
        if (i % 2 == 0) edge = CEdge2D(edge.m_ptStart * 1e-6, edge.m_ptEnd * 1e-6);
    }
}

// Every end on a lattice of a millimetre, many of them on each other.
void FillLattice(CLayer& layer, std::int64_t nHatchs) {
    FillRandom(layer, nHatchs);
    for (XR__POSITION* at = layer.m_HatchList.GetHeadPosition(); at != nullptr;) {
        CEdge2D& edge = static_cast<CHatch*>(layer.m_HatchList.GetNext(at))->m_EdgeList.GetHead();
        edge = CEdge2D(CPoint2D(std::round(edge.m_ptStart.x), std::round(edge.m_ptStart.y)),
                       CPoint2D(std::round(edge.m_ptEnd.x), std::round(edge.m_ptEnd.y)));
    }
}

void AddCircle(CLayer& layer, CPoint2D const& centre, double dRadius, int nCorners) {
    auto* const pLoop = new tagLoopTreeNode(0);
    pLoop->m_bClosed = 1;
    pLoop->m_pPointList = new PointList(10);
    for (int i = 0; i <= nCorners; ++i) {
        double const dAngle = 2.0 * std::numbers::pi * (i % nCorners) / nCorners;
        CPoint2D point(centre.x + dRadius * std::cos(dAngle), centre.y + dRadius * std::sin(dAngle));
        pLoop->m_pPointList->AddTail(point);
    }
    layer.AddRawLoop(pLoop);
}

void FillCircles(CLayer& layer, std::int64_t nLoops) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0.0, 3.0 * std::sqrt(static_cast<double>(nLoops)));
    for (std::int64_t i = 0; i < nLoops; ++i) {
        AddCircle(layer, CPoint2D(place(random), place(random)), 1.0, kCorners);
    }
}

double HatchTravel(CLayer const& layer) {
    double dTravel = 0.0;
    CPoint2D pos;
    for (auto const* p = layer.m_HatchList.m_pNodeHead; p != nullptr; p = p->pNext) {
        auto const& edges = static_cast<CHatch const*>(p->data)->m_EdgeList;
        dTravel += Distance(pos, edges.GetHead().m_ptStart);
        pos = edges.GetTail().m_ptEnd;
    }
    return dTravel;
}

double LoopTravel(CLayer const& layer) {
    double dTravel = 0.0;
    CPoint2D pos;
    for (auto const* p = layer.m_RawLoopList.m_pNodeHead; p != nullptr; p = p->pNext) {
        auto const& points = *static_cast<tagLoopTreeNode const*>(p->data)->m_pPointList;
        dTravel += Distance(pos, points.GetHead());
        pos = points.GetTail();
    }
    return dTravel;
}

void Report(benchmark::State& state, std::int64_t nItems, double dShare) {
    state.SetItemsProcessed(state.iterations() * nItems);
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(nItems),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["travel left"] = dShare;
}

// Fills a fresh layer every time; only the work on it counts.
template <class Work>
double OnFreshLayer(benchmark::State& state, void (*fill)(CLayer&, std::int64_t),
                    double (*travel)(CLayer const&), Work work) {
    double dShare = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pLayer = std::make_unique<CLayer>();
        fill(*pLayer, state.range(0));
        double const dBefore = travel(*pLayer);
        state.ResumeTiming();
        work(*pLayer);
        state.PauseTiming();
        dShare = travel(*pLayer) / dBefore;
        pLayer.reset();
        state.ResumeTiming();
    }
    return dShare;
}

void OptimizeHatchs(benchmark::State& state, void (*fill)(CLayer&, std::int64_t), int nMode) {
    double const dShare = OnFreshLayer(state, fill, HatchTravel, [nMode](CLayer& layer) {
        CPoint2D pos;
        layer.OptimizeHatchs(pos, nMode);
    });
    Report(state, state.range(0), dShare);
}

// Items are vertices.
void OptimizeLoops(benchmark::State& state, int nMode) {
    double const dShare = OnFreshLayer(state, FillCircles, LoopTravel, [nMode](CLayer& layer) {
        CPoint2D pos;
        layer.OptimizeLoops(pos, nMode);
    });
    Report(state, state.range(0) * (kCorners + 1), dShare);
}

// A plate of four millimetres' squares with a hole in each, and chains to and fro beside every hole.
void FillPlate(CLayer& layer, std::int64_t nHoles) {
    auto const nSide = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(nHoles))));
    double const dSide = static_cast<double>(nSide) * 4.0;
    auto* const pOuter = new tagLoopTreeNode(0);
    pOuter->m_bClosed = 1;
    pOuter->m_pPointList = new PointList(10);
    for (CPoint2D corner :
         {CPoint2D(0, 0), CPoint2D(dSide, 0), CPoint2D(dSide, dSide), CPoint2D(0, dSide), CPoint2D(0, 0)}) {
        pOuter->m_pPointList->AddTail(corner);
    }
    layer.AddRawLoop(pOuter);
    for (std::int64_t i = 0; i < nHoles; ++i) {
        CPoint2D const centre(static_cast<double>(i % nSide) * 4.0 + 2.0,
                              static_cast<double>(i / nSide) * 4.0 + 2.0);
        AddCircle(layer, centre, 1.0, kCorners);
        auto* const pHatch = new CHatch;
        pHatch->m_nID = 3;
        for (int k = 0; k < 8; ++k) {
            double const y = centre.y - 1.5 + k * 0.4;
            double const dLeft = centre.x + 1.1;
            CEdge2D edge(CPoint2D(k % 2 == 0 ? dLeft : dLeft + 1.5, y),
                         CPoint2D(k % 2 == 0 ? dLeft + 1.5 : dLeft, y));
            pHatch->m_EdgeList.AddTail(edge);
        }
        layer.m_HatchList.AddTail(pHatch);
    }
    layer.MakeTopology(1);
}

// Items are contours; each has a hatch. Beside the time, the share of contours that were spliced.
void Splice(benchmark::State& state) {
    double dSpliced = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pLayer = std::make_unique<CLayer>();
        auto pOut = std::make_unique<CLayer>();
        FillPlate(*pLayer, state.range(0));
        CPoint2D pos;
        state.ResumeTiming();
        while (tagLoopTreeNode* const pLoop = pLayer->FindNearUnusedOutLoop(pos)) {
            pLayer->OptimizeLoopAndChildLoopHatch(pLoop, &pos, pOut.get(), 0.5, 0.3);
            pLoop->m_nFlag |= LOOP_USED_FLAG;
        }
        state.PauseTiming();
        dSpliced = 0.0;
        for (XR__POSITION* at = pOut->m_RawLoopList.GetHeadPosition(); at != nullptr;) {
            auto const* const pPath = static_cast<tagLoopTreeNode const*>(pOut->m_RawLoopList.GetNext(at));
            if (pPath->m_nFlag != LOOP_KIND_HATCH && pPath->m_bClosed == 0) dSpliced += 1.0;
        }
        pLayer.reset();
        pOut.reset();
        state.ResumeTiming();
    }
    Report(state, state.range(0), 0.0);
    state.counters.erase("travel left");
    state.counters["spliced"] = dSpliced / static_cast<double>(state.range(0));
}

BENCHMARK_CAPTURE(OptimizeHatchs, Near, FillRandom, 0)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeHatchs, NearInHeaps, FillHeaps, 0)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeHatchs, NearOnLattice, FillLattice, 0)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeHatchs, Far, FillRandom, 1)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeHatchs, ByChance, FillRandom, 2)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeLoops, Near, 0)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OptimizeLoops, Far, 1)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(Splice)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
