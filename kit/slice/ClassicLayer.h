#pragma once

#include <Varnet64.h>

#include <memory>

#include "varnet/Layer.h"

namespace varnet {

/// The layer as the library's own: contours as loops in their tree, open paths as raw loops without
/// direction, chains of strokes as hatches whose edges are the strokes. The loop list and all boxes are
/// current. Loops stand as in the layer, each before those within it.
std::unique_ptr<CLayer> ToClassic(Layer const& layer);

/// The library's layer in flat arrays, with the loops of its tree, each before those within it, and its
/// hatches in their order; the classic layer's loop list is made anew, nothing else of it changes. Closed
/// loops lose the copy of their first point. Loops without points and hatches without edges are left out.
/// Loops that the classic layer has not nested have no parent. The number is 0, and the cut height that of
/// the layer, which is all that a slice file knows.
Layer FromClassic(CLayer& classic);

}  // namespace varnet
