#include "page/PageLayers.h"

#include <algorithm>
#include <cmath>

namespace varnet {

namespace {

constexpr double kLargest = 1e10;
constexpr std::size_t kChunkPoints = 32768;
constexpr std::int32_t kFirstSupportId = 1000;

bool CanBeDrawn(Point2 const& p) { return std::fabs(p.x) <= kLargest && std::fabs(p.y) <= kLargest; }
bool CanBeDrawn(Stroke const& s) { return CanBeDrawn(s.from) && CanBeDrawn(s.to); }

// The layer without points that are none.
Layer Drawable(Layer const& layer) {
    Layer clean;
    clean.number = layer.number;
    clean.z = layer.z;
    std::vector<Point2> points;
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        auto const all = layer.ContourPoints(i);
        points.clear();
        std::copy_if(all.begin(), all.end(), std::back_inserter(points),
                     [](Point2 const& p) { return CanBeDrawn(p); });
        if (!points.empty()) clean.AddContour(points, layer.contours[i]);
    }
    std::vector<Stroke> strokes;
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        auto const all = layer.ChainStrokes(i);
        strokes.clear();
        std::copy_if(all.begin(), all.end(), std::back_inserter(strokes),
                     [](Stroke const& s) { return CanBeDrawn(s); });
        if (!strokes.empty()) clean.AddChain(strokes, layer.chainIds[i]);
    }
    return clean;
}

bool IsDrawable(Layer const& layer) {
    return std::all_of(layer.points.begin(), layer.points.end(),
                       [](Point2 const& p) { return CanBeDrawn(p); }) &&
           std::all_of(layer.strokes.begin(), layer.strokes.end(),
                       [](Stroke const& s) { return CanBeDrawn(s); });
}

PageLayer Describe(Layer const& layer, Point2& head) {
    PageLayer about;
    about.number = layer.number;
    about.z = layer.z;
    about.box = layer.Box();
    about.openPaths = layer.OpenPathCount();
    about.contours = layer.ContourCount() - about.openPaths;
    about.supportStrokes = layer.SupportStrokeCount();
    about.strokes = layer.strokes.size() - about.supportStrokes;
    about.points = layer.points.size() + 2 * layer.strokes.size();
    about.contourLength = layer.ContourLength();
    about.strokeLength = layer.StrokeLength();
    about.area = layer.Area();
    Travel travel;
    AddTravel(layer, head, travel);
    about.travel = travel.length;
    return about;
}

}  // namespace

void LayerPacker::Add(Layer const& asGiven) {
    bool const drawable = IsDrawable(asGiven);
    Layer const cleaned = drawable ? Layer() : Drawable(asGiven);
    Layer const& layer = drawable ? asGiven : cleaned;
    PageLayer about = Describe(layer, m_Head);
    about.chunk = m_Chunks.size();
    std::array<Grid16, 2> const grids = {Grid16{about.box.min.x, about.box.max.x},
                                         Grid16{about.box.min.y, about.box.max.y}};
    for (DeltaAxis& axis : m_Axes) axis.Restart();
    auto const add = [&](Point2 const& p) {
        m_Axes[0].Add(grids[0].At(p.x));
        m_Axes[1].Add(grids[1].At(p.y));
    };
    AddVarint(m_Counts, layer.ContourCount());
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        Contour const& contour = layer.contours[i];
        AddVarint(m_Counts, layer.ContourPoints(i).size() * 8 + (contour.closed ? 1U : 0U) +
                                (contour.IsHole() ? 2U : 0U) + (contour.id >= kFirstSupportId ? 4U : 0U));
        for (Point2 const& p : layer.ContourPoints(i)) add(p);
    }
    AddVarint(m_Counts, layer.ChainCount());
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) {
        AddVarint(m_Counts,
                  layer.ChainStrokes(i).size() * 2 + (layer.chainIds[i] >= kFirstSupportId ? 1U : 0U));
        for (Stroke const& stroke : layer.ChainStrokes(i)) {
            add(stroke.from);
            add(stroke.to);
        }
    }
    m_Layers.push_back(about);
    if (m_Axes[0].Size() >= kChunkPoints) Finish();
}

void LayerPacker::Finish() {
    if (m_Counts.empty()) return;
    std::string bytes;
    AddWord(bytes, static_cast<std::uint32_t>(m_Counts.size()));
    AddWord(bytes, static_cast<std::uint32_t>(m_Axes[0].Size()));
    bytes += m_Counts;
    for (DeltaAxis& axis : m_Axes) {
        axis.AppendTo(bytes);
        axis.Clear();
    }
    m_Chunks.push_back(Deflated(bytes));
    m_Counts.clear();
}

}  // namespace varnet
