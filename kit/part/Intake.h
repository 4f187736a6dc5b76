#pragma once

#include <span>

#include "part/FlatMesh.h"
#include "part/Pace.h"
#include "part/PartState.h"

namespace varnet {

/// Arrays as a reader gives them: equal points joined. Throws an Error of kind kArgument for an index that no
/// point has.
RawMesh ReadArrays(std::span<Point3 const> points, std::span<Triangle const> triangles,
                   IntakeSettings const& settings, IntakeReport& report, Pace const& pace);

/// Puts right what can be put right, and makes it what the part holds.
void TakeIn(RawMesh raw, IntakeSettings const& settings, Part::State& state, Pace const& pace);

}  // namespace varnet
