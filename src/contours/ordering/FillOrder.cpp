// Ordering one outer loop with its children and the hatches between them.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "contours/CrossingParity.h"
#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "contours/nesting/BoxIndex.h"
#include "contours/nesting/LoopSlabs.h"
#include "contours/ordering/HatchLinkSearch.h"
#include "contours/ordering/HatchOrder.h"
#include "contours/ordering/LoopOrder.h"
#include "foundation/Require.h"
#include "foundation/memory/AddNew.h"

using namespace varnet;

namespace {

// Millimetres that are left of a ring when its end is cut off.
constexpr double kKeepOfRing = 1.0;

// IsInLoop for many points and one loop, which may not change meanwhile.
class LoopInside {
public:
    explicit LoopInside(tagLoopTreeNode& loop) : m_Loop(loop) {}

    bool Holds(CPoint2D& point) {
        if (m_Loop.m_bClosed == 0 || FirstPoint(m_Loop) == nullptr) return false;
        if (m_Loop.m_Box.IsInBox(point) == 0) return false;
        return ParityAmongMany(m_Loop, point.x, point.y, m_pSlabs, m_nTests) != 0;
    }

private:
    tagLoopTreeNode& m_Loop;
    std::int32_t m_nTests = 0;
    std::unique_ptr<LoopSlabs> m_pSlabs;
};

// The area of a loop without its children.
class OwnArea {
public:
    explicit OwnArea(tagLoopTreeNode& loop)
        : m_Outer(loop), m_Standings(static_cast<std::size_t>(loop.m_ChildList.GetCount())) {
        std::vector<BoxIndex::Entry> entries;
        ForEachLoop(loop.m_ChildList, [this, &entries](tagLoopTreeNode& child) {
            auto const n = static_cast<std::int32_t>(m_Children.size());
            m_Children.emplace_back(child);
            entries.push_back({PlanBoxOf(child.m_Box), n, n});
        });
        m_pBoxes = std::make_unique<BoxIndex>(m_Standings, std::move(entries));
    }

    bool Holds(CPoint2D& point) {
        if (!m_Outer.Holds(point)) return false;
        BoxIndex::Search search(*m_pBoxes, {point.x, point.y, point.x, point.y});
        for (std::int32_t n = 0; search.Next(n);) {
            if (m_Children[static_cast<std::size_t>(n)].Holds(point)) return false;
        }
        return true;
    }

private:
    LoopInside m_Outer;
    std::vector<LoopInside> m_Children;
    std::vector<BoxIndex::Standing> m_Standings;
    std::unique_ptr<BoxIndex> m_pBoxes;
};

// Copies of hatches, to be consumed.
class HatchCopies {
public:
    HatchCopies() = default;
    HatchCopies(HatchCopies const&) = delete;
    HatchCopies& operator=(HatchCopies const&) = delete;
    ~HatchCopies() {
        ForEachHatch(m_List, [](CHatch& hatch) { delete &hatch; });
    }

    void Add(CHatch& hatch) { AddNew<CHatch>(m_List).Copy(&hatch); }
    XR_CList<void*, void*> const& List() const { return m_List; }

private:
    XR_CList<void*, void*> m_List;
};

void TakeHatchsIn(tagLoopTreeNode& loop, CLayer& layer, HatchCopies& copies) {
    OwnArea area(loop);
    ForEachHatch(layer.m_HatchList, [&area, &copies](CHatch& hatch) {
        if (hatch.m_nID >= kSecondGroup || (hatch.m_nFlag & HATCH_USED_FLAG) != 0) return;
        if (hatch.m_EdgeList.IsEmpty() != 0 || !area.Holds(hatch.m_EdgeList.GetHead().m_ptStart)) return;
        copies.Add(hatch);
        hatch.m_nFlag = HATCH_USED_FLAG;
    });
}

void EmitHatch(CHatch& hatch, double dZ, CLayer& out, CPoint2D& pos, double dCut) {
    std::unique_ptr<tagLoopTreeNode> pPath(ConvertHatchToLoop(&hatch, dZ, LOOP_KIND_HATCH));
    if (ClassOf(hatch) == kRingClass) pPath->CutLoop(dCut, kKeepOfRing, OPERATE_AT_TAIL, 0);
    if (PointCount(*pPath) < 2) return;
    pos = pPath->m_pPointList->GetTail();
    AddOwned(out.m_RawLoopList, std::move(pPath));
}

}  // namespace

void CLayer::OptimizeLoopAndChildLoopHatch(tagLoopTreeNode* pLoop, CPoint2D* pPos, CLayer* pOut,
                                           double dWidth, double dCut) {
    VARNET_REQUIRE(pOut != this);
    pOut->m_dZ = m_dZ;
    HatchCopies copies;
    TakeHatchsIn(*pLoop, *this, copies);

    LinkableHatchs hatchs(copies.List());
    LinkContour(*pLoop, hatchs, *pPos, *pOut, dWidth, dCut);
    NearLoops children(pLoop->m_ChildList);
    while (tagLoopTreeNode* const pChild = children.Next(*pPos)) {
        LinkContour(*pChild, hatchs, *pPos, *pOut, dWidth, dCut);
        pChild->m_nFlag |= LOOP_USED_FLAG;
    }
    NearHatchs left(copies.List());
    while (CHatch* const pHatch = left.Next(*pPos)) {
        pHatch->m_nFlag |= HATCH_USED_FLAG;
        EmitHatch(*pHatch, m_dZ, *pOut, *pPos, dCut);
    }
}
