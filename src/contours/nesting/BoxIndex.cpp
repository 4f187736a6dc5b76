#include "contours/nesting/BoxIndex.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "foundation/Require.h"

namespace varnet {

namespace {

constexpr std::size_t kLeafSize = 8;
constexpr std::size_t kMostRecent = 32;

// A search looks at so many nodes, or finds so many boxes, before it looks at what comes first in line.
constexpr int kNodesAtOnce = 64;
constexpr std::size_t kFoundAtOnce = 4;

// The four axes of the space in which a box is a point.
constexpr std::array kSides{&PlanBox::xMin, &PlanBox::yMin, &PlanBox::xMax, &PlanBox::yMax};

bool IsOrdered(PlanBox const& box) {
    return std::none_of(kSides.begin(), kSides.end(), [&box](auto side) { return std::isnan(box.*side); });
}

}  // namespace

// ---- one tree

BoxIndex::Tree::Tree(std::vector<Entry> all)
    : shape(CompleteTree::ForItems(all.size(), kLeafSize)),
      entries(std::move(all)),
      nodes(shape.NodeCount()) {
    Build(0, 0, shape.nLeaves);
}

// The entries of a node are divided at the middle of the side on which they spread most.
void BoxIndex::Tree::Build(std::size_t nNode, std::size_t nFirstLeaf, std::size_t nLeavesBelow) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    auto const begin = entries.begin() + static_cast<std::ptrdiff_t>(LeafBegin(nFirstLeaf));
    auto const end = entries.begin() + static_cast<std::ptrdiff_t>(LeafBegin(nFirstLeaf + nLeavesBelow));
    Node& node = nodes[nNode];
    node.lowest = {kInfinite, kInfinite, kInfinite, kInfinite};
    node.highest = {-kInfinite, -kInfinite, -kInfinite, -kInfinite};
    node.nFirstPlace = kGone;
    node.nLastPlace = kBeforeAll;
    for (auto i = begin; i != end; ++i) {
        for (auto const side : kSides) {
            node.lowest.*side = std::min(node.lowest.*side, i->box.*side);
            node.highest.*side = std::max(node.highest.*side, i->box.*side);
        }
        node.nFirstPlace = std::min(node.nFirstPlace, i->nPlace);
        node.nLastPlace = std::max(node.nLastPlace, i->nPlace);
    }
    if (nLeavesBelow == 1) return;
    auto const spread = [&node](auto side) { return node.highest.*side - node.lowest.*side; };
    auto widest = kSides.front();
    for (auto const side : kSides) {
        if (spread(side) > spread(widest)) widest = side;
    }
    std::size_t const nHalf = nLeavesBelow / 2;
    auto const middle = entries.begin() + static_cast<std::ptrdiff_t>(LeafBegin(nFirstLeaf + nHalf));
    std::nth_element(begin, middle, end,
                     [widest](Entry const& a, Entry const& b) { return a.box.*widest < b.box.*widest; });
    Build(CompleteTree::Left(nNode), nFirstLeaf, nHalf);
    Build(CompleteTree::Right(nNode), nFirstLeaf + nHalf, nHalf);
}

std::size_t BoxIndex::Tree::LeafOf(std::size_t nEntry) const {
    std::size_t nLeaf = nEntry * shape.nLeaves / entries.size();
    while (LeafBegin(nLeaf + 1) <= nEntry) ++nLeaf;
    return nLeaf;
}

std::int32_t BoxIndex::Tree::FirstPlaceInLeaf(std::size_t nLeaf) const {
    std::int32_t nFirst = kGone;
    for (std::size_t i = LeafBegin(nLeaf); i < LeafBegin(nLeaf + 1); ++i) {
        nFirst = std::min(nFirst, entries[i].nPlace);
    }
    return nFirst;
}

std::int32_t BoxIndex::Tree::FirstPlaceBelow(std::size_t nNode) const {
    if (shape.IsLeaf(nNode)) return FirstPlaceInLeaf(shape.LeafOf(nNode));
    return std::min(nodes[CompleteTree::Left(nNode)].nFirstPlace,
                    nodes[CompleteTree::Right(nNode)].nFirstPlace);
}

