#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "contours/HatchLink.h"
#include "contours/Paths.h"
#include "foundation/Geometry.h"

// Ordering as it is worded: exhaustive scans, step by step, on the lists themselves.

namespace literal {

using Pointers = XR_CList<void*, void*>;

inline std::vector<CHatch*> HatchsIn(Pointers const& list) {
    std::vector<CHatch*> hatchs;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        hatchs.push_back(static_cast<CHatch*>(p->data));
    }
    return hatchs;
}

inline double Squared(CPoint2D const& p, CPoint2D const& pos) {
    return (p.x - pos.x) * (p.x - pos.x) + (p.y - pos.y) * (p.y - pos.y);
}

// Whether a value is taken, and the value: mode 0 the distance below best, 1 above it, else a number of rand.
inline bool Takes(int nMode, CPoint2D const& p, CPoint2D const& pos, double& dBest) {
    double const d = nMode == 0 || nMode == 1 ? Squared(p, pos) : static_cast<double>(std::rand());
    bool const bTaken = nMode == 0 ? dBest > d : d > dBest;
    if (bTaken) dBest = d;
    return bTaken;
}

inline void OptimizeHatchs(CLayer& layer, CPoint2D& pos, int nMode) {
    if (layer.m_HatchList.IsEmpty()) return;
    std::vector<CHatch*> candidates = HatchsIn(layer.m_HatchList);
    layer.m_HatchList.RemoveAll();
    std::vector<CHatch*> results;
    while (!candidates.empty()) {
        double dBest = nMode == 0 ? 1e30 : -1.0;
        CHatch* pChoice = nullptr;
        bool bEnd = false;
        for (CHatch* const pHatch : candidates) {
            if (pHatch->m_EdgeList.IsEmpty()) continue;
            if (Takes(nMode, pHatch->m_EdgeList.GetHead().m_ptStart, pos, dBest)) {
                pChoice = pHatch;
                bEnd = false;
            }
            if (Takes(nMode, pHatch->m_EdgeList.GetTail().m_ptEnd, pos, dBest)) {
                pChoice = pHatch;
                bEnd = true;
            }
        }
        if (pChoice == nullptr) break;
        std::erase(candidates, pChoice);
        if (!bEnd) {
            pos = pChoice->m_EdgeList.GetTail().m_ptEnd;
            results.push_back(pChoice);
            continue;
        }
        pos = pChoice->m_EdgeList.GetHead().m_ptStart;
        auto* const pNew = new CHatch;
        pNew->m_nID = pChoice->m_nID;
        for (XR__POSITION* at = pChoice->m_EdgeList.GetTailPosition(); at != nullptr;) {
            CEdge2D const& edge = pChoice->m_EdgeList.GetPrev(at);
            CEdge2D turned(edge.m_ptEnd, edge.m_ptStart);
            pNew->m_EdgeList.AddTail(turned);
        }
        delete pChoice;
        results.push_back(pNew);
    }
    for (CHatch* const pHatch : results) layer.m_HatchList.AddTail(pHatch);
    for (CHatch const* const pHatch : candidates) delete pHatch;
}

inline CHatch* FindNearHatchAndAdjust(Pointers* pList, CPoint2D const& pos) {
    double dBest = 1e40;
    CHatch* pChoice = nullptr;
    int nKind = 0;  // 1 a ring, 2 at its start, 3 at its end
    CPoint2D place;
    for (CHatch* const pHatch : HatchsIn(*pList)) {
        if ((pHatch->m_nFlag & 0x1000) != 0 || pHatch->m_EdgeList.IsEmpty()) continue;
        CPoint2D const& s = pHatch->m_EdgeList.GetHead().m_ptStart;
        CPoint2D const& t = pHatch->m_EdgeList.GetTail().m_ptEnd;
        if (s == t) {
            for (XR__POSITION* at = pHatch->m_EdgeList.GetHeadPosition(); at != nullptr;) {
                CPoint2D const& p = pHatch->m_EdgeList.GetNext(at).m_ptStart;
                double const d = Squared(p, pos);
                if (dBest > d) {
                    dBest = d;
                    place = p;
                    pChoice = pHatch;
                    nKind = 1;
                }
            }
            continue;
        }
        double const ds = Squared(s, pos);
        double const dt = Squared(t, pos);
        if (dt >= ds && dBest > ds) {
            dBest = ds;
            pChoice = pHatch;
            nKind = 2;
        } else if (ds > dt && dBest > dt) {
            dBest = dt;
            pChoice = pHatch;
            nKind = 3;
        }
    }
    if (pChoice == nullptr) return nullptr;
    if (nKind == 3) pChoice->Reverse();
    if (nKind == 1) {
        int const n = pChoice->m_EdgeList.GetCount();
        for (int i = 0; i < n; ++i) {
            if (pChoice->m_EdgeList.GetHead().m_ptStart == place) break;
            CEdge2D head(pChoice->m_EdgeList.GetHead());
            pChoice->m_EdgeList.AddTail(head);
            pChoice->m_EdgeList.RemoveHead();
        }
    }
    return pChoice;
}

