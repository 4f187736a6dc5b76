#include "varnet/Slicer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "kit/slice/FlatShapes.h"

namespace varnet {
namespace {

Layer OnlyLayer(std::vector<SlicerInput> const& inputs, SliceSettings const& settings, int number = 1) {
    return Slicer(inputs, settings).LayerAt(number);
}

TEST(Slicer, CubeGivesSquares) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    SliceReport report;
    std::vector<Layer> const layers = AllLayers({cube.Input()}, ContoursOnly(), &report);
    ASSERT_EQ(layers.size(), 10u);
    for (std::size_t i = 0; i < layers.size(); ++i) {
        Layer const& layer = layers[i];
        EXPECT_EQ(layer.number, static_cast<int>(i) + 1);
        EXPECT_DOUBLE_EQ(layer.z, static_cast<double>(i) + 1.0);
        EXPECT_DOUBLE_EQ(layer.cutHeight, static_cast<double>(i) + 0.5);
        ASSERT_EQ(layer.ContourCount(), 1u);
        EXPECT_TRUE(layer.contours[0].closed);
        EXPECT_EQ(layer.contours[0].parent, -1);
        EXPECT_EQ(layer.ContourPoints(0).size(), 4u);
        EXPECT_DOUBLE_EQ(layer.Area(), 100.0);
        EXPECT_DOUBLE_EQ(layer.ContourLength(), 40.0);
        EXPECT_EQ(layer.strokes.size(), 0u);
    }
    EXPECT_EQ(report.layers, 10);
    EXPECT_EQ(report.contours, 10);
    EXPECT_EQ(report.openPaths, 0);
    EXPECT_EQ(report.points, 40);
    EXPECT_NEAR(report.volume, 1000.0, 1e-9);
    EXPECT_NEAR(report.cutVolume, 1000.0, 1e-9);
    EXPECT_NEAR(report.solidVolume, 1000.0, 1e-9);
    EXPECT_NEAR(report.meshVolume, 1000.0, 1e-9);
    EXPECT_NEAR(report.contourLength, 400.0, 1e-9);
    EXPECT_EQ(report.resolvedLayers, 0);
}

TEST(Slicer, TheLastLayerIsCutWithinThePart) {
    for (double const height : {0.1, 0.9, 1.1, 1.4, 1.5, 1.6, 2.0}) {
        FlatShape cube = FlatBox(0, 0, 0, 10, 10, 1);
        for (Point3& p : cube.points) p.z *= height;
        SliceReport report;
        std::vector<Layer> const layers = AllLayers({cube.Input()}, ContoursOnly(), &report);
        EXPECT_EQ(layers.size(), height > 1.0 ? 2u : 1u);
        EXPECT_DOUBLE_EQ(layers.back().Area(), 100.0);
        EXPECT_DOUBLE_EQ(layers.back().z, static_cast<double>(layers.size()));
        EXPECT_NEAR(layers.back().cutHeight, height > 1.0 ? (1.0 + height) / 2.0 : height / 2.0, 1e-12);
        EXPECT_NEAR(report.volume, 100.0 * height, 1e-9);
    }
}

// A part that rounding puts above its last whole layer gets no other; one that is higher does.
TEST(Slicer, RoundingAddsNoLayer) {
    ASSERT_GT(2.1 / 0.3, 7.0);
    auto const count = [](double height, double layer) {
        FlatShape cube = FlatBox(0, 0, 0, 10, 10, 1);
        for (Point3& p : cube.points) p.z *= height;
        return Slicer({cube.Input()}, ContoursOnly(layer)).LayerCount();
    };
    EXPECT_EQ(count(2.1, 0.3), 7);
    for (int layers : {1, 7, 100}) {
        EXPECT_EQ(count(layers, 1.0), layers);
        EXPECT_EQ(count(layers + 0.9e-6, 1.0), layers);
        EXPECT_EQ(count(layers + 1.1e-6, 1.0), layers + 1);
        EXPECT_EQ(count(layers - 0.5, 1.0), layers);
    }
    EXPECT_EQ(count(1e-7, 1.0), 1) << "a part has a layer at least";
}

TEST(Slicer, AHoleRunsClockwiseBelowItsContour) {
    FlatShape const outside = FlatBox(0, 0, 0, 10, 10, 4);
    FlatShape const hole = Turned(FlatBox(2, 2, -1, 5, 5, 5));
    // The hole's walls stick out of the part: there its winding is below 0, and nothing is solid.
    Layer const layer = OnlyLayer({outside.Input(), hole.Input()}, ContoursOnly(), 3);
    ASSERT_EQ(layer.ContourCount(), 2u);
    EXPECT_GT(SignedArea(layer.ContourPoints(0)), 0.0);
    EXPECT_LT(SignedArea(layer.ContourPoints(1)), 0.0);
    EXPECT_EQ(layer.contours[1].parent, 0);
    EXPECT_EQ(layer.contours[1].level, 1);
    EXPECT_TRUE(layer.contours[1].IsHole());
    EXPECT_DOUBLE_EQ(layer.Area(), 91.0);
}

// The contours of a hollow run the other way.
TEST(Slicer, WhatOpenPathsLackIsMeasuredWhicheverWayTheyRun) {
    FlatShape box = FlatBox(0, 0, 0, 10, 10, 2);
    auto const isRight = [&box](Triangle const& t) {
        return std::all_of(t.begin(), t.end(), [&box](std::int32_t corner) {
            return box.points[static_cast<std::size_t>(corner)].x == 10.0;
        });
    };
    std::erase_if(box.triangles, isRight);
    for (bool const turned : {false, true}) {
        SliceReport report;
        AllLayers({box.Input(turned)}, ContoursOnly(), &report);
        EXPECT_EQ(report.openPaths, 2);
        EXPECT_NEAR(report.missingVolume, 200.0, 1e-9) << turned;
        EXPECT_EQ(report.volume, 0.0);
    }
}

TEST(Slicer, OverlapsAreFilledByWindingAndHollowByOddCount) {
    FlatShape const a = FlatBox(0, 0, 0, 10, 10, 2);
    FlatShape const b = FlatBox(5, 5, 0, 15, 15, 2);
    SliceSettings settings = ContoursOnly();
    SliceReport report;
    std::vector<Layer> const layers = AllLayers({a.Input(), b.Input()}, settings, &report);
    ASSERT_EQ(layers[0].ContourCount(), 1u);
    EXPECT_EQ(layers[0].ContourPoints(0).size(), 8u);
    EXPECT_NEAR(layers[0].Area(), 175.0, 1e-6);
    EXPECT_NEAR(report.volume, 350.0, 1e-5);
    EXPECT_NEAR(report.cutVolume, 400.0, 1e-9);
    EXPECT_NEAR(report.meshVolume, 400.0, 1e-9);
    EXPECT_EQ(report.resolvedLayers, 2);
    settings.rule = SolidRule::kOdd;
    EXPECT_NEAR(OnlyLayer({a.Input(), b.Input()}, settings).Area(), 150.0, 1e-6);
}

TEST(Slicer, NestedShellsFillAndCavitiesAreEmpty) {
    FlatShape const outer = FlatBox(0, 0, 0, 10, 10, 10);
    FlatShape const inner = FlatBox(3, 3, 3, 7, 7, 7);
    SliceSettings settings = ContoursOnly();
    Layer const filled = OnlyLayer({outer.Input(), inner.Input()}, settings, 5);
    EXPECT_EQ(filled.ContourCount(), 1u);
    EXPECT_DOUBLE_EQ(filled.Area(), 100.0);
    Layer const hollow = OnlyLayer({outer.Input(), inner.Input(true)}, settings, 5);
    EXPECT_EQ(hollow.ContourCount(), 2u);
    EXPECT_DOUBLE_EQ(hollow.Area(), 84.0);
    settings.rule = SolidRule::kOdd;
    EXPECT_DOUBLE_EQ(OnlyLayer({outer.Input(), inner.Input()}, settings, 5).Area(), 84.0);
}

TEST(Slicer, TouchingCubesBecomeOne) {
    FlatShape const a = FlatBox(0, 0, 0, 10, 10, 2);
    FlatShape const b = FlatBox(10, 0, 0, 20, 10, 2);
    Layer const layer = OnlyLayer({a.Input(), b.Input()}, ContoursOnly());
    ASSERT_EQ(layer.ContourCount(), 1u);
    EXPECT_EQ(layer.ContourPoints(0).size(), 4u);
    EXPECT_DOUBLE_EQ(layer.Area(), 200.0);
    // The same in one mesh, with the facets between them there in both windings.
    shapes::Mesh both = shapes::Box({0, 0, 0}, {10, 10, 2});
    shapes::Append(both, shapes::Box({10, 0, 0}, {20, 10, 2}));
    FlatShape const one = Flat(both);
    Layer const merged = OnlyLayer({one.Input()}, ContoursOnly());
    EXPECT_EQ(merged.ContourCount(), 1u);
    EXPECT_DOUBLE_EQ(merged.Area(), 200.0);
}

TEST(Slicer, CubesThatShareAnEdgeComeApart) {
    shapes::Mesh both = shapes::Box({0, 0, 0}, {10, 10, 2});
    shapes::Append(both, shapes::Box({10, 10, 0}, {20, 20, 2}));
    Layer const layer = OnlyLayer({Flat(both).Input()}, ContoursOnly());
    ASSERT_EQ(layer.ContourCount(), 2u);
    EXPECT_DOUBLE_EQ(SignedArea(layer.ContourPoints(0)), 100.0);
    EXPECT_DOUBLE_EQ(SignedArea(layer.ContourPoints(1)), 100.0);
    EXPECT_EQ(layer.contours[1].parent, -1);
}

TEST(Slicer, AMeshInsideOutIsSolidWhenTurned) {
    FlatShape const cube = Turned(FlatBox(0, 0, 0, 10, 10, 10));
    EXPECT_EQ(OnlyLayer({cube.Input()}, ContoursOnly()).ContourCount(), 0u);
    SliceReport report;
    std::vector<Layer> const layers = AllLayers({cube.Input(true)}, ContoursOnly(), &report);
    EXPECT_DOUBLE_EQ(layers[0].Area(), 100.0);
    EXPECT_NEAR(report.meshVolume, 1000.0, 1e-9);
}

TEST(Slicer, TurnedAndDoubledFacetsDoNotHurt) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    for (std::size_t i = 0; i < cube.triangles.size(); ++i) {
        FlatShape turned = cube;
        std::swap(turned.triangles[i][1], turned.triangles[i][2]);
        FlatShape doubled = cube;
        doubled.triangles.push_back(cube.triangles[i]);
        FlatShape thrice = doubled;
        thrice.triangles.push_back(turned.triangles[i]);
        for (FlatShape const& mesh : {turned, doubled, thrice}) {
            SliceReport report;
            AllLayers({mesh.Input()}, ContoursOnly(), &report);
            EXPECT_NEAR(report.volume, 1000.0, 1e-9) << i;
            EXPECT_EQ(report.openPaths, 0) << i;
        }
    }
}

