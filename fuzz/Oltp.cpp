// An OLTP file: the count is what the count-only read says, and no more facets come than the file has room
// for.

#include "FuzzInput.h"
#include "MeshInvariants.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    int const nAnnounced = model.ReadOLTPFile(file.Path(), 1);
    Require(model.ReadOLTPFile(file.Path(), 0) == 1);
    Require(nAnnounced == model.m_nTotalFacet);
    Require(static_cast<std::size_t>(model.GetFacetsNum()) * 50 <= nSize);
    RequireInvariants(model);
    return 0;
}
