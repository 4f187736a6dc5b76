// The whole road of one part, from its making to files that are printed from. Each step prints what it found,
// checks it, and puts its pictures and figures on a page.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Console.h"
#include "ConvertSlices.h"
#include "DemoPage.h"
#include "Reading.h"
#include "Shapes.h"
#include "varnet/Kit.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kSteel = 0x8FB3CF;
constexpr std::uint32_t kAmber = 0xE0A030;
constexpr double kGlass = 0.4;

// Coarser than a printer would have it, so that a picture shows single lines.
constexpr double kLayerHeight = 0.25;
constexpr double kFillDistance = 1.0;

class Demo {
public:
    explicit Demo(fs::path folder) : m_Folder(std::move(folder)) {}

    void Run();

private:
    void ShowPart();
    void ShowSurfaces();
    void ShowFormats();
    void ShowSupports();
    void ShowLayers();
    void ShowModes();
    void ShowOrder();
    void ShowPage();

    // The path of a file in the folder, which is listed on the page.
    fs::path File(std::string const& name) {
        m_Files.push_back(name);
        return m_Folder / name;
    }
    void Check(bool holds, char const* what) {
        if (!holds)
            throw varnet::Error(varnet::ErrorKind::kContent, std::string("the demo's check failed: ") + what);
        ++m_Checks;
    }
    void Show(Report const& report) {
        report.Print();
        m_Page.AddTable(report);
    }
    void Draw(std::string const& name, std::span<varnet::PicturedMesh const> meshes, char const* alternative,
              char const* caption) {
        varnet::WriteBytes(File(name), varnet::PictureOf(meshes, alternative));
        m_Page.AddPicture(name, alternative, caption);
    }
    varnet::Slicer MakeSlicer() const {
        varnet::SliceSettings settings;
        settings.layer = kLayerHeight;
        settings.hatch = kFillDistance;
        return varnet::Slicer(varnet::SlicerInputs(m_Part, m_Supports), settings);
    }

    fs::path m_Folder;
    DemoPage m_Page{"A bracket, from mesh to slices",
                    "Made, read, repaired, measured, divided, supported, sliced, ordered, written in seven "
                    "formats and read "
                    "back by varnet demo."};
    std::vector<std::string> m_Files;
    int m_Checks = 0;
    varnet::Part m_Part;
    varnet::Supports m_Supports;
};

bool IsNear(double a, double b, double share) { return std::fabs(a - b) <= share * std::fabs(b); }

// A bracket as a careless program might write it: every ninth facet inside out, one facet twice.
void Demo::ShowPart() {
    shapes::Mesh const clean = shapes::Bracket();
    shapes::Mesh careless = shapes::WithTurned(clean, 9);
    careless.push_back(careless.front());
    varnet::WriteBytes(File("bracket.stl"), shapes::ToBinaryStl(careless));
    varnet::WriteBytes(File("bracket_ascii.stl"), shapes::ToAsciiStl(clean, "bracket"));
    m_Part = ReadPart(TextOf(m_Folder / "bracket.stl"), {});
    Report asRead("bracket.stl, as read");
    AddIntake(asRead, m_Part);
    asRead.Print();
    varnet::RepairReport const repaired = m_Part.Repair();
    m_Part.Write(File("bracket_repaired.stl"));
    varnet::Part const ascii = ReadPart(TextOf(m_Folder / "bracket_ascii.stl"), {});
    Check(m_Part.Triangles().size() == clean.size(), "all facets but the doubled one are in the mesh");
    Check(repaired.doubled == 1, "the doubled facet is counted");
    Check(repaired.openEdgesAfter == 0, "the repaired part is closed");
    Check(repaired.turned == static_cast<std::int64_t>((clean.size() + 7) / 9),
          "the facets turned are turned back");
    Check(m_Part.Bodies().size() == 1, "the bracket is one body");
    Check(IsNear(m_Part.Measures().volume, ascii.Measures().volume, 1e-9), "of the volume of the clean one");
    m_Page.BeginSection(
        "The part",
        "A mounting bracket, written as a careless program might: every ninth facet inside out, one facet "
        "twice. Repair turns what contradicts its shell.");
    varnet::PicturedMesh const mesh{m_Part.Points(), m_Part.Triangles(), kSteel, {}, 1.0};
    Draw("bracket.svg", std::span(&mesh, 1), "A steel bracket with a shelf, a gusset and bores",
         "The part as repaired.");
    Report report("bracket_repaired.stl");
    report.Add("facets turned to agree", "turned", static_cast<long long>(repaired.turned));
    AddMeasures(report, m_Part);
    AddBodies(report, m_Part);
    Show(report);
}

void Demo::ShowSurfaces() {
    varnet::Surfaces const surfaces(m_Part);
    std::vector<std::uint32_t> colors;
    double area = 0.0;
    double rim = 0.0;
    for (std::int32_t const surface : surfaces.ofTriangle)
        colors.push_back(surfaces.all.at(static_cast<std::size_t>(surface)).color);
    for (varnet::Surface const& surface : surfaces.all) {
        area += surface.area;
        rim += surface.rimLength;
    }
    Check(surfaces.all.size() > 10 && surfaces.all.size() < 100, "the bracket has some dozens of surfaces");
    Check(IsNear(area, m_Part.Measures().area, 1e-4), "their areas add up to that of the part");
    varnet::WritePly(File("bracket_surfaces.ply"), m_Part.Points(), m_Part.Triangles(), colors);
    m_Page.BeginSection(
        "Surfaces",
        "Facets that turn little against their neighbours are one surface: planes, bores, and the flanks of "
        "the keel.");
    varnet::PicturedMesh const mesh{m_Part.Points(), m_Part.Triangles(), kSteel, colors, 1.0};
    Draw("bracket_surfaces.svg", std::span(&mesh, 1),
         "The bracket with every plane and bore in a colour of its own",
         "Feature surfaces, each in its colour. The same colours are in bracket_surfaces.ply.");
    Report report("bracket_surfaces.ply");
    report.Add("surfaces", "surfaces", static_cast<long long>(surfaces.all.size()));
    report.Add("length of all rims, mm", "rim", rim);
    Show(report);
}

