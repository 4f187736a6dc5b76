
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <set>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "varnet/Picture.h"

namespace varnet {

namespace {

constexpr double kLongSide = 640.0;
constexpr double kMargin = 8.0;

// Edges between facets whose normals differ by more are drawn; the cosine of 25 degrees.
constexpr double kSharp = 0.9063;

// The pixels, a side, at which is looked for what covers what.
constexpr int kRaster = 900;

struct Eye {
    // Unit vectors to the right and up in the picture, and towards the one who looks.
    Point3 right, up, toward;
};

Eye LookFrom(double turn, double lift) {
    double const t = turn * std::numbers::pi / 180.0;
    double const l = lift * std::numbers::pi / 180.0;
    Eye eye;
    eye.right = {std::cos(t), std::sin(t), 0.0};
    eye.toward = {std::sin(t) * std::cos(l), -std::cos(t) * std::cos(l), std::sin(l)};
    eye.up = {-std::sin(t) * std::sin(l), std::cos(t) * std::sin(l), std::cos(l)};
    return eye;
}

double Dot(Point3 const& a, Point3 const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// The unit normal; 0 where the triangle has no area.
Point3 NormalOf(PicturedMesh const& mesh, Triangle const& t) {
    Point3 const& a = mesh.points[static_cast<std::size_t>(t[0])];
    Point3 const& b = mesh.points[static_cast<std::size_t>(t[1])];
    Point3 const& c = mesh.points[static_cast<std::size_t>(t[2])];
    Point3 const u{b.x - a.x, b.y - a.y, b.z - a.z};
    Point3 const v{c.x - a.x, c.y - a.y, c.z - a.z};
    Point3 const n{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
    double const length = std::sqrt(Dot(n, n));
    if (!(length > 0.0)) return {};
    return {n.x / length, n.y / length, n.z / length};
}

// A facet as it is seen: corners in the picture, y downward, and their distances towards the eye.
struct Seen {
    std::array<Point3, 3> corners;
    std::array<bool, 3> isSharp;  // the side from corner i to the next
    std::uint32_t color;
    double opacity;
};

// With light from above, left and in front, some of it from everywhere.
std::uint32_t Shade(std::uint32_t color, Point3 const& normal, Eye const& eye) {
    Point3 const light{eye.toward.x - 0.5 * eye.right.x, eye.toward.y - 0.5 * eye.right.y,
                       eye.toward.z - 0.5 * eye.right.z + 0.9};
    double const lit = std::max(0.0, Dot(normal, light) / std::sqrt(Dot(light, light)));
    double const share = 0.42 + 0.58 * lit;
    std::uint32_t shaded = 0;
    for (int shift : {16, 8, 0}) {
        double const channel = static_cast<double>(color >> shift & 0xFFu) * share;
        shaded |= static_cast<std::uint32_t>(channel) << shift;
    }
    return shaded;
}

// For each side of each triangle, whether the surface ends there, or a facet across it looks elsewhere.
std::vector<std::array<bool, 3>> SharpSides(PicturedMesh const& mesh, std::vector<Point3> const& normals) {
    struct Side {
        std::int32_t low, high;
        std::size_t triangle, corner;
    };
    std::vector<Side> sides;
    sides.reserve(3 * mesh.triangles.size());
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            auto const [low, high] = std::minmax(mesh.triangles[i][k], mesh.triangles[i][(k + 1) % 3]);
            sides.push_back({low, high, i, k});
        }
    }
    std::sort(sides.begin(), sides.end(), [](Side const& a, Side const& b) {
        return std::tie(a.low, a.high, a.triangle) < std::tie(b.low, b.high, b.triangle);
    });
    std::vector<std::array<bool, 3>> sharp(mesh.triangles.size(), {false, false, false});
    for (std::size_t first = 0; first < sides.size();) {
        std::size_t last = first + 1;
        while (last < sides.size() && sides[last].low == sides[first].low &&
               sides[last].high == sides[first].high)
            ++last;
        bool bends = last == first + 1;
        for (std::size_t i = first + 1; i < last; ++i) {
            bends = bends || Dot(normals[sides[first].triangle], normals[sides[i].triangle]) < kSharp;
        }
        for (std::size_t i = first; i < last; ++i) sharp[sides[i].triangle][sides[i].corner] = bends;
        first = last;
    }
    return sharp;
}

void Look(PicturedMesh const& mesh, Eye const& eye, std::vector<Seen>& seen) {
    auto const project = [&](std::int32_t index) {
        Point3 const& p = mesh.points[static_cast<std::size_t>(index)];
        return Point3{Dot(p, eye.right), -Dot(p, eye.up), Dot(p, eye.toward)};
    };
    std::vector<Point3> normals;
    normals.reserve(mesh.triangles.size());
    for (Triangle const& t : mesh.triangles) normals.push_back(NormalOf(mesh, t));
    std::vector<std::array<bool, 3>> const sharp = SharpSides(mesh, normals);
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        if (Dot(normals[i], eye.toward) <= 0.0) continue;
        Triangle const& t = mesh.triangles[i];
        std::uint32_t const color = i < mesh.colors.size() ? mesh.colors[i] : mesh.color;
        seen.push_back({{project(t[0]), project(t[1]), project(t[2])},
                        sharp[i],
                        Shade(color, normals[i], eye),
                        mesh.opacity});
    }
}

// Scales what is seen into a picture that begins at the margin; returns the size of the picture.
Point2 Fit(std::vector<Seen>& seen) {
    Box3 box;
    for (Seen const& facet : seen) {
        for (Point3 const& p : facet.corners) box.Add(p);
    }
    if (box.IsEmpty()) box = {{0, 0, 0}, {1, 1, 1}};
    Point2 const size{box.max.x - box.min.x, box.max.y - box.min.y};
    double const scale = (kLongSide - 2.0 * kMargin) / std::max({size.x, size.y, 1e-6});
    for (Seen& facet : seen) {
        for (Point3& p : facet.corners) {
            p = {(p.x - box.min.x) * scale + kMargin, (p.y - box.min.y) * scale + kMargin, p.z * scale};
        }
    }
    return {size.x * scale + 2.0 * kMargin, size.y * scale + 2.0 * kMargin};
}

// What lies over a pixel: a facet, and how near it is there.
struct Fragment {
    double nearness;
    std::size_t facet;
};

// Calls visit(pixel, nearness) for each pixel whose middle is in the facet.
template <class Visit>
void Raster(Seen const& facet, Visit const& visit) {
    constexpr double kPixel = kLongSide / kRaster;
    auto const& [a, b, c] = facet.corners;
    double const area = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (area == 0.0) return;
    auto const pixel = [](double d) { return std::clamp(static_cast<int>(d / kPixel), 0, kRaster - 1); };
    int const right = pixel(std::max({a.x, b.x, c.x}));
    int const bottom = pixel(std::max({a.y, b.y, c.y}));
    for (int ny = pixel(std::min({a.y, b.y, c.y})); ny <= bottom; ++ny) {
        for (int nx = pixel(std::min({a.x, b.x, c.x})); nx <= right; ++nx) {
            double const x = (nx + 0.5) * kPixel;
            double const y = (ny + 0.5) * kPixel;
            double const shareB = ((x - a.x) * (c.y - a.y) - (c.x - a.x) * (y - a.y)) / area;
            double const shareC = ((b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y)) / area;
            if (shareB < 0.0 || shareC < 0.0 || shareB + shareC > 1.0) continue;
            visit(static_cast<std::size_t>(ny) * kRaster + static_cast<std::size_t>(nx),
                  a.z + shareB * (b.z - a.z) + shareC * (c.z - a.z));
        }
    }
}

// What lies over each pixel. Facets that lie over none are taken out: nothing would tell when to draw them.
// Of facets in one plane those that hide more count as nearer.
std::vector<std::vector<Fragment>> Pixels(std::vector<Seen>& seen) {
    std::vector<std::vector<Fragment>> pixels(static_cast<std::size_t>(kRaster) * kRaster);
    std::size_t kept = 0;
    for (Seen const& facet : seen) {
        bool isSeen = false;
        Raster(facet, [&](std::size_t pixel, double nearness) {
            pixels[pixel].push_back({nearness + facet.opacity, kept});
            isSeen = true;
        });
        if (isSeen) seen[kept++] = facet;
    }
    seen.resize(kept);
    return pixels;
}

// A facet that covers another, and over how many pixels.
struct Cover {
    std::size_t facet;
    int pixelCount;
};

// For each facet, those that are next to it over more pixels than they are behind it. (Facets of different
// models may pass through each other.)
std::vector<std::vector<Cover>> Covers(std::vector<Seen>& seen) {
    std::vector<std::vector<Fragment>> pixels = Pixels(seen);
    std::map<std::pair<std::size_t, std::size_t>, int> pixelsOf;
    for (auto& fragments : pixels) {
        std::sort(fragments.begin(), fragments.end(),
                  [](Fragment const& a, Fragment const& b) { return a.nearness < b.nearness; });
        for (std::size_t i = 1; i < fragments.size(); ++i) {
            ++pixelsOf[{fragments[i - 1].facet, fragments[i].facet}];
        }
    }
    std::vector<std::vector<Cover>> covers(seen.size());
    for (auto const& [pair, pixelCount] : pixelsOf) {
        auto const reverse = pixelsOf.find({pair.second, pair.first});
        int const more = pixelCount - (reverse != pixelsOf.end() ? reverse->second : 0);
        if (more > 0) covers[pair.first].push_back({pair.second, more});
    }
    return covers;
}

// The order in which to draw: a facet after all that it covers. Where facets cover each other in a ring, the
// one that will hide the fewest pixels wrongly comes first.
std::vector<std::size_t> FromBackToFront(std::vector<Seen>& seen) {
    std::vector<std::vector<Cover>> const covers = Covers(seen);
    // Pixels of facets that are behind and not yet drawn.
    std::vector<int> behind(seen.size(), 0);
    for (auto const& covering : covers) {
        for (Cover const& cover : covering) behind[cover.facet] += cover.pixelCount;
    }
    std::set<std::pair<int, std::size_t>> waiting;
    for (std::size_t i = 0; i < seen.size(); ++i) waiting.emplace(behind[i], i);
    std::vector<std::size_t> order;
    order.reserve(seen.size());
    while (!waiting.empty()) {
        std::size_t const i = waiting.begin()->second;
        waiting.erase(waiting.begin());
        order.push_back(i);
        for (auto const& [facet, pixelCount] : covers[i]) {
            if (waiting.erase({behind[facet], facet}) == 0) continue;
            behind[facet] -= pixelCount;
            waiting.emplace(behind[facet], facet);
        }
    }
    return order;
}

std::string Coordinate(double d) {
    std::array<char, 32> text{};
    auto const [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), std::round(d * 10.0) / 10.0);
    return error == std::errc() ? std::string(text.data(), end) : "0";
}

