#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "part/Pace.h"
#include "varnet/Geometry.h"

namespace varnet {

/// For each point the one that it becomes: in their order, each joins the nearest of the points before it
/// that have stayed themselves, if one lies within the tolerance on each axis; else it stays itself. No two
/// that stay lie within the tolerance.
std::vector<std::int32_t> JoinNear(std::span<Point3 const> points, double tolerance, Pace const& pace);

}  // namespace varnet
