#include "contours/nesting/BoxPairs.h"

#include <array>
#include <cmath>
#include <limits>

#include "contours/Paths.h"

using namespace varnet;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

using Lists = std::vector<std::vector<std::uint32_t>>;

// All pairs, held against each other.
Lists Compare(std::vector<PlanBox> const& boxes) {
    Lists lists(boxes.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        for (std::size_t j = i + 1; j < boxes.size(); ++j) {
            if (!IsBoxInside(boxes[i], boxes[j]) && !IsBoxInside(boxes[j], boxes[i])) continue;
            lists[i].push_back(static_cast<std::uint32_t>(j));
        }
    }
    return lists;
}

Lists ListsOf(BoxPairs const& pairs, std::size_t nBoxes) {
    Lists lists(nBoxes);
    for (std::size_t i = 0; i < nBoxes; ++i) lists[i].assign(pairs.Behind(i).begin(), pairs.Behind(i).end());
    return lists;
}

void ExpectAllPairs(std::vector<PlanBox> const& boxes) {
    std::optional<BoxPairs> const pairs = BoxPairs::Find(boxes);
    ASSERT_TRUE(pairs.has_value());
    EXPECT_EQ(ListsOf(*pairs, boxes.size()), Compare(boxes));
}

}  // namespace

TEST(BoxPairs, NoBoxesMakeNoPairs) {
    ASSERT_TRUE(BoxPairs::Find({}).has_value());
    PlanBox const box{0.0, 0.0, 1.0, 1.0};
    std::optional<BoxPairs> const pairs = BoxPairs::Find({&box, 1});
    ASSERT_TRUE(pairs.has_value());
    EXPECT_TRUE(pairs->Behind(0).empty());
}

TEST(BoxPairs, TheLaterOfTwoIsListedWhicheverIsTheOuterOne) {
    std::vector<PlanBox> const boxes{{1.0, 1.0, 2.0, 2.0}, {0.0, 0.0, 4.0, 4.0}, {1.5, 1.5, 1.75, 1.75}};
    std::optional<BoxPairs> const pairs = BoxPairs::Find(boxes);
    ASSERT_TRUE(pairs.has_value());
    EXPECT_EQ(ListsOf(*pairs, 3), (Lists{{1, 2}, {2}, {}}));
}

TEST(BoxPairs, BoxesThatShareASideAreNotInsideEachOther) {
    ExpectAllPairs({{0.0, 0.0, 4.0, 4.0},
                    {0.0, 1.0, 1.0, 2.0},
                    {1.0, 0.0, 2.0, 1.0},
                    {1.0, 1.0, 4.0, 2.0},
                    {1.0, 1.0, 2.0, 4.0},
                    {0.0, 0.0, 4.0, 4.0},
                    {std::nextafter(0.0, 1.0), 1.0, std::nextafter(4.0, 0.0), 2.0}});
}

// A box begins at most one square to the left of what is inside, and one below, whatever its size.
TEST(BoxPairs, BoxesAreFoundAcrossTheLinesOfTheirGrid) {
    for (double const dSide : {0.999999, 1.0, 1.000001, 2.0, 1e-7, 3e-6, 1000.0}) {
        for (double const dStart : {-1024.0, -1.0, -0.5, 0.0, 0.5, 1023.0}) {
            double const dEnd = dStart + dSide;
            double const dAlmost = dEnd - dSide * 0.001;
            double const dJust = dStart + dSide * 0.001;
            ExpectAllPairs({{dStart, dStart, dEnd, dEnd},
                            {dAlmost, dAlmost, std::nextafter(dEnd, 0.0), std::nextafter(dEnd, 0.0)},
                            {dJust, dAlmost, dAlmost, std::nextafter(dEnd, -1e9)},
                            {dAlmost, dJust, dAlmost, dAlmost},
                            {dJust, dJust, dAlmost, dAlmost}});
        }
    }
}

