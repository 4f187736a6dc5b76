#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "foundation/Array.h"

namespace {

void* Element(std::intptr_t n) { return reinterpret_cast<void*>(n); }

// What an array is promised to hold, with the growth rule written out step by step.
struct Model {
    std::vector<void*> elements;
    int nCapacity = 0;
    int nGrowBy = 0;
    bool bStorage = false;

    void SetSize(int nNew, int nStep) {
        if (nStep != -1) nGrowBy = nStep;
        int const nSize = static_cast<int>(elements.size());
        if (nNew == 0) {
            elements.clear();
            nCapacity = 0;
            bStorage = false;
            return;
        }
        if (!bStorage) {
            bStorage = true;
            nCapacity = nNew;
        } else if (nNew > nCapacity) {
            int const nGrowth = nGrowBy != 0 ? nGrowBy : std::clamp(nSize / 8, 4, 1024);
            nCapacity = std::max(nNew, nCapacity + nGrowth);
        }
        elements.resize(static_cast<std::size_t>(nNew), nullptr);
    }
};

template <class Array>
void ExpectSame(Model const& model, Array const& array) {
    ASSERT_EQ(static_cast<int>(model.elements.size()), array.GetSize());
    ASSERT_EQ(array.GetSize() - 1, array.GetUpperBound());
    ASSERT_EQ(model.nCapacity, array.m_nMaxSize);
    ASSERT_EQ(model.nGrowBy, array.m_nGrowBy);
    ASSERT_EQ(model.bStorage, array.GetData() != nullptr);
    for (std::size_t i = 0; i < model.elements.size(); ++i) {
        ASSERT_EQ(model.elements[i], array.GetAt(static_cast<int>(i))) << i;
    }
}

// Lets go of storage that another array owns.
template <class Array>
void Forget(Array& array) {
    array.m_pData = nullptr;
    array.m_nSize = 0;
    array.m_nMaxSize = 0;
}

template <class Array>
class ArrayTest : public testing::Test {};

using Arrays = testing::Types<XR_CArray<void*, void*>, XR_CPtrArray>;
TYPED_TEST_SUITE(ArrayTest, Arrays);

}  // namespace

TYPED_TEST(ArrayTest, NewArrayIsEmptyWithoutStorage) {
    TypeParam const array;
    EXPECT_EQ(nullptr, array.m_pData);
    EXPECT_EQ(0, array.m_nSize);
    EXPECT_EQ(0, array.m_nMaxSize);
    EXPECT_EQ(0, array.m_nGrowBy);
    EXPECT_EQ(-1, array.GetUpperBound());
}

TYPED_TEST(ArrayTest, FirstSizeIsTheCapacityAndGrowthAddsFourAtLeast) {
    TypeParam array;
    array.SetSize(5);
    EXPECT_EQ(5, array.m_nMaxSize);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(nullptr, array[i]);
    array.SetSize(6);
    EXPECT_EQ(9, array.m_nMaxSize);
    EXPECT_EQ(6, array.m_nSize);
}

// An eighth of the size between 32 and 8192: 80 / 8 = 10.
TYPED_TEST(ArrayTest, MediumArraysGrowByAnEighthOfTheirSize) {
    TypeParam array;
    array.SetSize(80);
    array.Add(Element(1));
    EXPECT_EQ(90, array.m_nMaxSize);
}

TYPED_TEST(ArrayTest, LargeArraysGrowByOneThousandAndTwentyFour) {
    TypeParam array;
    array.SetSize(8191);
    array.Add(Element(1));
    EXPECT_EQ(8191 + 1023, array.m_nMaxSize);
    array.SetSize(0);
    array.SetSize(8192);
    array.Add(Element(1));
    EXPECT_EQ(8192 + 1024, array.m_nMaxSize);
    array.SetSize(0);
    array.SetSize(1000000);
    array.Add(Element(7));
    EXPECT_EQ(1001024, array.m_nMaxSize);
    EXPECT_EQ(Element(7), array[1000000]);
}

