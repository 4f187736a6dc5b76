#pragma once

#include <cstdint>
#include <cstdio>

#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

/// Which way a path runs round.
enum LOOPDIRECT : std::int32_t {
    LOOPDIRECT_CW = 0,   ///< clockwise: an inner boundary, once nesting has run
    LOOPDIRECT_CCW = 1,  ///< counter-clockwise: an outer boundary, once nesting has run
    LOOPDIRECT_NONE = 2  ///< not decided: a new loop, and every open path
};

/// The end of a point list at which an operation works.
enum OPERATEDIRECT : std::int32_t {
    OPERATE_AT_TAIL = 0,  ///< from the tail towards the head
    OPERATE_AT_HEAD = 1   ///< from the head towards the tail
};

/// Bits in the four bytes of CPoint2D::m_fAttr2, which are a bit set within layers and never a number.
enum : std::int32_t {
    POINT_JOINT = 1,    ///< a stretch of another path was joined on here
    POINT_INSERTED = 2  ///< the point came with such a stretch
};

/// Bits of tagLoopTreeNode::m_nFlag.
enum : std::int32_t {
    LOOP_KIND_OUTER = 1,      ///< in an ordered layer: an outer contour
    LOOP_KIND_INNER = 2,      ///< an inner contour
    LOOP_KIND_HATCH = 4,      ///< a fill path
    LOOP_USED_FLAG = 0x1000,  ///< consumed by an ordering pass
};

/// A polyline in a layer, closed or open, and a node of the layer's nesting tree. Millimetres.
///
/// A closed loop stores its first point again as its last one, the closing copy: a loop of n corners has n +
/// 1 points, and measures add no edge of their own. Points move with their attributes.
///
/// The loop owns its point list, which whoever fills it creates with a block size of 10, and its children. A
/// loop without a list counts as empty. m_Box is a cache that only GetBoundBox refreshes. Copies of the
/// record are shallow, field by field: they share list and children, only one of them may be destroyed, and
/// assignment releases nothing. CopyOtherLoop makes a loop that lives on its own.
class VARNET_API tagLoopTreeNode {
public:
    tagLoopTreeNode() : tagLoopTreeNode(0) {}
    explicit tagLoopTreeNode(int nLevel);
    tagLoopTreeNode(tagLoopTreeNode const&) = default;
    tagLoopTreeNode& operator=(tagLoopTreeNode const&) = default;
    /// Destroys the whole subtree, however deep, and the points.
    ~tagLoopTreeNode();

    // ---- measures and direction: src/contours/LoopMeasures.cpp

    /// Twice the signed area in square millimetres, positive for counter-clockwise; 0.0 below three points.
    double GetArea();
    /// Refreshes m_Box and returns a copy; the empty box for a loop without points.
    CBoundBox2D GetBoundBox();
    /// The sum of the segment lengths.
    double GetLength();
    /// LOOPDIRECT_CCW where GetArea is above 0.0, else LOOPDIRECT_CW, a loop without area included.
    LOOPDIRECT GetLoopDirection();
    /// Turns the order of the points, and m_nDirection with it where that is 0 or 1. A loop without a list is
    /// left alone. Positions taken earlier are void.
    void ReverseLoop();

    // ---- the head of a closed loop: src/contours/LoopHead.cpp

    /// Makes the point nearest to the given one the head, the first of equals. A head further than 1e5 away
    /// from everything stays; so does an open path.
    void AdjustHeadToNearPoint(CPoint2D point);
    /// Makes the first point that equals the given one (within 0.0001 per axis) the head, and appends a copy
    /// of the given point as the closing copy: 1. Where there is none, the order stays, the closing copy
    /// becomes a copy of the head, and the result is 0. An open path, or a loop of fewer than two points,
    /// gives 0 and does not change.
    int AdjutstHeadToPoint(CPoint2D point);
    /// The same for the point at a position of the list, other than the tail; the closing copy becomes a copy
    /// of the head. Positions keep their points, except that of the tail.
    int AdjutstHeadToPointAtPos(XR__POSITION* position);

    // ---- joining and copying: src/contours/LoopJoining.cpp, LoopTreeNode.cpp

