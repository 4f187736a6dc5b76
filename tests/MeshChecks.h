#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "Shapes.h"
#include "mesh/STLModel.h"
#include "trees/LiteralVertexTree.h"

// What the tests of meshes share: filling models, and looking at all that a model holds.

inline tagFACET FacetOf(CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
    tagFACET facet;
    facet.m_ptVertex[0] = a;
    facet.m_ptVertex[1] = b;
    facet.m_ptVertex[2] = c;
    return facet;
}

inline void AddTriangle(CSTLModel& model, CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
    tagFACET facet = FacetOf(a, b, c);
    model.AddFacet(facet);
}

inline tagFACET FacetOf(shapes::Triangle const& triangle) {
    auto const point = [](shapes::Corner const& corner) { return CPoint3D(corner.x, corner.y, corner.z); };
    return FacetOf(point(triangle[0]), point(triangle[1]), point(triangle[2]));
}

inline void AddMesh(CSTLModel& model, shapes::Mesh const& mesh) {
    for (shapes::Triangle const& triangle : mesh) {
        tagFACET facet = FacetOf(triangle);
        model.AddFacet(facet);
    }
}

/// All facets, surface by surface.
inline std::vector<CFacet*> FacetsOf(CSTLModel const& model) {
    std::vector<CFacet*> facets;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        auto const& array = surfaces.GetAt(i)->m_aFacet;
        for (int k = 0; k < array.GetSize(); ++k) facets.push_back(array.GetAt(k));
    }
    return facets;
}

/// The facet at an index of the default surface.
inline CFacet& FacetAt(CSTLModel const& model, int nIndex) {
    return *model.m_SurfaceArray.m_aSurface.GetAt(0)->m_aFacet.GetAt(nIndex);
}

inline void CollectNodes(tagVertexNode* pNode, std::vector<tagVertexNode*>& nodes) {
    if (pNode == nullptr) return;
    nodes.push_back(pNode);
    CollectNodes(pNode->m_pRight, nodes);
    CollectNodes(pNode->m_pLeft, nodes);
}

/// All vertices, in walk order.
inline std::vector<tagVertexNode*> VerticesOf(CSTLModel const& model) {
    std::vector<tagVertexNode*> nodes;
    CollectNodes(model.m_VertexTree.m_pRoot, nodes);
    return nodes;
}

inline void ExpectFacetIsSound(CFacet const& facet) {
    tagVertexNode const* const corners[] = {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3};
    EXPECT_TRUE(corners[0] != corners[1] && corners[1] != corners[2] && corners[2] != corners[0]);
    for (tagVertexNode const* pCorner : corners) {
        EXPECT_FALSE(pCorner->z < facet.m_pVertex1->z);
        EXPECT_EQ(1, std::count(pCorner->m_ppFacet, pCorner->m_ppFacet + pCorner->m_nFacetNum, &facet));
    }
    EXPECT_FALSE(facet.m_fNormal[0] == 1.0f && facet.m_fNormal[1] == 1.0f && facet.m_fNormal[2] == 1.0f);
    bool const bHigh = facet.m_pVertex3->z >= facet.m_pVertex2->z;
    EXPECT_EQ(bHigh ? 2u : 1u, facet.m_nFlag & 3u);
}

/// What holds of every model that AddFacet alone has filled.
inline void ExpectInvariants(CSTLModel const& model) {
    std::vector<CFacet*> const facets = FacetsOf(model);
    std::vector<tagVertexNode*> const vertices = VerticesOf(model);
    std::set<tagVertexNode const*> const known(vertices.begin(), vertices.end());
    EXPECT_EQ(model.m_VertexTree.m_nCount, known.size());
    EXPECT_EQ(static_cast<int>(facets.size()), model.m_Status.m_nFacetNum);
    std::set<CFacet const*> const own(facets.begin(), facets.end());
    EXPECT_EQ(facets.size(), own.size());
    std::size_t nUses = 0;
    for (tagVertexNode const* pVertex : vertices) {
        nUses += static_cast<std::size_t>(pVertex->m_nFacetNum);
        for (int i = 0; i < pVertex->m_nFacetNum; ++i) EXPECT_EQ(1u, own.count(pVertex->m_ppFacet[i]));
    }
    EXPECT_EQ(3 * facets.size(), nUses);
    for (CFacet const* pFacet : facets) {
        ExpectFacetIsSound(*pFacet);
        EXPECT_EQ(1u, known.count(pFacet->m_pVertex1));
        EXPECT_EQ(1u, known.count(pFacet->m_pVertex2));
        EXPECT_EQ(1u, known.count(pFacet->m_pVertex3));
        if (testing::Test::HasFailure()) return;
    }
}

inline bool SameFloats(float const (&a)[3], float const (&b)[3]) {
    return std::equal(a, a + 3, b, [](float x, float y) {
        return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y);
    });
}

inline void ExpectSameFacets(std::vector<CFacet*> const& expected, std::vector<CFacet*> const& facets) {
    ASSERT_EQ(expected.size(), facets.size());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        CFacet const& a = *expected[i];
        CFacet const& b = *facets[i];
        ASSERT_EQ(a.m_pVertex1->m_nIndex, b.m_pVertex1->m_nIndex) << "facet " << i;
        ASSERT_EQ(a.m_pVertex2->m_nIndex, b.m_pVertex2->m_nIndex) << "facet " << i;
        ASSERT_EQ(a.m_pVertex3->m_nIndex, b.m_pVertex3->m_nIndex) << "facet " << i;
        ASSERT_TRUE(SameFloats(a.m_fNormal, b.m_fNormal)) << "facet " << i;
        ASSERT_EQ(a.m_nRegion, b.m_nRegion) << "facet " << i;
        ASSERT_EQ(a.m_nFlag, b.m_nFlag) << "facet " << i;
    }
}

/// That two models hold the same vertices, facets and lists in the same order and shape, bit for bit.
inline void ExpectSameModels(CSTLModel const& expected, CSTLModel const& model) {
    ASSERT_EQ(expected.m_VertexTree.m_nCount, model.m_VertexTree.m_nCount);
    ASSERT_TRUE(SameShape(expected.m_VertexTree.m_pRoot, model.m_VertexTree.m_pRoot));
    ASSERT_TRUE(SameBox(expected.m_VertexTree.m_BoundBox, model.m_VertexTree.m_BoundBox));
    ASSERT_EQ(expected.m_Status.m_nFacetNum, model.m_Status.m_nFacetNum);
    std::vector<CFacet*> const expectedFacets = FacetsOf(expected);
    std::vector<CFacet*> const facets = FacetsOf(model);
    ASSERT_NO_FATAL_FAILURE(ExpectSameFacets(expectedFacets, facets));
    std::map<CFacet const*, CFacet const*> twin;
    for (std::size_t i = 0; i < facets.size(); ++i) twin[expectedFacets[i]] = facets[i];
    std::vector<tagVertexNode*> const expectedVertices = VerticesOf(expected);
    std::vector<tagVertexNode*> const vertices = VerticesOf(model);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        tagVertexNode const& a = *expectedVertices[i];
        tagVertexNode const& b = *vertices[i];
        ASSERT_EQ(a.m_nFacetNum, b.m_nFacetNum);
        for (int k = 0; k < a.m_nFacetNum; ++k) ASSERT_EQ(twin[a.m_ppFacet[k]], b.m_ppFacet[k]);
    }
}
