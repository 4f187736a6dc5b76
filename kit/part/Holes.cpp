#include "part/Holes.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <unordered_set>
#include <vector>

namespace varnet {

namespace {

using Rim = std::vector<std::int32_t>;  // open edges, each beginning where the one before ends

// The plain rims, in the order of their first edges.
std::vector<Rim> FindRims(FlatMesh const& mesh, EdgeTable const& edges) {
    constexpr std::int32_t kNone = -1;
    constexpr std::int32_t kSeveral = -2;
    std::vector<std::int32_t> leaving(mesh.points.size(), kNone);
    std::vector<std::int32_t> arriving(mesh.points.size(), kNone);
    auto const note = [](std::int32_t& place, std::int32_t edge) {
        place = place == kNone ? edge : kSeveral;
    };
    std::vector<std::int32_t> open;
    std::vector<bool> conflicts(edges.across.size());
    for (std::int32_t const edge : edges.twins) conflicts[static_cast<std::size_t>(edge)] = true;
    for (std::size_t i = 0; i < edges.across.size(); ++i) {
        if (edges.across[i] >= 0 || conflicts[i]) continue;
        auto const edge = static_cast<std::int32_t>(i);
        open.push_back(edge);
        note(leaving[static_cast<std::size_t>(StartOf(mesh.triangles, edge))], edge);
        note(arriving[static_cast<std::size_t>(EndOf(mesh.triangles, edge))], edge);
    }
    std::vector<bool> seen(edges.across.size());
    std::vector<Rim> rims;
    for (std::int32_t const first : open) {
        Rim rim;
        bool plain = true;
        for (std::int32_t edge = first; plain && !seen[static_cast<std::size_t>(edge)];) {
            seen[static_cast<std::size_t>(edge)] = true;
            rim.push_back(edge);
            auto const corner = static_cast<std::size_t>(EndOf(mesh.triangles, edge));
            plain = leaving[corner] >= 0 && arriving[corner] >= 0;
            if (plain) edge = leaving[corner];
            if (plain && edge == first) break;
        }
        if (rim.empty() || !plain) continue;
        if (EndOf(mesh.triangles, rim.back()) == StartOf(mesh.triangles, first))
            rims.push_back(std::move(rim));
    }
    return rims;
}

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

// The triangulation of least area of a polygon in space.
class LeastArea {
public:
    LeastArea(FlatMesh const& mesh, Rim const& rim, KnownEdges const* avoided, Pace const& pace)
        : m_Count(rim.size()), m_Cost(m_Count * m_Count), m_Middle(m_Count * m_Count) {
        // The rim the other way round: so the facets behind it are met.
        for (std::size_t i = 0; i < m_Count; ++i) {
            std::int32_t const corner = StartOf(mesh.triangles, rim[m_Count - 1 - i]);
            m_Corners.push_back(corner);
            m_Points.push_back(mesh.points[static_cast<std::size_t>(corner)]);
        }
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
    std::vector<std::int32_t> m_Corners;
    std::vector<Point3> m_Points;
};

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
    std::vector<Rim> const rims = FindRims(mesh, edges);
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
        if (rim.size() > kMostRimEdges) {
            ++counts.tooMany;
            continue;
        }
        LeastArea const careful(mesh, rim, &known, pace.Between(share, share));
        if (careful.IsPossible()) {
            careful.AddTo(added);
        } else {
            LeastArea(mesh, rim, nullptr, pace.Between(share, share)).AddTo(added);
        }
        ++counts.filled;
    }
    counts.facetsAdded = static_cast<std::int64_t>(added.size());
    mesh.triangles.insert(mesh.triangles.end(), added.begin(), added.end());
    return counts;
}

}  // namespace varnet
