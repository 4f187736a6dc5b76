#include <cmath>

#include "Commands.h"
#include "Demo.h"
#include "MeshPicture.h"
#include "ModelFacts.h"
#include "ModelFile.h"
#include "Ply.h"
#include "Repair.h"
#include "Shapes.h"
#include "Split.h"
#include "Surfaces.h"

namespace {

constexpr std::uint32_t kSteel = 0x8FB3CF;

Table FactsTable(std::string const& title, ModelFacts const& facts) {
    Table table(title);
    table.Add("facets", Count(facts.nFacets));
    table.Add("vertices", Count(facts.nVertices));
    CPoint3D const size = facts.box.Size();
    table.Add("size, mm", Number(size.x) + " x " + Number(size.y) + " x " + Number(size.z));
    table.Add("area, mm2", Number(facts.dArea));
    table.Add("volume, mm3", Number(facts.dVolume));
    table.Add("open edges", Count(facts.nRimEdges));
    table.Add("doubled facets", Count(facts.nDoubled));
    return table;
}

// The bracket and a copy of it beside it come apart again.
void ShowShells(DemoRun& run, CSTLModel& bracket) {
    CSTLModel beside;
    beside.AddSTLModel(&bracket);
    double offset[3] = {1000.0, 0.0, 0.0};
    beside.Transfer(offset);
    CSTLModel two;
    two.AddSTLModel(&bracket);
    two.AddSTLModel(&beside);
    auto const shells = SplitModel(two, "brackets.stl");
    Checks& checks = run.checks;
    checks.That(shells.size() == 2, "two brackets are two shells");
    checks.That(std::string(shells[1]->m_Status.m_szFileName) == "brackets_2.STL", "the shells are numbered");
    for (auto const& pShell : shells) {
        checks.That(pShell->GetFacetsNum() == bracket.GetFacetsNum(), "each is a whole bracket");
        checks.That(IsNear(pShell->CalVolume(), bracket.CalVolume()), "of the same volume");
    }
}

void ShowSurfaces(DemoRun& run, CSTLModel& bracket) {
    int const nFacets = bracket.GetFacetsNum();
    double const dArea = bracket.CalArea();
    DivideModel(bracket, "normal");
    run.checks.That(bracket.GetFacetsNum() == nFacets, "the surfaces hold all facets");
    run.checks.That(IsNear(bracket.CalArea(), dArea), "and their areas add up to that of the part");
    FacetColors colors;
    auto const& surfaces = bracket.m_SurfaceArray.m_aSurface;
    double dRim = 0.0;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        colors.Paint(*surfaces[i], surfaces[i]->m_nColor);
        dRim += RimLength(*surfaces[i]);
    }
    WritePly(run.File("bracket_surfaces.ply"), bracket, colors);
    WriteBytes(run.File("bracket_surfaces.svg"),
               DrawMeshes({{colors.Of(bracket)}}, "The surfaces of the bracket, each in its colour"));
    run.page.BeginSection("Surfaces",
                          "Facets that turn little against their neighbours are one surface: planes, bores, "
                          "and the flanks of the keel. A part and a copy beside it come apart as shells.");
    run.page.AddPicture(
        "bracket_surfaces.svg", "The bracket with every plane and bore in a colour of its own",
        "Feature surfaces, each in its colour. The same colours are in bracket_surfaces.ply.");
    Table table("bracket_surfaces.ply");
    table.Add("surfaces", Count(surfaces.GetSize()));
    table.Add("length of all rims, mm", Number(dRim));
    Show(run, table);
    run.checks.That(surfaces.GetSize() > 10 && surfaces.GetSize() < nFacets / 10,
                    "the bracket has some dozens of surfaces");
}

}  // namespace

