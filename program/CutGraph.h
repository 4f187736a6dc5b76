#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <vector>

/// A line of a cut through a mesh, in millimetres. A closed one ends where it begins, and does not state its
/// first point again.
struct Contour {
    std::vector<CPoint2D> points;
    bool bClosed = false;
};

/// The segments in which one height cuts facets, chained into contours.
///
/// A segment runs between two edges of its facet, and an edge, told by its two vertices, is cut in one point.
/// So facets that share an edge share a point of the cut: which segments meet is known without a look at
/// coordinates. Where an edge has two facets its two segments are joined, whichever way they run. Where it
/// has one, a chain ends. Where it has more, those are joined that have the solid between them, so that
/// solids that touch along an edge come apart; an end left over ends a chain.
class CutGraph {
public:
    /// Forgets all segments. At most nSegments follow, all at this height.
    void Begin(double dZ, std::size_t nSegments);

    /// An edge from a vertex below the height to one that is not.
    struct Edge {
        tagVertexNode const* pBelow;
        tagVertexNode const* pAbove;
        bool operator==(Edge const&) const = default;
    };
    /// Adds a segment that has the solid on its left, where the facet faces outward.
    void AddSegment(Edge const& from, Edge const& to);

    /// The contours: open ones first, each in the order of its first segment. Points that fall on one vertex
    /// are one. Closed contours that enclose nothing, and what is a single point, are left out.
    std::vector<Contour> Chain();

private:
    // A point of the cut. Its ends are a list, through m_NextEnd.
    struct Point {
        Edge edge;
        CPoint2D place;
        int nFirstEnd = -1;
        int nEnds = 0;
    };

    int PointOn(Edge const& edge);
    void AddEnd(int nPoint);
    void PairEnds();
    void PairAround(Point const& point);
    void Pair(int nEnd, int nOther);
    double DirectionOf(int nEnd) const;
    void ChainFrom(int nEnd, std::vector<Contour>& contours);

    double m_dZ = 0.0;
    std::vector<Point> m_Points;
    std::vector<std::int32_t> m_Table;  // of hashed edges: numbers of points, -1 for none
    // Segment i has the ends 2 i, where it begins, and 2 i + 1.
    std::vector<std::int32_t> m_PointOfEnd;
    std::vector<std::int32_t> m_NextEnd;
    std::vector<std::int32_t> m_Partner;
    std::vector<char> m_Used;  // by segment
    std::vector<std::int32_t> m_Around;
    std::vector<std::int32_t> m_Open;
};
