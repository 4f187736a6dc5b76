#include "trees/FacetList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

using namespace varnet;

namespace {

// Addresses that are only compared.
CFacet* FacetNumber(std::uintptr_t n) { return reinterpret_cast<CFacet*>(64 * (n + 1)); }

struct Release {
    void operator()(tagVertexNode* pVertex) const {
        facet_list::Free(*pVertex);
        delete pVertex;
    }
};

using OwnedVertex = std::unique_ptr<tagVertexNode, Release>;

}  // namespace

TEST(FacetList, HoldsAllFacetsInOrderAtEveryLength) {
    for (std::uintptr_t nFacets = 0; nFacets <= 130; ++nFacets) {
        OwnedVertex const pVertex(new tagVertexNode(CPoint3D(1.0, 2.0, 3.0)));
        for (std::uintptr_t n = 0; n < nFacets; ++n) facet_list::Add(*pVertex, FacetNumber(n));
        ASSERT_EQ(static_cast<int>(nFacets), pVertex->m_nFacetNum);
        for (std::uintptr_t n = 0; n < nFacets; ++n) ASSERT_EQ(FacetNumber(n), pVertex->m_ppFacet[n]);
        EXPECT_EQ(3.0, pVertex->z);
    }
}

// Seven fit into the annex; the eighth takes the list to the heap.
TEST(FacetList, IsTheVertexsOwnUpToSevenFacets) {
    OwnedVertex const pVertex(new tagVertexNode);
    for (std::uintptr_t n = 0; n < 7; ++n) {
        facet_list::Add(*pVertex, FacetNumber(n));
        EXPECT_EQ(facet_list::OwnList(*pVertex), pVertex->m_ppFacet);
    }
    facet_list::Add(*pVertex, FacetNumber(7));
    EXPECT_NE(facet_list::OwnList(*pVertex), pVertex->m_ppFacet);
}

TEST(FacetList, ListsGrowBesideEachOther) {
    std::vector<OwnedVertex> vertices;
    for (int i = 0; i < 3000; ++i) vertices.emplace_back(new tagVertexNode);
    for (std::uintptr_t n = 0; n < 12; ++n) {
        for (std::size_t i = 0; i < vertices.size(); ++i)
            facet_list::Add(*vertices[i], FacetNumber(1000 * n + i));
    }
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        for (std::uintptr_t n = 0; n < 12; ++n)
            ASSERT_EQ(FacetNumber(1000 * n + i), vertices[i]->m_ppFacet[n]);
    }
}

namespace {

struct FreeBlock {
    void operator()(CFacet** ppBlock) const { std::free(static_cast<void*>(ppBlock)); }
};

// A list as a host makes it: exactly as many entries as there are facets.
void SetListByHand(tagVertexNode& vertex, std::uintptr_t nFacets) {
    vertex.m_ppFacet = static_cast<CFacet**>(std::malloc(nFacets * sizeof(CFacet*)));
    ASSERT_NE(nullptr, vertex.m_ppFacet);
    for (std::uintptr_t n = 0; n < nFacets; ++n) vertex.m_ppFacet[n] = FacetNumber(n);
    vertex.m_nFacetNum = static_cast<std::int32_t>(nFacets);
}

void ExpectFacets(tagVertexNode const& vertex, std::uintptr_t nFacets) {
    ASSERT_EQ(static_cast<int>(nFacets), vertex.m_nFacetNum);
    for (std::uintptr_t n = 0; n < nFacets; ++n) ASSERT_EQ(FacetNumber(n), vertex.m_ppFacet[n]);
}

}  // namespace

// The address sanitizer sees what is written behind a list.
TEST(FacetList, NothingIsWrittenBehindAListThatAHostHasMade) {
    for (std::uintptr_t nOfLibrary : {0, 1, 7, 8, 20}) {
        for (std::uintptr_t nFacets = 1; nFacets <= 40; ++nFacets) {
            OwnedVertex const pVertex(new tagVertexNode);
            for (std::uintptr_t n = 0; n < nOfLibrary; ++n) facet_list::Add(*pVertex, FacetNumber(n));
            bool const bBlock = nOfLibrary > 0 && pVertex->m_ppFacet != facet_list::OwnList(*pVertex);
            std::unique_ptr<CFacet*, FreeBlock> const replaced(bBlock ? pVertex->m_ppFacet : nullptr);
            SetListByHand(*pVertex, nFacets);
            for (std::uintptr_t n = nFacets; n < nFacets + 30; ++n) facet_list::Add(*pVertex, FacetNumber(n));
            ExpectFacets(*pVertex, nFacets + 30);
        }
    }
}

TEST(FacetList, ListThatAHostHasGrownIsReallocatedOnceMore) {
    OwnedVertex const pVertex(new tagVertexNode);
    SetListByHand(*pVertex, 8);
    std::uintptr_t nFacets = 8;
    while (nFacets < 60) {
        facet_list::Add(*pVertex, FacetNumber(nFacets++));
        void* const pGrown =
            std::realloc(static_cast<void*>(pVertex->m_ppFacet), (nFacets + 1) * sizeof(CFacet*));
        ASSERT_NE(nullptr, pGrown);
        pVertex->m_ppFacet = static_cast<CFacet**>(pGrown);
        pVertex->m_ppFacet[nFacets] = FacetNumber(nFacets);
        pVertex->m_nFacetNum = static_cast<std::int32_t>(++nFacets);
    }
    ExpectFacets(*pVertex, nFacets);
}

// The annex of a slot that is used anew may hold what it said of another vertex.
TEST(FacetList, NewVertexKnowsNoBlockOfAnEarlierOne) {
    OwnedVertex const pVertex(new tagVertexNode);
    SetListByHand(*pVertex, 9);
    facet_list::BlockRecord const earlier{pVertex->m_ppFacet, 2 * 31 + 1, 9};
    std::memcpy(AnnexOf(pVertex.get()), &earlier, sizeof earlier);
    EXPECT_TRUE(facet_list::HasRoom(*pVertex, earlier));
    facet_list::ForgetBlock(pVertex.get());
    for (std::uintptr_t n = 9; n < 20; ++n) facet_list::Add(*pVertex, FacetNumber(n));
    ExpectFacets(*pVertex, 20);
}

// Growing by one entry each time would take a million reallocations.
TEST(FacetList, BlockHasRoomToSpare) {
    OwnedVertex const pVertex(new tagVertexNode);
    SetListByHand(*pVertex, 3);
    int nMoves = 0;
    for (std::uintptr_t n = 3; n < 100000; ++n) {
        facet_list::BlockRecord before;
        std::memcpy(&before, AnnexOf(pVertex.get()), sizeof before);
        nMoves += facet_list::HasRoom(*pVertex, before) ? 0 : 1;
        facet_list::Add(*pVertex, FacetNumber(n));
    }
    ExpectFacets(*pVertex, 100000);
    EXPECT_LE(nMoves, 17);
}

// A host that has set a list of its own from the heap has it freed with the vertex.
TEST(FacetList, ListFromTheHeapIsFreed) {
    OwnedVertex const pVertex(new tagVertexNode);
    pVertex->m_ppFacet = static_cast<CFacet**>(std::malloc(3 * sizeof(CFacet*)));
    ASSERT_NE(nullptr, pVertex->m_ppFacet);
    pVertex->m_ppFacet[0] = FacetNumber(0);
    pVertex->m_nFacetNum = 1;
}
