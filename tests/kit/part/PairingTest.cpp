// Facets about an edge, which facets hang together, and measures, by themselves.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

#include "part/Bodies.h"

namespace varnet {
namespace {

constexpr double kPi = std::numbers::pi;

// Facets about the edge from corner 0 to corner 1. Counter-clockwise about it, seen against its direction,
// the solid begins at a facet that runs from 1 to 0, and ends at one that runs from 0 to 1.
class Fan {
public:
    explicit Fan(Point3 const& along, double turned = 0.0) : m_Turned(turned) {
        double const length = Length(along);
        m_Along = (1.0 / length) * along;
        Point3 const other = std::fabs(m_Along.x) < 0.5 ? Point3{1, 0, 0} : Point3{0, 1, 0};
        m_X = Cross(other, m_Along);
        m_X = (1.0 / Length(m_X)) * m_X;
        m_Y = Cross(m_Along, m_X);
        m_Mesh.points = {{0, 0, 0}, along};
    }
    // Each at a corner of its own. The number of the facet is returned.
    std::int32_t Begins(double angle) { return Add(Corner(angle), true); }
    std::int32_t Ends(double angle) { return Add(Corner(angle), false); }
    std::int32_t Corner(double angle, double far = 3.0) {
        double const a = angle + m_Turned;
        m_Mesh.points.push_back((far * std::cos(a)) * m_X + (far * std::sin(a)) * m_Y + m_Along);
        return static_cast<std::int32_t>(m_Mesh.points.size()) - 1;
    }
    std::int32_t Add(std::int32_t corner, bool begins) {
        auto const facet = static_cast<std::int32_t>(m_Mesh.triangles.size());
        // The edge stands at each of the three places.
        Triangle t = begins ? Triangle{1, 0, corner} : Triangle{0, 1, corner};
        std::rotate(t.begin(), t.begin() + facet % 3, t.end());
        m_Mesh.triangles.push_back(t);
        return facet;
    }
    // By facet, the one across the edge, or -1.
    std::vector<std::int32_t> Pair() {
        m_Edges = FindEdges(m_Mesh.triangles, m_Mesh.points.size(), Pace::None());
        PairByAngle(m_Mesh, m_Edges);
        std::vector<std::int32_t> across;
        for (std::size_t i = 0; i < m_Mesh.triangles.size(); ++i) {
            std::int32_t const edge = EdgeOf(static_cast<std::int32_t>(i));
            std::int32_t const other = m_Edges.across[static_cast<std::size_t>(edge)];
            if (other >= 0) {
                EXPECT_EQ(m_Edges.across[static_cast<std::size_t>(other)], edge);
            }
            across.push_back(other < 0 ? -1 : other / 3);
        }
        return across;
    }
    // Facets whose edges were left over, in pairs.
    std::vector<std::int32_t> Twins() const {
        std::vector<std::int32_t> twins;
        for (std::int32_t const edge : m_Edges.twins) twins.push_back(edge / 3);
        return twins;
    }

private:
    std::int32_t EdgeOf(std::int32_t facet) const {
        for (std::int32_t k = 0; k < 3; ++k) {
            std::int32_t const edge = 3 * facet + k;
            if (StartOf(m_Mesh.triangles, edge) + EndOf(m_Mesh.triangles, edge) == 1) return edge;
        }
        return -1;
    }
    double m_Turned;
    Point3 m_Along;
    Point3 m_X;
    Point3 m_Y;
    FlatMesh m_Mesh;
    EdgeTable m_Edges;
};

using Across = std::vector<std::int32_t>;

// Edges along each axis, both ways, and across.
std::vector<Point3> Directions() {
    return {{0, 0, 10}, {0, 0, -10}, {0, 10, 0},  {0, -10, 0}, {10, 0, 0},  {-10, 0, 0},
            {5, 5, 0},  {5, 0, 5},   {0, -5, 5},  {3, 3, 3},   {1, 2, 3},   {3, 2, 1},
            {2, 1, 3},  {-2, 3, 1},  {0.1, 9, 9}, {9, 0.1, 9}, {9, 9, -0.1}};
}

TEST(PairByAngle, WedgesArePairedWithTheirOwnSidesWhereverTheCircleBegins) {
    for (Point3 const& along : Directions()) {
        for (int turn = 0; turn < 24; ++turn) {
            Fan fan(along, turn * kPi / 12.0);
            // From 10 to 80 degrees, from 100 to 170, and from 190 to 350.
            Across expected(6);
            auto const pair = [&](std::int32_t a, std::int32_t b) {
                expected[static_cast<std::size_t>(a)] = b;
                expected[static_cast<std::size_t>(b)] = a;
            };
            std::int32_t const a = fan.Begins(10 * kPi / 180);
            std::int32_t const c = fan.Begins(190 * kPi / 180);
            std::int32_t const b = fan.Ends(170 * kPi / 180);
            pair(a, fan.Ends(80 * kPi / 180));
            pair(fan.Begins(100 * kPi / 180), b);
            pair(c, fan.Ends(350 * kPi / 180));
            ASSERT_EQ(fan.Pair(), expected) << along.x << " " << along.y << " " << along.z << " " << turn;
        }
    }
}

TEST(PairByAngle, OneWedgeInAnotherIsPairedWithItself) {
    for (int turn = 0; turn < 24; ++turn) {
        Fan fan({0, 0, 10}, turn * kPi / 12.0);
        fan.Begins(0.5);  // 0
        fan.Ends(1.5);    // 1
        fan.Begins(1.0);  // 2
        fan.Ends(2.0);    // 3
        EXPECT_EQ(fan.Pair(), (Across{3, 2, 1, 0})) << turn;
        EXPECT_TRUE(fan.Twins().empty());
    }
}

TEST(PairByAngle, SolidsThatTouchUpToAMicroradianComeApart) {
    for (Point3 const& along : Directions()) {
        for (int turn = 0; turn < 24; ++turn) {
            for (double const overlap : {0.9e-6, 1.1e-6, -0.9e-6, 0.0}) {
                Fan fan(along, turn * kPi / 12.0);
                fan.Begins(0.0);          // 0
                fan.Begins(1.0);          // 1
                fan.Ends(1.0 + overlap);  // 2
                fan.Ends(2.0);            // 3
                Across const touching = {2, 3, 0, 1};
                Across const inside = {3, 2, 1, 0};
                ASSERT_EQ(fan.Pair(), overlap > 1e-6 ? inside : touching) << overlap << " " << turn;
            }
        }
    }
}

TEST(PairByAngle, SolidsThatTouchWhereTheCircleBeginsComeApart) {
    for (Point3 const& along : {Point3{0, 0, 10}, Point3{0, 0, -10}, Point3{0, 10, 0}, Point3{0, -10, 0},
                                Point3{10, 0, 0}, Point3{-10, 0, 0}}) {
        // For an edge along an axis, the circle begins at one of four directions.
        for (int quarter = 0; quarter < 4; ++quarter) {
            Fan fan(along, quarter * kPi / 2.0);
            fan.Begins(-1.0);     // 0
            fan.Begins(-0.4e-6);  // 1
            fan.Ends(0.4e-6);     // 2
            fan.Ends(1.0);        // 3
            EXPECT_EQ(fan.Pair(), (Across{2, 3, 0, 1})) << quarter;
        }
    }
}

TEST(PairByAngle, CoincidingFacetsArePairedInTheOrderOfTheirCopies) {
    for (int turn = 0; turn < 24; ++turn) {
        // A wedge three times; one behind it, twice, touches it. Corners are shared.
        Fan fan({0, 0, 10}, turn * kPi / 12.0);
        std::int32_t const first = fan.Corner(0.0);
        std::int32_t const middle = fan.Corner(1.0);
        std::int32_t const last = fan.Corner(2.0);
        fan.Add(first, true);    // 0
        fan.Add(first, true);    // 1
        fan.Add(middle, false);  // 2
        fan.Add(middle, true);   // 3
        fan.Add(first, true);    // 4
        fan.Add(middle, true);   // 5
        fan.Add(last, false);    // 6
        fan.Add(middle, false);  // 7
        fan.Add(middle, false);  // 8
        fan.Add(last, false);    // 9
        EXPECT_EQ(fan.Pair(), (Across{2, 7, 0, 6, 8, 9, 3, 1, 4, 5})) << turn;
    }
}

TEST(PairByAngle, FacetsAtOneAngleWithCornersOfTheirOwnAreTakenInTheirOrder) {
    for (int turn = 0; turn < 8; ++turn) {
        Fan fan({0, 0, 10}, turn * kPi / 4.0);
        std::int32_t const first = fan.Corner(0.0);
        std::int32_t const near = fan.Corner(1.0, 2.0);
        std::int32_t const far = fan.Corner(1.0, 5.0);
        fan.Add(first, true);  // 0
        fan.Add(first, true);  // 1
        fan.Add(far, false);   // 2
        fan.Add(near, false);  // 3
        EXPECT_EQ(fan.Pair(), (Across{2, 3, 0, 1})) << turn;
    }
}

TEST(PairByAngle, AShellAndItsBackAreClosedEach) {
    // All at one angle: what ends goes first, and the circle closes behind.
    for (int turn = 0; turn < 8; ++turn) {
        Fan fan({0, 0, 10}, turn * kPi / 4.0);
        std::int32_t const corner = fan.Corner(0.3);
        fan.Add(corner, true);
        fan.Add(corner, false);
        fan.Add(corner, false);
        fan.Add(corner, true);
        EXPECT_EQ(fan.Pair(), (Across{1, 0, 3, 2})) << turn;
    }
}

TEST(PairByAngle, WhatIsLeftOverIsPairedAsTwinsUpToAnOddOne) {
    Fan three({0, 0, 10});
    three.Begins(0.0);
    three.Ends(1.0);
    three.Begins(2.0);
    EXPECT_EQ(three.Pair(), (Across{1, 0, -1}));
    EXPECT_TRUE(three.Twins().empty());

    Fan four({0, 0, 10});
    four.Ends(0.0);
    four.Begins(0.5);
    four.Ends(1.0);
    four.Ends(2.0);
    EXPECT_EQ(four.Pair(), (Across{-1, 2, 1, -1}));
    ASSERT_EQ(four.Twins().size(), 2u);
    EXPECT_EQ(four.Twins()[0] + four.Twins()[1], 3);

    Fan five({0, 0, 10});
    for (int i = 0; i < 5; ++i) five.Begins(1.0 * i);
    EXPECT_EQ(five.Pair(), Across(5, -1));
    EXPECT_EQ(five.Twins().size(), 4u);
}

TEST(LabelBodies, AreThoseThatASlowWalkFindsInTheOrderOfTheirFirstFacets) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::size_t const facets = 1 + random() % 60;
        EdgeTable edges;
        edges.across.assign(3 * facets, -1);
        std::vector<std::vector<std::size_t>> beside(facets);
        auto const anyEdge = [&] { return static_cast<std::int32_t>(random() % (3 * facets)); };
        for (std::size_t i = 0; i < facets; ++i) {
            std::int32_t const a = anyEdge();
            std::int32_t const b = anyEdge();
            bool const twins = random() % 4 == 0;
            std::int32_t& acrossA = edges.across[static_cast<std::size_t>(a)];
            std::int32_t& acrossB = edges.across[static_cast<std::size_t>(b)];
            if (a == b || acrossA >= 0 || acrossB >= 0) continue;
            if (twins) {
                edges.twins.push_back(a);
                edges.twins.push_back(b);
            } else {
                acrossA = b;
                acrossB = a;
            }
            beside[static_cast<std::size_t>(a / 3)].push_back(static_cast<std::size_t>(b / 3));
            beside[static_cast<std::size_t>(b / 3)].push_back(static_cast<std::size_t>(a / 3));
        }
        std::vector<std::int32_t> expected(facets, -1);
        std::int32_t count = 0;
        for (std::size_t i = 0; i < facets; ++i) {
            if (expected[i] >= 0) continue;
            std::vector<std::size_t> waiting = {i};
            while (!waiting.empty()) {
                std::size_t const at = waiting.back();
                waiting.pop_back();
                if (expected[at] >= 0) continue;
                expected[at] = count;
                waiting.insert(waiting.end(), beside[at].begin(), beside[at].end());
            }
            ++count;
        }
        BodyLabels const labels = LabelBodies(facets, edges);
        ASSERT_EQ(labels.ofFacet, expected) << round;
        ASSERT_EQ(labels.count, count);
    }
    EXPECT_EQ(LabelBodies(0, EdgeTable()).count, 0);
}

