#include "trees/FirstHeights.h"

#include "trees/CoordinateHash.h"
#include "trees/VertexInsertion.h"

namespace varnet {

std::size_t FirstHeights::PlaceOf(double dLower) {
    return static_cast<std::size_t>(
               coordinate_hash::Spread(coordinate_hash::Bits(dLower) * coordinate_hash::kFactorZ) >> 40) %
           kPairs;
}

double FirstHeights::LookUp(CVertexTree const& tree, double z) {
    tagVertexNode const* p = tree.m_pRoot;
    while (COMPARE const order = vertex_insertion::CompareAxis(p->z, z, tree.m_dTolerance)) {
        p = order == COMPARE_LESS ? p->m_pLeft : p->m_pRight;
    }
    return p->z;
}

}  // namespace varnet
