#include <algorithm>
#include <chrono>
#include <cmath>

#include "contours/LoopTreeNode.h"
#include "contours/Paths.h"
#include "foundation/Geometry.h"

namespace {

using Points = std::vector<CPoint2D>;

Points PointsOf(tagLoopTreeNode const& loop) {
    Points points;
    for (auto const* p = loop.m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext)
        points.push_back(p->data);
    return points;
}

std::vector<ExactPoint> Exactly(Points const& points) {
    std::vector<ExactPoint> exact;
    for (CPoint2D const& p : points) exact.push_back(Exact(p));
    return exact;
}

void Erase(Points& points, std::size_t nFrom, std::size_t nTo) {
    points.erase(points.begin() + static_cast<std::ptrdiff_t>(nFrom),
                 points.begin() + static_cast<std::ptrdiff_t>(nTo));
}

bool AnyBeyond(Points& points, std::size_t a, std::size_t c, double dTolerance2) {
    for (std::size_t n = a + 1; n < c; ++n) {
        if (D2ofPtoLine(points[n], points[a], points[c]) > dTolerance2) return true;
    }
    return false;
}

// The definition, step by step, on an array.
void LiteralOptimize(Points& points, double dTolerance, bool bClosed) {
    if (points.size() < 3) return;
    double const dTolerance2 = dTolerance * dTolerance;
    for (std::size_t a = 0; a + 1 < points.size();) {
        std::size_t const b = a + 1;
        if (points[b] == points[a]) {
            Erase(points, b, b + 1);
            continue;
        }
        double const a0 = CalAngleDeg(points[a], points[b]);
        std::size_t nKept = points.size() - 1;
        for (std::size_t c = b + 1; c < points.size(); ++c) {
            double angle = CalAngleDeg(points[c - 1], points[c]);
            if (1e-6 > D2ofPtoP(points[c - 1], points[c])) angle = a0;
            if (std::min(std::fabs(angle - a0), 360.0 - a0) > 10.0 || AnyBeyond(points, a, c, dTolerance2)) {
                nKept = c - 1;
                break;
            }
        }
        Erase(points, b, nKept);
        ++a;
    }
    if (!bClosed) return;
    if (points.size() < 4) {
        points.clear();
        return;
    }
    CPoint2D& p0 = points[0];
    CPoint2D& p1 = points[1];
    CPoint2D& pn = points[points.size() - 2];
    double const d = std::fabs(CalAngleDeg(p0, p1) - CalAngleDeg(pn, p0));
    if (10.0 > std::min(d, 360.0 - d) && dTolerance2 > D2ofPtoLine(p0, p1, pn)) {
        Erase(points, 0, 1);
        points.back() = points.front();
    }
}

void LiteralOptimizeLine(Points& points, double dAngle) {
    if (points.size() < 3) return;
    for (std::size_t a = 0; a + 1 < points.size(); ++a) {
        double const a0 = CalAngleDeg(points[a], points[a + 1]);
        while (a + 2 < points.size()) {
            CPoint2D& b = points[a + 1];
            CPoint2D& c = points[a + 2];
            double angle = CalAngleDeg(b, c);
            if (1e-8 > D2ofPtoP(b, c)) angle = a0;
            if (std::min(std::fabs(angle - a0), 360.0 - a0) > dAngle) break;
            Erase(points, a + 1, a + 2);
        }
    }
}

void LiteralOptimizeUnClosed(Points& points, double dDistance) {
    if (points.size() < 3) return;
    for (std::size_t a = 0; a + 1 < points.size(); ++a) {
        std::size_t nKept = points.size() - 1;
        for (std::size_t c = a + 2; c < points.size(); ++c) {
            if (!AnyBeyond(points, a, c, dDistance * dDistance)) continue;
            nKept = c - 1;
            break;
        }
        Erase(points, a + 1, nKept);
    }
}

// Paths with long gentle stretches, doubled points, tiny steps, corners and turns about the seam.
LoopPtr RandomPath(Lattice& random) {
    Places places;
    double x = random.Real(-5.0, 5.0);
    double y = random.Real(-5.0, 5.0);
    double dHeading = random.Below(3) == 0 ? 3.14159 : random.Real(-3.2, 3.2);
    double const dNoise = random.Below(2) == 0 ? 0.0 : random.Real(0.0, 0.02);
    double const dCurve = random.Below(2) == 0 ? 0.0 : random.Real(-0.02, 0.02);
    for (std::uint32_t n = random.Below(60); n > 0; --n) {
        places.emplace_back(x + random.Real(-dNoise, dNoise), y + random.Real(-dNoise, dNoise));
        std::uint32_t const nKind = random.Below(24);
        double const dStep = nKind == 0 ? 0.0 : nKind < 3 ? random.Real(0.0, 0.002) : random.Real(0.005, 0.4);
        if (nKind == 4) dHeading += random.Real(-3.0, 3.0);
        dHeading += dCurve;
        x += dStep * std::cos(dHeading);
        y += dStep * std::sin(dHeading);
    }
    return random.Below(2) == 0 ? OpenPath(places) : ClosedLoop(places);
}

LoopPtr LatticePath(Lattice& random) {
    Places places;
    for (std::uint32_t n = random.Below(14); n > 0; --n) places.emplace_back(random.Step(4), random.Step(3));
    return random.Below(2) == 0 ? OpenPath(places) : ClosedLoop(places);
}

double RandomTolerance(Lattice& random) {
    switch (random.Below(5)) {
        case 0:
            return 0.0;
        case 1:
            return 0.01;
        case 2:
            return random.Real(0.0, 0.05);
        case 3:
            return 1.0;
        default:
            return random.Real(0.0, 3.0);
    }
}

}  // namespace

