#pragma once

#include <cstdint>
#include <cstdio>

#include "contours/Hatch.h"
#include "contours/LoopTreeNode.h"
#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/List.h"
#include "foundation/Point.h"

/// One slice of a model: closed loops and open paths in a nesting tree, and hatches. Millimetres.
///
/// The layer owns its raw loops, through them every loop of the tree, and its hatches. A raw loop is one that
/// has no parent. m_LoopList is a cache of the whole tree: it goes stale when the tree changes, and m_Box
/// when points do. Copies are deep, and flat: the loops come along without their nesting.
///
/// A layer belongs to one thread at a time. Walks over the tree need no stack that grows with its depth.
class VARNET_API CLayer {
public:
    CLayer();
    /// CopyLayer without offsets.
    CLayer(CLayer& other);
    /// CopyLayer without offsets: what the layer held is released. Assigning a layer to itself does nothing.
    CLayer const& operator=(CLayer& other);
    virtual ~CLayer();

    // ---- loops and their nesting: src/contours/Layer.cpp, LayerTopology.cpp, LoopListSort.cpp

    /// Appends the loop to the raw loops; the layer owns it from here on. Nothing else happens.
    void AddRawLoop(tagLoopTreeNode* pLoop);
    /// Nests the closed raw loops: each moves below the loop that holds its head point, where its cached box
    /// is strictly inside the other's box as well. So loops whose boxes touch never nest, and loops that
    /// cross nest by where the one point lies. What is nested stays so: a root that now lies inside another
    /// moves there with its subtree. Levels count from the level with which a loop comes.
    ///
    /// Where bRefresh is not 0, all boxes are refreshed first, and at last every loop, open paths included,
    /// is turned to run counter-clockwise at even levels and clockwise at odd ones, m_nDirection being 1 and
    /// 0. Else the cached boxes count, and no loop is turned. The loop list is current afterwards.
    ///
    /// The tree and the order of children are those of looking at every raw loop in order, and for each at
    /// all raw loops behind it in order.
    void MakeTopology(int bRefresh);
    /// Places a loop that is in no list below a parent, as deep as it goes: below the child that holds it,
    /// and above the children that it holds. It is appended to its new parent's children; levels follow.
    void AddInTree(tagLoopTreeNode* pParent, tagLoopTreeNode* pChild);
    /// Makes m_LoopList anew: every loop before its children, subtrees together.
    void BuildLoopList();
    /// Appends a loop and its subtree to m_LoopList.
    void AddLoopNodeInList(tagLoopTreeNode* pLoop);
    /// Sorts m_LoopList, as it stands, by the x of the cached boxes' centres, ascending. The order among
    /// equal ones is that of an exchange sort: of every node with all behind it, in order.
    void SortLoopListByBoxCenterX();
    /// The same by y.
    void SortLoopListByBoxCenterY();
    /// 1 when the centre of a's cached box is at a greater x than b's, else 0.
    int CompareBoxCenterX(tagLoopTreeNode* a, tagLoopTreeNode* b);
    /// The same by y.
    int CompareBoxCenterY(tagLoopTreeNode* a, tagLoopTreeNode* b);
    /// 1 when the point lies in the material: strictly inside m_Box, and inside an odd number of the loops of
    /// m_LoopList; else 0. Box and list are taken as they stand.
    int IsInCounter(CPoint2D& point);
    /// Clears LOOP_USED_FLAG on the loops of m_LoopList as it stands.
    void ClearLoopsUsedFlag();

    // ---- copying and conversion: src/contours/LayerCopy.cpp

