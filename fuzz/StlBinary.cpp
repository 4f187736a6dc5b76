// Binary STL with a header length taken from the input: the block-wise read gives the same mesh as one record
// after the other through AddFacet.

#include "FuzzInput.h"
#include "MeshInvariants.h"

namespace {

void RequireSameTree(tagVertexNode const* a, tagVertexNode const* b) {
    Require((a == nullptr) == (b == nullptr));
    if (a == nullptr) return;
    Require(std::memcmp(&a->x, &b->x, sizeof a->x) == 0 && std::memcmp(&a->y, &b->y, sizeof a->y) == 0 &&
            std::memcmp(&a->z, &b->z, sizeof a->z) == 0);
    Require(a->m_nBalance == b->m_nBalance && a->m_nIndex == b->m_nIndex && a->m_nFacetNum == b->m_nFacetNum);
    RequireSameTree(a->m_pLeft, b->m_pLeft);
    RequireSameTree(a->m_pRight, b->m_pRight);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    if (nSize < 1) return 0;
    int const nHeaderLen = pData[0] % 2 == 0 ? 80 : 256;
    MemoryFile file(pData + 1, nSize - 1);
    CSTLModel model;
    Require(model.ReadSTLBINARY(file.Path(), 0, nHeaderLen) == 1);
    RequireInvariants(model);

    CSTLModel other;
    std::size_t const nStart = static_cast<std::size_t>(nHeaderLen) + 4;
    if (nSize - 1 > nStart) {
        FILE* const pStream = fmemopen(const_cast<std::uint8_t*>(pData + 1), nSize - 1, "rb");
        std::fseek(pStream, static_cast<long>(nStart), SEEK_SET);
        auto const nAnnounced = static_cast<std::uint32_t>(model.m_nTotalFacet);
        tagFACET facet;
        for (std::uint32_t i = 0; i < nAnnounced && other.ReadSTLFacetBINARY(pStream, &facet) != 0; ++i) {
            other.AddFacet(facet);
        }
        std::fclose(pStream);
    }
    Require(model.GetFacetsNum() == other.GetFacetsNum());
    RequireSameTree(model.m_VertexTree.m_pRoot, other.m_VertexTree.m_pRoot);
    return 0;
}
