#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "slice/Grid.h"
#include "slice/Pulse.h"

namespace varnet {

/// A side that was rounded to the grid, from the left one of two vertices to the right one.
struct GridEdge {
    std::int32_t left;  ///< numbers of vertices, which are in the order of their keys
    std::int32_t right;
    std::int32_t balance;  ///< how many more sides run to the right than to the left
    std::int32_t count;    ///< of sides that fell together here
};

/// Sides on the grid that meet at vertices alone.
struct GridGraph {
    std::vector<GridPoint> vertices;  ///< sorted, each once
    std::vector<GridEdge> edges;      ///< sorted by left and then right vertex, each pair once
};

/// A side between two different points of the grid.
struct GridSide {
    GridPoint from;
    GridPoint to;
};

/// Rounds sides to the grid, together with the points where they cross: each runs through the middle of every
/// step of the grid ("hot pixel") that it passes and that holds an end or a crossing. What comes out meets at
/// ends alone, and no side moves by more than a step. J. Hobby, "Practical segment intersection with finite
/// precision output", 1999. All is decided in whole numbers.
GridGraph RoundSides(std::span<GridSide const> sides, Pulse& pulse);

}  // namespace varnet