void Demo::ShowFormats() {
    struct Format {
        char const* name;
        char const* what;
        varnet::MeshFormat format;
    };
    std::vector<std::vector<std::string>> rows;
    for (auto const& [name, what, format] :
         {Format{"bracket_strips.csm", "strips of 16-bit points", varnet::MeshFormat::kStripCsm},
          Format{"bracket_ring.csm", "ring stream of 24-bit points", varnet::MeshFormat::kRingCsm},
          Format{"bracket_plain.csm", "plain, points in float", varnet::MeshFormat::kPlainCsm}}) {
        varnet::WriteReport const written = m_Part.Write(File(name), format);
        Check(written.facetsAfter == written.facetsBefore, "the CSM file holds all facets");
        Check(IsNear(written.volumeAfter, written.volumeBefore, 1e-3), "and the part has its volume");
        double const stl = 84.0 + 50.0 * static_cast<double>(written.facetsBefore);
        long long const bytes = BytesOf(m_Folder / name);
        rows.push_back({name, what, Count(bytes),
                        Count(std::lround(100.0 * static_cast<double>(bytes) / stl)) + " %",
                        Number(written.volumeAfter), Rounded(written.largestError, 2)});
    }
    m_Page.BeginSection("Smaller files", "The same mesh in the three CSM layouts, read back and compared.");
    m_Page.AddTable("Mesh files",
                    {"file", "what", "bytes", "of STL", "volume read back, mm3", "largest error, mm"}, rows);
}

void Demo::ShowSupports() {
    m_Supports = varnet::Supports(m_Part);
    varnet::SupportSettings low;
    low.down = 3.0;
    varnet::Supports(m_Part, low).Write(File("bracket_support.stl"));
    varnet::Part const solids = ReadPart(TextOf(m_Folder / "bracket_support.stl"), {});
    Check(!m_Supports.Overhangs().empty() && m_Supports.Overhangs().size() < 100,
          "the bracket has regions that face down");
    Check(m_Supports.Edges().size() == 1, "the boss's keel hangs in the air");
    Check(m_Supports.Solids().size() > 1, "solids are made for them");
    Check(solids.Measures().openEdges == 0, "and those of a height are closed");
    m_Page.BeginSection("Support",
                        "Regions that look down by less than 44 degrees, and edges that nothing holds, get "
                        "solids below them: "
                        "of 3 mm in bracket_support.stl, down to the plate for slicing.");
    std::vector<varnet::PicturedMesh> meshes = {{m_Part.Points(), m_Part.Triangles(), kSteel, {}, 1.0}};
    for (varnet::SupportSolid const& solid : m_Supports.Solids()) {
        meshes.push_back({solid.points, solid.triangles, kAmber, {}, kGlass});
    }
    Draw("bracket_support.svg", meshes,
         "The bracket with glassy amber solids that fill the room below its shelf",
         "The part on the solids that hold it while it is printed.");
    Report report("bracket_support.stl");
    report.Add("regions that face down", "regions", static_cast<long long>(m_Supports.Overhangs().size()));
    report.Add("hanging edges", "edges", static_cast<long long>(m_Supports.Edges().size()));
    report.Add("solids", "solids", static_cast<long long>(m_Supports.Solids().size()));
    report.Add("volume, mm3", "volume", solids.Measures().volume);
    Show(report);
}

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

void Demo::ShowPage() {
    varnet::Page page({"A bracket", true, {}});
    varnet::Surfaces const surfaces(m_Part);
    page.AddPart(m_Part, {"bracket", &m_Supports, &surfaces});
    page.AddSlices(varnet::SliceFile(m_Folder / "bracket_ordered.cli"));
    page.Write(File("bracket.html"));
    m_Page.BeginSection("To turn and go through",
                        "The part, its supports and all layers in one file, as varnet view makes it.");
    m_Page.AddPage("bracket.html", "The bracket, its supports and its layers");
}

void Demo::Run() {
    auto const start = std::chrono::steady_clock::now();
    MakeFolder(m_Folder);
    ShowPart();
    ShowSurfaces();
    ShowFormats();
    ShowSupports();
    ThrowIfStopped();
    ShowLayers();
    ShowModes();
    ThrowIfStopped();
    ShowOrder();
    ShowPage();
    m_Page.BeginSection("Files", "All of them stand in this folder, beside this page.");
    m_Page.AddFiles(m_Files);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::string const closing =
        std::to_string(m_Checks) + " checks passed in " + Rounded(seconds.count(), 3) + " seconds";
    varnet::WriteBytes(m_Folder / "index.html", m_Page.Html(closing));
    std::printf("%s; files are in %s, and index.html shows them\n", closing.c_str(),
                TextOf(m_Folder).c_str());
}

}  // namespace

void AddDemo(CLI::App& app) {
    auto const folder = std::make_shared<std::string>("varnet-demo");
    CLI::App* const command =
        app.add_subcommand("demo", "Make a part, run everything on it, and show it all on a page");
    command->add_option("DIR", *folder, "Folder for the files that it writes")->capture_default_str();
    command->callback([folder] { Demo(PathOf(*folder)).Run(); });
}