    /// A new layer with copies of all loops, flat and at level 0, and nothing else of this one. The caller
    /// owns it.
    CLayer* CopyLoop();
    /// Releases what the layer holds and takes copies of the other's scalars and paths, as AddOtherLayer
    /// brings them. Paths move by (dx, dy), the height by dz. The other may not be this layer.
    void CopyLayer(CLayer& other, double dx, double dy, double dz);
    /// Adds copies of the other's paths, moved by (dx, dy): with bit 1 of nMask all loops that have a list,
    /// flat, as raw loops at level 0 and at this layer's height, with their directions; with bit 2 hatches
    /// with an id below 1000, with bit 4 the others, without their flags and only where they have edges. Both
    /// loop lists and this layer's boxes are refreshed. The other may not be this layer.
    void AddOtherLayer(CLayer& other, double dx, double dy, int nMask);
    /// A new layer of this height and these units with one hatch of the given id for each loop of two points
    /// or more, an edge a segment. The caller owns it.
    CLayer* ConvertLoopToHatch(unsigned int nID);

    // ---- measures and edits: src/contours/Layer.cpp, LayerLimits.cpp

    /// Row-vector product with a 3 by 3 matrix on all points, and on all hatch edges where bLoopsOnly is 0.
    /// Attributes stay; boxes are refreshed.
    void Transform(double (*pMatrix)[3], int bLoopsOnly);
    /// Refreshes the loop list, every loop's box and m_Box, around loops and hatches; returns a copy of it.
    CBoundBox2D GetBoundBox();
    /// Twice the net area, the sum over all loops: holes count against it where they run clockwise. dLength
    /// becomes the sum of all lengths.
    double GetAreaLength(double& dLength);
    /// Destroys all loops and hatches. Height, box and the other scalars stay.
    void ReleaseAll();
    /// Forces the layer into a box: loop points are clamped, which keeps their number, and hatch edges are
    /// clipped, which makes the hatches anew, without flags and in several pieces where the box cuts them
    /// apart. A stretch that begins within 0.1 of where the last one ended, on either axis, goes on in the
    /// same hatch. Boxes are refreshed in any case.
    void LimitInBox(CBoundBox2D box, int bLimitLoops, int bLimitHatchs);
    /// Adds a rectangle with two opposite corners as a raw loop, counter-clockwise where a has the smaller
    /// coordinates, and runs MakeTopology(1).
    void AddBorder(CPoint2D& a, CPoint2D& b);

    // ---- ordering: src/contours/ordering/HatchOrder.cpp, LoopOrder.cpp, FillOrder.cpp
    // A pass starts where the head is, and moves pos to where it stops.

    /// Orders the hatches: from pos each time the one with the nearest end (nMode 0), the one with the
    /// farthest end (1), or one by chance, by a number of rand for each end of each hatch that is left. The
    /// first of equals is taken, the start before the end. A hatch that is entered at its end is replaced by
    /// a new one that runs the other way, without flags: pointers to these are void. Hatches that can't be
    /// entered leave the list: those without edges are destroyed, those that are 1e15 or more away (nMode 0),
    /// or nowhere, stay allocated as they are and belong to the host.
    ///
    /// Near and far passes take time in proportion to n log n; a pass by chance draws for all pairs.
    void OptimizeHatchs(CPoint2D& pos, int nMode);
    /// Makes all loops raw loops, and orders them likewise: by all vertices of a closed loop, which is turned
    /// to begin at the one chosen, and by head and tail of an open path, which is reversed unless its tail
    /// was chosen. pos moves to the head point of the loop in both cases. The children of a loop that was
    /// ordered are taken from it. Levels and m_LoopList stay as they were before the pass.
    ///
    /// Loops without points, and those whose vertices are all 1e5 or more away (nMode 0) or all at pos (1),
    /// end the pass when no others are left: they are in no list of the layer then but m_LoopList, and belong
    /// to the host, with the children that they had.
    void OptimizeLoops(CPoint2D& pos, int nMode);
    /// The loop with m_nDirection 1 and without LOOP_USED_FLAG that has the vertex nearest to pos, in
    /// m_LoopList as it stands; null when there is none. The host sets the flag when it has used the loop.
    tagLoopTreeNode* FindNearUnusedOutLoop(CPoint2D pos);
    /// Emits one outer loop, its children, and the hatches between them to the raw loops of another layer, as
    /// paths without nesting in the order of printing; pos moves along. Contours are linked with hatches that
    /// have a vertex within 1.8 dWidth of them: such a contour is opened over dCut and printed in one stroke
    /// with a stretch of the hatch, see LinkLoopWithHatchs. Each path is shortened by dCut at its tail.
    ///
    /// Of the hatches, those with an id below 1000 count whose first point is in the loop and in none of its
    /// children; they are flagged Used and stay as they are. Loop and children are consumed: turned, opened,
    /// spliced. The children are flagged Used; the host flags the loop. The other layer takes this one's
    /// height; it may not be this layer.
    void OptimizeLoopAndChildLoopHatch(tagLoopTreeNode* pLoop, CPoint2D* pPos, CLayer* pOut, double dWidth,
                                       double dCut);

