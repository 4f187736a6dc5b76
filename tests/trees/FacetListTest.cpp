#include "trees/FacetList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
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

// A host that has set a list of its own from the heap has it freed with the vertex.
TEST(FacetList, ListFromTheHeapIsFreed) {
    OwnedVertex const pVertex(new tagVertexNode);
    pVertex->m_ppFacet = static_cast<CFacet**>(std::malloc(3 * sizeof(CFacet*)));
    ASSERT_NE(nullptr, pVertex->m_ppFacet);
    pVertex->m_ppFacet[0] = FacetNumber(0);
    pVertex->m_nFacetNum = 1;
}
