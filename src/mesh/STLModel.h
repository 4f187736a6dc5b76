#pragma once

#include <cstdint>
#include <cstdio>

#include "foundation/Array.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "mesh/Facet.h"
#include "support/FeatureEdge.h"
#include "support/FeatureSurface.h"
#include "trees/VertexTree.h"

/// Where a model comes from.
struct VARNET_API tagSTLStatus {
    char m_szFileName[260] = {};   ///< the start of the file's path, as bytes; always ends in a zero byte
    char m_szHeader[4096] = {};    ///< the header of the file
    std::int32_t m_nFileType = 0;  ///< 1 ASCII STL, 2 binary STL, 4 OLTP, 0 none or not recognised
    std::int32_t m_nFacetNum = 0;  ///< facets taken in by AddFacet
    std::int32_t m_nExtra = 0;
    std::int32_t m_bGenerated = 0;  ///< 1 on a solid that GenSuspendSTL made
};

/// One solid: triangles with shared vertices, and what the analyses found on them.
///
/// A path argument is a char* that holds a zero-terminated string of 16-bit characters (UTF-16).
///
/// Ownership. The tree owns the vertices, the surfaces of m_SurfaceArray own the facets, the model owns the
/// support surfaces (which refer to the same facets), chains and solids. Copies are shallow, field by field:
/// only one of them may ever be destroyed or emptied, and assignment releases nothing that the target held.
///
/// Invariants. Every facet in a surface stands once in the list of each of its three vertices, which are
/// distinct nodes of the tree; its first corner is a lowest one; a facet that came through AddFacet is not
/// degenerate. Vertices without facets may exist.
///
/// Threads. A model belongs to one thread at a time; different models may be used at the same time. Only the
/// stop flags may be set from another thread while an operation runs, and during a read another thread may
/// look at m_nTotalFacet and m_Status.m_nFacetNum, which the reader writes atomically.
class VARNET_API CSTLModel {
public:
    /// An empty model. Element 0 of m_SurfaceArray, which takes the facets, exists from the start.
    CSTLModel();
    CSTLModel(CSTLModel const& other) = default;
    CSTLModel& operator=(CSTLModel const& other) = default;
    virtual ~CSTLModel();

    // ---- facets

    /// Offers a triangle. It enters the mesh unless a coordinate lies beyond 1e10 in either direction, two of
    /// its corners are one vertex, the mesh has a facet with these three corners (which is flagged
    /// FACET_DUP_SAME or FACET_DUP_REVERSED), or it is degenerate. A refused triangle leaves its corners in
    /// the tree, unless it was out of range. Nothing is reported; m_Status.m_nFacetNum counts what came in.
    ///
    /// The lowest corner is rotated to the front, the earlier one in a tie, and the normal is computed: the
    /// one in the record is ignored. The z of the record's corners may be changed to the heights of near
    /// vertices. Cached measures stay as they are. Not allowed while m_SurfaceArray is empty.
    void AddFacet(tagFACET& facet);
    /// Empties the model: facets, vertices, chains, counts. A model whose tree counts no vertices is not
    /// touched. Cached measures, support surfaces and solids stay: call ClearSupport and ClearSupportSTL
    /// first.
    void ReleaseAllFacet();
    /// Destroys the support surfaces, not their facets.
    void ClearSupport();
    /// Destroys the generated solids.
    void ClearSupportSTL();
    /// Destroys the chains of suspended edges.
    void ClearSuspendEdge();

    // ---- repair and measures

