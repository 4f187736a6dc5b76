#include "varnet/StreamSlicer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <span>
#include <stdexcept>

#include "Shapes.h"
#include "SizedShapes.h"
#include "TestFiles.h"
#include "varnet/Part.h"
#include "varnet/Supports.h"

#if !defined(_WIN32)
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#endif

namespace varnet {
namespace {

constexpr std::size_t kSmallSort = std::size_t{1} << 20;

std::vector<Layer> Ordinary(std::filesystem::path const& file, SliceSettings const& settings,
                            IntakeSettings const& intake = {}, SliceReport* report = nullptr) {
    Part const part = Part::Read(file, intake);
    Slicer slicer(SlicerInputs(part), settings);
    std::vector<Layer> layers;
    slicer.ForEachLayer([&](Layer&& layer) { layers.push_back(std::move(layer)); });
    if (report != nullptr) *report = slicer.Report();
    return layers;
}

std::vector<Layer> All(StreamSlicer& slicer) {
    std::vector<Layer> layers;
    slicer.ForEachLayer([&](Layer&& layer) { layers.push_back(std::move(layer)); });
    return layers;
}

std::vector<Layer> Streamed(std::filesystem::path const& file, StreamSettings const& settings) {
    StreamSlicer slicer(file, settings);
    return All(slicer);
}

StreamSettings Streaming(SliceSettings const& slice, TestFolder const& folder) {
    StreamSettings settings;
    settings.slice = slice;
    settings.temp = folder.Path();
    settings.sortMemory = kSmallSort;
    return settings;
}

// Equal, and zeros of one sign.
void ExpectSame(std::vector<Layer> const& streamed, std::vector<Layer> const& ordinary) {
    ASSERT_EQ(streamed.size(), ordinary.size());
    for (std::size_t i = 0; i < streamed.size(); ++i) {
        ASSERT_TRUE(streamed[i] == ordinary[i]) << "layer " << i + 1;
        bool const sameZeros = std::memcmp(streamed[i].points.data(), ordinary[i].points.data(),
                                           ordinary[i].points.size() * sizeof(Point2)) == 0;
        ASSERT_TRUE(sameZeros) << "layer " << i + 1;
    }
}

shapes::Mesh InsideOut(shapes::Mesh mesh) {
    for (shapes::Triangle& triangle : mesh) std::swap(triangle[1], triangle[2]);
    return mesh;
}

struct Named {
    char const* name;
    shapes::Mesh mesh;
};

std::vector<Named> ClosedShapes() {
    shapes::Mesh overlapping = shapes::Cube(4);
    shapes::Append(overlapping, shapes::Moved(shapes::Cube(4), 2, 2, 1));
    shapes::Mesh touching = shapes::Box({0, 0, 0}, {1, 1, 2});
    shapes::Append(touching, shapes::Box({1, 1, 0}, {2, 2, 2}));     // along an edge
    shapes::Append(touching, shapes::Box({2, 1, 0.5f}, {3, 2, 1}));  // along a face
    shapes::Mesh hollow = shapes::IcoSphere(5, 3);
    shapes::Append(hollow, InsideOut(shapes::IcoSphere(2, 2)));
    return {{"bracket", shapes::Bracket()},
            {"torus", shapes::Torus(5, 2, 60, 40)},
            {"rings of equal heights", shapes::UvSphere(4, 40, 30)},
            {"separate spheres", shapes::Tray(3, 3, 3)},
            {"overlapping", overlapping},
            {"touching", touching},
            {"hollow", hollow},
            {"inside out", InsideOut(shapes::Moved(shapes::IcoSphere(3, 3), 40, -50, 60))},
            {"grids at equal heights", shapes::GridBoxOfAbout(3000)},
            {"several runs", shapes::GyroidOfAbout(60000)}};
}

TEST(StreamSlicer, ClosedPartsGiveTheOrdinaryLayersBitForBit) {
    TestFolder const folder;
    for (Named const& shape : ClosedShapes()) {
        for (std::uint32_t const seed : {0u, 7u}) {
            SCOPED_TRACE(std::string(shape.name) + (seed == 0 ? "" : ", shuffled"));
            shapes::Mesh const mesh = seed == 0 ? shape.mesh : shapes::Shuffled(shape.mesh, seed);
            std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(mesh));
            for (double const layer : {0.25, 1.3}) {
                SliceSettings settings;
                settings.layer = layer;
                settings.rule = layer > 1.0 ? SolidRule::kOdd : SolidRule::kWinding;
                ExpectSame(Streamed(file, Streaming(settings, folder)), Ordinary(file, settings));
            }
        }
    }
}

TEST(StreamSlicer, ReportsWhatTheOrdinarySlicerReports) {
    TestFolder const folder;
    shapes::Mesh const mesh = shapes::Torus(5, 2, 60, 40);
    std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(mesh));
    SliceReport ordinary;
    Ordinary(file, {}, {}, &ordinary);
    StreamSlicer slicer(file, Streaming({}, folder));
    EXPECT_EQ(slicer.LayerCount(), 20);
    EXPECT_EQ(slicer.FirstLayer(), 1);
    EXPECT_EQ(slicer.LastLayer(), 20);
    EXPECT_FLOAT_EQ(static_cast<float>(slicer.Box().max.x), 7.0f);
    All(slicer);
    SliceReport const& report = slicer.Report();
    EXPECT_EQ(report.layers, 20);
    EXPECT_EQ(report.contours, ordinary.contours);
    EXPECT_EQ(report.points, ordinary.points);
    EXPECT_EQ(report.strokes, ordinary.strokes);
    EXPECT_EQ(report.openPaths, 0);
    EXPECT_EQ(report.volume, ordinary.volume);
    EXPECT_EQ(report.meshVolume, ordinary.meshVolume);
    StreamReport const& found = slicer.Stream();
    EXPECT_EQ(found.facetsInFile, 4800);
    EXPECT_EQ(found.facetsRead, 4800);
    EXPECT_EQ(found.notFinite + found.degenerate + found.collinear + found.insideOutLayers, 0);
    EXPECT_FALSE(found.turned);
    EXPECT_GT(found.facetsSorted, 0);
    EXPECT_LE(found.facetsSorted, 4800);
    EXPECT_EQ(found.temporaryBytes, 40u * static_cast<std::uint64_t>(found.facetsSorted));
}

