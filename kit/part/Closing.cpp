#include "part/Closing.h"

#include <algorithm>
#include <map>
#include <optional>

#include "part/Rim.h"

namespace varnet {

namespace {

// Dividing edges can lay others open to be met.
constexpr int kRounds = 4;

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

void Apply(Rim::Plan const& plan, FlatMesh& mesh, ClosingCounts& counts) {
    if (!plan.joined.empty()) {
        std::vector<std::int32_t> becomes(mesh.points.size());
        for (std::size_t i = 0; i < becomes.size(); ++i) becomes[i] = static_cast<std::int32_t>(i);
        for (auto const& [point, target] : plan.joined) becomes[static_cast<std::size_t>(point)] = target;
        for (Triangle& t : mesh.triangles) {
            for (std::int32_t& corner : t) corner = becomes[static_cast<std::size_t>(corner)];
        }
        counts.welded += static_cast<std::int64_t>(plan.joined.size());
    }
    if (plan.divisions.empty()) return;
    Divisions divisions;
    for (Rim::Division const& division : plan.divisions) divisions[division.edge] = division.points;
    std::vector<Triangle> triangles;
    triangles.reserve(mesh.triangles.size() + divisions.size());
    auto next = divisions.begin();
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        if (next == divisions.end() || static_cast<std::size_t>(next->first / 3) != i) {
            triangles.push_back(mesh.triangles[i]);
            continue;
        }
        std::vector<Triangle> const pieces = Pieces(i, mesh.triangles[i], divisions);
        if (pieces.size() > 1) ++counts.split;
        triangles.insert(triangles.end(), pieces.begin(), pieces.end());
        while (next != divisions.end() && static_cast<std::size_t>(next->first / 3) == i) ++next;
    }
    mesh.triangles = std::move(triangles);
}

}  // namespace

ClosingCounts CloseOpenEdges(FlatMesh& mesh, EdgeTable& edges, std::span<double const> tolerances,
                             Pace const& pace) {
    ClosingCounts counts;
    for (int round = 0; round < kRounds && edges.open > 0; ++round) {
        Rim const rim(mesh, edges);
        std::optional<Rim::Plan> best;
        double tolerance = 0.0;
        auto const consider = [&](double with) {
            Rim::Plan plan = rim.Try(with, pace.Between(0.0, 0.0));
            if (plan.open >= (best ? best->open : edges.open)) return;
            best = std::move(plan);
            tolerance = with;
        };
        consider(0.0);
        for (double const with : tolerances) {
            if (best && best->open == 0) break;
            consider(with);
        }
        if (!best) break;
        FlatMesh changed = mesh;
        ClosingCounts after = counts;
        Apply(*best, changed, after);
        EdgeTable table = FindEdges(changed.triangles, changed.points.size(), pace.Between(0.0, 0.0));
        if (table.open >= edges.open) break;
        mesh = std::move(changed);
        edges = std::move(table);
        counts = after;
        if (!best->joined.empty()) counts.tolerance = std::max(counts.tolerance, tolerance);
    }
    return counts;
}

