#include <Varnet64.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "PartChecks.h"
#include "TestFiles.h"
#include "part/MeshReaders.h"

namespace varnet {
namespace {

std::string MessageOf(std::filesystem::path const& path) {
    try {
        Part::Read(path);
    } catch (Error const& error) {
        return error.what();
    }
    return "";
}

bool Holds(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

TEST(ReadPart, BinaryAndAsciiStlGiveTheFacetsInTheirOrder) {
    TestFolder const folder;
    for (shapes::Mesh const& mesh :
         {shapes::Cube(10.0f), shapes::Bracket(), shapes::Moved(shapes::UvSphere(3.0, 9, 12), 1, 2, 3)}) {
        Part const binary = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh, "a header")));
        EXPECT_EQ(FacetsOf(binary), FacetsOf(mesh));
        EXPECT_EQ(binary.Format(), MeshFormat::kBinaryStl);
        EXPECT_EQ(binary.Header(), "a header");
        EXPECT_EQ(binary.Name(), "a");
        for (char const* const end : {"\n", "\r\n", "\r"}) {
            Part const ascii = Part::Read(folder.Write("b.stl", shapes::ToAsciiStl(mesh, "my part", end)));
            ASSERT_EQ(ascii.Triangles().size(), mesh.size());
            EXPECT_EQ(ascii.Format(), MeshFormat::kAsciiStl);
            EXPECT_EQ(ascii.Header(), "my part");
            EXPECT_EQ(ascii.Report().openEdgesExact, 0);
        }
    }
}

TEST(ReadPart, TheNameOfAnAsciiStlLosesBlanksOnBothSides) {
    TestFolder const folder;
    std::string const whole = shapes::ToAsciiStl(shapes::Cube(10.0f));
    std::string const rest = whole.substr(whole.find('\n'));
    auto const header = [&](std::string const& line) {
        return Part::Read(folder.Write("a.stl", line + rest)).Header();
    };
    EXPECT_EQ(header("solid \t my part \t "), "my part");
    EXPECT_EQ(header("solid my part"), "my part");
    EXPECT_EQ(header("solid    "), "");
    EXPECT_EQ(header("solid"), "");
}

// Each end ends a line, whatever ended the one before; CR and LF are one end only where nothing is between.
TEST(ReadPart, AnAsciiStlMayMixItsLineEnds) {
    TestFolder const folder;
    std::string const lines = shapes::ToAsciiStl(shapes::Cube(10.0f), "my part");
    for (std::vector<std::string> const& ends : {std::vector<std::string>{"\r", "\n"},
                                                 {"\n", "\r", "\r\n"},
                                                 {"\r", "\n", "\n", "\r\n"},
                                                 {"\r\n\n", "\r"}}) {
        std::string mixed;
        std::size_t turn = 0;
        for (char const c : lines) mixed += c == '\n' ? ends[turn++ % ends.size()] : std::string(1, c);
        Part const part = Part::Read(folder.Write("a.stl", mixed));
        EXPECT_EQ(part.Triangles().size(), 12u);
        EXPECT_EQ(part.Header(), "my part");
        EXPECT_TRUE(part.Report().notes.empty());
    }
}

TEST(ReadPart, AHeaderEndsAtItsFirstZeroAndLosesBlanksAndLineEndsBehind) {
    TestFolder const folder;
    shapes::Mesh const mesh = shapes::Cube(10.0f);
    auto const header = [&](std::string const& text) {
        std::string bytes = shapes::ToBinaryStl(mesh);
        std::copy(text.begin(), text.end(), bytes.begin());
        return Part::Read(folder.Write("a.stl", bytes)).Header();
    };
    EXPECT_EQ(header(std::string("  a header \n \n\0b", 17)), "  a header");
    EXPECT_EQ(header(std::string("a\t\0", 3)), "a\t");
    EXPECT_EQ(header(std::string(" \n\n \0", 5)), "");
    EXPECT_EQ(header(std::string(80, 'x')), std::string(80, 'x'));
    std::string full(79, 'x');
    full.push_back('\n');
    EXPECT_EQ(header(full), std::string(79, 'x'));
}

