// Pictures of layers to the letter: where a millimetre is 100 pixels wide.

#include <gtest/gtest.h>

#include <cmath>

#include "varnet/Picture.h"

namespace varnet {
namespace {

bool Holds(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

// 6.4 wide and 3.2 high, away from the origin; an open path and a chain of two strokes in it.
Layer Pictured() {
    Layer layer;
    layer.AddContour(std::vector<Point2>{{10, 20}, {16.4, 20}, {16.4, 23.2}, {10, 23.2}}, {});
    Contour open;
    open.closed = false;
    layer.AddContour(std::vector<Point2>{{11, 21}, {12, 22}}, open);
    layer.AddChain(std::vector<Stroke>{{{11, 20.5}, {15, 20.5}}, {{15, 21}, {11, 21.5}}}, kFillId);
    return layer;
}

std::string const kRoot =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"680\" height=\"412\" font-family=\"sans-serif\" "
    "font-size=\"13\">\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";

TEST(PictureOfLayers, APanelHasItsTitleWhatIsSolidAndThePathsInTheirOrder) {
    std::string const square = "M0 0L640 0L640 -320L0 -320Z";
    EXPECT_EQ(PictureOf(Pictured(), "first"),
              kRoot +
                  "<text x=\"20\" y=\"20\">first</text>\n"
                  "<g transform=\"translate(20 348)\">\n"
                  "<path fill=\"#dde3ea\" fill-rule=\"evenodd\" stroke=\"none\" d=\"" +
                  square +
                  "\"/>\n"
                  "<g fill=\"none\" stroke-linejoin=\"round\" stroke-linecap=\"round\">\n"
                  "<path d=\"" +
                  square +
                  "\" stroke=\"hsl(240,80%,42%)\" stroke-width=\"1.4\"/>\n"
                  "<path d=\"M100 -100L200 -200\" stroke=\"hsl(120,80%,42%)\" stroke-width=\"1.4\"/>\n"
                  "<path d=\"M100 -50L500 -50M500 -100L100 -150\" stroke=\"hsl(0,80%,42%)\" "
                  "stroke-width=\"0.8\"/>\n"
                  "</g>\n</g>\n"
                  "<path d=\"M20 368h200\" stroke=\"#000\" stroke-width=\"3\"/>\n"
                  "<text x=\"20\" y=\"386\">2 mm</text>\n"
                  "</svg>\n");
}

TEST(PictureOfLayers, PanelsShowTheBoxOfAllOrTheOneThatIsGiven) {
    Layer const layer = Pictured();
    Layer small;
    small.AddContour(std::vector<Point2>{{12, 21}, {13, 21}, {13, 22}}, {});
    std::vector<PicturePanel> const panels{{"a", &layer}, {"b", nullptr}, {"c", &small}};
    std::string const three = PictureOf(panels);
    EXPECT_TRUE(Holds(three, "width=\"2000\" height=\"412\""));
    EXPECT_TRUE(Holds(three, "<text x=\"680\" y=\"20\">b</text>"));
    EXPECT_TRUE(Holds(three, "<text x=\"1340\" y=\"20\">c</text>\n<g transform=\"translate(1340 348)\">"));
    EXPECT_TRUE(Holds(three, "M200 -100L300 -100L300 -200Z"));
    // Twice as large, from (10, 19) on; a high box is as wide as half the picture at least.
    std::string const given = PictureOf(panels, Box2{{10, 19}, {10.5, 22.2}});
    EXPECT_TRUE(Holds(given, "width=\"1040\" height=\"732\"")) << given;
    EXPECT_TRUE(Holds(given, "M400 -400L600 -400L600 -600Z"));
}

TEST(PictureOfLayers, TheBarTakesATenthToAHalfOfTheWidth) {
    auto const bar = [](double width) {
        Layer layer;
        layer.AddContour(std::vector<Point2>{{0, 0}, {width, 0}, {width, 1e-4 * width}}, {});
        return PictureOf(layer, "");
    };
    EXPECT_TRUE(Holds(bar(10.0), "h320\" stroke=\"#000\" stroke-width=\"3\"/>\n"));
    EXPECT_TRUE(Holds(bar(10.0), ">5 mm<"));
    EXPECT_TRUE(Holds(bar(9.9), ">2 mm<"));
    EXPECT_TRUE(Holds(bar(4.0), ">2 mm<"));
    EXPECT_TRUE(Holds(bar(3.9), ">1 mm<"));
    EXPECT_TRUE(Holds(bar(2.0), ">1 mm<"));
    EXPECT_TRUE(Holds(bar(1.9), ">0.5 mm<"));
    EXPECT_TRUE(Holds(bar(200.0), ">100 mm<"));
}

TEST(PictureOfLayers, PointsUpToABillionKilometresAreDrawn) {
    double const most = 1e12;
    Layer layer;
    Contour open;
    open.closed = false;
    layer.AddContour(std::vector<Point2>{{0, 0}, {most, 0}, {std::nextafter(most, HUGE_VAL), 0}, {0, -most}},
                     open);
    layer.AddChain(std::vector<Stroke>{{{0, 0}, {0, most}}, {{0, 0}, {0, -std::nextafter(most, HUGE_VAL)}}},
                   1);
    std::string const svg = PictureOf(std::vector<PicturePanel>{{"", &layer}}, Box2{{0, 0}, {640, 640}});
    EXPECT_TRUE(Holds(svg, "d=\"M0 0L1e+12 0L0 1e+12\"")) << svg;
    EXPECT_TRUE(Holds(svg, "d=\"M0 0L0 -1e+12\"")) << svg;
}

TEST(PictureOfLayers, OnePathIsBlue) {
    Layer layer;
    layer.AddChain(std::vector<Stroke>{{{0, 0}, {1, 1}}}, 1);
    EXPECT_TRUE(Holds(PictureOf(layer, ""), "hsl(240,80%,42%)"));
    EXPECT_FALSE(Holds(PictureOf(layer, ""), "evenodd"));
}

}  // namespace
}  // namespace varnet
