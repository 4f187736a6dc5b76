// The whole of what the library does so far, on one real part.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Commands.h"
#include "Failure.h"
#include "ModelFacts.h"
#include "ModelFile.h"
#include "Repair.h"
#include "Shapes.h"
#include "Table.h"

namespace {

namespace fs = std::filesystem;

void WriteBytes(fs::path const& path, std::string const& bytes) {
    WriteWhole(
        path.string(),
        [&bytes](fs::path const& partial) {
            std::ofstream file(partial, std::ios::binary);
            return static_cast<bool>(file << bytes);
        },
        static_cast<long long>(bytes.size()));
}

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
    WriteBytes(folder / "bracket.stl", shapes::ToBinaryStl(careless));
    WriteBytes(folder / "bracket_ascii.stl", shapes::ToAsciiStl(clean, "bracket"));

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

    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::printf("%d checks passed in %.2f seconds; files are in %s\n", checks.Done(), seconds.count(),
                options.folder.c_str());
}
