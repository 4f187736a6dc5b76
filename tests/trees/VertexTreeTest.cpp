#include "trees/VertexTree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FieldWalk.h"
#include "TestFiles.h"

namespace {

tagVertexNode* Add(CVertexTree& tree, double x, double y, double z) {
    CPoint3D point(x, y, z);
    return tree.AddNode(point);
}

// Three nodes with keys that put the second at the root: greater keys are on the left.
struct ThreeNodes {
    CVertexTree tree;
    tagVertexNode* pLow = Add(tree, 1.0, 2.0, 3.0);
    tagVertexNode* pMiddle = Add(tree, 4.0, 5.0, 6.0);
    tagVertexNode* pHigh = Add(tree, 7.0, 8.0, 9.0);
};

void ExpectPoint(CPoint3D const& p, double x, double y, double z) {
    EXPECT_EQ(x, p.x);
    EXPECT_EQ(y, p.y);
    EXPECT_EQ(z, p.z);
}

}  // namespace

TEST(VertexTree, InsertingSaysWhetherTheTreeIsOneLevelDeeper) {
    CVertexTree tree;
    int nTaller = 7;
    CPoint3D root(0.0, 0.0, 0.0);
    tree.InsertToTree(tree.m_pRoot, root, nTaller);
    EXPECT_EQ(1, nTaller);
    CPoint3D same(0.0, 0.0, 0.0);
    tree.InsertToTree(tree.m_pRoot, same, nTaller);
    EXPECT_EQ(0, nTaller);
    CPoint3D below(5.0, 0.0, 0.0);
    tree.InsertToTree(tree.m_pRoot, below, nTaller);
    EXPECT_EQ(1, nTaller);
    CPoint3D beside(-5.0, 0.0, 0.0);
    tree.InsertToTree(tree.m_pRoot, beside, nTaller);
    EXPECT_EQ(0, nTaller);
}

TEST(VertexTree, FieldsStandInOrder) {
    CVertexTree const tree;
    FieldWalk(tree, FieldWalk::kVirtual)
        .Then("m_pRoot", tree.m_pRoot)
        .Then("m_nCount", tree.m_nCount)
        .Then("m_BoundBox", tree.m_BoundBox)
        .Then("m_dTolerance", tree.m_dTolerance)
        .Then("m_dTolerance2", tree.m_dTolerance2)
        .End();
    EXPECT_TRUE((std::is_same_v<decltype(tree.m_nCount), std::uint32_t>));
    EXPECT_TRUE(std::has_virtual_destructor_v<CVertexTree>);
}

TEST(VertexTree, NodeFieldsStandInOrder) {
    tagVertexNode const node;
    FieldWalk(node, sizeof(CPoint3D))
        .Then("m_pLeft", node.m_pLeft)
        .Then("m_pRight", node.m_pRight)
        .Then("m_nBalance", node.m_nBalance)
        .Then("m_nID", node.m_nID)
        .Then("m_pExtrude", node.m_pExtrude)
        .Then("m_dZOffset", node.m_dZOffset)
        .Then("m_nFacetNum", node.m_nFacetNum)
        .Then("m_ppFacet", node.m_ppFacet)
        .Then("m_nIndex", node.m_nIndex)
        .Then("m_fWeight", node.m_fWeight)
        .End();
    EXPECT_TRUE((std::is_base_of_v<CPoint3D, tagVertexNode>));
    EXPECT_TRUE((std::is_same_v<decltype(node.m_nID), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(node.m_nIndex), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(node.m_fWeight), float[3]>));
    EXPECT_EQ(sizeof(void*), sizeof(node.m_pExtrude));
}

TEST(VertexTree, NewTreeIsEmptyWithItsTolerances) {
    CVertexTree tree;
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(0u, tree.m_nCount);
    EXPECT_EQ(0, tree.m_BoundBox.IsValid());
    EXPECT_EQ(1.00000002004087734272e20, tree.m_BoundBox.m_ptMin.z);
    EXPECT_EQ(0.0001, tree.m_dTolerance);
    EXPECT_EQ(0.0001, tree.m_dTolerance2);
}

