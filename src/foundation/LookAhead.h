#pragma once

#include <cstddef>

// How many steps ahead of their work the loops of the engine bring memory into the processor's cache: all the
// numbers here that are found by trying, and by which no result changes, only the time that it takes.
//
// A distance is long enough when the memory has come by the time it is needed, and too long when it has gone
// again. Where one record leads to another, each step of the way has a distance of its own, the first the
// longest.
//
// To measure one again: build with the old distance and with the new one, and run the benchmarks that stand
// beside it in turn, such as `./dev bench --benchmark_filter=FixNormal`, on a million facets or as many as
// there are: what fits in the cache tells nothing. Only ratios within one run count. The present distances
// were tried on the machine of docs/performance.md.

namespace varnet::look_ahead {

// Walks over all facets: mesh/FacetWalk.h, ForEachFacet. CalAreaAndCalVolume, FixNormal, WriteBinary.
inline constexpr int kWalkFacet = 128;
inline constexpr int kWalkCorners = 64;

// Looking up the neighbours of facets in the order of the facets: mesh/FacetWalk.h, BringNeighbors. Disjoin,
// ExtractSurfaceAndEdge.
inline constexpr std::size_t kNeighborFacet = 64;
inline constexpr std::size_t kNeighborListHeads = 40;
inline constexpr std::size_t kNeighborLists = 24;
inline constexpr std::size_t kNeighborListed = 10;
inline constexpr int kMostListed = 6;  // of the facets of a list

// Numbering facets and taking the numbers away: mesh/FacetGraph.h, mesh/Disjoin.cpp. Disjoin,
// ExtractSurfaceAndEdge.
inline constexpr std::size_t kNumberedFacet = 64;

// Along a wave of facets that grows: mesh/RegionGrowth.h. FindSupportSurface, ClassifySurf,
// ExtractHorizonPlane.
inline constexpr std::size_t kSmallWave = 512;  // of fewer facets, the facets themselves are at hand
inline constexpr std::size_t kWaveFacet = 24;
inline constexpr std::size_t kWaveListHeads = 16;
inline constexpr std::size_t kWaveLists = 8;
inline constexpr std::size_t kSmallWaveLists = 2;

// Splitting off shells: mesh/Disjoin.cpp. Along the wave that finds a shell, and along the facets that enter
// its model. Disjoin.
inline constexpr std::size_t kShellRecord = 24;
inline constexpr std::size_t kShellVertices = 12;
inline constexpr std::size_t kEnteredRecord = 32;
inline constexpr std::size_t kEnteredRanks = 16;
inline constexpr std::size_t kEnteredVertices = 8;

// Copying the vertices of a shell: trees/VertexCopier.cpp, trees/ForeseenTree.cpp. Disjoin.
inline constexpr std::size_t kRankedVertex = 16;
inline constexpr std::size_t kInsertedNode = 24;
inline constexpr std::size_t kInsertedNeighbors = 12;
inline constexpr std::size_t kLinkedVertex = 16;
inline constexpr std::size_t kTakenOutNode = 16;

// The lines of the table of vertices while facets enter, where they do not lie scattered:
// mesh/FacetIntake.cpp. ReadBinary.
inline constexpr std::size_t kEnteredLines = 16;

// Hatches, and their first edges: contours/ordering/HatchOrder.cpp. OptimizeHatchs.
inline constexpr std::size_t kHatch = 16;
inline constexpr std::size_t kHatchEdges = 8;

// Loops, their lists and their points: contours/nesting/NestingTree.cpp. Nesting.
inline constexpr std::size_t kRoot = 12;  // of the raw loops: contours/LoopWalk.h
inline constexpr std::size_t kNestedLoop = 24;
inline constexpr std::size_t kNestedList = 16;
inline constexpr std::size_t kNestedPoints = 8;
inline constexpr std::size_t kPairedPoints = 6;
inline constexpr std::size_t kStoredLevel = 12;
inline constexpr std::size_t kTurnedLoop = 16;
inline constexpr std::size_t kTurnedPoints = 4;

// Vertices of the facets of a plain CSM file, which are read so many at once: modelfiles/PlainCSM.cpp.
// Read/Plain.
inline constexpr std::size_t kPlainFacets = 64;

// Facets at the vertex that a ring of edges closes on next, where they are no more:
// modelfiles/RingEncoder.cpp. Write/Ring, WriteRingOfSphere.
inline constexpr int kMostRingFacets = 12;

}  // namespace varnet::look_ahead
