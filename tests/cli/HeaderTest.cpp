#include <array>

#include "cli/Slices.h"

namespace {

// The result of reading a header, and where the file stands then.
struct HeadResult {
    int nResult;
    long nPosition;
};

HeadResult ReadHead(CLayerModel& model, std::string_view bytes) {
    OpenBytes const file(bytes);
    std::fseek(file, 3, SEEK_SET);  // wherever the file stands before
    model.m_pFile = file;
    int const nResult = model.ReadCLIHead();
    model.m_pFile = nullptr;
    return {nResult, file.Position()};
}

std::string Head(CLayerModel& model, int nMode, int nLayers) {
    return Written([&](FILE* pFile) { EXPECT_EQ(model.SaveCLIHead(pFile, nMode, nLayers), 1); });
}

}  // namespace

TEST(CLIHeader, EveryKeywordIsReadAndTextStartsBehindTheEndsLine) {
    CLayerModel model;
    std::string const head =
        "junk\n$$HEADERSTART\n$$ASCII\n$$UNITS/0.25\n$$VERSION/300\n$$NOZZLE/2\n$$DATE/070899\n"
        "$$DIMENSION/0,0,0,1,1,1\n$$ALIGN\n$$LABEL/1,part\n$$USERDATA/x,1,y\n$$LAYERS/77\nsomething else\n"
        "$$HEADEREND\n";
    auto const [nResult, nPosition] = ReadHead(model, head + "$$GEOMETRYSTART\n");
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, static_cast<long>(head.size()));
    EXPECT_EQ(model.m_nFileMode, 1u);
    EXPECT_EQ(model.GetFileMode(), 1u);
    EXPECT_EQ(model.m_dUnits, 0.25);
    EXPECT_EQ(model.m_nVersion, 300);
    EXPECT_EQ(model.m_nNozzle, 2);
    EXPECT_EQ(g_nCLILayers, 77);
}

TEST(CLIHeader, ALineEndsForTheSearchAtItsFirstZero) {
    CLayerModel model;
    std::string const hidden =
        Join({std::string_view("junk\0$$HEADERSTART\n", 19), "$$ASCII\n$$HEADEREND\n"});
    EXPECT_EQ(ReadHead(model, hidden).nResult, 0);
    std::string const shown = Join({std::string_view("junk$$HEADERSTART\0\n", 19), "$$ASCII\n$$HEADEREND\n"});
    EXPECT_EQ(ReadHead(model, shown).nResult, 1);
}

TEST(CLIHeader, BinaryGeometryStartsElevenBytesBehindTheStartOfTheEndsLine) {
    for (char const* const pMode : {"$$BINARY", "$$COC"}) {
        CLayerModel model;
        std::string const head = Join({"$$HEADERSTART\n", pMode, "\n$$UNITS/2\n"});
        auto const [nResult, nPosition] =
            ReadHead(model, Join({head, "$$HEADEREND\x7F", std::string(20000, '\1')}));
        EXPECT_EQ(nResult, 1);
        EXPECT_EQ(nPosition, static_cast<long>(head.size()) + 11);
        EXPECT_EQ(model.m_nFileMode, pMode[2] == 'B' ? 2u : 3u);
    }
}

TEST(CLIHeader, ABlankBeforeTheEndMisplacesBinaryGeometryByThatBlank) {
    CLayerModel model;
    std::string const head = "$$HEADERSTART\n$$BINARY\n";
    EXPECT_EQ(ReadHead(model, head + " $$HEADEREND\x7F\n").nPosition, static_cast<long>(head.size()) + 11);
}

TEST(CLIHeader, LineEndsOfTwoCharactersAreReadToo) {
    CLayerModel model;
    std::string const head = "$$HEADERSTART\r\n$$ASCII\r\n$$UNITS/0.5\r\n$$LAYERS/12\r\n$$HEADEREND\r\n";
    auto const [nResult, nPosition] = ReadHead(model, head + "$$GEOMETRYSTART\r\n");
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, static_cast<long>(head.size()));
    EXPECT_EQ(model.m_dUnits, 0.5);
    EXPECT_EQ(g_nCLILayers, 12);
}

