#include "slice/LayerMaker.h"

#include <algorithm>
#include <utility>

#include "slice/FillLines.h"
#include "slice/Thin.h"

namespace varnet {

namespace {

constexpr double kRightAngle = 90.0;

double AreaOf(Paths const& paths) {
    double area = 0.0;
    for (std::size_t i = 0; i < paths.Count(); ++i) area += SignedArea(paths.At(i));
    return area;
}

void Count(Layer const& layer, SliceReport& report) {
    auto const open = static_cast<std::int64_t>(layer.OpenPathCount());
    auto const supportStrokes = static_cast<std::int64_t>(layer.SupportStrokeCount());
    report.contours += static_cast<std::int64_t>(layer.ContourCount()) - open;
    report.openPaths += open;
    report.layersWithOpenPaths += open > 0 ? 1 : 0;
    report.points += static_cast<std::int64_t>(layer.points.size());
    report.strokes += static_cast<std::int64_t>(layer.strokes.size()) - supportStrokes;
    report.supportStrokes += supportStrokes;
}

}  // namespace

LayerMaker::LayerMaker(SlicePlan const& plan) : m_Plan(&plan) {
    for (FacetIndex const& index : plan.parts) m_Parts.emplace_back(index);
    for (FacetIndex const& index : plan.supports) m_Supports.emplace_back(index);
}

LayerMaker::LayerMaker(SlicePlan const& plan, CutSweep&& sweep) : LayerMaker(plan) {
    m_Parts.push_back(std::move(sweep));
}

SlicedLayer LayerMaker::Make(int number, Pulse& pulse) {
    SliceSettings const& settings = m_Plan->settings;
    double const angle = settings.angle + (number % 2 == 0 ? kRightAngle : 0.0);
    SlicedLayer sliced;
    sliced.layer.number = number;
    sliced.layer.z = m_Plan->heights.Top(number);
    sliced.layer.cutHeight = m_Plan->heights.CutHeight(number);
    MakeParts(sliced, pulse);
    if (settings.hatch > 0.0) {
        FillContours(m_Thin.paths, Paths(), {settings.hatch, angle, kFillId}, sliced.layer, pulse);
        if (number % 2 == 0 && !m_Supports.empty()) MakeSupports(sliced, angle, pulse);
    }
    return sliced;
}

// What is solid of m_Closed, into m_Solid.
void LayerMaker::Resolve(Grid const& grid, LayerFacts& facts, Pulse& pulse) {
    m_Solid.Clear();
    if (m_Nesting.Nest(m_Closed, grid, m_Plan->settings.rule, m_Nested, pulse)) {
        AddNested(m_Closed, m_Nested, m_Solid);
    } else {
        facts.resolved = true;
        ResolveCrossings(m_Closed, grid, m_Plan->settings.rule, m_Solid, pulse);
    }
}

void LayerMaker::MakeParts(SlicedLayer& sliced, Pulse& pulse) {
    SliceSettings const& settings = m_Plan->settings;
    m_Cut.Clear();
    m_Closed.Clear();
    m_Open.Clear();
    for (CutSweep& part : m_Parts) part.Cut(sliced.layer.number, m_Cut, pulse);
    sliced.facts.joins = JoinEnds(m_Cut, settings.close, m_Closed, m_Open, pulse);
    sliced.facts.cutArea = AreaOf(m_Closed);
    Resolve(m_Plan->partGrid, sliced.facts, pulse);
    sliced.facts.solidArea = AreaOf(m_Solid.paths);
    m_Thin.Clear();
    ThinContours(m_Solid, settings.tolerance, m_Thin);
    m_ThinOpen.Clear();
    ThinPaths(m_Open, settings.tolerance, m_ThinOpen);
    Layer& layer = sliced.layer;
    layer.points.reserve(m_Thin.paths.points.size() + m_ThinOpen.points.size());
    for (std::size_t i = 0; i < m_Thin.parents.size(); ++i) {
        Contour contour;
        contour.parent = m_Thin.parents[i];
        contour.level = m_Thin.levels[i];
        layer.AddContour(m_Thin.paths.At(i), contour);
    }
    Contour open;
    open.closed = false;
    for (std::size_t i = 0; i < m_ThinOpen.Count(); ++i) layer.AddContour(m_ThinOpen.At(i), open);
    sliced.facts.area = layer.Area();
    sliced.facts.length = layer.ContourLength();
}

void LayerMaker::MakeSupports(SlicedLayer& sliced, double angle, Pulse& pulse) {
    SliceSettings const& settings = m_Plan->settings;
    m_Cut.Clear();
    m_Closed.Clear();
    m_Open.Clear();
    for (CutSweep& support : m_Supports) support.Cut(sliced.layer.number, m_Cut, pulse);
    JoinEnds(m_Cut, settings.close, m_Closed, m_Open, pulse);
    LayerFacts ignored;
    Resolve(m_Plan->supportGrid, ignored, pulse);
    FillContours(m_Solid.paths, m_Thin.paths, {settings.hatch, angle, kSupportId}, sliced.layer, pulse);
}

void Count(SlicedLayer const& sliced, double thickness, SliceReport& report) {
    ++report.layers;
    Count(sliced.layer, report);
    JoinFigures const& joins = sliced.facts.joins;
    report.longestGap = std::max(report.longestGap, joins.longestOpen);
    report.gapsClosed += joins.closed;
    report.gapsClosedLength += joins.closedLength;
    report.longestGapClosed = std::max(report.longestGapClosed, joins.longestClosed);
    report.missingVolume += std::fabs(joins.openArea) * thickness;
    report.contourLength += sliced.facts.length;
    report.volume += sliced.facts.area * thickness;
    report.solidVolume += sliced.facts.solidArea * thickness;
    report.cutVolume += sliced.facts.cutArea * thickness;
    report.resolvedLayers += sliced.facts.resolved ? 1 : 0;
}

}  // namespace varnet
