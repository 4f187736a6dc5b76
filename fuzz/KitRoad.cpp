// Bytes taken for a mesh file, or for slices, and down the whole road of the kit.

#include <algorithm>

#include "FuzzInput.h"
#include "Require.h"
#include "varnet/Kit.h"

namespace {

using varnet::Error;

// Small inputs are to be tried often: the road is short for them, whatever size the part claims.
constexpr double kLayers = 6.0;
constexpr double kLines = 10.0;

void RequireSound(varnet::Layer const& layer) {
    Require(layer.offsets.size() == layer.ContourCount() + 1 && layer.offsets.back() == layer.points.size());
    Require(layer.chainOffsets.size() == layer.ChainCount() + 1);
    Require(layer.chainOffsets.back() == layer.strokes.size());
    for (varnet::Contour const& contour : layer.contours) {
        Require(contour.parent < static_cast<std::int32_t>(layer.ContourCount()));
    }
}

void TakeSlices(std::filesystem::path const& path) {
    varnet::SliceReadSettings settings;
    settings.partial = true;
    varnet::SliceFile const file(path, settings);
    varnet::SliceWriter writer("/dev/null", file.LayerCount());
    varnet::PathOrder order;
    for (std::int64_t n = 1; n <= file.LayerCount(); ++n) {
        varnet::Layer layer = file.LayerAt(n);
        RequireSound(layer);
        order.Order(layer);
        RequireSound(layer);
        writer.Write(layer);
    }
    writer.Finish();
}

void TakePart(std::filesystem::path const& path) {
    varnet::Part part = varnet::Part::Read(path);
    std::int64_t const before = part.Report().openEdgesExact;
    Require(part.Measures().openEdges <= before);
    varnet::RepairReport const repaired = part.Repair();
    Require(repaired.openEdgesAfter <= repaired.openEdgesBefore);
    varnet::Part filled = part;
    varnet::RepairSettings filling;
    filling.fillHoles = 1e300;
    filling.outward = true;
    varnet::RepairReport const closed = filled.Repair(filling);
    Require(closed.openEdgesAfter <= closed.openEdgesBefore);
    Require(closed.facetsAdded >= closed.holesFilled);
    for (varnet::Body const& body : part.Bodies()) Require(!body.Triangles().empty());
    varnet::Box3 const& box = part.Measures().box;
    double const size = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
    varnet::Supports const supports(part);
    varnet::SliceSettings settings;
    settings.layer = (box.max.z - box.min.z) / kLayers;
    settings.hatch = size / kLines;
    varnet::Slicer slicer(varnet::SlicerInputs(part, supports), settings);
    varnet::SliceWriter writer("/dev/null", slicer.LayerCount());
    slicer.ForEachLayer([&writer](varnet::Layer&& layer) {
        RequireSound(layer);
        writer.Write(layer);
    });
    writer.Finish();
    // A closed part has closed layers.
    if (part.AsSliced().Measures().openEdges == 0) Require(slicer.Report().openPaths == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    MemoryFile const file(data, size);
    try {
        if (varnet::SliceFile::IsOne(file.Name())) {
            TakeSlices(file.Name());
        } else {
            TakePart(file.Name());
        }
    } catch (Error const& error) {
        Require(*error.what() != '\0');
    }
    return 0;
}
