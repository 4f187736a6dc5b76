#include "part/Bodies.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace varnet {

namespace {

// Facets whose angles about an edge differ by less than this, in radians, coincide: what corners of floats
// leave uncertain.
constexpr double kSameAngle = 1e-6;

struct Spoke {
    double angle;
    std::int32_t edge;
    bool ends;          // the solid lies before it, counter-clockwise
    std::int32_t rank;  // how many of the crowd before it have the same corners in the same order
};

// Two directions across the axis, of any length, at right angles: counter-clockwise about it.
struct Frame {
    Point3 x;
    Point3 y;
};

Frame FrameAbout(Point3 const& axis) {
    double const ax = std::fabs(axis.x);
    double const ay = std::fabs(axis.y);
    double const az = std::fabs(axis.z);
    Point3 const least = ax <= ay && ax <= az ? Point3{1, 0, 0}
                         : ay <= az           ? Point3{0, 1, 0}
                                              : Point3{0, 0, 1};
    Point3 x = Cross(axis, least);
    x = (1.0 / Length(x)) * x;
    Point3 y = Cross(axis, x);
    y = (1.0 / Length(axis)) * y;
    return {x, y};
}

class Crowd {
public:
    Crowd(FlatMesh const& mesh, std::span<std::int32_t const> edges) : m_Mesh(mesh) {
        std::int32_t const u = std::min(StartOf(mesh.triangles, edges[0]), EndOf(mesh.triangles, edges[0]));
        std::int32_t const v = std::max(StartOf(mesh.triangles, edges[0]), EndOf(mesh.triangles, edges[0]));
        Frame const frame = FrameAbout(Point(v) - Point(u));
        for (std::int32_t const edge : edges) {
            std::int32_t const apex = ApexOf(mesh.triangles, edge);
            Point3 const arm = Point(apex) - Point(u);
            bool const ends = StartOf(mesh.triangles, edge) == u;
            m_Spokes.push_back({std::atan2(Dot(arm, frame.y), Dot(arm, frame.x)), edge, ends, 0});
        }
        RankCopies();
        Sort();
    }

    // Calls pair(a, b) for the edges that face each other, then odd(a) for those that are left.
    template <class PairUp, class LeaveOdd>
    void ForEachPair(PairUp const& pair, LeaveOdd const& odd) {
        std::vector<Spoke const*> begun;
        std::vector<Spoke const*> unmatched;
        for (Spoke const& spoke : m_Spokes) {
            if (!spoke.ends) {
                begun.push_back(&spoke);
            } else if (begun.empty()) {
                unmatched.push_back(&spoke);
            } else {
                pair(begun.back()->edge, spoke.edge);
                begun.pop_back();
            }
        }
        // What begins before the start of the circle ends behind it.
        for (Spoke const* const spoke : unmatched) {
            if (begun.empty()) {
                odd(spoke->edge);
            } else {
                pair(begun.back()->edge, spoke->edge);
                begun.pop_back();
            }
        }
        for (Spoke const* const spoke : begun) odd(spoke->edge);
    }

private:
    Point3 const& Point(std::int32_t i) const { return m_Mesh.points[static_cast<std::size_t>(i)]; }

    void RankCopies() {
        auto const apex = [this](Spoke const& s) { return ApexOf(m_Mesh.triangles, s.edge); };
        std::sort(m_Spokes.begin(), m_Spokes.end(), [&](Spoke const& a, Spoke const& b) {
            if (apex(a) != apex(b)) return apex(a) < apex(b);
            if (a.ends != b.ends) return a.ends;
            return a.edge / 3 < b.edge / 3;
        });
        for (std::size_t i = 1; i < m_Spokes.size(); ++i) {
            bool const copy =
                apex(m_Spokes[i]) == apex(m_Spokes[i - 1]) && m_Spokes[i].ends == m_Spokes[i - 1].ends;
            if (copy) m_Spokes[i].rank = m_Spokes[i - 1].rank + 1;
        }
    }

