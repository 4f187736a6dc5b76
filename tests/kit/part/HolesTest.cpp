// Holes: which rims there are, and what fills them.

#include "part/Holes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <set>

#include "kit/part/PartChecks.h"

namespace varnet {
namespace {

TEST(Repair, HolesUpToALengthAreFilledWithTheLeastArea) {
    // The lid of a box: two facets, in whichever diagonal, of the same area.
    shapes::Mesh const mesh = shapes::Without(shapes::Cube(10.0f), 0, 2);
    Part part = PartOf(mesh);
    ASSERT_EQ(part.Report().openEdges, 4);
    EXPECT_EQ(part.Repair(Filling(39.9)).holesFilled, 0);
    EXPECT_EQ(part.Report().openEdges, 4);
    RepairReport const report = part.Repair(Filling(40.1));
    EXPECT_EQ(report.holesFilled, 1);
    EXPECT_EQ(report.facetsAdded, 2);
    EXPECT_EQ(report.openEdgesBefore, 4);
    EXPECT_EQ(report.openEdgesAfter, 0);
    EXPECT_NEAR(part.Measures().volume, 1000.0, 1e-9);
    EXPECT_NEAR(part.Measures().area, 600.0, 1e-9);
    std::vector<Corners> const facets = FacetsOf(part);
    EXPECT_TRUE(std::equal(facets.begin(), facets.end() - 2, FacetsOf(mesh).begin()));
}

TEST(Repair, AHoleOfOneFacetIsFilledByIt) {
    for (std::size_t facet = 0; facet < 12; ++facet) {
        shapes::Mesh const cube = shapes::Cube(10.0f);
        Part part = PartOf(shapes::Without(cube, facet, 1));
        ASSERT_EQ(part.Report().openEdges, 3);
        EXPECT_EQ(part.Repair(Filling(100.0)).facetsAdded, 1);
        EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(FacetsOf(cube)));
    }
}

// Both diagonals of a square give the same area: the one that is tried first stays, so that each run gives
// it.
TEST(Repair, OfFillingsOfOneAreaTheFirstStays) {
    Soup soup;
    soup.points = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {5, 5, -10}};
    for (std::int32_t i = 0; i < 4; ++i) soup.triangles.push_back({(i + 1) % 4, i, 4});
    Part part(soup.points, soup.triangles);
    EXPECT_EQ(part.Repair(Filling(100.0)).facetsAdded, 2);
    // The rim begins with the first open edge, from (10, 0) to (0, 0), and is closed against its direction:
    // from (10, 10) over (0, 10) and (0, 0) to (10, 0). The second corner is the first that may stand in the
    // middle.
    std::vector<Corners> facets = FacetsOf(part);
    ASSERT_EQ(facets.size(), 6u);
    facets.erase(facets.begin(), facets.begin() + 4);
    std::vector<Corners> const expected{{{{0, 10, 0}, {10, 0, 0}, {10, 10, 0}}},
                                        {{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}}}};
    EXPECT_EQ(Sorted(facets), Sorted(expected));
}

// A rim of four with a corner drawn in, above a cone of walls that begin with the given one. Its lesser area,
// 30, is that of the diagonal from that corner; the other one gives 70. Tetrahedra put diagonals into the
// mesh.
class DrawnIn {
public:
    explicit DrawnIn(std::int32_t turn) {
        m_Soup.points = {{0, 0, 0}, {10, 0, 0}, {3, 3, 0}, {0, 10, 0}, {2, 2, -30}};
        for (std::int32_t i = 0; i < 4; ++i) {
            std::int32_t const a = (i + turn) % 4;
            m_Soup.triangles.push_back({(a + 1) % 4, a, 4});
        }
    }
    void AddTetrahedron(std::int32_t a, std::int32_t b, double z) {
        auto const n = static_cast<std::int32_t>(m_Soup.points.size());
        m_Soup.points.push_back({20, 20, z});
        m_Soup.points.push_back({21, 25, z + 1});
        for (Triangle const& t : {Triangle{a, b, n}, {a, n, n + 1}, {a, n + 1, b}, {b, n + 1, n}}) {
            m_Soup.triangles.push_back(t);
        }
    }
    double FilledArea() const {
        Part part(m_Soup.points, m_Soup.triangles);
        EXPECT_EQ(part.Report().openEdges, 4);
        double const before = part.Measures().area;
        RepairReport const report = part.Repair(Filling(100.0));
        EXPECT_EQ(report.facetsAdded, 2);
        EXPECT_EQ(report.openEdgesAfter, 0);
        return part.Measures().area - before;
    }

private:
    Soup m_Soup;
};

