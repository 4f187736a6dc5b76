#include <cmath>
#include <cstdlib>

#include "TestFiles.h"
#include "cli/Slices.h"

namespace {

// Layers at heights 1 to nLayers, each with a square, in a box of 10 by 20.
void Fill(CLayerModel& model, int nLayers) {
    for (int n = 1; n <= nLayers; ++n) {
        auto* const pLayer = new CLayer;
        pLayer->m_dZ = n;
        Give(*pLayer, Square(n % 3, 1, 2));
        pLayer->m_Box = CBoundBox2D(CPoint2D(0, 0), CPoint2D(10, 20));
        model.AddTailLayer(pLayer);
    }
}

// The file as the definition of thinning makes it, by hand.
std::string Thinned(CLayerModel& model, int nMode, unsigned nSeed) {
    std::string bytes = Written([&](FILE* pFile) { model.SaveCLIHead(pFile, nMode, 0); });
    std::srand(nSeed);
    for (int n = 1; n <= model.m_LayerList.GetCount(); ++n) {
        if (std::rand() % 3 == 0) bytes += BytesOf(*model.GetLayerAt(n), nMode);
    }
    if (nMode == 1) bytes += "$$GEOMETRYEND\n";
    return bytes;
}

int CountLayers(CLayerModel& model, FILE* pFile) {
    model.m_pFile = pFile;
    EXPECT_EQ(model.ReadCLIHead(), 1);
    int nLayers = 0;
    for (CLayer layer; layer.ReadCLIFile(pFile, static_cast<int>(model.GetFileMode())) == 1;) ++nLayers;
    return nLayers;
}

}  // namespace

TEST(CLIModelFile, SavingThinsByTheDrawsFromTheSeedOfTheBox) {
    TestFolder const folder;
    CLayerModel model;
    Fill(model, 300);
    for (int const nMode : {1, 2, 3}) {
        ASSERT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), nMode), 1);
        // 20 times 10 times 123492
        EXPECT_EQ(ReadBytes(folder / "a.cli"), Thinned(model, nMode, 24698400u));
        ASSERT_EQ(model.SaveCLIFile(WidePath(folder / "b.cli"), nMode), 1);
        EXPECT_EQ(ReadBytes(folder / "a.cli"), ReadBytes(folder / "b.cli"));
    }
}

TEST(CLIModelFile, TheHeaderAnnouncesAllLayersAndAboutAThirdIsThere) {
    TestFolder const folder;
    CLayerModel model;
    Fill(model, 300);
    for (int const nMode : {1, 2, 3}) {
        ASSERT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), nMode), 1);
        OpenBytes const file(ReadBytes(folder / "a.cli"));
        CLayerModel back;
        int const nLayers = CountLayers(back, file);
        EXPECT_EQ(g_nCLILayers, 300);
        EXPECT_GT(nLayers, 60);
        EXPECT_LT(nLayers, 140);
    }
}

TEST(CLIModelFile, SeedsOfLargeOrEmptyBoxesAreCutToTheirLowBitsOr0) {
    TestFolder const folder;
    auto const expectSeed = [&](CBoundBox2D const& box, unsigned nSeed) {
        CLayerModel model;
        Fill(model, 40);
        model.m_BoundBox =
            CBoundBox3D(CPoint3D(box.m_ptMin.x, box.m_ptMin.y, 0), CPoint3D(box.m_ptMax.x, box.m_ptMax.y, 0));
        ASSERT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 2), 1);
        EXPECT_EQ(ReadBytes(folder / "a.cli"), Thinned(model, 2, nSeed));
    };
    // 1000 times 1000 times 123492
    expectSeed(CBoundBox2D(CPoint2D(0, 0), CPoint2D(1000, 1000)),
               static_cast<unsigned>(123492000000ull % 4294967296ull));
    expectSeed(CBoundBox2D(CPoint2D(0, 0), CPoint2D(-1, 1)), static_cast<unsigned>(-123492));
    expectSeed(CBoundBox2D(), 0);
    expectSeed(CBoundBox2D(CPoint2D(0, 0), CPoint2D(NAN, 1)), 0);
}

TEST(CLIModelFile, AModelWithoutLayersGivesTheHeaderAndTheEnd) {
    TestFolder const folder;
    CLayerModel model;
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 1), 1);
    EXPECT_EQ(ReadBytes(folder / "a.cli"),
              "$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/0\n$$HEADEREND\n$$GEOMETRYSTART\n"
              "$$GEOMETRYEND\n");
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 3), 1);
    EXPECT_EQ(ReadBytes(folder / "a.cli"),
              "$$HEADERSTART\n$$COC\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/0\n$$HEADEREND");
}

TEST(CLIModelFile, APathThatCannotBeCreatedGives0) {
    TestFolder const folder;
    CLayerModel model;
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "none/a.cli"), 1), 0);
    EXPECT_EQ(model.SaveCLIFile(nullptr, 1), 0);
}

TEST(CLIModelFile, ABadModeGives0AndLeavesAnEmptyFile) {
    TestFolder const folder;
    CLayerModel model;
    folder.Write("a.cli", "old");
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 4), 0);
    EXPECT_EQ(ReadBytes(folder / "a.cli"), "");
}