TEST(Optimize, LeavesTheCornersOfASquareAndMovesItsHeadToOne) {
    LoopPtr const pLoop = ClosedLoop({{1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}, {0, 0}});
    ASSERT_EQ(pLoop->m_pPointList->GetCount(), 9);
    pLoop->Optimize();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{2, 0}, {2, 2}, {0, 2}, {0, 0}, {2, 0}}));
    EXPECT_EQ(Exact(pLoop->m_pPointList->GetHead()), Exact(pLoop->m_pPointList->GetTail()));
    ExpectSound(*pLoop->m_pPointList);
}

TEST(Optimize, RemovesDoubledPoints) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {0.00005, 0}, {3, 0}, {3, 0.00009}, {3, 4}});
    pLoop->Optimize();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {3, 0.00009}, {3, 4}})) << "a tiny step goes straight on";
}

TEST(Optimize, MayRemoveATailThatDoublesItsAnchor) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {3, 0}, {3, 4}, {3, 4.00005}});
    pLoop->Optimize();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {3, 0}, {3, 4.00005}})) << "a tiny step has no direction";
    LoopPtr const pPoint = OpenPath({{0, 0}, {0.00005, 0}, {0.00005, 0.00005}});
    pPoint->Optimize();
    EXPECT_EQ(PlacesOf(*pPoint), (Places{{0, 0}}));
}

TEST(Optimize, AClosedTriangleStaysAndATwoCorneredOneIsEmptied) {
    LoopPtr const pTriangle = ClosedLoop({{0, 0}, {5, 0}, {0, 5}});
    pTriangle->Optimize();
    EXPECT_EQ(PlacesOf(*pTriangle), (Places{{0, 0}, {5, 0}, {0, 5}, {0, 0}}));
    LoopPtr const pFlat = ClosedLoop({{0, 0}, {5, 0}});
    pFlat->Optimize();
    ASSERT_NE(pFlat->m_pPointList, nullptr);
    EXPECT_EQ(pFlat->m_pPointList->GetCount(), 0);
    EXPECT_EQ(pFlat->m_Box.m_ptMax.x, 5.0) << "the box stays stale";
}

