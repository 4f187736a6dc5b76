#include "part/Rim.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "part/NearPoints.h"
#include "part/PointTree.h"

namespace varnet {

namespace {

// What the coordinates of floats leave uncertain, relative to the largest of them: a few roundings.
constexpr double kRounding = 4.0 / (1 << 23);

// So many boxes and points may be looked at for an edge on average, and so many in any case.
constexpr std::size_t kLooksPerEdge = 400;
constexpr std::size_t kLooksAtLeast = 1000000;

// A directed edge or a piece of one.
struct Piece {
    std::int32_t start;
    std::int32_t end;
    std::size_t edge;  // whose piece it is
    std::size_t place;
    bool met = false;  // by one that runs the other way
};

// Marks the pieces that meet one that runs the other way, each one.
void Meet(std::vector<Piece>& pieces) {
    // The ends, the lower one above, then the direction, then the order of the list.
    struct Key {
        std::uint64_t ends;
        std::uint64_t rest;
    };
    constexpr std::uint64_t kDown = std::uint64_t{1} << 63;
    std::vector<Key> order(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        Piece const& p = pieces[i];
        auto const low = static_cast<std::uint64_t>(std::min(p.start, p.end));
        auto const high = static_cast<std::uint64_t>(std::max(p.start, p.end));
        order[i] = {low << 32 | high, i | (p.start > p.end ? kDown : 0)};
    }
    std::sort(order.begin(), order.end(), [](Key const& a, Key const& b) {
        return a.ends != b.ends ? a.ends < b.ends : a.rest < b.rest;
    });
    for (std::size_t i = 0; i < order.size();) {
        std::size_t up = i;
        while (up < order.size() && order[up].ends == order[i].ends && order[up].rest < kDown) ++up;
        std::size_t down = up;
        while (down < order.size() && order[down].ends == order[i].ends) ++down;
        std::size_t const pairs = std::min(up - i, down - up);
        for (std::size_t k = 0; k < pairs; ++k) {
            pieces[order[i + k].rest].met = true;
            pieces[order[up + k].rest & ~kDown].met = true;
        }
        i = down;
    }
}

double LargestOf(Point3 const& p) { return std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}); }

// Whether the shorter of two ways from a point lies on the longer one.
bool LieOnEachOther(Point3 const& from, Point3 const& a, Point3 const& b) {
    Point3 shorter = a - from;
    Point3 longer = b - from;
    if (Dot(shorter, shorter) > Dot(longer, longer)) std::swap(shorter, longer);
    double const share = Dot(shorter, longer) / Dot(longer, longer);
    double const near = kRounding * std::max({LargestOf(from), LargestOf(a), LargestOf(b)});
    return share > 0.0 && Length(shorter - share * longer) <= near;
}

// Of edges that are left out, those of which another open edge runs back along them are left in.
void LeaveInCrossed(FlatMesh const& mesh, EdgeTable const& edges, std::vector<bool>& leftOut) {
    auto const point = [&](std::int32_t i) { return mesh.points[static_cast<std::size_t>(i)]; };
    std::vector<std::int32_t> open;
    // The last open edge from each point, and for each the one before it from the same point, as places in
    // open.
    std::vector<std::int32_t> last(mesh.points.size(), -1);
    std::vector<std::int32_t> before;
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0) continue;
        auto const edge = static_cast<std::int32_t>(i);
        std::int32_t& from = last[static_cast<std::size_t>(StartOf(mesh.triangles, edge))];
        before.push_back(from);
        from = static_cast<std::int32_t>(open.size());
        open.push_back(edge);
    }
    for (std::int32_t const edge : open) {
        Point3 const start = point(StartOf(mesh.triangles, edge));
        std::int32_t const end = EndOf(mesh.triangles, edge);
        std::size_t looked = 0;
        for (std::int32_t i = last[static_cast<std::size_t>(end)]; i >= 0 && looked < kLooksPerEdge;
             ++looked) {
            std::int32_t const back = open[static_cast<std::size_t>(i)];
            i = before[static_cast<std::size_t>(i)];
            if (!leftOut[static_cast<std::size_t>(edge)] && !leftOut[static_cast<std::size_t>(back)])
                continue;
            if (!LieOnEachOther(point(end), start, point(EndOf(mesh.triangles, back)))) continue;
            leftOut[static_cast<std::size_t>(edge)] = leftOut[static_cast<std::size_t>(back)] = false;
        }
    }
}

}  // namespace

std::size_t Rim::MostLooks(std::size_t edges) { return kLooksAtLeast + kLooksPerEdge * edges; }

