// What happens to the paths of a layer: nesting, thinning out, cutting, limiting, copying, and interval
// lists.

#include <Varnet64.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <numbers>
#include <random>

namespace {

using PointList = XR_CList<CPoint2D, CPoint2D&>;

constexpr int kCorners = 32;

// A closed loop of 33 points about a centre.
tagLoopTreeNode* Circle(double x, double y, double dRadius) {
    auto* const pLoop = new tagLoopTreeNode(0);
    pLoop->m_bClosed = 1;
    pLoop->m_pPointList = new PointList(10);
    for (int i = 0; i <= kCorners; ++i) {
        double const dAngle = 2.0 * std::numbers::pi * (i % kCorners) / kCorners;
        CPoint2D point(x + dRadius * std::cos(dAngle), y + dRadius * std::sin(dAngle));
        pLoop->m_pPointList->AddTail(point);
    }
    return pLoop;
}

// The centre of the place with this number in a square grid of so many places, ten millimetres apart.
CPoint2D GridPlace(std::int64_t i, std::int64_t nPlaces) {
    auto const nSide = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(nPlaces))));
    return CPoint2D(static_cast<double>(i % nSide) * 10.0, static_cast<double>(i / nSide) * 10.0);
}

void FillDisjoint(CLayer& layer, std::int64_t nLoops) {
    for (std::int64_t i = 0; i < nLoops; ++i) {
        CPoint2D const place = GridPlace(i, nLoops);
        layer.AddRawLoop(Circle(place.x, place.y, 4.0));
    }
}

void FillRings(CLayer& layer, std::int64_t nLoops) {
    for (std::int64_t i = 0; i < nLoops / 2; ++i) {
        CPoint2D const place = GridPlace(i, nLoops / 2);
        layer.AddRawLoop(Circle(place.x, place.y, 4.0));
        layer.AddRawLoop(Circle(place.x, place.y, 2.0));
    }
}

// One plate with holes.
void FillPlate(CLayer& layer, std::int64_t nLoops) {
    layer.AddRawLoop(Circle(0.0, 0.0, 1e6));
    FillDisjoint(layer, nLoops - 1);
}

void FillConcentric(CLayer& layer, std::int64_t nLoops) {
    for (std::int64_t i = nLoops; i > 0; --i) layer.AddRawLoop(Circle(0.0, 0.0, static_cast<double>(i)));
}

void FillConcentricInnerFirst(CLayer& layer, std::int64_t nLoops) {
    for (std::int64_t i = 1; i <= nLoops; ++i) layer.AddRawLoop(Circle(0.0, 0.0, static_cast<double>(i)));
}

void FillRandom(CLayer& layer, std::int64_t nLoops) {
    std::mt19937 random(7);
    double const dSide = 10.0 * std::sqrt(static_cast<double>(nLoops));
    std::uniform_real_distribution<double> place(0.0, dSide);
    std::uniform_real_distribution<double> size(0.1, 8.0);
    for (std::int64_t i = 0; i < nLoops; ++i) {
        double const x = place(random);
        double const y = place(random);
        layer.AddRawLoop(Circle(x, y, size(random)));
    }
}

void ReportItems(benchmark::State& state, std::int64_t nItems) {
    state.SetItemsProcessed(state.iterations() * nItems);
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(nItems),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Nests the loops that the function lays out.
void Nesting(benchmark::State& state, void (*fill)(CLayer&, std::int64_t)) {
    for (auto _ : state) {
        state.PauseTiming();
        auto pLayer = std::make_unique<CLayer>();
        fill(*pLayer, state.range(0));
        state.ResumeTiming();
        pLayer->MakeTopology(1);
        state.PauseTiming();
        pLayer.reset();
        state.ResumeTiming();
    }
    ReportItems(state, state.range(0));
}

// Works on a fresh copy of a path of so many points every time.
template <class Work>
void OnPath(benchmark::State& state, CPoint2D (*place)(std::int64_t), Work work) {
    tagLoopTreeNode path(0);
    path.m_pPointList = new PointList(10);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        CPoint2D point = place(i);
        path.m_pPointList->AddTail(point);
    }
    for (auto _ : state) {
        state.PauseTiming();
        auto pCopy = std::make_unique<tagLoopTreeNode>(0);
        pCopy->CopyOtherLoop(&path);
        state.ResumeTiming();
        work(*pCopy);
        state.PauseTiming();
        pCopy.reset();
        state.ResumeTiming();
    }
    ReportItems(state, state.range(0));
}