TEST(ReadPart, CornersAreJoinedWhereTheyAreEqualAndMinusZeroIsZero) {
    Soup soup;
    soup.points = {{0.0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {-0.0, 0, -0.0}, {0, 1, 0}, {1e-300, 0, 0}};
    soup.triangles = {{0, 1, 2}, {3, 4, 1}, {5, 4, 1}};
    IntakeSettings settings;
    settings.heal = false;
    Part const part(soup.points, soup.triangles, settings);
    EXPECT_EQ(part.Points().size(), 4u);
    EXPECT_EQ(part.Triangles()[0], (Triangle{0, 1, 2}));
    EXPECT_EQ(part.Triangles()[1], (Triangle{0, 2, 1}));
    EXPECT_EQ(part.Triangles()[2], (Triangle{3, 2, 1}));
}

TEST(ReadPart, AnIndexThatNoPointHasIsNamed) {
    std::vector<Point3> const points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (std::int32_t const bad : {-1, 3, 2147483647}) {
        std::vector<Triangle> const triangles = {{0, 1, 2}, {0, 1, bad}};
        try {
            Part const part(points, triangles);
            ADD_FAILURE();
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
            EXPECT_TRUE(Holds(error.what(), "triangle 1")) << error.what();
        }
    }
}

TEST(ReadPart, ArraysWithoutTrianglesGiveAnEmptyPart) {
    Part const part = Part(std::span<Point3 const>(), std::span<Triangle const>());
    EXPECT_TRUE(part.Triangles().empty());
    EXPECT_TRUE(part.Bodies().empty());
    EXPECT_TRUE(Part().Bodies().empty());
    EXPECT_TRUE(Part().Measures().box.IsEmpty());
}

TEST(ReadPart, FacetsThatAreNoneAreLeftOutAndCounted) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinite = std::numeric_limits<float>::infinity();
    mesh.push_back({shapes::Corner{nan, 0, 0}, shapes::Corner{1, 0, 0}, shapes::Corner{0, 1, 0}});
    mesh.push_back({shapes::Corner{0, 0, 0}, shapes::Corner{1, -infinite, 0}, shapes::Corner{0, 1, 0}});
    mesh.push_back({shapes::Corner{0, 0, 0}, shapes::Corner{1, 0, 0}, shapes::Corner{0, 1, 2e10f}});
    mesh.push_back({shapes::Corner{0, 0, 0}, shapes::Corner{1, 0, 0}, shapes::Corner{-0.0f, 0, 0}});
    TestFolder const folder;
    Part const part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh)));
    EXPECT_EQ(part.Report().facetsInFile, 16);
    EXPECT_EQ(part.Report().facetsRead, 16);
    EXPECT_EQ(part.Report().notFinite, 3);
    EXPECT_EQ(part.Report().degenerate, 1);
    EXPECT_EQ(FacetsOf(part), FacetsOf(shapes::Cube(10.0f)));
}

TEST(ReadPart, FilesThatAreNoModelSaySo) {
    TestFolder const folder;
    auto const message = [&](std::string const& bytes) { return MessageOf(folder.Write("x.stl", bytes)); };
    EXPECT_TRUE(Holds(message("<!DOCTYPE html>\n<html><body>Not found</body></html>\n"), "HTML"));
    EXPECT_TRUE(Holds(message("version https://git-lfs.github.com/v1\noid sha256:12\nsize 12\n"), "Git LFS"));
    std::string wide = "\xFF\xFE";
    for (char const c : shapes::ToAsciiStl(shapes::Cube(1.0f))) wide += {c, '\0'};
    EXPECT_TRUE(Holds(message(wide), "UTF-16"));
    EXPECT_TRUE(Holds(message(wide.substr(2)), "UTF-16"));
    EXPECT_TRUE(Holds(message("404: Not Found"), "no ASCII STL"));
    std::string line = shapes::ToAsciiStl(shapes::Cube(1.0f));
    std::replace(line.begin(), line.end(), '\n', ' ');
    EXPECT_TRUE(Holds(message(line), "one line"));
    EXPECT_TRUE(Holds(message(""), "empty"));
    EXPECT_TRUE(Holds(message("solid nothing\nendsolid nothing\n"), "no facets"));
    EXPECT_TRUE(Holds(message(shapes::ToBinaryStl({})), "no facets"));
    // Facets without area: two corners in one place, or all three on a line.
    shapes::Corner const a{0, 0, 0}, b{1, 0, 0}, c{2, 0, 0};
    EXPECT_TRUE(Holds(message(shapes::ToBinaryStl({{a, b, b}})), "none of its facets can be used"));
    EXPECT_TRUE(Holds(message(shapes::ToBinaryStl({{a, b, c}})), "none of its facets can be used"));
    EXPECT_TRUE(
        Holds(message(shapes::ToBinaryStl({{a, b, c}, {c, b, a}})), "none of its facets can be used"));
    std::string const cube = shapes::ToBinaryStl(shapes::Cube(1.0f));
    EXPECT_TRUE(Holds(message(cube.substr(0, cube.size() - 1)), "announces 12 facets, and holds 11"));
    EXPECT_TRUE(Holds(message(cube + cube.substr(0, cube.size() - 1)), "announces 12 facets"));
    EXPECT_TRUE(Holds(message("$$HEADERSTART\n$$ASCII\n$$HEADEREND\n"), "slices"));
    EXPECT_EQ(MessageOf(folder / "none.stl"), (folder / "none.stl").string() + ": no such file");
    EXPECT_TRUE(Holds(MessageOf(folder.Path()), "folder"));
}

