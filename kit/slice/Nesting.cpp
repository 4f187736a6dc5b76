#include "slice/Nesting.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace varnet {

namespace {

constexpr std::int32_t kNone = -1;

std::size_t Index(std::int32_t n) { return static_cast<std::size_t>(n); }

int SignOf(std::int64_t n) { return n > 0 ? 1 : n < 0 ? -1 : 0; }

}  // namespace

void AddNested(Paths const& paths, std::vector<Nested> const& nested, SolidContours& contours) {
    // Children as lists, the last one first, so that a stack gives them in their order.
    std::vector<int> lastChild(nested.size() + 1, kNone);
    std::vector<int> before(nested.size(), kNone);
    for (std::size_t i = 0; i < nested.size(); ++i) {
        if (!nested[i].kept) continue;
        int const list = nested[i].parent + 1;
        int& last = lastChild[static_cast<std::size_t>(list)];
        before[i] = last;
        last = static_cast<int>(i);
    }
    struct Waiting {
        int contour;
        int parent;
    };
    std::vector<Waiting> waiting;
    auto const push = [&](int parent, int newParent) {
        for (int child = lastChild[Index(parent + 1)]; child != kNone; child = before[Index(child)]) {
            waiting.push_back({child, newParent});
        }
    };
    std::vector<Point2> turned;
    push(kNone, kNone);
    while (!waiting.empty()) {
        auto const [contour, parent] = waiting.back();
        waiting.pop_back();
        std::span<Point2 const> path = paths.At(Index(contour));
        if (nested[Index(contour)].turned) {
            turned.assign(path.rbegin(), path.rend());
            path = turned;
        }
        contours.Add(path, parent);
        push(contour, static_cast<int>(contours.parents.size()) - 1);
    }
}

bool NestingSweep::Nest(Paths const& paths, Grid const& grid, SolidRule rule, std::vector<Nested>& nested,
                        Pulse& pulse) {
    m_Rule = rule;
    m_Touched = false;
    TakeIn(paths, grid);
    if (!SortVertices()) return false;
    pulse.Beat(m_Vertices.size() * 4);
    m_Stretches.clear();
    m_InLine.clear();
    m_Arriving.assign(m_Vertices.size(), kNone);
    m_Arriving2.assign(m_Vertices.size(), kNone);
    m_Line = std::make_unique<Line>(Order{this});
    for (std::int32_t const vertex : m_Sorted) {
        if (!Meet(vertex) || m_Touched) return false;
        pulse.Beat(4);
    }
    nested.swap(m_Nested);
    return true;
}

void NestingSweep::TakeIn(Paths const& paths, Grid const& grid) {
    m_Vertices.clear();
    m_Nested.assign(paths.Count(), {});
    m_Placed.assign(paths.Count(), 0);
    m_Around.assign(paths.Count(), kNone);
    m_CounterClockwise.assign(paths.Count(), 0);
    for (std::size_t i = 0; i < paths.Count(); ++i) {
        TakeInContour(paths.At(i), grid, static_cast<std::int32_t>(i));
    }
}

// Points at one place are one vertex. What has fewer than three is left out.
void NestingSweep::TakeInContour(std::span<Point2 const> path, Grid const& grid, std::int32_t contour) {
    auto const first = static_cast<std::int32_t>(m_Vertices.size());
    for (Point2 const& p : path) {
        GridPoint const at = grid.Of(p);
        auto const i = static_cast<std::int32_t>(m_Vertices.size());
        if (i > first && m_Vertices.back().at == at) continue;
        m_Vertices.push_back({at, i - 1, i + 1, contour});
    }
    while (static_cast<std::int32_t>(m_Vertices.size()) > first + 1 &&
           m_Vertices.back().at == m_Vertices[Index(first)].at) {
        m_Vertices.pop_back();
    }
    if (static_cast<std::int32_t>(m_Vertices.size()) < first + 3) {
        m_Vertices.resize(Index(first));
        return;
    }
    m_Vertices[Index(first)].previous = static_cast<std::int32_t>(m_Vertices.size()) - 1;
    m_Vertices.back().next = first;
}

