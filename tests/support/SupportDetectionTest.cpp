// Regions that face down too steeply, and which of them hang free.

#include <limits>

#include "LiteralSupport.h"
#include "Mushroom.h"
#include "RandomParts.h"

namespace {

CFeatureSurface& SupportAt(CSTLModel& model, int nIndex) { return *model.m_SupportArray.m_aSurface[nIndex]; }

std::vector<unsigned> NeedsOf(CSTLModel const& model) {
    std::vector<unsigned> needs;
    auto const& surfaces = model.m_SupportArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i)
        needs.push_back(surfaces.GetAt(i)->m_nSupportFlag & FS_NEEDS_SUPPORT);
    return needs;
}

}  // namespace

TEST(SupportDetection, BottomOfABoxOnThePlateIsOneSuspendedSurface) {
    NumberedModel m(shapes::Box({0, 0, 0}, {4, 3, 2}));
    ASSERT_EQ(1, m.model.FindSupportSurface(45.0, 1));
    CFeatureSurface& bottom = SupportAt(m.model, 0);
    EXPECT_EQ(2, bottom.m_aFacet.GetSize());
    EXPECT_EQ(static_cast<unsigned>(FS_SUPPORT_SURFACE), bottom.m_nSurfaceFlag);
    EXPECT_EQ(static_cast<unsigned>(FS_NEEDS_SUPPORT), bottom.m_nSupportFlag);
    EXPECT_EQ(12.0, bottom.ProjectArea());
    EXPECT_EQ(4.0, bottom.m_BoundBox.m_ptMax.x);
    EXPECT_EQ(0.0, bottom.m_BoundBox.m_ptMax.z);
    EXPECT_EQ(1, bottom.IsSuspendSupport());
    EXPECT_EQ(0, bottom.m_EdgeList.GetCount());
    for (CFacet const* const f : m.facets) {
        EXPECT_EQ(f->m_fNormal[2] < -0.9f, (f->m_nFlag & FACET_SUPPORT) != 0);
        EXPECT_EQ(0, f->m_nRegion);
    }
}

TEST(SupportDetection, RegionsThatTouchAtAVertexAreTwoByEdgesAndOneByVertices) {
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {2, 2, 2});
    shapes::Append(mesh, shapes::Box({2, 2, 0}, {4, 4, 2}));
    NumberedModel m(mesh);
    EXPECT_EQ(2, m.model.FindSupportSurface(45.0, 1));
    EXPECT_EQ(2, m.model.FindSupportSurface(45.0, -7));
    EXPECT_EQ(1, m.model.FindSupportSurface(45.0, 0));
    EXPECT_EQ(4, SupportAt(m.model, 0).m_aFacet.GetSize());
}

TEST(SupportDetection, UndersideOnAPostLeansOnItAndASmallLimitKeepsIt) {
    NumberedModel m(Mushroom());
    ASSERT_EQ(2, m.model.FindSupportSurface(45.0, 1));
    CFeatureSurface& underside = SupportAt(m.model, 0);
    CFeatureSurface& foot = SupportAt(m.model, 1);
    EXPECT_EQ(72.0, underside.ProjectArea());
    EXPECT_EQ(9.0, foot.ProjectArea());
    // The underside leans on the post; the foot hangs free, to this test.
    EXPECT_EQ(1, m.model.FilterUnSuspendSupport(100.0));
    EXPECT_EQ(std::vector<unsigned>({0u, 0x100u}), NeedsOf(m.model));
    EXPECT_EQ(0x100u, underside.m_nSurfaceFlag);
    EXPECT_EQ(0x1100u, foot.m_nSurfaceFlag);
    // A smaller limit brings it back.
    EXPECT_EQ(2, m.model.FilterUnSuspendSupport(72.0));
    EXPECT_EQ(std::vector<unsigned>({0x100u, 0x100u}), NeedsOf(m.model));
    EXPECT_EQ(1, m.model.FilterUnSuspendSupport(std::nextafter(72.0, 100.0)));
}

