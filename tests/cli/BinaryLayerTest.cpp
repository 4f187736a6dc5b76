#include <cstdlib>
#include <limits>

#include "cli/Slices.h"

namespace {

struct ReadResult {
    int nResult;
    long nPosition;
};

ReadResult Read(CLayer& layer, std::string_view bytes, int nMode = 2) {
    OpenBytes const file(bytes);
    int const nResult = layer.ReadCLIFile(file, nMode);
    return {nResult, file.Position()};
}

tagLoopTreeNode& LoopNumber(CLayer const& layer, std::size_t n) {
    return *LoopsOf(layer.m_RawLoopList).at(n);
}

// The draws of the generator from a seed on.
class Draws {
public:
    explicit Draws(unsigned nSeed) {
        std::srand(nSeed);
        for (int i = 0; i < 1000; ++i) m_Values.push_back(std::rand());
        std::srand(nSeed);
    }
    int Next() { return m_Values.at(m_nNext++); }

private:
    std::vector<int> m_Values;
    std::size_t m_nNext = 0;
};

}  // namespace

// ---- plain

// Three points of a loop that counts as closed, and does not end where it begins.
TEST(BinaryLayer, LoopsAreClosedWhereTheLayerIsWholeAndStayWhereItIsNot) {
    SliceBytes whole;
    whole.Short({127}).Float({1}).Short({130}).Long({1, 1, 3}).Float({0, 0, 5, 0, 5, 5});
    CLayer layer;
    EXPECT_EQ(Read(layer, whole).nResult, 1);
    EXPECT_EQ(PlacesOf(LoopNumber(layer, 0)), (Places{{0, 0}, {5, 0}, {0, 0}}));

    SliceBytes unknown(whole);
    CLayer stopped;
    EXPECT_EQ(Read(stopped, unknown.Short({9999})).nResult, 0);
    EXPECT_EQ(PlacesOf(LoopNumber(stopped, 0)), (Places{{0, 0}, {5, 0}, {5, 5}}));

    SliceBytes cut(whole);
    CLayer broken;
    EXPECT_EQ(Read(broken, cut.Short({130}).Long({1, 1})).nResult, 0);
    EXPECT_EQ(PlacesOf(LoopNumber(broken, 0)), (Places{{0, 0}, {5, 0}, {5, 5}}));
}

TEST(BinaryLayer, ALayerIsWrittenToTheByte) {
    CLayer layer;
    layer.m_dZ = 12.3456;
    tagLoopTreeNode* const pLoop = Give(layer, OpenPath({{0.5, -1}, {-0.0, 3}}));
    pLoop->m_nID = -2;
    pLoop->m_nDirection = LOOPDIRECT_CCW;  // kept, although the path is open
    Give(layer, LoopPtr(new tagLoopTreeNode(0)));
    Give(layer, Hatch({{{1, 2}, {3, 4}}}, 1000));
    Give(layer, Hatch({}, 5));
    std::string const expected = SliceBytes()
                                     .Short({127})
                                     .Float({12.3456f})
                                     .Short({130})
                                     .Long({-2, 1, 2})
                                     .Float({0.5f, -1.0f, -0.0f, 3.0f})
                                     .Short({130})
                                     .Long({1, 2, 0})
                                     .Short({132})
                                     .Long({1000, 1})
                                     .Float({1, 2, 3, 4})
                                     .Short({132})
                                     .Long({5, 0});
    EXPECT_EQ(BytesOf(layer, 2), expected);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 2);
}

TEST(BinaryLayer, LongCommandsAreReadAndScaled) {
    CLayer layer;
    layer.m_dUnits = 0.5;
    SliceBytes const bytes = SliceBytes()
                                 .Short({127})
                                 .Float({3})
                                 .Short({130})
                                 .Long({-7, 1, 3})
                                 .Float({0, 0, 4, 0, 4, 6})
                                 .Short({132})
                                 .Long({1001, 2})
                                 .Float({0, 0, -2, 2, 2, 2, 8, 2});
    auto const [nResult, nPosition] = Read(layer, bytes);
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, static_cast<long>(bytes.Size()));
    EXPECT_EQ(layer.m_dZ, 1.5);
    tagLoopTreeNode const& loop = LoopNumber(layer, 0);
    EXPECT_EQ(loop.m_nID, -7);
    EXPECT_EQ(loop.m_nDirection, LOOPDIRECT_CCW);
    EXPECT_EQ(loop.m_bClosed, 1);
    EXPECT_EQ(loop.m_dZ, 1.5);
    EXPECT_EQ(loop.m_pPointList->m_nBlockSize, 10);
    EXPECT_EQ(PlacesOf(loop), (Places{{0, 0}, {2, 0}, {0, 0}}));
    // The boxes are taken before loops are closed.
    EXPECT_EQ(loop.m_Box.m_ptMax.y, 3.0);
    EXPECT_EQ(layer.m_Box.m_ptMin.x, -1.0);
    EXPECT_EQ(layer.m_Box.m_ptMax.x, 4.0);
    EXPECT_EQ(layer.m_LoopList.GetCount(), 1);
    CHatch const& hatch = *HatchesOf(layer)[0];
    EXPECT_EQ(hatch.m_nID, 1001);
    EXPECT_EQ(SegmentsOf(hatch), (Segments{{{0, 0}, {-1, 1}}, {{1, 1}, {4, 1}}}));
}

