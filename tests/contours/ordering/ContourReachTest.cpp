#include "contours/ordering/ContourReach.h"

#include <cmath>
#include <limits>

#include "contours/Paths.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

ContourReach::Segment NaiveFind(tagLoopTreeNode const& loop, CPoint2D const& point, double dWidth) {
    ContourReach::Segment best;
    for (PointNode* p = loop.m_pPointList->m_pNodeHead; p != nullptr && p->pNext != nullptr; p = p->pNext) {
        double const d = CalMinD2ofPtoLine(point, p->data, p->pNext->data);
        if (dWidth * 3.24 * dWidth > d && best.dDistance2 + 0.0001 > d) best = {p->pNext, d};
    }
    return best;
}

void ExpectSame(tagLoopTreeNode const& loop, double dWidth, Lattice& random, double (*coordinate)(Lattice&)) {
    ContourReach reach(loop, dWidth);
    for (int i = 0; i < 40; ++i) {
        double const x = coordinate(random);
        CPoint2D const point(x, coordinate(random));
        ContourReach::Segment const expected = NaiveFind(loop, point, dWidth);
        ContourReach::Segment const found = reach.Find(point);
        EXPECT_EQ(found.pEnd, expected.pEnd) << i << ": " << point.x << ", " << point.y;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(found.dDistance2),
                  std::bit_cast<std::uint64_t>(expected.dDistance2));
        PlanBox const& box = reach.Box();
        EXPECT_TRUE(Holds(box, point.x, point.y) || expected.pEnd == nullptr) << point.x << ", " << point.y;
    }
}

void ExpectSameFor(double dWidth, double (*coordinate)(Lattice&)) {
    Lattice random(5);
    for (std::uint32_t const n : {1u, 2u, 3u, 8u, 9u, 30u, 200u}) {
        for (int i = 0; i < 10; ++i) {
            Places places;
            for (std::uint32_t k = 0; k < n; ++k) {
                double const x = coordinate(random);
                places.emplace_back(x, coordinate(random));
            }
            ExpectSame(*OpenPath(places), dWidth, random, coordinate);
        }
    }
}

}  // namespace

TEST(ContourReach, FindsTheLastOfNearlyEqualSegmentsOnALattice) {
    for (double const dWidth : {0.3, 0.6, 1.0, -0.6, 4.0}) {
        ExpectSameFor(dWidth, [](Lattice& random) { return random.Step(12); });
    }
}

TEST(ContourReach, FindsWhatAWalkFindsWhereDistancesRound) {
    ExpectSameFor(1e-4, [](Lattice& random) {
        return random.Below(4) == 0 ? random.Real(0, 1e5) : 5e4 + random.Real(0, 1e-3);
    });
    ExpectSameFor(1e-7, [](Lattice& random) { return random.Real(0, 1e-6) + random.Below(2) * 1e6; });
}

TEST(ContourReach, FindsWhatAWalkFindsWithWidthsAndCoordinatesOutOfTheOrdinary) {
    for (double const dWidth : {1e5, 1e80, 0.0, 1e-200, std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity()}) {
        ExpectSameFor(dWidth, [](Lattice& random) {
            double const values[] = {0.0,
                                     1.0,
                                     2.0,
                                     1e59,
                                     1e61,
                                     -1e100,
                                     1e155,
                                     std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()};
            return random.Below(3) == 0 ? values[random.Below(9)] : random.Real(0, 4);
        });
    }
}

TEST(ContourReach, FindsNothingWithoutPoints) {
    tagLoopTreeNode const empty(0);
    ContourReach reach(empty, 1.0);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(reach.Find(CPoint2D(0, 0)).pEnd, nullptr);
    EXPECT_GT(reach.Box().xMin, reach.Box().xMax);
    EXPECT_EQ(reach.Find(CPoint2D(0, 0)).pEnd, nullptr);
}
