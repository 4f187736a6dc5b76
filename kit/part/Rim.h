#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "part/Edges.h"
#include "part/FlatMesh.h"
#include "part/Pace.h"

namespace varnet {

/// Open edges of a mesh, and the facets at their corners.
class Rim {
public:
    /// Which open edges. Two facets that run the same way along an edge, twins, are no gap where one of them
    /// is to be turned; copies of one facet are. But they may be of two solids that touch there, each with
    /// facets on its other side that stop midway: open edges run back along such twins, from the same corner.
    enum class Of { kGaps, kGapsAndCrossedTwins };
    Rim(FlatMesh const& mesh, EdgeTable const& edges, Of which, Pace const& pace);

    /// An edge of a facet that is divided, and the points on it from its start to its end.
    struct Division {
        std::int32_t edge;
        std::vector<std::int32_t> points;
    };
    /// How open edges could be closed.
    struct Plan {
        std::vector<std::pair<std::int32_t, std::int32_t>> joined;  ///< a point, and the one that it becomes
        std::vector<Division> divisions;                            ///< by the points as they are then
        std::int64_t open = 0;                                      ///< edges that stay open
        std::int64_t vanished = 0;                                  ///< edges of facets that lose a corner
        bool keptSmall = false;  ///< whether points were not joined for facets that are small
        bool gaveUp = false;     ///< too many points lie near too many edges to look at all
        std::size_t looks = 0;   ///< how many boxes and points were looked at for that
    };
    /// A plan of so many edges looks at no more than these, or a few beyond.
    static std::size_t MostLooks(std::size_t edges);

    /// How many edges there are.
    std::int64_t Count() const { return static_cast<std::int64_t>(m_Open.size()); }
    /// Whether points are joined by which facets lose a corner, or fold over that are no higher than the
    /// tolerance.
    enum class Small { kStay, kMayGo };
    /// A plan that joins points within the tolerance, and divides edges at points within it, or within the
    /// rounding of coordinates. No other facet folds over.
    Plan Try(double tolerance, Small small, Pace const& pace) const;

private:
    struct Open {
        std::int32_t start;  // numbers in m_Points
        std::int32_t end;
        std::int32_t edge;
        std::int32_t apex;  // of the facet, -1 where it is not on an open edge
    };

    std::vector<std::int32_t> Join(double tolerance, Small small, Plan& plan, Pace const& pace) const;
    enum class Harm { kNone, kOfSmall, kFolded };
    Harm HarmTo(Triangle const& corners, std::vector<std::int32_t> const& becomes, double tolerance) const;
    std::vector<Open> OpenAfter(std::vector<std::int32_t> const& becomes, Plan& plan) const;
    void Divide(std::vector<Open> const& open, double tolerance, Plan& plan, Pace const& pace) const;
    std::vector<std::int32_t> PointsOn(Open const& edge, double tolerance, class PointTree const& tree,
                                       std::vector<std::int32_t> const& candidates, std::size_t most,
                                       std::size_t& looked) const;

    FlatMesh const& m_Mesh;
    std::vector<std::int32_t> m_Numbers;  // in the mesh, of the points on open edges
    std::vector<Point3> m_Points;
    std::vector<Open> m_Open;
    std::vector<Triangle> m_Facets;  // with a corner on an open edge; ~i for another point i of the mesh
};

}  // namespace varnet
