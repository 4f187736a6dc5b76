#include "foundation/CompTable.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

#include "foundation/Require.h"

namespace {

// The bounds of the cells that reach outwards from the grid, in millimetres: far, but so that fractions of
// them are finite.
constexpr double kFar = 1e11;

// One axis of the grid.
struct Axis {
    double dMin;
    double dMax;
    int nLines;

    double Line(int nLine) const { return dMin + nLine * (dMax - dMin) / (nLines - 1); }
};

// Where a coordinate lies: the number of grid lines before it, from 0 to all of them, and its place between
// the line before and the line behind, from 0 to 1.
struct GridPosition {
    int nCell;
    double dFraction;
};

// Limited before it becomes an integer, so that any number fits. What is not a number counts as 0.
int ToCell(double dCell, int nLines) {
    if (!(dCell > 0.0)) return 0;
    return dCell < nLines ? static_cast<int>(dCell) : nLines;
}

GridPosition Locate(double d, Axis const& axis) {
    int const nCell =
        ToCell((d - axis.dMin) / (axis.dMax - axis.dMin) * (axis.nLines - 1) + 1.0, axis.nLines);
    double const dLower = nCell == 0 ? -kFar : axis.Line(nCell - 1);
    double const dUpper = nCell == axis.nLines ? kFar : axis.Line(nCell);
    return {nCell, (d - dLower) / (dUpper - dLower)};
}

bool HoldsValues(int nRows, int nCols) {
    return nRows > 0 && nCols > 0 && nRows <= std::numeric_limits<int>::max() / nCols;
}

}  // namespace

C2DCompTable::C2DCompTable()
    : m_nRows(0),
      m_nCols(0),
      m_dMinX(0.0),
      m_dMaxX(100.0),
      m_dMinY(0.0),
      m_dMaxY(100.0),
      m_pValues(nullptr) {}

C2DCompTable::~C2DCompTable() { std::free(m_pValues); }

void C2DCompTable::SetRowColandBox(int nRows, int nCols, double dMinX, double dMaxX, double dMinY,
                                   double dMaxY) {
    m_nRows = nRows;
    m_nCols = nCols;
    m_dMinX = dMinX;
    m_dMaxX = dMaxX;
    m_dMinY = dMinY;
    m_dMaxY = dMaxY;
    std::free(m_pValues);
    m_pValues = nullptr;
    if (!HoldsValues(nRows, nCols)) return;
    auto const nValues = static_cast<std::size_t>(nRows) * static_cast<std::size_t>(nCols);
    m_pValues = static_cast<double*>(std::calloc(nValues, sizeof(double)));
}

void C2DCompTable::SetPoint(double dValue, unsigned int nRow, unsigned int nCol) {
    VARNET_REQUIRE(nRow < static_cast<unsigned>(m_nRows) && nCol < static_cast<unsigned>(m_nCols));
    m_pValues[static_cast<std::size_t>(nRow) * static_cast<std::size_t>(m_nCols) + nCol] = dValue;
}

double C2DCompTable::GetPoint(unsigned int nRow, unsigned int nCol) {
    VARNET_REQUIRE(nRow < static_cast<unsigned>(m_nRows) && nCol < static_cast<unsigned>(m_nCols));
    return m_pValues[static_cast<std::size_t>(nRow) * static_cast<std::size_t>(m_nCols) + nCol];
}

void C2DCompTable::SetPoints(double*, unsigned int, unsigned int) {}

double C2DCompTable::CalComp(double x, double y) {
    if (m_pValues == nullptr) return 0.0;
    GridPosition const alongX = Locate(x, {m_dMinX, m_dMaxX, m_nRows});
    GridPosition const alongY = Locate(y, {m_dMinY, m_dMaxY, m_nCols});

    // With both indices up to R - 1, the largest place is R * R - 1. The array holds R * C values: that is
    // enough where C >= R. Where C < R, only a up to C - 1 keeps a * R + b inside, whatever b is.
    int const nLastA = std::min(m_nRows, m_nCols) - 1;
    int const nLastB = m_nRows - 1;
    auto const value = [this, nLastA, nLastB](int a, int b) {
        auto const nA = static_cast<std::size_t>(std::clamp(a, 0, nLastA));
        auto const nB = static_cast<std::size_t>(std::clamp(b, 0, nLastB));
        return m_pValues[nA * static_cast<std::size_t>(m_nRows) + nB];
    };
    int const i = alongX.nCell;
    int const j = alongY.nCell;
    double const tx = alongX.dFraction;
    double const p = value(i - 1, j - 1) + (value(i, j - 1) - value(i - 1, j - 1)) * tx;
    double const q = value(i - 1, j) + (value(i, j) - value(i - 1, j)) * tx;
    return p + (q - p) * alongY.dFraction;
}
