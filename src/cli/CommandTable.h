#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/Require.h"

namespace varnet {

// The words of CLI slice files, for reader and writer alike.

/// The ways in which a file holds its layers: the values of CLayerModel::m_nFileMode.
inline constexpr int kModeText = 1;
inline constexpr int kModeBinary = 2;
inline constexpr int kModeDisguised = 3;  // every command hidden by a random offset of its own

inline constexpr bool IsFileMode(int nMode) { return nMode >= kModeText && nMode <= kModeDisguised; }

/// The longest piece of a line that is read at once: a line beyond it falls into several.
inline constexpr std::size_t kLongestLine = 10239;

/// How much of a line is looked at for a command or a keyword.
inline constexpr std::size_t kWordColumns = 20;

// ---- commands of layers

enum class Command { kLayer, kPolyline, kHatches, kGeometryStart };

/// One command in all its forms. Its parameters are nWholes whole numbers (polyline: id, direction, count;
/// hatches: id, count), of which the last announces the items that follow, each of nReals coordinates
/// (polyline: x, y; hatches: start x, y, end x, y). A layer has no whole number and one item, its height.
struct CommandEntry {
    Command command;
    std::string_view word;  // what makes a line of text this command, in capitals
    std::string_view text;  // what such a line begins with when it is written
    std::uint16_t nLong;    // binary, with 32-bit numbers and floats: the form that is written
    std::uint16_t nShort;   // binary, with unsigned 16-bit numbers throughout
    std::uint16_t
        nDisguised;  // what is left of a disguised word, whose parameters are those of the long form
    int nWholes;
    int nReals;
};

/// In the order in which lines are searched for the words. 0 stands for a form that there is not.
inline constexpr std::array<CommandEntry, 4> kCommands = {{
    {Command::kLayer, "LAYER", "$$LAYER/", 127, 128, 1, 0, 1},
    {Command::kPolyline, "POLYLINE", "$$POLYLINE/", 130, 129, 2, 3, 2},
    {Command::kHatches, "HATCH", "$$HATCHES/", 132, 131, 3, 2, 4},
    {Command::kGeometryStart, "GEOMETRYSTART", "$$GEOMETRYSTART", 0, 0, 0, 0, 0},
}};

inline constexpr CommandEntry const& EntryOf(Command command) {
    return kCommands[static_cast<std::size_t>(command)];
}

/// A binary command as its word tells it.
struct BinaryCommand {
    CommandEntry const* pEntry;
    bool bShort;
    int nOffset;  // what every coordinate of a disguised command was raised by
};

/// The command of a line of text: its first 20 characters, up to a zero byte, hold the word in any case.
/// Nothing for any other line.
std::optional<Command> TextCommandOf(std::string_view line);

/// The command of a word in a binary file; nothing for a word that is none.
std::optional<BinaryCommand> BinaryCommandOf(std::uint16_t nWord);

// ---- disguised words

/// A disguised word is this many times the offset, and the command on top.
inline constexpr int kDisguiseStep = 245;
/// The writer's offsets lie below this.
inline constexpr int kDisguiseOffsets = 111;

/// The word of a command that is disguised by one of the writer's offsets.
inline constexpr std::uint16_t DisguisedWord(Command command, int nOffset) {
    VARNET_REQUIRE(nOffset >= 0 && nOffset < kDisguiseOffsets);
    return static_cast<std::uint16_t>(nOffset * kDisguiseStep + EntryOf(command).nDisguised);
}

/// The command and offset of a disguised word; nothing for one that holds no command.
std::optional<BinaryCommand> DisguisedCommandOf(std::uint16_t nWord);

// ---- the header

enum class Keyword {
    kHeaderEnd,
    kBinary,
    kDisguised,
    kText,
    kUnits,
    kVersion,
    kNozzle,
    kDate,
    kDimension,
    kAlign,
    kLabel,
    kUserData,
    kLayers
};

/// In the order in which a line is searched for them; the first that is found decides.
inline constexpr std::array<std::string_view, 13> kKeywords = {
    "$$HEADEREND", "$$BINARY",    "$$COC",   "$$ASCII", "$$UNITS",    "$$VERSION", "$$NOZZLE",
    "$$DATE",      "$$DIMENSION", "$$ALIGN", "$$LABEL", "$$USERDATA", "$$LAYERS"};

inline constexpr std::string_view kHeaderStart = "$$HEADERSTART";
inline constexpr std::string_view kGeometryEnd = "$$GEOMETRYEND";

inline constexpr std::string_view SpellingOf(Keyword keyword) {
    return kKeywords[static_cast<std::size_t>(keyword)];
}

/// The keyword that names a file mode from 1 to 3.
inline constexpr Keyword KeywordOfMode(int nMode) {
    VARNET_REQUIRE(IsFileMode(nMode));
    constexpr std::array<Keyword, 3> kModes = {Keyword::kText, Keyword::kBinary, Keyword::kDisguised};
    return kModes[static_cast<std::size_t>(nMode - kModeText)];
}

/// The first keyword that stands within the first 20 characters of a line, up to a zero byte, as it stands.
std::optional<Keyword> KeywordOf(std::string_view line);

}  // namespace varnet
