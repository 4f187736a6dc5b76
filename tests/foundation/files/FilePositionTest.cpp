#include "foundation/files/FilePosition.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "TestFiles.h"

using namespace varnet;

TEST(FilePosition, AFileHasAPositionAndALength) {
    FILE* const pFile = std::tmpfile();
    std::fputs("abcdef", pFile);
    EXPECT_EQ(6, FilePosition(pFile));
    EXPECT_TRUE(SetFilePosition(pFile, 2));
    EXPECT_EQ(6, FileLength(pFile));
    EXPECT_EQ(2, FilePosition(pFile));
    EXPECT_EQ('c', std::getc(pFile));
    EXPECT_FALSE(SetFilePosition(pFile, -1));
    std::fclose(pFile);
}

TEST(FilePosition, PositionsBeyondFourGigabytesAreWhole) {
    FILE* const pFile = std::tmpfile();
    EXPECT_TRUE(SetFilePosition(pFile, 5'000'000'000));
    EXPECT_EQ(5'000'000'000, FilePosition(pFile));
    std::fclose(pFile);
}

TEST(FilePosition, APipeHasNone) {
    std::array<int, 2> const ends = OpenPipe();
    FILE* const pFile = fdopen(ends[0], "rb");
    EXPECT_EQ(-1, FilePosition(pFile));
    EXPECT_EQ(-1, FileLength(pFile));
    EXPECT_FALSE(SetFilePosition(pFile, 0));
    std::fclose(pFile);
    close(ends[1]);
}
