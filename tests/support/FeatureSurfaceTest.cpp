#include "support/FeatureSurface.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "FieldWalk.h"
#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"
#include "support/FeatureEdge.h"

namespace {

constexpr std::array<std::uint32_t, 8> kPalette = {0x509614, 0xC89664, 0xC85014, 0x32C8C8,
                                                   0xC8C832, 0x0078FF, 0x642896, 0x6464C8};

std::size_t PlaceInPalette(std::uint32_t nColor) {
    return static_cast<std::size_t>(std::find(kPalette.begin(), kPalette.end(), nColor) - kPalette.begin());
}

std::uint32_t ColorBehind(std::uint32_t nColor, std::size_t nSteps) {
    return kPalette[(PlaceInPalette(nColor) + nSteps) % 8];
}

// A surface over facets that a model owns.
class View {
public:
    View() = default;
    View(View const&) = delete;
    View& operator=(View const&) = delete;
    ~View() { surface.m_aFacet.RemoveAll(); }
    CFeatureSurface surface;
};

// A square of two triangles at height 1, and one triangle beside it that slopes up from the square's right
// side.
struct SquareAndSlope {
    SquareAndSlope() {
        AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(2, 0, 1), CPoint3D(2, 2, 1));
        AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(2, 2, 1), CPoint3D(0, 2, 1));
        AddTriangle(model, CPoint3D(2, 0, 1), CPoint3D(4, 0, 3), CPoint3D(2, 2, 1));
    }
    CFacet* Facet(int n) { return &FacetAt(model, n); }
    CSTLModel model;
};

using Edge = std::pair<tagVertexNode*, tagVertexNode*>;

std::vector<Edge> Verges(CFeatureSurface const& surface) {
    std::vector<Edge> edges;
    XR__POSITION* position = surface.m_VergeList.GetHeadPosition();
    while (position != nullptr) {
        tagVertexNode* const pFirst = surface.m_VergeList.GetNext(position);
        edges.emplace_back(pFirst, surface.m_VergeList.GetNext(position));
    }
    return edges;
}

void ExpectEdgeList(std::vector<Edge> const& expected, CFeatureSurface const& surface) {
    ASSERT_EQ(static_cast<int>(expected.size()), surface.m_EdgeList.GetCount());
    XR__POSITION* position = surface.m_EdgeList.GetHeadPosition();
    for (auto const& [pStart, pEnd] : expected) {
        CEdge3D const edge = surface.m_EdgeList.GetNext(position);
        ASSERT_TRUE(SameBits(*pStart, edge.m_ptStart));
        ASSERT_TRUE(SameBits(*pEnd, edge.m_ptEnd));
    }
}

// The rim as it is defined, without marks: an edge whose first other facet is missing or no member.
std::vector<Edge> LiteralRim(std::vector<CFacet*> const& members) {
    std::set<CFacet const*> const known(members.begin(), members.end());
    std::vector<Edge> rim;
    for (CFacet* const f : members) {
        tagVertexNode* const corners[4] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3, f->m_pVertex1};
        for (int k = 0; k < 3; ++k) {
            std::vector<CFacet*> const others = literal::Neighbors(f, corners[k], corners[k + 1]);
            if (others.empty() || known.count(others[0]) == 0) rim.emplace_back(corners[k], corners[k + 1]);
        }
    }
    return rim;
}

}  // namespace

TEST(FeatureSurface, FieldsStandInOrder) {
    CFeatureSurface const s;
    FieldWalk(s, FieldWalk::kVirtual)
        .Then("m_aFacet", s.m_aFacet)
        .Then("m_nColor", s.m_nColor)
        .Then("m_EdgeList", s.m_EdgeList)
        .Then("m_VergeList", s.m_VergeList)
        .Then("m_nSurfaceFlag", s.m_nSurfaceFlag)
        .Then("m_nSupportFlag", s.m_nSupportFlag)
        .Then("m_dArea", s.m_dArea)
        .Then("m_dProjectArea", s.m_dProjectArea)
        .Then("m_dMinZ", s.m_dMinZ)
        .Then("m_ExtrudeList", s.m_ExtrudeList)
        .Then("m_BoundBox", s.m_BoundBox)
        .End();
    EXPECT_EQ(4u, sizeof s.m_nColor);
    EXPECT_EQ(4u, sizeof s.m_nSurfaceFlag);
    EXPECT_TRUE(std::has_virtual_destructor_v<CFeatureSurface>);
    CSurfaceArray const array;
    FieldWalk(array, FieldWalk::kVirtual).Then("m_aSurface", array.m_aSurface).End();
    EXPECT_TRUE(std::has_virtual_destructor_v<CSurfaceArray>);
}

