#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>
#include <string>

#include "varnet/Picture.h"

namespace varnet {

namespace {

constexpr double kPanelSize = 640.0;  // pixels, the longer side
constexpr double kMargin = 20.0;
constexpr double kTitle = 28.0;
constexpr double kFooter = 44.0;
constexpr double kLargest = 1e12;  // coordinates beyond this cannot be drawn

std::string Text(double d) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.7g", d);
    return text.data();
}

bool CanBeDrawn(Point2 const& p) { return std::fabs(p.x) <= kLargest && std::fabs(p.y) <= kLargest; }

// Where the paths of a layer lie in the picture: a scale in pixels a millimetre, and the box that is shown.
struct Frame {
    Box2 box;
    double scale;
};

// Turns points into the coordinates of a group, with the lower left corner of the box at the origin.
class Pen {
public:
    explicit Pen(Frame const& frame) : m_Frame(frame) {}

    std::string At(Point2 const& p) const {
        std::string place = Text((p.x - m_Frame.box.min.x) * m_Frame.scale);
        place += ' ';
        return place += Text((m_Frame.box.min.y - p.y) * m_Frame.scale);
    }

    std::string Line(std::span<Point2 const> points, bool closed) const {
        std::string path;
        for (Point2 const& p : points) {
            if (CanBeDrawn(p)) path.append(path.empty() ? "M" : "L").append(At(p));
        }
        if (closed && !path.empty()) path += 'Z';
        return path;
    }

    std::string Lines(std::span<Stroke const> strokes) const {
        std::string path;
        for (Stroke const& stroke : strokes) {
            if (!CanBeDrawn(stroke.from) || !CanBeDrawn(stroke.to)) continue;
            path.append("M").append(At(stroke.from)).append("L").append(At(stroke.to));
        }
        return path;
    }

private:
    Frame m_Frame;
};

// Where the contours go round more often counter-clockwise.
std::string Solid(Layer const& layer, Pen const& pen) {
    std::string path;
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        if (layer.contours[i].closed) path += pen.Line(layer.ContourPoints(i), true);
    }
    if (path.empty()) return {};
    return "<path fill=\"#dde3ea\" fill-rule=\"evenodd\" stroke=\"none\" d=\"" + path + "\"/>\n";
}

// From blue for the first path over green to red for the last.
std::string RampColor(std::size_t path, std::size_t paths) {
    double const share = paths > 1 ? static_cast<double>(path) / static_cast<double>(paths - 1) : 0.0;
    return "hsl(" + std::to_string(static_cast<int>(240.0 * (1.0 - share))) + ",80%,42%)";
}

std::string Paths(Layer const& layer, Pen const& pen) {
    constexpr double kContourWidth = 1.4;
    constexpr double kFillWidth = 0.8;
    std::size_t const paths = layer.ContourCount() + layer.ChainCount();
    std::size_t path = 0;
    std::string svg;
    auto const add = [&](std::string const& line, double width) {
        std::string const color = RampColor(path++, paths);
        if (line.empty()) return;
        svg.append("<path d=\"").append(line).append("\" stroke=\"").append(color);
        svg.append("\" stroke-width=\"").append(Text(width)).append("\"/>\n");
    };
    for (std::size_t i = 0; i < layer.ContourCount(); ++i) {
        add(pen.Line(layer.ContourPoints(i), layer.contours[i].closed), kContourWidth);
    }
    for (std::size_t i = 0; i < layer.ChainCount(); ++i) add(pen.Lines(layer.ChainStrokes(i)), kFillWidth);
    return "<g fill=\"none\" stroke-linejoin=\"round\" stroke-linecap=\"round\">\n" + svg + "</g>\n";
}

// A round length that takes between a tenth and a half of the width.
double BarLength(double dWidth) {
    double const dPower = std::pow(10.0, std::floor(std::log10(dWidth / 2.0)));
    for (double const dStep : {5.0, 2.0}) {
        if (dStep * dPower <= dWidth / 2.0) return dStep * dPower;
    }
    return dPower;
}

Frame FrameOf(Box2 const& box) {
    constexpr double kLeastSize = 1e-6;  // millimetres
    bool const drawable = !box.IsEmpty() && CanBeDrawn(box.min) && CanBeDrawn(box.max);
    Box2 const shown = drawable ? box : Box2{{0.0, 0.0}, {1.0, 1.0}};
    return {shown, kPanelSize / std::max({shown.max.x - shown.min.x, shown.max.y - shown.min.y, kLeastSize})};
}

std::string TextAt(double x, double y, std::string const& text) {
    return "<text x=\"" + Text(x) + "\" y=\"" + Text(y) + "\">" + EscapedMarkup(text) + "</text>\n";
}

std::string ScaleBar(Frame const& frame, double x, double y) {
    double const dLength = BarLength(kPanelSize / frame.scale);
    return "<path d=\"M" + Text(x) + " " + Text(y) + "h" + Text(dLength * frame.scale) +
           "\" stroke=\"#000\" stroke-width=\"3\"/>\n" + TextAt(x, y + 18.0, Text(dLength) + " mm");
}

}  // namespace

std::string PictureOf(std::span<PicturePanel const> panels, Box2 const& box) {
    Box2 shown = box;
    for (PicturePanel const& panel : panels) {
        if (!box.IsEmpty()) break;
        if (panel.layer == nullptr) continue;
        Box2 const around = panel.layer->Box();
        if (around.IsEmpty()) continue;
        shown.Add(around.min);
        shown.Add(around.max);
    }
    Frame const frame = FrameOf(shown);
    double const panelWidth = std::max((frame.box.max.x - frame.box.min.x) * frame.scale, kPanelSize / 2.0);
    double const panelHeight = (frame.box.max.y - frame.box.min.y) * frame.scale;
    double const width = kMargin + (panelWidth + kMargin) * static_cast<double>(panels.size());
    double const height = kTitle + panelHeight + kMargin + kFooter;
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Text(width) + "\" height=\"" +
                      Text(height) + "\" font-family=\"sans-serif\" font-size=\"13\">\n" +
                      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    Pen const pen(frame);
    Layer const nothing;
    double x = kMargin;
    for (PicturePanel const& panel : panels) {
        svg += TextAt(x, kTitle - 8.0, panel.title);
        Layer const& layer = panel.layer != nullptr ? *panel.layer : nothing;
        svg += "<g transform=\"translate(" + Text(x) + " " + Text(kTitle + panelHeight) + ")\">\n" +
               Solid(layer, pen) + Paths(layer, pen) + "</g>\n";
        x += panelWidth + kMargin;
    }
    return svg + ScaleBar(frame, kMargin, kTitle + panelHeight + kMargin) + "</svg>\n";
}

std::string PictureOf(Layer const& layer, std::string const& title) {
    PicturePanel const panel{title, &layer};
    return PictureOf(std::span(&panel, 1));
}

}  // namespace varnet
