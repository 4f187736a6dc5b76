#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <set>

#include "FileBytes.h"
#include "LiteralRing.h"
#include "modelfiles/RingEncoder.h"
#include "part/RingDecoder.h"

using namespace varnet;

namespace {

constexpr char kText[] = "Quarnell Ziped Model -- CSM2.0";
constexpr std::size_t kStart = 112;

std::string Save(CSTLModel& model) {
    TestFolder const folder;
    EXPECT_EQ(1, model.SaveCSMFile1(WidePath(folder / "ring.csm")));
    return ReadBytes(folder / "ring.csm");
}

std::string SaveMesh(shapes::Mesh const& mesh) {
    CSTLModel model;
    AddMesh(model, mesh);
    return Save(model);
}

FileBytes Start(double x, double z, double y, double dStep) {
    return FileBytes().Text(kText, 80).Doubles({x, z, y, dStep});
}

// A directed facet as whole steps, the least corner first.
using GridFacet = std::array<std::array<long long, 3>, 3>;

GridFacet Canonical(GridFacet facet) {
    std::rotate(facet.begin(), std::min_element(facet.begin(), facet.end()), facet.end());
    return facet;
}

std::set<GridFacet> GridFacetsOf(CSTLModel const& model) {
    CPoint3D const& least = model.m_VertexTree.m_BoundBox.m_ptMin;
    CPoint3D const size = model.m_VertexTree.m_BoundBox.Size();
    double const dScale = 16777216.0 / (fmax(size.x, fmax(size.y, size.z)) + 1.0);
    std::set<GridFacet> facets;
    for (CFacet const* const f : FacetsOf(model)) {
        GridFacet facet;
        std::size_t i = 0;
        for (tagVertexNode const* const p : {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3}) {
            facet[i++] = {static_cast<long long>((p->x - least.x) * dScale),
                          static_cast<long long>((p->y - least.y) * dScale),
                          static_cast<long long>((p->z - least.z) * dScale)};
        }
        facets.insert(Canonical(facet));
    }
    return facets;
}

std::set<GridFacet> GridFacetsOf(RingStream const& stream) {
    std::set<GridFacet> facets;
    for (auto const& f : stream.facets) {
        GridFacet facet;
        for (std::size_t i = 0; i < 3; ++i) {
            CPoint3D const d =
                CPoint3D(f[i].x - stream.origin.x, f[i].y - stream.origin.y, f[i].z - stream.origin.z);
            facet[i] = {std::llround(d.x / stream.step), std::llround(d.y / stream.step),
                        std::llround(d.z / stream.step)};
        }
        facets.insert(Canonical(facet));
    }
    return facets;
}

std::string ErrorOf(std::string const& bytes) {
    try {
        DecodeRingStream(bytes);
    } catch (RingError const& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(RingStream, EmptyModelGives112Bytes) {
    CSTLModel model;
    double const dEmpty = 1.0000000200408773e20;  // the corners of the empty box
    double const dScale = 16777216.0 / (-dEmpty - dEmpty + 1.0);
    EXPECT_EQ(Start(dEmpty, dEmpty, dEmpty, 1.0 / dScale).Get(), Save(model));
}

// The box is 3 on all axes: 4194304 units a millimetre.
TEST(RingStream, TetrahedronToTheByte) {
    CSTLModel model;
    AddTetrahedron(model);
    FileBytes expected = Start(0, 0, 0, 1.0 / 4194304.0);
    expected.Number(2, 4);
    expected.Numbers({0, 0, 0}, 3).Numbers({3 << 22, 0, 1 << 22}, 3).Numbers({0, 3 << 22, 2 << 22}, 3);
    expected.Byte(1).Byte(3).Numbers({0, 0, 3 << 22}, 3).Byte(0).Byte(2);
    std::string const bytes = Save(model);
    EXPECT_EQ(kStart + 44, bytes.size());
    EXPECT_EQ(expected.Get(), bytes);
}

TEST(RingStream, IsolatedFacetIsASeedAndThreeOpenEdges) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(-1, 5, 2), CPoint3D(0, 8, 2), CPoint3D(-1, 6, 3));
    FileBytes expected = Start(-1, 2, 5, 1.0 / 4194304.0);
    expected.Number(1, 4)
        .Numbers({0, 0, 0}, 3)
        .Numbers({1 << 22, 3 << 22, 0}, 3)
        .Numbers({0, 1 << 22, 1 << 22}, 3);
    expected.Byte(0).Byte(3);
    EXPECT_EQ(expected.Get(), Save(model));
}

TEST(RingStream, LeastCornerStandsInTheOrderXZYAndTheStepIsTheReciprocal) {
    std::string const bytes = SaveMesh(shapes::Box({1.0f, 2.0f, 3.0f}, {4.0f, 12.0f, 5.0f}));
    EXPECT_EQ(Start(1, 3, 2, 1.0 / (16777216.0 / 11.0)).Get(), bytes.substr(0, kStart));
    EXPECT_EQ(std::string(80 - 30, '\0'), bytes.substr(30, 50));
}

// The coordinates are doubles, which a rounding to float would move by several steps.
TEST(RingStream, PointsAreTruncatedFromDoubles) {
    CSTLModel model;
    double const d = 100.3;
    AddTriangle(model, CPoint3D(d, d, d), CPoint3D(d + 1.7, d, d), CPoint3D(d, d + 0.3, d + 2.9));
    CPoint3D const size = model.m_VertexTree.m_BoundBox.Size();
    double const dScale = 16777216.0 / (size.z + 1.0);
    std::string const expected = FileBytes().Numbers({static_cast<std::uint64_t>(size.x * dScale), 0, 0}, 3);
    EXPECT_EQ(expected, Save(model).substr(kStart + 4 + 9, 9));
}

TEST(RingStream, TwoShellsGiveTwoRegionsInTheOrderOfTheirFirstFacets) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(20, 0, 0), CPoint3D(21, 0, 0), CPoint3D(20, 1, 0));
    AddTetrahedron(model);
    RingStream const stream = DecodeRingStream(Save(model));
    EXPECT_EQ(2u, stream.regions);
    ASSERT_EQ(5u, stream.facets.size());
    EXPECT_NEAR(20.0, stream.facets[0][0].x, stream.step);
}

