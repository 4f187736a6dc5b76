// CGAL on the same files: from STL to half-edges, consistent winding, measures and shells.

#include <CGAL/IO/STL.h>
#include <CGAL/Polygon_mesh_processing/connected_components.h>
#include <CGAL/Polygon_mesh_processing/measure.h>
#include <CGAL/Polygon_mesh_processing/orient_polygon_soup.h>
#include <CGAL/Polygon_mesh_processing/polygon_soup_to_polygon_mesh.h>
#include <CGAL/Polygon_mesh_processing/repair_polygon_soup.h>
#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <array>
#include <memory>
#include <vector>

#include "BenchFiles.h"

namespace {

namespace pmp = CGAL::Polygon_mesh_processing;
using Kernel = CGAL::Simple_cartesian<double>;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;

// Triangles by the numbers of their corners; equal corners are one.
struct Soup {
    std::vector<Kernel::Point_3> points;
    std::vector<std::vector<std::size_t>> triangles;

    explicit Soup(std::string const& file) {
        CGAL::IO::read_STL(file, points, triangles);
        pmp::merge_duplicate_points_in_polygon_soup(points, triangles);
    }
};

std::unique_ptr<Mesh> ReadMesh(std::string const& file) {
    Soup const soup(file);
    auto pMesh = std::make_unique<Mesh>();
    pmp::polygon_soup_to_polygon_mesh(soup.points, soup.triangles, *pMesh);
    return pMesh;
}

void ReadFile(benchmark::State& state, Kind kind) {
    TimeReading(state, kind, ReadMesh, [](Mesh const& mesh) { return mesh.number_of_faces(); });
}

void CgalReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void CgalReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }

void CgalOrient(benchmark::State& state) {
    Soup const soup(GyroidFile(static_cast<std::size_t>(state.range(0)), Kind::kTurned));
    for (auto _ : state) {
        state.PauseTiming();
        auto pCopy = std::make_unique<Soup>(soup);
        state.ResumeTiming();
        pmp::orient_polygon_soup(pCopy->points, pCopy->triangles);
        state.PauseTiming();
        pCopy.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, static_cast<double>(soup.triangles.size()));
}

void CgalAreaAndVolume(benchmark::State& state) {
    auto const pMesh = ReadMesh(GyroidFile(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) {
        benchmark::DoNotOptimize(pmp::area(*pMesh));
        benchmark::DoNotOptimize(pmp::volume(*pMesh));
    }
    ReportFacets(state, static_cast<double>(pMesh->number_of_faces()));
}

void CgalSplitShells(benchmark::State& state) {
    auto const pMesh = ReadMesh(GyroidFile(static_cast<std::size_t>(state.range(0)), Kind::kShells));
    for (auto _ : state) {
        auto pShells = std::make_unique<std::vector<Mesh>>();
        pmp::split_connected_components(*pMesh, *pShells);
        state.PauseTiming();
        state.counters["shells"] = static_cast<double>(pShells->size());
        pShells.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, static_cast<double>(pMesh->number_of_faces()));
}

BENCHMARK(CgalReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(CgalReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(CgalOrient)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(CgalAreaAndVolume)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(CgalSplitShells)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
