#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>

#include "foundation/FloatLanes.h"
#include "foundation/Point.h"
#include "foundation/Vec3f.h"

using namespace varnet;

TEST(Vec3f, NewVectorIsZeroAndOthersAreAsGiven) {
    Vec3f const zero;
    EXPECT_EQ(0.0f, zero.x);
    EXPECT_EQ(0.0f, zero.y);
    EXPECT_EQ(0.0f, zero.z);
    Vec3f const v(1.0f, 2.0f, 3.0f);
    Vec3f copy(v);
    EXPECT_EQ(3.0f, copy.z);
    copy = zero;
    EXPECT_EQ(0.0f, copy.z);
}

TEST(Vec3f, ComponentsOfTheOperations) {
    Vec3f const a(1.0f, 2.0f, 3.0f);
    Vec3f const b(4.0f, -5.0f, 6.0f);
    EXPECT_EQ(12.0f, Dot(a, b));
    Vec3f const sum = a + b;
    EXPECT_EQ(5.0f, sum.x);
    EXPECT_EQ(-3.0f, sum.y);
    EXPECT_EQ(9.0f, sum.z);
    // 2 * 6 - 3 * -5 = 27, 3 * 4 - 1 * 6 = 6, 1 * -5 - 2 * 4 = -13.
    Vec3f const cross = Cross(a, b);
    EXPECT_EQ(27.0f, cross.x);
    EXPECT_EQ(6.0f, cross.y);
    EXPECT_EQ(-13.0f, cross.z);
}

// 1e8 + 1 is 1e8 in float: the one is lost when the products are added from the left.
TEST(Vec3f, ArithmeticIsRoundedToFloatFromLeftToRight) {
    Vec3f const ones(1.0f, 1.0f, 1.0f);
    EXPECT_EQ(0.0f, Dot(Vec3f(1e8f, 1.0f, -1e8f), ones));
    EXPECT_EQ(1.0f, Dot(Vec3f(1e8f, -1e8f, 1.0f), ones));
    EXPECT_EQ(1e8f, (Vec3f(1e8f, 0.0f, 0.0f) + ones).x);
    // 16777217 has no float: y * z of 4097 * 4097 = 16785409 rounds to 16785408.
    Vec3f const cross = Cross(Vec3f(0.0f, 4097.0f, 0.0f), Vec3f(0.0f, 0.0f, 4097.0f));
    EXPECT_EQ(16785408.0f, cross.x);
    EXPECT_EQ(0.0f, Dot(Float3{1e8f, 1.0f, -1e8f}, Float3{1.0f, 1.0f, 1.0f}));
}

TEST(Vec3f, CounterFollowsTheVectorsAlive) {
    std::int32_t const nBefore = g_nVectorCount;
    {
        Vec3f const a;
        EXPECT_EQ(nBefore + 1, g_nVectorCount);
        Vec3f const b(1.0f, 2.0f, 3.0f);
        Vec3f c(a);
        EXPECT_EQ(nBefore + 3, g_nVectorCount);
        c = b;
        EXPECT_EQ(nBefore + 3, g_nVectorCount);
        Vec3f const sum = a + b;
        EXPECT_EQ(nBefore + 4, g_nVectorCount);
        Vec3f const cross = Cross(a, b);
        EXPECT_EQ(nBefore + 5, g_nVectorCount);
        EXPECT_EQ(0.0f, Dot(a, b));
        EXPECT_EQ(nBefore + 5, g_nVectorCount);
    }
    EXPECT_EQ(nBefore, g_nVectorCount);
}

// Random numbers of very different size, so that every rounding shows.
TEST(FloatLanes, AreFloat3BitForBit) {
    std::mt19937 random(7);
    auto const number = [&random] {
        std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
        return std::ldexp(mantissa(random), static_cast<int>(random() % 24) - 12);
    };
    auto const point = [&number] { return CPoint3D(number(), number(), number()); };
    for (int i = 0; i < 200000; ++i) {
        CPoint3D const a = point(), b = point(), c = point();
        float const n[3] = {static_cast<float>(number()), static_cast<float>(number()),
                            static_cast<float>(number())};
        ASSERT_EQ(Dot(ToFloat3(n), ToFloat3(a)), Dot(ToFloatLanes(n), ToFloatLanes(a)));
        ASSERT_EQ(Dot(Cross(ToFloat3(a), ToFloat3(b)), ToFloat3(c)),
                  Dot(Cross(ToFloatLanes(a), ToFloatLanes(b)), ToFloatLanes(c)));
        ASSERT_EQ(Dot(Sum(ToFloat3(a), ToFloat3(b)), ToFloat3(c)),
                  Dot(Sum(ToFloatLanes(a), ToFloatLanes(b)), ToFloatLanes(c)));
        ASSERT_EQ(AreaAlong(ToFloat3(n), ToFloat3(a), ToFloat3(b), ToFloat3(c)),
                  AreaAlong(ToFloatLanes(n), ToFloatLanes(a), ToFloatLanes(b), ToFloatLanes(c)));
    }
}
