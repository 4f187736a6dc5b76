#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Prefetch.h"
#include "foundation/Require.h"
#include "foundation/memory/LargePages.h"
#include "trees/ParentAvl.h"

namespace varnet {

/// Offline insertion into a balanced tree: the shape that it gets when keys are inserted whose order is known
/// in advance, and the order of their insertion too. Hardly any goes down the tree to find its place.
///
/// The place of a new key in a binary tree is beside its neighbours among the keys that were inserted before:
/// one of the two sides that they turn to each other is empty. The neighbours at the time of each insertion
/// follow without a search: all keys are linked in their order, and taken out again from the last to the
/// first.
///
/// Keys are numbered by their rank. Some may be ambiguous: where they go depends on the shape of the tree, so
/// they go down from its root at each insertion, and may end at a node that is there. Each of them must lie
/// on one side of every key that is not ambiguous.
///
/// In steps: SetAmbiguous, Announce for each key to insert, Prepare, Insert for each of Announced(), then the
/// shape can be asked; Clear makes it ready for the next keys.
///
/// A node takes 16 bytes, and nodes that are near each other in the order, as most are that are near in the
/// tree, share a line of the processor's cache.
class ForeseenTree {
public:
    static constexpr std::uint32_t kNone = static_cast<std::uint32_t>(-1);
    /// As many as 32 bits count, so NodeCount must not be larger when Prepare is called.
    static constexpr std::size_t kMostNodes = kNone - std::size_t{1};

    /// For keys below nKeys, which is kMostNodes at most.
    explicit ForeseenTree(std::size_t nKeys) : m_Nodes(nKeys + 1), m_nKeys(nKeys) {
        VARNET_REQUIRE(nKeys <= kMostNodes);
    }

    /// Before any key is announced.
    void SetAmbiguous(std::uint32_t nKey) {
        VARNET_REQUIRE(nKey < m_nKeys && m_Announced.empty());
        NodeOf(nKey).bAmbiguous = true;
    }
    bool IsAmbiguous(std::uint32_t nKey) const { return NodeOf(nKey).bAmbiguous; }

    /// The key will be inserted next. One that is not ambiguous is inserted just once, however often it is
    /// announced.
    void Announce(std::uint32_t nKey) {
        VARNET_REQUIRE(nKey < m_nKeys && !m_bPrepared);
        Node& node = NodeOf(nKey);
        if (node.bAnnounced && !node.bAmbiguous) return;
        m_nAmbiguous += node.bAmbiguous ? 1 : 0;
        node.bAnnounced = true;
        m_Announced.push_back(nKey);
    }
    /// All keys that will be inserted have been announced.
    void Prepare();

    /// The keys to insert, each as often as it is.
    std::vector<std::uint32_t> const& Announced() const { return m_Announced; }
    /// How many of these are ambiguous.
    std::size_t AmbiguousCount() const { return m_nAmbiguous; }
    /// All keys of nodes are below this: nodes for ambiguous keys have keys of their own, from nKeys on.
    std::size_t NodeCount() const { return m_nKeys + m_nAmbiguous; }

    /// Inserts the next key of Announced(). For an ambiguous one, compare(node's key) is above 0 where it
    /// goes right, below 0 where it goes left, and 0 where it ends. Returns the key of the node that it got,
    /// or where it ended.
    template <class Compare>
    std::uint32_t Insert(std::uint32_t nKey, Compare const& compare) {
        VARNET_REQUIRE(m_bPrepared && m_nInserted < m_Announced.size() && m_Announced[m_nInserted] == nKey);
        if constexpr (kRequirementsChecked) ++m_nInserted;
        if (IsAmbiguous(nKey)) return Descend(nKey, compare);
        PutBesideNeighbor(nKey);
        return nKey;
    }

    /// The shape, by keys; kNone where there is none.
    std::uint32_t Root() const { return KeyAt(m_Nodes[parent_avl::kTop].nChildren[parent_avl::kLeft]); }
    std::uint32_t Left(std::uint32_t nKey) const { return KeyAt(NodeOf(nKey).nChildren[parent_avl::kLeft]); }
    std::uint32_t Right(std::uint32_t nKey) const {
        return KeyAt(NodeOf(nKey).nChildren[parent_avl::kRight]);
    }
    int Balance(std::uint32_t nKey) const { return NodeOf(nKey).nBalance; }

