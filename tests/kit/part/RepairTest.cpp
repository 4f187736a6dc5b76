#include <Varnet64.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "PartChecks.h"
#include "TestFiles.h"

namespace varnet {
namespace {

TEST(Repair, AClosedPartWhoseFacetsAgreeIsNotChanged) {
    for (shapes::Mesh const& mesh :
         {shapes::Bracket(), shapes::CubesAtFace(), shapes::CubesAtEdge(), shapes::CubeInCube(true),
          shapes::CubeInCube(false), shapes::InsideOut(shapes::Cube(10.0f)),
          shapes::Doubled(shapes::Cube(10.0f)), shapes::CubesOverlapping(),
          shapes::Shuffled(shapes::Gyroid(12), 2)}) {
        Part part = PartOf(mesh);
        RepairReport const report = part.Repair(Filling(1e6));
        EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
        EXPECT_EQ(report.turned + report.facetsAdded + report.openEdgesBefore + report.openEdgesAfter, 0);
    }
}

TEST(Repair, ThoseThatContradictTheirShellAreTurnedAndNoOthers) {
    std::mt19937 random(2);
    for (shapes::Mesh const& mesh :
         {shapes::Cube(10.0f), shapes::Bracket(), shapes::IcoSphere(10.0, 3), shapes::CubeInCube(true)}) {
        for (int round = 0; round < 20; ++round) {
            shapes::Mesh damaged = mesh;
            std::int64_t turned = 0;
            std::size_t const shellSize = mesh.size() == 24 ? 12 : mesh.size();
            std::vector<std::size_t> inShell(mesh.size() / shellSize);
            for (std::size_t i = 0; i < damaged.size(); ++i) {
                if (random() % 3 != 0 || 2 * ++inShell[i / shellSize] >= shellSize) continue;
                std::swap(damaged[i][1], damaged[i][2]);
                ++turned;
            }
            Part part = PartOf(damaged);
            std::int64_t const before = OpenEdgesOf(FacetsOf(damaged));
            RepairReport const report = part.Repair();
            EXPECT_EQ(report.turned, turned);
            EXPECT_EQ(report.openEdgesBefore, before);
            EXPECT_EQ(report.openEdgesAfter, 0);
            EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
        }
    }
}

TEST(Repair, OneFacetTurnedAtAnEdgeOfFourIsFound) {
    for (std::size_t i = 0; i < 24; ++i) {
        for (shapes::Mesh const& mesh : {shapes::CubesAtEdge(), shapes::CubesAtFace()}) {
            shapes::Mesh damaged = mesh;
            std::swap(damaged[i][1], damaged[i][2]);
            Part part = PartOf(damaged);
            RepairReport const report = part.Repair();
            EXPECT_EQ(report.openEdgesAfter, 0) << i;
            EXPECT_LE(report.turned, 1);
        }
    }
}

TEST(Repair, OfTwoEqualSidesTheFirstFacetsWins) {
    // Half of the facets of an octahedron, all alike.
    Soup soup;
    soup.points = {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (std::int32_t i = 0; i < 4; ++i) soup.triangles.push_back({i, (i + 1) % 4, 4});
    for (std::int32_t i = 0; i < 4; ++i) soup.triangles.push_back({i, (i + 1) % 4, 5});
    Part part(soup.points, soup.triangles);
    RepairReport const report = part.Repair();
    EXPECT_EQ(report.turned, 4);
    EXPECT_EQ(report.openEdgesAfter, 0);
    EXPECT_EQ(part.Triangles()[0], (Triangle{0, 1, 2}));
    EXPECT_GT(part.Measures().volume, 0.0);
    std::reverse(soup.triangles.begin(), soup.triangles.end());
    Part other(soup.points, soup.triangles);
    other.Repair();
    EXPECT_LT(other.Measures().volume, 0.0);
}

// The areas count where the numbers are equal alone.
TEST(Repair, TheSideOfMoreFacetsWinsHoweverSmallTheyAre) {
    for (bool const isFirst : {true, false}) {
        Soup soup;
        soup.points = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {5, -0.1, 0}, {5.1, 5.1, 0}};
        // A large facet that is turned, and two small ones on its sides.
        std::vector<Triangle> const small = {{1, 0, 3}, {2, 1, 4}};
        soup.triangles = small;
        soup.triangles.insert(isFirst ? soup.triangles.begin() : soup.triangles.end(), Triangle{0, 2, 1});
        Part part(soup.points, soup.triangles);
        ASSERT_EQ(part.Triangles().size(), 3u);
        RepairReport const report = part.Repair();
        EXPECT_EQ(report.turned, 1);
        EXPECT_EQ(report.openEdgesAfter, 5);
        for (std::size_t i = 0; i < 3; ++i) {
            Triangle const& t = part.Triangles()[i];
            Point3 const& a = part.Points()[static_cast<std::size_t>(t[0])];
            Point3 const& b = part.Points()[static_cast<std::size_t>(t[1])];
            Point3 const& c = part.Points()[static_cast<std::size_t>(t[2])];
            EXPECT_GT((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x), 0.0) << i;
        }
    }
}

TEST(Repair, OfTwoSidesOfAsManyFacetsTheLargerOneWins) {
    for (double const below : {0.5, 0.99, 1.01, 3.0}) {
        Soup soup;
        soup.points = {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -below}};
        // Away from the origin, too.
        for (Point3& p : soup.points) p = {p.x + 7, p.y - 5, p.z + 30};
        // Those above face outward, those below inward.
        for (std::int32_t i = 0; i < 4; ++i) soup.triangles.push_back({i, (i + 1) % 4, 4});
        for (std::int32_t i = 0; i < 4; ++i) soup.triangles.push_back({i, (i + 1) % 4, 5});
        Part part(soup.points, soup.triangles);
        EXPECT_EQ(part.Repair().turned, 4);
        EXPECT_EQ(part.Measures().volume > 0.0, below < 1.0) << below;
    }
}

TEST(Repair, ASurfaceWithoutAnOutsideIsLeftWithNoMoreOpenEdges) {
    // A band of n squares with half a twist.
    for (int n : {5, 8, 30}) {
        Soup soup;
        for (int i = 0; i < n; ++i) {
            double const a = 2 * 3.14159265358979 * i / n;
            for (int s : {-1, 1}) {
                double const r = 10 + s * std::cos(a / 2);
                soup.points.push_back({r * std::cos(a), r * std::sin(a), s * std::sin(a / 2)});
            }
        }
        for (std::int32_t i = 0; i < n; ++i) {
            bool const last = i == n - 1;
            std::int32_t const a = 2 * i;
            std::int32_t const b = 2 * i + 1;
            std::int32_t const c = last ? 1 : 2 * i + 2;
            std::int32_t const d = last ? 0 : 2 * i + 3;
            soup.triangles.push_back({a, c, d});
            soup.triangles.push_back({a, d, b});
        }
        Part part(soup.points, soup.triangles);
        RepairReport const report = part.Repair();
        EXPECT_LE(report.openEdgesAfter, report.openEdgesBefore);
        EXPECT_EQ(report.openEdgesAfter, OpenEdgesOf(FacetsOf(part)));
    }
}

TEST(Repair, WholeBodiesAreTurnedOnlyWhereThatIsAskedFor) {
    shapes::Mesh mesh = shapes::InsideOut(shapes::Cube(10.0f));
    shapes::Append(mesh, shapes::Moved(shapes::CubeInCube(true), 100.0f, 0.0f, 0.0f));
    Part part = PartOf(mesh);
    EXPECT_EQ(part.Repair().bodiesTurned, 0);
    EXPECT_NEAR(part.Measures().volume, 25000.0, 1e-6);
    RepairSettings settings;
    settings.outward = true;
    EXPECT_EQ(part.Repair(settings).bodiesTurned, 1);
    EXPECT_NEAR(part.Measures().volume, 27000.0, 1e-6);
    EXPECT_TRUE(part.Bodies()[2].IsCavity());

    // A cavity of the first body stays one, and the body behind it is turned.
    shapes::Mesh other = shapes::CubeInCube(true);
    shapes::Append(other, shapes::Moved(shapes::InsideOut(shapes::Cube(10.0f)), 100.0f, 0.0f, 0.0f));
    Part behind = PartOf(other);
    EXPECT_EQ(behind.Repair(settings).bodiesTurned, 1);
    EXPECT_NEAR(behind.Measures().volume, 27000.0, 1e-6);
    EXPECT_TRUE(behind.Bodies()[1].IsCavity());

    // A body that is inside out takes its cavity with it, and leaves a smaller one beside it as it is.
    shapes::Mesh whole = shapes::InsideOut(shapes::CubeInCube(true));
    shapes::Append(whole, shapes::Moved(shapes::Cube(10.0f), 100.0f, 0.0f, 0.0f));
    Part inverted = PartOf(whole);
    EXPECT_EQ(inverted.Repair(settings).bodiesTurned, 2);
    EXPECT_NEAR(inverted.Measures().volume, 27000.0, 1e-6);
    EXPECT_TRUE(inverted.Bodies()[1].IsCavity());
    EXPECT_EQ(inverted.Repair(settings).bodiesTurned, 0);
}

TEST(Repair, NoInputMakesMoreOpenEdges) {
    std::mt19937 random(6);
    for (int round = 0; round < 300; ++round) {
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
        Part part(soup.points, soup.triangles);
        RepairReport const report = part.Repair(round % 2 == 0 ? RepairSettings() : Filling(100.0));
        EXPECT_EQ(report.openEdgesBefore, part.Report().openEdgesExact);
        EXPECT_LE(report.openEdgesAfter, report.openEdgesBefore);
        EXPECT_EQ(report.openEdgesAfter, OpenEdgesOf(FacetsOf(part)));
    }
}

TEST(Repair, WhatIsStoppedIsLeftAsItWas) {
    shapes::Mesh const mesh = shapes::WithTurned(shapes::Bracket(), 3);
    Part part = PartOf(mesh);
    RepairSettings settings = Filling(10.0);
    int calls = 0;
    settings.progress = [&](double) { return ++calls > 0; };
    Part(part).Repair(settings);
    for (int stop = 1; stop <= calls; ++stop) {
        int left = stop;
        settings.progress = [&](double) { return --left > 0; };
        EXPECT_THROW(part.Repair(settings), Error);
        EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
    }
    settings.fillHoles = -1.0;
    EXPECT_THROW(part.Repair(settings), Error);
    settings.fillHoles = std::nan("");
    EXPECT_THROW(part.Repair(settings), Error);
}

TEST(Repair, ProgressStaysWithinItsBoundsAndEndsAtOne) {
    shapes::Mesh holed = shapes::Without(shapes::WithTurned(shapes::Bracket(), 3), 0, 1);
    shapes::Append(holed, shapes::Moved(shapes::Without(shapes::Cube(10.0f), 0, 2), 500.0f, 0.0f, 0.0f));
    for (shapes::Mesh const& mesh :
         {shapes::Cube(10.0f), shapes::WithTurned(shapes::CubesAtEdge(), 4), holed}) {
        Part part = PartOf(mesh);
        RepairSettings settings = Filling(1000.0);
        settings.outward = true;
        double last = 0.0;
        settings.progress = [&](double share) {
            EXPECT_GE(share, last);
            EXPECT_LT(last, 1.0) << "all was done before";
            EXPECT_LE(share, 1.0);
            last = share;
            return true;
        };
        part.Repair(settings);
        EXPECT_EQ(last, 1.0);
    }
}

TEST(Repair, BodiesWithoutVolumeAreNotTurned) {
    RepairSettings outward;
    outward.outward = true;
    // Two facets back to back, and a cube that is turned, which alone counts.
    for (bool const hasCube : {false, true}) {
        Soup soup = hasCube ? SoupOf(shapes::InsideOut(shapes::Cube(10.0f))) : Soup();
        auto const first = static_cast<std::int32_t>(soup.points.size());
        for (Point3 const& p : {Point3{50, 0, 0}, Point3{60, 0, 0}, Point3{50, 10, 0}})
            soup.points.push_back(p);
        soup.triangles.push_back({first, first + 1, first + 2});
        soup.triangles.push_back({first, first + 2, first + 1});
        Part part(soup.points, soup.triangles);
        std::vector<Corners> const before = FacetsOf(part);
        RepairReport const report = part.Repair(outward);
        EXPECT_EQ(report.bodiesTurned, hasCube ? 1 : 0);
        EXPECT_EQ(report.openEdgesAfter, 0);
        std::vector<Corners> const after = FacetsOf(part);
        ASSERT_EQ(after.size(), before.size());
        EXPECT_TRUE(std::equal(after.end() - 2, after.end(), before.end() - 2));
        EXPECT_NEAR(part.Measures().volume, hasCube ? 1000.0 : 0.0, 1e-9);
    }
}

// Whichever edge of the facets around the gap is open.
TEST(Repair, BodiesWithAGapAreNotTurnedOutward) {
    RepairSettings settings;
    settings.outward = true;
    for (std::size_t gap = 0; gap < 12; ++gap) {
        for (std::size_t k = 0; k < 3; ++k) {
            Part const open = PartOf(
                shapes::Without(shapes::Moved(shapes::InsideOut(shapes::Cube(10.0f)), 5, 6, 7), gap, 1));
            Soup soup{{open.Points().begin(), open.Points().end()},
                      {open.Triangles().begin(), open.Triangles().end()}};
            // The open edge of each facet that has one comes to place k.
            std::map<std::pair<std::int32_t, std::int32_t>, int> edges;
            for (Triangle const& t : soup.triangles) {
                for (std::size_t i = 0; i < 3; ++i) ++edges[{t[i], t[(i + 1) % 3]}];
            }
            for (Triangle& t : soup.triangles) {
                for (std::size_t i = 0; i < 3; ++i) {
                    if (edges.contains({t[(k + 1) % 3], t[k]}))
                        std::rotate(t.begin(), t.begin() + 1, t.end());
                }
            }
            Part part(soup.points, soup.triangles);
            EXPECT_LT(part.Measures().volume, 0.0);
            RepairReport const report = part.Repair(settings);
            EXPECT_EQ(report.bodiesTurned, 0) << gap << ' ' << k;
            EXPECT_EQ(report.openEdgesAfter, 3);
            EXPECT_EQ(FacetsOf(part), FacetsOf(soup.points, soup.triangles));
        }
    }
}

TEST(Repair, EveryFacetOfABodyIsTurnedAndKeepsItsFirstCorner) {
    RepairSettings settings;
    settings.outward = true;
    shapes::Mesh const cube = shapes::Moved(shapes::Cube(10.0f), 3, 4, 5);
    Part part = PartOf(shapes::InsideOut(cube));
    std::vector<Triangle> const before(part.Triangles().begin(), part.Triangles().end());
    EXPECT_EQ(part.Repair(settings).bodiesTurned, 1);
    EXPECT_EQ(FacetsOf(part), FacetsOf(cube));
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(part.Triangles()[i], (Triangle{before[i][0], before[i][2], before[i][1]})) << i;
    }
    // So does one that is turned by itself.
    for (std::size_t odd = 0; odd < 12; ++odd) {
        shapes::Mesh mesh = cube;
        std::swap(mesh[odd][1], mesh[odd][2]);
        Part other = PartOf(mesh);
        Triangle const was = other.Triangles()[odd];
        EXPECT_EQ(other.Repair().turned, 1);
        EXPECT_EQ(other.Triangles()[odd], (Triangle{was[0], was[2], was[1]})) << odd;
        EXPECT_EQ(FacetsOf(other), FacetsOf(cube));
    }
}

