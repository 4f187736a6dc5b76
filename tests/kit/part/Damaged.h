#pragma once

#include "Shapes.h"

// Shapes that are whole, and yet open for a reader that does not take care; and shapes that are broken.

namespace shapes {

/// Two cubes of a side of 10 that touch in a face, in an edge, or in a vertex.
Mesh CubesAtFace();
Mesh CubesAtEdge();
Mesh CubesAtVertex();
/// Two cubes that touch in a face whose diagonals differ.
Mesh CubesAtFaceCrossed();
/// Two cubes of a side of 10 that overlap by 5 in each direction, and share no corner.
Mesh CubesOverlapping();
/// A cube of a side of 30 with one of a side of 10 in the middle; the inner one faces inward where asked.
Mesh CubeInCube(bool cavity);
/// Every facet turned.
Mesh InsideOut(Mesh mesh);
/// All facets twice, the copies behind the first ones in another order.
Mesh Doubled(Mesh const& mesh);
/// With vertices on one edge in nEvery that only one of its two facets knows as a corner: the other side has
/// a facet without area beside it.
Mesh WithSlivers(Mesh const& mesh, std::size_t nEvery);
/// As WithSlivers, with the facets without area left out: T-junctions.
Mesh WithTJunctions(Mesh const& mesh, std::size_t nEvery);
/// With every corner multiplied by a factor, in float.
Mesh Scaled(Mesh mesh, float fFactor);
/// With one corner in nEvery moved by some roundings of its coordinates, so that facets do not meet exactly.
Mesh WithNearCorners(Mesh mesh, std::size_t nEvery, float fDistance);
/// Without some of the facets.
Mesh Without(Mesh mesh, std::size_t nFirst, std::size_t nCount);
/// Rotated about the x and z axes by these angles, in float: what was level is so up to rounding only.
Mesh Rotated(Mesh mesh, double dAboutX, double dAboutZ);

}  // namespace shapes
