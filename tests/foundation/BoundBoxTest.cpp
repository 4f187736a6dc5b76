#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <random>

#include "foundation/BoundBox.h"

namespace {

constexpr double kEmptyMin = 1.00000002004087734272e20;

CBoundBox2D Box2(double x0, double y0, double x1, double y1) {
    return CBoundBox2D(CPoint2D(x0, y0), CPoint2D(x1, y1));
}

CBoundBox3D Box3(double d0, double d1) { return CBoundBox3D(CPoint3D(d0, d0, d0), CPoint3D(d1, d1, d1)); }

}  // namespace

TEST(BoundBox, BuiltWithoutArgumentsIsTheEmptyBoxToTheBit) {
    CBoundBox3D const box;
    for (double const d : {box.m_ptMin.x, box.m_ptMin.y, box.m_ptMin.z}) {
        EXPECT_EQ(0x4415AF1D80000000u, std::bit_cast<std::uint64_t>(d));
    }
    for (double const d : {box.m_ptMax.x, box.m_ptMax.y, box.m_ptMax.z}) {
        EXPECT_EQ(0xC415AF1D80000000u, std::bit_cast<std::uint64_t>(d));
    }
    CBoundBox2D const flat;
    EXPECT_EQ(0x4415AF1D80000000u, std::bit_cast<std::uint64_t>(flat.m_ptMin.x));
    EXPECT_EQ(0x4415AF1D80000000u, std::bit_cast<std::uint64_t>(flat.m_ptMin.y));
    EXPECT_EQ(0xC415AF1D80000000u, std::bit_cast<std::uint64_t>(flat.m_ptMax.x));
    EXPECT_EQ(0xC415AF1D80000000u, std::bit_cast<std::uint64_t>(flat.m_ptMax.y));
    EXPECT_EQ(static_cast<double>(1e20f), flat.m_ptMin.x);
    EXPECT_EQ(0.0f, flat.m_ptMin.m_fAttr1);
    EXPECT_EQ(0.0f, flat.m_ptMax.m_fAttr2);
}

TEST(BoundBox, OneArgumentIsTheMinimum) {
    CBoundBox2D const flat(CPoint2D(1.0, 2.0));
    EXPECT_EQ(1.0, flat.m_ptMin.x);
    EXPECT_EQ(-kEmptyMin, flat.m_ptMax.x);
    CBoundBox3D const box(CPoint3D(1.0, 2.0, 3.0));
    EXPECT_EQ(3.0, box.m_ptMin.z);
    EXPECT_EQ(-kEmptyMin, box.m_ptMax.z);
}

TEST(BoundBox, PointOnTheBorderIsInsideOnlyForTheInclusiveTest) {
    CBoundBox2D const flat = Box2(0.0, 0.0, 4.0, 2.0);
    for (CPoint2D const& p : {CPoint2D(0.0, 1.0), CPoint2D(4.0, 1.0), CPoint2D(2.0, 0.0), CPoint2D(2.0, 2.0),
                              CPoint2D(0.0, 0.0)}) {
        EXPECT_EQ(0, flat.IsInBox(p));
        EXPECT_EQ(1, flat.IsInBox2(p));
    }
    CBoundBox3D const box = Box3(0.0, 2.0);
    for (CPoint3D const& p : {CPoint3D(0.0, 1.0, 1.0), CPoint3D(2.0, 1.0, 1.0), CPoint3D(1.0, 0.0, 1.0),
                              CPoint3D(1.0, 2.0, 1.0), CPoint3D(1.0, 1.0, 0.0), CPoint3D(1.0, 1.0, 2.0)}) {
        EXPECT_EQ(0, box.IsInBox(p));
        EXPECT_EQ(1, box.IsInBox2(p));
    }
}

