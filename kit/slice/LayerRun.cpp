#include "slice/LayerRun.h"

#include <utility>

namespace varnet {

void Asking::Now() {
    if (!m_Progress) return;
    m_Last = Clock::now();
    if (!m_Progress(m_Share)) throw Error(ErrorKind::kCancelled, "slicing was cancelled");
}

LayerRun::LayerRun(SlicePlan const& plan, MakeLine makeLine, double before)
    : m_Plan(plan), m_MakeLine(std::move(makeLine)), m_Before(before), m_Asking(plan.settings.progress) {
    ClearReport();
}

std::optional<Layer> LayerRun::Next() {
    SliceSettings const& settings = m_Plan.settings;
    try {
        if (m_Line == nullptr) Begin();
        if (m_Number > settings.lastLayer) {
            m_Line.reset();
            return std::nullopt;
        }
        SlicedLayer sliced = m_Line->Next([this] { m_Asking.NowAndThen(); });
        Count(sliced, m_Plan.heights.Thickness(m_Number), m_Report);
        ++m_Number;
        double const share = static_cast<double>(m_Number - settings.firstLayer) /
                             static_cast<double>(settings.lastLayer - settings.firstLayer + 1);
        bool const isLast = m_Number > settings.lastLayer;
        m_Asking.Share(isLast ? 1.0 : m_Before + (1.0 - m_Before) * share);
        if (isLast) {
            m_Asking.Now();
        } else {
            m_Asking.NowAndThen();
        }
        return std::move(sliced.layer);
    } catch (...) {
        m_Line.reset();
        throw;
    }
}

SliceReport const& LayerRun::ForEach(std::function<void(Layer&&)> const& take) {
    Rewind();
    try {
        while (std::optional<Layer> layer = Next()) take(std::move(*layer));
    } catch (...) {
        Rewind();
        throw;
    }
    return m_Report;
}

void LayerRun::ClearReport() {
    m_Report = {};
    m_Report.meshVolume = m_Plan.meshVolume;
    m_Report.skippedFacets = m_Plan.skippedFacets;
}

void LayerRun::Begin() {
    ClearReport();
    m_Number = m_Plan.settings.firstLayer;
    m_Asking.Share(m_Before);
    m_Line = m_MakeLine();
}

}  // namespace varnet
