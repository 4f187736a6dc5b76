// The bytes of what is written, what a header may be, what is told of what was lost, and where a part is
// moved.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "PartChecks.h"
#include "TestFiles.h"

namespace varnet {
namespace {

Part AsItIs(std::vector<Point3> const& points, std::vector<Triangle> const& triangles) {
    IntakeSettings settings;
    settings.heal = false;
    return Part(points, triangles, settings);
}

template <class Number>
void Add(std::string& bytes, Number number) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof number);
}

// Two facets of a square of two millimetres, one after the other: the second one looks down.
std::vector<Point3> const kSquare = {{0, 0, 1}, {2, 0, 1}, {0, 2, 1}, {2, 2, 1}};
std::vector<Triangle> const kFacets = {{0, 1, 2}, {1, 2, 3}};

TEST(WriteBytes, ABinaryStlHasNormalsCornersAndZeros) {
    TestFolder const folder;
    AsItIs(kSquare, kFacets).Write(folder / "a.stl");
    std::string expected = "Varnet64" + std::string(72, '\0');
    Add(expected, std::uint32_t{2});
    for (float const f : {0.f, 0.f, 1.f, 0.f, 0.f, 1.f, 2.f, 0.f, 1.f, 0.f, 2.f, 1.f}) Add(expected, f);
    expected.append(2, '\0');
    for (float const f : {0.f, 0.f, -1.f, 2.f, 0.f, 1.f, 0.f, 2.f, 1.f, 2.f, 2.f, 1.f}) Add(expected, f);
    expected.append(2, '\0');
    EXPECT_EQ(ReadBytes(folder / "a.stl"), expected);
    // The first looks along x; the second has no area, and so no normal.
    AsItIs({{0, 0, 0}, {0, 3, 4}, {0, 6, 8}, {0, 3, 0}}, {{0, 1, 3}, {0, 1, 2}}).Write(folder / "b.stl");
    std::string const bytes = ReadBytes(folder / "b.stl");
    float normals[6];
    std::memcpy(normals, bytes.data() + 84, 12);
    std::memcpy(normals + 3, bytes.data() + 134, 12);
    EXPECT_EQ(normals[0], -1.f);
    for (std::size_t i = 1; i < 6; ++i) EXPECT_EQ(normals[i], 0.f) << i;
}

TEST(WriteBytes, APlainCsmHasPointsAndTheirNumbers) {
    TestFolder const folder;
    AsItIs(kSquare, kFacets).Write(folder / "a.csm", MeshFormat::kPlainCsm);
    std::string expected = "Quarnell Ziped Model" + std::string(60, '\0');
    Add(expected, std::uint32_t{4});
    for (float const f : {0.f, 0.f, 1.f, 2.f, 0.f, 1.f, 0.f, 2.f, 1.f, 2.f, 2.f, 1.f}) Add(expected, f);
    Add(expected, std::uint32_t{2});
    for (std::uint32_t const n : {0, 1, 2, 1, 2, 3}) Add(expected, n);
    EXPECT_EQ(ReadBytes(folder / "a.csm"), expected);
}

// Blocks are of 65536 bytes: 1309 records fill one but for two bytes behind the header.
TEST(WriteBytes, EveryFacetIsThereWhereverABlockEnds) {
    TestFolder const folder;
    Part const part = PartOf(shapes::UvSphere(10, 100, 60));
    part.Write(folder / "a.stl");
    std::string const bytes = ReadBytes(folder / "a.stl");
    ASSERT_EQ(bytes.size(), 84 + 50 * part.Triangles().size());
    for (std::size_t i = 0; i < part.Triangles().size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            float corner[3];
            std::memcpy(corner, bytes.data() + 84 + 50 * i + 12 + 12 * k, 12);
            Point3 const& p = part.Points()[static_cast<std::size_t>(part.Triangles()[i][k])];
            ASSERT_EQ(corner[0], static_cast<float>(p.x)) << i;
            ASSERT_EQ(corner[1], static_cast<float>(p.y)) << i;
            ASSERT_EQ(corner[2], static_cast<float>(p.z)) << i;
        }
    }
}

