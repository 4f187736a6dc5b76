#pragma once

#include <cstdint>

#include "slice/Paths.h"
#include "slice/Pulse.h"
#include "varnet/Layer.h"

namespace varnet {

/// How an area is filled.
struct FillStyle {
    double spacing = 0.5;  ///< millimetres from line to line
    double angle = 45.0;   ///< of the lines, degrees from the x axis
    std::int32_t id = kFillId;
};

/// More lines than this do not cross a part.
inline constexpr double kMostFillLines = 1e6;

/// Fills what the contours enclose, without what those to keep clear of enclose, with parallel lines, and
/// adds them to the layer as chains.
///
/// Lines lie at fixed places, so that those of equal style in different layers lie above each other. Strokes
/// stay half a spacing, along the line, away from contours; gaps of less than a twentieth of the spacing are
/// not seen, and strokes shorter than the spacing are left out. A chain is made of strokes on successive
/// lines, turned by turns, so that the way between two is short: as long as a stroke overlaps just one stroke
/// of the line before, and that one no other, and 200 strokes at most.
void FillContours(Paths const& contours, Paths const& clear, FillStyle const& style, Layer& layer,
                  Pulse& pulse);

}  // namespace varnet