TEST(Slicer, AWholeMeshTwiceIsTheMeshOnce) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    FlatShape twice = cube;
    twice.triangles.insert(twice.triangles.end(), cube.triangles.begin(), cube.triangles.end());
    Layer const once = OnlyLayer({cube.Input()}, ContoursOnly());
    EXPECT_EQ(OnlyLayer({twice.Input()}, ContoursOnly()), once);
    EXPECT_DOUBLE_EQ(OnlyLayer({cube.Input(), cube.Input()}, ContoursOnly()).Area(), 100.0);
}

TEST(Slicer, VerticesAndLevelFacetsAtTheCutHeight) {
    // Steps whose level faces lie at 0.5, 1.5, ...: where layers of 1 are cut.
    shapes::Mesh steps = shapes::Box({0, 0, 0}, {8, 8, 1.5f});
    shapes::Append(steps, shapes::Box({2, 2, 1.5f}, {6, 6, 2.5f}));
    SliceReport report;
    std::vector<Layer> const layers = AllLayers({Flat(steps).Input()}, ContoursOnly(), &report);
    ASSERT_EQ(layers.size(), 3u);
    EXPECT_DOUBLE_EQ(layers[0].Area(), 64.0);
    EXPECT_DOUBLE_EQ(layers[1].Area(), 64.0);  // a cut is what lies just below
    EXPECT_DOUBLE_EQ(layers[2].Area(), 16.0);
    EXPECT_EQ(report.openPaths, 0);
    // An octahedron cut through its four middle vertices.
    FlatShape octahedron;
    octahedron.points = {{1, 0, 1}, {0, 1, 1}, {-1, 0, 1}, {0, -1, 1}, {0, 0, 0}, {0, 0, 2}};
    for (int i = 0; i < 4; ++i) {
        octahedron.triangles.push_back({i, (i + 1) % 4, 5});
        octahedron.triangles.push_back({(i + 1) % 4, i, 4});
    }
    Layer const middle = OnlyLayer({octahedron.Input()}, ContoursOnly(2.0));
    ASSERT_EQ(middle.ContourCount(), 1u);
    EXPECT_EQ(middle.ContourPoints(0).size(), 4u);
    EXPECT_DOUBLE_EQ(middle.Area(), 2.0);
}

