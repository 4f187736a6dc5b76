// The whole of what the library does so far, on one real part.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "Commands.h"
#include "Failure.h"
#include "ModelFacts.h"
#include "ModelFile.h"
#include "Ply.h"
#include "Repair.h"
#include "Shapes.h"
#include "Split.h"
#include "Support.h"
#include "Surfaces.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

// Counts what it is told, so that the last line can say how much was checked.
class Checks {
public:
    void That(bool bHolds, std::string const& what) {
        if (!bHolds) throw Failure("the demo's check failed: " + what);
        ++m_nDone;
    }
    int Done() const { return m_nDone; }

private:
    int m_nDone = 0;
};

bool IsNear(double a, double b) { return std::fabs(a - b) <= 1e-4 * std::fabs(b); }

void PrintFacts(char const* pTitle, ModelFacts const& facts) {
    Table table(pTitle);
    table.Add("facets", Count(facts.nFacets));
    table.Add("vertices", Count(facts.nVertices));
    CPoint3D const size = facts.box.Size();
    table.Add("size, mm", Number(size.x) + " x " + Number(size.y) + " x " + Number(size.z));
    table.Add("area, mm2", Number(facts.dArea));
    table.Add("volume, mm3", Number(facts.dVolume));
    table.Add("open edges", Count(facts.nRimEdges));
    table.Add("doubled facets", Count(facts.nDoubled));
    table.Print();
}

// The bracket and a copy of it beside it come apart again.
void ShowShells(Checks& checks, CSTLModel& bracket) {
    CSTLModel beside;
    beside.AddSTLModel(&bracket);
    double offset[3] = {1000.0, 0.0, 0.0};
    beside.Transfer(offset);
    CSTLModel two;
    two.AddSTLModel(&bracket);
    two.AddSTLModel(&beside);
    auto const shells = SplitModel(two, "brackets.stl");
    checks.That(shells.size() == 2, "two brackets are two shells");
    checks.That(std::string(shells[1]->m_Status.m_szFileName) == "brackets_2.STL", "the shells are numbered");
    for (auto const& pShell : shells) {
        checks.That(pShell->GetFacetsNum() == bracket.GetFacetsNum(), "each is a whole bracket");
        checks.That(IsNear(pShell->CalVolume(), bracket.CalVolume()), "of the same volume");
    }
}

void ShowSurfaces(Checks& checks, CSTLModel& bracket, fs::path const& folder) {
    int const nFacets = bracket.GetFacetsNum();
    double const dArea = bracket.CalArea();
    DivideModel(bracket, "normal");
    checks.That(bracket.GetFacetsNum() == nFacets, "the surfaces hold all facets");
    checks.That(IsNear(bracket.CalArea(), dArea), "and their areas add up to that of the part");
    FacetColors colors;
    auto const& surfaces = bracket.m_SurfaceArray.m_aSurface;
    double dRim = 0.0;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        colors.Paint(*surfaces[i], surfaces[i]->m_nColor);
        dRim += RimLength(*surfaces[i]);
    }
    WritePly((folder / "bracket_surfaces.ply").string(), bracket, colors);
    Table table("bracket_surfaces.ply");
    table.Add("surfaces", Count(surfaces.GetSize()));
    table.Add("length of all rims, mm", Number(dRim));
    table.Print();
    checks.That(surfaces.GetSize() > 10 && surfaces.GetSize() < nFacets / 10,
                "the bracket has some dozens of surfaces");
}

void ShowSupport(Checks& checks, CSTLModel& bracket, fs::path const& folder) {
    SupportOptions options;
    options.dDown = 3.0;
    SupportPlan const plan = PlanSupport(bracket, options);
    CSTLModel solids;
    int const nSolids = BuildSupport(bracket, plan, options, solids);
    WriteModel(solids, (folder / "bracket_support.stl").string());
    WriteSupportPly((folder / "bracket_support.ply").string(), bracket, plan);
    ModelFacts const facts = FactsOf(solids);
    Table table("bracket_support.stl");
    table.Add("regions that face down", Count(static_cast<long long>(plan.regions.size())));
    table.Add("suspended edges", Count(static_cast<long long>(plan.chains.size())));
    table.Add("solids", Count(nSolids));
    table.Add("volume, mm3", Number(facts.dVolume));
    table.Print();
    checks.That(!plan.regions.empty() && plan.regions.size() < 100, "the bracket has regions that face down");
    checks.That(plan.chains.size() == 1, "the boss's keel hangs in the air");
    checks.That(nSolids > 1 && facts.nFacets > 0, "solids are made for them");
    checks.That(facts.nRimEdges == 0, "and the solids are closed");
}

}  // namespace

void RunDemo(DemoOptions const& options) {
    auto const start = std::chrono::steady_clock::now();
    fs::path const folder = options.folder;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw Failure(options.folder, "cannot be made: " + error.message());
    Checks checks;

    // A bracket as a careless program might write it: every ninth facet inside out, one facet twice.
    shapes::Mesh const clean = shapes::Bracket();
    shapes::Mesh careless = shapes::WithTurned(clean, 9);
    careless.push_back(careless.front());
    WriteBytes((folder / "bracket.stl").string(), shapes::ToBinaryStl(careless));
    WriteBytes((folder / "bracket_ascii.stl").string(), shapes::ToAsciiStl(clean, "bracket"));

    CSTLModel model;
    ReadModel((folder / "bracket.stl").string(), model);
    ModelFacts const asRead = FactsOf(model);
    PrintFacts("bracket.stl, as read", asRead);
    checks.That(asRead.nFacets == static_cast<int>(clean.size()),
                "all facets but the doubled one are in the mesh");
    checks.That(asRead.nDoubled == 1, "the doubled facet is flagged");
    checks.That(asRead.nRimEdges == 0, "the mesh is closed");

    RepairResult const repaired = Repair(model);
    model.CalArea();
    model.CalVolume();
    WriteModel(model, (folder / "bracket_repaired.stl").string());
    ModelFacts const afterRepair = FactsOf(model);
    Table table("repair");
    table.Add("shells", Count(repaired.nShells));
    table.Add("facets turned to agree", Count(repaired.nTurned));
    table.Add("volume before and after, mm3", Number(asRead.dVolume) + " -> " + Number(afterRepair.dVolume));
    table.Print();
    checks.That(repaired.nShells == 1, "the bracket is one shell");
    checks.That(repaired.nTurned == static_cast<int>((clean.size() + 7) / 9),
                "the facets turned are turned back");

    CSTLModel fromAscii;
    ReadModel((folder / "bracket_ascii.stl").string(), fromAscii);
    CSTLModel fromRepaired;
    ReadModel((folder / "bracket_repaired.stl").string(), fromRepaired);
    ModelFacts const ascii = FactsOf(fromAscii);
    ModelFacts const back = FactsOf(fromRepaired);
    PrintFacts("bracket_repaired.stl, read back", back);
    checks.That(back.nFacets == asRead.nFacets && back.nVertices == asRead.nVertices,
                "the repaired file is whole");
    checks.That(IsNear(back.dVolume, ascii.dVolume), "the repaired part has the volume of the clean one");
    checks.That(IsNear(back.dArea, ascii.dArea), "and its area");

    ShowShells(checks, fromRepaired);
    ShowSupport(checks, fromRepaired, folder);
    ShowSurfaces(checks, fromRepaired, folder);

    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::printf("%d checks passed in %.2f seconds; files are in %s\n", checks.Done(), seconds.count(),
                options.folder.c_str());
}