TEST(Optimize, LeavesTheEndsOfAnOpenPath) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}, {2, 0}, {3, 0}});
    pLoop->Optimize();
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {3, 0}}));
}

TEST(Optimize, DoesNotThinAcrossTheSeamOfDirections) {
    // Westward, a hair up and a hair down: 180 degrees less and more.
    LoopPtr const pLoop = OpenPath({{0, 0}, {-1, 0.0001}, {-2, 0}, {-3, 0.0001}});
    pLoop->Optimize();
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 4);
    LoopPtr const pEast = OpenPath({{0, 0}, {1, 0.0001}, {2, 0}, {3, 0.0001}});
    pEast->Optimize();
    EXPECT_EQ(pEast->m_pPointList->GetCount(), 2);
}

namespace {

// A height above (1, 0) whose direction from (0, 0) is 10 degrees to the bit, and the next one above.
std::pair<double, double> TenDegreesAndAbove() {
    auto const degrees = [](double y) { return CalAngleDeg(CPoint2D(0, 0), CPoint2D(1, y)); };
    double y = std::tan(10.0 * 3.14159265358979323846 / 180.0);
    while (degrees(y) >= 10.0) y = std::nextafter(y, 0.0);
    while (degrees(y) < 10.0) y = std::nextafter(y, 1.0);
    double dAbove = y;
    while (degrees(dAbove) <= 10.0) dAbove = std::nextafter(dAbove, 1.0);
    return {y, dAbove};
}

}  // namespace

TEST(Optimize, ATurnOfTenDegreesIsThinnedAndTheNextOneIsNot) {
    auto const [dTen, dAbove] = TenDegreesAndAbove();
    if (CalAngleDeg(CPoint2D(0, 0), CPoint2D(1, dTen)) != 10.0) GTEST_SKIP() << "no point has that direction";
    LoopPtr const pTen = OpenPath({{-1, 0}, {0, 0}, {1, dTen}});
    pTen->m_dTolerance = 1.0;
    pTen->Optimize();
    EXPECT_EQ(PlacesOf(*pTen), (Places{{-1, 0}, {1, dTen}}));
    LoopPtr const pAbove = OpenPath({{-1, 0}, {0, 0}, {1, dAbove}});
    pAbove->m_dTolerance = 1.0;
    pAbove->Optimize();
    EXPECT_EQ(PlacesOf(*pAbove), (Places{{-1, 0}, {0, 0}, {1, dAbove}}));
    LoopPtr const pLine = OpenPath({{-1, 0}, {0, 0}, {1, dTen}});
    pLine->OptimizeLine(10.0);
    EXPECT_EQ(PlacesOf(*pLine), (Places{{-1, 0}, {1, dTen}}));
}

TEST(Optimize, AHeadWithATurnOfTenDegreesStaysAndOneWithLessGoes) {
    auto const [dTen, dAbove] = TenDegreesAndAbove();
    if (CalAngleDeg(CPoint2D(0, 0), CPoint2D(1, dTen)) != 10.0) GTEST_SKIP() << "no point has that direction";
    LoopPtr const pTen = ClosedLoop({{0, 0}, {1, dTen}, {0, 5}, {-1, 0}});
    pTen->m_dTolerance = 1.0;
    pTen->Optimize();
    EXPECT_EQ(PlacesOf(*pTen), (Places{{0, 0}, {1, dTen}, {0, 5}, {-1, 0}, {0, 0}}));
    LoopPtr const pLess = ClosedLoop({{0, 0}, {1, 0.17}, {0, 5}, {-1, 0}});
    pLess->m_dTolerance = 1.0;
    pLess->Optimize();
    EXPECT_EQ(PlacesOf(*pLess), (Places{{1, 0.17}, {0, 5}, {-1, 0}, {1, 0.17}}));
    EXPECT_LT(dTen, dAbove);
}

