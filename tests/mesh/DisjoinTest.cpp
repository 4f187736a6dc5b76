// Splitting a model into its connected shells.

#include <cstring>
#include <list>
#include <set>
#include <string>

#include "MeshChecks.h"
#include "mesh/LiteralMesh.h"
#include "trees/PointSoup.h"

namespace {

class ShellList {
public:
    explicit ShellList(CSTLModel& model) { model.Disjoin(list); }
    ShellList(ShellList const&) = delete;
    ShellList& operator=(ShellList const&) = delete;
    ~ShellList() {
        for (CSTLModel* const pShell : Models()) delete pShell;
    }
    std::vector<CSTLModel*> Models() const {
        std::vector<CSTLModel*> models;
        XR__POSITION* position = list.GetHeadPosition();
        while (position != nullptr) models.push_back(static_cast<CSTLModel*>(list.GetNext(position)));
        return models;
    }
    std::vector<int> Sizes() const {
        std::vector<int> sizes;
        for (CSTLModel* const pShell : Models()) sizes.push_back(pShell->GetFacetsNum());
        return sizes;
    }
    std::string Name(std::size_t n) const { return Models()[n]->m_Status.m_szFileName; }
    XR_CList<void*, void*> list;
};

void SetName(CSTLModel& model, std::string const& name) {
    std::memset(model.m_Status.m_szFileName, 'x', sizeof model.m_Status.m_szFileName);
    std::memcpy(model.m_Status.m_szFileName, name.c_str(),
                std::min(name.size() + 1, sizeof model.m_Status.m_szFileName));
}

shapes::Mesh TwoCubes() {
    shapes::Mesh mesh = shapes::Cube(2.0f);
    return shapes::Append(mesh, shapes::Moved(shapes::Cube(2.0f), 5, 0, 0));
}

// The shells as they are defined, by AddFacet alone.
std::vector<CSTLModel*> LiteralDisjoin(std::vector<CFacet*> const& facets) {
    std::vector<CSTLModel*> shells;
    std::set<CFacet const*> open(facets.begin(), facets.end());
    auto const add = [&shells](CFacet const* f) {
        AddTriangle(*shells.back(), *f->m_pVertex1, *f->m_pVertex2, *f->m_pVertex3);
    };
    for (CFacet* const pSeed : facets) {
        if (open.erase(pSeed) == 0) continue;
        shells.push_back(new CSTLModel);
        add(pSeed);
        std::list<CFacet*> current = {pSeed};
        while (!current.empty()) {
            std::list<CFacet*> next;
            for (CFacet* const f : current) {
                tagVertexNode* const v[4] = {f->m_pVertex1, f->m_pVertex2, f->m_pVertex3, f->m_pVertex1};
                for (int k = 0; k < 3; ++k) {
                    auto const around = literal::Neighbors(f, v[k], v[k + 1]);
                    if (!around.empty() && open.erase(around[0]) != 0) next.push_back(around[0]);
                }
            }
            for (CFacet* const f : next) add(f);
            current = next;
        }
    }
    return shells;
}

shapes::Mesh RandomMesh(std::uint32_t nSeed) {
    std::mt19937 random(nSeed);
    auto const at = [&random](unsigned n) { return 0.5f * static_cast<float>(random() % n); };
    shapes::Mesh mesh;
    for (int i = 0; i < 6; ++i)
        shapes::Append(mesh, shapes::Moved(shapes::Cube(1.0f), at(12), at(12), at(12)));
    for (int i = 0; i < 40; ++i) {
        shapes::Triangle t;
        for (shapes::Corner& p : t) {
            p.x = at(6);
            p.y = at(6);
            p.z = at(6);
        }
        mesh.push_back(t);
    }
    return shapes::WithTurned(shapes::Shuffled(mesh, nSeed), 5);
}

void ExpectLiteralShells(CSTLModel& model) {
    std::vector<CSTLModel*> const expected = LiteralDisjoin(FacetsOf(model));
    ShellList const shells(model);
    auto const models = shells.Models();
    EXPECT_EQ(expected.size(), models.size());
    for (std::size_t i = 0; i < std::min(expected.size(), models.size()); ++i)
        ExpectSameModels(*expected[i], *models[i]);
    for (CSTLModel* const pShell : expected) delete pShell;
}

}  // namespace

