#include "BenchFiles.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>

namespace {

namespace fs = std::filesystem;

std::string BytesOf(shapes::Mesh const& mesh, Kind kind) {
    switch (kind) {
        case Kind::kShuffled:
            return shapes::ToBinaryStl(shapes::Shuffled(mesh, 1));
        case Kind::kTurned:
            return shapes::ToBinaryStl(shapes::WithTurned(mesh, 10));
        case Kind::kAscii:
            return shapes::ToAsciiStl(mesh);
        case Kind::kShells:
            return shapes::ToBinaryStl(shapes::Tray(20, static_cast<int>(mesh.size() / 25600), 3));
        default:
            return shapes::ToBinaryStl(mesh);
    }
}

fs::path FilePath(std::string const& name, std::size_t nFacets) {
    return fs::temp_directory_path() / ("varnet-bench-" + std::to_string(nFacets) + "-" + name + ".stl");
}

// Under its name as a whole or not at all.
void WriteFile(fs::path const& path, std::string const& bytes) {
    fs::path const partial = fs::path(path).concat(".part");
    std::ofstream(partial, std::ios::binary) << bytes;
    fs::rename(partial, path);
}

}  // namespace

shapes::Mesh const& GyroidMesh(std::size_t nFacets) {
    static std::map<std::size_t, shapes::Mesh> s_Meshes;
    auto found = s_Meshes.find(nFacets);
    if (found == s_Meshes.end()) {
        s_Meshes.clear();  // one at a time: the large ones take much memory
        found = s_Meshes.emplace(nFacets, shapes::GyroidOfAbout(nFacets)).first;
    }
    return found->second;
}

std::string GyroidFile(std::size_t nFacets, Kind kind) {
    constexpr std::array<char const*, 5> kNames = {"binary", "shuffled", "turned", "ascii", "shells"};
    fs::path const path = FilePath(kNames[static_cast<std::size_t>(kind)], nFacets);
    if (!fs::exists(path)) WriteFile(path, BytesOf(GyroidMesh(nFacets), kind));
    return path.string();
}

std::string FileOf(std::string const& name, std::size_t nFacets, shapes::Mesh (*pMake)(std::size_t)) {
    fs::path const path = FilePath(name, nFacets);
    if (!fs::exists(path)) WriteFile(path, shapes::ToBinaryStl(pMake(nFacets)));
    return path.string();
}

std::string NoiseFile(std::size_t nFacets) { return FileOf("noise", nFacets, shapes::NoiseOfAbout); }

std::string ShapeFile(std::size_t nShape, bool bShuffled, std::size_t nFacets) {
    fs::path const path =
        FilePath("shape-" + std::to_string(nShape) + (bShuffled ? "-shuffled" : ""), nFacets);
    if (!fs::exists(path)) {
        shapes::Mesh const mesh = shapes::SizedShapes()[nShape].pMake(nFacets);
        WriteFile(path, shapes::ToBinaryStl(bShuffled ? shapes::Shuffled(mesh, 1) : mesh));
    }
    return path.string();
}

void OfShapes(benchmark::internal::Benchmark* pBenchmark) {
    auto const nShapes = static_cast<std::int64_t>(shapes::SizedShapes().size());
    for (std::int64_t const nShuffled : {0, 1}) {
        for (std::int64_t nShape = 0; nShape < nShapes; ++nShape)
            pBenchmark->Args({1000000, nShape, nShuffled});
    }
    pBenchmark->Unit(benchmark::kMillisecond);
}
