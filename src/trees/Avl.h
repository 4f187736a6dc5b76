#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/Prefetch.h"
#include "foundation/Require.h"

namespace varnet {

// The balanced tree that the vertex tree and the point tree share (G. M. Adelson-Velsky and E. M. Landis,
// "An algorithm for the organization of information", 1962). Greater keys are on the left. A node's balance
// is 0 when both sides are equally deep, +1 when the left side is deeper, -1 when the right side is.
//
// Balancing looks at depths only, never at keys. So the tree stays balanced, and every walk ends, also where
// a key that is not a number makes the comparisons contradict each other.
//
// Nodes point to their children by m_pLeft and m_pRight. A link is one of these pointers, or the tree's root:
// the place where a subtree hangs.

namespace avl {

struct RightSide;

struct LeftSide {
    using Other = RightSide;
    static constexpr int kTilt = 1;
    template <class Node>
    static auto& Child(Node* pNode) {
        return pNode->m_pLeft;
    }
};

struct RightSide {
    using Other = LeftSide;
    static constexpr int kTilt = -1;
    template <class Node>
    static auto& Child(Node* pNode) {
        return pNode->m_pRight;
    }
};

/// Makes the node's child on the side the root of the link, above the node. Balances stay as they are.
template <class Side, class Node>
void Rotate(Node* pNode, Node*& link) {
    using Other = typename Side::Other;
    Node* const pChild = Side::Child(pNode);
    Side::Child(pNode) = Other::Child(pChild);
    Other::Child(pChild) = pNode;
    link = pChild;
}

template <class Node>
void SetBalance(Node* pNode, int nBalance) {
    pNode->m_nBalance = static_cast<decltype(pNode->m_nBalance)>(nBalance);
}

/// Restores the node in the link, whose side has grown two deeper than the other, and sets nTaller to 0.
/// A child in balance does not arise from insertion; nothing is done then.
template <class Side, class Node>
void Balance(Node*& link, int& nTaller) {
    using Other = typename Side::Other;
    Node* const pNode = link;
    Node* const pChild = Side::Child(pNode);
    if (pChild->m_nBalance == Side::kTilt) {
        pNode->m_nBalance = 0;
        pChild->m_nBalance = 0;
        Rotate<Side>(pNode, link);
    } else if (pChild->m_nBalance == Other::kTilt) {
        Node* const pGrandchild = Other::Child(pChild);
        SetBalance(pNode, pGrandchild->m_nBalance == Side::kTilt ? Other::kTilt : 0);
        SetBalance(pChild, pGrandchild->m_nBalance == Other::kTilt ? Side::kTilt : 0);
        pGrandchild->m_nBalance = 0;
        Rotate<Other>(pChild, Side::Child(pNode));
        Rotate<Side>(pNode, link);
    } else {
        return;
    }
    nTaller = 0;
}

/// Restores the node in the link, of which the subtree of the child pGrown has become one level deeper: a
/// node in balance tilts to that side. nTaller becomes 0 when the node's own subtree is as deep as before.
template <class Node, class BeforeRotation>
void Grow(Node*& link, Node const* pGrown, int& nTaller, BeforeRotation const& beforeRotation) {
    Node* const pNode = link;
    bool const bLeft = pGrown == pNode->m_pLeft;
    int const nTilt = bLeft ? LeftSide::kTilt : RightSide::kTilt;
    if (pNode->m_nBalance == 0) {
        SetBalance(pNode, nTilt);
    } else if (pNode->m_nBalance != nTilt) {
        pNode->m_nBalance = 0;
        nTaller = 0;
    } else {
        beforeRotation(pNode);
        if (bLeft) {
            Balance<LeftSide>(link, nTaller);
        } else {
            Balance<RightSide>(link, nTaller);
        }
    }
}

/// A way down a tree: the links passed, and the one that comes next.
template <class Node>
class Way {
public:
    /// From the link where a tree or a subtree hangs.
    explicit Way(Node*& top) : m_pNext(&top) {}

