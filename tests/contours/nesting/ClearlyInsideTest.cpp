#include "contours/nesting/ClearlyInside.h"

#include <cmath>
#include <limits>
#include <utility>

#include "contours/Paths.h"

using varnet::IsClearlyInside;

namespace {

// The same line, the other way round.
LoopPtr Turned(Places places) {
    std::reverse(places.begin(), places.end());
    return ClosedLoop(places);
}

// Whether one loop is clearly inside of another, which has to be the same whatever way they run.
bool IsClear(Places const& outer, Places const& inner) {
    bool const bClear = IsClearlyInside(*ClosedLoop(outer), *ClosedLoop(inner));
    EXPECT_EQ(bClear, IsClearlyInside(*Turned(outer), *ClosedLoop(inner)));
    EXPECT_EQ(bClear, IsClearlyInside(*ClosedLoop(outer), *Turned(inner)));
    return bClear;
}

Places Box(double xLow, double yLow, double xHigh, double yHigh) {
    return {{xLow, yLow}, {xHigh, yLow}, {xHigh, yHigh}, {xLow, yHigh}};
}

Places Ring(double dRadius, int nPoints) {
    Places places;
    for (int i = 0; i < nPoints; ++i) {
        double const dAngle = 6.283185307179586 * i / nPoints;
        places.emplace_back(5.0 + dRadius * std::cos(dAngle), 5.0 + dRadius * std::sin(dAngle));
    }
    return places;
}

double SideOf(Place a, Place b, Place p) {
    return (b.first - a.first) * (p.second - a.second) - (b.second - a.second) * (p.first - a.first);
}

bool IsBetween(Place a, Place b, Place p) {
    return SideOf(a, b, p) == 0.0 && std::min(a.first, b.first) <= p.first &&
           p.first <= std::max(a.first, b.first) && std::min(a.second, b.second) <= p.second &&
           p.second <= std::max(a.second, b.second);
}

// Whether two segments between whole numbers have a point in common.
bool Meet(Place a, Place b, Place c, Place d) {
    if (IsBetween(a, b, c) || IsBetween(a, b, d) || IsBetween(c, d, a) || IsBetween(c, d, b)) return true;
    return SideOf(a, b, c) * SideOf(a, b, d) < 0.0 && SideOf(c, d, a) * SideOf(c, d, b) < 0.0;
}

bool LinesMeet(Places const& a, Places const& b) {
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t k = 0; k < b.size(); ++k) {
            if (Meet(a[i], a[(i + 1) % a.size()], b[k], b[(k + 1) % b.size()])) return true;
        }
    }
    return false;
}

bool IsBoxInside(Places const& a, Places const& b) {
    auto const bounds = [](Places const& places) {
        CBoundBox2D box;
        for (auto const& [x, y] : places) box += CPoint2D(x, y);
        return box;
    };
    CBoundBox2D const outer = bounds(a);
    CBoundBox2D const inner = bounds(b);
    return outer.m_ptMin.x < inner.m_ptMin.x && outer.m_ptMin.y < inner.m_ptMin.y &&
           inner.m_ptMax.x < outer.m_ptMax.x && inner.m_ptMax.y < outer.m_ptMax.y;
}

constexpr double kClear = 1e-5;
double const kMore = std::nextafter(kClear, 1.0);

}  // namespace

TEST(ClearlyInside, TheBoxesKeepMoreThanAHundredThousandthOnEachSide) {
    Places const outer = Box(0, 0, 8, 8);
    // Just as far from the sides at 0, and a quarter of that from those at 8, where nothing is exact.
    EXPECT_TRUE(IsClear(outer, Box(kMore, kMore, 4, 4)));
    EXPECT_FALSE(IsClear(outer, Box(kClear, kMore, 4, 4)));
    EXPECT_FALSE(IsClear(outer, Box(kMore, kClear, 4, 4)));
    EXPECT_TRUE(IsClear(outer, Box(2, 2, 8 - 1.25 * kClear, 8 - 1.25 * kClear)));
    EXPECT_FALSE(IsClear(outer, Box(2, 2, 8 - 0.75 * kClear, 7)));
    EXPECT_FALSE(IsClear(outer, Box(2, 2, 7, 8 - 0.75 * kClear)));
    // The sides at 0, when the loop lies on the other side of them.
    EXPECT_TRUE(IsClear(Box(-8, -8, 0, 0), Box(-4, -4, -kMore, -kMore)));
    EXPECT_FALSE(IsClear(Box(-8, -8, 0, 0), Box(-4, -4, -kClear, -kMore)));
    EXPECT_FALSE(IsClear(Box(-8, -8, 0, 0), Box(-4, -4, -kMore, -kClear)));
    EXPECT_FALSE(IsClear(outer, outer));
}

// A box beside the tip of a triangle, outside of it and far from its lines: the distance of the boxes alone
// says that it is not inside.
TEST(ClearlyInside, TheBoxesKeepTheirDistanceWhereTheLinesAreFarApart) {
    for (double const sign : {1.0, -1.0}) {
        for (bool const bSideways : {false, true}) {
            auto const turned = [sign, bSideways](Places places) {
                for (Place& place : places) {
                    place = {sign * place.first, sign * place.second};
                    if (bSideways) std::swap(place.first, place.second);
                }
                return places;
            };
            Places const outer = turned({{-8, -8}, {8, -8}, {0, 0}});
            EXPECT_TRUE(IsClear(outer, turned(Box(4, -2, 5, -kMore)))) << sign << bSideways;
            EXPECT_FALSE(IsClear(outer, turned(Box(4, -2, 5, -kClear)))) << sign << bSideways;
        }
    }
}

