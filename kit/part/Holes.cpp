#include "part/Holes.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <vector>

namespace varnet {

namespace {

using Rim = std::vector<std::int32_t>;  // open edges, each beginning where the one before ends

// Walks along open edges, and tells the rims: ways around that come by no corner twice. What a walk that
// comes by a corner again has gone around is a rim of its own.
class RimWalk {
public:
    RimWalk(FlatMesh const& mesh, EdgeTable const& edges)
        : m_Mesh(mesh), m_First(mesh.points.size() + 1), m_Place(mesh.points.size(), kNowhere) {
        std::vector<bool> conflicts(edges.across.size());
        for (std::int32_t const edge : edges.twins) conflicts[static_cast<std::size_t>(edge)] = true;
        for (std::size_t i = 0; i < edges.across.size(); ++i) {
            if (edges.across[i] < 0 && !conflicts[i]) m_Open.push_back(static_cast<std::int32_t>(i));
        }
        for (std::int32_t const edge : m_Open) ++m_First[Start(edge) + 1];
        for (std::size_t i = 1; i < m_First.size(); ++i) m_First[i] += m_First[i - 1];
        m_Begin.assign(m_First.begin(), m_First.end() - 1);
        m_Leaving.resize(m_Open.size());
        for (std::int32_t const edge : m_Open) m_Leaving[m_Begin[Start(edge)]++] = edge;
        m_Begin.assign(m_First.begin(), m_First.end() - 1);
        m_Walked.resize(edges.across.size());
    }

    // In the order in which they are closed. Edges that no way around has, which those of two facets that
    // contradict each other leave, are in none.
    std::vector<Rim> Rims() {
        std::vector<Rim> rims;
        for (std::int32_t const first : m_Open) {
            Rim way;
            for (std::int32_t edge = first; edge >= 0 && !m_Walked[static_cast<std::size_t>(edge)];) {
                m_Walked[static_cast<std::size_t>(edge)] = true;
                m_Place[Start(edge)] = static_cast<std::int32_t>(way.size());
                way.push_back(edge);
                std::int32_t const back = m_Place[End(edge)];
                if (back != kNowhere) {
                    rims.emplace_back(way.begin() + back, way.end());
                    Leave(way, static_cast<std::size_t>(back));
                    if (way.empty()) break;
                }
                edge = FirstAfter(edge);
            }
            Leave(way, 0);
        }
        return rims;
    }

private:
    static constexpr std::int32_t kNowhere = -1;
    static constexpr double kOverlap = 4.0;  // how much more a turn counts that goes the other way
    static constexpr std::size_t kMostTurns = 64;

    std::size_t Start(std::int32_t edge) const {
        return static_cast<std::size_t>(StartOf(m_Mesh.triangles, edge));
    }
    std::size_t End(std::int32_t edge) const {
        return static_cast<std::size_t>(EndOf(m_Mesh.triangles, edge));
    }

    // Takes the way back to so many edges.
    void Leave(Rim& way, std::size_t count) {
        for (std::size_t i = count; i < way.size(); ++i) m_Place[Start(way[i])] = kNowhere;
        way.resize(count);
    }

    // Of the edges that leave the end of one, the first that a turn about that corner comes to, away from the
    // facet: what is between the two is the hole. -1 where all have been walked. In a crack whose sides
    // overlap a little, the turn goes the other way. Where very many leave, some of them are looked at.
    std::int32_t FirstAfter(std::int32_t edge) {
        std::size_t const corner = End(edge);
        std::size_t& begin = m_Begin[corner];
        std::size_t const end = m_First[corner + 1];
        while (begin < end && m_Walked[static_cast<std::size_t>(m_Leaving[begin])]) ++begin;
        Point3 const outside = Outside(edge);
        Point3 const back = m_Mesh.points[Start(edge)] - m_Mesh.points[corner];
        std::int32_t first = -1;
        double least = 0.0;
        for (std::size_t i = begin; i < std::min(end, begin + kMostTurns); ++i) {
            std::int32_t const next = m_Leaving[i];
            if (m_Walked[static_cast<std::size_t>(next)]) continue;
            double const away = Turn(outside, back, m_Mesh.points[End(next)] - m_Mesh.points[corner]);
            double const turn = std::min(away, kOverlap * (4.0 - away));
            if (first >= 0 && !(turn < least)) continue;
            first = next;
            least = turn;
        }
        return first;
    }

