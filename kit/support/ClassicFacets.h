#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "varnet/Part.h"

namespace varnet {

/// A part as a classic model, and which facet of it is which triangle of the part.
class ClassicFacets {
public:
    explicit ClassicFacets(Part const& part);

    CSTLModel& Model() { return *m_Model; }
    /// The triangle of a facet of the model; -1 for one that is not of the part.
    std::int32_t TriangleOf(CFacet const* facet) const;

private:
    std::unique_ptr<CSTLModel> m_Model;
    std::unordered_map<CFacet const*, std::int32_t> m_Triangles;
};

}  // namespace varnet
