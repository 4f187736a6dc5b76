#include "SliceLayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "Slices.h"
#include "contours/Paths.h"

namespace {

Contour Closed(Places const& places) {
    Contour contour;
    contour.bClosed = true;
    for (auto const& [x, y] : places) contour.points.emplace_back(x, y);
    return contour;
}

Contour SquareContour(double x, double y, double dSide) {
    return Closed({{x, y}, {x + dSide, y}, {x + dSide, y + dSide}, {x, y + dSide}});
}

std::vector<tagLoopTreeNode*> AllLoops(CLayer const& layer) { return LoopsOf(layer.m_LoopList); }

TEST(SliceLayer, LoopsCloseByACopyOfTheirFirstPointAndCarryHeightAndRegion) {
    CLayer layer;
    layer.m_dZ = 4.5;
    AddContours(layer, {SquareContour(0.0, 0.0, 2.0)}, 7);
    std::vector<tagLoopTreeNode*> const loops = LoopsOf(layer.m_RawLoopList);
    ASSERT_EQ(1u, loops.size());
    EXPECT_EQ((Places{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}), PlacesOf(*loops[0]));
    EXPECT_NE(0, loops[0]->m_bClosed);
    EXPECT_EQ(4.5, loops[0]->m_dZ);
    EXPECT_EQ(7, loops[0]->m_nUser1);
}

TEST(SliceLayer, OpenContoursBecomeOpenPaths) {
    CLayer layer;
    Contour path;
    path.points = {CPoint2D(0, 0), CPoint2D(5, 0), CPoint2D(5, 5)};
    AddContours(layer, {path}, 0);
    NestAndSimplify(layer, 0.01);
    ASSERT_EQ(1u, AllLoops(layer).size());
    EXPECT_EQ(0, AllLoops(layer)[0]->m_bClosed);
    EXPECT_EQ((Places{{0, 0}, {5, 0}, {5, 5}}), PlacesOf(*AllLoops(layer)[0]));
}

TEST(SliceLayer, HolesAreChildrenAndRunClockwise) {
    CLayer layer;
    AddContours(layer, {SquareContour(3.0, 3.0, 4.0), SquareContour(0.0, 0.0, 10.0)}, 0);
    NestAndSimplify(layer, 0.01);
    std::vector<tagLoopTreeNode*> const loops = AllLoops(layer);
    ASSERT_EQ(2u, loops.size());
    EXPECT_EQ(0, loops[0]->m_nLevel);
    EXPECT_NEAR(200.0, loops[0]->GetArea(), 1e-9);
    EXPECT_EQ(1, loops[1]->m_nLevel);
    EXPECT_NEAR(-32.0, loops[1]->GetArea(), 1e-9);
    EXPECT_TRUE(SameBox(CBoundBox2D(CPoint2D(0, 0), CPoint2D(10, 10)), layer.m_Box));
}

TEST(SliceLayer, ThinningOutStaysWithinTheTolerance) {
    Contour circle;
    circle.bClosed = true;
    for (int i = 0; i < 2000; ++i) {
        double const dAngle = 2.0 * std::numbers::pi * i / 2000.0;
        circle.points.emplace_back(50.0 * std::cos(dAngle), 50.0 * std::sin(dAngle));
    }
    for (double dTolerance : {0.001, 0.01, 0.1}) {
        CLayer layer;
        AddContours(layer, {circle}, 0);
        NestAndSimplify(layer, dTolerance);
        tagLoopTreeNode& loop = *AllLoops(layer)[0];
        EXPECT_LT(loop.m_pPointList->GetCount(), 700);
        EXPECT_GT(loop.m_pPointList->GetCount(), 20);
        double const dArea = std::numbers::pi * 50.0 * 50.0;
        EXPECT_NEAR(dArea, loop.GetArea() / 2.0, dTolerance * 2.0 * std::numbers::pi * 50.0);
        EXPECT_EQ(Exact(loop.m_pPointList->GetHead()), Exact(loop.m_pPointList->GetTail()));
    }
}

TEST(SliceLayer, LoopsTooSmallToLeaveAPathGoAndWhatIsInThemStays) {
    CLayer layer;
    // Doubled points leave the first loop with two corners; it holds nothing. The last one is empty from the
    // start, so that it nests nowhere.
    AddContours(layer,
                {Closed({{1.0, 1.0}, {1.00005, 1.0}, {1.00005, 1.00005}}), SquareContour(0.0, 0.0, 10.0),
                 SquareContour(5.0, 5.0, 2.0)},
                0);
    NestAndSimplify(layer, 0.01);
    std::vector<tagLoopTreeNode*> const loops = AllLoops(layer);
    ASSERT_EQ(2u, loops.size());
    EXPECT_NEAR(200.0, loops[0]->GetArea(), 1e-9);
    EXPECT_EQ(0, loops[0]->m_nLevel);
    EXPECT_NEAR(-8.0, loops[1]->GetArea(), 1e-9);
    EXPECT_EQ(1, loops[1]->m_nLevel);
    EXPECT_EQ(1, LoopsOf(layer.m_RawLoopList)[0]->m_ChildList.GetCount());
}

TEST(SliceLayer, LayersOfASolidHaveTheAreaOfItsCuts) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    Slicer slicer(model);
    double dSum = 0.0;
    for (int i = 0; i < 70; ++i) {
        CLayer layer;
        layer.m_dZ = i + 0.5;
        std::vector<Contour> const contours = slicer.Cut(layer.m_dZ);
        AddContours(layer, contours, 0);
        NestAndSimplify(layer, 0.01);
        double dLength = 0.0;
        double const dArea = layer.GetAreaLength(dLength) / 2.0;
        EXPECT_NEAR(NetArea(contours), dArea, 0.01 * dLength + 1e-9);
        dSum += dArea;
    }
    EXPECT_NEAR(model.Volume(), dSum, 0.005 * model.Volume());
}

}  // namespace
