#include "slice/SnapRounding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <utility>

namespace varnet {

namespace {

// __extension__ silences the compiler about a typedef, not about using.
// NOLINTNEXTLINE(modernize-use-using)
__extension__ typedef __int128 Wide;

int SignOf(std::int64_t n) { return n > 0 ? 1 : n < 0 ? -1 : 0; }

// The whole number nearest to n / d, the greater of two; d is above 0.
std::int64_t Rounded(Wide n, Wide d) {
    Wide const doubled = 2 * n + d;
    Wide const divisor = 2 * d;
    Wide quotient = doubled / divisor;
    if (doubled % divisor < 0) --quotient;
    return static_cast<std::int64_t>(quotient);
}

bool BoxesMeet(GridSide const& s, GridSide const& t) {
    return std::max(s.from.x, s.to.x) >= std::min(t.from.x, t.to.x) &&
           std::max(t.from.x, t.to.x) >= std::min(s.from.x, s.to.x) &&
           std::max(s.from.y, s.to.y) >= std::min(t.from.y, t.to.y) &&
           std::max(t.from.y, t.to.y) >= std::min(s.from.y, s.to.y);
}

// Where two sides cross within both of them. Where one ends on the other that end is hot anyway.
bool Cross(GridSide const& s, GridSide const& t, GridPoint& at) {
    if (!BoxesMeet(s, t)) return false;
    std::int64_t const a = Turn(s.from, s.to, t.from);
    std::int64_t const b = Turn(s.from, s.to, t.to);
    if (SignOf(a) * SignOf(b) >= 0) return false;
    std::int64_t const c = Turn(t.from, t.to, s.from);
    std::int64_t const d = Turn(t.from, t.to, s.to);
    if (SignOf(c) * SignOf(d) >= 0) return false;
    // From t.from on by the share a / (a - b).
    Wide share = a;
    Wide whole = Wide{a} - b;
    if (whole < 0) {
        share = -share;
        whole = -whole;
    }
    at.x = static_cast<std::int32_t>(t.from.x + Rounded(share * (std::int64_t{t.to.x} - t.from.x), whole));
    at.y = static_cast<std::int32_t>(t.from.y + Rounded(share * (std::int64_t{t.to.y} - t.from.y), whole));
    return true;
}

// Whether a side passes the pixel around a point: half a step to each side, without its upper and right rim.
// Counted in half steps, ends are even and rims odd, so that no end is on a rim.
bool Passes(GridSide const& s, GridPoint const& pixel) {
    std::int64_t const ax = 2 * std::int64_t{s.from.x} - 2 * std::int64_t{pixel.x};
    std::int64_t const ay = 2 * std::int64_t{s.from.y} - 2 * std::int64_t{pixel.y};
    std::int64_t const bx = 2 * std::int64_t{s.to.x} - 2 * std::int64_t{pixel.x};
    std::int64_t const by = 2 * std::int64_t{s.to.y} - 2 * std::int64_t{pixel.y};
    if (std::max(ax, bx) < -1 || std::min(ax, bx) > 1 || std::max(ay, by) < -1 || std::min(ay, by) > 1) {
        return false;
    }
    auto const side = [&](std::int64_t x, std::int64_t y) {
        Wide const turn = Wide{bx - ax} * (y - ay) - Wide{by - ay} * (x - ax);
        return turn > 0 ? 1 : turn < 0 ? -1 : 0;
    };
    int const lowerLeft = side(-1, -1);
    int const others[3] = {side(1, -1), side(-1, 1), side(1, 1)};
    int const least = std::min({lowerLeft, others[0], others[1], others[2]});
    int const most = std::max({lowerLeft, others[0], others[1], others[2]});
    if (least < 0 && most > 0) return true;
    // Only the lower left corner belongs to the pixel.
    return lowerLeft == 0 && std::min(ax, bx) <= -1 && std::max(ax, bx) >= -1 && std::min(ay, by) <= -1 &&
           std::max(ay, by) >= -1;
}

// A box between grid points.
struct Area {
    double left;
    double low;
    double width;
    double height;
};

// Further than a side moves when it is rounded, with room for what floating point leaves open.
constexpr double kMargin = 8.0;

// The part of a side that is in or near a box, as shares of the side: none where it ends before it begins.
struct Part {
    double from = 0.0;
    double to = 1.0;

