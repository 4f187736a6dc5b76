#include "contours/ChordCheck.h"

#include <algorithm>
#include <cmath>

#include "foundation/Geometry.h"
#include "foundation/Require.h"

namespace varnet {

namespace {

// Times the squared distance of a point from the anchor: the computed squared distance from a chord is off by
// less than a tenth of this.
constexpr double kDoubt = 1e-13;

// Times the squared tolerance: points nearer to the anchor leave the direction of a chord too open for
// slopes.
constexpr double kNearAnchor2 = 16.0;

// Squared lengths in this range leave room for their products, and their ends are two points to D2ofPtoLine.
constexpr double kShortest2 = 1e-7;
constexpr double kLongest2 = 1e60;

bool IsOrdinary(double dLength2) { return dLength2 > kShortest2 && dLength2 < kLongest2; }

}  // namespace

bool ChordCheck::Holds(PointNode* pEnd) {
    VARNET_REQUIRE(pEnd->pPrev == (m_pLast != nullptr ? m_pLast : m_pAnchor->pNext));
    if constexpr (kRequirementsChecked) m_pLast = pEnd;
    TakeIn(pEnd->pPrev);
    if (!m_bHasAxis || IsInWedge(pEnd->data)) {
        return std::all_of(m_Asked.begin(), m_Asked.end(),
                           [this, pEnd](PointNode* p) { return IsNear(p, pEnd); });
    }
    for (PointNode* p = m_pAnchor->pNext; p != pEnd; p = p->pNext) {
        if (!IsNear(p, pEnd)) return false;
    }
    return true;
}

void ChordCheck::TakeIn(PointNode* pNode) {
    double const dx = pNode->data.x - m_pAnchor->data.x;
    double const dy = pNode->data.y - m_pAnchor->data.y;
    double const dDistance2 = dx * dx + dy * dy;
    // No line through the anchor is further away than the anchor: what D2ofPtoLine takes off the squared
    // distance is never below zero.
    if (dDistance2 <= m_dTolerance2) return;
    double const dSafe2 = m_dTolerance2 - kDoubt * dDistance2;
    if (!(dSafe2 > 0.0) || dDistance2 < kNearAnchor2 * m_dTolerance2 || !IsOrdinary(dDistance2)) {
        m_Asked.push_back(pNode);
        return;
    }
    if (!m_bHasAxis) {
        m_bHasAxis = true;
        m_dAxisX = dx;
        m_dAxisY = dy;
        m_dAxisLength2 = dDistance2;
        m_dLowest = -HUGE_VAL;
        m_dHighest = HUGE_VAL;
    }
    double const dAlong = m_dAxisX * dx + m_dAxisY * dy;
    double const dAcross = m_dAxisX * dy - m_dAxisY * dx;
    if (!(dAlong > std::fabs(dAcross))) {
        m_Asked.push_back(pNode);
        return;
    }
    double const dSafe = std::sqrt(dSafe2 * m_dAxisLength2);
    m_dLowest = std::max(m_dLowest, (dAcross - dSafe) / dAlong);
    m_dHighest = std::min(m_dHighest, (dAcross + dSafe) / dAlong);
}

// A point is no further from a chord than it stands above or below it, at right angles to the axis.
bool ChordCheck::IsInWedge(CPoint2D const& end) const {
    double const dx = end.x - m_pAnchor->data.x;
    double const dy = end.y - m_pAnchor->data.y;
    double const dAlong = m_dAxisX * dx + m_dAxisY * dy;
    double const dAcross = m_dAxisX * dy - m_dAxisY * dx;
    if (!IsOrdinary(dx * dx + dy * dy) || !(dAlong > std::fabs(dAcross))) return false;
    double const dSlope = dAcross / dAlong;
    return m_dLowest <= dSlope && dSlope <= m_dHighest;
}

bool ChordCheck::IsNear(PointNode* pNode, PointNode* pEnd) const {
    return !(D2ofPtoLine(pNode->data, m_pAnchor->data, pEnd->data) > m_dTolerance2);
}

}  // namespace varnet
