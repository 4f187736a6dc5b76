// What a file is taken for, by its first bytes and its size.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "TestFiles.h"
#include "part/MeshReaders.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

struct Taken {
    std::optional<MeshFormat> format;
    std::string message;
};
Taken Look(std::string const& bytes, std::string const& name = "a.stl") {
    TestFolder const folder;
    InputFile file(folder.Write(name, bytes));
    try {
        return {Recognise(file), ""};
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kContent);
        return {std::nullopt, error.what()};
    }
}

// Bytes that are no text, with a number of facets behind a header.
std::string Binary(std::size_t size, std::size_t header, unsigned count) {
    std::string bytes(size, '\x01');
    for (std::size_t i = 0; i < 4 && header + i < size; ++i)
        bytes[header + i] = static_cast<char>(count >> (8 * i) & 0xFF);
    return bytes;
}

void ExpectSays(std::string const& bytes, std::string const& words, std::string const& name = "a.stl") {
    Taken const taken = Look(bytes, name);
    EXPECT_FALSE(taken.format.has_value()) << words;
    EXPECT_NE(taken.message.find(words), std::string::npos) << taken.message;
}

TEST(Recognise, BinaryStlMayHaveUpTo49StrayBytes) {
    for (std::size_t stray = 0; stray < 50; ++stray) {
        for (unsigned const facets : {1u, 2u}) {
            EXPECT_EQ(Look(Binary(84 + facets * 50 + stray, 80, facets)).format, MeshFormat::kBinaryStl)
                << stray;
        }
    }
    ExpectSays(Binary(84 + 2 * 50 + 50, 80, 2), "announces 2 facets, and is long enough for 3");
    ExpectSays(Binary(84 + 2 * 50 - 1, 80, 2), "announces 2 facets, and holds 1: it is cut short");
    ExpectSays(Binary(84 + 2 * 50, 80, 0xFFFFFFFFu), "announces 4294967295 facets, and holds 2");
}

// Behind the last one there may be as few stray bytes as behind a single one.
TEST(Recognise, BinaryStlMayBeSeveralModelsOneBehindTheOther) {
    auto const model = [](unsigned facets) { return Binary(84 + std::size_t{50} * facets, 80, facets); };
    for (std::size_t stray = 0; stray < 50; ++stray) {
        std::string const end(stray, '\x01');
        EXPECT_EQ(Look(model(1) + model(1) + end).format, MeshFormat::kBinaryStl) << stray;
        EXPECT_EQ(Look(model(3) + model(2) + model(7) + end).format, MeshFormat::kBinaryStl) << stray;
    }
    ExpectSays(model(3) + model(2) + std::string(50, '\x01'), "announces 3 facets, and is long enough for 7");
    ExpectSays(model(3) + model(2) + model(0), "announces 3 facets, and is long enough for 8");
    ExpectSays(model(3) + Binary(84 + 99, 80, 2), "announces 3 facets, and is long enough for 6");
    // What follows a file of another kind makes it no model.
    ExpectSays(model(0) + model(2), "announces 0 facets, and is long enough for 3");
}

TEST(Recognise, WithoutAnnouncedFacetsThereAreNoneOrTooManyBytes) {
    ExpectSays(Binary(84, 80, 0), "holds no facets");
    ExpectSays(Binary(84 + 49, 80, 0), "holds no facets");
    ExpectSays(Binary(84 + 50, 80, 0), "announces 0 facets, and is long enough for 1");
    ExpectSays(Binary(83, 80, 0), "is too short for a model");
    ExpectSays("", "is empty");
}

TEST(Recognise, AHeaderOf256BytesIsKnownByItsSizeToTheByte) {
    EXPECT_EQ(Look(Binary(260 + 3 * 50, 256, 3)).format, MeshFormat::kOltp);
    EXPECT_NE(Look(Binary(260 + 3 * 50 + 1, 256, 3)).format, MeshFormat::kOltp);
    EXPECT_NE(Look(Binary(260 + 3 * 50 - 1, 256, 3)).format, MeshFormat::kOltp);
    EXPECT_NE(Look(Binary(260, 256, 0)).format, MeshFormat::kOltp);
}

