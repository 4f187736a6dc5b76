#pragma once

#include <cmath>

#include "contours/LoopWalk.h"

namespace varnet {

// The test of a point against a loop: a ray towards -x, and the parity of the edges that it crosses.

/// Whether the end of an edge at this y is on the upper side of the ray.
inline bool IsAtOrAbove(double dEndY, double dRayY) { return !(dRayY > dEndY); }

/// Whether the edge from one point to the next, whose ends are on different sides, crosses the ray from (x,
/// y).
inline bool IsCrossedLeftOf(double dFromX, double dFromY, double dToX, double dToY, double x, double y) {
    // Compared with the height of an edge: a flatter one counts as standing at its end.
    constexpr double kFlat = 1e-6;
    double const dy = dFromY - dToY;
    double const dCrossing = std::fabs(dy) > kFlat ? (dFromX - dToX) * (y - dToY) / dy + dToX : dToX;
    return x > dCrossing;
}

/// 1 when the ray from (x, y) crosses an odd number of the edges between neighbours of the list, else 0.
inline int CrossingParity(PointNode const* pHead, double x, double y) {
    int nParity = 0;
    bool bAbove = IsAtOrAbove(pHead->data.y, y);
    CPoint2D const* pFrom = &pHead->data;
    ForEachPoint(pHead->pNext, [&](CPoint2D const& to) {
        if (IsAtOrAbove(to.y, y) != bAbove) {
            bAbove = !bAbove;
            if (IsCrossedLeftOf(pFrom->x, pFrom->y, to.x, to.y, x, y)) nParity ^= 1;
        }
        pFrom = &to;
    });
    return nParity;
}

}  // namespace varnet
