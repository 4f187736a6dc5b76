#include "support/FeatureEdge.h"

#include <cmath>

#include "foundation/Geometry.h"

namespace {

// The bar of a chain, unless the host sets others: millimetres.
constexpr double kHalfWidth = 3.0;
constexpr double kRise = 1.0;

// Stands for a measure that is not computed.
constexpr double kNotComputed = 1e10;

}  // namespace

CFeatureEdge::CFeatureEdge()
    : m_nEdgeFlag(0),
      m_dHalfWidth(kHalfWidth),
      m_dRise(kRise),
      m_dMinZ(kNotComputed),
      m_dLength(kNotComputed) {}

double CFeatureEdge::GetLength(int bRecalc) {
    if (bRecalc != 0) m_dLength = kNotComputed;
    if (kNotComputed > m_dLength) return m_dLength;
    if (m_VertexList.GetCount() < 2) return 0.0;
    m_dLength = 0.0;
    XR__POSITION* position = m_VertexList.GetHeadPosition();
    tagVertexNode const* pLast = m_VertexList.GetNext(position);
    while (position != nullptr) {
        tagVertexNode const* const pVertex = m_VertexList.GetNext(position);
        m_dLength += std::sqrt(D2ofPtoP(*pLast, *pVertex));
        pLast = pVertex;
    }
    return m_dLength;
}

double CFeatureEdge::GetMinZ(int bRecalc) {
    if (bRecalc != 0) m_dMinZ = kNotComputed;
    if (kNotComputed > m_dMinZ) return m_dMinZ;
    XR__POSITION* position = m_VertexList.GetHeadPosition();
    while (position != nullptr) {
        tagVertexNode const* const pVertex = m_VertexList.GetNext(position);
        if (pVertex->z < m_dMinZ) m_dMinZ = pVertex->z;
    }
    return m_dMinZ;
}
