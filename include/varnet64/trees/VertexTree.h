#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <new>

#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

class CFacet;

/// The order of two vertices: of a node against a point, or of a node against another.
enum COMPARE { COMPARE_LESS = -1, COMPARE_EQUAL = 0, COMPARE_GREATER = 1 };

/// A vertex that facets share, and a node of the tree that owns it.
class VARNET_API tagVertexNode : public CPoint3D {
public:
    tagVertexNode() : tagVertexNode(CPoint3D()) {}
    explicit tagVertexNode(CPoint3D const& point)
        : CPoint3D(point),
          m_pLeft(nullptr),
          m_pRight(nullptr),
          m_nBalance(0),
          m_nID(0),
          m_pExtrude(nullptr),
          m_dZOffset(0.0),
          m_nFacetNum(0),
          m_ppFacet(nullptr),
          m_nIndex(0),
          m_fWeight{1.0f, 1.0f, 1.0f} {}

    // ---- with the facets that use it: src/mesh/VertexFacets.cpp, src/support/Extrusion.cpp

    /// 1 when the vertex hangs in the air: it is the first, and so a lowest, corner of every facet that uses
    /// it, and none of these holds it. With nMode not 0 a facet holds it that is marked FACET_SUPPORT or
    /// whose normal points up; with nMode 0 one that is marked FACET_SUSPEND or whose normal points down. A
    /// vertex without facets hangs.
    int IsSuspendPoint(int nMode);
    /// The position of the vertex moved by dDistance (millimetres) along the normal of its facets, weighted
    /// with their corner angles. Where the weighted normals cancel to a length below 0.0001 the vertex moves
    /// by that small vector times dDistance.
    CPoint3D CalExtrudePoint(double dDistance);

    // ---- src/trees/VertexTree.cpp

    /// Single vertices come from chunks of many (see the library's slot pool).
    static void* operator new(std::size_t nSize);
    static void* operator new(std::size_t nSize, std::nothrow_t const&) noexcept;
    static void* operator new(std::size_t, void* pPlace) noexcept { return pPlace; }
    static void operator delete(void* pNode, std::size_t nSize) noexcept;

    tagVertexNode* m_pLeft;    ///< side of greater keys
    tagVertexNode* m_pRight;   ///< side of lesser keys
    std::int32_t m_nBalance;   ///< +1 when m_pLeft is deeper, -1 when m_pRight is
    std::uint32_t m_nID;       ///< number in a file under way
    CPoint3D* m_pExtrude;      ///< offset position while a surface is extruded, else null
    double m_dZOffset;         ///< Z compensation now applied
    std::int32_t m_nFacetNum;  ///< entries in m_ppFacet
    /// Facets that use the vertex, in order of their adding; owned by the vertex. A list that the library has
    /// made is for reading: it is neither freed nor reallocated by a host. A host may put a list of its own
    /// in its place, from malloc and with m_nFacetNum entries: the library reallocates it before it adds to
    /// it, and frees it with the vertex.
    CFacet** m_ppFacet;
    std::int32_t m_nIndex;  ///< number of nodes in the tree when this one was made
    float m_fWeight[3];     ///< 1.0; for the host
};

/// The vertices of a mesh: an AVL tree ordered by z, then y, then x, in which corners within a tolerance on
/// each axis become one vertex.
///
/// The tree owns its nodes. Copies are shallow: the two trees then share all nodes, and only one of them may
/// release them. All walks visit a node, then its right subtree, then its left subtree. A tree belongs to one
/// thread at a time.
class VARNET_API CVertexTree {
public:
    CVertexTree();
    CVertexTree(CVertexTree const& other) = default;
    CVertexTree& operator=(CVertexTree const& other) = default;
    /// Releases all nodes.
    virtual ~CVertexTree();

