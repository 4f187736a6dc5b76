#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "page/PageText.h"
#include "varnet/Layer.h"
#include "varnet/PathOrder.h"

namespace varnet {

/// What a page says of a layer.
struct PageLayer {
    std::int64_t number = 0;
    double z = 0.0;
    Box2 box;  ///< of the points that can be drawn; empty without
    std::size_t chunk = 0;
    std::size_t contours = 0;  ///< closed ones
    std::size_t openPaths = 0;
    std::size_t strokes = 0;  ///< of the part
    std::size_t supportStrokes = 0;
    std::size_t points = 0;  ///< of contours, open paths and both ends of strokes
    double contourLength = 0.0;
    double strokeLength = 0.0;
    double area = 0.0;
    double travel = 0.0;  ///< from where the layer before ended
};

/// Packs layers, some of them together: enough for compression, and few enough to be unpacked at once.
///
/// A chunk: how many bytes of counts there are, and how many points, of 32 bits each. The counts as varints:
/// for each layer its paths, for each of them its points times 8, plus 1 if closed, 2 if a hole, 4 if of a
/// support; then its chains, for each of them its strokes times 2, plus 1 if of a support. Then the points,
/// low and high bytes of each axis apart, as DeltaAxis has them, in each layer from 0: those of paths, then
/// both ends of strokes; in 65535 steps of the layer's box.
class LayerPacker {
public:
    void Add(Layer const& layer);
    /// Ends the last chunk.
    void Finish();

    std::vector<PageLayer> const& Layers() const { return m_Layers; }
    /// Compressed.
    std::vector<std::string> const& Chunks() const { return m_Chunks; }

private:
    std::vector<PageLayer> m_Layers;
    std::vector<std::string> m_Chunks;
    std::string m_Counts;
    std::array<DeltaAxis, 2> m_Axes;
    Point2 m_Head;
};

}  // namespace varnet
