#include <algorithm>
#include <clocale>
#include <cstdio>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "MeshChecks.h"
#include "TestFiles.h"

namespace {

// The reader as it is defined: lines by position, each parsed by a stream.
class LiteralReader {
public:
    LiteralReader(std::string bytes, CSTLModel& model) : m_Bytes(std::move(bytes)) {
        std::string line;
        std::size_t nStart = 0;
        while (Line(10239, line)) {
            std::string upper = line.c_str();  // up to a zero byte
            for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            if (upper.find("FACET") != std::string::npos) {
                m_nNext = nStart;
                break;
            }
            nStart = m_nNext;
        }
        tagFACET facet;
        while (ReadFacet(facet)) model.AddFacet(facet);
    }

private:
    bool Line(std::size_t nMost, std::string& line) {
        if (m_nNext >= m_Bytes.size()) return false;
        std::size_t const nEnd = m_Bytes.find('\n', m_nNext);
        std::size_t const nWhole = nEnd == std::string::npos ? m_Bytes.size() - m_nNext : nEnd + 1 - m_nNext;
        line = m_Bytes.substr(m_nNext, std::min(nWhole, nMost));
        m_nNext += line.size();
        return true;
    }

    bool ReadFacet(tagFACET& facet) {
        std::string line;
        if (!Line(1023, line)) return false;
        Parse(line, 2, facet.m_fNormal[0], facet.m_fNormal[1], facet.m_fNormal[2]);
        if (!Line(1023, line)) return false;
        for (CPoint3D& p : facet.m_ptVertex) {
            if (!Line(1023, line)) return false;
            Parse(line, 1, p.x, p.y, p.z);
        }
        Line(1023, line);
        Line(1023, line);
        return true;
    }

    template <class Real>
    static void Parse(std::string const& line, int nWords, Real& x, Real& y, Real& z) {
        std::istringstream stream(line.c_str());
        stream.imbue(std::locale::classic());
        char word[80];
        for (int i = 0; i < nWords; ++i) stream >> word;
        for (Real* const pTarget : {&x, &y, &z}) {
            Real value{};
            if (stream >> value) *pTarget = value;
        }
    }

    std::string m_Bytes;
    std::size_t m_nNext = 0;
};

// Reads the bytes with the model's reader, and with the literal one into another model.
void ExpectReadAsDefined(std::string const& bytes) {
    TestFolder const folder;
    CSTLModel model;
    ASSERT_EQ(1, model.ReadSTLASCII(WidePath(folder.Write("part.stl", bytes)), 0));
    CSTLModel expected;
    LiteralReader(bytes, expected);
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
}

int ReadText(CSTLModel& model, std::string const& text) {
    TestFolder const folder;
    return model.ReadSTLASCII(WidePath(folder.Write("part.stl", text)), 0);
}

std::string FacetText(char const* p1, char const* p2, char const* p3, char const* pNormal = "0 0 1") {
    std::ostringstream text;
    text << "facet normal " << pNormal << "\nouter loop\nvertex " << p1 << "\nvertex " << p2 << "\nvertex "
         << p3 << "\nendloop\nendfacet\n";
    return text.str();
}

std::string Solid(std::string const& facets) {
    std::string text("solid part\n");
    return text.append(facets).append("endsolid part\n");
}

std::string Many(std::size_t n, char c) { return std::string(n, c); }

void ExpectCorner(tagVertexNode const* p, double x, double y, double z) {
    EXPECT_EQ(x, p->x);
    EXPECT_EQ(y, p->y);
    EXPECT_EQ(z, p->z);
}

std::string const kTriangle = FacetText("0 0 0", "4 0 1", "0 4 2");

void ExpectTriangle(CSTLModel const& model) {
    ASSERT_EQ(1u, FacetsOf(model).size());
    ExpectCorner(FacetAt(model, 0).m_pVertex1, 0, 0, 0);
    ExpectCorner(FacetAt(model, 0).m_pVertex2, 4, 0, 1);
    ExpectCorner(FacetAt(model, 0).m_pVertex3, 0, 4, 2);
}

// Breaks a text in a few random places.
std::string Broken(std::string text, std::mt19937& random, int nPlaces) {
    static std::string const kPieces[] = {"\n", "\n\n",   "\r\n", " ",   "y",    "-",  "1e",    "e5",
                                          ".",  "inf",    "nan",  "y1p", "1e99", "+7", "facet", "1.5.",
                                          "\t", "1e-400", "9",    "\f",  ",",    "--", "1e+",   "\v"};
    for (int n = 0; n < nPlaces; ++n) {
        std::size_t const nPlace = random() % (text.size() + 1);
        switch (random() % 5) {
            case 0:
                text.erase(nPlace, 1 + random() % 12);
                break;
            case 1:
                text.insert(nPlace, 1, '\0');
                break;
            case 2:
                text.insert(nPlace, random() % 3 == 0 ? 1100 : 85, random() % 2 == 0 ? ' ' : 'w');
                break;
            default:
                text.insert(nPlace, kPieces[random() % std::size(kPieces)]);
        }
    }
    return text;
}

}  // namespace

