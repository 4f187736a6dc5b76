#pragma once

#include <span>

#include "varnet/Geometry.h"

namespace varnet {

/// Whether a vertex tree with a tolerance of 0 would change a point or make one vertex of two: where two
/// points are equal, where heights are zeros of both signs (a point takes the sign that came first), or where
/// a coordinate is not a number. Points are compared by their hashes alone: for one in some thousand parts of
/// half a million points it is true although none of that holds.
bool MayHaveTwins(std::span<Point3 const> points);

}  // namespace varnet
