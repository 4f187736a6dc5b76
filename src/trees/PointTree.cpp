#include "trees/PointTree.h"

#include "trees/Avl.h"

using namespace varnet;

namespace {

// Coordinates within this distance of each other agree. Millimetres, per axis.
constexpr double kPointTolerance = 1e-6;

// A new point is moved so far in x at each node that agrees with it on both axes. Millimetres.
constexpr double kPushAside = 1e-5;

// A difference of exactly the tolerance agrees, and so does one that is not a number.
COMPARE CompareAxis(double node, double point) {
    double const d = node - point;
    if (d > kPointTolerance) return COMPARE_GREATER;
    if (d < -kPointTolerance) return COMPARE_LESS;
    return COMPARE_EQUAL;
}

// y, then x. A y that agrees is overwritten with the node's.
COMPARE CompareAndSnap(CPoint2D const& node, CPoint2D& point) {
    if (COMPARE const order = CompareAxis(node.y, point.y)) return order;
    point.y = node.y;
    return CompareAxis(node.x, point.x);
}

}  // namespace

CPointTree::CPointTree() : m_pRoot(nullptr), m_nCount(0) {}

CPointTree::~CPointTree() { ReleaseAll(); }

COMPARE CPointTree::CompareVertex(CPoint2D& node, CPoint2D& point) {
    if (COMPARE const order = CompareAndSnap(node, point)) return order;
    point.x += kPushAside;
    return COMPARE_GREATER;
}

COMPARE CPointTree::ComparePoint(tagPointNode* pNode, tagPointNode* pOther) {
    COMPARE const order = CompareAndSnap(*pNode, *pOther);
    return order != COMPARE_EQUAL ? order : COMPARE_GREATER;
}

tagPointNode* CPointTree::AddNode(CPoint2D& point) {
    int nTaller = 0;
    return InsertToTree(m_pRoot, point, nTaller);
}

tagPointNode* CPointTree::InsertToTree(tagPointNode*& link, CPoint2D& point, int& nTaller) {
    return avl::Insert(
        link, nTaller, [this, &point](tagPointNode* pMet) { return CompareVertex(*pMet, point); },
        [this, &point] {
            auto* const pNode = new tagPointNode(point);
            ++m_nCount;
            m_BoundBox += *pNode;
            return pNode;
        });
}

void CPointTree::InsertToTree(tagPointNode*& link, tagPointNode* pNode, int& nTaller) {
    avl::Insert(
        link, nTaller, [this, pNode](tagPointNode* pMet) { return ComparePoint(pMet, pNode); },
        [this, pNode] {
            ++m_nCount;
            m_BoundBox += *pNode;
            return pNode;
        });
}

void CPointTree::BalanceLeft(tagPointNode*& link, int& nTaller) {
    avl::Balance<avl::RightSide>(link, nTaller);
}

void CPointTree::BalanceRight(tagPointNode*& link, int& nTaller) {
    avl::Balance<avl::LeftSide>(link, nTaller);
}

void CPointTree::RotateLeft(tagPointNode* pNode, tagPointNode*& link) {
    avl::Rotate<avl::LeftSide>(pNode, link);
}

void CPointTree::RotateRight(tagPointNode* pNode, tagPointNode*& link) {
    avl::Rotate<avl::RightSide>(pNode, link);
}

void CPointTree::ReBuildTree() {
    if (m_pRoot == nullptr) return;
    m_nCount = 0;
    m_BoundBox = CBoundBox2D();
    m_pRoot = avl::Rebuild(m_pRoot, [this](tagPointNode*& root, tagPointNode* pNode) {
        int nTaller = 0;
        InsertToTree(root, pNode, nTaller);
    });
}

void CPointTree::ReleaseAll() {
    ReleasePointNode(m_pRoot);
    m_pRoot = nullptr;
}

void CPointTree::ReleasePointNode(tagPointNode* pNode) {
    avl::WalkUp(pNode, [](tagPointNode* pReleased) { delete pReleased; });
}

void CPointTree::Transform(double (*const pMatrix)[3]) {
    Transform(m_pRoot, pMatrix);
    ReBuildTree();
}

void CPointTree::Transform(tagPointNode* pNode, double (*const pMatrix)[3]) {
    avl::Walk(pNode, [pMatrix](tagPointNode* pMoved) { pMoved->Transform(pMatrix); });
}

void CPointTree::Transfer(double* const pOffset) {
    CPoint2D const offset(pOffset[0], pOffset[1]);
    Transfer(m_pRoot, pOffset);
    m_BoundBox.m_ptMin += offset;
    m_BoundBox.m_ptMax += offset;
}

void CPointTree::Transfer(tagPointNode* pNode, double* const pOffset) {
    CPoint2D const offset(pOffset[0], pOffset[1]);
    avl::Walk(pNode, [&offset](tagPointNode* pMoved) { *pMoved += offset; });
}
