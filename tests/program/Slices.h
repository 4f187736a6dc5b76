#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "MeshChecks.h"
#include "Slicer.h"

// Meshes to cut, and what to say of contours.

using Place = std::pair<double, double>;

inline double SignedArea(std::vector<CPoint2D> const& points) {
    double dArea = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        CPoint2D const& a = points[i];
        CPoint2D const& b = points[(i + 1) % points.size()];
        dArea += (a.x * b.y - b.x * a.y) / 2.0;
    }
    return dArea;
}

/// The areas of all contours together; open ones have none.
inline double NetArea(std::vector<Contour> const& contours) {
    double dArea = 0.0;
    for (Contour const& contour : contours) {
        if (contour.bClosed) dArea += SignedArea(contour.points);
    }
    return dArea;
}

inline std::vector<Place> PlacesOf(Contour const& contour) {
    std::vector<Place> places;
    for (CPoint2D const& p : contour.points) places.emplace_back(p.x, p.y);
    return places;
}

/// The places of a closed contour from the least one on, so that contours that begin elsewhere compare equal.
inline std::vector<Place> FromLeast(Contour const& contour) {
    std::vector<Place> places = PlacesOf(contour);
    std::rotate(places.begin(), std::min_element(places.begin(), places.end()), places.end());
    return places;
}

inline bool AllClosed(std::vector<Contour> const& contours) {
    return std::all_of(contours.begin(), contours.end(), [](Contour const& c) { return c.bClosed; });
}

/// A solid of 10 by 3 by 10 mm with a step: full length up to z = 5, 4 mm above that.
inline shapes::Mesh Step() {
    std::vector<std::pair<float, float>> const profile = {{0, 0}, {10, 0}, {10, 5}, {4, 5}, {4, 10}, {0, 10}};
    auto const at = [&profile](std::size_t i, float y) {
        auto const& [x, z] = profile[i % profile.size()];
        return shapes::Corner{x, y, z};
    };
    shapes::Mesh mesh;
    for (std::size_t i = 0; i < profile.size(); ++i) {
        mesh.push_back({at(i, 0), at(i, 3), at(i + 1, 3)});
        mesh.push_back({at(i, 0), at(i + 1, 3), at(i + 1, 0)});
    }
    for (std::size_t i = 4; i < 8; ++i) {
        mesh.push_back({at(3, 0), at(i, 0), at(i + 1, 0)});
        mesh.push_back({at(3, 3), at(i + 1, 3), at(i, 3)});
    }
    return mesh;
}
