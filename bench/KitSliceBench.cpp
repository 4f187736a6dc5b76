// The kit's slicer: its stages, and all of it by one thread and by two.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "BenchFiles.h"
#include "SliceShapes.h"
#include "slice/LayerMaker.h"
#include "slice/Thin.h"
#include "varnet/PathOrder.h"
#include "varnet/SliceFile.h"
#include "varnet/Slicer.h"

namespace {

using varnet::Layer;
using varnet::Point3;
using varnet::SlicerInput;
using varnet::SliceSettings;
using varnet::Triangle;

// A mesh as the slicer takes it.
struct FlatMesh {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    double height = 0.0;

    explicit FlatMesh(IndexedMesh const& mesh) : height(mesh.height) {
        points.reserve(mesh.points.size());
        for (auto const& p : mesh.points) points.push_back({p[0], p[1], p[2]});
        triangles.assign(mesh.triangles.begin(), mesh.triangles.end());
    }
    SlicerInput Input() const { return {points, triangles, false, false}; }
};

// The shape that was asked for last.
std::vector<FlatMesh> const& ShapeOf(benchmark::State const& state) {
    static std::vector<FlatMesh> meshes;
    static std::int64_t heldShape = -1;
    static std::int64_t heldFacets = 0;
    if (heldShape != state.range(0) || heldFacets != state.range(1)) {
        auto const& indexed =
            SliceShapeOf(static_cast<SliceShape>(state.range(0)), static_cast<std::size_t>(state.range(1)));
        meshes.clear();
        for (IndexedMesh const& mesh : indexed) meshes.emplace_back(mesh);
        heldShape = state.range(0);
        heldFacets = state.range(1);
    }
    return meshes;
}

struct Job {
    std::vector<SlicerInput> inputs;
    SliceSettings settings;
};

Job JobOf(benchmark::State const& state) {
    Job job;
    double height = 0.0;
    for (FlatMesh const& mesh : ShapeOf(state)) {
        job.inputs.push_back(mesh.Input());
        height = std::max(height, mesh.height);
    }
    job.settings.layer = height / static_cast<double>(state.range(2));
    return job;
}

double FacetsOf(Job const& job) {
    double facets = 0.0;
    for (SlicerInput const& input : job.inputs) facets += static_cast<double>(input.triangles.size());
    return facets;
}

// Of what all contours enclose, for one closed mesh whose winding is right.
double AreaOf(varnet::Paths const& cut) {
    double area = 0.0;
    for (std::size_t i = 0; i + 1 < cut.offsets.size(); ++i) {
        area += varnet::SignedArea(
            std::span(cut.points).subspan(cut.offsets[i], cut.offsets[i + 1] - cut.offsets[i]));
    }
    return area;
}

// All of it up to a stage: 0 cut and chained, 1 resolved as well, 2 thinned as well.
void Stages(benchmark::State& state, int stage) {
    Job const job = JobOf(state);
    std::size_t points = 0;
    double area = 0.0;
    for (auto _ : state) {
        points = 0;
        area = 0.0;
        varnet::Pulse pulse;
        varnet::SlicePlan const plan = varnet::PlanSlices(job.inputs, job.settings, pulse);
        std::vector<varnet::CutSweep> sweeps;
        for (varnet::FacetIndex const& index : plan.parts) sweeps.emplace_back(index);
        varnet::Paths cut;
        varnet::NestingSweep nesting;
        std::vector<varnet::Nested> nested;
        varnet::SolidContours solid;
        varnet::SolidContours thinned;
        for (int number = 1; number <= plan.heights.count; ++number) {
            cut.Clear();
            for (varnet::CutSweep& sweep : sweeps) sweep.Cut(number, cut, pulse);
            points += cut.points.size();
            area += AreaOf(cut);
            if (stage < 1) continue;
            solid.Clear();
            if (nesting.Nest(cut, plan.partGrid, job.settings.rule, nested, pulse)) {
                AddNested(cut, nested, solid);
            } else {
                ResolveCrossings(cut, plan.partGrid, job.settings.rule, solid, pulse);
            }
            if (stage < 2) continue;
            thinned.Clear();
            ThinContours(solid, job.settings.tolerance, thinned);
        }
    }
    state.counters["points"] = static_cast<double>(points);
    state.counters["area"] = area;
    ReportFacets(state, FacetsOf(job));
}

void KitCut(benchmark::State& state) { Stages(state, 0); }
void KitResolve(benchmark::State& state) { Stages(state, 1); }
void KitThin(benchmark::State& state) { Stages(state, 2); }

void Whole(benchmark::State& state, int threads) {
    Job job = JobOf(state);
    job.settings.threads = threads;
    varnet::SliceReport report;
    for (auto _ : state) {
        varnet::Slicer slicer(job.inputs, job.settings);
        report = slicer.ForEachLayer([](Layer&& layer) { benchmark::DoNotOptimize(layer.points.data()); });
    }
    state.counters["points"] = static_cast<double>(report.points);
    state.counters["strokes"] = static_cast<double>(report.strokes);
    state.counters["resolved"] = static_cast<double>(report.resolvedLayers);
    ReportFacets(state, FacetsOf(job));
}

// Cut, nested, filled, ordered and written.
void Road(benchmark::State& state, int threads) {
    Job job = JobOf(state);
    job.settings.threads = threads;
    std::filesystem::path const file = std::filesystem::temp_directory_path() / "varnet-bench-road.cli";
    for (auto _ : state) {
        varnet::Slicer slicer(job.inputs, job.settings);
        varnet::PathOrder order;
        varnet::SliceWriter writer(file, slicer.LayerCount());
        slicer.ForEachLayer([&order, &writer](Layer&& layer) {
            order.Order(layer);
            writer.Write(layer);
        });
        writer.Finish();
    }
    std::filesystem::remove(file);
    ReportFacets(state, FacetsOf(job));
}

void KitRoad(benchmark::State& state) { Road(state, 1); }
void KitRoadByTwo(benchmark::State& state) { Road(state, 2); }

void KitSlice(benchmark::State& state) { Whole(state, 1); }
void KitSliceByTwo(benchmark::State& state) { Whole(state, 2); }

// Shape, facets, and layers.
void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (SliceShape const shape :
         {SliceShape::kGyroid, SliceShape::kSphere, SliceShape::kSpheres, SliceShape::kOverlapping}) {
        benchmark->Args({static_cast<std::int64_t>(shape), 1'000'000, 500});
    }
    benchmark->Args({static_cast<std::int64_t>(SliceShape::kPlate), 100'000, 500});
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(KitCut)->Apply(Sizes);
BENCHMARK(KitResolve)->Apply(Sizes);
BENCHMARK(KitThin)->Apply(Sizes);
BENCHMARK(KitSlice)->Apply(Sizes)->UseRealTime();
BENCHMARK(KitSliceByTwo)->Apply(Sizes)->UseRealTime();
BENCHMARK(KitRoad)->Apply(Sizes)->UseRealTime();
BENCHMARK(KitRoadByTwo)->Apply(Sizes)->UseRealTime();

}  // namespace
