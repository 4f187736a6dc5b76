#include <cmath>
#include <cstring>
#include <random>

#include "FileBytes.h"

namespace {

constexpr char kText[] = "Quarnell Ziped Model";

std::string Save(CSTLModel& model) {
    TestFolder const folder;
    EXPECT_EQ(1, model.SaveCSMFile(WidePath(folder / "part.csm")));
    return ReadBytes(folder / "part.csm");
}

int Read(CSTLModel& model, std::string const& bytes) {
    static TestFolder const s_Folder;
    return model.ReadCSMFile(WidePath(s_Folder.Write("part.csm", bytes)));
}

FileBytes Start(std::uint32_t nVertices) { return FileBytes().Text(kText, 80).Number(nVertices, 4); }

// Three vertices and a facet of them.
std::string Triangle(std::initializer_list<std::uint64_t> numbers) {
    return Start(3).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2}).Number(1, 4).Numbers(numbers, 4);
}

}  // namespace

TEST(PlainCSM, EmptyModelGives88BytesAndIsReadBack) {
    CSTLModel model;
    std::string const bytes = Save(model);
    EXPECT_EQ(Start(0).Number(0, 4).Get(), bytes);
    EXPECT_EQ(88u, bytes.size());
    CSTLModel back;
    EXPECT_EQ(1, Read(back, bytes));
    EXPECT_EQ(0, back.GetFacetsNum());
}

// The tree of the three vertices has the middle height as its root: the order is root, higher, lower side.
TEST(PlainCSM, SingleFacetToTheByte) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0.1, 0, 0), CPoint3D(5, 0, 1), CPoint3D(0, 5, 2));
    std::vector<tagVertexNode*> const nodes = VerticesOf(model);
    EXPECT_EQ(1.0, nodes[0]->z);
    EXPECT_EQ(0.0, nodes[1]->z);
    std::string const bytes = Save(model);
    EXPECT_EQ(Start(3).Floats({5, 0, 1, 0.1f, 0, 0, 0, 5, 2}).Number(1, 4).Numbers({1, 0, 2}, 4).Get(),
              bytes);
}

TEST(PlainCSM, CubeGives328Bytes) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(10.0f));
    std::string const bytes = Save(model);
    EXPECT_EQ(328u, bytes.size());
    CSTLModel back;
    EXPECT_EQ(1, Read(back, bytes));
    EXPECT_EQ(12, back.GetFacetsNum());
    EXPECT_EQ(1000.0, back.CalVolume());
    EXPECT_EQ(bytes.substr(0, 80), std::string(back.m_Status.m_szHeader, 80));
    ExpectInvariants(back);
}

TEST(PlainCSM, VerticesAreNumberedFromZeroInTheOrderOfTheWalk) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    std::vector<tagVertexNode*> const nodes = VerticesOf(model);
    model.m_Status.m_nFacetNum = 7;
    Save(model);
    for (std::size_t i = 0; i < nodes.size(); ++i) EXPECT_EQ(i, nodes[i]->m_nID);
    EXPECT_EQ(model.GetFacetsNum(), model.m_Status.m_nFacetNum);
}

TEST(PlainCSM, FacetsOfAllSurfacesAreWrittenInTheirOrder) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(10.0f));
    model.ClassifySurf(CSTLModel::EightClassifyFun, 0.01);
    ASSERT_GT(model.m_SurfaceArray.m_aSurface.GetSize(), 1);
    std::vector<CFacet*> const facets = FacetsOf(model);
    std::string const bytes = Save(model);
    FileBytes numbers;
    for (CFacet const* const f : facets) {
        numbers.Numbers({f->m_pVertex1->m_nID, f->m_pVertex2->m_nID, f->m_pVertex3->m_nID}, 4);
    }
    EXPECT_EQ(numbers.Get(), bytes.substr(88 + 12 * 8));
    CSTLModel back;
    EXPECT_EQ(1, Read(back, bytes));
    EXPECT_EQ(1, back.m_SurfaceArray.m_aSurface.GetSize());
    EXPECT_EQ(12, back.GetFacetsNum());
}

