#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "foundation/CompleteTree.h"
#include "foundation/PlanBox.h"

namespace varnet {

/// Boxes in a line, and a search for those that are inside a box or have it inside, in the order of the line.
///
/// That one box is inside another is four inequalities between their coordinates, so that boxes are points in
/// a space of four axes, and a k-d tree over these finds them (J. L. Bentley, 1975). A tree is built in one
/// go; boxes that come later gather in a short list, which is built into a tree together with all trees that
/// are not larger (J. L. Bentley and J. B. Saxe, "Decomposable searching problems", 1980). Every node knows
/// the first place in the line below it, so that a search yields boxes in order without looking for all.
class BoxIndex {
    // Instead of the number of a tree.
    static constexpr std::int32_t kRecentTree = -1;  // the entry is not in a tree yet
    static constexpr std::int32_t kNoTree = -2;      // the loop is in no index
    static constexpr std::int32_t kBeforeAll = std::numeric_limits<std::int32_t>::min();

public:
    struct Entry {
        PlanBox box;
        std::int32_t nPlace;  ///< in the line; each only once
        std::int32_t nLoop;   ///< whose box it is
    };

    /// Where the box of a loop stands. A loop stands in one index at a time.
    struct Standing {
        std::int32_t nTree = kNoTree;
        std::int32_t nEntry = 0;
    };

    /// Writes down in `standings`, by loop, where each box stands; indices may share them. Coordinates that
    /// are not numbers relate to nothing: such boxes are left out.
    BoxIndex(std::vector<Standing>& standings, std::vector<Entry> entries);

    void Add(Entry const& entry);
    void Remove(std::int32_t nLoop);

private:
    struct Node;

public:
    /// One search. Boxes may be removed meanwhile, but not added.
    class Search {
    public:
        /// Looks at the places behind the given one alone.
        Search(BoxIndex const& index, PlanBox const& box, std::int32_t nBehind = kBeforeAll);
        /// The next loop in line whose box is inside, or has the box inside; false at the end.
        bool Next(std::int32_t& nLoop);

    private:
        struct Item {
            std::int32_t nPlace;
            std::int32_t nTree;
            std::int32_t nNode;  // -1 for an entry
            std::int32_t nEntry;
        };
        static bool IsLater(Item const& a, Item const& b);
        bool MayHold(Node const& node) const;
        void AppendNode(std::size_t nTree, std::size_t nNode);
        void AppendEntries(std::vector<Entry> const& entries, std::size_t nBegin, std::size_t nEnd);
        void TakeIn(std::size_t nItems);

        BoxIndex const& m_Index;
        std::uint32_t m_nAdds;  // of the index when the search began; for the check alone
        PlanBox m_Box;
        std::int32_t m_nBehind;
        std::vector<Item> m_Heap;  // the first place on top
    };

private:
    static constexpr std::int32_t kGone = std::numeric_limits<std::int32_t>::max();

    /// The lowest and the highest of each side of the boxes below.
    struct Node {
        PlanBox lowest;
        PlanBox highest;
        std::int32_t nFirstPlace;
        std::int32_t nLastPlace;  // of those that stood here at first
    };

    struct Tree {
        CompleteTree shape;
        std::vector<Entry> entries;  // by leaf
        std::vector<Node> nodes;

        explicit Tree(std::vector<Entry> all);
        std::size_t LeafBegin(std::size_t nLeaf) const { return shape.BeginOf(entries.size(), nLeaf); }
        std::size_t LeafOf(std::size_t nEntry) const;
        void Build(std::size_t nNode, std::size_t nFirstLeaf, std::size_t nLeavesBelow);
        void Remove(std::size_t nEntry);
        std::int32_t FirstPlaceInLeaf(std::size_t nLeaf) const;
        std::int32_t FirstPlaceBelow(std::size_t nNode) const;
    };

    static bool MayRelate(Node const& node, PlanBox const& box);
    void AddTree(std::vector<Entry> entries);

    std::vector<Standing>* m_pStandings;
    std::vector<Tree> m_Trees;    // in order of size, the largest first
    std::vector<Entry> m_Recent;  // not in a tree yet
    std::uint32_t m_nAdds = 0;    // for the check of searches alone
};

}  // namespace varnet