TEST(BoundBox, PointsInsideAndOutsideAreToldOnEveryAxis) {
    CBoundBox3D const box = Box3(0.0, 2.0);
    EXPECT_EQ(1, box.IsInBox(CPoint3D(1.0, 1.0, 1.0)));
    EXPECT_EQ(1, box.IsInBox2(CPoint3D(1.0, 1.0, 1.0)));
    for (CPoint3D const& p : {CPoint3D(-0.1, 1.0, 1.0), CPoint3D(2.1, 1.0, 1.0), CPoint3D(1.0, -0.1, 1.0),
                              CPoint3D(1.0, 2.1, 1.0), CPoint3D(1.0, 1.0, -0.1), CPoint3D(1.0, 1.0, 2.1)}) {
        EXPECT_EQ(0, box.IsInBox(p));
        EXPECT_EQ(0, box.IsInBox2(p));
    }
    CBoundBox2D const flat = Box2(0.0, 0.0, 4.0, 2.0);
    EXPECT_EQ(1, flat.IsInBox(CPoint2D(3.9, 0.1)));
    EXPECT_EQ(0, flat.IsInBox2(CPoint2D(4.1, 1.0)));
    EXPECT_EQ(0, flat.IsInBox2(CPoint2D(1.0, -0.1)));
}

TEST(BoundBox, BoxOfOnePointHasNothingStrictlyInside) {
    CBoundBox2D const flat = Box2(1.0, 1.0, 1.0, 1.0);
    EXPECT_EQ(0, flat.IsInBox(CPoint2D(1.0, 1.0)));
    EXPECT_EQ(1, flat.IsInBox2(CPoint2D(1.0, 1.0)));
    EXPECT_EQ(1, flat.IsValid());
    EXPECT_EQ(0, Box3(1.0, 1.0).IsInBox(CPoint3D(1.0, 1.0, 1.0)));
    EXPECT_EQ(1, Box3(1.0, 1.0).IsValid());
}

TEST(BoundBox, EmptyBoxIsInvalidAndItsFirstPointMakesItValidOfSizeZero) {
    CBoundBox2D flat;
    CBoundBox3D box;
    EXPECT_EQ(0, flat.IsValid());
    EXPECT_EQ(0, box.IsValid());
    flat += CPoint2D(3.0, -4.0);
    box += CPoint3D(3.0, -4.0, 5.0);
    EXPECT_EQ(1, flat.IsValid());
    EXPECT_EQ(1, box.IsValid());
    EXPECT_EQ(0.0, flat.Size().x);
    EXPECT_EQ(0.0, flat.Size().y);
    EXPECT_EQ(0.0, box.Size().x);
    EXPECT_EQ(0.0, box.Size().y);
    EXPECT_EQ(0.0, box.Size().z);
    EXPECT_EQ(3.0, box.m_ptMin.x);
    EXPECT_EQ(-4.0, box.m_ptMax.y);
}

TEST(BoundBox, OneInvertedAxisMakesItInvalid) {
    EXPECT_EQ(0, Box2(0.0, 1.0, 1.0, 0.0).IsValid());
    EXPECT_EQ(0, Box2(1.0, 0.0, 0.0, 1.0).IsValid());
    EXPECT_EQ(0, CBoundBox3D(CPoint3D(0.0, 0.0, 1.0), CPoint3D(1.0, 1.0, 0.0)).IsValid());
}

TEST(BoundBox, SizeOfTheEmptyBoxIsZeroInThePlaneAndNegativeInSpace) {
    EXPECT_EQ(0.0, CBoundBox2D().Size().x);
    EXPECT_EQ(0.0, CBoundBox2D().Size().y);
    EXPECT_EQ(-2.0 * kEmptyMin, CBoundBox3D().Size().x);
    EXPECT_EQ(-2.0 * kEmptyMin, CBoundBox3D().Size().z);
    CPoint2D const mixed = Box2(0.0, 5.0, 3.0, 1.0).Size();
    EXPECT_EQ(3.0, mixed.x);
    EXPECT_EQ(0.0, mixed.y);
}

TEST(BoundBox, CenterIsHalfTheSumWithoutAttributes) {
    CBoundBox2D flat = Box2(1.0, -3.0, 4.0, 1.0);
    flat.m_ptMin.m_fAttr1 = 5.0f;
    flat.m_ptMax.m_fAttr2 = 6.0f;
    EXPECT_EQ(2.5, flat.Center().x);
    EXPECT_EQ(-1.0, flat.Center().y);
    EXPECT_EQ(0.0f, flat.Center().m_fAttr1);
    EXPECT_EQ(0.0f, flat.Center().m_fAttr2);
    CPoint3D const center = CBoundBox3D(CPoint3D(0.0, 2.0, -4.0), CPoint3D(1.0, 4.0, -1.0)).Center();
    EXPECT_EQ(0.5, center.x);
    EXPECT_EQ(3.0, center.y);
    EXPECT_EQ(-2.5, center.z);
}

