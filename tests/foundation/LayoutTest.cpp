#include <cstdint>
#include <type_traits>

#include "FieldWalk.h"
#include "foundation/Array.h"
#include "foundation/BoundBox.h"
#include "foundation/List.h"
#include "foundation/Point.h"
#include "foundation/Vec3f.h"

// Hosts read the public fields: their order and sizes are fixed.

TEST(Layout, PointsHoldTheirCoordinatesInOrder) {
    CPoint2D const p;
    FieldWalk(p, FieldWalk::kVirtual)
        .Then("x", p.x)
        .Then("y", p.y)
        .Then("m_fAttr1", p.m_fAttr1)
        .Then("m_fAttr2", p.m_fAttr2)
        .End();
    EXPECT_TRUE((std::is_same_v<decltype(p.m_fAttr1), float>));
    EXPECT_TRUE((std::is_same_v<decltype(p.x), double>));
    CPoint3D const q;
    FieldWalk(q, FieldWalk::kVirtual).Then("x", q.x).Then("y", q.y).Then("z", q.z).End();
    EXPECT_TRUE((std::is_same_v<decltype(q.z), double>));
}

TEST(Layout, EdgesAndBoxesHoldTwoPoints) {
    CEdge2D const e2;
    FieldWalk(e2, FieldWalk::kVirtual).Then("start", e2.m_ptStart).Then("end", e2.m_ptEnd).End();
    CEdge3D const e3;
    FieldWalk(e3, FieldWalk::kVirtual).Then("start", e3.m_ptStart).Then("end", e3.m_ptEnd).End();
    CBoundBox2D const b2;
    FieldWalk(b2, FieldWalk::kVirtual).Then("min", b2.m_ptMin).Then("max", b2.m_ptMax).End();
    CBoundBox3D const b3;
    FieldWalk(b3, FieldWalk::kVirtual).Then("min", b3.m_ptMin).Then("max", b3.m_ptMax).End();
}

TEST(Layout, ValueClassesHaveAVirtualDestructorAndTheVectorHasNone) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CPoint2D>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CPoint3D>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CEdge2D>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CEdge3D>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CBoundBox2D>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CBoundBox3D>);
    EXPECT_FALSE(std::is_polymorphic_v<Vec3f>);
    Vec3f const v;
    FieldWalk(v, 0).Then("x", v.x).Then("y", v.y).Then("z", v.z).End();
    EXPECT_EQ(12u, sizeof(Vec3f));
}

template <class Array>
static void ExpectArrayFields(Array const& array) {
    FieldWalk(array, FieldWalk::kVirtual)
        .Then("m_pData", array.m_pData)
        .Then("m_nSize", array.m_nSize)
        .Then("m_nMaxSize", array.m_nMaxSize)
        .Then("m_nGrowBy", array.m_nGrowBy)
        .End();
    EXPECT_TRUE((std::is_same_v<decltype(array.m_nSize), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(array.m_nMaxSize), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(array.m_nGrowBy), std::int32_t>));
}

TEST(Layout, ArraysHoldDataSizeCapacityAndStep) {
    ExpectArrayFields(XR_CArray<int*, int*>());
    ExpectArrayFields(XR_CPtrArray());
    EXPECT_TRUE((std::is_same_v<decltype(XR_CPtrArray::m_pData), void**>));
}

TEST(Layout, ListsHoldEndsCountFreeNodesBlocksAndBlockSize) {
    XR_CList<CPoint3D, CPoint3D&> const list;
    FieldWalk(list, FieldWalk::kVirtual)
        .Then("m_pNodeHead", list.m_pNodeHead)
        .Then("m_pNodeTail", list.m_pNodeTail)
        .Then("m_nCount", list.m_nCount)
        .Then("m_pNodeFree", list.m_pNodeFree)
        .Then("m_pBlocks", list.m_pBlocks)
        .Then("m_nBlockSize", list.m_nBlockSize)
        .End();
    EXPECT_TRUE((std::is_same_v<decltype(list.m_nCount), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(list.m_nBlockSize), std::int32_t>));
    XR_CList<CPoint3D, CPoint3D&>::XR_CNode const node{};
    FieldWalk(node, 0).Then("pNext", node.pNext).Then("pPrev", node.pPrev).Then("data", node.data).End();
}
