// What the header of a slice file says, where its layers begin and end, and what may stand around them.

#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <fstream>
#include <string>

#include "TestFiles.h"
#include "varnet/SliceFile.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

class SliceHeaderTest : public ::testing::Test {
protected:
    void Put(std::string const& bytes) const { folder.Write("slices.cli", bytes); }
    SliceHeader Header(std::string const& lines) const {
        Put("$$HEADERSTART\n$$BINARY\n" + lines + "\n$$HEADEREND");
        return SliceFile(path).Header();
    }
    std::string ErrorOf(ErrorKind kind = ErrorKind::kContent, SliceReadSettings const& settings = {}) const {
        try {
            SliceFile const file(path, settings);
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), kind);
            return error.what();
        }
        return "";
    }
    bool Says(char const* what) const { return ErrorOf().find(what) != std::string::npos; }

    TestFolder const folder;
    fs::path const path = folder / "slices.cli";
};

std::string const kHead = "$$HEADERSTART\n$$BINARY\n$$HEADEREND";
std::string const kTextHead = "$$HEADERSTART\n$$ASCII\n$$HEADEREND";

// A layer by its short word, at a height.
std::string LayerAt(char height) { return {'\x80', '\0', height, '\0'}; }

TEST_F(SliceHeaderTest, TheRangeIsThatOfOurOwnUserDataAlone) {
    auto const range = [this](std::string const& text) { return Header("$$USERDATA/" + text).range; };
    EXPECT_EQ(range("varnet,8,3:50/200"), (LayerRange{3, 50, 200}));
    EXPECT_EQ(range("varnet,99,1:1/1"), (LayerRange{1, 1, 1}));
    EXPECT_EQ(range("varnet,20,1:2/999999999999999"), (LayerRange{1, 2, 999999999999999}));
    for (char const* const other :
         {"somebd,8,3:50/200", "varnet,8,0:50/200", "varnet,8,3:0/200", "varnet,8,3:50", "varnet,8,3:50/x",
          "varnet,21,1:2/1000000000000000", "varnet,8,-3:50/200"}) {
        EXPECT_FALSE(range(other).has_value()) << other;
    }
}

TEST_F(SliceHeaderTest, NumbersAreTakenUpToTheirLimits) {
    EXPECT_EQ(Header("$$VERSION/201").version, 201);
    EXPECT_EQ(Header("$$VERSION/-5").version, 0);
    EXPECT_EQ(Header("$$VERSION/x").version, 0);
    EXPECT_EQ(Header("$$VERSION/1e12").version, 1000000000);
    EXPECT_EQ(Header("").version, 200);
    EXPECT_EQ(Header("$$LAYERS/0").announcedLayers, 0);
    EXPECT_EQ(Header("$$LAYERS/999999999999999").announcedLayers, 999999999999999);
    for (char const* const none : {"$$LAYERS/1000000000000000", "$$LAYERS/-1", "$$LAYERS/x", "$$LAYERS", ""})
        EXPECT_FALSE(Header(none).announcedLayers.has_value()) << none;
    EXPECT_EQ(Header("$$UNITS/0.25").units, 0.25);
    EXPECT_EQ(Header("").units, 1.0);
    for (char const* const units : {"0", "-1", "inf", "nan", "x", ""}) {
        Put("$$HEADERSTART\n$$BINARY\n$$UNITS/" + std::string(units) + "\n$$HEADEREND");
        EXPECT_TRUE(Says("line 3: $$UNITS is no number above 0")) << units;
    }
}

