#include "page/PagePart.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

#include "part/Bodies.h"
#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

namespace {

// Bodies beyond these are listed and switched as one: a file may hold thousands of crumbs.
constexpr std::int32_t kMostBodies = 200;
// Edges between facets whose normals differ by more are sharp; the cosine of 25 degrees.
constexpr double kSharp = 0.9063;
// A part with more sharp edges is rough all over, and lines would hide it.
constexpr std::size_t kMostSharp = 300000;
constexpr std::uint32_t kPlain = 0xFFFFFF;

// What hangs: nothing, an overhang that gets no solid, one that gets one.
enum class Hanging : std::uint8_t { kNo, kLeft, kSupported };

// The kind of a triangle: its body, how it hangs, the colour of its surface.
std::uint64_t KindOf(std::int32_t body, Hanging hanging, std::uint32_t color) {
    return static_cast<std::uint64_t>(body) << 32 | static_cast<std::uint64_t>(hanging) << 24 |
           (color & 0xFFFFFFU);
}

struct Outline {
    BodyLabels labels;
    std::vector<PointPair> open;
    std::vector<PointPair> sharp;
};

Point3 UnitNormal(Part const& part, std::size_t triangle) {
    Triangle const& t = part.Triangles()[triangle];
    auto const point = [&](std::size_t k) { return part.Points()[static_cast<std::size_t>(t[k])]; };
    Point3 const normal = Cross(point(1) - point(0), point(2) - point(0));
    double const length = Length(normal);
    return length > 0.0 ? 1.0 / length * normal : Point3{};
}

void FindSharp(Part const& part, EdgeTable const& edges, Outline& outline) {
    std::vector<Point3> normals(part.Triangles().size());
    for (std::size_t i = 0; i < normals.size(); ++i) normals[i] = UnitNormal(part, i);
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        auto const edge = static_cast<std::int32_t>(i);
        std::int32_t const across = edges.across[i];
        if (across < edge) continue;
        if (Dot(normals[i / 3], normals[static_cast<std::size_t>(across / 3)]) >= kSharp) continue;
        outline.sharp.push_back({StartOf(part.Triangles(), edge), EndOf(part.Triangles(), edge)});
        if (outline.sharp.size() <= kMostSharp) continue;
        outline.sharp.clear();
        return;
    }
}

Outline FindOutline(Part const& part, Pace const& pace) {
    EdgeTable edges = FindEdges(part.Triangles(), part.Points().size(), pace);
    if (!edges.crowd.empty()) {
        FlatMesh mesh;
        mesh.points.assign(part.Points().begin(), part.Points().end());
        mesh.triangles.assign(part.Triangles().begin(), part.Triangles().end());
        PairByAngle(mesh, edges);
    }
    Outline outline;
    outline.labels = LabelBodies(part.Triangles().size(), edges);
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0) continue;
        auto const edge = static_cast<std::int32_t>(i);
        outline.open.push_back({StartOf(part.Triangles(), edge), EndOf(part.Triangles(), edge)});
    }
    FindSharp(part, edges, outline);
    return outline;
}

std::vector<std::uint64_t> KindsOf(Part const& part, PagePart const& about, BodyLabels const& labels) {
    std::vector<Hanging> hanging(part.Triangles().size(), Hanging::kNo);
    if (about.supports != nullptr) {
        for (Overhang const& overhang : about.supports->Overhangs()) {
            for (std::int32_t const triangle : overhang.triangles) {
                auto const i = static_cast<std::size_t>(triangle);
                if (triangle >= 0 && i < hanging.size())
                    hanging[i] = overhang.supported ? Hanging::kSupported : Hanging::kLeft;
            }
        }
    }
    std::vector<std::uint64_t> kinds(part.Triangles().size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        std::uint32_t color = kPlain;
        if (about.surfaces != nullptr) {
            std::int32_t const surface = about.surfaces->ofTriangle[i];
            if (surface >= 0) color = about.surfaces->all.at(static_cast<std::size_t>(surface)).color;
        }
        kinds[i] = KindOf(std::min(labels.ofFacet[i], kMostBodies), hanging[i], color);
    }
    return kinds;
}

void AddBox(Json& json, Box3 const& box) {
    json.Name("box").Open('[');
    for (double const value : {box.min.x, box.min.y, box.min.z, box.max.x, box.max.y, box.max.z})
        json.Exact(value);
    json.Close(']');
}

