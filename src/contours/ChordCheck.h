#pragma once

#include <vector>

#include "contours/LoopWalk.h"

namespace varnet {

/// Whether the points behind an anchor lie near the chord to a point further on, for chords that are drawn
/// out point by point.
///
/// The answer is that of D2ofPtoLine for each of the points, to the bit. A straight run does not ask each
/// point for each chord, though: the chords that pass a point within the tolerance form a wedge from the
/// anchor, the common part of all wedges is kept, a little narrower than it is by more than the computation
/// errs, and a chord within it needs no look at the points. (J. Sklansky and V. Gonzalez, "Fast polygonal
/// approximation of digitized curves", 1980.)
class ChordCheck {
public:
    /// dTolerance2 is the greatest squared distance from the chord.
    ChordCheck(PointNode* pAnchor, double dTolerance2) : m_pAnchor(pAnchor), m_dTolerance2(dTolerance2) {}

    /// True when every point from behind the anchor up to but not including pEnd is within tolerance of the
    /// chord to pEnd. To be asked for one point after the other, the second behind the anchor first.
    bool Holds(PointNode* pEnd);

private:
    void TakeIn(PointNode* pNode);
    bool IsInWedge(CPoint2D const& end) const;
    bool IsNear(PointNode* pNode, PointNode* pEnd) const;

    PointNode* m_pAnchor;
    PointNode* m_pLast = nullptr;  // asked for; for the check of the order alone
    double m_dTolerance2;
    std::vector<PointNode*> m_Asked;  // points that the wedge does not tell

    // The wedge: slopes against the direction of the first point that went into it.
    bool m_bHasAxis = false;
    double m_dAxisX = 0.0;
    double m_dAxisY = 0.0;
    double m_dAxisLength2 = 0.0;
    double m_dLowest = 0.0;
    double m_dHighest = 0.0;
};

}  // namespace varnet