TEST(CLIModelFile, AMissingLayerGives0OnlyWhereItIsToBeWritten) {
    TestFolder const folder;
    CLayerModel model;
    Fill(model, 1);
    std::srand(24698400u);
    int nFirstKept = 1;
    while (std::rand() % 3 != 0) ++nFirstKept;
    for (int n = 1; n < nFirstKept; ++n) model.AddHeadLayer(nullptr);
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 1), 1);
    model.AddTailLayer(nullptr);
    for (int n = 0; n < 30; ++n) model.AddTailLayer(nullptr);
    EXPECT_EQ(model.SaveCLIFile(WidePath(folder / "a.cli"), 1), 0);
}

TEST(CLIModelFile, OnDiskTheSameLayersAreSavedAndABadOffsetGives0) {
    TestFolder const folder;
    CLayerModel inMemory;
    Fill(inMemory, 30);
    OpenBytes const file;
    inMemory.SaveCLIHead(file, 2, 0);
    CLayerModel onDisk;
    for (int n = 1; n <= 30; ++n) {
        onDisk.m_OffsetList.AddTail(static_cast<int>(file.Position()));
        inMemory.SaveLayer(inMemory.GetLayerAt(n), file, 2);
    }
    onDisk.m_pFile = file;
    ASSERT_EQ(onDisk.ReadCLIHead(), 1);
    onDisk.m_bInMemory = 0;
    onDisk.AddTailLayer(new CLayer);
    onDisk.m_BoundBox = inMemory.m_BoundBox;
    ASSERT_EQ(onDisk.SaveCLIFile(WidePath(folder / "a.cli"), 2), 1);
    EXPECT_EQ(ReadBytes(folder / "a.cli"), Thinned(inMemory, 2, 24698400u));
    for (int n = 0; n < 30; ++n) onDisk.m_OffsetList.AddTail(1 << 30);
    EXPECT_EQ(onDisk.SaveCLIFile(WidePath(folder / "a.cli"), 2), 0);
    onDisk.ReleaseLayerList();
    EXPECT_EQ(onDisk.SaveCLIFile(WidePath(folder / "a.cli"), 2), 0);
}

TEST(CLIModelFile, SavingALayerWritesItWholeInModes1To3) {
    CLayerModel model;
    CLayer layer;
    Give(layer, Square(0, 0, 1));
    for (int const nMode : {1, 2, 3}) {
        std::srand(5);
        std::string const bytes = BytesOf(layer, nMode);
        std::srand(5);
        EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(model.SaveLayer(&layer, pFile, nMode), 1); }), bytes);
    }
    EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(model.SaveLayer(&layer, pFile, 0), 1); }), "");
    EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(model.SaveLayer(nullptr, pFile, 1), 0); }), "");
}

TEST(CLIModelFile, ReadingALayerSetsItsUnitsAndBuildsItsLoopList) {
    OpenBytes const file("xx$$LAYER/4\n$$POLYLINE/1 2 1 4 4\n");
    CLayerModel model;
    model.m_pFile = file;
    model.m_dUnits = 0.25;
    CLayer layer;
    EXPECT_EQ(model.ReadLayer(&layer, 2), 1);
    EXPECT_EQ(layer.m_dUnits, 0.25);
    EXPECT_EQ(layer.m_dZ, 1.0);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 1);
    EXPECT_EQ(model.m_pFile, static_cast<FILE*>(file));
}

TEST(CLIModelFile, ReadingALayerInAnotherModeGives0AndBuildsTheLoopListAllTheSame) {
    OpenBytes const file("$$LAYER/4\n");
    CLayerModel model;
    model.m_pFile = file;
    CLayer layer;
    Give(layer, Square(0, 0, 1));
    for (unsigned const nMode : {0u, 4u, 0x80000001u}) {
        model.m_nFileMode = nMode;
        layer.m_LoopList.RemoveAll();
        layer.m_dUnits = 9.0;
        EXPECT_EQ(model.ReadLayer(&layer, 0), 0);
        EXPECT_EQ(layer.m_LoopList.GetCount(), 1);
        EXPECT_EQ(layer.m_dUnits, 1.0);
    }
    EXPECT_EQ(model.ReadLayer(nullptr, 0), 0);
}

TEST(CLIModelFile, ThePrivateReadersNeitherSetUnitsNorBuildTheLoopList) {
    CLayer source;
    source.m_dZ = 4.0;
    Give(source, Square(0, 0, 1));
    int nMode = 1;
    for (auto const read :
         {&CLayerModel::ReadLayerASCII, &CLayerModel::ReadLayerBINARY, &CLayerModel::ReadLayerCOC}) {
        OpenBytes const file(Join({"x", BytesOf(source, nMode)}));
        CLayerModel model;
        model.m_pFile = file;
        model.m_dUnits = 0.5;
        CLayer layer;
        EXPECT_EQ((model.*read)(&layer, 1), 1);
        EXPECT_EQ(layer.m_dUnits, 1.0);
        EXPECT_EQ(layer.m_dZ, 4.0);
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
        EXPECT_EQ(layer.m_LoopList.GetCount(), nMode == 1 ? 0 : 1);  // binary: for the box
        ++nMode;
    }
}
