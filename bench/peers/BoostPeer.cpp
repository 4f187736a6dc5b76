// Boost's r-tree on the same loops: built at once from their boxes, and asked for each loop which boxes hold
// it whole; of the loops in these that hold its first point, the one with the smallest box is its parent.

#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace {

namespace bg = boost::geometry;
using Point = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Point>;
using Entry = std::pair<Box, std::uint32_t>;
using Loop = std::vector<Point>;

constexpr int kCorners = 32;

Loop Circle(double x, double y, double dRadius) {
    Loop loop;
    for (int i = 0; i <= kCorners; ++i) {
        double const dAngle = 2.0 * std::numbers::pi * (i % kCorners) / kCorners;
        loop.emplace_back(x + dRadius * std::cos(dAngle), y + dRadius * std::sin(dAngle));
    }
    return loop;
}

// Pairs of rings in a square grid, ten millimetres apart.
std::vector<Loop> Rings(std::int64_t nLoops) {
    std::vector<Loop> loops;
    auto const nSide = static_cast<std::int64_t>(std::ceil(std::sqrt(static_cast<double>(nLoops) / 2.0)));
    for (std::int64_t i = 0; i < nLoops / 2; ++i) {
        double const x = static_cast<double>(i % nSide) * 10.0;
        double const y = static_cast<double>(i / nSide) * 10.0;
        loops.push_back(Circle(x, y, 4.0));
        loops.push_back(Circle(x, y, 2.0));
    }
    return loops;
}

// Of any size and anywhere in a square; they may cross.
std::vector<Loop> Scattered(std::int64_t nLoops) {
    std::mt19937 random(7);
    double const dSide = 10.0 * std::sqrt(static_cast<double>(nLoops));
    std::uniform_real_distribution<double> place(0.0, dSide);
    std::uniform_real_distribution<double> size(0.1, 8.0);
    std::vector<Loop> loops;
    for (std::int64_t i = 0; i < nLoops; ++i) {
        double const x = place(random);
        double const y = place(random);
        loops.push_back(Circle(x, y, size(random)));
    }
    return loops;
}

Box BoxOf(Loop const& loop) {
    Box box;
    bg::envelope(bg::model::linestring<Point>(loop.begin(), loop.end()), box);
    return box;
}

// By crossings of a ray.
bool Holds(Loop const& loop, Point const& p) {
    bool bInside = false;
    for (std::size_t i = 0; i + 1 < loop.size(); ++i) {
        Point const& a = loop[i];
        Point const& b = loop[i + 1];
        if ((a.get<1>() > p.get<1>()) == (b.get<1>() > p.get<1>())) continue;
        double const dShare = (p.get<1>() - a.get<1>()) / (b.get<1>() - a.get<1>());
        if (p.get<0>() < a.get<0>() + dShare * (b.get<0>() - a.get<0>())) bInside = !bInside;
    }
    return bInside;
}

std::vector<std::int64_t> Parents(std::vector<Loop> const& loops) {
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < loops.size(); ++i)
        entries.emplace_back(BoxOf(loops[i]), static_cast<std::uint32_t>(i));
    bg::index::rtree<Entry, bg::index::rstar<16>> const tree(entries.begin(), entries.end());
    std::vector<std::int64_t> parents(loops.size(), -1);
    std::vector<Entry> found;
    for (std::size_t i = 0; i < loops.size(); ++i) {
        found.clear();
        tree.query(bg::index::covers(entries[i].first), std::back_inserter(found));
        double dLeast = 0.0;
        for (auto const& [box, n] : found) {
            if (n == i || !Holds(loops[n], loops[i].front())) continue;
            double const dArea = bg::area(box);
            if (parents[i] >= 0 && dArea >= dLeast) continue;
            dLeast = dArea;
            parents[i] = n;
        }
    }
    return parents;
}

double Area(Loop const& loop) {
    double dSum = 0.0;
    for (std::size_t i = 1; i + 1 < loop.size(); ++i) {
        dSum += (loop[i].get<0>() - loop[0].get<0>()) * (loop[i + 1].get<1>() - loop[0].get<1>()) -
                (loop[i].get<1>() - loop[0].get<1>()) * (loop[i + 1].get<0>() - loop[0].get<0>());
    }
    return dSum;
}

void Orient(std::vector<Loop>& loops, std::vector<std::int64_t> const& parents) {
    for (std::size_t i = 0; i < loops.size(); ++i) {
        bool bOuter = true;
        for (std::int64_t n = parents[i]; n >= 0; n = parents[static_cast<std::size_t>(n)]) bOuter = !bOuter;
        if ((Area(loops[i]) > 0.0) != bOuter) std::reverse(loops[i].begin(), loops[i].end());
    }
}

void Nest(benchmark::State& state, std::vector<Loop> (*make)(std::int64_t)) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<Loop> loops = make(state.range(0));
        state.ResumeTiming();
        Orient(loops, Parents(loops));
        state.PauseTiming();
        loops = {};
        state.ResumeTiming();
    }
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BoostNestingRings(benchmark::State& state) { Nest(state, Rings); }
void BoostNestingScattered(benchmark::State& state) { Nest(state, Scattered); }

BENCHMARK(BoostNestingRings)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BoostNestingScattered)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
