#include "slice/FacetIndex.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "slice/FacetSource.h"
#include "slice/Together.h"

namespace varnet {

namespace {

constexpr double kFarthest = 1e10;

// Fewer facets are not worth a thread.
constexpr std::size_t kShortestRun = 1 << 16;

std::size_t Index(int n) { return static_cast<std::size_t>(n); }

bool IsUsable(Point3 const& p) {
    return std::fabs(p.x) <= kFarthest && std::fabs(p.y) <= kFarthest && std::fabs(p.z) <= kFarthest;
}

bool HasEqualCorners(Triangle const& triangle) {
    return triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0];
}

struct Range {
    double lowest;
    double highest;
};

Range RangeOf(SlicerInput const& input, Triangle const& triangle) {
    double const a = input.points[Index(triangle[0])].z;
    double const b = input.points[Index(triangle[1])].z;
    double const c = input.points[Index(triangle[2])].z;
    return {std::min({a, b, c}), std::max({a, b, c})};
}

}  // namespace

bool IsUsable(SlicerInput const& input, Triangle const& triangle) {
    return IsUsable(input.points[Index(triangle[0])]) && IsUsable(input.points[Index(triangle[1])]) &&
           IsUsable(input.points[Index(triangle[2])]);
}

int LayerHeights::FirstAbove(double z) const {
    // Nearly always right; it only has to be near, as heights are compared as they are.
    double const guess = (z - bottom) / layer + 0.5;
    int number = guess >= count ? count + 1 : guess >= 0.0 ? static_cast<int>(guess) + 1 : 1;
    constexpr int kSteps = 4;
    int steps = 0;
    while (number > 1 && CutHeight(number - 1) > z && ++steps < kSteps) --number;
    while (number <= count && !(CutHeight(number) > z) && ++steps < kSteps) ++number;
    if (steps < kSteps) return number;
    int low = 1;
    int high = count + 1;
    while (low < high) {
        int const middle = low + (high - low) / 2;
        if (CutHeight(middle) > z) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

// Calls visit(facet, first layer, highest point) for the facets that a layer cuts.
template <class Visit>
void FacetIndex::ForEachCut(std::size_t begin, std::size_t end, Pulse& pulse, Visit const& visit) const {
    for (std::size_t i = begin; i < end; ++i) {
        pulse.Beat();
        Triangle const& triangle = m_Input.triangles[i];
        if (HasEqualCorners(triangle) || !(m_AllUsable || IsUsable(m_Input, triangle))) continue;
        Range const range = RangeOf(m_Input, triangle);
        int const first = m_Heights.FirstAbove(range.lowest);
        if (first <= m_Heights.count && m_Heights.CutHeight(first) <= range.highest)
            visit(static_cast<std::uint32_t>(i), first, range.highest);
    }
}

// A sort by counting. Each thread has a run of facets, and within each layer a place for those of its run, so
// that the facets of a layer stay in their order.
FacetIndex::FacetIndex(SlicerInput const& input, LayerHeights const& heights, bool allUsable, int threads,
                       Pulse& pulse)
    : m_Input(input),
      m_AllUsable(allUsable),
      m_Heights(heights),
      m_First(Index(heights.count) + 2, 0),
      m_Reach(Index(heights.count) + 1, 0) {
    std::size_t const facets = input.triangles.size();
    std::size_t const layers = Index(heights.count) + 1;
    // Tables by layer are no larger than the index.
    auto const runs =
        static_cast<int>(std::clamp<std::size_t>(facets / std::max(layers, kShortestRun), 1, Index(threads)));
    struct Run {
        std::vector<std::uint32_t> next;  // by layer: how many facets, then where the next one goes
        std::vector<std::int32_t> reach;
    };
    std::vector<Run> table(Index(runs));
    auto const begin = [&](int run) { return facets * Index(run) / Index(runs); };
    RunTogether(runs, pulse, [&](int run, Pulse& own) {
        std::vector<std::uint32_t>& next = table[Index(run)].next;
        next.assign(layers, 0);
        ForEachCut(begin(run), begin(run + 1), own,
                   [&next](std::uint32_t, int first, double) { ++next[Index(first)]; });
    });
    std::uint32_t place = 0;
    for (std::size_t layer = 0; layer < layers; ++layer) {
        m_First[layer] = place;
        for (Run& run : table) place += std::exchange(run.next[layer], place);
    }
    m_First[layers] = place;
    m_Order.resize(place);
    RunTogether(runs, pulse, [&](int number, Pulse& own) {
        Run& run = table[Index(number)];
        run.reach.assign(layers, 0);
        ForEachCut(begin(number), begin(number + 1), own,
                   [&](std::uint32_t facet, int first, double highest) {
                       m_Order[run.next[Index(first)]++] = facet;
                       std::int32_t& reach = run.reach[Index(first)];
                       reach = std::max(reach, first);
                       if (reach < heights.count && heights.CutHeight(reach + 1) <= highest)
                           reach = heights.FirstAbove(highest) - 1;
                   });
    });
    for (Run const& run : table) {
        for (std::size_t layer = 0; layer < layers; ++layer)
            m_Reach[layer] = std::max(m_Reach[layer], run.reach[layer]);
    }
}

namespace {

class IndexedFacets : public FacetSource {
public:
    explicit IndexedFacets(FacetIndex const& index) : m_Index(index) {}
    LayerHeights const& Heights() const override { return m_Index.Heights(); }
    bool AreTurned() const override { return m_Index.Input().turned; }
    bool ReusesNumbers() const override { return false; }
    void Deliver(int from, int to, std::function<void(FacetBatch const&)> const& take) override {
        SlicerInput const& input = m_Index.Input();
        for (int i = from; i <= to; ++i) {
            if (m_Index.ReachOf(i) >= to) take({m_Index.StartingAt(i), input.triangles, input.points});
        }
    }

private:
    FacetIndex const& m_Index;
};

}  // namespace

std::unique_ptr<FacetSource> MakeSource(FacetIndex const& index) {
    return std::make_unique<IndexedFacets>(index);
}

std::span<std::uint32_t const> FacetIndex::StartingAt(int number) const {
    std::size_t const first = m_First[Index(number)];
    return {m_Order.data() + first, m_First[Index(number) + 1] - first};
}

}  // namespace varnet
