#pragma once

#include "contours/LoopTreeNode.h"

namespace varnet {

/// Whether one loop runs within the other so clearly that it speaks for it: both are closed by a copy of
/// their first point, their lines are nowhere nearer to each other than a hundred-thousandth of a millimetre,
/// and the box of the inner one's points lies as far within that of the outer one's. Loops of very many
/// points, and of places that are far off or nowhere, count as not clear.
///
/// Where the outer loop holds the inner one's head, every point that the inner loop holds, by CrossingParity,
/// is then held by the outer one as well. The outer line is connected and reaches beyond the inner one, so it
/// lies outside of all that the inner line encloses; the inner line, connected too, and all that it encloses
/// lie on one side of the outer line, that of the head. What CrossingParity rounds, or takes for flat, is
/// nearer to a line than a millionth of a millimetre: a tenth of the distance that is kept.
bool IsClearlyInside(tagLoopTreeNode const& outer, tagLoopTreeNode const& inner);

}  // namespace varnet
