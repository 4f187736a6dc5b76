#pragma once

#include <cstdint>

#include "foundation/Export.h"
#include "foundation/List.h"
#include "trees/VertexTree.h"

class CSTLModel;

/// Bits of CFeatureEdge::m_nEdgeFlag.
enum : std::uint32_t {
    FE_SELECTED = 0x100  ///< the chain is longer than the least length
};

/// A chain of mesh vertices that hangs in the air. The vertices belong to the model's tree. Copies are
/// shallow: the chain is then shared, and only one of the two may be changed or destroyed.
class VARNET_API CFeatureEdge {
public:
    CFeatureEdge();
    CFeatureEdge(CFeatureEdge const&) = default;
    CFeatureEdge& operator=(CFeatureEdge const&) = default;
    virtual ~CFeatureEdge() = default;

    /// The length of the chain in millimetres: the cached value where it is below 1e10 and bRecalc is 0, else
    /// computed anew and cached. 0.0 for fewer than two vertices, which is not cached.
    double GetLength(int bRecalc);
    /// The lowest z of the chain: the cached value where it is below 1e10 and bRecalc is 0, else computed
    /// anew and cached. 1e10 for an empty chain.
    double GetMinZ(int bRecalc);
    /// Adds the chain's bar to the model: a rectangular section of plan width 2 dHalfWidth swept along the
    /// chain, with its top dRise above the chain and its bottom dDown below it, or at the height dDown where
    /// bAbsolute is not 0. All lengths are in millimetres. Facets point out of the bar; they come as the
    /// start cap (2), eight for each later vertex (top, bottom, left side, right side), and the end cap (2).
    /// A chain of two vertices thus makes a box.
    ///
    /// A section stands square to the line from the first vertex of the chain to its own in plan, the first
    /// section to the line to the second vertex: sections of a bent chain turn with the chord from the start.
    /// A vertex that coincides with the first in plan, as there is one in every ring, has no such line. Its
    /// section is turned as the last one before it that had a line, where there is none as the next one that
    /// has. A chain that has no line at all adds nothing, nor does one of fewer than two vertices. Facets
    /// with a corner that is not finite are left out. The chain and its caches are not changed.
    void GenSTL(CSTLModel* pModel, double dHalfWidth, double dRise, double dDown, int bAbsolute);

    XR_CList<tagVertexNode*, tagVertexNode*> m_VertexList;  ///< from one end to the other
    std::uint32_t m_nEdgeFlag;
    double m_dHalfWidth;  ///< half the width of the chain's bar, millimetres
    double m_dRise;       ///< how far the bar's top stands above the chain, millimetres
    double m_dMinZ;       ///< cached lowest z; 1e10 stands for not computed
    double m_dLength;     ///< cached length; 1e10 stands for not computed
};

/// Whether the edge from A to B of the facet is suspended, a lowest line of the surface around it: 1 when the
/// two facets at the edge taken together face up, -1 when they face down (a sum of 0 counts as the way that
/// the given facet faces, level as up). 0 when it is not suspended:
///
/// - its slope, height over plan length, is dSlopeLimit or more (a vertical edge always is too steep);
/// - one of the two facets holds it, see CFacet::IsSupportEdge;
/// - there is no facet on its other side, or that facet's m_nRegion is 0, for judged already.
VARNET_API int IsSuspendEdge(tagVertexNode* pA, tagVertexNode* pB, CFacet* pFacet, double dSlopeLimit);
