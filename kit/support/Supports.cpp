#include "varnet/Supports.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "part/Classic.h"
#include "part/Pace.h"
#include "support/ClassicFacets.h"

namespace varnet {

namespace {

constexpr int kKeels = -1;

// A region that is nowhere higher than this above the lowest point of the part rests on the plate, in
// millimetres.
constexpr double kOnPlate = 0.001;

void RequireRange(double value, double low, double high, char const* what) {
    if (value >= low && value <= high) return;
    throw Error(ErrorKind::kArgument, std::string(what) + " must be from " +
                                          std::to_string(static_cast<int>(low)) + " to " +
                                          std::to_string(static_cast<int>(high)));
}

void RequireLength(double value, char const* what) {
    if (value >= 0.0 && std::isfinite(value)) return;
    throw Error(ErrorKind::kArgument, std::string(what) + " must be 0 or more");
}

void Check(SupportSettings const& settings) {
    RequireRange(settings.angle, 0.0, 90.0, "the angle");
    RequireRange(settings.edgesUp, 0.0, 90.0, "the angle of facets above an edge");
    RequireRange(settings.edgesDown, 0.0, 90.0, "the angle of facets below an edge");
    RequireLength(settings.minArea, "the least area");
    RequireLength(settings.down, "the height of solids");
    RequireLength(settings.edgeLength, "the length of edges");
    RequireLength(settings.stroke, "the width of a stroke");
}

Box3 BoxOf(CBoundBox3D const& box) {
    return {{box.m_ptMin.x, box.m_ptMin.y, box.m_ptMin.z}, {box.m_ptMax.x, box.m_ptMax.y, box.m_ptMax.z}};
}

void Judge(CFeatureSurface& surface, double lowest, Overhang& overhang) {
    overhang.supported = false;
    if (surface.m_BoundBox.m_ptMax.z - lowest <= kOnPlate) {
        overhang.why = "rests on the plate";
    } else if ((surface.m_nSupportFlag & FS_NEEDS_SUPPORT) == 0) {
        overhang.why = "below the least area and held by a wall";
    } else {
        bool const small = (surface.m_nSurfaceFlag & FS_SMALL_SUSPENDED) != 0;
        overhang.why = small ? "below the least area, but hangs free" : "faces down";
        overhang.supported = true;
    }
}

Overhang OverhangOf(CFeatureSurface& surface, double lowest, ClassicFacets const& facets) {
    Overhang overhang;
    overhang.triangles.reserve(static_cast<std::size_t>(surface.m_aFacet.GetSize()));
    for (int i = 0; i < surface.m_aFacet.GetSize(); ++i) {
        overhang.triangles.push_back(facets.TriangleOf(surface.m_aFacet[i]));
    }
    overhang.area = surface.Area();
    overhang.projectedArea = surface.ProjectArea();
    overhang.box = BoxOf(surface.m_BoundBox);
    Judge(surface, lowest, overhang);
    return overhang;
}

HangingEdge EdgeOf(CFeatureEdge& chain) {
    HangingEdge edge;
    for (XR__POSITION* at = chain.m_VertexList.GetHeadPosition(); at != nullptr;) {
        tagVertexNode const* const vertex = chain.m_VertexList.GetNext(at);
        edge.points.push_back({vertex->x, vertex->y, vertex->z});
    }
    edge.length = chain.GetLength(0);
    edge.lowest = chain.GetMinZ(0);
    return edge;
}

// What is sliced is what is held: facets that contradict their shell face down as they would if they were
// turned. Where some were left out as well, numbers of facets would be others.
Part const& WithNumbersOf(Part const& part) {
    Part const& sliced = part.AsSliced();
    return sliced.Triangles().size() == part.Triangles().size() ? sliced : part;
}

// Takes the solids that the generators have made, which stand for the wanted ones of something in order.
void TakeSolids(CSTLModel& model, std::function<bool(std::size_t)> const& isWanted,
                std::vector<SupportSolid>& solids) {
    for (std::size_t i = 0; model.m_SupportModelList.IsEmpty() == 0; ++i) {
        std::unique_ptr<CSTLModel> const made(static_cast<CSTLModel*>(model.m_SupportModelList.RemoveHead()));
        if (!isWanted(i)) continue;
        SupportSolid solid = FlattenSolid(*made);
        if (!solid.triangles.empty()) solids.push_back(std::move(solid));
    }
}

}  // namespace

Supports::Supports(Part const& part, SupportSettings const& settings) {
    Check(settings);
    if (part.Triangles().empty()) return;
    ClassicFacets facets(WithNumbersOf(part));
    CSTLModel& model = facets.Model();
    Watch watch(settings.progress);
    watch.Tell(0.2);
    model.FindSupportSurface(settings.angle, settings.connectByVertex ? 0 : 1);
    watch.Tell(0.4);
    model.FilterUnSuspendSupport(settings.minArea);
    model.FindSuspendEdge(kKeels, settings.edgesUp, settings.edgesDown, settings.edgeLength);
    watch.Tell(0.6);
    double const lowest = model.m_VertexTree.m_BoundBox.m_ptMin.z;
    auto const& surfaces = model.m_SupportArray.m_aSurface;
    for (int i = 0; i < surfaces.GetSize(); ++i) {
        m_Overhangs.push_back(OverhangOf(*surfaces[i], lowest, facets));
        Overhang const& overhang = m_Overhangs.back();
        if (!overhang.supported) surfaces[i]->m_nSupportFlag &= ~FS_NEEDS_SUPPORT;
        if (overhang.supported && overhang.projectedArea < settings.stroke * settings.stroke)
            ++m_SmallRegions;
    }
    auto& chains = model.m_SuspendEdgeArray;
    std::vector<bool> chosen;
    for (int i = 0; i < chains.GetSize(); ++i) {
        // A keel that lies on the plate needs nothing below it.
        if (chains[i]->GetMinZ(0) - lowest <= kOnPlate) chains[i]->m_nEdgeFlag &= ~FE_SELECTED;
        chosen.push_back((chains[i]->m_nEdgeFlag & FE_SELECTED) != 0);
        if (chosen.back()) m_Edges.push_back(EdgeOf(*chains[i]));
    }
    // Down to the plate the generators make solids of all regions and chains: those that are not wanted are
    // left out.
    bool const all = settings.down <= 0.0;
    model.GenSupportSTL(settings.down);
    TakeSolids(
        model, [&](std::size_t i) { return !all || m_Overhangs[i].supported; }, m_Solids);
    watch.Tell(0.8);
    model.GenSuspendSTL(settings.down);
    TakeSolids(
        model, [&](std::size_t i) { return !all || chosen[i]; }, m_Solids);
    watch.Tell(1.0);
}

void Supports::Write(std::filesystem::path const& path, MeshFormat format) const {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    for (SupportSolid const& solid : m_Solids) {
        auto const first = static_cast<std::int32_t>(points.size());
        points.insert(points.end(), solid.points.begin(), solid.points.end());
        for (Triangle const& t : solid.triangles)
            triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
    }
    IntakeSettings asItIs;
    asItIs.heal = false;
    Part(points, triangles, asItIs).Write(path, format);
}

std::vector<SlicerInput> SlicerInputs(std::span<Part const> parts, std::span<Supports const> supports) {
    std::vector<SlicerInput> inputs;
    for (Part const& asGiven : parts) {
        Part const& part = asGiven.AsSliced();
        std::span<Body const> const bodies = part.Bodies();
        // Facets of an open body that lie on those of another would be taken for one wall of no thickness.
        bool const apart = std::any_of(bodies.begin(), bodies.end(), [&bodies](Body const& body) {
            return body.IsInsideOut() || (bodies.size() > 1 && body.Measures().openEdges > 0);
        });
        if (!apart) {
            inputs.push_back({part.Points(), part.Triangles(), false, false});
            continue;
        }
        for (Body const& body : bodies)
            inputs.push_back({body.Points(), body.Triangles(), body.IsInsideOut(), false});
    }
    for (Supports const& holding : supports) {
        for (SupportSolid const& solid : holding.Solids())
            inputs.push_back({solid.points, solid.triangles, false, true});
    }
    return inputs;
}

std::vector<SlicerInput> SlicerInputs(Part const& part) { return SlicerInputs(std::span(&part, 1)); }

std::vector<SlicerInput> SlicerInputs(Part const& part, Supports const& supports) {
    return SlicerInputs(std::span(&part, 1), std::span(&supports, 1));
}

}  // namespace varnet
