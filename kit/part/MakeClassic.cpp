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
#include "part/Twins.h"

namespace varnet {

namespace {

// Which facets the model takes: all, but of those on the same three corners one, or none.
class Choice {
public:
    Choice(std::span<Triangle const> triangles, std::size_t points, Copies copies)
        : m_Triangles(triangles), m_Kept(triangles.size(), true) {
        if (copies == Copies::kNo) return;
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

// Puts vertices into an empty tree as they come, for work that looks for none: each is a child of an earlier
// one, as in a heap, so that the tree owns it at once and is as low as can be.
class UnorderedTree {
public:
    UnorderedTree(CVertexTree& tree, std::size_t most) : m_Tree(tree) { m_Nodes.reserve(most); }
    tagVertexNode* Add(CPoint3D const& point) {
        auto* const node = new tagVertexNode(point);
        LinkTo(m_Nodes.size()) = node;
        m_Nodes.push_back(node);
        node->m_nIndex = static_cast<std::int32_t>(m_Tree.m_nCount++);
        m_Tree.m_BoundBox += *node;
        return node;
    }

private:
    tagVertexNode*& LinkTo(std::size_t number) {
        if (number == 0) return m_Tree.m_pRoot;
        tagVertexNode& parent = *m_Nodes[(number - 1) / 2];
        return number % 2 != 0 ? parent.m_pLeft : parent.m_pRight;
    }

    CVertexTree& m_Tree;
    std::vector<tagVertexNode*> m_Nodes;
};

class Builder {
public:
    Builder(std::span<Point3 const> points, std::span<Triangle const> triangles, FacetLists lists,
            Copies copies)
        : m_Points(points),
          m_Triangles(triangles),
          m_Lists(lists),
          m_Choice(triangles, points.size(), copies),
          m_Vertices(points.size(), nullptr) {
        m_Mesh.model = NewModel();
    }

    ClassicMesh Build() {
        CVertexTree& tree = m_Mesh.model->m_VertexTree;
        if (m_Lists == FacetLists::kLent && !MayHaveTwins(m_Points)) {
            UnorderedTree unordered(tree, m_Points.size());
            AddFacets([&unordered](CPoint3D const& point) { return unordered.Add(point); });
            LendLists();
            return std::move(m_Mesh);
        }
        auto const addNode = [&tree](CPoint3D point) { return tree.AddNode(point); };
        AddVertices(addNode);
        // Points at one place are one vertex: the model finds out what of that is a facet.
        if (tree.m_nCount != m_Added) {
            OfferFacets();
            return std::move(m_Mesh);
        }
        AddFacets(addNode);
        if (m_Lists == FacetLists::kLent) {
            LendLists();
        } else {
            MakeOwnLists();
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
    template <class AddNode>
    void AddVertices(AddNode const& addNode) {
        for (std::size_t i = 0; i < m_Triangles.size(); ++i) {
            if (m_Choice.Keeps(i)) CornersOf(m_Triangles[i], addNode);
        }
    }
    // The vertices of a triangle; those that are not there yet are added.
    template <class AddNode>
    std::array<tagVertexNode*, 3> CornersOf(Triangle const& t, AddNode const& addNode) {
        std::array<tagVertexNode*, 3> corners;
        for (std::size_t k = 0; k < 3; ++k) {
            auto const number = static_cast<std::size_t>(t[k]);
            if (m_Vertices[number] == nullptr) {
                m_Vertices[number] = addNode(Classic(m_Points[number]));
                ++m_Added;
            }
            corners[k] = m_Vertices[number];
        }
        return corners;
    }

    template <class AddNode>
    void AddFacets(AddNode const& addNode) {
        auto& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
        m_Mesh.triangles.reserve(m_Triangles.size());
        m_Uses.assign(m_Points.size(), 0);
        for (std::size_t i = 0; i < m_Triangles.size(); ++i) {
            Triangle const& t = m_Triangles[i];
            if (!m_Choice.Keeps(i)) continue;
            std::array<tagVertexNode*, 3> const corners = CornersOf(t, addNode);
            if (t[0] == t[1] || t[1] == t[2] || t[2] == t[0]) continue;
            auto const [a, b, c] = LowestFirst(corners);
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

    // The lists hold the facets of each vertex in the order of the model. Calls add(point, facet) for all
    // corners of the model's facets.
    template <class AddCorner>
    void ForEachCorner(AddCorner const& addCorner) {
        auto const& facets = m_Mesh.model->m_SurfaceArray.m_aSurface[0]->m_aFacet;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            for (std::int32_t const corner : m_Triangles[static_cast<std::size_t>(m_Mesh.triangles[i])])
                addCorner(static_cast<std::size_t>(corner), facets[static_cast<int>(i)]);
        }
    }

    void LendLists() {
        LargeVector<std::uint32_t> ends(m_Uses.size());  // of each list, as far as it is filled
        std::exclusive_scan(m_Uses.begin(), m_Uses.end(), ends.begin(), std::uint32_t{0});
        CFacet** const first = m_Mesh.lists.Lend(m_Vertices, m_Uses);
        ForEachCorner([&ends, first](std::size_t corner, CFacet* facet) { first[ends[corner]++] = facet; });
    }

    // From malloc, as the library frees them.
    void MakeOwnLists() {
        for (std::size_t i = 0; i < m_Points.size(); ++i) {
            if (m_Uses[i] == 0) continue;
            m_Vertices[i]->m_ppFacet =
                static_cast<CFacet**>(std::malloc(static_cast<std::size_t>(m_Uses[i]) * sizeof(CFacet*)));
            if (m_Vertices[i]->m_ppFacet == nullptr) throw std::bad_alloc();
        }
        ForEachCorner([this](std::size_t corner, CFacet* facet) {
            tagVertexNode& vertex = *m_Vertices[corner];
            vertex.m_ppFacet[vertex.m_nFacetNum++] = facet;
        });
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

CFacet** LentLists::Lend(std::vector<tagVertexNode*> vertices, std::span<std::int32_t const> counts) {
    m_Facets.resize(std::accumulate(counts.begin(), counts.end(), std::size_t{0}));
    m_Vertices = std::move(vertices);
    CFacet** list = m_Facets.data();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] == 0) continue;
        m_Vertices[i]->m_ppFacet = list;
        m_Vertices[i]->m_nFacetNum = counts[i];
        list += counts[i];
    }
    return m_Facets.data();
}

LentLists::~LentLists() {
    for (tagVertexNode* const vertex : m_Vertices) {
        if (vertex == nullptr) continue;
        vertex->m_ppFacet = nullptr;
        vertex->m_nFacetNum = 0;
    }
}

ClassicMesh MakeClassic(std::span<Point3 const> points, std::span<Triangle const> triangles, FacetLists lists,
                        Copies copies) {
    return Builder(points, triangles, lists, copies).Build();
}

}  // namespace varnet
