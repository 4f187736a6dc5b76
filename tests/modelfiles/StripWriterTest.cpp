#include <atomic>
#include <cmath>
#include <cstring>
#include <random>
#include <thread>

#include "FileBytes.h"

namespace {

constexpr char kCompressedText[] = "Deiklug -- CSM3.0 Compressed data";
constexpr char kFloatText[] = "Deiklug -- CSM3.0";
constexpr std::size_t kStart = 80 + 36;

std::string Save(CSTLModel& model, int bCompress = 1, int bRotate = 1) {
    TestFolder const folder;
    EXPECT_EQ(1, model.ExtractFacetForCSM(bRotate, WidePath(folder / "strip.csm"), bCompress, nullptr, 0));
    return ReadBytes(folder / "strip.csm");
}

FileBytes Start(double x, double y, double z, double dScale, std::uint32_t nVertices) {
    FileBytes bytes;
    bytes.Text(dScale == 0.0 ? kFloatText : kCompressedText, 80);
    return bytes.Doubles({x, y, z, dScale}).Number(nVertices, 4);
}

// What the two record writers put into a file.
class RecordFile {
public:
    RecordFile() : m_pFile(std::tmpfile()) {}
    RecordFile(RecordFile const&) = delete;
    RecordFile& operator=(RecordFile const&) = delete;
    ~RecordFile() { std::fclose(m_pFile); }
    FILE* Get() const { return m_pFile; }
    std::string Bytes() const {
        std::string bytes(static_cast<std::size_t>(std::ftell(m_pFile)), '\0');
        std::rewind(m_pFile);
        EXPECT_EQ(bytes.size(), std::fread(bytes.data(), 1, bytes.size(), m_pFile));
        return bytes;
    }

private:
    FILE* m_pFile;
};

// The strip writer step by step, after the fact that all neighbours are looked up at each facet.
std::string LiteralStrips(CSTLModel& model, bool bCompress, bool bRotate) {
    RecordFile file;
    CBoundBox3D const& box = model.m_VertexTree.m_BoundBox;
    double const x = box.m_ptMax.x - box.m_ptMin.x;
    double const y = box.m_ptMax.y - box.m_ptMin.y;
    double const z = box.m_ptMax.z - box.m_ptMin.z;
    double const dScale = bCompress ? pow(2.0, 16.0) / (fmax(x, fmax(y, z)) + 1.0) : 0.0;
    std::string const start =
        Start(box.m_ptMin.x, box.m_ptMin.y, box.m_ptMin.z, dScale, model.m_VertexTree.m_nCount);
    std::fwrite(start.data(), 1, start.size(), file.Get());
    model.m_nPointCounter = 0;
    std::vector<CFacet*> const facets = FacetsOf(model);
    for (CFacet* const f : facets) {
        f->m_nRegion = 1;
        f->m_pVertex1->m_nID = f->m_pVertex2->m_nID = f->m_pVertex3->m_nID = 0;
    }
    for (CFacet* const seed : facets) {
        if (seed->m_nRegion == 0) continue;
        seed->m_nRegion = 0;
        CFacet* cur = seed;
        int nVertex = 1;
        int head = 0;
        for (;;) {
            if (!bRotate) nVertex = 1;
            tagVertexNode* v[5] = {cur->m_pVertex1, cur->m_pVertex2, cur->m_pVertex3, cur->m_pVertex1,
                                   cur->m_pVertex2};
            tagVertexNode *a = v[nVertex - 1], *b = v[nVertex], *c = v[nVertex + 1];
            CFacet* const n[3] = {cur->FindNeighborFacetRightNormal(a, b),
                                  cur->FindNeighborFacetRightNormal(b, c),
                                  cur->FindNeighborFacetRightNormal(c, a)};
            tagVertexNode* const ends[3][2] = {{a, b}, {b, c}, {c, a}};
            int e = 0;
            for (int i = 0; i < 3 && e == 0; ++i) {
                if (n[i] == nullptr || n[i]->m_nRegion == 0) continue;
                auto const off = [&](tagVertexNode* p) { return p != ends[i][0] && p != ends[i][1]; };
                int const nOff = off(n[i]->m_pVertex1)   ? 1
                                 : off(n[i]->m_pVertex2) ? 2
                                 : off(n[i]->m_pVertex3) ? 3
                                                         : 0;
                if (nOff == 0) continue;
                e = i + 1;
                cur = n[i];
                nVertex = nOff;
            }
            if (e == 0) break;
            cur->m_nRegion = 0;
            if (head == 0) model.WriteCSMHeadFacet(seed, e, file.Get(), dScale, box.m_ptMin);
            if (head == 0) head = e;
            model.WriteCSMFacet(cur, e, nVertex, file.Get(), dScale, box.m_ptMin);
        }
        if (head == 0) model.WriteCSMHeadFacet(seed, 0, file.Get(), dScale, box.m_ptMin);
        std::fputc(0, file.Get());
    }
    return file.Bytes();
}

}  // namespace

