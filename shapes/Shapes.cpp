#include "Shapes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <tuple>

namespace shapes {

namespace {

constexpr double kPi = 3.141592653589793;

Corner At(double x, double y, double z) {
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

void AddQuad(Mesh& mesh, Corner const& a, Corner const& b, Corner const& c, Corner const& d) {
    mesh.push_back({a, b, c});
    mesh.push_back({a, c, d});
}

Corner OnSphere(Corner const& p, double dRadius) {
    double const dLength = std::sqrt(double{p.x} * p.x + double{p.y} * p.y + double{p.z} * p.z);
    return At(p.x / dLength * dRadius, p.y / dLength * dRadius, p.z / dLength * dRadius);
}

Corner Middle(Corner const& a, Corner const& b) {
    return {(a.x + b.x) * 0.5f, (a.y + b.y) * 0.5f, (a.z + b.z) * 0.5f};
}

Corner Normal(Triangle const& t) {
    double const bx = double{t[1].x} - t[0].x, by = double{t[1].y} - t[0].y, bz = double{t[1].z} - t[0].z;
    double const cx = double{t[2].x} - t[0].x, cy = double{t[2].y} - t[0].y, cz = double{t[2].z} - t[0].z;
    double const nx = by * cz - bz * cy, ny = bz * cx - bx * cz, nz = bx * cy - by * cx;
    double const dLength = std::sqrt(nx * nx + ny * ny + nz * nz);
    if (!(dLength > 0.0)) return {};
    return At(nx / dLength, ny / dLength, nz / dLength);
}

}  // namespace

Mesh Box(Corner const& min, Corner const& max) {
    auto const at = [&](int i) {
        return Corner{(i & 1) != 0 ? max.x : min.x, (i & 2) != 0 ? max.y : min.y,
                      (i & 4) != 0 ? max.z : min.z};
    };
    Mesh mesh;
    AddQuad(mesh, at(0), at(2), at(3), at(1));
    AddQuad(mesh, at(4), at(5), at(7), at(6));
    AddQuad(mesh, at(0), at(1), at(5), at(4));
    AddQuad(mesh, at(2), at(6), at(7), at(3));
    AddQuad(mesh, at(0), at(4), at(6), at(2));
    AddQuad(mesh, at(1), at(3), at(7), at(5));
    return mesh;
}

Mesh Cube(float fSize) { return Box({0.0f, 0.0f, 0.0f}, {fSize, fSize, fSize}); }

Mesh UvSphere(double dRadius, int nRings, int nSegments) {
    auto const at = [&](int i, int k) {
        if (i == 0) return At(0.0, 0.0, dRadius);
        if (i == nRings) return At(0.0, 0.0, -dRadius);
        double const dPolar = kPi * i / nRings;
        double const dAround = 2.0 * kPi * (k % nSegments) / nSegments;
        return At(dRadius * std::sin(dPolar) * std::cos(dAround),
                  dRadius * std::sin(dPolar) * std::sin(dAround), dRadius * std::cos(dPolar));
    };
    Mesh mesh;
    for (int i = 0; i < nRings; ++i) {
        for (int k = 0; k < nSegments; ++k) {
            if (i + 1 < nRings) mesh.push_back({at(i, k), at(i + 1, k), at(i + 1, k + 1)});
            if (i > 0)
                mesh.push_back({at(i, k), i + 1 < nRings ? at(i + 1, k + 1) : at(nRings, 0), at(i, k + 1)});
        }
    }
    return mesh;
}

Mesh IcoSphere(double dRadius, int nDepth) {
    double const g = (1.0 + std::sqrt(5.0)) / 2.0;
    std::array<Corner, 12> const v = {At(-1, g, 0), At(1, g, 0), At(-1, -g, 0), At(1, -g, 0),
                                      At(0, -1, g), At(0, 1, g), At(0, -1, -g), At(0, 1, -g),
                                      At(g, 0, -1), At(g, 0, 1), At(-g, 0, -1), At(-g, 0, 1)};
    constexpr int kFaces[20][3] = {{0, 11, 5}, {0, 5, 1},  {0, 1, 7},   {0, 7, 10}, {0, 10, 11},
                                   {1, 5, 9},  {5, 11, 4}, {11, 10, 2}, {10, 7, 6}, {7, 1, 8},
                                   {3, 9, 4},  {3, 4, 2},  {3, 2, 6},   {3, 6, 8},  {3, 8, 9},
                                   {4, 9, 5},  {2, 4, 11}, {6, 2, 10},  {8, 6, 7},  {9, 8, 1}};
    Mesh mesh;
    for (auto const& f : kFaces) {
        mesh.push_back({OnSphere(v[static_cast<std::size_t>(f[0])], dRadius),
                        OnSphere(v[static_cast<std::size_t>(f[1])], dRadius),
                        OnSphere(v[static_cast<std::size_t>(f[2])], dRadius)});
    }
    for (int n = 0; n < nDepth; ++n) {
        Mesh finer;
        finer.reserve(mesh.size() * 4);
        for (Triangle const& t : mesh) {
            Corner const ab = OnSphere(Middle(t[0], t[1]), dRadius);
            Corner const bc = OnSphere(Middle(t[1], t[2]), dRadius);
            Corner const ca = OnSphere(Middle(t[2], t[0]), dRadius);
            finer.insert(finer.end(), {{t[0], ab, ca}, {t[1], bc, ab}, {t[2], ca, bc}, {ab, bc, ca}});
        }
        mesh = std::move(finer);
    }
    return mesh;
}

Mesh Torus(double dRadius, double dTubeRadius, int nSegments, int nTubeSegments) {
    auto const at = [&](int i, int k) {
        double const u = 2.0 * kPi * (i % nSegments) / nSegments;
        double const w = 2.0 * kPi * (k % nTubeSegments) / nTubeSegments;
        double const r = dRadius + dTubeRadius * std::cos(w);
        return At(r * std::cos(u), r * std::sin(u), dTubeRadius * std::sin(w));
    };
    Mesh mesh;
    for (int i = 0; i < nSegments; ++i) {
        for (int k = 0; k < nTubeSegments; ++k) {
            AddQuad(mesh, at(i, k), at(i + 1, k), at(i + 1, k + 1), at(i, k + 1));
        }
    }
    return mesh;
}

// ---- the bracket: a solid of grid cells, some of which are drilled, with some grid points moved

namespace {

class CellSolid {
public:
    using Index = std::array<int, 3>;

