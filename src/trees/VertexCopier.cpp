#include "trees/VertexCopier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "foundation/Prefetch.h"
#include "trees/Avl.h"
#include "trees/VertexInsertion.h"

namespace {

bool HasSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool IsFinite(CPoint3D const& point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

// Goes through vertices in the order of a tree and groups the rows at a height that lie within the tolerance
// of each other, one to the next. A vertex lies on one side of every group but its own.
class RowGroups {
public:
    explicit RowGroups(double dTolerance) : m_dTolerance(dTolerance) {}

    void Add(CPoint3D const& point) {
        m_bOrdered = m_bOrdered && IsFinite(point);
        if (IsNextGroup(point)) {
            EndGroup();
            m_dBelow = point.z == m_dHeight ? m_dHighest : -std::numeric_limits<double>::infinity();
            m_dHeight = point.z;
            m_dHighest = point.y;
        } else {
            m_bOrdered = m_bOrdered && HasSameBits(point.z, m_dHeight) && IsBeyond(point.y, m_dBelow);
            m_bMistakable = m_bMistakable || point.y != m_dHighest || !IsBeyond(point.x, m_dLast);
            m_dHighest = std::max(m_dHighest, point.y);
        }
        m_dLast = point.x;
        ++m_nVertices;
    }

    /// Whether groups come in their order.
    bool AreOrdered() const { return m_bOrdered; }

    /// The groups in which vertices may be mistaken for each other, since there are several rows, or vertices
    /// in one that are not apart: the number of the first vertex, and of the one behind the last.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> const& Mistakable() {
        EndGroup();
        return m_Mistakable;
    }

private:
    bool IsBeyond(double d, double dBefore) const {
        return vertex_insertion::CompareAxis(d, dBefore, m_dTolerance) == COMPARE_GREATER;
    }

    bool IsNextGroup(CPoint3D const& point) const {
        return m_nVertices == 0 || IsBeyond(point.z, m_dHeight) ||
               (point.z == m_dHeight && IsBeyond(point.y, m_dHighest));
    }

    void EndGroup() {
        if (m_bMistakable) m_Mistakable.emplace_back(m_nFirst, m_nVertices);
        m_bMistakable = false;
        m_nFirst = m_nVertices;
    }

    double m_dTolerance;
    bool m_bOrdered = true;
    std::uint32_t m_nVertices = 0;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_Mistakable;

    // Of the group under way.
    std::uint32_t m_nFirst = 0;
    bool m_bMistakable = false;
    double m_dHeight = std::numeric_limits<double>::quiet_NaN();
    double m_dBelow = 0.0;    // the highest y of the group before, at this height
    double m_dHighest = 0.0;  // y of the group
    double m_dLast = 0.0;     // x of the last vertex
};

}  // namespace

VertexCopier::VertexCopier(CVertexTree& source) : m_Tree(0) {
    m_Sources.reserve(std::min<std::size_t>(source.m_nCount, ForeseenTree::kMostKeys));
    RowGroups groups(CVertexTree().m_dTolerance);
    avl::WalkInOrder(source.m_pRoot, [this, &groups](tagVertexNode* pNode) {
        groups.Add(*pNode);
        m_Sources.push_back({pNode, pNode->m_nID});
        pNode->m_nID = static_cast<std::uint32_t>(m_Sources.size() - 1);
    });
    m_bOrdered = groups.AreOrdered() && m_Sources.size() <= ForeseenTree::kMostKeys;
    if (!m_bOrdered) return;
    m_Tree = ForeseenTree(m_Sources.size());
    m_Copies = ZeroedTable<tagVertexNode*>(m_Sources.size());
    for (auto const& [nFirst, nEnd] : groups.Mistakable()) {
        for (std::uint32_t n = nFirst; n < nEnd; ++n) m_Tree.SetUnplaced(n);
    }
}

void VertexCopier::EndNumbers() {
    if (!m_bNumbered) return;
    for (Source const& source : m_Sources) source.pVertex->m_nID = source.nID;
    m_bNumbered = false;
}

void VertexCopier::CopyTo(CVertexTree& target) {
    m_Tree.Link();
    if (m_Copies.size() < m_Tree.NodeCount()) m_Copies = ZeroedTable<tagVertexNode*>(m_Tree.NodeCount());
    CPoint3D point;
    vertex_insertion::NoWatch watch;
    auto const compare = [this, &point, &watch, &target](std::uint32_t nKey) {
        return vertex_insertion::CompareAndSnap(*m_Copies[nKey], point.x, point.y, point.z, target.m_dTolerance, watch);
    };
    auto const& comings = m_Tree.Comings();
    for (std::size_t i = 0; i < comings.size(); ++i) {
        PrefetchComing(i);
        point = *m_Sources[comings[i]].pVertex;
        tagVertexNode*& pCopy = m_Copies[m_Tree.Come(comings[i], compare)];
        if (pCopy == nullptr) pCopy = vertex_insertion::MakeVertex(target, point);
        if (m_Tree.IsUnplaced(comings[i])) m_Mistakable.push_back(pCopy);
    }
    SetLinks(target);
}

void VertexCopier::PrefetchComing(std::size_t i) const {
    constexpr std::size_t kFar = 24;
    constexpr std::size_t kNear = 12;
    auto const& comings = m_Tree.Comings();
    if (i + kFar < comings.size()) {
        m_Tree.PrefetchNode(comings[i + kFar]);
        Prefetch(&m_Sources[comings[i + kFar]]);
    }
    if (i + kNear < comings.size()) {
        m_Tree.PrefetchNeighbors(comings[i + kNear]);
        Prefetch(&m_Copies[comings[i + kNear]]);
        Prefetch(&m_Sources[comings[i + kNear]].pVertex->x);
        Prefetch(&m_Sources[comings[i + kNear]].pVertex->z);
    }
}

// Gives the copies the places that they have in the tree.
void VertexCopier::SetLinks(CVertexTree& target) const {
    constexpr std::size_t kAhead = 16;
    auto const copyOf = [this](std::uint32_t n) { return n == kNone ? nullptr : m_Copies[n]; };
    auto const& nodes = m_Tree.Nodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (i + kAhead < nodes.size()) {
            Prefetch(&m_Copies[nodes[i + kAhead]]->m_pLeft);
            Prefetch(&m_Copies[nodes[i + kAhead]]->m_nBalance);
        }
        tagVertexNode& copy = *m_Copies[nodes[i]];
        copy.m_pLeft = copyOf(m_Tree.Left(nodes[i]));
        copy.m_pRight = copyOf(m_Tree.Right(nodes[i]));
        copy.m_nBalance = m_Tree.Balance(nodes[i]);
    }
    target.m_pRoot = copyOf(m_Tree.Root());
}

void VertexCopier::Clear() {
    for (std::uint32_t const nKey : m_Tree.Nodes()) m_Copies[nKey] = nullptr;
    m_Tree.Clear();
    m_Mistakable.clear();
    m_nMistakable = 0;
}
