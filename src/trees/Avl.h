#pragma once

#include <cstdint>

#include "foundation/Prefetch.h"

// The balanced tree that the vertex tree and the point tree share (G. M. Adelson-Velsky and E. M. Landis,
// "An algorithm for the organization of information", 1962). Greater keys are on the left. A node's balance
// is 0 when both sides are equally deep, +1 when the left side is deeper, -1 when the right side is.
//
// Balancing looks at depths only, never at keys. So the tree stays balanced, and every walk ends, also where
// a key that is not a number makes the comparisons contradict each other.

namespace avl {

struct RightSide;

struct LeftSide {
    using Other = RightSide;
    static constexpr int kTilt = 1;
    template <class Node>
    static Node*& Child(Node* pNode) {
        return pNode->m_pLeft;
    }
};

struct RightSide {
    using Other = LeftSide;
    static constexpr int kTilt = -1;
    template <class Node>
    static Node*& Child(Node* pNode) {
        return pNode->m_pRight;
    }
};

/// Makes the node's child on the side the root of the slot, above the node. Balances stay as they are.
template <class Side, class Node>
void Rotate(Node* pNode, Node*& slot) {
    using Other = typename Side::Other;
    Node* const pChild = Side::Child(pNode);
    Side::Child(pNode) = Other::Child(pChild);
    Other::Child(pChild) = pNode;
    slot = pChild;
}

/// Restores the node in the slot, whose side has grown two deeper than the other, and sets nTaller to 0.
/// A child in balance does not arise from insertion; nothing is done then.
template <class Side, class Node>
void Balance(Node*& slot, int& nTaller) {
    using Other = typename Side::Other;
    Node* const pNode = slot;
    Node* const pChild = Side::Child(pNode);
    if (pChild->m_nBalance == Side::kTilt) {
        pNode->m_nBalance = 0;
        pChild->m_nBalance = 0;
        Rotate<Side>(pNode, slot);
    } else if (pChild->m_nBalance == Other::kTilt) {
        Node* const pGrandchild = Other::Child(pChild);
        pNode->m_nBalance = pGrandchild->m_nBalance == Side::kTilt ? Other::kTilt : 0;
        pChild->m_nBalance = pGrandchild->m_nBalance == Other::kTilt ? Side::kTilt : 0;
        pGrandchild->m_nBalance = 0;
        Rotate<Other>(pChild, Side::Child(pNode));
        Rotate<Side>(pNode, slot);
    } else {
        return;
    }
    nTaller = 0;
}

/// Walks down from the slot and puts a node into the empty slot where the walk ends, then restores the
/// balance.
///
/// compare(node) is called once a level: above 0 goes right, below 0 goes left, and 0 ends the walk at that
/// node. make() gives the new node, with both children null and balance 0. Returns the node that was put in
/// or found; nTaller becomes 1 when the subtree in the slot is one level deeper than before, else 0.
template <class Node, class Compare, class Make>
Node* Insert(Node*& top, int& nTaller, Compare const& compare, Make const& make) {
    // The turns taken from the pivot down, a bit each, 1 for left, the last in the lowest bit. A tree of 2^32
    // nodes is not deeper than 46 levels.
    std::uint64_t nTurns = 0;
    int nDepth = 0;
    Node** pPivot = &top;  // the lowest slot on the way whose node is out of balance, else the top
    Node** pSlot = &top;
    while (Node* const pNode = *pSlot) {
        if (pNode->m_nBalance != 0) {
            pPivot = pSlot;
            nDepth = 0;
        }
        int const nOrder = compare(pNode);
        if (nOrder == 0) {
            nTaller = 0;
            return pNode;
        }
        bool const bLeft = nOrder < 0;
        nTurns = nTurns << 1 | static_cast<std::uint64_t>(bLeft);
        ++nDepth;
        pSlot = bLeft ? &pNode->m_pLeft : &pNode->m_pRight;
    }
    Node* const pMade = make();
    *pSlot = pMade;
    nTaller = 1;
    if (nDepth == 0) return pMade;

    // All nodes between the pivot and the new node were in balance: each tilts to the side that has grown.
    Node* const pTop = *pPivot;
    auto const wentLeft = [nTurns, nDepth](int nLevel) { return (nTurns >> (nDepth - 1 - nLevel) & 1) != 0; };
    Node* pNode = wentLeft(0) ? pTop->m_pLeft : pTop->m_pRight;
    for (int i = 1; i < nDepth; ++i) {
        pNode->m_nBalance = wentLeft(i) ? LeftSide::kTilt : RightSide::kTilt;
        pNode = wentLeft(i) ? pNode->m_pLeft : pNode->m_pRight;
    }
    int const nTilt = wentLeft(0) ? LeftSide::kTilt : RightSide::kTilt;
    if (pTop->m_nBalance == 0) {
        pTop->m_nBalance = nTilt;
    } else if (pTop->m_nBalance != nTilt) {
        pTop->m_nBalance = 0;
        nTaller = 0;
    } else if (wentLeft(0)) {
        Balance<LeftSide>(*pPivot, nTaller);
    } else {
        Balance<RightSide>(*pPivot, nTaller);
    }
    return pMade;
}

/// Visits the node, then the subtree of the right child, then that of the left child: the order of all walks.
template <class Node, class Visit>
void Walk(Node* pNode, Visit const& visit) {
    while (pNode != nullptr) {
        Prefetch(pNode->m_pLeft);
        visit(pNode);
        Walk(pNode->m_pRight, visit);
        pNode = pNode->m_pLeft;
    }
}

/// Hands every node to the visitor, children before their parent: right subtree, left subtree, node. The
/// visitor may unlink or free the node.
template <class Node, class Visit>
void WalkUp(Node* pNode, Visit const& visit) {
    if (pNode == nullptr) return;
    Prefetch(pNode->m_pLeft);
    WalkUp(pNode->m_pRight, visit);
    WalkUp(pNode->m_pLeft, visit);
    visit(pNode);
}

/// Sorts all nodes anew: takes them one by one, children before their parent, and puts each, alone and in
/// balance, into the new tree by insert(root, node). Returns the new root.
template <class Node, class InsertNode>
Node* Rebuild(Node* pRoot, InsertNode const& insert) {
    Node* pNewRoot = nullptr;
    WalkUp(pRoot, [&pNewRoot, &insert](Node* pNode) {
        pNode->m_pLeft = nullptr;
        pNode->m_pRight = nullptr;
        pNode->m_nBalance = 0;
        insert(pNewRoot, pNode);
    });
    return pNewRoot;
}

}  // namespace avl