TEST(CLIHeader, AFileWithoutAStartGives0) {
    CLayerModel model;
    EXPECT_EQ(ReadHead(model, "$$BINARY\n$$HEADEREND").nResult, 0);
    EXPECT_EQ(ReadHead(model, "").nResult, 0);
    EXPECT_EQ(model.m_nFileMode, 1u);
}

TEST(CLIHeader, TheStartIsSoughtInTheWholeLine) {
    CLayerModel model;
    EXPECT_EQ(ReadHead(model, Join({std::string(500, 'x'), "$$HEADERSTART\n$$BINARY\n$$HEADEREND"})).nResult,
              1);
    EXPECT_EQ(model.m_nFileMode, 2u);
}

TEST(CLIHeader, AnEndOfFileInTheHeaderGives1WithTheModeSoFar) {
    CLayerModel model;
    auto const [nResult, nPosition] = ReadHead(model, "$$HEADERSTART\n$$COC\n$$UNITS/3");
    EXPECT_EQ(nResult, 1);
    EXPECT_EQ(nPosition, 29);
    EXPECT_EQ(model.m_nFileMode, 3u);
    EXPECT_EQ(model.m_dUnits, 3.0);
    EXPECT_EQ(ReadHead(model, "$$HEADERSTART\n").nResult, 1);
}

TEST(CLIHeader, AnEndWithoutAModeThatCanBeReadGives0) {
    for (unsigned const nMode : {0u, 4u}) {
        CLayerModel model;
        model.m_nFileMode = nMode;
        EXPECT_EQ(ReadHead(model, "$$HEADERSTART\n$$UNITS/2\n$$HEADEREND\n").nResult, 0);
        EXPECT_EQ(model.m_dUnits, 2.0);
        EXPECT_EQ(ReadHead(model, "$$HEADERSTART\n$$UNITS/2\n").nResult, 1);
    }
}

TEST(CLIHeader, TheLastModeWins) {
    CLayerModel model;
    EXPECT_EQ(ReadHead(model, "$$HEADERSTART\n$$BINARY\n$$ASCII\n$$HEADEREND\n").nResult, 1);
    EXPECT_EQ(model.m_nFileMode, 1u);
    EXPECT_EQ(ReadHead(model, "$$HEADERSTART\n$$ASCII\n$$COC\n$$BINARY\n$$HEADEREND\n").nResult, 1);
    EXPECT_EQ(model.m_nFileMode, 2u);
}

TEST(CLIHeader, AKeywordCountsWithinTwentyColumns) {
    CLayerModel model;
    ReadHead(model, Join({"$$HEADERSTART\n", std::string(12, ' '), "$$BINARY\n"}));
    EXPECT_EQ(model.m_nFileMode, 2u);
    model.m_nFileMode = 1;
    ReadHead(model, Join({"$$HEADERSTART\n", std::string(13, ' '), "$$BINARY\n"}));
    EXPECT_EQ(model.m_nFileMode, 1u);
}

TEST(CLIHeader, CaseMattersAndAZeroByteEndsALine) {
    CLayerModel model;
    ReadHead(model, std::string("$$HEADERSTART\n$$binary\nx\0$$COC\n", 31));
    EXPECT_EQ(model.m_nFileMode, 1u);
}

TEST(CLIHeader, TheFirstKeywordOfTheTableDecidesALine) {
    CLayerModel model;
    ReadHead(model, "$$HEADERSTART\n$$COC/ $$BINARY\n");
    EXPECT_EQ(model.m_nFileMode, 2u);
}

TEST(CLIHeader, AMissingValueIsZeroAndAValueEndsAtABlankOrComma) {
    CLayerModel model;
    ReadHead(model, "$$HEADERSTART\n$$UNITS/\n$$VERSION\n$$NOZZLE/ \n");
    EXPECT_EQ(model.m_dUnits, 0.0);
    EXPECT_EQ(model.m_nVersion, 0);
    EXPECT_EQ(model.m_nNozzle, 0);
    ReadHead(model, "$$HEADERSTART\n$$UNITS/ 0.5,7\n$$VERSION/,,9 8\n$$NOZZLE/4/5\n");
    EXPECT_EQ(model.m_dUnits, 0.5);
    EXPECT_EQ(model.m_nVersion, 9);
    EXPECT_EQ(model.m_nNozzle, 4);
}

