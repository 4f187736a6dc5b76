// Opening a contour where a hatch passes by, and splicing stretches of the hatch into the opening.

#include <memory>
#include <utility>

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "contours/ordering/HatchLinkSearch.h"
#include "foundation/memory/AddNew.h"

using namespace varnet;

namespace {

// Millimetres that are left at least: of a ring when a stretch is cut off it, and of a stretch of a chain
// when it is shortened at the opening; of a contour when it is opened or emitted, and of a stretch of a ring
// when it is shortened.
constexpr double kKeepOfHatch = 0.5;
constexpr double kKeepOfContour = 1.0;

// The stretches of a ring: so many times the opening, and so many millimetres more.
constexpr double kStretchPerCut = 3.0;
constexpr double kStretch = 2.0;

using Path = std::unique_ptr<tagLoopTreeNode>;

// How much comes off the contour at the two ends of the opening, and off the stretches that meet them.
struct Opening {
    double dTailCut;
    double dHeadCut;
};

// ---- opening

// All on the side where the hatch runs along the contour, or half on each.
Opening OpeningOf(tagHatchLink const& link, double dCut) {
    return {(link.m_bCutTail - link.m_bCutHead + 1) * 0.5 * dCut,
            (link.m_bCutHead - link.m_bCutTail + 1) * 0.5 * dCut};
}

// Makes the foot a vertex, and turns the contour to begin and end there; false where it is not found again.
bool TurnToFoot(tagLoopTreeNode& contour, tagHatchLink const& link) {
    if (link.m_nFootKind == 0) {
        CPoint2D foot(link.m_Foot);
        contour.m_pPointList->InsertBefore(link.m_FootPos, foot);
    }
    return contour.AdjutstHeadToPoint(link.m_Foot) != 0;
}

void Open(tagLoopTreeNode& contour, Opening const& opening) {
    contour.CutLoop(opening.dTailCut, kKeepOfContour, OPERATE_AT_TAIL, 0);
    contour.CutLoop(opening.dHeadCut, kKeepOfContour, OPERATE_AT_HEAD, 0);
}

// ---- splicing

// Puts one stretch in front of the contour and the other behind it.
void Splice(tagLoopTreeNode& contour, tagLoopTreeNode& before, tagLoopTreeNode& behind) {
    if (PointCount(before) > 0) {
        if (PointCount(contour) > 0) SetPointBits(contour.m_pPointList->GetHead(), POINT_JOINT);
        contour.InsertLoopAtHead(&before, POINT_INSERTED);
    }
    if (PointCount(behind) > 0) {
        SetPointBits(behind.m_pPointList->GetHead(), POINT_JOINT);
        contour.InsertLoopAtTail(&behind, POINT_INSERTED);
    }
    contour.m_bClosed = 0;
}

// Two stretches from the link point of the ring go in; what is left of it is emitted next.
void SpliceRing(tagLoopTreeNode& contour, tagHatchLink const& link, Opening const& opening, CPoint2D& pos,
                CLayer& out, double dCut) {
    double const dSpan = kStretchPerCut * dCut + kStretch;
    Path const pRing(ConvertHatchToLoop(link.m_pHatch, out.m_dZ, LOOP_KIND_HATCH));
    if (link.m_bSide != 0) pRing->ReverseLoop();
    pRing->m_bClosed = 1;
    if (pRing->AdjutstHeadToPoint(link.m_HatchPoint) == 0) {
        return AddLoopToOrderedLayer(&contour, &out, pos, dCut);
    }
    Path const pBefore(pRing->CutLoop(dSpan, kKeepOfHatch, OPERATE_AT_TAIL, 1));
    Path const pBehind(pRing->CutLoop(dSpan, kKeepOfHatch, OPERATE_AT_HEAD, 1));
    pBefore->CutLoop(opening.dHeadCut, kKeepOfContour, OPERATE_AT_TAIL, 0);
    pBehind->CutLoop(opening.dTailCut, kKeepOfContour, OPERATE_AT_HEAD, 0);
    Splice(contour, *pBefore, *pBehind);
    AddLoopToOrderedLayer(&contour, &out, pos, 0.0);
    pRing->m_bClosed = 0;
    AddLoopToOrderedLayer(pRing.get(), &out, pos, dCut);
    if (out.m_RawLoopList.IsEmpty() == 0) {
        static_cast<tagLoopTreeNode*>(out.m_RawLoopList.GetTail())->m_nFlag = LOOP_KIND_HATCH;
    }
    link.m_pHatch->m_nFlag |= HATCH_USED_FLAG;
}

CEdge2D TakeEdge(CHatch& hatch, bool bFromHead) {
    if (bFromHead) return hatch.m_EdgeList.RemoveHead();
    CEdge2D edge(hatch.m_EdgeList.RemoveTail());
    edge.Reverse();
    return edge;
}

void AppendEdge(tagLoopTreeNode& path, CEdge2D& edge) {
    path.m_pPointList->AddTail(edge.m_ptStart);
    path.m_pPointList->AddTail(edge.m_ptEnd);
}

// Takes edges off the end of the chain: for the one stretch those up to the link point, for the other one the
// edge that was met as beginning there, if any, and one edge more. False where the chain ends before the
// point is reached.
bool TakeStretches(tagHatchLink const& link, tagLoopTreeNode& upTo, tagLoopTreeNode& from) {
    CHatch& hatch = *link.m_pHatch;
    bool const bFromHead = link.m_bFromHead != 0;
    for (bool bReached = false; !bReached;) {
        if (hatch.m_EdgeList.IsEmpty() != 0) return false;
        CEdge2D edge(TakeEdge(hatch, bFromHead));
        if (edge.m_ptStart == link.m_HatchPoint) {
            upTo.m_pPointList->AddTail(edge.m_ptStart);
            AppendEdge(from, edge);
            bReached = true;
        } else {
            AppendEdge(upTo, edge);
            bReached = (edge.m_ptEnd == link.m_HatchPoint) != 0;
            if (bReached) from.m_pPointList->AddTail(edge.m_ptEnd);
        }
    }
    if (hatch.m_EdgeList.IsEmpty() == 0) {
        CEdge2D edge(TakeEdge(hatch, bFromHead));
        AppendEdge(from, edge);
    }
    return true;
}

// What is left of the chain stays a hatch.
void SpliceChain(tagLoopTreeNode& contour, tagHatchLink const& link, Opening const& opening, CPoint2D& pos,
                 CLayer& out, double dCut) {
    Path pBefore = NewPath();
    Path pBehind = NewPath();
    if (!TakeStretches(link, *pBefore, *pBehind)) return AddLoopToOrderedLayer(&contour, &out, pos, dCut);
    if (link.m_bSide != 0) {
        pBefore->ReverseLoop();
        pBehind->ReverseLoop();
        std::swap(pBefore, pBehind);
    }
    pBefore->CutLoop(opening.dHeadCut, kKeepOfHatch, OPERATE_AT_TAIL, 0);
    pBehind->CutLoop(opening.dTailCut, kKeepOfHatch, OPERATE_AT_HEAD, 0);
    Splice(contour, *pBefore, *pBehind);
    AddLoopToOrderedLayer(&contour, &out, pos, 0.0);
}

}  // namespace

