#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <iomanip>
#include <locale>
#include <random>
#include <sstream>
#include <string>

#include "foundation/text/TextScanner.h"

using namespace varnet;

namespace {

std::string RandomText(std::mt19937& random, char const* pAlphabet, int nMost) {
    std::string const alphabet(pAlphabet);
    std::string text(random() % static_cast<unsigned>(nMost + 1), ' ');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

std::string LongWord(std::size_t nLength, char const* pRest) {
    std::string text(nLength, 'a');
    text.append(pRest);
    return text;
}

std::uint64_t Bits(double d) { return std::bit_cast<std::uint64_t>(d); }
std::uint32_t Bits(float f) { return std::bit_cast<std::uint32_t>(f); }

// Takes numbers from the text until one fails, as a stream does and as the scanner does.
template <class Real>
void ExpectSameNumbers(std::string const& text) {
    std::istringstream stream(text.c_str());
    stream.imbue(std::locale::classic());
    TextScanner scanner(text);
    for (int n = 0; n < 6; ++n) {
        Real expected{};
        bool const bExpected = static_cast<bool>(stream >> expected);
        Real value = Real{77};
        ASSERT_EQ(bExpected, scanner.Number(value)) << "number " << n << " of '" << text << "'";
        if (!bExpected) {
            ASSERT_EQ(Real{77}, value) << text;
            return;
        }
        ASSERT_EQ(Bits(expected), Bits(value)) << "number " << n << " of '" << text << "'";
    }
}

void ExpectBothRealsAgree(std::string const& text) {
    ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers<double>(text));
    ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers<float>(text));
}

double NumberOf(char const* pText) {
    TextScanner scanner(pText);
    double value = -77.0;
    EXPECT_TRUE(scanner.Number(value)) << pText;
    return value;
}

void ExpectNoNumber(std::string const& text) {
    TextScanner scanner(text);
    double value = 77.0;
    EXPECT_FALSE(scanner.Number(value)) << text;
    EXPECT_EQ(77.0, value) << text;
    EXPECT_FALSE(scanner.SkipWord()) << "goes on after a failure: " << text;
}

}  // namespace

TEST(TextScanner, TakesDecimalNumbers) {
    EXPECT_EQ(1.5, NumberOf("1.5"));
    EXPECT_EQ(-1.5, NumberOf("  \t\r\v\f-1.5 "));
    EXPECT_EQ(1.5, NumberOf("+1.5"));
    EXPECT_EQ(0.5, NumberOf(".5"));
    EXPECT_EQ(5.0, NumberOf("5."));
    EXPECT_EQ(1500.0, NumberOf("1.5E+3"));
    EXPECT_EQ(0.0015, NumberOf("1.5e-3"));
    EXPECT_EQ(7.0, NumberOf("000007"));
    EXPECT_EQ(Bits(-0.0), Bits(NumberOf("-0")));
}

TEST(TextScanner, RoundsToTheNearest) {
    EXPECT_EQ(0x3FB999999999999Au, Bits(NumberOf("0.1")));
    EXPECT_EQ(9007199254740992.0, NumberOf("9007199254740993"));
    EXPECT_EQ(9007199254740994.0, NumberOf("9007199254740993.0000001"));
    EXPECT_EQ(1.0, NumberOf("1.0000000000000000000000000000000000000000000000001"));
    // Halfway between two floats as a double, but above the half as it is written.
    TextScanner scanner("16777217.0000000001");
    float f = 0.0f;
    ASSERT_TRUE(scanner.Number(f));
    EXPECT_EQ(16777218.0f, f);
}

TEST(TextScanner, NumberEndsWhereItCannotGoOn) {
    TextScanner scanner("1.5abc");
    double d = 0.0;
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_EQ(1.5, d);
    EXPECT_FALSE(scanner.Number(d));
    EXPECT_EQ(1.5, d);
    TextScanner points("1.2.3 4");
    EXPECT_TRUE(points.Number(d));
    EXPECT_EQ(1.2, d);
    EXPECT_TRUE(points.Number(d));
    EXPECT_EQ(0.3, d);
    EXPECT_TRUE(points.Number(d));
    EXPECT_EQ(4.0, d);
}

TEST(TextScanner, BrokenNumbersFailAndStoreNothing) {
    for (char const* const pText :
         {"",     "  ",  "abc", "-",    "+",        ".",   "-.",  "e5", ".e5",   "1e",     "1e+",
          "1e-x", "inf", "nan", "-inf", "infinity", "--1", "+-1", ",5", "1e999", "-1e999", "x10"}) {
        ExpectNoNumber(pText);
    }
}

TEST(TextScanner, HexadecimalNumbersFailAndStoreNothing) {
    for (char const* const pText : {"0x10", "0XaB", "-0x1p3", "+0xf", " 0x0"}) ExpectNoNumber(pText);
    // Without a hexadecimal digit it is a zero, and a word.
    TextScanner scanner("0x 0xyz");
    double d = 7.0;
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_EQ(0.0, d);
    EXPECT_TRUE(scanner.SkipWord());
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_FALSE(scanner.Number(d));
}

TEST(TextScanner, NumbersTooSmallBecomeDenormalOrZero) {
    EXPECT_EQ(5e-324, NumberOf("5e-324"));
    EXPECT_EQ(0.0, NumberOf("1e-999"));
    EXPECT_EQ(Bits(-0.0), Bits(NumberOf("-1e-99999999999")));
    EXPECT_EQ(0.0, NumberOf("0e99999999999"));
    TextScanner scanner("1e-45 1e39");
    float f = 7.0f;
    EXPECT_TRUE(scanner.Number(f));
    EXPECT_EQ(1.40129846e-45f, f);
    EXPECT_FALSE(scanner.Number(f));
    EXPECT_EQ(1.40129846e-45f, f);
}