// Up to 83 bytes no number of facets is there; from 84 on there is one, and none of them.
TEST(ReadPart, ABrokenFileOfAHeadersSizeSaysWhatItLacks) {
    TestFolder const folder;
    auto const message = [&](std::size_t size, std::string const& count) {
        std::string bytes(size, '\x01');
        bytes.replace(std::min<std::size_t>(80, size), count.size(), count);
        bytes.resize(size);
        return MessageOf(folder.Write("x.stl", bytes));
    };
    std::string const three("\x03\0\0\0", 4);
    for (std::size_t const size : {1u, 50u, 79u, 80u, 81u, 83u})
        EXPECT_TRUE(Holds(message(size, ""), "too short for a model")) << size;
    for (std::size_t const size : {84u, 85u, 133u})
        EXPECT_TRUE(Holds(message(size, three), "announces 3 facets, and holds 0: it is cut short")) << size;
    EXPECT_TRUE(Holds(message(134, three), "announces 3 facets, and holds 1: it is cut short"));
    EXPECT_TRUE(Holds(message(84, std::string(4, '\0')), "holds no facets"));
    EXPECT_TRUE(Holds(message(133, std::string(4, '\0')), "holds no facets"));
    EXPECT_TRUE(Holds(message(134, std::string(4, '\0')), "announces 0 facets, and is long enough for 1"));
    EXPECT_TRUE(Holds(message(284, three), "announces 3 facets, and is long enough for 4"));
}

TEST(ReadPart, ABinaryFileWhoseSizeAgreesIsBinaryWhateverItsBytes) {
    TestFolder const folder;
    for (char const* const header :
         {"solid a\nfacet normal 0 0 1\n outer loop\n vertex 0 0 0\n", "<html>", "CSM3.0", "PK\x03\x04"}) {
        Part const part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(shapes::Cube(5.0f), header)));
        EXPECT_EQ(part.Format(), MeshFormat::kBinaryStl);
        EXPECT_EQ(part.Triangles().size(), 12u);
    }
}

TEST(ReadPart, StrayBytesBehindTheLastFacetAreNoted) {
    TestFolder const folder;
    Part const part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(shapes::Cube(5.0f)) + "abc"));
    EXPECT_EQ(part.Triangles().size(), 12u);
    ASSERT_EQ(part.Report().notes.size(), 1u);
    EXPECT_TRUE(Holds(part.Report().notes[0], "3 bytes"));
}

TEST(ReadPart, EveryCutOfABinaryFileIsRefused) {
    TestFolder const folder;
    std::string const bytes = shapes::ToBinaryStl(shapes::Cube(5.0f));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_THROW(Part::Read(folder.Write("a.stl", bytes.substr(0, size))), Error) << size;
    }
}

TEST(ReadPart, EveryCutOfATextGivesItsWholeFacetsOrIsRefused) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Moved(shapes::Cube(5.5f), 0.25f, 0.125f, 0.0f);
    mesh.resize(3);
    std::string const bytes = shapes::ToAsciiStl(mesh);
    std::vector<Corners> const facets = FacetsOf(mesh);
    IntakeSettings settings;
    settings.heal = false;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        try {
            Part const part = Part::Read(folder.Write("a.stl", bytes.substr(0, size)), settings);
            std::vector<Corners> const read = FacetsOf(part);
            ASSERT_LE(read.size(), facets.size());
            EXPECT_TRUE(std::equal(read.begin(), read.end(), facets.begin())) << size;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kContent);
        }
    }
}

