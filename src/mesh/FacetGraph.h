#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/memory/LargePages.h"
#include "mesh/FacetCorners.h"
#include "mesh/FacetWalk.h"

namespace varnet {

/// Facets by numbers, the numbers of their neighbours across V1V2, V2V3 and V3V1, and for each a note: what
/// else a walk over the facets needs of it.
///
/// A walk that goes breadth first jumps about in memory, and looking up a neighbour touches a dozen records.
/// Here they are looked up in the order of the facets, in which neighbours mostly lie near each other, and
/// the walk touches one small record a facet. It is right as long as nobody changes corners or adds facets.
template <class Note>
class FacetGraph {
public:
    static constexpr std::uint32_t kNone = static_cast<std::uint32_t>(-1);

    /// Numbers the facets in their order. Their m_nRegion holds the numbers afterwards. A facet that stands
    /// in the order twice has its first number.
    ///
    /// makeNote(*this, n) gives the note of the n-th facet, when its neighbours are known.
    template <class MakeNote>
    FacetGraph(std::vector<CFacet*> facets, MakeNote const& makeNote)
        : m_Facets(std::move(facets)), m_Records(m_Facets.size()) {
        for (std::uint32_t i = 0; i < Size(); ++i) {
            if (i + look_ahead::kNumberedFacet < Size()) Prefetch(m_Facets[i + look_ahead::kNumberedFacet]);
            if (Find(m_Facets[i]) >= i) SetNumber(*m_Facets[i], i);
        }
        for (std::uint32_t i = 0; i < Size(); ++i) {
            BringNeighbors(m_Facets, i);
            std::array<CFacet*, 3> const neighbors = varnet::Neighbors(*m_Facets[i]);
            for (std::size_t k = 0; k < neighbors.size(); ++k) m_Records[i].neighbors[k] = Find(neighbors[k]);
            m_Records[i].note = makeNote(*this, i);
        }
    }

    std::uint32_t Size() const { return static_cast<std::uint32_t>(m_Facets.size()); }
    CFacet& Facet(std::uint32_t n) const { return *m_Facets[n]; }
    std::array<std::uint32_t, 3> const& Neighbors(std::uint32_t n) const { return m_Records[n].neighbors; }
    Note const& NoteOf(std::uint32_t n) const { return m_Records[n].note; }

    /// Brings the neighbours and the note into the processor's cache.
    void PrefetchRecord(std::uint32_t n) const { Prefetch(&m_Records[n]); }

    /// The number of one of the facets, from its m_nRegion, which is below 0 for the numbers.
    static std::uint32_t NumberOf(CFacet const& facet) {
        return static_cast<std::uint32_t>(-1 - facet.m_nRegion);
    }
    static void SetNumber(CFacet& facet, std::uint32_t n) {
        facet.m_nRegion = -1 - static_cast<std::int32_t>(n);
    }

private:
    struct Record {
        std::array<std::uint32_t, 3> neighbors;
        Note note;
    };

    // A facet that is not one of these counts as none.
    std::uint32_t Find(CFacet const* pFacet) const {
        if (pFacet == nullptr || pFacet->m_nRegion >= 0) return kNone;
        std::uint32_t const n = NumberOf(*pFacet);
        return n < Size() && m_Facets[n] == pFacet ? n : kNone;
    }

    std::vector<CFacet*> m_Facets;
    ZeroedTable<Record> m_Records;
};

}  // namespace varnet