inline void OptimizeLoops(CLayer& layer, CPoint2D& pos, int nMode) {
    if (layer.m_RawLoopList.IsEmpty()) return;
    layer.BuildLoopList();
    std::vector<tagLoopTreeNode*> candidates = LoopsOf(layer.m_LoopList);
    std::vector<tagLoopTreeNode*> results;
    while (!candidates.empty()) {
        double dBest = nMode == 0 ? 1e10 : 0.0;
        tagLoopTreeNode* pChoice = nullptr;
        XR__POSITION* chosen = nullptr;
        for (tagLoopTreeNode* const pLoop : candidates) {
            if (pLoop->m_pPointList == nullptr) continue;
            PointList& points = *pLoop->m_pPointList;
            for (XR__POSITION* at = points.GetHeadPosition(); at != nullptr;) {
                XR__POSITION* const vertex = at;
                CPoint2D const& p = points.GetNext(at);
                bool const bEnd = vertex == points.GetHeadPosition() || vertex == points.GetTailPosition();
                if (pLoop->m_bClosed == 0 && !bEnd) continue;
                if (Takes(nMode, p, pos, dBest)) {
                    pChoice = pLoop;
                    chosen = vertex;
                }
            }
        }
        if (pChoice == nullptr) break;
        PointList& points = *pChoice->m_pPointList;
        if (points.GetCount() >= 2) {
            bool const bHead = chosen == points.GetHeadPosition();
            bool const bTail = chosen == points.GetTailPosition();
            if (pChoice->m_bClosed == 0) {
                if (!bTail) pChoice->ReverseLoop();
            } else if (!bHead && !bTail) {
                points.RemoveTail();
                // Marked by its place from the head, since a node may be handed out anew.
                int nHead = 0;
                for (XR__POSITION* at = points.GetHeadPosition(); at != chosen; points.GetNext(at)) ++nHead;
                for (; nHead > 0; --nHead) {
                    CPoint2D head(points.RemoveHead());
                    points.AddTail(head);
                }
                CPoint2D head(points.GetHead());
                points.AddTail(head);
            }
        }
        results.push_back(pChoice);
        pChoice->m_ChildList.RemoveAll();
        pos = points.GetHead();
        std::erase(candidates, pChoice);
    }
    layer.m_RawLoopList.RemoveAll();
    for (tagLoopTreeNode* const pLoop : results) layer.m_RawLoopList.AddTail(pLoop);
}

inline tagLoopTreeNode* FindNearLoopInList(Pointers* pList, CPoint2D const& pos) {
    double dBound = 1e20;
    double dBound2 = 1e40;
    tagLoopTreeNode* pResult = nullptr;
    for (tagLoopTreeNode* const pLoop : LoopsOf(*pList)) {
        if ((pLoop->m_nFlag & 0x1000) != 0 || pLoop->m_pPointList == nullptr) continue;
        for (XR__POSITION* at = pLoop->m_pPointList->GetHeadPosition(); at != nullptr;) {
            CPoint2D const& p = pLoop->m_pPointList->GetNext(at);
            if (std::fabs(p.x - pos.x) > dBound) continue;
            if (std::fabs(p.y - pos.y) > dBound) continue;
            double const d2 = Squared(p, pos);
            if (dBound2 > d2) {
                pResult = pLoop;
                dBound2 = d2;
                dBound = std::sqrt(d2);
            }
        }
    }
    return pResult;
}

