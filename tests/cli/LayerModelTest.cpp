#include "cli/LayerModel.h"

#include <type_traits>

#include "FieldWalk.h"
#include "cli/Slices.h"

namespace {

constexpr double kEmpty = 1.00000002004087734272e20;

CLayer* LayerAt(double dZ) {
    auto* const pLayer = new CLayer;
    pLayer->m_dZ = dZ;
    return pLayer;
}

CLayer* BoxedLayer(double dZ, Place min, Place max) {
    CLayer* const pLayer = LayerAt(dZ);
    pLayer->m_Box = CBoundBox2D(CPoint2D(min.first, min.second), CPoint2D(max.first, max.second));
    return pLayer;
}

std::vector<double> Heights(CLayerModel const& model) {
    std::vector<double> heights;
    for (auto const* p = model.m_LayerList.m_pNodeHead; p != nullptr; p = p->pNext) {
        heights.push_back(static_cast<CLayer*>(p->data)->m_dZ);
    }
    return heights;
}

using Values = std::vector<double>;

}  // namespace

TEST(LayerModel, FieldsStandInOrder) {
    CLayerModel const model;
    FieldWalk(model, FieldWalk::kVirtual)
        .Then("m_LayerList", model.m_LayerList)
        .Then("m_OffsetList", model.m_OffsetList)
        .Then("m_pFile", model.m_pFile)
        .Then("m_dUnits", model.m_dUnits)
        .Then("m_nFileMode", model.m_nFileMode)
        .Then("m_szFileName", model.m_szFileName)
        .Then("m_bInMemory", model.m_bInMemory)
        .Then("m_nLayerLimit", model.m_nLayerLimit)
        .Then("m_BoundBox", model.m_BoundBox)
        .Then("m_nVersion", model.m_nVersion)
        .Then("m_nNozzle", model.m_nNozzle)
        .Then("m_nUser1", model.m_nUser1)
        .Then("m_nUser2", model.m_nUser2)
        .Then("m_nUser3", model.m_nUser3)
        .End();
    EXPECT_EQ(sizeof model.m_szFileName, 260u);
    EXPECT_TRUE((std::is_same_v<decltype(model.m_nUser1), std::int64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(model.m_OffsetList), XR_CList<int, int>>));
    EXPECT_TRUE(std::has_virtual_destructor_v<CLayerModel>);
}

TEST(LayerModel, ANewModelHasItsDefaults) {
    CLayerModel const model;
    EXPECT_EQ(model.m_LayerList.GetCount(), 0);
    EXPECT_EQ(model.m_LayerList.m_nBlockSize, 10);
    EXPECT_EQ(model.m_OffsetList.m_nBlockSize, 10);
    EXPECT_EQ(model.m_pFile, nullptr);
    EXPECT_EQ(model.m_dUnits, 1.0);
    EXPECT_EQ(model.m_nFileMode, 1u);
    EXPECT_EQ(model.m_bInMemory, 1);
    EXPECT_EQ(model.m_nLayerLimit, 10000000);
    EXPECT_EQ(model.m_BoundBox.m_ptMin.z, kEmpty);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.x, -kEmpty);
    EXPECT_EQ(model.m_nVersion, 100);
    EXPECT_EQ(model.m_nNozzle, 0);
    EXPECT_EQ(model.m_nUser1, 0);
    EXPECT_EQ(model.m_nUser2, 0);
    EXPECT_EQ(model.m_nUser3, 0);
}

