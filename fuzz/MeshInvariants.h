#pragma once

#include <cstdlib>

#include "Require.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "trees/Avl.h"

using namespace varnet;

// What holds for every mesh, whatever a file or a host has done. A breach ends the program.

/// The depth of the subtree; every balance tells the truth.
template <class Node>
int CheckedDepth(Node const* pNode) {
    if (pNode == nullptr) return 0;
    int const nLeft = CheckedDepth(pNode->m_pLeft);
    int const nRight = CheckedDepth(pNode->m_pRight);
    Require(nLeft - nRight == pNode->m_nBalance);
    return 1 + (nLeft > nRight ? nLeft : nRight);
}

inline int TimesListed(tagVertexNode const& vertex, CFacet const* pFacet) {
    int nTimes = 0;
    for (int i = 0; i < vertex.m_nFacetNum; ++i) nTimes += vertex.m_ppFacet[i] == pFacet ? 1 : 0;
    return nTimes;
}

inline void RequireInvariants(CSTLModel const& model) {
    CheckedDepth(model.m_VertexTree.m_pRoot);
    std::uint32_t nVertices = 0;
    avl::Walk(model.m_VertexTree.m_pRoot, [&nVertices](tagVertexNode*) { ++nVertices; });
    Require(nVertices == model.m_VertexTree.m_nCount);
    ForEachFacet(model.m_SurfaceArray, [](CFacet const& facet) {
        for (tagVertexNode const* const pVertex : Corners(facet)) Require(TimesListed(*pVertex, &facet) == 1);
        Require(facet.m_pVertex1 != facet.m_pVertex2 && facet.m_pVertex2 != facet.m_pVertex3 &&
                facet.m_pVertex3 != facet.m_pVertex1);
        auto const nSlope = facet.m_nFlag & (FACET_SLOPE_LOW | FACET_SLOPE_HIGH);
        Require(nSlope == FACET_SLOPE_LOW || nSlope == FACET_SLOPE_HIGH);
    });
}