TEST(ReadPart, BytesThatAreBrokenGiveAPartOrAnError) {
    TestFolder const folder;
    std::mt19937 random(11);
    std::vector<std::string> seeds = {shapes::ToBinaryStl(shapes::CubesAtFace()),
                                      shapes::ToAsciiStl(shapes::Cube(3.0f))};
    for (MeshFormat const format : {MeshFormat::kPlainCsm, MeshFormat::kStripCsm, MeshFormat::kRingCsm}) {
        PartOf(shapes::Cube(3.0f)).Write(folder / "seed", format);
        seeds.push_back(ReadBytes(folder / "seed"));
    }
    for (int round = 0; round < 1500; ++round) {
        std::string bytes = seeds[random() % seeds.size()];
        for (auto n = random() % 4; n > 0; --n) bytes[random() % bytes.size()] = static_cast<char>(random());
        if (random() % 4 == 0) bytes.resize(random() % bytes.size());
        try {
            Part part = Part::Read(folder.Write("a", bytes));
            EXPECT_EQ(part.Report().openEdges, OpenEdgesOf(FacetsOf(part)));
            RepairSettings settings;
            settings.fillHoles = 1e9;
            std::int64_t const before = part.Report().openEdgesExact;
            EXPECT_LE(part.Repair(settings).openEdgesAfter, before);
            EXPECT_GT(part.Bodies().size(), 0u);
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kContent) << error.what();
        }
    }
}

TEST(ReadPart, TextIsReadByItsWords) {
    TestFolder const folder;
    std::string const text =
        "  SOLID vertex facet m\xC3\xBCll\n\n# a comment, vertex 1 2 3\n\tFacet Normal 0 0 1\r\n  OUTER "
        "LOOP\n"
        "    Vertex 0 0 0\n\n    vertex +1.0E+0 0 -0\n    vertex 0 10e-1 0\n  endloop\nendFacet\nendsolid "
        "vertex\n"
        "; facet vertex 1 1 1\nsolid b\nfacet normal nan nan nan\nouter loop vertex 0 0 1 vertex 1 0 1\n"
        "vertex 0 1 1e-400\nendloop\nendfacet\nendsolid\n";
    Part const part = Part::Read(folder.Write("a.stl", text));
    ASSERT_EQ(part.Triangles().size(), 2u);
    EXPECT_EQ(part.Header(), "vertex facet m\xC3\xBCll");
    EXPECT_EQ(part.Report().facetsInFile, 2);
    EXPECT_TRUE(part.Report().notes.empty());
    EXPECT_EQ(part.Points()[1], (Point3{1, 0, 0}));
    EXPECT_EQ(part.Points()[2], (Point3{0, 1, 0}));
}

// Two lines are text enough, however short the second is; blanks and line ends behind the last word are none.
TEST(ReadPart, TextOnOneLineIsRefusedAndOnTwoItIsNot) {
    TestFolder const folder;
    std::string const facet =
        "facet normal 0 0 1 outer loop vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endloop endfacet";
    for (std::string const end : {"\ne", "\re", "\nend", "\r\n\r\ne"})
        EXPECT_EQ(Part::Read(folder.Write("a.stl", facet + end)).Triangles().size(), 1u);
    for (std::string const end : {"", "\n", "\r\n \t\n"})
        EXPECT_TRUE(Holds(MessageOf(folder.Write("a.stl", facet + end)), "on one line"));
}

TEST(ReadPart, FacetsThatTheTextLosesAreCountedAndTheFirstIsNamed) {
    TestFolder const folder;
    std::string const facet =
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";
    std::string const broken =
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 x 0\nvertex 0 1 0\nendloop\nendfacet\n";
    std::string const square =
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 "
        "0\nendloop\nendfacet\n";
    Part const part =
        Part::Read(folder.Write("a.stl", "solid a\n" + facet + broken + facet + square + "endsolid a\n"));
    EXPECT_EQ(part.Report().facetsRead, 2);
    // 13 words vertex: four facets and a corner.
    EXPECT_EQ(part.Report().facetsInFile, 5);
    ASSERT_EQ(part.Report().notes.size(), 1u);
    EXPECT_EQ(part.Report().notes[0], "3 facets of 5 could not be read, the first in line 9");
}

