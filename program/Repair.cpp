#include "Repair.h"

#include <array>
#include <vector>

#include "Commands.h"
#include "ModelFile.h"
#include "Shells.h"
#include "Table.h"

namespace {

std::vector<CFacet*> AllFacets(CSTLModel const& model) {
    std::vector<CFacet*> facets;
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        for (int k = 0; k < surfaces[i]->m_aFacet.GetSize(); ++k) facets.push_back(surfaces[i]->m_aFacet[k]);
    }
    return facets;
}

// Whether the facet's winding runs from the one vertex straight to the other.
bool RunsFromTo(CFacet const& facet, tagVertexNode const* a, tagVertexNode const* b) {
    return (facet.m_pVertex1 == a && facet.m_pVertex2 == b) ||
           (facet.m_pVertex2 == a && facet.m_pVertex3 == b) ||
           (facet.m_pVertex3 == a && facet.m_pVertex1 == b);
}

int FixWinding(CSTLModel& model) {
    std::vector<CFacet*> const facets = AllFacets(model);
    std::vector<std::array<tagVertexNode*, 2>> before;
    before.reserve(facets.size());
    for (CFacet const* const pFacet : facets) before.push_back({pFacet->m_pVertex1, pFacet->m_pVertex2});
    model.FixNormal();
    int nTurned = 0;
    for (std::size_t i = 0; i < facets.size(); ++i) {
        if (!RunsFromTo(*facets[i], before[i][0], before[i][1])) ++nTurned;
    }
    return nTurned;
}

}  // namespace

RepairResult Repair(CSTLModel& model) {
    RepairResult result;
    result.nTurned = FixWinding(model);
    std::vector<Shell> const shells = FindShells(model);
    result.nShells = static_cast<int>(shells.size());
    for (Shell const& shell : shells) {
        if (shell.dSignedVolume >= 0.0) continue;
        if (IsCavity(shells, shell)) {
            ++result.nCavities;
            continue;
        }
        for (CFacet* const pFacet : shell.facets) pFacet->Reverse();
        ++result.nShellsTurned;
    }
    return result;
}

void RunRepair(RepairOptions const& options) {
    CSTLModel model;
    ReadModel(options.input, model);
    RepairResult const result = Repair(model);
    WriteModel(model, options.output);

    Table table(options.input + " -> " + options.output);
    table.Add("facets written", Count(model.GetFacetsNum()));
    table.Add("shells", Count(result.nShells));
    table.Add("facets turned to agree", Count(result.nTurned));
    table.Add("shells turned outward", Count(result.nShellsTurned));
    table.Add("cavities left facing inward", Count(result.nCavities));
    table.Print();
}
