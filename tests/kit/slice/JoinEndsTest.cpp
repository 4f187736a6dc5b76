#include "slice/JoinEnds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <tuple>

namespace varnet {
namespace {

using Path = std::vector<Point2>;

struct Joined {
    std::vector<Path> closed;
    std::vector<Path> open;
    JoinFigures figures;
};

std::vector<Path> ListOf(Paths const& paths) {
    std::vector<Path> list;
    for (std::size_t i = 0; i < paths.Count(); ++i) list.emplace_back(paths.At(i).begin(), paths.At(i).end());
    return list;
}

Joined Join(std::vector<Path> const& paths, double close) {
    Paths cut;
    for (Path const& path : paths) cut.Add(path, false);
    Paths closed;
    Paths open;
    Pulse pulse;
    Joined joined;
    joined.figures = JoinEnds(cut, close, closed, open, pulse);
    EXPECT_EQ(cut.Count(), 0u);
    EXPECT_EQ(std::count(closed.closed.begin(), closed.closed.end(), 0), 0);
    EXPECT_EQ(std::count(open.closed.begin(), open.closed.end(), 1), 0);
    joined.closed = ListOf(closed);
    joined.open = ListOf(open);
    return joined;
}

TEST(JoinEnds, PathsThatRunTheSameWayAreJoinedAtOnePoint) {
    Joined const joined = Join({{{0, 0}, {1, 0}}, {{1, 0}, {2, 0}}}, 0.0);
    EXPECT_EQ(joined.open, (std::vector<Path>{{{0, 0}, {1, 0}, {2, 0}}}));
    EXPECT_TRUE(joined.closed.empty());
    EXPECT_EQ(joined.figures.closed, 0);
}

TEST(JoinEnds, WhereTwoRunAgainstEachOtherBothRunAsTheLongerOneDid) {
    // The first is longer, the second is, and neither.
    EXPECT_EQ(Join({{{0, 0}, {2, 0}}, {{3, 0}, {2, 0}}}, 0.0).open,
              (std::vector<Path>{{{0, 0}, {2, 0}, {3, 0}}}));
    EXPECT_EQ(Join({{{0, 0}, {1, 0}}, {{3, 0}, {1, 0}}}, 0.0).open,
              (std::vector<Path>{{{3, 0}, {1, 0}, {0, 0}}}));
    EXPECT_EQ(Join({{{0, 0}, {1, 0}}, {{2, 0}, {1, 0}}}, 0.0).open,
              (std::vector<Path>{{{0, 0}, {1, 0}, {2, 0}}}));
}

TEST(JoinEnds, OfTwoEndsAtHandTheOneOfAPathThatRunsTheSameWayIsTaken) {
    // Where the first ends, the second ends too, and the third begins.
    Joined const joined = Join({{{0, 0}, {1, 0}}, {{1, 5}, {1, 0}}, {{1, 0}, {4, 0}}}, 0.0);
    EXPECT_EQ(joined.open, (std::vector<Path>{{{0, 0}, {1, 0}, {4, 0}}, {{1, 5}, {1, 0}}}));
}

TEST(JoinEnds, AGapCountsToTheLengthOfWhatItIsClosedIn) {
    // 2 and 3.3 mm long, 0.6 mm apart at one end and 1.9 at the other: less than a third of all three.
    std::vector<Path> paths{{{0, 0}, {2, 0}}, {{2, 0.6}, {2, 1.9}, {0, 1.9}}};
    Joined joined = Join(paths, 10.0);
    ASSERT_EQ(joined.closed.size(), 1u);
    EXPECT_EQ(joined.closed[0], (Path{{0, 0}, {2, 0}, {2, 0.6}, {2, 1.9}, {0, 1.9}}));
    EXPECT_EQ(joined.figures.closed, 2);
    EXPECT_DOUBLE_EQ(joined.figures.longestClosed, 1.9);
    EXPECT_DOUBLE_EQ(joined.figures.closedLength, 2.5);
    // 0.7 mm shorter, a third of it is less than what is left.
    paths[0].front().x = 0.7;
    paths[1].back().x = 0.7;
    joined = Join(paths, 10.0);
    EXPECT_TRUE(joined.closed.empty());
    EXPECT_EQ(joined.open, (std::vector<Path>{{{0.7, 0}, {2, 0}, {2, 0.6}, {2, 1.9}, {0.7, 1.9}}}));
    EXPECT_EQ(joined.figures.closed, 1);
}

TEST(JoinEnds, WhatIsClosedWithFewerThanThreePointsIsLeftOut) {
    EXPECT_TRUE(Join({{{0, 0}, {1, 0}}, {{1, 0}, {0, 0}}}, 0.0).closed.empty());
    EXPECT_EQ(Join({{{0, 0}, {1, 0}}, {{1, 0}, {1, 1}, {0, 0}}}, 0.0).closed,
              (std::vector<Path>{{{0, 0}, {1, 0}, {1, 1}}}));
}

TEST(JoinEnds, GapsAreClosedUpToTheDistanceAndCountedFromAMicronOn) {
    std::vector<Path> const paths{{{0, 0}, {1, 0}}, {{1.25, 0}, {3, 0}}};
    Joined joined = Join(paths, 0.25);
    EXPECT_EQ(joined.open, (std::vector<Path>{{{0, 0}, {1, 0}, {1.25, 0}, {3, 0}}}));
    EXPECT_EQ(joined.figures.closed, 1);
    EXPECT_EQ(joined.figures.longestClosed, 0.25);
    EXPECT_EQ(joined.figures.closedLength, 0.25);
    EXPECT_EQ(joined.figures.longestOpen, 3.0);  // from end to end
    joined = Join(paths, 0.2499);
    EXPECT_EQ(joined.open, paths);
    EXPECT_EQ(joined.figures.closed, 0);
    EXPECT_EQ(joined.figures.longestOpen, 3.0);
    joined = Join({{{0, 0}, {1, 0}}, {{1.0005, 0}, {3, 0}}}, 0.0);
    EXPECT_EQ(joined.open, (std::vector<Path>{{{0, 0}, {1, 0}, {3, 0}}}));
    EXPECT_EQ(joined.figures.closed, 0);
}

TEST(JoinEnds, WhatOpenPathsWouldEncloseIsMeasuredOverAllGaps) {
    // Three sides of a square of 10 mm, from either end; two such that face each other, over gaps of 2 mm.
    EXPECT_EQ(Join({{{0, 0}, {10, 0}, {10, 10}, {0, 10}}}, 1.0).figures.openArea, 100.0);
    EXPECT_EQ(Join({{{0, 10}, {10, 10}, {10, 0}, {0, 0}}}, 1.0).figures.openArea, -100.0);
    std::vector<Path> const halves{{{4, 0}, {0, 0}, {0, 10}, {4, 10}}, {{6, 10}, {10, 10}, {10, 0}, {6, 0}}};
    EXPECT_EQ(Join(halves, 1.0).figures.openArea, -100.0);
    EXPECT_EQ(Join(halves, 2.0).figures.openArea, 0.0);
    EXPECT_EQ(Join(halves, 2.0).closed.size(), 1u);
    // Where paths run against each other, the longer ones tell.
    EXPECT_EQ(Join({{{4, 0}, {0, 0}, {0, 10}, {4, 10}}, {{6, 0}, {12, 0}}}, 1.0).figures.openArea, -80.0);
    // What is closed by itself has no share: a square, and a path without area.
    Joined const mixed = Join({{{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}}, {{20, 0}, {30, 0}}}, 1.0);
    EXPECT_EQ(mixed.closed.size(), 1u);
    EXPECT_EQ(mixed.figures.openArea, 0.0);
}

// A contour, with a facet too many at one of its sides.
TEST(JoinEnds, WhatGoesRoundInAnOpenPathIsClosedByItself) {
    Joined const wall = Join({{{0, 0}, {4, 0}, {4, 3}, {0, 3}, {0, 0}, {4, 0}}}, 0.0);
    EXPECT_EQ(wall.closed, (std::vector<Path>{{{0, 0}, {4, 0}, {4, 3}, {0, 3}}}));
    EXPECT_EQ(wall.open, (std::vector<Path>{{{0, 0}, {4, 0}}}));
    // With a way in, and with a way out.
    Joined const in = Join({{{-9, 0}, {0, 0}, {4, 0}, {4, 3}, {0, 0}}}, 0.0);
    EXPECT_EQ(in.closed, (std::vector<Path>{{{0, 0}, {4, 0}, {4, 3}}}));
    EXPECT_EQ(in.open, (std::vector<Path>{{{-9, 0}, {0, 0}}}));
    Joined const out = Join({{{0, 0}, {4, 0}, {4, 3}, {0, 0}, {-9, 0}}}, 0.0);
    EXPECT_EQ(out.closed, in.closed);
    EXPECT_EQ(out.open, (std::vector<Path>{{{0, 0}, {-9, 0}}}));
    // One within the other.
    Joined const two = Join({{{-9, 0}, {0, 0}, {4, 0}, {5, 1}, {6, 0}, {4, 0}, {4, 3}, {0, 0}, {0, 9}}}, 0.0);
    EXPECT_EQ(two.closed, (std::vector<Path>{{{4, 0}, {5, 1}, {6, 0}}, {{0, 0}, {4, 0}, {4, 3}}}));
    EXPECT_EQ(two.open, (std::vector<Path>{{{-9, 0}, {0, 0}, {0, 9}}}));
    // There and back is no way round.
    Joined const back = Join({{{-9, 0}, {0, 0}, {0, 5}, {0, 0}, {3, 0}}}, 0.0);
    EXPECT_TRUE(back.closed.empty());
    EXPECT_EQ(back.open, (std::vector<Path>{{{-9, 0}, {0, 0}, {3, 0}}}));
    // What is next to a point is not at it.
    EXPECT_EQ(Join({{{-9, 0}, {0, 0}, {4, 0}, {4, 3}, {1e-9, 0}}}, 0.0).closed.size(), 0u);
}

TEST(JoinEnds, ClosedPathsPassThrough) {
    Paths cut;
    cut.Add(Path{{0, 0}, {1, 0}, {0, 1}}, true);
    cut.Add(Path{{5, 5}, {6, 5}}, false);
    cut.Add(Path{{2, 0}, {3, 0}, {2, 1}}, true);
    Paths closed;
    Paths open;
    Pulse pulse;
    JoinEnds(cut, 0.0, closed, open, pulse);
    EXPECT_EQ(ListOf(closed), (std::vector<Path>{{{0, 0}, {1, 0}, {0, 1}}, {{2, 0}, {3, 0}, {2, 1}}}));
    EXPECT_EQ(ListOf(open), (std::vector<Path>{{{5, 5}, {6, 5}}}));
    // More is added behind it.
    cut.Add(Path{{8, 0}, {9, 0}, {8, 1}}, true);
    JoinEnds(cut, 0.0, closed, open, pulse);
    EXPECT_EQ(closed.Count(), 3u);
}

TEST(JoinEnds, APathIsClosedOnItselfOverAThirdOfItsLengthAndNoMore) {
    // 3 mm long; its ends are 1 mm apart.
    std::vector<Path> paths{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    EXPECT_EQ(Join(paths, 1.0).closed, paths);
    EXPECT_EQ(Join(paths, 5.0).closed, paths);
    EXPECT_EQ(Join(paths, 0.9999).open, paths);
    paths[0].back().y = 1.0001;
    EXPECT_EQ(Join(paths, 5.0).open, paths);
}

TEST(JoinEnds, PointsAMicronApartAreOne) {
    Joined const joined = Join({{{-1, 0}, {0, 0}}, {{0.001, 0}, {3, 0}}}, 0.0);
    EXPECT_EQ(joined.open, (std::vector<Path>{{{-1, 0}, {0, 0}, {3, 0}}}));
    EXPECT_EQ(joined.figures.closed, 0);
    EXPECT_EQ(joined.figures.longestClosed, 0.0);
    EXPECT_EQ(Join({{{0, 0}, {1, 0}, {1, 1}, {0, 0.001}}}, 0.0).closed,
              (std::vector<Path>{{{0, 0}, {1, 0}, {1, 1}}}));
    // A little more is a gap, and both points stay.
    double const more = std::nextafter(0.001, 1.0);
    Joined const gap = Join({{{-1, 0}, {0, 0}}, {{more, 0}, {3, 0}}}, 0.01);
    EXPECT_EQ(gap.open, (std::vector<Path>{{{-1, 0}, {0, 0}, {more, 0}, {3, 0}}}));
    EXPECT_EQ(gap.figures.closed, 1);
    EXPECT_EQ(gap.figures.longestClosed, more);
    EXPECT_EQ(Join({{{0, 0}, {1, 0}, {1, 1}, {0, more}}}, 0.01).closed,
              (std::vector<Path>{{{0, 0}, {1, 0}, {1, 1}, {0, more}}}));
}

// 131 paths end at one place, and one begins there. Ends are looked at in the order of the paths, each
// against the 128 behind it: so the first that finds the beginning is that of the fourth path.
TEST(JoinEnds, AnEndIsHeldAgainst128OthersAtItsPlace) {
    std::vector<Path> paths;
    for (int i = 0; i < 131; ++i) paths.push_back({{-1.0 - i, 5.0 + i}, {0, 0}});
    paths.push_back({{0, 0}, {3, -7}});
    Joined const joined = Join(paths, 0.0);
    Path const through{paths[3].front(), {0, 0}, {3, -7}};
    EXPECT_EQ(std::count(joined.open.begin(), joined.open.end(), through), 1);
}

TEST(JoinEnds, TheLongestGapIsThatOfTheLastTwoThatWouldHaveToBeJoined) {
    // 2 mm from the first to the second, 5 to the third, and 300 from its end back to the beginning.
    Joined const joined = Join({{{0, 0}, {100, 0}}, {{102, 0}, {200, 0}}, {{205, 0}, {300, 0}}}, 0.5);
    EXPECT_EQ(joined.figures.longestOpen, 300.0);
    EXPECT_EQ(joined.figures.closed, 0);
    EXPECT_EQ(joined.figures.closedLength, 0.0);
    EXPECT_EQ(joined.open.size(), 3u);
}

// Three paths that meet, in any order and run any way: the chain of them counts as one path, and so does its
// length, with what was closed in it.
TEST(JoinEnds, AChainIsClosedOnItselfOverAThirdOfItsLengthAndNoMore) {
    for (double const rise : {1.0, 1.5}) {
        // Twice 1.2 and once the rise, with a gap in it; from end to end it is the rise.
        std::array<Path, 3> const parts = {Path{{0, 0}, {1.2, 0}}, Path{{1.2, 0}, {1.2, rise - 0.01}},
                                           Path{{1.2, rise}, {0, rise}}};
        std::array<std::size_t, 3> order = {0, 1, 2};
        do {
            for (unsigned way = 0; way < 8; ++way) {
                std::vector<Path> paths;
                for (std::size_t const i : order) {
                    paths.push_back(parts[i]);
                    if ((way >> i & 1) != 0) std::reverse(paths.back().begin(), paths.back().end());
                }
                Joined const joined = Join(paths, 2.0);
                // 1 mm is less than a third of 3.4, and 1.5 mm more than one of 3.9.
                EXPECT_EQ(joined.closed.size(), rise == 1.0 ? 1u : 0u) << way;
                EXPECT_EQ(joined.open.size(), rise == 1.0 ? 0u : 1u) << way;
                EXPECT_EQ(joined.figures.closed, rise == 1.0 ? 2 : 1);
                EXPECT_NEAR(joined.figures.closedLength, rise == 1.0 ? 1.01 : 0.01, 1e-12);
            }
        } while (std::next_permutation(order.begin(), order.end()));
    }
}

// However the ends lie about the origin: on both sides of it in x or in y, and across the whole of a square.
TEST(JoinEnds, TheLongestGapMayBeAsWideAsAllThatIsThere) {
    for (Path const& path : {Path{{-30, 5}, {30, 5}}, Path{{5, -30}, {5, 30}}, Path{{-30, -5}, {30, -5}},
                             Path{{-90, 5}, {-30, 5}}, Path{{5, -90}, {5, -30}}}) {
        EXPECT_EQ(Join({path}, 1.0).figures.longestOpen, 60.0);
    }
    for (double const side : {20.0, 60.0, 100.0, 180.0, 256.0, 300.0}) {
        EXPECT_EQ(Join({{{-side / 2, 7}, {side / 2, 7 + side}}}, 1.0).figures.longestOpen,
                  std::sqrt(2.0 * side * side));
    }
}

// ---- the same by looking at all pairs

double Distance(Point2 const& a, Point2 const& b) {
    return std::sqrt((b.x - a.x) * (b.x - a.x) + (b.y - a.y) * (b.y - a.y));
}

double LengthOf(Path const& path) {
    double length = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) length += Distance(path[i - 1], path[i]);
    return length;
}

class SlowJoin {
public:
    SlowJoin(std::vector<Path> const& paths, double close) : m_Paths(paths), m_Partner(2 * paths.size(), -1) {
        Box2 box;
        for (Path const& path : paths) {
            box.Add(path.front());
            box.Add(path.back());
        }
        double const extent = std::max(box.max.x - box.min.x, box.max.y - box.min.y);
        double const limit = std::max(close, kMicron);
        for (double reach = std::max(1e-9, extent * 1e-12); reach < limit; reach *= 4.0) Round(reach);
        Round(limit);
        for (int end = 0; end < Count(); ++end) {
            if (m_Partner[At(end)] < 0) Chain(end);
        }
        for (int end = 0; end < Count(); end += 2) Chain(end);
    }

