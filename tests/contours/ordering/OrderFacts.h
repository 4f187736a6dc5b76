#pragma once

#include <string>

#include "contours/Paths.h"

// What ordering leaves behind, to compare two layers that went different ways.

/// All that an ordering pass may change about a path.
struct PathFacts {
    int nID;
    int nLevel;
    int nDirection;
    int bClosed;
    int nFlag;
    std::uint64_t nHeight;
    std::vector<ExactPoint> points;
    bool operator==(PathFacts const&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, PathFacts const& path) {
    out << "id " << path.nID << " direction " << path.nDirection << " closed " << path.bClosed << " flags "
        << path.nFlag;
    for (ExactPoint const& p : path.points) out << " " << p;
    return out;
}

inline PathFacts FactsOf(tagLoopTreeNode const& loop) {
    return {loop.m_nID,       loop.m_nLevel, loop.m_nDirection,
            loop.m_bClosed,   loop.m_nFlag,  std::bit_cast<std::uint64_t>(loop.m_dZ),
            ExactPoints(loop)};
}

inline std::vector<PathFacts> FactsOf(std::vector<tagLoopTreeNode*> const& loops) {
    std::vector<PathFacts> facts;
    for (tagLoopTreeNode const* const p : loops) facts.push_back(FactsOf(*p));
    return facts;
}

struct HatchFacts {
    int nID;
    int nFlag;
    std::vector<ExactPoint> points;  // two for each edge
    bool operator==(HatchFacts const&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, HatchFacts const& hatch) {
    out << "hatch " << hatch.nID << " flags " << hatch.nFlag;
    for (ExactPoint const& p : hatch.points) out << " " << p;
    return out;
}

inline HatchFacts FactsOf(CHatch const& hatch) {
    HatchFacts facts{hatch.m_nID, hatch.m_nFlag, {}};
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        facts.points.push_back(Exact(p->data.m_ptStart));
        facts.points.push_back(Exact(p->data.m_ptEnd));
    }
    return facts;
}

inline std::vector<HatchFacts> FactsOf(std::vector<CHatch*> const& hatchs) {
    std::vector<HatchFacts> facts;
    for (CHatch const* const p : hatchs) facts.push_back(FactsOf(*p));
    return facts;
}
