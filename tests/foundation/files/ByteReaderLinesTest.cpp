#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "TestFiles.h"
#include "foundation/files/ByteStream.h"
#include "foundation/files/Path.h"

using namespace varnet;

namespace {

File Open(TestFolder const& folder, std::string const& bytes) {
    return OpenPath(WidePath(folder.Write("lines", bytes)), "r");
}

// The pieces into which the definition cuts a text: up to the line end, or nMost characters.
std::vector<std::string> Pieces(std::string const& bytes, std::size_t nMost) {
    std::vector<std::string> pieces;
    for (std::size_t i = 0; i < bytes.size(); i += pieces.back().size()) {
        std::size_t const nEnd = bytes.find('\n', i);
        std::size_t const nLength = nEnd == std::string::npos ? bytes.size() - i : nEnd + 1 - i;
        pieces.push_back(bytes.substr(i, std::min(nLength, nMost)));
    }
    return pieces;
}

std::string RandomLines(std::mt19937& random, std::size_t nLines, unsigned nLongest) {
    std::string bytes;
    for (std::size_t n = 0; n < nLines; ++n) {
        bytes +=
            std::string(random() % (random() % 10 == 0 ? nLongest : 60), static_cast<char>('a' + n % 26));
        if (random() % 20 == 0) bytes += '\0';
        if (random() % 3 == 0) bytes += '\r';
        bytes += '\n';
    }
    if (random() % 2 == 0) bytes.pop_back();
    return bytes;
}

}  // namespace

TEST(ByteReaderLines, LinesComeWithTheirEndsAndTheLastWithout) {
    TestFolder const folder;
    File const file = Open(folder, "one\r\n\ntwo");
    ByteReader lines(file.get());
    EXPECT_EQ("one\r\n", lines.NextLine(100).value());
    EXPECT_EQ("\n", lines.NextLine(100).value());
    EXPECT_EQ("two", lines.NextLine(100).value());
    EXPECT_FALSE(lines.NextLine(100).has_value());
    EXPECT_FALSE(lines.NextLine(100).has_value());
}

TEST(ByteReaderLines, UnreadGivesTheLastPieceAgainInAnotherCut) {
    TestFolder const folder;
    File const file = Open(folder, "abcdef\ngh\n");
    ByteReader lines(file.get());
    EXPECT_EQ("abcd", lines.NextLine(4).value());
    EXPECT_EQ("ef\n", lines.NextLine(4).value());
    lines.UnreadLine();
    EXPECT_EQ("ef", lines.NextLine(2).value());
    EXPECT_EQ("\n", lines.NextLine(2).value());
    EXPECT_EQ("gh", lines.NextLine(2).value());
    EXPECT_EQ("\n", lines.NextLine(2).value());
    EXPECT_FALSE(lines.NextLine(2).has_value());
}

TEST(ByteReaderLines, PiecesAgreeWithTheDefinitionAcrossTheBuffersOfALargeFile) {
    TestFolder const folder;
    std::mt19937 random(3);
    for (std::size_t const nMost :
         {std::size_t{1}, std::size_t{79}, std::size_t{1023}, std::size_t{10239}, ByteReader::kLongestLine}) {
        std::string const bytes = RandomLines(random, nMost < 10 ? 300 : 6000, 3000);
        File const file = Open(folder, bytes);
        ByteReader lines(file.get());
        for (std::string const& piece : Pieces(bytes, nMost)) {
            std::optional<std::string_view> const next = lines.NextLine(nMost);
            ASSERT_TRUE(next.has_value());
            ASSERT_EQ(piece, *next);
            if (random() % 8 == 0) {
                lines.UnreadLine();
                ASSERT_EQ(piece, lines.NextLine(nMost).value());
            }
        }
        EXPECT_FALSE(lines.NextLine(nMost).has_value());
    }
}
