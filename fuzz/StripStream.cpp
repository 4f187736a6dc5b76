// A CSM file in strips: read, and written in every CSM layout. Without stops, the result of a read depends on
// the file alone.

#include "CsmWriters.h"
#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    int const nAnnounced = model.ReadCSMFile1(file.Path(), 1);
    Require(model.GetFacetsNum() == 0 && model.m_nStripNum == 0);
    int const nResult = model.ReadCSMFile1(file.Path(), 0);
    Require(nAnnounced == 0 || nAnnounced == model.m_nTotalFacet);
    RequireInvariants(model);
    CSTLModel other;
    Require(other.ReadCSMFile1(file.Path(), 0) == nResult);
    Require(other.m_nStripNum == model.m_nStripNum && other.m_nMaxBackRef == model.m_nMaxBackRef);
    Require(other.GetFacetsNum() == model.GetFacetsNum());
    WriteEveryLayout(model);
    return 0;
}