TEST(PlainCSM, WrittenAndReadAgainTheFacetsAreTheSame) {
    for (shapes::Mesh const& mesh : RealShapes()) {
        CSTLModel model;
        AddMesh(model, mesh);
        std::string const bytes = Save(model);
        EXPECT_EQ(88 + 12 * (model.m_VertexTree.m_nCount + FacetsOf(model).size()), bytes.size());
        CSTLModel back;
        ASSERT_EQ(1, Read(back, bytes));
        CSTLModel expected;
        auto const narrowed = [](tagVertexNode const* p) {
            return CPoint3D(static_cast<float>(p->x), static_cast<float>(p->y), static_cast<float>(p->z));
        };
        for (CFacet const* const f : FacetsOf(model)) {
            AddTriangle(expected, narrowed(f->m_pVertex1), narrowed(f->m_pVertex2), narrowed(f->m_pVertex3));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, back));
    }
}

TEST(PlainCSM, FileThatCannotBeOpenedOrCreatedGivesZero) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(0, model.ReadCSMFile(WidePath(folder / "missing.csm")));
    EXPECT_EQ('\0', model.m_Status.m_szFileName[0]);
    EXPECT_EQ(0, model.SaveCSMFile(WidePath(folder / "none" / "part.csm")));
    EXPECT_EQ(0, model.ReadCSMFile(nullptr));
    EXPECT_EQ(0, model.SaveCSMFile(nullptr));
}

TEST(PlainCSM, RingStreamsAreHandedOnAndRefused) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    WidePath path(folder / "ring.csm");
    EXPECT_EQ(1, model.SaveCSMFile1(path));
    CSTLModel back;
    back.m_nStripNum = 5;
    EXPECT_EQ(0, back.ReadCSMFile(path));
    EXPECT_EQ(0, back.GetFacetsNum());
    EXPECT_EQ(0, back.m_nStripNum);  // by the reader of strips
    // The tag behind a zero byte counts for nothing: a plain file of no vertices.
    std::string bytes = Start(0).Number(0, 4);
    std::memcpy(bytes.data() + 30, "CSM2.0", 6);
    EXPECT_EQ(1, Read(back, bytes));
}

// "CSM2.0" and "CSM3.0" in one header: handed on as a ring stream, and read as strips.
TEST(PlainCSM, FileWithBothTagsIsReadAsStrips) {
    FileBytes bytes;
    bytes.Text("CSM2.0 CSM3.0", 80).Doubles({0, 0, 0, 0}).Number(3, 4);
    bytes.Byte(7).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2}).Byte(0);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, bytes));
    EXPECT_EQ(1, model.GetFacetsNum());
}

// The bytes behind the header are taken for the counts: here an origin of 5.0 for no vertices and many
// facets, or one of 0.0 for no vertices and no facets.
TEST(PlainCSM, StripFilesAreNotRecognised) {
    TestFolder const folder;
    for (float const fOrigin : {5.0f, 0.0f}) {
        CSTLModel model;
        AddMesh(model, shapes::Moved(shapes::Cube(10.0f), fOrigin, 0.0f, 0.0f));
        WidePath path(folder / "strip.csm");
        EXPECT_EQ(1, model.ExtractFacetForCSM(1, path, 1, nullptr, 0));
        CSTLModel back;
        EXPECT_EQ(fOrigin == 0.0f ? 1 : 0, back.ReadCSMFile(path));
        EXPECT_EQ(0, back.GetFacetsNum());
    }
}

TEST(PlainCSM, NumberAtOrAboveTheCountIsRefusedAndFacetsBeforeStay) {
    CSTLModel model;
    std::string bytes = Start(4).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2, 1, 1, 9}).Number(3, 4);
    bytes += FileBytes().Numbers({0, 1, 2, 0, 1, 4, 0, 1, 3}, 4).Get();
    EXPECT_EQ(0, Read(model, bytes));
    EXPECT_EQ(1, model.GetFacetsNum());
    for (std::uint64_t const n : {3ull, 4ull, 0x7FFFFFFFull, 0x80000000ull, 0xFFFFFFFFull}) {
        CSTLModel other;
        EXPECT_EQ(0, Read(other, Triangle({0, 1, n})));
        EXPECT_EQ(0, Read(other, Triangle({n, 1, 2})));
        EXPECT_EQ(0, other.GetFacetsNum());
    }
    CSTLModel noVertices;
    EXPECT_EQ(0, Read(noVertices, Start(0).Number(1, 4).Numbers({0, 0, 0}, 4)));
}