// A model whose box has no extent. AddFacet lets no such facet in, so its vertices are moved onto one point.
TEST(RingStream, BoxWithoutExtentGivesZeros) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(1, 2, 3), CPoint3D(2, 2, 3), CPoint3D(1, 3, 4));
    for (tagVertexNode* const p : VerticesOf(model)) p->x = p->y = p->z = 7.0;
    model.m_VertexTree.m_BoundBox = CBoundBox3D(CPoint3D(7, 7, 7), CPoint3D(7, 7, 7));
    FileBytes expected = Start(7, 7, 7, 1.0 / 16777216.0);
    expected.Number(1, 4).Numbers({0, 0, 0, 0, 0, 0, 0, 0, 0}, 3).Byte(0).Byte(3);
    EXPECT_EQ(expected.Get(), Save(model));
}

// Sphere topology: one region, and a vertex is written again only where the ring touches itself.
TEST(RingStream, ClosedSurfaceOfSphereTopologyIsOneRegion) {
    for (shapes::Mesh const& mesh :
         {shapes::Cube(10.0f), shapes::IcoSphere(10.0, 0), shapes::IcoSphere(10.0, 2),
          shapes::UvSphere(10.0, 8, 12), shapes::IcoSphere(10.0, 5)}) {
        CSTLModel model;
        AddMesh(model, mesh);
        RingStream const stream = DecodeRingStream(Save(model));
        EXPECT_EQ(1u, stream.regions);
        EXPECT_EQ(mesh.size(), stream.facets.size());
        EXPECT_EQ(0u, stream.repeated);
        EXPECT_GE(stream.points, model.m_VertexTree.m_nCount);
    }
}

