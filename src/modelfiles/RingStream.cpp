// The ring stream: one block a region, with the steps in which a ring of edges grows over it, and the points
// that they close on. It is written only; how it is read is part of the format, and of the host's business.

#include <array>
#include <cstddef>
#include <cstring>

#include "foundation/files/ByteStream.h"
#include "foundation/files/LittleEndian.h"
#include "foundation/files/Path.h"
#include "mesh/FacetWalk.h"
#include "mesh/STLModel.h"
#include "modelfiles/CSMLayout.h"
#include "modelfiles/QuantizedPoint.h"
#include "modelfiles/RingEncoder.h"

using namespace varnet;

namespace {

// The box's least corner stands in the order x, z, y, and the step is the reciprocal of the scale.
void WriteHeader(ByteWriter& writer, PointGrid const& grid) {
    unsigned char* const pHeader = writer.Room(csm::kHeaderSize);
    std::memset(pHeader, 0, csm::kHeaderSize);
    std::memcpy(pHeader, csm::kRingText.data(), csm::kRingText.size());
    for (double const d : {grid.origin.x, grid.origin.z, grid.origin.y, 1.0 / grid.dScale}) {
        StoreDouble(writer.Room(sizeof d), d);
    }
}

void WriteCSMPoint(ByteWriter& writer, PointGrid const& grid, tagVertexNode const& vertex) {
    ring_point::Store(writer.Room(ring_point::kSize), vertex, grid);
}

// A step has a point when none of its bytes is 0. A position in the ring that no byte holds can read as 0:
// its point is then left over, and comes with the next step.
void WriteRegion(ByteWriter& writer, PointGrid const& grid, RingEncoder const& encoder) {
    StoreUnsigned(writer.Room(4), static_cast<std::uint32_t>(encoder.Steps().size()));
    auto point = encoder.Points().begin();
    for (int i = 0; i < 3; ++i) WriteCSMPoint(writer, grid, **point++);
    for (RingEncoder::Step const& step : encoder.Steps()) {
        unsigned char* const pBytes = writer.Room(2);
        pBytes[0] = step.nPosition;
        pBytes[1] = step.nRun;
        if (step.nPosition != 0 && step.nRun != 0) WriteCSMPoint(writer, grid, **point++);
    }
}

}  // namespace

int CSTLModel::SaveCSMFile1(char* path) {
    File const file = OpenPath(path, "wb");
    if (file == nullptr) return 0;
    ByteWriter writer(file.get());
    PointGrid const grid = GridOf(m_VertexTree.m_BoundBox, ring_point::kSteps);
    WriteHeader(writer, grid);
    ForEachFacet(m_SurfaceArray, [](CFacet& facet) { facet.m_nRegion = 1; });
    RingEncoder encoder;
    ForEachFacet(m_SurfaceArray, [&](CFacet& seed) {
        if (seed.m_nRegion == 0) return;
        encoder.Encode(seed);
        WriteRegion(writer, grid, encoder);
    });
    return 1;
}
