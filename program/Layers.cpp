// Slice files: what is in their layers, and pictures of them.

#include "Layers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "LayerPicture.h"
#include "ModelFile.h"
#include "Progress.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

struct NumberedLayer {
    int nNumber;
    double dZ;
    LayerFacts facts;
};

double LengthOf(CHatch const& hatch) {
    double dLength = 0.0;
    for (XR__POSITION* position = hatch.m_EdgeList.GetHeadPosition(); position != nullptr;) {
        CEdge2D const edge = hatch.m_EdgeList.GetNext(position);
        dLength += std::hypot(edge.m_ptEnd.x - edge.m_ptStart.x, edge.m_ptEnd.y - edge.m_ptStart.y);
    }
    return dLength;
}

// Twice signed areas cancel where a hole is inside its boundary, once both run by their levels.
double MaterialArea(CLayer& layer) {
    std::unique_ptr<CLayer> const pNested(layer.CopyLoop());
    pNested->MakeTopology(1);
    double dArea = 0.0;
    for (XR__POSITION* position = pNested->m_LoopList.GetHeadPosition(); position != nullptr;) {
        auto& loop = *static_cast<tagLoopTreeNode*>(pNested->m_LoopList.GetNext(position));
        if (loop.m_bClosed != 0) dArea += loop.GetArea() / 2.0;
    }
    return dArea;
}

nlohmann::json BoxJson(CBoundBox2D const& box) {
    if (box.IsValid() == 0) return nullptr;
    return {{box.m_ptMin.x, box.m_ptMin.y}, {box.m_ptMax.x, box.m_ptMax.y}};
}

nlohmann::json FactsJson(LayerFacts const& facts) {
    return {{"loops", facts.nLoops},     {"open_paths", facts.nOpenPaths},
            {"hatches", facts.nHatches}, {"edges", facts.nEdges},
            {"points", facts.nPoints},   {"area", facts.dArea},
            {"length", facts.dLength},   {"hatch_length", facts.dHatchLength},
            {"box", BoxJson(facts.box)}};
}

nlohmann::json ToJson(std::string const& file, SliceReader const& reader,
                      std::vector<NumberedLayer> const& layers) {
    nlohmann::json json = {{"file", file},
                           {"type", NameOf(reader.Mode())},
                           {"units", reader.Header().m_dUnits},
                           {"version", reader.Header().m_nVersion},
                           {"announced", reader.Announced()},
                           {"layers", reader.LayersRead()}};
    LayerFacts all;
    nlohmann::json list = nlohmann::json::array();
    for (NumberedLayer const& layer : layers) {
        all += layer.facts;
        nlohmann::json one = FactsJson(layer.facts);
        one["number"] = layer.nNumber;
        one["z"] = layer.dZ;
        list.push_back(std::move(one));
    }
    json["all"] = FactsJson(all);
    json["list"] = std::move(list);
    return json;
}

std::string BoxText(CBoundBox2D const& box) {
    if (box.IsValid() == 0) return "none";
    return Number(box.m_ptMin.x) + "  " + Number(box.m_ptMin.y) + "  to  " + Number(box.m_ptMax.x) + "  " +
           Number(box.m_ptMax.y);
}

std::string HeightsText(std::vector<NumberedLayer> const& layers) {
    if (layers.empty()) return "none";
    auto const [low, high] = std::minmax_element(layers.begin(), layers.end(),
                                                 [](auto const& a, auto const& b) { return a.dZ < b.dZ; });
    return Number(low->dZ) + " to " + Number(high->dZ);
}

void PrintSummary(std::string const& file, SliceReader const& reader,
                  std::vector<NumberedLayer> const& layers) {
    LayerFacts all;
    for (NumberedLayer const& layer : layers) all += layer.facts;
    Table table(file);
    table.Add("type", NameOf(reader.Mode()));
    table.Add("units", Number(reader.Header().m_dUnits));
    table.Add("version", std::to_string(reader.Header().m_nVersion));
    table.Add("layers", Count(reader.LayersRead()) + " of " + Count(reader.Announced()) + " announced");
    table.Add("heights", HeightsText(layers));
    table.Add("closed loops", Count(all.nLoops));
    table.Add("open paths", Count(all.nOpenPaths));
    table.Add("points", Count(all.nPoints));
    table.Add("hatches", Count(all.nHatches) + " with " + Count(all.nEdges) + " edges");
    table.Add("area of all layers, mm2", Number(all.dArea));
    table.Add("length of loops and paths, mm", Number(all.dLength));
    table.Add("length of hatches, mm", Number(all.dHatchLength));
    table.Add("box", BoxText(all.box));
    table.Print();
}

void PrintLayer(NumberedLayer const& layer) {
    LayerFacts const& f = layer.facts;
    std::printf("%8d %10s %8s %8s %8s %9s %12s %12s  %s\n", layer.nNumber, Number(layer.dZ).c_str(),
                Count(f.nLoops).c_str(), Count(f.nOpenPaths).c_str(), Count(f.nHatches).c_str(),
                Count(f.nPoints).c_str(), Number(std::round(f.dArea * 1000.0) / 1000.0).c_str(),
                Number(std::round(f.dLength * 1000.0) / 1000.0).c_str(), BoxText(f.box).c_str());
}