TEST(BinaryLayer, ShortCommandsAreReadAndScaled) {
    CLayer layer;
    layer.m_dUnits = 0.01;
    SliceBytes const bytes = SliceBytes()
                                 .Short({128, 250})
                                 .Short({129, 65535, 0, 2, 100, 65535, 100, 300})
                                 .Short({129, 1, 40000, 1, 100, 200})
                                 .Short({131, 9, 1, 0, 100, 200, 300});
    EXPECT_EQ(Read(layer, bytes).nResult, 1);
    EXPECT_EQ(layer.m_dZ, 2.5);
    tagLoopTreeNode const& loop = LoopNumber(layer, 0);
    EXPECT_EQ(loop.m_nID, 65535);
    EXPECT_EQ(loop.m_nDirection, LOOPDIRECT_CW);
    EXPECT_EQ(loop.m_bClosed, 1);
    EXPECT_EQ(loop.m_pPointList->GetHead().y, 65535 * 0.01);
    EXPECT_EQ(LoopNumber(layer, 1).m_nDirection, static_cast<LOOPDIRECT>(40000));
    EXPECT_EQ(LoopNumber(layer, 1).m_bClosed, 0);
    EXPECT_EQ(HatchesOf(layer)[0]->m_nID, 9);
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{0, 1}, {2, 3}}}));
}

TEST(BinaryLayer, TheDirectionIsStoredAsItIsAndBelow2IsClosed) {
    CLayer layer;
    SliceBytes const bytes =
        SliceBytes().Short({130}).Long({1, 5, 0}).Short({130}).Long({1, -1, 0}).Short({130}).Long({1, 2, 0});
    EXPECT_EQ(Read(layer, bytes).nResult, 0);  // no layer command
    EXPECT_EQ(LoopNumber(layer, 0).m_nDirection, static_cast<LOOPDIRECT>(5));
    EXPECT_EQ(LoopNumber(layer, 0).m_bClosed, 0);
    EXPECT_EQ(LoopNumber(layer, 1).m_nDirection, static_cast<LOOPDIRECT>(-1));
    EXPECT_EQ(LoopNumber(layer, 1).m_bClosed, 1);
    EXPECT_EQ(LoopNumber(layer, 2).m_bClosed, 0);
}

TEST(BinaryLayer, CallsOneAfterTheOtherGiveLayerAfterLayer) {
    for (int const nMode : {2, 3}) {
        CLayer first;
        first.m_dZ = 1.0;
        Give(first, Square(0, 0, 1));
        CLayer second;
        second.m_dZ = 2.0;
        std::string const one = BytesOf(first, nMode);
        std::string const two = BytesOf(second, nMode);
        OpenBytes const file(one + two);
        CLayer layer;
        EXPECT_EQ(layer.ReadCLIFile(file, nMode), 1);
        EXPECT_EQ(file.Position(), static_cast<long>(one.size()));
        EXPECT_EQ(layer.ReadCLIFile(file, nMode), 1);
        EXPECT_EQ(layer.m_dZ, 2.0);
        EXPECT_EQ(layer.ReadCLIFile(file, nMode), 0);
    }
}

TEST(BinaryLayer, AFileWithoutACommandGives0AndRefreshesTheBox) {
    for (int const nMode : {2, 3}) {
        CLayer layer;
        Give(layer, Square(0, 0, 3));
        EXPECT_EQ(Read(layer, "", nMode).nResult, 0);
        EXPECT_EQ(layer.m_Box.m_ptMax.x, 3.0);
        EXPECT_EQ(Read(layer, "\x7F", nMode).nResult, 0);  // half a word
    }
}