    explicit CellSolid(std::array<std::vector<double>, 3> lines) : m_Lines(std::move(lines)) {}

    void Fill(Index const& first, Index const& last) {
        for (int i = first[0]; i <= last[0]; ++i)
            for (int k = first[1]; k <= last[1]; ++k)
                for (int n = first[2]; n <= last[2]; ++n) m_Cells[{i, k, n}] = kNoHole;
    }
    /// Drills a hole along the axis through a cell that has no neighbours along it.
    void Drill(Index const& cell, int nAxis) { m_Cells[cell] = nAxis; }
    /// Puts a grid point elsewhere. Faces that collapse by it vanish.
    void Move(Index const& point, Corner const& place) { m_Moved[point] = place; }

    Mesh Surface() const {
        Mesh mesh;
        for (auto const& [cell, nHoleAxis] : m_Cells) {
            for (int nAxis = 0; nAxis < 3; ++nAxis) {
                for (int nSide = 0; nSide < 2; ++nSide) AddFace(mesh, cell, nAxis, nSide, nHoleAxis == nAxis);
            }
            if (nHoleAxis != kNoHole) AddHoleWall(mesh, cell, nHoleAxis);
        }
        std::erase_if(mesh, [](Triangle const& t) { return t[0] == t[1] || t[1] == t[2] || t[2] == t[0]; });
        return mesh;
    }

private:
    static constexpr int kNoHole = -1;
    static constexpr int kHoleSegments = 32;