TEST(STLAscii, ReadsSevenLinesAFacet) {
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, Solid(kTriangle)));
    ExpectTriangle(model);
    EXPECT_STREQ("solid part\n", model.m_Status.m_szHeader);
    ExpectInvariants(model);
}

TEST(STLAscii, NoKeywordIsLookedAtButTheFirst) {
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, "solid\n?Facet? a b c\n\nx 0 0 0\ny\t4\t0\t1 rest\n  z 0 4 2\n?\n?\n"));
    ExpectTriangle(model);
}

TEST(STLAscii, LineEndsOfBothKindsAreTheSame) {
    std::string const text = shapes::ToAsciiStl(shapes::Bracket(), "part", "\n");
    std::string const other = shapes::ToAsciiStl(shapes::Bracket(), "part", "\r\n");
    CSTLModel unixEnds;
    CSTLModel dosEnds;
    EXPECT_EQ(1, ReadText(unixEnds, text));
    EXPECT_EQ(1, ReadText(dosEnds, other));
    EXPECT_EQ(static_cast<int>(shapes::Bracket().size()), unixEnds.GetFacetsNum());
    ExpectSameModels(unixEnds, dosEnds);
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(other));
}

TEST(STLAscii, ReadingShapesIsAddingTheSameTriangles) {
    for (shapes::Mesh const& mesh :
         {shapes::Cube(10.0f), shapes::Torus(20.0, 5.0, 24, 12), shapes::Gyroid(8)}) {
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(shapes::ToAsciiStl(mesh)));
    }
}

TEST(STLAscii, BrokenTextsAreReadAsDefined) {
    std::mt19937 random(31);
    std::string const text = shapes::ToAsciiStl(shapes::IcoSphere(5.0, 0));
    for (int n = 0; n < 500; ++n) {
        std::string const broken = Broken(text, random, 1 + n % 12);
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(broken)) << broken;
    }
}

TEST(STLAscii, EveryTruncationIsReadAsDefined) {
    std::string const text = Solid(kTriangle + FacetText("1 1 1", "5 1 2", "1 5 3"));
    for (std::size_t n = 0; n <= text.size(); ++n) {
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(text.substr(0, n))) << n;
    }
    // The last two lines of a facet may be missing, its third corner may not.
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, text.substr(0, text.find("endloop"))));
    EXPECT_EQ(1, model.GetFacetsNum());
    CSTLModel cut;
    EXPECT_EQ(1, ReadText(cut, text.substr(0, text.find("vertex 0 4 2"))));
    EXPECT_EQ(0, cut.GetFacetsNum());
}

TEST(STLAscii, TextWithoutFacetGivesNoneAndSucceeds) {
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, Many(100, 'a')));
    EXPECT_EQ(1, ReadText(model, ""));
    EXPECT_EQ(1, ReadText(model, "solid part\nendsolid part\n"));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
}

