// Filling and rebuilding the point tree, and the vertex tree beside it, with points that come at random or in
// order. Items are points; the time of a point grows with the depth of the tree and, at random, with cache
// misses.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "Varnet64.h"

namespace {

constexpr int kTenThousand = 10'000;
constexpr int kHundredThousand = 100'000;
constexpr int kMillion = 1'000'000;

enum class Order { kRandom, kSorted };

std::vector<CPoint2D> Points(std::int64_t nPoints, Order order) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(0.0, 1000.0);
    std::vector<CPoint2D> points(static_cast<std::size_t>(nPoints));
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = order == Order::kRandom ? CPoint2D(coordinate(random), coordinate(random))
                                            : CPoint2D(0.0, 0.001 * static_cast<double>(i));
    }
    return points;
}

template <class Tree, class Point>
void Fill(Tree& tree, std::vector<Point> const& points) {
    for (Point const& point : points) {
        Point offered(point);
        benchmark::DoNotOptimize(tree.AddNode(offered));
    }
}

void BM_PointTreeInsert(benchmark::State& state, Order order) {
    std::vector<CPoint2D> const points = Points(state.range(0), order);
    for (auto _ : state) {
        CPointTree tree;
        Fill(tree, points);
        state.PauseTiming();
        tree.ReleaseAll();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Each point again and again: every insertion is displaced by all that lie on its way.
void BM_PointTreeInsertCoincident(benchmark::State& state) {
    std::vector<CPoint2D> const points(static_cast<std::size_t>(state.range(0)), CPoint2D(1.0, 2.0));
    for (auto _ : state) {
        CPointTree tree;
        Fill(tree, points);
        state.PauseTiming();
        tree.ReleaseAll();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_PointTreeRebuild(benchmark::State& state) {
    CPointTree tree;
    Fill(tree, Points(state.range(0), Order::kRandom));
    for (auto _ : state) tree.ReBuildTree();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_VertexTreeInsert(benchmark::State& state, Order order) {
    std::vector<CPoint3D> points;
    for (CPoint2D const& point : Points(state.range(0), order)) points.emplace_back(1.0, point.x, point.y);
    for (auto _ : state) {
        CVertexTree tree;
        Fill(tree, points);
        state.PauseTiming();
        tree.ReleaseAll();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The floor: the standard library's balanced tree, without tolerances, with the same points.
void BM_StandardMapInsert(benchmark::State& state, Order order) {
    std::vector<CPoint2D> const points = Points(state.range(0), order);
    for (auto _ : state) {
        std::multimap<std::pair<double, double>, CPoint2D> tree;
        for (CPoint2D const& point : points) tree.emplace(std::pair(point.y, point.x), point);
        benchmark::DoNotOptimize(tree);
        state.PauseTiming();
        tree.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* pBenchmark) {
    pBenchmark->Arg(kTenThousand)->Arg(kHundredThousand)->Arg(kMillion)->Unit(benchmark::kMillisecond);
}

}  // namespace

BENCHMARK_CAPTURE(BM_PointTreeInsert, random, Order::kRandom)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_PointTreeInsert, sorted, Order::kSorted)->Apply(Sizes);
BENCHMARK(BM_PointTreeInsertCoincident)->Apply(Sizes);
BENCHMARK(BM_PointTreeRebuild)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_VertexTreeInsert, random, Order::kRandom)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_VertexTreeInsert, sorted, Order::kSorted)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_StandardMapInsert, random, Order::kRandom)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_StandardMapInsert, sorted, Order::kSorted)->Apply(Sizes);
