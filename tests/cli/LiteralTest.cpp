// The readers and writers against the step-by-step ones, on files full of odd things.

#include <cmath>
#include <cstdlib>

#include "cli/LiteralSlices.h"

namespace {

// Reads a file layer by layer both ways: results, positions, layers, and whether the end was met agree.
void ExpectAsLiteral(std::string_view bytes, int nMode, double dUnits, std::size_t nStart = 0) {
    OpenBytes const file(bytes);
    OpenBytes const other(bytes);
    std::fseek(file, static_cast<long>(nStart), SEEK_SET);
    std::fseek(other, static_cast<long>(nStart), SEEK_SET);
    CLayer layer;
    CLayer expected;
    layer.m_dUnits = dUnits;
    expected.m_dUnits = dUnits;
    for (int nCall = 0; nCall < 200; ++nCall) {
        int const nExpected = literal::Read(expected, other, nMode);
        ASSERT_EQ(layer.ReadCLIFile(file, nMode), nExpected);
        ASSERT_EQ(file.Position(), other.Position());
        ASSERT_EQ(Dump(layer), Dump(expected));
        for (tagLoopTreeNode const* const pLoop : LoopsOf(layer.m_RawLoopList))
            ExpectSound(*pLoop->m_pPointList);
        if (nExpected == 0) break;
        if (nCall % 3 != 0) {
            layer.ReleaseAll();
            expected.ReleaseAll();
        }
    }
}

class Random {
public:
    explicit Random(unsigned nSeed) : m_Engine(nSeed) {}
    unsigned Below(unsigned n) { return static_cast<unsigned>(m_Engine() % n); }
    double Real() {
        double const d = (static_cast<double>(m_Engine()) - 2147483648.0) / 16777216.0;
        switch (Below(12)) {
            case 0:
                return d * 1e6;
            case 1:
                return d * 1e-6;
            case 2:
                return static_cast<double>(Below(2001)) * 0.0005 - 0.5;
            case 3:
                return Below(2) == 0 ? 0.0 : -0.0;
            default:
                return d;
        }
    }

private:
    std::mt19937 m_Engine;
};

std::string RandomToken(Random& random) {
    static std::vector<std::string> const kOdd = {"1e3",
                                                  "+5",
                                                  "0x10",
                                                  "nan",
                                                  "-inf",
                                                  "x",
                                                  "\t7",
                                                  "7\t8",
                                                  "-",
                                                  ".",
                                                  "1.",
                                                  ".5",
                                                  "-0",
                                                  "1e999",
                                                  "99999999999",
                                                  "/",
                                                  "\r",
                                                  "1.25e-400",
                                                  "123456789012345678901234567890",
                                                  "0.1234567890123456789"};
    if (random.Below(12) == 0) return kOdd[random.Below(static_cast<unsigned>(kOdd.size()))];
    return literal::Printed(random.Below(2) == 0 ? "%.3f" : "%g", random.Real());
}

std::string RandomLine(Random& random) {
    static std::vector<std::string> const kWords = {"$$LAYER/",
                                                    "$$POLYLINE/",
                                                    "$$POLYLINE/",
                                                    "$$POLYLINE/",
                                                    "$$HATCHES/",
                                                    "$$HATCHES/",
                                                    "$$LAYERS/",
                                                    "$$GEOMETRYSTART",
                                                    "$$polyline",
                                                    "//$$HATCH/",
                                                    "some word before HATCH/"};
    if (random.Below(60) == 0) return random.Below(2) == 0 ? "$$GEOMETRYEND\n" : "\n";
    std::string line = kWords[random.Below(static_cast<unsigned>(kWords.size()))];
    unsigned const nTokens = random.Below(random.Below(40) == 0 ? 3000 : 14);
    if (random.Below(20) != 0) line += std::to_string(random.Below(4)) + " ";
    if (random.Below(20) != 0) line += std::to_string(static_cast<int>(random.Below(5)) - 1) + ",";
    if (random.Below(20) != 0) line += std::to_string(nTokens) + " ";
    for (unsigned i = 0; i < nTokens; ++i) line += RandomToken(random) + (random.Below(9) == 0 ? " , " : " ");
    if (random.Below(3) != 0 && line.back() == ' ') line.pop_back();
    if (random.Below(60) == 0) line[random.Below(static_cast<unsigned>(line.size()))] = '\0';
    if (random.Below(8) == 0) line += '\r';
    return line + "\n";
}

std::string RandomBinary(Random& random, int nMode) {
    SliceBytes bytes;
    for (unsigned nCommands = random.Below(30); nCommands > 0; --nCommands) {
        unsigned const nKind = random.Below(30) == 0 ? 7 : 1 + random.Below(3);
        bool const bShort = nMode == 2 && random.Below(2) == 0;
        unsigned const k = random.Below(random.Below(4) == 0 ? 267 : 20);
        unsigned const nWord = nMode == 3   ? k * 245 + nKind
                               : nKind == 7 ? 133
                                            : 125 + 2 * nKind + ((nKind == 1) == bShort ? 1 : 0);
        bytes.Short({static_cast<int>(nWord)});
        auto const real = [&] {
            if (bShort) {
                bytes.Short({static_cast<int>(random.Below(65536))});
            } else {
                bytes.Float({static_cast<float>(random.Real())});
            }
        };
        auto const whole = [&](int n) {
            if (bShort) {
                bytes.Short({n});
            } else {
                bytes.Long({n});
            }
        };
        if (nKind == 1) {
            real();
            if (nMode == 3) bytes.Raw(std::string(k, 'n'));
            continue;
        }
        unsigned const n = random.Below(random.Below(30) == 0 ? 4000 : 12);
        whole(static_cast<int>(random.Below(2000)));
        if (nKind == 2) whole(static_cast<int>(random.Below(5)) - 1);
        whole(static_cast<int>(n + (random.Below(200) == 0 ? 5 : 0)));
        for (unsigned i = 0; i < n * (nKind == 2 ? 2 : 4); ++i) real();
    }
    return bytes;
}

// A layer of nested loops, loops without points or a list, and hatches.
void Fill(CLayer& layer, Random& random) {
    layer.m_dZ = random.Real();
    auto const makeLoop = [&random] {
        auto pLoop = std::make_unique<tagLoopTreeNode>(0);
        pLoop->m_nID = static_cast<int>(random.Below(4000)) - 2000;
        pLoop->m_bClosed = random.Below(4) == 0 ? 0 : 1;
        pLoop->m_nDirection = static_cast<LOOPDIRECT>(static_cast<int>(random.Below(5)) - 1);
        if (random.Below(10) == 0) return pLoop;
        pLoop->m_pPointList = new PointList(10);
        for (unsigned n = random.Below(random.Below(20) == 0 ? 3000 : 12); n > 0; --n) {
            CPoint2D point(random.Real(), random.Real());
            pLoop->m_pPointList->AddTail(point);
        }
        return pLoop;
    };
    for (unsigned n = random.Below(8); n > 0; --n) {
        tagLoopTreeNode* pLoop = Give(layer, makeLoop());
        for (unsigned k = random.Below(5); k > 0; --k) {
            tagLoopTreeNode* const pChild = makeLoop().release();
            pLoop->m_ChildList.AddTail(pChild);
            if (random.Below(2) == 0) pLoop = pChild;
        }
    }
    for (unsigned n = random.Below(5); n > 0; --n) {
        Segments segments;
        for (unsigned k = random.Below(9); k > 0; --k) {
            segments.push_back({{random.Real(), random.Real()}, {random.Real(), random.Real()}});
        }
        Give(layer, Hatch(segments, static_cast<int>(random.Below(2000))));
    }
}

}  // namespace