// From left to right, by counting digits. False where two are at one place.
bool NestingSweep::SortVertices() {
    std::size_t const count = m_Vertices.size();
    m_Keys.resize(count);
    m_Sorted.resize(count);
    for (std::size_t i = 0; i < count; ++i) m_Keys[i] = m_Vertices[i].at.Key();
    std::iota(m_Sorted.begin(), m_Sorted.end(), 0);
    constexpr std::size_t kFew = 512;
    auto const less = [this](std::int32_t a, std::int32_t b) { return m_Keys[Index(a)] < m_Keys[Index(b)]; };
    if (count < kFew) {
        std::sort(m_Sorted.begin(), m_Sorted.end(), less);
    } else {
        // By x alone; then what has the same x.
        constexpr int kDigit = 11;
        constexpr std::size_t kDigits = std::size_t{1} << kDigit;
        m_SortedBuffer.resize(count);
        for (int shift = 32; shift < 64; shift += kDigit) {
            std::array<std::uint32_t, kDigits + 1> starts{};
            auto const digit = [&](std::int32_t v) { return m_Keys[Index(v)] >> shift & (kDigits - 1); };
            for (std::int32_t const v : m_Sorted) ++starts[digit(v) + 1];
            for (std::size_t i = 1; i < kDigits; ++i) starts[i] += starts[i - 1];
            for (std::int32_t const v : m_Sorted) m_SortedBuffer[starts[digit(v)]++] = v;
            m_Sorted.swap(m_SortedBuffer);
        }
        auto const x = [this](std::size_t i) { return m_Keys[Index(m_Sorted[i])] >> 32; };
        for (std::size_t i = 0; i < count;) {
            std::size_t const begin = i;
            while (i < count && x(i) == x(begin)) ++i;
            if (i - begin > 1) {
                std::sort(m_Sorted.begin() + static_cast<std::ptrdiff_t>(begin),
                          m_Sorted.begin() + static_cast<std::ptrdiff_t>(i), less);
            }
        }
    }
    for (std::size_t i = 1; i < count; ++i) {
        if (m_Keys[Index(m_Sorted[i])] == m_Keys[Index(m_Sorted[i - 1])]) return false;
    }
    return true;
}

// Of two stretches that the sweep line meets: whether the first one is the lower. Notes where one begins on
// the other.
bool NestingSweep::IsBelow(std::int32_t a, std::int32_t b) {
    if (a == b) return false;
    Stretch const& s = m_Stretches[Index(a)];
    Stretch const& t = m_Stretches[Index(b)];
    std::int64_t turn = 0;
    if (s.left == t.left) {
        turn = Turn(s.left, s.right, t.right);
    } else if (s.left < t.left) {
        turn = Turn(s.left, s.right, t.left);
    } else {
        turn = -Turn(t.left, t.right, s.left);
    }
    if (turn == 0) m_Touched = true;
    return turn > 0;
}

bool NestingSweep::Meet(std::int32_t vertex) {
    std::int32_t const a = m_Arriving[Index(vertex)];
    std::int32_t const b = m_Arriving2[Index(vertex)];
    if (a == kNone) return Begin(vertex);
    if (b == kNone) return MoveOn(a, vertex);
    return End(a, b);
}

bool NestingSweep::Begin(std::int32_t vertex) {
    Vertex const& v = m_Vertices[Index(vertex)];
    GridPoint const& toNext = m_Vertices[Index(v.next)].at;
    GridPoint const& toPrevious = m_Vertices[Index(v.previous)].at;
    std::int64_t const turn = Turn(v.at, toNext, toPrevious);
    if (turn == 0) return false;
    bool const nextIsLower = turn > 0;
    std::int32_t const lower = AddStretch(vertex, nextIsLower ? v.next : v.previous, nextIsLower);
    std::int32_t const upper = AddStretch(vertex, nextIsLower ? v.previous : v.next, !nextIsLower);
    auto const [it, isNew] = m_Line->insert(lower);
    if (!isNew || m_Touched) return false;
    auto const above = std::next(it);
    std::int32_t const below = it == m_Line->begin() ? kNone : *std::prev(it);
    std::int32_t const next = above == m_Line->end() ? kNone : *above;
    m_InLine[Index(lower)] = it;
    m_InLine[Index(upper)] = m_Line->insert(above, upper);
    if (m_Touched) return false;
    Stretch& s = m_Stretches[Index(lower)];
    Stretch& t = m_Stretches[Index(upper)];
    s.below = below;
    s.above = upper;
    t.below = lower;
    t.above = next;
    if (below != kNone) m_Stretches[Index(below)].above = lower;
    if (next != kNone) m_Stretches[Index(next)].below = upper;
    t.windingAbove = below == kNone ? 0 : m_Stretches[Index(below)].windingAbove;
    s.windingAbove = t.windingAbove + (s.forward ? 1 : -1);
    if (m_Placed[Index(v.contour)] == 0) Place(v.contour, below, lower);
    return AreApart(below, lower) && AreApart(upper, next);
}