// ---- records

TEST(StripRecords, NewCornersAreFlaggedAndNumberedInOrder) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    RecordFile file;
    model.WriteCSMHeadFacet(&FacetAt(model, 0), 0, file.Get(), 16384.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(7).Numbers({0, 0, 0, 49152, 0, 16384, 0, 32768, 32768}, 2).Get(),
              file.Bytes());
    EXPECT_EQ(3, model.m_nPointCounter);
    EXPECT_EQ(1u, FacetAt(model, 0).m_pVertex1->m_nID);
    EXPECT_EQ(3u, FacetAt(model, 0).m_pVertex3->m_nID);
}

TEST(StripRecords, HeadIsRotatedForTheSecondEdgeAlone) {
    for (int const nEdge : {0, 1, 2, 3}) {
        CSTLModel model;
        AddTriangle(model, CPoint3D(1, 1, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
        RecordFile file;
        model.WriteCSMHeadFacet(&FacetAt(model, 0), nEdge, file.Get(), 0.0, CPoint3D(9, 9, 9));
        FileBytes expected = FileBytes().Byte(7);
        if (nEdge == 2) {
            expected.Floats({3, 0, 1, 0, 2, 2, 1, 1, 0});
        } else {
            expected.Floats({1, 1, 0, 3, 0, 1, 0, 2, 2});
        }
        EXPECT_EQ(expected.Get(), file.Bytes()) << nEdge;
    }
}

TEST(StripRecords, NumberedCornersAreReferences) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    CFacet& facet = FacetAt(model, 0);
    facet.m_pVertex1->m_nID = 0x010203;
    facet.m_pVertex3->m_nID = 5;
    model.m_nPointCounter = 41;
    RecordFile file;
    model.WriteCSMHeadFacet(&facet, 1, file.Get(), 16384.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(2).Number(0x010203, 3).Numbers({49152, 0, 16384}, 2).Number(5, 3).Get(),
              file.Bytes());
    EXPECT_EQ(42u, facet.m_pVertex2->m_nID);
    // All numbered: flag 0 and nine bytes.
    RecordFile numbered;
    model.WriteCSMHeadFacet(&facet, 2, numbered.Get(), 16384.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(0).Numbers({42, 5, 0x010203}, 3).Get(), numbered.Bytes());
}

TEST(StripRecords, CornersThatAreOneVertexAreEachWrittenAsNew) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    CFacet facet(FacetAt(model, 0));
    facet.m_pVertex3 = facet.m_pVertex2;
    RecordFile file;
    model.WriteCSMHeadFacet(&facet, 1, file.Get(), 0.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(7).Floats({0, 0, 0, 3, 0, 1, 3, 0, 1}).Get(), file.Bytes());
    EXPECT_EQ(3, model.m_nPointCounter);
    EXPECT_EQ(3u, facet.m_pVertex2->m_nID);
}

TEST(StripRecords, ReferenceIsTheNumberAboveThreeBitsOfCode) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    CFacet& facet = FacetAt(model, 0);
    facet.m_pVertex1->m_nID = 1;
    facet.m_pVertex2->m_nID = 2097151;
    facet.m_pVertex3->m_nID = 0x12345;
    RecordFile file;
    model.WriteCSMFacet(&facet, 1, 1, file.Get(), 0.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&facet, 2, 1, file.Get(), 0.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&facet, 3, 1, file.Get(), 0.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&facet, 1, 2, file.Get(), 0.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&facet, 3, 3, file.Get(), 0.0, CPoint3D(0, 0, 0));
    std::string const expected("\x0B\0\0\x0B\0\0\x09\0\0\xFB\xFF\xFF\x29\x1A\x09", 15);
    EXPECT_EQ(expected, file.Bytes());
    EXPECT_EQ(0, model.m_nPointCounter);
}

