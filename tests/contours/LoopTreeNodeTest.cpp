#include "contours/LoopTreeNode.h"

#include "FieldWalk.h"
#include "contours/LoopWalk.h"
#include "contours/Paths.h"

using namespace varnet;

TEST(LoopTreeNode, FieldsStandInOrder) {
    tagLoopTreeNode const loop(0);
    FieldWalk(loop, 0)
        .Then("m_pPointList", loop.m_pPointList)
        .Then("m_nID", loop.m_nID)
        .Then("m_nLevel", loop.m_nLevel)
        .Then("m_nDirection", loop.m_nDirection)
        .Then("m_dZ", loop.m_dZ)
        .Then("m_bClosed", loop.m_bClosed)
        .Then("m_Box", loop.m_Box)
        .Then("m_ChildList", loop.m_ChildList)
        .Then("m_dTolerance", loop.m_dTolerance)
        .Then("m_nFlag", loop.m_nFlag)
        .Then("m_nUser1", loop.m_nUser1)
        .Then("m_nUser2", loop.m_nUser2)
        .Then("m_dUser1", loop.m_dUser1)
        .Then("m_dUser2", loop.m_dUser2)
        .Then("m_dUser3", loop.m_dUser3)
        .End();
}

TEST(LoopTreeNode, EnumerationsHoldAnyNumberOf32Bits) {
    EXPECT_EQ(sizeof(LOOPDIRECT), 4u);
    EXPECT_EQ(sizeof(OPERATEDIRECT), 4u);
    EXPECT_EQ(static_cast<int>(static_cast<LOOPDIRECT>(-1)), -1);
    EXPECT_EQ(LOOPDIRECT_CW, 0);
    EXPECT_EQ(LOOPDIRECT_CCW, 1);
    EXPECT_EQ(LOOPDIRECT_NONE, 2);
    EXPECT_EQ(OPERATE_AT_TAIL, 0);
    EXPECT_EQ(OPERATE_AT_HEAD, 1);
    EXPECT_EQ(POINT_JOINT, 1);
    EXPECT_EQ(POINT_INSERTED, 2);
    EXPECT_EQ(LOOP_USED_FLAG, 0x1000);
}

TEST(LoopTreeNode, ANewLoopHasItsDefaults) {
    tagLoopTreeNode const loop(3);
    EXPECT_EQ(loop.m_pPointList, nullptr);
    EXPECT_EQ(loop.m_nID, 1);
    EXPECT_EQ(loop.m_nLevel, 3);
    EXPECT_EQ(loop.m_nDirection, LOOPDIRECT_NONE);
    EXPECT_EQ(loop.m_dZ, 0.0);
    EXPECT_EQ(loop.m_bClosed, 0);
    EXPECT_TRUE(SameBox(loop.m_Box, CBoundBox2D()));
    EXPECT_EQ(loop.m_ChildList.GetCount(), 0);
    EXPECT_EQ(loop.m_ChildList.m_nBlockSize, 10);
    EXPECT_EQ(loop.m_dTolerance, 0.01);
    EXPECT_EQ(loop.m_nFlag, 0);
    EXPECT_EQ(loop.m_nUser1, -1);
    EXPECT_EQ(loop.m_nUser2, -1);
    EXPECT_EQ(loop.m_dUser1, -1.0);
    EXPECT_EQ(loop.m_dUser2, -1.0);
    EXPECT_EQ(loop.m_dUser3, -1.0);
    EXPECT_EQ(tagLoopTreeNode().m_nLevel, 0);
}

TEST(LoopTreeNode, CopiesOfTheRecordShareTheirPoints) {
    LoopPtr const pLoop = Square(0, 0, 1);
    pLoop->m_ChildList.AddTail(new tagLoopTreeNode(1));
    tagLoopTreeNode copy(*pLoop);
    tagLoopTreeNode assigned;
    assigned = *pLoop;
    for (tagLoopTreeNode* const p : {&copy, &assigned}) {
        EXPECT_EQ(p->m_pPointList, pLoop->m_pPointList);
        EXPECT_EQ(p->m_ChildList.m_pNodeHead, pLoop->m_ChildList.m_pNodeHead);
        // Let go of what the other owns.
        p->m_pPointList = nullptr;
        p->m_ChildList = XR_CList<void*, void*>();
    }
}

TEST(LoopTreeNode, ATreeOfAHundredThousandLevelsIsWalkedAndDestroyed) {
    auto pRoot = std::make_unique<tagLoopTreeNode>(0);
    tagLoopTreeNode* pLast = pRoot.get();
    for (int i = 1; i < 100000; ++i) {
        auto* const pNext = new tagLoopTreeNode(i);
        pLast->m_ChildList.AddTail(pNext);
        pLast = pNext;
    }
    pRoot->LevelAdd();
    EXPECT_EQ(pRoot->m_nLevel, 1);
    EXPECT_EQ(pLast->m_nLevel, 100000);

    CLayer layer;
    Give(layer, std::move(pRoot));
    layer.BuildLoopList();
    EXPECT_EQ(layer.m_LoopList.GetCount(), 100000);
    layer.GetBoundBox();
    CLayer const copy(layer);
    EXPECT_EQ(copy.m_RawLoopList.GetCount(), 0) << "no loop has a list";
    std::unique_ptr<CLayer> const pFlat(layer.CopyLoop());
    EXPECT_EQ(pFlat->m_RawLoopList.GetCount(), 100000);
    layer.MakeTopology(1);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
}

