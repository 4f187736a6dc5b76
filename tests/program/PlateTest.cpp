#include "Plate.h"

#include <gtest/gtest.h>

#include <numbers>

#include "Failure.h"
#include "Slices.h"
#include "Support.h"
#include "contours/Paths.h"

namespace {

TEST(Plate, LayersStandAtTheirUpperSidesAndAreCutAtHalfTheirHeight) {
    CSTLModel step;
    AddMesh(step, Step());
    SliceSettings settings;
    settings.dLayer = 2.0;
    Plate plate({&step}, {}, settings);
    ASSERT_EQ(5, plate.LayerCount());
    // Cut at 1, 3, 5, 7 and 9; at 5, the level of the step, is what lies just below it.
    double const expectedAreas[] = {30.0, 30.0, 30.0, 12.0, 12.0};
    for (int i = 0; i < 5; ++i) {
        std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
        EXPECT_DOUBLE_EQ(2.0 * (i + 1), pLayer->m_dZ);
        double dLength = 0.0;
        EXPECT_NEAR(expectedAreas[i], pLayer->GetAreaLength(dLength) / 2.0, 1e-9) << "layer " << i + 1;
    }
    EXPECT_EQ(5, plate.Figures().nLayers);
}

TEST(Plate, ALayerMoreIsMadeForMoreThanAMillionthOfALayer) {
    CSTLModel cube;
    AddMesh(cube, shapes::Cube(10.0f));
    auto const count = [&cube](double dLayer) {
        SliceSettings settings;
        settings.dLayer = dLayer;
        return Plate({&cube}, {}, settings).LayerCount();
    };
    EXPECT_EQ(50, count(0.2));
    EXPECT_EQ(100, count(0.1));
    EXPECT_EQ(4, count(3.0));
    EXPECT_EQ(1, count(10.0));
    EXPECT_EQ(1, count(1000.0));
}

TEST(Plate, WhatHasNoHeightOrTooManyLayersIsRefused) {
    CSTLModel empty;
    EXPECT_THROW(Plate({&empty}, {}, {}), Failure);
    EXPECT_THROW(Plate({}, {}, {}), Failure);
    CSTLModel flat;
    AddTriangle(flat, {0, 0, 1}, {4, 0, 1}, {0, 4, 1});
    EXPECT_THROW(Plate({&flat}, {}, {}), Failure);
    CSTLModel high;
    AddTriangle(high, {0, 0, 0}, {4, 0, 0}, {0, 4, 1e9});
    EXPECT_THROW(Plate({&high}, {}, {}), Failure);
}

TEST(Plate, VolumeOfTheLayersIsThatOfTheParts) {
    CSTLModel bracket, torus;
    AddMesh(bracket, shapes::Bracket());
    AddMesh(torus, shapes::Moved(shapes::Torus(20.0, 5.0, 96, 48), 100.0f, 0.0f, 5.0f));
    SliceSettings settings;
    settings.dTolerance = 0.001;
    Plate plate({&bracket, &torus}, {}, settings);
    while (plate.Figures().nLayers < plate.LayerCount()) plate.NextLayer();
    double const dVolume = bracket.Volume() + torus.Volume();
    EXPECT_NEAR(dVolume, plate.Figures().dVolume, 0.001 * dVolume);
    EXPECT_EQ(0u, plate.Figures().nOpenPaths);
}

TEST(Plate, PartsThatTouchOrOverlapAreFilledAsOne) {
    CSTLModel left, right;
    AddMesh(left, shapes::Box({0, 0, 0}, {10, 10, 1}));
    AddMesh(right, shapes::Box({8, 0, 0}, {20, 10, 1}));
    SliceSettings settings;
    settings.dLayer = 1.0;
    settings.dHatch = 1.0;
    settings.dAngle = 0.0;
    Plate plate({&left, &right}, {}, settings);
    std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
    EXPECT_EQ(2, pLayer->m_LoopList.GetCount());
    ASSERT_EQ(1u, HatchesOf(*pLayer).size());
    Segments const strokes = SegmentsOf(*HatchesOf(*pLayer)[0]);
    EXPECT_EQ(10u, strokes.size());
    EXPECT_EQ(10u, plate.Figures().nStrokes);
    EXPECT_NEAR(0.5, strokes[0].first.first, 1e-9);
    EXPECT_NEAR(19.5, strokes[0].second.first, 1e-9);
}

TEST(Plate, SupportsAreFilledInLayersOfEvenNumbersWhereThePartsAreNot) {
    CSTLModel part, support;
    AddMesh(part, shapes::Box({0, 0, 0}, {10, 10, 4}));
    AddMesh(support, shapes::Box({5, 0, 0}, {20, 10, 4}));
    SliceSettings settings;
    settings.dLayer = 1.0;
    settings.dHatch = 1.0;
    settings.dAngle = 0.0;
    Plate plate({&part}, {&support}, settings);
    for (int nLayer = 1; nLayer <= 4; ++nLayer) {
        std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
        EXPECT_EQ(1, pLayer->m_LoopList.GetCount());
        int nSupports = 0;
        for (CHatch const* pHatch : HatchesOf(*pLayer)) {
            if (pHatch->m_nID < 1000) {
                EXPECT_EQ(kFillHatch, pHatch->m_nID);
                continue;
            }
            EXPECT_EQ(kSupportHatch, pHatch->m_nID);
            for (auto const& [a, b] : SegmentsOf(*pHatch)) {
                EXPECT_GT(std::min(a.first, b.first), 10.0);
                EXPECT_LT(std::max(a.first, b.first), 20.0);
            }
            ++nSupports;
        }
        EXPECT_EQ(nLayer % 2 == 0 ? 1 : 0, nSupports);
    }
    EXPECT_EQ(20u, plate.Figures().nSupportStrokes);
}

TEST(Plate, FillTurnsByARightAngleFromLayerToLayer) {
    CSTLModel cube;
    AddMesh(cube, shapes::Cube(10.0f));
    SliceSettings settings;
    settings.dLayer = 1.0;
    settings.dAngle = 0.0;
    Plate plate({&cube}, {}, settings);
    for (int nLayer = 1; nLayer <= 4; ++nLayer) {
        std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
        Segment const stroke = SegmentsOf(*HatchesOf(*pLayer)[0])[0];
        auto const& [a, b] = stroke;
        double const dAlong = nLayer % 2 == 1 ? a.second - b.second : a.first - b.first;
        EXPECT_NEAR(0.0, dAlong, 1e-9);
    }
}

TEST(Plate, SupportsOfTheBracketKeepClearOfIt) {
    CSTLModel bracket;
    AddMesh(bracket, shapes::Bracket());
    SupportOptions const options;
    SupportPlan const plan = PlanSupport(bracket, options);
    std::vector<std::unique_ptr<CSTLModel>> const solids = BuildSolids(bracket, plan, options);
    std::vector<CSTLModel const*> supports;
    for (auto const& pSolid : solids) supports.push_back(pSolid.get());
    SliceSettings settings;
    settings.dLayer = 1.0;
    Plate plate({&bracket}, supports, settings);
    std::size_t nSeen = 0;
    for (int nLayer = 1; nLayer <= plate.LayerCount(); ++nLayer) {
        std::unique_ptr<CLayer> const pLayer = plate.NextLayer();
        for (CHatch const* pHatch : HatchesOf(*pLayer)) {
            if (pHatch->m_nID != kSupportHatch) continue;
            for (auto const& [a, b] : SegmentsOf(*pHatch)) {
                CPoint2D middle((a.first + b.first) / 2.0, (a.second + b.second) / 2.0);
                EXPECT_EQ(0, pLayer->IsInCounter(middle));
                ++nSeen;
            }
        }
    }
    EXPECT_GT(nSeen, 1000u);
    EXPECT_EQ(nSeen, plate.Figures().nSupportStrokes);
}

}  // namespace
