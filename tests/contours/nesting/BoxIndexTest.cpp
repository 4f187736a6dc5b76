#include "contours/nesting/BoxIndex.h"

#include <algorithm>
#include <limits>
#include <map>

#include "contours/Paths.h"

using namespace varnet;

namespace {

BoxKey RandomBox(Lattice& random, bool bOdd) {
    double const x = random.Step(20);
    double const y = random.Step(20);
    BoxKey box = {x, y, x + random.Step(12), y + random.Step(12)};
    if (bOdd && random.Below(10) == 0) std::swap(box[0], box[2]);
    if (bOdd && random.Below(20) == 0) box[random.Below(4)] = std::numeric_limits<double>::quiet_NaN();
    if (bOdd && random.Below(20) == 0) box[random.Below(4)] = std::numeric_limits<double>::infinity();
    return box;
}

CBoundBox2D BoxOf(BoxKey const& key) {
    return CBoundBox2D(CPoint2D(key[0], key[1]), CPoint2D(key[2], key[3]));
}

// All loops of the line that relate to the box, in order.
std::vector<std::int32_t> Walk(std::map<std::int32_t, BoxIndex::Entry> const& line, BoxKey const& box) {
    std::vector<std::int32_t> loops;
    for (auto const& [nPlace, entry] : line) {
        int const nRelation = BoxRelation(BoxOf(box), BoxOf(entry.box));
        if (nRelation == 0 || nRelation == 1) loops.push_back(entry.nLoop);
    }
    return loops;
}

std::vector<std::int32_t> Find(BoxIndex const& index, BoxKey const& box) {
    std::vector<std::int32_t> loops;
    BoxIndex::Search search(index, box);
    for (std::int32_t nLoop; search.Next(nLoop);) loops.push_back(nLoop);
    return loops;
}

}  // namespace

TEST(IsBoxInside, IsTheBoxRelation) {
    Lattice random(61);
    for (int i = 0; i < 20000; ++i) {
        BoxKey const a = RandomBox(random, true);
        BoxKey const b = RandomBox(random, true);
        int const nRelation = BoxRelation(BoxOf(a), BoxOf(b));
        EXPECT_EQ(IsBoxInside(a, b), nRelation == 0);
        EXPECT_EQ(IsBoxInside(b, a), nRelation == 1);
    }
}

TEST(BoxIndex, FindsInOrderWhatAWalkFinds) {
    Lattice random(62);
    for (int nRun = 0; nRun < 60; ++nRun) {
        std::vector<BoxIndex::Slot> slots(3000);
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
        BoxIndex index(slots, entries);
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
                BoxKey const box = RandomBox(random, true);
                ASSERT_EQ(Find(index, box), Walk(line, box));
            }
        }
    }
}

TEST(BoxIndex, ASearchGoesOnWhileBoxesFoundAreRemoved) {
    std::vector<BoxIndex::Slot> slots(100);
    std::vector<BoxIndex::Entry> entries;
    for (std::int32_t i = 0; i < 100; ++i) {
        double const d = i;
        entries.push_back({{-d, -d, d, d}, 99 - i, i});
    }
    BoxIndex index(slots, entries);
    BoxIndex::Search search(index, {-50.5, -50.5, 50.5, 50.5});
    std::int32_t nExpected = 99;
    for (std::int32_t nLoop; search.Next(nLoop); --nExpected) {
        EXPECT_EQ(nLoop, nExpected);
        index.Remove(nLoop);
    }
    EXPECT_EQ(nExpected, -1);
    EXPECT_TRUE(Find(index, {-50.5, -50.5, 50.5, 50.5}).empty());
}
