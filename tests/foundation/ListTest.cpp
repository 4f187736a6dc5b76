#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <random>
#include <utility>
#include <vector>

#include "foundation/List.h"
#include "foundation/Point.h"

namespace {

using IntList = XR_CList<int, int>;

// An element that tells how many of it are alive.
struct Counted {
    static inline int s_nAlive = 0;
    explicit Counted(int n = 0) : nValue(n) { ++s_nAlive; }
    Counted(Counted const& other) : nValue(other.nValue) { ++s_nAlive; }
    Counted& operator=(Counted const&) = default;
    ~Counted() { --s_nAlive; }
    int nValue;
};

template <class List>
int Blocks(List const& list) {
    int nBlocks = 0;
    for (void* p = list.m_pBlocks; p != nullptr; p = *static_cast<void**>(p)) ++nBlocks;
    return nBlocks;
}

template <class List>
int FreeNodes(List const& list) {
    int nNodes = 0;
    for (auto* p = list.m_pNodeFree; p != nullptr; p = p->pNext) ++nNodes;
    return nNodes;
}

std::vector<int> Forward(IntList const& list) {
    std::vector<int> elements;
    XR__POSITION* position = list.GetHeadPosition();
    while (position != nullptr) elements.push_back(list.GetNext(position));
    return elements;
}

std::vector<int> Backward(IntList const& list) {
    std::vector<int> elements;
    XR__POSITION* position = list.GetTailPosition();
    while (position != nullptr) elements.push_back(list.GetPrev(position));
    return elements;
}

void Fill(IntList& list, int nFirst, int nLast) {
    for (int i = nFirst; i <= nLast; ++i) list.AddTail(i);
}

// Lets go of nodes that another list owns.
template <class List>
void Forget(List& list) {
    list.m_pNodeHead = list.m_pNodeTail = list.m_pNodeFree = nullptr;
    list.m_pBlocks = nullptr;
    list.m_nCount = 0;
}

}  // namespace

TEST(List, NewListIsEmptyWithABlockSizeOfTen) {
    IntList const list;
    EXPECT_EQ(nullptr, list.m_pNodeHead);
    EXPECT_EQ(nullptr, list.m_pNodeTail);
    EXPECT_EQ(0, list.m_nCount);
    EXPECT_EQ(nullptr, list.m_pNodeFree);
    EXPECT_EQ(nullptr, list.m_pBlocks);
    EXPECT_EQ(10, list.m_nBlockSize);
    EXPECT_EQ(1, list.IsEmpty());
    EXPECT_EQ(3, IntList(3).m_nBlockSize);
}

// All nodes of a block stand in one allocation, behind the link to the next block.
TEST(List, TenElementsTakeOneAllocationAndTheEleventhASecond) {
    IntList list(10);
    for (int i = 0; i < 10; ++i) {
        list.AddTail(i);
        EXPECT_EQ(1, Blocks(list));
        EXPECT_EQ(9 - i, FreeNodes(list));
    }
    EXPECT_EQ(nullptr, list.m_pNodeFree);
    void* const pFirstBlock = list.m_pBlocks;
    list.AddTail(10);
    EXPECT_EQ(2, Blocks(list));
    EXPECT_EQ(pFirstBlock, *static_cast<void**>(list.m_pBlocks));
    EXPECT_EQ(9, FreeNodes(list));
}

TEST(List, NodesOfABlockAreHandedOutFromTheFirstAndFreedOnesFirst) {
    IntList list;
    Fill(list, 0, 4);
    auto const* pNode = list.m_pNodeHead;
    EXPECT_EQ(static_cast<char*>(list.m_pBlocks) + sizeof(void*), reinterpret_cast<char const*>(pNode));
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(pNode + 1, pNode->pNext);
        pNode = pNode->pNext;
    }
    XR__POSITION* const second = list.FindIndex(1);
    list.RemoveAt(second);
    EXPECT_EQ(second, list.AddTail(9));
}

