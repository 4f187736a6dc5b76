#pragma once

#include <span>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"
#include "varnet/Part.h"

namespace varnet {

/// Closes open edges in several ways, and takes the first that closes all, or else the one that closes most.
/// - Facets that stand there once too often are left out, then the rest is closed (CloseOpenEdges).
/// - The same without leaving any out: solids in each other may have a wall in common and need both.
/// - All corners on open edges are joined with those within a tolerance, whatever becomes of facets no larger
///   than that, then as in the first. Only where such corners are there at all, the tolerance is below a
///   thousandth of the mesh's extent, and open edges are not very many.
///
/// What was done is added to the report. The table fits the mesh before and afterwards.
void CloseByBest(FlatMesh& mesh, EdgeTable& edges, std::span<double const> tolerances, IntakeReport& report,
                 Pace const& pace);

}  // namespace varnet
