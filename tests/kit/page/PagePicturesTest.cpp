// The pictures that a page holds: of large parts and layers less is drawn.

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "kit/part/PartChecks.h"
#include "page/PagePart.h"
#include "varnet/Picture.h"

namespace varnet {
namespace {

std::vector<Point2> Ring(std::size_t points, double radius) {
    std::vector<Point2> ring;
    for (std::size_t i = 0; i < points; ++i) {
        double const angle = 6.0 * static_cast<double>(i) / static_cast<double>(points);
        ring.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return ring;
}

TEST(LayerPicture, Of12000PointsAllIsDrawnAndOfMoreContoursAlone) {
    for (std::size_t const points : {11998u, 11999u}) {
        Layer contours;
        contours.AddContour(Ring(points, 10), {});
        Layer layer = contours;
        layer.AddChain(std::vector<Stroke>{{{-5, 0}, {5, 0}}}, kFillId);
        EXPECT_TRUE(LayerPicture(layer, "a") == PictureOf(points == 11998 ? layer : contours, "a")) << points;
    }
}

TEST(LayerPicture, OfContoursThoseThatFitInto12000PointsAreDrawn) {
    Contour hole;
    hole.level = 1;
    Layer layer;
    layer.AddContour(Ring(7000, 10), {});
    layer.AddContour(Ring(5001, 8), hole);
    layer.AddContour(Ring(5000, 6), hole);
    layer.AddContour(Ring(1, 4), {});
    Layer drawn;
    drawn.AddContour(Ring(7000, 10), {});
    drawn.AddContour(Ring(5000, 6), hole);
    EXPECT_TRUE(LayerPicture(layer, "a") == PictureOf(drawn, "a"));
}

std::string PictureOfPart(Part const& part, std::string const& name) {
    PicturedMesh mesh;
    mesh.points = part.Points();
    mesh.triangles = part.Triangles();
    return PictureOf(std::span(&mesh, 1), name);
}

// Of the points in each of 48 cells an axis the first one stands for all.
std::string PictureOfCells(Part const& part, std::string const& name) {
    Box3 const& box = part.Measures().box;
    auto const cell = [](double value, double min, double max) {
        return static_cast<int>(std::round((value - min) / (max - min) * 65535.0)) * 48 / 65536;
    };
    std::map<std::array<int, 3>, std::int32_t> numbers;
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    for (Triangle const& t : part.Triangles()) {
        Triangle joined;
        for (std::size_t k = 0; k < 3; ++k) {
            Point3 const& p = part.Points()[static_cast<std::size_t>(t[k])];
            auto const [it, isNew] =
                numbers.emplace(std::array{cell(p.x, box.min.x, box.max.x), cell(p.y, box.min.y, box.max.y),
                                           cell(p.z, box.min.z, box.max.z)},
                                static_cast<std::int32_t>(points.size()));
            if (isNew) points.push_back(p);
            joined[k] = it->second;
        }
        if (joined[0] != joined[1] && joined[1] != joined[2] && joined[2] != joined[0])
            triangles.push_back(joined);
    }
    EXPECT_LE(triangles.size(), 4000u);
    EXPECT_LT(triangles.size(), part.Triangles().size());
    PicturedMesh mesh;
    mesh.points = points;
    mesh.triangles = triangles;
    return PictureOf(std::span(&mesh, 1), name);
}

TEST(PartPicture, OfMoreThan4000FacetsPointsNearEachOtherAreOne) {
    // Cubes of twelve facets, side by side, and a tetrahedron of four.
    auto const mesh = [](int cubes) {
        shapes::Mesh many;
        for (int i = 0; i < cubes; ++i) {
            auto const x = static_cast<float>(3 * (i % 19));
            auto const y = static_cast<float>(3 * (i / 19));
            shapes::Append(many, shapes::Moved(shapes::Cube(1.0f), x, y, 0));
        }
        shapes::Corner const a{60, 0, 0};
        shapes::Corner const b{61, 0, 0};
        shapes::Corner const c{60, 1, 0};
        shapes::Corner const d{60, 0, 1};
        for (shapes::Triangle const& t : shapes::Mesh{{a, c, b}, {a, b, d}, {b, c, d}, {c, a, d}})
            many.push_back(t);
        return many;
    };
    Part const most = PartOf(mesh(333));
    ASSERT_EQ(most.Triangles().size(), 4000u);
    EXPECT_TRUE(PartPicture(most, {"parts", nullptr, nullptr}) == PictureOfPart(most, "parts"));
    Part const more = PartOf(mesh(334));
    EXPECT_TRUE(PartPicture(more, {"parts", nullptr, nullptr}) == PictureOfCells(more, "parts"));
}

TEST(PartPicture, OfNothingThereIsNone) { EXPECT_EQ(PartPicture(Part(), {"nothing", nullptr, nullptr}), ""); }

TEST(PartPicture, SupportsAreOfGlassAsFarAsTheyHave4000Facets) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(4.0f), 20, 0, 5));
    Part const part = PartOf(mesh);
    Supports const supports(part);
    ASSERT_EQ(supports.Solids().size(), 1u);
    std::vector<PicturedMesh> meshes(2);
    meshes[0].points = part.Points();
    meshes[0].triangles = part.Triangles();
    meshes[1].points = supports.Solids()[0].points;
    meshes[1].triangles = supports.Solids()[0].triangles;
    meshes[1].color = 0xE0A030;
    meshes[1].opacity = 0.4;
    EXPECT_TRUE(PartPicture(part, {"held", &supports, nullptr}) == PictureOf(meshes, "held"));
}

// Squares that look down, each with a solid below it: as many solids are drawn as have 4000 facets together.
TEST(PartPicture, OfManySupportsThoseThatFitInto4000FacetsAreDrawn) {
    shapes::Mesh const square{{{{0, 0, 5}, {0, 4, 5}, {4, 0, 5}}}, {{{4, 4, 5}, {4, 0, 5}, {0, 4, 5}}}};
    shapes::Mesh mesh = shapes::Cube(10.0f);
    auto const hang = [&](std::size_t n) {
        shapes::Append(mesh, shapes::Moved(square, 20.0f * static_cast<float>(n), 0, 0));
    };
    hang(1);
    std::size_t const each = Supports(PartOf(mesh)).Solids()[0].triangles.size();
    std::size_t const fit = 4000 / each;
    ASSERT_EQ(fit * each, 4000u);
    for (std::size_t n = 2; n <= fit + 1; ++n) hang(n);
    Part const part = PartOf(mesh);
    Supports const supports(part);
    ASSERT_EQ(supports.Solids().size(), fit + 1);
    std::vector<PicturedMesh> meshes(1);
    meshes[0].points = part.Points();
    meshes[0].triangles = part.Triangles();
    for (std::size_t i = 0; i < fit; ++i) {
        SupportSolid const& solid = supports.Solids()[i];
        ASSERT_EQ(solid.triangles.size(), each);
        meshes.push_back({solid.points, solid.triangles, 0xE0A030, {}, 0.4});
    }
    EXPECT_TRUE(PartPicture(part, {"held", &supports, nullptr}) == PictureOf(meshes, "held"));
}

}  // namespace
}  // namespace varnet
