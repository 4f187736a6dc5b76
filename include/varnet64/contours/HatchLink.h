#pragma once

#include <cstdint>

#include "contours/Hatch.h"
#include "contours/Layer.h"
#include "contours/LoopTreeNode.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

// Linking contours with hatches: the steps of CLayer::OptimizeLoopAndChildLoopHatch. Lengths in millimetres,
// directions in radians. Bodies: src/contours/ordering/LoopOrder.cpp, ContourSplice.cpp, HatchLink.cpp, in
// turn.

/// The best link of a contour with a hatch that a search has found so far.
struct tagHatchLink {
    CHatch* m_pHatch = nullptr;
    CPoint2D m_HatchPoint;              ///< vertex of the hatch at which the contour is spliced in
    std::int32_t m_bFromHead = 0;       ///< 1 when found from the head of the hatch; of open hatches only
    std::int32_t m_bSide = 0;           ///< 1 when the hatch is to be taken the other way round
    double m_dCost = 1e20;              ///< of this link, in millimetres of travel
    double m_dCost2 = 1e40;             ///< m_dCost squared
    XR__POSITION* m_FootPos = nullptr;  ///< end point of the contour segment, in the contour's list
    CPoint2D m_Foot;                    ///< the point of the contour closest to m_HatchPoint
    std::int32_t m_nFootKind = 0;       ///< as FindFootOnLoopEdge gives it
    std::int32_t m_bCutTail = 0;        ///< contour and hatch run within 30 degrees at the opening's tail
    std::int32_t m_bCutHead = 0;        ///< the same at its head
};

/// The loop of the list, without LOOP_USED_FLAG, that has the vertex nearest to pos; the first of equals.
/// Null where there is none within 1e20. Nothing is changed.
VARNET_API tagLoopTreeNode* FindNearLoopInList(XR_CList<void*, void*>* pList, CPoint2D const& pos);

/// Appends a copy of the contour to the raw loops of pOut, which owns it, and moves pos to the copy's tail,
/// attributes included. The copy's flags are LOOP_KIND_OUTER where the contour's direction is 1, else
/// LOOP_KIND_INNER. A closed copy begins at the vertex nearest to pos; where dCut is above 0.0, it is
/// shortened by that at its tail, and stays flagged closed. A contour without points adds nothing.
VARNET_API void AddLoopToOrderedLayer(tagLoopTreeNode* pLoop, CLayer* pOut, CPoint2D& pos, double dCut);

/// Looks for the cheapest link of the contour with one of the hatches that are not flagged Used, and emits
/// the contour to pOut, spliced in with a stretch of that hatch; pos moves to where the head stops.
///
/// The contour is opened over dCut at the foot of the link. From a ring, two stretches of 3 dCut + 2 go in
/// front of and behind the contour, the rest of the ring is emitted next, and the ring is flagged Used. From
/// an open hatch, the edges up to the link point and one more go in, and are taken from the hatch. The
/// contour itself is left open, turned and lengthened so. Points where paths meet carry POINT_JOINT, those
/// that came with the hatch POINT_INSERTED.
///
/// Without a link, a contour of direction 0 is reversed, and is emitted by AddLoopToOrderedLayer. So is one
/// whose link does not work out: where foot or link point are not found again, or where a hatch runs out of
/// edges, which it then has lost.
VARNET_API void LinkLoopWithHatchs(tagLoopTreeNode* pLoop, XR_CList<void*, void*>* pHatchs, CPoint2D& pos,
                                   CLayer* pOut, double dWidth, double dCut);

/// Compares one more link with the record. The candidate's points are: the entry, where printing of the hatch
/// begins; the link point; the hatch's neighbour before it; the one behind it. The link's cost is the
/// distance from pos to the entry, and three times what the link point is further than dWidth from the
/// contour.
///
/// Returns the cost, and stores the link except for hatch and m_bFromHead, where that is less than the
/// record's; else -1.0, the record as it was. A contour that does not come within 1.8 dWidth of the link
/// point gives -1.0. Of segments that are equally near, within 0.0001 of squared distance, a later one
/// counts.
VARNET_API double EvaluateHatchLink(CPoint2D candidate[4], CPoint2D& pos, double dWidth,
                                    tagLoopTreeNode* pLoop, tagHatchLink& link);

/// The point of a contour segment nearest to the given one, and the directions of the contour shortly before
/// and behind it. The position is that of the segment's end point. 0: foot is a new point within the segment,
/// with the attributes of its start; 1: it is the segment's start; 2: its end. Where the foot is within half
/// of dSpan of an end, or on it, the neighbouring segment gives the direction on that side; the neighbours of
/// head and tail are those behind the closing copy.
///
/// -1 with foot and angles as they were, where the position is null or the head and so ends no segment.
VARNET_API int FindFootOnLoopEdge(tagLoopTreeNode* pLoop, XR__POSITION* end, CPoint2D point, double dSpan,
                                  CPoint2D& foot, double angles[2]);
