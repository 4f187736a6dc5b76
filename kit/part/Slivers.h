#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

/// Takes facets out that have been marked by a corner of -1, and keeps the order of the rest.
void DropMarked(LargeVector<Triangle>& triangles);

/// What became of facets whose doubled area is not above kCollinear.
struct SliverCounts {
    std::int64_t turned = 0;  ///< taken out
    std::int64_t small = 0;   ///< stay: they are small, but no line
    std::int64_t stuck = 0;   ///< stay: taking them out would open edges, or make others of their kind
};

/// Takes out facets whose corners lie on a line, up to the rounding of their coordinates: the longest edge is
/// turned to the neighbour, which so is divided at the corner in between; where two corners lie within a
/// rounding of each other, the later one becomes the earlier. What is closed stays closed. The table fits the
/// mesh afterwards.
SliverCounts TakeOutSlivers(FlatMesh& mesh, EdgeTable& edges, Pace const& pace);

}  // namespace varnet
