#include "Slicer.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "Slices.h"

namespace {

std::vector<Contour> CutOnce(CSTLModel const& model, double dZ) {
    Slicer slicer(model);
    return slicer.Cut(dZ);
}

std::vector<Contour> CutOnce(shapes::Mesh const& mesh, double dZ) {
    CSTLModel model;
    AddMesh(model, mesh);
    return CutOnce(model, dZ);
}

TEST(Slicer, CutsOfACubeAreSquaresWithTheSolidOnTheirLeft) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(10.0f));
    Slicer slicer(model);
    for (double dZ : {0.5, 1.0, 5.0, 9.999}) {
        std::vector<Contour> const contours = slicer.Cut(dZ);
        ASSERT_EQ(1u, contours.size());
        EXPECT_TRUE(contours[0].bClosed);
        EXPECT_NEAR(100.0, SignedArea(contours[0].points), 1e-9);
        // Each side wall is two triangles: a point at each corner, and one where the diagonal is cut.
        EXPECT_EQ(8u, contours[0].points.size());
        for (CPoint2D const& p : contours[0].points) {
            EXPECT_TRUE(p.x == 0.0 || p.x == 10.0 || p.y == 0.0 || p.y == 10.0);
        }
    }
}

TEST(Slicer, ACutAtTheTopFaceIsTheSquareAndOneAtTheBottomFaceIsNothing) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(10.0f));
    EXPECT_TRUE(CutOnce(model, 0.0).empty());
    EXPECT_TRUE(CutOnce(model, -1.0).empty());
    EXPECT_TRUE(CutOnce(model, 10.0001).empty());
    std::vector<Contour> const top = CutOnce(model, 10.0);
    ASSERT_EQ(1u, top.size());
    std::vector<Place> const square = {{0.0, 0.0}, {10.0, 0.0}, {10.0, 10.0}, {0.0, 10.0}};
    EXPECT_EQ(square, FromLeast(top[0]));
}

TEST(Slicer, ACutAtALevelFaceIsWhatLiesJustBelowIt) {
    CSTLModel model;
    AddMesh(model, Step());
    EXPECT_NEAR(4.0 * 3.0 * 5.0 + 10.0 * 3.0 * 5.0, model.Volume(), 1e-3);
    Slicer slicer(model);
    EXPECT_NEAR(30.0, NetArea(slicer.Cut(4.9999)), 1e-9);
    std::vector<Contour> const at = slicer.Cut(5.0);
    ASSERT_EQ(1u, at.size());
    EXPECT_TRUE(at[0].bClosed);
    EXPECT_NEAR(30.0, NetArea(at), 1e-9);
    EXPECT_NEAR(12.0, NetArea(slicer.Cut(5.0001)), 1e-9);
    EXPECT_NEAR(12.0, NetArea(slicer.Cut(10.0)), 1e-9);
    EXPECT_TRUE(slicer.Cut(10.0001).empty());
}

// Steps in the other direction: the arm begins above the face.
TEST(Slicer, ACutAtALevelFaceThatLooksDownIsWhatLiesJustBelowItToo) {
    shapes::Mesh mesh = Step();
    for (shapes::Triangle& triangle : mesh) {
        for (shapes::Corner& corner : triangle) corner.z = 10.0f - corner.z;
        std::swap(triangle[1], triangle[2]);
    }
    CSTLModel model;
    AddMesh(model, mesh);
    Slicer slicer(model);
    EXPECT_NEAR(12.0, NetArea(slicer.Cut(5.0)), 1e-9);
    EXPECT_NEAR(30.0, NetArea(slicer.Cut(5.0001)), 1e-9);
}

TEST(Slicer, PointsAtAVertexAreOne) {
    // Two pyramids, base to base, whose common base is not a face.
    shapes::Mesh mesh;
    shapes::Corner const belt[] = {{5, 0, 0}, {0, 5, 0}, {-5, 0, 0}, {0, -5, 0}};
    for (std::size_t i = 0; i < 4; ++i) {
        mesh.push_back({belt[i], belt[(i + 1) % 4], {0, 0, 5}});
        mesh.push_back({belt[(i + 1) % 4], belt[i], {0, 0, -5}});
    }
    std::vector<Contour> const contours = CutOnce(mesh, 0.0);
    ASSERT_EQ(1u, contours.size());
    std::vector<Place> const square = {{-5.0, 0.0}, {0.0, -5.0}, {5.0, 0.0}, {0.0, 5.0}};
    EXPECT_EQ(square, FromLeast(contours[0]));
}