TEST(Repair, NoFillingHasAnEdgeOfTheMeshWhereAnotherIsPossible) {
    for (std::int32_t turn = 0; turn < 4; ++turn) {
        DrawnIn free(turn);
        EXPECT_NEAR(free.FilledArea(), 30.0, 1e-9) << turn;
        DrawnIn taken(turn);
        taken.AddTetrahedron(0, 2, 40);
        EXPECT_NEAR(taken.FilledArea(), 70.0, 1e-9) << turn;
        DrawnIn other(turn);
        other.AddTetrahedron(1, 3, 60);
        EXPECT_NEAR(other.FilledArea(), 30.0, 1e-9) << turn;
    }
}

// It is filled all the same, by the lesser area.
TEST(Repair, WhereEveryFillingHasAnEdgeOfTheMeshTheLeastAreaIsTaken) {
    for (std::int32_t turn = 0; turn < 4; ++turn) {
        DrawnIn rim(turn);
        rim.AddTetrahedron(0, 2, 40);
        rim.AddTetrahedron(1, 3, 60);
        EXPECT_NEAR(rim.FilledArea(), 30.0, 1e-9) << turn;
    }
}

// All triangulations of a polygon from i to j, the cheapest.
double LeastArea(std::vector<Point3> const& p, std::size_t i, std::size_t j) {
    if (j - i < 2) return 0.0;
    double least = HUGE_VAL;
    for (std::size_t k = i + 1; k < j; ++k) {
        auto const sub = [&](std::size_t m) {
            return Point3{p[m].x - p[i].x, p[m].y - p[i].y, p[m].z - p[i].z};
        };
        Point3 const u = sub(k);
        Point3 const v = sub(j);
        double const area =
            0.5 * std::hypot(u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x);
        least = std::min(least, area + LeastArea(p, i, k) + LeastArea(p, k, j));
    }
    return least;
}

TEST(Repair, TheFillingIsTheCheapestOfAll) {
    std::mt19937 random(9);
    std::uniform_real_distribution<double> any(-1.0, 1.0);
    for (int round = 0; round < 30; ++round) {
        // A cone of walls down to one point below a rim that goes up and down.
        std::size_t const n = 4 + random() % 6;
        Soup soup;
        for (std::size_t i = 0; i < n; ++i) {
            double const a = 2 * 3.14159265358979 * static_cast<double>(i) / static_cast<double>(n);
            soup.points.push_back({10 * std::cos(a), 10 * std::sin(a), 5 * any(random)});
        }
        std::vector<Point3> const rim = soup.points;
        soup.points.push_back({0, 0, -30});
        for (std::size_t i = 0; i < n; ++i) {
            soup.triangles.push_back({static_cast<std::int32_t>((i + 1) % n), static_cast<std::int32_t>(i),
                                      static_cast<std::int32_t>(n)});
        }
        Part part(soup.points, soup.triangles);
        double const walls = part.Measures().area;
        RepairReport const report = part.Repair(Filling(1000.0));
        EXPECT_EQ(report.openEdgesAfter, 0);
        EXPECT_EQ(report.facetsAdded, static_cast<std::int64_t>(n) - 2);
        EXPECT_NEAR(part.Measures().area - walls, LeastArea(rim, 0, n - 1), 1e-9);
    }
}

