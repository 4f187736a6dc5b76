// The layers of a slice file, as a table and as pictures.

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"
#include "SliceFacts.h"
#include "varnet/Picture.h"

namespace fs = std::filesystem;

namespace {

struct LayersOptions {
    std::string input;
    bool json = false;
    std::string svg;      // folder for pictures; none when empty
    long long layer = 0;  // the only one to show; 0 for all
};

void PrintLayer(NumberedLayer const& layer) {
    LayerFacts const& f = layer.facts;
    auto const thousandths = [](double value) { return Number(std::round(value * 1000.0) / 1000.0); };
    std::printf("%8lld %10s %8s %8s %8s %9s %12s %12s  %s\n", layer.number, Number(layer.z).c_str(),
                Count(f.contours).c_str(), Count(f.openPaths).c_str(), Count(f.chains).c_str(),
                Count(f.points).c_str(), thousandths(f.area).c_str(), thousandths(f.length).c_str(),
                TextOf(f.box).c_str());
}

// All layers, or the first and last ones of many.
void PrintLayers(std::vector<NumberedLayer> const& layers) {
    constexpr std::size_t kAtEachEnd = 10;
    std::printf("%8s %10s %8s %8s %8s %9s %12s %12s  %s\n", "layer", "z", "contours", "open", "chains",
                "points", "area", "length", "box");
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (i == kAtEachEnd && layers.size() > 2 * kAtEachEnd) {
            std::printf("%8s\n", "...");
            i = layers.size() - kAtEachEnd;
        }
        PrintLayer(layers[i]);
    }
}

// Pictures of one box, so that they can be laid upon each other.
void WritePictures(varnet::SliceFile const& slices, std::vector<NumberedLayer> const& layers,
                   fs::path const& folder) {
    MakeFolder(folder);
    LayerFacts all;
    for (NumberedLayer const& layer : layers) all += layer.facts;
    for (NumberedLayer const& numbered : layers) {
        ThrowIfStopped();
        varnet::Layer const layer = slices.LayerAt(numbered.number);
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "layer_%05lld.svg", numbered.number);
        varnet::PicturePanel const panel{
            "layer " + std::to_string(numbered.number) + ", z = " + Number(numbered.z) + " mm", &layer};
        varnet::WriteBytes(folder / name.data(), varnet::PictureOf(std::span(&panel, 1), all.box));
    }
}

void Run(LayersOptions const& options) {
    varnet::SliceFile const slices = OpenSlices(options.input);
    if (options.layer > slices.LayerCount()) {
        throw varnet::Error(varnet::ErrorKind::kArgument, PathOf(options.input),
                            "there is no layer " + std::to_string(options.layer) + ": it has " +
                                std::to_string(slices.LayerCount()));
    }
    std::vector<NumberedLayer> const layers = MeasureLayers(slices, options.layer);
    Report report(options.input);
    report.AddJson("file", options.input);
    AddSlices(report, slices, layers);
    nlohmann::json list = nlohmann::json::array();
    for (NumberedLayer const& layer : layers) {
        nlohmann::json one = ToJson(layer.facts);
        one["number"] = layer.number;
        one["z"] = layer.z;
        list.push_back(std::move(one));
    }
    report.AddJson("list", std::move(list));
    report.Print(options.json);
    if (!options.json) PrintLayers(layers);
    if (!options.svg.empty()) WritePictures(slices, layers, PathOf(options.svg));
    RequireWhole(slices);
}

}  // namespace

void AddLayers(CLI::App& app) {
    auto const options = std::make_shared<LayersOptions>();
    CLI::App* const command =
        app.add_subcommand("layers", "Show the layers of a slice file: heights, counts, area, length, box");
    command->add_option("FILE", options->input, "CLI slice file to read")->required();
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    command->add_option("--svg", options->svg, "Folder for a picture of each layer");
    command->add_option("--layer", options->layer, "Only this layer, counted from 1")
        ->check(CLI::Range(1, 2147483647));
    command->callback([options] { Run(*options); });
}
