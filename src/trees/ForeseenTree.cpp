#include "trees/ForeseenTree.h"

#include <algorithm>
#include <utility>

#include "foundation/LookAhead.h"

namespace varnet {

using parent_avl::kLeft;
using parent_avl::kNothing;
using parent_avl::kRight;
using parent_avl::kTop;

void ForeseenTree::Prepare() {
    VARNET_REQUIRE(!m_bPrepared && NodeCount() <= kMostNodes);
    // Twice as large each time, so that many small lots of keys do not each pay for all nodes.
    if (m_Nodes.size() < NodeCount() + 1) {
        ZeroedTable<Node> nodes(std::max(NodeCount() + 1, std::min(2 * m_Nodes.size(), kMostNodes + 1)));
        for (std::size_t i = 0; i < m_Nodes.size(); ++i) {
            nodes[i].bAmbiguous = m_Nodes[i].bAmbiguous;
            nodes[i].bAnnounced = m_Nodes[i].bAnnounced;
        }
        m_Nodes = std::move(nodes);
    }
    // So that nothing can fail when keys are inserted.
    m_NodeKeys.reserve(m_Announced.size());
    m_Made.reserve(m_nAmbiguous);
    SortAnnounced();
    LinkNeighbors();
    m_bPrepared = true;
}

// A few of many keys are sorted, else all are looked through. Neighbours are linked on the way, as long as no
// ambiguous key stands between.
void ForeseenTree::SortAnnounced() {
    constexpr std::size_t kFew = 8;
    std::uint32_t nLast = kNothing;
    auto const append = [this, &nLast](std::uint32_t nKey) {
        Node& node = NodeOf(nKey);
        if (node.bAmbiguous) {
            nLast = kNothing;
            return;
        }
        m_NodeKeys.push_back(nKey);
        node.nChildren[kRight] = nLast;
        if (nLast != kNothing) m_Nodes[nLast].nChildren[kLeft] = PlaceOf(nKey);
        nLast = PlaceOf(nKey);
    };
    if (m_Announced.size() < m_nKeys / kFew) {
        std::vector<std::uint32_t> sorted = m_Announced;
        std::sort(sorted.begin(), sorted.end());
        std::for_each(sorted.begin(), sorted.end(), append);
        return;
    }
    for (std::uint32_t nKey = 0; nKey < m_nKeys; ++nKey) {
        if (NodeOf(nKey).bAnnounced) append(nKey);
    }
}

// Takes the keys out from the last to the first: each keeps the neighbours that it has then.
void ForeseenTree::LinkNeighbors() {
    constexpr std::size_t kAhead = look_ahead::kTakenOutNode;
    for (std::size_t i = m_Announced.size(); i-- > 0;) {
        if (i >= kAhead) PrefetchNode(m_Announced[i - kAhead]);
        Node& node = NodeOf(m_Announced[i]);
        if (node.bAmbiguous) continue;
        std::uint32_t const nGreater = node.nChildren[kLeft];
        std::uint32_t const nLesser = node.nChildren[kRight];
        if (nGreater != kNothing) m_Nodes[nGreater].nChildren[kRight] = nLesser;
        if (nLesser != kNothing) m_Nodes[nLesser].nChildren[kLeft] = nGreater;
    }
}

void ForeseenTree::PutBesideNeighbor(std::uint32_t nKey) {
    Node& node = NodeOf(nKey);
    Link const link = FindEmptyLink(nKey, node.nChildren[kRight], node.nChildren[kLeft]);
    node.nChildren[kLeft] = kNothing;
    node.nChildren[kRight] = kNothing;
    parent_avl::PutIn(m_Nodes, PlaceOf(nKey), link, kLeaveRotations);
}

// At the neighbour whose inner side is empty. Where only one is known, nodes for ambiguous keys may stand
// between, and then the place is below them.
parent_avl::Link ForeseenTree::FindEmptyLink(std::uint32_t nKey, std::uint32_t nLesser,
                                             std::uint32_t nGreater) {
    if (nLesser != kNothing && (nGreater == kNothing || m_Nodes[nLesser].nChildren[kLeft] == kNothing)) {
        return Follow({nLesser, kLeft}, [](std::uint32_t) { return kRight; });
    }
    if (nGreater != kNothing) return Follow({nGreater, kRight}, [](std::uint32_t) { return kLeft; });
    return Follow({kTop, kLeft},
                  [this, nKey](std::uint32_t nNode) { return RankAt(nNode) < nKey ? kLeft : kRight; });
}

void ForeseenTree::Clear() {
    auto const clear = [](Node& node) {
        node.nChildren[kLeft] = kNothing;
        node.nChildren[kRight] = kNothing;
        node.nBalance = 0;
        node.bAnnounced = false;
    };
    for (std::uint32_t const nKey : m_Announced) clear(NodeOf(nKey));
    for (std::uint32_t const nKey : m_NodeKeys) clear(NodeOf(nKey));
    clear(m_Nodes[0]);
    m_Announced.clear();
    m_NodeKeys.clear();
    m_Made.clear();
    m_nAmbiguous = 0;
    m_bPrepared = false;
    m_nInserted = 0;
}

}  // namespace varnet
