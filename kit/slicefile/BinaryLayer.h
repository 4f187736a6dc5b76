#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "files/File.h"
#include "slicefile/Words.h"
#include "varnet/Layer.h"
#include "varnet/SliceFile.h"

namespace varnet {

/// How the binary commands of a file are to be read.
struct BinaryForm {
    bool isDisguised = false;
    bool isAligned = false;
    double units = 1.0;
    std::uint64_t start = 0;  ///< of the geometry, from which alignment counts
};

/// Where the layers of a binary file are, and how far it could be walked through.
struct BinaryIndex {
    std::vector<std::uint64_t> places;  ///< of the layers
    std::uint64_t end = 0;              ///< behind the last command
    std::optional<std::string> broken;  ///< why the walk ended at `end`, before the file did
};

/// Walks through the commands without reading the coordinates.
BinaryIndex IndexBinary(SeekableFile& file, BinaryForm const& form, Progress const& progress);

/// Reads the commands of one layer, which lies at a place of the file. Throws Error::AtByte.
Layer ParseBinaryLayer(std::span<char const> bytes, BinaryForm const& form, std::filesystem::path const& file,
                       std::uint64_t place);

}  // namespace varnet