// A head at half a millimetre from the line of its neighbours, which are 128 apart.
TEST(Optimize, AHeadAsFarOffAsTheToleranceStays) {
    Places const places = {{0, 0.5}, {64, 0}, {0, 90}, {-64, 0}};
    LoopPtr const pJust = ClosedLoop(places);
    pJust->m_dTolerance = 0.5;
    pJust->Optimize();
    EXPECT_EQ(PlacesOf(*pJust).size(), 5u);
    LoopPtr const pMore = ClosedLoop(places);
    pMore->m_dTolerance = std::nextafter(0.5, 1.0);
    pMore->Optimize();
    EXPECT_EQ(PlacesOf(*pMore), (Places{{64, 0}, {0, 90}, {-64, 0}, {64, 0}}));
}

TEST(Optimize, AMiddlePointAsFarOffAsTheToleranceGoes) {
    Places const places = {{-64, 0}, {0, 0.5}, {64, 0}};
    LoopPtr const pJust = OpenPath(places);
    pJust->m_dTolerance = 0.5;
    pJust->Optimize();
    EXPECT_EQ(PlacesOf(*pJust), (Places{{-64, 0}, {64, 0}}));
    LoopPtr const pLess = OpenPath(places);
    pLess->m_dTolerance = std::nextafter(0.5, 0.0);
    pLess->Optimize();
    EXPECT_EQ(PlacesOf(*pLess).size(), 3u);
}

TEST(Optimize, FewerThanThreePointsOrNoListAreLeftAlone) {
    LoopPtr const pLoop = ClosedLoop({{0, 0}});
    pLoop->Optimize();
    pLoop->OptimizeLine(5.0);
    pLoop->Optimize_UnClosed(5.0);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 2);
    tagLoopTreeNode none;
    none.Optimize();
    none.OptimizeLine(1.0);
    none.Optimize_UnClosed(1.0);
    EXPECT_EQ(none.m_pPointList, nullptr);
}

TEST(Optimize, AgreesWithItsStepsOnRandomPaths) {
    Lattice random(21);
    for (int i = 0; i < 6000; ++i) {
        LoopPtr const pLoop = i % 3 == 0 ? LatticePath(random) : RandomPath(random);
        pLoop->m_dTolerance = RandomTolerance(random);
        Points points = PointsOf(*pLoop);
        LiteralOptimize(points, pLoop->m_dTolerance, pLoop->m_bClosed != 0);
        pLoop->Optimize();
        ASSERT_EQ(ExactPoints(*pLoop), Exactly(points)) << i;
        ExpectSound(*pLoop->m_pPointList);
    }
}

TEST(Optimize, KeepsThePointsOfItsStepsOnStretchesAtTheTolerance) {
    // Waves whose height is the tolerance or a few units in the last place beside it.
    for (double const dTolerance : {0.01, 0.125, 1e-5}) {
        for (int nUlps = -3; nUlps <= 3; ++nUlps) {
            double dHeight = dTolerance;
            for (int k = 0; k < std::abs(nUlps); ++k)
                dHeight = std::nextafter(dHeight, nUlps < 0 ? 0.0 : 1.0);
            Places places;
            for (int k = 0; k < 200; ++k)
                places.emplace_back(k * 0.7, k % 4 == 1 ? dHeight : k % 4 == 3 ? -dHeight : 0.0);
            LoopPtr const pLoop = OpenPath(places);
            pLoop->m_dTolerance = dTolerance;
            Points points = PointsOf(*pLoop);
            LiteralOptimize(points, dTolerance, false);
            pLoop->Optimize();
            EXPECT_EQ(ExactPoints(*pLoop), Exactly(points)) << dTolerance << " " << nUlps;
        }
    }
}

