#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "slice/FacetIndex.h"

namespace varnet {

/// Some facets, by their numbers among triangles. The points are those of all facets that are cut.
struct FacetBatch {
    std::span<std::uint32_t const> facets;
    std::span<Triangle const> triangles;
    std::span<Point3 const> points;
};

/// Where a sweep has its facets from, layer by layer.
class FacetSource {
public:
    virtual ~FacetSource() = default;
    virtual LayerHeights const& Heights() const = 0;
    /// Whether the facets face inward.
    virtual bool AreTurned() const = 0;
    /// Whether the number of a point goes to another one once no facet that is cut has it.
    virtual bool ReusesNumbers() const = 0;
    /// Hands out the facets that a layer from `from` to `to` is the first to cut, in the order of these
    /// layers and then that of the mesh; such as end below `to` may be missing. Where `from` is 1 it begins
    /// anew, else it goes on behind the layers of the last call.
    virtual void Deliver(int from, int to, std::function<void(FacetBatch const&)> const& take) = 0;
};

/// The facets of a mesh in memory. The index must live as long.
std::unique_ptr<FacetSource> MakeSource(FacetIndex const& index);

}  // namespace varnet
