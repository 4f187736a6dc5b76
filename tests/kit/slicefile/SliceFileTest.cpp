#include "varnet/SliceFile.h"

#include <Varnet64.h>
#include <gtest/gtest.h>

#include <cmath>

#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>

#include "TestFiles.h"
#include "files/File.h"
#include "slicefile/Lines.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

class SliceFileTest : public ::testing::Test {
protected:
    void Put(std::string const& bytes) const { WriteWhole(path, bytes); }
    std::string Bytes() const {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string ErrorOf(SliceReadSettings const& settings = {}) const {
        try {
            SliceFile const file(path, settings);
            for (std::int64_t n = 1; n <= file.LayerCount(); ++n) file.LayerAt(n);
        } catch (Error const& error) {
            return error.what();
        }
        return "";
    }
    void Write(std::vector<Layer> const& layers, SliceWriteSettings const& settings) const {
        SliceWriter writer(path, static_cast<std::int64_t>(layers.size()), settings);
        for (Layer const& layer : layers) writer.Write(layer);
        writer.Finish();
    }
    TestFolder const folder;
    fs::path const path = folder / "slices.cli";
};

// Coordinates that floats and three decimals hold.
Layer RandomLayer(std::mt19937& random, std::int32_t number) {
    std::uniform_int_distribution<int> eighths(-8000, 8000);
    auto const point = [&] { return Point2{eighths(random) / 8.0, eighths(random) / 8.0}; };
    Layer layer;
    layer.number = number;
    layer.z = number * 0.25;
    layer.cutHeight = layer.z;
    for (auto i = random() % 5; i > 0; --i) {
        Contour contour;
        contour.closed = random() % 3 != 0;
        contour.level = contour.closed ? static_cast<std::int32_t>(random() % 2) : 0;
        contour.id = static_cast<std::int32_t>(random() % 2000);
        std::vector<Point2> points(2 + random() % 20);
        for (Point2& p : points) p = point();
        points.back().x = points.front().x + 1.0;  // so that the last point is not the first one
        layer.AddContour(points, contour);
    }
    for (auto i = random() % 4; i > 0; --i) {
        std::vector<Stroke> strokes(1 + random() % 9);
        for (Stroke& stroke : strokes) stroke = {point(), point()};
        layer.AddChain(strokes, random() % 2 == 0 ? kFillId : kSupportId);
    }
    return layer;
}

std::vector<Layer> RandomLayers(unsigned seed, int count) {
    std::mt19937 random(seed);
    std::vector<Layer> layers;
    for (int n = 1; n <= count; ++n) layers.push_back(RandomLayer(random, n));
    return layers;
}

// The layers of a file as the classic model reads them, written again by it as text.
std::string ThroughTheClasses(fs::path const& path, int& layers) {
    FILE* const file = std::fopen(path.string().c_str(), "rb");
    FILE* const out = std::tmpfile();
    CLayerModel model;
    model.m_pFile = file;
    EXPECT_EQ(model.ReadCLIHead(), 1);
    layers = 0;
    for (;;) {
        CLayer layer;
        layer.m_dUnits = model.m_dUnits;
        if (layer.ReadCLIFile(file, static_cast<int>(model.m_nFileMode)) == 0) break;
        ++layers;
        model.SaveLayer(&layer, out, 1);
    }
    std::fclose(file);
    std::string text(static_cast<std::size_t>(std::ftell(out)), '\0');
    std::rewind(out);
    text.resize(std::fread(text.data(), 1, text.size(), out));
    std::fclose(out);
    return text;
}

TEST_F(SliceFileTest, ReadsBackWhatWasWrittenInEachMode) {
    std::vector<Layer> const layers = RandomLayers(1, 40);
    for (SliceMode const mode : {SliceMode::kText, SliceMode::kBinary, SliceMode::kDisguised}) {
        Write(layers, {mode, 7, {}});
        SliceFile const file(path);
        ASSERT_EQ(file.LayerCount(), 40);
        EXPECT_EQ(file.Header().mode, mode);
        EXPECT_EQ(file.Header().announcedLayers, 40);
        EXPECT_TRUE(file.Report().notes.empty()) << file.Report().notes.front();
        for (std::int64_t n = 40; n > 0; --n) {
            EXPECT_EQ(file.LayerAt(n), layers[static_cast<std::size_t>(n - 1)])
                << NameOf(mode) << ", layer " << n;
        }
    }
}

TEST_F(SliceFileTest, TheClassicReaderFindsTheSameInEveryMode) {
    std::vector<Layer> const layers = RandomLayers(2, 25);
    int count = 0;
    Write(layers, {SliceMode::kText, {}, {}});
    std::string const text = ThroughTheClasses(path, count);
    EXPECT_EQ(count, 25);
    // What the classes read from our text and write again is our text, between header and end.
    std::string const bytes = Bytes();
    std::size_t const start = bytes.find("$$LAYER/");
    EXPECT_EQ(text, bytes.substr(start, bytes.find("$$GEOMETRYEND") - start));
    for (SliceMode const mode : {SliceMode::kBinary, SliceMode::kDisguised}) {
        Write(layers, {mode, 11, {}});
        EXPECT_EQ(ThroughTheClasses(path, count), text) << NameOf(mode);
        EXPECT_EQ(count, 25);
    }
}

TEST_F(SliceFileTest, WritesTheBytesOfASmallBinaryFile) {
    Layer layer;
    layer.number = 1;
    layer.z = 0.5;
    std::vector<Point2> const points{{1, 0}, {0, 2}, {-1, 0}};
    layer.AddContour(points, {});
    std::vector<Stroke> const strokes{{{0, 0}, {1, 1}}};
    layer.AddChain(strokes, 3);
    Write({layer}, {SliceMode::kBinary, {}, {}});
    std::string expected = "$$HEADERSTART\n$$BINARY\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/1\n$$HEADEREND";
    auto const word = [&expected](std::uint16_t n) { expected.append(reinterpret_cast<char const*>(&n), 2); };
    auto const whole = [&expected](std::int32_t n) { expected.append(reinterpret_cast<char const*>(&n), 4); };
    auto const real = [&expected](float f) { expected.append(reinterpret_cast<char const*>(&f), 4); };
    word(127);
    real(0.5F);
    word(130);
    for (std::int32_t const n : {1, 1, 4}) whole(n);
    for (float const f : {1.F, 0.F, 0.F, 2.F, -1.F, 0.F, 1.F, 0.F}) real(f);
    word(132);
    for (std::int32_t const n : {3, 1}) whole(n);
    for (float const f : {0.F, 0.F, 1.F, 1.F}) real(f);
    EXPECT_EQ(Bytes(), expected);
}

TEST_F(SliceFileTest, WithASeedALayerHasTheSameBytesWhateverIsWrittenWithIt) {
    std::vector<Layer> const layers = RandomLayers(3, 6);
    Write(layers, {SliceMode::kDisguised, 5, {}});
    std::string const all = Bytes();
    Write({layers[3], layers[4]}, {SliceMode::kDisguised, 5, {}});
    std::string const two = Bytes();
    std::string const geometry = two.substr(two.find("$$HEADEREND") + 11);
    EXPECT_NE(all.find(geometry), std::string::npos);
}

std::string const kTextHead =
    "$$HEADERSTART\n$$ASCII\n$$UNITS/0.5\n$$LAYERS/2\n$$HEADEREND\n$$GEOMETRYSTART\n";

TEST_F(SliceFileTest, PassesOverWhatIsNoLayer) {
    Put("\r\n$$HEADERSTART\r\n// made by hand "
        "//\r\n$$ASCII\r\n$$UNITS/0.5\r\n$$DIMENSION/0,0,0,4,4,4\r\n$$LAYERS/2\r\n"
        "$$HEADEREND\r\n\r\n$$GEOMETRYSTART\r\n$$POWER/100\r\n$$LAYER/1.0\r\n\r\n// comment\r\n"
        "$$POLYLINE/1,1,4,0,0,4,0,4,4,0,0\r\n  $$hatches / 3 1 0 0 1 +1\r\n$$LAYER/2.0 // second //\r\n"
        "$$POLYLINE/1,2,3,0,0,\r\n4 0,\r\n4 4\r\n$$GEOMETRYEND\r\n\r\n");
    SliceFile const file(path);
    ASSERT_EQ(file.LayerCount(), 2);
    Layer const first = file.LayerAt(1);
    EXPECT_EQ(first.z, 0.5);
    ASSERT_EQ(first.ContourCount(), 1u);
    EXPECT_EQ(first.points, (std::vector<Point2>{{0, 0}, {2, 0}, {2, 2}}));
    EXPECT_TRUE(first.contours[0].closed);
    ASSERT_EQ(first.ChainCount(), 1u);
    EXPECT_EQ(first.strokes, (std::vector<Stroke>{{{0, 0}, {0.5, 0.5}}}));
    Layer const second = file.LayerAt(2);
    EXPECT_FALSE(second.contours[0].closed);
    EXPECT_EQ(second.points, (std::vector<Point2>{{0, 0}, {2, 0}, {2, 2}}));
    EXPECT_EQ(file.Report().unknownCommands, 1);
    EXPECT_EQ(file.Report().comments, 1);
    EXPECT_EQ(file.Report().blankLines, 3);
    ASSERT_TRUE(file.Header().dimension.has_value());
    EXPECT_EQ(file.Header().dimension->max, (Point3{2, 2, 2}));
}

TEST_F(SliceFileTest, LinesBeyondALongestLengthComeInPieces) {
    std::string const text = std::string(10'000'000, 'x');
    Put("first\n" + text + "\nlast");
    SeekableFile file(path);
    LineReader lines(file, 0, 1, 1'000'000);
    EXPECT_EQ(lines.Next()->text, "first");
    std::string pieces;
    std::optional<Line> line = lines.Next();
    for (; line->number == 2; line = lines.Next()) {
        EXPECT_EQ(line->place, 6 + pieces.size());
        EXPECT_LT(line->text.size(), 2'000'000u);
        pieces += line->text;
    }
    EXPECT_TRUE(pieces == text);
    EXPECT_EQ(line->text, "last");
    EXPECT_EQ(line->number, 3u);
    EXPECT_FALSE(lines.Next().has_value());
}

TEST_F(SliceFileTest, TheSeedAloneDecidesHowALayerIsDisguised) {
    std::vector<Layer> const layers = RandomLayers(11, 3);
    auto const written = [&](std::uint64_t seed) {
        Write(layers, {SliceMode::kDisguised, seed, {}});
        return Bytes();
    };
    std::string const one = written(1);
    EXPECT_EQ(written(1), one);
    EXPECT_NE(written(2), one);
    EXPECT_NE(written(std::uint64_t{1} << 40), one);
}

// A path is written with its first point again at its end where it is closed, were it the only one; a path
// without points is not written.
TEST_F(SliceFileTest, AClosedPathOfOnePointIsWrittenWithTwo) {
    Layer layer;
    layer.number = 1;
    layer.z = 0.5;
    layer.AddContour(std::vector<Point2>{{1, 2}}, {});
    layer.contours[0].closed = true;
    layer.AddContour(std::vector<Point2>{{3, 4}}, {});
    layer.contours[1].closed = false;
    layer.AddContour(std::vector<Point2>{}, {});
    layer.contours[2].closed = true;
    Write({layer}, {SliceMode::kText, {}, {}});
    std::string const bytes = Bytes();
    auto const count = [&bytes](std::string const& word) {
        int found = 0;
        for (std::size_t at = bytes.find(word); at != std::string::npos; at = bytes.find(word, at + 1))
            ++found;
        return found;
    };
    EXPECT_EQ(count("$$POLYLINE/"), 2);
    EXPECT_EQ(count(" 2  1.000 2.000 1.000 2.000"), 1) << bytes;
    EXPECT_EQ(count(" 1  3.000 4.000"), 1) << bytes;
    for (SliceMode const mode : {SliceMode::kText, SliceMode::kBinary, SliceMode::kDisguised}) {
        Write({layer}, {mode, 3, {}});
        SliceFile const file(path);
        ASSERT_EQ(file.LayerCount(), 1);
        Layer const read = file.LayerAt(1);
        ASSERT_EQ(read.ContourCount(), mode == SliceMode::kText ? 2u : 3u);
        EXPECT_EQ(read.ContourPoints(1).size(), 1u);
    }
}

TEST_F(SliceFileTest, ReadsALineOfAnyLength) {
    Layer layer;
    layer.number = 1;
    std::vector<Point2> points;
    for (int i = 0; i < 100000; ++i) points.push_back({i / 8.0, (i % 7) / 8.0});
    layer.AddContour(points, {});
    Write({layer}, {SliceMode::kText, {}, {}});
    EXPECT_EQ(SliceFile(path).LayerAt(1).points, points);
}

TEST_F(SliceFileTest, SaysWhereALineCannotBeRead) {
    std::string const name = path.string();
    Put(kTextHead + "$$LAYER/1\n$$POLYLINE/1,1,3,0,0,1,x\n");
    EXPECT_EQ(ErrorOf(), name + ", line 8: a coordinate is no number");
    Put(kTextHead + "$$LAYER/1\n$$POLYLINE/1,1\n");
    EXPECT_EQ(ErrorOf(), name + ", line 8: the count is missing or no number");
    Put(kTextHead + "$$LAYER/1\n\n$$POLYLINE/1,1,1,5\n$$GEOMETRYEND\n");
    EXPECT_EQ(ErrorOf(), name + ", line 9: a coordinate of the last point is missing");
    Put(kTextHead + "$$LAYER/nan\n");
    EXPECT_EQ(ErrorOf(), name + ", line 7: the height is not finite");
    Put("$$HEADERSTART\n$$UNITS/1\n$$HEADEREND\n");
    EXPECT_EQ(ErrorOf(), name + ", line 3: the header names no mode ($$ASCII or $$BINARY)");
    Put("$$HEADERSTART\n$$ASCII\n$$UNITS/0\n$$HEADEREND\n");
    EXPECT_EQ(ErrorOf(), name + ", line 3: $$UNITS is no number above 0");
    Put("no slices");
    EXPECT_EQ(ErrorOf(), name + ": not a CLI slice file: it has no $$HEADERSTART");
}

TEST_F(SliceFileTest, AFileWithoutLayersIsWrittenAndReadBack) {
    for (SliceMode const mode : {SliceMode::kText, SliceMode::kBinary, SliceMode::kDisguised}) {
        Write({}, {mode, {}, {}});
        SliceFile const file(path);
        EXPECT_EQ(file.LayerCount(), 0);
        EXPECT_TRUE(file.Report().notes.empty());
        EXPECT_THROW(file.LayerAt(1), Error);
    }
}

TEST_F(SliceFileTest, LineEndsBehindHeaderAndLastLayerAreStray) {
    std::vector<Layer> const layers = RandomLayers(4, 5);
    Write(layers, {SliceMode::kBinary, {}, {}});
    std::string bytes = Bytes();
    bytes.insert(bytes.find("$$HEADEREND") + 11, "\r\n");
    Put(bytes + "\r\n");
    SliceFile const file(path);
    ASSERT_EQ(file.LayerCount(), 5);
    EXPECT_EQ(file.LayerAt(1), layers[0]);
    EXPECT_EQ(file.LayerAt(5), layers[4]);
    EXPECT_EQ(file.Report().strayBytes, 4);
}

TEST_F(SliceFileTest, WhereNoStartGivesALayerTheStatedOneIsMeant) {
    std::string const head = "$$HEADERSTART\n$$BINARY\n$$HEADEREND";
    std::string const place = path.string() + ", byte " + std::to_string(head.size());
    Put(head + "\nno command");
    EXPECT_EQ(ErrorOf(), place + ": there is no command here");
    Put(head + "\r\nno command");
    EXPECT_EQ(ErrorOf(), place + ": there is no command here");
}

TEST_F(SliceFileTest, WhereNoStartGivesALayerOneWhoseCommandsAreWholeIsTaken) {
    std::string noPoints;
    for (int const n : {130, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}) noPoints += static_cast<char>(n);
    for (std::string const lineEnd : {"\n", "\r\n"}) {
        Put("$$HEADERSTART\n$$BINARY\n$$HEADEREND" + lineEnd + noPoints);
        EXPECT_EQ(ErrorOf(), "");
        SliceFile const file(path);
        EXPECT_EQ(file.LayerCount(), 0);
        EXPECT_EQ(file.Report().strayBytes, static_cast<std::int64_t>(lineEnd.size()));
    }
}

TEST_F(SliceFileTest, APathWithoutPointsMayEndTheFile) {
    std::string bytes = "$$HEADERSTART\n$$BINARY\n$$HEADEREND";
    auto const word = [&bytes](std::uint16_t n) { bytes.append(reinterpret_cast<char const*>(&n), 2); };
    auto const whole = [&bytes](std::int32_t n) { bytes.append(reinterpret_cast<char const*>(&n), 4); };
    word(128);
    word(5);
    word(130);
    for (std::int32_t const n : {1, 1, 0}) whole(n);
    Put(bytes);
    EXPECT_EQ(ErrorOf(), "");
    {
        // Closed before the file is written anew.
        SliceFile const file(path);
        ASSERT_EQ(file.LayerCount(), 1);
        EXPECT_EQ(file.LayerAt(1).z, 5.0);
        EXPECT_TRUE(file.LayerAt(1).points.empty());
    }
    // One byte of the count is missing.
    Put(bytes.substr(0, bytes.size() - 1));
    EXPECT_NE(ErrorOf().find("the file ends within a command"), std::string::npos);
}

TEST_F(SliceFileTest, ReadsAlignedCommands) {
    std::string bytes = "$$HEADERSTART\n$$BINARY\n$$ALIGN\n$$UNITS/0.01\n$$HEADEREND";
    auto const word = [&bytes](std::uint16_t n) { bytes.append(reinterpret_cast<char const*>(&n), 2); };
    auto const whole = [&bytes](std::int32_t n) { bytes.append(reinterpret_cast<char const*>(&n), 4); };
    auto const real = [&bytes](float f) { bytes.append(reinterpret_cast<char const*>(&f), 4); };
    for (std::uint16_t const n : std::initializer_list<std::uint16_t>{127, 0}) word(n);
    real(50.F);
    for (std::uint16_t const n : std::initializer_list<std::uint16_t>{132, 0}) word(n);
    for (std::int32_t const n : {3, 1}) whole(n);
    for (float const f : {0.F, 0.F, 100.F, 200.F}) real(f);
    for (std::uint16_t const n : std::initializer_list<std::uint16_t>{131, 3, 1, 0, 0, 100, 300, 0})
        word(n);  // short, and two bytes of filling
    for (std::uint16_t const n : std::initializer_list<std::uint16_t>{128, 100}) word(n);
    Put(bytes);
    SliceFile const file(path);
    ASSERT_EQ(file.LayerCount(), 2);
    EXPECT_EQ(file.LayerAt(1).z, 0.5);
    EXPECT_EQ(file.LayerAt(1).strokes, (std::vector<Stroke>{{{0, 0}, {1, 2}}, {{0, 0}, {1, 3}}}));
    EXPECT_EQ(file.LayerAt(2).z, 1.0);
}

// A file cut at any byte gives an error, or the layers before the cut.
TEST_F(SliceFileTest, AFileCutAtAnyByteGivesTheLayersBefore) {
    std::vector<Layer> const layers = RandomLayers(5, 2);
    for (SliceMode const mode : {SliceMode::kText, SliceMode::kBinary, SliceMode::kDisguised}) {
        Write(layers, {mode, 3, {}});
        std::string const bytes = Bytes();
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            Put(bytes.substr(0, size));
            SliceReadSettings partial;
            partial.partial = true;
            try {
                SliceFile const file(path, partial);
                for (std::int64_t n = 1; n < file.LayerCount(); ++n) {
                    EXPECT_EQ(file.LayerAt(n), layers[static_cast<std::size_t>(n - 1)]);
                }
                if (file.LayerCount() > 0) file.LayerAt(file.LayerCount());
            } catch (Error const&) {
                EXPECT_LT(size, bytes.find("$$HEADEREND") + 11) << size;
            }
            ErrorOf();
        }
    }
}