TYPED_TEST(ArrayTest, GivenStepIsKeptAndUsed) {
    TypeParam array;
    array.SetSize(3, 100);
    EXPECT_EQ(100, array.m_nGrowBy);
    EXPECT_EQ(3, array.m_nMaxSize);
    array.Add(Element(1));
    EXPECT_EQ(103, array.m_nMaxSize);
    array.SetSize(500);
    EXPECT_EQ(500, array.m_nMaxSize);
    array.RemoveAll();
    EXPECT_EQ(100, array.m_nGrowBy);
    array.SetSize(0, 0);
    EXPECT_EQ(0, array.m_nGrowBy);
}

TYPED_TEST(ArrayTest, SizeZeroForgetsTheCapacityAndRemoveAtKeepsIt) {
    TypeParam array;
    array.SetSize(5);
    array.RemoveAt(0, 5);
    EXPECT_EQ(0, array.m_nSize);
    EXPECT_EQ(5, array.m_nMaxSize);
    EXPECT_NE(nullptr, array.m_pData);
    array.SetSize(0);
    EXPECT_EQ(0, array.m_nMaxSize);
    EXPECT_EQ(nullptr, array.m_pData);
}

TYPED_TEST(ArrayTest, ShrinkingKeepsTheStorageAndGrowingAgainClears) {
    TypeParam array;
    array.SetSize(4);
    for (int i = 0; i < 4; ++i) array.SetAt(i, Element(i + 1));
    void* const* const pData = array.GetData();
    array.SetSize(2);
    EXPECT_EQ(pData, array.GetData());
    EXPECT_EQ(4, array.m_nMaxSize);
    array.SetSize(4);
    EXPECT_EQ(Element(2), array[1]);
    EXPECT_EQ(nullptr, array[2]);
    EXPECT_EQ(nullptr, array[3]);
}

TYPED_TEST(ArrayTest, AccessReachesTheSameElements) {
    TypeParam array;
    EXPECT_EQ(0, array.Add(Element(10)));
    EXPECT_EQ(1, array.Add(Element(11)));
    array[0] = Element(20);
    array.ElementAt(1) = Element(21);
    TypeParam const& view = array;
    EXPECT_EQ(Element(20), view[0]);
    EXPECT_EQ(Element(21), view.GetAt(1));
    EXPECT_EQ(view.GetData(), array.GetData());
    array.SetAtGrow(5, Element(25));
    EXPECT_EQ(6, array.GetSize());
    EXPECT_EQ(nullptr, array[2]);
    EXPECT_EQ(Element(25), array[5]);
}

TYPED_TEST(ArrayTest, InsertingBehindTheEndLeavesAGapOfNull) {
    TypeParam array;
    array.Add(Element(1));
    array.InsertAt(3, Element(9), 2);
    ASSERT_EQ(5, array.GetSize());
    EXPECT_EQ(Element(1), array[0]);
    EXPECT_EQ(nullptr, array[1]);
    EXPECT_EQ(nullptr, array[2]);
    EXPECT_EQ(Element(9), array[3]);
    EXPECT_EQ(Element(9), array[4]);
}

TYPED_TEST(ArrayTest, InsertingAnArrayPutsAllItsElementsIn) {
    TypeParam array;
    for (int i = 0; i < 3; ++i) array.Add(Element(i + 1));
    TypeParam other;
    for (int i = 0; i < 2; ++i) other.Add(Element(i + 11));
    array.InsertAt(1, &other);
    ASSERT_EQ(5, array.GetSize());
    std::intptr_t const expected[] = {1, 11, 12, 2, 3};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(Element(expected[i]), array[i]);
    TypeParam empty;
    array.InsertAt(1, &empty);
    EXPECT_EQ(5, array.GetSize());
}

TYPED_TEST(ArrayTest, AnArrayGoesIntoItselfAsItWas) {
    TypeParam array;
    for (int i = 0; i < 4; ++i) array.Add(Element(i + 1));
    array.InsertAt(2, &array);
    ASSERT_EQ(8, array.GetSize());
    std::intptr_t const expected[] = {1, 2, 1, 2, 3, 4, 3, 4};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(Element(expected[i]), array[i]);
}