TEST(LoopTreeNode, ATreeIsVisitedEachLoopBeforeItsChildrenInOrder) {
    // 0 has 1 and 4; 1 has 2 and 3; 4 has 5.
    std::vector<tagLoopTreeNode*> loops;
    for (int i = 0; i < 6; ++i) loops.push_back(new tagLoopTreeNode(0));
    auto const put = [&loops](std::size_t parent, std::size_t child) {
        loops[parent]->m_ChildList.AddTail(loops[child]);
    };
    put(0, 1);
    put(0, 4);
    put(1, 2);
    put(1, 3);
    put(4, 5);
    LoopPtr const pRoot(loops[0]);
    std::vector<tagLoopTreeNode*> visited;
    ForEachInTree(*pRoot, [&visited](tagLoopTreeNode& loop) { visited.push_back(&loop); });
    EXPECT_EQ(visited, loops);
    CLayer layer;
    layer.AddLoopNodeInList(pRoot.get());
    EXPECT_EQ(LoopsOf(layer.m_LoopList), loops);
}

TEST(CopyOtherLoop, TakesPointsAndScalarsButNeitherLevelNorChildren) {
    LoopPtr const pLoop = ClosedLoop({{0, 0}, {2, 0}, {2, 3}});
    pLoop->m_nID = 7;
    pLoop->m_nLevel = 5;
    pLoop->m_nDirection = LOOPDIRECT_CCW;
    pLoop->m_dZ = 1.5;
    pLoop->m_dTolerance = 0.25;
    pLoop->m_nFlag = LOOP_KIND_INNER | LOOP_USED_FLAG;
    pLoop->m_nUser1 = 11;
    pLoop->m_nUser2 = 12;
    pLoop->m_dUser1 = 13.0;
    pLoop->m_dUser2 = 14.0;
    pLoop->m_dUser3 = 15.0;
    pLoop->m_ChildList.AddTail(new tagLoopTreeNode(6));
    LoopPtr const pCopy = OpenPath({{9, 9}});
    pCopy->m_nLevel = 2;
    pCopy->CopyOtherLoop(pLoop.get());
    EXPECT_EQ(ExactPoints(*pCopy), ExactPoints(*pLoop));
    EXPECT_NE(pCopy->m_pPointList, pLoop->m_pPointList);
    EXPECT_EQ(pCopy->m_pPointList->m_nBlockSize, 10);
    EXPECT_TRUE(SameBox(pCopy->m_Box, CBoundBox2D(CPoint2D(0, 0), CPoint2D(2, 3))));
    EXPECT_EQ(pCopy->m_nID, 7);
    EXPECT_EQ(pCopy->m_nLevel, 2);
    EXPECT_EQ(pCopy->m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(pCopy->m_dZ, 1.5);
    EXPECT_EQ(pCopy->m_bClosed, 1);
    EXPECT_EQ(pCopy->m_dTolerance, 0.25);
    EXPECT_EQ(pCopy->m_nFlag, LOOP_KIND_INNER | LOOP_USED_FLAG);
    EXPECT_EQ(pCopy->m_nUser1, 11);
    EXPECT_EQ(pCopy->m_nUser2, 12);
    EXPECT_EQ(pCopy->m_dUser1, 13.0);
    EXPECT_EQ(pCopy->m_dUser2, 14.0);
    EXPECT_EQ(pCopy->m_dUser3, 15.0);
    EXPECT_EQ(pCopy->m_ChildList.GetCount(), 0);
}

TEST(CopyOtherLoop, OfALoopWithoutAListLeavesAnEmptyListAndTheBox) {
    tagLoopTreeNode none;
    LoopPtr const pCopy = Square(0, 0, 1);
    pCopy->CopyOtherLoop(&none);
    ASSERT_NE(pCopy->m_pPointList, nullptr);
    EXPECT_EQ(pCopy->m_pPointList->GetCount(), 0);
    EXPECT_TRUE(SameBox(pCopy->m_Box, CBoundBox2D(CPoint2D(0, 0), CPoint2D(1, 1))));
}

TEST(CopyOtherLoop, OfAnEmptyListEmptiesTheBox) {
    LoopPtr const pEmpty = OpenPath({});
    LoopPtr const pCopy = Square(0, 0, 1);
    pCopy->CopyOtherLoop(pEmpty.get());
    EXPECT_EQ(pCopy->m_pPointList->GetCount(), 0);
    EXPECT_TRUE(SameBox(pCopy->m_Box, CBoundBox2D()));
}

TEST(CopyOtherLoop, OfTheLoopItselfKeepsItsPoints) {
    LoopPtr const pLoop = Square(0, 0, 1);
    auto const points = ExactPoints(*pLoop);
    pLoop->CopyOtherLoop(pLoop.get());
    EXPECT_EQ(ExactPoints(*pLoop), points);
}
