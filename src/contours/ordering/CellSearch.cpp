#include "contours/ordering/CellSearch.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace varnet {

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

// Fewer points are not worth a grid.
constexpr std::size_t kFewPoints = 64;

// A cell of more makes searches slow.
constexpr std::uint32_t kCrowded = 32;

// On average, over all cells.
constexpr double kPointsPerCell = 2.0;

// What is not found within as many rings of cells, or of blocks, is looked for among blocks four times as
// wide.
constexpr std::size_t kRings = 2;

// The two low bits of a number tell the place within a block.
constexpr std::size_t kBlockBits = 2;
constexpr std::size_t kBlockMask = 3;

double Squares(double dx, double dy) { return dx * dx + dy * dy; }

unsigned BitOf(std::size_t nColumn, std::size_t nRow) {
    return static_cast<unsigned>((nRow & kBlockMask) << kBlockBits | (nColumn & kBlockMask));
}

}  // namespace

CellSearch::Axis::Axis(double dFrom, double dTo, std::size_t nCells)
    : dLow(dFrom),
      dPerUnit(static_cast<double>(nCells) / (dTo - dFrom)),
      dMost(static_cast<double>(nCells - 1)),
      leastFrom(nCells + 1, kInfinite),
      greatestTo(nCells + 1, -kInfinite) {}

std::size_t CellSearch::Axis::CellOf(double d) const {
    double const dCell = (d - dLow) * dPerUnit;
    // Not a number where there is no extent: all is in the first cell.
    return dCell >= 0.0 ? static_cast<std::size_t>(std::min(dCell, dMost)) : 0;
}

void CellSearch::Axis::Take(std::size_t nCell, double d) {
    leastFrom[nCell] = std::min(leastFrom[nCell], d);
    greatestTo[nCell + 1] = std::max(greatestTo[nCell + 1], d);
}

// From the least and greatest coordinate of each cell to those of all from there on, and up to there.
void CellSearch::Axis::Close() {
    for (std::size_t i = Cells(); i-- > 0;) leastFrom[i] = std::min(leastFrom[i], leastFrom[i + 1]);
    for (std::size_t i = 0; i < Cells(); ++i) greatestTo[i + 1] = std::max(greatestTo[i + 1], greatestTo[i]);
}

// How far the points of some cells are at least from a coordinate; those of the cell that holds it may be
// anywhere.
double CellSearch::Axis::Gap(std::size_t nBegin, std::size_t nEnd, double d) const {
    return std::max(std::max(leastFrom[nBegin] - d, d - greatestTo[nEnd]), 0.0);
}

// Where a search begins, and the best point so far.
struct CellSearch::Aim {
    double x;
    double y;
    double dBest;
    std::int32_t nBest;
    std::size_t nColumn;
    std::size_t nRow;
};

std::optional<CellSearch> CellSearch::Of(std::vector<Point> const& points) {
    if (points.size() < kFewPoints) return std::nullopt;
    PlanBox box;
    for (Point const& p : points) {
        if (std::isfinite(p.x) && std::isfinite(p.y)) box = Union(box, {p.x, p.y, p.x, p.y});
    }
    double const dWidth = box.xMax - box.xMin;
    double const dDepth = box.yMax - box.yMin;
    double const dCells = static_cast<double>(points.size()) / kPointsPerCell;
    double const dColumns = std::sqrt(dCells * (dWidth / dDepth));
    // Points on one line, and extents beyond all numbers, are left to a tree.
    if (!(dColumns >= 1.0 && dColumns <= dCells)) return std::nullopt;
    auto const nColumns = static_cast<std::size_t>(dColumns);
    auto const nRows = static_cast<std::size_t>(dCells / dColumns);
    CellSearch grid(Axis(box.xMin, box.xMax, nColumns),
                    Axis(box.yMin, box.yMax, std::max<std::size_t>(1, nRows)));
    if (!grid.Fill(points)) return std::nullopt;
    return grid;
}

CellSearch::CellSearch(Axis columns, Axis rows) : m_Columns(std::move(columns)), m_Rows(std::move(rows)) {}

