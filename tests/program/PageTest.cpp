#include "Page.h"

#include <gtest/gtest.h>

#include "MeshChecks.h"
#include "MeshPicture.h"

namespace {

std::size_t CountOf(std::string const& text, std::string const& word) {
    std::size_t nFound = 0;
    for (std::size_t n = text.find(word); n != std::string::npos; n = text.find(word, n + 1)) ++nFound;
    return nFound;
}

TEST(Page, SectionsRowsAndListsAreClosed) {
    Page page("Title", "Lead");
    page.BeginSection("First", "Text");
    page.AddPicture("a.svg", "an a", "A");
    page.AddPicture("b.svg", "a b", "B");
    Table table("figures");
    table.Add("label", "value");
    page.AddTable(table);
    page.AddTable("more", {"one", "two"}, {{"1", "2"}, {"3", "4"}});
    page.AddFiles({"a.svg", "b.svg"});
    page.BeginSection("Second", "Text");
    page.AddPicture("c.svg", "a c", "C");
    std::string const html = page.Html("done");
    for (char const* pName : {"html", "head", "body", "header", "main", "section", "div", "figure", "table",
                              "tr", "ul", "li", "footer", "style", "title"}) {
        std::string const begin = std::string("<") + pName;
        std::size_t const nBegun = CountOf(html, begin + ">") + CountOf(html, begin + " ");
        EXPECT_EQ(nBegun, CountOf(html, std::string("</") + pName + ">")) << pName;
        EXPECT_GT(nBegun, 0u) << pName;
    }
    EXPECT_EQ(2u, CountOf(html, "<section>"));
    EXPECT_EQ(3u, CountOf(html, "<div class=\"row\">"));
    EXPECT_EQ(3u, CountOf(html, "<img "));
    EXPECT_EQ(3u, CountOf(html, " alt=\"a"));
}

TEST(Page, TextIsNotTakenForMarks) {
    Page page("a < b & \"c\"", "<script>");
    page.BeginSection("S", "T");
    page.AddPicture("x\".svg", "<alt>", "1 > 0");
    std::string const html = page.Html("end & <end>");
    EXPECT_EQ(0u, CountOf(html, "<script"));
    EXPECT_EQ(1u, CountOf(html, "<h1>a &lt; b &amp; &quot;c&quot;</h1>"));
    EXPECT_EQ(1u, CountOf(html, "src=\"x&quot;.svg\" alt=\"&lt;alt&gt;\""));
    EXPECT_EQ(1u, CountOf(html, "end &amp; &lt;end&gt;"));
}

TEST(Page, NothingIsLoadedFromElsewhere) {
    Page page("T", "L");
    page.BeginSection("S", "T");
    std::string const html = page.Html("end");
    EXPECT_EQ(0u, CountOf(html, "http"));
    EXPECT_EQ(0u, CountOf(html, "<script"));
}

// ---- pictures of meshes

// The fills of a picture, in the order in which they are drawn.
std::vector<std::string> Fills(std::string const& svg) {
    std::vector<std::string> fills;
    std::string const mark = " color=\"";
    for (std::size_t n = svg.find(mark); n != std::string::npos; n = svg.find(mark, n + 1)) {
        fills.push_back(svg.substr(n + mark.size(), 7));
    }
    return fills;
}

TEST(MeshPicture, ACubeShowsThreeOfItsFacesAndNineOfItsEdges) {
    CSTLModel cube;
    AddMesh(cube, shapes::Cube(10.0f));
    std::string const svg = DrawMeshes({InOneColor(cube, 0x8080FF)}, "a <cube>");
    std::vector<std::string> fills = Fills(svg);
    EXPECT_EQ(6u, fills.size());
    std::sort(fills.begin(), fills.end());
    fills.erase(std::unique(fills.begin(), fills.end()), fills.end());
    EXPECT_EQ(3u, fills.size());
    EXPECT_EQ(1u, CountOf(svg, "<title>a &lt;cube&gt;</title>"));
    // Each facet states its two sides that are edges of the cube.
    EXPECT_EQ(6u, CountOf(svg, "class=\"e\""));
    std::size_t nEdges = 0;
    for (std::size_t n = svg.find("class=\"e\""); n != std::string::npos;
         n = svg.find("class=\"e\"", n + 1)) {
        nEdges += CountOf(svg.substr(n, svg.find("/>", n) - n), "M");
    }
    EXPECT_EQ(12u, nEdges);
}

TEST(MeshPicture, WhatIsBehindIsDrawnFirst) {
    // The eye is in front, to the right and above: of two plates one above the other the upper is nearer.
    CSTLModel upper, lower;
    AddMesh(upper, shapes::Box({0, 0, 20}, {100, 100, 21}));
    AddMesh(lower, shapes::Box({0, 0, 0}, {100, 100, 1}));
    for (bool bUpperFirst : {false, true}) {
        std::vector<PicturedModel> models = {InOneColor(lower, 0xFF0000), InOneColor(upper, 0x0000FF)};
        if (bUpperFirst) std::swap(models[0], models[1]);
        std::vector<std::string> const fills = Fills(DrawMeshes(models, "plates"));
        // The top faces are the brightest, and lie over each other.
        auto const brightest = [&fills](auto const& isOf) {
            std::string found;
            for (std::string const& fill : fills) {
                if (isOf(fill)) found = std::max(found, fill);
            }
            return found;
        };
        std::string const red = brightest([](std::string const& s) { return s.substr(3) == "0000"; });
        std::string const blue = brightest([](std::string const& s) { return s.substr(0, 5) == "#0000"; });
        auto const lastRed = std::find(fills.rbegin(), fills.rend(), red).base();
        EXPECT_LE(lastRed - fills.begin(), std::find(fills.begin(), fills.end(), blue) - fills.begin());
    }
}

TEST(MeshPicture, ThePictureHasTheSizeOfWhatIsSeenAndAMargin) {
    CSTLModel sphere;
    AddMesh(sphere, shapes::Moved(shapes::IcoSphere(10.0, 3), 500.0f, -300.0f, 80.0f));
    std::string const svg = DrawMeshes({InOneColor(sphere, 0xFFFFFF)}, "sphere");
    double dWidth = 0.0, dHeight = 0.0;
    ASSERT_EQ(2, std::sscanf(svg.c_str() + svg.find("viewBox"), "viewBox=\"0 0 %lf %lf", &dWidth, &dHeight));
    EXPECT_NEAR(640, std::max(dWidth, dHeight), 1);
    EXPECT_NEAR(dWidth, dHeight, 8);
}

TEST(MeshPicture, NothingToSeeIsAnEmptyPicture) {
    CSTLModel const empty;
    std::string const svg = DrawMeshes({InOneColor(empty, 0xFFFFFF)}, "nothing");
    EXPECT_TRUE(Fills(svg).empty());
    EXPECT_EQ(0u, CountOf(svg, "nan"));
    EXPECT_EQ(0u, CountOf(svg, "inf"));
    EXPECT_EQ(1u, CountOf(svg, "</svg>"));
}

}  // namespace
