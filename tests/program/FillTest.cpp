#include "Fill.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "Failure.h"
#include "SliceLayer.h"
#include "contours/Paths.h"

namespace {

FillRegion Rectangle(double dLeft, double dBottom, double dRight, double dTop) {
    return {{{CPoint2D(dLeft, dBottom), CPoint2D(dRight, dBottom), CPoint2D(dRight, dTop),
              CPoint2D(dLeft, dTop)}}};
}

// Along the x axis, a millimetre apart: at y = 0.5, 1.5, and so on.
FillStyle Level() {
    FillStyle style;
    style.dSpacing = 1.0;
    style.dAngle = 0.0;
    return style;
}

void ExpectSegments(Segments const& expected, Segments const& segments) {
    ASSERT_EQ(expected.size(), segments.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i].first.first, segments[i].first.first, 1e-12) << i;
        EXPECT_NEAR(expected[i].first.second, segments[i].first.second, 1e-12) << i;
        EXPECT_NEAR(expected[i].second.first, segments[i].second.first, 1e-12) << i;
        EXPECT_NEAR(expected[i].second.second, segments[i].second.second, 1e-12) << i;
    }
}

Segments AllSegments(CLayer const& layer) {
    Segments all;
    for (CHatch const* pHatch : HatchesOf(layer)) {
        for (Segment const& segment : SegmentsOf(*pHatch)) all.push_back(segment);
    }
    return all;
}

TEST(Fill, ARectangleIsOneChainOfStrokesTurnedByTurns) {
    CLayer layer;
    EXPECT_EQ(3u, Fill(layer, Level(), {Rectangle(0, 0, 10, 3)}));
    std::vector<CHatch*> const hatches = HatchesOf(layer);
    ASSERT_EQ(1u, hatches.size());
    EXPECT_EQ(kFillHatch, hatches[0]->m_nID);
    EXPECT_EQ(0, hatches[0]->m_nFlag);
    ExpectSegments({{{0.5, 0.5}, {9.5, 0.5}}, {{9.5, 1.5}, {0.5, 1.5}}, {{0.5, 2.5}, {9.5, 2.5}}},
                   SegmentsOf(*hatches[0]));
}

TEST(Fill, IdsAreOpenChainsForLinkingAndThoseOfSupportsInTheSecondGroup) {
    EXPECT_NE(1, kFillHatch % 100);
    EXPECT_NE(2, kFillHatch % 100);
    EXPECT_LT(kFillHatch, 1000);
    EXPECT_GE(kSupportHatch, 1000);
    CLayer layer;
    FillStyle style = Level();
    style.nID = kSupportHatch;
    Fill(layer, style, {Rectangle(0, 0, 10, 3)});
    EXPECT_EQ(kSupportHatch, HatchesOf(layer)[0]->m_nID);
}

TEST(Fill, LinesLieAtPlacesThatDoNotDependOnWhatTheyFill) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(-7.25, -3.75, 8, -1.25)});
    for (auto const& [start, end] : AllSegments(layer)) {
        EXPECT_EQ(start.second, end.second);
        EXPECT_EQ(0.5, start.second - std::floor(start.second));
    }
    EXPECT_EQ(3u, AllSegments(layer).size());
}

TEST(Fill, ALineThroughTheLowerSideCountsAndOneThroughTheUpperSideDoesNot) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0.5, 10, 2.5)});
    ASSERT_EQ(2u, AllSegments(layer).size());
    EXPECT_EQ(0.5, AllSegments(layer)[0].first.second);
    EXPECT_EQ(1.5, AllSegments(layer)[1].first.second);
}

TEST(Fill, LinesTurnWithTheAngle) {
    FillStyle style = Level();
    for (double dAngle : {30.0, 45.0, 90.0, 135.0, -60.0}) {
        style.dAngle = dAngle;
        CLayer layer;
        Fill(layer, style, {Rectangle(-20, -15, 20, 15)});
        double const dCos = std::cos(dAngle * 3.141592653589793 / 180.0);
        double const dSin = std::sin(dAngle * 3.141592653589793 / 180.0);
        double dLength = 0.0;
        for (auto const& [a, b] : AllSegments(layer)) {
            double const dx = b.first - a.first, dy = b.second - a.second;
            EXPECT_NEAR(0.0, dx * dSin - dy * dCos, 1e-9);
            dLength += std::hypot(dx, dy) + 1.0;
        }
        EXPECT_NEAR(40.0 * 30.0, dLength, 40.0);
    }
}

