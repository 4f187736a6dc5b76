// Facets that stand in the list once too often.

#include <algorithm>
#include <cstdlib>
#include <map>

#include "part/Closing.h"
#include "part/Slivers.h"

namespace varnet {

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

// The group of copies that hang together with the first one, by the edges in `at`; they are marked as seen.
std::vector<std::size_t> GroupOf(std::size_t first, FlatMesh const& mesh, std::vector<Copy> const& copies,
                                 std::map<Pair, std::vector<std::size_t>> const& at,
                                 std::vector<bool>& seen) {
    std::vector<std::size_t> group = {first};
    seen[first] = true;
    for (std::size_t i = 0; i < group.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t const other : at.at(EdgeOf(mesh.triangles[copies[group[i]].facet], k).first)) {
                if (seen[other]) continue;
                seen[other] = true;
                group.push_back(other);
            }
        }
    }
    return group;
}

// Whether edges were open on the group's rim, and none is without it; then the balances are those without it.
bool IsTooMuch(std::vector<std::size_t> const& group, FlatMesh const& mesh, std::vector<Copy> const& copies,
               std::map<Pair, std::int64_t>& balances) {
    std::map<Pair, std::int64_t> change;
    for (std::size_t const i : group) {
        for (std::size_t k = 0; k < 3; ++k) {
            auto const [pair, way] = EdgeOf(mesh.triangles[copies[i].facet], k);
            change[pair] += way;
        }
    }
    bool gains = false;
    for (auto const& [pair, way] : change) {
        if (way == 0) continue;
        if (balances[pair] != way) return false;
        gains = true;
    }
    for (auto const& [pair, way] : change) balances[pair] -= way;
    return gains;
}

// Leaves out one copy after the other: first one with an edge that is open, then one at each edge that is
// open for that, until all of their edges are closed. Where that does not come to an end, they stay.
class Peeling {
public:
    Peeling(FlatMesh const& mesh, std::vector<Copy> const& copies, std::map<Pair, std::int64_t>& balances,
            std::vector<bool>& isLeftOut)
        : m_Mesh(mesh), m_Copies(copies), m_Balances(balances), m_IsLeftOut(isLeftOut) {
        for (std::size_t i = 0; i < copies.size(); ++i) {
            for (std::size_t k = 0; k < 3; ++k) m_At[EdgeAt(i, k).first].push_back(i);
        }
    }

    void Peel() {
        // Each attempt may look at all; together they may not look at many times as much.
        std::size_t const most = 1000 + 50 * m_Copies.size();
        std::size_t looked = 0;
        for (std::size_t i = 0; i < m_Copies.size() && looked < most; ++i) {
            if (m_IsLeftOut[i] || !HasOpenEdge(i)) continue;
            m_Gone.clear();
            LeaveOut(i);
            if (!Follow()) PutBack();
            looked += m_Gone.size();
        }
    }

private:
    std::pair<Pair, int> EdgeAt(std::size_t copy, std::size_t k) const {
        return EdgeOf(m_Mesh.triangles[m_Copies[copy].facet], k);
    }
    bool HasOpenEdge(std::size_t copy) const {
        for (std::size_t k = 0; k < 3; ++k) {
            auto const [pair, way] = EdgeAt(copy, k);
            if (m_Balances[pair] * way > 0) return true;
        }
        return false;
    }
    void LeaveOut(std::size_t copy) {
        m_IsLeftOut[copy] = true;
        m_Gone.push_back(copy);
        for (std::size_t k = 0; k < 3; ++k) {
            auto const [pair, way] = EdgeAt(copy, k);
            m_Balances[pair] -= way;
        }
    }
    void PutBack() {
        for (std::size_t const copy : m_Gone) {
            m_IsLeftOut[copy] = false;
            for (std::size_t k = 0; k < 3; ++k) {
                auto const [pair, way] = EdgeAt(copy, k);
                m_Balances[pair] += way;
            }
        }
    }
    // Whether all edges of what is left out come to be closed.
    bool Follow() {
        for (std::size_t next = 0; next < m_Gone.size();) {
            std::size_t const gone = m_Gone[next++];
            for (std::size_t k = 0; k < 3; ++k) {
                if (!CloseAt(EdgeAt(gone, k).first)) return false;
            }
        }
        return true;
    }
    bool CloseAt(Pair const& pair) {
        for (std::int64_t open = m_Balances[pair]; open != 0; open = m_Balances[pair]) {
            std::vector<std::size_t> const& at = m_At[pair];
            auto const next = std::find_if(at.begin(), at.end(), [&](std::size_t copy) {
                return !m_IsLeftOut[copy] && WayAt(copy, pair) * open > 0;
            });
            if (next == at.end()) return false;
            LeaveOut(*next);
        }
        return true;
    }
    int WayAt(std::size_t copy, Pair const& pair) const {
        for (std::size_t k = 0; k < 3; ++k) {
            auto const [other, way] = EdgeAt(copy, k);
            if (other == pair) return way;
        }
        return 0;
    }

    FlatMesh const& m_Mesh;
    std::vector<Copy> const& m_Copies;
    std::map<Pair, std::int64_t>& m_Balances;
    std::vector<bool>& m_IsLeftOut;
    std::map<Pair, std::vector<std::size_t>> m_At;
    std::vector<std::size_t> m_Gone;
};

}  // namespace

std::int64_t LeaveOutCopies(FlatMesh& mesh, EdgeTable& edges, Pace const& pace) {
    std::vector<Copy> const copies = FindCopies(mesh, edges);
    if (copies.empty()) return 0;
    std::map<Pair, std::int64_t> balances = Balances(mesh, edges);
    std::vector<bool> seen(copies.size());
    std::vector<bool> isLeftOut(copies.size());
    for (std::size_t begin = 0; begin < copies.size();) {
        // Second copies hang together among themselves, third ones too.
        std::map<Pair, std::vector<std::size_t>> at;
        std::size_t end = begin;
        for (; end < copies.size() && copies[end].rank == copies[begin].rank; ++end) {
            for (std::size_t k = 0; k < 3; ++k)
                at[EdgeOf(mesh.triangles[copies[end].facet], k).first].push_back(end);
        }
        for (std::size_t i = begin; i < end; ++i) {
            if (seen[i]) continue;
            std::vector<std::size_t> const group = GroupOf(i, mesh, copies, at, seen);
            if (!IsTooMuch(group, mesh, copies, balances)) continue;
            for (std::size_t const member : group) isLeftOut[member] = true;
        }
        begin = end;
    }
    Peeling(mesh, copies, balances, isLeftOut).Peel();
    auto const count = std::count(isLeftOut.begin(), isLeftOut.end(), true);
    if (count == 0) return 0;
    for (std::size_t i = 0; i < copies.size(); ++i) {
        if (isLeftOut[i]) mesh.triangles[copies[i].facet] = {-1, -1, -1};
    }
    DropMarked(mesh.triangles);
    edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    return static_cast<std::int64_t>(count);
}

}  // namespace varnet