TEST(Disjoin, TwoCubesAreTwoShellsNumberedOneAndTwo) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    SetName(model, "part.stl");
    ShellList const shells(model);
    EXPECT_EQ(std::vector<int>({12, 12}), shells.Sizes());
    EXPECT_EQ("part_1.STL", shells.Name(0));
    EXPECT_EQ("part_2.STL", shells.Name(1));
    EXPECT_EQ(0.0, shells.Models()[0]->m_VertexTree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(5.0, shells.Models()[1]->m_VertexTree.m_BoundBox.m_ptMin.x);
    EXPECT_EQ(24, model.GetFacetsNum());
    for (CFacet const* const f : FacetsOf(model)) EXPECT_EQ(0, f->m_nRegion);
    for (CSTLModel const* const pShell : shells.Models()) ExpectInvariants(*pShell);
}

TEST(Disjoin, CubesThatTouchAtAVertexAreTwoShells) {
    shapes::Mesh mesh = shapes::Cube(2.0f);
    CSTLModel model;
    AddMesh(model, shapes::Append(mesh, shapes::Moved(shapes::Cube(2.0f), 2, 2, 2)));
    EXPECT_EQ(15u, model.m_VertexTree.m_nCount);
    EXPECT_EQ(std::vector<int>({12, 12}), ShellList(model).Sizes());
}

// Three facets at one edge: from each of the first two the other one is the first neighbour.
TEST(Disjoin, ThirdFacetAtAnEdgeIsAShellOfItsOwn) {
    CSTLModel model;
    CPoint3D const a(0, 0, 0), b(1, 0, 0);
    AddTriangle(model, a, b, CPoint3D(0, 1, 0));
    AddTriangle(model, a, b, CPoint3D(0, -1, 0.5));
    AddTriangle(model, a, b, CPoint3D(0, 0, 1));
    EXPECT_EQ(std::vector<int>({2, 1}), ShellList(model).Sizes());
}

TEST(Disjoin, OppositeWindingConnects) {
    CSTLModel model;
    AddMesh(model, shapes::WithTurned(shapes::Cube(2.0f), 2));
    EXPECT_EQ(std::vector<int>({12}), ShellList(model).Sizes());
}

TEST(Disjoin, FacetsThatHaveFallenTogetherVanish) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    AddTriangle(model, CPoint3D(1, 0, 0), CPoint3D(1, 1, 0), CPoint3D(0, 1, 0));
    // The far corner is moved onto the near one: both facets now have the same three places.
    tagVertexNode* const pFar = FacetAt(model, 1).m_pVertex2;
    pFar->x = 0.0;
    pFar->y = 0.0;
    EXPECT_EQ(std::vector<int>({1}), ShellList(model).Sizes());
}

TEST(Disjoin, SingleFacetIsAShellOfOne) {
    CSTLModel model;
    AddTriangle(model, CPoint3D(0, 0, 0), CPoint3D(1, 0, 0), CPoint3D(0, 1, 0));
    ShellList const shells(model);
    EXPECT_EQ(std::vector<int>({1}), shells.Sizes());
    EXPECT_EQ("_1.STL", shells.Name(0));
}

TEST(Disjoin, EmptyModelAddsNothingAndWhatIsInTheListStays) {
    CSTLModel empty, model;
    XR_CList<void*, void*> list;
    list.AddTail(&empty);
    empty.Disjoin(list);
    EXPECT_EQ(1, list.GetCount());
    AddMesh(model, shapes::Cube(1.0f));
    model.Disjoin(list);
    ASSERT_EQ(2, list.GetCount());
    EXPECT_EQ(&empty, list.GetHead());
    delete static_cast<CSTLModel*>(list.GetTail());
}

TEST(Disjoin, NamesOfAnyLengthStayInsideTheField) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    auto const nameOf = [&model](std::string const& name) {
        SetName(model, name);
        return ShellList(model).Name(1);
    };
    EXPECT_EQ("_2.STL", nameOf(""));
    EXPECT_EQ("_2.STL", nameOf("a"));
    EXPECT_EQ("_2.STL", nameOf("abc"));
    EXPECT_EQ("_2.STL", nameOf(".stl"));
    EXPECT_EQ("a_2.STL", nameOf("a.stl"));
    EXPECT_EQ("no-dot-i_2.STL", nameOf("no-dot-in-it").substr(0, 14));
    for (std::size_t nLength = 250; nLength < 260; ++nLength) {
        std::string expected(nLength - 4, 'n');
        expected += "_2.STL";
        expected.resize(std::min<std::size_t>(expected.size(), 259));
        EXPECT_EQ(expected, nameOf(std::string(nLength, 'n')));
    }
    std::string const withoutZero = nameOf(std::string(400, 'n'));
    EXPECT_EQ(259u, withoutZero.size());
    EXPECT_EQ("n_2.S", withoutZero.substr(254));
}