    Part(GridSide const& s, Area const& area) {
        Clip(s.from.x, s.to.x, area.left - kMargin, area.left + area.width + kMargin);
        Clip(s.from.y, s.to.y, area.low - kMargin, area.low + area.height + kMargin);
    }
    bool IsEmpty() const { return from > to; }

private:
    void Clip(double start, double end, double low, double high) {
        if (start == end) {
            if (start < low || start > high) to = -1.0;
            return;
        }
        double const a = (low - start) / (end - start);
        double const b = (high - start) / (end - start);
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
    }
};

// About as many cells as sides, over their box. Each knows the sides that come near it.
class Cells {
public:
    explicit Cells(std::span<GridSide const> sides) : m_Sides(sides) {
        MeasureBox();
        m_First.assign(m_Columns * m_Rows + 1, 0);
        for (GridSide const& s : sides) {
            ForEachCell(s, [this](std::size_t cell) { ++m_First[cell + 1]; });
        }
        for (std::size_t i = 1; i < m_First.size(); ++i) m_First[i] += m_First[i - 1];
        m_SidesOf.resize(m_First.back());
        std::vector<std::size_t> next = m_First;
        for (std::size_t i = 0; i < sides.size(); ++i) {
            ForEachCell(sides[i],
                        [&](std::size_t cell) { m_SidesOf[next[cell]++] = static_cast<std::uint32_t>(i); });
        }
    }

    std::size_t Count() const { return m_Columns * m_Rows; }
    std::span<std::uint32_t const> SidesOf(std::size_t cell) const {
        return {m_SidesOf.data() + m_First[cell], m_First[cell + 1] - m_First[cell]};
    }
    std::size_t CellOf(GridPoint const& p) const { return Column(p.x) * m_Rows + Row(p.y); }

    // The box of a cell.
    Area AreaOf(std::size_t cell) const {
        std::size_t const column = cell / m_Rows;
        std::size_t const row = cell % m_Rows;
        return {static_cast<double>(m_MinX) + static_cast<double>(column) * m_Width,
                static_cast<double>(m_MinY) + static_cast<double>(row) * m_Height, m_Width, m_Height};
    }

private:
    static constexpr double kLeastCell = 4.0;
    // How many cells a side is in on an average, at most.
    static constexpr double kMostVisits = 32.0;

    void MeasureBox() {
        std::int64_t maxX = INT32_MIN;
        std::int64_t maxY = INT32_MIN;
        m_MinX = m_MinY = INT32_MAX;
        for (GridSide const& s : m_Sides) {
            for (GridPoint const& p : {s.from, s.to}) {
                m_MinX = std::min<std::int64_t>(m_MinX, p.x);
                m_MinY = std::min<std::int64_t>(m_MinY, p.y);
                maxX = std::max<std::int64_t>(maxX, p.x);
                maxY = std::max<std::int64_t>(maxY, p.y);
            }
        }
        ChooseCell(static_cast<double>(maxX - m_MinX + 1), static_cast<double>(maxY - m_MinY + 1));
    }

    // Cells are long where sides are: so parallel ones fall apart, and no side is in more cells than it has
    // to be.
    void ChooseCell(double width, double height) {
        auto const count = static_cast<double>(m_Sides.size());
        double sumX = 1.0;
        double sumY = 1.0;
        for (GridSide const& s : m_Sides) {
            sumX += std::fabs(static_cast<double>(s.to.x) - s.from.x);
            sumY += std::fabs(static_cast<double>(s.to.y) - s.from.y);
        }
        double const area = width * height / count;
        m_Width = std::clamp(std::sqrt(area * (sumX / sumY)), width / count, width);
        m_Height = std::clamp(area / m_Width, height / count, height);
        double const visits = (sumX / m_Width + sumY / m_Height) / count;
        double const coarser = std::max(1.0, visits / kMostVisits);
        m_Width = std::max(m_Width * coarser, kLeastCell);
        m_Height = std::max(m_Height * coarser, kLeastCell);
        m_Columns = static_cast<std::size_t>(width / m_Width) + 1;
        m_Rows = static_cast<std::size_t>(height / m_Height) + 1;
    }

    std::size_t Column(std::int64_t x) const { return At(x - m_MinX, m_Width, m_Columns); }
    std::size_t Row(std::int64_t y) const { return At(y - m_MinY, m_Height, m_Rows); }
    static std::size_t At(std::int64_t offset, double size, std::size_t count) {
        if (offset <= 0) return 0;
        return std::min(static_cast<std::size_t>(static_cast<double>(offset) / size), count - 1);
    }

