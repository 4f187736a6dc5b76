#pragma once

#include "contours/HatchLink.h"
#include "contours/LoopWalk.h"
#include "contours/Paths.h"

using namespace varnet;

// Paths whose points carry no attributes, and what the steps of splicing leave on them.

inline LoopPtr Plain(LoopPtr pLoop, LOOPDIRECT nDirection = LOOPDIRECT_CCW) {
    for (PointNode* p = FirstPoint(*pLoop); p != nullptr; p = p->pNext) {
        p->data.m_fAttr1 = 0.0f;
        p->data.m_fAttr2 = 0.0f;
    }
    pLoop->m_nDirection = nDirection;
    return pLoop;
}

inline HatchPtr PlainHatch(Segments const& segments, int nID) {
    HatchPtr pHatch = Hatch(segments, nID);
    for (auto* p = pHatch->m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        p->data = CEdge2D(CPoint2D(p->data.m_ptStart.x, p->data.m_ptStart.y),
                          CPoint2D(p->data.m_ptEnd.x, p->data.m_ptEnd.y));
    }
    return pHatch;
}

/// Places within rounding of the expected ones.
inline void ExpectPlaces(tagLoopTreeNode const& path, Places const& expected) {
    Places const places = PlacesOf(path);
    ASSERT_EQ(places.size(), expected.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_NEAR(places[i].first, expected[i].first, 1e-12) << "x of point " << i;
        EXPECT_NEAR(places[i].second, expected[i].second, 1e-12) << "y of point " << i;
    }
}

/// POINT_JOINT and POINT_INSERTED along a path: a digit for each point.
inline std::string BitsAlong(tagLoopTreeNode const& path) {
    std::string bits;
    for (PointNode const* p = FirstPoint(path); p != nullptr; p = p->pNext) {
        bits += static_cast<char>('0' + (Bits(p->data) & 3));
    }
    return bits;
}

inline Place PlaceOf(CPoint2D const& point) { return {point.x, point.y}; }
