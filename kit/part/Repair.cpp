// Part::Repair.

#include <algorithm>
#include <string>

#include "part/Bodies.h"
#include "part/Closing.h"
#include "part/Edges.h"
#include "part/Holes.h"
#include "part/Pace.h"
#include "part/PartState.h"
#include "part/Slivers.h"
#include "part/Turning.h"

namespace varnet {

namespace {

// Turns bodies that are closed and inside out. Returns how many.
std::int64_t TurnOutward(FlatMesh& mesh, EdgeTable const& edges) {
    BodyLabels const labels = LabelBodies(mesh.triangles.size(), edges);
    std::vector<std::vector<Triangle>> triangles(static_cast<std::size_t>(labels.count));
    std::vector<std::vector<std::int32_t>> open(triangles.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        auto const body = static_cast<std::size_t>(labels.ofFacet[i]);
        auto const first = static_cast<std::int32_t>(3 * triangles[body].size());
        triangles[body].push_back(mesh.triangles[i]);
        for (std::int32_t k = 0; k < 3; ++k) {
            if (edges.across[3 * i + static_cast<std::size_t>(k)] < 0) open[body].push_back(first + k);
        }
    }
    std::vector<Shell> shells;
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        shells.push_back({mesh.points, triangles[i],
                          open[i].empty() ? SureVolume(Measure(mesh.points, triangles[i], 0))
                                          : ClosedVolume(mesh.points, triangles[i], open[i]),
                          !open[i].empty()});
    }
    Facing const facing = JudgeFacing(shells);
    std::int64_t turned = 0;
    auto const turns = [&](std::size_t i) { return open[i].empty() && facing.isWrong[i]; };
    for (std::size_t i = 0; i < shells.size(); ++i) turned += turns(i);
    for (std::size_t i = 0; turned > 0 && i < mesh.triangles.size(); ++i) {
        if (turns(static_cast<std::size_t>(labels.ofFacet[i])))
            std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
    }
    return turned;
}

void Fill(FlatMesh& mesh, EdgeTable& edges, double longest, RepairReport& report, Pace const& pace) {
    HoleCounts const holes = FillHoles(mesh, edges, longest, pace.Between(0.0, 0.7));
    report.holesFilled = holes.filled;
    report.facetsAdded = holes.facetsAdded;
    report.holesLeft = holes.tooLong;
    if (holes.tooLong > 0) {
        report.notes.push_back(std::to_string(holes.tooLong) + (holes.tooLong == 1 ? " rim" : " rims") +
                               " longer than asked for stay open");
    }
    if (holes.filled == 0) return;
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.7, 0.8));
    TakeOutSlivers(mesh, edges, pace.Between(0.8, 0.9));
    edges = FindPairedEdges(mesh, pace.Between(0.9, 1.0));
}

}  // namespace

RepairReport Part::Repair(RepairSettings const& settings) {
    if (!(settings.fillHoles >= 0.0))
        throw Error(ErrorKind::kArgument, "the length of rims to fill is 0 mm or more");
    Watch watch(settings.progress);
    Pace const pace(watch);
    RepairReport report;
    report.openEdgesBefore = m_State->openEdgesBefore;
    FlatMesh mesh = m_State->mesh;
    EdgeTable edges = FindPairedEdges(mesh, pace.Between(0.0, 0.2));
    report.turned = TurnContradictions(mesh, edges, pace.Between(0.2, 0.4));
    if (report.turned > 0) {
        // A facet that stands there twice is told from a turned one only now, and a facet beside a vertex in
        // the middle of its edge only now runs the other way than those that it meets there.
        EdgeTable table = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.45, 0.45));
        report.doubled = LeaveOutCopies(mesh, table, pace.Between(0.45, 0.45));
        report.split = CloseOpenEdges(mesh, table, {}, pace.Between(0.45, 0.45)).split;
        if (report.doubled + report.split > 0) edges = FindPairedEdges(mesh, pace.Between(0.45, 0.45));
    }
    if (settings.fillHoles > 0.0 && edges.open > 0)
        Fill(mesh, edges, settings.fillHoles, report, pace.Between(0.45, 0.9));
    pace.At(0.9);
    if (settings.outward) report.bodiesTurned = TurnOutward(mesh, edges);
    report.openEdgesAfter = edges.open;

    auto state = std::make_shared<State>();
    state->mesh = std::move(mesh);
    state->name = m_State->name;
    state->header = m_State->header;
    state->format = m_State->format;
    state->report = m_State->report;
    state->openEdgesBefore = edges.open;
    if (report.turned + report.facetsAdded + report.bodiesTurned == 0) state->zeros = m_State->zeros;
    if (report.doubled + report.split + report.facetsAdded == 0)
        state->mayHaveCopies = m_State->mayHaveCopies;
    SetMeasures(*state, edges.open);
    state->edges = std::move(edges);
    pace.At(1.0);
    m_State = std::move(state);
    return report;
}

}  // namespace varnet
