#include "trees/DrawnCorners.h"

namespace varnet {

namespace {

// In tolerances. A band is wider than the reach to both sides, so that the ends of a reach lie in all the
// bands there are.
constexpr double kReach = 1.25;
constexpr double kBand = 4.0;

}  // namespace

DrawnCorners::DrawnCorners(double dTolerance)
    : m_dReach(kReach * dTolerance), m_dBandsPerUnit(1.0 / (kBand * dTolerance)) {}

void DrawnCorners::Begin() {
    m_Changes.resize(std::size_t{1} << kBandBits);
    m_Known.resize(kPlaces);
}

void DrawnCorners::Remember(double z, std::size_t nHash, tagVertexNode* pNode) {
    m_Known[nHash % kPlaces] = {z, pNode, m_Changes[BandOf(z)], m_nAge};
}

void DrawnCorners::Change(double dHeight) {
    if (m_Known.empty()) return;
    ++m_Changes[BandOf(dHeight - m_dReach)];
    ++m_Changes[BandOf(dHeight + m_dReach)];
}

}  // namespace varnet