TEST(Repair, ShortRimsAreFilledByShortLengths) {
    Part part = PartOf(shapes::Without(shapes::Cube(0.125f), 4, 1));
    ASSERT_EQ(part.Report().openEdges, 3);
    EXPECT_EQ(part.Repair(Filling(0.25)).holesFilled, 0);
    RepairReport const report = part.Repair(Filling(0.5));
    EXPECT_EQ(report.holesFilled, 1);
    EXPECT_EQ(report.openEdgesAfter, 0);
}

// Zeros below zero stand in the file that is written while its facets are those that were read.
TEST(Repair, SignsOfZerosStayWhileNothingIsChanged) {
    TestFolder const folder;
    auto const written = [&](bool isNegative, bool isTurned) {
        shapes::Mesh mesh = shapes::Cube(10.0f);
        int zeros = 0;
        for (float* const value : {&mesh[11][0].x, &mesh[11][0].y, &mesh[11][0].z}) {
            if (*value != 0.0f) continue;
            ++zeros;
            if (isNegative) *value = -0.0f;
        }
        EXPECT_GT(zeros, 0);
        if (isTurned) std::swap(mesh[5][1], mesh[5][2]);
        Part part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh, "a")));
        EXPECT_EQ(part.Repair().turned, isTurned ? 1 : 0);
        part.Write(folder / "b.stl");
        return ReadBytes(folder / "b.stl");
    };
    EXPECT_NE(written(true, false), written(false, false));
    EXPECT_EQ(written(true, true), written(false, true));
}

