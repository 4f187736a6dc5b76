#pragma once

#include <cstddef>
#include <cstdint>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

/// What became of the holes of a mesh.
struct HoleCounts {
    std::int64_t filled = 0;
    std::int64_t facetsAdded = 0;
    std::int64_t tooLong = 0;  ///< with a rim longer than asked for
};

/// A rim of more than kMostRimEdges edges is filled between so many of its corners first.
inline constexpr std::size_t kCoarseCorners = 200;

/// Closes holes with rims up to the length with facets behind the others, of the least area of all that have
/// the rim's corners alone, the first that is found of several, by dynamic programming (Barequet and Sharir,
/// Filling gaps in the boundary of a polyhedron, 1995); the area of a rim that is filled in parts is the
/// least of each part. Where possible, they have no edge that the mesh already has. A rim that touches itself
/// is several. A loose facet gets no back. The table fits the mesh before, not afterwards.
HoleCounts FillHoles(FlatMesh& mesh, EdgeTable const& edges, double longest, Pace const& pace);

}  // namespace varnet
