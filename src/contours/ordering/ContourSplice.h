#pragma once

#include "contours/ordering/HatchLinkSearch.h"

namespace varnet {

/// LinkLoopWithHatchs with hatches that serve many contours.
void LinkContour(tagLoopTreeNode& contour, LinkableHatchs& hatchs, CPoint2D& pos, CLayer& out, double dWidth,
                 double dCut);

}  // namespace varnet
