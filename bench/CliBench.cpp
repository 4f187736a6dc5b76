// Writing and reading slice files of 1,000 layers of 100 loops of 100 points, with hatches, in each mode; and
// the floors: the same bytes in large blocks, the same numbers converted one after the other, the same points
// put into lists.

#include <Varnet64.h>
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int kLoops = 100;
constexpr int kPoints = 100;  // of a loop
constexpr int kHatches = 10;
constexpr int kEdges = 50;                                              // of a hatch
constexpr double kPlaces = kLoops * kPoints + kHatches * kEdges * 2.0;  // of a layer
constexpr double kNumbers = 2.0 * kPlaces;

constexpr int kText = 1;

void FillLayer(CLayer& layer) {
    for (int i = 0; i < kLoops; ++i) {
        auto* const pLoop = new tagLoopTreeNode(0);
        pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
        pLoop->m_bClosed = 1;
        pLoop->m_nDirection = LOOPDIRECT_CCW;
        for (int k = 0; k < kPoints; ++k) {
            double const dAngle = 6.283185307179586 * (k % (kPoints - 1)) / (kPoints - 1);
            CPoint2D point(i % 10 * 20.0 + 9.0 * std::cos(dAngle), i / 10 * 20.0 + 9.0 * std::sin(dAngle));
            pLoop->m_pPointList->AddTail(point);
        }
        layer.AddRawLoop(pLoop);
    }
    for (int i = 0; i < kHatches; ++i) {
        auto* const pHatch = new CHatch;
        for (int k = 0; k < kEdges; ++k) {
            CEdge2D edge(CPoint2D(i * 20.123, k * 4.0), CPoint2D(i * 20.123 + 18.77, k * 4.0 + 0.01));
            pHatch->m_EdgeList.AddTail(edge);
        }
        layer.m_HatchList.AddTail(pHatch);
    }
}

std::string TempFile(std::string const& name) {
    return (std::filesystem::temp_directory_path() / ("varnet-bench-" + name)).string();
}

void WriteLayers(FILE* pFile, CLayer& layer, int nLayers, int nMode) {
    CLayerModel model;
    model.SaveCLIHead(pFile, nMode, nLayers);
    for (int n = 0; n < nLayers; ++n) {
        layer.m_dZ = 0.1 * n;
        model.SaveLayer(&layer, pFile, nMode);
    }
}

// A slice file of so many layers, made when it is first asked for.
std::string SliceFile(int nLayers, int nMode) {
    std::string const file = TempFile(std::to_string(nLayers) + "-mode" + std::to_string(nMode) + ".cli");
    if (!std::filesystem::exists(file)) {
        std::string const partial = file + ".part";
        CLayer layer;
        FillLayer(layer);
        FILE* const pFile = std::fopen(partial.c_str(), "wb");
        WriteLayers(pFile, layer, nLayers, nMode);
        std::fclose(pFile);
        std::filesystem::rename(partial, file);
    }
    return file;
}

