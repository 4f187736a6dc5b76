// The demo's steps on layers: cutting, the three modes of files, the order of printing.

#include <cmath>

#include "Console.h"
#include "Demo.h"
#include "Reading.h"

void Demo::ShowLayers() {
    m_Page.BeginSection(
        "Layers",
        "Each layer is cut at half its height, its contours chained through shared edges, nested, thinned "
        "out, "
        "and filled with lines. Supports are filled in every other layer. Colours go from blue for what is "
        "printed first to red.");
    varnet::Slicer slicer = MakeSlicer();
    struct Shown {
        std::int32_t layer;
        char const* what;
    };
    for (auto const& [number, what] :
         {Shown{16, "through the base plate and its bores"},
          Shown{120, "through the wall and the bore in it; the rest is support"},
          Shown{224, "through the gusset, the wall, and the boss above its keel"},
          Shown{264, "through the shelf"}}) {
        varnet::Layer const layer = slicer.LayerAt(number);
        std::string const title = "Layer " + std::to_string(number) + ", z = " + Number(layer.z);
        std::string const name = "bracket_layer_" + std::to_string(number) + ".svg";
        varnet::WriteBytes(File(name), varnet::PictureOf(layer, title));
        m_Page.AddPicture(name, "Contours and fill lines of " + title, title + ", " + what + ".");
    }
    varnet::SliceReport const& sliced = slicer.ForEachLayer([](varnet::Layer&&) {});
    Report report("slices");
    report.Add("layers", "layers", sliced.layers,
               Count(sliced.layers) + " of " + Number(kLayerHeight) + " mm");
    report.Add("contours", "contours", static_cast<long long>(sliced.contours));
    report.Add("open paths", "open_paths", static_cast<long long>(sliced.openPaths));
    report.Add("fill strokes", "strokes", static_cast<long long>(sliced.strokes));
    report.Add("strokes of supports", "support_strokes", static_cast<long long>(sliced.supportStrokes));
    report.Add("volume of the part, mm3", "mesh_volume", sliced.meshVolume);
    report.Add("volume of the layers, mm3", "layer_volume", sliced.volume);
    Show(report);
    Check(sliced.openPaths == 0, "a closed part has closed contours only");
    Check(sliced.strokes > 0 && sliced.supportStrokes > 0, "part and supports are filled");
    Check(IsNear(sliced.volume, sliced.meshVolume, 2e-3), "the layers make the volume of the part");
}

void Demo::ShowModes() {
    std::vector<std::vector<std::string>> rows;
    for (auto const& [name, mode] : {std::pair{"bracket_ascii.cli", varnet::SliceMode::kText},
                                     std::pair{"bracket.cli", varnet::SliceMode::kBinary},
                                     std::pair{"bracket_coc.cli", varnet::SliceMode::kDisguised}}) {
        varnet::Slicer slicer = MakeSlicer();
        varnet::SliceWriteSettings settings;
        settings.mode = mode;
        varnet::SliceWriter writer(File(name), slicer.LayerCount(), settings);
        slicer.ForEachLayer([&writer](varnet::Layer&& layer) { writer.Write(layer); });
        writer.Finish();
        varnet::SliceFile const file(m_Folder / name);
        Check(file.LayerCount() == slicer.LayerCount(), "all layers are in the file");
        double volume = 0.0;
        for (std::int64_t n = 1; n <= file.LayerCount(); ++n) volume += file.LayerAt(n).Area() * kLayerHeight;
        Check(IsNear(volume, slicer.Report().volume, 1e-4), "with their areas");
        rows.push_back({name, NameOf(mode), Count(BytesOf(m_Folder / name)), Count(file.LayerCount()),
                        Rounded(volume, 7)});
    }
    m_Page.AddTable("Slice files", {"file", "mode", "bytes", "layers", "volume of the layers, mm3"}, rows);
}

void Demo::ShowOrder() {
    constexpr std::int32_t kShown = 16;
    varnet::SliceFile const file(m_Folder / "bracket.cli");
    std::vector<varnet::Layer> shown = {file.LayerAt(kShown)};
    std::vector<std::vector<std::string>> rows;
    for (bool const splice : {false, true}) {
        varnet::OrderSettings settings;
        settings.splice = splice;
        settings.width = kFillDistance;
        varnet::PathOrder order(settings);
        std::string const name = splice ? "bracket_spliced.cli" : "bracket_ordered.cli";
        varnet::SliceWriter writer(File(name), file.LayerCount());
        for (std::int64_t n = 1; n <= file.LayerCount(); ++n) {
            varnet::Layer layer = file.LayerAt(n);
            order.Order(layer);
            writer.Write(layer);
            if (n == kShown) shown.push_back(std::move(layer));
        }
        writer.Finish();
        double const before = order.Before().length;
        if (!splice) rows.push_back({"as sliced", "bracket.cli", Number(std::round(before)), "100 %"});
        rows.push_back({splice ? "contours spliced with fill" : "nearest first", name,
                        Number(std::round(order.After().length)),
                        Number(std::round(100.0 * order.After().length / before)) + " %"});
        Check(order.After().length < before, "ordered paths take less travel");
    }
    std::vector<varnet::PicturePanel> const panels = {{"Layer 16, as sliced", &shown[0]},
                                                      {"Layer 16, nearest first", &shown[1]},
                                                      {"Layer 16, contours spliced with fill", &shown[2]}};
    varnet::WriteBytes(File("bracket_order.svg"), varnet::PictureOf(panels));
    m_Page.BeginSection(
        "Order of printing",
        "The head travels less when each path is followed by the nearest, and less again when contours are "
        "opened where fill passes, so that both are one stroke. Colours go from blue, which is printed "
        "first, "
        "to red.");
    m_Page.AddPicture("bracket_order.svg", "The same layer three times, coloured by the order of its paths",
                      "One layer of the base plate: as sliced, ordered, and spliced.");
    m_Page.AddTable("Travel of the head", {"order", "file", "travel, mm", "of unordered"}, rows);
}
