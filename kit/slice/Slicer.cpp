#include "varnet/Slicer.h"

#include <string>

#include "slice/LayerLine.h"
#include "slice/LayerMaker.h"
#include "slice/LayerRun.h"

namespace varnet {

namespace {

SlicePlan Plan(std::vector<SlicerInput> const& inputs, SliceSettings const& settings) {
    Asking asking(settings.progress);
    Pulse pulse([&asking] { asking.NowAndThen(); });
    return PlanSlices(inputs, settings, pulse);
}

}  // namespace

// It stays where it is, so that threads may refer to the plan.
class Slicer::Work {
public:
    Work(std::vector<SlicerInput> const& inputs, SliceSettings const& settings)
        : plan(Plan(inputs, settings)), run(plan, [this] { return MakeLayerLine(plan); }) {}

    SlicePlan const plan;
    LayerRun run;
};

Slicer::Slicer(std::vector<SlicerInput> const& inputs, SliceSettings const& settings)
    : m_Work(std::make_unique<Work>(inputs, settings)) {}

Slicer::~Slicer() = default;
Slicer::Slicer(Slicer&&) noexcept = default;
Slicer& Slicer::operator=(Slicer&&) noexcept = default;

SliceSettings const& Slicer::Settings() const { return m_Work->plan.settings; }
std::int32_t Slicer::LayerCount() const { return m_Work->plan.heights.count; }
std::int32_t Slicer::FirstLayer() const { return Settings().firstLayer; }
std::int32_t Slicer::LastLayer() const { return Settings().lastLayer; }
SliceReport const& Slicer::Report() const { return m_Work->run.Report(); }

Layer Slicer::LayerAt(std::int32_t number) const {
    if (number < 1 || number > LayerCount()) {
        throw Error(ErrorKind::kArgument, "there are layers 1 to " + std::to_string(LayerCount()) +
                                              ", and not " + std::to_string(number));
    }
    Pulse pulse;
    return LayerMaker(m_Work->plan).Make(number, pulse).layer;
}

std::optional<Layer> Slicer::NextLayer() { return m_Work->run.Next(); }

SliceReport const& Slicer::ForEachLayer(std::function<void(Layer&&)> const& take) {
    return m_Work->run.ForEach(take);
}

Slicer::Iterator Slicer::begin() {
    m_Work->run.Rewind();
    return Iterator(*this);
}

}  // namespace varnet
