#include <Varnet64.h>

#include "PartChecks.h"
#include "part/Bodies.h"

namespace varnet {
namespace {

void ExpectWholeBodies(Part const& part, std::size_t bodies, std::vector<double> const& volumes) {
    ASSERT_EQ(part.Bodies().size(), bodies);
    std::size_t facets = 0;
    for (std::size_t i = 0; i < bodies; ++i) {
        Body const& body = part.Bodies()[i];
        facets += body.Triangles().size();
        EXPECT_EQ(body.Measures().openEdges, 0);
        EXPECT_EQ(OpenEdgesOf(FacetsOf(body.Points(), body.Triangles())), 0);
        EXPECT_NEAR(body.Measures().volume, volumes[i], 1e-9 * 27000);
        std::int64_t refused = -1;
        std::unique_ptr<CSTLModel> const model = body.Model(&refused);
        EXPECT_EQ(refused, 0);
        EXPECT_EQ(static_cast<std::size_t>(model->GetFacetsNum()), body.Triangles().size());
    }
    EXPECT_EQ(facets, part.Triangles().size());
}

TEST(Bodies, CubesThatTouchComeApart) {
    for (shapes::Mesh const& mesh : {shapes::CubesAtFace(), shapes::CubesAtEdge(), shapes::CubesAtVertex(),
                                     shapes::CubesAtFaceCrossed(), shapes::CubesOverlapping()}) {
        Part const part = PartOf(mesh);
        ExpectWholeBodies(part, 2, {1000.0, 1000.0});
        EXPECT_EQ(FacetsOf(part), FacetsOf(mesh));
        EXPECT_EQ(part.Report().openEdgesExact, 0);
    }
    // Four edges of the face, and its diagonal: each of four facets.
    EXPECT_EQ(PartOf(shapes::CubesAtFace()).Report().manyFacetEdges, 5);
    EXPECT_EQ(PartOf(shapes::CubesAtEdge()).Report().manyFacetEdges, 1);
    EXPECT_EQ(PartOf(shapes::CubesAtVertex()).Report().manyFacetEdges, 0);
}

TEST(Bodies, CubesThatTouchComeApartInAnyPlaceAndOrder) {
    for (std::uint32_t seed = 1; seed < 20; ++seed) {
        for (shapes::Mesh const& mesh : {shapes::CubesAtFace(), shapes::CubesAtEdge()}) {
            double const angle = 0.37 * seed;
            Part const part = PartOf(shapes::Shuffled(shapes::Rotated(mesh, angle, 2.0 * angle), seed));
            ASSERT_EQ(part.Bodies().size(), 2u);
            for (Body const& body : part.Bodies()) {
                EXPECT_EQ(body.Measures().openEdges, 0);
                EXPECT_NEAR(body.Measures().volume, 1000.0, 0.01);
            }
        }
    }
}

TEST(Bodies, ACubeOfCubesComesApartIntoAllOfThem) {
    shapes::Mesh mesh;
    for (int i = 0; i < 27; ++i) {
        shapes::Append(
            mesh, shapes::Moved(shapes::Cube(10.0f), 10.0f * static_cast<float>(i % 3),
                                10.0f * static_cast<float>(i / 3 % 3), 10.0f * static_cast<float>(i / 9)));
    }
    ExpectWholeBodies(PartOf(mesh), 27, std::vector<double>(27, 1000.0));
}

TEST(Bodies, CopiesOfAShellArePairedAmongThemselves) {
    ExpectWholeBodies(PartOf(shapes::Doubled(shapes::Cube(10.0f))), 2, {1000.0, 1000.0});
    shapes::Mesh mesh = shapes::Cube(10.0f);
    shapes::Append(mesh, shapes::InsideOut(shapes::Cube(10.0f)));
    ExpectWholeBodies(PartOf(mesh), 2, {1000.0, -1000.0});
}

TEST(Bodies, ACavityIsOneInsideAnotherBody) {
    Part const part = PartOf(shapes::CubeInCube(true));
    ExpectWholeBodies(part, 2, {27000.0, -1000.0});
    EXPECT_FALSE(part.Bodies()[0].IsCavity());
    EXPECT_TRUE(part.Bodies()[1].IsCavity());
    EXPECT_EQ(part.Bodies()[1].Enclosing(), 0u);
    EXPECT_FALSE(part.Bodies()[1].IsInsideOut());
    EXPECT_NEAR(part.Measures().volume, 26000.0, 1e-6);

    Part const nested = PartOf(shapes::CubeInCube(false));
    EXPECT_FALSE(nested.Bodies()[1].IsCavity());

    Part const alone = PartOf(shapes::InsideOut(shapes::Cube(10.0f)));
    EXPECT_FALSE(alone.Bodies()[0].IsCavity());
    EXPECT_TRUE(alone.Bodies()[0].IsInsideOut());
}

TEST(Bodies, APartThatIsInsideOutAsAWholeKeepsItsCavities) {
    shapes::Mesh mesh = shapes::InsideOut(shapes::CubeInCube(true));
    Part const part = PartOf(mesh);
    ASSERT_EQ(part.Bodies().size(), 2u);
    EXPECT_FALSE(part.Bodies()[0].IsCavity());
    EXPECT_TRUE(part.Bodies()[0].IsInsideOut());
    EXPECT_EQ(part.Bodies()[1].Enclosing(), 0u);
    EXPECT_TRUE(part.Bodies()[1].IsInsideOut());
    std::vector<Part> const parts = part.Split();
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_NEAR(parts[0].Measures().volume, -26000.0, 1e-6);
    // What faces outward and lies in no other body is none of it.
    shapes::Append(mesh, shapes::Moved(shapes::Cube(10.0f), 100.0f, 0.0f, 0.0f));
    Part const beside = PartOf(mesh);
    ASSERT_EQ(beside.Bodies().size(), 3u);
    EXPECT_TRUE(beside.Bodies()[0].IsInsideOut() && beside.Bodies()[1].IsInsideOut());
    EXPECT_FALSE(beside.Bodies()[2].IsInsideOut() || beside.Bodies()[2].IsCavity());
    // Where the larger body is as it should be, the smaller one alone is inside out.
    shapes::Mesh large = shapes::Cube(40.0f);
    shapes::Append(large, shapes::Moved(shapes::InsideOut(shapes::Cube(10.0f)), 100.0f, 0.0f, 0.0f));
    Part const other = PartOf(large);
    EXPECT_FALSE(other.Bodies()[0].IsInsideOut());
    EXPECT_TRUE(other.Bodies()[1].IsInsideOut());
}

TEST(Bodies, ACavityBelongsToTheSmallestBodyAroundIt) {
    shapes::Mesh mesh = shapes::Box({-50, -50, -50}, {80, 80, 80});
    shapes::Append(mesh, shapes::CubeInCube(true));
    shapes::Append(mesh, shapes::Moved(shapes::InsideOut(shapes::Cube(5.0f)), 200.0f, 0.0f, 0.0f));
    Part const part = PartOf(mesh);
    ASSERT_EQ(part.Bodies().size(), 4u);
    EXPECT_EQ(part.Bodies()[2].Enclosing(), 1u);
    EXPECT_TRUE(part.Bodies()[3].IsInsideOut());

    std::vector<Part> const parts = part.Split();
    ASSERT_EQ(parts.size(), 3u);
    EXPECT_NEAR(parts[0].Measures().volume, 130.0 * 130.0 * 130.0, 1e-3);
    EXPECT_NEAR(parts[1].Measures().volume, 26000.0, 1e-6);
    EXPECT_NEAR(parts[2].Measures().volume, -125.0, 1e-6);
}

// A cube without some of its facets: 0 and 1 are its lower side, 2 and 3 the upper one.
shapes::Mesh CubeWithout(std::vector<std::size_t> const& facets, float far) {
    shapes::Mesh mesh = shapes::Moved(shapes::Cube(10.0f), far, -far, far + 7.0f);
    for (std::size_t i = facets.size(); i-- > 0;)
        mesh.erase(mesh.begin() + static_cast<std::ptrdiff_t>(facets[i]));
    return mesh;
}

std::vector<std::vector<std::size_t>> const kOpenings = {{0}, {2, 3},         {0, 1, 2, 3},
                                                         {5}, {0, 1, 10, 11}, {4, 9}};

// About the origin, the volume of an open body may have any value and either sign.
TEST(Bodies, AnOpenBodyIsJudgedAlikeWhereverItStands) {
    for (std::vector<std::size_t> const& opening : kOpenings) {
        for (float const far : {0.0f, 100.0f, -100.0f, 8192.0f}) {
            shapes::Mesh const open = CubeWithout(opening, far);
            Part const part = PartOf(open);
            ASSERT_EQ(part.Bodies().size(), 1u);
            EXPECT_GT(part.Measures().openEdges, 0);
            EXPECT_FALSE(part.Bodies()[0].IsInsideOut()) << opening[0] << " " << far;
            Part const turned = PartOf(shapes::InsideOut(open));
            EXPECT_TRUE(turned.Bodies()[0].IsInsideOut()) << opening[0] << " " << far;
        }
    }
}

TEST(Bodies, AnOpenHollowIsACavityWhereverItStands) {
    for (float const far : {0.0f, 500.0f, -500.0f}) {
        shapes::Mesh mesh = shapes::Moved(shapes::Box({-20, -20, -20}, {20, 20, 20}), far, far, -far);
        shapes::Append(mesh, shapes::InsideOut(shapes::Moved(CubeWithout({2, 3}, 0.0f), far, far, -far)));
        Part const part = PartOf(mesh);
        ASSERT_EQ(part.Bodies().size(), 2u);
        EXPECT_EQ(part.Bodies()[1].Enclosing(), 0u) << far;
        EXPECT_FALSE(part.Bodies()[1].IsInsideOut()) << far;
    }
}

// In the plane of a rim it makes no difference where its middle is: what is missing of a cube is put back.
TEST(ClosedVolume, PlainRimsAreClosedInTheirPlane) {
    for (std::vector<std::size_t> const& opening : {kOpenings[0], kOpenings[1], kOpenings[2], kOpenings[3]}) {
        for (float const far : {0.0f, 100.0f, 8192.0f}) {
            Part const part = PartOf(CubeWithout(opening, far));
            std::vector<std::int32_t> open;
            auto const triangles = part.Triangles();
            EdgeTable const edges = FindEdges(triangles, part.Points().size(), Pace::None());
            for (std::int32_t e = 0; e < static_cast<std::int32_t>(3 * triangles.size()); ++e) {
                if (edges.across[static_cast<std::size_t>(e)] < 0) open.push_back(e);
            }
            EXPECT_NEAR(ClosedVolume(part.Points(), triangles, open), 1000.0, 1e-6)
                << opening[0] << " " << far;
        }
    }
}

// A roof over a square: a quarter of the cube of its side, with its rim in the plane of the square.
TEST(ClosedVolume, EachRimHasItsOwnMiddle) {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
    std::vector<std::int32_t> open;
    for (double const x : {0.0, 100.0, -50.0}) {
        auto const n = static_cast<std::int32_t>(points.size());
        for (Point3 const& p :
             {Point3{0, 0, 5}, Point3{4, 0, 5}, Point3{4, 4, 5}, Point3{0, 4, 5}, Point3{2, 2, 8}})
            points.push_back({p.x + x, p.y, p.z + x});
        for (std::int32_t const side : {0, 1, 2, 3}) {
            open.push_back(static_cast<std::int32_t>(3 * triangles.size()));
            triangles.push_back({n + side, n + (side + 1) % 4, n + 4});
        }
    }
    // A pyramid has a third of its base times its height.
    EXPECT_NEAR(ClosedVolume(points, triangles, open), 3 * 16.0 * 3.0 / 3.0, 1e-9);
    for (Triangle& t : triangles) t = {t[1], t[0], t[2]};
    EXPECT_NEAR(ClosedVolume(points, triangles, open), -48.0, 1e-9);
}

TEST(ClosedVolume, OfAFlatSheetIsNothing) {
    std::vector<Point3> const points = {{5, 1, 2}, {5, 3, 2}, {5, 3, 7.5}, {5, 1, 7}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {0, 2, 3}};
    EXPECT_EQ(ClosedVolume(points, triangles, std::vector<std::int32_t>{0, 1, 4, 5}), 0.0);
    std::vector<Point3> const tilted = {{0.1, 0.2, 0.3}, {10.1, 0.7, 3.3}, {2.7, 9.9, 0.1}};
    EXPECT_EQ(ClosedVolume(tilted, std::vector<Triangle>{{0, 1, 2}}, std::vector<std::int32_t>{0, 1, 2}),
              0.0);
    EXPECT_EQ(ClosedVolume({}, {}, {}), 0.0);
}

// A facet that contradicts its neighbours lies flat on what closes the hole that it leaves.
TEST(ClosedVolume, AFacetThatIsTurnedChangesNothing) {
    shapes::Mesh mesh = CubeWithout({}, 300.0f);
    std::swap(mesh[7][1], mesh[7][2]);
    Part const part = PartOf(mesh);
    ASSERT_EQ(part.Bodies().size(), 1u);
    EXPECT_FALSE(part.Bodies()[0].IsInsideOut());
    EXPECT_TRUE(PartOf(shapes::InsideOut(mesh)).Bodies()[0].IsInsideOut());
}

TEST(Bodies, OneBodyHasThePartsOwnArrays) {
    Part const part = PartOf(shapes::IcoSphere(10.0, 2));
    ASSERT_EQ(part.Bodies().size(), 1u);
    EXPECT_EQ(part.Bodies()[0].Points().data(), part.Points().data());
    EXPECT_EQ(part.Bodies()[0].Triangles().data(), part.Triangles().data());
}

TEST(Bodies, AFacetThatIsTurnedStaysWithItsShell) {
    Part const part = PartOf(shapes::WithTurned(shapes::Cube(10.0f), 12));
    ASSERT_EQ(part.Bodies().size(), 1u);
    // Its three edges conflict: two directed edges each.
    EXPECT_EQ(part.Bodies()[0].Measures().openEdges, 6);
}

TEST(Bodies, FacetsOnTheSameCornersThatFaceEachOtherLeaveAClassicModelClosed) {
    // A shell with an inner wall without thickness, of two facets back to back, that hangs on its edges.
    Soup soup;
    soup.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    soup.triangles = {{0, 1, 2}, {0, 2, 1}};
    Part const part(soup.points, soup.triangles);
    ASSERT_EQ(part.Bodies().size(), 1u);
    std::int64_t refused = 0;
    EXPECT_EQ(part.Bodies()[0].Model(&refused)->GetFacetsNum(), 0);
    EXPECT_EQ(refused, 2);
}

// A corner of a tetrahedron, and nothing but the facets that are named.
TEST(Measure, OneFacetIsMeasuredByItself) {
    std::vector<Point3> const points = {{1, 1, 1}, {4, 1, 1}, {1, 5, 1}, {99, 99, 99}};
    std::vector<Triangle> const triangles = {{0, 1, 2}, {1 << 30, 1 << 30, 1 << 30}};
    MeshMeasures const open = Measure(points, std::span(triangles).first(1), 3);
    EXPECT_EQ(open.area, 6.0);
    EXPECT_EQ(open.openEdges, 3);
    // A pyramid to the origin: a third of the area times the height.
    EXPECT_DOUBLE_EQ(open.volume, 2.0);
    EXPECT_EQ(open.box.min, (Point3{1, 1, 1}));
    EXPECT_EQ(open.box.max, (Point3{4, 5, 1}));
    // Of what is closed the volume is the same from anywhere, and is taken from its first corner.
    EXPECT_EQ(Measure(points, std::span(triangles).first(1), 0).volume, 0.0);
    MeshMeasures const none = Measure(points, std::span<Triangle const>(), 7);
    EXPECT_TRUE(none.box.IsEmpty());
    EXPECT_EQ(none.area, 0.0);
    EXPECT_EQ(none.volume, 0.0);
    EXPECT_EQ(none.openEdges, 7);
}

}  // namespace
}  // namespace varnet
