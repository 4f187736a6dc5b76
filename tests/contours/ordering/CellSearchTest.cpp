#include "contours/ordering/CellSearch.h"

#include <cmath>
#include <limits>

#include "contours/Paths.h"
#include "contours/ordering/GreedyOrder.h"

using namespace varnet;

namespace {

using Points = std::vector<CellSearch::Point>;
constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::int32_t NaiveNearest(Points const& points, double x, double y, double dBest) {
    std::int32_t nBest = CellSearch::kNone;
    for (CellSearch::Point const& p : points) {
        double const d2 = (p.x - x) * (p.x - x) + (p.y - y) * (p.y - y);
        if (!(dBest > d2)) continue;
        dBest = d2;
        nBest = p.nRank;
    }
    return nBest;
}

Points Make(std::int32_t nPoints, Lattice& random, double (*coordinate)(Lattice&)) {
    Points points;
    for (std::int32_t i = 0; i < nPoints; ++i) {
        double const x = coordinate(random);
        points.push_back({x, coordinate(random), i});
    }
    return points;
}

// Takes points out until none is left, some at random and some as an order takes them, and asks all along.
// From inside, from beside the points, and from far away. How many grids there were to be asked.
int ExpectSameAnswersFor(double (*coordinate)(Lattice&), std::initializer_list<std::int32_t> sizes) {
    Lattice random(12);
    int nGrids = 0;
    for (std::int32_t const n : sizes) {
        Points left = Make(n, random, coordinate);
        auto grid = CellSearch::Of(left);
        if (!grid) continue;
        ++nGrids;
        while (true) {
            double const dFar = random.Below(8) == 0 ? 1000.0 : 1.0;
            double const x = dFar * coordinate(random);
            double const y = coordinate(random);
            std::int32_t const nNearest = NaiveNearest(left, x, y, 1e30);
            EXPECT_EQ(grid->Nearest(x, y, 1e30), nNearest) << x << ", " << y;
            EXPECT_EQ(grid->Nearest(x, y, 1e-3), NaiveNearest(left, x, y, 1e-3)) << x << ", " << y;
            if (left.empty() || testing::Test::HasFailure()) break;
            bool const bTakeNearest = random.Below(2) == 0 && nNearest != CellSearch::kNone;
            std::int32_t const nTaken =
                bTakeNearest ? nNearest : left[random.Below(static_cast<std::uint32_t>(left.size()))].nRank;
            grid->Remove(nTaken);
            std::erase_if(left, [nTaken](CellSearch::Point const& p) { return p.nRank == nTaken; });
        }
    }
    return nGrids;
}

}  // namespace

TEST(CellSearch, FindsWhatAScanFindsAmongScatteredPoints) {
    EXPECT_EQ(3, ExpectSameAnswersFor([](Lattice& random) { return random.Real(-5, 20); }, {64, 300, 1500}));
}

TEST(CellSearch, FindsTheFirstOfEquallyNearPointsOnALattice) {
    EXPECT_EQ(2, ExpectSameAnswersFor([](Lattice& random) { return static_cast<double>(random.Below(12)); },
                                      {100, 400}));
}

TEST(CellSearch, FindsWhatAScanFindsAmongNearlyEqualPoints) {
    EXPECT_EQ(1, ExpectSameAnswersFor([](Lattice& random) { return random.Step(9); }, {100}));
}

TEST(CellSearch, FindsWhatAScanFindsWhereDistancesAndCellsRound) {
    EXPECT_LT(0, ExpectSameAnswersFor([](Lattice& random) { return 1e8 + random.Real(0, 1e-7); }, {64, 100}));
    EXPECT_LT(0,
              ExpectSameAnswersFor([](Lattice& random) { return random.Real(-1e-160, 1e-160); }, {64, 300}));
    EXPECT_LT(0, ExpectSameAnswersFor([](Lattice& random) { return random.Real(-1e200, 1e200); }, {64, 300}));
}