// The cell of each point, one behind the last for those that are left out. Each number in m_Begins becomes
// how many points lie in the cell before.
std::vector<std::uint32_t> CellSearch::CountInCells(std::vector<Point> const& points) {
    std::size_t const nCells = m_Columns.Cells() * m_Rows.Cells();
    std::vector<std::uint32_t> cells(points.size(), static_cast<std::uint32_t>(nCells));
    m_Begins.resize(nCells + 1);
    for (std::size_t i = 0; i < points.size(); ++i) {
        Point const& p = points[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
        std::size_t const nColumn = m_Columns.CellOf(p.x);
        std::size_t const nRow = m_Rows.CellOf(p.y);
        m_Columns.Take(nColumn, p.x);
        m_Rows.Take(nRow, p.y);
        cells[i] = static_cast<std::uint32_t>(nRow * m_Columns.Cells() + nColumn);
        ++m_Begins[cells[i] + 1];
    }
    m_Columns.Close();
    m_Rows.Close();
    return cells;
}

// False where a cell is crowded.
bool CellSearch::Fill(std::vector<Point> const& points) {
    std::vector<std::uint32_t> const cells = CountInCells(points);
    if (std::any_of(m_Begins.begin(), m_Begins.end(), [](std::uint32_t n) { return n > kCrowded; }))
        return false;
    std::size_t const nCells = m_Begins.size() - 1;
    m_nLeft.resize(nCells);
    for (std::size_t i = 0; i < nCells; ++i) m_Begins[i + 1] += m_Begins[i];
    std::int32_t nMost = kNone;
    for (Point const& p : points) nMost = std::max(nMost, p.nRank);
    m_Places.assign(static_cast<std::size_t>(nMost) + 1, kNone);
    m_Points.resize(m_Begins[nCells]);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (cells[i] == nCells) continue;
        std::size_t const nPlace = m_Begins[cells[i]] + m_nLeft[cells[i]]++;
        m_Points[nPlace] = points[i];
        m_Places[static_cast<std::size_t>(points[i].nRank)] = static_cast<std::int32_t>(nPlace);
    }
    AddLevels();
    return true;
}

void CellSearch::AddLevels() {
    m_Levels.push_back({m_Columns.Cells(), m_Rows.Cells(), {}});
    while (m_Levels.back().nColumns > 1 || m_Levels.back().nRows > 1) {
        Level const& below = m_Levels.back();
        Level level{
            (below.nColumns + kBlockMask) >> kBlockBits, (below.nRows + kBlockMask) >> kBlockBits, {}};
        level.masks.resize(level.nColumns * level.nRows);
        for (std::size_t nRow = 0; nRow < below.nRows; ++nRow) {
            for (std::size_t nColumn = 0; nColumn < below.nColumns; ++nColumn) {
                std::size_t const i = nRow * below.nColumns + nColumn;
                if (below.masks.empty() ? m_nLeft[i] == 0 : below.masks[i] == 0) continue;
                level.masks[(nRow >> kBlockBits) * level.nColumns + (nColumn >> kBlockBits)] |=
                    static_cast<std::uint16_t>(1u << BitOf(nColumn, nRow));
            }
        }
        m_Levels.push_back(std::move(level));
    }
}

void CellSearch::Remove(std::int32_t nRank) {
    if (nRank < 0 || static_cast<std::size_t>(nRank) >= m_Places.size()) return;
    std::int32_t const nPlace = std::exchange(m_Places[static_cast<std::size_t>(nRank)], kNone);
    if (nPlace == kNone) return;
    Point& point = m_Points[static_cast<std::size_t>(nPlace)];
    std::size_t nColumn = m_Columns.CellOf(point.x);
    std::size_t nRow = m_Rows.CellOf(point.y);
    std::size_t const nCell = nRow * m_Columns.Cells() + nColumn;
    std::size_t const nLast = m_Begins[nCell] + --m_nLeft[nCell];
    if (nLast != static_cast<std::size_t>(nPlace)) {
        point = m_Points[nLast];
        m_Places[static_cast<std::size_t>(point.nRank)] = nPlace;
    }
    bool bEmpty = m_nLeft[nCell] == 0;
    for (std::size_t nLevel = 1; bEmpty && nLevel < m_Levels.size(); ++nLevel) {
        Level& level = m_Levels[nLevel];
        unsigned const nBit = BitOf(nColumn, nRow);
        nColumn >>= kBlockBits;
        nRow >>= kBlockBits;
        std::uint16_t& mask = level.masks[nRow * level.nColumns + nColumn];
        mask &= static_cast<std::uint16_t>(~(1u << nBit));
        bEmpty = mask == 0;
    }
}

