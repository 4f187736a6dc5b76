#include "contours/nesting/BoxPairs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace varnet {

namespace {

// Sides of squares are powers of two of a millimetre, with these exponents. Smaller boxes stand in the finest
// grid, and the coarsest has squares larger than any box whose coordinates are near enough.
constexpr int kFinest = -20;
constexpr int kCoarsest = 21;
constexpr double kFarthest = 1 << (kCoarsest - 2);
constexpr double kFinestPerMillimetre = 1 << -kFinest;

// So many looks, at boxes and at rows of squares, and so many pairs, for each box.
constexpr std::size_t kMostLooks = 32;
constexpr std::size_t kMostPairs = 8;

// A box whose sides stand the wrong way round, or are not numbers, has nothing inside.
bool MayHold(PlanBox const& box) { return box.xMin < box.xMax && box.yMin < box.yMax; }

// False for what is not a number, too.
bool IsNear(PlanBox const& box) {
    return std::fabs(box.xMin) <= kFarthest && std::fabs(box.yMin) <= kFarthest &&
           std::fabs(box.xMax) <= kFarthest && std::fabs(box.yMax) <= kFarthest;
}

// The finest grid whose squares are larger than the box. The exponents of doubles have a bias of 1023.
int GridFor(PlanBox const& box) {
    double const dSize = std::max(std::fabs(box.xMax - box.xMin), std::fabs(box.yMax - box.yMin));
    auto const nExponent = static_cast<int>(std::bit_cast<std::uint64_t>(dSize) >> 52) - 1023;
    return std::max(nExponent + 1, kFinest);
}

// A square of the finest grid. Shifted to the right by so many bits, its numbers are those of the square of a
// coarser grid that holds it.
struct Square {
    std::int64_t nColumn;
    std::int64_t nRow;
};

// Rounds towards zero, which does no harm: two numbers that are less than a whole number apart are not
// farther apart than that when both are rounded.
Square SquareOf(PlanBox const& box) {
    return {static_cast<std::int64_t>(box.xMin * kFinestPerMillimetre),
            static_cast<std::int64_t>(box.yMin * kFinestPerMillimetre)};
}

// The four inequalities that matter where the sides of both stand the right way round. Without branches:
// boxes beside each other are as often above as below.
bool MayBeInside(PlanBox const& outer, PlanBox const& inner) {
    unsigned const nLow =
        static_cast<unsigned>(outer.xMin < inner.xMin) & static_cast<unsigned>(outer.yMin < inner.yMin);
    unsigned const nHigh =
        static_cast<unsigned>(inner.xMax < outer.xMax) & static_cast<unsigned>(inner.yMax < outer.yMax);
    return (nLow & nHigh) != 0;
}

}  // namespace

// Boxes that may have others inside, by square.
class BoxPairs::Grids {
public:
    explicit Grids(std::span<PlanBox const> boxes);

    // Calls visit(outer) for each box that has this one inside, once or several times. nLooks grows.
    template <class Visit>
    void VisitAround(PlanBox const& inner, std::size_t& nLooks, Visit const& visit) const;

private:
    struct Entry {
        PlanBox box;
        std::uint32_t nBox;
    };

    // Squares of a row follow each other, and rows lie scattered.
    std::size_t PlaceOf(int nGrid, std::int64_t nColumn, std::int64_t nRow) const {
        constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15u;
        auto const nKey = static_cast<std::uint64_t>(nRow) * 64 + static_cast<std::uint64_t>(nGrid - kFinest);
        return static_cast<std::size_t>((nKey * kSpread >> 32) + static_cast<std::uint64_t>(nColumn)) &
               m_nMask;
    }

    std::size_t m_nMask;
    std::vector<int> m_Used;             // the grids with boxes, the coarsest first
    std::vector<std::uint32_t> m_First;  // by place, and one more
    std::vector<Entry> m_Entries;
};

