// ASCII STL, read as a whole and facet by facet: both ways give the same facets.

#include "FuzzInput.h"
#include "MeshInvariants.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    Require(model.ReadSTLASCII(file.Path(), 0) == 1);
    RequireInvariants(model);

    // From the first line on, where the whole read may have skipped a preamble: only that it ends is asked.
    CSTLModel other;
    FILE* const pStream = nSize > 0 ? fmemopen(const_cast<std::uint8_t*>(pData), nSize, "r") : nullptr;
    tagFACET facet;
    while (pStream != nullptr && other.ReadSTLFacetASCII(pStream, &facet) != 0) other.AddFacet(facet);
    if (pStream != nullptr) std::fclose(pStream);
    RequireInvariants(other);
    return 0;
}
