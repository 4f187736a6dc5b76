// Dividing a model into feature surfaces.

#include <algorithm>

#include "LiteralSupport.h"
#include "RandomParts.h"

namespace {

int g_nRefusals = 0;

int Refuse(int, CFacet*, CFacet*, double) {
    ++g_nRefusals;
    return 0;
}

int Accept(int, CFacet*, CFacet*, double) { return 1; }

double JoinDistance2() {
    double const s = std::sin(0.2617993877991494);
    return s * 4.0 * s;
}

std::vector<int> SizesOf(CSTLModel const& model) {
    std::vector<int> sizes;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) sizes.push_back(surfaces.GetAt(i)->m_aFacet.GetSize());
    return sizes;
}

// What a judge was asked, for holding two growers against each other.
struct Call {
    int n;
    CFacet *a, *b;
    bool operator==(Call const&) const = default;
};
std::vector<Call> g_Calls;
std::map<CFacet const*, int> g_Answers;

// Says for each pair something that has no pattern, the same each time.
int Moody(int n, CFacet* a, CFacet* b, double) {
    g_Calls.push_back({n, a, b});
    int const nA = a == nullptr ? 3 : g_Answers[a];
    int const nB = b == nullptr ? 5 : g_Answers[b];
    if (b == nullptr) return nA % 4;
    return (nA * 31 + nB * 17 + n) % 3 != 0 ? 1 : 0;
}

void ExpectClassificationState(NumberedModel const& m) {
    m.ExpectMarksCleared();
    std::size_t nFacets = 0;
    auto const& surfaces = m.model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i)
        nFacets += static_cast<std::size_t>(surfaces.GetAt(i)->m_aFacet.GetSize());
    EXPECT_EQ(m.facets.size(), nFacets);
}

}  // namespace

namespace {

CSTLModel* g_pJudged = nullptr;
std::vector<int> g_SizesSeen;

// Writes down how many facets the newest surface has when its seed is judged; no facet joins another.
int NoteSizeOfNewest(int, CFacet* pSeed, CFacet*, double) {
    if (pSeed == nullptr) return 0;
    auto const& surfaces = g_pJudged->m_SurfaceArray.m_aSurface;
    CFeatureSurface const& newest = *surfaces[surfaces.GetSize() - 1];
    g_SizesSeen.push_back(newest.m_aFacet.GetSize());
    EXPECT_EQ(pSeed, newest.m_aFacet[0]);
    EXPECT_EQ(0, pSeed->m_nRegion);
    return 7;
}

}  // namespace

TEST(Classification, JudgesASeedThatIsInItsSurface) {
    CSTLModel model;
    AddMesh(model, shapes::IcoSphere(3.0, 0));
    g_pJudged = &model;
    g_SizesSeen.clear();
    model.ClassifySurf(NoteSizeOfNewest, 0.0);
    EXPECT_EQ(std::vector<int>(20, 1), g_SizesSeen);
    EXPECT_EQ(20, model.m_SurfaceArray.m_aSurface.GetSize());
}

TEST(Classification, CubeHasSixFacesOfTwoFacets) {
    NumberedModel m(shapes::Cube(2.0f));
    m.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, JoinDistance2());
    EXPECT_EQ(std::vector<int>({2, 2, 2, 2, 2, 2}), SizesOf(m.model));
    ExpectClassificationState(m);
}

TEST(Classification, FacesOfALargeCubeStayApart) {
    NumberedModel m(shapes::Cube(2.0f));  // 4 square millimetres a face
    m.model.ExtractSurfaceAndEdge();
    EXPECT_EQ(std::vector<int>({2, 2, 2, 2, 2, 2}), SizesOf(m.model));
    for (int i = 0; i < 6; ++i) {
        CFeatureSurface const& surface = *m.model.m_SurfaceArray.m_aSurface[i];
        EXPECT_EQ(8, surface.m_VergeList.GetCount());  // four edges, as pairs of vertices
        EXPECT_EQ(0, surface.m_EdgeList.GetCount());
        EXPECT_EQ(4.0, surface.m_dArea);
    }
}

