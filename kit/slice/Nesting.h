#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "slice/Grid.h"
#include "slice/Paths.h"
#include "slice/Pulse.h"
#include "varnet/Slicer.h"

namespace varnet {

inline bool IsSolid(int winding, SolidRule rule) {
    return rule == SolidRule::kWinding ? winding > 0 : (winding & 1) != 0;
}

/// A contour as nesting sees it.
struct Nested {
    int parent = -1;  ///< the one right around it, of those that are kept
    bool kept = false;
    bool turned = false;  ///< it has to be reversed for the solid to be on its left
};

/// Adds the paths that are kept to the contours: each behind its parent, those of one parent in their order,
/// what is within a contour right behind it.
void AddNested(Paths const& paths, std::vector<Nested> const& nested, SolidContours& contours);

/// Which contours bound what is solid, and which lies in which, for contours that neither cross nor touch
/// each other or themselves on the grid.
///
/// A line sweeps over them from left to right. What it meets is in order from below, and two sides that cross
/// are neighbours before they do: M. Shamos and D. Hoey, "Geometric intersection problems", 1976. A contour
/// takes part as stretches that go from left to right or back, so that most of its points only move a
/// stretch on.
class NestingSweep {
public:
    /// By path; all have to be closed. False where contours do touch or cross: nothing is told then.
    bool Nest(Paths const& paths, Grid const& grid, SolidRule rule, std::vector<Nested>& nested,
              Pulse& pulse);

private:
    struct Vertex {
        GridPoint at;
        std::int32_t previous;
        std::int32_t next;
        std::int32_t contour;
    };
    // A stretch of a contour from left to right, with the side at which the sweep is.
    struct Stretch {
        GridPoint left;
        GridPoint right;
        std::int32_t target;  // the vertex at which the side ends
        std::int32_t below;   // neighbours
        std::int32_t above;
        std::int32_t contour;
        std::int32_t windingAbove;
        bool forward;  // the contour runs from left to right here
    };
    struct Order {
        NestingSweep* sweep;
        bool operator()(std::int32_t a, std::int32_t b) const { return sweep->IsBelow(a, b); }
    };
    using Line = std::set<std::int32_t, Order>;

    void TakeIn(Paths const& paths, Grid const& grid);
    void TakeInContour(std::span<Point2 const> path, Grid const& grid, std::int32_t contour);
    bool SortVertices();
    bool IsBelow(std::int32_t a, std::int32_t b);
    bool Meet(std::int32_t vertex);
    bool Begin(std::int32_t vertex);
    bool MoveOn(std::int32_t stretch, std::int32_t vertex);
    bool End(std::int32_t a, std::int32_t b);
    std::int32_t AddStretch(std::int32_t from, std::int32_t to, bool forward);
    void AimAt(std::int32_t stretch, std::int32_t from, std::int32_t to);
    bool AreApart(std::int32_t below, std::int32_t above) const;
    void Place(std::int32_t contour, std::int32_t below, std::int32_t lower);

    SolidRule m_Rule = SolidRule::kWinding;
    std::vector<Vertex> m_Vertices;
    std::vector<std::uint64_t> m_Keys;
    std::vector<std::int32_t> m_Sorted;
    std::vector<std::uint64_t> m_KeysBuffer;
    std::vector<std::int32_t> m_SortedBuffer;
    std::vector<Stretch> m_Stretches;
    std::vector<Line::iterator> m_InLine;  // by stretch
    std::vector<std::int32_t> m_Arriving;  // by vertex: a stretch that ends its side there, or -1
    std::vector<std::int32_t> m_Arriving2;
    std::vector<Nested> m_Nested;
    std::vector<char> m_Placed;
    std::vector<std::int32_t> m_Around;  // by contour: the one right around it, kept or not
    std::vector<char> m_CounterClockwise;
    std::unique_ptr<Line> m_Line;
    bool m_Touched = false;
};

}  // namespace varnet
