#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "slice/FacetIndex.h"
#include "slice/FacetSource.h"
#include "slice/Paths.h"
#include "slice/Pulse.h"

namespace varnet {

/// Cuts a mesh at one layer after the other, and chains the segments into paths. Going on to the next layer
/// is fast; any other may follow too. What comes out depends on the mesh and the layer's number alone.
///
/// A segment runs between two edges of its facet, and an edge, told by its two vertices, is cut in one point.
/// So facets that share an edge share a point of the cut: which segments meet is known without a look at
/// coordinates. Where an edge has two facets its two segments are joined, whichever way they run. Where it
/// has one, a path ends. Where it has more, those are joined that have the solid between them, so that solids
/// that touch along an edge come apart; an end left over ends a path.
///
/// Facets with the same three corners count once, or not at all where as many are of one winding as of the
/// other. Where that would leave a path open that is closed by all of them, as where solids that lie in each
/// other have a wall in common, each counts.
class CutSweep {
public:
    /// The index must live as long.
    explicit CutSweep(FacetIndex const& index) : CutSweep(MakeSource(index)) {}
    explicit CutSweep(std::unique_ptr<FacetSource> source) : m_Source(std::move(source)) {}

    /// Adds the paths of the cut: open ones first, each in the order of its first segment, which is that of
    /// the layers in which facets are cut first, and then that of the mesh. Contours of a mesh whose winding
    /// is right have the solid on their left. A path whose segments contradict each other runs as the longer
    /// part of them does. Points at one place are one. Closed paths that enclose nothing, and what is a
    /// single point, are left out.
    void Cut(int number, Paths& paths, Pulse& pulse);

private:
    // A facet that is cut: its edges between the lowest, the middle and the highest corner.
    struct Active {
        std::int32_t lowMiddle;
        std::int32_t middleHigh;
        std::int32_t lowHigh;
        std::int32_t middleBelow;  // the first layer above the middle corner
        std::int32_t last;         // that cuts the facet
        bool beginsOnLong;         // the segment begins on the edge from the lowest to the highest corner
    };
    // An edge of facets that are cut. In the layer it was met in last it has a place and ends of segments: up
    // to two, which are partners; what is more waits in m_Crowd.
    struct Edge {
        std::int32_t below;
        std::int32_t above;
        std::int32_t facets;
        std::int32_t layer;
        std::int32_t firstEnd;
        std::int32_t ends;
        Point2 place;
    };
    struct Crowded {
        std::int32_t edge;
        std::int32_t end;
    };

    void GoTo(int number, Pulse& pulse);
    void TakeUp(int from, int number, Pulse& pulse);
    void TakeUp(FacetBatch const& batch, int number);
    void Activate(Triangle const& triangle, int number);
    void LetGo(int number);
    std::int32_t EdgeBetween(std::int32_t below, std::int32_t above);
    std::size_t SlotOf(std::int32_t below, std::int32_t above) const;
    void MakeTable(std::size_t edges);
    void DropDeadEdges();

    void AddSegments();
    void AddEnd(std::int32_t edge, std::int32_t end);
    Point2 PlaceOn(Edge const& edge) const;
    Point2 const& PlaceOf(std::int32_t end) const;
    void SettleCrowds();
    void CollectEnds(std::size_t& next);
    template <class Visit>
    void VisitDoubled(Visit const& visit);
    void FindNeeded();
    void DropDoubled();
    void PairAround();
    void SortAround();
    void Pair(std::int32_t end, std::int32_t other);
    void Chain(Paths& paths);
    void ChainFrom(std::int32_t end, Paths& paths);

    std::unique_ptr<FacetSource> m_Source;
    std::span<Point3 const> m_Points;
    int m_Number = 0;
    double m_Height = 0.0;
    std::vector<Active> m_Active;
    std::vector<Edge> m_Edges;  // some without facets any more
    std::size_t m_DeadEdges = 0;
    std::vector<std::int32_t> m_Table;  // of hashed edges: their numbers, -1 for none
    int m_Shift = 0;
    // Segment i has the ends 2 i, where it begins, and 2 i + 1.
    std::vector<std::int32_t> m_EdgeOfEnd;
    std::vector<std::int32_t> m_Partner;
    std::vector<char> m_Used;  // by segment
    std::vector<Crowded> m_Crowd;
    std::size_t m_Lonely = 0;           // edges with one end
    std::vector<char> m_Needed;         // by segment
    std::vector<std::int32_t> m_Asked;  // edges that FindNeeded has to look at
    std::vector<std::int32_t> m_Around;
    std::vector<std::int32_t> m_Open;
    std::vector<std::int32_t> m_NewNumbers;
};

}  // namespace varnet