TEST(CLIHeader, LongLinesFallIntoPieces) {
    CLayerModel model;
    // The keyword starts the second piece of its line.
    ReadHead(model, Join({"$$HEADERSTART\n", std::string(10239, 'x'), "$$BINARY\n$$HEADEREND"}));
    EXPECT_EQ(model.m_nFileMode, 2u);
    model.m_nFileMode = 1;
    ReadHead(model, Join({"$$HEADERSTART\n", std::string(10230, 'x'), "$$BINARY\n$$HEADEREND"}));
    EXPECT_EQ(model.m_nFileMode, 1u);
}

TEST(CLIHeader, AModelWithoutAFileGives0) { EXPECT_EQ(CLayerModel().ReadCLIHead(), 0); }

TEST(CLIHeader, ReadCLIDoesNothingAndGives1) {
    CLayerModel model;
    std::u16string path = u"/no/such/file";
    EXPECT_EQ(model.ReadCLI(reinterpret_cast<char*>(path.data()), 2), 1);
    EXPECT_EQ(model.m_pFile, nullptr);
    EXPECT_EQ(model.m_nFileMode, 1u);
}

TEST(CLIHeader, HeadersAreWrittenToTheByte) {
    CLayerModel model;
    model.m_dUnits = 7.0;
    model.m_nVersion = 8;
    EXPECT_EQ(Head(model, 1, 5),
              "$$HEADERSTART\n$$ASCII\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/5\n$$HEADEREND\n$$GEOMETRYSTART\n");
    EXPECT_EQ(Head(model, 2, -3),
              "$$HEADERSTART\n$$BINARY\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/-3\n$$HEADEREND");
    EXPECT_EQ(Head(model, 3, 5), "$$HEADERSTART\n$$COC\n$$UNITS/1\n$$VERSION/200\n$$LAYERS/5\n$$HEADEREND");
}

TEST(CLIHeader, NoCountMeansThatOfTheListInUse) {
    CLayerModel model;
    model.AddTailLayer(new CLayer);
    model.AddTailLayer(new CLayer);
    model.m_OffsetList.AddTail(1);
    EXPECT_NE(Head(model, 2, 0).find("$$LAYERS/2\n"), std::string::npos);
    model.m_bInMemory = 0;
    EXPECT_NE(Head(model, 2, 0).find("$$LAYERS/1\n"), std::string::npos);
}

TEST(CLIHeader, ABadModeWritesNothing) {
    CLayerModel model;
    for (int const nMode : {0, 4, -1}) {
        EXPECT_EQ(Written([&](FILE* pFile) { EXPECT_EQ(model.SaveCLIHead(pFile, nMode, 5), 0); }), "");
    }
    EXPECT_EQ(model.SaveCLIHead(nullptr, 1, 5), 0);
}

TEST(CLIHeader, WhatIsWrittenIsReadBackAndTheNextByteIsTheFirstCommand) {
    for (int const nMode : {1, 2, 3}) {
        CLayerModel model;
        std::string const head = Head(model, nMode, 9);
        CLayerModel back;
        auto const [nResult, nPosition] = ReadHead(back, head + "\x7F");
        EXPECT_EQ(nResult, 1);
        EXPECT_EQ(back.m_nFileMode, static_cast<unsigned>(nMode));
        EXPECT_EQ(back.m_nVersion, 200);
        EXPECT_EQ(g_nCLILayers, 9);
        if (nMode != 1) {
            EXPECT_EQ(nPosition, static_cast<long>(head.size()));
        }
    }
}

TEST(CLIHeader, EveryTruncationOfAHeaderIsRead) {
    std::string const head = "$$HEADERSTART\n$$BINARY\n$$UNITS/1.5\n$$LAYERS/12\n$$HEADEREND\x7F";
    for (std::size_t n = 0; n <= head.size(); ++n) {
        CLayerModel model;
        auto const [nResult, nPosition] = ReadHead(model, head.substr(0, n));
        bool const bStarted = n >= std::string_view("$$HEADERSTART").size();
        EXPECT_EQ(nResult, bStarted ? 1 : 0) << n;
        EXPECT_EQ(nPosition, static_cast<long>(std::min(n, head.size() - 1))) << n;
    }
}