// The corner of a cube cut off: three legs of 1, 2 and 4.
struct CutOff {
    std::vector<Point3> points = {{1, 0, 0}, {0, 2, 0}, {0, 0, 4}};
    std::vector<Triangle> triangles = {{0, 1, 2}};
};

TEST(Measure, OpenFacetsAreMeasuredAboutTheOriginAndClosedOnesAboutTheirFirstCorner) {
    CutOff const part;
    // A third of the height over the facet is the tetrahedron with the origin: 1 * 2 * 4 / 6.
    MeshMeasures const open = Measure(part.points, part.triangles, 3);
    EXPECT_DOUBLE_EQ(open.volume, 8.0 / 6.0);
    EXPECT_DOUBLE_EQ(open.area, std::sqrt(8.0 * 8.0 + 4.0 * 4.0 + 2.0 * 2.0) / 2.0);
    EXPECT_EQ(open.box.min, (Point3{0, 0, 0}));
    EXPECT_EQ(open.box.max, (Point3{1, 2, 4}));
    EXPECT_EQ(open.openEdges, 3);
    EXPECT_EQ(Measure(part.points, part.triangles, 1).volume, open.volume);
    EXPECT_EQ(Measure(part.points, part.triangles, 0).volume, 0.0);
    EXPECT_EQ(Measure(part.points, {}, 2).volume, 0.0);
    EXPECT_EQ(Measure(part.points, {}, 2).openEdges, 2);
    EXPECT_TRUE(Measure(part.points, {}, 2).box.IsEmpty());
}