namespace {

struct Copy {
    std::size_t facet;
    int rank;  // how many before it have the same corners in the same order
};

Triangle LeastFirst(Triangle t) {
    std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
    return t;
}

// Facets all of whose edges have another facet that runs the same way, and that are not the first of their
// kind.
std::vector<Copy> FindCopies(FlatMesh const& mesh, EdgeTable const& edges) {
    std::vector<std::int32_t> shared = edges.crowd;
    shared.insert(shared.end(), edges.twins.begin(), edges.twins.end());
    std::sort(shared.begin(), shared.end());
    std::vector<std::pair<Triangle, std::size_t>> facets;
    for (std::size_t i = 0; i + 2 < shared.size(); ++i) {
        if (shared[i] % 3 == 0 && shared[i + 2] == shared[i] + 2) {
            auto const facet = static_cast<std::size_t>(shared[i] / 3);
            facets.emplace_back(LeastFirst(mesh.triangles[facet]), facet);
        }
    }
    std::sort(facets.begin(), facets.end());
    std::vector<Copy> copies;
    int rank = 0;
    for (std::size_t i = 1; i < facets.size(); ++i) {
        rank = facets[i].first == facets[i - 1].first ? rank + 1 : 0;
        if (rank > 0) copies.push_back({facets[i].second, rank});
    }
    std::sort(copies.begin(), copies.end(), [](Copy const& a, Copy const& b) {
        return a.rank != b.rank ? a.rank < b.rank : a.facet < b.facet;
    });
    return copies;
}

using Pair = std::pair<std::int32_t, std::int32_t>;

// An edge of a facet, and 1 or -1 for the way it runs.
std::pair<Pair, int> EdgeOf(Triangle const& t, std::size_t k) {
    std::int32_t const a = t[k];
    std::int32_t const b = t[(k + 1) % 3];
    return a < b ? std::pair(Pair(a, b), 1) : std::pair(Pair(b, a), -1);
}

// How many more facets run up than down.
std::map<Pair, std::int64_t> Balances(FlatMesh const& mesh, EdgeTable const& edges) {
    std::map<Pair, std::int64_t> balances;
    auto const count = [&](std::int32_t edge) {
        auto const [pair, way] =
            EdgeOf(mesh.triangles[static_cast<std::size_t>(edge / 3)], static_cast<std::size_t>(edge % 3));
        balances[pair] += way;
    };
    for (std::int32_t const edge : edges.crowd) count(edge);
    for (std::int32_t const edge : edges.twins) count(edge);
    return balances;
}

}  // namespace

std::int64_t LeaveOutCopies(FlatMesh& mesh, EdgeTable& edges, Pace const& pace) {
    std::vector<Copy> const copies = FindCopies(mesh, edges);
    if (copies.empty()) return 0;
    std::map<Pair, std::int64_t> balances = Balances(mesh, edges);
    std::int64_t left = 0;
    for (std::size_t begin = 0; begin < copies.size();) {
        std::size_t end = begin;
        std::map<Pair, std::vector<std::size_t>> at;
        for (; end < copies.size() && copies[end].rank == copies[begin].rank; ++end) {
            for (std::size_t k = 0; k < 3; ++k)
                at[EdgeOf(mesh.triangles[copies[end].facet], k).first].push_back(end);
        }
        std::vector<char> seen(end - begin);
        for (std::size_t seed = begin; seed < end; ++seed) {
            if (seen[seed - begin]) continue;
            std::vector<std::size_t> group = {seed};
            seen[seed - begin] = 1;
            std::map<Pair, std::int64_t> change;
            for (std::size_t i = 0; i < group.size(); ++i) {
                for (std::size_t k = 0; k < 3; ++k) {
                    auto const [pair, way] = EdgeOf(mesh.triangles[copies[group[i]].facet], k);
                    change[pair] += way;
                    for (std::size_t const other : at[pair]) {
                        if (seen[other - begin]) continue;
                        seen[other - begin] = 1;
                        group.push_back(other);
                    }
                }
            }
            std::int64_t gain = 0;
            for (auto const& [pair, way] : change) {
                gain += std::abs(balances[pair]) - std::abs(balances[pair] - way);
            }
            if (gain <= 0) continue;
            for (auto const& [pair, way] : change) balances[pair] -= way;
            left += static_cast<std::int64_t>(group.size());
            for (std::size_t const i : group) {
                // Marked below, when no other group needs its corners.
                change.clear();
                seen[i - begin] = 2;
            }
        }
        for (std::size_t i = begin; i < end; ++i) {
            if (seen[i - begin] == 2) mesh.triangles[copies[i].facet] = {-1, -1, -1};
        }
        begin = end;
    }
    if (left == 0) return 0;
    std::erase_if(mesh.triangles, [](Triangle const& t) { return t[0] < 0; });
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    return left;
}

}  // namespace varnet
