// Slice files that hold the layers of one build, put together.

#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Console.h"
#include "Reading.h"
#include "varnet/SliceFile.h"

namespace {

struct JoinOptions {
    std::vector<std::string> inputs;
    std::string output;
    bool json = false;
};

void Run(JoinOptions const& options) {
    std::vector<std::filesystem::path> inputs;
    for (std::string const& input : options.inputs) inputs.push_back(PathOf(input));
    varnet::JoinReport const joined = varnet::JoinSliceFiles(inputs, PathOf(options.output), Bar("Joining"));
    if (std::optional<varnet::LayerRange> const& range = joined.range) {
        Warn(options.output + " has layers " + std::to_string(range->first) + " to " +
             std::to_string(range->last) + " of " + std::to_string(range->whole));
    }
    Report report(std::to_string(inputs.size()) + " files -> " + options.output);
    report.Add("layers", "layers", static_cast<long long>(joined.layers));
    report.Add("bytes", "bytes", BytesOf(PathOf(options.output)));
    report.Print(options.json, options.output == "-");
}

}  // namespace

void AddJoin(CLI::App& app) {
    auto const options = std::make_shared<JoinOptions>();
    CLI::App* const command = app.add_subcommand(
        "join", "Put the layers of several slice files of one build together, in the order given");
    command->add_option("IN", options->inputs, "CLI slice files, the lowest layers first")->required();
    command->add_option("-o", options->output, "CLI slice file to write, - for standard output")->required();
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    command->callback([options] { Run(*options); });
}