// Turning a whole body puts its corners into another order, for which the signs of the file do not hold.
TEST(Repair, SignsOfZerosGoWhereABodyIsTurnedAsAWhole) {
    TestFolder const folder;
    auto const written = [&](bool isNegative, bool outward) {
        shapes::Mesh mesh = shapes::InsideOut(shapes::Cube(10.0f));
        int zeros = 0;
        for (shapes::Corner& p : mesh[11]) {
            for (float* const value : {&p.x, &p.y, &p.z}) {
                if (*value != 0.0f) continue;
                ++zeros;
                if (isNegative) *value = -0.0f;
            }
        }
        EXPECT_GT(zeros, 0);
        Part part = Part::Read(folder.Write("a.stl", shapes::ToBinaryStl(mesh, "a")));
        RepairSettings settings;
        settings.outward = outward;
        EXPECT_EQ(part.Repair(settings).bodiesTurned, outward ? 1 : 0);
        part.Write(folder / "b.stl");
        return ReadBytes(folder / "b.stl");
    };
    EXPECT_NE(written(true, false), written(false, false));
    EXPECT_EQ(written(true, true), written(false, true));
}

// At the edge where bodies touch, a facet that is turned may find its partner in the other body.
// A prism over a triangle between two directions from a common axis; at one height the wall at its second
// side lacks the facets on the axis.
void AddPrism(Soup& soup, double first, double second, int levels, int lacking) {
    auto const point = [&soup](double x, double y, double z) {
        soup.points.push_back({x, y, z});
        return static_cast<std::int32_t>(soup.points.size() - 1);
    };
    std::array<std::vector<std::int32_t>, 3> at;
    for (int z = 0; z <= levels; ++z) {
        at[0].push_back(z);
        at[1].push_back(point(10 * std::cos(first), 10 * std::sin(first), z));
        at[2].push_back(point(10 * std::cos(second), 10 * std::sin(second), z));
    }
    for (std::size_t side = 0; side < 3; ++side) {
        auto const& a = at[side];
        auto const& b = at[(side + 1) % 3];
        for (std::size_t z = 0; z < static_cast<std::size_t>(levels); ++z) {
            bool const isLacking = side == 2 && z == static_cast<std::size_t>(lacking);
            soup.triangles.push_back({a[z], b[z], a[z + 1]});
            if (!isLacking) soup.triangles.push_back({b[z], b[z + 1], a[z + 1]});
        }
    }
    std::size_t const top = at[0].size() - 1;
    soup.triangles.push_back({at[0][0], at[2][0], at[1][0]});
    soup.triangles.push_back({at[0][top], at[1][top], at[2][top]});
}

