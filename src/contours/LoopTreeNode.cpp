// What becomes of a loop as a record: how it begins, is copied, sinks in the tree, and ends.

#include "contours/LoopTreeNode.h"

#include <memory>
#include <vector>

#include "contours/LoopWalk.h"

using namespace varnet;

tagLoopTreeNode::tagLoopTreeNode(int nLevel)
    : m_pPointList(nullptr),
      m_nID(1),
      m_nLevel(nLevel),
      m_nDirection(LOOPDIRECT_NONE),
      m_dZ(0.0),
      m_bClosed(0),
      m_ChildList(10),
      m_dTolerance(0.01),
      m_nFlag(0),
      m_nUser1(-1),
      m_nUser2(-1),
      m_dUser1(-1.0),
      m_dUser2(-1.0),
      m_dUser3(-1.0) {}

// A subtree is taken apart before its loops are destroyed one by one, so that no destructor calls another.
tagLoopTreeNode::~tagLoopTreeNode() {
    if (m_ChildList.IsEmpty() == 0) {
        std::vector<tagLoopTreeNode*> below;
        ForEachInTree(*this, [&below](tagLoopTreeNode& loop) { below.push_back(&loop); });
        for (tagLoopTreeNode* const pLoop : below) {
            pLoop->m_ChildList.RemoveAll();
            if (pLoop != this) delete pLoop;
        }
    }
    delete m_pPointList;
}

void tagLoopTreeNode::CopyOtherLoop(tagLoopTreeNode* pOther) {
    m_nID = pOther->m_nID;
    m_bClosed = pOther->m_bClosed;
    m_nDirection = pOther->m_nDirection;
    m_dZ = pOther->m_dZ;
    m_dTolerance = pOther->m_dTolerance;
    m_nFlag = pOther->m_nFlag;
    m_nUser1 = pOther->m_nUser1;
    m_nUser2 = pOther->m_nUser2;
    m_dUser1 = pOther->m_dUser1;
    m_dUser2 = pOther->m_dUser2;
    m_dUser3 = pOther->m_dUser3;

    bool const bHasList = pOther->m_pPointList != nullptr;
    auto points = std::make_unique<PointList>(kPointBlockSize);
    if (bHasList) points->AddTail(pOther->m_pPointList);
    delete m_pPointList;
    m_pPointList = points.release();
    if (bHasList) GetBoundBox();
}

void tagLoopTreeNode::LevelAdd() {
    ForEachInTree(*this, [](tagLoopTreeNode& loop) { ++loop.m_nLevel; });
}
