// OpenMesh on the same files: from STL to half-edges, and measures.

#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <cmath>
#include <filesystem>
#include <memory>

#include "BenchFiles.h"

namespace {

using Mesh = OpenMesh::TriMesh_ArrayKernelT<>;

void ReadFile(benchmark::State& state, Kind kind) {
    auto const read = [](std::string const& path) {
        auto pMesh = std::make_unique<Mesh>();
        if (!OpenMesh::IO::read_mesh(*pMesh, path)) pMesh->clear();
        return pMesh;
    };
    TimeReading(state, kind, read, [](Mesh const& mesh) { return mesh.n_faces(); });
}

void OpenMeshReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void OpenMeshReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void OpenMeshReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

void OpenMeshAreaAndVolume(benchmark::State& state) {
    Mesh mesh;
    OpenMesh::IO::read_mesh(mesh, GyroidFile(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) {
        double dArea = 0.0;
        double dVolume = 0.0;
        for (auto const& face : mesh.faces()) {
            dArea += mesh.calc_face_area(face);
            auto corner = mesh.cfv_iter(face);
            auto const& a = mesh.point(*corner++);
            auto const& b = mesh.point(*corner++);
            dVolume += dot(a, cross(b, mesh.point(*corner)));
        }
        benchmark::DoNotOptimize(dArea);
        benchmark::DoNotOptimize(dVolume);
    }
    ReportFacets(state, static_cast<double>(mesh.n_faces()));
}

void OpenMeshWriteBinary(benchmark::State& state) {
    Mesh mesh;
    OpenMesh::IO::read_mesh(mesh, GyroidFile(static_cast<std::size_t>(state.range(0))));
    std::string const output =
        (std::filesystem::temp_directory_path() / "varnet-bench-openmesh.stl").string();
    for (auto _ : state) OpenMesh::IO::write_mesh(mesh, output, OpenMesh::IO::Options::Binary);
    ReportFacets(state, static_cast<double>(mesh.n_faces()));
}

BENCHMARK(OpenMeshReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenMeshReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenMeshReadAscii)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenMeshAreaAndVolume)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenMeshWriteBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