TEST(VertexTree, NewNodeHoldsThePointAndDefaults) {
    CVertexTree tree;
    tagVertexNode* const pNode = Add(tree, 1.0, 2.0, 3.0);
    ExpectPoint(*pNode, 1.0, 2.0, 3.0);
    EXPECT_EQ(nullptr, pNode->m_pLeft);
    EXPECT_EQ(nullptr, pNode->m_pRight);
    EXPECT_EQ(0, pNode->m_nBalance);
    EXPECT_EQ(0u, pNode->m_nID);
    EXPECT_EQ(nullptr, pNode->m_pExtrude);
    EXPECT_EQ(0.0, pNode->m_dZOffset);
    EXPECT_EQ(0, pNode->m_nFacetNum);
    EXPECT_EQ(nullptr, pNode->m_ppFacet);
    EXPECT_EQ(0, pNode->m_nIndex);
    for (float const f : pNode->m_fWeight) EXPECT_EQ(1.0f, f);
    EXPECT_EQ(tree.m_pRoot, pNode);
    EXPECT_EQ(1u, tree.m_nCount);
    ExpectPoint(tree.m_BoundBox.m_ptMin, 1.0, 2.0, 3.0);
    ExpectPoint(tree.m_BoundBox.m_ptMax, 1.0, 2.0, 3.0);
}

TEST(VertexTree, PointsWithinToleranceOnEveryAxisBecomeOneVertex) {
    CVertexTree tree;
    tagVertexNode* const pFirst = Add(tree, 1.0, 1.0, 1.0);
    CPoint3D near(1.00005, 0.99995, 1.00005);
    EXPECT_EQ(pFirst, tree.AddNode(near));
    EXPECT_EQ(1u, tree.m_nCount);
    ExpectPoint(near, 1.00005, 0.99995, 1.0);
    EXPECT_EQ(1.0, tree.m_BoundBox.m_ptMax.x);
}

TEST(VertexTree, HeightExactlyTheToleranceAwayIsTheSameHeight) {
    CVertexTree tree;
    tagVertexNode* const pFirst = Add(tree, 2.0, 3.0, 0.0);
    CPoint3D above(2.0, 3.0, 0.0001);
    EXPECT_EQ(pFirst, tree.AddNode(above));
    EXPECT_EQ(0.0, above.z);
    CPoint3D below(2.0, 3.0, -0.0001);
    EXPECT_EQ(pFirst, tree.AddNode(below));
    EXPECT_EQ(0.0, below.z);
    EXPECT_EQ(1u, tree.m_nCount);
}

TEST(VertexTree, HeightJustBeyondTheToleranceIsAnother) {
    CVertexTree tree;
    Add(tree, 2.0, 3.0, 0.0);
    CPoint3D above(2.0, 3.0, std::nextafter(0.0001, 1.0));
    EXPECT_EQ(1, tree.AddNode(above)->m_nIndex);
    EXPECT_EQ(2u, tree.m_nCount);
}

TEST(VertexTree, NearHeightsFarApartInPlanAreTwoVerticesOfEqualHeight) {
    CVertexTree tree;
    tagVertexNode* const pFirst = Add(tree, 0.0, 0.0, 5.0);
    CPoint3D other(1.0, 0.0, 5.00005);
    tagVertexNode* const pOther = tree.AddNode(other);
    EXPECT_NE(pFirst, pOther);
    EXPECT_EQ(5.0, pOther->z);
    EXPECT_EQ(5.0, other.z);
    EXPECT_EQ(2u, tree.m_nCount);
    EXPECT_EQ(5.0, tree.m_BoundBox.m_ptMax.z);
}

TEST(VertexTree, OnlyHeightsAreSnapped) {
    CVertexTree tree;
    Add(tree, 0.0, 0.0, 0.0);
    CPoint3D point(5.0, 0.00005, 0.00005);
    tagVertexNode* const pNode = tree.AddNode(point);
    ExpectPoint(*pNode, 5.0, 0.00005, 0.0);
}