// The limit is 60 degrees over the root of the area: 60 over the side of the cube. 0.6 mm reach 100 degrees.
TEST(Classification, FacesOfASmallCubeMergeOnlyWhereTheLimitIsAboveNinetyDegrees) {
    NumberedModel apart(shapes::Cube(0.7f));  // 85.7 degrees
    apart.model.ExtractSurfaceAndEdge();
    EXPECT_EQ(6, apart.model.GetCharacterFacetsNum());
    NumberedModel merged(shapes::Cube(0.6f));
    merged.model.ExtractSurfaceAndEdge();
    EXPECT_LT(merged.model.GetCharacterFacetsNum(), 6);
    EXPECT_EQ(12, merged.model.GetFacetsNum());
    ExpectClassificationState(merged);
}

TEST(Classification, FineSphereIsOneSurfaceOfSimilarNormals) {
    NumberedModel m(shapes::IcoSphere(10.0, 4));
    m.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, JoinDistance2());
    EXPECT_EQ(1, m.model.GetCharacterFacetsNum());
}

TEST(Classification, SphereIsOneSurfacePerConnectedRegionOfOneClass) {
    NumberedModel m(shapes::IcoSphere(10.0, 4));
    m.model.ClassifySurf(CSTLModel::EightClassifyFun, 0.1);
    auto const& surfaces = m.model.m_SurfaceArray.m_aSurface;
    EXPECT_EQ(9, surfaces.GetSize());  // the octants, and the belt of nearly upright facets
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        CFeatureSurface& surface = *surfaces.GetAt(i);
        int const nClass = surface.m_aFacet[0]->EightClassify(0.1);
        for (int k = 0; k < surface.m_aFacet.GetSize(); ++k)
            EXPECT_EQ(nClass, surface.m_aFacet[k]->EightClassify(0.1));
    }
}

TEST(Classification, FacetWhoseNeighboursAreRefusedStaysAlone) {
    NumberedModel m(shapes::Cube(2.0f));
    m.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, 0.0);
    EXPECT_EQ(12, m.model.GetCharacterFacetsNum());
}

TEST(Classification, MeshesWithoutACommonEdgeNeverShareASurface) {
    shapes::Mesh mesh = shapes::Cube(2.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(2.0f), 2.0f, 2.0f, 2.0f));  // touches at one corner
    NumberedModel m(mesh);
    m.model.ExtractFeatherSurf(Accept, 0.0);
    EXPECT_EQ(std::vector<int>({12, 12}), SizesOf(m.model));
    m.model.ClassifySurf(Accept, 0.0);
    EXPECT_EQ(std::vector<int>({12, 12}), SizesOf(m.model));
}

TEST(Classification, NormalJudgeLeavesAConsistentShellAsItIs) {
    NumberedModel m(shapes::IcoSphere(5.0, 2));
    CSTLModel before;
    AddMesh(before, shapes::IcoSphere(5.0, 2));
    m.model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0);
    EXPECT_EQ(1, m.model.GetCharacterFacetsNum());
    ExpectSameFacets(FacetsOf(before), m.facets);
}

TEST(Classification, NormalJudgeTurnsAFacetBackAndResetsItsFlags) {
    shapes::Mesh mesh = shapes::Cube(2.0f);
    std::swap(mesh[5][1], mesh[5][2]);
    NumberedModel m(mesh);
    CFacet& turned = *m.facets[5];
    turned.m_nFlag |= FACET_SUPPORT | FACET_DUP_SAME;
    float const fNormal[3] = {-turned.m_fNormal[0], -turned.m_fNormal[1], -turned.m_fNormal[2]};
    m.model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0);
    ExpectClosed(m.model);
    EXPECT_EQ(fNormal[0], turned.m_fNormal[0]);
    EXPECT_EQ(fNormal[1], turned.m_fNormal[1]);
    EXPECT_EQ(fNormal[2], turned.m_fNormal[2]);
    EXPECT_EQ(0u, turned.m_nFlag & ~3u);
    EXPECT_DOUBLE_EQ(8.0, SignedVolume(m.model));
    ExpectClassificationState(m);
}

TEST(Classification, JudgeThatAlwaysRefusesMakesOneSurfacePerFacetInOrder) {
    NumberedModel m(shapes::IcoSphere(5.0, 1));
    std::vector<std::vector<int>> expected;
    for (int i = 0; i < 80; ++i) expected.push_back({i});
    m.model.ExtractFeatherSurf(Refuse, 0.0);
    EXPECT_EQ(expected, m.Numbers(m.model.m_SurfaceArray));
    g_nRefusals = 0;
    m.model.ClassifySurf(Refuse, 0.0);
    EXPECT_EQ(expected, m.Numbers(m.model.m_SurfaceArray));
    EXPECT_GT(g_nRefusals, 80);  // a seed call each, and the refusals
}