// A corner on the diagonal, inside of a square that stands on its tip: its way to the side is 1.4 times what
// it is short of.
TEST(ClearlyInside, TheLinesKeepAHundredThousandthWhereTheirBoxesDoNot) {
    for (double const x : {1.0, -1.0}) {
        for (double const y : {1.0, -1.0}) {
            Places const outer = {{10, 0}, {0, 10}, {-10, 0}, {0, -10}};
            auto const dart = [x, y](double d) { return Places{{0, 0}, {x * (5 - d), y * (5 - d)}, {0, y}}; };
            EXPECT_TRUE(IsClear(outer, dart(0.8 * kClear)));
            EXPECT_FALSE(IsClear(outer, dart(0.6 * kClear)));
            EXPECT_FALSE(IsClear(outer, dart(0.0)));
            EXPECT_FALSE(IsClear(outer, dart(-1.0)));
            // A notch of the outer loop, at a side of the inner one.
            auto const notched = [x, y](double d) {
                return Places{{9 * x, 9 * y},  {-9 * x, 9 * y}, {-9 * x, -9 * y},
                              {9 * x, -9 * y}, {9 * x, 0},      {d * x, d * y}};
            };
            Places const inner = {{4 * x, -4 * y}, {-4 * x, 4 * y}, {-4 * x, -4 * y}};
            EXPECT_TRUE(IsClear(notched(0.8 * kClear), inner));
            EXPECT_FALSE(IsClear(notched(0.6 * kClear), inner));
        }
    }
}

TEST(ClearlyInside, OnlyLoopsClosedByACopyOfTheirHeadAreJudged) {
    LoopPtr const pOuter = Square(0, 0, 10);
    LoopPtr const pInner = Square(4, 4, 2);
    EXPECT_TRUE(IsClearlyInside(*pOuter, *pInner));
    for (Places const& open : {Places{{4, 4}, {6, 4}, {5, 6}}, Places{{4, 4}, {6, 4}, {4, 6}},
                               Places{{4, 4}, {6, 6}, {5, 4}}, Places{{5, 5}}, Places{}}) {
        EXPECT_FALSE(IsClearlyInside(*pOuter, *OpenPath(open))) << open.size();
    }
    for (Places const& open :
         {Places{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, Places{{0, 0}, {10, 10}, {10, 0}}}) {
        EXPECT_FALSE(IsClearlyInside(*OpenPath(open), *pInner));
    }
    EXPECT_FALSE(IsClearlyInside(*pOuter, tagLoopTreeNode()));
    EXPECT_FALSE(IsClearlyInside(tagLoopTreeNode(), *pInner));
}

TEST(ClearlyInside, PlacesBeyondAKilometreAreNotJudged) {
    constexpr double kFar = 1e6;
    double const beyond = std::nextafter(kFar, 2e6);
    Places const inner = Box(4, 4, 6, 6);
    EXPECT_TRUE(IsClear(Box(-kFar, -kFar, kFar, kFar), inner));
    EXPECT_FALSE(IsClear(Box(-kFar, -kFar, beyond, kFar), inner));
    EXPECT_FALSE(IsClear(Box(-kFar, -kFar, kFar, beyond), inner));
    EXPECT_FALSE(IsClear(Box(-beyond, -kFar, kFar, kFar), inner));
    EXPECT_FALSE(IsClear(Box(-kFar, -beyond, kFar, kFar), inner));
    // All that comes before the last place is clear.
    Places outer = Box(0, 0, 10, 10);
    outer.emplace_back(-beyond, 5);
    EXPECT_FALSE(IsClearlyInside(*ClosedLoop(outer), *ClosedLoop(inner)));
    outer.back() = {-1, std::numeric_limits<double>::quiet_NaN()};
    EXPECT_FALSE(IsClearlyInside(*ClosedLoop(outer), *ClosedLoop(inner)));
    Places wild = inner;
    wild.emplace_back(std::numeric_limits<double>::quiet_NaN(), 5);
    EXPECT_FALSE(IsClearlyInside(*ClosedLoop(Box(0, 0, 10, 10)), *ClosedLoop(wild)));
}

TEST(ClearlyInside, SoManyPairsOfEdgesAreComparedAndNoMore) {
    LoopPtr const pOuter = Square(0, 0, 10);
    EXPECT_TRUE(IsClearlyInside(*pOuter, *ClosedLoop(Ring(3, 16384)))) << "65536 pairs";
    EXPECT_FALSE(IsClearlyInside(*pOuter, *ClosedLoop(Ring(3, 16385))));
}

TEST(ClearlyInside, OnWholeNumbersLinesAreClearWhereTheyDoNotMeet) {
    Lattice random(12);
    int nClear = 0;
    int nMeeting = 0;
    auto const places = [&random](int nCount, std::uint32_t nFrom, std::uint32_t nSteps) {
        Places result;
        for (int i = 0; i < nCount; ++i)
            result.emplace_back(nFrom + random.Below(nSteps), nFrom + random.Below(nSteps));
        return result;
    };
    for (int i = 0; i < 20000; ++i) {
        Places const outer = places(3 + i % 6, 0, 16);
        Places const inner = places(2 + i % 3, 4, 8);
        if (!IsBoxInside(outer, inner)) {
            ASSERT_FALSE(IsClear(outer, inner)) << i;
            continue;
        }
        bool const bMeet = LinesMeet(outer, inner);
        ASSERT_EQ(!bMeet, IsClear(outer, inner)) << i;
        ++(bMeet ? nMeeting : nClear);
    }
    EXPECT_GT(nClear, 100);
    EXPECT_GT(nMeeting, 100);
}
