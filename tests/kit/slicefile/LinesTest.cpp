#include "slicefile/Lines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "TestFiles.h"

namespace varnet {
namespace {

struct Read {
    std::string text;
    std::uint64_t number = 0;
    std::uint64_t place = 0;
    bool operator==(Read const&) const = default;
};

std::vector<Read> LinesOf(std::string const& bytes, std::uint64_t place = 0, std::uint64_t number = 1,
                          std::size_t longest = SIZE_MAX) {
    TestFolder const folder;
    std::ofstream(folder / "lines.txt", std::ios::binary) << bytes;
    SeekableFile file(folder / "lines.txt");
    LineReader reader(file, place, number, longest);
    std::vector<Read> lines;
    while (std::optional<Line> const line = reader.Next())
        lines.push_back({std::string(line->text), line->number, line->place});
    EXPECT_EQ(reader.Place(), std::max<std::uint64_t>(bytes.size(), place));
    EXPECT_FALSE(reader.Next().has_value());
    return lines;
}

// Line by line from the whole text.
std::vector<Read> SplitPlainly(std::string const& bytes) {
    std::vector<Read> lines;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t const end = std::min(bytes.find('\n', at), bytes.size());
        std::string text = bytes.substr(at, end - at);
        if (!text.empty() && text.back() == '\r') text.pop_back();
        lines.push_back({text, lines.size() + 1, at});
        at = end + 1;
    }
    return lines;
}

TEST(LineReader, LinesEndAtALineFeedAndLoseOneCarriageReturn) {
    using Lines = std::vector<Read>;
    EXPECT_EQ(LinesOf(""), Lines());
    EXPECT_EQ(LinesOf("a"), (Lines{{"a", 1, 0}}));
    EXPECT_EQ(LinesOf("a\n"), (Lines{{"a", 1, 0}}));
    EXPECT_EQ(LinesOf("\n\n"), (Lines{{"", 1, 0}, {"", 2, 1}}));
    EXPECT_EQ(LinesOf("a\r\n\r\nb\r\r\nc\rd\r"),
              (Lines{{"a", 1, 0}, {"", 2, 3}, {"b\r", 3, 5}, {"c\rd", 4, 9}}));
    EXPECT_EQ(LinesOf("abc\nde\n", 1, 7), (Lines{{"bc", 7, 1}, {"de", 8, 4}}));
    EXPECT_EQ(LinesOf("abc\n", 4, 2), Lines());
}

TEST(LineReader, LinesOfAnyLengthAreWholeWhereverABlockEnds) {
    // Blocks are of 4096 bytes, then of 262144.
    std::mt19937 random(5);
    for (std::size_t const block : {std::size_t{4096}, std::size_t{4096 + 262144}}) {
        for (std::size_t const length : {block - 2, block - 1, block, block + 1}) {
            for (char const* const end : {"\n", "\r\n"}) {
                std::string const bytes = std::string(length, 'x') + end + "next" + end;
                EXPECT_EQ(LinesOf(bytes), SplitPlainly(bytes)) << length;
            }
        }
    }
    for (int round = 0; round < 10; ++round) {
        std::string bytes;
        while (bytes.size() < 600000) {
            bytes.append(random() % (round % 2 == 0 ? 100 : 20000), static_cast<char>('a' + random() % 26));
            bytes += random() % 3 == 0 ? "\r\n" : "\n";
        }
        EXPECT_TRUE(LinesOf(bytes) == SplitPlainly(bytes)) << round;
    }
}

TEST(LineReader, ALineBeyondTheLongestComesInPiecesOfOneNumber) {
    std::string bytes(10000, 'x');
    bytes.append("\nlast");
    std::vector<Read> const lines = LinesOf(bytes, 0, 1, 100);
    std::string joined;
    std::uint64_t place = 0;
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        EXPECT_EQ(lines[i].number, 1u);
        EXPECT_EQ(lines[i].place, place);
        joined += lines[i].text;
        place += lines[i].text.size();
    }
    EXPECT_EQ(joined, std::string(10000, 'x'));
    EXPECT_GE(lines.size(), 3u);
    EXPECT_EQ(lines.back(), (Read{"last", 2, 10001}));
}

TEST(Trimmed, TakesBlanksOfAllKindsFromBothEnds) {
    EXPECT_EQ(Trimmed(" \t\r\v\fa b\t \r\v\f"), "a b");
    EXPECT_EQ(Trimmed(" \t"), "");
    EXPECT_EQ(Trimmed(""), "");
    EXPECT_EQ(Trimmed("\na\n"), "\na\n");
}

TEST(InCapitals, LeavesAllButLettersOfAscii) { EXPECT_EQ(InCapitals("azAZ@[`{09$\xE4"), "AZAZ@[`{09$\xE4"); }

struct Scanned {
    std::vector<double> numbers;
    bool bad = false;
    bool operator==(Scanned const&) const = default;
};
Scanned Scan(std::string_view text) {
    NumberScanner scanner(text);
    Scanned scanned;
    while (std::optional<double> const value = scanner.Next()) scanned.numbers.push_back(*value);
    scanned.bad = scanner.Bad();
    return scanned;
}

TEST(NumberScanner, NumbersStandBetweenBlanksAndCommas) {
    EXPECT_EQ(Scan(""), (Scanned{{}, false}));
    EXPECT_EQ(Scan(" ,\t, "), (Scanned{{}, false}));
    EXPECT_EQ(Scan("1,-2.5, +3 4e2,,.5\r"), (Scanned{{1, -2.5, 3, 400, 0.5}, false}));
    EXPECT_EQ(Scan("1,2x"), (Scanned{{1}, true}));
    EXPECT_EQ(Scan("1/2"), (Scanned{{}, true}));
    EXPECT_EQ(Scan("1 x 2"), (Scanned{{1}, true}));
    EXPECT_EQ(Scan("+"), (Scanned{{}, true}));
    EXPECT_EQ(Scan("1;2"), (Scanned{{}, true}));
}

}  // namespace
}  // namespace varnet
