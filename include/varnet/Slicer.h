#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Geometry.h"
#include "varnet/Layer.h"

namespace varnet {

/// A mesh to slice: a view. Points and triangles are not copied and must stay as they are for as long as the
/// Slicer lives.
struct SlicerInput {
    std::span<Point3 const> points;
    std::span<Triangle const> triangles;
    /// The triangles face inward: the mesh counts as if each were turned. For a body that is inside out.
    bool turned = false;
    /// It holds a part up: it gets fill lines in layers of even numbers where no part is, and no contours.
    bool support = false;
};

/// What is solid.
enum class SolidRule {
    kWinding,  ///< where the contours of all parts together go round more often counter-clockwise: overlaps
               ///< are filled, shells within shells too, cavities are empty
    kOdd       ///< where an odd number of contours goes round, whichever way they run
};

/// How parts are sliced. Millimetres and degrees.
struct SliceSettings {
    double layer = 0.2;       ///< height of a layer
    double hatch = 0.5;       ///< from fill line to fill line; 0 for contours alone
    double angle = 45.0;      ///< of the fill lines of the first layer; each further layer is at right angles
    double tolerance = 0.01;  ///< no point of a cut lies further from its contour; 0 keeps every point
    SolidRule rule = SolidRule::kWinding;
    double close = 0.05;          ///< gaps in contours up to this are closed; 0 for never
    int threads = 1;              ///< 1 to 1024, the calling one among them; the layers are the same
    std::int32_t firstLayer = 1;  ///< the range to make, by the numbers that the layers of the whole have
    std::int32_t lastLayer = 0;   ///< 0 for the last one of all
    /// Instead of a range of numbers: all layers are dealt out to so many shards, each the next ones above
    /// those before, as many as another or one more; and this one is made, from 1 on. 0 for no shards.
    std::int32_t shards = 0;
    std::int32_t shard = 0;
    Progress progress;  ///< of making the layers of the range, and of the preparation before
};

/// What came of slicing. Lengths in millimetres, of the layers counted in `layers`.
struct SliceReport {
    std::int64_t layers = 0;
    std::int64_t contours = 0;  ///< closed ones
    std::int64_t openPaths = 0;
    std::int64_t layersWithOpenPaths = 0;
    /// The longest way over which an end that stayed open would have had to be joined with the next one.
    double longestGap = 0.0;
    /// Cubic millimetres that the paths which stayed open would enclose, joined over all such ways: about
    /// what the layers lack.
    double missingVolume = 0.0;
    std::int64_t gapsClosed = 0;    ///< longer than a micron
    double gapsClosedLength = 0.0;  ///< of all of them
    double longestGapClosed = 0.0;
    std::int64_t points = 0;   ///< of contours and open paths
    std::int64_t strokes = 0;  ///< in parts
    std::int64_t supportStrokes = 0;
    double contourLength = 0.0;
    /// Cubic millimetres of the layers as they are: area times height, of the last one what the parts fill.
    double volume = 0.0;
    double solidVolume = 0.0;  ///< the same before contours were thinned out
    /// Cubic millimetres that the closed contours enclosed before overlaps were united and cavities within
    /// nothing dropped, by their winding: for closed parts that of the mesh, up to the height of layers.
    double cutVolume = 0.0;
    std::int64_t resolvedLayers = 0;  ///< in which contours crossed or touched
    /// Of the whole, whatever the range: the volume of the part meshes by their winding, with bodies that
    /// overlap counted as often as they do.
    double meshVolume = 0.0;
    std::int64_t skippedFacets = 0;  ///< not sliced: a corner is no number or beyond 1e10 mm
};

/// Cuts parts, and what supports them, into layers.
///
/// Layers are numbered from 1, the first one resting on the lowest point of the parts. Each is cut at half
/// its height, the last one at half of what the parts fill of it. A vertex at the very height counts as above
/// it: a cut is what lies just below, so that every closed mesh gives closed contours at every height, and a
/// level facet changes nothing about the walls.
///
/// Which segments of a cut meet is told by the edges of the mesh, not by coordinates. Ends that are left over
/// are joined where they lie within a micron of each other, and up to `close`, the nearest first.
///
/// Beyond the meshes the slicer needs four bytes a facet, and what a few layers take.
///
/// Const operations may be called from several threads at a time.
class VARNET_KIT_API Slicer {
public:
    /// Throws Error of kind kArgument for settings that make no sense, an index out of range, parts without
    /// height, more than a million layers, and more than a million fill lines across the parts; kCancelled.
    explicit Slicer(std::vector<SlicerInput> const& inputs, SliceSettings const& settings = {});
    ~Slicer();
    Slicer(Slicer&& other) noexcept;
    Slicer& operator=(Slicer&& other) noexcept;

    SliceSettings const& Settings() const;
    /// Of the whole, whatever the range.
    std::int32_t LayerCount() const;
    /// The range that is made: the first and the last number.
    std::int32_t FirstLayer() const;
    std::int32_t LastLayer() const;

    /// Any layer by its number, from 1 to LayerCount(), whatever the range. Throws Error of kind kArgument
    /// for another number. Successive layers are had faster from NextLayer.
    Layer LayerAt(std::int32_t number) const;

    /// The next layer of the range; nothing behind the last one, and then the first again. Throws Error of
    /// kind kCancelled; after an error the next call begins anew with the first layer.
    std::optional<Layer> NextLayer();
    /// Makes all layers of the range, and hands them out in order, in the calling thread. What the callback
    /// throws comes out of here. Returns the report.
    SliceReport const& ForEachLayer(std::function<void(Layer&&)> const& take);

    /// Of the layers that NextLayer or ForEachLayer gave since they last began.
    SliceReport const& Report() const;

    /// Goes once through the layers of the range: for (Layer& layer : slicer). Begins anew with each begin().
    class Iterator {
    public:
        using value_type = Layer;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;
        Layer& operator*() const { return *m_Layer; }
        Layer* operator->() const { return &*m_Layer; }
        Iterator& operator++() {
            m_Layer = m_Slicer->NextLayer();
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t) const { return !m_Layer.has_value(); }

    private:
        friend class Slicer;
        explicit Iterator(Slicer& slicer) : m_Slicer(&slicer), m_Layer(slicer.NextLayer()) {}
        Slicer* m_Slicer;
        mutable std::optional<Layer> m_Layer;
    };
    Iterator begin();
    std::default_sentinel_t end() const { return {}; }

private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

}  // namespace varnet