    // By angle, beginning behind a gap; spokes that coincide in the order that pairs them well.
    void Sort() {
        std::stable_sort(m_Spokes.begin(), m_Spokes.end(),
                         [](Spoke const& a, Spoke const& b) { return a.angle < b.angle; });
        std::size_t const count = m_Spokes.size();
        auto const gapBehind = [&](std::size_t i) {
            double const next =
                i + 1 < count ? m_Spokes[i + 1].angle : m_Spokes[0].angle + 2 * std::numbers::pi;
            return next - m_Spokes[i].angle > kSameAngle;
        };
        std::size_t last = count - 1;
        while (last > 0 && !gapBehind(last)) --last;
        std::vector<bool> gap(count);
        for (std::size_t i = 0; i < count; ++i) gap[i] = gapBehind((last + 1 + i) % count);
        std::rotate(m_Spokes.begin(), m_Spokes.begin() + static_cast<std::ptrdiff_t>((last + 1) % count),
                    m_Spokes.end());
        for (std::size_t i = 0; i < count;) {
            std::size_t end = i + 1;
            while (end < count && !gap[end - 1]) ++end;
            std::sort(m_Spokes.begin() + static_cast<std::ptrdiff_t>(i),
                      m_Spokes.begin() + static_cast<std::ptrdiff_t>(end),
                      [](Spoke const& a, Spoke const& b) {
                          if (a.ends != b.ends) return a.ends;
                          // The first copies of what ends and of what begins stand next to each other.
                          if (a.rank != b.rank) return a.ends ? a.rank < b.rank : a.rank > b.rank;
                          return a.edge < b.edge;
                      });
            i = end;
        }
    }

    FlatMesh const& m_Mesh;
    std::vector<Spoke> m_Spokes;
};

std::int32_t FindRoot(std::vector<std::int32_t>& parent, std::int32_t i) {
    while (parent[static_cast<std::size_t>(i)] != i) {
        std::int32_t& up = parent[static_cast<std::size_t>(i)];
        up = parent[static_cast<std::size_t>(up)];
        i = up;
    }
    return i;
}

}  // namespace

void PairByAngle(FlatMesh const& mesh, EdgeTable& edges) {
    for (std::size_t g = 0; g + 1 < edges.groups.size(); ++g) {
        std::span<std::int32_t const> const group(edges.crowd.data() + edges.groups[g],
                                                  edges.crowd.data() + edges.groups[g + 1]);
        for (std::int32_t const edge : group) edges.across[static_cast<std::size_t>(edge)] = -1;
        std::int32_t before = -1;
        Crowd crowd(mesh, group);
        crowd.ForEachPair(
            [&](std::int32_t a, std::int32_t b) {
                edges.across[static_cast<std::size_t>(a)] = b;
                edges.across[static_cast<std::size_t>(b)] = a;
            },
            [&](std::int32_t odd) {
                if (before < 0) {
                    before = odd;
                    return;
                }
                edges.twins.push_back(before);
                edges.twins.push_back(odd);
                before = -1;
            });
    }
}

// Disjoint sets of facets, in the order of the file, where neighbours mostly stand near each other.
BodyLabels LabelBodies(std::size_t facets, EdgeTable const& edges) {
    BodyLabels labels;
    labels.ofFacet.resize(facets);
    std::iota(labels.ofFacet.begin(), labels.ofFacet.end(), 0);
    auto const join = [&labels](std::int32_t a, std::int32_t b) {
        a = FindRoot(labels.ofFacet, a);
        b = FindRoot(labels.ofFacet, b);
        labels.ofFacet[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    };
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0 && edges.across[i] < static_cast<std::int32_t>(i)) {
            join(static_cast<std::int32_t>(i / 3), edges.across[i] / 3);
        }
    }
    for (std::size_t i = 0; i + 1 < edges.twins.size(); i += 2)
        join(edges.twins[i] / 3, edges.twins[i + 1] / 3);
    // A set's first facet is its root, and is numbered before the others.
    for (std::size_t i = 0; i < facets; ++i) {
        std::int32_t& label = labels.ofFacet[i];
        label = label == static_cast<std::int32_t>(i) ? ~labels.count++
                                                      : labels.ofFacet[static_cast<std::size_t>(label)];
    }
    for (std::int32_t& label : labels.ofFacet) label = ~label;
    return labels;
}

MeshMeasures Measure(std::span<Point3 const> points, std::span<Triangle const> triangles,
                     std::int64_t openEdges) {
    MeshMeasures measures;
    measures.openEdges = openEdges;
    if (triangles.empty()) return measures;
    auto const point = [points](std::int32_t i) { return points[static_cast<std::size_t>(i)]; };
    FacetSums sums;
    sums.about = point(triangles[0][0]);
    for (Triangle const& t : triangles) {
        for (std::int32_t const corner : t) measures.box.Add(point(corner));
        Point3 const a = point(t[0]);
        Point3 const normal = Cross(point(t[1]) - a, point(t[2]) - a);
        sums.area2 += Length(normal);
        sums.volume6 += Dot(a - sums.about, normal);
        sums.normals = sums.normals + normal;
    }
    MeshMeasures const rest = MeasuresFrom(sums, {}, openEdges);
    measures.area = rest.area;
    measures.volume = rest.volume;
    return measures;
}