    Corner Point(Index const& i) const {
        auto const found = m_Moved.find(i);
        if (found != m_Moved.end()) return found->second;
        auto const line = [&](std::size_t n) { return m_Lines[n][static_cast<std::size_t>(i[n])]; };
        return At(line(0), line(1), line(2));
    }

    // The corners of a cell's face, counter-clockwise seen from outside.
    std::array<Corner, 4> Face(Index const& cell, int nAxis, int nSide) const {
        auto const a = static_cast<std::size_t>(nAxis);
        std::size_t const u = (a + 1) % 3;
        std::size_t const w = (a + 2) % 3;
        std::array<Corner, 4> face;
        constexpr int kAround[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (std::size_t n = 0; n < 4; ++n) {
            Index point = cell;
            point[a] += nSide;
            point[u] += kAround[n][0];
            point[w] += kAround[n][1];
            face[nSide == 1 ? n : 3 - n] = Point(point);
        }
        return face;
    }

    // Points of the hole's circle in a face, in the face's sense, the first towards its first corner.
    std::vector<Corner> Circle(Index const& cell, int nAxis, int nSide) const {
        auto const a = static_cast<std::size_t>(nAxis);
        std::size_t const u = (a + 1) % 3;
        std::size_t const w = (a + 2) % 3;
        auto const line = [&](std::size_t n, int nStep) {
            return m_Lines[n][static_cast<std::size_t>(cell[n] + nStep)];
        };
        double const dRadius = 0.3 * std::min(line(u, 1) - line(u, 0), line(w, 1) - line(w, 0));
        std::vector<Corner> circle;
        for (int n = 0; n < kHoleSegments; ++n) {
            // The one face begins at -135 degrees, the other, which is seen from below, at 135.
            int const k = nSide == 1 ? n : (kHoleSegments + kHoleSegments * 3 / 4 - n) % kHoleSegments;
            double const dAngle = 2.0 * kPi * k / kHoleSegments - 0.75 * kPi;
            std::array<double, 3> p{};
            p[a] = line(a, nSide);
            p[u] = (line(u, 0) + line(u, 1)) / 2 + dRadius * std::cos(dAngle);
            p[w] = (line(w, 0) + line(w, 1)) / 2 + dRadius * std::sin(dAngle);
            circle.push_back(At(p[0], p[1], p[2]));
        }
        return circle;
    }

    void AddFace(Mesh& mesh, Index const& cell, int nAxis, int nSide, bool bHole) const {
        Index neighbor = cell;
        neighbor[static_cast<std::size_t>(nAxis)] += nSide == 1 ? 1 : -1;
        if (m_Cells.contains(neighbor)) return;
        std::array<Corner, 4> const face = Face(cell, nAxis, nSide);
        if (!bHole) {
            AddQuad(mesh, face[0], face[1], face[2], face[3]);
            return;
        }
        std::vector<Corner> const circle = Circle(cell, nAxis, nSide);
        std::size_t const nQuarter = circle.size() / 4;
        for (std::size_t n = 0; n < 4; ++n) {
            // The corner sees the quarter of the circle that is centred on it.
            for (std::size_t k = 0; k < nQuarter; ++k) {
                std::size_t const i = (n * nQuarter + k + circle.size() - nQuarter / 2) % circle.size();
                mesh.push_back({face[n], circle[(i + 1) % circle.size()], circle[i]});
            }
            std::size_t const nEnd = (n * nQuarter + nQuarter - nQuarter / 2) % circle.size();
            mesh.push_back({face[n], face[(n + 1) % 4], circle[nEnd]});
        }
    }

    void AddHoleWall(Mesh& mesh, Index const& cell, int nAxis) const {
        std::vector<Corner> const top = Circle(cell, nAxis, 1);
        std::vector<Corner> bottom;
        for (Corner p : top) {
            float* const pAxis = nAxis == 0 ? &p.x : nAxis == 1 ? &p.y : &p.z;
            *pAxis =
                static_cast<float>(m_Lines[static_cast<std::size_t>(nAxis)]
                                          [static_cast<std::size_t>(cell[static_cast<std::size_t>(nAxis)])]);
            bottom.push_back(p);
        }
        for (std::size_t i = 0; i < top.size(); ++i) {
            std::size_t const k = (i + 1) % top.size();
            AddQuad(mesh, top[i], top[k], bottom[k], bottom[i]);
        }
    }

    std::array<std::vector<double>, 3> m_Lines;
    std::map<Index, int> m_Cells;
    std::map<Index, Corner> m_Moved;
};

}  // namespace

Mesh Bracket() {
    CellSolid solid({std::vector<double>{0, 10, 25, 40, 55, 70, 80}, std::vector<double>{0, 20, 40, 60},
                     std::vector<double>{0, 8, 22, 38, 50, 62, 70}});
    solid.Fill({0, 0, 0}, {5, 2, 0});  // base plate
    solid.Fill({0, 0, 1}, {0, 2, 4});  // wall
    solid.Fill({0, 0, 5}, {5, 2, 5});  // shelf
    solid.Fill({1, 0, 4}, {1, 2, 4});  // gusset between wall and shelf
    solid.Fill({4, 1, 4}, {4, 1, 4});  // boss below the shelf
    for (int nColumn : {2, 4}) {
        for (int nRow : {0, 2}) solid.Drill({nColumn, nRow, 0}, 2);
    }
    solid.Drill({0, 1, 2}, 0);
    solid.Drill({3, 1, 5}, 2);
    for (int k = 0; k <= 3; ++k) {
        double const y = 20.0 * k;
        solid.Move({2, k, 4}, At(25, y, 62));  // the gusset's underside slopes from the wall to the shelf
    }
    for (int nColumn : {4, 5}) {
        double const x = nColumn == 4 ? 55 : 70;
        for (int k : {1, 2}) solid.Move({nColumn, k, 4}, At(x, 30, 50));  // the boss ends in a keel
    }
    return solid.Surface();
}

// ---- the gyroid: A. Doi and A. Koide, "An efficient method of triangulating equi-valued surfaces by using
// tetrahedral cells", 1991; six tetrahedra a cell about its diagonal

namespace {

class MarchingTetrahedra {
public:
    MarchingTetrahedra(int nCells, double dCellSize) : m_nCells(nCells), m_dCellSize(dCellSize) {}

