#include <clocale>
#include <cmath>
#include <random>

#include "FileBytes.h"

namespace {

constexpr char kHead[] = "<?xml version=\"1.0\"?>\n<MODEL>\n<MESH>\n";

std::string Vertex(double x, double y, double z) {
    char text[128];
    std::snprintf(text, sizeof text, "<VERTEX x=\"%.17g\" y=\"%.17g\" z=\"%.17g\" />\n", x, y, z);
    return text;
}

std::string Triangle(int i, int j, int k) {
    return "<TRIANGLE v1=\"" + std::to_string(i) + "\" v2=\"" + std::to_string(j) + "\" v3=\"" +
           std::to_string(k) + "\" />\n";
}

std::string ThreeVertices() { return Vertex(1.5, 2, -3) + Vertex(10, 0, 0) + Vertex(0, 10, 0); }

std::string File(std::string const& vertices, std::string const& triangles) {
    return kHead + ("<VERTICES>\n" + vertices) + "</VERTICES>\n<TRIANGLES>\n" + triangles +
           "</TRIANGLES>\n</MESH>\n</MODEL>\n";
}

int Read(CSTLModel& model, std::string const& text) {
    static TestFolder const s_Folder;
    return model.Read3DMFModel(WidePath(s_Folder.Write("part.3dmf", text)));
}

void ExpectPoint(double x, double y, double z, tagVertexNode const* p) {
    EXPECT_EQ(x, p->x);
    EXPECT_EQ(y, p->y);
    EXPECT_EQ(z, p->z);
}

}  // namespace

TEST(ThreeDMF, VertexLineGivesItsThreeValuesWhateverTheFieldsAreCalled) {
    for (char const* const pLine :
         {"<VERTEX x=\"1.5\" y=\"2\" z=\"-3\"/>\n", "<VERTEX foo=\"1.5\" bar=\"2\" q=\"-3\">\n",
          "vertex a='1.5'b='2'c='-3'\n", "a VERTEX==\"1.5===\"2=\"-3"}) {
        CSTLModel model;
        EXPECT_EQ(1, Read(model, File(pLine + std::string("\n") + Vertex(10, 0, 0) + Vertex(0, 10, 0),
                                      Triangle(0, 1, 2))));
        ASSERT_EQ(1, model.GetFacetsNum()) << pLine;
        ExpectPoint(1.5, 2.0, -3.0, FacetAt(model, 0).m_pVertex1);
    }
}

TEST(ThreeDMF, TriangleLineGivesAFacetOfTheVerticesThatItNames) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, File(ThreeVertices() + Vertex(0, 0, 9), Triangle(0, 1, 2) + Triangle(3, 0, 1))));
    ASSERT_EQ(2, model.GetFacetsNum());
    CFacet const& first = FacetAt(model, 0);
    ExpectPoint(1.5, 2.0, -3.0, first.m_pVertex1);
    ExpectPoint(10.0, 0.0, 0.0, first.m_pVertex2);
    ExpectPoint(0.0, 10.0, 0.0, first.m_pVertex3);
    CFacet const& second = FacetAt(model, 1);
    ExpectPoint(1.5, 2.0, -3.0, second.m_pVertex1);
    ExpectPoint(10.0, 0.0, 0.0, second.m_pVertex2);
    ExpectPoint(0.0, 0.0, 9.0, second.m_pVertex3);
    EXPECT_EQ(0, model.m_Status.m_nFileType);
    EXPECT_EQ('\0', model.m_Status.m_szFileName[0]);
    ExpectInvariants(model);
}

TEST(ThreeDMF, LowerCaseTagsAreAccepted) {
    std::string text = File(ThreeVertices(), Triangle(0, 1, 2));
    for (char& c : text) c = static_cast<char>(std::tolower(c));
    CSTLModel model;
    EXPECT_EQ(1, Read(model, text));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(ThreeDMF, WithoutTheEndOfTheVerticesNoTriangleIsRead) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, ThreeVertices() + "<TRIANGLES>\n" + Triangle(0, 1, 2) + "</TRIANGLES>\n"));
    EXPECT_EQ(0, model.GetFacetsNum());
}

TEST(ThreeDMF, FileWithoutAnythingIsReadWithoutFacets) {
    for (char const* const pText : {"", "\n", "no tags at all", "</VERTICES>\n</TRIANGLES>\n"}) {
        CSTLModel model;
        EXPECT_EQ(1, Read(model, pText));
        EXPECT_EQ(0, model.GetFacetsNum());
        EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
    }
}

TEST(ThreeDMF, FileThatCannotBeOpenedGivesZero) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(0, model.Read3DMFModel(WidePath(folder / "missing.3dmf")));
    EXPECT_EQ(0, model.Read3DMFModel(WidePath(folder.Path())));
    EXPECT_EQ(0, model.Read3DMFModel(nullptr));
}

TEST(ThreeDMF, TriangleDirectlyBehindTheVerticesIsRead) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, ThreeVertices() + "</VERTICES>\n" + Triangle(0, 1, 2)));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(ThreeDMF, MissingVertexFieldsAreZero) {
    CSTLModel model;
    EXPECT_EQ(
        1, Read(model, File("<VERTEX x=\"4\">\n" + Vertex(10, 5, 1) + Vertex(0, 10, 2), Triangle(0, 1, 2))));
    ASSERT_EQ(1, model.GetFacetsNum());
    ExpectPoint(4.0, 0.0, 0.0, FacetAt(model, 0).m_pVertex1);
}

