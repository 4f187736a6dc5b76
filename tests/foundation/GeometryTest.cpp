#include "foundation/Geometry.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>

#include "foundation/Vec3f.h"

namespace {

using std::numbers::pi;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

bool SameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void ExpectPoint(double x, double y, CPoint2D const& point, double dTolerance = 0.0) {
    EXPECT_NEAR(x, point.x, dTolerance);
    EXPECT_NEAR(y, point.y, dTolerance);
}

void ExpectAttributes(float fAttr1, float fAttr2, CPoint2D const& point) {
    EXPECT_EQ(fAttr1, point.m_fAttr1);
    EXPECT_EQ(fAttr2, point.m_fAttr2);
}

CPoint2D WithAttributes(double x, double y, float fAttr1, float fAttr2) {
    CPoint2D point(x, y);
    point.m_fAttr1 = fAttr1;
    point.m_fAttr2 = fAttr2;
    return point;
}

CPoint3D RandomPoint(std::mt19937& random, double dSize) {
    std::uniform_real_distribution<double> coordinate(-dSize, dSize);
    double const x = coordinate(random);
    double const y = coordinate(random);
    return CPoint3D(x, y, coordinate(random));
}

Vec3f Narrowed(CPoint3D const& p) {
    return Vec3f(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
}

CPoint3D CrossProduct(CPoint3D const& a, CPoint3D const& b) {
    return CPoint3D(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

double Length(CPoint3D const& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

// CalArea, step by step with the public vector type.
double AreaByVectors(CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
    CPoint3D const n = CrossProduct(b - a, c - a);
    double const dLength = Length(n);
    if (dLength < 1e-8) return 0.0;
    Vec3f normal = Narrowed(n);
    normal = Vec3f(static_cast<float>(normal.x / dLength), static_cast<float>(normal.y / dLength),
                   static_cast<float>(normal.z / dLength));
    Vec3f const p = Narrowed(a);
    Vec3f const q = Narrowed(b);
    Vec3f const r = Narrowed(c);
    Vec3f const s = Cross(p, q) + Cross(q, r) + Cross(r, p);
    return std::fabs(Dot(s, normal) * 0.5);
}

// DisofPtoPlaneWithSign, likewise.
double PlaneDistanceByVectors(CPoint3D const& p, CPoint3D const& a, CPoint3D const& b, CPoint3D const& c) {
    CPoint3D n = CrossProduct(a - c, b - c);
    double const dLength = Length(n);
    if (dLength < 1e-8) return 0.0;
    n = CPoint3D(n.x / dLength, n.y / dLength, n.z / dLength);
    Vec3f const narrowed = Narrowed(a);
    CPoint3D const w(narrowed.x - p.x, narrowed.y - p.y, narrowed.z - p.z);
    return Dot(Narrowed(w), Narrowed(n));
}

}  // namespace

// ---- Distances and sides

TEST(Geometry, CrossIsPositiveTowardsTheLeft) {
    EXPECT_EQ(1.0, Cross(CPoint2D(1.0, 0.0), CPoint2D(0.0, 1.0)));
    EXPECT_EQ(-2.0, Cross(CPoint2D(1.0, 2.0), CPoint2D(3.0, 4.0)));
}

TEST(Geometry, SquaredDistanceOfPoints) {
    EXPECT_EQ(25.0, D2ofPtoP(CPoint2D(1.0, 1.0), CPoint2D(4.0, 5.0)));
    EXPECT_EQ(49.0, D2ofPtoP(CPoint3D(1.0, 1.0, 1.0), CPoint3D(3.0, 4.0, 7.0)));
}

TEST(Geometry, SquaredDistanceLeavesAttributesOut) {
    EXPECT_EQ(0.0, D2ofPtoP(WithAttributes(1.0, 2.0, 3.0f, 4.0f), CPoint2D(1.0, 2.0)));
}

TEST(Geometry, SideOfLineIsPositiveOnTheRight) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(0.0, 2.0);
    EXPECT_EQ(6.0, SideofLine(CPoint2D(3.0, 1.0), a, b));
    EXPECT_EQ(-6.0, SideofLine(CPoint2D(-3.0, 1.0), a, b));
}

TEST(Geometry, SideOfLineIsZeroOneMillionthFromTheLine) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(0.0, 1.0);
    EXPECT_EQ(0.0, SideofLine(CPoint2D(1e-6, 0.5), a, b));
    EXPECT_EQ(0.0, SideofLine(CPoint2D(-1e-6, 0.5), a, b));
}

TEST(Geometry, SideOfLineIsSignedOneTenThousandthFromTheLine) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(0.0, 1.0);
    EXPECT_EQ(1e-4, SideofLine(CPoint2D(1e-4, 0.5), a, b));
    EXPECT_EQ(-1e-4, SideofLine(CPoint2D(-1e-4, 0.5), a, b));
}

TEST(Geometry, SideOfLineGoesByTheDistanceNotByTheLengthOfTheSegment) {
    // The product is 0.01, the distance 0.000001.
    EXPECT_EQ(0.0, SideofLine(CPoint2D(1e-6, 0.0), CPoint2D(0.0, 0.0), CPoint2D(0.0, 1e4)));
}

TEST(Geometry, SideOfALineWithoutDirectionIsZero) {
    EXPECT_EQ(0.0, SideofLine(CPoint2D(3.0, 4.0), CPoint2D(1.0, 1.0), CPoint2D(1.0, 1.0)));
}

TEST(Geometry, DistanceFromTheInfiniteLine) {
    CPoint2D p(2.0, 3.0);
    CPoint2D a(0.0, 0.0);
    CPoint2D b(4.0, 0.0);
    EXPECT_EQ(9.0, D2ofPtoLine(p, a, b));
}

TEST(Geometry, DistanceFromAShortLineIsThatFromItsStart) {
    CPoint2D p(3.0, 4.0);
    CPoint2D a(0.0, 0.0);
    CPoint2D coincident(0.0, 0.0);
    EXPECT_EQ(25.0, D2ofPtoLine(p, a, coincident));
    CPoint2D near(5e-5, 0.0);  // squared length 2.5e-9
    EXPECT_EQ(25.0, D2ofPtoLine(p, a, near));
    CPoint2D far(2e-4, 0.0);  // squared length 4e-8
    EXPECT_NEAR(16.0, D2ofPtoLine(p, a, far), 1e-12);
}

TEST(Geometry, BesideTheSegmentTheDistanceIsThatFromTheLine) {
    EXPECT_EQ(9.0, CalMinD2ofPtoLine(CPoint2D(2.0, 3.0), CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0)));
}

