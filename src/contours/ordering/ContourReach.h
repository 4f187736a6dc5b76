#pragma once

#include <cstddef>
#include <vector>

#include "contours/LoopWalk.h"
#include "foundation/CompleteTree.h"
#include "foundation/PlanBox.h"

namespace varnet {

/// The segment of a contour that a link point would be linked with, for many points and one contour.
///
/// The answer is that of walking all segments in order, to the bit. After a few walks, boxes are drawn around
/// runs of segments, runs of runs, and so on, in the order of the walk. Each segment's box is as much larger
/// than the segment as a point may be away and count, and by more than the distance errs. So only segments
/// whose boxes hold the point are looked at, in the order of the walk.
class ContourReach {
public:
    /// The contour may not change afterwards.
    ContourReach(tagLoopTreeNode const& contour, double dWidth);

    struct Segment {
        PointNode* pEnd = nullptr;  ///< null where no segment is in reach
        double dDistance2 = 1e20;
    };
    /// The last of those segments that are nearly the nearest, where every segment counts as nearer that is
    /// less than 0.0001 square millimetres further away than the one before it.
    Segment Find(CPoint2D const& point);

    /// No point outside this box finds a segment; it may be infinite.
    PlanBox const& Box();

private:
    void Offer(CPoint2D const& point, PointNode* pEnd, Segment& best) const;
    Segment Walk(CPoint2D const& point) const;
    Segment Search(CPoint2D const& point) const;
    PlanBox BoxOf(PointNode const* pEnd) const;
    void BuildBoxes();
    std::size_t RunBegin(std::size_t nRun) const { return m_Shape.BeginOf(m_Ends.size(), nRun); }

    PointNode* m_pHead;
    double m_dLimit2;
    int m_nWalks = 0;
    std::vector<PointNode*> m_Ends;  // of the segments
    CompleteTree m_Shape;            // a leaf is a run
    std::vector<PlanBox> m_Boxes;    // by node
};

}  // namespace varnet
