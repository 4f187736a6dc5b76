#include "trees/HeightSet.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/Prefetch.h"

namespace varnet {

namespace {

constexpr std::size_t kFirstLines = 16;
constexpr std::size_t kHeightsPerLine = 3;  // on average, at most
constexpr double kTolerancesPerInterval = 8.0;

// Heights within the tolerance of z, as rounded subtraction has it, lie in the intervals from that of z less
// so many tolerances to that of z and so many more: rounding is monotonic.
constexpr double kReach = 1.25;

// Heights reach from -1e10 to 1e10; interval numbers stay whole numbers of a double far beyond that.
constexpr double kLargestInterval = 1e15;

}  // namespace

HeightSet::HeightSet(double dTolerance)
    : m_dTolerance(dTolerance),
      m_dIntervalsPerUnit(1.0 / (kTolerancesPerInterval * dTolerance)),
      m_Lines(kFirstLines) {}

std::int64_t HeightSet::IntervalOf(double z) const {
    double const dInterval = std::clamp(z * m_dIntervalsPerUnit, -kLargestInterval, kLargestInterval);
    auto const nInterval = static_cast<std::int64_t>(dInterval);
    return nInterval - (dInterval < static_cast<double>(nInterval) ? 1 : 0);
}

std::size_t HeightSet::PlaceOf(std::int64_t nInterval) const {
    std::uint64_t const n = static_cast<std::uint64_t>(nInterval) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(n >> 32) & (m_Lines.size() - 1);
}

HeightSet::Answer HeightSet::Find(double z) const {
    Line const& own = m_Lines[PlaceOf(IntervalOf(z))];
    if (Holds(own, z)) return {Near::kOne, z};
    Answer answer{Near::kNone, 0.0};
    auto const look = [this, z, &answer](Line const& line) {
        if (line.nCount > kCapacity) answer.near = Near::kUnknown;
        std::size_t const nHeights = std::min<std::size_t>(line.nCount, kCapacity);
        for (std::size_t i = 0; i < nHeights; ++i) {
            double const d = line.heights[i] - z;
            if (d > m_dTolerance || d < -m_dTolerance) continue;
            if (answer.near == Near::kOne && answer.dHeight == line.heights[i])
                continue;  // two intervals, one line
            answer.near = answer.near == Near::kNone ? Near::kOne : Near::kUnknown;
            answer.dHeight = line.heights[i];
        }
    };
    std::int64_t const nFirst = IntervalOf(z - kReach * m_dTolerance);
    std::int64_t const nLast = IntervalOf(z + kReach * m_dTolerance);
    for (std::int64_t n = nFirst; n <= nLast; ++n) look(m_Lines[PlaceOf(n)]);
    return answer;
}

void HeightSet::Prefetch(double z) const {
    varnet::Prefetch(&m_Lines[PlaceOf(IntervalOf(z - kReach * m_dTolerance))]);
    varnet::Prefetch(&m_Lines[PlaceOf(IntervalOf(z + kReach * m_dTolerance))]);
}

bool HeightSet::Holds(Line const& line, double dHeight) {
    std::size_t const nHeights = std::min<std::size_t>(line.nCount, kCapacity);
    return std::find(line.heights.begin(), line.heights.begin() + nHeights, dHeight) !=
           line.heights.begin() + nHeights;
}

void HeightSet::Add(double dHeight) {
    if (Holds(m_Lines[PlaceOf(IntervalOf(dHeight))], dHeight)) return;
    if (++m_nHeights > kHeightsPerLine * m_Lines.size()) Grow();
    Insert(dHeight);
}

void HeightSet::Insert(double dHeight) {
    Line& line = m_Lines[PlaceOf(IntervalOf(dHeight))];
    if (line.nCount < kCapacity) {
        line.heights[line.nCount++] = dHeight;
    } else {
        line.nCount = kCapacity + 1;
        m_Overflow.push_back(dHeight);
    }
}

void HeightSet::Grow() {
    ZeroedTable<Line> const lines = std::exchange(m_Lines, ZeroedTable<Line>(2 * m_Lines.size()));
    std::vector<double> const overflow = std::exchange(m_Overflow, {});
    for (Line const& line : lines) {
        std::size_t const nHeights = std::min<std::size_t>(line.nCount, kCapacity);
        for (std::size_t i = 0; i < nHeights; ++i) Insert(line.heights[i]);
    }
    for (double const dHeight : overflow) Insert(dHeight);
}

}  // namespace varnet