TEST(ReadPart, ScaleIsTakenAsSettingsSay) {
    IntakeSettings settings;
    settings.scale = 25.4;
    EXPECT_NEAR(PartOf(shapes::Cube(1.0f), settings).Measures().volume, 25.4 * 25.4 * 25.4, 1e-9);
    for (double const bad : {0.0, -1.0, std::nan(""), HUGE_VAL}) {
        settings.scale = bad;
        EXPECT_THROW(PartOf(shapes::Cube(1.0f), settings), Error);
    }
}

TEST(ReadPart, ProgressNeverFallsAndStopsTheRead) {
    IntakeSettings settings;
    double last = 0.0;
    int calls = 0;
    settings.progress = [&](double share) {
        EXPECT_GE(share, last);
        EXPECT_LE(share, 1.0);
        last = share;
        ++calls;
        return true;
    };
    TestFolder const folder;
    auto const path = folder.Write("a.stl", shapes::ToBinaryStl(shapes::IcoSphere(10.0, 7)));
    Part::Read(path, settings);
    EXPECT_EQ(last, 1.0);
    for (int stop = 1; stop <= calls; ++stop) {
        int left = stop;
        settings.progress = [&](double) { return --left > 0; };
        try {
            Part::Read(path, settings);
            ADD_FAILURE();
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
        }
    }
}

TEST(ReadPart, ProgressEndsAtOneWhereTheMeshIsHealed) {
    shapes::Mesh mesh = shapes::Cube(1.0f);
    mesh.push_back({{{0, 0, 5}, {1, 0, 5}, {2, 0, 5}}});
    IntakeSettings settings;
    std::vector<double> shares;
    settings.progress = [&shares](double share) {
        shares.push_back(share);
        return true;
    };
    TestFolder const folder;
    Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh)), settings);
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1.0);
}

// A block of a text is a megabyte: a longer line is read whole all the same.
TEST(ReadPart, ALineOfThreeMegabytesIsReadWhole) {
    TestFolder const folder;
    std::string const blanks(std::size_t{3} << 20, ' ');
    std::string const text = "solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0" + blanks +
                             "0\nvertex 0 1 0\nendloop\nendfacet\nfacet normal 0 0 1\nouter loop\n" +
                             "vertex 5 0 0\nvertex 6 0 0\nvertex 5 1 0\nendloop\nendfacet\nendsolid\n";
    Part const part = Part::Read(folder.Write("a.stl", text));
    ASSERT_EQ(part.Triangles().size(), 2u);
    EXPECT_EQ(part.Points()[1], (Point3{1, 0, 0}));
    EXPECT_EQ(part.Points()[4], (Point3{6, 0, 0}));
}

// Of three vertices the last one is number 2.
TEST(ReadPart, APlainCsmThatNamesTheVertexBehindTheLastIsRefusedWithItsPlace) {
    TestFolder const folder;
    for (std::uint32_t const last : {2u, 3u}) {
        std::string bytes = "Quarnell Ziped Model";
        bytes.resize(80, '\0');
        auto const add = [&bytes](auto value) {
            char raw[sizeof value];
            std::memcpy(raw, &value, sizeof value);
            bytes.append(raw, sizeof value);
        };
        add(std::uint32_t{3});
        for (float const f : {0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f}) add(f);
        add(std::uint32_t{1});
        for (std::uint32_t const n : {0u, 1u, last}) add(n);
        std::filesystem::path const file = folder.Write("a.csm", bytes);
        if (last == 2) {
            EXPECT_EQ(Part::Read(file).Triangles().size(), 1u);
            continue;
        }
        try {
            Part::Read(file);
            ADD_FAILURE() << "read";
        } catch (Error const& error) {
            EXPECT_EQ(error.what(), file.string() + ", byte 132: a facet names a vertex that there is not");
        }
    }
}

