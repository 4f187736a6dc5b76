// Parts into layers.

#include <memory>

#include "Commands.h"
#include "Console.h"
#include "ConvertSlices.h"
#include "SliceOptions.h"
#include "SliceResult.h"
#include "varnet/Page.h"
#include "varnet/PathOrder.h"
#include "varnet/SliceFile.h"
#include "varnet/Slicer.h"
#include "varnet/StreamSlicer.h"
#include "varnet/Supports.h"

namespace {

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
    report.AddJson("holes_filled", 0);
    AddStream(report, slicer.Stream());
    Print(options, slicer.Report(), written, 0, std::move(report));
    Judge(options, slicer.Stream());
    Judge(options, slicer.Report(), written);
}

// Reads a part, closes its holes where that is asked for, and warns where it is sliced as what it is not.
varnet::Part PartToSlice(std::string const& input, SliceOptions const& options, long long& holesFilled) {
    varnet::Part part = ReadPart(input, options.read);
    bool isTurned = false;
    if (options.fillHoles > 0.0) {
        varnet::RepairSettings settings;
        settings.fillHoles = options.fillHoles;
        settings.progress = Bar("Closing holes");
        varnet::RepairReport const repaired = part.Repair(settings);
        holesFilled += repaired.holesFilled;
        isTurned = repaired.turned > 0;
    }
    varnet::Part const& sliced = part.AsSliced();
    if (isTurned || &sliced != &part) {
        Warn(input +
             ": facets contradict their shell, and are sliced as if they were turned: varnet repair "
             "turns them");
    }
    for (varnet::Body const& body : sliced.Bodies()) {
        if (!body.IsInsideOut() || options.settings.rule == varnet::SolidRule::kOdd) continue;
        Warn(input + ": a body is inside out, and is sliced as if it were turned");
        break;
    }
    return part;
}

void Run(SliceOptions options) {
    options.Settle();
    if (options.stream) return RunStreamed(options);
    std::vector<varnet::Part> parts;
    std::vector<varnet::Supports> supports;
    std::size_t solids = 0;
    long long holesFilled = 0;
    for (std::string const& input : options.inputs) {
        parts.push_back(PartToSlice(input, options, holesFilled));
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
    Report report = ReportOf(options);
    if (options.fillHoles > 0.0) {
        report.Add("holes closed", "holes_filled", holesFilled);
    } else {
        report.AddJson("holes_filled", 0);
    }
    Print(options, slicer.Report(), written, solids, std::move(report));
    Judge(options, slicer.Report(), written);
}

}  // namespace

void AddSlice(CLI::App& app) {
    auto const options = std::make_shared<SliceOptions>();
    CLI::App* const command =
        app.add_subcommand("slice", "Slice parts, as they lie side by side, into a CLI file");
    options->AddTo(*command);
    command->callback([options] { Run(*options); });
}
