#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "MeshChecks.h"

// Random meshes with much to find: overhangs, legs, keels, grooves, level faces, and everything that is wrong
// with a mesh. Coordinates lie on a lattice, so that parts touch, and faces are level, upright or slanted.

class RandomParts {
public:
    explicit RandomParts(std::uint32_t nSeed) : m_Random(nSeed) {}

    /// One of seven kinds of mesh, by the seed.
    shapes::Mesh Make(std::uint32_t nKind) {
        switch (nKind % 7) {
            case 0:
                return Boxes(8);
            case 1:
                return Table();
            case 2:
                return Ridges(true);
            case 3:
                return Ridges(false);
            case 4:
                return HeightField();
            case 5:
                return Soup(120, 4);
            default: {
                shapes::Mesh mesh = Boxes(4);
                return shapes::WithTurned(shapes::Append(mesh, Soup(40, 5)), 3);
            }
        }
    }

    int Below(int n) { return static_cast<int>(m_Random() % static_cast<std::uint32_t>(n)); }
    float At(int n) { return 0.5f * static_cast<float>(Below(n)); }

    shapes::Mesh Boxes(int nBoxes) {
        shapes::Mesh mesh;
        for (int i = 0; i < nBoxes; ++i) {
            shapes::Corner const min{At(10), At(10), At(10)};
            shapes::Corner const max{min.x + 0.5f + At(4), min.y + 0.5f + At(4), min.z + 0.5f + At(4)};
            shapes::Append(mesh, shapes::Box(min, max));
        }
        return mesh;
    }

    shapes::Mesh Table() {
        shapes::Mesh mesh = shapes::Box({0, 0, 5}, {10, 8, 6});
        for (int i = 0; i < 4; ++i) {
            float const x = i % 2 == 0 ? 0.0f : 9.0f;
            float const y = i < 2 ? 0.0f : 7.0f;
            shapes::Append(mesh, shapes::Box({x, y, At(3)}, {x + 1, y + 1, 5}));
        }
        return mesh;
    }

    /// Strips with a bent line in their middle, below (keels) or above (grooves) their sides, some of them
    /// sloped or meeting at their ends.
    shapes::Mesh Ridges(bool bKeel) {
        shapes::Mesh mesh;
        for (int i = 0; i < 6; ++i) {
            float const x = 2.0f * static_cast<float>(Below(4)), y = 4.0f * static_cast<float>(Below(3));
            float const z = At(2), dSide = 0.5f + At(5);
            for (int k = 0; k < 3; ++k) {
                shapes::Corner const a{x + static_cast<float>(k), y, z + (k == 1 ? At(3) : 0.0f)};
                shapes::Corner const b{x + static_cast<float>(k + 1), y, z};
                shapes::Corner const left{a.x, y + 1, z + dSide}, right{a.x, y - 1, z + dSide};
                mesh.push_back(bKeel ? shapes::Triangle{a, left, b} : shapes::Triangle{a, b, left});
                mesh.push_back(bKeel ? shapes::Triangle{a, b, right} : shapes::Triangle{a, right, b});
            }
        }
        return mesh;
    }

    /// Open at its rim; faces up or down.
    shapes::Mesh HeightField() {
        auto const nSalt = static_cast<std::uint32_t>(m_Random());
        shapes::Mesh mesh = shapes::HeightField(9, 1.0, [nSalt](double x, double y) {
            auto const n = static_cast<std::uint32_t>(x + 16.0 * y) * 0x9E3779B9u ^ nSalt;
            return 0.25 * ((n ^ n >> 13) * 0x85EBCA6Bu >> 16 & 7);
        });
        if (nSalt % 2 == 0) {
            for (shapes::Triangle& t : mesh) std::swap(t[1], t[2]);
        }
        return mesh;
    }

    /// Triangles of lattice points, with edges of many facets and repeated facets.
    shapes::Mesh Soup(int nFacets, int nSide) {
        shapes::Mesh mesh;
        for (int i = 0; i < nFacets; ++i) {
            shapes::Triangle t;
            for (shapes::Corner& p : t) {
                p.x = At(nSide);
                p.y = At(nSide);
                p.z = At(nSide);
            }
            mesh.push_back(t);
        }
        return mesh;
    }

private:
    std::mt19937 m_Random;
};