    // The cells that a side comes within two steps of, which is further than it moves when it is rounded.
    template <class Visit>
    void ForEachCell(GridSide const& s, Visit visit) const {
        constexpr std::int64_t kNear = 2;
        GridPoint const a = s.from < s.to ? s.from : s.to;
        GridPoint const b = s.from < s.to ? s.to : s.from;
        double const slope =
            b.x == a.x ? 0.0 : (static_cast<double>(b.y) - a.y) / (static_cast<double>(b.x) - a.x);
        std::int64_t const low = std::min(a.y, b.y) - kNear;
        std::int64_t const high = std::max(a.y, b.y) + kNear;
        std::size_t const last = Column(b.x + kNear);
        for (std::size_t column = Column(a.x - kNear); column <= last; ++column) {
            std::int64_t from = low;
            std::int64_t to = high;
            if (b.x != a.x) {
                double const left =
                    static_cast<double>(m_MinX - a.x) + static_cast<double>(column) * m_Width - 2.0 * kNear;
                double const right = left + m_Width + 4.0 * kNear;
                double const reach = static_cast<double>(b.x) - a.x;
                double const y1 = a.y + std::clamp(left, 0.0, reach) * slope;
                double const y2 = a.y + std::clamp(right, 0.0, reach) * slope;
                from = std::max(low, static_cast<std::int64_t>(std::floor(std::min(y1, y2))) - 2 * kNear);
                to = std::min(high, static_cast<std::int64_t>(std::ceil(std::max(y1, y2))) + 2 * kNear);
            }
            std::size_t const lastRow = Row(to);
            for (std::size_t row = Row(from); row <= lastRow; ++row) visit(column * m_Rows + row);
        }
    }

    std::span<GridSide const> m_Sides;
    std::int64_t m_MinX = 0;
    std::int64_t m_MinY = 0;
    double m_Width = 1.0;  // of a cell
    double m_Height = 1.0;
    std::size_t m_Columns = 1;
    std::size_t m_Rows = 1;
    std::vector<std::size_t> m_First;
    std::vector<std::uint32_t> m_SidesOf;
};

void SortUnique(std::vector<std::uint64_t>& keys) {
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
}

// Goes through the pairs of sides of a cell that may cross there. Sides are looked at across the way in which
// most of them run, so that those beside each other are told apart.
class CellPairs {
public:
    CellPairs(std::span<GridSide const> sides, Cells const& cells) : m_Sides(sides), m_Cells(cells) {}

    template <class Visit>
    void ForEach(std::size_t cell, Visit visit, Pulse& pulse) {
        std::span<std::uint32_t const> const near = m_Cells.SidesOf(cell);
        Measure(cell, near);
        for (std::size_t i = 0; i < m_Spans.size(); ++i) {
            std::size_t k = i + 1;
            for (; k < m_Spans.size() && m_Spans[k].from <= m_Spans[i].to; ++k) {
                visit(m_Sides[m_Spans[i].side], m_Sides[m_Spans[k].side]);
            }
            pulse.Beat(k - i);
        }
    }

private:
    struct Span {
        double from;
        double to;
        std::uint32_t side;
        bool operator<(Span const& other) const {
            return std::tie(from, side) < std::tie(other.from, other.side);
        }
    };

    void Measure(std::size_t cell, std::span<std::uint32_t const> near) {
        constexpr std::size_t kFew = 12;
        m_Spans.clear();
        if (near.size() <= kFew) {
            for (std::uint32_t const side : near) m_Spans.push_back({0.0, 0.0, side});
            return;
        }
        // Directions are the same as their opposites: they are added up with their angles doubled.
        double c = 0.0;
        double d = 0.0;
        for (std::uint32_t const side : near) {
            double const dx = static_cast<double>(m_Sides[side].to.x) - m_Sides[side].from.x;
            double const dy = static_cast<double>(m_Sides[side].to.y) - m_Sides[side].from.y;
            double const length2 = dx * dx + dy * dy;
            c += (dx * dx - dy * dy) / length2;
            d += 2.0 * dx * dy / length2;
        }
        double const angle = std::atan2(d, c) / 2.0;
        double const x = -std::sin(angle);
        double const y = std::cos(angle);
        Area const area = m_Cells.AreaOf(cell);
        for (std::uint32_t const side : near) {
            GridSide const& s = m_Sides[side];
            Part const part(s, area);
            if (part.IsEmpty()) continue;
            double const start = x * s.from.x + y * s.from.y;
            double const whole = x * s.to.x + y * s.to.y - start;
            double const a = start + part.from * whole;
            double const b = start + part.to * whole;
            m_Spans.push_back({std::min(a, b) - kMargin, std::max(a, b) + kMargin, side});
        }
        std::sort(m_Spans.begin(), m_Spans.end());
    }