    std::vector<Path> closed;
    std::vector<Path> open;

private:
    static std::size_t At(int end) { return static_cast<std::size_t>(end); }
    int Count() const { return static_cast<int>(m_Partner.size()); }
    Path const& PathOf(int end) const { return m_Paths[At(end / 2)]; }
    Point2 const& PlaceOf(int end) const { return end % 2 == 0 ? PathOf(end).front() : PathOf(end).back(); }

    // The other end of what an end is joined up to, and how long that is.
    std::pair<int, double> Follow(int end) const {
        double length = LengthOf(PathOf(end));
        int other = end ^ 1;
        while (m_Partner[At(other)] >= 0) {
            int const next = m_Partner[At(other)];
            length += Distance(PlaceOf(other), PlaceOf(next)) + LengthOf(PathOf(next));
            other = next ^ 1;
        }
        return {other, length};
    }

    void Round(double reach) {
        std::vector<std::tuple<bool, double, int, int>> pairs;
        for (int a = 0; a < Count(); ++a) {
            for (int b = a + 1; b < Count(); ++b) {
                double const distance = Distance(PlaceOf(a), PlaceOf(b));
                if (distance <= reach) pairs.emplace_back(a % 2 == b % 2, distance, a, b);
            }
        }
        std::sort(pairs.begin(), pairs.end());
        for (auto const& [against, distance, a, b] : pairs) {
            if (m_Partner[At(a)] >= 0 || m_Partner[At(b)] >= 0) continue;
            auto const [far, length] = Follow(a);
            if (far == b && !(distance <= length * (1.0 / 3.0))) continue;
            m_Partner[At(a)] = b;
            m_Partner[At(b)] = a;
        }
    }