void ShowMesh(DemoRun& run, CSTLModel& model) {
    // A bracket as a careless program might write it: every ninth facet inside out, one facet twice.
    shapes::Mesh const clean = shapes::Bracket();
    shapes::Mesh careless = shapes::WithTurned(clean, 9);
    careless.push_back(careless.front());
    WriteBytes(run.File("bracket.stl"), shapes::ToBinaryStl(careless));
    WriteBytes(run.File("bracket_ascii.stl"), shapes::ToAsciiStl(clean, "bracket"));

    CSTLModel read;
    ReadModel((run.folder / "bracket.stl").string(), read);
    ModelFacts const asRead = FactsOf(read);
    FactsTable("bracket.stl, as read", asRead).Print();
    Checks& checks = run.checks;
    checks.That(asRead.nFacets == static_cast<int>(clean.size()),
                "all facets but the doubled one are in the mesh");
    checks.That(asRead.nDoubled == 1, "the doubled facet is flagged");
    checks.That(asRead.nRimEdges == 0, "the mesh is closed");

    RepairResult const repaired = Repair(read);
    read.CalArea();
    read.CalVolume();
    WriteModel(read, run.File("bracket_repaired.stl"));
    checks.That(repaired.nShells == 1, "the bracket is one shell");
    checks.That(repaired.nTurned == static_cast<int>((clean.size() + 7) / 9),
                "the facets turned are turned back");

    CSTLModel fromAscii;
    ReadModel((run.folder / "bracket_ascii.stl").string(), fromAscii);
    ReadModel((run.folder / "bracket_repaired.stl").string(), model);
    ModelFacts const ascii = FactsOf(fromAscii);
    ModelFacts const back = FactsOf(model);
    checks.That(back.nFacets == asRead.nFacets && back.nVertices == asRead.nVertices,
                "the repaired file is whole");
    checks.That(IsNear(back.dVolume, ascii.dVolume), "the repaired part has the volume of the clean one");
    checks.That(IsNear(back.dArea, ascii.dArea), "and its area");

    WriteBytes(run.File("bracket.svg"), DrawMeshes({InOneColor(model, kSteel)}, "The bracket"));
    run.page.BeginSection("The part",
                          "A mounting bracket, written as a careless program might: every ninth facet inside "
                          "out, one facet twice. Reading drops what is doubled; the repair turns facets so "
                          "that all of them look outward.");
    run.page.AddPicture("bracket.svg",
                        "A bracket: a base plate with bores, a wall at its back, and a shelf above the plate",
                        "bracket_repaired.stl, from the front, the right and above.");
    Show(run, FactsTable("bracket_repaired.stl, read back", back));
    Table table("repair");
    table.Add("shells", Count(repaired.nShells));
    table.Add("facets turned to agree", Count(repaired.nTurned));
    table.Add("volume before, mm3", Number(asRead.dVolume));
    table.Add("volume after, mm3", Number(back.dVolume));
    Show(run, table);
}

void ShowDivision(DemoRun& run) {
    CSTLModel bracket;
    ReadModel((run.folder / "bracket_repaired.stl").string(), bracket);
    ShowShells(run, bracket);
    ShowSurfaces(run, bracket);
}

void ShowCsm(DemoRun& run, CSTLModel& model) {
    struct Layout {
        char const* pName;
        char const* pWhat;
        bool ConvertOptions::*pOption;
    };
    Layout const layouts[] = {{"bracket_strips.csm", "strips of 16-bit points", nullptr},
                              {"bracket_ring.csm", "ring stream of 24-bit points", &ConvertOptions::bRing},
                              {"bracket_plain.csm", "plain, points in float", &ConvertOptions::bPlain}};
    double const dStl = 84.0 + 50.0 * model.GetFacetsNum();
    std::vector<std::vector<std::string>> rows = {{"bracket_repaired.stl", "binary STL",
                                                   Count(static_cast<long long>(dStl)), "100 %",
                                                   Number(model.Volume())}};
    for (Layout const& layout : layouts) {
        ConvertOptions options;
        options.input = (run.folder / "bracket_repaired.stl").string();
        options.output = run.File(layout.pName);
        if (layout.pOption != nullptr) options.*layout.pOption = true;
        RunConvert(options);
        CSTLModel back;
        ReadModel(options.output, back);
        run.checks.That(back.GetFacetsNum() == model.GetFacetsNum(), "the CSM file holds all facets");
        run.checks.That(std::fabs(back.Volume() - model.Volume()) < 1e-3 * model.Volume(),
                        "and the part has its volume");
        auto const nBytes = static_cast<long long>(std::filesystem::file_size(options.output));
        rows.push_back({layout.pName, layout.pWhat, Count(nBytes),
                        Count(std::lround(100.0 * static_cast<double>(nBytes) / dStl)) + " %",
                        Number(back.Volume())});
    }
    run.page.BeginSection("Smaller files", "The same mesh in the three CSM layouts, read back and compared.");
    run.page.AddTable("Mesh files", {"file", "what", "bytes", "of STL", "volume read back, mm3"}, rows);
}
