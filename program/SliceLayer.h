#pragma once

#include <Varnet64.h>

#include <vector>

#include "CutGraph.h"

/// Hands contours to the layer as raw loops, at its height. Each has nRegion in m_nUser1: loops of one region
/// bound one solid, as FillLayer has it.
void AddContours(CLayer& layer, std::vector<Contour> const& contours, int nRegion);

/// Nests the loops of the layer and turns each by its level; then thins them out, so that no point that goes
/// lies further than the tolerance (millimetres) from where the path runs afterwards. What is too small for
/// that to leave a path is destroyed, and the rest nested anew. Boxes and the loop list are current
/// afterwards.
void NestAndSimplify(CLayer& layer, double dTolerance);
