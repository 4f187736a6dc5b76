#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/Require.h"
#include "foundation/memory/LargePages.h"
#include "trees/ForeseenTree.h"
#include "trees/VertexTree.h"

namespace varnet {

/// Copies vertices of one tree to other trees, empty ones, where it is known in advance which vertices will
/// come and in which order. The result is that of CVertexTree::AddNode for each, node for node.
///
/// The order of the source tree is known, and where its vertices cannot be mistaken for each other, all
/// comparisons agree with it: heights lie more than the tolerance apart, and so do rows of one y at a height,
/// and vertices in a row. Rows that are all near each other, as roundings set them apart, count as one. Where
/// rows hang together in longer chains, which is rare, what their vertices meet on their way depends on the
/// shape of the tree; for all other vertices each of these lies on one side.
class VertexCopier {
public:
    /// Ranks the vertices of the source in its order. The source must outlive this and keep its vertices.
    /// Nothing is copied from a source with a coordinate beyond dLargest, millimetres.
    VertexCopier(CVertexTree const& source, double dLargest);

    /// False where the source's vertices do not stand in the order of their heights, or some are not numbers
    /// or too large, or their numbers were changed: no rank can be relied on then.
    bool IsRanked() const { return m_bRanked; }
    /// False also where they do not stand in the order in which AddNode would hold them, since heights lie
    /// within the tolerance: nothing can be copied then.
    bool IsOrdered() const { return m_bOrdered; }
    /// The source's vertices by rank.
    std::span<tagVertexNode* const> Sources() const { return m_Sources; }

    static constexpr std::uint32_t kNone = ForeseenTree::kNone;
    /// The rank of a vertex of the source; kNone for any other vertex.
    std::uint32_t RankOf(tagVertexNode const& vertex) const {
        auto const nIndex = static_cast<std::uint32_t>(vertex.m_nIndex);
        if (nIndex >= m_Ranks.size()) return kNone;
        std::uint32_t const nRank = m_Ranks[nIndex];
        return m_Sources[nRank] == &vertex ? nRank : kNone;
    }

    /// The vertex will be copied next, maybe again.
    void Announce(std::uint32_t nRank) { m_Tree.Announce(nRank); }
    /// Whether what was announced can be copied: too many vertices that can be mistaken are too much.
    bool CanCopy() const { return m_Tree.NodeCount() <= ForeseenTree::kMostNodes; }
    /// Adds all vertices that were announced to the target, which is empty, one after the other.
    void CopyTo(CVertexTree& target);
    /// The target's vertex for one that was announced; to be asked as often and in the same order.
    tagVertexNode* Next(std::uint32_t nRank) {
        tagVertexNode* const pCopy = m_Copies[nRank];
        VARNET_REQUIRE(pCopy != nullptr || m_nMistakable < m_Mistakable.size());
        return pCopy != nullptr ? pCopy : m_Mistakable[m_nMistakable++];
    }
    /// Forgets what was announced and copied.
    void Clear();

    /// Brings what Announce or Next looks at into the processor's cache.
    void PrefetchAnnounce(std::uint32_t nRank) const { m_Tree.PrefetchNode(nRank); }
    void PrefetchNext(std::uint32_t nRank) const { Prefetch(&m_Copies[nRank]); }
    /// The vertex, without asking for it; null for one of those that can be mistaken.
    tagVertexNode const* Peek(std::uint32_t nRank) const { return m_Copies[nRank]; }

private:
    bool FindRanks();
    void PrefetchInsertion(std::size_t i) const;
    void SetLinks(CVertexTree& target) const;

    // The target owns its vertices also where memory has run out before all have come.
    struct LinkAtEnd {
        VertexCopier const& copier;
        CVertexTree& target;
        ~LinkAtEnd() { copier.SetLinks(target); }
    };

    bool m_bRanked = true;
    bool m_bOrdered = false;
    std::vector<tagVertexNode*> m_Sources;  // by rank
    std::vector<std::uint32_t> m_Ranks;     // by m_nIndex
    ForeseenTree m_Tree;
    ZeroedTable<tagVertexNode*> m_Copies;      // by the tree's keys
    std::vector<tagVertexNode*> m_Mistakable;  // in the order of their coming
    std::size_t m_nMistakable = 0;             // asked for
};

}  // namespace varnet
