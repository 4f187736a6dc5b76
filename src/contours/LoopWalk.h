#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "contours/Hatch.h"
#include "contours/LoopTreeNode.h"
#include "foundation/Geometry.h"
#include "foundation/List.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"

namespace varnet {

// The points of a loop, the loops and hatches of a list, and the loops of a tree: how they are told apart and
// walked, and what is done with whole lists.

using PointList = XR_CList<CPoint2D, CPoint2D&>;
using PointNode = PointList::XR_CNode;
using LoopList = XR_CList<void*, void*>;
using LoopNode = LoopList::XR_CNode;

inline constexpr int kPointBlockSize = 10;

/// The head of the loop's list; null for a loop without points.
inline PointNode* FirstPoint(tagLoopTreeNode const& loop) {
    return loop.m_pPointList != nullptr ? loop.m_pPointList->m_pNodeHead : nullptr;
}

inline int PointCount(tagLoopTreeNode const& loop) {
    return loop.m_pPointList != nullptr ? loop.m_pPointList->GetCount() : 0;
}

/// The loop's points, for adding to them: the list is made where there is none.
inline PointList& PointsOf(tagLoopTreeNode& loop) {
    if (loop.m_pPointList == nullptr) loop.m_pPointList = new PointList(kPointBlockSize);
    return *loop.m_pPointList;
}

/// Brings the loop's points into the cache, all at once, where they lie together: a walk along the list would
/// wait for each of them. Of those that lie apart, the head.
inline void PrefetchPoints(tagLoopTreeNode const& loop) {
    constexpr std::uintptr_t kTogether = 4096;
    constexpr std::uintptr_t kLine = 64;
    if (loop.m_pPointList == nullptr) return;
    auto const head = reinterpret_cast<std::uintptr_t>(loop.m_pPointList->m_pNodeHead);
    auto const tail = reinterpret_cast<std::uintptr_t>(loop.m_pPointList->m_pNodeTail);
    std::uintptr_t const first = std::min(head, tail);
    std::uintptr_t const last = std::max(head, tail);
    if (last - first > kTogether) return Prefetch(loop.m_pPointList->m_pNodeHead);
    for (std::uintptr_t line = first; line < last + sizeof(PointNode); line += kLine) {
        Prefetch(reinterpret_cast<void const*>(line));
    }
}

/// Visits the points from the node on. Most nodes stand behind each other in memory, as they were allocated:
/// that the next one does is foreseen, so that the walk need not wait for each link.
template <class Visit>
void ForEachPoint(PointNode const* p, Visit visit) {
    while (p != nullptr) {
        visit(p->data);
        PointNode const* pNext = p->pNext;
        for (++p; pNext == p; ++p) {
            visit(p->data);
            pNext = p->pNext;
        }
        p = pNext;
    }
}

/// Makes the loop's box anew, as GetBoundBox does, and returns its area as GetArea does, in one walk.
double MeasureBoxAndArea(tagLoopTreeNode& loop);

/// A new path with an empty list of points.
inline std::unique_ptr<tagLoopTreeNode> NewPath() {
    auto path = std::make_unique<tagLoopTreeNode>(0);
    PointsOf(*path);
    return path;
}

inline double Distance(CPoint2D const& a, CPoint2D const& b) { return std::sqrt(D2ofPtoP(a, b)); }

/// Sets bits of the second attribute of a point, a bit set in a float's bytes. As a number it may be
/// anything, and stays unread.
inline void SetPointBits(CPoint2D& point, int nBits) {
    point.m_fAttr2 = std::bit_cast<float>(std::bit_cast<std::uint32_t>(point.m_fAttr2) |
                                          static_cast<std::uint32_t>(nBits));
}

/// Hatches with ids from here on, those of supports, are a group of their own: contours are not linked with
/// them.
inline constexpr int kSecondGroup = 1000;

/// What a hatch is to the ordering of paths: the remainder of its id by 100. All but these are chains.
inline int ClassOf(CHatch const& hatch) { return hatch.m_nID % 100; }
inline constexpr int kRingClass = 1;
inline constexpr int kNeverLinkedClass = 2;

inline XR__POSITION* PositionOf(PointNode* pNode) { return reinterpret_cast<XR__POSITION*>(pNode); }

inline tagLoopTreeNode* LoopAt(LoopNode const* pNode) { return static_cast<tagLoopTreeNode*>(pNode->data); }

/// The loops of a list, in order. Null elements, which a host may have put there, are passed over.
template <class Visit>
void ForEachLoop(LoopList const& list, Visit visit) {
    for (LoopNode const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        if (p->data != nullptr) visit(*LoopAt(p));
    }
}

/// The same where the children of each loop are looked at: those of later loops are brought near.
template <class Visit>
void ForEachRoot(LoopList const& list, Visit visit) {
    LoopNode const* pAhead = list.m_pNodeHead;
    for (std::size_t n = 0; n < look_ahead::kRoot && pAhead != nullptr; ++n) pAhead = pAhead->pNext;
    for (LoopNode const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        if (pAhead != nullptr) {
            if (pAhead->data != nullptr) Prefetch(&LoopAt(pAhead)->m_ChildList);
            pAhead = pAhead->pNext;
        }
        if (p->data != nullptr) visit(*LoopAt(p));
    }
}

/// The hatches of a list, in the same way.
template <class Visit>
void ForEachHatch(XR_CList<void*, void*> const& list, Visit visit) {
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        if (p->data != nullptr) visit(*static_cast<CHatch*>(p->data));
    }
}

