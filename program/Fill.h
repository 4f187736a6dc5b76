#pragma once

#include <Varnet64.h>

#include <cstddef>
#include <vector>

#include "CutGraph.h"

/// The ids of the hatches that this program makes. Both are open chains for whoever links hatches with
/// contours; the second is in the group of supports, which contours are not linked with.
inline constexpr int kFillHatch = 3;
inline constexpr int kSupportHatch = 1003;

/// How an area is filled.
struct FillStyle {
    double dSpacing = 0.5;  ///< millimetres from line to line
    double dAngle = 45.0;   ///< of the lines, degrees from the x axis
    int nID = kFillHatch;
};

/// Closed contours of one solid: a point is in it where an odd number of them goes round it.
struct FillRegion {
    std::vector<std::vector<CPoint2D>> contours;
};

/// The regions that the closed loops of a layer bound, one for each number in m_nUser1, in the order in which
/// the loop list, as it stands, first has them.
std::vector<FillRegion> RegionsOf(CLayer const& layer);

/// Fills the union of the regions, without the union of those to keep clear, with parallel lines, and adds
/// them to the layer as hatches.
///
/// Lines lie at fixed places, so that those of equal style in different layers lie above each other. Strokes
/// stay half a spacing, along the line, away from contours; gaps of less than a twentieth of the spacing are
/// not seen, and strokes shorter than the spacing are left out. A hatch is a chain of strokes on successive
/// lines, turned by turns, so that the way between two is short: as long as a stroke overlaps just one stroke
/// of the line before, and that one no other, and 200 strokes at most. Its edges are the strokes alone.
///
/// Returns the number of strokes. Throws Failure when more than a million lines cross one side of a contour.
std::size_t Fill(CLayer& layer, FillStyle const& style, std::vector<FillRegion> const& regions,
                 std::vector<FillRegion> const& clear = {});
