#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "Damaged.h"
#include "Shapes.h"
#include "varnet/Part.h"

namespace varnet {

// A mesh as arrays, three points a facet.
struct Soup {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
};
inline Soup SoupOf(shapes::Mesh const& mesh) {
    Soup soup;
    for (shapes::Triangle const& t : mesh) {
        auto const first = static_cast<std::int32_t>(soup.points.size());
        for (shapes::Corner const& c : t) soup.points.push_back({c.x, c.y, c.z});
        soup.triangles.push_back({first, first + 1, first + 2});
    }
    return soup;
}
inline Part PartOf(shapes::Mesh const& mesh, IntakeSettings const& settings = {}) {
    Soup const soup = SoupOf(mesh);
    return Part(soup.points, soup.triangles, settings);
}

// A repair that fills holes with rims up to the length.
inline RepairSettings Filling(double length) {
    RepairSettings settings;
    settings.fillHoles = length;
    return settings;
}

using Corners = std::array<std::array<double, 3>, 3>;

// The facets as corners, with the least in front.
inline std::vector<Corners> FacetsOf(std::span<Point3 const> points, std::span<Triangle const> triangles) {
    std::vector<Corners> facets;
    for (Triangle const& t : triangles) {
        Corners c;
        for (std::size_t k = 0; k < 3; ++k) {
            Point3 const& p = points[static_cast<std::size_t>(t[k])];
            c[k] = {p.x + 0.0, p.y + 0.0, p.z + 0.0};
        }
        std::rotate(c.begin(), std::min_element(c.begin(), c.end()), c.end());
        facets.push_back(c);
    }
    return facets;
}
inline std::vector<Corners> FacetsOf(Part const& part) { return FacetsOf(part.Points(), part.Triangles()); }
inline std::vector<Corners> FacetsOf(shapes::Mesh const& mesh) {
    Soup const soup = SoupOf(mesh);
    return FacetsOf(soup.points, soup.triangles);
}
inline std::vector<Corners> Sorted(std::vector<Corners> facets) {
    std::sort(facets.begin(), facets.end());
    return facets;
}

// Directed edges without their opposite, counted in a map of coordinates.
inline std::int64_t OpenEdgesOf(std::vector<Corners> const& facets) {
    std::map<std::pair<std::array<double, 3>, std::array<double, 3>>, int> balance;
    for (Corners const& c : facets) {
        for (std::size_t k = 0; k < 3; ++k) {
            auto const& a = c[k];
            auto const& b = c[(k + 1) % 3];
            if (a < b) ++balance[{a, b}];
            if (b < a) --balance[{b, a}];
        }
    }
    std::int64_t open = 0;
    for (auto const& [edge, count] : balance) open += std::abs(count);
    return open;
}

/// Triangles of distinct corners among few points, so that many are twins, turned twins, degenerate, or share
/// an edge with several.
inline std::vector<Triangle> RandomTriangles(std::mt19937& random, std::size_t points, std::size_t count) {
    std::vector<Triangle> triangles;
    while (triangles.size() < count) {
        auto const pick = [&] { return static_cast<std::int32_t>(random() % points); };
        Triangle const t = {pick(), pick(), pick()};
        if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) triangles.push_back(t);
    }
    return triangles;
}

}  // namespace varnet