Rim::Rim(FlatMesh const& mesh, EdgeTable const& edges, Of which, Pace const& pace) : m_Mesh(mesh) {
    std::vector<std::int32_t> local(mesh.points.size(), -1);
    auto const number = [&](std::int32_t point) {
        std::int32_t& n = local[static_cast<std::size_t>(point)];
        if (n < 0) {
            n = static_cast<std::int32_t>(m_Numbers.size());
            m_Numbers.push_back(point);
        }
        return n;
    };
    std::vector<bool> leftOut;
    if (!edges.twins.empty()) {
        leftOut.resize(edges.across.size());
        for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2) {
            std::int32_t const a = edges.twins[i];
            std::int32_t const b = edges.twins[i + 1];
            // Copies of one facet contradict nothing.
            bool const isLeftOut = ApexOf(mesh.triangles, a) != ApexOf(mesh.triangles, b);
            leftOut[static_cast<std::size_t>(a)] = leftOut[static_cast<std::size_t>(b)] = isLeftOut;
        }
        if (which == Of::kGapsAndCrossedTwins) LeaveInCrossed(mesh, edges, leftOut);
    }
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0 || (!leftOut.empty() && leftOut[i])) continue;
        auto const edge = static_cast<std::int32_t>(i);
        std::int32_t const start = number(StartOf(mesh.triangles, edge));
        m_Open.push_back({start, number(EndOf(mesh.triangles, edge)), edge, -1});
    }
    for (Open& open : m_Open) open.apex = local[static_cast<std::size_t>(ApexOf(mesh.triangles, open.edge))];
    for (std::int32_t const point : m_Numbers)
        m_Points.push_back(mesh.points[static_cast<std::size_t>(point)]);

    pace.At(0.0);
    for (Triangle const& t : mesh.triangles) {
        Triangle corners;
        for (std::size_t k = 0; k < 3; ++k) {
            std::int32_t const n = local[static_cast<std::size_t>(t[k])];
            corners[k] = n >= 0 ? n : ~t[k];
        }
        if (corners[0] < 0 && corners[1] < 0 && corners[2] < 0) continue;
        m_Facets.push_back(corners);
    }
}

Rim::Plan Rim::Try(double tolerance, Small small, Pace const& pace) const {
    Plan plan;
    std::vector<std::int32_t> const becomes = Join(tolerance, small, plan, pace);
    for (std::size_t i = 0; i < becomes.size(); ++i) {
        if (becomes[i] == static_cast<std::int32_t>(i)) continue;
        plan.joined.emplace_back(m_Numbers[i], m_Numbers[static_cast<std::size_t>(becomes[i])]);
    }
    Divide(OpenAfter(becomes, plan), tolerance, plan, pace);
    return plan;
}

// Points that a facet would lose, or be folded over by, stay as they are, with all that would become the same
// point.
std::vector<std::int32_t> Rim::Join(double tolerance, Small small, Plan& plan, Pace const& pace) const {
    std::vector<std::int32_t> becomes = JoinNear(m_Points, tolerance, pace);
    if (tolerance <= 0.0) return becomes;
    std::vector<char> spoilt(m_Points.size());
    // Groups are few, and most come apart at once.
    constexpr int kRounds = 16;
    int round = 0;
    for (bool again = true; again;) {
        if (++round > kRounds) {
            std::iota(becomes.begin(), becomes.end(), 0);
            return becomes;
        }
        again = false;
        for (Triangle const& corners : m_Facets) {
            Harm const harm = HarmTo(corners, becomes, tolerance);
            if (harm == Harm::kNone || (harm == Harm::kOfSmall && small == Small::kMayGo)) continue;
            plan.keptSmall |= harm == Harm::kOfSmall;
            for (std::int32_t const corner : corners) {
                if (corner < 0) continue;
                spoilt[static_cast<std::size_t>(becomes[static_cast<std::size_t>(corner)])] = 1;
                again = true;
            }
        }
        for (std::size_t i = 0; i < becomes.size(); ++i) {
            if (spoilt[static_cast<std::size_t>(becomes[i])]) becomes[i] = static_cast<std::int32_t>(i);
        }
        std::fill(spoilt.begin(), spoilt.end(), 0);
    }
    return becomes;
}

// Whether the facet would lose a corner or look the other way, and whether it is small.
Rim::Harm Rim::HarmTo(Triangle const& corners, std::vector<std::int32_t> const& becomes,
                      double tolerance) const {
    std::array<Point3, 3> before;
    std::array<Point3, 3> after;
    Triangle now;
    bool moved = false;
    for (std::size_t k = 0; k < 3; ++k) {
        std::int32_t const corner = corners[k];
        if (corner < 0) {
            std::int32_t const point = ~corner;
            now[k] = corner;
            before[k] = after[k] = m_Mesh.points[static_cast<std::size_t>(point)];
            continue;
        }
        now[k] = becomes[static_cast<std::size_t>(corner)];
        moved |= now[k] != corner;
        before[k] = m_Points[static_cast<std::size_t>(corner)];
        after[k] = m_Points[static_cast<std::size_t>(now[k])];
    }
    if (!moved) return Harm::kNone;
    if (now[0] == now[1] || now[1] == now[2] || now[2] == now[0]) return Harm::kOfSmall;
    double const area2 = DoubledArea(before[0], before[1], before[2]);
    if (area2 <= kCollinear) return Harm::kNone;
    if (Dot(Cross(before[1] - before[0], before[2] - before[0]),
            Cross(after[1] - after[0], after[2] - after[0])) > 0.0) {
        return Harm::kNone;
    }
    double const longest = std::max(
        {Length(before[1] - before[0]), Length(before[2] - before[1]), Length(before[0] - before[2])});
    return area2 <= tolerance * longest ? Harm::kOfSmall : Harm::kFolded;
}

