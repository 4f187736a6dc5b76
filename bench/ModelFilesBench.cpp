// Reading and writing STL files, and the floor: the same bytes read in large blocks, and each touched.

#include <Varnet64.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "BenchFiles.h"

namespace {

auto Reader(double dTolerance) {
    return [dTolerance](std::string const& file) {
        auto pModel = std::make_unique<CSTLModel>();
        pModel->m_VertexTree.m_dTolerance = dTolerance;
        WidePath path(file);
        pModel->ReadSTLFile(path.Get(), 0);
        return pModel;
    };
}

int FacetsOf(CSTLModel& model) { return model.GetFacetsNum(); }

void ReadFile(benchmark::State& state, Kind kind) { TimeReading(state, kind, Reader(0.0001), FacetsOf); }

void ReadShape(benchmark::State& state) { TimeReadingShape(state, Reader(0.0001), FacetsOf); }
void ReadShapeFinely(benchmark::State& state) { TimeReadingShape(state, Reader(0.000001), FacetsOf); }
void ReadShapeExactly(benchmark::State& state) { TimeReadingShape(state, Reader(0.0), FacetsOf); }

void ReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void ReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void ReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

void FloorReadBytes(benchmark::State& state) {
    std::string const file = GyroidFile(static_cast<std::size_t>(state.range(0)));
    std::vector<std::uint64_t> block(std::size_t{1} << 17);
    for (auto _ : state) {
        FILE* const pFile = std::fopen(file.c_str(), "rb");
        std::uint64_t nSum = 0;
        while (std::size_t const n = std::fread(block.data(), 1, block.size() * sizeof block[0], pFile)) {
            for (std::size_t i = 0; i < n / sizeof block[0]; ++i) nSum += block[i];
        }
        std::fclose(pFile);
        benchmark::DoNotOptimize(nSum);
    }
    ReportFacets(state, static_cast<double>(std::filesystem::file_size(file) - 84) / 50.0);
}

void WriteBinary(benchmark::State& state) {
    WidePath path(GyroidFile(static_cast<std::size_t>(state.range(0))));
    WidePath output((std::filesystem::temp_directory_path() / "varnet-bench-output.stl").string());
    CSTLModel model;
    model.ReadSTLFile(path.Get(), 0);
    for (auto _ : state) model.SaveSTLFile(output.Get(), 2);
    ReportFacets(state, model.GetFacetsNum());
}

BENCHMARK(FloorReadBytes)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBinary)->Arg(10000)->Arg(100000)->Arg(1000000)->Arg(4000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadBinaryShuffled)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAscii)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadShape)->Apply(OfShapes);
BENCHMARK(ReadShapeFinely)->Apply(OfShapes);
BENCHMARK(ReadShapeExactly)->Apply(OfShapes);
BENCHMARK(WriteBinary)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
