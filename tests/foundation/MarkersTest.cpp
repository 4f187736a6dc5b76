#include <gtest/gtest.h>

#include "Varnet64.h"

TEST(Markers, HaveTheirValues) {
    EXPECT_EQ(42, fnVarnet());
    EXPECT_EQ(0, nVarnet);
    EXPECT_TRUE(std::is_empty_v<CVarnet>);
}
