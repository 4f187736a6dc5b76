#include "slice/Arrangement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "slice/Nesting.h"
#include "slice/SnapRounding.h"
#include "varnet/Layer.h"

namespace varnet {

namespace {

constexpr std::int32_t kNone = -1;

std::size_t Index(std::int32_t n) { return static_cast<std::size_t>(n); }

// Sweeps over edges that meet at vertices alone, and finds for each the one right below it where it begins.
class BelowSweep {
public:
    BelowSweep(std::vector<GridPoint> const& vertices, std::vector<GridEdge> const& edges)
        : m_Vertices(vertices),
          m_Edges(edges),
          m_Line(Order{this}),
          m_InLine(edges.size(), m_Line.end()),
          m_First(vertices.size() + 1, 0),
          m_Arriving(edges.size()),
          m_FirstArriving(vertices.size() + 1, 0) {
        for (GridEdge const& edge : edges) {
            ++m_First[Index(edge.left) + 1];
            ++m_FirstArriving[Index(edge.right) + 1];
        }
        for (std::size_t i = 1; i < m_First.size(); ++i) {
            m_First[i] += m_First[i - 1];
            m_FirstArriving[i] += m_FirstArriving[i - 1];
        }
        std::vector<std::size_t> next = m_FirstArriving;
        for (std::size_t i = 0; i < edges.size(); ++i) {
            m_Arriving[next[Index(edges[i].right)]++] = static_cast<std::int32_t>(i);
        }
    }

    // Calls visit(edge, below) for each edge, from left to right, and from below where several begin.
    template <class Visit>
    void Run(Visit visit, Pulse& pulse) {
        std::vector<std::int32_t> leaving;
        for (std::size_t v = 0; v < m_Vertices.size(); ++v) {
            for (std::size_t i = m_FirstArriving[v]; i < m_FirstArriving[v + 1]; ++i) {
                m_Line.erase(m_InLine[Index(m_Arriving[i])]);
            }
            leaving.clear();
            for (std::size_t i = m_First[v]; i < m_First[v + 1]; ++i) {
                leaving.push_back(static_cast<std::int32_t>(i));
            }
            if (leaving.size() > 1) {
                std::sort(leaving.begin(), leaving.end(),
                          [this](std::int32_t a, std::int32_t b) { return IsBelow(a, b); });
            }
            auto hint = m_Line.end();
            for (std::size_t i = 0; i < leaving.size(); ++i) {
                std::int32_t const edge = leaving[i];
                auto const it = i == 0 ? m_Line.insert(edge).first : m_Line.insert(hint, edge);
                hint = std::next(it);
                m_InLine[Index(edge)] = it;
                visit(edge, it == m_Line.begin() ? kNone : *std::prev(it));
            }
            pulse.Beat(8 * (leaving.size() + 1));
        }
    }

private:
    struct Order {
        BelowSweep const* sweep;
        bool operator()(std::int32_t a, std::int32_t b) const { return sweep->IsBelow(a, b); }
    };
    using Line = std::set<std::int32_t, Order>;

    bool IsBelow(std::int32_t a, std::int32_t b) const {
        if (a == b) return false;
        GridEdge const& s = m_Edges[Index(a)];
        GridEdge const& t = m_Edges[Index(b)];
        std::int64_t turn = 0;
        if (s.left == t.left) {
            turn = Turn(At(s.left), At(s.right), At(t.right));
        } else if (s.left < t.left) {
            turn = Turn(At(s.left), At(s.right), At(t.left));
        } else {
            turn = -Turn(At(t.left), At(t.right), At(s.left));
        }
        return turn != 0 ? turn > 0 : a < b;
    }
    GridPoint const& At(std::int32_t vertex) const { return m_Vertices[Index(vertex)]; }

