#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace varnet {

// The words of CLI slice files (Common Layer Interface, version 2.0), and of their disguised form.

enum class SliceCommand { kLayer, kPolyline, kHatches };

/// A binary command as its word tells it.
struct BinaryWord {
    SliceCommand command;
    bool isShort;         ///< parameters are unsigned 16-bit numbers; else 32-bit integers and floats
    std::int32_t offset;  ///< by which every coordinate of a disguised command was raised

    std::size_t NumberSize() const { return isShort ? 2 : 4; }
    /// Whole numbers in front: polyline id, direction, count; hatches id, count.
    std::size_t Wholes() const {
        return command == SliceCommand::kPolyline ? 3 : command == SliceCommand::kHatches ? 2 : 0;
    }
    /// Coordinates of an item.
    std::size_t Reals() const { return command == SliceCommand::kHatches ? 4 : 2; }
};

/// A disguised word is this many times the offset, with 1, 2 or 3 for the command on top.
inline constexpr std::int32_t kDisguiseStride = 245;
/// The offsets that are written lie below this.
inline constexpr std::int32_t kDisguiseCount = 111;

inline std::optional<BinaryWord> PlainWordOf(std::uint16_t word) {
    switch (word) {
        case 127:
        case 128:
            return BinaryWord{SliceCommand::kLayer, word == 128, 0};
        case 129:
        case 130:
            return BinaryWord{SliceCommand::kPolyline, word == 129, 0};
        case 131:
        case 132:
            return BinaryWord{SliceCommand::kHatches, word == 131, 0};
        default:
            return std::nullopt;
    }
}

inline std::optional<BinaryWord> DisguisedWordOf(std::uint16_t word) {
    std::int32_t const command = word % kDisguiseStride;
    if (command < 1 || command > 3) return std::nullopt;
    return BinaryWord{static_cast<SliceCommand>(command - 1), false, word / kDisguiseStride};
}

inline constexpr std::string_view kHeaderStartWord = "$$HEADERSTART";
inline constexpr std::string_view kHeaderEndWord = "$$HEADEREND";
inline constexpr std::string_view kGeometryStartWord = "$$GEOMETRYSTART";
inline constexpr std::string_view kGeometryEndWord = "$$GEOMETRYEND";

/// How much of a line is looked at for a word.
inline constexpr std::size_t kColumnsForWords = 20;

}  // namespace varnet