TEST_F(SliceHeaderTest, WordsTellModeAlignmentAndDimension) {
    EXPECT_EQ(Header("").mode, SliceMode::kBinary);
    EXPECT_EQ(Header("$$COC").mode, SliceMode::kDisguised);
    EXPECT_EQ(Header("$$ASCII").mode, SliceMode::kText);
    EXPECT_FALSE(Header("").aligned);
    EXPECT_TRUE(Header("$$ALIGN").aligned);
    SliceHeader const header = Header("$$UNITS/2\n$$DIMENSION/1,2,3,4,5,6");
    ASSERT_TRUE(header.dimension.has_value());
    EXPECT_EQ(header.dimension->min, (Point3{2, 4, 6}));
    EXPECT_EQ(header.dimension->max, (Point3{8, 10, 12}));
    for (char const* const none : {"", "$$DIMENSION/1,2,3,4,5", "$$DIMENSION/1,2,3,4,5,inf", "$$DIMENSION/x"})
        EXPECT_FALSE(Header(none).dimension.has_value()) << none;
    EXPECT_STREQ(NameOf(SliceMode::kText), "CLI slices, text");
    EXPECT_STREQ(NameOf(SliceMode::kBinary), "CLI slices, binary");
    EXPECT_STREQ(NameOf(SliceMode::kDisguised), "CLI slices, disguised");
}

TEST_F(SliceHeaderTest, ItsEndBeginsInTheFirst21ColumnsOfALine) {
    Put("$$HEADERSTART\n$$BINARY\n" + std::string(20, ' ') + "$$HEADEREND" + LayerAt(1));
    EXPECT_EQ(SliceFile(path).LayerCount(), 1);
    Put("$$HEADERSTART\n$$BINARY\n" + std::string(21, ' ') + "$$HEADEREND" + LayerAt(1));
    EXPECT_TRUE(Says("the header has no $$HEADEREND"));
}

TEST_F(SliceHeaderTest, AMegabyteMayStandAheadOfIt) {
    std::size_t const most = (std::size_t{1} << 20) + 1;
    Put(std::string(most, '\n') + kHead);
    EXPECT_EQ(ErrorOf(), "");
    Put(std::string(most + 1, '\n') + kHead);
    EXPECT_TRUE(Says("it has no $$HEADERSTART"));
}

TEST_F(SliceHeaderTest, AFileIsOneByItsFirst4096Bytes) {
    std::string const word = "$$HEADERSTART";
    auto const isOne = [&](std::string const& bytes) {
        Put(bytes);
        return SliceFile::IsOne(path);
    };
    EXPECT_TRUE(isOne(word));
    EXPECT_TRUE(isOne(std::string(4096 - word.size(), ' ') + word + "\n"));
    EXPECT_FALSE(isOne(std::string(4097 - word.size(), ' ') + word + "\n"));
    EXPECT_FALSE(isOne("$$HEADERSTAR"));
    EXPECT_FALSE(isOne(""));
    EXPECT_FALSE(SliceFile::IsOne(folder.Path()));
    EXPECT_FALSE(SliceFile::IsOne(folder / "none.cli"));
}

#if !defined(_WIN32)
// What has been read from a pipe is gone for whoever wants it.
TEST_F(SliceHeaderTest, APipeIsNotLookedInto) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    int const pipe = open(path.c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(pipe, 0);
    ASSERT_EQ(write(pipe, kHead.data(), kHead.size()), static_cast<ssize_t>(kHead.size()));
    EXPECT_FALSE(SliceFile::IsOne(path));
    std::string bytes(100, '?');
    ssize_t const left = read(pipe, bytes.data(), bytes.size());
    EXPECT_EQ(left, static_cast<ssize_t>(kHead.size()));
    close(pipe);
}
#endif

TEST_F(SliceHeaderTest, AnotherNumberOfLayersThanItAnnouncesIsANote) {
    auto const notes = [this](char const* announced) {
        Put("$$HEADERSTART\n$$BINARY\n$$LAYERS/" + std::string(announced) + "\n$$HEADEREND" + LayerAt(1) +
            LayerAt(2));
        return SliceFile(path).Report().notes;
    };
    EXPECT_EQ(notes("2"), std::vector<std::string>());
    EXPECT_EQ(notes("x"), std::vector<std::string>());
    EXPECT_EQ(notes("3"), std::vector<std::string>{"the header announces 3 layers, and there are 2"});
    EXPECT_EQ(notes("0"), std::vector<std::string>{"the header announces 0 layers, and there are 2"});
}