BoxPairs::Grids::Grids(std::span<PlanBox const> boxes)
    : m_nMask(std::bit_ceil(2 * boxes.size() + 1) - 1), m_First(m_nMask + 2) {
    constexpr auto kNowhere = std::numeric_limits<std::uint32_t>::max();
    std::vector<std::uint32_t> places(boxes.size(), kNowhere);
    std::uint64_t nUsed = 0;
    std::size_t nEntries = 0;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        PlanBox const& box = boxes[i];
        if (!MayHold(box)) continue;
        int const nGrid = GridFor(box);
        int const nShift = nGrid - kFinest;
        Square const square = SquareOf(box);
        std::size_t const nPlace = PlaceOf(nGrid, square.nColumn >> nShift, square.nRow >> nShift);
        places[i] = static_cast<std::uint32_t>(nPlace);
        ++m_First[nPlace];
        nUsed |= std::uint64_t{1} << nShift;
        ++nEntries;
    }
    for (int nGrid = kCoarsest; nGrid >= kFinest; --nGrid) {
        if ((nUsed >> (nGrid - kFinest) & 1) != 0) m_Used.push_back(nGrid);
    }
    // Entries are put in from the last of their place to the first.
    std::uint32_t nBefore = 0;
    for (std::uint32_t& n : m_First) n = nBefore += n;
    m_Entries.resize(nEntries);
    for (std::size_t i = boxes.size(); i-- > 0;) {
        if (places[i] != kNowhere)
            m_Entries[--m_First[places[i]]] = {boxes[i], static_cast<std::uint32_t>(i)};
    }
}

template <class Visit>
void BoxPairs::Grids::VisitAround(PlanBox const& inner, std::size_t& nLooks, Visit const& visit) const {
    auto const look = [&](std::size_t nFirst, std::size_t nEnd) {
        nLooks += nEnd - nFirst;
        for (std::size_t i = nFirst; i < nEnd; ++i) {
            Entry const& entry = m_Entries[i];
            if (MayBeInside(entry.box, inner) && IsBoxInside(entry.box, inner)) visit(entry.nBox);
        }
    };
    int const nLeast = GridFor(inner);
    Square const square = SquareOf(inner);
    for (int const nGrid : m_Used) {
        if (nGrid < nLeast) break;
        int const nShift = nGrid - kFinest;
        for (std::int64_t const nBelow : {1, 0}) {
            std::size_t const nPlace =
                PlaceOf(nGrid, square.nColumn >> nShift, (square.nRow >> nShift) - nBelow);
            ++nLooks;
            if (nPlace > 0) {
                look(m_First[nPlace - 1], m_First[nPlace + 1]);
            } else {
                look(m_First[m_nMask], m_First[m_nMask + 1]);
                look(m_First[0], m_First[1]);
            }
        }
    }
}

std::optional<BoxPairs> BoxPairs::Find(std::span<PlanBox const> boxes) {
    auto const isBeyond = [](PlanBox const& box) { return MayHold(box) && !IsNear(box); };
    if (std::any_of(boxes.begin(), boxes.end(), isBeyond)) return std::nullopt;
    Grids const grids(boxes);
    std::size_t const nCredit = boxes.size() / 16 + 1;
    std::size_t nLooks = 0;
    std::vector<Pair> pairs;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        if (!IsNear(boxes[i])) continue;  // so it is in none that is
        auto const nInner = static_cast<std::uint32_t>(i);
        grids.VisitAround(boxes[i], nLooks, [&pairs, nInner](std::uint32_t nOuter) {
            pairs.push_back({std::min(nInner, nOuter), std::max(nInner, nOuter)});
        });
        if (nLooks > kMostLooks * (i + nCredit)) return std::nullopt;
        if (pairs.size() > kMostPairs * boxes.size()) return std::nullopt;
    }
    return BoxPairs(boxes.size(), pairs);
}

BoxPairs::BoxPairs(std::size_t nBoxes, std::vector<Pair> const& pairs) : m_First(nBoxes + 1) {
    for (Pair const& pair : pairs) ++m_First[pair.nEarlier];
    std::uint32_t nBefore = 0;
    for (std::uint32_t& n : m_First) n = nBefore += n;
    m_Later.resize(pairs.size());
    for (Pair const& pair : pairs) m_Later[--m_First[pair.nEarlier]] = pair.nLater;
    // Pairs that were found more than once are closed up.
    auto kept = m_Later.begin();
    auto begin = m_Later.begin();
    for (std::size_t i = 0; i < nBoxes; ++i) {
        auto const end = m_Later.begin() + m_First[i + 1];
        std::sort(begin, end);
        m_First[i] = static_cast<std::uint32_t>(kept - m_Later.begin());
        kept = std::unique_copy(begin, end, kept);
        begin = end;
    }
    m_First[nBoxes] = static_cast<std::uint32_t>(kept - m_Later.begin());
}

}  // namespace varnet
