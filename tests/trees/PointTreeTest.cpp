#include "trees/PointTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// The point tree as its definition is worded: recursive, step by step, and slow.
class LiteralPointTree {
public:
    struct Node {
        CPoint2D point;
        Node* pLeft = nullptr;
        Node* pRight = nullptr;
        int nBalance = 0;
    };

    Node* AddNode(CPoint2D& point) {
        int nTaller = 0;
        return Insert(m_pRoot, point, nTaller);
    }

    void ReBuild() {
        if (m_pRoot == nullptr) return;
        m_nCount = 0;
        m_Box = CBoundBox2D();
        Node* pNewRoot = nullptr;
        ReInsertSubtree(m_pRoot, pNewRoot);
        m_pRoot = pNewRoot;
    }

    void Transform(double (*const m)[3]) {
        for (Node& node : m_Nodes) {
            CPoint2D const p = node.point;
            node.point.x = p.x * m[0][0] + p.y * m[1][0] + m[2][0];
            node.point.y = p.x * m[0][1] + p.y * m[1][1] + m[2][1];
        }
        ReBuild();
    }

    void Transfer(double const* pOffset) {
        CPoint2D const offset(pOffset[0], pOffset[1]);
        for (Node& node : m_Nodes) node.point += offset;
        m_Box.m_ptMin += offset;
        m_Box.m_ptMax += offset;
    }

    Node* m_pRoot = nullptr;
    unsigned m_nCount = 0;
    CBoundBox2D m_Box;

private:
    static int Compare(CPoint2D const& node, CPoint2D& point, bool bNew) {
        double d = node.y - point.y;
        if (d > 1e-6) return 1;
        if (d < -1e-6) return -1;
        point.y = node.y;
        d = node.x - point.x;
        if (d > 1e-6) return 1;
        if (d < -1e-6) return -1;
        if (bNew) point.x += 1e-5;
        return 1;
    }

    Node* Insert(Node*& slot, CPoint2D& point, int& nTaller) {
        if (slot == nullptr) {
            slot = &m_Nodes.emplace_back();
            slot->point = point;
            ++m_nCount;
            m_Box += point;
            nTaller = 1;
            return slot;
        }
        int const nResult = Compare(slot->point, point, true);
        Node* const pMade = Insert(nResult < 0 ? slot->pLeft : slot->pRight, point, nTaller);
        if (nTaller == 1) AfterGrowth(slot, nResult < 0 ? 1 : -1, nTaller);
        return pMade;
    }

