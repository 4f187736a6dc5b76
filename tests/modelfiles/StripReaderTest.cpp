#include <atomic>
#include <cmath>
#include <cstring>
#include <random>
#include <set>
#include <thread>

#include "FileBytes.h"

namespace {

constexpr char kText[] = "Deiklug -- CSM3.0 Compressed data";
constexpr std::size_t kStart = 80 + 36;

// A file in steps of a quarter millimetre from the point (1, 2, 3).
FileBytes Start(std::uint32_t nVertices, std::string const& text = kText, std::size_t nHeader = 80) {
    return FileBytes().Text(text, nHeader).Doubles({1, 2, 3, 4}).Number(nVertices, 4);
}

FileBytes FloatStart(std::uint32_t nVertices) {
    return FileBytes().Text(kText, 80).Doubles({1, 2, 3, 0}).Number(nVertices, 4);
}

// A head of three new corners at (1, 2, 3), (2, 2, 3.25) and (1, 3, 3.5).
FileBytes Head() { return FileBytes().Byte(7).Numbers({0, 0, 0, 4, 0, 1, 0, 4, 2}, 2); }

int Read(CSTLModel& model, std::string const& bytes, int bCountOnly = 0) {
    static TestFolder const s_Folder;
    return model.ReadCSMFile1(WidePath(s_Folder.Write("strip.csm", bytes)), bCountOnly);
}

std::string Save(CSTLModel& model, int bCompress, char* pHeader = nullptr, int nHeader = 0) {
    TestFolder const folder;
    EXPECT_EQ(1, model.ExtractFacetForCSM(1, WidePath(folder / "strip.csm"), bCompress, pHeader, nHeader));
    return ReadBytes(folder / "strip.csm");
}

CPoint3D Decoded(tagVertexNode const* p, CBoundBox3D const& box, bool bCompress) {
    CPoint3D const size(box.m_ptMax.x - box.m_ptMin.x, box.m_ptMax.y - box.m_ptMin.y,
                        box.m_ptMax.z - box.m_ptMin.z);
    double const dScale = pow(2.0, 16.0) / (fmax(size.x, fmax(size.y, size.z)) + 1.0);
    auto const coordinate = [&](double d, double dOrigin) -> double {
        // Through memory: g++ 12 loses a narrowing of several coordinates at once.
        float volatile fNarrow = static_cast<float>(d);
        if (!bCompress) return fNarrow;
        double const dSteps = (static_cast<double>(fNarrow) - dOrigin) * dScale;
        fNarrow = static_cast<float>(static_cast<std::uint16_t>(static_cast<std::int64_t>(dSteps)) / dScale +
                                     dOrigin);
        return fNarrow;
    };
    return CPoint3D(coordinate(p->x, box.m_ptMin.x), coordinate(p->y, box.m_ptMin.y),
                    coordinate(p->z, box.m_ptMin.z));
}

std::size_t OpenFiles() {
    std::size_t n = 0;
    for ([[maybe_unused]] auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++n;
    return n;
}

}  // namespace

TEST(StripReader, TagsBehindAZeroByteAreRefused) {
    std::string const body = Start(3).Raw(Head()).Byte(0).Get().substr(80);
    for (char const* const pTag : {"CSM3.0", "CSM4.0"}) {
        CSTLModel model;
        EXPECT_EQ(1, Read(model, FileBytes().Text(pTag, 80).Raw(body)));
        EXPECT_EQ(1, model.GetFacetsNum());
        std::string hidden(80, '\0');
        hidden.replace(1, 6, pTag);
        EXPECT_EQ(0, Read(model, hidden + body));
        hidden[0] = 'x';
        EXPECT_EQ(1, Read(model, hidden + body));
    }
}

// Byte 79 counts as zero: a tag may end at byte 78.
TEST(StripReader, TagsMayStandAnywhereInTheFirst79Bytes) {
    std::string const body = Start(3).Raw(Head()).Byte(0).Get().substr(80);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, FileBytes().Raw(std::string(73, 'x')).Raw("CSM3.0x").Raw(body)));
    EXPECT_EQ('\0', model.m_Status.m_szHeader[79]);
    EXPECT_EQ(0, Read(model, FileBytes().Raw(std::string(74, 'x')).Raw("CSM3.0").Raw(body)));
    EXPECT_EQ(0, Read(model, std::string(80, 'x') + body));
    for (char const* const pText :
         {"CSM2.0", "csm3.0", "CSM3.1", "CSM6.0", "Quarnell Ziped Model -- CSM2.0"}) {
        EXPECT_EQ(0, Read(model, FileBytes().Text(pText, 80).Raw(body))) << pText;
    }
}