std::vector<Rim::Open> Rim::OpenAfter(std::vector<std::int32_t> const& becomes, Plan& plan) const {
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < m_Open.size(); ++i) {
        std::int32_t const start = becomes[static_cast<std::size_t>(m_Open[i].start)];
        std::int32_t const end = becomes[static_cast<std::size_t>(m_Open[i].end)];
        std::int32_t const apex = m_Open[i].apex < 0 ? -1 : becomes[static_cast<std::size_t>(m_Open[i].apex)];
        if (start == end || start == apex || end == apex) {
            ++plan.vanished;
        } else {
            pieces.push_back({start, end, i, 0});
        }
    }
    Meet(pieces);
    std::vector<Open> open;
    for (Piece const& piece : pieces) {
        Open const& was = m_Open[piece.edge];
        if (!piece.met) open.push_back({piece.start, piece.end, was.edge, was.apex});
    }
    return open;
}

std::vector<std::int32_t> Rim::PointsOn(Open const& edge, double tolerance, PointTree const& tree,
                                        std::vector<std::int32_t> const& candidates, std::size_t most,
                                        std::size_t& looked) const {
    Point3 const& a = m_Points[static_cast<std::size_t>(edge.start)];
    Point3 const& b = m_Points[static_cast<std::size_t>(edge.end)];
    Point3 const way = b - a;
    double const square = Dot(way, way);
    double const near = std::max(tolerance, kRounding * std::max(LargestOf(a), LargestOf(b)));
    std::vector<std::pair<double, std::int32_t>> found;
    tree.NearLine(a, b, near, most, looked, [&](std::size_t i) {
        std::int32_t const number = candidates[i];
        if (number == edge.start || number == edge.end) return;
        Point3 const& p = m_Points[static_cast<std::size_t>(number)];
        double const share = Dot(p - a, way) / square;
        // A point as near to an end is to be joined with that end.
        double const length = std::sqrt(square);
        if (!(share * length > near && (1.0 - share) * length > near)) return;
        if (Length(p - (a + share * way)) <= near) found.emplace_back(share, number);
    });
    std::sort(found.begin(), found.end());
    std::vector<std::int32_t> points;
    points.reserve(found.size());
    for (auto const& [share, number] : found) points.push_back(number);
    return points;
}

// All edges are divided at all points on them, and the pieces compared. What stays open is put together
// again.
void Rim::Divide(std::vector<Open> const& open, double tolerance, Plan& plan, Pace const& pace) const {
    std::vector<std::int32_t> candidates;
    for (Open const& edge : open) {
        candidates.push_back(edge.start);
        candidates.push_back(edge.end);
    }
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    std::vector<Point3> points;
    points.reserve(candidates.size());
    for (std::int32_t const i : candidates) points.push_back(m_Points[static_cast<std::size_t>(i)]);
    PointTree const tree(points, pace.Between(0.0, 0.0));

    std::vector<Piece> pieces;
    // Where very many points lie near very many edges, these are not worth dividing.
    std::size_t looked = 0;
    std::size_t most = kLooksAtLeast;
    for (std::size_t i = 0; i < open.size(); ++i) {
        pace.Step(i, open.size());
        std::int32_t start = open[i].start;
        std::size_t place = 0;
        std::vector<std::int32_t> on;
        if (looked < most) most += kLooksPerEdge;
        if (looked < most) on = PointsOn(open[i], tolerance, tree, candidates, most, looked);
        for (std::int32_t const point : on) {
            pieces.push_back({start, point, i, place++});
            start = point;
        }
        pieces.push_back({start, open[i].end, i, place});
    }
    plan.gaveUp = looked >= most;
    plan.looks = looked;
    pace.At(1.0);
    Meet(pieces);
    for (std::size_t i = 0; i < pieces.size();) {
        Division division{open[pieces[i].edge].edge, {}};
        std::size_t end = i;
        bool wasMet = true;
        for (; end < pieces.size() && pieces[end].edge == pieces[i].edge; ++end) {
            bool const met = pieces[end].met;
            if (end != i && (met || wasMet)) {
                division.points.push_back(m_Numbers[static_cast<std::size_t>(pieces[end].start)]);
            }
            if (!met && (end == i || wasMet)) ++plan.open;
            wasMet = met;
        }
        if (!division.points.empty()) plan.divisions.push_back(std::move(division));
        i = end;
    }
}

}  // namespace varnet