void AddBodies(Json& json, Part const& part) {
    json.Name("bodies").Open('[');
    std::size_t shown = 0;
    for (Body const& body : part.Bodies()) {
        if (shown++ == static_cast<std::size_t>(kMostBodies)) break;
        MeshMeasures const& measures = body.Measures();
        json.Open('[').Whole(static_cast<std::int64_t>(body.Triangles().size()));
        json.Number(measures.volume).Whole(measures.openEdges);
        json.Whole(body.IsCavity() ? 1 : body.IsInsideOut() ? 2 : 0).Close(']');
    }
    json.Close(']').Name("bodyCount").Whole(static_cast<std::int64_t>(part.Bodies().size()));
}

void AddRuns(Json& json, PackedMesh const& mesh) {
    json.Name("runs").Open('[');
    for (PackedMesh::Run const& run : mesh.runs) {
        json.Whole(static_cast<std::int64_t>(run.kind >> 32))
            .Whole(static_cast<std::int64_t>(run.kind >> 24 & 0xFF));
        json.Whole(static_cast<std::int64_t>(run.kind & 0xFFFFFF))
            .Whole(static_cast<std::int64_t>(run.triangles));
    }
    json.Close(']');
}

PackedMesh PackSolids(Supports const& supports) {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    for (SupportSolid const& solid : supports.Solids()) {
        auto const first = static_cast<std::int32_t>(points.size());
        points.insert(points.end(), solid.points.begin(), solid.points.end());
        for (Triangle const& t : solid.triangles)
            triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
    }
    return PackMesh(points, triangles, {}, {}, {});
}

// How many points each chain has, then their coordinates as floats; the number of chains in front.
std::string PackHangingEdges(Supports const& supports) {
    std::string bytes;
    AddWord(bytes, static_cast<std::uint32_t>(supports.Edges().size()));
    for (HangingEdge const& edge : supports.Edges())
        AddWord(bytes, static_cast<std::uint32_t>(edge.points.size()));
    for (HangingEdge const& edge : supports.Edges()) {
        for (Point3 const& p : edge.points) {
            for (double const value : {p.x, p.y, p.z})
                AddWord(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
        }
    }
    return bytes;
}

void AddSupports(Json& json, Supports const& supports, std::size_t nextChunk,
                 std::vector<std::string>& chunks) {
    std::int64_t supported = 0;
    for (Overhang const& overhang : supports.Overhangs()) supported += overhang.supported ? 1 : 0;
    json.Name("supports").Open('{');
    json.Name("regions").Whole(static_cast<std::int64_t>(supports.Overhangs().size()));
    json.Name("supported").Whole(supported);
    json.Name("edges").Whole(static_cast<std::int64_t>(supports.Edges().size()));
    json.Name("solids").Whole(static_cast<std::int64_t>(supports.Solids().size()));
    if (!supports.Edges().empty()) {
        json.Name("edgesChunk").Whole(static_cast<std::int64_t>(nextChunk++));
        chunks.push_back(Deflated(PackHangingEdges(supports)));
    }
    if (!supports.Solids().empty()) {
        PackedMesh const solids = PackSolids(supports);
        AddBox(json, solids.box);
        json.Name("chunk").Whole(static_cast<std::int64_t>(nextChunk));
        chunks.push_back(Deflated(solids.bytes));
    }
    json.Close('}');
}

}  // namespace

PackedPart PackPart(Part const& part, PagePart const& about, std::size_t firstChunk,
                    Progress const& progress) {
    Watch watch(progress);
    Pace const pace(watch);
    Outline const outline = FindOutline(part, pace.Between(0.0, 0.3));
    std::vector<std::uint64_t> const kinds = KindsOf(part, about, outline.labels);
    PackedMesh const mesh = PackMesh(part.Points(), part.Triangles(), kinds, outline.open, outline.sharp);
    pace.At(0.6);
    PackedPart packed;
    packed.chunks.push_back(Deflated(mesh.bytes));
    pace.At(0.9);
    Json json;
    json.Open('{').Name("name").Text(about.name.empty() ? part.Name() : about.name);
    json.Name("header").Text(part.Header()).Name("format").Text(NameOf(part.Format()));
    AddBox(json, mesh.box);
    json.Name("facets").Whole(static_cast<std::int64_t>(part.Triangles().size()));
    json.Name("points").Whole(static_cast<std::int64_t>(part.Points().size()));
    json.Name("area").Number(part.Measures().area).Name("volume").Number(part.Measures().volume);
    json.Name("open").Whole(part.Measures().openEdges);
    json.Name("surfaces")
        .Whole(about.surfaces == nullptr ? 0 : static_cast<std::int64_t>(about.surfaces->all.size()));
    json.Name("chunk").Whole(static_cast<std::int64_t>(firstChunk));
    AddRuns(json, mesh);
    AddBodies(json, part);
    if (about.supports != nullptr) AddSupports(json, *about.supports, firstChunk + 1, packed.chunks);
    packed.about = json.Close('}').Document();
    pace.At(1.0);
    return packed;
}

}  // namespace varnet