// Where the contour begins, the line meets nothing else of it, so that what is below tells what is around.
void NestingSweep::Place(std::int32_t contour, std::int32_t below, std::int32_t lower) {
    m_Placed[Index(contour)] = 1;
    m_CounterClockwise[Index(contour)] = m_Stretches[Index(lower)].forward ? 1 : 0;
    int outside = 0;
    std::int32_t around = kNone;
    if (below != kNone) {
        Stretch const& s = m_Stretches[Index(below)];
        outside = s.windingAbove;
        bool const isInside = s.forward == (m_CounterClockwise[Index(s.contour)] != 0);
        around = isInside ? s.contour : m_Around[Index(s.contour)];
    }
    m_Around[Index(contour)] = around;
    int const inside = m_Stretches[Index(lower)].windingAbove;
    Nested& nested = m_Nested[Index(contour)];
    bool const solidInside = IsSolid(inside, m_Rule);
    nested.kept = solidInside != IsSolid(outside, m_Rule);
    nested.turned = nested.kept && solidInside != (m_CounterClockwise[Index(contour)] != 0);
    if (around == kNone) return;
    Nested const& outer = m_Nested[Index(around)];
    nested.parent = outer.kept ? around : outer.parent;
}

bool NestingSweep::MoveOn(std::int32_t stretch, std::int32_t vertex) {
    Stretch const& s = m_Stretches[Index(stretch)];
    Vertex const& v = m_Vertices[Index(vertex)];
    AimAt(stretch, vertex, s.forward ? v.next : v.previous);
    return AreApart(s.below, stretch) && AreApart(stretch, s.above);
}

bool NestingSweep::End(std::int32_t a, std::int32_t b) {
    if (m_Stretches[Index(a)].below == b) std::swap(a, b);
    if (m_Stretches[Index(a)].above != b) return false;
    std::int32_t const below = m_Stretches[Index(a)].below;
    std::int32_t const above = m_Stretches[Index(b)].above;
    m_Line->erase(m_InLine[Index(a)]);
    m_Line->erase(m_InLine[Index(b)]);
    if (below != kNone) m_Stretches[Index(below)].above = above;
    if (above != kNone) m_Stretches[Index(above)].below = below;
    return AreApart(below, above);
}

std::int32_t NestingSweep::AddStretch(std::int32_t from, std::int32_t to, bool forward) {
    auto const stretch = static_cast<std::int32_t>(m_Stretches.size());
    m_Stretches.push_back({{}, {}, to, kNone, kNone, m_Vertices[Index(from)].contour, 0, forward});
    m_InLine.emplace_back();
    AimAt(stretch, from, to);
    return stretch;
}

void NestingSweep::AimAt(std::int32_t stretch, std::int32_t from, std::int32_t to) {
    Stretch& s = m_Stretches[Index(stretch)];
    s.left = m_Vertices[Index(from)].at;
    s.right = m_Vertices[Index(to)].at;
    s.target = to;
    std::int32_t& arriving = m_Arriving[Index(to)];
    (arriving == kNone ? arriving : m_Arriving2[Index(to)]) = stretch;
}

// Whether two neighbours have no point in common but an end at which the contour goes on from one to the
// other.
bool NestingSweep::AreApart(std::int32_t below, std::int32_t above) const {
    if (below == kNone || above == kNone) return true;
    Stretch const& s = m_Stretches[Index(below)];
    Stretch const& t = m_Stretches[Index(above)];
    if (std::max(s.left.y, s.right.y) < std::min(t.left.y, t.right.y)) return true;
    if (s.left == t.left) return Turn(s.left, s.right, t.right) != 0;
    if (s.right == t.right) return Turn(s.right, s.left, t.left) != 0;
    int const a = SignOf(Turn(s.left, s.right, t.left));
    int const b = SignOf(Turn(s.left, s.right, t.right));
    if (a != 0 && a == b) return true;
    int const c = SignOf(Turn(t.left, t.right, s.left));
    int const d = SignOf(Turn(t.left, t.right, s.right));
    return c != 0 && c == d;
}

}  // namespace varnet