TEST(BinaryLayer, AnUnknownWordGives0AtOnce) {
    for (int const nWord : {126, 133, 0, 65535}) {
        CLayer layer;
        SliceBytes const bytes =
            SliceBytes().Short({127}).Float({4}).Short({130}).Long({1, 0, 1}).Float({7, 7}).Short(
                {nWord, 127, 0});
        auto const [nResult, nPosition] = Read(layer, bytes);
        EXPECT_EQ(nResult, 0);
        EXPECT_EQ(nPosition, static_cast<long>(bytes.Size()) - 4);  // behind the word
        EXPECT_EQ(layer.m_dZ, 4.0);
        EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);
        EXPECT_EQ(layer.m_Box.m_ptMax.x, CBoundBox2D().m_ptMax.x);  // not refreshed
        EXPECT_EQ(layer.m_LoopList.GetCount(), 0);
    }
}

TEST(BinaryLayer, ACountThatTheFileCannotHoldGives0) {
    for (std::int64_t const nCount : {std::int64_t{3}, std::int64_t{2147483647}, std::int64_t{-1},
                                      std::int64_t{-2147483648}, std::int64_t{536870912}}) {
        CLayer layer;
        SliceBytes bytes = SliceBytes().Short({127}).Float({4}).Short({130}).Long({1, 0, 1}).Float({7, 7});
        for (bool const bHatch : {false, true}) {
            SliceBytes more = bytes;
            if (bHatch) {
                more.Short({132}).Long({1, nCount});
            } else {
                more.Short({130}).Long({1, 1, nCount});
            }
            more.Float({1, 2, 3, 4, 5});
            layer.ReleaseAll();
            auto const [nResult, nPosition] = Read(layer, more);
            EXPECT_EQ(nResult, 0) << nCount;
            EXPECT_EQ(nPosition, static_cast<long>(more.Size()));
            EXPECT_EQ(layer.m_RawLoopList.GetCount(), 1);  // what came before stays
            EXPECT_EQ(layer.m_HatchList.GetCount(), 0);
        }
    }
}

TEST(BinaryLayer, AShortCountThatTheFileCannotHoldGives0) {
    CLayer layer;
    EXPECT_EQ(Read(layer, SliceBytes().Short({128, 1, 129, 1, 1, 65535, 1, 2})).nResult, 0);
    EXPECT_EQ(Read(layer, SliceBytes().Short({128, 1, 131, 1, 65535, 1, 2})).nResult, 0);
    EXPECT_EQ(layer.m_RawLoopList.GetCount(), 0);
}

TEST(BinaryLayer, LoopsOfManyBlocksAreReadWhole) {
    for (int const nMode : {2, 3}) {
        CLayer layer;
        Places places;
        for (int i = 0; i < 100000; ++i) places.emplace_back(i, i / 2);
        Give(layer, OpenPath(places));
        CLayer back;
        EXPECT_EQ(Read(back, BytesOf(layer, nMode), nMode).nResult, 1);
        EXPECT_EQ(PlacesOf(LoopNumber(back, 0)), places);
        ExpectSound(*LoopNumber(back, 0).m_pPointList);
    }
}

TEST(BinaryLayer, NumbersBeyondAFloatBecomeInfinite) {
    CLayer layer;
    layer.m_dZ = 1e300;
    EXPECT_EQ(BytesOf(layer, 2),
              std::string(SliceBytes().Short({127}).Float({std::numeric_limits<float>::infinity()})));
}

// ---- disguised

TEST(DisguisedLayer, ALayerIsWrittenToTheByteWithTheDrawsInTheirOrder) {
    CLayer layer;
    layer.m_dZ = 1.25;
    Give(layer, ClosedLoop({{0, 0}, {8, 0}, {8, 8}}))->m_nDirection = LOOPDIRECT_CCW;
    Give(layer, LoopPtr(new tagLoopTreeNode(0)));
    Give(layer, Hatch({{{1, 2}, {3, -0.0}}}, 1000));
    Give(layer, Hatch({}, 5));
    Draws draws(42);
    SliceBytes expected;
    int k = draws.Next() % 111;
    expected.Short({k * 245 + 1}).Float({1.25f + static_cast<float>(k)});
    for (int i = 0; i < k; ++i) expected.Raw(std::string(1, static_cast<char>(draws.Next() & 0xFF)));
    k = draws.Next() % 111;
    auto a = [&k](int n) { return static_cast<float>(n + k); };
    expected.Short({k * 245 + 2}).Long({1, 1, 4}).Float({a(0), a(0), a(8), a(0), a(8), a(8), a(0), a(0)});
    k = draws.Next() % 111;
    expected.Short({k * 245 + 2}).Long({1, 2, 0});
    k = draws.Next() % 111;
    expected.Short({k * 245 + 3}).Long({1000, 1}).Float({a(1), a(2), a(3), a(0)});
    k = draws.Next() % 111;
    expected.Short({k * 245 + 3}).Long({5, 0});
    EXPECT_EQ(BytesOf(layer, 3), std::string(expected));
}

