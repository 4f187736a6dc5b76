// ADMesh on the same files: from STL to shared vertices with neighbours, consistent winding, volume, writing.

#include <admesh/stl.h>

#include <filesystem>
#include <memory>

#include "BenchFiles.h"

namespace {

// One file opened and made a mesh with neighbours and shared vertices.
class AdmeshFile {
public:
    explicit AdmeshFile(std::string file) {
        stl_open(&m_File, file.data());
        stl_check_facets_exact(&m_File);
        stl_generate_shared_vertices(&m_File);
    }
    AdmeshFile(AdmeshFile const&) = delete;
    AdmeshFile& operator=(AdmeshFile const&) = delete;
    ~AdmeshFile() { stl_close(&m_File); }
    stl_file& Get() { return m_File; }

private:
    stl_file m_File{};
};

std::unique_ptr<AdmeshFile> ReadMesh(std::string const& file) { return std::make_unique<AdmeshFile>(file); }
int FacetsOf(AdmeshFile& mesh) { return mesh.Get().stats.number_of_facets; }

void ReadFile(benchmark::State& state, Kind kind) { TimeReading(state, kind, ReadMesh, FacetsOf); }

void AdmeshReadShape(benchmark::State& state) { TimeReadingShape(state, ReadMesh, FacetsOf); }

void AdmeshReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void AdmeshReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void AdmeshReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

void AdmeshFixNormalDirections(benchmark::State& state) {
    std::string const file = GyroidFile(static_cast<std::size_t>(state.range(0)), Kind::kTurned);
    double dFacets = 0.0;
    for (auto _ : state) {
        state.PauseTiming();
        auto* const pFile = new AdmeshFile(file);
        dFacets = pFile->Get().stats.number_of_facets;
        state.ResumeTiming();
        stl_fix_normal_directions(&pFile->Get());
        state.PauseTiming();
        delete pFile;
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

void AdmeshVolume(benchmark::State& state) {
    AdmeshFile file(GyroidFile(static_cast<std::size_t>(state.range(0))));
    for (auto _ : state) stl_calculate_volume(&file.Get());
    ReportFacets(state, file.Get().stats.number_of_facets);
}

void AdmeshWriteBinary(benchmark::State& state) {
    AdmeshFile file(GyroidFile(static_cast<std::size_t>(state.range(0))));
    std::string output = (std::filesystem::temp_directory_path() / "varnet-bench-peer.stl").string();
    for (auto _ : state) stl_write_binary(&file.Get(), output.data(), "peer");
    ReportFacets(state, file.Get().stats.number_of_facets);
}

BENCHMARK(AdmeshReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AdmeshReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AdmeshReadShape)->Apply(OfShapes);
BENCHMARK(AdmeshReadAscii)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AdmeshFixNormalDirections)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AdmeshVolume)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AdmeshWriteBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
