#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "part/Classic.h"
#include "varnet/Part.h"

namespace varnet {

/// A part as a classic model, and which facet of it is which triangle of the part.
class ClassicFacets {
public:
    explicit ClassicFacets(Part const& part);

    CSTLModel& Model() { return *m_Mesh.model; }
    /// The triangle of a facet of the model.
    std::int32_t TriangleOf(CFacet const* facet) const;

private:
    // Facets that lie one behind the other in memory.
    struct Run {
        CFacet const* first;
        std::int32_t number;  // of the first one, in the order of the model
    };

    ClassicMesh m_Mesh;
    std::vector<Run> m_Runs;  // by address
};

}  // namespace varnet
