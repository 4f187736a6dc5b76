#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "FileBytes.h"
#include "MeshChecks.h"
#include "TestFiles.h"
#include "trees/PointSoup.h"

namespace {

struct Record {
    float values[12];  // normal and three corners
};

void AppendWord(std::string& bytes, std::uint32_t n) {
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(n >> (8 * i) & 0xFF);
}

std::string BinaryFile(std::vector<Record> const& records, std::uint32_t nAnnounced,
                       std::size_t nHeader = 80) {
    std::string bytes(nHeader, 'h');
    AppendWord(bytes, nAnnounced);
    for (Record const& record : records) {
        for (float const f : record.values) AppendWord(bytes, std::bit_cast<std::uint32_t>(f));
        bytes.append("\xAB\xCD");
    }
    return bytes;
}

std::string BinaryFile(std::vector<Record> const& records) {
    return BinaryFile(records, static_cast<std::uint32_t>(records.size()));
}

tagFACET FacetOf(Record const& record) {
    tagFACET facet;
    for (int i = 0; i < 3; ++i) {
        facet.m_fNormal[i] = record.values[i];
        facet.m_ptVertex[i] = CPoint3D(static_cast<double>(record.values[3 * i + 3]),
                                       static_cast<double>(record.values[3 * i + 4]),
                                       static_cast<double>(record.values[3 * i + 5]));
    }
    return facet;
}

// A fan of facets that all enter.
std::vector<Record> Fan(int nFacets) {
    std::vector<Record> records;
    for (int n = 0; n < nFacets; ++n) {
        auto const f = static_cast<float>(n);
        records.push_back({{9, 9, 9, 0, 0, 0, 1 + f, 5, 1, 2 + f, 5, 1}});
    }
    return records;
}

// Triangles over few near corners, with repetitions, and floats of any kind now and then.
std::vector<Record> RandomRecords(unsigned nSeed, std::size_t nRecords) {
    PointSoup soup(nSeed, static_cast<PointSoup::Kind>(nSeed % PointSoup::kKinds));
    std::mt19937 random(nSeed);
    std::vector<CPoint3D> pool;
    for (int i = 0; i < 12; ++i) pool.push_back(soup.Next());
    std::vector<Record> records(nRecords);
    for (Record& record : records) {
        for (std::size_t i = 0; i < 12; i += 3) {
            CPoint3D const& p = pool[random() % pool.size()];
            record.values[i] = static_cast<float>(p.x);
            record.values[i + 1] = static_cast<float>(p.y);
            record.values[i + 2] = static_cast<float>(p.z);
        }
        if (random() % 10 == 0) {
            record.values[random() % 12] = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        }
    }
    return records;
}

// Reads the bytes, and adds the records one by one to another model.
void ExpectReadAsAdded(std::string const& bytes, std::vector<Record> const& records) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(1, model.ReadSTLBINARY(WidePath(folder.Write("part.stl", bytes)), 0, 80));
    CSTLModel expected;
    for (Record const& record : records) {
        tagFACET facet = FacetOf(record);
        expected.AddFacet(facet);
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameModels(expected, model));
}

std::int32_t Peek(std::int32_t& n) {
    return std::atomic_ref<std::int32_t>(n).load(std::memory_order_relaxed);
}

}  // namespace

TEST(STLBinary, EmptyModelIsEightyFourBytes) {
    TestFolder const folder;
    CSTLModel model;
    EXPECT_EQ(1, model.SaveSTLFile(WidePath(folder / "empty.stl"), 2));
    std::string const bytes = ReadBytes(folder / "empty.stl");
    ASSERT_EQ(84u, bytes.size());
    EXPECT_EQ(std::string("Deiklug\0", 8), bytes.substr(0, 8));
    EXPECT_EQ(std::string(4, '\0'), bytes.substr(80));
}

// The third corner is the lowest and comes first, with the winding kept.
TEST(STLBinary, OneFacetByteForByte) {
    TestFolder const folder;
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 1), CPoint3D(2, 0, 1), CPoint3D(0, 3, 0));
    ASSERT_EQ(1, model.GetFacetsNum());
    FacetAt(model, 0).m_fNormal[0] = -0.5f;  // as it is stored, whatever it is
    FacetAt(model, 0).m_fNormal[1] = 0.25f;
    FacetAt(model, 0).m_fNormal[2] = 1.0f;
    EXPECT_EQ(1, model.SaveSTLFile(WidePath(folder / "one.stl"), 2));
    std::string const bytes = ReadBytes(folder / "one.stl");
    ASSERT_EQ(134u, bytes.size());
    std::string const expected(
        "\x01\0\0\0"
        "\0\0\0\xBF\0\0\x80\x3E\0\0\x80\x3F"  // -0.5, 0.25, 1
        "\0\0\0\0\0\0\x40\x40\0\0\0\0"        // 0, 3, 0
        "\0\0\0\0\0\0\0\0\0\0\x80\x3F"        // 0, 0, 1
        "\0\0\0\x40\0\0\0\0\0\0\x80\x3F",     // 2, 0, 1
        52);
    EXPECT_EQ(expected, bytes.substr(80, 52));
}