TEST(List, RemovingTheOnlyElementGivesAllBlocksBack) {
    IntList list;
    list.AddTail(7);
    EXPECT_EQ(7, list.RemoveHead());
    EXPECT_EQ(nullptr, list.m_pBlocks);
    EXPECT_EQ(nullptr, list.m_pNodeFree);
    EXPECT_EQ(nullptr, list.m_pNodeHead);
    EXPECT_EQ(nullptr, list.m_pNodeTail);
    list.AddTail(8);
    EXPECT_EQ(1, Blocks(list));
    EXPECT_EQ(8, list.RemoveTail());
    EXPECT_EQ(nullptr, list.m_pBlocks);
    list.RemoveAt(list.AddHead(1));
    EXPECT_EQ(nullptr, list.m_pBlocks);
}

TEST(List, InsertingAtANullPositionActsAtTheEnds) {
    IntList list;
    XR__POSITION* const only = list.InsertBefore(nullptr, 5);
    EXPECT_EQ(only, list.GetHeadPosition());
    EXPECT_EQ(only, list.GetTailPosition());
    list.InsertBefore(nullptr, 4);
    list.InsertAfter(nullptr, 6);
    EXPECT_EQ((std::vector<int>{4, 5, 6}), Forward(list));
    list.InsertBefore(only, 45);
    list.InsertAfter(only, 56);
    EXPECT_EQ((std::vector<int>{4, 45, 5, 56, 6}), Forward(list));
    EXPECT_EQ((std::vector<int>{6, 56, 5, 45, 4}), Backward(list));
}

TEST(List, FindIndexOutsideTheListGivesNull) {
    IntList list;
    EXPECT_EQ(nullptr, list.FindIndex(0));
    Fill(list, 0, 2);
    EXPECT_EQ(nullptr, list.FindIndex(3));
    EXPECT_EQ(nullptr, list.FindIndex(-1));
    EXPECT_EQ(list.GetHeadPosition(), list.FindIndex(0));
    EXPECT_EQ(list.GetTailPosition(), list.FindIndex(2));
    EXPECT_EQ(1, list.GetAt(list.FindIndex(1)));
}

TEST(List, AddingAListKeepsItsOrderAtEitherEnd) {
    IntList list;
    Fill(list, 4, 5);
    IntList front;
    Fill(front, 1, 3);
    IntList back;
    Fill(back, 6, 7);
    list.AddHead(&front);
    list.AddTail(&back);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7}), Forward(list));
    EXPECT_EQ(3, front.GetCount());
    EXPECT_EQ(2, back.GetCount());
}

TEST(List, AccessByReferenceChangesTheElement) {
    IntList list;
    Fill(list, 1, 3);
    list.GetHead() = 10;
    list.GetTail() = 30;
    list.GetAt(list.FindIndex(1)) = 20;
    EXPECT_EQ((std::vector<int>{10, 20, 30}), Forward(list));
    list.SetAt(list.FindIndex(1), 21);
    XR__POSITION* position = list.GetHeadPosition();
    list.GetNext(position) = 11;
    EXPECT_EQ(list.FindIndex(1), position);
    list.GetPrev(position) = 22;
    EXPECT_EQ(list.GetHeadPosition(), position);
    IntList const& view = list;
    EXPECT_EQ(11, view.GetHead());
    EXPECT_EQ(22, view.GetAt(view.FindIndex(1)));
    EXPECT_EQ(30, view.GetTail());
    EXPECT_TRUE((std::is_same_v<decltype(view.GetHead()), int>));
    EXPECT_TRUE((std::is_same_v<decltype(list.GetHead()), int&>));
    EXPECT_TRUE((std::is_same_v<decltype(view.GetNext(position)), int>));
    EXPECT_TRUE((std::is_same_v<decltype(list.GetPrev(position)), int&>));
}

