#include "SliceOptions.h"

#include <algorithm>

namespace {

// "A:B", "A:", ":B" or "A".
void TakeRange(std::string const& text, varnet::SliceSettings& settings) {
    if (text.empty()) return;
    std::size_t const colon = text.find(':');
    auto const number = [&text](std::string const& digits, std::int32_t otherwise) {
        if (digits.empty()) return otherwise;
        std::int32_t value = 0;
        if (!CLI::detail::lexical_cast(digits, value) || value < 1) {
            throw CLI::ValidationError("--layers", text + " is no range of layers such as 1:100");
        }
        return value;
    };
    settings.firstLayer = number(text.substr(0, colon), 1);
    settings.lastLayer =
        colon == std::string::npos ? settings.firstLayer : number(text.substr(colon + 1), settings.lastLayer);
}

// "K/N".
void TakeShard(std::string const& text, varnet::SliceSettings& settings) {
    if (text.empty()) return;
    std::size_t const slash = std::min(text.find('/'), text.size());
    bool const read =
        CLI::detail::lexical_cast(text.substr(0, slash), settings.shard) &&
        CLI::detail::lexical_cast(text.substr(std::min(slash + 1, text.size())), settings.shards);
    if (!read || settings.shard < 1 || settings.shard > settings.shards) {
        throw CLI::ValidationError("--shard", text + " is no shard such as 1/8");
    }
}

}  // namespace

void SliceOptions::Settle() {
    KeepInputs(inputs, output);
    KeepInputs(inputs, page);
    TakeRange(layers, settings);
    TakeShard(shard, settings);
    settings.rule = rule == "odd" ? varnet::SolidRule::kOdd : varnet::SolidRule::kWinding;
    if (noFill) settings.hatch = 0.0;
}

void SliceOptions::AddTo(CLI::App& command) {
    command.add_option("IN", inputs, "Mesh files to read: STL, CSM, 3DMF, OLTP")->required();
    command.add_option("-o", output, "CLI file to write, - for standard output")->required();
    auto const number = [&command](char const* name, double& value, double least, double most,
                                   char const* what) {
        return command.add_option(name, value, what)
            ->check(WhyNotFinite)
            ->check(CLI::Range(least, most))
            ->capture_default_str();
    };
    number("--layer", settings.layer, 1e-6, 1e6, "Height of a layer, mm");
    number("--hatch", settings.hatch, 0.0, 1e6, "Distance of fill lines, mm; 0 for contours only");
    command.add_flag("--no-fill", noFill, "Contours only");
    number("--angle", settings.angle, -360.0, 360.0,
           "Of the fill lines; each layer is at right angles to the last");
    number("--close", settings.close, 0.0, 1e6, "Close gaps in contours up to this, mm; 0 for never");
    CLI::Option* const holesOption =
        command
            .add_option("--fill-holes", fillHoles,
                        "Close holes of the parts whose rim is up to this long, mm, before they are sliced")
            ->check(WhyNotFinite)
            ->check(CLI::Range(0.0, 1e9));
    command.add_option("--rule", rule, "What is solid: where bodies wind round, or where an odd number does")
        ->check(CLI::IsMember({"winding", "odd"}))
        ->capture_default_str();
    CLI::Option* const pageOption =
        command.add_option("--page", page, "HTML file to write too, which shows parts and layers");
    CLI::Option* const layersOption =
        command.add_option("--layers", layers, "Only these layers of the whole, by number: A:B");
    command
        .add_option("--shard", shard,
                    "Only shard K of the layers dealt out to N shards: K/N; varnet join puts them together")
        ->excludes(layersOption);
    command.add_option("--threads", settings.threads, "The layers are the same for any number")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    CLI::Option* const supportOption =
        command.add_flag("--support", support, "Fill support solids too, in layers of even numbers");
    CLI::Option* const orderOption =
        command.add_flag("--order", order, "Print what is nearest next: contours, then fill");
    command.add_flag("--splice", splice, "Print contours and fill in one stroke where they meet")
        ->excludes(orderOption);
    command.add_option("--mode", mode, "Of the file")
        ->check(CLI::IsMember({"ascii", "binary", "coc"}))
        ->capture_default_str();
    command.add_option("--seed", seed, "Of the noise of mode coc: the same bytes in each run")->expected(1);
    command.add_flag("--strict", strict, "Exit code 1 where paths stay open");
    command.add_flag("--json", json, "Print JSON instead of a table");
    read.AddTo(command);
    CLI::Option* const streamOption =
        command
            .add_flag("--stream", stream,
                      "Cut one binary STL of any size from disk, unhealed, without taking it into memory")
            ->excludes(supportOption)
            ->excludes(pageOption)
            ->excludes(holesOption)
            ->excludes(command.get_option("--weld"));
    command
        .add_option("--temp", temp,
                    "Folder of the temporary file of --stream, 40 bytes a facet; $TMPDIR if not given")
        ->needs(streamOption);
}
