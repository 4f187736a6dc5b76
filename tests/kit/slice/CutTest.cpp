#include "slice/Cut.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace varnet {
namespace {

// The cut at z = 0.5 of facets that share the edge from (0, 0, 0) to (0, 0, 1): each has its third corner at
// z = 0, and is cut from the origin to half way there.
class Sheaf {
public:
    // The segment begins at the origin: it has the solid on its left.
    void Leaving(Point2 const& far) { Add(far, true); }
    // It ends there.
    void Arriving(Point2 const& far) { Add(far, false); }

    std::vector<std::vector<Point2>> Cut() const {
        Pulse pulse;
        FacetIndex const index({m_Points, m_Triangles, false, false}, {0.0, 1.0, 1, 1.0}, true, 1, pulse);
        Paths paths;
        CutSweep(index).Cut(1, paths, pulse);
        std::vector<std::vector<Point2>> found;
        for (std::size_t i = 0; i < paths.Count(); ++i) {
            EXPECT_EQ(paths.closed[i], 0);
            found.emplace_back(paths.At(i).begin(), paths.At(i).end());
        }
        return found;
    }

private:
    void Add(Point2 const& far, bool leaves) {
        auto const corner = static_cast<std::int32_t>(m_Points.size());
        m_Points.push_back({2.0 * far.x, 2.0 * far.y, 0.0});
        m_Triangles.push_back(leaves ? Triangle{0, corner, 1} : Triangle{0, 1, corner});
    }
    std::vector<Point3> m_Points{{0, 0, 0}, {0, 0, 1}};
    std::vector<Triangle> m_Triangles;
};

using Found = std::vector<std::vector<Point2>>;

TEST(CutSweep, TwoFacetsOfAnEdgeAreJoinedThere) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Arriving({0, 1});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {1, 0}}}));
}

// Counter-clockwise from a segment that leaves to one that arrives lies the solid.
TEST(CutSweep, FourFacetsOfAnEdgeAreJoinedAroundTheSolidBetweenThem) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Arriving({0, 1});
    sheaf.Leaving({-1, 0});
    sheaf.Arriving({0, -1});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {1, 0}}, {{0, -1}, {0, 0}, {-1, 0}}}));
}

// Facets on each other leave the edge in one direction: they count in the order of the mesh. The next one to
// arrive is joined with the last one that has left.
TEST(CutSweep, SegmentsOfOneDirectionAreTakenInTheOrderOfTheMesh) {
    Sheaf sheaf;
    sheaf.Leaving({1, 0});
    sheaf.Leaving({2, 0});
    sheaf.Arriving({0, 1});
    sheaf.Arriving({-1, 0});
    EXPECT_EQ(sheaf.Cut(), (Found{{{0, 1}, {0, 0}, {2, 0}}, {{-1, 0}, {0, 0}, {1, 0}}}));
}

// More than any sorting of a few leaves in place by chance.
TEST(CutSweep, ManySegmentsOfOneDirectionAreTakenInTheOrderOfTheMesh) {
    for (int const count : {3, 10, 40}) {
        Sheaf sheaf;
        Found expected;
        for (int i = 1; i <= count; ++i) sheaf.Leaving({static_cast<double>(i), 0});
        for (int i = 1; i <= count; ++i) {
            double const angle = std::numbers::pi * i / (count + 1);
            Point2 const far{std::cos(angle), std::sin(angle)};
            sheaf.Arriving(far);
            expected.push_back({far, {0, 0}, {static_cast<double>(count + 1 - i), 0}});
        }
        EXPECT_EQ(sheaf.Cut(), expected) << count;
    }
}

}  // namespace
}  // namespace varnet
