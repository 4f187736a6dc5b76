#include "varnet/Supports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kit/part/PartChecks.h"
#include "support/Mushroom.h"

namespace varnet {
namespace {

std::vector<std::string> ReasonsOf(Supports const& supports) {
    std::vector<std::string> reasons;
    for (Overhang const& overhang : supports.Overhangs()) {
        reasons.push_back((overhang.supported ? "+ " : "- ") + overhang.why);
    }
    std::sort(reasons.begin(), reasons.end());
    return reasons;
}

Supports OfMushroom(double minArea) {
    SupportSettings settings;
    settings.minArea = minArea;
    return Supports(PartOf(Mushroom()), settings);
}

using Reasons = std::vector<std::string>;

TEST(SupportChoice, TheLeastAreaDropsWhatAWallHoldsAndKeepsAnEqualOne) {
    Supports const kept = OfMushroom(72.0);
    EXPECT_EQ(ReasonsOf(kept), (Reasons{"+ faces down", "- rests on the plate"}));
    EXPECT_EQ(kept.Solids().size(), 1u);
    Supports const dropped = OfMushroom(72.001);
    EXPECT_EQ(ReasonsOf(dropped),
              (Reasons{"- below the least area and held by a wall", "- rests on the plate"}));
    EXPECT_EQ(dropped.Solids().size(), 0u);
    for (Overhang const& overhang : kept.Overhangs()) {
        EXPECT_NEAR(overhang.projectedArea, overhang.supported ? 72.0 : 9.0, 1e-5);
        EXPECT_NEAR(overhang.area, overhang.projectedArea, 1e-5);
        EXPECT_EQ(overhang.box.min.z, overhang.supported ? 5.0 : 0.0);
        EXPECT_EQ(overhang.triangles.size(), overhang.supported ? 8u : 2u);
    }
}

// A cube in the air is small, but nothing else holds it.
TEST(SupportChoice, TheLeastAreaKeepsWhatHangsFree) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(2.0f), 20, 0, 5));
    SupportSettings settings;
    settings.minArea = 1000.0;
    Supports const supports(PartOf(mesh), settings);
    EXPECT_EQ(ReasonsOf(supports),
              (Reasons{"+ below the least area, but hangs free", "- rests on the plate"}));
    ASSERT_EQ(supports.Solids().size(), 1u);
    // A shaft from the cube's underside to the plate.
    Box3 box;
    for (Point3 const& p : supports.Solids()[0].points) box.Add(p);
    EXPECT_EQ(box.min.z, 0.0);
    EXPECT_EQ(box.max.z, 5.0);
    EXPECT_EQ(box.min.x, 20.0);
    EXPECT_EQ(box.max.x, 22.0);
}

// Up to a thousandth of a millimetre above the lowest point is on the plate.
TEST(SupportChoice, WhatIsAThousandthAboveThePlateRestsOnIt) {
    auto const count = [](double above) {
        Soup soup = SoupOf(shapes::Cube(10.0f));
        Soup const raised = SoupOf(shapes::Moved(shapes::Cube(10.0f), 20, 0, 0));
        auto const first = static_cast<std::int32_t>(soup.points.size());
        for (Point3 const& p : raised.points) soup.points.push_back({p.x, p.y, p.z + above});
        for (Triangle const& t : raised.triangles)
            soup.triangles.push_back({t[0] + first, t[1] + first, t[2] + first});
        IntakeSettings asItIs;
        asItIs.heal = false;
        return Supports(Part(soup.points, soup.triangles, asItIs)).Solids().size();
    };
    EXPECT_EQ(count(0.0), 0u);
    EXPECT_EQ(count(0.00099), 0u);
    EXPECT_EQ(count(0.00101), 1u);
}

TEST(SupportChoice, AKeelThatLiesOnThePlateNeedsNothingAndOneAboveItDoes) {
    Supports const lying(PartOf(Keel()));
    EXPECT_EQ(lying.Edges().size(), 0u);
    EXPECT_EQ(lying.Solids().size(), 0u);
    for (double const down : {0.0, 2.0}) {
        shapes::Mesh mesh = shapes::Moved(Keel(), 0, 0, 3);
        shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 20, 0, 0));
        SupportSettings settings;
        settings.down = down;
        Supports const hanging(PartOf(mesh), settings);
        ASSERT_EQ(hanging.Edges().size(), 1u);
        EXPECT_EQ(hanging.Edges()[0].points.size(), 2u);
        EXPECT_DOUBLE_EQ(hanging.Edges()[0].length, 4.0);
        EXPECT_EQ(hanging.Edges()[0].lowest, 3.0);
        EXPECT_EQ(hanging.Solids().size(), 1u) << down;
        settings.edgeLength = 4.0;
        EXPECT_EQ(Supports(PartOf(mesh), settings).Edges().size(), 0u) << "not longer than that";
        EXPECT_EQ(Supports(PartOf(mesh), settings).Solids().size(), 0u) << down;
    }
}

}  // namespace
}  // namespace varnet
