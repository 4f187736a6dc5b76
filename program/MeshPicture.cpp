#include "MeshPicture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <set>
#include <system_error>
#include <utility>

#include "Markup.h"

namespace {

constexpr double kLongSide = 640.0;
constexpr double kMargin = 8.0;

// Edges between facets whose normals differ by more are drawn; the cosine of 25 degrees.
constexpr double kSharp = 0.9063;

// The pixels, a side, at which is looked for what covers what.
constexpr int kRaster = 900;

struct Eye {
    // Unit vectors to the right and up in the picture, and towards the one who looks.
    CPoint3D right, up, toward;
};

Eye LookFrom(double dTurnDeg, double dLiftDeg) {
    double const t = dTurnDeg * std::numbers::pi / 180.0;
    double const l = dLiftDeg * std::numbers::pi / 180.0;
    Eye eye;
    eye.right = CPoint3D(std::cos(t), std::sin(t), 0.0);
    eye.toward = CPoint3D(std::sin(t) * std::cos(l), -std::cos(t) * std::cos(l), std::sin(l));
    eye.up = CPoint3D(-std::sin(t) * std::sin(l), std::cos(t) * std::sin(l), std::cos(l));
    return eye;
}

double Dot(CPoint3D const& a, CPoint3D const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
CPoint3D Normal(CFacet const& f) { return CPoint3D(f.m_fNormal[0], f.m_fNormal[1], f.m_fNormal[2]); }

// A facet as it is seen: corners in the picture, y downward, and their distances towards the eye.
struct Seen {
    std::array<CPoint3D, 3> corners;
    std::array<bool, 3> isSharp;  // the side from corner i to the next
    std::uint32_t nColor;
    double dOpacity;
};

// With light from above, left and in front, some of it from everywhere.
std::uint32_t Shade(std::uint32_t nColor, CPoint3D const& normal, Eye const& eye) {
    CPoint3D const light(eye.toward.x - 0.5 * eye.right.x, eye.toward.y - 0.5 * eye.right.y,
                         eye.toward.z - 0.5 * eye.right.z + 0.9);
    double const dLit = std::max(0.0, Dot(normal, light) / std::sqrt(Dot(light, light)));
    double const dShare = 0.42 + 0.58 * dLit;
    std::uint32_t nShaded = 0;
    for (int nShift : {16, 8, 0}) {
        double const dChannel = static_cast<double>(nColor >> nShift & 0xFFu) * dShare;
        nShaded |= static_cast<std::uint32_t>(dChannel) << nShift;
    }
    return nShaded;
}

// Whether the surface ends at the edge, or a facet across it looks elsewhere.
bool IsSharp(CFacet const& facet, tagVertexNode const& a, tagVertexNode const& b) {
    bool bEnds = true;
    for (int i = 0; i < a.m_nFacetNum; ++i) {
        CFacet const& other = *a.m_ppFacet[i];
        if (&other == &facet) continue;
        if (other.m_pVertex1 != &b && other.m_pVertex2 != &b && other.m_pVertex3 != &b) continue;
        bEnds = false;
        if (Dot(Normal(facet), Normal(other)) < kSharp) return true;
    }
    return bEnds;
}

void Look(PicturedModel const& pictured, Eye const& eye, std::vector<Seen>& seen) {
    auto const project = [&eye](CPoint3D const& p) {
        return CPoint3D(Dot(p, eye.right), -Dot(p, eye.up), Dot(p, eye.toward));
    };
    for (auto const& [pFacet, nColor] : pictured.facets) {
        CFacet const& facet = *pFacet;
        if (Dot(Normal(facet), eye.toward) <= 0.0) continue;
        std::array<tagVertexNode const*, 3> const v = {facet.m_pVertex1, facet.m_pVertex2, facet.m_pVertex3};
        seen.push_back(
            {{project(*v[0]), project(*v[1]), project(*v[2])},
             {IsSharp(facet, *v[0], *v[1]), IsSharp(facet, *v[1], *v[2]), IsSharp(facet, *v[2], *v[0])},
             Shade(nColor, Normal(facet), eye),
             pictured.dOpacity});
    }
}

// Scales what is seen into a picture that begins at the margin; returns the size of the picture.
CPoint2D Fit(std::vector<Seen>& seen) {
    CBoundBox3D box;
    for (Seen const& facet : seen) {
        for (CPoint3D const& p : facet.corners) box += p;
    }
    CPoint3D const size = box.Size();
    double const dScale = (kLongSide - 2.0 * kMargin) / std::max({size.x, size.y, 1e-6});
    for (Seen& facet : seen) {
        for (CPoint3D& p : facet.corners) {
            p = CPoint3D((p.x - box.m_ptMin.x) * dScale + kMargin, (p.y - box.m_ptMin.y) * dScale + kMargin,
                         p.z * dScale);
        }
    }
    return CPoint2D(size.x * dScale + 2.0 * kMargin, size.y * dScale + 2.0 * kMargin);
}

// What lies over a pixel: a facet, and how near it is there.
struct Fragment {
    double dNear;
    std::size_t nFacet;
};

// Calls visit(pixel, nearness) for each pixel whose middle is in the facet.
template <class Visit>
void Raster(Seen const& facet, Visit const& visit) {
    constexpr double kPixel = kLongSide / kRaster;
    auto const& [a, b, c] = facet.corners;
    double const dArea = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (dArea == 0.0) return;
    auto const pixel = [](double d) { return std::clamp(static_cast<int>(d / kPixel), 0, kRaster - 1); };
    int const nRight = pixel(std::max({a.x, b.x, c.x}));
    int const nBottom = pixel(std::max({a.y, b.y, c.y}));
    for (int ny = pixel(std::min({a.y, b.y, c.y})); ny <= nBottom; ++ny) {
        for (int nx = pixel(std::min({a.x, b.x, c.x})); nx <= nRight; ++nx) {
            double const x = (nx + 0.5) * kPixel;
            double const y = (ny + 0.5) * kPixel;
            double const dB = ((x - a.x) * (c.y - a.y) - (c.x - a.x) * (y - a.y)) / dArea;
            double const dC = ((b.x - a.x) * (y - a.y) - (x - a.x) * (b.y - a.y)) / dArea;
            if (dB < 0.0 || dC < 0.0 || dB + dC > 1.0) continue;
            visit(static_cast<std::size_t>(ny) * kRaster + static_cast<std::size_t>(nx),
                  a.z + dB * (b.z - a.z) + dC * (c.z - a.z));
        }
    }
}

// What lies over each pixel. Facets that lie over none are taken out: nothing would tell when to draw them.
// Of facets in one plane those that hide more count as nearer.
std::vector<std::vector<Fragment>> Pixels(std::vector<Seen>& seen) {
    std::vector<std::vector<Fragment>> pixels(static_cast<std::size_t>(kRaster) * kRaster);
    std::size_t nKept = 0;
    for (Seen const& facet : seen) {
        bool bSeen = false;
        Raster(facet, [&](std::size_t nPixel, double dNear) {
            pixels[nPixel].push_back({dNear + facet.dOpacity, nKept});
            bSeen = true;
        });
        if (bSeen) seen[nKept++] = facet;
    }
    seen.resize(nKept);
    return pixels;
}

// A facet that covers another, and over how many pixels.
struct Cover {
    std::size_t nFacet;
    int nPixels;
};

// For each facet, those that are next to it over more pixels than they are behind it. (Facets of different
// models may pass through each other.)
std::vector<std::vector<Cover>> Covers(std::vector<Seen>& seen) {
    std::vector<std::vector<Fragment>> pixels = Pixels(seen);
    std::map<std::pair<std::size_t, std::size_t>, int> pixelsOf;
    for (auto& fragments : pixels) {
        std::sort(fragments.begin(), fragments.end(),
                  [](Fragment const& a, Fragment const& b) { return a.dNear < b.dNear; });
        for (std::size_t i = 1; i < fragments.size(); ++i) {
            ++pixelsOf[{fragments[i - 1].nFacet, fragments[i].nFacet}];
        }
    }
    std::vector<std::vector<Cover>> covers(seen.size());
    for (auto const& [pair, nPixels] : pixelsOf) {
        auto const reverse = pixelsOf.find({pair.second, pair.first});
        int const nMore = nPixels - (reverse != pixelsOf.end() ? reverse->second : 0);
        if (nMore > 0) covers[pair.first].push_back({pair.second, nMore});
    }
    return covers;
}

// The order in which to draw: a facet after all that it covers. Where facets cover each other in a ring, the
// one that will hide the fewest pixels wrongly comes first.
std::vector<std::size_t> FromBackToFront(std::vector<Seen>& seen) {
    std::vector<std::vector<Cover>> const covers = Covers(seen);
    // Pixels of facets that are behind and not yet drawn.
    std::vector<int> nBehind(seen.size(), 0);
    for (auto const& covering : covers) {
        for (Cover const& cover : covering) nBehind[cover.nFacet] += cover.nPixels;
    }
    std::set<std::pair<int, std::size_t>> waiting;
    for (std::size_t i = 0; i < seen.size(); ++i) waiting.emplace(nBehind[i], i);
    std::vector<std::size_t> order;
    order.reserve(seen.size());
    while (!waiting.empty()) {
        std::size_t const i = waiting.begin()->second;
        waiting.erase(waiting.begin());
        order.push_back(i);
        for (auto const& [nFacet, nPixels] : covers[i]) {
            if (waiting.erase({nBehind[nFacet], nFacet}) == 0) continue;
            nBehind[nFacet] -= nPixels;
            waiting.emplace(nBehind[nFacet], nFacet);
        }
    }
    return order;
}

std::string Coordinate(double d) {
    std::array<char, 32> text{};
    auto const [pEnd, error] =
        std::to_chars(text.data(), text.data() + text.size(), std::round(d * 10.0) / 10.0);
    return error == std::errc() ? std::string(text.data(), pEnd) : "0";
}

std::string Place(CPoint3D const& p) {
    std::string place = Coordinate(p.x);
    place += ' ';
    return place += Coordinate(p.y);
}

std::string Hex(std::uint32_t nColor) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%06x", nColor & 0xFFFFFFu);
    return text.data();
}

// The facet, with a line of its own colour that closes the seam to its neighbours, and its sharp sides.
void Draw(Seen const& facet, std::string& svg) {
    std::string const color = Hex(facet.nColor);
    auto const& c = facet.corners;
    svg += "<path d=\"M";
    svg += Place(c[0]);
    svg += 'L';
    svg += Place(c[1]);
    svg += ' ';
    svg += Place(c[2]);
    svg += "z\" color=\"";
    svg += color;
    if (facet.dOpacity < 1.0) {
        svg += "\" class=\"g\" fill-opacity=\"";
        svg += Coordinate(facet.dOpacity);
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

PicturedModel InOneColor(CSTLModel const& model, std::uint32_t nColor, double dOpacity) {
    PicturedModel pictured{FacetColors().Of(model), dOpacity};
    for (auto& painted : pictured.facets) painted.nColor = nColor;
    return pictured;
}

std::string DrawMeshes(std::vector<PicturedModel> const& models, std::string const& title) {
    Eye const eye = LookFrom(48.0, 24.0);
    std::vector<Seen> seen;
    for (PicturedModel const& pictured : models) Look(pictured, eye, seen);
    CPoint2D const size = Fit(seen);
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" viewBox=\"0 0 ";
    svg += Place(CPoint3D(size.x, size.y, 0.0));
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
