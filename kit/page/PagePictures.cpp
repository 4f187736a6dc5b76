#include <algorithm>
#include <array>
#include <map>

#include "page/PagePart.h"
#include "varnet/Picture.h"

namespace varnet {

namespace {

constexpr std::size_t kMostFacets = 4000;   // of a picture
constexpr std::size_t kMostPoints = 12000;  // of a picture of a layer
constexpr std::uint32_t kSteel = 0x8FB3CF;
constexpr std::uint32_t kAmber = 0xE0A030;
constexpr double kGlass = 0.4;

struct Coarse {
    std::vector<Point3> points;
    std::vector<Triangle> triangles;
};

// The mesh with all points in a cell of a grid joined, the first one of each standing for all: clustering as
// in Rossignac and Borrel (1993). Triangles that get two equal corners are left out.
Coarse Cluster(std::span<Point3 const> points, std::span<Triangle const> triangles, Box3 const& box,
               unsigned cells) {
    std::array<Grid16, 3> const grids = GridsOf(box);
    std::map<std::array<unsigned, 3>, std::int32_t> cellPoints;
    std::vector<std::int32_t> numbers(points.size(), -1);
    Coarse coarse;
    auto const numberOf = [&](std::int32_t corner) {
        std::int32_t& number = numbers[static_cast<std::size_t>(corner)];
        if (number >= 0) return number;
        Point3 const& p = points[static_cast<std::size_t>(corner)];
        std::array<unsigned, 3> const cell = {grids[0].At(p.x) * cells / 65536U,
                                              grids[1].At(p.y) * cells / 65536U,
                                              grids[2].At(p.z) * cells / 65536U};
        auto const [place, isNew] = cellPoints.emplace(cell, static_cast<std::int32_t>(coarse.points.size()));
        if (isNew) coarse.points.push_back(p);
        return number = place->second;
    };
    for (Triangle const& t : triangles) {
        Triangle const joined = {numberOf(t[0]), numberOf(t[1]), numberOf(t[2])};
        if (joined[0] != joined[1] && joined[1] != joined[2] && joined[2] != joined[0])
            coarse.triangles.push_back(joined);
    }
    return coarse;
}

Coarse CoarseEnough(std::span<Point3 const> points, std::span<Triangle const> triangles, Box3 const& box) {
    if (triangles.size() <= kMostFacets) {
        return {{points.begin(), points.end()}, {triangles.begin(), triangles.end()}};
    }
    for (unsigned cells = 48; cells > 4; cells = cells * 3 / 4) {
        Coarse coarse = Cluster(points, triangles, box, cells);
        if (coarse.triangles.size() <= kMostFacets) return coarse;
    }
    return {};
}

}  // namespace

std::string PartPicture(Part const& part, PagePart const& about) {
    Coarse const coarse = CoarseEnough(part.Points(), part.Triangles(), part.Measures().box);
    if (coarse.triangles.empty()) return {};
    std::vector<PicturedMesh> meshes = {{coarse.points, coarse.triangles, kSteel, {}, 1.0}};
    if (about.supports != nullptr) {
        std::size_t facets = 0;
        for (SupportSolid const& solid : about.supports->Solids()) {
            facets += solid.triangles.size();
            if (facets > kMostFacets) break;
            meshes.push_back({solid.points, solid.triangles, kAmber, {}, kGlass});
        }
    }
    return PictureOf(meshes, about.name.empty() ? part.Name() : about.name);
}

std::string LayerPicture(Layer const& layer, std::string const& title) {
    if (layer.points.size() + 2 * layer.strokes.size() <= kMostPoints) return PictureOf(layer, title);
    Layer contours;
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        if (contours.points.size() + layer.ContourPoints(i).size() > kMostPoints) continue;
        contours.AddContour(layer.ContourPoints(i), layer.contours[i]);
    }
    return PictureOf(contours, title);
}

}  // namespace varnet
