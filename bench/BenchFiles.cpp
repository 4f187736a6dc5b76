#include "BenchFiles.h"

#include <array>
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
    fs::path const path = fs::temp_directory_path() / ("varnet-bench-" + std::to_string(nFacets) + "-" +
                                                       kNames[static_cast<std::size_t>(kind)] + ".stl");
    if (!fs::exists(path)) {
        fs::path const partial = fs::path(path).concat(".part");
        std::ofstream(partial, std::ios::binary) << BytesOf(GyroidMesh(nFacets), kind);
        fs::rename(partial, path);
    }
    return path.string();
}