TEST_F(SliceHeaderTest, WhatIsPassedOverIsNotedByItsKind) {
    Put(kTextHead +
        "\n$$GEOMETRYSTART\n$$LAYER/1\n$$POLYLINE/1,2,4,0,0,1,0,1,1\n\n\n// one\n$$WHATEVER/1\n"
        "$$LAYER/2\n// two\n// three\n$$GEOMETRYEND\n");
    EXPECT_EQ(SliceFile(path).Report().notes,
              (std::vector<std::string>{"2 blank lines were passed over", "3 comments were passed over",
                                        "1 commands that are not known were passed over",
                                        "1 paths have another number of points than they announce"}));
}

TEST_F(SliceHeaderTest, LayersHaveNumbersFrom1) {
    Put(kHead + LayerAt(3) + LayerAt(5));
    SliceFile const file(path);
    EXPECT_EQ(file.Size(), kHead.size() + 8);
    EXPECT_EQ(file.Path(), path);
    EXPECT_EQ(file.LayerAt(1).z, 3.0);
    EXPECT_EQ(file.LayerAt(1).number, 1);
    EXPECT_EQ(file.LayerAt(2).z, 5.0);
    EXPECT_EQ(file.LayerAt(2).cutHeight, 5.0);
    EXPECT_EQ(file.LayerAt(2).number, 2);
    for (std::int64_t const number : {-1, 0, 3}) {
        try {
            file.LayerAt(number);
            ADD_FAILURE() << number;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
            EXPECT_EQ(error.what(), "there is no layer " + std::to_string(number) + ": the file has 2");
        }
    }
}

TEST_F(SliceHeaderTest, GeometryLiesFromBehindTheHeaderToTheEndOfTheLastLayer) {
    Put(kHead + "\n" + LayerAt(3) + LayerAt(5) + "\n\n");
    {
        SliceFile const binary(path);
        EXPECT_EQ(binary.GeometryBegin(), kHead.size() + 1);
        EXPECT_EQ(binary.GeometryEnd(), kHead.size() + 9);
        EXPECT_EQ(binary.Report().strayBytes, 3);
    }
    std::string const body = "\n$$GEOMETRYSTART\n$$LAYER/1\n$$LAYER/2\n$$HATCHES/1,0\n";
    Put(kTextHead + body + "$$GEOMETRYEND\n\n$$LAYER/3\n");
    {
        SliceFile const text(path);
        EXPECT_EQ(text.LayerCount(), 2);
        EXPECT_EQ(text.GeometryBegin(), kTextHead.size());
        EXPECT_EQ(text.GeometryEnd(), kTextHead.size() + body.size());
        EXPECT_FALSE(text.Report().endMissing);
        EXPECT_EQ(text.Report().notes, std::vector<std::string>{"1 blank lines were passed over"});
    }
    Put(kHead);
    SliceFile const none(path);
    EXPECT_EQ(none.GeometryBegin(), kHead.size());
    EXPECT_EQ(none.GeometryEnd(), kHead.size());
}

TEST_F(SliceHeaderTest, UpTo4096BlanksAndZerosMayStandBehindTheLastLayer) {
    std::string const whole = kHead + LayerAt(3);
    for (char const c : std::string("\0\r\n \t\x1A", 6)) {
        Put(whole + std::string(5, c));
        SliceFile const file(path);
        EXPECT_EQ(file.LayerCount(), 1);
        EXPECT_EQ(file.Report().strayBytes, 5);
        EXPECT_EQ(file.Report().notes,
                  std::vector<std::string>{"5 bytes between or behind the layers were passed over"});
    }
    Put(whole + std::string(4096, '\0'));
    EXPECT_EQ(SliceFile(path).Report().strayBytes, 4096);
    std::string const place = path.string() + ", byte " + std::to_string(whole.size());
    for (std::string const& behind : {std::string(4097, '\0'), std::string("\0\0x", 3), std::string("xx")}) {
        Put(whole + behind);
        EXPECT_EQ(ErrorOf(), place + ": there is no command here");
    }
    SliceReadSettings partial;
    partial.partial = true;
    SliceFile const file(path, partial);
    EXPECT_EQ(file.LayerCount(), 1);
    EXPECT_EQ(file.Report().strayBytes, 0);
    EXPECT_EQ(file.Report().broken, place + ": there is no command here");
    EXPECT_EQ(file.Report().notes, std::vector<std::string>{*file.Report().broken});
}

