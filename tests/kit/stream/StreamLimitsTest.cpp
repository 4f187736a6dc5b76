// What is told of a part that is sliced from disk, to its limits: which facets count, which are sorted, and
// which way round it is.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "Shapes.h"
#include "TestFiles.h"
#include "varnet/StreamSlicer.h"

namespace varnet {
namespace {

class StreamLimits : public ::testing::Test {
protected:
    StreamReport ReportOf(shapes::Mesh const& mesh, StreamSettings settings = {}) const {
        settings.temp = folder.Path();
        settings.sortMemory = std::size_t{1} << 20;
        return StreamSlicer(folder.Write("part.stl", shapes::ToBinaryStl(mesh)), settings).Stream();
    }
    bool IsTurned(shapes::Mesh const& mesh) const { return ReportOf(mesh).turned; }

    TestFolder const folder;
};

shapes::Mesh InsideOut(shapes::Mesh mesh) {
    for (shapes::Triangle& triangle : mesh) std::swap(triangle[1], triangle[2]);
    return mesh;
}

// A cube without the two facets of one of its sides, the last one or the first.
shapes::Mesh OpenCube(float size, bool last = true) {
    shapes::Mesh mesh = shapes::Cube(size);
    mesh.erase(last ? mesh.end() - 2 : mesh.begin(), last ? mesh.end() : mesh.begin() + 2);
    return mesh;
}

// Two thirds of its volume lie about the origin where the open side is as far from there as it is long, and
// less than nothing where it is farther.
TEST_F(StreamLimits, AnOpenPartIsJudgedAlikeWhereverItStands) {
    for (float const far : {0.0f, 10.0f, -10.0f, 4096.0f, -4096.0f}) {
        for (bool const last : {true, false}) {
            shapes::Mesh const cup = shapes::Moved(OpenCube(2, last), far, -far, 3.0f + far);
            EXPECT_FALSE(IsTurned(cup)) << far;
            EXPECT_TRUE(IsTurned(InsideOut(cup))) << far;
        }
    }
}

// The first corner, from which volumes are measured, is the tip of a tent without a floor. About the middle
// of its box the tent has half its volume; from as far above its tip as that lies below, less than nothing.
TEST_F(StreamLimits, ATentWithoutAFloorIsJudgedFromItsMiddleWhicheverCornerComesFirst) {
    shapes::Corner const tip{0, 0, 1};
    std::array<shapes::Corner, 4> const floor{{{-9, -9, 0}, {9, -9, 0}, {9, 9, 0}, {-9, 9, 0}}};
    for (bool const tipFirst : {true, false}) {
        shapes::Mesh tent;
        for (std::size_t i = 0; i < 4; ++i) {
            shapes::Corner const& a = floor[i];
            shapes::Corner const& b = floor[(i + 1) % 4];
            tent.push_back(tipFirst ? shapes::Triangle{tip, a, b} : shapes::Triangle{a, b, tip});
        }
        for (float const far : {0.0f, 500.0f, -500.0f}) {
            shapes::Mesh const moved = shapes::Moved(tent, far, 2 * far, -far);
            EXPECT_FALSE(IsTurned(moved)) << tipFirst << far;
            EXPECT_TRUE(IsTurned(InsideOut(moved))) << tipFirst << far;
        }
    }
}

TEST_F(StreamLimits, ASheetHasNoInsideAndIsAsItStands) {
    shapes::Mesh const away{{{{5, 0, 0}, {5, 1, 0}, {5, 0, 1}}}};
    EXPECT_FALSE(IsTurned(away));
    EXPECT_FALSE(IsTurned(InsideOut(away)));
    shapes::Mesh const throughOrigin{{{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}}};
    EXPECT_FALSE(IsTurned(throughOrigin));
    EXPECT_FALSE(IsTurned(InsideOut(throughOrigin)));
}

// How far the directed areas of an open part are from nothing is held against its area, and not against a
// number.
TEST_F(StreamLimits, AnOpenPartOfMicronsIsOpenAsALargeOneIs) {
    for (float const size : {0x1p-14f, 1.0f, 0x1p14f}) {
        shapes::Mesh const cup = shapes::Moved(OpenCube(size), 50 * size, 50 * size, 50 * size);
        EXPECT_FALSE(IsTurned(cup)) << size;
        EXPECT_TRUE(IsTurned(InsideOut(cup))) << size;
    }
}

// The directed areas of a closed part add up to nothing, wherever it stands.
TEST_F(StreamLimits, AClosedPartIsJudgedByItsVolumeFarFromTheOrigin) {
    for (float const far : {0.0f, 1000.0f, -1000.0f}) {
        shapes::Mesh const box = shapes::Moved(shapes::Cube(2), far, -far, 3.0f);
        EXPECT_FALSE(IsTurned(box));
        EXPECT_TRUE(IsTurned(InsideOut(box)));
    }
    shapes::Mesh both{{{{5, 0, 0}, {5, 1, 0}, {5, 0, 1}}}};
    both.push_back(InsideOut(both)[0]);
    EXPECT_FALSE(IsTurned(both)) << "without a volume it is as it stands";
}

TEST_F(StreamLimits, FacetsWithTwoEqualCornersAreCountedAndThoseOnALineToo) {
    shapes::Mesh mesh = shapes::Cube(10);
    mesh.push_back({{{1, 1, 1}, {1, 1, 1}, {2, 2, 3}}});
    mesh.push_back({{{2, 2, 3}, {1, 1, 1}, {1, 1, 1}}});
    mesh.push_back({{{1, 1, 1}, {2, 2, 3}, {1, 1, 1}}});
    mesh.push_back({{{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}});
    StreamReport const report = ReportOf(mesh);
    EXPECT_EQ(report.facetsInFile, 16);
    EXPECT_EQ(report.facetsRead, 16);
    EXPECT_EQ(report.degenerate, 3);
    EXPECT_EQ(report.collinear, 1);
    EXPECT_EQ(report.notFinite, 0);
}

// The legs of a right angle, and a little slope that brings the doubled area to the limit, to the last bit.
TEST_F(StreamLimits, AFacetOfTheLimitsAreaIsOnALineAndALargerOneIsNot) {
    constexpr float kLeg = 0x1.4f8b9cp-17f;
    constexpr float kOther = 0x1.4f8b14p-17f;
    constexpr float kSlope = 0x1.b4eec4p-29f;
    auto const doubled = [](float z) {
        double const across = double{kLeg} * double{z};
        double const along = double{kLeg} * double{kOther};
        return std::sqrt(across * across + along * along);
    };
    float const larger = 1.01f * kSlope;
    ASSERT_EQ(doubled(kSlope), 1e-10);
    ASSERT_GT(doubled(larger), 1e-10);
    EXPECT_EQ(ReportOf({{{{0, 0, 0}, {kLeg, 0, 0}, {0, kOther, kSlope}}}}).collinear, 1);
    EXPECT_EQ(ReportOf({{{{0, 0, 0}, {kLeg, 0, 0}, {0, kOther, larger}}}}).collinear, 0);
}

TEST_F(StreamLimits, AnyCornerWithoutAPlaceLeavesAFacetOut) {
    shapes::Mesh mesh = shapes::Cube(10);
    for (std::size_t corner = 0; corner < 3; ++corner) {
        shapes::Triangle bad{{{1, 1, 1}, {2, 1, 1}, {1, 2, 1}}};
        bad[corner].z = std::numeric_limits<float>::infinity();
        mesh.push_back(bad);
    }
    EXPECT_EQ(ReportOf(mesh).notFinite, 3);
    EXPECT_EQ(ReportOf(mesh).degenerate, 0);
}

// Two boxes one on the other, of five layers each: sides are sorted, floors and lids are in no layer.
TEST_F(StreamLimits, FacetsOfTheRangeAloneAreSorted) {
    shapes::Mesh mesh = shapes::Box({0, 0, 0}, {4, 4, 5});
    shapes::Append(mesh, shapes::Box({0, 0, 5}, {2, 2, 10}));
    auto const sorted = [&](int first, int last) {
        StreamSettings settings;
        settings.slice.layer = 1.0;
        settings.slice.firstLayer = first;
        settings.slice.lastLayer = last;
        StreamReport const report = ReportOf(mesh, settings);
        EXPECT_EQ(report.temporaryBytes, 40u * static_cast<std::uint64_t>(report.facetsSorted));
        return report.facetsSorted;
    };
    EXPECT_EQ(sorted(1, 10), 16);
    EXPECT_EQ(sorted(1, 4), 8);
    EXPECT_EQ(sorted(1, 5), 8);
    EXPECT_EQ(sorted(5, 5), 8);
    EXPECT_EQ(sorted(5, 6), 16);
    EXPECT_EQ(sorted(6, 6), 8);
    EXPECT_EQ(sorted(7, 10), 8);
}

TEST_F(StreamLimits, ScaleAndMemoryAreFineToTheirEnds) {
    std::filesystem::path const file = folder.Write("part.stl", shapes::ToBinaryStl(shapes::Cube(10)));
    auto const isFine = [&](double scale, std::size_t memory) {
        StreamSettings settings;
        settings.temp = folder.Path();
        settings.scale = scale;
        settings.sortMemory = memory;
        try {
            StreamSlicer const slicer(file, settings);
            return true;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kArgument);
            return false;
        }
    };
    std::size_t const least = std::size_t{1} << 20;
    std::size_t const most = std::size_t{1} << 34;
    EXPECT_TRUE(isFine(1.0, least));
    EXPECT_FALSE(isFine(1.0, least - 1));
    EXPECT_TRUE(isFine(1.0, most));
    EXPECT_FALSE(isFine(1.0, most + 1));
    EXPECT_TRUE(isFine(0.5, least));
    for (double const scale : {-1.0, 0.0, static_cast<double>(NAN), HUGE_VAL})
        EXPECT_FALSE(isFine(scale, least));
}

}  // namespace
}  // namespace varnet
