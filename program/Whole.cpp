// A folder of parts, each taken down the road, as a table that says what came out whole.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "varnet/Slicer.h"
#include "varnet/Supports.h"

namespace fs = std::filesystem;

namespace {

// Each part is cut into so many layers, so that their volume can be held against that of the mesh. Where it
// differs by more than kClose of it, it is cut into more: a level face may lie anywhere in a layer.
constexpr int kFewestLayers = 400;
constexpr int kMostLayers = 6400;
constexpr double kClose = 0.0008;

struct WholeOptions {
    std::string folder;
    bool json = false;
    ReadOptions read;
};

struct Row {
    std::string file;
    std::string error;
    long long facets = 0;
    long long openInFile = 0;
    long long open = 0;
    long long bodies = 0;
    long long healed = 0;
    double meshVolume = 0.0;
    double layerVolume = 0.0;
    long long openPaths = 0;
    double seconds = 0.0;
};

std::vector<fs::path> FilesIn(fs::path const& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    fs::recursive_directory_iterator it(folder, error);
    if (error) throw varnet::Error(varnet::ErrorKind::kFile, folder, error.message());
    for (fs::directory_entry const& entry : it) {
        std::error_code ignored;
        std::string const extension = CLI::detail::to_lower(TextOf(entry.path().extension()));
        bool const isMesh = CLI::IsMember({".stl", ".csm", ".3dmf", ".oltp"})(extension).empty();
        if (isMesh && entry.is_regular_file(ignored)) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Measure(fs::path const& file, WholeOptions const& options, Row& row) {
    std::vector<varnet::Part> parts;
    parts.push_back(ReadPart(TextOf(file), options.read));
    varnet::Part const& part = parts.front();
    varnet::IntakeReport const& found = part.Report();
    row.facets = static_cast<long long>(part.Triangles().size());
    row.openInFile = found.openEdgesExact;
    row.open = part.Measures().openEdges;
    row.bodies = static_cast<long long>(part.Bodies().size());
    row.healed = found.degenerate + found.doubled + found.collinearTurned + found.split + found.welded;
    varnet::Box3 const& box = part.Measures().box;
    double const height = box.max.z - box.min.z;
    if (!(height > 0.0)) return;
    for (int layers = kFewestLayers; layers <= kMostLayers; layers *= 4) {
        varnet::SliceSettings settings;
        settings.layer = height / layers;
        settings.hatch = 0.0;
        settings.tolerance = 0.0;
        varnet::Slicer slicer(varnet::SlicerInputs(parts, {}), settings);
        slicer.ForEachLayer([](varnet::Layer&&) { ThrowIfStopped(); });
        row.meshVolume = slicer.Report().meshVolume;
        row.layerVolume = slicer.Report().cutVolume;
        row.openPaths = slicer.Report().openPaths;
        double const apart = std::fabs(row.layerVolume - row.meshVolume);
        if (row.openPaths > 0 || apart <= kClose * std::fabs(row.meshVolume)) break;
    }
}

nlohmann::json ToJson(Row const& row) {
    if (!row.error.empty()) return {{"file", row.file}, {"error", row.error}};
    return {{"file", row.file},
            {"facets", row.facets},
            {"open_edges_in_file", row.openInFile},
            {"open_edges", row.open},
            {"bodies", row.bodies},
            {"healed", row.healed},
            {"mesh_volume", row.meshVolume},
            {"layer_volume", row.layerVolume},
            {"open_paths", row.openPaths},
            {"seconds", row.seconds}};
}

void Print(Row const& row) {
    if (!row.error.empty()) {
        std::printf("%-44s %s\n", row.file.c_str(), row.error.c_str());
        return;
    }
    std::printf("%-44s %9s %8s %6s %6s %7s %14s %14s %6s %7.2f\n", row.file.c_str(),
                Count(row.facets).c_str(), Count(row.openInFile).c_str(), Count(row.open).c_str(),
                Count(row.bodies).c_str(), Count(row.healed).c_str(), Rounded(row.meshVolume, 7).c_str(),
                Rounded(row.layerVolume, 7).c_str(), Count(row.openPaths).c_str(), row.seconds);
}

void Run(WholeOptions const& options) {
    fs::path const folder = PathOf(options.folder);
    nlohmann::json list = nlohmann::json::array();
    if (!options.json) {
        constexpr char kHead[] = "%-44s %9s %8s %6s %6s %7s %14s %14s %6s %7s\n";
        std::printf(kHead, "file", "facets", "open in", "open", "bodies", "healed", "volume of mesh",
                    "of layers", "open", "seconds");
        std::printf(kHead, "", "", "the file", "read", "", "", "mm3", "mm3", "paths", "");
    }
    for (fs::path const& file : FilesIn(folder)) {
        ThrowIfStopped();
        Row row;
        row.file = TextOf(file.lexically_relative(folder));
        auto const start = std::chrono::steady_clock::now();
        try {
            Measure(file, options, row);
        } catch (varnet::Error const& error) {
            if (error.Kind() == varnet::ErrorKind::kCancelled) throw;
            row.error = error.what();
        }
        row.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!options.json) Print(row);
        list.push_back(ToJson(row));
    }
    if (options.json) PrintJson({{"files", list}});
}

}  // namespace

void AddWhole(CLI::App& app) {
    auto const options = std::make_shared<WholeOptions>();
    CLI::App* const command = app.add_subcommand(
        "whole", "Read and slice every mesh of a folder; say what was healed and whether it came out whole");
    command->add_option("DIR", options->folder, "Folder, with those in it")->required();
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] { Run(*options); });
}
