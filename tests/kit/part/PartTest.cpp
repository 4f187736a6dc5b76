#include "varnet/Part.h"

#include <Varnet64.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "PartChecks.h"
#include "part/FlatMesh.h"

namespace varnet {
namespace {

template <class Work>
ErrorKind KindOf(Work const& work) {
    try {
        work();
    } catch (Error const& error) {
        return error.Kind();
    }
    ADD_FAILURE() << "no error";
    return ErrorKind::kFile;
}

TEST(Part, ANewOneIsEmpty) {
    Part part;
    EXPECT_TRUE(part.Points().empty() && part.Triangles().empty() && part.Bodies().empty());
    EXPECT_TRUE(part.Measures().box.IsEmpty());
    EXPECT_EQ(0.0, part.Measures().area);
    EXPECT_EQ(0.0, part.Measures().volume);
    EXPECT_EQ("", part.Name());
    EXPECT_EQ(0, part.Repair().turned);
    EXPECT_TRUE(part.Split().empty());
    part.Transform({});
    EXPECT_EQ(0, part.Model()->GetFacetsNum());
}

TEST(Part, MeasuresAreThoseOfTheShape) {
    MeshMeasures const cube = PartOf(shapes::Cube(10)).Measures();
    EXPECT_DOUBLE_EQ(600.0, cube.area);
    EXPECT_DOUBLE_EQ(1000.0, cube.volume);
    EXPECT_EQ(0, cube.openEdges);
    EXPECT_DOUBLE_EQ(-1000.0, PartOf(shapes::InsideOut(shapes::Cube(10))).Measures().volume);
    MeshMeasures const open = PartOf(shapes::Without(shapes::Cube(10), 0, 1)).Measures();
    EXPECT_EQ(3, open.openEdges);
    EXPECT_DOUBLE_EQ(550.0, open.area);
    shapes::Mesh const ball = shapes::IcoSphere(10.0, 4);
    EXPECT_NEAR(4.0 * std::numbers::pi * 100.0, PartOf(ball).Measures().area, 10.0);
    EXPECT_EQ(OpenEdgesOf(FacetsOf(ball)), PartOf(ball).Measures().openEdges);
}

TEST(Part, CopiesShareUntilOneIsChanged) {
    Part const part = PartOf(shapes::Cube(10));
    Part copy = part;
    EXPECT_EQ(part.Points().data(), copy.Points().data());
    Placement up;
    up.rows[2][3] = 5.0;
    copy.Transform(up);
    EXPECT_EQ(0.0, part.Measures().box.min.z);
    EXPECT_EQ(5.0, copy.Measures().box.min.z);
    EXPECT_NE(part.Points().data(), copy.Points().data());
}

TEST(Part, MapsThatMakeNoSenseAreRefusedAndChangeNothing) {
    Part part = PartOf(shapes::Cube(10));
    auto const before = FacetsOf(part);
    double const bad[] = {std::nan(""), std::numeric_limits<double>::infinity(), 1e300};
    for (double const d : bad) {
        Placement placement;
        placement.rows[1][3] = d;
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { part.Transform(placement); })) << d;
        placement.rows[1][3] = 0.0;
        placement.rows[0][1] = d;
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { part.Transform(placement); })) << d;
    }
    Placement flat;
    flat.rows[2] = {0, 0, 0, 0};
    EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { part.Transform(flat); }));
    EXPECT_EQ(before, FacetsOf(part));
}

// A random map, against the map of each corner.
TEST(Part, EveryPointIsMapped) {
    Placement placement;
    placement.rows = {{{0.5, 0.25, -1, 3}, {1, 2, 0.5, -7}, {-0.75, 0.5, 1, 0.5}}};
    shapes::Mesh const ball = shapes::IcoSphere(10.0, 1);
    Part part = PartOf(ball);
    std::vector<Point3> const before(part.Points().begin(), part.Points().end());
    double const volume = part.Measures().volume;
    part.Transform(placement);
    ASSERT_EQ(before.size(), part.Points().size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        Point3 const& p = before[i];
        EXPECT_NEAR(0.5 * p.x + 0.25 * p.y - p.z + 3, part.Points()[i].x, 1e-12);
        EXPECT_NEAR(p.x + 2 * p.y + 0.5 * p.z - 7, part.Points()[i].y, 1e-12);
        EXPECT_NEAR(-0.75 * p.x + 0.5 * p.y + p.z + 0.5, part.Points()[i].z, 1e-12);
    }
    // The determinant, by the first row.
    double const determinant =
        0.5 * (2 * 1 - 0.5 * 0.5) - 0.25 * (1 * 1 - 0.5 * -0.75) + -1 * (1 * 0.5 - 2 * -0.75);
    EXPECT_NEAR(volume * std::fabs(determinant), part.Measures().volume, 1e-6);
}

TEST(Part, IsDividedIntoItsBodiesWithTheirCavities) {
    shapes::Mesh mesh = shapes::CubeInCube(true);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(5), 100, 0, 0));
    Part const part = PartOf(mesh);
    ASSERT_EQ(3u, part.Bodies().size());
    std::vector<Part> const parts = part.Split();
    ASSERT_EQ(2u, parts.size());
    EXPECT_NEAR(27000.0 - 1000.0, parts[0].Measures().volume, 1e-6);
    EXPECT_EQ(24u, parts[0].Triangles().size());
    EXPECT_NEAR(125.0, parts[1].Measures().volume, 1e-9);
    std::vector<Corners> all = FacetsOf(parts[0]);
    for (Corners const& c : FacetsOf(parts[1])) all.push_back(c);
    EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(all));
}

