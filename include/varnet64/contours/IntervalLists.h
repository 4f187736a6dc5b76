#pragma once

#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

// Sets of intervals on an axis. A list holds the ends of intervals in ascending order of x; y is a code and
// no coordinate:
//
//   0.0  an interval of the first kind opens      2.0  one of the second kind opens
//   1.0  an interval of the first kind closes     3.0  one of the second kind closes
//
// Lists are changed in place, in one pass. Null lists are the caller's mistake; empty ones are fine. Bodies:
// src/contours/IntervalLists.cpp.

/// Does nothing, on purpose: a place where hosts may stop in a debugger.
VARNET_API void AssertPL(XR_CList<CPoint2D, CPoint2D&>* pList);

/// Merges copies of pSrc's points into pDst, both ascending. Of equal positions, what was there comes first.
/// The two lists may not be the same.
VARNET_API void InsertToPL(XR_CList<CPoint2D, CPoint2D&>* pDst, XR_CList<CPoint2D, CPoint2D&>* pSrc);

/// Merges the intervals of pSrc, pairs of points, into pDst in the order of their midpoints, and stamps their
/// codes nOpen and nClose, in pSrc too. The place in pDst moves on by at most one pair for each pair of pSrc:
/// a pair that belongs further on is dropped. A last point without a partner is passed over in pSrc, and
/// ends pDst. The two lists may not be the same.
VARNET_API void InsertToPLWithFlag(XR_CList<CPoint2D, CPoint2D&>* pDst, XR_CList<CPoint2D, CPoint2D&>* pSrc,
                                   int nOpen, int nClose);

/// Leaves the ends of the union of the intervals of the first kind: points at which the count of open ones
/// comes to 1 or goes back to 0. Points of other codes stay.
VARNET_API void UnionPL(XR_CList<CPoint2D, CPoint2D&>* pList);

/// Leaves the points at which the count of open intervals of the first kind goes above 1 or comes back from
/// there: of two sets, the intersection. Points of other codes stay.
VARNET_API void IntersectPL(XR_CList<CPoint2D, CPoint2D&>* pList);

/// Removes openings that bring the count of open intervals of the first kind to less than nDepth, and
/// closings that bring it to less than nDepth - 1: what is left bounds the parts that are covered nDepth
/// times, and their parts that are covered more often.
VARNET_API void JoinPL(XR_CList<CPoint2D, CPoint2D&>* pList, int nDepth);

/// Takes the second kind away from the first. Codes are not rewritten: afterwards a 2.0 closes a part, and a
/// 3.0 opens one.
VARNET_API void SubPL(XR_CList<CPoint2D, CPoint2D&>* pList);

/// Joins intervals whose gap is less than dGap. The list alternates openings and closings.
VARNET_API void LinkPL(XR_CList<CPoint2D, CPoint2D&>* pList, double dGap);

/// Drops intervals shorter than dLength. The list alternates openings and closings; a last point without a
/// partner stays.
VARNET_API void RemoveShortPL(XR_CList<CPoint2D, CPoint2D&>* pList, double dLength);
