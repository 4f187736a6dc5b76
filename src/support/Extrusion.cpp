// Offset shells: a surface moved along its vertex normals, and the strips that close the gap at its rim.

#include <array>
#include <cmath>

#include "foundation/Geometry.h"
#include "mesh/FacetCorners.h"
#include "mesh/STLModel.h"
#include "support/RimWalk.h"
#include "support/SolidIntake.h"

using namespace varnet;

namespace {

// Normals whose weighted sum is shorter than this cancel each other.
constexpr double kCancelled = 0.0001;

struct OtherCorners {
    tagVertexNode* a;
    tagVertexNode* b;
};

// The corners behind the vertex in the facet's winding.
OtherCorners Behind(CFacet const& facet, tagVertexNode const* pVertex) {
    if (facet.m_pVertex1 == pVertex) return {facet.m_pVertex2, facet.m_pVertex3};
    if (facet.m_pVertex2 == pVertex) return {facet.m_pVertex3, facet.m_pVertex1};
    return {facet.m_pVertex1, facet.m_pVertex2};
}

}  // namespace

CPoint3D tagVertexNode::CalExtrudePoint(double dDistance) {
    CPoint3D sum;
    for (int i = 0; i < m_nFacetNum; ++i) {
        CFacet const& facet = *m_ppFacet[i];
        auto const [a, b] = Behind(facet, this);
        double const dWeight = CalAngle(*this, *a, *this, *b);
        sum.x += facet.m_fNormal[0] * dWeight;
        sum.y += facet.m_fNormal[1] * dWeight;
        sum.z += facet.m_fNormal[2] * dWeight;
    }
    double const dLength = std::sqrt(sum.x * sum.x + sum.y * sum.y + sum.z * sum.z);
    double const dDivisor = kCancelled > dLength ? 1.0 : dLength;
    return CPoint3D(x + sum.x / dDivisor * dDistance, y + sum.y / dDivisor * dDistance,
                    z + sum.z / dDivisor * dDistance);
}

void CFeatureSurface::CalExtrudePoint(double dDistance) {
    ClearUsedPoint();
    for (int i = 0; i < m_aFacet.m_nSize; ++i) {
        for (tagVertexNode* const pVertex : Corners(*m_aFacet[i])) {
            if (pVertex->m_pExtrude != nullptr) continue;
            CPoint3D moved = pVertex->CalExtrudePoint(dDistance);
            pVertex->m_pExtrude = &m_ExtrudeList.GetAt(m_ExtrudeList.AddTail(moved));
        }
    }
}

// The model may be the surface's own: only the facets that are there at the beginning are taken.
void CFeatureSurface::ExtrudeSurface(CSTLModel* pModel, double dDistance) {
    CalExtrudePoint(dDistance);
    int const nFacets = m_aFacet.m_nSize;
    SolidIntake intake(*pModel, nFacets);
    for (int i = 0; i < nFacets; ++i) {
        auto const [p1, p2, p3] = Corners(*m_aFacet[i]);
        intake.Add(*p1->m_pExtrude, *p3->m_pExtrude, *p2->m_pExtrude);
    }
}

void CFeatureSurface::ExtrudeSurfaceVerge(CSTLModel* pModel, double dDistance) {
    WalkRim(m_aFacet, [this, pModel, dDistance](tagVertexNode* pStart, tagVertexNode* pEnd) {
        AddExtrudeEdge(pModel, dDistance, pStart, pEnd);
    });
}

void CFeatureSurface::AddExtrudeEdge(CSTLModel* pModel, double dDistance, tagVertexNode* pA,
                                     tagVertexNode* pB) {
    auto const add = [pModel](CPoint3D const& p1, CPoint3D const& p2, CPoint3D const& p3) {
        if (auto facet = GeneratedFacet(p1, p2, p3)) pModel->AddFacet(*facet);
    };
    CPoint3D const& a = *pA->m_pExtrude;
    CPoint3D const& b = *pB->m_pExtrude;
    if (dDistance > 0.0) {
        add(*pA, *pB, a);
        add(a, *pB, b);
    } else {
        add(*pA, a, *pB);
        add(*pB, a, b);
    }
}
