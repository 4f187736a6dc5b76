// What the intake says of what it did, and which points it keeps.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "PartChecks.h"

namespace varnet {
namespace {

// A box of this size in arrays whose corners are shared; the six sides as two facets each.
Soup BoxOf(Point3 const& size) {
    Soup soup;
    for (int i = 0; i < 8; ++i) {
        soup.points.push_back({i & 1 ? size.x : 0.0, i & 2 ? size.y : 0.0, i & 4 ? size.z : 0.0});
    }
    soup.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                      {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    return soup;
}

Part PartOf(Soup const& soup, IntakeSettings const& settings = {}) {
    return Part(soup.points, soup.triangles, settings);
}

void ExpectAllPointsUsed(Part const& part) {
    std::vector<bool> used(part.Points().size(), false);
    for (Triangle const& t : part.Triangles()) {
        for (std::int32_t const corner : t) used.at(static_cast<std::size_t>(corner)) = true;
    }
    for (std::size_t i = 0; i < used.size(); ++i) EXPECT_TRUE(used[i]) << i;
}

TEST(Intake, AWeldByHandIsToldThoughNothingElseCouldBeClosed) {
    // One corner a hundredth away in one facet, and a facet missing.
    Soup soup = BoxOf({10, 10, 10});
    soup.points.push_back({0.01, 0, 0});
    soup.triangles[0][0] = 8;
    soup.triangles.pop_back();
    IntakeSettings settings;
    settings.weld = 0.02;
    Part const part = PartOf(soup, settings);
    EXPECT_EQ(part.Report().welded, 1);
    EXPECT_EQ(part.Report().weldTolerance, 0.02);
    EXPECT_EQ(part.Report().openEdges, 3);
    EXPECT_EQ(part.Report().openEdgesExact, 7);
    EXPECT_EQ(part.Points().size(), 8u);
    ExpectAllPointsUsed(part);
}

TEST(Intake, AWeldByHandReachesToItsToleranceAndTakesFacetsWithIt) {
    for (bool const reaches : {true, false}) {
        Soup const soup = BoxOf({10, 10, 0.25});
        IntakeSettings settings;
        settings.weld = reaches ? 0.25 : std::nextafter(0.25, 0.0);
        Part const part = PartOf(soup, settings);
        // The sides go, and the top lies on the bottom.
        EXPECT_EQ(part.Report().welded, reaches ? 4 : 0);
        EXPECT_EQ(part.Report().degenerate, reaches ? 8 : 0);
        EXPECT_EQ(part.Report().collinearTurned, 0);
        EXPECT_EQ(part.Report().weldTolerance, reaches ? 0.25 : 0.0);
        EXPECT_EQ(part.Triangles().size(), reaches ? 4u : 12u);
        EXPECT_EQ(part.Points().size(), reaches ? 4u : 8u);
    }
}

TEST(Intake, AWeldByHandIsTheOnlyToleranceThatIsTried) {
    // Two facets have a corner of their own a thousandth away, which the tolerances of its own accord would
    // join.
    Soup soup = BoxOf({10, 10, 10});
    soup.points.push_back({0.0005, 0.0005, 0});
    soup.triangles[0][0] = 8;
    IntakeSettings settings;
    settings.weld = 0.0001;
    Part const part = PartOf(soup, settings);
    EXPECT_EQ(part.Report().welded, 0);
    EXPECT_EQ(part.Report().openEdges, 4);
    Part const byItself = PartOf(soup);
    EXPECT_EQ(byItself.Report().welded, 1);
    EXPECT_EQ(byItself.Report().weldTolerance, 1e-3);
    EXPECT_EQ(byItself.Report().openEdges, 0);
    ExpectAllPointsUsed(byItself);
}

TEST(Intake, ACornerThatASliverLosesIsNoPointAnyMore) {
    // The edge from 4 to 5 of the top is divided twice at one place, up to a rounding: a sliver without
    // length lies between. Everything is closed by its corners.
    Soup soup = BoxOf({10, 10, 10});
    soup.points.push_back({5, 0, 10});
    soup.points.push_back({5 + 1e-7, 0, 10});
    // {4, 5, 6} at the new points, {1, 5, 4} at the first one; the sliver closes what is between.
    soup.triangles[2] = {4, 9, 6};
    soup.triangles.push_back({9, 5, 6});
    soup.triangles[5] = {1, 8, 4};
    soup.triangles.push_back({1, 5, 8});
    soup.triangles.push_back({4, 8, 9});
    soup.triangles.push_back({8, 5, 9});
    Part const part = PartOf(soup);
    EXPECT_EQ(part.Report().openEdgesExact, 0);
    EXPECT_EQ(part.Report().openEdges, 0);
    EXPECT_EQ(part.Report().welded, 0);
    EXPECT_GT(part.Report().collinearTurned, 0);
    EXPECT_EQ(part.Report().collinearLeft, 0);
    EXPECT_NEAR(part.Measures().volume, 1000.0, 1e-3);
    ExpectAllPointsUsed(part);
}

TEST(Intake, PointsThatDoubledFacetsAloneUsedGo) {
    // Every way in which facets go, beside each other.
    shapes::Mesh const shape = shapes::IcoSphere(10.0, 2);
    for (shapes::Mesh const& mesh :
         {shapes::WithSlivers(shape, 2), shapes::WithTJunctions(shape, 2),
          shapes::WithNearCorners(shape, 9, 1e-4f),
          shapes::Scaled(shapes::WithSlivers(shapes::Bracket(), 3), 0.001f), shapes::Doubled(shape)}) {
        Part const part = PartOf(SoupOf(mesh));
        ExpectAllPointsUsed(part);
        for (Body const& body : part.Bodies()) EXPECT_EQ(body.Measures().openEdges, 0);
    }
}

TEST(Intake, MeasuresAreThoseOfWhatCameOut) {
    // A facet twice: area, box and volume are those of the cube alone.
    Soup soup = BoxOf({10, 10, 10});
    soup.triangles.push_back(soup.triangles[4]);
    Part const part = PartOf(soup);
    EXPECT_EQ(part.Report().doubled, 1);
    EXPECT_EQ(part.Measures().area, 600.0);
    EXPECT_DOUBLE_EQ(part.Measures().volume, 1000.0);
    EXPECT_EQ(part.Measures().openEdges, 0);
    IntakeSettings asItIs;
    asItIs.heal = false;
    Part const left = PartOf(soup, asItIs);
    EXPECT_EQ(left.Report().doubled, 0);
    EXPECT_EQ(left.Measures().area, 650.0);
    EXPECT_EQ(left.Measures().openEdges, 3);
}

TEST(Intake, TheSizeIsTheLargestSideAndAHintStandsBelowAMillimetre) {
    double const below = std::nextafter(1.0, 0.0);
    for (Point3 const& size :
         {Point3{1, 0.5, 0.5}, Point3{0.5, 1, 0.5}, Point3{0.5, 0.5, 1}, Point3{3, 0.1, 0.1}})
        EXPECT_TRUE(PartOf(BoxOf(size)).Report().notes.empty());
    for (Point3 const& size : {Point3{below, 0.5, 0.5}, Point3{0.5, below, 0.5}, Point3{0.5, 0.5, below}})
        EXPECT_EQ(PartOf(BoxOf(size)).Report().notes.size(), 1u);
    EXPECT_EQ(PartOf(BoxOf({0.1, 0.12345, 0.2})).Report().notes,
              (std::vector<std::string>{
                  "the largest side is 0.2 mm: is the file in metres (a scale of 1000) or inches (25.4)?"}));
    IntakeSettings larger;
    larger.scale = 4.0;
    EXPECT_TRUE(PartOf(BoxOf({0.25, 0.1, 0.1}), larger).Report().notes.empty());
    EXPECT_TRUE(PartOf(Soup()).Report().notes.empty());
}

TEST(Intake, NotesCountOneFacetOrMore) {
    // The facet without area in front closes the two others, which would be open without it.
    Soup soup;
    for (std::int32_t i = 0; i < 2; ++i) {
        double const y = 50.0 * i;
        std::int32_t const n = 4 * i;
        soup.points.insert(soup.points.end(), {{0, y, 0}, {10, y, 0}, {4, y, 0}, {5, y + 5, 0}});
        soup.triangles.insert(soup.triangles.end(),
                              {{n, n + 1, n + 2}, {n, n + 2, n + 3}, {n + 2, n + 1, n + 3}});
        Part const part = PartOf(soup);
        EXPECT_EQ(part.Report().collinearLeft, i + 1);
        EXPECT_EQ(part.Report().tiny, 0);
        EXPECT_EQ(part.Report().notes,
                  (std::vector<std::string>{i == 0 ? "1 facet without area could not be taken out"
                                                   : "2 facets without area could not be taken out"}));
    }
    // Of a doubled area of 0.81e-10.
    Soup tiny;
    for (std::int32_t i = 0; i < 2; ++i) {
        double const x = 2.0 * i;
        std::int32_t const n = 3 * i;
        tiny.points.insert(tiny.points.end(), {{x, 0, 0}, {x + 9e-6, 0, 0}, {x, 9e-6, 0}});
        tiny.triangles.push_back({n, n + 1, n + 2});
        Part const part = PartOf(tiny);
        EXPECT_EQ(part.Report().tiny, i + 1);
        EXPECT_EQ(part.Report().collinearLeft, 0);
        ASSERT_FALSE(part.Report().notes.empty());
        EXPECT_EQ(part.Report().notes[0].substr(0, 13), i == 0 ? "1 facet with " : "2 facets with");
    }
}

TEST(Intake, AnIndexIsRefusedFromTheNumberOfPointsOn) {
    std::vector<Point3> const points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (Triangle const& t : {Triangle{3, 0, 1}, {0, 3, 1}, {0, 1, 3}, {-1, 0, 1}, {0, -1, 1}, {0, 1, -1}}) {
        std::vector<Triangle> const triangles = {{0, 1, 2}, t};
        try {
            Part const part(points, triangles);
            ADD_FAILURE() << "no error";
        } catch (Error const& error) {
            std::int32_t const bad = t[0] + t[1] + t[2] - 1;
            EXPECT_EQ(error.what(),
                      "triangle 1 names point " + std::to_string(bad < 0 ? -1 : 3) + ", and there are 3");
        }
    }
}

TEST(Intake, ScalesAndTolerancesAreTakenUpToTheLargestCoordinate) {
    Soup const soup = BoxOf({1, 1, 1});
    auto const isTaken = [&](double scale, double weld) {
        IntakeSettings settings;
        settings.scale = scale;
        settings.weld = weld;
        try {
            Part const part(soup.points, soup.triangles, settings);
            return true;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
            return false;
        }
    };
    double const most = 1e10;
    double const more = std::nextafter(most, HUGE_VAL);
    EXPECT_TRUE(isTaken(most, 0.0));
    EXPECT_FALSE(isTaken(more, 0.0));
    EXPECT_TRUE(isTaken(std::numeric_limits<double>::denorm_min(), 0.0));
    EXPECT_FALSE(isTaken(0.0, 0.0));
    EXPECT_TRUE(isTaken(1.0, most));
    EXPECT_FALSE(isTaken(1.0, more));
    EXPECT_FALSE(isTaken(1.0, -std::numeric_limits<double>::denorm_min()));
}

TEST(Intake, WhatIsCountedAddsUp) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Soup soup = BoxOf({10, 10, 10});
    soup.points.push_back({nan, 0, 0});
    soup.points.push_back({1e10, 0, 0});
    soup.points.push_back({std::nextafter(1e10, HUGE_VAL), 0, 0});
    soup.points.push_back({0, -0.0, 0});
    soup.triangles.push_back({8, 1, 2});   // no number
    soup.triangles.push_back({1, 2, 10});  // too far
    soup.triangles.push_back({1, 1, 2});   // one corner twice
    soup.triangles.push_back({0, 11, 2});  // the same, by its coordinates
    soup.triangles.push_back({0, 9, 2});   // as far as can be
    Part const part = PartOf(soup);
    EXPECT_EQ(part.Report().facetsInFile, 17);
    EXPECT_EQ(part.Report().facetsRead, 17);
    EXPECT_EQ(part.Report().notFinite, 2);
    EXPECT_EQ(part.Report().degenerate, 2);
    EXPECT_EQ(part.Triangles().size(), 13u);
    EXPECT_EQ(part.Report().openEdges, 3);
    EXPECT_EQ(part.Report().manyFacetEdges, 1);
}

// Two corners of needles that become one leave a point that nobody uses.
TEST(Intake, APointThatANeedleHasLostIsNoneOfThePart) {
    std::vector<Point3> const points = {{0, 0, 0},  {1e-12, 0, 0}, {10, 0, 0},
                                        {0, 10, 0}, {-10, 0, 0},   {0, -10, 0}};
    std::vector<Triangle> const triangles = {{0, 3, 4}, {0, 4, 5}, {1, 5, 2},
                                             {1, 2, 3}, {0, 1, 3}, {1, 0, 5}};
    Part const part(points, triangles);
    EXPECT_EQ(part.Report().collinearTurned, 2);
    EXPECT_EQ(part.Report().welded, 0);
    EXPECT_EQ(part.Report().doubled, 0);
    EXPECT_EQ(part.Triangles().size(), 4u);
    EXPECT_EQ(part.Points().size(), 5u);
}

// Of facets that meet at an edge, the one on its one side has a corner a little beside it.
TEST(Intake, AWeldByHandDividesEdgesAtPointsWithinIt) {
    Soup soup;
    soup.points = {{0, 0, 0}, {10, 0, 0}, {5, 5, 0}, {5, -0.05, 0}, {5, -5, 0}};
    soup.triangles = {{0, 1, 2}, {0, 4, 3}, {3, 4, 1}};
    for (double const weld : {0.0625, 0.04}) {
        IntakeSettings settings;
        settings.weld = weld;
        Part const part = PartOf(soup, settings);
        bool const reaches = weld > 0.05;
        EXPECT_EQ(part.Report().openEdgesExact, 7);
        EXPECT_EQ(part.Report().split, reaches ? 1 : 0);
        EXPECT_EQ(part.Report().openEdges, reaches ? 4 : 7);
        EXPECT_EQ(part.Triangles().size(), reaches ? 4u : 3u);
        EXPECT_EQ(part.Report().welded, 0);
    }
}

TEST(Intake, ASizeBelowAMillimetreIsToldInThreeDigits) {
    auto const told = [](Point3 const& size) {
        std::vector<std::string> const notes = PartOf(BoxOf(size)).Report().notes;
        return notes.empty() ? "" : notes[0].substr(0, notes[0].find(" mm"));
    };
    EXPECT_EQ(told({0.25, 0.123456, 0.125}), "the largest side is 0.25");
    EXPECT_EQ(told({0.123456, 0.1, 0.1}), "the largest side is 0.123");
    EXPECT_EQ(told({0.1, 0.98765, 0.1}), "the largest side is 0.988");
    EXPECT_EQ(told({0.1, 0.1, 0.0012345}), "the largest side is 0.1");
    EXPECT_EQ(told({0.1, 0.1, 1.0}), "");
    EXPECT_EQ(told({0.1, 1.0, 0.1}), "");
    EXPECT_EQ(told({1.0, 0.1, 0.1}), "");
}

// The third corner of a facet comes to lie on its longest side: the facet has no area then, and cannot be
// divided at a corner of its own.
TEST(Intake, AFacetThatAWeldHasFlattenedIsTakenOut) {
    Soup soup;
    soup.points = {{5, 0, 0}, {5, -5, 0}, {6, -5, 0}, {0, 0, 0}, {10, 0, 0}, {5, 0.0625, 0}};
    soup.triangles = {{0, 1, 2}, {3, 4, 5}};
    IntakeSettings settings;
    settings.weld = 0.125;
    Part const part = PartOf(soup, settings);
    EXPECT_EQ(part.Report().welded, 1);
    EXPECT_EQ(part.Report().split, 0);
    EXPECT_EQ(part.Report().collinearTurned, 1);
    EXPECT_EQ(part.Report().collinearLeft, 0);
    ASSERT_EQ(part.Triangles().size(), 1u);
    EXPECT_EQ(part.Points().size(), 3u);
    EXPECT_EQ(part.Report().openEdges, 3);
    ExpectAllPointsUsed(part);
    // A weld that reaches less far leaves both.
    settings.weld = 0.03125;
    EXPECT_EQ(PartOf(soup, settings).Triangles().size(), 2u);
}

}  // namespace
}  // namespace varnet
