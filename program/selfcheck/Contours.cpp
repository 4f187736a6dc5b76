// Loops and layers, hatches, intervals, and the way of the print head.

#include <cmath>
#include <memory>

#include "selfcheck/Contours.h"
#include "selfcheck/Record.h"

namespace selfcheck {

std::unique_ptr<tagLoopTreeNode> StarLoop(Chance& chance, CPoint2D const& centre, double size, int corners,
                                          bool closed) {
    // Around the centre in the four quadrants, by slopes and not by angles.
    auto loop = std::make_unique<tagLoopTreeNode>(0);
    loop->m_bClosed = closed ? 1 : 0;
    loop->m_pPointList = new XR_CList<CPoint2D, CPoint2D&>(10);
    for (int i = 0; i < corners; ++i) {
        double const t = 4.0 * i / corners;
        double const u = t - std::floor(t);
        double const far = size * (1.0 + chance() / 1024.0);
        CPoint2D direction(1.0 - u, u);
        for (int quarter = static_cast<int>(t); quarter > 0; --quarter)
            direction = CPoint2D(-direction.y, direction.x);
        CPoint2D point(centre.x + direction.x * far, centre.y + direction.y * far);
        loop->m_pPointList->AddTail(point);
    }
    if (closed) {
        CPoint2D first = loop->m_pPointList->GetHead();
        loop->m_pPointList->AddTail(first);
    }
    return loop;
}

void FillLayer(CLayer& layer, Chance& chance) {
    layer.m_dZ = 2.25;
    for (int i = 0; i < 40; ++i) {
        CPoint2D const centre = chance.Point2();
        for (double size = 16.0; size > 2.0; size -= 4.5)
            layer.AddRawLoop(StarLoop(chance, centre, size, 4 * (3 + i % 5), i % 9 != 0).release());
    }
    for (int i = 0; i < 60; ++i) {
        auto* const hatch = new CHatch;
        hatch->m_nID = i % 7 == 0 ? 1003 : 3;
        CPoint2D from = chance.Point2();
        for (int k = 0; k < 1 + i % 4; ++k) {
            CPoint2D const to = from + chance.Point2() * 0.1;
            CEdge2D edge(from, to);
            hatch->m_EdgeList.AddTail(edge);
            from = to;
        }
        layer.m_HatchList.AddTail(hatch);
    }
}

void AddLoop(Record& record, tagLoopTreeNode& loop) {
    record.AddAll(loop.m_nLevel, static_cast<int>(loop.m_nDirection), loop.m_bClosed, loop.m_nFlag,
                  loop.m_ChildList.GetCount());
    if (loop.m_pPointList == nullptr) return;
    for (XR__POSITION* p = loop.m_pPointList->GetHeadPosition(); p != nullptr;)
        record.Add(loop.m_pPointList->GetNext(p));
}

void AddHatch(Record& record, CHatch& hatch) {
    record.AddAll(hatch.m_nID, hatch.m_nFlag);
    for (XR__POSITION* p = hatch.m_EdgeList.GetHeadPosition(); p != nullptr;) {
        CEdge2D const& edge = hatch.m_EdgeList.GetNext(p);
        record.AddAll(edge.m_ptStart, edge.m_ptEnd);
    }
}

void AddLayer(Record& record, CLayer& layer) {
    CBoundBox2D const box = layer.GetBoundBox();
    double length = 0.0;
    record.AddAll(layer.m_dZ, box.m_ptMin, box.m_ptMax, layer.GetAreaLength(length));
    record.AddAll(length, layer.m_LoopList.GetCount(), layer.m_HatchList.GetCount());
    for (XR__POSITION* p = layer.m_LoopList.GetHeadPosition(); p != nullptr;)
        AddLoop(record, *static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetNext(p)));
    for (XR__POSITION* p = layer.m_HatchList.GetHeadPosition(); p != nullptr;)
        AddHatch(record, *static_cast<CHatch*>(layer.m_HatchList.GetNext(p)));
}