TEST(StripRecords, CornersAreNumberedFromOneToThreeAndOthersWriteNothing) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    RecordFile file;
    for (int const nVertex : {0, 4, -1, 1000000}) {
        model.WriteCSMFacet(&FacetAt(model, 0), 1, nVertex, file.Get(), 0.0, CPoint3D(0, 0, 0));
    }
    EXPECT_EQ("", file.Bytes());
    EXPECT_EQ(0, model.m_nPointCounter);
}

TEST(StripRecords, NewVertexIsACodeAndAPoint) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 1), CPoint3D(0, 2, 2));
    CFacet& facet = FacetAt(model, 0);
    RecordFile file;
    model.WriteCSMFacet(&facet, 3, 2, file.Get(), 16384.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&facet, 1, 3, file.Get(), 0.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(5).Numbers({49152, 0, 16384}, 2).Byte(7).Floats({0, 2, 2}).Get(),
              file.Bytes());
    EXPECT_EQ(1u, facet.m_pVertex2->m_nID);
    EXPECT_EQ(2u, facet.m_pVertex3->m_nID);
}

TEST(StripRecords, EachFacetCountsInTheProcess) {
    m_nCSMFacetCount = 10;
    CSTLModel model;
    AddTetrahedron(model);
    RecordFile file;
    model.WriteCSMHeadFacet(&FacetAt(model, 0), 1, file.Get(), 0.0, CPoint3D(0, 0, 0));
    model.WriteCSMFacet(&FacetAt(model, 1), 1, 2, file.Get(), 0.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(12, m_nCSMFacetCount);
    Save(model);
    EXPECT_EQ(4, m_nCSMFacetCount);
}

// 100.3 as a float lies below the double: the steps are those of the float.
TEST(StripRecords, QuantisedPointsGoThroughFloat) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(100.3, 0, 0), CPoint3D(200, 0, 1), CPoint3D(100, 2, 2));
    double const dScale = 1e9;
    RecordFile file;
    model.WriteCSMFacet(&FacetAt(model, 0), 1, 1, file.Get(), dScale, CPoint3D(100.0, 0, 0));
    auto const nFloat = static_cast<std::int64_t>((static_cast<double>(100.3f) - 100.0) * dScale);
    auto const nDouble = static_cast<std::int64_t>((100.3 - 100.0) * dScale);
    ASSERT_NE(nFloat & 0xFFFF, nDouble & 0xFFFF);
    EXPECT_EQ(
        FileBytes().Byte(7).Number(static_cast<std::uint64_t>(nFloat & 0xFFFF), 2).Numbers({0, 0}, 2).Get(),
        file.Bytes());
}

// On all axes, against a narrowing through memory.
TEST(StripRecords, EveryCoordinateIsNarrowedToFloat) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> coordinate(100.0, 101.0);
    for (int n = 0; n < 200; ++n) {
        CPoint3D const p(coordinate(random), coordinate(random), coordinate(random));
        CSTLModel model;
        AddTriangle(model, p, CPoint3D(200, 0, 102), CPoint3D(100, 300, 102));
        FileBytes steps = FileBytes().Byte(7);
        FileBytes floats = FileBytes().Byte(7);
        for (double const d : {p.x, p.y, p.z}) {
            float volatile const fNarrow = static_cast<float>(d);
            double const dSteps = (static_cast<double>(fNarrow) - 100.0) * 1e9;
            steps.Number(static_cast<std::uint64_t>(dSteps) & 0xFFFF, 2);
            floats.Floats({fNarrow});
        }
        RecordFile file;
        model.WriteCSMFacet(&FacetAt(model, 0), 1, 1, file.Get(), 1e9, CPoint3D(100, 100, 100));
        EXPECT_EQ(steps.Get(), file.Bytes());
        FacetAt(model, 0).m_pVertex1->m_nID = 0;
        RecordFile floatFile;
        model.WriteCSMFacet(&FacetAt(model, 0), 1, 1, floatFile.Get(), 0.0, CPoint3D(100, 100, 100));
        EXPECT_EQ(floats.Get(), floatFile.Bytes());
    }
}