    template <class Field>
    Mesh Run(Field const& field) {
        Mesh mesh;
        int const n = m_nCells + 1;
        std::vector<double> below = Slice(0, field);
        for (int z = 0; z < m_nCells; ++z) {
            std::vector<double> const above = Slice(z + 1, field);
            for (int y = 0; y < m_nCells; ++y) {
                for (int x = 0; x < m_nCells; ++x) {
                    std::array<Sample, 8> cell;
                    for (int i = 0; i < 8; ++i) {
                        int const cx = x + (i & 1), cy = y + (i >> 1 & 1), cz = z + (i >> 2 & 1);
                        auto const nPlace = static_cast<std::size_t>(cy * n + cx);
                        cell[static_cast<std::size_t>(i)] = {
                            cx, cy, cz, (i >> 2 & 1) != 0 ? above[nPlace] : below[nPlace]};
                    }
                    AddCell(mesh, cell);
                }
            }
            below = above;
        }
        return mesh;
    }

private:
    struct Sample {
        int x, y, z;
        double value;  // below 0 inside
    };

    template <class Field>
    std::vector<double> Slice(int z, Field const& field) const {
        std::vector<double> values;
        values.reserve(static_cast<std::size_t>(m_nCells + 1) * static_cast<std::size_t>(m_nCells + 1));
        for (int y = 0; y <= m_nCells; ++y) {
            for (int x = 0; x <= m_nCells; ++x) {
                values.push_back(field(x * m_dCellSize, y * m_dCellSize, z * m_dCellSize));
            }
        }
        return values;
    }

    // The crossing on the edge between two samples, computed from the lesser to the greater grid point
    // whichever tetrahedron asks.
    Corner Crossing(Sample const* a, Sample const* b) const {
        if (std::tie(b->z, b->y, b->x) < std::tie(a->z, a->y, a->x)) std::swap(a, b);
        double const t = a->value / (a->value - b->value);
        return At((a->x + (b->x - a->x) * t) * m_dCellSize, (a->y + (b->y - a->y) * t) * m_dCellSize,
                  (a->z + (b->z - a->z) * t) * m_dCellSize);
    }

