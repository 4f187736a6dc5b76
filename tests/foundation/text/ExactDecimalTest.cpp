#include "foundation/text/ExactDecimal.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

using namespace varnet;

namespace {

// Behind how many characters a plain number ends; -1 where there is none.
int Taken(std::string const& text, double& dValue) {
    char const* const pEnd = TakePlainNumber(text.data(), text.data() + text.size(), dValue);
    return pEnd != nullptr ? static_cast<int>(pEnd - text.data()) : -1;
}

}  // namespace

TEST(ExactDecimal, APlainNumberEndsWhereItCannotGoOn) {
    double d = 0.0;
    EXPECT_EQ(6, Taken("12.345 6", d));
    EXPECT_EQ(12.345, d);
    EXPECT_EQ(3, Taken("-7.x", d));
    EXPECT_EQ(-7.0, d);
    EXPECT_EQ(2, Taken(".5.5", d));
    EXPECT_EQ(0.5, d);
    EXPECT_EQ(1, Taken("1e5", d));
    EXPECT_EQ(1.0, d);
}

TEST(ExactDecimal, WhatIsNoPlainNumberLeavesTheValue) {
    double d = 8.0;
    for (char const* const pText : {"", "-", ".", "-.", "+1", " 1", "x", "12345678901234567890",
                                    "9007199254740993", "0.00000000000000000001"}) {
        EXPECT_EQ(-1, Taken(pText, d)) << pText;
        EXPECT_EQ(8.0, d);
    }
}

TEST(ExactDecimal, PlainNumbersAreWhatTheRuntimeTakes) {
    std::mt19937 random(7);
    for (int i = 0; i < 100000; ++i) {
        std::string text = random() % 2 == 0 ? "-" : "";
        for (auto n = random() % 9; n > 0; --n) text += static_cast<char>('0' + random() % 10);
        if (random() % 4 != 0) text += '.';
        for (auto n = random() % 9; n > 0; --n) text += static_cast<char>('0' + random() % 10);
        double d = 0.0;
        if (Taken(text, d) < 0) continue;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(std::atof(text.c_str())), std::bit_cast<std::uint64_t>(d))
            << text;
    }
}
