// Bytes taken for a binary STL file, cut from disk and in memory: the layers are the same.

#include "FuzzInput.h"
#include "Require.h"
#include "varnet/Kit.h"

namespace {

using varnet::Error;

constexpr double kLayers = 6.0;
constexpr double kLines = 10.0;

varnet::StreamSettings SettingsFor(varnet::Part const& part) {
    varnet::Box3 const& box = part.Measures().box;
    varnet::StreamSettings settings;
    settings.sortMemory = std::size_t{1} << 20;
    settings.slice.layer = (box.max.z - box.min.z) / kLayers;
    settings.slice.hatch = (box.max.x - box.min.x) / kLines;
    return settings;
}

// Neither heals, so that each gets the facets as they are.
void Compare(std::filesystem::path const& path) {
    varnet::IntakeSettings asItIs;
    asItIs.heal = false;
    varnet::Part const part = varnet::Part::Read(path, asItIs);
    varnet::StreamSettings const settings = SettingsFor(part);
    varnet::StreamSlicer streamed(path, settings);
    varnet::StreamReport const& found = streamed.Stream();
    Require(found.facetsRead == part.Report().facetsRead && found.notFinite == part.Report().notFinite);
    Require(found.degenerate == part.Report().degenerate);
    varnet::Slicer slicer({{part.Points(), part.Triangles(), found.turned, false}}, settings.slice);
    Require(streamed.LayerCount() == slicer.LayerCount());
    for (varnet::Layer const& layer : slicer) Require(streamed.NextLayer() == layer);
    Require(!streamed.NextLayer().has_value());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    MemoryFile const file(data, size);
    try {
        Compare(file.Name());
    } catch (Error const& error) {
        Require(*error.what() != '\0');
    }
    return 0;
}