// The title is taken for the first facet's line 1, and all that follows is out of step.
TEST(STLAscii, TitleThatHoldsTheWordFacetIsTakenForAFacetsFirstLine) {
    for (char const* const pTitle : {"solid FaCeT\n", "solid multifaceted part\n", "FACET\n"}) {
        std::string text(pTitle);
        text.append(FacetText("1 2 3", "4 5 7", "9 9 9")).append("endsolid\n");
        CSTLModel model;
        EXPECT_EQ(1, ReadText(model, text));
        ASSERT_EQ(1, model.GetFacetsNum());
        ExpectCorner(FacetAt(model, 0).m_pVertex1, 0, 0, 0);
        ExpectCorner(FacetAt(model, 0).m_pVertex2, 1, 2, 3);
        ExpectCorner(FacetAt(model, 0).m_pVertex3, 4, 5, 7);
    }
}

// "endsolid" and "solid" count as lines 1 and 2, so that the corners come from the three lines behind.
TEST(STLAscii, SecondSolidPutsTheReadingOutOfStep) {
    std::string text = Solid(kTriangle);
    text.append(Solid(FacetText("1 1 8", "5 1 8", "1 5 8")));
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, text));
    ASSERT_EQ(2, model.GetFacetsNum());
    ExpectCorner(FacetAt(model, 1).m_pVertex1, 0, 0, 0);
    ExpectCorner(FacetAt(model, 1).m_pVertex2, 4, 0, 1);
    ExpectCorner(FacetAt(model, 1).m_pVertex3, 1, 1, 8);
}

TEST(STLAscii, BrokenNormalDoesNotStopTheRead) {
    for (char const* const pNormal : {"", "x y z", "nan nan nan", "1e999 0 0", "0,0 0,0 1,0"}) {
        CSTLModel model;
        EXPECT_EQ(1, ReadText(model, Solid(FacetText("0 0 0", "4 0 1", "0 4 2", pNormal))));
        ExpectTriangle(model);
    }
}

TEST(STLAscii, NumbersThatFailKeepTheValuesOfTheFacetBefore) {
    std::string const text = Solid(kTriangle + FacetText("8 zwei 9", "4 0 1e999", "0x 5 5"));
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, text));
    ASSERT_EQ(2, model.GetFacetsNum());
    ExpectCorner(FacetAt(model, 1).m_pVertex1, 8, 0, 0);
    ExpectCorner(FacetAt(model, 1).m_pVertex2, 4, 0, 1);
    ExpectCorner(FacetAt(model, 1).m_pVertex3, 0, 4, 2);
}

TEST(STLAscii, FirstFacetStartsFromZero) {
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, Solid(FacetText("?", "4 ? 1", "0 4 2"))));
    ASSERT_EQ(1, model.GetFacetsNum());
    ExpectCorner(FacetAt(model, 0).m_pVertex1, 0, 0, 0);
    ExpectCorner(FacetAt(model, 0).m_pVertex2, 4, 0, 0);
}

// The record that serves the whole read takes part in the snapping of heights.
TEST(STLAscii, KeptHeightIsTheSnappedOne) {
    std::string const text =
        Solid(kTriangle + FacetText("6 6 0.00005", "9 6 1", "6 9 2") + FacetText("7 7", "9 7 1", "7 9 2"));
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, text));
    ASSERT_EQ(3, model.GetFacetsNum());
    ExpectCorner(FacetAt(model, 2).m_pVertex1, 7, 7, 0);
}

// Heights less than the tolerance apart: which one a height is drawn to depends on the way down the tree, so
// that one kept as it stands in the file would often end elsewhere than the one it was drawn to.
TEST(STLAscii, HeightsKeptBehindSnappedOnesAreReadAsDefined) {
    std::mt19937 random(7);
    auto const corner = [&random] {
        std::ostringstream text;
        text << random() % 50 << ' ' << random() % 50;
        if (random() % 3 != 0) text << ' ' << static_cast<double>(random() % 9) * 0.00003;
        return text.str();
    };
    for (int n = 0; n < 200; ++n) {
        std::string facets;
        for (int i = 0; i < 12; ++i)
            facets += FacetText(corner().c_str(), corner().c_str(), corner().c_str());
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(Solid(facets))) << n;
    }
}

