#include "Damaged.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace shapes {

namespace {

Corner Middle(Corner const& a, Corner const& b) {
    return {0.5f * (a.x + b.x), 0.5f * (a.y + b.y), 0.5f * (a.z + b.z)};
}

// Whether the middle, as a float, lies on the line: where the sums of floats are exact.
bool Less(Corner const& a, Corner const& b) { return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z); }

Mesh DividedOnOneSide(Mesh const& mesh, std::size_t nEvery, bool bSlivers) {
    Mesh result;
    std::size_t nCounter = 0;
    for (Triangle const& t : mesh) {
        // An edge is divided by the facet where it runs to the greater corner.
        bool const bDivide = Less(t[0], t[1]) && nCounter++ % nEvery == 0;
        if (!bDivide) {
            result.push_back(t);
            continue;
        }
        Corner const m = Middle(t[0], t[1]);
        result.push_back({t[0], m, t[2]});
        result.push_back({m, t[1], t[2]});
        if (bSlivers) result.push_back({t[0], t[1], m});
    }
    return result;
}

}  // namespace

Mesh CubesAtFace() {
    Mesh mesh = Cube(10.0f);
    return Append(mesh, Moved(Cube(10.0f), 10.0f, 0.0f, 0.0f));
}

Mesh CubesAtEdge() {
    Mesh mesh = Cube(10.0f);
    return Append(mesh, Moved(Cube(10.0f), 10.0f, 10.0f, 0.0f));
}

Mesh CubesAtVertex() {
    Mesh mesh = Cube(10.0f);
    return Append(mesh, Moved(Cube(10.0f), 10.0f, 10.0f, 10.0f));
}

Mesh CubesAtFaceCrossed() {
    Mesh mesh = Cube(10.0f);
    // The other one's mirror image, turned outward again, has the other diagonals.
    Mesh other = Cube(10.0f);
    for (Triangle& t : other) {
        for (Corner& c : t) c = {20.0f - c.x, 10.0f - c.y, c.z};
    }
    for (Triangle& t : other) {
        for (Corner& c : t) c.y = 10.0f - c.y;
    }
    return Append(mesh, InsideOut(other));
}

Mesh CubesOverlapping() {
    Mesh mesh = Cube(10.0f);
    return Append(mesh, Moved(Cube(10.0f), 5.0f, 5.0f, 5.0f));
}

Mesh CubeInCube(bool cavity) {
    Mesh mesh = Cube(30.0f);
    Mesh const inner = Moved(Cube(10.0f), 10.0f, 10.0f, 10.0f);
    return Append(mesh, cavity ? InsideOut(inner) : inner);
}

Mesh InsideOut(Mesh mesh) {
    for (Triangle& t : mesh) std::swap(t[1], t[2]);
    return mesh;
}

Mesh Doubled(Mesh const& mesh) {
    Mesh result = mesh;
    return Append(result, Shuffled(mesh, 7));
}

Mesh WithSlivers(Mesh const& mesh, std::size_t nEvery) { return DividedOnOneSide(mesh, nEvery, true); }
Mesh WithTJunctions(Mesh const& mesh, std::size_t nEvery) { return DividedOnOneSide(mesh, nEvery, false); }

Mesh Scaled(Mesh mesh, float fFactor) {
    for (Triangle& t : mesh) {
        for (Corner& c : t) c = {c.x * fFactor, c.y * fFactor, c.z * fFactor};
    }
    return mesh;
}

Mesh WithNearCorners(Mesh mesh, std::size_t nEvery, float fDistance) {
    std::size_t nCounter = 0;
    for (Triangle& t : mesh) {
        for (Corner& c : t) {
            if (nCounter++ % nEvery == 0) c.x += fDistance;
        }
    }
    return mesh;
}

Mesh Without(Mesh mesh, std::size_t nFirst, std::size_t nCount) {
    auto const begin = mesh.begin() + static_cast<std::ptrdiff_t>(nFirst);
    mesh.erase(begin, begin + static_cast<std::ptrdiff_t>(nCount));
    return mesh;
}

Mesh Rotated(Mesh mesh, double dAboutX, double dAboutZ) {
    for (Triangle& t : mesh) {
        for (Corner& c : t) {
            double const y = std::cos(dAboutX) * c.y - std::sin(dAboutX) * c.z;
            double const z = std::sin(dAboutX) * c.y + std::cos(dAboutX) * c.z;
            double const x = std::cos(dAboutZ) * c.x - std::sin(dAboutZ) * y;
            c = {static_cast<float>(x), static_cast<float>(std::sin(dAboutZ) * c.x + std::cos(dAboutZ) * y),
                 static_cast<float>(z)};
        }
    }
    return mesh;
}

}  // namespace shapes