    void AddCell(Mesh& mesh, std::array<Sample, 8> const& cell) const {
        constexpr std::size_t kTetrahedra[6][4] = {{0, 1, 3, 7}, {0, 3, 2, 7}, {0, 2, 6, 7},
                                                   {0, 6, 4, 7}, {0, 4, 5, 7}, {0, 5, 1, 7}};
        bool const bFirst = cell[0].value < 0.0;
        if (std::all_of(cell.begin(), cell.end(), [&](Sample const& s) { return (s.value < 0.0) == bFirst; }))
            return;
        for (auto const& t : kTetrahedra)
            AddTetrahedron(mesh, {&cell[t[0]], &cell[t[1]], &cell[t[2]], &cell[t[3]]});
    }

    // All six tetrahedra are oriented alike: corners 1, 2, 3 are counter-clockwise seen from outside corner
    // 0.
    void AddTetrahedron(Mesh& mesh, std::array<Sample const*, 4> const& corner) const {
        std::vector<int> inside, outside;
        for (int i = 0; i < 4; ++i)
            (corner[static_cast<std::size_t>(i)]->value < 0.0 ? inside : outside).push_back(i);
        auto const at = [&](int i, int k) {
            return Crossing(corner[static_cast<std::size_t>(i)], corner[static_cast<std::size_t>(k)]);
        };
        // The other three corners of a tetrahedron, in the sense that faces away from this one.
        constexpr int kOthers[4][3] = {{1, 2, 3}, {0, 3, 2}, {0, 1, 3}, {0, 2, 1}};
        if (inside.size() == 1 || outside.size() == 1) {
            bool const bOneInside = inside.size() == 1;
            int const i = bOneInside ? inside[0] : outside[0];
            auto const& o = kOthers[i];
            Triangle t = {at(i, o[0]), at(i, o[1]), at(i, o[2])};
            if (!bOneInside) std::swap(t[1], t[2]);
            mesh.push_back(t);
        } else if (inside.size() == 2) {
            int const a = inside[0], b = inside[1];
            // c and d, so that (b, c, d) faces away from a.
            int c = outside[0], d = outside[1];
            auto const& o = kOthers[a];
            auto const nPlace = std::find(o, o + 3, b) - o;
            if (o[(nPlace + 1) % 3] != c) std::swap(c, d);
            Corner const ac = at(a, c), ad = at(a, d), bc = at(b, c), bd = at(b, d);
            mesh.push_back({ac, ad, bd});
            mesh.push_back({ac, bd, bc});
        }
    }

