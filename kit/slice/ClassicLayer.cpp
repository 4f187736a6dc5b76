#include "slice/ClassicLayer.h"

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

namespace varnet {

namespace {

using ClassicPoints = XR_CList<CPoint2D, CPoint2D&>;

constexpr int kPointBlock = 10;

std::unique_ptr<tagLoopTreeNode> LoopOf(Layer const& layer, std::size_t number) {
    Contour const& contour = layer.contours[number];
    auto loop = std::make_unique<tagLoopTreeNode>(contour.level);
    loop->m_pPointList = new ClassicPoints(kPointBlock);
    loop->m_nID = contour.id;
    loop->m_bClosed = contour.closed ? 1 : 0;
    loop->m_dZ = layer.z;
    loop->m_nDirection = !contour.closed    ? LOOPDIRECT_NONE
                         : contour.IsHole() ? LOOPDIRECT_CW
                                            : LOOPDIRECT_CCW;
    std::span<Point2 const> const points = layer.ContourPoints(number);
    for (Point2 const& p : points) {
        CPoint2D point(p.x, p.y);
        loop->m_pPointList->AddTail(point);
    }
    if (contour.closed && !points.empty()) {
        CPoint2D head(points.front().x, points.front().y);
        loop->m_pPointList->AddTail(head);
    }
    return loop;
}

void AddHatch(Layer const& layer, std::size_t chain, CLayer& classic) {
    auto hatch = std::make_unique<CHatch>();
    hatch->m_nID = layer.chainIds[chain];
    for (Stroke const& stroke : layer.ChainStrokes(chain)) {
        CEdge2D edge(CPoint2D(stroke.from.x, stroke.from.y), CPoint2D(stroke.to.x, stroke.to.y));
        hatch->m_EdgeList.AddTail(edge);
    }
    classic.m_HatchList.AddTail(hatch.get());
    static_cast<void>(hatch.release());
}

void AddLoop(tagLoopTreeNode const& loop, std::int32_t parent, Layer& layer) {
    for (auto const* p = loop.m_pPointList->m_pNodeHead; p != nullptr; p = p->pNext) {
        layer.points.push_back({p->data.x, p->data.y});
    }
    bool const closed = loop.m_bClosed != 0;
    std::size_t const first = layer.offsets.back();
    if (closed && layer.points.size() > first + 1 && layer.points.back() == layer.points[first]) {
        layer.points.pop_back();
    }
    layer.offsets.push_back(layer.points.size());
    Contour contour;
    contour.closed = closed;
    contour.parent = parent;
    // One that has left its parent, as when it was ordered, keeps its level: it tells a hole.
    contour.level = parent >= 0 ? layer.contours[static_cast<std::size_t>(parent)].level + 1
                    : closed    ? loop.m_nLevel
                                : 0;
    contour.id = loop.m_nID;
    layer.contours.push_back(contour);
}

}  // namespace

std::unique_ptr<CLayer> ToClassic(Layer const& layer) {
    auto classic = std::make_unique<CLayer>();
    classic->m_dZ = layer.z;
    std::vector<tagLoopTreeNode*> loops(layer.contours.size(), nullptr);
    for (std::size_t i = 0; i < loops.size(); ++i) {
        std::unique_ptr<tagLoopTreeNode> loop = LoopOf(layer, i);
        std::int32_t const parent = layer.contours[i].parent;
        // A parent stands in front of what is in it; what says otherwise is in nothing.
        if (parent >= 0 && static_cast<std::size_t>(parent) < i) {
            loops[static_cast<std::size_t>(parent)]->m_ChildList.AddTail(loop.get());
        } else {
            classic->AddRawLoop(loop.get());
        }
        loops[i] = loop.release();
    }
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) AddHatch(layer, i, *classic);
    classic->GetBoundBox();
    return classic;
}

Layer FromClassic(CLayer& classic) {
    Layer layer;
    layer.z = layer.cutHeight = classic.m_dZ;
    classic.BuildLoopList();
    std::unordered_map<tagLoopTreeNode const*, std::int32_t> parents;
    for (auto const* node = classic.m_LoopList.m_pNodeHead; node != nullptr; node = node->pNext) {
        auto const* const loop = static_cast<tagLoopTreeNode const*>(node->data);
        if (loop == nullptr) continue;
        auto const it = parents.find(loop);
        std::int32_t number = it == parents.end() ? -1 : it->second;
        if (loop->m_pPointList != nullptr && loop->m_pPointList->IsEmpty() == 0) {
            AddLoop(*loop, number, layer);
            number = static_cast<std::int32_t>(layer.contours.size()) - 1;
        }
        for (auto const* child = loop->m_ChildList.m_pNodeHead; child != nullptr; child = child->pNext) {
            parents[static_cast<tagLoopTreeNode const*>(child->data)] = number;
        }
    }
    for (auto const* node = classic.m_HatchList.m_pNodeHead; node != nullptr; node = node->pNext) {
        auto const* const hatch = static_cast<CHatch const*>(node->data);
        if (hatch == nullptr || hatch->m_EdgeList.IsEmpty() != 0) continue;
        for (auto const* edge = hatch->m_EdgeList.m_pNodeHead; edge != nullptr; edge = edge->pNext) {
            CEdge2D const& e = edge->data;
            layer.strokes.push_back({{e.m_ptStart.x, e.m_ptStart.y}, {e.m_ptEnd.x, e.m_ptEnd.y}});
        }
        layer.chainOffsets.push_back(layer.strokes.size());
        layer.chainIds.push_back(hatch->m_nID);
    }
    return layer;
}

}  // namespace varnet
