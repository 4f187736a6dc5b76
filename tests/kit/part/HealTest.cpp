#include <Varnet64.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "PartChecks.h"
#include "TestFiles.h"

namespace varnet {
namespace {

struct Shape {
    char const* name;
    shapes::Mesh mesh;
};

std::vector<Shape> Shapes() {
    return {{"cube", shapes::Cube(10.0f)},
            {"box off the origin", shapes::Box({-3, 7, 11}, {5, 9, 20})},
            {"bracket", shapes::Bracket()},
            {"ring sphere", shapes::UvSphere(20.0, 17, 32)},
            {"icosphere", shapes::Moved(shapes::IcoSphere(15.0, 3), 100.0f, -50.0f, 7.0f)},
            {"torus", shapes::Torus(20.0, 5.0, 40, 20)},
            {"gyroid", shapes::Gyroid(12)}};
}

// Closed, in each body and in its classic model, with the volume of the shape.
void ExpectWhole(Part const& part, double volume) {
    EXPECT_EQ(part.Report().openEdges, 0);
    EXPECT_EQ(OpenEdgesOf(FacetsOf(part)), 0);
    EXPECT_NEAR(part.Measures().volume, volume, 1e-4 * std::abs(volume));
    for (Body const& body : part.Bodies()) {
        EXPECT_EQ(body.Measures().openEdges, 0);
        std::int64_t refused = -1;
        Part const model(*body.Model(&refused));
        EXPECT_EQ(refused, 0);
        EXPECT_EQ(model.Report().openEdgesExact, 0);
    }
}

TEST(Heal, AWholePartIsNotTouched) {
    for (Shape const& shape : Shapes()) {
        SCOPED_TRACE(shape.name);
        Part const part = PartOf(shape.mesh);
        ExpectWhole(part, part.Measures().volume);
        EXPECT_EQ(FacetsOf(part), FacetsOf(shape.mesh));
        EXPECT_EQ(part.Report().welded + part.Report().split + part.Report().collinearTurned, 0);
    }
}

TEST(Heal, FacetsWithoutAreaAreTakenOut) {
    for (Shape const& shape : Shapes()) {
        double const volume = PartOf(shape.mesh).Measures().volume;
        for (std::size_t every : {1u, 3u, 7u}) {
            SCOPED_TRACE(shape.name);
            shapes::Mesh const mesh = shapes::WithSlivers(shape.mesh, every);
            Part const part = PartOf(mesh);
            EXPECT_EQ(part.Report().openEdgesExact, 0);
            ExpectWhole(part, volume);
            Part const shuffled = PartOf(shapes::Shuffled(mesh, 11));
            ExpectWhole(shuffled, volume);
        }
    }
    // Of a cube the middles are exact: each sliver goes, and takes nothing with it.
    Part const cube = PartOf(shapes::WithSlivers(shapes::Cube(10.0f), 1));
    EXPECT_GT(cube.Report().collinearTurned, 0);
    EXPECT_NEAR(cube.Measures().area, 600.0, 1e-9);
}

TEST(Heal, FacetsBesideTJunctionsAreDivided) {
    for (Shape const& shape : Shapes()) {
        double const volume = PartOf(shape.mesh).Measures().volume;
        for (std::size_t every : {1u, 3u, 7u}) {
            SCOPED_TRACE(shape.name);
            shapes::Mesh const mesh = shapes::WithTJunctions(shape.mesh, every);
            Part const part = PartOf(mesh);
            EXPECT_GT(part.Report().openEdgesExact, 0);
            EXPECT_GT(part.Report().split, 0);
            ExpectWhole(part, volume);
            ExpectWhole(PartOf(shapes::Shuffled(mesh, 5)), volume);
        }
    }
}

TEST(Heal, ManyTJunctionsOnOneEdgeAreAllMet) {
    // A box whose top is one pair of triangles and whose sides are strips with corners of their own.
    for (int n : {1, 2, 5, 50, 400}) {
        shapes::Mesh mesh;
        float const w = 16.0f;
        auto const at = [&](int side, int i, float z) -> shapes::Corner {
            float const s = w * static_cast<float>(i) / static_cast<float>(n);
            if (side == 0) return {s, 0, z};
            if (side == 1) return {w, s, z};
            if (side == 2) return {w - s, w, z};
            return {0, w - s, z};
        };
        for (int side = 0; side < 4; ++side) {
            for (int i = 0; i < n; ++i) {
                mesh.push_back({at(side, i, 0), at(side, i + 1, 0), at(side, i + 1, 4)});
                mesh.push_back({at(side, i, 0), at(side, i + 1, 4), at(side, i, 4)});
            }
        }
        mesh.push_back({at(0, 0, 4), at(1, 0, 4), at(2, 0, 4)});
        mesh.push_back({at(0, 0, 4), at(2, 0, 4), at(3, 0, 4)});
        mesh.push_back({at(0, 0, 0), at(2, 0, 0), at(1, 0, 0)});
        mesh.push_back({at(0, 0, 0), at(3, 0, 0), at(2, 0, 0)});
        Part const part = PartOf(mesh);
        EXPECT_EQ(part.Report().openEdgesExact, n == 1 ? 0 : 8 + 8 * n);
        ExpectWhole(part, 1024.0);
        EXPECT_EQ(part.Report().split, n == 1 ? 0 : 4);
    }
}

// Two solids touch along a line. On each side one facet has the whole line, and two have a part of it each.
TEST(Heal, TJunctionsWhereSolidsTouchAreMet) {
    std::vector<Point3> const points = {{0, 0, 0},  {8, 0, 0},   {2, 6, 0}, {1, 2, 5},
                                        {2, -6, 0}, {1, -2, -5}, {2, 0, 0}, {6, 0, 0}};
    for (std::int32_t const first : {6, 7}) {
        for (std::int32_t const second : {6, 7}) {
            std::vector<Triangle> triangles = {{0, 2, first}, {first, 2, 1},  {0, 1, 3},      {1, 2, 3},
                                               {0, 3, 2},     {0, 4, second}, {second, 4, 1}, {0, 1, 5},
                                               {1, 4, 5},     {0, 5, 4}};
            for (int round = 0; round < 20; ++round) {
                Part const part(points, triangles);
                EXPECT_EQ(part.Report().openEdgesExact, 6);
                // All that is open on the line is divided at all points on it.
                EXPECT_EQ(part.Report().split, first == second ? 2 : 4);
                EXPECT_EQ(part.Triangles().size(), first == second ? 12u : 16u);
                ExpectWhole(part, 80.0);
                EXPECT_EQ(part.Bodies().size(), 2u);
                EXPECT_EQ(FacetsOf(part.AsSliced()), FacetsOf(part));
                std::shuffle(triangles.begin(), triangles.end(), std::mt19937(static_cast<unsigned>(round)));
            }
        }
    }
}

// Facets that are turned are no solids that touch: they come back by a repair, which divides what stops
// midway beside them.
TEST(Heal, TurnedFacetsBesideTJunctionsAreMet) {
    for (Shape const& shape : Shapes()) {
        for (std::size_t const every : {2u, 5u}) {
            SCOPED_TRACE(shape.name);
            shapes::Mesh mesh = shapes::WithTJunctions(shape.mesh, every);
            Part const whole = PartOf(mesh);
            for (std::size_t i = 3; i < mesh.size(); i += 40) std::swap(mesh[i][1], mesh[i][2]);
            Part part = PartOf(mesh);
            EXPECT_GT(part.Report().openEdges, 0);
            RepairReport const report = part.Repair();
            EXPECT_EQ(report.openEdgesAfter, 0);
            EXPECT_EQ(report.doubled, 0);
            EXPECT_EQ(part.Measures().openEdges, 0);
            EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(FacetsOf(whole)));
            EXPECT_EQ(part.Report().split + report.split, whole.Report().split);
        }
    }
}

TEST(Heal, CornersARoundingApartAreJoinedByTheSmallestToleranceThatHelps) {
    struct Case {
        float distance;
        double tolerance;
    };
    for (Case const& c :
         {Case{5e-7f, 1e-6}, Case{5e-6f, 1e-5}, Case{5e-5f, 1e-4}, Case{5e-4f, 1e-3}, Case{5e-3f, 1e-2}}) {
        // Near 0 so that floats can tell such distances.
        Part const part = PartOf(shapes::WithNearCorners(shapes::Box({0, 0, 0}, {1, 1, 1}), 5, c.distance));
        if (c.distance >= 5e-7f) {
            EXPECT_GT(part.Report().openEdgesExact, 0);
            EXPECT_EQ(part.Report().weldTolerance, c.tolerance);
            EXPECT_GT(part.Report().welded, 0);
            ExpectWhole(part, 1.0 + 0 * c.distance);
        }
    }
    Part const far = PartOf(shapes::WithNearCorners(shapes::Cube(10.0f), 36, 0.5f));
    EXPECT_GT(far.Report().openEdges, 0);
    EXPECT_EQ(far.Report().welded, 0);
}

TEST(Heal, WeldByHandJoinsAllCornersWithinIt) {
    IntakeSettings settings;
    settings.weld = 0.6;
    Part const part = PartOf(shapes::WithNearCorners(shapes::Cube(10.0f), 36, 0.5f), settings);
    EXPECT_EQ(part.Points().size(), 8u);
    EXPECT_EQ(part.Report().weldTolerance, 0.6);
    ExpectWhole(part, part.Measures().volume);
    settings.weld = 100.0;
    Part const point = PartOf(shapes::Cube(10.0f), settings);
    EXPECT_TRUE(point.Triangles().empty());
    settings.weld = -1.0;
    EXPECT_THROW(PartOf(shapes::Cube(10.0f), settings), Error);
}

TEST(Heal, WithoutHealingNothingButEqualCornersIsJoined) {
    IntakeSettings settings;
    settings.heal = false;
    for (shapes::Mesh const& mesh :
         {shapes::WithSlivers(shapes::Bracket(), 2), shapes::WithTJunctions(shapes::Bracket(), 2)}) {
        Part const part = PartOf(mesh, settings);
        EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
        EXPECT_EQ(part.Report().openEdges, part.Report().openEdgesExact);
        EXPECT_EQ(part.Report().openEdgesExact, OpenEdgesOf(FacetsOf(mesh)));
    }
}

TEST(Heal, HolesAreNotClosedAndOpenSurfacesNotDivided) {
    shapes::Mesh const mesh = shapes::Without(shapes::IcoSphere(10.0, 2), 40, 3);
    Part const part = PartOf(mesh);
    EXPECT_EQ(part.Report().openEdges, OpenEdgesOf(FacetsOf(mesh)));
    EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
    shapes::Mesh const field = shapes::HeightField(20, 1.0, [](double x, double y) { return 0.1 * x * y; });
    EXPECT_EQ(FacetsOf(PartOf(field)), FacetsOf(field));
}

TEST(Heal, AFacetOnceTooOftenIsLeftOut) {
    shapes::Mesh mesh = shapes::IcoSphere(10.0, 2);
    std::vector<Corners> const facets = FacetsOf(mesh);
    for (std::size_t i = 50; i < 60; ++i) mesh.push_back(mesh[i]);
    Part const part = PartOf(mesh);
    EXPECT_GT(part.Report().openEdgesExact, 0);
    EXPECT_EQ(part.Report().doubled, 10);
    EXPECT_EQ(FacetsOf(part), facets);
    // A whole copy is a shell of its own.
    EXPECT_EQ(PartOf(shapes::Doubled(shapes::Cube(1.0f))).Report().doubled, 0);
}

// Two solids, one in the other, with a facet in common. The other facets on its three sides have two parts of
// a side each in one solid, and a whole side in the other.
TEST(Heal, AFacetThatTwoSolidsNeedIsKept) {
    std::vector<Point3> const points = {{0, 0, 0}, {6, 0, 0}, {0, 6, 0}, {0, 0, 2},
                                        {0, 0, 6}, {3, 0, 0}, {3, 3, 0}, {0, 3, 0}};
    std::vector<Triangle> triangles = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}, {0, 2, 1}, {0, 5, 4},
                                       {5, 1, 4}, {1, 6, 4}, {6, 2, 4}, {2, 7, 4}, {7, 0, 4}};
    for (int round = 0; round < 20; ++round) {
        Part const part(points, triangles);
        EXPECT_EQ(part.Report().openEdgesExact, 9);
        EXPECT_EQ(part.Report().doubled, 0);
        EXPECT_EQ(part.Report().split, 1);
        ExpectWhole(part, 12.0 + 36.0);
        std::shuffle(triangles.begin(), triangles.end(), std::mt19937(static_cast<unsigned>(round)));
    }
}

