#include "cli/FileWindow.h"

#include <unistd.h>

#include <array>
#include <thread>

#include "TestFiles.h"
#include "cli/Slices.h"

using namespace varnet;

namespace {

// The reading end of a pipe into which the bytes go.
class Pipe {
public:
    explicit Pipe(std::string bytes) : m_Bytes(std::move(bytes)) {
        std::array<int, 2> const ends = OpenPipe();
        m_pFile = fdopen(ends[0], "rb");
        m_Writer = std::thread([this, nEnd = ends[1]] {
            std::size_t nDone = 0;
            while (nDone < m_Bytes.size()) {
                std::ptrdiff_t const n = WriteSome(nEnd, m_Bytes.data() + nDone, m_Bytes.size() - nDone);
                if (n <= 0) break;
                nDone += static_cast<std::size_t>(n);
            }
            close(nEnd);
        });
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;
    ~Pipe() {
        while (std::getc(m_pFile) != EOF) {
        }
        m_Writer.join();
        std::fclose(m_pFile);
    }
    operator FILE*() const { return m_pFile; }

private:
    std::string m_Bytes;
    FILE* m_pFile = nullptr;
    std::thread m_Writer;
};

std::string ManyLines() {
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += std::to_string(i) + std::string(static_cast<std::size_t>(i) % 90, 'x') + "\n";
    return bytes;
}

}  // namespace

TEST(FileWindow, LinesComeAsFromTheRuntime) {
    std::string const bytes = ManyLines() + "no end";
    OpenBytes const file(bytes);
    OpenBytes const other(bytes);
    std::array<char, 64> line{};
    FileWindow window(file);
    while (std::fgets(line.data(), 64, other) != nullptr) {
        ASSERT_EQ(window.NextLine(63), std::string_view(line.data()));
        ASSERT_EQ(window.Position(), other.Position());
    }
    EXPECT_FALSE(window.NextLine(63));
}

TEST(FileWindow, AfterwardsTheFileStandsWhereItIsTold) {
    std::string const bytes = ManyLines();
    OpenBytes const file(bytes);
    std::fseek(file, 7, SEEK_SET);
    for (std::int64_t const nPosition :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{5000}, std::int64_t{100000}}) {
        std::fseek(file, 7, SEEK_SET);
        FileWindow window(file);
        while (window.NextLine(1000)) {
        }
        window.Leave(nPosition);
        EXPECT_EQ(file.Position(), 7 + nPosition);
        EXPECT_EQ(std::getc(file), bytes[static_cast<std::size_t>(7 + nPosition)]);
    }
}

TEST(FileWindow, TheEndOfTheFileShowsAsAfterAnyRead) {
    OpenBytes const file("abc\n");
    FileWindow window(file);
    window.NextLine(100);
    EXPECT_FALSE(window.NextLine(100));
    window.Leave(window.Position());
    EXPECT_NE(std::feof(static_cast<FILE*>(file)), 0);
}

TEST(FileWindow, BytesAreTakenWholeOrNotAtAll) {
    OpenBytes const file("abcdefg");
    FileWindow window(file);
    unsigned char const* const pBytes = window.Take(4);
    ASSERT_NE(pBytes, nullptr);
    EXPECT_EQ(std::string(pBytes, pBytes + 4), "abcd");
    EXPECT_EQ(window.Position(), 4);
    EXPECT_EQ(window.Take(4), nullptr);
    EXPECT_EQ(window.Position(), 7);
    EXPECT_NE(window.Take(0), nullptr);
}

TEST(FileWindow, ItemsAreTakenUpToTheirNumber) {
    std::string const bytes = ManyLines();
    OpenBytes const file(bytes);
    FileWindow window(file);
    std::string taken;
    for (std::size_t nLeft = bytes.size() / 7; nLeft > 0;) {
        auto const items = window.TakeItems(7, nLeft);
        ASSERT_FALSE(items.empty());
        ASSERT_EQ(items.size() % 7, 0u);
        taken.append(items.begin(), items.end());
        nLeft -= items.size() / 7;
    }
    EXPECT_EQ(taken, bytes.substr(0, bytes.size() / 7 * 7));
    EXPECT_TRUE(window.TakeItems(7, 1).empty());
}

TEST(FileWindow, WhatTheFileCanHoldIsKnownWithoutReadingIt) {
    std::string const bytes(100000, 'x');
    OpenBytes const file(bytes);
    std::fseek(file, 10, SEEK_SET);
    FileWindow window(file);
    window.Take(5);
    EXPECT_TRUE(window.CanHold(1));
    EXPECT_TRUE(window.CanHold(99985));
    EXPECT_FALSE(window.CanHold(99986));
    EXPECT_FALSE(window.CanHold(~std::uint64_t{0}));
    EXPECT_EQ(*window.Take(1), 'x');
    EXPECT_EQ(window.Position(), 6);
}

TEST(FileWindow, FromItsStartAFileHoldsItsLengthAndWithoutAFileThereIsNothing) {
    OpenBytes const file("abcdefg");
    FileWindow window(file);
    EXPECT_TRUE(window.CanHold(7));
    EXPECT_FALSE(window.CanHold(8));
    window.Take(7);
    EXPECT_TRUE(window.CanHold(0));
    EXPECT_FALSE(window.CanHold(1));

    FileWindow none(nullptr);
    EXPECT_TRUE(none.CanHold(0));
    EXPECT_FALSE(none.CanHold(1));
    EXPECT_FALSE(none.NextLine(1));
    EXPECT_EQ(none.Take(1), nullptr);
}

