#pragma once

#include <cstddef>

namespace varnet {

/// The shape of a binary tree that stands in an array without links, level by level: the children of node i
/// are 2i + 1 and 2i + 2, and the leaves are the last nodes (J. W. J. Williams, "Algorithm 232: Heapsort",
/// 1964). Every tree over boxes in this library has this shape; what a node holds is the tree's own affair.
struct CompleteTree {
    /// More than the depth of any tree: room for a walk that keeps one sibling a level for later.
    static constexpr std::size_t kStackSize = 64;

    std::size_t nLeaves = 1;  ///< at least 1

    /// The fewest leaves, a power of two, that hold so many items with at most nLeafSize in each.
    static CompleteTree ForItems(std::size_t nItems, std::size_t nLeafSize) {
        CompleteTree tree;
        while (tree.nLeaves * nLeafSize < nItems) tree.nLeaves *= 2;
        return tree;
    }

    std::size_t NodeCount() const { return 2 * nLeaves - 1; }
    /// Nodes 0 to this, exclusive, have children. Going down from it, children come before their parents.
    std::size_t InnerCount() const { return nLeaves - 1; }
    bool IsLeaf(std::size_t nNode) const { return nNode >= nLeaves - 1; }
    std::size_t LeafOf(std::size_t nNode) const { return nNode - (nLeaves - 1); }
    std::size_t NodeOf(std::size_t nLeaf) const { return nLeaf + (nLeaves - 1); }

    static std::size_t Left(std::size_t nNode) { return 2 * nNode + 1; }
    static std::size_t Right(std::size_t nNode) { return 2 * nNode + 2; }
    static std::size_t Parent(std::size_t nNode) { return (nNode - 1) / 2; }
    static std::size_t Sibling(std::size_t nNode) { return ((nNode - 1) ^ 1) + 1; }

    /// Where the items of a leaf begin when all leaves share nItems evenly; those of the last end with
    /// BeginOf(nItems, nLeaves).
    std::size_t BeginOf(std::size_t nItems, std::size_t nLeaf) const { return nItems * nLeaf / nLeaves; }
};

}  // namespace varnet