TEST(RingStream, EachVertexOfASmallClosedSurfaceIsWrittenOnce) {
    for (shapes::Mesh const& mesh : {shapes::IcoSphere(10.0, 0), shapes::IcoSphere(10.0, 1)}) {
        CSTLModel model;
        AddMesh(model, mesh);
        std::string const bytes = Save(model);
        RingStream const stream = DecodeRingStream(bytes);
        std::size_t const nVertices = model.m_VertexTree.m_nCount;
        EXPECT_EQ(nVertices, stream.points);
        EXPECT_EQ(nVertices - 3 + 1, stream.steps);  // and a last one, for the two edges that are left
        EXPECT_EQ(std::string("\0\2", 2), bytes.substr(bytes.size() - 2));
    }
}

// The rim of a disk grown from its outside closes on the apex: 300 facets, 127 a step.
TEST(RingStream, LongRunIsClosedBackwardAndForwardInPieces) {
    shapes::Mesh mesh;
    auto const rim = [](int i, float z) {
        double const dAngle = 6.283185307179586 * (i % 300) / 300;
        return shapes::Corner{static_cast<float>(50.0 * std::cos(dAngle)),
                              static_cast<float>(50.0 * std::sin(dAngle)), z};
    };
    CSTLModel model;
    for (int i = 0; i < 300; ++i)
        mesh.push_back({shapes::Corner{0.0f, 0.0f, 20.0f}, rim(i, 0), rim(i + 1, 0)});
    AddMesh(model, mesh);
    // The ring of all rim edges, as if the facets beyond the rim had been coded.
    RingEncoder encoder;
    for (CFacet* const f : FacetsOf(model)) f->m_nRegion = 1;
    for (CFacet* const f : FacetsOf(model)) {
        tagVertexNode* corners[3] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3};
        int nApex = 0;
        while (corners[nApex]->z != 20.0) ++nApex;
        encoder.m_Ring.AddTail({corners[(nApex + 2) % 3], corners[(nApex + 1) % 3], corners[nApex], f});
    }
    RingEncoder::Choice const choice = encoder.ChooseStep();
    EXPECT_EQ(-127, choice.nPosition);
    EXPECT_EQ(127, choice.nRun);
    EXPECT_EQ(300u, encoder.m_Ring.Size());
}

TEST(RingStream, EdgesWithoutAFacetAreTakenUpTo127AStep) {
    for (int const nEdges : {1, 126, 127, 128, 300}) {
        RingEncoder encoder;
        for (int i = 0; i < nEdges; ++i) encoder.m_Ring.AddTail({nullptr, nullptr, nullptr, nullptr});
        RingEncoder::Choice const choice = encoder.ChooseStep();
        EXPECT_EQ(0, choice.nPosition);
        EXPECT_EQ(std::min(nEdges, 127), choice.nRun);
    }
}

TEST(RingStream, EveryMeshIsWrittenAsTheStepsSay) {
    std::vector<shapes::Mesh> meshes = RealShapes();
    std::erase_if(meshes, [](shapes::Mesh const& mesh) { return mesh.size() > 2000; });
    for (unsigned nSeed = 0; nSeed < 400; ++nSeed) {
        meshes.push_back(
            RandomMesh(nSeed, 4 + static_cast<int>(nSeed % 40), 4 + static_cast<int>(nSeed * 2)));
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        CSTLModel model;
        AddMesh(model, meshes[i]);
        std::string const expected = LiteralRing::Write(model);
        ASSERT_EQ(expected, Save(model)) << "mesh " << i;
        for (CFacet const* const f : FacetsOf(model)) ASSERT_EQ(0, f->m_nRegion);
    }
}

TEST(RingStream, ShuffledMeshesAreWrittenAsTheStepsSay) {
    for (unsigned nSeed = 0; nSeed < 4; ++nSeed) {
        for (shapes::Mesh const& mesh : {shapes::Gyroid(12), shapes::Bracket(), Fan(400, true)}) {
            CSTLModel model;
            AddMesh(model, shapes::Shuffled(mesh, nSeed));
            ASSERT_EQ(LiteralRing::Write(model), Save(model));
        }
    }
}

