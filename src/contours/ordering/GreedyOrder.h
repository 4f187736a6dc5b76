#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "contours/ordering/CellSearch.h"
#include "contours/ordering/PointSearch.h"
#include "foundation/Point.h"

namespace varnet {

/// Picks paths one after the other, each by one of its points: a value is taken from every point of every
/// path that is left, in order, and the first best one is picked.
class GreedyOrder {
public:
    /// What the passes of CLayer call mode: the nearest point, the farthest, and any other mode the point for
    /// which rand gives the greatest number, drawn for each point anew at every pick.
    static constexpr int kNearest = 0;
    static constexpr int kFarthest = 1;

    /// Only a value that is strictly better than dStart is picked: a squared distance in square millimetres,
    /// or a number of rand.
    GreedyOrder(int nMode, double dStart) : m_nMode(nMode), m_dStart(dStart) {}

    /// The next path in order, which may be left without points; and a point of it.
    void AddPath();
    void AddPoint(double x, double y);

    /// A path and a point of it, both by their numbers, from 0.
    struct Pick {
        std::int32_t nPath;  ///< -1 when no path could be picked
        std::int32_t nPoint;
    };
    /// Picks a path from where the head is, and takes it out. Nothing can be added any more.
    Pick Next(CPoint2D const& from);

private:
    bool IsOpen() const { return !m_Cells && m_pSearch == nullptr && m_Left.empty(); }
    bool HasOnlyPairs() const { return m_bPairs && m_PathOf.size() == 2 * m_FirstPoints.size(); }
    std::int32_t PathOf(std::int32_t nPoint) const;
    std::int32_t PointsBegin(std::int32_t nPath) const;
    std::int32_t PointsEnd(std::int32_t nPath) const;
    std::int32_t OtherEnd(std::int32_t nPath, std::int32_t nPoint) const;
    std::int32_t NextRandom();
    std::int32_t NextByDistance(CPoint2D const& from);
    void Remove(std::int32_t nPath);

    int m_nMode;
    double m_dStart;
    std::vector<PointSearch::Point> m_Points;  // until the search takes them
    bool m_bPairs = true;                      // all paths before the last one have two points
    std::vector<std::int32_t> m_FirstPoints;   // by path
    std::vector<std::int32_t> m_PathOf;        // by point
    std::vector<std::int32_t> m_Left;          // the paths that are left, in order; only where rand decides
    std::optional<CellSearch> m_Cells;         // for the nearest among points that are spread evenly
    std::unique_ptr<PointSearch> m_pSearch;    // for all others
    std::int32_t m_nNearPoint = PointSearch::kNone;  // where the head is likely to be
};

}  // namespace varnet
