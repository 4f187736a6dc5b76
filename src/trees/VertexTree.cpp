#include "trees/VertexTree.h"

#include <utility>

#include "foundation/files/ByteStream.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/memory/SlotPool.h"
#include "trees/Avl.h"
#include "trees/FacetList.h"
#include "trees/VertexInsertion.h"

using namespace varnet;

using vertex_insertion::CompareAndSnap;
using vertex_insertion::InsertPoint;
using vertex_insertion::NoWatch;

static_assert(sizeof(tagVertexNode) <= kVertexSlotSize);

namespace {

// Corners within this distance on every axis are one vertex. Millimetres.
constexpr double kVertexTolerance = 0.0001;

// A vertex that has come to lie on another is pushed aside by this many tolerances.
constexpr double kPushAside = 3.0;

void WriteVertex(tagVertexNode const& node, ByteWriter& writer) {
    unsigned char* const pBytes = writer.Room(12);
    StoreFloat(pBytes, static_cast<float>(node.x));
    StoreFloat(pBytes + 4, static_cast<float>(node.y));
    StoreFloat(pBytes + 8, static_cast<float>(node.z));
}

}  // namespace

void* tagVertexNode::operator new(std::size_t nSize) {
    return NewInSlot<tagVertexNode>(nSize, [] {
        void* const pSlot = AllocateVertexSlot();
        facet_list::ForgetBlock(pSlot);
        return pSlot;
    });
}

void* tagVertexNode::operator new(std::size_t nSize, std::nothrow_t const&) noexcept {
    return NewOrNull<tagVertexNode>(nSize);
}

void tagVertexNode::operator delete(void* pNode, std::size_t nSize) noexcept {
    DeleteFromSlot<tagVertexNode>(pNode, nSize, FreeVertexSlot);
}

CVertexTree::CVertexTree()
    : m_pRoot(nullptr), m_nCount(0), m_dTolerance(kVertexTolerance), m_dTolerance2(kVertexTolerance) {}

CVertexTree::~CVertexTree() { ReleaseAll(); }

COMPARE CVertexTree::CompareVertex(CPoint3D& node, CPoint3D& point) {
    NoWatch watch;
    return CompareAndSnap(node, point.x, point.y, point.z, m_dTolerance, watch);
}

COMPARE CVertexTree::CompareVertex(tagVertexNode* pNode, tagVertexNode* pOther) {
    if (COMPARE const order = CompareVertex(*pNode, *pOther)) return order;
    pOther->x = pNode->x + kPushAside * m_dTolerance;
    return COMPARE_GREATER;
}

tagVertexNode* CVertexTree::AddNode(CPoint3D& point) {
    int nTaller = 0;
    return InsertToTree(m_pRoot, point, nTaller);
}

tagVertexNode* CVertexTree::InsertToTree(tagVertexNode*& link, CPoint3D& point, int& nTaller) {
    NoWatch watch;
    avl::Way<tagVertexNode> way(link);
    return InsertPoint(*this, way, point, nTaller, watch);
}

void CVertexTree::InsertToTree(tagVertexNode*& link, tagVertexNode* pNode, int& nTaller) {
    avl::Insert(
        link, nTaller, [this, pNode](tagVertexNode* pMet) { return CompareVertex(pMet, pNode); },
        [this, pNode] {
            ++m_nCount;
            m_BoundBox += *pNode;
            return pNode;
        });
}

void CVertexTree::BalanceLeft(tagVertexNode*& link, int& nTaller) {
    avl::Balance<avl::RightSide>(link, nTaller);
}

void CVertexTree::BalanceRight(tagVertexNode*& link, int& nTaller) {
    avl::Balance<avl::LeftSide>(link, nTaller);
}

void CVertexTree::RotateLeft(tagVertexNode* pNode, tagVertexNode*& link) {
    avl::Rotate<avl::LeftSide>(pNode, link);
}