// The seed and the facets beside it: the flag is looked at after each generation.
TEST(Disjoin, StopLeavesTheShellUnderWayIncomplete) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    model.StopCurOperate();
    {
        ShellList const stopped(model);
        EXPECT_EQ(std::vector<int>({4}), stopped.Sizes());
        int nLeft = 0;
        for (CFacet const* const f : FacetsOf(model)) nLeft += f->m_nRegion;
        EXPECT_EQ(20, nLeft);
    }
    model.ResetStopFlag();
    EXPECT_EQ(std::vector<int>({12, 12}), ShellList(model).Sizes());
}

TEST(Disjoin, ReadStopFlagDoesNotStopIt) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    model.StopReadModel();
    EXPECT_EQ(std::vector<int>({12, 12}), ShellList(model).Sizes());
}

TEST(Disjoin, ShellsComeInTheOrderOfTheirFirstFacetsAcrossSurfaces) {
    CSTLModel model;
    AddMesh(model, shapes::Shuffled(shapes::Tray(3, 2, 1), 5));
    model.ExtractSurfaceAndEdge();
    std::vector<CSTLModel*> const expected = LiteralDisjoin(FacetsOf(model));
    {
        ShellList const shells(model);
        ASSERT_EQ(6u, shells.Models().size());
        for (std::size_t i = 0; i < 6; ++i) {
            ASSERT_NO_FATAL_FAILURE(ExpectSameModels(*expected[i], *shells.Models()[i]));
            ExpectInvariants(*shells.Models()[i]);
        }
    }
    for (CSTLModel* const pShell : expected) delete pShell;
}

TEST(Disjoin, AgreesWithTheLiteralOneOnRandomMeshes) {
    for (std::uint32_t nSeed = 0; nSeed < 150; ++nSeed) {
        SCOPED_TRACE(nSeed);
        CSTLModel model;
        AddMesh(model, RandomMesh(nSeed));
        std::vector<CSTLModel*> const expected = LiteralDisjoin(FacetsOf(model));
        ShellList const shells(model);
        auto const models = shells.Models();
        ASSERT_EQ(expected.size(), models.size());
        for (std::size_t i = 0; i < models.size(); ++i)
            ASSERT_NO_FATAL_FAILURE(ExpectSameModels(*expected[i], *models[i]));
        for (CSTLModel* const pShell : expected) delete pShell;
    }
}

TEST(Disjoin, ShellOfManyBlocksIsWhole) {
    shapes::Mesh const mesh = shapes::Gyroid(12);
    CSTLModel model;
    AddMesh(model, mesh);
    std::vector<CSTLModel*> const expected = LiteralDisjoin(FacetsOf(model));
    ShellList const shells(model);
    auto const models = shells.Models();
    ASSERT_EQ(expected.size(), models.size());
    EXPECT_GT(models[0]->GetFacetsNum(), 4000);
    for (std::size_t i = 0; i < models.size(); ++i)
        ASSERT_NO_FATAL_FAILURE(ExpectSameModels(*expected[i], *models[i]));
    for (CSTLModel* const pShell : expected) delete pShell;
}

// Triangles between vertices that lie about a tolerance apart, or whose rows do, in shells that touch and
// overlap. What is one vertex in the source may be two in a shell, and the other way round.
TEST(Disjoin, AgreesWithTheLiteralOneWhereVerticesAreNear) {
    constexpr PointSoup::Kind kKinds[] = {PointSoup::kNearRows,       PointSoup::kNearEverything,
                                          PointSoup::kHalfTolerance,  PointSoup::kNearColumns,
                                          PointSoup::kWithoutNumbers, PointSoup::kNearlyNumbers};
    for (std::uint32_t nSeed = 0; nSeed < 240; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup(nSeed, kKinds[nSeed % 6]);
        CSTLModel model;
        unsigned const nTriangles = 1 + soup.Below(150);
        for (unsigned n = 0; n < nTriangles; ++n) {
            CPoint3D const a = soup.Next();
            CPoint3D const b = soup.Next();
            AddTriangle(model, a, b, soup.Next());
        }
        ExpectLiteralShells(model);
    }
}

// Read with a smaller tolerance than a shell's.
TEST(Disjoin, AgreesWithTheLiteralOneWhereHeightsOfTheSourceAreNear) {
    constexpr PointSoup::Kind kKinds[] = {PointSoup::kNearHeights, PointSoup::kNearEverything,
                                          PointSoup::kHalfTolerance, PointSoup::kManyHeights};
    for (std::uint32_t nSeed = 0; nSeed < 240; ++nSeed) {
        SCOPED_TRACE(nSeed);
        PointSoup soup(nSeed, kKinds[nSeed % 4]);
        CSTLModel model;
        model.m_VertexTree.m_dTolerance = nSeed % 8 < 4 ? 0.0 : 0.000001;
        unsigned const nTriangles = 1 + soup.Below(150);
        for (unsigned n = 0; n < nTriangles; ++n) {
            CPoint3D const a = soup.Next();
            CPoint3D const b = soup.Next();
            AddTriangle(model, a, b, soup.Next());
        }
        ExpectLiteralShells(model);
    }
}

