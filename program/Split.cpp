// A file for each body.

#include <memory>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kListed = 50;

struct SplitOptions {
    std::string input;
    std::string folder;
    bool force = false;
    bool json = false;
    ReadOptions read;
};

void Run(SplitOptions const& options) {
    varnet::Part const part = ReadPart(options.input, options.read);
    std::vector<varnet::Part> const bodies = part.Split();
    fs::path const folder = PathOf(options.folder);
    auto const pathOf = [&](std::size_t i) {
        fs::path name = folder / PathOf(options.input).stem();
        return name += "_" + std::to_string(i + 1) + ".STL";
    };
    for (std::size_t i = 0; i < bodies.size() && !options.force; ++i) {
        std::error_code ignored;
        if (!fs::exists(pathOf(i), ignored)) continue;
        throw varnet::Error(varnet::ErrorKind::kFile, pathOf(i), "is there already: --force overwrites it");
    }
    MakeFolder(folder);
    Report report(options.input + " -> " + options.folder);
    report.Add("bodies", "bodies", static_cast<long long>(bodies.size()));
    nlohmann::json list = nlohmann::json::array();
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        ThrowIfStopped();
        bodies[i].Write(pathOf(i));
        std::string const name = TextOf(pathOf(i).filename());
        varnet::MeshMeasures const& measures = bodies[i].Measures();
        auto const facets = static_cast<long long>(bodies[i].Triangles().size());
        list.push_back({{"file", name},
                        {"facets", facets},
                        {"volume", measures.volume},
                        {"open_edges", measures.openEdges}});
        if (i < kListed) report.AddRow(name, Count(facets) + " facets, volume " + Number(measures.volume));
    }
    if (bodies.size() > kListed)
        report.AddRow("...", Count(static_cast<long long>(bodies.size() - kListed)) + " more");
    report.AddJson("files", std::move(list));
    report.Print(options.json);
}

}  // namespace

void AddSplit(CLI::App& app) {
    auto const options = std::make_shared<SplitOptions>();
    CLI::App* const command = app.add_subcommand(
        "split", "Write each body, with its cavities, to a file of its own: part_1.STL, part_2.STL");
    command->add_option("IN", options->input, "Mesh file to read")->required();
    command->add_option("-o", options->folder, "Folder for the files")->required();
    command->add_flag("--force", options->force, "Overwrite files that are there");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] { Run(*options); });
}