// Its corners may stand without a line that begins it: the line of the first one tells where it is.
TEST(ReadPart, AFacetThatIsLostIsToldByTheLineOfItsFirstCorner) {
    TestFolder const folder;
    std::string const text =
        "solid a\n\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex x 0 0\nendloop\nendfacet\n"
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
        "endsolid\n";
    // An empty line counts, whatever ends it.
    for (std::string const end : {"\n", "\r", "\r\n"}) {
        std::string lines;
        for (char const c : text) lines += c == '\n' ? end : std::string(1, c);
        Part const part = Part::Read(folder.Write("a.stl", lines));
        EXPECT_EQ(part.Triangles().size(), 1u);
        auto const& notes = part.Report().notes;
        EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [](std::string const& note) {
            return note.ends_with(", the first in line 4");
        })) << (notes.empty() ? "no notes" : notes[0]);
    }
}

TEST(ReadPart, ACoordinateWithAnythingBehindItIsNone) {
    TestFolder const folder;
    std::string const good =
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";
    for (std::string const wrong : {"1x", "1.5.2", "1,5", "--1", "+", "0x1", "."}) {
        std::string bad = good;
        bad.replace(bad.find("vertex 1 "), 8, "vertex " + wrong);
        Part const part = Part::Read(folder.Write("a.stl", "solid a\n" + good + bad + good + "endsolid a\n"));
        EXPECT_EQ(part.Report().facetsRead, 2) << wrong;
    }
    for (std::string const right : {"1.0", "+1", "1.", "10e-1", "1E0", ".1e1"}) {
        std::string other = good;
        other.replace(other.find("vertex 1 "), 8, "vertex " + right);
        Part const part = Part::Read(folder.Write("a.stl", "solid a\n" + other + "endsolid a\n"));
        EXPECT_EQ(FacetsOf(part), (std::vector<Corners>{{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}})) << right;
    }
}

TEST(SplitPart, EachPieceCountsItsOwnOpenEdges) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Without(shapes::Cube(1.0f), 0, 1);
    shapes::Append(mesh, shapes::Moved(shapes::Without(shapes::Cube(2.0f), 0, 2), 9, 0, 0));
    shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 20, 0, 0));
    // A body and its cavity are one piece: four open edges of the one, three of the other.
    shapes::Append(mesh, shapes::Moved(shapes::Without(shapes::Cube(9.0f), 0, 2), 40, 0, 0));
    shapes::Append(mesh,
                   shapes::Moved(shapes::Without(shapes::InsideOut(shapes::Cube(1.0f)), 3, 1), 44, 4, 4));
    std::vector<Part> const pieces = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh))).Split();
    ASSERT_EQ(pieces.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        std::int64_t const open = std::array{3, 4, 0, 7}[i];
        EXPECT_EQ(pieces[i].Report().openEdges, open);
        EXPECT_EQ(pieces[i].Report().openEdgesExact, open);
        EXPECT_EQ(pieces[i].Measures().openEdges, open);
    }
}

TEST(MovedPart, KeepsWhatWasReportedWhenItWasRead) {
    TestFolder const folder;
    shapes::Mesh const mesh = shapes::Without(shapes::Cube(1.0f), 0, 1);
    Part part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh, "a header")));
    part.Transform({{{{2, 0, 0, 1}, {0, 1, 0, 0}, {0, 0, 1, 0}}}});
    EXPECT_EQ(part.Report().facetsInFile, 11);
    EXPECT_EQ(part.Report().facetsRead, 11);
    EXPECT_EQ(part.Report().openEdges, 3);
    EXPECT_EQ(part.Measures().openEdges, 3);
    EXPECT_EQ(part.Header(), "a header");
    EXPECT_EQ(part.Format(), MeshFormat::kBinaryStl);
    EXPECT_EQ(part.Name(), "a");
}

TEST(RepairedPart, KeepsWhatItWasReadFrom) {
    TestFolder const folder;
    for (bool const isTurned : {false, true}) {
        shapes::Mesh mesh = shapes::Cube(1.0f);
        if (isTurned) std::swap(mesh[5][1], mesh[5][2]);
        mesh.push_back({{{5, 5, 5}, {5, 5, 5}, {6, 6, 6}}});
        std::string bytes = shapes::ToAsciiStl(mesh);
        bytes.replace(0, bytes.find('\n'), "solid one of them");
        Part part = Part::Read(folder.Write("one.stl", bytes));
        EXPECT_EQ(part.Repair().turned, isTurned ? 1 : 0);
        EXPECT_EQ(part.Name(), "one");
        EXPECT_EQ(part.Header(), "one of them");
        EXPECT_EQ(part.Format(), MeshFormat::kAsciiStl);
        EXPECT_EQ(part.Report().facetsInFile, 13);
        EXPECT_EQ(part.Report().degenerate, 1);
        EXPECT_EQ(part.Triangles().size(), 12u);
        EXPECT_EQ(part.Measures().openEdges, 0);
        EXPECT_NEAR(part.Measures().volume, 1.0, 1e-12);
        // What is whole is repaired by doing nothing.
        RepairReport const again = part.Repair();
        EXPECT_EQ(again.turned + again.openEdgesBefore + again.openEdgesAfter, 0);
    }
}

