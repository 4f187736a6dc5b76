#include "varnet/Supports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "TestFiles.h"
#include "kit/part/PartChecks.h"

namespace varnet {
namespace {

// A tower of 10 x 10 mm and 10 high, and at its side a board 20 long, 10 wide, from 8 to 10 above the plate.
Part TowerWithBoard() {
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {10, 10, 10});
    shapes::Append(mesh, shapes::Box({10, 0, 8}, {30, 10, 10}));
    return PartOf(mesh);
}

// A steep keel, 10 mm long, whose lower edge hangs 5 above a slab on the plate.
Part Keel() {
    Soup soup = SoupOf(shapes::Box({0, 0, 0}, {10, 10, 1}));
    auto const first = static_cast<std::int32_t>(soup.points.size());
    for (double const y : {0.0, 10.0}) {
        soup.points.push_back({5, y, 6});   // first, first + 3
        soup.points.push_back({8, y, 16});  // first + 1, first + 4
        soup.points.push_back({2, y, 16});  // first + 2, first + 5
    }
    for (Triangle const& t :
         {Triangle{0, 1, 2}, {3, 5, 4}, {0, 3, 4}, {0, 4, 1}, {0, 2, 5}, {0, 5, 3}, {1, 4, 5}, {1, 5, 2}}) {
        soup.triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
    }
    return Part(soup.points, soup.triangles);
}

// Up to the sign of 0, from the corners.
double NormalZ(Part const& part, Triangle const& t) {
    auto const p = part.Points();
    Point3 const& a = p[static_cast<std::size_t>(t[0])];
    Point3 const& b = p[static_cast<std::size_t>(t[1])];
    Point3 const& c = p[static_cast<std::size_t>(t[2])];
    double const x = (b.y - a.y) * (c.z - a.z) - (b.z - a.z) * (c.y - a.y);
    double const y = (b.z - a.z) * (c.x - a.x) - (b.x - a.x) * (c.z - a.z);
    double const z = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    return z / std::sqrt(x * x + y * y + z * z);
}

ErrorKind KindOf(SupportSettings const& settings) {
    try {
        Supports const supports(TowerWithBoard(), settings);
    } catch (Error const& error) {
        return error.Kind();
    }
    ADD_FAILURE() << "no error";
    return ErrorKind::kFile;
}

TEST(Supports, ABoardIsHeldFromBelowAndAFootRestsOnThePlate) {
    Part const part = TowerWithBoard();
    Supports const supports(part);
    ASSERT_EQ(2u, supports.Overhangs().size());
    auto const* held = &supports.Overhangs()[0];
    auto const* foot = &supports.Overhangs()[1];
    if (!held->supported) std::swap(held, foot);
    EXPECT_TRUE(held->supported);
    EXPECT_EQ("faces down", held->why);
    EXPECT_NEAR(200.0, held->area, 1e-9);
    EXPECT_NEAR(200.0, held->projectedArea, 1e-9);
    EXPECT_EQ((Point3{10, 0, 8}), held->box.min);
    EXPECT_EQ((Point3{30, 10, 8}), held->box.max);
    EXPECT_FALSE(foot->supported);
    EXPECT_EQ("rests on the plate", foot->why);
    EXPECT_NEAR(100.0, foot->area, 1e-9);
    ASSERT_EQ(1u, supports.Solids().size());
    Box3 box;
    for (Point3 const& p : supports.Solids()[0].points) box.Add(p);
    EXPECT_EQ((Point3{10, 0, 0}), box.min);
    EXPECT_EQ((Point3{30, 10, 8}), box.max);
    EXPECT_EQ(0, supports.SmallRegions());
}

// A facet that contradicts its shell looks down where it would if it were turned.
TEST(Supports, AFacetThatIsTurnedChangesNothingOfWhatHangs) {
    Part const part = TowerWithBoard();
    Supports const expected(part);
    for (std::size_t i = 0; i < part.Triangles().size(); ++i) {
        std::vector<Triangle> triangles(part.Triangles().begin(), part.Triangles().end());
        std::swap(triangles[i][0], triangles[i][1]);
        Supports const supports(Part(part.Points(), triangles));
        ASSERT_EQ(expected.Overhangs().size(), supports.Overhangs().size()) << i;
        for (std::size_t n = 0; n < expected.Overhangs().size(); ++n) {
            EXPECT_EQ(expected.Overhangs()[n].triangles, supports.Overhangs()[n].triangles) << i;
            EXPECT_EQ(expected.Overhangs()[n].why, supports.Overhangs()[n].why) << i;
        }
        EXPECT_EQ(expected.Solids().size(), supports.Solids().size()) << i;
    }
}

TEST(Supports, SolidsOfAHeightAreClosedAndHaveIt) {
    SupportSettings settings;
    settings.down = 3.0;
    Supports const supports(TowerWithBoard(), settings);
    ASSERT_EQ(1u, supports.Solids().size());
    SupportSolid const& solid = supports.Solids()[0];
    EXPECT_EQ(0, OpenEdgesOf(FacetsOf(solid.points, solid.triangles)));
    MeshMeasures const measures = Part(solid.points, solid.triangles).Measures();
    EXPECT_NEAR(20 * 10 * 3, std::fabs(measures.volume), 1e-6);
    EXPECT_EQ(5.0, measures.box.min.z);
    EXPECT_EQ(8.0, measures.box.max.z);
}

TEST(Supports, AKeelHangsByItsEdge) {
    Supports const supports(Keel());
    ASSERT_EQ(1u, supports.Edges().size());
    HangingEdge const& edge = supports.Edges()[0];
    EXPECT_NEAR(10.0, edge.length, 1e-9);
    EXPECT_EQ(6.0, edge.lowest);
    ASSERT_EQ(2u, edge.points.size());
    for (Point3 const& p : edge.points) {
        EXPECT_EQ(5.0, p.x);
        EXPECT_EQ(6.0, p.z);
    }
    EXPECT_FALSE(supports.Solids().empty());
    SupportSettings longer;
    longer.edgeLength = 10.5;
    EXPECT_TRUE(Supports(Keel(), longer).Edges().empty());
}

// Its sides are 73.3 degrees from straight down.
TEST(Supports, FacetsThatFaceDownHoldAKeelUpToTheirOwnAngle) {
    SupportSettings settings;
    settings.edgesUp = 80.0;
    settings.edgesDown = 70.0;
    EXPECT_EQ(Supports(Keel(), settings).Edges().size(), 1u);
    settings.edgesUp = 45.0;
    settings.edgesDown = 75.0;
    EXPECT_EQ(Supports(Keel(), settings).Edges().size(), 0u);
}

TEST(Supports, TheLeastAreaLeavesOutWhatAWallHolds) {
    // The board's underside has 200 square millimetres, and the tower's wall is not its own neighbour.
    SupportSettings settings;
    settings.minArea = 1000.0;
    Supports const supports(TowerWithBoard(), settings);
    for (Overhang const& overhang : supports.Overhangs()) {
        if (overhang.box.min.z > 1.0) {
            EXPECT_EQ("below the least area, but hangs free", overhang.why);
            EXPECT_TRUE(overhang.supported);
        }
    }
}

TEST(Supports, RegionsNarrowerThanAStrokeAreCounted) {
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {10, 10, 10});
    shapes::Append(mesh, shapes::Box({20, 0, 8}, {20.25f, 0.25f, 10}));
    SupportSettings settings;
    settings.minArea = 0.0;
    EXPECT_EQ(1, Supports(PartOf(mesh), settings).SmallRegions());
    settings.stroke = 0.25;
    EXPECT_EQ(0, Supports(PartOf(mesh), settings).SmallRegions());
}