TEST(Repair, ALooseFacetGetsNoBack) {
    Part loose(std::vector<Point3>{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, std::vector<Triangle>{{0, 1, 2}});
    EXPECT_EQ(loose.Repair(Filling(100.0)).facetsAdded, 0);
    for (std::int32_t nBefore = 1; nBefore < 6; ++nBefore) {
        std::vector<Point3> points;
        std::vector<Triangle> triangles;
        for (std::int32_t i = 0; i <= nBefore; ++i) {
            double const x = 10.0 * i;
            points.insert(points.end(), {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}});
            triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
        }
        Part several(points, triangles);
        EXPECT_EQ(several.Repair(Filling(100.0)).facetsAdded, 0) << nBefore;
    }
}

TEST(Repair, HolesThatNobodyAskedToFillAreNotCounted) {
    Part part = PartOf(shapes::Without(shapes::Cube(10.0f), 0, 2));
    RepairReport const report = part.Repair();
    EXPECT_EQ(report.openEdgesBefore, 4);
    EXPECT_EQ(report.openEdgesAfter, 4);
    EXPECT_EQ(report.holesFilled, 0);
    EXPECT_EQ(report.holesLeft, 0);
    EXPECT_EQ(report.facetsAdded, 0);
    EXPECT_TRUE(report.notes.empty());
    RepairReport const asked = part.Repair(Filling(39.0));
    EXPECT_EQ(asked.holesLeft, 1);
    EXPECT_EQ(asked.notes, std::vector<std::string>{"1 rim longer than asked for stay open"});
}

// A cone over a rim of so many corners, on a square grid so that the rim's length is a whole number.
FlatMesh OpenCone(std::int32_t corners) {
    FlatMesh mesh;
    std::int32_t const quarter = corners / 4;
    for (std::int32_t i = 0; i < corners; ++i) {
        double const along = i % quarter;
        double const side = quarter;
        mesh.points.push_back(i < quarter       ? Point3{along, 0, 0}
                              : i < 2 * quarter ? Point3{side, along, 0}
                              : i < 3 * quarter ? Point3{side - along, side, 0}
                                                : Point3{0, side - along, 0});
    }
    mesh.points.push_back({0.5 * quarter, 0.5 * quarter, 10.0});
    for (std::int32_t i = 0; i < corners; ++i) mesh.triangles.push_back({i, (i + 1) % corners, corners});
    return mesh;
}

HoleCounts Fill(FlatMesh& mesh, double longest) {
    EdgeTable const edges = FindEdges(mesh.triangles, mesh.points.size(), Pace::None());
    return FillHoles(mesh, edges, longest, Pace::None());
}

TEST(FillHoles, ARimOfJustTheLengthIsFilledAndOneThatIsLongerIsNot) {
    FlatMesh filled = OpenCone(12);
    HoleCounts const at = Fill(filled, 12.0);
    EXPECT_EQ(at.filled, 1);
    EXPECT_EQ(at.facetsAdded, 10);
    EXPECT_EQ(FindEdges(filled.triangles, filled.points.size(), Pace::None()).open, 0);
    FlatMesh left = OpenCone(12);
    HoleCounts const below = Fill(left, std::nextafter(12.0, 0.0));
    EXPECT_EQ(below.filled, 0);
    EXPECT_EQ(below.tooLong, 1);
    EXPECT_EQ(left.triangles.size(), 12u);
}

// The lid is flat, and so are its parts: the area is that of the square, whatever the order.
TEST(FillHoles, ARimOfManyEdgesIsFilledInParts) {
    static_assert(kMostRimEdges == 400 && kCoarseCorners == 200);
    for (std::int32_t const corners : {400, 404, 408, 1000, 20000}) {
        FlatMesh mesh = OpenCone(corners);
        HoleCounts const counts = Fill(mesh, 1e9);
        EXPECT_EQ(counts.filled, 1);
        EXPECT_EQ(counts.facetsAdded, corners - 2);
        EXPECT_EQ(FindEdges(mesh.triangles, mesh.points.size(), Pace::None()).open, 0) << corners;
        double area = 0.0;
        Point3 sum;
        for (auto i = static_cast<std::size_t>(corners); i < mesh.triangles.size(); ++i) {
            auto const point = [&](std::size_t k) {
                return mesh.points[static_cast<std::size_t>(mesh.triangles[i][k])];
            };
            Point3 const normal = Cross(point(1) - point(0), point(2) - point(0));
            area += Length(normal) / 2.0;
            sum = sum + normal;
        }
        double const side = corners / 4;
        EXPECT_NEAR(area, side * side, 1e-9 * side * side) << corners;
        EXPECT_NEAR(sum.z, -2.0 * side * side, 2e-9 * side * side) << corners;
    }
}

