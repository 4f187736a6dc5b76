// Parts into layers.

#include <algorithm>
#include <cmath>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "ConvertSlices.h"
#include "Reading.h"
#include "varnet/Page.h"
#include "varnet/PathOrder.h"
#include "varnet/SliceFile.h"
#include "varnet/Slicer.h"
#include "varnet/StreamSlicer.h"
#include "varnet/Supports.h"

namespace {

struct SliceOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string page;    // HTML file to look at; none when empty
    std::string layers;  // "A:B"
    std::string shard;   // "K/N"
    std::string rule = "winding";
    std::string mode = "binary";
    bool noFill = false;
    bool support = false;
    bool order = false;
    bool splice = false;
    bool strict = false;
    bool json = false;
    bool stream = false;
    std::string temp;                 // a folder; the system's when empty
    std::vector<std::uint64_t> seed;  // empty: not given
    varnet::SliceSettings settings;
    ReadOptions read;

    bool IsWhole() const { return layers.empty() && shard.empty(); }
};

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

struct Written {
    varnet::Travel travel;
    std::int64_t tooLong = 0;
    std::uint64_t bytes = 0;
};

template <class AnySlicer>
Written Write(SliceOptions const& options, AnySlicer& slicer, varnet::Page* page) {
    varnet::SliceWriteSettings settings;
    settings.mode = SliceModeOf(options.mode).value_or(varnet::SliceMode::kBinary);
    if (!options.seed.empty()) settings.seed = options.seed.front();
    if (!options.IsWhole()) {
        settings.range = varnet::LayerRange{slicer.FirstLayer(), slicer.LastLayer(), slicer.LayerCount()};
    }
    varnet::OrderSettings ordering;
    ordering.splice = options.splice;
    ordering.width = options.settings.hatch > 0.0 ? options.settings.hatch : ordering.width;
    varnet::PathOrder order(ordering);
    varnet::SliceWriter writer(PathOf(options.output), slicer.LastLayer() - slicer.FirstLayer() + 1,
                               settings);
    Written written;
    varnet::Point2 head;
    slicer.ForEachLayer([&](varnet::Layer&& layer) {
        if (options.order || options.splice) {
            // As it stands in the file, so that a later pass over the file gives the same order.
            varnet::Layer stored = AsStored(layer, settings.mode);
            order.Order(stored);
            layer = std::move(stored);
        }
        AddTravel(layer, head, written.travel);
        writer.Write(layer);
        if (page != nullptr) page->AddLayer(layer);
    });
    ThrowIfStopped();
    writer.Finish();
    written.tooLong = writer.TooLongForClassicReader();
    written.bytes = writer.BytesWritten();
    return written;
}

Report ReportOf(SliceOptions const& options) {
    return Report(std::to_string(options.inputs.size()) + (options.inputs.size() == 1 ? " part" : " parts") +
                  " -> " + options.output);
}

void Print(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written,
           std::size_t solids, Report report) {
    report.Add("layers", "layers", sliced.layers,
               Count(sliced.layers) + " of " + Number(options.settings.layer) + " mm");
    report.Add("contours", "contours", static_cast<long long>(sliced.contours));
    report.Add("open paths", "open_paths", static_cast<long long>(sliced.openPaths));
    report.Add("layers with open paths", "layers_with_open_paths",
               static_cast<long long>(sliced.layersWithOpenPaths));
    report.Add("gaps closed", "gaps_closed", sliced.gapsClosed,
               Count(sliced.gapsClosed) +
                   (sliced.gapsClosed > 0 ? ", up to " + Number(sliced.longestGapClosed) + " mm" : ""));
    report.AddJson("longest_gap_closed", sliced.longestGapClosed);
    report.AddJson("longest_gap", sliced.longestGap);
    report.Add("points", "points", static_cast<long long>(sliced.points));
    report.Add("length of all contours, mm", "contour_length", sliced.contourLength);
    report.Add("volume of the mesh, mm3", "mesh_volume", sliced.meshVolume);
    report.Add("volume of the layers, mm3", "layer_volume", sliced.volume);
    report.AddJson("cut_volume", sliced.cutVolume);
    bool const filled = options.settings.hatch > 0.0;
    report.Add("fill strokes", "strokes", sliced.strokes,
               filled ? Count(sliced.strokes) : "none: contours only");
    report.Add("support strokes", "support_strokes", static_cast<long long>(sliced.supportStrokes));
    report.Add("support solids", "support_solids", static_cast<long long>(solids));
    report.Add("travel with the material off, mm", "travel", written.travel.length);
    report.Add("starts and stops", "starts", static_cast<long long>(written.travel.starts));
    report.Add("bytes", "bytes", static_cast<long long>(written.bytes));
    report.Print(options.json, options.output == "-");
}

