#pragma once

#include <memory>

#include "selfcheck/Record.h"

namespace selfcheck {

/// A loop of so many corners around the centre, about size away from it.
std::unique_ptr<tagLoopTreeNode> StarLoop(Chance& chance, CPoint2D const& centre, double size, int corners,
                                          bool closed);

/// Loops in each other, open paths, and hatches of one edge to four.
void FillLayer(CLayer& layer, Chance& chance);

void AddLoop(Record& record, tagLoopTreeNode& loop);
void AddHatch(Record& record, CHatch& hatch);
/// All that the layer holds, with its measures. Refreshes box and loop list.
void AddLayer(Record& record, CLayer& layer);

}  // namespace selfcheck
