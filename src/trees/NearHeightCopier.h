#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/Prefetch.h"
#include "foundation/memory/LargePages.h"
#include "trees/NearRows.h"
#include "trees/ParentAvl.h"
#include "trees/RankSet.h"
#include "trees/VertexTree.h"

namespace varnet {

/// Copies vertices of one tree to other trees, empty ones, in any order, where heights of the source may lie
/// within the tolerance of the target: what was read with a smaller tolerance. The result is that of
/// CVertexTree::AddNode for each, node for node.
///
/// Why that is exact. Heights of the target are heights of the source, so their order is known: the heights
/// next to a vertex's own are found in a set of ranks. VertexCache.h says why a point takes the one height
/// that is near, or of two the one of the uppermost vertex of both. From there on:
///
/// 1. All vertices of a height stand below the uppermost one of it. A point's way meets that one before it
///    can meet any other vertex near its height, so the search for its place may begin there; that of a new
///    height may begin at the uppermost vertex of the height next to it on either side, the one that stands
///    lower: one of the two vertices between which the place is stands below the other, and the place below
///    it.
/// 2. Which vertex is the uppermost of a height, or of two heights that are next to each other, changes only
///    when it is rotated and the vertex that takes its place is one of theirs: the vertices of such heights
///    stand together in the order. A new height comes below both its neighbours.
/// 3. A vertex that has come to a copy of the same x and y comes to it again whenever it takes that height,
///    unless the rows around are entangled (NearRows.h, and VertexCache.h for the reason).
class NearHeightCopier {
public:
    /// The source's vertices by rank, heights ascending. Zeros of one height have one sign. They must outlive
    /// this and stay as they are.
    explicit NearHeightCopier(std::span<tagVertexNode* const> sources);

    static constexpr std::size_t kMostVertices = std::size_t{1} << 30;

    /// Copies vertices to this tree, which is empty, as long as this lives. Its destructor links them, until
    /// when the tree does not know them.
    class Target {
    public:
        Target(NearHeightCopier& copier, CVertexTree& tree);
        Target(Target const&) = delete;
        Target& operator=(Target const&) = delete;
        ~Target() { m_Copier.Finish(); }

        /// As CVertexTree::AddNode for the point of the source's vertex of that rank. Throws std::bad_alloc.
        tagVertexNode* AddNode(std::uint32_t nRank) { return m_Copier.AddNode(nRank); }

    private:
        NearHeightCopier& m_Copier;
    };

    static constexpr std::size_t kLargestGroup = 96;

    /// Brings what AddNode looks at for all ranks of a group into the processor's cache, in two steps: the
    /// first one early, the second just before.
    void PrefetchRecords(std::span<std::uint32_t const> ranks) const;
    void PrefetchWays(std::span<std::uint32_t const> ranks) const;

private:
    // Of a vertex of the source and of the node that was made of it first. Nodes that are made of a vertex
    // once more have records of their own behind those. Records are known by their places; the first stands
    // above the root.
    struct alignas(64) Record {
        double x;
        double y;
        tagVertexNode* pVertex;    // of the node, null when there is none
        std::uint32_t nOwnHeight;  // of the vertex
        std::uint32_t nLast;       // the node of the same x and y to which the vertex came last
        std::uint32_t nChildren[2];
        std::uint32_t nParent;
        std::uint32_t nHeight;  // of the node
        std::int8_t nBalance;
    };
    static_assert(sizeof(Record) == 64);

    // A height of the source. All but z is of the target, where it has the height. Heights are known by
    // their places too, from 1 on.
    struct Height {
        double z;
        double dBelow;  // the next heights of the target, or infinity
        double dAbove;
        std::uint32_t nTop;  // the uppermost node
        bool bBelowFirst;    // of this height and the next one, that one has the uppermost node of both
        bool bAboveFirst;
    };
    static_assert(sizeof(Height) == 32);

    static constexpr std::uint32_t kNone = parent_avl::kNothing;

    // The heights of the target next to a point's: itself, where it is there.
    struct NextHeights {
        std::uint32_t nLower;
        std::uint32_t nUpper;
    };
    // Where a way down ends: at a node, or at an empty link.
    struct End {
        std::uint32_t nNode;
        parent_avl::Link link;
    };

    tagVertexNode* AddNode(std::uint32_t nRank);
    tagVertexNode* AddAgain(std::uint32_t nRecord);
    tagVertexNode* AddAtHeight(std::uint32_t nRecord, std::uint32_t nHeight);
    tagVertexNode* AddHeight(std::uint32_t nRecord, NextHeights const& next);
    NextHeights FindNext(std::uint32_t nOwnHeight) const;
    std::uint32_t TopFor(std::uint32_t nHeight, NextHeights const& next) const;
    std::uint32_t FindNear(std::uint32_t nOwnHeight, NextHeights const& next) const;
    bool IsNear(double dHeight, double z) const;
    bool IsStillTaken(std::uint32_t nHeight, std::uint32_t nOwnHeight) const;
    End FindEnd(Record const& record, std::uint32_t nHeight, RowsMet& met) const;
    bool IsAlone(std::uint32_t nHeight, double y, double dDistance) const;
    std::uint32_t Make(std::uint32_t nRecord, std::uint32_t nHeight, RowsMet const& met);
    void Grow();
    void PutIn(std::uint32_t nNode, parent_avl::Link const& link);
    void BeforeRotation(std::uint32_t nNode, std::uint32_t nChild);
    void SetNext(std::uint32_t nLower, std::uint32_t nUpper, bool bUpperFirst);
    void SetFirst(std::uint32_t nLower, std::uint32_t nUpper, bool bUpper);
    void Remember(std::uint32_t nRecord, std::uint32_t nNode);
    std::uint32_t RecordOf(std::uint32_t nInSet) const { return nInSet == RankSet::kNone ? kNone : nInSet; }
    int BalanceAt(std::uint32_t nNode) const { return m_Records[nNode].nBalance; }
    void Finish() noexcept;
    void SetLinks();
    void Clear();

    double m_dTolerance;
    std::size_t m_nSources;
    ZeroedTable<Record> m_Records;
    std::size_t m_nRecords;
    std::vector<Height> m_Heights;
    RankSet m_Taken;  // the heights of the target
    NearRows m_Rows;
    CVertexTree* m_pTarget = nullptr;
    std::vector<std::uint32_t> m_Touched;  // records that are not as they were
};

}  // namespace varnet