// Half of a cube is a little beside the other half, and copies of facets lie on either.
TEST(Heal, CopiesOnBothSidesOfACrackAreLeftOut) {
    for (std::size_t first = 0; first < 12; ++first) {
        shapes::Mesh mesh = shapes::Cube(10.0f);
        for (std::size_t i : {4u, 10u, 3u}) mesh.push_back(mesh[i]);
        for (std::size_t i = first; i < mesh.size(); ++i) {
            for (shapes::Corner& corner : mesh[i]) corner.y += 0.002f;
        }
        Part const part = PartOf(mesh);
        EXPECT_EQ(part.Report().doubled, 3) << first;
        EXPECT_EQ(part.Triangles().size(), 12u) << first;
        EXPECT_EQ(part.Report().openEdges, 0);
        EXPECT_NEAR(part.Measures().volume, 1000.0, 0.3) << first;
    }
}

// All facets have corners of their own, and one in three stands there twice.
TEST(Heal, CopiesOfFacetsWithCornersOfTheirOwnAreLeftOut) {
    std::mt19937 random(4);
    shapes::Mesh mesh = shapes::Bracket();
    double const volume = PartOf(mesh).Measures().volume;
    std::size_t const count = mesh.size();
    for (shapes::Triangle& facet : mesh) {
        for (shapes::Corner& corner : facet) corner.x += 1e-5f * static_cast<float>(random() % 7);
    }
    for (std::size_t i = 0; i < count; i += 3) mesh.push_back(mesh[i]);
    Part const part = PartOf(mesh);
    EXPECT_EQ(part.Report().doubled, static_cast<std::int64_t>((count + 2) / 3));
    ExpectWhole(part, volume);
}

