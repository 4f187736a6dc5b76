#include "part/Turning.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "part/Bodies.h"

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

std::vector<bool> CrowdedEdges(EdgeTable const& edges) {
    std::vector<bool> isCrowded(edges.across.size());
    for (std::int32_t const edge : edges.crowd) isCrowded[static_cast<std::size_t>(edge)] = true;
    return isCrowded;
}

// How facets face each other that hang together. At an edge of many facets, shells may touch, and one that is
// turned there may have been paired with one of another shell: such edges say nothing.
Sides FindSides(FlatMesh const& mesh, EdgeTable const& edges, std::vector<bool> const& isCrowded,
                Pace const& pace) {
    Sides sides(mesh.triangles.size());
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        pace.Step(i, edges.across.size());
        if (edges.across[i] > static_cast<std::int32_t>(i) && !isCrowded[i]) {
            sides.Join(static_cast<std::int32_t>(i / 3), edges.across[i] / 3, false);
        }
    }
    // Those of two facets come first in the list, then what is left of the crowds.
    for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2) {
        if (!isCrowded[static_cast<std::size_t>(edges.twins[i])])
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

// The facets of the smaller side of each shell that contradicts itself.
std::vector<bool> SmallerSides(FlatMesh const& mesh, Sides& sides) {
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
    std::vector<bool> turns(mesh.triangles.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Sides::Place const place = sides.Find(static_cast<std::int32_t>(i));
        turns[i] = weights[static_cast<std::size_t>(place.root)].FirstLoses() != place.odd;
    }
    return turns;
}

std::int64_t Turn(FlatMesh& mesh, std::vector<bool> const& turns) {
    std::int64_t turned = 0;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        if (!turns[i]) continue;
        std::swap(mesh.triangles[i][1], mesh.triangles[i][2]);
        ++turned;
    }
    return turned;
}

// Turns the smaller side of each shell that contradicts itself, looked at without the edges of many facets.
// Where that would part more than twice as many facets that agree as it brings together, all stay as they
// are: the shell is one by its edges of many. A few of those may be paired wrongly for a facet that is
// turned.
std::int64_t TurnSides(FlatMesh& mesh, EdgeTable const& edges, Pace const& pace) {
    constexpr int kGain = 2;
    Sides sides = FindSides(mesh, edges, CrowdedEdges(edges), pace);
    std::vector<bool> turns = SmallerSides(mesh, sides);
    auto const shellOf = [&sides](std::size_t facet) {
        return static_cast<std::size_t>(sides.Find(static_cast<std::int32_t>(facet)).root);
    };
    std::vector<std::int64_t> gains(mesh.triangles.size());
    auto const count = [&](std::int32_t edge, std::int32_t other, int gain) {
        auto const a = static_cast<std::size_t>(edge / 3);
        auto const b = static_cast<std::size_t>(other / 3);
        if (turns[a] != turns[b]) gains[shellOf(turns[a] ? a : b)] += gain;
    };
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        auto const edge = static_cast<std::int32_t>(i);
        if (edges.across[i] > edge) count(edge, edges.across[i], -1);
    }
    for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2)
        count(edges.twins[i], edges.twins[i + 1], kGain);
    for (std::size_t i = 0; i < turns.size(); ++i) turns[i] = turns[i] && gains[shellOf(i)] >= 0;
    return Turn(mesh, turns);
}

// Patches of facets that hang together at edges of two, and agree. At the other edges, the disputed ones,
// facets of several patches meet: at each as many are to run one way as the other.
class Patches {
public:
    Patches(FlatMesh const& mesh, EdgeTable const& edges, Pace const& pace)
        : m_Sides(FindAgreeing(mesh, edges, pace)), m_Size(mesh.triangles.size()) {
        for (std::size_t i = 0; i < mesh.triangles.size(); ++i)
            ++m_Size[Index(PatchOf(static_cast<std::int32_t>(i)))];
        for (std::size_t g = 0; g + 1 < edges.groups.size(); ++g) {
            AddDisputed(mesh,
                        {edges.crowd.begin() + edges.groups[g], edges.crowd.begin() + edges.groups[g + 1]});
        }
        std::vector<bool> const isCrowded = CrowdedEdges(edges);
        for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2) {
            if (!isCrowded[Index(edges.twins[i])])
                AddDisputed(mesh, {edges.twins.begin() + static_cast<std::ptrdiff_t>(i),
                                   edges.twins.begin() + static_cast<std::ptrdiff_t>(i + 2)});
        }
        std::sort(m_Contacts.begin(), m_Contacts.end(), [](Contact const& a, Contact const& b) {
            return std::pair(a.patch, a.edge) < std::pair(b.patch, b.edge);
        });
    }

    // Turns patches by which more edges agree, the smallest first, and only those of no more facets than
    // edges that are closed. Returns the facets of what is turned.
    std::vector<bool> TurnSmall() {
        std::vector<Range> ranges = Ranges();
        std::stable_sort(ranges.begin(), ranges.end(),
                         [this](Range const& a, Range const& b) { return SizeOf(a) < SizeOf(b); });
        std::vector<bool> turned(m_Size.size());
        bool again = true;
        for (int round = 0; again && round < kRounds; ++round) {
            again = false;
            for (Range const& range : ranges) {
                if (GainOf(range) < SizeOf(range)) continue;
                Turn(range);
                turned[Index(m_Contacts[range.first].patch)].flip();
                again = true;
            }
        }
        std::vector<bool> turns(m_Size.size());
        for (std::size_t i = 0; i < turns.size(); ++i)
            turns[i] = turned[Index(PatchOf(static_cast<std::int32_t>(i)))];
        return turns;
    }