TEST(Slicer, APeakOrARidgeAtTheHeightGivesNothing) {
    shapes::Mesh const roof = {
        {{{0, 0, 0}, {10, 0, 0}, {8, 3, 5}}},  {{{0, 0, 0}, {8, 3, 5}, {2, 3, 5}}},
        {{{10, 6, 0}, {0, 6, 0}, {2, 3, 5}}},  {{{10, 6, 0}, {2, 3, 5}, {8, 3, 5}}},
        {{{10, 0, 0}, {10, 6, 0}, {8, 3, 5}}}, {{{0, 6, 0}, {0, 0, 0}, {2, 3, 5}}},
        {{{0, 0, 0}, {0, 6, 0}, {10, 6, 0}}},  {{{0, 0, 0}, {10, 6, 0}, {10, 0, 0}}},
    };
    EXPECT_EQ(1u, CutOnce(roof, 4.9).size());
    EXPECT_TRUE(CutOnce(roof, 5.0).empty());
}

TEST(Slicer, HolesRunTheOtherWay) {
    std::vector<Contour> const contours = CutOnce(shapes::Torus(20.0, 5.0, 48, 24), 0.3);
    ASSERT_EQ(2u, contours.size());
    double const a = SignedArea(contours[0].points);
    double const b = SignedArea(contours[1].points);
    EXPECT_NEAR(3.14159 * 25.0 * 25.0, std::max(a, b), 40.0);
    EXPECT_NEAR(-3.14159 * 15.0 * 15.0, std::min(a, b), 20.0);
}

TEST(Slicer, EveryContourOfAClosedSolidIsClosedAtEveryHeight) {
    shapes::Mesh const meshes[] = {shapes::Bracket(), shapes::UvSphere(10.0, 12, 16),
                                   shapes::IcoSphere(10.0, 3), shapes::Torus(20.0, 5.0, 24, 12),
                                   shapes::Gyroid(12)};
    for (shapes::Mesh const& mesh : meshes) {
        CSTLModel model;
        AddMesh(model, mesh);
        // The heights of all vertices, and some between them.
        std::set<double> heights;
        for (tagVertexNode const* pVertex : VerticesOf(model)) heights.insert(pVertex->z);
        std::vector<double> between;
        for (auto it = heights.begin(); std::next(it) != heights.end(); ++it) {
            between.push_back((*it + *std::next(it)) / 2.0);
        }
        heights.insert(between.begin(), between.end());
        Slicer slicer(model);
        bool bAnything = false;
        for (double const dZ : heights) {
            std::vector<Contour> const contours = slicer.Cut(dZ);
            EXPECT_TRUE(AllClosed(contours)) << "at " << dZ;
            EXPECT_GE(NetArea(contours), 0.0) << "at " << dZ;
            bAnything = bAnything || !contours.empty();
        }
        EXPECT_TRUE(bAnything);
    }
}

// The volume that slices in the middle of so many layers add up to.
double SlicedVolume(CSTLModel const& model, int nLayers) {
    CBoundBox3D const& box = model.m_VertexTree.m_BoundBox;
    double const dHeight = (box.m_ptMax.z - box.m_ptMin.z) / nLayers;
    Slicer slicer(model);
    double dVolume = 0.0;
    for (int i = 0; i < nLayers; ++i) {
        dVolume += NetArea(slicer.Cut(box.m_ptMin.z + (i + 0.5) * dHeight)) * dHeight;
    }
    return dVolume;
}

// A float sum of many small volumes keeps about four digits; the reference sums in double.
double VolumeOf(shapes::Mesh const& mesh) {
    double dVolume = 0.0;
    for (auto const& [a, b, c] : mesh) {
        double const ax = a.x, ay = a.y, az = a.z, bx = b.x, by = b.y, bz = b.z, cx = c.x, cy = c.y, cz = c.z;
        dVolume += (ax * (by * cz - bz * cy) - ay * (bx * cz - bz * cx) + az * (bx * cy - by * cx)) / 6.0;
    }
    return dVolume;
}

