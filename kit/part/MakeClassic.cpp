// A part as a classic model, built in bulk: the part knows which corners are one, so that each point goes
// down the model's tree once, where AddFacet goes down three times a facet and looks for the facet itself,
// too.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

#include "part/Classic.h"

namespace varnet {

namespace {

// Which facets the model takes: all, but of those on the same three corners one, or none.
class Choice {
public:
    Choice(std::span<Triangle const> triangles, std::size_t points)
        : m_Triangles(triangles), m_Kept(triangles.size(), true) {
        // Facets on the same corners have the same lowest one: they are brought together by that.
        std::vector<std::int32_t> starts(points + 1, 0);
        for (Triangle const& t : triangles) ++starts[LowestOf(t) + 1];
        for (std::size_t i = 0; i < points; ++i) starts[i + 1] += starts[i];
        std::vector<std::int32_t> order(triangles.size());
        for (std::size_t i = 0; i < triangles.size(); ++i)
            order[static_cast<std::size_t>(starts[LowestOf(triangles[i])]++)] = static_cast<std::int32_t>(i);
        // Each start is now where the next corner's facets begin.
        std::int32_t first = 0;
        for (std::size_t i = 0; i < points; ++i) {
            std::int32_t const end = starts[i];
            DecideAmong(std::span(order).subspan(static_cast<std::size_t>(first),
                                                 static_cast<std::size_t>(end - first)));
            first = end;
        }
    }
    bool Keeps(std::size_t facet) const { return m_Kept[facet]; }

private:
    // More facets than this with one lowest corner are sorted.
    static constexpr std::size_t kFew = 8;

    static std::size_t LowestOf(Triangle const& t) {
        return static_cast<std::size_t>(std::min({t[0], t[1], t[2]}));
    }
    // The corners but the lowest one, the lesser first.
    static std::uint64_t OthersOf(Triangle const& t) {
        std::int32_t const high = std::max({t[0], t[1], t[2]});
        std::int32_t const middle = std::max(std::min(t[0], t[1]), std::min(std::max(t[0], t[1]), t[2]));
        return static_cast<std::uint64_t>(middle) << 32 | static_cast<std::uint32_t>(high);
    }
    static bool IsEven(Triangle const& t) {
        return (t[0] < t[1] && t[1] < t[2]) || (t[1] < t[2] && t[2] < t[0]) || (t[2] < t[0] && t[0] < t[1]);
    }
    std::uint64_t KeyOf(std::int32_t facet) const {
        return OthersOf(m_Triangles[static_cast<std::size_t>(facet)]);
    }

    // Facets with one lowest corner, in their order.
    void DecideAmong(std::span<std::int32_t> facets) {
        if (facets.size() <= kFew) {
            std::array<std::uint64_t, kFew> keys;
            bool twice = false;
            for (std::size_t i = 0; i < facets.size(); ++i) {
                keys[i] = KeyOf(facets[i]);
                for (std::size_t k = 0; k < i; ++k) twice |= keys[k] == keys[i];
            }
            if (!twice) return;
        }
        std::sort(facets.begin(), facets.end(), [this](std::int32_t a, std::int32_t b) {
            return KeyOf(a) != KeyOf(b) ? KeyOf(a) < KeyOf(b) : a < b;
        });
        for (std::size_t i = 0; i < facets.size();) {
            std::size_t end = i + 1;
            while (end < facets.size() && KeyOf(facets[end]) == KeyOf(facets[i])) ++end;
            if (end - i > 1) Decide(facets.subspan(i, end - i));
            i = end;
        }
    }

    // Facets on the same corners: the first of those that are more than the ones that face the other way.
    void Decide(std::span<std::int32_t const> facets) {
        int balance = 0;
        for (std::int32_t const facet : facets) balance += IsEvenAt(facet) ? 1 : -1;
        bool wanted = balance != 0;
        for (std::int32_t const facet : facets) {
            bool const keep = wanted && IsEvenAt(facet) == (balance > 0);
            m_Kept[static_cast<std::size_t>(facet)] = keep;
            if (keep) wanted = false;
        }
    }
    bool IsEvenAt(std::int32_t facet) const { return IsEven(m_Triangles[static_cast<std::size_t>(facet)]); }

    std::span<Triangle const> m_Triangles;
    std::vector<bool> m_Kept;
};

CPoint3D Classic(Point3 const& p) { return {p.x, p.y, p.z}; }

// The corners with the lowest in front and the winding kept; the earlier one in a tie.
std::array<tagVertexNode*, 3> LowestFirst(std::array<tagVertexNode*, 3> const& corners) {
    auto const [a, b, c] = corners;
    if (b->z >= a->z && c->z >= a->z) return {a, b, c};
    if (b->z < a->z && c->z >= b->z) return {b, c, a};
    return {c, a, b};
}

class Builder {
public:
    Builder(std::span<Point3 const> points, std::span<Triangle const> triangles, FacetLists lists)
        : m_Points(points), m_Triangles(triangles), m_Lists(lists), m_Choice(triangles, points.size()) {
        m_Mesh.model = NewModel();
    }

