#include "trees/ForeseenTree.h"

#include <algorithm>
#include <utility>

#include "foundation/LookAhead.h"
#include "trees/Avl.h"

namespace varnet {

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
    Node* pLast = nullptr;
    auto const append = [this, &pLast](std::uint32_t nKey) {
        Node& node = NodeOf(nKey);
        if (node.bAmbiguous) {
            pLast = nullptr;
            return;
        }
        m_NodeKeys.push_back(nKey);
        node.m_pRight = pLast;
        if (pLast != nullptr) pLast->m_pLeft = &node;
        pLast = &node;
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
        Node* const pGreater = node.m_pLeft;
        Node* const pLesser = node.m_pRight;
        if (pGreater != nullptr) pGreater->m_pRight = pLesser;
        if (pLesser != nullptr) pLesser->m_pLeft = pGreater;
    }
}

void ForeseenTree::PutBesideNeighbor(std::uint32_t nKey) {
    Node& node = NodeOf(nKey);
    EmptySide const place = FindEmptySide(nKey, node.m_pRight, node.m_pLeft);
    node.m_pLeft = nullptr;
    node.m_pRight = nullptr;
    PutIn(node, place);
}

// At the neighbour whose inner side is empty. Where only one is known, nodes for ambiguous keys may stand
// between, and then the place is below them.
ForeseenTree::EmptySide ForeseenTree::FindEmptySide(std::uint32_t nKey, Node* pLesser, Node* pGreater) {
    if (pLesser != nullptr && (pGreater == nullptr || pLesser->m_pLeft == nullptr)) {
        return Follow(
            {pLesser, &pLesser->m_pLeft}, [](Node & node) -> auto& { return node.m_pRight; });
    }
    if (pGreater != nullptr) {
        return Follow(
            {pGreater, &pGreater->m_pRight}, [](Node & node) -> auto& { return node.m_pLeft; });
    }
    return Follow(
        {&m_Nodes[0], &m_Nodes[0].m_pLeft},
        [ this, nKey ](Node & node) -> auto& { return RankOf(&node) < nKey ? node.m_pLeft : node.m_pRight; });
}

void ForeseenTree::PutIn(Node& node, EmptySide const& place) {
    *place.pSlot = &node;
    node.m_pParent = place.pParent;
    Node* pReached = &node;
    NearPointer<Node>* pRotated = nullptr;
    int nTaller = 0;
    avl::Restore(
        &node, nTaller,
        [this, &pReached]() -> Node* {
            pReached = pReached->m_pParent;
            return pReached == &m_Nodes[0] ? nullptr : pReached;
        },
        [&pRotated](Node* pNode) -> NearPointer<Node>& {
            Node* const pParent = pNode->m_pParent;
            pRotated = pParent->m_pLeft == pNode ? &pParent->m_pLeft : &pParent->m_pRight;
            return *pRotated;
        },
        [](Node*) {});
    if (pRotated == nullptr) return;

    // A rotation has changed the parents of the nodes on top, and of what hangs below them.
    auto const setParentOfSides = [](Node* pParent) {
        if (Node* const pLeft = pParent->m_pLeft) pLeft->m_pParent = pParent;
        if (Node* const pRight = pParent->m_pRight) pRight->m_pParent = pParent;
    };
    Node* const pTop = *pRotated;
    pTop->m_pParent = pReached->m_pParent;
    setParentOfSides(pTop);
    setParentOfSides(pTop->m_pLeft);
    setParentOfSides(pTop->m_pRight);
}

void ForeseenTree::Clear() {
    auto const clear = [](Node& node) {
        node.m_pLeft = nullptr;
        node.m_pRight = nullptr;
        node.m_nBalance = 0;
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
