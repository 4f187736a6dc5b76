#include "slicefile/TextLayer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "varnet/Error.h"

namespace varnet {
namespace {

struct Kind {
    TextLine kind;
    std::string text;
    bool operator==(Kind const&) const = default;
};
Kind KindOfText(std::string_view text) {
    TextLine const kind = KindOf(text);
    return {kind, std::string(text)};
}

TEST(KindOf, TellsALineByItsWord) {
    EXPECT_EQ(KindOfText("$$LAYER/1.5"), (Kind{TextLine::kLayer, "$$LAYER/1.5"}));
    EXPECT_EQ(KindOfText(" $$layer/1 \r"), (Kind{TextLine::kLayer, "$$layer/1"}));
    EXPECT_EQ(KindOfText("$$LAYERS/100").kind, TextLine::kUnknown);
    EXPECT_EQ(KindOfText("$$POLYLINE/1,0,2,0,0,1,1").kind, TextLine::kPolyline);
    EXPECT_EQ(KindOfText("$$HATCHES/1,1,0,0,1,1").kind, TextLine::kHatches);
    EXPECT_EQ(KindOfText("$$GEOMETRYSTART").kind, TextLine::kGeometryStart);
    EXPECT_EQ(KindOfText("$$GEOMETRYEND").kind, TextLine::kGeometryEnd);
    EXPECT_EQ(KindOfText("$$USERDATA/1").kind, TextLine::kUnknown);
    EXPECT_EQ(KindOfText("").kind, TextLine::kBlank);
    EXPECT_EQ(KindOfText(" \t").kind, TextLine::kBlank);
    for (char const* const numbers : {"0,1", "9", "-1", "+1", ".5"})
        EXPECT_EQ(KindOfText(numbers).kind, TextLine::kNumbers) << numbers;
    for (char const* const other : {"/1", "a1", ":1", ","})
        EXPECT_NE(KindOfText(other).kind, TextLine::kNumbers) << other;
    // The word ends at its parameters, and is looked for in twenty columns.
    EXPECT_EQ(KindOfText("$$USER/LAYER").kind, TextLine::kUnknown);
    EXPECT_EQ(KindOfText("---------------LAYER").kind, TextLine::kNumbers);
    EXPECT_EQ(KindOfText("xxxxxxxxxxxxxxxLAYER").kind, TextLine::kLayer);
    EXPECT_EQ(KindOfText("xxxxxxxxxxxxxxxxLAYER").kind, TextLine::kUnknown);
}

TEST(KindOf, CommentsAreTakenOut) {
    EXPECT_EQ(KindOfText("// a comment").kind, TextLine::kComment);
    EXPECT_EQ(KindOfText("// a comment //").kind, TextLine::kComment);
    EXPECT_EQ(KindOfText("//// $$LAYER/1"), (Kind{TextLine::kLayer, "$$LAYER/1"}));
    EXPECT_EQ(KindOfText("// a // // b // $$LAYER/1 // c //"), (Kind{TextLine::kLayer, "$$LAYER/1"}));
    EXPECT_EQ(KindOfText("$$LAYER/1//c//"), (Kind{TextLine::kLayer, "$$LAYER/1"}));
    EXPECT_EQ(KindOfText("$$LAYER//1"), (Kind{TextLine::kLayer, "$$LAYER//1"}));
}

Layer LayerOfPath(std::vector<Point2> points, std::int64_t id, std::int64_t direction) {
    Layer layer;
    AddPath(layer, points, id, direction);
    return layer;
}

TEST(AddPath, ADirectionOf0Or1IsClosedAnd0IsAHole) {
    std::vector<Point2> const points = {{0, 0}, {1, 0}, {1, 1}, {0, 0}};
    for (std::int64_t const direction : {0, 1, 2, 3}) {
        Layer const layer = LayerOfPath(points, 7, direction);
        ASSERT_EQ(layer.ContourCount(), 1u);
        EXPECT_EQ(layer.contours[0].closed, direction < 2);
        EXPECT_EQ(layer.contours[0].level, direction == 0 ? 1 : 0);
        EXPECT_EQ(layer.contours[0].id, 7);
        EXPECT_EQ(layer.ContourPoints(0).size(), direction < 2 ? 3u : 4u);
    }
}

TEST(AddPath, TheLastPointGoesWhereItIsLessThanATenThousandthFromTheFirst) {
    double const at = 1e-4;
    double const within = std::nextafter(at, 0.0);
    for (double const sign : {1.0, -1.0}) {
        EXPECT_EQ(LayerOfPath({{0, 0}, {1, 0}, {sign * within, 0}}, 1, 1).points.size(), 2u);
        EXPECT_EQ(LayerOfPath({{0, 0}, {1, 0}, {0, sign * within}}, 1, 1).points.size(), 2u);
        EXPECT_EQ(LayerOfPath({{0, 0}, {1, 0}, {sign * at, 0}}, 1, 1).points.size(), 3u);
        EXPECT_EQ(LayerOfPath({{0, 0}, {1, 0}, {0, sign * at}}, 1, 1).points.size(), 3u);
    }
    EXPECT_EQ(LayerOfPath({{0, 0}, {0, 0}}, 1, 1).points.size(), 1u);
    EXPECT_EQ(LayerOfPath({{0, 0}}, 1, 1).points.size(), 1u);
}

TEST(AddPath, IdsBeyondTheRangeAreItsEnds) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(LayerOfPath({{0, 0}}, kMost + 1, 1).contours[0].id, kMost);
    EXPECT_EQ(LayerOfPath({{0, 0}}, kMost, 1).contours[0].id, kMost);
    EXPECT_EQ(LayerOfPath({{0, 0}}, kLeast - 1, 1).contours[0].id, kLeast);
}

struct Parsed {
    Layer layer;
    std::int64_t wrongCounts = 0;
    std::string error;
};
Parsed Parse(std::vector<std::string> const& lines, bool isCut = false, double units = 1.0) {
    Parsed parsed;
    TextLayerParser parser("a.cli", units);
    try {
        std::uint64_t number = 1;
        for (std::string const& line : lines) parser.Take({line, number++, 0});
        parsed.layer = parser.Finish(isCut);
    } catch (Error const& error) {
        parsed.error = error.what();
    }
    parsed.wrongCounts = parser.WrongCounts();
    return parsed;
}

TEST(TextLayerParser, PathsAndHatchesMayGoOverLines) {
    Parsed const parsed = Parse({"$$LAYER/4", "$$POLYLINE/1,1,3,0,0", "2,0", "// between",
                                 "$$POLYLINE/2,2,2,5,5,", "6,6", "$$HATCHES/9,2,1,2,3", "4,5,6,7,8"},
                                false, 0.5);
    EXPECT_EQ(parsed.error, "");
    EXPECT_EQ(parsed.layer.z, 2.0);
    ASSERT_EQ(parsed.layer.ContourCount(), 2u);
    EXPECT_EQ(parsed.layer.points, (std::vector<Point2>{{0, 0}, {1, 0}, {2.5, 2.5}, {3, 3}}));
    EXPECT_EQ(parsed.layer.strokes, (std::vector<Stroke>{{{0.5, 1}, {1.5, 2}}, {{2.5, 3}, {3.5, 4}}}));
    EXPECT_EQ(parsed.layer.chainIds, std::vector<std::int32_t>{9});
    EXPECT_EQ(parsed.wrongCounts, 1);  // three points were announced, and a comment ends a command
}

TEST(TextLayerParser, CountsThatAreNotKeptAreCountedAndAnErrorAtACut) {
    for (int const announced : {1, 2, 3}) {
        std::string const path = "$$POLYLINE/1,2," + std::to_string(announced) + ",0,0,1,1";
        EXPECT_EQ(Parse({path}).wrongCounts, announced == 2 ? 0 : 1);
        EXPECT_EQ(Parse({path}).layer.points.size(), 2u);
        EXPECT_EQ(Parse({path}, true).error.empty(), announced <= 2) << announced;
    }
    EXPECT_NE(Parse({"$$POLYLINE/1,2,3,0,0,1,1"}, true).error.find("2 of 3 points are there"),
              std::string::npos);
}

TEST(TextLayerParser, WhatIsMissingOrNoNumberIsSaidWithItsLine) {
    struct Case {
        std::vector<std::string> lines;
        char const* says;
        char const* line;
    };
    for (Case const& c :
         {Case{{"$$LAYER/1", "1,2"}, "numbers without a command", "line 2"},
          Case{{"$$POLYLINE/1,2,1,0,0", "$$GEOMETRYSTART", "3,4"}, "numbers without", "line 3"},
          Case{{"$$LAYER/"}, "the height is missing or no number", "line 1"},
          Case{{"$$LAYER"}, "the height is missing or no number", "line 1"},
          Case{{"$$LAYER/inf"}, "the height is not finite", "line 1"},
          Case{{"$$POLYLINE/x"}, "the id is missing", "line 1"},
          Case{{"$$POLYLINE/1"}, "the direction is missing", "line 1"},
          Case{{"$$POLYLINE/1,2"}, "the count is missing", "line 1"},
          Case{{"$$HATCHES/1"}, "the count is missing", "line 1"},
          Case{{"$$POLYLINE/1,2,1,0"}, "a coordinate of the last point is missing", "line 1"},
          Case{{"", "$$HATCHES/1,1,0,0,1", "", ""}, "a coordinate of the last point", "line 2"},
          Case{{"$$POLYLINE/1,2,1,0,x"}, "a coordinate is no number", "line 1"},
          Case{{"$$POLYLINE/1,2,1,0", "nan"}, "a coordinate of the last point", "line 1"},
          Case{{"$$POLYLINE/1,2,1,0,inf"}, "a coordinate is not finite", "line 1"},
          Case{{"$$POLYLINE/1,2,1,0,nan"}, "a coordinate is not finite", "line 1"}}) {
        std::string const error = Parse(c.lines).error;
        EXPECT_NE(error.find(c.says), std::string::npos) << error;
        EXPECT_NE(error.find(c.line), std::string::npos) << error;
    }
}

TEST(TextLayerParser, ANewLayerBeginsEmpty) {
    TextLayerParser parser("a.cli", 1.0);
    parser.Take({"$$LAYER/3", 1, 0});
    parser.Take({"$$HATCHES/1,1,0,0,1,1", 2, 0});
    EXPECT_EQ(parser.Finish(false).strokes.size(), 1u);
    EXPECT_TRUE(parser.Finish(false) == Layer());
}

}  // namespace
}  // namespace varnet
