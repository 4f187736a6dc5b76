#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// What the benchmarks of slicing work on, ours and those of other libraries: meshes by points and triangles,
// and the area of what a cut encloses.

struct IndexedMesh {
    std::vector<std::array<double, 3>> points;
    std::vector<std::array<std::int32_t, 3>> triangles;
    double lowest = 0.0;
    double height = 0.0;
};

/// Balls that overlap are a mesh each, all other shapes one mesh.
enum class SliceShape : std::int64_t { kGyroid, kSphere, kSpheres, kPlate, kOverlapping };

/// About so many facets in all. Kept until another shape or size is asked for.
std::vector<IndexedMesh> const& SliceShapeOf(SliceShape shape, std::size_t facets);

/// The height at which layer n of so many, counted from 0, is cut: at its middle.
inline double CutHeight(IndexedMesh const& mesh, int n, int layers) {
    return mesh.lowest + mesh.height / layers * (n + 0.5);
}

/// The area in which a point has an odd number of closed paths around it, whichever way these run. They may
/// not cross each other. Every pair of paths is looked at: this is for checking, not for timing.
double OddArea(std::vector<std::vector<std::array<double, 2>>> const& paths);