private:
    struct Contact {
        std::int32_t patch;
        std::int32_t edge;  // a place in m_Balance
        int way;            // 1 up, -1 down
    };
    // Of a patch, in m_Contacts.
    struct Range {
        std::size_t first;
        std::size_t end;
    };

    static std::size_t Index(std::int32_t i) { return static_cast<std::size_t>(i); }
    std::int32_t PatchOf(std::int32_t facet) { return m_Sides.Find(facet).root; }
    std::int64_t SizeOf(Range const& range) const { return m_Size[Index(m_Contacts[range.first].patch)]; }

    static Sides FindAgreeing(FlatMesh const& mesh, EdgeTable const& edges, Pace const& pace) {
        std::vector<bool> const isCrowded = CrowdedEdges(edges);
        Sides sides(mesh.triangles.size());
        for (std::size_t i = 0; i < edges.across.size(); ++i) {
            pace.Step(i, edges.across.size());
            if (edges.across[i] > static_cast<std::int32_t>(i) && !isCrowded[i])
                sides.Join(static_cast<std::int32_t>(i / 3), edges.across[i] / 3, false);
        }
        return sides;
    }

    void AddDisputed(FlatMesh const& mesh, std::vector<std::int32_t> const& around) {
        auto const number = static_cast<std::int32_t>(m_Balance.size());
        m_Balance.push_back(0);
        for (std::int32_t const edge : around) {
            int const way = StartOf(mesh.triangles, edge) < EndOf(mesh.triangles, edge) ? 1 : -1;
            m_Contacts.push_back({PatchOf(edge / 3), number, way});
            m_Balance.back() += way;
        }
    }

    std::vector<Range> Ranges() const {
        std::vector<Range> ranges;
        for (std::size_t i = 0; i < m_Contacts.size();) {
            Range range{i, i};
            while (range.end < m_Contacts.size() && m_Contacts[range.end].patch == m_Contacts[i].patch)
                ++range.end;
            ranges.push_back(range);
            i = range.end;
        }
        return ranges;
    }

    // How many more edges would be closed than opened.
    std::int64_t GainOf(Range const& range) const {
        std::int64_t gain = 0;
        for (std::size_t i = range.first; i < range.end;) {
            int const balance = m_Balance[Index(m_Contacts[i].edge)];
            int own = 0;
            for (std::int32_t const edge = m_Contacts[i].edge; i < range.end && m_Contacts[i].edge == edge;
                 ++i)
                own += m_Contacts[i].way;
            gain += std::abs(balance) - std::abs(balance - 2 * own);
        }
        return gain;
    }

    void Turn(Range const& range) {
        for (std::size_t i = range.first; i < range.end; ++i) {
            m_Balance[Index(m_Contacts[i].edge)] -= 2 * m_Contacts[i].way;
            m_Contacts[i].way = -m_Contacts[i].way;
        }
    }

    Sides m_Sides;
    std::vector<std::int64_t> m_Size;  // by root
    std::vector<Contact> m_Contacts;
    std::vector<int> m_Balance;
};

}  // namespace

EdgeTable FindPairedEdges(FlatMesh const& mesh, Pace const& pace) {
    EdgeTable edges = FindEdges(mesh.triangles, mesh.points.size(), pace);
    PairByAngle(mesh, edges);
    return edges;
}

std::int64_t TurnContradictions(FlatMesh& mesh, EdgeTable& edges, Pace const& pace) {
    std::int64_t all = 0;
    bool again = true;
    for (int round = 0; again && round < kRounds && !edges.twins.empty(); ++round) {
        again = false;
        for (bool const bySides : {true, false}) {
            double const done = (round + (bySides ? 0.0 : 0.5)) / kRounds;
            Pace const part = pace.Between(done, done + 0.5 / kRounds);
            FlatMesh changed = mesh;
            std::int64_t const turned = bySides ? TurnSides(changed, edges, part)
                                                : Turn(changed, Patches(changed, edges, part).TurnSmall());
            if (turned == 0) continue;
            EdgeTable table = FindPairedEdges(changed, part.Between(1.0, 1.0));
            if (table.open >= edges.open) continue;
            mesh = std::move(changed);
            edges = std::move(table);
            all += turned;
            again = true;
            break;
        }
    }
    return all;
}

}  // namespace varnet