void ExpectConvergence(shapes::Mesh const& mesh) {
    CSTLModel model;
    AddMesh(model, mesh);
    double const dVolume = VolumeOf(mesh);
    EXPECT_NEAR(dVolume, model.Volume(), 1e-4 * dVolume);
    // A slice in the middle of a layer errs with the square of the layer's height.
    double const dCoarse = std::fabs(SlicedVolume(model, 20) - dVolume) / dVolume;
    double const dFine = std::fabs(SlicedVolume(model, 100) - dVolume) / dVolume;
    double const dFinest = std::fabs(SlicedVolume(model, 500) - dVolume) / dVolume;
    EXPECT_LT(dCoarse, 2e-2);
    EXPECT_LT(dFine, 1e-3);
    EXPECT_LT(dFinest, 1e-4);
}

TEST(Slicer, AreasTimesLayerHeightConvergeToTheVolumeOfASphere) {
    ExpectConvergence(shapes::IcoSphere(10.0, 4));
}

TEST(Slicer, AreasTimesLayerHeightConvergeToTheVolumeOfATorus) {
    ExpectConvergence(shapes::Torus(20.0, 5.0, 96, 48));
}

TEST(Slicer, AreasTimesLayerHeightConvergeToTheVolumeOfAGyroid) { ExpectConvergence(shapes::Gyroid(24)); }

TEST(Slicer, FacetsTurnedInsideOutDoNotBreakContours) {
    shapes::Mesh const clean = shapes::Torus(20.0, 5.0, 24, 12);
    shapes::Mesh const careless = shapes::WithTurned(clean, 5);
    for (double dZ : {-4.0, 0.0, 0.7, 2.5, 3.3}) {
        std::vector<Contour> const expected = CutOnce(clean, dZ);
        std::vector<Contour> const contours = CutOnce(careless, dZ);
        ASSERT_EQ(expected.size(), contours.size());
        EXPECT_TRUE(AllClosed(contours));
        for (std::size_t i = 0; i < contours.size(); ++i) {
            EXPECT_EQ(expected[i].points.size(), contours[i].points.size());
            EXPECT_NEAR(std::fabs(SignedArea(expected[i].points)), std::fabs(SignedArea(contours[i].points)),
                        1e-9);
        }
    }
}

TEST(Slicer, AMeshWithAHoleInItsWallGivesOneOpenPath) {
    CSTLModel model;
    shapes::Mesh mesh = shapes::Cube(10.0f);
    // One triangle that stands upright goes.
    auto const isUpright = [](shapes::Triangle const& t) { return t[0].z != t[1].z || t[1].z != t[2].z; };
    mesh.erase(std::find_if(mesh.begin(), mesh.end(), isUpright));
    AddMesh(model, mesh);
    std::vector<Contour> const contours = CutOnce(model, 5.0);
    ASSERT_EQ(1u, contours.size());
    EXPECT_FALSE(contours[0].bClosed);
    EXPECT_EQ(8u, contours[0].points.size());
}

TEST(Slicer, AnOpenTubeGivesClosedContours) {
    shapes::Mesh mesh = shapes::Cube(10.0f);
    std::erase_if(mesh, [](shapes::Triangle const& t) { return t[0].z == t[1].z && t[1].z == t[2].z; });
    std::vector<Contour> const contours = CutOnce(mesh, 10.0);
    ASSERT_EQ(1u, contours.size());
    EXPECT_TRUE(contours[0].bClosed);
    EXPECT_NEAR(100.0, NetArea(contours), 1e-9);
}

TEST(Slicer, ASheetGivesOpenPathsThatRunAlongIt) {
    shapes::Mesh const slope = shapes::HeightField(8, 1.0, [](double x, double) { return x; });
    std::vector<Contour> const contours = CutOnce(slope, 3.5);
    ASSERT_EQ(1u, contours.size());
    EXPECT_FALSE(contours[0].bClosed);
    // The sheet is 8 mm wide; at each of its eight cells the diagonal is cut as well.
    EXPECT_EQ(17u, contours[0].points.size());
    for (CPoint2D const& p : contours[0].points) EXPECT_DOUBLE_EQ(contours[0].points[0].x, p.x);
    EXPECT_NEAR(8.0, std::fabs(contours[0].points.front().y - contours[0].points.back().y), 1e-9);
}

TEST(Slicer, ASingleTriangleGivesAPathOfTwoPointsThatRunsWithTheSolidOnItsLeft) {
    // It faces -y: the solid lies at greater y.
    shapes::Mesh const triangle = {{{{0, 0, 0}, {4, 0, 0}, {2, 0, 4}}}};
    std::vector<Contour> const contours = CutOnce(triangle, 2.0);
    ASSERT_EQ(1u, contours.size());
    EXPECT_FALSE(contours[0].bClosed);
    std::vector<Place> const path = {{1.0, 0.0}, {3.0, 0.0}};
    EXPECT_EQ(path, PlacesOf(contours[0]));
    EXPECT_TRUE(CutOnce(triangle, 4.0).empty());
}