TEST(VertexTree, OrderIsByHeightThenYThenXWithGreaterKeysOnTheLeft) {
    {
        CVertexTree tree;
        tagVertexNode* const pRoot = Add(tree, 9.0, 9.0, 0.0);
        EXPECT_EQ(pRoot->m_pLeft, Add(tree, 0.0, 0.0, 1.0));
        tagVertexNode* const pLower = Add(tree, 99.0, 99.0, -1.0);
        EXPECT_EQ(pRoot->m_pRight, pLower);
    }
    {
        CVertexTree tree;
        tagVertexNode* const pRoot = Add(tree, 9.0, 0.0, 0.0);
        tagVertexNode* const pGreater = Add(tree, 0.0, 1.0, 0.0);
        EXPECT_EQ(pRoot->m_pLeft, pGreater);
        tagVertexNode* const pLesser = Add(tree, 99.0, -1.0, 0.0);
        EXPECT_EQ(pRoot->m_pRight, pLesser);
    }
    {
        CVertexTree tree;
        tagVertexNode* const pRoot = Add(tree, 0.0, 0.0, 0.0);
        tagVertexNode* const pGreater = Add(tree, 1.0, 0.0, 0.0);
        EXPECT_EQ(pRoot->m_pLeft, pGreater);
        tagVertexNode* const pLesser = Add(tree, -1.0, 0.0, 0.0);
        EXPECT_EQ(pRoot->m_pRight, pLesser);
    }
}

TEST(VertexTree, ComparisonGivesTheSignOfTheNodeAgainstThePoint) {
    CVertexTree tree;
    auto const order = [&tree](CPoint3D node, CPoint3D point) {
        return static_cast<int>(tree.CompareVertex(node, point));
    };
    EXPECT_EQ(1, order(CPoint3D(0, 0, 1), CPoint3D(9, 9, 0)));
    EXPECT_EQ(-1, order(CPoint3D(9, 9, 0), CPoint3D(0, 0, 1)));
    EXPECT_EQ(1, order(CPoint3D(0, 1, 0), CPoint3D(9, 0, 0)));
    EXPECT_EQ(-1, order(CPoint3D(9, 0, 0), CPoint3D(0, 1, 0)));
    EXPECT_EQ(1, order(CPoint3D(1, 0, 0), CPoint3D(0, 0, 0)));
    EXPECT_EQ(-1, order(CPoint3D(0, 0, 0), CPoint3D(1, 0, 0)));
    EXPECT_EQ(0, order(CPoint3D(0, 0, 0), CPoint3D(0.0001, -0.0001, 0.0001)));
}

TEST(VertexTree, ComparisonInARebuildNeverTiesAndPushesTheOtherAside) {
    CVertexTree tree;
    tagVertexNode node(CPoint3D(1.0, 2.0, 3.0));
    tagVertexNode other(CPoint3D(1.00001, 2.00001, 3.00001));
    EXPECT_EQ(1, static_cast<int>(tree.CompareVertex(&node, &other)));
    ExpectPoint(other, 1.0 + 3.0 * 0.0001, 2.00001, 3.0);
    ExpectPoint(node, 1.0, 2.0, 3.0);
    tagVertexNode greater(CPoint3D(2.0, 2.0, 3.00001));
    EXPECT_EQ(-1, static_cast<int>(tree.CompareVertex(&node, &greater)));
    ExpectPoint(greater, 2.0, 2.0, 3.0);
}

TEST(VertexTree, RisingKeysRotateTheMiddleOneToTheRoot) {
    ThreeNodes three;
    EXPECT_EQ(three.pMiddle, three.tree.m_pRoot);
    EXPECT_EQ(three.pHigh, three.tree.m_pRoot->m_pLeft);
    EXPECT_EQ(three.pLow, three.tree.m_pRoot->m_pRight);
    EXPECT_EQ(0, three.tree.m_pRoot->m_nBalance);
    CVertexTree falling;
    Add(falling, 0, 0, 3);
    tagVertexNode* const pMiddle = Add(falling, 0, 0, 2);
    EXPECT_EQ(-1, falling.m_pRoot->m_nBalance);
    Add(falling, 0, 0, 1);
    EXPECT_EQ(pMiddle, falling.m_pRoot);
}