void BoxIndex::Tree::Remove(std::size_t nEntry) {
    entries[nEntry].nPlace = kGone;
    for (std::size_t n = shape.NodeOf(LeafOf(nEntry));; n = CompleteTree::Parent(n)) {
        std::int32_t const nFirst = FirstPlaceBelow(n);
        if (nodes[n].nFirstPlace == nFirst) return;
        nodes[n].nFirstPlace = nFirst;
        if (n == 0) return;
    }
}

// ---- the index

BoxIndex::BoxIndex(std::vector<Standing>& standings, std::vector<Entry> entries) : m_pStandings(&standings) {
    std::erase_if(entries, [](Entry const& entry) { return !IsOrdered(entry.box); });
    AddTree(std::move(entries));
}

void BoxIndex::AddTree(std::vector<Entry> entries) {
    if (entries.empty()) return;
    Tree const& tree = m_Trees.emplace_back(std::move(entries));
    auto const nTree = static_cast<std::int32_t>(m_Trees.size() - 1);
    for (std::size_t i = 0; i < tree.entries.size(); ++i) {
        auto const nLoop = static_cast<std::size_t>(tree.entries[i].nLoop);
        (*m_pStandings)[nLoop] = {nTree, static_cast<std::int32_t>(i)};
    }
}

void BoxIndex::Add(Entry const& entry) {
    if constexpr (kRequirementsChecked) ++m_nAdds;
    if (!IsOrdered(entry.box)) return;
    auto const nRecent = static_cast<std::int32_t>(m_Recent.size());
    (*m_pStandings)[static_cast<std::size_t>(entry.nLoop)] = {kRecentTree, nRecent};
    m_Recent.push_back(entry);
    if (m_Recent.size() < kMostRecent) return;
    std::vector<Entry> entries = std::exchange(m_Recent, {});
    while (!m_Trees.empty() && m_Trees.back().entries.size() <= entries.size()) {
        std::vector<Entry> const& smaller = m_Trees.back().entries;
        entries.insert(entries.end(), smaller.begin(), smaller.end());
        m_Trees.pop_back();
    }
    std::erase_if(entries, [](Entry const& old) { return old.nPlace == kGone; });
    AddTree(std::move(entries));
}

void BoxIndex::Remove(std::int32_t nLoop) {
    Standing const standing = std::exchange((*m_pStandings)[static_cast<std::size_t>(nLoop)], Standing{});
    auto const nEntry = static_cast<std::size_t>(standing.nEntry);
    if (standing.nTree == kRecentTree) {
        m_Recent[nEntry].nPlace = kGone;
    } else if (standing.nTree != kNoTree) {
        m_Trees[static_cast<std::size_t>(standing.nTree)].Remove(nEntry);
    }
}

// Whether a box below the node may be inside, or may have the box inside. Without branches: either answer is
// as likely.
bool BoxIndex::MayRelate(Node const& node, PlanBox const& box) {
    unsigned const nInside = static_cast<unsigned>(node.highest.xMin > box.xMin) &
                             static_cast<unsigned>(node.highest.yMin > box.yMin) &
                             static_cast<unsigned>(node.lowest.xMax < box.xMax) &
                             static_cast<unsigned>(node.lowest.yMax < box.yMax);
    unsigned const nAround = static_cast<unsigned>(node.lowest.xMin < box.xMin) &
                             static_cast<unsigned>(node.lowest.yMin < box.yMin) &
                             static_cast<unsigned>(node.highest.xMax > box.xMax) &
                             static_cast<unsigned>(node.highest.yMax > box.yMax);
    return (nInside | nAround) != 0;
}

// ---- searching

