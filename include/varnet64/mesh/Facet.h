#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "foundation/Export.h"
#include "foundation/Point.h"
#include "trees/VertexTree.h"

/// Bits of CFacet::m_nFlag. Exactly one of the two slope bits is present in every facet of a mesh.
enum : std::uint32_t {
    FACET_SLOPE_LOW = 0x1,   ///< m_pVertex3 lies below m_pVertex2
    FACET_SLOPE_HIGH = 0x2,  ///< m_pVertex3 is at least as high as m_pVertex2
    FACET_SUPPORT = 0x10,    ///< the facet needs support below it
    FACET_SUSPEND = 0x20,    ///< marked by the search for suspended edges
    FACET_DUP_REVERSED =
        0x100,              ///< the same triangle was offered again with the opposite winding, and dropped
    FACET_DUP_SAME = 0x200  ///< the same triangle was offered again with the same winding, and dropped
};

/// A plain triangle, as it is handed to CSTLModel::AddFacet. Coordinates in millimetres.
struct VARNET_API tagFACET {
    CPoint3D m_ptVertex[3];
    float m_fNormal[3] = {0.0f, 0.0f, 0.0f};
};

/// A triangle of a mesh: three shared vertices in winding order, counter-clockwise seen from outside, and the
/// unit normal in float. m_pVertex1 is a lowest corner. The normal (1, 1, 1) marks a degenerate facet.
///
/// Vertices belong to the tree, facets to the surface that holds them. Neighbours are found through the facet
/// lists of the vertices; edges are taken in the order V1V2, V2V3, V3V1.
class VARNET_API CFacet {
public:
    /// No vertices, everything 0.
    CFacet();
    /// Vertices in the given order, and the three floats of the normal. Nothing is rotated, linked or
    /// computed.
    CFacet(tagVertexNode* pVertex1, tagVertexNode* pVertex2, tagVertexNode* pVertex3, float* pNormal);
    /// Copies vertices and normal; mark and flags are 0.
    CFacet(CFacet const& other);
    /// Copies vertices and normal; mark and flags of this facet stay.
    CFacet& operator=(CFacet const& other);
    virtual ~CFacet() = default;

    /// The unit normal from corners and winding; (1, 1, 1) where the doubled area is not above 1e-10.
    void CalculateNormal();
    /// CalculateNormal, then the lowest corner is rotated to the front, m_nRegion becomes 0, and of all flags
    /// only the slope bit stays, computed anew.
    void CalculateNormalAndResetFlag();
    /// Turns the winding: swaps m_pVertex2 and m_pVertex3, then CalculateNormalAndResetFlag.
    void Reverse();

    /// Area in square millimetres, projected on the stored normal and computed in float; it rests on a
    /// current normal and loses digits far from the origin.
    double Area();
    /// Area of the projection on the XY plane, in double.
    double ProjectArea();
    /// 1 when the normal's z is above 0; a level normal is not up.
    int IsUp();
    /// -1 when the normal's z is below -dTol, 1 when it is above dTol, else 0.
    int IsLevel(double dTol);
    /// Class of the normal's direction: 0 where |z| is below dTol; 1 to 4 where z is above 0, 5 to 8 where it
    /// is not, and within these by whether y and x are above +dTol: both, y only, x only, none.
    int EightClassify(double dTol);
    /// 1 when the facet is marked FACET_SUPPORT or FACET_SUSPEND, or when the direction away from the facet
    /// across the edge does not go down. 0 when a and b are not two corners of the facet.
    int IsSupportEdge(tagVertexNode* a, tagVertexNode* b);

    /// The first facet other than this one, in the order of a's facet list, that has b as a corner; null when
    /// there is none. The winding is not looked at.
    CFacet* FindNeighborFacet(tagVertexNode* a, tagVertexNode* b);
    /// As FindNeighborFacet, but the facet must run from b to a: its winding agrees with this one's, when
    /// this one runs from a to b.
    CFacet* FindNeighborFacetRightNormal(tagVertexNode* a, tagVertexNode* b);
    /// Of the facets that FindNeighborFacet looks at, the first with m_nRegion not 0; where none has, the
    /// last.
    CFacet* FindNeighborFacetSameRegion(tagVertexNode* a, tagVertexNode* b);
    /// Puts up to nMax neighbours across the edge into ppOut, in the order of a's facet list; returns how
    /// many.
    int FindNeighborFacets(tagVertexNode* a, tagVertexNode* b, CFacet** ppOut, int nMax);

    /// Single facets come from chunks of many (see the library's slot pool).
    static void* operator new(std::size_t nSize);
    static void* operator new(std::size_t nSize, std::nothrow_t const&) noexcept;
    static void* operator new(std::size_t, void* pPlace) noexcept { return pPlace; }
    static void operator delete(void* pFacet, std::size_t nSize) noexcept;

    tagVertexNode* m_pVertex1;
    tagVertexNode* m_pVertex2;
    tagVertexNode* m_pVertex3;
    float m_fNormal[3];
    std::int32_t m_nRegion;  ///< working mark of every walk over the mesh
    std::uint32_t m_nFlag;
};
