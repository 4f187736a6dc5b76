#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "mesh/Facet.h"
#include "mesh/STLModel.h"
#include "trees/VertexCache.h"

/// How a reader hands its triangles to a model: as CSTLModel::AddFacet, one after the other, but faster.
/// Between the calls nothing else may add to the model.
class FacetIntake {
public:
    /// nExpected, the number of triangles that will come, is only a hint: memory is taken for it in advance.
    explicit FacetIntake(CSTLModel& model, std::size_t nExpected = 0)
        : m_Model(model), m_Cache(model.m_VertexTree, nExpected / 2) {}

    /// As CSTLModel::AddFacet. The z of the corners may be changed.
    void Add(tagFACET& facet);

    /// Adds the triangles one after the other, until StopReadModel. The z of the corners may be changed.
    void AddAll(std::span<tagFACET> facets);

private:
    using Hashes = std::array<std::size_t, 3>;  // of a triangle's corners

    void Add(tagFACET& facet, Hashes const& hashes);
    bool IsScattered() const;
    void BringNear(std::span<tagFACET const> facets, std::span<Hashes const> hashes) const;

    CSTLModel& m_Model;
    VertexCache m_Cache;
    std::vector<Hashes> m_Hashes;  // of a block
};
