// What a vertex and the vertex tree do with the facets that use a vertex.

#include <cmath>

#include "mesh/FacetCorners.h"
#include "trees/Avl.h"
#include "trees/VertexTree.h"

using namespace varnet;

namespace {

// 88.2 degrees: the slope at which the tangent is cut off.
constexpr double kSteepestSlope = 1.5393804002589986;

// Above every z of a unit normal: a vertex without a marked facet.
constexpr double kNoNormal = 100000.0;

// The smallest z among the normals of the vertex's FACET_SUPPORT facets.
double LowestSupportNormal(tagVertexNode const& vertex) {
    double dLowest = kNoNormal;
    for (int i = 0; i < vertex.m_nFacetNum; ++i) {
        CFacet const& facet = *vertex.m_ppFacet[i];
        if ((facet.m_nFlag & FACET_SUPPORT) == 0) continue;
        double const nz = facet.m_fNormal[2];
        if (nz < dLowest) dLowest = nz;
    }
    return dLowest;
}

// How much of the compensation a vertex takes whose flattest supported facet has this z in its normal.
double CompensationOf(double dNormalZ, double dz) {
    if (dNormalZ < -1.0) dNormalZ = -1.0;
    double dSlope = std::asin(-dNormalZ);
    if (dSlope > kSteepestSlope) dSlope = kSteepestSlope;
    double const s = std::tan(dSlope);
    if (s > 2.0) return dz;
    return s >= 1.0 ? (s - 1.0) * dz : 0.0;
}

}  // namespace

int tagVertexNode::IsSuspendPoint(int nMode) {
    for (int i = 0; i < m_nFacetNum; ++i) {
        CFacet const& facet = *m_ppFacet[i];
        if (facet.m_pVertex1 != this) return 0;
        bool const bHeld = nMode != 0 ? (facet.m_nFlag & FACET_SUPPORT) != 0 || facet.m_fNormal[2] > 0.0f
                                      : (facet.m_nFlag & FACET_SUSPEND) != 0 || facet.m_fNormal[2] < 0.0f;
        if (bHeld) return 0;
    }
    return 1;
}

void CVertexTree::ZCompensate(tagVertexNode* pNode, double dz) {
    avl::Walk(pNode, [dz](tagVertexNode* pVertex) {
        pVertex->m_dZOffset = 0.0;
        double const dNormalZ = LowestSupportNormal(*pVertex);
        if (dNormalZ >= 0.0) return;
        pVertex->m_dZOffset = CompensationOf(dNormalZ, dz);
        pVertex->z += pVertex->m_dZOffset;
    });
}

void CVertexTree::ResumeZCompensate(tagVertexNode* pNode) {
    avl::Walk(pNode, [](tagVertexNode* pVertex) {
        pVertex->z -= pVertex->m_dZOffset;
        pVertex->m_dZOffset = 0.0;
    });
}

void CVertexTree::FindSuspendPoint(XR_CList<void*, void*>& list, int nMode) {
    FindSuspendPoint(m_pRoot, list, nMode);
}

void CVertexTree::FindSuspendPoint(tagVertexNode* pNode, XR_CList<void*, void*>& list, int nMode) {
    avl::Walk(pNode, [&list, nMode](tagVertexNode* pVertex) {
        if (pVertex->IsSuspendPoint(nMode) != 0) list.AddTail(pVertex);
    });
}
