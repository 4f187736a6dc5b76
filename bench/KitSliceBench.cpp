// The kit's slicer: its stages, and all of it by one thread and by two.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "BenchFiles.h"
#include "slice/LayerMaker.h"
#include "slice/Thin.h"
#include "varnet/Slicer.h"

namespace {

using varnet::Layer;
using varnet::Point3;
using varnet::SlicerInput;
using varnet::SliceSettings;
using varnet::Triangle;

struct FlatMesh {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    double height = 0.0;
    SlicerInput Input() const { return {points, triangles, false, false}; }
};

FlatMesh Flat(shapes::Mesh const& mesh) {
    struct Hash {
        std::size_t operator()(shapes::Corner const& c) const {
            std::hash<float> const hash;
            return (hash(c.x) * 31 + hash(c.y)) * 1000003 + hash(c.z);
        }
    };
    FlatMesh flat;
    std::unordered_map<shapes::Corner, std::int32_t, Hash> numbers;
    varnet::Box3 box;
    for (shapes::Triangle const& triangle : mesh) {
        Triangle corners{};
        for (std::size_t i = 0; i < 3; ++i) {
            auto const [it, isNew] =
                numbers.try_emplace(triangle[i], static_cast<std::int32_t>(flat.points.size()));
            if (isNew) {
                flat.points.push_back({triangle[i].x, triangle[i].y, triangle[i].z});
                box.Add(flat.points.back());
            }
            corners[i] = it->second;
        }
        flat.triangles.push_back(corners);
    }
    flat.height = box.max.z - box.min.z;
    return flat;
}

enum Shape : std::int64_t { kGyroid, kSphere, kSpheres, kPlate, kOverlapping };

// A plate of cylinders, 400 of them, of so many facets.
shapes::Mesh Plate(std::size_t facets) {
    int const sides = static_cast<int>(facets / 400 / 4);
    shapes::Mesh mesh = shapes::Box({-4, -4, 0}, {164, 164, 5});
    shapes::Mesh cylinder;
    auto const at = [sides](int i, float z) {
        double const angle = 2.0 * std::acos(-1.0) * (i % sides) / sides;
        return shapes::Corner{static_cast<float>(3.0 * std::cos(angle)),
                              static_cast<float>(3.0 * std::sin(angle)), z};
    };
    for (int i = 0; i < sides; ++i) {
        cylinder.push_back({at(i, 6), at(i + 1, 6), at(i + 1, 40)});
        cylinder.push_back({at(i, 6), at(i + 1, 40), at(i, 40)});
        cylinder.push_back({shapes::Corner{0, 0, 40}, at(i, 40), at(i + 1, 40)});
        cylinder.push_back({shapes::Corner{0, 0, 6}, at(i + 1, 6), at(i, 6)});
    }
    for (int i = 0; i < 400; ++i) {
        shapes::Append(mesh, shapes::Moved(cylinder, static_cast<float>(i % 20) * 8.0f,
                                           static_cast<float>(i / 20) * 8.0f, 0.0f));
    }
    return mesh;
}

// Balls that stand in each other, each a mesh of its own.
std::vector<FlatMesh> MakeShape(std::int64_t shape, std::size_t facets) {
    switch (shape) {
        case kGyroid:
            return {Flat(GyroidMesh(facets))};
        case kSphere: {
            int const rings = static_cast<int>(std::sqrt(static_cast<double>(facets) / 4.0));
            return {Flat(shapes::UvSphere(50.0, rings, 2 * rings))};
        }
        case kSpheres:
            return {Flat(shapes::Tray(10, 10, facets > 500'000 ? 5 : 3))};
        case kPlate:
            return {Flat(Plate(facets))};
        default: {
            std::vector<FlatMesh> meshes;
            shapes::Mesh const ball = shapes::IcoSphere(6.0, facets > 500'000 ? 5 : 3);
            for (int i = 0; i < 50; ++i) {
                meshes.push_back(Flat(shapes::Moved(ball, static_cast<float>(i % 10) * 8.0f,
                                                    static_cast<float>(i / 10) * 8.0f, 0.0f)));
            }
            return meshes;
        }
    }
}

// The shape that was asked for last.
std::vector<FlatMesh> const& ShapeOf(benchmark::State const& state) {
    static std::vector<FlatMesh> meshes;
    static std::int64_t heldShape = -1;
    static std::int64_t heldFacets = 0;
    if (heldShape != state.range(0) || heldFacets != state.range(1)) {
        meshes = MakeShape(state.range(0), static_cast<std::size_t>(state.range(1)));
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

// All of it up to a stage: 0 cut and chained, 1 resolved as well, 2 thinned as well.
void Stages(benchmark::State& state, int stage) {
    Job const job = JobOf(state);
    std::size_t points = 0;
    for (auto _ : state) {
        points = 0;
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
}

void KitSlice(benchmark::State& state) { Whole(state, 1); }
void KitSliceByTwo(benchmark::State& state) { Whole(state, 2); }

// Shape, facets, and layers.
void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (std::int64_t shape : {kGyroid, kSphere, kSpheres, kOverlapping}) {
        benchmark->Args({shape, 1'000'000, 500});
    }
    benchmark->Args({kPlate, 100'000, 500});
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(KitCut)->Apply(Sizes);
BENCHMARK(KitResolve)->Apply(Sizes);
BENCHMARK(KitThin)->Apply(Sizes);
BENCHMARK(KitSlice)->Apply(Sizes);
BENCHMARK(KitSliceByTwo)->Apply(Sizes);

}  // namespace