    /// The link that comes next. It may be empty.
    Node*& Next() const { return *m_pNext; }

    /// Passes the node in the link that comes next, to the left or to the right.
    void Pass(bool bLeft) {
        Node* const pNode = *m_pNext;
        m_Passed[m_nDepth++ % kDeepest] = m_pNext;
        m_pNext = bLeft ? &pNode->m_pLeft : &pNode->m_pRight;
    }

    /// Before all others, passes such nodes, as long as each is the next one. Bit i of nLefts tells whether
    /// the way turns left at the i-th one. Returns how many have been passed.
    std::size_t PassSame(std::span<Node const* const> nodes, std::uint64_t nLefts) {
        VARNET_REQUIRE(m_nDepth == 0 && nodes.size() <= kDeepest);
        Node** pNext = m_pNext;
        std::size_t n = 0;
        for (; n < nodes.size() && *pNext == nodes[n]; ++n) {
            m_Passed[n] = pNext;
            // Not by what the link leads to, so that no step waits for the one before.
            auto* const pNode = const_cast<Node*>(nodes[n]);
            pNext = (nLefts >> n & 1) != 0 ? &pNode->m_pLeft : &pNode->m_pRight;
        }
        m_pNext = pNext;
        m_nDepth = n;
        return n;
    }

    /// Goes back to the link passed last; false when there is none.
    bool GoBack() {
        if (m_nDepth == 0 || m_nBack == kDeepest) return false;
        ++m_nBack;
        m_pNext = m_Passed[--m_nDepth % kDeepest];
        return true;
    }

private:
    // A tree of 2^32 nodes is not deeper than 46 levels; of a way that is longer, since a host has bent the
    // tree, the first links are forgotten.
    static constexpr std::size_t kDeepest = 64;

    Node** m_pNext;
    std::array<Node**, kDeepest> m_Passed;
    std::size_t m_nDepth = 0;
    std::size_t m_nBack = 0;
};

/// Goes on down a way and puts a node into the empty link where it ends, then restores the balance up to
/// where the way began. Nothing but this may be done with the way afterwards.
///
/// compare(node) is called once a level: above 0 goes right, below 0 goes left, and 0 ends the walk at that
/// node. make() gives the new node, with both children null and balance 0. Returns the node that was put in
/// or found; nTaller becomes 1 when the subtree where the way began is one level deeper than before, else 0.
/// beforeRotation(node) is called at most once.
template <class Node, class Compare, class Make, class BeforeRotation>
Node* Insert(Way<Node>& way, int& nTaller, Compare const& compare, Make const& make,
             BeforeRotation const& beforeRotation) {
    nTaller = 0;
    while (Node* const pNode = way.Next()) {
        int const nOrder = compare(pNode);
        if (nOrder == 0) return pNode;
        way.Pass(nOrder < 0);
    }
    Node* const pMade = make();
    way.Next() = pMade;
    nTaller = 1;
    Node* pGrown = pMade;
    while (nTaller != 0 && way.GoBack()) {
        Node* const pNode = way.Next();
        Grow(way.Next(), pGrown, nTaller, beforeRotation);
        pGrown = pNode;
    }
    return pMade;
}

template <class Node, class Compare, class Make>
Node* Insert(Node*& top, int& nTaller, Compare const& compare, Make const& make) {
    Way<Node> way(top);
    return Insert(way, nTaller, compare, make, [](Node*) {});
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

/// Visits all nodes in the order of their keys, from the least. The visitor may change nothing but the node.
template <class Node, class Visit>
void WalkInOrder(Node* pNode, Visit const& visit) {
    while (pNode != nullptr) {
        Prefetch(pNode->m_pLeft);
        WalkInOrder(pNode->m_pRight, visit);
        visit(pNode);
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

}  // namespace varnet