// All layers, or the first and last ones of many.
void PrintLayers(std::vector<NumberedLayer> const& layers) {
    constexpr std::size_t kAtEachEnd = 10;
    std::printf("%8s %10s %8s %8s %8s %9s %12s %12s  %s\n", "layer", "z", "loops", "open", "hatches",
                "points", "area", "length", "box");
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (i == kAtEachEnd && layers.size() > 2 * kAtEachEnd) {
            std::printf("%8s\n", "...");
            i = layers.size() - kAtEachEnd;
        }
        PrintLayer(layers[i]);
    }
}

// Calls visit(number, layer) for the layers of a model, or the one that is asked for.
template <class Visit>
void ForEachLayer(CLayerModel& model, int nOnly, Visit const& visit) {
    if (nOnly != 0) {
        CLayer* const pLayer = model.GetLayerAt(nOnly);
        if (pLayer != nullptr) visit(nOnly, *pLayer);
        return;
    }
    int nNumber = 0;
    for (XR__POSITION* position = model.GetHeadLayerPos(); position != nullptr;) {
        ThrowIfInterrupted();
        CLayer* const pLayer = model.GetNextLayer(position);
        ++nNumber;
        if (pLayer != nullptr) visit(nNumber, *pLayer);
    }
}

std::vector<NumberedLayer> Measure(CLayerModel& model, int nOnly) {
    std::vector<NumberedLayer> layers;
    ForEachLayer(model, nOnly, [&layers](int nNumber, CLayer& layer) {
        layers.push_back({nNumber, layer.m_dZ, FactsOf(layer)});
    });
    return layers;
}

// Pictures of one box, so that they can be laid upon each other.
void WritePictures(CLayerModel& model, std::vector<NumberedLayer> const& layers,
                   LayersOptions const& options) {
    fs::path const folder = options.svg;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw Failure(options.svg, "cannot be made: " + error.message());
    CBoundBox2D box;
    for (NumberedLayer const& layer : layers) box += layer.facts.box;
    ForEachLayer(model, options.nLayer, [&](int nNumber, CLayer& layer) {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "layer_%05d.svg", nNumber);
        std::string const title = "layer " + std::to_string(nNumber) + ", z = " + Number(layer.m_dZ) + " mm";
        WriteBytes((folder / name.data()).string(), LayerPicture({{title, &layer}}, box));
    });
}

// All layers of a file, never more than one of them in memory.
std::vector<NumberedLayer> MeasureFile(SliceReader& reader) {
    std::vector<NumberedLayer> layers;
    for (CLayer layer; reader.Next(layer);) {
        ThrowIfInterrupted();
        layers.push_back({reader.LayersRead(), layer.m_dZ, FactsOf(layer)});
    }
    return layers;
}

}  // namespace

LayerFacts& LayerFacts::operator+=(LayerFacts const& other) {
    nLoops += other.nLoops;
    nOpenPaths += other.nOpenPaths;
    nHatches += other.nHatches;
    nEdges += other.nEdges;
    nPoints += other.nPoints;
    dArea += other.dArea;
    dLength += other.dLength;
    dHatchLength += other.dHatchLength;
    box += other.box;
    return *this;
}

LayerFacts FactsOf(CLayer& layer) {
    LayerFacts facts;
    facts.box = layer.GetBoundBox();
    facts.dArea = MaterialArea(layer);
    for (XR__POSITION* position = layer.m_LoopList.GetHeadPosition(); position != nullptr;) {
        auto& loop = *static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetNext(position));
        ++(loop.m_bClosed != 0 ? facts.nLoops : facts.nOpenPaths);
        if (loop.m_pPointList != nullptr) facts.nPoints += loop.m_pPointList->GetCount();
        facts.dLength += loop.GetLength();
    }
    for (XR__POSITION* position = layer.m_HatchList.GetHeadPosition(); position != nullptr;) {
        auto const& hatch = *static_cast<CHatch*>(layer.m_HatchList.GetNext(position));
        ++facts.nHatches;
        facts.nEdges += hatch.m_EdgeList.GetCount();
        facts.dHatchLength += LengthOf(hatch);
    }
    return facts;
}

void PrintSliceTable(std::string const& file) {
    SliceReader reader(file);
    std::vector<NumberedLayer> const layers = MeasureFile(reader);
    PrintSummary(file, reader, layers);
    reader.RequireEnd();
}

nlohmann::json SliceJson(std::string const& file) {
    SliceReader reader(file);
    std::vector<NumberedLayer> const layers = MeasureFile(reader);
    nlohmann::json json = ToJson(file, reader, layers);
    json.erase("list");
    reader.RequireEnd();
    return json;
}

void RunLayers(LayersOptions const& options) {
    constexpr double kMegabyte = 1048576.0;
    SliceModel slices(options.input, static_cast<std::uintmax_t>(options.dLimit * kMegabyte));
    CLayerModel& model = slices.Model();
    int const nLayers = slices.Reader().LayersRead();
    if (options.nLayer > nLayers) {
        throw Failure(options.input, "there is no layer " + std::to_string(options.nLayer) + ": it has " +
                                         std::to_string(nLayers));
    }
    std::vector<NumberedLayer> const layers = Measure(model, options.nLayer);
    if (options.bJson) {
        std::printf("%s\n", ToJson(options.input, slices.Reader(), layers)
                                .dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
                                .c_str());
    } else {
        PrintSummary(options.input, slices.Reader(), layers);
        PrintLayers(layers);
    }
    if (!options.svg.empty()) WritePictures(model, layers, options);
    slices.Reader().RequireEnd();
}
