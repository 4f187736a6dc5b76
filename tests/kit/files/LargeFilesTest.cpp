// Files of more than 2 and 4 GB: sparse ones, which take no place on disk, and output that goes nowhere.

#include <gtest/gtest.h>

#if !defined(_WIN32)

#include <sys/stat.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "Shapes.h"
#include "TestFiles.h"
#include "varnet/Part.h"
#include "varnet/SliceFile.h"
#include "varnet/StreamSlicer.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

// Puts pieces at places of a file, with holes between them; false where the disk does not do that.
class SparseFile {
public:
    explicit SparseFile(fs::path path) : m_Path(std::move(path)) {
        m_File.open(m_Path, std::ios::binary | std::ios::trunc);
    }
    void Put(std::uint64_t place, std::string const& bytes) {
        m_File.seekp(static_cast<std::streamoff>(place));
        m_File << bytes;
    }
    bool Finish() {
        m_File.close();
        struct stat status {};
        if (!m_File || stat(m_Path.c_str(), &status) != 0) return false;
        constexpr std::int64_t kBlock = 512;
        constexpr std::int64_t kFew = 1 << 24;
        return kBlock * status.st_blocks < kFew;
    }
    fs::path const& Path() const { return m_Path; }

private:
    fs::path m_Path;
    std::ofstream m_File;
};

template <class Number>
std::string BytesOf(Number number) {
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

// A part beyond the first 2 GB of an STL file. What is before it are records of zeros, which are no facets.
TEST(LargeFiles, AnStlBeyondTwoGigabytesIsReadToItsEnd) {
    TestFolder const folder;
    std::string const cube = shapes::ToBinaryStl(shapes::Cube(10)).substr(84);
    constexpr std::uint64_t kBefore = 43'000'000;
    static_assert(84 + 50 * kBefore > std::uint64_t{1} << 31);
    SparseFile file(folder / "large.stl");
    file.Put(80, BytesOf(static_cast<std::uint32_t>(kBefore + 12)));
    file.Put(84 + 50 * kBefore, cube);
    if (!file.Finish()) GTEST_SKIP() << "the disk has no room for sparse files";

    StreamSettings settings;
    settings.temp = folder.Path();
    settings.slice.layer = 1.0;
    StreamSlicer slicer(file.Path(), settings);
    EXPECT_EQ(slicer.Stream().facetsRead, static_cast<std::int64_t>(kBefore) + 12);
    EXPECT_EQ(slicer.Stream().degenerate, static_cast<std::int64_t>(kBefore));
    EXPECT_EQ(slicer.LayerCount(), 10);
    EXPECT_DOUBLE_EQ(slicer.NextLayer()->Area(), 100.0);
}

// A layer of a binary slice file before and one beyond 4 GB of layers of very long paths.
class LargeSlices : public ::testing::Test {
protected:
    static constexpr std::int32_t kPoints = 280'000'000;
    static constexpr int kLong = 2;

    static std::string LayerAt(float z) { return BytesOf(std::uint16_t{127}) + BytesOf(z); }
    static std::string Path(std::int32_t points) {
        return BytesOf(std::uint16_t{130}) + BytesOf(std::int32_t{1}) + BytesOf(std::int32_t{1}) +
               BytesOf(points);
    }
    static std::string Triangle(float side) {
        std::string bytes = Path(4);
        for (float const number : {0.0f, 0.0f, side, 0.0f, 0.0f, side, 0.0f, 0.0f}) bytes += BytesOf(number);
        return bytes;
    }
    static std::string Header(int layers) {
        return "$$HEADERSTART\n$$BINARY\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/" + std::to_string(layers) +
               "\n$$HEADEREND";
    }
    // A triangle, the long paths, a triangle.
    bool Make(fs::path const& path) {
        SparseFile file(path);
        std::string const start = Header(kLong + 2) + LayerAt(1.0f) + Triangle(3.0f);
        file.Put(0, start);
        std::uint64_t place = start.size();
        for (int i = 0; i < kLong; ++i) {
            std::string const head = LayerAt(2.0f + static_cast<float>(i)) + Path(kPoints);
            file.Put(place, head);
            place += head.size() + std::uint64_t{8} * kPoints;
        }
        last = place;
        file.Put(place, LayerAt(2.0f + kLong) + Triangle(5.0f));
        return file.Finish();
    }

    TestFolder folder;
    std::uint64_t last = 0;
};

TEST_F(LargeSlices, LayersBeyondFourGigabytesAreFound) {
    if (!Make(folder / "large.cli")) GTEST_SKIP() << "the disk has no room for sparse files";
    ASSERT_GT(last, std::uint64_t{1} << 32);
    SliceFile const slices(folder / "large.cli");
    EXPECT_EQ(slices.LayerCount(), kLong + 2);
    EXPECT_EQ(slices.Size(), slices.GeometryEnd());
    EXPECT_GT(slices.GeometryEnd(), last);
    EXPECT_DOUBLE_EQ(slices.LayerAt(1).Area(), 4.5);
    Layer const layer = slices.LayerAt(kLong + 2);
    EXPECT_DOUBLE_EQ(layer.z, 4.0);
    EXPECT_DOUBLE_EQ(layer.Area(), 12.5);
}

TEST_F(LargeSlices, ACutBeyondFourGigabytesIsNamedByItsByte) {
    if (!Make(folder / "large.cli")) GTEST_SKIP() << "the disk has no room for sparse files";
    fs::resize_file(folder / "large.cli", last + 8);
    SliceReadSettings settings;
    settings.partial = true;
    SliceFile const slices(folder / "large.cli", settings);
    ASSERT_TRUE(slices.Report().broken.has_value());
    EXPECT_NE(slices.Report().broken->find("byte " + std::to_string(last + 6)), std::string::npos)
        << *slices.Report().broken;
}

TEST(LargeFiles, SlicesOfMoreThanTwoGigabytesAreWritten) {
    if (!fs::is_character_file("/dev/null")) GTEST_SKIP() << "there is no /dev/null";
    std::vector<Point2> points(4'000'000);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = {static_cast<double>(i % 1024), static_cast<double>(i % 7)};
    }
    Layer layer;
    layer.AddContour(points, Contour{});
    constexpr int kLayers = 70;
    SliceWriter writer("/dev/null", kLayers, {});
    for (int i = 1; i <= kLayers; ++i) {
        layer.number = i;
        layer.z = i;
        writer.Write(layer);
    }
    writer.Finish();
    EXPECT_EQ(writer.LayersWritten(), kLayers);
    // Each point has two floats, and the first of a contour stands again at its end.
    EXPECT_GT(writer.BytesWritten(), std::uint64_t{kLayers} * 8 * 4'000'000);
    EXPECT_LT(writer.BytesWritten(), std::uint64_t{kLayers} * 8 * 4'000'001 + 10'000);
    EXPECT_GT(writer.BytesWritten(), std::uint64_t{1} << 31);
}

}  // namespace
}  // namespace varnet

#endif
