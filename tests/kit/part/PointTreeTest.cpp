// Which points a line comes near, against a look at each of them.

#include "part/PointTree.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace varnet {
namespace {

std::set<std::size_t> Near(std::vector<Point3> const& points, Point3 const& a, Point3 const& b,
                           double distance, std::size_t most = 1u << 20) {
    PointTree const tree(points, Pace::None());
    std::set<std::size_t> found;
    std::size_t looked = 0;
    tree.NearLine(a, b, distance, most, looked, [&](std::size_t i) { EXPECT_TRUE(found.insert(i).second); });
    return found;
}

// Whether a whole number of hundredths of the way from a to b brings a point within the distance on each
// axis.
bool ComesNear(Point3 const& p, Point3 const& a, Point3 const& b, double distance) {
    for (int step = 0; step <= 100; ++step) {
        double const share = step / 100.0;
        auto const isNear = [&](double from, double to, double at) {
            return std::abs(from + share * (to - from) - at) <= distance;
        };
        if (isNear(a.x, b.x, p.x) && isNear(a.y, b.y, p.y) && isNear(a.z, b.z, p.z)) return true;
    }
    return false;
}

TEST(PointTree, APointAsFarOffAsTheDistanceIsNearAndOneFartherIsNot) {
    for (double const side : {1.0, -1.0}) {
        // Beside a line along an axis, and behind its ends.
        EXPECT_EQ(Near({{5, side, 0}}, {0, 0, 0}, {10, 0, 0}, 1.0).size(), 1u);
        EXPECT_EQ(Near({{5, side * 1.001, 0}}, {0, 0, 0}, {10, 0, 0}, 1.0).size(), 0u);
        EXPECT_EQ(Near({{5 + 6 * side, 0, 0}}, {0, 0, 0}, {10, 0, 0}, 1.0).size(), 1u);
        EXPECT_EQ(Near({{5 + 6.001 * side, 0, 0}}, {0, 0, 0}, {10, 0, 0}, 1.0).size(), 0u);
        // Where a line on the diagonal leaves the one stretch it enters the other.
        EXPECT_EQ(Near({{5, 5 + 2 * side, 0}}, {0, 0, 0}, {10, 10, 0}, 1.0).size(), 1u);
        EXPECT_EQ(Near({{5, 5 + 2.001 * side, 0}}, {0, 0, 0}, {10, 10, 0}, 1.0).size(), 0u);
    }
    // A line of no length is a point.
    EXPECT_EQ(Near({{1, 1, -1}}, {0, 0, 0}, {0, 0, 0}, 1.0).size(), 1u);
    EXPECT_EQ(Near({{1, 1, -1.001}}, {0, 0, 0}, {0, 0, 0}, 1.0).size(), 0u);
}

TEST(PointTree, NoPointThatALineComesNearIsLeftOut) {
    std::mt19937 random(5);
    std::uniform_int_distribution<int> place(0, 40);
    auto const point = [&] { return Point3{1.0 * place(random), 1.0 * place(random), 0.25 * place(random)}; };
    for (int run = 0; run < 60; ++run) {
        std::vector<Point3> points(static_cast<std::size_t>(place(random)) * 8);
        for (Point3& p : points) p = point();
        Point3 const a = point();
        Point3 const b = run % 4 == 0 ? Point3{a.x, a.y, 3.0} : point();
        std::set<std::size_t> const found = Near(points, a, b, 1.0);
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (ComesNear(points[i], a, b, 1.0)) {
                EXPECT_TRUE(found.contains(i)) << i;
            }
        }
        if (points.size() > 200) {
            EXPECT_LT(found.size(), points.size());
        }
    }
}

TEST(PointTree, ASearchEndsWhenItHasLookedAtSoMany) {
    std::vector<Point3> const points(1000, Point3{1, 2, 3});
    EXPECT_EQ(Near(points, {0, 0, 0}, {2, 4, 6}, 0.5).size(), 1000u);
    EXPECT_EQ(Near(points, {0, 0, 0}, {2, 4, 6}, 0.5, 0).size(), 0u);
    EXPECT_LT(Near(points, {0, 0, 0}, {2, 4, 6}, 0.5, 100).size(), 200u);
    EXPECT_EQ(Near({}, {0, 0, 0}, {2, 4, 6}, 0.5).size(), 0u);
}

}  // namespace
}  // namespace varnet
