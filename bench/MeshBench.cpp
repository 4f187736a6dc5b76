// What happens to a mesh in memory: facets entering, winding, measures, rebuilding, release; and its peak
// size.

#include <Varnet64.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "BenchFiles.h"

namespace {

std::unique_ptr<CSTLModel> Load(std::int64_t nFacets, Kind kind = Kind::kBinary) {
    WidePath path(GyroidFile(static_cast<std::size_t>(nFacets), kind));
    auto pModel = std::make_unique<CSTLModel>();
    pModel->ReadSTLFile(path.Get(), 0);
    return pModel;
}

void AddFacet(benchmark::State& state) {
    std::vector<tagFACET> facets;
    for (shapes::Triangle const& t : GyroidMesh(static_cast<std::size_t>(state.range(0)))) {
        tagFACET facet;
        for (std::size_t i = 0; i < 3; ++i) facet.m_ptVertex[i] = CPoint3D(t[i].x, t[i].y, t[i].z);
        facets.push_back(facet);
    }
    for (auto _ : state) {
        auto pModel = std::make_unique<CSTLModel>();
        for (tagFACET facet : facets) pModel->AddFacet(facet);
        state.PauseTiming();
        pModel.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, static_cast<double>(facets.size()));
}

// Splitting what was read with the tolerance. Shells have the default one.
void SplitShapeRead(benchmark::State& state, double dTolerance) {
    WidePath path(ShapeFile(static_cast<std::size_t>(state.range(1)), state.range(2) != 0,
                            static_cast<std::size_t>(state.range(0))));
    CSTLModel model;
    model.m_VertexTree.m_dTolerance = dTolerance;
    model.ReadSTLFile(path.Get(), 0);
    for (auto _ : state) {
        XR_CList<void*, void*> shells;
        model.Disjoin(shells);
        state.PauseTiming();
        for (XR__POSITION* p = shells.GetHeadPosition(); p != nullptr;)
            delete static_cast<CSTLModel*>(shells.GetNext(p));
        shells.RemoveAll();
        state.ResumeTiming();
    }
    ReportFacets(state, model.GetFacetsNum());
}

void SplitShape(benchmark::State& state) { SplitShapeRead(state, 0.0001); }
void SplitShapeFinely(benchmark::State& state) { SplitShapeRead(state, 0.000001); }
void SplitShapeExactly(benchmark::State& state) { SplitShapeRead(state, 0.0); }

void FixNormal(benchmark::State& state) {
    double dFacets = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pModel = Load(state.range(0), Kind::kTurned);
        dFacets = pModel->GetFacetsNum();
        state.ResumeTiming();
        pModel->FixNormal();
        state.PauseTiming();
        pModel.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

void CalAreaAndCalVolume(benchmark::State& state) {
    auto const pModel = Load(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(pModel->CalArea());
        benchmark::DoNotOptimize(pModel->CalVolume());
    }
    ReportFacets(state, pModel->GetFacetsNum());
}

void ReBuildTree(benchmark::State& state) {
    auto const pModel = Load(state.range(0));
    for (auto _ : state) pModel->m_VertexTree.ReBuildTree();
    ReportFacets(state, pModel->GetFacetsNum());
}

void ReleaseAllFacet(benchmark::State& state) {
    double dFacets = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto pModel = Load(state.range(0));
        dFacets = pModel->GetFacetsNum();
        state.ResumeTiming();
        pModel->ReleaseAllFacet();
    }
    ReportFacets(state, dFacets);
}

// The peak of a process that does nothing but read the file, less that of one that reads a file of one facet.
double PeakBytes(std::string const& file) {
    pid_t const nChild = fork();
    if (nChild == 0) {
        WidePath path(file);
        CSTLModel model;
        model.ReadSTLFile(path.Get(), 0);
        _exit(0);
    }
    rusage usage{};
    int nStatus = 0;
    wait4(nChild, &nStatus, 0, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024.0;
}

void PeakBytesPerFacet(benchmark::State& state) {
    auto const nFacets = static_cast<std::size_t>(state.range(0));
    std::string const file = GyroidFile(nFacets);
    std::string const none = GyroidFile(1);
    double dPeak = 0.0;
    for (auto _ : state) dPeak = PeakBytes(file) - PeakBytes(none);
    state.counters["bytes/facet"] = dPeak / static_cast<double>(nFacets);
}

BENCHMARK(PeakBytesPerFacet)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(AddFacet)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(FixNormal)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(SplitShape)->Apply(OfShapes);
BENCHMARK(SplitShapeFinely)->Apply(OfShapes);
BENCHMARK(SplitShapeExactly)->Apply(OfShapes);
BENCHMARK(CalAreaAndCalVolume)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReBuildTree)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReleaseAllFacet)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