TEST(LayerModel, CopiesAreShallowAndTakeEveryField) {
    CLayerModel model;
    model.AddTailLayer(BoxedLayer(2.0, {1, 2}, {3, 4}));
    model.m_OffsetList.AddTail(77);
    model.m_dUnits = 0.5;
    model.m_nFileMode = 3;
    model.m_szFileName[259] = 'x';
    model.m_bInMemory = 5;
    model.m_nLayerLimit = 6;
    model.m_nVersion = 7;
    model.m_nNozzle = 8;
    model.m_nUser1 = 9;
    model.m_nUser2 = 10;
    model.m_nUser3 = std::int64_t{1} << 40;
    CLayerModel copy(model);
    CLayerModel assigned;
    assigned = model;
    for (CLayerModel* const pCopy : {&copy, &assigned}) {
        EXPECT_EQ(pCopy->m_LayerList.m_pNodeHead, model.m_LayerList.m_pNodeHead);
        EXPECT_EQ(pCopy->m_OffsetList.m_pBlocks, model.m_OffsetList.m_pBlocks);
        EXPECT_EQ(pCopy->m_dUnits, 0.5);
        EXPECT_EQ(pCopy->m_nFileMode, 3u);
        EXPECT_EQ(pCopy->m_szFileName[259], 'x');
        EXPECT_EQ(pCopy->m_bInMemory, 5);
        EXPECT_EQ(pCopy->m_nLayerLimit, 6);
        EXPECT_EQ(pCopy->m_BoundBox.m_ptMax.y, 4.0);
        EXPECT_EQ(pCopy->m_nVersion, 7);
        EXPECT_EQ(pCopy->m_nNozzle, 8);
        EXPECT_EQ(pCopy->m_nUser1, 9);
        EXPECT_EQ(pCopy->m_nUser2, 10);
        EXPECT_EQ(pCopy->m_nUser3, std::int64_t{1} << 40);
        // Only one of the models may release what they share.
        pCopy->m_LayerList = XR_CList<void*, void*>(10);
        pCopy->m_OffsetList = XR_CList<int, int>(10);
    }
}

TEST(LayerModel, LayersStandWhereTheyAreAdded) {
    CLayerModel model;
    XR__POSITION* const two = model.AddTailLayer(LayerAt(2.0));
    model.AddTailLayer(LayerAt(4.0));
    XR__POSITION* const one = model.AddHeadLayer(LayerAt(1.0));
    model.InsertLayerAfter(two, LayerAt(3.0));
    model.InsertLayerBefore(one, LayerAt(0.0));
    EXPECT_EQ(Heights(model), (Values{0.0, 1.0, 2.0, 3.0, 4.0}));
    EXPECT_EQ(model.GetLayerAt(two)->m_dZ, 2.0);
    EXPECT_EQ(model.GetLayerCount(), 5);
}

TEST(LayerModel, ANullPositionMeansTheHeadBeforeAndTheTailBehind) {
    CLayerModel model;
    model.AddTailLayer(LayerAt(1.0));
    XR__POSITION* const head = model.InsertLayerBefore(nullptr, LayerAt(0.0));
    XR__POSITION* const tail = model.InsertLayerAfter(nullptr, LayerAt(2.0));
    EXPECT_EQ(head, model.GetHeadLayerPos());
    EXPECT_EQ(tail, model.GetTailLayerPos());
    EXPECT_EQ(Heights(model), (Values{0.0, 1.0, 2.0}));
}

TEST(LayerModel, EveryWayOfAddingGrowsTheBoxByTheStoredBox) {
    CLayerModel model;
    model.AddTailLayer(BoxedLayer(5.0, {0, 0}, {1, 1}));
    model.AddHeadLayer(BoxedLayer(4.0, {-1, 0}, {1, 1}));
    model.InsertLayerBefore(nullptr, BoxedLayer(3.0, {0, -2}, {1, 1}));
    model.InsertLayerAfter(nullptr, BoxedLayer(9.0, {0, 0}, {7, 8}));
    EXPECT_EQ(model.m_BoundBox.m_ptMin.x, -1.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMin.y, -2.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMin.z, 3.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.x, 7.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.y, 8.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.z, 9.0);
}

TEST(LayerModel, TheCornersOfALayerWithTheEmptyBoxAreTakenAsPoints) {
    CLayerModel model;
    CLayer* const pLayer = LayerAt(5.0);
    Give(*pLayer, Square(0, 0, 10));  // its loops are not looked at
    model.AddTailLayer(pLayer);
    EXPECT_EQ(model.m_BoundBox.m_ptMin.x, -kEmpty);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.x, kEmpty);
    EXPECT_EQ(model.m_BoundBox.m_ptMin.z, 5.0);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.z, 5.0);
}

