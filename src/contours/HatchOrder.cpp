// Ordering hatches, and turning them so that they begin where the head comes in.

#include "contours/HatchOrder.h"

#include <cmath>
#include <utility>

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

namespace {

// Squared millimetres: what is not nearer is not found.
constexpr double kPassReach2 = 1e30;
constexpr double kStepReach2 = 1e40;

// Below every distance, and below every number of rand.
constexpr double kBelowAll = -1.0;

using EdgeList = XR_CList<CEdge2D, CEdge2D&>;

CPoint2D& StartOf(CHatch& hatch) { return hatch.m_EdgeList.m_pNodeHead->data.m_ptStart; }
CPoint2D& EndOf(CHatch& hatch) { return hatch.m_EdgeList.m_pNodeTail->data.m_ptEnd; }

bool IsOnOffer(CHatch const& hatch) {
    return (hatch.m_nFlag & HATCH_USED_FLAG) == 0 && hatch.m_EdgeList.IsEmpty() == 0;
}

// By where it ends, whatever its id.
bool IsRing(CHatch& hatch) { return (StartOf(hatch) == EndOf(hatch)) != 0; }

// A new hatch that runs the other way, in place of this one. The edges move over; their nodes stay.
CHatch* Turned(CHatch* pHatch) {
    auto* const pTurned = new CHatch;
    pTurned->m_nID = pHatch->m_nID;
    EdgeList& edges = pTurned->m_EdgeList;
    int const nBlockSize = edges.m_nBlockSize;
    edges = pHatch->m_EdgeList;
    pHatch->m_EdgeList = EdgeList();
    edges.m_nBlockSize = nBlockSize;
    delete pHatch;
    ReverseOrder(edges);
    for (auto* p = edges.m_pNodeHead; p != nullptr; p = p->pNext) p->data.Reverse();
    return pTurned;
}

// Makes an edge that starts at the place the first one.
void BeginAt(CHatch& ring, CPoint2D const& place) {
    EdgeList& edges = ring.m_EdgeList;
    for (int n = edges.GetCount(); n > 0 && !(edges.GetHead().m_ptStart == place); --n) {
        CEdge2D edge(edges.GetHead());
        edges.AddTail(edge);
        edges.RemoveHead();
    }
}

// A way into a hatch: at a vertex of a ring, or at one end of a chain.
struct Entry {
    CHatch* pHatch = nullptr;
    bool bRing = false;
    bool bAtEnd = false;
    CPoint2D place;
};

CHatch* Enter(Entry const& entry) {
    if (entry.pHatch == nullptr) return nullptr;
    if (entry.bRing) {
        BeginAt(*entry.pHatch, entry.place);
    } else if (entry.bAtEnd) {
        entry.pHatch->Reverse();
    }
    return entry.pHatch;
}

void OfferRing(CHatch& hatch, CPoint2D const& pos, double& dBest2, Entry& best) {
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        double const d2 = D2ofPtoP(p->data.m_ptStart, pos);
        if (!(dBest2 > d2)) continue;
        dBest2 = d2;
        best = {&hatch, true, false, p->data.m_ptStart};
    }
}

void OfferChain(CHatch& hatch, CPoint2D const& pos, double& dBest2, Entry& best) {
    double const dStart2 = D2ofPtoP(StartOf(hatch), pos);
    double const dEnd2 = D2ofPtoP(EndOf(hatch), pos);
    if (dEnd2 >= dStart2 && dBest2 > dStart2) {
        dBest2 = dStart2;
        best = {&hatch, false, false, CPoint2D()};
    } else if (dStart2 > dEnd2 && dBest2 > dEnd2) {
        dBest2 = dEnd2;
        best = {&hatch, false, true, CPoint2D()};
    }
}

bool IsNumber(CPoint2D const& point) { return !std::isnan(point.x) && !std::isnan(point.y); }

std::vector<CHatch*> TakeAll(XR_CList<void*, void*>& list) {
    std::vector<CHatch*> hatchs;
    hatchs.reserve(static_cast<std::size_t>(list.GetCount()));
    ForEachHatch(list, [&hatchs](CHatch& hatch) { hatchs.push_back(&hatch); });
    list.RemoveAll();
    return hatchs;
}

}  // namespace

void CLayer::OptimizeHatchs(CPoint2D& pos, int nMode) {
    if (m_HatchList.IsEmpty() != 0) return;
    std::vector<CHatch*> hatchs = TakeAll(m_HatchList);
    GreedyOrder order(nMode, nMode == GreedyOrder::kNearest ? kPassReach2 : kBelowAll);
    for (CHatch* const pHatch : hatchs) {
        order.AddPath();
        if (pHatch->m_EdgeList.IsEmpty() != 0) continue;
        order.AddPoint(StartOf(*pHatch));
        order.AddPoint(EndOf(*pHatch));
    }
    for (auto pick = order.Next(pos); pick.nPath >= 0; pick = order.Next(pos)) {
        CHatch* pHatch = std::exchange(hatchs[static_cast<std::size_t>(pick.nPath)], nullptr);
        if (pick.nPoint == 1) pHatch = Turned(pHatch);
        pos = EndOf(*pHatch);
        m_HatchList.AddTail(pHatch);
    }
    for (CHatch const* const pHatch : hatchs) delete pHatch;
}

CHatch* FindNearHatchAndAdjust(XR_CList<void*, void*>* pList, CPoint2D const& pos) {
    double dBest2 = kStepReach2;
    Entry best;
    ForEachHatch(*pList, [&](CHatch& hatch) {
        if (!IsOnOffer(hatch)) return;
        if (IsRing(hatch)) {
            OfferRing(hatch, pos, dBest2, best);
        } else {
            OfferChain(hatch, pos, dBest2, best);
        }
    });
    return Enter(best);
}

NearHatchs::NearHatchs(XR_CList<void*, void*> const& list) : m_Order(GreedyOrder::kNearest, kStepReach2) {
    ForEachHatch(list, [this](CHatch& hatch) {
        if (!IsOnOffer(hatch)) return;
        m_Hatchs.push_back(&hatch);
        m_Order.AddPath();
        if (IsRing(hatch)) {
            for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
                m_Order.AddPoint(p->data.m_ptStart);
            }
        } else if (IsNumber(StartOf(hatch)) && IsNumber(EndOf(hatch))) {
            // A chain is entered at its nearer end: where one distance is not a number, none is nearer.
            m_Order.AddPoint(StartOf(hatch));
            m_Order.AddPoint(EndOf(hatch));
        }
    });
}

CHatch* NearHatchs::Next(CPoint2D const& pos) {
    GreedyOrder::Pick const pick = m_Order.Next(pos);
    if (pick.nPath < 0) return nullptr;
    CHatch& hatch = *m_Hatchs[static_cast<std::size_t>(pick.nPath)];
    if (!IsRing(hatch)) return Enter({&hatch, false, pick.nPoint == 1, CPoint2D()});
    auto const* pEdge = hatch.m_EdgeList.m_pNodeHead;
    for (std::int32_t i = 0; i < pick.nPoint; ++i) pEdge = pEdge->pNext;
    return Enter({&hatch, true, false, pEdge->data.m_ptStart});
}