// What is not as the part was: a line on standard error, or with --strict an error.
void Judge(SliceOptions const& options, varnet::SliceReport const& sliced, Written const& written) {
    if (written.tooLong > 0) {
        Warn(Count(written.tooLong) +
             " paths have lines of over 10,239 characters, which some readers take for two: --mode binary "
             "has no such limit");
    }
    if (sliced.skippedFacets > 0)
        Warn(Count(sliced.skippedFacets) + " facets were not sliced: a corner is no number");
    if (sliced.openPaths == 0) return;
    bool const whole = options.IsWhole();
    double const missing = std::max(0.0, std::fabs(sliced.meshVolume) - std::fabs(sliced.cutVolume));
    std::string const text = "paths stay open in " + Count(sliced.layersWithOpenPaths) + " of " +
                             Count(sliced.layers) + " layers, the longest gap " +
                             Rounded(sliced.longestGap, 4) + " mm" +
                             (whole ? ", " + Rounded(missing, 4) + " mm3 missing" : "") +
                             ": varnet repair --fill-holes closes the part, --close MM the gaps";
    if (options.strict) throw varnet::Error(varnet::ErrorKind::kContent, text);
    Warn(text);
}

void AddStream(Report& report, varnet::StreamReport const& found) {
    report.Add("facets in the file", "facets_in_file", static_cast<long long>(found.facetsInFile));
    report.Add("facets that a layer cuts", "facets_sorted", static_cast<long long>(found.facetsSorted));
    report.AddJson("facets_lost", found.facetsInFile - found.facetsRead);
    report.AddJson("not_finite", found.notFinite);
    report.AddJson("degenerate", found.degenerate);
    report.AddJson("collinear", found.collinear);
    report.AddJson("turned", found.turned);
    report.AddJson("inside_out_layers", found.insideOutLayers);
    report.Add("bytes of the temporary file", "temporary_bytes",
               static_cast<long long>(found.temporaryBytes));
}

// What is known only after the layers are made.
void Judge(SliceOptions const& options, varnet::StreamReport const& found) {
    std::string const& input = options.inputs.front();
    if (found.facetsRead < found.facetsInFile) {
        Warn(input + ": " + Count(found.facetsInFile - found.facetsRead) + " of " +
             Count(found.facetsInFile) + " facets could not be read");
    }
    if (found.turned) Warn(input + ": the part is inside out, and is sliced as if it were turned");
    if (found.collinear > 0) {
        Warn(input + ": " + Count(found.collinear) +
             " facets without area are cut as they are: without --stream they are taken out");
    }
    if (found.insideOutLayers > 0) {
        Warn(input + ": in " + Count(found.insideOutLayers) +
             " layers a body seems to be inside out, and is empty: without --stream it is turned; "
             "--rule odd does not look at that");
    }
}

void RunStreamed(SliceOptions const& options) {
    if (options.inputs.size() != 1) throw CLI::ValidationError("--stream", "takes one part");
    varnet::StreamSettings settings;
    settings.slice = options.settings;
    settings.slice.progress = Bar("Slicing into " + TextOf(PathOf(options.output).filename()));
    settings.scale = options.read.Scale();
    settings.temp = PathOf(options.temp);
    varnet::StreamSlicer slicer(PathOf(options.inputs.front()), settings);
    WarnOfSmall(options.inputs.front(), slicer.Box());
    Written const written = Write(options, slicer, nullptr);
    Report report = ReportOf(options);
    AddStream(report, slicer.Stream());
    Print(options, slicer.Report(), written, 0, std::move(report));
    Judge(options, slicer.Stream());
    Judge(options, slicer.Report(), written);
}