TEST(RingStream, DecodedItIsTheMesh) {
    for (shapes::Mesh const& mesh : RealShapes()) {
        CSTLModel model;
        AddMesh(model, mesh);
        model.FixNormal();
        RingStream const stream = DecodeRingStream(Save(model));
        EXPECT_EQ(GridFacetsOf(model), GridFacetsOf(stream));
        EXPECT_EQ(FacetsOf(model).size(), stream.facets.size());
    }
}

TEST(RingStream, DecodedPointsLieLessThanOneStepBelow) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    RingStream const stream = DecodeRingStream(Save(model));
    std::map<GridFacet::value_type, CPoint3D> decoded;
    double const dScale = 1.0 / stream.step;
    CPoint3D const& least = model.m_VertexTree.m_BoundBox.m_ptMin;
    for (auto const& f : stream.facets) {
        for (varnet::Point3 const& corner : f) {
            CPoint3D const p(corner.x, corner.y, corner.z);
            CPoint3D const d = p - least;
            decoded[{std::llround(d.x * dScale), std::llround(d.y * dScale), std::llround(d.z * dScale)}] = p;
        }
    }
    for (tagVertexNode const* const p : VerticesOf(model)) {
        auto const found = decoded.find({static_cast<long long>((p->x - least.x) * dScale),
                                         static_cast<long long>((p->y - least.y) * dScale),
                                         static_cast<long long>((p->z - least.z) * dScale)});
        ASSERT_TRUE(found != decoded.end());
        EXPECT_GE(p->x - found->second.x, -1e-9);
        EXPECT_LT(p->x - found->second.x, stream.step + 1e-9);
        EXPECT_GE(p->z - found->second.z, -1e-9);
        EXPECT_LT(p->z - found->second.z, stream.step + 1e-9);
    }
}

TEST(RingStream, SurfacesAreTakenInTheirOrder) {
    CSTLModel model;
    AddMesh(model, shapes::Bracket());
    model.ClassifySurf(CSTLModel::EightClassifyFun, 0.01);
    ASSERT_GT(model.m_SurfaceArray.m_aSurface.GetSize(), 3);
    EXPECT_EQ(LiteralRing::Write(model), Save(model));
}

TEST(RingStream, StopFlagsAreNotLookedAt) {
    CSTLModel model;
    AddTetrahedron(model);
    std::string const expected = Save(model);
    model.StopCurOperate();
    model.StopReadModel();
    EXPECT_EQ(expected, Save(model));
}

TEST(RingStream, FileThatCannotBeCreatedLeavesTheModelAsItWas) {
    TestFolder const folder;
    CSTLModel model;
    AddTetrahedron(model);
    FacetAt(model, 0).m_nRegion = 9;
    EXPECT_EQ(0, model.SaveCSMFile1(WidePath(folder / "none" / "ring.csm")));
    EXPECT_EQ(9, FacetAt(model, 0).m_nRegion);
    EXPECT_EQ(0, model.SaveCSMFile1(nullptr));
}

TEST(RingStream, PositionsThatNotANumberHasAreWrittenAsZero) {
    CSTLModel model;
    AddTetrahedron(model);
    VerticesOf(model)[0]->x = std::nan("");
    VerticesOf(model)[1]->y = 1e300;
    EXPECT_EQ(kStart + 44, Save(model).size());
}

// ---- the decoder

TEST(RingDecoder, EveryTruncationOfARegionIsRefused) {
    CSTLModel model;
    AddTetrahedron(model);
    std::string const bytes = Save(model);
    for (std::size_t n = 0; n < bytes.size(); ++n) {
        EXPECT_EQ(n == kStart ? "" : ErrorOf(bytes.substr(0, n)), ErrorOf(bytes.substr(0, n)));
        EXPECT_EQ(n == kStart, ErrorOf(bytes.substr(0, n)).empty()) << n;
    }
    EXPECT_EQ("the file ends inside the points", ErrorOf(bytes.substr(0, kStart + 35)));
    EXPECT_EQ("the file ends inside the steps", ErrorOf(bytes.substr(0, bytes.size() - 1)));
}