TEST(StripReader, HeaderWithTheTagOfLongHeadersHas4096Bytes) {
    for (char const* const pText : {"CSM5.0", "CSM3.0 CSM5.0", "CSM5.0 and CSM4.0"}) {
        CSTLModel model;
        std::string bytes = Start(3, pText, 4096).Raw(Head()).Byte(0);
        bytes[79] = 'A';
        bytes[4095] = 'B';
        EXPECT_EQ(1, Read(model, bytes)) << pText;
        EXPECT_EQ(1, model.GetFacetsNum());
        EXPECT_EQ('A', model.m_Status.m_szHeader[79]);
        EXPECT_EQ('B', model.m_Status.m_szHeader[4095]);
    }
}

TEST(StripReader, FilesWithoutATagOrWithoutBytesAreRefusedAndClosed) {
    std::size_t const nOpen = OpenFiles();
    CSTLModel model;
    EXPECT_EQ(0, Read(model, ""));
    EXPECT_EQ(0, Read(model, std::string(500, 'x')));
    EXPECT_EQ(0, Read(model, Start(3).Raw(Head()).Get().substr(0, 100)));
    EXPECT_EQ(0, Read(model, Start(2).Raw(Head())));
    EXPECT_EQ(0, Read(model, Start(3).Byte(0).Numbers({1, 1, 1}, 3)));
    EXPECT_EQ(nOpen, OpenFiles());
}

TEST(StripReader, FileThatCannotBeOpenedZeroesTheStatisticsOnly) {
    TestFolder const folder;
    CSTLModel model;
    model.m_nMaxBackRef = 5;
    model.m_nStripNum = 6;
    model.m_nTotalFacet = 7;
    model.m_Status.m_szHeader[0] = 'h';
    EXPECT_EQ(0, model.ReadCSMFile1(WidePath(folder / "missing.csm"), 0));
    EXPECT_EQ(0, model.m_nMaxBackRef);
    EXPECT_EQ(0, model.m_nStripNum);
    EXPECT_EQ(7, model.m_nTotalFacet);
    EXPECT_EQ('h', model.m_Status.m_szHeader[0]);
    EXPECT_EQ('\0', model.m_Status.m_szFileName[0]);
    EXPECT_EQ(0, model.ReadCSMFile1(nullptr, 0));
}

TEST(StripReader, ScaleOfZeroMeansFloatsWhateverTheTextSays) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, FloatStart(3).Byte(7).Floats({0.5f, 0, 0, 5, 0, 1, 0, 5, 2}).Byte(0)));
    ASSERT_EQ(1, model.GetFacetsNum());
    EXPECT_EQ(0.5, FacetAt(model, 0).m_pVertex1->x);
    EXPECT_EQ(5.0, FacetAt(model, 0).m_pVertex2->x);
}

TEST(StripReader, QuantisedPointsAreStepsFromTheOrigin) {
    CSTLModel model;
    FileBytes bytes = FileBytes().Text("CSM4.0", 80).Doubles({-1.5, 100, 0.1, 3}).Number(3, 4);
    bytes.Byte(7).Numbers({0, 0, 0, 65535, 0, 1, 0, 1, 2}, 2).Byte(0);
    EXPECT_EQ(1, Read(model, bytes));
    CFacet const& facet = FacetAt(model, 0);
    EXPECT_EQ(-1.5, facet.m_pVertex1->x);
    EXPECT_EQ(100.0, facet.m_pVertex1->y);
    EXPECT_EQ(static_cast<double>(0.1f), facet.m_pVertex1->z);
    EXPECT_EQ(static_cast<double>(static_cast<float>(65535 / 3.0 - 1.5)), facet.m_pVertex2->x);
    EXPECT_EQ(static_cast<double>(static_cast<float>(1 / 3.0 + 100.0)), facet.m_pVertex3->y);
    EXPECT_EQ(static_cast<double>(static_cast<float>(2 / 3.0 + 0.1)), facet.m_pVertex3->z);
}

