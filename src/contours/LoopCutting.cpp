// Cutting a length of path off one end.

#include <cmath>

#include "contours/LoopTreeNode.h"
#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

// Millimetres. The least length that is cut, and how near a vertex must be to serve as the cut point.
constexpr double kLeastCut = 0.01;

// The length of the path from its head, up to the segment that reaches dEnough.
double MeasureUpTo(PointList const& points, double dEnough) {
    double dSum = 0.0;
    for (PointNode const* p = points.m_pNodeHead; p->pNext != nullptr; p = p->pNext) {
        dSum += Distance(p->data, p->pNext->data);
        if (dSum >= dEnough) break;
    }
    return dSum;
}

// One end of a path being cut, and the path that takes what comes off, which runs the same way.
class CutEnd {
public:
    CutEnd(PointList& points, OPERATEDIRECT end, PointList* pPieces)
        : m_Points(points), m_bAtHead(end == OPERATE_AT_HEAD), m_pPieces(pPieces) {}

    CPoint2D& Point() { return m_bAtHead ? m_Points.GetHead() : m_Points.GetTail(); }

    void CopyToPieces(CPoint2D& point) {
        if (m_pPieces == nullptr) return;
        if (m_bAtHead) {
            m_pPieces->AddTail(point);
        } else {
            m_pPieces->AddHead(point);
        }
    }

    void Extend(CPoint2D& point) {
        if (m_bAtHead) {
            m_Points.AddHead(point);
        } else {
            m_Points.AddTail(point);
        }
    }

    CPoint2D Remove() { return m_bAtHead ? m_Points.RemoveHead() : m_Points.RemoveTail(); }

private:
    PointList& m_Points;
    bool m_bAtHead;
    PointList* m_pPieces;
};

void Cut(PointList& points, CutEnd end, double dLength) {
    CPoint2D last(end.Point());
    while (points.IsEmpty() == 0) {
        CPoint2D& point = end.Point();
        double const d = Distance(last, point);
        if (std::fabs(d - dLength) < kLeastCut) {
            end.CopyToPieces(point);
            return;
        }
        if (!(dLength > d)) {
            CPoint2D cut(ExtendLine(&last, &point, dLength, 1));
            end.Extend(cut);
            end.CopyToPieces(cut);
            return;
        }
        last = end.Remove();
        end.CopyToPieces(last);
        dLength -= d;
    }
}

}  // namespace

tagLoopTreeNode* tagLoopTreeNode::CutLoop(double dLength, double dKeep, OPERATEDIRECT end, int bPieces) {
    auto pieces = bPieces != 0 ? NewPath() : nullptr;
    if (PointCount(*this) < 2) return pieces.release();
    double const dMeasured = MeasureUpTo(*m_pPointList, dLength + dKeep);
    if (dLength + dKeep > dMeasured) dLength = dMeasured - dKeep;
    if (kLeastCut > dLength) return pieces.release();
    Cut(*m_pPointList, CutEnd(*m_pPointList, end, pieces != nullptr ? pieces->m_pPointList : nullptr),
        dLength);
    return pieces.release();
}
