// A layer as a whole: what it holds, its loop list, measures and moving.

#include "contours/Layer.h"

#include "contours/LoopWalk.h"

using namespace varnet;

CLayer::CLayer()
    : m_RawLoopList(10),
      m_LoopList(10),
      m_HatchList(10),
      m_dZ(-1000.0),
      m_dUnits(1.0),
      m_nUser1(-1),
      m_nUser2(-1),
      m_dUser1(0.1),
      m_dUser2(0.1),
      m_dUser3(0.1),
      m_nUser3(0) {}

CLayer::CLayer(CLayer& other) : CLayer() { CopyLayer(other, 0.0, 0.0, 0.0); }

CLayer const& CLayer::operator=(CLayer& other) {
    if (&other != this) CopyLayer(other, 0.0, 0.0, 0.0);
    return *this;
}

CLayer::~CLayer() { ReleaseAll(); }

void CLayer::ReleaseAll() {
    for (LoopNode* p = m_RawLoopList.m_pNodeHead; p != nullptr; p = p->pNext) delete LoopAt(p);
    m_RawLoopList.RemoveAll();
    ForEachHatch(m_HatchList, [](CHatch& hatch) { delete &hatch; });
    m_HatchList.RemoveAll();
    m_LoopList.RemoveAll();
}

void CLayer::AddRawLoop(tagLoopTreeNode* pLoop) { m_RawLoopList.AddTail(pLoop); }

void CLayer::BuildLoopList() {
    m_LoopList.RemoveAll();
    ForEachRoot(m_RawLoopList, [this](tagLoopTreeNode& loop) { AddLoopNodeInList(&loop); });
}

void CLayer::AddLoopNodeInList(tagLoopTreeNode* pLoop) {
    ForEachInTree(*pLoop, [this](tagLoopTreeNode& loop) { m_LoopList.AddTail(&loop); });
}

int CLayer::IsInCounter(CPoint2D& point) {
    if (m_Box.IsInBox(point) == 0) return 0;
    int nLoops = 0;
    ForEachLoop(m_LoopList, [&](tagLoopTreeNode& loop) { nLoops += IsInLoop(&loop, point); });
    return nLoops % 2;
}

void CLayer::ClearLoopsUsedFlag() {
    ForEachLoop(m_LoopList, [](tagLoopTreeNode& loop) { loop.m_nFlag &= ~LOOP_USED_FLAG; });
}

void CLayer::Transform(double (*pMatrix)[3], int bLoopsOnly) {
    BuildLoopList();
    ForEachLoop(m_LoopList, [pMatrix](tagLoopTreeNode& loop) {
        for (PointNode* p = FirstPoint(loop); p != nullptr; p = p->pNext) p->data.Transform(pMatrix);
    });
    if (bLoopsOnly == 0) {
        ForEachHatch(m_HatchList, [pMatrix](CHatch& hatch) {
            for (auto* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
                p->data.m_ptStart.Transform(pMatrix);
                p->data.m_ptEnd.Transform(pMatrix);
            }
        });
    }
    GetBoundBox();
}

CBoundBox2D CLayer::GetBoundBox() {
    m_Box = CBoundBox2D();
    BuildLoopList();
    ForEachLoop(m_LoopList, [this](tagLoopTreeNode& loop) { m_Box += loop.GetBoundBox(); });
    ForEachHatch(m_HatchList, [this](CHatch& hatch) {
        for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
            m_Box += p->data.m_ptStart;
            m_Box += p->data.m_ptEnd;
        }
    });
    return m_Box;
}

double CLayer::GetAreaLength(double& dLength) {
    double dArea = 0.0;
    dLength = 0.0;
    BuildLoopList();
    ForEachLoop(m_LoopList, [&](tagLoopTreeNode& loop) {
        dArea += loop.GetArea();
        dLength += loop.GetLength();
    });
    return dArea;
}
