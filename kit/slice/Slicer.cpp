#include "varnet/Slicer.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "slice/LayerLine.h"
#include "slice/LayerMaker.h"

namespace varnet {

namespace {

// Asks the progress callback now and then.
class Asking {
public:
    explicit Asking(Progress const& progress) : m_Progress(progress) {}
    void Share(double share) { m_Share = share; }
    void Now() {
        if (!m_Progress) return;
        m_Last = Clock::now();
        if (!m_Progress(m_Share)) throw Error(ErrorKind::kCancelled, "slicing was cancelled");
    }
    void NowAndThen() {
        if (m_Progress && Clock::now() - m_Last >= std::chrono::milliseconds(20)) Now();
    }

private:
    using Clock = std::chrono::steady_clock;
    Progress const& m_Progress;
    double m_Share = 0.0;
    Clock::time_point m_Last = Clock::now();
};

SlicePlan Plan(std::vector<SlicerInput> const& inputs, SliceSettings const& settings) {
    Asking asking(settings.progress);
    Pulse pulse([&asking] { asking.NowAndThen(); });
    return PlanSlices(inputs, settings, pulse);
}

}  // namespace

// The layers of a plan, one after the other. It stays where it is, so that threads may refer to it.
class Slicer::Work {
public:
    Work(std::vector<SlicerInput> const& inputs, SliceSettings const& settings)
        : m_Plan(Plan(inputs, settings)), m_Asking(m_Plan.settings.progress) {
        ClearReport();
    }

    SlicePlan const& ThePlan() const { return m_Plan; }
    SliceReport const& Report() const { return m_Report; }

    void Rewind() { m_Line.reset(); }

    std::optional<Layer> Next() {
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
            m_Asking.Share(static_cast<double>(m_Number - settings.firstLayer) /
                           static_cast<double>(settings.lastLayer - settings.firstLayer + 1));
            if (m_Number > settings.lastLayer) {
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

private:
    void ClearReport() {
        m_Report = {};
        m_Report.meshVolume = m_Plan.meshVolume;
        m_Report.skippedFacets = m_Plan.skippedFacets;
    }

    void Begin() {
        ClearReport();
        m_Number = m_Plan.settings.firstLayer;
        m_Asking.Share(0.0);
        m_Line = MakeLayerLine(m_Plan);
    }

    SlicePlan m_Plan;
    Asking m_Asking;
    SliceReport m_Report;
    std::int32_t m_Number = 0;
    std::unique_ptr<LayerLine> m_Line;
};

Slicer::Slicer(std::vector<SlicerInput> const& inputs, SliceSettings const& settings)
    : m_Work(std::make_unique<Work>(inputs, settings)) {}

Slicer::~Slicer() = default;
Slicer::Slicer(Slicer&&) noexcept = default;
Slicer& Slicer::operator=(Slicer&&) noexcept = default;

SliceSettings const& Slicer::Settings() const { return m_Work->ThePlan().settings; }
std::int32_t Slicer::LayerCount() const { return m_Work->ThePlan().heights.count; }
std::int32_t Slicer::FirstLayer() const { return Settings().firstLayer; }
std::int32_t Slicer::LastLayer() const { return Settings().lastLayer; }
SliceReport const& Slicer::Report() const { return m_Work->Report(); }

Layer Slicer::LayerAt(std::int32_t number) const {
    if (number < 1 || number > LayerCount()) {
        throw Error(ErrorKind::kArgument, "there are layers 1 to " + std::to_string(LayerCount()) +
                                              ", and not " + std::to_string(number));
    }
    Pulse pulse;
    return LayerMaker(m_Work->ThePlan()).Make(number, pulse).layer;
}

std::optional<Layer> Slicer::NextLayer() { return m_Work->Next(); }

SliceReport const& Slicer::ForEachLayer(std::function<void(Layer&&)> const& take) {
    m_Work->Rewind();
    try {
        while (std::optional<Layer> layer = m_Work->Next()) take(std::move(*layer));
    } catch (...) {
        m_Work->Rewind();
        throw;
    }
    return m_Work->Report();
}

Slicer::Iterator Slicer::begin() {
    m_Work->Rewind();
    return Iterator(*this);
}

}  // namespace varnet