TEST(BoundBox, AddingBoxesTakesTheExtremesAndTheEmptyBoxChangesNothing) {
    CBoundBox2D flat = Box2(0.0, 0.0, 1.0, 1.0);
    flat += CBoundBox2D();
    EXPECT_EQ(1.0, flat.m_ptMax.x);
    EXPECT_EQ(0.0, flat.m_ptMin.y);
    flat += Box2(-1.0, 0.5, 0.5, 3.0);
    EXPECT_EQ(-1.0, flat.m_ptMin.x);
    EXPECT_EQ(0.0, flat.m_ptMin.y);
    EXPECT_EQ(1.0, flat.m_ptMax.x);
    EXPECT_EQ(3.0, flat.m_ptMax.y);
    CBoundBox3D box = Box3(0.0, 1.0);
    box += CBoundBox3D();
    EXPECT_EQ(0.0, box.m_ptMin.z);
    EXPECT_EQ(1.0, box.m_ptMax.z);
    box += CBoundBox3D(CPoint3D(0.5, -1.0, 0.5), CPoint3D(2.0, 0.5, 0.6));
    EXPECT_EQ(0.0, box.m_ptMin.x);
    EXPECT_EQ(-1.0, box.m_ptMin.y);
    EXPECT_EQ(2.0, box.m_ptMax.x);
    EXPECT_EQ(1.0, box.m_ptMax.z);
}

TEST(BoundBox, LimitingAPointClampsItAndTellsWhetherItStayed) {
    CBoundBox2D const box = Box2(0.0, 0.0, 4.0, 2.0);
    CPoint2D inside(1.0, 1.0);
    EXPECT_EQ(1, box.LimitPointInBox(inside));
    EXPECT_EQ(1.0, inside.x);
    CPoint2D border(4.0, 0.0);
    EXPECT_EQ(1, box.LimitPointInBox(border));
    EXPECT_EQ(4.0, border.x);
    CPoint2D below(-1.0, -1.0);
    EXPECT_EQ(0, box.LimitPointInBox(below));
    EXPECT_EQ(0.0, below.x);
    EXPECT_EQ(0.0, below.y);
    CPoint2D right(5.0, 1.5);
    EXPECT_EQ(0, box.LimitPointInBox(right));
    EXPECT_EQ(4.0, right.x);
    EXPECT_EQ(1.5, right.y);
    CPoint2D above(1.0, 3.0);
    EXPECT_EQ(0, box.LimitPointInBox(above));
    EXPECT_EQ(1.0, above.x);
    EXPECT_EQ(2.0, above.y);
}

// The empty box is turned over: a point goes to the minimum first and then to the maximum.
TEST(BoundBox, LimitingIntoAnInvertedBoxEndsAtTheMaximum) {
    CPoint2D p(0.0, 0.0);
    EXPECT_EQ(0, CBoundBox2D().LimitPointInBox(p));
    EXPECT_EQ(-kEmptyMin, p.x);
    EXPECT_EQ(-kEmptyMin, p.y);
}

TEST(BoundBox, RelationInThePlane) {
    CBoundBox2D const a = Box2(0.0, 0.0, 10.0, 10.0);
    EXPECT_EQ(0, BoxRelation(a, Box2(1.0, 1.0, 9.0, 9.0)));
    EXPECT_EQ(1, BoxRelation(a, Box2(-1.0, -1.0, 11.0, 11.0)));
    EXPECT_EQ(2, BoxRelation(a, Box2(11.0, 0.0, 12.0, 10.0)));
    EXPECT_EQ(2, BoxRelation(Box2(11.0, 0.0, 12.0, 10.0), a));
    EXPECT_EQ(2, BoxRelation(a, Box2(0.0, 11.0, 10.0, 12.0)));
    EXPECT_EQ(2, BoxRelation(a, Box2(0.0, -2.0, 10.0, -1.0)));
    EXPECT_EQ(3, BoxRelation(a, Box2(5.0, 5.0, 15.0, 15.0)));
    // Equal boxes and boxes that touch share a border.
    EXPECT_EQ(3, BoxRelation(a, a));
    EXPECT_EQ(3, BoxRelation(a, Box2(10.0, 0.0, 20.0, 10.0)));
    // A cross: no corner of one lies inside the other, yet they overlap.
    EXPECT_EQ(3, BoxRelation(a, Box2(4.0, -5.0, 6.0, 15.0)));
    // Inside, but with a side on the border.
    EXPECT_EQ(3, BoxRelation(a, Box2(0.0, 1.0, 9.0, 9.0)));
}

