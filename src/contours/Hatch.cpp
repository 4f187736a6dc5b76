#include "contours/Hatch.h"

#include <cmath>

#include "contours/LoopWalk.h"
#include "foundation/Geometry.h"

using namespace varnet;

namespace {

using EdgeList = XR_CList<CEdge2D, CEdge2D&>;

void AddBefore(EdgeList& edges, XR__POSITION* next, CEdge2D edge) {
    if (next != nullptr) {
        edges.InsertBefore(next, edge);
    } else {
        edges.AddTail(edge);
    }
}

// Cuts the edge at a position into nPieces edges of equal length; next is the position behind it.
void Divide(EdgeList& edges, XR__POSITION* position, XR__POSITION* next, double dLength, int nPieces) {
    CPoint2D start(edges.GetAt(position).m_ptStart);
    CPoint2D end(edges.GetAt(position).m_ptEnd);
    double const dStep = dLength / nPieces;
    CPoint2D last(ExtendLine(&start, &end, dStep, 1));
    edges.GetAt(position).m_ptEnd = last;
    for (int i = 2; i < nPieces; ++i) {
        CPoint2D const point(ExtendLine(&start, &end, i * dStep, 1));
        AddBefore(edges, next, CEdge2D(last, point));
        last = point;
    }
    AddBefore(edges, next, CEdge2D(last, end));
}

}  // namespace

CHatch::CHatch() : m_EdgeList(10), m_nID(1), m_nFlag(0) {}

void CHatch::Copy(CHatch* pOther) {
    m_nID = pOther->m_nID;
    m_nFlag = pOther->m_nFlag;
    m_EdgeList.AddTail(&pOther->m_EdgeList);
}

void CHatch::Reverse() {
    ReverseOrder(m_EdgeList);
    for (auto* p = m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) p->data.Reverse();
}

void CHatch::AddPointsOnLongEdge(double dLength) {
    constexpr double kMostPieces = 2147483647.0;
    XR__POSITION* next = m_EdgeList.GetHeadPosition();
    while (next != nullptr) {
        XR__POSITION* const position = next;
        CEdge2D const& edge = m_EdgeList.GetNext(next);
        double const dLength2 = D2ofPtoP(edge.m_ptStart, edge.m_ptEnd);
        if (!(dLength2 > dLength * dLength)) continue;
        double const dEdge = std::sqrt(dLength2);
        double const dPieces = dEdge / dLength + 1.0;
        if (!(std::fabs(dPieces) <= kMostPieces)) continue;
        Divide(m_EdgeList, position, next, dEdge, static_cast<int>(dPieces));
    }
}
