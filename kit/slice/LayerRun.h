#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "slice/LayerLine.h"

namespace varnet {

/// Asks the progress callback now and then.
class Asking {
public:
    /// The progress must live as long.
    explicit Asking(Progress const& progress) : m_Progress(progress) {}
    explicit Asking(Progress&&) = delete;
    void Share(double share) { m_Share = share; }
    /// Throw Error of kind kCancelled when asked to stop.
    void Now();
    void NowAndThen() {
        if (m_Progress && Clock::now() - m_Last >= std::chrono::milliseconds(20)) Now();
    }

private:
    using Clock = std::chrono::steady_clock;
    Progress const& m_Progress;
    double m_Share = 0.0;
    Clock::time_point m_Last = Clock::now();
};

/// Goes through the layers of a plan's range, as often as one likes, and counts them. It stays where it is.
class LayerRun {
public:
    using MakeLine = std::function<std::unique_ptr<LayerLine>()>;
    /// The plan must live as long; makeLine gives its layers from the first one of the range on. Progress
    /// begins at the share of the work that was done before.
    LayerRun(SlicePlan const& plan, MakeLine makeLine, double before = 0.0);

    SliceReport const& Report() const { return m_Report; }
    void Rewind() { m_Line.reset(); }
    std::optional<Layer> Next();
    SliceReport const& ForEach(std::function<void(Layer&&)> const& take);

private:
    void ClearReport();
    void Begin();

    SlicePlan const& m_Plan;
    MakeLine m_MakeLine;
    double m_Before;
    Asking m_Asking;
    SliceReport m_Report;
    std::int32_t m_Number = 0;
    std::unique_ptr<LayerLine> m_Line;
};

}  // namespace varnet
