// Orders by chance, with the numbers that chance gives in the hand of the test.

#include <cstdlib>

#include "contours/LoopWalk.h"
#include "contours/Paths.h"

using namespace varnet;

namespace {

std::vector<int> s_Draws;  // the next ones, the last first
std::size_t s_nMissing = 0;

// While it lives, rand gives these numbers.
class GivenDraws {
public:
    explicit GivenDraws(std::vector<int> const& draws) {
        s_Draws.assign(draws.rbegin(), draws.rend());
        s_nMissing = 0;
        s_bGiven = true;
    }
    GivenDraws(GivenDraws const&) = delete;
    GivenDraws& operator=(GivenDraws const&) = delete;
    ~GivenDraws() {
        s_bGiven = false;
        EXPECT_TRUE(s_Draws.empty()) << "numbers that were not drawn";
        EXPECT_EQ(0u, s_nMissing) << "more were drawn";
    }
    static bool s_bGiven;
};
bool GivenDraws::s_bGiven = false;

}  // namespace

// The linker leads all calls of rand here (--wrap).
extern "C" {
int __real_rand();
int __wrap_rand();
int __wrap_rand() {
    if (!GivenDraws::s_bGiven) return __real_rand();
    if (s_Draws.empty()) {
        ++s_nMissing;
        return 0;
    }
    int const nDraw = s_Draws.back();
    s_Draws.pop_back();
    return nDraw;
}
}

namespace {

// Three strokes upwards at x = 0, 1 and 2, each with two ends to enter at: the places that come of it.
Segments OrderOfStrokes(std::vector<int> const& draws) {
    CLayer layer;
    for (int i = 0; i < 3; ++i) Give(layer, Hatch({{{i + 0.0, 0.0}, {i + 0.0, 1.0}}}));
    CPoint2D pos;
    GivenDraws const given(draws);
    layer.OptimizeHatchs(pos, 2);
    Segments order;
    for (CHatch const* const p : HatchesOf(layer)) order.push_back(SegmentsOf(*p)[0]);
    return order;
}

Segment Up(double x) { return {{x, 0}, {x, 1}}; }
Segment Down(double x) { return {{x, 1}, {x, 0}}; }

}  // namespace

TEST(RandomOrder, TheLargestDrawComesNextAndTheFirstOfEquals) {
    EXPECT_EQ(OrderOfStrokes({1, 2, 3, 4, 5, 6, 1, 2, 4, 3, 1, 2}), (Segments{Down(2), Up(1), Down(0)}));
    EXPECT_EQ(OrderOfStrokes({7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}), (Segments{Up(0), Up(1), Up(2)}));
    EXPECT_EQ(OrderOfStrokes({1, 5, 5, 5, 2, 5, 1, 3, 3, 2, 9, 9}), (Segments{Down(0), Down(1), Up(2)}));
}

// A stroke may be drawn with 0, and nothing is below it.
TEST(RandomOrder, NoStrokeIsLostToADrawOfZero) {
    EXPECT_EQ(OrderOfStrokes({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), (Segments{Up(0), Up(1), Up(2)}));
    EXPECT_EQ(OrderOfStrokes({0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}), (Segments{Down(1), Up(0), Up(2)}));
}

// A draw is made for each point of a closed loop, the closing copy included, and for the ends of an open
// path. Contours have to draw more than 0.
TEST(RandomOrder, ContoursDrawForEachPlaceToBeginAt) {
    CLayer layer;
    tagLoopTreeNode* const pSquare = Give(layer, Square(0, 0, 1));
    tagLoopTreeNode* const pPath = Give(layer, OpenPath({{5, 0}, {6, 0}, {7, 0}}));
    CPoint2D pos;
    {
        GivenDraws const given({1, 2, 8, 8, 3, 4, 8, 1, 2});
        layer.OptimizeLoops(pos, 2);
    }
    EXPECT_EQ(LoopsOf(layer.m_RawLoopList), (std::vector{pSquare, pPath}));
    EXPECT_EQ(PlacesOf(*pSquare).front(), (Place{1, 1}));
    EXPECT_EQ(PlacesOf(*pPath), (Places{{5, 0}, {6, 0}, {7, 0}}));
}
