#include "contours/nesting/BoxIndex.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>

#include "contours/Paths.h"

using namespace varnet;

namespace {

PlanBox RandomBox(Lattice& random, bool bOdd) {
    double const x = random.Step(20);
    double const y = random.Step(20);
    PlanBox box = {x, y, x + random.Step(12), y + random.Step(12)};
    std::array const sides{&PlanBox::xMin, &PlanBox::yMin, &PlanBox::xMax, &PlanBox::yMax};
    if (bOdd && random.Below(10) == 0) std::swap(box.xMin, box.xMax);
    if (bOdd && random.Below(20) == 0) box.*sides[random.Below(4)] = std::numeric_limits<double>::quiet_NaN();
    if (bOdd && random.Below(20) == 0) box.*sides[random.Below(4)] = std::numeric_limits<double>::infinity();
    return box;
}

CBoundBox2D BoxOf(PlanBox const& box) {
    return CBoundBox2D(CPoint2D(box.xMin, box.yMin), CPoint2D(box.xMax, box.yMax));
}

// All loops of the line behind the place that relate to the box, in order.
std::vector<std::int32_t> Walk(std::map<std::int32_t, BoxIndex::Entry> const& line, PlanBox const& box,
                               std::int32_t nBehind = -1) {
    std::vector<std::int32_t> loops;
    for (auto const& [nPlace, entry] : line) {
        if (nPlace <= nBehind) continue;
        int const nRelation = BoxRelation(BoxOf(box), BoxOf(entry.box));
        if (nRelation == 0 || nRelation == 1) loops.push_back(entry.nLoop);
    }
    return loops;
}

std::vector<std::int32_t> Find(BoxIndex const& index, PlanBox const& box) {
    std::vector<std::int32_t> loops;
    BoxIndex::Search search(index, box);
    for (std::int32_t nLoop; search.Next(nLoop);) loops.push_back(nLoop);
    return loops;
}

std::vector<std::int32_t> FindBehind(BoxIndex const& index, PlanBox const& box, std::int32_t nPlace) {
    std::vector<std::int32_t> loops;
    BoxIndex::Search search(index, box, nPlace);
    for (std::int32_t nLoop; search.Next(nLoop);) loops.push_back(nLoop);
    return loops;
}

}  // namespace

TEST(IsBoxInside, IsTheBoxRelation) {
    Lattice random(61);
    for (int i = 0; i < 20000; ++i) {
        PlanBox const a = RandomBox(random, true);
        PlanBox const b = RandomBox(random, true);
        int const nRelation = BoxRelation(BoxOf(a), BoxOf(b));
        EXPECT_EQ(IsBoxInside(a, b), nRelation == 0);
        EXPECT_EQ(IsBoxInside(b, a), nRelation == 1);
    }
}

TEST(BoxIndex, FindsInOrderWhatAWalkFinds) {
    Lattice random(62);
    for (int nRun = 0; nRun < 60; ++nRun) {
        std::vector<BoxIndex::Standing> standings(3000);
        std::map<std::int32_t, BoxIndex::Entry> line;
        std::vector<BoxIndex::Entry> entries;
        std::int32_t nNext = 0;
        auto const make = [&] {
            BoxIndex::Entry const entry = {RandomBox(random, nRun % 2 == 0), 2 * nNext + 1, nNext};
            ++nNext;
            line.emplace(entry.nPlace, entry);
            return entry;
        };
        for (std::uint32_t n = random.Below(200); n > 0; --n) entries.push_back(make());
        BoxIndex index(standings, entries);
        for (int nStep = 0; nStep < 600; ++nStep) {
            std::uint32_t const nKind = random.Below(3);
            if (nKind == 0) {
                index.Add(make());
            } else if (nKind == 1 && !line.empty()) {
                auto const victim =
                    std::next(line.begin(), random.Below(static_cast<std::uint32_t>(line.size())));
                index.Remove(victim->second.nLoop);
                line.erase(victim);
            } else {
                PlanBox const box = RandomBox(random, true);
                ASSERT_EQ(Find(index, box), Walk(line, box));
                // Places are odd: half of these are somebody's own.
                auto const nPlace =
                    static_cast<std::int32_t>(random.Below(static_cast<std::uint32_t>(2 * nNext + 2)));
                ASSERT_EQ(FindBehind(index, box, nPlace), Walk(line, box, nPlace));
            }
        }
    }
}

TEST(BoxIndex, ASearchGoesOnWhileBoxesFoundAreRemoved) {
    std::vector<BoxIndex::Standing> standings(100);
    std::vector<BoxIndex::Entry> entries;
    for (std::int32_t i = 0; i < 100; ++i) {
        double const d = i;
        entries.push_back({{-d, -d, d, d}, 99 - i, i});
    }
    BoxIndex index(standings, entries);
    BoxIndex::Search search(index, {-50.5, -50.5, 50.5, 50.5});
    std::int32_t nExpected = 99;
    for (std::int32_t nLoop; search.Next(nLoop); --nExpected) {
        EXPECT_EQ(nLoop, nExpected);
        index.Remove(nLoop);
    }
    EXPECT_EQ(nExpected, -1);
    EXPECT_TRUE(Find(index, {-50.5, -50.5, 50.5, 50.5}).empty());
}
