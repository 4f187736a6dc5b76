#pragma once

#include <cstdint>
#include <vector>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

/// Facets may be lost where points are joined within this share of the mesh's extent.
inline constexpr double kMostOfExtent = 1e-3;

/// What was done to close open edges.
struct ClosingCounts {
    std::int64_t welded = 0;
    std::int64_t split = 0;
    std::int64_t dropped = 0;  ///< facets that lost a corner
    double tolerance = 0.0;
};

/// Closes open edges where that can be done by joining the corners on them with near ones, and by dividing
/// facets at a corner that lies on their open edge: with the smallest of the tolerances, or none, that leaves
/// the fewest open. Corners are not joined where a facet would fold over or lose a corner, but where more
/// is closed by that: then facets that are no higher than the tolerance may, if that is below a thousandth of
/// the mesh's extent. Those that lose a corner go. The table fits the mesh
/// afterwards, and has no more open edges than before.
ClosingCounts CloseOpenEdges(FlatMesh& mesh, EdgeTable& edges, std::span<double const> tolerances,
                             Pace const& pace);

/// Leaves out facets that stand in the list once too often: groups of copies, hanging together, whose rim is
/// open with them and closed without them. Returns how many, and then the table fits the mesh.
std::int64_t LeaveOutCopies(FlatMesh& mesh, EdgeTable& edges, Pace const& pace);

}  // namespace varnet