TEST(StripReader, CountOnlyGivesTwiceTheVerticesAndNoFacet) {
    for (std::uint32_t const n : {3u, 1000u, 0u, 0x40000000u, 0xFFFFFFFFu}) {
        CSTLModel model;
        auto const nTwice = static_cast<std::int32_t>(2 * n);
        EXPECT_EQ(nTwice, Read(model, Start(n).Raw(Head()).Byte(0), 1));
        EXPECT_EQ(nTwice, model.m_nTotalFacet);
        EXPECT_EQ(0, model.GetFacetsNum());
        EXPECT_EQ(0, model.m_nMaxBackRef);
    }
    CSTLModel model;
    EXPECT_EQ(0, Read(model, std::string(200, 'x'), 1));
}

TEST(StripReader, FileWithoutStripsIsReadWithoutFacets) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, Start(10)));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(1, model.m_nMaxBackRef);
    EXPECT_EQ(0, model.m_nStripNum);
    EXPECT_EQ(20, model.m_nTotalFacet);
}

TEST(StripReader, StripOfOneFacetCountsAsOne) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, Start(3).Raw(Head()).Byte(0)));
    EXPECT_EQ(1, model.GetFacetsNum());
    EXPECT_EQ(1, model.m_nStripNum);
    CSTLModel open;
    EXPECT_EQ(1, Read(open, Start(3).Raw(Head())));
    EXPECT_EQ(1, open.m_nStripNum);
}

// (A, B, C) is (1, 2, 3); vertex 4 makes (4, 2, 1) of it, or (4, 1, 3).
TEST(StripReader, RecordsGoOnAcrossTheFirstOrTheThirdEdge) {
    for (bool const bFirst : {true, false}) {
        CSTLModel model;
        FileBytes bytes = Start(4).Raw(Head());
        bytes.Byte(bFirst ? 7 : 5).Numbers({8, 8, 8}, 2).Byte(0);
        EXPECT_EQ(1, Read(model, bytes));
        CSTLModel expected;
        CPoint3D const p1(1, 2, 3), p2(2, 2, 3.25), p3(1, 3, 3.5), p4(3, 4, 5);
        AddTriangle(expected, p1, p2, p3);
        if (bFirst) {
            AddTriangle(expected, p4, p2, p1);
        } else {
            AddTriangle(expected, p4, p1, p3);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
    }
}

TEST(StripReader, LowestBitOfACodeIsNotLookedAt) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, Start(4).Raw(Head()).Byte(6).Numbers({8, 8, 8}, 2).Byte(0)));
    EXPECT_EQ(2, model.GetFacetsNum());
    CSTLModel high;  // of a new vertex neither are the upper bits, nor those of a head's flags
    FileBytes bytes = Start(4).Byte(0xFF).Raw(Head().Get().substr(1));
    EXPECT_EQ(1, Read(high, bytes.Byte(0xFF).Numbers({8, 8, 8}, 2).Byte(0)));
    EXPECT_EQ(2, high.GetFacetsNum());
}

