// Commands of binary files, by their bytes.

#include "slicefile/BinaryLayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>

#include "TestFiles.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

class Bytes {
public:
    Bytes& Short(int value) { return Put(static_cast<std::uint16_t>(value)); }
    Bytes& Long(std::int32_t value) { return Put(value); }
    Bytes& Real(float value) { return Put(value); }
    Bytes& Text(std::string const& text) {
        m_Bytes += text;
        return *this;
    }
    std::string const& Get() const { return m_Bytes; }

private:
    template <class Value>
    Bytes& Put(Value value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        m_Bytes.append(bytes, sizeof value);
        return *this;
    }
    std::string m_Bytes;
};

BinaryIndex IndexOf(std::string const& bytes, BinaryForm const& form = {}) {
    TestFolder const folder;
    std::ofstream(folder / "a.cli", std::ios::binary) << bytes;
    SeekableFile file(folder / "a.cli");
    return IndexBinary(file, form, {});
}

std::string ErrorOf(std::string const& bytes, BinaryForm const& form = {}, std::uint64_t place = 0) {
    try {
        ParseBinaryLayer(bytes, form, "a.cli", place);
    } catch (Error const& error) {
        return error.what();
    }
    return "";
}

// A layer of each command in its long and its short form: 6, 22, 26, 4, 16 and 14 bytes.
std::string TwoLayers() {
    Bytes bytes;
    bytes.Short(127).Real(2.5f);
    bytes.Short(130).Long(7).Long(1).Long(1).Real(1.5f).Real(-2.0f);
    bytes.Short(132).Long(-3).Long(1).Real(1).Real(2).Real(3).Real(4);
    bytes.Short(128).Short(9);
    bytes.Short(129).Short(5).Short(2).Short(2).Short(1).Short(2).Short(65535).Short(4);
    bytes.Short(131).Short(6).Short(1).Short(1).Short(2).Short(3).Short(4);
    return bytes.Get();
}

TEST(BinaryLayer, EachCommandIsReadInItsLongAndItsShortForm) {
    std::string const bytes = TwoLayers();
    BinaryIndex const index = IndexOf(bytes);
    EXPECT_EQ(index.places, (std::vector<std::uint64_t>{0, 54}));
    EXPECT_EQ(index.end, bytes.size());
    EXPECT_FALSE(index.broken.has_value());
    BinaryForm form;
    form.units = 0.5;
    Layer const first = ParseBinaryLayer(std::string_view(bytes).substr(0, 54), form, "a.cli", 0);
    EXPECT_EQ(first.z, 1.25);
    EXPECT_EQ(first.points, (std::vector<Point2>{{0.75, -1}}));
    EXPECT_EQ(first.contours[0].id, 7);
    EXPECT_TRUE(first.contours[0].closed);
    EXPECT_EQ(first.strokes, (std::vector<Stroke>{{{0.5, 1}, {1.5, 2}}}));
    EXPECT_EQ(first.chainIds, std::vector<std::int32_t>{-3});
    Layer const second = ParseBinaryLayer(std::string_view(bytes).substr(54), form, "a.cli", 54);
    EXPECT_EQ(second.z, 4.5);
    EXPECT_EQ(second.points, (std::vector<Point2>{{0.5, 1}, {32767.5, 2}}));
    EXPECT_EQ(second.contours[0].id, 5);
    EXPECT_FALSE(second.contours[0].closed);
    EXPECT_EQ(second.strokes, (std::vector<Stroke>{{{0.5, 1}, {1.5, 2}}}));
    EXPECT_EQ(second.chainIds, std::vector<std::int32_t>{6});
}

// A disguised coordinate is taken times the units first, and what it was raised by is taken off behind.
TEST(BinaryLayer, UnitsCountAheadOfTheOffsetOfADisguisedCommand) {
    Bytes bytes;
    bytes.Short(245 * 4 + 1).Real(9.0f).Text("....");
    bytes.Short(245 * 3 + 2).Long(7).Long(1).Long(1).Real(11.0f).Real(-2.0f);
    bytes.Short(245 * 2 + 3).Long(1).Long(1).Real(5).Real(6).Real(7).Real(8);
    BinaryForm form;
    form.isDisguised = true;
    form.units = 0.5;
    Layer const layer = ParseBinaryLayer(bytes.Get(), form, "a.cli", 0);
    EXPECT_EQ(layer.z, 0.5);                                                // 4.5 - 4
    EXPECT_EQ(layer.points, (std::vector<Point2>{{2.5, -4}}));              // 5.5 - 3, -1 - 3
    EXPECT_EQ(layer.strokes, (std::vector<Stroke>{{{0.5, 1}, {1.5, 2}}}));  // 2.5 - 2 and so on
}

TEST(BinaryLayer, AFileCutAnywhereIsKnownUpToTheLastWholeCommand) {
    std::string const bytes = TwoLayers();
    std::vector<std::size_t> const ends = {0, 6, 28, 54, 58, 74, 88};
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        BinaryIndex const index = IndexOf(bytes.substr(0, size));
        std::size_t whole = 0;
        for (std::size_t const end : ends) whole = end <= size ? end : whole;
        EXPECT_EQ(index.end, whole) << size;
        EXPECT_EQ(index.broken.has_value(), whole != size) << size;
        EXPECT_EQ(index.places.size(), (size >= 6 ? 1u : 0u) + (size >= 58 ? 1u : 0u)) << size;
        std::string const error = ErrorOf(bytes.substr(0, size), {}, 500);
        EXPECT_EQ(error.empty(), whole == size) << size;
        if (whole == size) continue;
        // One byte is no word; with two, it is known what is to come.
        char const* const why =
            size - whole < 2 ? "there is no command here" : "the file ends within a command";
        EXPECT_EQ(error, "a.cli, byte " + std::to_string(500 + whole) + ": " + why) << size;
    }
    EXPECT_EQ(IndexOf(bytes.substr(0, 7)).broken, "there is no command here");
    EXPECT_EQ(IndexOf(bytes.substr(0, 8)).broken, "the file ends within a command");
    EXPECT_EQ(IndexOf(bytes.substr(0, 19)).broken, "the file ends within a command");
    EXPECT_EQ(IndexOf(bytes.substr(0, 20)).broken,
              "a command announces 1 points, which the file does not hold");
}

