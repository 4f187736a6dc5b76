// Solids below the surfaces and chains that hang in the air: walls that drop from a rim, bars along a chain.

#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

#include "foundation/memory/AddNew.h"
#include "mesh/FacetCorners.h"
#include "mesh/STLModel.h"
#include "support/SolidIntake.h"

using namespace varnet;

namespace {

constexpr char kHeader[] = "EXTEND SUPPORT STRUCT";
constexpr char kFileName[] = "extend.stl";

using EdgeList = XR_CList<CEdge3D, CEdge3D&>;
using VertexList = XR_CList<tagVertexNode*, tagVertexNode*>;

template <class Element, class Argument, class Visit>
void ForEach(XR_CList<Element, Argument> const& list, Visit const& visit) {
    for (XR__POSITION* position = list.GetHeadPosition(); position != nullptr;) visit(list.GetNext(position));
}

CPoint3D AtHeight(CPoint3D const& p, double dZ) { return CPoint3D(p.x, p.y, dZ); }

CPoint3D Lowered(CPoint3D const& p, double dDistance) { return AtHeight(p, p.z - dDistance); }

// ---- Walls

void LabelWalls(CSTLModel& solid) {
    std::memcpy(solid.m_Status.m_szHeader, kHeader, sizeof kHeader);
    std::memcpy(solid.m_Status.m_szFileName, kFileName, sizeof kFileName);
}

// A distance that is not above 0.0 leads upward, where the walls are wound the other way round.
void AddWallsDown(SolidIntake& intake, EdgeList const& rim, double dDistance) {
    ForEach(rim, [&intake, dDistance](CEdge3D const& edge) {
        CPoint3D const& a = edge.m_ptStart;
        CPoint3D const& b = edge.m_ptEnd;
        CPoint3D const aLow = Lowered(a, dDistance);
        CPoint3D const bLow = Lowered(b, dDistance);
        if (dDistance > 0.0) {
            intake.Add(a, b, aLow);
            intake.Add(bLow, aLow, b);
        } else {
            intake.Add(b, a, aLow);
            intake.Add(aLow, bLow, b);
        }
    });
}

void AddWallsTo(SolidIntake& intake, EdgeList const& rim, double dZ) {
    ForEach(rim, [&intake, dZ](CEdge3D const& edge) {
        CPoint3D const& a = edge.m_ptStart;
        CPoint3D const& b = edge.m_ptEnd;
        CPoint3D const aLow = AtHeight(a, dZ);
        CPoint3D const bLow = AtHeight(b, dZ);
        intake.Add(a, b, aLow);
        intake.Add(aLow, b, bLow);
    });
}

// The surface turned over is the top of its solid. Where a height is given, the surface lowered by it is the
// bottom; else there is none.
void AddCaps(SolidIntake& intake, XR_CArray<CFacet*, CFacet*> const& facets, double dDistance) {
    for (int i = 0; i < facets.m_nSize; ++i) {
        auto const [p1, p2, p3] = Corners(*facets.m_pData[i]);
        intake.Add(*p1, *p3, *p2);
        if (dDistance > 0.0)
            intake.Add(Lowered(*p1, dDistance), Lowered(*p2, dDistance), Lowered(*p3, dDistance));
    }
}

// Adds the walls of the rim to the model, a new one where none is given, and returns it.
template <class AddWalls>
CSTLModel* FillSolid(CSTLModel* pModel, EdgeList const& rim, AddWalls const& addWalls) {
    auto made = pModel == nullptr ? std::make_unique<CSTLModel>() : nullptr;
    CSTLModel& solid = pModel != nullptr ? *pModel : *made;
    LabelWalls(solid);
    SolidIntake intake(solid, 2 * rim.GetCount());
    addWalls(intake);
    return made != nullptr ? made.release() : pModel;
}

// ---- Bars

// From a vertex of the chain to the left side of the bar, in plan.
struct Offset {
    double dx;
    double dy;
};

// Square to the direction from the one point to the other; none where they coincide in plan.
std::optional<Offset> OffsetAlong(CPoint3D const& from, CPoint3D const& to, double dHalfWidth) {
    double const dx = to.x - from.x;
    double const dy = to.y - from.y;
    double const dLength = std::sqrt(dy * dy + dx * dx);
    if (!(dLength > 0.0)) return std::nullopt;
    double const s = dHalfWidth / dLength;
    return Offset{-dy * s, dx * s};
}

// The offset of the first vertex that lies elsewhere in plan than the chain's first one; none where there is
// no such vertex.
std::optional<Offset> FirstOffset(VertexList const& chain, double dHalfWidth) {
    std::optional<Offset> offset;
    CPoint3D const& first = *chain.GetHead();
    ForEach(chain, [&](CPoint3D const* pVertex) {
        if (!offset) offset = OffsetAlong(first, *pVertex, dHalfWidth);
    });
    return offset;
}

// The corners of a section across the bar, seen along it: left and right, top and bottom.
struct Section {
    CPoint3D lt;
    CPoint3D lb;
    CPoint3D rt;
    CPoint3D rb;
};

Section SectionAt(CPoint3D const& p, Offset const& offset, double dTop, double dBottom) {
    double const dLeftX = p.x + offset.dx;
    double const dLeftY = p.y + offset.dy;
    double const dRightX = p.x - offset.dx;
    double const dRightY = p.y - offset.dy;
    return {CPoint3D(dLeftX, dLeftY, dTop), CPoint3D(dLeftX, dLeftY, dBottom),
            CPoint3D(dRightX, dRightY, dTop), CPoint3D(dRightX, dRightY, dBottom)};
}

void AddStartCap(SolidIntake& intake, Section const& s) {
    intake.Add(s.lt, s.lb, s.rt);
    intake.Add(s.lb, s.rb, s.rt);
}

// Top, bottom, left and right side between two sections.
void AddSides(SolidIntake& intake, Section const& s0, Section const& s1) {
    intake.Add(s0.lt, s0.rt, s1.lt);
    intake.Add(s0.rt, s1.rt, s1.lt);
    intake.Add(s0.lb, s1.lb, s0.rb);
    intake.Add(s1.lb, s1.rb, s0.rb);
    intake.Add(s0.lt, s1.lt, s0.lb);
    intake.Add(s1.lt, s1.lb, s0.lb);
    intake.Add(s0.rt, s0.rb, s1.rb);
    intake.Add(s1.rt, s0.rt, s1.rb);
}

void AddEndCap(SolidIntake& intake, Section const& s) {
    intake.Add(s.lt, s.rt, s.rb);
    intake.Add(s.lb, s.lt, s.rb);
}

}  // namespace