TEST(Fill, AHoleIsLeftOutAndParts) {
    CLayer layer;
    FillRegion region = Rectangle(0, 0, 20, 3);
    region.contours.push_back(Rectangle(8, 1, 12, 2).contours[0]);
    Fill(layer, Level(), {region});
    std::vector<CHatch*> const hatches = HatchesOf(layer);
    // Below the hole, left of it, right of it, above it.
    ASSERT_EQ(4u, hatches.size());
    ExpectSegments({{{0.5, 0.5}, {19.5, 0.5}}}, SegmentsOf(*hatches[0]));
    ExpectSegments({{{0.5, 1.5}, {7.5, 1.5}}}, SegmentsOf(*hatches[1]));
    ExpectSegments({{{12.5, 1.5}, {19.5, 1.5}}}, SegmentsOf(*hatches[2]));
    ExpectSegments({{{0.5, 2.5}, {19.5, 2.5}}}, SegmentsOf(*hatches[3]));
}

TEST(Fill, RegionsThatOverlapAreFilledOnce) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0, 10, 1), Rectangle(6, 0, 16, 1), Rectangle(7, 0, 8, 1)});
    ExpectSegments({{{0.5, 0.5}, {15.5, 0.5}}}, AllSegments(layer));
}

TEST(Fill, RegionsThatTouchAreFilledInOneStroke) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0, 10, 1), Rectangle(10, 0, 20, 1), Rectangle(20.04, 0, 30, 1)});
    ExpectSegments({{{0.5, 0.5}, {29.5, 0.5}}}, AllSegments(layer));
}

TEST(Fill, AGapOfATwentiethOfTheSpacingParts) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0, 10, 1), Rectangle(10.0625, 0, 20, 1)});
    ExpectSegments({{{0.5, 0.5}, {9.5, 0.5}}, {{10.5625, 0.5}, {19.5, 0.5}}}, AllSegments(layer));
}

TEST(Fill, StrokesShorterThanTheSpacingAreLeftOut) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0, 1.96875, 1), Rectangle(5, 0, 7, 1)});
    ExpectSegments({{{5.5, 0.5}, {6.5, 0.5}}}, AllSegments(layer));
}

TEST(Fill, WhatIsToBeKeptClearIsTakenAway) {
    CLayer layer;
    Fill(layer, Level(), {Rectangle(0, 0, 20, 1), Rectangle(30, 0, 40, 1)},
         {Rectangle(-5, 0, 4, 1), Rectangle(10, 0, 12, 1), Rectangle(11, 0, 15, 1), Rectangle(50, 0, 60, 1)});
    ExpectSegments({{{4.5, 0.5}, {9.5, 0.5}}, {{15.5, 0.5}, {19.5, 0.5}}, {{30.5, 0.5}, {39.5, 0.5}}},
                   AllSegments(layer));
}

TEST(Fill, WhatIsKeptClearAltogetherGivesNothing) {
    CLayer layer;
    EXPECT_EQ(0u, Fill(layer, Level(), {Rectangle(2, 0, 8, 5)}, {Rectangle(0, -1, 20, 9)}));
    EXPECT_TRUE(HatchesOf(layer).empty());
    EXPECT_EQ(0u, Fill(layer, Level(), {}, {Rectangle(0, -1, 20, 9)}));
}

TEST(Fill, AChainEndsWhereTheNextStrokeIsFar) {
    CLayer layer;
    // The right ends lie 3 mm apart, which is still near, then more.
    FillRegion near{{{CPoint2D(0, 0), CPoint2D(10, 0), CPoint2D(10, 1), CPoint2D(13, 1), CPoint2D(13, 2),
                      CPoint2D(0, 2)}}};
    Fill(layer, Level(), {near});
    EXPECT_EQ(1u, HatchesOf(layer).size());
    CLayer other;
    FillRegion far{{{CPoint2D(0, 0), CPoint2D(10, 0), CPoint2D(10, 1), CPoint2D(13.25, 1), CPoint2D(13.25, 2),
                     CPoint2D(0, 2)}}};
    Fill(other, Level(), {far});
    EXPECT_EQ(2u, HatchesOf(other).size());
}

TEST(Fill, AChainHasTwoHundredStrokesAtMost) {
    CLayer layer;
    EXPECT_EQ(450u, Fill(layer, Level(), {Rectangle(0, 0, 10, 450)}));
    std::vector<CHatch*> const hatches = HatchesOf(layer);
    ASSERT_EQ(3u, hatches.size());
    EXPECT_EQ(200, hatches[0]->m_EdgeList.GetCount());
    EXPECT_EQ(200, hatches[1]->m_EdgeList.GetCount());
    EXPECT_EQ(50, hatches[2]->m_EdgeList.GetCount());
}

