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

    // ---- facets: src/mesh/FacetIntake.cpp, STLModel.cpp

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

    // ---- repair and measures: src/mesh/Winding.cpp, Measures.cpp

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

    // ---- shells: src/mesh/Disjoin.cpp

    /// Copies each connected shell to a new model, which the caller owns, and adds the models (CSTLModel*) to
    /// the list, in the order of the shells' first facets. Facets are connected as FindNeighborFacet connects
    /// them, across edges, whatever their winding: where an edge has more than two, only the first other one
    /// on each way. Facets that stand in no surface belong to no shell. They are offered to AddFacet of the
    /// new model breadth first, so that repeated ones vanish. This model is not changed but for m_nRegion,
    /// which is 0 on all facets that were reached and 1 on those that a stop has left out.
    ///
    /// The n-th shell of "part.stl" is named "part_n.STL": the suffix takes the place of the last four
    /// characters of m_Status.m_szFileName, or of all of a shorter name. What does not fit into the field is
    /// cut off; the name always ends in a zero byte.
    ///
    /// StopCurOperate ends it: the shells before the present one are whole, the present one holds what was
    /// found until then, and there is nothing for the rest.
    void Disjoin(XR_CList<void*, void*>& ShellList);

    // ---- feature surfaces: src/support/Classification.cpp, LevelPlanes.cpp

    /// Divides the facets anew into connected surfaces of facets of one class. m_SurfaceArray is rebuilt: its
    /// old surfaces are destroyed, their facets live on. Surfaces come in the order of their first facets,
    /// the facets of a surface in the order of a breadth-first walk from the first one.
    ///
    /// The judge is called as judge(n, seed, null, d) for the class of a new surface, with n the class of the
    /// surface before, at first the number of surfaces on entry; and as judge(class, null, candidate, d) for
    /// whether a facet beside the surface joins it. m_nRegion is 0 on all facets afterwards. A model without
    /// facets is left without surfaces: AddFacet is not allowed then. Support surfaces and chains stay.
    void ClassifySurf(int (*pJudge)(int, CFacet*, CFacet*, double), double d);
    /// The same with a judge that compares neighbours: judge(k, member, candidate, d) decides whether the
    /// facet across the member's edge k (1 V1V2, 2 V2V3, 3 V3V1) joins the member's surface.
    void ExtractFeatherSurf(int (*pJudge)(int, CFacet*, CFacet*, double), double d);
    /// Merges each surface of at most 10 facets and at most 2 square millimetres with the surface of the
    /// neighbouring facet whose normal is nearest to that of the facet beside it, if they differ by less than
    /// 60 degrees over the root of the area, 120 at most. In the order of the surfaces, each as the merges
    /// before have left it; cached areas are those from the beginning. Surfaces left without facets are taken
    /// out of the array and stay allocated: nothing of the library refers to them any more, and a host that
    /// holds one may destroy it. m_nRegion is 0 on all facets afterwards.
    void UnionSmallSurface();
    /// ExtractFeatherSurf with JionJudgeFun at 30 degrees, UnionSmallSurface, then FindSurfaceVerge on every
    /// surface.
    void ExtractSurfaceAndEdge();
    /// A judge for ClassifySurf: the class is CFacet::EightClassify(d).
    static int EightClassifyFun(int nClass, CFacet* pSeed, CFacet* pCandidate, double d);
    /// A judge for ExtractFeatherSurf: 1 when the squared distance of the two unit normals, 4 sin(t / 2)^2 at
    /// an angle t, is below d.
    static int JionJudgeFun(int nEdge, CFacet* pMember, CFacet* pCandidate, double d);
    /// A judge for ExtractFeatherSurf that lets everyone join, and turns a candidate whose winding does not
    /// agree with the member's, by CFacet::Reverse. d is ignored.
    static int NormalJudgeFun(int nEdge, CFacet* pMember, CFacet* pCandidate, double d);
    /// Adds to the caller's array a new surface for each connected group of level facets, up or down: those
    /// with dTolerance > 1 - |z of the normal|. Orders are those of ClassifySurf. The surfaces refer to
    /// facets that stay the model's: the caller frees their m_aFacet (RemoveAll) before they are destroyed.
    /// m_SurfaceArray is not changed; m_nRegion is 0 on all facets afterwards.
    void ExtractHorizonPlane(double dTolerance, CSurfaceArray* pResult);

    // ---- support: src/support/SupportDetection.cpp, SuspendedEdges.cpp, SupportSolids.cpp

    /// Fills m_SupportArray, which is emptied first, with the connected regions of facets that face down by
    /// less than dAngle degrees from straight down, and returns their number. Facets are connected by common
    /// edges where nMode is not 0, by common vertices where it is 0. They get FACET_SUPPORT, all others lose
    /// it. The surfaces have FS_SUPPORT_SURFACE, FS_NEEDS_SUPPORT and their box; orders are those of
    /// ClassifySurf. The grouping in m_SurfaceArray does not matter. m_nRegion is 0 on all facets afterwards.
    ///
    /// The angle is not checked: one outside 0 to 180 gives what its cosine gives, one that is not a number
    /// finds nothing.
    int FindSupportSurface(double dAngle, int nMode);
    /// Sorts out the support surfaces whose projected area in square millimetres is below dMinArea. One that
    /// hangs free (IsSuspendSupport) is kept and gets FS_SMALL_SUSPENDED; one that leans on a wall loses
    /// FS_NEEDS_SUPPORT. All others have FS_NEEDS_SUPPORT afterwards, those too that an earlier call dropped.
    /// Returns how many have it.
    int FilterUnSuspendSupport(double dMinArea);
    /// Replaces m_SuspendEdgeArray by the chains of suspended edges (IsSuspendEdge) of one kind: nMode -1 the
    /// keels below the part, nMode 1 the bottoms of grooves in its upper side. Returns the number of chains
    /// longer than dMinLength (millimetres), which get FE_SELECTED; shorter ones stay in the array.
    ///
    /// Facets less than dUpAngle degrees from straight up get FACET_SUSPEND, those less than dDownAngle from
    /// straight down FACET_SUPPORT, all others lose them; their edges do not count. Neither do edges that
    /// slope by the angle of the mode less one degree, or more. Angles and mode are not checked: any other
    /// mode than 1 goes by dDownAngle, and mode 0 makes chains of all edges that are not suspended. m_nRegion
    /// is 0 on all facets afterwards.
    ///
    /// Chains grow in the order of their edges. At a vertex of three suspended edges or more the first one
    /// goes on. The chain of a ring holds the edge that closes it at both ends. The array has the capacity of
    /// one to which an element was added for each edge.
    int FindSuspendEdge(int nMode, double dUpAngle, double dDownAngle, double dMinLength);
    /// Adds a solid to m_SupportModelList for each support surface. With a distance above 0.0 only for those
    /// with FS_NEEDS_SUPPORT, a closed one: walls and a lower cap that distance (millimetres) below the
    /// surface. With 0.0 or less for all, with walls down to that height above the lowest z of the model,
    /// open at the bottom. Solids that are there stay. m_EdgeList of the surfaces becomes their rim. Facets
    /// with a corner that is not finite are left out.
    void GenSupportSTL(double dDistance);
    /// Adds a bar (CFeatureEdge::GenSTL) to m_SupportModelList for each chain, with the half width and rise
    /// that the chain holds. With a distance above 0.0 only for those with FE_SELECTED, the bottom that
    /// distance below the chain; with 0.0 or less for all, the bottom at that height above the lowest z of
    /// the model. m_bGenerated of the bars is 1. A chain that makes no bar leaves an empty solid.
    void GenSuspendSTL(double dDistance);

    // ---- STL files: src/modelfiles/STLFile.cpp, STLAscii.cpp, STLBinary.cpp

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

    // ---- CSM, 3DMF and OLTP files: src/modelfiles/PlainCSM.cpp, StripReader.cpp, StripWriter.cpp,
    // RingStream.cpp, ThreeDMF.cpp, Oltp.cpp

    /// Reads a compressed model, a CSM file in strips, and adds its facets to the model. The header holds
    /// "CSM3.0", "CSM4.0" (80 bytes) or "CSM5.0" (4096 bytes) ahead of its first zero byte. 1 on success,
    /// also when the file ends early; 0 when it cannot be opened, holds no tag, refers to a vertex that it
    /// has not given, has more vertices than it announces, or when the read was stopped. What was read so far
    /// stays. With bCountOnly not 0 twice the number of vertices, about the number of facets of a closed
    /// mesh.
    ///
    /// m_nTotalFacet becomes that number before the first facet. m_nStripNum becomes the number of strips,
    /// m_nMaxBackRef the longest way back of a reference, in vertices, and 1 more on success.
    int ReadCSMFile1(char* path, int bCountOnly);
    /// Writes a ring stream, a CSM file of 24-bit points in the order in which a ring of edges grows over the
    /// mesh. 1, or 0 when the file cannot be created, and then nothing is changed. No operation reads it
    /// back. m_nRegion of all facets is 0 afterwards.
    int SaveCSMFile1(char* path);
    /// Writes a CSM file in strips: each vertex once, as three 16-bit numbers (with bCompress not 0) or
    /// floats, and a few bits or a number for each facet beyond that. Coordinates read back lie up to one
    /// step, the largest extent of the box plus 1 mm over 65536, below the true ones, or are narrowed to
    /// float.
    ///
    /// The header is pszHeader, or where that is null the text "Deiklug -- CSM3.0 Compressed data" or
    /// "Deiklug -- CSM3.0" with zeros behind it; nHeaderLen bytes of it, or 80 where that is 0. Only lengths
    /// of 80 and, with the text "CSM5.0", 4096 can be read back. With bRotate 0 the corners are taken in
    /// their stored order, and what is read back is another mesh.
    ///
    /// 1, or 0 for 2,097,152 vertices or more, for a length outside 0 to 4096, when the file cannot be
    /// created (none is, in these cases), and after StopCurOperate, which leaves whole strips and the start
    /// of one. m_nRegion of all facets is 0 afterwards, m_nID of the vertices their number in the file, from
    /// 1, and m_nPointCounter how many there are.
    int ExtractFacetForCSM(int bRotate, char* path, int bCompress, char* pszHeader, int nHeaderLen);
    /// Writes the first facet of a strip, which goes on across nEdge (1 V1V2, 2 V2V3, 3 V3V1, 0 not at all).
    /// The file has dScale steps a millimetre from ptOrigin, or floats where that is 0.0. Vertices with m_nID
    /// 0 are written as points and get the next number of m_nPointCounter.
    void WriteCSMHeadFacet(CFacet* pFacet, int nEdge, FILE* fp, double dScale, CPoint3D ptOrigin);
    /// Writes a further facet of a strip: its vertex nVertex (1 to 3) is the one off the edge nEdge (1 to 3)
    /// of the facet before. The rest as in WriteCSMHeadFacet. Another nVertex writes nothing.
    void WriteCSMFacet(CFacet* pFacet, int nEdge, int nVertex, FILE* fp, double dScale, CPoint3D ptOrigin);
    /// Reads a 3DMF text and adds its facets to the model. 1, or 0 when the file cannot be opened: nothing in
    /// it is an error. Each line that holds "VERTEX" is a vertex, up to one with "/VERTICES"; from there on
    /// each line with "TRIANGLE " is a facet, up to one with "/TRIANGLES", in any case of letters. The values
    /// stand behind three equals signs, whatever they are called. Vertices count from 0; a facet that names
    /// one that is not there is left out. The read cannot be stopped.
    int Read3DMFModel(char* path);
    /// Reads an OLTP file, binary STL with a header of 256 bytes, as ReadSTLFile reads binary STL.
    int ReadOLTPFile(char* path, int bCountOnly);