void CSTLModel::GenSupportSTL(double dDistance) {
    bool const bHeight = dDistance > 0.0;
    double const dLevel = dDistance + m_VertexTree.m_BoundBox.m_ptMin.z;
    auto const& surfaces = m_SupportArray.m_aSurface;
    for (int i = 0; i < surfaces.m_nSize; ++i) {
        CFeatureSurface& surface = *surfaces[i];
        if (bHeight && (surface.m_nSupportFlag & FS_NEEDS_SUPPORT) == 0) continue;
        CSTLModel& solid = AddNew<CSTLModel>(m_SupportModelList);
        surface.FindSurfaceEdge();
        LabelWalls(solid);
        SolidIntake intake(solid, 2 * surface.m_EdgeList.GetCount() + 2 * surface.m_aFacet.GetSize());
        if (bHeight) {
            AddWallsDown(intake, surface.m_EdgeList, dDistance);
        } else {
            AddWallsTo(intake, surface.m_EdgeList, dLevel);
        }
        AddCaps(intake, surface.m_aFacet, dDistance);
    }
}

CSTLModel* CFeatureSurface::ExtendEdge(double dDistance, CSTLModel* pModel) {
    return FillSolid(pModel, m_EdgeList,
                     [this, dDistance](SolidIntake& intake) { AddWallsDown(intake, m_EdgeList, dDistance); });
}

CSTLModel* CFeatureSurface::ExtendEdgeTo(double dZ, CSTLModel* pModel) {
    return FillSolid(pModel, m_EdgeList,
                     [this, dZ](SolidIntake& intake) { AddWallsTo(intake, m_EdgeList, dZ); });
}

void CSTLModel::GenSuspendSTL(double dDistance) {
    bool const bHeight = dDistance > 0.0;
    double const dLevel = dDistance + m_VertexTree.m_BoundBox.m_ptMin.z;
    for (int i = 0; i < m_SuspendEdgeArray.m_nSize; ++i) {
        CFeatureEdge& chain = *m_SuspendEdgeArray[i];
        if (bHeight && (chain.m_nEdgeFlag & FE_SELECTED) == 0) continue;
        CSTLModel& solid = AddNew<CSTLModel>(m_SupportModelList);
        chain.GenSTL(&solid, chain.m_dHalfWidth, chain.m_dRise, bHeight ? dDistance : dLevel,
                     bHeight ? 0 : 1);
        solid.m_Status.m_bGenerated = 1;
    }
}

void CFeatureEdge::GenSTL(CSTLModel* pModel, double dHalfWidth, double dRise, double dDown, int bAbsolute) {
    if (m_VertexList.GetCount() < 2) return;
    std::optional<Offset> offset = FirstOffset(m_VertexList, dHalfWidth);
    if (!offset) return;
    SolidIntake intake(*pModel, 4 + 8 * m_VertexList.GetCount());
    CPoint3D const& first = *m_VertexList.GetHead();
    std::optional<Section> last;
    ForEach(m_VertexList, [&](CPoint3D const* pVertex) {
        CPoint3D const& p = *pVertex;
        if (auto const own = OffsetAlong(first, p, dHalfWidth)) offset = own;
        Section const section = SectionAt(p, *offset, dRise + p.z, bAbsolute != 0 ? dDown : p.z - dDown);
        if (last) {
            AddSides(intake, *last, section);
        } else {
            AddStartCap(intake, section);
        }
        last = section;
    });
    AddEndCap(intake, *last);
}