TEST(FileWindow, AFileReadFromItsStartGoesBackToAnyPlaceOfIt) {
    std::string const bytes = ManyLines();
    OpenBytes const file(bytes);
    for (std::int64_t const nPosition : {0, 1, 5000}) {
        std::rewind(file);
        FileWindow window(file);
        while (window.NextLine(1000)) {
        }
        window.Leave(nPosition);
        EXPECT_EQ(file.Position(), nPosition);
        EXPECT_EQ(std::getc(file), bytes[static_cast<std::size_t>(nPosition)]);
    }
}

TEST(FileWindow, AtTheEndIsBehindAllBytesHoweverFewWereRead) {
    for (long const nStart : {0L, 7L}) {
        OpenBytes const file(ManyLines());
        std::fseek(file, nStart, SEEK_SET);
        FileWindow window(file);
        window.Take(3);
        window.LeaveAtEnd();
        EXPECT_EQ(file.Position(), static_cast<long>(ManyLines().size()));
    }
}

TEST(FileWindow, ItemsThatAreNotWholeArePassedOver) {
    OpenBytes const file("abcdefg");
    FileWindow window(file);
    EXPECT_EQ(window.TakeItems(3, 9).size(), 6u);
    EXPECT_TRUE(window.TakeItems(3, 9).empty());
    EXPECT_EQ(window.Position(), 7);
}

TEST(FileWindow, LinesOfAPipeEndAtTheirEndAtSoManyCharactersAndWithThePipe) {
    Pipe const pipe("abcde\nfg");
    FileWindow window(pipe);
    EXPECT_EQ(window.NextLine(3), "abc");
    EXPECT_EQ(window.Position(), 3);
    EXPECT_EQ(window.NextLine(3), "de\n");
    EXPECT_EQ(window.NextLine(3), "fg");
    EXPECT_EQ(window.Position(), 8);
    EXPECT_FALSE(window.NextLine(3));
    EXPECT_FALSE(window.NextLine(3));
    EXPECT_EQ(window.Position(), 8);
}

TEST(FileWindow, AFilePlacedBehindItsEndHoldsNothing) {
    OpenBytes const file("abcdefg");
    std::fseek(file, 100, SEEK_SET);
    FileWindow window(file);
    EXPECT_TRUE(window.CanHold(0));
    EXPECT_FALSE(window.CanHold(1));
}

TEST(FileWindow, BytesAndLinesComeInTurn) {
    OpenBytes const file("abcdef\nghi\nj");
    FileWindow window(file);
    EXPECT_EQ(*window.Take(2), 'a');
    EXPECT_EQ(window.NextLine(100), "cdef\n");
    EXPECT_EQ(*window.Take(1), 'g');
    EXPECT_EQ(window.NextLine(1), "h");
    EXPECT_EQ(window.Position(), 9);
    EXPECT_EQ(window.NextLine(100), "i\n");
    EXPECT_EQ(*window.Take(1), 'j');
}

TEST(FileWindow, APipeIsReadNoFurtherThanAskedFor) {
    Pipe const pipe("line\nmore and more");
    FileWindow window(pipe);
    EXPECT_EQ(window.NextLine(100), "line\n");
    EXPECT_EQ(*window.Take(1), 'm');
    EXPECT_EQ(std::getc(pipe), 'o');
    EXPECT_TRUE(window.CanHold(1000000));
}

TEST(FileWindow, APipeTakesBackWhatWasReadLastAndNoMore) {
    for (std::int64_t const nPosition : {3, 4, 5}) {
        Pipe const pipe("abcdefgh");
        FileWindow window(pipe);
        EXPECT_EQ(*window.Take(5), 'a');
        window.Leave(nPosition);
        EXPECT_EQ(std::getc(pipe), "abcdefgh"[nPosition]) << nPosition;
    }
}

TEST(FileWindow, LayersAreReadFromAPipeOneAfterTheOther) {
    for (int const nMode : {1, 2, 3}) {
        CLayer layer;
        std::string bytes;
        for (int i = 0; i < 50; ++i) {
            layer.ReleaseAll();
            layer.m_dZ = i;
            Give(layer, Square(i, 0, 5));
            Give(layer, Hatch({{{0, 0}, {1, 1}}}));
            bytes += BytesOf(layer, nMode);
        }
        Pipe const pipe(bytes);
        for (int i = 0; i < 50; ++i) {
            CLayer read;
            ASSERT_EQ(read.ReadCLIFile(pipe, nMode), 1) << i;
            ASSERT_EQ(read.m_dZ, i);
            ASSERT_EQ(read.m_RawLoopList.GetCount(), 1);
            ASSERT_EQ(read.m_HatchList.GetCount(), 1);
        }
        CLayer none;
        EXPECT_EQ(none.ReadCLIFile(pipe, nMode), 0);
    }
}

TEST(FileWindow, ACountThatAPipeDoesNotKeepGives0) {
    Pipe const pipe(SliceBytes().Short({127}).Float({1}).Short({130}).Long({1, 1, 2147483647}).Float({1, 2}));
    CLayer layer;
    EXPECT_EQ(layer.ReadCLIFile(pipe, 2), 0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
    Pipe const hatches(
        SliceBytes().Short({127}).Float({1}).Short({132}).Long({1, 2147483647}).Float({1, 2, 3, 4}));
    EXPECT_EQ(layer.ReadCLIFile(hatches, 2), 0);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 0);
}