inline void AddLoopToOrderedLayer(tagLoopTreeNode* pLoop, CLayer* pOut, CPoint2D& pos, double dCut) {
    LoopPtr pCopy = std::make_unique<tagLoopTreeNode>(0);
    pCopy->CopyOtherLoop(pLoop);
    pCopy->m_nFlag = pLoop->m_nDirection == 1 ? 1 : 2;
    if (pCopy->m_pPointList->IsEmpty()) return;
    if (pCopy->m_bClosed != 0) pCopy->AdjustHeadToNearPoint(pos);
    if (dCut > 0.0) pCopy->CutLoop(dCut, 1.0, OPERATE_AT_TAIL, 0);
    if (pCopy->m_pPointList->IsEmpty()) return;
    pos = pCopy->m_pPointList->GetTail();
    pOut->m_RawLoopList.AddTail(pCopy.release());
}

inline int FindFootOnLoopEdge(tagLoopTreeNode* pLoop, XR__POSITION* end, CPoint2D point, double dSpan,
                              CPoint2D& foot, double angles[2]) {
    PointList& list = *pLoop->m_pPointList;
    std::vector<CPoint2D> points;
    int nEnd = 0;
    for (XR__POSITION* at = list.GetHeadPosition(); at != nullptr;) {
        if (at == end) nEnd = static_cast<int>(points.size());
        points.push_back(list.GetNext(at));
    }
    int const nLast = static_cast<int>(points.size()) - 1;
    auto const at = [&points](int i) -> CPoint2D& { return points[static_cast<std::size_t>(i)]; };
    CPoint2D& s = at(nEnd - 1);
    CPoint2D& t = at(nEnd);
    double const dirS = CalAngleRad(nEnd - 1 == 0 ? at(nLast - 1) : at(nEnd - 2), s);
    double const dirE = CalAngleRad(s, t);
    double const dirN = CalAngleRad(t, nEnd == nLast ? at(1) : at(nEnd + 1));
    double const s2 = Squared(s, point);
    double const t2 = Squared(t, point);
    double const e2 = Squared(s, t);
    if (t2 >= e2 + s2) {
        foot = s;
        angles[0] = dirS;
        angles[1] = dirE;
        return 1;
    }
    if (s2 >= e2 + t2) {
        foot = t;
        angles[0] = dirE;
        angles[1] = dirN;
        return 2;
    }
    double const h2 = D2ofPtoLine(point, s, t);
    double const ds = std::sqrt(s2 - h2);
    double const dt = std::sqrt(t2 - h2);
    foot = ExtendLine(&s, &t, ds, 1);
    angles[0] = ds > dSpan * 0.5 ? dirE : dirS;
    angles[1] = dt > dSpan * 0.5 ? dirE : dirN;
    return 0;
}

inline double Fold(double t) {
    double const a = std::fabs(t);
    double const b = std::numbers::pi - std::fabs(t);
    return b < a ? b : a;
}

