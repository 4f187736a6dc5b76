#include <algorithm>
#include <clocale>
#include <memory>

#include "cli/Slices.h"

namespace {

struct ReadResult {
    int nResult;
    long nPosition;
};

ReadResult Read(CLayer& layer, std::string_view bytes) {
    OpenBytes const file(bytes);
    int const nResult = layer.ReadCLIFile(file, 1);
    return {nResult, file.Position()};
}

tagLoopTreeNode& LoopNumber(CLayer const& layer, std::size_t n) {
    return *LoopsOf(layer.m_RawLoopList).at(n);
}

}  // namespace

// ---- writing

TEST(TextLayer, ALayerIsWrittenToTheByte) {
    CLayer layer;
    layer.m_dZ = 12.3456;
    tagLoopTreeNode* const pLoop = Give(layer, ClosedLoop({{0, 0}, {1.5, 0}, {1, -1}}));
    pLoop->m_nID = 7;
    pLoop->m_nDirection = LOOPDIRECT_CCW;
    Give(layer, Hatch({{{0, 0.125}, {2, 3}}, {{4, 5}, {6.0007, -0.0001}}}, 1000));
    EXPECT_EQ(BytesOf(layer, 1),
              "$$LAYER/12.35 \n"
              "$$POLYLINE/7 1 4  0.000 0.000 1.500 0.000 1.000 -1.000 0.000 0.000\n"
              "$$HATCHES/1000 2     0.000 0.125 2.000 3.000 4.000 5.000 6.001 -0.000\n");
}

TEST(TextLayer, AnOpenPathIsWrittenWithDirection2) {
    CLayer layer;
    layer.m_dZ = 0.0;
    Give(layer, OpenPath({{0, 0}, {1, 0}}))->m_nDirection = LOOPDIRECT_CW;
    EXPECT_EQ(BytesOf(layer, 1), "$$LAYER/0.00 \n$$POLYLINE/1 2 2  0.000 0.000 1.000 0.000\n");
}

TEST(TextLayer, ParentsAreWrittenBeforeTheirChildrenInOrder) {
    CLayer layer;
    for (int const n : {1, 2, 3, 4}) Give(layer, Square(n, n, 20.0 - 2 * n))->m_nID = n;
    Give(layer, Square(100, 0, 1))->m_nID = 5;
    layer.MakeTopology(1);
    std::string const bytes = BytesOf(layer, 1);
    std::vector<std::size_t> places;
    for (char const* const pWord : {"/1 1", "/2 0", "/3 1", "/4 0", "/5 1"})
        places.push_back(bytes.find(pWord));
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
    EXPECT_NE(places.back(), std::string::npos);
}

TEST(TextLayer, ALoopWithoutPointsIsLeftOutWithItsChildren) {
    tagLoopTreeNode root(0);
    auto* const pEmpty = new tagLoopTreeNode(1);
    pEmpty->m_ChildList.AddTail(Square(0, 0, 1).release());
    root.m_ChildList.AddTail(pEmpty);
    root.m_ChildList.AddTail(static_cast<void*>(nullptr));
    root.m_ChildList.AddTail(OpenPath({{5, 5}}).release());
    auto const written = [&root] {
        return Written([&root](FILE* pFile) { EXPECT_EQ(root.WriteCLILoop(pFile, 1), 1); });
    };
    EXPECT_EQ(written(), "");  // no list
    root.m_pPointList = new PointList(10);
    EXPECT_EQ(written(), "");
    CPoint2D point(1, 2);
    root.m_pPointList->AddTail(point);
    EXPECT_EQ(written(), "$$POLYLINE/1 2 1  1.000 2.000\n$$POLYLINE/1 2 1  5.000 5.000\n");
}

TEST(TextLayer, ALoopIsWrittenInMode1Only) {
    LoopPtr const pLoop = Square(0, 0, 1);
    for (int const nMode : {0, 2, 3}) {
        EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(pLoop->WriteCLILoop(pFile, nMode), 1); }), "");
    }
}