// A corner is cut off by a facet of micrometres; then each facet has corners of its own, as far apart.
TEST(Heal, AFacetSmallerThanItsCornersLieApartGoes) {
    std::mt19937 random(9);
    for (int round = 0; round < 50; ++round) {
        double const e = 4e-4;
        std::vector<Point3> const corners = {{e, 0, 0},  {0, e, 0},  {0, 0, e},
                                             {10, 0, 0}, {0, 10, 0}, {0, 0, 10}};
        std::vector<Triangle> const solid = {{0, 1, 2}, {3, 5, 4}, {0, 4, 1}, {0, 3, 4},
                                             {1, 5, 2}, {1, 4, 5}, {2, 3, 0}, {2, 5, 3}};
        Soup soup;
        for (Triangle const& t : solid) {
            auto const n = static_cast<std::int32_t>(soup.points.size());
            for (std::int32_t const corner : t) {
                auto const off = [&random] { return 1e-4 * (static_cast<double>(random() % 5) - 2.0); };
                Point3 const& p = corners[static_cast<std::size_t>(corner)];
                soup.points.push_back({p.x + off(), p.y + off(), p.z + off()});
            }
            soup.triangles.push_back({n, n + 2, n + 1});
        }
        Part const part(soup.points, soup.triangles);
        EXPECT_EQ(part.Report().openEdges, 0) << round;
        EXPECT_NEAR(std::fabs(part.Measures().volume), 1000.0 / 6.0, 0.1) << round;
    }
}