TEST(STLAscii, LinesOf1023CharactersAreWholeAndLongerOnesFallIntoTwo) {
    for (std::size_t const nBlanks : {900u, 1000u, 1007u, 1008u, 1009u, 1010u, 1011u, 1012u, 1500u, 3000u}) {
        std::string text("solid\nfacet normal 0 0 1\nouter loop\nvertex");
        text.append(nBlanks, ' ').append("4 0 1\nvertex 0 0 0\nvertex 0 4 2\nendloop\nendfacet\nendsolid\n");
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(text)) << nBlanks;
    }
    CSTLModel whole;  // vertex, 1011 blanks, "0 4 2" and the line end: 1023 characters
    std::string text("facet\n\nv 0 0 0\nv 4 0 1\nvertex");
    text.append(1011, ' ').append("0 4 2\n\n\n");
    EXPECT_EQ(1, ReadText(whole, text));
    ExpectTriangle(whole);
}

TEST(STLAscii, PreamblePiecesAreOf10239Characters) {
    // The word stands whole in the second piece.
    CSTLModel second;
    std::string text = Many(10239, 'p');
    text.append(kTriangle);
    EXPECT_EQ(1, ReadText(second, text));
    ExpectTriangle(second);
    // The word is cut by the end of the first piece, and the next one is in the facet's last line.
    std::string cut = Many(10237, 'p');
    cut.append(kTriangle);
    CSTLModel none;
    EXPECT_EQ(1, ReadText(none, cut));
    EXPECT_EQ(0, none.GetFacetsNum());
    for (std::size_t n = 10230; n < 10250; ++n) {
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(Many(n, 'p').append(Solid(kTriangle + kTriangle))));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(Many(70000, 'p').append("\n").append(Solid(kTriangle))));
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(Many(5000, 'p').append(Solid(kTriangle))));
}

TEST(STLAscii, WordsOver79CharactersFallIntoTwo) {
    for (std::size_t const nLength : {78u, 79u, 80u, 81u, 158u, 200u}) {
        std::string text("facet\n\n");
        text.append(nLength, 'v').append(" 1 2 3\nv 4 0 1\nv 0 4 2\n\n\n");
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(text)) << nLength;
        CSTLModel model;
        EXPECT_EQ(1, ReadText(model, text));
        bool const bFits = nLength <= 79;
        ExpectCorner(FacetAt(model, 0).m_pVertex1->z == 0 ? FacetAt(model, 0).m_pVertex1
                                                          : FacetAt(model, 0).m_pVertex3,
                     bFits ? 1 : 0, bFits ? 2 : 0, bFits ? 3 : 0);
    }
}

TEST(STLAscii, ZeroBytesEndALinesTextButNotTheLine) {
    std::string text("facet\n\nv 0 0 0\nv 4 0 1\nv 0 4 2");
    text.append(1, '\0').append(" 9 9 9\n\n\n");
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, text));
    ExpectTriangle(model);
    std::string hidden("x");
    hidden.append(1, '\0').append("facet\n").append(kTriangle);
    CSTLModel behind;
    EXPECT_EQ(1, ReadText(behind, hidden));
    ExpectTriangle(behind);
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsDefined(Many(3000, '\0').append("\n").append(Solid(kTriangle))));
}

TEST(STLAscii, MillionBlankLinesBeforeAndBehindTheFacets) {
    CSTLModel model;
    std::string text = Many(1000000, '\n');
    text.append(kTriangle).append(Many(1000000, '\n'));
    EXPECT_EQ(1, ReadText(model, text));
    ExpectTriangle(model);
    EXPECT_EQ(0x202u, FacetAt(model, 0).m_nFlag);  // the blank lines repeat the record
}

TEST(STLAscii, HeaderIsTheFirstLineUpTo79Characters) {
    CSTLModel model;
    model.m_Status.m_szHeader[79] = 'x';
    model.m_Status.m_szHeader[80] = 'y';
    EXPECT_EQ(1, ReadText(model, Many(100, 's')));
    EXPECT_EQ(Many(79, 's').append(1, '\0').append(1, 'y'), std::string(model.m_Status.m_szHeader, 81));
}

