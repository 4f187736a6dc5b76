#pragma once

#include <cstdint>

#include "foundation/BoundBox.h"
#include "foundation/Export.h"

/// A grid of correction values over a rectangle, and the bilinear interpolation between them. Outside the
/// rectangle the edge values continue. Coordinates in millimetres.
///
/// Values are written and read back with m_nCols as the stride, but interpolated with m_nRows as the stride,
/// and with both indices limited to m_nRows - 1. For a square table the two are the same. A table that is not
/// square is interpolated differently from how it is written; hosts rely on it. One with more rows than
/// columns holds only m_nCols runs of m_nRows values: where the interpolation would go on behind them, the
/// last run continues.
///
/// Copies are shallow: the two tables then share one array, only one of them may be destroyed or resized, and
/// assignment does not free what the target held.
class VARNET_API C2DCompTable {
public:
    /// No rows, columns and values, over the rectangle from (0, 0) to (100, 100).
    C2DCompTable();
    C2DCompTable(C2DCompTable const& other) = default;
    C2DCompTable& operator=(C2DCompTable const& other) = default;
    /// Frees the values.
    virtual ~C2DCompTable();

    /// Sets grid and rectangle and makes a new array of nRows * nCols values, all 0.0; the old one is freed.
    /// There are no values, so that CalComp gives 0.0, when a count is not above 0, when their product
    /// exceeds the largest int, or when there is no memory for them.
    void SetRowColandBox(int nRows, int nCols, double dMinX, double dMaxX, double dMinY, double dMaxY);
    /// Stores the value of row nRow and column nCol. No check of the range.
    void SetPoint(double dValue, unsigned int nRow, unsigned int nCol);
    /// The value of row nRow and column nCol. No check of the range.
    double GetPoint(unsigned int nRow, unsigned int nCol);
    /// Does nothing.
    void SetPoints(double* pValues, unsigned int nRows, unsigned int nCols);
    /// The correction at a point: rows lie along x and columns along y. 0.0 in a table without values. With a
    /// single row or column, or a rectangle without width or height, the result is any number or none; it is
    /// not a number either where x or y is not finite. Nothing outside the array is read for any argument.
    double CalComp(double x, double y);

    std::int32_t m_nRows;  ///< grid lines along x
    std::int32_t m_nCols;  ///< grid lines along y
    double m_dMinX;
    double m_dMaxX;
    double m_dMinY;
    double m_dMaxY;
    CBoundBox2D m_Box;  ///< for the host
    double* m_pValues;  ///< m_nRows * m_nCols values, owned (malloc); null when there are none
};