TEST(Classification, SmallSurfaceWithoutNeighbourStays) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    AddTriangle(model, CPoint3D(5, 0, 0), CPoint3D(6, 0, 0), CPoint3D(5, 1, 0));
    model.ExtractSurfaceAndEdge();
    EXPECT_EQ(2, model.GetCharacterFacetsNum());
    EXPECT_EQ(0.5, model.m_SurfaceArray.m_aSurface[0]->m_dArea);
}

// Two triangles of half a square millimetre each, folded: the limit is 84.9 degrees.
TEST(Classification, SmallSurfaceWithNoneWithinTheLimitStays) {
    auto const fold = [](double dDegrees) {
        CSTLModel model;
        double const t = dDegrees * 3.141592653589793 / 180.0;
        AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
        AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, -std::cos(t), std::sin(t)), CPoint3D(1, 0, 0));
        model.ExtractSurfaceAndEdge();
        return model.GetCharacterFacetsNum();
    };
    EXPECT_EQ(2, fold(86.0));
    EXPECT_EQ(1, fold(84.0));
    EXPECT_EQ(1, fold(20.0));
}

namespace {

int g_nDestroyed = 0;

struct WatchedSurface : CFeatureSurface {
    ~WatchedSurface() override { ++g_nDestroyed; }
};

// Puts watched surfaces with the same facets in place of the model's.
std::vector<CFeatureSurface*> WatchSurfaces(CSTLModel& model) {
    std::vector<CFeatureSurface*> watched;
    auto& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        watched.push_back(new WatchedSurface);
        watched.back()->m_aFacet.Copy(surfaces[i]->m_aFacet);
        surfaces[i]->m_aFacet.RemoveAll();
        delete surfaces[i];
        surfaces[i] = watched.back();
    }
    return watched;
}

}  // namespace

TEST(Classification, EmptiedSurfacesLeaveTheArrayAndStayAllocated) {
    NumberedModel m(shapes::Cube(0.6f));
    m.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, JoinDistance2());
    std::vector<CFeatureSurface*> const before = WatchSurfaces(m.model);
    g_nDestroyed = 0;
    m.model.UnionSmallSurface();
    EXPECT_EQ(0, g_nDestroyed);
    auto const& surfaces = m.model.m_SurfaceArray.m_aSurface;
    int nEmptied = 0;
    for (CFeatureSurface* const p : before) {
        if (std::count(surfaces.m_pData, surfaces.m_pData + surfaces.GetSize(), p) != 0) continue;
        EXPECT_EQ(0, p->m_aFacet.m_nSize);
        EXPECT_EQ(0, p->m_aFacet.m_nMaxSize);
        EXPECT_GT(p->m_dArea, 0.0);
        delete p;
        ++nEmptied;
    }
    EXPECT_EQ(6 - surfaces.GetSize(), nEmptied);
    EXPECT_GT(nEmptied, 0);
    EXPECT_EQ(nEmptied, g_nDestroyed);
}

TEST(Classification, ModelWithoutFacetsIsLeftWithoutSurfaces) {
    CSTLModel a, b, c;
    a.ExtractFeatherSurf(CSTLModel::JionJudgeFun, 1.0);
    EXPECT_EQ(0, a.GetCharacterFacetsNum());
    b.ClassifySurf(CSTLModel::EightClassifyFun, 1.0);
    EXPECT_EQ(0, b.GetCharacterFacetsNum());
    c.ExtractSurfaceAndEdge();
    EXPECT_EQ(0, c.GetCharacterFacetsNum());
    c.UnionSmallSurface();
    EXPECT_EQ(0, c.GetCharacterFacetsNum());
}

TEST(Classification, OneFacetIsOneSurfaceWithThreeRimEdges) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    model.ExtractSurfaceAndEdge();
    ASSERT_EQ(1, model.GetCharacterFacetsNum());
    EXPECT_EQ(6, model.m_SurfaceArray.m_aSurface[0]->m_VergeList.GetCount());
}

