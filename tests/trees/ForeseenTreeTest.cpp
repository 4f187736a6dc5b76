#include "trees/ForeseenTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <numeric>
#include <random>
#include <vector>

#include "trees/Avl.h"

using namespace varnet;

namespace {

// A tree of numbers as they come, by comparing. Ambiguous numbers meet their like.
class PlainTree {
public:
    struct Node {
        Node* m_pLeft = nullptr;
        Node* m_pRight = nullptr;
        int m_nBalance = 0;
        std::uint32_t nRank = 0;
    };

    Node* Insert(std::uint32_t nRank) {
        int nTaller = 0;
        return avl::Insert(
            m_pRoot, nTaller,
            [nRank](Node const* p) { return p->nRank == nRank  ? 0
                                            : p->nRank < nRank ? -1
                                                               : 1; },
            [this, nRank] {
                m_Nodes.push_back({nullptr, nullptr, 0, nRank});
                return &m_Nodes.back();
            });
    }

    Node* m_pRoot = nullptr;
    std::deque<Node> m_Nodes;
};

// Inserts the keys into both trees and compares their shapes.
class BothTrees {
public:
    explicit BothTrees(std::size_t nKeys) : m_Tree(nKeys) {}

    void Insert(std::vector<std::uint32_t> const& keys) {
        PlainTree plain;
        m_Ranks.clear();
        for (std::uint32_t const nKey : keys) m_Tree.Announce(nKey);
        m_Tree.Prepare();
        for (std::uint32_t const nKey : m_Tree.Announced()) {
            auto const compare = [this, nKey](std::uint32_t nMet) {
                std::uint32_t const nRank = m_Ranks.at(nMet);
                return nRank == nKey ? 0 : nRank < nKey ? -1 : 1;
            };
            m_Ranks.emplace(m_Tree.Insert(nKey, compare), nKey);
            plain.Insert(nKey);
        }
        EXPECT_EQ(plain.m_Nodes.size(), m_Tree.Nodes().size());
        ExpectSame(plain.m_pRoot, m_Tree.Root());
        m_Tree.Clear();
    }

    ForeseenTree m_Tree;

private:
    void ExpectSame(PlainTree::Node const* pNode, std::uint32_t nKey) {
        ASSERT_EQ(pNode == nullptr, nKey == ForeseenTree::kNone);
        if (pNode == nullptr) return;
        ASSERT_EQ(pNode->nRank, m_Ranks.at(nKey));
        ASSERT_EQ(pNode->m_nBalance, m_Tree.Balance(nKey));
        ASSERT_NO_FATAL_FAILURE(ExpectSame(pNode->m_pLeft, m_Tree.Left(nKey)));
        ExpectSame(pNode->m_pRight, m_Tree.Right(nKey));
    }

    std::map<std::uint32_t, std::uint32_t> m_Ranks;  // of nodes, by their keys
};

std::vector<std::uint32_t> Shuffled(std::size_t nKeys, unsigned nSeed) {
    std::vector<std::uint32_t> keys(nKeys);
    std::iota(keys.begin(), keys.end(), 0u);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(nSeed));
    return keys;
}

}  // namespace

// 0, 1, 2 from the least: 1 comes to the top, with the greater key on the left.
TEST(ForeseenTree, RisingKeysRotate) {
    ForeseenTree tree(3);
    for (std::uint32_t const nKey : {0u, 1u, 2u}) tree.Announce(nKey);
    tree.Prepare();
    for (std::uint32_t const nKey : {0u, 1u, 2u}) {
        EXPECT_EQ(nKey, tree.Insert(nKey, [](std::uint32_t) { return 0; }));
    }
    EXPECT_EQ(1u, tree.Root());
    EXPECT_EQ(2u, tree.Left(1));
    EXPECT_EQ(0u, tree.Right(1));
    EXPECT_EQ(ForeseenTree::kNone, tree.Left(2));
    EXPECT_EQ(0, tree.Balance(1));
}

TEST(ForeseenTree, WithoutKeysIsEmpty) {
    ForeseenTree tree(0);
    tree.Prepare();
    EXPECT_EQ(ForeseenTree::kNone, tree.Root());
    EXPECT_TRUE(tree.Announced().empty());
    EXPECT_TRUE(tree.Nodes().empty());
}

