#include "trees/WaysAhead.h"

#include <algorithm>
#include <cmath>

#include "foundation/Prefetch.h"
#include "foundation/Require.h"

namespace varnet {

namespace {

// The first when the condition holds, else the second, without a branch.
tagVertexNode const* Choose(bool bFirst, tagVertexNode const* pFirst, tagVertexNode const* pSecond) {
    auto const nFirst = reinterpret_cast<std::uintptr_t>(pFirst);
    auto const nSecond = reinterpret_cast<std::uintptr_t>(pSecond);
    std::uintptr_t const nMask = std::uintptr_t{0} - static_cast<std::uintptr_t>(bFirst);
    return reinterpret_cast<tagVertexNode const*>(nSecond ^ ((nFirst ^ nSecond) & nMask));
}

// Where a point goes on from a vertex, or would if it had not come to its end.
tagVertexNode const* SideOf(tagVertexNode const& node, CPoint3D const& point, double dTolerance) {
    double const dx = node.x - point.x;
    double const dy = node.y - point.y;
    double const dz = node.z - point.z;
    double const dInRow = std::fabs(dy) > dTolerance ? dy : dx;
    double const d = std::fabs(dz) > dTolerance ? dz : dInRow;
    return Choose(d < 0.0, node.m_pLeft, node.m_pRight);
}

// Half of the vertices lie across the end of a line of the cache.
void PrefetchLinked(tagVertexNode const& vertex) {
    Prefetch(&vertex.x);
    Prefetch(&vertex.m_pRight);
}

}  // namespace

std::size_t WaysAhead::Want(CPoint3D const& point, std::size_t nHash) {
    VARNET_REQUIRE(m_nWays < kMost);
    m_Ways.resize(kMost);
    m_Ways[m_nWays].point = point;
    m_Ways[m_nWays].nLevels = 0;
    m_Numbers[nHash % m_Numbers.size()] = static_cast<std::uint8_t>(m_nWays + 1);
    return m_nWays++;
}

void WaysAhead::Find(CVertexTree const& tree) {
    if (tree.m_pRoot == nullptr) return;
    Opens opens;
    for (std::size_t i = 0; i < m_nWays; ++i)
        opens[i] = {m_Ways[i].point.z, tree.m_pRoot, 0, static_cast<std::uint32_t>(i), 0};
    std::size_t const nAtHeight = FindHeights(opens, m_nWays, tree.m_dTolerance);
    FindEnds(opens, nAtHeight, tree.m_dTolerance);
}

void WaysAhead::End(Open const& open) {
    Known& known = m_Ways[open.nWay];
    known.nLefts = open.nLefts;
    known.nLevels = open.nLevel;
}

// Down to the first vertex within the tolerance of the point's height. Returns how many ways have one; they
// come to stand first.
std::size_t WaysAhead::FindHeights(Opens& opens, std::size_t nOpen, double dTolerance) {
    Opens atHeight;
    std::size_t nAtHeight = 0;
    for (std::uint32_t nLevel = 0; nLevel < kDeepest && nOpen > 0; ++nLevel) {
        std::size_t nStill = 0;
        for (std::size_t i = 0; i < nOpen; ++i) {
            Open const open = opens[i];
            tagVertexNode const& vertex = *open.pVertex;
            double const d = vertex.z - open.z;
            if (std::fabs(d) <= dTolerance) {
                atHeight[nAtHeight] = open;
                atHeight[nAtHeight++].nLevel = nLevel;
                continue;
            }
            tagVertexNode const* const pNext = Choose(d < 0.0, vertex.m_pLeft, vertex.m_pRight);
            m_Ways[open.nWay].vertices[nLevel] = open.pVertex;
            opens[nStill] = {open.z, pNext, open.nLefts | std::uint64_t{d < 0.0} << nLevel, open.nWay,
                             nLevel + 1};
            if (pNext != nullptr) {
                PrefetchLinked(*pNext);
                ++nStill;
            } else {
                End(opens[nStill]);
                m_Ways[open.nWay].nDrawn = nLevel + 1;
            }
        }
        nOpen = nStill;
    }
    for (Open const& open : std::span(opens).first(nOpen)) {
        End(open);
        m_Ways[open.nWay].nDrawn = kDeepest;
    }
    std::copy_n(atHeight.begin(), nAtHeight, opens.begin());
    return nAtHeight;
}

// From there on, in the order of rows and within them.
void WaysAhead::FindEnds(Opens& opens, std::size_t nOpen, double dTolerance) {
    for (Open& open : std::span(opens).first(nOpen)) {
        m_Ways[open.nWay].nDrawn = open.nLevel;
        open.z = open.pVertex->z;
    }
    while (nOpen > 0) {
        std::size_t nStill = 0;
        for (std::size_t i = 0; i < nOpen; ++i) {
            Open open = opens[i];
            Known& known = m_Ways[open.nWay];
            tagVertexNode const& vertex = *open.pVertex;
            double const dx = vertex.x - known.point.x;
            double const dy = vertex.y - known.point.y;
            double const dz = vertex.z - open.z;
            bool const bHeight = std::fabs(dz) <= dTolerance;
            bool const bRow = bHeight & (std::fabs(dy) <= dTolerance);
            bool const bOther = bHeight & (dz != 0.0);
            bool const bMet = bRow & ((dy != 0.0) | (std::fabs(dx) <= dTolerance));
            if (bMet || bOther || open.nLevel == kDeepest) {
                End(open);
                continue;
            }
            double const dAtHeight = bRow ? dx : dy;
            double const d = bHeight ? dAtHeight : dz;
            known.vertices[open.nLevel] = open.pVertex;
            open.nLefts |= std::uint64_t{d < 0.0} << open.nLevel++;
            open.pVertex = Choose(d < 0.0, vertex.m_pLeft, vertex.m_pRight);
            opens[nStill] = open;
            if (open.pVertex != nullptr) {
                PrefetchLinked(*open.pVertex);
                ++nStill;
            } else {
                End(open);
            }
        }
        nOpen = nStill;
    }
}

// By the vertices that the ways pass at a depth above which all stay at hand: those of the second half of the
// points that none of the points before has passed.
bool WaysAhead::AreFarApart(CVertexTree const& tree, std::span<CPoint3D const* const> points) {
    VARNET_REQUIRE(points.size() <= kMost);
    constexpr int kDepth = 11;
    std::array<tagVertexNode const*, kMost> passed{};
    std::size_t const nHalf = points.size() / 2;
    std::size_t nNew = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        tagVertexNode const* p = tree.m_pRoot;
        for (int n = 0; n < kDepth && p != nullptr; ++n) p = SideOf(*p, *points[i], tree.m_dTolerance);
        auto const end = passed.begin() + static_cast<std::ptrdiff_t>(i);
        if (i >= nHalf && std::find(passed.begin(), end, p) == end) ++nNew;
        passed[i] = p;
    }
    return 8 * nNew > 3 * nHalf;  // neighbours come in pairs
}

// By the age of the last vertex on the way of each point that is new.
bool WaysAhead::AreFarFromRecent(CVertexTree const& tree, std::span<CPoint3D const* const> points) {
    constexpr std::uint32_t kRecent = 4096;
    std::size_t nNew = 0;
    std::size_t nOld = 0;
    for (CPoint3D const* const pPoint : points) {
        std::uint32_t nIndex = tree.m_nCount;
        bool bKnown = false;
        for (tagVertexNode const* p = tree.m_pRoot; p != nullptr && !bKnown;) {
            bKnown =
                p->x == pPoint->x && p->y == pPoint->y && std::fabs(p->z - pPoint->z) <= tree.m_dTolerance;
            nIndex = static_cast<std::uint32_t>(p->m_nIndex);
            p = SideOf(*p, *pPoint, tree.m_dTolerance);
        }
        if (bKnown) continue;
        ++nNew;
        if (tree.m_nCount - nIndex > kRecent) ++nOld;
    }
    return 2 * nOld > nNew;
}

}  // namespace varnet