    /// The keys of the nodes that there are when all announced keys have been inserted: in their order, those
    /// of nodes for ambiguous keys last.
    std::vector<std::uint32_t> const& Nodes() const { return m_NodeKeys; }

    /// Forgets what was announced and what was inserted.
    void Clear();

    /// Brings what Announce looks at into the processor's cache.
    void PrefetchNode(std::uint32_t nKey) const { Prefetch(&NodeOf(nKey)); }
    /// Brings what Insert looks at, where the node is at hand.
    void PrefetchNeighbors(std::uint32_t nKey) const {
        Node const& node = NodeOf(nKey);
        Prefetch(&m_Nodes[node.nChildren[parent_avl::kLeft]]);
        Prefetch(&m_Nodes[node.nChildren[parent_avl::kRight]]);
    }

private:
    // Nodes are known by their places in m_Nodes, see ParentAvl.h.
    using Link = parent_avl::Link;
    static constexpr auto kLeaveRotations = [](std::uint32_t, std::uint32_t) {};

    struct Node {
        std::uint32_t nChildren[2];  // until the key is inserted, its greater neighbour and its lesser one
        std::uint32_t nParent;
        std::int8_t nBalance;
        bool bAmbiguous;
        bool bAnnounced;
    };
    static_assert(sizeof(Node) == 16);

    static std::uint32_t PlaceOf(std::uint32_t nKey) { return nKey + 1; }
    Node& NodeOf(std::uint32_t nKey) { return m_Nodes[PlaceOf(nKey)]; }
    Node const& NodeOf(std::uint32_t nKey) const { return m_Nodes[PlaceOf(nKey)]; }
    static std::uint32_t KeyAt(std::uint32_t nNode) {
        return nNode == parent_avl::kNothing ? kNone : nNode - 1;
    }
    // The key of which the node was made.
    std::uint32_t RankAt(std::uint32_t nNode) const {
        std::uint32_t const nKey = KeyAt(nNode);
        return nKey < m_nKeys ? nKey : m_Made[nKey - m_nKeys];
    }

    void SortAnnounced();
    void LinkNeighbors();
    void PutBesideNeighbor(std::uint32_t nKey);
    Link FindEmptyLink(std::uint32_t nKey, std::uint32_t nLesser, std::uint32_t nGreater);

    // From a link down to an empty one, at each node to the side that sideOf(node) gives.
    template <class SideOf>
    Link Follow(Link link, SideOf const& sideOf) {
        while (std::uint32_t const nNode = parent_avl::At(m_Nodes, link)) link = {nNode, sideOf(nNode)};
        return link;
    }

    template <class Compare>
    std::uint32_t Descend(std::uint32_t nKey, Compare const& compare) {
        Link link = {parent_avl::kTop, parent_avl::kLeft};
        while (std::uint32_t const nNode = parent_avl::At(m_Nodes, link)) {
            int const nOrder = compare(KeyAt(nNode));
            if (nOrder == 0) return KeyAt(nNode);
            link = {nNode, nOrder < 0 ? parent_avl::kLeft : parent_avl::kRight};
        }
        auto const nMade = static_cast<std::uint32_t>(m_nKeys + m_Made.size());
        m_Made.push_back(nKey);
        m_NodeKeys.push_back(nMade);
        parent_avl::PutIn(m_Nodes, PlaceOf(nMade), link, kLeaveRotations);
        return nMade;
    }

    ZeroedTable<Node> m_Nodes;
    std::size_t m_nKeys;
    std::vector<std::uint32_t> m_Announced;
    std::size_t m_nAmbiguous = 0;           // among these
    std::vector<std::uint32_t> m_NodeKeys;  // those that will have nodes, and those that were made
    std::vector<std::uint32_t> m_Made;      // the ambiguous keys that nodes were made for

    // For the checks of the order of calls alone.
    bool m_bPrepared = false;
    std::size_t m_nInserted = 0;
};

}  // namespace varnet
