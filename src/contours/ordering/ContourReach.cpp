#include "contours/ordering/ContourReach.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "foundation/Geometry.h"

namespace varnet {

namespace {

// Square millimetres. Segments that are further away by less count as equally near.
constexpr double kNearlyEqual2 = 0.0001;

// Before boxes are drawn, so many points are held against all segments.
constexpr int kFewWalks = 8;
constexpr std::size_t kRunLength = 8;
constexpr std::size_t kStackSize = 64;

// The computed squared distance is off by less than 1e-13 of the sum of the true one and the squared length
// of the segment, as long as no product overflows, and the reach is not great against the shortest segment
// that has a direction. Boxes are drawn larger by much more than that.
constexpr double kMostReach2 = 1e9;
constexpr double kMostCoordinate = 1e60;
constexpr double kOfReach = 1e-9;
constexpr double kOfLength = 1e-11;
constexpr double kMore = 1e-9;

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr BoxKey kNothing{kInfinite, kInfinite, -kInfinite, -kInfinite};
constexpr BoxKey kEverything{-kInfinite, -kInfinite, kInfinite, kInfinite};

bool IsOrdinary(CPoint2D const& point) {
    return std::fabs(point.x) < kMostCoordinate && std::fabs(point.y) < kMostCoordinate;
}

BoxKey Union(BoxKey const& a, BoxKey const& b) {
    return {std::min(a[0], b[0]), std::min(a[1], b[1]), std::max(a[2], b[2]), std::max(a[3], b[3])};
}

bool Holds(BoxKey const& box, CPoint2D const& point) {
    return box[0] <= point.x && point.x <= box[2] && box[1] <= point.y && point.y <= box[3];
}

}  // namespace

ContourReach::ContourReach(tagLoopTreeNode const& contour, double dWidth)
    : m_pHead(FirstPoint(contour)), m_dLimit2(dWidth * 3.24 * dWidth) {}

ContourReach::Segment ContourReach::Find(CPoint2D const& point) {
    if (m_pHead == nullptr) return {};
    if (!IsOrdinary(point) || (m_Boxes.empty() && ++m_nWalks <= kFewWalks)) return Walk(point);
    Box();
    return Search(point);
}

BoxKey const& ContourReach::Box() {
    if (m_Boxes.empty()) BuildBoxes();
    return m_Boxes.front();
}

void ContourReach::Offer(CPoint2D const& point, PointNode* pEnd, Segment& best) const {
    double const d2 = CalMinD2ofPtoLine(point, pEnd->pPrev->data, pEnd->data);
    if (m_dLimit2 > d2 && best.dDistance2 + kNearlyEqual2 > d2) best = {pEnd, d2};
}

ContourReach::Segment ContourReach::Walk(CPoint2D const& point) const {
    Segment best;
    for (PointNode* p = m_pHead->pNext; p != nullptr; p = p->pNext) Offer(point, p, best);
    return best;
}

ContourReach::Segment ContourReach::Search(CPoint2D const& point) const {
    Segment best;
    std::array<std::size_t, kStackSize> stack;
    std::size_t nItems = 0;
    stack[nItems++] = 0;
    while (nItems > 0) {
        std::size_t const nBox = stack[--nItems];
        if (!Holds(m_Boxes[nBox], point)) continue;
        if (nBox < m_nRuns - 1) {
            stack[nItems++] = 2 * nBox + 2;
            stack[nItems++] = 2 * nBox + 1;
            continue;
        }
        std::size_t const nRun = nBox - (m_nRuns - 1);
        for (std::size_t i = RunBegin(nRun); i < RunBegin(nRun + 1); ++i) Offer(point, m_Ends[i], best);
    }
    return best;
}

BoxKey ContourReach::BoxOf(PointNode const* pEnd) const {
    CPoint2D const& a = pEnd->pPrev->data;
    CPoint2D const& b = pEnd->data;
    if (!IsOrdinary(a) || !IsOrdinary(b) || !(m_dLimit2 < kMostReach2)) return kEverything;
    double const dReach =
        std::sqrt(m_dLimit2 * (1.0 + kOfReach) + D2ofPtoP(a, b) * kOfLength) * (1.0 + kOfReach) + kMore;
    return {std::min(a.x, b.x) - dReach, std::min(a.y, b.y) - dReach, std::max(a.x, b.x) + dReach,
            std::max(a.y, b.y) + dReach};
}

void ContourReach::BuildBoxes() {
    if (m_pHead != nullptr) {
        for (PointNode* p = m_pHead->pNext; p != nullptr; p = p->pNext) m_Ends.push_back(p);
    }
    m_nRuns = 1;
    while (m_nRuns * kRunLength < m_Ends.size()) m_nRuns *= 2;
    m_Boxes.assign(2 * m_nRuns - 1, kNothing);
    for (std::size_t nRun = 0; nRun < m_nRuns; ++nRun) {
        BoxKey& box = m_Boxes[m_nRuns - 1 + nRun];
        for (std::size_t i = RunBegin(nRun); i < RunBegin(nRun + 1); ++i) box = Union(box, BoxOf(m_Ends[i]));
    }
    for (std::size_t i = m_nRuns - 1; i-- > 0;) m_Boxes[i] = Union(m_Boxes[2 * i + 1], m_Boxes[2 * i + 2]);
}

}  // namespace varnet
