#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "contours/ordering/PointSearch.h"

namespace varnet {

/// A set of points that grows smaller, and the nearest of those left: for points that are spread so evenly
/// that few lie in one cell of a grid. There it is faster than PointSearch, and its answers are the same.
///
/// The points lie by cells, row by row. Over the cells stand blocks of four by four, over these blocks of
/// four by four blocks, and so on up to one, each with a mask of what below it still has points. A search
/// looks at rings of cells around the place, then at rings of larger blocks (J. L. Bentley, B. W. Weide, A.
/// C. Yao, "Optimal expected-time algorithms for closest point problems", 1980, on cells). It ends when no
/// point beyond could count. That is safe against rounding: which column a point is in grows with its x, of
/// each column the least x of it and those beyond is known, and differences, squares and sums are rounded
/// monotonically.
class CellSearch {
public:
    using Point = PointSearch::Point;
    static constexpr std::int32_t kNone = PointSearch::kNone;

    /// A grid of the points; nothing where they are few, or where many of them lie in one cell. Points with a
    /// coordinate that is not finite are left out.
    static std::optional<CellSearch> Of(std::vector<Point> const& points);

    /// A rank that is not in the set, or not any more, is passed over.
    void Remove(std::int32_t nRank);

    /// The rank of the point nearest to a place, among those strictly nearer than the root of dBelow2, which
    /// is finite, the first of equals; kNone where there is none.
    std::int32_t Nearest(double x, double y, double dBelow2) const;

private:
    // One axis: its cells, and the coordinates in them.
    struct Axis {
        double dLow = 0.0;
        double dPerUnit = 0.0;
        double dMost = 0.0;  // the number of the last cell
        std::vector<double>
            leastFrom;  // of the points in a cell and those behind it; infinite behind the last
        std::vector<double> greatestTo;  // of the points in the cells before one, so of none for the first

        Axis(double dFrom, double dTo, std::size_t nCells);
        std::size_t Cells() const { return leastFrom.size() - 1; }
        std::size_t CellOf(double d) const;
        void Take(std::size_t nCell, double d);
        void Close();
        double Gap(std::size_t nBegin, std::size_t nEnd, double d) const;
    };

    // Blocks of four by four of what is below.
    struct Level {
        std::size_t nColumns = 0;
        std::size_t nRows = 0;
        std::vector<std::uint16_t> masks;  // of what below has points; empty for the cells themselves
    };

    struct Aim;

    CellSearch(Axis columns, Axis rows);
    bool Fill(std::vector<Point> const& points);
    std::vector<std::uint32_t> CountInCells(std::vector<Point> const& points);
    void AddLevels();
    void LookInRow(Aim& aim, std::size_t nRow, std::size_t nBegin, std::size_t nEnd) const;
    void LookInBlock(Aim& aim, std::size_t nLevel, std::size_t nColumn, std::size_t nRow) const;
    bool LookInRings(Aim& aim, std::size_t nLevel) const;

    Axis m_Columns;
    Axis m_Rows;
    std::vector<Point> m_Points;          // by cell; those of a cell that are left stand in front
    std::vector<std::uint32_t> m_Begins;  // by cell, and one more
    std::vector<std::uint8_t> m_nLeft;    // by cell
    std::vector<std::int32_t> m_Places;   // by rank: where in m_Points; kNone for those that are not there
    std::vector<Level> m_Levels;          // from the cells up to one block
};

}  // namespace varnet