// Writing is the first half of the work, reading back the second.
TEST(WriteBytes, ProgressGoesUpToOneAndAStopLeavesNoFile) {
    TestFolder const folder;
    Part const part = PartOf(shapes::IcoSphere(10, 5));
    for (double const stopAt : {2.0, 0.1, 0.6}) {
        double last = 0.0;
        MeshWriteSettings settings;
        settings.format = MeshFormat::kPlainCsm;
        settings.progress = [&](double share) {
            EXPECT_GE(share, last);
            EXPECT_LE(share, 1.0);
            last = share;
            return share < stopAt;
        };
        if (stopAt > 1.0) {
            part.Write(folder / "a.csm", settings);
            EXPECT_EQ(last, 1.0);
            std::filesystem::remove(folder / "a.csm");
            continue;
        }
        try {
            part.Write(folder / "a.csm", settings);
            ADD_FAILURE() << stopAt;
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kCancelled);
        }
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
    }
}

class HeaderOfStrips : public ::testing::Test {
protected:
    // The first bytes of the file that has this header; what is refused, by its message.
    std::string Written(std::string const& header, std::size_t size) const {
        MeshWriteSettings settings;
        settings.format = MeshFormat::kStripCsm;
        settings.header = folder.Write("header", header);
        try {
            PartOf(shapes::Cube(2.0f)).Write(folder / "a.csm", settings);
        } catch (Error const& error) {
            EXPECT_EQ(error.Kind(), ErrorKind::kContent);
            return error.what();
        }
        return ReadBytes(folder / "a.csm").substr(0, size);
    }
    bool IsRefused(std::string const& header, char const* what) const {
        return Written(header, 0).find(what) != std::string::npos;
    }
    static std::string Padded(std::string text, std::size_t size) {
        text.resize(size, '\0');
        return text;
    }
    TestFolder const folder;
};

TEST_F(HeaderOfStrips, IsFilledUpToOneOfItsTwoLengths) {
    EXPECT_EQ(Written("mine CSM3.0", 80), Padded("mine CSM3.0", 80));
    EXPECT_EQ(Written("mine CSM4.0", 80), Padded("mine CSM4.0", 80));
    EXPECT_EQ(Written("mine CSM5.0", 4096), Padded("mine CSM5.0", 4096));
    std::string const full = "CSM4.0" + std::string(74, 'x');
    EXPECT_EQ(Written(full, 80), full);
    std::string const longest = "CSM5.0" + std::string(4090, 'y');
    EXPECT_EQ(Written(longest, 4096), longest);
}

TEST_F(HeaderOfStrips, ItsTagStandsInTheFirst79BytesOfText) {
    EXPECT_EQ(Written(std::string(73, ' ') + "CSM4.0", 80), Padded(std::string(73, ' ') + "CSM4.0", 80));
    EXPECT_TRUE(IsRefused(std::string(74, ' ') + "CSM4.0", "in its first 79 bytes"));
    EXPECT_TRUE(IsRefused(Padded("text", 5) + "CSM4.0", "in its first 79 bytes"));
    EXPECT_TRUE(IsRefused("CSM6.0", "in its first 79 bytes"));
    EXPECT_TRUE(IsRefused("", "in its first 79 bytes"));
    EXPECT_TRUE(IsRefused("CSM4.0" + std::string(75, 'x'), "more than 80 bytes"));
}