inline double EvaluateHatchLink(CPoint2D candidate[4], CPoint2D& pos, double dWidth, tagLoopTreeNode* pLoop,
                                tagHatchLink& link) {
    CPoint2D const entry(candidate[0]);
    CPoint2D const point(candidate[1]);
    CPoint2D const back(candidate[2]);
    CPoint2D const front(candidate[3]);
    double const d2 = Squared(entry, pos);
    if (d2 > link.m_dCost2) return -1.0;
    double const dLimit = dWidth * 3.24 * dWidth;
    double dNear = 1e20;
    XR__POSITION* found = nullptr;
    if (pLoop->m_pPointList == nullptr || pLoop->m_pPointList->IsEmpty()) return -1.0;
    PointList& list = *pLoop->m_pPointList;
    XR__POSITION* at = list.GetHeadPosition();
    CPoint2D start(list.GetNext(at));
    while (at != nullptr) {
        XR__POSITION* const end = at;
        CPoint2D const p(list.GetNext(at));
        double const d = CalMinD2ofPtoLine(point, start, p);
        if (dLimit > d && dNear + 0.0001 > d) {
            dNear = d;
            found = end;
        }
        start = p;
    }
    if (found == nullptr) return -1.0;
    double const dRest = std::sqrt(dNear) - dWidth;
    double const dGap = dRest > 0.0 ? dRest : 0.0;
    CPoint2D foot;
    double a[2];
    int const nKind = literal::FindFootOnLoopEdge(pLoop, found, point, 2 * dWidth, foot, a);
    double const hIn = CalAngleRad(back, point);
    double const hOut = CalAngleRad(point, front);
    double const c0i = Fold(CalAngleChange(a[0], hIn));
    double const c0o = Fold(CalAngleChange(a[0], hOut));
    double const c1i = Fold(CalAngleChange(a[1], hIn));
    double const c1o = Fold(CalAngleChange(a[1], hOut));
    double const dCost = std::sqrt(d2) + dGap * 3.0;
    if (!(link.m_dCost > dCost)) return -1.0;
    link.m_FootPos = found;
    link.m_nFootKind = nKind;
    link.m_Foot = foot;
    double const f = CalAngleRad(point, foot);
    double tb = CalAngleRad(point, back) - f;
    double tn = CalAngleRad(point, front) - f;
    if (tb < 0) tb += 2 * std::numbers::pi;
    if (tn < 0) tn += 2 * std::numbers::pi;
    link.m_bSide = tb > tn ? 1 : 0;
    double const dLeast = std::numbers::pi / 6;
    link.m_bCutTail = (link.m_bSide == 1 ? c0i : c0o) < dLeast ? 1 : 0;
    link.m_bCutHead = (link.m_bSide == 1 ? c1o : c1i) < dLeast ? 1 : 0;
    link.m_dCost = dCost;
    link.m_dCost2 = dCost * dCost;
    link.m_HatchPoint = point;
    return dCost;
}

inline tagHatchLink FindLink(tagLoopTreeNode* pLoop, Pointers* pHatchs, CPoint2D& pos, double dWidth,
                             double dCut) {
    double const dMin = dCut + 1.0;
    tagHatchLink link;
    for (CHatch* const h : HatchsIn(*pHatchs)) {
        if ((h->m_nFlag & 0x1000) != 0 || h->m_EdgeList.IsEmpty() || h->m_nID % 100 == 2) continue;
        std::vector<CEdge2D> edges;
        for (XR__POSITION* at = h->m_EdgeList.GetHeadPosition(); at != nullptr;) {
            edges.push_back(h->m_EdgeList.GetNext(at));
        }
        auto const offer = [&](CPoint2D const& e, CPoint2D const& l, CPoint2D const& b, CPoint2D const& f) {
            CPoint2D candidate[4] = {e, l, b, f};
            bool const bBetter = literal::EvaluateHatchLink(candidate, pos, dWidth, pLoop, link) > 0.0;
            if (bBetter) link.m_pHatch = h;
            return bBetter;
        };
        auto const length = [](CPoint2D const& a, CPoint2D const& b) { return std::sqrt(Squared(a, b)); };
        if (h->m_nID % 100 == 1) {
            for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
                CEdge2D const& e = edges[i];
                CEdge2D const& n = edges[i + 1];
                offer(e.m_ptEnd, e.m_ptEnd, e.m_ptStart, n.m_ptEnd);
            }
            continue;
        }
        CPoint2D const first = edges.front().m_ptStart;
        double dRun = 0.0;
        for (std::size_t i = 0; i < 3 && i + 1 < edges.size(); ++i) {
            CEdge2D const& e = edges[i];
            CEdge2D const& n = edges[i + 1];
            dRun += length(e.m_ptStart, e.m_ptEnd);
            if (dRun > dMin && offer(first, e.m_ptEnd, e.m_ptStart, n.m_ptStart)) link.m_bFromHead = 1;
            dRun += length(e.m_ptEnd, n.m_ptStart);
            if (dRun > dMin && offer(first, n.m_ptStart, e.m_ptEnd, n.m_ptEnd)) link.m_bFromHead = 1;
        }
        CPoint2D const last = edges.back().m_ptEnd;
        std::reverse(edges.begin(), edges.end());
        dRun = 0.0;
        for (std::size_t i = 0; i < 3 && i + 1 < edges.size(); ++i) {
            CEdge2D const& e = edges[i];
            CEdge2D const& n = edges[i + 1];
            dRun += length(e.m_ptStart, e.m_ptEnd);
            bool const bHolds = dRun > dMin;
            if (bHolds && offer(last, e.m_ptStart, e.m_ptEnd, n.m_ptEnd)) link.m_bFromHead = 0;
            if (bHolds) dRun += length(n.m_ptEnd, e.m_ptStart);
            if (bHolds && offer(last, n.m_ptEnd, e.m_ptStart, n.m_ptStart)) link.m_bFromHead = 0;
        }
    }
    return link;
}

