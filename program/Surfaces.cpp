// A part divided into surfaces.

#include <algorithm>
#include <memory>
#include <numeric>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "varnet/Picture.h"
#include "varnet/Supports.h"

namespace {

// So many surfaces are listed, the largest first.
constexpr std::size_t kListed = 20;
constexpr std::uint32_t kGrey = 0xC0C0C0;

struct SurfacesOptions {
    std::string input;
    std::string output;  // empty: no picture
    std::string judge = "normal";
    bool json = false;
    ReadOptions read;
};

varnet::SurfaceRule RuleOf(std::string const& judge) {
    if (judge == "eight") return varnet::SurfaceRule::kOctants;
    return judge == "winding" ? varnet::SurfaceRule::kShells : varnet::SurfaceRule::kNormals;
}

void WritePicture(SurfacesOptions const& options, varnet::Part const& part,
                  varnet::Surfaces const& surfaces) {
    std::vector<std::uint32_t> colors;
    for (std::int32_t const surface : surfaces.ofTriangle) {
        colors.push_back(surface < 0 ? kGrey : surfaces.all[static_cast<std::size_t>(surface)].color);
    }
    varnet::WritePly(PathOf(options.output), part.Points(), part.Triangles(), colors);
}

void Run(SurfacesOptions const& options) {
    varnet::Part const part = ReadPart(options.input, options.read);
    varnet::Surfaces const surfaces(part, RuleOf(options.judge), Bar("Dividing"));
    if (!options.output.empty()) WritePicture(options, part, surfaces);

    std::vector<varnet::Surface> all = surfaces.all;
    std::stable_sort(all.begin(), all.end(), [](auto const& a, auto const& b) { return a.area > b.area; });
    double area = 0.0;
    double rim = 0.0;
    nlohmann::json list = nlohmann::json::array();
    for (varnet::Surface const& surface : all) {
        area += surface.area;
        rim += surface.rimLength;
        list.push_back({{"facets", surface.facets}, {"area", surface.area}, {"rim", surface.rimLength}});
    }
    Report report(options.input);
    report.Add("surfaces", "surfaces", static_cast<long long>(all.size()));
    report.Add("area, mm2", "area", area);
    report.Add("length of all rims, mm", "rim", rim);
    for (std::size_t i = 0; i < std::min(kListed, all.size()); ++i) {
        report.AddRow("surface " + std::to_string(i + 1), Count(all[i].facets) + " facets, area " +
                                                              Number(all[i].area) + ", rim " +
                                                              Number(all[i].rimLength));
    }
    if (all.size() > kListed)
        report.AddRow("...", Count(static_cast<long long>(all.size() - kListed)) + " smaller ones");
    report.AddJson("surface_list", std::move(list));
    report.Print(options.json, options.output == "-");
}

}  // namespace

void AddSurfaces(CLI::App& app) {
    auto const options = std::make_shared<SurfacesOptions>();
    CLI::App* const command =
        app.add_subcommand("surfaces", "Divide a part into surfaces: count, areas, rim lengths");
    command->add_option("IN", options->input, "Mesh file to read")->required();
    command->add_option("-o", options->output, "PLY file to write, with a colour for each surface");
    command
        ->add_option("--judge", options->judge,
                     "What makes a surface: similar normals, the octant of the normal, or a shell")
        ->check(CLI::IsMember({"normal", "eight", "winding"}))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] {
        KeepInputs({options->input}, options->output);
        Run(*options);
    });
}