TEST(Geometry, PastAnEndTheSegmentIsAsFarAsThatEndAndTheLineIsNearer) {
    CPoint2D a(0.0, 0.0);
    CPoint2D b(4.0, 0.0);
    CPoint2D pastEnd(7.0, 4.0);
    EXPECT_EQ(25.0, CalMinD2ofPtoLine(pastEnd, a, b));
    EXPECT_EQ(16.0, D2ofPtoLine(pastEnd, a, b));
    CPoint2D beforeStart(-3.0, 4.0);
    EXPECT_EQ(25.0, CalMinD2ofPtoLine(beforeStart, a, b));
    EXPECT_EQ(16.0, D2ofPtoLine(beforeStart, a, b));
}

TEST(Geometry, SegmentWithoutLengthIsAsFarAsItsPoint) {
    EXPECT_EQ(25.0, CalMinD2ofPtoLine(CPoint2D(3.0, 4.0), CPoint2D(0.0, 0.0), CPoint2D(0.0, 0.0)));
}

// Too short to have a direction: the distance from the line is that from its start, also at the end.
TEST(Geometry, TheEndsOfAShortSegmentAreAtNoDistance) {
    for (double const dLength : {1e-5, 5e-5, 1e-3, 1.0}) {
        CPoint2D const a(0.0, 0.0);
        CPoint2D const b(dLength, 0.0);
        EXPECT_EQ(0.0, CalMinD2ofPtoLine(a, a, b));
        EXPECT_EQ(0.0, CalMinD2ofPtoLine(b, a, b));
    }
    // Beside the ends at a right angle.
    EXPECT_EQ(16.0, CalMinD2ofPtoLine(CPoint2D(1e-5, 4.0), CPoint2D(0.0, 0.0), CPoint2D(1e-5, 0.0)));
    EXPECT_EQ(16.0, CalMinD2ofPtoLine(CPoint2D(4.0, 4.0), CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0)));
    EXPECT_EQ(16.0, CalMinD2ofPtoLine(CPoint2D(0.0, 4.0), CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0)));
}

