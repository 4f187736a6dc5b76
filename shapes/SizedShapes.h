#pragma once

#include <cstddef>
#include <span>

#include "Shapes.h"

// Shapes of about so many triangles whose coordinates are alike in different ways. What is fast on one of
// them alone is not fast.

namespace shapes {

/// A sphere of rings about the origin: heights are shared by a ring, and its left and right half are mirror
/// images but for the rounding to float.
Mesh RingSphereOfAbout(std::size_t nTriangles);
/// A thousand spheres of rings in ten layers, all separate.
Mesh SpheresOfAbout(std::size_t nTriangles);
/// A plate of 1,834 cylinders and prisms, standing apart on z = 0, all separate.
Mesh CylindersOfAbout(std::size_t nTriangles);
/// A part and its mirror image behind the plane x = 0.
Mesh MirroredOfAbout(std::size_t nTriangles);
/// A box whose six sides are equal square grids: each coordinate is shared by thousands of corners.
Mesh GridBoxOfAbout(std::size_t nTriangles);
/// A height field of noise that faces down everywhere, in many small regions steeply enough.
Mesh NoiseOfAbout(std::size_t nTriangles);
/// A gyroid with one triangle in ten turned inside out.
Mesh TurnedGyroidOfAbout(std::size_t nTriangles);

struct SizedShape {
    char const* pName;
    Mesh (*pMake)(std::size_t nTriangles);
};

/// All of them, beginning with the gyroid.
std::span<SizedShape const> SizedShapes();

}  // namespace shapes
