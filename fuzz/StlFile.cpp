// An STL file of either kind, told apart by the library, then repaired, measured and written.

#include "FuzzInput.h"
#include "MeshInvariants.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    model.ReadSTLHeader(file.Path());
    int const nAnnounced = model.ReadSTLFile(file.Path(), 1);
    Require(model.GetFacetsNum() == 0);
    if (model.ReadSTLFile(file.Path(), 0) == 0) Require(nAnnounced == 0 && model.GetFacetsNum() == 0);
    RequireInvariants(model);
    model.FixNormal();
    model.CalArea();
    model.CalVolume();
    model.ReverseFacet();
    RequireInvariants(model);
    std::u16string devNull = u"/dev/null";
    Require(model.SaveSTLFile(reinterpret_cast<char*>(devNull.data()), 2) == 1);
    model.m_VertexTree.ReBuildTree();
    RequireInvariants(model);
    return 0;
}