    /// Makes the winding agree within each connected shell, with its first facet as the model. All marks and
    /// all flags but the slope bits are cleared. At an edge of several facets, at most ten are looked at, and
    /// once one agrees, the others keep their winding.
    void FixNormal();
    /// CFacet::CalculateNormalAndResetFlag on every facet: also rotates corners and clears marks and flags.
    void CalculateNormal();
    /// Turns the winding of every facet; marks and flags are cleared as in CalculateNormal.
    void ReverseFacet();
    /// The cached area in square millimetres where it is not 0.0, else CalArea().
    double Area();
    /// The sum of the surfaces' areas, which it caches, as do the surfaces.
    double CalArea();
    /// The cached volume in cubic millimetres where it is not 0.0, else CalVolume().
    double Volume();
    /// The volume, by the divergence theorem, in absolute value, which it caches. It rests on consistent
    /// winding; an open mesh gives a number without meaning.
    double CalVolume();
    /// Row-vector product with the matrix on every vertex; then the tree, normals and measures are made anew.
    /// A mirroring matrix leaves the winding, so that normals point inward afterwards.
    void Transform(double (*const pMatrix)[4]);
    /// Shifts the vertices by three offsets. Nothing else changes; cached measures stay right.
    void Transfer(double* const pOffset);
    /// Raises the vertices of FACET_SUPPORT facets by up to dz (see CVertexTree::ZCompensate), then makes the
    /// tree and normals anew, which clears the flags: a second call finds none, and forgets the offsets of
    /// the first.
    void ZCompensate(double dz);
    /// Takes the last compensation back, then makes the tree and normals anew.
    void ResumeZCompensate();
    /// Offers every facet of the other model to AddFacet, until a stop flag of either model is set. The other
    /// model is not changed; it may not be this one.
    void AddSTLModel(CSTLModel* pOther);
    /// Stops AddSTLModel and other long operations on this model. May be called from another thread.
    void StopCurOperate();
    /// Stops a read into this model, and every later one: nothing clears this flag. May be called from
    /// another thread.
    void StopReadModel();
    /// Clears what StopCurOperate set.
    void ResetStopFlag();
    int IsStopCurOperate();
    /// The number of facets in all surfaces, counted anew.
    int GetFacetsNum();
    /// The number of surfaces (not of facets): 1 for a model that has not been classified.
    int GetCharacterFacetsNum();

    // ---- STL files

    /// 1 ASCII, 2 binary, 0 cannot tell or cannot open. A file of fewer than 80 bytes gives 0. Only bytes 80
    /// to 255 decide: one of 128 or more makes the file binary.
    static int GetSTLType(char* pszPath);
    /// Reads an STL file and adds its facets to the model, which is not emptied first. 1 on success, also
    /// when the file ends before the announced count; 0 when it cannot be opened or told, or when the read
    /// was stopped. What was read so far stays. With bCountOnly not 0 the announced facet count, and no facet
    /// is read; for ASCII that is the file's size / 256, an estimate.
    ///
    /// m_nTotalFacet becomes the announced count before the first facet, for showing progress.
    int ReadSTLFile(char* pszPath, int bCountOnly);
    /// Reads the first 80 bytes of the file into m_Status.m_szHeader, without a terminator. Nothing happens
    /// when the file cannot be opened.
    void ReadSTLHeader(char* pszPath);
    /// Writes binary STL (nType 2). 1 on success; 0 for any other type, or when the file cannot be created.
    /// An empty path means m_Status.m_szFileName. m_Status.m_nFacetNum becomes the number of facets in all
    /// surfaces.
    int SaveSTLFile(char* pszPath, int nType);

private:
    int ReadSTLASCII(char* pszPath, int bCountOnly);
    int ReadSTLBINARY(char* pszPath, int bCountOnly, int nHeaderLen);
    /// 1 when a facet was read, 0 at the end. What a line or a short read does not deliver keeps its value.
    int ReadSTLFacetASCII(FILE* pFile, tagFACET* pFacet);
    int ReadSTLFacetBINARY(FILE* pFile, tagFACET* pFacet);
    int SaveSTLBINARY(char* pszPath);

public:
    CVertexTree m_VertexTree;  ///< its box is the model's box
    CSurfaceArray m_SurfaceArray;
    tagSTLStatus m_Status;
    double m_dArea;    ///< cached, 0.0 stands for not computed
    double m_dVolume;  ///< cached, 0.0 stands for not computed
    std::int32_t m_nPointCounter;
    std::int32_t m_nTotalFacet;  ///< facets that the file being read announces
    std::int32_t m_nMaxBackRef;
    std::int32_t m_nStripNum;
    CSurfaceArray m_SupportArray;                                ///< refers to facets, does not own them
    XR_CArray<CFeatureEdge*, CFeatureEdge*> m_SuspendEdgeArray;  ///< owned
    XR_CList<void*, void*> m_SupportModelList;                   ///< CSTLModel*, owned
    std::int32_t m_nPublicValue;
    std::int32_t m_bStopRead;
    std::int32_t m_bStopOperate;
};
