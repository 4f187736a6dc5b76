#include "contours/ordering/PointSearch.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>
#include <utility>

#include "foundation/Require.h"

namespace varnet {

namespace {

constexpr std::size_t kLeafSize = 8;

// Fewer are not worth cells.
constexpr std::size_t kFewPoints = 64;

// Of the number of cells along each axis: two of them fill a key.
constexpr std::uint32_t kMostCellBits = 16;

// Instead of a place, for ranks without a point. Other numbers below zero are the complements of places that
// are left.
constexpr std::int32_t kNever = std::numeric_limits<std::int32_t>::min();

constexpr double kInfinite = std::numeric_limits<double>::infinity();

double Squares(double dx, double dy) { return dx * dx + dy * dy; }

// How far a range is from a coordinate, and how far its farther end.
double Gap(double dLow, double dHigh, double d) { return std::max(std::max(dLow - d, d - dHigh), 0.0); }

double Reach(double dLow, double dHigh, double d) {
    double const dToLow = std::fabs(dLow - d);
    double const dToHigh = std::fabs(dHigh - d);
    // An infinite coordinate against an infinite end.
    if (std::isnan(dToLow) || std::isnan(dToHigh)) return kInfinite;
    return std::max(dToLow, dToHigh);
}

using Points = std::span<PointSearch::Point>;

// Divides points at the middle of the axis on which they spread most, and the halves again, down to a leaf.
// Those at one place are divided by their ranks, so that the first of them is found without a look at all.
void SortAsTree(Points points) {
    if (points.size() <= kLeafSize) return;
    auto const [xLow, xHigh] = std::minmax_element(points.begin(), points.end(),
                                                   [](auto const& a, auto const& b) { return a.x < b.x; });
    auto const [yLow, yHigh] = std::minmax_element(points.begin(), points.end(),
                                                   [](auto const& a, auto const& b) { return a.y < b.y; });
    double PointSearch::Point::*const pAxis =
        xHigh->x - xLow->x >= yHigh->y - yLow->y ? &PointSearch::Point::x : &PointSearch::Point::y;
    std::size_t const nHalf = points.size() / 2;
    std::nth_element(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(nHalf), points.end(),
                     [pAxis](auto const& a, auto const& b) {
                         return a.*pAxis != b.*pAxis ? a.*pAxis < b.*pAxis : a.nRank < b.nRank;
                     });
    SortAsTree(points.first(nHalf));
    SortAsTree(points.subspan(nHalf));
}

// The place of a cell on Hilbert's curve through as many cells as so many bits count along each axis. Square
// by square, the curve in each quarter is turned: coordinates are swapped, and counted from the other end.
std::uint32_t PlaceOnCurve(std::uint32_t x, std::uint32_t y, std::uint32_t nBits) {
    std::uint32_t nPlace = 0;
    std::uint32_t nSwap = 0;
    std::uint32_t nBackward = 0;
    for (std::uint32_t nBit = nBits; nBit-- > 0;) {
        std::uint32_t const nX = (x >> nBit) & 1;
        std::uint32_t const nY = (y >> nBit) & 1;
        std::uint32_t const nExchange = (nX ^ nY) & nSwap;
        std::uint32_t const nRight = nX ^ nExchange ^ nBackward;
        std::uint32_t const nUpper = nY ^ nExchange ^ nBackward;
        nPlace = (nPlace << 2) | ((3 * nRight) ^ nUpper);
        nBackward ^= nRight & ~nUpper;
        nSwap ^= nUpper ^ 1;
    }
    return nPlace;
}

struct Cell {
    std::uint32_t nKey;  // its place on the curve
    std::uint32_t nPoint;
};

// By counting, eleven bits of the key at a time; equal ones stay in their order.
void SortByKey(std::vector<Cell>& cells, std::uint32_t nKeyBits) {
    constexpr std::uint32_t kDigitBits = 11;
    constexpr std::uint32_t kDigits = 1u << kDigitBits;
    std::vector<Cell> sorted(cells.size());
    for (std::uint32_t nShift = 0; nShift < nKeyBits; nShift += kDigitBits) {
        std::array<std::uint32_t, kDigits + 1> begins{};
        for (Cell const& cell : cells) ++begins[((cell.nKey >> nShift) & (kDigits - 1)) + 1];
        for (std::size_t i = 1; i <= kDigits; ++i) begins[i] += begins[i - 1];
        for (Cell const& cell : cells) sorted[begins[(cell.nKey >> nShift) & (kDigits - 1)]++] = cell;
        cells.swap(sorted);
    }
}

std::vector<Cell> CellsOf(std::vector<PointSearch::Point> const& points, PlanBox const& box,
                          std::uint32_t nBits) {
    double const dMost = (1u << nBits) - 1;
    double const dPerX = dMost / (box.xMax - box.xMin);
    double const dPerY = dMost / (box.yMax - box.yMin);
    auto const numberOf = [dMost](double d) {
        return d >= 0.0 && d <= dMost ? static_cast<std::uint32_t>(d) : 0u;  // not where there is no extent
    };
    std::vector<Cell> cells(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        cells[i] = {PlaceOnCurve(numberOf((points[i].x - box.xMin) * dPerX),
                                 numberOf((points[i].y - box.yMin) * dPerY), nBits),
                    static_cast<std::uint32_t>(i)};
    }
    return cells;
}

// Puts points side by side that are near each other. The order decides how fast a search is, not what it
// finds.
void SortForLocality(std::vector<PointSearch::Point>& points, PlanBox const& box) {
    if (points.size() <= kFewPoints) return SortAsTree(points);
    // Two or more cells for each point.
    auto const nBits =
        std::min(kMostCellBits, static_cast<std::uint32_t>(std::bit_width(points.size())) / 2 + 1);
    std::vector<Cell> cells = CellsOf(points, box, nBits);
    SortByKey(cells, 2 * nBits);
    std::vector<PointSearch::Point> sorted(points.size());
    for (std::size_t i = 0; i < cells.size(); ++i) sorted[i] = points[cells[i].nPoint];
    points.swap(sorted);
    for (std::size_t nBegin = 0; nBegin < cells.size();) {
        std::size_t nEnd = nBegin + 1;
        while (nEnd < cells.size() && cells[nEnd].nKey == cells[nBegin].nKey) ++nEnd;
        SortAsTree(Points(points).subspan(nBegin, nEnd - nBegin));
        nBegin = nEnd;
    }
}

}  // namespace

// What a search aims at: the value of a point, the best value that a point in a node could have, and which of
// two values is better; and the best point so far. Nodes without points have no value that is any good.

struct PointSearch::NearestFirst {
    double x;
    double y;
    double dBest;
    std::int32_t nBest;

