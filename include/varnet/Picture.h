#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "varnet/Export.h"
#include "varnet/Geometry.h"
#include "varnet/Layer.h"

namespace varnet {

/// A mesh in a picture. The spans must live while the picture is drawn.
struct PicturedMesh {
    std::span<Point3 const> points;
    std::span<Triangle const> triangles;
    std::uint32_t color = 0x8FB3CF;  ///< 0xRRGGBB
    /// A colour for each triangle, instead of the one for all; empty or as many as triangles.
    std::span<std::uint32_t const> colors;
    double opacity = 1.0;  ///< how much it hides of what is behind it
};

/// A picture of meshes, seen from the front, the right and above, in parallel projection: an SVG document of
/// some hundred pixels a side, without a background. Facets that look away are left out; the others are
/// shaded by their slope, and drawn over each other from the back to the front, with lines along edges where
/// the surface bends sharply or ends.
VARNET_KIT_API std::string PictureOf(std::span<PicturedMesh const> meshes, std::string const& title);

/// One part of a picture of layers: a layer, and what is written above it.
struct PicturePanel {
    std::string title;
    Layer const* layer = nullptr;  ///< none: a panel without paths
};

/// Layers side by side as an SVG document, all in one scale that shows the box, with a scale bar: solid
/// filled, then all paths in their order, from blue over green to red. Points that cannot be drawn are left
/// out. An empty box: that of the layers.
VARNET_KIT_API std::string PictureOf(std::span<PicturePanel const> panels, Box2 const& box = {});
VARNET_KIT_API std::string PictureOf(Layer const& layer, std::string const& title);

/// Writes a picture, or any other bytes, as a file, which appears under its name only when it is complete.
/// Throws Error of kind kFile.
VARNET_KIT_API void WriteBytes(std::filesystem::path const& path, std::string_view bytes);

/// The text with the characters that mean something in HTML and SVG written so that they stand for
/// themselves; control characters become blanks.
VARNET_KIT_API std::string EscapedMarkup(std::string_view text);

/// Writes a mesh as a PLY file, binary and little-endian, with a colour (0xRRGGBB) for each triangle. Throws
/// Error of kind kFile; kArgument where there are not as many colours as triangles.
VARNET_KIT_API void WritePly(std::filesystem::path const& path, std::span<Point3 const> points,
                             std::span<Triangle const> triangles, std::span<std::uint32_t const> colors);

}  // namespace varnet
