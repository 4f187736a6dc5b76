#pragma once

#include <Varnet64.h>

#include <array>
#include <cstddef>
#include <vector>

#include "CutGraph.h"

/// Cuts a mesh at one height after the other, from below.
///
/// The facets wait in the order of their lowest corners. A height takes up those that begin below it, lets go
/// of those that end below it, and cuts the others: the time is that of sorting the facets once, and after
/// that in proportion to the segments cut. Beyond the waiting facets there is never more in memory than one
/// cut.
///
/// A vertex at the very height counts as above it. So a cut is what lies just below the height: at the top
/// face of a cube it is the square, at its bottom face nothing, and a level face in between changes nothing
/// about the walls that go up to it. Every closed mesh gives closed contours only, at every height.
///
/// A facet that the mesh was offered in both windings (FACET_DUP_REVERSED) bounds nothing, the solid being on
/// both of its sides: it is not cut.
class Slicer {
public:
    /// The model must stay as it is while it is cut. Its facets have their lowest corner in front, as
    /// AddFacet and the operations that move a model leave them.
    explicit Slicer(CSTLModel const& model);

    /// The contours at a height, which may not be below the last one. Contours of a mesh whose winding is
    /// right have the solid on their left.
    std::vector<Contour> Cut(double dZ);

private:
    struct Waiting {
        double dLowest;
        CFacet const* pFacet;
    };
    struct Active {
        std::array<tagVertexNode const*, 3> corners;
        double dHighest;
    };

    void TakeUp(double dZ);

    std::vector<Waiting> m_Waiting;
    std::size_t m_nTaken = 0;
    std::vector<Active> m_Active;
    CutGraph m_Graph;
};
