// Where the facets of a picture lie, in which colour and in which order, against a turn and a tilt of the
// part by their angles.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

#include "varnet/Picture.h"

namespace varnet {
namespace {

double InRadians(double degrees) { return degrees * std::numbers::pi / 180.0; }

// A point as it is seen: to the right, upward, and towards the eye. The part is turned by 48 degrees about
// its upright axis, then tilted by 24 towards the eye, which looks along y.
Point3 Seen(Point3 const& p) {
    double const turn = InRadians(48.0);
    double const tilt = InRadians(24.0);
    double const x = p.x * std::cos(turn) + p.y * std::sin(turn);
    double const y = p.y * std::cos(turn) - p.x * std::sin(turn);
    return {x, y * std::sin(tilt) + p.z * std::cos(tilt), p.z * std::sin(tilt) - y * std::cos(tilt)};
}

// The facets of a picture as they are drawn: six coordinates each, and the colour.
struct Drawn {
    std::vector<std::array<double, 6>> facets;
    std::vector<std::string> colors;
    double width = 0.0;
    double height = 0.0;
};

Drawn ParsedOf(std::string const& svg) {
    Drawn drawn;
    std::sscanf(svg.c_str() + svg.find("viewBox"), "viewBox=\"0 0 %lf %lf\"", &drawn.width, &drawn.height);
    std::string const start = "<path d=\"M";
    for (std::size_t at = svg.find(start); at != std::string::npos; at = svg.find(start, at + 1)) {
        std::array<double, 6> c{};
        char color[8] = {};
        EXPECT_EQ(std::sscanf(svg.c_str() + at, "<path d=\"M%lf %lfL%lf %lf %lf %lfz\" color=\"%7s", &c[0],
                              &c[1], &c[2], &c[3], &c[4], &c[5], color),
                  7);
        drawn.facets.push_back(c);
        drawn.colors.emplace_back(color);
    }
    return drawn;
}

struct Mesh {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    std::uint32_t color = 0xFFFFFF;
    double opacity = 1.0;
};

Drawn Picture(std::vector<Mesh> const& meshes) {
    std::vector<PicturedMesh> pictured;
    for (Mesh const& mesh : meshes)
        pictured.push_back({mesh.points, mesh.triangles, mesh.color, {}, mesh.opacity});
    return ParsedOf(PictureOf(pictured, "test"));
}

TEST(MeshPicture, CornersLieWhereTheTurnedAndTiltedPartHasThem) {
    Mesh const mesh{{{1, -2, 0.5}, {7, 1, 2}, {3, 4, 6}, {-4, 0, 3}}, {{0, 1, 2}, {0, 2, 3}}};
    Drawn const drawn = Picture({mesh});
    Box2 box;
    for (Point3 const& p : mesh.points) box.Add({Seen(p).x, Seen(p).y});
    double const longest = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
    double const scale = 624.0 / longest;
    EXPECT_NEAR(drawn.width, (box.max.x - box.min.x) * scale + 16.0, 0.051);
    EXPECT_NEAR(drawn.height, (box.max.y - box.min.y) * scale + 16.0, 0.051);
    ASSERT_EQ(drawn.facets.size(), 2u);
    for (Triangle const& t : mesh.triangles) {
        std::array<double, 6> expected{};
        for (std::size_t k = 0; k < 3; ++k) {
            Point3 const seen = Seen(mesh.points[static_cast<std::size_t>(t[k])]);
            expected[2 * k] = (seen.x - box.min.x) * scale + 8.0;
            expected[2 * k + 1] = (box.max.y - seen.y) * scale + 8.0;
        }
        auto const isIt = [&expected](std::array<double, 6> const& facet) {
            for (std::size_t k = 0; k < 6; ++k) {
                if (std::fabs(facet[k] - expected[k]) > 0.051) return false;
            }
            return true;
        };
        EXPECT_EQ(std::count_if(drawn.facets.begin(), drawn.facets.end(), isIt), 1);
    }
}

// Of a facet that looks up, along -y, and along x: light comes from the eye, from above and from the left.
TEST(MeshPicture, FacetsAreShadedByTheLightFromAboveAndTheLeft) {
    double const turn = InRadians(48.0);
    double const tilt = InRadians(24.0);
    // The directions to the right and towards the eye, of unit length.
    Point3 const right{std::cos(turn), std::sin(turn), 0.0};
    Point3 const eye{std::cos(tilt) * std::sin(turn), -std::cos(tilt) * std::cos(turn), std::sin(tilt)};
    Point3 const light{eye.x - right.x / 2, eye.y - right.y / 2, eye.z + 0.9};
    double const length = std::hypot(light.x, light.y, light.z);
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    struct Facet {
        Triangle corners;
        double lit;  // the cosine of its angle with the light
    };
    for (Facet const& facet : {Facet{{0, 1, 2}, light.z / length}, Facet{{0, 1, 3}, -light.y / length},
                               Facet{{0, 2, 3}, light.x / length}}) {
        Drawn const drawn = Picture({{points, {facet.corners}, 0xFFC080}});
        ASSERT_EQ(drawn.colors.size(), 1u);
        double const share = 0.42 + 0.58 * std::max(facet.lit, 0.0);
        char expected[8];
        std::snprintf(expected, sizeof expected, "#%02x%02x%02x", static_cast<unsigned>(255 * share),
                      static_cast<unsigned>(192 * share), static_cast<unsigned>(128 * share));
        EXPECT_EQ(drawn.colors[0], expected);
    }
}

TEST(MeshPicture, WhatLooksAwayIsNotDrawn) {
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    EXPECT_EQ(Picture({{points, {{0, 1, 2}}}}).facets.size(), 1u);
    EXPECT_EQ(Picture({{points, {{0, 2, 1}}}}).facets.size(), 0u);
}

// Two facets, one above the other as they are seen.
TEST(MeshPicture, WhatIsNearerIsDrawnLater) {
    std::vector<Point3> const low{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}};
    std::vector<Point3> const high{{0, 0, 1}, {10, 0, 1}, {0, 10, 1}};
    Mesh const lower{low, {{0, 1, 2}}, 0xFF0000};
    Mesh const upper{high, {{0, 1, 2}}, 0x00FF00};
    for (auto const& meshes : {std::vector<Mesh>{lower, upper}, std::vector<Mesh>{upper, lower}}) {
        Drawn const drawn = Picture(meshes);
        ASSERT_EQ(drawn.colors.size(), 2u);
        EXPECT_EQ(drawn.colors[0].substr(3), "0000");
        EXPECT_EQ(drawn.colors[1].substr(1, 2), "00");
    }
}

// A stack of many, in any order.
TEST(MeshPicture, AStackIsDrawnFromBelow) {
    std::vector<Mesh> stack;
    for (std::uint32_t const i : {5u, 2u, 7u, 0u, 4u, 6u, 1u, 3u}) {
        double const z = i;
        stack.push_back({{{0, 0, z}, {20, 0, z}, {0, 20, z}}, {{0, 1, 2}}, 0x10 + 0x20 * i});
    }
    Drawn const drawn = Picture(stack);
    ASSERT_EQ(drawn.colors.size(), 8u);
    EXPECT_TRUE(std::is_sorted(drawn.colors.begin(), drawn.colors.end()));
}

TEST(MeshPicture, OfFacetsInOnePlaneTheOneThatHidesMoreIsDrawnLater) {
    std::vector<Point3> const points{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}};
    Mesh const solid{points, {{0, 1, 2}}, 0xFF0000};
    Mesh const glass{points, {{0, 1, 2}}, 0x00FF00, 0.4};
    for (auto const& meshes : {std::vector<Mesh>{solid, glass}, std::vector<Mesh>{glass, solid}}) {
        Drawn const drawn = Picture(meshes);
        ASSERT_EQ(drawn.colors.size(), 2u);
        EXPECT_EQ(drawn.colors[1].substr(3), "0000");
    }
}