    std::vector<GridPoint> const& m_Vertices;
    std::vector<GridEdge> const& m_Edges;
    Line m_Line;
    std::vector<Line::iterator> m_InLine;
    std::vector<std::size_t> m_First;
    std::vector<std::int32_t> m_Arriving;
    std::vector<std::size_t> m_FirstArriving;
};

// The edges with the solid on one side alone. Their balance is 1 where it is above them, and -1 below.
std::vector<GridEdge> BoundaryOf(GridGraph const& graph, SolidRule rule, Pulse& pulse) {
    std::vector<GridEdge> boundary;
    std::vector<int> above(graph.edges.size(), 0);
    BelowSweep(graph.vertices, graph.edges)
        .Run(
            [&](std::int32_t edge, std::int32_t below) {
                GridEdge const& e = graph.edges[Index(edge)];
                int const windingBelow = below == kNone ? 0 : above[Index(below)];
                int const windingAbove = windingBelow + (rule == SolidRule::kOdd ? e.count : e.balance);
                above[Index(edge)] = windingAbove;
                bool const solidAbove = IsSolid(windingAbove, rule);
                if (solidAbove != IsSolid(windingBelow, rule)) {
                    boundary.push_back({e.left, e.right, solidAbove ? 1 : -1, 1});
                }
            },
            pulse);
    std::sort(boundary.begin(), boundary.end(), [](GridEdge const& a, GridEdge const& b) {
        return std::pair(a.left, a.right) < std::pair(b.left, b.right);
    });
    return boundary;
}

// Lays boundary edges into loops with the solid on their left.
class BoundaryLoops {
public:
    BoundaryLoops(std::vector<GridPoint> const& vertices, std::vector<GridEdge> const& edges)
        : m_Vertices(vertices), m_Edges(edges), m_Next(edges.size(), kNone), m_LoopOf(edges.size(), kNone) {
        Connect();
        for (std::size_t i = 0; i < edges.size(); ++i) {
            if (m_LoopOf[i] == kNone) Walk(static_cast<std::int32_t>(i));
        }
    }

    // Vertices of loop i from offsets[i] on.
    std::vector<std::int32_t> const& Vertices() const { return m_Walked; }
    std::vector<std::size_t> const& Offsets() const { return m_Offsets; }
    std::int32_t LoopOf(std::int32_t edge) const { return m_LoopOf[Index(edge)]; }

private:
    std::int32_t Start(std::int32_t e) const {
        return m_Edges[Index(e)].balance > 0 ? m_Edges[Index(e)].left : m_Edges[Index(e)].right;
    }
    std::int32_t Finish(std::int32_t e) const {
        return m_Edges[Index(e)].balance > 0 ? m_Edges[Index(e)].right : m_Edges[Index(e)].left;
    }

    struct End {
        std::int32_t vertex;
        std::int32_t edge;
        bool begins;
    };

    void Connect() {
        std::vector<End> ends;
        ends.reserve(2 * m_Edges.size());
        for (std::size_t i = 0; i < m_Edges.size(); ++i) {
            auto const e = static_cast<std::int32_t>(i);
            ends.push_back({Start(e), e, true});
            ends.push_back({Finish(e), e, false});
        }
        std::sort(ends.begin(), ends.end(), [](End const& a, End const& b) {
            return std::pair(a.vertex, a.edge) < std::pair(b.vertex, b.edge);
        });
        for (std::size_t i = 0; i < ends.size();) {
            std::size_t const begin = i;
            while (i < ends.size() && ends[i].vertex == ends[begin].vertex) ++i;
            ConnectAround(std::span<End>(ends).subspan(begin, i - begin));
        }
    }

    // Seen from the vertex, the solid lies from an edge that ends there on, clockwise, up to the next edge,
    // which begins there.
    void ConnectAround(std::span<End> ends) {
        if (ends.size() > 2) {
            std::sort(ends.begin(), ends.end(),
                      [this](End const& a, End const& b) { return IsBefore(a, b); });
        }
        for (std::size_t i = 0; i < ends.size(); ++i) {
            End const& next = ends[i == 0 ? ends.size() - 1 : i - 1];
            if (!ends[i].begins && next.begins) m_Next[Index(ends[i].edge)] = next.edge;
        }
    }

    // By the direction from the vertex, counter-clockwise from below.
    bool IsBefore(End const& a, End const& b) const {
        GridPoint const& v = m_Vertices[Index(a.vertex)];
        GridPoint const& p = Other(a);
        GridPoint const& q = Other(b);
        bool const rightA = v < p;
        bool const rightB = v < q;
        if (rightA != rightB) return rightA;
        return Turn(v, p, q) > 0;
    }
    GridPoint const& Other(End const& end) const {
        return m_Vertices[Index(end.begins ? Finish(end.edge) : Start(end.edge))];
    }

    void Walk(std::int32_t edge) {
        auto const loop = static_cast<std::int32_t>(m_Offsets.size()) - 1;
        for (; edge != kNone && m_LoopOf[Index(edge)] == kNone; edge = m_Next[Index(edge)]) {
            m_LoopOf[Index(edge)] = loop;
            m_Walked.push_back(Start(edge));
        }
        m_Offsets.push_back(m_Walked.size());
    }

