// Forcing a layer into a box, and laying a border around it.

#include <array>
#include <cmath>
#include <utility>

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"
#include "foundation/memory/AddNew.h"

using namespace varnet;

namespace {

// Where an edge meets the sides of a box, looked at in the order bottom, right, top, left: the first two
// places.
struct Crossings {
    std::array<CPoint2D, 2> points;
    std::size_t nCount = 0;
};

Crossings FindCrossings(CEdge2D const& edge, CBoundBox2D const& box) {
    CPoint2D const& min = box.m_ptMin;
    CPoint2D const& max = box.m_ptMax;
    std::array<CPoint2D, 5> const corners = {CPoint2D(min.x, min.y), CPoint2D(max.x, min.y),
                                             CPoint2D(max.x, max.y), CPoint2D(min.x, max.y),
                                             CPoint2D(min.x, min.y)};
    Crossings found;
    for (std::size_t i = 0; i < 4 && found.nCount < 2; ++i) {
        CPoint2D point;
        if (LineIntersect(edge.m_ptStart, edge.m_ptEnd, corners[i], corners[i + 1], &point) == 0) continue;
        found.points[found.nCount++] = point;
    }
    return found;
}

// Clips the edges of a layer's hatches one after the other, and makes new hatches of what is left, which it
// owns.
class HatchClipper {
public:
    explicit HatchClipper(CBoundBox2D const& box) : m_Box(box) {}
    HatchClipper(HatchClipper const&) = delete;
    HatchClipper& operator=(HatchClipper const&) = delete;
    ~HatchClipper() {
        ForEachHatch(m_Hatches, [](CHatch& hatch) { delete &hatch; });
    }

    void Clip(CHatch& hatch) {
        m_pCurrent = nullptr;
        m_Last = CPoint2D(-1e10, -1e10);
        for (auto* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            CEdge2D clipped;
            if (ClipEdgeToBox(p->data, m_Box, clipped) == 0) {
                m_pCurrent = nullptr;
                continue;
            }
            if (m_pCurrent == nullptr) m_pCurrent = HatchFor(clipped.m_ptStart, hatch.m_nID);
            m_pCurrent->m_EdgeList.AddTail(clipped);
            m_Last = clipped.m_ptEnd;
        }
    }

    XR_CList<void*, void*>& Hatches() { return m_Hatches; }

private:
    CHatch* HatchFor(CPoint2D const& start, int nID) {
        // Millimetres. A stretch that begins so near to the end of the last one, on either axis, goes on with
        // it.
        constexpr double kSameHatch = 0.1;
        bool const bNear =
            std::fabs(start.x - m_Last.x) < kSameHatch || std::fabs(start.y - m_Last.y) < kSameHatch;
        if (bNear && m_Hatches.IsEmpty() == 0) return static_cast<CHatch*>(m_Hatches.GetTail());
        CHatch& hatch = AddNew<CHatch>(m_Hatches);
        hatch.m_nID = nID;
        return &hatch;
    }

    CBoundBox2D m_Box;
    XR_CList<void*, void*> m_Hatches;
    CHatch* m_pCurrent = nullptr;
    CPoint2D m_Last;
};

}  // namespace

int ClipEdgeToBox(CEdge2D& edge, CBoundBox2D& box, CEdge2D& result) {
    bool const bStartInside = box.IsInBox(edge.m_ptStart) != 0;
    if (bStartInside && box.IsInBox(edge.m_ptEnd) != 0) {
        result = edge;
        return 1;
    }
    Crossings crossings = FindCrossings(edge, box);
    auto& [first, second] = crossings.points;
    if (crossings.nCount == 0) return 0;
    if (crossings.nCount == 2) {
        // Roots, since two squares that differ may have the same one.
        double const dFirst = Distance(edge.m_ptStart, first);
        double const dSecond = Distance(edge.m_ptStart, second);
        if (dFirst > dSecond) std::swap(first, second);
        result = CEdge2D(first, second);
    } else {
        result = bStartInside ? CEdge2D(edge.m_ptStart, first) : CEdge2D(first, edge.m_ptEnd);
    }
    // What the computation of the places has carried beyond the box is taken back.
    box.LimitPointInBox(result.m_ptStart);
    box.LimitPointInBox(result.m_ptEnd);
    return 1;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts link against boxes by value.
void CLayer::LimitInBox(CBoundBox2D box, int bLimitLoops, int bLimitHatchs) {
    if (bLimitLoops != 0) {
        BuildLoopList();
        ForEachLoop(m_LoopList, [&box](tagLoopTreeNode& loop) {
            for (PointNode* p = FirstPoint(loop); p != nullptr; p = p->pNext) box.LimitPointInBox(p->data);
        });
    }
    if (bLimitHatchs != 0) {
        HatchClipper clipper(box);
        ForEachHatch(m_HatchList, [&clipper](CHatch& hatch) { clipper.Clip(hatch); });
        SwapElements(m_HatchList, clipper.Hatches());
    }
    GetBoundBox();
}

void CLayer::AddBorder(CPoint2D& a, CPoint2D& b) {
    auto border = NewPath();
    border->m_bClosed = 1;
    border->m_nDirection = LOOPDIRECT_CCW;
    border->m_dZ = m_dZ;
    border->m_Box = CBoundBox2D(a, b);
    for (CPoint2D corner : {CPoint2D(a.x, a.y), CPoint2D(b.x, a.y), CPoint2D(b.x, b.y), CPoint2D(a.x, b.y),
                            CPoint2D(a.x, a.y)}) {
        border->m_pPointList->AddTail(corner);
    }
    AddOwned(m_RawLoopList, std::move(border));
    MakeTopology(1);
}
