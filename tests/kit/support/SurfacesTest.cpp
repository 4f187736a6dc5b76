// Surfaces at the limits of their rules, and supports whose settings are no numbers.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "kit/part/PartChecks.h"
#include "varnet/Supports.h"

namespace varnet {
namespace {

// Two squares of 10 mm one above the other, facing along x; the upper one leans back by so much.
Part Wall(double lean) {
    std::vector<Point3> const points{{0, 0, 0},  {0, 10, 0},      {0, 10, 10},
                                     {0, 0, 10}, {-lean, 10, 20}, {-lean, 0, 20}};
    std::vector<Triangle> const triangles{{0, 1, 2}, {0, 2, 3}, {3, 2, 4}, {3, 4, 5}};
    IntakeSettings asItIs;
    asItIs.heal = false;
    return Part(points, triangles, asItIs);
}

TEST(Surfaces, OctantsCountANormalThatRisesByLessThanATenthAsUpright) {
    // 0.95 in 10 rises by 0.0946, 1.05 by 0.1044.
    EXPECT_EQ(Surfaces(Wall(0.95), SurfaceRule::kOctants).all.size(), 1u);
    EXPECT_EQ(Surfaces(Wall(1.05), SurfaceRule::kOctants).all.size(), 2u);
    EXPECT_EQ(Surfaces(Wall(-0.95), SurfaceRule::kOctants).all.size(), 1u);
    EXPECT_EQ(Surfaces(Wall(-1.05), SurfaceRule::kOctants).all.size(), 2u);
}

TEST(Surfaces, EachRuleMeasuresAreasAndRims) {
    for (SurfaceRule const rule : {SurfaceRule::kNormals, SurfaceRule::kOctants, SurfaceRule::kShells}) {
        Surfaces const surfaces(Wall(0.0), rule);
        ASSERT_EQ(surfaces.all.size(), 1u);
        EXPECT_EQ(surfaces.all[0].facets, 4);
        EXPECT_NEAR(surfaces.all[0].area, 200.0, 1e-4);
        EXPECT_NEAR(surfaces.all[0].rimLength, 60.0, 1e-9);
        EXPECT_EQ(surfaces.ofTriangle, std::vector<std::int32_t>(4, 0));
    }
}

TEST(Surfaces, EightColoursComeInTurn) {
    shapes::Mesh mesh;
    for (int i = 0; i < 17; ++i)
        shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 3.0f * static_cast<float>(i), 0, 0));
    Surfaces const surfaces(PartOf(mesh), SurfaceRule::kShells);
    ASSERT_EQ(surfaces.all.size(), 17u);
    std::set<std::uint32_t> colors;
    for (std::size_t i = 0; i < 17; ++i) {
        colors.insert(surfaces.all[i].color);
        EXPECT_EQ(surfaces.all[i].color, surfaces.all[i % 8].color) << i;
        EXPECT_LE(surfaces.all[i].color, 0xFFFFFFu);
    }
    EXPECT_EQ(colors.size(), 8u);
}

TEST(SupportLimits, LengthsThatAreNoNumbersAreRefusedByName) {
    Part const part = PartOf(shapes::Cube(10.0f));
    struct Length {
        double SupportSettings::*field;
        char const* says;
    };
    for (Length const& length :
         {Length{&SupportSettings::minArea, "the least area must be 0 or more"},
          Length{&SupportSettings::down, "the height of solids must be 0 or more"},
          Length{&SupportSettings::edgeLength, "the length of edges must be 0 or more"},
          Length{&SupportSettings::stroke, "the width of a stroke must be 0 or more"}}) {
        for (double const wrong : {HUGE_VAL, static_cast<double>(NAN), -1.0}) {
            SupportSettings settings;
            settings.*length.field = wrong;
            try {
                Supports const supports(part, settings);
                ADD_FAILURE() << length.says;
            } catch (Error const& error) {
                EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
                EXPECT_STREQ(error.what(), length.says);
            }
        }
    }
}

// A board of 16 square mm in the air.
TEST(SupportLimits, ARegionAsLargeAsAStrokeSquaredIsNotSmall) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(4.0f), 20, 0, 5));
    SupportSettings settings;
    settings.stroke = 4.0;
    EXPECT_EQ(Supports(PartOf(mesh), settings).SmallRegions(), 0);
    settings.stroke = 4.01;
    EXPECT_EQ(Supports(PartOf(mesh), settings).SmallRegions(), 1);
    settings.stroke = 1000.0;
    EXPECT_EQ(Supports(PartOf(mesh), settings).SmallRegions(), 1) << "what rests on the plate is none";
}

TEST(SupportLimits, APartWithoutFacetsNeedsNothing) {
    Supports const none{Part()};
    EXPECT_TRUE(none.Overhangs().empty());
    EXPECT_TRUE(none.Solids().empty());
}

// What has nothing to do is done before anybody could stop it.
TEST(SupportLimits, APartWithoutFacetsIsNotStopped) {
    SupportSettings settings;
    settings.progress = [](double) { return false; };
    EXPECT_NO_THROW(Supports(Part(), settings));
}

TEST(SupportLimits, AStopIsHeardAfterEachFifthOfTheWay) {
    Part const part = PartOf(shapes::Moved(shapes::Cube(4.0f), 0, 0, 5.0f));
    std::vector<double> shares;
    SupportSettings settings;
    settings.progress = [&shares](double share) {
        shares.push_back(share);
        return true;
    };
    Supports const supports(part, settings);
    ASSERT_FALSE(shares.empty());
    EXPECT_EQ(shares.back(), 1.0);
    double before = 0.0;
    for (double const share : shares) {
        EXPECT_GT(share, before);
        EXPECT_LT(share - before, 0.21);
        before = share;
    }
    for (std::size_t n = 1; n <= shares.size(); ++n) {
        std::size_t told = 0;
        settings.progress = [&told, n](double) { return ++told < n; };
        try {
            Supports const stopped(part, settings);
            ADD_FAILURE() << n;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
        }
        EXPECT_EQ(told, n);
    }
}

// Two boards at different heights beside a cube on the plate.
TEST(SupportLimits, SolidsDownToThePlateAreOfWantedRegionsAlone) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    for (int i = 1; i <= 2; ++i)
        shapes::Append(mesh, shapes::Moved(shapes::Cube(4.0f), 20.0f * static_cast<float>(i), 0,
                                           5.0f * static_cast<float>(i)));
    for (double const down : {0.0, 1.0}) {
        SupportSettings settings;
        settings.down = down;
        Supports const supports(PartOf(mesh), settings);
        ASSERT_EQ(supports.Overhangs().size(), 3u);
        ASSERT_EQ(supports.Solids().size(), 2u);
        for (SupportSolid const& solid : supports.Solids()) {
            Box3 box;
            for (Point3 const& p : solid.points) box.Add(p);
            double const top = box.min.x == 20.0 ? 5.0 : 10.0;
            EXPECT_EQ(box.max.z, top);
            EXPECT_EQ(box.min.z, down == 0.0 ? 0.0 : top - down);
        }
    }
}

}  // namespace
}  // namespace varnet
