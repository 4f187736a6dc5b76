#include "trees/DrawnCorners.h"

#include <gtest/gtest.h>

using namespace varnet;

namespace {

constexpr double kTolerance = 0.0001;
constexpr std::size_t kHash = 4711;

struct OneKnown {
    CPoint3D corner{1.0, 2.0, 3.00005};
    tagVertexNode vertex{CPoint3D(1.0, 2.0, 3.0)};
    DrawnCorners drawn{kTolerance};
    OneKnown() {
        drawn.Begin();
        drawn.Remember(corner.z, kHash, &vertex);
    }
    bool IsKnown() const { return drawn.Find(corner, kHash) == &vertex; }
};

}  // namespace

TEST(DrawnCorners, NothingIsKnownAtFirst) {
    DrawnCorners drawn(kTolerance);
    drawn.Change(0.0);
    EXPECT_EQ(drawn.Find(CPoint3D(), 0), nullptr);
    EXPECT_EQ(drawn.Guess(0.0, 0), nullptr);
    drawn.Begin();
    EXPECT_EQ(drawn.Find(CPoint3D(), 0), nullptr);
    EXPECT_EQ(drawn.ChangesAt(0.0), 0u);
}

TEST(DrawnCorners, ACornerIsKnownByAllOfItsCoordinates) {
    OneKnown known;
    EXPECT_TRUE(known.IsKnown());
    EXPECT_EQ(known.drawn.Guess(known.corner.z, kHash), &known.vertex);
    EXPECT_EQ(known.drawn.Find(CPoint3D(1.5, 2.0, 3.00005), kHash), nullptr);
    EXPECT_EQ(known.drawn.Find(CPoint3D(1.0, 2.5, 3.00005), kHash), nullptr);
    EXPECT_EQ(known.drawn.Find(CPoint3D(1.0, 2.0, 3.0), kHash), nullptr);
    EXPECT_EQ(known.drawn.Find(known.corner, kHash + 1), nullptr);
}

TEST(DrawnCorners, AChangeWithinTheToleranceForgetsAndOneFarOffDoesNot) {
    for (double const dOff : {-1.0001, -0.5, 0.0, 0.5, 1.0001}) {
        OneKnown known;
        known.drawn.Change(known.corner.z + dOff * kTolerance);
        EXPECT_GT(known.drawn.ChangesAt(known.corner.z), 0u) << dOff;
        EXPECT_FALSE(known.IsKnown()) << dOff;
        EXPECT_EQ(known.drawn.Guess(known.corner.z, kHash), nullptr) << dOff;
        known.drawn.Remember(known.corner.z, kHash, &known.vertex);
        EXPECT_TRUE(known.IsKnown()) << "anew";
    }
    OneKnown known;
    for (int n = 10; n < 20; ++n) known.drawn.Change(known.corner.z + n * kTolerance);
    EXPECT_TRUE(known.IsKnown());
}

// A height that lies on either side of where two bands meet, about zero as well.
TEST(DrawnCorners, AChangeIsToldAcrossTheEndsOfABand) {
    for (int nBand = -3; nBand <= 3; ++nBand) {
        for (int nStep = -10; nStep <= 10; ++nStep) {
            DrawnCorners drawn(kTolerance);
            drawn.Begin();
            double const z = (4.0 * nBand + 0.1 * nStep) * kTolerance;
            tagVertexNode vertex(CPoint3D(0.0, 0.0, z));
            for (double const dOff : {-1.0, 1.0}) {
                drawn.Remember(z, kHash, &vertex);
                drawn.Change(z + dOff * kTolerance);
                EXPECT_EQ(drawn.Guess(z, kHash), nullptr) << nBand << " " << nStep << " " << dOff;
            }
        }
    }
}

TEST(DrawnCorners, BeginningAgainForgetsNothing) {
    OneKnown known;
    known.drawn.Begin();
    EXPECT_TRUE(known.IsKnown());
}

TEST(DrawnCorners, AllAreForgottenAtOnce) {
    OneKnown known;
    known.drawn.ForgetAll();
    EXPECT_FALSE(known.IsKnown());
    known.drawn.Remember(known.corner.z, kHash, &known.vertex);
    EXPECT_TRUE(known.IsKnown());
}

TEST(DrawnCorners, TheLastCornerOfItsPlaceIsTheOneThatIsKnown) {
    OneKnown known;
    tagVertexNode other(CPoint3D(1.0, 2.0, 5.0));
    known.drawn.Remember(5.00005, kHash, &other);
    EXPECT_FALSE(known.IsKnown());
    EXPECT_EQ(known.drawn.Find(CPoint3D(1.0, 2.0, 5.00005), kHash), &other);
}