    // From one direction to another, counter-clockwise about an axis of length 1; 4 for a full turn.
    static double Turn(Point3 const& axis, Point3 const& from, Point3 const& to) {
        double const x = Dot(to, from) - Dot(to, axis) * Dot(from, axis);
        double const y = Dot(to, Cross(axis, from));
        double const sum = std::fabs(x) + std::fabs(y);
        if (!(sum > 0.0)) return 0.0;
        return y >= 0.0 ? 1.0 - x / sum : 3.0 + x / sum;
    }

    // The normal of an edge's facet.
    Point3 Outside(std::int32_t edge) const {
        Triangle const& t = m_Mesh.triangles[static_cast<std::size_t>(edge / 3)];
        Point3 const& a = m_Mesh.points[static_cast<std::size_t>(t[0])];
        Point3 const normal = Cross(m_Mesh.points[static_cast<std::size_t>(t[1])] - a,
                                    m_Mesh.points[static_cast<std::size_t>(t[2])] - a);
        double const length = Length(normal);
        return length > 0.0 ? (1.0 / length) * normal : Point3{};
    }

    FlatMesh const& m_Mesh;
    std::vector<std::int32_t> m_Open;
    std::vector<std::size_t> m_First;     // of the edges that leave a point, in m_Leaving
    std::vector<std::size_t> m_Begin;     // the same, of those that may not have been walked
    std::vector<std::int32_t> m_Leaving;  // open edges by the points where they start
    std::vector<std::int32_t> m_Place;    // of the edge that leaves a point, on the way; kNowhere
    std::vector<bool> m_Walked;
};

// The edges of the mesh between points of rims.
class KnownEdges {
public:
    KnownEdges(FlatMesh const& mesh, std::vector<Rim> const& rims) {
        std::vector<bool> onRim(mesh.points.size());
        for (Rim const& rim : rims) {
            for (std::int32_t const edge : rim)
                onRim[static_cast<std::size_t>(StartOf(mesh.triangles, edge))] = true;
        }
        for (Triangle const& t : mesh.triangles) {
            for (std::size_t k = 0; k < 3; ++k) {
                std::int32_t const a = t[k];
                std::int32_t const b = t[(k + 1) % 3];
                if (onRim[static_cast<std::size_t>(a)] && onRim[static_cast<std::size_t>(b)])
                    m_Keys.insert(Key(a, b));
            }
        }
    }
    bool Has(std::int32_t a, std::int32_t b) const { return m_Keys.contains(Key(a, b)); }

private:
    static std::uint64_t Key(std::int32_t a, std::int32_t b) {
        return static_cast<std::uint64_t>(std::min(a, b)) << 32 | static_cast<std::uint32_t>(std::max(a, b));
    }
    std::unordered_set<std::uint64_t> m_Keys;
};

// A polygon in space, by the numbers of its corners.
using Polygon = std::vector<std::int32_t>;

// Its triangulation of least area.
class LeastArea {
public:
    LeastArea(FlatMesh const& mesh, Polygon const& corners, KnownEdges const* avoided, Pace const& pace)
        : m_Count(corners.size()),
          m_Cost(m_Count * m_Count),
          m_Middle(m_Count * m_Count),
          m_Corners(corners) {
        for (std::int32_t const corner : corners)
            m_Points.push_back(mesh.points[static_cast<std::size_t>(corner)]);
        constexpr double kNever = std::numeric_limits<double>::infinity();
        for (std::size_t width = 2; width < m_Count; ++width) {
            pace.At(0.0);
            for (std::size_t i = 0; i + width < m_Count; ++i) {
                std::size_t const j = i + width;
                double least = kNever;
                std::size_t middle = i + 1;
                bool const isRim = width == m_Count - 1;
                if (isRim || avoided == nullptr || !avoided->Has(m_Corners[i], m_Corners[j])) {
                    for (std::size_t k = i + 1; k < j; ++k) {
                        double const cost =
                            Cost(i, k) + Cost(k, j) +
                            Length(Cross(m_Points[k] - m_Points[i], m_Points[j] - m_Points[i]));
                        if (cost < least) {
                            least = cost;
                            middle = k;
                        }
                    }
                }
                m_Cost[i * m_Count + j] = least;
                m_Middle[i * m_Count + j] = static_cast<std::int32_t>(middle);
            }
        }
    }

