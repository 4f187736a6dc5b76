#include "slice/JoinEnds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

#include "varnet/Layer.h"

namespace varnet {

namespace {

constexpr int kNone = -1;

// A path may be closed on itself over this share of its length.
constexpr double kShareOfLength = 1.0 / 3.0;

// Distances at which partners are looked for grow by this factor: what is left is spread so far then that
// just a few others are near enough.
constexpr double kGrowth = 4.0;

// More than this many candidates are not looked at for one end. No more can be there but at distances at
// which coordinates are rounded.
constexpr int kMostCandidates = 128;

std::size_t Index(int n) { return static_cast<std::size_t>(n); }

double Distance(Point2 const& a, Point2 const& b) {
    double const dx = b.x - a.x;
    double const dy = b.y - a.y;
    return std::sqrt(dx * dx + dy * dy);
}

// The ends of open paths: 2 i is where path i begins, 2 i + 1 where it ends.
class Ends {
public:
    Ends(Paths const& paths, Pulse& pulse) : m_Pulse(pulse) {
        for (std::size_t i = 0; i < paths.Count(); ++i) {
            if (paths.closed[i] != 0) continue;
            int const end = static_cast<int>(m_Place.size());
            std::span<Point2 const> const path = paths.At(i);
            double const length = LengthOf(path, false);
            m_Place.insert(m_Place.end(), {path.front(), path.back()});
            m_Far.insert(m_Far.end(), {end + 1, end});
            m_Length.insert(m_Length.end(), {length, length});
            m_PathOf.push_back(i);
        }
        m_Partner.assign(m_Place.size(), kNone);
        m_Further.assign(m_Place.size(), kNone);
        m_Alone.resize(m_Place.size());
        for (std::size_t i = 0; i < m_Alone.size(); ++i) m_Alone[i] = static_cast<int>(i);
        for (Point2 const& p : m_Place) m_Box.Add(p);
    }

    // Joins what lies within the distance.
    JoinFigures Join(double limit) {
        JoinFigures figures;
        double const extent = std::max(m_Box.max.x - m_Box.min.x, m_Box.max.y - m_Box.min.y);
        constexpr double kNearest = 1e-9;
        constexpr double kShareOfExtent = 1e-12;
        double radius = std::max(kNearest, extent * kShareOfExtent);
        for (; radius < limit && !m_Alone.empty(); radius *= kGrowth) Round(radius, true, figures);
        if (!m_Alone.empty()) Round(limit, true, figures);
        // What would have to follow.
        for (radius = limit * kGrowth; radius < 2.0 * kGrowth * extent && !m_Alone.empty();
             radius *= kGrowth) {
            Round(radius, false, figures);
        }
        return figures;
    }

    std::size_t PathCount() const { return m_PathOf.size(); }
    std::size_t PathOf(int end) const { return m_PathOf[Index(end / 2)]; }
    int PartnerOf(int end) const { return m_Partner[Index(end)]; }
    // Takes the partners that ends would have further off, too.
    void JoinAll() {
        for (std::size_t i = 0; i < m_Partner.size(); ++i) {
            if (m_Partner[i] == kNone) m_Partner[i] = m_Further[i];
        }
    }

private:
    struct Candidate {
        bool against;  // both begin, or both end
        double distance;
        int a;
        int b;
        bool operator<(Candidate const& other) const {
            return std::tie(against, distance, a, b) <
                   std::tie(other.against, other.distance, other.a, other.b);
        }
    };
    struct Cell {
        std::int64_t x;
        std::int64_t y;
        int end;
        auto Key() const { return std::tie(x, y, end); }
    };

    void Round(double radius, bool forGood, JoinFigures& figures) {
        FillCells(radius);
        FindCandidates(radius);
        std::sort(m_Candidates.begin(), m_Candidates.end());
        m_Taken.resize(m_Place.size(), 0);
        for (Candidate const& candidate : m_Candidates) Take(candidate, forGood, figures);
        std::erase_if(m_Alone, [this](int end) { return m_Taken[Index(end)] != 0; });
    }

    void FillCells(double radius) {
        m_Cells.clear();
        for (int const end : m_Alone) {
            Point2 const& p = m_Place[Index(end)];
            m_Cells.push_back({static_cast<std::int64_t>(std::floor((p.x - m_Box.min.x) / radius)),
                               static_cast<std::int64_t>(std::floor((p.y - m_Box.min.y) / radius)), end});
        }
        std::sort(m_Cells.begin(), m_Cells.end(),
                  [](Cell const& a, Cell const& b) { return a.Key() < b.Key(); });
    }