TEST(VertexTree, ZigzagKeysRotateTwice) {
    CVertexTree left;
    Add(left, 0, 0, 1);
    EXPECT_EQ(0, left.m_pRoot->m_nBalance);
    Add(left, 0, 0, 3);
    EXPECT_EQ(1, left.m_pRoot->m_nBalance);
    tagVertexNode* const pMiddle = Add(left, 0, 0, 2);
    EXPECT_EQ(pMiddle, left.m_pRoot);
    EXPECT_EQ(3.0, pMiddle->m_pLeft->z);
    EXPECT_EQ(1.0, pMiddle->m_pRight->z);
    CVertexTree right;
    Add(right, 0, 0, 3);
    Add(right, 0, 0, 1);
    EXPECT_EQ(2.0, Add(right, 0, 0, 2)->z);
    EXPECT_EQ(2.0, right.m_pRoot->z);
    EXPECT_EQ(0, right.m_pRoot->m_nBalance);
}

TEST(VertexTree, RotationsMoveTheChildUpAndLeaveBalancesAlone) {
    CVertexTree tree;
    tagVertexNode node;
    tagVertexNode child;
    tagVertexNode inner;
    node.m_nBalance = 5;
    child.m_nBalance = 7;
    node.m_pLeft = &child;
    child.m_pRight = &inner;
    tagVertexNode* slot = &node;
    tree.RotateLeft(&node, slot);
    EXPECT_EQ(&child, slot);
    EXPECT_EQ(&node, child.m_pRight);
    EXPECT_EQ(&inner, node.m_pLeft);
    EXPECT_EQ(5, node.m_nBalance);
    EXPECT_EQ(7, child.m_nBalance);
    tree.RotateRight(&child, slot);
    EXPECT_EQ(&node, slot);
    EXPECT_EQ(&child, node.m_pLeft);
    EXPECT_EQ(&inner, child.m_pRight);
}

// The node's left side has grown; the grandchild's balance decides the new ones.
TEST(VertexTree, DoubleRotationDistributesTheGrandchildsBalance) {
    struct Case {
        int nGrandchild, nNode, nChild;
    };
    for (Case const& c : {Case{-1, 0, 1}, Case{0, 0, 0}, Case{1, -1, 0}}) {
        CVertexTree tree;
        tagVertexNode node, child, grandchild;
        child.m_nBalance = -1;
        grandchild.m_nBalance = c.nGrandchild;
        node.m_pLeft = &child;
        child.m_pRight = &grandchild;
        tagVertexNode* slot = &node;
        int nTaller = 1;
        tree.BalanceRight(slot, nTaller);
        EXPECT_EQ(&grandchild, slot);
        EXPECT_EQ(&child, slot->m_pLeft);
        EXPECT_EQ(&node, slot->m_pRight);
        EXPECT_EQ(c.nNode, node.m_nBalance);
        EXPECT_EQ(c.nChild, child.m_nBalance);
        EXPECT_EQ(0, grandchild.m_nBalance);
        EXPECT_EQ(0, nTaller);
    }
    for (Case const& c : {Case{1, 0, -1}, Case{0, 0, 0}, Case{-1, 1, 0}}) {
        CVertexTree tree;
        tagVertexNode node, child, grandchild;
        child.m_nBalance = 1;
        grandchild.m_nBalance = c.nGrandchild;
        node.m_pRight = &child;
        child.m_pLeft = &grandchild;
        tagVertexNode* slot = &node;
        int nTaller = 1;
        tree.BalanceLeft(slot, nTaller);
        EXPECT_EQ(&grandchild, slot);
        EXPECT_EQ(&child, slot->m_pRight);
        EXPECT_EQ(&node, slot->m_pLeft);
        EXPECT_EQ(c.nNode, node.m_nBalance);
        EXPECT_EQ(c.nChild, child.m_nBalance);
        EXPECT_EQ(0, nTaller);
    }
}

