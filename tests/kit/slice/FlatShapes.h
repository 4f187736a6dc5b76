#pragma once

#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "Shapes.h"
#include "varnet/Slicer.h"

namespace varnet {

/// A mesh in flat arrays.
struct FlatShape {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;

    SlicerInput Input(bool turned = false, bool support = false) const {
        return {points, triangles, turned, support};
    }
};

/// Equal corners become one point.
inline FlatShape Flat(shapes::Mesh const& mesh) {
    FlatShape flat;
    std::map<std::tuple<float, float, float>, std::int32_t> numbers;
    for (shapes::Triangle const& triangle : mesh) {
        Triangle corners{};
        for (std::size_t i = 0; i < 3; ++i) {
            shapes::Corner const& c = triangle[i];
            auto const [it, isNew] =
                numbers.try_emplace({c.x, c.y, c.z}, static_cast<std::int32_t>(flat.points.size()));
            if (isNew) flat.points.push_back({c.x, c.y, c.z});
            corners[i] = it->second;
        }
        flat.triangles.push_back(corners);
    }
    return flat;
}

inline FlatShape FlatBox(float x0, float y0, float z0, float x1, float y1, float z1) {
    return Flat(shapes::Box({x0, y0, z0}, {x1, y1, z1}));
}

inline FlatShape Turned(FlatShape mesh) {
    for (Triangle& triangle : mesh.triangles) std::swap(triangle[1], triangle[2]);
    return mesh;
}

inline FlatShape Scaled(FlatShape mesh, double factor) {
    for (Point3& p : mesh.points) p = {p.x * factor, p.y * factor, p.z * factor};
    return mesh;
}

/// Without fill.
inline SliceSettings ContoursOnly(double layer = 1.0) {
    SliceSettings settings;
    settings.layer = layer;
    settings.hatch = 0.0;
    return settings;
}

inline std::vector<Layer> AllLayers(std::vector<SlicerInput> const& inputs, SliceSettings const& settings,
                                    SliceReport* report = nullptr) {
    Slicer slicer(inputs, settings);
    std::vector<Layer> layers;
    SliceReport const& counted = slicer.ForEachLayer([&layers](Layer&& layer) { layers.push_back(layer); });
    if (report != nullptr) *report = counted;
    return layers;
}

}  // namespace varnet
