// What a page says of a part, and which edges it draws.

#include "page/PagePart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "kit/page/Inflated.h"
#include "kit/part/PartChecks.h"
#include "part/FlatMesh.h"
#include "support/Mushroom.h"

namespace varnet {
namespace {

bool Holds(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

// Points, triangles, open edges and sharp edges of a packed mesh.
std::array<std::uint32_t, 4> CountsOf(PackedPart const& packed, std::size_t chunk = 0) {
    std::string const bytes = Inflated(packed.chunks.at(chunk));
    std::array<std::uint32_t, 4> counts{};
    for (std::size_t i = 0; i < 16; ++i)
        counts[i / 4] |= std::uint32_t{static_cast<unsigned char>(bytes.at(i))} << (8 * (i % 4));
    return counts;
}

using Counts = std::array<std::uint32_t, 4>;

TEST(PackPart, OfACubeTheTwelveEdgesAreSharp) {
    PackedPart const packed = PackPart(PartOf(shapes::Cube(8.0f)), {"a cube", nullptr, nullptr}, 5, {});
    ASSERT_EQ(packed.chunks.size(), 1u);
    EXPECT_EQ(CountsOf(packed), (Counts{8, 12, 0, 12}));
    for (char const* const words : {R"("name":"a cube")", R"("box":[0,0,0,8,8,8])",
                                    R"("facets":12,"points":8,"area":384,"volume":512,)",
                                    R"("open":0,"surfaces":0,"chunk":5,"runs":[0,0,16777215,12])",
                                    R"("bodies":[[12,512,0,0]],"bodyCount":1})"})
        EXPECT_TRUE(Holds(packed.about, words)) << packed.about;
    EXPECT_FALSE(Holds(packed.about, "supports"));
}

TEST(PackPart, OpenEdgesAreThoseWithoutAnOtherSide) {
    shapes::Mesh mesh = shapes::Cube(8.0f);
    mesh.pop_back();
    PackedPart const packed = PackPart(PartOf(mesh), {}, 0, {});
    // Two of its edges were sharp, and one was a diagonal.
    EXPECT_EQ(CountsOf(packed), (Counts{8, 11, 3, 10}));
    EXPECT_TRUE(Holds(packed.about, R"("open":3)"));
    // Where four facets meet, each edge is that of two: cubes at a face have their own.
    EXPECT_EQ(CountsOf(PackPart(PartOf(shapes::CubesAtFace()), {}, 0, {})), (Counts{12, 24, 0, 24}));
}

// A level facet and one beside it that rises by `rise` over `run`.
Part Hinge(double run, double rise) {
    std::vector<Point3> const points = {{0, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {run, 0, rise}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {1, 0, 3}};
    return Part(points, triangles);
}

TEST(PackPart, EdgesAreSharpWhereTheCosineIsBelow0_9063) {
    auto const sharp = [](double run, double rise) {
        return CountsOf(PackPart(Hinge(run, rise), {}, 0, {}))[3];
    };
    auto const cosine = [](double run, double rise) {
        Point3 const normal = Cross(Point3{0, -1, 0}, Point3{run, -1, rise});
        return (1.0 / Length(normal) * normal).z;
    };
    double const slope = std::tan(std::acos(0.9063));
    EXPECT_EQ(sharp(1.0, slope * 0.9999), 0u);
    EXPECT_EQ(sharp(1.0, slope * 1.0001), 1u);
    EXPECT_EQ(sharp(1.0, -slope * 0.9999), 0u);
    EXPECT_EQ(sharp(1.0, -slope * 1.0001), 1u);
    // At the limit to the bit.
    double run = 1.0;
    for (int i = 0; i < 100000 && cosine(run, run * slope) != 0.9063; ++i) run += 1.0 / 1048576.0;
    ASSERT_EQ(cosine(run, run * slope), 0.9063);
    EXPECT_EQ(sharp(run, run * slope), 0u);
}

// Tetrahedra side by side, in arrays.
Part Tetrahedra(int count) {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    for (int i = 0; i < count; ++i) {
        double const x = 2.0 * (i % 256);
        double const y = 2.0 * (i / 256);
        auto const n = static_cast<std::int32_t>(points.size());
        points.insert(points.end(), {{x, y, 0}, {x + 1, y, 0}, {x, y + 1, 0}, {x, y, 1}});
        triangles.insert(triangles.end(),
                         {{n, n + 2, n + 1}, {n, n + 1, n + 3}, {n, n + 3, n + 2}, {n + 1, n + 2, n + 3}});
    }
    return Part(points, triangles);
}

TEST(PackPart, BodiesBeyond200AreOneKind) {
    for (int const count : {200, 201, 203}) {
        PackedPart const packed = PackPart(Tetrahedra(count), {}, 0, {});
        std::string runs = "\"runs\":[";
        for (int i = 0; i < std::min(count, 200); ++i) runs += std::to_string(i) + ",0,16777215,4,";
        if (count > 200) runs += "200,0,16777215," + std::to_string(4 * (count - 200)) + ",";
        runs.back() = ']';
        EXPECT_TRUE(Holds(packed.about, runs)) << count;
        EXPECT_TRUE(Holds(packed.about, "\"bodyCount\":" + std::to_string(count)));
        std::size_t const bodies = packed.about.find("\"bodies\":");
        auto const listed =
            std::count(packed.about.begin() + static_cast<std::ptrdiff_t>(bodies), packed.about.end(), '[');
        EXPECT_EQ(listed, 1 + std::min(count, 200));
    }
}

TEST(PackPart, OfMoreThan300000SharpEdgesNoneAreDrawn) {
    EXPECT_EQ(CountsOf(PackPart(Tetrahedra(50000), {}, 0, {})), (Counts{200000, 200000, 0, 300000}));
    EXPECT_EQ(CountsOf(PackPart(Tetrahedra(50001), {}, 0, {})), (Counts{200004, 200004, 0, 0}));
}

TEST(PackPart, WhatHangsAndWhatHoldsItIsSaid) {
    // A foot on the plate, and a board at its side that hangs.
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {10, 10, 10});
    shapes::Append(mesh, shapes::Box({20, 0, 8}, {30, 10, 10}));
    Part const part = PartOf(mesh);
    Supports const supports(part);
    ASSERT_EQ(supports.Solids().size(), 1u);
    PackedPart const packed = PackPart(part, {"", &supports, nullptr}, 7, {});
    ASSERT_EQ(packed.chunks.size(), 2u);
    EXPECT_TRUE(
        Holds(packed.about, R"("runs":[0,0,16777215,10,0,1,16777215,2,1,0,16777215,10,1,2,16777215,2])"))
        << packed.about;
    EXPECT_TRUE(Holds(packed.about, R"("supports":{"regions":2,"supported":1,"edges":0,"solids":1,)"
                                    R"("box":[20,0,0,30,10,8],"chunk":8}})"))
        << packed.about;
    EXPECT_EQ(CountsOf(packed, 1)[1], supports.Solids()[0].triangles.size());
}

TEST(PackPart, SurfacesGiveTheirColours) {
    Part const part = PartOf(shapes::Cube(8.0f));
    Surfaces surfaces(part);
    ASSERT_EQ(surfaces.all.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) surfaces.all[i].color = 10 * static_cast<std::uint32_t>(i) + 1;
    PackedPart const packed = PackPart(part, {"", nullptr, &surfaces}, 0, {});
    EXPECT_TRUE(
        Holds(packed.about,
              R"("surfaces":6,"chunk":0,"runs":[0,0,1,2,0,0,11,2,0,0,21,2,0,0,31,2,0,0,41,2,0,0,51,2])"))
        << packed.about;
}

// How many edges hang, how many points each has, and their coordinates as floats.
TEST(PackPart, HangingEdgesHaveAChunkAheadOfTheSolids) {
    shapes::Mesh mesh = shapes::Moved(Keel(), 0, 0, 3);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 20, 0, 0));
    Part const part = PartOf(mesh);
    Supports const supports(part);
    ASSERT_EQ(supports.Edges().size(), 1u);
    ASSERT_EQ(supports.Edges()[0].points.size(), 2u);
    PackedPart const packed = PackPart(part, {"", &supports, nullptr}, 4, {});
    ASSERT_EQ(packed.chunks.size(), 3u);
    EXPECT_TRUE(Holds(packed.about, R"("edges":1,"solids":1,"edgesChunk":5,"box":)")) << packed.about;
    EXPECT_TRUE(Holds(packed.about, R"("chunk":6}})")) << packed.about;
    std::string expected;
    auto const add = [&expected](auto value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        expected.append(bytes, sizeof value);
    };
    add(std::uint32_t{1});
    add(std::uint32_t{2});
    for (Point3 const& p : supports.Edges()[0].points) {
        for (double const value : {p.x, p.y, p.z}) add(static_cast<float>(value));
    }
    EXPECT_EQ(Inflated(packed.chunks[1]), expected);
    EXPECT_EQ(CountsOf(packed, 2)[1], supports.Solids()[0].triangles.size());
}

}  // namespace
}  // namespace varnet