TEST(SupportDetection, LimitOfZeroOrBelowKeepsAllAndLooksAtNone) {
    NumberedModel m(Mushroom());
    ASSERT_EQ(2, m.model.FindSupportSurface(45.0, 1));
    for (double const dLimit : {0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(2, m.model.FilterUnSuspendSupport(dLimit));
        EXPECT_EQ(0, SupportAt(m.model, 0).m_EdgeList.GetCount());
        EXPECT_EQ(0u, SupportAt(m.model, 1).m_nSurfaceFlag & FS_SMALL_SUSPENDED);
    }
}

TEST(SupportDetection, FilterOfAnEmptyArrayIsZero) {
    CSTLModel model;
    EXPECT_EQ(0, model.FilterUnSuspendSupport(5.0));
    EXPECT_EQ(0, model.FindSupportSurface(45.0, 1));
    EXPECT_EQ(0, model.FindSupportSurface(45.0, 0));
    EXPECT_EQ(0, model.FilterUnSuspendSupport(5.0));
}

TEST(SupportDetection, EachProofOfAWallIsAddedAtTheHeadOfTheRim) {
    NumberedModel m(Mushroom());
    m.model.FindSupportSurface(45.0, 1);
    CFeatureSurface& underside = SupportAt(m.model, 0);
    underside.FindSurfaceEdge();
    EXPECT_EQ(8, underside.m_EdgeList.GetCount());
    EXPECT_EQ(0, underside.IsSuspendSupport());
    EXPECT_EQ(0, underside.IsSuspendSupport());
    EXPECT_EQ(10, underside.m_EdgeList.GetCount());
    // The first facet does not touch the post. The first one beside it does, on the post's side x = 3.
    CEdge3D const proof = underside.m_EdgeList.GetHead();
    EXPECT_TRUE(SameBits(CPoint3D(3, 6, 5), proof.m_ptStart));
    EXPECT_TRUE(SameBits(CPoint3D(3, 3, 5), proof.m_ptEnd));
    underside.FindSurfaceEdge();
    EXPECT_EQ(8, underside.m_EdgeList.GetCount());
    m.ExpectMarksCleared();
}

// A strip that faces down rises from z = 0 to z = 2; a wall goes down from its higher end only.
TEST(SupportDetection, WallThatMeetsTheSurfaceAboveTheBandDoesNotCount) {
    auto const isSuspended = [](double dRise) {
        CSTLModel model;
        CPoint3D const a(0, 0, 0), b(0, 1, 0), c(5, 1, dRise), d(5, 0, dRise);
        AddTriangle(model, a, b, c);
        AddTriangle(model, a, c, d);
        AddTriangle(model, d, c, CPoint3D(5, 0, -3));  // the wall below the far end
        if (model.FindSupportSurface(45.0, 1) != 1) return -1;
        return SupportAt(model, 0).IsSuspendSupport();
    };
    EXPECT_EQ(1, isSuspended(2.0));
    EXPECT_EQ(1, isSuspended(0.1));  // the band ends below 0.1
    EXPECT_EQ(0, isSuspended(0.09));
    EXPECT_EQ(0, isSuspended(0.0));
}

TEST(SupportDetection, MarksThatWereLeftAreOverwritten) {
    NumberedModel m(Mushroom());
    for (CFacet* const f : m.facets) {
        f->m_nRegion = 17;
        f->m_nFlag |= FACET_SUPPORT;
    }
    EXPECT_EQ(2, m.model.FindSupportSurface(45.0, 1));
    m.ExpectMarksCleared();
    int nFlagged = 0;
    for (CFacet const* const f : m.facets) nFlagged += (f->m_nFlag & FACET_SUPPORT) != 0 ? 1 : 0;
    EXPECT_EQ(10, nFlagged);
}

TEST(SupportDetection, AngleIsMeasuredFromStraightDownAndNotChecked) {
    // A roof turned over: its two facets lean 45 degrees.
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, 1, 1), CPoint3D(1, 0, 0));
    EXPECT_EQ(0, model.FindSupportSurface(44.9, 1));
    EXPECT_EQ(1, model.FindSupportSurface(45.1, 1));
    EXPECT_EQ(0, model.FindSupportSurface(0.0, 1));
    EXPECT_EQ(1, model.FindSupportSurface(90.0, 1));
    EXPECT_EQ(1, model.FindSupportSurface(180.0, 1));
    EXPECT_EQ(1, model.FindSupportSurface(270.0 - 90.0, 1));
    EXPECT_EQ(0, model.FindSupportSurface(360.0, 1));
    EXPECT_EQ(0, model.FindSupportSurface(std::nan(""), 1));
    EXPECT_EQ(0, model.FindSupportSurface(std::numeric_limits<double>::infinity(), 1));
    EXPECT_EQ(1, model.FindSupportSurface(-50.0, 1));
}

