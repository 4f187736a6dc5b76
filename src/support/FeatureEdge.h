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

    XR_CList<tagVertexNode*, tagVertexNode*> m_VertexList;  ///< from one end to the other
    std::uint32_t m_nEdgeFlag;
    double m_dHalfWidth;  ///< half the width of the chain's bar, millimetres
    double m_dRise;       ///< how far the bar's top stands above the chain, millimetres
    double m_dMinZ;       ///< cached lowest z; 1e10 stands for not computed
    double m_dLength;     ///< cached length; 1e10 stands for not computed
};