TEST(VertexTree, WalksVisitTheNodeThenTheRightThenTheLeft) {
    ThreeNodes three;
    three.tree.SetPointID(100);
    EXPECT_EQ(100u, three.pMiddle->m_nID);
    EXPECT_EQ(101u, three.pLow->m_nID);
    EXPECT_EQ(102u, three.pHigh->m_nID);
    unsigned int nCounter = 7;
    three.tree.SetPointID(three.pHigh, nCounter);
    EXPECT_EQ(7u, three.pHigh->m_nID);
    EXPECT_EQ(8u, nCounter);
    three.tree.SetPointID(nullptr, nCounter);
    EXPECT_EQ(8u, nCounter);
}

TEST(VertexTree, SavePointWritesThreeFloatsAVertexInWalkOrder) {
    ThreeNodes three;
    TestFolder const folder;
    FILE* const pFile = std::fopen((folder / "points").string().c_str(), "wb");
    unsigned int nCounter = 5;
    three.tree.SavePoint(pFile, nCounter);
    std::fclose(pFile);
    EXPECT_EQ(8u, nCounter);
    EXPECT_EQ(5u, three.pMiddle->m_nID);
    EXPECT_EQ(6u, three.pLow->m_nID);
    EXPECT_EQ(7u, three.pHigh->m_nID);
    // 4, 5, 6, then 1, 2, 3, then 7, 8, 9 as little-endian floats.
    std::string const expected(
        "\0\0\x80\x40\0\0\xA0\x40\0\0\xC0\x40"
        "\0\0\x80\x3F\0\0\0\x40\0\0\x40\x40"
        "\0\0\xE0\x40\0\0\0\x41\0\0\x10\x41",
        36);
    EXPECT_EQ(expected, ReadBytes(folder / "points"));
}

TEST(VertexTree, TransferShiftsNodesAndBoxAndRebuildsNothing) {
    ThreeNodes three;
    double offset[3] = {10.0, 20.0, 30.0};
    three.tree.Transfer(offset);
    EXPECT_EQ(three.pMiddle, three.tree.m_pRoot);
    ExpectPoint(*three.pLow, 11.0, 22.0, 33.0);
    ExpectPoint(three.tree.m_BoundBox.m_ptMin, 11.0, 22.0, 33.0);
    ExpectPoint(three.tree.m_BoundBox.m_ptMax, 17.0, 28.0, 39.0);
    CVertexTree empty;
    empty.Transfer(offset);
    EXPECT_EQ(nullptr, empty.m_pRoot);
}

TEST(VertexTree, TransformMovesNodesAndBoxAndSortsAnew) {
    ThreeNodes three;
    // Turns z over, and shifts x by one.
    double matrix[4][4] = {{1, 0, 0, 9}, {0, 1, 0, 9}, {0, 0, -1, 9}, {1, 0, 0, 9}};
    three.tree.Transform(matrix);
    ExpectPoint(*three.pLow, 2.0, 2.0, -3.0);
    ExpectPoint(three.tree.m_BoundBox.m_ptMin, 2.0, 2.0, -9.0);
    ExpectPoint(three.tree.m_BoundBox.m_ptMax, 8.0, 8.0, -3.0);
    EXPECT_EQ(three.pLow, three.tree.m_pRoot->m_pLeft);
    EXPECT_EQ(three.pHigh, three.tree.m_pRoot->m_pRight);
    EXPECT_EQ(3u, three.tree.m_nCount);
}

