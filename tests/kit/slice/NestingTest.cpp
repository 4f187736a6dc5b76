// What the sweep over contours takes in, and which touching of two it sees.

#include "slice/Nesting.h"

#include <gtest/gtest.h>

#include <vector>

namespace varnet {
namespace {

using Path = std::vector<Point2>;

Grid TheGrid() { return Grid(Box2{{0, -100}, {200, 100}}); }

struct Outcome {
    bool isNested = false;
    std::vector<Nested> nested;
};

Outcome Nest(std::vector<Path> const& contours) {
    Paths paths;
    for (Path const& contour : contours) paths.Add(contour, true);
    Outcome outcome;
    NestingSweep sweep;
    Pulse pulse;
    outcome.isNested = sweep.Nest(paths, TheGrid(), SolidRule::kWinding, outcome.nested, pulse);
    return outcome;
}

TEST(NestingSweep, ATriangleIsAContourAndWhatHasTwoPlacesIsNone) {
    Outcome const outcome = Nest({{{0, 0}, {9, 0}, {0, 9}},
                                  {{20, 0}, {29, 0}},
                                  {{40, 0}, {49, 0}, {40, 0}},
                                  {{60, 0}, {69, 0}, {69, 0}, {60, 9}, {60, 0}}});
    ASSERT_TRUE(outcome.isNested);
    ASSERT_EQ(outcome.nested.size(), 4u);
    EXPECT_TRUE(outcome.nested[0].kept);
    EXPECT_FALSE(outcome.nested[1].kept);
    EXPECT_FALSE(outcome.nested[2].kept);
    EXPECT_TRUE(outcome.nested[3].kept);
}

TEST(NestingSweep, AHoleHasTheContourAroundItAsItsParent) {
    Path const outer{{0, 0}, {100, 0}, {100, 90}, {0, 90}};
    Path const hole{{10, 10}, {10, 20}, {20, 20}, {20, 10}};
    Path const island{{12, 12}, {18, 12}, {18, 18}, {12, 18}};
    Outcome const outcome = Nest({island, hole, outer});
    ASSERT_TRUE(outcome.isNested);
    for (Nested const& nested : outcome.nested) {
        EXPECT_TRUE(nested.kept);
        EXPECT_FALSE(nested.turned);
    }
    EXPECT_EQ(outcome.nested[0].parent, 1);
    EXPECT_EQ(outcome.nested[1].parent, 2);
    EXPECT_EQ(outcome.nested[2].parent, -1);
}

// The two in the middle change nothing of what is solid, and are none of the contours.
TEST(NestingSweep, AHoleWithinContoursThatAreLeftOutHasTheOneBehindThemAsItsParent) {
    auto const square = [](double margin, bool clockwise) {
        Path path{
            {margin, margin}, {100 - margin, margin}, {100 - margin, 90 - margin}, {margin, 90 - margin}};
        if (clockwise) path = Path(path.rbegin(), path.rend());
        return path;
    };
    Outcome const outcome = Nest({square(0, false), square(10, false), square(20, true), square(30, true)});
    ASSERT_TRUE(outcome.isNested);
    std::vector<bool> kept;
    for (Nested const& nested : outcome.nested) kept.push_back(nested.kept);
    EXPECT_EQ(kept, (std::vector<bool>{true, false, false, true}));
    EXPECT_EQ(outcome.nested[3].parent, 0);
}

// Three places on a line enclose nothing, and the sweep does not say which side of them is the upper one.
TEST(NestingSweep, AContourThatEnclosesNothingIsLeftToTheOtherWay) {
    EXPECT_FALSE(Nest({{{50, 50}, {60, 50}, {55, 50}}}).isNested);
    EXPECT_FALSE(Nest({{{50, 10}, {60, 20}, {55, 15}}, {{80, 0}, {90, 0}, {80, 9}}}).isNested);
}

// A small contour lies between two large ones and ends; then the upper one comes down through the lower one,
// or the lower one goes up through the upper one, whose side goes straight on.
TEST(NestingSweep, NeighboursAreHeldAgainstEachOtherOnceWhatWasBetweenThemHasEnded) {
    Path const between{{5, 4}, {10, 5}, {5, 6}};
    Path const low{{0, -50}, {150, -50}, {150, 0}, {0, 0}};
    Path const comesDown{{1, 10}, {20, 10}, {30, -5}, {40, 10}, {149, 10}, {149, 50}, {1, 50}};
    EXPECT_FALSE(Nest({low, between, comesDown}).isNested);
    Path const high{{0, 10}, {150, 10}, {150, 50}, {0, 50}};
    Path const goesUp{{1, -50}, {149, -50}, {149, 0}, {40, 0}, {30, 15}, {20, 0}, {1, 0}};
    EXPECT_FALSE(Nest({goesUp, between, high}).isNested);
    Path const staysAbove{{1, 10}, {20, 10}, {30, 1}, {40, 10}, {149, 10}, {149, 50}, {1, 50}};
    EXPECT_TRUE(Nest({low, between, staysAbove}).isNested);
}

}  // namespace
}  // namespace varnet
