#include "foundation/CompTable.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

bool SameNumber(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// The interpolation, written out plainly, with every read of a value checked against the array.
class NaiveTable {
public:
    explicit NaiveTable(C2DCompTable const& table) : m_Table(table) {}

    double CalComp(double x, double y) const {
        C2DCompTable const& t = m_Table;
        if (t.m_pValues == nullptr) return 0.0;
        int const R = t.m_nRows;
        int const C = t.m_nCols;
        int const i = Cell((x - t.m_dMinX) / (t.m_dMaxX - t.m_dMinX) * (R - 1) + 1.0, R);
        int const j = Cell((y - t.m_dMinY) / (t.m_dMaxY - t.m_dMinY) * (C - 1) + 1.0, C);
        double const lowerX = i == 0 ? -1e11 : t.m_dMinX + (i - 1) * (t.m_dMaxX - t.m_dMinX) / (R - 1);
        double const upperX = i == R ? 1e11 : t.m_dMinX + i * (t.m_dMaxX - t.m_dMinX) / (R - 1);
        double const lowerY = j == 0 ? -1e11 : t.m_dMinY + (j - 1) * (t.m_dMaxY - t.m_dMinY) / (C - 1);
        double const upperY = j == C ? 1e11 : t.m_dMinY + j * (t.m_dMaxY - t.m_dMinY) / (C - 1);
        double const tx = (x - lowerX) / (upperX - lowerX);
        double const ty = (y - lowerY) / (upperY - lowerY);
        int const i0 = Limited(i - 1, R - 1);
        int const i1 = Limited(i, R - 1);
        int const j0 = Limited(j - 1, R - 1);
        int const j1 = Limited(j, R - 1);
        double const p = Value(i0, j0) + (Value(i1, j0) - Value(i0, j0)) * tx;
        double const q = Value(i0, j1) + (Value(i1, j1) - Value(i0, j1)) * tx;
        return p + (q - p) * ty;
    }

private:
    static int Limited(int n, int nLast) { return n < 0 ? 0 : n > nLast ? nLast : n; }

    static int Cell(double dCell, int nLines) {
        double d = std::trunc(dCell);
        if (std::isnan(d) || d < 0.0) d = 0.0;
        if (d > nLines) d = nLines;
        return static_cast<int>(d);
    }

    double Value(int a, int b) const {
        int const R = m_Table.m_nRows;
        int const C = m_Table.m_nCols;
        // Behind the last whole run of R values, that run continues.
        if (a * R + b >= R * C) a = C - 1;
        EXPECT_GE(a * R + b, 0);
        EXPECT_LT(a * R + b, R * C);
        return m_Table.m_pValues[a * R + b];
    }

    C2DCompTable const& m_Table;
};

void Fill(C2DCompTable& table, std::vector<double> const& values) {
    for (std::size_t i = 0; i < values.size(); ++i) table.m_pValues[i] = values[i];
}

void FillRandomly(C2DCompTable& table, std::mt19937& random) {
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int i = 0; i < table.m_nRows * table.m_nCols; ++i) table.m_pValues[i] = value(random);
}

}  // namespace

TEST(CompTable, NewTableGivesZeroEverywhere) {
    C2DCompTable table;
    EXPECT_EQ(0, table.m_nRows);
    EXPECT_EQ(0, table.m_nCols);
    EXPECT_EQ(nullptr, table.m_pValues);
    for (double const d : {-1e300, -1.0, 0.0, 50.0, 1e300, kInfinity, kNotANumber}) {
        EXPECT_EQ(0.0, table.CalComp(d, 50.0));
        EXPECT_EQ(0.0, table.CalComp(50.0, d));
    }
}

TEST(CompTable, NewTableLiesOverAHundredMillimetres) {
    C2DCompTable table;
    EXPECT_EQ(0.0, table.m_dMinX);
    EXPECT_EQ(100.0, table.m_dMaxX);
    EXPECT_EQ(0.0, table.m_dMinY);
    EXPECT_EQ(100.0, table.m_dMaxY);
    EXPECT_EQ(0, table.m_Box.IsValid());
}

TEST(CompTable, TwoByTwoTableInterpolatesAlongX) {
    C2DCompTable table;
    table.SetRowColandBox(2, 2, 0.0, 100.0, 0.0, 100.0);
    Fill(table, {0.0, 0.0, 1.0, 1.0});
    EXPECT_EQ(0.5, table.CalComp(50.0, 50.0));
    EXPECT_EQ(0.0, table.CalComp(0.0, 50.0));
    EXPECT_EQ(1.0, table.CalComp(100.0, 50.0));
}

