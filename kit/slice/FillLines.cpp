#include "slice/FillLines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

namespace varnet {

namespace {

// Shares of the spacing.
constexpr double kUnseenGap = 0.05;
constexpr double kInset = 0.5;
constexpr double kShortest = 1.0;
// How far a chain may go from one stroke to the next.
constexpr double kLongestStep = 3.0;

// So many strokes make a chain at most: a line of text that says more might not be read back whole.
constexpr std::size_t kLongestChain = 200;

// Coordinates in which the lines run along u, at v = (line + 0.5) spacings.
class LineFrame {
public:
    explicit LineFrame(FillStyle const& style)
        : m_Spacing(style.spacing),
          m_Cos(std::cos(style.angle * std::numbers::pi / 180.0)),
          m_Sin(std::sin(style.angle * std::numbers::pi / 180.0)) {}
    double U(Point2 const& p) const { return p.x * m_Cos + p.y * m_Sin; }
    double V(Point2 const& p) const { return p.y * m_Cos - p.x * m_Sin; }
    // The first line at or above v.
    std::int64_t FirstLine(double v) const {
        return static_cast<std::int64_t>(std::ceil(v / m_Spacing - 0.5));
    }
    double VOf(std::int64_t line) const { return (static_cast<double>(line) + 0.5) * m_Spacing; }
    Point2 Place(std::int64_t line, double u) const {
        double const v = VOf(line);
        return {u * m_Cos - v * m_Sin, u * m_Sin + v * m_Cos};
    }

private:
    double m_Spacing;
    double m_Cos;
    double m_Sin;
};

// A side of a contour that meets lines, from its lower end up to, but not at, its upper end: two sides that
// share a point meet a line through it once if they pass it, and not at all or twice if they turn there.
struct Side {
    std::int64_t first;
    std::int64_t end;
    double u;
    double v;
    double slope;
    bool clear;
};

std::vector<Side> SidesOf(Paths const& contours, Paths const& clear, LineFrame const& frame) {
    std::vector<Side> sides;
    for (Paths const* paths : {&contours, &clear}) {
        for (std::size_t i = 0; i < paths->Count(); ++i) {
            std::span<Point2 const> const path = paths->At(i);
            Point2 const* a = &path.back();
            double va = frame.V(*a);
            std::int64_t lineA = frame.FirstLine(va);
            for (Point2 const& b : path) {
                double const vb = frame.V(b);
                std::int64_t const lineB = frame.FirstLine(vb);
                if (lineA != lineB) {
                    double const ua = frame.U(*a);
                    sides.push_back({std::min(lineA, lineB), std::max(lineA, lineB), ua, va,
                                     (frame.U(b) - ua) / (vb - va), paths == &clear});
                }
                a = &b;
                va = vb;
                lineA = lineB;
            }
        }
    }
    return sides;
}

struct Interval {
    double from;
    double to;
};

// What of a line is in the contours and not in those to keep clear of, whose crossings these are, sorted.
void Subtract(std::vector<double> const& contours, std::vector<double> const& clear,
              std::vector<Interval>& left) {
    left.clear();
    std::size_t k = 0;
    for (std::size_t i = 0; i + 1 < contours.size(); i += 2) {
        double from = contours[i];
        double const to = contours[i + 1];
        while (k + 1 < clear.size() && clear[k + 1] <= from) k += 2;
        std::size_t next = k;
        for (; next + 1 < clear.size() && clear[next] < to && from < to; next += 2) {
            if (clear[next] > from) left.push_back({from, clear[next]});
            from = std::max(from, clear[next + 1]);
        }
        if (from < to) left.push_back({from, to});
    }
}

// The strokes of what is left of a line.
void ToStrokes(std::vector<Interval>& intervals, double spacing) {
    std::size_t count = 0;
    for (Interval const& interval : intervals) {
        if (count > 0 && interval.from - intervals[count - 1].to < spacing * kUnseenGap) {
            intervals[count - 1].to = interval.to;
        } else {
            intervals[count++] = interval;
        }
    }
    intervals.resize(count);
    std::erase_if(intervals, [spacing](Interval const& interval) {
        return interval.to - interval.from < spacing * (kShortest + 2.0 * kInset);
    });
    for (Interval& interval : intervals) {
        interval.from += spacing * kInset;
        interval.to -= spacing * kInset;
    }
}

// Lays strokes, line by line, into chains.
class Chains {
public:
    Chains(FillStyle const& style, LineFrame const& frame) : m_Style(style), m_Frame(frame) {}

    void AddLine(std::int64_t line, std::vector<Interval> const& strokes) {
        if (!m_HasLine || line != m_Line + 1) m_Last.clear();
        m_Now.clear();
        std::size_t before = 0;
        for (std::size_t i = 0; i < strokes.size(); ++i) {
            while (before < m_Last.size() && m_Last[before].stroke.to <= strokes[i].from) ++before;
            Last const* const last = OnlyOneBelow(strokes, i, before);
            if (last != nullptr && GoesOn(*last, strokes[i])) {
                Add({strokes[i], last->chain, !last->turned}, line);
            } else {
                m_Lengths.push_back(0);
                Add({strokes[i], m_Lengths.size() - 1, false}, line);
            }
        }
        std::swap(m_Last, m_Now);
        m_Line = line;
        m_HasLine = true;
    }

    // Chains in the order in which they began.
    void MoveTo(Layer& layer) const {
        std::vector<std::size_t> next;
        next.reserve(m_Lengths.size());
        std::size_t offset = layer.strokes.size();
        for (std::size_t const length : m_Lengths) {
            next.push_back(offset);
            offset += length;
            layer.chainOffsets.push_back(offset);
            layer.chainIds.push_back(m_Style.id);
        }
        layer.strokes.resize(offset);
        for (std::size_t i = 0; i < m_Strokes.size(); ++i) layer.strokes[next[m_ChainOf[i]]++] = m_Strokes[i];
    }

private:
    // The last stroke of a chain.
    struct Last {
        Interval stroke;
        std::size_t chain;
        bool turned;
    };

