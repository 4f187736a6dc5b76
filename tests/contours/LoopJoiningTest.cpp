#include "contours/LoopTreeNode.h"
#include "contours/Paths.h"

TEST(InsertLoopAtTail, AppendsAndFlagsInBothPaths) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}});
    LoopPtr const pOther = OpenPath({{2, 0}, {3, 0}});
    pLoop->InsertLoopAtTail(pOther.get(), 8);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetAt(pLoop->m_pPointList->FindIndex(1))), 1u);
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetAt(pLoop->m_pPointList->FindIndex(2))), 8u);
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetTail()), 9u) << "bits are added to those that are there";
    EXPECT_EQ(Bits(pOther->m_pPointList->GetHead()), 8u);
    EXPECT_EQ(Bits(pOther->m_pPointList->GetTail()), 9u);
    EXPECT_EQ(pOther->m_pPointList->GetCount(), 2);
}

TEST(InsertLoopAtTail, APointThatDoublesTheTailIsPassedOverWithoutAFlag) {
    LoopPtr const pLoop = OpenPath({{0, 0}, {1, 0}});
    LoopPtr const pOther = OpenPath({{1.00005, 0}, {2, 0}, {2, 0.00005}, {3, 0}});
    pLoop->InsertLoopAtTail(pOther.get(), POINT_INSERTED << 4);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{0, 0}, {1, 0}, {2, 0}, {3, 0}}));
    EXPECT_EQ(Bits(pOther->m_pPointList->GetAt(pOther->m_pPointList->FindIndex(0))), 0u);
    EXPECT_EQ(Bits(pOther->m_pPointList->GetAt(pOther->m_pPointList->FindIndex(1))), 1u | 32u);
    EXPECT_EQ(Bits(pOther->m_pPointList->GetAt(pOther->m_pPointList->FindIndex(2))), 2u);
}

TEST(InsertLoopAtHead, PutsTheStretchInFrontInItsOrder) {
    LoopPtr const pLoop = OpenPath({{3, 0}, {4, 0}});
    LoopPtr const pOther = OpenPath({{1, 0}, {2, 0}, {3, 0}});
    pLoop->InsertLoopAtHead(pOther.get(), 4);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{1, 0}, {2, 0}, {3, 0}, {4, 0}}));
    EXPECT_EQ(Bits(pLoop->m_pPointList->GetHead()), 4u);
    EXPECT_EQ(Bits(pOther->m_pPointList->GetTail()), 2u);
    ExpectSound(*pLoop->m_pPointList);
}

TEST(InsertLoopAtHead, FlagsAreBitsWhateverNumberTheyMake) {
    // The bytes of a signalling NaN, and of minus zero, come through as they are.
    for (std::uint32_t const nBits : {0x7F800001u, 0x80000000u, 0xFFFFFFFCu}) {
        LoopPtr const pLoop = OpenPath({{3, 0}});
        LoopPtr const pOther = OpenPath({{1, 0}});
        pOther->m_pPointList->GetHead().m_fAttr2 = std::bit_cast<float>(nBits);
        pLoop->InsertLoopAtHead(pOther.get(), POINT_INSERTED);
        EXPECT_EQ(Bits(pLoop->m_pPointList->GetHead()), nBits | 2u);
    }
}

TEST(InsertLoopAtHead, EmptyPathsOnEitherSideAreFine) {
    LoopPtr const pLoop = OpenPath({});
    LoopPtr const pOther = OpenPath({{1, 0}, {1, 0}, {2, 0}});
    tagLoopTreeNode none;
    pLoop->InsertLoopAtHead(&none, 1);
    pLoop->InsertLoopAtTail(&none, 1);
    EXPECT_EQ(pLoop->m_pPointList->GetCount(), 0);
    pLoop->InsertLoopAtHead(pOther.get(), 1);
    EXPECT_EQ(PlacesOf(*pLoop), (Places{{1, 0}, {2, 0}})) << "a doubled point stands once";
    none.InsertLoopAtTail(pOther.get(), 1);
    EXPECT_EQ(PlacesOf(none), (Places{{1, 0}, {2, 0}}));
}