TEST(VertexTree, BoundBoxIsOfAllNodesAndOfTheirImages) {
    ThreeNodes three;
    three.tree.m_BoundBox = CBoundBox3D();
    CBoundBox3D const box = three.tree.GetBoundBox(nullptr);
    ExpectPoint(box.m_ptMin, 1.0, 2.0, 3.0);
    ExpectPoint(box.m_ptMax, 7.0, 8.0, 9.0);
    double matrix[4][4] = {{2, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}, {0, 0, 5, 0}};
    CBoundBox3D const image = three.tree.GetBoundBox(matrix);
    ExpectPoint(image.m_ptMin, 2.0, -8.0, 8.0);
    ExpectPoint(image.m_ptMax, 14.0, -2.0, 14.0);
    EXPECT_EQ(0, three.tree.m_BoundBox.IsValid());
    ExpectPoint(*three.pLow, 1.0, 2.0, 3.0);
    EXPECT_EQ(0, CVertexTree().GetBoundBox(matrix).IsValid());
}

TEST(VertexTree, ExchangeSwapsTheTwoCoordinatesOfItsMode) {
    struct Case {
        int nMode;
        double x, y, z;
    };
    for (Case const& c : {Case{1, 3, 2, 1}, Case{2, 1, 3, 2}, Case{3, 2, 1, 3}, Case{0, 1, 2, 3},
                          Case{4, 1, 2, 3}, Case{-1, 1, 2, 3}}) {
        CVertexTree tree;
        tagVertexNode* const pNode = Add(tree, 1.0, 2.0, 3.0);
        tree.m_BoundBox = CBoundBox3D();
        tree.ExchangeXYZ(c.nMode);
        ExpectPoint(*pNode, c.x, c.y, c.z);
        ExpectPoint(tree.m_BoundBox.m_ptMax, c.x, c.y, c.z);  // it has rebuilt
    }
}

TEST(VertexTree, RebuildOfAnEmptyTreeChangesNothing) {
    CVertexTree tree;
    tree.m_BoundBox = CBoundBox3D(CPoint3D(1, 2, 3), CPoint3D(4, 5, 6));
    tree.m_nCount = 7;
    tree.ReBuildTree();
    EXPECT_EQ(nullptr, tree.m_pRoot);
    EXPECT_EQ(7u, tree.m_nCount);
    ExpectPoint(tree.m_BoundBox.m_ptMin, 1, 2, 3);
    ExpectPoint(tree.m_BoundBox.m_ptMax, 4, 5, 6);
}

TEST(VertexTree, RebuildKeepsVerticesThatHaveComeTogetherAndPushesOneAside) {
    CVertexTree tree;
    tagVertexNode* const p0 = Add(tree, 0.0, 0.0, 0.0);
    tagVertexNode* const p1 = Add(tree, 1.0, 0.0, 0.0);
    p0->m_nID = 17;
    double matrix[4][4] = {{1e-5, 0, 0, 0}, {0, 1e-5, 0, 0}, {0, 0, 1e-5, 0}, {0, 0, 0, 0}};
    tree.Transform(matrix);
    EXPECT_EQ(2u, tree.m_nCount);
    // p1 is the left child of p0, so it is placed first, and p0 gives way.
    ExpectPoint(*p1, 1e-5, 0.0, 0.0);
    ExpectPoint(*p0, 1e-5 + 3.0 * 0.0001, 0.0, 0.0);
    EXPECT_EQ(p1, tree.m_pRoot);
    EXPECT_EQ(p0, tree.m_pRoot->m_pRight);
    EXPECT_EQ(0, p0->m_nIndex);
    EXPECT_EQ(1, p1->m_nIndex);
    EXPECT_EQ(17u, p0->m_nID);
}

TEST(VertexTree, ReleaseFreesTheNodesAndKeepsCountAndBox) {
    ThreeNodes three;
    three.pLow->m_ppFacet = static_cast<CFacet**>(std::malloc(sizeof(CFacet*)));
    three.tree.ReleaseAll();
    EXPECT_EQ(nullptr, three.tree.m_pRoot);
    EXPECT_EQ(3u, three.tree.m_nCount);
    EXPECT_EQ(9.0, three.tree.m_BoundBox.m_ptMax.z);
    EXPECT_EQ(3, Add(three.tree, 0.0, 0.0, 0.0)->m_nIndex);
    EXPECT_EQ(4u, three.tree.m_nCount);
}