TEST(Measure, TheSameComesFromSums) {
    FacetSums sums;
    sums.about = {1, 2, 3};
    sums.normals = {10, 20, 40};
    sums.area2 = 7.0;
    sums.volume6 = 12.0;
    CutOff const part;
    MeshMeasures const open = MeasuresFrom(sums, part.points, 5);
    EXPECT_EQ(open.area, 3.5);
    EXPECT_EQ(open.volume, (12.0 + 170.0) / 6.0);
    EXPECT_EQ(open.box.min, (Point3{0, 0, 0}));
    EXPECT_EQ(open.box.max, (Point3{1, 2, 4}));
    EXPECT_EQ(open.openEdges, 5);
    EXPECT_EQ(MeasuresFrom(sums, part.points, 0).volume, 2.0);
}

TEST(Measure, OfRandomFacetsIsTheSumOverTetrahedra) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(-5.0, 9.0);
    for (int round = 0; round < 50; ++round) {
        std::vector<Point3> points;
        for (int i = 0; i < 12; ++i) points.push_back({place(random), place(random), place(random)});
        std::vector<Triangle> triangles;
        double volume = 0.0;
        double area = 0.0;
        for (int i = 0; i < 9; ++i) {
            auto const corner = [&] { return static_cast<std::int32_t>(random() % 12); };
            Triangle const t = {corner(), corner(), corner()};
            triangles.push_back(t);
            Point3 const& a = points[static_cast<std::size_t>(t[0])];
            Point3 const& b = points[static_cast<std::size_t>(t[1])];
            Point3 const& c = points[static_cast<std::size_t>(t[2])];
            volume += (a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) +
                       a.z * (b.x * c.y - b.y * c.x)) /
                      6.0;
            // Heron's formula.
            double const p = std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
            double const q = std::hypot(b.x - c.x, b.y - c.y, b.z - c.z);
            double const r = std::hypot(c.x - a.x, c.y - a.y, c.z - a.z);
            double const s = (p + q + r) / 2.0;
            area += std::sqrt(std::max(0.0, s * (s - p) * (s - q) * (s - r)));
        }
        MeshMeasures const measures = Measure(points, triangles, 1);
        EXPECT_NEAR(measures.volume, volume, 1e-9);
        EXPECT_NEAR(measures.area, area, 1e-5);
    }
}

TEST(SureVolume, IsNoneUpToWhatRoundingLeaves) {
    MeshMeasures measures;
    measures.box = {{1, 1, 1}, {4, 5, 1}};  // 5 from corner to corner
    measures.area = 4.0;
    double const limit = 1e-9 * 4.0 * 5.0;
    for (double const sign : {1.0, -1.0}) {
        measures.volume = sign * limit;
        EXPECT_EQ(SureVolume(measures), 0.0);
        measures.volume = sign * std::nextafter(limit, 1.0);
        EXPECT_EQ(SureVolume(measures), measures.volume);
        measures.volume = sign * 100.0;
        EXPECT_EQ(SureVolume(measures), measures.volume);
    }
}

}  // namespace
}  // namespace varnet