TEST(FeatureSurface, FlagBitsHaveTheirValues) {
    EXPECT_EQ(0x100u, static_cast<unsigned>(FS_SUPPORT_SURFACE));
    EXPECT_EQ(0x1000u, static_cast<unsigned>(FS_SMALL_SUSPENDED));
    EXPECT_EQ(0x100u, static_cast<unsigned>(FS_NEEDS_SUPPORT));
}

TEST(FeatureSurface, NewSurfaceHasItsDefaults) {
    CFeatureSurface const s;
    EXPECT_EQ(0, s.m_aFacet.GetSize());
    EXPECT_NE(8u, PlaceInPalette(s.m_nColor));
    EXPECT_EQ(0, s.m_EdgeList.GetCount());
    EXPECT_EQ(0, s.m_VergeList.GetCount());
    EXPECT_EQ(0, s.m_ExtrudeList.GetCount());
    EXPECT_EQ(10, s.m_EdgeList.m_nBlockSize);
    EXPECT_EQ(10, s.m_VergeList.m_nBlockSize);
    EXPECT_EQ(10, s.m_ExtrudeList.m_nBlockSize);
    EXPECT_EQ(0u, s.m_nSurfaceFlag);
    EXPECT_EQ(0u, s.m_nSupportFlag);
    EXPECT_EQ(-1.0, s.m_dArea);
    EXPECT_EQ(-1.0, s.m_dProjectArea);
    EXPECT_EQ(0x4202A05F20000000u, BitsOf(s.m_dMinZ));
    EXPECT_EQ(0, s.m_BoundBox.IsValid());
    EXPECT_EQ(1.00000002004087734272e20, s.m_BoundBox.m_ptMin.y);
}

TEST(FeatureSurface, ColoursGoThroughThePaletteInOrder) {
    std::array<CFeatureSurface, 9> const surfaces;
    for (std::size_t n = 0; n < 9; ++n) {
        EXPECT_EQ(ColorBehind(surfaces[0].m_nColor, n), surfaces[n].m_nColor);
    }
    EXPECT_EQ(surfaces[0].m_nColor, surfaces[8].m_nColor);
}

TEST(FeatureSurface, CopyingTakesNoColourAndAModelTakesOne) {
    CFeatureSurface const first;
    CFeatureSurface const copy(first);
    EXPECT_EQ(first.m_nColor, copy.m_nColor);
    CFeatureSurface const second;
    EXPECT_EQ(ColorBehind(first.m_nColor, 1), second.m_nColor);
    CSTLModel model;
    EXPECT_EQ(ColorBehind(first.m_nColor, 2), model.m_SurfaceArray.m_aSurface[0]->m_nColor);
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    CFeatureSurface third;
    EXPECT_EQ(ColorBehind(first.m_nColor, 3), third.m_nColor);
    third = first;
    model.ReleaseAllFacet();
    EXPECT_EQ(ColorBehind(first.m_nColor, 4), model.m_SurfaceArray.m_aSurface[0]->m_nColor);
}

