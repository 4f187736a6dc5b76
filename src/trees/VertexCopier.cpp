#include "trees/VertexCopier.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "trees/Avl.h"
#include "trees/VertexInsertion.h"

namespace varnet {

namespace {

bool HasSameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// False for what is not a number.
bool IsWithin(CPoint3D const& point, double dLargest) {
    return std::fabs(point.x) <= dLargest && std::fabs(point.y) <= dLargest && std::fabs(point.z) <= dLargest;
}

// Goes through the vertices of a tree in its order, and groups the rows at a height so that groups lie more
// than the tolerance apart. A vertex lies on one side of every group but its own.
class RowGroups {
public:
    explicit RowGroups(double dTolerance) : m_dTolerance(dTolerance) {}

    void Add(CPoint3D const& point) {
        m_bSorted =
            m_bSorted && (m_nVertices == 0 || point.z > m_dLastHeight || HasSameBits(point.z, m_dLastHeight));
        m_dLastHeight = point.z;
        if (m_Groups.empty() || IsBeyond(point.z, m_dHeight)) {
            EndHeight();
            m_dHeight = point.z;
        }
        m_bOrdered = m_bOrdered && HasSameBits(point.z, m_dHeight);
        if (m_Groups.empty() || IsBeyond(point.y, m_Groups.back().dHighest)) {
            m_Groups.push_back({m_nVertices, point.y, point.y, false});
        } else {
            AddToLast(point);
        }
        m_dLast = point.x;
        ++m_nVertices;
    }

    /// Whether heights come in their order, zeros of one height with one sign.
    bool AreSorted() const { return m_bSorted; }

    /// Whether they lie more than the tolerance apart as well.
    bool AreOrdered() const { return m_bOrdered; }

    /// The groups in which vertices may be mistaken for each other: the number of the first vertex, and of
    /// the one behind the last. Where all rows of a group are near each other, its vertices stand in the
    /// order of their x, as those of one row do, and can't be mistaken if they are apart.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> const& Mistakable() {
        EndHeight();
        return m_Mistakable;
    }

private:
    struct Group {
        std::uint32_t nFirst;
        double dLowest;  // y
        double dHighest;
        bool bMistakable;
    };

    bool IsBeyond(double d, double dBefore) const {
        return vertex_insertion::CompareAxis(d, dBefore, m_dTolerance) == COMPARE_GREATER;
    }

    // Rows that are near each other come in any order, and one may join groups that seemed to lie apart.
    void AddToLast(CPoint3D const& point) {
        Group& last = m_Groups.back();
        last.dLowest = std::min(last.dLowest, point.y);
        last.dHighest = std::max(last.dHighest, point.y);
        last.bMistakable =
            last.bMistakable || IsBeyond(last.dHighest, last.dLowest) || !IsBeyond(point.x, m_dLast);
        while (m_Groups.size() > 1 && !IsBeyond(point.y, m_Groups[m_Groups.size() - 2].dHighest)) {
            Group const joined = m_Groups.back();
            m_Groups.pop_back();
            m_Groups.back().dLowest = std::min(m_Groups.back().dLowest, joined.dLowest);
            m_Groups.back().dHighest = std::max(m_Groups.back().dHighest, joined.dHighest);
            m_Groups.back().bMistakable = true;
        }
    }

    void EndHeight() {
        for (std::size_t i = 0; i < m_Groups.size(); ++i) {
            if (!m_Groups[i].bMistakable) continue;
            bool const bLast = i + 1 == m_Groups.size();
            m_Mistakable.emplace_back(m_Groups[i].nFirst, bLast ? m_nVertices : m_Groups[i + 1].nFirst);
        }
        m_Groups.clear();
    }

    double m_dTolerance;
    bool m_bSorted = true;
    bool m_bOrdered = true;
    std::uint32_t m_nVertices = 0;
    double m_dLastHeight = 0.0;
    double m_dHeight = 0.0;
    double m_dLast = 0.0;         // x of the last vertex
    std::vector<Group> m_Groups;  // at the height, by y
    std::vector<std::pair<std::uint32_t, std::uint32_t>> m_Mistakable;
};

}  // namespace

VertexCopier::VertexCopier(CVertexTree const& source, double dLargest) : m_Tree(0) {
    constexpr std::size_t kMostReserved = std::size_t{1} << 20;  // a host may have set m_nCount
    m_Sources.reserve(std::min<std::size_t>(source.m_nCount, kMostReserved));
    RowGroups groups(CVertexTree().m_dTolerance);
    avl::WalkInOrder(source.m_pRoot, [this, &groups, dLargest](tagVertexNode* pNode) {
        m_bRanked = m_bRanked && IsWithin(*pNode, dLargest);
        groups.Add(*pNode);
        m_Sources.push_back(pNode);
    });
    m_bRanked =
        m_bRanked && groups.AreSorted() && m_Sources.size() <= ForeseenTree::kMostNodes && FindRanks();
    m_bOrdered = m_bRanked && groups.AreOrdered();
    if (!m_bOrdered) return;
    m_Tree = ForeseenTree(m_Sources.size());
    m_Copies = ZeroedTable<tagVertexNode*>(m_Sources.size());
    for (auto const& [nFirst, nEnd] : groups.Mistakable()) {
        for (std::uint32_t n = nFirst; n < nEnd; ++n) m_Tree.SetAmbiguous(n);
    }
}