TEST(StripRecords, StepsAreTruncatedTowardsZeroAndLoseTheirUpperBits) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(-0.75, 1.75, 65537.5), CPoint3D(1e9, -3, 65538), CPoint3D(0, 0, 65539));
    CFacet& facet = FacetAt(model, 0);
    RecordFile file;
    model.WriteCSMFacet(&facet, 1, 1, file.Get(), 1.0, CPoint3D(0, 0, 0));
    facet.m_pVertex2->x = std::nan("");
    facet.m_pVertex2->y = -3.0;
    facet.m_pVertex2->z = 1e30;
    model.WriteCSMFacet(&facet, 1, 2, file.Get(), 1.0, CPoint3D(0, 0, 0));
    EXPECT_EQ(FileBytes().Byte(7).Numbers({0, 1, 1}, 2).Byte(7).Numbers({0, 0xFFFD, 0}, 2).Get(),
              file.Bytes());
}

// ---- files

TEST(StripWriter, EmptyModelGivesTheHeaderAnd36Bytes) {
    CSTLModel model;
    double const dEmpty = 1.0000000200408773e20;
    EXPECT_EQ(Start(dEmpty, dEmpty, dEmpty, 65536.0 / (-dEmpty - dEmpty + 1.0), 0).Get(), Save(model));
    EXPECT_EQ(Start(dEmpty, dEmpty, dEmpty, 0.0, 0).Get(), Save(model, 0));
}

TEST(StripWriter, LoneFacetIsAHeadAndATerminator) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(1, 1, 1), CPoint3D(4, 1, 2), CPoint3D(1, 3, 3));
    FileBytes expected = Start(1, 1, 1, 16384.0, 3);
    expected.Byte(7).Numbers({0, 0, 0, 49152, 0, 16384, 0, 32768, 32768}, 2).Byte(0);
    EXPECT_EQ(expected.Get(), Save(model));
    FileBytes floats = Start(1, 1, 1, 0.0, 3);
    floats.Byte(7).Floats({1, 1, 1, 4, 1, 2, 1, 3, 3}).Byte(0);
    EXPECT_EQ(floats.Get(), Save(model, 0));
}

// Facets of vertices 0 to 3: (0,1,2) goes on across its edge 0-1 to (0,3,1), vertex 3 being new; that one is
// (3,1,0) in the strip, and goes on across 3-1 to (1,3,2), where 2 has number 3; and (2,1,3) goes on across
// its third edge 3-2, since 2-1 is where (0,1,2) was, to (2,3,0), where 0 has number 1.
TEST(StripWriter, TetrahedronIsOneStripToTheByte) {
    CSTLModel model;
    AddTetrahedron(model);
    FileBytes expected = Start(0, 0, 0, 16384.0, 4);
    expected.Byte(7).Numbers({0, 0, 0, 49152, 0, 16384, 0, 49152, 32768}, 2);
    expected.Byte(7).Numbers({0, 0, 49152}, 2);
    expected.Number(3 << 3 | 3, 3).Number(1 << 3 | 1, 3).Byte(0);
    EXPECT_EQ(expected.Get(), Save(model));
    for (CFacet const* const f : FacetsOf(model)) EXPECT_EQ(0, f->m_nRegion);
    EXPECT_EQ(4, model.m_nPointCounter);
}

TEST(StripWriter, NumbersRunOnOverStripsAndShells) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 0), CPoint3D(0, 3, 0));
    AddTriangle(model, CPoint3D(10, 0, 0), CPoint3D(13, 0, 0), CPoint3D(10, 3, 0));
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(0, -3, 0), CPoint3D(10, 0, 0));
    std::string const bytes = Save(model);
    // Two strips of one new facet, then one with corners 1, new, 4.
    ASSERT_EQ(kStart + 20 + 20 + 1 + 3 + 6 + 3 + 1, bytes.size());
    EXPECT_EQ(FileBytes().Byte(2).Number(1, 3).Get(), bytes.substr(kStart + 40, 4));
    EXPECT_EQ(FileBytes().Number(4, 3).Byte(0).Get(), bytes.substr(kStart + 50));
    EXPECT_EQ(7, model.m_nPointCounter);
}