// Loose facets of micrometres, and a rim of short edges, are not joined into nothing.
TEST(Heal, SmallFacetsStayWhereNothingIsClosedWithoutThem) {
    Soup soup;
    for (std::int32_t i = 0; i < 30; ++i) {
        double const x = 3.0 * i;
        soup.points.insert(soup.points.end(), {{x, 0, 0}, {x + 2e-3, 0, 0}, {x, 3e-3, 0}});
        soup.triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    Part const loose(soup.points, soup.triangles);
    EXPECT_EQ(loose.Triangles().size(), 30u);
    EXPECT_EQ(loose.Report().welded, 0);
    // A fan around a middle point, its rim in steps of 5 micrometres.
    Soup fan;
    fan.points.push_back({0, 0, 0});
    for (std::int32_t i = 0; i < 200; ++i) fan.points.push_back({10, 5e-3 * i, 0});
    for (std::int32_t i = 1; i < 200; ++i) fan.triangles.push_back({0, i, i + 1});
    Part const open(fan.points, fan.triangles);
    EXPECT_EQ(open.Triangles().size(), 199u);
    EXPECT_EQ(open.Report().welded, 0);
}

TEST(Heal, SmallFacetsOfAPartInMetresAreLeftAloneAndTold) {
    shapes::Mesh const mesh = shapes::Scaled(shapes::IcoSphere(10.0, 5), 1e-5f);
    Part const part = PartOf(mesh);
    EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
    EXPECT_EQ(part.Report().openEdges, 0);
    EXPECT_EQ(part.Report().collinearTurned, 0);
    EXPECT_GT(part.Report().tiny, 0);
    std::int64_t refused = 0;
    part.Model(&refused);
    EXPECT_EQ(refused, part.Report().tiny);
    ASSERT_FALSE(part.Report().notes.empty());
    IntakeSettings settings;
    settings.scale = 10000.0;
    EXPECT_TRUE(PartOf(mesh, settings).Report().notes.empty());
}

TEST(Heal, EveryClassIsClosedAndStaysSoWhenItIsRepairedAndWritten) {
    shapes::Mesh const sphere = shapes::UvSphere(20.0, 17, 32);
    shapes::Mesh nested = shapes::CubeInCube(true);
    shapes::Append(nested, shapes::Moved(shapes::Cube(4.0f), 12.0f, 12.0f, 12.0f));
    shapes::Mesh inverted = shapes::InsideOut(shapes::CubeInCube(true));
    shapes::Mesh touching = shapes::CubesAtFaceCrossed();
    shapes::Append(touching, shapes::Moved(shapes::Cube(10.0f), 10.0f, 10.0f, 10.0f));
    std::vector<shapes::Mesh> const classes = {
        shapes::WithSlivers(shapes::Bracket(), 2), shapes::WithTJunctions(shapes::Bracket(), 2),
        // Rings of a sphere that has been turned: heights a rounding apart, and y the same up to rounding.
        shapes::Rotated(shapes::Rotated(sphere, 0.7, 0.0), -0.7, 0.0), shapes::Rotated(sphere, 1e-7, 1e-7),
        shapes::Rotated(shapes::Torus(20.0, 5.0, 64, 32), 3.14159265358979, 3.14159265358979), touching,
        nested, inverted, shapes::CubesOverlapping(), shapes::Doubled(sphere),
        shapes::Scaled(shapes::Bracket(), 0.001f),
        shapes::Scaled(shapes::WithSlivers(shapes::Bracket(), 3), 0.001f),
        shapes::Scaled(shapes::WithTJunctions(shapes::Bracket(), 3), 0.001f),
        shapes::Moved(shapes::Gyroid(8), 1000.0f, -2000.0f, 500.0f)};
    TestFolder const folder;
    for (std::size_t i = 0; i < classes.size(); ++i) {
        SCOPED_TRACE(i);
        for (shapes::Mesh const& mesh : {classes[i], shapes::Shuffled(classes[i], 4)}) {
            Part part = PartOf(mesh);
            ExpectWhole(part, part.Measures().volume);
            RepairReport const repair = part.Repair();
            EXPECT_EQ(repair.turned, 0);
            EXPECT_EQ(repair.openEdgesAfter, 0);
            WriteReport const written = part.Write(folder / "a.stl");
            EXPECT_EQ(written.openEdgesAfter, 0);
            EXPECT_EQ(written.facetsAfter, written.facetsBefore);
        }
    }
}

TEST(Heal, APartBelowAMillimetreGetsAHint) {
    Part const part = PartOf(shapes::Box({0, 0, 0}, {0.25f, 0.5f, 0.125f}));
    ASSERT_EQ(part.Report().notes.size(), 1u);
    EXPECT_EQ(part.Report().notes[0],
              "the largest side is 0.5 mm: is the file in metres (a scale of 1000) or inches (25.4)?");
    EXPECT_TRUE(PartOf(shapes::Cube(1.0f)).Report().notes.empty());
}

TEST(Heal, ChainsAndFansOfSliversGoAwayInAnyOrder) {
    // A wall whose upper edge is divided on one side only, the gap filled with slivers in many ways.
    std::mt19937 random(3);
    for (int n = 2; n < 40; ++n) {
        shapes::Mesh mesh = shapes::Cube(16.0f);
        // The edge of two facets of the cube is divided in the first; slivers fill the gap.
        shapes::Triangle const t = mesh[0];
        mesh.erase(mesh.begin());
        std::vector<shapes::Corner> line;
        for (int i = 0; i <= n; ++i) {
            float const s = static_cast<float>(i) / static_cast<float>(n);
            line.push_back({t[0].x + s * (t[1].x - t[0].x), t[0].y + s * (t[1].y - t[0].y),
                            t[0].z + s * (t[1].z - t[0].z)});
        }
        line.back() = t[1];
        for (std::size_t i = 0; i + 1 < line.size(); ++i) mesh.push_back({line[i], line[i + 1], t[2]});
        while (line.size() > 2) {
            std::size_t const i = 1 + random() % (line.size() - 2);
            mesh.push_back({line[i - 1], line[i + 1], line[i]});
            line.erase(line.begin() + static_cast<std::ptrdiff_t>(i));
        }
        Part const part = PartOf(shapes::Shuffled(mesh, static_cast<std::uint32_t>(n)));
        EXPECT_EQ(part.Report().openEdgesExact, 0);
        ExpectWhole(part, 4096.0);
    }
}

TEST(Heal, NoInputMakesMoreOpenEdges) {
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        // Few places for corners: facets back to back, on lines, and many at an edge.
        int const side = 2 + static_cast<int>(random() % 3);
        Soup soup;
        for (int i = 0; i < side * side * side; ++i) {
            soup.points.push_back({1.0 * (i % side), 1.0 * (i / side % side), 1.0 * (i / side / side)});
        }
        auto const count = 1 + random() % 200;
        for (std::size_t i = 0; i < count; ++i) {
            auto const any = [&] { return static_cast<std::int32_t>(random() % soup.points.size()); };
            soup.triangles.push_back({any(), any(), any()});
        }
        Part const part(soup.points, soup.triangles);
        EXPECT_LE(part.Report().openEdges, part.Report().openEdgesExact);
        EXPECT_EQ(part.Report().openEdges, OpenEdgesOf(FacetsOf(part)));
        std::int64_t open = 0;
        for (Body const& body : part.Bodies()) open += body.Measures().openEdges;
        EXPECT_EQ(open, part.Report().openEdges);
    }
}

// A corner half a micron beside the edge of its neighbour divides that, and nothing is joined.
TEST(Heal, WhereNothingIsJoinedThereIsNoToleranceToTell) {
    std::vector<Point3> const points = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}, {5, 0.0005, 0}};
    // The edge from the origin along x is divided in the base alone.
    std::vector<Triangle> const triangles = {{0, 2, 4}, {4, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
    Part const part(points, triangles);
    EXPECT_EQ(part.Report().openEdgesExact, 3);
    EXPECT_EQ(part.Report().openEdges, 0);
    EXPECT_EQ(part.Report().split, 1);
    EXPECT_EQ(part.Report().welded, 0);
    EXPECT_EQ(part.Report().weldTolerance, 0.0);
}

}  // namespace
}  // namespace varnet
