#include "SliceFacts.h"

#include <algorithm>
#include <cmath>

#include "Console.h"
#include "PartFacts.h"
#include "Reading.h"

namespace {

// A box in a header may be rounded by this, in millimetres.
constexpr double kDimensionTolerance = 0.05;

nlohmann::json BoxJson(varnet::Box2 const& box) {
    if (box.IsEmpty()) return nullptr;
    return {{box.min.x, box.min.y}, {box.max.x, box.max.y}};
}

std::string HeightsText(std::vector<NumberedLayer> const& layers) {
    if (layers.empty()) return "none";
    auto const [low, high] = std::minmax_element(layers.begin(), layers.end(),
                                                 [](auto const& a, auto const& b) { return a.z < b.z; });
    return Number(low->z) + " to " + Number(high->z);
}

// What the header says of the box, where the layers have another one.
std::string WhyDimensionIsWrong(varnet::SliceHeader const& header, varnet::Box2 const& box) {
    if (!header.dimension || box.IsEmpty()) return "";
    auto const differs = [](double a, double b) { return std::fabs(a - b) > kDimensionTolerance; };
    varnet::Box3 const& stated = *header.dimension;
    if (!differs(stated.min.x, box.min.x) && !differs(stated.min.y, box.min.y) &&
        !differs(stated.max.x, box.max.x) && !differs(stated.max.y, box.max.y)) {
        return "";
    }
    return "the header states the box " +
           TextOf(varnet::Box2{{stated.min.x, stated.min.y}, {stated.max.x, stated.max.y}}) +
           ", and the layers have another one";
}

}  // namespace

LayerFacts& LayerFacts::operator+=(LayerFacts const& other) {
    contours += other.contours;
    openPaths += other.openPaths;
    chains += other.chains;
    strokes += other.strokes;
    points += other.points;
    area += other.area;
    length += other.length;
    strokeLength += other.strokeLength;
    if (!other.box.IsEmpty()) {
        box.Add(other.box.min);
        box.Add(other.box.max);
    }
    return *this;
}

LayerFacts FactsOf(varnet::Layer const& layer) {
    LayerFacts facts;
    facts.openPaths = static_cast<long long>(layer.OpenPathCount());
    facts.contours = static_cast<long long>(layer.ContourCount()) - facts.openPaths;
    facts.chains = static_cast<long long>(layer.ChainCount());
    facts.strokes = static_cast<long long>(layer.strokes.size());
    facts.points = static_cast<long long>(layer.points.size());
    facts.area = layer.Area();
    facts.length = layer.ContourLength();
    facts.strokeLength = layer.StrokeLength();
    facts.box = layer.Box();
    return facts;
}

varnet::SliceFile OpenSlices(std::string const& file) {
    varnet::SliceReadSettings settings;
    settings.partial = true;
    settings.progress = Bar("Reading " + TextOf(PathOf(file).filename()));
    return varnet::SliceFile(PathOf(file), settings);
}

void RequireWhole(varnet::SliceFile const& slices) {
    if (slices.Report().broken) throw varnet::Error(varnet::ErrorKind::kContent, *slices.Report().broken);
}

std::vector<NumberedLayer> MeasureLayers(varnet::SliceFile const& slices, long long only) {
    std::vector<NumberedLayer> layers;
    long long const first = only > 0 ? only : 1;
    long long const last = only > 0 ? only : slices.LayerCount();
    for (long long number = first; number <= last; ++number) {
        ThrowIfStopped();
        varnet::Layer const layer = slices.LayerAt(number);
        layers.push_back({number, layer.z, FactsOf(layer)});
    }
    return layers;
}

void AddSlices(Report& report, varnet::SliceFile const& slices, std::vector<NumberedLayer> const& layers) {
    LayerFacts all;
    for (NumberedLayer const& layer : layers) all += layer.facts;
    varnet::SliceHeader const& header = slices.Header();
    report.Add("type", "type", std::string(NameOf(header.mode)));
    report.Add("units", "units", header.units);
    report.Add("version", "version", static_cast<long long>(header.version));
    std::string const announced =
        header.announcedLayers ? " of " + Count(*header.announcedLayers) + " announced" : "";
    report.Add("layers", "layers", slices.LayerCount(), Count(slices.LayerCount()) + announced);
    report.AddJson("announced", header.announcedLayers ? nlohmann::json(*header.announcedLayers)
                                                       : nlohmann::json(nullptr));
    report.AddRow("heights", HeightsText(layers));
    report.Add("closed contours", "contours", all.contours);
    report.Add("open paths", "open_paths", all.openPaths);
    report.Add("points", "points", all.points);
    report.Add("chains of fill", "chains", all.chains);
    report.Add("strokes of fill", "strokes", all.strokes);
    report.Add("area of all layers, mm2", "area", all.area);
    report.Add("length of contours and paths, mm", "length", all.length);
    report.Add("length of strokes, mm", "stroke_length", all.strokeLength);
    report.Add("box", "box", BoxJson(all.box), TextOf(all.box));
    std::vector<std::string> notes = slices.Report().notes;
    std::string const wrong = WhyDimensionIsWrong(header, all.box);
    if (!wrong.empty()) notes.push_back(wrong);
    report.AddJson("notes", notes);
    for (std::string const& note : notes) report.AddRow("note", note);
}

nlohmann::json ToJson(LayerFacts const& facts) {
    return {{"contours", facts.contours}, {"open_paths", facts.openPaths},
            {"chains", facts.chains},     {"strokes", facts.strokes},
            {"points", facts.points},     {"area", facts.area},
            {"length", facts.length},     {"stroke_length", facts.strokeLength},
            {"box", BoxJson(facts.box)}};
}

std::string TextOf(varnet::Box2 const& box) {
    if (box.IsEmpty()) return "none";
    return Number(box.min.x) + "  " + Number(box.min.y) + "  to  " + Number(box.max.x) + "  " +
           Number(box.max.y);
}