// A box without a strip of its wall at x = 0, as wide as the gap.
FlatShape BoxWithGap(double gap) {
    FlatShape mesh;
    std::vector<Point2> const ring{{0, 5 + gap}, {0, 10}, {10, 10}, {10, 0}, {0, 0}, {0, 5}};
    for (double z : {0.0, 2.0}) {
        for (Point2 const& p : ring) mesh.points.push_back({p.x, p.y, z});
    }
    for (int i = 0; i < 5; ++i) {
        mesh.triangles.push_back({i + 1, i, i + 6});
        mesh.triangles.push_back({i + 1, i + 6, i + 7});
    }
    return mesh;
}

TEST(Slicer, GapsAreClosedUpToTheSetting) {
    SliceReport report;
    std::vector<Layer> layers = AllLayers({BoxWithGap(0.04).Input()}, ContoursOnly(), &report);
    EXPECT_EQ(report.openPaths, 0);
    EXPECT_EQ(report.gapsClosed, 2);
    EXPECT_NEAR(report.gapsClosedLength, 0.08, 1e-12);
    EXPECT_NEAR(report.longestGapClosed, 0.04, 1e-12);
    EXPECT_NEAR(layers[0].Area(), 100.0, 1e-9);

    SliceSettings never = ContoursOnly();
    never.close = 0.0;
    layers = AllLayers({BoxWithGap(0.04).Input()}, never, &report);
    EXPECT_EQ(report.openPaths, 2);
    EXPECT_EQ(report.layersWithOpenPaths, 2);
    EXPECT_EQ(report.gapsClosed, 0);
    EXPECT_NEAR(report.longestGap, 0.04, 1e-12);
    ASSERT_EQ(layers[0].ContourCount(), 1u);
    EXPECT_FALSE(layers[0].contours[0].closed);
    EXPECT_NEAR(layers[0].ContourLength(), 39.96, 1e-9);
    EXPECT_DOUBLE_EQ(layers[0].Area(), 0.0);

    layers = AllLayers({BoxWithGap(0.06).Input()}, ContoursOnly(), &report);
    EXPECT_EQ(report.openPaths, 2);
    EXPECT_NEAR(report.longestGap, 0.06, 1e-12);

    // Ends within a micron are at one place.
    layers = AllLayers({BoxWithGap(0.0005).Input()}, never, &report);
    EXPECT_EQ(report.openPaths, 0);
    EXPECT_EQ(report.gapsClosed, 0);
}