std::string WithTag(std::string const& tag, std::size_t at, std::size_t size = 200) {
    std::string bytes(size, '\x02');
    std::copy(tag.begin(), tag.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    return bytes;
}

TEST(Recognise, TagsOfCsmStandInTheFirst80BytesBeforeAnyZero) {
    for (char const* const tag : {"CSM3.0", "CSM4.0", "CSM5.0"}) {
        EXPECT_EQ(Look(WithTag(tag, 0)).format, MeshFormat::kStripCsm);
        EXPECT_EQ(Look(WithTag(tag, 74)).format, MeshFormat::kStripCsm);
        EXPECT_NE(Look(WithTag(tag, 75)).format, MeshFormat::kStripCsm);
        std::string cut = WithTag(tag, 10);
        cut[9] = '\0';
        EXPECT_NE(Look(cut).format, MeshFormat::kStripCsm);
    }
    EXPECT_EQ(Look(WithTag("CSM2.0", 74)).format, MeshFormat::kRingCsm);
    EXPECT_NE(Look(WithTag("CSM1.0", 0)).format, MeshFormat::kStripCsm);
    std::string plain = std::string("Quarnell Ziped Model") + '\0';
    EXPECT_EQ(Look(plain + std::string(100, '\x02')).format, MeshFormat::kPlainCsm);
    EXPECT_NE(Look("x" + plain + std::string(100, '\x02')).format, MeshFormat::kPlainCsm);
}

TEST(Recognise, ABinaryStlWhoseSizeAgreesMayNameStripsInItsHeader) {
    auto const stlWith = [](std::string const& header) {
        std::string bytes = Binary(84 + 50, 80, 1);
        std::copy(header.begin(), header.end(), bytes.begin());
        return bytes;
    };
    EXPECT_EQ(Look(stlWith("CSM3.0")).format, MeshFormat::kBinaryStl);
    EXPECT_EQ(Look(stlWith("CSM2.0")).format, MeshFormat::kBinaryStl);
    EXPECT_EQ(Look(stlWith(std::string("Quarnell Ziped Model") + '\0')).format, MeshFormat::kPlainCsm);
    EXPECT_EQ(Look(stlWith("solid facet vertex")).format, MeshFormat::kBinaryStl);
}

TEST(Recognise, TextIsToldByItsWords) {
    EXPECT_EQ(Look("solid a\n facet\n vertex 0 0 0\n").format, MeshFormat::kAsciiStl);
    EXPECT_EQ(Look("SOLID a\nFACET\n").format, MeshFormat::kAsciiStl);
    EXPECT_EQ(Look("facet normal\nvertex\n").format, MeshFormat::kAsciiStl);
    EXPECT_EQ(Look("vertex 1 2 3\nx").format, MeshFormat::kAsciiStl);
    EXPECT_EQ(Look("mesh\nvertices 3\n").format, MeshFormat::kThreeDmf);
    EXPECT_EQ(Look("vertices 3\nfacet\n").format, MeshFormat::kAsciiStl);
    EXPECT_EQ(Look("whatever\n", "a.3dmf").format, MeshFormat::kThreeDmf);
    EXPECT_EQ(Look("whatever\n", "a.3DMF").format, MeshFormat::kThreeDmf);
    ExpectSays("whatever\n", "no ASCII STL");
    ExpectSays("solid a", "holds no facets");
    ExpectSays("solid a facet vertex", "is text on one line");
    ExpectSays("solid a facet vertex \r\n\t ", "is text on one line");
    EXPECT_EQ(Look("solid\tfacet\f\v\rvertex").format, MeshFormat::kAsciiStl);
    // A byte that no text has, behind the words: it is taken for text all the same.
    EXPECT_EQ(Look("  solid a\n vertex 0 0 0 \x01\n" + std::string(100, ' ')).format, MeshFormat::kAsciiStl);
}

TEST(Recognise, OtherKindsAreNamedByTheirFirstBytes) {
    ExpectSays("PK\x03\x04" + std::string(200, '\x01'), "zip archive");
    ExpectSays("<?xml version=\"1.0\"?>\n<model/>\n", "XML");
    ExpectSays("ply\nformat ascii 1.0\n", "PLY");
    ExpectSays("ply\rformat ascii 1.0\r", "PLY");
    ExpectSays("plywood", "no ASCII STL");
    ExpectSays("\xFF\xFE" + std::string(20, 'a'), "UTF-16");
    ExpectSays("\xFE\xFF" + std::string(20, 'a'), "UTF-16");
    std::string wide;
    for (char const c : std::string("solid a ")) wide.append({c, '\0'});
    EXPECT_EQ(wide.size(), 16u);
    ExpectSays(wide, "UTF-16");
    std::string swapped;
    for (char const c : std::string("solid a ")) swapped.append({'\0', c});
    ExpectSays(swapped, "UTF-16");
    ExpectSays(wide.substr(0, 14), "is too short");
    ExpectSays(wide.substr(0, 14) + std::string("\0a", 2), "is too short");
}

TEST(Recognise, APageIsToldByTheFirst1024Bytes) {
    ExpectSays(std::string(1019, 'x') + "<html" + std::string(50, 'x'), "HTML");
    ExpectSays(std::string(1020, 'x') + "<html" + std::string(50, 'x'), "no ASCII STL");
    ExpectSays(std::string(1010, 'x') + "<!DOCTYPE html", "HTML");
    ExpectSays(std::string(1011, 'x') + "<!DOCTYPE html", "no ASCII STL");
}

TEST(Recognise, WordsAreLookedForInTheFirst65536Bytes) {
    std::string const lines = "x\n" + std::string(65529, ' ');
    EXPECT_EQ(Look(lines + "facet\n").format, MeshFormat::kAsciiStl);
    ExpectSays(lines + " facet\n", "no ASCII STL");
    // A line that ends there may go on.
    ExpectSays("solid" + std::string(65530, 'x'), "holds no facets");
    ExpectSays("solid" + std::string(65531, 'x'), "is text on one line");
}

TEST(Recognise, WideTextIsToldByItsFirst64Bytes) {
    std::string wide;
    for (int i = 0; i < 32; ++i) wide.append({'a', '\0'});
    ExpectSays(wide + "aaaaaaaa", "UTF-16");
    ExpectSays(wide.substr(0, 17), "UTF-16");
    std::string odd = wide;
    odd[63] = 'a';
    ExpectSays(odd, "is too short");
    odd = wide;
    odd[0] = '\0';
    ExpectSays(odd, "is too short");
    ExpectSays(wide.substr(1), "UTF-16");
}

TEST(Recognise, ATextHasNoControlsButThoseOfLinesAndBlanks) {
    for (int c = 1; c < 0x21; ++c) {
        std::string const bytes = std::string("a\nfacet ") + static_cast<char>(c) + "\nvertex\n";
        bool const isText = (c >= 9 && c <= 13) || c >= 0x20;
        EXPECT_EQ(Look(bytes).format.has_value(), isText) << c;
        if (!isText) ExpectSays(bytes, "is too short");
    }
}

// Bytes that no text has are among the words: both have to be there, the first of them in front.
TEST(Recognise, WhatIsNoTextIsTakenForOneByTwoWordsAlone) {
    std::string const rest = " \x01\n" + std::string(100, ' ');
    EXPECT_TRUE(Look("solid a\n vertex 0 0 0" + rest).format.has_value());
    EXPECT_TRUE(Look("\xEF\xBB\xBF\r\n\tSOLID a\n VERTEX 0 0 0" + rest).format.has_value());
    for (std::string const words :
         {"solid a\n facet", "a\n vertex 0 0 0", "a solid\n vertex 0 0 0", "soli\n vertex"}) {
        ExpectSays(words + rest, "announces 538976288 facets, and holds");
    }
}

}  // namespace
}  // namespace varnet
