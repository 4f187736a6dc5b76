#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Generators of real shapes for tests, benchmarks and the demo. All are closed and wound counter-clockwise
// seen from outside unless they say otherwise. Coordinates are floats, as a file holds them, in millimetres;
// equal corners of neighbouring triangles are equal to the bit.

namespace shapes {

struct Corner {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    bool operator==(Corner const&) const = default;
};

using Triangle = std::array<Corner, 3>;
using Mesh = std::vector<Triangle>;

/// An axis-parallel box of twelve triangles.
Mesh Box(Corner const& min, Corner const& max);
/// A cube of twelve triangles with one corner at the origin.
Mesh Cube(float fSize);
/// A sphere about the origin of circles of latitude and meridians.
Mesh UvSphere(double dRadius, int nRings, int nSegments);
/// A sphere about the origin: an icosahedron whose triangles are quartered nDepth times.
Mesh IcoSphere(double dRadius, int nDepth);
/// A ring about the z axis.
Mesh Torus(double dRadius, double dTubeRadius, int nSegments, int nTubeSegments);
/// A mounting bracket: base plate with holes, wall with a hole, shelf that juts out, a sloping gusset and a
/// boss that ends in a keel below the shelf. 80 by 60 by 70 mm, standing on z = 0.
Mesh Bracket();
/// A gyroid sheet of some thickness in a cube, by marching tetrahedra over nCells cells along each edge;
/// eight millimetres a period of twelve cells. The number of triangles grows with the third power of nCells.
Mesh Gyroid(int nCells);
/// A gyroid of about so many triangles.
Mesh GyroidOfAbout(std::size_t nTriangles);
/// A tray of nColumns by nRows separate icospheres.
Mesh Tray(int nColumns, int nRows, int nDepth);
/// The surface z = height(x, y) over a square grid of nCells cells a side, open at its rim, facing up.
Mesh HeightField(int nCells, double dCellSize, std::function<double(double, double)> const& height);

/// Adds the triangles of the other mesh; returns the first.
Mesh& Append(Mesh& mesh, Mesh const& other);
Mesh Moved(Mesh mesh, float dx, float dy, float dz);
/// In another order, which depends on the seed alone.
Mesh Shuffled(Mesh mesh, std::uint32_t nSeed);
/// With one triangle in nEvery turned inside out, beginning with the second.
Mesh WithTurned(Mesh mesh, std::size_t nEvery);

/// The bytes of an STL file. Normals are computed, and 0 for triangles without area.
std::string ToBinaryStl(Mesh const& mesh, std::string const& header = "");
std::string ToAsciiStl(Mesh const& mesh, std::string const& name = "part", char const* pLineEnd = "\n");

}  // namespace shapes
