#include "page/PageText.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "kit/page/Inflated.h"

namespace varnet {
namespace {

// The vectors of RFC 4648, section 10.
TEST(PageText, Base64IsThatOfTheStandard) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("foob"), "Zm9vYg==");
    EXPECT_EQ(Base64("fooba"), "Zm9vYmE=");
    EXPECT_EQ(Base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64("\xFB\xFF\xFE"), "+//+");
}

TEST(PageText, WhatIsDeflatedInflatesToItself) {
    std::mt19937 random(7);
    for (std::size_t const size : {0u, 1u, 1000u, 70000u, 300000u}) {
        std::string bytes(size, '\0');
        for (char& c : bytes) c = static_cast<char>(random() % 20);
        EXPECT_EQ(Inflated(Deflated(bytes)), bytes) << size;
    }
}

TEST(PageText, VarintsHaveSevenBitsAByte) {
    std::string bytes;
    for (std::uint64_t const value : {0u, 127u, 128u, 300u}) AddVarint(bytes, value);
    EXPECT_EQ(bytes, std::string("\x00\x7F\x80\x01\xAC\x02", 6));
}

TEST(PageText, ZigzagKeepsSmallNumbersSmall) {
    EXPECT_EQ(Zigzag(0), 0u);
    EXPECT_EQ(Zigzag(-1), 1u);
    EXPECT_EQ(Zigzag(1), 2u);
    EXPECT_EQ(Zigzag(-2), 3u);
    EXPECT_EQ(Zigzag(-32768), 65535u);
}

TEST(PageText, AnAxisHoldsDifferencesModuloTheirRange) {
    DeltaAxis axis;
    axis.Add(3);      // +3: 6
    axis.Add(1);      // -2: 3
    axis.Add(65535);  // -2 the short way round: 3
    axis.Add(299);    // +300: 600 = 0x258
    axis.Restart();
    axis.Add(3);  // from 0 again
    std::string bytes;
    axis.AppendTo(bytes);
    EXPECT_EQ(bytes, std::string("\x06\x03\x03\x58\x06\x00\x00\x00\x02\x00", 10));
    axis.Clear();
    axis.Add(5);  // from 0, as at first
    bytes.clear();
    axis.AppendTo(bytes);
    EXPECT_EQ(bytes, std::string("\x0A\x00", 2));
}

TEST(PageText, AGridTakesTheNearestStep) {
    Grid16 const grid{-10.0, 55.535};  // steps of 0.001
    EXPECT_EQ(grid.At(-10.0), 0);
    EXPECT_EQ(grid.At(55.535), 65535);
    EXPECT_EQ(grid.At(-9.9996), 0);
    EXPECT_EQ(grid.At(-9.9994), 1);
    EXPECT_EQ(grid.At(-1e300), 0);
    EXPECT_EQ(grid.At(1e300), 65535);
    EXPECT_EQ((Grid16{5.0, 5.0}.At(5.0)), 0);
}

TEST(PageText, JsonHoldsAnyText) {
    Json json;
    json.Open('{').Name("a").Text("</script>\"\\\n\x01").Name("b").Open('[').Number(0.1).Whole(-3);
    json.Truth(false).Number(std::numeric_limits<double>::quiet_NaN()).Close(']').Close('}');
    EXPECT_EQ(json.Document(), R"({"a":"\u003c/script>\"\\\u000a\u0001","b":[0.1,-3,false,null]})");
}

TEST(PageText, JsonEscapesControlsAndWhatCouldEndAScript) {
    Json json;
    json.Text("\x1F \x7E\x7F=>");
    EXPECT_EQ(json.Document(), R"("\u001f ~\u007f=>")");
}

TEST(PageText, WrongBytesBecomeReplacementCharacters) {
    std::string const mark = "\xEF\xBF\xBD";
    EXPECT_EQ(ValidUtf8("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(ValidUtf8("a\xFF"), "a" + mark);
    EXPECT_EQ(ValidUtf8("\xC3"), mark);
    // The first and the last sequences of each length that are right.
    for (char const* const right : {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF",
                                    "\xEE\x80\x80", "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(ValidUtf8(right), right);
    }
    EXPECT_EQ(ValidUtf8("\xC1\xBF"), mark + mark);
    EXPECT_EQ(ValidUtf8("\xE0\x9F\xBF"), mark + mark + mark);
    EXPECT_EQ(ValidUtf8("\xF0\x8F\xBF\xBF"), mark + mark + mark + mark);
    EXPECT_EQ(ValidUtf8("\xF5\x80\x80\x80"), mark + mark + mark + mark);
    EXPECT_EQ(ValidUtf8("\xC0\x80"), mark + mark);                        // longer than needed
    EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), mark + mark + mark);             // a surrogate
    EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80"), mark + mark + mark + mark);  // beyond the last character
}

TEST(PageText, WhatFollowsAnEmptyListHasAComma) {
    Json json;
    json.Open('[').Open('[').Close(']').Whole(1).Open('{').Close('}').Truth(true).Close(']');
    EXPECT_EQ(json.Document(), "[[],1,{},true]");
}

}  // namespace
}  // namespace varnet
