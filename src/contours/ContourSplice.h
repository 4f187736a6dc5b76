#pragma once

#include "contours/HatchLinkSearch.h"

/// LinkLoopWithHatchs with hatches that serve many contours.
void LinkContour(tagLoopTreeNode& contour, LinkableHatchs& hatchs, CPoint2D& pos, CLayer& out, double dWidth,
                 double dCut);