// The second line keeps the third number of the first.
TEST(ThreeDMF, MissingTriangleFieldsKeepTheNumberOfTheLineBefore) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, File(ThreeVertices() + Vertex(0, 0, 9) + Vertex(5, 5, 9),
                                  Triangle(0, 1, 2) + "<TRIANGLE a=\"3\" b=\"4\">\n")));
    ASSERT_EQ(2, model.GetFacetsNum());
    ExpectPoint(0.0, 10.0, 0.0, FacetAt(model, 1).m_pVertex1);
    // Before the first line that has them, they are 0.
    CSTLModel first;
    EXPECT_EQ(1, Read(first, File(ThreeVertices(), "<TRIANGLE a=\"1\" b=\"2\">\n")));
    ASSERT_EQ(1, first.GetFacetsNum());
    ExpectPoint(1.5, 2.0, -3.0,
                first.m_VertexTree.m_pRoot == nullptr ? nullptr : FacetAt(first, 0).m_pVertex1);
}

TEST(ThreeDMF, TriangleThatNamesAMissingVertexIsLeftOut) {
    std::string triangles = Triangle(0, 1, 3) + Triangle(-1, 1, 2) + Triangle(0, 2147483647, 2) +
                            "<TRIANGLE a=\"4294967296\" b=\"1\" c=\"2\">\n" +
                            "<TRIANGLE a=\"0\" b=\"1\" c=\"99999999999999999999\">\n" + Triangle(0, 1, 2);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, File(ThreeVertices(), triangles)));
    EXPECT_EQ(1, model.GetFacetsNum());
    EXPECT_EQ(3u, model.m_VertexTree.m_nCount);
}

// Forty bytes a vertex: many more than the size of the file suggests.
TEST(ThreeDMF, ShortVertexLinesAreAllKept) {
    std::string vertices;
    std::string triangles;
    for (int i = 0; i < 3000; ++i)
        vertices += "VERTEX=\"" + std::to_string(i % 50) + "=\"" + std::to_string(i / 50) + "=\"0\n";
    CSTLModel model;
    EXPECT_EQ(1, Read(model, File(vertices, Triangle(2998, 2999, 2900))));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(ThreeDMF, LinesEndAfterTheTrianglesAndAtZeroBytes) {
    std::string text = File(ThreeVertices(), Triangle(0, 1, 2)) + Triangle(0, 2, 1);
    text += "</VERTICES>\n" + Triangle(1, 0, 2);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, text));
    EXPECT_EQ(0u, FacetAt(model, 0).m_nFlag & (FACET_DUP_SAME | FACET_DUP_REVERSED));
    CSTLModel other;
    std::string const hidden =
        ThreeVertices() + std::string("x\0VERTEX a=\"1\"\n", 15) + "</VERTICES>\n" + Triangle(0, 1, 2);
    EXPECT_EQ(1, Read(other, hidden));
    EXPECT_EQ(1, other.GetFacetsNum());
}

// A line is taken in pieces of 10240 characters: a word behind that stands in the next piece.
TEST(ThreeDMF, LongLinesFallIntoPieces) {
    std::string const filler(10240 - 7, ' ');
    CSTLModel model;
    EXPECT_EQ(1, Read(model, "VERTEX " + filler + "VERTEX a=\"1\" b=\"2\" c=\"3\"\n" + Vertex(9, 0, 0) +
                                 "</VERTICES>\n" + Triangle(0, 1, 2)));
    ASSERT_EQ(1, model.GetFacetsNum());
    ExpectPoint(0.0, 0.0, 0.0, FacetAt(model, 0).m_pVertex1);
    ExpectPoint(1.0, 2.0, 3.0, FacetAt(model, 0).m_pVertex2);
    ExpectPoint(9.0, 0.0, 0.0, FacetAt(model, 0).m_pVertex3);
}

TEST(ThreeDMF, ReadingAddsToTheModelAndLooksAtNoStopFlag) {
    CSTLModel model;
    AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 100.0f, 0.0f, 0.0f));
    model.StopReadModel();
    model.StopCurOperate();
    EXPECT_EQ(1, Read(model, File(ThreeVertices(), Triangle(0, 1, 2))));
    EXPECT_EQ(13, model.GetFacetsNum());
    ExpectInvariants(model);
}

TEST(ThreeDMF, MeshesComeBackToTheBit) {
    for (shapes::Mesh const& mesh : {shapes::Bracket(), shapes::IcoSphere(20.0, 3)}) {
        CSTLModel model;
        AddMesh(model, mesh);
        std::string vertices;
        std::string triangles;
        std::vector<tagVertexNode*> const nodes = VerticesOf(model);
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i]->m_nID = static_cast<std::uint32_t>(i);
            vertices += Vertex(nodes[i]->x, nodes[i]->y, nodes[i]->z);
        }
        CSTLModel expected;
        for (CFacet const* const f : FacetsOf(model)) {
            triangles +=
                Triangle(static_cast<int>(f->m_pVertex1->m_nID), static_cast<int>(f->m_pVertex2->m_nID),
                         static_cast<int>(f->m_pVertex3->m_nID));
            AddTriangle(expected, *f->m_pVertex1, *f->m_pVertex2, *f->m_pVertex3);
        }
        CSTLModel back;
        EXPECT_EQ(1, Read(back, File(vertices, triangles)));
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, back));
    }
}

TEST(ThreeDMF, EveryTruncationIsRead) {
    std::string const text = File(ThreeVertices(), Triangle(0, 1, 2));
    for (std::size_t n = 0; n <= text.size(); ++n) {
        CSTLModel model;
        EXPECT_EQ(1, Read(model, text.substr(0, n)));
        EXPECT_LE(model.GetFacetsNum(), 1);
    }
}
