#include "mesh/Facet.h"

#include <array>
#include <cmath>

#include "foundation/Float3.h"
#include "foundation/memory/SlotPool.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetMeasures.h"

using namespace varnet;

static_assert(sizeof(CFacet) <= kFacetSlotSize);

namespace {

// Calls visit(g) for every facet g at the edge from a to b other than pFacet, in the order of the facet
// lists, until visit returns true.
template <class Visit>
void VisitNeighbors(CFacet const* pFacet, tagVertexNode* a, tagVertexNode* b, Visit const& visit) {
    auto const [pWalked, pWanted] = ChooseWalked(a, b);
    CFacet** const ppFacet = pWalked->m_ppFacet;
    int const nFacets = pWalked->m_nFacetNum;
    for (int i = 0; i < nFacets; ++i) {
        CFacet* const g = ppFacet[i];
        if (g != pFacet && HasCorner(*g, pWanted) && visit(g)) return;
    }
}

}  // namespace

CFacet::CFacet()
    : m_pVertex1(nullptr),
      m_pVertex2(nullptr),
      m_pVertex3(nullptr),
      m_fNormal{0.0f, 0.0f, 0.0f},
      m_nRegion(0),
      m_nFlag(0) {}

CFacet::CFacet(tagVertexNode* pVertex1, tagVertexNode* pVertex2, tagVertexNode* pVertex3, float* pNormal)
    : m_pVertex1(pVertex1),
      m_pVertex2(pVertex2),
      m_pVertex3(pVertex3),
      m_fNormal{pNormal[0], pNormal[1], pNormal[2]},
      m_nRegion(0),
      m_nFlag(0) {}

CFacet::CFacet(CFacet const& other)
    : m_pVertex1(other.m_pVertex1),
      m_pVertex2(other.m_pVertex2),
      m_pVertex3(other.m_pVertex3),
      m_fNormal{other.m_fNormal[0], other.m_fNormal[1], other.m_fNormal[2]},
      m_nRegion(0),
      m_nFlag(0) {}

CFacet& CFacet::operator=(CFacet const& other) {
    m_pVertex1 = other.m_pVertex1;
    m_pVertex2 = other.m_pVertex2;
    m_pVertex3 = other.m_pVertex3;
    for (int i = 0; i < 3; ++i) m_fNormal[i] = other.m_fNormal[i];
    return *this;
}

void* CFacet::operator new(std::size_t nSize) { return NewInSlot<CFacet>(nSize, AllocateFacetSlot); }

void* CFacet::operator new(std::size_t nSize, std::nothrow_t const&) noexcept {
    return NewOrNull<CFacet>(nSize);
}

void CFacet::operator delete(void* pFacet, std::size_t nSize) noexcept {
    DeleteFromSlot<CFacet>(pFacet, nSize, FreeFacetSlot);
}

void CFacet::CalculateNormal() { CalculateNormalOf(*m_pVertex1, *m_pVertex2, *m_pVertex3, m_fNormal); }

void CFacet::CalculateNormalAndResetFlag() {
    CalculateNormal();
    tagVertexNode* const p1 = m_pVertex1;
    tagVertexNode* const p2 = m_pVertex2;
    tagVertexNode* const p3 = m_pVertex3;
    if (p2->z >= p1->z && p1->z <= p3->z) {
        // The first corner is a lowest one already.
    } else if (p2->z < p1->z && p3->z >= p2->z) {
        SetCorners(*this, p2, p3, p1);
    } else {
        SetCorners(*this, p3, p1, p2);
    }
    m_nRegion = 0;
    m_nFlag = SlopeFlag(*this);
}

void CFacet::Reverse() {
    std::swap(m_pVertex2, m_pVertex3);
    CalculateNormalAndResetFlag();
}

double CFacet::Area() { return AreaOf(*this); }

double CFacet::ProjectArea() {
    double const bx = m_pVertex2->x - m_pVertex1->x;
    double const by = m_pVertex2->y - m_pVertex1->y;
    double const cx = m_pVertex3->x - m_pVertex1->x;
    double const cy = m_pVertex3->y - m_pVertex1->y;
    return std::fabs(bx * cy - by * cx) * 0.5;
}

int CFacet::IsUp() { return m_fNormal[2] > 0.0f ? 1 : 0; }

int CFacet::IsLevel(double dTol) {
    double const nz = m_fNormal[2];
    if (nz < -dTol) return -1;
    return nz > dTol ? 1 : 0;
}

int CFacet::EightClassify(double dTol) {
    double const nx = m_fNormal[0];
    double const ny = m_fNormal[1];
    double const nz = m_fNormal[2];
    if (std::fabs(nz) < dTol) return 0;
    int const nFirst = nz > 0.0 ? 1 : 5;
    return nFirst + (ny > dTol ? 0 : 2) + (nx > dTol ? 0 : 1);
}

int CFacet::IsSupportEdge(tagVertexNode* a, tagVertexNode* b) {
    if ((m_nFlag & (FACET_SUPPORT | FACET_SUSPEND)) != 0) return 1;
    for (DirectedEdge const& edge : DirectedEdges(*this)) {
        bool const bAlong = edge.pStart == a && edge.pEnd == b;
        bool const bAgainst = edge.pStart == b && edge.pEnd == a;
        if (!bAlong && !bAgainst) continue;
        Float3 const d = ToFloat3(*edge.pEnd - *edge.pStart);
        return Cross(d, ToFloat3(m_fNormal)).z >= 0.0f ? 1 : 0;
    }
    return 0;
}

CFacet* CFacet::FindNeighborFacet(tagVertexNode* a, tagVertexNode* b) {
    CFacet* pFound = nullptr;
    VisitNeighbors(this, a, b, [&pFound](CFacet* g) {
        pFound = g;
        return true;
    });
    return pFound;
}

CFacet* CFacet::FindNeighborFacetRightNormal(tagVertexNode* a, tagVertexNode* b) {
    CFacet* pFound = nullptr;
    VisitNeighbors(this, a, b, [&pFound, a, b](CFacet* g) {
        if (!HasDirectedEdge(*g, b, a)) return false;
        pFound = g;
        return true;
    });
    return pFound;
}

CFacet* CFacet::FindNeighborFacetSameRegion(tagVertexNode* a, tagVertexNode* b) {
    CFacet* pFound = nullptr;
    VisitNeighbors(this, a, b, [&pFound](CFacet* g) {
        pFound = g;
        return g->m_nRegion != 0;
    });
    return pFound;
}

int CFacet::FindNeighborFacets(tagVertexNode* a, tagVertexNode* b, CFacet** ppOut, int nMax) {
    int nFound = 0;
    if (nMax <= 0) return nFound;
    VisitNeighbors(this, a, b, [&nFound, ppOut, nMax](CFacet* g) {
        ppOut[nFound++] = g;
        return nFound == nMax;
    });
    return nFound;
}
