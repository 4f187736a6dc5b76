#pragma once

#include <vector>

#include "contours/Hatch.h"
#include "contours/ordering/GreedyOrder.h"
#include "foundation/List.h"

namespace varnet {

/// FindNearHatchAndAdjust for a list that nobody but its caller changes: the hatches that it gives, one after
/// the other, each counting as used when it has been given.
class NearHatchs {
public:
    /// Hatches that are flagged Used, or have no edges, are left out.
    explicit NearHatchs(XR_CList<void*, void*> const& list);
    /// The next hatch, turned or rotated; null when none is left.
    CHatch* Next(CPoint2D const& pos);

private:
    GreedyOrder m_Order;
    std::vector<CHatch*> m_Hatchs;
};

}  // namespace varnet
