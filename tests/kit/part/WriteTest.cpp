#include <Varnet64.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#include "PartChecks.h"
#include "TestFiles.h"

namespace varnet {
namespace {

TEST(WritePart, EveryFormatThatIsWrittenReadsBackAndSaysWhatItLost) {
    TestFolder const folder;
    Part const part = PartOf(shapes::Bracket());
    for (MeshFormat const format :
         {MeshFormat::kBinaryStl, MeshFormat::kPlainCsm, MeshFormat::kStripCsm, MeshFormat::kRingCsm}) {
        SCOPED_TRACE(NameOf(format));
        WriteReport const report = part.Write(folder / "a.out", format);
        EXPECT_EQ(report.facetsBefore, static_cast<std::int64_t>(part.Triangles().size()));
        EXPECT_EQ(report.facetsAfter, report.facetsBefore);
        EXPECT_EQ(report.openEdgesBefore, 0);
        EXPECT_EQ(report.openEdgesAfter, 0);
        EXPECT_NEAR(report.volumeAfter, report.volumeBefore, 1e-4 * report.volumeBefore);
        EXPECT_EQ(Part::Read(folder / "a.out").Format(), format);
        EXPECT_TRUE(Part::Read(folder / "a.out").Report().notes.empty());
        EXPECT_FALSE(std::filesystem::exists(folder / "a.out.part"));
    }
}

TEST(WritePart, TouchingShellsLoseFacetsInWhatHoldsNoCoincidentOnes) {
    TestFolder const folder;
    Part const part = PartOf(shapes::CubesAtFace());
    EXPECT_EQ(part.Write(folder / "a.stl").facetsAfter, 24);
    EXPECT_EQ(part.Write(folder / "a.csm", MeshFormat::kPlainCsm).facetsAfter, 24);
    MeshWriteSettings settings;
    settings.format = MeshFormat::kStripCsm;
    settings.floats = true;
    WriteReport const strips = part.Write(folder / "b.csm", settings);
    EXPECT_EQ(strips.facetsAfter, 20);
    EXPECT_EQ(strips.openEdgesAfter, 0);
    EXPECT_NEAR(strips.volumeAfter, 2000.0, 1e-6);
}

TEST(WritePart, BinaryStlHasTheCornersAsRead) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Shuffled(shapes::Gyroid(12), 5);
    // A cube whose zeros have any sign: 0.0 and -0.0 are one point, and yet come out as they went in.
    int counter = 0;
    for (shapes::Triangle t : shapes::Moved(shapes::Cube(3.0f), 0.0f, 0.0f, -3.0f)) {
        for (shapes::Corner& c : t) {
            for (float* const f : {&c.x, &c.y, &c.z}) {
                if (*f == 0.0f && ++counter % 3 == 0) *f = -0.0f;
            }
        }
        mesh.push_back(t);
    }
    Part part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh)));
    ASSERT_EQ(part.Report().openEdgesExact, 0);
    part.Repair();
    part.Write(folder / "b.stl");
    std::string const a = ReadBytes(folder / "a.stl");
    std::string const b = ReadBytes(folder / "b.stl");
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 84; i < a.size(); i += 50) {
        EXPECT_EQ(a.substr(i + 12, 36), b.substr(i + 12, 36));
    }
}

TEST(WritePart, FormatsThatAreNotWrittenAreRefused) {
    TestFolder const folder;
    for (MeshFormat const format : {MeshFormat::kAsciiStl, MeshFormat::kOltp, MeshFormat::kThreeDmf}) {
        EXPECT_THROW(PartOf(shapes::Cube(1.0f)).Write(folder / "a.stl", format), Error);
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    }
    EXPECT_THROW(PartOf(shapes::Cube(1.0f)).Write(folder / "no" / "such.stl"), Error);
}

#if !defined(_WIN32)

// The writers of the classes do not look at write errors: a file cut short is no part with fewer facets.
TEST(WritePart, AFullDiskIsAnErrorInEveryFormatAndLeavesTheOldFile) {
    TestFolder const folder;
    Part const part = PartOf(shapes::IcoSphere(10.0, 4));
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto const handler = signal(SIGXFSZ, SIG_IGN);
    for (MeshFormat const format :
         {MeshFormat::kBinaryStl, MeshFormat::kPlainCsm, MeshFormat::kStripCsm, MeshFormat::kRingCsm}) {
        for (bool const floats : {false, true}) {
            SCOPED_TRACE(NameOf(format));
            MeshWriteSettings settings;
            settings.format = format;
            settings.floats = floats;
            folder.Write("a", "old");
            part.Write(folder / "whole", settings);
            auto const size = std::filesystem::file_size(folder / "whole");
            std::filesystem::remove(folder / "whole");
            for (auto const room : {size - 1, size / 2, decltype(size){100}}) {
                struct rlimit small = before;
                small.rlim_cur = room;
                ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
                try {
                    part.Write(folder / "a", settings);
                    ADD_FAILURE() << room << " of " << size << " bytes";
                } catch (Error const& error) {
                    EXPECT_EQ(error.Kind(), ErrorKind::kFile);
                    EXPECT_EQ(error.File(), folder / "a") << error.what();
                }
                setrlimit(RLIMIT_FSIZE, &before);
                EXPECT_EQ(ReadBytes(folder / "a"), "old");
                EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
            }
            if (!std::filesystem::exists("/dev/full")) continue;
            EXPECT_THROW(part.Write("/dev/full", settings), Error);
        }
    }
    signal(SIGXFSZ, handler);
}

#endif

TEST(TransformPart, MovesAndMirrorsAndKeepsTheOutsideOutside) {
    Part part = PartOf(shapes::Cube(10.0f));
    Part const before = part;
    Placement placement;
    placement.rows = {{{-2, 0, 0, 5}, {0, 1, 0, 0}, {0, 0, 1, -3}}};
    part.Transform(placement);
    EXPECT_NEAR(part.Measures().volume, 2000.0, 1e-9);
    EXPECT_EQ(part.Measures().box.min, (Point3{-15, 0, -3}));
    EXPECT_EQ(part.Measures().box.max, (Point3{5, 10, 7}));
    EXPECT_NEAR(before.Measures().volume, 1000.0, 1e-9);
    placement.rows[0] = {0, 0, 0, 0};
    EXPECT_THROW(part.Transform(placement), Error);
    placement.rows[0] = {std::nan(""), 0, 0, 0};
    EXPECT_THROW(part.Transform(placement), Error);
    placement.rows[0] = {1, 0, 0, 1e11};
    EXPECT_THROW(part.Transform(placement), Error);
    EXPECT_EQ(part.Measures().box.max, (Point3{5, 10, 7}));
}

}  // namespace
}  // namespace varnet
