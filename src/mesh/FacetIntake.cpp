// How a facet enters a model.

#include "mesh/FacetIntake.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "foundation/Counter.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetMeasures.h"
#include "trees/FacetList.h"

using namespace varnet;

namespace {

// Whether the vertex is a corner of the facet. A facet stands in the lists of its corners, so a short list
// tells, and the facet itself, which may be far away in memory, need not be looked at.
bool IsCorner(tagVertexNode const& vertex, CFacet const* pFacet) {
    if (vertex.m_nFacetNum > kLongFacetList) return HasCorner(*pFacet, &vertex);
    bool bFound = false;
    for (int i = 0; i < vertex.m_nFacetNum; ++i) bFound |= vertex.m_ppFacet[i] == pFacet;
    return bFound;
}

// The facet that has the three vertices as its corners, or null. The shortest of their lists is walked, so
// that a vertex with very many facets is not a burden to its neighbours.
CFacet* FindTriangle(tagVertexNode const* a, tagVertexNode const* b, tagVertexNode const* c) {
    tagVertexNode const* pShortest = b->m_nFacetNum < a->m_nFacetNum ? b : a;
    pShortest = c->m_nFacetNum < pShortest->m_nFacetNum ? c : pShortest;
    if (pShortest->m_nFacetNum == 0) return nullptr;
    tagVertexNode const& second = pShortest == a ? *b : *a;
    tagVertexNode const& third = pShortest == c ? *b : *c;
    for (int i = 0; i < pShortest->m_nFacetNum; ++i) {
        CFacet* const g = pShortest->m_ppFacet[i];
        if (IsCorner(second, g) && IsCorner(third, g)) return g;
    }
    return nullptr;
}

// The corners with the lowest in front and the winding kept; the earlier one in a tie.
std::array<tagVertexNode*, 3> LowestFirst(tagVertexNode* a, tagVertexNode* b, tagVertexNode* c) {
    if (b->z >= a->z && c->z >= a->z) return {a, b, c};
    if (b->z < a->z && c->z >= b->z) return {b, c, a};
    return {c, a, b};
}

// Without branches: nearly all triangles are in range.
bool IsInRange(tagFACET const& facet) {
    bool bBeyond = false;
    for (CPoint3D const& p : facet.m_ptVertex) {
        for (double const d : {p.x, p.y, p.z}) bBeyond |= std::fabs(d) > kLargestCoordinate;
    }
    return !bBeyond;
}

// Triangles are brought near in groups of so many, where they lie scattered.
constexpr std::size_t kGroup = 32;
static_assert(3 * kGroup <= VertexCache::kLargestGroup);

// In a block of scattered triangles, fewer than one corner in two is a corner of one of the last few
// triangles, where a file in the usual order has two in three.
constexpr std::size_t kFewRepeats = 2;

// The tree is asked how far apart the corners of a block lie for so many blocks at once.
constexpr std::size_t kBlocksALook = 4;

// A tree of fewer vertices stays at hand as a whole.
constexpr std::uint32_t kLargeTree = 50000;

// So many triangles at the start of a block tell whether all of it is scattered.
constexpr std::size_t kSample = 128;

}  // namespace

void varnet::EnterTriangle(CSTLModel& model, std::array<tagVertexNode*, 3> const& offered) {
    auto const [a, b, c] = offered;
    if (a == b || b == c || c == a) return;
    if (CFacet* const g = FindTriangle(a, b, c)) {
        g->m_nFlag |= HasDirectedEdge(*g, b, c) ? FACET_DUP_SAME : FACET_DUP_REVERSED;
        return;
    }
    auto const [p1, p2, p3] = LowestFirst(a, b, c);
    std::array<float, 3> normal;
    if (!CalculateNormalOf(*p1, *p2, *p3, normal.data())) return;

    auto owned = std::make_unique<CFacet>(p1, p2, p3, normal.data());
    owned->m_nFlag = SlopeFlag(*owned);
    model.m_SurfaceArray.m_aSurface[0]->m_aFacet.Add(owned.get());
    CFacet* const pFacet = owned.release();
    StoreShared(model.m_Status.m_nFacetNum, model.m_Status.m_nFacetNum + 1);
    for (tagVertexNode* const pVertex : offered) facet_list::Add(*pVertex, pFacet);
}

namespace {

// Calls addNode(corner, i) for the three corners of a triangle within range, in order, and lets it in.
template <class AddNode>
void Enter(CSTLModel& model, tagFACET& facet, AddNode const& addNode) {
    if (!IsInRange(facet)) return;
    std::array<tagVertexNode*, 3> corners;
    for (std::size_t i = 0; i < corners.size(); ++i) corners[i] = addNode(facet.m_ptVertex[i], i);
    EnterTriangle(model, corners);
}

}  // namespace