std::string Place(Point3 const& p) {
    std::string place = Coordinate(p.x);
    place += ' ';
    return place += Coordinate(p.y);
}

std::string Hex(std::uint32_t color) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%06x", color & 0xFFFFFFu);
    return text.data();
}

// The facet, with a line of its own colour that closes the seam to its neighbours, and its sharp sides.
void Draw(Seen const& facet, std::string& svg) {
    std::string const color = Hex(facet.color);
    auto const& c = facet.corners;
    svg += "<path d=\"M";
    svg += Place(c[0]);
    svg += 'L';
    svg += Place(c[1]);
    svg += ' ';
    svg += Place(c[2]);
    svg += "z\" color=\"";
    svg += color;
    if (facet.opacity < 1.0) {
        svg += "\" class=\"g\" fill-opacity=\"";
        svg += Coordinate(facet.opacity);
    }
    svg += "\"/>\n";
    if (facet.isSharp == std::array{false, false, false}) return;
    svg += "<path class=\"e\" d=\"";
    for (std::size_t i = 0; i < 3; ++i) {
        if (!facet.isSharp[i]) continue;
        svg += 'M';
        svg += Place(c[i]);
        svg += 'L';
        svg += Place(c[(i + 1) % 3]);
    }
    svg += "\"/>\n";
}

}  // namespace

std::string PictureOf(std::span<PicturedMesh const> meshes, std::string const& title) {
    Eye const eye = LookFrom(48.0, 24.0);
    std::vector<Seen> seen;
    for (PicturedMesh const& mesh : meshes) Look(mesh, eye, seen);
    Point2 const size = Fit(seen);
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" viewBox=\"0 0 ";
    svg += Place({size.x, size.y, 0.0});
    svg += "\" width=\"";
    svg += Coordinate(size.x);
    svg += "\" height=\"";
    svg += Coordinate(size.y);
    svg += "\">\n<title>";
    svg += EscapedMarkup(title);
    svg +=
        "</title>\n<style>path{fill:currentColor;stroke:currentColor;stroke-width:.9;stroke-linejoin:round}"
        ".g{stroke:none}.e{fill:none;stroke:#1b2733;stroke-width:1.1;stroke-linecap:round}</style>\n";
    for (std::size_t const i : FromBackToFront(seen)) Draw(seen[i], svg);
    return svg += "</svg>\n";
}

}  // namespace varnet
