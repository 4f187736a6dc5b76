#include "foundation/text/TextSearch.h"

#include <gtest/gtest.h>

#include <string_view>

using namespace varnet;

TEST(HoldsWord, FindsTheWordAtTheStartInTheMiddleAndAtTheVeryEnd) {
    for (std::string_view const line :
         {"FACET", "FACET normal", "a FACET normal", "a FACET", "FFACET", "FAFACET", "FACETFACE"}) {
        EXPECT_TRUE(HoldsWord(line, "FACET")) << line;
    }
    for (std::string_view const line : {"", "F", "FACE", "ACET", "FACE T", "FACEFACE", "a FACE"}) {
        EXPECT_FALSE(HoldsWord(line, "FACET")) << line;
    }
}

TEST(HoldsWord, TakesLettersInAnyCaseAndNoNeighbourOfALetter) {
    EXPECT_TRUE(HoldsWord("za", "ZA"));
    EXPECT_TRUE(HoldsWord("zA", "ZA"));
    EXPECT_TRUE(HoldsWord("Za", "ZA"));
    EXPECT_TRUE(HoldsWord("abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    EXPECT_FALSE(HoldsWord("`", "@"));  // as far from each other as a letter from its capital
    EXPECT_FALSE(HoldsWord("{", "["));
}

TEST(HoldsWord, EndsAtAZeroByte) {
    EXPECT_FALSE(HoldsWord(std::string_view("ab\0facet", 8), "FACET"));
    EXPECT_FALSE(HoldsWord(std::string_view("fac\0et", 6), "FACET"));
    EXPECT_FALSE(HoldsWord(std::string_view("\0facet", 6), "FACET"));
    EXPECT_TRUE(HoldsWord(std::string_view("facet\0ab", 8), "FACET"));
}
