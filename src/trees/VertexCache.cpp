#include "trees/VertexCache.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "foundation/Prefetch.h"
#include "foundation/Require.h"
#include "foundation/files/LittleEndian.h"
#include "trees/VertexInsertion.h"

namespace varnet {

namespace {

constexpr std::size_t kFirstLines = 64;

// Below this tolerance, which a host may set, the numbers of bands and intervals would not fit in 64 bits.
constexpr double kLeastTolerance = 1e-7;

// So many vertices a pair of lines, which have room for twelve: few find their line full.
constexpr std::size_t kMostPerTwoLines = 9;

// Tells what a descent meets, and which rows come.
struct RowWatch {
    CVertexTree const& tree;
    NearRows& rows;
    FirstHeights& firstHeights;
    DrawnCorners& drawn;
    double dRow;  // of the point
    RowsMet met;
    bool bEntangled = false;
    void MetRow(double y) {
        if (y != dRow) met.Meet(y);
    }
    void BeforeNew(double y, double z) {
        bEntangled = rows.Enter(y, z, met, [this](double dMet, double dHeight, double dDistance) {
            return varnet::IsAlone(tree, dMet, dHeight, dDistance);
        });
    }
    void BeforeRotation(tagVertexNode const& top) {
        firstHeights.ForgetRotated(top, [this](double dLower) { drawn.Change(dLower); });
    }
};

bool IsNumber(CPoint3D const& point) {
    return !std::isnan(point.x) && !std::isnan(point.y) && !std::isnan(point.z);
}

bool IsFinite(CPoint3D const& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

// All of a vertex but its list; it may lie across two ends of lines of the cache.
void PrefetchVertex(tagVertexNode const& vertex) {
    Prefetch(&vertex.x);
    Prefetch(&vertex.z);
    Prefetch(&vertex.m_ppFacet);
}

}  // namespace

VertexCache::VertexCache(CVertexTree& tree, std::size_t nExpected)
    : m_Tree(tree),
      m_bOn(tree.m_pRoot == nullptr && (tree.m_dTolerance >= kLeastTolerance || tree.m_dTolerance == 0.0)),
      m_bExact(tree.m_dTolerance == 0.0),
      m_Heights(tree.m_dTolerance),
      m_Rows(tree.m_dTolerance),
      m_Drawn(tree.m_dTolerance) {
    if (m_bOn) {
        m_Lines = ZeroedTable<Line>(std::bit_ceil(std::max(kFirstLines, nExpected * 2 / kMostPerTwoLines)));
    }
}

tagVertexNode* VertexCache::AddSeldom(CPoint3D& point, std::size_t nHash) {
    if (!m_bOn) return m_Tree.AddNode(point);
    if (m_bKeepDrawn) {
        if (tagVertexNode* const pNode = m_Drawn.Find(point, nHash)) {
            point.z = pNode->z;
            return pNode;
        }
    }
    // A point that was new when its group was brought near goes down the tree by the way that is known.
    std::size_t const nWay = m_Ways.Take(point, nHash);
    if (nWay != WaysAhead::kNone) return FindDrawnOrInsert(point, nHash, nWay);
    tagVertexNode* const pNode = FindInCleanRow(point.x, point.y, point.z, nHash);
    if (pNode == nullptr) return FindDrawnOrInsert(point, nHash, nWay);
    point.z = pNode->z;
    if (!m_bStrewn) m_Recent[nHash % kRecent] = pNode;
    return pNode;
}

// The heights near that of a point with this way, which were looked for when the way was found.
HeightSet::Answer VertexCache::NearHeights(double z, std::size_t nWay) const {
    if (nWay == WaysAhead::kNone) return m_Heights.Find(z);
    bool bChanged = false;
    for (double const d : m_NewHeights) bChanged |= std::fabs(d - z) <= 2.0 * m_Tree.m_dTolerance;
    return bChanged ? m_Heights.Find(z) : m_NearHeights[nWay];
}

// The height that a point takes: of two near ones, the one that its way meets first.
HeightSet::Answer VertexCache::FindHeight(double z, HeightSet::Answer const& near) {
    if (near.near != HeightSet::Near::kTwo) return near;
    double const dFirst =
        m_FirstHeights.Find(m_Tree, z, near.dHeight, [this](double dLower) { m_Drawn.Change(dLower); });
    return {HeightSet::Near::kOne, dFirst, near.dUpper};
}

tagVertexNode* VertexCache::FindDrawnOrInsert(CPoint3D& point, std::size_t nHash, std::size_t nWay) {
    if (!IsNumber(point)) {
        SwitchOff();
        return m_Tree.AddNode(point);
    }
    if (m_bExact) return InsertExactly(point, nWay);
    HeightSet::Answer const near = NearHeights(point.z, nWay);
    HeightSet::Answer const height = FindHeight(point.z, near);
    bool const bDrawn = height.near == HeightSet::Near::kOne && height.dHeight != point.z;
    // A point with a way was looked for at the one height; of two, at the one that was thought to be first.
    bool const bLooked = nWay != WaysAhead::kNone && near.near == HeightSet::Near::kOne;
    if (bDrawn && !bLooked) {
        tagVertexNode* const pNode = FindInCleanRow(point.x, point.y, height.dHeight,
                                                    coordinate_hash::Hash(point.x, point.y, height.dHeight));
        if (pNode != nullptr) {
            if (m_bKeepDrawn) m_Drawn.Remember(point.z, nHash, pNode);
            point.z = pNode->z;
            return pNode;
        }
    }
    m_Rows.Prefetch(point.y, height.near == HeightSet::Near::kOne ? height.dHeight : point.z);
    return bDrawn && m_bKeepDrawn ? InsertDrawn(point, nHash, nWay) : Insert(point, height.near, nWay);
}

// A new vertex in a clean clan is what the same corner will come to again, unless its own way in has changed
// which of two heights is met first.
tagVertexNode* VertexCache::InsertDrawn(CPoint3D& point, std::size_t nHash, std::size_t nWay) {
    double const z = point.z;
    std::uint32_t const nCount = m_Tree.m_nCount;
    std::uint32_t const nChanges = m_Drawn.ChangesAt(z);
    tagVertexNode* const pNode = Insert(point, HeightSet::Near::kOne, nWay);
    bool const bNew = m_Tree.m_nCount != nCount;
    if (bNew && m_Drawn.ChangesAt(z) == nChanges && !m_Rows.IsMarked(pNode->y, pNode->z)) {
        m_Drawn.Remember(z, nHash, pNode);
    }
    return pNode;
}

tagVertexNode* VertexCache::Insert(CPoint3D& point, HeightSet::Near nearHeights, std::size_t nWay) {
    RowWatch watch{m_Tree, m_Rows, m_FirstHeights, m_Drawn, point.y, {}};
    int nTaller = 0;
    std::uint32_t const nCount = m_Tree.m_nCount;
    avl::Way<tagVertexNode> way(m_Tree.m_pRoot);
    if (nWay != WaysAhead::kNone) m_Ways.Follow(nWay, way, point);
    tagVertexNode* const pNode = vertex_insertion::InsertPoint(m_Tree, way, point, nTaller, watch);
    if (m_Tree.m_nCount == nCount) {
        ++m_nNeedless;
        return pNode;
    }
    Remember(pNode);
    // A point with one height near has taken that one.
    if (nearHeights != HeightSet::Near::kOne) {
        m_Heights.Add(pNode->z);
        NoteNewHeight(pNode->z);
        m_Drawn.Change(pNode->z);
    }
    if (watch.bEntangled) {
        m_Recent.fill(nullptr);
        m_Drawn.ForgetAll();
    }
    return pNode;
}

// No more than a group may add: what is more comes of points that nobody has foreseen.
void VertexCache::NoteNewHeight(double z) {
    if (m_NewHeights.size() > kLargestGroup) return;
    m_NewHeights.push_back(z);
    if (m_NewHeights.size() > kLargestGroup) m_Ways.Begin();
}

// With a tolerance of 0, a point that the table does not know is new, unless its line was full.
tagVertexNode* VertexCache::InsertExactly(CPoint3D& point, std::size_t nWay) {
    std::uint32_t const nCount = m_Tree.m_nCount;
    vertex_insertion::NoWatch watch;
    int nTaller = 0;
    avl::Way<tagVertexNode> way(m_Tree.m_pRoot);
    if (nWay != WaysAhead::kNone) m_Ways.Follow(nWay, way, point);
    tagVertexNode* const pNode = vertex_insertion::InsertPoint(m_Tree, way, point, nTaller, watch);
    if (m_Tree.m_nCount != nCount) {
        Remember(pNode);
    } else {
        ++m_nNeedless;
    }
    return pNode;
}

std::size_t VertexCache::PrefetchGroup(std::span<CPoint3D const* const> points,
                                       std::span<std::size_t const> hashes,
                                       std::span<tagVertexNode const*> found) {
    VARNET_REQUIRE(points.size() <= kLargestGroup && hashes.size() == points.size() &&
                   found.size() >= points.size());
    if (!m_bOn) return 0;
    std::size_t nFound = 0;
    auto const take = [&found, &nFound](tagVertexNode const* pVertex) {
        if (pVertex == nullptr) return false;
        PrefetchVertex(*pVertex);
        found[nFound++] = pVertex;
        return true;
    };
    // A new corner comes several times before its vertex is there.
    std::array<std::size_t, 256> asked{};
    std::array<std::size_t, kLargestGroup> open;  // the places of those that are to be looked for
    std::size_t nOpen = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (std::exchange(asked[hashes[i] % asked.size()], hashes[i]) == hashes[i]) continue;
        if (m_bKeepDrawn && take(m_Drawn.Guess(points[i]->z, hashes[i]))) continue;
        PrefetchLine(hashes[i]);
        if (!m_bExact && IsNumber(*points[i])) m_Heights.Prefetch(points[i]->z);
        open[nOpen++] = i;
    }
    m_Ways.Begin();
    m_NewHeights.clear();
    struct DrawnPoint {
        std::size_t nPlace;
        std::size_t nHash;  // at the height that it will most likely take
        HeightSet::Answer near;
    };
    std::array<DrawnPoint, kLargestGroup> drawn;
    std::size_t nDrawn = 0;
    for (std::size_t const i : std::span(open).first(nOpen)) {
        if (take(FindTagged(hashes[i])) || !IsFinite(*points[i])) continue;
        HeightSet::Answer const near = m_bExact ? HeightSet::Answer{} : m_Heights.Find(points[i]->z);
        double const dHeight = GuessHeight(points[i]->z, near);
        if (dHeight == points[i]->z) {
            m_NearHeights[m_Ways.Want(*points[i], hashes[i])] = near;
            continue;
        }
        drawn[nDrawn] = {i, coordinate_hash::Hash(points[i]->x, points[i]->y, dHeight), near};
        PrefetchLine(drawn[nDrawn++].nHash);
    }
    // Points that take another height are looked for there.
    for (auto const& [i, nHash, near] : std::span(drawn).first(nDrawn)) {
        if (!take(FindTagged(nHash))) m_NearHeights[m_Ways.Want(*points[i], hashes[i])] = near;
    }
    m_Ways.Find(m_Tree);
    return nFound;
}

// The height that a point will most likely take; its own where it takes none.
double VertexCache::GuessHeight(double z, HeightSet::Answer const& near) const {
    if (near.near == HeightSet::Near::kOne) return near.dHeight;
    return near.near == HeightSet::Near::kTwo ? m_FirstHeights.Guess(near.dHeight) : z;
}

// A vertex with the tag of the hash, most likely the one that is looked for.
tagVertexNode* VertexCache::FindTagged(std::size_t nHash) const {
    tagVertexNode* pFound = nullptr;
    auto const take = [&pFound](tagVertexNode* pNode) {
        pFound = pNode;
        return true;
    };
    Line const& line = LineOf(nHash);
    VisitTagged(line, TagOf(nHash), take);
    if (pFound == nullptr && IsFull(line)) VisitTagged(LineOf(Beside(nHash)), TagOf(nHash), take);
    return pFound;
}

// Calls visit(vertex) for the vertices of the line that have the tag, until it returns true. The tags are
// compared four at a time: a 16-bit field of x becomes 0 where the tag is the same, and the lowest such field
// is found exactly by the borrow of a subtraction (H. S. Warren, "Hacker's Delight", chapter 6).
template <class Visit>
void VertexCache::VisitTagged(Line const& line, std::uint16_t nTag, Visit const& visit) {
    constexpr std::uint64_t kOnes = 0x0001000100010001u;
    constexpr std::uint64_t kTops = kOnes << 15;
    for (std::size_t nFirst = 0; nFirst < line.tags.size(); nFirst += 4) {
        std::uint64_t const x = LoadUnsigned<std::uint64_t>(&line.tags[nFirst]) ^ (nTag * kOnes);
        for (std::uint64_t nFound = (x - kOnes) & ~x & kTops; nFound != 0; nFound &= nFound - 1) {
            std::size_t const i = nFirst + static_cast<std::size_t>(std::countr_zero(nFound)) / 16;
            if (line.tags[i] == nTag && visit(line.vertices[i])) return;
        }
    }
}

tagVertexNode* VertexCache::FindInCleanRow(double x, double y, double z, std::size_t nHash) const {
    tagVertexNode* pFound = nullptr;
    auto const isSame = [&pFound, x, y, z](tagVertexNode* pNode) {
        if (pNode->x != x || pNode->y != y || pNode->z != z) return false;
        pFound = pNode;
        return true;
    };
    Line const& line = LineOf(nHash);
    VisitTagged(line, TagOf(nHash), isSame);
    if (pFound == nullptr && IsFull(line)) VisitTagged(LineOf(Beside(nHash)), TagOf(nHash), isSame);
    return pFound != nullptr && !m_bExact && m_Rows.IsMarked(y, z) ? nullptr : pFound;
}

void VertexCache::Remember(tagVertexNode* pNode) {
    if (2 * ++m_nUsed > kMostPerTwoLines * m_Lines.size()) Grow();
    std::size_t const nHash = HashOf(*pNode);
    Line* pLine = &LineOf(nHash);
    if (IsFull(*pLine)) pLine = &LineOf(Beside(nHash));
    for (std::size_t i = 0; i < Line::kCapacity; ++i) {
        if (pLine->tags[i] != 0) continue;
        pLine->vertices[i] = pNode;
        pLine->tags[i] = TagOf(nHash);
        return;
    }
}

void VertexCache::Grow() {
    ZeroedTable<Line> const old = std::exchange(m_Lines, ZeroedTable<Line>(m_Lines.size() * 2));
    m_nUsed = 1;
    for (Line const& line : old) {
        for (std::size_t i = 0; i < Line::kCapacity; ++i) {
            if (line.tags[i] != 0) Remember(line.vertices[i]);
        }
    }
}

void VertexCache::SwitchOff() {
    m_bOn = false;
    m_Recent.fill(nullptr);
    m_Lines = ZeroedTable<Line>();
}

}  // namespace varnet
