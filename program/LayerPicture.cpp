#include "LayerPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Markup.h"

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

bool CanBeDrawn(CPoint2D const& p) { return std::fabs(p.x) <= kLargest && std::fabs(p.y) <= kLargest; }

// Calls visit(element) for the elements of a list of pointers.
template <class Element, class Visit>
void ForEach(XR_CList<void*, void*>& list, Visit const& visit) {
    for (XR__POSITION* position = list.GetHeadPosition(); position != nullptr;) {
        visit(*static_cast<Element*>(list.GetNext(position)));
    }
}

// Turns points into the coordinates of a group.
class Pen {
public:
    explicit Pen(PictureFrame const& frame) : m_Frame(frame) {}

    std::string At(CPoint2D const& p) const {
        return Text((p.x - m_Frame.box.m_ptMin.x) * m_Frame.dScale) + " " +
               Text((m_Frame.box.m_ptMin.y - p.y) * m_Frame.dScale);
    }

    std::string Line(tagLoopTreeNode const& loop) const {
        std::string path;
        if (loop.m_pPointList == nullptr) return path;
        for (XR__POSITION* position = loop.m_pPointList->GetHeadPosition(); position != nullptr;) {
            CPoint2D const& p = loop.m_pPointList->GetNext(position);
            if (CanBeDrawn(p)) path.append(path.empty() ? "M" : "L").append(At(p));
        }
        return path;
    }

    std::string Lines(CHatch const& hatch) const {
        std::string path;
        for (XR__POSITION* position = hatch.m_EdgeList.GetHeadPosition(); position != nullptr;) {
            CEdge2D const edge = hatch.m_EdgeList.GetNext(position);
            if (CanBeDrawn(edge.m_ptStart) && CanBeDrawn(edge.m_ptEnd)) {
                path.append("M").append(At(edge.m_ptStart)).append("L").append(At(edge.m_ptEnd));
            }
        }
        return path;
    }

private:
    PictureFrame m_Frame;
};

// Loops of even levels are material, less the loops directly below them.
std::string Material(CLayer& layer, Pen const& pen) {
    std::unique_ptr<CLayer> const pNested(layer.CopyLoop());
    pNested->MakeTopology(1);
    std::string svg;
    ForEach<tagLoopTreeNode>(pNested->m_LoopList, [&](tagLoopTreeNode& loop) {
        if (loop.m_nLevel % 2 != 0 || loop.m_bClosed == 0) return;
        std::string path = pen.Line(loop);
        if (path.empty()) return;
        ForEach<tagLoopTreeNode>(loop.m_ChildList, [&](tagLoopTreeNode& hole) { path += pen.Line(hole); });
        svg.append("<path d=\"").append(path).append("\"/>\n");
    });
    return "<g fill=\"#dde3ea\" fill-rule=\"evenodd\" stroke=\"none\">\n" + svg + "</g>\n";
}

// From blue for the first path over green to red for the last.
std::string RampColor(int nPath, int nPaths) {
    double const dShare = nPaths > 1 ? static_cast<double>(nPath) / (nPaths - 1) : 0.0;
    std::string color = "hsl(";
    return color.append(std::to_string(static_cast<int>(240.0 * (1.0 - dShare)))).append(",80%,42%)");
}

std::string Paths(CLayer& layer, Pen const& pen) {
    int const nPaths = layer.m_LoopList.GetCount() + layer.m_HatchList.GetCount();
    int nPath = 0;
    std::string svg;
    auto const add = [&](std::string const& path, double dWidth) {
        std::string const color = RampColor(nPath++, nPaths);
        if (path.empty()) return;
        svg.append("<path d=\"").append(path).append("\" stroke=\"").append(color);
        svg.append("\" stroke-width=\"").append(Text(dWidth)).append("\"/>\n");
    };
    constexpr double kLoopWidth = 1.4;
    constexpr double kHatchWidth = 0.8;
    ForEach<tagLoopTreeNode>(layer.m_LoopList,
                             [&](tagLoopTreeNode& loop) { add(pen.Line(loop), kLoopWidth); });
    ForEach<CHatch>(layer.m_HatchList, [&](CHatch& hatch) { add(pen.Lines(hatch), kHatchWidth); });
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

PictureFrame FrameOf(CBoundBox2D const& box) {
    bool const bDrawable = box.IsValid() != 0 && CanBeDrawn(box.m_ptMin) && CanBeDrawn(box.m_ptMax);
    CBoundBox2D const shown = bDrawable ? box : CBoundBox2D(CPoint2D(0.0, 0.0), CPoint2D(1.0, 1.0));
    CPoint2D const size = shown.Size();
    constexpr double kLeastSize = 1e-6;  // millimetres
    return {shown, kPanelSize / std::max({size.x, size.y, kLeastSize})};
}

std::string TextAt(double x, double y, std::string const& text) {
    return "<text x=\"" + Text(x) + "\" y=\"" + Text(y) + "\">" + EscapedMarkup(text) + "</text>\n";
}

std::string ScaleBar(PictureFrame const& frame, double x, double y) {
    double const dLength = BarLength(kPanelSize / frame.dScale);
    return "<path d=\"M" + Text(x) + " " + Text(y) + "h" + Text(dLength * frame.dScale) +
           "\" stroke=\"#000\" stroke-width=\"3\"/>\n" + TextAt(x, y + 18.0, Text(dLength) + " mm");
}

}  // namespace

std::string LayerGroup(CLayer& layer, PictureFrame const& frame) {
    layer.BuildLoopList();
    Pen const pen(frame);
    return "<g>\n" + Material(layer, pen) + Paths(layer, pen) + "</g>\n";
}

CBoundBox2D BoxAround(std::vector<PicturePanel> const& panels) {
    CBoundBox2D box;
    for (PicturePanel const& panel : panels) box += panel.pLayer->m_Box;
    return box;
}

std::string LayerPicture(std::vector<PicturePanel> const& panels, CBoundBox2D const& box) {
    PictureFrame const frame = FrameOf(box);
    CPoint2D const size = frame.box.Size();
    double const dPanelWidth = std::max(size.x * frame.dScale, kPanelSize / 2.0);
    double const dPanelHeight = size.y * frame.dScale;
    double const dWidth = kMargin + (dPanelWidth + kMargin) * static_cast<double>(panels.size());
    double const dHeight = kTitle + dPanelHeight + kMargin + kFooter;
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Text(dWidth) + "\" height=\"" +
                      Text(dHeight) + "\" font-family=\"sans-serif\" font-size=\"13\">\n" +
                      "<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    double x = kMargin;
    for (PicturePanel const& panel : panels) {
        svg += TextAt(x, kTitle - 8.0, panel.title);
        svg += "<g transform=\"translate(" + Text(x) + " " + Text(kTitle + dPanelHeight) + ")\">\n" +
               LayerGroup(*panel.pLayer, frame) + "</g>\n";
        x += dPanelWidth + kMargin;
    }
    return svg + ScaleBar(frame, kMargin, kTitle + dPanelHeight + kMargin) + "</svg>\n";
}
