// A plain CSM file: read, and written in every CSM layout.

#include "CsmWriters.h"
#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    MemoryFile file(pData, nSize);
    CSTLModel model;
    model.ReadCSMFile(file.Path());
    RequireInvariants(model);
    WriteEveryLayout(model);
    return 0;
}