TEST(Fill, RegionsAreToldByTheNumbersOfTheLoopsAndOpenPathsBoundNothing) {
    CLayer layer;
    Contour square, path;
    square.bClosed = true;
    square.points = Rectangle(0, 0, 4, 4).contours[0];
    path.points = square.points;
    AddContours(layer, {square}, 5);
    AddContours(layer, {square, path}, 2);
    NestAndSimplify(layer, 0.01);
    std::vector<FillRegion> const regions = RegionsOf(layer);
    ASSERT_EQ(2u, regions.size());
    EXPECT_EQ(1u, regions[0].contours.size());
    EXPECT_EQ(1u, regions[1].contours.size());
    // By the odd count over all loops, the two squares would leave nothing.
    EXPECT_EQ(4u, Fill(layer, Level(), regions));
}

TEST(Fill, LinesTooCloseForTheSizeAreRefused) {
    CLayer layer;
    FillStyle style = Level();
    style.dSpacing = 1e-6;
    EXPECT_THROW(Fill(layer, style, {Rectangle(0, 0, 10, 10)}), Failure);
    style.dSpacing = 1.0;
    EXPECT_THROW(Fill(layer, style, {Rectangle(0, -1e10, 10, 1e10)}), Failure);
    EXPECT_THROW(Fill(layer, style, {Rectangle(0, 1e300, 10, 2e300)}), Failure);
    EXPECT_TRUE(HatchesOf(layer).empty());
}

// ---- beside a look at every point of a grid

bool IsInside(FillRegion const& region, double x, double y) {
    bool bInside = false;
    for (auto const& contour : region.contours) {
        for (std::size_t i = 0; i < contour.size(); ++i) {
            CPoint2D const& a = contour[i];
            CPoint2D const& b = contour[(i + 1) % contour.size()];
            if ((a.y > y) != (b.y > y) && x > a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y)) bInside = !bInside;
        }
    }
    return bInside;
}

bool IsInAny(std::vector<FillRegion> const& regions, double x, double y) {
    for (FillRegion const& region : regions) {
        if (IsInside(region, x, y)) return true;
    }
    return false;
}

TEST(Fill, StrokesOfRandomRegionsLieWhereTheOddCountSays) {
    std::mt19937 random(5);
    auto const real = [&random](double dMost) {
        return dMost * static_cast<double>(static_cast<unsigned>(random())) / 4294967296.0;
    };
    auto const triangles = [&real](unsigned n) {
        FillRegion region;
        for (; n > 0; --n) {
            double const x = real(30.0), y = real(30.0);
            region.contours.push_back({CPoint2D(x + real(15.0), y + real(15.0)),
                                       CPoint2D(x + real(15.0), y + real(15.0)),
                                       CPoint2D(x + real(15.0), y + real(15.0))});
        }
        return region;
    };
    FillStyle style = Level();
    style.dSpacing = 0.25;
    for (int nRound = 0; nRound < 40; ++nRound) {
        std::vector<FillRegion> const regions = {triangles(3), triangles(2)};
        std::vector<FillRegion> const clear = {triangles(1), triangles(1)};
        CLayer layer;
        Fill(layer, style, regions, clear);
        double dLength = 0.0;
        for (auto const& [a, b] : AllSegments(layer)) {
            for (double t : {0.0, 0.31, 0.5, 0.87, 1.0}) {
                double const x = a.first + t * (b.first - a.first);
                // Gaps that are not seen are shorter than a twentieth of the spacing.
                bool const bFilled =
                    (IsInAny(regions, x - 0.00625, a.second) || IsInAny(regions, x + 0.00625, a.second) ||
                     IsInAny(regions, x, a.second)) &&
                    !(IsInAny(clear, x - 0.00625, a.second) && IsInAny(clear, x, a.second) &&
                      IsInAny(clear, x + 0.00625, a.second));
                EXPECT_TRUE(bFilled) << x << ", " << a.second;
            }
            dLength += std::fabs(b.first - a.first) + style.dSpacing;
        }
        double dExpected = 0.0;
        int nWays = 0;
        for (double y = 0.125; y < 50.0; y += 0.25) {
            bool bBefore = false;
            for (double x = 0.0; x < 50.0; x += 0.01) {
                bool const bNow = IsInAny(regions, x, y) && !IsInAny(clear, x, y);
                if (bNow) dExpected += 0.01;
                if (bNow != bBefore) ++nWays;
                bBefore = bNow;
            }
        }
        // Of each stretch, up to two spacings are dropped when it is short.
        EXPECT_LE(dLength, dExpected + nWays * 0.02);
        EXPECT_GE(dLength, dExpected - nWays * 0.02 - 0.1 * dExpected - 5.0);
    }
}

}  // namespace
