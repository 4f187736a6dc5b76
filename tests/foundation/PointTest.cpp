#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>

#include "foundation/Point.h"

namespace {

CPoint2D WithAttributes(double x, double y, float fAttr1, float fAttr2) {
    CPoint2D p(x, y);
    p.m_fAttr1 = fAttr1;
    p.m_fAttr2 = fAttr2;
    return p;
}

void ExpectPoint(CPoint2D const& p, double x, double y, float fAttr1, float fAttr2) {
    EXPECT_EQ(x, p.x);
    EXPECT_EQ(y, p.y);
    EXPECT_EQ(fAttr1, p.m_fAttr1);
    EXPECT_EQ(fAttr2, p.m_fAttr2);
}

void ExpectPoint(CPoint3D const& p, double x, double y, double z) {
    EXPECT_EQ(x, p.x);
    EXPECT_EQ(y, p.y);
    EXPECT_EQ(z, p.z);
}

}  // namespace

TEST(Point, NewPointsAreZero) {
    ExpectPoint(CPoint2D(), 0.0, 0.0, 0.0f, 0.0f);
    ExpectPoint(CPoint3D(), 0.0, 0.0, 0.0);
    ExpectPoint(CPoint2D(1.5, -2.5), 1.5, -2.5, 0.0f, 0.0f);
    ExpectPoint(CPoint3D(1.5, -2.5, 3.5), 1.5, -2.5, 3.5);
}

TEST(Point, CopiesCarryTheAttributes) {
    CPoint2D const source = WithAttributes(1.0, 2.0, 3.0f, 4.0f);
    CPoint2D const copy(source);
    ExpectPoint(copy, 1.0, 2.0, 3.0f, 4.0f);
    CPoint2D target = WithAttributes(9.0, 9.0, 9.0f, 9.0f);
    CPoint2D const& result = target = source;
    EXPECT_EQ(&target, &result);
    ExpectPoint(target, 1.0, 2.0, 3.0f, 4.0f);
}

TEST(Point, AssignmentReturnsAConstReference) {
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<CPoint2D&>() = std::declval<CPoint2D const&>()),
                                CPoint2D const&>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<CPoint3D&>() = std::declval<CPoint3D const&>()),
                                CPoint3D const&>));
}

TEST(Point, AddingAndSubtractingLeaveTheAttributesAlone) {
    CPoint2D p = WithAttributes(1.0, 2.0, 3.0f, 4.0f);
    CPoint2D const q = WithAttributes(10.0, 20.0, 30.0f, 40.0f);
    p += q;
    ExpectPoint(p, 11.0, 22.0, 3.0f, 4.0f);
    p -= WithAttributes(1.0, 1.0, 7.0f, 7.0f);
    ExpectPoint(p, 10.0, 21.0, 3.0f, 4.0f);
    CPoint3D r(1.0, 2.0, 3.0);
    r += CPoint3D(10.0, 20.0, 30.0);
    ExpectPoint(r, 11.0, 22.0, 33.0);
    r -= CPoint3D(1.0, 1.0, 1.0);
    ExpectPoint(r, 10.0, 21.0, 32.0);
}

TEST(Point, ArithmeticReturnsPointsWithAttributesZero) {
    CPoint2D const p = WithAttributes(1.0, 2.0, 3.0f, 4.0f);
    CPoint2D const q = WithAttributes(10.0, 20.0, 30.0f, 40.0f);
    ExpectPoint(p + q, 11.0, 22.0, 0.0f, 0.0f);
    ExpectPoint(p - q, -9.0, -18.0, 0.0f, 0.0f);
    ExpectPoint(p * 2.5, 2.5, 5.0, 0.0f, 0.0f);
    ExpectPoint(CPoint3D(1.0, 2.0, 3.0) - CPoint3D(10.0, 20.0, 40.0), -9.0, -18.0, -37.0);
}

// x' = 2 * 1 + 3 * 4 + 7 = 21, y' = 2 * 2 + 3 * 5 + 8 = 27.
TEST(Point, TransformInThePlaneIsARowVectorProductAndIgnoresTheThirdColumn) {
    double matrix[3][3] = {{1.0, 2.0, 1e300}, {4.0, 5.0, 1e300}, {7.0, 8.0, 1e300}};
    CPoint2D p = WithAttributes(2.0, 3.0, 5.0f, 6.0f);
    p.Transform(matrix);
    ExpectPoint(p, 21.0, 27.0, 5.0f, 6.0f);
}

