// The face: what a part holds, and its bodies.

#include "varnet/Part.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "part/Bodies.h"
#include "part/Classic.h"
#include "part/Intake.h"
#include "part/MeshReaders.h"
#include "part/PartState.h"

namespace varnet {

char const* NameOf(MeshFormat format) {
    constexpr std::array<char const*, 7> kNames = {"ASCII STL", "binary STL",    "OLTP",           "3DMF",
                                                   "plain CSM", "CSM in strips", "CSM ring stream"};
    return kNames.at(static_cast<std::size_t>(format));
}

namespace {

std::unique_ptr<CSTLModel> ModelOf(std::span<Point3 const> points, std::span<Triangle const> triangles,
                                   std::int64_t* refused) {
    ClassicMesh mesh = MakeClassic(points, triangles);
    if (refused != nullptr) *refused = static_cast<std::int64_t>(triangles.size() - mesh.triangles.size());
    return std::move(mesh.model);
}

}  // namespace

Body::Body() = default;
Body::Body(Body&& other) noexcept = default;
Body& Body::operator=(Body&& other) noexcept = default;
Body::~Body() = default;

std::unique_ptr<CSTLModel> Body::Model(std::int64_t* refused) const {
    return ModelOf(m_Points, m_Triangles, refused);
}

namespace {

void CheckSettings(IntakeSettings const& settings) {
    if (settings.weld && !(*settings.weld >= 0.0 && *settings.weld <= kFarthestCoordinate)) {
        throw Error(ErrorKind::kArgument, "the weld tolerance is a length from 0 to 1e10 mm");
    }
    if (!(settings.scale > 0.0 && settings.scale <= kFarthestCoordinate)) {
        throw Error(ErrorKind::kArgument, "the scale is a number above 0, and no more than 1e10");
    }
}

std::string NameOfFile(std::filesystem::path const& path) {
    std::u8string const name = path.stem().u8string();
    return {name.begin(), name.end()};
}

}  // namespace

Part::Part() : m_State(std::make_shared<State>()) {}
Part::Part(std::shared_ptr<State const> state) : m_State(std::move(state)) {}

Part Part::Read(std::filesystem::path const& path, IntakeSettings const& settings) {
    CheckSettings(settings);
    auto state = std::make_shared<State>();
    Watch watch(settings.progress);
    Pace const pace(watch);
    RawMesh raw = ReadMeshFile(path, settings, state->report, pace.Between(0.0, 0.6));
    state->name = NameOfFile(path);
    TakeIn(std::move(raw), settings, *state, pace.Between(0.6, 1.0));
    if (state->mesh.triangles.empty()) throw Error(ErrorKind::kContent, path, kNoFacetToUse);
    return Part(std::move(state));
}

Part::Part(std::span<Point3 const> points, std::span<Triangle const> triangles,
           IntakeSettings const& settings) {
    CheckSettings(settings);
    auto state = std::make_shared<State>();
    Watch watch(settings.progress);
    Pace const pace(watch);
    RawMesh raw = ReadArrays(points, triangles, settings, state->report, pace.Between(0.0, 0.6));
    TakeIn(std::move(raw), settings, *state, pace.Between(0.6, 1.0));
    m_State = std::move(state);
}

Part::Part(CSTLModel const& model, IntakeSettings const& settings) {
    FlatMesh const mesh = Flatten(model);
    *this = Part(mesh.points, mesh.triangles, settings);
}

std::string const& Part::Name() const { return m_State->name; }
std::string const& Part::Header() const { return m_State->header; }
MeshFormat Part::Format() const { return m_State->format; }
std::span<Point3 const> Part::Points() const { return m_State->mesh.points; }
std::span<Triangle const> Part::Triangles() const { return m_State->mesh.triangles; }
IntakeReport const& Part::Report() const { return m_State->report; }
MeshMeasures const& Part::Measures() const { return m_State->measures; }

std::span<Body const> Part::Bodies() const {
    std::call_once(m_State->bodiesOnce, [this] { m_State->bodies = MakeBodies(*m_State); });
    return m_State->bodies;
}

Part const& Part::AsSliced() const {
    Bodies();
    if (!m_State->contradicts) return *this;
    std::call_once(m_State->asSlicedOnce, [this] {
        auto turned = std::make_unique<Part>(*this);
        if (turned->Repair().turned > 0) m_State->asSliced = std::move(turned);
    });
    return m_State->asSliced != nullptr ? *m_State->asSliced : *this;
}

std::unique_ptr<CSTLModel> Part::Model(std::int64_t* refused) const {
    return ModelOf(Points(), Triangles(), refused);
}

// Facets of each body, and its points in the order in which they come.
std::vector<Body> Part::MakeBodies(State const& state) {
    FlatMesh const& mesh = state.mesh;
    EdgeTable edges = std::move(state.edges);
    state.edges = EdgeTable();
    if (edges.across.empty()) edges = FindEdges(mesh.triangles, mesh.points.size(), Pace::None());
    PairByAngle(mesh, edges);
    state.contradicts = !edges.twins.empty();
    BodyLabels const labels = LabelBodies(mesh.triangles.size(), edges);
    std::vector<Body> bodies;
    bodies.reserve(static_cast<std::size_t>(labels.count));
    for (std::int32_t i = 0; i < labels.count; ++i) bodies.push_back(Body());
    std::vector<std::vector<std::int32_t>> open(bodies.size());
    std::vector<std::int32_t> counts(bodies.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        auto const label = static_cast<std::size_t>(labels.ofFacet[i]);
        if (labels.count > 1) bodies[label].m_OwnTriangles.push_back(mesh.triangles[i]);
        std::int32_t const first = 3 * counts[label]++;
        for (std::int32_t k = 0; k < 3; ++k) {
            if (edges.across[3 * i + static_cast<std::size_t>(k)] < 0) open[label].push_back(first + k);
        }
    }
    std::vector<std::int32_t> numbers(labels.count > 1 ? mesh.points.size() : 0, -1);
    std::vector<Shell> shells;
    for (std::size_t n = 0; n < bodies.size(); ++n) {
        Body& body = bodies[n];
        body.m_Points = mesh.points;
        body.m_Triangles = mesh.triangles;
        if (labels.count > 1) {
            std::vector<std::int32_t> used;
            for (Triangle& triangle : body.m_OwnTriangles) {
                for (std::int32_t& corner : triangle) {
                    std::int32_t& number = numbers[static_cast<std::size_t>(corner)];
                    if (number < 0) {
                        number = static_cast<std::int32_t>(used.size());
                        used.push_back(corner);
                        body.m_OwnPoints.push_back(mesh.points[static_cast<std::size_t>(corner)]);
                    }
                    corner = number;
                }
            }
            for (std::int32_t const corner : used) numbers[static_cast<std::size_t>(corner)] = -1;
            body.m_Points = body.m_OwnPoints;
            body.m_Triangles = body.m_OwnTriangles;
        }
        auto const openEdges = static_cast<std::int64_t>(open[n].size());
        body.m_Measures =
            labels.count == 1 ? state.measures : Measure(body.m_Points, body.m_Triangles, openEdges);
        double const closed = openEdges > 0 ? ClosedVolume(body.m_Points, body.m_Triangles, open[n])
                                            : SureVolume(body.m_Measures);
        shells.push_back({body.m_Points, body.m_Triangles, closed, openEdges > 0});
    }
    Facing const facing = JudgeFacing(shells);
    for (std::size_t i = 0; i < bodies.size(); ++i) {
        if (facing.enclosing[i] >= 0) bodies[i].m_Enclosing = static_cast<std::size_t>(facing.enclosing[i]);
        bodies[i].m_IsInsideOut = facing.isWrong[i];
    }
    return bodies;
}

}  // namespace varnet