// Vertices read so far, less the number of the reference, and 1 more at the end.
TEST(StripReader, LongestWayBackIsCounted) {
    FileBytes const four = Start(4).Raw(Head()).Byte(5).Numbers({8, 8, 8}, 2);
    auto const backOf = [&four](std::uint64_t nReference) {
        CSTLModel model;
        EXPECT_EQ(1, Read(model, FileBytes(four).Number(nReference << 3 | 1, 3).Byte(0)));
        return model.m_nMaxBackRef;
    };
    EXPECT_EQ(1, backOf(4));
    EXPECT_EQ(2, backOf(3));
    EXPECT_EQ(4, backOf(1));
    CSTLModel model;
    EXPECT_EQ(1, Read(model, FileBytes(four).Byte(0).Byte(0).Numbers({4, 2, 3}, 3).Byte(0)));
    EXPECT_EQ(3, model.m_nMaxBackRef);
    EXPECT_EQ(2, model.m_nStripNum);
    EXPECT_EQ(3, model.GetFacetsNum());
}

TEST(StripReader, ReferencesToVerticesThatAreNotThereAreRefusedAndFacetsBeforeStay) {
    FileBytes const start = Start(9).Raw(Head());
    for (std::uint64_t const n : {0u, 4u, 5u, 0x1FFFFFu}) {
        CSTLModel model;
        EXPECT_EQ(0, Read(model, FileBytes(start).Number(n << 3 | 3, 3).Byte(0))) << n;
        EXPECT_EQ(1, model.GetFacetsNum());
        CSTLModel head;
        EXPECT_EQ(0, Read(head, FileBytes(start).Byte(0).Byte(0).Numbers({1, 2, n}, 3).Byte(0))) << n;
        EXPECT_EQ(1, head.GetFacetsNum());
        EXPECT_EQ(1, head.m_nStripNum);
    }
    CSTLModel first;
    EXPECT_EQ(0, Read(first, Start(9).Byte(0).Numbers({1, 1, 1}, 3)));
    EXPECT_EQ(0, first.GetFacetsNum());
}

// A record's number counts for the way back before it is refused, and the 1 of a good file is not added; a
// head's number that is refused does not count.
TEST(StripReader, NumberZeroOfARecordIsTheLongestWayBackAndThatOfAHeadIsNone) {
    FileBytes const start = Start(9).Raw(Head());
    CSTLModel record;
    EXPECT_EQ(0, Read(record, FileBytes(start).Number(0 << 3 | 3, 3).Byte(0)));
    EXPECT_EQ(3, record.m_nMaxBackRef);
    CSTLModel later;
    EXPECT_EQ(0, Read(later, FileBytes(start).Number(2 << 3 | 3, 3).Number(4 << 3 | 3, 3)));
    EXPECT_EQ(1, later.m_nMaxBackRef);
    CSTLModel head;
    EXPECT_EQ(0, Read(head, FileBytes(start).Byte(0).Byte(0).Numbers({3, 0, 1}, 3).Byte(0)));
    EXPECT_EQ(0, head.m_nMaxBackRef);
}

TEST(StripReader, MoreVerticesThanAnnouncedAreRefusedAndFacetsBeforeStay) {
    for (std::uint32_t const n : {0u, 1u, 2u}) {
        CSTLModel model;
        EXPECT_EQ(0, Read(model, Start(n).Raw(Head()).Byte(0)));
        EXPECT_EQ(0, model.GetFacetsNum());
    }
    CSTLModel model;
    EXPECT_EQ(0, Read(model, Start(3).Raw(Head()).Byte(5).Numbers({8, 8, 8}, 2).Byte(0)));
    EXPECT_EQ(1, model.GetFacetsNum());
}

TEST(StripReader, AnnouncedVerticesTakeNoMemory) {
    CSTLModel model;
    EXPECT_EQ(1, Read(model, Start(0xFFFFFFFFu).Raw(Head()).Byte(0)));
    EXPECT_EQ(1, model.GetFacetsNum());
    EXPECT_EQ(-2, model.m_nTotalFacet);
}

// The state of the strip is the reader's: a facet that does not enter the model goes on all the same.
TEST(StripReader, FacetsThatDoNotEnterTheModelDoNotBreakTheStrip) {
    CSTLModel model;
    FileBytes bytes = FloatStart(5).Byte(7).Floats({0, 0, 0, 1e11f, 0, 0, 0, 5, 1});
    bytes.Byte(5).Floats({0, 0, 4});  // (4, 1, 3)
    bytes.Number(4 << 3 | 3, 3);      // (4, 1, 4) has two equal corners
    bytes.Byte(7).Floats({3, 3, 3});  // (5, 1, 4)
    EXPECT_EQ(1, Read(model, bytes.Byte(0)));
    EXPECT_EQ(2, model.GetFacetsNum());
}

