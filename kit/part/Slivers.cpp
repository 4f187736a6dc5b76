#include "part/Slivers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <map>
#include <numeric>

namespace varnet {

namespace {

// What the coordinates of floats leave uncertain, relative to the largest of them: a few roundings.
constexpr double kRounding = 4.0 / (1 << 23);

// A corner this near to the opposite edge, relative to its length, lies on it.
constexpr double kOnLine = 1e-5;

// An edge this short, relative to the longest of its facet, is none.
constexpr double kNoLength = 1e-6;

// Each turn leaves fewer slivers, or shorter ones; a limit for what nobody has thought of.
constexpr std::size_t kTurnsPerSliver = 16;

// Each round ends with merging corners, which seldom leaves anything for another.
constexpr int kRounds = 8;

struct Measured {
    double area2;    // twice the area
    double longest;  // lengths of edges
    double shortest;
    int longestEdge;  // 0 to 2
    int shortestEdge;
    double largest;  // coordinate
};

class Turner {
public:
    Turner(FlatMesh& mesh, EdgeTable& edges) : m_Mesh(mesh), m_Edges(edges) {}

    void TurnAll(Pace const& pace) {
        std::deque<std::int32_t> waiting;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            pace.Step(i, m_Mesh.triangles.size());
            if (IsSliver(static_cast<std::int32_t>(i))) waiting.push_back(static_cast<std::int32_t>(i));
        }
        // A sliver that cannot be turned now is looked at again when a neighbour has changed.
        std::size_t const most = kTurnsPerSliver * waiting.size();
        for (std::size_t turns = 0; !waiting.empty() && turns < most;) {
            std::int32_t const facet = waiting.front();
            waiting.pop_front();
            if (IsGone(facet) || !IsSliver(facet) || !Turn(facet)) continue;
            pace.Step(++turns, most);
            for (std::int32_t const changed : m_Changed) LookAgain(changed, waiting);
        }
    }

    // Where slivers are left that have no length, joins their corners. False where there are none.
    bool MergeCorners() {
        std::vector<std::int32_t> target;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            auto const facet = static_cast<std::int32_t>(i);
            if (IsGone(facet) || !IsSliver(facet)) continue;
            Measured const m = MeasureOf(facet);
            if (m.shortest > std::max(kRounding * m.largest, kNoLength * m.longest)) continue;
            if (target.empty()) {
                target.resize(m_Mesh.points.size());
                std::iota(target.begin(), target.end(), 0);
            }
            Triangle const& t = m_Mesh.triangles[i];
            std::int32_t const a = Follow(target, t[static_cast<std::size_t>(m.shortestEdge)]);
            std::int32_t const b = Follow(target, t[static_cast<std::size_t>((m.shortestEdge + 1) % 3)]);
            target[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
        }
        if (target.empty()) return false;
        Relabel(target);
        return true;
    }

    void CountRest(SliverCounts& counts) const {
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            auto const facet = static_cast<std::int32_t>(i);
            if (IsGone(facet)) continue;
            Measured const m = MeasureOf(facet);
            if (m.area2 > kCollinear) continue;
            ++(IsLine(m) ? counts.stuck : counts.small);
        }
    }

    std::int64_t Turned() const { return m_Turned; }
    bool HasChanged() const { return m_Turned != 0; }

private:
    static bool IsLine(Measured const& m) {
        double const height = m.longest > 0.0 ? m.area2 / m.longest : 0.0;
        return height <= std::max(kOnLine * m.longest, kRounding * m.largest);
    }

    Triangle& At(std::int32_t facet) { return m_Mesh.triangles[static_cast<std::size_t>(facet)]; }
    Triangle const& At(std::int32_t facet) const { return m_Mesh.triangles[static_cast<std::size_t>(facet)]; }
    std::int32_t& Across(std::int32_t edge) { return m_Edges.across[static_cast<std::size_t>(edge)]; }
    void LookAgain(std::int32_t facet, std::deque<std::int32_t>& waiting) {
        if (facet < 0 || IsGone(facet)) return;
        if (IsSliver(facet)) waiting.push_back(facet);
        for (int k = 0; k < 3; ++k) {
            std::int32_t const across = Across(3 * facet + k);
            if (across >= 0 && !IsGone(across / 3) && IsSliver(across / 3)) waiting.push_back(across / 3);
        }
    }

    bool IsGone(std::int32_t facet) const { return At(facet)[0] < 0; }

