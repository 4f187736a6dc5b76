// What is refused before the first layer is made, to the last bit, and what is counted of a layer.

#include <gtest/gtest.h>

#include <cmath>

#include "slice/FillLines.h"
#include "slice/LayerMaker.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

double Above(double value) { return std::nextafter(value, HUGE_VAL); }
double Below(double value) { return std::nextafter(value, -HUGE_VAL); }

bool AreFine(SliceSettings const& settings) {
    try {
        CheckSettings(settings);
        return true;
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
        return false;
    }
}
bool IsFine(double SliceSettings::*field, double value) {
    SliceSettings settings;
    settings.*field = value;
    return AreFine(settings);
}

TEST(CheckSettings, LengthsAndAnglesAreFineToTheirEnds) {
    for (double SliceSettings::*const length : {&SliceSettings::layer, &SliceSettings::hatch}) {
        EXPECT_TRUE(IsFine(length, 1e-9));
        EXPECT_TRUE(IsFine(length, 1e6));
        EXPECT_FALSE(IsFine(length, Below(1e-9)));
        EXPECT_FALSE(IsFine(length, Above(1e6)));
    }
    EXPECT_FALSE(IsFine(&SliceSettings::layer, 0.0));
    EXPECT_TRUE(IsFine(&SliceSettings::hatch, 0.0));
    EXPECT_FALSE(IsFine(&SliceSettings::hatch, Below(0.0)));
    for (double SliceSettings::*const length : {&SliceSettings::tolerance, &SliceSettings::close}) {
        EXPECT_TRUE(IsFine(length, 0.0));
        EXPECT_TRUE(IsFine(length, 1e6));
        EXPECT_FALSE(IsFine(length, Below(0.0)));
        EXPECT_FALSE(IsFine(length, Above(1e6)));
    }
    for (double const sign : {1.0, -1.0}) {
        EXPECT_TRUE(IsFine(&SliceSettings::angle, sign * 360.0));
        EXPECT_FALSE(IsFine(&SliceSettings::angle, sign * Above(360.0)));
    }
}

TEST(CheckSettings, ThreadsAndShardsAreFineToTheirEnds) {
    for (int const threads : {0, 1, 1024, 1025}) {
        SliceSettings settings;
        settings.threads = threads;
        EXPECT_EQ(AreFine(settings), threads == 1 || threads == 1024) << threads;
    }
    for (int shards = -1; shards <= 3; ++shards) {
        for (int shard = -1; shard <= 4; ++shard) {
            SliceSettings settings;
            settings.shards = shards;
            settings.shard = shard;
            EXPECT_EQ(AreFine(settings), (shards == 0 && shard == 0) || (shard >= 1 && shard <= shards))
                << shard << " of " << shards;
        }
    }
}

PlanMeasures Box(Point3 const& min, Point3 const& max) {
    PlanMeasures measures;
    measures.parts = {min, max};
    return measures;
}
bool IsPlanned(PlanMeasures const& measures, SliceSettings const& settings) {
    try {
        PlanFor(measures, settings);
        return true;
    } catch (Error const& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
        return false;
    }
}

TEST(PlanFor, LayersAreCountedUpToAMillion) {
    SliceSettings settings;
    settings.hatch = 0.0;
    settings.layer = 0.5;
    EXPECT_EQ(PlanFor(Box({0, 0, 0}, {1, 1, 500000}), settings).heights.count, 1000000);
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {1, 1, 500000.25}), settings));
    EXPECT_EQ(PlanFor(Box({0, 0, -1}, {1, 1, 1}), settings).heights.count, 4);
    // A millionth of a layer more is none.
    EXPECT_EQ(PlanFor(Box({0, 0, 0}, {1, 1, 2 + 0.4e-6}), settings).heights.count, 4);
    EXPECT_EQ(PlanFor(Box({0, 0, 0}, {1, 1, 2 + 0.6e-6}), settings).heights.count, 5);
    EXPECT_EQ(PlanFor(Box({0, 0, 0}, {1, 1, 1e-9}), settings).heights.count, 1);
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {1, 1, 0}), settings));
    EXPECT_FALSE(IsPlanned(PlanMeasures(), settings));
    settings.layer = 1e-6;
    try {
        PlanFor(Box({0, 0, -5}, {1, 1, 5}), settings);
        ADD_FAILURE() << "ten million layers";
    } catch (Error const& error) {
        EXPECT_NE(std::string(error.what()).find("have to be 1e-05 mm or more"), std::string::npos)
            << error.what();
    }
}

