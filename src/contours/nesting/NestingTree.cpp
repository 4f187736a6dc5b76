#include "contours/nesting/NestingTree.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <utility>

#include "contours/LoopWalk.h"
#include "contours/nesting/ClearlyInside.h"
#include "contours/nesting/Placement.h"
#include "foundation/LookAhead.h"
#include "foundation/Prefetch.h"
#include "foundation/Require.h"

namespace varnet {

namespace {

// So many children are looked at one by one; more are searched.
constexpr std::int32_t kFewChildren = 32;

// A walk that comes down so many levels begins a chain, which grows by so many links.
constexpr std::int32_t kLongWalk = 16;
constexpr int kLinksAtOnce = 64;

}  // namespace

// ---- taking the layer in

NestingTree::NestingTree(CLayer& layer, Boxes boxes) : m_Layer(layer), m_Boxes(boxes) {
    std::size_t const nLoops = static_cast<std::size_t>(layer.m_LoopList.GetCount());
    m_Records.reserve(nLoops);
    m_Raw.reserve(static_cast<std::size_t>(layer.m_RawLoopList.GetCount()));
    ForEachRoot(layer.m_RawLoopList, [this](tagLoopTreeNode& loop) { TakeInSubtree(loop); });
    Measure();
    m_Standings.resize(m_Records.size());
}

NestingTree::Loop NestingTree::AddRecord(tagLoopTreeNode& loop, std::int32_t nDepth) {
    Record& record = m_Records.emplace_back();
    record.nDepth = nDepth;
    record.pLoop = &loop;
    return static_cast<Loop>(m_Records.size() - 1);
}

// Copies what the tests look at. Loops, their lists and their points are brought near one after the other.
void NestingTree::Measure() {
    using namespace look_ahead;
    for (std::size_t i = 0; i < m_Records.size(); ++i) {
        if (i + kNestedLoop < m_Records.size()) {
            Prefetch(m_Records[i + kNestedLoop].pLoop);
            Prefetch(&m_Records[i + kNestedLoop].pLoop->m_Box);
        }
        if (i + kNestedList < m_Records.size()) Prefetch(m_Records[i + kNestedList].pLoop->m_pPointList);
        if (i + kNestedPoints < m_Records.size()) PrefetchPoints(*m_Records[i + kNestedPoints].pLoop);
        Record& record = m_Records[i];
        tagLoopTreeNode& loop = *record.pLoop;
        if (m_Boxes == Boxes::kRefreshed) {
            record.bCounterClockwise = MeasureBoxAndArea(loop) > 0.0;
        }
        record.box = PlanBoxOf(loop.m_Box);
        record.bClosed = loop.m_bClosed != 0;
        if (PointNode const* const pHead = FirstPoint(loop)) {
            record.bHasPoints = true;
            record.dHeadX = pHead->data.x;
            record.dHeadY = pHead->data.y;
        }
    }
}

void NestingTree::TakeInSubtree(tagLoopTreeNode& root) {
    m_Raw.push_back(AddRecord(root, 0));
    // Children get their records together, level by level.
    for (auto parent = static_cast<std::size_t>(m_Raw.back()); parent < m_Records.size(); ++parent) {
        ForEachLoop(m_Records[parent].pLoop->m_ChildList, [this, parent](tagLoopTreeNode& child) {
            Loop const loop = AddRecord(child, m_Records[parent].nDepth + 1);
            Link(static_cast<Loop>(parent), loop);
        });
    }
}

void NestingTree::Link(Loop parent, Loop child) {
    Record& above = At(parent);
    Record& below = At(child);
    below.parent = parent;
    below.previous = above.lastChild;
    below.next = kNone;
    below.nPlace = m_nNextPlace++;
    (above.lastChild != kNone ? At(above.lastChild).next : above.firstChild) = child;
    above.lastChild = child;
    ++above.nChildren;
}

// ---- what PlaceBelow asks for

BoxIndex::Entry NestingTree::EntryOf(Loop loop) const { return {At(loop).box, At(loop).nPlace, loop}; }

NestingTree::Cursor NestingTree::Children(Loop parent, Loop loop) {
    Record& record = At(parent);
    if (record.nChildren <= kFewChildren) return {.next = record.firstChild};
    if (record.pIndex == nullptr) {
        std::vector<BoxIndex::Entry> entries;
        for (Loop child = record.firstChild; child != kNone; child = At(child).next) {
            entries.push_back(EntryOf(child));
        }
        record.pIndex = std::make_unique<BoxIndex>(m_Standings, std::move(entries));
    }
    auto pFound = std::make_unique<std::vector<Loop>>();
    BoxIndex::Search search(*record.pIndex, At(loop).box);
    for (Loop child; search.Next(child);) pFound->push_back(child);
    std::reverse(pFound->begin(), pFound->end());
    return {.pFound = std::move(pFound)};
}

bool NestingTree::Next(Cursor& cursor, Loop& sibling) const {
    if (cursor.pFound != nullptr) {
        if (cursor.pFound->empty()) return false;
        cursor.current = cursor.pFound->back();
        cursor.pFound->pop_back();
    } else {
        if (cursor.next == kNone) return false;
        cursor.current = cursor.next;
        cursor.next = At(cursor.next).next;
    }
    sibling = cursor.current;
    return true;
}

bool NestingTree::Holds(Loop a, Loop b) {
    Record& outer = At(a);
    Record const& inner = At(b);
    if (!IsBoxInside(outer.box, inner.box)) return false;
    double const x = inner.dHeadX;
    double const y = inner.dHeadY;
    if (!HoldsStrictly(outer.box, x, y) || !inner.bHasPoints) return false;
    if (outer.pSlabs == nullptr && (!outer.bClosed || !outer.bHasPoints)) return false;
    if (outer.pSlabs == nullptr) PrefetchPoints(*outer.pLoop);
    return ParityAmongMany(*outer.pLoop, x, y, outer.pSlabs, outer.nTests) != 0;
}

void NestingTree::TakeOut(Loop parent, Cursor const& cursor) {
    Record& above = At(parent);
    Record& below = At(cursor.current);
    if (above.pIndex != nullptr) above.pIndex->Remove(cursor.current);
    (below.previous != kNone ? At(below.previous).next : above.firstChild) = below.next;
    (below.next != kNone ? At(below.next).previous : above.lastChild) = below.previous;
    --above.nChildren;
    above.bChanged = true;
    below.parent = kNone;
    Cut(parent);
}

void NestingTree::Append(Loop parent, Loop loop) {
    Link(parent, loop);
    Record& above = At(parent);
    above.bChanged = true;
    if (above.pIndex != nullptr) above.pIndex->Add(EntryOf(loop));
    if (above.nChain == kNoChain) return;
    if (above.nChildren > 1) {
        Cut(parent);
    } else {
        Lengthen(above.nChain);
    }
}

// ---- chains

// The last loop of the chain that holds this one is found by halves: all before it do. Where that is the end
// of the chain, the chain grows along the way that the walk would take.
NestingTree::Loop NestingTree::Deeper(Loop parent, Loop loop) {
    if (m_Walker != loop) m_nLevels = 0;
    m_Walker = loop;
    if (At(parent).nChain == kNoChain) {
        if (++m_nLevels < kLongWalk) return parent;
        m_nLevels = 0;
        At(parent).nChain = static_cast<std::int32_t>(m_Chains.size());
        At(parent).nLink = 0;
        m_Chains.push_back({parent});
    }
    std::int32_t const nChain = At(parent).nChain;
    std::vector<Loop> const& chain = m_Chains[static_cast<std::size_t>(nChain)];
    auto nHeld = static_cast<std::ptrdiff_t>(At(parent).nLink);
    for (;;) {
        auto const end = std::partition_point(chain.begin() + nHeld + 1, chain.end(),
                                              [this, loop](Loop link) { return Holds(link, loop); });
        nHeld = end - chain.begin() - 1;
        if (end != chain.end() || !Lengthen(nChain)) return chain[static_cast<std::size_t>(nHeld)];
        for (int n = 1; n < kLinksAtOnce && Lengthen(nChain);) ++n;
    }
}

// Adds the child of the chain's last loop, where it is alone, clearly inside, and in no chain.
bool NestingTree::Lengthen(std::int32_t nChain) {
    std::vector<Loop>& chain = m_Chains[static_cast<std::size_t>(nChain)];
    Loop const last = chain.back();
    if (At(last).nChildren != 1) return false;
    Loop const child = At(last).firstChild;
    Record& record = At(child);
    if (record.nChain != kNoChain) return false;
    if (record.judgedIn != last) {
        record.judgedIn = last;
        record.bClear = Holds(last, child) && IsClearlyInside(*At(last).pLoop, *record.pLoop);
    }
    if (!record.bClear) return false;
    record.nChain = nChain;
    record.nLink = static_cast<std::int32_t>(chain.size());
    chain.push_back(child);
    return true;
}

// The loop's children have changed: its chain ends with it.
void NestingTree::Cut(Loop loop) {
    Record const& record = At(loop);
    if (record.nChain == kNoChain) return;
    std::vector<Loop>& chain = m_Chains[static_cast<std::size_t>(record.nChain)];
    for (auto n = chain.size() - 1; n > static_cast<std::size_t>(record.nLink); --n) {
        At(chain[n]).nChain = kNoChain;
        chain.pop_back();
    }
}

// ---- nesting

void NestingTree::Nest() {
    std::vector<Loop> closed;
    std::vector<PlanBox> boxes;
    for (Loop const loop : m_Raw) {
        At(loop).nPlace = m_nNextPlace++;
        if (!At(loop).bClosed) continue;
        closed.push_back(loop);
        boxes.push_back(At(loop).box);
    }
    if (std::optional<BoxPairs> const pairs = BoxPairs::Find(boxes)) {
        NestPairs(closed, *pairs);
    } else {
        NestBySearch(closed);
    }
}

void NestingTree::NestPairs(std::vector<Loop> const& closed, BoxPairs const& pairs) {
    for (std::size_t i = 0; i < closed.size(); ++i) {
        Loop const loop = closed[i];
        if (i + look_ahead::kPairedPoints < closed.size())
            PrefetchPair(closed, pairs, i + look_ahead::kPairedPoints);
        for (std::uint32_t const nLater : pairs.Behind(i)) {
            Loop const later = closed[nLater];
            if (At(loop).parent != kNone) break;
            if (At(later).parent != kNone) continue;
            if (Holds(loop, later)) {
                PlaceBelow(*this, loop, later);
            } else if (Holds(later, loop)) {
                PlaceBelow(*this, later, loop);
            }
        }
    }
}

// Brings the points near that the first pair of a loop is tested on.
void NestingTree::PrefetchPair(std::vector<Loop> const& closed, BoxPairs const& pairs, std::size_t n) const {
    if (pairs.Behind(n).empty()) return;
    Record const& record = At(closed[n]);
    Record const& later = At(closed[pairs.Behind(n).front()]);
    PrefetchPoints(IsBoxInside(record.box, later.box) ? *record.pLoop : *later.pLoop);
}

void NestingTree::NestBySearch(std::vector<Loop> const& closed) {
    std::vector<BoxIndex::Entry> entries;
    entries.reserve(closed.size());
    for (Loop const loop : closed) entries.push_back(EntryOf(loop));
    BoxIndex raw(m_Standings, std::move(entries));
    for (Loop const loop : closed) {
        if (At(loop).parent == kNone) NestBehind(loop, raw);
    }
}

// Looks at the raw loops behind this one.
void NestingTree::NestBehind(Loop loop, BoxIndex& raw) {
    BoxIndex::Search search(raw, At(loop).box, At(loop).nPlace);
    for (Loop later; search.Next(later);) {
        if (Holds(loop, later)) {
            raw.Remove(later);
            PlaceBelow(*this, loop, later);
        } else if (Holds(later, loop)) {
            PlaceBelow(*this, later, loop);
            return;
        }
    }
}

// ---- writing the tree back

// The new lists are made before any loop leaves an old one: should memory run out, the layer is as it was.
void NestingTree::Store() {
    std::deque<LoopList> lists;
    for (Record const& record : m_Records) {
        if (record.bChanged) FillChildren(lists.emplace_back(record.pLoop->m_ChildList.m_nBlockSize), record);
    }
    auto raw = m_Raw.begin();
    for (XR__POSITION* position = m_Layer.m_RawLoopList.GetHeadPosition(); position != nullptr;) {
        XR__POSITION* const place = position;
        if (m_Layer.m_RawLoopList.GetNext(position) == nullptr) continue;
        if (At(*raw++).parent != kNone) m_Layer.m_RawLoopList.RemoveAt(place);
    }
    auto list = lists.begin();
    for (Record const& record : m_Records) {
        if (record.bChanged) SwapElements(record.pLoop->m_ChildList, *list++);
    }
    for (std::size_t i = 0; i < m_Raw.size(); ++i) {
        if (i + look_ahead::kStoredLevel < m_Raw.size()) {
            Prefetch(&At(m_Raw[i + look_ahead::kStoredLevel]).pLoop->m_nLevel);
        }
        if (At(m_Raw[i]).parent == kNone) StoreLevels(m_Raw[i]);
    }
}

void NestingTree::FillChildren(LoopList& children, Record const& record) const {
    for (Loop child = record.firstChild; child != kNone; child = At(child).next) {
        children.AddTail(At(child).pLoop);
    }
}

// A loop is one level deeper for each loop more that is above it.
void NestingTree::StoreLevels(Loop root) {
    std::int32_t nDepth = 0;
    for (Loop loop = root;;) {
        Record const& record = At(loop);
        record.pLoop->m_nLevel += nDepth - record.nDepth;
        if (record.firstChild != kNone) {
            loop = record.firstChild;
            ++nDepth;
            continue;
        }
        while (loop != root && At(loop).next == kNone) {
            loop = At(loop).parent;
            --nDepth;
        }
        if (loop == root) return;
        loop = At(loop).next;
    }
}

void NestingTree::Orient() {
    VARNET_REQUIRE(m_Boxes == Boxes::kRefreshed);
    using namespace look_ahead;
    // A level below zero, which a host may have set, turns nothing.
    auto const runsWrong = [](Record const& record) {
        return (record.bCounterClockwise ? 1 : 0) == record.pLoop->m_nLevel % 2;
    };
    for (std::size_t i = 0; i < m_Records.size(); ++i) {
        if (i + kTurnedLoop < m_Records.size()) Prefetch(m_Records[i + kTurnedLoop].pLoop);
        if (i + kTurnedPoints < m_Records.size() && runsWrong(m_Records[i + kTurnedPoints])) {
            PrefetchPoints(*m_Records[i + kTurnedPoints].pLoop);
        }
        Record const& record = m_Records[i];
        tagLoopTreeNode& loop = *record.pLoop;
        if (runsWrong(record)) loop.ReverseLoop();
        loop.m_nDirection = (loop.m_nLevel & 1) != 0 ? LOOPDIRECT_CW : LOOPDIRECT_CCW;
    }
}

}  // namespace varnet