TEST(SplitPart, PiecesHaveTheNameHeaderAndFormatOfTheFile) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(1.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(2.0f), 9, 0, 0));
    std::string bytes = shapes::ToAsciiStl(mesh);
    bytes.replace(0, bytes.find('\n'), "solid two of them");
    std::vector<Part> const pieces = Part::Read(folder.Write("two.stl", bytes)).Split();
    ASSERT_EQ(pieces.size(), 2u);
    for (Part const& piece : pieces) {
        EXPECT_EQ(piece.Name(), "two");
        EXPECT_EQ(piece.Header(), "two of them");
        EXPECT_EQ(piece.Format(), MeshFormat::kAsciiStl);
        EXPECT_EQ(piece.Report().facetsInFile, 12);
        EXPECT_EQ(piece.Report().facetsRead, 12);
        EXPECT_EQ(piece.Report().openEdges, 0);
        EXPECT_EQ(piece.Measures().openEdges, 0);
    }
    EXPECT_NEAR(pieces[0].Measures().volume, 1.0, 1e-9);
    EXPECT_NEAR(pieces[1].Measures().volume, 8.0, 1e-9);
}

TEST(ReadPart, NumbersOfAsciiStlBeyondTheRangeAreNoneAndBelowItAreZero) {
    TestFolder const folder;
    std::string const text =
        "solid a\nfacet normal 0 0 1\nouter loop\nvertex 1e999 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\n"
        "endfacet\nfacet normal 0 0 1\nouter loop\nvertex 1e-999 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\n"
        "endfacet\nendsolid\n";
    Part const part = Part::Read(folder.Write("a.stl", text));
    EXPECT_EQ(part.Report().facetsRead, 2);
    EXPECT_EQ(part.Report().notFinite, 1);
    ASSERT_EQ(part.Triangles().size(), 1u);
    EXPECT_EQ(part.Points()[0], (Point3{0, 0, 0}));
}

TEST(ReadPart, ARingStreamTellsHowManyFacetsItHas) {
    TestFolder const folder;
    PartOf(shapes::Cube(2.0f)).Write(folder / "a.csm", MeshFormat::kRingCsm);
    IntakeReport const report = Part::Read(folder / "a.csm").Report();
    EXPECT_EQ(report.facetsInFile, 12);
    EXPECT_EQ(report.facetsRead, 12);
}

TEST(ReadPart, FacetsOfTheFileAreCountedInEachFormat) {
    TestFolder const folder;
    for (MeshFormat const format :
         {MeshFormat::kBinaryStl, MeshFormat::kPlainCsm, MeshFormat::kStripCsm, MeshFormat::kRingCsm}) {
        PartOf(shapes::Cube(2.0f)).Write(folder / "a.out", format);
        Part const part = Part::Read(folder / "a.out");
        EXPECT_EQ(part.Format(), format);
        EXPECT_EQ(part.Report().facetsInFile, 12);
        EXPECT_EQ(part.Report().facetsRead, 12);
    }
}

// Three vertices, and no facet behind them.
TEST(ReadPart, APlainCsmOfNoFacetsIsWholeAndHoldsNone) {
    TestFolder const folder;
    std::string bytes = "Quarnell Ziped Model";
    bytes.resize(80, '\0');
    bytes += std::string("\x03\0\0\0", 4) + std::string(36 + 4, '\0');
    auto const says = [&](std::string const& content) {
        std::filesystem::path const file = folder.Write("a.csm", content);
        try {
            Part::Read(file);
            return std::string("read");
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kContent);
            return std::string(error.what()).substr(file.string().size());
        }
    };
    EXPECT_EQ(says(bytes), ": holds no facets");
    EXPECT_EQ(says(bytes.substr(0, 123)), ": ends inside its vertices");
    EXPECT_EQ(says(bytes.substr(0, 84)), ": ends inside its vertices");
    EXPECT_EQ(says(bytes.substr(0, 83)), ": ends inside its header");
    std::string one = bytes;
    one[120] = 1;
    EXPECT_EQ(says(one), ": ends inside its facets");
    EXPECT_EQ(says(one + std::string(11, '\0')), ": ends inside its facets");
}

