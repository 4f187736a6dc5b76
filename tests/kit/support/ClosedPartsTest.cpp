// Closed parts whose solids have walls, edges and corners in common.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <random>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "Shapes.h"
#include "kit/part/PartChecks.h"
#include "part/FlatMesh.h"
#include "varnet/Supports.h"

namespace varnet {
namespace {

// Tetrahedra that face outward, with corners on a lattice of a few points, upright or turned in space: they
// have walls, edges and corners in common in every way, and lie in each other.
class Lattice {
public:
    Lattice(std::mt19937& random, std::size_t count, bool isTurned) {
        auto const place = [&random, isTurned] {
            auto const step = [&random] { return static_cast<double>(random() % 3); };
            double const x = step();
            double const y = step();
            double const z = step();
            if (!isTurned) return Point3{x, y, z};
            // Rounded as a file holds it: the same for equal points, and out of the planes of others.
            Point3 const p{0.8 * x - 0.6 * y, 0.36 * x + 0.48 * y - 0.8 * z, 0.48 * x + 0.64 * y + 0.6 * z};
            return Point3{static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
        };
        while (m_Solids.size() < count) {
            Solid p{place(), place(), place(), place()};
            double const volume = Dot(p[1] - p[0], Cross(p[2] - p[0], p[3] - p[0]));
            if (std::fabs(volume) < 0.5) continue;
            if (volume < 0.0) std::swap(p[0], p[1]);
            m_Solids.push_back(p);
        }
    }
    shapes::Mesh Facets() const {
        shapes::Mesh mesh;
        for (Solid const& p : m_Solids) {
            std::array<shapes::Corner, 4> at;
            for (std::size_t i = 0; i < 4; ++i) {
                at[i] = {static_cast<float>(p[i].x), static_cast<float>(p[i].y), static_cast<float>(p[i].z)};
            }
            mesh.insert(
                mesh.end(),
                {{at[0], at[2], at[1]}, {at[0], at[1], at[3]}, {at[1], at[2], at[3]}, {at[0], at[3], at[2]}});
        }
        return mesh;
    }
    // Of what lies in any of them at a height, by so many lines along x between two y.
    double AreaAt(double z, double first, double last, int lines) const {
        double const width = (last - first) / lines;
        double area = 0.0;
        for (int line = 0; line < lines; ++line) {
            std::vector<std::pair<double, double>> spans;
            for (Solid const& solid : m_Solids) {
                if (auto const span = SpanOf(solid, first + (line + 0.5) * width, z)) spans.push_back(*span);
            }
            std::sort(spans.begin(), spans.end());
            double end = -10.0;
            for (auto const& [from, to] : spans) {
                area += std::max(0.0, to - std::max(from, end)) * width;
                end = std::max(end, to);
            }
        }
        return area;
    }

private:
    using Solid = std::array<Point3, 4>;

    // Where the line at y and z passes through: its crossings with the lines between corners of the section.
    static std::optional<std::pair<double, double>> SpanOf(Solid const& solid, double y, double z) {
        std::vector<Point2> section;
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t k = i + 1; k < 4; ++k) {
                Point3 const& a = solid[i];
                Point3 const& b = solid[k];
                if ((a.z > z) == (b.z > z)) continue;
                double const share = (z - a.z) / (b.z - a.z);
                section.push_back({a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)});
            }
        }
        double from = 10.0;
        double to = -10.0;
        for (Point2 const& a : section) {
            for (Point2 const& b : section) {
                if ((a.y > y) == (b.y > y)) continue;
                double const x = a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x);
                from = std::min(from, x);
                to = std::max(to, x);
            }
        }
        if (from >= to) return std::nullopt;
        return std::pair(from, to);
    }

    std::vector<Solid> m_Solids;
};

