#include "support/FeatureEdge.h"

#include <cstdint>
#include <type_traits>

#include "FieldWalk.h"

TEST(FeatureEdge, FieldsStandInOrder) {
    CFeatureEdge const edge;
    FieldWalk(edge, FieldWalk::kVirtual)
        .Then("m_VertexList", edge.m_VertexList)
        .Then("m_nEdgeFlag", edge.m_nEdgeFlag)
        .Then("m_dHalfWidth", edge.m_dHalfWidth)
        .Then("m_dRise", edge.m_dRise)
        .Then("m_dMinZ", edge.m_dMinZ)
        .Then("m_dLength", edge.m_dLength)
        .End();
    EXPECT_EQ(4u, sizeof edge.m_nEdgeFlag);
    EXPECT_TRUE(std::has_virtual_destructor_v<CFeatureEdge>);
    EXPECT_EQ(0x100u, static_cast<unsigned>(FE_SELECTED));
}

TEST(FeatureEdge, NewChainHasItsDefaults) {
    CFeatureEdge const edge;
    EXPECT_EQ(0, edge.m_VertexList.GetCount());
    EXPECT_EQ(10, edge.m_VertexList.m_nBlockSize);
    EXPECT_EQ(0u, edge.m_nEdgeFlag);
    EXPECT_EQ(3.0, edge.m_dHalfWidth);
    EXPECT_EQ(1.0, edge.m_dRise);
    EXPECT_EQ(1e10, edge.m_dMinZ);
    EXPECT_EQ(1e10, edge.m_dLength);
}
