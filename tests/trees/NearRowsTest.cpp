#include "trees/NearRows.h"

#include <cmath>

#include "trees/VertexTree.h"

using namespace varnet;

namespace {

constexpr double kTolerance = 2.0;

// Rows at the height 7. All y are in tolerances.
class Rows {
public:
    /// What Enter answers for a row, after a descent that has met the others.
    bool Enter(double y, std::vector<double> const& met, bool bAlone = true) {
        RowsMet rowsMet;
        for (double const d : met) rowsMet.Meet(kTolerance * d);
        return m_Rows.Enter(kTolerance * y, 7.0, rowsMet, [&](double dRow, double dHeight, double dDistance) {
            EXPECT_EQ(dRow, kTolerance * met.back());
            EXPECT_EQ(dHeight, 7.0);
            EXPECT_EQ(dDistance, 2.5 * kTolerance);
            return bAlone;
        });
    }
    bool IsMarked(double y, double dHeight = 7.0) const { return m_Rows.IsMarked(kTolerance * y, dHeight); }

private:
    NearRows m_Rows{kTolerance};
};

double Above(double d) { return std::nextafter(d, 1e9); }

}  // namespace

TEST(NearRows, ARowThatHasMetNoneGetsNoMark) {
    Rows rows;
    EXPECT_FALSE(rows.Enter(0.0, {}));
    EXPECT_FALSE(rows.IsMarked(0.0));
}

TEST(NearRows, TwoRowsLessThanHalfAToleranceApartAreCleanAndOthersAreNot) {
    for (double const dSign : {1.0, -1.0}) {
        Rows clean;
        EXPECT_FALSE(clean.Enter(dSign * 0.49, {0.0}));
        EXPECT_FALSE(clean.IsMarked(0.0));
        Rows apart;
        EXPECT_TRUE(apart.Enter(dSign * Above(0.49), {0.0}));
        EXPECT_TRUE(apart.IsMarked(0.0));
        EXPECT_FALSE(apart.IsMarked(0.0, 8.0));
        EXPECT_FALSE(apart.Enter(0.0, {})) << "marked before";
    }
    Rows crowded;
    EXPECT_TRUE(crowded.Enter(0.25, {0.0}, false));
    EXPECT_TRUE(crowded.IsMarked(0.25));
}

TEST(NearRows, ARowThatComesBetweenAClanAndWhatIsApartFromItMarksBoth) {
    for (double const dSign : {1.0, -1.0}) {
        Rows joining;
        ASSERT_FALSE(joining.Enter(0.25, {0.0}));
        EXPECT_FALSE(joining.Enter(dSign * 0.49, {0.0}));
        EXPECT_FALSE(joining.Enter(dSign * Above(2.0), {})) << "apart";
        EXPECT_FALSE(joining.IsMarked(0.0));
        EXPECT_TRUE(joining.Enter(dSign * 2.0, {}));
        EXPECT_TRUE(joining.IsMarked(0.0));
        Rows between;
        ASSERT_FALSE(between.Enter(0.25, {0.0}));
        EXPECT_TRUE(between.Enter(dSign * Above(0.49), {0.0}));
    }
}

TEST(NearRows, ManyClansAreAllFoundAgain) {
    Rows rows;
    for (int i = 0; i < 500; ++i) ASSERT_FALSE(rows.Enter(10.0 * i + 0.25, {10.0 * i})) << i;
    for (int i = 0; i < 500; ++i) ASSERT_FALSE(rows.Enter(10.0 * i - 0.375, {10.0 * i})) << i;
    EXPECT_TRUE(rows.Enter(10.0 * 77 + 1.0, {}));
}

TEST(NearRows, ARowIsAloneWhereTheNextOnesAtItsHeightLieFartherThanTheDistance) {
    CVertexTree tree;
    for (double const y : {-4.0, 0.0, 3.0}) {
        for (double const z : {1.0, 2.0, 3.0}) {
            CPoint3D point(5.0, z == 2.0 ? y : y / 8.0, z);
            tree.AddNode(point);
        }
    }
    EXPECT_TRUE(IsAlone(tree, 0.0, 2.0, std::nextafter(3.0, 0.0)));
    EXPECT_FALSE(IsAlone(tree, 0.0, 2.0, 3.0));
    EXPECT_TRUE(IsAlone(tree, -4.0, 2.0, std::nextafter(4.0, 0.0)));
    EXPECT_FALSE(IsAlone(tree, -4.0, 2.0, 4.0));
    EXPECT_TRUE(IsAlone(tree, 3.0, 2.0, std::nextafter(3.0, 0.0)));
    EXPECT_FALSE(IsAlone(tree, 3.0, 2.0, 3.0));
    EXPECT_TRUE(IsAlone(tree, 0.0, 9.0, 100.0)) << "no vertex at that height";
    EXPECT_TRUE(IsAlone(CVertexTree(), 0.0, 2.0, 100.0));
}
