#include "files/File.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "TestFiles.h"
#include "varnet/Error.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace varnet {
namespace {

namespace fs = std::filesystem;

std::string BytesOf(fs::path const& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class OutputFileTest : public ::testing::Test {
protected:
    OutputFileTest() { fs::create_directory(folder); }
    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }
    TestFolder const own;
    fs::path const folder = own.Path() / fs::path(u8"varnet_\u0142\u4e2d\U0001F600");
};

TEST_F(OutputFileTest, AppearsUnderItsNameOnlyWhenItIsCommitted) {
    fs::path const target = folder / u8"\u017c\u00f3\u0142\u0107.bin";
    {
        OutputFile file(target);
        file.Write("abc");
        EXPECT_FALSE(fs::exists(target));
        file.Write("def");
        file.Commit();
    }
    EXPECT_EQ(BytesOf(target), "abcdef");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(OutputFileTest, LeavesTheOldFileWhereItIsNotCommitted) {
    fs::path const target = folder / "old.bin";
    WriteWhole(target, "old");
    { OutputFile(target).Write("new"); }
    EXPECT_EQ(BytesOf(target), "old");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(OutputFileTest, OverwritesBytesInFrontAndGoesOnBehind) {
    OutputFile file(folder / "a");
    file.Write("0123456789");
    file.Overwrite(2, std::string("xy"));
    file.Write("!");
    EXPECT_EQ(file.Size(), 11u);
    file.Commit();
    EXPECT_EQ(BytesOf(folder / "a"), "01xy456789!");
}

TEST_F(OutputFileTest, RefusesAFolderAndAPlaceThatIsNot) {
    try {
        OutputFile file(folder);
        FAIL();
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kFile);
        EXPECT_NE(std::string(error.what()).find("is a folder"), std::string::npos);
    }
    EXPECT_THROW(OutputFile(folder / "none" / "a"), Error);
}

#if !defined(_WIN32)
TEST_F(OutputFileTest, KeepsTheModeOfTheFileItReplaces) {
    fs::path const target = folder / "private.bin";
    WriteWhole(target, "old");
    // The second with the group's right that a folder hands on: one that a file has is kept, too.
    for (mode_t const mode : {0600u, 02640u}) {
        ASSERT_EQ(chmod(target.c_str(), mode), 0);
        WriteWhole(target, "new");
        struct stat status {};
        ASSERT_EQ(stat(target.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
        EXPECT_EQ(BytesOf(target), "new");
    }
}

TEST_F(OutputFileTest, KeepsLinksPointing) {
    fs::path const target = folder / "target.bin";
    WriteWhole(target, "old");
    fs::create_symlink("target.bin", folder / "link");
    fs::create_symlink("link", folder / "link to link");
    WriteWhole(folder / "link to link", "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "link to link"));
    EXPECT_EQ(BytesOf(target), "new");
    fs::create_symlink("later.bin", folder / "dangling");
    WriteWhole(folder / "dangling", "made");
    EXPECT_EQ(BytesOf(folder / "later.bin"), "made");
}

TEST_F(OutputFileTest, WritesToADeviceAndLeavesItOne) {
    fs::path const link = folder / "null";
    fs::create_symlink("/dev/null", link);
    WriteWhole(link, "gone");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no full device here";
    try {
        WriteWhole("/dev/full", std::string(100000, 'x'));
        FAIL();
    } catch (Error const& error) {
        EXPECT_NE(std::string(error.what()).find("the disk is full"), std::string::npos) << error.what();
    }
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

// Another's file of the name that is tried first, be it a link to a device, is not touched.
TEST_F(OutputFileTest, PassesOverNamesThatAreTaken) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no full device here";
    fs::path const target = folder / "a";
    std::string const part = "a." + std::to_string(getpid());
    fs::create_symlink("/dev/full", folder / (part + ".part"));
    WriteWhole(folder / (part + "-1.part"), "another's");
    WriteWhole(target, "whole");
    EXPECT_EQ(BytesOf(target), "whole");
    EXPECT_TRUE(fs::is_symlink(folder / (part + ".part")));
    EXPECT_EQ(BytesOf(folder / (part + "-1.part")), "another's");
    EXPECT_EQ(FilesInFolder(), 3u);
}

// A file that may not grow is a full disk: what was there stays, and nothing else is left.
TEST_F(OutputFileTest, LeavesTheOldFileWhereTheNewOneFindsNoRoom) {
    fs::path const target = folder / "old.bin";
    WriteWhole(target, "old");
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto const handler = signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = before;
    small.rlim_cur = 4096;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string message;
    for (std::size_t const size : {4097u, 100000u}) {
        try {
            WriteWhole(target, std::string(size, 'x'));
            ADD_FAILURE() << size;
        } catch (Error const& error) {
            message = error.what();
            EXPECT_EQ(error.Kind(), ErrorKind::kFile);
        }
    }
    WriteWhole(folder / "fits", std::string(4096, 'x'));
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, handler);
    EXPECT_NE(message.find("could not be written whole"), std::string::npos) << message;
    EXPECT_EQ(BytesOf(target), "old");
    EXPECT_EQ(fs::file_size(folder / "fits"), 4096u);
    EXPECT_EQ(FilesInFolder(), 2u);
}

TEST_F(OutputFileTest, StandardOutputThatTakesNothingIsAnError) {
    int const full = open("/dev/full", O_WRONLY);
    if (full < 0) GTEST_SKIP() << "no full device here";
    std::fflush(stdout);
    int const before = dup(STDOUT_FILENO);
    dup2(full, STDOUT_FILENO);
    bool failed = false;
    try {
        OutputFile file("-");
        file.Write("\n");
        file.Commit();
    } catch (Error const& error) {
        failed = error.Kind() == ErrorKind::kFile;
    }
    dup2(before, STDOUT_FILENO);
    std::clearerr(stdout);
    close(before);
    close(full);
    EXPECT_TRUE(failed);
}

// A writer that opens by name gets a file in the temporary folder, whose bytes go to standard output at the
// end.
TEST_F(OutputFileTest, WhatWaitsForStandardOutputIsGoneAfterwards) {
    char const* const old = std::getenv("TMPDIR");
    std::string const before = old == nullptr ? "" : old;
    fs::path const scratch = own.Path() / "scratch";
    fs::create_directory(scratch);
    setenv("TMPDIR", scratch.c_str(), 1);
    int const sink = open((folder / "sink").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(sink, 0);
    std::fflush(stdout);
    int const output = dup(STDOUT_FILENO);
    dup2(sink, STDOUT_FILENO);
    fs::path waiting;
    for (bool const isWhole : {false, true}) {
        OutputFile file("-");
        waiting = file.PathForWriter();
        std::ofstream(waiting, std::ios::binary) << (isWhole ? "written elsewhere" : "half of");
        if (isWhole) file.Commit();
    }
    dup2(output, STDOUT_FILENO);
    close(output);
    close(sink);
    old == nullptr ? unsetenv("TMPDIR") : setenv("TMPDIR", before.c_str(), 1);
    EXPECT_EQ(waiting.parent_path(), scratch);
    EXPECT_EQ(BytesOf(folder / "sink"), "written elsewhere");
    EXPECT_TRUE(fs::is_empty(scratch));
}

// Somebody who reads from a pipe sees no end before the writer that opens it by its name has come and gone.
TEST_F(OutputFileTest, KeepsAPipeOpenForAWriterThatOpensByName) {
    fs::path const pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    int const reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    auto const isOver = [reader] {
        pollfd state{reader, POLLIN, 0};
        poll(&state, 1, 0);
        return (state.revents & POLLHUP) != 0;
    };
    OutputFile file(pipe);
    fs::path const place = file.PathForWriter();
    EXPECT_EQ(place, pipe);
    EXPECT_FALSE(isOver());
    std::ofstream(place, std::ios::binary) << "written elsewhere";
    EXPECT_FALSE(isOver());
    file.Commit();
    EXPECT_TRUE(isOver());
    std::string bytes(100, '?');
    bytes.resize(static_cast<std::size_t>(read(reader, bytes.data(), bytes.size())));
    EXPECT_EQ(bytes, "written elsewhere");
    close(reader);
}

TEST_F(OutputFileTest, GivesItsPlaceToAWriterThatOpensByName) {
    fs::path const target = folder / "by name";
    OutputFile file(target);
    std::ofstream(file.PathForWriter(), std::ios::binary) << "written elsewhere";
    EXPECT_FALSE(fs::exists(target));
    file.Commit();
    EXPECT_EQ(BytesOf(target), "written elsewhere");
    EXPECT_EQ(FilesInFolder(), 1u);
}
#endif

TEST_F(OutputFileTest, AFileThatGrowsIsReadWhereItIsAsked) {
    WriteWhole(folder / "a", "0123456789");
    SeekableFile file(folder / "a");
    std::string piece(20, '?');
    EXPECT_EQ(file.ReadAt(0, piece), 10u);
    std::ofstream(folder / "a", std::ios::binary | std::ios::app) << "abcdefghijklmnopqrstuvwxyz";
    EXPECT_EQ(file.ReadAt(20, piece), 16u);
    EXPECT_EQ(piece.substr(0, 16), "klmnopqrstuvwxyz");
}

TEST_F(OutputFileTest, ReadsAtAnyPlace) {
    WriteWhole(folder / "a", "0123456789");
    SeekableFile file(folder / "a");
    EXPECT_EQ(file.Size(), 10u);
    std::string piece(4, '?');
    EXPECT_EQ(file.ReadAt(8, piece), 2u);
    EXPECT_EQ(piece, "89??");
    EXPECT_EQ(file.ReadAt(3, piece), 4u);
    EXPECT_EQ(piece, "3456");
    EXPECT_EQ(file.ReadAt(99, piece), 0u);
    EXPECT_EQ(ReadWhole(folder / "a", 10).size(), 10u);
    EXPECT_THROW(ReadWhole(folder / "a", 9), Error);
    EXPECT_THROW(SeekableFile(folder / "none"), Error);
    EXPECT_THROW(SeekableFile{folder}, Error);
}

}  // namespace
}  // namespace varnet
