// A 3DMF text: it is always read to its end.

#include "FuzzInput.h"
#include "MeshInvariants.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    Require(model.Read3DMFModel(file.Path()) == 1);
    RequireInvariants(model);
    return 0;
}
