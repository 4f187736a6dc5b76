#pragma once

#include "slice/Grid.h"
#include "slice/Paths.h"
#include "slice/Pulse.h"
#include "varnet/Slicer.h"

namespace varnet {

/// Adds the contours that bound what is solid, for closed paths that cross and touch as they like. What comes
/// out does not cross; solids that touch at a point come apart. Points of the paths keep their coordinates
/// to the bit but where several are at one place of the grid; points where paths cross are on the grid.
/// Contours no wider than a step of the grid are left out.
void ResolveCrossings(Paths const& paths, Grid const& grid, SolidRule rule, SolidContours& contours,
                      Pulse& pulse);

}  // namespace varnet
