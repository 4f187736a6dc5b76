// OCCT on the same files: from STL to merged points, without neighbours.

#include <Poly_Triangulation.hxx>
#include <RWStl.hxx>

#include <memory>

#include "BenchFiles.h"

namespace {

// The triangles keep themselves, by a counter.
struct Mesh {
    opencascade::handle<Poly_Triangulation> triangles;
};

void OcctReadShape(benchmark::State& state) {
    TimeReadingShape(
        state,
        [](std::string const& file) { return std::make_unique<Mesh>(Mesh{RWStl::ReadFile(file.c_str())}); },
        [](Mesh& mesh) { return mesh.triangles.IsNull() ? 0 : mesh.triangles->NbTriangles(); });
}

BENCHMARK(OcctReadShape)->Apply(OfShapes);

}  // namespace