// Facets of which no two have an edge in common: each is a hole of its own, though they touch at corners.
TEST(FillHoles, HolesThatTouchAtCornersAreFilledEachByItself) {
    std::mt19937 random(31);
    for (shapes::Mesh const& whole :
         {shapes::Cube(10.0f), shapes::IcoSphere(10.0, 2), shapes::Torus(10.0, 3.0, 20, 12)}) {
        Part const closed = PartOf(whole);
        int checked = 0;
        for (int round = 0; round < 20; ++round) {
            std::vector<std::size_t> order(whole.size());
            std::iota(order.begin(), order.end(), 0u);
            std::shuffle(order.begin(), order.end(), random);
            std::set<std::pair<std::int32_t, std::int32_t>> rims;
            shapes::Mesh damaged;
            std::size_t const most = std::max<std::size_t>(1, whole.size() / (2 + random() % 30));
            std::size_t holes = 0;
            for (std::size_t const i : order) {
                Triangle const& t = closed.Triangles()[i];
                std::array<std::pair<std::int32_t, std::int32_t>, 3> sides;
                for (std::size_t k = 0; k < 3; ++k) sides[k] = std::minmax({t[k], t[(k + 1) % 3]});
                bool const isFree = std::none_of(sides.begin(), sides.end(),
                                                 [&](auto const& side) { return rims.contains(side); });
                if (holes < most && isFree) {
                    ++holes;
                    rims.insert(sides.begin(), sides.end());
                } else {
                    damaged.push_back(whole[i]);
                }
            }
            Part part = PartOf(damaged);
            std::int64_t const open = part.Report().openEdges;
            EXPECT_EQ(open, static_cast<std::int64_t>(3 * holes));
            // Facets that hang together with no other get no back.
            bool const hasLoose = std::ranges::any_of(
                part.Bodies(), [](Body const& body) { return body.Triangles().size() == 1; });
            if (hasLoose) continue;
            ++checked;
            RepairReport const report = part.Repair(Filling(1000.0));
            EXPECT_EQ(report.facetsAdded, static_cast<std::int64_t>(holes));
            EXPECT_EQ(report.openEdgesAfter, 0);
            EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(FacetsOf(whole)));
        }
        EXPECT_GE(checked, 5) << whole.size();
    }
}

// Whatever is taken out of a closed shell: only facets that hang together with no other stay open, and what
// is filled has two facets less than its rims have edges.
TEST(FillHoles, AnyFacetsMayBeMissing) {
    std::mt19937 random(32);
    shapes::Mesh const whole = shapes::IcoSphere(10.0, 3);
    double const volume = PartOf(whole).Measures().volume;
    for (std::uint32_t percent = 1; percent < 100; percent += 7) {
        shapes::Mesh damaged;
        for (shapes::Triangle const& t : whole) {
            if (random() % 100 >= percent) damaged.push_back(t);
        }
        Part part = PartOf(damaged);
        std::int64_t const open = part.Report().openEdges;
        std::int64_t loose = 0;
        for (Body const& body : part.Bodies()) loose += body.Triangles().size() == 1;
        RepairReport const report = part.Repair(Filling(1e9));
        EXPECT_LE(report.openEdgesAfter, 3 * loose) << percent;
        EXPECT_EQ(report.openEdgesAfter, OpenEdgesOf(FacetsOf(part))) << percent;
        EXPECT_EQ(report.facetsAdded, open - report.openEdgesAfter - 2 * report.holesFilled) << percent;
        if (percent <= 8) {
            EXPECT_NEAR(part.Measures().volume, volume, 0.02 * volume) << percent;
        }
    }
}

