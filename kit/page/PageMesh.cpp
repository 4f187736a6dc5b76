#include "page/PageMesh.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace varnet {

namespace {

// The bits of a number of ten bits, two zeros between each and the next.
std::uint32_t Spread(std::uint32_t n) {
    n = (n | n << 16) & 0x030000FF;
    n = (n | n << 8) & 0x0300F00F;
    n = (n | n << 4) & 0x030C30C3;
    return (n | n << 2) & 0x09249249;
}

// The place of a triangle's middle on the curve of Morton (1966), in a grid of 1024 cells an axis.
std::uint32_t CurvePlace(std::span<Point3 const> points, Triangle const& t,
                         std::array<Grid16, 3> const& grids) {
    std::array<double, 3> middle{};
    for (std::int32_t const corner : t) {
        Point3 const& p = points[static_cast<std::size_t>(corner)];
        middle[0] += p.x / 3.0;
        middle[1] += p.y / 3.0;
        middle[2] += p.z / 3.0;
    }
    std::uint32_t place = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        place |= Spread(static_cast<std::uint32_t>(grids[axis].At(middle[axis])) >> 6) << axis;
    }
    return place;
}

std::vector<std::uint32_t> OrderOf(std::span<Point3 const> points, std::span<Triangle const> triangles,
                                   std::span<std::uint64_t const> kinds, std::array<Grid16, 3> const& grids) {
    struct Key {
        std::uint64_t kind;
        std::uint32_t place;
        std::uint32_t triangle;
        // NOLINTNEXTLINE(modernize-use-nullptr): there is no pointer here
        auto operator<=>(Key const&) const = default;
    };
    std::vector<Key> keys(triangles.size());
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        keys[i] = {kinds.empty() ? 0 : kinds[i], CurvePlace(points, triangles[i], grids),
                   static_cast<std::uint32_t>(i)};
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::uint32_t> order(triangles.size());
    std::transform(keys.begin(), keys.end(), order.begin(), [](Key const& key) { return key.triangle; });
    return order;
}

void AddEdges(std::string& bytes, std::span<PointPair const> edges, std::span<std::int32_t const> numbers) {
    std::vector<PointPair> renumbered;
    renumbered.reserve(edges.size());
    for (PointPair const& edge : edges) {
        renumbered.push_back(
            {numbers[static_cast<std::size_t>(edge[0])], numbers[static_cast<std::size_t>(edge[1])]});
    }
    std::sort(renumbered.begin(), renumbered.end());
    std::int32_t last = 0;
    for (auto const& [from, to] : renumbered) {
        AddVarint(bytes, static_cast<std::uint64_t>(from - last));
        AddVarint(bytes, Zigzag(std::int64_t{to} - from));
        last = from;
    }
}

}  // namespace

std::array<Grid16, 3> GridsOf(Box3 const& box) {
    return {Grid16{box.min.x, box.max.x}, Grid16{box.min.y, box.max.y}, Grid16{box.min.z, box.max.z}};
}

PackedMesh PackMesh(std::span<Point3 const> points, std::span<Triangle const> triangles,
                    std::span<std::uint64_t const> kinds, std::span<PointPair const> openEdges,
                    std::span<PointPair const> sharpEdges) {
    PackedMesh mesh;
    for (Triangle const& t : triangles) {
        for (std::int32_t const corner : t) mesh.box.Add(points[static_cast<std::size_t>(corner)]);
    }
    if (mesh.box.IsEmpty()) mesh.box = {{}, {}};
    std::array<Grid16, 3> const grids = GridsOf(mesh.box);
    std::vector<std::int32_t> numbers(points.size(), -1);
    std::array<DeltaAxis, 3> axes;
    std::string corners;
    std::int32_t used = 0;
    for (std::uint32_t const i : OrderOf(points, triangles, kinds, grids)) {
        std::uint64_t const kind = kinds.empty() ? 0 : kinds[i];
        if (mesh.runs.empty() || mesh.runs.back().kind != kind) mesh.runs.push_back({kind, 0});
        ++mesh.runs.back().triangles;
        for (std::int32_t const corner : triangles[i]) {
            std::int32_t& number = numbers[static_cast<std::size_t>(corner)];
            AddVarint(corners, number < 0 ? 0 : static_cast<std::uint64_t>(used - number));
            if (number >= 0) continue;
            number = used++;
            Point3 const& p = points[static_cast<std::size_t>(corner)];
            axes[0].Add(grids[0].At(p.x));
            axes[1].Add(grids[1].At(p.y));
            axes[2].Add(grids[2].At(p.z));
        }
    }
    for (std::size_t const count :
         {static_cast<std::size_t>(used), triangles.size(), openEdges.size(), sharpEdges.size()}) {
        AddWord(mesh.bytes, static_cast<std::uint32_t>(count));
    }
    for (DeltaAxis const& axis : axes) axis.AppendTo(mesh.bytes);
    mesh.bytes += corners;
    AddEdges(mesh.bytes, openEdges, numbers);
    AddEdges(mesh.bytes, sharpEdges, numbers);
    return mesh;
}

}  // namespace varnet