// On a bumpy skin, overhangs are just the facets that face down by more than the angle says, each once.
TEST(Supports, OverhangsAreTheFacetsThatFaceDown) {
    shapes::Mesh mesh = shapes::HeightField(
        20, 1.0, [](double x, double y) { return 3.0 * std::sin(1.3 * x) * std::cos(0.9 * y); });
    for (shapes::Triangle& t : mesh) std::swap(t[1], t[2]);
    Part const part = PartOf(mesh);
    for (double const angle : {20.0, 44.0, 60.0}) {
        SupportSettings settings;
        settings.angle = angle;
        Supports const supports(part, settings);
        std::set<std::int32_t> found;
        for (Overhang const& overhang : supports.Overhangs()) {
            double area = 0.0;
            for (std::int32_t const n : overhang.triangles) {
                ASSERT_TRUE(found.insert(n).second);
                area += 1.0;
            }
            EXPECT_GT(area, 0.0);
        }
        double const limit = -std::cos(angle * std::numbers::pi / 180.0);
        std::size_t expected = 0;
        for (std::size_t i = 0; i < part.Triangles().size(); ++i) {
            double const z = NormalZ(part, part.Triangles()[i]);
            if (std::fabs(z - limit) < 1e-6) continue;  // rounding decides
            EXPECT_EQ(z < limit, found.count(static_cast<std::int32_t>(i)) == 1) << i << ": " << z;
            expected += z < limit ? 1 : 0;
        }
        EXPECT_GT(expected, 0u);
    }
}