TEST(FeatureSurface, CopyConstructorSharesEveryField) {
    SquareAndSlope mesh;
    CFeatureSurface& source = *mesh.model.m_SurfaceArray.m_aSurface[0];
    source.FindSurfaceEdge();
    source.FindSurfaceVerge();
    CPoint3D point(1, 2, 3);
    source.m_ExtrudeList.AddTail(point);
    source.m_nSurfaceFlag = 5;
    source.m_nSupportFlag = 6;
    source.m_dArea = 7.0;
    source.m_dProjectArea = 8.0;
    source.m_dMinZ = 9.0;
    source.GetBoundBox();
    CFeatureSurface copy(source);
    EXPECT_EQ(source.m_aFacet.m_pData, copy.m_aFacet.m_pData);
    EXPECT_EQ(source.m_EdgeList.m_pNodeHead, copy.m_EdgeList.m_pNodeHead);
    EXPECT_EQ(source.m_VergeList.m_pBlocks, copy.m_VergeList.m_pBlocks);
    EXPECT_EQ(source.m_ExtrudeList.m_pNodeHead, copy.m_ExtrudeList.m_pNodeHead);
    EXPECT_EQ(5u, copy.m_nSurfaceFlag);
    EXPECT_EQ(6u, copy.m_nSupportFlag);
    EXPECT_EQ(7.0, copy.m_dArea);
    EXPECT_EQ(8.0, copy.m_dProjectArea);
    EXPECT_EQ(9.0, copy.m_dMinZ);
    EXPECT_EQ(4.0, copy.m_BoundBox.m_ptMax.x);
    copy.m_aFacet = XR_CArray<CFacet*, CFacet*>();
    copy.m_EdgeList = XR_CList<CEdge3D, CEdge3D&>();
    copy.m_VergeList = XR_CList<tagVertexNode*, tagVertexNode*>();
    copy.m_ExtrudeList = XR_CList<CPoint3D, CPoint3D&>();
}

namespace {

int s_nDestroyed = 0;

class WatchedFacet : public CFacet {
public:
    ~WatchedFacet() override { ++s_nDestroyed; }
};

}  // namespace

TEST(FeatureSurface, AssignmentDestroysItsFacetsAndTakesThePointersOnly) {
    s_nDestroyed = 0;
    CFeatureSurface target;
    target.m_aFacet.Add(new WatchedFacet);
    target.m_aFacet.Add(nullptr);
    target.m_dArea = 4.0;
    std::uint32_t const nColor = target.m_nColor;
    {
        View view;
        CFeatureSurface& source = view.surface;
        source.m_dArea = 5.0;
        source.m_nSurfaceFlag = 6;
        CFacet* const pFacet = new WatchedFacet;
        source.m_aFacet.Add(pFacet);
        EXPECT_EQ(&target, &(target = source));
        EXPECT_EQ(1, s_nDestroyed);
        ASSERT_EQ(1, target.m_aFacet.GetSize());
        EXPECT_EQ(pFacet, target.m_aFacet[0]);
        EXPECT_NE(source.m_aFacet.m_pData, target.m_aFacet.m_pData);
    }
    EXPECT_EQ(4.0, target.m_dArea);
    EXPECT_EQ(0u, target.m_nSurfaceFlag);
    EXPECT_EQ(nColor, target.m_nColor);
    EXPECT_TRUE((std::is_same_v<decltype(target = target), CFeatureSurface const&>));
}

TEST(FeatureSurface, AssignedToItselfASurfaceKeepsItsFacets) {
    s_nDestroyed = 0;
    CFeatureSurface surface;
    CFacet* const pFacet = new WatchedFacet;
    surface.m_aFacet.Add(pFacet);
    CFeatureSurface const& same = surface;
    surface = same;
    EXPECT_EQ(0, s_nDestroyed);
    ASSERT_EQ(1, surface.m_aFacet.GetSize());
    EXPECT_EQ(pFacet, surface.m_aFacet[0]);
}

TEST(FeatureSurface, RemovingAndDestroyingDestroyTheFacets) {
    s_nDestroyed = 0;
    {
        CFeatureSurface surface;
        surface.m_aFacet.Add(new WatchedFacet);
        surface.m_aFacet.Add(nullptr);
        surface.m_aFacet.Add(new WatchedFacet);
        surface.RemoveAllFacet();
        EXPECT_EQ(2, s_nDestroyed);
        EXPECT_EQ(0, surface.m_aFacet.GetSize());
        EXPECT_EQ(nullptr, surface.m_aFacet.m_pData);
        surface.m_aFacet.Add(new WatchedFacet);
    }
    EXPECT_EQ(3, s_nDestroyed);
}