// The facet's normal is a float; the threshold is not narrowed to one.
TEST(SupportDetection, ThresholdsNextToANormalThatOneFloatHoldsAreTold) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, 1, 1), CPoint3D(1, 0, 0));
    double const nz = FacetAt(model, 0).m_fNormal[2];
    for (double const dBeside : {1e-9, -1e-9}) {
        double const dAngle = std::acos(-(nz + dBeside)) * 180.0 / 3.14159265358979323846;
        double const t = -std::cos(dAngle * 3.14159265358979323846 / 180.0);
        ASSERT_NE(nz, t);
        ASSERT_EQ(dBeside > 0.0, t > nz);
        ASSERT_EQ(static_cast<float>(nz), static_cast<float>(t));
        EXPECT_EQ(dBeside > 0.0 ? 1 : 0, model.FindSupportSurface(dAngle, 1)) << dBeside;
    }
}

// A neighbour that falls off across a level edge by this much on a millimetre.
TEST(SupportDetection, ANeighbourThatFallsByMoreThanAHundredthIsAWall) {
    auto const isSuspended = [](double dFall) {
        CSTLModel model;
        AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, 4, 0), CPoint3D(4, 0, 0));        // faces down
        AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(4, -1, -dFall), CPoint3D(4, 0, 0));  // faces up
        EXPECT_GT(FacetAt(model, 1).m_fNormal[2], 0.0f);
        EXPECT_EQ(1, model.FindSupportSurface(45.0, 1));
        return SupportAt(model, 0).IsSuspendSupport();
    };
    EXPECT_EQ(1, isSuspended(0.0));
    EXPECT_EQ(1, isSuspended(0.0099));
    EXPECT_EQ(0, isSuspended(0.0101));
    EXPECT_EQ(0, isSuspended(0.0149));
    EXPECT_EQ(1, isSuspended(-0.5));
}

TEST(SupportDetection, SuspendedSurfaceIsHeldByANeighbourThatGoesOutward) {
    NumberedModel m(Mushroom());
    m.model.FindSupportSurface(45.0, 1);
    // An upright side below or above a level edge does not go down across it: both hold.
    EXPECT_EQ(0, SupportAt(m.model, 0).IsSuspendSurface());
    CFeatureSurface const empty;
    EXPECT_EQ(1, const_cast<CFeatureSurface&>(empty).IsSuspendSurface());
    EXPECT_EQ(1, const_cast<CFeatureSurface&>(empty).IsSuspendSupport());
}

// Of the facets of a model, one for itself.
int IsSuspendedAlone(CFacet* pFacet) {
    CFeatureSurface surface;
    surface.m_aFacet.Add(pFacet);
    int const nSuspended = surface.IsSuspendSurface();
    surface.m_aFacet.RemoveAll();
    return nSuspended;
}

TEST(SupportDetection, SuspendedSurfaceIsNotHeldByFreeEdgesNorByWhatRisesOrNeedsSupportItself) {
    CSTLModel model;
    CPoint3D const a(0, 0, 0), b(0, 1, 0), c(1, 0, 0);
    AddTriangle(model, a, b, c);
    EXPECT_EQ(1, IsSuspendedAlone(FacetsOf(model)[0])) << "free edges";
    AddTriangle(model, a, c, CPoint3D(0, -1, 2));
    EXPECT_EQ(1, IsSuspendedAlone(FacetsOf(model)[0])) << "a neighbour that rises from its edge";
    FacetsOf(model)[1]->m_nFlag |= FACET_SUPPORT;
    EXPECT_EQ(1, IsSuspendedAlone(FacetsOf(model)[0])) << "one that needs support";
    FacetsOf(model)[1]->m_nFlag = FACET_SUSPEND;
    EXPECT_EQ(0, IsSuspendedAlone(FacetsOf(model)[0])) << "one that is nearly level and faces up";
    FacetsOf(model)[1]->m_nFlag = 0;
    AddTriangle(model, b, a, CPoint3D(0, 0, -1));
    EXPECT_EQ(0, IsSuspendedAlone(FacetsOf(model)[0])) << "one that goes down from its edge";
    FacetsOf(model)[2]->m_nFlag |= FACET_SUPPORT;
    EXPECT_EQ(1, IsSuspendedAlone(FacetsOf(model)[0])) << "the same, and it needs support";
}