// What is cut of a part into four layers: no path is open, and the areas are what lies in any of its solids.
void ExpectLayersOf(Part const& part, Lattice const& lattice) {
    Box3 const& box = part.Measures().box;
    SliceSettings settings;
    settings.layer = (box.max.z - box.min.z) / 4.0;
    settings.hatch = 0.0;
    settings.tolerance = 0.0;
    Slicer slicer(SlicerInputs(part), settings);
    double z = box.min.z + 0.5 * settings.layer;
    slicer.ForEachLayer([&](Layer const& layer) {
        EXPECT_NEAR(layer.Area(), lattice.AreaAt(z, box.min.y, box.max.y, 2000), 0.004) << z;
        z += settings.layer;
    });
    EXPECT_EQ(slicer.Report().openPaths, 0);
}

// Whatever they have in common, they leave no open edge and no open path.
TEST(ClosedParts, SolidsOnALatticeAreWhole) {
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        Lattice const lattice(random, 2 + random() % 9, round % 2 != 0);
        shapes::Mesh mesh = lattice.Facets();
        std::shuffle(mesh.begin(), mesh.end(), random);
        Part const part = PartOf(mesh);
        EXPECT_EQ(part.Report().openEdges, 0);
        Part repaired = part;
        RepairReport const report = repaired.Repair();
        EXPECT_EQ(report.turned + report.doubled + report.openEdgesAfter, 0);
        EXPECT_EQ(FacetsOf(repaired), FacetsOf(mesh));
        ExpectLayersOf(part, lattice);
        ASSERT_FALSE(::testing::Test::HasFailure());
    }
}

// Whether facets stand on the same three corners.
bool HasWallsInCommon(shapes::Mesh const& mesh) {
    std::set<std::set<std::tuple<float, float, float>>> seen;
    for (shapes::Triangle const& facet : mesh) {
        std::set<std::tuple<float, float, float>> corners;
        for (shapes::Corner const& c : facet) corners.emplace(c.x, c.y, c.z);
        if (!seen.insert(corners).second) return true;
    }
    return false;
}

// A facet that is turned is turned back, and nothing else, but for walls in common: one of two that face each
// other may be a copy that is turned.
TEST(ClosedParts, OfSolidsOnALatticeAFacetIsTurnedBack) {
    std::mt19937 random(3);
    int checked = 0;
    for (int round = 0; round < 1500; ++round) {
        SCOPED_TRACE(round);
        Lattice const lattice(random, 2 + random() % 9, round % 2 != 0);
        shapes::Mesh mesh = lattice.Facets();
        if (HasWallsInCommon(mesh)) continue;
        std::shuffle(mesh.begin(), mesh.end(), random);
        std::vector<Corners> const whole = Sorted(FacetsOf(mesh));
        shapes::Triangle& facet = mesh[random() % mesh.size()];
        std::swap(facet[0], facet[1]);
        Part part = PartOf(mesh);
        EXPECT_EQ(part.Repair().turned, 1);
        EXPECT_EQ(Sorted(FacetsOf(part)), whole);
        ++checked;
    }
    EXPECT_GT(checked, 500);
}

// Neither do they where vertices lie on edges: one facet in five is two.
TEST(ClosedParts, SolidsOnALatticeAreWholeInSpiteOfTJunctions) {
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        // Upright ones, whose points on edges are exact.
        Lattice const lattice(random, 2 + random() % 9, false);
        shapes::Mesh mesh;
        for (shapes::Triangle const& facet : lattice.Facets()) {
            if (random() % 5 != 0) {
                mesh.push_back(facet);
                continue;
            }
            std::size_t const k = random() % 3;
            shapes::Corner const& from = facet[k];
            shapes::Corner const& to = facet[(k + 1) % 3];
            shapes::Corner const& apex = facet[(k + 2) % 3];
            float const share = random() % 2 == 0 ? 0.5f : 0.75f;
            shapes::Corner const on{from.x + share * (to.x - from.x), from.y + share * (to.y - from.y),
                                    from.z + share * (to.z - from.z)};
            mesh.push_back({from, on, apex});
            mesh.push_back({on, to, apex});
        }
        std::shuffle(mesh.begin(), mesh.end(), random);
        Part const part = PartOf(mesh);
        EXPECT_EQ(part.Report().openEdges, 0);
        EXPECT_EQ(&part.AsSliced(), &part);
        ExpectLayersOf(part, lattice);
        ASSERT_FALSE(::testing::Test::HasFailure());
    }
}

}  // namespace
}  // namespace varnet