    // Each pair is looked at from its end in the lower cell: in that cell, above it, and in the next column.
    void FindCandidates(double radius) {
        m_Candidates.clear();
        for (std::size_t i = 0; i < m_Cells.size(); ++i) {
            Cell const& cell = m_Cells[i];
            int found = 0;
            auto const look = [&](std::size_t k, std::int64_t x, std::int64_t highest) {
                for (; k < m_Cells.size() && m_Cells[k].x == x && m_Cells[k].y <= highest; ++k) {
                    if (++found > kMostCandidates) break;
                    AddCandidate(cell.end, m_Cells[k].end, radius);
                }
            };
            look(i + 1, cell.x, cell.y + 1);
            Cell const next{cell.x + 1, cell.y - 1, kNone};
            auto const it = std::lower_bound(m_Cells.begin(), m_Cells.end(), next,
                                             [](Cell const& a, Cell const& b) { return a.Key() < b.Key(); });
            look(static_cast<std::size_t>(it - m_Cells.begin()), cell.x + 1, cell.y + 1);
            m_Pulse.Beat(8);
        }
    }

    void AddCandidate(int a, int b, double radius) {
        double const distance = Distance(m_Place[Index(a)], m_Place[Index(b)]);
        if (!(distance <= radius)) return;
        m_Candidates.push_back({a % 2 == b % 2, distance, std::min(a, b), std::max(a, b)});
    }

    void Take(Candidate const& candidate, bool forGood, JoinFigures& figures) {
        auto const [against, distance, a, b] = candidate;
        if (m_Taken[Index(a)] != 0 || m_Taken[Index(b)] != 0) return;
        int const farA = m_Far[Index(a)];
        int const farB = m_Far[Index(b)];
        if (farA == b && forGood && !(distance <= m_Length[Index(a)] * kShareOfLength)) return;
        m_Taken[Index(a)] = m_Taken[Index(b)] = 1;
        std::vector<int>& partners = forGood ? m_Partner : m_Further;
        partners[Index(a)] = b;
        partners[Index(b)] = a;
        if (!forGood) {
            figures.longestOpen = std::max(figures.longestOpen, distance);
        } else if (distance > kMicron) {
            ++figures.closed;
            figures.closedLength += distance;
            figures.longestClosed = std::max(figures.longestClosed, distance);
        }
        if (farA == b) return;
        double const length = m_Length[Index(a)] + m_Length[Index(b)] + distance;
        m_Far[Index(farA)] = farB;
        m_Far[Index(farB)] = farA;
        m_Length[Index(farA)] = m_Length[Index(farB)] = length;
    }

    Pulse& m_Pulse;
    std::vector<Point2> m_Place;
    std::vector<int> m_Far;  // by end: the other end of what it is joined up to
    std::vector<double> m_Length;
    std::vector<int> m_Partner;
    std::vector<int> m_Further;  // beyond the distance
    std::vector<std::size_t> m_PathOf;
    std::vector<int> m_Alone;
    std::vector<char> m_Taken;
    std::vector<Cell> m_Cells;
    std::vector<Candidate> m_Candidates;
    Box2 m_Box;
};

// Lays joined paths into one.
class Chains {
public:
    Chains(Paths const& cut, Ends const& ends) : m_Cut(cut), m_Ends(ends), m_Used(ends.PathCount(), 0) {}

    void Chain(Paths& closed, Paths& open) {
        int const count = static_cast<int>(2 * m_Ends.PathCount());
        for (int end = 0; end < count; ++end) {
            if (m_Ends.PartnerOf(end) == kNone) ChainFrom(end, closed, open);
        }
        for (int end = 0; end < count; end += 2) ChainFrom(end, closed, open);
    }

private:
    void ChainFrom(int end, Paths& closed, Paths& open) {
        if (m_Used[Index(end / 2)] != 0) return;
        m_Points.clear();
        m_Along = 0.0;
        int const start = end;
        do {
            m_Used[Index(end / 2)] = 1;
            Append(end);
            end = m_Ends.PartnerOf(end ^ 1);
        } while (end != kNone && end != start);
        bool const isClosed = end == start;
        if (isClosed && m_Points.size() > 1 && Distance(m_Points.back(), m_Points.front()) <= kMicron) {
            m_Points.pop_back();
        }
        if (isClosed && m_Points.size() < 3) return;
        if (m_Along < 0.0) std::reverse(m_Points.begin(), m_Points.end());
        if (isClosed) {
            closed.Add(m_Points, true);
        } else {
            AddOpen(closed, open);
        }
    }

