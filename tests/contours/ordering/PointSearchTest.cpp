#include "contours/ordering/PointSearch.h"

#include <cmath>
#include <limits>

#include "contours/Paths.h"

using namespace varnet;

namespace {

using Points = std::vector<PointSearch::Point>;
constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double Squared(PointSearch::Point const& p, double x, double y) {
    return (p.x - x) * (p.x - x) + (p.y - y) * (p.y - y);
}

std::int32_t NaiveNearest(Points const& points, double x, double y, double dBest) {
    std::int32_t nBest = PointSearch::kNone;
    for (PointSearch::Point const& p : points) {
        if (!(dBest > Squared(p, x, y))) continue;
        dBest = Squared(p, x, y);
        nBest = p.nRank;
    }
    return nBest;
}

std::int32_t NaiveFarthest(Points const& points, double x, double y, double dBest) {
    std::int32_t nBest = PointSearch::kNone;
    for (PointSearch::Point const& p : points) {
        if (!(Squared(p, x, y) > dBest)) continue;
        dBest = Squared(p, x, y);
        nBest = p.nRank;
    }
    return nBest;
}

std::vector<std::int32_t> NaiveInBox(Points const& points, PlanBox const& box) {
    std::vector<std::int32_t> ranks;
    for (PointSearch::Point const& p : points) {
        if (box.xMin <= p.x && p.x <= box.xMax && box.yMin <= p.y && p.y <= box.yMax)
            ranks.push_back(p.nRank);
    }
    return ranks;
}

void ExpectSameAnswers(PointSearch const& search, Points const& left, double x, double y) {
    EXPECT_EQ(search.Nearest(x, y, 1e30), NaiveNearest(left, x, y, 1e30)) << x << ", " << y;
    EXPECT_EQ(search.Nearest(x, y, 2.0), NaiveNearest(left, x, y, 2.0)) << x << ", " << y;
    for (std::int32_t const nNear : {0, 3, 50, 1000}) {
        EXPECT_EQ(search.Nearest(x, y, 1e30, nNear), NaiveNearest(left, x, y, 1e30)) << x << ", " << y;
    }
    EXPECT_EQ(search.Farthest(x, y, -1.0), NaiveFarthest(left, x, y, -1.0)) << x << ", " << y;
    EXPECT_EQ(search.Farthest(x, y, 2.0), NaiveFarthest(left, x, y, 2.0)) << x << ", " << y;
    PlanBox const box{x - 1.0, y - 2.0, x + 1.0, y};
    std::vector<std::int32_t> ranks;
    search.FindInBox(box, ranks);
    std::sort(ranks.begin(), ranks.end());
    EXPECT_EQ(ranks, NaiveInBox(left, box)) << x << ", " << y;
}

// Takes points out in the given way until none is left, and asks all along.
void ExpectSameAnswersToTheEnd(Points left, Lattice& random, double (*coordinate)(Lattice&)) {
    PointSearch search(left);
    while (true) {
        ExpectSameAnswers(search, left, coordinate(random), coordinate(random));
        if (left.empty()) return;
        for (std::uint32_t n = random.Below(4); n > 0 && !left.empty(); --n) {
            auto const i = left.begin() + random.Below(static_cast<std::uint32_t>(left.size()));
            search.Remove(i->nRank);
            left.erase(i);
        }
    }
}

Points Make(std::int32_t nPoints, Lattice& random, double (*coordinate)(Lattice&)) {
    Points points;
    for (std::int32_t i = 0; i < nPoints; ++i) {
        double const x = coordinate(random);
        points.push_back({x, coordinate(random), i});
    }
    return points;
}

void ExpectSameAnswersFor(double (*coordinate)(Lattice&)) {
    Lattice random(11);
    for (std::int32_t const n : {0, 1, 2, 7, 8, 9, 17, 100, 300}) {
        for (int i = 0; i < 10; ++i) {
            ExpectSameAnswersToTheEnd(Make(n, random, coordinate), random, coordinate);
        }
    }
}

}  // namespace

TEST(PointSearch, FindsTheFirstOfEqualPointsOnALattice) {
    ExpectSameAnswersFor([](Lattice& random) { return static_cast<double>(random.Below(5)); });
}

TEST(PointSearch, FindsWhatAScanFindsAmongNearlyEqualPoints) {
    ExpectSameAnswersFor([](Lattice& random) { return random.Step(9); });
}

TEST(PointSearch, FindsWhatAScanFindsWhereDistancesRound) {
    ExpectSameAnswersFor([](Lattice& random) { return 1e8 + random.Real(0, 1e-7); });
    ExpectSameAnswersFor([](Lattice& random) { return random.Real(-1e-160, 1e-160); });
}

TEST(PointSearch, FindsWhatAScanFindsFarFromEverything) {
    ExpectSameAnswersFor([](Lattice& random) {
        return random.Below(20) == 0 ? random.Real(-1e200, 1e200) : random.Real(-1, 1);
    });
}

TEST(PointSearch, NothingIsNearToWhatIsNoNumberOrInfinite) {
    ExpectSameAnswersFor([](Lattice& random) {
        double const values[] = {0.0, -0.0, 1.0, 2.0, 1e160, -1e160, kInfinite, -kInfinite, kNaN};
        return values[random.Below(9)];
    });
}

TEST(PointSearch, FindsThePointsOfACircleFromItsCentre) {
    Points points;
    for (std::int32_t i = 0; i < 500; ++i) points.push_back({std::cos(i), std::sin(i), i});
    PointSearch search(points);
    while (!points.empty()) {
        std::int32_t const n = NaiveNearest(points, 0.0, 0.0, 1e30);
        ASSERT_EQ(search.Nearest(0.0, 0.0, 1e30), n);
        ASSERT_EQ(search.Farthest(0.0, 0.0, -1.0), NaiveFarthest(points, 0.0, 0.0, -1.0));
        search.Remove(n);
        std::erase_if(points, [n](PointSearch::Point const& p) { return p.nRank == n; });
    }
}

TEST(PointSearch, RemovingARankThatIsNotThereChangesNothing) {
    PointSearch search({{0.0, 0.0, 3}, {kNaN, 0.0, 5}});
    for (std::int32_t const n : {-1, 0, 4, 5, 6, 1000}) search.Remove(n);
    EXPECT_EQ(search.Nearest(0.0, 0.0, 1.0), 3);
    search.Remove(3);
    search.Remove(3);
    EXPECT_EQ(search.Nearest(0.0, 0.0, 1.0), PointSearch::kNone);
}
