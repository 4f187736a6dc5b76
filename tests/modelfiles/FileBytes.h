#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "MeshChecks.h"
#include "TestFiles.h"

// Bytes of files, put together by hand.

inline void AppendNumber(std::string& bytes, std::uint64_t n, int nSize) {
    for (int i = 0; i < nSize; ++i) bytes += static_cast<char>(n >> (8 * i) & 0xFF);
}

/// A file under construction.
class FileBytes {
public:
    FileBytes& Text(std::string_view text, std::size_t nSize) {
        m_Bytes.append(text);
        m_Bytes.append(nSize - text.size(), '\0');
        return *this;
    }
    FileBytes& Byte(unsigned n) { return Number(n, 1); }
    FileBytes& Number(std::uint64_t n, int nSize) {
        AppendNumber(m_Bytes, n, nSize);
        return *this;
    }
    FileBytes& Numbers(std::initializer_list<std::uint64_t> numbers, int nSize) {
        for (std::uint64_t const n : numbers) Number(n, nSize);
        return *this;
    }
    FileBytes& Floats(std::initializer_list<float> values) {
        for (float const f : values) Number(std::bit_cast<std::uint32_t>(f), 4);
        return *this;
    }
    FileBytes& Doubles(std::initializer_list<double> values) {
        for (double const d : values) Number(std::bit_cast<std::uint64_t>(d), 8);
        return *this;
    }
    FileBytes& Raw(std::string_view bytes) {
        m_Bytes.append(bytes);
        return *this;
    }
    FileBytes& Raw(FileBytes const& other) { return Raw(std::string_view(other.m_Bytes)); }
    std::string const& Get() const { return m_Bytes; }
    operator std::string const&() const { return m_Bytes; }

private:
    std::string m_Bytes;
};

/// The tetrahedron (0,1,2), (0,3,1), (1,3,2), (2,3,0) with its lowest vertex at the origin, of extent 3 on
/// all axes: the scales of the compressed files are powers of two.
inline void AddTetrahedron(CSTLModel& model) {
    CPoint3D const p[4] = {{0, 0, 0}, {3, 0, 1}, {0, 3, 2}, {0, 0, 3}};
    int const facets[4][3] = {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}};
    for (auto const& f : facets) AddTriangle(model, p[f[0]], p[f[1]], p[f[2]]);
}

/// A fan: facets (apex, rim i, rim i + 1) around the apex, closed or with a gap.
inline shapes::Mesh Fan(int nFacets, bool bClosed) {
    shapes::Mesh mesh;
    auto const rim = [&](int i) {
        double const dAngle =
            6.283185307179586 * (i % (bClosed ? nFacets : nFacets + 1)) / (nFacets + (bClosed ? 0 : 1));
        return shapes::Corner{static_cast<float>(50.0 * std::cos(dAngle)),
                              static_cast<float>(50.0 * std::sin(dAngle)), 0.0f};
    };
    for (int i = 0; i < nFacets; ++i) mesh.push_back({shapes::Corner{0.0f, 0.0f, 20.0f}, rim(i), rim(i + 1)});
    return mesh;
}

/// Triangles between few points: edges of many facets, facets of either winding, vertices where sheets touch.
inline shapes::Mesh RandomMesh(unsigned nSeed, int nPoints, int nFacets) {
    std::mt19937 random(nSeed);
    std::vector<shapes::Corner> points;
    for (int i = 0; i < nPoints; ++i) {
        points.push_back({static_cast<float>(random() % 64), static_cast<float>(random() % 64),
                          static_cast<float>(random() % 64)});
    }
    shapes::Mesh mesh;
    auto const pick = [&] { return points[random() % points.size()]; };
    for (int i = 0; i < nFacets; ++i) mesh.push_back({pick(), pick(), pick()});
    return mesh;
}

/// The real shapes that round trips are tried on.
inline std::vector<shapes::Mesh> RealShapes() {
    return {shapes::Cube(10.0f),
            shapes::IcoSphere(30.0, 4),
            shapes::UvSphere(20.0, 40, 300),
            shapes::Torus(30.0, 10.0, 60, 30),
            shapes::Bracket(),
            shapes::Gyroid(24),
            shapes::Tray(3, 2, 2),
            Fan(300, true),
            Fan(300, false),
            shapes::WithTurned(shapes::IcoSphere(20.0, 3), 7),
            shapes::HeightField(40, 1.0, [](double x, double y) { return 0.1 * x * y; })};
}
