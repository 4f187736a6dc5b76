// Copying layers, and turning loops into hatches and hatches into paths.

#include "contours/Layer.h"
#include "contours/LoopWalk.h"
#include "foundation/Require.h"
#include "foundation/memory/AddNew.h"

using namespace varnet;

namespace {

// The kinds of path that CLayer::AddOtherLayer brings along, as bits of its mask.
constexpr int kLoops = 1;
constexpr int kFirstGroupHatches = 2;
constexpr int kSecondGroupHatches = 4;
constexpr int kEverything = 255;

// What ConvertHatchToLoop writes to the first attribute of a point.
constexpr float kStartsEdge = -12301.0f;
constexpr float kEndsEdge = -12302.0f;

bool IsWanted(CHatch const& hatch, int nMask) {
    return (nMask & (hatch.m_nID < kSecondGroup ? kFirstGroupHatches : kSecondGroupHatches)) != 0;
}

std::unique_ptr<tagLoopTreeNode> CopyOf(tagLoopTreeNode& loop) {
    auto copy = std::make_unique<tagLoopTreeNode>(0);
    copy->CopyOtherLoop(&loop);
    return copy;
}

std::unique_ptr<tagLoopTreeNode> MovedCopy(tagLoopTreeNode& loop, CPoint2D const& offset, double dZ) {
    auto copy = CopyOf(loop);
    copy->m_dZ = dZ;
    for (PointNode* p = FirstPoint(*copy); p != nullptr; p = p->pNext) p->data += offset;
    copy->GetBoundBox();
    return copy;
}

std::unique_ptr<CHatch> MovedCopy(CHatch& hatch, CPoint2D const& offset) {
    auto copy = std::make_unique<CHatch>();
    copy->m_nID = hatch.m_nID;
    for (auto const* p = hatch.m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        CEdge2D edge(p->data);
        edge.m_ptStart += offset;
        edge.m_ptEnd += offset;
        copy->m_EdgeList.AddTail(edge);
    }
    return copy;
}

void AddTagged(PointList& points, CPoint2D point, float fTag) {
    point.m_fAttr1 = fTag;
    points.AddTail(point);
}

}  // namespace

CLayer* CLayer::CopyLoop() {
    BuildLoopList();
    auto layer = std::make_unique<CLayer>();
    ForEachLoop(m_LoopList,
                [&layer](tagLoopTreeNode& loop) { AddOwned(layer->m_RawLoopList, CopyOf(loop)); });
    return layer.release();
}

void CLayer::CopyLayer(CLayer& other, double dx, double dy, double dz) {
    VARNET_REQUIRE(&other != this);
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
    VARNET_REQUIRE(&other != this);
    CPoint2D const offset(dx, dy);
    other.BuildLoopList();
    if ((nMask & kLoops) != 0) {
        ForEachLoop(other.m_LoopList, [&](tagLoopTreeNode& loop) {
            if (loop.m_pPointList != nullptr) AddOwned(m_RawLoopList, MovedCopy(loop, offset, m_dZ));
        });
    }
    ForEachHatch(other.m_HatchList, [&](CHatch& hatch) {
        if (hatch.m_EdgeList.IsEmpty() != 0 || !IsWanted(hatch, nMask)) return;
        AddOwned(m_HatchList, MovedCopy(hatch, offset));
    });
    GetBoundBox();
}

CLayer* CLayer::ConvertLoopToHatch(unsigned int nID) {
    auto layer = std::make_unique<CLayer>();
    layer->m_dZ = m_dZ;
    layer->m_dUnits = m_dUnits;
    BuildLoopList();
    ForEachLoop(m_LoopList, [&](tagLoopTreeNode& loop) {
        if (PointCount(loop) < 2) return;
        CHatch& hatch = AddNew<CHatch>(layer->m_HatchList);
        hatch.m_nID = static_cast<std::int32_t>(nID);
        for (PointNode const* p = FirstPoint(loop); p->pNext != nullptr; p = p->pNext) {
            CEdge2D edge(p->data, p->pNext->data);
            hatch.m_EdgeList.AddTail(edge);
        }
    });
    return layer.release();
}

tagLoopTreeNode* ConvertHatchToLoop(CHatch* pHatch, double dZ, int nFlag) {
    auto path = NewPath();
    path->m_dZ = dZ;
    path->m_nID = pHatch->m_nID;
    path->m_nFlag = nFlag;
    PointList& points = *path->m_pPointList;
    CPoint2D last(-1e10, -1e10);  // where no edge starts
    for (auto const* p = pHatch->m_EdgeList.m_pNodeHead; p != nullptr; p = p->pNext) {
        CEdge2D const& edge = p->data;
        if (!(edge.m_ptStart == last)) AddTagged(points, edge.m_ptStart, kStartsEdge);
        if (!(edge.m_ptEnd == edge.m_ptStart)) AddTagged(points, edge.m_ptEnd, kEndsEdge);
        last = edge.m_ptEnd;
    }
    path->GetBoundBox();
    return path.release();
}