TEST(Classification, SupportSurfacesAndChainsStay) {
    NumberedModel m(shapes::Cube(2.0f));
    ASSERT_EQ(1, m.model.FindSupportSurface(45.0, 1));
    m.model.ExtractSurfaceAndEdge();
    ASSERT_EQ(1, m.model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(2, m.model.m_SupportArray.m_aSurface[0]->m_aFacet.GetSize());
}

TEST(Classification, JudgesAnswerAsTheyShould) {
    NumberedModel m(shapes::Cube(2.0f));
    CFacet *const a = m.facets[0], *const b = m.facets[2];
    double const d = literal::Difference2(*a, *b);
    EXPECT_EQ(0, CSTLModel::JionJudgeFun(1, a, b, d));
    EXPECT_EQ(1, CSTLModel::JionJudgeFun(7, a, b, std::nextafter(d, 10.0)));
    EXPECT_EQ(0, CSTLModel::JionJudgeFun(1, a, b, std::nan("")));
    int const nClass = a->EightClassify(0.1);
    EXPECT_EQ(nClass, CSTLModel::EightClassifyFun(99, a, nullptr, 0.1));
    EXPECT_EQ(1, CSTLModel::EightClassifyFun(nClass, nullptr, a, 0.1));
    EXPECT_EQ(0, CSTLModel::EightClassifyFun(nClass + 1, nullptr, a, 0.1));
}

TEST(Classification, EachNewSurfaceTakesTheNextColour) {
    NumberedModel m(shapes::Cube(2.0f));
    CFeatureSurface const first;
    m.model.ExtractSurfaceAndEdge();
    CFeatureSurface next[2];
    // Six surfaces were made: with the two beside them that makes eight, and the colours begin anew.
    EXPECT_EQ(first.m_nColor, next[1].m_nColor);
    EXPECT_NE(first.m_nColor, next[0].m_nColor);
}

TEST(Classification, ClassesAgreeWithTheLiteralGrowthOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 140; ++nSeed) {
        SCOPED_TRACE(nSeed);
        shapes::Mesh const mesh = RandomParts(nSeed).Make(nSeed);
        NumberedModel m(mesh);
        auto const expected = m.Numbers(literal::Classify(m.facets, 1, CSTLModel::EightClassifyFun, 0.2));
        m.model.ClassifySurf(CSTLModel::EightClassifyFun, 0.2);
        ASSERT_EQ(expected, m.Numbers(m.model.m_SurfaceArray));
        ExpectClassificationState(m);
        // The next one starts from the order that the last one left.
        auto const again =
            m.Numbers(literal::Classify(FacetsOf(m.model), m.model.GetCharacterFacetsNum(), Moody, 0.0));
        m.model.ClassifySurf(Moody, 0.0);
        ASSERT_EQ(again, m.Numbers(m.model.m_SurfaceArray));
    }
}

TEST(Classification, FeatherGrowthAgreesWithTheLiteralOneOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 140; ++nSeed) {
        SCOPED_TRACE(nSeed);
        RandomParts parts(nSeed);
        shapes::Mesh const mesh = parts.Make(nSeed);
        for (double const d : {JoinDistance2(), 2.0, 3.5}) {
            NumberedModel real(mesh), twin(mesh);
            real.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, d);
            ASSERT_EQ(twin.Numbers(literal::ExtractFeather(twin.facets, CSTLModel::JionJudgeFun, d)),
                      real.Numbers(real.model.m_SurfaceArray));
        }
        NumberedModel real(mesh), twin(mesh);
        real.model.ExtractFeatherSurf(CSTLModel::NormalJudgeFun, 0.0);
        ASSERT_EQ(twin.Numbers(literal::ExtractFeather(twin.facets, CSTLModel::NormalJudgeFun, 0.0)),
                  real.Numbers(real.model.m_SurfaceArray));
        for (CFacet* const f : twin.facets) f->m_nRegion = 0;
        ExpectSameFacets(twin.facets, real.facets);
    }
}