namespace {

// What an operation that goes by directions has left of a loop.
double SizeOf(tagLoopTreeNode& loop) { return loop.GetLength() + 1000.0 * loop.m_pPointList->GetCount(); }

void AddLoops(Record& record, Chance& chance) {
    double thinned = 0.0;
    double straightened = 0.0;
    for (int i = 0; i < 50; ++i) {
        auto const loop = StarLoop(chance, chance.Point2(), 20.0, 24 + i, i % 3 != 0);
        loop->GetBoundBox();
        CPoint2D inside = chance.Point2();
        record.AddAll(loop->GetArea(), loop->GetLength(), static_cast<int>(loop->GetLoopDirection()),
                      static_cast<int>(JudgeLoopDirection(loop->m_pPointList)), IsInLoop(loop.get(), inside));
        loop->ReverseLoop();
        loop->AdjustHeadToNearPoint(inside);
        XR__POSITION* const fifth = loop->m_pPointList->FindIndex(5);
        CPoint2D const corner = loop->m_pPointList->GetAt(fifth);
        record.Add(loop->AdjutstHeadToPoint(corner));
        record.Add(loop->AdjutstHeadToPointAtPos(loop->m_pPointList->FindIndex(3)));
        AddLoop(record, *loop);
        tagLoopTreeNode copy(0);
        copy.CopyOtherLoop(loop.get());
        copy.LevelAdd();
        copy.InsertLoopAtHead(loop.get(), POINT_INSERTED);
        copy.InsertLoopAtTail(loop.get(), POINT_JOINT);
        AddLoop(record, copy);
        copy.Optimize_UnClosed(0.5);
        AddLoop(record, copy);
        for (OPERATEDIRECT const end : {OPERATE_AT_HEAD, OPERATE_AT_TAIL}) {
            std::unique_ptr<tagLoopTreeNode> const cut(copy.CutLoop(3.0 + i, 2.0, end, 1));
            if (cut != nullptr) AddLoop(record, *cut);
            AddLoop(record, copy);
        }
        copy.m_dTolerance = 0.5;
        copy.Optimize();
        thinned += SizeOf(copy);
        loop->OptimizeLine(30.0);
        straightened += SizeOf(*loop);
    }
    record.AddApart("Optimize", thinned);
    record.AddApart("OptimizeLine", straightened);
}

void AddLayerEdits(Record& record, CLayer& layer, Chance& chance) {
    layer.MakeTopology(1);
    AddLayer(record, layer);
    for (int i = 0; i < 200; ++i) {
        CPoint2D point = chance.Point2();
        record.Add(layer.IsInCounter(point));
    }
    layer.SortLoopListByBoxCenterX();
    record.Add(static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetHead())->m_pPointList->GetHead());
    layer.SortLoopListByBoxCenterY();
    record.Add(static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetHead())->m_pPointList->GetHead());
    layer.BuildLoopList();
    std::unique_ptr<CLayer> const flat(layer.CopyLoop());
    AddLayer(record, *flat);
    std::unique_ptr<CLayer> const hatches(layer.ConvertLoopToHatch(7));
    AddLayer(record, *hatches);
    CLayer moved;
    moved.CopyLayer(layer, 3.0, -1.5, 0.25);
    moved.AddOtherLayer(layer, 200.0, 0.5, 7);
    double turn[3][3] = {{0.7, 0.1, 0.0}, {0.2, -0.9, 0.0}, {5.0, 3.0, 1.0}};
    moved.Transform(turn, 0);
    AddLayer(record, moved);
    moved.LimitInBox(CBoundBox2D(CPoint2D(-60.0, -55.0), CPoint2D(90.0, 70.0)), 1, 1);
    CPoint2D low(-100.0, -100.0);
    CPoint2D high(100.0, 100.0);
    moved.AddBorder(low, high);
    AddLayer(record, moved);
}

