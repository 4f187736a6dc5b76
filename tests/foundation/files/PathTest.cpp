#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
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

namespace {

// Makes a file of this name, and says what the system calls it.
std::string NameOfFile(std::u16string const& name) {
    TestFolder const folder;
    std::u16string const path = (folder / "").u16string() + name;
    if (OpenPath(reinterpret_cast<char const*>(path.c_str()), "wb") == nullptr) return "";
    return std::filesystem::directory_iterator(folder.Path())->path().filename().native();
}

}  // namespace

TEST(Path, TheFirstAndTheLastCharacterOfEachLengthInUtf8) {
    EXPECT_EQ("\x01", NameOfFile(u"\x0001"));
    EXPECT_EQ("\x7F", NameOfFile(u"\x007F"));
    EXPECT_EQ("\xC2\x80", NameOfFile(u"\x0080"));
    EXPECT_EQ("\xDF\xBF", NameOfFile(u"\x07FF"));
    EXPECT_EQ("\xE0\xA0\x80", NameOfFile(u"\x0800"));
    EXPECT_EQ("\xEF\xBF\xBF", NameOfFile(u"\xFFFF"));
    EXPECT_EQ("\xF0\x90\x80\x80", NameOfFile(u"\xD800\xDC00"));
    EXPECT_EQ("\xF4\x8F\xBF\xBF", NameOfFile(u"\xDBFF\xDFFF"));
}

// A half of a pair is a character of three bytes, and takes nothing with it that is not its other half.
TEST(Path, AHalfOfAPairBesideAnOrdinaryCharacterLeavesItAsItIs) {
    EXPECT_EQ(
        "\xED\xA0\xBE"
        "a",
        NameOfFile(u"\xD83E"
                   u"a"));
    EXPECT_EQ("\xED\xA0\xBE\xEE\x80\x80", NameOfFile(u"\xD83E\xE000"));
    EXPECT_EQ("\xED\xA0\xBE\xED\x9F\xBF", NameOfFile(u"\xD83E\xD7FF"));
    EXPECT_EQ("\xED\xA0\xBE\xF0\x9F\x98\x80", NameOfFile(u"\xD83E\xD83D\xDE00"));
    EXPECT_EQ(
        "\xED\xB7\x8A"
        "a",
        NameOfFile(u"\xDDCA"
                   u"a"));
    EXPECT_EQ("\xED\x9F\xBF\xED\xB0\x80", NameOfFile(u"\xD7FF\xDC00"));
}

// A new file is empty, whatever it held; it is not handed on to programs that the host starts.
TEST(Path, FlagsOfWhatIsOpened) {
    TestFolder const folder;
    folder.Write("old", "a long text");
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder / "none"), "rb"));
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    for (char const* const pMode : {"wb", "rb"}) {
        File const file = OpenPath(WidePath(folder / "old"), pMode);
        ASSERT_NE(nullptr, file);
        EXPECT_NE(0, ::fcntl(::fileno(file.get()), F_GETFD) & FD_CLOEXEC);
        int const nAccess = ::fcntl(::fileno(file.get()), F_GETFL) & O_ACCMODE;
        EXPECT_EQ(*pMode == 'w' ? O_WRONLY : O_RDONLY, nAccess);
        EXPECT_EQ(0, FileSize(file.get()));
    }
    mode_t const nMask = ::umask(0);
    EXPECT_NE(nullptr, OpenPath(WidePath(folder / "new"), "wb"));
    ::umask(nMask);
    struct stat status {};
    ASSERT_EQ(0, ::stat((folder / "new").c_str(), &status));
    EXPECT_EQ(0666u, status.st_mode & 0777u);
}

#if defined(F_GETPIPE_SZ)

// Opening does not wait; what follows does, so that all of it arrives however slowly it is read.
TEST(Path, AllThatIsWrittenIntoASlowPipeArrives) {
    TestFolder const folder;
    ASSERT_EQ(0, ::mkfifo((folder / "pipe").c_str(), 0600));
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder / "pipe"), "wb")) << "nobody reads";
    EXPECT_EQ(nullptr, OpenPath(WidePath(folder / "pipe"), "rb")) << "a pipe is no file to be read";
    int const nReader = ::open((folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(nReader, 0);
    File file = OpenPath(WidePath(folder / "pipe"), "wb");
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(0, ::fcntl(::fileno(file.get()), F_GETFL) & O_NONBLOCK);
    ASSERT_EQ(0, ::fcntl(nReader, F_SETFL, 0));
    constexpr std::size_t kSize = 1000000;  // more than a pipe holds
    std::size_t nRead = 0;
    std::thread reader([&] {
        // Nothing is taken before the pipe is full and the writer has to wait.
        int const nRoom = ::fcntl(nReader, F_GETPIPE_SZ);
        for (int nWaiting = 0; nWaiting < nRoom; ::ioctl(nReader, FIONREAD, &nWaiting))
            std::this_thread::yield();
        std::vector<char> block(1 << 16);
        for (ssize_t n = 0; (n = ::read(nReader, block.data(), block.size())) > 0;)
            nRead += static_cast<std::size_t>(n);
    });
    std::vector<char> const bytes(kSize, 'x');
    std::size_t const nWritten = std::fwrite(bytes.data(), 1, kSize, file.get());
    file.reset();
    reader.join();
    ::close(nReader);
    EXPECT_EQ(kSize, nWritten);
    EXPECT_EQ(kSize, nRead);
}

#endif

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