// x' = 2 + 3 * 5 + 4 * 9 + 13 = 66, y' = 2 * 2 + 3 * 6 + 4 * 10 + 14 = 76, z' = 2 * 3 + 3 * 7 + 4 * 11 + 15
// = 86.
TEST(Point, TransformInSpaceIsARowVectorProductAndIgnoresTheFourthColumn) {
    double matrix[4][4] = {
        {1.0, 2.0, 3.0, 1e300}, {5.0, 6.0, 7.0, 1e300}, {9.0, 10.0, 11.0, 1e300}, {13.0, 14.0, 15.0, 1e300}};
    CPoint3D p(2.0, 3.0, 4.0);
    p.Transform(matrix);
    ExpectPoint(p, 66.0, 76.0, 86.0);
}

TEST(Point, PointsExactlyTheToleranceApartDiffer) {
    CPoint2D const zero2;
    EXPECT_EQ(0, zero2 == CPoint2D(0.0001, 0.0));
    EXPECT_EQ(0, zero2 == CPoint2D(0.0, -0.0001));
    CPoint3D const zero3;
    EXPECT_EQ(0, zero3 == CPoint3D(0.0001, 0.0, 0.0));
    EXPECT_EQ(0, zero3 == CPoint3D(0.0, -0.0001, 0.0));
    EXPECT_EQ(0, zero3 == CPoint3D(0.0, 0.0, 0.0001));
}

TEST(Point, PointsCloserThanTheToleranceOnEveryAxisAreEqual) {
    EXPECT_EQ(1, CPoint2D(1.0, 2.0) == WithAttributes(1.00009, 1.99991, 5.0f, 6.0f));
    EXPECT_EQ(1, CPoint3D(1.0, 2.0, 3.0) == CPoint3D(1.00009, 1.99991, 3.00009));
    EXPECT_EQ(0, CPoint3D(1.0, 2.0, 3.0) == CPoint3D(1.0, 2.0, 3.0002));
    EXPECT_TRUE((std::is_same_v<decltype(CPoint2D() == CPoint2D()), int>));
    EXPECT_TRUE((std::is_same_v<decltype(CPoint3D() == CPoint3D()), int>));
}

TEST(Point, Y1AndY2AreTheTwoHalvesOfTheStorageOfY) {
    CPoint2D p = WithAttributes(1.0, 0.0, 3.0f, 4.0f);
    EXPECT_EQ(static_cast<void*>(&p.y), static_cast<void*>(&p.Y1()));
    EXPECT_EQ(reinterpret_cast<char*>(&p.y) + 4, reinterpret_cast<char*>(&p.Y2()));
    float const first = 1.5f;
    float const second = -2.5f;
    std::memcpy(&p.Y1(), &first, sizeof first);
    std::memcpy(&p.Y2(), &second, sizeof second);
    float stored[2];
    std::memcpy(stored, &p.y, sizeof stored);
    EXPECT_EQ(first, stored[0]);
    EXPECT_EQ(second, stored[1]);
    EXPECT_EQ(3.0f, p.m_fAttr1);
    EXPECT_EQ(4.0f, p.m_fAttr2);
}

TEST(Point, NewEdgesAreZeroAndOthersKeepTheirEnds) {
    ExpectPoint(CEdge2D().m_ptStart, 0.0, 0.0, 0.0f, 0.0f);
    ExpectPoint(CEdge2D().m_ptEnd, 0.0, 0.0, 0.0f, 0.0f);
    ExpectPoint(CEdge3D().m_ptStart, 0.0, 0.0, 0.0);
    ExpectPoint(CEdge3D().m_ptEnd, 0.0, 0.0, 0.0);
    CEdge3D const edge(CPoint3D(1.0, 2.0, 3.0), CPoint3D(4.0, 5.0, 6.0));
    ExpectPoint(edge.m_ptStart, 1.0, 2.0, 3.0);
    ExpectPoint(edge.m_ptEnd, 4.0, 5.0, 6.0);
}

TEST(Point, ReversingAnEdgeSwapsItsEndsWithTheirAttributes) {
    CEdge2D edge(WithAttributes(1.0, 2.0, 3.0f, 4.0f), WithAttributes(5.0, 6.0, 7.0f, 8.0f));
    CEdge2D const copy(edge);
    edge.Reverse();
    ExpectPoint(edge.m_ptStart, 5.0, 6.0, 7.0f, 8.0f);
    ExpectPoint(edge.m_ptEnd, 1.0, 2.0, 3.0f, 4.0f);
    ExpectPoint(copy.m_ptStart, 1.0, 2.0, 3.0f, 4.0f);
    edge = copy;
    ExpectPoint(edge.m_ptEnd, 5.0, 6.0, 7.0f, 8.0f);
}