TEST(Classification, JudgeIsAskedTheSameQuestionsInTheSameOrder) {
    for (std::uint32_t nSeed = 0; nSeed < 60; ++nSeed) {
        SCOPED_TRACE(nSeed);
        RandomParts parts(nSeed);
        NumberedModel m(parts.Make(nSeed));
        g_Answers = std::map<CFacet const*, int>(m.numbers.begin(), m.numbers.end());
        g_Calls.clear();
        auto const expected = m.Numbers(literal::Classify(m.facets, 1, Moody, 0.0));
        std::vector<Call> const expectedCalls = std::exchange(g_Calls, {});
        auto const expectedFeather = m.Numbers(literal::ExtractFeather(m.facets, Moody, 0.0));
        std::vector<Call> const expectedFeatherCalls = std::exchange(g_Calls, {});
        m.model.ExtractFeatherSurf(Moody, 0.0);
        ASSERT_EQ(expectedFeather, m.Numbers(m.model.m_SurfaceArray));
        ASSERT_EQ(expectedFeatherCalls, g_Calls);
        g_Calls.clear();
        NumberedModel fresh(RandomParts(nSeed).Make(nSeed));
        g_Answers = std::map<CFacet const*, int>(fresh.numbers.begin(), fresh.numbers.end());
        fresh.model.ClassifySurf(Moody, 0.0);
        ASSERT_EQ(expected, fresh.Numbers(fresh.model.m_SurfaceArray));
        ASSERT_EQ(expectedCalls.size(), g_Calls.size());
        for (std::size_t i = 0; i < g_Calls.size(); ++i) ASSERT_EQ(expectedCalls[i].n, g_Calls[i].n);
    }
}

TEST(Classification, SmallSurfacesMergeAsTheLiteralOnesDo) {
    for (std::uint32_t nSeed = 0; nSeed < 210; ++nSeed) {
        SCOPED_TRACE(nSeed);
        RandomParts parts(nSeed);
        shapes::Mesh const mesh = parts.Make(nSeed);
        NumberedModel real(mesh), twin(mesh);
        double const d = nSeed % 2 == 0 ? JoinDistance2() : 0.0;
        real.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, d);
        real.model.UnionSmallSurface();
        auto const expected =
            literal::UnionSmall(literal::ExtractFeather(twin.facets, CSTLModel::JionJudgeFun, d));
        auto const& surfaces = real.model.m_SurfaceArray.m_aSurface;
        ASSERT_EQ(static_cast<int>(expected.size()), surfaces.GetSize());
        for (int i = 0; i < surfaces.GetSize(); ++i) {
            auto const& [group, dArea] = expected[static_cast<std::size_t>(i)];
            ASSERT_EQ(twin.Numbers({group})[0], real.Numbers(*surfaces.GetAt(i)));
            ASSERT_EQ(dArea, surfaces.GetAt(i)->m_dArea);
        }
        ExpectClassificationState(real);
    }
}

TEST(Classification, ReadyMadeSequenceIsItsThreeSteps) {
    for (std::uint32_t nSeed = 0; nSeed < 210; ++nSeed) {
        SCOPED_TRACE(nSeed);
        shapes::Mesh const mesh = RandomParts(nSeed).Make(nSeed);
        NumberedModel whole(mesh), steps(mesh);
        // Twice, so that the second time starts from other surfaces.
        for (int nTime = 0; nTime < 2; ++nTime) {
            whole.model.ExtractSurfaceAndEdge();
            steps.model.ExtractFeatherSurf(CSTLModel::JionJudgeFun, JoinDistance2());
            steps.model.UnionSmallSurface();
            auto const& expected = steps.model.m_SurfaceArray.m_aSurface;
            auto const& surfaces = whole.model.m_SurfaceArray.m_aSurface;
            ASSERT_EQ(steps.Numbers(steps.model.m_SurfaceArray), whole.Numbers(whole.model.m_SurfaceArray));
            for (int i = 0; i < surfaces.GetSize(); ++i) {
                expected[i]->FindSurfaceVerge();
                ASSERT_EQ(expected[i]->m_dArea, surfaces[i]->m_dArea);
                ASSERT_EQ(expected[i]->m_VergeList.GetCount(), surfaces[i]->m_VergeList.GetCount());
                XR__POSITION* a = expected[i]->m_VergeList.GetHeadPosition();
                XR__POSITION* b = surfaces[i]->m_VergeList.GetHeadPosition();
                while (a != nullptr) {
                    int const nExpected = expected[i]->m_VergeList.GetNext(a)->m_nIndex;
                    ASSERT_EQ(nExpected, surfaces[i]->m_VergeList.GetNext(b)->m_nIndex);
                }
            }
            ExpectClassificationState(whole);
        }
    }
}
