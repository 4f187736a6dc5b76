#pragma once

#include "contours/HatchLink.h"
#include "contours/ordering/ContourReach.h"

namespace varnet {

/// A way to link a contour with a hatch, in the order of EvaluateHatchLink's argument.
struct LinkCandidate {
    CPoint2D const& entry;
    CPoint2D const& point;
    CPoint2D const& back;
    CPoint2D const& front;
};

/// EvaluateHatchLink with a contour's reach that serves many candidates.
double EvaluateLink(LinkCandidate const& candidate, CPoint2D const& pos, double dWidth, tagLoopTreeNode& loop,
                    ContourReach& reach, tagHatchLink& link);

}  // namespace varnet
