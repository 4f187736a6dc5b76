#include "foundation/Require.h"

#include <gtest/gtest.h>

#include "foundation/files/ByteStream.h"

using namespace varnet;

namespace {

// Ends the program in builds that check requirements; others cannot tell.
class RequireDeathTest : public testing::Test {
protected:
    void SetUp() override {
        if (!kRequirementsChecked) GTEST_SKIP() << "a release checks no requirements";
    }
};

}  // namespace

TEST(Require, TheConditionIsNotRunInARelease) {
    int nRuns = 0;
    VARNET_REQUIRE(++nRuns == 1);
    EXPECT_EQ(kRequirementsChecked ? 1 : 0, nRuns);
}

TEST_F(RequireDeathTest, TheMessageNamesTheCondition) {
    int const nOne = 1;
    EXPECT_DEATH(VARNET_REQUIRE(nOne == 2), "RequireTest.cpp:.*nOne == 2");
}

TEST_F(RequireDeathTest, AWriterGivesNoMoreRoomThanItHas) {
    EXPECT_DEATH(ByteWriter(stderr).Room(ByteWriter::kLongest + 1), "kLongest");
}

TEST_F(RequireDeathTest, AWriterTakesBackOfTheLastRoomOnly) {
    auto const takeTooMuch = [] {
        ByteWriter writer(stderr);
        writer.Room(10);
        writer.Room(2);
        writer.TakeBack(3);
    };
    EXPECT_DEATH(takeTooMuch(), "m_nRoom");
}

TEST_F(RequireDeathTest, ALineIsNoLongerThanTheBufferAllows) {
    auto const readTooMuch = [] {
        ByteReader lines(stdin);
        static_cast<void>(lines.NextLine(ByteReader::kLongestLine + 1));
    };
    EXPECT_DEATH(readTooMuch(), "kLongestLine");
}
