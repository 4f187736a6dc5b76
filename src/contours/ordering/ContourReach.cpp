#include "contours/ordering/ContourReach.h"

#include <array>
#include <cmath>

#include "foundation/Geometry.h"

namespace varnet {

namespace {

// Square millimetres. Segments that are further away by less count as equally near.
constexpr double kNearlyEqual2 = 0.0001;

// Before boxes are drawn, so many points are held against all segments.
constexpr int kFewWalks = 8;
constexpr std::size_t kRunLength = 8;

// The computed squared distance is off by less than 1e-13 of the sum of the true one and the squared length
// of the segment, as long as no product overflows, and the reach is not great against the shortest segment
// that has a direction. Boxes are drawn larger by much more than that.
constexpr double kMostReach2 = 1e9;
constexpr double kMostCoordinate = 1e60;
constexpr double kOfReach = 1e-9;
constexpr double kOfLength = 1e-11;
constexpr double kMore = 1e-9;

bool IsOrdinary(CPoint2D const& point) {
    return std::fabs(point.x) < kMostCoordinate && std::fabs(point.y) < kMostCoordinate;
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

PlanBox const& ContourReach::Box() {
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
    std::array<std::size_t, CompleteTree::kStackSize> stack;
    std::size_t nItems = 0;
    stack[nItems++] = 0;
    while (nItems > 0) {
        std::size_t const nBox = stack[--nItems];
        if (!Holds(m_Boxes[nBox], point.x, point.y)) continue;
        if (!m_Shape.IsLeaf(nBox)) {
            stack[nItems++] = CompleteTree::Right(nBox);
            stack[nItems++] = CompleteTree::Left(nBox);
            continue;
        }
        std::size_t const nRun = m_Shape.LeafOf(nBox);
        for (std::size_t i = RunBegin(nRun); i < RunBegin(nRun + 1); ++i) Offer(point, m_Ends[i], best);
    }
    return best;
}

PlanBox ContourReach::BoxOf(PointNode const* pEnd) const {
    CPoint2D const& a = pEnd->pPrev->data;
    CPoint2D const& b = pEnd->data;
    if (!IsOrdinary(a) || !IsOrdinary(b) || !(m_dLimit2 < kMostReach2)) return kWholePlane;
    double const dReach =
        std::sqrt(m_dLimit2 * (1.0 + kOfReach) + D2ofPtoP(a, b) * kOfLength) * (1.0 + kOfReach) + kMore;
    return Grown(PlanBoxOf(a, b), dReach);
}

void ContourReach::BuildBoxes() {
    if (m_pHead != nullptr) {
        for (PointNode* p = m_pHead->pNext; p != nullptr; p = p->pNext) m_Ends.push_back(p);
    }
    m_Shape = CompleteTree::ForItems(m_Ends.size(), kRunLength);
    m_Boxes.resize(m_Shape.NodeCount());
    for (std::size_t nRun = 0; nRun < m_Shape.nLeaves; ++nRun) {
        PlanBox& box = m_Boxes[m_Shape.NodeOf(nRun)];
        for (std::size_t i = RunBegin(nRun); i < RunBegin(nRun + 1); ++i) box = Union(box, BoxOf(m_Ends[i]));
    }
    for (std::size_t i = m_Shape.InnerCount(); i-- > 0;) {
        m_Boxes[i] = Union(m_Boxes[CompleteTree::Left(i)], m_Boxes[CompleteTree::Right(i)]);
    }
}

}  // namespace varnet
