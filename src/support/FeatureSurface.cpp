#include "support/FeatureSurface.h"

#include <array>
#include <iterator>

#include "foundation/Counter.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetMeasures.h"
#include "mesh/FacetWalk.h"
#include "support/RimWalk.h"

using namespace varnet;

namespace {

// Surfaces that are made one after the other have different colours.
constexpr std::array<std::uint32_t, 8> kPalette = {0x509614, 0xC89664, 0xC85014, 0x32C8C8,
                                                   0xC8C832, 0x0078FF, 0x642896, 0x6464C8};

// Stands for a lowest z that is not computed.
constexpr double kNoMinZ = 1e10;

// Stands for an area that is not computed; any value that is not above 0.0 does.
constexpr double kNoArea = -1.0;

std::uint32_t NextColor() {
    static std::int32_t s_nNext = 0;
    auto const nIndex = static_cast<std::uint32_t>(AddToCounter(s_nNext, 1));
    return kPalette[nIndex % kPalette.size()];
}

}  // namespace

CFeatureSurface::CFeatureSurface()
    : m_nColor(NextColor()),
      m_nSurfaceFlag(0),
      m_nSupportFlag(0),
      m_dArea(kNoArea),
      m_dProjectArea(kNoArea),
      m_dMinZ(kNoMinZ) {}

CFeatureSurface::CFeatureSurface(CFeatureSurface const& other) = default;

CFeatureSurface const& CFeatureSurface::operator=(CFeatureSurface const& other) {
    if (this == &other) return *this;
    RemoveAllFacet();
    m_aFacet.Copy(other.m_aFacet);
    return *this;
}

CFeatureSurface::~CFeatureSurface() { RemoveAllFacet(); }

void CFeatureSurface::RemoveAllFacet() {
    for (int i = 0; i < m_aFacet.m_nSize; ++i) delete m_aFacet.m_pData[i];
    m_aFacet.RemoveAll();
}

double CFeatureSurface::Area() { return m_dArea > 0.0 ? m_dArea : CalArea(); }

double CFeatureSurface::CalArea() {
    double dArea = 0.0;
    ForEachFacet(m_aFacet, [&dArea](CFacet const& facet) { dArea += AreaOf(facet); });
    m_dArea = dArea;
    return m_dArea;
}

double CFeatureSurface::ProjectArea() { return m_dProjectArea > 0.0 ? m_dProjectArea : CalProjectArea(); }

double CFeatureSurface::CalProjectArea() {
    double dArea = 0.0;
    ForEachFacet(m_aFacet, [&dArea](CFacet& facet) { dArea += facet.ProjectArea(); });
    m_dProjectArea = dArea;
    return m_dProjectArea;
}

double CFeatureSurface::MinZ() { return kNoMinZ > m_dMinZ ? m_dMinZ : CalMinZ(); }

double CFeatureSurface::CalMinZ() {
    double dMinZ = kNoMinZ;
    ForEachFacet(m_aFacet, [&dMinZ](CFacet const& facet) {
        for (tagVertexNode const* const pVertex : Corners(facet)) {
            if (pVertex->z < dMinZ) dMinZ = pVertex->z;
        }
    });
    m_dMinZ = dMinZ;
    return m_dMinZ;
}

CBoundBox3D CFeatureSurface::GetBoundBox() {
    CBoundBox3D box;
    ForEachFacet(m_aFacet, [&box](CFacet const& facet) {
        for (tagVertexNode const* const pVertex : Corners(facet)) box += *pVertex;
    });
    m_BoundBox = box;
    return box;
}

int CFeatureSurface::FindSurfaceEdge() {
    m_EdgeList.RemoveAll();
    WalkRim(m_aFacet, [this](tagVertexNode* pStart, tagVertexNode* pEnd) {
        CEdge3D edge(*pStart, *pEnd);
        m_EdgeList.AddTail(edge);
    });
    return 1;
}

void CFeatureSurface::FindSurfaceVerge() {
    m_VergeList.RemoveAll();
    WalkRim(m_aFacet, [this](tagVertexNode* pStart, tagVertexNode* pEnd) {
        m_VergeList.AddTail(pStart);
        m_VergeList.AddTail(pEnd);
    });
}

void CFeatureSurface::ClearVergeArray() { m_EdgeList.RemoveAll(); }

void CFeatureSurface::ClearUsedPoint() {
    m_ExtrudeList.RemoveAll();
    for (int i = 0; i < m_aFacet.m_nSize; ++i) {
        for (tagVertexNode* pVertex : Corners(*m_aFacet.m_pData[i])) pVertex->m_pExtrude = nullptr;
    }
}

void CFeatureSurface::ClearSmallVerge(double) {}

CLayer* CFeatureSurface::GetProjectCounter() { return nullptr; }

int CFeatureSurface::IsBelow(tagVertexNode*) { return 0; }

int CFeatureSurface::IsPlane(double) { return 0; }

int CFeatureSurface::IsPrism(double) { return 0; }

int CFeatureSurface::IsSphere(double) { return 0; }

int CFeatureSurface::JudgeSurfaceType() { return 0; }

CSurfaceArray::~CSurfaceArray() { RemoveAllSurface(); }

void CSurfaceArray::RemoveAllSurface() {
    for (int i = 0; i < m_aSurface.m_nSize; ++i) delete m_aSurface.m_pData[i];
    m_aSurface.RemoveAll();
}