TEST(SurfaceArray, OwnsItsSurfacesAndCopiesShareThem) {
    s_nDestroyed = 0;
    {
        CSurfaceArray array;
        array.m_aSurface.Add(new CFeatureSurface);
        array.m_aSurface.Add(nullptr);
        array.m_aSurface[0]->m_aFacet.Add(new WatchedFacet);
        CSurfaceArray copy(array);
        CSurfaceArray assigned;
        assigned = array;
        for (CSurfaceArray* const pShared : {&copy, &assigned}) {
            EXPECT_EQ(array.m_aSurface.m_pData, pShared->m_aSurface.m_pData);
            EXPECT_EQ(2, pShared->m_aSurface.GetSize());
            EXPECT_EQ(array.m_aSurface.m_nMaxSize, pShared->m_aSurface.m_nMaxSize);
            pShared->m_aSurface = XR_CArray<CFeatureSurface*, CFeatureSurface*>();
        }
        array.RemoveAllSurface();
        EXPECT_EQ(1, s_nDestroyed);
        EXPECT_EQ(0, array.m_aSurface.GetSize());
        EXPECT_EQ(nullptr, array.m_aSurface.m_pData);
        array.m_aSurface.Add(new CFeatureSurface);
        array.m_aSurface[0]->m_aFacet.Add(new WatchedFacet);
    }
    EXPECT_EQ(2, s_nDestroyed);
}

// The square measures 4; the slope projects to 2, and is longer by the root of two.
TEST(FeatureSurface, MeasuresAreCachedUntilTheyAreCalculatedAnew) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    EXPECT_NEAR(4.0 + 2.0 * 1.41421356, s.Area(), 1e-6);
    EXPECT_EQ(s.m_dArea, s.Area());
    EXPECT_EQ(6.0, s.ProjectArea());
    EXPECT_EQ(1.0, s.MinZ());
    s.m_dArea = 77.0;
    s.m_dProjectArea = 78.0;
    s.m_dMinZ = 79.0;
    EXPECT_EQ(77.0, s.Area());
    EXPECT_EQ(78.0, s.ProjectArea());
    EXPECT_EQ(79.0, s.MinZ());
    EXPECT_EQ(6.0, s.CalProjectArea());
    EXPECT_EQ(1.0, s.CalMinZ());
    EXPECT_NEAR(6.83, s.CalArea(), 0.01);
    EXPECT_EQ(6.0, s.m_dProjectArea);
    EXPECT_EQ(1.0, s.m_dMinZ);
}

TEST(FeatureSurface, OnlyPositiveAreasAndHeightsBelowTheLimitCountAsCached) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    for (double const d : {0.0, -3.0}) {
        s.m_dArea = d;
        s.m_dProjectArea = d;
        EXPECT_GT(s.Area(), 6.0);
        EXPECT_EQ(6.0, s.ProjectArea());
    }
    for (double const d : {0.5, 1e-300}) {
        s.m_dArea = d;
        s.m_dProjectArea = d;
        EXPECT_EQ(d, s.Area());
        EXPECT_EQ(d, s.ProjectArea());
    }
    s.m_dMinZ = 1e10;
    EXPECT_EQ(1.0, s.MinZ());
    s.m_dMinZ = -1e30;
    EXPECT_EQ(-1e30, s.MinZ());
}

TEST(FeatureSurface, BoundBoxIsAlwaysComputedAnewAndKept) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    s.m_BoundBox = CBoundBox3D(CPoint3D(-9, -9, -9), CPoint3D(9, 9, 9));
    CBoundBox3D const box = s.GetBoundBox();
    for (CBoundBox3D const& b : {box, s.m_BoundBox}) {
        EXPECT_EQ(0.0, b.m_ptMin.x);
        EXPECT_EQ(0.0, b.m_ptMin.y);
        EXPECT_EQ(1.0, b.m_ptMin.z);
        EXPECT_EQ(4.0, b.m_ptMax.x);
        EXPECT_EQ(2.0, b.m_ptMax.y);
        EXPECT_EQ(3.0, b.m_ptMax.z);
    }
}

