#include "SizedShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace shapes {

namespace {

constexpr double kPi = 3.141592653589793;

int RootOf(double d) { return static_cast<int>(std::lround(std::sqrt(d))); }

Corner At(double x, double y, double z) {
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

void AddQuad(Mesh& mesh, Corner const& a, Corner const& b, Corner const& c, Corner const& d) {
    mesh.push_back({a, b, c});
    mesh.push_back({a, c, d});
}

// What many programs do that write such files: all is computed in float, so that what should be mirror images
// differs by a rounding here and there.
float Around(int k, int nOf) {
    return 2.0f * static_cast<float>(kPi) * static_cast<float>(k % nOf) / static_cast<float>(nOf);
}

// A sphere about the origin of two triangles a ring and segment, twice as many segments as rings.
Mesh RingSphere(float fRadius, double dTriangles) {
    int const nRings = std::max(RootOf(dTriangles / 4.0), 2);
    int const nSegments = 2 * nRings;
    auto const at = [&](int i, int k) {
        if (i == 0 || i == nRings) return Corner{0.0f, 0.0f, i == 0 ? fRadius : -fRadius};
        float const fPolar = static_cast<float>(kPi) * static_cast<float>(i) / static_cast<float>(nRings);
        float const fRing = fRadius * std::sin(fPolar);
        return Corner{fRing * std::cos(Around(k, nSegments)), fRing * std::sin(Around(k, nSegments)),
                      fRadius * std::cos(fPolar)};
    };
    Mesh mesh;
    for (int i = 0; i < nRings; ++i) {
        for (int k = 0; k < nSegments; ++k) {
            if (i + 1 < nRings) mesh.push_back({at(i, k), at(i + 1, k), at(i + 1, k + 1)});
            if (i > 0) mesh.push_back({at(i, k), at(i + 1, k + 1), at(i, k + 1)});
        }
    }
    return mesh;
}

// A column about (x, y) from z = 0: a cylinder, or with few sides a prism.
void AddColumn(Mesh& mesh, float x, float y, float fRadius, float fHeight, int nSides, int nLevels) {
    auto const at = [&](int k, int i) {
        return Corner{x + fRadius * std::cos(Around(k, nSides)), y + fRadius * std::sin(Around(k, nSides)),
                      fHeight * static_cast<float>(i) / static_cast<float>(nLevels)};
    };
    for (int k = 0; k < nSides; ++k) {
        for (int i = 0; i < nLevels; ++i) {
            AddQuad(mesh, at(k, i), at(k + 1, i), at(k + 1, i + 1), at(k, i + 1));
        }
        mesh.push_back({Corner{x, y, 0.0f}, at(k + 1, 0), at(k, 0)});
        mesh.push_back({Corner{x, y, fHeight}, at(k, nLevels), at(k + 1, nLevels)});
    }
}

}  // namespace

Mesh RingSphereOfAbout(std::size_t nTriangles) { return RingSphere(50.0f, static_cast<double>(nTriangles)); }

Mesh SpheresOfAbout(std::size_t nTriangles) {
    Mesh const one = RingSphere(4.0f, static_cast<double>(nTriangles) / 1000.0);
    Mesh mesh;
    mesh.reserve(1000 * one.size());
    for (int i = 0; i < 1000; ++i) {
        Append(mesh, Moved(one, 10.1f * static_cast<float>(i % 10), 10.1f * static_cast<float>(i / 10 % 10),
                           10.1f * static_cast<float>(i / 100)));
    }
    return mesh;
}

Mesh CylindersOfAbout(std::size_t nTriangles) {
    constexpr int kColumns = 1834;
    constexpr int kInRow = 43;
    constexpr int kSidesOfPrism = 6;
    double const dEach = static_cast<double>(nTriangles) / kColumns;
    int const nSides = std::max(2 * RootOf(dEach / 4.0), 8);
    Mesh mesh;
    for (int i = 0; i < kColumns; ++i) {
        int const n = i % 3 == 2 ? kSidesOfPrism : nSides;
        int const nLevels = std::max(static_cast<int>(dEach / (2.0 * n)) - 1, 1);
        AddColumn(mesh, 5.0f * static_cast<float>(i % kInRow) - 107.5f,
                  5.0f * static_cast<float>(i / kInRow) - 107.5f, 2.0f + 0.05f * static_cast<float>(i % 7),
                  4.0f + static_cast<float>(i % 5), n, nLevels);
    }
    return mesh;
}

Mesh MirroredOfAbout(std::size_t nTriangles) {
    Mesh mesh = GyroidOfAbout(nTriangles / 2);
    std::size_t const nHalf = mesh.size();
    for (std::size_t i = 0; i < nHalf; ++i) {
        Triangle t = mesh[i];
        for (Corner& corner : t) corner.x = -corner.x;
        std::swap(t[1], t[2]);
        mesh.push_back(t);
    }
    return mesh;
}

Mesh GridBoxOfAbout(std::size_t nTriangles) {
    int const nCells = std::max(RootOf(static_cast<double>(nTriangles) / 12.0), 1);
    double const dCell = 80.0 / nCells;
    Mesh mesh;
    for (std::size_t nAxis = 0; nAxis < 3; ++nAxis) {
        for (int nSide = 0; nSide < 2; ++nSide) {
            auto const at = [&](int i, int k) {
                std::array<double, 3> p{};
                p[nAxis] = nSide * nCells * dCell;
                p[(nAxis + 1) % 3] = (nSide != 0 ? i : k) * dCell;
                p[(nAxis + 2) % 3] = (nSide != 0 ? k : i) * dCell;
                return At(p[0], p[1], p[2]);
            };
            for (int i = 0; i < nCells; ++i) {
                for (int k = 0; k < nCells; ++k)
                    AddQuad(mesh, at(i, k), at(i + 1, k), at(i + 1, k + 1), at(i, k + 1));
            }
        }
    }
    return mesh;
}

// The same in every run.
Mesh NoiseOfAbout(std::size_t nTriangles) {
    Mesh mesh = HeightField(RootOf(static_cast<double>(nTriangles) / 2.0), 1.0, [](double x, double y) {
        auto const n =
            static_cast<std::uint32_t>(x) * 0x9E3779B9u ^ static_cast<std::uint32_t>(y) * 0x85EBCA6Bu;
        return static_cast<double>((n ^ n >> 15) * 0x2C1B3C6Du >> 16) / 32768.0;
    });
    for (Triangle& t : mesh) std::swap(t[1], t[2]);
    return mesh;
}

Mesh TurnedGyroidOfAbout(std::size_t nTriangles) { return WithTurned(GyroidOfAbout(nTriangles), 10); }

std::span<SizedShape const> SizedShapes() {
    static constexpr std::array<SizedShape, 8> kShapes = {{{"gyroid", GyroidOfAbout},
                                                           {"turned gyroid", TurnedGyroidOfAbout},
                                                           {"sphere of rings", RingSphereOfAbout},
                                                           {"1,000 spheres", SpheresOfAbout},
                                                           {"plate of cylinders", CylindersOfAbout},
                                                           {"mirrored part", MirroredOfAbout},
                                                           {"box of grids", GridBoxOfAbout},
                                                           {"noise field", NoiseOfAbout}}};
    return kShapes;
}

}  // namespace shapes