// So far from the end that both squares are rounded to 65536: the point counts as beside the start, at the
// distance from it, and not at that from the line, which is 2^-44.
TEST(Geometry, APointThatRoundingPutsBesideTheStartIsAsFarAsThat) {
    CPoint2D p(std::ldexp(1.0, -46), std::ldexp(1.0, -22));
    CPoint2D a(0.0, 0.0);
    CPoint2D b(256.0, 0.0);
    EXPECT_EQ(std::ldexp(1.0, -44), D2ofPtoLine(p, a, b));
    EXPECT_EQ(std::ldexp(1.0, -44) + std::ldexp(1.0, -92), CalMinD2ofPtoLine(p, a, b));
}

TEST(Geometry, DistanceFromALineInSpace) {
    CPoint3D p(0.0, 3.0, 4.0);
    CPoint3D a(0.0, 0.0, 0.0);
    CPoint3D b(2.0, 0.0, 0.0);
    // The float normal (0, -0.8, 0.6) rounds the area.
    EXPECT_NEAR(5.0, DisofPtoLine(p, a, b), 1e-6);
}

TEST(Geometry, DistanceFromALineWithoutDirectionIsNotANumber) {
    CPoint3D p(0.0, 3.0, 4.0);
    CPoint3D a(1.0, 1.0, 1.0);
    EXPECT_TRUE(std::isnan(DisofPtoLine(p, a, a)));
}

TEST(Geometry, DistanceFromAPlaneIsPositiveAgainstTheNormal) {
    CPoint3D a(1.0, 0.0, 0.0);
    CPoint3D b(0.0, 1.0, 0.0);
    CPoint3D c(0.0, 0.0, 0.0);
    CPoint3D below(5.0, 6.0, -2.0);
    CPoint3D above(5.0, 6.0, 2.0);
    EXPECT_EQ(2.0, DisofPtoPlaneWithSign(below, a, b, c));
    EXPECT_EQ(-2.0, DisofPtoPlaneWithSign(above, a, b, c));
    EXPECT_EQ(2.0, DisofPtoPlane(below, a, b, c));
    EXPECT_EQ(2.0, DisofPtoPlane(above, a, b, c));
}

TEST(Geometry, DistanceFromAPlaneWithoutNormalIsZero) {
    CPoint3D a(0.0, 0.0, 0.0);
    CPoint3D b(1.0, 0.0, 0.0);
    CPoint3D c(2.0, 0.0, 0.0);
    CPoint3D p(0.0, 0.0, 7.0);
    EXPECT_EQ(0.0, DisofPtoPlaneWithSign(p, a, b, c));
    EXPECT_EQ(0.0, DisofPtoPlane(p, a, b, c));
}

TEST(Geometry, DistanceFromAPlaneIsRoundedToFloat) {
    CPoint3D a(1.0, 0.0, 0.1);
    CPoint3D b(0.0, 1.0, 0.1);
    CPoint3D c(0.0, 0.0, 0.1);
    CPoint3D p(0.0, 0.0, 0.0);
    EXPECT_EQ(static_cast<double>(0.1f), DisofPtoPlaneWithSign(p, a, b, c));
}

TEST(Geometry, AreaAndPlaneDistanceRoundAsTheVectorTypeDoes) {
    std::mt19937 random(17);
    for (int i = 0; i < 20000; ++i) {
        double const dSize = i % 2 == 0 ? 100.0 : 1e-4;
        CPoint3D a = RandomPoint(random, dSize);
        CPoint3D b = RandomPoint(random, dSize);
        CPoint3D c = RandomPoint(random, dSize);
        CPoint3D p = RandomPoint(random, dSize);
        EXPECT_TRUE(SameBits(AreaByVectors(a, b, c), CalArea(a, b, c)));
        double const dDistance = PlaneDistanceByVectors(p, a, b, c);
        EXPECT_TRUE(SameBits(dDistance, DisofPtoPlaneWithSign(p, a, b, c)));
        EXPECT_TRUE(SameBits(std::fabs(dDistance), DisofPtoPlane(p, a, b, c)));
    }
}

// ---- Areas and circles

TEST(Geometry, AreaOfATriangle) {
    CPoint3D a(0.0, 0.0, 5.0);
    CPoint3D b(4.0, 0.0, 5.0);
    CPoint3D c(0.0, 3.0, 5.0);
    EXPECT_EQ(6.0, CalArea(a, b, c));
    EXPECT_EQ(6.0, CalArea(a, c, b));
}

