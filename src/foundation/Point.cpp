#include "foundation/Point.h"

// The bytes of a double, seen as two floats.
static float* FloatsIn(void* pDouble) { return static_cast<float*>(pDouble); }

float& CPoint2D::Y1() { return FloatsIn(&y)[0]; }

float& CPoint2D::Y2() { return FloatsIn(&y)[1]; }

void CEdge2D::Reverse() {
    CPoint2D const start = m_ptStart;
    m_ptStart = m_ptEnd;
    m_ptEnd = start;
}
