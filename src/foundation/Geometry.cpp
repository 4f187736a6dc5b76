#include "foundation/Geometry.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "foundation/Float3.h"

using namespace varnet;

namespace {

using std::numbers::pi;

// Compared with the squared distance from a line: closer points lie on it.
constexpr double kOnLine2 = 1e-10;

// Compared with the squared length of the segment that gives a line its direction: a shorter one has none.
constexpr double kNoDirection2 = 1e-8;

// Compared with the length of the cross product of two edges, twice the area of their triangle: a smaller
// triangle is degenerate.
constexpr double kDegenerateLength = 1e-8;

// Compared with the difference of a cosine's size from 1: three points at such an angle are on a line, and
// their circle has the diameter below.
constexpr double kStraightCosine = 0.0001;
constexpr double kStraightDiameter = 1e10;

// Compared with the product of the lengths of two vectors: shorter ones have no angle.
constexpr double kNoAngle = 1e-8;

// Compared with the product of two doubled areas, in mm^4: the ends of a segment are on both sides of the
// other one when it is below.
constexpr double kBothSides = -0.01;

// Compared with a doubled area, in square millimetres: a point so far to the right of an edge is outside.
constexpr double kOutside = 1e-6;

// Rounded to twelve decimals, as hosts have it; not 180 / pi to the last bit.
constexpr double kDegreesPerRadian = 57.295779513082;

double Length(CPoint3D const& v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

CPoint3D CrossOf(CPoint3D const& a, CPoint3D const& b) {
    return CPoint3D(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

// Narrowed first, then divided in double and narrowed again: the digits of CalArea depend on it.
float NarrowAndDivide(double component, double dLength) {
    return static_cast<float>(static_cast<double>(static_cast<float>(component)) / dLength);
}

// The difference of a narrowed coordinate and a full one, narrowed.
float NarrowDifference(double narrowed, double full) {
    return static_cast<float>(static_cast<double>(static_cast<float>(narrowed)) - full);
}

double Direction(CPoint2D const& v) { return std::atan2(v.y, v.x); }

bool IsOutsideUnitRange(double t) { return t < 0.0 || t > 1.0; }

// Twice the signed area of the triangle a, b, q.
double DoubledArea(CPoint2D const& a, CPoint2D const& b, CPoint2D const& q) {
    return (b.y - q.y) * (a.x - q.x) - (a.y - q.y) * (b.x - q.x);
}

CPoint2D Moved(CPoint2D const& from, double dAngle, double dDist) {
    CPoint2D result(from);
    result += CPoint2D(std::cos(dAngle) * dDist, std::sin(dAngle) * dDist);
    return result;
}

}  // namespace

double Cross(CPoint2D const& a, CPoint2D const& b) { return a.x * b.y - a.y * b.x; }

double D2ofPtoP(CPoint2D const& a, CPoint2D const& b) {
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    return dx * dx + dy * dy;
}

double D2ofPtoP(CPoint3D const& a, CPoint3D const& b) {
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    double const dz = b.z - a.z;
    return dx * dx + dy * dy + dz * dz;
}

double SideofLine(CPoint2D const& p, CPoint2D const& a, CPoint2D const& b) {
    double const dSide = Cross(p - a, b - a);
    return dSide * dSide / D2ofPtoP(a, b) < kOnLine2 ? 0.0 : dSide;
}

double D2ofPtoLine(CPoint2D& p, CPoint2D& a, CPoint2D& b) {
    double const dToStart2 = D2ofPtoP(p, a);
    double const dLength2 = D2ofPtoP(a, b);
    if (!(dLength2 > kNoDirection2)) return dToStart2;
    double const dDot = (p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y);
    return dToStart2 - dDot * dDot / dLength2;
}

double CalMinD2ofPtoLine(CPoint2D p, CPoint2D a, CPoint2D b) {
    double const dToStart2 = D2ofPtoP(p, a);
    double const dToEnd2 = D2ofPtoP(p, b);
    double const dLength2 = D2ofPtoP(a, b);
    // The angle at an end is not acute: that end is the nearest point.
    if (dToEnd2 >= dLength2 + dToStart2) return dToStart2;
    if (dToStart2 >= dLength2 + dToEnd2) return dToEnd2;
    return D2ofPtoLine(p, a, b);
}

double DisofPtoLine(CPoint3D& p, CPoint3D& a, CPoint3D& b) {
    return 2.0 * CalArea(p, a, b) / std::sqrt(D2ofPtoP(a, b));
}

double DisofPtoPlaneWithSign(CPoint3D& p, CPoint3D& a, CPoint3D& b, CPoint3D& c) {
    CPoint3D const n = CrossOf(a - c, b - c);
    double const dLength = Length(n);
    if (dLength < kDegenerateLength) return 0.0;
    Float3 const normal = {static_cast<float>(n.x / dLength), static_cast<float>(n.y / dLength),
                           static_cast<float>(n.z / dLength)};
    Float3 const w = {NarrowDifference(a.x, p.x), NarrowDifference(a.y, p.y), NarrowDifference(a.z, p.z)};
    return static_cast<double>(Dot(w, normal));
}

double DisofPtoPlane(CPoint3D& p, CPoint3D& a, CPoint3D& b, CPoint3D& c) {
    return std::fabs(DisofPtoPlaneWithSign(p, a, b, c));
}

double CalArea(CPoint3D& a, CPoint3D& b, CPoint3D& c) {
    CPoint3D const n = CrossOf(b - a, c - a);
    double const dLength = Length(n);
    if (dLength < kDegenerateLength) return 0.0;
    Float3 const normal = {NarrowAndDivide(n.x, dLength), NarrowAndDivide(n.y, dLength),
                           NarrowAndDivide(n.z, dLength)};
    return AreaAlong(normal, ToFloat3(a), ToFloat3(b), ToFloat3(c));
}

double CalCircumRadius(CPoint2D& a, CPoint2D& b, CPoint2D& c) {
    double const dProduct2 = D2ofPtoP(a, b) * D2ofPtoP(b, c) * D2ofPtoP(c, a);
    return std::fabs(std::sqrt(dProduct2) / (2.0 * Cross(b - a, c - a)));
}

double CalCircumRadius(CPoint3D& a, CPoint3D& b, CPoint3D& c) {
    double const p = std::sqrt(D2ofPtoP(a, b));
    double const q = std::sqrt(D2ofPtoP(b, c));
    double const r = std::sqrt(D2ofPtoP(c, a));
    double const dCosine = (p * p + q * q - r * r) / (2.0 * p * q);
    if (std::fabs(1.0 - std::fabs(dCosine)) < kStraightCosine) return kStraightDiameter;
    // The diameter from b ends above c and above a: at the height below over c, at right angles to the chord
    // q.
    double const d = p - dCosine * q;
    return std::sqrt(d * d / (1.0 - dCosine * dCosine) + q * q);
}

double CalAngleRad(CPoint2D const& a, CPoint2D const& b) { return Direction(b - a); }

double CalAngleRad(CPoint2D const& p) { return Direction(p); }

double CalAngleDeg(CPoint2D const& a, CPoint2D const& b) { return CalAngleRad(a, b) * kDegreesPerRadian; }

double CalAngleDeg(CPoint2D const& p) { return CalAngleRad(p) * kDegreesPerRadian; }

double CalAngleChange(double a, double b) {
    double dChange = b - a;
    if (dChange > pi) dChange -= 2.0 * pi;
    if (dChange <= -pi) dChange += 2.0 * pi;
    return dChange;
}

double CalAngle(CPoint3D& a, CPoint3D& b, CPoint3D& c, CPoint3D& d) {
    CPoint3D e(c);  // the end of the first vector, moved to start at c
    e += b - a;
    double const dFirst2 = D2ofPtoP(a, b);
    double const dSecond2 = D2ofPtoP(c, d);
    double const dLengths = std::sqrt(dFirst2 * dSecond2);
    if (dLengths < kNoAngle) return 0.0;
    double dSine = std::fabs(2.0 * CalArea(c, d, e) / dLengths);
    if (dSine > 1.0) dSine = 1.0;
    double const dAngle = std::fabs(std::asin(dSine) * 180.0 / pi);
    return dFirst2 + dSecond2 >= D2ofPtoP(d, e) ? dAngle : 180.0 - dAngle;
}

int LineIntersect(CPoint2D const& a, CPoint2D const& b, CPoint2D const& c, CPoint2D const& d,
                  CPoint2D* pOut) {
    CPoint2D const r = b - a;
    CPoint2D const s = d - c;
    CPoint2D const between = c - a;
    double const dDenominator = s.y * r.x - s.x * r.y;
    if (dDenominator == 0.0) return 0;
    double const t = (between.x * s.y - between.y * s.x) / dDenominator;
    *pOut = CPoint2D(a.x + r.x * t, a.y + r.y * t);
    if (IsOutsideUnitRange(t)) return 0;
    double const u = (between.x * r.y - between.y * r.x) / dDenominator;
    return IsOutsideUnitRange(u) ? 0 : 1;
}

// NOLINTBEGIN(performance-unnecessary-value-param): hosts link against points by value.
int IsInterSect(CPoint2D a, CPoint2D b, CPoint2D c, CPoint2D d) {
    if (!(DoubledArea(a, b, c) * DoubledArea(a, b, d) < kBothSides)) return 0;
    return DoubledArea(c, d, a) * DoubledArea(c, d, b) < kBothSides ? 1 : 0;
}

int IsInTriangle(CPoint2D a, CPoint2D b, CPoint2D c, CPoint2D p) {
    if (p == a || p == b || p == c) return 0;
    auto const isRightOf = [&p](CPoint2D const& e, CPoint2D const& f) {
        return Cross(p - e, f - e) > kOutside;
    };
    return isRightOf(a, b) || isRightOf(b, c) || isRightOf(c, a) ? 0 : 1;
}
// NOLINTEND(performance-unnecessary-value-param)

CPoint2D ExtendLine(CPoint2D* a, CPoint2D* b, double dDist, int nFrom) {
    return Moved(nFrom == 1 ? *a : *b, CalAngleRad(*a, *b), dDist);
}

CPoint2D ExtendLineWithAngle(CPoint2D* a, CPoint2D* b, double dDist, double dAngle, int nFrom) {
    return Moved(nFrom == 1 ? *a : *b, CalAngleRad(*a, *b) + dAngle, dDist);
}

CPoint2D ExtendArc(CPoint2D* a, CPoint2D* b, double dRadius, double dLength) {
    bool const bPositive = dRadius > 0.0;
    double const dChord = CalAngleRad(*a, *b);
    double const dNormal = bPositive ? dChord - pi / 2.0 : dChord + pi / 2.0;
    double const dChord2 = D2ofPtoP(*a, *b);
    double const dRadius2 = dRadius * dRadius;
    if (dChord2 > 4.0 * dRadius2) return *a;
    double const dHeight = std::sqrt(dRadius2 - dChord2 / 4.0);
    CPoint2D const middle = (*a + *b) * 0.5;
    CPoint2D const centre = middle + CPoint2D(std::sin(dNormal) * dHeight, std::cos(dNormal) * dHeight);
    double const dStart = CalAngleRad(centre, *a);
    double const dTurn = dLength / dRadius;
    double const dEnd = bPositive ? dStart - dTurn : dStart + dTurn;
    double const dSize = std::fabs(dRadius);
    return centre + CPoint2D(std::sin(dEnd) * dSize, std::cos(dEnd) * dSize);
}

void MultiMatrix(double (*const m)[3], double (*const n)[3]) {
    std::array<std::array<double, 3>, 3> product;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            product[i][j] = m[i][0] * n[0][j] + m[i][1] * n[1][j] + m[i][2] * n[2][j];
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) m[i][j] = product[i][j];
    }
}
