// What hangs in the air, and the solids that hold it.

#include <algorithm>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"
#include "varnet/Picture.h"
#include "varnet/Supports.h"

namespace {

constexpr std::size_t kListed = 50;
constexpr std::uint32_t kRed = 0xD03020;
constexpr std::uint32_t kYellow = 0xE8C840;
constexpr std::uint32_t kGrey = 0xC0C0C0;

struct SupportOptions {
    std::string input;
    std::string output;
    std::string ply;  // empty: no picture
    std::string connect = "edge";
    bool toPlate = false;  // what a `down` of 0 says anyway
    bool json = false;
    varnet::SupportSettings settings;
    ReadOptions read;
};

// Supported regions red, the others yellow.
void WritePicture(std::string const& file, varnet::Part const& part, varnet::Supports const& supports) {
    std::vector<std::uint32_t> colors(part.Triangles().size(), kGrey);
    for (varnet::Overhang const& overhang : supports.Overhangs()) {
        for (std::int32_t const triangle : overhang.triangles) {
            if (triangle >= 0)
                colors[static_cast<std::size_t>(triangle)] = overhang.supported ? kRed : kYellow;
        }
    }
    varnet::WritePly(PathOf(file), part.Points(), part.Triangles(), colors);
}

nlohmann::json OverhangsJson(varnet::Supports const& supports) {
    nlohmann::json list = nlohmann::json::array();
    for (varnet::Overhang const& overhang : supports.Overhangs()) {
        list.push_back({{"facets", overhang.triangles.size()},
                        {"area", overhang.area},
                        {"projected_area", overhang.projectedArea},
                        {"box", ToJson(overhang.box)},
                        {"supported", overhang.supported},
                        {"why", overhang.why}});
    }
    return list;
}

nlohmann::json EdgesJson(varnet::Supports const& supports) {
    nlohmann::json list = nlohmann::json::array();
    for (varnet::HangingEdge const& edge : supports.Edges()) {
        list.push_back({{"vertices", edge.points.size()}, {"length", edge.length}, {"lowest", edge.lowest}});
    }
    return list;
}

void AddRegions(Report& report, varnet::Supports const& supports) {
    auto const overhangs = supports.Overhangs();
    report.Add("regions", "region_count", static_cast<long long>(overhangs.size()));
    for (std::size_t i = 0; i < std::min(kListed, overhangs.size()); ++i) {
        varnet::Overhang const& overhang = overhangs[i];
        report.AddRow("region " + std::to_string(i + 1),
                      std::string(overhang.supported ? "kept" : "dropped") + ": " + overhang.why + "; area " +
                          Number(overhang.area) + ", projected " + Number(overhang.projectedArea) + ", box " +
                          TextOf(overhang.box));
    }
    if (overhangs.size() > kListed)
        report.AddRow("...", Count(static_cast<long long>(overhangs.size() - kListed)) + " more");
    report.AddJson("regions", OverhangsJson(supports));
    double length = 0.0;
    for (varnet::HangingEdge const& edge : supports.Edges()) length += edge.length;
    report.Add("hanging edges", "edge_count", static_cast<long long>(supports.Edges().size()),
               Count(static_cast<long long>(supports.Edges().size())) + " chains, " + Number(length) + " mm");
    report.AddJson("edges", EdgesJson(supports));
    report.Add("regions smaller than a stroke", "small_regions",
               static_cast<long long>(supports.SmallRegions()));
}

void Run(SupportOptions options) {
    varnet::Part const part = ReadPart(options.input, options.read);
    options.settings.connectByVertex = options.connect == "vertex";
    options.settings.progress = Bar("Building support");
    varnet::Supports const supports(part, options.settings);
    long long facets = 0;
    for (varnet::SupportSolid const& solid : supports.Solids())
        facets += static_cast<long long>(solid.triangles.size());
    supports.Write(PathOf(options.output));
    if (!options.ply.empty()) WritePicture(options.ply, part, supports);
    Report report(options.input + " -> " + options.output);
    AddRegions(report, supports);
    report.Add("solids", "solids", static_cast<long long>(supports.Solids().size()),
               Count(static_cast<long long>(supports.Solids().size())) + ", " + Count(facets) + " facets");
    report.AddJson("facets", facets);
    report.Print(options.json, options.output == "-");
    if (supports.Solids().empty()) Warn("nothing needs support: " + options.output + " holds no facets");
}

}  // namespace

void AddSupport(CLI::App& app) {
    auto const options = std::make_shared<SupportOptions>();
    varnet::SupportSettings& settings = options->settings;
    CLI::App* const command =
        app.add_subcommand("support", "Find what hangs in the air and write support solids for it");
    command->add_option("IN", options->input, "Mesh file to read")->required();
    command->add_option("-o", options->output, "STL file to write the solids to, - for standard output")
        ->required();
    command->add_option("--ply", options->ply, "PLY file to write, with the regions coloured");
    auto const number = [command](char const* name, double& value, double most, char const* what) {
        return command->add_option(name, value, what)
            ->check(WhyNotFinite)
            ->check(CLI::Range(0.0, most))
            ->capture_default_str();
    };
    number("--angle", settings.angle, 90.0, "Faces less than this from straight down need support");
    command->add_option("--connect", options->connect, "What joins facets to one region")
        ->check(CLI::IsMember({"edge", "vertex"}))
        ->capture_default_str();
    number("--min-area", settings.minArea, 1e12, "Regions with less projected area need to hang free");
    CLI::Option* const down = command->add_option("--down", settings.down, "Closed solids of this height, mm")
                                  ->check(WhyNotFinite)
                                  ->check(CLI::Range(1e-6, 1e9));
    command
        ->add_flag("--to-plate", options->toPlate,
                   "Solids down to the lowest point of the part, open at the bottom below faces (default)")
        ->excludes(down);
    number("--edges-up", settings.edgesUp, 90.0, "Facets less than this from straight up hold edges");
    number("--edges-down", settings.edgesDown, 90.0, "And those less than this from straight down");
    number("--edge-length", settings.edgeLength, 1e9, "Chains of edges must be longer than this, mm");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] {
        KeepInputs({options->input}, options->output);
        KeepInputs({options->input}, options->ply);
        Run(*options);
    });
}
