#include "foundation/text/TextNumber.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>

using namespace varnet;

namespace {

// The bits of atof in the classic locale, which a test program has.
void ExpectAsRuntime(std::string const& text) {
    double const dExpected = std::atof(text.c_str());
    double const dValue = TextToDouble(text);
    if (std::isnan(dExpected)) {
        EXPECT_TRUE(std::isnan(dValue)) << text;
        return;
    }
    EXPECT_EQ(dExpected, dValue) << text;
    EXPECT_EQ(std::signbit(dExpected), std::signbit(dValue)) << text;
}

std::string Joined(std::initializer_list<std::string> pieces) {
    std::string text;
    for (std::string const& piece : pieces) text.append(piece);
    return text;
}

}  // namespace

TEST(TextNumber, RealsAreWhatTheRuntimeTakes) {
    for (char const* const pText : {"",
                                    "1.5\" Y",
                                    "2",
                                    "-3\"",
                                    "+4",
                                    "+-4",
                                    "-+4",
                                    "--4",
                                    " \t\n\v\f\r7",
                                    "1E3",
                                    "1e-3x",
                                    "1e",
                                    "1e+",
                                    "1.5E\"",
                                    ".5",
                                    "5.",
                                    ".",
                                    "-.",
                                    "-0",
                                    "-abc",
                                    "abc",
                                    "INF",
                                    "-infinity",
                                    "NAN",
                                    "nan(12)",
                                    "0x1P4",
                                    "0X.8",
                                    "0x",
                                    "0xg",
                                    "-0x1.8p1",
                                    "0x-1",
                                    "0xinf",
                                    "1,5",
                                    "1 2",
                                    "1e400",
                                    "-1e400",
                                    "1e-400",
                                    "-1e-400",
                                    "4.9e-324",
                                    "2e-324",
                                    "1e999999999999",
                                    "1e-999999999999",
                                    "0x1p5000",
                                    "0x1p-5000",
                                    "0e999999999999"}) {
        ExpectAsRuntime(pText);
    }
    ExpectAsRuntime(std::string(400, '9'));
    ExpectAsRuntime("0." + std::string(400, '0') + "1");
    ExpectAsRuntime("0." + std::string(400, '0') + "1e800");
    EXPECT_EQ(1.0, TextToDouble(std::string("1\0005", 3)));
}

TEST(TextNumber, RandomTextsAreWhatTheRuntimeTakes) {
    std::mt19937 random(1);
    constexpr char kLetters[] = "0123456789.eE+-xXpP infa\"";
    for (int n = 0; n < 20000; ++n) {
        std::string text;
        for (std::size_t i = random() % 12; i > 0; --i) text += kLetters[random() % (sizeof kLetters - 1)];
        ExpectAsRuntime(text);
    }
}

TEST(TextNumber, IntegersStopAtTheirLimits) {
    EXPECT_EQ(12, TextToInt("12\""));
    EXPECT_EQ(-12, TextToInt(" -12.9"));
    EXPECT_EQ(7, TextToInt("+7"));
    EXPECT_EQ(0, TextToInt(""));
    EXPECT_EQ(0, TextToInt("x1"));
    EXPECT_EQ(0, TextToInt("- 1"));
    EXPECT_EQ(2147483647, TextToInt("2147483647"));
    EXPECT_EQ(2147483647, TextToInt("4294967296"));
    EXPECT_EQ(2147483647, TextToInt("99999999999999999999999999"));
    EXPECT_EQ(-2147483647 - 1, TextToInt("-99999999999999999999999999"));
}

TEST(TextNumber, EveryDigitCountsAndNoCharacterBesideThem) {
    for (int n = 0; n < 10; ++n) {
        std::string const digit(1, static_cast<char>('0' + n));
        EXPECT_EQ(n, TextToInt(digit));
        EXPECT_EQ(static_cast<double>(n), TextToDouble(digit));
        EXPECT_EQ(10 * n + n, TextToInt(Joined({digit, digit, "/"})));
        EXPECT_EQ(-n, TextToInt(Joined({"-", digit, ":7"})));
    }
    EXPECT_EQ(0, TextToInt("/"));
    EXPECT_EQ(0, TextToInt(":"));
    EXPECT_EQ(2147483647, TextToInt("2147483647x"));
    EXPECT_EQ(2147483647, TextToInt("2147483648"));
    EXPECT_EQ(2147483646, TextToInt("2147483646"));
    EXPECT_EQ(-2147483647, TextToInt("-2147483647"));
    EXPECT_EQ(-2147483647 - 1, TextToInt("-2147483648"));
    EXPECT_EQ(-2147483647 - 1, TextToInt("-2147483649"));
}

// A range error says that a number is too large or too small, and not which: the digits tell.
TEST(TextNumber, ALongNumberBeyondTheRangeIsToldByItsFirstDigitAndExponent) {
    auto const zeros = [](int n) { return std::string(static_cast<std::size_t>(n), '0'); };
    for (int const n : {300, 308, 309, 310, 400}) {
        ExpectAsRuntime(Joined({"1", zeros(n)}));
        ExpectAsRuntime(Joined({"1", zeros(n), "e", std::to_string(-n)}));
        ExpectAsRuntime(Joined({"1", zeros(n), "e", std::to_string(-2 * n - 400)}));
        ExpectAsRuntime(Joined({"0.", zeros(n), "1e", std::to_string(n)}));
        ExpectAsRuntime(Joined({"0.", zeros(n), "1e", std::to_string(2 * n + 400)}));
        ExpectAsRuntime(Joined({"000", zeros(n), ".000", zeros(n), "9e-", std::to_string(n)}));
        ExpectAsRuntime(Joined({"0x1", zeros(n), "p-", std::to_string(8 * n)}));
        ExpectAsRuntime(Joined({"0x.", zeros(n), "8p", std::to_string(8 * n)}));
        // A hexadecimal digit counts four places of the exponent: the digits outweigh it, and one alone would
        // not.
        ExpectAsRuntime(Joined({"0x1", zeros(n), "p-", std::to_string(2 * n)}));
        ExpectAsRuntime(Joined({"0x1", zeros(2 * n), "p-", std::to_string(3 * n)}));
        ExpectAsRuntime(Joined({"0x.", zeros(2 * n), "8p", std::to_string(3 * n)}));
    }
}
