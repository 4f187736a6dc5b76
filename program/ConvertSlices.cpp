#include "ConvertSlices.h"

#include <algorithm>
#include <cmath>

#include "Console.h"
#include "Reading.h"
#include "SliceFacts.h"

namespace {

bool SamePaths(varnet::Layer const& a, varnet::Layer const& b) {
    return a.offsets == b.offsets && a.chainOffsets == b.chainOffsets;
}

// The largest difference of a coordinate of two layers that have the same paths.
double DifferenceOf(varnet::Layer const& a, varnet::Layer const& b) {
    double largest = std::fabs(a.z - b.z);
    auto const compare = [&largest](varnet::Point2 const& p, varnet::Point2 const& q) {
        largest = std::max({largest, std::fabs(p.x - q.x), std::fabs(p.y - q.y)});
    };
    for (std::size_t i = 0; i < a.points.size(); ++i) compare(a.points[i], b.points[i]);
    for (std::size_t i = 0; i < a.strokes.size(); ++i) {
        compare(a.strokes[i].from, b.strokes[i].from);
        compare(a.strokes[i].to, b.strokes[i].to);
    }
    return largest;
}

struct Comparison {
    LayerFacts before;
    LayerFacts after;
    double difference = 0.0;
};

Comparison Compare(varnet::SliceFile const& input, varnet::SliceFile const& output) {
    Comparison comparison;
    auto const bar = Bar("Comparing");
    for (long long number = 1; number <= input.LayerCount(); ++number) {
        if (!bar(static_cast<double>(number) / static_cast<double>(input.LayerCount()))) ThrowIfStopped();
        varnet::Layer const a = input.LayerAt(number);
        comparison.before += FactsOf(a);
        if (number > output.LayerCount()) continue;
        varnet::Layer const b = output.LayerAt(number);
        comparison.after += FactsOf(b);
        if (SamePaths(a, b)) comparison.difference = std::max(comparison.difference, DifferenceOf(a, b));
    }
    return comparison;
}

void Write(varnet::SliceFile const& input, std::string const& output, varnet::SliceMode mode) {
    auto const bar = Bar("Writing");
    varnet::SliceWriteSettings settings;
    settings.mode = mode;
    settings.range = input.Header().range;
    varnet::SliceWriter writer(PathOf(output), input.LayerCount(), settings);
    for (long long number = 1; number <= input.LayerCount(); ++number) {
        if (!bar(static_cast<double>(number) / static_cast<double>(input.LayerCount()))) ThrowIfStopped();
        writer.Write(input.LayerAt(number));
    }
    writer.Finish();
    if (writer.TooLongForClassicReader() > 0) {
        Warn(output + ": " + Count(writer.TooLongForClassicReader()) +
             " paths have lines of over 10,239 characters, which some readers take for two: --mode binary "
             "has no such limit");
    }
}

}  // namespace

std::optional<varnet::SliceMode> SliceModeOf(std::string const& word) {
    if (word == "ascii") return varnet::SliceMode::kText;
    if (word == "binary") return varnet::SliceMode::kBinary;
    if (word == "coc") return varnet::SliceMode::kDisguised;
    return std::nullopt;
}

void ConvertSlices(std::string const& inputName, std::string const& outputName, std::string const& mode,
                   bool json) {
    varnet::SliceFile const input(PathOf(inputName), {false, Bar("Reading")});
    varnet::SliceMode const outputMode = SliceModeOf(mode).value_or(input.Header().mode);
    Write(input, outputName, outputMode);
    Report report(inputName + " -> " + outputName);
    report.Add("formats", "format", std::string(NameOf(outputMode)),
               std::string(NameOf(input.Header().mode)) + " -> " + NameOf(outputMode));
    for (std::string const& note : input.Report().notes) report.AddRow("note", note);
    report.AddJson("notes", input.Report().notes);
    if (BytesOf(PathOf(outputName)) == 0) {  // a pipe, which cannot be read back
        report.Print(json, true);
        return;
    }
    varnet::SliceFile const output(PathOf(outputName));
    Comparison const comparison = Compare(input, output);
    LayerFacts const& a = comparison.before;
    LayerFacts const& b = comparison.after;
    auto const add = [&report](char const* label, char const* key, long long before, long long after) {
        report.Add(label, key, nlohmann::json{before, after}, Count(before) + ", read back " + Count(after));
    };
    long long const bytes = BytesOf(PathOf(inputName));
    report.Add("bytes", "bytes", nlohmann::json{bytes, BytesOf(PathOf(outputName))},
               Count(bytes) + " -> " + Count(BytesOf(PathOf(outputName))));
    add("layers", "layers", input.LayerCount(), output.LayerCount());
    add("contours and paths", "paths", a.contours + a.openPaths, b.contours + b.openPaths);
    add("points", "points", a.points, b.points);
    add("strokes of fill", "strokes", a.strokes, b.strokes);
    report.Add("largest difference, mm", "largest_difference", comparison.difference);
    report.Print(json);
    bool const less = output.LayerCount() < input.LayerCount() ||
                      b.contours + b.openPaths < a.contours + a.openPaths || b.points < a.points ||
                      b.strokes < a.strokes;
    if (!less) return;
    throw varnet::Error(varnet::ErrorKind::kContent, PathOf(outputName),
                        "less can be read back than was written: --mode binary holds it all");
}
