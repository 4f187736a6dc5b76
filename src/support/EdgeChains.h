#pragma once

#include <span>

#include "foundation/Array.h"
#include "support/FeatureEdge.h"

namespace varnet {

/// An edge of a mesh, as the facet that it was found at is wound.
struct MeshEdge {
    tagVertexNode* pHead;
    tagVertexNode* pTail;
};

/// Joins edges to chains by their common vertices and adds the chains, new objects, to the end of the array.
///
/// The first edge in order that is left begins a chain. Again and again, the first edge in order that is left
/// and has one of the chain's two end vertices is taken away and joins the chain: with its head at the
/// chain's head, at the chain's tail, then with its tail at the chain's head, at the chain's tail, as the two
/// ends were before it came. Each of these that holds adds the edge's other vertex to that end. So an edge
/// that closes a ring stands at both ends of the chain, and at a vertex of three edges or more the order of
/// the edges decides.
///
/// The time is that of sorting the ends of the edges.
void ChainEdges(std::span<MeshEdge const> edges, XR_CArray<CFeatureEdge*, CFeatureEdge*>& chains);

}  // namespace varnet