// Cells side by side in a row.
void CellSearch::LookInRow(Aim& aim, std::size_t nRow, std::size_t nBegin, std::size_t nEnd) const {
    std::size_t const nFirst = nRow * m_Columns.Cells();
    for (std::size_t nCell = nFirst + nBegin; nCell < nFirst + nEnd; ++nCell) {
        Point const* const pBegin = m_Points.data() + m_Begins[nCell];
        Point const* const pEnd = pBegin + m_nLeft[nCell];
        for (Point const* p = pBegin; p != pEnd; ++p) {
            double const d2 = Squares(p->x - aim.x, p->y - aim.y);
            if (d2 > aim.dBest || (d2 == aim.dBest && p->nRank >= aim.nBest)) continue;
            aim.dBest = d2;
            aim.nBest = p->nRank;
        }
    }
}

// A block, or a cell on the lowest level, where it could hold a better point.
void CellSearch::LookInBlock(Aim& aim, std::size_t nLevel, std::size_t nColumn, std::size_t nRow) const {
    std::size_t const nShift = kBlockBits * nLevel;
    double const dx =
        m_Columns.Gap(nColumn << nShift, std::min((nColumn + 1) << nShift, m_Columns.Cells()), aim.x);
    double const dy = m_Rows.Gap(nRow << nShift, std::min((nRow + 1) << nShift, m_Rows.Cells()), aim.y);
    if (Squares(dx, dy) > aim.dBest) return;
    if (nLevel == 0) return LookInRow(aim, nRow, nColumn, nColumn + 1);
    Level const& level = m_Levels[nLevel];
    for (unsigned mask = level.masks[nRow * level.nColumns + nColumn]; mask != 0; mask &= mask - 1) {
        auto const nBit = static_cast<std::size_t>(std::countr_zero(mask));
        LookInBlock(aim, nLevel - 1, nColumn << kBlockBits | (nBit & kBlockMask),
                    nRow << kBlockBits | nBit >> kBlockBits);
    }
}

// The rings of one level around the place. True when nothing beyond them could be better.
bool CellSearch::LookInRings(Aim& aim, std::size_t nLevel) const {
    Level const& level = m_Levels[nLevel];
    std::size_t const nShift = kBlockBits * nLevel;
    std::size_t const nColumn = aim.nColumn >> nShift;
    std::size_t const nRow = aim.nRow >> nShift;
    for (std::size_t nRing = 0; nRing <= kRings; ++nRing) {
        std::size_t const nLeft = nColumn - std::min(nRing, nColumn);
        std::size_t const nRight = std::min(nColumn + nRing + 1, level.nColumns);
        std::size_t const nTop = nRow - std::min(nRing, nRow);
        std::size_t const nBottom = std::min(nRow + nRing + 1, level.nRows);
        for (std::size_t r = nTop; r < nBottom; ++r) {
            bool const bWhole = r + nRing == nRow || r == nRow + nRing;
            if (nLevel == 0 && bWhole) {
                double const dy = m_Rows.Gap(r, r + 1, aim.y);
                if (dy * dy <= aim.dBest) LookInRow(aim, r, nLeft, nRight);
                continue;
            }
            for (std::size_t c = nLeft; c < nRight; ++c) {
                if (bWhole || c + nRing == nColumn || c == nColumn + nRing) LookInBlock(aim, nLevel, c, r);
            }
        }
        double const dx =
            std::min(aim.x - m_Columns.greatestTo[nLeft << nShift],
                     m_Columns.leastFrom[std::min(nRight << nShift, m_Columns.Cells())] - aim.x);
        double const dy = std::min(aim.y - m_Rows.greatestTo[nTop << nShift],
                                   m_Rows.leastFrom[std::min(nBottom << nShift, m_Rows.Cells())] - aim.y);
        double const dGap = std::min(dx, dy);
        if (dGap * dGap > aim.dBest) return true;
    }
    return false;
}

std::int32_t CellSearch::Nearest(double x, double y, double dBelow2) const {
    // From there, nothing is at a finite distance.
    if (!std::isfinite(x) || !std::isfinite(y)) return kNone;
    Aim aim{x, y, dBelow2, kNone, m_Columns.CellOf(x), m_Rows.CellOf(y)};
    for (std::size_t nLevel = 0; nLevel < m_Levels.size(); ++nLevel) {
        if (LookInRings(aim, nLevel)) break;
    }
    return aim.nBest;
}

}  // namespace varnet
