#include <cstdio>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Failure.h"
#include "Layers.h"
#include "ModelFacts.h"
#include "ModelFile.h"
#include "Progress.h"
#include "Table.h"

namespace {

// Whether the file says how many facets it has. What the library has in m_nTotalFacet for other kinds is a
// guess for progress.
bool IsAnnounced(FileKind kind) { return kind == FileKind::kBinaryStl || kind == FileKind::kOltp; }

nlohmann::json PointJson(CPoint3D const& p) { return {p.x, p.y, p.z}; }

std::string PointText(CPoint3D const& p) { return Number(p.x) + "  " + Number(p.y) + "  " + Number(p.z); }

nlohmann::json ToJson(std::string const& file, FileKind kind, CSTLModel const& model,
                      ModelFacts const& facts) {
    nlohmann::json json;
    json["file"] = file;
    json["type"] = NameOf(kind);
    bool const bAnnounced = IsAnnounced(kind);
    json["announced"] =
        bAnnounced ? nlohmann::json(static_cast<std::uint32_t>(model.m_nTotalFacet)) : nullptr;
    json["facets"] = facts.nFacets;
    json["dropped"] = bAnnounced ? nlohmann::json(static_cast<std::uint32_t>(model.m_nTotalFacet) -
                                                  static_cast<std::int64_t>(facts.nFacets))
                                 : nullptr;
    json["vertices"] = facts.nVertices;
    if (facts.box.IsValid() != 0) json["box"] = {PointJson(facts.box.m_ptMin), PointJson(facts.box.m_ptMax)};
    json["area"] = facts.dArea;
    json["volume"] = facts.dVolume;
    json["rim_edges"] = facts.nRimEdges;
    json["doubled"] = facts.nDoubled;
    return json;
}

void PrintTable(std::string const& file, FileKind kind, CSTLModel const& model, ModelFacts const& facts) {
    Table table(file);
    table.Add("type", NameOf(kind));
    if (!IsAnnounced(kind)) {
        table.Add("facets", Count(facts.nFacets));
    } else {
        auto const nAnnounced = static_cast<std::uint32_t>(model.m_nTotalFacet);
        table.Add("facets", Count(facts.nFacets) + " of " + Count(nAnnounced) + " announced, " +
                                Count(std::int64_t{nAnnounced} - facts.nFacets) + " dropped or missing");
    }
    table.Add("vertices", Count(facts.nVertices));
    if (facts.box.IsValid() != 0) {
        table.Add("lowest corner", PointText(facts.box.m_ptMin));
        table.Add("highest corner", PointText(facts.box.m_ptMax));
        table.Add("size", PointText(facts.box.Size()));
    }
    table.Add("area", Number(facts.dArea));
    table.Add("volume", Number(facts.dVolume));
    table.Add("open edges", Count(facts.nRimEdges));
    table.Add("doubled facets", Count(facts.nDoubled));
    table.Print();
}

}  // namespace

ModelFacts FactsOf(CSTLModel& model) {
    ModelFacts facts;
    facts.nFacets = model.GetFacetsNum();
    facts.nVertices = static_cast<int>(model.m_VertexTree.m_nCount);
    facts.box = model.m_VertexTree.m_BoundBox;
    facts.dArea = model.Area();
    facts.dVolume = model.Volume();
    auto const& surfaces = model.m_SurfaceArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        CFeatureSurface& surface = *surfaces[i];
        surface.FindSurfaceEdge();
        facts.nRimEdges += surface.m_EdgeList.GetCount();
        surface.ClearVergeArray();
        for (int k = 0; k < surface.m_aFacet.GetSize(); ++k) {
            if ((surface.m_aFacet[k]->m_nFlag & (FACET_DUP_SAME | FACET_DUP_REVERSED)) != 0) ++facts.nDoubled;
        }
    }
    return facts;
}

void RunInfo(InfoOptions const& options) {
    nlohmann::json all = nlohmann::json::array();
    std::size_t nFailed = 0;
    for (std::string const& file : options.files) {
        CSTLModel model;
        FileKind kind{};
        try {
            if (IsSliceFile(file)) {
                if (options.bJson) {
                    all.push_back(SliceJson(file));
                } else {
                    PrintSliceTable(file);
                }
                continue;
            }
            kind = ReadModel(file, model);
        } catch (Failure const& failure) {
            ThrowIfInterrupted();
            std::fprintf(stderr, "varnet: %s\n", failure.what());
            ++nFailed;
            continue;
        }
        ModelFacts const facts = FactsOf(model);
        if (options.bJson) {
            all.push_back(ToJson(file, kind, model, facts));
        } else {
            PrintTable(file, kind, model, facts);
        }
    }
    if (options.bJson) {
        // A file name need not be text: bytes that are not are replaced.
        std::printf("%s\n", all.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    }
    if (nFailed > 0) {
        throw Failure(std::to_string(nFailed) + " of " + std::to_string(options.files.size()) +
                      " files could not be read");
    }
}
