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
