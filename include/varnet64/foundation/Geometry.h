#pragma once

#include "foundation/Export.h"
#include "foundation/Point.h"

// Distances, sides, areas, angles, intersections and construction of points. Coordinates and lengths are in
// millimetres. Each function has a tolerance and a return convention of its own; "not a number" is a possible
// result wherever no guard is named. Points taken by plain reference or pointer are not changed, other than
// an output. Everything is computed in double from left to right, except where a comment says float: the
// rounding of those steps is part of the result. Bodies: src/foundation/Geometry.cpp.

// ---- Distances and sides

/// a.x * b.y - a.y * b.x: positive when b points to the left of a. Square millimetres.
VARNET_API double Cross(CPoint2D const& a, CPoint2D const& b);
/// The squared distance of two points.
VARNET_API double D2ofPtoP(CPoint2D const& a, CPoint2D const& b);
VARNET_API double D2ofPtoP(CPoint3D const& a, CPoint3D const& b);
/// On which side of the directed line from a to b the point lies: Cross(p - a, b - a), positive on the right.
/// Exactly 0.0 when the squared distance from the line is below 1e-10 (that is, within 0.00001 mm).
VARNET_API double SideofLine(CPoint2D const& p, CPoint2D const& a, CPoint2D const& b);
/// The squared distance of p from the infinite line through a and b, or from a when the squared length of a-b
/// is not above 1e-8. It is a difference of two squares: close to the line it may come out a hair below zero.
VARNET_API double D2ofPtoLine(CPoint2D& p, CPoint2D& a, CPoint2D& b);
/// The squared distance of p from the segment a to b; where p lies beside it, the same as D2ofPtoLine.
VARNET_API double CalMinD2ofPtoLine(CPoint2D p, CPoint2D a, CPoint2D b);
/// The distance of p from the infinite line through a and b, 2 * CalArea(p, a, b) / |b - a|, with the float
/// rounding of CalArea. No guard: with a = b the result is not a number.
VARNET_API double DisofPtoLine(CPoint3D& p, CPoint3D& a, CPoint3D& b);
/// The distance of p from the plane through a, b and c, computed in float: positive on the side against which
/// the normal (a - c) x (b - c) points. 0.0 when that normal is shorter than 1e-8.
VARNET_API double DisofPtoPlaneWithSign(CPoint3D& p, CPoint3D& a, CPoint3D& b, CPoint3D& c);
/// The absolute value of DisofPtoPlaneWithSign.
VARNET_API double DisofPtoPlane(CPoint3D& p, CPoint3D& a, CPoint3D& b, CPoint3D& c);

// ---- Areas and circles

/// The area of a triangle in square millimetres, computed in float as CFacet::Area is; it loses digits far
/// from the origin. 0.0 when twice the area is below 1e-8.
VARNET_API double CalArea(CPoint3D& a, CPoint3D& b, CPoint3D& c);
/// The radius of the circle through three points. No guard: points on a line divide by zero, so that the
/// result is infinite, or not a number where two of them coincide.
VARNET_API double CalCircumRadius(CPoint2D& a, CPoint2D& b, CPoint2D& c);
/// The DIAMETER of the circle through three points, twice what the plane function of the same name gives.
/// 1e10 when the cosine at b is within 0.0001 of 1 or -1: the points then count as being on a line. Not a
/// number when b coincides with a or c.
VARNET_API double CalCircumRadius(CPoint3D& a, CPoint3D& b, CPoint3D& c);

// ---- Angles

/// The direction from a to b in radians, from -pi to pi as std::atan2 gives it; 0 when they coincide.
VARNET_API double CalAngleRad(CPoint2D const& a, CPoint2D const& b);
/// The direction of p seen from the origin, in radians.
VARNET_API double CalAngleRad(CPoint2D const& p);
/// The same two directions in degrees: the radians times 57.295779513082, a factor rounded to twelve
/// decimals.
VARNET_API double CalAngleDeg(CPoint2D const& a, CPoint2D const& b);
VARNET_API double CalAngleDeg(CPoint2D const& p);
/// The turn from direction a to direction b in radians, above -pi and up to pi. At most one full turn is
/// added or taken off, so the two must lie within one turn of each other.
VARNET_API double CalAngleChange(double a, double b);
/// The angle in degrees, from 0 to 180, between the vectors a to b and c to d. 0.0 when the product of their
/// lengths is below 1e-8. It rests on CalArea, with its float rounding.
VARNET_API double CalAngle(CPoint3D& a, CPoint3D& b, CPoint3D& c, CPoint3D& d);

// ---- Intersection and containment

/// 1 when the segments a-b and c-d meet, ends included, else 0. *pOut becomes the point where the infinite
/// lines through them meet, attributes 0, also when the segments do not reach it. Parallel lines give 0 and
/// leave *pOut alone, collinear ones too; there is no tolerance. *pOut may be one of the four points.
VARNET_API int LineIntersect(CPoint2D const& a, CPoint2D const& b, CPoint2D const& c, CPoint2D const& d,
                             CPoint2D* pOut);
/// 1 when the segments a-b and c-d truly cross, else 0. Touching is no crossing. The product of the doubled
/// areas on both sides of each segment must be below -0.01, which does not scale: short segments never cross.
VARNET_API int IsInterSect(CPoint2D a, CPoint2D b, CPoint2D c, CPoint2D d);
/// 1 when p is inside the counter-clockwise triangle or on an edge of it, 0 outside and on a corner (within
/// 0.0001 per axis). An edge reaches 1e-6 of doubled area (square millimetres) to its right: so a clockwise
/// triangle holds nothing, unless twice its own area is below three times that.
VARNET_API int IsInTriangle(CPoint2D a, CPoint2D b, CPoint2D c, CPoint2D p);

// ---- Construction of points

/// The point dDist further along the direction from a to b, starting at *a when nFrom is 1, else at *b, with
/// the start's attributes. With a = b the direction is +x.
VARNET_API CPoint2D ExtendLine(CPoint2D* a, CPoint2D* b, double dDist, int nFrom);
/// The same with the direction turned counter-clockwise by dAngle (radians).
VARNET_API CPoint2D ExtendLineWithAngle(CPoint2D* a, CPoint2D* b, double dDist, double dAngle, int nFrom);
/// The point dLength along the circle of radius |dRadius| that is laid over the chord from a to b; the sign
/// of dRadius chooses its side and the way round. Attributes 0. Where the chord is longer than the diameter,
/// a copy of a, attributes included.
///
/// Directions are taken with std::atan2 and laid off with the sine for x and the cosine for y, the reverse of
/// ExtendLine. So a length of 0 gives a only where that swap changes nothing. Hosts rely on it as it is.
VARNET_API CPoint2D ExtendArc(CPoint2D* a, CPoint2D* b, double dRadius, double dLength);

// ---- Matrices

/// m becomes the product m * n of two 3 by 3 matrices. n is not changed, unless it is m.
VARNET_API void MultiMatrix(double (*const m)[3], double (*const n)[3]);