    std::vector<GridPoint> const& m_Vertices;
    std::vector<GridEdge> const& m_Edges;
    std::vector<std::int32_t> m_Next;
    std::vector<std::int32_t> m_LoopOf;
    std::vector<std::int32_t> m_Walked;
    std::vector<std::size_t> m_Offsets{0};
};

// Which loop lies right in which. Loops touch at vertices at most.
std::vector<Nested> NestLoops(std::vector<GridPoint> const& vertices, std::vector<GridEdge> const& edges,
                              BoundaryLoops const& loops, Pulse& pulse) {
    std::vector<Nested> nested(loops.Offsets().size() - 1);
    std::vector<char> isHole(nested.size(), 0);
    BelowSweep(vertices, edges)
        .Run(
            [&](std::int32_t edge, std::int32_t below) {
                std::int32_t const loop = loops.LoopOf(edge);
                Nested& n = nested[Index(loop)];
                if (n.kept) return;
                n.kept = true;
                isHole[Index(loop)] = edges[Index(edge)].balance > 0 ? 0 : 1;
                if (below == kNone) return;
                // The loop below is the one around where it is of the other kind, else a neighbour.
                std::int32_t const other = loops.LoopOf(below);
                bool const differs = isHole[Index(other)] != isHole[Index(loop)];
                n.parent = differs ? other : nested[Index(other)].parent;
            },
            pulse);
    return nested;
}

// The exact points of vertices.
class Places {
public:
    Places(Paths const& paths, Grid const& grid) : m_Grid(grid) {
        m_Known.reserve(paths.points.size());
        for (Point2 const& p : paths.points) m_Known.push_back({grid.Of(p).Key(), p});
        std::stable_sort(m_Known.begin(), m_Known.end(),
                         [](Known const& a, Known const& b) { return a.key < b.key; });
    }
    Point2 Of(GridPoint const& p) const {
        auto const it = std::lower_bound(m_Known.begin(), m_Known.end(), p.Key(),
                                         [](Known const& a, std::uint64_t key) { return a.key < key; });
        return it != m_Known.end() && it->key == p.Key() ? it->point : m_Grid.Place(p);
    }

private:
    struct Known {
        std::uint64_t key;
        Point2 point;
    };
    Grid const& m_Grid;
    std::vector<Known> m_Known;
};

std::vector<GridSide> SidesOf(Paths const& paths, Grid const& grid) {
    std::vector<GridSide> sides;
    sides.reserve(paths.points.size());
    for (std::size_t i = 0; i < paths.Count(); ++i) {
        std::span<Point2 const> const path = paths.At(i);
        if (path.empty()) continue;
        GridPoint last = grid.Of(path.back());
        for (Point2 const& p : path) {
            GridPoint const at = grid.Of(p);
            if (!(at == last)) sides.push_back({last, at});
            last = at;
        }
    }
    return sides;
}

// Takes out the contours that are too thin, with all that is in them.
void DropThin(Paths const& paths, double unit, std::vector<Nested>& nested) {
    for (std::size_t i = 0; i < nested.size(); ++i) {
        std::span<Point2 const> const path = paths.At(i);
        double const width = 2.0 * std::fabs(SignedArea(path)) / LengthOf(path, true);
        if (path.size() < 3 || !(width > unit)) nested[i].kept = false;
    }
}

}  // namespace

void ResolveCrossings(Paths const& paths, Grid const& grid, SolidRule rule, SolidContours& contours,
                      Pulse& pulse) {
    GridGraph graph = RoundSides(SidesOf(paths, grid), pulse);
    std::erase_if(graph.edges, [rule](GridEdge const& edge) {
        return rule == SolidRule::kOdd ? edge.count % 2 == 0 : edge.balance == 0;
    });
    std::vector<GridEdge> const boundary = BoundaryOf(graph, rule, pulse);
    BoundaryLoops const loops(graph.vertices, boundary);
    std::vector<Nested> nested = NestLoops(graph.vertices, boundary, loops, pulse);
    Places const places(paths, grid);
    Paths result;
    for (std::size_t i = 0; i + 1 < loops.Offsets().size(); ++i) {
        for (std::size_t k = loops.Offsets()[i]; k < loops.Offsets()[i + 1]; ++k) {
            result.points.push_back(places.Of(graph.vertices[Index(loops.Vertices()[k])]));
        }
        result.Finish(true);
    }
    DropThin(result, grid.Unit(), nested);
    AddNested(result, nested, contours);
}

}  // namespace varnet