TEST(Slicer, LoosePatchesAreJoinedIntoTheContour) {
    // Every facet on its own, with corners that are a little off.
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> off(-0.01, 0.01);
    FlatShape loose;
    for (Triangle const& triangle : cube.triangles) {
        auto const first = static_cast<std::int32_t>(loose.points.size());
        for (std::int32_t corner : triangle) {
            Point3 const& p = cube.points[static_cast<std::size_t>(corner)];
            loose.points.push_back({p.x + off(random), p.y + off(random), p.z + off(random)});
        }
        loose.triangles.push_back({first, first + 1, first + 2});
    }
    SliceReport report;
    std::vector<Layer> const layers = AllLayers({loose.Input()}, ContoursOnly(0.9), &report);
    EXPECT_EQ(report.openPaths, 0);
    EXPECT_GT(report.gapsClosed, 50);
    EXPECT_NEAR(layers[5].Area(), 100.0, 0.5);
}

TEST(Slicer, RoundShapesKeepTheirVolume) {
    struct Case {
        FlatShape mesh;
        double volume;
    };
    double const pi = std::acos(-1.0);
    Case const cases[] = {{Flat(shapes::UvSphere(10.0, 90, 180)), 4.0 / 3.0 * pi * 1000.0},
                          {Flat(shapes::IcoSphere(10.0, 6)), 4.0 / 3.0 * pi * 1000.0},
                          {Flat(shapes::Torus(20.0, 5.0, 240, 120)), 2.0 * pi * pi * 20.0 * 25.0}};
    for (Case const& c : cases) {
        SliceReport report;
        AllLayers({c.mesh.Input()}, ContoursOnly(0.05), &report);
        EXPECT_NEAR(report.solidVolume / c.volume, 1.0, 0.002);
        EXPECT_NEAR(report.solidVolume / report.meshVolume, 1.0, 3e-4);
        EXPECT_NEAR(report.cutVolume / report.meshVolume, 1.0, 3e-4);
        EXPECT_LE(report.volume, report.solidVolume);
        EXPECT_NEAR(report.volume / report.meshVolume, 1.0, 0.002);
        EXPECT_EQ(report.openPaths, 0);
    }
}

