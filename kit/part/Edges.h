#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "part/LargeVector.h"
#include "part/Pace.h"
#include "varnet/Geometry.h"

namespace varnet {

// The edge k of triangle t, from its corner k to the next, has the number 3 t + k.

inline std::int32_t NextEdge(std::int32_t edge) { return edge % 3 == 2 ? edge - 2 : edge + 1; }
inline std::int32_t PreviousEdge(std::int32_t edge) { return edge % 3 == 0 ? edge + 2 : edge - 1; }

inline std::int32_t StartOf(std::span<Triangle const> triangles, std::int32_t edge) {
    return triangles[static_cast<std::size_t>(edge / 3)][static_cast<std::size_t>(edge % 3)];
}
inline std::int32_t EndOf(std::span<Triangle const> triangles, std::int32_t edge) {
    return StartOf(triangles, NextEdge(edge));
}
/// The corner that is not on the edge.
inline std::int32_t ApexOf(std::span<Triangle const> triangles, std::int32_t edge) {
    return StartOf(triangles, PreviousEdge(edge));
}

/// Which edge of which triangle lies across.
struct EdgeTable {
    LargeVector<std::int32_t> across;  ///< for each edge one that runs the other way, -1 for none
    std::int64_t open = 0;             ///< edges without one
    std::int64_t conflicts = 0;        ///< pairs of vertices with two facets that run the same way
    std::int64_t many = 0;             ///< pairs of vertices with more than two facets
    std::vector<std::int32_t> crowd;   ///< the edges of those, one group behind the other
    std::vector<std::int32_t> groups;  ///< where the groups begin in crowd, and its end
    std::vector<std::int32_t> twins;   ///< edges that conflict, in pairs
};

/// Pairs the edges of all triangles, in linear time. Where more than two triangles share an edge, they are
/// paired in their order.
EdgeTable FindEdges(std::span<Triangle const> triangles, std::size_t points, Pace const& pace);

/// Whether triangles may stand on the same three corners, by a table of FindEdges. False is certain.
bool MayHaveCopies(EdgeTable const& edges);

}  // namespace varnet
