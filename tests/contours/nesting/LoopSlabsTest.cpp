#include "contours/nesting/LoopSlabs.h"

#include <cmath>
#include <limits>

#include "contours/CrossingParity.h"
#include "contours/Paths.h"

using namespace varnet;

namespace {

void ExpectSameAsWalk(tagLoopTreeNode& loop, LoopSlabs const& slabs, double x, double y) {
    EXPECT_EQ(slabs.Parity(x, y), CrossingParity(FirstPoint(loop), x, y)) << x << ", " << y;
}

// Points anywhere, and on and just beside the loop's vertices and edges.
void ExpectSameAsWalk(tagLoopTreeNode& loop, Lattice& random) {
    LoopSlabs const slabs(loop);
    Places const places = PlacesOf(loop);
    for (int i = 0; i < 60; ++i) {
        Place const a = places[random.Below(static_cast<std::uint32_t>(places.size()))];
        Place const b = places[random.Below(static_cast<std::uint32_t>(places.size()))];
        ExpectSameAsWalk(loop, slabs, a.first, b.second);
        double const t = random.Real(0, 1);
        double const x = a.first + (b.first - a.first) * t;
        double const y = a.second + (b.second - a.second) * t;
        ExpectSameAsWalk(loop, slabs, x, y);
        ExpectSameAsWalk(loop, slabs, std::nextafter(x, 1e9), y);
        ExpectSameAsWalk(loop, slabs, x, std::nextafter(y, -1e9));
        ExpectSameAsWalk(loop, slabs, std::nextafter(a.first, -1e9), std::nextafter(a.second, 1e9));
        ExpectSameAsWalk(loop, slabs, random.Real(-2, 14), random.Real(-2, 14));
    }
}

}  // namespace

TEST(LoopSlabs, AgreeWithTheWalkOnRandomLoops) {
    Lattice random(51);
    for (int i = 0; i < 1500; ++i) {
        Places places;
        bool const bLattice = random.Below(2) == 0;
        for (std::uint32_t n = 1 + random.Below(40); n > 0; --n) {
            places.emplace_back(bLattice ? random.Step(12) : random.Real(0, 12),
                                bLattice ? random.Step(12) : random.Real(0, 12));
        }
        LoopPtr const pLoop = ClosedLoop(places);
        if (random.Below(4) == 0) pLoop->m_pPointList->RemoveTail();
        if (pLoop->m_pPointList->GetCount() == 0) continue;
        ExpectSameAsWalk(*pLoop, random);
        if (HasFailure()) FAIL() << i;
    }
}

TEST(LoopSlabs, AgreeWithTheWalkOnRings) {
    Lattice random(52);
    for (int nCorners = 3; nCorners < 300; nCorners += 7) {
        Places places;
        for (int i = 0; i < nCorners; ++i) {
            double const dAngle = i * 6.283185307179586 / nCorners;
            places.emplace_back(6 + 6 * std::cos(dAngle), 6 + 6 * std::sin(dAngle));
        }
        LoopPtr const pLoop = ClosedLoop(places);
        ExpectSameAsWalk(*pLoop, random);
    }
}

// Points of a ring up to a gap, whose last one has the x or the y of the first.
TEST(LoopSlabs, AgreeWithTheWalkOnRingsThatDoNotClose) {
    Lattice random(55);
    for (int i = 0; i < 200; ++i) {
        Places places;
        double const dStart = random.Real(0, 6.28);
        double const dWay = random.Real(1, 6);
        int const nCorners = 40 + i;
        for (int n = 0; n < nCorners; ++n) {
            double const dAngle = dStart + dWay * n / nCorners;
            places.emplace_back(6 + 6 * std::cos(dAngle), 6 + 6 * std::sin(dAngle));
        }
        double const dBesides = random.Real(-2, 14);
        places.push_back(i % 2 == 0 ? Place(places[0].first, dBesides) : Place(dBesides, places[0].second));
        LoopPtr const pLoop = ClosedLoop(places);
        pLoop->m_pPointList->RemoveTail();
        ExpectSameAsWalk(*pLoop, random);
        if (HasFailure()) FAIL() << i;
    }
}

TEST(LoopSlabs, AgreeWithTheWalkOnATallComb) {
    Lattice random(53);
    Places places = {{12, -1}, {0, -1}};
    for (int i = 0; i < 500; ++i) places.emplace_back(i * 0.024, i % 2 == 0 ? 12.0 : 0.0);
    LoopPtr const pLoop = ClosedLoop(places);
    ExpectSameAsWalk(*pLoop, random);
}

TEST(LoopSlabs, AgreeWithTheWalkOnFlatAndFarLoops) {
    Lattice random(54);
    double const dNaN = std::numeric_limits<double>::quiet_NaN();
    double const dInfinite = std::numeric_limits<double>::infinity();
    std::vector<Places> const shapes = {{{0, 1}, {5, 1}, {9, 1}},
                                        {{0, 1}, {5, 1 + 1e-7}, {9, 1 - 1e-7}},
                                        {{0, 0}, {1e150, 3}, {2, 1e140}},
                                        {{0, 0}, {1e200, 3}, {2, 5}, {1, 1}},
                                        {{0, 0}, {1e300, 3}, {-1e300, 5}, {1e308, 1}, {-1e308, 2}, {0, 6}},
                                        {{0, 0}, {dInfinite, 3}, {2, 5}, {1, 1}},
                                        {{0, 0}, {dNaN, 3}, {2, 5}, {1, 1}},
                                        {{0, 0}, {4, dInfinite}, {2, 5}, {1, 1}},
                                        {{-1e-310, -1e-310}, {1e-310, 0}, {0, 1e-310}}};
    for (Places const& places : shapes) {
        LoopPtr const pLoop = ClosedLoop(places);
        ExpectSameAsWalk(*pLoop, random);
        LoopSlabs const slabs(*pLoop);
        for (double const d : {dNaN, dInfinite, -dInfinite}) {
            ExpectSameAsWalk(*pLoop, slabs, d, 1.0);
            ExpectSameAsWalk(*pLoop, slabs, 1.0, d);
        }
    }
}
