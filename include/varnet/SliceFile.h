#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "varnet/Error.h"
#include "varnet/Export.h"
#include "varnet/Geometry.h"
#include "varnet/Layer.h"

namespace varnet {

/// How a slice file holds its layers: lines of text; binary commands; binary commands, each raised by a
/// random offset.
enum class SliceMode { kText = 1, kBinary = 2, kDisguised = 3 };
/// "CLI slices, text"
VARNET_KIT_API char const* NameOf(SliceMode mode);

/// Which layers of a whole build a file holds, by number.
struct LayerRange {
    std::int64_t first = 1;
    std::int64_t last = 0;
    std::int64_t whole = 0;  ///< layers of the build
    bool operator==(LayerRange const&) const = default;
};

/// What the header of a slice file says.
struct SliceHeader {
    SliceMode mode = SliceMode::kBinary;
    double units = 1.0;          ///< millimetres a unit; layers are given in millimetres
    std::int32_t version = 200;  ///< 200 is version 2.00
    std::optional<std::int64_t> announcedLayers;
    std::optional<Box3> dimension;    ///< millimetres; as it stands there, right or not
    std::optional<LayerRange> range;  ///< of a file that holds a part of a build, where this library wrote it
    bool aligned = false;             ///< commands and parameters lie at multiples of four bytes
};

/// What was put right on reading, in the whole file.
struct SliceFileReport {
    std::int64_t blankLines = 0;
    std::int64_t comments = 0;
    std::int64_t unknownCommands = 0;  ///< $$POWER and the like, in text
    std::int64_t wrongCounts = 0;      ///< paths with another number of points than announced, in text
    std::int64_t strayBytes = 0;       ///< line ends and zeros behind the header or behind the last layer
    bool endMissing = false;           ///< text without $$GEOMETRYEND
    /// Why and where the file could not be read on; the layers before are there. Only where `partial` was
    /// set.
    std::optional<std::string> broken;
    std::vector<std::string> notes;  ///< the above, a line each for a person
};

struct SliceReadSettings {
    bool partial = false;  ///< a broken file gives the layers before the break instead of an error
    Progress progress;     ///< of the first walk through the file
};

/// A slice file, open for reading. On opening it is walked through once, for where its layers are; after that
/// any layer is read by its number. Positions have 64 bits, lines any length.
///
/// Directions below 2 make a path a closed contour, in which a last point equal to the first is not stated
/// again; 0 is a hole (level 1), any other an outer contour (level 0). How contours lie in each other is not
/// looked at: parents are -1.
///
/// Const operations may be called from several threads at a time. Moves; a moved-from one can only be
/// destroyed.
class VARNET_KIT_API SliceFile {
public:
    /// Throws Error: kFile where the file cannot be read; kContent, with the line or the byte, where it is no
    /// slice file or broken; kCancelled.
    explicit SliceFile(std::filesystem::path const& path, SliceReadSettings const& settings = {});
    ~SliceFile();
    SliceFile(SliceFile&& other) noexcept;
    SliceFile& operator=(SliceFile&& other) noexcept;

    /// Whether a file begins as a slice file does. False too where it cannot be read.
    static bool IsOne(std::filesystem::path const& path);

    std::filesystem::path const& Path() const;
    std::uint64_t Size() const;
    SliceHeader const& Header() const;
    SliceFileReport const& Report() const;
    std::int64_t LayerCount() const;
    /// The layer of a number from 1 to LayerCount(). Throws Error: kArgument for another number, kContent
    /// with the line or byte for content that is broken, kFile.
    Layer LayerAt(std::int64_t number) const;
    /// The bytes of all layers as they stand in the file: where they begin, and where they end.
    std::uint64_t GeometryBegin() const;
    std::uint64_t GeometryEnd() const;

private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

struct SliceWriteSettings {
    SliceMode mode = SliceMode::kBinary;
    /// Of the random offsets of the disguised mode: with a seed the same layers give the same bytes,
    /// whichever layers are written with them.
    std::optional<std::uint64_t> seed;
    /// Where the file holds a part of a build only: stated in the header, so that JoinSliceFiles can tell a
    /// gap.
    std::optional<LayerRange> range;
};

/// The layer as a file of this mode gives it back: coordinates rounded as they are stored, contours without
/// parents. Paths that are put in order in this form are in the same order as when the file is read and
/// ordered afterwards.
VARNET_KIT_API Layer AsStored(Layer const& layer, SliceMode mode);

/// Writes a slice file layer by layer. Nothing stands under the file's name before Finish; a writer that is
/// destroyed before leaves nothing. Devices and pipes are written to directly, "-" is standard output, links
/// keep pointing, and a file that is replaced keeps owner and mode.
///
/// Text holds heights to two decimals and coordinates to three; binary modes hold floats. A closed contour is
/// written with its first point again at the end.
class VARNET_KIT_API SliceWriter {
public:
    /// layers is what the header announces. Throws Error of kind kFile.
    SliceWriter(std::filesystem::path const& path, std::int64_t layers,
                SliceWriteSettings const& settings = {});
    ~SliceWriter();
    SliceWriter(SliceWriter&& other) noexcept;
    SliceWriter& operator=(SliceWriter&& other) noexcept;

    /// Appends a layer. Throws Error of kind kFile, where the disk is full for instance.
    void Write(Layer const& layer);
    /// Appends the layers of a file of the same binary mode, byte by byte. step is told the share that is
    /// done.
    void Copy(SliceFile const& file, std::function<void(double)> const& step);
    /// Puts the file in its place. Throws Error: kFile; kArgument where another number of layers was written
    /// than announced.
    void Finish();

    std::int64_t LayersWritten() const;
    std::uint64_t BytesWritten() const;
    /// Paths whose line of text is longer than 10,239 characters, beyond which the classic reader takes it
    /// for two lines.
    std::int64_t TooLongForClassicReader() const;

private:
    class Work;
    std::unique_ptr<Work> m_Work;
};

/// What came of JoinSliceFiles.
struct JoinReport {
    std::int64_t layers = 0;          ///< of the output
    std::optional<LayerRange> range;  ///< where the first or the last layers of the build were not given
};

/// Puts the layers of several files together, the lowest first, as one file of the mode of the first. Joined
/// ranges of one build are the very bytes of a file of the whole; where the first or the last layers of the
/// build are not among them, the output states its range. Throws Error: kContent where the files differ in
/// mode, version or units, where their layers overlap or leave a gap, and where a file is broken or has other
/// layers than its range says, each by name; kFile; kArgument without files; kCancelled.
VARNET_KIT_API JoinReport JoinSliceFiles(std::span<std::filesystem::path const> inputs,
                                         std::filesystem::path const& output, Progress const& progress = {});

}  // namespace varnet