void CSTLModel::AddFacet(tagFACET& facet) {
    Enter(*this, facet, [this](CPoint3D& corner, std::size_t) { return m_VertexTree.AddNode(corner); });
}

void FacetIntake::Add(tagFACET& facet) {
    Enter(m_Model, facet, [this](CPoint3D& corner, std::size_t) { return m_Cache.AddNode(corner); });
}

void FacetIntake::Add(tagFACET& facet, Hashes const& hashes) {
    Enter(m_Model, facet,
          [this, &hashes](CPoint3D& corner, std::size_t i) { return m_Cache.AddNode(corner, hashes[i]); });
}

void FacetIntake::AddAll(std::span<tagFACET> facets, OnStop onStop) {
    m_Hashes.resize(facets.size());
    for (std::size_t i = 0; i < facets.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) m_Hashes[i][k] = VertexCache::HashOf(facets[i].m_ptVertex[k]);
    }
    bool const bScattered = AreScattered(facets);
    for (std::size_t i = 0; i < facets.size(); ++i) {
        if (onStop == OnStop::kEnd && LoadShared(m_Model.m_bStopRead) != 0) return;
        if (bScattered && i % kGroup == 0) {
            std::size_t const nGroup = std::min(kGroup, facets.size() - i);
            BringNear(facets.subspan(i, nGroup), std::span<Hashes const>(m_Hashes).subspan(i, nGroup));
        }
        // Where they do not lie scattered, only the table of vertices is brought near.
        if (!bScattered && i + look_ahead::kEnteredLines < facets.size()) {
            for (std::size_t const nHash : m_Hashes[i + look_ahead::kEnteredLines])
                m_Cache.PrefetchLine(nHash);
        }
        Add(facets[i], m_Hashes[i]);
    }
}

// Whether what the triangles touch has to be brought near. The tree is asked once in a few blocks, which are
// much like each other.
bool FacetIntake::AreScattered(std::span<tagFACET const> facets) {
    if (m_Model.m_VertexTree.m_nCount < kLargeTree) return false;
    if (m_nBlocks++ % kBlocksALook == 0) m_bFarApart = AreFarApartInTree(facets);
    bool const bStrewn = AreFarFromEachOther();
    m_Cache.KeepDrawn(m_bFarApart && !bStrewn);
    m_Cache.SetStrewn(bStrewn);
    return m_bFarApart || bStrewn;
}

// Most files hold neighbours near each other, and what a triangle touches is at hand from the last ones.
bool FacetIntake::AreFarFromEachOther() const {
    std::array<std::size_t, 256> recent{};
    std::size_t nRepeats = 0;
    auto const sample = std::span(m_Hashes).first(std::min(m_Hashes.size(), kSample));
    for (Hashes const& hashes : sample) {
        for (std::size_t const nHash : hashes) {
            std::size_t& place = recent[nHash % recent.size()];
            if (place == nHash) ++nRepeats;
            place = nHash;
        }
    }
    return nRepeats * kFewRepeats < 3 * sample.size();
}

// Neighbours may have their places far apart in the tree, which goes by height first. Where these are those
// of vertices that came lately, as on a part of many columns, they are at hand all the same.
bool FacetIntake::AreFarApartInTree(std::span<tagFACET const> facets) const {
    constexpr std::size_t kTriangles = 64;
    if (facets.size() < kTriangles) return false;
    std::array<CPoint3D const*, kTriangles> firsts;
    std::array<CPoint3D const*, 3 * kTriangles / 2> corners;
    for (std::size_t i = 0; i < kTriangles; ++i) firsts[i] = &facets[i].m_ptVertex[0];
    for (std::size_t i = 0; i < corners.size(); ++i) corners[i] = &facets[i / 3].m_ptVertex[i % 3];
    return m_Cache.AreFarApart(firsts) && m_Cache.AreFarFromRecent(corners);
}

// The corners' vertices, then the lists of their facets.
void FacetIntake::BringNear(std::span<tagFACET const> facets, std::span<Hashes const> hashes) {
    std::array<CPoint3D const*, 3 * kGroup> points;
    std::array<std::size_t, 3 * kGroup> pointHashes;
    std::array<tagVertexNode const*, 3 * kGroup> found;
    std::size_t nPoints = 0;
    for (std::size_t i = 0; i < facets.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            points[nPoints] = &facets[i].m_ptVertex[k];
            pointHashes[nPoints++] = hashes[i][k];
        }
    }
    std::size_t const nFound =
        m_Cache.PrefetchGroup({points.data(), nPoints}, {pointHashes.data(), nPoints}, found);
    for (std::size_t i = 0; i < nFound; ++i) {
        Prefetch(found[i]->m_ppFacet);
        Prefetch(found[i]->m_ppFacet + found[i]->m_nFacetNum);
    }
}
