#include "PartFacts.h"

#include <cstddef>
#include <utility>

#include "Console.h"

namespace {

constexpr std::size_t kListed = 20;

}  // namespace

nlohmann::json ToJson(varnet::Box3 const& box) {
    if (box.IsEmpty()) return nullptr;
    return {{box.min.x, box.min.y, box.min.z}, {box.max.x, box.max.y, box.max.z}};
}

std::string TextOf(varnet::Box3 const& box) {
    if (box.IsEmpty()) return "none";
    auto const point = [](varnet::Point3 const& p) {
        return Number(p.x) + "  " + Number(p.y) + "  " + Number(p.z);
    };
    return point(box.min) + "  to  " + point(box.max);
}

void AddIntake(Report& report, varnet::Part const& part) {
    varnet::IntakeReport const& found = part.Report();
    report.Add("type", "type", std::string(NameOf(part.Format())));
    report.Add("facets in the file", "facets_in_file", static_cast<long long>(found.facetsInFile));
    report.Add("open edges in the file", "open_edges_in_file", static_cast<long long>(found.openEdgesExact));
    auto const count = [&report](char const* label, char const* key, std::int64_t n) {
        report.AddJson(key, n);
        if (n > 0) report.AddRow(label, Count(n));
    };
    count("facets that could not be read", "facets_lost", found.facetsInFile - found.facetsRead);
    count("facets with a corner that is no number", "not_finite", found.notFinite);
    count("facets with two equal corners, left out", "degenerate", found.degenerate);
    count("facets once too often, left out", "doubled", found.doubled);
    count("facets without area, taken out", "collinear_turned", found.collinearTurned);
    count("facets divided at a vertex on their edge", "split", found.split);
    count("vertices joined with a near one", "welded", found.welded);
    report.AddJson("weld_tolerance", found.weldTolerance);
    if (found.welded > 0) report.AddRow("joined within, mm", Number(found.weldTolerance));
    count("edges of more than two facets", "many_facet_edges", found.manyFacetEdges);
    report.AddJson("notes", found.notes);
    for (std::string const& note : found.notes) report.AddRow("note", note);
}

void AddMeasures(Report& report, varnet::Part const& part) {
    varnet::MeshMeasures const& measures = part.Measures();
    report.Add("facets", "facets", static_cast<long long>(part.Triangles().size()));
    report.Add("vertices", "vertices", static_cast<long long>(part.Points().size()));
    report.Add("open edges", "open_edges", static_cast<long long>(measures.openEdges));
    report.Add("box", "box", ToJson(measures.box), TextOf(measures.box));
    report.Add("area, mm2", "area", measures.area);
    report.Add("volume, mm3", "volume", measures.volume);
}

void AddBodies(Report& report, varnet::Part const& part) {
    auto const bodies = part.Bodies();
    report.Add("bodies", "bodies", static_cast<long long>(bodies.size()));
    nlohmann::json list = nlohmann::json::array();
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        varnet::Body const& body = bodies[i];
        varnet::MeshMeasures const& measures = body.Measures();
        char const* const kind = body.IsCavity() ? "cavity" : body.IsInsideOut() ? "inside out" : "solid";
        list.push_back({{"facets", body.Triangles().size()},
                        {"kind", kind},
                        {"open_edges", measures.openEdges},
                        {"area", measures.area},
                        {"volume", measures.volume},
                        {"box", ToJson(measures.box)}});
        if (bodies.size() == 1 || i >= kListed) continue;
        report.AddRow("body " + std::to_string(i + 1),
                      std::string(kind) + ", " + Count(static_cast<long long>(body.Triangles().size())) +
                          " facets, volume " + Number(measures.volume) + ", open edges " +
                          Count(measures.openEdges));
    }
    if (bodies.size() > kListed)
        report.AddRow("...", Count(static_cast<long long>(bodies.size() - kListed)) + " more");
    report.AddJson("body_list", std::move(list));
}