    void ReInsert(Node*& slot, Node* pNode, int& nTaller) {
        if (slot == nullptr) {
            slot = pNode;
            ++m_nCount;
            m_Box += pNode->point;
            nTaller = 1;
            return;
        }
        int const nResult = Compare(slot->point, pNode->point, false);
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

    static void AfterGrowth(Node*& slot, int nSide, int& nTaller) {
        if (slot->nBalance == -nSide) {
            slot->nBalance = 0;
            nTaller = 0;
        } else if (slot->nBalance == 0) {
            slot->nBalance = nSide;
        } else {
            Balance(slot, nSide);
            nTaller = 0;
        }
    }

    static Node*& Child(Node* pNode, int nSide) { return nSide == 1 ? pNode->pLeft : pNode->pRight; }

    static void Balance(Node*& slot, int nSide) {
        Node* const pNode = slot;
        Node* const pChild = Child(pNode, nSide);
        if (pChild->nBalance == nSide) {
            pNode->nBalance = 0;
            pChild->nBalance = 0;
            Child(pNode, nSide) = Child(pChild, -nSide);
            Child(pChild, -nSide) = pNode;
            slot = pChild;
        } else {
            Node* const G = Child(pChild, -nSide);
            pNode->nBalance = G->nBalance == nSide ? -nSide : 0;
            pChild->nBalance = G->nBalance == -nSide ? nSide : 0;
            G->nBalance = 0;
            Child(pChild, -nSide) = Child(G, nSide);
            Child(pNode, nSide) = Child(G, -nSide);
            Child(G, nSide) = pChild;
            Child(G, -nSide) = pNode;
            slot = G;
        }
    }

    std::deque<Node> m_Nodes;
};

bool SameNumber(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool SamePoint(CPoint2D const& a, CPoint2D const& b) {
    return SameNumber(a.x, b.x) && SameNumber(a.y, b.y) && a.m_fAttr1 == b.m_fAttr1 &&
           a.m_fAttr2 == b.m_fAttr2;
}

bool SameTree(LiteralPointTree::Node const* pExpected, tagPointNode const* pNode) {
    if (pExpected == nullptr || pNode == nullptr) return pExpected == nullptr && pNode == nullptr;
    return pExpected->nBalance == pNode->m_nBalance && SamePoint(pExpected->point, *pNode) &&
           SameTree(pExpected->pLeft, pNode->m_pLeft) && SameTree(pExpected->pRight, pNode->m_pRight);
}

// Both trees, driven through the same steps.
class TwinTrees {
public:
    void Add(CPoint2D const& point) {
        CPoint2D expected(point);
        CPoint2D offered(point);
        LiteralPointTree::Node const* const pExpected = m_Literal.AddNode(expected);
        tagPointNode const* const pNode = m_Tree.AddNode(offered);
        ASSERT_TRUE(SamePoint(pExpected->point, *pNode));
        ASSERT_TRUE(SamePoint(expected, offered));
    }
    void ReBuild() {
        m_Literal.ReBuild();
        m_Tree.ReBuildTree();
    }
    void Transform(double (*const pMatrix)[3]) {
        m_Literal.Transform(pMatrix);
        m_Tree.Transform(pMatrix);
    }
    void Transfer(double* const pOffset) {
        m_Literal.Transfer(pOffset);
        m_Tree.Transfer(pOffset);
    }
    void ExpectSame() const {
        ASSERT_EQ(m_Literal.m_nCount, m_Tree.m_nCount);
        ASSERT_TRUE(SameTree(m_Literal.m_pRoot, m_Tree.m_pRoot));
        ASSERT_TRUE(SamePoint(m_Literal.m_Box.m_ptMin, m_Tree.m_BoundBox.m_ptMin));
        ASSERT_TRUE(SamePoint(m_Literal.m_Box.m_ptMax, m_Tree.m_BoundBox.m_ptMax));
    }

private:
    LiteralPointTree m_Literal;
    CPointTree m_Tree;
};

// Random points on a lattice: steps about the tolerance and the displacement bring points together.
class PointLattice {
public:
    PointLattice(unsigned nSeed, double dStep, bool bWithoutNumbers)
        : m_Random(nSeed), m_dStep(dStep), m_bWithoutNumbers(bWithoutNumbers) {}

    CPoint2D Next() {
        double const x = Coordinate();
        CPoint2D point(x, Coordinate());
        point.m_fAttr1 = static_cast<float>(Below(100));
        point.m_fAttr2 = static_cast<float>(Below(100));
        return point;
    }

    unsigned Below(unsigned n) { return static_cast<unsigned>(m_Random() % n); }

private:
    double Coordinate() {
        if (m_bWithoutNumbers && Below(20) == 0) return kNotANumber;
        double const d = Below(9) * m_dStep;
        return Below(2) == 0 ? -d : d;
    }

    std::mt19937 m_Random;
    double m_dStep;
    bool m_bWithoutNumbers;
};

// All nodes, in the order of the walks.
void Collect(tagPointNode* pNode, std::vector<tagPointNode*>& nodes) {
    if (pNode == nullptr) return;
    nodes.push_back(pNode);
    Collect(pNode->m_pRight, nodes);
    Collect(pNode->m_pLeft, nodes);
}

std::vector<tagPointNode*> NodesOf(CPointTree const& tree) {
    std::vector<tagPointNode*> nodes;
    Collect(tree.m_pRoot, nodes);
    return nodes;
}

int DepthOf(tagPointNode const* pNode) {
    return pNode == nullptr ? 0 : 1 + std::max(DepthOf(pNode->m_pLeft), DepthOf(pNode->m_pRight));
}

tagPointNode* Add(CPointTree& tree, double x, double y) {
    CPoint2D point(x, y);
    return tree.AddNode(point);
}

}  // namespace

TEST(PointTree, NewTreeIsEmpty) {
    CPointTree const tree;
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(0u, tree.m_nCount);
    EXPECT_EQ(1.00000002004087734272e20, tree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(-1.00000002004087734272e20, tree.m_BoundBox.m_ptMax.y);
}

TEST(PointTree, NewNodeTakesThePointAndNothingElse) {
    CPointTree tree;
    CPoint2D point(3.0, 4.0);
    point.m_fAttr1 = 5.0f;
    point.m_fAttr2 = 6.0f;
    tagPointNode const* const pNode = tree.AddNode(point);
    EXPECT_EQ(tree.m_pRoot, pNode);
    EXPECT_TRUE(SamePoint(point, *pNode));
    EXPECT_EQ(nullptr, pNode->m_pLeft);
    EXPECT_EQ(nullptr, pNode->m_pRight);
    EXPECT_EQ(0, pNode->m_nBalance);
    EXPECT_EQ(nullptr, pNode->m_pData1);
    EXPECT_EQ(nullptr, pNode->m_pData2);
    EXPECT_EQ(1, pNode->m_nMark);
    EXPECT_EQ(1u, tree.m_nCount);
    EXPECT_EQ(3.0, tree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(4.0, tree.m_BoundBox.m_ptMax.y);
}

TEST(PointTree, GreaterKeysGoLeftByYThenX) {
    CPointTree tree;
    tagPointNode const* const pRoot = Add(tree, 5.0, 5.0);
    tagPointNode const* const pHigher = Add(tree, 0.0, 6.0);
    tagPointNode const* const pLower = Add(tree, 9.0, 4.0);
    tagPointNode const* const pFurther = Add(tree, 6.0, 5.0);
    EXPECT_EQ(pHigher, pRoot->m_pLeft);
    EXPECT_EQ(pLower, pRoot->m_pRight);
    EXPECT_EQ(pFurther, pHigher->m_pRight);
}

TEST(PointTree, SamePointTwiceGivesTwoNodesTheSecondDisplaced) {
    CPointTree tree;
    CPoint2D point(1.0, 2.0);
    tagPointNode const* const pFirst = tree.AddNode(point);
    EXPECT_EQ(1.0, point.x);
    tagPointNode const* const pSecond = tree.AddNode(point);
    EXPECT_NE(pFirst, pSecond);
    EXPECT_EQ(1.0, pFirst->x);
    EXPECT_EQ(1.0 + 1e-5, pSecond->x);
    EXPECT_EQ(2.0, pSecond->y);
    EXPECT_EQ(1.0 + 1e-5, point.x);
    EXPECT_EQ(2u, tree.m_nCount);
    EXPECT_EQ(pSecond, pFirst->m_pRight);
}

TEST(PointTree, NearRowsBecomeEqualAndFarColumnsStayApart) {
    CPointTree tree;
    tagPointNode const* const pFirst = Add(tree, 1.0, 2.0);
    CPoint2D point(2.0, 2.0 + 5e-7);
    tagPointNode const* const pSecond = tree.AddNode(point);
    EXPECT_EQ(2u, tree.m_nCount);
    EXPECT_EQ(pFirst->y, pSecond->y);
    EXPECT_EQ(2.0, pSecond->x);
    EXPECT_EQ(2.0, point.y);
}

TEST(PointTree, EachNewPointIsDisplacedFromTheOneThatItMeets) {
    CPointTree tree;
    Add(tree, 1.0, 2.0);
    // The second meets the first. The third meets the first too, and the displacement takes it onto the
    // second, which it then meets on its way.
    EXPECT_EQ(1.0 + 1e-5, Add(tree, 1.0, 2.0)->x);
    EXPECT_EQ(1.0 + 1e-5 + 1e-5, Add(tree, 1.0, 2.0)->x);
    EXPECT_EQ(3u, tree.m_nCount);
}

TEST(PointTree, DifferenceOfExactlyTheToleranceAgrees) {
    CPointTree tree;
    Add(tree, 0.0, 0.0);
    tagPointNode const* const pNear = Add(tree, 1e-6, -1e-6);
    EXPECT_EQ(0.0, pNear->y);
    EXPECT_EQ(1e-6 + 1e-5, pNear->x);
    tagPointNode const* const pApart = Add(tree, 0.0, 1.1e-6);
    EXPECT_EQ(1.1e-6, pApart->y);
    EXPECT_EQ(0.0, pApart->x);
}

TEST(PointTree, BoxHoldsThePointsAsTheyAreAfterTheSearch) {
    CPointTree tree;
    Add(tree, 1.0, 2.0);
    Add(tree, 1.0, 2.0 - 5e-7);
    EXPECT_EQ(1.0 + 1e-5, tree.m_BoundBox.m_ptMax.x);
    EXPECT_EQ(2.0, tree.m_BoundBox.m_ptMin.y);
}

TEST(PointTree, RebuildKeepsCoincidentNodesAndDisplacesNone) {
    CPointTree tree;
    for (int n = 0; n < 20; ++n) Add(tree, n, 1.0);
    std::vector<tagPointNode*> nodes = NodesOf(tree);
    for (tagPointNode* const pNode : nodes) {
        pNode->x = 7.0;
        pNode->y = 8.0;
        pNode->m_nMark = 3;
    }
    tree.ReBuildTree();
    EXPECT_EQ(20u, tree.m_nCount);
    std::vector<tagPointNode*> after = NodesOf(tree);
    std::sort(nodes.begin(), nodes.end());
    std::sort(after.begin(), after.end());
    EXPECT_EQ(nodes, after);
    for (tagPointNode const* const pNode : after) {
        EXPECT_EQ(7.0, pNode->x);
        EXPECT_EQ(8.0, pNode->y);
        EXPECT_EQ(3, pNode->m_nMark);
    }
}

TEST(PointTree, RebuildAlignsNearRows) {
    CPointTree tree;
    Add(tree, 0.0, 0.0);
    Add(tree, 1.0, 1.0);
    Add(tree, -1.0, -1.0);
    for (tagPointNode* const pNode : NodesOf(tree)) pNode->y *= 5e-7;
    // The right child comes first. The left one, exactly the tolerance higher, and the root take its row.
    tree.ReBuildTree();
    for (tagPointNode const* const pNode : NodesOf(tree)) EXPECT_EQ(-5e-7, pNode->y);
}

TEST(PointTree, RebuildOfAnEmptyTreeChangesNothing) {
    CPointTree tree;
    tree.m_BoundBox += CPoint2D(1.0, 2.0);
    tree.m_nCount = 4;
    tree.ReBuildTree();
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(4u, tree.m_nCount);
    EXPECT_EQ(1.0, tree.m_BoundBox.m_ptMin.x);
}

TEST(PointTree, TransformThatShrinksAllPointsIntoOneKeepsAllNodes) {
    CPointTree tree;
    for (int n = 0; n < 100; ++n) Add(tree, n % 10, n / 10);
    double matrix[3][3] = {{1e-9, 0.0, 5.0}, {0.0, 1e-9, 5.0}, {0.0, 0.0, 5.0}};
    tree.Transform(matrix);
    EXPECT_EQ(100u, tree.m_nCount);
    std::vector<tagPointNode*> const nodes = NodesOf(tree);
    EXPECT_EQ(100u, nodes.size());
    EXPECT_EQ(9.0 * 1e-9, tree.m_BoundBox.m_ptMax.x);
    for (tagPointNode const* const pNode : nodes) EXPECT_LE(pNode->x, 9.0 * 1e-9);
}

TEST(PointTree, TransformIsARowVectorProductThatKeepsTheAttributes) {
    CPointTree tree;
    CPoint2D point(2.0, 3.0);
    point.m_fAttr1 = 7.0f;
    tree.AddNode(point);
    double matrix[3][3] = {{1.0, 2.0, 0.0}, {3.0, 4.0, 0.0}, {5.0, 6.0, 1.0}};
    tree.Transform(matrix);
    EXPECT_EQ(2.0 + 9.0 + 5.0, tree.m_pRoot->x);
    EXPECT_EQ(4.0 + 12.0 + 6.0, tree.m_pRoot->y);
    EXPECT_EQ(7.0f, tree.m_pRoot->m_fAttr1);
}

TEST(PointTree, TransferShiftsNodesAndBoxAndKeepsTheShape) {
    CPointTree tree;
    for (int n = 0; n < 30; ++n) Add(tree, n * 7 % 30, n * 11 % 30);
    std::vector<tagPointNode*> const before = NodesOf(tree);
    double offset[2] = {10.0, -20.0};
    tree.Transfer(offset);
    EXPECT_EQ(before, NodesOf(tree));
    EXPECT_EQ(10.0, tree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(39.0, tree.m_BoundBox.m_ptMax.x);
    EXPECT_EQ(-20.0, tree.m_BoundBox.m_ptMin.y);
    EXPECT_EQ(9.0, tree.m_BoundBox.m_ptMax.y);
}

TEST(PointTree, TransferShiftsTheBoxOfAnEmptyTree) {
    CPointTree tree;
    double offset[2] = {1e20, 0.0};
    tree.Transfer(offset);
    EXPECT_EQ(1.00000002004087734272e20 + 1e20, tree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(-1.00000002004087734272e20 + 1e20, tree.m_BoundBox.m_ptMax.x);
}

TEST(PointTree, ReleaseKeepsCountAndBox) {
    CPointTree tree;
    Add(tree, 1.0, 2.0);
    Add(tree, 3.0, 4.0);
    tree.ReleaseAll();
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(2u, tree.m_nCount);
    EXPECT_EQ(3.0, tree.m_BoundBox.m_ptMax.x);
    tree.ReleaseAll();
    Add(tree, 5.0, 5.0);
    EXPECT_EQ(3u, tree.m_nCount);
}

TEST(PointTree, CopiesShareTheNodes) {
    CPointTree tree;
    Add(tree, 1.0, 2.0);
    CPointTree copy(tree);
    CPointTree assigned;
    CPointTree const& result = assigned = tree;
    EXPECT_EQ(&assigned, &result);
    for (CPointTree* const p : {&copy, &assigned}) {
        EXPECT_EQ(tree.m_pRoot, p->m_pRoot);
        EXPECT_EQ(1u, p->m_nCount);
        EXPECT_EQ(1.0, p->m_BoundBox.m_ptMin.x);
        p->m_pRoot = nullptr;  // only one of them may release the nodes
    }
}

TEST(PointTree, ComparisonsTellTheOrderOfTheNodeAgainstThePoint) {
    CPointTree tree;
    tagPointNode node(CPoint2D(1.0, 1.0));
    CPoint2D below(9.0, 0.0);
    CPoint2D above(-9.0, 2.0);
    CPoint2D left(0.0, 1.0 + 5e-7);
    CPoint2D same(1.0, 1.0);
    EXPECT_EQ(COMPARE_GREATER, tree.CompareVertex(node, below));
    EXPECT_EQ(COMPARE_LESS, tree.CompareVertex(node, above));
    EXPECT_EQ(COMPARE_GREATER, tree.CompareVertex(node, left));
    EXPECT_EQ(1.0, left.y);
    EXPECT_EQ(COMPARE_GREATER, tree.CompareVertex(node, same));
    EXPECT_EQ(1.0 + 1e-5, same.x);
}

TEST(PointTree, TieInARebuildMovesNothing) {
    CPointTree tree;
    tagPointNode node(CPoint2D(1.0, 1.0));
    tagPointNode other(CPoint2D(1.0 + 5e-7, 1.0 + 5e-7));
    EXPECT_EQ(COMPARE_GREATER, tree.ComparePoint(&node, &other));
    EXPECT_EQ(1.0 + 5e-7, other.x);
    EXPECT_EQ(1.0, other.y);
    tagPointNode right(CPoint2D(2.0, 1.0));
    EXPECT_EQ(COMPARE_LESS, tree.ComparePoint(&node, &right));
}

TEST(PointTree, StaysShallowWhenPointsComeInOrder) {
    CPointTree tree;
    for (int n = 0; n < 4095; ++n) Add(tree, 0.0, n);
    EXPECT_EQ(12, DepthOf(tree.m_pRoot));
}

TEST(PointTree, StaysShallowWhenAllPointsAreOneOrNotANumber) {
    for (double const d : {1.0, kNotANumber}) {
        CPointTree tree;
        for (int n = 0; n < 5000; ++n) Add(tree, d, d);
        EXPECT_EQ(5000u, tree.m_nCount);
        EXPECT_LE(DepthOf(tree.m_pRoot), 17);
    }
}

TEST(PointTree, WalksLikeTheRecursionOnRandomPoints) {
    for (double const dStep : {4e-7, 1e-6, 4e-6, 1e-5, 1.0, 1234.5}) {
        for (unsigned nSeed = 0; nSeed < 20; ++nSeed) {
            PointLattice points(nSeed, dStep, nSeed % 5 == 4);
            TwinTrees twins;
            for (int n = 0; n < 300; ++n) {
                ASSERT_NO_FATAL_FAILURE(twins.Add(points.Next()));
                if (n % 20 == 0) {
                    ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
                }
            }
            ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
        }
    }
}

TEST(PointTree, MovesAndRebuildsLikeTheRecursion) {
    static constexpr double kScales[] = {1.0, -1.0, 0.5, 1e-3, 1e-6, 0.0};
    for (unsigned nSeed = 0; nSeed < 60; ++nSeed) {
        PointLattice points(nSeed, nSeed % 2 == 0 ? 1.0 : 1e-5, nSeed % 7 == 6);
        TwinTrees twins;
        for (int nRound = 0; nRound < 8; ++nRound) {
            for (int n = 0; n < 40; ++n) ASSERT_NO_FATAL_FAILURE(twins.Add(points.Next()));
            double const dShear = points.Below(3) * 0.25;
            double matrix[3][3] = {{kScales[points.Below(6)], dShear, 9.0},
                                   {-dShear, kScales[points.Below(6)], 9.0},
                                   {points.Below(5) * 0.1, points.Below(5) * 0.1, 9.0}};
            twins.Transform(matrix);
            ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
            double offset[2] = {points.Below(9) * 0.3, points.Below(9) * -0.3};
            twins.Transfer(offset);
            twins.ReBuild();
            ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
        }
    }
}
