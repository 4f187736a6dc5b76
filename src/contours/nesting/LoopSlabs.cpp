#include "contours/nesting/LoopSlabs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "contours/CrossingParity.h"
#include "foundation/Require.h"

namespace varnet {

namespace {

// A slab for so many points of the loop, fewer where edges are tall: each edge stands in every slab that it
// reaches, and there may be so many of these entries for a point.
constexpr std::int32_t kPointsPerSlab = 2;
constexpr std::int64_t kEntriesPerPoint = 4;

// Millimetres: coordinates beyond it, and those that are not numbers, are left to the full walk.
constexpr double kFarthest = 1e100;

// Millimetres: a lower loop has no slabs.
constexpr double kFlattest = 1e-100;

// A loop that has been tested so often gets slabs.
constexpr std::int32_t kFewTests = 8;

bool IsOrdinary(CPoint2D const& p) { return std::fabs(p.x) < kFarthest && std::fabs(p.y) < kFarthest; }

}  // namespace

LoopSlabs::LoopSlabs(tagLoopTreeNode const& loop) : m_pHead(FirstPoint(loop)) {
    VARNET_REQUIRE(m_pHead != nullptr);
    double const dHeight = MeasureHeight();
    if (!(dHeight > kFlattest)) return;
    for (m_nSlabs = PointCount(loop) / kPointsPerSlab; m_nSlabs > 0; m_nSlabs /= 2) {
        m_dSlabsPerHeight = m_nSlabs / dHeight;
        if (CountEdges()) break;
    }
    if (m_nSlabs == 0) return;
    FillSlabs();
    FindGaps();
}

// Never falls as y grows: so a point at a height between the ends of an edge is in one of the edge's slabs.
std::int32_t LoopSlabs::SlabAt(double y) const {
    double const dSlab = (y - m_dLowest) * m_dSlabsPerHeight;
    return static_cast<std::int32_t>(std::clamp(dSlab, 0.0, static_cast<double>(m_nSlabs - 1)));
}

template <class Visit>
void LoopSlabs::ForEachSlabOf(Visit visit) const {
    for (PointNode const* p = m_pHead->pNext; p != nullptr; p = p->pNext) {
        double const dFromY = p->pPrev->data.y;
        double const dToY = p->data.y;
        std::int32_t const nLast = SlabAt(std::max(dFromY, dToY));
        for (std::int32_t n = SlabAt(std::min(dFromY, dToY)); n <= nLast; ++n) visit(n, p);
    }
}

// 0.0 where some coordinate is out of the ordinary.
double LoopSlabs::MeasureHeight() {
    double dHighest = m_pHead->data.y;
    m_dLowest = dHighest;
    for (PointNode const* p = m_pHead; p != nullptr; p = p->pNext) {
        if (!IsOrdinary(p->data)) return 0.0;
        m_dLowest = std::min(m_dLowest, p->data.y);
        dHighest = std::max(dHighest, p->data.y);
    }
    return dHighest - m_dLowest;
}

// False when there are too many entries.
bool LoopSlabs::CountEdges() {
    m_nFirst.assign(static_cast<std::size_t>(m_nSlabs) + 1, 0);
    std::int64_t nPoints = 1;
    std::int64_t nEntries = 0;
    for (PointNode const* p = m_pHead->pNext; p != nullptr; p = p->pNext) ++nPoints;
    std::int64_t const nMost = kEntriesPerPoint * nPoints;
    for (PointNode const* p = m_pHead->pNext; p != nullptr && nEntries <= nMost; p = p->pNext) {
        nEntries += std::abs(SlabAt(p->data.y) - SlabAt(p->pPrev->data.y)) + 1;
    }
    if (nEntries > nMost && m_nSlabs > 1) return false;
    ForEachSlabOf(
        [this](std::int32_t nSlab, PointNode const*) { ++m_nFirst[static_cast<std::size_t>(nSlab) + 1]; });
    for (std::size_t i = 1; i < m_nFirst.size(); ++i) m_nFirst[i] += m_nFirst[i - 1];
    return true;
}

void LoopSlabs::FillSlabs() {
    m_Edges.resize(static_cast<std::size_t>(m_nFirst.back()));
    std::vector<std::int32_t> next(m_nFirst);
    ForEachSlabOf([this, &next](std::int32_t nSlab, PointNode const* p) {
        CPoint2D const& from = p->pPrev->data;
        auto const nPlace = static_cast<std::size_t>(next[static_cast<std::size_t>(nSlab)]++);
        m_Edges[nPlace] = {from.x, from.y, p->data.x, p->data.y};
    });
}

// Where the list does not close exactly, a gap tells nothing: the edges at its ends share no vertex.
void LoopSlabs::FindGaps() {
    CPoint2D const& head = m_pHead->data;
    m_Gaps.resize(static_cast<std::size_t>(m_nSlabs));
    PointNode const* pTail = m_pHead;
    while (pTail->pNext != nullptr) pTail = pTail->pNext;
    if (pTail->data.x != head.x || pTail->data.y != head.y) return;
    for (std::size_t n = 0; n < m_Gaps.size(); ++n) m_Gaps[n] = WidestGap(n);
}

LoopSlabs::Gap LoopSlabs::WidestGap(std::size_t nSlab) const {
    // Times the size of the coordinates, many times as much as a crossing may be off; and as much for tiny
    // ones.
    constexpr double kRounding = 1e-12;
    constexpr double kTiny = 1e-300;
    std::vector<std::pair<double, double>> spans;
    for (std::int32_t i = m_nFirst[nSlab]; i < m_nFirst[nSlab + 1]; ++i) {
        Edge const& e = m_Edges[static_cast<std::size_t>(i)];
        double const dMargin = kRounding * (std::fabs(e.dFromX) + std::fabs(e.dToX)) + kTiny;
        spans.emplace_back(std::min(e.dFromX, e.dToX) - dMargin, std::max(e.dFromX, e.dToX) + dMargin);
    }
    std::sort(spans.begin(), spans.end());
    double dLeft = 0.0;
    double dRight = 0.0;
    double dEnd = spans.empty() ? 0.0 : spans.front().second;
    for (auto const& [dFrom, dTo] : spans) {
        if (dFrom - dEnd > dRight - dLeft) {
            dLeft = dEnd;
            dRight = dFrom;
        }
        dEnd = std::max(dEnd, dTo);
    }
    double const y = m_dLowest + (static_cast<double>(nSlab) + 0.5) / m_dSlabsPerHeight;
    if (static_cast<std::size_t>(SlabAt(y)) != nSlab) return {};
    bool const bInside = ParityOfEdges(nSlab, dLeft + (dRight - dLeft) * 0.5, y) != 0;
    return bInside ? Gap{dLeft, dRight} : Gap{dRight, dLeft};
}

int LoopSlabs::ParityOfEdges(std::size_t nSlab, double x, double y) const {
    int nParity = 0;
    for (std::int32_t i = m_nFirst[nSlab]; i < m_nFirst[nSlab + 1]; ++i) {
        Edge const& e = m_Edges[static_cast<std::size_t>(i)];
        if (IsAtOrAbove(e.dFromY, y) == IsAtOrAbove(e.dToY, y)) continue;
        if (IsCrossedLeftOf(e.dFromX, e.dFromY, e.dToX, e.dToY, x, y)) nParity ^= 1;
    }
    return nParity;
}

int LoopSlabs::Parity(double x, double y) const {
    if (m_nSlabs == 0 || !std::isfinite(y)) return CrossingParity(m_pHead, x, y);
    auto const nSlab = static_cast<std::size_t>(SlabAt(y));
    Gap const& gap = m_Gaps[nSlab];
    if (gap.dFrom < x && x < gap.dTo) return 1;
    if (gap.dTo < x && x < gap.dFrom) return 0;
    return ParityOfEdges(nSlab, x, y);
}

int ParityAmongMany(tagLoopTreeNode const& loop, double x, double y, std::unique_ptr<LoopSlabs>& pSlabs,
                    std::int32_t& nTests) {
    if (pSlabs != nullptr) return pSlabs->Parity(x, y);
    if (++nTests >= kFewTests) pSlabs = std::make_unique<LoopSlabs>(loop);
    return CrossingParity(FirstPoint(loop), x, y);
}

}  // namespace varnet
