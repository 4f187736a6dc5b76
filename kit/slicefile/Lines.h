#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/File.h"

namespace varnet {

/// A line of a file, without its end, and where it is.
struct Line {
    std::string_view text;
    std::uint64_t number = 0;  ///< from 1
    std::uint64_t place = 0;   ///< of its first byte
};

/// Walks through a file line by line; lines end at a line feed, have any length, and lose a carriage return
/// at their end. Where a longest length is given, a line beyond it comes in pieces of about that length, of
/// one number: so what is no text takes no more memory than that.
class LineReader {
public:
    LineReader(SeekableFile& file, std::uint64_t place, std::uint64_t firstNumber,
               std::size_t longest = SIZE_MAX)
        : m_File(file), m_Place(place), m_Number(firstNumber), m_Longest(longest) {}

    /// The next line; nothing at the end. The text is valid until the next call.
    std::optional<Line> Next();
    /// Behind the last line.
    std::uint64_t Place() const { return m_Place; }

private:
    bool Fill();

    SeekableFile& m_File;
    std::vector<char> m_Buffer;
    std::size_t m_Used = 0;
    std::uint64_t m_Place;
    std::uint64_t m_Number;
    std::size_t m_Longest;
    bool m_AtEnd = false;
};

/// The text without the blanks around it.
std::string_view Trimmed(std::string_view text);
/// In capitals, as far as letters of ASCII go.
std::string InCapitals(std::string_view text);

/// Numbers separated by blanks and commas, without regard to the locale.
class NumberScanner {
public:
    explicit NumberScanner(std::string_view text) : m_Rest(text) {}
    /// The next one. Nothing at the end, and where there is something else than a number, which Bad tells.
    std::optional<double> Next();
    bool Bad() const { return m_Bad; }

private:
    std::string_view m_Rest;
    bool m_Bad = false;
};

}  // namespace varnet