TEST(Supports, APartWithoutFacetsNeedsNone) {
    Supports const supports{Part()};
    EXPECT_TRUE(supports.Overhangs().empty() && supports.Edges().empty() && supports.Solids().empty());
    EXPECT_TRUE(Supports().Solids().empty());
    TestFolder const folder;
    supports.Write(folder / "none.stl");
    EXPECT_EQ(84u, std::filesystem::file_size(folder / "none.stl"));
}

TEST(Supports, AreWrittenAsOneMesh) {
    TestFolder const folder;
    Supports const supports(TowerWithBoard());
    supports.Write(folder / "support.stl");
    EXPECT_EQ(supports.Solids()[0].triangles.size(), Part::Read(folder / "support.stl").Triangles().size());
    EXPECT_THROW(supports.Write(folder / "missing" / "support.stl"), Error);
}

TEST(Supports, SettingsThatMakeNoSenseAreRefused) {
    double const bad[] = {-1.0, std::nan(""), HUGE_VAL};
    for (double const d : bad) {
        for (double SupportSettings::*const field :
             {&SupportSettings::angle, &SupportSettings::minArea, &SupportSettings::down,
              &SupportSettings::edgesUp, &SupportSettings::edgesDown, &SupportSettings::edgeLength,
              &SupportSettings::stroke}) {
            SupportSettings settings;
            settings.*field = d;
            EXPECT_EQ(ErrorKind::kArgument, KindOf(settings)) << d;
        }
    }
    SupportSettings steep;
    steep.angle = 90.5;
    EXPECT_EQ(ErrorKind::kArgument, KindOf(steep));
    SupportSettings stopped;
    stopped.progress = [](double) { return false; };
    EXPECT_EQ(ErrorKind::kCancelled, KindOf(stopped));
}

TEST(Supports, PartsThatAreBrokenComeThrough) {
    shapes::Mesh const ball = shapes::IcoSphere(10.0, 2);
    for (shapes::Mesh const& mesh :
         {shapes::Without(ball, 10, 40), shapes::Doubled(ball), shapes::InsideOut(ball),
          shapes::WithTurned(ball, 3), shapes::WithTJunctions(ball, 5)}) {
        Part const part = PartOf(mesh);
        Supports const supports(part);
        for (Overhang const& overhang : supports.Overhangs()) {
            for (std::int32_t const n : overhang.triangles)
                EXPECT_LT(static_cast<std::size_t>(n), part.Triangles().size());
        }
        for (SupportSolid const& solid : supports.Solids()) {
            for (Triangle const& t : solid.triangles) {
                for (std::int32_t const n : t) EXPECT_LT(static_cast<std::size_t>(n), solid.points.size());
            }
        }
    }
}

TEST(SlicerInputs, AreThePartAndTheSolids) {
    Part const part = TowerWithBoard();
    Supports const supports(part);
    std::vector<SlicerInput> const inputs = SlicerInputs(part, supports);
    ASSERT_EQ(2u, inputs.size());
    EXPECT_EQ(part.Points().data(), inputs[0].points.data());
    EXPECT_FALSE(inputs[0].support || inputs[0].turned);
    EXPECT_TRUE(inputs[1].support);
    EXPECT_EQ(supports.Solids()[0].points.data(), inputs[1].points.data());
    ASSERT_EQ(1u, SlicerInputs(Part()).size());
    EXPECT_TRUE(SlicerInputs(Part())[0].triangles.empty());
}

TEST(SlicerInputs, ABodyThatIsInsideOutIsTurnedAndNoOther) {
    shapes::Mesh mesh = shapes::InsideOut(shapes::Cube(10));
    shapes::Append(mesh, shapes::Moved(shapes::Cube(10), 20, 0, 0));
    Part const part = PartOf(mesh);
    std::vector<SlicerInput> const inputs = SlicerInputs(part);
    ASSERT_EQ(2u, inputs.size());
    EXPECT_TRUE(inputs[0].turned);
    EXPECT_FALSE(inputs[1].turned);
}

