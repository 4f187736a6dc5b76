#include "varnet/Page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "TestFiles.h"
#include "page/PageText.h"
#include "page/Viewer.h"

namespace varnet {
namespace {

namespace fs = std::filesystem;

Part Tetrahedron() {
    std::vector<Point3> const points = {{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 10}};
    std::vector<Triangle> const triangles = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
    return Part(points, triangles);
}

Layer Square(std::int32_t number) {
    Layer layer;
    layer.number = number;
    layer.z = number;
    std::vector<Point2> const square = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    layer.AddContour(square, {});
    return layer;
}

ErrorKind KindOf(std::function<void()> const& action) {
    try {
        action();
    } catch (Error const& error) {
        return error.Kind();
    }
    ADD_FAILURE() << "nothing was thrown";
    return ErrorKind::kFile;
}

class PageFile : public testing::Test {
protected:
    TestFolder const m_Folder;
};

TEST(Page, WithNothingOnItIsAnError) {
    Page page;
    EXPECT_EQ(KindOf([&] { page.Html(); }), ErrorKind::kContent);
    page.BeginSlices("no layer");
    EXPECT_EQ(KindOf([&] { page.Html(); }), ErrorKind::kContent);
    EXPECT_EQ(KindOf([&] { page.AddPart(Part()); }), ErrorKind::kContent);
    EXPECT_EQ(page.PartCount() + page.LayerCount(), 0u);
}

TEST(Page, ALayerWithoutAListIsAnError) {
    Page page;
    EXPECT_EQ(KindOf([&] { page.AddLayer(Square(1)); }), ErrorKind::kArgument);
}

TEST(Page, SurfacesOfAnotherPartAreAnError) {
    Page page;
    for (std::size_t const facets : {0u, 1u, 3u, 5u, 100u}) {
        Surfaces surfaces;
        surfaces.ofTriangle.assign(facets, -1);
        EXPECT_EQ(KindOf([&] {
                      page.AddPart(Tetrahedron(), {"", nullptr, &surfaces});
                  }),
                  ErrorKind::kArgument);
    }
    EXPECT_EQ(page.PartCount(), 0u);
}

TEST(Page, HoldsItsScriptAndTheHashThatPermitsIt) {
    Page page;
    page.AddPart(Tetrahedron());
    std::string const html = page.Html();
    EXPECT_NE(html.find("<script>" + std::string(kViewerScript) + "</script>"), std::string::npos);
    EXPECT_NE(html.find("default-src 'none'; script-src 'sha256-"), std::string::npos);
    EXPECT_EQ(html.find("http://"), html.find("http://www.w3.org/2000/svg"));
    EXPECT_LE(kViewerScript.size(), 40u * 1024u);
}

TEST(Page, NoNameEndsAScriptOrBeginsOne) {
    PageSettings settings;
    settings.title = "</title><script>1</script>";
    Page page(settings);
    page.AddPart(Tetrahedron(), {"</script><script>2</script>", nullptr, nullptr});
    page.BeginSlices("<script>3</script>", "<script>4</script>");
    page.AddLayer(Square(1));
    std::string const html = page.Html();
    for (char const* const text : {"<script>1", "<script>2", "<script>3", "<script>4"})
        EXPECT_EQ(html.find(text), std::string::npos) << text;
}

TEST(Page, TheSameContentGivesTheSameBytes) {
    auto const make = [] {
        Page page;
        page.AddPart(Tetrahedron());
        page.BeginSlices("layers");
        for (int i = 1; i < 5; ++i) page.AddLayer(Square(i));
        return page.Html();
    };
    EXPECT_EQ(make(), make());
}

TEST(Page, LayersMayBeAddedAfterThePageWasLookedAt) {
    Page page;
    page.BeginSlices("layers");
    page.AddLayer(Square(1));
    std::string const before = page.Html();
    page.AddLayer(Square(2));
    EXPECT_EQ(page.LayerCount(), 2u);
    EXPECT_NE(page.Html(), before);
}

TEST_F(PageFile, IsWrittenWholeAndMoves) {
    Page page;
    page.AddPart(Tetrahedron());
    Page moved = std::move(page);
    moved.Write(m_Folder / "p.html");
    std::ifstream file(m_Folder / "p.html", std::ios::binary);
    std::string const bytes((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(bytes, moved.Html());
}

TEST_F(PageFile, AStoppedOneLeavesNoFile) {
    bool stop = false;
    PageSettings settings;
    settings.progress = [&stop](double) { return !stop; };
    Page page(settings);
    page.AddPart(Tetrahedron());
    stop = true;
    EXPECT_EQ(KindOf([&] { page.Write(m_Folder / "p.html"); }), ErrorKind::kCancelled);
    EXPECT_EQ(KindOf([&] { page.AddPart(Tetrahedron()); }), ErrorKind::kCancelled);
    EXPECT_EQ(page.PartCount(), 1u);
    EXPECT_TRUE(fs::is_empty(m_Folder.Path()));
}

TEST_F(PageFile, ShowsTheLayersOfASliceFile) {
    SliceWriter writer(m_Folder / "a.cli", 3);
    for (int i = 1; i <= 3; ++i) writer.Write(Square(i));
    writer.Finish();
    std::vector<double> told;
    bool stop = false;
    PageSettings settings;
    settings.progress = [&](double share) {
        told.push_back(share);
        return !stop;
    };
    Page page(settings);
    page.AddSlices(SliceFile(m_Folder / "a.cli"));
    EXPECT_EQ(page.LayerCount(), 3u);
    EXPECT_EQ(told, (std::vector{1.0 / 3.0, 2.0 / 3.0, 1.0}));
    stop = true;
    EXPECT_EQ(KindOf([&] { page.AddSlices(SliceFile(m_Folder / "a.cli")); }), ErrorKind::kCancelled);
    EXPECT_EQ(page.LayerCount(), 3u);
    EXPECT_EQ(told.size(), 4u);
    stop = false;
    SliceWriter empty(m_Folder / "none.cli", 0);
    empty.Finish();
    EXPECT_EQ(KindOf([&] { page.AddSlices(SliceFile(m_Folder / "none.cli")); }), ErrorKind::kContent);
    EXPECT_EQ(page.LayerCount(), 3u);
}

// It is the name of what came first, whatever that is.
TEST_F(PageFile, WithoutATitleHasTheFirstName) {
    SliceWriter writer(m_Folder / "slices.cli", 1);
    writer.Write(Square(1));
    writer.Finish();
    auto const part = [](Page& page) { page.AddPart(Tetrahedron(), {"part", nullptr, nullptr}); };
    auto const file = [this](Page& page) { page.AddSlices(SliceFile(m_Folder / "slices.cli")); };
    auto const list = [](Page& page) {
        page.BeginSlices("list");
        page.AddLayer(Square(1));
    };
    std::vector<std::pair<std::string, std::function<void(Page&)>>> const all = {
        {"part", part}, {"slices.cli", file}, {"list", list}};
    for (auto const& [name, first] : all) {
        for (auto const& [_, second] : all) {
            Page page;
            first(page);
            second(page);
            EXPECT_NE(page.Html().find("<title>" + name + "</title>"), std::string::npos) << name;
        }
    }
}

}  // namespace
}  // namespace varnet
