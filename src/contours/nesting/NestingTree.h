#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "contours/Layer.h"
#include "contours/nesting/BoxIndex.h"
#include "contours/nesting/BoxPairs.h"
#include "contours/nesting/LoopSlabs.h"

namespace varnet {

/// The nesting tree of a layer while CLayer::MakeTopology works on it: a record for each loop, with what the
/// tests of nesting look at, and indices where many loops stand side by side. The layer's own lists are
/// changed at the end only.
class NestingTree {
public:
    enum class Boxes { kCached, kRefreshed };
    /// Takes in all loops. With kRefreshed each loop's box is made anew, and its direction found while its
    /// points are at hand.
    NestingTree(CLayer& layer, Boxes boxes);

    /// Nests the raw loops.
    void Nest();
    /// Writes the tree to the layer: raw loops, children, levels.
    void Store();
    /// Makes each loop run counter-clockwise at even levels, clockwise at odd ones. Boxes must have been
    /// refreshed.
    void Orient();

    // What PlaceBelow asks for.
    using Loop = std::int32_t;
    struct Cursor {
        Loop current = kNone;
        Loop next = kNone;                               // while children are walked one by one
        std::unique_ptr<std::vector<Loop>> pFound = {};  // else those that were found, the last one first
    };
    Cursor Children(Loop parent, Loop loop);
    bool Next(Cursor& cursor, Loop& sibling) const;
    bool Holds(Loop a, Loop b);
    void TakeOut(Loop parent, Cursor const& cursor);
    void Append(Loop parent, Loop loop);
    /// Nothing: a loop's level grows by as much as its depth does, which Store sees.
    void Sink(Loop /*loop*/) const {}
    Loop Deeper(Loop parent, Loop loop);

private:
    static constexpr Loop kNone = -1;
    static constexpr std::int32_t kNoChain = -1;

    // What a walk down the tree looks at fills the first cache line.
    struct alignas(64) Record {
        PlanBox box;
        std::unique_ptr<LoopSlabs> pSlabs = {};
        Loop next = kNone;
        Loop firstChild = kNone;
        std::int32_t nChildren = 0;

        std::int32_t nTests = 0;  // of points against the loop
        double dHeadX = 0.0;
        double dHeadY = 0.0;
        bool bHasPoints = false;
        bool bClosed = false;
        bool bChanged = false;  // other children than on entry
        bool bCounterClockwise = false;
        Loop parent = kNone;
        Loop previous = kNone;
        Loop lastChild = kNone;
        std::int32_t nPlace = 0;  // among its siblings, growing from one to the next
        std::int32_t nDepth = 0;  // on entry
        std::int32_t nChain = kNoChain;
        std::int32_t nLink = 0;  // its place in the chain
        Loop judgedIn = kNone;   // the parent in which it was last judged to lie clearly, or not
        bool bClear = false;
        tagLoopTreeNode* pLoop = nullptr;
        std::unique_ptr<BoxIndex> pIndex = {};  // of its children
    };

    Record& At(Loop loop) { return m_Records[static_cast<std::size_t>(loop)]; }
    Record const& At(Loop loop) const { return m_Records[static_cast<std::size_t>(loop)]; }
    Loop AddRecord(tagLoopTreeNode& loop, std::int32_t nDepth);
    void TakeInSubtree(tagLoopTreeNode& root);
    void Measure();
    void Link(Loop parent, Loop child);
    BoxIndex::Entry EntryOf(Loop loop) const;
    // Raw loops that are closed, in order. Where their boxes make few pairs all pairs are found at once, else
    // each loop's one after the other.
    void NestPairs(std::vector<Loop> const& closed, BoxPairs const& pairs);
    void PrefetchPair(std::vector<Loop> const& closed, BoxPairs const& pairs, std::size_t n) const;
    void NestBySearch(std::vector<Loop> const& closed);
    void NestBehind(Loop loop, BoxIndex& raw);
    bool Lengthen(std::int32_t nChain);
    void Cut(Loop loop);
    void FillChildren(LoopList& children, Record const& record) const;
    void StoreLevels(Loop root);

    CLayer& m_Layer;
    Boxes m_Boxes;
    std::vector<Record> m_Records;
    std::vector<Loop> m_Raw;
    std::vector<BoxIndex::Standing> m_Standings;
    std::int32_t m_nNextPlace = 0;

    // Loops each of which is the only child of the one before and lies clearly inside it. So a loop that is
    // held by one of them is held by all before it, and a walk down the chain is a search by halves.
    std::vector<std::vector<Loop>> m_Chains;
    Loop m_Walker = kNone;  // the loop that walks, and how many levels it has come down outside of chains
    std::int32_t m_nLevels = 0;
};

}  // namespace varnet
