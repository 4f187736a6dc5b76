#pragma once

#include "slice/Paths.h"

namespace varnet {

/// Adds the contours without points that the path does well without: along a stretch that turns by no more
/// than 10 degrees from its first direction, no point that goes lies further than the tolerance (millimetres)
/// from the side that takes its place. A contour of which fewer than three points are left goes, with all
/// that is in it. With a tolerance of 0 all points stay.
void ThinContours(SolidContours const& contours, double tolerance, SolidContours& thinned);

/// The same for open paths, whose ends stay.
void ThinPaths(Paths const& paths, double tolerance, Paths& thinned);

}  // namespace varnet
