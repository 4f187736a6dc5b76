// CGAL's slicer on the same meshes: a tree of boxes over the edges, and the polylines of each plane.

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Polygon_mesh_slicer.h>
#include <CGAL/Surface_mesh.h>

#include <iterator>
#include <vector>

#include "BenchFiles.h"
#include "SliceShapes.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Mesh = CGAL::Surface_mesh<Kernel::Point_3>;
using Polyline = std::vector<Kernel::Point_3>;

Mesh MeshOf(IndexedMesh const& indexed) {
    Mesh mesh;
    std::vector<Mesh::Vertex_index> vertices;
    vertices.reserve(indexed.points.size());
    for (auto const& p : indexed.points) vertices.push_back(mesh.add_vertex({p[0], p[1], p[2]}));
    for (auto const& t : indexed.triangles) {
        mesh.add_face(vertices[static_cast<std::size_t>(t[0])], vertices[static_cast<std::size_t>(t[1])],
                      vertices[static_cast<std::size_t>(t[2])]);
    }
    return mesh;
}

// Closed polylines state their first point again.
double AreaOf(std::vector<Polyline> const& polylines) {
    std::vector<std::vector<std::array<double, 2>>> paths;
    for (Polyline const& polyline : polylines) {
        auto& path = paths.emplace_back();
        for (Kernel::Point_3 const& p : polyline) path.push_back({p.x(), p.y()});
    }
    return OddArea(paths);
}

void CgalCut(benchmark::State& state) {
    IndexedMesh const& indexed =
        SliceShapeOf(static_cast<SliceShape>(state.range(0)), static_cast<std::size_t>(state.range(1)))
            .front();
    Mesh const mesh = MeshOf(indexed);
    int const layers = static_cast<int>(state.range(2));
    double area = 0.0;
    for (auto _ : state) {
        area = 0.0;
        CGAL::Polygon_mesh_slicer<Mesh, Kernel> slicer(mesh);
        for (int n = 0; n < layers; ++n) {
            std::vector<Polyline> polylines;
            slicer(Kernel::Plane_3(0, 0, 1, -CutHeight(indexed, n, layers)), std::back_inserter(polylines));
            state.PauseTiming();
            area += AreaOf(polylines);
            state.ResumeTiming();
        }
    }
    state.counters["area"] = area;
    ReportFacets(state, static_cast<double>(indexed.triangles.size()));
}

BENCHMARK(CgalCut)->Args({0, 1'000'000, 500})->Args({1, 1'000'000, 500})->Unit(benchmark::kMillisecond);

}  // namespace