TEST(STLBinary, CoordinatesAreNarrowedToFloat) {
    TestFolder const folder;
    CSTLModel model;
    AddTriangle(model, CPoint3D(0.1, 0, 0), CPoint3D(16777217.0, 0, 0), CPoint3D(0, 1e-50, 7));
    ASSERT_EQ(1, model.SaveSTLFile(WidePath(folder / "one.stl"), 2));
    std::string const bytes = ReadBytes(folder / "one.stl");
    EXPECT_EQ(std::string("\xCD\xCC\xCC\x3D", 4), bytes.substr(96, 4));
    EXPECT_EQ(std::string("\0\0\x80\x4B", 4), bytes.substr(108, 4));
    EXPECT_EQ(std::string(4, '\0'), bytes.substr(124, 4));
}

TEST(STLBinary, WritesAllSurfacesAndCorrectsTheCount) {
    TestFolder const folder;
    CSTLModel model;
    AddMesh(model, shapes::Cube(1.0f));
    auto* const pSecond = new CFeatureSurface;
    model.m_SurfaceArray.m_aSurface.Add(pSecond);
    auto& first = model.m_SurfaceArray.m_aSurface[0]->m_aFacet;
    pSecond->m_aFacet.Add(first[0]);
    first.RemoveAt(0);
    model.m_Status.m_nFacetNum = 77;
    ASSERT_EQ(1, model.SaveSTLFile(WidePath(folder / "cube.stl"), 2));
    EXPECT_EQ(12, model.m_Status.m_nFacetNum);
    std::string const bytes = ReadBytes(folder / "cube.stl");
    ASSERT_EQ(84u + 600u, bytes.size());
    EXPECT_EQ(std::string("\x0C\0\0\0", 4), bytes.substr(80, 4));
    float x = 0.0f;
    std::memcpy(&x, bytes.data() + 84 + 11 * 50 + 12, 4);  // the last record is the moved facet
    EXPECT_EQ(static_cast<float>(pSecond->m_aFacet[0]->m_pVertex1->x), x);
}

TEST(STLBinary, EveryTruncationGivesTheWholeRecordsThatAreThere) {
    TestFolder const folder;
    std::string const bytes = BinaryFile(Fan(4));
    for (std::size_t nLength = 0; nLength <= bytes.size(); ++nLength) {
        CSTLModel model;
        WidePath path(folder.Write("cut.stl", bytes.substr(0, nLength)));
        ASSERT_EQ(1, model.ReadSTLBINARY(path, 0, 80)) << nLength;
        std::size_t const nExpected = nLength < 84 ? 0 : (nLength - 84) / 50;
        ASSERT_EQ(static_cast<int>(nExpected), model.GetFacetsNum()) << nLength;
        if (nLength >= 84) {
            ASSERT_EQ(4, model.m_nTotalFacet);
        }
    }
}