// The sum is rounded once. A little below half way between two floats of twice the size, a number that became
// a float first would come to lie on the half way itself, and go up from there.
TEST(DisguisedLayer, TheSumOfANumberAndItsOffsetIsRoundedOnce) {
    Draws draws(43);
    int const nLayer = draws.Next() % 111;
    for (int i = 0; i < nLayer; ++i) draws.Next();
    int const k = draws.Next() % 111;
    ASSERT_GT(k, 0);
    int nPower = 0;
    while (2 << nPower <= k) ++nPower;
    double const d = std::ldexp(1.0 + 3 * 0x1p-23 - 0x1p-40, nPower);
    float const once = static_cast<float>(d + k);
    ASSERT_NE(once, static_cast<float>(d) + static_cast<float>(k));
    CLayer layer;
    Give(layer, Hatch({{{d, 0}, {0, d}}}, 7));
    SliceBytes expected;
    expected.Short({k * 245 + 3})
        .Long({7, 1})
        .Float({once, static_cast<float>(k), static_cast<float>(k), once});
    std::srand(43);
    std::string const bytes = BytesOf(layer, 3);
    EXPECT_EQ(bytes.substr(static_cast<std::size_t>(2 + 4 + nLayer)), std::string(expected));
}

TEST(DisguisedLayer, CommandsAreReadScaledThenLowered) {
    CLayer layer;
    layer.m_dUnits = 0.5;
    SliceBytes const bytes = SliceBytes()
                                 .Short({3 * 245 + 1})
                                 .Float({10})
                                 .Raw("abc")
                                 .Short({2 * 245 + 2})
                                 .Long({6, 5, 2})
                                 .Float({4, 6, 8, 10})
                                 .Short({3})
                                 .Long({1000, 1})
                                 .Float({2, 4, 6, 8});
    EXPECT_EQ(Read(layer, bytes, 3).nResult, 1);
    EXPECT_EQ(layer.m_dZ, 2.0);
    tagLoopTreeNode const& loop = LoopNumber(layer, 0);
    EXPECT_EQ(loop.m_nID, 6);
    EXPECT_EQ(loop.m_nDirection, static_cast<LOOPDIRECT>(5));
    EXPECT_EQ(loop.m_bClosed, 0);
    EXPECT_EQ(PlacesOf(loop), (Places{{0, 1}, {2, 3}}));
    EXPECT_EQ(SegmentsOf(*HatchesOf(layer)[0]), (Segments{{{1, 2}, {3, 4}}}));
}

TEST(DisguisedLayer, AWordOf26951IsALayerWith110BytesOfNoise) {
    CLayer layer;
    std::string const bytes = SliceBytes().Short({26951}).Float({112.5f}).Raw(std::string(110, '\xFF'));
    EXPECT_EQ(Read(layer, bytes, 3).nResult, 1);
    EXPECT_EQ(layer.m_dZ, 2.5);
    CLayer cut;
    EXPECT_EQ(Read(cut, std::string_view(bytes).substr(0, bytes.size() - 1), 3).nResult, 0);
    EXPECT_EQ(cut.m_dZ, 2.5);  // stored before the noise is read
}

TEST(DisguisedLayer, TheReaderTakesOffsetsBeyondTheWriters) {
    CLayer layer;
    // 65416 is 267 times 245 and 1.
    EXPECT_EQ(Read(layer, SliceBytes().Short({65416}).Float({300}).Raw(std::string(267, 'x')), 3).nResult, 1);
    EXPECT_EQ(layer.m_dZ, 33.0);
}

TEST(DisguisedLayer, AnUnknownCommandGives0) {
    for (int const nWord : {0, 4, 244, 245, 245 + 4, 65535}) {
        CLayer layer;
        auto const [nResult, nPosition] =
            Read(layer, SliceBytes().Short({1}).Float({4}).Short({nWord, 1, 1}), 3);
        EXPECT_EQ(nResult, 0) << nWord;
        EXPECT_EQ(nPosition, 8);
        EXPECT_EQ(layer.m_dZ, 4.0);
    }
}

TEST(DisguisedLayer, ASecondLayerCommandStaysForTheNextCall) {
    OpenBytes const file(SliceBytes().Short({1}).Float({1}).Short({245 + 1}).Float({3}).Raw("n"));
    CLayer layer;
    EXPECT_EQ(layer.ReadCLIFile(file, 3), 1);
    EXPECT_EQ(file.Position(), 6);
    EXPECT_EQ(layer.ReadCLIFile(file, 3), 1);
    EXPECT_EQ(layer.m_dZ, 2.0);
    EXPECT_EQ(layer.ReadCLIFile(file, 3), 0);
}