TEST(Disjoin, AgreesWithTheLiteralOneOnAGyroidReadExactly) {
    for (double const dScale : {1.0, 0.01, 0.0001}) {
        SCOPED_TRACE(dScale);
        shapes::Mesh mesh = shapes::Gyroid(12);
        for (shapes::Triangle& t : mesh) {
            for (shapes::Corner& c : t) c.z *= static_cast<float>(dScale);
        }
        CSTLModel model;
        model.m_VertexTree.m_dTolerance = 0.0;
        AddMesh(model, mesh);
        ExpectLiteralShells(model);
    }
}

// After the part has shrunk, vertices may lie within the tolerance of each other.
TEST(Disjoin, AgreesWithTheLiteralOneAfterScaling) {
    for (std::uint32_t nSeed = 0; nSeed < 60; ++nSeed) {
        SCOPED_TRACE(nSeed);
        CSTLModel model;
        AddMesh(model, RandomMesh(nSeed));
        double const dScale = nSeed % 2 == 0 ? 0.0001 : 0.00021;
        for (tagVertexNode* const pVertex : VerticesOf(model)) {
            pVertex->x *= dScale;
            pVertex->y *= dScale;
            pVertex->z *= dScale;
        }
        if (nSeed % 3 == 0) model.m_VertexTree.ReBuildTree();
        ExpectLiteralShells(model);
    }
}

TEST(Disjoin, TrianglesOutOfRangeAreRefused) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    for (tagVertexNode* const pVertex : VerticesOf(model)) {
        if (pVertex->x >= 5.0) pVertex->x = 2e10;
    }
    EXPECT_EQ(std::vector<int>({12, 0}), ShellList(model).Sizes());
}

TEST(Disjoin, LeavesTheNumbersOfTheVerticesAlone) {
    CSTLModel model;
    AddMesh(model, TwoCubes());
    model.m_VertexTree.SetPointID(100);
    ShellList const shells(model);
    std::uint32_t nExpected = 100;
    for (tagVertexNode const* const pVertex : VerticesOf(model)) EXPECT_EQ(nExpected++, pVertex->m_nID);
}

// The facet stands in two surfaces; the host owns both entries and takes one out again.
TEST(Disjoin, FacetThatStandsInTheModelTwiceCountsOnce) {
    CSTLModel model;
    AddMesh(model, shapes::Cube(1.0f));
    auto& facets = model.m_SurfaceArray.m_aSurface.GetAt(0)->m_aFacet;
    facets.Add(&FacetAt(model, 3));
    EXPECT_EQ(std::vector<int>({12}), ShellList(model).Sizes());
    facets.RemoveAt(12, 1);
}

// A vertex of another model, which this model's tree does not hold.
TEST(Disjoin, CornerOfAnotherModelIsCopiedAsWell) {
    CSTLModel model, other;
    AddMesh(model, shapes::Cube(1.0f));
    CPoint3D far(9, 9, 9);
    tagVertexNode* const pFar = other.m_VertexTree.AddNode(far);
    tagVertexNode* const pOwn = FacetAt(model, 0).m_pVertex2;
    FacetAt(model, 0).m_pVertex2 = pFar;
    {
        ShellList const shells(model);
        ASSERT_EQ(std::vector<int>({12}), shells.Sizes());
        EXPECT_EQ(9.0, shells.Models()[0]->m_VertexTree.m_BoundBox.m_ptMax.x);
    }
    FacetAt(model, 0).m_pVertex2 = pOwn;
}

// Strips of two rows within the tolerance, each longer than the one before.
TEST(Disjoin, AgreesWithTheLiteralOneOnGrowingShellsOfNearRows) {
    CSTLModel model;
    double x = 0.0;
    for (int nCells = 1; nCells < 30; ++nCells, x += 5.0) {
        for (int i = 0; i < nCells; ++i, x += 1.0) {
            AddTriangle(model, CPoint3D(x, 0, 0), CPoint3D(x + 1.0, 0, 0), CPoint3D(x + 0.5, 0.00007, 0));
            AddTriangle(model, CPoint3D(x + 1.0, 0, 0), CPoint3D(x + 1.5, 0.00007, 0),
                        CPoint3D(x + 0.5, 0.00007, 0));
        }
    }
    ASSERT_EQ(870, model.GetFacetsNum());
    ExpectLiteralShells(model);
}
