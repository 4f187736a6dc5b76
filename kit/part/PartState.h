#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "varnet/Part.h"

namespace varnet {

/// What a part holds. It does not change once it is a part's, but for the bodies, which are made when they
/// are first asked for.
struct Part::State {
    FlatMesh mesh;
    std::string name;
    std::string header;
    MeshFormat format = MeshFormat::kBinaryStl;
    IntakeReport report;
    std::vector<ZeroSigns> zeros;  // while the triangles are those of the file
    MeshMeasures measures;
    std::int64_t openEdgesBefore = 0;  // as the part came: what a repair compares with
    bool mayHaveCopies = true;         // whether triangles may stand on the same three corners
    // Until the bodies are made; empty where it is not known.
    mutable EdgeTable edges;
    mutable std::once_flag bodiesOnce;
    mutable std::vector<Body> bodies;
    mutable bool contradicts = false;  // known with the bodies: facets that meet run the same way at an edge
    mutable std::once_flag asSlicedOnce;
    mutable std::unique_ptr<Part> asSliced;  // where facets were turned

    static State const& Of(Part const& part) { return *part.m_State; }
};

/// Measures the mesh, whose open edges have been counted.
void SetMeasures(Part::State& state, std::int64_t openEdges);

}  // namespace varnet
