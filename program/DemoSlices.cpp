#include <algorithm>
#include <cmath>
#include <limits>

#include "Demo.h"
#include "Failure.h"
#include "LayerPicture.h"
#include "ModelFile.h"
#include "Slice.h"

namespace {

namespace fs = std::filesystem;

using Solids = std::vector<std::unique_ptr<CSTLModel>>;

// What floats lose of a coordinate, in millimetres.
constexpr double kBinaryStep = 0.00001;

// Coarser than a printer would have it, so that a picture shows single lines.
SliceSettings DemoSettings() {
    SliceSettings settings;
    settings.dLayer = 0.25;
    settings.dHatch = 1.0;
    return settings;
}

Plate MakePlate(CSTLModel const& model, Solids const& supports) {
    std::vector<CSTLModel const*> borrowed;
    for (auto const& pSolid : supports) borrowed.push_back(pSolid.get());
    return Plate({&model}, borrowed, DemoSettings());
}

// The largest difference of a coordinate; infinite where the lists are not alike.
class Difference {
public:
    void Of(double a, double b) { m_dLargest = std::max(m_dLargest, std::fabs(a - b)); }
    void Of(CPoint2D const& a, CPoint2D const& b) {
        Of(a.x, b.x);
        Of(a.y, b.y);
    }
    void Of(CEdge2D const& a, CEdge2D const& b) {
        Of(a.m_ptStart, b.m_ptStart);
        Of(a.m_ptEnd, b.m_ptEnd);
    }
    void Of(tagLoopTreeNode const& a, tagLoopTreeNode const& b) {
        Of(*a.m_pPointList, *b.m_pPointList);
        if (a.m_bClosed != b.m_bClosed || a.m_nID != b.m_nID) Differ();
    }
    void Of(CHatch const& a, CHatch const& b) {
        Of(a.m_EdgeList, b.m_EdgeList);
        if (a.m_nID != b.m_nID) Differ();
    }
    template <class Element, class Argument>
    void Of(XR_CList<Element, Argument> const& a, XR_CList<Element, Argument> const& b) {
        auto const* q = b.m_pNodeHead;
        for (auto const* p = a.m_pNodeHead; p != nullptr && q != nullptr; p = p->pNext, q = q->pNext) {
            Of(p->data, q->data);
        }
        if (a.GetCount() != b.GetCount()) Differ();
    }
    template <class Element>
    void OfPointers(XR_CList<void*, void*> const& a, XR_CList<void*, void*> const& b) {
        auto const* q = b.m_pNodeHead;
        for (auto const* p = a.m_pNodeHead; p != nullptr && q != nullptr; p = p->pNext, q = q->pNext) {
            Of(*static_cast<Element const*>(p->data), *static_cast<Element const*>(q->data));
        }
        if (a.GetCount() != b.GetCount()) Differ();
    }
    void Of(CLayer const& a, CLayer const& b) {
        OfPointers<tagLoopTreeNode>(a.m_LoopList, b.m_LoopList);
        OfPointers<CHatch>(a.m_HatchList, b.m_HatchList);
    }
    double Largest() const { return m_dLargest; }

private:
    void Differ() { m_dLargest = std::numeric_limits<double>::infinity(); }

