// A mesh, or slices, in another format; the result is read back, to say what the format has cost.

#include <algorithm>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "ConvertSlices.h"
#include "PartFacts.h"
#include "Reading.h"

namespace fs = std::filesystem;

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    bool floats = false;
    bool ring = false;
    bool plain = false;
    std::string header;  // file with the header of a CSM file in strips; none when empty
    std::string mode;    // of a slice file; that of the input when empty
    bool json = false;
    ReadOptions read;
};

std::string ExtensionOf(std::string const& file) {
    std::string extension = TextOf(PathOf(file).extension());
    for (char& c : extension) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return extension;
}

[[noreturn]] void Refuse(std::string const& text) { throw CLI::ValidationError(text); }

bool HasCsmOption(ConvertOptions const& options) {
    return options.floats || options.ring || options.plain || !options.header.empty();
}

varnet::MeshFormat FormatOf(ConvertOptions const& options) {
    std::string const extension = ExtensionOf(options.output);
    if (!options.mode.empty()) Refuse(options.output + ": --mode is for .cli");
    if (extension != ".csm" && extension != ".stl")
        Refuse(options.output + ": can write .stl, .csm and .cli");
    if (extension == ".stl" && HasCsmOption(options)) {
        Refuse(options.output + ": --floats, --ring, --plain and --header are for .csm");
    }
    if (extension == ".stl") return varnet::MeshFormat::kBinaryStl;
    if (options.ring) return varnet::MeshFormat::kRingCsm;
    return options.plain ? varnet::MeshFormat::kPlainCsm : varnet::MeshFormat::kStripCsm;
}

void RunMesh(ConvertOptions const& options) {
    varnet::MeshFormat const format = FormatOf(options);
    varnet::Part const part = ReadPart(options.input, options.read);
    varnet::MeshWriteSettings settings;
    settings.format = format;
    settings.floats = options.floats;
    if (!options.header.empty()) settings.header = PathOf(options.header);
    settings.progress = Bar("Writing");
    varnet::WriteReport const written = part.Write(PathOf(options.output), settings);

    long long const before = BytesOf(PathOf(options.input));
    long long const after = BytesOf(PathOf(options.output));
    double const stl = 84.0 + 50.0 * static_cast<double>(written.facetsBefore);
    Report report(options.input + " -> " + options.output);
    report.Add("formats", "format", std::string(NameOf(format)),
               std::string(NameOf(part.Format())) + " -> " + NameOf(format));
    AddIntake(report, part);
    auto const change = [&report](char const* label, char const* key, auto first, auto second,
                                  auto const& text) {
        report.Add(label, key, nlohmann::json{first, second}, text(first) + ", read back " + text(second));
    };
    auto const count = [](std::int64_t n) { return Count(n); };
    auto const number = [](double value) { return Number(value); };
    report.Add("bytes", "bytes", nlohmann::json{before, after}, Count(before) + " -> " + Count(after));
    change("facets", "facets", written.facetsBefore, written.facetsAfter, count);
    change("open edges", "open_edges", written.openEdgesBefore, written.openEdgesAfter, count);
    change("volume, mm3", "volume", written.volumeBefore, written.volumeAfter, number);
    report.Add("largest coordinate error, mm", "largest_error", written.largestError);
    report.Add("size, of binary STL", "size_of_stl", static_cast<double>(after) / stl);
    report.Print(options.json, options.output == "-");
    if (written.openEdgesAfter > written.openEdgesBefore) {
        Warn(options.output + ": the format has opened " +
             Count(written.openEdgesAfter - written.openEdgesBefore) +
             " edges: --plain keeps every facet as it is");
    }
    if (written.facetsAfter < written.facetsBefore) {
        Warn(options.output + ": " + Count(written.facetsBefore - written.facetsAfter) +
             " facets did not come back");
    }
}

void Run(ConvertOptions const& options) {
    if (ExtensionOf(options.output) != ".cli") return RunMesh(options);
    if (HasCsmOption(options))
        Refuse(options.output + ": --floats, --ring, --plain and --header are for .csm");
    ConvertSlices(options.input, options.output, options.mode, options.json);
}

}  // namespace

void AddConvert(CLI::App& app) {
    auto const options = std::make_shared<ConvertOptions>();
    CLI::App* const command = app.add_subcommand(
        "convert", "Write a mesh file, or a slice file, in another format, and say what it lost");
    command->add_option("IN", options->input, "File to read: STL, CSM, 3DMF, OLTP, or CLI slices")
        ->required();
    command
        ->add_option("OUT", options->output,
                     "File to write: .stl, .csm, in strips of 16-bit points, or .cli, from .cli")
        ->required();
    CLI::Option* const floats =
        command->add_flag("--floats", options->floats, "CSM strips with float points");
    CLI::Option* const ring = command->add_flag("--ring", options->ring, "CSM ring stream, 24-bit points");
    CLI::Option* const plain = command->add_flag("--plain", options->plain, "Plain CSM, float points");
    CLI::Option* const header =
        command->add_option("--header", options->header, "File with the header text of CSM strips");
    command->add_option("--mode", options->mode, "How slices are written (that of IN if not given)")
        ->check(CLI::IsMember({"ascii", "binary", "coc"}));
    ring->excludes(floats, plain, header);
    plain->excludes(floats, header);
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    command->callback([options] { Run(*options); });
}