TEST(BoxPairs, RandomBoxesMakeThePairsThatTheyMakeOneByOne) {
    Lattice random(71);
    for (int nRun = 0; nRun < 200; ++nRun) {
        bool const bOdd = nRun % 2 == 0;
        std::vector<PlanBox> boxes;
        for (int i = 0; i < 150; ++i) {
            double const dScale = std::ldexp(1.0, static_cast<int>(random.Below(6)) - 3);
            double const x = random.Step(60) - 30.0;
            double const y = random.Step(60) - 30.0;
            PlanBox box{x, y, x + dScale * random.Step(8), y + dScale * random.Step(8)};
            std::array const sides{&PlanBox::xMin, &PlanBox::yMin, &PlanBox::xMax, &PlanBox::yMax};
            if (bOdd && random.Below(10) == 0) std::swap(box.xMin, box.xMax);
            if (bOdd && random.Below(20) == 0) box.*sides[random.Below(4)] = kNaN;
            if (bOdd && random.Below(30) == 0) box.xMin = kInfinite;
            if (bOdd && random.Below(30) == 0) box.yMax = -kInfinite;
            boxes.push_back(box);
        }
        ExpectAllPairs(boxes);
    }
}

TEST(BoxPairs, ABoxThatHoldsNothingMayBeAnywhere) {
    PlanBox const empty{1e20, 1e20, -1e20, -1e20};
    ExpectAllPairs({{0.0, 0.0, 4.0, 4.0}, empty, PlanBox(), {1.0, 1.0, 2.0, 2.0}});
    ExpectAllPairs({{0.0, 0.0, 4.0, 4.0}, {3.0, 1.0, 2.0, 2.0}, {1.0, 3.0, 2.0, 2.0}});
    // Nor does one without a width, or without a height.
    ExpectAllPairs(
        {{0.0, 0.0, 4.0, 4.0}, {1e20, 0.0, 1e20, 1.0}, {0.0, 1e20, 1.0, 1e20}, {1.0, 1.0, 2.0, 2.0}});
}

TEST(BoxPairs, BoxesThatReachTooFarAreLeftToASearch) {
    constexpr double kReach = 524288.0;
    double const dBeyond = std::nextafter(kReach, 1e9);
    PlanBox const small{1.0, 1.0, 2.0, 2.0};
    ExpectAllPairs({{-kReach, -kReach, kReach, kReach}, small});
    for (PlanBox const& far :
         {PlanBox{-dBeyond, 0.0, 4.0, 4.0}, PlanBox{0.0, -dBeyond, 4.0, 4.0}, PlanBox{0.0, 0.0, dBeyond, 4.0},
          PlanBox{0.0, 0.0, 4.0, dBeyond}, PlanBox{0.0, 0.0, kInfinite, 4.0}, kWholePlane}) {
        EXPECT_FALSE(BoxPairs::Find(std::vector{small, far}).has_value());
    }
}

// Those that come late are counted against what the first ones have left.
TEST(BoxPairs, BoxesInOnePlaceAndBoxesInEachOtherAreLeftToASearch) {
    std::vector<PlanBox> same(1000, {0.0, 0.0, 1.0, 1.0});
    EXPECT_FALSE(BoxPairs::Find(same).has_value());
    std::vector<PlanBox> inEachOther;
    for (int i = 1; i <= 40; ++i) {
        double const d = std::ldexp(1.0, i % 20) * (1.0 + i / 100.0);
        inEachOther.push_back({-d, -d, d, d});
    }
    EXPECT_FALSE(BoxPairs::Find(inEachOther).has_value());
    std::vector<PlanBox> one{{-1.0, -1.0, 20000.0, 2.0}};
    for (int i = 0; i < 10000; ++i) one.push_back({2.0 * i, 0.0, 2.0 * i + 1.0, 1.0});
    std::optional<BoxPairs> const pairs = BoxPairs::Find(one);
    ASSERT_TRUE(pairs.has_value());
    EXPECT_EQ(pairs->Behind(0).size(), 10000u);
}