    bool IsPossible() const { return Cost(0, m_Count - 1) < std::numeric_limits<double>::infinity(); }

    void AddTo(std::vector<Triangle>& triangles) const {
        std::vector<std::pair<std::size_t, std::size_t>> open = {{0, m_Count - 1}};
        while (!open.empty()) {
            auto const [i, j] = open.back();
            open.pop_back();
            if (j - i < 2) continue;
            auto const k = static_cast<std::size_t>(m_Middle[i * m_Count + j]);
            triangles.push_back({m_Corners[i], m_Corners[k], m_Corners[j]});
            open.emplace_back(i, k);
            open.emplace_back(k, j);
        }
    }

private:
    double Cost(std::size_t i, std::size_t j) const { return m_Cost[i * m_Count + j]; }

    std::size_t m_Count;
    std::vector<double> m_Cost;
    std::vector<std::int32_t> m_Middle;
    Polygon const& m_Corners;
    std::vector<Point3> m_Points;
};

// Adds the facets of a polygon. One of many corners is divided: facets between corners at even distances
// along it, and the polygons between these and the rim.
void Triangulate(FlatMesh const& mesh, Polygon const& whole, KnownEdges const& known,
                 std::vector<Triangle>& added, Pace const& pace) {
    std::vector<Polygon> open = {whole};
    while (!open.empty()) {
        Polygon const polygon = std::move(open.back());
        open.pop_back();
        Polygon coarse = polygon;
        if (polygon.size() > kMostRimEdges) {
            coarse.clear();
            for (std::size_t i = 0; i < kCoarseCorners; ++i) {
                std::size_t const from = i * polygon.size() / kCoarseCorners;
                std::size_t const to = (i + 1) * polygon.size() / kCoarseCorners;
                coarse.push_back(polygon[from]);
                if (to - from < 2) continue;
                Polygon& between = open.emplace_back();
                for (std::size_t k = from; k <= to; ++k) between.push_back(polygon[k % polygon.size()]);
            }
        }
        LeastArea const careful(mesh, coarse, &known, pace);
        if (careful.IsPossible()) {
            careful.AddTo(added);
        } else {
            LeastArea(mesh, coarse, nullptr, pace).AddTo(added);
        }
    }
}

double LengthOf(FlatMesh const& mesh, Rim const& rim) {
    double length = 0.0;
    for (std::int32_t const edge : rim) {
        length += Length(mesh.points[static_cast<std::size_t>(EndOf(mesh.triangles, edge))] -
                         mesh.points[static_cast<std::size_t>(StartOf(mesh.triangles, edge))]);
    }
    return length;
}

bool IsLooseFacet(Rim const& rim) {
    return rim.size() == 3 && rim[0] / 3 == rim[1] / 3 && rim[1] / 3 == rim[2] / 3;
}

}  // namespace

HoleCounts FillHoles(FlatMesh& mesh, EdgeTable const& edges, double longest, Pace const& pace) {
    HoleCounts counts;
    std::vector<Rim> const rims = RimWalk(mesh, edges).Rims();
    KnownEdges const known(mesh, rims);
    std::vector<Triangle> added;
    for (std::size_t i = 0; i < rims.size(); ++i) {
        double const share = static_cast<double>(i) / static_cast<double>(rims.size());
        Rim const& rim = rims[i];
        if (rim.size() < 3 || IsLooseFacet(rim)) continue;
        if (!(LengthOf(mesh, rim) <= longest)) {
            ++counts.tooLong;
            continue;
        }
        // The rim the other way round: so the facets behind it are met.
        Polygon polygon;
        for (std::size_t k = rim.size(); k-- > 0;) polygon.push_back(StartOf(mesh.triangles, rim[k]));
        Triangulate(mesh, polygon, known, added, pace.Between(share, share));
        ++counts.filled;
    }
    counts.facetsAdded = static_cast<std::int64_t>(added.size());
    mesh.triangles.insert(mesh.triangles.end(), added.begin(), added.end());
    return counts;
}

}  // namespace varnet