TEST(TextLayer, ATreeOfAnyDepthIsWritten) {
    auto pRoot = OpenPath({{0, 0}});
    for (int i = 0; i < 200000; ++i) {
        auto pParent = OpenPath({{0, 0}});
        pParent->m_ChildList.AddTail(pRoot.release());
        pRoot = std::move(pParent);
    }
    std::string const bytes = Written([&](FILE* pFile) { pRoot->WriteCLILoop(pFile, 1); });
    EXPECT_EQ(bytes.size(), 200001 * std::string_view("$$POLYLINE/1 2 1  0.000 0.000\n").size());
}

TEST(TextLayer, AHatchWithoutEdgesIsNotWritten) {
    CLayer layer;
    layer.m_dZ = 1.0;
    Give(layer, Hatch({}));
    EXPECT_EQ(BytesOf(layer, 1), "$$LAYER/1.00 \n");
}

TEST(TextLayer, AnotherModeWritesNothingAndGives1) {
    CLayer layer;
    for (int const nMode : {0, 4, -1}) {
        EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(layer.WriteCLIFile(pFile, nMode), 1); }), "");
    }
    EXPECT_EQ(layer.WriteCLIFile(nullptr, 1), 1);
}

TEST(TextLayer, WritingDoesNotBuildTheLoopList) {
    CLayer layer;
    Give(layer, Square(0, 0, 1));
    BytesOf(layer, 1);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 0);
}

TEST(TextLayer, TheLongestNumbersAreWritten) {
    CLayer layer;
    layer.m_dZ = -1e308;
    Give(layer, Hatch({{{-1e308, -1e308}, {-1e308, -1e308}}}));
    EXPECT_EQ(BytesOf(layer, 1).size(), 8 + 1 + 309 + 3 + 2 + 10 + 2 + 5 + 4 * (1 + 1 + 309 + 4) + 1u);
}

// ---- reading

TEST(TextLayer, ALoopIsReadWithAllItsFields) {
    CLayer layer;
    auto const [nResult, nPosition] =
        Read(layer, "$$LAYER/2.5\n$$POLYLINE/7,1,2,0 0 1.5 0, 1 1\n");  // the count is not looked at
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, 44);
    EXPECT_EQ(layer.m_dZ, 2.5);
    tagLoopTreeNode const& loop = LoopNumber(layer, 0);
    EXPECT_EQ(loop.m_nID, 7);
    EXPECT_EQ(loop.m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(loop.m_bClosed, 1);
    EXPECT_EQ(loop.m_dZ, 2.5);
    EXPECT_EQ(loop.m_nLevel, 0);
    EXPECT_EQ(loop.m_pPointList->m_nBlockSize, 10);
    EXPECT_EQ(PlacesOf(loop), (Places{{0, 0}, {1.5, 0}, {0, 0}}));  // the tail is closed upon the head
    EXPECT_EQ(loop.m_Box.m_ptMax.x, 1.5);
    EXPECT_EQ(loop.m_Box.m_ptMax.y, 1.0);  // of the points as they came
    EXPECT_EQ(layer.m_Box.m_ptMax.y, 1.0);
}

TEST(TextLayer, ThePairsGiveThePointsWhateverTheCount) {
    for (char const* const pCount : {"2", "0", "-5", "2147483647", "99999999999"}) {
        CLayer layer;
        Read(layer, Join({"$$LAYER/1\n$$POLYLINE/7 1 ", pCount, " 0 0 1 0 1 1\n"}));
        tagLoopTreeNode const& loop = LoopNumber(layer, 0);
        EXPECT_EQ(loop.m_nID, 7);
        EXPECT_EQ(loop.m_nDirection, LOOPDIRECT_CCW);
        EXPECT_EQ(loop.m_bClosed, 1);
        EXPECT_EQ(loop.m_pPointList->GetCount(), 3);
    }
}

TEST(TextLayer, DirectionsOtherThan0And1AreStoredAs2AndNegativeOnesAreClosed) {
    CLayer layer;
    Read(layer,
         "$$LAYER/1\n$$POLYLINE/1 0 1 5 5\n$$POLYLINE/1 1 1 5 5\n$$POLYLINE/1 2 1 5 5\n"
         "$$POLYLINE/1 5 1 5 5\n$$POLYLINE/1 -1 1 5 5\n");
    std::vector<std::pair<int, int>> found;
    for (tagLoopTreeNode const* const p : LoopsOf(layer.m_RawLoopList))
        found.emplace_back(p->m_nDirection, p->m_bClosed);
    EXPECT_EQ(found, (std::vector<std::pair<int, int>>{{0, 1}, {1, 1}, {2, 0}, {2, 0}, {2, 1}}));
}