TEST(ReadPart, ABinaryFileThatBecomesShorterMeanwhileIsRefused) {
    TestFolder const folder;
    IntakeSettings const settings;
    IntakeReport report;
    for (std::uintmax_t const size : {684u, 683u, 84u}) {
        PartOf(shapes::Cube(2.0f)).Write(folder / "a.stl");
        InputFile file(folder / "a.stl");
        std::filesystem::resize_file(folder / "a.stl", size);
        Reading reading{file, settings, report, Pace::None()};
        if (size == 684) {
            EXPECT_EQ(ReadBinaryStl(reading, 80).mesh.triangles.size(), 12u);
            continue;
        }
        // Its size is what it was when it was opened.
        EXPECT_THROW(ReadBinaryStl(reading, 80), Error);
    }
}

TEST(ReadPart, AFacetOfTheTextThatIsNotEndedIsLostWhereTheNextOneBegins) {
    TestFolder const folder;
    std::string const begin = "facet normal 0 0 1\n";
    std::string const two = "vertex 0 0 0\nvertex 1 0 0\n";
    std::string const three = two + "vertex 0 1 0\n";
    std::string const end = "endfacet\n";
    auto const notes = [&](std::string const& text, std::int64_t facets) {
        Part const part = Part::Read(folder.Write("a.stl", "solid a\n" + text + "endsolid a\n"));
        EXPECT_EQ(part.Report().facetsRead, facets);
        return part.Report().notes.empty() ? "" : part.Report().notes[0];
    };
    EXPECT_EQ(notes(begin + two + begin + three + end, 1),
              "1 facet of 2 could not be read, the first in line 2");
    EXPECT_EQ(notes(begin + three + begin + three + end, 1),
              "1 facet of 2 could not be read, the first in line 2");
    // One without corners is none.
    EXPECT_EQ(notes(begin + begin + three + end + begin + end, 1), "");
    EXPECT_EQ(notes(begin + begin + two + end + begin + three + end, 1),
              "1 facet of 2 could not be read, the first in line 3");
    // The first that is lost is named, and not one before it that is none.
    EXPECT_EQ(notes(begin + end + begin + two + end + begin + three + end, 1),
              "1 facet of 2 could not be read, the first in line 4");
    // The last one, by its second corner or by its first.
    EXPECT_EQ(notes(begin + three + end + begin + two, 1),
              "1 facet of 2 could not be read, the first in line 7");
    EXPECT_EQ(notes(begin + three + end + begin + "vertex x 0 0\n", 1),
              "1 facet of 2 could not be read, the first in line 7");
    // Four corners at places that are told from each other, and at none.
    for (std::string const fourth : {"vertex 1 1 0\n", "vertex 0 0 0\n", "vertex 1e-300 1e300 7\n"}) {
        EXPECT_EQ(notes(begin + three + end + begin + three + fourth + end + begin + two + end, 1),
                  "2 facets of 3 could not be read, the first in line 7");
    }
}

// All is done when 1 is told, and not before.
TEST(ReadPart, OneIsToldAtTheEndAlone) {
    shapes::Mesh mesh = shapes::WithNearCorners(shapes::Cube(10.0f), 5, 0.0005f);
    mesh.push_back({{{0, 0, 5}, {1, 0, 5}, {2, 0, 5}}});
    TestFolder const folder;
    for (bool const fromFile : {true, false}) {
        IntakeSettings settings;
        double last = 0.0;
        settings.progress = [&last](double share) {
            EXPECT_GE(share, last);
            EXPECT_LT(last, 1.0);
            EXPECT_LE(share, 1.0);
            last = share;
            return true;
        };
        for (bool const byHand : {false, true}) {
            if (byHand) settings.weld = 0.001;
            last = 0.0;
            if (fromFile) {
                Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh)), settings);
            } else {
                PartOf(mesh, settings);
            }
            EXPECT_EQ(last, 1.0);
        }
    }
}

}  // namespace
}  // namespace varnet