    /// The vertex for the point, found or new; the tree owns it. The point's z is overwritten with the height
    /// of a vertex on the way that lies within the tolerance, whether or not that vertex is the result: near
    /// heights become equal. A new vertex extends the box.
    ///
    /// With finite coordinates, no two vertices of a tree that was filled by AddNode alone have heights that
    /// differ by less than the tolerance without being equal. A coordinate that is not a number counts as
    /// equal to everything it meets.
    tagVertexNode* AddNode(CPoint3D& point);
    /// Sorts all nodes anew after their coordinates have changed. Nodes keep their addresses and are never
    /// merged: one that coincides with another is pushed aside by three tolerances in x. Near heights become
    /// equal. An empty tree stays as it is.
    void ReBuildTree();
    /// Frees all nodes with their facet arrays (not the facets). m_nCount and m_BoundBox stay.
    void ReleaseAll();
    /// Row-vector product with the matrix on every node, then ReBuildTree.
    void Transform(double (*const pMatrix)[4]);
    /// Adds the three offsets to every node and to both corners of the box. The order holds, nothing is
    /// rebuilt.
    void Transfer(double* const pOffset);
    /// Swaps two coordinates of every node, then rebuilds: 1 x and z, 2 y and z, 3 x and y; other modes swap
    /// nothing. An empty tree stays empty.
    void ExchangeXYZ(int nMode);
    /// The box of all nodes, each multiplied by the matrix first where one is given. m_BoundBox is not used.
    CBoundBox3D GetBoundBox(double (*const pMatrix)[4]);
    /// Numbers all nodes in walk order.
    void SetPointID(int nFirst);
    /// Numbers a subtree from the counter and advances it.
    void SetPointID(tagVertexNode* pNode, unsigned int& nCounter);
    /// Numbers all nodes from the counter, and writes x, y and z of each as little-endian 32-bit floats.
    void SavePoint(FILE* pFile, unsigned int& nCounter);

    // ---- with the facets that use the vertices: src/mesh/VertexFacets.cpp

    /// Raises each vertex of the subtree that carries FACET_SUPPORT facets facing down: by dz (millimetres)
    /// where the flattest of them slopes by less than about 26.6 degrees, by less up to 45 degrees, above
    /// that not at all. The offset is kept in the vertex; an earlier one is forgotten, not taken back. No
    /// rebuild.
    void ZCompensate(tagVertexNode* pNode, double dz);
    /// Takes back the offsets that the vertices of the subtree hold. No rebuild.
    void ResumeZCompensate(tagVertexNode* pNode);
    /// Adds all hanging vertices to the list, as tagVertexNode*; see tagVertexNode::IsSuspendPoint.
    void FindSuspendPoint(XR_CList<void*, void*>& list, int nMode);
    void FindSuspendPoint(tagVertexNode* pNode, XR_CList<void*, void*>& list, int nMode);

    tagVertexNode* m_pRoot;
    std::uint32_t m_nCount;
    CBoundBox3D m_BoundBox;
    double m_dTolerance;   ///< millimetres, per axis; a difference of exactly this much is still within
    double m_dTolerance2;  ///< for the host

protected:
    /// The order of the node against the point; takes the node's height into a point within tolerance of it.
    COMPARE CompareVertex(CPoint3D& node, CPoint3D& point);
    /// The order of two nodes in a rebuild, never COMPARE_EQUAL: where all axes agree, pOther is moved to
    /// pNode->x + 3 tolerances.
    COMPARE CompareVertex(tagVertexNode* pNode, tagVertexNode* pOther);
    tagVertexNode* InsertToTree(tagVertexNode*& link, CPoint3D& point, int& nTaller);
    void InsertToTree(tagVertexNode*& link, tagVertexNode* pNode, int& nTaller);
    /// Restores a node whose right side has grown too deep. (The name says the direction of the rotation.)
    void BalanceLeft(tagVertexNode*& link, int& nTaller);
    /// Restores a node whose left side has grown too deep.
    void BalanceRight(tagVertexNode*& link, int& nTaller);
    /// Makes the node's left child the root of the link.
    void RotateLeft(tagVertexNode* pNode, tagVertexNode*& link);
    /// Makes the node's right child the root of the link.
    void RotateRight(tagVertexNode* pNode, tagVertexNode*& link);
    void ReleaseVertexNode(tagVertexNode* pNode);
    void Transform(tagVertexNode* pNode, double (*const pMatrix)[4]);
    void Transfer(tagVertexNode* pNode, double* const pOffset);
    void GetBoundBox(CBoundBox3D* pBox, tagVertexNode* pNode, double (*const pMatrix)[4]);
    void ExchangeXYZ(tagVertexNode* pNode, int nMode);
    void SavePoint(tagVertexNode* pNode, FILE* pFile, unsigned int& nCounter);
};