    /// Puts copies of the other path's points in front of this one, in their order. Its points get the bits
    /// of nFlags in m_fAttr2, in the other path as well. Going from its tail to its head, a point that equals
    /// the present head of this loop is passed over, and gets no bits. The other path may not be this one.
    void InsertLoopAtHead(tagLoopTreeNode* pOther, int nFlags);
    /// The mirror: at the end, from the other path's head to its tail.
    void InsertLoopAtTail(tagLoopTreeNode* pOther, int nFlags);
    /// Takes the other path's id, closedness, direction, height, tolerance, flags, user fields, and copies of
    /// its points in place of the own ones; then refreshes the box, unless the other has no list. Level and
    /// children stay as they are.
    void CopyOtherLoop(tagLoopTreeNode* pOther);
    /// Adds one to the level of this loop and of all below it.
    void LevelAdd();

    // ---- thinning out and cutting: src/contours/LoopSimplification.cpp, LoopCutting.cpp; m_Box stays as it
    // is

    /// Removes doubled points and points within m_dTolerance of a chord that turns by no more than 10 degrees
    /// from its first direction; then the head of a closed loop, where it is on such a stretch. Turns are
    /// taken as differences of directions from -180 to 180 degrees, so that one across that seam counts as
    /// large. A closed loop of fewer than three corners loses all its points, and keeps its list. Fewer than
    /// three points are left alone.
    void Optimize();
    /// Removes points along stretches that turn by no more than dAngle (degrees) from their first direction.
    /// Head and tail stay.
    void OptimizeLine(double dAngle);
    /// Removes points within dDistance (millimetres) of a chord, whatever its direction. Head and tail stay.
    void Optimize_UnClosed(double dDistance);
    /// Removes dLength millimetres of the path at one end, but leaves at least dKeep. Less than 0.01 is not
    /// cut, and a vertex within 0.01 of the cut is used for it. m_bClosed does not matter; the closing copy
    /// is a point like others.
    ///
    /// Where bPieces is not 0, what was removed comes back as a new path with nothing but its points filled
    /// in, which the caller owns; it runs the way it ran here and shares the cut point. Else null.
    tagLoopTreeNode* CutLoop(double dLength, double dKeep, OPERATEDIRECT end, int bPieces);

    // ---- slice files: src/cli/LayerFile.cpp

    /// Appends this loop and, each before its children, all below it to a CLI slice file, as lines of
    /// text: 1. An open path gets direction 2, coordinates three decimals. A loop without points is left out
    /// with all below it. Another mode than 1 writes nothing.
    int WriteCLILoop(FILE* pFile, int nMode);

    XR_CList<CPoint2D, CPoint2D&>* m_pPointList;  ///< owned; null in a new loop
    std::int32_t m_nID;                           ///< the id in CLI files; that of the hatch it came from
    std::int32_t m_nLevel;                        ///< depth in the nesting tree
    LOOPDIRECT m_nDirection;                      ///< as last decided by nesting, reversal or a reader
    double m_dZ;                                  ///< height, millimetres
    std::int32_t m_bClosed;
    CBoundBox2D m_Box;                   ///< cached bounds
    XR_CList<void*, void*> m_ChildList;  ///< tagLoopTreeNode*, owned
    double m_dTolerance;                 ///< chord distance of Optimize, millimetres
    std::int32_t m_nFlag;                ///< LOOP_KIND_ and LOOP_USED_FLAG bits
    std::int32_t m_nUser1;               ///< for the host, like those that follow
    std::int32_t m_nUser2;
    double m_dUser1;
    double m_dUser2;
    double m_dUser3;
};

/// The direction of a bare list of points that is closed by a copy of its first point, told from the two
/// edges at its leftmost point: LOOPDIRECT_CCW or LOOPDIRECT_CW. Fewer than four points give LOOPDIRECT_CW.
VARNET_API LOOPDIRECT JudgeLoopDirection(XR_CList<CPoint2D, CPoint2D&>* pList);

/// 1 when the point lies inside the closed loop, by the parity of crossings of a ray towards -x; else 0. The
/// point must be strictly inside the cached m_Box: a stale box gives a wrong answer. On an edge, whatever the
/// comparisons give. Open paths hold nothing.
VARNET_API int IsInLoop(tagLoopTreeNode* pLoop, CPoint2D& point);
