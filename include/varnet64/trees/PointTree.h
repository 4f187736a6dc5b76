#pragma once

#include <cstdint>

#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/Point.h"
#include "trees/VertexTree.h"

/// A point in the plane, and a node of the tree that owns it.
class VARNET_API tagPointNode : public CPoint2D {
public:
    tagPointNode() : tagPointNode(CPoint2D()) {}
    explicit tagPointNode(CPoint2D const& point)
        : CPoint2D(point),
          m_pLeft(nullptr),
          m_pRight(nullptr),
          m_nBalance(0),
          m_pData1(nullptr),
          m_pData2(nullptr),
          m_nMark(1) {}

    tagPointNode* m_pLeft;    ///< side of greater keys
    tagPointNode* m_pRight;   ///< side of lesser keys
    std::int32_t m_nBalance;  ///< +1 when m_pLeft is deeper, -1 when m_pRight is
    void* m_pData1;           ///< for the host
    void* m_pData2;           ///< for the host
    std::int32_t m_nMark;     ///< 1; for the host
};

/// Points in the plane: an AVL tree ordered by y, then x, balanced as CVertexTree is. It never merges: every
/// point that is added becomes a node.
///
/// The tree owns its nodes. Copies are shallow: the two trees then share all nodes, and only one of them may
/// release them. All walks visit a node, then its right subtree, then its left subtree. A tree belongs to one
/// thread at a time.
class VARNET_API CPointTree {
public:
    CPointTree();
    CPointTree(CPointTree const& other) = default;
    CPointTree& operator=(CPointTree const& other) = default;
    /// Releases all nodes.
    virtual ~CPointTree();

    /// A new node for the point, attributes included; the tree owns it. The point is changed on its way: its
    /// y takes the value of each node met within 0.000001 of it, and its x grows by 0.00001 at each node that
    /// agrees in both. The node is made from what the point is then, and extends the box. A coordinate that
    /// is not a number counts as equal to everything it meets.
    tagPointNode* AddNode(CPoint2D& point);
    /// Sorts all nodes anew after their coordinates have changed. Nodes keep their addresses, all of them
    /// stay, and x is never changed; near y become equal. An empty tree stays as it is.
    void ReBuildTree();
    /// Frees all nodes. m_nCount and m_BoundBox stay.
    void ReleaseAll();
    /// Row-vector product with the matrix on every node, then ReBuildTree.
    void Transform(double (*const pMatrix)[3]);
    /// Adds the two offsets to every node and to both corners of the box. The order holds, nothing is
    /// rebuilt.
    void Transfer(double* const pOffset);

    tagPointNode* m_pRoot;
    std::uint32_t m_nCount;
    CBoundBox2D m_BoundBox;

protected:
    /// The order of the node against the point, never COMPARE_EQUAL. Takes the node's y into a point within
    /// tolerance of it, and moves the point in x where both axes agree.
    COMPARE CompareVertex(CPoint2D& node, CPoint2D& point);
    /// The order of two nodes in a rebuild, never COMPARE_EQUAL. Takes the y of pNode into pOther where they
    /// are within tolerance.
    COMPARE ComparePoint(tagPointNode* pNode, tagPointNode* pOther);
    tagPointNode* InsertToTree(tagPointNode*& link, CPoint2D& point, int& nTaller);
    void InsertToTree(tagPointNode*& link, tagPointNode* pNode, int& nTaller);
    /// Restores a node whose right side has grown too deep. (The name says the direction of the rotation.)
    void BalanceLeft(tagPointNode*& link, int& nTaller);
    /// Restores a node whose left side has grown too deep.
    void BalanceRight(tagPointNode*& link, int& nTaller);
    /// Makes the node's left child the root of the link.
    void RotateLeft(tagPointNode* pNode, tagPointNode*& link);
    /// Makes the node's right child the root of the link.
    void RotateRight(tagPointNode* pNode, tagPointNode*& link);
    void ReleasePointNode(tagPointNode* pNode);
    void Transform(tagPointNode* pNode, double (*const pMatrix)[3]);
    void Transfer(tagPointNode* pNode, double* const pOffset);
};