TEST(PlanFor, FillLinesAreCountedAcrossAndFromTheOrigin) {
    SliceSettings settings;
    settings.hatch = 1.0;
    EXPECT_TRUE(IsPlanned(Box({0, 0, 0}, {kMostFillLines, 0, 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {Above(kMostFillLines), 0, 1}), settings));
    EXPECT_TRUE(IsPlanned(Box({0, 0, 0}, {0.6 * kMostFillLines, 0.8 * kMostFillLines, 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {0.6 * kMostFillLines, 0.81 * kMostFillLines, 1}), settings));
    double const far = 1e15;
    EXPECT_TRUE(IsPlanned(Box({far - 8, 0, 0}, {far, 0, 1}), settings));
    EXPECT_TRUE(IsPlanned(Box({0, -far, 0}, {0, 8 - far, 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({far - 8, 0, 0}, {Above(far), 0, 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({0, -Above(far), 0}, {0, 8 - far, 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({0, far - 8, 0}, {0, Above(far), 1}), settings));
    EXPECT_FALSE(IsPlanned(Box({-Above(far), 0, 0}, {8 - far, 0, 1}), settings));
    PlanMeasures supports = Box({0, 0, 0}, {1, 1, 1});
    supports.supports = {{0, 0, 0}, {2 * kMostFillLines, 0, 1}};
    EXPECT_FALSE(IsPlanned(supports, settings));
    settings.hatch = 0.0;
    EXPECT_TRUE(IsPlanned(supports, settings));
}

TEST(PlanFor, ShardsAreWholeLayersOfTheWhole) {
    SliceSettings settings;
    settings.layer = 1.0;
    settings.shards = 3;
    std::vector<std::pair<int, int>> ranges;
    for (settings.shard = 1; settings.shard <= 3; ++settings.shard) {
        SlicePlan const plan = PlanFor(Box({0, 0, 0}, {1, 1, 10}), settings);
        ranges.emplace_back(plan.settings.firstLayer, plan.settings.lastLayer);
    }
    EXPECT_EQ(ranges, (std::vector<std::pair<int, int>>{{1, 3}, {4, 6}, {7, 10}}));
    settings.shard = 1;
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {1, 1, 2}), settings));
    EXPECT_TRUE(IsPlanned(Box({0, 0, 0}, {1, 1, 3}), settings));
    settings.firstLayer = 2;
    EXPECT_FALSE(IsPlanned(Box({0, 0, 0}, {1, 1, 3}), settings));
}

// A square of 4, a hole in it, and open paths; fill of the part and of supports.
SlicedLayer Made(int openPaths) {
    SlicedLayer sliced;
    sliced.layer.AddContour(std::vector<Point2>{{0, 0}, {4, 0}, {4, 4}, {0, 4}}, {});
    sliced.layer.AddContour(std::vector<Point2>{{1, 1}, {1, 2}, {2, 2}, {2, 1}}, {true, 0, 1, 1});
    Contour open;
    open.closed = false;
    for (int i = 0; i < openPaths; ++i) sliced.layer.AddContour(std::vector<Point2>{{9, 0}, {9, 3}}, open);
    sliced.layer.AddChain(std::vector<Stroke>{{{0, 0}, {1, 0}}, {{1, 1}, {0, 1}}}, kFillId);
    sliced.layer.AddChain(std::vector<Stroke>{{{0, 0}, {1, 0}}}, kSupportId);
    sliced.facts.area = 15.0;
    sliced.facts.length = 16.0 + 4.0 + 3.0 * openPaths;
    return sliced;
}

TEST(CountLayers, SumsAndGreatestOfAllLayers) {
    EXPECT_EQ(Made(2).layer.Area(), Made(2).facts.area);
    EXPECT_EQ(Made(2).layer.ContourLength(), Made(2).facts.length);
    SliceReport report;
    SlicedLayer first = Made(1);
    first.facts.joins.longestOpen = 0.25;
    first.facts.joins.closed = 2;
    first.facts.joins.closedLength = 0.5;
    first.facts.joins.longestClosed = 0.375;
    first.facts.cutArea = 20.0;
    first.facts.solidArea = 16.0;
    first.facts.resolved = true;
    Count(first, 0.5, report);
    SlicedLayer second = Made(0);
    second.facts.joins.longestOpen = 0.125;
    second.facts.joins.closed = 1;
    second.facts.joins.closedLength = 0.25;
    second.facts.joins.longestClosed = 0.25;
    second.facts.cutArea = 10.0;
    second.facts.solidArea = 15.0;
    Count(second, 0.25, report);
    SlicedLayer const third = Made(2);
    Count(third, 1.0, report);
    EXPECT_EQ(report.layers, 3);
    EXPECT_EQ(report.contours, 6);
    EXPECT_EQ(report.openPaths, 3);
    EXPECT_EQ(report.layersWithOpenPaths, 2);
    EXPECT_EQ(report.points, 3 * 8 + 3 * 2);
    EXPECT_EQ(report.strokes, 6);
    EXPECT_EQ(report.supportStrokes, 3);
    EXPECT_EQ(report.longestGap, 0.25);
    EXPECT_EQ(report.gapsClosed, 3);
    EXPECT_EQ(report.gapsClosedLength, 0.75);
    EXPECT_EQ(report.longestGapClosed, 0.375);
    EXPECT_EQ(report.volume, 15.0 * 1.75);
    EXPECT_EQ(report.solidVolume, 8.0 + 3.75);
    EXPECT_EQ(report.cutVolume, 10.0 + 2.5);
    EXPECT_EQ(report.resolvedLayers, 1);
    EXPECT_EQ(report.contourLength, 3 * 20.0 + 3 * 3.0);
}

}  // namespace
}  // namespace varnet