TEST(SupportDetection, NormalsThatAreTheThresholdAreNotBelowIt) {
    NumberedModel m(shapes::Box({0, 0, 0}, {4, 3, 2}));
    // The cosines of 0 and 180 degrees are exact: 12 facets, of which the two at the bottom or the top are at
    // the threshold.
    EXPECT_EQ(0, m.model.FindSupportSurface(0.0, 1));
    ASSERT_EQ(1, m.model.FindSupportSurface(180.0, 1));
    EXPECT_EQ(10, SupportAt(m.model, 0).m_aFacet.GetSize());
    ASSERT_EQ(1, m.model.FindSupportSurface(1e-3, 1));
    EXPECT_EQ(2, SupportAt(m.model, 0).m_aFacet.GetSize());
}

TEST(SupportDetection, NeighbourIsJudgedByTheCornerThatIsNotOnTheEdge) {
    auto const side = [](double dFarY, double dFarZ, double dTol) {
        CSTLModel model;
        CPoint3D const a(0, 0, 0), b(4, 0, 0);
        AddTriangle(model, a, CPoint3D(0, 4, 0), b);  // faces down
        AddTriangle(model, a, b, CPoint3D(0, dFarY, dFarZ));
        CFacet& f = FacetAt(model, 0);
        CFacet& n = FacetAt(model, 1);
        tagVertexNode* const pA = f.m_pVertex1;
        tagVertexNode* const pB = f.m_pVertex3;
        EXPECT_EQ(literal::NeighborSide(&f, &n, pA, pB, dTol), JudgeNeighborSide(&f, &n, pA, pB, dTol));
        EXPECT_EQ(JudgeNeighborSide(&f, &n, pA, pB, dTol), JudgeNeighborSide(&f, &n, pB, pA, dTol));
        return JudgeNeighborSide(&f, &n, pA, pB, dTol);
    };
    EXPECT_EQ(1, side(-1.0, -1.0, 0.01));   // goes down, on the outer side
    EXPECT_EQ(-1, side(-1.0, 1.0, 0.01));   // bends up
    EXPECT_EQ(0, side(-1.0, 0.0, 0.01));    // in the plane
    EXPECT_EQ(0, side(-1.0, 0.009, 0.01));  // within the tolerance
    EXPECT_EQ(-1, side(-1.0, 0.02, 0.01));
    EXPECT_EQ(1, side(-1.0, -0.02, 0.01));
    EXPECT_EQ(-1, side(-1.0, 0.0, 0.0));  // exactly in the plane, without tolerance
}

