#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "varnet/Geometry.h"

namespace varnet {

/// Paths one after the other in one array. Closed ones do not state their first point again.
struct Paths {
    std::vector<Point2> points;
    std::vector<std::size_t> offsets{0};
    std::vector<char> closed;

    void Clear() {
        points.clear();
        offsets.assign(1, 0);
        closed.clear();
    }
    std::size_t Count() const { return closed.size(); }
    std::span<Point2 const> At(std::size_t i) const {
        return {points.data() + offsets[i], offsets[i + 1] - offsets[i]};
    }
    /// Makes a path of the points that were added since the last one.
    void Finish(bool isClosed) {
        offsets.push_back(points.size());
        closed.push_back(isClosed ? 1 : 0);
    }
    void Add(std::span<Point2 const> path, bool isClosed) {
        points.insert(points.end(), path.begin(), path.end());
        Finish(isClosed);
    }
};

/// Contours that bound what is solid: none crosses another. Outer ones run counter-clockwise, holes
/// clockwise. Each stands behind the one around it.
struct SolidContours {
    Paths paths;
    std::vector<int> parents;  ///< by contour: the one right around it, -1 for none
    std::vector<int> levels;   ///< by contour: how many go round it

    void Clear() {
        paths.Clear();
        parents.clear();
        levels.clear();
    }
    /// Adds a contour below a parent.
    void Add(std::span<Point2 const> path, int parent) {
        paths.Add(path, true);
        parents.push_back(parent);
        levels.push_back(parent < 0 ? 0 : levels[static_cast<std::size_t>(parent)] + 1);
    }
};

}  // namespace varnet
