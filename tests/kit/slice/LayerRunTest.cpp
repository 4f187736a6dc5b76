// Going through the layers of a plan, and what is told of it.

#include "slice/LayerRun.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <vector>

#include "kit/slice/FlatShapes.h"

namespace varnet {
namespace {

// Four layers, each of which takes so long that the progress is asked for on the way: it looks once the clock
// has gone on far enough.
class SlowLine : public LayerLine {
public:
    SlicedLayer Next(std::function<void()> const& look) override {
        using Clock = std::chrono::steady_clock;
        Clock::time_point const begin = Clock::now();
        while (Clock::now() - begin <= std::chrono::milliseconds(20)) continue;
        look();
        SlicedLayer sliced;
        sliced.layer.number = ++m_Number;
        return sliced;
    }

private:
    std::int32_t m_Number = 0;
};

class LayerRunTest : public testing::Test {
protected:
    LayerRunTest() {
        SliceSettings settings;
        settings.layer = 1.0;
        settings.progress = [this](double share) {
            if (m_Told.empty() || m_Told.back() != share) m_Told.push_back(share);
            return true;
        };
        Pulse pulse;
        m_Plan = PlanSlices({m_Box.Input()}, settings, pulse);
        m_Told.clear();
    }
    // The shares that a whole pass tells, each once.
    std::vector<double> Pass(LayerRun& run) {
        m_Told.clear();
        run.ForEach([](Layer&&) {});
        return m_Told;
    }
    static std::unique_ptr<LayerLine> MakeSlow() { return std::make_unique<SlowLine>(); }

    FlatShape m_Box = FlatBox(0, 0, 0, 10, 10, 4);
    std::vector<double> m_Told;
    SlicePlan m_Plan;
};

TEST_F(LayerRunTest, TheLayersShareWhatIsLeftOfTheWorkInEveryPass) {
    LayerRun run(m_Plan, MakeSlow, 0.5);
    std::vector<double> const expected{0.5, 0.625, 0.75, 0.875, 1.0};
    EXPECT_EQ(Pass(run), expected);
    EXPECT_EQ(Pass(run), expected);
}

TEST_F(LayerRunTest, WithoutWorkBeforeTheLayersAreAll) {
    LayerRun run(m_Plan, MakeSlow);
    EXPECT_EQ(Pass(run), (std::vector<double>{0.0, 0.25, 0.5, 0.75, 1.0}));
}

TEST_F(LayerRunTest, AfterAPassThatEndsByAnErrorTheFirstLayerIsNext) {
    LayerRun run(m_Plan, MakeSlow);
    EXPECT_THROW(run.ForEach([](Layer&& layer) {
        if (layer.number == 2) throw std::runtime_error("enough");
    }),
                 std::runtime_error);
    EXPECT_EQ(run.Next()->number, 1);
    EXPECT_EQ(run.Report().layers, 1) << "counted anew";
}

}  // namespace
}  // namespace varnet
