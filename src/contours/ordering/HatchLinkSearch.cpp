#include "contours/ordering/HatchLinkSearch.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

namespace varnet {

namespace {

using EdgeNode = XR_CList<CEdge2D, CEdge2D&>::XR_CNode;

// So many edges from an end of a chain offer link points.
constexpr int kEdgesFromEnd = 3;

// Millimetres that a chain runs on at least, beyond what is cut.
constexpr double kLeastRest = 1.0;

// So many contours are held against all hatches.
constexpr int kFewSearches = 2;

bool IsOnOffer(CHatch const& hatch) {
    return (hatch.m_nFlag & HATCH_USED_FLAG) == 0 && hatch.m_EdgeList.IsEmpty() == 0 &&
           ClassOf(hatch) != kNeverLinkedClass;
}

// One search: the contour, and the best link so far.
class LinkSearch {
public:
    LinkSearch(tagLoopTreeNode& contour, CPoint2D const& pos, double dWidth, double dCut)
        : m_Contour(contour),
          m_Pos(pos),
          m_dWidth(dWidth),
          m_dLeast(dCut + kLeastRest),
          m_Reach(contour, dWidth) {}

    ContourReach& Reach() { return m_Reach; }
    tagHatchLink const& Best() const { return m_Link; }

    void LookAt(CHatch& hatch) {
        if (ClassOf(hatch) != kRingClass) return LookAtChain(hatch);
        for (EdgeNode const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            LookAtRing(hatch, p);
        }
    }

    // The vertex where an edge of a ring ends and the next one begins; not that between last and first.
    void LookAtRing(CHatch& hatch, EdgeNode const* pEdge) {
        if (pEdge->pNext == nullptr) return;
        CEdge2D const& e = pEdge->data;
        CEdge2D const& n = pEdge->pNext->data;
        if (IsBetter({e.m_ptEnd, e.m_ptEnd, e.m_ptStart, n.m_ptEnd})) m_Link.m_pHatch = &hatch;
    }

    void LookAtChain(CHatch& hatch) {
        LookFromHead(hatch);
        LookFromTail(hatch);
    }

private:
    bool IsBetter(LinkCandidate const& candidate) {
        return EvaluateLink(candidate, m_Pos, m_dWidth, m_Contour, m_Reach, m_Link) > 0.0;
    }

    void Offer(CHatch& hatch, std::int32_t bFromHead, LinkCandidate const& candidate) {
        if (!IsBetter(candidate)) return;
        m_Link.m_pHatch = &hatch;
        m_Link.m_bFromHead = bFromHead;
    }

    void LookFromHead(CHatch& hatch) {
        EdgeNode const* pEdge = hatch.m_EdgeList.m_pNodeHead;
        CPoint2D const& entry = pEdge->data.m_ptStart;
        double dRun = 0.0;
        for (int i = 0; i < kEdgesFromEnd && pEdge->pNext != nullptr; ++i, pEdge = pEdge->pNext) {
            CEdge2D const& e = pEdge->data;
            CEdge2D const& n = pEdge->pNext->data;
            dRun += Distance(e.m_ptStart, e.m_ptEnd);
            if (dRun > m_dLeast) Offer(hatch, 1, {entry, e.m_ptEnd, e.m_ptStart, n.m_ptStart});
            dRun += Distance(e.m_ptEnd, n.m_ptStart);
            if (dRun > m_dLeast) Offer(hatch, 1, {entry, n.m_ptStart, e.m_ptEnd, n.m_ptEnd});
        }
    }

    // Here the gap between two edges is run through only where the edge before it has run far enough.
    void LookFromTail(CHatch& hatch) {
        EdgeNode const* pEdge = hatch.m_EdgeList.m_pNodeTail;
        CPoint2D const& entry = pEdge->data.m_ptEnd;
        double dRun = 0.0;
        for (int i = 0; i < kEdgesFromEnd && pEdge->pPrev != nullptr; ++i, pEdge = pEdge->pPrev) {
            CEdge2D const& e = pEdge->data;
            CEdge2D const& n = pEdge->pPrev->data;
            dRun += Distance(e.m_ptStart, e.m_ptEnd);
            if (!(dRun > m_dLeast)) continue;
            Offer(hatch, 0, {entry, e.m_ptStart, e.m_ptEnd, n.m_ptEnd});
            dRun += Distance(n.m_ptEnd, e.m_ptStart);
            Offer(hatch, 0, {entry, n.m_ptEnd, e.m_ptStart, n.m_ptStart});
        }
    }

    tagLoopTreeNode& m_Contour;
    CPoint2D const& m_Pos;
    double m_dWidth;
    double m_dLeast;
    ContourReach m_Reach;
    tagHatchLink m_Link;
};

// A box that holds nothing is bounded too.
bool IsBounded(PlanBox const& box) {
    if (box.xMin > box.xMax) return true;
    return !std::isinf(box.xMin) && !std::isinf(box.yMin) && !std::isinf(box.xMax) && !std::isinf(box.yMax);
}

}  // namespace

LinkableHatchs::LinkableHatchs(XR_CList<void*, void*> const& hatchs) {
    ForEachHatch(hatchs, [this](CHatch& hatch) {
        if (IsOnOffer(hatch)) m_Hatchs.push_back(&hatch);
    });
}

tagHatchLink LinkableHatchs::Find(tagLoopTreeNode& contour, CPoint2D const& pos, double dWidth, double dCut) {
    LinkSearch search(contour, pos, dWidth, dCut);
    if (++m_nSearches <= kFewSearches || !IsBounded(search.Reach().Box())) {
        for (CHatch* const pHatch : m_Hatchs) {
            if (IsOnOffer(*pHatch)) search.LookAt(*pHatch);
        }
        return search.Best();
    }
    if (m_pTree == nullptr) BuildTree();
    std::int32_t nLastChain = -1;
    for (std::int32_t const n : VerticesIn(search.Reach().Box())) {
        Vertex const& vertex = m_Vertices[static_cast<std::size_t>(n)];
        CHatch& hatch = *m_Hatchs[static_cast<std::size_t>(vertex.nHatch)];
        if (!IsOnOffer(hatch)) continue;
        if (vertex.pEdge != nullptr) {
            search.LookAtRing(hatch, vertex.pEdge);
        } else if (std::exchange(nLastChain, vertex.nHatch) != vertex.nHatch) {
            search.LookAtChain(hatch);
        }
    }
    return search.Best();
}

void LinkableHatchs::BuildTree() {
    std::vector<PointSearch::Point> points;
    auto const add = [this, &points](CPoint2D const& point, Vertex const& vertex) {
        points.push_back({point.x, point.y, static_cast<std::int32_t>(m_Vertices.size())});
        m_Vertices.push_back(vertex);
    };
    for (std::size_t i = 0; i < m_Hatchs.size(); ++i) {
        auto const nHatch = static_cast<std::int32_t>(i);
        bool const bRing = ClassOf(*m_Hatchs[i]) == kRingClass;
        for (EdgeNode const* p = m_Hatchs[i]->m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            if (!bRing) add(p->data.m_ptStart, {nHatch, nullptr});
            add(p->data.m_ptEnd, {nHatch, bRing ? p : nullptr});
        }
    }
    m_pTree = std::make_unique<PointSearch>(std::move(points));
}

std::vector<std::int32_t> LinkableHatchs::VerticesIn(PlanBox const& box) const {
    std::vector<std::int32_t> vertices;
    m_pTree->FindInBox(box, vertices);
    std::sort(vertices.begin(), vertices.end());
    return vertices;
}

}  // namespace varnet