TEST(LiteralSlices, TextIsReadTheSameWay) {
    for (unsigned nSeed = 0; nSeed < 400; ++nSeed) {
        Random random(nSeed);
        std::string bytes;
        for (unsigned n = random.Below(60); n > 0; --n) bytes += RandomLine(random);
        if (random.Below(3) == 0 && !bytes.empty()) bytes.pop_back();
        ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(bytes, 1, nSeed % 2 == 0 ? 1.0 : 0.1)) << nSeed;
    }
}

TEST(LiteralSlices, BinaryCommandsAreReadTheSameWay) {
    for (unsigned nSeed = 0; nSeed < 400; ++nSeed) {
        Random random(nSeed);
        int const nMode = 2 + static_cast<int>(nSeed % 2);
        std::string bytes = RandomBinary(random, nMode);
        if (random.Below(4) == 0) bytes.resize(random.Below(static_cast<unsigned>(bytes.size()) + 1));
        ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(bytes, nMode, nSeed % 3 == 0 ? 1.0 : 0.1)) << nSeed;
    }
}

TEST(LiteralSlices, LayersAreWrittenTheSameWayInAllModesAndReadBack) {
    for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
        Random random(nSeed);
        CLayer layer;
        Fill(layer, random);
        for (int const nMode : {1, 2, 3}) {
            std::srand(nSeed);
            std::string const expected = literal::Write(layer, nMode);
            int const nNextDraw = std::rand();
            std::srand(nSeed);
            ASSERT_EQ(BytesOf(layer, nMode), expected) << nSeed;
            ASSERT_EQ(std::rand(), nNextDraw);
            ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(expected, nMode, 1.0)) << nSeed;
        }
    }
}