    double m_dLargest = 0.0;
};

struct ReadBack {
    int nLayers = 0;
    double dLargestError = 0.0;
    double dVolume = 0.0;  // after nesting anew
};

// Reads a file beside the slicing that it came from, done again.
ReadBack Compare(SliceOutput const& output, Plate plate) {
    SliceReader reader(output.file);
    ReadBack result;
    CPoint2D head(0.0, 0.0);
    Difference difference;
    double dHeight = 0.0;
    for (CLayer layer; reader.Next(layer);) {
        if (result.nLayers++ == plate.LayerCount()) break;
        std::unique_ptr<CLayer> const pSliced = plate.NextLayer();
        OrderPaths(*pSliced, output.ordering, head);
        layer.BuildLoopList();
        difference.Of(*pSliced, layer);
        dHeight = std::max(dHeight, std::fabs(pSliced->m_dZ - layer.m_dZ));
        layer.MakeTopology(1);
        double dLength = 0.0;
        result.dVolume += layer.GetAreaLength(dLength) / 2.0 * DemoSettings().dLayer;
    }
    reader.RequireEnd();
    // Text has two decimals of the height.
    if (dHeight > 0.0051) difference.Of(dHeight, 0.0);
    result.dLargestError = difference.Largest();
    return result;
}

void ShowModes(DemoRun& run, CSTLModel& model, Solids const& supports) {
    struct Mode {
        char const* pName;
        SliceMode mode;
        double dStep;  // half a unit of the last place, roughly
    };
    Mode const modes[] = {{"bracket_ascii.cli", SliceMode::kText, 0.00051},
                          {"bracket.cli", SliceMode::kBinary, kBinaryStep},
                          {"bracket_coc.cli", SliceMode::kDisguised, 0.00002}};
    std::vector<std::vector<std::string>> rows;
    for (auto const& [pName, mode, dStep] : modes) {
        std::string const file = run.File(pName);
        Plate plate = MakePlate(model, supports);
        SliceOutput output;
        output.file = file;
        output.mode = mode;
        SliceWriteFigures const written = WriteSlices(plate, output);
        run.checks.That(written.nTooLong == 0, "every line of text can be read back");
        ReadBack const back = Compare(output, MakePlate(model, supports));
        run.checks.That(back.nLayers == plate.LayerCount(), "all layers are in the file");
        run.checks.That(back.dLargestError <= dStep, "and all their paths, as far as the mode has digits");
        run.checks.That(std::fabs(back.dVolume - model.Volume()) < 2e-3 * model.Volume(),
                        "the layers make the volume of the part");
        rows.push_back({pName, NameOf(mode), Count(static_cast<long long>(fs::file_size(file))),
                        Count(back.nLayers), Rounded(back.dLargestError, 2), Rounded(back.dVolume, 7)});
    }
    run.page.AddTable("Slice files",
                      {"file", "mode", "bytes", "layers", "largest error, mm", "volume of the layers, mm3"},
                      rows);
}

void ShowFigures(DemoRun& run, CSTLModel& model, Solids const& supports) {
    Plate plate = MakePlate(model, supports);
    while (plate.Figures().nLayers < plate.LayerCount()) plate.NextLayer();
    SliceFigures const& figures = plate.Figures();
    auto const count = [](std::size_t n) { return Count(static_cast<long long>(n)); };
    Table table("slices");
    table.Add("layers", Count(figures.nLayers) + " of " + Number(DemoSettings().dLayer) + " mm");
    table.Add("contours", count(figures.nLoops));
    table.Add("open paths", count(figures.nOpenPaths));
    table.Add("points", count(figures.nPoints));
    table.Add("fill strokes", count(figures.nStrokes));
    table.Add("strokes of supports", count(figures.nSupportStrokes));
    table.Add("volume of the part, mm3", Number(model.Volume()));
    table.Add("volume of the layers, mm3", Number(figures.dVolume));
    Show(run, table);
    run.checks.That(figures.nOpenPaths == 0, "a closed part has closed contours only");
    run.checks.That(figures.nStrokes > 0 && figures.nSupportStrokes > 0, "part and supports are filled");
}

void ShowPictures(DemoRun& run, CSTLModel& model, Solids const& supports) {
    struct Shown {
        int nLayer;
        char const* pWhat;
    };
    Shown const shown[] = {{16, "through the base plate and its bores"},
                           {120, "through the wall and the bore in it; the rest is support"},
                           {224, "through the gusset, the wall, and the boss above its keel"},
                           {264, "through the shelf"}};
    Plate plate = MakePlate(model, supports);
    for (auto const& [nLayer, pWhat] : shown) {
        std::unique_ptr<CLayer> pLayer;
        while (plate.Figures().nLayers < nLayer) pLayer = plate.NextLayer();
        std::string const title = "Layer " + std::to_string(nLayer) + ", z = " + Number(pLayer->m_dZ);
        std::string const name = "bracket_layer_" + std::to_string(nLayer) + ".svg";
        std::vector<PicturePanel> const panels = {{title, pLayer.get()}};
        WriteBytes(run.File(name), LayerPicture(panels, BoxAround(panels)));
        run.page.AddPicture(name, "Contours and fill lines of " + title, title + ", " + pWhat + ".");
    }
}

void ShowOrder(DemoRun& run, CSTLModel& model, Solids const& supports) {
    struct Way {
        char const* pName;
        char const* pTitle;
        PathOrder order;
    };
    Way const ways[] = {{nullptr, "as sliced", PathOrder::kAsFound},
                        {"bracket_ordered.cli", "nearest first", PathOrder::kByEnds},
                        {"bracket_spliced.cli", "contours spliced with fill", PathOrder::kSpliced}};
    constexpr int kShown = 16;
    std::vector<std::unique_ptr<CLayer>> layers;
    std::vector<PicturePanel> panels;
    std::vector<std::vector<std::string>> rows;
    double dFirst = 0.0;
    for (auto const& [pName, pTitle, order] : ways) {
        Plate plate = MakePlate(model, supports);
        SliceOutput output;
        output.file = pName != nullptr ? run.File(pName) : (run.folder / "bracket.cli").string();
        output.ordering.order = order;
        output.ordering.dWidth = DemoSettings().dHatch;
        double const dTravel = WriteSlices(plate, output).travel.dLength;
        if (dFirst == 0.0) dFirst = dTravel;
        rows.push_back({pTitle, fs::path(output.file).filename().string(), Number(std::round(dTravel)),
                        Number(std::round(100.0 * dTravel / dFirst)) + " %"});
        run.checks.That(Compare(output, MakePlate(model, supports)).dLargestError <= kBinaryStep,
                        "an ordered file holds the ordered paths");
        run.checks.That(order == PathOrder::kAsFound || dTravel < dFirst, "ordered paths take less travel");
        SliceReader reader(output.file);
        layers.push_back(std::make_unique<CLayer>());
        while (reader.LayersRead() < kShown) reader.Next(*layers.back());
        panels.push_back({std::string("Layer 16, ") + pTitle, layers.back().get()});
    }
    WriteBytes(run.File("bracket_order.svg"), LayerPicture(panels, BoxAround(panels)));
    run.page.BeginSection(
        "Order of printing",
        "The head travels less when each path is followed by the nearest, and less again when "
        "contours are opened where fill passes, so that both are one stroke. Colours go from "
        "blue, which is printed first, to red.");
    run.page.AddPicture("bracket_order.svg", "The same layer three times, coloured by the order of its paths",
                        "One layer of the base plate: as sliced, ordered, and spliced.");
    run.page.AddTable("Travel of the head", {"order", "file", "travel, mm", "of unordered"}, rows);
}

}  // namespace

void ShowSlices(DemoRun& run, CSTLModel& model, Solids const& supports) {
    run.page.BeginSection(
        "Layers",
        "Each layer is cut at half its height, its contours chained through shared vertices, "
        "nested, thinned out, and filled with lines. Supports are filled in every other "
        "layer. Colours go from blue for what is printed first to red.");
    ShowPictures(run, model, supports);
    ShowFigures(run, model, supports);
    ShowModes(run, model, supports);
    ShowOrder(run, model, supports);
}
