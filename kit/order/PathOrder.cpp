#include "varnet/PathOrder.h"

#include <cmath>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "slice/ClassicLayer.h"
#include "varnet/Error.h"

namespace varnet {

namespace {

using PointerList = XR_CList<void*, void*>;

template <class Element, class Visit>
void ForEach(PointerList const& list, Visit const& visit) {
    for (XR__POSITION* at = list.GetHeadPosition(); at != nullptr;) {
        visit(*static_cast<Element*>(list.GetNext(at)));
    }
}

int ModeOf(NextPath next) { return static_cast<int>(next); }

// Loops that the pass does not reach come last, as they were.
void OrderLoops(CLayer& layer, CPoint2D& head, int mode) {
    layer.BuildLoopList();
    std::vector<tagLoopTreeNode*> all;
    ForEach<tagLoopTreeNode>(layer.m_LoopList, [&all](tagLoopTreeNode& loop) { all.push_back(&loop); });
    layer.OptimizeLoops(head, mode);
    std::set<tagLoopTreeNode*> ordered;
    ForEach<tagLoopTreeNode>(layer.m_RawLoopList, [&](tagLoopTreeNode& loop) { ordered.insert(&loop); });
    for (tagLoopTreeNode* const loop : all) {
        if (ordered.count(loop) != 0) continue;
        loop->m_ChildList.RemoveAll();
        layer.AddRawLoop(loop);
    }
}

bool IsInReach(CHatch const& hatch) {
    constexpr double kReach = 1e14;
    for (auto const* edge = hatch.m_EdgeList.m_pNodeHead; edge != nullptr; edge = edge->pNext) {
        CPoint2D const& start = edge->data.m_ptStart;
        if (!(std::fabs(start.x) < kReach && std::fabs(start.y) < kReach)) return false;
    }
    return true;
}

// Hatches that are too far away for any pass come last, as they were.
void OrderHatches(CLayer& layer, CPoint2D& head, int mode) {
    std::vector<CHatch*> near;
    std::vector<CHatch*> far;
    ForEach<CHatch>(layer.m_HatchList,
                    [&](CHatch& hatch) { (IsInReach(hatch) ? near : far).push_back(&hatch); });
    layer.m_HatchList.RemoveAll();
    for (CHatch* const hatch : near) layer.m_HatchList.AddTail(hatch);
    layer.OptimizeHatchs(head, mode);
    for (CHatch* const hatch : far) layer.m_HatchList.AddTail(hatch);
}

// One outer contour after the other, with its holes and fill. Fill that is in no contour, or takes no part,
// is ordered by itself.
void Splice(CLayer& layer, CPoint2D& head, OrderSettings const& settings) {
    CLayer out;
    layer.MakeTopology(1);
    while (tagLoopTreeNode* const loop = layer.FindNearUnusedOutLoop(head)) {
        layer.OptimizeLoopAndChildLoopHatch(loop, &head, &out, settings.width, settings.cut);
        loop->m_nFlag |= LOOP_USED_FLAG;
    }
    ForEach<CHatch>(layer.m_HatchList, [&out](CHatch& hatch) {
        if ((hatch.m_nFlag & HATCH_USED_FLAG) != 0) {
            delete &hatch;
        } else {
            out.m_HatchList.AddTail(&hatch);
        }
    });
    layer.m_HatchList.RemoveAll();
    layer.ReleaseAll();
    ForEach<tagLoopTreeNode>(out.m_RawLoopList, [&layer](tagLoopTreeNode& path) { layer.AddRawLoop(&path); });
    ForEach<CHatch>(out.m_HatchList, [&layer](CHatch& hatch) { layer.m_HatchList.AddTail(&hatch); });
    out.m_RawLoopList.RemoveAll();
    out.m_HatchList.RemoveAll();
    OrderHatches(layer, head, ModeOf(NextPath::kNearest));
}

void RequireLength(double value, char const* name) {
    if (value >= 0.0 && std::isfinite(value)) return;
    throw Error(ErrorKind::kArgument, std::string(name) + " must be 0 or more millimetres");
}

// Strokes that begin nearer than this to where the last one ended, on each axis, go on in it.
constexpr double kSamePlace = 1e-4;

bool IsSamePlace(Point2 const& a, Point2 const& b) {
    return std::fabs(a.x - b.x) < kSamePlace && std::fabs(a.y - b.y) < kSamePlace;
}

void MoveTo(Point2 const& point, Point2 const& head, Travel& travel) {
    travel.length += std::hypot(point.x - head.x, point.y - head.y);
    ++travel.starts;
}

}  // namespace

void AddTravel(Layer const& layer, Point2& head, Travel& travel) {
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        std::span<Point2 const> const points = layer.ContourPoints(i);
        if (points.empty()) continue;
        MoveTo(points.front(), head, travel);
        head = layer.contours[i].closed ? points.front() : points.back();
    }
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        bool first = true;
        for (Stroke const& stroke : layer.ChainStrokes(i)) {
            if (first || !IsSamePlace(stroke.from, head)) MoveTo(stroke.from, head, travel);
            head = stroke.to;
            first = false;
        }
    }
}

PathOrder::PathOrder(OrderSettings const& settings)
    : m_Settings(settings), m_Head(settings.start), m_HeadBefore(settings.start) {
    RequireLength(settings.width, "the width of a stroke");
    RequireLength(settings.cut, "the cut");
    if (!std::isfinite(settings.start.x) || !std::isfinite(settings.start.y)) {
        throw Error(ErrorKind::kArgument, "the head must start at a point");
    }
    bool const random = settings.contours == NextPath::kRandom || settings.fill == NextPath::kRandom;
    if (random && !settings.splice) std::srand(settings.seed);
}

void PathOrder::Order(Layer& layer) {
    AddTravel(layer, m_HeadBefore, m_Before);
    std::unique_ptr<CLayer> const classic = ToClassic(layer);
    CPoint2D head(m_Head.x, m_Head.y);
    if (m_Settings.splice) {
        Splice(*classic, head, m_Settings);
    } else {
        OrderLoops(*classic, head, ModeOf(m_Settings.contours));
        OrderHatches(*classic, head, ModeOf(m_Settings.fill));
    }
    Layer ordered = FromClassic(*classic);
    ordered.number = layer.number;
    ordered.z = layer.z;
    ordered.cutHeight = layer.cutHeight;
    layer = std::move(ordered);
    AddTravel(layer, m_Head, m_After);
}

}  // namespace varnet
