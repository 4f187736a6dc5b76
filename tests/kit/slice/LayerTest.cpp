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

TEST(Layer, StrokesOfSupportsAreThoseOfChainsWithAnIdOfAThousandOrMore) {
    Layer layer;
    layer.AddChain(std::vector<Stroke>{{{0, 0}, {1, 0}}}, 999);
    layer.AddChain(std::vector<Stroke>{{{0, 1}, {1, 1}}, {{0, 2}, {1, 2}}}, 1000);
    layer.AddChain(std::vector<Stroke>{{{0, 3}, {1, 3}}}, -1);
    layer.AddChain(std::vector<Stroke>{{{0, 4}, {1, 4}}, {{0, 5}, {1, 5}}, {{0, 6}, {1, 6}}}, 1001);
    layer.AddChain(std::vector<Stroke>{{{0, 7}, {1, 7}}}, 0);
    EXPECT_EQ(layer.SupportStrokeCount(), 5u);
    EXPECT_EQ(Layer().SupportStrokeCount(), 0u);
}

// An open path that comes back to its start has both ends; of a contour the head stands there once.
TEST(ClassicLayer, AnOpenPathThatReturnsKeepsItsEnd) {
    Layer layer;
    Contour path;
    path.closed = false;
    layer.AddContour(std::vector<Point2>{{0, 0}, {5, 0}, {5, 5}, {0, 0}}, path);
    layer.AddContour(std::vector<Point2>{{10, 0}, {15, 0}, {15, 5}}, {});
    std::unique_ptr<CLayer> const classic = ToClassic(layer);
    EXPECT_EQ(FromClassic(*classic), layer);
}

// Whatever the nodes say of their levels; one that is in nothing has its own, if it is closed.
TEST(ClassicLayer, TheLevelOfAContourIsOneMoreThanThatOfItsParent) {
    auto const loop = [](int level, char closed, double x) {
        auto* const node = new tagLoopTreeNode(0);
        node->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
        for (CPoint2D point : {CPoint2D(x, 0), CPoint2D(x + 1, 0), CPoint2D(x, 1)}) {
            node->m_pPointList->AddTail(point);
        }
        node->m_bClosed = closed;
        node->m_nLevel = level;
        return node;
    };
    CLayer classic;
    tagLoopTreeNode* const first = loop(0, 1, 0);
    tagLoopTreeNode* const inner = loop(7, 1, 10);
    tagLoopTreeNode* const innermost = loop(9, 1, 20);
    first->m_ChildList.AddTail(inner);
    inner->m_ChildList.AddTail(innermost);
    classic.AddRawLoop(first);
    classic.AddRawLoop(loop(3, 1, 30));
    classic.AddRawLoop(loop(5, 0, 40));
    Layer const layer = FromClassic(classic);
    ASSERT_EQ(layer.ContourCount(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
        Contour const& contour = layer.contours[i];
        auto const x = static_cast<int>(layer.points[layer.offsets[i]].x);
        EXPECT_EQ(contour.closed, x != 40);
        EXPECT_EQ(contour.level, x == 0 ? 0 : x == 10 ? 1 : x == 20 ? 2 : x == 30 ? 3 : 0) << x;
        if (x != 10 && x != 20) {
            EXPECT_EQ(contour.parent, -1);
        } else {
            ASSERT_GE(contour.parent, 0);
            auto const parent = static_cast<std::size_t>(contour.parent);
            EXPECT_EQ(static_cast<int>(layer.points[layer.offsets[parent]].x), x - 10);
        }
    }
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