TEST(SupportDetection, ClearSupportDestroysNoFacetAndPassesOverNulls) {
    NumberedModel m(Mushroom());
    m.model.FindSupportSurface(45.0, 1);
    m.model.m_SupportArray.m_aSurface.Add(nullptr);
    m.model.ClearSupport();
    EXPECT_EQ(0, m.model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(nullptr, m.model.m_SupportArray.m_aSurface.GetData());
    EXPECT_EQ(static_cast<int>(m.facets.size()), m.model.GetFacetsNum());
    EXPECT_NE(0u, m.facets[2]->m_nFlag & FACET_SUPPORT);  // the mark stays
}

TEST(SupportDetection, SearchAfterReleaseForgetsTheFacetsThatAreGone) {
    NumberedModel m(Mushroom());
    m.model.FindSupportSurface(45.0, 1);
    m.model.ReleaseAllFacet();
    EXPECT_EQ(2, m.model.m_SupportArray.m_aSurface.GetSize());
    EXPECT_EQ(0, m.model.FindSupportSurface(45.0, 1));
}

TEST(SupportDetection, GroupingOfTheSurfacesDoesNotMatterToTheRegions) {
    NumberedModel m(Mushroom());
    m.model.ExtractSurfaceAndEdge();
    EXPECT_EQ(2, m.model.FindSupportSurface(45.0, 1));
}

TEST(SupportDetection, FanOfVeryManyFacetsIsWalkedOnce) {
    CSTLModel model;
    constexpr int kFacets = 20000;
    auto const at = [](int i) {
        double const t = 2.0 * 3.141592653589793 * i / kFacets;
        return CPoint3D(1000.0 * std::cos(t), 1000.0 * std::sin(t), 0.0);
    };
    for (int i = 0; i < kFacets; ++i) AddTriangle(model, CPoint3D(0, 0, 0), at(i + 1), at(i));
    EXPECT_EQ(1, model.FindSupportSurface(45.0, 0));
    EXPECT_EQ(kFacets, SupportAt(model, 0).m_aFacet.GetSize());
    EXPECT_EQ(1, model.FindSupportSurface(45.0, 1));
    EXPECT_EQ(kFacets, SupportAt(model, 0).m_aFacet.GetSize());
}

TEST(SupportDetection, AgreesWithTheLiteralSearchOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 210; ++nSeed) {
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        for (double const dAngle : {10.0, 45.0, 60.0, 90.0, 120.0}) {
            for (int const nMode : {0, 1}) {
                SCOPED_TRACE(testing::Message() << nSeed << ", " << dAngle << ", " << nMode);
                auto const expected = literal::FindSupport(m.facets, dAngle, nMode);
                ASSERT_EQ(static_cast<int>(expected.size()), m.model.FindSupportSurface(dAngle, nMode));
                ASSERT_EQ(m.Numbers(expected), m.Numbers(m.model.m_SupportArray));
                m.ExpectMarksCleared();
                double const t = -std::cos(dAngle * 3.141592653589793 / 180.0);
                for (CFacet const* const f : m.facets)
                    ASSERT_EQ(t > static_cast<double>(f->m_fNormal[2]), (f->m_nFlag & 0x10u) != 0);
            }
        }
    }
}

TEST(SupportDetection, FilterAgreesWithTheLiteralOneOnRandomMeshes) {
    int nDropped = 0, nSmallKept = 0;
    for (std::uint32_t nSeed = 0; nSeed < 210; ++nSeed) {
        SCOPED_TRACE(nSeed);
        NumberedModel m(RandomParts(nSeed).Make(nSeed));
        m.model.FindSupportSurface(60.0, 1);
        auto const groups = literal::FindSupport(m.facets, 60.0, 1);
        for (double const dLimit : {0.5, 2.0, 1e9}) {
            int nKept = static_cast<int>(groups.size());
            std::vector<unsigned> needs;
            for (std::size_t i = 0; i < groups.size(); ++i) {
                double dArea = 0.0;
                for (CFacet* const f : groups[i]) dArea += f->ProjectArea();
                auto const proof = literal::ProofOfWall(groups[i]);
                bool const bDropped = dLimit > dArea && proof.first != nullptr;
                needs.push_back(bDropped ? 0u : 0x100u);
                if (bDropped) {
                    --nKept;
                    ++nDropped;
                } else if (dLimit > dArea) {
                    ++nSmallKept;
                }
            }
            ASSERT_EQ(nKept, m.model.FilterUnSuspendSupport(dLimit));
            ASSERT_EQ(needs, NeedsOf(m.model));
        }
        for (std::size_t i = 0; i < groups.size(); ++i) {
            auto const [pA, pB] = literal::ProofOfWall(groups[i]);
            CFeatureSurface& surface = SupportAt(m.model, static_cast<int>(i));
            surface.ClearVergeArray();
            ASSERT_EQ(pA == nullptr ? 1 : 0, surface.IsSuspendSupport());
            ASSERT_EQ(pA == nullptr ? 0 : 1, surface.m_EdgeList.GetCount());
            if (pA == nullptr) continue;
            ASSERT_TRUE(SameBits(*pA, surface.m_EdgeList.GetHead().m_ptStart));
            ASSERT_TRUE(SameBits(*pB, surface.m_EdgeList.GetHead().m_ptEnd));
        }
        m.ExpectMarksCleared();
    }
    EXPECT_GT(nDropped, 50);
    EXPECT_GT(nSmallKept, 50);
}
