#include "support/FeatureEdge.h"

namespace {

// The bar of a chain, unless the host sets others: millimetres.
constexpr double kHalfWidth = 3.0;
constexpr double kRise = 1.0;

// Stands for a measure that is not computed.
constexpr double kNotComputed = 1e10;

}  // namespace

CFeatureEdge::CFeatureEdge()
    : m_nEdgeFlag(0),
      m_dHalfWidth(kHalfWidth),
      m_dRise(kRise),
      m_dMinZ(kNotComputed),
      m_dLength(kNotComputed) {}
