#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "page/PageLayers.h"
#include "page/PageMesh.h"

namespace varnet {
namespace {

/// Reads what DeltaAxis and AddVarint wrote, plainly.
class Reader {
public:
    explicit Reader(std::string const& bytes) : m_Bytes(bytes) {}
    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int shift : {0, 8, 16, 24}) word |= Byte(m_At++) << shift;
        return word;
    }
    std::uint64_t Varint() {
        std::uint64_t value = 0;
        for (int shift = 0;; shift += 7) {
            std::uint32_t const byte = Byte(m_At++);
            value |= std::uint64_t{byte & 127} << shift;
            if (byte < 128) return value;
        }
    }
    std::int64_t Signed() {
        auto const value = static_cast<std::int64_t>(Varint());
        return value % 2 == 0 ? value / 2 : -(value + 1) / 2;
    }
    std::vector<int> Axis(std::size_t count) {
        std::vector<int> values;
        int last = 0;
        for (std::size_t i = 0; i < count; ++i) {
            int const code = static_cast<int>(Byte(m_At + i) + 256 * Byte(m_At + count + i));
            last = (last + (code % 2 == 0 ? code / 2 : -(code + 1) / 2) + 131072) % 65536;
            values.push_back(last);
        }
        m_At += 2 * count;
        return values;
    }
    bool AtEnd() const { return m_At == m_Bytes.size(); }

private:
    std::uint32_t Byte(std::size_t i) const { return static_cast<unsigned char>(m_Bytes.at(i)); }
    std::string const& m_Bytes;
    std::size_t m_At = 0;
};

using Corners = std::array<Point3, 3>;

struct Unpacked {
    std::vector<Corners> triangles;
    std::vector<std::array<Point3, 2>> edges;
};

Unpacked Unpack(PackedMesh const& mesh) {
    Reader reader(mesh.bytes);
    std::size_t const points = reader.Word();
    std::size_t const triangles = reader.Word();
    std::array<std::size_t, 2> const edges = {reader.Word(), reader.Word()};
    auto const x = reader.Axis(points);
    auto const y = reader.Axis(points);
    auto const z = reader.Axis(points);
    auto const at = [&](std::size_t i) {
        auto const value = [](double from, double to, int step) {
            return from + (to - from) * step / 65535.0;
        };
        return Point3{value(mesh.box.min.x, mesh.box.max.x, x.at(i)),
                      value(mesh.box.min.y, mesh.box.max.y, y.at(i)),
                      value(mesh.box.min.z, mesh.box.max.z, z.at(i))};
    };
    Unpacked unpacked;
    std::size_t used = 0;
    for (std::size_t t = 0; t < triangles; ++t) {
        Corners corners;
        for (Point3& corner : corners) {
            std::uint64_t const back = reader.Varint();
            corner = at(back == 0 ? used++ : used - back);
        }
        unpacked.triangles.push_back(corners);
    }
    EXPECT_EQ(used, points);
    for (std::size_t const count : edges) {
        for (std::size_t e = 0, from = 0; e < count; ++e) {
            from += reader.Varint();
            unpacked.edges.push_back({at(from), at(from + static_cast<std::size_t>(reader.Signed()))});
        }
    }
    EXPECT_TRUE(reader.AtEnd());
    return unpacked;
}

bool IsNear(Point3 const& a, Point3 const& b, double within) {
    return std::fabs(a.x - b.x) <= within && std::fabs(a.y - b.y) <= within && std::fabs(a.z - b.z) <= within;
}

TEST(PageMesh, TrianglesComeBackByKindWithinAStepOfTheBox) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(-40.0, 60.0);
    std::vector<Point3> points;
    for (int i = 0; i < 200; ++i) points.push_back({place(random), place(random), place(random)});
    std::vector<Triangle> triangles;
    std::vector<std::uint64_t> kinds;
    for (int i = 0; i < 500; ++i) {
        auto const corner = [&] { return static_cast<std::int32_t>(random() % points.size()); };
        triangles.push_back({corner(), corner(), corner()});
        kinds.push_back(random() % 3 * 10);
    }
    PackedMesh const mesh = PackMesh(points, triangles, kinds, {}, {});
    ASSERT_EQ(mesh.runs.size(), 3u);
    std::size_t first = 0;
    Unpacked const unpacked = Unpack(mesh);
    std::vector<bool> taken(triangles.size(), false);
    for (PackedMesh::Run const& run : mesh.runs) {
        EXPECT_EQ(run.triangles, static_cast<std::size_t>(std::count(kinds.begin(), kinds.end(), run.kind)));
        for (std::size_t t = first; t < first + run.triangles; ++t) {
            // The naive way: some triangle of that kind that nobody had yet has these corners, in this order.
            bool found = false;
            for (std::size_t i = 0; i < triangles.size() && !found; ++i) {
                if (taken[i] || kinds[i] != run.kind) continue;
                found = true;
                for (std::size_t k = 0; k < 3; ++k) {
                    Point3 const& p = points[static_cast<std::size_t>(triangles[i][k])];
                    found = found && IsNear(unpacked.triangles[t][k], p, 100.0 / 65535.0);
                }
                taken[i] = found;
            }
            EXPECT_TRUE(found) << t;
        }
        first += run.triangles;
    }
    EXPECT_EQ(first, triangles.size());
}

