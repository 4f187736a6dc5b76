// Ordering hatches, and turning them so that they begin where the head comes in.

#include "contours/ordering/HatchOrder.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/memory/LeaveAllocated.h"

using namespace varnet;

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

// Makes the new hatch run the other way, in place of the old one. The edges move over; their nodes stay.
CHatch* Turned(CHatch* pHatch, std::unique_ptr<CHatch> turned) {
    turned->m_nID = pHatch->m_nID;
    EdgeList& edges = turned->m_EdgeList;
    SwapElements(edges, pHatch->m_EdgeList);
    delete pHatch;
    ReverseOrder(edges);
    for (auto* p = edges.m_pNodeHead; p != nullptr; p = p->pNext) p->data.Reverse();
    return turned.release();
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

std::vector<CHatch*> HatchsOf(XR_CList<void*, void*> const& list) {
    std::vector<CHatch*> hatchs;
    hatchs.reserve(static_cast<std::size_t>(list.GetCount()));
    ForEachHatch(list, [&hatchs](CHatch& hatch) { hatchs.push_back(&hatch); });
    return hatchs;
}

// Half a cache line.
struct alignas(32) Ends {
    double xStart = 0.0;
    double yStart = 0.0;
    double xEnd = 0.0;
    double yEnd = 0.0;
};

// What will be looked at soon. An edge in its node fills more than one cache line.
void PrefetchBehind(std::vector<CHatch*> const& hatchs, std::size_t i) {
    using namespace look_ahead;
    if (i + kHatch < hatchs.size()) Prefetch(hatchs[i + kHatch]);
    if (i + kHatchEdges >= hatchs.size()) return;
    EdgeList::XR_CNode const* const pNode = hatchs[i + kHatchEdges]->m_EdgeList.m_pNodeHead;
    Prefetch(pNode);
    if (pNode != nullptr) Prefetch(pNode + 1);
}

// Offers both ends of every hatch that has edges, and copies them.
std::vector<Ends> OfferEnds(std::vector<CHatch*> const& hatchs, GreedyOrder& order) {
    std::vector<Ends> ends(hatchs.size());
    for (std::size_t i = 0; i < hatchs.size(); ++i) {
        PrefetchBehind(hatchs, i);
        CHatch& hatch = *hatchs[i];
        order.AddPath();
        if (hatch.m_EdgeList.IsEmpty() != 0) continue;
        ends[i] = {StartOf(hatch).x, StartOf(hatch).y, EndOf(hatch).x, EndOf(hatch).y};
        order.AddPoint(ends[i].xStart, ends[i].yStart);
        order.AddPoint(ends[i].xEnd, ends[i].yEnd);
    }
    return ends;
}

enum class EnteredAt : unsigned char { kNone, kStart, kEnd };

// A hatch that no step has chosen. A host may hold one that has edges.
void LetGo(CHatch* pHatch) {
    if (pHatch->m_EdgeList.IsEmpty() != 0) {
        delete pHatch;
    } else {
        LeaveAllocated(pHatch);
    }
}

// New hatches for those that will be turned.
std::vector<std::unique_ptr<CHatch>> HatchsToTurn(std::vector<EnteredAt> const& entered) {
    auto const nTurned = std::count(entered.begin(), entered.end(), EnteredAt::kEnd);
    std::vector<std::unique_ptr<CHatch>> fresh(static_cast<std::size_t>(nTurned));
    for (auto& hatch : fresh) hatch = std::make_unique<CHatch>();
    return fresh;
}

// Turns the hatches that were entered at their ends, and lets those go that were not entered.
void TurnAll(std::vector<CHatch*>& hatchs, std::vector<EnteredAt> const& entered,
             std::vector<std::unique_ptr<CHatch>> fresh) {
    auto next = fresh.begin();
    for (std::size_t i = 0; i < hatchs.size(); ++i) {
        PrefetchBehind(hatchs, i);
        if (entered[i] == EnteredAt::kNone) LetGo(hatchs[i]);
        if (entered[i] == EnteredAt::kEnd) hatchs[i] = Turned(hatchs[i], std::move(*next++));
    }
}

}  // namespace

// The ends are copied: hatches lie wide apart in memory, and are gone through in the order of the list only.
void CLayer::OptimizeHatchs(CPoint2D& pos, int nMode) {
    if (m_HatchList.IsEmpty() != 0) return;
    std::vector<CHatch*> hatchs = HatchsOf(m_HatchList);
    GreedyOrder order(nMode, nMode == GreedyOrder::kNearest ? kPassReach2 : kBelowAll);
    std::vector<Ends> const ends = OfferEnds(hatchs, order);
    std::vector<std::int32_t> sequence;
    sequence.reserve(hatchs.size());
    std::vector<EnteredAt> entered(hatchs.size(), EnteredAt::kNone);
    CPoint2D from(pos);
    for (auto pick = order.Next(from); pick.nPath >= 0; pick = order.Next(from)) {
        auto const i = static_cast<std::size_t>(pick.nPath);
        entered[i] = pick.nPoint == 0 ? EnteredAt::kStart : EnteredAt::kEnd;
        from = pick.nPoint == 0 ? CPoint2D(ends[i].xEnd, ends[i].yEnd)
                                : CPoint2D(ends[i].xStart, ends[i].yStart);
        sequence.push_back(pick.nPath);
    }
    // All memory is taken before anything changes: no hatch is ever in two lists, or in none.
    XR_CList<void*, void*> ordered;
    for (std::size_t n = sequence.size(); n > 0; --n) ordered.AddTail(static_cast<void*>(nullptr));
    TurnAll(hatchs, entered, HatchsToTurn(entered));
    auto* pPlace = ordered.m_pNodeHead;
    for (std::int32_t const n : sequence) {
        pPlace->data = hatchs[static_cast<std::size_t>(n)];
        pPlace = pPlace->pNext;
    }
    SwapElements(m_HatchList, ordered);
    if (!sequence.empty()) pos = EndOf(*hatchs[static_cast<std::size_t>(sequence.back())]);
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
                m_Order.AddPoint(p->data.m_ptStart.x, p->data.m_ptStart.y);
            }
        } else if (IsNumber(StartOf(hatch)) && IsNumber(EndOf(hatch))) {
            // A chain is entered at its nearer end: where one distance is not a number, none is nearer.
            m_Order.AddPoint(StartOf(hatch).x, StartOf(hatch).y);
            m_Order.AddPoint(EndOf(hatch).x, EndOf(hatch).y);
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