// A height within the tolerance is taken over by the mesh, but not by the strip's next facet.
TEST(StripReader, CornersStayTheReadersOwn) {
    FileBytes bytes = FloatStart(5).Byte(7).Floats({0, 0, 0, 5, 0, 0.00008f, 0, 5, -0.00008f});
    bytes.Byte(5).Floats({0, 0, 4}).Byte(7).Floats({3, 3, 3}).Byte(0);
    CSTLModel model;
    EXPECT_EQ(1, Read(model, bytes));
    CSTLModel expected;
    CPoint3D const p1(0, 0, 0), p2(5, 0, 0.00008f), p3(0, 5, -0.00008f), p4(0, 0, 4), p5(3, 3, 3);
    AddTriangle(expected, p1, p2, p3);
    AddTriangle(expected, p4, p1, p3);
    AddTriangle(expected, p5, p1, p4);
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
}

TEST(StripReader, FileCutAtARecordIsAGoodFileWithFewerFacets) {
    CSTLModel model;
    AddMesh(model, shapes::IcoSphere(10.0, 1));
    std::string const bytes = Save(model, 1);
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        CSTLModel back;
        int const nResult = Read(back, bytes.substr(0, n));
        if (n < kStart) {
            EXPECT_EQ(0, nResult) << n;
        }
        if (n == kStart || n == kStart + 19) {
            EXPECT_EQ(1, nResult) << n;
        }
        EXPECT_LE(back.GetFacetsNum(), 80);
        ExpectInvariants(back);
    }
}

// What a point lacks: of floats the bytes of the point before, of steps zeros.
TEST(StripReader, FileThatEndsInsideAPointUsesWhatIsThere) {
    CSTLModel floats;
    FileBytes bytes = FloatStart(4).Byte(7).Floats({0, 0, 0, 5, 0, 1, 0, 5, 2}).Byte(5).Floats({7});
    EXPECT_EQ(1, Read(floats, bytes));
    ASSERT_EQ(2, floats.GetFacetsNum());  // the new vertex is (7, 5, 2)
    EXPECT_EQ(7.0, floats.m_VertexTree.m_BoundBox.m_ptMax.x);
    EXPECT_EQ(4u, floats.m_VertexTree.m_nCount);
    CSTLModel steps;
    EXPECT_EQ(1, Read(steps, Start(4).Raw(Head()).Byte(5).Number(8, 2).Byte(4)));
    ASSERT_EQ(2, steps.GetFacetsNum());  // 8, 4 and 0 steps: (3, 3, 3)
    EXPECT_EQ(3.0, steps.m_VertexTree.m_BoundBox.m_ptMax.x);
    EXPECT_EQ(3.5, steps.m_VertexTree.m_BoundBox.m_ptMax.z);
}

// The bytes of the point that are there, in front of those that the point before has in these places. All
// twelve change the point by more than the tolerance.
TEST(StripReader, FileThatEndsInsideAFloatPointTakesTheOtherBytesFromThePointBefore) {
    CPoint3D const p1(100.0, 200.0, 300.0), p2(1100.25, 210.5, 310.75);
    std::array<float, 3> const before = {1000.1234f, 1500.4321f, 1900.777f};
    std::array<float, 3> const next = {-3051.9871f, -2771.6159f, -2393.7523f};
    FileBytes const head = FloatStart(4).Byte(7).Floats({100.0f, 200.0f, 300.0f, 1100.25f, 210.5f, 310.75f});
    for (std::size_t nCut = 1; nCut <= sizeof next; ++nCut) {
        std::array<unsigned char, sizeof next> bytes;
        std::memcpy(bytes.data(), next.data(), sizeof next);
        FileBytes file = FileBytes(head).Floats({before[0], before[1], before[2]}).Byte(5);
        for (std::size_t i = 0; i < nCut; ++i) file.Byte(bytes[i]);
        std::array<float, 3> mixed = before;
        std::memcpy(mixed.data(), bytes.data(), nCut);
        CSTLModel model;
        EXPECT_EQ(1, Read(model, file)) << nCut;
        CSTLModel expected;
        CPoint3D const p3(before[0], before[1], before[2]);
        AddTriangle(expected, p1, p2, p3);
        AddTriangle(expected, CPoint3D(mixed[0], mixed[1], mixed[2]), p1, p3);
        ASSERT_EQ(2, expected.GetFacetsNum()) << nCut;
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model)) << nCut;
    }
}