    // ---- CLI slice files: src/cli/LayerFile.cpp; modes are 1 text, 2 binary, 3 binary, every command
    // disguised

    /// Reads the commands of one layer from where the file stands, and adds them to what the layer holds.
    /// Every coordinate and height is multiplied by m_dUnits. 1 when a layer command was met; the file then
    /// stands at the next layer's command, so that calls one after the other read layer after layer. 0 where
    /// there is none before the end of the file, and for another mode.
    ///
    /// A text layer ends also at a line that is no command, where the file then stands. A text line that
    /// lacks one of the whole numbers in front has no effect; lines are read in pieces of 10,239 characters.
    /// In the binary modes a word that is no command, or a command that the file does not hold whole, gives
    /// 0: the file stands behind that word, or at its end; what came before stays in the layer.
    ///
    /// Loops come as raw loops, without nesting. Closed ones (direction below 2) get a copy of their head as
    /// the tail, unless the layer ended at something that is no command. m_Box is extended by a text layer,
    /// and refreshed by a binary one that ended well; the loop list is not current after a text layer.
    ///
    /// The file is the caller's, opened so that bytes come as they are ("rb"). In a file without a position,
    /// as a pipe, the next layer's command is put back as far as the C runtime allows.
    int ReadCLIFile(FILE* pFile, int nMode);
    /// Appends the layer to a file: 1. As text, the height with two decimals and coordinates with three,
    /// loops without points left out with all below them, and hatches without edges left out. Binary, in
    /// floats, everything, after building the loop list; disguised, with offsets and noise from rand().
    /// Another mode writes nothing. Numbers do not depend on the locale of the process.
    int WriteCLIFile(FILE* pFile, int nMode);

    XR_CList<void*, void*> m_RawLoopList;  ///< tagLoopTreeNode*, owned
    XR_CList<void*, void*> m_LoopList;     ///< tagLoopTreeNode*, the whole tree; a cache
    XR_CList<void*, void*> m_HatchList;    ///< CHatch*, owned
    double m_dZ;                           ///< height; -1000.0 in a new layer
    CBoundBox2D m_Box;                     ///< bounds as of the last GetBoundBox
    double m_dUnits;                       ///< scale of the CLI file that the layer comes from
    std::int32_t m_nUser1;                 ///< for the host, like those that follow
    std::int32_t m_nUser2;
    double m_dUser1;
    double m_dUser2;
    double m_dUser3;
    std::int32_t m_nUser3;
};

/// A hatch as an open path, which the caller owns, with the given height and flags and the hatch's id. Points
/// carry -12301.0 in m_fAttr1 where they start an edge, and -12302.0 where they end one; where an edge begins
/// at the end of the last one, the point stands once.
VARNET_API tagLoopTreeNode* ConvertHatchToLoop(CHatch* pHatch, double dZ, int nFlag);

/// Clips an edge to a box: 1 with what is left, running the edge's way, or 0 when it misses the box. An edge
/// with both ends strictly inside stays as it is, attributes included; ends that are cut have attributes 0.
/// An end on the box's side counts as outside.
VARNET_API int ClipEdgeToBox(CEdge2D& edge, CBoundBox2D& box, CEdge2D& result);