// By the numbers that vertices have from their making, which are all different and hardly larger than there
// are vertices, unless a host has changed them. Of two with one number, one will not be known.
bool VertexCopier::FindRanks() {
    constexpr std::size_t kMostNumbers = 4;
    for (std::size_t n = 0; n < m_Sources.size(); ++n) {
        if (n + look_ahead::kRankedVertex < m_Sources.size())
            Prefetch(&m_Sources[n + look_ahead::kRankedVertex]->m_nIndex);
        auto const nIndex = static_cast<std::uint32_t>(m_Sources[n]->m_nIndex);
        if (nIndex >= kMostNumbers * m_Sources.size()) return false;
        if (nIndex >= m_Ranks.size()) m_Ranks.resize(std::max<std::size_t>(nIndex + 1, m_Sources.size()));
        m_Ranks[nIndex] = static_cast<std::uint32_t>(n);
    }
    return true;
}

// All memory but that of the vertices is taken first, and each vertex before it changes anything.
void VertexCopier::CopyTo(CVertexTree& target) {
    VARNET_REQUIRE(IsOrdered() && CanCopy() && target.m_pRoot == nullptr);
    m_Tree.Prepare();
    if (m_Copies.size() < m_Tree.NodeCount()) {
        m_Copies = ZeroedTable<tagVertexNode*>(std::max(m_Tree.NodeCount(), 2 * m_Copies.size()));
    }
    m_Mistakable.reserve(m_Tree.AmbiguousCount());
    LinkAtEnd const links{*this, target};
    CPoint3D point;
    std::unique_ptr<tagVertexNode> next;
    vertex_insertion::NoWatch watch;
    auto const compare = [this, &point, &watch, &target](std::uint32_t nKey) {
        return vertex_insertion::CompareAndSnap(*m_Copies[nKey], point.x, point.y, point.z,
                                                target.m_dTolerance, watch);
    };
    auto const& announced = m_Tree.Announced();
    for (std::size_t i = 0; i < announced.size(); ++i) {
        PrefetchInsertion(i);
        point = *m_Sources[announced[i]];
        if (next == nullptr) next = std::make_unique<tagVertexNode>();
        tagVertexNode*& pCopy = m_Copies[m_Tree.Insert(announced[i], compare)];
        if (pCopy == nullptr) {
            static_cast<CPoint3D&>(*next) = point;
            vertex_insertion::CountVertex(target, *next);
            pCopy = next.release();
        }
        if (m_Tree.IsAmbiguous(announced[i])) m_Mistakable.push_back(pCopy);
    }
}

void VertexCopier::PrefetchInsertion(std::size_t i) const {
    using namespace look_ahead;
    auto const& announced = m_Tree.Announced();
    if (i + kInsertedNode < announced.size()) {
        m_Tree.PrefetchNode(announced[i + kInsertedNode]);
        Prefetch(&m_Sources[announced[i + kInsertedNode]]);
    }
    if (i + kInsertedNeighbors < announced.size()) {
        m_Tree.PrefetchNeighbors(announced[i + kInsertedNeighbors]);
        Prefetch(&m_Copies[announced[i + kInsertedNeighbors]]);
        Prefetch(&m_Sources[announced[i + kInsertedNeighbors]]->x);
        Prefetch(&m_Sources[announced[i + kInsertedNeighbors]]->z);
    }
}

// Gives the copies that have been made the places that they have in the tree.
void VertexCopier::SetLinks(CVertexTree& target) const {
    constexpr std::size_t kAhead = look_ahead::kLinkedVertex;
    auto const copyOf = [this](std::uint32_t n) { return n == kNone ? nullptr : m_Copies[n]; };
    auto const& nodes = m_Tree.Nodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (tagVertexNode const* const p =
                i + kAhead < nodes.size() ? m_Copies[nodes[i + kAhead]] : nullptr) {
            Prefetch(&p->m_pLeft);
            Prefetch(&p->m_nBalance);
        }
        tagVertexNode* const pCopy = m_Copies[nodes[i]];
        if (pCopy == nullptr) continue;
        pCopy->m_pLeft = copyOf(m_Tree.Left(nodes[i]));
        pCopy->m_pRight = copyOf(m_Tree.Right(nodes[i]));
        pCopy->m_nBalance = m_Tree.Balance(nodes[i]);
    }
    target.m_pRoot = copyOf(m_Tree.Root());
}

void VertexCopier::Clear() {
    for (std::uint32_t const nKey : m_Tree.Nodes()) m_Copies[nKey] = nullptr;
    m_Tree.Clear();
    m_Mistakable.clear();
    m_nMistakable = 0;
}

}  // namespace varnet