TEST(LargestError, OfFloatsIsWhatNarrowingLosesOnAnAxis) {
    TestFolder const folder;
    auto const error = [&](Point3 const& odd, MeshFormat format) {
        return AsItIs({{0, 0, 0}, {2, 0, 0}, odd}, {{0, 1, 2}}).Write(folder / "a.out", format).largestError;
    };
    double const lost = std::fabs(0.1 - static_cast<double>(0.1f));
    for (MeshFormat const format : {MeshFormat::kBinaryStl, MeshFormat::kPlainCsm}) {
        EXPECT_EQ(error({1, 1, 1}, format), 0.0);
        EXPECT_EQ(error({0.1, 1, 1}, format), lost);
        EXPECT_EQ(error({1, 0.1, 1}, format), lost);
        EXPECT_EQ(error({1, 1, -0.1}, format), lost);
    }
}

double NaiveDifference(Part const& a, Part const& b) {
    double largest = 0.0;
    for (Point3 const& p : a.Points()) {
        double nearest = HUGE_VAL;
        for (Point3 const& q : b.Points())
            nearest = std::min(nearest,
                               std::max({std::fabs(p.x - q.x), std::fabs(p.y - q.y), std::fabs(p.z - q.z)}));
        largest = std::max(largest, nearest);
    }
    return largest;
}

TEST(LargestError, OfOtherFormatsIsTheWayToTheNearestPoint) {
    TestFolder const folder;
    for (float const radius : {10.0f, 10.001f, 10.05f, 10.6f, 11.5f, 9.0f}) {
        Part const part = PartOf(shapes::IcoSphere(10, 4));
        Part const other = PartOf(shapes::IcoSphere(radius, 4));
        MeshWriteSettings settings;
        settings.format = MeshFormat::kStripCsm;
        settings.floats = true;
        other.Write(folder / "other.csm", settings);
        Part const read = Part::Read(folder / "other.csm");
        ASSERT_EQ(read.Points().size(), part.Points().size());
        EXPECT_DOUBLE_EQ(part.CompareWith(folder / "other.csm").largestError, NaiveDifference(part, read))
            << radius;
    }
}

TEST(LargestError, WhatIsFarFromAllOfTheFileCountsWithATenthOfThePart) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(10.0f);
    MeshWriteSettings settings;
    settings.format = MeshFormat::kStripCsm;
    settings.floats = true;
    PartOf(mesh).Write(folder / "a.csm", settings);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(10.0f), 0, 90, 0));
    WriteReport const report = PartOf(mesh).CompareWith(folder / "a.csm");
    EXPECT_EQ(report.largestError, 10.0);
    EXPECT_EQ(report.facetsBefore, 24);
    EXPECT_EQ(report.facetsAfter, 12);
    EXPECT_DOUBLE_EQ(report.volumeBefore, 2000.0);
    EXPECT_DOUBLE_EQ(report.volumeAfter, 1000.0);
}

// A corner on an edge would divide the facet beside it if the file were healed as it is read.
TEST(CompareWith, TakesTheFileAsItIs) {
    TestFolder const folder;
    Part const part =
        AsItIs({{0, 0, 0}, {10, 0, 0}, {5, 5, 0}, {5, 0, 0}, {5, -5, 0}}, {{0, 1, 2}, {0, 4, 3}, {3, 4, 1}});
    part.Write(folder / "a.stl");
    WriteReport const report = part.CompareWith(folder / "a.stl");
    EXPECT_EQ(report.facetsBefore, 3);
    EXPECT_EQ(report.facetsAfter, 3);
    EXPECT_EQ(report.openEdgesBefore, 7);
    EXPECT_EQ(report.openEdgesAfter, 7);
    EXPECT_EQ(report.largestError, 0.0);
    EXPECT_EQ(Part::Read(folder / "a.stl").Triangles().size(), 4u) << "healed";
}

// Vertices nearer to each other than a ten-thousandth, at which the classic model joins them.
TEST(WriteBytes, PointsNearEachOtherComeBackFromStripsAsTwo) {
    TestFolder const folder;
    shapes::Mesh mesh = shapes::Cube(1.0f);
    shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), 1.00006f, 0, 0));
    MeshWriteSettings settings;
    settings.format = MeshFormat::kStripCsm;
    settings.floats = true;
    IntakeSettings asItIs;
    asItIs.heal = false;
    PartOf(mesh, asItIs).Write(folder / "a.csm", settings);
    Part const part = Part::Read(folder / "a.csm", asItIs);
    EXPECT_EQ(part.Points().size(), 16u);
    EXPECT_EQ(Sorted(FacetsOf(part)), Sorted(FacetsOf(mesh)));
}

