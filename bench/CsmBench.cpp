// Writing and reading the CSM layouts, beside binary STL of the same mesh in ModelFilesBench.cpp.

#include <Varnet64.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "BenchFiles.h"

namespace {

std::string OutputFile() {
    return (std::filesystem::temp_directory_path() / "varnet-bench-output.csm").string();
}

// Bytes a facet, and what binary STL has.
void ReportBytes(benchmark::State& state, int nFacets) {
    auto const dBytes = static_cast<double>(std::filesystem::file_size(OutputFile()));
    state.counters["bytes/facet"] = dBytes / nFacets;
    state.counters["of binary STL"] = dBytes / (84.0 + 50.0 * nFacets);
}

// Each of these writes the model to a path.
int WriteStrip(CSTLModel& model, char* path) { return model.ExtractFacetForCSM(1, path, 1, nullptr, 0); }
int WriteFloatStrip(CSTLModel& model, char* path) { return model.ExtractFacetForCSM(1, path, 0, nullptr, 0); }
int WriteRing(CSTLModel& model, char* path) { return model.SaveCSMFile1(path); }
int SavePlainCsm(CSTLModel& model, char* path) { return model.SaveCSMFile(path); }
int ReadPlainCsm(CSTLModel& model, char* path) { return model.ReadCSMFile(path); }
int WriteBinaryStl(CSTLModel& model, char* path) { return model.SaveSTLFile(path, 2); }

int ReadStrip(CSTLModel& model, char* path) { return model.ReadCSMFile1(path, 0); }

using Operation = int (*)(CSTLModel&, char*);

void FillFromStl(CSTLModel& model, benchmark::State const& state) {
    WidePath path(GyroidFile(static_cast<std::size_t>(state.range(0))));
    model.ReadSTLFile(path.Get(), 0);
}

void Write(benchmark::State& state, Operation write) {
    CSTLModel model;
    FillFromStl(model, state);
    WidePath output(OutputFile());
    for (auto _ : state) write(model, output.Get());
    ReportFacets(state, model.GetFacetsNum());
    ReportBytes(state, model.GetFacetsNum());
}

void Read(benchmark::State& state, Operation write, Operation read) {
    WidePath file(OutputFile());
    {
        CSTLModel model;
        FillFromStl(model, state);
        write(model, file.Get());
    }
    double dFacets = 0.0;
    for (auto _ : state) {
        auto pModel = std::make_unique<CSTLModel>();
        read(*pModel, file.Get());
        state.PauseTiming();
        dFacets = pModel->GetFacetsNum();
        pModel.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

// A sphere by icosahedra: one long ring, whose length grows with the root of the facets.
void WriteRingOfSphere(benchmark::State& state) {
    CSTLModel model;
    for (shapes::Triangle const& triangle : shapes::IcoSphere(100.0, static_cast<int>(state.range(0)))) {
        tagFACET facet;
        for (std::size_t i = 0; i < 3; ++i) {
            facet.m_ptVertex[i] = CPoint3D(triangle[i].x, triangle[i].y, triangle[i].z);
        }
        model.AddFacet(facet);
    }
    WidePath output(OutputFile());
    for (auto _ : state) model.SaveCSMFile1(output.Get());
    ReportFacets(state, model.GetFacetsNum());
    ReportBytes(state, model.GetFacetsNum());
}

void Sizes(benchmark::internal::Benchmark* pBenchmark) {
    pBenchmark->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Write, BinaryStl, WriteBinaryStl)->Apply(Sizes);
BENCHMARK_CAPTURE(Write, Strip, WriteStrip)->Apply(Sizes);
BENCHMARK_CAPTURE(Write, FloatStrip, WriteFloatStrip)->Apply(Sizes);
BENCHMARK_CAPTURE(Write, Ring, WriteRing)->Apply(Sizes);
BENCHMARK_CAPTURE(Write, Plain, SavePlainCsm)->Apply(Sizes);
BENCHMARK_CAPTURE(Read, Strip, WriteStrip, ReadStrip)->Apply(Sizes);
BENCHMARK_CAPTURE(Read, FloatStrip, WriteFloatStrip, ReadStrip)->Apply(Sizes);
BENCHMARK_CAPTURE(Read, Plain, SavePlainCsm, ReadPlainCsm)->Apply(Sizes);
BENCHMARK(WriteRingOfSphere)->Arg(6)->Arg(8)->Unit(benchmark::kMillisecond);

}  // namespace
