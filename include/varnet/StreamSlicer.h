#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Layer.h"
#include "varnet/Slicer.h"

namespace varnet {

/// How a part is sliced that does not fit into memory.
struct StreamSettings {
    /// As of Slicer. The cuts are made by one thread whatever `threads` says.
    SliceSettings slice;
    double scale = 1.0;  ///< every coordinate is multiplied by this: 25.4 for inches, 1000 for metres
    /// The folder of the temporary file; empty for the system's. It takes 40 bytes for each facet that a
    /// layer of the range cuts.
    std::filesystem::path temp;
    /// Bytes in which facets are sorted, from 1 MiB on. What comes out is the same for any number.
    std::size_t sortMemory = std::size_t{64} << 20;
};

/// What was found in the file, and what of it went where.
struct StreamReport {
    std::int64_t facetsInFile = 0;  ///< announced
    std::int64_t facetsRead = 0;    ///< that the file holds
    std::int64_t notFinite = 0;     ///< left out: a corner is no number or beyond 1e10
    std::int64_t degenerate = 0;    ///< left out: two corners are equal
    /// Facets without area. A Part would have taken them out where it can; here they are cut as they are.
    std::int64_t collinear = 0;
    bool turned = false;               ///< the part is inside out as a whole, and was turned
    std::int64_t facetsSorted = 0;     ///< that a layer of the range cuts
    std::uint64_t temporaryBytes = 0;  ///< on disk
    /// Of the layers since the first: in which contours enclose less by their winding than what is solid, as
    /// where a body is inside out among others. Always 0 for SolidRule::kOdd.
    std::int64_t insideOutLayers = 0;
};

/// Cuts a binary STL file (or OLTP) into layers without ever holding it: the file is read twice, once for its
/// measures, and once to sort the facets by the layer that cuts them first, in a file on disk; then a sweep
/// goes up over the facets. Memory grows with the facets that one layer cuts, and not with the part.
///
/// What comes out is, layer by layer and bit for bit, what Part::Read, SlicerInputs and Slicer give for the
/// same file and settings, as long as
///   1. the part is closed by equal corners, and has no facets without area: nothing is healed here. Path
///      ends are joined as Slicer joins them (`close`), and counted in its report;
///   2. no body is inside out, or the part is one body. Which facets are a body is not known here. A part of
///      negative volume is turned as a whole; a body that is inside out among others counts as its contours
///      wind, and is empty under SolidRule::kWinding;
///   3. a corner at 0 has the same sign of 0 in all facets.
///
/// Not to be had in this way, and there is no setting for it: several parts at a time, supports, joining of
/// near corners, other formats, a layer by its number alone. Files come from disk, as they are read twice.
///
/// The temporary file has no name where the system allows that, and is gone when the slicer is, or the
/// process ends in any way.
///
/// To be used by one thread at a time.
class VARNET_KIT_API StreamSlicer {
public:
    /// Reads and sorts. Throws Error of kind kArgument for settings that make no sense, as Slicer does; kFile
    /// where the system refuses, as where the disk of the temporary file is full; kContent where the file is
    /// no binary STL; kCancelled.
    explicit StreamSlicer(std::filesystem::path const& path, StreamSettings const& settings = {});
    ~StreamSlicer();
    StreamSlicer(StreamSlicer&& other) noexcept;
    StreamSlicer& operator=(StreamSlicer&& other) noexcept;

    /// With the range that is made.
    SliceSettings const& Settings() const;
    /// Of the whole, whatever the range.
    std::int32_t LayerCount() const;
    /// The range that is made: the first and the last number.
    std::int32_t FirstLayer() const;
    std::int32_t LastLayer() const;
    /// Of all facets that are sliced.
    Box3 const& Box() const;

    /// The next layer of the range; nothing behind the last one, and then the first again. Throws Error of
    /// kind kFile, kCancelled, and kContent where a layer cuts more than 536,870,912 facets; after an error
    /// the next call begins anew with the first layer.
    std::optional<Layer> NextLayer();
    /// Makes all layers of the range, and hands them out in order. What the callback throws comes out of
    /// here. Returns the report.
    SliceReport const& ForEachLayer(std::function<void(Layer&&)> const& take);

    /// Of the layers that NextLayer or ForEachLayer gave since they last began.
    SliceReport const& Report() const;
    StreamReport const& Stream() const;

private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

}  // namespace varnet
