// What vertices do with the facets that use them.

#include <cmath>
#include <cstdlib>
#include <deque>
#include <vector>

#include "MeshChecks.h"

namespace {

// Vertices under which facets of given normals stand; the facets have no other meaning.
class Stage {
public:
    tagVertexNode* Add(double x, double y, double z) {
        CPoint3D point(x, y, z);
        return tree.AddNode(point);
    }

    CFacet& Link(tagVertexNode* pVertex, float fNormalZ, unsigned nFlag, tagVertexNode* pFirst = nullptr) {
        float normal[3] = {0.0f, 0.0f, fNormalZ};
        CFacet& facet = m_Facets.emplace_back(pFirst != nullptr ? pFirst : pVertex, pVertex, pVertex, normal);
        facet.m_nFlag = nFlag;
        auto const nCount = static_cast<std::size_t>(pVertex->m_nFacetNum + 1);
        void* const pList = std::realloc(static_cast<void*>(pVertex->m_ppFacet), nCount * sizeof(CFacet*));
        pVertex->m_ppFacet = static_cast<CFacet**>(pList);
        pVertex->m_ppFacet[pVertex->m_nFacetNum++] = &facet;
        return facet;
    }

    CVertexTree tree;

private:
    std::deque<CFacet> m_Facets;
};

double OffsetFor(float fNormalZ, double dz) {
    Stage stage;
    tagVertexNode* const p = stage.Add(1.0, 2.0, 3.0);
    stage.Link(p, fNormalZ, FACET_SUPPORT);
    stage.tree.ZCompensate(stage.tree.m_pRoot, dz);
    EXPECT_EQ(3.0 + p->m_dZOffset, p->z);
    return p->m_dZOffset;
}

std::vector<double> Heights(CSTLModel const& model) {
    std::vector<double> heights;
    for (CFacet const* f : FacetsOf(model)) {
        for (tagVertexNode const* p : {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3}) heights.push_back(p->z);
    }
    return heights;
}

// A roof that slopes down outward, with its facets marked.
void FillMarked(CSTLModel& model) {
    AddMesh(model, shapes::Moved(shapes::IcoSphere(10.0, 2), 0.0f, 0.0f, 20.0f));
    for (CFacet* f : FacetsOf(model)) {
        if (f->m_fNormal[2] < -0.5f) f->m_nFlag |= FACET_SUPPORT;
    }
}

}  // namespace

// tan(asin(0.9)) = 0.9 / sqrt(1 - 0.81) = 2.0647: above 2, the whole dz. 0.8 gives 0.8 / 0.6 = 1.3333, and
// 0.5 gives 0.57735.
TEST(ZCompensate, RaisesByTheSlopeOfTheFlattestSupportedFacet) {
    EXPECT_EQ(0.3, OffsetFor(-0.9f, 0.3));
    EXPECT_EQ(0.3, OffsetFor(-1.0f, 0.3));
    EXPECT_NEAR(0.1, OffsetFor(-0.8f, 0.3), 1e-7);
    EXPECT_EQ(0.0, OffsetFor(-0.5f, 0.3));
    EXPECT_EQ(0.0, OffsetFor(0.0f, 0.3));
    EXPECT_EQ(0.0, OffsetFor(0.9f, 0.3));
}

TEST(ZCompensate, NormalsBeyondMinusOneAreLimited) { EXPECT_EQ(0.25, OffsetFor(-1.5f, 0.25)); }

TEST(ZCompensate, LooksAtMarkedFacetsOnlyAndTakesTheLowestNormal) {
    Stage stage;
    tagVertexNode* const p = stage.Add(0.0, 0.0, 1.0);
    stage.Link(p, -1.0f, FACET_SUSPEND);
    stage.Link(p, -0.8f, FACET_SUPPORT);
    stage.Link(p, -0.1f, FACET_SUPPORT | FACET_SLOPE_HIGH);
    tagVertexNode* const pBare = stage.Add(5.0, 0.0, 9.0);
    pBare->m_dZOffset = 0.7;
    stage.tree.ZCompensate(stage.tree.m_pRoot, 3.0);
    EXPECT_NEAR(1.0, p->m_dZOffset, 1e-6);
    EXPECT_EQ(1.0 + p->m_dZOffset, p->z);
    EXPECT_EQ(0.0, pBare->m_dZOffset);
    EXPECT_EQ(9.0, pBare->z);
}

TEST(ZCompensate, ResumingGivesBackTheHeightAndOnlyOnce) {
    Stage stage;
    tagVertexNode* const p = stage.Add(0.0, 0.0, 1.0);
    stage.Link(p, -1.0f, FACET_SUPPORT);
    stage.tree.ZCompensate(stage.tree.m_pRoot, 0.5);
    EXPECT_EQ(1.5, p->z);
    stage.tree.ResumeZCompensate(stage.tree.m_pRoot);
    EXPECT_EQ(1.0, p->z);
    EXPECT_EQ(0.0, p->m_dZOffset);
    stage.tree.ResumeZCompensate(stage.tree.m_pRoot);
    EXPECT_EQ(1.0, p->z);
}

TEST(ZCompensate, WorksOnTheSubtreeGiven) {
    Stage stage;
    tagVertexNode* const p1 = stage.Add(0.0, 0.0, 1.0);
    tagVertexNode* const p2 = stage.Add(0.0, 0.0, 2.0);
    tagVertexNode* const p3 = stage.Add(0.0, 0.0, 3.0);
    for (tagVertexNode* p : {p1, p2, p3}) stage.Link(p, -1.0f, FACET_SUPPORT);
    stage.tree.ZCompensate(p3, 0.25);
    EXPECT_EQ(1.0, p1->z);
    EXPECT_EQ(2.0, p2->z);
    EXPECT_EQ(3.25, p3->z);
    stage.tree.ResumeZCompensate(p1);
    EXPECT_EQ(3.25, p3->z);
}

