#include "contours/nesting/ClearlyInside.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "contours/LoopWalk.h"

namespace varnet {

namespace {

// Millimetres.
constexpr double kClear = 1e-5;
constexpr double kFarthest = 1e6;

// So many pairs of edges are compared.
constexpr std::size_t kMostPairs = 65536;

struct Edge {
    double ax, ay, bx, by;
    double xLow, yLow, xHigh, yHigh;
};

struct Outline {
    std::vector<Edge> edges;
    double xLow = std::numeric_limits<double>::infinity();
    double yLow = std::numeric_limits<double>::infinity();
    double xHigh = -std::numeric_limits<double>::infinity();
    double yHigh = -std::numeric_limits<double>::infinity();
};

// False for what can't be judged.
bool Draw(tagLoopTreeNode const& loop, Outline& outline) {
    PointNode const* const pHead = FirstPoint(loop);
    if (pHead == nullptr || static_cast<std::size_t>(PointCount(loop)) > kMostPairs) return false;
    CPoint2D const& tail = loop.m_pPointList->m_pNodeTail->data;
    if (pHead->data.x != tail.x || pHead->data.y != tail.y) return false;
    for (PointNode const* p = pHead; p->pNext != nullptr; p = p->pNext) {
        CPoint2D const& a = p->data;
        CPoint2D const& b = p->pNext->data;
        if (!(std::fabs(a.x) <= kFarthest) || !(std::fabs(a.y) <= kFarthest)) return false;
        outline.edges.push_back({a.x, a.y, b.x, b.y, std::min(a.x, b.x), std::min(a.y, b.y),
                                 std::max(a.x, b.x), std::max(a.y, b.y)});
        outline.xLow = std::min(outline.xLow, a.x);
        outline.yLow = std::min(outline.yLow, a.y);
        outline.xHigh = std::max(outline.xHigh, a.x);
        outline.yHigh = std::max(outline.yHigh, a.y);
    }
    return !outline.edges.empty();
}

bool AreBoxesClear(Edge const& e, Edge const& f) {
    return e.xHigh + kClear < f.xLow || f.xHigh + kClear < e.xLow || e.yHigh + kClear < f.yLow ||
           f.yHigh + kClear < e.yLow;
}

// How far (x, y) lies to the left of the edge, times its length, beyond what is clear and what is rounded: at
// least so far left above 0, right below 0, or near its line.
double SideOf(Edge const& e, double dLength, double x, double y) {
    constexpr double kRounding = 1e-14;
    double const u = (e.bx - e.ax) * (y - e.ay);
    double const v = (e.by - e.ay) * (x - e.ax);
    double const d = u - v;
    return std::fabs(d) > kClear * dLength + kRounding * (std::fabs(u) + std::fabs(v)) ? d : 0.0;
}

// Whether f lies on one side of the line through e.
bool IsBeside(Edge const& e, Edge const& f) {
    double const dLength = std::sqrt((e.bx - e.ax) * (e.bx - e.ax) + (e.by - e.ay) * (e.by - e.ay));
    double const dFrom = SideOf(e, dLength, f.ax, f.ay);
    double const dTo = SideOf(e, dLength, f.bx, f.by);
    return (dFrom > 0.0 && dTo > 0.0) || (dFrom < 0.0 && dTo < 0.0);
}

}  // namespace

bool IsClearlyInside(tagLoopTreeNode const& outer, tagLoopTreeNode const& inner) {
    Outline a;
    Outline b;
    if (!Draw(outer, a) || !Draw(inner, b) || a.edges.size() * b.edges.size() > kMostPairs) return false;
    if (!(a.xLow + kClear < b.xLow && a.yLow + kClear < b.yLow && b.xHigh + kClear < a.xHigh &&
          b.yHigh + kClear < a.yHigh)) {
        return false;
    }
    return std::all_of(b.edges.begin(), b.edges.end(), [&a](Edge const& f) {
        return std::all_of(a.edges.begin(), a.edges.end(), [&f](Edge const& e) {
            return AreBoxesClear(e, f) || IsBeside(e, f) || IsBeside(f, e);
        });
    });
}

}  // namespace varnet