    // The stroke of the line before that overlaps this one, `before` being the first that may, if there is
    // just one and it overlaps no other.
    Last const* OnlyOneBelow(std::vector<Interval> const& strokes, std::size_t i, std::size_t before) const {
        auto const overlap = [](Interval const& a, Interval const& b) {
            return a.from < b.to && b.from < a.to;
        };
        if (before >= m_Last.size() || !overlap(m_Last[before].stroke, strokes[i])) return nullptr;
        Last const& last = m_Last[before];
        if (before + 1 < m_Last.size() && overlap(m_Last[before + 1].stroke, strokes[i])) return nullptr;
        if (i > 0 && overlap(last.stroke, strokes[i - 1])) return nullptr;
        if (i + 1 < strokes.size() && overlap(last.stroke, strokes[i + 1])) return nullptr;
        return &last;
    }

    bool GoesOn(Last const& last, Interval const& next) const {
        double const step = last.turned ? next.from - last.stroke.from : next.to - last.stroke.to;
        return std::fabs(step) <= m_Style.spacing * kLongestStep && m_Lengths[last.chain] < kLongestChain;
    }

    void Add(Last const& last, std::int64_t line) {
        Stroke stroke{m_Frame.Place(line, last.stroke.from), m_Frame.Place(line, last.stroke.to)};
        if (last.turned) std::swap(stroke.from, stroke.to);
        m_Strokes.push_back(stroke);
        m_ChainOf.push_back(last.chain);
        ++m_Lengths[last.chain];
        m_Now.push_back(last);
    }

    FillStyle const& m_Style;
    LineFrame const& m_Frame;
    std::vector<Last> m_Last;
    std::vector<Last> m_Now;
    std::int64_t m_Line = 0;
    bool m_HasLine = false;
    std::vector<Stroke> m_Strokes;
    std::vector<std::size_t> m_ChainOf;  // by stroke
    std::vector<std::size_t> m_Lengths;  // by chain
};

// Goes through the lines from below, with the sides that each of them meets.
class LineSweep {
public:
    explicit LineSweep(std::vector<Side> sides) : m_Sides(std::move(sides)) {
        std::int64_t last = INT64_MIN;
        m_Line = INT64_MAX;
        for (Side const& side : m_Sides) {
            m_Line = std::min(m_Line, side.first);
            last = std::max(last, side.first);
        }
        if (m_Sides.empty()) return;
        m_Base = m_Line;
        m_First.assign(static_cast<std::size_t>(last - m_Line) + 2, 0);
        for (Side const& side : m_Sides) ++m_First[Offset(side.first) + 1];
        for (std::size_t i = 1; i < m_First.size(); ++i) m_First[i] += m_First[i - 1];
        m_Order.resize(m_Sides.size());
        std::vector<std::uint32_t> next = m_First;
        for (std::size_t i = 0; i < m_Sides.size(); ++i) {
            m_Order[next[Offset(m_Sides[i].first)]++] = static_cast<std::uint32_t>(i);
        }
    }

    template <class Visit>
    void Run(LineFrame const& frame, Visit visit, Pulse& pulse) {
        if (m_Sides.empty()) return;
        std::vector<double> contours;
        std::vector<double> clear;
        for (; Offset(m_Line) + 1 < m_First.size() || !m_Active.empty(); ++m_Line) {
            std::erase_if(m_Active, [this](std::uint32_t i) { return m_Sides[i].end <= m_Line; });
            TakeUp();
            contours.clear();
            clear.clear();
            double const v = frame.VOf(m_Line);
            for (std::uint32_t const i : m_Active) {
                Side const& side = m_Sides[i];
                (side.clear ? clear : contours).push_back(side.u + (v - side.v) * side.slope);
            }
            std::sort(contours.begin(), contours.end());
            std::sort(clear.begin(), clear.end());
            visit(m_Line, contours, clear);
            pulse.Beat(4 * m_Active.size() + 1);
        }
    }

private:
    std::size_t Offset(std::int64_t line) const { return static_cast<std::size_t>(line - m_Base); }

    void TakeUp() {
        std::size_t const at = Offset(m_Line);
        if (at + 1 >= m_First.size()) return;
        m_Active.insert(m_Active.end(), m_Order.begin() + m_First[at], m_Order.begin() + m_First[at + 1]);
    }

    std::vector<Side> m_Sides;
    std::int64_t m_Base = 0;
    std::int64_t m_Line = 0;
    std::vector<std::uint32_t> m_First;  // by line: where the sides that begin there stand in the order
    std::vector<std::uint32_t> m_Order;
    std::vector<std::uint32_t> m_Active;
};

}  // namespace

void FillContours(Paths const& contours, Paths const& clear, FillStyle const& style, Layer& layer,
                  Pulse& pulse) {
    LineFrame const frame(style);
    Chains chains(style, frame);
    std::vector<Interval> intervals;
    LineSweep(SidesOf(contours, clear, frame))
        .Run(
            frame,
            [&](std::int64_t line, std::vector<double> const& solid, std::vector<double> const& kept) {
                if (solid.empty()) return;
                Subtract(solid, kept, intervals);
                ToStrokes(intervals, style.spacing);
                if (!intervals.empty()) chains.AddLine(line, intervals);
            },
            pulse);
    chains.MoveTo(layer);
}

}  // namespace varnet