TEST(StripWriter, MeshesAreWrittenAsTheStepsSay) {
    std::vector<shapes::Mesh> meshes = RealShapes();
    for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
        meshes.push_back(
            RandomMesh(nSeed, 4 + static_cast<int>(nSeed % 40), 4 + static_cast<int>(nSeed * 2)));
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        CSTLModel model;
        AddMesh(model, meshes[i]);
        int const nMode = static_cast<int>(i % 4);
        std::string const expected = LiteralStrips(model, nMode % 2 == 0, nMode < 2);
        std::vector<std::uint32_t> numbers;
        for (tagVertexNode const* const p : VerticesOf(model)) numbers.push_back(p->m_nID);
        ASSERT_EQ(expected, Save(model, nMode % 2 == 0, nMode < 2)) << "mesh " << i;
        std::vector<tagVertexNode*> const nodes = VerticesOf(model);
        for (std::size_t k = 0; k < nodes.size(); ++k) ASSERT_EQ(numbers[k], nodes[k]->m_nID);
        ASSERT_EQ(static_cast<int>(FacetsOf(model).size()), m_nCSMFacetCount);
    }
}

TEST(StripWriter, SurfacesAreTakenInTheirOrder) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    model.ClassifySurf(CSTLModel::EightClassifyFun, 0.01);
    EXPECT_EQ(LiteralStrips(model, true, true), Save(model));
}

TEST(StripWriter, VerticesWithoutFacetsAreCountedButNotWritten) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(3, 0, 0), CPoint3D(0, 3, 0));
    CPoint3D alone(1, 1, 3);
    model.m_VertexTree.AddNode(alone);
    std::string const bytes = Save(model);
    EXPECT_EQ(FileBytes().Number(4, 4).Get(), bytes.substr(112, 4));
    EXPECT_EQ(kStart + 20, bytes.size());
    EXPECT_EQ(3, model.m_nPointCounter);
}

TEST(StripWriter, HeadersAreWrittenInAllVariants) {
    TestFolder const folder;
    CSTLModel model;
    WidePath path(folder / "strip.csm");
    std::string given(4096, '\0');
    for (std::size_t i = 0; i < given.size(); ++i) given[i] = static_cast<char>(i * 7 + 1);
    auto const header = [&](int bCompress, char* pHeader, int nLength) {
        EXPECT_EQ(1, model.ExtractFacetForCSM(1, path, bCompress, pHeader, nLength));
        std::string const bytes = ReadBytes(folder / "strip.csm");
        EXPECT_EQ(static_cast<std::size_t>(nLength == 0 ? 80 : nLength) + 36, bytes.size());
        return bytes.substr(0, bytes.size() - 36);
    };
    for (int const nLength : {0, 1, 5, 80, 81, 4095, 4096}) {
        auto const nSize = static_cast<std::size_t>(nLength == 0 ? 80 : nLength);
        EXPECT_EQ(FileBytes().Text(kCompressedText, 4096).Get().substr(0, nSize),
                  header(1, nullptr, nLength));
        EXPECT_EQ(FileBytes().Text(kFloatText, 4096).Get().substr(0, nSize), header(0, nullptr, nLength));
        EXPECT_EQ(given.substr(0, nSize), header(1, given.data(), nLength));
        EXPECT_EQ(given.substr(0, nSize), header(0, given.data(), nLength));
    }
}

TEST(StripWriter, HeaderLengthsOutsideTheFieldAreRefusedBeforeTheFileIsThere) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    std::string given(8192, 'x');
    for (int const nLength : {4097, 2147483647, -1, -2147483647 - 1}) {
        m_nCSMFacetCount = 5;
        EXPECT_EQ(0, model.ExtractFacetForCSM(1, WidePath(folder / "strip.csm"), 1, nullptr, nLength));
        EXPECT_EQ(0, model.ExtractFacetForCSM(1, WidePath(folder / "strip.csm"), 1, given.data(), nLength));
        EXPECT_FALSE(std::filesystem::exists(folder / "strip.csm"));
        EXPECT_EQ(0, m_nCSMFacetCount);
    }
}