// Most cells are empty, and many points far from the others.
TEST(CellSearch, FindsWhatAScanFindsInHeaps) {
    EXPECT_LT(0,
              ExpectSameAnswersFor([](Lattice& random) { return 10.0 * random.Below(8) + random.Real(0, 1); },
                                   {100, 300, 1000}));
}

TEST(CellSearch, WhatIsNoNumberOrInfiniteIsNeverFound) {
    EXPECT_LT(0, ExpectSameAnswersFor(
                     [](Lattice& random) {
                         double const values[] = {kInfinite, -kInfinite, kNaN};
                         return random.Below(10) == 0 ? values[random.Below(3)] : random.Real(0, 10);
                     },
                     {100, 500}));
}

TEST(CellSearch, FewCrowdedOrLinedUpPointsHaveNone) {
    Lattice random(1);
    EXPECT_FALSE(CellSearch::Of({}));
    EXPECT_FALSE(CellSearch::Of(Make(63, random, [](Lattice& r) { return r.Real(0, 1); })));
    Points points;
    for (std::int32_t i = 0; i < 1000; ++i) points.push_back({3.0, 0.1 * i, i});
    EXPECT_FALSE(CellSearch::Of(points));
    for (CellSearch::Point& p : points) std::swap(p.x, p.y);
    EXPECT_FALSE(CellSearch::Of(points));
    // One far away makes a crowd of all others.
    points = Make(1000, random, [](Lattice& r) { return r.Real(0, 1); });
    EXPECT_TRUE(CellSearch::Of(points));
    points.push_back({1e6, 1e6, 1000});
    EXPECT_FALSE(CellSearch::Of(points));
    EXPECT_FALSE(CellSearch::Of(Points(1000, {kNaN, kNaN, 0})));
}

TEST(CellSearch, RemovingARankThatIsNotThereChangesNothing) {
    Lattice random(2);
    Points points = Make(100, random, [](Lattice& r) { return r.Real(0, 1); });
    points[7].x = kNaN;
    auto grid = CellSearch::Of(points);
    ASSERT_TRUE(grid);
    for (std::int32_t const n : {-1, 7, 100, 1000}) grid->Remove(n);
    for (int i = 0; i < 200; ++i) {
        double const x = random.Real(0, 1);
        double const y = random.Real(0, 1);
        EXPECT_EQ(grid->Nearest(x, y, 1e30), NaiveNearest(points, x, y, 1e30));
    }
    for (std::int32_t i = 0; i < 100; ++i) {
        grid->Remove(i);
        grid->Remove(i);
    }
    EXPECT_EQ(CellSearch::kNone, grid->Nearest(0.5, 0.5, 1e30));
}

// By grid and by tree, paths are picked in the order of a scan over all that are left.
TEST(CellSearch, PathsAreTheSameWhateverSearchesForThem) {
    Lattice random(3);
    for (int n = 0; n < 40; ++n) {
        bool const bCrowded = n % 2 == 0;
        Points left;
        GreedyOrder order(GreedyOrder::kNearest, 1e30);
        for (std::int32_t i = 0; i < 200; ++i) {
            order.AddPath();
            for (int k = 0; k < 2; ++k) {
                double const x = random.Step(9) + (bCrowded && i == 0 ? 1e6 : 0.0);
                double const y = random.Real(0, 3);
                order.AddPoint(x, y);
                left.push_back({x, y, 2 * i + k});
            }
        }
        CPoint2D from(random.Real(0, 3), 0.0);
        while (!left.empty()) {
            std::int32_t const nPoint = NaiveNearest(left, from.x, from.y, 1e30);
            auto const pick = order.Next(from);
            ASSERT_EQ(nPoint, 2 * pick.nPath + pick.nPoint);
            auto const other = std::find_if(left.begin(), left.end(), [nPoint](CellSearch::Point const& p) {
                return p.nRank == (nPoint ^ 1);
            });
            from = CPoint2D(other->x, other->y);
            std::erase_if(left, [nPoint](CellSearch::Point const& p) { return p.nRank / 2 == nPoint / 2; });
        }
        EXPECT_EQ(-1, order.Next(from).nPath);
    }
}