TEST(STLAscii, CountOnlyGivesTheSizeInPiecesOf256) {
    TestFolder const folder;
    for (std::size_t const nSize : {80u, 255u, 256u, 511u, 512u, 1000u}) {
        std::string text = Solid(kTriangle);
        text.resize(nSize, ' ');
        CSTLModel model;
        EXPECT_EQ(static_cast<int>(nSize / 256),
                  model.ReadSTLFile(WidePath(folder.Write("part.stl", text)), 1));
        EXPECT_EQ(static_cast<int>(nSize / 256), model.m_nTotalFacet);
        EXPECT_EQ(0, model.GetFacetsNum());
        EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
    }
}

TEST(STLAscii, FailsOnAFileThatCannotBeOpened) {
    TestFolder const folder;
    CSTLModel model;
    model.m_nTotalFacet = 5;
    EXPECT_EQ(0, model.ReadSTLASCII(WidePath(folder / "missing"), 0));
    EXPECT_EQ(0, model.ReadSTLASCII(WidePath(folder.Path()), 0));
    EXPECT_EQ(5, model.m_nTotalFacet);
}

TEST(STLAscii, StopBeforeTheReadLetsNoFacetIn) {
    CSTLModel model;
    model.StopReadModel();
    EXPECT_EQ(0, ReadText(model, Solid(kTriangle)));
    EXPECT_EQ(0, ReadText(model, "no facets here"));
    EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
    model.ResetStopFlag();
    EXPECT_EQ(0, ReadText(model, Solid(kTriangle)));
    EXPECT_EQ(0, model.GetFacetsNum());
}

TEST(STLAscii, FacetReaderTakesSevenLinesAndTheNormal) {
    TestFolder const folder;
    std::string const text = FacetText("1 2 3", "4 5 6", "7 8 9.5", "0.5 -1.5 1e-3") + "endsolid\n";
    FILE* const pFile = std::fopen(folder.Write("facet", text).string().c_str(), "r");
    CSTLModel model;
    tagFACET facet;
    EXPECT_EQ(1, model.ReadSTLFacetASCII(pFile, &facet));
    EXPECT_EQ(0.5f, facet.m_fNormal[0]);
    EXPECT_EQ(-1.5f, facet.m_fNormal[1]);
    EXPECT_EQ(1e-3f, facet.m_fNormal[2]);
    EXPECT_EQ(9.5, facet.m_ptVertex[2].z);
    EXPECT_EQ(0, model.ReadSTLFacetASCII(pFile, &facet));
    EXPECT_EQ(9.5, facet.m_ptVertex[2].z);
    std::fclose(pFile);
}

namespace {

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

std::string const kDecimals = Solid(FacetText("0.5 0 0", "4.25 0 1", "0 4 2"));

void ExpectDecimals() {
    CSTLModel model;
    EXPECT_EQ(1, ReadText(model, kDecimals));
    ASSERT_EQ(1, model.GetFacetsNum());
    ExpectCorner(FacetAt(model, 0).m_pVertex1, 0.5, 0, 0);
    ExpectCorner(FacetAt(model, 0).m_pVertex2, 4.25, 0, 1);
}

}  // namespace

TEST(STLAscii, GlobalStreamLocaleWithADecimalCommaChangesNothing) {
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    ExpectDecimals();
    std::locale::global(before);
}

TEST(STLAscii, ProcessLocaleWithADecimalCommaChangesNothing) {
    std::string const before = std::setlocale(LC_ALL, nullptr);
    bool bFound = false;
    for (char const* const pName :
         {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8", "fr_FR", "nl_NL.UTF-8",
          "nl_NL.utf8", "es_ES.UTF-8", "it_IT.UTF-8", "ru_RU.UTF-8"}) {
        bFound = bFound || std::setlocale(LC_ALL, pName) != nullptr;
    }
    if (!bFound) GTEST_SKIP() << "no locale with a decimal comma is installed";
    ExpectDecimals();
    std::setlocale(LC_ALL, before.c_str());
}