TEST_F(SliceHeaderTest, ABrokenLayerOfTextIsTheEndWhereWhatIsBeforeItIsAskedFor) {
    std::string const first = "\n$$LAYER/1\n$$HATCHES/1,1,0,0,1,1\n";
    Put(kTextHead + first + "$$LAYER/2\n$$HATCHES/1,1,0,0,1,x\n$$LAYER/3\n");
    EXPECT_TRUE(Says("line 7: a coordinate is no number"));
    SliceReadSettings partial;
    partial.partial = true;
    {
        SliceFile const file(path, partial);
        EXPECT_EQ(file.LayerCount(), 1);
        EXPECT_EQ(file.GeometryEnd(), kTextHead.size() + first.size());
        EXPECT_EQ(file.LayerAt(1).strokes.size(), 1u);
        EXPECT_EQ(file.Report().broken, path.string() + ", line 7: a coordinate is no number");
        EXPECT_FALSE(file.Report().endMissing);
        EXPECT_EQ(file.Report().notes, std::vector<std::string>{*file.Report().broken});
    }
    // Whole, but for its end.
    Put(kTextHead + first);
    SliceFile const file(path);
    EXPECT_TRUE(file.Report().endMissing);
    EXPECT_EQ(file.Report().notes, std::vector<std::string>{"the file has no $$GEOMETRYEND"});
}

// The last command has nothing behind it but the end of the file: with $$GEOMETRYEND its count is wrong, and
// without it is cut.
TEST_F(SliceHeaderTest, ThePathAtTheEndOfTheFileIsHeldAgainstItsCount) {
    std::string const body = "\n$$LAYER/1\n$$POLYLINE/1,1,4,0,0,1,1\n";
    Put(kTextHead + body + "$$GEOMETRYEND\n");
    {
        SliceFile const file(path);
        EXPECT_EQ(file.Report().wrongCounts, 1);
        EXPECT_EQ(file.LayerAt(1).points.size(), 2u);
    }
    Put(kTextHead + body);
    EXPECT_TRUE(Says("line 5: the file ends within this command: 2 of 4 points are there"));
}

TEST_F(SliceHeaderTest, ReadingTextCanBeStoppedEvery1024Lines) {
    std::string const start = kTextHead + "\n$$GEOMETRYSTART\n";
    auto const calls = [&](std::size_t lines) {
        // The header has three lines, with the start of the geometry four.
        Put(start + std::string(lines - 4, '\n') + "$$GEOMETRYEND\n");
        std::vector<double> shares;
        SliceReadSettings settings;
        settings.progress = [&shares](double share) {
            shares.push_back(share);
            return true;
        };
        SliceFile const file(path, settings);
        return shares;
    };
    EXPECT_EQ(calls(1022).size(), 0u);
    ASSERT_EQ(calls(2047).size(), 2u);
    // The 1024th line begins behind 1019 line ends.
    double const size = static_cast<double>(start.size() + 2043 + 14);
    EXPECT_DOUBLE_EQ(calls(2047)[0], static_cast<double>(start.size() + 1019) / size);
    SliceReadSettings settings;
    settings.progress = [](double) { return false; };
    EXPECT_NE(ErrorOf(ErrorKind::kCancelled, settings).find("reading was stopped"), std::string::npos);
    settings.partial = true;
    EXPECT_NE(ErrorOf(ErrorKind::kCancelled, settings), "") << "what is stopped is not read in part";
}