inline void Mark(CPoint2D& point) {
    point.m_fAttr2 = std::bit_cast<float>(std::bit_cast<std::uint32_t>(point.m_fAttr2) | 1u);
}

inline LoopPtr NewPath() {
    LoopPtr pPath = std::make_unique<tagLoopTreeNode>(0);
    pPath->m_pPointList = new PointList(10);
    return pPath;
}

inline void Join(tagLoopTreeNode* pLoop, tagLoopTreeNode* a, tagLoopTreeNode* b) {
    if (!a->m_pPointList->IsEmpty()) {
        if (!pLoop->m_pPointList->IsEmpty()) Mark(pLoop->m_pPointList->GetHead());
        pLoop->InsertLoopAtHead(a, POINT_INSERTED);
    }
    if (!b->m_pPointList->IsEmpty()) {
        Mark(b->m_pPointList->GetHead());
        pLoop->InsertLoopAtTail(b, POINT_INSERTED);
    }
    pLoop->m_bClosed = 0;
}

inline void LinkLoopWithHatchs(tagLoopTreeNode* pLoop, Pointers* pHatchs, CPoint2D& pos, CLayer* pOut,
                               double dWidth, double dCut) {
    tagHatchLink const link = literal::FindLink(pLoop, pHatchs, pos, dWidth, dCut);
    CHatch* const h = link.m_pHatch;
    auto const addLoop = [&] { literal::AddLoopToOrderedLayer(pLoop, pOut, pos, dCut); };
    if (h == nullptr) {
        if (pLoop->m_nDirection == 0) pLoop->ReverseLoop();
        return addLoop();
    }
    double const dTailCut = (link.m_bCutTail - link.m_bCutHead + 1) * 0.5 * dCut;
    double const dHeadCut = (link.m_bCutHead - link.m_bCutTail + 1) * 0.5 * dCut;
    if (link.m_nFootKind == 0) {
        CPoint2D foot(link.m_Foot);
        pLoop->m_pPointList->InsertBefore(link.m_FootPos, foot);
    }
    if (pLoop->AdjutstHeadToPoint(link.m_Foot) == 0) return addLoop();
    pLoop->CutLoop(dTailCut, 1.0, OPERATE_AT_TAIL, 0);
    pLoop->CutLoop(dHeadCut, 1.0, OPERATE_AT_HEAD, 0);
    if (h->m_nID % 100 == 1) {
        double const dSpan = 3 * dCut + 2.0;
        LoopPtr const r(ConvertHatchToLoop(h, pOut->m_dZ, 4));
        if (link.m_bSide != 0) r->ReverseLoop();
        r->m_bClosed = 1;
        if (r->AdjutstHeadToPoint(link.m_HatchPoint) == 0) return addLoop();
        LoopPtr const a(r->CutLoop(dSpan, 0.5, OPERATE_AT_TAIL, 1));
        LoopPtr const b(r->CutLoop(dSpan, 0.5, OPERATE_AT_HEAD, 1));
        a->CutLoop(dHeadCut, 1.0, OPERATE_AT_TAIL, 0);
        b->CutLoop(dTailCut, 1.0, OPERATE_AT_HEAD, 0);
        Join(pLoop, a.get(), b.get());
        literal::AddLoopToOrderedLayer(pLoop, pOut, pos, 0.0);
        r->m_bClosed = 0;
        literal::AddLoopToOrderedLayer(r.get(), pOut, pos, dCut);
        if (!pOut->m_RawLoopList.IsEmpty()) LoopsOf(pOut->m_RawLoopList).back()->m_nFlag = 4;
        h->m_nFlag |= 0x1000;
        return;
    }
    LoopPtr a = NewPath();
    LoopPtr b = NewPath();
    auto const next = [&] {
        if (link.m_bFromHead != 0) return h->m_EdgeList.RemoveHead();
        CEdge2D const tail(h->m_EdgeList.RemoveTail());
        return CEdge2D(tail.m_ptEnd, tail.m_ptStart);
    };
    for (;;) {
        if (h->m_EdgeList.IsEmpty()) return addLoop();
        CEdge2D e(next());
        if (e.m_ptStart == link.m_HatchPoint) {
            a->m_pPointList->AddTail(e.m_ptStart);
            b->m_pPointList->AddTail(e.m_ptStart);
            b->m_pPointList->AddTail(e.m_ptEnd);
            break;
        }
        a->m_pPointList->AddTail(e.m_ptStart);
        a->m_pPointList->AddTail(e.m_ptEnd);
        if (e.m_ptEnd == link.m_HatchPoint) {
            b->m_pPointList->AddTail(e.m_ptEnd);
            break;
        }
    }
    if (!h->m_EdgeList.IsEmpty()) {
        CEdge2D e(next());
        b->m_pPointList->AddTail(e.m_ptStart);
        b->m_pPointList->AddTail(e.m_ptEnd);
    }
    if (link.m_bSide != 0) {
        a->ReverseLoop();
        b->ReverseLoop();
        std::swap(a, b);
    }
    a->CutLoop(dHeadCut, 0.5, OPERATE_AT_TAIL, 0);
    b->CutLoop(dTailCut, 0.5, OPERATE_AT_HEAD, 0);
    Join(pLoop, a.get(), b.get());
    literal::AddLoopToOrderedLayer(pLoop, pOut, pos, 0.0);
}