    ClassicMesh Build() {
        AddVertices();
        // Points at one place are one vertex: the model finds out what of that is a facet.
        if (m_Mesh.model->m_VertexTree.m_nCount == m_Added) {
            AddFacets();
            AddLists();
        } else {
            OfferFacets();
        }
        return std::move(m_Mesh);
    }

private:
    static std::unique_ptr<CSTLModel> NewModel() {
        auto model = std::make_unique<CSTLModel>();
        model->m_VertexTree.m_dTolerance = 0.0;
        return model;
    }
    // In the order of the facets' corners, which makes the shape of the tree.
    void AddVertices() {
        m_Vertices.assign(m_Points.size(), nullptr);
        for (std::size_t i = 0; i < m_Triangles.size(); ++i) {
            if (!m_Choice.Keeps(i)) continue;
            for (std::int32_t const corner : m_Triangles[i]) {
                tagVertexNode*& vertex = m_Vertices[static_cast<std::size_t>(corner)];
                if (vertex != nullptr) continue;
                CPoint3D point = Classic(m_Points[static_cast<std::size_t>(corner)]);
                vertex = m_Mesh.model->m_VertexTree.AddNode(point);
                ++m_Added;
            }
        }
    }

    void AddFacets() {
        auto& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
        m_Mesh.triangles.reserve(m_Triangles.size());
        m_Uses.assign(m_Points.size(), 0);
        for (std::size_t i = 0; i < m_Triangles.size(); ++i) {
            Triangle const& t = m_Triangles[i];
            if (!m_Choice.Keeps(i) || t[0] == t[1] || t[1] == t[2] || t[2] == t[0]) continue;
            auto const [a, b, c] = LowestFirst({m_Vertices[static_cast<std::size_t>(t[0])],
                                                m_Vertices[static_cast<std::size_t>(t[1])],
                                                m_Vertices[static_cast<std::size_t>(t[2])]});
            std::array<float, 3> normal{};
            auto owned = std::make_unique<CFacet>(a, b, c, normal.data());
            owned->CalculateNormal();
            // A unit vector is nowhere as long: this normal says that the facet is degenerate.
            if (owned->m_fNormal[0] == 1.0f && owned->m_fNormal[1] == 1.0f) continue;
            facets.Add(owned.get());
            CFacet* const facet = owned.release();
            facet->m_nFlag = c->z < b->z ? FACET_SLOPE_LOW : FACET_SLOPE_HIGH;
            m_Mesh.triangles.push_back(static_cast<std::int32_t>(i));
            for (std::int32_t const corner : t) ++m_Uses[static_cast<std::size_t>(corner)];
        }
        m_Mesh.model->m_Status.m_nFacetNum = facets.GetSize();
    }

    // The facets of each vertex, in their order.
    void AddLists() {
        if (m_Lists == FacetLists::kLent) {
            m_Mesh.lists.Lend(m_Vertices, m_Uses);
        } else {
            MakeOwnLists();
        }
        auto const& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            CFacet* const facet = facets[static_cast<int>(i)];
            for (std::int32_t const corner : m_Triangles[static_cast<std::size_t>(m_Mesh.triangles[i])]) {
                tagVertexNode& vertex = *m_Vertices[static_cast<std::size_t>(corner)];
                vertex.m_ppFacet[vertex.m_nFacetNum++] = facet;
            }
        }
    }

    // From malloc, as the library frees them.
    void MakeOwnLists() {
        for (std::size_t i = 0; i < m_Points.size(); ++i) {
            if (m_Uses[i] == 0) continue;
            m_Vertices[i]->m_ppFacet =
                static_cast<CFacet**>(std::malloc(static_cast<std::size_t>(m_Uses[i]) * sizeof(CFacet*)));
            if (m_Vertices[i]->m_ppFacet == nullptr) throw std::bad_alloc();
        }
    }

    void OfferFacets() {
        m_Mesh.model = NewModel();
        auto const& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
        for (std::size_t i = 0; i < m_Triangles.size(); ++i) {
            if (!m_Choice.Keeps(i)) continue;
            tagFACET facet;
            for (std::size_t k = 0; k < 3; ++k)
                facet.m_ptVertex[k] = Classic(m_Points[static_cast<std::size_t>(m_Triangles[i][k])]);
            int const before = facets.GetSize();
            m_Mesh.model->AddFacet(facet);
            if (facets.GetSize() != before) m_Mesh.triangles.push_back(static_cast<std::int32_t>(i));
        }
    }

    std::span<Point3 const> m_Points;
    std::span<Triangle const> m_Triangles;
    FacetLists m_Lists;
    Choice m_Choice;
    ClassicMesh m_Mesh;
    std::vector<tagVertexNode*> m_Vertices;  // of each point; null for one that no facet uses
    std::vector<std::int32_t> m_Uses;        // how many facets of the model use each point
    std::uint32_t m_Added = 0;               // points that were offered to the tree
};

}  // namespace

void LentLists::Lend(std::vector<tagVertexNode*> vertices, std::span<std::int32_t const> rooms) {
    m_Facets.resize(std::accumulate(rooms.begin(), rooms.end(), std::size_t{0}));
    m_Vertices = std::move(vertices);
    CFacet** list = m_Facets.data();
    for (std::size_t i = 0; i < rooms.size(); ++i) {
        if (rooms[i] == 0) continue;
        m_Vertices[i]->m_ppFacet = list;
        list += rooms[i];
    }
}

LentLists::~LentLists() {
    for (tagVertexNode* const vertex : m_Vertices) {
        if (vertex == nullptr) continue;
        vertex->m_ppFacet = nullptr;
        vertex->m_nFacetNum = 0;
    }
}

ClassicMesh MakeClassic(std::span<Point3 const> points, std::span<Triangle const> triangles,
                        FacetLists lists) {
    return Builder(points, triangles, lists).Build();
}

}  // namespace varnet
