// Facets that stand in the list once too often.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "part/Closing.h"
#include "part/Edges.h"
#include "part/FlatMesh.h"

namespace varnet {
namespace {

using Triangles = std::vector<Triangle>;

struct Left {
    std::int64_t count = 0;
    Triangles triangles;
    EdgeTable edges;
};

Left LeaveOut(Triangles const& triangles, std::size_t points = 20) {
    FlatMesh mesh;
    mesh.points.resize(points);
    mesh.triangles.assign(triangles.begin(), triangles.end());
    Left left;
    left.edges = FindEdges(mesh.triangles, points, Pace::None());
    left.count = LeaveOutCopies(mesh, left.edges, Pace::None());
    left.triangles.assign(mesh.triangles.begin(), mesh.triangles.end());
    return left;
}

// A closed tetrahedron whose facet in front is {0, 1, 2}.
Triangles Tetrahedron(std::int32_t apex) { return {{0, 1, 2}, {1, 0, apex}, {2, 1, apex}, {0, 2, apex}}; }

Triangles operator+(Triangles a, Triangles const& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(Copies, TheLaterOneGoesInWhateverPlaceAndFromWhateverCornerOn) {
    Triangles const whole = Tetrahedron(3);
    for (Triangle const& copy : {Triangle{0, 1, 2}, Triangle{1, 2, 0}, Triangle{2, 0, 1}}) {
        Left const behind = LeaveOut(whole + Triangles{copy});
        EXPECT_EQ(behind.count, 1);
        EXPECT_EQ(behind.triangles, whole);
        EXPECT_EQ(behind.edges.open, 0);
        EXPECT_EQ(behind.edges.across.size(), 12u);
        // In front it is the one that stays.
        Left const before = LeaveOut(Triangles{copy} + whole);
        EXPECT_EQ(before.count, 1);
        EXPECT_EQ(before.triangles, (Triangles{copy, whole[1], whole[2], whole[3]}));
    }
}

TEST(Copies, AFacetTheOtherWayRoundIsNoCopy) {
    Triangles const mesh = Tetrahedron(3) + Triangles{{0, 2, 1}};
    EXPECT_EQ(LeaveOut(mesh).count, 0);
    EXPECT_EQ(LeaveOut(mesh).triangles, mesh);
}

TEST(Copies, AFacetAloneTwiceStaysAndSoDoesAWholeShell) {
    Triangles const alone = {{0, 1, 2}, {0, 1, 2}};
    EXPECT_EQ(LeaveOut(alone).triangles, alone);
    Triangles const whole = Tetrahedron(3) + Tetrahedron(3);
    EXPECT_EQ(LeaveOut(whole).count, 0);
    EXPECT_EQ(LeaveOut(whole).triangles, whole);
}

TEST(Copies, CopiesThatHangTogetherGoTogether) {
    Triangles const whole = Tetrahedron(3);
    Triangles const two = {whole[0], whole[1]};
    Left const left = LeaveOut(whole + two);
    EXPECT_EQ(left.count, 2);
    EXPECT_EQ(left.triangles, whole);
    Left const three = LeaveOut(Triangles{whole[3], whole[1]} + whole + Triangles{whole[2]});
    EXPECT_EQ(three.count, 3);
    EXPECT_EQ(three.edges.open, 0);
}

TEST(Copies, CopiesApartAreJudgedOneByOne) {
    // Two tetrahedra with no common corner; of the second one all is there twice.
    Triangles const first = Tetrahedron(3);
    Triangles second;
    for (Triangle const& t : Tetrahedron(3)) second.push_back({t[0] + 4, t[1] + 4, t[2] + 4});
    Triangles const mesh = first + second + Triangles{first[2]} + second;
    Left const left = LeaveOut(mesh);
    EXPECT_EQ(left.count, 1);
    EXPECT_EQ(left.triangles, first + second + second);
}

TEST(Copies, OfAShellThatIsThereTwiceTheThirdOfAFacetGoesAlone) {
    Triangles const whole = Tetrahedron(3);
    Left const left = LeaveOut(whole + whole + Triangles{whole[0]});
    EXPECT_EQ(left.count, 1);
    EXPECT_EQ(left.triangles, whole + whole);
    EXPECT_EQ(left.edges.open, 0);
}

TEST(Copies, OfThreeCopiesThatTwoShellsNeedOneGoes) {
    // Both shells stand on the same facet.
    Triangles const shells = Tetrahedron(3) + Tetrahedron(4);
    Left const left = LeaveOut(shells + Triangles{{0, 1, 2}});
    EXPECT_EQ(left.count, 1);
    EXPECT_EQ(left.edges.open, 0);
    EXPECT_EQ(left.triangles.size(), 8u);
    EXPECT_EQ(LeaveOut(shells).count, 0);
}

TEST(Copies, ACopyStaysWhereAnEdgeWouldStayOpenWithoutIt) {
    // Three more facets hang on the edge from 0 to 1, against the copy: it is open the other way.
    Triangles const mesh = Tetrahedron(3) + Triangles{{0, 1, 2}, {1, 0, 5}, {1, 0, 6}};
    EXPECT_EQ(LeaveOut(mesh).count, 0);
    // One more closes it.
    Triangles const closed = Tetrahedron(3) + Triangles{{0, 1, 2}, {1, 0, 5}};
    EXPECT_EQ(LeaveOut(closed).count, 0);
}

// Neither the second nor the third goes by itself: the edges stay open for the other one.
TEST(Copies, OfThreeOfWhichTwoAreTooManyBothGo) {
    Triangles const whole = Tetrahedron(3);
    for (Triangle const& facet : whole) {
        Left const left = LeaveOut(whole + Triangles{facet, facet});
        EXPECT_EQ(left.count, 2);
        EXPECT_EQ(left.triangles, whole);
        EXPECT_EQ(left.edges.open, 0);
    }
    // Two facets beside each other, one of them once and one twice too often.
    Left const left = LeaveOut(whole + Triangles{whole[0], whole[1], whole[1]});
    EXPECT_EQ(left.count, 3);
    EXPECT_EQ(left.triangles, whole);
}

TEST(Copies, WithoutCopiesNothingIsTouched) {
    Triangles const open = {{0, 1, 2}, {1, 0, 3}};
    Left const left = LeaveOut(open);
    EXPECT_EQ(left.count, 0);
    EXPECT_EQ(left.triangles, open);
    EXPECT_EQ(LeaveOut({}).count, 0);
}

TEST(Copies, OfThreeOfWhichOneGoesItIsTheSecond) {
    Triangles const shells = Tetrahedron(3) + Triangles{{2, 0, 1}, {1, 0, 4}, {2, 1, 4}, {0, 2, 4}};
    Left const left = LeaveOut(shells + Triangles{{1, 2, 0}});
    EXPECT_EQ(left.count, 1);
    Triangles const expected = Tetrahedron(3) + Triangles{{1, 0, 4}, {2, 1, 4}, {0, 2, 4}, {1, 2, 0}};
    EXPECT_EQ(left.triangles, expected);
}

// By whichever of their edges, and from whichever corner on.
TEST(Copies, EveryTwoCopiesWithACommonEdgeGoTogether) {
    Triangles const whole = Tetrahedron(3);
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            if (i == k) continue;
            for (std::ptrdiff_t turn = 0; turn < 9; ++turn) {
                Triangle one = whole[i];
                Triangle other = whole[k];
                std::rotate(one.begin(), one.begin() + turn % 3, one.end());
                std::rotate(other.begin(), other.begin() + turn / 3, other.end());
                Left const left = LeaveOut(whole + Triangles{one, other});
                EXPECT_EQ(left.count, 2) << i << k << turn;
                EXPECT_EQ(left.triangles, whole);
            }
        }
    }
}

}  // namespace
}  // namespace varnet