TEST(Slicer, CubesThatTouchAlongAnEdgeComeApart) {
    for (bool bMirrored : {false, true}) {
        shapes::Mesh mesh = shapes::Box({0, 0, 0}, {4, 4, 4});
        shapes::Append(mesh, shapes::Box({4, bMirrored ? -4.0f : 4.0f, 0}, {8, bMirrored ? 0.0f : 8.0f, 4}));
        for (std::uint32_t nSeed = 0; nSeed < 10; ++nSeed) {
            std::vector<Contour> const contours = CutOnce(shapes::Shuffled(mesh, nSeed), 2.0);
            ASSERT_EQ(2u, contours.size());
            EXPECT_TRUE(AllClosed(contours));
            EXPECT_NEAR(16.0, SignedArea(contours[0].points), 1e-9);
            EXPECT_NEAR(16.0, SignedArea(contours[1].points), 1e-9);
        }
    }
}

TEST(Slicer, SolidsThatShareAWholeFaceInOneMeshAreOne) {
    // The wall between them has the same two triangles in both, facing either way; the mesh keeps one of
    // each.
    shapes::Mesh left = shapes::Box({0, 0, 0}, {4, 4, 4});
    shapes::Mesh right = left;
    for (shapes::Triangle& triangle : right) {
        for (shapes::Corner& corner : triangle) corner.x = 8.0f - corner.x;
        std::swap(triangle[1], triangle[2]);
    }
    CSTLModel model;
    AddMesh(model, shapes::Append(left, right));
    EXPECT_EQ(22, model.GetFacetsNum());
    std::vector<Contour> const contours = CutOnce(model, 2.0);
    ASSERT_EQ(1u, contours.size());
    EXPECT_TRUE(contours[0].bClosed);
    EXPECT_NEAR(32.0, NetArea(contours), 1e-9);
}

TEST(Slicer, AHeightMayBeCutAgain) {
    CSTLModel model;
    AddMesh(model, shapes::IcoSphere(10.0, 2));
    Slicer slicer(model);
    std::vector<Contour> const first = slicer.Cut(0.0);
    std::vector<Contour> const second = slicer.Cut(0.0);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) EXPECT_EQ(PlacesOf(first[i]), PlacesOf(second[i]));
}

TEST(Slicer, AnEmptyMeshGivesNothing) {
    CSTLModel const model;
    EXPECT_TRUE(CutOnce(model, 0.0).empty());
}

// ---- every facet at every height

using Segment = std::pair<Place, Place>;

Segment Undirected(Place const& a, Place const& b) { return std::minmax(a, b); }

Place PlaceBetween(tagVertexNode const& a, tagVertexNode const& b, double dZ) {
    if (b.z == dZ) return {b.x, b.y};
    double const t = (dZ - a.z) / (b.z - a.z);
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}

// How often each segment is there, those of no length left out.
std::map<Segment, int> LiteralCut(CSTLModel const& model, double dZ) {
    std::map<Segment, int> segments;
    for (CFacet const* pFacet : FacetsOf(model)) {
        if ((pFacet->m_nFlag & FACET_DUP_REVERSED) != 0) continue;
        std::vector<tagVertexNode const*> below, above;
        for (tagVertexNode const* p : {pFacet->m_pVertex1, pFacet->m_pVertex2, pFacet->m_pVertex3}) {
            (p->z < dZ ? below : above).push_back(p);
        }
        if (below.empty() || above.empty()) continue;
        Place const a = PlaceBetween(*below.front(), *above.front(), dZ);
        Place const b = PlaceBetween(*below.back(), *above.back(), dZ);
        if (a != b) ++segments[Undirected(a, b)];
    }
    return segments;
}

void TakeAway(std::map<Segment, int>& segments, Contour const& contour) {
    std::vector<Place> const places = PlacesOf(contour);
    std::size_t const nSegments = contour.bClosed ? places.size() : places.size() - 1;
    for (std::size_t i = 0; i < nSegments; ++i) {
        Place const& a = places[i];
        Place const& b = places[(i + 1) % places.size()];
        if (a == b) continue;
        auto const it = segments.find(Undirected(a, b));
        ASSERT_NE(segments.end(), it);
        if (--it->second == 0) segments.erase(it);
    }
}

