#pragma once

#include <cstdint>

#include "foundation/Array.h"
#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"
#include "mesh/Facet.h"
#include "trees/VertexTree.h"

class CLayer;
class CSTLModel;

/// Bits of CFeatureSurface::m_nSurfaceFlag.
enum : std::uint32_t {
    FS_SUPPORT_SURFACE = 0x100,  ///< found as a support surface
    FS_SMALL_SUSPENDED = 0x1000  ///< below the area limit, kept because it hangs free
};

/// Bits of CFeatureSurface::m_nSupportFlag.
enum : std::uint32_t {
    FS_NEEDS_SUPPORT = 0x100  ///< gets a support solid
};

/// A group of facets that is looked at as one surface, with its rim and cached measures.
///
/// The surface owns its facets and destroys them with itself. Whoever holds a surface over facets of another
/// owner first frees the storage of m_aFacet (RemoveAll), as CSTLModel::ClearSupport does.
///
/// Cached values are refreshed by name only: nothing invalidates them when facets are added or moved. An area
/// that is not above 0.0 and a lowest z of 1e10 count as not computed.
class VARNET_API CFeatureSurface {
public:
    /// An empty surface. Its colour is the next of a palette of eight, which all surfaces of the process
    /// share.
    CFeatureSurface();
    /// Copies every field as it stands: facets, rim and offset points are then shared. For values that are
    /// read, not for a second owner. The palette does not move on.
    CFeatureSurface(CFeatureSurface const& other);
    /// Destroys the facets of this surface, then takes the other's facet pointers. No other field changes.
    CFeatureSurface const& operator=(CFeatureSurface const& other);
    /// Destroys the facets, empties the lists.
    virtual ~CFeatureSurface();

    /// Destroys every facet that is not null and frees the array's storage.
    void RemoveAllFacet();

    /// The cached area in square millimetres where it is above 0.0, else CalArea().
    double Area();
    /// The sum of CFacet::Area over the facets, which it caches.
    double CalArea();
    /// The cached projected area where it is above 0.0, else CalProjectArea().
    double ProjectArea();
    /// The sum of CFacet::ProjectArea over the facets, which it caches.
    double CalProjectArea();
    /// The cached lowest z where it is below 1e10, else CalMinZ().
    double MinZ();
    /// The lowest z of all corners, at most 1e10, which it caches.
    double CalMinZ();
    /// The box of all corners, always computed anew and kept in m_BoundBox; the empty box without facets.
    CBoundBox3D GetBoundBox();

    /// Rebuilds m_EdgeList: the edges without a neighbour in this surface, directed as their facets are
    /// wound, facet by facet in the order V1V2, V2V3, V3V1, not chained. Returns 1.
    ///
    /// Uses m_nRegion of the surface's facets and leaves it 0. A facet outside the surface whose m_nRegion is
    /// not 0 counts as a member.
    int FindSurfaceEdge();
    /// Rebuilds m_VergeList: the same edges, each as its first and its second vertex.
    void FindSurfaceVerge();
    /// Empties m_EdgeList. In spite of the name m_VergeList stays.
    void ClearVergeArray();
    /// Empties m_ExtrudeList and clears m_pExtrude of all corners.
    void ClearUsedPoint();

    // ---- support: src/support/SupportDetection.cpp, SupportSolids.cpp

    /// 1 when the surface hangs free; 0 when a wall holds it, and then the edge that shows it is added to the
    /// head of m_EdgeList. Looked at are the edges with a vertex less than 0.1 mm above the lowest point of
    /// the surface: a wall is a neighbour outside the surface that goes off on the outer side of the facet
    /// (JudgeNeighborSide 1, tolerance 0.01). A wall that meets the surface higher up does not count, and a
    /// base on the build plane hangs free like any other. 1 without facets.
    ///
    /// Uses m_nRegion as FindSurfaceEdge does.
    int IsSuspendSupport();
    /// 0 when a neighbour that is not marked FACET_SUPPORT holds an edge of a facet (CFacet::IsSupportEdge),
    /// else 1. Rests on the marks of the last FindSupportSurface or FindSuspendEdge. Changes nothing.
    int IsSuspendSurface();
    /// Adds the walls that reach dDistance (millimetres) below the rim to the model, two facets for each edge
    /// of m_EdgeList (see FindSurfaceEdge), wound to point out of the solid; a distance of 0.0 or below leads
    /// up instead. Without a model, a new one is made, which the caller owns. Returns the model, with the
    /// header "EXTEND SUPPORT STRUCT" and the name "extend.stl", 8-bit text. Facets with a corner that is not
    /// finite are left out.
    CSTLModel* ExtendEdge(double dDistance, CSTLModel* pModel);
    /// The same with walls that reach the height dZ. Where the rim lies on that height already, a facet has
    /// no area and is dropped.
    CSTLModel* ExtendEdgeTo(double dZ, CSTLModel* pModel);

