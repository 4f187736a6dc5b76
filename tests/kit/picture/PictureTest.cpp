#include "varnet/Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "TestFiles.h"
#include "kit/part/PartChecks.h"
#include "varnet/Error.h"

namespace varnet {
namespace {

std::size_t CountOf(std::string const& text, std::string const& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
    return count;
}

std::string BytesOf(std::filesystem::path const& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Tags that are closed in their order, of a name and attributes in quotes.
void ExpectWellFormed(std::string const& svg) {
    std::vector<std::string> open;
    for (std::size_t at = svg.find('<'); at != std::string::npos; at = svg.find('<', at + 1)) {
        std::size_t const end = svg.find('>', at);
        ASSERT_NE(std::string::npos, end);
        std::string tag = svg.substr(at + 1, end - at - 1);
        if (tag[0] == '/') {
            ASSERT_FALSE(open.empty());
            EXPECT_EQ(open.back(), tag.substr(1));
            open.pop_back();
            continue;
        }
        std::string const name = tag.substr(0, tag.find_first_of(" /"));
        if (tag.back() == '/') {
            tag.pop_back();
        } else {
            open.push_back(name);
        }
        for (std::size_t i = name.size(); i < tag.size();) {
            std::size_t const value = tag.find("=\"", i);
            ASSERT_TRUE(tag[i] == ' ' && value != std::string::npos) << tag;
            EXPECT_EQ(std::string::npos, tag.substr(i + 1, value - i - 1).find_first_of(" \"")) << tag;
            std::size_t const quote = tag.find('"', value + 2);
            ASSERT_NE(std::string::npos, quote) << tag;
            i = quote + 1;
        }
    }
    EXPECT_TRUE(open.empty());
}

// One root, closed, without a script and without a number that is none.
void ExpectSoundSvg(std::string const& svg) {
    EXPECT_EQ(1u, CountOf(svg, "<svg"));
    EXPECT_EQ(1u, CountOf(svg, "</svg>"));
    EXPECT_EQ(0u, CountOf(svg, "<script"));
    ExpectWellFormed(svg);
    for (char const* const word : {"nan", "inf", "1e+30"}) EXPECT_EQ(0u, CountOf(svg, word)) << word;
}

std::string MeshPicture(shapes::Mesh const& mesh, std::string const& title = "part") {
    Soup const soup = SoupOf(mesh);
    PicturedMesh pictured;
    pictured.points = soup.points;
    pictured.triangles = soup.triangles;
    return PictureOf(std::span(&pictured, 1), title);
}

TEST(EscapedMarkup, LeavesNothingThatMeansSomething) {
    EXPECT_EQ("&lt;a href=&quot;x&quot;&gt;&amp;&lt;/a&gt;", EscapedMarkup("<a href=\"x\">&</a>"));
    EXPECT_EQ("a b c", EscapedMarkup("a\nb\tc"));
    EXPECT_EQ("", EscapedMarkup(""));
    EXPECT_EQ("\xC4\x85", EscapedMarkup("\xC4\x85"));
}

TEST(PictureOfMeshes, ShowsTheThreeSidesOfACubeThatCanBeSeen) {
    std::string const svg = MeshPicture(shapes::Cube(10));
    ExpectSoundSvg(svg);
    // Front, right and top, each of two facets; what looks away is left out.
    EXPECT_EQ(MeshPicture(shapes::Cube(20)), svg);  // the picture fits, whatever the size
    Soup const soup = SoupOf(shapes::Cube(10));
    std::vector<std::uint32_t> colors(soup.triangles.size(), 0x112233);
    PicturedMesh colored;
    colored.points = soup.points;
    colored.triangles = soup.triangles;
    colored.colors = colors;
    EXPECT_NE(svg, PictureOf(std::span(&colored, 1), "part"));
}

// Which sides are drawn: those of the paths of class e, each an M and an L.
std::vector<std::size_t> DrawnSides(std::string const& svg) {
    std::string const start = "<path class=\"e\" d=\"";
    std::vector<std::size_t> sides;
    for (std::size_t at = svg.find(start); at != std::string::npos; at = svg.find(start, at + 1)) {
        std::size_t const begin = at + start.size();
        sides.push_back(CountOf(svg.substr(begin, svg.find('"', begin) - begin), "M"));
    }
    return sides;
}

// A square of two facets that meet at its diagonal, whatever hangs from the edge that is numbered next.
TEST(PictureOfMeshes, ADiagonalOfAFlatSideIsNotDrawn) {
    std::vector<Point3> const points{{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {0.5, 0, -1}};
    std::vector<Triangle> const triangles{{0, 2, 4}, {0, 2, 1}, {0, 1, 3}};
    PicturedMesh pictured;
    pictured.points = points;
    pictured.triangles = triangles;
    std::string const svg = PictureOf(std::span(&pictured, 1), "flat");
    // The facet that hangs down looks away.
    EXPECT_EQ((std::vector<std::size_t>{2, 2}), DrawnSides(svg));
    // Of a cube each of the six facets that are seen has two sides that are edges of the cube.
    Soup const soup = SoupOf(shapes::Cube(10));
    Part const cube(soup.points, soup.triangles);
    pictured.points = cube.Points();
    pictured.triangles = cube.Triangles();
    EXPECT_EQ(std::vector<std::size_t>(6, 2), DrawnSides(PictureOf(std::span(&pictured, 1), "cube")));
}

// What cannot be seen takes no room: neither a facet without area nor one that is seen from its edge.
TEST(PictureOfMeshes, AFacetWithoutAreaDoesNotMakeThePictureLarger) {
    shapes::Mesh mesh = shapes::Cube(10);
    std::string const cube = MeshPicture(mesh);
    mesh.push_back({{{99, 99, 99}, {99, 99, 99}, {99, 99, 99}}});
    mesh.push_back({{{50, 0, 0}, {60, 0, 0}, {70, 0, 0}}});
    EXPECT_EQ(cube, MeshPicture(mesh));
}

// Each facet seen is a path of three corners that is closed, and one of glass says so.
TEST(PictureOfMeshes, AFacetIsATriangleOfAColour) {
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    std::vector<Triangle> const triangles{{0, 1, 2}};
    PicturedMesh pictured;
    pictured.points = points;
    pictured.triangles = triangles;
    for (double const opacity : {1.0, 0.5}) {
        pictured.opacity = opacity;
        std::string const svg = PictureOf(std::span(&pictured, 1), "facet");
        ExpectSoundSvg(svg);
        std::string const start = "<path d=\"M";
        ASSERT_EQ(1u, CountOf(svg, start));
        std::size_t const begin = svg.find(start) + start.size();
        std::string const way = svg.substr(begin, svg.find('"', begin) - begin);
        EXPECT_EQ(1u, CountOf(way, "L"));
        EXPECT_EQ(4u, CountOf(way, " "));
        EXPECT_EQ('z', way.back());
        // Shaded: six digits of some colour.
        std::string const rest = svg.substr(begin + way.size());
        std::string const before = "\" color=\"#";
        EXPECT_EQ(before, rest.substr(0, before.size()));
        std::string const behind = rest.substr(before.size() + 6);
        EXPECT_EQ(0u, behind.find(opacity < 1.0 ? "\" class=\"g\" fill-opacity=\"0.5\"/>\n" : "\"/>\n"));
    }
}

TEST(PictureOfMeshes, TitlesAreText) {
    std::string const svg = MeshPicture(shapes::Cube(1), "</title><script>x</script>");
    ExpectSoundSvg(svg);
    EXPECT_NE(std::string::npos, svg.find("&lt;script&gt;"));
}

TEST(PictureOfMeshes, NothingAndTheWorstComeThrough) {
    ExpectSoundSvg(PictureOf(std::span<PicturedMesh const>(), "none"));
    ExpectSoundSvg(MeshPicture({}));
    ExpectSoundSvg(MeshPicture({{{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}}}));
    ExpectSoundSvg(MeshPicture({{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}}));
    float const bad[] = {std::nanf(""), HUGE_VALF, -HUGE_VALF, 3e38f};
    for (float const f : bad) {
        shapes::Mesh mesh = shapes::Cube(10);
        mesh.push_back({{{f, 0, 0}, {1, 0, 0}, {0, 1, 0}}});
        std::string const svg = MeshPicture(mesh);
        EXPECT_EQ(1u, CountOf(svg, "</svg>")) << f;
        EXPECT_EQ(0u, CountOf(svg, "nan")) << f;
    }
}

Layer SquareLayer() {
    Layer layer;
    layer.number = 1;
    layer.AddContour(std::vector<Point2>{{0, 0}, {10, 0}, {10, 10}, {0, 10}}, {});
    Stroke const stroke{{1, 5}, {9, 5}};
    layer.AddChain(std::span(&stroke, 1), kFillId);
    return layer;
}

TEST(PictureOfLayers, PanelsStandSideBySide) {
    Layer const layer = SquareLayer();
    std::string const one = PictureOf(layer, "one & only");
    ExpectSoundSvg(one);
    EXPECT_NE(std::string::npos, one.find("one &amp; only"));
    std::vector<PicturePanel> const panels{{"left", &layer}, {"right", &layer}};
    std::string const two = PictureOf(panels);
    ExpectSoundSvg(two);
    EXPECT_NE(std::string::npos, two.find("left"));
    EXPECT_NE(std::string::npos, two.find("right"));
    EXPECT_GT(two.size(), one.size());
}

TEST(PictureOfLayers, NothingAndTheWorstComeThrough) {
    ExpectSoundSvg(PictureOf(Layer(), "empty"));
    EXPECT_EQ(CountOf(PictureOf(Layer(), "empty"), ">0.5 mm<"), 1u)
        << "a square of a millimetre, half of it for the bar";
    ExpectSoundSvg(PictureOf(std::span<PicturePanel const>()));
    std::vector<PicturePanel> const missing{{"no layer", nullptr}};
    ExpectSoundSvg(PictureOf(missing));
    double const bad[] = {std::nan(""), HUGE_VAL, 1e300};
    for (double const d : bad) {
        Layer layer = SquareLayer();
        layer.AddContour(std::vector<Point2>{{d, 0}, {1, d}, {d, d}}, {});
        Stroke const stroke{{d, 0}, {0, 0}};
        layer.AddChain(std::span(&stroke, 1), kFillId);
        std::string const svg = PictureOf(layer, "worst");
        EXPECT_EQ(0u, CountOf(svg, "nan")) << d;
        EXPECT_EQ(0u, CountOf(svg, "inf")) << d;
        EXPECT_LT(svg.size(), 100'000u) << d;
    }
}

TEST(WriteBytes, WritesAllOrNothing) {
    TestFolder const folder;
    std::string const bytes("a\0b\r\n\xFF", 6);
    WriteBytes(folder / "bytes", bytes);
    EXPECT_EQ(bytes, BytesOf(folder / "bytes"));
    WriteBytes(folder / "bytes", "");
    EXPECT_EQ("", BytesOf(folder / "bytes"));
    EXPECT_THROW(WriteBytes(folder / "missing" / "bytes", bytes), Error);
    EXPECT_THROW(WriteBytes(folder.Path(), bytes), Error);
}

TEST(WritePly, HasAHeaderPointsAsFloatsAndFacetsWithColours) {
    TestFolder const folder;
    std::vector<Point3> const points{{0, 0, 0}, {1.5, 0, 0}, {0, 2.5, -1}};
    std::vector<Triangle> const triangles{{0, 1, 2}};
    std::vector<std::uint32_t> const colors{0x123456};
    WritePly(folder / "one.ply", points, triangles, colors);
    std::string const bytes = BytesOf(folder / "one.ply");
    ASSERT_EQ(0u, bytes.find("ply\nformat binary_little_endian 1.0\n"));
    EXPECT_NE(std::string::npos, bytes.find("element vertex 3\n"));
    EXPECT_NE(std::string::npos, bytes.find("element face 1\n"));
    std::size_t const begin = bytes.find("end_header\n") + std::strlen("end_header\n");
    ASSERT_EQ(begin + 3 * 12 + 1 + 12 + 3, bytes.size());
    float x = 0.0f;
    std::memcpy(&x, bytes.data() + begin + 12, sizeof x);
    EXPECT_EQ(1.5f, x);
    EXPECT_EQ(3, bytes[begin + 36]);
    EXPECT_EQ(std::string("\x12\x34\x56"), bytes.substr(bytes.size() - 3));
}

TEST(WritePly, AsManyColoursAsTrianglesAreWanted) {
    TestFolder const folder;
    std::vector<Point3> const points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    std::vector<Triangle> const triangles{{0, 1, 2}};
    try {
        WritePly(folder / "one.ply", points, triangles, {});
        ADD_FAILURE() << "no error";
    } catch (Error const& error) {
        EXPECT_EQ(ErrorKind::kArgument, error.Kind());
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "one.ply"));
    WritePly(folder / "none.ply", {}, {}, {});
    EXPECT_NE(std::string::npos, BytesOf(folder / "none.ply").find("element vertex 0\n"));
}

}  // namespace
}  // namespace varnet
