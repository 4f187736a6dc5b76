// Which shells lie inside others: a line is drawn straight up from a point of each shell, and the facets that
// it passes are counted, those that face up against those that face down. A shell with open edges may have
// nothing there: it is asked along all axes, both ways, and most of the six lines tell.

#include <algorithm>
#include <cmath>

#include "part/Bodies.h"

namespace varnet {

namespace {

// The points that ask, in a grid over x and y of about as many cells.
class Queries {
public:
    explicit Queries(std::vector<Point3> points) : m_Points(std::move(points)) {
        for (Point3 const& p : m_Points) m_Box.Add({p.x, p.y});
        m_Side = std::max<std::size_t>(
            1, static_cast<std::size_t>(std::sqrt(static_cast<double>(m_Points.size()))));
        m_Cells.resize(m_Side * m_Side);
        for (std::size_t i = 0; i < m_Points.size(); ++i) {
            std::size_t const x = Column(m_Points[i].x, m_Box.min.x, m_Box.max.x);
            std::size_t const y = Column(m_Points[i].y, m_Box.min.y, m_Box.max.y);
            m_Cells[y * m_Side + x].push_back(i);
        }
    }

    Point3 const& operator[](std::size_t i) const { return m_Points[i]; }
    std::size_t Count() const { return m_Points.size(); }

    // Calls found(i) for points whose x and y may lie in the box.
    template <class Found>
    void InBox(Point2 const& min, Point2 const& max, Found const& found) const {
        if (max.x < m_Box.min.x || min.x > m_Box.max.x || max.y < m_Box.min.y || min.y > m_Box.max.y) return;
        std::size_t const x0 = Column(min.x, m_Box.min.x, m_Box.max.x);
        std::size_t const x1 = Column(max.x, m_Box.min.x, m_Box.max.x);
        std::size_t const y0 = Column(min.y, m_Box.min.y, m_Box.max.y);
        std::size_t const y1 = Column(max.y, m_Box.min.y, m_Box.max.y);
        for (std::size_t y = y0; y <= y1; ++y) {
            for (std::size_t x = x0; x <= x1; ++x) {
                for (std::size_t const i : m_Cells[y * m_Side + x]) found(i);
            }
        }
    }

private:
    std::size_t Column(double value, double min, double max) const {
        double const share = max > min ? (value - min) / (max - min) : 0.0;
        double const column =
            std::clamp(share * static_cast<double>(m_Side), 0.0, static_cast<double>(m_Side - 1));
        return static_cast<std::size_t>(column);
    }

    std::vector<Point3> m_Points;
    Box2 m_Box;
    std::size_t m_Side = 1;
    std::vector<std::vector<std::size_t>> m_Cells;
};

// Whether the edge from a to b, seen from above, passes the half-line from p towards greater x: 1 upward in
// y, -1 downward. Both facets at an edge judge alike, so that a line along an edge passes just one of them.
int Passes(Point3 const& p, Point3 const& a, Point3 const& b) {
    if ((a.y <= p.y) == (b.y <= p.y)) return 0;
    Point3 const& low = a.y <= b.y ? a : b;
    Point3 const& high = a.y <= b.y ? b : a;
    double const side = (high.x - low.x) * (p.y - low.y) - (high.y - low.y) * (p.x - low.x);
    if (side <= 0.0) return 0;
    return a.y <= b.y ? 1 : -1;
}

// How a facet lies on the line through a point along z: `turns` is 1 where it faces up, -1 where it faces
// down, and 0 where it is not on the line or holds the point.
struct Passed {
    int turns = 0;
    bool above = false;
};
Passed PassedBy(Point3 const& p, Point3 const& a, Point3 const& b, Point3 const& c) {
    int const turns = Passes(p, a, b) + Passes(p, b, c) + Passes(p, c, a);
    if (turns == 0) return {};
    Point3 const normal = Cross(b - a, c - a);
    double const height = Dot(a - p, normal);
    if (height == 0.0) return {};
    return {turns, (height > 0.0) == (normal.z > 0.0)};
}

// The axes in turn: the one that is asked along becomes z.
Point3 Along(std::size_t axis, Point3 const& p) {
    return axis == 0 ? p : axis == 1 ? Point3{p.y, p.z, p.x} : Point3{p.z, p.x, p.y};
}

Point3 CentreOfLargestFacet(Shell const& shell) {
    double largest = -1.0;
    Point3 centre;
    for (Triangle const& t : shell.triangles) {
        Point3 const& a = shell.points[static_cast<std::size_t>(t[0])];
        Point3 const& b = shell.points[static_cast<std::size_t>(t[1])];
        Point3 const& c = shell.points[static_cast<std::size_t>(t[2])];
        Point3 const normal = Cross(b - a, c - a);
        if (Dot(normal, normal) <= largest) continue;
        largest = Dot(normal, normal);
        centre = (1.0 / 3.0) * (a + b + c);
    }
    return centre;
}

// Points that ask which shells are around them.
class Asking {
public:
    // With all axes, where a shell that is asked is open.
    Asking(std::vector<Point3> const& points, bool allAxes) : m_Votes(points.size()), m_Turns(points.size()) {
        for (std::size_t axis = 0; axis < (allAxes ? 3 : 1); ++axis) {
            std::vector<Point3> along;
            along.reserve(points.size());
            for (Point3 const& p : points) along.push_back(Along(axis, p));
            m_Along.emplace_back(std::move(along));
        }
    }

