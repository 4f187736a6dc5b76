#pragma once

#include <cstdint>

#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

/// Bits of CHatch::m_nFlag.
enum : std::int32_t {
    HATCH_USED_FLAG = 0x1000  ///< consumed by an ordering pass
};

/// A fill path of a layer: edges one after the other, connected or apart. Millimetres.
///
/// Copies are shallow: they share the edges, only one of them may be destroyed, and assignment releases
/// nothing. Copy takes the edges themselves.
class VARNET_API CHatch {
public:
    CHatch();
    CHatch(CHatch const&) = default;
    CHatch& operator=(CHatch const&) = default;
    virtual ~CHatch() = default;

    /// Takes the other's id and flags, and appends copies of its edges. What the hatch holds stays in front.
    void Copy(CHatch* pOther);
    /// Turns the order of the edges and each edge: the path runs the other way. Needs an edge.
    void Reverse();
    /// Cuts every edge longer than dLength (millimetres, above 0.0) into edges of equal length, none longer
    /// than that: an edge of exactly n times dLength becomes n + 1 edges. Points between carry the attributes
    /// of the edge's start. An edge that would fall into more pieces than an int counts stays whole.
    void AddPointsOnLongEdge(double dLength);

    XR_CList<CEdge2D, CEdge2D&> m_EdgeList;
    /// 1000 and above put the hatch in the second group, which contours are not linked with. The remainder by
    /// 100 is the linking class: 1 a ring, 2 never linked, anything else an open chain.
    std::int32_t m_nID;
    std::int32_t m_nFlag;  ///< HATCH_USED_FLAG
};

/// The hatch of the list that comes next from pos, among those that are not flagged Used and have edges; null
/// when there is none within 1e20. A hatch whose ends are equal counts as a ring, whatever its id: it comes
/// rotated, to begin at its vertex nearest to pos. Any other comes as it is when its start is no further than
/// its end, else reversed. The first of equals is taken. The caller sets HATCH_USED_FLAG, or the same hatch
/// comes again.
VARNET_API CHatch* FindNearHatchAndAdjust(XR_CList<void*, void*>* pList, CPoint2D const& pos);
