// Supports at the limits of their settings, and at the plate.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "TestFiles.h"
#include "kit/part/PartChecks.h"
#include "varnet/Supports.h"

namespace varnet {
namespace {

// A prism along y from 0 to 10 whose outline in x and z runs counter-clockwise seen against y.
Soup Prism(std::vector<Point2> const& outline) {
    Soup soup;
    auto const n = static_cast<std::int32_t>(outline.size());
    for (double const y : {0.0, 10.0}) {
        for (Point2 const& p : outline) soup.points.push_back({p.x, y, p.y});
    }
    for (std::int32_t i = 0; i < n; ++i) {
        std::int32_t const k = (i + 1) % n;
        soup.triangles.push_back({i, k, n + k});
        soup.triangles.push_back({i, n + k, n + i});
        if (i < 1 || i + 1 == n) continue;
        soup.triangles.push_back({0, i + 1, i});
        soup.triangles.push_back({n, n + i, n + i + 1});
    }
    for (Triangle& t : soup.triangles) std::swap(t[1], t[2]);
    return soup;
}

Part PrismPart(std::vector<Point2> const& outline) {
    Soup const soup = Prism(outline);
    Part part(soup.points, soup.triangles);
    EXPECT_EQ(part.Measures().openEdges, 0);
    EXPECT_GT(part.Measures().volume, 0.0);
    return part;
}

TEST(SupportLimits, ARoofThatRisesFromThePlateIsHeldThoughItBeginsThere) {
    // From the plate at x = 0 up to 5 at x = 10: 26.6 degrees from straight down.
    Part const part = PrismPart({{0, 0}, {10, 5}, {10, 8}, {0, 8}});
    Supports const supports(part);
    ASSERT_EQ(supports.Overhangs().size(), 1u);
    Overhang const& overhang = supports.Overhangs()[0];
    EXPECT_EQ(overhang.box.min.z, 0.0);
    EXPECT_EQ(overhang.box.max.z, 5.0);
    EXPECT_TRUE(overhang.supported);
    EXPECT_EQ(overhang.why, "faces down");
    EXPECT_NEAR(overhang.projectedArea, 100.0, 1e-5);
    EXPECT_NEAR(overhang.area, 10.0 * std::sqrt(125.0), 1e-4);
    EXPECT_EQ(supports.Solids().size(), 1u);
}

TEST(SupportLimits, TheLowestPointIsThatOfThePartWhereverItStands) {
    for (double const z : {-300.0, 0.0, 77.5}) {
        Part const part = PrismPart({{0, z}, {10, z}, {10, z + 5}, {0, z + 5}});
        Supports const supports(part);
        ASSERT_EQ(supports.Overhangs().size(), 1u);
        EXPECT_EQ(supports.Overhangs()[0].why, "rests on the plate");
        EXPECT_TRUE(supports.Solids().empty());
    }
}

TEST(SupportLimits, AnglesGoFrom0To90AndLengthsFrom0) {
    Part const part = PrismPart({{0, 0}, {10, 5}, {10, 8}, {0, 8}});
    for (double SupportSettings::*const angle :
         {&SupportSettings::angle, &SupportSettings::edgesUp, &SupportSettings::edgesDown}) {
        SupportSettings settings;
        for (double const fine : {0.0, 90.0}) {
            settings.*angle = fine;
            EXPECT_NO_THROW(Supports(part, settings));
        }
        for (double const wrong : {std::nextafter(0.0, -1.0), std::nextafter(90.0, 91.0)}) {
            settings.*angle = wrong;
            EXPECT_THROW(Supports(part, settings), Error);
        }
    }
    for (double SupportSettings::*const length : {&SupportSettings::minArea, &SupportSettings::down,
                                                  &SupportSettings::edgeLength, &SupportSettings::stroke}) {
        SupportSettings settings;
        settings.*length = 0.0;
        EXPECT_NO_THROW(Supports(part, settings));
        settings.*length = -std::numeric_limits<double>::denorm_min();
        EXPECT_THROW(Supports(part, settings), Error);
    }
    SupportSettings wrong;
    wrong.edgesDown = 91.0;
    try {
        Supports const supports(part, wrong);
        ADD_FAILURE() << "no error";
    } catch (Error const& error) {
        EXPECT_STREQ(error.what(), "the angle of facets below an edge must be from 0 to 90");
    }
}

TEST(SupportLimits, FacetsThatTouchInACornerAreOneRegionWhereThatIsAskedFor) {
    // Two boards above a foot, whose undersides touch in a corner.
    shapes::Mesh mesh = shapes::Box({-40, -40, 0}, {-30, -30, 20});
    shapes::Append(mesh, shapes::Box({0, 0, 10}, {10, 10, 12}));
    shapes::Append(mesh, shapes::Box({10, 10, 10}, {20, 20, 12}));
    Part const part = PartOf(mesh);
    for (bool const byVertex : {true, false}) {
        SupportSettings settings;
        settings.connectByVertex = byVertex;
        Supports const supports(part, settings);
        auto const above = std::count_if(supports.Overhangs().begin(), supports.Overhangs().end(),
                                         [](Overhang const& overhang) { return overhang.box.min.z == 10.0; });
        EXPECT_EQ(above, byVertex ? 1 : 2);
    }
}

TEST(SupportLimits, ManySolidsAreWrittenEachWithItsOwnCorners) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    for (int i = 1; i <= 3; ++i)
        shapes::Append(mesh, shapes::Moved(shapes::Cube(4.0f), 20.0f * static_cast<float>(i), 0, 5));
    SupportSettings settings;
    settings.down = 2.0;
    double last = 0.0;
    settings.progress = [&last](double share) {
        EXPECT_GE(share, last);
        last = share;
        return true;
    };
    Supports const supports(PartOf(mesh), settings);
    EXPECT_EQ(last, 1.0);
    ASSERT_EQ(supports.Solids().size(), 3u);
    TestFolder const folder;
    supports.Write(folder / "solids.stl");
    Part const written = Part::Read(folder / "solids.stl");
    ASSERT_EQ(written.Bodies().size(), 3u);
    std::vector<double> places;
    for (Body const& body : written.Bodies()) {
        EXPECT_EQ(body.Measures().openEdges, 0);
        EXPECT_NEAR(std::fabs(body.Measures().volume), 4.0 * 4.0 * 2.0, 1e-4);
        EXPECT_EQ(body.Measures().box.min.z, 3.0);
        EXPECT_EQ(body.Measures().box.max.z, 5.0);
        places.push_back(body.Measures().box.min.x);
    }
    std::sort(places.begin(), places.end());
    EXPECT_EQ(places, (std::vector<double>{20, 40, 60}));
}

TEST(SupportLimits, PartsAndSupportsAreInputsInTheirOrder) {
    std::vector<Part> const parts = {PartOf(shapes::Cube(10.0f)), PartOf(shapes::Cube(20.0f))};
    std::vector<Supports> supports;
    supports.emplace_back(PrismPart({{0, 0}, {10, 5}, {10, 8}, {0, 8}}));
    supports.emplace_back(PrismPart({{0, 0}, {20, 5}, {20, 8}, {0, 8}}));
    std::vector<SlicerInput> const inputs = SlicerInputs(parts, supports);
    ASSERT_EQ(inputs.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(inputs[i].support, i >= 2);
        EXPECT_FALSE(inputs[i].turned);
        EXPECT_EQ(inputs[i].points.data(),
                  i < 2 ? parts[i].Points().data() : supports[i - 2].Solids()[0].points.data());
    }
}

}  // namespace
}  // namespace varnet