    Measured MeasureOf(std::int32_t facet) const { return MeasureOf(At(facet)); }
    Measured MeasureOf(Triangle const& t) const {
        std::array<Point3, 3> p;
        Measured m{};
        for (std::size_t k = 0; k < 3; ++k) {
            p[k] = m_Mesh.points[static_cast<std::size_t>(t[k])];
            m.largest = std::max({m.largest, std::fabs(p[k].x), std::fabs(p[k].y), std::fabs(p[k].z)});
        }
        m.area2 = DoubledArea(p[0], p[1], p[2]);
        std::array<double, 3> const length = {Length(p[1] - p[0]), Length(p[2] - p[1]), Length(p[0] - p[2])};
        m.longestEdge = static_cast<int>(std::max_element(length.begin(), length.end()) - length.begin());
        m.shortestEdge = static_cast<int>(std::min_element(length.begin(), length.end()) - length.begin());
        m.longest = length[static_cast<std::size_t>(m.longestEdge)];
        m.shortest = length[static_cast<std::size_t>(m.shortestEdge)];
        return m;
    }
    bool IsSliver(Triangle const& t) const {
        Point3 const& a = m_Mesh.points[static_cast<std::size_t>(t[0])];
        Point3 const& b = m_Mesh.points[static_cast<std::size_t>(t[1])];
        Point3 const& c = m_Mesh.points[static_cast<std::size_t>(t[2])];
        return DoubledArea(a, b, c) <= kCollinear && IsLine(MeasureOf(t));
    }
    bool IsSliver(std::int32_t facet) const { return IsSliver(At(facet)); }

    void Link(std::int32_t a, std::int32_t b) {
        if (a >= 0) Across(a) = b;
        if (b >= 0) Across(b) = a;
    }

    void Remove(std::int32_t facet) { At(facet) = {-1, -1, -1}; }

    // Turns the longest edge, or takes the facet out where nothing more is opened by that. False where
    // neither helps.
    bool Turn(std::int32_t facet) {
        m_Changed = {-1, -1, -1, -1};
        std::int32_t const edge = 3 * facet + MeasureOf(facet).longestEdge;
        std::int32_t const neighbour = Across(edge);
        if (neighbour < 0) return DropFromRim(facet);
        if (ApexOf(m_Mesh.triangles, edge) == ApexOf(m_Mesh.triangles, neighbour)) {
            CancelPair(edge, neighbour);
            ++m_Turned;
            return true;
        }
        return Flip(edge, neighbour);
    }

    bool DropFromRim(std::int32_t facet) {
        int open = 0;
        for (int k = 0; k < 3; ++k) open += Across(3 * facet + k) < 0;
        if (open < 2) return false;
        for (int k = 0; k < 3; ++k) {
            std::int32_t const across = Across(3 * facet + k);
            if (across >= 0) m_Changed[0] = across / 3;
            Link(across, -1);
        }
        Remove(facet);
        ++m_Turned;
        return true;
    }

    // Two facets back to back: what lies across their edges meets.
    void CancelPair(std::int32_t edge, std::int32_t other) {
        std::int32_t const a = Across(NextEdge(edge));
        std::int32_t const b = Across(PreviousEdge(other));
        std::int32_t const c = Across(PreviousEdge(edge));
        std::int32_t const d = Across(NextEdge(other));
        if (a != PreviousEdge(other)) Link(a, b);
        if (c != NextEdge(other)) Link(c, d);
        auto const facet = [](std::int32_t edgeOrNone) { return edgeOrNone < 0 ? -1 : edgeOrNone / 3; };
        m_Changed = {facet(a), facet(b), facet(c), facet(d)};
        Remove(edge / 3);
        Remove(other / 3);
    }