    std::span<GridSide const> m_Sides;
    Cells const& m_Cells;
    std::vector<Span> m_Spans;
};

// The keys of the hot pixels: of ends and crossings.
std::vector<std::uint64_t> HotPixels(std::span<GridSide const> sides, Cells const& cells, Pulse& pulse) {
    std::vector<std::uint64_t> keys;
    keys.reserve(2 * sides.size());
    for (GridSide const& s : sides) {
        keys.push_back(s.from.Key());
        keys.push_back(s.to.Key());
    }
    SortUnique(keys);
    std::size_t settled = keys.size();
    CellPairs pairs(sides, cells);
    auto const cross = [&keys](GridSide const& s, GridSide const& t) {
        GridPoint at;
        if (Cross(s, t, at)) keys.push_back(at.Key());
    };
    for (std::size_t cell = 0; cell < cells.Count(); ++cell) {
        pairs.ForEach(cell, cross, pulse);
        pulse.Beat();
        // The same crossing may be found in several cells.
        if (keys.size() > 2 * settled) {
            SortUnique(keys);
            settled = keys.size();
        }
    }
    SortUnique(keys);
    return keys;
}

// The hot pixels that sides pass: those of side i are from offsets[i] up to offsets[i + 1], sorted.
struct Passings {
    std::vector<std::size_t> offsets;
    std::vector<std::int32_t> vertices;
};

// Looks for the pixels that sides pass. Where many sides and many pixels are in one cell, it is divided.
class PassingSearch {
public:
    PassingSearch(std::span<GridSide const> sides, std::vector<GridPoint> const& vertices, Pulse& pulse)
        : m_Sides(sides), m_Vertices(vertices), m_Pulse(pulse) {
        m_Passings.offsets.assign(sides.size() + 1, 0);
    }

    void Search(Area const& area, std::span<std::uint32_t const> sides,
                std::span<std::int32_t const> vertices) {
        if (IsEasy(area, sides.size(), vertices.size())) return Compare(sides, vertices);
        m_Tasks.push_back({area, {sides.begin(), sides.end()}, {vertices.begin(), vertices.end()}});
        while (!m_Tasks.empty()) {
            Task const task = std::move(m_Tasks.back());
            m_Tasks.pop_back();
            if (IsEasy(task.area, task.sides.size(), task.vertices.size())) {
                Compare(task.sides, task.vertices);
            } else {
                Divide(task);
            }
        }
    }

    // By side, pixels sorted.
    Passings Take() {
        std::vector<std::size_t>& offsets = m_Passings.offsets;
        for (std::size_t i = 1; i < offsets.size(); ++i) offsets[i] += offsets[i - 1];
        m_Passings.vertices.resize(m_Found.size());
        std::vector<std::size_t> next = offsets;
        for (Found const& found : m_Found) m_Passings.vertices[next[found.side]++] = found.vertex;
        for (std::size_t i = 0; i + 1 < offsets.size(); ++i) {
            std::sort(m_Passings.vertices.begin() + static_cast<std::ptrdiff_t>(offsets[i]),
                      m_Passings.vertices.begin() + static_cast<std::ptrdiff_t>(offsets[i + 1]));
        }
        return std::move(m_Passings);
    }

private:
    struct Task {
        Area area;
        std::vector<std::uint32_t> sides;
        std::vector<std::int32_t> vertices;
    };
    struct Found {
        std::uint32_t side;
        std::int32_t vertex;
    };

    static bool IsEasy(Area const& area, std::size_t sides, std::size_t vertices) {
        constexpr std::size_t kEasy = 64;
        constexpr double kSmall = 4.0 * kMargin;
        return sides * vertices <= kEasy * (sides + vertices) || std::max(area.width, area.height) <= kSmall;
    }

    void Compare(std::span<std::uint32_t const> sides, std::span<std::int32_t const> vertices) {
        for (std::int32_t const vertex : vertices) {
            for (std::uint32_t const side : sides) {
                if (!Passes(m_Sides[side], m_Vertices[static_cast<std::size_t>(vertex)])) continue;
                m_Found.push_back({side, vertex});
                ++m_Passings.offsets[side + 1];
            }
            m_Pulse.Beat(sides.size());
        }
    }