TEST(Optimize, AMillionPointsOnALineAreNotLookedAtForEachOther) {
    Places places;
    for (int i = 0; i < 1000000; ++i) places.emplace_back(i * 0.01, 0.003 * std::sin(i * 0.001));
    LoopPtr const pLoop = OpenPath(places);
    auto const start = std::chrono::steady_clock::now();
    pLoop->Optimize();
    LoopPtr const pOther = OpenPath(places);
    pOther->Optimize_UnClosed(0.01);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << "hours, one by one";
    EXPECT_EQ(PlacesOf(*pLoop), (Places{places.front(), places.back()}));
    EXPECT_EQ(PlacesOf(*pOther), (Places{places.front(), places.back()}));
}

TEST(OptimizeLine, AtZeroRemovesOnlyWhereTheNextDirectionIsTheSameToTheBit) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}, {2, 0}, {3, 1e-9}, {4, 0}});
    pLoop->OptimizeLine(0.0);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {2, 0}, {3, 1e-9}, {4, 0}}));
}

TEST(OptimizeLine, MeasuresTurnsFromTheStartOfTheStretch) {
    // Every step turns by 2 degrees: within 5 degrees there are two more steps.
    Places places;
    double x = 0.0;
    double y = 0.0;
    for (int i = 0; i < 7; ++i) {
        places.emplace_back(x, y);
        x += std::cos(i * 2.0 * 3.141592653589793 / 180.0);
        y += std::sin(i * 2.0 * 3.141592653589793 / 180.0);
    }
    LoopPtr const pLoop = OpenPath(places);
    pLoop->OptimizeLine(5.0);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{places[0], places[3], places[6]}));
}

TEST(OptimizeLine, LeavesTheSeamOfAClosedLoop) {
    LoopPtr const pLoop = ClosedLoop({{1, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}});
    pLoop->OptimizeLine(5.0);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 6);
}

TEST(OptimizeLine, AgreesWithItsStepsOnRandomPaths) {
    Lattice random(22);
    for (int i = 0; i < 4000; ++i) {
        LoopPtr const pLoop = i % 2 == 0 ? LatticePath(random) : RandomPath(random);
        double const dAngle = random.Below(4) == 0 ? 200.0 : random.Real(-1.0, 30.0);
        Points points = PointsOf(*pLoop);
        LiteralOptimizeLine(points, dAngle);
        pLoop->OptimizeLine(dAngle);
        ASSERT_EQ(ExactPoints(*pLoop), Exactly(points)) << i;
    }
}

TEST(OptimizeUnClosed, OnAStraightRunLeavesTheTwoEnds) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}, {5, 0.005}, {3, 0}, {9, 0}});
    pLoop->Optimize_UnClosed(0.01);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {9, 0}}));
}

TEST(OptimizeUnClosed, AgreesWithItsStepsOnRandomPaths) {
    Lattice random(23);
    for (int i = 0; i < 6000; ++i) {
        LoopPtr const pLoop = i % 2 == 0 ? LatticePath(random) : RandomPath(random);
        double const dDistance = RandomTolerance(random);
        Points points = PointsOf(*pLoop);
        LiteralOptimizeUnClosed(points, dDistance);
        pLoop->Optimize_UnClosed(dDistance);
        ASSERT_EQ(ExactPoints(*pLoop), Exactly(points)) << i;
    }
}

TEST(OptimizeUnClosed, TakesNumbersOfAnySize) {
    for (double const dScale : {1e-200, 1e-6, 1e8, 1e100, 1e200}) {
        Lattice random(24);
        for (int i = 0; i < 200; ++i) {
            Places places;
            for (std::uint32_t n = random.Below(9); n > 0; --n) {
                places.emplace_back(random.Step(3) * dScale, random.Step(3) * dScale);
            }
            LoopPtr const pLoop = OpenPath(places);
            double const dDistance = random.Real(0.0, 2.0) * dScale;
            Points points = PointsOf(*pLoop);
            LiteralOptimizeUnClosed(points, dDistance);
            pLoop->Optimize_UnClosed(dDistance);
            ASSERT_EQ(ExactPoints(*pLoop), Exactly(points)) << dScale << " " << i;
        }
    }
}