// What is left are contours that enclose nothing: every place has as many ways out as in.
void ExpectClosed(std::map<Segment, int> const& segments) {
    std::map<Place, int> degrees;
    for (auto const& [segment, nTimes] : segments) {
        degrees[segment.first] += nTimes;
        degrees[segment.second] += nTimes;
    }
    for (auto const& [place, nDegree] : degrees) EXPECT_EQ(0, nDegree % 2);
}

// The ends of open paths are at edges of an odd number of facets, one for each.
int CountOddEdges(CSTLModel const& model, double dZ) {
    std::map<std::pair<tagVertexNode const*, tagVertexNode const*>, int> edges;
    for (CFacet const* pFacet : FacetsOf(model)) {
        if ((pFacet->m_nFlag & FACET_DUP_REVERSED) != 0) continue;
        tagVertexNode const* const corners[] = {pFacet->m_pVertex1, pFacet->m_pVertex2, pFacet->m_pVertex3};
        for (int i = 0; i < 3; ++i) {
            tagVertexNode const* a = corners[i];
            tagVertexNode const* b = corners[(i + 1) % 3];
            if ((a->z < dZ) != (b->z < dZ)) ++edges[a->z < dZ ? std::pair(a, b) : std::pair(b, a)];
        }
    }
    return static_cast<int>(
        std::count_if(edges.begin(), edges.end(), [](auto const& edge) { return edge.second % 2 == 1; }));
}

TEST(Slicer, CutsOfRandomTrianglesAreThoseOfALookAtEveryFacetAtEveryHeight) {
    std::mt19937 random(11);
    int nOpen = 0, nClosed = 0;
    for (int nRound = 0; nRound < 200; ++nRound) {
        // Few places, so that edges have many facets, and vertices lie at the heights.
        auto const below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
        unsigned const nSide = 2 + below(4);
        CSTLModel model;
        auto const corner = [&below, nSide] { return CPoint3D(below(nSide), below(nSide), below(nSide)); };
        // Single triangles in one round, the faces of tetrahedra in the next.
        for (unsigned n = 10 + below(120); n > 0; --n) {
            CPoint3D const p[] = {corner(), corner(), corner(), corner()};
            AddTriangle(model, p[0], p[1], p[2]);
            if (nRound % 2 == 0) continue;
            AddTriangle(model, p[0], p[3], p[1]);
            AddTriangle(model, p[1], p[3], p[2]);
            AddTriangle(model, p[2], p[3], p[0]);
        }
        Slicer slicer(model);
        for (double dZ = -0.5; dZ <= nSide; dZ += 0.25) {
            std::map<Segment, int> segments = LiteralCut(model, dZ);
            int nPaths = 0;
            for (Contour const& contour : slicer.Cut(dZ)) {
                ASSERT_NO_FATAL_FAILURE(TakeAway(segments, contour));
                ++(contour.bClosed ? nClosed : nOpen);
                nPaths += contour.bClosed ? 0 : 1;
            }
            ASSERT_NO_FATAL_FAILURE(ExpectClosed(segments));
            // A path that is a single point, at a vertex, is left out.
            int const nEnds = CountOddEdges(model, dZ);
            EXPECT_LE(2 * nPaths, nEnds);
            if (dZ != std::floor(dZ)) {
                EXPECT_EQ(2 * nPaths, nEnds);
            }
        }
    }
    EXPECT_GT(nOpen, 1000);
    EXPECT_GT(nClosed, 1000);
}

TEST(Slicer, CutsOfSolidsAreThoseOfALookAtEveryFacetAtEveryHeight) {
    for (shapes::Mesh const& mesh :
         {shapes::Bracket(), shapes::Gyroid(9), shapes::Torus(20.0, 5.0, 24, 12), shapes::Tray(2, 2, 2)}) {
        CSTLModel model;
        AddMesh(model, shapes::Shuffled(mesh, 3));
        CBoundBox3D const& box = model.m_VertexTree.m_BoundBox;
        Slicer slicer(model);
        for (int i = 0; i <= 64; ++i) {
            double const dZ = box.m_ptMin.z + (box.m_ptMax.z - box.m_ptMin.z) * i / 64.0;
            std::map<Segment, int> segments = LiteralCut(model, dZ);
            for (Contour const& contour : slicer.Cut(dZ)) {
                ASSERT_NO_FATAL_FAILURE(TakeAway(segments, contour));
            }
            ASSERT_NO_FATAL_FAILURE(ExpectClosed(segments));
        }
    }
}

}  // namespace
