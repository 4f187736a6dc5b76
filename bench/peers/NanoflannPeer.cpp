// nanoflann on the same hatches: greedy nearest-first order by a k-d tree, which is built anew whenever half
// of its points are gone.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <nanoflann.hpp>
#include <random>
#include <vector>

namespace {

constexpr double kLayerArea = 0.5;  // square millimetres for each hatch, in a square

struct Points {
    std::vector<double> coordinates;  // x, y, x, y ...
    std::size_t kdtree_get_point_count() const { return coordinates.size() / 2; }
    double kdtree_get_pt(std::size_t i, std::size_t nAxis) const { return coordinates[2 * i + nAxis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Points>, Points, 2>;

// The two ends of each hatch, one behind the other: up to two millimetres long, anywhere in a square.
Points EndsOfHatchs(std::int64_t nHatchs) {
    std::mt19937 random(7);
    double const dSide = std::sqrt(static_cast<double>(nHatchs) * kLayerArea);
    std::uniform_real_distribution<double> place(0.0, dSide);
    std::uniform_real_distribution<double> length(-1.0, 1.0);
    Points points;
    for (std::int64_t i = 0; i < nHatchs; ++i) {
        double const x = place(random);
        double const y = place(random);
        double const dx = length(random);
        double const dy = length(random);
        points.coordinates.insert(points.coordinates.end(), {x, y, x + dx, y + dy});
    }
    return points;
}

// Keeps the nearest point whose hatch is left.
class NearestLeft {
public:
    NearestLeft(std::vector<std::size_t> const& numbers, std::vector<char> const& gone)
        : m_Numbers(numbers), m_Gone(gone) {}
    std::size_t size() const { return m_nBest == kNone ? 0 : 1; }
    bool full() const { return m_nBest != kNone; }
    double worstDist() const { return m_dBest; }
    bool addPoint(double d, std::size_t i) {
        std::size_t const nPoint = m_Numbers[i];
        if (d < m_dBest && m_Gone[nPoint / 2] == 0) {
            m_dBest = d;
            m_nBest = nPoint;
        }
        return true;
    }
    std::size_t Best() const { return m_nBest; }

private:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
    std::vector<std::size_t> const& m_Numbers;
    std::vector<char> const& m_Gone;
    std::size_t m_nBest = kNone;
    double m_dBest = std::numeric_limits<double>::max();
};

// A tree of the points that are left, with the numbers that they have among all.
struct Forest {
    Points points;
    std::vector<std::size_t> numbers;
    std::unique_ptr<Tree> pTree;

    Forest(Points const& all, std::vector<char> const& gone) {
        for (std::size_t i = 0; i < all.kdtree_get_point_count(); ++i) {
            if (gone[i / 2] != 0) continue;
            numbers.push_back(i);
            points.coordinates.push_back(all.kdtree_get_pt(i, 0));
            points.coordinates.push_back(all.kdtree_get_pt(i, 1));
        }
        pTree = std::make_unique<Tree>(2, points, nanoflann::KDTreeSingleIndexAdaptorParams(10));
        pTree->buildIndex();
    }
};

double Order(Points const& all) {
    std::size_t const nHatchs = all.kdtree_get_point_count() / 2;
    std::vector<char> gone(nHatchs, 0);
    auto pForest = std::make_unique<Forest>(all, gone);
    std::size_t nInTree = nHatchs;
    double pos[2] = {0.0, 0.0};
    double dTravel = 0.0;
    for (std::size_t nLeft = nHatchs; nLeft > 0; --nLeft) {
        if (2 * nLeft < nInTree) {
            pForest = std::make_unique<Forest>(all, gone);
            nInTree = nLeft;
        }
        NearestLeft nearest(pForest->numbers, gone);
        pForest->pTree->findNeighbors(nearest, pos, nanoflann::SearchParams());
        std::size_t const nEntry = nearest.Best();
        dTravel += std::sqrt(nearest.worstDist());
        gone[nEntry / 2] = 1;
        std::size_t const nExit = nEntry ^ 1;
        pos[0] = all.kdtree_get_pt(nExit, 0);
        pos[1] = all.kdtree_get_pt(nExit, 1);
    }
    return dTravel;
}

void NanoflannNearHatchs(benchmark::State& state) {
    Points const points = EndsOfHatchs(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(Order(points));
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(NanoflannNearHatchs)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
