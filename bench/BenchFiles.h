#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

#include "SizedShapes.h"

// What the benchmarks of meshes work on: gyroids of about 100,000, 1 million and 4 million facets, and
// others.

enum class Kind { kBinary, kShuffled, kTurned, kAscii, kShells };

/// The mesh of about so many facets, made when it is first asked for.
shapes::Mesh const& GyroidMesh(std::size_t nFacets);

/// The path of a file of that mesh, in the order of the generator or shuffled, with one facet in ten turned,
/// as ASCII, or instead of it a tray of spheres of 1,280 facets. Made in the temporary folder when it is
/// first asked for, and left there for the next run.
std::string GyroidFile(std::size_t nFacets, Kind kind = Kind::kBinary);

/// The path of a binary file of the mesh that pMake gives for so many facets, made when it is first asked
/// for.
std::string FileOf(std::string const& name, std::size_t nFacets, shapes::Mesh (*pMake)(std::size_t));

/// The path of a file of a height field that faces down everywhere, in many small regions steeply enough.
std::string NoiseFile(std::size_t nFacets);

/// The path of a binary file of a shape, by its number in shapes::SizedShapes.
std::string ShapeFile(std::size_t nShape, bool bShuffled, std::size_t nFacets);

/// The arguments of a benchmark that reads each shape, in its generator's order and shuffled: the number of
/// facets, that of the shape, and whether it is shuffled.
void OfShapes(benchmark::internal::Benchmark* pBenchmark);

/// A path as the library takes it.
class WidePath {
public:
    explicit WidePath(std::string const& path) : m_Text(path.begin(), path.end()) {}
    char* Get() { return reinterpret_cast<char*>(m_Text.data()); }

private:
    std::u16string m_Text;
};

/// Reports the time a facet, and the facets a second.
inline void ReportFacets(benchmark::State& state, double dFacets) {
    state.counters["time/facet"] = benchmark::Counter(
        dFacets, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetItemsProcessed(static_cast<std::int64_t>(dFacets) *
                            static_cast<std::int64_t>(state.iterations()));
}

/// Times read(file), which gives a mesh by an owner; facetsOf(mesh) counts its facets, 0
/// where the file could not be read. Releasing is not timed.
template <class Read, class FacetsOf>
void TimeReading(benchmark::State& state, std::string const& file, Read const& read,
                 FacetsOf const& facetsOf) {
    double dFacets = 0.0;
    for (auto _ : state) {
        auto owner = read(file);
        state.PauseTiming();
        dFacets = static_cast<double>(facetsOf(*owner));
        owner = {};
        state.ResumeTiming();
        if (dFacets == 0.0) return state.SkipWithError("not read");
    }
    ReportFacets(state, dFacets);
}

template <class Read, class FacetsOf>
void TimeReading(benchmark::State& state, Kind kind, Read const& read, FacetsOf const& facetsOf) {
    TimeReading(state, GyroidFile(static_cast<std::size_t>(state.range(0)), kind), read, facetsOf);
}

/// With the arguments of OfShapes.
template <class Read, class FacetsOf>
void TimeReadingShape(benchmark::State& state, Read const& read, FacetsOf const& facetsOf) {
    std::string const file = ShapeFile(static_cast<std::size_t>(state.range(1)), state.range(2) != 0,
                                       static_cast<std::size_t>(state.range(0)));
    TimeReading(state, file, read, facetsOf);
}
