#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "slice/FacetIndex.h"
#include "slice/Paths.h"
#include "slice/Pulse.h"

namespace varnet {

/// The segments in which one height cuts facets, chained into paths.
///
/// A segment runs between two edges of its facet, and an edge, told by its two vertices, is cut in one point.
/// So facets that share an edge share a point of the cut: which segments meet is known without a look at
/// coordinates. Where an edge has two facets its two segments are joined, whichever way they run. Where it
/// has one, a path ends. Where it has more, those are joined that have the solid between them, so that solids
/// that touch along an edge come apart; an end left over ends a path.
///
/// Facets with the same three corners count once for each that is not matched by one of the other winding.
class CutGraph {
public:
    /// Forgets all segments. At most so many follow, all at this height.
    void Begin(std::span<Point3 const> points, double height, std::size_t segments);

    /// An edge from a vertex below the height to one that is not.
    struct Edge {
        std::int32_t below;
        std::int32_t above;
        bool operator==(Edge const&) const = default;
    };
    /// Adds a segment that has the solid on its left, where the facet faces outward.
    void AddSegment(Edge const& from, Edge const& to);

    /// Adds the paths: open ones first, each in the order of its first segment. Points at one place are one.
    /// A path whose segments contradict each other runs as the longer part of them does. Closed paths that
    /// enclose nothing, and what is a single point, are left out.
    void Chain(Paths& paths, Pulse& pulse);

private:
    // A point of the cut. Its ends are a list, through m_NextEnd.
    struct Node {
        Edge edge;
        std::int32_t firstEnd;
        std::int32_t ends;
        Point2 place;
    };

    int NodeOn(Edge const& edge);
    Point2 PlaceOn(Edge const& edge) const;
    void AddEnd(int node);
    Point2 const& PlaceOf(int end) const;
    void CollectEnds(Node const& node);
    void DropDoubled(Node const& node);
    void PairEnds();
    void PairAround();
    void SortAround();
    void Pair(int end, int other);
    void ChainFrom(int end, Paths& paths);

    std::span<Point3 const> m_Points;
    double m_Height = 0.0;
    std::vector<Node> m_Nodes;
    std::vector<std::int32_t> m_Table;  // of hashed edges: numbers of nodes, -1 for none
    int m_Shift = 0;
    // Segment i has the ends 2 i, where it begins, and 2 i + 1.
    std::vector<std::int32_t> m_NodeOfEnd;
    std::vector<std::int32_t> m_NextEnd;
    std::vector<std::int32_t> m_Partner;
    std::vector<char> m_Used;  // by segment
    std::vector<std::int32_t> m_Around;
    std::vector<std::int32_t> m_Open;
};

/// Cuts a mesh at one layer after the other. Going on to the next layer is fast; any other may follow too.
/// What comes out depends on the mesh and the layer's number alone.
class CutSweep {
public:
    explicit CutSweep(FacetIndex const& index) : m_Index(&index) {}
    /// Adds the paths of the cut. Contours of a mesh whose winding is right have the solid on their left.
    void Cut(int number, Paths& paths, Pulse& pulse);

private:
    struct Active {
        Triangle corners;
        std::int32_t last;
    };

    void GoTo(int number, Pulse& pulse);
    void TakeUp(int from, int number, Pulse& pulse);

    FacetIndex const* m_Index;
    int m_Number = 0;
    std::vector<Active> m_Active;
    CutGraph m_Graph;
};

}  // namespace varnet