// Two solids that overlap share an axis. At one height each lacks a facet there, and those that are left run
// the same way; everywhere else on the axis the two agree.
TEST(Repair, SolidsThatOverlapAreNotTurnedForOneEdge) {
    Soup soup;
    int const levels = 12;
    for (int z = 0; z <= levels; ++z) soup.points.push_back({0, 0, 1.0 * z});
    AddPrism(soup, 0.0, 1.4, levels, 5);
    AddPrism(soup, 0.7, 2.1, levels, 5);
    Part part(soup.points, soup.triangles);
    std::vector<Corners> const before = FacetsOf(part);
    EXPECT_GT(part.Report().openEdges, 0);
    RepairReport const report = part.Repair();
    EXPECT_EQ(report.turned, 0);
    EXPECT_EQ(FacetsOf(part), before);
    EXPECT_NEAR(part.Measures().volume, 2.0 * 12.0 * 50.0 * std::sin(1.4), 200.0);
}

TEST(Repair, AFacetThatIsTurnedWhereBodiesTouchIsTheOnlyOneThatTurns) {
    shapes::Mesh atEdge = shapes::Cube(10.0f);
    shapes::Append(atEdge, shapes::Moved(shapes::Cube(10.0f), 10, 10, 0));
    shapes::Mesh besides = shapes::Box({0, 0, 0}, {10, 10, 10});
    shapes::Append(besides, shapes::Box({10, 0, 8}, {30, 10, 10}));
    for (auto const& [mesh, volumes] :
         {std::pair(atEdge, std::pair(1000.0, 1000.0)), {besides, {1000.0, 400.0}}}) {
        for (std::size_t i = 0; i < mesh.size(); ++i) {
            shapes::Mesh turned = mesh;
            std::swap(turned[i][1], turned[i][2]);
            Part part = PartOf(turned);
            EXPECT_EQ(part.Repair().turned, 1) << i;
            ASSERT_EQ(part.Bodies().size(), 2u) << i;
            EXPECT_NEAR(part.Bodies()[0].Measures().volume, volumes.first, 1e-9) << i;
            EXPECT_NEAR(part.Bodies()[1].Measures().volume, volumes.second, 1e-9) << i;
            EXPECT_EQ(part.Measures().openEdges, 0) << i;
        }
    }
}

}  // namespace
}  // namespace varnet