TEST(Geometry, AreaOfADegenerateTriangleIsZero) {
    CPoint3D a(0.1, 0.2, 0.3);
    CPoint3D b(0.1, 0.2, 0.3);
    CPoint3D c(5.0, 6.0, 7.0);
    EXPECT_EQ(0.0, CalArea(a, b, c));
    CPoint3D small(9e-5, 0.0, 0.0);  // doubled area 8.1e-9
    CPoint3D smallUp(0.0, 9e-5, 0.0);
    CPoint3D origin;
    EXPECT_EQ(0.0, CalArea(origin, small, smallUp));
    CPoint3D larger(2e-4, 0.0, 0.0);  // doubled area 1.8e-8
    EXPECT_NEAR(9e-9, CalArea(origin, larger, smallUp), 1e-14);
}

TEST(Geometry, CircleThroughARightTriangleIsARadiusInThePlane) {
    CPoint2D a(4.0, 0.0);
    CPoint2D b(0.0, 0.0);
    CPoint2D c(0.0, 3.0);
    EXPECT_EQ(2.5, CalCircumRadius(a, b, c));
    EXPECT_EQ(2.5, CalCircumRadius(c, b, a));
}

TEST(Geometry, CircleThroughARightTriangleIsADiameterInSpace) {
    CPoint3D a(4.0, 0.0, 1.0);
    CPoint3D b(0.0, 0.0, 1.0);
    CPoint3D c(0.0, 3.0, 1.0);
    EXPECT_EQ(5.0, CalCircumRadius(a, b, c));
    EXPECT_NEAR(5.0, CalCircumRadius(b, a, c), 1e-14);
}

TEST(Geometry, CircleThroughPointsOnALineIsHugeInSpace) {
    CPoint3D a(0.0, 0.0, 0.0);
    CPoint3D b(1.0, 0.0, 0.0);
    CPoint3D c(2.0, 0.0, 0.0);
    EXPECT_EQ(1e10, CalCircumRadius(a, b, c));
    EXPECT_EQ(1e10, CalCircumRadius(b, a, c));
}

TEST(Geometry, CircleThroughPointsOnALineIsInfiniteOrNotANumberInThePlane) {
    CPoint2D a(0.0, 0.0);
    CPoint2D b(1.0, 0.0);
    CPoint2D c(2.0, 0.0);
    EXPECT_EQ(kInfinity, CalCircumRadius(a, b, c));
    EXPECT_TRUE(std::isnan(CalCircumRadius(a, a, a)));
}

TEST(Geometry, CircleInSpaceAtACoincidentMiddleIsNotANumber) {
    CPoint3D a(0.0, 0.0, 0.0);
    CPoint3D c(2.0, 0.0, 0.0);
    EXPECT_TRUE(std::isnan(CalCircumRadius(a, a, c)));
}

// ---- Angles

TEST(Geometry, DirectionInRadians) {
    EXPECT_EQ(pi / 2.0, CalAngleRad(CPoint2D(3.0, 4.0), CPoint2D(3.0, 9.0)));
    EXPECT_EQ(pi, CalAngleRad(CPoint2D(-2.0, 0.0)));
    EXPECT_EQ(0.0, CalAngleRad(CPoint2D(1.0, 1.0), CPoint2D(1.0, 1.0)));
}

TEST(Geometry, DegreesUseAFactorOfTwelveDecimals) {
    EXPECT_EQ((pi / 2.0) * 57.295779513082, CalAngleDeg(CPoint2D(3.0, 4.0), CPoint2D(3.0, 9.0)));
    EXPECT_EQ(pi * 57.295779513082, CalAngleDeg(CPoint2D(-2.0, 0.0)));
    EXPECT_NE(180.0, CalAngleDeg(CPoint2D(-2.0, 0.0)));
}

TEST(Geometry, TurnAcrossTheBackIsTakenTheShortWay) {
    EXPECT_NEAR(2.0 * pi - 6.0, CalAngleChange(3.0, -3.0), 1e-15);
    EXPECT_GT(CalAngleChange(3.0, -3.0), 0.0);
    EXPECT_NEAR(6.0 - 2.0 * pi, CalAngleChange(-3.0, 3.0), 1e-15);
}

TEST(Geometry, HalfATurnIsPositive) {
    EXPECT_EQ(pi, CalAngleChange(0.0, pi));
    EXPECT_EQ(pi, CalAngleChange(pi, 0.0));
}

TEST(Geometry, TurnTakesOffOneTurnOnly) { EXPECT_EQ(20.0 - 2.0 * pi, CalAngleChange(0.0, 20.0)); }