// Most boxes relate to few others, which are found at once; what is left after so many nodes waits in the
// heap until its place in line comes.
BoxIndex::Search::Search(BoxIndex const& index, PlanBox const& box, std::int32_t nBehind)
    : m_Index(index), m_nAdds(index.m_nAdds), m_Box(box), m_nBehind(nBehind) {
    int nNodes = 0;
    for (std::size_t nTree = 0; nTree < index.m_Trees.size(); ++nTree) {
        Tree const& tree = index.m_Trees[nTree];
        std::array<std::size_t, CompleteTree::kStackSize> stack;
        std::size_t nItems = 0;
        stack[nItems++] = 0;
        while (nItems > 0 && nNodes++ < kNodesAtOnce && m_Heap.size() < kFoundAtOnce) {
            std::size_t const nNode = stack[--nItems];
            if (!MayHold(tree.nodes[nNode])) continue;
            if (tree.shape.IsLeaf(nNode)) {
                std::size_t const nLeaf = tree.shape.LeafOf(nNode);
                AppendEntries(tree.entries, tree.LeafBegin(nLeaf), tree.LeafBegin(nLeaf + 1));
            } else {
                stack[nItems++] = CompleteTree::Right(nNode);
                stack[nItems++] = CompleteTree::Left(nNode);
            }
        }
        while (nItems > 0) AppendNode(nTree, stack[--nItems]);
    }
    AppendEntries(index.m_Recent, 0, index.m_Recent.size());
    std::make_heap(m_Heap.begin(), m_Heap.end(), IsLater);
}

bool BoxIndex::Search::IsLater(Item const& a, Item const& b) { return a.nPlace > b.nPlace; }

bool BoxIndex::Search::MayHold(Node const& node) const {
    return node.nFirstPlace != kGone && node.nLastPlace > m_nBehind && MayRelate(node, m_Box);
}

void BoxIndex::Search::AppendNode(std::size_t nTree, std::size_t nNode) {
    Node const& node = m_Index.m_Trees[nTree].nodes[nNode];
    if (MayHold(node)) {
        m_Heap.push_back(
            {node.nFirstPlace, static_cast<std::int32_t>(nTree), static_cast<std::int32_t>(nNode), 0});
    }
}

void BoxIndex::Search::AppendEntries(std::vector<Entry> const& entries, std::size_t nBegin,
                                     std::size_t nEnd) {
    for (std::size_t i = nBegin; i < nEnd; ++i) {
        Entry const& entry = entries[i];
        if (entry.nPlace == kGone || entry.nPlace <= m_nBehind) continue;
        if (!IsBoxInside(m_Box, entry.box) && !IsBoxInside(entry.box, m_Box)) continue;
        m_Heap.push_back({entry.nPlace, 0, -1, entry.nLoop});
    }
}

// Puts what was appended behind the first so many items into the heap.
void BoxIndex::Search::TakeIn(std::size_t nItems) {
    while (nItems < m_Heap.size()) {
        ++nItems;
        std::push_heap(m_Heap.begin(), m_Heap.begin() + static_cast<std::ptrdiff_t>(nItems), IsLater);
    }
}

bool BoxIndex::Search::Next(std::int32_t& nLoop) {
    VARNET_REQUIRE(m_nAdds == m_Index.m_nAdds);
    while (!m_Heap.empty()) {
        std::pop_heap(m_Heap.begin(), m_Heap.end(), IsLater);
        Item const item = m_Heap.back();
        m_Heap.pop_back();
        if (item.nNode < 0) {
            nLoop = item.nEntry;
            return true;
        }
        auto const nTree = static_cast<std::size_t>(item.nTree);
        auto const nNode = static_cast<std::size_t>(item.nNode);
        std::size_t const nItems = m_Heap.size();
        Tree const& tree = m_Index.m_Trees[nTree];
        if (tree.shape.IsLeaf(nNode)) {
            std::size_t const nLeaf = tree.shape.LeafOf(nNode);
            AppendEntries(tree.entries, tree.LeafBegin(nLeaf), tree.LeafBegin(nLeaf + 1));
        } else {
            AppendNode(nTree, CompleteTree::Left(nNode));
            AppendNode(nTree, CompleteTree::Right(nNode));
        }
        TakeIn(nItems);
    }
    return false;
}

}  // namespace varnet