TEST(LiteralSlices, EveryTruncationIsReadTheSameWay) {
    Random random(11);
    CLayer layer;
    Give(layer, Square(0.5, 1.25, 3));
    Give(layer, OpenPath({{-7, 8.125}, {9, 10}}));
    Give(layer, Hatch({{{1, 2}, {3, 4}}, {{5, 6}, {7, 8}}}, 1000));
    for (int const nMode : {1, 2, 3}) {
        std::srand(3);
        std::string bytes = "$$HEADEREND" + BytesOf(layer, nMode);
        layer.m_dZ += 0.5;
        bytes += BytesOf(layer, nMode);
        if (nMode == 1) bytes += "$$GEOMETRYEND\n";
        for (std::size_t n = 11; n <= bytes.size(); ++n) {
            ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(std::string_view(bytes).substr(0, n), nMode, 1.0, 11))
                << n;
        }
    }
}

TEST(LiteralSlices, EveryTruncationOfShortFormsIsReadTheSameWay) {
    std::string const bytes = SliceBytes()
                                  .Short({128, 250, 129, 1, 1, 3, 0, 0, 5, 0, 5, 5, 131, 7, 1, 1, 2, 3, 4})
                                  .Short({128, 500, 129, 2, 2, 1, 9, 9});
    for (std::size_t n = 0; n <= bytes.size(); ++n) {
        ASSERT_NO_FATAL_FAILURE(ExpectAsLiteral(std::string_view(bytes).substr(0, n), 2, 0.01)) << n;
    }
}

TEST(LiteralSlices, BinaryNumbersSurviveARoundTripToTheBitWithinAFloat) {
    CLayer layer;
    layer.m_dZ = 0.1f;
    Give(layer, ClosedLoop({{0.1f, -3.3f}, {1e20f, 2.5f}, {-0.0, 7.0}}));
    Give(layer, Hatch({{{0.7f, 1e-30f}, {3, 4}}}, 12));
    layer.GetBoundBox();
    OpenBytes const file(BytesOf(layer, 2));
    CLayer back;
    EXPECT_EQ(back.ReadCLIFile(file, 2), 1);
    EXPECT_EQ(back.m_dZ, layer.m_dZ);
    EXPECT_EQ(PlacesOf(*LoopsOf(back.m_RawLoopList)[0]), PlacesOf(*LoopsOf(layer.m_RawLoopList)[0]));
    EXPECT_EQ(SegmentsOf(*HatchesOf(back)[0]), SegmentsOf(*HatchesOf(layer)[0]));
    EXPECT_TRUE(SameBox(back.m_Box, layer.m_Box));
}
