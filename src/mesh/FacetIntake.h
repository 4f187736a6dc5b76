#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "mesh/Facet.h"
#include "mesh/STLModel.h"
#include "trees/VertexCache.h"

namespace varnet {

/// A triangle with a coordinate beyond this, in millimetres, is refused. NaN passes.
inline constexpr double kLargestCoordinate = 10000000000.0;

/// Lets the triangle of three of the model's vertices, which are in range, into the model, unless it
/// collapses, is there already or is degenerate.
void EnterTriangle(CSTLModel& model, std::array<tagVertexNode*, 3> const& offered);

/// How a reader hands its triangles to a model: as CSTLModel::AddFacet, one after the other, but faster.
/// Between the calls nothing else may add to the model.
class FacetIntake {
public:
    /// nExpected, the number of triangles that will come, is only a hint: memory is taken for it in advance.
    explicit FacetIntake(CSTLModel& model, std::size_t nExpected = 0)
        : m_Model(model), m_Cache(model.m_VertexTree, nExpected / 2) {}

    /// As CSTLModel::AddFacet. The z of the corners may be changed.
    void Add(tagFACET& facet);

    /// Whether StopReadModel ends the adding.
    enum class OnStop { kEnd, kGoOn };

    /// Adds the triangles one after the other. The z of the corners may be changed.
    void AddAll(std::span<tagFACET> facets, OnStop onStop = OnStop::kEnd);

private:
    using Hashes = std::array<std::size_t, 3>;  // of a triangle's corners

    void Add(tagFACET& facet, Hashes const& hashes);
    bool AreScattered(std::span<tagFACET const> facets);
    bool AreFarFromEachOther() const;
    bool AreFarApartInTree(std::span<tagFACET const> facets) const;
    void BringNear(std::span<tagFACET const> facets, std::span<Hashes const> hashes);

    CSTLModel& m_Model;
    VertexCache m_Cache;
    std::vector<Hashes> m_Hashes;  // of a block
    std::size_t m_nBlocks = 0;     // since the tree was found to be large
    bool m_bFarApart = false;      // what the last block that was looked at says of those behind it
};

/// Triangles on their way to an intake, which takes them block by block.
class FacetQueue {
public:
    explicit FacetQueue(FacetIntake& intake, FacetIntake::OnStop onStop = FacetIntake::OnStop::kEnd)
        : m_Intake(intake), m_OnStop(onStop) {
        m_Facets.reserve(kBlock);
    }

    void Add(tagFACET const& facet) { New() = facet; }

    /// One more triangle, for the caller to fill before the next call.
    tagFACET& New() {
        if (m_Facets.size() == kBlock) Flush();
        return m_Facets.emplace_back();
    }

    /// Lets all triangles that wait into the model; the reader calls it at the end.
    void Flush() {
        m_Intake.AddAll(m_Facets, m_OnStop);
        if (!m_Facets.empty()) m_Last = m_Facets.back();
        m_Facets.clear();
    }

    /// The last triangle of those that the model has been offered, with the z of its corners as they are
    /// then.
    tagFACET const& Last() const { return m_Last; }

private:
    static constexpr std::size_t kBlock = 1024;

    FacetIntake& m_Intake;
    FacetIntake::OnStop m_OnStop;
    std::vector<tagFACET> m_Facets;
    tagFACET m_Last;
};

}  // namespace varnet
