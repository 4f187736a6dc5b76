#include "foundation/files/ByteStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "TestFiles.h"
#include "foundation/files/Path.h"

using namespace varnet;

namespace {

constexpr std::size_t kBlock = 65536;

// Bytes that repeat after 251, so that no block begins as another does.
std::string Bytes(std::size_t nSize) {
    std::string bytes(nSize, '\0');
    for (std::size_t i = 0; i < nSize; ++i) bytes[i] = static_cast<char>(i % 251);
    return bytes;
}

class ByteReaderTest : public testing::Test {
protected:
    File Holding(std::string const& bytes) {
        return OpenPath(WidePath(m_Folder.Write("bytes", bytes)), "rb");
    }
    TestFolder m_Folder;
};

}  // namespace

TEST_F(ByteReaderTest, GivesEveryByteOfSeveralBlocksAndThenTheEndForEver) {
    for (std::size_t const nSize :
         {std::size_t{0}, std::size_t{1}, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock, 3 * kBlock + 7}) {
        std::string const bytes = Bytes(nSize);
        File const file = Holding(bytes);
        ByteReader reader(file.get());
        for (char const c : bytes) ASSERT_EQ(static_cast<unsigned char>(c), reader.Next());
        for (int i = 0; i < 3; ++i) EXPECT_EQ(ByteReader::kEnd, reader.Next()) << nSize;
        unsigned char none = 77;
        EXPECT_EQ(0u, reader.Take(&none, 1));
        EXPECT_EQ(77, none);
    }
}

TEST_F(ByteReaderTest, BeginsWhereTheFileStands) {
    File const file = Holding("0123456789");
    std::fseek(file.get(), 4, SEEK_SET);
    ByteReader reader(file.get());
    EXPECT_EQ('4', reader.Next());
}

// Pieces that end at a block's end, behind it, or take several blocks.
TEST_F(ByteReaderTest, PiecesGoOnAcrossBlocks) {
    std::string const bytes = Bytes(3 * kBlock + 100);
    for (std::size_t const nFirst : {kBlock - 5, kBlock - 1, kBlock, kBlock + 1}) {
        for (std::size_t const nSecond : {std::size_t{0}, std::size_t{1}, std::size_t{5}, std::size_t{6},
                                          kBlock, kBlock + 6, 2 * kBlock}) {
            File const file = Holding(bytes);
            ByteReader reader(file.get());
            std::string piece(nFirst, '?');
            ASSERT_EQ(nFirst, reader.Take(reinterpret_cast<unsigned char*>(piece.data()), nFirst));
            ASSERT_EQ(bytes.substr(0, nFirst), piece);
            piece.assign(nSecond, '?');
            ASSERT_EQ(nSecond, reader.Take(reinterpret_cast<unsigned char*>(piece.data()), nSecond));
            ASSERT_EQ(bytes.substr(nFirst, nSecond), piece);
            ASSERT_EQ(static_cast<unsigned char>(bytes[nFirst + nSecond]), reader.Next());
        }
    }
}

TEST_F(ByteReaderTest, WhatIsNotThereStaysAsItWas) {
    for (std::size_t const nSize : {std::size_t{3}, kBlock - 1, kBlock, kBlock + 3}) {
        File const file = Holding(std::string(nSize, 'x'));
        ByteReader reader(file.get());
        std::string piece(nSize + 10, 'o');
        EXPECT_EQ(nSize, reader.Take(reinterpret_cast<unsigned char*>(piece.data()), piece.size()));
        EXPECT_EQ(std::string(nSize, 'x') + std::string(10, 'o'), piece);
        EXPECT_EQ(ByteReader::kEnd, reader.Next());
    }
}

TEST_F(ByteReaderTest, RandomPiecesAreTheFile) {
    std::mt19937 random(3);
    std::string const bytes = Bytes(5 * kBlock + 321);
    for (int n = 0; n < 20; ++n) {
        File const file = Holding(bytes);
        ByteReader reader(file.get());
        std::string read;
        while (read.size() < bytes.size()) {
            if (random() % 2 == 0) {
                read += static_cast<char>(reader.Next());
                continue;
            }
            std::string piece(random() % (random() % 8 == 0 ? 200000 : 20), '?');
            piece.resize(reader.Take(reinterpret_cast<unsigned char*>(piece.data()), piece.size()));
            read += piece;
        }
        ASSERT_EQ(bytes, read);
        ASSERT_EQ(ByteReader::kEnd, reader.Next());
    }
}

TEST(ByteWriter, WritesWhatTheRoomsHoldWhenItGoes) {
    TestFolder const folder;
    std::mt19937 random(4);
    for (int n = 0; n < 20; ++n) {
        std::string expected;
        {
            File const file = OpenPath(WidePath(folder / "out"), "wb");
            ByteWriter writer(file.get());
            for (int i = 0; i < 200; ++i) {
                std::size_t const nSize = random() % 4 == 0 ? ByteWriter::kLongest : random() % 100;
                std::string const piece = Bytes(nSize);
                std::memcpy(writer.Room(nSize), piece.data(), nSize);
                std::size_t const nBack = random() % 3 == 0 ? random() % (nSize + 1) : 0;
                if (nBack != 0) writer.TakeBack(nBack);
                expected += piece.substr(0, nSize - nBack);
            }
        }
        ASSERT_EQ(expected, ReadBytes(folder / "out"));
    }
}

// Sixteen of the longest rooms are a block.
TEST(ByteWriter, AFullBlockLosesNothing) {
    TestFolder const folder;
    for (int const nRooms : {15, 16, 17, 32, 33}) {
        std::string expected;
        {
            File const file = OpenPath(WidePath(folder / "out"), "wb");
            ByteWriter writer(file.get());
            for (int i = 0; i < nRooms; ++i) {
                std::string const piece(ByteWriter::kLongest, static_cast<char>('a' + i % 26));
                std::memcpy(writer.Room(piece.size()), piece.data(), piece.size());
                expected += piece;
            }
            *writer.Room(1) = '!';
        }
        ASSERT_EQ(expected + "!", ReadBytes(folder / "out"));
    }
}