TEST(TextLayer, AnOddNumberAtTheEndIsLost) {
    CLayer layer;
    Read(layer, "$$LAYER/1\n$$POLYLINE/1 2 2 0 0 1 0 9\n$$HATCHES/1 1 0 0 1 1 2 2 3\n");
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{0, 0}, {1, 0}}));
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{0, 0}, {1, 1}}}));
    EXPECT_EQ(layer.m_Box.m_ptMax.x, 1.0);
}

TEST(TextLayer, ALineEndBehindABlankCountsAs0) {
    CLayer layer;
    Read(layer, "$$LAYER/1\n$$POLYLINE/1 2 2 0 0 1 \n$$POLYLINE/1 1 \n");
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{0, 0}, {1, 0}}));
    EXPECT_EQ(LoopNumber(layer, 1).m_pPointList->GetCount(), 0);
}

TEST(TextLayer, AListThatCameInALargeBlockGrowsAsAnyOther) {
    std::string edges;
    for (int i = 0; i < 30; ++i) edges += " 1 2 3 4";
    CLayer layer;
    Read(layer, "$$LAYER/1\n$$POLYLINE/1 2 60" + edges + "\n$$HATCHES/1 30" + edges + "\n");
    EXPECT_EQ(LoopNumber(layer, 0).m_pPointList->GetCount(), 60);
    EXPECT_EQ(LoopNumber(layer, 0).m_pPointList->m_nBlockSize, 10);
    EXPECT_EQ(HatchesOf(layer)[0]->m_EdgeList.GetCount(), 30);
    EXPECT_EQ(HatchesOf(layer)[0]->m_EdgeList.m_nBlockSize, 10);
}

TEST(TextLayer, AWordIsLookedForInTheFirstTwentyColumns) {
    CLayer layer;
    EXPECT_EQ(Read(layer, std::string(15, 'x') + "layer/5\n").nResult, 1);
    EXPECT_EQ(layer.m_dZ, 5.0);
    EXPECT_EQ(Read(layer, std::string(16, 'x') + "layer/6\n").nResult, 0);
    EXPECT_EQ(layer.m_dZ, 5.0);
}

TEST(TextLayer, WritingAnswersOneAndWithoutAFileDoesNothing) {
    CLayer layer;
    LoopPtr const pLoop = Square(0, 0, 1);
    EXPECT_EQ(layer.WriteCLIFile(nullptr, 1), 1);
    EXPECT_EQ(pLoop->WriteCLILoop(nullptr, 1), 1);
    OpenBytes const file;
    for (int const nMode : {0, 4, -1}) {
        EXPECT_EQ(layer.WriteCLIFile(file, nMode), 1);
        EXPECT_EQ(pLoop->WriteCLILoop(file, nMode), 1);
    }
    EXPECT_EQ(file.All(), "");
    for (int const nMode : {1, 2, 3}) EXPECT_EQ(layer.WriteCLIFile(file, nMode), 1);
    EXPECT_EQ(pLoop->WriteCLILoop(file, 1), 1);
}

TEST(TextLayer, ACommandWithoutASlashHasNoNumbers) {
    CLayer layer;
    Read(layer, "$$LAYER/1\n$$POLYLINE 1 2 2 0 0 1 1\n$$HATCHES 1 1 0 0 1 1\n");
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 0);
    Read(layer, "$$LAYER/2\n//$$POLYLINE/7 2 2 0 0 1 1\n");
    ASSERT_EQ(layer.m_RawLoopList.GetCount(), 1) << "slashes in front of the line end no command";
    EXPECT_EQ(LoopNumber(layer, 0).m_nID, 7);
}

TEST(TextLayer, HatchesAreReadAndGrowTheBox) {
    CLayer layer;
    layer.m_dUnits = 0.5;
    EXPECT_EQ(Read(layer, "$$LAYER/3\n$$HATCHES/1001 7     0 0 2 4 2 4 -6 8\n").nResult, 1);
    ASSERT_EQ(layer.m_HatchList.GetCount(), 1);
    CHatch const& hatch = *HatchesOf(layer)[0];
    EXPECT_EQ(hatch.m_nID, 1001);
    EXPECT_EQ(hatch.m_nFlag, 0);
    EXPECT_EQ(hatch.m_EdgeList.m_nBlockSize, 10);
    EXPECT_EQ(SegmentsOf(hatch), (Segments{{{0, 0}, {1, 2}}, {{1, 2}, {-3, 4}}}));
    EXPECT_EQ(layer.m_Box.m_ptMin.x, -3.0);
    EXPECT_EQ(layer.m_Box.m_ptMax.y, 4.0);
    EXPECT_EQ(layer.m_dZ, 1.5);
}