    // The sliver a b c and its neighbour b a d become a d c and d b c.
    bool Flip(std::int32_t edge, std::int32_t other) {
        std::int32_t const sliver = edge / 3;
        std::int32_t const neighbour = other / 3;
        std::int32_t const a = StartOf(m_Mesh.triangles, edge);
        std::int32_t const b = EndOf(m_Mesh.triangles, edge);
        std::int32_t const c = ApexOf(m_Mesh.triangles, edge);
        std::int32_t const d = ApexOf(m_Mesh.triangles, other);
        Triangle const first = {a, d, c};
        Triangle const second = {d, b, c};
        if (!Helps(sliver, neighbour, first, second)) return false;

        std::int32_t const acrossAd = Across(NextEdge(other));
        std::int32_t const acrossDb = Across(PreviousEdge(other));
        std::int32_t const acrossBc = Across(NextEdge(edge));
        std::int32_t const acrossCa = Across(PreviousEdge(edge));
        bool const wasSliver = IsSliver(neighbour);
        At(sliver) = first;
        At(neighbour) = second;
        for (std::int32_t const open : {3 * sliver, 3 * sliver + 2, 3 * neighbour, 3 * neighbour + 1})
            Across(open) = -1;
        Link(3 * sliver, acrossAd);
        Link(3 * sliver + 2, acrossCa);
        Link(3 * neighbour, acrossDb);
        Link(3 * neighbour + 1, acrossBc);
        Link(3 * sliver + 1, 3 * neighbour + 2);
        int const left = IsSliver(first) + IsSliver(second);
        m_Turned += 1 + wasSliver - left;
        m_Changed = {sliver, neighbour, -1, -1};
        return true;
    }

    // Whether there are fewer slivers afterwards, or as many and the longest edges are shorter: so it ends.
    bool Helps(std::int32_t sliver, std::int32_t neighbour, Triangle const& first,
               Triangle const& second) const {
        int const before = 1 + IsSliver(neighbour);
        int const after = IsSliver(first) + IsSliver(second);
        if (after != before) return after < before;
        auto const longest = [this](Triangle const& t) { return IsSliver(t) ? MeasureOf(t).longest : 0.0; };
        constexpr double kShorter = 1.0 - 1e-9;
        return longest(first) + longest(second) < kShorter * (longest(At(sliver)) + longest(At(neighbour)));
    }

    static std::int32_t Follow(std::vector<std::int32_t>& target, std::int32_t i) {
        while (target[static_cast<std::size_t>(i)] != i) {
            std::int32_t& next = target[static_cast<std::size_t>(i)];
            next = target[static_cast<std::size_t>(next)];
            i = next;
        }
        return i;
    }

    // Corners become those that they are joined with; facets that have lost a corner go, and of the changed
    // ones those that now lie back to back.
    void Relabel(std::vector<std::int32_t>& target) {
        std::map<Triangle, std::vector<std::pair<bool, std::size_t>>> changed;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            Triangle& t = m_Mesh.triangles[i];
            if (t[0] < 0) continue;
            Triangle const before = t;
            for (std::int32_t& corner : t) corner = Follow(target, corner);
            if (t == before) continue;
            if (t[0] == t[1] || t[1] == t[2] || t[2] == t[0]) {
                t = {-1, -1, -1};
                ++m_Turned;
                continue;
            }
            Triangle key = t;
            std::sort(key.begin(), key.end());
            bool const even = IsEven(t);
            auto& same = changed[key];
            if (!same.empty() && same.back().first != even) {
                m_Mesh.triangles[same.back().second] = {-1, -1, -1};
                t = {-1, -1, -1};
                same.pop_back();
            } else {
                same.emplace_back(even, i);
            }
        }
    }
    static bool IsEven(Triangle const& t) {
        return (t[0] < t[1] && t[1] < t[2]) || (t[1] < t[2] && t[2] < t[0]) || (t[2] < t[0] && t[0] < t[1]);
    }

    FlatMesh& m_Mesh;
    EdgeTable& m_Edges;
    std::int64_t m_Turned = 0;
    std::array<std::int32_t, 4> m_Changed = {-1, -1, -1, -1};  // facets that the last turn has changed, or -1
};

}  // namespace

void DropMarked(LargeVector<Triangle>& triangles) {
    std::erase_if(triangles, [](Triangle const& t) { return t[0] < 0; });
}

SliverCounts TakeOutSlivers(FlatMesh& mesh, EdgeTable& edges, Pace const& pace) {
    SliverCounts counts;
    for (int round = 0; round < kRounds; ++round) {
        Pace const stretch = pace.Between(static_cast<double>(round) / kRounds, (round + 1.0) / kRounds);
        Turner turner(mesh, edges);
        turner.TurnAll(stretch.Between(0.0, 0.5));
        bool const merged = turner.MergeCorners();
        counts.turned += turner.Turned();
        if (turner.HasChanged() || merged) {
            DropMarked(mesh.triangles);
            edges = FindEdges(mesh.triangles, mesh.points.size(), stretch.Between(0.5, 1.0));
        }
        if (merged && round + 1 < kRounds) continue;
        turner.CountRest(counts);
        break;
    }
    return counts;
}

}  // namespace varnet