TEST(Slicer, ScaleDoesNotMatter) {
    for (double factor : {1e-6, 1e-3, 1.0, 1e3, 1e8}) {
        FlatShape const a = Scaled(FlatBox(0, 0, 0, 10, 10, 10), factor);
        FlatShape const b = Scaled(FlatBox(5, 5, 0, 15, 15, 10), factor);
        SliceSettings settings = ContoursOnly(std::max(factor, 1e-9));
        if (factor > 1e5) {
            EXPECT_THROW(Slicer({a.Input()}, ContoursOnly(1.0)), Error);
            settings.layer = 1e6;
        }
        settings.tolerance = 0.0;
        Layer const layer = OnlyLayer({a.Input(), b.Input()}, settings);
        ASSERT_EQ(layer.ContourCount(), 1u) << factor;
        EXPECT_NEAR(layer.Area() / (175.0 * factor * factor), 1.0, 1e-7) << factor;
    }
}

TEST(Slicer, CornersThatAreNoNumbersAreLeftOut) {
    FlatShape cube = FlatBox(0, 0, 0, 10, 10, 10);
    double const bad[] = {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                          1e300};
    for (double const value : bad) {
        auto const first = static_cast<std::int32_t>(cube.points.size());
        cube.points.push_back({value, 1, 1});
        cube.points.push_back({1, value, 1});
        cube.points.push_back({1, 1, value});
        for (std::int32_t i = first; i < first + 3; ++i) cube.triangles.push_back({0, 1, i});
    }
    SliceReport report;
    AllLayers({cube.Input()}, ContoursOnly(), &report);
    EXPECT_EQ(report.skippedFacets, 9);
    EXPECT_NEAR(report.volume, 1000.0, 1e-9);
    // Facets of fewer than three points are no facets.
    cube.triangles.push_back({0, 0, 6});
    cube.triangles.push_back({6, 6, 6});
    AllLayers({cube.Input()}, ContoursOnly(), &report);
    EXPECT_NEAR(report.volume, 1000.0, 1e-9);
    EXPECT_EQ(report.openPaths, 0);
}

