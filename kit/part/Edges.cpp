// Edges are sorted by their lower vertex with a counting sort, those of a vertex by their other one. (Knuth,
// The Art of Computer Programming, vol. 3, 5.2, algorithm D.)

#include "part/Edges.h"

#include <algorithm>

namespace varnet {

namespace {

// An edge in the bucket of its lower vertex: the other vertex, which way it runs, its number.
using Entry = std::uint64_t;

Entry MakeEntry(std::int32_t other, bool down, std::int32_t edge) {
    return static_cast<std::uint64_t>(other) << 33 | static_cast<std::uint64_t>(down) << 32 |
           static_cast<std::uint32_t>(edge);
}
std::uint32_t OtherOf(Entry entry) { return static_cast<std::uint32_t>(entry >> 33); }
bool RunsDown(Entry entry) { return (entry >> 32 & 1) != 0; }
std::int32_t EdgeOf(Entry entry) { return static_cast<std::int32_t>(entry & 0xFFFFFFFF); }

void Sort(Entry* begin, Entry* end) {
    constexpr std::ptrdiff_t kFew = 24;
    if (end - begin > kFew) {
        std::sort(begin, end);
        return;
    }
    if (begin == end) return;
    for (Entry* p = begin + 1; p < end; ++p) {
        Entry const entry = *p;
        Entry* q = p;
        for (; q != begin && q[-1] > entry; --q) *q = q[-1];
        *q = entry;
    }
}

class Pairing {
public:
    explicit Pairing(EdgeTable& table) : m_Table(table) {}

    // All edges between two vertices: those that run up are in front.
    void Pair(std::span<Entry const> edges) {
        if (edges.size() == 2 && RunsDown(edges[0]) != RunsDown(edges[1])) {
            Join(edges[0], edges[1]);
        } else if (edges.size() == 1) {
            ++m_Table.open;
        } else {
            PairCrowd(edges);
        }
    }

private:
    void Join(Entry a, Entry b) {
        m_Table.across[static_cast<std::size_t>(EdgeOf(a))] = EdgeOf(b);
        m_Table.across[static_cast<std::size_t>(EdgeOf(b))] = EdgeOf(a);
    }

    void PairCrowd(std::span<Entry const> edges) {
        std::size_t up = 0;
        while (up < edges.size() && !RunsDown(edges[up])) ++up;
        std::size_t const down = edges.size() - up;
        std::size_t const pairs = std::min(up, down);
        for (std::size_t i = 0; i < pairs; ++i) Join(edges[i], edges[up + i]);
        m_Table.open += static_cast<std::int64_t>(edges.size() - 2 * pairs);
        if (edges.size() == 2) {
            ++m_Table.conflicts;
            for (Entry const edge : edges) m_Table.twins.push_back(EdgeOf(edge));
            return;
        }
        ++m_Table.many;
        m_Table.groups.push_back(static_cast<std::int32_t>(m_Table.crowd.size()));
        for (Entry const edge : edges) m_Table.crowd.push_back(EdgeOf(edge));
    }

    EdgeTable& m_Table;
};

}  // namespace

EdgeTable FindEdges(std::span<Triangle const> triangles, std::size_t points, Pace const& pace) {
    EdgeTable table;
    table.across.assign(3 * triangles.size(), -1);
    LargeVector<std::uint32_t> begin(points + 2, 0);
    for (Triangle const& t : triangles) {
        for (std::size_t k = 0; k < 3; ++k) {
            ++begin[static_cast<std::size_t>(std::min(t[k], t[k == 2 ? 0 : k + 1])) + 2];
        }
    }
    pace.At(0.2);
    for (std::size_t i = 2; i < begin.size(); ++i) begin[i] += begin[i - 1];

    LargeVector<Entry> entries(3 * triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        pace.Between(0.2, 0.7).Step(i, triangles.size());
        Triangle const& t = triangles[i];
        for (std::size_t k = 0; k < 3; ++k) {
            std::int32_t const a = t[k];
            std::int32_t const b = t[k == 2 ? 0 : k + 1];
            std::uint32_t& place = begin[static_cast<std::size_t>(std::min(a, b)) + 1];
            entries[place++] = MakeEntry(std::max(a, b), a > b, static_cast<std::int32_t>(3 * i + k));
        }
    }
    Pairing pairing(table);
    for (std::size_t v = 0; v < points; ++v) {
        pace.Between(0.7, 1.0).Step(v, points);
        Entry* const first = entries.data() + begin[v];
        Entry* const last = entries.data() + begin[v + 1];
        Sort(first, last);
        for (Entry const* p = first; p != last;) {
            Entry const* end = p + 1;
            while (end != last && OtherOf(*end) == OtherOf(*p)) ++end;
            pairing.Pair({p, end});
            p = end;
        }
    }
    table.groups.push_back(static_cast<std::int32_t>(table.crowd.size()));
    return table;
}

// Triangles on the same corners share all of their edges: either one of these is one of many triangles or of
// two that run the same way, or the two lie across each other on all sides.
bool MayHaveCopies(EdgeTable const& edges) {
    if (edges.many > 0 || edges.conflicts > 0) return true;
    auto const& across = edges.across;
    for (std::size_t i = 0; i + 2 < across.size(); i += 3) {
        bool const isSame = across[i] / 3 == across[i + 1] / 3 && across[i] / 3 == across[i + 2] / 3;
        if (isSame && across[i] >= 0 && across[i + 1] >= 0 && across[i + 2] >= 0) return true;
    }
    return false;
}

}  // namespace varnet