TEST(PageMesh, EdgesComeBack) {
    std::vector<Point3> const points = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}, {1, 2, 4}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {2, 1, 3}};
    std::vector<PointPair> const open = {{0, 1}, {2, 0}};
    std::vector<PointPair> const sharp = {{1, 2}};
    Unpacked const unpacked = Unpack(PackMesh(points, triangles, {}, open, sharp));
    ASSERT_EQ(unpacked.edges.size(), 3u);
    auto const has = [&](Point3 const& a, Point3 const& b, std::size_t from, std::size_t to) {
        return std::any_of(unpacked.edges.begin() + static_cast<std::ptrdiff_t>(from),
                           unpacked.edges.begin() + static_cast<std::ptrdiff_t>(to),
                           [&](auto const& e) { return IsNear(e[0], a, 1e-9) && IsNear(e[1], b, 1e-9); });
    };
    EXPECT_TRUE(has(points[0], points[1], 0, 2));
    EXPECT_TRUE(has(points[2], points[0], 0, 2));
    EXPECT_TRUE(has(points[1], points[2], 2, 3));
}

TEST(PageMesh, AMeshWithoutTrianglesIsFourZeros) {
    EXPECT_EQ(PackMesh({}, {}, {}, {}, {}).bytes, std::string(16, '\0'));
}

Layer SquareAndStrokes() {
    Layer layer;
    layer.number = 4;
    layer.z = 0.8;
    std::vector<Point2> const square = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    layer.AddContour(square, {});
    Contour way;
    way.closed = false;
    std::vector<Point2> const path = {{2, 2}, {3, 2}};
    layer.AddContour(path, way);
    std::vector<Stroke> const strokes = {{{1, 1}, {9, 1}}, {{9, 2}, {1, 2}}};
    layer.AddChain(strokes, kFillId);
    layer.AddChain(std::span(strokes).first(1), kSupportId);
    return layer;
}

TEST(PageLayers, ALayerIsDescribedAndItsPointsAreWithinAStepOfItsBox) {
    LayerPacker packer;
    packer.Add(SquareAndStrokes());
    packer.Finish();
    ASSERT_EQ(packer.Layers().size(), 1u);
    PageLayer const& about = packer.Layers().front();
    EXPECT_EQ(about.number, 4);
    EXPECT_EQ(about.contours, 1u);
    EXPECT_EQ(about.openPaths, 1u);
    EXPECT_EQ(about.strokes, 2u);
    EXPECT_EQ(about.supportStrokes, 1u);
    EXPECT_EQ(about.points, 12u);
    EXPECT_DOUBLE_EQ(about.contourLength, 41.0);
    EXPECT_DOUBLE_EQ(about.strokeLength, 24.0);
    EXPECT_DOUBLE_EQ(about.area, 100.0);
    // From (0, 0) to (2, 2), from (3, 2) to (1, 1), from (9, 1) to (9, 2), from (1, 2) to (1, 1).
    EXPECT_NEAR(about.travel, std::sqrt(8.0) + std::sqrt(5.0) + 2.0, 1e-12);
}

TEST(PageLayers, PointsThatAreNoneAreLeftOut) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Layer layer = SquareAndStrokes();
    std::vector<Point2> const bad = {{nan, 0}, {5, 5}, {1e300, 5}, {6, 5}, {6, 6}};
    layer.AddContour(bad, {});
    std::vector<Stroke> const strokes = {{{0, 0}, {std::numeric_limits<double>::infinity(), 0}}};
    layer.AddChain(strokes, kFillId);
    LayerPacker packer;
    packer.Add(layer);
    PageLayer const& about = packer.Layers().front();
    EXPECT_EQ(about.points, 15u);
    EXPECT_EQ(about.strokes, 2u);
    EXPECT_EQ(about.box.max, (Point2{10, 10}));
}

TEST(PageLayers, LayersShareChunksUpToASize) {
    LayerPacker packer;
    Layer small = SquareAndStrokes();
    std::vector<Point2> const ring(40000, Point2{1, 1});
    Layer large;
    large.AddContour(ring, {});
    for (Layer const* layer : {&small, &small, &large, &small}) packer.Add(*layer);
    packer.Finish();
    packer.Finish();
    std::vector<std::size_t> chunks;
    for (PageLayer const& layer : packer.Layers()) chunks.push_back(layer.chunk);
    EXPECT_EQ(chunks, (std::vector<std::size_t>{0, 0, 0, 1}));
    EXPECT_EQ(packer.Chunks().size(), 2u);
}

}  // namespace
}  // namespace varnet