MeshMeasures MeasuresFrom(FacetSums const& sums, std::span<Point3 const> points, std::int64_t openEdges) {
    MeshMeasures measures;
    measures.openEdges = openEdges;
    for (Point3 const& p : points) measures.box.Add(p);
    measures.area = sums.area2 / 2.0;
    double const moved = openEdges == 0 ? 0.0 : Dot(sums.about, sums.normals);
    measures.volume = (sums.volume6 + moved) / 6.0;
    return measures;
}

double SureVolume(MeshMeasures const& measures) {
    constexpr double kRounding = 1e-9;
    double const extent = Length(measures.box.max - measures.box.min);
    return std::fabs(measures.volume) > kRounding * measures.area * extent ? measures.volume : 0.0;
}

namespace {

// What hangs together by the open edges at the corners of a rim, and where its middle is.
class Rims {
public:
    Rims(std::span<Triangle const> triangles, std::span<std::int32_t const> open) {
        for (std::int32_t const edge : open) {
            m_Corners.push_back(StartOf(triangles, edge));
            m_Corners.push_back(EndOf(triangles, edge));
        }
        std::sort(m_Corners.begin(), m_Corners.end());
        m_Corners.erase(std::unique(m_Corners.begin(), m_Corners.end()), m_Corners.end());
        m_RimOf.resize(m_Corners.size());
        std::iota(m_RimOf.begin(), m_RimOf.end(), 0);
        for (std::int32_t const edge : open) {
            std::int32_t const a = FindRoot(m_RimOf, PlaceOf(StartOf(triangles, edge)));
            std::int32_t const b = FindRoot(m_RimOf, PlaceOf(EndOf(triangles, edge)));
            m_RimOf[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
        }
    }

    // The middle of the corners of each rim, at the place of the rim.
    std::vector<Point3> Middles(std::span<Point3 const> points) {
        std::vector<Point3> middles(m_Corners.size());
        std::vector<double> counts(m_Corners.size());
        for (std::size_t i = 0; i < m_Corners.size(); ++i) {
            auto const rim = static_cast<std::size_t>(FindRoot(m_RimOf, static_cast<std::int32_t>(i)));
            middles[rim] = middles[rim] + points[static_cast<std::size_t>(m_Corners[i])];
            counts[rim] += 1.0;
        }
        for (std::size_t i = 0; i < middles.size(); ++i) {
            if (counts[i] > 0.0) middles[i] = (1.0 / counts[i]) * middles[i];
        }
        return middles;
    }
    std::size_t RimOf(std::int32_t corner) {
        return static_cast<std::size_t>(FindRoot(m_RimOf, PlaceOf(corner)));
    }

private:
    std::int32_t PlaceOf(std::int32_t corner) const {
        auto const at = std::lower_bound(m_Corners.begin(), m_Corners.end(), corner);
        return static_cast<std::int32_t>(at - m_Corners.begin());
    }

    std::vector<std::int32_t> m_Corners;  // of all rims, in order
    std::vector<std::int32_t> m_RimOf;    // a disjoint set of places of those
};

}  // namespace

double ClosedVolume(std::span<Point3 const> points, std::span<Triangle const> triangles,
                    std::span<std::int32_t const> open) {
    if (triangles.empty()) return 0.0;
    auto const point = [points](std::int32_t i) { return points[static_cast<std::size_t>(i)]; };
    Point3 const about = point(triangles[0][0]);
    MeshMeasures measures;
    auto const add = [&](Point3 const& a, Point3 const& b, Point3 const& c) {
        Point3 const normal = Cross(b - a, c - a);
        measures.area += Length(normal) / 2.0;
        measures.volume += Dot(a - about, normal) / 6.0;
    };
    for (Triangle const& t : triangles) {
        for (std::int32_t const corner : t) measures.box.Add(point(corner));
        add(point(t[0]), point(t[1]), point(t[2]));
    }
    Rims rims(triangles, open);
    std::vector<Point3> const middles = rims.Middles(points);
    for (std::int32_t const edge : open) {
        std::int32_t const start = StartOf(triangles, edge);
        add(point(EndOf(triangles, edge)), point(start), middles[rims.RimOf(start)]);
    }
    return SureVolume(measures);
}

}  // namespace varnet
