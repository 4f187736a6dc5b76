// Turning what contradicts its own shell.

#include <algorithm>
#include <numeric>
#include <string>

#include "part/Bodies.h"
#include "part/Closing.h"
#include "part/Edges.h"
#include "part/Holes.h"
#include "part/Pace.h"
#include "part/PartState.h"
#include "part/Slivers.h"

namespace varnet {

namespace {

// Turning can let facets at an edge of many be paired that could not be before.
constexpr int kRounds = 4;

// Facets that hang together, and which of them face the other way than the first: disjoint sets with parity.
// (Tarjan, Efficiency of a good but not linear set union algorithm, 1975.)
class Sides {
public:
    explicit Sides(std::size_t facets) : m_Parent(facets), m_Odd(facets) {
        std::iota(m_Parent.begin(), m_Parent.end(), 0);
    }

    struct Place {
        std::int32_t root;
        bool odd;
    };
    Place Find(std::int32_t facet) {
        bool odd = false;
        std::int32_t root = facet;
        while (Parent(root) != root) {
            odd ^= IsOdd(root);
            root = Parent(root);
        }
        // The way up is shortened to one step.
        bool above = odd;
        for (std::int32_t at = facet; Parent(at) != root && at != root;) {
            std::int32_t const next = Parent(at);
            bool const step = IsOdd(at);
            m_Parent[static_cast<std::size_t>(at)] = root;
            m_Odd[static_cast<std::size_t>(at)] = above;
            above ^= step;
            at = next;
        }
        return {root, odd};
    }

    // The two face the same way or, where odd, opposite ways; what contradicts what is known is ignored.
    void Join(std::int32_t a, std::int32_t b, bool odd) {
        Place const p = Find(a);
        Place const q = Find(b);
        if (p.root == q.root) return;
        std::int32_t const root = std::min(p.root, q.root);
        std::int32_t const other = std::max(p.root, q.root);
        m_Parent[static_cast<std::size_t>(other)] = root;
        m_Odd[static_cast<std::size_t>(other)] = p.odd ^ q.odd ^ odd;
    }

private:
    std::int32_t Parent(std::int32_t i) const { return m_Parent[static_cast<std::size_t>(i)]; }
    bool IsOdd(std::int32_t i) const { return m_Odd[static_cast<std::size_t>(i)]; }

    std::vector<std::int32_t> m_Parent;
    std::vector<bool> m_Odd;
};

// Which edges tell how facets face each other. At an edge of many, shells may touch, and a facet that is
// turned there may have been paired with one of another shell.
enum class Joined { kAtEdgesOfTwo, kAtAll };

Sides FindSides(FlatMesh const& mesh, EdgeTable const& edges, Joined joined, Pace const& pace) {
    std::vector<bool> isLeftOut(joined == Joined::kAtAll ? 0 : edges.across.size());
    if (joined == Joined::kAtEdgesOfTwo) {
        for (std::int32_t const edge : edges.crowd) isLeftOut[static_cast<std::size_t>(edge)] = true;
    }
    auto const counts = [&](std::size_t edge) { return isLeftOut.empty() || !isLeftOut[edge]; };
    Sides sides(mesh.triangles.size());
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        pace.Step(i, edges.across.size());
        if (edges.across[i] > static_cast<std::int32_t>(i) && counts(i)) {
            sides.Join(static_cast<std::int32_t>(i / 3), edges.across[i] / 3, false);
        }
    }
    // Those of two facets come first in the list, then what is left of the crowds.
    for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2) {
        if (counts(static_cast<std::size_t>(edges.twins[i])))
            sides.Join(edges.twins[i] / 3, edges.twins[i + 1] / 3, true);
    }
    return sides;
}

struct Weight {
    std::int64_t facets[2] = {0, 0};
    double area[2] = {0.0, 0.0};

    // Whether the facets that face as the first one does are to be turned.
    bool FirstLoses() const {
        if (facets[0] != facets[1]) return facets[0] < facets[1];
        return area[0] < area[1];
    }
};

// Turns the smaller side of each shell that contradicts itself. Returns how many facets.
std::int64_t TurnContradictions(FlatMesh& mesh, EdgeTable const& edges, Joined joined, Pace const& pace) {
    Sides sides = FindSides(mesh, edges, joined, pace);
    std::vector<Weight> weights(mesh.triangles.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Sides::Place const place = sides.Find(static_cast<std::int32_t>(i));
        Triangle const& t = mesh.triangles[i];
        Point3 const& a = mesh.points[static_cast<std::size_t>(t[0])];
        Weight& weight = weights[static_cast<std::size_t>(place.root)];
        ++weight.facets[place.odd];
        weight.area[place.odd] += Length(Cross(mesh.points[static_cast<std::size_t>(t[1])] - a,
                                               mesh.points[static_cast<std::size_t>(t[2])] - a));
    }
    std::int64_t turned = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Sides::Place const place = sides.Find(static_cast<std::int32_t>(i));
        if (weights[static_cast<std::size_t>(place.root)].FirstLoses() == place.odd) continue;
        std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
        ++turned;
    }
    return turned;
}

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

EdgeTable Edges(FlatMesh const& mesh, Pace const& pace) {
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    PairByAngle(mesh, edges);
    return edges;
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
    edges = Edges(mesh, pace.Between(0.9, 1.0));
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
    EdgeTable edges = Edges(mesh, pace.Between(0.0, 0.2));
    for (int round = 0; round < kRounds && !edges.twins.empty(); ++round) {
        double done = 0.2 + 0.05 * round;
        std::int64_t turned = 0;
        for (Joined const joined : {Joined::kAtEdgesOfTwo, Joined::kAtAll}) {
            FlatMesh changed = mesh;
            turned = TurnContradictions(changed, edges, joined, pace.Between(done, done + 0.025));
            done += 0.025;
            EdgeTable table = Edges(changed, pace.Between(done, done));
            if (turned > 0 && table.open < edges.open) {
                mesh = std::move(changed);
                edges = std::move(table);
                report.turned += turned;
                break;
            }
            turned = 0;
        }
        if (turned == 0) break;
    }
    if (report.turned > 0) {
        // A facet that stands there twice is told from a turned one only now, and a facet beside a vertex in
        // the middle of its edge only now runs the other way than those that it meets there.
        EdgeTable table = FindEdges(mesh.triangles, mesh.points.size(), pace.Between(0.45, 0.45));
        report.doubled = LeaveOutCopies(mesh, table, pace.Between(0.45, 0.45));
        report.split = CloseOpenEdges(mesh, table, {}, pace.Between(0.45, 0.45)).split;
        if (report.doubled + report.split > 0) edges = Edges(mesh, pace.Between(0.45, 0.45));
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