TEST(TextLayer, TheBoxGrowsFromWhatItWas) {
    CLayer layer;
    layer.m_Box = CBoundBox2D(CPoint2D(-50, 0), CPoint2D(0, 0));
    Read(layer, "$$LAYER/3\n$$HATCHES/1 1 0 0 1 1\n");
    EXPECT_EQ(layer.m_Box.m_ptMin.x, -50.0);
    EXPECT_EQ(layer.m_Box.m_ptMax.x, 1.0);
}

TEST(TextLayer, WordsCountInAnyCaseAnywhereInTwentyColumns) {
    CLayer layer;
    EXPECT_EQ(Read(layer,
                   "$$GeometryStart\n  a layers x/4\n12345678polyline3456/1 2 1 1 1\n"
                   "12345678901234567HATCH/1 1 0 0 1 1\n")
                  .nResult,
              1);
    EXPECT_EQ(layer.m_dZ, 4.0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
    EXPECT_EQ(layer.m_HatchList.GetCount(), 0);  // the word ends in column 22
}

TEST(TextLayer, TheFirstWordOfTheTableDecidesALine) {
    CLayer layer;
    Read(layer, "$$HATCH LAYER/4\n$$HATCH POLYLINE/1 2 2 1 1 2 2\n");
    EXPECT_EQ(layer.m_dZ, 4.0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
}

TEST(TextLayer, NumbersStandBehindTheFirstSlashThatDoesNotLeadTheLine) {
    CLayer layer;
    Read(layer, "//$$LAYER/4/5\n$$POLYLINE//1 2 2 1 1\n");
    EXPECT_EQ(layer.m_dZ, 4.0);
    EXPECT_EQ(LoopNumber(layer, 0).m_nID, 0);  // "/1" starts with no number
}

TEST(TextLayer, ALayerWithoutANumberHasHeight0) {
    for (char const* const pLine : {"$$LAYER\n", "$$LAYER/\n", "$$LAYER/ ,", "$$LAYER/x\n"}) {
        CLayer layer;
        EXPECT_EQ(Read(layer, pLine).nResult, 1);
        EXPECT_EQ(layer.m_dZ, 0.0) << pLine;
    }
}

TEST(TextLayer, AZeroByteEndsTheTextOfALine) {
    CLayer layer;
    Read(layer, std::string("$$LAYER/1\n$$POLYLINE/1 2 2 1 1\0 2 2 3 3\n$$HATCHES/1 1 0 0 1 1\n", 63));
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{1, 1}}));
    EXPECT_EQ(layer.m_HatchList.GetCount(), 1);
}

TEST(TextLayer, LineEndsOfTwoCharactersAreReadToo) {
    CLayer layer;
    EXPECT_EQ(Read(layer, "$$LAYER/1.5\r\n$$POLYLINE/1 2 2 0 0 1 1.5\r\n$$LAYER/2\r\n").nResult, 1);
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{0, 0}, {1, 1.5}}));
    EXPECT_EQ(layer.m_dZ, 1.5);
}

TEST(TextLayer, CallsOneAfterTheOtherGiveLayerAfterLayer) {
    std::string const first = "$$GEOMETRYSTART\n$$LAYER/1\n$$POLYLINE/1 2 1 1 1\n";
    std::string const second = "$$LAYER/2\n$$HATCHES/1 1 0 0 1 1\n";
    OpenBytes const file(first + second);
    CLayer layer;
    EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
    EXPECT_EQ(file.Position(), static_cast<long>(first.size()));
    EXPECT_EQ(layer.m_dZ, 1.0);
    EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
    EXPECT_EQ(layer.m_dZ, 2.0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);  // what the layer held stays
    EXPECT_EQ(layer.m_HatchList.GetCount(), 1);
    EXPECT_EQ(layer.ReadCLIFile(file, 1), 0);
    EXPECT_EQ(file.Position(), static_cast<long>((first + second).size()));
}

