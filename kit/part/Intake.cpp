// What is done to a mesh that comes in.

#include "part/Intake.h"

#include <string>

#include "part/Bodies.h"
#include "part/Edges.h"
#include "part/FacetSink.h"

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

void TakeIn(RawMesh raw, IntakeSettings const&, Part::State& state, Pace const& pace) {
    IntakeReport& report = state.report;
    EdgeTable const edges = FindEdges(raw.mesh.triangles, raw.mesh.points.size(), pace);
    report.openEdgesExact = edges.open;
    report.manyFacetEdges = edges.many;
    report.openEdges = edges.open;
    state.mesh = std::move(raw.mesh);
    state.header = std::move(raw.header);
    state.format = raw.format;
    SetMeasures(state, report.openEdges);
    pace.At(1.0);
}

}  // namespace varnet
