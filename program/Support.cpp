#include "Support.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "Failure.h"
#include "ModelFile.h"
#include "Ply.h"
#include "Progress.h"
#include "Table.h"

namespace {

constexpr int kKeels = -1;

constexpr std::uint32_t kRed = 0xD03020;
constexpr std::uint32_t kYellow = 0xE8C840;

// A region that is nowhere higher than this above the lowest point of the part rests on the plate, in
// millimetres.
constexpr double kOnPlate = 0.001;

// So many regions are listed.
constexpr std::size_t kListed = 50;

SupportRegion Judge(CFeatureSurface& surface, double dLowest) {
    if (surface.m_BoundBox.m_ptMax.z - dLowest <= kOnPlate) return {&surface, false, "rests on the plate"};
    if ((surface.m_nSupportFlag & FS_NEEDS_SUPPORT) == 0) {
        return {&surface, false, "below the least area and held by a wall"};
    }
    if ((surface.m_nSurfaceFlag & FS_SMALL_SUSPENDED) != 0) {
        return {&surface, true, "below the least area, but hangs free"};
    }
    return {&surface, true, "faces down"};
}

// Takes the solids that the generators have made, which stand for the wanted ones of something in order.
template <class Wanted>
void TakeSolids(CSTLModel& model, Wanted const& isWanted, std::vector<std::unique_ptr<CSTLModel>>& solids) {
    for (std::size_t nIndex = 0; model.m_SupportModelList.IsEmpty() == 0; ++nIndex) {
        std::unique_ptr<CSTLModel> pSolid(static_cast<CSTLModel*>(model.m_SupportModelList.RemoveHead()));
        if (isWanted(nIndex)) solids.push_back(std::move(pSolid));
    }
}

nlohmann::json PointJson(CPoint3D const& p) { return {p.x, p.y, p.z}; }

nlohmann::json ToJson(SupportPlan const& plan, int nSolids, int nFacets) {
    nlohmann::json json;
    json["regions"] = nlohmann::json::array();
    for (SupportRegion const& region : plan.regions) {
        CFeatureSurface& surface = *region.pSurface;
        json["regions"].push_back(
            {{"facets", surface.m_aFacet.GetSize()},
             {"area", surface.Area()},
             {"projected_area", surface.ProjectArea()},
             {"box", {PointJson(surface.m_BoundBox.m_ptMin), PointJson(surface.m_BoundBox.m_ptMax)}},
             {"supported", region.bSupported},
             {"why", region.why}});
    }
    json["edges"] = nlohmann::json::array();
    for (CFeatureEdge* const pChain : plan.chains) {
        json["edges"].push_back({{"vertices", pChain->m_VertexList.GetCount()},
                                 {"length", pChain->GetLength(0)},
                                 {"lowest", pChain->GetMinZ(0)}});
    }
    json["solids"] = nSolids;
    json["facets"] = nFacets;
    return json;
}

std::string RangeText(double dMin, double dMax) { return Number(dMin) + ".." + Number(dMax); }

void PrintPlan(std::string const& title, SupportPlan const& plan, int nSolids, int nFacets) {
    Table table(title);
    table.Add("regions", Count(static_cast<long long>(plan.regions.size())));
    for (std::size_t i = 0; i < std::min(kListed, plan.regions.size()); ++i) {
        SupportRegion const& region = plan.regions[i];
        CBoundBox3D const& box = region.pSurface->m_BoundBox;
        table.Add(
            "region " + std::to_string(i + 1),
            std::string(region.bSupported ? "kept" : "dropped") + ": " + region.why + "; area " +
                Number(region.pSurface->Area()) + ", projected " + Number(region.pSurface->ProjectArea()) +
                ", x " + RangeText(box.m_ptMin.x, box.m_ptMax.x) + ", y " +
                RangeText(box.m_ptMin.y, box.m_ptMax.y) + ", z " + RangeText(box.m_ptMin.z, box.m_ptMax.z));
    }
    if (plan.regions.size() > kListed) {
        table.Add("...", Count(static_cast<long long>(plan.regions.size() - kListed)) + " more");
    }
    double dLength = 0.0;
    for (CFeatureEdge* const pChain : plan.chains) dLength += pChain->GetLength(0);
    table.Add("suspended edges",
              Count(static_cast<long long>(plan.chains.size())) + " chains, " + Number(dLength) + " mm");
    table.Add("solids", Count(nSolids) + ", " + Count(nFacets) + " facets");
    table.Print();
}

}  // namespace

