#include "contours/IntervalLists.h"

#include "contours/LoopWalk.h"
#include "foundation/Require.h"

using namespace varnet;

namespace {

// Codes in y.
constexpr double kOpens = 0.0;
constexpr double kCloses = 1.0;
constexpr double kOpensSecond = 2.0;
constexpr double kClosesSecond = 3.0;

void AddBefore(PointList& list, PointNode* pNode, CPoint2D& point) {
    if (pNode != nullptr) {
        list.InsertBefore(PositionOf(pNode), point);
    } else {
        list.AddTail(point);
    }
}

// The second point of the pair that begins here; null where there is no whole pair.
PointNode* Partner(PointNode* pNode) { return pNode != nullptr ? pNode->pNext : nullptr; }

// Twice the midpoint of a pair.
double MiddleOf(PointNode const* pFirst, PointNode const* pSecond) {
    return pFirst->data.x + pSecond->data.x;
}

void AddPairBefore(PointList& list, PointNode* pNode, PointNode* pFirst, PointNode* pSecond) {
    AddBefore(list, pNode, pFirst->data);
    AddBefore(list, pNode, pSecond->data);
}

// Removes the points for which the test holds. It is asked once for each point, in order.
template <class Test>
void RemoveWhere(PointList& list, Test test) {
    PointNode* pNext = list.m_pNodeHead;
    while (pNext != nullptr) {
        PointNode* const pNode = pNext;
        pNext = pNode->pNext;
        if (test(pNode->data.y)) list.RemoveAt(PositionOf(pNode));
    }
}

// Walks the pairs of neighbours from a node on, and removes those whose distance in x is less than dLimit.
void RemovePairsShorterThan(PointList& list, PointNode* pNext, double dLimit) {
    while (Partner(pNext) != nullptr) {
        PointNode* const pFirst = pNext;
        PointNode* const pSecond = Partner(pFirst);
        pNext = pSecond->pNext;
        if (!(dLimit > pSecond->data.x - pFirst->data.x)) continue;
        list.RemoveAt(PositionOf(pSecond));
        list.RemoveAt(PositionOf(pFirst));
    }
}

}  // namespace

void AssertPL(XR_CList<CPoint2D, CPoint2D&>* /*pList*/) {}

void InsertToPL(XR_CList<CPoint2D, CPoint2D&>* pDst, XR_CList<CPoint2D, CPoint2D&>* pSrc) {
    VARNET_REQUIRE(pDst != pSrc);
    PointNode* pCursor = pDst->m_pNodeHead;
    for (PointNode* p = pSrc->m_pNodeHead; p != nullptr; p = p->pNext) {
        while (pCursor != nullptr && !(pCursor->data.x > p->data.x)) pCursor = pCursor->pNext;
        AddBefore(*pDst, pCursor, p->data);
    }
}

void InsertToPLWithFlag(XR_CList<CPoint2D, CPoint2D&>* pDst, XR_CList<CPoint2D, CPoint2D&>* pSrc, int nOpen,
                        int nClose) {
    VARNET_REQUIRE(pDst != pSrc);
    PointNode* pCursor = pDst->m_pNodeHead;
    auto const pairIsBehind = [&pCursor](double dMiddle) {
        PointNode* const pPartner = Partner(pCursor);
        return pPartner == nullptr || MiddleOf(pCursor, pPartner) > dMiddle;
    };
    PointNode* pNext = pSrc->m_pNodeHead;
    while (Partner(pNext) != nullptr) {
        PointNode* const pFirst = pNext;
        PointNode* const pSecond = Partner(pFirst);
        pNext = pSecond->pNext;
        pFirst->data.y = nOpen;
        pSecond->data.y = nClose;
        double const dMiddle = MiddleOf(pFirst, pSecond);
        if (!pairIsBehind(dMiddle)) pCursor = Partner(pCursor)->pNext;
        if (Partner(pCursor) == nullptr) pCursor = nullptr;
        // The cursor moves on by one pair and no further; what does not belong there is dropped.
        if (pairIsBehind(dMiddle)) AddPairBefore(*pDst, pCursor, pFirst, pSecond);
    }
}

void UnionPL(XR_CList<CPoint2D, CPoint2D&>* pList) {
    RemoveWhere(*pList, [nDepth = 0](double dCode) mutable {
        if (dCode == kOpens) return ++nDepth > 1;
        if (dCode == kCloses) return --nDepth > 0;
        return false;
    });
}

void IntersectPL(XR_CList<CPoint2D, CPoint2D&>* pList) {
    RemoveWhere(*pList, [nDepth = 0](double dCode) mutable {
        if (dCode == kOpens) return ++nDepth == 1;
        if (dCode == kCloses) return nDepth-- == 1;
        return false;
    });
}

void JoinPL(XR_CList<CPoint2D, CPoint2D&>* pList, int nDepth) {
    std::int64_t const nWanted = nDepth;
    RemoveWhere(*pList, [nWanted, nOpen = std::int64_t{0}](double dCode) mutable {
        if (dCode == kOpens) return ++nOpen < nWanted;
        if (dCode == kCloses) return --nOpen < nWanted - 1;
        return false;
    });
}

void SubPL(XR_CList<CPoint2D, CPoint2D&>* pList) {
    RemoveWhere(*pList, [bInMain = false, bInSub = false](double dCode) mutable {
        if (dCode == kOpens || dCode == kCloses) {
            bInMain = dCode == kOpens;
            return bInSub;
        }
        if (dCode == kOpensSecond || dCode == kClosesSecond) {
            bInSub = dCode == kOpensSecond;
            return !bInMain;
        }
        return false;
    });
}

void LinkPL(XR_CList<CPoint2D, CPoint2D&>* pList, double dGap) {
    RemovePairsShorterThan(*pList, Partner(pList->m_pNodeHead), dGap);
}

void RemoveShortPL(XR_CList<CPoint2D, CPoint2D&>* pList, double dLength) {
    RemovePairsShorterThan(*pList, pList->m_pNodeHead, dLength);
}