TEST(Slicer, NothingToSliceIsSaid) {
    FlatShape flat = FlatBox(0, 0, 0, 10, 10, 10);
    for (Point3& p : flat.points) p.z = 1.0;
    FlatShape const support = FlatBox(0, 0, 0, 1, 1, 1);
    EXPECT_THROW(Slicer({}, SliceSettings()), Error);
    EXPECT_THROW(Slicer({SlicerInput()}, SliceSettings()), Error);
    EXPECT_THROW(Slicer({flat.Input()}, SliceSettings()), Error);
    EXPECT_THROW(Slicer({support.Input(false, true)}, SliceSettings()), Error);
}

TEST(Slicer, IndexesOutOfRangeAreRefused) {
    for (std::int32_t const bad : {-1, 8, INT32_MAX, INT32_MIN}) {
        FlatShape cube = FlatBox(0, 0, 0, 10, 10, 10);
        cube.triangles[5][1] = bad;
        EXPECT_THROW(Slicer({cube.Input()}), Error);
    }
}

TEST(Slicer, SettingsThatMakeNoSenseAreRefusedInOneShortLine) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    auto const refused = [&](auto change) {
        SliceSettings settings;
        change(settings);
        try {
            Slicer const slicer({cube.Input()}, settings);
        } catch (Error const& error) {
            std::string const what = error.what();
            return error.Kind() == ErrorKind::kArgument && what.size() < 100 &&
                   what.find('\n') == std::string::npos;
        }
        return false;
    };
    for (double bad : {nan, infinity, 0.0, -0.2, 1e300, 1e-300, 1e-6}) {
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.layer = bad; })) << bad;
    }
    for (double bad : {nan, infinity, -0.2, 1e300, 1e-300, 1e-6}) {
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.hatch = bad; })) << bad;
    }
    for (double bad : {nan, infinity, -361.0, 1e300}) {
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.angle = bad; })) << bad;
    }
    for (double bad : {nan, infinity, -1.0, 1e300}) {
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.tolerance = bad; })) << bad;
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.close = bad; })) << bad;
    }
    for (int bad : {0, -1, 1025}) {
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.threads = bad; })) << bad;
        EXPECT_EQ(refused([bad](SliceSettings& s) { s.lastLayer = bad; }), bad != 0) << bad;
        EXPECT_TRUE(refused([bad](SliceSettings& s) { s.firstLayer = bad; })) << bad;
    }
    EXPECT_TRUE(refused([](SliceSettings& s) {
        s.firstLayer = 3;
        s.lastLayer = 2;
    }));
    EXPECT_FALSE(refused([](SliceSettings&) {}));
}