TEST(ForeseenTree, KeysThatAreAnnouncedAgainAreInsertedOnce) {
    ForeseenTree tree(9);
    for (std::uint32_t const nKey : {5u, 2u, 5u, 7u, 2u}) tree.Announce(nKey);
    tree.Prepare();
    EXPECT_EQ(std::vector<std::uint32_t>({5, 2, 7}), tree.Announced());
    EXPECT_EQ(std::vector<std::uint32_t>({2, 5, 7}), tree.Nodes());
}

TEST(ForeseenTree, AmbiguousKeysAreInsertedAsOftenAsAnnounced) {
    ForeseenTree tree(9);
    tree.SetAmbiguous(5);
    for (std::uint32_t const nKey : {5u, 2u, 5u}) tree.Announce(nKey);
    EXPECT_EQ(std::vector<std::uint32_t>({5, 2, 5}), tree.Announced());
    EXPECT_EQ(11u, tree.NodeCount());
    tree.Prepare();
    EXPECT_EQ(9u, tree.Insert(5, [](std::uint32_t) { return 0; }));
    EXPECT_EQ(2u, tree.Insert(2, [](std::uint32_t) { return 0; }));
    EXPECT_EQ(9u, tree.Insert(5, [](std::uint32_t nMet) { return nMet == 9 ? 0 : -1; }));
    EXPECT_EQ(9u, tree.Root());
    EXPECT_EQ(2u, tree.Right(9));
}

TEST(ForeseenTree, AfterClearingNoAmbiguousKeyIsAnnounced) {
    ForeseenTree tree(9);
    tree.SetAmbiguous(5);
    for (std::uint32_t const nKey : {5u, 2u, 5u}) tree.Announce(nKey);
    EXPECT_EQ(2u, tree.AmbiguousCount());
    tree.Clear();
    EXPECT_EQ(0u, tree.AmbiguousCount());
    EXPECT_EQ(9u, tree.NodeCount());
    tree.Announce(5);
    EXPECT_EQ(1u, tree.AmbiguousCount());
}

TEST(ForeseenTree, HasTheShapeOfATreeFilledByComparing) {
    for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
        SCOPED_TRACE(nSeed);
        BothTrees trees(nSeed * 3);
        trees.Insert(Shuffled(nSeed * 3, nSeed));
    }
}

// Few of many are sorted instead of looked for; the tree is used again.
TEST(ForeseenTree, HasThatShapeForSomeOfManyKeysAgainAndAgain) {
    BothTrees trees(1000);
    for (unsigned nSeed = 0; nSeed < 100; ++nSeed) {
        SCOPED_TRACE(nSeed);
        std::vector<std::uint32_t> keys = Shuffled(1000, nSeed);
        keys.resize(nSeed * 3);
        trees.Insert(keys);
    }
}

TEST(ForeseenTree, HasThatShapeWhereSomeOrAllKeysAreAmbiguous) {
    for (unsigned nSeed = 0; nSeed < 200; ++nSeed) {
        SCOPED_TRACE(nSeed);
        std::mt19937 random(nSeed);
        BothTrees trees(120);
        for (std::uint32_t nKey = 0; nKey < 120; ++nKey) {
            if (random() % (nSeed % 10 + 1) == 0) trees.m_Tree.SetAmbiguous(nKey);
        }
        for (int n = 0; n < 3; ++n) {
            std::vector<std::uint32_t> keys = Shuffled(120, static_cast<unsigned>(random()));
            keys.resize(random() % 121);
            std::vector<std::uint32_t> const again = keys;
            for (std::uint32_t const nKey : again) {
                if (random() % 2 == 0) keys.push_back(nKey);
            }
            trees.Insert(keys);
        }
    }
}

TEST(ForeseenTreeDeathTest, CallsInAnotherOrderAreNoticed) {
    if (!kRequirementsChecked) GTEST_SKIP() << "a release checks no requirements";
    auto const insert = [](ForeseenTree& tree, std::uint32_t nKey) {
        tree.Insert(nKey, [](std::uint32_t) { return 0; });
    };
    ForeseenTree tree(3);
    tree.Announce(1);
    tree.Announce(0);
    EXPECT_DEATH(insert(tree, 1), "m_bPrepared");
    EXPECT_DEATH(tree.Announce(3), "nKey < m_nKeys");
    EXPECT_DEATH(tree.SetAmbiguous(2), "m_Announced");
    tree.Prepare();
    EXPECT_DEATH(insert(tree, 0), "m_nInserted");
    EXPECT_DEATH(tree.Announce(2), "m_bPrepared");
}