inline void OptimizeLoopAndChildLoopHatch(CLayer& layer, tagLoopTreeNode* pLoop, CPoint2D* pPos, CLayer* pOut,
                                          double dWidth, double dCut) {
    pOut->m_dZ = layer.m_dZ;
    Pointers local;
    for (CHatch* const pHatch : HatchesOf(layer)) {
        if (pHatch->m_nID >= 1000 || (pHatch->m_nFlag & 0x1000) != 0) continue;
        if (pHatch->m_EdgeList.IsEmpty()) continue;
        CPoint2D point(pHatch->m_EdgeList.GetHead().m_ptStart);
        if (IsInLoop(pLoop, point) != 1) continue;
        std::vector<tagLoopTreeNode*> const children = LoopsOf(pLoop->m_ChildList);
        if (std::any_of(children.begin(), children.end(),
                        [&point](tagLoopTreeNode* pChild) { return IsInLoop(pChild, point) != 0; })) {
            continue;
        }
        auto* const pCopy = new CHatch;
        pCopy->Copy(pHatch);
        local.AddTail(pCopy);
        pHatch->m_nFlag = 0x1000;
    }
    literal::LinkLoopWithHatchs(pLoop, &local, *pPos, pOut, dWidth, dCut);
    while (tagLoopTreeNode* const pChild = literal::FindNearLoopInList(&pLoop->m_ChildList, *pPos)) {
        literal::LinkLoopWithHatchs(pChild, &local, *pPos, pOut, dWidth, dCut);
        pChild->m_nFlag |= 0x1000;
    }
    while (CHatch* const h = literal::FindNearHatchAndAdjust(&local, *pPos)) {
        h->m_nFlag |= 0x1000;
        LoopPtr p(ConvertHatchToLoop(h, layer.m_dZ, 4));
        if (h->m_nID % 100 == 1) p->CutLoop(dCut, 1.0, OPERATE_AT_TAIL, 0);
        if (p->m_pPointList->GetCount() < 2) continue;
        *pPos = p->m_pPointList->GetTail();
        pOut->m_RawLoopList.AddTail(p.release());
    }
    for (CHatch const* const pHatch : HatchsIn(local)) delete pHatch;
}

}  // namespace literal
