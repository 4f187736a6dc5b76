#pragma once

#include <span>

#include "mesh/Facet.h"
#include "mesh/STLModel.h"
#include "trees/VertexCache.h"

/// How a reader hands its triangles to a model: as CSTLModel::AddFacet, one after the other, but faster.
/// Between the calls nothing else may add to the model.
class FacetIntake {
public:
    explicit FacetIntake(CSTLModel& model) : m_Model(model), m_Cache(model.m_VertexTree) {}

    /// As CSTLModel::AddFacet. The z of the corners may be changed.
    void Add(tagFACET& facet);

    /// Tells which triangles come next, so that what they touch can be brought near. Changes nothing.
    void Announce(std::span<tagFACET const> facets) const;

private:
    CSTLModel& m_Model;
    VertexCache m_Cache;
};