    double Value(Point const& point) const { return Squares(point.x - x, point.y - y); }
    double Bound(Node const& node) const {
        return Squares(Gap(node.box.xMin, node.box.xMax, x), Gap(node.box.yMin, node.box.yMax, y));
    }
    bool CanWin(double dValue, std::int32_t nRank) const {
        return dValue < dBest || (dValue == dBest && nRank < nBest);
    }
    static bool IsBetter(double a, double b) { return a < b; }
};

struct PointSearch::FarthestFirst {
    double x;
    double y;
    double dBest;
    std::int32_t nBest;

    double Value(Point const& point) const { return Squares(point.x - x, point.y - y); }
    double Bound(Node const& node) const {
        if (node.nFirstRank == kGone) return -kInfinite;
        return Squares(Reach(node.box.xMin, node.box.xMax, x), Reach(node.box.yMin, node.box.yMax, y));
    }
    bool CanWin(double dValue, std::int32_t nRank) const {
        return dValue > dBest || (dValue == dBest && nRank < nBest);
    }
    static bool IsBetter(double a, double b) { return a > b; }
};

PointSearch::PointSearch(std::vector<Point> points) : m_Points(std::move(points)) {
    std::int32_t nMost = kNone;
    for (Point const& point : m_Points) nMost = std::max(nMost, point.nRank);
    m_Places.assign(static_cast<std::size_t>(nMost) + 1, kNever);
    std::erase_if(m_Points, [](Point const& p) { return std::isnan(p.x) || std::isnan(p.y); });
    m_Shape.nLeaves = std::max<std::size_t>(1, (m_Points.size() + kLeafSize - 1) / kLeafSize);
    m_Nodes.resize(m_Shape.NodeCount());
    m_nLeft.resize(m_Shape.nLeaves);
    SortForLocality(m_Points, Around(0, m_Points.size()).box);
    Build();
}

PointSearch::Node PointSearch::Around(std::size_t nBegin, std::size_t nEnd) const {
    Node node{{}, kGone};
    for (std::size_t i = nBegin; i < nEnd; ++i) {
        Point const& point = m_Points[i];
        node.box = Union(node.box, {point.x, point.y, point.x, point.y});
        node.nFirstRank = std::min(node.nFirstRank, point.nRank);
    }
    return node;
}

void PointSearch::Build() {
    for (std::size_t nLeaf = 0; nLeaf < m_Shape.nLeaves; ++nLeaf) {
        std::size_t const nBegin = nLeaf * kLeafSize;
        std::size_t const nEnd = std::min(nBegin + kLeafSize, m_Points.size());
        m_Nodes[m_Shape.NodeOf(nLeaf)] = Around(nBegin, nEnd);
        m_nLeft[nLeaf] = static_cast<std::uint8_t>(nEnd - nBegin);
        for (std::size_t i = nBegin; i < nEnd; ++i) {
            std::int32_t& nPlace = m_Places[static_cast<std::size_t>(m_Points[i].nRank)];
            VARNET_REQUIRE(nPlace == kNever);
            nPlace = static_cast<std::int32_t>(i);
        }
    }
    for (std::size_t i = m_Shape.InnerCount(); i-- > 0;) m_Nodes[i] = AroundChildren(i);
}

PointSearch::Node PointSearch::AroundChildren(std::size_t nNode) const {
    Node const& left = m_Nodes[CompleteTree::Left(nNode)];
    Node const& right = m_Nodes[CompleteTree::Right(nNode)];
    return {Union(left.box, right.box), std::min(left.nFirstRank, right.nFirstRank)};
}

void PointSearch::Remove(std::int32_t nRank) {
    if (nRank < 0 || static_cast<std::size_t>(nRank) >= m_Places.size()) return;
    std::int32_t const nPlace = m_Places[static_cast<std::size_t>(nRank)];
    if (nPlace < 0) return;
    m_Places[static_cast<std::size_t>(nRank)] = ~nPlace;
    std::size_t const nLeaf = static_cast<std::size_t>(nPlace) / kLeafSize;
    std::size_t const nBegin = nLeaf * kLeafSize;
    std::size_t const nLast = nBegin + --m_nLeft[nLeaf];
    if (nLast != static_cast<std::size_t>(nPlace)) {
        m_Points[static_cast<std::size_t>(nPlace)] = m_Points[nLast];
        m_Places[static_cast<std::size_t>(m_Points[nLast].nRank)] = nPlace;
    }
    std::size_t nNode = m_Shape.NodeOf(nLeaf);
    Node node = Around(nBegin, nLast);
    while (node.nFirstRank != m_Nodes[nNode].nFirstRank || node.box != m_Nodes[nNode].box) {
        m_Nodes[nNode] = node;
        if (nNode == 0) return;
        nNode = CompleteTree::Parent(nNode);
        node = AroundChildren(nNode);
    }
}

template <class Aim>
void PointSearch::LookInLeaf(Aim& aim, std::size_t nNode) const {
    std::size_t const nLeaf = m_Shape.LeafOf(nNode);
    std::size_t const nBegin = nLeaf * kLeafSize;
    for (std::size_t i = nBegin; i < nBegin + m_nLeft[nLeaf]; ++i) {
        double const dValue = aim.Value(m_Points[i]);
        if (!aim.CanWin(dValue, m_Points[i].nRank)) continue;
        aim.dBest = dValue;
        aim.nBest = m_Points[i].nRank;
    }
}

// Goes down to the better child first, and keeps the other for later.
template <class Aim>
void PointSearch::LookBelow(Aim& aim, std::size_t nTop) const {
    struct Item {
        double dBound;
        std::size_t nNode;
    };
    std::array<Item, CompleteTree::kStackSize> stack;
    std::size_t nItems = 0;
    stack[nItems++] = {aim.Bound(m_Nodes[nTop]), nTop};
    while (nItems > 0) {
        Item item = stack[--nItems];
        if (!aim.CanWin(item.dBound, m_Nodes[item.nNode].nFirstRank)) continue;
        while (!m_Shape.IsLeaf(item.nNode)) {
            std::size_t const nLeft = CompleteTree::Left(item.nNode);
            double const dLeft = aim.Bound(m_Nodes[nLeft]);
            double const dRight = aim.Bound(m_Nodes[nLeft + 1]);
            bool const bRight =
                Aim::IsBetter(dRight, dLeft) ||
                (dRight == dLeft && m_Nodes[nLeft + 1].nFirstRank < m_Nodes[nLeft].nFirstRank);
            Item const other{bRight ? dLeft : dRight, bRight ? nLeft : nLeft + 1};
            if (aim.CanWin(other.dBound, m_Nodes[other.nNode].nFirstRank)) stack[nItems++] = other;
            item.nNode = bRight ? nLeft + 1 : nLeft;
        }
        LookInLeaf(aim, item.nNode);
    }
}

// Where the point stands, or stood; kNone for ranks that never were there.
std::int32_t PointSearch::PlaceOf(std::int32_t nRank) const {
    if (nRank < 0 || static_cast<std::size_t>(nRank) >= m_Places.size()) return kNone;
    std::int32_t const nPlace = m_Places[static_cast<std::size_t>(nRank)];
    if (nPlace == kNever) return kNone;
    return nPlace >= 0 ? nPlace : ~nPlace;
}

std::int32_t PointSearch::Nearest(double x, double y, double dBelow2, std::int32_t nNearRank) const {
    // From there, nothing is at a finite distance.
    if (!std::isfinite(x) || !std::isfinite(y)) return kNone;
    NearestFirst aim{x, y, dBelow2, kNone};
    std::int32_t const nPlace = PlaceOf(nNearRank);
    if (nPlace == kNone) {
        LookBelow(aim, 0);
        return aim.nBest;
    }
    std::size_t nNode = m_Shape.NodeOf(static_cast<std::size_t>(nPlace) / kLeafSize);
    LookInLeaf(aim, nNode);
    for (; nNode > 0; nNode = CompleteTree::Parent(nNode)) {
        std::size_t const nSibling = CompleteTree::Sibling(nNode);
        if (aim.CanWin(aim.Bound(m_Nodes[nSibling]), m_Nodes[nSibling].nFirstRank)) LookBelow(aim, nSibling);
    }
    return aim.nBest;
}

std::int32_t PointSearch::Farthest(double x, double y, double dAbove2) const {
    if (std::isnan(x) || std::isnan(y)) return kNone;
    FarthestFirst aim{x, y, dAbove2, kNone};
    LookBelow(aim, 0);
    return aim.nBest;
}

void PointSearch::FindInBox(PlanBox const& box, std::vector<std::int32_t>& ranks) const {
    std::array<std::size_t, CompleteTree::kStackSize> stack;
    std::size_t nItems = 0;
    stack[nItems++] = 0;
    while (nItems > 0) {
        std::size_t const nNode = stack[--nItems];
        if (m_Nodes[nNode].nFirstRank == kGone || !Touch(box, m_Nodes[nNode].box)) continue;
        if (!m_Shape.IsLeaf(nNode)) {
            stack[nItems++] = CompleteTree::Right(nNode);
            stack[nItems++] = CompleteTree::Left(nNode);
            continue;
        }
        std::size_t const nLeaf = m_Shape.LeafOf(nNode);
        std::size_t const nBegin = nLeaf * kLeafSize;
        for (std::size_t i = nBegin; i < nBegin + m_nLeft[nLeaf]; ++i) {
            Point const& point = m_Points[i];
            if (Holds(box, point.x, point.y)) ranks.push_back(point.nRank);
        }
    }
}

}  // namespace varnet
