#include "varnet/Error.h"

#include <gtest/gtest.h>

namespace varnet {
namespace {

TEST(Error, SaysTheFileAndTheLineOrTheByte) {
    EXPECT_STREQ(Error(ErrorKind::kFile, std::filesystem::path(u8"gr\u00fcn.stl"), "no such file").what(),
                 "gr\xC3\xBCn.stl: no such file");
    Error const line = Error::AtLine("a.stl", 12, "a corner is missing");
    EXPECT_STREQ(line.what(), "a.stl, line 12: a corner is missing");
    EXPECT_EQ(line.Line(), 12u);
    EXPECT_FALSE(line.Byte().has_value());
    EXPECT_EQ(line.File(), "a.stl");
    EXPECT_EQ(line.Kind(), ErrorKind::kContent);
    Error const byte = Error::AtByte("a.stl", 84, "ends early");
    EXPECT_STREQ(byte.what(), "a.stl, byte 84: ends early");
    EXPECT_EQ(byte.Byte(), 84u);
}

}  // namespace
}  // namespace varnet
