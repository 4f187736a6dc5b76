#pragma once

#include <Varnet64.h>

/// What is done about the order in which the paths of a layer are printed.
enum class PathOrder {
    kAsFound,
    kByEnds,  ///< from path to path: loops first, then hatches
    kSpliced  ///< an outer contour with its holes and fill at a time, contours and fill in one stroke
};

/// Lengths in millimetres.
struct PathOrdering {
    PathOrder order = PathOrder::kAsFound;
    int nLoopMode = 0;  ///< as of CLayer::OptimizeLoops: 0 nearest first, 1 farthest first, 2 random
    int nHatchMode = 0;
    double dWidth = 0.5;  ///< a contour is opened where a hatch passes within 1.8 times this
    double dCut = 0.0;    ///< what paths are shortened by, and contours opened
};

/// Orders the paths of a layer from the point where the head is, and moves the point to where it ends. In the
/// spliced order contours and fill become paths without nesting; hatches that lie in no contour, and those of
/// supports, stay hatches, behind them. No path is lost.
///
/// Open paths have no direction afterwards, in any order: binary files tell by it that they are open.
void OrderPaths(CLayer& layer, PathOrdering const& ordering, CPoint2D& head);

/// The head's way with the material off, in millimetres, and how often the material is switched on.
struct Travel {
    double dLength = 0.0;
    long long nStarts = 0;
};

/// A head that goes along the paths of layers as they stand in a file: loops and open paths in the order of
/// the loop list, then hatches, edge after edge.
class Head {
public:
    explicit Head(CPoint2D const& start) : m_Pos(start) {}

    void Print(CLayer& layer);
    CPoint2D const& Pos() const { return m_Pos; }
    Travel const& Way() const { return m_Way; }

private:
    void MoveTo(CPoint2D const& point);

    CPoint2D m_Pos;
    Travel m_Way;
};
