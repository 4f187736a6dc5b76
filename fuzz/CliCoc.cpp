// Disguised binary commands, read layer by layer.

#include "SliceWalk.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
    return FuzzBody(pData, nSize, 3);
}