TEST(StripReader, FileThatEndsInsideAReferenceUsesWhatIsThere) {
    CSTLModel model;
    FileBytes const four = Start(4).Raw(Head()).Byte(5).Numbers({8, 8, 8}, 2);
    EXPECT_EQ(1, Read(model, FileBytes(four).Byte(2 << 3 | 1)));  // number 2, upper bytes zero
    EXPECT_EQ(3, model.GetFacetsNum());
}

TEST(StripReader, WrittenAndReadAgainTheMeshIsTheQuantisedOne) {
    for (shapes::Mesh const& mesh : RealShapes()) {
        for (int const bCompress : {0, 1}) {
            CSTLModel model;
            AddMesh(model, mesh);
            CSTLModel back;
            std::string const bytes = Save(model, bCompress);
            ASSERT_EQ(1, Read(back, bytes));
            // The facets come in the order of the file; corners may coincide after quantising.
            std::multiset<std::array<double, 9>> expected;
            std::multiset<std::array<double, 9>> decoded;
            CBoundBox3D const& box = model.m_VertexTree.m_BoundBox;
            auto const add = [bCompress](auto& facets, CPoint3D const& a, CPoint3D const& b,
                                         CPoint3D const& c) {
                std::array<CPoint3D, 3> p = {a, b, c};
                auto const less = [](CPoint3D const& l, CPoint3D const& r) {
                    return std::array{l.x, l.y, l.z} < std::array{r.x, r.y, r.z};
                };
                // Where quantised facets lie on each other, the first one decides the winding.
                if (bCompress != 0) std::sort(p.begin(), p.end(), less);
                std::rotate(p.begin(), std::min_element(p.begin(), p.end(), less), p.end());
                facets.insert({p[0].x, p[0].y, p[0].z, p[1].x, p[1].y, p[1].z, p[2].x, p[2].y, p[2].z});
            };
            CSTLModel quantised;
            for (CFacet const* const f : FacetsOf(model)) {
                AddTriangle(quantised, Decoded(f->m_pVertex1, box, bCompress != 0),
                            Decoded(f->m_pVertex2, box, bCompress != 0),
                            Decoded(f->m_pVertex3, box, bCompress != 0));
            }
            for (CFacet const* const f : FacetsOf(quantised))
                add(expected, *f->m_pVertex1, *f->m_pVertex2, *f->m_pVertex3);
            for (CFacet const* const f : FacetsOf(back))
                add(decoded, *f->m_pVertex1, *f->m_pVertex2, *f->m_pVertex3);
            ASSERT_EQ(expected.size(), decoded.size());
            ASSERT_TRUE(expected == decoded) << mesh.size() << " facets, compressed " << bCompress;
            ExpectInvariants(back);
        }
    }
}

TEST(StripReader, LongHeadersAreWrittenAndReadBack) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    std::string header = FileBytes().Text("part of mine CSM5.0", 4096);
    header.replace(2000, 5, "notes");
    CSTLModel back;
    EXPECT_EQ(1, Read(back, Save(model, 1, header.data(), 4096)));
    EXPECT_EQ(model.GetFacetsNum(), back.GetFacetsNum());
    EXPECT_EQ(header, std::string(back.m_Status.m_szHeader, 4096));
    std::string four = FileBytes().Text("CSM4.0", 80);
    CSTLModel other;
    EXPECT_EQ(1, Read(other, Save(model, 0, four.data(), 80)));
    EXPECT_EQ(model.GetFacetsNum(), other.GetFacetsNum());
}

