#include "foundation/text/TextSearch.h"

#include <gtest/gtest.h>

#include <string>

using namespace varnet;

TEST(HoldsWord, AWordIsFoundInAnyCaseAtTheStartInTheMiddleAndAtTheEnd) {
    for (char const* const line :
         {"FACET", "facet", "fAcEt", "  facet", "facet normal", "endfacet", "afacetb"})
        EXPECT_TRUE(HoldsWord(line, "FACET")) << line;
    for (char const* const line : {"", "F", "FACE", "ACET", "FACFACE", "F ACET", "fac3t", "face\xF4"})
        EXPECT_FALSE(HoldsWord(line, "FACET")) << line;
}

TEST(HoldsWord, OnlyLettersHaveTwoCases) {
    EXPECT_TRUE(HoldsWord("</vertices>", "/VERTICES"));
    EXPECT_TRUE(HoldsWord("az", "AZ"));
    // What stands as far from other signs as small letters do from capitals.
    EXPECT_FALSE(HoldsWord("`", "@"));
    EXPECT_FALSE(HoldsWord("{", "["));
    EXPECT_FALSE(HoldsWord("FACET", "facet")) << "the word is given in capitals";
}

TEST(HoldsWord, WhatStandsBehindAZeroByteIsNotThere) {
    EXPECT_FALSE(HoldsWord(std::string("\0FACET", 6), "FACET"));
    EXPECT_FALSE(HoldsWord(std::string("FAC\0ET", 6), "FACET"));
    EXPECT_FALSE(HoldsWord(std::string("FACE\0T FACET", 12), "FACET"));
    EXPECT_TRUE(HoldsWord(std::string("FACET\0", 6), "FACET"));
    EXPECT_TRUE(HoldsWord("", ""));
}
