#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "page/PageText.h"
#include "varnet/Geometry.h"

namespace varnet {

/// A mesh as a page holds it: packed points and triangles, triangles of one kind together.
///
/// Bytes: the counts of points, triangles, open edges and sharp edges, of 32 bits each; the points, low and
/// high bytes of each axis apart, as DeltaAxis has them; the corners of all triangles as varints, 0 for a
/// point that comes for the first time and else how far back it came; then the edges, first the open ones,
/// sorted, as the difference to the first end of the one before and that of the second end to the first.
struct PackedMesh {
    std::string bytes;
    Box3 box;  ///< of the points; {0, 0, 0} to {0, 0, 0} without
    /// A kind, and how many triangles of it come next.
    struct Run {
        std::uint64_t kind;
        std::size_t triangles;
    };
    std::vector<Run> runs;
};

/// Two indexes of points.
using PointPair = std::array<std::int32_t, 2>;

/// Packs a mesh. kinds has one for each triangle, and is empty where all have the kind 0. Within a kind,
/// triangles come by their place on a curve that fills the box, so that neighbours are near.
PackedMesh PackMesh(std::span<Point3 const> points, std::span<Triangle const> triangles,
                    std::span<std::uint64_t const> kinds, std::span<PointPair const> openEdges,
                    std::span<PointPair const> sharpEdges);

/// The grid of each axis of a box.
std::array<Grid16, 3> GridsOf(Box3 const& box);

}  // namespace varnet