CPoint2D OnWave(std::int64_t i) {
    double const x = static_cast<double>(i) * 0.01;
    return CPoint2D(x, 5.0 * std::sin(x * 0.1));
}

CPoint2D OnLine(std::int64_t i) { return CPoint2D(static_cast<double>(i) * 0.01, 0.0); }

void Optimize(benchmark::State& state) {
    OnPath(state, OnWave, [](tagLoopTreeNode& path) { path.Optimize(); });
}

void OptimizeStraightRun(benchmark::State& state) {
    OnPath(state, OnLine, [](tagLoopTreeNode& path) { path.Optimize(); });
}

void OptimizeLine(benchmark::State& state) {
    OnPath(state, OnWave, [](tagLoopTreeNode& path) { path.OptimizeLine(2.0); });
}

void OptimizeUnClosed(benchmark::State& state) {
    OnPath(state, OnWave, [](tagLoopTreeNode& path) { path.Optimize_UnClosed(0.01); });
}

void CutLoop(benchmark::State& state) {
    OnPath(state, OnWave, [](tagLoopTreeNode& path) {
        double const dHalf = path.GetLength() / 2.0;
        delete path.CutLoop(dHalf, 1.0, OPERATE_AT_TAIL, 1);
    });
}

template <class Work>
void OnLayer(benchmark::State& state, Work work) {
    CLayer layer;
    FillRings(layer, state.range(0));
    layer.MakeTopology(1);
    for (auto _ : state) work(layer);
    ReportItems(state, state.range(0));
}

void LimitInBox(benchmark::State& state) {
    OnLayer(state, [](CLayer& layer) {
        layer.LimitInBox(CBoundBox2D(CPoint2D(0.0, 0.0), CPoint2D(500.0, 500.0)), 1, 1);
    });
}

void CopyLayer(benchmark::State& state) {
    OnLayer(state, [](CLayer& layer) { CLayer const copy(layer); });
}

void Transform(benchmark::State& state) {
    OnLayer(state, [](CLayer& layer) {
        double turn[3][3] = {{0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
        layer.Transform(turn, 0);
    });
}

void SortLoopListByBoxCenterX(benchmark::State& state) {
    OnLayer(state, [](CLayer& layer) {
        layer.BuildLoopList();
        layer.SortLoopListByBoxCenterX();
    });
}

// Two sets of intervals of the length of three steps, every four steps, merged and turned into their union.
void MergeAndUnite(benchmark::State& state) {
    PointList lists[2];
    for (int k = 0; k < 2; ++k) {
        for (std::int64_t i = 0; i < state.range(0) / 2; ++i) {
            CPoint2D point(static_cast<double>(i / 2 * 4 + (i % 2) * 3 + k * 2), static_cast<double>(i % 2));
            lists[k].AddTail(point);
        }
    }
    for (auto _ : state) {
        PointList merged;
        merged.AddTail(&lists[0]);
        InsertToPL(&merged, &lists[1]);
        UnionPL(&merged);
        LinkPL(&merged, 0.5);
        RemoveShortPL(&merged, 0.5);
        benchmark::DoNotOptimize(merged.GetCount());
    }
    ReportItems(state, state.range(0));
}

BENCHMARK_CAPTURE(Nesting, Disjoint, FillDisjoint)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Nesting, Rings, FillRings)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Nesting, Plate, FillPlate)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Nesting, Random, FillRandom)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Nesting, Concentric, FillConcentric)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Nesting, ConcentricInnerFirst, FillConcentricInnerFirst)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Optimize)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OptimizeStraightRun)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OptimizeLine)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OptimizeUnClosed)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(CutLoop)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(LimitInBox)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(CopyLayer)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(Transform)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(SortLoopListByBoxCenterX)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(MergeAndUnite)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
