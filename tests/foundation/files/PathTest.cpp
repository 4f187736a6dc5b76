#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <unistd.h>
#endif

#include "TestFiles.h"
#include "foundation/files/Path.h"

using namespace varnet;

TEST(Path, NamesOfAllScriptsNameTheSameFileAsTheSystem) {
    TestFolder const folder;
    for (char8_t const* const pName :
         {u8"plain.stl", u8"Κύβος.stl", u8"立方体.stl", u8"cube\U0001F9CA.stl"}) {
        std::string const name(reinterpret_cast<char const*>(pName));
        WidePath path(folder / name);
        {
            File const file = OpenPath(path, "wb");
            ASSERT_NE(nullptr, file) << name;
            std::fputs("content", file.get());
        }
        EXPECT_EQ("content", ReadBytes(folder / name)) << name;
    }
}

TEST(Path, MayStandAtAnyAddress) {
    TestFolder const folder;
    std::u16string const path = folder.Write("odd", "x").u16string();
    std::vector<char> bytes(2 * path.size() + 3);
    std::memcpy(bytes.data() + 1, path.c_str(), 2 * (path.size() + 1));
    EXPECT_NE(nullptr, OpenPath(bytes.data() + 1, "rb"));
}

TEST(Path, EndsAfterTheGivenNumberOfBytes) {
    TestFolder const folder;
    folder.Write("ab", "x");
    std::u16string text = (folder / "ab").u16string() + u"cdef";
    char const* const pPath = reinterpret_cast<char const*>(text.data());
    std::size_t const nLength = (folder / "ab").u16string().size();
    EXPECT_EQ(nullptr, OpenPath(pPath, "rb"));
    EXPECT_NE(nullptr, OpenPath(pPath, "rb", 2 * nLength));
    EXPECT_NE(nullptr, OpenPath(pPath, "rb", 2 * nLength + 1));
}

TEST(Path, WhatIsNoFileCannotBeOpened) {
    TestFolder const folder;
    EXPECT_EQ(nullptr, OpenPath(nullptr, "rb"));
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder / "missing"), "rb"));
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder.Path()), "rb"));
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder.Path()), "wb"));
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder / "no" / "such"), "wb"));
    EXPECT_EQ(nullptr, OpenPath(WidePath(""), "rb"));
}

TEST(Path, HalvesOfSurrogatePairsNameDifferentFiles) {
    TestFolder const folder;
    std::u16string const base = (folder / "").u16string();
    for (char16_t const half : {u'\xD83E', u'\xDDCA'}) {
        std::u16string path = base + half;
        File const file = OpenPath(reinterpret_cast<char const*>(path.c_str()), "wb");
        ASSERT_NE(nullptr, file);
    }
    std::size_t nFiles = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder.Path())) {
        nFiles += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_EQ(2u, nFiles);
}

TEST(Path, FileSizeKeepsThePosition) {
    TestFolder const folder;
    File const file = OpenPath(WidePath(folder.Write("ten", "0123456789")), "rb");
    ASSERT_NE(nullptr, file);
    std::fseek(file.get(), 3, SEEK_SET);
    EXPECT_EQ(10, FileSize(file.get()));
    EXPECT_EQ(3, std::ftell(file.get()));
    EXPECT_EQ('3', std::fgetc(file.get()));
    EXPECT_EQ(-1, FileSize(nullptr));
    File const empty = OpenPath(WidePath(folder.Write("empty", "")), "rb");
    EXPECT_EQ(0, FileSize(empty.get()));
}

#if !defined(_WIN32)

TEST(Path, FileWithoutPositionsHasSizeZero) {
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    File const pipe(::fdopen(ends[0], "rb"));
    EXPECT_EQ(0, FileSize(pipe.get()));
    ::close(ends[1]);
}

// A file of three thousand million bytes that are not on the disk.
TEST(Path, SizesBeyondThirtyTwoBitsAreTheLargestNumber) {
    TestFolder const folder;
    folder.Write("huge", "");
    std::error_code error;
    std::filesystem::resize_file(folder / "huge", 3000000000u, error);
    if (error) GTEST_SKIP() << "the disk takes no sparse file: " << error.message();
    File const file = OpenPath(WidePath(folder / "huge"), "rb");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(2147483647, FileSize(file.get()));
}

#endif
