#include "trees/VertexCache.h"

#include <bit>
#include <cmath>
#include <utility>

#include "trees/VertexInsertion.h"

namespace {

constexpr std::size_t kFirstSize = 1024;

// Where this many slots in a row are taken by others, the vertex is not remembered.
constexpr std::size_t kProbes = 8;

// Sees a vertex at the point's height whose y is near the point's, but not the same.
struct RowWatch {
    bool bNearRows = false;
    void MetRow(double dDifference) {
        if (dDifference != 0.0) bNearRows = true;
    }
};

bool IsNumber(CPoint3D const& point) {
    return !std::isnan(point.x) && !std::isnan(point.y) && !std::isnan(point.z);
}

bool IsSame(CPoint3D const& a, CPoint3D const& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

}  // namespace

VertexCache::VertexCache(CVertexTree& tree) : m_Tree(tree), m_bOn(tree.m_pRoot == nullptr) {
    if (m_bOn) m_Slots.resize(kFirstSize);
}

tagVertexNode* VertexCache::AddNode(CPoint3D& point) {
    if (!m_bOn) return m_Tree.AddNode(point);
    std::size_t const nHash = Hash(point);
    if (tagVertexNode* const pFound = Find(point, nHash)) {
        point.z = pFound->z;  // they may differ in the sign of a zero
        return pFound;
    }
    if (!IsNumber(point)) {
        SwitchOff();
        return m_Tree.AddNode(point);
    }
    RowWatch watch;
    int nTaller = 0;
    std::uint32_t const nCount = m_Tree.m_nCount;
    tagVertexNode* const pNode = vertex_insertion::InsertPoint(m_Tree, m_Tree.m_pRoot, point, nTaller, watch);
    if (watch.bNearRows) {
        SwitchOff();
    } else if (m_Tree.m_nCount != nCount) {
        Remember(pNode, Hash(*pNode));
    }
    return pNode;
}

void VertexCache::Prefetch(CPoint3D const& point) const {
#if defined(__GNUC__)
    if (m_bOn) __builtin_prefetch(&m_Slots[Hash(point) & (m_Slots.size() - 1)]);
#else
    (void)point;
#endif
}

// Zeros of both signs are equal numbers, so they get one hash: 0.0 is added.
std::size_t VertexCache::Hash(CPoint3D const& point) {
    std::uint64_t n = std::bit_cast<std::uint64_t>(point.x + 0.0) * 0x9E3779B97F4A7C15u;
    n = (std::rotl(n, 32) ^ std::bit_cast<std::uint64_t>(point.y + 0.0)) * 0xC2B2AE3D27D4EB4Fu;
    n = (std::rotl(n, 32) ^ std::bit_cast<std::uint64_t>(point.z + 0.0)) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(n ^ (n >> 32));
}

tagVertexNode* VertexCache::Find(CPoint3D const& point, std::size_t nHash) const {
    std::size_t const nMask = m_Slots.size() - 1;
    for (std::size_t i = 0; i < kProbes; ++i) {
        tagVertexNode* const pNode = m_Slots[(nHash + i) & nMask];
        if (pNode == nullptr) return nullptr;
        if (IsSame(*pNode, point)) return pNode;
    }
    return nullptr;
}

void VertexCache::Remember(tagVertexNode* pNode, std::size_t nHash) {
    if (++m_nUsed > m_Slots.size() / 2) Grow();
    std::size_t const nMask = m_Slots.size() - 1;
    for (std::size_t i = 0; i < kProbes; ++i) {
        tagVertexNode*& slot = m_Slots[(nHash + i) & nMask];
        if (slot == nullptr) {
            slot = pNode;
            return;
        }
    }
}

void VertexCache::Grow() {
    std::vector<tagVertexNode*> const old = std::exchange(m_Slots, {});
    m_Slots.resize(old.size() * 2);
    m_nUsed = 1;
    for (tagVertexNode* const pNode : old) {
        if (pNode != nullptr) Remember(pNode, Hash(*pNode));
    }
}

void VertexCache::SwitchOff() {
    m_bOn = false;
    m_Slots = {};
}
