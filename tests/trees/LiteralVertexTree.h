#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "foundation/BoundBox.h"
#include "foundation/Point.h"
#include "trees/VertexTree.h"

/// The vertex tree as its definition is worded: recursive, step by step, and slow. The real tree is held
/// against it.
class LiteralVertexTree {
public:
    struct Node {
        CPoint3D point;
        Node* pLeft = nullptr;
        Node* pRight = nullptr;
        int nBalance = 0;
        int nIndex = 0;
    };

    Node* AddNode(CPoint3D& point) {
        int nTaller = 0;
        return Insert(m_pRoot, point, nTaller);
    }

    void ReBuild() {
        if (m_pRoot == nullptr) return;
        m_nCount = 0;
        m_Box = CBoundBox3D();
        Node* pNewRoot = nullptr;
        ReInsertSubtree(m_pRoot, pNewRoot);
        m_pRoot = pNewRoot;
    }

    void Transform(double (*const m)[4]) {
        for (Node& node : m_Nodes) {
            CPoint3D const p = node.point;
            node.point.x = p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + m[3][0];
            node.point.y = p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + m[3][1];
            node.point.z = p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + m[3][2];
        }
        ReBuild();
    }

    void ExchangeXYZ(int nMode) {
        for (Node& node : m_Nodes) {
            if (nMode == 1) std::swap(node.point.x, node.point.z);
            if (nMode == 2) std::swap(node.point.y, node.point.z);
            if (nMode == 3) std::swap(node.point.x, node.point.y);
        }
        ReBuild();
    }

    Node* m_pRoot = nullptr;
    unsigned m_nCount = 0;
    CBoundBox3D m_Box;
    double m_dTolerance = 0.0001;

private:
    // -1, 0 or 1; the point takes the node's z on the way.
    int Compare(CPoint3D const& node, CPoint3D& point) const {
        double d = node.z - point.z;
        if (d > m_dTolerance) return 1;
        if (d < -m_dTolerance) return -1;
        point.z = node.z;
        d = node.y - point.y;
        if (d > m_dTolerance) return 1;
        if (d < -m_dTolerance) return -1;
        d = node.x - point.x;
        if (d > m_dTolerance) return 1;
        if (d < -m_dTolerance) return -1;
        return 0;
    }

    int CompareInRebuild(CPoint3D const& node, CPoint3D& other) const {
        int const nResult = Compare(node, other);
        if (nResult != 0) return nResult;
        other.x = node.x + 3.0 * m_dTolerance;
        return 1;
    }

    Node* Insert(Node*& slot, CPoint3D& point, int& nTaller) {
        if (slot == nullptr) {
            slot = &m_Nodes.emplace_back();
            slot->point = point;
            slot->nIndex = static_cast<int>(m_nCount);
            ++m_nCount;
            m_Box += point;
            nTaller = 1;
            return slot;
        }
        int const nResult = Compare(slot->point, point);
        if (nResult == 0) {
            nTaller = 0;
            return slot;
        }
        Node* const pFound = Insert(nResult < 0 ? slot->pLeft : slot->pRight, point, nTaller);
        if (nTaller == 1) AfterGrowth(slot, nResult < 0 ? 1 : -1, nTaller);
        return pFound;
    }

    void ReInsert(Node*& slot, Node* pNode, int& nTaller) {
        if (slot == nullptr) {
            slot = pNode;
            ++m_nCount;
            m_Box += pNode->point;
            nTaller = 1;
            return;
        }
        int const nResult = CompareInRebuild(slot->point, pNode->point);
        ReInsert(nResult < 0 ? slot->pLeft : slot->pRight, pNode, nTaller);
        if (nTaller == 1) AfterGrowth(slot, nResult < 0 ? 1 : -1, nTaller);
    }

    void ReInsertSubtree(Node* pNode, Node*& newRoot) {
        if (pNode == nullptr) return;
        ReInsertSubtree(pNode->pRight, newRoot);
        ReInsertSubtree(pNode->pLeft, newRoot);
        pNode->pLeft = nullptr;
        pNode->pRight = nullptr;
        pNode->nBalance = 0;
        int nTaller = 0;
        ReInsert(newRoot, pNode, nTaller);
    }

