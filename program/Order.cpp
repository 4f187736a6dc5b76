// The paths of a slice file in an order in which the head travels less.

#include <array>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "varnet/PathOrder.h"
#include "varnet/Picture.h"
#include "varnet/SliceFile.h"

namespace fs = std::filesystem;

namespace {

struct OrderOptions {
    std::string input;
    std::string output;
    std::string hatches = "near";
    std::string loops = "near";
    bool splice = false;
    double width = 0.0;
    double cut = 0.0;
    std::vector<double> start = {0.0, 0.0};
    unsigned seed = 1;
    std::string svg;  // folder for pictures; none when empty
    bool json = false;
};

varnet::NextPath NextOf(std::string const& word) {
    if (word == "far") return varnet::NextPath::kFarthest;
    return word == "random" ? varnet::NextPath::kRandom : varnet::NextPath::kNearest;
}

varnet::OrderSettings SettingsOf(OrderOptions const& options) {
    varnet::OrderSettings settings;
    settings.splice = options.splice;
    settings.contours = NextOf(options.loops);
    settings.fill = NextOf(options.hatches);
    settings.width = options.width;
    settings.cut = options.cut;
    settings.start = {options.start[0], options.start[1]};
    settings.seed = options.seed;
    return settings;
}

void Draw(fs::path const& folder, varnet::Layer const& before, varnet::Layer const& after) {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "layer_%05d.svg", after.number);
    std::array<varnet::PicturePanel, 2> const panels = {{{"before", &before}, {"after", &after}}};
    varnet::WriteBytes(folder / name.data(), varnet::PictureOf(panels));
}

void Run(OrderOptions const& options) {
    varnet::SliceFile const input(PathOf(options.input), {false, Bar("Reading")});
    varnet::PathOrder order(SettingsOf(options));
    if (!options.svg.empty()) MakeFolder(PathOf(options.svg));
    varnet::SliceWriteSettings settings;
    settings.mode = input.Header().mode;
    settings.range = input.Header().range;
    varnet::SliceWriter writer(PathOf(options.output), input.LayerCount(), settings);
    auto const bar = Bar("Ordering");
    for (long long number = 1; number <= input.LayerCount(); ++number) {
        if (!bar(static_cast<double>(number) / static_cast<double>(input.LayerCount()))) ThrowIfStopped();
        varnet::Layer layer = input.LayerAt(number);
        varnet::Layer const before = options.svg.empty() ? varnet::Layer() : layer;
        order.Order(layer);
        writer.Write(layer);
        if (!options.svg.empty()) Draw(PathOf(options.svg), before, layer);
    }
    ThrowIfStopped();
    writer.Finish();
    Report report(options.input + " -> " + options.output);
    varnet::Travel const& before = order.Before();
    varnet::Travel const& after = order.After();
    report.Add("layers", "layers", static_cast<long long>(input.LayerCount()));
    report.Add("travel with the material off, mm", "travel", nlohmann::json{before.length, after.length},
               Number(before.length) + " -> " + Number(after.length));
    report.Add("starts and stops", "starts", nlohmann::json{before.starts, after.starts},
               Count(before.starts) + " -> " + Count(after.starts));
    report.Print(options.json, options.output == "-");
}

}  // namespace

void AddOrder(CLI::App& app) {
    auto const options = std::make_shared<OrderOptions>();
    CLI::App* const command =
        app.add_subcommand("order", "Order the paths of a slice file for a print head that travels little");
    command->add_option("IN", options->input, "CLI slice file to read")->required();
    command->add_option("OUT", options->output, "CLI slice file to write, - for standard output")->required();
    auto const words = CLI::IsMember({"near", "far", "random"});
    CLI::Option* const hatches =
        command->add_option("--hatches", options->hatches, "Which chain of fill comes next")
            ->check(words)
            ->capture_default_str();
    CLI::Option* const loops = command->add_option("--loops", options->loops, "Which contour comes next")
                                   ->check(words)
                                   ->capture_default_str();
    CLI::Option* const width =
        command->add_option("--width", options->width, "Contours link with fill within 1.8 times this, mm")
            ->check(WhyNotFinite)
            ->check(CLI::Range(1e-9, 1e9));
    CLI::Option* const cut = command
                                 ->add_option("--cut", options->cut,
                                              "Length of the opening of a contour, and cut off path ends, mm")
                                 ->check(WhyNotFinite)
                                 ->check(CLI::Range(0.0, 1e9));
    CLI::Option* const splice = command->add_flag("--splice", options->splice,
                                                  "Print contours in one stroke with the fill beside them");
    splice->needs(width, cut)->excludes(hatches, loops);
    width->needs(splice);
    cut->needs(splice);
    command->add_option("--start", options->start, "Where the head is at first: X,Y")
        ->check(WhyNotFinite)
        ->delimiter(',')
        ->expected(2)
        ->capture_default_str();
    command->add_option("--seed", options->seed, "Seed of the random order")->capture_default_str();
    command->add_option("--svg", options->svg, "Folder for a picture of each layer, before and after");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    command->callback([options] { Run(*options); });
}