TEST(List, CopiesShareNodesAndBlocks) {
    IntList list(3);
    Fill(list, 1, 4);
    IntList copy(list);
    IntList assigned;
    assigned = list;
    for (IntList* const pShared : {&copy, &assigned}) {
        EXPECT_EQ(list.m_pNodeHead, pShared->m_pNodeHead);
        EXPECT_EQ(list.m_pNodeTail, pShared->m_pNodeTail);
        EXPECT_EQ(list.m_nCount, pShared->m_nCount);
        EXPECT_EQ(list.m_pNodeFree, pShared->m_pNodeFree);
        EXPECT_EQ(list.m_pBlocks, pShared->m_pBlocks);
        EXPECT_EQ(3, pShared->m_nBlockSize);
        Forget(*pShared);
    }
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), Forward(list));
}

TEST(List, ElementsAreDestroyedWhenTheyLeave) {
    ASSERT_EQ(0, Counted::s_nAlive);
    {
        XR_CList<Counted, Counted&> list;
        {
            Counted element(3);
            for (int i = 0; i < 25; ++i) list.AddTail(element);
        }
        EXPECT_EQ(25, Counted::s_nAlive);
        list.RemoveAt(list.FindIndex(7));
        EXPECT_EQ(24, Counted::s_nAlive);
        EXPECT_EQ(3, list.RemoveHead().nValue);
        EXPECT_EQ(3, list.RemoveTail().nValue);
        EXPECT_EQ(22, Counted::s_nAlive);
        list.RemoveAll();
        EXPECT_EQ(0, Counted::s_nAlive);
        EXPECT_EQ(nullptr, list.m_pBlocks);
        Counted element(4);
        list.AddHead(element);
    }
    EXPECT_EQ(0, Counted::s_nAlive);
}

TEST(List, PointsKeepTheirAttributes) {
    XR_CList<CPoint2D, CPoint2D&> list;
    CPoint2D p(1.0, 2.0);
    p.m_fAttr2 = 5.0f;
    list.AddTail(p);
    p.x = 9.0;
    EXPECT_EQ(1.0, list.GetHead().x);
    EXPECT_EQ(5.0f, list.RemoveTail().m_fAttr2);
}

TEST(List, RandomWalkAgreesWithAPlainListAndTheBlockRule) {
    std::mt19937 random(9);
    auto const below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int nRound = 0; nRound < 60; ++nRound) {
        int const nBlockSize = 1 + below(12);
        IntList list(nBlockSize);
        std::list<int> model;
        int nNodes = 0;  // in blocks
        for (int nStep = 0; nStep < 300; ++nStep) {
            int const nCount = static_cast<int>(model.size());
            bool const bAdd = below(2) == 0 || nCount == 0;
            int const nAt = nCount > 0 ? below(nCount) : 0;
            auto const at = std::next(model.begin(), nAt);
            XR__POSITION* const position = list.FindIndex(nAt);
            if (bAdd) {
                switch (below(4)) {
                    case 0:
                        list.AddHead(nStep);
                        model.push_front(nStep);
                        break;
                    case 1:
                        list.InsertBefore(position, nStep);
                        model.insert(at, nStep);
                        break;
                    case 2:
                        list.InsertAfter(position, nStep);
                        model.insert(at == model.end() ? at : std::next(at), nStep);
                        break;
                    default:
                        list.AddTail(nStep);
                        model.push_back(nStep);
                }
                if (nCount == nNodes) nNodes += nBlockSize;
            } else {
                switch (below(3)) {
                    case 0:
                        ASSERT_EQ(model.front(), list.RemoveHead());
                        model.pop_front();
                        break;
                    case 1:
                        ASSERT_EQ(model.back(), list.RemoveTail());
                        model.pop_back();
                        break;
                    default:
                        list.RemoveAt(position);
                        model.erase(at);
                }
                if (model.empty()) nNodes = 0;
            }
            ASSERT_EQ(std::vector<int>(model.begin(), model.end()), Forward(list));
            ASSERT_EQ(std::vector<int>(model.rbegin(), model.rend()), Backward(list));
            ASSERT_EQ(static_cast<int>(model.size()), list.GetCount());
            ASSERT_EQ(model.empty() ? 1 : 0, list.IsEmpty());
            ASSERT_EQ(nNodes / nBlockSize, Blocks(list));
            ASSERT_EQ(nNodes - list.GetCount(), FreeNodes(list));
        }
    }
}
