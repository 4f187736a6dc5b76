#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "trees/LiteralVertexTree.h"
#include "trees/PointSoup.h"
#include "trees/VertexTree.h"

// The tree against the definition's own recursion, node for node and bit for bit.

namespace {

class TwinTrees {
public:
    void Add(CPoint3D const& point) {
        CPoint3D expected(point);
        CPoint3D offered(point);
        LiteralVertexTree::Node const* const pExpected = m_Literal.AddNode(expected);
        tagVertexNode const* const pNode = m_Tree.AddNode(offered);
        ASSERT_EQ(pExpected->nIndex, pNode->m_nIndex);
        ASSERT_TRUE(SameBits(pExpected->point, *pNode));
        ASSERT_TRUE(SameBits(expected, offered));
    }

    void ExpectSame() {
        ASSERT_EQ(m_Literal.m_nCount, m_Tree.m_nCount);
        ASSERT_TRUE(SameShape(m_Literal.m_pRoot, m_Tree.m_pRoot));
        ASSERT_TRUE(SameBox(m_Literal.m_Box, m_Tree.m_BoundBox));
    }

    void Transform(double (*const pMatrix)[4]) {
        m_Literal.Transform(pMatrix);
        m_Tree.Transform(pMatrix);
    }
    void ExchangeXYZ(int nMode) {
        m_Literal.ExchangeXYZ(nMode);
        m_Tree.ExchangeXYZ(nMode);
    }
    void ReBuild() {
        m_Literal.ReBuild();
        m_Tree.ReBuildTree();
    }

private:
    LiteralVertexTree m_Literal;
    CVertexTree m_Tree;
};

class VertexTreeTwin : public testing::TestWithParam<int> {
protected:
    PointSoup Soup(int nSeed) {
        return PointSoup(static_cast<unsigned>(nSeed), static_cast<PointSoup::Kind>(GetParam()));
    }
};

// A scale, some shear and a shift; small scales bring vertices together.
void RandomMatrix(PointSoup& soup, double (&matrix)[4][4]) {
    static constexpr double kScales[] = {1.0, -1.0, 0.5, 1e-3, 1e-4, 1e-5, 0.0, 2.0};
    for (auto& row : matrix) {
        for (double& d : row) d = soup.Below(4) == 0 ? (soup.Below(201) - 100.0) * 0.01 : 0.0;
    }
    for (int i = 0; i < 3; ++i) matrix[i][i] = kScales[soup.Below(8)];
}

}  // namespace

TEST_P(VertexTreeTwin, InsertionsGiveTheSameTree) {
    for (int nSeed = 0; nSeed < 40; ++nSeed) {
        PointSoup soup = Soup(nSeed);
        TwinTrees twins;
        for (int n = 0; n < 400; ++n) {
            ASSERT_NO_FATAL_FAILURE(twins.Add(soup.Next()));
            if (n < 40 || n % 50 == 0) {
                ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
            }
        }
        ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
    }
}

TEST_P(VertexTreeTwin, RebuildsGiveTheSameTree) {
    for (int nSeed = 100; nSeed < 130; ++nSeed) {
        PointSoup soup = Soup(nSeed);
        TwinTrees twins;
        for (int nRound = 0; nRound < 8; ++nRound) {
            for (int n = 0; n < 60; ++n) ASSERT_NO_FATAL_FAILURE(twins.Add(soup.Next()));
            switch (soup.Below(3)) {
                case 0:
                    twins.ReBuild();
                    break;
                case 1:
                    twins.ExchangeXYZ(static_cast<int>(soup.Below(5)));
                    break;
                default: {
                    double matrix[4][4];
                    RandomMatrix(soup, matrix);
                    twins.Transform(matrix);
                }
            }
            ASSERT_NO_FATAL_FAILURE(twins.ExpectSame());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllSoups, VertexTreeTwin, testing::Range(0, static_cast<int>(PointSoup::kKinds)));

namespace {

// The depth of a subtree; checks every balance on the way.
int CheckedDepth(tagVertexNode const* pNode) {
    if (pNode == nullptr) return 0;
    int const nLeft = CheckedDepth(pNode->m_pLeft);
    int const nRight = CheckedDepth(pNode->m_pRight);
    EXPECT_EQ(nLeft - nRight, pNode->m_nBalance);
    EXPECT_LE(std::abs(nLeft - nRight), 1);
    return 1 + std::max(nLeft, nRight);
}

}  // namespace

TEST(VertexTree, StaysBalancedOverSortedAndRandomInput) {
    for (bool const bSorted : {true, false}) {
        CVertexTree tree;
        PointSoup soup(7, PointSoup::kAnywhere);
        for (int n = 0; n < 20000; ++n) {
            CPoint3D point = bSorted ? CPoint3D(0.0, 0.0, n) : soup.Next();
            tree.AddNode(point);
        }
        EXPECT_LE(CheckedDepth(tree.m_pRoot), 21);  // 1.44 * log2(20002)
    }
}