    int m_nCells;
    double m_dCellSize;
};

}  // namespace

Mesh Gyroid(int nCells) {
    constexpr double kPeriod = 8.0;
    constexpr double kCellSize = kPeriod / 12.0;
    constexpr double kThickness = 0.5;
    double const dSize = nCells * kCellSize;
    return MarchingTetrahedra(nCells, kCellSize).Run([dSize](double x, double y, double z) {
        double const k = 2.0 * kPi / kPeriod;
        double const f = std::sin(k * x) * std::cos(k * y) + std::sin(k * y) * std::cos(k * z) +
                         std::sin(k * z) * std::cos(k * x);
        double const dSheet = std::fabs(f + 0.013) - kThickness;
        double const dMargin = 0.3 * kCellSize;
        double const dBox = std::max({dMargin - x, x - dSize + dMargin, dMargin - y, y - dSize + dMargin,
                                      dMargin - z, z - dSize + dMargin});
        return std::max(dSheet, dBox);
    });
}

Mesh GyroidOfAbout(std::size_t nTriangles) {
    // Some seven triangles a cell.
    int nCells = static_cast<int>(std::cbrt(static_cast<double>(nTriangles) / 7.0));
    Mesh mesh = Gyroid(std::max(nCells, 4));
    double const dRatio = static_cast<double>(nTriangles) / static_cast<double>(mesh.size());
    int const nBetter = std::max(4, static_cast<int>(std::lround(nCells * std::cbrt(dRatio))));
    return nBetter == nCells ? mesh : Gyroid(nBetter);
}

Mesh Tray(int nColumns, int nRows, int nDepth) {
    constexpr float kRadius = 4.0f;
    constexpr float kPitch = 10.0f;
    Mesh const ball = IcoSphere(kRadius, nDepth);
    Mesh mesh;
    mesh.reserve(ball.size() * static_cast<std::size_t>(nColumns) * static_cast<std::size_t>(nRows));
    for (int k = 0; k < nRows; ++k) {
        for (int i = 0; i < nColumns; ++i) {
            Append(mesh,
                   Moved(ball, kPitch * static_cast<float>(i), kPitch * static_cast<float>(k), kRadius));
        }
    }
    return mesh;
}

Mesh HeightField(int nCells, double dCellSize, std::function<double(double, double)> const& height) {
    auto const at = [&](int i, int k) {
        return At(i * dCellSize, k * dCellSize, height(i * dCellSize, k * dCellSize));
    };
    Mesh mesh;
    for (int k = 0; k < nCells; ++k) {
        for (int i = 0; i < nCells; ++i)
            AddQuad(mesh, at(i, k), at(i + 1, k), at(i + 1, k + 1), at(i, k + 1));
    }
    return mesh;
}

Mesh& Append(Mesh& mesh, Mesh const& other) {
    mesh.insert(mesh.end(), other.begin(), other.end());
    return mesh;
}

Mesh Moved(Mesh mesh, float dx, float dy, float dz) {
    for (Triangle& t : mesh) {
        for (Corner& p : t) p = {p.x + dx, p.y + dy, p.z + dz};
    }
    return mesh;
}

Mesh Shuffled(Mesh mesh, std::uint32_t nSeed) {
    std::mt19937 random(nSeed);
    for (std::size_t i = mesh.size(); i > 1; --i) std::swap(mesh[i - 1], mesh[random() % i]);
    return mesh;
}

Mesh WithTurned(Mesh mesh, std::size_t nEvery) {
    for (std::size_t i = 1; i < mesh.size(); i += nEvery) std::swap(mesh[i][1], mesh[i][2]);
    return mesh;
}

std::string ToBinaryStl(Mesh const& mesh, std::string const& header) {
    std::string bytes(84 + mesh.size() * 50, '\0');
    std::copy_n(header.begin(), std::min<std::size_t>(header.size(), 80), bytes.begin());
    auto const nCount = static_cast<std::uint32_t>(mesh.size());
    for (unsigned i = 0; i < 4; ++i) bytes[80 + i] = static_cast<char>(nCount >> (8 * i) & 0xFF);
    char* p = bytes.data() + 84;
    for (Triangle const& t : mesh) {
        std::array<Corner, 4> const record = {Normal(t), t[0], t[1], t[2]};
        static_assert(sizeof record == 48);
        std::memcpy(p, record.data(), sizeof record);
        p += 50;
    }
    return bytes;
}

std::string ToAsciiStl(Mesh const& mesh, std::string const& name, char const* pLineEnd) {
    std::string text = "solid " + name + pLineEnd;
    std::array<char, 160> line{};
    auto const add = [&](char const* pFormat, Corner const& p) {
        int const n = std::snprintf(line.data(), line.size(), pFormat, double{p.x}, double{p.y}, double{p.z});
        text.append(line.data(), static_cast<std::size_t>(n));
        text += pLineEnd;
    };
    for (Triangle const& t : mesh) {
        add("  facet normal %.6e %.6e %.6e", Normal(t));
        text.append("    outer loop").append(pLineEnd);
        for (Corner const& p : t) add("      vertex %.9g %.9g %.9g", p);
        text.append("    endloop").append(pLineEnd).append("  endfacet").append(pLineEnd);
    }
    return text + "endsolid " + name + pLineEnd;
}

}  // namespace shapes
