#include "part/Closing.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "part/Rim.h"
#include "part/Slivers.h"

namespace varnet {

namespace {

// Dividing edges can lay others open to be met.
constexpr int kRounds = 4;

constexpr Triangle kDropped = {-1, -1, -1};

using Divisions = std::map<std::int32_t, std::vector<std::int32_t>>;

// The pieces of a triangle whose edges are divided at these points, without a point on two of them.
std::vector<Triangle> Pieces(std::size_t facet, Triangle const& t, Divisions const& divisions) {
    std::vector<Triangle> pieces = {t};
    for (std::int32_t k = 0; k < 3; ++k) {
        auto const found = divisions.find(static_cast<std::int32_t>(3 * facet) + k);
        if (found == divisions.end()) continue;
        std::int32_t const start = t[static_cast<std::size_t>(k)];
        std::int32_t const end = t[static_cast<std::size_t>((k + 1) % 3)];
        // The piece that has the whole edge.
        auto const whole = std::find_if(pieces.begin(), pieces.end(), [&](Triangle const& piece) {
            for (std::size_t i = 0; i < 3; ++i) {
                if (piece[i] == start && piece[(i + 1) % 3] == end) return true;
            }
            return false;
        });
        if (whole == pieces.end()) continue;
        std::size_t i = 0;
        while ((*whole)[i] != start) ++i;
        std::int32_t const apex = (*whole)[(i + 2) % 3];
        if (std::find(found->second.begin(), found->second.end(), apex) != found->second.end()) continue;
        std::vector<Triangle> fan;
        std::int32_t before = start;
        for (std::int32_t const point : found->second) {
            fan.push_back({before, point, apex});
            before = point;
        }
        fan.push_back({before, end, apex});
        auto const place = pieces.erase(whole);
        pieces.insert(place, fan.begin(), fan.end());
    }
    return pieces;
}

void Divide(std::vector<Rim::Division> const& planned, FlatMesh& mesh, ClosingCounts& counts) {
    if (planned.empty()) return;
    Divisions divisions;
    for (Rim::Division const& division : planned) divisions[division.edge] = division.points;
    LargeVector<Triangle> triangles;
    triangles.reserve(mesh.triangles.size() + divisions.size());
    auto next = divisions.begin();
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        if (next == divisions.end() || static_cast<std::size_t>(next->first / 3) != i) {
            triangles.push_back(mesh.triangles[i]);
            continue;
        }
        std::vector<Triangle> const pieces =
            mesh.triangles[i] == kDropped ? std::vector<Triangle>() : Pieces(i, mesh.triangles[i], divisions);
        if (pieces.size() > 1) ++counts.split;
        triangles.insert(triangles.end(), pieces.begin(), pieces.end());
        while (next != divisions.end() && static_cast<std::size_t>(next->first / 3) == i) ++next;
    }
    mesh.triangles = std::move(triangles);
}

void Apply(Rim::Plan const& plan, FlatMesh& mesh, ClosingCounts& counts) {
    if (!plan.joined.empty()) {
        std::vector<std::int32_t> becomes(mesh.points.size());
        for (std::size_t i = 0; i < becomes.size(); ++i) becomes[i] = static_cast<std::int32_t>(i);
        for (auto const& [point, target] : plan.joined) becomes[static_cast<std::size_t>(point)] = target;
        for (Triangle& t : mesh.triangles) {
            for (std::int32_t& corner : t) corner = becomes[static_cast<std::size_t>(corner)];
        }
        counts.welded += static_cast<std::int64_t>(plan.joined.size());
        for (Triangle& t : mesh.triangles) {
            if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) continue;
            t = kDropped;
            ++counts.dropped;
        }
    }
    Divide(plan.divisions, mesh, counts);
    if (counts.dropped > 0) DropMarked(mesh.triangles);
}

}  // namespace

ClosingCounts CloseOpenEdges(FlatMesh& mesh, EdgeTable& edges, std::span<double const> tolerances,
                             Pace const& pace) {
    ClosingCounts counts;
    Box3 box;
    for (Point3 const& p : mesh.points) box.Add(p);
    double const most = kMostOfExtent * Length(box.max - box.min);
    // Plans are made one after the other until they have looked at as much as so many that give up.
    constexpr std::size_t kPlans = 3;
    std::size_t const mostLooks = kPlans * Rim::MostLooks(static_cast<std::size_t>(edges.open));
    std::size_t looks = 0;
    for (int round = 0; round < kRounds && edges.open > 0; ++round) {
        Rim const gaps(mesh, edges, Rim::Of::kGaps, pace.Between(0.0, 0.0));
        std::int64_t const twins = edges.open - gaps.Count();
        std::int64_t fewest = edges.open;
        std::optional<Rim::Plan> best;
        double tolerance = 0.0;
        bool isDone = false;
        std::vector<double> keptSmall;
        auto const consider = [&](Rim const& rim, double with, Rim::Small small) {
            Rim::Plan plan = rim.Try(with, small, pace);
            looks += plan.looks;
            isDone |= looks > mostLooks || plan.gaveUp || plan.open + plan.vanished == 0;
            if (plan.keptSmall && with <= most) keptSmall.push_back(with);
            // That a rim loses edges closes nothing. Those that it leaves out stay open.
            plan.open += plan.vanished + edges.open - rim.Count();
            if (plan.open >= fewest) return;
            fewest = plan.open;
            best = std::move(plan);
            tolerance = with;
        };
        consider(gaps, 0.0, Rim::Small::kStay);
        // Twins are divided, but not joined with others that are near: one of them may have to be turned.
        if (twins > 0) {
            consider(Rim(mesh, edges, Rim::Of::kGapsAndCrossedTwins, pace.Between(0.0, 0.0)), 0.0,
                     Rim::Small::kStay);
        }
        for (double const with : tolerances) {
            if (!isDone) consider(gaps, with, Rim::Small::kStay);
        }
        for (double const with : std::exchange(keptSmall, {})) {
            if (!isDone) consider(gaps, with, Rim::Small::kMayGo);
        }
        if (!best) break;
        FlatMesh changed = mesh;
        ClosingCounts after = counts;
        Apply(*best, changed, after);
        EdgeTable table = FindEdges(changed.triangles, changed.points.size(), pace);
        if (table.open >= edges.open) break;
        mesh = std::move(changed);
        edges = std::move(table);
        counts = after;
        if (!best->joined.empty()) counts.tolerance = std::max(counts.tolerance, tolerance);
    }
    return counts;
}

}  // namespace varnet
