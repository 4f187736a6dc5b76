#include "contours/PointSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

constexpr std::size_t kLeafSize = 8;
constexpr double kInfinite = std::numeric_limits<double>::infinity();

// More than the depth of any tree.
constexpr std::size_t kStackSize = 64;

double Squares(double dx, double dy) { return dx * dx + dy * dy; }

// How far a range is from a coordinate, and how far its farther end.
double Gap(double dLow, double dHigh, double d) {
    if (dLow > d) return dLow - d;
    return d > dHigh ? d - dHigh : 0.0;
}

double Reach(double dLow, double dHigh, double d) {
    double const dToLow = std::fabs(dLow - d);
    double const dToHigh = std::fabs(dHigh - d);
    // An infinite coordinate against an infinite end.
    if (std::isnan(dToLow) || std::isnan(dToHigh)) return kInfinite;
    return std::max(dToLow, dToHigh);
}

}  // namespace

// What a search aims at: the value of a point, the best value that a point in a node could have, and which of
// two values is better. Nodes without points have none that is any good.

struct PointSearch::NearestFirst {
    double x;
    double y;
    double dBest;

    double Value(Point const& point) const { return Squares(point.x - x, point.y - y); }
    double Bound(Node const& node) const {
        return Squares(Gap(node.box[0], node.box[2], x), Gap(node.box[1], node.box[3], y));
    }
    static bool IsBetter(double a, double b) { return a < b; }
};

struct PointSearch::FarthestFirst {
    double x;
    double y;
    double dBest;

    double Value(Point const& point) const { return Squares(point.x - x, point.y - y); }
    double Bound(Node const& node) const {
        if (node.nFirstRank == kGone) return -kInfinite;
        return Squares(Reach(node.box[0], node.box[2], x), Reach(node.box[1], node.box[3], y));
    }
    static bool IsBetter(double a, double b) { return a > b; }
};

PointSearch::PointSearch(std::vector<Point> points) : m_Points(std::move(points)) {
    std::int32_t nMost = kNone;
    for (Point const& point : m_Points) nMost = std::max(nMost, point.nRank);
    m_Places.assign(static_cast<std::size_t>(nMost) + 1, kNone);
    std::erase_if(m_Points, [](Point const& p) { return std::isnan(p.x) || std::isnan(p.y); });
    while (m_nLeaves * kLeafSize < m_Points.size()) m_nLeaves *= 2;
    m_Nodes.resize(2 * m_nLeaves - 1);
    m_nLeft.resize(m_nLeaves);
    Build(0, 0, m_nLeaves);
    for (std::size_t i = 0; i < m_Points.size(); ++i) {
        m_Places[static_cast<std::size_t>(m_Points[i].nRank)] = static_cast<std::int32_t>(i);
    }
}

PointSearch::Node PointSearch::Around(std::size_t nBegin, std::size_t nEnd) const {
    Node node{{kInfinite, kInfinite, -kInfinite, -kInfinite}, kGone};
    for (std::size_t i = nBegin; i < nEnd; ++i) {
        Point const& point = m_Points[i];
        node.box[0] = std::min(node.box[0], point.x);
        node.box[1] = std::min(node.box[1], point.y);
        node.box[2] = std::max(node.box[2], point.x);
        node.box[3] = std::max(node.box[3], point.y);
        node.nFirstRank = std::min(node.nFirstRank, point.nRank);
    }
    return node;
}

// Points of a node are divided at the middle of the axis on which they spread most; those at one place by
// their ranks, so that the first of them is found without a look at all.
void PointSearch::Build(std::size_t nNode, std::size_t nFirstLeaf, std::size_t nLeavesBelow) {
    std::size_t const nBegin = LeafBegin(nFirstLeaf);
    std::size_t const nEnd = LeafBegin(nFirstLeaf + nLeavesBelow);
    m_Nodes[nNode] = Around(nBegin, nEnd);
    if (nLeavesBelow == 1) {
        m_nLeft[nFirstLeaf] = static_cast<std::int32_t>(nEnd - nBegin);
        return;
    }
    BoxKey const& box = m_Nodes[nNode].box;
    double Point::*const pAxis = box[2] - box[0] >= box[3] - box[1] ? &Point::x : &Point::y;
    std::size_t const nHalf = nLeavesBelow / 2;
    auto const at = [this](std::size_t i) { return m_Points.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(nBegin), at(LeafBegin(nFirstLeaf + nHalf)), at(nEnd),
                     [pAxis](Point const& a, Point const& b) {
                         return a.*pAxis != b.*pAxis ? a.*pAxis < b.*pAxis : a.nRank < b.nRank;
                     });
    Build(2 * nNode + 1, nFirstLeaf, nHalf);
    Build(2 * nNode + 2, nFirstLeaf + nHalf, nHalf);
}

std::size_t PointSearch::LeafOf(std::size_t nPoint) const {
    std::size_t nLeaf = nPoint * m_nLeaves / m_Points.size();
    while (LeafBegin(nLeaf + 1) <= nPoint) ++nLeaf;
    return nLeaf;
}