void AddOrders(Record& record, CLayer& layer) {
    for (int mode = 0; mode <= 1; ++mode) {
        CLayer ordered(layer);
        CPoint2D head(1.0, 2.0);
        ordered.OptimizeHatchs(head, mode);
        record.Add(head);
        ordered.OptimizeLoops(head, mode);
        record.Add(head);
        AddLayer(record, ordered);
    }
    CPoint2D near(10.0, -5.0);
    record.Add(FindNearLoopInList(&layer.m_LoopList, near)->m_pPointList->GetHead());
    record.Add(FindNearHatchAndAdjust(&layer.m_HatchList, near)->m_EdgeList.GetHead().m_ptStart);
    CLayer out;
    AddLoopToOrderedLayer(static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetHead()), &out, near, 0.4);
    record.Add(near);
    layer.BuildLoopList();
    layer.ClearLoopsUsedFlag();
    // Contours and fill become one where their directions agree.
    CLayer printed;
    CPoint2D head;
    for (tagLoopTreeNode* loop = nullptr; (loop = layer.FindNearUnusedOutLoop(head)) != nullptr;) {
        loop->m_nFlag |= LOOP_USED_FLAG;
        layer.OptimizeLoopAndChildLoopHatch(loop, &head, &printed, 4.0, 0.3);
    }
    double length = 0.0;
    printed.GetBoundBox();
    double const area = printed.GetAreaLength(length);
    record.AddApart("OptimizeLoopAndChildLoopHatch", area + length + 1000.0 * printed.m_LoopList.GetCount());
}

void AddHatches(Record& record, Chance& chance) {
    for (int i = 0; i < 50; ++i) {
        CHatch hatch;
        for (int k = 0; k < 5; ++k) {
            CEdge2D edge{chance.Point2(), chance.Point2()};
            CBoundBox2D box(CPoint2D(-50.0, -50.0), CPoint2D(60.0, 40.0));
            CEdge2D clipped;
            record.Add(ClipEdgeToBox(edge, box, clipped));
            record.AddAll(clipped.m_ptStart, clipped.m_ptEnd);
            hatch.m_EdgeList.AddTail(edge);
        }
        CHatch other;
        other.Copy(&hatch);
        other.Reverse();
        other.AddPointsOnLongEdge(7.0);
        AddHatch(record, other);
        std::unique_ptr<tagLoopTreeNode> const loop(ConvertHatchToLoop(&other, 1.5, LOOP_KIND_HATCH));
        AddLoop(record, *loop);
    }
}

using PointList = XR_CList<CPoint2D, CPoint2D&>;

void FillIntervals(PointList& list, Chance& chance, double open, double close) {
    double at = chance();
    for (int i = 0; i < 20; ++i) {
        for (double const code : {open, close}) {
            CPoint2D end(at += chance.OnLattice() + 0.5, code);
            list.AddTail(end);
        }
    }
}

void AddIntervals(Record& record, Chance& chance) {
    auto const add = [&record](PointList& list) {
        for (XR__POSITION* p = list.GetHeadPosition(); p != nullptr;) record.Add(list.GetNext(p));
    };
    for (int i = 0; i < 7; ++i) {
        PointList list(10);
        PointList other(10);
        FillIntervals(list, chance, 0.0, 1.0);
        FillIntervals(other, chance, i == 3 ? 2.0 : 0.0, i == 3 ? 3.0 : 1.0);
        if (i == 6) {
            InsertToPLWithFlag(&list, &other, 2, 3);
        } else if (i < 4) {
            InsertToPL(&list, &other);
        }
        if (i == 0) UnionPL(&list);
        if (i == 1) IntersectPL(&list);
        if (i == 2) JoinPL(&list, 2);
        if (i == 3) SubPL(&list);
        if (i == 4) LinkPL(&list, 5.0);
        if (i == 5) RemoveShortPL(&list, 5.0);
        add(list);
    }
}

}  // namespace

void CheckContours(Record& record) {
    record.BeginRoom("contours");
    Chance chance(5);
    AddLoops(record, chance);
    AddHatches(record, chance);
    AddIntervals(record, chance);
    CLayer layer;
    FillLayer(layer, chance);
    AddLayerEdits(record, layer, chance);
    AddOrders(record, layer);
}

}  // namespace selfcheck