void Report(benchmark::State& state, double dPoints, std::string const& file) {
    state.counters["time/point"] = benchmark::Counter(
        dPoints, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetBytesProcessed(static_cast<std::int64_t>(std::filesystem::file_size(file)) *
                            static_cast<std::int64_t>(state.iterations()));
}

void WriteSlices(benchmark::State& state) {
    auto const nLayers = static_cast<int>(state.range(0));
    auto const nMode = static_cast<int>(state.range(1));
    std::string const file = TempFile("output.cli");
    CLayer layer;
    FillLayer(layer);
    for (auto _ : state) {
        FILE* const pFile = std::fopen(file.c_str(), "wb");
        WriteLayers(pFile, layer, nLayers, nMode);
        std::fclose(pFile);
    }
    Report(state, kPlaces * nLayers, file);
}

void ReadSlices(benchmark::State& state) {
    auto const nLayers = static_cast<int>(state.range(0));
    auto const nMode = static_cast<int>(state.range(1));
    std::string const file = SliceFile(nLayers, nMode);
    for (auto _ : state) {
        CLayerModel model;
        model.m_pFile = std::fopen(file.c_str(), "rb");
        model.ReadCLIHead();
        CLayer layer;
        int nRead = 0;
        while (layer.ReadCLIFile(model.m_pFile, nMode) == 1) {
            layer.ReleaseAll();
            ++nRead;
        }
        std::fclose(model.m_pFile);
        if (nRead != nLayers) state.SkipWithError("layers are missing");
    }
    Report(state, kPlaces * nLayers, file);
}

// Layers of four points: what reading one layer costs beside its points.
void ReadSmallLayers(benchmark::State& state) {
    auto const nLayers = static_cast<int>(state.range(0));
    auto const nMode = static_cast<int>(state.range(1));
    std::string const file = TempFile("small.cli");
    FILE* const pOutput = std::fopen(file.c_str(), "wb");
    CLayer small;
    auto* const pLoop = new tagLoopTreeNode(0);
    pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
    for (CPoint2D point : {CPoint2D(0, 0), CPoint2D(1, 0), CPoint2D(1, 1), CPoint2D(0, 1)}) {
        pLoop->m_pPointList->AddTail(point);
    }
    small.AddRawLoop(pLoop);
    WriteLayers(pOutput, small, nLayers, nMode);
    std::fclose(pOutput);
    for (auto _ : state) {
        CLayerModel model;
        model.m_pFile = std::fopen(file.c_str(), "rb");
        model.ReadCLIHead();
        CLayer layer;
        while (layer.ReadCLIFile(model.m_pFile, nMode) == 1) layer.ReleaseAll();
        std::fclose(model.m_pFile);
    }
    state.counters["time/layer"] = benchmark::Counter(
        nLayers, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void FloorReadSliceBytes(benchmark::State& state) {
    auto const nLayers = static_cast<int>(state.range(0));
    std::string const file = SliceFile(nLayers, static_cast<int>(state.range(1)));
    std::vector<char> block(std::size_t{1} << 16);
    for (auto _ : state) {
        FILE* const pFile = std::fopen(file.c_str(), "rb");
        while (std::size_t const n = std::fread(block.data(), 1, block.size(), pFile)) {
            benchmark::DoNotOptimize(block[n - 1]);
        }
        std::fclose(pFile);
    }
    Report(state, kPlaces * nLayers, file);
}

void FloorWriteSliceBytes(benchmark::State& state) {
    auto const nLayers = static_cast<int>(state.range(0));
    auto nLeft = std::filesystem::file_size(SliceFile(nLayers, static_cast<int>(state.range(1))));
    std::string const file = TempFile("floor.cli");
    std::vector<char> const block(std::size_t{1} << 16, 'x');
    std::size_t const nBlocks = nLeft / block.size();
    for (auto _ : state) {
        FILE* const pFile = std::fopen(file.c_str(), "wb");
        for (std::size_t i = 0; i < nBlocks; ++i) std::fwrite(block.data(), 1, block.size(), pFile);
        std::fclose(pFile);
    }
    Report(state, kPlaces * nLayers, file);
}

// The numbers of one layer, as text with blanks between.
std::string LayerNumbers() {
    CLayer layer;
    FillLayer(layer);
    FILE* const pFile = std::tmpfile();
    layer.WriteCLIFile(pFile, kText);
    std::string text(static_cast<std::size_t>(std::ftell(pFile)), ' ');
    std::rewind(pFile);
    text.resize(std::fread(text.data(), 1, text.size(), pFile));
    std::fclose(pFile);
    for (char& c : text) {
        if (c != '.' && c != '-' && (c < '0' || c > '9')) c = ' ';
    }
    return text;
}

void FloorFromChars(benchmark::State& state) {
    std::string const text = LayerNumbers();
    for (auto _ : state) {
        char const* p = text.data();
        char const* const pEnd = p + text.size();
        for (;;) {
            while (p != pEnd && *p == ' ') ++p;
            if (p == pEnd) break;
            double d = 0.0;
            p = std::from_chars(p, pEnd, d).ptr;
            benchmark::DoNotOptimize(d);
        }
    }
    state.counters["time/point"] = benchmark::Counter(
        kPlaces, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) *
                            static_cast<std::int64_t>(state.iterations()));
}

void FloorToChars(benchmark::State& state) {
    std::vector<double> numbers;
    for (int i = 0; i < static_cast<int>(kNumbers); ++i) numbers.push_back(std::sin(i) * 200.0);
    std::vector<char> text(numbers.size() * 16);
    for (auto _ : state) {
        char* p = text.data();
        for (double const d : numbers) {
            *p++ = ' ';
            p = std::to_chars(p, p + 15, d, std::chars_format::fixed, 3).ptr;
        }
        benchmark::DoNotOptimize(*p);
    }
    state.counters["time/point"] = benchmark::Counter(
        kPlaces, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The same points in the same lists, from nowhere: the work that any reader has.
void FloorBuildLists(benchmark::State& state) {
    for (auto _ : state) {
        CLayer layer;
        for (int i = 0; i < kLoops; ++i) {
            auto* const pLoop = new tagLoopTreeNode(0);
            pLoop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(kPoints);
            for (int k = 0; k < kPoints; ++k) {
                CPoint2D point(i, k);
                pLoop->m_pPointList->AddTail(point);
            }
            layer.AddRawLoop(pLoop);
        }
        for (int i = 0; i < kHatches; ++i) {
            auto* const pHatch = new CHatch;
            pHatch->m_EdgeList.m_nBlockSize = kEdges;
            for (int k = 0; k < kEdges; ++k) {
                CEdge2D edge(CPoint2D(i, k), CPoint2D(k, i));
                pHatch->m_EdgeList.AddTail(edge);
            }
            layer.m_HatchList.AddTail(pHatch);
        }
        layer.GetBoundBox();
        layer.ReleaseAll();
    }
    state.counters["time/point"] = benchmark::Counter(
        kPlaces, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

BENCHMARK(FloorReadSliceBytes)->ArgsProduct({{1000}, {1, 2}})->Unit(benchmark::kMillisecond);
BENCHMARK(FloorWriteSliceBytes)->ArgsProduct({{1000}, {1, 2}})->Unit(benchmark::kMillisecond);
BENCHMARK(FloorFromChars)->Unit(benchmark::kMillisecond);
BENCHMARK(FloorToChars)->Unit(benchmark::kMillisecond);
BENCHMARK(FloorBuildLists)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadSlices)->ArgsProduct({{100, 1000}, {1, 2, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(WriteSlices)->ArgsProduct({{100, 1000}, {1, 2, 3}})->Unit(benchmark::kMillisecond);
BENCHMARK(ReadSmallLayers)->ArgsProduct({{1000, 100000}, {1, 2}})->Unit(benchmark::kMillisecond);

}  // namespace