// Its top is missing, and the volume of what is there is below nothing about the origin: it is filled all the
// same.
TEST(SlicerInputs, AnOpenBodyFarFromTheOriginIsSolid) {
    for (bool const turned : {false, true}) {
        shapes::Mesh mesh = shapes::Moved(shapes::Cube(10), 0, 0, 110);
        mesh.erase(mesh.begin() + 2, mesh.begin() + 4);
        shapes::Append(mesh, shapes::Moved(shapes::Cube(10), 20, 0, 110));
        Part const part = PartOf(turned ? shapes::InsideOut(mesh) : mesh);
        ASSERT_EQ(2u, part.Bodies().size());
        EXPECT_EQ(4, part.Bodies()[0].Measures().openEdges);
        std::vector<SlicerInput> const inputs = SlicerInputs(part);
        for (SlicerInput const& input : inputs) EXPECT_EQ(turned, input.turned);
        SliceSettings settings;
        settings.layer = 1.0;
        settings.hatch = 0.0;
        Slicer slicer(inputs, settings);
        slicer.ForEachLayer([](Layer const& layer) { EXPECT_NEAR(layer.Area(), 200.0, 1e-9); });
        EXPECT_EQ(10, slicer.Report().layers);
    }
}

// Walls alone, as a tool writes them that has the floors in other files: the inner ones bound a hollow.
TEST(SlicerInputs, AHollowWithoutFloorAndLidStaysHollow) {
    auto const walls = [](shapes::Mesh box) {
        box.erase(box.begin(), box.begin() + 4);
        return box;
    };
    for (bool const turned : {false, true}) {
        shapes::Mesh mesh = walls(shapes::Box({-20, 0, 5}, {10, 30, 35}));
        shapes::Append(mesh, shapes::InsideOut(walls(shapes::Box({-10, 10, 5}, {0, 20, 35}))));
        shapes::Append(mesh, shapes::InsideOut(walls(shapes::Box({2, 2, 5}, {4, 28, 35}))));
        Part const part = PartOf(turned ? shapes::InsideOut(mesh) : mesh);
        ASSERT_EQ(3u, part.Bodies().size());
        EXPECT_EQ(8, part.Bodies()[1].Measures().openEdges);
        EXPECT_FALSE(part.Bodies()[0].IsCavity());
        EXPECT_TRUE(part.Bodies()[1].IsCavity() && part.Bodies()[2].IsCavity());
        SliceSettings settings;
        settings.layer = 5.0;
        settings.hatch = 0.0;
        Slicer slicer(SlicerInputs(part), settings);
        slicer.ForEachLayer([](Layer const& layer) { EXPECT_NEAR(layer.Area(), 900.0 - 100 - 52, 1e-9); });
        EXPECT_EQ(6, slicer.Report().layers);
    }
}

// Whichever facets of a cube are turned, some or all: its layers are full.
TEST(SlicerInputs, FacetsThatContradictTheirShellAreSlicedAsIfTheyWereTurned) {
    for (unsigned turned = 0; turned < 4096; turned += 1 + turned % 7) {
        shapes::Mesh mesh = shapes::Moved(shapes::Cube(10), 30, 40, 50);
        for (std::size_t i = 0; i < mesh.size(); ++i) {
            if ((turned >> i & 1) != 0) std::swap(mesh[i][1], mesh[i][2]);
        }
        Part const part = PartOf(mesh);
        SliceSettings settings;
        settings.layer = 4.0;
        settings.hatch = 0.0;
        Slicer slicer(SlicerInputs(part), settings);
        slicer.ForEachLayer([&](Layer const& layer) { EXPECT_NEAR(layer.Area(), 100.0, 1e-9) << turned; });
        EXPECT_NEAR(slicer.Report().meshVolume, 1000.0, 1e-6) << turned;
        if (HasFailure()) return;
    }
}

// A loose facet that lies on another one and faces it takes nothing away from the body.
TEST(SlicerInputs, ALooseFacetOnAnotherOneOpensNoContour) {
    shapes::Mesh const cube = shapes::Cube(10);
    for (std::size_t i = 0; i < cube.size(); ++i) {
        shapes::Mesh mesh = cube;
        mesh.push_back({cube[i][0], cube[i][2], cube[i][1]});
        Part const part = PartOf(mesh);
        SliceSettings settings;
        settings.layer = 2.0;
        settings.hatch = 0.0;
        Slicer slicer(SlicerInputs(part), settings);
        slicer.ForEachLayer([&](Layer const& layer) { EXPECT_NEAR(layer.Area(), 100.0, 1e-9) << i; });
        EXPECT_EQ(slicer.Report().openPaths, part.Measures().openEdges > 0 && i >= 4 ? 5 : 0) << i;
    }
}

