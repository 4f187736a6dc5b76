#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "varnet/Error.h"
#include "varnet/Geometry.h"

class CSTLModel;

namespace varnet {

/// The formats of meshes. All are read; kAsciiStl, kOltp and kThreeDmf are not written.
enum class MeshFormat { kAsciiStl, kBinaryStl, kOltp, kThreeDmf, kPlainCsm, kStripCsm, kRingCsm };
/// "binary STL"
VARNET_KIT_API char const* NameOf(MeshFormat format);

/// How a mesh is taken in.
struct IntakeSettings {
    /// Corners nearer than this (millimetres, on each axis) become one. Without it corners are joined where
    /// they are equal, and where that leaves open edges, the corners on open edges by the smallest of
    /// kWeldTolerances that leaves the fewest.
    std::optional<double> weld;
    double scale = 1.0;  ///< every coordinate is multiplied by this: 25.4 for inches, 1000 for metres
    bool heal = true;    ///< false: equal corners are joined, and nothing else is done
    Progress progress;
};

/// What was found in a mesh, and what was done to it.
struct IntakeReport {
    std::int64_t facetsInFile = 0;     ///< announced, or counted in text
    std::int64_t facetsRead = 0;       ///< that came out of the file
    std::int64_t notFinite = 0;        ///< left out: a corner is no number or beyond 1e10
    std::int64_t degenerate = 0;       ///< left out: two corners are one
    std::int64_t doubled = 0;          ///< left out: the same three corners in the same order, once too often
    std::int64_t collinearTurned = 0;  ///< facets without area that were taken out by turning an edge
    std::int64_t split = 0;            ///< facets that were divided at a vertex on their edge
    std::int64_t welded = 0;           ///< vertices that were joined with a near one
    double weldTolerance = 0.0;        ///< by which they were; 0 for equal corners alone
    std::int64_t manyFacetEdges = 0;   ///< edges of more than two facets
    std::int64_t openEdgesExact =
        0;                       ///< by equal corners, as in the file: directed edges without their opposite
    std::int64_t openEdges = 0;  ///< afterwards
    std::vector<std::string> notes;  ///< a line each for a person: what was lost or put right, and where
};

/// A shell of a part: facets that hang together across edges. A view: it is valid as long as its part.
class Body;

/// What one wants to know of a body or a part.
struct MeshMeasures {
    Box3 box;
    double area = 0.0;
    double volume = 0.0;  ///< signed; above 0 when facets face outward
    std::int64_t openEdges = 0;
};

/// What a repair did.
struct RepairReport {
    std::int64_t turned = 0;           ///< facets that contradicted their shell
    std::int64_t openEdgesBefore = 0;  ///< by equal corners, as in the file
    std::int64_t openEdgesAfter = 0;
    std::int64_t holesFilled = 0;
    std::int64_t facetsAdded = 0;   ///< by filling
    std::int64_t bodiesTurned = 0;  ///< whole bodies that were turned outward, where that was asked for
};

struct RepairSettings {
    double fillHoles = 0.0;  ///< millimetres: rims up to this length are closed; 0 for none
    bool outward = false;    ///< turn whole bodies that are inside out and no cavities
    Progress progress;
};

}  // namespace varnet