SupportPlan PlanSupport(CSTLModel& model, SupportOptions const& options) {
    SupportPlan plan;
    model.FindSupportSurface(options.dAngle, options.connect == "edge" ? 1 : 0);
    model.FilterUnSuspendSupport(options.dMinArea);
    model.FindSuspendEdge(kKeels, options.dEdgesUp, options.dEdgesDown, options.dEdgeLength);
    double const dLowest = model.m_VertexTree.m_BoundBox.m_ptMin.z;
    auto const& surfaces = model.m_SupportArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) plan.regions.push_back(Judge(*surfaces[i], dLowest));
    for (int i = 0; i < model.m_SuspendEdgeArray.GetSize(); ++i) {
        CFeatureEdge* const pChain = model.m_SuspendEdgeArray[i];
        // A keel that lies on the plate needs nothing below it.
        if (pChain->GetMinZ(0) - dLowest <= kOnPlate) pChain->m_nEdgeFlag &= ~FE_SELECTED;
        if ((pChain->m_nEdgeFlag & FE_SELECTED) != 0) plan.chains.push_back(pChain);
    }
    return plan;
}

// For a level the library makes solids of all regions and chains: those that are not wanted are left out.
std::vector<std::unique_ptr<CSTLModel>> BuildSolids(CSTLModel& model, SupportPlan const& plan,
                                                    SupportOptions const& options) {
    bool const bAll = options.dDown <= 0.0;
    for (SupportRegion const& region : plan.regions) {
        if (!region.bSupported) region.pSurface->m_nSupportFlag &= ~FS_NEEDS_SUPPORT;
    }
    std::vector<std::unique_ptr<CSTLModel>> solids;
    model.ClearSupportSTL();
    model.GenSupportSTL(options.dDown);
    TakeSolids(
        model, [&plan, bAll](std::size_t i) { return !bAll || plan.regions[i].bSupported; }, solids);
    model.GenSuspendSTL(options.dDown);
    auto& chains = model.m_SuspendEdgeArray;
    TakeSolids(
        model,
        [&chains, bAll](std::size_t i) {
            return !bAll || (chains[static_cast<int>(i)]->m_nEdgeFlag & FE_SELECTED) != 0;
        },
        solids);
    return solids;
}

int BuildSupport(CSTLModel& model, SupportPlan const& plan, SupportOptions const& options,
                 CSTLModel& target) {
    std::vector<std::unique_ptr<CSTLModel>> const solids = BuildSolids(model, plan, options);
    for (auto const& pSolid : solids) target.AddSTLModel(pSolid.get());
    return static_cast<int>(solids.size());
}

void WriteSupportPly(std::string const& file, CSTLModel const& model, SupportPlan const& plan) {
    FacetColors colors;
    for (SupportRegion const& region : plan.regions)
        colors.Paint(*region.pSurface, region.bSupported ? kRed : kYellow);
    WritePly(file, model, colors);
}

void RunSupport(SupportOptions const& options) {
    CSTLModel model;
    ReadModel(options.input, model);
    CSTLModel solids;
    SupportPlan plan;
    int nSolids = 0;
    RunWithProgress(
        "Building support",
        [&] {
            plan = PlanSupport(model, options);
            nSolids = BuildSupport(model, plan, options, solids);
        },
        [] { return 0.0; }, [&solids] { solids.StopCurOperate(); });
    ThrowIfInterrupted();
    WriteModel(solids, options.output);
    if (!options.ply.empty()) WriteSupportPly(options.ply, model, plan);
    if (options.bJson) {
        std::printf("%s\n", ToJson(plan, nSolids, solids.GetFacetsNum()).dump(2).c_str());
    } else {
        PrintPlan(options.input + " -> " + options.output, plan, nSolids, solids.GetFacetsNum());
    }
}
