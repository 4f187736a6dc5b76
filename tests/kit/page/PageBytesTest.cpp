// The bytes of packed meshes and layers: by hand, and as a plain writer of the same form makes them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <tuple>

#include "kit/page/Inflated.h"
#include "page/PageLayers.h"
#include "page/PageMesh.h"

namespace varnet {
namespace {

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (int const value : values) bytes.push_back(static_cast<char>(value));
    return bytes;
}

void Number(std::string& bytes, std::uint64_t value) {
    while (value > 127) {
        bytes.push_back(static_cast<char>(value % 128 + 128));
        value /= 128;
    }
    bytes.push_back(static_cast<char>(value));
}

// Steps as differences: 0, -1, 1, -2 as 0, 1, 2, 3, from -32768 to 32767; all low bytes, then all high ones.
std::string Axis(std::vector<int> const& steps) {
    std::string low;
    std::string high;
    int last = 0;
    for (int const step : steps) {
        int delta = (step - last + 65536) % 65536;
        if (delta > 32767) delta -= 65536;
        int const code = delta >= 0 ? 2 * delta : -2 * delta - 1;
        low.push_back(static_cast<char>(code % 256));
        high.push_back(static_cast<char>(code / 256));
        last = step;
    }
    return low + high;
}

int StepOf(double value, double from, double to) {
    return to > from ? static_cast<int>(std::floor((value - from) / (to - from) * 65535.0 + 0.5)) : 0;
}

// Bit by bit, x in the lowest place.
std::uint32_t PlaceOnCurve(std::array<int, 3> const& steps) {
    std::uint32_t place = 0;
    for (unsigned bit = 0; bit < 10; ++bit) {
        for (unsigned axis = 0; axis < 3; ++axis) {
            auto const cell = static_cast<std::uint32_t>(steps[axis]) / 64;
            if ((cell >> bit & 1) != 0) place += 1u << (3 * bit + axis);
        }
    }
    return place;
}

struct Mesh {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    std::vector<std::uint64_t> kinds;
    std::vector<PointPair> open;
    std::vector<PointPair> sharp;
};

std::vector<std::size_t> OrderOf(Mesh const& mesh, Box3 const& box) {
    std::vector<std::tuple<std::uint64_t, std::uint32_t, std::size_t>> keys;
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        Point3 middle;
        for (std::int32_t const corner : mesh.triangles[i]) {
            Point3 const& p = mesh.points[static_cast<std::size_t>(corner)];
            middle = {middle.x + p.x / 3.0, middle.y + p.y / 3.0, middle.z + p.z / 3.0};
        }
        keys.emplace_back(
            mesh.kinds.empty() ? 0 : mesh.kinds[i],
            PlaceOnCurve({StepOf(middle.x, box.min.x, box.max.x), StepOf(middle.y, box.min.y, box.max.y),
                          StepOf(middle.z, box.min.z, box.max.z)}),
            i);
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::size_t> order;
    for (auto const& key : keys) order.push_back(std::get<2>(key));
    return order;
}

std::string PackPlainly(Mesh const& mesh) {
    Box3 box;
    for (Triangle const& t : mesh.triangles) {
        for (std::int32_t const corner : t) box.Add(mesh.points[static_cast<std::size_t>(corner)]);
    }
    std::vector<std::int32_t> used;
    std::string corners;
    for (std::size_t const i : OrderOf(mesh, box)) {
        for (std::int32_t const corner : mesh.triangles[i]) {
            auto const at = std::find(used.begin(), used.end(), corner);
            Number(corners, at == used.end() ? 0 : static_cast<std::uint64_t>(used.end() - at));
            if (at == used.end()) used.push_back(corner);
        }
    }
    std::string bytes;
    for (std::size_t const count :
         {used.size(), mesh.triangles.size(), mesh.open.size(), mesh.sharp.size()}) {
        for (std::size_t const unit :
             {std::size_t{1}, std::size_t{256}, std::size_t{65536}, std::size_t{16777216}})
            bytes.push_back(static_cast<char>(count / unit % 256));
    }
    for (int axis = 0; axis < 3; ++axis) {
        std::vector<int> steps;
        for (std::int32_t const n : used) {
            Point3 const& p = mesh.points[static_cast<std::size_t>(n)];
            steps.push_back(axis == 0   ? StepOf(p.x, box.min.x, box.max.x)
                            : axis == 1 ? StepOf(p.y, box.min.y, box.max.y)
                                        : StepOf(p.z, box.min.z, box.max.z));
        }
        bytes += Axis(steps);
    }
    bytes += corners;
    for (std::vector<PointPair> const* edges : {&mesh.open, &mesh.sharp}) {
        std::vector<std::pair<std::int64_t, std::int64_t>> numbered;
        for (PointPair const& edge : *edges) {
            numbered.emplace_back(std::find(used.begin(), used.end(), edge[0]) - used.begin(),
                                  std::find(used.begin(), used.end(), edge[1]) - used.begin());
        }
        std::sort(numbered.begin(), numbered.end());
        std::int64_t last = 0;
        for (auto const& [from, to] : numbered) {
            Number(bytes, static_cast<std::uint64_t>(from - last));
            Number(bytes, static_cast<std::uint64_t>(to >= from ? 2 * (to - from) : 2 * (from - to) - 1));
            last = from;
        }
    }
    return bytes;
}

std::string Pack(Mesh const& mesh) {
    return PackMesh(mesh.points, mesh.triangles, mesh.kinds, mesh.open, mesh.sharp).bytes;
}

TEST(PageMesh, TwoTrianglesAreTheseBytes) {
    // The second one's middle is nearer to the lower corner of the box.
    Mesh mesh;
    mesh.points = {{10, 10, 0}, {0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {77, 77, 77}};
    mesh.triangles = {{0, 3, 2}, {1, 2, 3}};
    mesh.open = {{0, 3}, {2, 0}, {1, 2}, {3, 1}};
    mesh.sharp = {{3, 2}};
    // Points in the order in which they come: 1 at (0, 0), 2 at (65535, 0), 3 at (0, 65535), 0 at the other
    // end. A difference of 65535 is -1, and one of -65535 is 1.
    EXPECT_EQ(Pack(mesh), Bytes({4, 0, 0, 0, 2, 0, 0, 0, 4, 0, 0, 0, 1, 0, 0, 0,  //
                                 0, 1, 2, 1, 0, 0, 0, 0,                          // x
                                 0, 0, 1, 0, 0, 0, 0, 0,                          // y
                                 0, 0, 0, 0, 0, 0, 0, 0,                          // z
                                 0, 0, 0, 0, 2, 3,                                // 1 2 3, 0 3 2
                                 0, 2, 1, 4, 1, 3, 1, 1,  // 0 to 1, 1 to 3, 2 to 0, 3 to 2
                                 2, 1}));                 // 2 to 1
    EXPECT_EQ(Pack(mesh), PackPlainly(mesh));
}

TEST(PageMesh, RandomMeshesAreTheBytesThatAPlainWriterMakes) {
    std::mt19937 random(17);
    for (int round = 0; round < 40; ++round) {
        std::uniform_real_distribution<double> place(-40.0, 60.0);
        Mesh mesh;
        auto const count = 3 + random() % 400;
        for (std::size_t i = 0; i < count; ++i)
            mesh.points.push_back({place(random), place(random), round % 5 == 0 ? 1.0 : place(random)});
        auto const corner = [&] { return static_cast<std::int32_t>(random() % count); };
        for (std::size_t i = 0; i < count; ++i) mesh.triangles.push_back({corner(), corner(), corner()});
        if (round % 2 == 0) {
            for (std::size_t i = 0; i < count; ++i) mesh.kinds.push_back(random() % 3);
        }
        // Edges between points that triangles use.
        auto const used = [&] { return mesh.triangles[random() % count][random() % 3]; };
        for (std::size_t i = 0; i < count / 2; ++i) {
            mesh.open.push_back({used(), used()});
            mesh.sharp.push_back({used(), used()});
        }
        ASSERT_EQ(Pack(mesh), PackPlainly(mesh)) << round;
    }
}

TEST(PageMesh, TrianglesAtOnePlaceKeepTheirOrderAndRunsTheirKinds) {
    Mesh mesh;
    mesh.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.triangles = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 1, 2}};
    mesh.kinds = {9, 2, 9, 2};
    PackedMesh const packed = PackMesh(mesh.points, mesh.triangles, mesh.kinds, {}, {});
    ASSERT_EQ(packed.runs.size(), 2u);
    EXPECT_EQ(packed.runs[0].kind, 2u);
    EXPECT_EQ(packed.runs[0].triangles, 2u);
    EXPECT_EQ(packed.runs[1].kind, 9u);
    EXPECT_EQ(packed.runs[1].triangles, 2u);
    EXPECT_EQ(packed.bytes, PackPlainly(mesh));
    EXPECT_EQ(packed.box.min, (Point3{0, 0, 0}));
    EXPECT_EQ(packed.box.max, (Point3{1, 1, 0}));
    EXPECT_EQ(PackMesh(mesh.points, {}, {}, {}, {}).box.min, (Point3{0, 0, 0}));
    EXPECT_EQ(PackMesh(mesh.points, {}, {}, {}, {}).box.max, (Point3{0, 0, 0}));
}

