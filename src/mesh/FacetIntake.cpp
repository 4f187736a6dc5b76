// How a facet enters a model.

#include "mesh/FacetIntake.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <new>

#include "foundation/Counter.h"
#include "mesh/FacetCorners.h"

namespace {

// A triangle with a coordinate beyond this, in millimetres, is refused. NaN passes.
constexpr double kLargestCoordinate = 10000000000.0;

bool IsInRange(double d) { return !(d > kLargestCoordinate) && !(d < -kLargestCoordinate); }

bool IsInRange(tagFACET const& facet) {
    for (CPoint3D const& p : facet.m_ptVertex) {
        if (!IsInRange(p.x) || !IsInRange(p.y) || !IsInRange(p.z)) return false;
    }
    return true;
}

// The facet that has the three vertices as its corners, or null. It stands in the lists of all three; the
// shortest list is walked, so that a vertex with very many facets is not a burden to its neighbours.
CFacet* FindTriangle(tagVertexNode const* a, tagVertexNode const* b, tagVertexNode const* c) {
    tagVertexNode const* pWalked = a;
    if (b->m_nFacetNum < pWalked->m_nFacetNum) pWalked = b;
    if (c->m_nFacetNum < pWalked->m_nFacetNum) pWalked = c;
    for (int i = 0; i < pWalked->m_nFacetNum; ++i) {
        CFacet* const g = pWalked->m_ppFacet[i];
        if (HasCorner(*g, a) && HasCorner(*g, b) && HasCorner(*g, c)) return g;
    }
    return nullptr;
}

// The corners with the lowest in front and the winding kept; the earlier one in a tie.
std::array<tagVertexNode*, 3> LowestFirst(tagVertexNode* a, tagVertexNode* b, tagVertexNode* c) {
    if (b->z >= a->z && c->z >= a->z) return {a, b, c};
    if (b->z < a->z && c->z >= b->z) return {b, c, a};
    return {c, a, b};
}

// Adds the facet to the vertex's list. The list holds 7, 15, 31, ... entries, which follows from its count
// alone; most vertices of a mesh need 7 at most, and these fill a block of the heap.
void LinkFacet(tagVertexNode& vertex, CFacet* pFacet) {
    constexpr std::uint32_t kFirstCapacity = 7;
    auto const nCount = static_cast<std::uint32_t>(vertex.m_nFacetNum);
    bool const bFull = nCount == 0 || (nCount >= kFirstCapacity && std::has_single_bit(nCount + 1));
    if (bFull) {
        std::size_t const nCapacity = nCount == 0 ? kFirstCapacity : 2 * std::size_t{nCount} + 1;
        void* const pList = std::realloc(static_cast<void*>(vertex.m_ppFacet), nCapacity * sizeof(CFacet*));
        if (pList == nullptr) throw std::bad_alloc();
        vertex.m_ppFacet = static_cast<CFacet**>(pList);
    }
    vertex.m_ppFacet[nCount] = pFacet;
    vertex.m_nFacetNum = static_cast<std::int32_t>(nCount + 1);
}

// Lets the triangle of three vertices into the model, unless it collapses, is there already or is degenerate.
void EnterTriangle(CSTLModel& model, std::array<tagVertexNode*, 3> const& offered, float* pNormal) {
    auto const [a, b, c] = offered;
    if (a == b || b == c || c == a) return;
    if (CFacet* const g = FindTriangle(a, b, c)) {
        g->m_nFlag |= HasDirectedEdge(*g, b, c) ? FACET_DUP_SAME : FACET_DUP_REVERSED;
        return;
    }
    auto const [p1, p2, p3] = LowestFirst(a, b, c);
    CFacet facet(p1, p2, p3, pNormal);
    facet.CalculateNormal();
    if (IsDegenerate(facet)) return;

    auto* const pFacet = new CFacet(facet);
    pFacet->m_nFlag = SlopeFlag(facet);
    model.m_SurfaceArray.m_aSurface[0]->m_aFacet.Add(pFacet);
    StoreShared(model.m_Status.m_nFacetNum, model.m_Status.m_nFacetNum + 1);
    for (tagVertexNode* const pVertex : offered) LinkFacet(*pVertex, pFacet);
}

// Calls addNode(corner, i) for the three corners of a triangle within range, in order, and lets it in.
template <class AddNode>
void Enter(CSTLModel& model, tagFACET& facet, AddNode const& addNode) {
    if (!IsInRange(facet)) return;
    std::array<tagVertexNode*, 3> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) corners[i] = addNode(facet.m_ptVertex[i], i);
    EnterTriangle(model, corners, facet.m_fNormal);
}

// How many triangles ahead the table of vertices is touched, and how many the vertices themselves.
constexpr std::size_t kLinesAhead = 16;
constexpr std::size_t kVerticesAhead = 8;

}  // namespace

void CSTLModel::AddFacet(tagFACET& facet) {
    Enter(*this, facet, [this](CPoint3D& corner, std::size_t) { return m_VertexTree.AddNode(corner); });
}

void FacetIntake::Add(tagFACET& facet) {
    Enter(m_Model, facet, [this](CPoint3D& corner, std::size_t) { return m_Cache.AddNode(corner); });
}

void FacetIntake::AddAll(std::span<tagFACET> facets) {
    m_Hashes.resize(facets.size());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) m_Hashes[i][k] = VertexCache::HashOf(facets[i].m_ptVertex[k]);
    }
    for (std::size_t i = 0; i < facets.size(); ++i) {
        if (LoadShared(m_Model.m_bStopRead) != 0) return;
        if (i + kLinesAhead < facets.size()) {
            for (std::size_t const nHash : m_Hashes[i + kLinesAhead]) m_Cache.PrefetchLine(nHash);
        }
        if (i + kVerticesAhead < facets.size()) {
            for (std::size_t const nHash : m_Hashes[i + kVerticesAhead]) m_Cache.PrefetchVertex(nHash);
        }
        Enter(m_Model, facets[i], [this, &hashes = m_Hashes[i]](CPoint3D& corner, std::size_t k) {
            return m_Cache.AddNode(corner, hashes[k]);
        });
    }
}
