// CGAL on the same hatches: greedy nearest-first order by its k-d tree, from which both ends of a hatch are
// taken out when it is chosen.

#include <CGAL/Kd_tree.h>
#include <CGAL/Orthogonal_k_neighbor_search.h>
#include <CGAL/Search_traits_2.h>
#include <CGAL/Search_traits_adapter.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/property_map.h>
#include <benchmark/benchmark.h>

#include <boost/iterator/counting_iterator.hpp>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using Kernel = CGAL::Simple_cartesian<double>;
using Point = Kernel::Point_2;
using Map = CGAL::Pointer_property_map<Point>::const_type;
using Base = CGAL::Search_traits_2<Kernel>;
using Traits = CGAL::Search_traits_adapter<std::size_t, Map, Base>;
using Distance = CGAL::Distance_adapter<std::size_t, Map, CGAL::Euclidean_distance<Base>>;
using Search = CGAL::Orthogonal_k_neighbor_search<Traits, Distance>;

constexpr double kLayerArea = 0.5;  // square millimetres for each hatch, in a square

// The two ends of each hatch, one behind the other: up to two millimetres long, anywhere in a square.
std::vector<Point> EndsOfHatchs(std::int64_t nHatchs) {
    std::mt19937 random(7);
    double const dSide = std::sqrt(static_cast<double>(nHatchs) * kLayerArea);
    std::uniform_real_distribution<double> place(0.0, dSide);
    std::uniform_real_distribution<double> length(-1.0, 1.0);
    std::vector<Point> points;
    for (std::int64_t i = 0; i < nHatchs; ++i) {
        double const x = place(random);
        double const y = place(random);
        double const dx = length(random);
        double const dy = length(random);
        points.emplace_back(x, y);
        points.emplace_back(x + dx, y + dy);
    }
    return points;
}

double Order(std::vector<Point> const& points) {
    Map const map = CGAL::make_property_map(points);
    Traits const traits(map);
    Search::Tree tree(boost::counting_iterator<std::size_t>(0),
                      boost::counting_iterator<std::size_t>(points.size()), Search::Splitter(), traits);
    tree.build();
    Distance const distance(map);
    Point pos(0.0, 0.0);
    double dTravel = 0.0;
    for (std::size_t nLeft = points.size() / 2; nLeft > 0; --nLeft) {
        Search search(tree, pos, 1, 0.0, true, distance);
        auto const [nEntry, d2] = *search.begin();
        dTravel += std::sqrt(d2);
        tree.remove(nEntry);
        tree.remove(nEntry ^ 1);
        pos = points[nEntry ^ 1];
    }
    return dTravel;
}

void CgalNearHatchs(benchmark::State& state) {
    std::vector<Point> const points = EndsOfHatchs(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(Order(points));
    state.counters["s/item"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(CgalNearHatchs)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