TEST(TransformPart, EachRowIsAnAxisOfTheOutcome) {
    Part part =
        AsItIs({{1, 2, 3}, {4, 2, 3}, {1, 7, 3}, {1, 2, 9}}, {{0, 1, 2}, {0, 3, 1}, {0, 2, 3}, {1, 3, 2}});
    double const volume = part.Measures().volume;
    Placement placement;
    placement.rows = {{{0, 2, 0, 10}, {0, 0, 3, 20}, {5, 0, 0, 30}}};
    part.Transform(placement);
    EXPECT_EQ(part.Points()[0], (Point3{14, 29, 35}));
    EXPECT_EQ(part.Points()[1], (Point3{14, 29, 50}));
    EXPECT_EQ(part.Points()[2], (Point3{24, 29, 35}));
    EXPECT_EQ(part.Points()[3], (Point3{14, 47, 35}));
    EXPECT_EQ(part.Triangles()[0], (Triangle{0, 1, 2}));
    EXPECT_DOUBLE_EQ(part.Measures().volume, 30.0 * volume);
    // Two axes change places: what was outside would be inside.
    placement.rows = {{{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}}};
    part.Transform(placement);
    EXPECT_EQ(part.Points()[1], (Point3{29, 14, 50}));
    EXPECT_EQ(part.Triangles()[0], (Triangle{0, 2, 1}));
    EXPECT_DOUBLE_EQ(part.Measures().volume, 30.0 * volume);
}

TEST(TransformPart, WhatFlattensIsRefusedWhateverRowIsNone) {
    Part part = PartOf(shapes::Cube(1.0f));
    for (std::size_t const row : {0, 1, 2}) {
        Placement placement;
        placement.rows[row] = placement.rows[(row + 1) % 3];
        EXPECT_THROW(part.Transform(placement), Error) << row;
    }
    // Each of the six products of the determinant by itself.
    int const orders[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {0, 2, 1}, {2, 1, 0}, {1, 0, 2}};
    for (auto const& order : orders) {
        Placement placement;
        placement.rows = {};
        for (std::size_t i = 0; i < 3; ++i) placement.rows[i][static_cast<std::size_t>(order[i])] = 2.0;
        Part turned = part;
        turned.Transform(placement);
        EXPECT_DOUBLE_EQ(turned.Measures().volume, 8.0);
    }
    Placement far;
    far.rows[1][3] = 1e10;
    EXPECT_THROW(part.Transform(far), Error);
    far.rows[1][3] = 1e10 - 1.0;
    part.Transform(far);
    EXPECT_EQ(part.Measures().box.max.y, 1e10);
}

// Turned inside out is what a mirror shows, and nothing else, however small.
TEST(TransformPart, FacetsAreTurnedByMirrorsAlone) {
    for (double const scale : {0.001, 0.5, 1.0, 3.0, -0.001, -0.5, -1.0, -3.0}) {
        Part part = AsItIs(kSquare, kFacets);
        Placement placement;
        placement.rows = {{{1, 0, 0, 0}, {0, scale, 0, 0}, {0, 0, 1, 0}}};
        part.Transform(placement);
        EXPECT_EQ(part.Triangles()[0], (scale > 0.0 ? Triangle{0, 1, 2} : Triangle{0, 2, 1})) << scale;
        EXPECT_EQ(part.Triangles()[1], (scale > 0.0 ? Triangle{1, 2, 3} : Triangle{1, 3, 2})) << scale;
        EXPECT_EQ(part.Points()[3], (Point3{2, 2 * scale, 1}));
    }
}

}  // namespace
}  // namespace varnet