TEST(StripReader, FileWrittenWithoutRotationIsAnotherMesh) {
    TestFolder const folder;
    CSTLModel model;
    AddMesh(model, shapes::IcoSphere(10.0, 2));
    WidePath path(folder / "strip.csm");
    EXPECT_EQ(1, model.ExtractFacetForCSM(0, path, 0, nullptr, 0));
    CSTLModel back;
    EXPECT_EQ(1, back.ReadCSMFile1(path, 0));
    EXPECT_NE(std::lround(model.CalVolume()), std::lround(back.CalVolume()));
}

TEST(StripReader, ReadingAddsToWhatTheModelHolds) {
    CSTLModel model;
    AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 100.0f, 0.0f, 0.0f));
    EXPECT_EQ(1, Read(model, Start(3).Raw(Head()).Byte(0)));
    EXPECT_EQ(13, model.GetFacetsNum());
    EXPECT_EQ(1, Read(model, Start(3).Raw(Head()).Byte(0)));
    EXPECT_EQ(13, model.GetFacetsNum());
    EXPECT_EQ(1, model.m_nStripNum);
    EXPECT_EQ(kPathStart, model.m_Status.m_szFileName);
    ExpectInvariants(model);
}

TEST(StripReader, StoppedModelReadsTheHeaderAndNoFacetEverAgain) {
    CSTLModel model;
    model.StopReadModel();
    EXPECT_EQ(0, Read(model, Start(3).Raw(Head()).Byte(0)));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(0, model.m_nStripNum);
    EXPECT_EQ(0, model.m_nMaxBackRef);
    EXPECT_EQ(6, model.m_nTotalFacet);
    EXPECT_STREQ(kText, model.m_Status.m_szHeader);
    model.ResetStopFlag();
    EXPECT_EQ(0, Read(model, Start(3)));
    EXPECT_EQ(6, Read(model, Start(3), 1));
}

TEST(StripReader, AnotherThreadWatchesAndStopsTheRead) {
    TestFolder const folder;
    CSTLModel source;
    AddMesh(source, shapes::HeightField(300, 1.0, [](double x, double y) { return 0.1 * x + 0.2 * y; }));
    WidePath path(folder / "strip.csm");
    ASSERT_EQ(1, source.ExtractFacetForCSM(1, path, 1, nullptr, 0));
    for (int nTry = 0; nTry < 8; ++nTry) {
        CSTLModel model;
        std::atomic<bool> bWatching{false};
        std::atomic<bool> bOver{false};
        std::thread watcher([&] {
            auto const count = [&] {
                return std::atomic_ref(model.m_Status.m_nFacetNum).load(std::memory_order_relaxed);
            };
            bWatching = true;
            while (count() < 1000 && !bOver) std::this_thread::yield();
            model.StopReadModel();
        });
        while (!bWatching) std::this_thread::yield();
        int const nResult = model.ReadCSMFile1(path, 0);
        bOver = true;
        watcher.join();
        ExpectInvariants(model);
        if (nResult == 0) {
            EXPECT_GE(model.GetFacetsNum(), 1000);
            EXPECT_LE(model.GetFacetsNum(), source.GetFacetsNum());
            return;
        }
    }
    GTEST_SKIP() << "every read was over before the other thread stopped it";
}

TEST(StripReader, EveryFlippedBitIsReadOrRefused) {
    for (int const bCompress : {0, 1}) {
        CSTLModel model;
        AddMesh(model, shapes::Cube(10.0f));
        std::string const bytes = Save(model, bCompress);
        for (std::size_t n = 0; n < 8 * bytes.size(); ++n) {
            std::string flipped = bytes;
            flipped[n / 8] = static_cast<char>(flipped[n / 8] ^ 1 << n % 8);
            CSTLModel back;
            Read(back, flipped);
            ExpectInvariants(back);
        }
    }
}