TEST(FeatureSurface, SurfaceWithoutFacets) {
    CFeatureSurface s;
    CEdge3D edge;
    s.m_EdgeList.AddTail(edge);
    s.m_VergeList.AddTail(static_cast<tagVertexNode*>(nullptr));
    EXPECT_EQ(1, s.FindSurfaceEdge());
    s.FindSurfaceVerge();
    EXPECT_EQ(0, s.m_EdgeList.GetCount());
    EXPECT_EQ(0, s.m_VergeList.GetCount());
    EXPECT_EQ(0.0, s.CalArea());
    EXPECT_EQ(0.0, s.m_dArea);
    EXPECT_EQ(0.0, s.CalProjectArea());
    EXPECT_EQ(1e10, s.CalMinZ());
    EXPECT_EQ(1e10, s.MinZ());
    s.m_BoundBox = CBoundBox3D(CPoint3D(0, 0, 0), CPoint3D(1, 1, 1));
    EXPECT_EQ(0, s.GetBoundBox().IsValid());
    EXPECT_EQ(0, s.m_BoundBox.IsValid());
    EXPECT_EQ(1.00000002004087734272e20, s.m_BoundBox.m_ptMin.x);
}

TEST(FeatureSurface, WholeClosedMeshHasNoRim) {
    CSTLModel model;
    AddMesh(model, shapes::Torus(10.0, 3.0, 16, 8));
    CFeatureSurface& s = *model.m_SurfaceArray.m_aSurface[0];
    EXPECT_EQ(1, s.FindSurfaceEdge());
    s.FindSurfaceVerge();
    EXPECT_EQ(0, s.m_EdgeList.GetCount());
    EXPECT_EQ(0, s.m_VergeList.GetCount());
    for (CFacet const* f : FacetsOf(model)) EXPECT_EQ(0, f->m_nRegion);
}

TEST(FeatureSurface, SingleFacetAmongOthersHasThreeRimEdgesInOrder) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(2.0f));
    for (CFacet* const f : FacetsOf(model)) {
        View view;
        view.surface.m_aFacet.Add(f);
        EXPECT_EQ(1, view.surface.FindSurfaceEdge());
        view.surface.FindSurfaceVerge();
        std::vector<Edge> const expected = {
            {f->m_pVertex1, f->m_pVertex2}, {f->m_pVertex2, f->m_pVertex3}, {f->m_pVertex3, f->m_pVertex1}};
        EXPECT_EQ(expected, Verges(view.surface));
        ExpectEdgeList(expected, view.surface);
        EXPECT_EQ(0, f->m_nRegion);
    }
}

TEST(FeatureSurface, FreeEdgesOfAnOpenMeshAreRim) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    s.FindSurfaceVerge();
    CFacet const& a = *mesh.Facet(0);
    CFacet const& b = *mesh.Facet(1);
    CFacet const& c = *mesh.Facet(2);
    std::vector<Edge> const expected = {{a.m_pVertex1, a.m_pVertex2},
                                        {b.m_pVertex2, b.m_pVertex3},
                                        {b.m_pVertex3, b.m_pVertex1},
                                        {c.m_pVertex1, c.m_pVertex2},
                                        {c.m_pVertex2, c.m_pVertex3}};
    EXPECT_EQ(expected, Verges(s));
    s.FindSurfaceVerge();
    EXPECT_EQ(expected, Verges(s));
}

TEST(FeatureSurface, MarkedFacetOutsideCountsAsMember) {
    SquareAndSlope mesh;
    View view;
    view.surface.m_aFacet.Add(mesh.Facet(0));
    view.surface.FindSurfaceVerge();
    EXPECT_EQ(3u, Verges(view.surface).size());
    mesh.Facet(2)->m_nRegion = -7;
    view.surface.FindSurfaceVerge();
    EXPECT_EQ(2u, Verges(view.surface).size());
    EXPECT_EQ(-7, mesh.Facet(2)->m_nRegion);
    EXPECT_EQ(0, mesh.Facet(0)->m_nRegion);
}