    // ---- offset shells: src/support/Extrusion.cpp

    /// Computes the offset position (tagVertexNode::CalExtrudePoint) of each corner once, keeps them in
    /// m_ExtrudeList and points m_pExtrude of the vertices at them. What was there before goes;
    /// ClearUsedPoint takes it back.
    void CalExtrudePoint(double dDistance);
    /// CalExtrudePoint, then adds a copy of the surface at the offset positions to the model, with the
    /// winding turned. m_pExtrude of the corners stays, for ExtrudeSurfaceVerge. The model may be the
    /// surface's own.
    void ExtrudeSurface(CSTLModel* pModel, double dDistance);
    /// Adds the strips between the rim and the offset rim to the model, AddExtrudeEdge for each edge in the
    /// order of FindSurfaceEdge. The offset positions are those that ExtrudeSurface has left; the distance
    /// must be the same.
    void ExtrudeSurfaceVerge(CSTLModel* pModel, double dDistance);
    /// Adds the two facets between an edge and its offset to the model. The winding turns with the sign of
    /// the distance, which is not used otherwise. m_pExtrude of both vertices must be set. Facets with a
    /// corner that is not finite are left out.
    void AddExtrudeEdge(CSTLModel* pModel, double dDistance, tagVertexNode* pA, tagVertexNode* pB);

    // ---- without effect: src/support/FeatureSurface.cpp

    /// Does nothing; there for hosts that link against it.
    void ClearSmallVerge(double);
    /// There is no projected contour: null.
    CLayer* GetProjectCounter();
    /// The following say 0 for every surface.
    int IsBelow(tagVertexNode*);
    int IsPlane(double);
    int IsPrism(double);
    int IsSphere(double);
    int JudgeSurfaceType();

    XR_CArray<CFacet*, CFacet*> m_aFacet;  ///< owned, in the order of their adding
    std::uint32_t m_nColor;
    XR_CList<CEdge3D, CEdge3D&> m_EdgeList;                ///< the rim as coordinates
    XR_CList<tagVertexNode*, tagVertexNode*> m_VergeList;  ///< the rim as pairs of vertices
    std::uint32_t m_nSurfaceFlag;
    std::uint32_t m_nSupportFlag;
    double m_dArea;
    double m_dProjectArea;
    double m_dMinZ;
    XR_CList<CPoint3D, CPoint3D&> m_ExtrudeList;  ///< offset positions of the corners
    CBoundBox3D m_BoundBox;                       ///< what GetBoundBox found last
};

/// An array of surfaces, which it owns and destroys with itself. Copies are shallow: only one of them may be
/// destroyed or emptied, and assignment releases nothing that the target held.
class VARNET_API CSurfaceArray {
public:
    CSurfaceArray() = default;
    CSurfaceArray(CSurfaceArray const&) = default;
    CSurfaceArray& operator=(CSurfaceArray const&) = default;
    virtual ~CSurfaceArray();

    /// Destroys every surface that is not null, with its facets, and frees the array's storage.
    void RemoveAllSurface();

    XR_CArray<CFeatureSurface*, CFeatureSurface*> m_aSurface;
};

/// On which side of the facet's plane its neighbour across the edge A-B goes off: 1 on the outer side, -1 on
/// the inner side, 0 in the plane, where the sine of the angle to it is below dTol in absolute value. Taken
/// from the corner of the neighbour that is not on the edge, and the facet's stored normal.
VARNET_API int JudgeNeighborSide(CFacet* pFacet, CFacet* pNeighbor, tagVertexNode* pA, tagVertexNode* pB,
                                 double dTol);