// Bytes by chance behind a good header give an error or a layer, never a crash.
TEST_F(SliceFileTest, BytesByChanceGiveAnErrorOrALayer) {
    std::mt19937 random(6);
    for (int round = 0; round < 500; ++round) {
        std::string bytes = std::string("$$HEADERSTART\n") + (round % 2 == 0 ? "$$BINARY" : "$$COC") +
                            (round % 3 == 0 ? "\n$$ALIGN" : "") + "\n$$HEADEREND";
        constexpr std::array<std::uint16_t, 6> kWords = {127, 128, 129, 130, 131, 132};
        for (int i = 0; i < 60; ++i) {
            std::uint16_t const n =
                random() % 3 == 0 ? kWords[random() % 6] : static_cast<std::uint16_t>(random() % 4);
            bytes.append(reinterpret_cast<char const*>(&n), 2);
        }
        Put(bytes);
        ErrorOf();
        SliceReadSettings partial;
        partial.partial = true;
        ErrorOf(partial);
    }
}

TEST_F(SliceFileTest, AWriterThatIsNotFinishedLeavesNothing) {
    {
        SliceWriter writer(path, 2, {});
        writer.Write(Layer());
        EXPECT_THROW(writer.Finish(), Error);
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(SliceFileTest, AWriterTakesNoMoreLayersThanItsHeaderAnnounces) {
    for (std::int64_t const announced : {0, 1, 2, 4}) {
        SliceWriter writer(path, announced, {});
        for (int n = 0; n < 3; ++n) writer.Write(Layer());
        EXPECT_EQ(writer.LayersWritten(), 3);
        try {
            writer.Finish();
            ADD_FAILURE() << announced;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
            EXPECT_EQ(error.what(), std::to_string(announced) + " layers were announced, and 3 were written");
        }
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(SliceFileTest, CountsPathsThatClassicReadersCut) {
    Layer layer;
    std::vector<Point2> points(2000, Point2{1.0, 1.0});
    points[1].x = 100.125;
    layer.AddContour(points, {});
    SliceWriter writer(path, 1, {SliceMode::kText, {}, {}});
    writer.Write(layer);
    EXPECT_EQ(writer.TooLongForClassicReader(), 1);
}

TEST_F(SliceFileTest, ALineOf10239BytesIsReadWholeAndOneMoreIsNot) {
    struct Written {
        std::size_t length;  // of the line, with its end
        std::int64_t tooLong;
    };
    // One coordinate is a power of ten: it has as many digits more.
    auto const write = [this](std::size_t count, int digits) {
        std::vector<Point2> points(count, Point2{1.0, 1.0});
        points[1].x = std::pow(10.0, digits);
        Layer layer;
        layer.AddContour(points, {});
        SliceWriter writer(path, 1, {SliceMode::kText, {}, {}});
        writer.Write(layer);
        std::int64_t const tooLong = writer.TooLongForClassicReader();
        writer.Finish();
        std::string const bytes = Bytes();
        std::size_t const start = bytes.find("$$POLYLINE");
        return Written{bytes.find('\n', start) + 1 - start, tooLong};
    };
    std::size_t count = 3;
    while (write(2 * count, 0).length < 10239) count *= 2;
    while (write(count + 1, 0).length <= 10239) ++count;
    int const digits = static_cast<int>(10239 - write(count, 0).length);
    ASSERT_LE(digits, 20);
    EXPECT_EQ(write(count, digits).length, 10239u);
    EXPECT_EQ(write(count, digits).tooLong, 0);
    EXPECT_EQ(write(count, digits + 1).length, 10240u);
    EXPECT_EQ(write(count, digits + 1).tooLong, 1);
}

TEST_F(SliceFileTest, TextLeavesOutPathsWithoutPointsAndBinaryFilesStateThemAsEmpty) {
    Layer const whole = RandomLayers(3, 1)[0];
    Layer layer = whole;
    layer.AddContour({}, {});
    layer.AddChain({}, kFillId);
    Write({whole}, {SliceMode::kText, {}, {}});
    std::string const bytes = Bytes();
    Write({layer}, {SliceMode::kText, {}, {}});
    EXPECT_TRUE(Bytes() == bytes);
    for (SliceMode const mode : {SliceMode::kBinary, SliceMode::kDisguised}) {
        Write({layer}, {mode, 7, {}});
        EXPECT_EQ(SliceFile(path).LayerAt(1), layer) << NameOf(mode);
    }
}

TEST_F(SliceFileTest, StopsWhereTheCallbackSaysSo) {
    Write(RandomLayers(7, 3), {SliceMode::kBinary, {}, {}});
    SliceReadSettings settings;
    settings.progress = [](double) { return false; };
    try {
        SliceFile const file(path, settings);
        FAIL();
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
    }
}

}  // namespace
}  // namespace varnet