TEST(FeatureSurface, RandomGroupsHaveTheRimOfTheDefinition) {
    std::mt19937 random(41);
    for (shapes::Mesh const &mesh : {shapes::Torus(10.0, 3.0, 20, 10), shapes::Bracket(),
                                     shapes::HeightField(8, 1.0, [](double x, double y) { return x * y; })}) {
        CSTLModel model;
        AddMesh(model, mesh);
        std::vector<CFacet*> facets = FacetsOf(model);
        for (int n = 0; n < 40; ++n) {
            std::shuffle(facets.begin(), facets.end(), random);
            View view;
            std::size_t const nMembers = random() % facets.size();
            std::vector<CFacet*> const members(facets.begin(), facets.begin() + static_cast<long>(nMembers));
            for (CFacet* const f : members) view.surface.m_aFacet.Add(f);
            view.surface.FindSurfaceVerge();
            view.surface.FindSurfaceEdge();
            std::vector<Edge> const expected = LiteralRim(members);
            ASSERT_EQ(expected, Verges(view.surface));
            ASSERT_NO_FATAL_FAILURE(ExpectEdgeList(expected, view.surface));
            for (CFacet const* f : facets) ASSERT_EQ(0, f->m_nRegion);
        }
    }
}

TEST(FeatureSurface, ClearVergeArrayEmptiesTheEdgesAndKeepsTheVerges) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    s.FindSurfaceEdge();
    s.FindSurfaceVerge();
    s.ClearVergeArray();
    EXPECT_EQ(0, s.m_EdgeList.GetCount());
    EXPECT_EQ(nullptr, s.m_EdgeList.m_pBlocks);
    EXPECT_EQ(10, s.m_VergeList.GetCount());
}

TEST(FeatureSurface, ClearUsedPointForgetsTheOffsetsOfItsCorners) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    CPoint3D offset(1, 2, 3);
    s.m_ExtrudeList.AddTail(offset);
    for (tagVertexNode* p : VerticesOf(mesh.model)) p->m_pExtrude = &offset;
    s.ClearUsedPoint();
    EXPECT_EQ(0, s.m_ExtrudeList.GetCount());
    EXPECT_EQ(nullptr, s.m_ExtrudeList.m_pBlocks);
    for (tagVertexNode const* p : VerticesOf(mesh.model)) EXPECT_EQ(nullptr, p->m_pExtrude);
    View view;
    view.surface.m_aFacet.Add(mesh.Facet(0));
    for (tagVertexNode* p : VerticesOf(mesh.model)) p->m_pExtrude = &offset;
    view.surface.ClearUsedPoint();
    EXPECT_EQ(nullptr, mesh.Facet(0)->m_pVertex1->m_pExtrude);
    EXPECT_EQ(&offset, mesh.Facet(2)->m_pVertex2->m_pExtrude);
}

TEST(FeatureSurface, OperationsWithoutEffectAnswerNo) {
    SquareAndSlope mesh;
    CFeatureSurface& s = *mesh.model.m_SurfaceArray.m_aSurface[0];
    s.FindSurfaceEdge();
    s.ClearSmallVerge(100.0);
    EXPECT_EQ(5, s.m_EdgeList.GetCount());
    EXPECT_EQ(nullptr, s.GetProjectCounter());
    EXPECT_EQ(0, s.IsBelow(mesh.Facet(0)->m_pVertex1));
    EXPECT_EQ(0, s.IsPlane(0.5));
    EXPECT_EQ(0, s.IsPrism(0.5));
    EXPECT_EQ(0, s.IsSphere(0.5));
    EXPECT_EQ(0, s.JudgeSurfaceType());
    View flat;
    flat.surface.m_aFacet.Add(mesh.Facet(0));
    flat.surface.m_aFacet.Add(mesh.Facet(1));
    EXPECT_EQ(0, flat.surface.IsPlane(0.5));
}