TEST(PageLayers, AChunkIsTheseBytes) {
    Layer layer;
    layer.AddContour(std::vector<Point2>{{0, 0}, {4, 0}, {4, 2}, {0, 2}}, {});
    layer.AddContour(std::vector<Point2>{{1, 1}, {2, 1}, {2, 2}}, {true, 0, 1, 1});
    Contour open;
    open.closed = false;
    open.id = 1000;
    layer.AddContour(std::vector<Point2>{{0, 1}, {4, 1}}, open);
    open.id = 999;
    layer.AddContour(std::vector<Point2>{{4, 0}}, open);
    layer.AddChain(std::vector<Stroke>{{{0, 0}, {4, 0}}, {{4, 2}, {0, 2}}}, 999);
    layer.AddChain(std::vector<Stroke>{{{2, 0}, {2, 2}}}, 1000);
    Layer next;
    next.AddChain(std::vector<Stroke>{{{7, 5}, {9, 5}}}, 3);
    LayerPacker packer;
    packer.Add(layer);
    packer.Add(next);
    packer.Finish();
    ASSERT_EQ(packer.Chunks().size(), 1u);
    int const all = 65535;
    int const quarter = 16384;                                                         // 16383.75
    int const half = 32768;                                                            // 32767.5
    std::string expected = Bytes({11, 0, 0, 0, 18, 0, 0, 0,                            //
                                  4, 8 * 4 + 1, 8 * 3 + 1 + 2, 8 * 2 + 4, 8, 2, 4, 3,  //
                                  0, 1, 2});
    // Each layer begins from 0: a difference is taken to that.
    std::vector<int> x = {0, all, all, 0, quarter, half, half, 0, all, all, 0, all, all, 0, half, half};
    std::vector<int> y = {0, 0, all, all, half, half, all, half, half, 0, 0, 0, all, all, 0, all};
    std::string const xs = Axis(x);
    std::string const ys = Axis(y);
    auto const withNext = [](std::string const& axis, std::string const& second) {
        std::size_t const n = axis.size() / 2;
        std::size_t const m = second.size() / 2;
        return axis.substr(0, n) + second.substr(0, m) + axis.substr(n) + second.substr(m);
    };
    expected += withNext(xs, Axis({0, all})) + withNext(ys, Axis({0, 0}));
    EXPECT_EQ(Inflated(packer.Chunks()[0]), expected);
}

