// Parts that are damaged in ways that leave their walls where they were: their layers are those of the whole
// part.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "Shapes.h"
#include "kit/part/Damaged.h"
#include "kit/part/PartChecks.h"
#include "varnet/Supports.h"

namespace varnet {
namespace {

std::vector<double> AreasOf(shapes::Mesh const& mesh) {
    Part const part = PartOf(mesh);
    SliceSettings settings;
    settings.layer = 0.7;
    settings.hatch = 0.0;
    Slicer slicer(SlicerInputs(part), settings);
    std::vector<double> areas;
    slicer.ForEachLayer([&areas](Layer const& layer) { areas.push_back(layer.Area()); });
    return areas;
}

void Turn(shapes::Triangle& facet) { std::swap(facet[1], facet[2]); }

// Touching at edges and in a face; with a hollow, and without; round ones.
std::vector<shapes::Mesh> Shapes() {
    shapes::Mesh touching = shapes::Cube(10.0f);
    shapes::Append(touching, shapes::Moved(shapes::Cube(10.0f), 10, 10, 0));
    shapes::Append(touching, shapes::Moved(shapes::Cube(10.0f), 20, 10, 0));
    shapes::Mesh apart = shapes::CubeInCube(true);
    shapes::Append(apart, shapes::Moved(shapes::Cube(7.0f), 40, 0, 0));
    return {shapes::Cube(10.0f),
            shapes::UvSphere(6, 12, 20),
            shapes::IcoSphere(6, 2),
            shapes::CubeInCube(false),
            shapes::CubeInCube(true),
            touching,
            apart};
}

class DamagedParts : public ::testing::Test {
protected:
    // damage(mesh, whole, random) of each shape, at several places, a number of times. Areas are right to
    // that share of them.
    template <class Damage>
    void ExpectWholeLayers(Damage const& damage, int rounds = 8, double share = 1e-6) {
        for (shapes::Mesh const& shape : Shapes()) {
            for (int round = 0; round < rounds; ++round) {
                auto const place = [this] { return 64.0f * (static_cast<float>(m_Random() % 5) - 2.0f); };
                shapes::Mesh const whole = shapes::Moved(shape, place(), place(), place());
                shapes::Mesh mesh = whole;
                damage(mesh, whole, m_Random);
                std::vector<double> const expected = AreasOf(whole);
                std::vector<double> const areas = AreasOf(mesh);
                ASSERT_EQ(areas.size(), expected.size());
                for (std::size_t i = 0; i < areas.size(); ++i)
                    ASSERT_NEAR(areas[i], expected[i], share * (1.0 + expected[i])) << "layer " << i + 1;
            }
        }
    }

    std::mt19937 m_Random{20261123};
};

TEST_F(DamagedParts, WithFacetsThatAreTurned) {
    ExpectWholeLayers([](shapes::Mesh& mesh, shapes::Mesh const&, std::mt19937& random) {
        for (shapes::Triangle& facet : mesh) {
            if (random() % 5 == 0) Turn(facet);
        }
    });
}

TEST_F(DamagedParts, WithLooseFacetsOnTheirWalls) {
    ExpectWholeLayers([](shapes::Mesh& mesh, shapes::Mesh const& whole, std::mt19937& random) {
        for (int n = 0; n < 3; ++n) {
            mesh.push_back(whole[random() % whole.size()]);
            if (random() % 2 == 0) Turn(mesh.back());
        }
    });
}

TEST_F(DamagedParts, WithBoth) {
    ExpectWholeLayers([](shapes::Mesh& mesh, shapes::Mesh const& whole, std::mt19937& random) {
        for (int n = 0; n < 2; ++n) {
            Turn(mesh[random() % whole.size()]);
            mesh.push_back(whole[random() % whole.size()]);
            Turn(mesh.back());
        }
    });
}

TEST_F(DamagedParts, InsideOutAsAWhole) {
    ExpectWholeLayers(
        [](shapes::Mesh& mesh, shapes::Mesh const&, std::mt19937&) { mesh = shapes::InsideOut(mesh); });
}

TEST_F(DamagedParts, InsideOutWithAFacetThatIsNot) {
    ExpectWholeLayers([](shapes::Mesh& mesh, shapes::Mesh const&, std::mt19937& random) {
        mesh = shapes::InsideOut(mesh);
        Turn(mesh[random() % mesh.size()]);
    });
}

// What is wrong with files comes together: each kind with each other one, in either order.
using Damage = void (*)(shapes::Mesh&, std::mt19937&);
constexpr std::string_view kTwice = "facets that stand there twice";
constexpr std::string_view kOnEdges = "vertices on edges";
constexpr std::string_view kSlivers = "facets without area";
constexpr std::pair<std::string_view, Damage> kDamages[] = {
    {"facets that are turned",
     [](shapes::Mesh& mesh, std::mt19937& random) {
         for (shapes::Triangle& facet : mesh) {
             if (random() % 12 == 0) Turn(facet);
         }
     }},
    {kTwice,
     [](shapes::Mesh& mesh, std::mt19937& random) {
         for (int n = 0; n < 3; ++n) mesh.push_back(mesh[random() % mesh.size()]);
     }},
    {"a facet and its opposite on a wall",
     [](shapes::Mesh& mesh, std::mt19937& random) {
         for (int n = 0; n < 2; ++n) {
             shapes::Triangle const facet = mesh[random() % mesh.size()];
             mesh.push_back(facet);
             mesh.push_back(facet);
             Turn(mesh.back());
         }
     }},
    {kOnEdges,
     [](shapes::Mesh& mesh, std::mt19937& random) {
         mesh = shapes::WithTJunctions(shapes::Shuffled(mesh, static_cast<std::uint32_t>(random())), 7);
     }},
    {"corners that lie apart",
     [](shapes::Mesh& mesh, std::mt19937& random) {
         for (shapes::Triangle& facet : mesh) {
             for (shapes::Corner& corner : facet) {
                 for (float* const x : {&corner.x, &corner.y, &corner.z})
                     *x += 1e-4f * (static_cast<float>(random() % 5) - 2.0f);
             }
         }
     }},
    {"a crack",
     [](shapes::Mesh& mesh, std::mt19937& random) {
         std::size_t const first = random() % mesh.size();
         for (std::size_t i = first; i < std::min(first + mesh.size() / 2, mesh.size()); ++i) {
             for (shapes::Corner& corner : mesh[i]) corner.y += 0.002f;
         }
     }},
    {kSlivers,
     [](shapes::Mesh& mesh, std::mt19937& random) {
         mesh = shapes::WithSlivers(shapes::Shuffled(mesh, static_cast<std::uint32_t>(random())), 9);
     }},
    {"all inside out", [](shapes::Mesh& mesh, std::mt19937&) { mesh = shapes::InsideOut(mesh); }},
};

TEST_F(DamagedParts, InTwoWaysAtOnce) {
    for (auto const& [first, damage] : kDamages) {
        for (auto const& [second, more] : kDamages) {
            // Copies that are divided otherwise are none any more.
            bool const isDivided =
                first == kOnEdges || second == kOnEdges || first == kSlivers || second == kSlivers;
            bool const isTwice = first == kTwice || second == kTwice;
            if (damage == more || (isDivided && isTwice)) continue;
            SCOPED_TRACE(std::string(first) + ", then " + std::string(second));
            ExpectWholeLayers(
                [&damage = damage, &more = more](shapes::Mesh& mesh, shapes::Mesh const&,
                                                 std::mt19937& random) {
                    damage(mesh, random);
                    more(mesh, random);
                },
                12, 2e-3);
        }
    }
}

}  // namespace
}  // namespace varnet
