// Files that are no files, disks that are full, and files that end at any byte.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include "MeshChecks.h"
#include "SmallFiles.h"

namespace {

// Facets that reach no model: what a read leaves must be a sound mesh, whatever it met.
void ExpectSoundAndUsable(CSTLModel& model) {
    ExpectInvariants(model);
    model.FixNormal();
    model.CalVolume();
}

}  // namespace

TEST(FileFaults, WhatIsNoPlainFileIsNotRead) {
    TestFolder const folder;
    std::filesystem::path const pipe = folder / "pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    std::size_t const nOpen = OpenFiles();
    for (FileOperation const& reader : ModelReaders()) {
        for (std::filesystem::path const& name :
             {folder.Path(), pipe, folder / "missing", std::filesystem::path("/dev/zero"),
              std::filesystem::path("/dev/urandom"), std::filesystem::path("/dev/full")}) {
            CSTLModel model;
            AddShape(model, shapes::Cube(1.0f));
            WidePath path(name);
            EXPECT_EQ(0, reader.run(model, path)) << reader.name << ' ' << name;
            EXPECT_EQ(12, model.GetFacetsNum()) << reader.name << ' ' << name;
        }
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileFaults, APathThatCannotBeWrittenGivesZeroAndLeavesTheModel) {
    TestFolder const folder;
    std::filesystem::path const pipe = folder / "pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    folder.Write("file", "no folder");
    std::size_t const nOpen = OpenFiles();
    for (FileOperation const& writer : ModelWriters()) {
        for (std::filesystem::path const& name :
             {folder.Path(), pipe, folder / "missing" / "out", folder / "file" / "out",
              std::filesystem::path("/proc/varnet-test")}) {
            CSTLModel model;
            AddShape(model, shapes::Cube(1.0f));
            WidePath path(name);
            EXPECT_EQ(0, writer.run(model, path)) << writer.name << ' ' << name;
            ExpectSoundAndUsable(model);
            EXPECT_EQ(12, model.GetFacetsNum());
        }
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileFaults, AFullDiskIsNotNoticedAndHarmsNothing) {
    std::size_t const nOpen = OpenFiles();
    for (FileOperation const& writer : ModelWriters()) {
        CSTLModel model;
        AddShape(model, shapes::IcoSphere(10.0, 4));
        WidePath path("/dev/full");
        EXPECT_EQ(1, writer.run(model, path)) << writer.name;
        ExpectSoundAndUsable(model);
        EXPECT_EQ(20 * 256, model.GetFacetsNum()) << writer.name;
    }
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(FileFaults, EveryReaderTakesItsFilesCutAtEveryByteAndOthersAtMany) {
    TestFolder const folder;
    std::size_t const nOpen = OpenFiles();
    shapes::Mesh const tetrahedron = {{{{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}},
                                      {{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}},
                                      {{{0, 0, 0}, {0, 0, 1}, {0, 1, 0}}},
                                      {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}};
    for (std::string const& bytes : FilesOf(tetrahedron)) {
        for (FileOperation const& reader : ModelReaders()) {
            WidePath whole(folder.Write("whole", bytes));
            CSTLModel wholeModel;
            bool const bOwn = reader.run(wholeModel, whole) == 1 && wholeModel.GetFacetsNum() == 4;
            // Of a long header, some cuts tell as much as all.
            auto const step = [&bytes, bOwn](std::size_t nLength) {
                return bOwn && nLength + 1200 > bytes.size() ? 1 : 29;
            };
            for (std::size_t nLength = 0; nLength < bytes.size(); nLength += step(nLength)) {
                WidePath path(folder.Write("cut", bytes.substr(0, nLength)));
                CSTLModel model;
                int const nResult = reader.run(model, path);
                ASSERT_TRUE(nResult == 0 || nResult == 1) << reader.name << " at " << nLength;
                ASSERT_NO_FATAL_FAILURE(ExpectSoundAndUsable(model)) << reader.name << " at " << nLength;
                std::filesystem::remove(folder / "cut");
                ASSERT_LE(model.GetFacetsNum(), bOwn ? 4 : 40) << reader.name << " at " << nLength;
            }
        }
    }
    EXPECT_EQ(nOpen, OpenFiles());
}