// Two cones, one of which has twice as many corners at the rim: between them are cracks of three edges, all
// around. The corners between the others lie a little above the rim of the lower cone, or a little below it,
// where the cones overlap.
TEST(FillHoles, CracksAroundARimAreFilledEachByItself) {
    for (double const offset : {0.3, -0.3}) {
        constexpr std::int32_t kCorners = 6;
        FlatMesh mesh;
        for (std::int32_t i = 0; i < kCorners; ++i) {
            double const a = 2.0 * 3.14159265358979 * i / kCorners;
            double const b = 2.0 * 3.14159265358979 * (i + 1) / kCorners;
            mesh.points.push_back({5 * std::cos(a), 5 * std::sin(a), 0});
            mesh.points.push_back(
                {2.5 * (std::cos(a) + std::cos(b)), 2.5 * (std::sin(a) + std::sin(b)), offset});
        }
        mesh.points.push_back({0, 0, 50});
        mesh.points.push_back({0, 0, -50});
        constexpr std::int32_t kRim = 2 * kCorners;
        for (std::int32_t i = 0; i < kRim; ++i) mesh.triangles.push_back({i, (i + 1) % kRim, kRim});
        for (std::int32_t i = 0; i < kRim; i += 2) mesh.triangles.push_back({(i + 2) % kRim, i, kRim + 1});
        HoleCounts const counts = Fill(mesh, 1e9);
        EXPECT_EQ(counts.filled, kCorners) << offset;
        EXPECT_EQ(counts.facetsAdded, kCorners) << offset;
        EXPECT_EQ(FindEdges(mesh.triangles, mesh.points.size(), Pace::None()).open, 0) << offset;
    }
}

// Fans of two facets around one point, which touch there alone: each is closed, however many there are.
TEST(FillHoles, VeryManyRimsMayMeetAtAPoint) {
    FlatMesh mesh;
    mesh.points.push_back({0, 0, 0});
    constexpr std::int32_t kFans = 30000;
    for (std::int32_t i = 0; i < kFans; ++i) {
        double const a = 2.0 * 3.14159265358979 * i / kFans;
        double const z = i % 7;
        mesh.points.push_back({std::cos(a), std::sin(a), z});
        mesh.points.push_back({2 * std::cos(a), 2 * std::sin(a), z + 1});
        mesh.points.push_back({std::cos(a), std::sin(a), z + 2});
        mesh.triangles.push_back({0, 3 * i + 1, 3 * i + 2});
        mesh.triangles.push_back({0, 3 * i + 2, 3 * i + 3});
    }
    HoleCounts const counts = Fill(mesh, 1e9);
    EXPECT_EQ(counts.facetsAdded, 4 * kFans - 2 * counts.filled);
    EXPECT_EQ(FindEdges(mesh.triangles, mesh.points.size(), Pace::None()).open, 0);
}

// A rim at which facets contradict each other has no way around; the one beside it has.
TEST(FillHoles, EdgesOfFacetsThatContradictEachOtherAreInNoRim) {
    FlatMesh mesh = OpenCone(4);
    auto const first = static_cast<std::int32_t>(mesh.points.size());
    FlatMesh const other = OpenCone(8);
    for (Point3 const& p : other.points) mesh.points.push_back({p.x + 100.0, p.y, p.z});
    for (Triangle const& t : other.triangles)
        mesh.triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
    std::swap(mesh.triangles[1][1], mesh.triangles[1][2]);
    HoleCounts const counts = Fill(mesh, 1e9);
    EXPECT_EQ(counts.filled, 1);
    EXPECT_EQ(counts.facetsAdded, 6);
    EXPECT_EQ(counts.tooLong, 0);
}

}  // namespace
}  // namespace varnet