TEST(STLBinary, CountBeyondTheFileIsNoError) {
    TestFolder const folder;
    for (std::uint32_t const nAnnounced : {4u, 5u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        CSTLModel model;
        WidePath path(folder.Write("short.stl", BinaryFile(Fan(3), nAnnounced)));
        EXPECT_EQ(1, model.ReadSTLFile(path, 0));
        EXPECT_EQ(3, model.GetFacetsNum());
        EXPECT_EQ(static_cast<std::int32_t>(nAnnounced), model.m_nTotalFacet);
    }
}

TEST(STLBinary, RecordsBeyondTheCountAreNotRead) {
    TestFolder const folder;
    for (std::uint32_t const nAnnounced : {0u, 1u, 2u}) {
        CSTLModel model;
        WidePath path(folder.Write("long.stl", BinaryFile(Fan(3), nAnnounced)));
        EXPECT_EQ(1, model.ReadSTLFile(path, 0));
        EXPECT_EQ(static_cast<int>(nAnnounced), model.GetFacetsNum());
    }
}

TEST(STLBinary, CountOnlyGivesTheAnnouncedCountAndNoFacet) {
    TestFolder const folder;
    for (std::uint32_t const nAnnounced : {3u, 123456u, 0xFFFFFFFFu}) {
        CSTLModel model;
        WidePath path(folder.Write("part.stl", BinaryFile(Fan(3), nAnnounced)));
        EXPECT_EQ(static_cast<std::int32_t>(nAnnounced), model.ReadSTLFile(path, 1));
        EXPECT_EQ(static_cast<std::int32_t>(nAnnounced), model.m_nTotalFacet);
        EXPECT_EQ(0, model.GetFacetsNum());
        EXPECT_EQ(0u, model.m_VertexTree.m_nCount);
        EXPECT_EQ(std::string(80, 'h'), std::string(model.m_Status.m_szHeader, 80));
        EXPECT_EQ(2, model.m_Status.m_nFileType);
    }
}

TEST(STLBinary, LongerHeadersAreReadWhole) {
    TestFolder const folder;
    CSTLModel model;
    WidePath path(folder.Write("part.bin", BinaryFile(Fan(5), 5, 256)));
    EXPECT_EQ(1, model.ReadSTLBINARY(path, 0, 256));
    EXPECT_EQ(5, model.GetFacetsNum());
    EXPECT_EQ(std::string(256, 'h'), std::string(model.m_Status.m_szHeader, 256));
    EXPECT_EQ('\0', model.m_Status.m_szHeader[256]);
}

TEST(STLBinary, ReadingAddsToWhatTheModelHolds) {
    TestFolder const folder;
    CSTLModel model;
    AddMesh(model, shapes::Moved(shapes::Cube(1.0f), 100.0f, 0.0f, 0.00005f));
    WidePath path(folder.Write("part.stl", BinaryFile(Fan(3))));
    EXPECT_EQ(1, model.ReadSTLFile(path, 0));
    EXPECT_EQ(15, model.GetFacetsNum());
    EXPECT_EQ(1, model.ReadSTLFile(path, 0));
    EXPECT_EQ(15, model.GetFacetsNum());
    EXPECT_EQ(0x200u, FacetAt(model, 12).m_nFlag & 0x300u);
    ExpectInvariants(model);
}

TEST(STLBinary, ReadingIsAddingTheSameRecords) {
    for (unsigned nSeed = 0; nSeed < 60; ++nSeed) {
        std::vector<Record> const records = RandomRecords(nSeed, 20 + nSeed * 7);
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsAdded(BinaryFile(records), records));
    }
}

// More records than any block that a reader may take at once.
TEST(STLBinary, ReadingLargeFilesIsAddingTheSameRecords) {
    for (unsigned const nSeed : {1000u, 1003u, 1008u}) {
        std::vector<Record> const records = RandomRecords(nSeed, 5000);
        ASSERT_NO_FATAL_FAILURE(ExpectReadAsAdded(BinaryFile(records), records));
    }
    std::vector<Record> records;
    for (shapes::Triangle const& t : shapes::Shuffled(shapes::Gyroid(16), 1)) {
        records.push_back(
            {{0, 0, 0, t[0].x, t[0].y, t[0].z, t[1].x, t[1].y, t[1].z, t[2].x, t[2].y, t[2].z}});
    }
    ASSERT_NO_FATAL_FAILURE(ExpectReadAsAdded(BinaryFile(records), records));
}

TEST(STLBinary, FacetReaderTakesOneRecord) {
    TestFolder const folder;
    std::string const bytes = BinaryFile(Fan(2)).substr(84);
    CSTLModel model;
    FILE* const pFile =
        std::fopen(folder.Write("records", bytes + bytes.substr(0, 49)).string().c_str(), "rb");
    tagFACET facet;
    EXPECT_EQ(1, model.ReadSTLFacetBINARY(pFile, &facet));
    EXPECT_EQ(50, std::ftell(pFile));
    EXPECT_EQ(9.0f, facet.m_fNormal[2]);
    EXPECT_EQ(1.0, facet.m_ptVertex[1].x);
    EXPECT_EQ(2.0, facet.m_ptVertex[2].x);
    EXPECT_EQ(1.0, facet.m_ptVertex[2].z);
    EXPECT_EQ(1, model.ReadSTLFacetBINARY(pFile, &facet));
    EXPECT_EQ(3.0, facet.m_ptVertex[2].x);
    EXPECT_EQ(0, model.ReadSTLFacetBINARY(pFile, &facet));  // one attribute byte is missing
    EXPECT_EQ(0, model.ReadSTLFacetBINARY(pFile, &facet));
    std::fclose(pFile);
}

