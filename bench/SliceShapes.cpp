#include "SliceShapes.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "BenchFiles.h"

namespace {

IndexedMesh Indexed(shapes::Mesh const& mesh) {
    struct Hash {
        std::size_t operator()(shapes::Corner const& c) const {
            std::hash<float> const hash;
            return (hash(c.x) * 31 + hash(c.y)) * 1000003 + hash(c.z);
        }
    };
    IndexedMesh indexed;
    std::unordered_map<shapes::Corner, std::int32_t, Hash> numbers;
    indexed.lowest = mesh.front().front().z;
    double highest = indexed.lowest;
    for (shapes::Triangle const& triangle : mesh) {
        std::array<std::int32_t, 3> corners{};
        for (std::size_t i = 0; i < 3; ++i) {
            auto const [it, isNew] =
                numbers.try_emplace(triangle[i], static_cast<std::int32_t>(indexed.points.size()));
            if (isNew) {
                indexed.points.push_back({triangle[i].x, triangle[i].y, triangle[i].z});
                indexed.lowest = std::min(indexed.lowest, indexed.points.back()[2]);
                highest = std::max(highest, indexed.points.back()[2]);
            }
            corners[i] = it->second;
        }
        indexed.triangles.push_back(corners);
    }
    indexed.height = highest - indexed.lowest;
    return indexed;
}

// A plate of cylinders, 400 of them, of so many facets.
shapes::Mesh Plate(std::size_t facets) {
    int const sides = static_cast<int>(facets / 400 / 4);
    shapes::Mesh mesh = shapes::Box({-4, -4, 0}, {164, 164, 5});
    shapes::Mesh cylinder;
    auto const at = [sides](int i, float z) {
        double const angle = 2.0 * std::acos(-1.0) * (i % sides) / sides;
        return shapes::Corner{static_cast<float>(3.0 * std::cos(angle)),
                              static_cast<float>(3.0 * std::sin(angle)), z};
    };
    for (int i = 0; i < sides; ++i) {
        cylinder.push_back({at(i, 6), at(i + 1, 6), at(i + 1, 40)});
        cylinder.push_back({at(i, 6), at(i + 1, 40), at(i, 40)});
        cylinder.push_back({shapes::Corner{0, 0, 40}, at(i, 40), at(i + 1, 40)});
        cylinder.push_back({shapes::Corner{0, 0, 6}, at(i + 1, 6), at(i, 6)});
    }
    for (int i = 0; i < 400; ++i) {
        shapes::Append(mesh, shapes::Moved(cylinder, static_cast<float>(i % 20) * 8.0f,
                                           static_cast<float>(i / 20) * 8.0f, 0.0f));
    }
    return mesh;
}

// Balls that stand in each other, each a mesh of its own.
std::vector<IndexedMesh> Overlapping(std::size_t facets) {
    std::vector<IndexedMesh> meshes;
    shapes::Mesh const ball = shapes::IcoSphere(6.0, facets > 500'000 ? 5 : 3);
    for (int i = 0; i < 50; ++i) {
        meshes.push_back(Indexed(
            shapes::Moved(ball, static_cast<float>(i % 10) * 8.0f, static_cast<float>(i / 10) * 8.0f, 0.0f)));
    }
    return meshes;
}

std::vector<IndexedMesh> Make(SliceShape shape, std::size_t facets) {
    switch (shape) {
        case SliceShape::kGyroid:
            return {Indexed(GyroidMesh(facets))};
        case SliceShape::kSphere: {
            int const rings = static_cast<int>(std::sqrt(static_cast<double>(facets) / 4.0));
            return {Indexed(shapes::UvSphere(50.0, rings, 2 * rings))};
        }
        case SliceShape::kSpheres:
            return {Indexed(shapes::Tray(10, 10, facets > 500'000 ? 5 : 3))};
        case SliceShape::kPlate:
            return {Indexed(Plate(facets))};
        default:
            return Overlapping(facets);
    }
}

using Path = std::vector<std::array<double, 2>>;

bool IsInside(Path const& path, std::array<double, 2> const& point) {
    bool inside = false;
    for (std::size_t i = 0, last = path.size() - 1; i < path.size(); last = i++) {
        auto const& a = path[last];
        auto const& b = path[i];
        if ((a[1] > point[1]) == (b[1] > point[1])) continue;
        inside ^= a[0] + (point[1] - a[1]) / (b[1] - a[1]) * (b[0] - a[0]) > point[0];
    }
    return inside;
}

double AreaOf(Path const& path) {
    double twice = 0.0;
    for (std::size_t i = 0, last = path.size() - 1; i < path.size(); last = i++) {
        twice += path[last][0] * path[i][1] - path[last][1] * path[i][0];
    }
    return std::fabs(twice) / 2.0;
}

}  // namespace

std::vector<IndexedMesh> const& SliceShapeOf(SliceShape shape, std::size_t facets) {
    static std::vector<IndexedMesh> meshes;
    static SliceShape heldShape{};
    static std::size_t heldFacets = 0;
    if (heldShape != shape || heldFacets != facets) {
        meshes = Make(shape, facets);
        heldShape = shape;
        heldFacets = facets;
    }
    return meshes;
}

double OddArea(std::vector<Path> const& paths) {
    double area = 0.0;
    for (Path const& path : paths) {
        if (path.empty()) continue;
        bool isHole = false;
        for (Path const& other : paths) {
            if (&other != &path && !other.empty()) isHole ^= IsInside(other, path.front());
        }
        area += isHole ? -AreaOf(path) : AreaOf(path);
    }
    return area;
}