TEST(PageLayers, AChunkEndsWithTheLayerThatGivesIt32768Points) {
    for (std::size_t const count : {32767u, 32768u, 32769u}) {
        Layer ring;
        ring.AddContour(std::vector<Point2>(count, Point2{1, 1}), {});
        Layer small;
        small.AddContour(std::vector<Point2>(1, Point2{1, 1}), {});
        LayerPacker packer;
        packer.Add(ring);
        EXPECT_EQ(packer.Chunks().size(), count < 32768 ? 0u : 1u) << count;
        packer.Add(small);
        packer.Add(small);
        packer.Finish();
        EXPECT_EQ(packer.Layers()[1].chunk, count < 32768 ? 0u : 1u) << count;
        EXPECT_EQ(packer.Layers()[2].chunk, 1u) << count;
        EXPECT_EQ(packer.Chunks().size(), 2u) << count;
    }
}

TEST(PageLayers, PointsUpToTenMillionKilometresAreDrawn) {
    double const most = 1e10;
    double const more = std::nextafter(most, HUGE_VAL);
    for (double const sign : {1.0, -1.0}) {
        for (double const value : {most, more}) {
            Layer layer;
            layer.number = 7;
            layer.z = 1.5;
            layer.AddContour(std::vector<Point2>{{0, 0}, {sign * value, 0}}, {});
            layer.AddContour(std::vector<Point2>{{0, sign * value}}, {});
            layer.AddChain(std::vector<Stroke>{{{0, 0}, {0, sign * value}}, {{sign * value, 0}, {0, 0}}}, 1);
            LayerPacker packer;
            packer.Add(layer);
            PageLayer const& about = packer.Layers().front();
            EXPECT_EQ(about.points, value == most ? 7u : 1u);
            EXPECT_EQ(about.contours, value == most ? 2u : 1u);
            EXPECT_EQ(about.strokes, value == most ? 2u : 0u);
            EXPECT_EQ(about.number, 7);
            EXPECT_EQ(about.z, 1.5);
        }
    }
}

TEST(PageLayers, TheTravelGoesOnFromTheLayerBefore) {
    LayerPacker packer;
    Layer first;
    first.AddChain(std::vector<Stroke>{{{3, 4}, {3, 8}}}, 1);
    Layer second;
    second.AddChain(std::vector<Stroke>{{{15, 13}, {0, 0}}}, 1);
    packer.Add(first);
    packer.Add(second);
    EXPECT_DOUBLE_EQ(packer.Layers()[0].travel, 5.0);
    EXPECT_DOUBLE_EQ(packer.Layers()[1].travel, 13.0);
    packer.Finish();
    EXPECT_EQ(packer.Chunks().size(), 1u);
    LayerPacker none;
    none.Finish();
    EXPECT_TRUE(none.Chunks().empty());
}

}  // namespace
}  // namespace varnet