    void AfterGrowth(Node*& slot, int nSide, int& nTaller) {
        if (slot->nBalance == -nSide) {
            slot->nBalance = 0;
            nTaller = 0;
        } else if (slot->nBalance == 0) {
            slot->nBalance = nSide;
        } else if (nSide == 1) {
            BalanceRight(slot, nTaller);
        } else {
            BalanceLeft(slot, nTaller);
        }
    }

    static void BalanceRight(Node*& slot, int& nTaller) {
        Node* const pNode = slot;
        Node* const L = pNode->pLeft;
        if (L->nBalance == 1) {
            pNode->nBalance = 0;
            L->nBalance = 0;
            pNode->pLeft = L->pRight;
            L->pRight = pNode;
            slot = L;
        } else {
            Node* const G = L->pRight;
            pNode->nBalance = G->nBalance == 1 ? -1 : 0;
            L->nBalance = G->nBalance == -1 ? 1 : 0;
            G->nBalance = 0;
            L->pRight = G->pLeft;
            pNode->pLeft = G->pRight;
            G->pLeft = L;
            G->pRight = pNode;
            slot = G;
        }
        nTaller = 0;
    }

    static void BalanceLeft(Node*& slot, int& nTaller) {
        Node* const pNode = slot;
        Node* const R = pNode->pRight;
        if (R->nBalance == -1) {
            pNode->nBalance = 0;
            R->nBalance = 0;
            pNode->pRight = R->pLeft;
            R->pLeft = pNode;
            slot = R;
        } else {
            Node* const G = R->pLeft;
            pNode->nBalance = G->nBalance == -1 ? 1 : 0;
            R->nBalance = G->nBalance == 1 ? -1 : 0;
            G->nBalance = 0;
            R->pLeft = G->pRight;
            pNode->pRight = G->pLeft;
            G->pRight = R;
            G->pLeft = pNode;
            slot = G;
        }
        nTaller = 0;
    }

    std::deque<Node> m_Nodes;
};

inline std::uint64_t BitsOf(double d) { return std::bit_cast<std::uint64_t>(d); }

inline bool SameBits(CPoint3D const& a, CPoint3D const& b) {
    return BitsOf(a.x) == BitsOf(b.x) && BitsOf(a.y) == BitsOf(b.y) && BitsOf(a.z) == BitsOf(b.z);
}

inline bool SameBox(CBoundBox3D const& a, CBoundBox3D const& b) {
    return a.m_ptMin.x == b.m_ptMin.x && a.m_ptMin.y == b.m_ptMin.y && a.m_ptMin.z == b.m_ptMin.z &&
           a.m_ptMax.x == b.m_ptMax.x && a.m_ptMax.y == b.m_ptMax.y && a.m_ptMax.z == b.m_ptMax.z;
}

inline bool SameShape(LiteralVertexTree::Node const* pExpected, tagVertexNode const* pNode) {
    if (pExpected == nullptr || pNode == nullptr) return pExpected == nullptr && pNode == nullptr;
    return pExpected->nBalance == pNode->m_nBalance && pExpected->nIndex == pNode->m_nIndex &&
           SameBits(pExpected->point, *pNode) && SameShape(pExpected->pLeft, pNode->m_pLeft) &&
           SameShape(pExpected->pRight, pNode->m_pRight);
}

inline bool SameShape(tagVertexNode const* pExpected, tagVertexNode const* pNode) {
    if (pExpected == nullptr || pNode == nullptr) return pExpected == nullptr && pNode == nullptr;
    return pExpected->m_nBalance == pNode->m_nBalance && pExpected->m_nIndex == pNode->m_nIndex &&
           SameBits(*pExpected, *pNode) && SameShape(pExpected->m_pLeft, pNode->m_pLeft) &&
           SameShape(pExpected->m_pRight, pNode->m_pRight);
}