TEST(VertexTree, CopiesShareAllNodes) {
    ThreeNodes three;
    three.tree.m_dTolerance = 0.5;
    three.tree.m_dTolerance2 = 0.25;
    CVertexTree copy(three.tree);
    CVertexTree assigned;
    assigned = three.tree;
    for (CVertexTree* const pTree : {&copy, &assigned}) {
        EXPECT_EQ(three.tree.m_pRoot, pTree->m_pRoot);
        EXPECT_EQ(3u, pTree->m_nCount);
        EXPECT_EQ(9.0, pTree->m_BoundBox.m_ptMax.z);
        EXPECT_EQ(0.5, pTree->m_dTolerance);
        EXPECT_EQ(0.25, pTree->m_dTolerance2);
        pTree->m_pRoot = nullptr;
    }
}

TEST(VertexTree, ToleranceFieldDecides) {
    CVertexTree tree;
    tree.m_dTolerance = 0.5;
    tagVertexNode* const pFirst = Add(tree, 0.0, 0.0, 0.0);
    EXPECT_EQ(pFirst, Add(tree, 0.5, -0.5, 0.5));
    EXPECT_NE(pFirst, Add(tree, 0.6, 0.0, 0.0));
}

TEST(VertexTree, CoordinateThatIsNotANumberEqualsAllThatItMeets) {
    CVertexTree tree;
    tagVertexNode* const pFirst = Add(tree, 1.0, 2.0, 3.0);
    CPoint3D point(std::nan(""), std::nan(""), std::nan(""));
    EXPECT_EQ(pFirst, tree.AddNode(point));
    EXPECT_EQ(3.0, point.z);
    EXPECT_EQ(1u, tree.m_nCount);
}

TEST(VertexTree, WalksAcceptAnEmptyTree) {
    CVertexTree tree;
    double matrix[4][4] = {};
    tree.Transform(matrix);
    tree.SetPointID(1);
    tree.ZCompensate(tree.m_pRoot, 1.0);
    tree.ResumeZCompensate(tree.m_pRoot);
    XR_CList<void*, void*> list;
    tree.FindSuspendPoint(list, 1);
    EXPECT_EQ(0, list.GetCount());
    tree.ReleaseAll();
    EXPECT_EQ(0u, tree.m_nCount);
}

// A chain of a hundred vertices that a host has tied by hand: deeper than any balanced tree, and still safe.
TEST(VertexTree, PointBelowAChainTiedByHandIsAdded) {
    CVertexTree tree;
    tagVertexNode** ppSlot = &tree.m_pRoot;
    for (int i = 0; i < 100; ++i) {
        *ppSlot = new tagVertexNode(CPoint3D(0.0, 0.0, i));
        ppSlot = &(*ppSlot)->m_pLeft;
    }
    CPoint3D point(0.0, 0.0, 200.0);
    tagVertexNode const* const pAdded = tree.AddNode(point);
    EXPECT_EQ(200.0, pAdded->z);
    EXPECT_EQ(pAdded, tree.AddNode(point));
    int nLevels = 0;
    for (tagVertexNode const* p = tree.m_pRoot; p != nullptr; p = p->m_pLeft) ++nLevels;
    EXPECT_EQ(101, nLevels);
}

// Of a way that is too long the last 64 links are balanced, and none of them twice.
TEST(VertexTree, BelowAChainTiedByHandTheLast64NodesTiltAndTheOthersStay) {
    CVertexTree tree;
    std::vector<tagVertexNode*> chain;
    tagVertexNode** ppSlot = &tree.m_pRoot;
    for (int i = 0; i < 100; ++i) {
        *ppSlot = new tagVertexNode(CPoint3D(0.0, 0.0, i));
        chain.push_back(*ppSlot);
        ppSlot = &chain.back()->m_pLeft;
    }
    CPoint3D point(0.0, 0.0, 200.0);
    tree.AddNode(point);
    for (std::size_t i = 0; i < chain.size(); ++i) EXPECT_EQ(i < 36 ? 0 : 1, chain[i]->m_nBalance) << i;
}
