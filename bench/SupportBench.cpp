// What is found on a mesh and made from it: surfaces, overhangs, suspended edges, level planes, shells,
// solids. Each on a gyroid, whose facets look all ways, and on a noisy height field turned over, with a very
// great number of small overhangs.

#include <Varnet64.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BenchFiles.h"

namespace {

constexpr double kAngle = 45.0;

enum Shape : std::int64_t { kGyroid, kNoise };

constexpr std::array<char const*, 2> kShapeNames = {"gyroid", "noise"};

// Read from a file, as a host would do it, so that vertices and facets lie in memory as they do there.
std::unique_ptr<CSTLModel> Load(std::string const& file) {
    WidePath path(file);
    auto pModel = std::make_unique<CSTLModel>();
    pModel->ReadSTLFile(path.Get(), 0);
    return pModel;
}

std::unique_ptr<CSTLModel> Load(benchmark::State& state) {
    auto const nFacets = static_cast<std::size_t>(state.range(0));
    state.SetLabel(kShapeNames[static_cast<std::size_t>(state.range(1))]);
    return Load(state.range(1) == kGyroid ? GyroidFile(nFacets) : NoiseFile(nFacets));
}

// On a model as it was read: a division leaves the facets in the order of its surfaces, which lies less well
// in memory.
void ExtractSurfaceAndEdge(benchmark::State& state) {
    double dFacets = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pModel = Load(state);
        dFacets = pModel->GetFacetsNum();
        state.ResumeTiming();
        pModel->ExtractSurfaceAndEdge();
        state.PauseTiming();
        state.counters["surfaces"] = pModel->GetCharacterFacetsNum();
        pModel.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

void ExtractSurfaceAndEdgeAgain(benchmark::State& state) {
    auto const pModel = Load(state);
    for (auto _ : state) pModel->ExtractSurfaceAndEdge();
    ReportFacets(state, pModel->GetFacetsNum());
}

void ClassifySurf(benchmark::State& state) {
    auto const pModel = Load(state);
    for (auto _ : state) pModel->ClassifySurf(CSTLModel::EightClassifyFun, 0.1);
    ReportFacets(state, pModel->GetFacetsNum());
}

void FindSupportSurface(benchmark::State& state) {
    auto const pModel = Load(state);
    int nSurfaces = 0;
    for (auto _ : state) nSurfaces = pModel->FindSupportSurface(kAngle, 1);
    state.counters["surfaces"] = nSurfaces;
    ReportFacets(state, pModel->GetFacetsNum());
}

void FindSupportSurfaceByVertices(benchmark::State& state) {
    auto const pModel = Load(state);
    for (auto _ : state) benchmark::DoNotOptimize(pModel->FindSupportSurface(kAngle, 0));
    ReportFacets(state, pModel->GetFacetsNum());
}

void FilterUnSuspendSupport(benchmark::State& state) {
    auto const pModel = Load(state);
    pModel->FindSupportSurface(kAngle, 1);
    for (auto _ : state) benchmark::DoNotOptimize(pModel->FilterUnSuspendSupport(1e9));
    ReportFacets(state, pModel->GetFacetsNum());
}

void FindSuspendEdge(benchmark::State& state) {
    auto const pModel = Load(state);
    for (auto _ : state) benchmark::DoNotOptimize(pModel->FindSuspendEdge(-1, kAngle, kAngle, 1.0));
    state.counters["chains"] = pModel->m_SuspendEdgeArray.GetSize();
    ReportFacets(state, pModel->GetFacetsNum());
}

void ExtractHorizonPlane(benchmark::State& state) {
    auto const pModel = Load(state);
    CSurfaceArray planes;
    for (auto _ : state) {
        pModel->ExtractHorizonPlane(0.001, &planes);
        state.PauseTiming();
        for (int i = 0; i < planes.m_aSurface.GetSize(); ++i) planes.m_aSurface[i]->m_aFacet.RemoveAll();
        planes.RemoveAllSurface();
        state.ResumeTiming();
    }
    ReportFacets(state, pModel->GetFacetsNum());
}

void GenSupportSTL(benchmark::State& state) {
    auto const pModel = Load(state);
    pModel->FindSupportSurface(kAngle, 1);
    pModel->FilterUnSuspendSupport(1.0);
    for (auto _ : state) {
        pModel->GenSupportSTL(2.0);
        state.PauseTiming();
        pModel->ClearSupportSTL();
        state.ResumeTiming();
    }
    ReportFacets(state, pModel->GetFacetsNum());
}

// ---- Shells, beside the loading of the same facets

shapes::Mesh OneShell(std::size_t nFacets) { return shapes::GyroidOfAbout(nFacets); }

// 1,280 facets a shell.
shapes::Mesh ManyShells(std::size_t nFacets) {
    return shapes::Tray(20, static_cast<int>(nFacets / 25600), 3);
}

// 80 facets a shell, so that a million facets make more than ten thousand.
shapes::Mesh TinyShells(std::size_t nFacets) { return shapes::Tray(50, static_cast<int>(nFacets / 4000), 1); }

struct ShellShape {
    char const* pName;
    shapes::Mesh (*pMake)(std::size_t);
};
constexpr std::array<ShellShape, 3> kShellShapes = {
    {{"one-shell", OneShell}, {"1280-a-shell", ManyShells}, {"80-a-shell", TinyShells}}};

std::string ShellFile(benchmark::State& state) {
    ShellShape const& shape = kShellShapes[static_cast<std::size_t>(state.range(1))];
    state.SetLabel(shape.pName);
    return FileOf(shape.pName, static_cast<std::size_t>(state.range(0)), shape.pMake);
}

void LoadShells(benchmark::State& state) {
    std::string const file = ShellFile(state);
    double dFacets = 0.0;
    for (auto _ : state) {
        auto pModel = Load(file);
        state.PauseTiming();
        dFacets = pModel->GetFacetsNum();
        pModel.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

void Disjoin(benchmark::State& state) {
    auto const pModel = Load(ShellFile(state));
    int nShells = 0;
    for (auto _ : state) {
        XR_CList<void*, void*> shells;
        pModel->Disjoin(shells);
        state.PauseTiming();
        nShells = shells.GetCount();
        while (shells.IsEmpty() == 0) delete static_cast<CSTLModel*>(shells.RemoveHead());
        state.ResumeTiming();
    }
    state.counters["shells"] = nShells;
    ReportFacets(state, pModel->GetFacetsNum());
}

// ---- Chaining

// A comb of wedges with keels of 100 pieces each, the wedges in a random order: all chains grow piece by
// piece.
std::unique_ptr<CSTLModel> Keels(std::size_t nEdges) {
    constexpr std::size_t kPieces = 100;
    shapes::Mesh mesh;
    for (std::size_t i = 0; i < nEdges; ++i) {
        auto const x = static_cast<float>(i % kPieces);
        auto const y = static_cast<float>(4 * (i / kPieces));
        shapes::Corner const a{x, y, 0.0f}, b{x + 1.0f, y, 0.0f};
        mesh.push_back({a, {x, y + 1.0f, 3.0f}, b});
        mesh.push_back({a, b, {x, y - 1.0f, 3.0f}});
    }
    auto pModel = std::make_unique<CSTLModel>();
    for (shapes::Triangle const& t : shapes::Shuffled(mesh, 3)) {
        tagFACET facet;
        for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
        pModel->AddFacet(facet);
    }
    return pModel;
}

void ChainingPerEdge(benchmark::State& state) {
    auto const pModel = Keels(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(pModel->FindSuspendEdge(-1, kAngle, kAngle, 1.0));
    state.counters["chains"] = pModel->m_SuspendEdgeArray.GetSize();
    ReportFacets(state, static_cast<double>(state.range(0)));
}

void OnBothShapes(benchmark::internal::Benchmark* pBenchmark) {
    pBenchmark->ArgsProduct({{10000, 100000, 1000000}, {kGyroid, kNoise}})->Unit(benchmark::kMillisecond);
}

void OnAllShells(benchmark::internal::Benchmark* pBenchmark) {
    pBenchmark->ArgsProduct({{100000, 1000000}, {0, 1, 2}})->Unit(benchmark::kMillisecond);
}

BENCHMARK(ExtractSurfaceAndEdge)->Apply(OnBothShapes);
BENCHMARK(ExtractSurfaceAndEdgeAgain)->Apply(OnBothShapes);
BENCHMARK(ClassifySurf)->Apply(OnBothShapes);
BENCHMARK(FindSupportSurface)->Apply(OnBothShapes);
BENCHMARK(FindSupportSurfaceByVertices)->Apply(OnBothShapes);
BENCHMARK(FilterUnSuspendSupport)->Apply(OnBothShapes);
BENCHMARK(FindSuspendEdge)->Apply(OnBothShapes);
BENCHMARK(ExtractHorizonPlane)->Apply(OnBothShapes);
BENCHMARK(GenSupportSTL)->Apply(OnBothShapes);
BENCHMARK(LoadShells)->Apply(OnAllShells);
BENCHMARK(Disjoin)->Apply(OnAllShells);
BENCHMARK(ChainingPerEdge)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);

}  // namespace
