#include "trees/HeightSet.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "foundation/Prefetch.h"
#include "trees/CoordinateHash.h"

namespace varnet {

namespace {

constexpr std::size_t kFirstLines = 16;
constexpr std::size_t kHeightsPerLine = 2;  // on average, at most
constexpr double kTolerancesPerInterval = 4.0;

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
    std::uint64_t const n =
        coordinate_hash::Spread(static_cast<std::uint64_t>(nInterval) * coordinate_hash::kFactorY);
    return static_cast<std::size_t>(n >> 32) & (m_Lines.size() - 1);
}

// Two intervals may share a line: a height may be met twice.
void HeightSet::Meet(double dHeight, Answer& answer) {
    if (answer.near == Near::kNone) {
        answer = {Near::kOne, dHeight, dHeight};
    } else if (answer.near == Near::kOne && dHeight != answer.dHeight) {
        answer = {Near::kTwo, std::min(answer.dHeight, dHeight), std::max(answer.dHeight, dHeight)};
    } else if (answer.near == Near::kTwo && dHeight != answer.dHeight && dHeight != answer.dUpper) {
        answer.near = Near::kUnknown;
    }
}

// No other height is near one that the set has.
HeightSet::Answer HeightSet::Find(double z) const {
    if (Line const& own = m_Lines[PlaceOf(IntervalOf(z))]; MayHold(own, z) && Holds(own, z))
        return {Near::kOne, z, z};
    std::size_t const nFirst = PlaceOf(IntervalOf(z - kReach * m_dTolerance));
    std::size_t const nLast = PlaceOf(IntervalOf(z + kReach * m_dTolerance));
    Extremes near;
    LookAt(m_Lines[nFirst], z, near);
    if (nLast != nFirst) LookAt(m_Lines[nLast], z, near);
    if (m_Lines[nFirst].nCount > kCapacity || m_Lines[nLast].nCount > kCapacity)
        return FindBeside(z, nFirst, nLast);
    constexpr std::array<Near, 3> kNear = {Near::kNone, Near::kOne, Near::kTwo};
    return {near.nCount < kNear.size() ? kNear[near.nCount] : Near::kUnknown, near.dLeast, near.dGreatest};
}

// Whether any place of the line, used or not, has the height, bit for bit.
bool HeightSet::MayHold(Line const& line, double dHeight) {
    bool bFound = false;
    for (double const d : line.heights)
        bFound |= std::bit_cast<std::uint64_t>(d) == std::bit_cast<std::uint64_t>(dHeight);
    return bFound;
}

// Without branches: what is near cannot be foreseen.
void HeightSet::LookAt(Line const& line, double z, Extremes& near) const {
    for (std::size_t i = 0; i < kCapacity; ++i) {
        double const d = line.heights[i] - z;
        bool const bNear = !(d > m_dTolerance) & !(d < -m_dTolerance) & (i < line.nCount);
        double const dLow = bNear ? line.heights[i] : near.dLeast;
        double const dHigh = bNear ? line.heights[i] : near.dGreatest;
        near.nCount += bNear ? 1 : 0;
        near.dLeast = dLow < near.dLeast ? dLow : near.dLeast;
        near.dGreatest = dHigh > near.dGreatest ? dHigh : near.dGreatest;
    }
}

// As Find, where heights stand beside the lines of their intervals.
HeightSet::Answer HeightSet::FindBeside(double z, std::size_t nFirst, std::size_t nLast) const {
    Answer answer;
    for (std::size_t const nPlace : {nFirst, Beside(nFirst), nLast, Beside(nLast)}) {
        Line const& line = m_Lines[nPlace];
        std::size_t const nHeights = std::min<std::size_t>(line.nCount, kCapacity);
        for (std::size_t i = 0; i < nHeights; ++i) {
            double const d = line.heights[i] - z;
            if (!(d > m_dTolerance) && !(d < -m_dTolerance)) Meet(line.heights[i], answer);
        }
    }
    for (std::size_t const nPlace : {nFirst, nLast}) {
        bool const bElsewhere =
            m_Lines[nPlace].nCount > kCapacity && m_Lines[Beside(nPlace)].nCount > kCapacity;
        if (bElsewhere) answer.near = Near::kUnknown;
    }
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

bool HeightSet::HoldsAt(std::size_t nPlace, double dHeight) const {
    return Holds(m_Lines[nPlace], dHeight) ||
           (m_Lines[nPlace].nCount > kCapacity && Holds(m_Lines[Beside(nPlace)], dHeight));
}

void HeightSet::Add(double dHeight) {
    if (HoldsAt(PlaceOf(IntervalOf(dHeight)), dHeight)) return;
    if (++m_nHeights > kHeightsPerLine * m_Lines.size()) Grow();
    Insert(dHeight);
}

void HeightSet::Insert(double dHeight) {
    std::size_t const nPlace = PlaceOf(IntervalOf(dHeight));
    for (std::size_t const n : {nPlace, Beside(nPlace)}) {
        Line& line = m_Lines[n];
        if (line.nCount < kCapacity) {
            line.heights[line.nCount++] = dHeight;
            return;
        }
        line.nCount = kCapacity + 1;
    }
    m_Overflow.push_back(dHeight);
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