TEST(StripWriter, ModelsOfTwoMillionVerticesAreRefusedBeforeTheFileIsThere) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    WidePath path(folder / "strip.csm");
    for (std::uint32_t const nCount : {2097152u, 0xFFFFFFFFu}) {
        model.m_VertexTree.m_nCount = nCount;
        EXPECT_EQ(0, model.ExtractFacetForCSM(1, path, 1, nullptr, 0));
        EXPECT_FALSE(std::filesystem::exists(folder / "strip.csm"));
    }
    model.m_VertexTree.m_nCount = 2097151;
    EXPECT_EQ(1, model.ExtractFacetForCSM(1, path, 1, nullptr, 0));
    EXPECT_EQ(FileBytes().Number(2097151, 4).Get(), ReadBytes(folder / "strip.csm").substr(112, 4));
    model.m_VertexTree.m_nCount = 4;
}

TEST(StripWriter, FileThatCannotBeCreatedGivesZero) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    FacetAt(model, 0).m_nRegion = 9;
    EXPECT_EQ(0, model.ExtractFacetForCSM(1, WidePath(folder / "none" / "strip.csm"), 1, nullptr, 0));
    EXPECT_EQ(0, model.ExtractFacetForCSM(1, nullptr, 1, nullptr, 0));
    EXPECT_EQ(9, FacetAt(model, 0).m_nRegion);
}

TEST(StripWriter, StopLeavesTheHeadOfTheFirstStripAndTheWholeVertexCount) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    WidePath path(folder / "strip.csm");
    model.StopCurOperate();
    EXPECT_EQ(0, model.ExtractFacetForCSM(1, path, 1, nullptr, 0));
    FileBytes expected = Start(0, 0, 0, 16384.0, 4);
    expected.Byte(7).Numbers({0, 0, 0, 49152, 0, 16384, 0, 49152, 32768}, 2).Byte(0);
    EXPECT_EQ(expected.Get(), ReadBytes(folder / "strip.csm"));
    model.ResetStopFlag();
    model.StopReadModel();
    EXPECT_EQ(1, model.ExtractFacetForCSM(1, path, 1, nullptr, 0));
}

TEST(StripWriter, StopOfAnEmptyModelGivesZero) {
    TestFolder const folder;
    CSTLModel model;
    model.StopCurOperate();
    EXPECT_EQ(0, model.ExtractFacetForCSM(1, WidePath(folder / "strip.csm"), 1, nullptr, 0));
    EXPECT_EQ(kStart, ReadBytes(folder / "strip.csm").size());
}

// Whole strips and a cut one, each with its terminator: what is there can be read.
TEST(StripWriter, AnotherThreadStopsTheWriting) {
    TestFolder const folder;
    CSTLModel model;
    AddMesh(model, shapes::HeightField(300, 1.0, [](double x, double y) { return 0.1 * x + 0.2 * y; }));
    WidePath path(folder / "strip.csm");
    for (int nTry = 0; nTry < 8; ++nTry) {
        model.ResetStopFlag();
        std::atomic_ref(m_nCSMFacetCount).store(0);
        std::atomic<bool> bWatching{false};
        std::atomic<bool> bOver{false};
        std::thread watcher([&] {
            auto const count = [] {
                return std::atomic_ref(m_nCSMFacetCount).load(std::memory_order_relaxed);
            };
            bWatching = true;
            while (count() < 1000 && !bOver) std::this_thread::yield();
            model.StopCurOperate();
        });
        while (!bWatching) std::this_thread::yield();
        int const nResult = model.ExtractFacetForCSM(1, path, 1, nullptr, 0);
        bOver = true;
        watcher.join();
        std::string const bytes = ReadBytes(folder / "strip.csm");
        EXPECT_EQ(FileBytes().Number(model.m_VertexTree.m_nCount, 4).Get(), bytes.substr(112, 4));
        EXPECT_EQ('\0', bytes.back());
        CSTLModel back;
        EXPECT_EQ(1, back.ReadCSMFile1(path, 0));
        EXPECT_EQ(m_nCSMFacetCount, back.GetFacetsNum());
        if (nResult == 0) return;
        EXPECT_EQ(model.GetFacetsNum(), back.GetFacetsNum());
    }
    GTEST_SKIP() << "all was written before the other thread stopped it";
}
