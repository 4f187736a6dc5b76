// Which shells lie inside others: a line is drawn straight up from a point of each shell, and the facets that
// it passes are counted, those that face up against those that face down.

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

// 1 or -1 where the facet lies above the point, facing up or down; else 0.
int PassesAbove(Point3 const& p, Point3 const& a, Point3 const& b, Point3 const& c) {
    int const turns = Passes(p, a, b) + Passes(p, b, c) + Passes(p, c, a);
    if (turns == 0) return 0;
    Point3 const normal = Cross(b - a, c - a);
    double const height = Dot(a - p, normal);
    return (height > 0.0) == (normal.z > 0.0) && height != 0.0 ? turns : 0;
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

// As FindEnclosing, of shells that are all turned first where that is asked for.
std::vector<std::int32_t> FindEnclosing(std::span<Shell const> shells, bool turned) {
    double const sign = turned ? -1.0 : 1.0;
    std::vector<std::int32_t> enclosing(shells.size(), -1);
    std::vector<std::size_t> asking;
    std::vector<Point3> points;
    for (std::size_t i = 0; i < shells.size(); ++i) {
        if (!(sign * shells[i].volume < 0.0)) continue;
        asking.push_back(i);
        points.push_back(CentreOfLargestFacet(shells[i]));
    }
    if (asking.empty()) return enclosing;

    Queries const queries(std::move(points));
    std::vector<int> turns(queries.Count());
    std::vector<std::size_t> touched;
    for (std::size_t s = 0; s < shells.size(); ++s) {
        Shell const& shell = shells[s];
        if (!(sign * shell.volume > 0.0)) continue;
        for (Triangle const& t : shell.triangles) {
            Point3 const& a = shell.points[static_cast<std::size_t>(t[0])];
            Point3 const& b = shell.points[static_cast<std::size_t>(t[1])];
            Point3 const& c = shell.points[static_cast<std::size_t>(t[2])];
            queries.InBox({std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})},
                          {std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})}, [&](std::size_t i) {
                              int const turn = PassesAbove(queries[i], a, b, c);
                              if (turn == 0) return;
                              turns[i] += turned ? -turn : turn;
                              touched.push_back(i);
                          });
        }
        for (std::size_t const i : touched) {
            std::int32_t& now = enclosing[asking[i]];
            bool const smaller =
                now < 0 || std::fabs(shell.volume) < std::fabs(shells[static_cast<std::size_t>(now)].volume);
            if (turns[i] > 0 && smaller) now = static_cast<std::int32_t>(s);
            turns[i] = 0;
        }
        touched.clear();
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