TEST(Geometry, AngleOfParallelVectorsIsZeroAndOfOppositeOnesIs180) {
    CPoint3D a(1.0, 1.0, 1.0);
    CPoint3D b(2.0, 3.0, 4.0);
    CPoint3D c(0.0, 0.0, 0.0);
    CPoint3D d(1.0, 2.0, 3.0);
    EXPECT_EQ(0.0, CalAngle(a, b, c, d));
    EXPECT_EQ(180.0, CalAngle(a, b, d, c));
}

TEST(Geometry, AngleOfVectorsInDegrees) {
    CPoint3D o(0.0, 0.0, 0.0);
    CPoint3D x(2.0, 0.0, 0.0);
    CPoint3D y(0.0, 3.0, 0.0);
    CPoint3D diagonal(1.0, 1.0, 0.0);
    CPoint3D back(-1.0, 1.0, 0.0);
    EXPECT_EQ(90.0, CalAngle(o, x, o, y));
    EXPECT_NEAR(45.0, CalAngle(o, x, o, diagonal), 1e-5);
    EXPECT_NEAR(135.0, CalAngle(o, x, o, back), 1e-5);
}

TEST(Geometry, AngleOfAVectorWithoutLengthIsZero) {
    CPoint3D o(0.0, 0.0, 0.0);
    CPoint3D x(2.0, 0.0, 0.0);
    EXPECT_EQ(0.0, CalAngle(o, o, o, x));
    EXPECT_EQ(0.0, CalAngle(o, x, x, x));
}

// ---- Intersection and containment

TEST(Geometry, LinesThatShareAnEndIntersectThere) {
    CPoint2D out;
    EXPECT_EQ(1, LineIntersect(CPoint2D(0.0, 0.0), CPoint2D(2.0, 0.0), CPoint2D(2.0, 0.0), CPoint2D(2.0, 3.0),
                               &out));
    ExpectPoint(2.0, 0.0, out);
    EXPECT_EQ(1, LineIntersect(CPoint2D(2.0, 0.0), CPoint2D(0.0, 0.0), CPoint2D(2.0, 0.0), CPoint2D(2.0, 3.0),
                               &out));
    ExpectPoint(2.0, 0.0, out);
}

TEST(Geometry, LinesThatCrossIntersectInTheMiddle) {
    CPoint2D out = WithAttributes(9.0, 9.0, 5.0f, 6.0f);
    EXPECT_EQ(1, LineIntersect(WithAttributes(0.0, 0.0, 1.0f, 2.0f), CPoint2D(2.0, 2.0), CPoint2D(0.0, 2.0),
                               CPoint2D(2.0, 0.0), &out));
    ExpectPoint(1.0, 1.0, out);
    ExpectAttributes(0.0f, 0.0f, out);
}

TEST(Geometry, LinesThatDoNotReachEachOtherStillGiveTheMeetingPoint) {
    CPoint2D out;
    // Beyond the end of the first segment.
    EXPECT_EQ(0, LineIntersect(CPoint2D(0.0, 0.0), CPoint2D(1.0, 0.0), CPoint2D(5.0, -1.0),
                               CPoint2D(5.0, 1.0), &out));
    ExpectPoint(5.0, 0.0, out);
    // Beyond the end of the second.
    EXPECT_EQ(0, LineIntersect(CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0), CPoint2D(1.0, 2.0), CPoint2D(1.0, 1.0),
                               &out));
    ExpectPoint(1.0, 0.0, out);
    // Before the start of either.
    EXPECT_EQ(0, LineIntersect(CPoint2D(2.0, 0.0), CPoint2D(4.0, 0.0), CPoint2D(1.0, 1.0), CPoint2D(1.0, 2.0),
                               &out));
    ExpectPoint(1.0, 0.0, out);
}

TEST(Geometry, CollinearLinesDoNotIntersectAndLeaveTheOutputAlone) {
    CPoint2D out = WithAttributes(8.0, 9.0, 5.0f, 6.0f);
    EXPECT_EQ(0, LineIntersect(CPoint2D(0.0, 0.0), CPoint2D(2.0, 2.0), CPoint2D(1.0, 1.0), CPoint2D(3.0, 3.0),
                               &out));
    EXPECT_EQ(0, LineIntersect(CPoint2D(0.0, 0.0), CPoint2D(2.0, 2.0), CPoint2D(1.0, 0.0), CPoint2D(3.0, 2.0),
                               &out));
    ExpectPoint(8.0, 9.0, out);
    ExpectAttributes(5.0f, 6.0f, out);
}