// A vector counts when its last byte is there; the others stay as they were.
TEST(STLBinary, ARecordCutAtAnyByteGivesTheVectorsThatAreWhole) {
    TestFolder const folder;
    CSTLModel model;
    FileBytes const record = FileBytes().Floats({1, 2, 3, 11, 12, 13, 21, 22, 23, 31, 32, 33}).Number(0, 2);
    for (std::size_t nLength = 0; nLength <= 50; ++nLength) {
        std::filesystem::path const path = folder.Write("record", record.Get().substr(0, nLength));
        FILE* const pFile = std::fopen(path.string().c_str(), "rb");
        ASSERT_NE(nullptr, pFile);
        tagFACET facet;
        for (float& f : facet.m_fNormal) f = -1.0f;
        for (CPoint3D& corner : facet.m_ptVertex) corner = CPoint3D(-1.0, -1.0, -1.0);
        EXPECT_EQ(nLength == 50 ? 1 : 0, model.ReadSTLFacetBINARY(pFile, &facet)) << nLength;
        std::fclose(pFile);
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(nLength >= 12 ? static_cast<float>(k + 1) : -1.0f, facet.m_fNormal[k]) << nLength;
            CPoint3D const& corner = facet.m_ptVertex[k];
            bool const bWhole = nLength >= static_cast<std::size_t>(24 + 12 * k);
            EXPECT_EQ(bWhole ? 10.0 * (k + 1) + 1.0 : -1.0, corner.x) << nLength;
            EXPECT_EQ(bWhole ? 10.0 * (k + 1) + 2.0 : -1.0, corner.y) << nLength;
            EXPECT_EQ(bWhole ? 10.0 * (k + 1) + 3.0 : -1.0, corner.z) << nLength;
        }
    }
}

TEST(STLBinary, AHeaderMayFillTheFieldForItAndNoMore) {
    TestFolder const folder;
    std::string const body = BinaryFile(Fan(3)).substr(80);
    CSTLModel model;
    auto const nMost = static_cast<int>(sizeof model.m_Status.m_szHeader);
    WidePath full(folder.Write("full", std::string(static_cast<std::size_t>(nMost), 'h') + body));
    EXPECT_EQ(1, model.ReadSTLBINARY(full, 0, nMost));
    EXPECT_EQ(3, model.GetFacetsNum());
    EXPECT_EQ('h', model.m_Status.m_szHeader[nMost - 1]);
    CSTLModel other;
    WidePath longer(folder.Write("longer", std::string(static_cast<std::size_t>(nMost) + 1, 'h') + body));
    EXPECT_EQ(0, other.ReadSTLBINARY(longer, 0, nMost + 1));
    EXPECT_EQ(0, other.GetFacetsNum());
}

TEST(STLBinary, StopBeforeTheReadLetsNoFacetIn) {
    TestFolder const folder;
    WidePath path(folder.Write("part.stl", BinaryFile(Fan(3))));
    CSTLModel model;
    model.StopReadModel();
    EXPECT_EQ(0, model.ReadSTLFile(path, 0));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(3, model.m_nTotalFacet);
    model.ResetStopFlag();
    EXPECT_EQ(0, model.ReadSTLFile(path, 0));
    EXPECT_EQ(0, model.GetFacetsNum());
    EXPECT_EQ(3, model.ReadSTLFile(path, 1));
    WidePath empty(folder.Write("none.stl", BinaryFile({}) + "\xFF"));
    EXPECT_EQ(0, model.ReadSTLFile(empty, 0));
}

// Another thread watches the progress and stops the read on its way. Where it comes too late, the read is
// tried again.
TEST(STLBinary, AnotherThreadWatchesAndStopsTheRead) {
    TestFolder const folder;
    shapes::Mesh const mesh = shapes::HeightField(300, 1.0, [](double x, double y) { return x + 2.0 * y; });
    auto const nFacets = static_cast<std::int32_t>(mesh.size());
    WidePath path(folder.Write("field.stl", shapes::ToBinaryStl(mesh)));
    for (int nTry = 0; nTry < 8; ++nTry) {
        CSTLModel model;
        std::atomic<bool> bWatching{false};
        std::atomic<bool> bOver{false};
        bool bInOrder = true;
        std::thread watcher([&] {
            std::int32_t nLast = 0;
            while (nLast < 1000 && !bOver) {
                bWatching = true;
                std::int32_t const nNow = Peek(model.m_Status.m_nFacetNum);
                std::int32_t const nTotal = Peek(model.m_nTotalFacet);
                bInOrder = bInOrder && nNow >= nLast && (nTotal == 0 || nTotal == nFacets);
                bInOrder = bInOrder && model.GetFacetsNum() >= nNow;
                nLast = nNow;
            }
            model.StopReadModel();
        });
        while (!bWatching) std::this_thread::yield();
        int const nResult = model.ReadSTLFile(path, 0);
        bOver = true;
        watcher.join();
        EXPECT_TRUE(bInOrder);
        ExpectInvariants(model);
        if (nResult == 0) {
            EXPECT_GE(model.GetFacetsNum(), 1000);
            EXPECT_LE(model.GetFacetsNum(), nFacets);
            return;
        }
        EXPECT_EQ(nFacets, model.GetFacetsNum());
    }
    GTEST_SKIP() << "every read was over before the other thread stopped it";
}
