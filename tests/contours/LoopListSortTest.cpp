#include <limits>

#include "contours/Layer.h"
#include "contours/Paths.h"

namespace {

tagLoopTreeNode* GiveBox(CLayer& layer, double x, double y, int nNumber) {
    tagLoopTreeNode* const p = Give(layer, std::make_unique<tagLoopTreeNode>(0));
    p->m_Box = CBoundBox2D(CPoint2D(x - 1.0, y - 1.0), CPoint2D(x + 1.0, y + 1.0));
    p->m_nUser1 = nNumber;
    return p;
}

std::vector<int> Numbers(CLayer const& layer) {
    std::vector<int> numbers;
    for (tagLoopTreeNode const* const p : LoopsOf(layer.m_LoopList)) numbers.push_back(p->m_nUser1);
    return numbers;
}

std::vector<int> LiterallySorted(CLayer& layer, bool bByX) {
    auto loops = LoopsOf(layer.m_LoopList);
    for (std::size_t i = 0; i < loops.size(); ++i) {
        for (std::size_t k = i + 1; k < loops.size(); ++k) {
            int const nGreater = bByX ? layer.CompareBoxCenterX(loops[i], loops[k])
                                      : layer.CompareBoxCenterY(loops[i], loops[k]);
            if (nGreater != 0) std::swap(loops[i], loops[k]);
        }
    }
    std::vector<int> numbers;
    for (tagLoopTreeNode const* const p : loops) numbers.push_back(p->m_nUser1);
    return numbers;
}

}  // namespace

TEST(CompareBoxCenter, TellsTheGreaterCentreOfCachedBoxes) {
    CLayer layer;
    tagLoopTreeNode* const a = GiveBox(layer, 3, 5, 0);
    tagLoopTreeNode* const b = GiveBox(layer, 4, 2, 1);
    EXPECT_EQ(layer.CompareBoxCenterX(a, b), 0);
    EXPECT_EQ(layer.CompareBoxCenterX(b, a), 1);
    EXPECT_EQ(layer.CompareBoxCenterX(a, a), 0);
    EXPECT_EQ(layer.CompareBoxCenterY(a, b), 1);
    EXPECT_EQ(layer.CompareBoxCenterY(b, a), 0);
}

TEST(SortLoopList, SortsTheListAndLeavesTheTree) {
    CLayer layer;
    GiveBox(layer, 3, 1, 0);
    GiveBox(layer, 1, 2, 1);
    GiveBox(layer, 2, 0, 2);
    layer.BuildLoopList();
    layer.SortLoopListByBoxCenterX();
    EXPECT_EQ(Numbers(layer), (std::vector<int>{1, 2, 0}));
    layer.SortLoopListByBoxCenterY();
    EXPECT_EQ(Numbers(layer), (std::vector<int>{2, 0, 1}));
    layer.BuildLoopList();
    EXPECT_EQ(Numbers(layer), (std::vector<int>{0, 1, 2}));
}

TEST(SortLoopList, TakesTheListAsItStands) {
    CLayer layer;
    GiveBox(layer, 3, 1, 0);
    layer.SortLoopListByBoxCenterX();
    EXPECT_EQ(layer.m_LoopList.GetCount(), 0);
}

TEST(SortLoopList, EqualCentresFallAsAnExchangeSortLetsThem) {
    // 2a 2b 1: the 1 changes places with 2a, which then stands behind 2b.
    CLayer layer;
    GiveBox(layer, 2, 0, 0);
    GiveBox(layer, 2, 0, 1);
    GiveBox(layer, 1, 0, 2);
    layer.BuildLoopList();
    layer.SortLoopListByBoxCenterX();
    EXPECT_EQ(Numbers(layer), (std::vector<int>{2, 1, 0}));
}

TEST(SortLoopList, AgreesWithTheExchangeSortOnRandomLists) {
    Lattice random(31);
    for (int i = 0; i < 2000; ++i) {
        CLayer layer;
        std::uint32_t const nDistinct = 1 + random.Below(i % 2 == 0 ? 5 : 1000);
        int const nLoops = static_cast<int>(random.Below(60));
        for (int n = 0; n < nLoops; ++n) GiveBox(layer, random.Below(nDistinct), random.Below(nDistinct), n);
        layer.BuildLoopList();
        if (nLoops > 0 && random.Below(4) == 0) {
            auto const loops = LoopsOf(layer.m_LoopList);
            auto const n = random.Below(static_cast<std::uint32_t>(nLoops));
            loops[n]->m_Box.m_ptMin.x = std::numeric_limits<double>::quiet_NaN();
        }
        std::vector<int> const byX = LiterallySorted(layer, true);
        layer.SortLoopListByBoxCenterX();
        ASSERT_EQ(Numbers(layer), byX);
        std::vector<int> const byY = LiterallySorted(layer, false);
        layer.SortLoopListByBoxCenterY();
        ASSERT_EQ(Numbers(layer), byY);
    }
}

TEST(SortLoopList, ANullElementStaysWhereItIs) {
    CLayer layer;
    GiveBox(layer, 5, 0, 0);
    GiveBox(layer, 3, 0, 1);
    layer.BuildLoopList();
    layer.m_LoopList.InsertAfter(layer.m_LoopList.GetHeadPosition(), static_cast<void*>(nullptr));
    layer.SortLoopListByBoxCenterX();
    ASSERT_EQ(3, layer.m_LoopList.GetCount());
    EXPECT_EQ(1, static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetHead())->m_nUser1);
    EXPECT_EQ(nullptr, layer.m_LoopList.GetAt(layer.m_LoopList.FindIndex(1)));
    EXPECT_EQ(0, static_cast<tagLoopTreeNode*>(layer.m_LoopList.GetTail())->m_nUser1);
    layer.BuildLoopList();
}
