#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Prefetch.h"
#include "foundation/Require.h"
#include "foundation/memory/LargePages.h"
#include "trees/NearPointer.h"

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
    /// As many as a NearPointer reaches, so NodeCount must not be larger when Prepare is called.
    static constexpr std::size_t kMostNodes = (std::size_t{1} << 27) - 2;

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
    std::uint32_t Root() const { return KeyOf(m_Nodes[0].m_pLeft); }
    std::uint32_t Left(std::uint32_t nKey) const { return KeyOf(NodeOf(nKey).m_pLeft); }
    std::uint32_t Right(std::uint32_t nKey) const { return KeyOf(NodeOf(nKey).m_pRight); }
    int Balance(std::uint32_t nKey) const { return NodeOf(nKey).m_nBalance; }

    /// The keys of the nodes that there are when all announced keys have been inserted: in their order, those
    /// of nodes for ambiguous keys last.
    std::vector<std::uint32_t> const& Nodes() const { return m_NodeKeys; }

    /// Forgets what was announced and what was inserted.
    void Clear();

    /// Brings what Announce looks at into the processor's cache.
    void PrefetchNode(std::uint32_t nKey) const { Prefetch(&NodeOf(nKey)); }
    /// Brings what Insert looks at, where the node is at hand.
    void PrefetchNeighbors(std::uint32_t nKey) const {
        Prefetch(NodeOf(nKey).m_pLeft);
        Prefetch(NodeOf(nKey).m_pRight);
    }

private:
    // Until a key is inserted, m_pLeft is its greater neighbour and m_pRight the lesser one, null where there
    // is none or an ambiguous one; from then on the children.
    struct Node {
        NearPointer<Node> m_pLeft;
        NearPointer<Node> m_pRight;
        NearPointer<Node> m_pParent;
        std::int8_t m_nBalance;
        bool bAmbiguous;
        bool bAnnounced;
    };
    static_assert(sizeof(Node) == 16);

    // An empty side of a node.
    struct EmptySide {
        Node* pParent;
        NearPointer<Node>* pSlot;
    };

    // The first node stands above the root, which is its left child.
    Node& NodeOf(std::uint32_t nKey) { return m_Nodes[std::size_t{nKey} + 1]; }
    Node const& NodeOf(std::uint32_t nKey) const { return m_Nodes[std::size_t{nKey} + 1]; }
    std::uint32_t KeyOf(Node const* pNode) const {
        return pNode == nullptr ? kNone : static_cast<std::uint32_t>(pNode - &m_Nodes[1]);
    }
    // The key of which the node was made.
    std::uint32_t RankOf(Node const* pNode) const {
        std::uint32_t const nKey = KeyOf(pNode);
        return nKey < m_nKeys ? nKey : m_Made[nKey - m_nKeys];
    }

    void SortAnnounced();
    void LinkNeighbors();
    void PutBesideNeighbor(std::uint32_t nKey);
    EmptySide FindEmptySide(std::uint32_t nKey, Node* pLesser, Node* pGreater);
    void PutIn(Node& node, EmptySide const& side);

    // From a place down to an empty one, at each node to the side that sideOf(node) gives.
    template <class SideOf>
    static EmptySide Follow(EmptySide side, SideOf const& sideOf) {
        while (Node* const pNode = *side.pSlot) side = {pNode, &sideOf(*pNode)};
        return side;
    }

    template <class Compare>
    std::uint32_t Descend(std::uint32_t nKey, Compare const& compare) {
        EmptySide side = {&m_Nodes[0], &m_Nodes[0].m_pLeft};
        while (Node* const pNode = *side.pSlot) {
            int const nOrder = compare(KeyOf(pNode));
            if (nOrder == 0) return KeyOf(pNode);
            side = {pNode, nOrder < 0 ? &pNode->m_pLeft : &pNode->m_pRight};
        }
        auto const nMade = static_cast<std::uint32_t>(m_nKeys + m_Made.size());
        m_Made.push_back(nKey);
        m_NodeKeys.push_back(nMade);
        PutIn(NodeOf(nMade), side);
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
