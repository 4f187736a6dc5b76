#pragma once

#include <vector>

#include "contours/LoopTreeNode.h"
#include "contours/ordering/GreedyOrder.h"
#include "foundation/List.h"

namespace varnet {

/// FindNearLoopInList for a list that nobody but its caller changes: the loops that it gives, one after the
/// other, each counting as used when it has been given.
class NearLoops {
public:
    /// Loops that are flagged Used are left out.
    explicit NearLoops(XR_CList<void*, void*> const& list);
    /// The next loop; null when none is left.
    tagLoopTreeNode* Next(CPoint2D const& pos);

private:
    GreedyOrder m_Order;
    std::vector<tagLoopTreeNode*> m_Loops;
};

}  // namespace varnet