private:
    int ReadSTLASCII(char* pszPath, int bCountOnly);
    int ReadSTLBINARY(char* pszPath, int bCountOnly, int nHeaderLen);
    /// 1 when a facet was read, 0 at the end. What a line or a short read does not deliver keeps its value.
    int ReadSTLFacetASCII(FILE* pFile, tagFACET* pFacet);
    int ReadSTLFacetBINARY(FILE* pFile, tagFACET* pFacet);
    int SaveSTLBINARY(char* pszPath);
    /// Writes a plain CSM file: the vertices as floats, then three vertex numbers a facet. 1, or 0 when the
    /// file cannot be created. m_nID of the vertices becomes their number in the file, from 0.
    int SaveCSMFile(char* path);
    /// Reads a plain CSM file and adds its facets to the model, whatever the stop flags say. 1, or 0 when the
    /// file cannot be opened, ends before its last facet, or has a facet with a number that no vertex has. A
    /// file with the text "CSM2.0" in its header goes to ReadCSMFile1, which refuses it.
    int ReadCSMFile(char* path);

public:
    CVertexTree m_VertexTree;  ///< its box is the model's box
    CSurfaceArray m_SurfaceArray;
    tagSTLStatus m_Status;
    double m_dArea;                ///< cached, 0.0 stands for not computed
    double m_dVolume;              ///< cached, 0.0 stands for not computed
    std::int32_t m_nPointCounter;  ///< vertices numbered so far by the writer of CSM strips
    std::int32_t m_nTotalFacet;    ///< facets that the file being read announces
    std::int32_t m_nMaxBackRef;    ///< see ReadCSMFile1
    std::int32_t m_nStripNum;      ///< see ReadCSMFile1
    CSurfaceArray m_SupportArray;  ///< refers to facets, does not own them
    XR_CArray<CFeatureEdge*, CFeatureEdge*> m_SuspendEdgeArray;  ///< owned
    XR_CList<void*, void*> m_SupportModelList;                   ///< CSTLModel*, owned
    std::int32_t m_nPublicValue;
    std::int32_t m_bStopRead;
    std::int32_t m_bStopOperate;
};

/// Facets that the writers of CSM strips have written in this process since ExtractFacetForCSM last began.
extern VARNET_API std::int32_t m_nCSMFacetCount;
