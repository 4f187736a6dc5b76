// The readers' way into a model against that of single facets, on shapes whose coordinates are alike in
// different ways, at tolerances that make little of it the same and much.

#include <SizedShapes.h>

#include <string_view>

#include "MeshChecks.h"
#include "mesh/FacetIntake.h"

using namespace varnet;

namespace {

std::vector<tagFACET> FacetsOf(shapes::Mesh const& mesh) {
    std::vector<tagFACET> facets(mesh.size());
    for (std::size_t i = 0; i < mesh.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            facets[i].m_ptVertex[k] = CPoint3D(mesh[i][k].x, mesh[i][k].y, mesh[i][k].z);
        }
    }
    return facets;
}

void ExpectSameIntake(shapes::Mesh const& mesh, double dTolerance) {
    std::vector<tagFACET> expected = FacetsOf(mesh);
    std::vector<tagFACET> offered = expected;
    CSTLModel plain;
    CSTLModel model;
    plain.m_VertexTree.m_dTolerance = dTolerance;
    model.m_VertexTree.m_dTolerance = dTolerance;
    for (tagFACET& facet : expected) plain.AddFacet(facet);
    FacetIntake intake(model, offered.size());
    std::span<tagFACET> left(offered);
    while (!left.empty()) {
        std::span<tagFACET> const block = left.first(std::min<std::size_t>(left.size(), 700));
        intake.AddAll(block);
        left = left.subspan(block.size());
    }
    for (std::size_t i = 0; i < offered.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            ASSERT_TRUE(SameBits(expected[i].m_ptVertex[k], offered[i].m_ptVertex[k])) << i;
        }
    }
    ExpectSameModels(plain, model);
}

class IntakeShapes : public testing::TestWithParam<std::size_t> {
protected:
    static shapes::SizedShape const& Shape() { return shapes::SizedShapes()[GetParam()]; }
};

}  // namespace

TEST_P(IntakeShapes, GiveTheSameModelAsSingleFacetsInAnyOrder) {
    shapes::Mesh const mesh = Shape().pMake(12000);
    for (shapes::Mesh const& ordered : {mesh, shapes::Shuffled(mesh, 7)}) {
        for (double const dTolerance : {0.0001, 0.000001, 0.0, 0.001, 0.01, 0.1, 1.0, 1e-9}) {
            SCOPED_TRACE(testing::Message() << Shape().pName << ", " << dTolerance);
            ASSERT_NO_FATAL_FAILURE(ExpectSameIntake(ordered, dTolerance));
        }
    }
}

// From 50,000 vertices on, what a group of triangles needs is brought near, and corners that took another
// height are remembered, where their places lie all over the tree.
TEST(IntakeShapes, ALargeFieldOfNoiseGivesTheSameModelAsSingleFacets) {
    for (shapes::SizedShape const& shape : shapes::SizedShapes()) {
        if (std::string_view(shape.pName) != "noise field") continue;
        shapes::Mesh const mesh = shape.pMake(130000);
        for (double const dTolerance : {0.0001, 0.0003, 0.01}) {
            SCOPED_TRACE(dTolerance);
            ASSERT_NO_FATAL_FAILURE(ExpectSameIntake(mesh, dTolerance));
        }
    }
}

// Signs of zeros, and what is not a number, at a tolerance of 0.
TEST(IntakeShapes, ZerosOfBothSignsAndWhatIsNoNumberEnterAsSingleFacetsDo) {
    float const fNaN = std::numeric_limits<float>::quiet_NaN();
    for (float const fOdd : {0.0f, fNaN}) {
        shapes::Mesh mesh;
        std::mt19937 random(3);
        for (int n = 0; n < 4000; ++n) {
            auto const next = [&random] {
                std::uint32_t const nKind = random() % 8;
                return nKind < 3 ? 0.0f : nKind < 6 ? -0.0f : nKind == 6 ? 1.0f : -1.0f;
            };
            shapes::Triangle t;
            for (shapes::Corner& c : t) c = {next(), next(), next()};
            if (n % 1000 == 999) t[static_cast<std::size_t>(n % 3)] = {fOdd, 1.0f, fOdd};
            mesh.push_back(t);
        }
        for (double const dTolerance : {0.0, 0.0001, -0.0, -1.0}) {
            SCOPED_TRACE(testing::Message() << fOdd << ", " << dTolerance);
            ASSERT_NO_FATAL_FAILURE(ExpectSameIntake(mesh, dTolerance));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, IntakeShapes, testing::Range(std::size_t{0}, shapes::SizedShapes().size()));