// Open, with doubled and turned facets and with facets without area: nothing is healed, and ends are joined
// as the ordinary slicer joins those of a part that was not healed.
TEST(StreamSlicer, DamagedPartsAreCutAsTheyAre) {
    TestFolder const folder;
    std::mt19937 random(5);
    shapes::Mesh mesh = shapes::Torus(5, 2, 50, 30);
    for (int i = 0; i < 60; ++i) {
        std::size_t const at = random() % mesh.size();
        switch (i % 4) {
            case 0:
                mesh.erase(mesh.begin() + static_cast<std::ptrdiff_t>(at));
                break;
            case 1:
                mesh.push_back(mesh[at]);
                break;
            case 2:
                mesh[at][0].x += 0.0004f;
                break;
            default: {
                shapes::Corner const& a = mesh[at][0];
                shapes::Corner const& b = mesh[at][1];
                mesh.push_back({a, b, {a.x / 2 + b.x / 2, a.y / 2 + b.y / 2, a.z / 2 + b.z / 2}});
            }
        }
    }
    std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(mesh));
    IntakeSettings asItIs;
    asItIs.heal = false;
    // Not by SlicerInputs: a facet that hangs on nothing may be a body inside out.
    Part const part = Part::Read(file, asItIs);
    Slicer whole({{part.Points(), part.Triangles()}});
    std::vector<Layer> expected;
    SliceReport const ordinary =
        whole.ForEachLayer([&](Layer&& layer) { expected.push_back(std::move(layer)); });
    StreamSlicer slicer(file, Streaming({}, folder));
    ExpectSame(All(slicer), expected);
    EXPECT_GT(ordinary.openPaths + ordinary.gapsClosed, 0);
    EXPECT_EQ(slicer.Report().openPaths, ordinary.openPaths);
    EXPECT_EQ(slicer.Report().gapsClosed, ordinary.gapsClosed);
    EXPECT_EQ(slicer.Report().longestGap, ordinary.longestGap);
    // As it depends on rounding which of them have an area of just nothing.
    EXPECT_GT(slicer.Stream().collinear, 0);
    EXPECT_LE(slicer.Stream().collinear, 15);
}