TEST(PlainCSM, CountsThatTheFileCannotHoldAreRefused) {
    for (std::uint32_t const n : {4u, 1000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        CSTLModel model;
        std::string bytes = Triangle({0, 1, 2});
        std::memcpy(bytes.data() + 80, FileBytes().Number(n, 4).Get().data(), 4);
        EXPECT_EQ(0, Read(model, bytes)) << n;
        EXPECT_EQ(0, model.GetFacetsNum());
    }
    CSTLModel model;
    std::string bytes = Triangle({0, 1, 2});
    std::memcpy(bytes.data() + 120, "\xFF\xFF\xFF\x7F", 4);
    EXPECT_EQ(0, Read(model, bytes));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(PlainCSM, FacetCountThatIsNegativeReadsNothing) {
    for (std::uint32_t const n : {0u, 0x80000000u, 0xFFFFFFFFu}) {
        CSTLModel model;
        EXPECT_EQ(
            1, Read(model, Start(3).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2}).Number(n, 4).Numbers({9, 9, 9}, 4)));
        EXPECT_EQ(0, model.GetFacetsNum());
    }
}

// Of a record that arrives short but not empty, the missing bytes are those of the record before.
TEST(PlainCSM, ShortRecordKeepsTheBytesOfTheRecordBefore) {
    std::string bytes =
        Start(4).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2, 1, 1, 9}).Number(2, 4).Numbers({0, 1, 2}, 4);
    bytes += std::string("\x03", 1);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, bytes));
    ASSERT_EQ(2, model.GetFacetsNum());  // (0, 1, 2), and (3, 1, 2)
    EXPECT_EQ(9.0, std::max({FacetAt(model, 1).m_pVertex2->z, FacetAt(model, 1).m_pVertex3->z}));
    // The first record has none before it: (1, 0, 0) collapses.
    CSTLModel first;
    EXPECT_EQ(1, Read(first, Start(2).Floats({0, 0, 0, 5, 0, 1}).Number(1, 4).Byte(1)));
    EXPECT_EQ(0, first.GetFacetsNum());
}

// So of a count: what is missing of it is zero. Without a byte there is none.
TEST(PlainCSM, ShortCountIsTakenWithZeros) {
    auto const result = [](std::string const& bytes) {
        CSTLModel model;
        return Read(model, bytes);
    };
    EXPECT_EQ(0, result(Start(0)));
    for (std::size_t n = 1; n <= 4; ++n) {
        EXPECT_EQ(1, result(std::string(Start(0)) + std::string(n, '\0'))) << n;
        EXPECT_EQ(0, result(std::string(Start(0)) + '\1' + std::string(n - 1, '\0'))) << n;
    }
    EXPECT_EQ(1, result(std::string(Start(0)) + std::string("\0\0\0\xFF", 4))) << "below 0";
}

TEST(PlainCSM, EveryTruncationGivesZeroUnlessTheLastFacetHasBegun) {
    CSTLModel model;
    AddTetrahedron(model);
    std::string const bytes = Save(model);
    ASSERT_EQ(88u + 12 * 8, bytes.size());
    for (std::size_t n = 0; n <= bytes.size(); ++n) {
        CSTLModel back;
        EXPECT_EQ(n > bytes.size() - 12 ? 1 : 0, Read(back, bytes.substr(0, n))) << n;
        std::size_t const nStart = 88 + 12 * 4;
        int const nWhole = n < nStart ? 0 : static_cast<int>((n - nStart) / 12);
        EXPECT_GE(back.GetFacetsNum(), nWhole);
        EXPECT_LE(back.GetFacetsNum(), nWhole + 1);
        ExpectInvariants(back);
    }
}

TEST(PlainCSM, EveryFlippedBitIsReadOrRefused) {
    CSTLModel model;
    AddTetrahedron(model);
    std::string const bytes = Save(model);
    for (std::size_t n = 0; n < 8 * bytes.size(); ++n) {
        std::string flipped = bytes;
        flipped[n / 8] = static_cast<char>(flipped[n / 8] ^ 1 << n % 8);
        CSTLModel back;
        Read(back, flipped);
        EXPECT_LE(back.GetFacetsNum(), 4);
        ExpectInvariants(back);
    }
}

TEST(PlainCSM, ReadingAddsToTheModelAndLooksAtNoStopFlag) {
    CSTLModel model;
    AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 100.0f, 0.0f, 0.0f));
    model.StopReadModel();
    model.StopCurOperate();
    EXPECT_EQ(1, Read(model, Triangle({0, 1, 2})));
    EXPECT_EQ(13, model.GetFacetsNum());
    EXPECT_EQ(kPathStart, model.m_Status.m_szFileName);
    ExpectInvariants(model);
    EXPECT_EQ(88u + 12 * (11 + 13), Save(model).size());
}
