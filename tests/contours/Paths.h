#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "contours/Layer.h"

// Making paths and layers, and looking into them.

using PointList = XR_CList<CPoint2D, CPoint2D&>;
using LoopPtr = std::unique_ptr<tagLoopTreeNode>;
using HatchPtr = std::unique_ptr<CHatch>;

/// A point to the bit: both coordinates and both attributes.
struct ExactPoint {
    std::uint64_t x;
    std::uint64_t y;
    std::uint32_t attr1;
    std::uint32_t attr2;
    bool operator==(ExactPoint const&) const = default;
};

inline ExactPoint Exact(CPoint2D const& p) {
    return {std::bit_cast<std::uint64_t>(p.x), std::bit_cast<std::uint64_t>(p.y),
            std::bit_cast<std::uint32_t>(p.m_fAttr1), std::bit_cast<std::uint32_t>(p.m_fAttr2)};
}

inline std::ostream& operator<<(std::ostream& out, ExactPoint const& p) {
    return out << "(" << std::bit_cast<double>(p.x) << ", " << std::bit_cast<double>(p.y) << "; " << p.attr1
               << ", " << p.attr2 << ")";
}

using Place = std::pair<double, double>;
using Places = std::vector<Place>;

/// A point whose bytes of attributes are 1 and 2 more than ten times its number, so that it can be told.
inline CPoint2D Marked(double x, double y, int nNumber) {
    CPoint2D point(x, y);
    point.m_fAttr1 = static_cast<float>(nNumber);
    point.m_fAttr2 = std::bit_cast<float>(nNumber);
    return point;
}

inline std::uint32_t Bits(CPoint2D const& point) { return std::bit_cast<std::uint32_t>(point.m_fAttr2); }

/// An open path through the places; its points are marked with their numbers, from 0.
inline LoopPtr OpenPath(Places const& places) {
    auto pLoop = std::make_unique<tagLoopTreeNode>(0);
    pLoop->m_pPointList = new PointList(10);
    int nNumber = 0;
    for (auto const& [x, y] : places) {
        CPoint2D point = Marked(x, y, nNumber++);
        pLoop->m_pPointList->AddTail(point);
    }
    return pLoop;
}

/// A closed loop through the places; the closing copy is added, attributes included.
inline LoopPtr ClosedLoop(Places const& places) {
    LoopPtr pLoop = OpenPath(places);
    pLoop->m_bClosed = 1;
    if (!places.empty()) {
        CPoint2D head(pLoop->m_pPointList->GetHead());
        pLoop->m_pPointList->AddTail(head);
    }
    pLoop->GetBoundBox();
    return pLoop;
}

/// A counter-clockwise square.
inline LoopPtr Square(double x, double y, double dSide) {
    return ClosedLoop({{x, y}, {x + dSide, y}, {x + dSide, y + dSide}, {x, y + dSide}});
}

inline LoopPtr ClockwiseSquare(double x, double y, double dSide) {
    return ClosedLoop({{x, y}, {x, y + dSide}, {x + dSide, y + dSide}, {x + dSide, y}});
}

inline Places PlacesOf(PointList const& list) {
    Places places;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext)
        places.emplace_back(p->data.x, p->data.y);
    return places;
}

inline Places PlacesOf(tagLoopTreeNode const& loop) { return PlacesOf(*loop.m_pPointList); }

inline std::vector<ExactPoint> ExactPoints(PointList const& list) {
    std::vector<ExactPoint> points;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) points.push_back(Exact(p->data));
    return points;
}

inline std::vector<ExactPoint> ExactPoints(tagLoopTreeNode const& loop) {
    return loop.m_pPointList != nullptr ? ExactPoints(*loop.m_pPointList) : std::vector<ExactPoint>();
}

/// The list walked from its tail gives the same nodes, and its count is right.
inline void ExpectSound(PointList const& list) {
    std::vector<void const*> forth;
    std::vector<void const*> back;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) forth.push_back(p);
    for (auto const* p = list.m_pNodeTail; p != nullptr; p = p->pPrev) back.insert(back.begin(), p);
    EXPECT_EQ(forth, back);
    EXPECT_EQ(list.GetCount(), static_cast<int>(forth.size()));
}

inline tagLoopTreeNode* Give(CLayer& layer, LoopPtr pLoop) {
    tagLoopTreeNode* const pRaw = pLoop.release();
    layer.AddRawLoop(pRaw);
    return pRaw;
}

inline CHatch* Give(CLayer& layer, HatchPtr pHatch) {
    CHatch* const pRaw = pHatch.release();
    layer.m_HatchList.AddTail(pRaw);
    return pRaw;
}

inline std::vector<tagLoopTreeNode*> LoopsOf(XR_CList<void*, void*> const& list) {
    std::vector<tagLoopTreeNode*> loops;
    for (auto const* p = list.m_pNodeHead; p != nullptr; p = p->pNext) {
        loops.push_back(static_cast<tagLoopTreeNode*>(p->data));
    }
    return loops;
}

inline std::vector<CHatch*> HatchesOf(CLayer const& layer) {
    std::vector<CHatch*> hatches;
    for (auto const* p = layer.m_HatchList.m_pNodeHead; p != nullptr; p = p->pNext) {
        hatches.push_back(static_cast<CHatch*>(p->data));
    }
    return hatches;
}

using Segment = std::pair<Place, Place>;
using Segments = std::vector<Segment>;

/// A hatch of these edges; the two points of each are marked with the edge's number and 100 more than that.
inline HatchPtr Hatch(Segments const& segments, int nID = 1) {
    auto pHatch = std::make_unique<CHatch>();
    pHatch->m_nID = nID;
    int nNumber = 0;
    for (auto const& [start, end] : segments) {
        CEdge2D edge(Marked(start.first, start.second, nNumber),
                     Marked(end.first, end.second, 100 + nNumber));
        pHatch->m_EdgeList.AddTail(edge);
        ++nNumber;
    }
    return pHatch;
}

inline Segments SegmentsOf(CHatch const& hatch) {
    Segments segments;
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        CEdge2D const& e = p->data;
        segments.push_back({{e.m_ptStart.x, e.m_ptStart.y}, {e.m_ptEnd.x, e.m_ptEnd.y}});
    }
    return segments;
}

inline bool SameBox(CBoundBox2D const& a, CBoundBox2D const& b) {
    return Exact(a.m_ptMin) == Exact(b.m_ptMin) && Exact(a.m_ptMax) == Exact(b.m_ptMax);
}

/// Numbers about zero that often fall on each other, to the bit or nearly.
class Lattice {
public:
    explicit Lattice(std::uint32_t nSeed) : m_Engine(nSeed) {}
    std::uint32_t Below(std::uint32_t n) { return static_cast<std::uint32_t>(m_Engine() % n); }
    double Step(std::uint32_t nSteps) {
        double const d = static_cast<double>(Below(nSteps));
        std::uint32_t const nNudge = Below(16);
        if (nNudge == 0) return d + 0.00005;
        if (nNudge == 1) return d - 0.005;
        return d;
    }
    double Real(double dFrom, double dTo) {
        return dFrom + (dTo - dFrom) * (static_cast<double>(m_Engine()) / 4294967296.0);
    }

private:
    std::mt19937 m_Engine;
};