TEST(BoundBox, RelationInSpaceCallsEverythingWithoutACornerInsideApart) {
    CBoundBox3D const a = Box3(0.0, 10.0);
    EXPECT_EQ(0, BoxRelation(a, Box3(1.0, 9.0)));
    EXPECT_EQ(1, BoxRelation(a, Box3(-1.0, 11.0)));
    EXPECT_EQ(2, BoxRelation(a, Box3(20.0, 21.0)));
    EXPECT_EQ(2, BoxRelation(a, a));
    EXPECT_EQ(2, BoxRelation(a, CBoundBox3D(CPoint3D(4.0, 4.0, -5.0), CPoint3D(6.0, 6.0, 15.0))));
    EXPECT_EQ(3, BoxRelation(a, Box3(5.0, 15.0)));
    EXPECT_EQ(3, BoxRelation(a, Box3(-5.0, 5.0)));
    // One corner of b inside a, none of a inside b.
    EXPECT_EQ(3, BoxRelation(a, CBoundBox3D(CPoint3D(5.0, 5.0, 5.0), CPoint3D(6.0, 6.0, 15.0))));
    EXPECT_EQ(3, BoxRelation(CBoundBox3D(CPoint3D(5.0, 5.0, 5.0), CPoint3D(6.0, 6.0, 15.0)), a));
}

// The four tests written out, for all small boxes of whole numbers.
TEST(BoundBox, RelationInThePlaneAgreesWithTheFourCornerTestsOnRandomBoxes) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> coordinate(0, 5);
    auto const draw = [&] {
        return Box2(coordinate(random), coordinate(random), coordinate(random), coordinate(random));
    };
    int counts[4] = {};
    for (int n = 0; n < 20000; ++n) {
        CBoundBox2D const a = draw();
        CBoundBox2D const b = draw();
        bool const bMinIn = a.IsInBox(b.m_ptMin) != 0;
        bool const bMaxIn = a.IsInBox(b.m_ptMax) != 0;
        bool const aMinIn = b.IsInBox(a.m_ptMin) != 0;
        bool const aMaxIn = b.IsInBox(a.m_ptMax) != 0;
        int nExpected = 3;
        if (bMinIn && bMaxIn) {
            nExpected = 0;
        } else if (!bMinIn && !bMaxIn && aMinIn && aMaxIn) {
            nExpected = 1;
        } else if (!bMinIn && !bMaxIn && !aMinIn && !aMaxIn &&
                   (a.m_ptMin.x > b.m_ptMax.x || b.m_ptMin.x > a.m_ptMax.x || a.m_ptMin.y > b.m_ptMax.y ||
                    b.m_ptMin.y > a.m_ptMax.y)) {
            nExpected = 2;
        }
        ASSERT_EQ(nExpected, BoxRelation(a, b));
        ++counts[nExpected];
    }
    for (int const nCount : counts) EXPECT_GT(nCount, 0);
}

TEST(BoundBox2D, APointOnAnySideIsInItsLimitsAlready) {
    CBoundBox2D const box = Box2(1, 2, 5, 7);
    for (double const x : {1.0, 3.0, 5.0}) {
        for (double const y : {2.0, 3.0, 7.0}) {
            CPoint2D point(x, y);
            EXPECT_EQ(box.LimitPointInBox(point), 1) << x << ' ' << y;
            EXPECT_EQ(point.x, x);
            EXPECT_EQ(point.y, y);
        }
    }
    for (double const x : {0.5, 1.0, 5.0, 5.5}) {
        for (double const y : {1.5, 2.0, 7.0, 7.5}) {
            CPoint2D point(x, y);
            bool const bInside = x >= 1 && x <= 5 && y >= 2 && y <= 7;
            EXPECT_EQ(box.LimitPointInBox(point), bInside ? 1 : 0) << x << ' ' << y;
            EXPECT_EQ(point.x, x < 3 ? std::max(x, 1.0) : std::min(x, 5.0));
            EXPECT_EQ(point.y, y < 3 ? std::max(y, 2.0) : std::min(y, 7.0));
        }
    }
}