TEST_F(SliceHeaderTest, ReadingBinaryTellsItsShareEvery4096Commands) {
    constexpr std::size_t kBytes = 4;  // of a layer by its short word
    std::string layers;
    for (int n = 0; n < 8193; ++n) layers += LayerAt(static_cast<char>(1 + n % 100));
    std::string const bytes = kHead + layers;
    Put(bytes);
    std::vector<double> shares;
    std::size_t goOn = 3;
    SliceReadSettings settings;
    settings.progress = [&](double share) {
        shares.push_back(share);
        return shares.size() <= goOn;
    };
    EXPECT_EQ(SliceFile(path, settings).LayerCount(), 8193);
    std::vector<double> expected;
    for (std::size_t const command : {0, 4096, 8192})
        expected.push_back(static_cast<double>(kHead.size() + command * kBytes) /
                           static_cast<double>(bytes.size()));
    EXPECT_EQ(shares, expected);
    shares.clear();
    goOn = 1;
    EXPECT_NE(ErrorOf(ErrorKind::kCancelled, settings).find("reading was stopped"), std::string::npos);
    EXPECT_EQ(shares.size(), 2u);
}

// The bytes of a layer are read again when it is asked for.
TEST_F(SliceHeaderTest, AFileThatChangesWhileItIsOpenIsAnErrorWithItsPlace) {
    auto const change = [this](std::size_t place, char c) {
        std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(place));
        stream.put(c);
    };
    auto const message = [](SliceFile const& file, std::int64_t number) {
        try {
            file.LayerAt(number);
        } catch (Error const& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    std::string const text = kTextHead + "\n$$LAYER/1\n\n$$LAYER/2\n$$HATCHES/1,1,0,0,1,1\n$$GEOMETRYEND\n";
    Put(text);
    {
        SliceFile const file(path);
        change(text.find("$$HATCHES/") + 12, 'x');
        EXPECT_EQ(message(file, 1), "");
        EXPECT_EQ(message(file, 2), path.string() + ", line 7: the count is missing or no number");
    }
    Put(kHead + LayerAt(1) + LayerAt(2));
    SliceFile const file(path);
    change(kHead.size() + 4, '\x01');
    EXPECT_EQ(message(file, 1), "");
    EXPECT_EQ(message(file, 2),
              path.string() + ", byte " + std::to_string(kHead.size() + 4) + ": there is no command here");
}

TEST(AsStored, RoundsAsTextAndFloatsDo) {
    Layer layer;
    layer.number = 4;
    layer.z = 0.126;
    layer.cutHeight = 0.0613;
    Contour open;
    open.closed = false;
    open.id = 8;
    layer.AddContour(std::vector<Point2>{{1.2346, -7.0004}, {0.1, 2}}, open);
    layer.AddContour(std::vector<Point2>{{0, 0}, {3, 0}, {3, 3}}, {true, 5, 1, 9});
    layer.AddChain(std::vector<Stroke>{{{0.0006, 1}, {2, 3.3333}}}, kSupportId);
    Layer const text = AsStored(layer, SliceMode::kText);
    EXPECT_EQ(text.number, 4);
    EXPECT_EQ(text.z, 0.13);
    EXPECT_EQ(text.cutHeight, 0.0613);
    EXPECT_EQ(text.points, (std::vector<Point2>{{1.235, -7}, {0.1, 2}, {0, 0}, {3, 0}, {3, 3}}));
    EXPECT_EQ(text.strokes, (std::vector<Stroke>{{{0.001, 1}, {2, 3.333}}}));
    EXPECT_EQ(text.chainIds, std::vector<std::int32_t>{kSupportId});
    ASSERT_EQ(text.ContourCount(), 2u);
    EXPECT_FALSE(text.contours[0].closed);
    EXPECT_EQ(text.contours[0].id, 8);
    EXPECT_EQ(text.contours[1], (Contour{true, -1, 1, 9}));
    Layer const floats = AsStored(layer, SliceMode::kBinary);
    EXPECT_EQ(floats.z, static_cast<double>(0.126f));
    EXPECT_EQ(floats.points[0], (Point2{static_cast<double>(1.2346f), static_cast<double>(-7.0004f)}));
    EXPECT_EQ(floats.strokes[0].to.y, static_cast<double>(3.3333f));
    EXPECT_EQ(AsStored(layer, SliceMode::kDisguised), floats);
}

}  // namespace
}  // namespace varnet