TEST(LayerModel, LayersAreNumberedFromOne) {
    CLayerModel model;
    for (double const z : {1.0, 2.0, 3.0}) model.AddTailLayer(LayerAt(z));
    EXPECT_EQ(model.GetLayerAt(1)->m_dZ, 1.0);
    EXPECT_EQ(model.GetLayerAt(3)->m_dZ, 3.0);
    EXPECT_EQ(model.GetLayerAt(0), nullptr);
    EXPECT_EQ(model.GetLayerAt(4), nullptr);
    EXPECT_EQ(model.GetLayerAt(-2147483647 - 1), nullptr);
    EXPECT_EQ(CLayerModel().GetLayerAt(1), nullptr);
}

TEST(LayerModel, WalksGoToNullPastBothEnds) {
    CLayerModel model;
    for (double const z : {1.0, 2.0}) model.AddTailLayer(LayerAt(z));
    XR__POSITION* position = model.GetHeadLayerPos();
    EXPECT_EQ(model.GetNextLayer(position)->m_dZ, 1.0);
    EXPECT_EQ(model.GetNextLayer(position)->m_dZ, 2.0);
    EXPECT_EQ(position, nullptr);
    EXPECT_EQ(model.GetNextLayer(position), nullptr);
    position = model.GetTailLayerPos();
    EXPECT_EQ(model.GetPrevLayer(position)->m_dZ, 2.0);
    EXPECT_EQ(model.GetPrevLayer(position)->m_dZ, 1.0);
    EXPECT_EQ(position, nullptr);
    EXPECT_EQ(model.GetPrevLayer(position), nullptr);
}

TEST(LayerModel, SettingALayerReleasesNothingAndKeepsTheBox) {
    CLayerModel model;
    CLayer* const pFirst = BoxedLayer(1.0, {0, 0}, {1, 1});
    XR__POSITION* const position = model.AddTailLayer(pFirst);
    model.SetLayerAt(position, BoxedLayer(9.0, {0, 0}, {50, 50}));
    EXPECT_EQ(Heights(model), (Values{9.0}));
    EXPECT_EQ(model.m_BoundBox.m_ptMax.x, 1.0);
    EXPECT_EQ(pFirst->m_dZ, 1.0);
    delete pFirst;
}

TEST(LayerModel, RemovingAnEndDeletesTheLayerAndGivesNull) {
    CLayerModel model;
    for (double const z : {1.0, 2.0, 3.0}) model.AddTailLayer(LayerAt(z));
    EXPECT_EQ(model.RemoveHeadLayer(), nullptr);
    EXPECT_EQ(Heights(model), (Values{2.0, 3.0}));
    EXPECT_EQ(model.RemoveTailLayer(), nullptr);
    EXPECT_EQ(Heights(model), (Values{2.0}));
}

TEST(LayerModel, RemovingAnEndOfAnEmptyModelDoesNothing) {
    CLayerModel model;
    EXPECT_EQ(model.RemoveHeadLayer(), nullptr);
    EXPECT_EQ(model.RemoveTailLayer(), nullptr);
    EXPECT_EQ(model.GetLayerCount(), 0);
}

TEST(LayerModel, RemovingAtAPositionLeavesTheLayerToTheCaller) {
    CLayerModel model;
    XR__POSITION* const position = model.AddTailLayer(LayerAt(1.0));
    model.AddTailLayer(LayerAt(2.0));
    CLayer* const pLayer = model.GetLayerAt(position);
    model.RemoveLayerAt(position);
    EXPECT_EQ(Heights(model), (Values{2.0}));
    EXPECT_EQ(pLayer->m_dZ, 1.0);
    delete pLayer;
}

TEST(LayerModel, ReleasingTheListKeepsBoxAndOffsets) {
    CLayerModel model;
    model.AddTailLayer(BoxedLayer(1.0, {0, 0}, {1, 1}));
    model.AddTailLayer(nullptr);
    model.m_OffsetList.AddTail(5);
    model.ReleaseLayerList();
    EXPECT_EQ(model.m_LayerList.m_pBlocks, nullptr);
    EXPECT_EQ(model.m_OffsetList.GetCount(), 1);
    EXPECT_EQ(model.m_BoundBox.m_ptMax.x, 1.0);
}