TEST(Geometry, MeetingPointMayReplaceOneOfThePoints) {
    CPoint2D a(0.0, 0.0);
    CPoint2D c(1.0, -1.0);
    EXPECT_EQ(1, LineIntersect(a, CPoint2D(4.0, 0.0), c, CPoint2D(1.0, 1.0), &c));
    ExpectPoint(1.0, 0.0, c);
    EXPECT_EQ(1, LineIntersect(a, CPoint2D(4.0, 0.0), CPoint2D(3.0, 1.0), CPoint2D(3.0, -1.0), &a));
    ExpectPoint(3.0, 0.0, a);
}

TEST(Geometry, UnitSegmentsThatCrossDoAndTheSameAHundredTimesSmallerDoNot) {
    CPoint2D const a(-0.5, 0.0);
    CPoint2D const b(0.5, 0.0);
    CPoint2D const c(0.0, -0.5);
    CPoint2D const d(0.0, 0.5);
    EXPECT_EQ(1, IsInterSect(a, b, c, d));
    EXPECT_EQ(1, IsInterSect(c, d, b, a));
    EXPECT_EQ(0, IsInterSect(a * 0.01, b * 0.01, c * 0.01, d * 0.01));
}

TEST(Geometry, SegmentsThatTouchDoNotCross) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(10.0, 0.0);
    EXPECT_EQ(0, IsInterSect(a, b, b, CPoint2D(10.0, 10.0)));
    EXPECT_EQ(0, IsInterSect(a, b, CPoint2D(5.0, 0.0), CPoint2D(5.0, 10.0)));
    EXPECT_EQ(0, IsInterSect(CPoint2D(5.0, 0.0), CPoint2D(5.0, 10.0), a, b));
    EXPECT_EQ(0, IsInterSect(a, b, CPoint2D(5.0, 1.0), CPoint2D(5.0, 10.0)));
}

TEST(Geometry, CrossingNeedsTheEndsOnBothSidesOfBothSegments) {
    // The line of each in turn separates the ends of the other, the segments do not meet.
    EXPECT_EQ(0,
              IsInterSect(CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0), CPoint2D(9.0, -5.0), CPoint2D(9.0, 5.0)));
    EXPECT_EQ(0,
              IsInterSect(CPoint2D(9.0, -5.0), CPoint2D(9.0, 5.0), CPoint2D(0.0, 0.0), CPoint2D(4.0, 0.0)));
}

TEST(Geometry, ProductOfAreasOnTheThresholdIsNoCrossing) {
    // Doubled areas of 1 and -0.01.
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(1.0, 0.0);
    EXPECT_EQ(0, IsInterSect(a, b, CPoint2D(0.5, 1.0), CPoint2D(0.5, -0.01)));
    EXPECT_EQ(1, IsInterSect(a, b, CPoint2D(0.5, 1.0), CPoint2D(0.5, -0.0101)));
}

TEST(Geometry, CornerOfATriangleIsOutside) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(4.0, 0.0);
    CPoint2D const c(0.0, 4.0);
    EXPECT_EQ(0, IsInTriangle(a, b, c, a));
    EXPECT_EQ(0, IsInTriangle(a, b, c, b));
    EXPECT_EQ(0, IsInTriangle(a, b, c, c));
    EXPECT_EQ(0, IsInTriangle(a, b, c, CPoint2D(0.00009, 0.00009)));
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(0.00011, 0.00009)));
}

TEST(Geometry, MiddleOfAnEdgeAndInsideOfACounterClockwiseTriangleAreInside) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(4.0, 0.0);
    CPoint2D const c(0.0, 4.0);
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(2.0, 0.0)));
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(2.0, 2.0)));
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(0.0, 2.0)));
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(1.0, 1.0)));
    EXPECT_EQ(0, IsInTriangle(a, b, c, CPoint2D(2.0, -0.001)));
    EXPECT_EQ(0, IsInTriangle(a, b, c, CPoint2D(2.1, 2.0)));
    EXPECT_EQ(0, IsInTriangle(a, b, c, CPoint2D(-0.001, 2.0)));
}

TEST(Geometry, InsideOfAClockwiseTriangleIsOutside) {
    EXPECT_EQ(0,
              IsInTriangle(CPoint2D(0.0, 0.0), CPoint2D(0.0, 4.0), CPoint2D(4.0, 0.0), CPoint2D(1.0, 1.0)));
}

