// Assimp on the same files: from STL to shared vertices, without neighbours.

#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <memory>

#include "BenchFiles.h"

namespace {

void ReadFile(benchmark::State& state, Kind kind) {
    auto const read = [](std::string const& path) {
        auto pImporter = std::make_unique<Assimp::Importer>();
        pImporter->ReadFile(path, aiProcess_JoinIdenticalVertices);
        return pImporter;
    };
    TimeReading(state, kind, read, [](Assimp::Importer const& importer) {
        aiScene const* const pScene = importer.GetScene();
        return pScene == nullptr ? 0u : pScene->mMeshes[0]->mNumFaces;
    });
}

void AssimpReadBinary(benchmark::State& state) { ReadFile(state, Kind::kBinary); }
void AssimpReadBinaryShuffled(benchmark::State& state) { ReadFile(state, Kind::kShuffled); }
void AssimpReadAscii(benchmark::State& state) { ReadFile(state, Kind::kAscii); }

BENCHMARK(AssimpReadBinary)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AssimpReadBinaryShuffled)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AssimpReadAscii)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