    void Divide(Task const& task) {
        double const width = task.area.width / 2.0;
        double const height = task.area.height / 2.0;
        double const x = task.area.left + width;
        double const y = task.area.low + height;
        for (int quarter = 0; quarter < 4; ++quarter) {
            bool const isRight = quarter % 2 != 0;
            bool const isUpper = quarter / 2 != 0;
            Task part;
            part.area = {isRight ? x : task.area.left, isUpper ? y : task.area.low, width, height};
            for (std::int32_t const vertex : task.vertices) {
                GridPoint const& p = m_Vertices[static_cast<std::size_t>(vertex)];
                if ((p.x >= x) == isRight && (p.y >= y) == isUpper) part.vertices.push_back(vertex);
            }
            if (part.vertices.empty()) continue;
            for (std::uint32_t const side : task.sides) {
                if (!Part(m_Sides[side], part.area).IsEmpty()) part.sides.push_back(side);
            }
            m_Tasks.push_back(std::move(part));
        }
        m_Pulse.Beat(8 * (task.sides.size() + task.vertices.size()));
    }

    std::span<GridSide const> m_Sides;
    std::vector<GridPoint> const& m_Vertices;
    Pulse& m_Pulse;
    Passings m_Passings;
    std::vector<Found> m_Found;
    std::vector<Task> m_Tasks;
};

Passings FindPassings(std::span<GridSide const> sides, Cells const& cells,
                      std::vector<GridPoint> const& vertices, Pulse& pulse) {
    std::vector<std::size_t> first(cells.Count() + 1, 0);
    for (GridPoint const& p : vertices) ++first[cells.CellOf(p) + 1];
    for (std::size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
    std::vector<std::int32_t> verticesOf(vertices.size());
    std::vector<std::size_t> next = first;
    for (std::size_t v = 0; v < vertices.size(); ++v) {
        verticesOf[next[cells.CellOf(vertices[v])]++] = static_cast<std::int32_t>(v);
    }
    PassingSearch search(sides, vertices, pulse);
    for (std::size_t cell = 0; cell < cells.Count(); ++cell) {
        std::span<std::int32_t const> const in(verticesOf.data() + first[cell],
                                               first[cell + 1] - first[cell]);
        if (!in.empty()) search.Search(cells.AreaOf(cell), cells.SidesOf(cell), in);
    }
    return search.Take();
}

void Merge(std::vector<GridEdge>& edges) {
    std::sort(edges.begin(), edges.end(), [](GridEdge const& a, GridEdge const& b) {
        return std::tie(a.left, a.right) < std::tie(b.left, b.right);
    });
    std::size_t count = 0;
    for (GridEdge const& edge : edges) {
        if (count > 0 && edges[count - 1].left == edge.left && edges[count - 1].right == edge.right) {
            edges[count - 1].balance += edge.balance;
            edges[count - 1].count += edge.count;
        } else {
            edges[count++] = edge;
        }
    }
    edges.resize(count);
}

}  // namespace

GridGraph RoundSides(std::span<GridSide const> sides, Pulse& pulse) {
    GridGraph graph;
    if (sides.empty()) return graph;
    Cells const cells(sides);
    for (std::uint64_t const key : HotPixels(sides, cells, pulse)) {
        graph.vertices.push_back(GridPoint::FromKey(key));
    }
    Passings passings = FindPassings(sides, cells, graph.vertices, pulse);
    graph.edges.reserve(passings.vertices.size());
    for (std::size_t i = 0; i < sides.size(); ++i) {
        GridSide const& s = sides[i];
        std::span<std::int32_t> const passed =
            std::span(passings.vertices)
                .subspan(passings.offsets[i], passings.offsets[i + 1] - passings.offsets[i]);
        // Numbers of vertices grow with x, and then with y: of those above each other a side that goes down
        // passes the upper one first.
        if (passed.size() > 2 && (s.from < s.to ? s.to.y < s.from.y : s.from.y < s.to.y)) {
            std::sort(passed.begin(), passed.end(), [&graph](std::int32_t a, std::int32_t b) {
                GridPoint const& p = graph.vertices[static_cast<std::size_t>(a)];
                GridPoint const& q = graph.vertices[static_cast<std::size_t>(b)];
                return p.x != q.x ? p.x < q.x : p.y > q.y;
            });
        }
        int const balance = s.from < s.to ? 1 : -1;
        for (std::size_t k = 1; k < passed.size(); ++k) {
            std::int32_t const a = passed[k - 1];
            std::int32_t const b = passed[k];
            graph.edges.push_back({std::min(a, b), std::max(a, b), a < b ? balance : -balance, 1});
        }
        pulse.Beat(passed.size());
    }
    Merge(graph.edges);
    return graph;
}

}  // namespace varnet