TEST(Geometry, ClockwiseTriangleAHairWideHoldsPoints) {
    // Twice the area is 1e-6: no point of it lies more than that to the right of an edge.
    EXPECT_EQ(
        1, IsInTriangle(CPoint2D(0.0, 0.0), CPoint2D(0.5, 1e-6), CPoint2D(1.0, 0.0), CPoint2D(0.25, 2e-7)));
}

// ---- Construction of points

TEST(Geometry, ExtendLineGoesOnFromTheChosenEndAndKeepsItsAttributes) {
    CPoint2D a = WithAttributes(1.0, 1.0, 1.0f, 2.0f);
    CPoint2D b = WithAttributes(4.0, 5.0, 3.0f, 4.0f);
    CPoint2D const fromStart = ExtendLine(&a, &b, 5.0, 1);
    ExpectPoint(4.0, 5.0, fromStart, 1e-14);
    ExpectAttributes(1.0f, 2.0f, fromStart);
    for (int nFrom : {0, 2, -1}) {
        CPoint2D const fromEnd = ExtendLine(&a, &b, 5.0, nFrom);
        ExpectPoint(7.0, 9.0, fromEnd, 1e-14);
        ExpectAttributes(3.0f, 4.0f, fromEnd);
    }
    ExpectPoint(1.0, 1.0, ExtendLine(&a, &b, -5.0, 2), 1e-14);
}

TEST(Geometry, ExtendLineOfCoincidentPointsGoesAlongX) {
    CPoint2D a(2.0, 3.0);
    CPoint2D b(2.0, 3.0);
    ExpectPoint(9.0, 3.0, ExtendLine(&a, &b, 7.0, 1));
    ExpectPoint(9.0, 3.0, ExtendLine(&a, &b, 7.0, 2));
}

TEST(Geometry, ExtendLineWithAngleTurnsTheDirection) {
    CPoint2D a = WithAttributes(1.0, 1.0, 1.0f, 2.0f);
    CPoint2D b = WithAttributes(4.0, 1.0, 3.0f, 4.0f);
    CPoint2D const left = ExtendLineWithAngle(&a, &b, 2.0, pi / 2.0, 1);
    ExpectPoint(1.0, 3.0, left, 1e-14);
    ExpectAttributes(1.0f, 2.0f, left);
    CPoint2D const right = ExtendLineWithAngle(&a, &b, 2.0, -pi / 2.0, 0);
    ExpectPoint(4.0, -1.0, right, 1e-14);
    ExpectAttributes(3.0f, 4.0f, right);
}

TEST(Geometry, ArcWithAChordLongerThanTheDiameterGivesItsStart) {
    CPoint2D a = WithAttributes(1.0, 2.0, 3.0f, 4.0f);
    CPoint2D b(5.0, 2.0);
    for (double const dRadius : {1.9, -1.9, 0.0}) {
        CPoint2D const result = ExtendArc(&a, &b, dRadius, 1.0);
        ExpectPoint(1.0, 2.0, result);
        ExpectAttributes(3.0f, 4.0f, result);
    }
}

TEST(Geometry, ArcOverADiameterStartsAtTheMirroredDirection) {
    // The centre is (0, 0) up to rounding. Its direction to a is pi; sine for x and cosine for y make (0,
    // -2).
    CPoint2D a = WithAttributes(-2.0, 0.0, 3.0f, 4.0f);
    CPoint2D b(2.0, 0.0);
    CPoint2D const start = ExtendArc(&a, &b, 2.0, 0.0);
    ExpectPoint(0.0, -2.0, start, 1e-12);
    ExpectAttributes(0.0f, 0.0f, start);
    // A quarter of the circle takes the angle from pi to pi/2, whatever the sign of the radius.
    ExpectPoint(2.0, 0.0, ExtendArc(&a, &b, 2.0, pi), 1e-12);
    ExpectPoint(2.0, 0.0, ExtendArc(&a, &b, -2.0, pi), 1e-12);
}

TEST(Geometry, ArcLaysItsCentreOffWithSineForXAndCosineForY) {
    // Chord along +x of length 6, radius 5: the height of the centre is 4, its direction -pi/2 for a positive
    // radius, so the centre is (3 - 4, 0). From there a lies at (1, 0), direction 0: offset (0, 5).
    CPoint2D a(0.0, 0.0);
    CPoint2D b(6.0, 0.0);
    ExpectPoint(-1.0, 5.0, ExtendArc(&a, &b, 5.0, 0.0), 1e-12);
    // On the other side the centre is (3 + 4, 0), and a lies at (-7, 0), direction pi: offset (0, -5).
    ExpectPoint(7.0, -5.0, ExtendArc(&a, &b, -5.0, 0.0), 1e-12);
}