// In the order in which the body's facets come to them, each once; and the facets in their order.
TEST(Part, ABodyOfSeveralHasItsOwnPointsAndFacets) {
    Soup soup;
    for (double const x : {0.0, 10.0}) {
        for (Point3 const& p : {Point3{x, 0, 0}, Point3{x + 1, 0, 0}, Point3{x, 1, 0}, Point3{x, 0, 1}})
            soup.points.push_back(p);
    }
    // Of two tetrahedra, one facet of each in turn; the first one of the other body begins at its last point.
    soup.triangles = {{2, 1, 0}, {7, 4, 5}, {0, 1, 3}, {5, 6, 7}, {1, 2, 3}, {6, 4, 7}, {2, 0, 3}, {4, 6, 5}};
    Part const part(soup.points, soup.triangles);
    ASSERT_EQ(part.Bodies().size(), 2u);
    auto const points = [](Body const& body) {
        return std::vector<Point3>(body.Points().begin(), body.Points().end());
    };
    auto const triangles = [](Body const& body) {
        return std::vector<Triangle>(body.Triangles().begin(), body.Triangles().end());
    };
    EXPECT_EQ(points(part.Bodies()[0]), (std::vector<Point3>{{0, 1, 0}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(triangles(part.Bodies()[0]),
              (std::vector<Triangle>{{0, 1, 2}, {2, 1, 3}, {1, 0, 3}, {0, 2, 3}}));
    EXPECT_EQ(points(part.Bodies()[1]),
              (std::vector<Point3>{{10, 0, 1}, {10, 0, 0}, {11, 0, 0}, {10, 1, 0}}));
    EXPECT_EQ(triangles(part.Bodies()[1]),
              (std::vector<Triangle>{{0, 1, 2}, {2, 3, 0}, {3, 1, 0}, {1, 3, 2}}));
    for (Body const& body : part.Bodies()) {
        EXPECT_EQ(body.Measures().openEdges, 0);
        EXPECT_DOUBLE_EQ(body.Measures().volume, 1.0 / 6.0);
    }
}

TEST(IsInRange, UpToTheFarthestCoordinateOnEachAxis) {
    double const most = 1e10;
    for (double Point3::*const axis : {&Point3::x, &Point3::y, &Point3::z}) {
        for (double const sign : {1.0, -1.0}) {
            Point3 p{1, 2, 3};
            p.*axis = sign * most;
            EXPECT_TRUE(IsInRange(p));
            p.*axis = sign * std::nextafter(most, HUGE_VAL);
            EXPECT_FALSE(IsInRange(p));
            p.*axis = std::numeric_limits<double>::quiet_NaN();
            EXPECT_FALSE(IsInRange(p));
        }
    }
    EXPECT_TRUE(IsInRange({most, -most, most}));
}

TEST(Part, GoesToTheClassesAndBack) {
    Part const part = PartOf(shapes::Bracket());
    std::int64_t refused = -1;
    std::unique_ptr<CSTLModel> const model = part.Model(&refused);
    EXPECT_EQ(0, refused);
    EXPECT_EQ(part.Triangles().size(), static_cast<std::size_t>(model->GetFacetsNum()));
    Part const back(*model);
    EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(FacetsOf(back)));
    EXPECT_NEAR(part.Measures().volume, back.Measures().volume, 1e-6);
    CSTLModel empty;
    EXPECT_TRUE(Part(empty).Triangles().empty());
}

TEST(Part, WhatAClassicModelRefusesIsCounted) {
    shapes::Mesh mesh = shapes::Cube(10);
    mesh.push_back({{{20, 0, 0}, {20 + 1e-6f * 20, 0, 0}, {20, 1e-6f, 0}}});
    IntakeSettings raw;
    raw.heal = false;
    Part const part = PartOf(mesh, raw);
    ASSERT_EQ(13u, part.Triangles().size());
    std::int64_t refused = -1;
    EXPECT_EQ(12, part.Model(&refused)->GetFacetsNum());
    EXPECT_EQ(1, refused);
}

TEST(Part, ArraysThatMakeNoSenseAreRefused) {
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (Triangle const& t :
         {Triangle{0, 1, 3}, {-1, 1, 2}, {0, 1, std::numeric_limits<std::int32_t>::max()}}) {
        std::vector<Triangle> const triangles{{0, 1, 2}, t};
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { Part const part(points, triangles); }));
    }
    for (double const d : {-1.0, 0.0, std::nan(""), HUGE_VAL}) {
        IntakeSettings settings;
        settings.scale = d;
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { Part const part(points, {}, settings); })) << d;
    }
    for (double const d : {-1.0, std::nan(""), HUGE_VAL}) {
        IntakeSettings settings;
        settings.weld = d;
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { Part const part(points, {}, settings); })) << d;
    }
    for (double const d : {-1.0, std::nan("")}) {
        RepairSettings settings;
        settings.fillHoles = d;
        Part part = PartOf(shapes::Cube(1));
        EXPECT_EQ(ErrorKind::kArgument, KindOf([&] { part.Repair(settings); })) << d;
    }
}

TEST(NameOf, EveryFormatHasAName) {
    EXPECT_STREQ("binary STL", NameOf(MeshFormat::kBinaryStl));
    for (int i = 0; i <= static_cast<int>(MeshFormat::kRingCsm); ++i)
        EXPECT_GT(std::string(NameOf(static_cast<MeshFormat>(i))).size(), 3u);
}

}  // namespace
}  // namespace varnet