TEST(RingDecoder, EveryFlippedBitIsDecodedOrRefused) {
    CSTLModel model;
    AddTetrahedron(model);
    std::string const bytes = Save(model);
    for (std::size_t n = 0; n < 8 * bytes.size(); ++n) {
        std::string flipped = bytes;
        flipped[n / 8] = static_cast<char>(flipped[n / 8] ^ 1 << n % 8);
        ErrorOf(flipped);
    }
}

TEST(RingDecoder, StepsWithoutMeaningAreRefused) {
    auto const withSteps = [](std::initializer_list<unsigned> steps) {
        FileBytes bytes = Start(0, 0, 0, 1);
        bytes.Number(steps.size() / 2, 4).Numbers({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
        for (unsigned const b : steps) bytes.Byte(b);
        return bytes.Get();
    };
    EXPECT_EQ("", ErrorOf(withSteps({0, 3})));
    EXPECT_EQ("", ErrorOf(withSteps({2, 0, 0, 2})));
    EXPECT_EQ("a step does nothing", ErrorOf(withSteps({0, 0, 0, 3})));
    EXPECT_EQ("a step takes more edges than the ring has", ErrorOf(withSteps({0, 4})));
    EXPECT_EQ("a step drops an edge ahead of the head", ErrorOf(withSteps({0xFF, 0})));
    EXPECT_EQ("a step turns an empty ring", ErrorOf(withSteps({0, 3, 1, 0})));
    EXPECT_EQ("a region ends before its ring is empty", ErrorOf(withSteps({0, 2})));
    EXPECT_EQ("a step takes more edges than the ring has", ErrorOf(withSteps({1, 4}) + std::string(9, '\5')));
    EXPECT_EQ("not a ring stream",
              ErrorOf(FileBytes().Text("Quarnell Ziped Model", 80).Doubles({0, 0, 0, 1})));
}

// Positions are signed bytes: 127 is the last one ahead, and 128 stands for 128 places back.
TEST(RingDecoder, PositionsOfARingOfFourGoAheadUpTo127AndBackFrom128On) {
    auto const thirdFacet = [](unsigned nPosition) {
        FileBytes bytes = Start(0, 0, 0, 1);
        bytes.Number(3, 4).Numbers({0, 0, 0, 4, 0, 0, 0, 4, 0}, 3);
        // The ring is then, from its head, (0 0) (4 4) (4 0) (0 4), and round.
        bytes.Byte(1).Byte(1).Numbers({4, 4, 0}, 3);
        bytes.Byte(nPosition).Byte(1).Numbers({9, 9, 9}, 3).Byte(0).Byte(5);
        RingStream const stream = DecodeRingStream(bytes.Get());
        EXPECT_EQ(3u, stream.facets.size());
        varnet::Point3 const& end = stream.facets[2][0];
        varnet::Point3 const& start = stream.facets[2][1];
        return std::array{start.x, start.y, end.x, end.y};
    };
    std::array const first{0.0, 0.0, 4.0, 4.0};
    std::array const second{4.0, 4.0, 4.0, 0.0};
    std::array const third{4.0, 0.0, 0.0, 4.0};
    std::array const fourth{0.0, 4.0, 0.0, 0.0};
    EXPECT_EQ(first, thirdFacet(1));
    EXPECT_EQ(second, thirdFacet(2));
    EXPECT_EQ(third, thirdFacet(127));   // 126 ahead
    EXPECT_EQ(first, thirdFacet(128));   // 128 back
    EXPECT_EQ(second, thirdFacet(129));  // 127 back
    EXPECT_EQ(fourth, thirdFacet(255));  // 1 back
}

TEST(RingDecoder, RepeatedFacetsAreLeftOut) {
    FileBytes bytes = Start(0, 0, 0, 1);
    bytes.Number(2, 4).Numbers({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    bytes.Byte(1).Byte(1).Numbers({0, 1, 0}, 3).Byte(0).Byte(4);
    RingStream const stream = DecodeRingStream(bytes.Get());
    EXPECT_EQ(1u, stream.facets.size());
    EXPECT_EQ(1u, stream.repeated);
}
