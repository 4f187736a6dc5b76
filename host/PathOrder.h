#pragma once

#include <Varnet64.h>

#include <memory>

/// What is done about the order in which the paths of a layer are printed.
enum class PathOrder {
    kAsFound,
    kNearest,  ///< each time the nearest loop, then the nearest hatch
    kSpliced   ///< an outer contour with its holes and fill at a time, contours and fill in one stroke
};

/// Orders the paths of a layer from the point where the head is, and moves the point to where it ends. In the
/// spliced order contours and fill become paths without nesting, contours being opened where a hatch passes
/// within 1.8 times the width (millimetres); hatches of supports stay, behind them. No path is lost.
///
/// Open paths have no direction afterwards, in any order: binary files tell by it that they are open.
std::unique_ptr<CLayer> OrderPaths(std::unique_ptr<CLayer> pLayer, PathOrder order, double dWidth,
                                   CPoint2D& head);

/// How far the head travels between the paths of a layer, from a point, which moves along: loops come before
/// hatches, both in the order of their lists, children of a loop behind it. A closed path ends where it
/// begins. Ways between the strokes of a hatch are not travel.
double TravelLength(CLayer& layer, CPoint2D& head);
