// What stands in the scripts of a page: the description and the chunks, taken out of it again.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>

#include "kit/page/Inflated.h"
#include "varnet/Page.h"

namespace varnet {
namespace {

// Digits of six bits, four of them three bytes.
std::string FromBase64(std::string const& text) {
    std::string const digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned held = 0;
    int bits = 0;
    for (char const c : text) {
        if (c == '=') break;
        held = held * 64 + static_cast<unsigned>(digits.find(c));
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes.push_back(static_cast<char>(held >> bits & 0xFF));
    }
    return bytes;
}

// What a script of the page holds; empty where there is none of that name.
std::string Chunk(std::string const& html, std::string const& id) {
    std::string const start = "<script type=\"application/octet-stream\" id=\"" + id + "\">";
    std::size_t const at = html.find(start);
    if (at == std::string::npos) return "";
    std::size_t const begin = at + start.size();
    return Inflated(FromBase64(html.substr(begin, html.find('<', begin) - begin)));
}

Layer Square(std::int32_t number, double side) {
    Layer layer;
    layer.number = number;
    layer.z = 0.5 * number;
    layer.AddContour(std::vector<Point2>{{1, 2}, {1 + side, 2}, {1 + side, 2 + side}, {1, 2 + side}}, {});
    return layer;
}

Part Tetrahedron() {
    std::vector<Point3> const points = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}};
    std::vector<Triangle> const triangles = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
    return Part(points, triangles);
}

TEST(PageContent, LayersAreDescribedWithTheChunkThatHoldsThem) {
    Page page({"a title", false, {}});
    page.BeginSlices("first", "from nowhere");
    Layer layer = Square(3, 4.0);
    Contour open;
    open.closed = false;
    layer.AddContour(std::vector<Point2>{{2, 3}, {5, 3}}, open);
    layer.AddChain(std::vector<Stroke>{{{2, 3}, {2, 5}}, {{3, 5}, {3, 3}}}, kFillId);
    layer.AddChain(std::vector<Stroke>{{{4, 3}, {4, 3.5}}}, kSupportId);
    page.AddLayer(layer);
    page.AddLayer(Layer());
    page.BeginSlices("second");
    page.AddLayer(Square(1, 2.0));
    page.BeginSlices("third");
    page.AddLayer(Square(1, 3.0));
    std::string const html = page.Html();
    // The way to (1, 2), from there to (2, 3), from (5, 3) to (2, 3), and two of one millimetre: the roots of
    // 5 and 2, and 5. Of each layer: number, height, box, chunk; contours, open paths, strokes, those of
    // supports, points; lengths of contours and of strokes, area, travel.
    EXPECT_EQ(Chunk(html, "about"),
              R"({"version":1,"title":"a title","parts":[],"slices":[)"
              R"({"name":"first","about":"from nowhere","layers":[)"
              R"([3,1.5,1,2,5,6,0,1,1,2,1,12,19,4.5,16,8.650282],)"
              R"([0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]]},)"
              R"({"name":"second","about":"","layers":[[1,0.5,1,2,3,4,1,1,0,0,0,4,8,0,4,2.236068]]},)"
              R"({"name":"third","about":"","layers":[[1,0.5,1,2,4,5,2,1,0,0,0,4,12,0,9,2.236068]]}]})");
    EXPECT_EQ(Chunk(html, "d0").size(), 8u + 8u + 4u * 12u);
    EXPECT_FALSE(Chunk(html, "d1").empty());
    EXPECT_FALSE(Chunk(html, "d2").empty());
    EXPECT_TRUE(Chunk(html, "d3").empty());
    EXPECT_NE(html.find("<title>a title</title>"), std::string::npos);
    EXPECT_EQ(html.find("<figure>"), std::string::npos);
}

TEST(PageContent, ChunksOfSlicesStandBehindThoseOfParts) {
    Page page;
    page.AddPart(Tetrahedron(), {"first", nullptr, nullptr});
    page.BeginSlices("layers");
    page.AddLayer(Square(1, 2.0));
    page.AddPart(Tetrahedron(), {"second", nullptr, nullptr});
    std::string const html = page.Html();
    std::string const about = Chunk(html, "about");
    EXPECT_NE(about.find(R"({"version":1,"title":"first","parts":[{"name":"first")"), std::string::npos);
    EXPECT_NE(about.find(R"(},{"name":"second")"), std::string::npos);
    EXPECT_NE(about.find(R"("layers":[[1,0.5,1,2,3,4,2,)"), std::string::npos) << about;
    EXPECT_EQ(Chunk(html, "d0"), Chunk(html, "d1"));
    EXPECT_NE(Chunk(html, "d0"), Chunk(html, "d2"));
    EXPECT_TRUE(Chunk(html, "d3").empty());
    // A picture of each, in the order of parts and then of layers.
    std::size_t const first = html.find("<figcaption>first<");
    std::size_t const second = html.find("<figcaption>second<");
    std::size_t const layers = html.find("<figcaption>layers, layer 1, z = 0.5 mm<");
    EXPECT_LT(first, second);
    EXPECT_LT(second, layers);
    EXPECT_NE(layers, std::string::npos);
}

TEST(PageContent, ThePicturedLayerIsTheLastAtAPowerOfTwoOrHalfWayToTheNext) {
    std::vector<int> const pictured = {1, 2, 3, 4, 4, 6, 6, 8, 8, 8, 8, 12, 12, 12, 12, 16, 16};
    Page page;
    page.BeginSlices("list");
    for (std::size_t i = 0; i < pictured.size(); ++i) {
        page.AddLayer(Square(static_cast<std::int32_t>(i) + 1, 2.0));
        EXPECT_NE(page.Html().find(">list, layer " + std::to_string(pictured[i]) + ", z = "),
                  std::string::npos)
            << i + 1;
    }
}

TEST(PageContent, ProgressGoesUpToOneAndAStopEndsIt) {
    double last = 0.0;
    PageSettings settings;
    settings.progress = [&last](double share) {
        EXPECT_GE(share, last);
        EXPECT_LE(share, 1.0);
        last = share;
        return true;
    };
    Page page(settings);
    page.AddPart(Tetrahedron());
    EXPECT_EQ(last, 1.0);
    last = 0.0;
    page.Html();
    EXPECT_GT(last, 0.0);
}

}  // namespace
}  // namespace varnet