void CVertexTree::RotateRight(tagVertexNode* pNode, tagVertexNode*& link) {
    avl::Rotate<avl::RightSide>(pNode, link);
}

void CVertexTree::ReBuildTree() {
    if (m_pRoot == nullptr) return;
    m_nCount = 0;
    m_BoundBox = CBoundBox3D();
    m_pRoot = avl::Rebuild(m_pRoot, [this](tagVertexNode*& root, tagVertexNode* pNode) {
        int nTaller = 0;
        InsertToTree(root, pNode, nTaller);
    });
}

void CVertexTree::ReleaseAll() {
    ReleaseVertexNode(m_pRoot);
    m_pRoot = nullptr;
}

void CVertexTree::ReleaseVertexNode(tagVertexNode* pNode) {
    avl::WalkUp(pNode, [](tagVertexNode* pReleased) {
        facet_list::Free(*pReleased);
        delete pReleased;
    });
}

void CVertexTree::Transform(double (*const pMatrix)[4]) {
    Transform(m_pRoot, pMatrix);
    ReBuildTree();
}

void CVertexTree::Transform(tagVertexNode* pNode, double (*const pMatrix)[4]) {
    avl::Walk(pNode, [pMatrix](tagVertexNode* pMoved) { pMoved->Transform(pMatrix); });
}

void CVertexTree::Transfer(double* const pOffset) {
    CPoint3D const offset(pOffset[0], pOffset[1], pOffset[2]);
    Transfer(m_pRoot, pOffset);
    m_BoundBox.m_ptMin += offset;
    m_BoundBox.m_ptMax += offset;
}

void CVertexTree::Transfer(tagVertexNode* pNode, double* const pOffset) {
    CPoint3D const offset(pOffset[0], pOffset[1], pOffset[2]);
    avl::Walk(pNode, [&offset](tagVertexNode* pMoved) { *pMoved += offset; });
}

void CVertexTree::ExchangeXYZ(int nMode) {
    ExchangeXYZ(m_pRoot, nMode);
    ReBuildTree();
}

void CVertexTree::ExchangeXYZ(tagVertexNode* pNode, int nMode) {
    avl::Walk(pNode, [nMode](tagVertexNode* pSwapped) {
        if (nMode == 1) std::swap(pSwapped->x, pSwapped->z);
        if (nMode == 2) std::swap(pSwapped->y, pSwapped->z);
        if (nMode == 3) std::swap(pSwapped->x, pSwapped->y);
    });
}

CBoundBox3D CVertexTree::GetBoundBox(double (*const pMatrix)[4]) {
    CBoundBox3D box;
    GetBoundBox(&box, m_pRoot, pMatrix);
    return box;
}

void CVertexTree::GetBoundBox(CBoundBox3D* pBox, tagVertexNode* pNode, double (*const pMatrix)[4]) {
    avl::Walk(pNode, [pBox, pMatrix](tagVertexNode* pVisited) {
        CPoint3D point(*pVisited);
        if (pMatrix != nullptr) point.Transform(pMatrix);
        *pBox += point;
    });
}

void CVertexTree::SetPointID(int nFirst) {
    auto nCounter = static_cast<unsigned int>(nFirst);
    SetPointID(m_pRoot, nCounter);
}

void CVertexTree::SetPointID(tagVertexNode* pNode, unsigned int& nCounter) {
    avl::Walk(pNode, [&nCounter](tagVertexNode* pNumbered) { pNumbered->m_nID = nCounter++; });
}

void CVertexTree::SavePoint(FILE* pFile, unsigned int& nCounter) { SavePoint(m_pRoot, pFile, nCounter); }

void CVertexTree::SavePoint(tagVertexNode* pNode, FILE* pFile, unsigned int& nCounter) {
    ByteWriter writer(pFile);
    avl::Walk(pNode, [&writer, &nCounter](tagVertexNode* pSaved) {
        pSaved->m_nID = nCounter++;
        WriteVertex(*pSaved, writer);
    });
}
