#pragma once

#include <cstdint>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

/// The edges of a mesh, those of more than two facets paired by the angle about the edge.
EdgeTable FindPairedEdges(FlatMesh const& mesh, Pace const& pace);

/// Turns facets that contradict their shell, by a table of FindPairedEdges: of each shell the side of fewer
/// facets or, of as many, the one of less area. Where shells touch at edges of many facets, none is turned as
/// a whole for those: only patches that are small beside the edges which are closed by turning them. There
/// are never more open edges afterwards. Returns how many facets were turned, and then the table fits the
/// mesh.
std::int64_t TurnContradictions(FlatMesh& mesh, EdgeTable& edges, Pace const& pace);

}  // namespace varnet