void Run(SliceOptions options) {
    TakeRange(options.layers, options.settings);
    TakeShard(options.shard, options.settings);
    options.settings.rule = options.rule == "odd" ? varnet::SolidRule::kOdd : varnet::SolidRule::kWinding;
    if (options.noFill) options.settings.hatch = 0.0;
    if (options.stream) return RunStreamed(options);
    std::vector<varnet::Part> parts;
    std::vector<varnet::Supports> supports;
    std::size_t solids = 0;
    for (std::string const& input : options.inputs) {
        parts.push_back(ReadPart(input, options.read));
        for (varnet::Body const& body : parts.back().Bodies()) {
            if (!body.IsInsideOut() || options.settings.rule == varnet::SolidRule::kOdd) continue;
            Warn(input + ": a body is inside out, and is sliced as if it were turned");
            break;
        }
        if (!options.support) continue;
        varnet::SupportSettings settings;
        settings.progress = Bar("Building support");
        supports.emplace_back(parts.back(), settings);
        solids += supports.back().Solids().size();
    }
    options.settings.progress = Bar("Slicing into " + TextOf(PathOf(options.output).filename()));
    varnet::Slicer slicer(varnet::SlicerInputs(parts, supports), options.settings);
    varnet::Page page({"", true, Bar("Making the page")});
    bool const hasPage = !options.page.empty();
    if (hasPage) {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            page.AddPart(parts[i], {TextOf(PathOf(options.inputs[i]).filename()),
                                    options.support ? &supports[i] : nullptr, nullptr});
        }
        page.BeginSlices(TextOf(PathOf(options.output).filename()));
    }
    Written const written = Write(options, slicer, hasPage ? &page : nullptr);
    if (hasPage) page.Write(PathOf(options.page));
    Print(options, slicer.Report(), written, solids, ReportOf(options));
    Judge(options, slicer.Report(), written);
}

}  // namespace

void AddSlice(CLI::App& app) {
    auto const options = std::make_shared<SliceOptions>();
    varnet::SliceSettings& settings = options->settings;
    CLI::App* const command =
        app.add_subcommand("slice", "Slice parts, as they lie side by side, into a CLI file");
    command->add_option("IN", options->inputs, "Mesh files to read: STL, CSM, 3DMF, OLTP")->required();
    command->add_option("-o", options->output, "CLI file to write, - for standard output")->required();
    auto const number = [command](char const* name, double& value, double least, double most,
                                  char const* what) {
        return command->add_option(name, value, what)
            ->check(WhyNotFinite)
            ->check(CLI::Range(least, most))
            ->capture_default_str();
    };
    number("--layer", settings.layer, 1e-6, 1e6, "Height of a layer, mm");
    number("--hatch", settings.hatch, 0.0, 1e6, "Distance of fill lines, mm; 0 for contours only");
    command->add_flag("--no-fill", options->noFill, "Contours only");
    number("--angle", settings.angle, -360.0, 360.0,
           "Of the fill lines; each layer is at right angles to the last");
    number("--close", settings.close, 0.0, 1e6, "Close gaps in contours up to this, mm; 0 for never");
    command
        ->add_option("--rule", options->rule,
                     "What is solid: where bodies wind round, or where an odd number does")
        ->check(CLI::IsMember({"winding", "odd"}))
        ->capture_default_str();
    CLI::Option* const page =
        command->add_option("--page", options->page, "HTML file to write too, which shows parts and layers");
    CLI::Option* const layers =
        command->add_option("--layers", options->layers, "Only these layers of the whole, by number: A:B");
    command
        ->add_option("--shard", options->shard,
                     "Only shard K of the layers dealt out to N shards: K/N; varnet join puts them together")
        ->excludes(layers);
    command->add_option("--threads", settings.threads, "The layers are the same for any number")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str();
    CLI::Option* const support = command->add_flag("--support", options->support,
                                                   "Fill support solids too, in layers of even numbers");
    CLI::Option* const order =
        command->add_flag("--order", options->order, "Print what is nearest next: contours, then fill");
    command->add_flag("--splice", options->splice, "Print contours and fill in one stroke where they meet")
        ->excludes(order);
    command->add_option("--mode", options->mode, "Of the file")
        ->check(CLI::IsMember({"ascii", "binary", "coc"}))
        ->capture_default_str();
    command->add_option("--seed", options->seed, "Of the noise of mode coc: the same bytes in each run")
        ->expected(1);
    command->add_flag("--strict", options->strict, "Exit code 1 where paths stay open");
    command->add_flag("--json", options->json, "Print JSON instead of a table");
    options->read.AddTo(*command);
    CLI::Option* const stream =
        command
            ->add_flag("--stream", options->stream,
                       "Cut one binary STL of any size from disk, unhealed, without taking it into memory")
            ->excludes(support)
            ->excludes(page)
            ->excludes(command->get_option("--weld"));
    command
        ->add_option("--temp", options->temp,
                     "Folder of the temporary file of --stream, 40 bytes a facet; $TMPDIR if not given")
        ->needs(stream);
    command->callback([options] { Run(*options); });
}
