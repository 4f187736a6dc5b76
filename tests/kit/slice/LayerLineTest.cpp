// Layers in their order, whoever makes them. Blocks of memory fail where a test says so.

#include "slice/LayerLine.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "kit/FailingNew.h"
#include "kit/slice/FlatShapes.h"

namespace varnet {
namespace {

class LayerLineTest : public testing::Test {
protected:
    ~LayerLineTest() override { g_NewFails = false; }

    // A pyramid: all layers differ.
    SlicePlan PlanOf(int threads, int first, int last) {
        m_Pyramid.points = {{0, 0, 0}, {40, 0, 0}, {40, 40, 0}, {0, 40, 0}, {20, 20, 20}};
        m_Pyramid.triangles = {{0, 2, 1}, {0, 3, 2}, {0, 1, 4}, {1, 2, 4}, {2, 3, 4}, {3, 0, 4}};
        SliceSettings settings;
        settings.layer = 0.1;
        settings.threads = threads;
        settings.firstLayer = first;
        settings.lastLayer = last;
        Pulse pulse;
        return PlanSlices({m_Pyramid.Input()}, settings, pulse);
    }
    static std::function<void()> NoLook() {
        return [] {};
    }

private:
    FlatShape m_Pyramid;
};

// The side of the square at the middle of the layer, over the whole of the layer's number.
double AreaAt(int number) {
    double const side = 2.0 * (20.0 - (number - 0.5) * 0.1);
    return side * side;
}

TEST_F(LayerLineTest, LayersComeInTheirOrderForAnyRangeAndAnyNumberOfThreads) {
    for (int const threads : {1, 2, 3, 5, 16}) {
        for (int const count : {1, 2, 3, 7, 8, 9, 16, 17, 63, 64, 65, 131, 200}) {
            for (int const first : {1, 200 - count + 1}) {
                SlicePlan const plan = PlanOf(threads, first, first + count - 1);
                std::unique_ptr<LayerLine> const line = MakeLayerLine(plan);
                for (int number = first; number < first + count; ++number) {
                    SlicedLayer const sliced = line->Next(NoLook());
                    ASSERT_EQ(sliced.layer.number, number) << threads << " threads, " << count << " layers";
                    ASSERT_NEAR(sliced.layer.Area(), AreaAt(number), 1e-6);
                }
            }
        }
    }
}

// Each layer is made over and over by the one who takes it, so that the threads are far ahead.
TEST_F(LayerLineTest, ThreadsThatAreAheadWaitForOneWhoIsSlow) {
    for (int const threads : {2, 3}) {
        SlicePlan const plan = PlanOf(threads, 1, 200);
        LayerMaker maker(plan);
        Pulse pulse;
        std::unique_ptr<LayerLine> const line = MakeLayerLine(plan);
        for (int number = 1; number <= 200; ++number) {
            SlicedLayer const sliced = line->Next(NoLook());
            ASSERT_EQ(sliced.layer.number, number);
            for (int again = 0; again < 10; ++again) ASSERT_EQ(maker.Make(number, pulse).layer, sliced.layer);
        }
    }
}

TEST_F(LayerLineTest, ALineThatIsLeftEarlyEndsItsThreads) {
    for (int const taken : {0, 1, 30}) {
        SlicePlan const plan = PlanOf(3, 1, 200);
        std::unique_ptr<LayerLine> const line = MakeLayerLine(plan);
        for (int i = 0; i < taken; ++i) EXPECT_EQ(line->Next(NoLook()).layer.number, i + 1);
    }
}

// How many layers come in their order before one fails, where no work finds memory from the one with this
// index on; 200 where none fails.
int TakenBeforeFailure(LayerLine& line, int index) {
    int taken = 0;
    try {
        for (; taken < 200; ++taken) {
            if (taken == index) g_NewFails = true;
            if (line.Next([] {}).layer.number != taken + 1) break;
        }
    } catch (std::bad_alloc const&) {
        g_NewFails = false;
        return taken;
    }
    g_NewFails = false;
    return 200;
}

// Whoever makes a layer, and however far ahead: at most eight blocks of eight layers are there before.
TEST_F(LayerLineTest, WhatTheWorkThrowsComesOutInPlaceOfTheLayer) {
    for (int const threads : {1, 2}) {
        for (int const index : {0, 10, 64}) {
            SlicePlan const plan = PlanOf(threads, 1, 200);
            std::unique_ptr<LayerLine> const line = MakeLayerLine(plan);
            int const taken = TakenBeforeFailure(*line, index);
            EXPECT_GE(taken, index);
            EXPECT_LT(taken, 200) << threads << " threads, from layer " << index + 1;
        }
    }
}

TEST_F(LayerLineTest, WhatTheLookThrowsComesOutAtOnceOrNever) {
    // A look is asked for at every few thousand steps: where one is, what it throws ends the line.
    SlicePlan const plan = PlanOf(2, 1, 200);
    std::unique_ptr<LayerLine> const line = MakeLayerLine(plan);
    int taken = 0;
    bool asked = false;
    try {
        for (; taken < 200; ++taken) {
            line->Next([&asked] {
                asked = true;
                throw std::runtime_error("stop");
            });
        }
    } catch (std::runtime_error const&) {
        EXPECT_TRUE(asked);
    }
    EXPECT_EQ(asked, taken < 200);
}

}  // namespace
}  // namespace varnet
