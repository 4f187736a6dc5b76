#include "cli/CommandTable.h"

namespace varnet {

namespace {

std::string_view FirstColumns(std::string_view line) {
    line = line.substr(0, kWordColumns);
    return line.substr(0, line.find('\0'));
}

}  // namespace

std::optional<Command> TextCommandOf(std::string_view line) {
    std::array<char, kWordColumns> capitals;
    std::size_t nLength = 0;
    for (char const c : FirstColumns(line)) {
        capitals[nLength++] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    std::string_view const text(capitals.data(), nLength);
    for (CommandEntry const& entry : kCommands) {
        if (text.find(entry.word) != std::string_view::npos) return entry.command;
    }
    return std::nullopt;
}

std::optional<BinaryCommand> BinaryCommandOf(std::uint16_t nWord) {
    if (nWord == 0) return std::nullopt;
    for (CommandEntry const& entry : kCommands) {
        if (nWord == entry.nLong) return BinaryCommand{&entry, false, 0};
        if (nWord == entry.nShort) return BinaryCommand{&entry, true, 0};
    }
    return std::nullopt;
}

std::optional<BinaryCommand> DisguisedCommandOf(std::uint16_t nWord) {
    int const nCommand = nWord % kDisguiseStep;
    if (nCommand == 0) return std::nullopt;
    for (CommandEntry const& entry : kCommands) {
        if (nCommand == entry.nDisguised) return BinaryCommand{&entry, false, nWord / kDisguiseStep};
    }
    return std::nullopt;
}

std::optional<Keyword> KeywordOf(std::string_view line) {
    std::string_view const text = FirstColumns(line);
    for (std::size_t i = 0; i < kKeywords.size(); ++i) {
        if (text.find(kKeywords[i]) != std::string_view::npos) return static_cast<Keyword>(i);
    }
    return std::nullopt;
}

}  // namespace varnet