TEST(Slicer, ThreadsRangesAndSingleLayersGiveTheSame) {
    FlatShape const gyroid = Flat(shapes::Gyroid(12));
    FlatShape const box = FlatBox(1, 1, 1, 5, 5, 5);
    FlatShape const support = FlatBox(0, 0, 0, 9, 9, 9);
    std::vector<SlicerInput> const inputs{gyroid.Input(), box.Input(), support.Input(false, true)};
    SliceSettings settings;
    settings.layer = 0.1;
    SliceReport report;
    std::vector<Layer> const whole = AllLayers(inputs, settings, &report);
    EXPECT_GT(report.resolvedLayers, 10);
    EXPECT_GT(report.supportStrokes, 10);
    for (int threads : {2, 3, 7}) {
        settings.threads = threads;
        SliceReport other;
        EXPECT_EQ(AllLayers(inputs, settings, &other), whole) << threads;
        EXPECT_EQ(other.volume, report.volume);
        EXPECT_EQ(other.contourLength, report.contourLength);
        EXPECT_EQ(other.points, report.points);
    }
    settings.firstLayer = 11;
    settings.lastLayer = 29;
    for (int threads : {1, 2}) {
        settings.threads = threads;
        std::vector<Layer> const range = AllLayers(inputs, settings);
        ASSERT_EQ(range.size(), 19u);
        for (std::size_t i = 0; i < range.size(); ++i) EXPECT_EQ(range[i], whole[i + 10]);
    }
    Slicer const slicer(inputs, settings);
    for (int number : {1, 40, 3, static_cast<int>(whole.size())}) {
        EXPECT_EQ(slicer.LayerAt(number), whole[static_cast<std::size_t>(number) - 1]);
    }
    EXPECT_THROW(slicer.LayerAt(0), Error);
    EXPECT_THROW(slicer.LayerAt(static_cast<int>(whole.size()) + 1), Error);
}

TEST(Slicer, LayersCanBeTakenOneByOne) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    for (int threads : {1, 2}) {
        SliceSettings settings = ContoursOnly();
        settings.threads = threads;
        Slicer slicer({cube.Input()}, settings);
        int number = 0;
        for (Layer const& layer : slicer) EXPECT_EQ(layer.number, ++number);
        EXPECT_EQ(number, 10);
        EXPECT_EQ(slicer.NextLayer()->number, 1);
        EXPECT_EQ(slicer.NextLayer()->number, 2);
        Slicer moved = std::move(slicer);
        EXPECT_EQ(moved.NextLayer()->number, 3);
        EXPECT_EQ(moved.Report().layers, 3);
        for (int i = 4; i <= 10; ++i) EXPECT_EQ(moved.NextLayer()->number, i);
        EXPECT_FALSE(moved.NextLayer().has_value());
        EXPECT_EQ(moved.NextLayer()->number, 1);
    }
}

TEST(Slicer, ACallbackCanCancelAndTheNextCallBeginsAnew) {
    FlatShape const gyroid = Flat(shapes::Gyroid(12));
    for (int threads : {1, 3}) {
        double last = 0.0;
        bool stop = false;
        SliceSettings settings;
        settings.threads = threads;
        settings.progress = [&](double share) {
            EXPECT_GE(share, last);
            EXPECT_LE(share, 1.0);
            last = share;
            return !stop;
        };
        Slicer slicer({gyroid.Input()}, settings);
        slicer.ForEachLayer([](Layer&&) {});
        EXPECT_EQ(last, 1.0);
        stop = true;
        last = 0.0;
        try {
            slicer.ForEachLayer([](Layer&&) {});
            ADD_FAILURE();
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
        }
        stop = false;
        last = 0.0;
        EXPECT_EQ(slicer.ForEachLayer([](Layer&&) {}).layers, slicer.LayerCount());
        // What the callback throws comes out.
        last = 0.0;
        EXPECT_THROW(slicer.ForEachLayer([](Layer&&) { throw 5; }), int);
    }
}

// They have no contours in the layers.
TEST(Slicer, SupportsThatCrossAreNotCountedAmongContoursThatDo) {
    FlatShape const part = FlatBox(0, 0, 0, 10, 10, 4);
    FlatShape const a = FlatBox(20, 0, 0, 30, 10, 4);
    FlatShape const b = FlatBox(25, 5, 0, 35, 15, 4);
    SliceSettings settings;
    settings.layer = 1.0;
    SliceReport report;
    AllLayers({part.Input(), a.Input(false, true), b.Input(false, true)}, settings, &report);
    EXPECT_GT(report.supportStrokes, 0);
    EXPECT_EQ(report.resolvedLayers, 0);
}

