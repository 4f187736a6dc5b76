// What is done to a mesh that comes in.

#include "part/Intake.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "part/Attempts.h"
#include "part/Bodies.h"
#include "part/Edges.h"
#include "part/FacetSink.h"
#include "part/NearPoints.h"
#include "part/Slivers.h"

namespace varnet {

RawMesh ReadArrays(std::span<Point3 const> points, std::span<Triangle const> triangles,
                   IntakeSettings const& settings, IntakeReport& report, Pace const& pace) {
    RawMesh raw;
    report.facetsInFile = static_cast<std::int64_t>(triangles.size());
    FacetSink sink(raw, report, settings.scale, triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        pace.Step(i, triangles.size());
        Triangle const& t = triangles[i];
        for (std::int32_t const corner : t) {
            if (corner < 0 || static_cast<std::size_t>(corner) >= points.size()) {
                throw Error(ErrorKind::kArgument, "triangle " + std::to_string(i) + " names point " +
                                                      std::to_string(corner) + ", and there are " +
                                                      std::to_string(points.size()));
            }
        }
        sink.Add(points[static_cast<std::size_t>(t[0])], points[static_cast<std::size_t>(t[1])],
                 points[static_cast<std::size_t>(t[2])]);
    }
    sink.Flush();
    return raw;
}

void SetMeasures(Part::State& state, std::int64_t openEdges) {
    state.measures = Measure(state.mesh.points, state.mesh.triangles, openEdges);
}

namespace {

// Joins all points within the tolerance; facets that lose a corner by that go.
void WeldAll(FlatMesh& mesh, EdgeTable& edges, double tolerance, IntakeReport& report, Pace const& pace) {
    std::vector<std::int32_t> const becomes = JoinNear(mesh.points, tolerance, pace.Between(0.0, 0.5));
    std::int64_t welded = 0;
    for (std::size_t i = 0; i < becomes.size(); ++i) welded += becomes[i] != static_cast<std::int32_t>(i);
    if (welded == 0) return;
    for (Triangle& t : mesh.triangles) {
        for (std::int32_t& corner : t) corner = becomes[static_cast<std::size_t>(corner)];
        if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) continue;
        t = {-1, -1, -1};
        ++report.degenerate;
    }
    DropMarked(mesh.triangles);
    report.welded += welded;
    report.weldTolerance = tolerance;
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.5, 1.0));
}

void NoteSlivers(SliverCounts const& counts, IntakeReport& report) {
    report.collinearTurned = counts.turned;
    report.collinearLeft = counts.stuck;
    report.tiny = counts.small;
    auto const facets = [](std::int64_t n) { return std::to_string(n) + (n == 1 ? " facet" : " facets"); };
    if (counts.small > 0) {
        report.notes.push_back(
            facets(counts.small) +
            " with a doubled area of 1e-10 or less: a classic model refuses them; is the unit "
            "of the file larger than a millimetre?");
    }
    if (counts.stuck > 0)
        report.notes.push_back(facets(counts.stuck) + " without area could not be taken out");
}

void NoteSize(MeshMeasures const& measures, IntakeReport& report) {
    if (measures.box.IsEmpty()) return;
    Point3 const sides = measures.box.max - measures.box.min;
    double const largest = std::max({sides.x, sides.y, sides.z});
    if (largest >= 1.0) return;
    std::array<char, 32> number{};
    char* const end =
        std::to_chars(number.data(), number.data() + number.size(), largest, std::chars_format::general, 3)
            .ptr;
    report.notes.push_back("the largest side is " + std::string(number.data(), end) +
                           " mm: is the file in metres (a scale of 1000) or inches (25.4)?");
}

// Points that no facet uses any more go.
void DropUnused(FlatMesh& mesh) {
    std::vector<std::int32_t> number(mesh.points.size(), -1);
    for (Triangle const& t : mesh.triangles) {
        for (std::int32_t const corner : t) number[static_cast<std::size_t>(corner)] = 0;
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        if (number[i] < 0) continue;
        mesh.points[kept] = mesh.points[i];
        number[i] = static_cast<std::int32_t>(kept++);
    }
    if (kept == mesh.points.size()) return;
    mesh.points.resize(kept);
    for (Triangle& t : mesh.triangles) {
        for (std::int32_t& corner : t) corner = number[static_cast<std::size_t>(corner)];
    }
}

void Heal(FlatMesh& mesh, EdgeTable& edges, bool hasCollinear, IntakeSettings const& settings,
          IntakeReport& report, Pace const& pace) {
    if (settings.weld) WeldAll(mesh, edges, *settings.weld, report, pace.Between(0.0, 0.2));
    if (edges.open > 0) {
        std::span<double const> tolerances = kWeldTolerances;
        if (settings.weld) tolerances = std::span(&*settings.weld, 1);
        CloseByBest(mesh, edges, tolerances, report, pace.Between(0.2, 0.6));
    }
    if (hasCollinear || report.welded > 0 || report.split > 0) {
        NoteSlivers(TakeOutSlivers(mesh, edges, pace.Between(0.6, 1.0)), report);
    }
    if (report.welded > 0 || report.doubled > 0 || report.collinearTurned > 0) DropUnused(mesh);
}

}  // namespace

void TakeIn(RawMesh raw, IntakeSettings const& settings, Part::State& state, Pace const& pace) {
    IntakeReport& report = state.report;
    FlatMesh& mesh = raw.mesh;
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.0, 0.6));
    report.openEdgesExact = edges.open;
    state.openEdgesBefore = edges.open;
    report.manyFacetEdges = edges.many;
    bool const mayHaveCopies = MayHaveCopies(edges);
    if (settings.heal) Heal(mesh, edges, raw.hasCollinear, settings, report, pace.Between(0.6, 0.9));
    report.openEdges = edges.open;
    state.mesh = std::move(mesh);
    state.header = std::move(raw.header);
    state.format = raw.format;
    bool const changed = report.welded + report.split + report.doubled + report.collinearTurned > 0;
    if (changed) {
        SetMeasures(state, report.openEdges);
    } else {
        state.mayHaveCopies = mayHaveCopies;
        state.zeros = std::move(raw.zeros);
        state.measures = MeasuresFrom(raw.sums, state.mesh.points, report.openEdges);
    }
    state.edges = std::move(edges);
    NoteSize(state.measures, report);
    pace.At(1.0);
}

}  // namespace varnet