TEST(CompTable, BoxArgumentsComeAsBothEndsOfXThenBothEndsOfY) {
    C2DCompTable table;
    table.SetRowColandBox(2, 3, 1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(2, table.m_nRows);
    EXPECT_EQ(3, table.m_nCols);
    EXPECT_EQ(1.0, table.m_dMinX);
    EXPECT_EQ(2.0, table.m_dMaxX);
    EXPECT_EQ(3.0, table.m_dMinY);
    EXPECT_EQ(4.0, table.m_dMaxY);
}

TEST(CompTable, AtAGridPointTheResultIsItsValue) {
    C2DCompTable table;
    table.SetRowColandBox(5, 5, 0.0, 8.0, -4.0, 4.0);
    for (unsigned int nRow = 0; nRow < 5; ++nRow) {
        for (unsigned int nCol = 0; nCol < 5; ++nCol) table.SetPoint(10.0 * nRow + nCol, nRow, nCol);
    }
    for (unsigned int nRow = 0; nRow < 5; ++nRow) {
        for (unsigned int nCol = 0; nCol < 5; ++nCol) {
            EXPECT_EQ(10.0 * nRow + nCol, table.GetPoint(nRow, nCol));
            EXPECT_EQ(10.0 * nRow + nCol, table.CalComp(2.0 * nRow, -4.0 + 2.0 * nCol));
        }
    }
}

TEST(CompTable, BetweenGridPointsTheResultIsBilinear) {
    C2DCompTable table;
    table.SetRowColandBox(2, 2, 0.0, 1.0, 0.0, 1.0);
    Fill(table, {0.0, 4.0, 8.0, 16.0});
    // p = 0 + 8 / 4 = 2, q = 4 + 12 / 4 = 7, halfway 4.5.
    EXPECT_EQ(4.5, table.CalComp(0.25, 0.5));
}

TEST(CompTable, OutsideTheAreaTheEdgeValuesContinue) {
    C2DCompTable table;
    table.SetRowColandBox(3, 3, 0.0, 100.0, 0.0, 100.0);
    Fill(table, {1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0});
    for (double const d : {100.0, 100.5, 1e5, 1e15, 1e300}) {
        EXPECT_EQ(table.CalComp(100.0, 25.0), table.CalComp(d, 25.0)) << d;
        EXPECT_EQ(table.CalComp(25.0, 100.0), table.CalComp(25.0, d)) << d;
        EXPECT_EQ(9.0, table.CalComp(d, d)) << d;
    }
    for (double const d : {0.0, -0.5, -1e5, -1e15, -1e300}) {
        EXPECT_EQ(table.CalComp(0.0, 25.0), table.CalComp(d, 25.0)) << d;
        EXPECT_EQ(table.CalComp(25.0, 0.0), table.CalComp(25.0, d)) << d;
        EXPECT_EQ(1.0, table.CalComp(d, d)) << d;
    }
    EXPECT_EQ(7.5, table.CalComp(1e9, 25.0));
    EXPECT_EQ(1.5, table.CalComp(-1e9, 25.0));
}

TEST(CompTable, SettingTheGridAgainForgetsTheValuesAndMakesNewOnes) {
    C2DCompTable table;
    table.SetRowColandBox(2, 2, 0.0, 100.0, 0.0, 100.0);
    Fill(table, {5.0, 5.0, 5.0, 5.0});
    table.SetRowColandBox(3, 3, 0.0, 100.0, 0.0, 100.0);
    EXPECT_EQ(0.0, table.CalComp(50.0, 50.0));
    for (unsigned int nRow = 0; nRow < 3; ++nRow) {
        for (unsigned int nCol = 0; nCol < 3; ++nCol) table.SetPoint(7.0, nRow, nCol);
    }
    EXPECT_EQ(7.0, table.CalComp(50.0, 50.0));
}

TEST(CompTable, SetPointsLeavesTheTableAsItIs) {
    C2DCompTable table;
    table.SetRowColandBox(2, 2, 0.0, 100.0, 0.0, 100.0);
    Fill(table, {1.0, 2.0, 3.0, 4.0});
    double values[4] = {9.0, 9.0, 9.0, 9.0};
    table.SetPoints(values, 2, 2);
    EXPECT_EQ(1.0, table.GetPoint(0, 0));
    EXPECT_EQ(2.0, table.GetPoint(0, 1));
    EXPECT_EQ(3.0, table.GetPoint(1, 0));
    EXPECT_EQ(4.0, table.GetPoint(1, 1));
}

TEST(CompTable, TableThatIsNotSquareIsReadWithItsRowsAsStride) {
    C2DCompTable table;
    table.SetRowColandBox(2, 3, 0.0, 1.0, 0.0, 2.0);
    // Written as two rows of three, read as v(0, b) = 0, 1 and v(1, b) = 2, 10.
    Fill(table, {0.0, 1.0, 2.0, 10.0, 11.0, 12.0});
    EXPECT_EQ(10.0, table.GetPoint(1, 0));
    EXPECT_EQ(0.0, table.CalComp(0.0, 0.0));
    EXPECT_EQ(2.0, table.CalComp(1.0, 0.0));
    EXPECT_EQ(1.0, table.CalComp(0.0, 1.0));
    EXPECT_EQ(10.0, table.CalComp(1.0, 1.0));
    // The third line along y is limited to the second.
    EXPECT_EQ(10.0, table.CalComp(1.0, 2.0));
}

TEST(CompTable, TableWithMoreRowsThanColumnsContinuesItsLastWholeRun) {
    C2DCompTable table;
    table.SetRowColandBox(3, 2, 0.0, 2.0, 0.0, 1.0);
    // Runs of three: v(0, b) = 0, 1, 2 and v(1, b) = 3, 4, 5. There is no v(2, b): v(1, b) stands in.
    Fill(table, {0.0, 1.0, 2.0, 3.0, 4.0, 5.0});
    EXPECT_EQ(0.0, table.CalComp(0.0, 0.0));
    EXPECT_EQ(3.0, table.CalComp(1.0, 0.0));
    EXPECT_EQ(3.0, table.CalComp(1.5, 0.0));
    EXPECT_EQ(3.0, table.CalComp(2.0, 0.0));
    EXPECT_EQ(3.0, table.CalComp(1e9, 0.0));
}

TEST(CompTable, CopiesShareTheValues) {
    C2DCompTable table;
    table.SetRowColandBox(2, 2, 1.0, 2.0, 3.0, 4.0);
    table.m_Box += CPoint2D(5.0, 6.0);
    C2DCompTable copy(table);
    C2DCompTable assigned;
    C2DCompTable const& result = assigned = table;
    EXPECT_EQ(&assigned, &result);
    for (C2DCompTable* const p : {&copy, &assigned}) {
        EXPECT_EQ(table.m_pValues, p->m_pValues);
        EXPECT_EQ(2, p->m_nRows);
        EXPECT_EQ(2, p->m_nCols);
        EXPECT_EQ(1.0, p->m_dMinX);
        EXPECT_EQ(2.0, p->m_dMaxX);
        EXPECT_EQ(3.0, p->m_dMinY);
        EXPECT_EQ(4.0, p->m_dMaxY);
        EXPECT_EQ(5.0, p->m_Box.m_ptMin.x);
        p->m_pValues = nullptr;  // only one of them may free the array
    }
}

TEST(CompTable, CountsThatGiveNoArrayGiveNoValues) {
    constexpr int kLargest = std::numeric_limits<int>::max();
    constexpr int kSmallest = std::numeric_limits<int>::min();
    int const counts[][2] = {{0, 0},         {0, 5},          {5, 0},
                             {-1, 5},        {5, -1},         {-2, -3},
                             {46341, 46341}, {kLargest, 2},   {kLargest, kLargest},
                             {kSmallest, 2}, {kSmallest, -1}, {kSmallest, kSmallest}};
    for (auto const& count : counts) {
        C2DCompTable table;
        table.SetRowColandBox(2, 2, 0.0, 1.0, 0.0, 1.0);
        table.SetRowColandBox(count[0], count[1], 0.0, 1.0, 0.0, 1.0);
        EXPECT_EQ(nullptr, table.m_pValues);
        EXPECT_EQ(count[0], table.m_nRows);
        EXPECT_EQ(count[1], table.m_nCols);
        EXPECT_EQ(0.0, table.CalComp(0.5, 0.5));
    }
}

TEST(CompTable, PointsThatAreNotFiniteReadNothingOutsideTheArray) {
    C2DCompTable table;
    table.SetRowColandBox(4, 4, 0.0, 100.0, 0.0, 100.0);
    for (double const d : {kInfinity, -kInfinity, kNotANumber}) {
        EXPECT_TRUE(std::isnan(table.CalComp(d, 50.0)));
        EXPECT_TRUE(std::isnan(table.CalComp(50.0, d)));
        EXPECT_TRUE(std::isnan(table.CalComp(d, d)));
    }
}

// The naive twin checks each of its reads; the library's are checked where the address sanitizer runs.
TEST(CompTable, AgreesWithThePlainFormulaOnRandomTables) {
    std::mt19937 random(5);
    std::uniform_int_distribution<int> lines(1, 7);
    std::uniform_real_distribution<double> place(-2.0, 3.0);
    for (int n = 0; n < 500; ++n) {
        int const nRows = lines(random);
        int const nCols = lines(random);
        double const dMinX = place(random);
        double const dMaxX = n % 50 == 0 ? dMinX : dMinX + 1.0 + place(random);
        double const dMinY = place(random);
        double const dMaxY = n % 70 == 0 ? dMinY : dMinY + 1.0 + place(random);
        C2DCompTable table;
        table.SetRowColandBox(nRows, nCols, dMinX, dMaxX, dMinY, dMaxY);
        FillRandomly(table, random);
        NaiveTable const naive(table);
        for (int k = 0; k < 200; ++k) {
            double x = dMinX + (dMaxX - dMinX) * place(random);
            double y = dMinY + (dMaxY - dMinY) * place(random);
            if (k % 10 == 0) x = dMinX + (dMaxX - dMinX) * (k / 10 % nRows) / nRows;
            if (k % 20 == 0) y = dMaxY;
            if (k % 61 == 0) x *= 1e300;
            if (k % 67 == 0) y = kInfinity;
            if (k % 71 == 0) x = kNotANumber;
            EXPECT_TRUE(SameNumber(naive.CalComp(x, y), table.CalComp(x, y)))
                << nRows << " by " << nCols << " at " << x << ", " << y;
        }
    }
}
