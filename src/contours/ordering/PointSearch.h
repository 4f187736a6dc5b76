#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "foundation/CompleteTree.h"
#include "foundation/PlanBox.h"

namespace varnet {

/// A set of points that grows smaller, and the nearest or farthest of those left.
///
/// The answers are those of computing (x - px)^2 + (y - py)^2 for every point in the order of their ranks, to
/// the bit: the first of equals counts, and what is not a number never does.
///
/// The points lie in one array, in the order of Hilbert's curve through cells (D. Hilbert, 1891), those of
/// crowded cells in the order of a k-d tree (J. L. Bentley, 1975); over them stands a balanced tree with a
/// box and the first rank below each node. Removal shrinks the boxes, and nodes without points are not
/// entered any more. A search goes up from a leaf nearby (J. L. Bentley, "K-d trees for semidynamic point
/// sets", 1990). A node is passed over when no point in its box could count. That is safe against rounding:
/// differences, squares and sums are rounded monotonically, so that the same expression, computed for the
/// nearest place of the box, is never greater than for a point inside; and likewise for the farthest.
class PointSearch {
public:
    static constexpr std::int32_t kNone = -1;

    struct Point {
        double x;
        double y;
        std::int32_t nRank;  ///< from 0; each only once
    };

    /// Points with a coordinate that is not a number are left out.
    explicit PointSearch(std::vector<Point> points);

    /// A rank that is not in the set, or not any more, is passed over.
    void Remove(std::int32_t nRank);

    /// The rank of the point nearest to a place, among those strictly nearer than the root of dBelow2, which
    /// is finite; kNone where there is none. The search is fastest with the rank of a point near the place,
    /// which may have been removed.
    std::int32_t Nearest(double x, double y, double dBelow2, std::int32_t nNearRank = kNone) const;
    /// The farthest one, among those strictly farther than the root of dAbove2.
    std::int32_t Farthest(double x, double y, double dAbove2) const;

    /// The ranks of all points in a box, its sides included, in no order.
    void FindInBox(PlanBox const& box, std::vector<std::int32_t>& ranks) const;

private:
    static constexpr std::int32_t kGone = std::numeric_limits<std::int32_t>::max();

    struct Node {
        PlanBox box;
        std::int32_t nFirstRank;  // kGone where nothing is left
    };

    struct NearestFirst;
    struct FarthestFirst;

    void Build();
    std::int32_t PlaceOf(std::int32_t nRank) const;
    Node Around(std::size_t nBegin, std::size_t nEnd) const;
    Node AroundChildren(std::size_t nNode) const;
    template <class Aim>
    void LookInLeaf(Aim& aim, std::size_t nNode) const;
    template <class Aim>
    void LookBelow(Aim& aim, std::size_t nNode) const;

    std::vector<Point> m_Points;         // by leaf; those of a leaf that are left stand in front
    std::vector<std::uint8_t> m_nLeft;   // by leaf
    std::vector<std::int32_t> m_Places;  // by rank: where in m_Points
    std::vector<Node> m_Nodes;
    CompleteTree m_Shape;
};

}  // namespace varnet