/// A model of such a mesh, and the numbers of its facets in the order in which they entered.
struct NumberedModel {
    explicit NumberedModel(shapes::Mesh const& mesh) {
        AddMesh(model, mesh);
        facets = FacetsOf(model);
        for (std::size_t i = 0; i < facets.size(); ++i) numbers[facets[i]] = static_cast<int>(i);
    }
    NumberedModel(NumberedModel const&) = delete;
    NumberedModel& operator=(NumberedModel const&) = delete;

    std::vector<int> Numbers(CFeatureSurface const& surface) const {
        std::vector<int> found;
        for (int i = 0; i < surface.m_aFacet.GetSize(); ++i)
            found.push_back(numbers.at(surface.m_aFacet.GetAt(i)));
        return found;
    }
    std::vector<std::vector<int>> Numbers(CSurfaceArray const& surfaces) const {
        std::vector<std::vector<int>> found;
        for (int i = 0; i < surfaces.m_aSurface.GetSize(); ++i)
            found.push_back(Numbers(*surfaces.m_aSurface.GetAt(i)));
        return found;
    }
    std::vector<std::vector<int>> Numbers(std::vector<std::vector<CFacet*>> const& groups) const {
        std::vector<std::vector<int>> found;
        for (auto const& group : groups) {
            found.emplace_back();
            for (CFacet* const f : group) found.back().push_back(numbers.at(f));
        }
        return found;
    }
    void ExpectMarksCleared() const {
        for (CFacet const* const f : facets) ASSERT_EQ(0, f->m_nRegion);
    }

    CSTLModel model;
    std::vector<CFacet*> facets;
    std::map<CFacet const*, int> numbers;
};

/// Surfaces over facets of a model: they are destroyed, the facets stay.
class BorrowedSurfaces {
public:
    BorrowedSurfaces() = default;
    BorrowedSurfaces(BorrowedSurfaces const&) = delete;
    BorrowedSurfaces& operator=(BorrowedSurfaces const&) = delete;
    ~BorrowedSurfaces() {
        for (int i = 0; i < array.m_aSurface.GetSize(); ++i) array.m_aSurface[i]->m_aFacet.RemoveAll();
    }
    CSurfaceArray array;
};

/// That each edge of the model has exactly two facets, which run along it in opposite directions.
inline void ExpectClosed(CSTLModel const& model) {
    std::map<std::pair<tagVertexNode*, tagVertexNode*>, int> uses;
    for (CFacet const* const f : FacetsOf(model)) {
        ++uses[{f->m_pVertex1, f->m_pVertex2}];
        ++uses[{f->m_pVertex2, f->m_pVertex3}];
        ++uses[{f->m_pVertex3, f->m_pVertex1}];
    }
    for (auto const& [edge, nUses] : uses) {
        EXPECT_EQ(1, nUses);
        EXPECT_EQ(1u, uses.count({edge.second, edge.first}));
    }
}

/// The volume, above 0 when the normals of a closed mesh point outward.
inline double SignedVolume(CSTLModel const& model) {
    double dSum = 0.0;
    for (CFacet const* const f : FacetsOf(model)) {
        CPoint3D const &a = *f->m_pVertex1, &b = *f->m_pVertex2, &c = *f->m_pVertex3;
        dSum += a.x * (b.y * c.z - b.z * c.y) - a.y * (b.x * c.z - b.z * c.x) + a.z * (b.x * c.y - b.y * c.x);
    }
    return dSum / 6.0;
}

/// The generated solids.
inline std::vector<CSTLModel*> SolidsOf(CSTLModel const& model) {
    std::vector<CSTLModel*> solids;
    XR__POSITION* position = model.m_SupportModelList.GetHeadPosition();
    while (position != nullptr)
        solids.push_back(static_cast<CSTLModel*>(model.m_SupportModelList.GetNext(position)));
    return solids;
}
