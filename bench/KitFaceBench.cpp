// What the kit's face costs: the same work through the classes and the inner pieces, and through the kit.

#include <Varnet64.h>
#include <benchmark/benchmark.h>

#include <memory>

#include "BenchFiles.h"
#include "slice/LayerMaker.h"
#include "varnet/Kit.h"

namespace {

std::unique_ptr<CSTLModel> ReadModel(std::string const& file) {
    auto model = std::make_unique<CSTLModel>();
    // As the kit takes facets in.
    model->m_VertexTree.m_dTolerance = 0.0;
    WidePath path(file);
    model->ReadSTLFile(path.Get(), 0);
    return model;
}

std::string FileOf(benchmark::State const& state) {
    return ShapeFile(static_cast<std::size_t>(state.range(1)), false,
                     static_cast<std::size_t>(state.range(0)));
}

void FaceReadByClasses(benchmark::State& state) {
    std::string const file = FileOf(state);
    double facets = 0.0;
    for (auto _ : state) {
        auto const model = ReadModel(file);
        facets = model->GetFacetsNum();
    }
    ReportFacets(state, facets);
}

void FaceReadByKit(benchmark::State& state) {
    std::string const file = FileOf(state);
    double facets = 0.0;
    for (auto _ : state) facets = static_cast<double>(varnet::Part::Read(file).Triangles().size());
    ReportFacets(state, facets);
}

// Read, and find and build all supports.
void FaceSupportByClasses(benchmark::State& state) {
    std::string const file = FileOf(state);
    varnet::SupportSettings const settings;
    double facets = 0.0;
    for (auto _ : state) {
        auto const model = ReadModel(file);
        model->FindSupportSurface(settings.angle, 1);
        model->FilterUnSuspendSupport(settings.minArea);
        model->FindSuspendEdge(-1, settings.edgesUp, settings.edgesDown, settings.edgeLength);
        model->GenSupportSTL(settings.down);
        model->GenSuspendSTL(settings.down);
        facets = model->GetFacetsNum();
    }
    ReportFacets(state, facets);
}

void FaceSupportByKit(benchmark::State& state) {
    std::string const file = FileOf(state);
    double facets = 0.0;
    for (auto _ : state) {
        varnet::Part const part = varnet::Part::Read(file);
        varnet::Supports const supports(part);
        facets = static_cast<double>(part.Triangles().size());
    }
    ReportFacets(state, facets);
}

constexpr int kLayers = 500;

varnet::SliceSettings SettingsFor(varnet::Part const& part) {
    varnet::SliceSettings settings;
    varnet::Box3 const& box = part.Measures().box;
    settings.layer = (box.max.z - box.min.z) / kLayers;
    settings.hatch = (box.max.x - box.min.x) / 100.0;
    return settings;
}

void FaceSliceByPieces(benchmark::State& state) {
    varnet::Part const part = varnet::Part::Read(FileOf(state));
    varnet::SliceSettings const settings = SettingsFor(part);
    for (auto _ : state) {
        varnet::Pulse pulse;
        varnet::SlicePlan const plan = varnet::PlanSlices(varnet::SlicerInputs(part), settings, pulse);
        varnet::LayerMaker maker(plan);
        for (int n = 1; n <= plan.heights.count; ++n)
            benchmark::DoNotOptimize(maker.Make(n, pulse).layer.points.data());
    }
    ReportFacets(state, static_cast<double>(part.Triangles().size()));
}

void FaceSliceByKit(benchmark::State& state) {
    varnet::Part const part = varnet::Part::Read(FileOf(state));
    varnet::SliceSettings const settings = SettingsFor(part);
    for (auto _ : state) {
        varnet::Slicer slicer(varnet::SlicerInputs(part), settings);
        for (varnet::Layer const& layer : slicer) benchmark::DoNotOptimize(layer.points.data());
    }
    ReportFacets(state, static_cast<double>(part.Triangles().size()));
}

// A million facets of a gyroid, a sphere of rings, 1,000 spheres, a plate of cylinders, a noise field.
void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (int const shape : {0, 2, 3, 4, 7}) benchmark->Args({1'000'000, shape});
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK(FaceReadByClasses)->Apply(Sizes);
BENCHMARK(FaceReadByKit)->Apply(Sizes);
BENCHMARK(FaceSupportByClasses)->Apply(Sizes);
BENCHMARK(FaceSupportByKit)->Apply(Sizes);
BENCHMARK(FaceSliceByPieces)->Apply(Sizes);
BENCHMARK(FaceSliceByKit)->Apply(Sizes);

}  // namespace
