#include "contours/ordering/GreedyOrder.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <utility>

#include "foundation/Require.h"

namespace varnet {

void GreedyOrder::AddPath() {
    VARNET_REQUIRE(IsOpen());
    m_bPairs = m_bPairs && m_PathOf.size() == 2 * m_FirstPoints.size();
    m_FirstPoints.push_back(static_cast<std::int32_t>(m_PathOf.size()));
}

void GreedyOrder::AddPoint(double x, double y) {
    VARNET_REQUIRE(IsOpen() && !m_FirstPoints.empty());
    m_Points.push_back({x, y, static_cast<std::int32_t>(m_Points.size())});
    m_PathOf.push_back(static_cast<std::int32_t>(m_FirstPoints.size()) - 1);
}

GreedyOrder::Pick GreedyOrder::Next(CPoint2D const& from) {
    bool const bByDistance = m_nMode == kNearest || m_nMode == kFarthest;
    std::int32_t const nPoint = bByDistance ? NextByDistance(from) : NextRandom();
    if (nPoint == PointSearch::kNone) return {-1, -1};
    std::int32_t const nPath = PathOf(nPoint);
    Remove(nPath);
    m_nNearPoint = OtherEnd(nPath, nPoint);
    return {nPath, nPoint - PointsBegin(nPath)};
}

// Among pairs, all is told by counting: the tables, which are large, need not be looked up.
std::int32_t GreedyOrder::PathOf(std::int32_t nPoint) const {
    return HasOnlyPairs() ? nPoint / 2 : m_PathOf[static_cast<std::size_t>(nPoint)];
}

std::int32_t GreedyOrder::PointsBegin(std::int32_t nPath) const {
    return HasOnlyPairs() ? 2 * nPath : m_FirstPoints[static_cast<std::size_t>(nPath)];
}

std::int32_t GreedyOrder::PointsEnd(std::int32_t nPath) const {
    if (HasOnlyPairs()) return 2 * nPath + 2;
    auto const nNext = static_cast<std::size_t>(nPath) + 1;
    return nNext < m_FirstPoints.size() ? m_FirstPoints[nNext] : static_cast<std::int32_t>(m_PathOf.size());
}

// A path of two points is left at its other one; of others, any point is as good as another.
std::int32_t GreedyOrder::OtherEnd(std::int32_t nPath, std::int32_t nPoint) const {
    std::int32_t const nFirst = PointsBegin(nPath);
    return PointsEnd(nPath) == nFirst + 2 ? 2 * nFirst + 1 - nPoint : nPoint;
}

std::int32_t GreedyOrder::NextByDistance(CPoint2D const& from) {
    if (!m_Cells && m_pSearch == nullptr) {
        if (m_nMode == kNearest) m_Cells = CellSearch::Of(m_Points);
        if (!m_Cells) m_pSearch = std::make_unique<PointSearch>(std::move(m_Points));
        m_Points = {};
    }
    if (m_Cells) return m_Cells->Nearest(from.x, from.y, m_dStart);
    return m_nMode == kNearest ? m_pSearch->Nearest(from.x, from.y, m_dStart, m_nNearPoint)
                               : m_pSearch->Farthest(from.x, from.y, m_dStart);
}

// Every draw counts, since the host may have seeded rand to get an order again: nothing can be spared here.
std::int32_t GreedyOrder::NextRandom() {
    if (m_Left.empty() && !m_Points.empty()) {
        m_Points.clear();
        m_Left.resize(m_FirstPoints.size());
        std::iota(m_Left.begin(), m_Left.end(), 0);
    }
    double dBest = m_dStart;
    std::int32_t nBest = PointSearch::kNone;
    for (std::int32_t const nPath : m_Left) {
        std::int32_t const nEnd = PointsEnd(nPath);
        for (std::int32_t i = PointsBegin(nPath); i < nEnd; ++i) {
            auto const d = static_cast<double>(std::rand());
            if (d > dBest) {
                dBest = d;
                nBest = i;
            }
        }
    }
    return nBest;
}

void GreedyOrder::Remove(std::int32_t nPath) {
    if (!m_Cells && m_pSearch == nullptr) {
        m_Left.erase(std::lower_bound(m_Left.begin(), m_Left.end(), nPath));
        return;
    }
    std::int32_t const nEnd = PointsEnd(nPath);
    for (std::int32_t i = PointsBegin(nPath); i < nEnd; ++i) {
        if (m_Cells) {
            m_Cells->Remove(i);
        } else {
            m_pSearch->Remove(i);
        }
    }
}

}  // namespace varnet