TEST(TextScanner, FailureEndsTheLine) {
    TextScanner scanner("vertex 1 zwei 3");
    double d = 0.0;
    EXPECT_TRUE(scanner.SkipWord());
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_FALSE(scanner.Number(d));
    EXPECT_EQ(1.0, d);
    EXPECT_FALSE(scanner.SkipWord());
    EXPECT_FALSE(scanner.Number(d));
}

TEST(TextScanner, LongWordsFallIntoPiecesOfSeventyNineCharacters) {
    double d = 0.0;
    std::string const longWord = LongWord(79, "12");
    TextScanner scanner(longWord);
    EXPECT_TRUE(scanner.SkipWord());
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_EQ(12.0, d);
    std::string const exact = LongWord(79, " 34");
    TextScanner fits(exact);
    EXPECT_TRUE(fits.SkipWord());
    EXPECT_TRUE(fits.Number(d));
    EXPECT_EQ(34.0, d);
    std::string const three = LongWord(160, " 5");
    TextScanner pieces(three);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(pieces.SkipWord());
    EXPECT_TRUE(pieces.Number(d));
    EXPECT_EQ(5.0, d);
}

TEST(TextScanner, TextEndsAtAZeroByte) {
    std::string const text("word\0 1.5", 9);
    TextScanner scanner(text);
    double d = 7.0;
    EXPECT_TRUE(scanner.SkipWord());
    EXPECT_FALSE(scanner.Number(d));
    EXPECT_EQ(7.0, d);
    std::string const number("1\0002", 3);
    TextScanner digits(number);
    EXPECT_TRUE(digits.Number(d));
    EXPECT_EQ(1.0, d);
    EXPECT_FALSE(digits.SkipWord());
}

#if defined(__GLIBCXX__)

TEST(TextScanner, NumbersAgreeWithAStreamOnRandomText) {
    std::mt19937 random(1);
    for (int n = 0; n < 60000; ++n) {
        std::string const text = RandomText(random, "0123456789+-.eE xnaif", 14);
        // A stream takes the 0 of a hexadecimal number, or all of it, as its library likes.
        if (text.find("0x") != std::string::npos) continue;
        ASSERT_NO_FATAL_FAILURE(ExpectBothRealsAgree(text));
    }
    for (int n = 0; n < 60000; ++n) {
        ASSERT_NO_FATAL_FAILURE(ExpectBothRealsAgree(RandomText(random, "00159.e-+ ", 24)));
    }
}

TEST(TextScanner, NumbersAgreeWithAStreamOnLongDigits) {
    std::mt19937 random(2);
    for (int n = 0; n < 20000; ++n) {
        std::ostringstream text;
        text << RandomText(random, "0123456789", 40) << '.' << RandomText(random, "0123456789", 40);
        if (random() % 2 == 0) text << 'e' << static_cast<int>(random() % 700) - 350;
        ASSERT_NO_FATAL_FAILURE(ExpectBothRealsAgree(text.str()));
    }
}

// Written with as many digits as make it exact, and with one less or more.
TEST(TextScanner, NumbersAgreeWithAStreamOnPrintedValues) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(-200.0, 200.0);
    for (int n = 0; n < 30000; ++n) {
        std::ostringstream text;
        text << std::setprecision(static_cast<int>(1 + random() % 20)) << coordinate(random) << ' '
             << std::bit_cast<float>(static_cast<std::uint32_t>(random()) & 0x7F7FFFFFu);
        if (random() % 2 == 0) text << std::scientific << ' ' << coordinate(random) * 1e-9;
        ASSERT_NO_FATAL_FAILURE(ExpectBothRealsAgree(text.str()));
    }
}

#endif

TEST(TextScanner, WordsAgreeWithAStreamIntoEightyBytes) {
    std::mt19937 random(4);
    for (int n = 0; n < 5000; ++n) {
        std::string text;
        for (int i = 0; i < 4; ++i) {
            text += std::string(random() % 4, " \t\r\v\f"[random() % 5]);
            text += std::string(random() % 8 == 0 ? 70 + random() % 100 : random() % 8, 'w');
        }
        if (random() % 8 == 0) text.insert(random() % (text.size() + 1), 1, '\0');
        std::istringstream stream(text.c_str());
        TextScanner scanner(text);
        char word[80];
        bool bExpected = true;
        while (bExpected) {
            bExpected = static_cast<bool>(stream >> std::setw(80) >> word);
            ASSERT_EQ(bExpected, scanner.SkipWord()) << text;
        }
    }
}

namespace {

// Writes a comma for the point, as many languages do.
struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

}  // namespace

TEST(TextScanner, DoesNotDependOnTheGlobalLocale) {
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    EXPECT_EQ(1.5, NumberOf("1.5"));
    EXPECT_EQ(1.25e100, NumberOf("1.25e100"));
    TextScanner scanner("1,5");
    double d = 0.0;
    EXPECT_TRUE(scanner.Number(d));
    EXPECT_EQ(1.0, d);
    EXPECT_FALSE(scanner.Number(d));
    std::locale::global(before);
}

TEST(TextScanner, AZeroBeforeAnXIsHexadecimalWithEveryDigitAndWithNoNeighbourOfOne) {
    for (char const c : std::string("0123456789abcdefABCDEF")) {
        ExpectNoNumber((std::string("0x") + c).c_str());
        ExpectNoNumber((std::string("0X") + c).c_str());
    }
    for (char const c : std::string("/:@G`g.")) {
        double dValue = 77.0;
        std::string const text = std::string("0x") + c;
        TextScanner scanner(text);
        EXPECT_TRUE(scanner.Number(dValue)) << text;
        EXPECT_EQ(0.0, dValue) << text;
    }
}