TEST(TextLayer, AFileWithoutACommandGives0) {
    CLayer layer;
    EXPECT_EQ(Read(layer, "").nResult, 0);
    EXPECT_EQ(Read(layer, "$$GEOMETRYSTART\n").nResult, 0);
    EXPECT_EQ(layer.m_dZ, -1000.0);
}

TEST(TextLayer, PathsBeforeTheFirstLayerAreReadAtTheHeightThatTheLayerHas) {
    CLayer layer;
    layer.m_dZ = 9.0;
    EXPECT_EQ(Read(layer, "$$POLYLINE/1 2 1 1 1\n").nResult, 0);
    EXPECT_EQ(LoopNumber(layer, 0).m_dZ, 9.0);
}

TEST(TextLayer, AnUnknownLineEndsTheReadWithoutClosingLoops) {
    std::string const body = "$$LAYER/1\n$$POLYLINE/1 1 3 0 0 1 0 1 1\n";
    CLayer layer;
    auto const [nResult, nPosition] = Read(layer, Join({body, "$$GEOMETRYEND\n$$LAYER/2\n"}));
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, static_cast<long>(body.size()));
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{0, 0}, {1, 0}, {1, 1}}));
    CLayer none;
    EXPECT_EQ(Read(none, "unknown\n$$LAYER/2\n").nResult, 0);
    EXPECT_EQ(Read(none, "\n").nPosition, 0);
}

TEST(TextLayer, ALineThatLacksANumberIsDroppedAndMetAgain) {
    for (std::string const dropped :
         {"$$POLYLINE/1 2\n", "$$POLYLINE/1\n", "$$POLYLINE\n", "$$HATCHES/7\n", "$$HATCH\n"}) {
        std::string const before = "$$LAYER/1\n$$HATCHES/1 1 0 0 1 1\n";
        OpenBytes const file(Join({before, dropped, "$$LAYER/2\n"}));
        CLayer layer;
        EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
        EXPECT_EQ(file.Position(), static_cast<long>(before.size())) << dropped;
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
        EXPECT_EQ(layer.m_HatchList.GetCount(), 1);
        EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
        EXPECT_EQ(layer.m_dZ, 2.0);
        EXPECT_EQ(layer.ReadCLIFile(file, 1), 0);
    }
}

TEST(TextLayer, ADroppedLineThenAPathMovesTheMarkOn) {
    std::string const before = "$$LAYER/1\n$$POLYLINE/1\n$$POLYLINE/2 2 1 4 4\n";
    OpenBytes const file(Join({before, "$$LAYER/2\n"}));
    CLayer layer;
    EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
    EXPECT_EQ(file.Position(), static_cast<long>(before.size()));
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
}

TEST(TextLayer, CallsOnALineThatCannotBeReadEnd) {
    OpenBytes const file("$$LAYER/1\n$$POLYLINE/1\nunknown\n$$LAYER/2\n");
    CLayer layer;
    EXPECT_EQ(layer.ReadCLIFile(file, 1), 1);
    EXPECT_EQ(file.Position(), 10);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(layer.ReadCLIFile(file, 1), 0);
        EXPECT_EQ(file.Position(), 10);
    }
}

TEST(TextLayer, AnotherModeOnlyClosesTheLoops) {
    OpenBytes const file("$$LAYER/1\n");
    CLayer layer;
    tagLoopTreeNode* const pLoop = Give(layer, Square(0, 0, 1));
    pLoop->m_pPointList->GetTail() = CPoint2D(5, 5);
    tagLoopTreeNode* const pOpen = Give(layer, OpenPath({{0, 0}, {1, 1}}));
    Give(layer, LoopPtr(new tagLoopTreeNode(0)))->m_bClosed = 1;
    for (int const nMode : {0, 4}) EXPECT_EQ(layer.ReadCLIFile(file, nMode), 0);
    EXPECT_EQ(file.Position(), 0);
    EXPECT_EQ(Exact(pLoop->m_pPointList->GetTail()), Exact(pLoop->m_pPointList->GetHead()));
    EXPECT_EQ(PlacesOf(*pOpen), (Places{{0, 0}, {1, 1}}));
}