TEST(LayerModel, ReleasingAllEmptiesBothListsAndTheBox) {
    for (auto const release : {&CLayerModel::ReleaseAllLayer, &CLayerModel::RemoveAllLayer}) {
        CLayerModel model;
        model.AddTailLayer(BoxedLayer(1.0, {0, 0}, {1, 1}));
        model.m_OffsetList.AddTail(5);
        model.m_nUser1 = 3;
        (model.*release)();
        EXPECT_EQ(model.GetLayerCount(), 0);
        EXPECT_EQ(model.m_OffsetList.m_pBlocks, nullptr);
        EXPECT_EQ(model.m_BoundBox.m_ptMin.x, kEmpty);
        EXPECT_EQ(model.m_BoundBox.m_ptMax.z, -kEmpty);
        EXPECT_EQ(model.m_nUser1, 3);
    }
}

TEST(LayerModel, SupportStandsInLayersOfEvenNumbersAndHasIdsFrom1000) {
    CLayerModel model;
    for (int n = 1; n <= 3; ++n) {
        CLayer* const pLayer = LayerAt(n);
        for (int const nID : {999, 1000, 5, 1001, -1000}) Give(*pLayer, Hatch({{{0, 0}, {1, 0}}}, nID));
        model.AddTailLayer(pLayer);
    }
    XR_CList<void*, void*> found(10);
    int nOther = 0;
    found.AddTail(&nOther);
    EXPECT_EQ(model.GetSupportAtLayer(3, &found), 0);
    EXPECT_EQ(model.GetSupportAtLayer(1, &found), 0);
    EXPECT_EQ(model.GetSupportAtLayer(-3, &found), 0);
    EXPECT_EQ(model.GetSupportAtLayer(0, &found), 0);
    EXPECT_EQ(model.GetSupportAtLayer(4, &found), 0);
    EXPECT_EQ(found.GetCount(), 1);
    EXPECT_EQ(model.GetSupportAtLayer(2, &found), 2);
    std::vector<CHatch*> const hatches = HatchesOf(*model.GetLayerAt(2));
    EXPECT_EQ(found.GetAt(found.FindIndex(1)), hatches[1]);
    EXPECT_EQ(found.GetAt(found.FindIndex(2)), hatches[3]);
}

namespace {

// A model on disk with the layers at heights 1, 2 and 3, and a buffer layer.
void MakeOnDisk(CLayerModel& model, OpenBytes const& file) {
    model.m_pFile = file;
    EXPECT_EQ(model.ReadCLIHead(), 1);
    CLayer probe;
    for (long nOffset = file.Position(); probe.ReadCLIFile(file, 1) == 1; nOffset = file.Position()) {
        model.m_OffsetList.AddTail(static_cast<int>(nOffset));
    }
    model.m_bInMemory = 0;
    model.AddTailLayer(new CLayer);
}

constexpr char const* kThreeLayers =
    "$$HEADERSTART\n$$ASCII\n$$UNITS/0.5\n$$HEADEREND\n$$GEOMETRYSTART\n"
    "$$LAYER/1\n$$POLYLINE/1 1 4 0 0 2 0 2 2 0 0\n$$HATCHES/1000 1 0 0 4 4\n"
    "$$LAYER/2\n$$HATCHES/1000 1 0 0 8 8\n$$HATCHES/1001 1 0 0 8 8\n"
    "$$LAYER/3\n"
    "$$GEOMETRYEND\n";

}  // namespace

