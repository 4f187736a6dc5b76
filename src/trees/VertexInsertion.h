#pragma once

#include <cstdint>

#include "trees/Avl.h"
#include "trees/VertexTree.h"

namespace varnet {

// How a point finds its place in the vertex tree. CVertexTree and the vertex cache of the readers share it;
// they differ in what they watch on the way.

namespace vertex_insertion {

/// Looks at nothing.
struct NoWatch {
    void MetRow(double) {}
    void BeforeNew(double, double) {}
    void BeforeRotation(tagVertexNode const&) {}
};

/// One axis of a comparison. A difference of exactly the tolerance is within it, and so is one that is not a
/// number.
inline COMPARE CompareAxis(double node, double point, double dTolerance) {
    double const d = node - point;
    if (d > dTolerance) return COMPARE_GREATER;
    if (d < -dTolerance) return COMPARE_LESS;
    return COMPARE_EQUAL;
}

/// z, then y, then x. A z within tolerance is overwritten with the node's. The watch is told the y of a node
/// that lies within tolerance in z and y.
template <class Watch>
COMPARE CompareAndSnap(CPoint3D const& node, double x, double y, double& z, double dTolerance, Watch& watch) {
    if (COMPARE const order = CompareAxis(node.z, z, dTolerance)) return order;
    z = node.z;
    if (COMPARE const order = CompareAxis(node.y, y, dTolerance)) return order;
    watch.MetRow(node.y);
    return CompareAxis(node.x, x, dTolerance);
}

/// Counts the node as the tree's next one.
inline void CountVertex(CVertexTree& tree, tagVertexNode& node) {
    node.m_nIndex = static_cast<std::int32_t>(tree.m_nCount);
    ++tree.m_nCount;
    tree.m_BoundBox += node;
}

/// The vertex for the point where the way, on which it may have passed nodes that are no corner of its own
/// row, leads it: found or new. The watch is told the y and the z of a new one before it is in the tree, and,
/// before a rotation, the node whose place another one will take.
template <class Watch>
tagVertexNode* InsertPoint(CVertexTree& tree, avl::Way<tagVertexNode>& way, CPoint3D& point, int& nTaller,
                           Watch& watch) {
    // Held apart from the tree's memory, so that the descent need not read the point again at each level.
    double const x = point.x;
    double const y = point.y;
    double z = point.z;
    double const dTolerance = tree.m_dTolerance;
    tagVertexNode* const pResult = avl::Insert(
        way, nTaller,
        [x, y, &z, dTolerance, &watch](tagVertexNode* pNode) {
            return CompareAndSnap(*pNode, x, y, z, dTolerance, watch);
        },
        [&tree, x, y, &z, &watch] {
            watch.BeforeNew(y, z);
            auto* const pNode = new tagVertexNode(CPoint3D(x, y, z));
            CountVertex(tree, *pNode);
            return pNode;
        },
        [&watch](tagVertexNode* pNode) { watch.BeforeRotation(*pNode); });
    point.z = z;
    return pResult;
}

}  // namespace vertex_insertion

}  // namespace varnet
