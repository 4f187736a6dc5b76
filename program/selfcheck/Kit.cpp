// The kit: from a part to a slice file.

#include <array>
#include <cmath>

#include "selfcheck/Record.h"
#include "varnet/Kit.h"

namespace selfcheck {

namespace {

using varnet::Point3;

void AddPart(Record& record, varnet::Part const& part) {
    for (Point3 const& p : part.Points()) record.AddAll(p.x, p.y, p.z);
    for (varnet::Triangle const& t : part.Triangles()) record.AddAll(t[0], t[1], t[2]);
    varnet::IntakeReport const& found = part.Report();
    record.AddAll(found.facetsInFile, found.facetsRead, found.degenerate, found.doubled,
                  found.collinearTurned, found.split, found.welded, found.weldTolerance, found.manyFacetEdges,
                  found.openEdgesExact, found.openEdges);
    varnet::MeshMeasures const& measures = part.Measures();
    record.AddAll(measures.area, measures.volume, measures.openEdges, part.Bodies().size());
}

void AddLayers(Record& record, varnet::Layer const& layer) {
    record.AddAll(layer.number, layer.z, layer.cutHeight);
    for (varnet::Point2 const& p : layer.points) record.AddAll(p.x, p.y);
    for (std::size_t const n : layer.offsets) record.Add(n);
    for (varnet::Contour const& c : layer.contours) record.AddAll(c.closed ? 1 : 0, c.parent, c.level, c.id);
    for (varnet::Stroke const& s : layer.strokes) record.AddAll(s.from.x, s.from.y, s.to.x, s.to.y);
    for (std::int32_t const id : layer.chainIds) record.Add(id);
}

// A careless part: a ball of whole numbers with facets that are turned, doubled, missing, and moved a little.
varnet::Part CarelessPart(CSTLModel& ball, Chance& chance) {
    std::vector<Point3> points;
    std::vector<varnet::Triangle> triangles;
    auto const& facets = ball.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    for (int i = 0; i < facets.GetSize(); ++i) {
        if (i % 97 == 5) continue;
        CFacet const& facet = *facets[i];
        for (int times = i % 101 == 7 ? 2 : 1; times > 0; --times) {
            auto const first = static_cast<std::int32_t>(points.size());
            for (tagVertexNode const* p : {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3}) {
                double const off = i % 53 == 3 ? chance() * 1e-8 : 0.0;
                points.push_back({p->x + off, p->y, p->z});
            }
            if (i % 9 == 0) {
                triangles.push_back({first, first + 2, first + 1});
            } else {
                triangles.push_back({first, first + 1, first + 2});
            }
        }
    }
    return varnet::Part(points, triangles);
}

void AddFiles(Record& record, varnet::Part const& part, std::filesystem::path const& folder) {
    for (varnet::MeshFormat const format : {varnet::MeshFormat::kBinaryStl, varnet::MeshFormat::kPlainCsm,
                                            varnet::MeshFormat::kStripCsm, varnet::MeshFormat::kRingCsm}) {
        std::filesystem::path const file = folder / "kit.mesh";
        varnet::WriteReport const written = part.Write(file, format);
        record.AddAll(written.facetsAfter, written.openEdgesAfter, written.volumeAfter, written.largestError);
        record.Add(std::string_view(BytesOf(file)));
        AddPart(record, varnet::Part::Read(file));
    }
}

// Contours, which are cut by exact arithmetic, in all modes and by several threads; ordered, written and
// read.
void AddSlices(Record& record, varnet::Part const& part, std::filesystem::path const& folder) {
    for (int mode = 1; mode <= 3; ++mode) {
        varnet::SliceSettings settings;
        settings.layer = 0.75;
        settings.hatch = 0.0;
        settings.threads = mode;
        varnet::Slicer slicer(varnet::SlicerInputs(part), settings);
        varnet::SliceWriteSettings writing;
        writing.mode = static_cast<varnet::SliceMode>(mode);
        writing.seed = 7;
        std::filesystem::path const file = folder / "kit.cli";
        varnet::SliceWriter writer(file, slicer.LayerCount(), writing);
        varnet::PathOrder order;
        for (varnet::Layer& layer : slicer) {
            AddLayers(record, layer);
            order.Order(layer);
            AddLayers(record, layer);
            writer.Write(layer);
        }
        writer.Finish();
        record.Add(order.After().starts);
        if (mode != 3) record.Add(std::string_view(BytesOf(file)));
        varnet::SliceFile const slices(file);
        for (std::int64_t i = 1; i <= slices.LayerCount(); ++i) AddLayers(record, slices.LayerAt(i));
        varnet::SliceReport const& report = slicer.Report();
        record.AddAll(report.contours, report.openPaths, report.points, report.volume, report.cutVolume);
    }
}

// Fill lines are turned by an angle, supports found by one; travel and contours that cross are measured by
// roots of sums of squares and by directions.
void AddApart(Record& record, varnet::Part const& part) {
    varnet::Supports const supports(part);
    double volume = 0.0;
    for (varnet::SupportSolid const& solid : supports.Solids()) {
        for (varnet::Triangle const& t : solid.triangles) {
            auto const at = [&](int k) -> Point3 const& {
                return solid.points[static_cast<std::size_t>(t[static_cast<std::size_t>(k)])];
            };
            volume += at(0).x * (at(1).y * at(2).z - at(1).z * at(2).y);
        }
    }
    record.AddApart("Supports", static_cast<double>(supports.Overhangs().size()) + volume);
    varnet::Surfaces const surfaces(part);
    record.AddApart("Surfaces", static_cast<double>(surfaces.all.size()));
    std::array<varnet::Part, 2> parts{part, part};
    varnet::Placement aside;
    aside.rows[0][3] = 11.0;
    parts[1].Transform(aside);
    varnet::SliceSettings settings;
    settings.layer = 2.0;
    settings.hatch = 1.0;
    settings.angle = 37.0;
    varnet::Slicer slicer(varnet::SlicerInputs(std::span<varnet::Part const>(parts)), settings);
    varnet::OrderSettings ordering;
    ordering.splice = true;
    varnet::PathOrder order(ordering);
    double area = 0.0;
    double strokes = 0.0;
    for (varnet::Layer& layer : slicer) {
        area += layer.Area();
        strokes += layer.StrokeLength();
        order.Order(layer);
    }
    record.AddApart("Slicer: area where parts overlap", area);
    record.AddApart("Slicer: length of fill lines", strokes);
    record.AddApart("PathOrder: travel", order.After().length);
}

}  // namespace

void CheckKit(Record& record, std::filesystem::path const& folder) {
    record.BeginRoom("kit");
    Chance chance(7);
    CSTLModel ball;
    FillWithBall(ball, 20, 24.0);
    varnet::Part part = CarelessPart(ball, chance);
    AddPart(record, part);
    varnet::RepairSettings repair;
    repair.fillHoles = 100.0;
    varnet::RepairReport const repaired = part.Repair(repair);
    record.AddAll(repaired.turned, repaired.holesFilled, repaired.facetsAdded, repaired.openEdgesAfter);
    AddPart(record, part);
    AddFiles(record, part, folder);
    AddSlices(record, part, folder);
    AddApart(record, part);
}

}  // namespace selfcheck
