#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "trees/VertexTree.h"

/// Answers, while a file is read into an empty tree, most corners by a look into a hash table instead of a
/// descent of the tree. The result is the same as that of CVertexTree::AddNode, node for node.
///
/// Why that is exact. The cache answers only where a vertex with exactly the coordinates of the point exists,
/// in a tree that AddNode alone has filled since it was empty. Write a ~ b for two numbers neither of which
/// exceeds the other by more than the tolerance, as rounded subtraction has it. Rounding is monotonic: where
/// a < b < c, and a, b are more than the tolerance apart, so are a, c.
///
/// 1. Heights in the tree are equal or more than the tolerance apart. A point takes the height of the first
/// vertex
///    on its way with height ~ its own. While none has come, all comparisons agree with the order of the
///    numbers, and the way passes the neighbours of the point's place in that order; so, if any vertex's
///    height is ~ the point's, one of the neighbours' is, and it is met. From then on the point is at a
///    height of the tree.
/// 2. Suppose that no comparison so far has met two different y with y ~ y' at one height. Then, by the same
///    argument, the y of the vertices at one height are equal or more than the tolerance apart, and so are
///    the x of those of equal height and y, since a point that meets a vertex within tolerance on all axes
///    becomes it.
/// 3. So comparisons agree with a strict order on (z, y, x), and a point with exactly the coordinates of a
/// vertex
///    meets no other vertex within tolerance on all axes: its descent ends at that vertex. Its z does not
///    change.
///
/// The condition of 2 is watched on every descent. Once it breaks, or a coordinate is not a number, the cache
/// answers nothing any more.
class VertexCache {
public:
    /// For a tree that nothing but this cache adds to while the cache lives. On a tree that is not empty, the
    /// cache passes everything on to the tree.
    explicit VertexCache(CVertexTree& tree);

    /// As CVertexTree::AddNode.
    tagVertexNode* AddNode(CPoint3D& point);

    /// Brings what a later AddNode of the point will look at into the processor's cache. Changes nothing.
    void Prefetch(CPoint3D const& point) const;

private:
    static std::size_t Hash(CPoint3D const& point);
    tagVertexNode* Find(CPoint3D const& point, std::size_t nHash) const;
    void Remember(tagVertexNode* pNode, std::size_t nHash);
    void Grow();
    void SwitchOff();

    CVertexTree& m_Tree;
    bool m_bOn;
    std::vector<tagVertexNode*> m_Slots;  // a power of two; open addressing with a few probes
    std::size_t m_nUsed = 0;
};
