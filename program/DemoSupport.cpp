#include "Demo.h"
#include "MeshPicture.h"
#include "ModelFacts.h"
#include "ModelFile.h"
#include "Support.h"

namespace {

constexpr std::uint32_t kSteel = 0x8FB3CF;
constexpr std::uint32_t kAmber = 0xE0A030;
constexpr double kGlass = 0.4;

}  // namespace

std::vector<std::unique_ptr<CSTLModel>> ShowSupport(DemoRun& run, CSTLModel& model) {
    SupportOptions low;
    low.dDown = 3.0;
    SupportPlan const plan = PlanSupport(model, low);
    CSTLModel solids;
    int const nSolids = BuildSupport(model, plan, low, solids);
    WriteModel(solids, run.File("bracket_support.stl"));
    WriteSupportPly(run.File("bracket_support.ply"), model, plan);
    ModelFacts const facts = FactsOf(solids);
    std::vector<std::unique_ptr<CSTLModel>> toPlate = BuildSolids(model, plan, SupportOptions());

    std::vector<PicturedModel> pictured = {InOneColor(model, kSteel)};
    for (auto const& pSolid : toPlate) pictured.push_back(InOneColor(*pSolid, kAmber, kGlass));
    WriteBytes(run.File("bracket_support.svg"), DrawMeshes(pictured, "The bracket on its supports"));
    run.page.BeginSection(
        "Support",
        "Regions that look down by less than 45 degrees, and edges that nothing holds, get "
        "solids below them: of 3 mm in bracket_support.stl, down to the plate for slicing.");
    run.page.AddPicture("bracket_support.svg",
                        "The bracket with glassy amber solids that fill the room below its shelf",
                        "The part on the solids that hold it while it is printed.");
    Table table("bracket_support.stl");
    table.Add("regions that face down", Count(static_cast<long long>(plan.regions.size())));
    table.Add("suspended edges", Count(static_cast<long long>(plan.chains.size())));
    table.Add("solids", Count(nSolids));
    table.Add("volume, mm3", Number(facts.dVolume));
    Show(run, table);

    run.checks.That(!plan.regions.empty() && plan.regions.size() < 100,
                    "the bracket has regions that face down");
    run.checks.That(plan.chains.size() == 1, "the boss's keel hangs in the air");
    run.checks.That(nSolids > 1 && facts.nFacets > 0, "solids are made for them");
    run.checks.That(facts.nRimEdges == 0, "and the solids are closed");
    run.checks.That(static_cast<int>(toPlate.size()) == nSolids, "as many go down to the plate");
    return toPlate;
}
