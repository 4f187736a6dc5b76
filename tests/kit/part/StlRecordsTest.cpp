// Binary STL, also where models stand one behind the other in a file.

#include "part/StlRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "PartChecks.h"
#include "TestFiles.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

// A ball of more facets than a block of 1,024, between two cubes apart from it.
struct Row {
    std::vector<shapes::Mesh> const meshes{shapes::Moved(shapes::Cube(5.0f), 30, 0, 0),
                                           shapes::IcoSphere(10.0, 3),
                                           shapes::Moved(shapes::Cube(2.0f), -30, 0, 0)};
    std::string Bytes() const {
        std::string bytes;
        for (std::size_t i = 0; i < meshes.size(); ++i) {
            bytes += shapes::ToBinaryStl(meshes[i], std::string(1, "abc"[i]));
        }
        return bytes;
    }
    shapes::Mesh All() const {
        shapes::Mesh all;
        for (shapes::Mesh const& mesh : meshes) shapes::Append(all, mesh);
        return all;
    }
};

TEST(StlRecords, ModelsInARowAreReadAsOne) {
    TestFolder const folder;
    Row const row;
    ASSERT_EQ(row.meshes[1].size(), 1280u);
    Part const part = Part::Read(folder.Write("row.stl", row.Bytes()));
    EXPECT_EQ(FacetsOf(part), FacetsOf(row.All()));
    EXPECT_EQ(part.Bodies().size(), 3u);
    EXPECT_EQ(part.Header(), "a");
    EXPECT_EQ(part.Report().facetsInFile, 1304);
    EXPECT_EQ(part.Report().facetsRead, 1304);
    EXPECT_EQ(part.Report().notes, std::vector<std::string>{"3 models, one behind the other"});
    Part const alone = Part::Read(folder.Write("alone.stl", shapes::ToBinaryStl(row.meshes[1])));
    EXPECT_TRUE(alone.Report().notes.empty());
}

TEST(StlRecords, WhatIsBehindTheLastModelIsNoted) {
    TestFolder const folder;
    Part const part = Part::Read(folder.Write("row.stl", Row().Bytes() + std::string(49, '\0')));
    EXPECT_EQ(part.Report().facetsRead, 1304);
    EXPECT_EQ(part.Report().notes, (std::vector<std::string>{"3 models, one behind the other",
                                                             "49 bytes behind the last facet left out"}));
}

// A row ends where the next model is not whole.
TEST(StlRecords, OnlyWholeModelsAreFound) {
    TestFolder const folder;
    std::string const bytes =
        shapes::ToBinaryStl(shapes::Cube(5.0f)) + shapes::ToBinaryStl(shapes::Cube(2.0f));
    std::size_t const one = 84 + 12 * 50;
    ASSERT_EQ(bytes.size(), 2 * one);
    for (std::size_t size = 1; size <= bytes.size(); ++size) {
        InputFile file(folder.Write("a.stl", bytes.substr(0, size)));
        StlModels const found = FindModels(file, 80);
        std::uint64_t const whole = size / one;
        EXPECT_EQ(found.models, whole) << size;
        EXPECT_EQ(found.facets, 12 * whole) << size;
        EXPECT_EQ(found.bytes, one * whole) << size;
        // One behind the other, and no more than 49 bytes, is what a cut may leave.
        bool const isModel = (size >= one && size < one + 50) || size == 2 * one;
        if (isModel) {
            EXPECT_EQ(Part::Read(file.Path()).Report().facetsRead, static_cast<std::int64_t>(12 * whole));
        } else {
            EXPECT_THROW(Part::Read(file.Path()), Error) << size;
        }
    }
}

TEST(StlRecords, BlocksEndWithTheirModels) {
    TestFolder const folder;
    InputFile file(folder.Write("row.stl", Row().Bytes()));
    StlRecords records(file, 80);
    EXPECT_EQ(records.Models(), 3u);
    EXPECT_EQ(records.Announced(), 1304u);
    EXPECT_EQ(records.Count(), 1304u);
    std::vector<std::size_t> blocks;
    std::uint64_t sum = 0;
    while (records.Done() < records.Count()) {
        blocks.push_back(records.NextBlock().size() / StlRecords::kRecord);
        sum += blocks.back();
        EXPECT_EQ(records.Done(), sum);
    }
    EXPECT_EQ(blocks, (std::vector<std::size_t>{12, 1024, 256, 12}));
    EXPECT_TRUE(records.NextBlock().empty());
}

#if !defined(_WIN32)
TEST(StlRecords, ARowThatChangesWhileItIsReadIsAnError) {
    TestFolder const folder;
    std::string const ball = shapes::ToBinaryStl(shapes::IcoSphere(10.0, 3));
    std::filesystem::path const path = folder.Write("row.stl", ball + ball);
    InputFile file(path);
    StlRecords records(file, 80);
    EXPECT_EQ(records.NextBlock().size(), 1024 * StlRecords::kRecord);
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary)
        .seekp(static_cast<std::streamoff>(ball.size() + 80))
        .write("\0\0\0\0", 4);
    EXPECT_EQ(records.NextBlock().size(), 256 * StlRecords::kRecord);
    EXPECT_THROW(records.NextBlock(), Error);
}
#endif

}  // namespace
}  // namespace varnet
