// Clipper on the same loops: their union under the even-odd rule as a tree, which nests them.

#include <benchmark/benchmark.h>

#include <polyclipping/clipper.hpp>

#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

constexpr int kCorners = 32;
constexpr double kUnitsPerMillimetre = 1000.0;

ClipperLib::Path Circle(double x, double y, double dRadius) {
    ClipperLib::Path path;
    for (int i = 0; i < kCorners; ++i) {
        double const dAngle = 2.0 * std::numbers::pi * i / kCorners;
        path.emplace_back(std::llround((x + dRadius * std::cos(dAngle)) * kUnitsPerMillimetre),
                          std::llround((y + dRadius * std::sin(dAngle)) * kUnitsPerMillimetre));
    }
    return path;
}

// Pairs of rings in a square grid, ten millimetres apart.
ClipperLib::Paths Rings(std::int64_t nLoops) {
    ClipperLib::Paths paths;
    auto const nSide = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(nLoops) / 2.0)));
    for (std::int64_t i = 0; i < nLoops / 2; ++i) {
        double const x = static_cast<double>(i % nSide) * 10.0;
        double const y = static_cast<double>(i / nSide) * 10.0;
        paths.push_back(Circle(x, y, 4.0));
        paths.push_back(Circle(x, y, 2.0));
    }
    return paths;
}

void ClipperNestingRings(benchmark::State& state) {
    ClipperLib::Paths const paths = Rings(state.range(0));
    for (auto _ : state) {
        ClipperLib::Clipper clipper;
        clipper.AddPaths(paths, ClipperLib::ptSubject, true);
        ClipperLib::PolyTree tree;
        clipper.Execute(ClipperLib::ctUnion, tree, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
        benchmark::DoNotOptimize(tree.Total());
    }
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(ClipperNestingRings)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