    void Chain(int start) {
        if (std::find(m_Used.begin(), m_Used.end(), start / 2) != m_Used.end()) return;
        Path points;
        double along = 0.0;
        int end = start;
        do {
            m_Used.push_back(end / 2);
            Path path = PathOf(end);
            along += end % 2 == 0 ? LengthOf(path) : -LengthOf(path);
            if (end % 2 != 0) std::reverse(path.begin(), path.end());
            bool const same = !points.empty() && Distance(points.back(), path.front()) <= kMicron;
            points.insert(points.end(), path.begin() + (same ? 1 : 0), path.end());
            end = m_Partner[At(end ^ 1)];
        } while (end >= 0 && end != start);
        bool const round = end == start;
        if (round && points.size() > 1 && Distance(points.back(), points.front()) <= kMicron)
            points.pop_back();
        if (round && points.size() < 3) return;
        if (along < 0.0) std::reverse(points.begin(), points.end());
        if (round) {
            closed.push_back(points);
        } else {
            TakeOutLoops(points);
        }
    }

    // From the first point that was there before, what lies between goes.
    void TakeOutLoops(Path points) {
        for (std::size_t i = 1; i < points.size(); ++i) {
            auto const at = points.begin() + static_cast<std::ptrdiff_t>(i);
            auto const before = std::find(points.begin(), at, *at);
            if (before == at) continue;
            if (at - before >= 3) closed.emplace_back(before, at);
            i = static_cast<std::size_t>(before - points.begin());
            points.erase(before, at);
        }
        if (points.size() >= 2) open.push_back(points);
    }

    std::vector<Path> const& m_Paths;
    std::vector<int> m_Partner;
    std::vector<int> m_Used;
};

TEST(JoinEnds, RandomPathsAreJoinedAsALookAtAllPairsJoinsThem) {
    std::mt19937 random(31);
    for (int round = 0; round < 400; ++round) {
        // Few places, so that many ends are equally far from each other.
        std::uniform_int_distribution<int> any(0, 4 + round % 12);
        double const step = round % 3 == 0 ? 0.25 : 0.0004;
        std::vector<Path> paths(1 + random() % 20);
        for (Path& path : paths) {
            Point2 const from{step * any(random), step * any(random)};
            Point2 const to{step * any(random), step * any(random)};
            path = {from, {from.x + 0.375, from.y}, {to.x, to.y + 0.375}, to};
            if (random() % 2 == 0) path.erase(path.begin() + 1);
        }
        double const close = std::array{0.0, 0.3, 1.0, 3.0}[random() % 4];
        Joined const joined = Join(paths, close);
        SlowJoin const slow(paths, close);
        EXPECT_EQ(joined.open, slow.open) << round;
        EXPECT_EQ(joined.closed, slow.closed) << round;
    }
}

}  // namespace
}  // namespace varnet
