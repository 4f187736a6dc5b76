#pragma once

#include <span>

#include "varnet/Geometry.h"

namespace varnet {

/// Whether a vertex tree with a tolerance of 0 would change a point or make one vertex of two: where two
/// points are equal, where heights are zeros of both signs (a point takes the sign that came first), or where
/// a coordinate is not a number. True, once in ten thousand parts, although none of it holds: points are
/// compared by their hashes.
bool MayHaveTwins(std::span<Point3 const> points);

}  // namespace varnet