TEST(LayerModel, OnDiskEachAccessFillsTheBufferLayer) {
    OpenBytes const file(kThreeLayers);
    CLayerModel model;
    MakeOnDisk(model, file);
    EXPECT_EQ(model.GetLayerCount(), 3);
    auto* const pBuffer = static_cast<CLayer*>(model.m_LayerList.GetHead());
    EXPECT_EQ(model.GetLayerAt(2), pBuffer);
    EXPECT_EQ(pBuffer->m_dZ, 1.0);  // in units of a half
    EXPECT_EQ(pBuffer->m_HatchList.GetCount(), 2);
    EXPECT_EQ(model.GetLayerAt(1), pBuffer);
    EXPECT_EQ(pBuffer->m_dZ, 0.5);
    EXPECT_EQ(pBuffer->m_dUnits, 0.5);
    EXPECT_EQ(pBuffer->m_HatchList.GetCount(), 1);
    EXPECT_EQ(pBuffer->m_LoopList.GetCount(), 1);
    EXPECT_EQ(model.GetLayerAt(4), nullptr);
    EXPECT_EQ(model.GetLayerAt(0), nullptr);
    EXPECT_EQ(model.GetLayerAt(model.GetTailLayerPos())->m_dZ, 1.5);
}

TEST(LayerModel, OnDiskWalksFollowTheOffsets) {
    OpenBytes const file(kThreeLayers);
    CLayerModel model;
    MakeOnDisk(model, file);
    Values heights;
    for (XR__POSITION* position = model.GetHeadLayerPos(); position != nullptr;) {
        heights.push_back(model.GetNextLayer(position)->m_dZ);
    }
    for (XR__POSITION* position = model.GetTailLayerPos(); position != nullptr;) {
        heights.push_back(model.GetPrevLayer(position)->m_dZ);
    }
    EXPECT_EQ(heights, (Values{0.5, 1.0, 1.5, 1.5, 1.0, 0.5}));
}

TEST(LayerModel, OnDiskSupportIsReadFromTheFile) {
    OpenBytes const file(kThreeLayers);
    CLayerModel model;
    MakeOnDisk(model, file);
    XR_CList<void*, void*> found(10);
    EXPECT_EQ(model.GetSupportAtLayer(2, &found), 2);
}

TEST(LayerModel, OnDiskALayerThatCannotBeReadIsNull) {
    OpenBytes const file(kThreeLayers);
    CLayerModel model;
    MakeOnDisk(model, file);
    model.m_OffsetList.AddTail(static_cast<int>(std::string(kThreeLayers).size()) - 1);
    EXPECT_EQ(model.GetLayerAt(4), nullptr);
    model.m_OffsetList.AddTail(-1);  // far behind the end
    EXPECT_EQ(model.GetLayerAt(5), nullptr);
    EXPECT_NE(model.GetLayerAt(1), nullptr);
    model.m_pFile = nullptr;
    EXPECT_EQ(model.GetLayerAt(1), nullptr);
    model.ReleaseLayerList();  // no buffer layer
    EXPECT_EQ(model.GetLayerAt(1), nullptr);
}

TEST(LayerModel, OnDiskALayerComesInEveryMode) {
    for (int const nMode : {1, 2, 3}) {
        CLayer layer;
        layer.m_dZ = 2.5;
        Give(layer, Hatch({{{0, 0}, {1, 1}}}, 1234));
        OpenBytes const file(BytesOf(layer, nMode));
        CLayerModel model;
        model.m_pFile = file;
        model.m_nFileMode = static_cast<unsigned>(nMode);
        model.m_OffsetList.AddTail(0);
        model.m_bInMemory = 0;
        model.AddTailLayer(new CLayer);
        CLayer const* const pLayer = model.GetLayerAt(1);
        ASSERT_NE(pLayer, nullptr) << nMode;
        EXPECT_EQ(pLayer->m_dZ, 2.5);
        ASSERT_EQ(pLayer->m_HatchList.GetCount(), 1);
        EXPECT_EQ(HatchesOf(*pLayer)[0]->m_nID, 1234);
    }
}

TEST(LayerModel, OnDiskWithoutABufferLayerInTheListThereIsNoLayer) {
    OpenBytes const file(kThreeLayers);
    CLayerModel model;
    MakeOnDisk(model, file);
    CLayer* const pBuffer = static_cast<CLayer*>(model.m_LayerList.GetHead());
    model.SetLayerAt(model.m_LayerList.GetHeadPosition(), nullptr);
    EXPECT_EQ(model.GetLayerAt(1), nullptr);
    model.SetLayerAt(model.m_LayerList.GetHeadPosition(), pBuffer);
    EXPECT_EQ(model.GetLayerAt(1), pBuffer);
}