// ---- Matrices

TEST(Geometry, MultiMatrixReplacesTheFirstMatrixByTheProduct) {
    double m[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}};
    double n[3][3] = {{2, 0, 1}, {0, 3, 0}, {1, 1, 1}};
    double const product[3][3] = {{5, 9, 4}, {14, 21, 10}, {24, 34, 17}};
    double const second[3][3] = {{2, 0, 1}, {0, 3, 0}, {1, 1, 1}};
    MultiMatrix(m, n);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(product[i][j], m[i][j]);
            EXPECT_EQ(second[i][j], n[i][j]);
        }
    }
}

TEST(Geometry, MultiMatrixOfAMatrixWithItselfIsItsSquare) {
    double m[3][3] = {{1, 1, 0}, {0, 1, 0}, {2, 3, 1}};
    double const square[3][3] = {{1, 2, 0}, {0, 1, 0}, {4, 8, 1}};
    MultiMatrix(m, m);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) EXPECT_EQ(square[i][j], m[i][j]);
    }
}

// ---- What is not a number

TEST(Geometry, CoordinatesThatAreNoNumbersGiveNoNumbers) {
    CPoint2D p(kNotANumber, 0.0);
    CPoint2D a(0.0, 0.0);
    CPoint2D b(4.0, 0.0);
    EXPECT_TRUE(std::isnan(D2ofPtoP(p, a)));
    EXPECT_TRUE(std::isnan(SideofLine(p, a, b)));
    EXPECT_TRUE(std::isnan(D2ofPtoLine(p, a, b)));
    EXPECT_TRUE(std::isnan(CalMinD2ofPtoLine(p, a, b)));
    EXPECT_EQ(0, IsInterSect(a, b, p, p));
    CPoint3D q(0.0, 0.0, kNotANumber);
    CPoint3D c(0.0, 1.0, 0.0);
    CPoint3D d(1.0, 0.0, 0.0);
    EXPECT_TRUE(std::isnan(CalArea(q, c, d)));
    EXPECT_TRUE(std::isnan(DisofPtoPlane(q, c, d, c)) || DisofPtoPlane(q, c, d, c) == 0.0);
}

TEST(IsInterSect, EndsThatAreJustTheLeastAreaApartDoNotCross) {
    CPoint2D const c(0.0, 0.0);
    CPoint2D const d(1.0, 0.0);
    CPoint2D const below(0.5, -1.0);
    // Doubled areas of 0.01 and -1 on the two sides of the line from c to d.
    EXPECT_EQ(0, IsInterSect(CPoint2D(0.5, 0.01), below, c, d));
    EXPECT_EQ(0, IsInterSect(c, d, CPoint2D(0.5, 0.01), below));
    EXPECT_EQ(1, IsInterSect(CPoint2D(0.5, 0.011), below, c, d));
    EXPECT_EQ(1, IsInterSect(c, d, CPoint2D(0.5, 0.011), below));
}

TEST(IsInTriangle, APointJustTheLeastAreaOutsideIsIn) {
    CPoint2D const a(0.0, 0.0);
    CPoint2D const b(1.0, 0.0);
    CPoint2D const c(0.0, 1.0);
    EXPECT_EQ(1, IsInTriangle(a, b, c, CPoint2D(0.25, -1e-6)));
    EXPECT_EQ(0, IsInTriangle(a, b, c, CPoint2D(0.25, -1.01e-6)));
    EXPECT_EQ(1, IsInTriangle(b, c, a, CPoint2D(0.25, -1e-6)));
    EXPECT_EQ(0, IsInTriangle(b, c, a, CPoint2D(0.25, -1.01e-6)));
}

TEST(D2ofPtoLine, ALineOfJustTheLeastLengthIsAPoint) {
    ASSERT_EQ(1e-8, 1e-4 * 1e-4);
    CPoint2D p(3.0, 4.0);
    CPoint2D a(0.0, 0.0);
    CPoint2D least(1e-4, 0.0);
    EXPECT_EQ(25.0, D2ofPtoLine(p, a, least));
    CPoint2D longer(1.01e-4, 0.0);
    EXPECT_NEAR(16.0, D2ofPtoLine(p, a, longer), 1e-9);
}