TYPED_TEST(ArrayTest, FreeExtraCutsTheCapacityToTheSize) {
    TypeParam array;
    array.SetSize(3);
    array.Add(Element(4));
    ASSERT_EQ(7, array.m_nMaxSize);
    array.FreeExtra();
    EXPECT_EQ(4, array.m_nMaxSize);
    EXPECT_EQ(Element(4), array[3]);
    array.RemoveAt(0, 4);
    array.FreeExtra();
    EXPECT_EQ(0, array.m_nMaxSize);
    EXPECT_EQ(nullptr, array.m_pData);
}

TYPED_TEST(ArrayTest, CopiesAndAssignmentShareTheStorage) {
    TypeParam array;
    array.SetSize(3, 7);
    array[1] = Element(5);
    TypeParam copy(array);
    EXPECT_EQ(array.m_pData, copy.m_pData);
    EXPECT_EQ(3, copy.m_nSize);
    EXPECT_EQ(3, copy.m_nMaxSize);
    EXPECT_EQ(7, copy.m_nGrowBy);
    TypeParam assigned;
    assigned = array;
    EXPECT_EQ(array.m_pData, assigned.m_pData);
    EXPECT_EQ(7, assigned.m_nGrowBy);
    array[1] = Element(6);
    EXPECT_EQ(Element(6), assigned[1]);
    Forget(copy);
    Forget(assigned);
}

TYPED_TEST(ArrayTest, AppendReturnsTheFormerSizeAndCopyTakesTheElements) {
    TypeParam array;
    array.Add(Element(1));
    TypeParam other;
    other.Add(Element(2));
    other.Add(Element(3));
    EXPECT_EQ(1, array.Append(other));
    ASSERT_EQ(3, array.GetSize());
    EXPECT_EQ(Element(3), array[2]);
    other.SetAt(0, Element(9));
    array.Copy(other);
    ASSERT_EQ(2, array.GetSize());
    EXPECT_EQ(5, array.m_nMaxSize);  // 1 + a step of 4 when it was appended to
    EXPECT_EQ(Element(9), array[0]);
    EXPECT_NE(other.m_pData, array.m_pData);
}

TYPED_TEST(ArrayTest, RandomWalkAgreesWithTheGrowthRule) {
    std::mt19937 random(5);
    auto const below = [&random](int n) {
        return static_cast<int>(random() % static_cast<unsigned>(std::max(n, 1)));
    };
    for (int nRound = 0; nRound < 30; ++nRound) {
        TypeParam array;
        Model model;
        std::intptr_t nNext = 1;
        auto& v = model.elements;
        for (int nStep = 0; nStep < 300; ++nStep) {
            int const nSize = static_cast<int>(v.size());
            switch (below(10)) {
                case 0: {
                    int const nNew = below(4) == 0 ? below(3000) : below(40);
                    int const nGrowBy = below(6) == 0 ? below(20) : -1;
                    array.SetSize(nNew, nGrowBy);
                    model.SetSize(nNew, nGrowBy);
                    break;
                }
                case 1: {
                    int const nIndex = below(nSize + 5);
                    array.SetAtGrow(nIndex, Element(nNext));
                    if (nIndex >= nSize) model.SetSize(nIndex + 1, -1);
                    v[static_cast<std::size_t>(nIndex)] = Element(nNext++);
                    break;
                }
                case 2: {
                    TypeParam other;
                    other.SetSize(below(20));
                    for (int i = 0; i < other.GetSize(); ++i) other[i] = Element(nNext++);
                    ASSERT_EQ(nSize, array.Append(other));
                    model.SetSize(nSize + other.GetSize(), -1);
                    std::copy_n(other.GetData(), other.GetSize(), v.begin() + nSize);
                    break;
                }
                case 3: {
                    array.FreeExtra();
                    model.nCapacity = nSize;
                    if (nSize == 0) model.bStorage = false;
                    break;
                }
                case 4: {
                    int const nIndex = below(nSize + 3);
                    int const nCount = 1 + below(4);
                    array.InsertAt(nIndex, Element(nNext), nCount);
                    std::vector<void*> const tail(v.begin() + std::min(nIndex, nSize), v.end());
                    model.SetSize(std::max(nIndex, nSize) + nCount, -1);
                    std::fill_n(v.begin() + nIndex, nCount, Element(nNext++));
                    std::copy(tail.begin(), tail.end(), v.begin() + nIndex + nCount);
                    break;
                }
                case 5: {
                    if (nSize == 0) break;
                    int const nIndex = below(nSize);
                    int const nCount = 1 + below(nSize - nIndex);
                    array.RemoveAt(nIndex, nCount);
                    v.erase(v.begin() + nIndex, v.begin() + nIndex + nCount);
                    break;
                }
                case 6: {
                    if (below(10) != 0) break;
                    array.RemoveAll();
                    model.SetSize(0, -1);
                    break;
                }
                default: {
                    ASSERT_EQ(nSize, array.Add(Element(nNext)));
                    model.SetSize(nSize + 1, -1);
                    v.back() = Element(nNext++);
                }
            }
            ASSERT_NO_FATAL_FAILURE(ExpectSame(model, array));
        }
    }
}