    // A path that comes back to a point of its own goes round there: with a facet too many beside it, a whole
    // contour is part of an open path. What goes round is closed by itself.
    void AddOpen(Paths& closed, Paths& open) {
        NumberPlaces();
        m_Way.clear();
        m_WayAt.assign(m_Points.size(), kNone);
        for (std::size_t i = 0; i < m_Points.size(); ++i) {
            int& at = m_WayAt[Index(m_PlaceOf[i])];
            if (at == kNone) {
                at = static_cast<int>(m_Way.size());
                m_Way.push_back(static_cast<int>(i));
                continue;
            }
            m_Loop.clear();
            for (std::size_t k = Index(at); k < m_Way.size(); ++k)
                m_Loop.push_back(m_Points[Index(m_Way[k])]);
            while (m_Way.size() > Index(at) + 1) {
                m_WayAt[Index(m_PlaceOf[Index(m_Way.back())])] = kNone;
                m_Way.pop_back();
            }
            if (m_Loop.size() >= 3) closed.Add(m_Loop, true);
        }
        if (m_Way.size() < 2) return;
        for (int const i : m_Way) open.points.push_back(m_Points[Index(i)]);
        open.Finish(false);
    }

    // Points at one place have one number.
    void NumberPlaces() {
        m_Order.resize(m_Points.size());
        std::iota(m_Order.begin(), m_Order.end(), 0);
        auto const key = [this](int i) { return std::pair(m_Points[Index(i)].x, m_Points[Index(i)].y); };
        std::sort(m_Order.begin(), m_Order.end(), [&](int a, int b) { return key(a) < key(b); });
        m_PlaceOf.resize(m_Points.size());
        int number = 0;
        for (std::size_t i = 0; i < m_Order.size(); ++i) {
            if (i > 0 && key(m_Order[i - 1]) < key(m_Order[i])) ++number;
            m_PlaceOf[Index(m_Order[i])] = number;
        }
    }

    // The path, from this end of it to the other.
    void Append(int end) {
        std::span<Point2 const> const path = m_Cut.At(m_Ends.PathOf(end));
        bool const forward = end % 2 == 0;
        double const length = LengthOf(path, false);
        m_Along += forward ? length : -length;
        for (std::size_t i = 0; i < path.size(); ++i) {
            Point2 const& p = forward ? path[i] : path[path.size() - 1 - i];
            if (i == 0 && !m_Points.empty() && Distance(m_Points.back(), p) <= kMicron) continue;
            m_Points.push_back(p);
        }
    }

    Paths const& m_Cut;
    Ends const& m_Ends;
    std::vector<char> m_Used;
    std::vector<Point2> m_Points;
    double m_Along = 0.0;
    std::vector<int> m_Order;    // of points, by place
    std::vector<int> m_PlaceOf;  // by point
    std::vector<int> m_Way;      // the points up to here, without what goes round
    std::vector<int> m_WayAt;    // by place: where in the way it is
    std::vector<Point2> m_Loop;
};

double AreaOf(Paths const& paths, std::size_t from) {
    double area = 0.0;
    for (std::size_t i = from; i < paths.Count(); ++i) area += SignedArea(paths.At(i));
    return area;
}

// What the paths that stay open would enclose, joined with the ends that are further off.
double OpenArea(Paths const& cut, Ends& ends, double closedArea) {
    ends.JoinAll();
    Paths closed;
    Paths open;
    Chains(cut, ends).Chain(closed, open);
    return AreaOf(closed, 0) - closedArea;
}

}  // namespace

JoinFigures JoinEnds(Paths& cut, double close, Paths& closed, Paths& open, Pulse& pulse) {
    JoinFigures figures;
    bool const hasOpen = std::find(cut.closed.begin(), cut.closed.end(), 0) != cut.closed.end();
    if (!hasOpen && closed.Count() == 0) {
        std::swap(cut, closed);
        return figures;
    }
    for (std::size_t i = 0; i < cut.Count(); ++i) {
        if (cut.closed[i] != 0) closed.Add(cut.At(i), true);
    }
    if (hasOpen) {
        Ends ends(cut, pulse);
        figures = ends.Join(std::max(close, kMicron));
        std::size_t const before = closed.Count();
        std::size_t const openBefore = open.Count();
        Chains(cut, ends).Chain(closed, open);
        if (open.Count() > openBefore) figures.openArea = OpenArea(cut, ends, AreaOf(closed, before));
    }
    cut.Clear();
    return figures;
}

}  // namespace varnet