TEST(Slicer, SupportsGetStrokesInEvenLayersWhereNoPartIs) {
    FlatShape const part = FlatBox(0, 0, 0, 10, 10, 4);
    FlatShape const support = FlatBox(5, 0, 0, 20, 10, 4);
    SliceSettings settings;
    settings.layer = 1.0;
    settings.angle = -90.0;  // even layers have lines along x
    std::vector<Layer> const layers = AllLayers({part.Input(), support.Input(false, true)}, settings);
    for (Layer const& layer : layers) {
        EXPECT_EQ(layer.ContourCount(), 1u);
        EXPECT_DOUBLE_EQ(layer.Area(), 100.0);
        EXPECT_EQ(layer.SupportStrokeCount(), layer.number % 2 == 0 ? 20u : 0u);
        for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
            for (Stroke const& stroke : layer.ChainStrokes(i)) {
                if (layer.chainIds[i] == kSupportId) {
                    EXPECT_NEAR(std::min(stroke.from.x, stroke.to.x), 10.25, 1e-9);
                    EXPECT_NEAR(std::max(stroke.from.x, stroke.to.x), 19.75, 1e-9);
                } else {
                    EXPECT_EQ(layer.chainIds[i], kFillId);
                    EXPECT_GT(std::min(stroke.from.x, stroke.to.x), 0.2);
                    EXPECT_LT(std::max(stroke.from.x, stroke.to.x), 9.8);
                }
            }
        }
    }
}

TEST(Slicer, SoupsOfTrianglesComeThrough) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> anywhere(0.0, 10.0);
    for (int round = 0; round < 20; ++round) {
        FlatShape soup;
        int const points = round % 2 == 0 ? 12 : 600;
        for (int i = 0; i < points; ++i) {
            // Every second time on a coarse lattice, where much falls together.
            Point3 p{anywhere(random), anywhere(random), anywhere(random)};
            if (round % 4 < 2) p = {std::round(p.x), std::round(p.y), std::round(p.z)};
            soup.points.push_back(p);
        }
        std::uniform_int_distribution<std::int32_t> any(0, points - 1);
        for (int i = 0; i < 400; ++i) soup.triangles.push_back({any(random), any(random), any(random)});
        SliceSettings settings;
        settings.layer = 0.5;
        settings.rule = round % 3 == 0 ? SolidRule::kOdd : SolidRule::kWinding;
        for (Layer const& layer : AllLayers({soup.Input()}, settings)) {
            for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
                EXPECT_GE(layer.ContourPoints(i).size(), layer.contours[i].closed ? 3u : 2u);
            }
        }
    }
}

TEST(Slicer, ShardsAreAllLayersInTheirOrderAndOfOneSize) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    for (std::int32_t const shards : {1, 2, 3, 7, 9, 10}) {
        std::int32_t next = 1;
        for (std::int32_t shard = 1; shard <= shards; ++shard) {
            SliceSettings settings = ContoursOnly();
            settings.shards = shards;
            settings.shard = shard;
            Slicer const slicer({cube.Input()}, settings);
            EXPECT_EQ(slicer.FirstLayer(), next);
            std::int32_t const size = slicer.LastLayer() - slicer.FirstLayer() + 1;
            EXPECT_GE(size, 10 / shards);
            EXPECT_LE(size, (10 + shards - 1) / shards);
            next = slicer.LastLayer() + 1;
        }
        EXPECT_EQ(next, 11);
    }
}

TEST(Slicer, ShardsThatMakeNoSenseAreRefused) {
    FlatShape const cube = FlatBox(0, 0, 0, 10, 10, 10);
    auto const refused = [&](std::int32_t shard, std::int32_t shards, std::int32_t firstLayer = 1) {
        SliceSettings settings = ContoursOnly();
        settings.shards = shards;
        settings.shard = shard;
        settings.firstLayer = firstLayer;
        EXPECT_THROW(Slicer({cube.Input()}, settings), Error) << shard << " of " << shards;
    };
    refused(0, 2);
    refused(3, 2);
    refused(1, 0);
    refused(-1, -1);
    refused(1, -1);
    refused(1, 11);
    refused(1, 2, 2);
}

}  // namespace
}  // namespace varnet