// One element at a time over the whole range of the rule.
TYPED_TEST(ArrayTest, CapacityFollowsTheRuleThroughALongRunOfAdds) {
    TypeParam array;
    int nCapacity = 0;
    for (int i = 0; i < 60000; ++i) {
        if (i == 0) {
            nCapacity = 1;
        } else if (i == nCapacity) {
            nCapacity += std::clamp(i / 8, 4, 1024);
        }
        array.Add(Element(i + 1));
        ASSERT_EQ(nCapacity, array.m_nMaxSize);
    }
    for (int i = 0; i < 60000; ++i) ASSERT_EQ(Element(i + 1), array[i]);
}

// Up to 8192 elements the storage is what the capacity says; above, the next power of two.
TYPED_TEST(ArrayTest, StorageHoldsTheCapacityAtEverySize) {
    for (auto const& [nCapacity, nStorage] : std::vector<std::pair<int, int>>{{1, 1},
                                                                              {8191, 8191},
                                                                              {8192, 8192},
                                                                              {8193, 16384},
                                                                              {16384, 16384},
                                                                              {16385, 32768},
                                                                              {2147483647, -1}}) {
        std::int64_t const nExpected = nStorage > 0 ? nStorage : std::int64_t{1} << 31;
        EXPECT_EQ(nExpected, TypeParam::StorageFor(nCapacity)) << nCapacity;
    }
    TypeParam array;
    std::vector<int> const sizes = {1,     8192, 8193,  8192, 16384, 16385, 40000, 16384,
                                    16383, 3,    70000, 8193, 8192,  8191,  1};
    for (int const nSize : sizes) {
        array.SetSize(nSize);
        array.m_pData[0] = Element(5);
        array.m_pData[nSize - 1] = Element(nSize);
        array.FreeExtra();
        EXPECT_EQ(nSize, array.m_nMaxSize);
        EXPECT_EQ(Element(nSize), array[nSize - 1]);
#if defined(__GLIBC__)
        EXPECT_GE(::malloc_usable_size(array.m_pData),
                  static_cast<std::size_t>(TypeParam::StorageFor(nSize)) * sizeof(void*))
            << nSize;
#endif
    }
}

// From 8193 elements on, seven steps of 1024 stay below 16384: nothing has to move.
TYPED_TEST(ArrayTest, ElementsStayWhereTheyAreWhileTheStorageHoldsThem) {
    TypeParam array;
    array.SetSize(8193);
    void* const* const pData = array.m_pData;
    // Something behind it, so that a larger block would have to be elsewhere.
    std::vector<std::vector<char>> others;
    while (array.GetSize() < 15361) {
        if (array.GetSize() % 512 == 0) others.emplace_back(100000);
        array.Add(Element(1));
        ASSERT_EQ(pData, array.m_pData) << array.GetSize();
    }
}
