#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "foundation/BoundBox.h"

namespace varnet {

/// A box as its four coordinates: minimum x and y, maximum x and y.
using BoxKey = std::array<double, 4>;

inline BoxKey KeyOf(CBoundBox2D const& box) {
    return {box.m_ptMin.x, box.m_ptMin.y, box.m_ptMax.x, box.m_ptMax.y};
}

/// Whether both corners of b are strictly inside a: BoxRelation(a, b) == 0, and BoxRelation(b, a) == 1.
inline bool IsBoxInside(BoxKey const& a, BoxKey const& b) {
    return a[0] < b[0] && b[0] < a[2] && a[1] < b[1] && b[1] < a[3] && a[0] < b[2] && b[2] < a[2] &&
           a[1] < b[3] && b[3] < a[3];
}

/// Boxes in a line, and a search for those that are inside a box or have it inside, in the order of the line.
///
/// That one box is inside another is four inequalities between their coordinates, so that boxes are points in
/// a space of four axes, and a k-d tree over these finds them (J. L. Bentley, 1975). A tree is built in one
/// go; boxes that come later gather in a short list, which is built into a tree together with all trees that
/// are not larger (J. L. Bentley and J. B. Saxe, "Decomposable searching problems", 1980). Every node knows
/// the first place in the line below it, so that a search yields boxes in order without looking for all.
class BoxIndex {
    // In a slot, instead of the number of a tree.
    static constexpr std::int32_t kRecentTree = -1;  // the entry is not in a tree yet
    static constexpr std::int32_t kNoTree = -2;      // the loop is in no index

public:
    struct Entry {
        BoxKey box;
        std::int32_t nPlace;  ///< in the line; each only once
        std::int32_t nLoop;   ///< whose box it is
    };

    /// Where the box of a loop stands. A loop stands in one index at a time.
    struct Slot {
        std::int32_t nTree = kNoTree;
        std::int32_t nEntry = 0;
    };

    /// The slots of all loops, which indices may share. Coordinates that are not numbers relate to nothing:
    /// such boxes are left out.
    BoxIndex(std::vector<Slot>& slots, std::vector<Entry> entries);

    void Add(Entry const& entry);
    void Remove(std::int32_t nLoop);

    /// One search. Boxes may be removed meanwhile, but not added.
    class Search {
    public:
        Search(BoxIndex const& index, BoxKey const& box);
        /// The next loop in line whose box is inside, or has the box inside; false at the end.
        bool Next(std::int32_t& nLoop);

    private:
        struct Item {
            std::int32_t nPlace;
            std::int32_t nTree;
            std::int32_t nNode;  // -1 for an entry
            std::int32_t nEntry;
        };
        void Push(Item const& item);
        void PushNode(std::size_t nTree, std::size_t nNode);
        void PushEntries(std::vector<Entry> const& entries, std::size_t nBegin, std::size_t nEnd,
                         std::int32_t nTree);

        BoxIndex const& m_Index;
        std::uint32_t m_nAdds;  // of the index when the search began; for the check alone
        BoxKey m_Box;
        std::vector<Item> m_Heap;  // the first place on top
    };

private:
    static constexpr std::int32_t kGone = std::numeric_limits<std::int32_t>::max();

    struct Node {
        BoxKey lowest;
        BoxKey highest;
        std::int32_t nFirstPlace;
    };

    /// Children of node i are 2i + 1 and 2i + 2; the leaves are the last nodes.
    struct Tree {
        std::vector<Entry> entries;
        std::vector<Node> nodes;
        std::size_t nLeaves = 0;

        explicit Tree(std::vector<Entry> all);
        std::size_t LeafBegin(std::size_t nLeaf) const { return entries.size() * nLeaf / nLeaves; }
        std::size_t LeafOf(std::size_t nEntry) const;
        void Build(std::size_t nNode, std::size_t nFirstLeaf, std::size_t nLeavesBelow);
        void Remove(std::size_t nEntry);
        std::int32_t FirstPlaceInLeaf(std::size_t nLeaf) const;
        std::int32_t FirstPlaceBelow(std::size_t nNode) const;
    };

    static bool MayRelate(Node const& node, BoxKey const& box);
    void AddTree(std::vector<Entry> entries);

    std::vector<Slot>* m_pSlots;
    std::vector<Tree> m_Trees;    // in order of size, the largest first
    std::vector<Entry> m_Recent;  // not in a tree yet
    std::uint32_t m_nAdds = 0;    // for the check of searches alone
};

}  // namespace varnet
