// Copying layers, and turning loops into hatches and hatches into paths.

#include "contours/Layer.h"
#include "contours/LoopWalk.h"

using namespace varnet;

namespace {

// The kinds of path that CLayer::AddOtherLayer brings along, as bits of its mask.
constexpr int kLoops = 1;
constexpr int kFirstGroupHatches = 2;
constexpr int kSecondGroupHatches = 4;
constexpr int kEverything = 255;

constexpr int kSecondGroup = 1000;  // hatch ids from here on

// What ConvertHatchToLoop writes to the first attribute of a point.
constexpr float kStartsEdge = -12301.0f;
constexpr float kEndsEdge = -12302.0f;

bool IsWanted(CHatch const& hatch, int nMask) {
    return (nMask & (hatch.m_nID < kSecondGroup ? kFirstGroupHatches : kSecondGroupHatches)) != 0;
}

tagLoopTreeNode* MovedCopy(tagLoopTreeNode& loop, CPoint2D const& offset, double dZ) {
    auto* const pCopy = new tagLoopTreeNode(0);
    pCopy->CopyOtherLoop(&loop);
    pCopy->m_dZ = dZ;
    for (PointNode* p = FirstPoint(*pCopy); p != nullptr; p = p->pNext) p->data += offset;
    pCopy->GetBoundBox();
    return pCopy;
}

CHatch* MovedCopy(CHatch& hatch, CPoint2D const& offset) {
    auto* const pCopy = new CHatch;
    pCopy->m_nID = hatch.m_nID;
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        CEdge2D edge(p->data);
        edge.m_ptStart += offset;
        edge.m_ptEnd += offset;
        pCopy->m_EdgeList.AddTail(edge);
    }
    return pCopy;
}

void AddTagged(PointList& points, CPoint2D point, float fTag) {
    point.m_fAttr1 = fTag;
    points.AddTail(point);
}

}  // namespace

CLayer* CLayer::CopyLoop() {
    BuildLoopList();
    auto* const pLayer = new CLayer;
    ForEachLoop(m_LoopList, [pLayer](tagLoopTreeNode& loop) {
        auto* const pCopy = new tagLoopTreeNode(0);
        pCopy->CopyOtherLoop(&loop);
        pLayer->AddRawLoop(pCopy);
    });
    return pLayer;
}

void CLayer::CopyLayer(CLayer& other, double dx, double dy, double dz) {
    ReleaseAll();
    m_dZ = other.m_dZ + dz;
    m_Box = other.m_Box;
    m_dUnits = other.m_dUnits;
    m_nUser1 = other.m_nUser1;
    m_nUser2 = other.m_nUser2;
    m_dUser1 = other.m_dUser1;
    m_dUser2 = other.m_dUser2;
    m_dUser3 = other.m_dUser3;
    m_nUser3 = other.m_nUser3;
    AddOtherLayer(other, dx, dy, kEverything);
}

void CLayer::AddOtherLayer(CLayer& other, double dx, double dy, int nMask) {
    CPoint2D const offset(dx, dy);
    other.BuildLoopList();
    if ((nMask & kLoops) != 0) {
        ForEachLoop(other.m_LoopList, [&](tagLoopTreeNode& loop) {
            if (loop.m_pPointList != nullptr) AddRawLoop(MovedCopy(loop, offset, m_dZ));
        });
    }
    ForEachHatch(other.m_HatchList, [&](CHatch& hatch) {
        if (hatch.m_EdgeList.IsEmpty() != 0 || !IsWanted(hatch, nMask)) return;
        m_HatchList.AddTail(MovedCopy(hatch, offset));
    });
    GetBoundBox();
}

CLayer* CLayer::ConvertLoopToHatch(unsigned int nID) {
    auto* const pLayer = new CLayer;
    pLayer->m_dZ = m_dZ;
    pLayer->m_dUnits = m_dUnits;
    BuildLoopList();
    ForEachLoop(m_LoopList, [&](tagLoopTreeNode& loop) {
        if (PointCount(loop) < 2) return;
        auto* const pHatch = new CHatch;
        pHatch->m_nID = static_cast<std::int32_t>(nID);
        for (PointNode const* p = FirstPoint(loop); p->pNext != nullptr; p = p->pNext) {
            CEdge2D edge(p->data, p->pNext->data);
            pHatch->m_EdgeList.AddTail(edge);
        }
        pLayer->m_HatchList.AddTail(pHatch);
    });
    return pLayer;
}

tagLoopTreeNode* ConvertHatchToLoop(CHatch* pHatch, double dZ, int nFlag) {
    auto* const pLoop = new tagLoopTreeNode(0);
    pLoop->m_dZ = dZ;
    pLoop->m_nID = pHatch->m_nID;
    pLoop->m_nFlag = nFlag;
    pLoop->m_pPointList = new PointList(kPointBlockSize);
    CPoint2D last(-1e10, -1e10);  // where no edge starts
    for (auto const* p = pHatch->m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        CEdge2D const& edge = p->data;
        if (!(edge.m_ptStart == last)) AddTagged(*pLoop->m_pPointList, edge.m_ptStart, kStartsEdge);
        if (!(edge.m_ptEnd == edge.m_ptStart)) AddTagged(*pLoop->m_pPointList, edge.m_ptEnd, kEndsEdge);
        last = edge.m_ptEnd;
    }
    pLoop->GetBoundBox();
    return pLoop;
}
