// Numbers from text where the standard library has none: held against one that has.

#include <gtest/gtest.h>

#if !defined(_WIN32) && !defined(_LIBCPP_VERSION)

#define VARNET_COMPAT_TESTED
#include "../../../cmake/compat/FromChars.h"

#include <array>
#include <bit>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>

namespace {

constexpr std::array kFormats = {std::chars_format::general, std::chars_format::hex, std::chars_format::fixed,
                                 std::chars_format::scientific};

template <class Real, class Bits>
void ExpectSameAs(std::string const& text, std::chars_format format) {
    Real expected = Real(-7);
    Real value = Real(-7);
    char const* const end = text.data() + text.size();
    std::from_chars_result const theirs = std::from_chars(text.data(), end, expected, format);
    std::from_chars_result const ours = varnet_compat::FromChars(text.data(), end, value, format);
    EXPECT_EQ(theirs.ec, ours.ec) << text;
    EXPECT_EQ(theirs.ptr - text.data(), ours.ptr - text.data()) << text;
    EXPECT_EQ(std::isnan(expected), std::isnan(value)) << text;
    if (std::isnan(expected)) return;
    EXPECT_EQ(std::bit_cast<Bits>(expected), std::bit_cast<Bits>(value)) << text;
}

void ExpectSame(std::string const& text) {
    // The library at hand takes two signs in a hexadecimal exponent, which the standard does not.
    if (text.find("+-") != std::string::npos) return;
    for (std::chars_format const format : kFormats) {
        ExpectSameAs<double, std::uint64_t>(text, format);
        ExpectSameAs<float, std::uint32_t>(text, format);
    }
}

}  // namespace

TEST(FromChars, EdgesAreAsTheLibraryHasThem) {
    for (char const* const text :
         {"",         "-",      "+1",       " 1",      "1",      "-0",     ".",
          ".5",       "5.",     "5.e",      "1e",      "1e+",    "1e5",    "1.e5x",
          "0e999999", "1e400",  "-1e400",   "1e-400",  "4e-324", "2e-324", "1e99999999999999",
          "inf",      "-INF",   "infinity", "infinit", "nan",    "-nan",   "nan(1_a)",
          "nan(",     "nan(?)", "0x1p4",    "1p4",     "f.8p-1", "1e38",   "1e39",
          "1,5",      "1..5"}) {
        ExpectSame(text);
    }
}

TEST(FromChars, RandomTextsAreAsTheLibraryHasThem) {
    constexpr std::string_view kLetters = "0123456789..eE+-pPinfatyINFNAN()_x abcdef";
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto n = random() % 12; n > 0; --n) text += kLetters[random() % kLetters.size()];
        ExpectSame(text);
    }
}

TEST(FromChars, NumbersOfAllSizesAreRoundedTheSameWay) {
    std::mt19937_64 random(2);
    for (int i = 0; i < 20000; ++i) {
        std::array<char, 64> text{};
        double const value = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
        std::snprintf(text.data(), text.size(), "%.*g", static_cast<int>(random() % 25), value);
        ExpectSame(text.data());
    }
}

#endif
