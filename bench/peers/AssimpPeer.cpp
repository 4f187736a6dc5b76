// Assimp on the same files: from STL to shared vertices, without neighbours.

#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <memory>

#include "BenchFiles.h"

namespace {

void ReadFile(benchmark::State& state, Kind kind) {
    std::string const file = GyroidFile(static_cast<std::size_t>(state.range(0)), kind);
    double dFacets = 0.0;
    for (auto _ : state) {
        auto pImporter = std::make_unique<Assimp::Importer>();
        aiScene const* const pScene = pImporter->ReadFile(file, aiProcess_JoinIdenticalVertices);
        state.PauseTiming();
        if (pScene == nullptr) return state.SkipWithError("not read");
        dFacets = pScene->mMeshes[0]->mNumFaces;
        pImporter.reset();
        state.ResumeTiming();
    }
    ReportFacets(state, dFacets);
}

void AssimpReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void AssimpReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void AssimpReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

BENCHMARK(AssimpReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AssimpReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AssimpReadAscii)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
