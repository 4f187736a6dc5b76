#include "foundation/files/LittleEndian.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

using namespace varnet;

TEST(LittleEndian, LowestByteComesFirstAtAnyAlignment) {
    std::array<unsigned char, 9> bytes = {0xEE, 0x01, 0x02, 0x03, 0x84, 0x05, 0x06, 0x07, 0x88};
    EXPECT_EQ(0x84030201u, LoadUnsigned<std::uint32_t>(bytes.data() + 1));
    EXPECT_EQ(0x0201u, LoadUnsigned<std::uint16_t>(bytes.data() + 1));
    EXPECT_EQ(0x8807060584030201u, LoadUnsigned<std::uint64_t>(bytes.data() + 1));
    StoreUnsigned(bytes.data() + 3, std::uint32_t{0xA1B2C3D4});
    EXPECT_EQ((std::array<unsigned char, 9>{0xEE, 0x01, 0x02, 0xD4, 0xC3, 0xB2, 0xA1, 0x07, 0x88}), bytes);
}

TEST(LittleEndian, FloatsAreTheirBits) {
    std::array<unsigned char, 5> bytes{};
    StoreFloat(bytes.data() + 1, -1.5f);  // 0xBFC00000
    EXPECT_EQ((std::array<unsigned char, 5>{0, 0, 0, 0xC0, 0xBF}), bytes);
    EXPECT_EQ(-1.5f, LoadFloat(bytes.data() + 1));
}

TEST(LittleEndian, DoublesAreTheirBits) {
    std::array<unsigned char, 9> bytes{};
    StoreDouble(bytes.data() + 1, -1.5);  // 0xBFF8000000000000
    EXPECT_EQ((std::array<unsigned char, 9>{0, 0, 0, 0, 0, 0, 0, 0xF8, 0xBF}), bytes);
    EXPECT_EQ(-1.5, LoadDouble(bytes.data() + 1));
}

TEST(LittleEndian, NumbersOfThreeBytesTakeTheLowBits) {
    std::array<unsigned char, 5> bytes = {0xEE, 0, 0, 0, 0xEE};
    StoreUnsigned24(bytes.data() + 1, 0xAB832301u);
    EXPECT_EQ((std::array<unsigned char, 5>{0xEE, 0x01, 0x23, 0x83, 0xEE}), bytes);
    EXPECT_EQ(0x832301u, LoadUnsigned24(bytes.data() + 1));
}
