#include "foundation/text/FixedDecimal.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

using namespace varnet;

namespace {

std::string Fixed(double d, int nDigits) {
    std::array<char, kLongestFixed> text;
    return std::string(text.data(), WriteFixed(text.data(), d, nDigits));
}

// The bytes of snprintf in the classic locale, which a test program has.
void ExpectAsPrinted(double d) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%.3f", d);
    ASSERT_EQ(Fixed(d, 3), text.data());
    std::snprintf(text.data(), text.size(), "%.2f", d);
    ASSERT_EQ(Fixed(d, 2), text.data());
}

}  // namespace

TEST(FixedDecimal, TiesGoToTheEvenDigit) {
    EXPECT_EQ("0.062", Fixed(0.0625, 3));
    EXPECT_EQ("0.188", Fixed(0.1875, 3));
    EXPECT_EQ("0.12", Fixed(0.125, 2));
    EXPECT_EQ("-0.38", Fixed(-0.375, 2));
}

TEST(FixedDecimal, ZeroKeepsItsSign) {
    EXPECT_EQ("0.000", Fixed(0.0, 3));
    EXPECT_EQ("-0.000", Fixed(-0.0, 3));
    EXPECT_EQ("-0.000", Fixed(-0.0004, 3));
    EXPECT_EQ("-0.00", Fixed(-std::numeric_limits<double>::denorm_min(), 2));
}

TEST(FixedDecimal, RoundingCarriesIntoTheWholePart) {
    EXPECT_EQ("1.000", Fixed(0.9996, 3));
    EXPECT_EQ("100.00", Fixed(99.995000000000005, 2));
}

TEST(FixedDecimal, EverythingIsAsPrinted) {
    for (double const d :
         {1e15, 4503599627370495.5, 4503599627370496.0, 4503599627370497.0, 9007199254740993.0, 1e22, 1e100,
          std::numeric_limits<double>::max(), std::numeric_limits<double>::min(), 0.0005, 0.0015, 1.0005,
          std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(d));
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(-d));
    }
    std::mt19937_64 random(1);
    for (int i = 0; i < 30000; ++i) {
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(std::bit_cast<double>(random())));
        double const dNear = static_cast<double>(static_cast<std::int64_t>(random() % 4000001) - 2000000);
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(dNear / 16384.0));
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(dNear / 10000.0));
        ASSERT_NO_FATAL_FAILURE(ExpectAsPrinted(std::ldexp(dNear, static_cast<int>(random() % 80) - 60)));
    }
}