// The middle of a pixel decides, and a facet of a thousandth of a pixel has none.
TEST(MeshPicture, AFacetOverNoPixelIsNotDrawn) {
    std::vector<Point3> const points{{0, 0, 0}, {10, 0, 0},      {0, 10, 0},
                                     {8, 8, 0}, {8.00001, 8, 0}, {8, 8.00001, 0}};
    EXPECT_EQ(Picture({{points, {{0, 1, 2}, {3, 4, 5}}, 0xFF0000}}).colors.size(), 1u);
    std::vector<Point3> larger = points;
    larger[4].x = larger[5].y = 9.0;
    EXPECT_EQ(Picture({{larger, {{0, 1, 2}, {3, 4, 5}}, 0xFF0000}}).colors.size(), 2u);
}

// Long facets a fifth of a pixel high, or wide, between the middles of pixels and over them. A pixel is a
// 900th of the 640 units of the longer side.
TEST(MeshPicture, AFacetBetweenTheMiddlesOfPixelsIsNotDrawn) {
    constexpr double kPixel = 640.0 / 900;
    std::vector<Point3> const base{{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
    std::array<double, 6> const at = Picture({{base, {{0, 1, 2}}, 0xFF0000}}).facets[0];
    double const bx = at[2] - at[0], by = at[3] - at[1], cx = at[4] - at[0], cy = at[5] - at[1];
    // What lies at a place of the picture, in the plane of the large facet.
    auto const under = [&](double x, double y) {
        double const u = ((x - at[0]) * cy - (y - at[1]) * cx) / (bx * cy - by * cx);
        double const v = ((y - at[1]) * bx - (x - at[0]) * by) / (bx * cy - by * cx);
        return Point3{100 * u, 100 * v, 0};
    };
    double const middleX = std::floor((at[0] + at[2] + at[4]) / 3 / kPixel) * kPixel;
    double const middleY = std::floor((at[1] + at[3] + at[5]) / 3 / kPixel) * kPixel;
    for (bool const isHigh : {false, true}) {
        for (double const offset : {0.0, 0.25, 0.5, 0.75}) {
            double const low = (offset - 0.1) * kPixel;
            double const high = (offset + 0.1) * kPixel;
            auto const place = [&](double along, double across) {
                return isHigh ? under(middleX + across, middleY + along)
                              : under(middleX + along, middleY + across);
            };
            std::vector<Point3> points = base;
            for (Point3 const& p : {place(0, low), place(30, low), place(0, high)}) points.push_back(p);
            Point3 const& a = points[3];
            bool const isTurned =
                (points[4].x - a.x) * (points[5].y - a.y) < (points[4].y - a.y) * (points[5].x - a.x);
            if (isTurned) std::swap(points[4], points[5]);
            Drawn const drawn = Picture({{points, {{0, 1, 2}, {3, 4, 5}}, 0xFF0000}});
            EXPECT_EQ(drawn.facets.size(), offset == 0.5 ? 2u : 1u) << offset << (isHigh ? " high" : " wide");
        }
    }
}

// Two facets that meet in an edge along y, the second one bent down from the first.
TEST(MeshPicture, AnEdgeIsDrawnFrom25DegreesOn) {
    auto const lines = [](double degrees) {
        double const bend = InRadians(degrees);
        std::vector<Point3> const points{
            {0, 0, 0}, {0, 5, 0}, {-5, 0, 0}, {5 * std::cos(bend), 0, -5 * std::sin(bend)}};
        std::vector<Triangle> const triangles{{0, 1, 2}, {1, 0, 3}};
        PicturedMesh mesh;
        mesh.points = points;
        mesh.triangles = triangles;
        std::string const svg = PictureOf(std::span(&mesh, 1), "fold");
        std::size_t count = 0;
        std::string const start = "<path class=\"e\" d=\"";
        for (std::size_t at = svg.find(start); at != std::string::npos; at = svg.find(start, at + 1)) {
            std::string const way = svg.substr(at, svg.find("/>", at) - at);
            count += static_cast<std::size_t>(std::count(way.begin(), way.end(), 'M'));
        }
        return count;
    };
    // Each facet has two sides at the rim.
    EXPECT_EQ(lines(24.9), 4u);
    EXPECT_EQ(lines(25.1), 6u);
}

// Of an edge of three facets the first one tells: two that rise and fall by 24 degrees from it do not bend.
TEST(MeshPicture, AnEdgeOfThreeFacetsIsJudgedByTheFirst) {
    double const bend = InRadians(24.0);
    double const x = 5 * std::cos(bend);
    double const z = 5 * std::sin(bend);
    std::vector<Point3> const points{{0, 0, 0}, {0, 5, 0}, {-5, 0, 0}, {x, 0, -z}, {x, 0, z}};
    auto const lines = [&points](std::vector<Triangle> const& triangles) {
        PicturedMesh mesh;
        mesh.points = points;
        mesh.triangles = triangles;
        std::string const svg = PictureOf(std::span(&mesh, 1), "fan");
        std::size_t count = 0;
        std::string const start = "<path class=\"e\" d=\"";
        for (std::size_t at = svg.find(start); at != std::string::npos; at = svg.find(start, at + 1)) {
            std::string const way = svg.substr(at, svg.find("/>", at) - at);
            count += static_cast<std::size_t>(std::count(way.begin(), way.end(), 'M'));
        }
        return count;
    };
    EXPECT_EQ(lines({{0, 1, 2}, {1, 0, 3}, {1, 0, 4}}), 6u);
    EXPECT_EQ(lines({{1, 0, 3}, {0, 1, 2}, {1, 0, 4}}), 9u);
}

TEST(MeshPicture, FacetsHaveTheirOwnColoursAsFarAsThereAreAny) {
    std::vector<Point3> const points{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {20, 0, 0}, {30, 0, 0}, {20, 10, 0}};
    std::vector<Triangle> const triangles{{0, 1, 2}, {3, 4, 5}};
    std::vector<std::uint32_t> const colors{0xFF0000};
    PicturedMesh mesh;
    mesh.points = points;
    mesh.triangles = triangles;
    mesh.colors = colors;
    mesh.color = 0x00FF00;
    Drawn drawn = ParsedOf(PictureOf(std::span(&mesh, 1), "two"));
    ASSERT_EQ(drawn.colors.size(), 2u);
    std::sort(drawn.colors.begin(), drawn.colors.end());
    EXPECT_EQ(drawn.colors[0].substr(0, 3), "#00");
    EXPECT_EQ(drawn.colors[1].substr(3), "0000");
}

}  // namespace
}  // namespace varnet