TEST(SlicerInputs, APartIsSlicedAsRepairLeavesItAndStaysAsItIs) {
    Part const whole = PartOf(shapes::Cube(10));
    EXPECT_EQ(&whole, &whole.AsSliced());
    shapes::Mesh mesh = shapes::Cube(10);
    std::swap(mesh[5][0], mesh[5][1]);
    Part const part = PartOf(mesh);
    std::vector<Triangle> const asGiven(part.Triangles().begin(), part.Triangles().end());
    Part const& sliced = part.AsSliced();
    EXPECT_NE(&part, &sliced);
    EXPECT_EQ(&sliced, &part.AsSliced());
    EXPECT_EQ(&sliced, &sliced.AsSliced());
    EXPECT_EQ(sliced.Triangles().data(), SlicerInputs(part)[0].triangles.data());
    EXPECT_EQ(0, sliced.Measures().openEdges);
    EXPECT_NEAR(1000.0, sliced.Measures().volume, 1e-9);
    EXPECT_TRUE(std::equal(asGiven.begin(), asGiven.end(), part.Triangles().begin(), part.Triangles().end()));
    EXPECT_EQ(6, part.Measures().openEdges);
    Part repaired = part;
    EXPECT_EQ(1, repaired.Repair().turned);
    EXPECT_TRUE(std::equal(repaired.Triangles().begin(), repaired.Triangles().end(),
                           sliced.Triangles().begin(), sliced.Triangles().end()));
    // A copy shares what was made, and a part that is repaired is what it is.
    EXPECT_EQ(&sliced, &Part(part).AsSliced());
    EXPECT_EQ(&repaired, &repaired.AsSliced());
}

TEST(Surfaces, ACubeHasSix) {
    Part const part = PartOf(shapes::Cube(10));
    Surfaces const surfaces(part);
    ASSERT_EQ(6u, surfaces.all.size());
    for (Surface const& surface : surfaces.all) {
        EXPECT_EQ(2, surface.facets);
        EXPECT_NEAR(100.0, surface.area, 1e-9);
        EXPECT_NEAR(40.0, surface.rimLength, 1e-9);
    }
    ASSERT_EQ(12u, surfaces.ofTriangle.size());
    std::vector<int> counts(6);
    for (std::int32_t const n : surfaces.ofTriangle) ++counts.at(static_cast<std::size_t>(n));
    EXPECT_EQ(std::vector<int>(6, 2), counts);
}

TEST(Surfaces, ShellsAreWhatHangsTogether) {
    shapes::Mesh mesh = shapes::Cube(10);
    for (int i = 1; i < 5; ++i)
        shapes::Append(mesh, shapes::Moved(shapes::IcoSphere(4.0, 1), 20.0f * static_cast<float>(i), 0, 0));
    Surfaces const surfaces(PartOf(shapes::Shuffled(mesh, 3)), SurfaceRule::kShells);
    std::multiset<std::int64_t> facets;
    double area = 0.0;
    for (Surface const& surface : surfaces.all) {
        facets.insert(surface.facets);
        area += surface.area;
        EXPECT_EQ(0.0, surface.rimLength);
    }
    EXPECT_EQ((std::multiset<std::int64_t>{12, 80, 80, 80, 80}), facets);
    // The classes measure with normals of float.
    EXPECT_NEAR(PartOf(mesh).Measures().area, area, 1e-3);
}

TEST(Surfaces, OctantsOfABallAreEight) {
    Surfaces const surfaces(PartOf(shapes::IcoSphere(10.0, 3)), SurfaceRule::kOctants);
    std::int64_t facets = 0;
    for (Surface const& surface : surfaces.all) facets += surface.facets;
    EXPECT_GE(surfaces.all.size(), 8u);
    EXPECT_EQ(1280, facets);
}

TEST(Surfaces, WithoutFacetsThereAreNoneAndAStopIsAnError) {
    Surfaces const none{Part()};
    EXPECT_TRUE(none.all.empty() && none.ofTriangle.empty());
    try {
        Surfaces const stopped(PartOf(shapes::Cube(1)), SurfaceRule::kNormals, [](double) { return false; });
        ADD_FAILURE() << "no error";
    } catch (Error const& error) {
        EXPECT_EQ(ErrorKind::kCancelled, error.Kind());
    }
}

}  // namespace
}  // namespace varnet