/// A loop and all below it, each before its children, children in order; enter(loop) says whether to go on
/// below. Children that are null are passed over. The tree may not change meanwhile. Trees may be as deep as
/// a host makes them, so that the way back is kept on the heap.
template <class Enter>
void WalkTree(tagLoopTreeNode& root, Enter enter) {
    if (!enter(root) || root.m_ChildList.m_pNodeHead == nullptr) return;
    std::vector<LoopNode const*> path{root.m_ChildList.m_pNodeHead};  // next sibling to visit, by level
    while (!path.empty()) {
        LoopNode const* const pNode = path.back();
        if (pNode->pNext != nullptr) {
            path.back() = pNode->pNext;
        } else {
            path.pop_back();
        }
        tagLoopTreeNode* const pLoop = LoopAt(pNode);
        if (pLoop == nullptr || !enter(*pLoop)) continue;
        if (pLoop->m_ChildList.m_pNodeHead != nullptr) path.push_back(pLoop->m_ChildList.m_pNodeHead);
    }
}

/// All of them.
template <class Visit>
void ForEachInTree(tagLoopTreeNode& root, Visit visit) {
    WalkTree(root, [&visit](tagLoopTreeNode& loop) {
        visit(loop);
        return true;
    });
}

/// Turns the order of a list round. Every element keeps its node.
template <class List>
void ReverseOrder(List& list) {
    auto* p = list.m_pNodeHead;
    while (p != nullptr) {
        auto* pNext = p->pNext;
        std::swap(p->pNext, p->pPrev);
        for (++p; pNext == p; ++p) {
            pNext = p->pNext;
            std::swap(p->pNext, p->pPrev);
        }
        p = pNext;
    }
    std::swap(list.m_pNodeHead, list.m_pNodeTail);
}

/// Exchanges what two lists hold. Elements keep their nodes, and nothing can fail.
template <class List>
void SwapElements(List& a, List& b) noexcept {
    std::swap(a.m_pNodeHead, b.m_pNodeHead);
    std::swap(a.m_pNodeTail, b.m_pNodeTail);
    std::swap(a.m_nCount, b.m_nCount);
    std::swap(a.m_pNodeFree, b.m_pNodeFree);
    std::swap(a.m_pBlocks, b.m_pBlocks);
}

}  // namespace varnet