TEST(TextLayer, OnlyTopLoopsAreClosed) {
    CLayer layer;
    Give(layer, Square(0, 0, 10));
    tagLoopTreeNode* const pInner = Give(layer, Square(2, 2, 1));
    layer.MakeTopology(1);
    pInner->m_pPointList->GetTail() = CPoint2D(3, 3);
    Read(layer, "$$LAYER/1\n");
    EXPECT_EQ(pInner->m_pPointList->GetTail().x, 3.0);
}

TEST(TextLayer, ANullFileIsLikeAnEmptyOne) {
    CLayer layer;
    for (int const nMode : {1, 2, 3}) EXPECT_EQ(layer.ReadCLIFile(nullptr, nMode), 0);
}

TEST(TextLayer, ALineBeyondTheBufferIsReadUpToIt) {
    CLayer layer;
    layer.m_dZ = 1.0;
    Places places;
    for (int i = 0; i < 2000; ++i) places.emplace_back(0.125 * i, 1.0);
    Give(layer, OpenPath(places));
    std::string const bytes = BytesOf(layer, 1);
    std::size_t const nStart = bytes.find('\n') + 1;
    CLayer back;
    auto const [nResult, nPosition] = Read(back, bytes);
    EXPECT_EQ(nResult, 1);
    // The piece is the whole polyline; the rest of the line is no command, and stays.
    EXPECT_EQ(nPosition, static_cast<long>(nStart + 10239));
    int const nPoints = LoopNumber(back, 0).m_pPointList->GetCount();
    EXPECT_GT(nPoints, 700);
    EXPECT_LT(nPoints, 2000);
    Places read = PlacesOf(LoopNumber(back, 0));
    read.pop_back();  // may be cut short
    EXPECT_TRUE(std::equal(read.begin(), read.end(), places.begin()));
}

TEST(TextLayer, ALineThatFillsTheBufferIsReadWhole) {
    std::string line = "$$POLYLINE/1 2 1 5 ";
    line.resize(10238, '7');
    line += '\n';
    ASSERT_EQ(line.size(), 10239u);
    CLayer layer;
    EXPECT_EQ(Read(layer, Join({"$$LAYER/1\n", line, "$$LAYER/2\n"})).nPosition, 10 + 10239);
    CLayer longer;
    line.back() = '7';
    line += '\n';
    // The line end is a piece of its own, which is no command.
    EXPECT_EQ(Read(longer, Join({"$$LAYER/1\n", line, "$$LAYER/2\n"})).nPosition, 10 + 10239);
    EXPECT_EQ(longer.m_RawLoopList.GetCount(), 1);
}

TEST(TextLayer, TextKeepsTwoDecimalsOfTheHeightAndThreeOfPlaces) {
    CLayer layer;
    layer.m_dZ = 1.23456;
    Give(layer, OpenPath({{1.23456, -7.0006}}));
    CLayer back;
    Read(back, BytesOf(layer, 1));
    EXPECT_EQ(back.m_dZ, 1.23);
    EXPECT_EQ(PlacesOf(LoopNumber(back, 0)), (Places{{1.235, -7.001}}));
}

TEST(TextLayer, ACommaAsTheLocalesDecimalMarkChangesNothing) {
    std::string const before = std::setlocale(LC_ALL, nullptr);
    bool bFound = false;
    for (char const* const pName : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8",
                                    "nl_NL.UTF-8", "es_ES.UTF-8", "it_IT.UTF-8"}) {
        bFound = bFound || std::setlocale(LC_ALL, pName) != nullptr;
    }
    if (!bFound) GTEST_SKIP() << "no locale with a decimal comma is installed";
    CLayer layer;
    layer.m_dZ = 0.5;
    Give(layer, OpenPath({{1.5, 1e300}}));
    std::string const bytes = BytesOf(layer, 1);
    CLayer back;
    Read(back, bytes);
    CLayer oddNumber;
    Read(oddNumber, "$$LAYER/+1.5e0\n");
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(bytes.substr(0, 47), "$$LAYER/0.50 \n$$POLYLINE/1 2 1  1.500 100000000");
    EXPECT_EQ(PlacesOf(LoopNumber(back, 0)), (Places{{1.5, 1e300}}));
    EXPECT_EQ(oddNumber.m_dZ, 1.5);
}