TEST(StreamSlicer, ABodyInsideOutAmongOthersIsEmptyAndCounted) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(10);
    shapes::Append(mesh, shapes::Moved(InsideOut(shapes::Cube(5)), 20, 0, 0));
    std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(mesh));
    SliceSettings slice;
    slice.layer = 1.0;
    StreamSlicer winding(file, Streaming(slice, folder));
    std::vector<Layer> const layers = All(winding);
    ASSERT_EQ(layers.size(), 10u);
    for (Layer const& layer : layers) EXPECT_DOUBLE_EQ(layer.Area(), 100.0);
    EXPECT_EQ(winding.Stream().insideOutLayers, 5);
    EXPECT_FALSE(winding.Stream().turned);
    All(winding);
    EXPECT_EQ(winding.Stream().insideOutLayers, 5) << "counted anew";
    slice.rule = SolidRule::kOdd;
    StreamSlicer odd(file, Streaming(slice, folder));
    EXPECT_DOUBLE_EQ(odd.NextLayer()->Area(), 125.0);
    EXPECT_EQ(odd.Stream().insideOutLayers, 0);
}

TEST(StreamSlicer, APartInsideOutIsTurnedAsAWhole) {
    TestFolder const folder;
    shapes::Mesh mesh = InsideOut(shapes::Cube(10));
    shapes::Append(mesh, shapes::Moved(InsideOut(shapes::Cube(5)), 20, 0, 0));
    StreamSlicer slicer(folder.Write("part.stl", shapes::ToBinaryStl(mesh)), Streaming({}, folder));
    EXPECT_TRUE(slicer.Stream().turned);
    EXPECT_DOUBLE_EQ(slicer.NextLayer()->Area(), 125.0);
    EXPECT_DOUBLE_EQ(slicer.Report().meshVolume, 1125.0);
}

TEST(StreamSlicer, RangesAreThoseOfTheWhole) {
    TestFolder const folder;
    std::filesystem::path const file =
        folder.Write("part.stl", shapes::ToBinaryStl(shapes::GyroidOfAbout(60000)));
    SliceSettings settings;
    std::vector<Layer> const whole = Ordinary(file, settings);
    auto const count = static_cast<std::int32_t>(whole.size());
    std::int64_t const wholeSorted = StreamSlicer(file, Streaming(settings, folder)).Stream().facetsSorted;
    for (auto const& [first, last] :
         {std::pair{1, 1}, {2, 17}, {18, 18}, {19, count - 1}, {count, count}, {1, count}}) {
        settings.firstLayer = first;
        settings.lastLayer = last;
        StreamSlicer slicer(file, Streaming(settings, folder));
        EXPECT_EQ(slicer.LayerCount(), count);
        std::span<Layer const> const expected = std::span(whole).subspan(
            static_cast<std::size_t>(first - 1), static_cast<std::size_t>(last - first + 1));
        ExpectSame(All(slicer), {expected.begin(), expected.end()});
        std::int64_t const sorted = slicer.Stream().facetsSorted;
        EXPECT_EQ(sorted < wholeSorted, last != count || first != 1);
    }
    settings.firstLayer = 1;
    settings.lastLayer = count + 1;
    EXPECT_THROW(StreamSlicer(file, Streaming(settings, folder)), Error);
}

TEST(StreamSlicer, ScaleAndLongHeadersAreThoseOfAPart) {
    TestFolder const folder;
    std::string bytes = shapes::ToBinaryStl(shapes::Torus(5, 2, 30, 20));
    std::filesystem::path const stl = folder.Write("part.stl", bytes);
    std::filesystem::path const oltp = folder.Write("part.oltp", std::string(256 - 80, ' ') + bytes);
    SliceSettings settings;
    settings.layer = 5.0;
    IntakeSettings intake;
    intake.scale = 25.4;
    StreamSettings streaming = Streaming(settings, folder);
    streaming.scale = 25.4;
    ExpectSame(Streamed(stl, streaming), Ordinary(stl, settings, intake));
    ExpectSame(Streamed(oltp, streaming), Ordinary(oltp, settings, intake));
}