    // Calls found(i) for the points inside a shell; sign is -1 for one that is to be taken as turned.
    template <class Found>
    void InShell(Shell const& shell, int sign, Found const& found) {
        std::size_t const axes = shell.isOpen ? 3 : 1;
        for (std::size_t axis = 0; axis < axes; ++axis) {
            CountTurns(shell, axis);
            for (std::size_t const i : m_Touched) {
                Turns& turns = m_Turns[i];
                if (m_Votes[i] == 0 && (turns.above != 0 || turns.below != 0)) m_Voted.push_back(i);
                m_Votes[i] += sign * turns.above > 0 ? 1 : 0;
                if (shell.isOpen) m_Votes[i] += sign * turns.below < 0 ? 1 : 0;
                turns = {};
            }
            m_Touched.clear();
        }
        for (std::size_t const i : m_Voted) {
            if (m_Votes[i] >= (shell.isOpen ? kMostOfSix : 1)) found(i);
            m_Votes[i] = 0;
        }
        m_Voted.clear();
    }

private:
    static constexpr int kMostOfSix = 4;

    struct Turns {
        int above = 0;
        int below = 0;
    };

    void CountTurns(Shell const& shell, std::size_t axis) {
        Queries const& queries = m_Along[axis];
        for (Triangle const& t : shell.triangles) {
            Point3 const a = Along(axis, shell.points[static_cast<std::size_t>(t[0])]);
            Point3 const b = Along(axis, shell.points[static_cast<std::size_t>(t[1])]);
            Point3 const c = Along(axis, shell.points[static_cast<std::size_t>(t[2])]);
            queries.InBox({std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})},
                          {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})}, [&](std::size_t i) {
                              Passed const passed = PassedBy(queries[i], a, b, c);
                              if (passed.turns == 0) return;
                              (passed.above ? m_Turns[i].above : m_Turns[i].below) += passed.turns;
                              m_Touched.push_back(i);
                          });
        }
    }

    std::vector<Queries> m_Along;
    std::vector<int> m_Votes;
    std::vector<Turns> m_Turns;          // of one shell along one axis
    std::vector<std::size_t> m_Touched;  // points with turns, some twice
    std::vector<std::size_t> m_Voted;    // points with votes, some twice
};

// As FindEnclosing, of shells that are all turned first where that is asked for.
std::vector<std::int32_t> FindEnclosing(std::span<Shell const> shells, bool turned) {
    int const sign = turned ? -1 : 1;
    std::vector<std::int32_t> enclosing(shells.size(), -1);
    std::vector<std::size_t> asking;
    std::vector<Point3> points;
    bool anyOpen = false;
    for (std::size_t i = 0; i < shells.size(); ++i) {
        if (sign * shells[i].volume > 0.0) anyOpen |= shells[i].isOpen;
        if (!(sign * shells[i].volume < 0.0)) continue;
        asking.push_back(i);
        points.push_back(CentreOfLargestFacet(shells[i]));
    }
    if (asking.empty()) return enclosing;

    Asking asked(points, anyOpen);
    for (std::size_t s = 0; s < shells.size(); ++s) {
        Shell const& shell = shells[s];
        if (!(sign * shell.volume > 0.0)) continue;
        asked.InShell(shell, sign, [&](std::size_t i) {
            std::int32_t& now = enclosing[asking[i]];
            bool const isSmaller =
                now < 0 || std::fabs(shell.volume) < std::fabs(shells[static_cast<std::size_t>(now)].volume);
            if (isSmaller) now = static_cast<std::int32_t>(s);
        });
    }
    return enclosing;
}

}  // namespace

std::vector<std::int32_t> FindEnclosing(std::span<Shell const> shells) {
    return FindEnclosing(shells, false);
}

Facing JudgeFacing(std::span<Shell const> shells) {
    double volume = 0.0;
    for (Shell const& shell : shells) volume += shell.volume;
    bool const turned = volume < 0.0;
    Facing facing;
    facing.enclosing = FindEnclosing(shells, turned);
    for (std::size_t i = 0; i < shells.size(); ++i) {
        double const asWhole = turned ? -shells[i].volume : shells[i].volume;
        bool const isWrongInWhole = asWhole < 0.0 && facing.enclosing[i] < 0;
        facing.isWrong.push_back(asWhole != 0.0 && isWrongInWhole != turned);
    }
    return facing;
}

}  // namespace varnet