void AddLoopToOrderedLayer(tagLoopTreeNode* pLoop, CLayer* pOut, CPoint2D& pos, double dCut) {
    auto pCopy = std::make_unique<tagLoopTreeNode>(0);
    pCopy->CopyOtherLoop(pLoop);
    pCopy->m_nFlag = pLoop->m_nDirection == LOOPDIRECT_CCW ? LOOP_KIND_OUTER : LOOP_KIND_INNER;
    if (pCopy->m_bClosed != 0) pCopy->AdjustHeadToNearPoint(pos);
    if (dCut > 0.0) pCopy->CutLoop(dCut, kKeepOfContour, OPERATE_AT_TAIL, 0);
    if (PointCount(*pCopy) == 0) return;
    pos = pCopy->m_pPointList->GetTail();
    AddOwned(pOut->m_RawLoopList, std::move(pCopy));
}

void varnet::LinkContour(tagLoopTreeNode& contour, LinkableHatchs& hatchs, CPoint2D& pos, CLayer& out,
                         double dWidth, double dCut) {
    tagHatchLink const link = hatchs.Find(contour, pos, dWidth, dCut);
    if (link.m_pHatch == nullptr) {
        if (contour.m_nDirection == LOOPDIRECT_CW) contour.ReverseLoop();
        return AddLoopToOrderedLayer(&contour, &out, pos, dCut);
    }
    Opening const opening = OpeningOf(link, dCut);
    if (!TurnToFoot(contour, link)) return AddLoopToOrderedLayer(&contour, &out, pos, dCut);
    Open(contour, opening);
    if (ClassOf(*link.m_pHatch) == kRingClass) {
        SpliceRing(contour, link, opening, pos, out, dCut);
    } else {
        SpliceChain(contour, link, opening, pos, out, dCut);
    }
}

void LinkLoopWithHatchs(tagLoopTreeNode* pLoop, XR_CList<void*, void*>* pHatchs, CPoint2D& pos, CLayer* pOut,
                        double dWidth, double dCut) {
    LinkableHatchs hatchs(*pHatchs);
    LinkContour(*pLoop, hatchs, pos, *pOut, dWidth, dCut);
}