PointSearch::Node PointSearch::AroundChildren(std::size_t nNode) const {
    Node const& left = m_Nodes[2 * nNode + 1];
    Node const& right = m_Nodes[2 * nNode + 2];
    return {{std::min(left.box[0], right.box[0]), std::min(left.box[1], right.box[1]),
             std::max(left.box[2], right.box[2]), std::max(left.box[3], right.box[3])},
            std::min(left.nFirstRank, right.nFirstRank)};
}

void PointSearch::Remove(std::int32_t nRank) {
    if (nRank < 0 || static_cast<std::size_t>(nRank) >= m_Places.size()) return;
    std::int32_t const nPlace = std::exchange(m_Places[static_cast<std::size_t>(nRank)], kNone);
    if (nPlace == kNone) return;
    std::size_t const nLeaf = LeafOf(static_cast<std::size_t>(nPlace));
    std::size_t const nBegin = LeafBegin(nLeaf);
    std::size_t const nLast = nBegin + static_cast<std::size_t>(--m_nLeft[nLeaf]);
    if (nLast != static_cast<std::size_t>(nPlace)) {
        m_Points[static_cast<std::size_t>(nPlace)] = m_Points[nLast];
        m_Places[static_cast<std::size_t>(m_Points[nLast].nRank)] = nPlace;
    }
    std::size_t nNode = nLeaf + m_nLeaves - 1;
    Node node = Around(nBegin, nLast);
    while (node.nFirstRank != m_Nodes[nNode].nFirstRank || node.box != m_Nodes[nNode].box) {
        m_Nodes[nNode] = node;
        if (nNode == 0) return;
        nNode = (nNode - 1) / 2;
        node = AroundChildren(nNode);
    }
}

// Goes down to the better child first, and keeps the other for later.
template <class Aim>
std::int32_t PointSearch::Find(Aim aim) const {
    struct Item {
        double dBound;
        std::size_t nNode;
    };
    std::array<Item, kStackSize> stack;
    std::size_t nItems = 0;
    std::int32_t nBest = kNone;
    auto const canWin = [&aim, &nBest](double dValue, std::int32_t nRank) {
        return Aim::IsBetter(dValue, aim.dBest) || (dValue == aim.dBest && nRank < nBest);
    };
    stack[nItems++] = {aim.Bound(m_Nodes[0]), 0};
    while (nItems > 0) {
        Item item = stack[--nItems];
        if (!canWin(item.dBound, m_Nodes[item.nNode].nFirstRank)) continue;
        while (!IsLeaf(item.nNode)) {
            std::size_t const nLeft = 2 * item.nNode + 1;
            Item left{aim.Bound(m_Nodes[nLeft]), nLeft};
            Item right{aim.Bound(m_Nodes[nLeft + 1]), nLeft + 1};
            bool const bRight =
                Aim::IsBetter(right.dBound, left.dBound) ||
                (right.dBound == left.dBound && m_Nodes[nLeft + 1].nFirstRank < m_Nodes[nLeft].nFirstRank);
            item = bRight ? right : left;
            stack[nItems++] = bRight ? left : right;
        }
        std::size_t const nLeaf = item.nNode - (m_nLeaves - 1);
        std::size_t const nBegin = LeafBegin(nLeaf);
        for (std::size_t i = nBegin; i < nBegin + static_cast<std::size_t>(m_nLeft[nLeaf]); ++i) {
            double const dValue = aim.Value(m_Points[i]);
            if (!canWin(dValue, m_Points[i].nRank)) continue;
            aim.dBest = dValue;
            nBest = m_Points[i].nRank;
        }
    }
    return nBest;
}

std::int32_t PointSearch::Nearest(double x, double y, double dBelow2) const {
    // From there, nothing is at a finite distance.
    if (!std::isfinite(x) || !std::isfinite(y)) return kNone;
    return Find(NearestFirst{x, y, dBelow2});
}

std::int32_t PointSearch::Farthest(double x, double y, double dAbove2) const {
    if (std::isnan(x) || std::isnan(y)) return kNone;
    return Find(FarthestFirst{x, y, dAbove2});
}

void PointSearch::FindInBox(BoxKey const& box, std::vector<std::int32_t>& ranks) const {
    auto const meets = [&box](BoxKey const& other) {
        return box[0] <= other[2] && other[0] <= box[2] && box[1] <= other[3] && other[1] <= box[3];
    };
    std::array<std::size_t, kStackSize> stack;
    std::size_t nItems = 0;
    stack[nItems++] = 0;
    while (nItems > 0) {
        std::size_t const nNode = stack[--nItems];
        if (m_Nodes[nNode].nFirstRank == kGone || !meets(m_Nodes[nNode].box)) continue;
        if (!IsLeaf(nNode)) {
            stack[nItems++] = 2 * nNode + 2;
            stack[nItems++] = 2 * nNode + 1;
            continue;
        }
        std::size_t const nLeaf = nNode - (m_nLeaves - 1);
        std::size_t const nBegin = LeafBegin(nLeaf);
        for (std::size_t i = nBegin; i < nBegin + static_cast<std::size_t>(m_nLeft[nLeaf]); ++i) {
            Point const& point = m_Points[i];
            if (meets({point.x, point.y, point.x, point.y})) ranks.push_back(point.nRank);
        }
    }
}