TEST(ZCompensate, SecondCallOnAModelFindsNoFlagsAndMakesTheFirstPermanent) {
    CSTLModel model;
    FillMarked(model);
    std::vector<double> const before = Heights(model);
    model.ZCompensate(0.2);
    std::vector<double> const raised = Heights(model);
    EXPECT_NE(before, raised);
    for (CFacet const* f : FacetsOf(model)) EXPECT_EQ(0u, f->m_nFlag & ~3u);
    ExpectInvariants(model);
    EXPECT_DOUBLE_EQ(10.2, model.m_VertexTree.m_BoundBox.m_ptMin.z);
    model.ZCompensate(0.2);
    EXPECT_EQ(raised, Heights(model));
    model.ResumeZCompensate();
    EXPECT_EQ(raised, Heights(model));
}

TEST(ZCompensate, ResumingAModelMakesBoxAndNormalsAnew) {
    CSTLModel model;
    FillMarked(model);
    model.ZCompensate(0.2);
    model.ResumeZCompensate();
    EXPECT_NEAR(10.0, model.m_VertexTree.m_BoundBox.m_ptMin.z, 1e-9);
    auto const normals = [&model] {
        std::vector<float> all;
        for (CFacet const* f : FacetsOf(model)) all.insert(all.end(), f->m_fNormal, f->m_fNormal + 3);
        return all;
    };
    std::vector<float> const before = normals();
    model.CalculateNormal();
    EXPECT_EQ(before, normals());
}

TEST(ZCompensate, ResumingAModelGivesBackItsHeights) {
    CSTLModel model;
    FillMarked(model);
    std::vector<double> const before = Heights(model);
    model.Area();
    double const dArea = model.m_dArea;
    model.ZCompensate(0.2);
    EXPECT_EQ(dArea, model.m_dArea);
    model.ResumeZCompensate();
    EXPECT_EQ(dArea, model.m_dArea);
    std::vector<double> after = Heights(model);
    // The corners of a facet may have been rotated, and near heights aligned.
    ASSERT_EQ(before.size(), after.size());
    std::vector<double> sorted = before;
    std::sort(sorted.begin(), sorted.end());
    std::sort(after.begin(), after.end());
    for (std::size_t i = 0; i < after.size(); ++i) EXPECT_NEAR(sorted[i], after[i], 0.0003);
    ExpectInvariants(model);
}

TEST(IsSuspendPoint, VertexHangsWhenNoFacetReachesBelowItOrHoldsIt) {
    struct Case {
        int nMode;
        float fNormalZ;
        unsigned nFlag;
        int nExpected;
    };
    for (Case const& c :
         {Case{1, -0.5f, 0, 1}, Case{1, 0.0f, 0, 1}, Case{1, 0.1f, 0, 0}, Case{1, -0.5f, FACET_SUPPORT, 0},
          Case{1, -0.5f, FACET_SUSPEND, 1}, Case{-3, 0.1f, 0, 0}, Case{0, 0.5f, 0, 1}, Case{0, 0.0f, 0, 1},
          Case{0, -0.1f, 0, 0}, Case{0, 0.5f, FACET_SUSPEND, 0}, Case{0, 0.5f, FACET_SUPPORT, 1}}) {
        Stage stage;
        tagVertexNode* const p = stage.Add(0.0, 0.0, 1.0);
        stage.Link(p, c.fNormalZ, c.nFlag | FACET_SLOPE_HIGH);
        EXPECT_EQ(c.nExpected, p->IsSuspendPoint(c.nMode)) << c.nMode << ' ' << c.fNormalZ << ' ' << c.nFlag;
    }
}

TEST(IsSuspendPoint, EveryFacetMustAgree) {
    Stage stage;
    tagVertexNode* const p = stage.Add(0.0, 0.0, 1.0);
    tagVertexNode* const pLower = stage.Add(0.0, 0.0, 0.0);
    EXPECT_EQ(1, p->IsSuspendPoint(0));
    EXPECT_EQ(1, p->IsSuspendPoint(1));
    stage.Link(p, 0.0f, 0);
    stage.Link(p, 0.0f, 0);
    EXPECT_EQ(1, p->IsSuspendPoint(1));
    stage.Link(p, 0.0f, 0, pLower);
    EXPECT_EQ(0, p->IsSuspendPoint(1));
    EXPECT_EQ(0, p->IsSuspendPoint(0));
}

TEST(FindSuspendPoint, AddsHangingVerticesInWalkOrderToTheTail) {
    Stage stage;
    tagVertexNode* const pLow = stage.Add(0.0, 0.0, 1.0);
    tagVertexNode* const pRoot = stage.Add(0.0, 0.0, 2.0);
    tagVertexNode* const pHigh = stage.Add(0.0, 0.0, 3.0);
    XR_CList<void*, void*> list;
    int other = 0;
    list.AddTail(&other);
    stage.tree.FindSuspendPoint(list, 1);
    ASSERT_EQ(4, list.GetCount());
    EXPECT_EQ(&other, list.RemoveHead());
    EXPECT_EQ(pRoot, list.RemoveHead());
    EXPECT_EQ(pLow, list.RemoveHead());
    EXPECT_EQ(pHigh, list.RemoveHead());
    stage.Link(pLow, -1.0f, 0);
    stage.tree.FindSuspendPoint(list, 0);
    EXPECT_EQ(2, list.GetCount());
    list.RemoveAll();
    stage.tree.FindSuspendPoint(pHigh, list, 0);
    ASSERT_EQ(1, list.GetCount());
    EXPECT_EQ(pHigh, list.GetHead());
}
