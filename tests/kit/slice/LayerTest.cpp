#include "varnet/Layer.h"

#include <gtest/gtest.h>

#include "kit/slice/FlatShapes.h"
#include "slice/ClassicLayer.h"

namespace varnet {
namespace {

Layer Sample() {
    Layer layer;
    layer.z = layer.cutHeight = 1.5;
    Contour outer;
    layer.AddContour(std::vector<Point2>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, outer);
    Contour hole;
    hole.parent = 0;
    hole.level = 1;
    hole.id = 7;
    layer.AddContour(std::vector<Point2>{{2, 2}, {2, 4}, {4, 4}, {4, 2}}, hole);
    Contour island;
    island.parent = 1;
    island.level = 2;
    layer.AddContour(std::vector<Point2>{{2.5, 2.5}, {3.5, 2.5}, {3, 3.5}}, island);
    Contour open;
    open.closed = false;
    layer.AddContour(std::vector<Point2>{{20, 0}, {23, 4}}, open);
    layer.AddChain(std::vector<Stroke>{{{1, 1}, {5, 1}}, {{5, 2}, {1, 2}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{-3, 1}, {-3, 2}}}, kSupportId);
    return layer;
}

TEST(Layer, TellsItsMeasures) {
    Layer const layer = Sample();
    EXPECT_DOUBLE_EQ(layer.Area(), 100.0 - 4.0 + 0.5);
    EXPECT_DOUBLE_EQ(layer.ContourLength(), 40.0 + 8.0 + 1.0 + 2.0 * std::hypot(0.5, 1.0) + 5.0);
    EXPECT_DOUBLE_EQ(layer.StrokeLength(), 9.0);
    EXPECT_EQ(layer.OpenPathCount(), 1u);
    EXPECT_EQ(layer.SupportStrokeCount(), 1u);
    EXPECT_EQ(layer.Box().min, (Point2{-3, 0}));
    EXPECT_EQ(layer.Box().max, (Point2{23, 10}));
    EXPECT_FALSE(layer.contours[0].IsHole());
    EXPECT_TRUE(layer.contours[1].IsHole());
    EXPECT_FALSE(layer.contours[2].IsHole());
    EXPECT_FALSE(layer.contours[3].IsHole());
}

TEST(Layer, ANewOneIsEmpty) {
    Layer const layer;
    EXPECT_EQ(layer.Area(), 0.0);
    EXPECT_EQ(layer.ContourLength(), 0.0);
    EXPECT_EQ(layer.OpenPathCount(), 0u);
    EXPECT_TRUE(layer.Box().IsEmpty());
    EXPECT_EQ(FromClassic(*ToClassic(layer)).ContourCount(), 0u);
}

TEST(ClassicLayer, GoesThereAndBack) {
    Layer const layer = Sample();
    std::unique_ptr<CLayer> const classic = ToClassic(layer);
    EXPECT_EQ(FromClassic(*classic), layer);
    EXPECT_EQ(classic->m_RawLoopList.GetCount(), 2);
    EXPECT_EQ(classic->m_LoopList.GetCount(), 4);
    EXPECT_EQ(classic->m_HatchList.GetCount(), 2);
    EXPECT_EQ(classic->m_dZ, 1.5);
    double length = 0.0;
    EXPECT_DOUBLE_EQ(classic->GetAreaLength(length) / 2.0, layer.Area());
    EXPECT_DOUBLE_EQ(length, layer.ContourLength());
    EXPECT_EQ(classic->m_Box.m_ptMin.x, -3.0);
    auto const& outer = *static_cast<tagLoopTreeNode const*>(classic->m_LoopList.GetHead());
    EXPECT_EQ(outer.m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(outer.m_pPointList->GetCount(), 5);
    auto const& hole = *static_cast<tagLoopTreeNode const*>(outer.m_ChildList.GetHead());
    EXPECT_EQ(hole.m_nDirection, LOOPDIRECT_CW);
    EXPECT_EQ(hole.m_nLevel, 1);
    EXPECT_EQ(hole.m_nID, 7);
    auto const& open = *static_cast<tagLoopTreeNode const*>(classic->m_LoopList.GetTail());
    EXPECT_EQ(open.m_nDirection, LOOPDIRECT_NONE);
    EXPECT_EQ(open.m_bClosed, 0);
}

TEST(ClassicLayer, NestsAsTheClassesDo) {
    FlatShape const gyroid = Flat(shapes::Gyroid(12));
    SliceSettings settings;
    settings.layer = 0.31;
    for (Layer const& layer : AllLayers({gyroid.Input()}, settings)) {
        std::unique_ptr<CLayer> const classic = ToClassic(layer);
        EXPECT_EQ(FromClassic(*classic).contours, layer.contours);
        // Taken apart and nested anew.
        CLayer flat;
        flat.AddOtherLayer(*classic, 0.0, 0.0, 7);
        flat.MakeTopology(1);
        double length = 0.0;
        double newLength = 0.0;
        EXPECT_NEAR(flat.GetAreaLength(newLength), classic->GetAreaLength(length), 1e-6);
        EXPECT_NEAR(newLength, length, 1e-6);
    }
}

TEST(ClassicLayer, HalfMadeLoopsAndHatchesAreLeftOut) {
    CLayer classic;
    classic.AddRawLoop(new tagLoopTreeNode(0));
    auto* const empty = new tagLoopTreeNode(0);
    empty->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
    empty->m_bClosed = 1;
    classic.AddRawLoop(empty);
    classic.m_HatchList.AddTail(new CHatch());
    Layer const layer = FromClassic(classic);
    EXPECT_EQ(layer.ContourCount(), 0u);
    EXPECT_EQ(layer.ChainCount(), 0u);
    // A parent that stands behind, or nowhere, is none.
    Layer odd = Sample();
    odd.contours[0].parent = 2;
    odd.contours[1].parent = 99;
    EXPECT_EQ(ToClassic(odd)->m_RawLoopList.GetCount(), 3);
    odd.contours[0].parent = 0;
    odd.contours[1].parent = 1;
    EXPECT_EQ(ToClassic(odd)->m_RawLoopList.GetCount(), 3) << "and no contour is its own";
}

TEST(ClassicLayer, AClosedLoopOfOnePointKeepsIt) {
    CLayer classic;
    auto* const loop = new tagLoopTreeNode(0);
    loop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
    CPoint2D point(3, 4);
    loop->m_pPointList->AddTail(point);
    loop->m_bClosed = 1;
    classic.AddRawLoop(loop);
    EXPECT_EQ(FromClassic(classic).points, (std::vector<Point2>{{3, 4}}));
    loop->m_pPointList->AddTail(point);
    EXPECT_EQ(FromClassic(classic).points, (std::vector<Point2>{{3, 4}}));
}

}  // namespace
}  // namespace varnet
