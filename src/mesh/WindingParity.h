#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/Require.h"
#include "foundation/memory/LargePages.h"
#include "mesh/STLModel.h"

namespace varnet {

/// Which facets of a mesh to turn, so that all agree with the first facet of their shell: found in the order
/// of the facets, without walking the shells.
///
/// There is just one answer where every edge has at most two facets and every shell can be wound
/// consistently: whatever way the winding spreads from the first facet, it comes to the same. Facets are
/// united to disjoint sets by their shared edges, each with a bit that tells whether it is to be turned
/// against the set's first facet: union and find, the paths halved (R. E. Tarjan, "Efficiency of a good but
/// not linear set union algorithm", 1975).
class WindingParity {
public:
    /// Looks at the model and changes nothing but m_nRegion, on all facets.
    explicit WindingParity(CSTLModel& model);

    /// False where an edge has more than two facets, or a shell cannot be wound consistently: how the winding
    /// spreads decides there.
    bool IsUnique() const { return m_bUnique; }

    /// Whether the facet with this number, in the order of the model's facets, is to be turned; where there
    /// is just one answer.
    bool IsTurned(std::size_t nFacet) {
        VARNET_REQUIRE(m_bUnique && nFacet < m_Links.size());
        return Find(static_cast<std::uint32_t>(nFacet)).nTurned != 0;
    }

private:
    // A facet's set and whether it is turned against the set's first facet, which stands for the set.
    struct Member {
        std::uint32_t nFirst;
        std::uint32_t nTurned;
    };

    // An edge from the vertex being looked at: the other end, a facet there, and whether the facet's winding
    // runs to the other end or from it.
    struct Spoke {
        tagVertexNode const* pEnd;
        std::uint32_t nFacet;
        std::uint32_t nOutward;
    };

    static constexpr std::size_t kFewSpokes = 16;

    bool UniteAt(tagVertexNode const& vertex);
    bool UniteFew(std::span<Spoke const> spokes);
    bool UniteMany(std::span<Spoke> spokes);
    bool Unite(Spoke const& a, Spoke const& b);
    Member Find(std::uint32_t nFacet);

    // To an earlier facet of the set, times two, plus the bit against that one.
    ZeroedTable<std::uint32_t> m_Links;
    std::vector<Spoke> m_Spokes;  // room for those of the largest vertex yet
    bool m_bUnique = true;
};

}  // namespace varnet
