#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "part/Edges.h"
#include "part/FlatMesh.h"

namespace varnet {

/// Pairs the edges of more than two facets anew, by the angle about the edge: a facet where the solid begins
/// with the next one, counter-clockwise, where it ends, like brackets on a circle. Of facets at one angle
/// those that end the solid go first, so that shells which touch come apart, and copies of a shell are paired
/// among themselves.
void PairByAngle(FlatMesh const& mesh, EdgeTable& edges);

/// Which body each facet belongs to: facets hang together across paired edges, and across an edge of two that
/// run the same way. Bodies are numbered in the order of their first facets.
struct BodyLabels {
    std::vector<std::int32_t> ofFacet;
    std::int32_t count = 0;
};
BodyLabels LabelBodies(std::size_t facets, EdgeTable const& edges);

/// Area, volume and box of some facets. The volume of closed facets is the same about any point, and measured
/// about a near one; that of open ones is measured about the origin, as is usual.
MeshMeasures Measure(std::span<Point3 const> points, std::span<Triangle const> triangles,
                     std::int64_t openEdges);

/// The same from sums.
MeshMeasures MeasuresFrom(FacetSums const& sums, std::span<Point3 const> points, std::int64_t openEdges);

/// The volume, or 0 where it is no more than what rounding leaves.
double SureVolume(MeshMeasures const& measures);

/// The volume of facets with open edges, given by their numbers, if each rim were closed by facets to the
/// middle of its corners: the same wherever the facets stand, which that about the origin is not. 0 where it
/// is no more than what rounding leaves, as of a flat sheet.
double ClosedVolume(std::span<Point3 const> points, std::span<Triangle const> triangles,
                    std::span<std::int32_t const> open);

/// A body as the search for what encloses it wants it.
struct Shell {
    std::span<Point3 const> points;
    std::span<Triangle const> triangles;
    double volume = 0.0;
    bool isOpen = false;  ///< has open edges
};

/// For each shell of negative volume the shell of positive volume around it, of several the smallest one; -1
/// for none, and for shells of positive volume. Judged by a point of the shell, which is inside an open one
/// where that is on most sides of it.
std::vector<std::int32_t> FindEnclosing(std::span<Shell const> shells);

/// Which way shells face, and which bound hollows.
struct Facing {
    std::vector<std::int32_t> enclosing;  ///< of a hollow the shell around it, of several the smallest; or -1
    std::vector<bool> isWrong;            ///< would have to be turned
};
/// Where the volumes add up to less than nothing, the part is inside out as a whole, hollows included. A
/// shell that faces inward then and is in no other is a body of its own that is inside out.
Facing JudgeFacing(std::span<Shell const> shells);

}  // namespace varnet