TEST(BinaryLayer, AlignedCommandsBeginAtAFourthByteFromTheStartOfTheGeometry) {
    BinaryForm form;
    form.isAligned = true;
    form.start = 3;
    Bytes bytes;
    bytes.Text("abc");
    bytes.Short(127).Short(0).Real(1.0f);                                    // 3 to 11
    bytes.Short(129).Short(5).Short(2).Short(1).Short(8).Short(9);           // 11 to 23
    bytes.Short(128).Short(4);                                               // 23 to 27
    bytes.Short(131).Short(6).Short(1).Short(1).Short(2).Short(3).Short(4);  // 27 to 41, filled to 43
    bytes.Short(0);
    bytes.Short(128).Short(2);  // 43 to 47
    BinaryIndex const index = IndexOf(bytes.Get(), form);
    EXPECT_EQ(index.places, (std::vector<std::uint64_t>{3, 23, 43}));
    EXPECT_EQ(index.end, 47u);
    Layer const layer = ParseBinaryLayer(std::string_view(bytes.Get()).substr(23, 20), form, "a.cli", 23);
    EXPECT_EQ(layer.z, 4.0);
    EXPECT_EQ(layer.strokes.size(), 1u);
    // What should fill up the end may be missing there.
    EXPECT_EQ(IndexOf(bytes.Get().substr(0, 41), form).end, 41u);
    EXPECT_FALSE(IndexOf(bytes.Get().substr(0, 41), form).broken.has_value());
}

TEST(BinaryLayer, WhatStandsBeforeTheFirstHeightBelongsToTheFirstLayer) {
    Bytes bytes;
    bytes.Short(129).Short(5).Short(2).Short(1).Short(8).Short(9);
    bytes.Short(128).Short(4);
    bytes.Short(128).Short(5);
    EXPECT_EQ(IndexOf(bytes.Get()).places, (std::vector<std::uint64_t>{0, 16}));
}

TEST(BinaryLayer, CountsBelow0AndBeyondTheFileAreRefused) {
    for (std::int32_t const count : {-1, 2, 2147483647, -2147483647 - 1}) {
        Bytes bytes;
        bytes.Short(130).Long(7).Long(1).Long(count).Real(1.5f).Real(-2.0f);
        BinaryIndex const index = IndexOf(bytes.Get());
        EXPECT_EQ(index.end, 0u);
        EXPECT_EQ(index.broken,
                  "a command announces " + std::to_string(count) + " points, which the file does not hold");
        EXPECT_NE(ErrorOf(bytes.Get()).find("the file ends within a command"), std::string::npos);
    }
}

TEST(BinaryLayer, AWordThatIsNoneEndsTheWalkWithItsPlace) {
    for (int const word : {0, 126, 133, 65535}) {
        Bytes bytes;
        bytes.Short(128).Short(4).Short(word).Short(1);
        BinaryIndex const index = IndexOf(bytes.Get());
        EXPECT_EQ(index.end, 4u);
        EXPECT_EQ(index.broken, "there is no command here");
        std::string const error = ErrorOf(bytes.Get(), {}, 1000);
        EXPECT_NE(error.find("there is no command here"), std::string::npos);
        EXPECT_NE(error.find("1004"), std::string::npos) << error;
    }
}

TEST(BinaryLayer, NumbersThatAreNoneAreRefused) {
    for (float const value : {HUGE_VALF, -HUGE_VALF, std::nanf("")}) {
        EXPECT_NE(ErrorOf(Bytes().Short(127).Real(value).Get()).find("not finite"), std::string::npos);
        Bytes path;
        path.Short(130).Long(7).Long(1).Long(1).Real(1).Real(value);
        EXPECT_NE(ErrorOf(path.Get()).find("not finite"), std::string::npos);
    }
}

TEST(BinaryWords, ADisguisedWordIs245TimesTheOffsetAndTheCommand) {
    for (int const offset : {0, 1, 110, 266}) {
        for (int const command : {0, 1, 2, 3, 4, 244}) {
            auto const word = DisguisedWordOf(static_cast<std::uint16_t>(offset * 245 + command));
            ASSERT_EQ(word.has_value(), command >= 1 && command <= 3) << offset << " " << command;
            if (!word) continue;
            EXPECT_EQ(static_cast<int>(word->command), command - 1);
            EXPECT_EQ(word->offset, offset);
            EXPECT_FALSE(word->isShort);
        }
    }
}

TEST(BinaryWords, PlainWordsGoFrom127To132) {
    for (int n = 0; n < 65536; ++n) {
        auto const word = PlainWordOf(static_cast<std::uint16_t>(n));
        ASSERT_EQ(word.has_value(), n >= 127 && n <= 132) << n;
        if (!word) continue;
        EXPECT_EQ(word->isShort, n == 128 || n == 129 || n == 131);
        EXPECT_EQ(static_cast<int>(word->command), (n - 127) / 2);
        EXPECT_EQ(word->Wholes(), n < 129 ? 0u : n < 131 ? 3u : 2u);
        EXPECT_EQ(word->Reals(), n < 131 ? 2u : 4u);
        EXPECT_EQ(word->NumberSize(), word->isShort ? 2u : 4u);
    }
}

}  // namespace
}  // namespace varnet