TEST(StreamSlicer, ModelsOneBehindTheOtherAreOnePart) {
    TestFolder const folder;
    std::filesystem::path const file =
        folder.Write("part.stl", shapes::ToBinaryStl(shapes::Torus(5, 2, 30, 20)) +
                                     shapes::ToBinaryStl(shapes::Moved(shapes::Cube(3), 20, 0, 0)));
    SliceSettings settings;
    settings.layer = 0.5;
    StreamSlicer slicer(file, Streaming(settings, folder));
    ExpectSame(All(slicer), Ordinary(file, settings));
    EXPECT_EQ(slicer.Stream().facetsInFile, 1212);
}

TEST(StreamSlicer, LayersCanBeHadAgain) {
    TestFolder const folder;
    std::filesystem::path const file =
        folder.Write("part.stl", shapes::ToBinaryStl(shapes::GyroidOfAbout(30000)));
    StreamSlicer slicer(file, Streaming({}, folder));
    std::vector<Layer> const first = All(slicer);
    slicer.NextLayer();
    slicer.NextLayer();
    ExpectSame(All(slicer), first);
    std::size_t layers = 0;
    EXPECT_THROW(slicer.ForEachLayer([&](Layer&&) {
        if (++layers == 3) throw std::runtime_error("enough");
    }),
                 std::runtime_error);
    StreamSlicer moved = std::move(slicer);
    for (Layer const& layer : first) EXPECT_TRUE(*moved.NextLayer() == layer);
    EXPECT_FALSE(moved.NextLayer().has_value());
    EXPECT_TRUE(*moved.NextLayer() == first[0]);
}

// ---- bad input

template <class Make>
std::string MessageOf(ErrorKind kind, Make const& make) {
    try {
        make();
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), kind) << error.what();
        return error.what();
    }
    ADD_FAILURE() << "no error";
    return {};
}

bool Has(std::string const& text, char const* piece) { return text.find(piece) != std::string::npos; }

TEST(StreamSlicer, FilesThatAreNoBinaryStlAreRefusedByName) {
    TestFolder const folder;
    auto const slice = [&](std::filesystem::path const& file) { StreamSlicer(file, Streaming({}, folder)); };
    auto const content = [&](std::string const& bytes) {
        return MessageOf(ErrorKind::kContent, [&] { slice(folder.Write("part.stl", bytes)); });
    };
    EXPECT_TRUE(Has(content(shapes::ToAsciiStl(shapes::Cube(1))), "is ASCII STL: only binary STL"));
    EXPECT_TRUE(Has(content(""), "is empty"));
    EXPECT_TRUE(Has(content(std::string(84, '\0')), "holds no facets"));
    EXPECT_TRUE(Has(content(std::string(200, '\1')), "announces"));
    EXPECT_TRUE(Has(MessageOf(ErrorKind::kFile, [&] { slice(folder / "none.stl"); }), "no such file"));
    EXPECT_TRUE(Has(MessageOf(ErrorKind::kFile, [&] { slice(folder.Path()); }), "is a folder"));
#if !defined(_WIN32)
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(Has(MessageOf(ErrorKind::kFile, [&] { slice(folder / "pipe"); }), "is no plain file"));
#endif
}

// Cut at every byte of the header and about the ends of records: an error, or what a part makes of it.
TEST(StreamSlicer, CutFilesGiveWhatAPartGives) {
    TestFolder const folder;
    std::string const bytes = shapes::ToBinaryStl(shapes::Cube(1));
    for (std::size_t size = 0; size <= bytes.size() + 60; ++size) {
        std::size_t const beyond = (size + 50 - 84 % 50) % 50;
        if (size > 140 && beyond > 1 && beyond < 49) continue;
        std::string part = bytes.substr(0, size);
        part.resize(size, '\0');
        std::filesystem::path const file = folder.Write("part.stl", part);
        std::string expected;
        std::string got;
        auto const run = [](std::string& message, auto const& make) {
            try {
                make();
            } catch (Error const& error) {
                message = error.what();
            }
        };
        run(expected, [&] { Part::Read(file); });
        run(got, [&] { StreamSlicer(file, Streaming({}, folder)); });
        EXPECT_EQ(got, expected) << size;
    }
}

