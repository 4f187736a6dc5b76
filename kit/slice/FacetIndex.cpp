#include "slice/FacetIndex.h"

#include <algorithm>
#include <cmath>

#include "slice/FacetSource.h"

namespace varnet {

namespace {

constexpr double kFarthest = 1e10;

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
    double const guess = std::floor((z - bottom) / layer + 0.5);
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

FacetIndex::FacetIndex(SlicerInput const& input, LayerHeights const& heights, bool allUsable, Pulse& pulse)
    : m_Input(input),
      m_Heights(heights),
      m_First(Index(heights.count) + 2, 0),
      m_Reach(Index(heights.count) + 1, 0) {
    auto const forEach = [&](auto const& visit) {
        for (std::size_t i = 0; i < input.triangles.size(); ++i) {
            pulse.Beat();
            Triangle const& triangle = input.triangles[i];
            if (HasEqualCorners(triangle) || !(allUsable || IsUsable(input, triangle))) continue;
            Range const range = RangeOf(input, triangle);
            int const first = heights.FirstAbove(range.lowest);
            if (first <= heights.count && heights.CutHeight(first) <= range.highest) {
                visit(static_cast<std::uint32_t>(i), first, range.highest);
            }
        }
    };
    forEach([this](std::uint32_t, int first, double) { ++m_First[Index(first) + 1]; });
    for (std::size_t i = 1; i < m_First.size(); ++i) m_First[i] += m_First[i - 1];
    m_Order.resize(m_First.back());
    std::vector<std::uint32_t> next = m_First;
    forEach([&](std::uint32_t facet, int first, double highest) {
        m_Order[next[Index(first)]++] = facet;
        m_Reach[Index(first)] = std::max(m_Reach[Index(first)], heights.FirstAbove(highest) - 1);
    });
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