TEST(StreamSlicer, CornersThatAreNoNumbersAreLeftOutAndCounted) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(10);
    float const bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         -std::numeric_limits<float>::infinity(), 3e38f, -2e10f};
    for (std::size_t i = 0; i < 5; ++i) {
        shapes::Triangle triangle = mesh[i];
        (i % 3 == 0 ? triangle[i % 3].x : i % 3 == 1 ? triangle[i % 3].y : triangle[i % 3].z) = bad[i];
        mesh.push_back(triangle);
    }
    mesh.push_back({mesh[0][0], mesh[0][0], mesh[0][1]});
    StreamSlicer slicer(folder.Write("part.stl", shapes::ToBinaryStl(mesh)), Streaming({}, folder));
    EXPECT_EQ(slicer.Stream().notFinite, 5);
    EXPECT_EQ(slicer.Stream().degenerate, 1);
    EXPECT_EQ(slicer.LayerCount(), 50);
    std::optional<Layer> const layer = slicer.NextLayer();
    ASSERT_EQ(layer->ContourCount(), 1u);
    EXPECT_DOUBLE_EQ(layer->Area(), 100.0);
    EXPECT_EQ(slicer.Report().skippedFacets, 5);

    for (std::size_t i = 0; i + 1 < mesh.size(); ++i) mesh[i][0].x = bad[0];
    std::filesystem::path const nothing = folder.Write("nothing.stl", shapes::ToBinaryStl(mesh));
    EXPECT_TRUE(Has(MessageOf(ErrorKind::kArgument, [&] { StreamSlicer(nothing, Streaming({}, folder)); }),
                    "no height"));
}

TEST(StreamSlicer, SettingsThatMakeNoSenseAreRefused) {
    TestFolder const folder;
    std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(shapes::Cube(10)));
    auto const refused = [&](auto const& change, ErrorKind kind = ErrorKind::kArgument) {
        StreamSettings settings = Streaming({}, folder);
        change(settings);
        return MessageOf(kind, [&] { StreamSlicer(file, settings); });
    };
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.scale = 0.0; }), "scale"));
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.scale = NAN; }), "scale"));
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.sortMemory = 1000; }), "sorting"));
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.slice.layer = -1.0; }), "height of a layer"));
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.slice.layer = 1e-6; }), "too thin"));
    EXPECT_TRUE(Has(refused([](StreamSettings& s) { s.temp /= "none"; }, ErrorKind::kFile), "none"));
}

// ---- the temporary file

std::size_t EntriesOf(std::filesystem::path const& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(StreamSlicer, TheTemporaryFileHasNoNameAndIsGoneHoweverItEnds) {
    TestFolder const folder;
    TestFolder const temp;
    std::filesystem::path const file =
        folder.Write("part.stl", shapes::ToBinaryStl(shapes::GyroidOfAbout(30000)));
    StreamSettings settings = Streaming({}, temp);
#if !defined(_WIN32)
    {
        StreamSlicer slicer(file, settings);
        slicer.NextLayer();
        EXPECT_EQ(EntriesOf(temp.Path()), 0u);
    }
#endif
    for (double const stopAt : {0.0, 0.1, 0.3, 0.5, 0.7, 1.0}) {
        double last = 0.0;
        settings.slice.progress = [&](double share) {
            EXPECT_GE(share, last);
            EXPECT_LE(share, 1.0);
            last = share;
            return share < stopAt;
        };
        MessageOf(ErrorKind::kCancelled, [&] { Streamed(file, settings); });
        EXPECT_EQ(EntriesOf(temp.Path()), 0u);
    }
}

#if !defined(_WIN32)
// A limit of the size of files is as good as a full disk.
TEST(StreamSlicer, AFullDiskIsAnErrorThatLeavesNothing) {
    TestFolder const folder;
    TestFolder const temp;
    std::filesystem::path const file =
        folder.Write("part.stl", shapes::ToBinaryStl(shapes::GyroidOfAbout(60000)));
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit const small{1 << 20, before.rlim_max};
    auto const handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string const message = MessageOf(ErrorKind::kFile, [&] { StreamSlicer(file, Streaming({}, temp)); });
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(Has(message, "a temporary file could not be written")) << message;
    EXPECT_EQ(EntriesOf(temp.Path()), 0u);
}
#endif

}  // namespace
}  // namespace varnet
